// SPDX-License-Identifier: MIT
#include "Medida.h"

#include "Descarga.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <ctime>
#include <fcntl.h>
#include <string_view>
#include <unistd.h>

namespace {

std::int64_t relogio(clockid_t qual) {
    timespec agora{};
    clock_gettime(qual, &agora);
    return std::int64_t{agora.tv_sec} * 1'000'000'000 + agora.tv_nsec;
}

// The process's count of bytes in write calls.
std::int64_t bytesEscritos() {
    static const int contas = open("/proc/self/io", O_RDONLY | O_CLOEXEC);
    std::array<char, 512> texto{};
    const ssize_t lidos = pread(contas, texto.data(), texto.size(), 0);
    constexpr std::string_view kNome = "wchar: ";
    const std::string_view conta(texto.data(),
                                 static_cast<std::size_t>(std::max(lidos, ssize_t{0})));
    const std::size_t achado = conta.find(kNome);
    std::int64_t valor = 0;
    if (achado != conta.npos)
        std::from_chars(conta.data() + achado + kNome.size(), conta.data() + conta.size(), valor);
    return valor;
}

// The smallest of many empty measurements.
Medida custoDeMedir() {
    Medida custo{1, 1, 0, 0};
    for (int i = 0; i < 1000; ++i) {
        const std::int64_t processador = relogio(CLOCK_THREAD_CPUTIME_ID);
        const std::int64_t parede = relogio(CLOCK_MONOTONIC);
        custo.parede =
            std::min(custo.parede, static_cast<double>(relogio(CLOCK_MONOTONIC) - parede) * 1e-9);
        custo.processador =
            std::min(custo.processador,
                     static_cast<double>(relogio(CLOCK_THREAD_CPUTIME_ID) - processador) * 1e-9);
    }
    return custo;
}

} // namespace

Cronometro::Cronometro()
    : escrito_(bytesEscritos()), descargas_(descargas()),
      processador_(relogio(CLOCK_THREAD_CPUTIME_ID)), parede_(relogio(CLOCK_MONOTONIC)) {}

Medida Cronometro::ler() const {
    const std::int64_t parede = relogio(CLOCK_MONOTONIC);
    const std::int64_t processador = relogio(CLOCK_THREAD_CPUTIME_ID);
    const std::int64_t escrito = bytesEscritos();
    static const Medida custo = custoDeMedir();
    return {
        std::max(0.0, static_cast<double>(parede - parede_) * 1e-9 - custo.parede),
        std::max(0.0, static_cast<double>(processador - processador_) * 1e-9 - custo.processador),
        escrito - escrito_, descargas() - descargas_};
}
