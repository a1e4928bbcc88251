// SPDX-License-Identifier: MIT
#include "Bancada.h"

#include <algorithm>
#include <functional>

namespace {

double mediana(std::vector<double> valores) {
    if (valores.empty()) return 0;
    const auto meio = valores.begin() + static_cast<std::ptrdiff_t>(valores.size() / 2);
    std::nth_element(valores.begin(), meio, valores.end());
    return *meio;
}

// The median of an operation on what was measured in the same turn.
template <class Operacao>
double medianaDe(const std::vector<double> &a, const std::vector<double> &b, Operacao operacao) {
    std::vector<double> resultados;
    std::transform(a.begin(), a.end(), b.begin(), std::back_inserter(resultados), operacao);
    return mediana(std::move(resultados));
}

} // namespace

void Colheita::juntar(const Medida &medida, int lote) {
    parede_.push_back(medida.parede / lote);
    processador_.push_back(medida.processador / lote);
    escrito_.push_back(static_cast<double>(medida.escrito) / lote);
    descargas_.push_back(static_cast<double>(medida.descargas) / lote);
}

void Colheita::publicar(benchmark::State &estado) const {
    estado.counters["mediana"] = mediana(parede_);
    estado.counters["processador"] = mediana(processador_);
    estado.counters["escrito"] = mediana(escrito_);
    estado.counters["descargas"] = mediana(descargas_);
}

void Colheita::publicarPar(benchmark::State &estado, const Colheita &outra) const {
    estado.counters["par_mediana"] = mediana(outra.parede_);
    estado.counters["par_processador"] = mediana(outra.processador_);
    estado.counters["par_escrito"] = mediana(outra.escrito_);
    estado.counters["par_descargas"] = mediana(outra.descargas_);
    estado.counters["razao"] = medianaDe(parede_, outra.parede_, std::divides<>());
    estado.counters["excesso"] = medianaDe(processador_, outra.processador_, std::minus<>());
}
