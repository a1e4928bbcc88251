// SPDX-License-Identifier: MIT
#include "impressao/PdfListagem.h"

#include <algorithm>
#include <cstddef>

namespace zel {

namespace {

constexpr EstiloPdf kMarca{FontePdf::kHelvetica, CorPdf::kAzul, kTamanhoNormal};
constexpr EstiloPdf kNome{FontePdf::kHelvetica, CorPdf::kVermelho, kTamanhoNormal};
constexpr EstiloPdf kConteudo{FontePdf::kHelveticaNegrito, CorPdf::kPreto, kTamanhoNormal};

} // namespace

void fnEscreverTextoPDF(PdfPagina &pagina, std::string_view xml) {
    bool dentro = false; // of a tag
    while (!xml.empty()) {
        const EstiloPdf *estilo = &kMarca;
        std::size_t tamanho = 1;
        if (xml.front() == '<') {
            tamanho = xml.starts_with("</") ? 2 : 1;
            dentro = true;
        } else if (dentro && xml.front() == '>') {
            dentro = false;
        } else {
            estilo = dentro ? &kNome : &kConteudo;
            tamanho = std::min(xml.find_first_of(dentro ? "<>" : "<"), xml.size());
        }
        pagina.escrever(xml.substr(0, tamanho), *estilo);
        xml.remove_prefix(tamanho);
    }
}

} // namespace zel
