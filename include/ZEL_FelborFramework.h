/* SPDX-License-Identifier: MIT */
/*
 * libZEL_FelborFramework: issues NFC-e (electronic consumer invoice, model 65, layout 3.10). The
 * application drives it as it would drive a fiscal printer: open a receipt, identify the consumer,
 * sell items, totalize, pay, close. The library writes the documents into files; a separate sending
 * component takes them to the tax authority.
 *
 * Conventions
 *
 *  1. Texts are NUL-terminated ISO-8859-1, in and out. A reference written by the application
 *     ("&amp;", "&#38;") counts as the character that it stands for; "&", "<" and ">" reach the
 *     document as references. Control bytes are dropped, a tab or a line end becomes one blank (the
 *     closing messages keep their line ends). Tag text, given whole, keeps what it holds.
 *  2. Lengths are in characters. "Up to n" means that longer text is cut, "n to m" that a longer
 *     one is cut and a shorter one refused, "n to m, else left out" that text of another length is
 *     not written, "exactly n" that it is refused.
 *  3. Numbers are decimal texts of up to 15 characters: optional blanks, digits, at most one comma
 *     or point; reading ends at the first other character and no digits count as zero. Neither
 *     reading nor writing depends on the process locale. Money has two decimals, a sold quantity
 *     four.
 *  4. An adjustment type is two characters, "D" (discount) or "A" (surcharge), then "%" (the value
 *     is a percentage of the gross value) or "$" (the value is an amount).
 *  5. The application owns every buffer. The library keeps no pointer after a call and writes only
 *     to arguments declared `char *`: results, copied with their terminator without knowing the
 *     buffer's size. The constants ZEL_TAMANHO_... give sizes that suffice, ZEL_TAMANHO_CUPOM
 *     within its limits.
 *  6. A null text counts as an empty one, except where ZEL_ARGUMENTO_INVALIDO is documented for it.
 *     A null result buffer answers ZEL_ARGUMENTO_INVALIDO.
 *  7. Every function answers ZEL_OK or the negative code of the first failure that it meets, in the
 *     order in which the codes are listed here (exceptions: rCFVerificarStatus_ZEL answers the
 *     state, tCFCancelar_ZEL also ZEL_CANCELAMENTO_GRAVADO). A failure leaves document, state and
 *     files as they were, except where a function says otherwise. Two general codes are not
 *     repeated with each function: ZEL_ARQUIVO_INDISPONIVEL, a file cannot be read or written (no
 *     permission, disk full, directory gone), another process has the receipt (8), memory is short,
 *     or there is no document in progress where one is needed; and ZEL_CONFIG_ILEGIVEL, a function
 *     that loads the configuration finds the file without its root tags. No exception leaves the
 *     library.
 *  8. The library has no threads: serialise the calls of a process. One process at a time has the
 *     receipt of a data directory: from its first change of the receipt that succeeds until the
 *     receipt is closed, cancelled or reset (its state set to 0) or the process ends, the functions
 *     of the groups "Opening", "Items", "Totalization and payment" and the closings, reissues and
 *     the cancellation of the receipt in progress answer ZEL_ARQUIVO_INDISPONIVEL to every other
 *     process (a forked child is one) and change nothing. Reading, configuring, requesting and
 *     printing stay possible there; two changes of files wait for each other, three seconds at
 *     most. The next opening may come from any process, which loads what is on disk. Where the
 *     environment variable ZEL_COMPARTILHADO is 1 several processes serve one receipt: it belongs
 *     to each of them for one call, which loads what another one changed. Presets of the next item
 *     are of their process. The variable is read as ZEL_DIRETORIO is. The lock file
 *     ZEL_Framework.trava holds nothing and may stay. Any function may be the first one called.
 *  9. Files stand in the data directory: that of the loaded library, or the absolute path in the
 *     environment variable ZEL_DIRETORIO, which is read once, by the first call of the process (a
 *     process with more rights than its user ignores it). ZEL_Framework.xml holds configuration and
 *     state (created with its defaults when missing, readable by its owner alone), ArqPersist.bin
 *     the document in progress. "Loads the configuration" means that a change made by another
 *     program is seen. A symbolic link is followed in the place of ZEL_Framework.xml alone.
 * 10. Success means on disk: written, flushed, renamed. A process that dies between two calls, or
 *     within one, leaves a receipt that the next process goes on with.
 * 11. The reason of a refusal: with the environment variable ZEL_LOG set to an absolute path, or to
 *     "stderr", every refused call appends a line in Portuguese (UTF-8) with time, function, code,
 *     field, what was given, shortened and without personal data, and what is allowed, or file and
 *     system error. ZEL_LOG_NIVEL=chamadas writes every call with its time. Both are read as
 *     ZEL_DIRETORIO is. At 10 MB the file starts over, its predecessor stays beside it with ".1"
 *     appended to its name; no call fails for the log. A host that wants the reason itself makes an
 *     anonymous file with memfd_create("zel_felbor", MFD_CLOEXEC) and gives its descriptor in
 *     ZEL_LOG_DESCRITOR before the first call: after a refusal the file holds one line, "[PROCESS]
 *     FUNCTION: CODE NAME: REASON". Any other number is ignored.
 *
 * Receipt states: 0 no receipt, 1 opened, 2 selling, 3 totalized, 4 paid in full, 5 closed,
 * 6 cancelled.
 */
