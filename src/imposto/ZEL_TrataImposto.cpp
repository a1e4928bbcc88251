// SPDX-License-Identifier: MIT
#include "imposto/ZEL_TrataImposto.h"

#include "config/Registro.h"
#include "imposto/Grupo.h"
#include "imposto/GruposContribuicao.h"
#include "imposto/GruposICMS.h"
#include "recusa/Recusa.h"
#include "texto/Numero.h"
#include "texto/Texto.h"
#include "zel_felbor/codigos.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace zel {

namespace {

constexpr std::size_t kMaximoNumero = 16;

// The rate text of a sale: hundredths, with whatever letter and punctuation around the digits.
std::string lerAliquota(std::string_view texto) {
    const char letra = texto.empty() ? '\0' : maiuscula(texto.front());
    if (letra == 'F' || letra == 'I') return "0.00";
    if (letra == 'T' || letra == 'S') texto.remove_prefix(1);
    const std::string digitos = fnRetirarCaracter(texto.substr(0, kMaximoNumero));
    return formatarMoeda(lerDecimal(digitos) / 100);
}

bool ehServico(std::string_view aliquota) {
    return !aliquota.empty() && maiuscula(aliquota.front()) == 'S';
}

constexpr std::string_view kTributos[] = {"ICMS", "PIS", "COFINS", "ISSQN"};

// As a sale stores it: only an edited file, or attributes in a sale's tag text, make another.
bool temSoTributos(const ST_tagZEL &imposto) {
    if (!imposto.propriedades.empty()) return false;
    if (!imposto.subTags) return !imposto.valor;
    const auto *proximo = std::begin(kTributos);
    return std::ranges::all_of(*imposto.subTags, [&](const ST_tagZEL &filho) {
        proximo = std::find(proximo, std::end(kTributos), filho.nome);
        return proximo != std::end(kTributos) && ++proximo != nullptr;
    });
}

// The first of each, without anything else.
ST_tagZEL soTributos(const ST_tagZEL &imposto) {
    ST_tagZEL so("imposto");
    for (const std::string_view nome : kTributos)
        if (const ST_tagZEL *tributo = imposto.getSubTag(nome)) so.addSubTag(*tributo);
    return so;
}

} // namespace

TipoAjuste lerTipoAjuste(std::string_view tipo) {
    const char primeiro = tipo.empty() ? '\0' : tipo[0], segundo = tipo.size() < 2 ? '\0' : tipo[1];
    TipoAjuste lido;
    if (primeiro == 'D') lido.ajuste = Ajuste::kDesconto;
    if (primeiro == 'A') lido.ajuste = Ajuste::kAcrescimo;
    if (segundo == '%') lido.forma = FormaAjuste::kPercentual;
    if (segundo == '$') lido.forma = FormaAjuste::kQuantia;
    return lido;
}

std::string_view escreverTipoAjuste(Ajuste ajuste, FormaAjuste forma) {
    if (ajuste == Ajuste::kDesconto) return forma == FormaAjuste::kPercentual ? "D%" : "D$";
    return forma == FormaAjuste::kPercentual ? "A%" : "A$";
}

std::string fnCalcularValorBC(std::string_view quantidade, std::string_view valorUnitario,
                              std::string_view tipo, std::string_view valor) {
    const double vendida =
        lerDecimal(formatarDecimal(lerNumero(quantidade.substr(0, kMaximoNumero)), 4));
    const double bruto =
        fnArredondarTruncar(vendida * lerNumero(valorUnitario.substr(0, kMaximoNumero)));
    const double ajuste = lerNumero(valor.substr(0, kMaximoNumero));
    if (ajuste == 0) return formatarMoeda(bruto);
    const auto [operacao, forma] = lerTipoAjuste(tipo);
    if (!operacao || !forma) return {};
    const double quantia = forma == FormaAjuste::kPercentual ? bruto * ajuste / 100 : ajuste;
    return formatarMoeda(operacao == Ajuste::kDesconto ? bruto - quantia : bruto + quantia);
}

int fnTratarImposto(const ST_tagImpostoConfTemp &presets, std::string_view aliquota,
                    std::string_view base, std::string_view quantidade, ST_tagZEL &imposto) {
    const std::string taxa = lerAliquota(aliquota);
    if (ehServico(aliquota)) return fnTratarISS(taxa, base, imposto);
    int resultado = fnTratarICMS(presets.icms, taxa, base, imposto);
    if (resultado == ZEL_OK) resultado = fnTratarPIS(presets.pis, taxa, base, quantidade, imposto);
    if (resultado == ZEL_OK)
        resultado = fnTratarCOFINS(presets.cofins, taxa, base, quantidade, imposto);
    return resultado;
}

int fnAtualizar_TagImposto(ST_tagZEL &item, std::string_view quantidade, std::string_view tipo,
                           std::string_view valor, Mudancas &mudancas) {
    ST_tagZEL *imposto = item.getSubTag("imposto");
    if (!imposto) return ZEL_OK;

    // An item sold as tag text may hold anything that passed the section check: what is missing
    // reads as zero.
    const ST_tagZEL *prod = item.getSubTag("prod");
    const auto doProduto = [&](std::string_view nome) {
        return prod ? prod->valorDe(nome) : std::string_view{};
    };
    if (lerNumero(quantidade) <= 0) quantidade = doProduto("qCom");
    if (lerNumero(valor) <= 0) valor = "0.00";
    const std::string base = fnCalcularValorBC(quantidade, doProduto("vUnCom"), tipo, valor);

    if (!temSoTributos(*imposto)) mudancas.trocar(*imposto, soTributos(*imposto));
    int resultado = ZEL_OK;
    if (auto *icms = imposto->getSubTag("ICMS")) resultado = fnAtualizarICMS(*icms, base, mudancas);
    if (auto *pis = imposto->getSubTag("PIS"); pis && resultado == ZEL_OK)
        resultado = fnAtualizarPIS(*pis, base, quantidade, mudancas);
    if (auto *cofins = imposto->getSubTag("COFINS"); cofins && resultado == ZEL_OK)
        resultado = fnAtualizarCOFINS(*cofins, base, quantidade, mudancas);
    if (auto *issqn = imposto->getSubTag("ISSQN"); issqn && resultado == ZEL_OK)
        resultado = fnAtualizarISS(*issqn, base, mudancas);
    return resultado;
}

} // namespace zel
