// SPDX-License-Identifier: MIT
#include "Desenho.h"

#include "Formas.h"

#include <algorithm>
#include <cairo.h>
#include <memory>
#include <new>
#include <vector>

namespace zel::cupom {

namespace {

constexpr int kAlturaDaFaixa = 1024; // pixels

struct SoltarTela {
    void operator()(cairo_surface_t *tela) const { cairo_surface_destroy(tela); }
};
struct SoltarPincel {
    void operator()(cairo_t *pincel) const { cairo_destroy(pincel); }
};
using Tela = std::unique_ptr<cairo_surface_t, SoltarTela>;
using Pincel = std::unique_ptr<cairo_t, SoltarPincel>;

// A surface of one byte a pixel: how much ink there is, 0 for none.
Tela novaTela(int largura, int altura) {
    return Tela(cairo_image_surface_create(CAIRO_FORMAT_A8, largura, altura));
}

void preparar(cairo_t *pincel) {
    cairo_font_options_t *opcoes = cairo_font_options_create();
    cairo_font_options_set_antialias(opcoes, CAIRO_ANTIALIAS_GRAY);
    cairo_font_options_set_hint_style(opcoes, CAIRO_HINT_STYLE_NONE);
    cairo_font_options_set_hint_metrics(opcoes, CAIRO_HINT_METRICS_OFF);
    cairo_set_font_options(pincel, opcoes);
    cairo_font_options_destroy(opcoes);
    // Everything else is made of whole dots.
    cairo_set_antialias(pincel, CAIRO_ANTIALIAS_NONE);
}

Tela telaDoLogotipo(const ImagemCinza &logotipo) {
    Tela tela = novaTela(logotipo.largura, logotipo.altura);
    unsigned char *pixels = cairo_image_surface_get_data(tela.get());
    if (pixels == nullptr) throw std::bad_alloc();
    const std::ptrdiff_t passo = cairo_image_surface_get_stride(tela.get());
    for (int y = 0; y < logotipo.altura; ++y)
        for (int x = 0; x < logotipo.largura; ++x)
            pixels[y * passo + x] = static_cast<unsigned char>(255 - logotipo.em(x, y));
    cairo_surface_mark_dirty(tela.get());
    return tela;
}

// Draws elements with the user space of cairo in dots of the paper.
class Desenhista {
public:
    Desenhista(cairo_t *pincel, const Pagina &pagina, const Recursos &recursos,
               cairo_surface_t *logotipo)
        : pincel_(pincel), papel_(pagina.papel), fontes_(recursos.fontes), logotipo_(logotipo) {}

    void operator()(const TextoPosto &texto) {
        const Fonte &fonte = fontes_.para(texto.estilo);
        const double corpo = texto.celula.largura / fonte.avanco;
        const double altura = corpo * proporcaoDe(texto.estilo);
        cairo_matrix_t letra;
        cairo_matrix_init(&letra, corpo, 0, texto.estilo.italico ? -kInclinacao * altura : 0,
                          altura, 0, 0);
        cairo_set_font_face(pincel_, fonte.face.get());
        cairo_set_font_matrix(pincel_, &letra);
        escrever(texto, fonte, 0);
        if (texto.estilo.negrito && !fontes_.negrito) escrever(texto, fonte, 1);
        if (texto.estilo.sublinhado) preencher({sublinhadoDe(texto, papel_)});
    }
    void operator()(const QrPosto &qr) { preencher(retangulosDe(qr, papel_)); }
    void operator()(const CortePosto &corte) { preencher(retangulosDe(corte, papel_)); }
    void operator()(const LogotipoPosto &posto) {
        if (logotipo_ == nullptr) return;
        cairo_save(pincel_);
        cairo_pattern_t *padrao = cairo_pattern_create_for_surface(logotipo_);
        cairo_pattern_set_filter(padrao, CAIRO_FILTER_NEAREST);
        cairo_translate(pincel_, papel_.margem() + posto.x, posto.y);
        cairo_mask(pincel_, padrao);
        cairo_pattern_destroy(padrao);
        cairo_restore(pincel_);
    }

private:
    void escrever(const TextoPosto &texto, const Fonte &fonte, int deslocamento) {
        glifos_.clear();
        double x = papel_.margem() + texto.x + deslocamento;
        for (const char c : texto.texto) {
            const unsigned long glifo = fonte.glifos[static_cast<unsigned char>(c)];
            glifos_.push_back({glifo, x, static_cast<double>(texto.base)});
            x += texto.celula.largura;
        }
        cairo_show_glyphs(pincel_, glifos_.data(), static_cast<int>(glifos_.size()));
    }
    void preencher(const std::vector<Retangulo> &retangulos) {
        for (const Retangulo &r : retangulos)
            cairo_rectangle(pincel_, r.x, r.y, r.largura, r.altura);
        cairo_fill(pincel_);
    }

