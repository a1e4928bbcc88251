// SPDX-License-Identifier: MIT
#include "texto/Codigos.h"

#include "texto/Acentuacao.h"
#include "texto/Numero.h"
#include "texto/Texto.h"

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
    for (const FormaPagamento &forma : kFormasPagamento)
        if (procurado == forma.codigo || procurado == toUpperCase(fnRetiraAcentuacao(forma.rotulo)))
            return std::string(forma.codigo);
    return std::string(kOutrasFormas);
}

} // namespace zel
