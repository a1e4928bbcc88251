// SPDX-License-Identifier: MIT
// The two widths of the receipt, 42 and 48 columns: one description, and a column of values for
// each. What is the same on both papers stands in Setores.
#pragma once

#include <cstddef>
#include <string_view>

namespace zel {

// How the lines of the emitter block are kept apart.
struct EspacoEmitente {
    std::string_view aposNome;
    std::string_view aposDocumento; // between CNPJ or CPF and "I.E-"
    std::string_view aposEndereco;  // in front of the separator
};

struct ColunasLayout {
    std::string_view separador; // hyphens across the paper, and a line end
    // Around the lines that only the narrow paper has to condense.
    std::string_view abreCondensado;
    std::string_view fechaCondensado;

    // Emitter and title
    EspacoEmitente emitente;
    EspacoEmitente emitenteLogotipo; // the same with "NFCE\Logotipo" "L"
    std::string_view titulo;
    std::string_view cabecalhoItens;

    // Items
    std::size_t larguraItem; // a line that is not shorter becomes two
    std::string_view quebraItem;
    std::size_t larguraQuantidade;

    // Totals and payments: widths of the labels, blanks included, and of the amounts
    std::size_t larguraContagem;
    std::size_t larguraRotulo;
    std::size_t larguraValor;
    std::string_view cabecalhoPagamento;
    std::size_t larguraForma;

    // Fiscal message
    std::string_view homologacao;
    std::string_view areaFiscal;
    std::string_view viaNormal;
    std::string_view viaEstabelecimento;
    std::string_view viaConsumidor;
    std::string_view tituloChave;

    // Consumer
    std::string_view tituloConsumidor;
    std::string_view semConsumidor;

    // QR code and protocol
    std::string_view tituloQrcode;
    std::string_view fechaQrcode;
    std::string_view protocolo;
    std::size_t larguraProtocolo;
    std::string_view fechaData;

    bool promocionalSempre; // also while "NFCE\MSGPROMOCIONAL\Imprimir" is not "1"
};

// Emitter blocks, as cancellation receipts have them too.
inline constexpr EspacoEmitente kEmitenteCorrido{"\r\n", "   ", ""};

// The layout of a paper width; null for other numbers than 42 and 48.
const ColunasLayout *createLayout(int colunas);

} // namespace zel
