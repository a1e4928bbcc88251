// SPDX-License-Identifier: MIT
#include "texto/Marcacao.h"

#include "comum/Marcas.h"
#include "texto/Texto.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

namespace zel {

namespace {

using marcas::kDeConteudo;
using marcas::kDeTexto;

// One walk over a text. What it keeps in mind spares searching the rest of the text at every tag.
struct Retirada {
    std::string_view resto;
    std::string resultado;
    std::array<std::size_t, kDeTexto.size()> abertas{}; // openings that wait for a closing
    std::array<bool, kDeConteudo.size()> semFecho{};    // no closing marker lies ahead
};

// The name in the marker at the start of the rest, "/" included; empty when there is none. No
// longer one is looked for than the tables hold.
std::string_view nomeDaMarca(std::string_view resto) {
    const std::string_view dentro = resto.substr(1, marcas::kMaior + 2);
    const std::size_t fim = dentro.find(']');
    return fim == dentro.npos ? std::string_view() : dentro.substr(0, fim);
}

// Removes the marker of a tag whose content stays; a closing one only when it closes something.
bool retiraTagConteudoPer(Retirada &retirada, std::string_view nome) {
    const bool fecha = nome.starts_with('/');
    const std::size_t indice = marcas::indiceDe(kDeTexto, nome.substr(fecha ? 1 : 0));
    if (indice == kDeTexto.size()) return false;
    std::size_t &abertas = retirada.abertas[indice];
    if (fecha && abertas == 0) return false;
    abertas = fecha ? abertas - 1 : abertas + 1;
    retirada.resto.remove_prefix(nome.size() + 2);
    return true;
}

// Removes everything from the opening marker to the end of its closing one.
bool retiraTagConteudoNaoPer(Retirada &retirada, std::string_view nome) {
    const std::size_t indice = marcas::indiceDe(kDeConteudo, nome);
    if (indice == kDeConteudo.size()) return false;
    std::string_view &resto = retirada.resto;
    const std::string fecho = std::string("[/").append(nome).append("]");
    resto.remove_prefix(nome.size() + 2);
    if (retirada.semFecho[indice]) return true;
    const std::size_t fim = resto.find(fecho);
    if (fim == resto.npos)
        retirada.semFecho[indice] = true;
    else
        resto.remove_prefix(fim + fecho.size());
    return true;
}

bool retiraTag(Retirada &retirada, std::string_view nome) {
    if (nome.empty()) return false;
    return retiraTagConteudoPer(retirada, nome) || retiraTagConteudoNaoPer(retirada, nome);
}

std::string trocarColchetes(std::string_view texto, std::string_view de, std::string_view para) {
    std::string resultado(texto);
    for (char &c : resultado)
        if (const std::size_t qual = de.find(c); qual != de.npos) c = para[qual];
    return resultado;
}

} // namespace

std::string fnRetornarFormatado2Representantes(std::string_view texto) {
    return trocarColchetes(texto, "<>", "[]");
}

std::string fnRetornarRepresentantes2Formatado(std::string_view texto) {
    return trocarColchetes(texto, "[]", "<>");
}

bool ehMarca(std::string_view nome) {
    if (nome.starts_with('/')) nome.remove_prefix(1);
    const auto igual = [nome](std::string_view outro) { return igualSemCaixa(nome, outro); };
    return std::ranges::any_of(kDeTexto, igual) || std::ranges::any_of(kDeConteudo, igual) ||
           std::ranges::any_of(marcas::kSoDeImpressao, igual);
}

std::string fnRetornarTextoSemRepresentantes(std::string_view texto) {
    Retirada retirada;
    retirada.resto = texto;
    while (true) {
        std::string_view &resto = retirada.resto;
        const std::size_t marca = std::min(resto.find('['), resto.size());
        retirada.resultado.append(resto.substr(0, marca));
        resto.remove_prefix(marca);
        if (resto.empty()) return std::move(retirada.resultado);
        if (retiraTag(retirada, nomeDaMarca(resto))) continue;
        retirada.resultado.push_back('[');
        resto.remove_prefix(1);
    }
}

} // namespace zel
