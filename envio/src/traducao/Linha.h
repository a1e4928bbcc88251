// SPDX-License-Identifier: MIT
// The vocabulary of the tables of layout 4.00. A row is an element: its name, how its value is
// written, whether it must be there, where the value comes from, and the public source of all that.
// The rows of a group stand in the order of the schema; Motor.h walks them.
#pragma once

#include "config/Configuracao.h"
#include "traducao/Formato.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace zel::envio {

struct Lugar; // Motor.h
struct Linha;

// A value that is not simply copied; none leaves the element out, or has refused already.
using Regra = std::optional<std::string> (*)(const Lugar &);
using Condicao = bool (*)(const Lugar &);
using Conferencia = void (*)(const Lugar &);

enum class Presenca {
    kExigido,
    kOpcional, // where the till has it
    kSemZero,  // likewise, and a zero is left out: the type has none (TDec_1302Opc)
    kSai,      // the till writes it, layout 4.00 has it not
};

inline constexpr std::string_view kDaVenda = "o que a aplicação dá ao vender o item";
inline constexpr std::string_view kDoConsumidor =
    "o que a aplicação dá ao identificar o consumidor";
inline constexpr std::string_view kDaTransportadora =
    "o que a aplicação dá ao identificar a transportadora";
inline constexpr std::string_view kDoTotal = "o que a aplicação dá ao totalizar";
inline constexpr std::string_view kDoPagamento = "o que a aplicação dá ao pagar";
inline constexpr std::string_view kDaForma =
    "a forma com que a aplicação paga, ou configure tPag dela em [pagamentos] de zel-envio.toml";
inline constexpr std::string_view kDoCartao =
    "o cartão do pagamento, ou configure tpIntegra, CNPJ, tBand e cAut desta forma em "
    "[pagamentos] de zel-envio.toml";
inline constexpr std::string_view kDaMensagem = "o texto que a aplicação dá ao encerrar";
inline constexpr std::string_view kDoDocumento =
    "o documento: traduza o que o caixa gravou, sem mudá-lo";

// Which items a sum takes.
enum class Quais { kTodos, kMercadorias, kServicos };

struct Linha {
    std::string_view nome;
    std::string_view fonte; // group and number in the Manual de Orientação do Contribuinte 7.0, or
                            // the Nota Técnica
    Presenca presenca = Presenca::kExigido;
    Formato formato = {};

    // Where the value comes from: of these at most one, else the till's element of that name.
    std::string_view origem = {}; // other names in layout 3.10, "a|b"; "." is where its group is
    std::string_view fixo = {};
    Regra regra = nullptr;
    std::string ConfigProduto::*produto = nullptr;
    std::string_view soma = {}; // path below each item of the new document, "*" any element
    Quais quais = Quais::kTodos;

    // By which a shop mends it: a key of ZEL_Framework.xml, in which "*" is the group; or words.
    std::string_view chave = {};
    Condicao quando = nullptr;   // asked of the group; the row is passed over when it says no
    Conferencia aoFim = nullptr; // of a group: looks at it when it is written
    std::span<const Linha> filhos = {};
    int repete = 0;      // a group for each element of the till, up to so many
    bool item = false;   // and each of these is an item
    bool soltos = false; // children without an element around them: all of them or none

    constexpr Linha de(std::string_view nomes) const {
        Linha outra = *this;
        outra.origem = nomes;
        return outra;
    }
    constexpr Linha no(std::string_view chaveDoCaixa) const {
        Linha outra = *this;
        outra.chave = chaveDoCaixa;
        return outra;
    }
    constexpr Linha por(Regra qual) const {
        Linha outra = *this;
        outra.regra = qual;
        return outra;
    }
    constexpr Linha se(Condicao qual) const {
        Linha outra = *this;
        outra.quando = qual;
        return outra;
    }
    constexpr Linha configurado(std::string ConfigProduto::*membro) const {
        Linha outra = *this;
        outra.produto = membro;
        return outra;
    }
    constexpr Linha conferido(Conferencia qual) const {
        Linha outra = *this;
        outra.aoFim = qual;
        return outra;
    }
    constexpr Linha repetido(int maximo, bool comoItem = false) const {
        Linha outra = *this;
        outra.repete = maximo;
        outra.item = comoItem;
        return outra;
    }
};

constexpr Linha obr(std::string_view nome, Formato formato, std::string_view fonte) {
    return {nome, fonte, Presenca::kExigido, formato};
}
constexpr Linha opc(std::string_view nome, Formato formato, std::string_view fonte) {
    return {nome, fonte, Presenca::kOpcional, formato};
}
constexpr Linha semZero(std::string_view nome, std::string_view fonte) {
    return {nome, fonte, Presenca::kSemZero, kTDec_1302};
}
constexpr Linha fixo(std::string_view nome, std::string_view valor, std::string_view fonte) {
    Linha linha{nome, fonte};
    linha.fixo = valor;
    return linha;
}
constexpr Linha sai(std::string_view nome, std::string_view fonte) {
    return {nome, fonte, Presenca::kSai};
}
constexpr Linha soma(std::string_view nome, std::string_view caminho, std::string_view fonte,
                     Presenca presenca = Presenca::kExigido, Quais quais = Quais::kTodos) {
    Linha linha{nome, fonte, presenca, kTDec_1302};
    linha.soma = caminho;
    linha.quais = quais;
    return linha;
}
template <std::size_t N>
constexpr Linha grupo(std::string_view nome, Presenca presenca, const Linha (&filhos)[N],
                      std::string_view fonte) {
    Linha linha{nome, fonte, presenca};
    linha.filhos = filhos;
    return linha;
}
// A sequence of the schema that stands whole or not at all.
template <std::size_t N>
constexpr Linha juntos(const Linha (&filhos)[N]) {
    Linha linha{{}, {}, Presenca::kOpcional};
    linha.filhos = filhos;
    linha.soltos = true;
    return linha;
}

} // namespace zel::envio
