/* SPDX-License-Identifier: MIT
 * Loaded in front of a program, kills it (SIGKILL) before the n-th of its calls that change the
 * disk or touch the network: ZEL_MORRE_EM=n. */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <fcntl.h>
#include <signal.h>
#include <stdatomic.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <unistd.h>

static void passar(void) {
    static atomic_long vistas;
    const char *quando = getenv("ZEL_MORRE_EM");
    if (quando != NULL && atomic_fetch_add(&vistas, 1) + 1 == atol(quando)) kill(getpid(), SIGKILL);
}

#define VER(tipo, nome, argumentos, nomes)                                                         \
    tipo nome argumentos {                                                                         \
        static tipo(*verdadeira) argumentos;                                                       \
        if (verdadeira == NULL) *(void **)&verdadeira = dlsym(RTLD_NEXT, #nome);                   \
        passar();                                                                                  \
        return verdadeira nomes;                                                                   \
    }

VER(int, fdatasync, (int fd), (fd))
VER(int, fsync, (int fd), (fd))
VER(ssize_t, pwrite64, (int fd, const void *b, size_t n, off64_t o), (fd, b, n, o))
VER(ssize_t, send, (int fd, const void *b, size_t n, int f), (fd, b, n, f))
VER(ssize_t, recv, (int fd, void *b, size_t n, int f), (fd, b, n, f))
VER(int, rename, (const char *de, const char *para), (de, para))
VER(int, link, (const char *de, const char *para), (de, para))
VER(int, linkat, (int a, const char *de, int b, const char *para, int f), (a, de, b, para, f))
VER(int, renameat2, (int a, const char *de, int b, const char *para, unsigned f),
    (a, de, b, para, f))
