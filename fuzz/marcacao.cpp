// SPDX-License-Identifier: MIT
// Mark-up removal, line breaking and XML values; the first byte is the width of a line.
#include "Alvo.h"

#include "texto/Marcacao.h"
#include "texto/Quebra.h"
#include "texto/Texto.h"
#include "texto/TextoXml.h"

using namespace zel;

void jogar(std::string_view texto) {
    const auto largura = static_cast<std::size_t>(tirarNumero(texto, 64));
    const std::string semMarcas = fnRetornarTextoSemRepresentantes(texto);
    exigir(semMarcas.size() <= texto.size());

    const std::string quebrado = fnQuabraLinhaLayout(texto, largura);
    exigir(substituirAll(quebrado, "\n", "") == substituirAll(texto, "\n", ""));
    const std::string centrado = fnCentralizarLayout(texto, largura);
    for (std::string_view linhas : {std::string_view(quebrado), std::string_view(centrado)})
        while (linhas.find('\n') != linhas.npos) // what stands after the last one is never broken
            exigir(tirarAte(linhas, '\n').size() <= largura + 1 || largura == 0);

    const std::string simples = textoSimples(texto, FimDeLinha::kMantido);
    const std::string valor = escaparXml(simples);
    exigir(valor.find_first_of("<>\r\n") == valor.npos);
    exigir(textoSimples(valor, FimDeLinha::kMantido) == simples);
    exigir(comprimentoXml(valor) == simples.size());
    exigir(comprimentoXml(cortarXml(valor, largura)) == std::min(largura, simples.size()));
}
