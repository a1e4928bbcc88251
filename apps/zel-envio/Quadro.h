// SPDX-License-Identifier: MIT
// How the queue stands, as a person and a monitoring system want to know it: what waits, what needs
// somebody, how the authority's services answered.
#pragma once

#include "fila/Fila.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace zel::envio {

struct Quadro {
    Momento agora = 0;
    std::string parada; // why nothing is sent; empty: it is
    std::optional<int> diasDoCertificado;
    std::vector<Contagem> contagens; // every state
    std::int64_t esperando = 0;      // documents that are not at their end
    Momento maisAntigo = 0;          // when the first of them was found
    std::vector<Ficha> precisam;     // of somebody; kMaisLinhas and one of them
    std::vector<Lacuna> lacunas;
    std::vector<ServicoVisto> servicos;
    std::string falha; // why the queue could not be read
};

inline constexpr std::size_t kMaisLinhas = 50; // of a list that a person reads
inline constexpr int kPoucosDias = 30;         // of a certificate

// Reads a queue; what takes long to find out in a long one is remembered for fifty times as long as
// that took, so that whoever asks often costs little. One thread's.
class LeitorDoQuadro {
public:
    LeitorDoQuadro(Fila &fila, const ConfigFila &config) : fila_(fila), config_(config) {}
    Quadro ler(Momento agora, std::optional<int> diasDoCertificado);

private:
    void contar(Momento agora);

    Fila &fila_;
    ConfigFila config_;
    Quadro contado_;
    std::chrono::steady_clock::time_point vale_{}; // until then
};

// Something that a person has to do.
struct Aviso {
    std::string titulo, motivo;
    std::string remedio{};
    std::int64_t documento = 0; // id; 0: none
};
// The worst first; at most kMaisLinhas of a kind, and a line that says that there are more.
std::vector<Aviso> avisosDe(const Quadro &quadro);

// "Nota 12, série 1"; "Inutilização de 12 a 14, série 1".
std::string tituloDe(const Ficha &ficha);
// State and, at the end, outcome: "resolvido: autorizado".
std::string situacaoDe(const Ficha &ficha);
// "3 minutos".
std::string duracaoLida(Momento milissegundos);

} // namespace zel::envio
