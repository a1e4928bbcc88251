// SPDX-License-Identifier: MIT
#include "EscPosFigura.h"

#include "Pontos.h"

#include <algorithm>

namespace zel::cupom {

namespace {

// Printers hold a picture before they print it, and small ones have little room.
constexpr int kAlturaDoPedaco = 128;
constexpr int kMeioTom = 128;

// Takes the rows of a page from the top, and cuts where the page does.
class EscritaDaFigura {
public:
    EscritaDaFigura(const Pagina &pagina, const Perfil &perfil)
        : papel_(pagina.papel), perfil_(perfil) {
        for (const Elemento &elemento : pagina.elementos)
            if (std::holds_alternative<CortePosto>(elemento.desenho)) cortes_.push_back(elemento);
        proximo_ = cortes_.begin();
    }

    void enviar(Ordem ordem, const Valores &valores = {}) {
        perfil_.comando(ordem).escrever(saida_, valores);
    }

    void receber(std::span<const std::uint8_t> linha) {
        if (proximo_ != cortes_.end() && y_ == proximo_->topo) cortar();
        const bool noCorte = proximo_ != cortes_.end() && y_ >= proximo_->topo;
        if (!noCorte) guardar(linha.subspan(static_cast<std::size_t>(papel_.margem())));
        ++y_;
        if (noCorte && y_ == proximo_->fim) ++proximo_;
    }

    std::string terminar() {
        esvaziar();
        return std::move(saida_);
    }

private:
    void guardar(std::span<const std::uint8_t> linha) {
        const int inicio = (perfil_.pontos - papel_.larguraUtil) / 2;
        bool escura = false;
        for (int x = 0; x < papel_.larguraUtil; ++x) {
            if (linha[static_cast<std::size_t>(x)] >= kMeioTom) continue;
            pedaco_.preencher(inicio + x, 1, altura_, 1);
            escura = true;
        }
        brancas_ = escura ? 0 : brancas_ + 1;
        if (++altura_ == kAlturaDoPedaco) esvaziar();
    }

    void esvaziar() {
        if (altura_ > 0) enviar(Ordem::kImagem, pedaco_.valores(altura_));
        pedaco_ = Pontos(perfil_.pontos, kAlturaDoPedaco);
        altura_ = 0;
    }

    // Rows of dots feed as lines do: up to the cutter, where the cut does not.
    void cortar() {
        const std::vector<std::uint8_t> branca(static_cast<std::size_t>(papel_.largura()), 255);
        while (brancas_ < perfil_.linhasAntesDoCorte * kPapeis.front().passo)
            guardar(branca);
        esvaziar();
        enviar(perfil_.comando(Ordem::kCorteParcial).existe() ? Ordem::kCorteParcial
                                                              : Ordem::kCorteTotal);
        brancas_ = 0;
    }

    const Papel &papel_;
    const Perfil &perfil_;
    std::vector<Elemento> cortes_;
    std::vector<Elemento>::const_iterator proximo_;
    std::string saida_;
    Pontos pedaco_{perfil_.pontos, kAlturaDoPedaco};
    int altura_ = 0;  // rows that the piece holds
    int brancas_ = 0; // rows since the last one with a dot
    int y_ = 0;
};

} // namespace

bool imprimeFigura(const Perfil &perfil, const Papel &papel) {
    return perfil.comando(Ordem::kImagem).existe() && perfil.pontos >= papel.larguraUtil;
}

std::optional<std::string> gerarEscPosFigura(const Pagina &pagina, const Recursos &recursos,
                                             const Perfil &perfil, bool abrirGaveta) {
    EscritaDaFigura escrita(pagina, perfil);
    escrita.enviar(Ordem::kIniciar);
    if (abrirGaveta) escrita.enviar(Ordem::kGaveta);
    const bool desenhada = desenhar(pagina, recursos, 1, [&](const Faixa &faixa) {
        for (int y = 0; y < faixa.altura(); ++y)
            escrita.receber(faixa.linha(y));
    });
    if (!desenhada) return {};
    return escrita.terminar();
}

} // namespace zel::cupom
