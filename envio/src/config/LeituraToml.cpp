// SPDX-License-Identifier: MIT
#include "config/LeituraToml.h"

#include <algorithm>
#include <charconv>
#include <cstdint>

namespace zel::envio {

namespace {

constexpr std::string_view kArquivo = "zel-envio.toml";
constexpr int kMaisNiveis = 8;

std::string naLinha(const toml::source_region &onde) {
    return std::string(kArquivo) + ", linha " + std::to_string(onde.begin.line);
}

// A line without its texts and its comment: what is left are keys, signs and numbers.
std::string semTextos(std::string_view linha) {
    std::string resto;
    char aspas = 0;
    for (std::size_t i = 0; i < linha.size(); ++i) {
        const char c = linha[i];
        if (aspas != 0) {
            if (c == '\\' && aspas == '"') ++i;
            if (c == aspas) aspas = 0;
        } else if (c == '"' || c == '\'') {
            aspas = c;
        } else if (c == '#') {
            break;
        } else {
            resto += c;
        }
    }
    return resto;
}

// The reader's tree is taken down by recursion, and a key "a.a.a..." makes it as deep as the text
// is long. No text goes over several lines here, so that every line can be looked at by itself.
std::string_view fundoDemais(std::string_view texto) {
    if (texto.find("\"\"\"") != texto.npos || texto.find("'''") != texto.npos)
        return "não use textos de várias linhas (três aspas)";
    int abertos = 0;
    while (!texto.empty()) {
        const std::size_t fim = std::min(texto.find('\n'), texto.size());
        const std::string linha = semTextos(texto.substr(0, fim));
        texto.remove_prefix(std::min(fim + 1, texto.size()));
        int pontos = 0;
        for (const char c : linha) {
            pontos += c == '.' ? 1 : 0;
            abertos += c == '[' || c == '{' ? 1 : c == ']' || c == '}' ? -1 : 0;
            if (pontos > kMaisNiveis || abertos > kMaisNiveis)
                return "há chaves ou tabelas demais umas dentro das outras";
        }
    }
    return {};
}

} // namespace

std::optional<toml::table> LeituraToml::abrir(std::string_view texto) {
    if (const auto motivo = fundoDemais(texto); !motivo.empty()) {
        recusas_.juntar(kArquivo, "", motivo);
        return {};
    }
    try {
        return toml::parse(texto);
    } catch (const toml::parse_error &erro) {
        recusas_.juntar(naLinha(erro.source()), "",
                        "não é TOML: " + std::string(erro.description()));
        return {};
    }
}

const toml::table *LeituraToml::secao(const toml::key &chave, const toml::node &no,
                                      const std::string &acima) {
    if (!no.is_table()) recusas_.juntar(lugar(chave, acima), "", "é uma seção, e não um valor");
    return no.as_table();
}

void LeituraToml::recusarChave(const toml::key &chave, const std::string &secao,
                               const std::string &permitidas) {
    recusas_.juntar(lugar(chave, secao), "", "chave desconhecida; aqui cabem: " + permitidas);
}

std::string LeituraToml::lugar(const toml::key &chave, const std::string &secao) {
    return naLinha(chave.source()) + ", " + secao + (secao.empty() ? "" : " ") +
           std::string(chave.str());
}

std::string LeituraToml::lugar(const toml::node &no, const std::string &nome) {
    return naLinha(no.source()) + ", " + nome;
}

std::optional<std::string> LeituraToml::valor(const toml::node &no, const std::string &onde,
                                              const Regra &regra, Especie especie) {
    std::string texto;
    if (const auto *escrito = no.as_string())
        texto = escrito->get();
    else if (const auto *inteiro = no.as_integer())
        texto = std::to_string(inteiro->get());
    else {
        recusas_.juntar(onde, "", "escreva o valor entre aspas; " + std::string(regra.permitido));
        return {};
    }
    const bool dizer = especie == Especie::kTexto || especie == Especie::kCaminho;
    if (!regra.serve(texto)) {
        recusas_.juntar(onde, dizer ? texto : "", regra.permitido);
        return {};
    }
    const bool caminho = especie == Especie::kCaminho || especie == Especie::kCaminhoDeSegredo;
    if (!caminho || texto.starts_with('/')) return texto;
    if (diretorio_.empty()) {
        recusas_.juntar(onde, dizer ? texto : "", "dê o caminho inteiro, a partir de \"/\"");
        return {};
    }
    return std::string(diretorio_) + texto;
}

void LeituraToml::guardar(int &membro, const std::string &texto) {
    std::from_chars(texto.data(), texto.data() + texto.size(), membro);
}

} // namespace zel::envio