#ifndef ZEL_FELBORFRAMEWORK_H
#define ZEL_FELBORFRAMEWORK_H

#if defined(__GNUC__)
#define ZEL_API __attribute__((visibility("default")))
#else
#define ZEL_API
#endif

/* The version that this header belongs to: as text, and as a number that grows with it
 * (major * 10000 + minor * 100 + patch). Within a major version, which names the shared object
 * (libZEL_FelborFramework.so.1), programs go on without being built again. */
#define ZEL_VERSAO "1.0.0"
#define ZEL_VERSAO_NUMERO 10000

#include "zel_felbor/codigos.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Initialization ------------------------------------------------------------------------- */

/* Puts the default configuration in memory and loads ZEL_Framework.xml over it. A missing file is
 * created; one without its root tags is kept as ZEL_Framework.xml.danificado and a new one made,
 * with the factory's issuer, token and number (IDE\nNF): configure it before the next sale.
 * Need not be called. Any state. Answers ZEL_OK or ZEL_ARQUIVO_INDISPONIVEL (a file that exists and
 * cannot be read is left alone). */
ZEL_API int aCFInicializar_ZEL(void);

/* ---- Opening and identification ------------------------------------------------------------- */

/* Opens a receipt: discards the document of the previous one. States 0, 5, 6; then 1.
 *   documento        consumer, up to 20, else left out: its digits are a CPF (exactly 11), a CNPJ
 *                    (exactly 14) or a foreign id (5 and more); otherwise no consumer is written,
 *                    whatever else is given
 *   nome             2 to 60, above 60 left out
 *   logradouro       street, 2 to 60, else left out together with the rest of the address
 *   numero, bairro   house number and district, 1 to 60; required with a street
 *   codigoMunicipio  exactly 7; required with a street
 *   municipio        2 to 60; required with a street
 *   uf               exactly 2; required with a street
 *   cep              8 digits, optional; above 8 left out
 * Codes: ZEL_RECUSADO, a street without one of the required parts (before the state is looked at);
 * ZEL_CUPOM_EM_ANDAMENTO; ZEL_TAG_NAO_CONFORME, a value below its length. Loads the configuration.
 * Files: ArqPersist.bin, ZEL_Framework.xml. */
ZEL_API int aCFAbrir_ZEL(const char *documento, const char *nome, const char *logradouro,
                         const char *numero, const char *bairro, const char *codigoMunicipio,
                         const char *municipio, const char *uf, const char *cep);

/* aCFAbrir_ZEL after storing receipt number and series in IDE\nNF and IDE\Serie, where they stay
 * even if the opening then fails. The number is stored as given, and automatic numbering then adds
 * one at the close: the document carries numeroCupom + 1, unless CONFIGURACAO\NumeracaoAutomatica
 * is "0". Nine and three digits are kept; a document is refused with a number below zero or above
 * 999999999. Codes: ZEL_CUPOM_EM_ANDAMENTO (first, nothing stored), then those of aCFAbrir_ZEL. */
ZEL_API int aCFAbrirNumSerie_ZEL(int numeroCupom, int serie, const char *documento,
                                 const char *nome, const char *logradouro, const char *numero,
                                 const char *bairro, const char *codigoMunicipio,
                                 const char *municipio, const char *uf, const char *cep);

