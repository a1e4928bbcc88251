// SPDX-License-Identifier: MIT
// Text on the pages of one PDF document: drawn line after line, broken at the right margin, a new
// page when one is full. Owns the document; the PDF library is called here and nowhere else.
// What stands on the pages, and in which file, is its users' affair.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <hpdf.h>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>

namespace zel {

enum class FontePdf { kCourier, kHelvetica, kHelveticaNegrito };
enum class CorPdf { kPreto, kVermelho, kAzul };

struct EstiloPdf {
    FontePdf fonte;
    CorPdf cor;
    float tamanho; // points
    bool operator==(const EstiloPdf &) const = default;
};

inline constexpr float kTamanhoNormal = 8; // text size, points

struct MargensPdf {
    float esquerda;               // where lines begin, points from the left edge
    float inferior;               // a line at or below this height goes to the next page
    std::string_view continuacao; // in front of what did not fit on a line
};

// A failure is kept and ends all drawing; `salvar` answers it. The first one is reported on
// standard error.
class PdfPagina {
public:
    // Creates the document with its first page.
    explicit PdfPagina(const MargensPdf &margens);
    PdfPagina(const PdfPagina &) = delete;
    PdfPagina &operator=(const PdfPagina &) = delete;

    // Draws Latin-1 text after what was drawn last. "\n" begins a line; a character that would
    // begin beyond the right margin goes to the next one. Other control bytes are not drawn.
    void escrever(std::string_view texto, const EstiloPdf &estilo);

    // What is drawn next begins a line: this one, when nothing was drawn on it.
    void terminarLinha();

    // Writes the document to a file, whole or not at all, as the last thing done with it. ZEL_OK;
    // ZEL_FALHA_PDF it could not be created or drawn; ZEL_FALHA_GRAVACAO_PDF it could not be saved.
    int salvar(const std::string &caminho);

private:
    struct Fonte {
        HPDF_Font recurso = nullptr;
        std::array<std::uint16_t, 256> larguras{}; // thousandths of the text size
    };
    struct Liberar {
        void operator()(HPDF_Doc documento) const { HPDF_Free(documento); }
    };

    const Fonte &carregar(FontePdf qual);
    void fnAdicionarPDF();
    void linhaNova();
    void aplicar(const EstiloPdf &estilo);
    void desenhar(std::string &trecho, const EstiloPdf &estilo);

    MargensPdf margens_;
    bool falhou_ = false;
    std::unique_ptr<std::remove_pointer_t<HPDF_Doc>, Liberar> documento_;
    HPDF_Page pagina_ = nullptr;
    std::array<Fonte, 3> fontes_{};
    std::optional<EstiloPdf> estilo_; // in force on the page
    float topo_ = 0;                  // height of a page's first line
    float direita_ = 0;
    float x_ = 0;
    float y_ = 0;
    bool linhaIniciada_ = false;
    bool paginaCheia_ = false; // the next character opens a page, so that none stays empty
};

} // namespace zel
