// SPDX-License-Identifier: MIT
#include "comandos/Papel.h"

namespace zel::aplicativo {

namespace {

constexpr const char *kSem = "este zel foi montado sem libzel-cupom, que desenha e imprime";

} // namespace

RespostaDoPapel gravarFigura(const TextoDeCupom &, const std::string &) {
    return {0, kSem, 0, {}};
}

RespostaDoPapel gravarPdf(const TextoDeCupom &, const std::string &) {
    return {0, kSem, 0, {}};
}

RespostaDoPapel imprimirCupom(const TextoDeCupom &, const Impressao &) {
    return {0, kSem, 0, {}};
}

std::vector<std::string> nomesDosPerfis() {
    return {};
}

} // namespace zel::aplicativo
