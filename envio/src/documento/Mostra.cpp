// SPDX-License-Identifier: MIT
#include "documento/Conferencia.h"
#include "documento/MostraNota.h"

namespace zel::envio {

namespace {

// The documents and requests below an element, whatever stands around them. Recursion goes as deep
// as a Documento may be.
bool mostrarTudo(const No &no, Pagina &pagina) {
    if (no.nome() == "NFe" && no.filho("infNFe")) {
        mostrarNota(no, pagina);
        return true;
    }
    if (mostrarPedido(no, pagina)) return true;
    bool algum = false;
    for (const No &filho : no.filhos())
        algum = mostrarTudo(filho, pagina) || algum;
    return algum;
}

// What is none of ours: each text by its path.
void mostrarTextos(const No &no, const std::string &caminho, Pagina &pagina) {
    const std::string este = caminho + std::string(no.nome());
    const auto filhos = no.filhos();
    if (filhos.empty()) pagina.campo(este, no.texto());
    for (const No &filho : filhos)
        mostrarTextos(filho, este + '/', pagina);
}

} // namespace

std::string mostrar(const Documento &documento) {
    Pagina pagina;
    if (!mostrarTudo(documento.raiz(), pagina)) mostrarTextos(documento.raiz(), "", pagina);
    return pagina.texto();
}

} // namespace zel::envio