    cairo_t *pincel_;
    const Papel &papel_;
    const Fontes &fontes_;
    cairo_surface_t *logotipo_;
    std::vector<cairo_glyph_t> glifos_;
};

// Ink to shades: paper is white.
void inverter(const Tela &tela) {
    unsigned char *pixels = cairo_image_surface_get_data(tela.get());
    const std::ptrdiff_t tamanho = std::ptrdiff_t{cairo_image_surface_get_stride(tela.get())} *
                                   cairo_image_surface_get_height(tela.get());
    for (std::ptrdiff_t i = 0; i < tamanho; ++i)
        pixels[i] = static_cast<unsigned char>(255 - pixels[i]);
}

// Letters of some fonts reach a little out of their line.
bool toca(const Elemento &elemento, int folga, int topo, int fim) {
    return elemento.fim + folga > topo && elemento.topo - folga < fim;
}

// Draws the elements from `primeiro` on that reach into the band between two pixel rows.
cairo_status_t desenharFaixa(const Tela &tela, const Pagina &pagina, const Recursos &recursos,
                             cairo_surface_t *logotipo, int escala, int topo, int fim,
                             std::size_t &primeiro) {
    const Pincel pincel(cairo_create(tela.get()));
    preparar(pincel.get());
    cairo_set_operator(pincel.get(), CAIRO_OPERATOR_CLEAR);
    cairo_paint(pincel.get());
    cairo_set_operator(pincel.get(), CAIRO_OPERATOR_OVER);
    cairo_translate(pincel.get(), 0, -topo);
    cairo_scale(pincel.get(), escala, escala);
    Desenhista desenhista(pincel.get(), pagina, recursos, logotipo);
    const auto &elementos = pagina.elementos;
    const int folga = pagina.papel.passo, topoEmPontos = topo / escala,
              fimEmPontos = (fim + escala - 1) / escala;
    while (primeiro < elementos.size() && elementos[primeiro].fim + folga <= topoEmPontos)
        ++primeiro;
    for (std::size_t i = primeiro; i < elementos.size(); ++i) {
        if (!toca(elementos[i], folga, topoEmPontos, fimEmPontos)) break;
        std::visit(desenhista, elementos[i].desenho);
    }
    cairo_surface_flush(tela.get());
    return cairo_status(pincel.get());
}

} // namespace

void desenharInteira(cairo_t *pincel, const Pagina &pagina, const Recursos &recursos) {
    const Tela logotipo = recursos.logotipo ? telaDoLogotipo(*recursos.logotipo) : nullptr;
    preparar(pincel);
    Desenhista desenhista(pincel, pagina, recursos, logotipo.get());
    for (const Elemento &elemento : pagina.elementos)
        std::visit(desenhista, elemento.desenho);
}

bool desenhar(const Pagina &pagina, const Recursos &recursos, int escala,
              const std::function<void(const Faixa &)> &receber) {
    const int largura = pagina.papel.largura() * escala, altura = pagina.altura * escala;
    const Tela tela = novaTela(largura, std::min(altura, kAlturaDaFaixa));
    const Tela logotipo = recursos.logotipo ? telaDoLogotipo(*recursos.logotipo) : nullptr;
    std::size_t primeiro = 0;
    for (int topo = 0; topo < altura; topo += kAlturaDaFaixa) {
        const int fim = std::min(topo + kAlturaDaFaixa, altura);
        const cairo_status_t estado =
            desenharFaixa(tela, pagina, recursos, logotipo.get(), escala, topo, fim, primeiro);
        if (estado == CAIRO_STATUS_NO_MEMORY) throw std::bad_alloc();
        if (estado != CAIRO_STATUS_SUCCESS) return false;
        inverter(tela);
        receber(Faixa(cairo_image_surface_get_data(tela.get()), largura, fim - topo,
                      cairo_image_surface_get_stride(tela.get())));
        cairo_surface_mark_dirty(tela.get());
    }
    return true;
}

} // namespace zel::cupom
