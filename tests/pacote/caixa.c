/* SPDX-License-Identifier: MIT */
/* A till under which the library is exchanged: opens a receipt and sells, waits for a line, sells
 * again and closes. With an argument it goes on with what another process left. The result is 0, or
 * the number of the step that was refused. */
#include <ZEL_FelborFramework.h>
#include <stdio.h>

int main(int argc, char **argv) {
    char linha[8];
    (void)argv;
    if (argc == 1) {
        if (aCFAbrir_ZEL("", "", "", "", "", "", "", "", "") != ZEL_OK) return 1;
        if (aCFVender_ZEL("T1800", "1", "4,00", "", "", "101", "UN", "Antes") != ZEL_OK) return 2;
        puts("vendeu");
        fflush(stdout);
        if (fgets(linha, sizeof linha, stdin) == NULL) return 3;
    }
    if (aCFVender_ZEL("T1800", "1", "6,00", "", "", "102", "UN", "Depois") != ZEL_OK) return 4;
    if (aCFTotalizar_ZEL("", "") != ZEL_OK) return 5;
    if (aCFEfetuarPagamento_ZEL("Dinheiro", "10,00") != ZEL_OK) return 6;
    return tCFEncerrar_ZEL("") == ZEL_OK ? 0 : 7;
}
