// SPDX-License-Identifier: MIT
#include "leitura/Terminal.h"

#include "leitura/Texto.h"

#include <clocale>
#include <cstdlib>
#include <langinfo.h>

namespace zel::aplicativo {

namespace {

// kNenhum: the locale names no character set beyond ASCII.
enum class Conjunto { kNenhum, kUtf8, kOutro };

Conjunto conjuntoDe(std::string_view codigo) {
    if (igualSemCaixa(codigo, "UTF-8") || igualSemCaixa(codigo, "UTF8")) return Conjunto::kUtf8;
    return igualSemCaixa(codigo, "ANSI_X3.4-1968") ? Conjunto::kNenhum : Conjunto::kOutro;
}

// The character set that the name of the locale ends with: "pt_BR.UTF-8@euro".
Conjunto nomeado() {
    for (const char *variavel : {"LC_ALL", "LC_CTYPE", "LANG"}) {
        const char *valor = std::getenv(variavel);
        if (valor == nullptr || *valor == '\0') continue;
        const std::string_view nome = valor;
        const std::size_t ponto = nome.find('.');
        if (ponto == nome.npos) return Conjunto::kNenhum;
        return conjuntoDe(nome.substr(ponto + 1, nome.find('@') - ponto - 1));
    }
    return Conjunto::kNenhum;
}

// A locale that is not installed still says by its name what the terminal shows.
Conjunto descobrirConjunto() {
    if (std::setlocale(LC_CTYPE, "") == nullptr) return nomeado();
    const Conjunto conjunto = conjuntoDe(::nl_langinfo(CODESET));
    std::setlocale(LC_CTYPE, "C");
    return conjunto;
}

Conjunto &conjuntoDoTerminal() {
    static Conjunto conjunto = descobrirConjunto();
    return conjunto;
}

bool ehControle(std::string_view texto, std::size_t lugar) {
    const auto byte = static_cast<unsigned char>(texto[lugar]);
    if (byte < 0x20) return texto[lugar] != '\n';
    if (byte == 0x7F) return true;
    return byte == 0xC2 && lugar + 1 < texto.size() &&
           static_cast<unsigned char>(texto[lugar + 1]) < 0xA0;
}

// Without control characters, in ISO-8859-1 when asked for: "?" for what cannot be shown.
std::string mostravel(std::string_view utf8, bool emUtf8) {
    std::string saida;
    for (std::size_t i = 0; i < utf8.size();) {
        std::size_t tamanho = 1;
        while (i + tamanho < utf8.size() &&
               (static_cast<unsigned char>(utf8[i + tamanho]) & 0xC0) == 0x80)
            ++tamanho;
        const std::string_view caracter = utf8.substr(i, tamanho);
        if (ehControle(utf8, i))
            saida += '?';
        else if (emUtf8)
            saida.append(caracter);
        else
            saida.append(latin1DeUtf8(caracter).value_or("?"));
        i += tamanho;
    }
    return saida;
}

void escreverBytes(std::FILE *arquivo, std::string_view bytes) {
    std::fwrite(bytes.data(), 1, bytes.size(), arquivo);
}

} // namespace

std::string argumento(const char *bytes) {
    Conjunto &conjunto = conjuntoDoTerminal();
    if (conjunto == Conjunto::kNenhum && !ehAscii(bytes) && ehUtf8(bytes))
        conjunto = Conjunto::kUtf8;
    return conjunto == Conjunto::kUtf8 && ehUtf8(bytes) ? std::string(bytes) : utf8DeLatin1(bytes);
}

std::optional<std::string> lerLinha() {
    std::string linha;
    int c = std::getchar();
    if (c == EOF) return {};
    for (; c != EOF && c != '\n'; c = std::getchar())
        linha += static_cast<char>(c);
    if (linha.ends_with('\r')) linha.pop_back();
    return argumento(linha.c_str());
}

void escrever(std::FILE *arquivo, std::string_view utf8) {
    escreverBytes(arquivo, mostravel(utf8, conjuntoDoTerminal() == Conjunto::kUtf8));
}

void escreverJson(std::string_view json) {
    escreverBytes(stdout, json);
    escreverBytes(stdout, "\n");
}

} // namespace zel::aplicativo
