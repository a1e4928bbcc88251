/* SPDX-License-Identifier: MIT */
/*
 * libzel-envio: makes of what the till wrote (NFC-e of layout 3.10, contingency files, requests)
 * the messages that the tax authority takes today: layout 4.00, signed, with QR code, judged by the
 * published schemas. Looks at any NFC-e, too: signature, key, QR code, schema, sums.
 *
 * Conventions
 *
 *  1. A zel_envio is one configuration with its certificate and, after zel_envio_ler, one document.
 *     One thread at a time may use it; several threads may use one each. There is no other state,
 *     and nothing depends on the locale or the working directory.
 *  2. Every function with an int result answers ZEL_ENVIO_OK or the negative code of its failure,
 *     and a failure changes nothing but zel_envio_detalhe, which then says what is wrong: a line
 * for each thing, `field: "value"; reason`, in Portuguese, UTF-8. All things are said, not the
 * first alone.
 *  3. What is read may be UTF-8 or ISO-8859-1, with a declaration or without; what is given back is
 *     UTF-8, except what zel_envio_impressao gives, which is what the fiscal library reads.
 *  4. Bytes that a function gives back belong to the caller, who returns them with
 *     zel_envio_liberar_bytes. A 0 follows the last byte and is not counted. Texts that are
 * answered belong to the zel_envio and are valid until its next call.
 *  5. The key to sign with and its password are in no text, file or message of this library.
 *  6. Documents and answers may be hostile: no entities, at most 16 MiB. Nothing reaches for a
 * network but zel_envio_transmitir and zel_envio_servico.
 */
#ifndef ZEL_ENVIO_H
#define ZEL_ENVIO_H

#include <stddef.h>

#if defined(__GNUC__)
#define ZEL_ENVIO_API __attribute__((visibility("default")))
#else
#define ZEL_ENVIO_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

#define ZEL_ENVIO_VERSAO "1.0.0"

/* Results. */
enum {
    ZEL_ENVIO_OK = 1,

    ZEL_ENVIO_ARGUMENTO = -1,    /* null, or outside the values that the function names */
    ZEL_ENVIO_MEMORIA = -2,      /* memory is short, or another failure of the system */
    ZEL_ENVIO_CONFIGURACAO = -3, /* the configuration, or a file that it names */
    ZEL_ENVIO_ILEGIVEL = -4,     /* not XML, or no document that this library knows */
    ZEL_ENVIO_TRADUCAO = -5,     /* something cannot be said in layout 4.00 */
    ZEL_ENVIO_CERTIFICADO = -6,  /* missing, wrong password, expired, of another issuer... */
    ZEL_ENVIO_ASSINATURA = -7,   /* signing failed */
    ZEL_ENVIO_ESQUEMA = -8,      /* the published schemas refuse the message */
    ZEL_ENVIO_REPROVADO = -9,    /* something in the document is wrong: key, sums, signature... */
    ZEL_ENVIO_ORDEM = -10,       /* nothing was read or made yet for this to work on */
    /* The authority refuses the document, or its till took it back and another one has its place:
     * the detail says why, or which one and what became of it. It is not issued again as it is. */
    ZEL_ENVIO_RECUSADO = -11,
    /* No answer came: the document may be there, and the queue asks on. Its number must not be used
     * again: the till issues an offline document under the next one (kind 3). */
    ZEL_ENVIO_SEM_RESPOSTA = -12,
    /* Certainly nothing went out. An NFC-e issued online was taken out of the queue: the till may
     * issue the same number offline (kinds 4 and 5), or hand the same bytes over again later.
     * Everything else stays in the queue. Where the certificate is refused or cannot be used this
     * comes at once, the detail begins with "envio parado", and nothing is signed: an offline
     * document waits without a receipt until zel_envio_continuar. */
    ZEL_ENVIO_NAO_ENVIADO = -13,
    ZEL_ENVIO_FILA = -14 /* the queue's file cannot be used */
};

/* Kinds of documents, see zel_envio_tipo. */
enum {
    ZEL_ENVIO_NENHUM = 0,
    ZEL_ENVIO_NFCE = 1,         /* NFC-e; the till's or one of layout 4.00 */
    ZEL_ENVIO_CANCELAMENTO = 2, /* the till's EnvioEvento, or an event of 4.00 */
    ZEL_ENVIO_INUTILIZACAO = 3,
    ZEL_ENVIO_CONSULTA = 4
};

typedef struct zel_envio zel_envio;

/* Without configuration and document. Null when memory is short. The caller returns it with
 * zel_envio_liberar. */
ZEL_ENVIO_API zel_envio *zel_envio_novo(void);

/* Returns it; null is allowed. */
ZEL_ENVIO_API void zel_envio_liberar(zel_envio *envio);

