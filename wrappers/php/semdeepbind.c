/* SPDX-License-Identifier: MIT */
/* PHP binds its extensions deeply, which the runtime of a sanitizer refuses: a dlopen that does
 * not. */
#define _GNU_SOURCE
#include <dlfcn.h>

void *dlopen(const char *nome, int modo) {
    void *(*seguinte)(const char *, int) = (void *(*)(const char *, int))dlsym(RTLD_NEXT, "dlopen");
    return seguinte(nome, modo & ~RTLD_DEEPBIND);
}
