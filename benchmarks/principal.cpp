// SPDX-License-Identifier: MIT
// The benchmarks of the library, loaded as an application loads it, on a real file system and on
// tmpfs in one run:
//   zel_bench DIRECTORY_ON_DISK DIRECTORY_IN_MEMORY [LIBRARY] [Google Benchmark's own arguments]
// Another library, that of an earlier version, is measured in the same run as "antes/...".
#include "Bancada.h"

#include <iostream>
#include <linux/magic.h>
#include <sys/vfs.h>

namespace {

// A "disk" in memory would compare nothing.
bool ehTmpfs(const char *diretorio) {
    struct statfs dados {};
    return statfs(diretorio, &dados) == 0 && dados.f_type == TMPFS_MAGIC;
}

} // namespace

int main(int argc, char **argv) {
    if (argc < 3) {
        std::cerr << "usage: zel_bench DIRECTORY_ON_DISK DIRECTORY_IN_MEMORY [LIBRARY] "
                     "[--benchmark_...]\n";
        return 2;
    }
    if (ehTmpfs(argv[1]) || !ehTmpfs(argv[2])) {
        std::cerr << argv[1] << " must be on a disk and " << argv[2] << " on tmpfs\n";
        return 2;
    }
    const bool comAntes = argc > 3 && argv[3][0] != '-';
    for (Base base : {Base{"disco", argv[1], false}, Base{"memoria", argv[2], true}}) {
        registrarOperacoes(base);
        registrarCupons(base);
        if (!comAntes) continue;
        base.nome = "antes/" + base.nome;
        base.biblioteca = argv[3];
        registrarOperacoes(base);
        registrarCupons(base);
    }
    // An SD card or an old hard disk: 10 ms a flush.
    registrarCuponsDeLoja({"lento", argv[2], true, std::chrono::milliseconds(10)});
    const int nossos = comAntes ? 3 : 2;
    argc -= nossos;
    argv[nossos] = argv[0];
    argv += nossos;
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
