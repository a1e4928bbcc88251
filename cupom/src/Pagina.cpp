// SPDX-License-Identifier: MIT
#include "Pagina.h"

#include <algorithm>
#include <utility>

namespace zel::cupom {

namespace {

constexpr int kMargemVertical = 3 * kPontosPorMilimetro; // before the first and after the last line
constexpr int kAlturaDoCorte = 5 * kPontosPorMilimetro;
constexpr int kAposLogotipo = kPontosPorMilimetro;

// Where something begins that is so wide in so much room.
template <class Medida>
Medida inicio(Alinhamento alinhamento, Medida sala, Medida largura) {
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

    // Fills lines of the paper from left to right; a letter that does not fit begins the next one.
    void por(const Linha &linha) {
        double x = 0;
        for (const Trecho &trecho : linha.trechos) {
            const Celula celula = celulaDe(papel(), trecho.estilo);
            for (std::string_view resto = trecho.texto; !resto.empty();) {
                const double livre = papel().larguraDoTexto() - x;
                const auto cabem =
                    std::min(resto.size(), static_cast<std::size_t>(livre / celula.largura));
                if (cabem == 0) {
                    terminarLinha(linha.alinhamento, x);
                    if (y_ > kMaiorAltura) return;
                    x = 0;
                    continue;
                }
                linha_.push_back(
                    {x, 0, celula, trecho.estilo, std::string(resto.substr(0, cabem))});
                x += static_cast<double>(cabem) * celula.largura;
                resto.remove_prefix(cabem);
            }
        }
        terminarLinha(linha.alinhamento, x);
    }

    // Puts what was filled, `largura` wide, on the paper: letters of any height on one base line.
    void terminarLinha(Alinhamento alinhamento, double largura) {
        const int folga = papel().passo - papel().normal.altura;
        int base = papel().normal.base, abaixo = papel().passo - base;
        for (const TextoPosto &texto : linha_) {
            base = std::max(base, texto.celula.base);
            abaixo = std::max(abaixo, texto.celula.altura - texto.celula.base + folga);
        }
        const double margem = (papel().larguraUtil - papel().larguraDoTexto()) / 2;
        const double x = margem + inicio(alinhamento, papel().larguraDoTexto(), largura);
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
        posto.modulo = std::clamp(papel().larguraUtil / modulos, 1, qr.modulo);
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
