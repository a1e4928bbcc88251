// SPDX-License-Identifier: MIT
// The files of a till's data directory by name, and what a change that was not carried through
// leaves beside them: for the library, which writes them, and the programs that look at them.
#pragma once

#include "comum/Ascii.h"
#include "comum/ChaveAcesso.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

namespace zel::arquivos {

inline constexpr std::string_view kConfig = "ZEL_Framework.xml";
inline constexpr std::string_view kConfigDanificada = "ZEL_Framework.xml.danificado";
inline constexpr std::string_view kCupom = "ArqPersist.bin";
inline constexpr std::string_view kCupomDanificado = "ArqPersist.bin.danificado";
inline constexpr std::string_view kCupomPendente = "ArqPersist.tmp";
inline constexpr std::string_view kEnvio = "documentosEnvio.xml";
inline constexpr std::string_view kEnvioPendente = "documentosEnvio.xml.tmp";
inline constexpr std::string_view kParametros = "parametrosEnvio.xml";
inline constexpr std::string_view kParametrosPendentes = "parametrosEnvio.xml.tmp";
inline constexpr std::string_view kUltimaDanfe = "ultimadanfe.bin";
inline constexpr std::string_view kDanfePassageiro = "danfe_pdf_temp.xml";
inline constexpr std::string_view kTrava = "ZEL_Framework.trava";
inline constexpr std::string_view kDiario = "ZEL_Framework.diario";
inline constexpr std::string_view kDiarioDanificado = "ZEL_Framework.diario.danificado";

// A scrambled document and a scrambled cancellation, in whatever directory.
inline constexpr std::string_view kContingencia = ".ctg";
inline constexpr std::string_view kCancelamento = ".ctgCanc";

inline std::string nomeDaContingencia(std::string_view chave) {
    return std::string(chave).append(kContingencia);
}

// CNPJ, series and number as they stand in the key, which has its 44 characters.
inline std::string nomeDoCancelamento(std::string_view chave) {
    using Parte = ChaveAcesso::Parte;
    return std::string(ChaveAcesso::parte(chave, Parte::kCNPJ))
        .append("_")
        .append(ChaveAcesso::parte(chave, Parte::kSerie))
        .append(ChaveAcesso::parte(chave, Parte::kNNF))
        .append(kCancelamento);
}

// The byte of kTrava that the process which has the receipt locks.
inline constexpr int kLugarDoCupom = 1;

// What stands beside a file while it is replaced: the new one, and the second name of the old one.
inline constexpr std::string_view kRascunho = ".novo";
inline constexpr std::string_view kRascunhoAntigo = ".novo.antigo";

// Those that are replaced whole.
inline constexpr std::array kTrocados{
    kConfig,
    kConfigDanificada,
    kCupom,
    kCupomDanificado,
    kCupomPendente,
    kEnvio,
    kParametros,
    kEnvioPendente,
    kUltimaDanfe,
    kParametrosPendentes,
    kDanfePassageiro,
    kTrava,
    kDiarioDanificado,
};

// The name of the file that a scratch file or a second name stands beside; empty for another name.
constexpr std::string_view trocadoDe(std::string_view nome) {
    for (const std::string_view fim : {kRascunhoAntigo, kRascunho})
        if (nome.ends_with(fim)) return nome.substr(0, nome.size() - fim.size());
    return {};
}

// Whether the library replaces a file of that name in its data directory, where other programs may
// have theirs: those above, PDFs, documents and cancellations of contingency.
constexpr bool ehTrocado(std::string_view nome) {
    if (std::find(kTrocados.begin(), kTrocados.end(), nome) != kTrocados.end()) return true;
    constexpr std::string_view kPrefixo = "NFe";
    if (nome.ends_with(".pdf") && nome.starts_with(kPrefixo))
        return ehChave(nome.substr(kPrefixo.size(), ChaveAcesso::kDigitos));
    if (nome.ends_with(kContingencia))
        return ehChave(nome.substr(0, nome.size() - kContingencia.size()));
    // CNPJ, series and number.
    using Parte = ChaveAcesso::Parte;
    constexpr std::size_t kCnpj = ChaveAcesso::digitos(Parte::kCNPJ);
    constexpr std::size_t kSerieENumero =
        ChaveAcesso::digitos(Parte::kSerie) + ChaveAcesso::digitos(Parte::kNNF);
    return nome.ends_with(kCancelamento) &&
           nome.size() == kCnpj + 1 + kSerieENumero + kCancelamento.size() && nome[kCnpj] == '_' &&
           soDigitos(nome.substr(0, kCnpj)) && soDigitos(nome.substr(kCnpj + 1, kSerieENumero));
}

} // namespace zel::arquivos
