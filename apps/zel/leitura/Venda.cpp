// SPDX-License-Identifier: MIT
#include "leitura/Venda.h"

#include "comum/Digitos.h"
#include "leitura/Texto.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <utility>

namespace zel::aplicativo {

namespace {

constexpr std::size_t kMaximoNumero = 15;
constexpr std::size_t kMaximoItens = 999;
constexpr std::size_t kCasasDoDinheiro = 2;

// The fields of an item in their order, with the lengths that the library takes.
struct Campo {
    std::string_view nome;
    std::string ItemVenda::*texto; // null: the adjustment
    std::size_t minimo, maximo;
    std::size_t casas = 0; // of a number, 0 for a text
};
constexpr Campo kCampos[] = {
    {"código", &ItemVenda::codigo, 1, 60},
    {"descrição", &ItemVenda::descricao, 1, 120},
    {"quantidade", &ItemVenda::quantidade, 1, kMaximoNumero, 4},
    {"preço", &ItemVenda::preco, 1, kMaximoNumero, 10},
    {"unidade", &ItemVenda::unidade, 0, 6},
    {"alíquota", &ItemVenda::aliquota, 0, 15},
    {"ajuste", nullptr, 0, kMaximoNumero + 2},
    {"NCM", &ItemVenda::ncm, 0, 8},
    {"CFOP", &ItemVenda::cfop, 0, 4},
};
constexpr std::size_t kCamposExigidos = 4;

struct Forma {
    std::string_view nome; // without accents
    std::string_view codigo;
};
constexpr Forma kFormas[] = {
    {"Dinheiro", "01"},         {"Cheque", "02"},        {"Cartao de Credito", "03"},
    {"Cartao de Debito", "04"}, {"Credito Loja", "05"},  {"Vale Alimentacao", "10"},
    {"Vale Refeicao", "11"},    {"Vale Presente", "12"}, {"Vale Combustivel", "13"},
    {"Outros", "99"},
};

// Digits with at most one comma or point between them, and not all of them zero: the library writes
// a price into the document as it is given.
bool ehValor(std::string_view texto) {
    const auto separador = texto.find_first_of(",.");
    if (texto.empty() || !ehDigito(texto.front()) || !ehDigito(texto.back())) return false;
    std::string digitos(texto);
    if (separador != texto.npos) digitos.erase(separador, 1);
    return texto.size() <= kMaximoNumero && soDigitos(digitos) &&
           digitos.find_first_not_of('0') != digitos.npos;
}

// What is wrong with the decimals of a number: zeros at their end do not count.
std::string conferirCasas(std::string_view numero, std::size_t casas, Excesso excesso) {
    const std::size_t separador = numero.find_first_of(",.");
    if (separador == numero.npos || excesso == Excesso::kCorta) return {};
    const std::size_t ultima = numero.find_last_not_of('0');
    if (ultima - separador <= casas) return {};
    return juntar({numero, ": tem mais de ", std::to_string(casas),
                   " casas decimais, e as outras se perderiam (--cortar as deixa ir)"});
}

// The consumer's document without its punctuation; none when anything else stands in it.
bool soComPontuacao(std::string_view texto, std::string &digitos) {
    digitos.clear();
    for (const char c : texto) {
        if (ehDigito(c))
            digitos += c;
        else if (std::string_view(".-/ ").find(c) == std::string_view::npos)
            return false;
    }
    return true;
}

std::string lerCampo(const Campo &campo, std::string_view texto, ItemVenda &item, Excesso excesso) {
    if (texto.empty() && campo.minimo == 0) return {};
    if (texto.empty()) return juntar({"falta ", campo.nome});
    const bool numero = campo.casas > 0 || campo.texto == nullptr;
    if (excesso == Excesso::kCorta && !numero) texto = aparar(inicio(texto, campo.maximo));
    if (comprimento(texto) > campo.maximo)
        return juntar({campo.nome, " com mais de ", std::to_string(campo.maximo), " caracteres",
                       numero ? "" : " (--cortar a corta ali)"});
    if (campo.texto == nullptr) return lerAjuste(texto, item.ajuste, excesso);
    if (numero && !ehValor(texto))
        return juntar({campo.nome, " ", texto, ": não é um número acima de zero"});
    if (numero)
        if (std::string erro = conferirCasas(texto, campo.casas, excesso); !erro.empty())
            return juntar({campo.nome, " ", erro});
    const auto latin1 = latin1DeUtf8(texto);
    if (!latin1) return juntar({campo.nome, ": tem um caracter que o ISO-8859-1 não tem"});
    item.*campo.texto = *latin1;
    return {};
}

} // namespace

std::string lerItem(std::string_view texto, ItemVenda &item, Excesso excesso) {
    const auto partes = dividir(texto, ';');
    if (partes.size() < kCamposExigidos || partes.size() > std::size(kCampos))
        return "não é CÓDIGO;DESCRIÇÃO;QUANTIDADE;PREÇO[;UNIDADE[;ALÍQUOTA[;AJUSTE[;NCM[;CFOP]]]]]";
    for (std::size_t i = 0; i < partes.size(); ++i)
        if (std::string erro = lerCampo(kCampos[i], aparar(partes[i]), item, excesso);
            !erro.empty())
            return erro;
    return {};
}

std::string lerPagamento(std::string_view texto, PagamentoVenda &pagamento, Excesso excesso) {
    const std::size_t igual = texto.find('=');
    const std::string nome = semAcentos(aparar(texto.substr(0, igual)));
    const auto forma = std::find_if(std::begin(kFormas), std::end(kFormas), [&](const Forma &f) {
        return nome == f.codigo || igualSemCaixa(nome, f.nome);
    });
    if (forma == std::end(kFormas)) {
        std::string erro = juntar({texto, ": a forma de pagamento é uma destas:"});
        for (const Forma &f : kFormas)
            erro += juntar({"\n    ", f.codigo, " ", f.nome});
        return erro;
    }
    pagamento.forma = forma->codigo;
    if (igual == texto.npos) return {};
    pagamento.valor = aparar(texto.substr(igual + 1));
    if (!ehValor(pagamento.valor))
        return juntar({texto, ": o valor não é um número acima de zero"});
    return conferirCasas(pagamento.valor, kCasasDoDinheiro, excesso);
}

std::string lerAjuste(std::string_view texto, Ajuste &ajuste, Excesso excesso) {
    texto = aparar(texto);
    const bool percentual = texto.ends_with('%');
    const std::string_view valor =
        texto.empty() ? texto : aparar(texto.substr(1, texto.size() - 1 - (percentual ? 1 : 0)));
    if ((!texto.starts_with('-') && !texto.starts_with('+')) || !ehValor(valor))
        return juntar({texto, ": um ajuste é -10% ou -1,50 (desconto), +5% ou +2,00 (acréscimo)"});
    ajuste = {juntar({texto.starts_with('-') ? "D" : "A", percentual ? "%" : "$"}),
              std::string(valor)};
    return percentual ? "" : conferirCasas(valor, kCasasDoDinheiro, excesso);
}

std::string lerConsumidor(std::string_view texto, std::string &digitos) {
    if (!soComPontuacao(texto, digitos)) return juntar({texto, ": não é um CPF nem um CNPJ"});
    if (ehCpf(digitos) || ehCnpj(digitos)) return {};
    return juntar({texto, ": não é um CPF nem um CNPJ; confira os dígitos"});
}

std::string lerCnpj(std::string_view texto, std::string &digitos) {
    if (soComPontuacao(texto, digitos) && ehCnpj(digitos)) return {};
    return juntar({texto, ": não é um CNPJ; confira os 14 dígitos"});
}

std::string lerEstrangeiro(std::string_view texto, std::string &digitos) {
    constexpr std::size_t kMenor = 5, kMaior = 20, kDeCpf = 11, kDeCnpj = 14;
    if (!soComPontuacao(texto, digitos))
        return juntar({texto, ": a biblioteca só guarda os dígitos de um documento estrangeiro; um "
                              "com letras ficaria pela metade"});
    if (digitos.size() == kDeCpf || digitos.size() == kDeCnpj)
        return juntar({texto, ": com ", std::to_string(digitos.size()),
                       " dígitos a biblioteca o toma por um ",
                       digitos.size() == kDeCpf ? "CPF" : "CNPJ"});
    if (digitos.size() >= kMenor && digitos.size() <= kMaior) return {};
    return juntar({texto, ": um documento estrangeiro tem de 5 a 20 dígitos"});
}

std::string_view nomeDaForma(std::string_view codigo) {
    const auto forma = std::ranges::find(kFormas, codigo, &Forma::codigo);
    return forma == std::end(kFormas) ? codigo : forma->nome;
}

std::string lerItens(std::string_view bytes, std::vector<ItemVenda> &itens, Excesso excesso) {
    if (bytes.starts_with("\xEF\xBB\xBF")) bytes.remove_prefix(3);
    const std::string texto = ehUtf8(bytes) ? std::string(bytes) : utf8DeLatin1(bytes);
    std::size_t numero = 0;
    for (const std::string_view inteira : dividir(texto, '\n')) {
        ++numero;
        const std::string_view linha = aparar(inteira);
        if (linha.empty() || linha.starts_with('#')) continue;
        ItemVenda item;
        std::string erro = lerItem(linha, item, excesso);
        if (erro.empty() && itens.size() >= kMaximoItens) erro = "um cupom tem até 999 itens";
        if (!erro.empty()) return juntar({"linha ", std::to_string(numero), ": ", erro});
        itens.push_back(std::move(item));
    }
    return {};
}

} // namespace zel::aplicativo
