// SPDX-License-Identifier: MIT
#include "comandos/Interrupcao.h"

namespace zel::aplicativo {

namespace {

volatile std::sig_atomic_t gPedida = 0;

extern "C" void anotar(int) {
    gPedida = 1;
}

} // namespace

Interrupcao::Interrupcao() {
    struct sigaction acao {};
    acao.sa_handler = anotar;
    acao.sa_flags = SA_RESTART;
    for (std::size_t i = 0; i < kSinais.size(); ++i) {
        ::sigaction(kSinais[i], nullptr, &antes_[i]);
        if (antes_[i].sa_handler != SIG_IGN) ::sigaction(kSinais[i], &acao, nullptr);
    }
}

Interrupcao::~Interrupcao() {
    for (std::size_t i = 0; i < kSinais.size(); ++i)
        ::sigaction(kSinais[i], &antes_[i], nullptr);
}

bool Interrupcao::pedida() {
    return gPedida != 0;
}

} // namespace zel::aplicativo