/* Replaces the consumer. The digits of `documento`, up to 20 characters, are a CPF (up to 11) or a
 * CNPJ (13 and more); otherwise no consumer is written. The other arguments as in aCFAbrir_ZEL;
 * `email` 1 to 59, else left out. Any state with a document; the state stays. Codes:
 * ZEL_ARQUIVO_INDISPONIVEL, no document; ZEL_RECUSADO, a street without a required part;
 * ZEL_TAG_NAO_CONFORME, a value outside its length (a CPF of fewer than 11 digits). Loads the
 * configuration. File: ArqPersist.bin. */
ZEL_API int aCFIdentificarConsumidor_ZEL(const char *documento, const char *nome,
                                         const char *logradouro, const char *numero,
                                         const char *bairro, const char *codigoMunicipio,
                                         const char *municipio, const char *uf, const char *cep,
                                         const char *email);

/* Stores the carrier of a delivery. States 0 to 4; the state stays.
 *   documento          as given, up to 11 characters a CPF, 13 and 14 a CNPJ, else left out: pass
 *                      digits alone
 *   nome               2 to 60, above 60 left out
 *   inscricaoEstadual  exactly 2, else left out
 *   endereco           1 to 60, else left out
 *   municipio          1 to 60, else left out
 *   uf                 exactly 2, else left out
 * Codes: ZEL_ESTADO_INVALIDO, state 5 or 6; ZEL_TRANSPORTADORA_NAO_PERMITIDA;
 * ZEL_ARQUIVO_INDISPONIVEL, no document; ZEL_TAG_NAO_CONFORME, a value outside its length. Loads
 * the configuration. File: ArqPersist.bin. */
ZEL_API int aCFIdentificarTransportadora_ZEL(const char *documento, const char *nome,
                                             const char *inscricaoEstadual, const char *endereco,
                                             const char *municipio, const char *uf);

/* ---- Items ---------------------------------------------------------------------------------- */

/* Sells one item; at most 999. States 1 and 2; then 2. A preset of the tax groups (aCFConf...)
 * applies to this item and is used up by its success.
 *   aliquota       up to 15: "T" (goods) or "S" (service) and the rate with two decimals ("T1800",
 *                  "T18,00"), the rate alone, or a text without digits ("F", "I", "N") for 0.00
 *   quantidade     number; null or empty sells zero
 *   valorUnitario  number of nothing but digits and one comma or point: it stands in the document
 *                  as given, without its leading zeros
 *   tipoAjuste     adjustment type, up to 2; another type adjusts nothing, but with a value that
 *                  is not zero it leaves the item without a tax base (0.00)
 *   valorAjuste    number; empty or zero is no adjustment; an amount ("$") stands in the document
 *                  as given, too
 *   codigo         product code, 1 to 60
 *   unidade        1 to 6
 *   descricao      1 to 120
 * NCM, CFOP and indTot come from PROD\NCM, PROD\CFOP and PROD\indTot. While a value that ICMS00,
 * ICMS40 or ICMS60 requires (its CST; modBC of ICMS00) is empty in the configuration, the item is
 * sold with an empty ICMS group, which the tax authority refuses: configure the group whole.
 * Codes: ZEL_ARGUMENTO_INVALIDO, a negative number, or a malformed unit price or amount;
 * ZEL_AJUSTE_EXCESSIVO; ZEL_RECUSADO, no ICMS group configured or one without a required value, or
 * a thousandth item (before the state is looked at); ZEL_NENHUM_CUPOM, ZEL_VENDA_FORA_DE_ORDEM;
 * ZEL_TAG_NAO_CONFORME, ZEL_TAG_OBRIGATORIA, a value outside its length or a tax group that does
 * not conform. Loads the configuration. Files: ArqPersist.bin, ZEL_Framework.xml when the state
 * changes. */
ZEL_API int aCFVender_ZEL(const char *aliquota, const char *quantidade, const char *valorUnitario,
                          const char *tipoAjuste, const char *valorAjuste, const char *codigo,
                          const char *unidade, const char *descricao);

/* aCFVender_ZEL with `ncm` (2 to 8) and `cfop` (exactly 4); empty ones come from the configuration.
 * `reservado` is accepted and ignored. */
ZEL_API int aCFVenderCompleto_ZEL(const char *aliquota, const char *quantidade,
                                  const char *valorUnitario, const char *tipoAjuste,
                                  const char *valorAjuste, const char *codigo, const char *ncm,
                                  const char *cfop, const char *unidade, const char *descricao,
                                  const char *reservado);

