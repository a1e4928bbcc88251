// SPDX-License-Identifier: MIT
#include "api/Chamada.h"

#include "api/TabelaCodigos.h"
#include "disco/Diretorio.h"
#include "disco/LogDescritor.h"
#include "recusa/Recusa.h"
#include "texto/Numero.h"

#include <optional>
#include <string>

namespace zel {

namespace {

// Of the one function that answers no code but a state.
constexpr std::string_view kDoEstado = "rCFVerificarStatus_ZEL";

std::timespec agora() {
    std::timespec momento{};
    ::clock_gettime(CLOCK_MONOTONIC, &momento);
    return momento;
}

// "0.812 ms"
std::string duracao(const std::timespec &inicio) {
    const std::timespec fim = agora();
    const double segundos = static_cast<double>(fim.tv_sec - inicio.tv_sec);
    const double nanos = static_cast<double>(fim.tv_nsec - inicio.tv_nsec);
    return formatarDecimal(segundos * 1e3 + nanos / 1e6, 3) + " ms";
}

std::string resposta(std::string_view funcao, int codigo) {
    std::string texto = std::string(funcao) + ": ";
    if (funcao == kDoEstado) return texto += "estado " + formatarInteiro(codigo);
    texto += formatarInteiro(codigo);
    const std::string_view nome = nomeDoCodigo(codigo);
    return nome.empty() ? texto : texto.append(" ").append(nome);
}

} // namespace

std::string_view nomeDoCodigo(int codigo) {
    for (const auto &[numero, nome] : kNomesDosCodigos)
        if (numero == codigo) return nome;
    return {};
}

Chamada::Chamada(std::string_view funcao) noexcept : nivel_(nivelDoLog()), funcao_(funcao) {
    if (nivel_ == NivelLog::kDesligado) return;
    esquecerRecusa(true);
    if (nivel_ == NivelLog::kChamadas) inicio_ = agora();
}

Chamada::~Chamada() {
    if (nivel_ != NivelLog::kDesligado) esquecerRecusa(false);
}

int Chamada::responder(int codigo) noexcept {
    if (nivel_ == NivelLog::kDesligado) return codigo;
    try {
        auto motivo = codigo > 0 ? std::nullopt : textoDaRecusa(codigo, fnConfigurarPath);
        if (codigo < 0 && !motivo) motivo = "motivo não registrado";
        if (!motivo && nivel_ != NivelLog::kChamadas) return codigo;
        std::string texto = resposta(funcao_, codigo);
        if (motivo) entregarRecusa(texto + ": " + *motivo);
        if (nivel_ == NivelLog::kChamadas) texto += ", " + duracao(inicio_);
        registrarLog(motivo ? texto + ": " + *motivo : texto);
    } catch (...) {
        if (codigo <= 0) entregarRecusa({}); // memory ran out for a line
    }
    return codigo;
}

} // namespace zel
