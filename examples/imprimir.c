/* Prints a document that came back from the tax authority, as a till program would: the receipt
 * text with its printer mark-up to standard output (ISO-8859-1), and both PDFs beside the library.
 *
 *   imprimir DOCUMENT RETURN [COLUMNS [KIND]]
 *
 * RETURN is a file or OFFLINE, COLUMNS 42 or 48 (default), KIND 1 sale (default) or 5 cancellation.
 * Ends with 1 and the code on standard error when the library refuses. */
#include "ZEL_FelborFramework.h"

#include <stdio.h>
#include <stdlib.h>

static int recusado(const char *operacao, int codigo) {
    if (codigo >= 0) return 0;
    fprintf(stderr, "%s: %d\n", operacao, codigo);
    return 1;
}

int main(int argc, char **argv) {
    static char cupom[ZEL_TAMANHO_CUPOM];
    char url[ZEL_TAMANHO_VALOR];
    const char *pdf;
    int colunas, tipo, codigo;
    if (argc < 3 || argc > 5) {
        fprintf(stderr, "usage: imprimir DOCUMENT RETURN [COLUMNS [KIND]]\n");
        return 2;
    }
    colunas = argc > 3 ? atoi(argv[3]) : 48;
    tipo = argc > 4 ? atoi(argv[4]) : 1;

    /* A cancellation has no document to draw. */
    pdf = tipo == 1 ? "1" : "0";
    codigo = regAlterarValor_ZEL("CONFIGURACAO\\SalvarXMLPDF", pdf);
    if (recusado("regAlterarValor_ZEL", codigo)) return 1;
    codigo = regAlterarValor_ZEL("CONFIGURACAO\\SalvarDanfePDF", pdf);
    if (recusado("regAlterarValor_ZEL", codigo)) return 1;

    codigo = GerarArquivoFormatadoNF_ZEL(argv[1], argv[2], "", colunas, tipo, "", cupom);
    if (recusado("GerarArquivoFormatadoNF_ZEL", codigo)) return 1;
    fputs(cupom, stdout);

    if (tipo == 1) {
        if (recusado("rURLQrcode_ZEL", rURLQrcode_ZEL(url))) return 1;
        fprintf(stderr, "QR code: %s\n", url);
    }
    return 0;
}
