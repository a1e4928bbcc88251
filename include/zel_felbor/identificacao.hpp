// SPDX-License-Identifier: MIT
// Who a receipt is for: what the functions would take for something else, or leave out without a
// word, is refused.
#pragma once

#include "zel_felbor/texto.hpp"

#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>

namespace zel_felbor {

namespace detalhe {

struct Campo {
    const char *nome;
    std::string_view valor;
};

// The first of the fields that is not empty, or one without a name.
inline Campo primeiro(std::initializer_list<Campo> campos) {
    for (const Campo &campo : campos)
        if (!campo.valor.empty()) return campo;
    return {"", ""};
}

// The check digit after `digitos`, whose weights go from 2 to `maior`, from the right.
inline char digito(std::string_view digitos, std::size_t maior) {
    std::size_t soma = 0;
    for (std::size_t i = 0; i < digitos.size(); ++i)
        soma +=
            static_cast<std::size_t>(digitos[digitos.size() - 1 - i] - '0') * (2 + i % (maior - 1));
    return static_cast<char>('0' + (soma % 11 < 2 ? 0 : 11 - soma % 11));
}

inline bool confere(const std::string &digitos) {
    const std::size_t maior = digitos.size() == 11 ? 11 : 9;
    std::string inteiro = digitos.substr(0, digitos.size() - 2);
    inteiro.push_back(digito(inteiro, maior));
    inteiro.push_back(digito(inteiro, maior));
    return inteiro == digitos && digitos.find_first_not_of(digitos[0]) != digitos.npos;
}

inline Conversao soDigitos(const std::string &argumento, std::string_view valor) {
    std::string digitos;
    for (const char c : valor)
        if (c >= '0' && c <= '9')
            digitos.push_back(c);
        else if (std::string_view(" .-/").find(c) == std::string_view::npos)
            return {"", argumento + ": só dígitos, com ou sem ponto, barra e traço"};
    return {std::move(digitos), ""};
}

} // namespace detalhe

// The digits of a CPF, or of a CNPJ: of either of them in a "documento".
inline Conversao documentoDe(const std::string &argumento, std::string_view valor) {
    Conversao digitos = detalhe::soDigitos(argumento, valor);
    if (!digitos.erro.empty()) return digitos;
    const std::size_t tamanho = digitos.texto.size();
    const bool cpf = tamanho == 11 && argumento != "cnpj";
    if (!cpf && (tamanho != 14 || argumento == "cpf"))
        return {"",
                argumento + ": " + std::to_string(tamanho) + " dígitos; um CPF tem 11, um CNPJ 14"};
    if (!detalhe::confere(digitos.texto))
        return {"", argumento + ": os dígitos verificadores não conferem"};
    return digitos;
}

namespace detalhe {

inline Conversao estrangeiroDe(const std::string &funcao, bool identificar,
                               std::string_view valor) {
    Conversao digitos = soDigitos("estrangeiro", valor);
    if (!digitos.erro.empty()) return digitos;
    const std::size_t tamanho = digitos.texto.size();
    if (tamanho < 5 || tamanho > 20 || tamanho == 11 || tamanho == 14)
        return {"", "estrangeiro: " + std::to_string(tamanho) +
                        " dígitos; permitido: de 5 a 20, e não 11 nem 14, que seriam um CPF ou um "
                        "CNPJ"};
    if (identificar)
        return {"", "estrangeiro: " + funcao + " não o grava; informe-o ao abrir o cupom"};
    return digitos;
}

// What would not stand in the document; empty when everything does.
inline std::string perdaDe(const std::string &funcao, bool identificar, const Consumidor &c,
                           bool identificado) {
    const Campo endereco = primeiro({{"numero", c.numero},
                                     {"bairro", c.bairro},
                                     {"codigoMunicipio", c.codigoMunicipio},
                                     {"municipio", c.municipio},
                                     {"uf", c.uf},
                                     {"cep", c.cep}});
    const Campo todos =
        primeiro({{"nome", c.nome}, {"logradouro", c.logradouro}, endereco, {"email", c.email}});
    if (!todos.valor.empty() && !identificado)
        return todos.nome +
               std::string(
                   ": sem CPF, CNPJ ou documento de estrangeiro o consumidor não é gravado");
    if (!c.email.empty() && !identificar)
        return "email: " + funcao + " não o grava; chame identificarConsumidor";
    if (!endereco.valor.empty() && c.logradouro.empty())
        return endereco.nome + std::string(": sem logradouro o endereço não é gravado");
    return "";
}

} // namespace detalhe

// What `funcao` is given as the document of the consumer.
inline Conversao identificacaoDe(const std::string &funcao, const Consumidor &c, bool cortar) {
    const bool identificar = funcao == "aCFIdentificarConsumidor_ZEL";
    const detalhe::Campo dada = detalhe::primeiro({{"documento", c.documento},
                                                   {"cpf", c.cpf},
                                                   {"cnpj", c.cnpj},
                                                   {"estrangeiro", c.estrangeiro}});
    const std::size_t todas =
        c.documento.size() + c.cpf.size() + c.cnpj.size() + c.estrangeiro.size();
    if (todas != dada.valor.size())
        return {"", "consumidor: dê um só entre documento, cpf, cnpj e estrangeiro"};
    if (cortar) return paraLatin1(dada.nome, dada.valor, false);
    if (std::string perda = detalhe::perdaDe(funcao, identificar, c, todas > 0); !perda.empty())
        return {"", std::move(perda)};
    if (todas == 0) return {};
    const std::string nome = dada.nome;
    return nome == "estrangeiro" ? detalhe::estrangeiroDe(funcao, identificar, dada.valor)
                                 : documentoDe(nome, dada.valor);
}

} // namespace zel_felbor
