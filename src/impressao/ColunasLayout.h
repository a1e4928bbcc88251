// SPDX-License-Identifier: MIT
// The two widths of the receipt, 42 and 48 columns: one description, and a column of values for
// each. What is the same on both papers stands in Setores.
#pragma once

#include "impressao/Escrita.h"

#include <cstddef>

namespace zel {

// How the lines of the emitter block are kept apart.
struct EspacoEmitente {
    Fixo aposNome;
    Fixo aposDocumento; // between CNPJ or CPF and "I.E-"
    Fixo aposEndereco;  // in front of the separator
};

struct ColunasLayout {
    Fixo separador; // hyphens across the paper, and a line end
    // Around the lines that only the narrow paper has to condense.
    Fixo abreCondensado;
    Fixo fechaCondensado;

    // Emitter and title
    EspacoEmitente emitente;
    EspacoEmitente emitenteLogotipo; // the same with "NFCE\Logotipo" "L"
    Fixo titulo;
    Fixo cabecalhoItens;

    // Items
    std::size_t larguraItem; // a line that is not shorter becomes two
    Fixo quebraItem;
    std::size_t larguraQuantidade;

    // Totals and payments: widths of the labels, blanks included, and of the amounts
    std::size_t larguraContagem;
    std::size_t larguraRotulo;
    std::size_t larguraValor;
    Fixo cabecalhoPagamento;
    std::size_t larguraForma;

    // Fiscal message
    Fixo homologacao;
    Fixo areaFiscal;
    Fixo viaNormal;
    Fixo viaEstabelecimento;
    Fixo viaConsumidor;
    Fixo tituloChave;

    // Consumer
    Fixo tituloConsumidor;
    Fixo semConsumidor;

    // QR code and protocol
    Fixo tituloQrcode;
    Fixo fechaQrcode;
    Fixo protocolo;
    std::size_t larguraProtocolo;
    Fixo fechaData;

    bool promocionalSempre; // also while "NFCE\MSGPROMOCIONAL\Imprimir" is not "1"
};

// Emitter blocks, as cancellation receipts have them too.
inline constexpr EspacoEmitente kEmitenteCorrido{"\r\n", "   ", ""};

// The layout of a paper width; null for other numbers than 42 and 48.
const ColunasLayout *createLayout(int colunas);

} // namespace zel
