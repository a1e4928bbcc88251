// SPDX-License-Identifier: MIT
// JSON text, written piece by piece: always UTF-8, one line, members in the order given.
#pragma once

#include <string>
#include <string_view>

namespace zel::aplicativo {

class Json {
public:
    // Within an object everything has a name; in a list, or as the whole text, the name is empty.
    Json &abrirObjeto(std::string_view nome = {}) { return abrir(nome, '{'); }
    Json &abrirLista(std::string_view nome = {}) { return abrir(nome, '['); }
    Json &fecharObjeto() { return fechar('}'); }
    Json &fecharLista() { return fechar(']'); }
    Json &texto(std::string_view nome, std::string_view utf8);
    // A value that is JSON already.
    Json &escrito(std::string_view nome, std::string_view json);
    Json &numero(std::string_view nome, long long valor);

    const std::string &escrito() const { return escrito_; }

private:
    Json &abrir(std::string_view nome, char sinal);
    Json &fechar(char sinal);
    void comecar(std::string_view nome);
    void citar(std::string_view utf8);

    std::string escrito_;
};

} // namespace zel::aplicativo
