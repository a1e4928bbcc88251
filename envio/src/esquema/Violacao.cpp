// SPDX-License-Identifier: MIT
#include "esquema/Violacao.h"

#include "base/Xml.h"

#include <libxml/tree.h>
#include <string>
#include <string_view>

namespace zel::envio {

namespace {

constexpr std::size_t kMaiorEsperado = 240;

// A rule by libxml2's code and, where one code stands for several, a part of its message. What is
// expected stands in the message between two marks and takes the place of the "%" of the phrase.
struct Regra {
    int codigo;
    std::string_view sinal, abre, fecha, frase;
};
constexpr Regra kRegras[] = {
    {XML_SCHEMAV_CVC_PATTERN_VALID, "", "by the pattern '", "'", "não tem a forma %"},
    {XML_SCHEMAV_CVC_ENUMERATION_VALID, "", "of the set {", "}", "só pode ser %"},
    {XML_SCHEMAV_CVC_LENGTH_VALID, "", "length of '", "'", "tem de ter % caracteres"},
    {XML_SCHEMAV_CVC_MINLENGTH_VALID, "", "length of '", "'",
     "tem de ter pelo menos % caractere(s)"},
    {XML_SCHEMAV_CVC_MAXLENGTH_VALID, "", "length of '", "'", "pode ter no máximo % caracteres"},
    {XML_SCHEMAV_CVC_MININCLUSIVE_VALID, "", "allowed ('", "'", "não pode ser menor que %"},
    {XML_SCHEMAV_CVC_MAXINCLUSIVE_VALID, "", "allowed ('", "'", "não pode ser maior que %"},
    {XML_SCHEMAV_CVC_MINEXCLUSIVE_VALID, "", "than '", "'", "tem de ser maior que %"},
    {XML_SCHEMAV_CVC_MAXEXCLUSIVE_VALID, "", "than '", "'", "tem de ser menor que %"},
    {XML_SCHEMAV_CVC_TOTALDIGITS_VALID, "", "allowed ('", "'", "pode ter no máximo % dígitos"},
    {XML_SCHEMAV_CVC_FRACTIONDIGITS_VALID, "", "allowed ('", "'", "pode ter no máximo % casas"},
    {XML_SCHEMAV_ELEMENT_CONTENT, "Missing child", "Expected is one of ( ", " )",
     "falta um destes elementos dentro: %"},
    {XML_SCHEMAV_ELEMENT_CONTENT, "Missing child", "Expected is ( ", " )", "falta dentro: %"},
    {XML_SCHEMAV_ELEMENT_CONTENT, "not expected", "Expected is one of ( ", " )",
     "não é esperado aqui; viria um destes: %"},
    {XML_SCHEMAV_ELEMENT_CONTENT, "not expected", "Expected is ( ", " )",
     "não é esperado aqui; viria: %"},
    {XML_SCHEMAV_ELEMENT_CONTENT, "", "", "", "não é esperado aqui"},
    {XML_SCHEMAV_CVC_COMPLEX_TYPE_2_1, "", "", "", "não pode ter conteúdo"},
    {XML_SCHEMAV_CVC_COMPLEX_TYPE_2_3, "", "", "", "só pode ter elementos, e tem texto"},
    {XML_SCHEMAV_CVC_TYPE_3_1_1, "", "", "", "não pode ter atributos"},
    {XML_SCHEMAV_CVC_TYPE_3_1_2, "", "", "", "só pode ter texto, e tem elementos"},
    {XML_SCHEMAV_CVC_COMPLEX_TYPE_3_2_1, "", "", "", "este atributo não existe aqui"},
    {XML_SCHEMAV_CVC_COMPLEX_TYPE_3_2_2, "", "", "", "este atributo não existe aqui"},
    {XML_SCHEMAV_CVC_COMPLEX_TYPE_4, "", "", "", "falta este atributo"},
    {XML_SCHEMAV_CVC_AU, "", "constraint '", "'", "tem de ser %"},
    {XML_SCHEMAV_CVC_ELT_1, "", "", "", "não é a mensagem que este esquema descreve"},
    {XML_SCHEMAV_CVC_DATATYPE_VALID_1_2_1, "xs:ID", "", "",
     "não é um Id válido, ou repete o de outro elemento"},
    {XML_SCHEMAV_CVC_DATATYPE_VALID_1_2_1, "", "type '", "'", "não é do tipo %"},
    {XML_SCHEMAV_CVC_DATATYPE_VALID_1_2_2, "", "type '", "'", "não é do tipo %"},
    {XML_SCHEMAV_CVC_DATATYPE_VALID_1_2_3, "", "type '", "'", "não é do tipo %"},
    {XML_SCHEMAV_CVC_IDC, "Duplicate", "", "", "repete o valor de outro, e tem de ser único"},
    {XML_SCHEMAV_CVC_IDC, "", "", "", "falta o valor que o distingue dos outros"},
};

// "{namespace}name" becomes "name", and quotes go.
std::string semEspacos(std::string_view esperado) {
    std::string limpo;
    int dentro = 0;
    for (const char c : esperado) {
        dentro += c == '{' ? 1 : 0;
        if (dentro == 0 && c != '\'') limpo += c;
        dentro -= c == '}' ? 1 : 0;
    }
    if (limpo.size() <= kMaiorEsperado) return limpo;
    std::size_t fim = kMaiorEsperado;
    while (fim > 0 && (static_cast<unsigned char>(limpo[fim]) & 0xC0) == 0x80)
        --fim;
    return limpo.substr(0, fim) + "...";
}

std::string esperadoEm(std::string_view mensagem, const Regra &regra) {
    const std::size_t abre = mensagem.rfind(regra.abre);
    const std::size_t fecha = mensagem.rfind(regra.fecha);
    if (abre == mensagem.npos || fecha == mensagem.npos || fecha < abre + regra.abre.size())
        return {};
    const auto dito = mensagem.substr(abre + regra.abre.size(), fecha - abre - regra.abre.size());
    // A pattern has braces and quotes of its own.
    if (regra.codigo == XML_SCHEMAV_CVC_PATTERN_VALID) return std::string(dito);
    return semEspacos(dito);
}

std::string motivoDe(int codigo, std::string_view mensagem) {
    for (const Regra &regra : kRegras) {
        if (regra.codigo != codigo || mensagem.find(regra.sinal) == mensagem.npos ||
            mensagem.find(regra.abre) == mensagem.npos)
            continue;
        std::string frase(regra.frase);
        const std::size_t lugar = frase.find('%');
        return lugar == frase.npos ? frase : frase.replace(lugar, 1, esperadoEm(mensagem, regra));
    }
    return "contraria o esquema: " + std::string(mensagem);
}

// The attribute that a message names; empty when it is the element's own.
std::string atributoEm(std::string_view mensagem) {
    for (const std::string_view marca : {"', attribute '", ": The attribute '"}) {
        const std::size_t lugar = mensagem.find(marca);
        if (lugar == mensagem.npos) continue;
        const std::string_view resto = mensagem.substr(lugar + marca.size());
        return std::string(resto.substr(0, resto.find('\'')));
    }
    return {};
}

std::string_view mensagemDe(const xmlError &erro) {
    std::string_view mensagem = erro.message == nullptr ? "" : erro.message;
    while (mensagem.ends_with('\n'))
        mensagem.remove_suffix(1);
    return mensagem;
}

No elementoDe(const xmlError &erro) {
    auto *no = static_cast<xmlNode *>(erro.node);
    return No(no != nullptr && no->type == XML_ATTRIBUTE_NODE ? no->parent : no);
}

} // namespace

bool faltaAssinatura(const xmlError &erro) {
    const std::string_view mensagem = mensagemDe(erro), nome = elementoDe(erro).nome();
    return erro.code == XML_SCHEMAV_ELEMENT_CONTENT &&
           (nome == "NFe" || nome == "evento" || nome == "inutNFe") &&
           mensagem.find("Missing child") != mensagem.npos &&
           mensagem.find("xmldsig#}Signature") != mensagem.npos;
}

bool ehDoValor(const xmlError &erro) {
    return erro.code == XML_SCHEMAV_CVC_IDC || (erro.code >= XML_SCHEMAV_CVC_FACET_VALID &&
                                                erro.code <= XML_SCHEMAV_CVC_ENUMERATION_VALID);
}

Recusa violacaoDe(const xmlError &erro) {
    const std::string_view mensagem = mensagemDe(erro);
    const std::string atributo = atributoEm(mensagem);
    const No elemento = elementoDe(erro);
    Recusa recusa{elemento.caminho(), "", motivoDe(erro.code, mensagem)};
    if (!atributo.empty()) {
        recusa.campo += "/@" + atributo;
        recusa.valor = elemento.atributo(atributo);
    } else if (elemento && elemento.filhos().empty()) {
        recusa.valor = elemento.texto();
    }
    return recusa;
}

} // namespace zel::envio
