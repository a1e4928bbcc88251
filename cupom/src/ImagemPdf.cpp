// SPDX-License-Identifier: MIT
#include "Imagem.h"

#include <cairo-pdf.h>
#include <memory>
#include <new>

namespace zel::cupom {

namespace {

constexpr double kPontosPdfPorPonto = 72 / 25.4 / kPontosPorMilimetro;

struct Soltar {
    void operator()(cairo_surface_t *tela) const { cairo_surface_destroy(tela); }
    void operator()(cairo_t *pincel) const { cairo_destroy(pincel); }
};

// Cairo is written in C: memory that is short is reported through it, not thrown.
cairo_status_t receber(void *destino, const unsigned char *bytes, unsigned int tamanho) noexcept {
    try {
        static_cast<std::string *>(destino)->append(reinterpret_cast<const char *>(bytes), tamanho);
        return CAIRO_STATUS_SUCCESS;
    } catch (const std::bad_alloc &) {
        return CAIRO_STATUS_NO_MEMORY;
    }
}

} // namespace

std::optional<std::string> gerarPdf(const Pagina &pagina, const Recursos &recursos) {
    std::string pdf;
    const std::unique_ptr<cairo_surface_t, Soltar> tela(cairo_pdf_surface_create_for_stream(
        receber, &pdf, pagina.papel.largura() * kPontosPdfPorPonto,
        pagina.altura * kPontosPdfPorPonto));
    // Otherwise it would be now, and no two files alike.
    cairo_pdf_surface_set_metadata(tela.get(), CAIRO_PDF_METADATA_CREATE_DATE, "");
    const std::unique_ptr<cairo_t, Soltar> pincel(cairo_create(tela.get()));
    cairo_scale(pincel.get(), kPontosPdfPorPonto, kPontosPdfPorPonto);
    desenharInteira(pincel.get(), pagina, recursos);
    cairo_status_t estado = cairo_status(pincel.get());
    cairo_surface_finish(tela.get());
    if (estado == CAIRO_STATUS_SUCCESS) estado = cairo_surface_status(tela.get());
    if (estado == CAIRO_STATUS_NO_MEMORY) throw std::bad_alloc();
    if (estado != CAIRO_STATUS_SUCCESS) return {};
    return pdf;
}

} // namespace zel::cupom