/* Reads a configuration, zel-envio.toml (docs/envio.md has every key), in the place of the one
 * before; paths in it are relative to its directory. The certificate is opened when it is first
 * needed, and the schemas are read then. Codes: ZEL_ENVIO_ARGUMENTO, ZEL_ENVIO_CONFIGURACAO. */
ZEL_ENVIO_API int zel_envio_configurar(zel_envio *envio, const char *arquivo);

/* The same from `tamanho` bytes of text; `diretorio` is where its relative paths begin. */
ZEL_ENVIO_API int zel_envio_configurar_texto(zel_envio *envio, const char *toml, size_t tamanho,
                                             const char *diretorio);

/* Reads a document from `tamanho` bytes in the place of the one before: a till's NFC-e or request
 * (documentosEnvio.xml, a history copy), one of its contingency files (.ctg, .ctgCanc: told by what
 * they hold, not by their name), or a document of layout 4.00, signed or not (NFe, nfeProc,
 * envEvento, inutNFe). Codes: ZEL_ENVIO_ARGUMENTO, ZEL_ENVIO_ILEGIVEL. */
ZEL_ENVIO_API int zel_envio_ler(zel_envio *envio, const char *bytes, size_t tamanho);

/* The kind of the document that was read. */
ZEL_ENVIO_API int zel_envio_tipo(const zel_envio *envio);

/* Says what the till's file leaves out; null or "" is not known. `protocolo`: nProt (15 digits) of
 * the document to be cancelled. `substituta`: the key of the document that replaced it, which makes
 * a cancellation by substitution (110112) of the request. `data`: "AAAA-MM-DD", when an
 * inutilization was asked for; today when it is null. `troco`: the change of an NFC-e, "12.34",
 * which the till keeps apart (CONFIGURACAO\TrocoUltimaNFCe of its configuration): the last payment
 * is then said in full, with vTroco. Holds for the document that was read. Codes:
 * ZEL_ENVIO_ARGUMENTO, ZEL_ENVIO_ORDEM. */
ZEL_ENVIO_API int zel_envio_completar(zel_envio *envio, const char *protocolo,
                                      const char *substituta, const char *data, const char *troco);

/* Translates the document that was read: the message of layout 4.00, unsigned, ready in
 * zel_envio_mensagem. A document of layout 4.00 stays as it is. Where schemas are configured, they
 * judge it but for the missing signature. Codes: ZEL_ENVIO_ORDEM, ZEL_ENVIO_TRADUCAO,
 * ZEL_ENVIO_ESQUEMA, ZEL_ENVIO_CONFIGURACAO. */
ZEL_ENVIO_API int zel_envio_traduzir(zel_envio *envio);

/* Translates if that is due, checks the certificate, signs, adds the QR code (NFC-e) and lets the
 * schemas judge the whole. A consultation needs no signature and is as it was translated. An NFC-e
 * that came in layout 4.00 has its key, numbers, sums, IBS and CBS looked at first, and gets a new
 * infNFeSupl. One document at a time: of a lot with more than one NFe none is signed.
 * Codes: those of zel_envio_traduzir, ZEL_ENVIO_CERTIFICADO, ZEL_ENVIO_ASSINATURA,
 * ZEL_ENVIO_REPROVADO. */
ZEL_ENVIO_API int zel_envio_assinar(zel_envio *envio);

/* The message that was made last: NFe, envEvento, inutNFe or consSitNFe. Codes:
 * ZEL_ENVIO_ARGUMENTO, ZEL_ENVIO_ORDEM, ZEL_ENVIO_MEMORIA. */
ZEL_ENVIO_API int zel_envio_mensagem(zel_envio *envio, char **bytes, size_t *tamanho);

/* Sends the document that was read (a till's file, as it stands) through the queue of the
 * configuration ([fila]), whether the service works on it or this call does, and waits at most
 * `segundos` (0 to 300; with 0 it is signed and left in the queue) for the authority. `caixa`: the
 * till's directory, absolute, as [[caixas]] names it; null or "" is the only one there.
 * `substitui`: key of the document that this one, issued offline, replaces; null or "" for none:
 * that one is asked for, and cancelled by substitution if it was authorized after all. With
 * ZEL_ENVIO_OK the answer is in zel_envio_resposta, the message in zel_envio_valor,
 * zel_envio_verificar and zel_envio_impressao, and the till's directory of returns has it too. The
 * same bytes of the same till are one document, however often they are handed over; what was taken
 * back goes its way again, unless another has its place. A line that is known to be down is asked
 * for two seconds at most whether it is back. Codes:
 * ZEL_ENVIO_ARGUMENTO, ZEL_ENVIO_ORDEM, ZEL_ENVIO_RECUSADO, ZEL_ENVIO_SEM_RESPOSTA,
 * ZEL_ENVIO_NAO_ENVIADO, ZEL_ENVIO_FILA, ZEL_ENVIO_MEMORIA. */
