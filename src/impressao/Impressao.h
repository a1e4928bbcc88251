// SPDX-License-Identifier: MIT
// The entry of printing: from files to the text that the application sends to its printer, to what
// the library keeps of it (key, protocol, QR-code content, last receipt) and to the PDFs.
#pragma once

#include "emcurso/Persistencia.h"
#include "imposto/Presets.h"
#include "impressao/CupomFiscal.h"

#include <string>
#include <string_view>

namespace zel {

enum class TipoDocumento { kVenda = 1, kCancelamento = 5 };

// What is to be printed, as the application asks for it.
struct PedidoImpressao {
    std::string_view xmlPath;
    std::string_view returnPath; // or "OFFLINE"
    std::string_view urlQrcode;  // content to print as it stands; empty to have it built
    int colunas;                 // 42 or 48; a cancellation prints the same in any width
    int tipoDocumento;           // see above
};

// Lays out a document with its return into `saida`.
//   emCurso        the document in progress: its closing text is the promotional one; seen anew
//                  where it is not the printed document's
//   dados          what fnAnalisarParametrosImpressao learnt
//   total          of taxes, as the application gave it: empty once a sale's layout has printed it
// A sale stores key, protocol and QR-code content in one save; while "ImpressaoCompleta" is "0"
// (sales without their items) or "1" the text is kept as the last receipt, otherwise there is none
// and the earlier one stays. A contingency sale prints twice, the consumer's copy first. PDFs are
// written when configured.
// ZEL_OK; ZEL_RECUSADO a null path, an unknown `tipoDocumento`, a sale in other columns, files that
// cannot be read or lack an element (also the return, for a PDF); ZEL_FALHA_IMPRESSAO PDF of a
// document whose return has neither "SITCODIGO" 100 nor 150; ZEL_FALHA_PDF, ZEL_FALHA_GRAVACAO_PDF;
// ZEL_CONFIG_ILEGIVEL, ZEL_ARQUIVO_INDISPONIVEL. From the first failure on nothing more is done,
// and `saida` holds the text that was laid out before it.
int fnGerarArquivoFormatadoNF(ST_PersitenceXML_ZEL &emCurso, const DadosImpressao &dados,
                              TotalImposto &total, const PedidoImpressao &pedido,
                              std::string &saida);

// Reads "VALORPGTO=value;" out of the first 99 characters of `parametros`, in any case: with `modo`
// 1 the change of the receipt is that value less its total and will be printed, with another there
// is none. Without such an entry nothing changes. ZEL_OK, or ZEL_CONFIG_ILEGIVEL,
// ZEL_ARQUIVO_INDISPONIVEL when it cannot be stored. Prescribed; no exported function reaches it.
int fnAnalisarParametrosImpressao(DadosImpressao &dados, const CupomFiscal &cf, int modo,
                                  std::string_view parametros);

} // namespace zel
