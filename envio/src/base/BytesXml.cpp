// SPDX-License-Identifier: MIT
#include "base/BytesXml.h"

#include "base/Xml.h"

#include <algorithm>
#include <array>

namespace zel::envio {

namespace {

constexpr int kMaisAtributos = 256;    // of an element
constexpr int kMaisEspacos = 256;      // with a prefix, of a document
constexpr std::size_t kMaiorNome = 40; // of an encoding, when it is shown

constexpr const char *kUtf8 = "UTF-8";
constexpr const char *kLatin1 = "ISO-8859-1";
constexpr std::array<const char *, 4> kCodificacoes{kUtf8, kLatin1, "windows-1252", "US-ASCII"};
constexpr std::string_view kBrancos = " \t\r\n";
constexpr std::string_view kMarcaUtf8 = "\xEF\xBB\xBF";

// No value of an attribute has a "<": whatever stands in front of one, an element begins there.
bool atributosDemais(std::string_view bytes) {
    bool dentro = false;
    char aspas = 0;
    int atributos = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const char c = bytes[i];
        if (c == '<') {
            const char proximo = i + 1 < bytes.size() ? bytes[i + 1] : '\0';
            dentro = proximo != '!' && proximo != '?' && proximo != '/';
            aspas = 0;
            atributos = 0;
        } else if (dentro && aspas != 0) {
            if (c == aspas) aspas = 0;
        } else if (dentro && (c == '"' || c == '\'')) {
            aspas = c;
            if (++atributos > kMaisAtributos) return true;
        } else if (c == '>') {
            dentro = false;
        }
    }
    return false;
}

bool espacosDemais(std::string_view bytes) {
    constexpr std::string_view kDeclaracao = "xmlns:";
    int quantos = 0;
    for (std::size_t i = bytes.find(kDeclaracao); i != bytes.npos;
         i = bytes.find(kDeclaracao, i + kDeclaracao.size()))
        if (++quantos > kMaisEspacos) return true;
    return false;
}

// What stands in quotes after a "=" at the beginning; empty when it has another form.
std::string_view valorEmAspas(std::string_view texto) {
    const auto aparar = [&texto] {
        texto.remove_prefix(std::min(texto.find_first_not_of(kBrancos), texto.size()));
    };
    aparar();
    if (!texto.starts_with('=')) return {};
    texto.remove_prefix(1);
    aparar();
    if (texto.empty() || (texto[0] != '"' && texto[0] != '\'')) return {};
    return texto.substr(1, std::min(texto.find(texto[0], 1), texto.size()) - 1);
}

char minuscula(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

const char *conhecida(std::string_view nome) {
    const auto *achada = std::find_if(
        kCodificacoes.begin(), kCodificacoes.end(), [nome](std::string_view codificacao) {
            return std::equal(nome.begin(), nome.end(), codificacao.begin(), codificacao.end(),
                              [](char a, char b) { return minuscula(a) == minuscula(b); });
        });
    return achada == kCodificacoes.end() ? nullptr : *achada;
}

} // namespace

std::string motivoParaNaoLer(std::string_view bytes) {
    if (bytes.find('\0') != bytes.npos) return "contém um byte nulo";
    if (bytes.find("<!DOCTYPE") != bytes.npos) return "contém DOCTYPE";
    if (atributosDemais(bytes)) return "tem um elemento com atributos demais";
    if (espacosDemais(bytes)) return "declara espaços de nomes demais";
    return {};
}

const char *codificacaoDe(std::string_view bytes, std::string &motivo) {
    const bool marcado = bytes.starts_with(kMarcaUtf8);
    if (marcado) bytes.remove_prefix(kMarcaUtf8.size());
    const char *codificacao = nullptr;
    if (bytes.starts_with("<?xml")) {
        constexpr std::string_view kNome = "encoding";
        const std::string_view declaracao = bytes.substr(0, bytes.find("?>"));
        for (std::size_t i = declaracao.find(kNome); i != declaracao.npos;
             i = declaracao.find(kNome, i + kNome.size())) {
            const std::string_view nome = valorEmAspas(declaracao.substr(i + kNome.size()));
            codificacao = conhecida(nome);
            if (codificacao != nullptr) continue;
            motivo = "declara a codificação " + std::string(nome.substr(0, kMaiorNome)) +
                     "; são lidas UTF-8, ISO-8859-1, windows-1252 e US-ASCII";
            return nullptr;
        }
    }
    if (codificacao == nullptr || marcado) codificacao = marcado || ehUtf8(bytes) ? kUtf8 : kLatin1;
    return codificacao;
}

} // namespace zel::envio
