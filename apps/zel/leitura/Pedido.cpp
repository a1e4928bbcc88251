// SPDX-License-Identifier: MIT
#include "leitura/Pedido.h"

#include "comum/ChaveAcesso.h"
#include "leitura/Texto.h"

namespace zel::aplicativo {

namespace {

constexpr std::size_t kMenorJustificativa = 15;
constexpr std::size_t kDigitosDaSerie = ChaveAcesso::digitos(ChaveAcesso::Parte::kSerie);
constexpr long long kMaiorNumero = 999999999, kMaiorSerie = 999;
constexpr long long kDiasDoMes[] = {31, 29, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};

bool ehBissexto(long long ano) {
    return ano % 4 == 0 && (ano % 100 != 0 || ano % 400 == 0);
}

bool ehData(std::string_view texto) {
    if (texto.size() != 10 || texto[4] != '-' || texto[7] != '-') return false;
    const auto ano = lerInteiro(texto.substr(0, 4)), mes = lerInteiro(texto.substr(5, 2)),
               dia = lerInteiro(texto.substr(8));
    if (!ano || !mes || !dia || *mes < 1 || *mes > 12 || *dia < 1) return false;
    return *dia <= kDiasDoMes[*mes - 1] && (*mes != 2 || *dia < 29 || ehBissexto(*ano));
}

} // namespace

NumeroESerie numeroDaChave(std::string_view chave) {
    const auto parte = [&](ChaveAcesso::Parte qual) {
        return std::to_string(lerInteiro(ChaveAcesso::parte(chave, qual)).value_or(0));
    };
    return {parte(ChaveAcesso::Parte::kNNF), parte(ChaveAcesso::Parte::kSerie)};
}

std::string conferirNumero(std::string_view texto) {
    const auto numero = lerInteiro(texto);
    if (numero && *numero >= 1 && *numero <= kMaiorNumero) return {};
    return juntar({texto, ": não é um número de 1 a 999999999"});
}

std::string conferirSerie(std::string_view texto) {
    const auto serie = lerInteiro(texto);
    if (serie && *serie <= kMaiorSerie && texto.size() <= kDigitosDaSerie) return {};
    return juntar({texto, ": a série é de 0 a 999"});
}

std::string conferirData(std::string_view texto) {
    return ehData(texto) ? "" : juntar({texto, ": não é uma data, como 2026-01-31"});
}

std::string conferirFaixa(std::string_view inicial, std::string_view final) {
    for (const std::string_view numero : {inicial, final})
        if (std::string erro = conferirNumero(numero); !erro.empty()) return erro;
    if (lerInteiro(inicial) <= lerInteiro(final)) return {};
    return juntar({"o número final, ", final, ", vem antes do inicial, ", inicial});
}

std::string conferirJustificativa(std::string_view utf8, std::size_t maximo) {
    const std::size_t tamanho = comprimento(utf8);
    if (tamanho >= kMenorJustificativa && tamanho <= maximo) return {};
    return juntar(
        {"a justificativa tem ", caracteres(tamanho), "; são de 15 a ", std::to_string(maximo)});
}

} // namespace zel::aplicativo
