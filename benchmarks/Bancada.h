// SPDX-License-Identifier: MIT
// What the benchmarks share: a benchmark measures one call per iteration by hand, with the till's
// state put back outside of the time, and reports beside Google Benchmark's own figures the median
// of its iterations, their processor time and the bytes that they wrote.
#pragma once

#include "Descarga.h"
#include "Medida.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <exception>
#include <filesystem>
#include <string>
#include <vector>

// A file system to measure on.
struct Base {
    std::string nome; // first part of the names of its benchmarks
    std::filesystem::path diretorio;
    bool emMemoria;
    std::chrono::microseconds atraso{0}; // of each flush, on top of what the file system takes
    std::filesystem::path biblioteca{};  // empty: the one of this build

    // How often a benchmark is repeated. A disk waits, most of all where each repetition has to
    // sell many items first.
    int repeticoes(int itens) const {
        return emMemoria && atraso.count() == 0 ? 9 : itens >= 999 ? 3 : 5;
    }
};

// The measurements of one repetition, each of one call.
class Colheita {
public:
    // `lote` calls were measured together.
    void juntar(const Medida &medida, int lote);

    // Counters "mediana" and "processador" (seconds), "escrito" (bytes) and "descargas".
    void publicar(benchmark::State &estado) const;

    // The same of something else that was measured in turns with this one ("par_mediana",
    // "par_processador", "par_escrito", "par_descargas"), and the medians of how many times longer
    // this one took each time ("razao") and of how much more processor time ("excesso", seconds).
    void publicarPar(benchmark::State &estado, const Colheita &outra) const;

private:
    std::vector<double> parede_;
    std::vector<double> processador_;
    std::vector<double> escrito_;
    std::vector<double> descargas_;
};

// Registers a benchmark "base/nome" over receipts of so many items. What `corpo(estado)` throws
// fails it.
template <class Corpo>
void registrarCorpo(const Base &base, const std::string &nome, int itens, int voltas, Corpo corpo) {
    benchmark::RegisterBenchmark((base.nome + "/" + nome).c_str(),
                                 [=](benchmark::State &estado) {
                                     try {
                                         const DiscoLento disco(base.atraso);
                                         corpo(estado);
                                     } catch (const std::exception &falha) {
                                         estado.SkipWithError(falha.what());
                                     }
                                 })
        ->UseManualTime()
        ->Unit(benchmark::kMicrosecond)
        ->Iterations(voltas)
        ->Repetitions(base.repeticoes(itens));
}

// `lote` calls, measured together; Google Benchmark gets what one of them took.
template <class Chamada>
Medida medirLote(benchmark::State &estado, int lote, Chamada chamada) {
    const Medida medida = medir([&] {
        for (int i = 0; i < lote; ++i)
            chamada();
    });
    estado.SetIterationTime(medida.parede / lote);
    return medida;
}

// `preparar()` makes the subject of one repetition; then for each iteration `repor(sujeito)` is run
// outside of the time and `executar(sujeito)`, `lote` times, inside.
template <class Preparar, class Repor, class Executar>
void registrar(const Base &base, const std::string &nome, int itens, int voltas, int lote,
               Preparar preparar, Repor repor, Executar executar) {
    registrarCorpo(base, nome, itens, voltas, [=](benchmark::State &estado) {
        const auto sujeito = preparar();
        Colheita colheita;
        for ([[maybe_unused]] auto _ : estado) {
            repor(*sujeito);
            colheita.juntar(medirLote(estado, lote, [&] { executar(*sujeito); }), lote);
        }
        colheita.publicar(estado);
    });
}

// Two subjects measured in turns, so that a disk or a machine that is slow for a while is slow for
// both: the second, the bound of the first, is published as its "par". `assentar(sujeitos)` is run
// before each measurement.
template <class Preparar, class Assentar, class Executar, class ExecutarPar>
void registrarPar(const Base &base, const std::string &nome, int itens, int voltas, int lote,
                  Preparar preparar, Assentar assentar, Executar executar, ExecutarPar par) {
    registrarCorpo(base, nome, itens, voltas, [=](benchmark::State &estado) {
        const auto sujeitos = preparar();
        Colheita colheita, colheitaPar;
        for ([[maybe_unused]] auto _ : estado) {
            assentar(*sujeitos);
            colheitaPar.juntar(medirLote(estado, lote, [&] { par(*sujeitos); }), lote);
            assentar(*sujeitos);
            colheita.juntar(medirLote(estado, lote, [&] { executar(*sujeitos); }), lote);
        }
        colheita.publicar(estado);
        colheita.publicarPar(estado, colheitaPar);
    });
}

void registrarOperacoes(const Base &base);
void registrarCupons(const Base &base);
// Those of a shop alone, beside their floor: what waits for each flush takes long.
void registrarCuponsDeLoja(const Base &base);
