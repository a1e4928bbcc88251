// SPDX-License-Identifier: MIT
#include "documento/Leitura.h"

#include <algorithm>
#include <iterator>

namespace zel::envio {

namespace {

// Every file that the till scrambles has this key: it keeps the curious out, nobody else.
constexpr std::string_view kChaveDoCaixa = "rkv804mtq217";

struct Raiz {
    std::string_view nome;
    Tipo tipo;
    bool doCaixa; // of an NFC-e it is the layout's version that says so
};

constexpr Raiz kRaizes[] = {
    {"NFe", Tipo::kNfce, false},
    {"nfeProc", Tipo::kNfce, false},
    {"enviNFe", Tipo::kNfce, false},
    {"EnvioEvento", Tipo::kCancelamento, true},
    {"envEvento", Tipo::kCancelamento, false},
    {"evento", Tipo::kCancelamento, false},
    {"procEventoNFe", Tipo::kCancelamento, false},
    {"Inutilizacao", Tipo::kInutilizacao, true},
    {"inutNFe", Tipo::kInutilizacao, false},
    {"procInutNFe", Tipo::kInutilizacao, false},
    {"ProcInutNFe", Tipo::kInutilizacao, false},
    {"Consulta", Tipo::kConsulta, true},
    {"consSitNFe", Tipo::kConsulta, false},
};

constexpr std::string_view kLeiauteDoCaixa = "3.10", kLeiauteEmVigor = "4.00";

// What a till writes begins with a mark; after its key, that is no mark any more.
bool embaralhado(std::string_view bytes) {
    constexpr std::string_view kMarcaUtf8 = "\xEF\xBB\xBF";
    if (bytes.starts_with(kMarcaUtf8)) return false;
    const std::size_t inicio = bytes.find_first_not_of(" \t\r\n");
    if (inicio == bytes.npos || bytes[inicio] == '<') return false;
    return desembaralhar(bytes.substr(0, 1)) == "<";
}

std::optional<Lido> reconhecer(Documento documento, Recusas &recusas) {
    const std::string nome(documento.raiz().nome());
    const auto *raiz = std::find_if(std::begin(kRaizes), std::end(kRaizes),
                                    [&](const Raiz &r) { return r.nome == nome; });
    if (raiz == std::end(kRaizes))
        return recusas.juntar(
                   "documento", nome,
                   "não é um documento do caixa nem da autoridade; são: NFe, EnvioEvento, "
                   "Inutilizacao, Consulta, e no leiaute 4.00 nfeProc, enviNFe, "
                   "envEvento, inutNFe, consSitNFe"),
               std::nullopt;
    Lido lido{std::move(documento), raiz->tipo, raiz->doCaixa};
    if (lido.tipo != Tipo::kNfce) return lido;
    const No infNFe = lido.principal().filho("infNFe");
    const std::string versao = infNFe.atributo("versao");
    if (versao != kLeiauteDoCaixa && versao != kLeiauteEmVigor)
        return recusas.juntar("infNFe/@versao", versao, "os leiautes conhecidos são 3.10 e 4.00"),
               std::nullopt;
    const std::string modelo = infNFe.texto("ide/mod");
    if (modelo != "65")
        return recusas.juntar("ide/mod", modelo, "uma NFC-e tem o modelo 65"), std::nullopt;
    lido.doCaixa = versao == kLeiauteDoCaixa;
    return lido;
}

} // namespace

No Lido::principal() const {
    const No raiz = documento.raiz();
    return tipo == Tipo::kNfce && raiz.nome() != "NFe" ? raiz.filho("NFe") : raiz;
}

bool Lido::assinado() const {
    return bool(principal().procurar("Signature"));
}

std::string desembaralhar(std::string_view bytes) {
    std::string texto(bytes);
    for (std::size_t i = 0; i < texto.size(); ++i)
        texto[i] = static_cast<char>(texto[i] - kChaveDoCaixa[i % kChaveDoCaixa.size()] - 84);
    while (!texto.empty() && texto.back() == '\0')
        texto.pop_back();
    return texto;
}

std::optional<Lido> lerArquivoDoCaixa(std::string_view bytes, Recusas &recusas) {
    std::string claro, motivo;
    if (bytes.size() <= kMaiorDocumento && embaralhado(bytes)) {
        claro = desembaralhar(bytes);
        bytes = claro;
    }
    std::optional<Documento> documento = Documento::ler(bytes, motivo);
    if (!documento) return recusas.juntar("documento", "", motivo), std::nullopt;
    return reconhecer(std::move(*documento), recusas);
}

} // namespace zel::envio
