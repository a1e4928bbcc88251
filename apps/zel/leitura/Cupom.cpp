// SPDX-License-Identifier: MIT
#include "leitura/Cupom.h"

#include "comum/EstadoDoCupom.h"
#include "leitura/Texto.h"
#include "leitura/Xml.h"

#include <algorithm>
#include <utility>

namespace zel::aplicativo {

namespace {

constexpr std::size_t kMaximoRegistros = 5000;

double numero(const NoXml &no, std::string_view caminho) {
    return lerDecimal(no.valor(caminho)).value_or(0);
}

// What the elements of that name add up to: an item that was sold with a discount may have got
// another one.
double somar(const NoXml &grupo, std::string_view nome) {
    double soma = 0;
    for (const NoXml &filho : grupo.filhos)
        if (filho.nome == nome) soma += lerDecimal(filho.texto).value_or(0);
    return soma;
}

std::string seHouver(double valor) {
    return valor > 0 ? formatarMoeda(valor) : "";
}

void lerItem(Cupom &cupom, std::string_view numeroDele, const NoXml &item) {
    const NoXml nenhum;
    const NoXml &prod = item.filho("prod") != nullptr ? *item.filho("prod") : nenhum;
    const auto texto = [&](std::string_view nome) { return std::string(prod.valor(nome)); };
    const double desconto = somar(prod, "vDesc"), acrescimo = somar(prod, "vOutro");
    cupom.itens.push_back({std::string(numeroDele), texto("cProd"), texto("xProd"), texto("qCom"),
                           texto("uCom"), texto("vUnCom"), texto("vProd"), seHouver(desconto),
                           seHouver(acrescimo)});
    cupom.total += numero(prod, "vProd") + acrescimo - desconto;
}

void lerConsumidor(Cupom &cupom, const NoXml &abertura) {
    constexpr std::pair<std::string_view, std::string_view> kTipos[] = {
        {"dest/CPF", "cpf"}, {"dest/CNPJ", "cnpj"}, {"dest/idEstrangeiro", "estrangeiro"}};
    cupom.consumidor = {};
    for (const auto &[caminho, tipo] : kTipos)
        if (const std::string_view documento = abertura.valor(caminho); !documento.empty())
            cupom.consumidor = {std::string(tipo), std::string(documento),
                                std::string(abertura.valor("dest/xNome")),
                                std::string(abertura.valor("dest/email"))};
}

bool lerRegistro(Cupom &cupom, std::string_view linha) {
    const auto tipo = linha.substr(0, 2);
    if (tipo < "01" || tipo > "06" || linha.size() < 3 || linha[2] != '|') return false;
    linha.remove_prefix(3);
    std::string_view numeroDele;
    if (tipo == "02" || tipo == "05") {
        const std::size_t barra = linha.find('|');
        if (barra == linha.npos) return false;
        numeroDele = linha.substr(0, barra);
        linha.remove_prefix(barra + 1);
    }
    ErroXml erro;
    const auto raiz = lerXml(juntar({"<registro>", utf8DeLatin1(linha), "</registro>"}), erro);
    if (!raiz) return false;
    if (tipo == "01") lerConsumidor(cupom, *raiz);
    if (tipo == "02") lerItem(cupom, numeroDele, *raiz);
    if (tipo == "03" && !raiz->valor("total/ICMSTot/vNF").empty())
        cupom.total = numero(*raiz, "total/ICMSTot/vNF");
    if (tipo == "05") {
        cupom.pagamentos.push_back(
            {std::string(raiz->valor("pag/tPag")), std::string(raiz->valor("pag/vPag"))});
        cupom.pago += numero(*raiz, "pag/vPag");
    }
    return true;
}

} // namespace

std::optional<Cupom> lerCupom(std::string_view bytes, std::string &erro) {
    Cupom cupom;
    for (std::size_t registro = 1; !bytes.empty(); ++registro) {
        const std::size_t fim = bytes.find("\r\n");
        if (fim == bytes.npos) {
            cupom.cortado = true;
            break;
        }
        if (registro > kMaximoRegistros || !lerRegistro(cupom, bytes.substr(0, fim))) {
            erro = juntar({"o registro ", std::to_string(registro), " não é de um cupom"});
            return {};
        }
        bytes.remove_prefix(fim + 2);
    }
    return cupom;
}

std::string_view nomeDoEstado(int estado) {
    return kNomesDosEstados[static_cast<std::size_t>(std::clamp<int>(estado, kNenhum, kCancelado))];
}

std::string digitoENome(int estado) {
    return juntar({std::to_string(estado), " ", nomeDoEstado(estado)});
}

} // namespace zel::aplicativo
