// SPDX-License-Identifier: MIT
// History copies of what is exchanged with the sending component: one XML file in each configured
// directory. Owns the names of the copies; which texts are copied is decided by their writers.
#pragma once

#include <ctime>
#include <string_view>

namespace zel {

enum class Direcao { kEnvio, kRetorno, kCompleto };

enum class TipoCopia { kNFCe, kCancelamento, kParametros, kConsulta, kInutilizacao };

// Writes `conteudo` whole under each of at most three directory prefixes, separated by "|" in
// `diretorios`; a prefix (up to 300 characters) is used as given, so it ends with its own "/". The
// name is stamped with direction, kind and local time ("EnvioNFCe20140131_235959.xml"; where that
// is taken, "EnvioNFCe20140131_235959_2.xml") or plain ("documentosEnvio.xml", replaced). 1; 0
// without any directory, without a time to stamp, or when a copy cannot be written: the copies
// before it stay.
int fnReplicarDados(Direcao direcao, TipoCopia tipo, std::string_view diretorios,
                    std::string_view conteudo, bool carimbado);

// The same at a given local time.
int fnReplicarDados(Direcao direcao, TipoCopia tipo, std::string_view diretorios,
                    std::string_view conteudo, bool carimbado, const std::tm &momento);

} // namespace zel
