// SPDX-License-Identifier: MIT
#include "util/Codigos.h"

#include "util/Acentuacao.h"
#include "util/Numero.h"
#include "util/Texto.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace zel {

namespace {

constexpr std::string_view kMascaraCpf = "###.###.###-##";
constexpr std::string_view kMascaraCnpj = "##.###.###/####-##";
constexpr std::size_t kDigitosCpf = 11;
constexpr std::size_t kDigitosCnpj = 14;
constexpr std::size_t kMaximoDigitos = 15;

// Each "#" of the mask takes one digit; the mask has no more places than there are digits.
std::string aplicarMascara(std::string_view mascara, std::string_view digitos) {
    std::string resultado(mascara);
    auto digito = digitos.begin();
    for (char &lugar : resultado)
        if (lugar == '#') lugar = *digito++;
    return resultado;
}

struct FormaPagamento {
    std::string_view nome;
    std::string_view codigo;
};

// Manual de Orientação do Contribuinte 6.0, Anexo I, group YA, the values of tPag.
constexpr std::array<FormaPagamento, 9> kFormas{{
    {"DINHEIRO", "01"},
    {"CHEQUE", "02"},
    {"CARTAO DE CREDITO", "03"},
    {"CARTAO DE DEBITO", "04"},
    {"CREDITO LOJA", "05"},
    {"VALE ALIMENTACAO", "10"},
    {"VALE REFEICAO", "11"},
    {"VALE PRESENTE", "12"},
    {"VALE COMBUSTIVEL", "13"},
}};
constexpr std::string_view kOutrasFormas = "99";
constexpr std::size_t kMaximoForma = 49; // of a name, in characters

} // namespace

std::string fnFormatarCPFCNPJ(std::string_view documento) {
    std::string digitos = fnRetirarCaracter(documento);
    if (digitos.empty() || digitos.size() > kMaximoDigitos) return digitos;
    return digitos.size() > kDigitosCpf
               ? aplicarMascara(kMascaraCnpj, fnZerosLeft(digitos, kDigitosCnpj))
               : aplicarMascara(kMascaraCpf, fnZerosLeft(digitos, kDigitosCpf));
}

std::string fnRetornaCodigoFormaPgto(std::string_view nome) {
    const std::string procurado = toUpperCase(fnRetiraAcentuacao(nome.substr(0, kMaximoForma)));
    const auto forma =
        std::find_if(kFormas.begin(), kFormas.end(), [&procurado](const FormaPagamento &f) {
            return procurado == f.nome || procurado == f.codigo;
        });
    return std::string(forma == kFormas.end() ? kOutrasFormas : forma->codigo);
}

} // namespace zel
