// SPDX-License-Identifier: MIT
#include "leitura/Json.h"

#include "leitura/Texto.h"

namespace zel::aplicativo {

Json &Json::abrir(std::string_view nome, char sinal) {
    comecar(nome);
    escrito_ += sinal;
    return *this;
}

Json &Json::fechar(char sinal) {
    escrito_ += sinal;
    return *this;
}

void Json::comecar(std::string_view nome) {
    if (!escrito_.empty() && escrito_.back() != '{' && escrito_.back() != '[') escrito_ += ',';
    if (nome.empty()) return;
    citar(nome);
    escrito_ += ':';
}

void Json::citar(std::string_view utf8) {
    // A name of a file may be anything.
    if (!ehUtf8(utf8)) return citar(utf8DeLatin1(utf8));
    constexpr std::string_view kHexa = "0123456789abcdef";
    escrito_ += '"';
    for (const char c : utf8) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x20 || byte == 0x7F)
            escrito_.append("\\u00").append({kHexa[byte >> 4], kHexa[byte & 15]});
        else if (c == '"' || c == '\\')
            escrito_.append({'\\', c});
        else
            escrito_ += c;
    }
    escrito_ += '"';
}

Json &Json::texto(std::string_view nome, std::string_view utf8) {
    comecar(nome);
    citar(utf8);
    return *this;
}

Json &Json::escrito(std::string_view nome, std::string_view json) {
    comecar(nome);
    escrito_ += json;
    return *this;
}

Json &Json::numero(std::string_view nome, long long valor) {
    comecar(nome);
    escrito_ += std::to_string(valor);
    return *this;
}

} // namespace zel::aplicativo
