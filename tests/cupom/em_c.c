/* SPDX-License-Identifier: MIT */
/* The header is C, and a C program needs nothing else: a receipt to SVG and to printer
 * bytes. The result is 0 or the
 * number of the step that failed. */
#include "zel_cupom.h"

#include <string.h>

int main(void) {
    const char *texto = "<ce><b>Obrigado</b></ce>\r\n<sl>4</sl><gui></gui>";
    unsigned char *bytes = NULL;
    size_t tamanho = 0;
    zel_cupom *cupom = zel_cupom_novo();
    if (cupom == NULL) return 1;
    if (zel_cupom_definir_papel(cupom, 42, 58) != ZEL_CUPOM_OK) return 2;
    if (zel_cupom_ler(cupom, texto, strlen(texto)) != ZEL_CUPOM_OK) return 3;
    if (zel_cupom_svg(cupom, &bytes, &tamanho) != ZEL_CUPOM_OK) return 4;
    if (tamanho < 1000 || memcmp(bytes, "<?xml", 5) != 0) return 5;
    zel_cupom_liberar_bytes(bytes);
    if (zel_cupom_definir_perfil(cupom, "generico-80mm") != ZEL_CUPOM_OK) return 6;
    if (zel_cupom_escpos(cupom, &bytes, &tamanho) != ZEL_CUPOM_OK) return 7;
    if (tamanho < 20 || memcmp(bytes, "\x1B@", 2) != 0) return 8;
    zel_cupom_liberar_bytes(bytes);
    zel_cupom_liberar(cupom);
    return 0;
}
