// SPDX-License-Identifier: MIT
#include "Pagina.h"

#include "Quebra.h"

#include <algorithm>
#include <utility>

namespace zel::cupom {

namespace {

constexpr int kMargemVertical = 3 * kPontosPorMilimetro; // before the first and after the last line
constexpr int kAlturaDoCorte = 5 * kPontosPorMilimetro;
constexpr int kAposLogotipo = kPontosPorMilimetro;

// Where something begins that is so wide in so much room.
int inicio(Alinhamento alinhamento, int sala, int largura) {
    switch (alinhamento) {
    case Alinhamento::kEsquerda:
        break;
    case Alinhamento::kCentro:
        return (sala - largura) / 2;
    case Alinhamento::kDireita:
        return sala - largura;
    }
    return 0;
}

// One walk over a receipt.
class Paginacao {
public:
    Paginacao(const Papel &papel, TamanhoLogotipo logotipo) : logotipo_(logotipo) {
        pagina_.papel = papel;
    }

    std::optional<Pagina> paginar(const Cupom &cupom) {
        for (const Bloco &bloco : cupom.blocos) {
            std::visit([this](const auto &b) { por(b); }, bloco);
            if (y_ > kMaiorAltura) return {};
        }
        pagina_.altura = y_ + kMargemVertical;
        return std::move(pagina_);
    }

private:
    const Papel &papel() const { return pagina_.papel; }

    void por(const Linha &linha) {
        const Medida medida{papel().larguraDoTexto(), papel().normal.largura,
                            papel().condensada.largura};
        for (const Linha &parte : quebrar(linha, medida)) {
            porParte(parte);
            if (y_ > kMaiorAltura) return;
        }
    }

    void porParte(const Linha &linha) {
        int x = 0;
        for (const Trecho &trecho : linha.trechos) {
            const Celula celula = celulaDe(papel(), trecho.estilo);
            linha_.push_back({x, 0, celula, trecho.estilo, trecho.texto});
            x += static_cast<int>(trecho.texto.size()) * celula.largura;
        }
        terminarLinha(linha.alinhamento, x);
    }

    // Puts what was filled, `largura` wide, on the paper: letters of any height on one base line.
    void terminarLinha(Alinhamento alinhamento, int largura) {
        const int folga = papel().passo - papel().normal.altura;
        int base = papel().normal.base, abaixo = papel().passo - base;
        for (const TextoPosto &texto : linha_) {
            base = std::max(base, texto.celula.base);
            abaixo = std::max(abaixo, texto.celula.altura - texto.celula.base + folga);
        }
        const int margem = (papel().larguraUtil - papel().larguraDoTexto()) / 2;
        const int x = margem + inicio(alinhamento, papel().larguraDoTexto(), largura);
        const int fim = y_ + base + abaixo;
        for (TextoPosto &texto : linha_) {
            texto.x += x;
            texto.base = y_ + base;
            pagina_.elementos.push_back({y_, fim, std::move(texto)});
        }
        linha_.clear();
        y_ = fim;
    }

    void por(const Qr &qr) {
        QrPosto posto;
        posto.simbolo = gerarQr(qr.conteudo);
        const int modulos = posto.simbolo.lado + 2 * kZonaQuieta;
        posto.modulo =
            moduloDoQr(posto.simbolo.lado, qr.modulo, kMenorLadoDoQr, papel().larguraUtil);
        const int lado = modulos * posto.modulo, zona = kZonaQuieta * posto.modulo;
        posto.x = inicio(qr.alinhamento, papel().larguraUtil, lado) + zona;
        posto.y = y_ + zona;
        porElemento(lado, std::move(posto));
    }

    void por(const Avanco &avanco) { y_ += avanco.linhas * papel().passo; }

    void por(const Corte &) { porElemento(kAlturaDoCorte, CortePosto{y_ + kAlturaDoCorte / 2}); }

    void por(const Logotipo &) {
        if (logotipo_.altura == 0) return;
        const LogotipoPosto posto{(papel().larguraUtil - logotipo_.largura) / 2, y_};
        porElemento(logotipo_.altura + kAposLogotipo, posto);
    }

    void porElemento(int altura, decltype(Elemento::desenho) desenho) {
        pagina_.elementos.push_back({y_, y_ + altura, std::move(desenho)});
        y_ += altura;
    }

    Pagina pagina_;
    TamanhoLogotipo logotipo_;
    std::vector<TextoPosto> linha_; // of the paper, not yet put there
    int y_ = kMargemVertical;
};

} // namespace

std::optional<Pagina> paginar(const Cupom &cupom, const Papel &papel, TamanhoLogotipo logotipo) {
    return Paginacao(papel, logotipo).paginar(cupom);
}

} // namespace zel::cupom
