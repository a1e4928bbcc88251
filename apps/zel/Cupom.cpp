// SPDX-License-Identifier: MIT
#include "Cupom.h"

#include "Texto.h"
#include "Xml.h"

#include <algorithm>
#include <array>

namespace zel::aplicativo {

namespace {

constexpr std::size_t kMaximoRegistros = 5000;

double numero(const NoXml &no, std::string_view caminho) {
    return lerDecimal(no.valor(caminho)).value_or(0);
}

void somarItem(Cupom &cupom, const NoXml &item) {
    ++cupom.itens;
    cupom.total +=
        numero(item, "prod/vProd") + numero(item, "prod/vOutro") - numero(item, "prod/vDesc");
}

bool lerRegistro(Cupom &cupom, std::string_view linha) {
    const auto tipo = linha.substr(0, 2);
    if (tipo < "01" || tipo > "06" || linha.size() < 3 || linha[2] != '|') return false;
    linha.remove_prefix(3);
    if (tipo == "02" || tipo == "05") {
        const std::size_t barra = linha.find('|');
        if (barra == linha.npos) return false;
        linha.remove_prefix(barra + 1);
    }
    ErroXml erro;
    const auto raiz = lerXml(juntar({"<registro>", linha, "</registro>"}), erro);
    if (!raiz) return false;
    if (tipo == "02") somarItem(cupom, *raiz);
    if (tipo == "03" && !raiz->valor("total/ICMSTot/vNF").empty())
        cupom.total = numero(*raiz, "total/ICMSTot/vNF");
    if (tipo == "05") {
        ++cupom.pagamentos;
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
    constexpr std::array<std::string_view, 7> kNomes{
        "nenhum cupom", "aberto", "vendendo", "totalizado", "pago", "encerrado", "cancelado"};
    return kNomes[static_cast<std::size_t>(std::clamp(estado, 0, 6))];
}

} // namespace zel::aplicativo
