// SPDX-License-Identifier: MIT
#include "Estado.h"

#include "comum/Descritor.h"

#include <algorithm>
#include <string>

namespace zel::cupom {

namespace {

constexpr std::chrono::milliseconds kMaiorEspera(500);

// What there is; false when the other side ended or failed.
bool receber(int fd, std::string &recebido) {
    char parte[256];
    const ssize_t n = comum::insistir([&] { return ::read(fd, parte, sizeof parte); });
    if (n > 0) recebido.append(parte, static_cast<std::size_t>(n));
    return n > 0 || (n < 0 && errno == EAGAIN);
}

// Reports that nobody asked for; not more of them, from a device that never ends.
void esquecer(int fd) {
    constexpr std::size_t kMaisVelhos = 4096;
    std::string velho;
    for (std::size_t antes = 1; velho.size() != antes && velho.size() < kMaisVelhos;) {
        antes = velho.size();
        if (!receber(fd, velho)) return;
    }
}

// The answer up to the byte that is looked at; shorter when it does not come.
std::string responder(int fd, const FamiliaDeEstado &familia, const PerguntaDeEstado &pergunta,
                      const Prazo &prazo) {
    const auto comeca = [&](char c) {
        return (static_cast<unsigned char>(c) & familia.mascara) == familia.valor;
    };
    std::string resposta;
    esquecer(fd);
    const std::string_view comando = pergunta.comando;
    const ssize_t n = comum::insistir([&] { return ::write(fd, comando.data(), comando.size()); });
    if (n != static_cast<ssize_t>(comando.size())) return resposta;
    while (resposta.size() <= pergunta.byte && !prazo.acabou()) {
        if ((esperar(fd, POLLIN, prazo) & POLLIN) == 0 || !receber(fd, resposta)) break;
        resposta.erase(resposta.begin(), std::find_if(resposta.begin(), resposta.end(), comeca));
    }
    return resposta;
}

} // namespace

Estado perguntarEstado(int fd, const FamiliaDeEstado &familia, const Prazo &prazo) {
    const Prazo ate = prazo.parte(std::min(kMaiorEspera, prazo.resta() / 4));
    std::string_view perguntado;
    std::string resposta;
    for (const PerguntaDeEstado &pergunta : familia.perguntas) {
        if (pergunta.comando != perguntado) resposta = responder(fd, familia, pergunta, ate);
        perguntado = pergunta.comando;
        if (resposta.size() <= pergunta.byte) return Estado::kNaoDisse;
        if ((static_cast<unsigned char>(resposta[pergunta.byte]) & pergunta.bits) != 0)
            return pergunta.estado;
    }
    return Estado::kPronta;
}

} // namespace zel::cupom
