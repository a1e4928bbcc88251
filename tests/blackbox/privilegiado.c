/* SPDX-License-Identifier: MIT */
/* Loads a library and makes a call that changes a file and one that is refused: what a program does
 * that runs with the rights of its owner. privilegiado LIBRARY */
#include <dlfcn.h>

int main(int argc, char **argv) {
    void *biblioteca = argc == 2 ? dlopen(argv[1], RTLD_NOW) : 0;
    int (*alterar)(const char *, const char *);
    if (!biblioteca) return 1;
    *(void **)&alterar = dlsym(biblioteca, "regAlterarValor_ZEL");
    if (!alterar || alterar("IDE\\verProc", "2.0") != 1) return 1;
    return alterar("NADA", "1") == 1;
}
