// SPDX-License-Identifier: MIT
// The sectors of a sale receipt, in the order in which they print: each appends its lines, with
// printer mark-up and ended by "\r\n", to the text. Which sectors a receipt has is the print
// manager's choice; the widths and the literals that depend on them are ColunasLayout's.
#pragma once

#include "emcurso/Persistencia.h"
#include "impressao/ColunasLayout.h"
#include "impressao/CupomFiscal.h"

#include <span>
#include <string>
#include <string_view>

namespace zel {

// The emitter's texts as they print.
struct Emitente {
    std::string_view nome;
    std::string_view documento; // CNPJ or CPF with its label
    std::string_view inscricao;
    std::string_view logradouro;
    std::string_view numero;
    std::string_view bairro;
    std::string_view municipio;
    std::string_view uf;
};

// Logo and emitter; `abre` and `fecha` stand around the lines below the name.
void imprimirEmitente(const Emitente &emitente, const EspacoEmitente &espaco, const Fixo &abre,
                      const Fixo &fecha, std::string &texto);

// Has the shop's logo its place apart? Then emitter blocks are spaced accordingly.
bool logotipoSeparado();

// Emitter.
void imprimirSetor_I(const ColunasLayout &layout, const CupomFiscal &cf, std::string &texto);

// Title and head of the item list.
void imprimirSetor_II(const ColunasLayout &layout, std::string &texto);

// The items, numbered from 1; an item that does not fit on a line takes two.
void imprimirSetor_III(const ColunasLayout &layout, std::span<const Item> itens,
                       std::string &texto);

// Totals, payments and change; `comTroco` adds the change to the last payment.
void imprimirSetor_IV(const ColunasLayout &layout, const CupomFiscal &cf, bool comTroco,
                      std::string &texto);

// Approximate taxes, when there are any: their value in the place of the "|" of `mensagem`, or
// after it.
void imprimirSetor_V(const ColunasLayout &layout, const CupomFiscal &cf, std::string_view mensagem,
                     std::string &texto);

// The document's complementary text.
void imprimirSetor_Va(const ColunasLayout &layout, const CupomFiscal &cf, std::string &texto);

// Fiscal message, number, address of the consultation by key, and the key.
void imprimirSetor_VI(const ColunasLayout &layout, const CupomFiscal &cf,
                      std::string_view enderecoChave, int ambiente, bool viaEstabelecimento,
                      std::string &texto);

// Consumer.
void imprimirSetor_VII(const ColunasLayout &layout, const CupomFiscal &cf, std::string &texto);

// QR code and, in normal emission, the authorization. The content stands as it is given, with the
// mark-up of its module size.
void imprimirSetor_VIII(const ColunasLayout &layout, const CupomFiscal &cf,
                        std::string_view conteudoQrcode, int ambiente, std::string &texto);

// Promotional message, its mark-up in force: the closing text of the document in progress, when
// that has one; otherwise that of the receipt, a value as any other.
void imprimirMsgPromocional(const ColunasLayout &layout, const ST_PersitenceXML_ZEL &emCurso,
                            const CupomFiscal &cf, std::string &texto);

} // namespace zel
