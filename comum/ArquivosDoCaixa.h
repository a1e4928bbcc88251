// SPDX-License-Identifier: MIT
// The files of a till's data directory by name, and what a change that was not carried through
// leaves beside them: for the library, which writes them, and the programs that look at them.
#pragma once

#include <algorithm>
#include <array>
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

inline constexpr int kLugarDoCupom = 1; // the byte of kTrava that whoever has the receipt locks

// What stands beside a file while it is replaced: the new one, and the second name of the old one.
inline constexpr std::string_view kRascunho = ".novo";
inline constexpr std::string_view kRascunhoAntigo = ".novo.antigo";

// Those that are replaced whole.
inline constexpr std::array kTrocados{
    kConfig,     kConfigDanificada, kCupom,       kCupomDanificado,     kCupomPendente,   kEnvio,
    kParametros, kEnvioPendente,    kUltimaDanfe, kParametrosPendentes, kDanfePassageiro, kTrava,
};

// The name of the file that a scratch file or a second name stands beside; empty for another name.
constexpr std::string_view trocadoDe(std::string_view nome) {
    for (const std::string_view fim : {kRascunhoAntigo, kRascunho})
        if (nome.ends_with(fim)) return nome.substr(0, nome.size() - fim.size());
    return {};
}

constexpr bool ehTrocado(std::string_view nome) {
    return std::find(kTrocados.begin(), kTrocados.end(), nome) != kTrocados.end();
}

} // namespace zel::arquivos
