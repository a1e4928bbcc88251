// SPDX-License-Identifier: MIT
// The print manager: reads a document and its return into the receipt model, and lays receipts out
// as text with printer mark-up. Stores nothing on disk; the entry that does is Impressao's.
#pragma once

#include "emcurso/Persistencia.h"
#include "imposto/Presets.h"
#include "impressao/CupomFiscal.h"

#include <string>
#include <string_view>

namespace zel {

// Stands for the path of a return where there is none.
inline constexpr std::string_view kOffline = "OFFLINE";

// Fills an empty receipt from the document as sent (a path with ".ctg" in it names a contingency
// copy) and from the authorizer's return, a path or "OFFLINE". A document without an approximate
// total of taxes takes `total`, the one that the application gave; a document whose totals are of a
// form without the printed values (services) has no ICMS, and the rest is what its items add up to.
// False when a file cannot be read or lacks an element that a receipt needs, with `cf` partly
// filled.
bool parseXMLCupomFiscal(const TotalImposto &total, std::string_view xmlPath,
                         std::string_view returnPath, CupomFiscal &cf);

// Fills access key, series, number and, with a return, the protocol of the cancellation from a
// cancellation request ("ctgCanc" in its path names a contingency copy). False as above.
bool parseXMLCupomFiscalCancelamento(std::string_view xmlPath, std::string_view returnPath,
                                     CupomFiscal &cf);

// The closing text that prints is that of the document in progress. Where memory has another one
// than the printed document, another process may have gone on since: then it is read anew.
void acertarMensagem(ST_PersitenceXML_ZEL &emCurso, const CupomFiscal &cf);

// Appends a sale receipt to `texto`, with `urlQrcode` as the content of its QR code, which an empty
// one has built. `viaEstabelecimento` names the copy
// of a contingency receipt; `emCurso` is the document in progress, with the closing text. ZEL_OK,
// or ZEL_RECUSADO with nothing appended when `colunas` is neither 42 nor 48.
int layoutNFC(const ST_PersitenceXML_ZEL &emCurso, const DadosImpressao &dados,
              const CupomFiscal &cf, std::string_view urlQrcode, int colunas, std::string &texto,
              bool viaEstabelecimento);

// Replaces `texto` by the receipt of a cancellation, with the emitter of the configuration;
// `online` when an authorization return exists. It is the same for both widths. Always 1.
int layoutCancNFC(const CupomFiscal &cf, bool online, int colunas, std::string &texto);

} // namespace zel
