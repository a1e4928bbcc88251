// SPDX-License-Identifier: MIT
#include "Formas.h"
#include "Imagem.h"
#include "Png.h"
#include "comum/Base64.h"

#include <algorithm>
#include <charconv>
#include <set>
#include <string_view>

namespace zel::cupom {

namespace {

template <class... Partes>
void juntar(std::string &texto, const Partes &...partes) {
    (texto.append(partes), ...);
}

// The shortest text of a number that is exact to a thousandth; no locale has a say in it.
std::string numero(double valor) {
    char texto[32];
    const auto [fim, erro] =
        std::to_chars(texto, texto + sizeof texto, valor, std::chars_format::fixed, 3);
    std::string resultado(texto, erro == std::errc() ? fim : texto);
    resultado.erase(resultado.find_last_not_of('0') + 1);
    if (resultado.ends_with('.')) resultado.pop_back();
    return resultado == "-0" ? "0" : resultado;
}

std::string pngDe(const ImagemCinza &imagem) {
    EscritorPng png(imagem.largura, imagem.altura, 0);
    const auto largura = static_cast<std::size_t>(imagem.largura);
    for (std::size_t y = 0; y < static_cast<std::size_t>(imagem.altura); ++y)
        png.escrever(std::span(imagem.pontos).subspan(y * largura, largura));
    return png.terminar();
}

// Writes elements with the unit of SVG a dot of the paper.
class Escritor {
public:
    Escritor(const Pagina &pagina, const Recursos &recursos)
        : papel_(pagina.papel), recursos_(recursos) {}

    void operator()(const TextoPosto &texto) {
        const Fonte &fonte = recursos_.fontes.para(texto.estilo);
        escrever(texto, fonte, 0);
        if (texto.estilo.negrito && &fonte == &recursos_.fontes.normal) escrever(texto, fonte, 1);
        if (texto.estilo.sublinhado) preencher({sublinhadoDe(texto, papel_)});
    }
    void operator()(const QrPosto &qr) { preencher(retangulosDe(qr, papel_)); }
    void operator()(const CortePosto &corte) { preencher(retangulosDe(corte, papel_)); }
    void operator()(const LogotipoPosto &posto) {
        const ImagemCinza *imagem = recursos_.logotipo;
        if (imagem == nullptr) return;
        juntar(corpo_, "<image x=\"", numero(papel_.margem() + posto.x), "\" y=\"", numero(posto.y),
               "\" width=\"", numero(imagem->largura), "\" height=\"", numero(imagem->altura),
               "\" style=\"image-rendering:pixelated\"", " xlink:href=\"data:image/png;base64,",
               comum::base64(pngDe(*imagem)), "\"/>\n");
    }

    const std::string &corpo() const { return corpo_; }

    // The outlines that the elements refer to.
    std::string letras() const {
        std::string resultado;
        for (const auto &[negrito, glifo] : usados_) {
            const Fonte &fonte = negrito ? *recursos_.fontes.negrito : recursos_.fontes.normal;
            juntar(resultado, "<path id=\"", nome(negrito, glifo), "\" d=\"",
                   contornoDe(fonte, glifo), "\"/>\n");
        }
        return resultado;
    }

private:
    static std::string nome(bool negrito, unsigned long glifo) {
        return std::string(negrito ? "b" : "n").append(std::to_string(glifo));
    }

    // Letters are outlined in units of their font, upwards.
    void escrever(const TextoPosto &texto, const Fonte &fonte, int deslocamento) {
        const bool negrito = &fonte != &recursos_.fontes.normal;
        const double unidade = texto.celula.largura / fonte.avanco / fonte.ft->units_per_EM;
        const double altura = unidade * proporcaoDe(texto.estilo);
        const double inclinacao = texto.estilo.italico ? kInclinacao * altura : 0;
        juntar(corpo_, "<g transform=\"translate(",
               numero(papel_.margem() + texto.x + deslocamento), " ", numero(texto.base),
               ") scale(0.001) matrix(", numero(unidade * 1000), " 0 ", numero(inclinacao * 1000),
               " ", numero(altura * -1000), " 0 0)\">");
        double x = 0;
        for (const char c : texto.texto) {
            const unsigned long glifo = fonte.glifos[static_cast<unsigned char>(c)];
            if (c != ' ') {
                usados_.emplace(negrito, glifo);
                juntar(corpo_, "<use xlink:href=\"#", nome(negrito, glifo), "\" x=\"", numero(x),
                       "\"/>");
            }
            x += fonte.avanco * fonte.ft->units_per_EM;
        }
        juntar(corpo_, "</g>\n");
    }
    void preencher(const std::vector<Retangulo> &retangulos) {
        juntar(corpo_, "<path shape-rendering=\"crispEdges\" d=\"");
        for (const Retangulo &r : retangulos)
            juntar(corpo_, "M", numero(r.x), " ", numero(r.y), "h", numero(r.largura), "v",
                   numero(r.altura), "h", numero(-r.largura), "z");
        juntar(corpo_, "\"/>\n");
    }

    const Papel &papel_;
    const Recursos &recursos_;
    std::string corpo_;
    std::set<std::pair<bool, unsigned long>> usados_;
};

} // namespace

std::string gerarSvg(const Pagina &pagina, const Recursos &recursos) {
    Escritor escritor(pagina, recursos);
    for (const Elemento &elemento : pagina.elementos)
        std::visit(escritor, elemento.desenho);
    const std::string largura = numero(pagina.papel.largura()), altura = numero(pagina.altura);
    const double milimetros = static_cast<double>(pagina.altura) / kPontosPorMilimetro;
    std::string svg;
    juntar(svg, "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n",
           "<svg xmlns=\"http://www.w3.org/2000/svg\" version=\"1.1\"",
           " xmlns:xlink=\"http://www.w3.org/1999/xlink\" width=\"",
           numero(pagina.papel.milimetros), "mm\" height=\"", numero(milimetros),
           "mm\" viewBox=\"0 0 ", largura, " ", altura, "\">\n<defs>\n", escritor.letras(),
           "</defs>\n<rect width=\"", largura, "\" height=\"", altura, "\" fill=\"#fff\"/>\n",
           escritor.corpo(), "</svg>\n");
    return svg;
}

} // namespace zel::cupom
