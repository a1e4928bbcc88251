/* SPDX-License-Identifier: MIT */
/* The requests beside the sale: cancellation, inutilization, consultation. The first argument names
 * the kind, the others are handed on as they are given (ISO-8859-1 bytes). Prints the library's
 * answer; ends with 0 when the request is on disk, 1 when it was refused, 2 without a call. */
#include "ZEL_FelborFramework.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

enum { MAXIMO_ARGUMENTOS = 5 };

/* The arguments after the kind; those not given are empty. */
typedef const char *const *Argumentos;

static int cancelar(Argumentos a) {
    return tCFCancelar_ZEL(a[0], a[1], a[2], a[3], a[4]);
}

static int cancelarOffline(Argumentos a) {
    char diretorios[ZEL_TAMANHO_DIRETORIOS] = "";
    int codigo;
    const size_t tamanho = strlen(a[0]);
    if (tamanho >= sizeof diretorios) return ZEL_ARGUMENTO_INVALIDO;
    memcpy(diretorios, a[0], tamanho);
    codigo = tCFCancelarOffline_ZEL(a[1], a[2], a[3], a[4], diretorios);
    if (codigo == ZEL_OK) printf("last file: %s\n", diretorios);
    return codigo;
}

static int inutilizar(Argumentos a) {
    return tCFInutilizar_ZEL(a[0], a[1], a[2], a[3]);
}

static int consultarData(Argumentos a) {
    return GeraXMLConsulta_ZEL("DATA", a[0], a[1], NULL, NULL);
}

static int consultarNumero(Argumentos a) {
    return GeraXMLConsulta_ZEL("NUM", a[0], a[1], a[2], NULL);
}

static int consultarChave(Argumentos a) {
    return GeraXMLConsulta_ZEL("CHAVE", NULL, NULL, NULL, a[0]);
}

static const struct {
    const char *tipo;
    int minimo, maximo; /* arguments */
    const char *uso;
    int (*enviar)(Argumentos a);
} requisicoes[] = {
    {"cancelar", 0, 5, "[NUMBER SERIES KEY PROTOCOL REASON]", cancelar},
    {"cancelar-offline", 1, 5, "DIR/[|DIR/[|DIR/]] [NUMBER SERIES KEY REASON]", cancelarOffline},
    {"inutilizar", 4, 4, "FIRST LAST SERIES REASON", inutilizar},
    {"consultar-data", 2, 2, "FIRST LAST", consultarData},
    {"consultar-numero", 3, 3, "FIRST LAST SERIES", consultarNumero},
    {"consultar-chave", 1, 1, "KEY", consultarChave},
};

enum { TOTAL = sizeof requisicoes / sizeof requisicoes[0] };

static int explicarUso(const char *programa) {
    int i;
    fprintf(stderr, "usage: %s KIND ARGUMENTS...\n", programa);
    for (i = 0; i < TOTAL; ++i)
        fprintf(stderr, "  %-17s %s\n", requisicoes[i].tipo, requisicoes[i].uso);
    fprintf(stderr, "A cancellation without arguments: the receipt in progress, or the last "
                    "document closed.\n");
    return 2;
}

int main(int argc, char **argv) {
    const char *argumentos[MAXIMO_ARGUMENTOS] = {"", "", "", "", ""};
    const int dados = argc - 2;
    int i, codigo;
    for (i = 0; i < TOTAL && (argc < 2 || strcmp(argv[1], requisicoes[i].tipo) != 0); ++i)
        ;
    if (i == TOTAL || dados < requisicoes[i].minimo || dados > requisicoes[i].maximo)
        return explicarUso(argv[0]);
    memcpy(argumentos, argv + 2, (size_t)dados * sizeof argumentos[0]);

    codigo = requisicoes[i].enviar(argumentos);
    printf("%s %d\n", requisicoes[i].tipo, codigo);
    return codigo > 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
