// SPDX-License-Identifier: MIT
// The access key of an NFC-e ("chave de acesso"): 44 digits in nine parts, the last one a check
// digit over the others. The one place that knows where a part stands: keys are read and built
// here. A header alone, because the command zel reads keys too. Source: Manual de Orientação do
// Contribuinte, NF-e layout 3.10, "Chave de Acesso da NF-e".
#pragma once

#include "comum/Ascii.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace zel {

// Check digit ("0" to "9") of an access key given without it (43 digits), modulo 11 with weights 2
// to 9 from the right; remainders 0 and 1 give "0". A character that is no digit counts as 0.
constexpr char fnCalcula_cDV(std::string_view chave) {
    std::size_t soma = 0, peso = 2;
    for (std::size_t i = chave.size(); i-- > 0; peso = peso == 9 ? 2 : peso + 1)
        if (ehDigito(chave[i])) soma += static_cast<std::size_t>(chave[i] - '0') * peso;
    const std::size_t resto = soma % 11;
    return static_cast<char>(resto < 2 ? '0' : '0' + (11 - resto));
}

class ChaveAcesso {
public:
    // In the order of the key: state, year and month, issuer, model, series, number, kind of
    // issuing, numeric code, check digit.
    enum class Parte { kCUF, kAAMM, kCNPJ, kMod, kSerie, kNNF, kTpEmis, kCNF, kCDV };

    static constexpr std::size_t kDigitos = 44;

    static constexpr std::size_t digitos(Parte parte) {
        return kTamanhos[static_cast<std::size_t>(parte)];
    }

    // All parts but the check digit, zeros on the left included.
    struct Partes {
        std::string cUF, AAMM, CNPJ, mod, serie, nNF, tpEmis, cNF;
    };

    // None when the text is not 44 digits, and so nothing that could lead a file name elsewhere.
    // The check digit may be any: integra().
    static constexpr std::optional<ChaveAcesso> ler(std::string_view texto) {
        if (texto.size() != kDigitos || !std::all_of(texto.begin(), texto.end(), ehDigito))
            return std::nullopt;
        return ChaveAcesso(texto);
    }

    // None when a part has not its number of digits.
    static std::optional<ChaveAcesso> montar(const Partes &p) {
        std::string chave;
        auto tamanho = kTamanhos.begin();
        for (const std::string *parte :
             {&p.cUF, &p.AAMM, &p.CNPJ, &p.mod, &p.serie, &p.nNF, &p.tpEmis, &p.cNF}) {
            if (parte->size() != *tamanho++) return std::nullopt;
            chave += *parte;
        }
        return ler(chave + fnCalcula_cDV(chave));
    }

    // A part of any text of 44 characters.
    static constexpr std::string_view parte(std::string_view chave, Parte qual) {
        std::size_t inicio = 0;
        for (std::size_t i = 0; i < static_cast<std::size_t>(qual); ++i)
            inicio += kTamanhos[i];
        return chave.substr(inicio, digitos(qual));
    }

    constexpr std::string_view parte(Parte qual) const { return parte(texto(), qual); }
    constexpr std::string_view texto() const { return {digitos_.data(), kDigitos}; }

    // The check digit that the other parts ask for, and whether the key ends with it.
    constexpr char digitoCerto() const { return fnCalcula_cDV(texto().substr(0, kDigitos - 1)); }
    constexpr bool integra() const { return digitos_.back() == digitoCerto(); }

private:
    static constexpr std::array<std::size_t, 9> kTamanhos{2, 4, 14, 2, 3, 9, 1, 8, 1};

    explicit constexpr ChaveAcesso(std::string_view texto) {
        std::copy_n(texto.begin(), kDigitos, digitos_.begin());
    }

    std::array<char, kDigitos> digitos_{};
};

// 44 digits: what an access key looks like.
constexpr bool ehChave(std::string_view texto) {
    return ChaveAcesso::ler(texto).has_value();
}

// That of a document issued offline, to be sent later.
constexpr bool ehChaveOffline(std::string_view texto) {
    return ehChave(texto) && ChaveAcesso::parte(texto, ChaveAcesso::Parte::kTpEmis) == "9";
}

} // namespace zel
