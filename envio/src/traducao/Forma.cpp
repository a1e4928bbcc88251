// SPDX-License-Identifier: MIT
#include "traducao/Forma.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string_view>

namespace zel::envio {

namespace {

constexpr std::size_t kMaisRecusas = 100; // a hostile document has millions

struct Atributo {
    std::string_view elemento, nome;
};
constexpr Atributo kAtributos[] = {
    {"NFe", "schemaLocation"}, {"infNFe", "Id"}, {"infNFe", "versao"}, {"det", "nItem"}};

void conferirAtributos(const No &no, Recusas &recusas) {
    for (const std::string &nome : no.atributos())
        if (std::none_of(std::begin(kAtributos), std::end(kAtributos), [&](const Atributo &um) {
                return um.elemento == no.nome() && um.nome == nome;
            }))
            recusas.juntar(no.caminho() + "/@" + nome, no.atributo(nome),
                           "este atributo não existe no leiaute 4.00: tire-o");
}

void conferirElemento(const No &no, Recusas &recusas) {
    conferirAtributos(no, recusas);
    if (no.misturado())
        recusas.juntar(no.caminho(), no.texto(),
                       "mistura texto e elementos: traduza o documento como o caixa o gravou");
}

// As deep as a document may be.
void conferirDentro(const No &no, Recusas &recusas) {
    for (const No &filho : no.filhos()) {
        if (recusas.lista().size() >= kMaisRecusas) return;
        conferirElemento(filho, recusas);
        if (filho.espaco() != no.espaco())
            recusas.juntar(filho.caminho(), filho.espaco(),
                           "está em outro espaço de nomes que o documento: tire o xmlns daqui");
        else
            conferirDentro(filho, recusas);
    }
}

} // namespace

void conferirForma(const No &nfe, Recusas &recusas) {
    conferirElemento(nfe, recusas);
    bool primeiro = true;
    for (const No &filho : nfe.filhos()) {
        if (recusas.lista().size() >= kMaisRecusas) return;
        if (filho.nome() == "infNFeSupl" || filho.nome() == "Signature") continue;
        if (filho.nome() != "infNFe" || !primeiro) {
            recusas.juntar(filho.caminho(), "",
                           "um documento tem um infNFe, e nada além dele: tire o que sobra");
            continue;
        }
        primeiro = false;
        conferirElemento(filho, recusas);
        conferirDentro(filho, recusas);
    }
}

} // namespace zel::envio
