// SPDX-License-Identifier: MIT
// The receipt in progress, as ArqPersist.bin has it: one record a line, its kind in two digits,
// "|", of items and payments a number and "|", and elements as the library writes them.
#pragma once

#include "zel_felbor/texto.hpp"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace zel_felbor {

struct ConsumidorLido {
    std::string tipo; // "cpf", "cnpj" or "estrangeiro"
    std::string documento, nome, email;
};

// Numbers as the library wrote them, with a point.
struct ItemLido {
    std::string numero, codigo, descricao, quantidade, unidade, preco, bruto;
    std::string desconto, acrescimo; // empty for none
};

struct PagamentoLido {
    std::string forma; // "01"
    std::string nome;  // "Dinheiro"
    std::string valor;
};

// A receipt that is open, or closed and not yet followed by another.
struct Andamento {
    Estado estado{};
    std::optional<ConsumidorLido> consumidor;
    std::vector<ItemLido> lista;
    std::vector<PagamentoLido> pagamentos;
    std::string total; // what the items add up to until the totals are made
    std::string pago;
    std::string falta, troco; // empty where there is none
};

namespace detalhe {

inline constexpr std::size_t maiorAndamento = 16u << 20;

inline void anexarPonto(std::string &utf8, char32_t c) {
    const auto byte = [&](char32_t valor) { utf8.push_back(static_cast<char>(valor)); };
    if (c < 0x80) return byte(c);
    if (c < 0x800) {
        byte(0xC0 | c >> 6);
    } else {
        byte(c < 0x10000 ? 0xE0 | c >> 12 : 0xF0 | c >> 18);
        if (c >= 0x10000) byte(0x80 | (c >> 12 & 0x3F));
        byte(0x80 | (c >> 6 & 0x3F));
    }
    byte(0x80 | (c & 0x3F));
}

// The character of the reference between "&" and ";"; 0 for what is none.
inline char32_t referencia(std::string_view nome) {
    constexpr std::pair<std::string_view, char> nomeadas[] = {
        {"amp", '&'}, {"lt", '<'}, {"gt", '>'}, {"quot", '"'}, {"apos", '\''}};
    for (const auto &[nomeada, letra] : nomeadas)
        if (nome == nomeada) return static_cast<unsigned char>(letra);
    if (nome.size() < 2 || nome[0] != '#') return 0;
    const bool hexa = nome[1] == 'x';
    nome.remove_prefix(hexa ? 2 : 1);
    char32_t ponto = 0;
    if (nome.empty() || nome.size() > (hexa ? 6u : 7u)) return 0;
    for (const char c : nome) {
        const std::size_t valor = std::string_view("0123456789abcdefABCDEF").find(c);
        if (valor >= (hexa ? 22u : 10u)) return 0;
        ponto = ponto * (hexa ? 16 : 10) + static_cast<char32_t>(valor < 16 ? valor : valor - 6);
    }
    return ponto < 0x110000 && (ponto < 0xD800 || ponto > 0xDFFF) ? ponto : 0;
}

inline std::string comReferencias(std::string_view latin1) {
    std::string utf8;
    for (std::size_t i = 0; i < latin1.size(); ++i) {
        const std::size_t fim = latin1[i] == '&' ? latin1.substr(i, 10).find(';') : latin1.npos;
        const char32_t c = fim == latin1.npos ? 0 : referencia(latin1.substr(i + 1, fim - 1));
        if (c == 0) {
            utf8 += paraUtf8(latin1.substr(i, 1));
            continue;
        }
        anexarPonto(utf8, c);
        i += fim;
    }
    return utf8;
}

// What stands between the first `inicio` and the `fim` after it, which is stepped over; none when
// one of them is missing.
inline std::optional<std::string_view> entre(std::string_view &texto, const std::string &inicio,
                                             const std::string &fim) {
    const std::size_t abre = texto.find(inicio);
    if (abre == texto.npos) return std::nullopt;
    texto.remove_prefix(abre + inicio.size());
    const std::size_t fecha = texto.find(fim);
    if (fecha == texto.npos) return std::nullopt;
    const std::string_view dentro = texto.substr(0, fecha);
    texto.remove_prefix(fecha + fim.size());
    return dentro;
}

// Of all elements of that name within the group.
inline std::vector<std::string> textosDe(std::string_view conteudo, const std::string &grupo,
                                         const std::string &nome) {
    std::vector<std::string> textos;
    std::string_view resto =
        entre(conteudo, "<" + grupo + ">", "</" + grupo + ">").value_or(std::string_view());
    while (const auto dentro = entre(resto, "<" + nome + ">", "</" + nome + ">"))
        textos.push_back(comReferencias(*dentro));
    return textos;
}

inline std::string textoDe(std::string_view conteudo, const std::string &grupo,
                           const std::string &nome) {
    std::vector<std::string> textos = textosDe(conteudo, grupo, nome);
    return textos.empty() ? "" : std::move(textos.front());
}

// A text that is no number is nothing.
inline std::int64_t centavosDe(const std::string &texto) {
    const std::size_t ponto = std::min(texto.find('.'), texto.size());
    const std::string inteiros = texto.substr(0, ponto);
    std::string decimais = texto.substr(std::min(ponto + 1, texto.size()));
    if (inteiros.empty() || inteiros.size() > 13 || decimais.size() > 10 ||
        (inteiros + decimais).find_first_not_of("0123456789") != texto.npos)
        return 0;
    decimais.resize(2, '0');
    return std::stoll(inteiros + decimais);
}

inline std::int64_t somar(const std::vector<std::string> &textos) {
    std::int64_t soma = 0;
    for (const std::string &texto : textos)
        soma += centavosDe(texto);
    return soma;
}

inline std::string moeda(std::int64_t centavos) {
    return Decimal::centavos(std::max<std::int64_t>(centavos, 0)).texto();
}

inline std::string moedaSeHouver(std::int64_t centavos) {
    return centavos > 0 ? moeda(centavos) : "";
}

inline std::string nomeDaForma(const std::string &codigo) {
    std::string_view todas = formas;
    const std::size_t lugar = todas.find(codigo + "=");
    if (codigo.size() != 2 || lugar == todas.npos) return codigo;
    todas.remove_prefix(lugar + codigo.size() + 1);
    return std::string(todas.substr(0, todas.find(';')));
}

inline std::optional<ConsumidorLido> consumidorDe(std::string_view abertura) {
    constexpr std::pair<const char *, const char *> tipos[] = {
        {"CPF", "cpf"}, {"CNPJ", "cnpj"}, {"idEstrangeiro", "estrangeiro"}};
    for (const auto &[nome, tipo] : tipos)
        if (std::string documento = textoDe(abertura, "dest", nome); !documento.empty())
            return ConsumidorLido{tipo, std::move(documento), textoDe(abertura, "dest", "xNome"),
                                  textoDe(abertura, "dest", "email")};
    return std::nullopt;
}

inline ItemLido itemDe(std::string_view numero, std::string_view conteudo) {
    const auto texto = [&](const char *nome) { return textoDe(conteudo, "prod", nome); };
    return {std::string(numero),
            texto("cProd"),
            texto("xProd"),
            texto("qCom"),
            texto("uCom"),
            texto("vUnCom"),
            texto("vProd"),
            moedaSeHouver(somar(textosDe(conteudo, "prod", "vDesc"))),
            moedaSeHouver(somar(textosDe(conteudo, "prod", "vOutro")))};
}

// False for what is no record of a receipt. `total`: of the totals, empty before.
inline bool lerRegistro(Andamento &lido, std::string &total, std::string_view registro) {
    if (registro.size() < 3 || registro[0] != '0' || registro[2] != '|') return false;
    const char tipo = registro[1];
    registro.remove_prefix(3);
    std::string_view numero;
    if (tipo == '2' || tipo == '5') {
        const std::size_t barra = registro.find('|');
        if (barra == registro.npos) return false;
        numero = registro.substr(0, barra);
        registro.remove_prefix(barra + 1);
    }
    switch (tipo) {
    case '1':
        lido.consumidor = consumidorDe(registro);
        return true;
    case '2':
        lido.lista.push_back(itemDe(numero, registro));
        return true;
    case '3':
        total = textoDe(registro, "ICMSTot", "vNF");
        return true;
    case '5': {
        const std::string forma = textoDe(registro, "pag", "tPag");
        lido.pagamentos.push_back({forma, nomeDaForma(forma), textoDe(registro, "pag", "vPag")});
        return true;
    }
    default:
        return tipo == '4' || tipo == '6';
    }
}

inline void totalizar(Andamento &lido, const std::string &total) {
    std::int64_t devido = 0, pago = 0;
    for (const ItemLido &i : lido.lista)
        devido += centavosDe(i.bruto) + centavosDe(i.acrescimo) - centavosDe(i.desconto);
    if (!total.empty()) devido = centavosDe(total);
    for (const PagamentoLido &p : lido.pagamentos)
        pago += centavosDe(p.valor);
    lido.total = moeda(devido);
    lido.pago = moeda(pago);
    lido.falta = total.empty() ? "" : moedaSeHouver(devido - pago);
}

} // namespace detalhe

// The bytes of ArqPersist.bin; `erro` is empty when they are a receipt's. A last record without its
// end does not count: the process died while it was written.
inline Andamento andamentoDe(std::string_view bytes, std::string &erro) {
    Andamento lido;
    std::string total;
    int ordem = 0;
    for (std::size_t fim = 0; (fim = bytes.find("\r\n")) != bytes.npos;
         bytes.remove_prefix(fim + 2)) {
        ++ordem;
        if (detalhe::lerRegistro(lido, total, bytes.substr(0, fim))) continue;
        erro = "ArqPersist.bin: o registro " + std::to_string(ordem) + " não é de um cupom";
        return {};
    }
    detalhe::totalizar(lido, total);
    return lido;
}

} // namespace zel_felbor
