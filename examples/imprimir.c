/* Prints a document that came back from the tax authority, as a till program would: the receipt
 * text with its printer mark-up to standard output (ISO-8859-1), and both PDFs beside the library.
 *
 *   imprimir DOCUMENT RETURN [COLUMNS [KIND]]
 *
 * RETURN is a file or OFFLINE (then without PDFs), COLUMNS 42 or 48 (default), KIND 1 sale (default)
 * or 5 cancellation. Ends with 1 and the code on standard error when the library refuses. */
#include "ZEL_FelborFramework.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static int recusado(const char *operacao, int codigo) {
    if (codigo >= 0) return 0;
    fprintf(stderr, "%s: %d\n", operacao, codigo);
    return 1;
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
    /* A cancellation has no document to draw, and without a return nothing is authorized. */
    const char *pdf = tipo == 1 && strcmp(retorno, "OFFLINE") != 0 ? "1" : "0";
    char url[ZEL_TAMANHO_VALOR];
    char *cupom = reservarCupom(documento);
    int codigo;
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
