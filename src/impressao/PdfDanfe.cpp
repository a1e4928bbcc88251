// SPDX-License-Identifier: MIT
#include "impressao/PdfDanfe.h"

#include "texto/Marcacao.h"
#include "texto/Quebra.h"
#include "texto/Texto.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>

namespace zel {

namespace {

// Lines of one kind: characters in a line (0: never broken) and text size.
struct Letra {
    std::size_t largura;
    float tamanho;
};

struct Geometria {
    int colunas;
    Letra normal;
    Letra condensada; // about as wide on the page as the normal one
};

constexpr std::array<Geometria, 3> kGeometrias{{
    {42, {42, kTamanhoNormal}, {56, 6.0F}},
    {48, {48, kTamanhoNormal}, {57, 6.725F}},
    {56, {48, kTamanhoNormal}, {57, 6.725F}},
}};
constexpr Geometria kSemColunas{0, {0, kTamanhoNormal}, {0, 6.725F}};

constexpr std::string_view kCorte = "[gui][/gui]";

// Stand for the two condensed markers while the other mark-up is taken out: a tag may begin in
// normal text and end in condensed text.
constexpr std::string_view kCondensar = "\x0E";
constexpr std::string_view kNormalizar = "\x0F";

const Geometria &geometriaDe(int colunas) {
    const auto *linha = std::find_if(kGeometrias.begin(), kGeometrias.end(),
                                     [=](const Geometria &g) { return g.colunas == colunas; });
    return linha == kGeometrias.end() ? kSemColunas : *linha;
}

// Takes from the front of a text what stands before a marker, and the marker; all of the text when
// it does not hold one.
std::string_view tirarAte(std::string_view &resto, std::string_view marca) {
    const std::string_view trecho = resto.substr(0, resto.find(marca));
    resto.remove_prefix(std::min(trecho.size() + marca.size(), resto.size()));
    return trecho;
}

std::string centralizarBloco(std::string_view bloco, const Geometria &geometria) {
    if (bloco.find("[qrcode]") != bloco.npos) return std::string(bloco);
    // The other tags go first: their letters are not seen and must not move the text.
    const bool condensado = bloco.find("[c]") != bloco.npos;
    const Letra &letra = condensado ? geometria.condensada : geometria.normal;
    const std::string centrado =
        fnCentralizarLayout(fnRetornarTextoSemRepresentantes(bloco), letra.largura);
    return condensado ? "[c]" + centrado + "[/c]" : centrado;
}

// Replaces each "[ce]" block by its text, centred.
std::string fnCentralizarBuffer(std::string_view texto, const Geometria &geometria) {
    std::string resultado;
    while (true) {
        resultado.append(tirarAte(texto, "[ce]"));
        if (texto.find("[/ce]") == texto.npos) return resultado.append(texto);
        resultado.append(centralizarBloco(tirarAte(texto, "[/ce]"), geometria));
    }
}

void fnEscreverBufferDanfePDF(PdfPagina &pagina, std::string_view texto, const Letra &letra) {
    pagina.escrever(fnQuabraLinhaLayout(texto, letra.largura),
                    {FontePdf::kCourier, CorPdf::kPreto, letra.tamanho});
}

void fnEscreverBufferQrcodeDanfePDF(PdfPagina &pagina, std::string_view qrcode,
                                    const Letra &letra) {
    fnEscreverBufferDanfePDF(pagina, tirarAte(qrcode, "[lmodulo]"), letra);
}

// The text without mark-up but for the two condensed markers. The module size of a QR code is in
// none of the tables: it goes as the other settings do, with its content.
std::string semMarcas(std::string_view texto) {
    std::string marcado = substituirAll(texto, "[c]", kCondensar);
    marcado = substituirAll(marcado, "[/c]", kNormalizar);
    marcado = substituirAll(marcado, "[lmodulo]", "[slm]");
    marcado = substituirAll(marcado, "[/lmodulo]", "[/slm]");
    return fnRetornarTextoSemRepresentantes(marcado);
}

void escreverTexto(PdfPagina &pagina, std::string_view texto, const Geometria &geometria) {
    const std::string plano = semMarcas(texto);
    for (std::string_view resto = plano; !resto.empty();) {
        // A marker that is repeated changes nothing.
        std::string trecho(tirarAte(resto, kCondensar));
        std::erase(trecho, kNormalizar.front());
        fnEscreverBufferDanfePDF(pagina, trecho, geometria.normal);
        trecho = tirarAte(resto, kNormalizar);
        std::erase(trecho, kCondensar.front());
        fnEscreverBufferDanfePDF(pagina, trecho, geometria.condensada);
    }
}

} // namespace

void fnEscreverTextoDanfePDF(PdfPagina &pagina, std::string_view texto, int colunas) {
    const Geometria &geometria = geometriaDe(colunas);
    std::string linhas(texto);
    // Carriage returns must not count in the width of a line; the rest is never drawn.
    std::erase_if(linhas, [](unsigned char c) { return c < ' ' && c != '\n'; });
    linhas = fnCentralizarBuffer(fnRetornarFormatado2Representantes(linhas), geometria);

    for (std::string_view resto = linhas; !resto.empty();) {
        for (std::string_view via = tirarAte(resto, kCorte); !via.empty();) {
            escreverTexto(pagina, tirarAte(via, "[qrcode]"), geometria);
            fnEscreverBufferQrcodeDanfePDF(pagina, tirarAte(via, "[/qrcode]"),
                                           geometria.condensada);
        }
        if (!resto.empty()) pagina.terminarLinha();
    }
}

} // namespace zel