ZEL_ENVIO_API int zel_envio_transmitir(zel_envio *envio, const char *caixa, const char *substitui,
                                       int segundos);

/* The authority's record of what was transmitted: protNFe, retEvento, retInutNFe. Codes:
 * ZEL_ENVIO_ARGUMENTO, ZEL_ENVIO_ORDEM, ZEL_ENVIO_MEMORIA. */
ZEL_ENVIO_API int zel_envio_resposta(zel_envio *envio, char **bytes, size_t *tamanho);

/* ---- The queue of the configuration, as people and programs ask for it ----
 * Answers are JSON, one line of UTF-8. Amounts are texts ("31.00"), moments texts with their zone
 * ("2026-11-25T22:04:16-03:00"); what there is not is an empty text, 0 or an empty list. A row of
 * the queue has id, tipo, estado, pessoa (the state in words), desfecho, numero, ultimo (of an
 * inutilization), total, troco, achado, mudado, proximo (when it is tried again), remedio, prazo
 * (in words: until when it has to arrive, or that this is over), chave,
 * cnpj, caixa, origem, dhEmi, consumidor, nomeConsumidor, substitui, xMotivo, protocolo,
 * momentoResposta, recibo, motivo, modelo, serie, tpAmb, tpEmis, cStat, tentativas. Codes of each:
 * ZEL_ENVIO_ARGUMENTO, ZEL_ENVIO_ORDEM (no configuration), ZEL_ENVIO_FILA, ZEL_ENVIO_MEMORIA. */

/* How it stands: parada (why nothing is sent; empty: it is), estados (estado, pessoa, quantos,
 * maisAntigo), esperam (documents on their way), maisAntigo (since when the oldest of them waits),
 * esperaHaSegundos, certificado (nome, cnpj, validade, dias; or motivo), servicos (the last answer
 * of each: servico, cUF, tpAmb, cStat, xMotivo, http, demora in milliseconds, momento), lacunas
 * (numbers that were not used: cnpj, tpAmb, serie, primeiro, ultimo, caixa), alguem (at most 100
 * rows that need a person: refused and not replaced, or waiting longer than [fila] aviso_horas). */
ZEL_ENVIO_API int zel_envio_estado(zel_envio *envio, char **json, size_t *tamanho);

/* The rows that fit, the last one found first. `criterios`: one a line, `numero=12`, `chave=`,
 * `dia=2026-11-25`, `mes=2026-11`, `consumidor=` (its CPF, CNPJ or other document), `caixa=` (its
 * directory), `estado=` (may be there several times), `alguem` (needs a person), `passos` (each row
 * with its steps: momento, de, para, detalhe), `maximo=` (1000 without it); null or "": all. */
ZEL_ENVIO_API int zel_envio_procurar(zel_envio *envio, const char *criterios, char **json,
                                     size_t *tamanho);

/* Writes what is kept of a month ("2026-11") into a zip file, with notas.csv, a line for each
 * number: whole or not at all. `quantos`, which may be null, receives how many documents there are
 * in it. A month or a file that cannot be is ZEL_ENVIO_ARGUMENTO. */
ZEL_ENVIO_API int zel_envio_exportar(zel_envio *envio, const char *mes, const char *arquivo,
                                     size_t *quantos);

/* Ends the stop that a certificate caused: signing and sending go on. */
ZEL_ENVIO_API int zel_envio_continuar(zel_envio *envio);

/* Asks the authority's status service now, for at most `segundos` (1 to 300). `cUF`: two digits of
 * the state; null or "": the configuration's. `ambiente`: 1 production, 2 homologation. With
 * ZEL_ENVIO_OK it works, and `json` is its answer, as one of `servicos` of zel_envio_estado. More
 * codes: ZEL_ENVIO_RECUSADO (it answers that it does not work), ZEL_ENVIO_SEM_RESPOSTA,
 * ZEL_ENVIO_NAO_ENVIADO (there is no address). */
ZEL_ENVIO_API int zel_envio_servico(zel_envio *envio, const char *cUF, int ambiente, int segundos,
                                    char **json, size_t *tamanho);

