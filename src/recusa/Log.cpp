// SPDX-License-Identifier: MIT
#include "recusa/Log.h"

#include "texto/HoraLocal.h"
#include "texto/Numero.h"

#include <cstdlib>
#include <ctime>
#include <unistd.h>

namespace zel {

namespace {

// "2026-11-25 08:15:30 -0300"
std::string momento() {
    const auto local = horaLocal(std::time(nullptr));
    if (!local) return "----------";
    const long minutos = local->tm_gmtoff / 60;
    std::string texto = formatarInteiro(local->tm_year + 1900, 4);
    texto.append("-").append(formatarInteiro(local->tm_mon + 1, 2));
    texto.append("-").append(formatarInteiro(local->tm_mday, 2));
    texto.append(" ").append(formatarInteiro(local->tm_hour, 2));
    texto.append(":").append(formatarInteiro(local->tm_min, 2));
    texto.append(":").append(formatarInteiro(local->tm_sec, 2));
    texto.append(minutos < 0 ? " -" : " +").append(formatarInteiro(std::abs(minutos) / 60, 2));
    return texto.append(formatarInteiro(std::abs(minutos) % 60, 2));
}

} // namespace

OpcoesLog::OpcoesLog() {
    const char *onde = ::secure_getenv("ZEL_LOG");
    const std::string_view escolhido = onde == nullptr ? "" : onde;
    if ((escolhido != "stderr" && !escolhido.starts_with('/')) || escolhido.size() >= PATH_MAX)
        return;
    destino = escolhido;
    const char *qual = ::secure_getenv("ZEL_LOG_NIVEL");
    const bool todas = qual != nullptr && std::string_view(qual) == "chamadas";
    nivel = todas ? NivelLog::kChamadas : NivelLog::kRecusas;
}

std::string linhaDoLog(std::string_view texto) {
    const std::string processo = formatarInteiro(::getpid());
    return momento().append(" [").append(processo).append("] ").append(texto).append("\n");
}

} // namespace zel
