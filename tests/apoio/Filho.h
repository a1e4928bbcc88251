// SPDX-License-Identifier: MIT
// Another process, which forks off here and does something.
#pragma once

#include <csignal>
#include <functional>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

// It ends with what `fazer` answers, without the destructors of this one.
inline pid_t comecarFilho(const std::function<int()> &fazer) {
    const pid_t filho = fork();
    if (filho == 0) _exit(fazer());
    return filho;
}

// The exit status of one; -1 of one that a signal ended.
inline int fimDe(pid_t filho) {
    int situacao = 0;
    waitpid(filho, &situacao, 0);
    return WIFEXITED(situacao) ? WEXITSTATUS(situacao) : -1;
}

inline int emFilho(const std::function<int()> &fazer) {
    return fimDe(comecarFilho(fazer));
}

// From here on no file of this process grows beyond so many bytes, as on a full disk.
inline void limitarArquivos(rlim_t bytes) {
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limite{bytes, RLIM_INFINITY};
    ::setrlimit(RLIMIT_FSIZE, &limite);
}