/* A fact of the message that was made, or else of the document that was read: "chave", "tipo",
 * "digest", "qrCode", "urlChave", "emissao" (dhEmi), "total" (vNF), "serie", "numero", "protocolo";
 * of what was transmitted: "cStat", "xMotivo", "estado" (as docs/envio.md names them), "motivo"
 * (why it is not at its end, or refused), "remedio" (what to do about cStat), "desfecho" (what the
 * answer means, "autorizado"), "retorno" (the file that was written for the till);
 * or of the certificate: "certificado.nome", "certificado.cnpj", "certificado.validade"
 * ("AAAA-MM-DD"), "certificado.dias". Empty when there is none; null for an unknown name. */
ZEL_ENVIO_API const char *zel_envio_valor(zel_envio *envio, const char *nome);

/* Looks at an NFC-e of layout 4.00, ours or not: signature and digest, key (its parts against the
 * document, check digit, forms of cNF that are refused), QR code, schema where configured, sums,
 * IBS and CBS. Of events and inutilizations: signature, Id, key, fields, schema, and the answer
 * beside them. A consultation is ZEL_ENVIO_ORDEM. ZEL_ENVIO_REPROVADO: zel_envio_detalhe has all
 * that is wrong. With ZEL_ENVIO_OK it says what was looked at and what could not be, a line each.
 */
ZEL_ENVIO_API int zel_envio_verificar(zel_envio *envio);

/* The document that was read as a person reads it: plain text, UTF-8. Codes: ZEL_ENVIO_ARGUMENTO,
 * ZEL_ENVIO_ORDEM, ZEL_ENVIO_MEMORIA. */
ZEL_ENVIO_API int zel_envio_mostrar(zel_envio *envio, char **texto, size_t *tamanho);

/* What the fiscal library needs to print the message that was made (or the document of layout 4.00
 * that was read): `documento`, in the form in which it reads documents, and `retorno`, with the
 * ready QR content. `resposta`, `tamanho_resposta` bytes, is the authority's (protNFe, nfeProc,
 * retConsSitNFe); null for an offline receipt. Each is written to a file of its own and given to
 * GerarArquivoFormatadoNF_ZEL as document and return. Codes: ZEL_ENVIO_ARGUMENTO, ZEL_ENVIO_ORDEM,
 * ZEL_ENVIO_ILEGIVEL (an answer that is none of this document), ZEL_ENVIO_REPROVADO (the answer
 * refuses the document), ZEL_ENVIO_MEMORIA. */
ZEL_ENVIO_API int zel_envio_impressao(zel_envio *envio, const char *resposta,
                                      size_t tamanho_resposta, char **documento,
                                      size_t *tamanho_documento, char **retorno,
                                      size_t *tamanho_retorno);

/* Returns bytes that a function above gave; null is allowed. */
ZEL_ENVIO_API void zel_envio_liberar_bytes(char *bytes);

/* What the last call that failed found wrong, or zel_envio_verificar looked at; empty otherwise.
 * Never null. */
ZEL_ENVIO_API const char *zel_envio_detalhe(const zel_envio *envio);

/* The same thing by thing, from 0 on: field, value and reason, each valid until the next call, each
 * pointer may be null. Codes: ZEL_ENVIO_ARGUMENTO after the last. */
ZEL_ENVIO_API int zel_envio_recusa(const zel_envio *envio, size_t indice, const char **campo,
                                   const char **valor, const char **motivo);

/* A first zel-envio.toml with comments, from the `tamanho` bytes of a till's ZEL_Framework.xml.
 * `certificado`, `senha_arquivo` and `csc_arquivo` are names of files that it is to use; null or
 * "": an example as a comment. Codes: ZEL_ENVIO_ARGUMENTO, ZEL_ENVIO_ILEGIVEL, ZEL_ENVIO_MEMORIA.
 */
ZEL_ENVIO_API int zel_envio_primeira_configuracao(zel_envio *envio, const char *caixa,
                                                  size_t tamanho, const char *certificado,
                                                  const char *senha_arquivo,
                                                  const char *csc_arquivo, char **toml,
                                                  size_t *tamanho_toml);

/* A self-signed certificate with its key for trying, a PKCS#12 file protected by `senha`, valid for
 * a year: what it signs verifies, and no authority takes it. `cnpj`: 14 digits. Codes:
 * ZEL_ENVIO_ARGUMENTO, ZEL_ENVIO_CERTIFICADO (OpenSSL refuses), ZEL_ENVIO_MEMORIA. */
ZEL_ENVIO_API int zel_envio_certificado_de_ensaio(zel_envio *envio, const char *nome,
                                                  const char *cnpj, const char *senha, char **bytes,
                                                  size_t *tamanho);

/* A code in words, in Portuguese without accents; never null. */
ZEL_ENVIO_API const char *zel_envio_descrever(int codigo);

/* ZEL_ENVIO_VERSAO of the library that was loaded. */
ZEL_ENVIO_API const char *zel_envio_versao(void);

#ifdef __cplusplus
}
#endif

#endif