/* Sells one item given as tag text: the elements `prod` and `imposto` with all that they hold, in
 * the order of the layout; names in any case. Neither uses nor drops a preset. States 1 and 2; then
 * 2. Codes: ZEL_RECUSADO, a thousandth item; ZEL_NENHUM_CUPOM, ZEL_VENDA_FORA_DE_ORDEM;
 * ZEL_RECUSADO, tags that do not nest; ZEL_TAG_NAO_CONFORME, ZEL_TAG_SEM_ELEMENTOS,
 * ZEL_TAG_OBRIGATORIA. What stands between the tags is written as given: a bare "&" is the caller's
 * to avoid. Files: ArqPersist.bin, ZEL_Framework.xml when the state changes. */
ZEL_API int aCFVenderXml_ZEL(const char *xmlItem);

/* Gives an item a discount, or a surcharge; one adjustment per item. `item` 1 to 999, 0 = the last
 * one; of `tipo` only the second character counts ("%" of the item's gross value, otherwise an
 * amount); `valor` number. State 2. Codes: ZEL_ESTADO_INVALIDO; ZEL_ARGUMENTO_INVALIDO, `tipo` or
 * `valor` null or empty, a negative item or value; ZEL_ITEM_INEXISTENTE; ZEL_ITEM_JA_AJUSTADO;
 * ZEL_AJUSTE_EXCESSIVO, the surcharge is held to the same bound. File: ArqPersist.bin. */
ZEL_API int aCFLancarDescontoItem_ZEL(int item, const char *tipo, const char *valor);
ZEL_API int aCFLancarAcrescimoItem_ZEL(int item, const char *tipo, const char *valor);

/* Takes an item out of the receipt; those after it move up by one. `item` 1 to 999 (0 is no item).
 * State 2. Codes: ZEL_ESTADO_INVALIDO; ZEL_ARGUMENTO_INVALIDO, no such item. File:
 * ArqPersist.bin. */
ZEL_API int aCFCancelarItem_ZEL(int item);

/* Takes part of the quantity out of an item. `item` as in aCFLancarDescontoItem_ZEL; `quantidade`
 * number; the new quantity has two decimals, and the item's taxes are computed from it without its
 * adjustment. State 2. Codes: ZEL_ESTADO_INVALIDO; ZEL_ARGUMENTO_INVALIDO, `quantidade` null, empty
 * or negative, or a negative item; ZEL_ITEM_INEXISTENTE; ZEL_CANCELAMENTO_EXCESSIVO. File:
 * ArqPersist.bin. */
ZEL_API int aCFCancelarItemParcial_ZEL(int item, const char *quantidade);

/* Takes the discount, or the surcharge, off an item. `item` as in aCFLancarDescontoItem_ZEL. State
 * 2. Codes: ZEL_ESTADO_INVALIDO; ZEL_ARGUMENTO_INVALIDO, a negative item; ZEL_ITEM_INEXISTENTE;
 * ZEL_NADA_A_REMOVER. File: ArqPersist.bin. */
ZEL_API int aCFCancelarDescontoItem_ZEL(int item);
ZEL_API int aCFCancelarAcrescimoItem_ZEL(int item);

/* ---- Totalization and payment --------------------------------------------------------------- */

/* Spreads a discount or surcharge on the total over the items and adds up the receipt. State 2;
 * then 3. `tipo` adjustment type, `valor` number; a value that is not above zero is no adjustment.
 * Codes: ZEL_NENHUM_CUPOM, ZEL_TOTALIZACAO_FORA_DE_ORDEM; ZEL_AJUSTE_EXCESSIVO, an item cannot bear
 * its share. Loads the configuration. Files: ArqPersist.bin, ZEL_Framework.xml. */
ZEL_API int aCFTotalizar_ZEL(const char *tipo, const char *valor);

/* Adds a payment line. States 3 and 4; then 4 once the payments reach the total.
 *   forma  up to 49, accents and case do not matter: "Dinheiro", "Cheque", "Cartao de Credito",
 *          "Cartao de Debito", "Credito Loja", "Vale Alimentacao", "Vale Refeicao", "Vale
 *          Presente", "Vale Combustivel" or its two-digit code; anything else is "99", others
 *   valor  number; empty or zero pays what is still due. What exceeds it is change: the line holds
 *          what completes the total, CONFIGURACAO\TrocoUltimaNFCe the change ("0" for none)
 * Codes: ZEL_NENHUM_CUPOM, ZEL_PAGAMENTO_FORA_DE_ORDEM; ZEL_ARGUMENTO_INVALIDO, a negative value;
 * ZEL_JA_PAGO, after TrocoUltimaNFCe was set to "0"; ZEL_PAGAMENTO_INEXISTENTE, a change above
 * 999999999999.99, as of a barcode typed as the value. Loads the configuration. Files:
 * ArqPersist.bin, ZEL_Framework.xml. */
