// SPDX-License-Identifier: MIT
#include "secao/Parser.h"

#include "recusa/Recusa.h"
#include "texto/TextoXml.h"
#include "zel_felbor/codigos.h"

#include <algorithm>

namespace zel {

namespace {

constexpr std::size_t kMaximoNome = 39;
constexpr std::size_t kMaximaPropriedade = 99;
constexpr std::size_t kMaximoTexto = 5000;
constexpr int kMaximoNiveis = 32;

constexpr std::string_view kBrancos = " \t\r\n";

constexpr bool ehBranco(char c) {
    return kBrancos.find(c) != kBrancos.npos;
}

std::string_view aparar(std::string_view texto) {
    texto.remove_prefix(std::min(texto.find_first_not_of(kBrancos), texto.size()));
    texto.remove_suffix(texto.size() - (texto.find_last_not_of(kBrancos) + 1));
    return texto;
}

constexpr bool ehNome(std::string_view nome) {
    return !nome.empty() && nome.size() <= kMaximoNome && nome.front() != '!' &&
           nome.front() != '?' && nome.find('/') == nome.npos;
}

// With the place counted from 1.
int recusarEm(Motivo motivo, std::size_t posicao, std::string_view campo = {}) {
    return recusar(motivo, {.campo = campo, .numero = static_cast<long long>(posicao) + 1});
}

// The attribute part of a start tag.
int fnIncluiPropriedades(ST_tagZEL &no, std::string_view texto) {
    char aspas = '"';
    for (std::size_t igual; (igual = texto.find('=')) != texto.npos;) {
        const std::string_view nome = aparar(texto.substr(0, igual));
        texto.remove_prefix(igual + 1);
        // Double quotes win wherever one follows. Once none does, none is looked for again: a tag
        // of many single-quoted attributes must not be searched to its end for each of them.
        std::size_t inicio = texto.find(aspas);
        if (inicio == texto.npos && aspas == '"') inicio = texto.find(aspas = '\'');
        const std::size_t fim = inicio == texto.npos ? texto.npos : texto.find(aspas, inicio + 1);
        if (fim == texto.npos) return recusar(Motivo::kXmlAtributo, {.campo = no.nome});
        const std::string_view valor = aparar(texto.substr(inicio + 1, fim - inicio - 1));
        if (nome.empty() || nome.size() > kMaximaPropriedade || valor.size() > kMaximaPropriedade)
            return recusar(Motivo::kXmlAtributo, {.campo = no.nome});
        no.addPropriedade(nome, valor);
        texto.remove_prefix(fim + 1);
    }
    return ZEL_OK;
}

// The start tag whose "<" is at `posicao`, which is left on its ">".
int lerInicio(ST_tagZEL &no, std::string_view texto, std::size_t &posicao, bool &vazio) {
    const std::size_t fim = texto.find('>', posicao);
    if (fim == texto.npos) return recusarEm(Motivo::kXmlTagSemFim, posicao);
    std::string_view dentro = texto.substr(posicao + 1, fim - posicao - 1);
    if (dentro.empty() || ehBranco(dentro.front()))
        return recusarEm(Motivo::kXmlNomeInvalido, posicao);
    // What is accepted is written out again: a "<" in here would come back as another element.
    if (dentro.find('<') != dentro.npos) return recusarEm(Motivo::kXmlMenorNaTag, posicao);
    dentro = aparar(dentro);
    vazio = dentro.back() == '/';
    if (vazio) dentro.remove_suffix(1);
    const std::string_view nome = dentro.substr(0, dentro.find_first_of(kBrancos));
    if (!ehNome(nome)) return recusarEm(Motivo::kXmlNomeInvalido, posicao);
    no.nome = nome;
    posicao = fim;
    return fnIncluiPropriedades(no, dentro.substr(nome.size()));
}

// The end tag whose "<" is at `posicao`, which is left on its ">".
int lerFim(const ST_tagZEL &no, std::string_view texto, std::size_t &posicao) {
    const std::string_view resto = texto.substr(posicao + 2);
    if (!resto.starts_with(no.nome) || !resto.substr(no.nome.size()).starts_with('>'))
        return recusarEm(Motivo::kXmlFimErrado, posicao, no.nome);
    posicao += 2 + no.nome.size();
    return ZEL_OK;
}

int lerElemento(ST_tagZEL &no, std::string_view texto, std::size_t &posicao, int nivel);

// Parses a child in its place among the others, which saves moving the finished subtree.
int lerFilho(ST_tagZEL &no, std::string_view texto, std::size_t &posicao, int nivel) {
    no.ehGrupo = true;
    if (!no.subTags) no.subTags.emplace();
    return lerElemento(no.subTags->emplace_back(), texto, posicao, nivel);
}

int lerElemento(ST_tagZEL &no, std::string_view texto, std::size_t &posicao, int nivel) {
    if (nivel > kMaximoNiveis) return recusar(Motivo::kXmlNiveis);
    bool vazio = false;
    if (const int lido = lerInicio(no, texto, posicao, vazio); lido != ZEL_OK) return lido;
    if (vazio) return ZEL_OK;
    std::string coletado; // where children part it
    std::string_view trecho;
    while (true) {
        const std::size_t inicio = posicao + 1;
        posicao = texto.find('<', inicio);
        if (posicao == texto.npos) return recusar(Motivo::kXmlElementoAberto, {.campo = no.nome});
        trecho = texto.substr(inicio, posicao - inicio);
        if (texto.substr(posicao + 1).starts_with('/')) break;
        coletado.append(trecho);
        if (const int lido = lerFilho(no, texto, posicao, nivel + 1); lido != ZEL_OK) return lido;
    }
    if (!coletado.empty()) trecho = coletado.append(trecho);
    if (trecho.size() > kMaximoTexto)
        no.setValor(cortarXml(trecho, kMaximoTexto));
    else
        no.setValor(trecho);
    return lerFim(no, texto, posicao);
}

// The "<" of the first element at or after `posicao`; npos when there is none.
std::size_t pularProlog(std::string_view texto, std::size_t posicao) {
    while (true) {
        posicao = texto.find('<', posicao);
        if (posicao == texto.npos) return posicao;
        const std::string_view resto = texto.substr(posicao);
        const bool comentario = resto.starts_with("<!--");
        if (!comentario && !resto.starts_with("<?")) return posicao;
        posicao = comentario ? texto.find("-->", posicao + 4) : texto.find("?>", posicao + 2);
    }
}

} // namespace

int fnParseToTag_ZEL(ST_tagZEL &raiz, std::string_view texto) {
    std::size_t posicao = 0;
    while ((posicao = texto.find('<', posicao)) != texto.npos) {
        if (const int lido = lerFilho(raiz, texto, posicao, 1); lido != ZEL_OK) return lido;
        ++posicao;
    }
    return ZEL_OK;
}

int fnProximaTag_ZEL(ST_tagZEL &no, std::string_view texto, std::size_t &posicao) {
    posicao = pularProlog(texto, posicao);
    if (posicao == texto.npos) return recusar(Motivo::kXmlSemElemento);
    return lerElemento(no, texto, posicao, 1);
}

} // namespace zel
