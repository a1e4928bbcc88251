// SPDX-License-Identifier: MIT
#include "util/Log.h"

#include "util/Descritor.h"
#include "util/Numero.h"

#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <string>
#include <unistd.h>

namespace zel {

namespace {

std::string destino() {
    const char *escolhido = ::secure_getenv("ZEL_LOG");
    return escolhido == nullptr ? "" : escolhido;
}

// "2026-11-25 08:15:30 -0300"
std::string momento() {
    const std::time_t agora = std::time(nullptr);
    std::tm local{};
    ::tzset();
    ::localtime_r(&agora, &local);
    const long minutos = local.tm_gmtoff / 60;
    std::string texto = formatarInteiro(local.tm_year + 1900, 4);
    texto.append("-").append(formatarInteiro(local.tm_mon + 1, 2));
    texto.append("-").append(formatarInteiro(local.tm_mday, 2));
    texto.append(" ").append(formatarInteiro(local.tm_hour, 2));
    texto.append(":").append(formatarInteiro(local.tm_min, 2));
    texto.append(":").append(formatarInteiro(local.tm_sec, 2));
    texto.append(minutos < 0 ? " -" : " +").append(formatarInteiro(std::abs(minutos) / 60, 2));
    return texto.append(formatarInteiro(std::abs(minutos) % 60, 2));
}

// One write, so that lines of two processes do not mix.
void escreverLinha(int fd, const std::string &linha) {
    [[maybe_unused]] const auto escritos =
        insistir([&] { return ::write(fd, linha.data(), linha.size()); });
}

} // namespace

void registrarLog(std::string_view texto) noexcept {
    try {
        const std::string onde = destino();
        if (onde.empty()) return;
        const std::string linha = momento().append(" ").append(texto).append("\n");
        if (onde == "stderr") return escreverLinha(STDERR_FILENO, linha);
        if (onde.front() != '/') return;
        const Descritor arquivo(onde.c_str(),
                                O_WRONLY | O_APPEND | O_CREAT | O_NONBLOCK | O_NOFOLLOW, 0600);
        if (arquivo.aberto()) escreverLinha(arquivo.fd(), linha);
    } catch (...) {
        // Memory ran out for a line.
    }
}

} // namespace zel