ZEL_API int aCFEfetuarPagamento_ZEL(const char *forma, const char *valor);

/* Corrects the form of a payment line. The line is found by its form and value; the last line by
 * the value as the customer gave it, before change. The value stays. Forms as above. State 4.
 * Codes: ZEL_ESTADO_INVALIDO; ZEL_ARGUMENTO_INVALIDO, an argument null or empty or a negative
 * value; ZEL_PAGAMENTO_INEXISTENTE. File: ArqPersist.bin. */
ZEL_API int aCFEstornarPagamento_ZEL(const char *formaAtual, const char *formaNova,
                                     const char *valor);

/* Sets the approximate total of taxes that the next receipt prints when its document carries no
 * vTotTrib: up to 19, blanks around taken off. Kept in memory alone, until that receipt. Any state.
 * Code: ZEL_ARGUMENTO_INVALIDO, null or blank. */
ZEL_API int aCFValorLeiImposto_ZEL(const char *valor);

/* ---- Closing, cancellation and requests ----------------------------------------------------- */

/* Closes the receipt: assembles the document with its access key and writes documentosEnvio.xml and
 * the history copies under CONFIGURACAO\PathXMLEnvio. State 4; then 5. `informacoes` for the
 * consumer, up to 5000; printer mark-up in angle brackets is kept in square ones. Number and
 * numeric code advance; NFCE\ChaveDeAcesso receives the key. A document that could not be written
 * leaves state 4, and the closing can be repeated, which takes another number where the document
 * lacked a section; a history copy that cannot be written fails nothing.
 * Codes: ZEL_NENHUM_CUPOM, ZEL_ENCERRAMENTO_FORA_DE_ORDEM; ZEL_CONSUMIDOR_OBRIGATORIO, no CPF, CNPJ
 * or foreign id; ZEL_RECUSADO, the document cannot be assembled: IDE\nNF would pass 999999999, the
 * values of the access key are not digits (IDE\cUF, Mod, Serie and tpEmis, EMIT\CNPJ), or the
 * clock's year has not four digits. Put the value right with regAlterarValor_ZEL and close again:
 * the receipt waits in state 4.
 * Loads the configuration. Files: ArqPersist.bin, ZEL_Framework.xml, documentosEnvio.xml, the
 * history copies. */
ZEL_API int tCFEncerrar_ZEL(const char *informacoes);

/* tCFEncerrar_ZEL with a text for the tax authority, up to 2000 characters (above 5000 cut, above
 * 2000 ZEL_TAG_NAO_CONFORME). Texts are kept only when neither is empty; above ValorMaxIdeCliente
 * only a CPF identifies the consumer. Codes and files as tCFEncerrar_ZEL, but ZEL_RECUSADO where
 * there is no document. */
ZEL_API int tCFEncerrarConfigMsg_ZEL(const char *informacoes, const char *informacoesFisco);

/* Cancels. With five empty texts: below state 5 the receipt in progress (state 6, ZEL_OK, no
 * request); in state 5 the last closed document, by its stored values. Otherwise the document that
 * the texts name: `numero` up to 9, `serie` up to 4, `chave` up to 44, `protocolo` up to 15,
 * `justificativa` up to 99 (empty: "Cancelamento de NFCe"), in any state. A closed document's event
 * goes to documentosEnvio.xml, with history copies: ZEL_CANCELAMENTO_GRAVADO.
 * Codes: ZEL_ARGUMENTO_INVALIDO, a null argument; ZEL_RECUSADO, five empty texts in state 6, or
 * while the stored key is not that of the stored number and series (an older document was printed
 * since: name the document), or a clock whose year has not four digits; ZEL_ARQUIVO_INDISPONIVEL,
 * five empty texts while state, number or series are not those that this process knew (from its
 * last change of the receipt, the last answer of rCFVerificarStatus_ZEL, or its beginning), for
 * another process has gone on: ask for the state, and repeat what is still meant. Where the receipt
 * is shared (8), its state must only be closed, or not closed, as it was. Loads the configuration.
 * Files: documentosEnvio.xml and history copies; for the receipt in progress ZEL_Framework.xml. */
