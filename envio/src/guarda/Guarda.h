// SPDX-License-Identifier: MIT
// What the law wants kept (nfeProc, procEventoNFe, procInutNFe): a file each, by year and month of
// issue, read-only, written whole. Nothing here deletes anything.
#pragma once

#include "base/Recusa.h"
#include "fila/Fila.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace zel::envio {

class Guarda {
public:
    // `diretorio` with its "/"; made when the first file is kept.
    explicit Guarda(std::string diretorio) : diretorio_(std::move(diretorio)) {}

    // CNPJ/AAAA/MM/CHAVE-procNFe.xml, CHAVE-TPEVENTO-procEventoNFe.xml, ID...-procInutNFe.xml, with
    // a declaration in front. A file that is there with the same bytes is right; one with other
    // bytes stays, and the new one gets a number of its own, said in `recusas`. None when it could
    // not be written.
    std::optional<std::string> guardar(const Ficha &ficha, std::string_view conteudo,
                                       Recusas &recusas);
    // What is kept of a row; empty when nothing is.
    std::string lugarDe(const Ficha &ficha) const;

private:
    std::string diretorio_;
};

// A month ("AAAA-MM") of an issuer for the accountant: a zip file of what is kept, and notas.csv,
// ";" between, UTF-8 with a mark, decimal comma: a line for each number with its state, date,
// total, consumer, protocol, and for numbers without a document why. Written whole or not at all.
// The number of documents, none when it failed.
std::optional<std::int64_t> exportarMes(Fila &fila, const std::string &guardados,
                                        std::string_view mes, const std::string &arquivo,
                                        Recusas &recusas);

} // namespace zel::envio
