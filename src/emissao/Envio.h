// SPDX-License-Identifier: MIT
// The files that the sending component picks up: documentosEnvio.xml and parametrosEnvio.xml in the
// data directory.
#pragma once

#include "comum/ArquivosDoCaixa.h"
#include "config/Registro.h"
#include "emcurso/Persistencia.h"
#include "emissao/Historico.h"

#include <span>
#include <string_view>

namespace zel {

inline constexpr std::string_view kArquivoDocumentos = arquivos::kEnvio;
inline constexpr std::string_view kArquivoParametros = arquivos::kParametros;

// Replaces a file of the data directory whole. ZEL_OK or ZEL_ARQUIVO_INDISPONIVEL.
int fnCriarArquivoEnvio(std::string_view nome, std::string_view texto);

// What is committed together with an issued document.
struct JuntoDoDocumento {
    std::span<const Alteracao> alteracoes{}; // of the configuration
    std::string_view parametros{};           // of parametrosEnvio.xml; empty leaves it alone
    const ST_PersitenceXML_ZEL *estrutura = nullptr; // the document in progress, too
};

// Writes an issued document to documentosEnvio.xml: either all of it changes or nothing does, also
// when the process dies. ZEL_OK; ZEL_CONFIG_ILEGIVEL or ZEL_ARQUIVO_INDISPONIVEL.
int gravarDocumento(std::string_view documento, const JuntoDoDocumento &junto);

// Keeps a history copy of a sent text in the directories of "CONFIGURACAO\PathXMLEnvio". A copy
// that cannot be written fails nothing.
void guardarHistorico(TipoCopia tipo, std::string_view texto) noexcept;

} // namespace zel