ZEL_API int tCFCancelar_ZEL(const char *numero, const char *serie, const char *chave,
                            const char *protocolo, const char *justificativa);

/* Writes the cancellation event into scrambled files for a till without connection. `numero`,
 * `serie`, `chave` (44 digits) and `justificativa` as in tCFCancelar_ZEL, all empty for the last
 * document. `diretorios` in and out, ZEL_TAMANHO_DIRETORIOS bytes: up to three directories of up to
 * 300 characters with their final "/", separated by "|"; receives the path of the last file,
 * written or not. It must have room for the longest directory and 64 bytes more. Of several
 * directories the last one gives the answer. Any state; the state stays.
 * Codes: ZEL_ARGUMENTO_INVALIDO, a null argument; ZEL_RECUSADO, a key without 44 digits, or four
 * empty texts while the stored key is that of another document, or such a clock;
 * ZEL_ARQUIVO_INDISPONIVEL, a file, or four empty texts while number or series are not those that
 * this process knew, as there; 0, no directory given. Loads the configuration. Files:
 * CNPJ_SERIENUMERO.ctgCanc in each directory. */
ZEL_API int tCFCancelarOffline_ZEL(const char *numero, const char *serie, const char *chave,
                                   const char *justificativa, char *diretorios);

/* Requests that a range of numbers be voided: `numeroInicial` and `numeroFinal` up to 9, `serie` up
 * to 3, `justificativa` up to 60. What they say is for the caller to check: not that they are
 * numbers in order, nor that the text has the 15 characters that the authority asks for. Any
 * state. Code: ZEL_ARGUMENTO_INVALIDO, a null argument. Loads the configuration. Files:
 * documentosEnvio.xml, history copies. */
ZEL_API int tCFInutilizar_ZEL(const char *numeroInicial, const char *numeroFinal, const char *serie,
                              const char *justificativa);

/* Requests a consultation. `tipo` is "DATA" (`inicial` and `final` are dates), "NUM" (they are
 * numbers, with `serie`) or "CHAVE" (by the access key): dates up to 25, numbers up to 9, series up
 * to 4, key up to 44; what they say is for the caller to check. Any state.
 * Code: ZEL_ARGUMENTO_INVALIDO, another `tipo`, or a null argument that it needs. Files:
 * documentosEnvio.xml, history copies, then parametrosEnvio.xml: when only that one cannot be
 * written the answer is ZEL_ARQUIVO_INDISPONIVEL. */
ZEL_API int GeraXMLConsulta_ZEL(const char *tipo, const char *inicial, const char *final,
                                const char *serie, const char *chave);

/* ---- Taxes of the next item ----------------------------------------------------------------- */

/* Each fixes one tax group of the next item sold through flat arguments, in place of the group that
 * the configuration describes; it replaces an earlier preset of the same tax. Presets live in
 * memory until a sale succeeds. States 1 to 3. Codes: ZEL_ESTADO_INVALIDO; ZEL_ARGUMENTO_INVALIDO,
 * an argument out of its bounds, and that tax is left without a preset. No file is touched.
 *   origem          exactly 1
 *   cst             exactly 2
 *   modBC           exactly 1
 *   aliquota        ICMS: 2 to 5, always with two decimals, "18,00" or "1800"; PIS and COFINS: 1 to
 *                   6, in percent
 *   valorDesonerado, baseRetida, valorRetido  up to 15
 *   motivo          1; a longer one, or none beside a relieved value that is not zero, makes the
 *                   sale answer ZEL_TAG_NAO_CONFORME
 *   valorUnidade    hundredths (centavos) of tax per unit sold, 1 to 14: the tax is quantity
 *                   x valorUnidade / 100 */
ZEL_API int aCFConfICMS00_ZEL(const char *origem, const char *cst, const char *modBC,
                              const char *aliquota);
ZEL_API int aCFConfICMS40_ZEL(const char *origem, const char *cst, const char *valorDesonerado,
                              const char *motivo);
ZEL_API int aCFConfICMS60_ZEL(const char *origem, const char *cst, const char *baseRetida,
                              const char *valorRetido);
