/* SPDX-License-Identifier: MIT */
/* Loads a library and makes a call that changes a file and one that is refused, opens a receipt and
 * has another process sell in it: what a program does that runs with the rights of its owner.
 * privilegiado LIBRARY; 0, or 2 when the other process was served. */
#include <dlfcn.h>
#include <sys/wait.h>
#include <unistd.h>

#define T const char *
typedef int Alterar(T, T);
typedef int Vender(T, T, T, T, T, T, T, T);
typedef int Abrir(T, T, T, T, T, T, T, T, T);

int main(int argc, char **argv) {
    void *biblioteca = argc == 2 ? dlopen(argv[1], RTLD_NOW) : 0;
    Alterar *alterar;
    Abrir *abrir;
    Vender *vender;
    int fim = 0;
    pid_t outro;
    if (!biblioteca) return 1;
    *(void **)&alterar = dlsym(biblioteca, "regAlterarValor_ZEL");
    *(void **)&abrir = dlsym(biblioteca, "aCFAbrir_ZEL");
    *(void **)&vender = dlsym(biblioteca, "aCFVender_ZEL");
    if (!alterar || !abrir || !vender || alterar("IDE\\verProc", "2.0") != 1) return 1;
    if (alterar("NADA", "1") == 1 || abrir("", "", "", "", "", "", "", "", "") != 1) return 1;
    outro = fork();
    if (outro == 0) _exit(vender("T1800", "1", "1,00", "", "", "1", "UN", "Cafe") == 1 ? 2 : 0);
    /* At a usual end a sanitizer would look for leaks, which it cannot do with these rights. */
    _exit(waitpid(outro, &fim, 0) == outro && WIFEXITED(fim) ? WEXITSTATUS(fim) : 1);
}
