// SPDX-License-Identifier: MIT
#include "texto/TextoXml.h"

#include "texto/Texto.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>

namespace zel {

namespace {

struct Nomeada {
    std::string_view nome;
    char caracter;
};

// XML 1.0 (W3C, fifth edition, November 2008), section 4.6.
constexpr std::array<Nomeada, 5> kNomeadas{
    {{"amp", '&'}, {"lt", '<'}, {"gt", '>'}, {"quot", '"'}, {"apos", '\''}}};

// The longest reference worth looking for, zeros in front of a number included.
constexpr std::size_t kMaiorReferencia = 12;

struct Referencia {
    char caracter;
    std::size_t tamanho; // from "&" to ";"
};

// The reference at the start of the text, if one of those that a Latin-1 document can hold.
std::optional<Referencia> lerReferencia(std::string_view texto) {
    if (!texto.starts_with('&')) return {};
    const std::size_t fim = texto.substr(0, kMaiorReferencia).find(';');
    if (fim == texto.npos) return {};
    std::string_view nome = texto.substr(1, fim - 1);
    for (const auto &nomeada : kNomeadas)
        if (nome == nomeada.nome) return Referencia{nomeada.caracter, fim + 1};
    if (nome.size() < 2 || nome.front() != '#') return {};
    nome.remove_prefix(1);
    const bool hexa = nome.front() == 'x';
    if (hexa) nome.remove_prefix(1);
    unsigned codigo = 0;
    const auto [lido, erro] =
        std::from_chars(nome.data(), nome.data() + nome.size(), codigo, hexa ? 16 : 10);
    if (erro != std::errc{} || lido != nome.data() + nome.size() || codigo > 0xFF) return {};
    return Referencia{static_cast<char>(codigo), fim + 1};
}

// Most texts have none, and every character stands for itself.
bool semReferencias(std::string_view texto) {
    return texto.find('&') == texto.npos;
}

// What textoSimples() keeps as it is.
constexpr bool ehSimples(char c) {
    return c != '&' && static_cast<unsigned char>(c) >= 0x20;
}

} // namespace

std::string textoSimples(std::string_view texto, FimDeLinha fimDeLinha) {
    if (std::ranges::all_of(texto, ehSimples)) return std::string(texto);
    std::string simples;
    simples.reserve(texto.size());
    bool retorno = false; // the last character was a CR: an LF after it is the same line end
    while (!texto.empty()) {
        char c = texto.front();
        std::size_t tamanho = 1;
        if (const auto referencia = lerReferencia(texto)) {
            c = referencia->caracter;
            tamanho = referencia->tamanho;
        }
        texto.remove_prefix(tamanho);
        if (c == '\n' && retorno) {
            retorno = false;
            continue;
        }
        retorno = c == '\r';
        if (c == '\r' || c == '\n')
            simples.push_back(fimDeLinha == FimDeLinha::kMantido ? '\n' : ' ');
        else if (c == '\t')
            simples.push_back(' ');
        else if (static_cast<unsigned char>(c) >= 0x20)
            simples.push_back(c);
    }
    return simples;
}

std::string escaparXml(std::string_view simples) {
    std::string valor;
    valor.reserve(simples.size());
    for (const char c : simples) {
        switch (c) {
        case '&':
            valor += "&amp;";
            break;
        case '<':
            valor += "&lt;";
            break;
        case '>':
            valor += "&gt;";
            break;
        case '\n':
            valor += "&#10;";
            break;
        default:
            valor.push_back(c);
        }
    }
    return valor;
}

std::size_t comprimentoXml(std::string_view valor) {
    if (semReferencias(valor)) return valor.size();
    std::size_t caracteres = 0;
    while (!valor.empty()) {
        const auto referencia = lerReferencia(valor);
        valor.remove_prefix(referencia ? referencia->tamanho : 1);
        ++caracteres;
    }
    return caracteres;
}

std::string_view cortarXml(std::string_view valor, std::size_t maximo) {
    if (semReferencias(valor)) return valor.substr(0, maximo);
    std::string_view resto = valor;
    for (; maximo > 0 && !resto.empty(); --maximo) {
        const auto referencia = lerReferencia(resto);
        resto.remove_prefix(referencia ? referencia->tamanho : 1);
    }
    return valor.substr(0, valor.size() - resto.size());
}

std::string_view cortarBytes(std::string_view texto, std::size_t maximo) {
    if (texto.size() <= maximo) return texto;
    const std::size_t ultima = texto.rfind('&', maximo);
    const auto referencia =
        ultima == texto.npos ? std::nullopt : lerReferencia(texto.substr(ultima));
    const bool partida = referencia && ultima + referencia->tamanho > maximo;
    return texto.substr(0, partida ? ultima : maximo);
}

} // namespace zel
