/* SPDX-License-Identifier: MIT */
/* What the functions of ZEL_FelborFramework.h, which includes this, answer, and the sizes of the
 * buffers that they fill. */
#ifndef ZEL_FELBOR_CODIGOS_H
#define ZEL_FELBOR_CODIGOS_H

/* Results. */
enum {
    ZEL_OK = 1,                   /* done, and on disk */
    ZEL_CANCELAMENTO_GRAVADO = 2, /* cancellation request of a closed document */

    ZEL_RECUSADO = -1,                       /* refused, or input that does not fit together */
    ZEL_ITEM_INEXISTENTE = -11,              /* no item sold, or number above their count */
    ZEL_PAGAMENTO_INEXISTENTE = -12,         /* no such payment line, or change beyond its key */
    ZEL_ITEM_JA_AJUSTADO = -20,              /* the item has a discount or a surcharge */
    ZEL_NADA_A_REMOVER = -21,                /* the item has no discount, or no surcharge */
    ZEL_FALHA_PDF = -22,                     /* the PDF could not be created or drawn */
    ZEL_FALHA_GRAVACAO_PDF = -23,            /* the PDF could not be saved */
    ZEL_FALHA_IMPRESSAO = -24,               /* PDF of a document that was not authorized */
    ZEL_SEM_LISTA = -30,                     /* the document has no list to work on */
    ZEL_CANCELAMENTO_EXCESSIVO = -31,        /* partial cancel of the whole quantity or more */
    ZEL_JA_PAGO = -34,                       /* the payments already reach the total */
    ZEL_AJUSTE_EXCESSIVO = -35,              /* adjustment not below the gross value */
    ZEL_CONFIG_ILEGIVEL = -40,               /* configuration file without its root tags */
    ZEL_ARQUIVO_INDISPONIVEL = -52,          /* file unreadable or unwritable; no document */
    ZEL_ARGUMENTO_INVALIDO = -99,            /* argument null, empty or out of bounds */
    ZEL_ESTADO_INVALIDO = -100,              /* adjustment, preset or carrier in this state */
    ZEL_CONSUMIDOR_OBRIGATORIO = -108,       /* total above ValorMaxIdeCliente, no consumer */
    ZEL_TRANSPORTADORA_NAO_PERMITIDA = -109, /* carrier while IDE\indPres is not "4" */
    ZEL_TAG_NAO_CONFORME = -120,             /* element of wrong length, unknown, misplaced */
    ZEL_TAG_SEM_ELEMENTOS = -121,            /* no elements, or a group in place of a value */
    ZEL_TAG_OBRIGATORIA = -122,              /* a required element is missing */
    ZEL_CUPOM_EM_ANDAMENTO = -130,           /* opening while a receipt is in progress */
    ZEL_NENHUM_CUPOM = -131,                 /* no receipt is open */
    ZEL_VENDA_FORA_DE_ORDEM = -132,          /* sale outside states 1 and 2 */
    ZEL_TOTALIZACAO_FORA_DE_ORDEM = -133,    /* totalization outside state 2 */
    ZEL_PAGAMENTO_FORA_DE_ORDEM = -134,      /* payment outside states 3 and 4 */
    ZEL_ENCERRAMENTO_FORA_DE_ORDEM = -135    /* close outside state 4 */
};

/* Sizes of buffers in bytes, terminator included. */
enum {
    ZEL_TAMANHO_VALOR = 500, /* regRetornarValor_ZEL, rURLQrcode_ZEL */
    ZEL_TAMANHO_INFO = 100,  /* rInfoEstendida_ZEL */
    /* Directories in, path of the last file out: three of 300 characters, two "|", and room for a
     * file name after the longest one. aCFContingenciaUltimaNota_ZEL (kind 4) and
     * tCFCancelarOffline_ZEL. */
    ZEL_TAMANHO_DIRETORIOS = 3 * 300 + 2 + 64,
    /* Any document sold through flat arguments: aCFContingenciaUltimaNota_ZEL, kinds 1, 3 and 5. */
    ZEL_TAMANHO_DOCUMENTO = 4194304,
    /* Receipt text of up to 100 items and 20 payments, both copies of a contingency receipt. */
    ZEL_TAMANHO_CUPOM = 131072
};

#endif