ZEL_API int aCFConfPisAliq_ZEL(const char *cst, const char *aliquota);
ZEL_API int aCFConfPisQtde_ZEL(const char *cst, const char *valorUnidade);
ZEL_API int aCFConfPisNT_ZEL(const char *cst);
ZEL_API int aCFConfCofinsAliq_ZEL(const char *cst, const char *aliquota);
ZEL_API int aCFConfCofinsQtde_ZEL(const char *cst, const char *valorUnidade);
ZEL_API int aCFConfCofinsNT_ZEL(const char *cst);

/* The "other" groups. The length of `valorUnidade` is checked only when `aliquota` is empty or
 * longer than 6; the tax is quantity x valorUnidade / 100 in any case, 0.00 without it. */
ZEL_API int aCFConfPisOutr_ZEL(const char *cst, const char *aliquota, const char *valorUnidade);
ZEL_API int aCFConfCofinsOutr_ZEL(const char *cst, const char *aliquota, const char *valorUnidade);

/* ---- Configuration and information ---------------------------------------------------------- */

/* Stores a configuration value. `chave` is the path of the key, groups and key joined by "\", up to
 * 100, in any case: "CONFIGURACAO\TipoAmbiente", "IDE\nNF"; `valor` up to the key's length. Any
 * state. Codes: ZEL_RECUSADO, no such key, or a value that holds "</". File: ZEL_Framework.xml. */
ZEL_API int regAlterarValor_ZEL(const char *chave, const char *valor);

/* Reads a configuration value into `valor`, ZEL_TAMANHO_VALOR bytes. Any state. Codes:
 * ZEL_ARGUMENTO_INVALIDO, `valor` null; ZEL_RECUSADO, no such key, with an empty text. */
ZEL_API int regRetornarValor_ZEL(const char *chave, char *valor);

/* Answers the receipt state, 0 to 6, as stored in ZEL_Framework.xml, whichever process changed it;
 * where the file cannot be read, as this process last knew it. */
ZEL_API int rCFVerificarStatus_ZEL(void);

/* Reads what the table names into `valor`, ZEL_TAMANHO_INFO bytes; empty where the table has
 * nothing, and always in states 0 and 1.
 *   indice  state 2                    states 3 and 4                           state 5
 *   "1"     number of items            total; with payments "+" (rest) or "-"   total
 *   "2"     type of last adjustment    rest or change, without its sign         number
 *   "3"     gross value of last item                                            access key
 *   "4"                                                                         protocol
 *   "5"                                                                         series
 *   "6"                                                                         authorized at
 *   "7"                                                                         digest value
 * Codes: ZEL_ARGUMENTO_INVALIDO, `valor` null, or from state 2 on another index. */
ZEL_API int rInfoEstendida_ZEL(const char *indice, char *valor);

/* Reads the QR-code content of the last receipt (NFCE\UrlQrcode) into `url`, ZEL_TAMANHO_VALOR
 * bytes: at most 499 characters, without the mark-up of the module size, empty for a content that
 * the configuration cannot hold (a longer one, or one with "</" in it), which is printed whole all
 * the same. Any state. Code: ZEL_ARGUMENTO_INVALIDO, `url` null. */
ZEL_API int rURLQrcode_ZEL(char *url);

/* ---- Contingency, printing and files -------------------------------------------------------- */

/* Issues the last document again. `tipo` 1: as the closing does; 3: in contingency, with the
 * replaced number in parametrosEnvio.xml; 4: in contingency, scrambled, as KEY.ctg into up to three
 * directories; 5: in contingency. Kind 4 keeps the number and advances the numeric code, kind 5
 * keeps both, the others advance both. Any state; the state stays.
 * `texto` in and out. Kind 4: ZEL_TAMANHO_DIRETORIOS bytes; directories of up to 300 characters
 * with their final "/", separated by "|"; receives the path of the last file. Other kinds: null, or
 * a buffer that receives the document: ZEL_TAMANHO_DOCUMENTO bytes, or 16384 + 3072 for each item
 * + 80 for each payment + 5 for each character of the closing text; an item sold as tag text takes
 * the length of its text and 64 bytes more.
 * Codes: ZEL_RECUSADO, another kind, no document, a clock whose year has not four digits, a section
 * missing (a number may be used up), or kind 4 without a directory. Of several directories of kind
 * 4 the last one gives the answer; files written to the others, code and key stay. Loads the
 * configuration. Files: documentosEnvio.xml and history copies, or KEY.ctg; parametrosEnvio.xml for
 * kind 3; ZEL_Framework.xml. */
