/* SPDX-License-Identifier: MIT */
/* The header is C, and a C program needs nothing else: the document of a till, in layout 3.10, to
 * layout 4.00, as it stands in the standard streams. The result is 0 or the number of the step that
 * failed. */
#include "zel_envio.h"

#include <stdio.h>

int main(void) {
    static char lido[1 << 16];
    char *bytes = NULL;
    size_t tamanho = fread(lido, 1, sizeof lido, stdin);
    zel_envio *envio = zel_envio_novo();
    if (envio == NULL) return 1;
    if (zel_envio_ler(envio, lido, tamanho) != ZEL_ENVIO_OK) return 2;
    if (zel_envio_traduzir(envio) != ZEL_ENVIO_OK) {
        fprintf(stderr, "%s\n", zel_envio_detalhe(envio));
        return 3;
    }
    if (zel_envio_mensagem(envio, &bytes, &tamanho) != ZEL_ENVIO_OK) return 4;
    if (fwrite(bytes, 1, tamanho, stdout) != tamanho) return 5;
    zel_envio_liberar_bytes(bytes);
    zel_envio_liberar(envio);
    return 0;
}
