/* SPDX-License-Identifier: MIT */
/* Prints a document that came back from the tax authority, as a till program would: the receipt
 * text with its printer mark-up to standard output (ISO-8859-1), and both PDFs beside the library.
 *
 *   imprimir DOCUMENT RETURN [COLUMNS [KIND]]
 *
 * RETURN is a file or OFFLINE (then without PDFs), COLUMNS 42 or 48 (default), KIND 1 sale
 * (default) or 5 cancellation. Ends with 1 and the code on standard error when the library refuses;
 * with 3, and nothing printed, when the return does not authorize the sale. */
#include "ZEL_FelborFramework.h"

#include <ctype.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static int recusado(const char *operacao, int codigo) {
    if (codigo >= 0) return 0;
    fprintf(stderr, "%s: %d\n", operacao, codigo);
    return 1;
}

/* The situation that a return gives, <SitCodigo> in any case; 0 when it gives none. */
static int lerSituacao(const char *retorno) {
    static const char marca[] = "<sitcodigo>";
    FILE *arquivo = fopen(retorno, "rb");
    size_t iguais = 0;
    int c = 0, situacao = 0;
    if (arquivo == NULL) return 0;
    while (marca[iguais] != '\0' && (c = fgetc(arquivo)) != EOF)
        iguais = tolower(c) == marca[iguais] ? iguais + 1 : c == '<';
    if (c == EOF || fscanf(arquivo, "%d", &situacao) != 1) situacao = 0;
    fclose(arquivo);
    return situacao;
}

/* The library lays out whatever it is given: a receipt in a customer's hand is the till's promise
 * that the sale is authorized (100; 150 after the term). */
static int autorizada(const char *retorno) {
    const int situacao = lerSituacao(retorno);
    if (situacao == 100 || situacao == 150) return 1;
    fprintf(stderr, "%s: the sale is not authorized (SitCodigo %d), no receipt\n", retorno,
            situacao);
    return 0;
}

/* A receipt takes less room than the document that it is printed from, twice in contingency; the
 * fixed part holds headings, QR code and the closing text of a receipt in progress. */
static char *reservarCupom(const char *documento) {
    FILE *arquivo = fopen(documento, "rb");
    long tamanho = 0;
    if (arquivo != NULL) {
        fseek(arquivo, 0, SEEK_END);
        tamanho = ftell(arquivo);
        fclose(arquivo);
    }
    return malloc(65536 + 4 * (size_t)(tamanho > 0 ? tamanho : 0));
}

static int imprimir(const char *documento, const char *retorno, int colunas, int tipo) {
    const int comRetorno = tipo == 1 && strcmp(retorno, "OFFLINE") != 0;
    /* A cancellation has no document to draw, and without a return nothing is authorized. */
    const char *pdf = comRetorno ? "1" : "0";
    char url[ZEL_TAMANHO_VALOR];
    char *cupom;
    int codigo;
    if (comRetorno && !autorizada(retorno)) return 3;
    cupom = reservarCupom(documento);
    if (cupom == NULL) return 1;
    cupom[0] = '\0';
    codigo = regAlterarValor_ZEL("CONFIGURACAO\\SalvarXMLPDF", pdf);
    if (codigo == ZEL_OK) codigo = regAlterarValor_ZEL("CONFIGURACAO\\SalvarDanfePDF", pdf);
    if (codigo == ZEL_OK) {
        codigo = GerarArquivoFormatadoNF_ZEL(documento, retorno, "", colunas, tipo, "", cupom);
        fputs(cupom, stdout); /* a failed PDF leaves the text */
    }
    free(cupom);
    if (recusado("GerarArquivoFormatadoNF_ZEL", codigo)) return 1;
    if (tipo == 1) {
        if (recusado("rURLQrcode_ZEL", rURLQrcode_ZEL(url))) return 1;
        fprintf(stderr, "QR code: %s\n", url);
    }
    return 0;
}

int main(int argc, char **argv) {
    if (argc < 3 || argc > 5) {
        fprintf(stderr, "usage: imprimir DOCUMENT RETURN [COLUMNS [KIND]]\n");
        return 2;
    }
    return imprimir(argv[1], argv[2], argc > 3 ? atoi(argv[3]) : 48, argc > 4 ? atoi(argv[4]) : 1);
}
