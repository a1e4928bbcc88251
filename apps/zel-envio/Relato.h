// SPDX-License-Identifier: MIT
// The service's log and its counters: a line for the end of each document, for a line that goes
// down and comes back, for what stops the queue; of persons nothing.
#pragma once

#include "fluxo/Ouvinte.h"

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>

namespace zel::envio {

// Upper edges of the classes of how long answers took, in milliseconds.
inline constexpr std::array<std::int64_t, 7> kDemoras{250, 500, 1000, 2000, 5000, 10000, 30000};

// Since the service began.
struct Contadores {
    struct Demora {
        std::array<std::int64_t, kDemoras.size() + 1> classes{}; // the last one: longer
        std::int64_t soma = 0;                                   // milliseconds
    };
    // By service and code; code 0: no answer that could be read.
    std::map<std::pair<std::string, int>, std::int64_t> respostas;
    std::map<std::string, Demora> demoras; // of answers, by service
};

class Relato final : public Ouvinte {
public:
    // A line each, whole, from any thread.
    explicit Relato(std::function<void(std::string_view)> escrever)
        : escrever_(std::move(escrever)) {}

    void mudou(const Ficha &antes, Estado para) override;
    void respondeu(const ServicoVisto &visto) override;
    void parou(std::string_view motivo) override;
    void disse(std::string_view linha) override;

    Contadores contadores() const;

private:
    void escrever(const std::string &linha) const;

    std::function<void(std::string_view)> escrever_;
    mutable std::mutex porta_;
    Contadores contadores_;
    std::map<std::string, bool> fora_; // state and environment: whether it is down
    std::string parada_;
};

} // namespace zel::envio
