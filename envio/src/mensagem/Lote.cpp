// SPDX-License-Identifier: MIT
#include "mensagem/Lote.h"

#include "base/Texto.h"
#include "base/Xml.h"
#include "comum/Ascii.h"

#include <algorithm>
#include <array>

namespace zel::envio {

namespace {

constexpr std::string_view kSoap12 = "http://www.w3.org/2003/05/soap-envelope";
// What a server says that did not understand the request at all.
constexpr std::string_view kSoap11 = "http://schemas.xmlsoap.org/soap/envelope/";

constexpr int kMaisCascas = 4;           // around an answer, nfeResultMsg the first
constexpr std::size_t kMaiorFalha = 200; // characters
constexpr std::size_t kMaiorNumero = 10; // digits; longer ones name somebody

// A message of 4.00: its attribute and its elements, which need no escaping.
struct Campo {
    std::string_view nome, valor;
};

std::string mensagemDe(std::string_view raiz, std::initializer_list<Campo> campos,
                       std::string_view depois = {}) {
    std::string texto;
    texto.append("<").append(raiz).append(" xmlns=\"").append(kEspacoNfe);
    texto.append("\" versao=\"4.00\">");
    for (const auto &[nome, valor] : campos)
        texto.append("<").append(nome).append(">").append(valor).append("</").append(nome).append(
            ">");
    return texto.append(depois).append("</").append(raiz).append(">");
}

// Source: Manual de Orientação do Contribuinte 7.0, Anexo I, "Web Services". In the order of
// Servico.
constexpr std::array<Metodo, 6> kMetodos{{
    {"NFeAutorizacao4", "nfeAutorizacaoLote"},
    {"NFeRetAutorizacao4", "nfeRetAutorizacaoLote"},
    {"NFeInutilizacao4", "nfeInutilizacaoNF"},
    {"NFeConsultaProtocolo4", "nfeConsultaNF"},
    {"NFeStatusServico4", "nfeStatusServicoNF"},
    {"NFeRecepcaoEvento4", "nfeRecepcaoEvento"},
}};

// States whose servers kept another name.
struct Excecao {
    std::string_view uf;
    Servico servico;
    Metodo metodo;
};
constexpr std::array<Excecao, 3> kExcecoes{{
    {"GO", Servico::kRecepcaoEvento, {"NFeRecepcaoEvento", "nfeRecepcaoEvento"}},
    {"PR", Servico::kRecepcaoEvento, {"NFeRecepcaoEvento", "nfeRecepcaoEvento"}},
    {"PR", Servico::kRetAutorizacao, {"NFeRetAutorizacao4", "nfeRetAutorizacao"}},
}};

} // namespace

std::string loteDe(std::string_view nfe, std::int64_t lote) {
    return mensagemDe("enviNFe", {{"idLote", std::to_string(lote)}, {"indSinc", "1"}}, nfe);
}

std::string consultaDoRecibo(std::string_view recibo, std::string_view tpAmb) {
    return mensagemDe("consReciNFe", {{"tpAmb", tpAmb}, {"nRec", recibo}});
}

std::string consultaDaChave(std::string_view chave, std::string_view tpAmb) {
    return mensagemDe("consSitNFe", {{"tpAmb", tpAmb}, {"xServ", "CONSULTAR"}, {"chNFe", chave}});
}

std::string consultaDoServico(std::string_view cUF, std::string_view tpAmb) {
    return mensagemDe("consStatServ", {{"tpAmb", tpAmb}, {"cUF", cUF}, {"xServ", "STATUS"}});
}

Metodo metodoDe(Servico servico, std::string_view uf) {
    const auto *excecao =
        std::find_if(kExcecoes.begin(), kExcecoes.end(), [&](const Excecao &linha) {
            return linha.uf == uf && linha.servico == servico;
        });
    if (excecao != kExcecoes.end()) return excecao->metodo;
    const auto qual = static_cast<std::size_t>(servico);
    return qual < kMetodos.size() ? kMetodos[qual] : Metodo{};
}

// ---- SOAP ----

std::string envelopeDe(std::string_view espaco, std::string_view mensagem) {
    std::string envelope;
    envelope.reserve(mensagem.size() + 400);
    envelope.append("<?xml version=\"1.0\" encoding=\"UTF-8\"?><soap:Envelope xmlns:soap=\"")
        .append(kSoap12)
        .append("\"><soap:Body><nfeDadosMsg xmlns=\"")
        .append(espaco)
        .append("\">")
        .append(mensagem)
        .append("</nfeDadosMsg></soap:Body></soap:Envelope>");
    return envelope;
}

namespace {

// The authority may repeat in a Fault what it was sent.
std::string semNumeros(std::string_view texto) {
    std::string limpo;
    for (std::size_t i = 0; i < texto.size();) {
        std::size_t fim = i;
        while (fim < texto.size() && ehDigito(texto[fim]))
            ++fim;
        if (fim - i > kMaiorNumero)
            limpo += "...";
        else
            limpo.append(texto.substr(i, std::max<std::size_t>(fim - i, 1)));
        i = std::max(fim, i + 1);
    }
    return limpo;
}

std::string falhaDe(const No &falha) {
    const std::string razao = falha.texto("Reason/Text"); // SOAP 1.2
    std::string texto = semNumeros(aparar(razao.empty() ? falha.texto("faultstring") : razao));
    if (texto.empty()) return "a SEFAZ respondeu com uma falha, sem dizer qual";
    std::size_t fim = std::min(texto.size(), kMaiorFalha);
    while (fim < texto.size() && (static_cast<unsigned char>(texto[fim]) & 0xC0) == 0x80)
        --fim;
    texto.resize(fim);
    return "a SEFAZ respondeu com uma falha: " + texto;
}

bool ehResposta(const No &no) {
    return no.nome() != "nfeResultMsg" &&
           (no.espaco() == kEspacoNfe || no.nome().starts_with("ret"));
}

// Below the body, through what stands around the answer; `casca` becomes the last of that.
No respostaEm(No no, No &casca) {
    for (int i = 0; i <= kMaisCascas && no; ++i) {
        if (ehResposta(no)) return no;
        casca = no;
        const auto dentro = no.filhos();
        no = dentro.empty() ? No() : dentro.front();
    }
    return {};
}

} // namespace

std::string corpoDe(std::string_view resposta, std::string &motivo) {
    motivo.clear();
    const auto envelope = Documento::ler(resposta, motivo);
    if (!envelope) return motivo.insert(0, "a resposta não é SOAP: "), std::string();
    const No raiz = envelope->raiz();
    const bool soap = raiz.espaco() == kSoap12 || raiz.espaco() == kSoap11;
    const No corpo = soap && raiz.nome() == "Envelope" ? raiz.filho("Body") : No();
    const auto dentro = corpo.filhos();
    if (dentro.empty()) return motivo = "a resposta não é um envelope SOAP com conteúdo", "";
    if (const No falha = corpo.filho("Fault")) return motivo = falhaDe(falha), "";
    No casca;
    if (const No achada = respostaEm(dentro.front(), casca)) return Documento::de(achada).texto();
    // Some hand the answer over as a text, escaped or in CDATA.
    const std::string texto = casca.filhos().empty() ? casca.texto() : std::string();
    const auto interno = Documento::ler(texto, motivo);
    if (interno && ehResposta(interno->raiz())) return motivo.clear(), interno->texto();
    return motivo = "o envelope SOAP não traz a resposta de um serviço", "";
}

} // namespace zel::envio
