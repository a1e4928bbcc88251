/* The header is C, and a C program needs nothing else: a receipt to SVG. The result is 0 or the
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
    zel_cupom_liberar(cupom);
    return 0;
}