ZEL_API int aCFContingenciaUltimaNota_ZEL(int tipo, char *texto);

/* Lays a receipt out as text with printer mark-up, keeps it as the last receipt and, when
 * configured, writes PDFs.
 *   arquivoXml      document as sent (kind 1) or cancellation request (kind 5)
 *   arquivoRetorno  return of the tax authority, or "OFFLINE"; a link delivered in it counts up to
 *                   2000 characters
 *   urlQrcode       QR-code content, printed as given; empty to have it built
 *   colunas         42 or 48
 *   tipoDocumento   1 sale, 5 cancellation
 *   reservado       accepted and ignored
 *   saida           receives the text: copies x (8192 + 2 for each character of the closing text,
 *                   the document's or that of the document in progress, whichever is longer, a line
 *                   end counting as two, + 1 for each of `urlQrcode` + (300 + the longest
 *                   description) for each item + 100 for each payment) bytes, copies being 2 in
 *                   contingency and 1 otherwise; ZEL_TAMANHO_CUPOM usually
 * Mark-up within a value of document, return or configuration gets a blank after its "<", past the
 * hundredth in its place, and so prints as text; the closing text of the document in progress keeps
 * its own. Square brackets print as they stand; the PDF takes marks in them for mark-up, as
 * documents carry it. Line ends within a value are blanks, in closing and configured texts CR LF. A
 * sale stores its key, protocol and QR-code content in the configuration. While
 * CONFIGURACAO\ImpressaoCompleta is neither "0" nor "1" there is no text and the last receipt
 * stays. CONFIGURACAO\SalvarXMLPDF and SalvarDanfePDF, "1" each, ask for the PDFs, which need a
 * return: with "OFFLINE" they answer ZEL_RECUSADO. A failure of the PDFs leaves what came before it
 * done: the values stored, the last receipt kept, the text in `saida`. Any state. Codes:
 * ZEL_ARGUMENTO_INVALIDO, `saida` null; ZEL_RECUSADO, an unknown kind, a sale in other columns, or
 * files that cannot be read; ZEL_FALHA_IMPRESSAO, ZEL_FALHA_PDF, ZEL_FALHA_GRAVACAO_PDF. Loads the
 * configuration. Files: ZEL_Framework.xml, ultimadanfe.bin, the PDFs. */
ZEL_API int GerarArquivoFormatadoNF_ZEL(const char *arquivoXml, const char *arquivoRetorno,
                                        const char *urlQrcode, int colunas, int tipoDocumento,
                                        const char *reservado, char *saida);

/* Reads the last receipt text from ultimadanfe.bin into `saida`, of the size that
 * GerarArquivoFormatadoNF_ZEL asks for; it ends in front of a byte 0xFF. Any state. Codes:
 * ZEL_ARGUMENTO_INVALIDO, `saida` null; ZEL_ARQUIVO_INDISPONIVEL, there is no last receipt. */
ZEL_API int RetornarUltimoBufferFormatadoNF_ZEL(char *saida);

/* Writes NFeKEY_XML.pdf, the listing of a document given as base64 text. Any state. Codes:
 * ZEL_RECUSADO, text that is no document; ZEL_FALHA_PDF, ZEL_FALHA_GRAVACAO_PDF. */
ZEL_API int GeraPDF_ZEL(const char *xmlBase64);

/* Writes NFeKEY_DANFE.pdf, the receipt of an authorized document given as base64 text. Any state.
 * Codes as GeraPDF_ZEL. Loads the configuration; danfe_pdf_temp.xml is written and removed. */
ZEL_API int GeraPDF_DANFE_ZEL(const char *xmlBase64);

/* Scrambles, respectively unscrambles, the file `origem` into the file `destino`; they may be the
 * same. A target that exists keeps its mode, a link is followed, a device is written through. File
 * names up to 300, used as given; `chave` up to 1023, used cyclically. A wrong key gives
 * rubbish, no failure. Unscrambling ends at a plain byte 0xFF. Any state. Code:
 * ZEL_ARQUIVO_INDISPONIVEL, either file cannot be opened or written. */
ZEL_API int eCriptografarArquivo_ZEL(const char *origem, const char *destino, const char *chave);
ZEL_API int eDescriptografarArquivo_ZEL(const char *origem, const char *destino, const char *chave);

#ifdef __cplusplus
}
#endif

#endif
