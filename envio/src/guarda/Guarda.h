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
    // a declaration in front; which of them is told by the root of `conteudo`. Issuer and month are
    // the key's; the month of an inutilization is that of its dhEmi, else of its answer. A file
    // that is there with the same bytes is right; one with other bytes stays, and the new one gets
    // a number of its own, said in `recusas`. None when it could not be written.
    std::optional<std::string> guardar(const Ficha &ficha, std::string_view conteudo,
                                       Recusas &recusas);
    // What is kept of a row; empty when nothing is.
    std::string lugarDe(const Ficha &ficha) const;

private:
    std::string diretorio_;
};

// A month ("AAAA-MM") for the accountant: a zip file of what is kept of every issuer, and
// notas.csv,
// ";" between, UTF-8 with a mark, decimal comma: a line for each number with its state, date,
// total, consumer, protocol, and for numbers without a document why. A gap is of the month of the
// number that ends it; one of more than a thousand numbers is one line. The file has mode 0600, and
// is written whole or not at all. The number of kept files in it, none when it failed.
std::optional<std::int64_t> exportarMes(Fila &fila, const std::string &guardados,
                                        std::string_view mes, const std::string &arquivo,
                                        Recusas &recusas);

} // namespace zel::envio
