// SPDX-License-Identifier: MIT
#include "EscPos.h"

#include "Pagina.h"
#include "Pontos.h"
#include "Qr.h"
#include "Quebra.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>

namespace zel::cupom {

namespace {

constexpr int kLinha = 28; // dots from line to line, as the pictures count them
constexpr int kAposLogotipo = kPontosPorMilimetro;

// A style, its command and the one that ends it, and its bit in the byte of ESC !, if any.
struct Interruptor {
    bool Estilo::*estilo;
    Ordem liga;
    Ordem desliga;
    int bit;
};

constexpr std::array<Interruptor, 5> kInterruptores{{
    {&Estilo::negrito, Ordem::kNegrito, Ordem::kNegritoFim, 0x08},
    {&Estilo::alturaDupla, Ordem::kAlturaDupla, Ordem::kAlturaDuplaFim, 0x10},
    {&Estilo::larguraDupla, Ordem::kLarguraDupla, Ordem::kLarguraDuplaFim, 0x20},
    {&Estilo::sublinhado, Ordem::kSublinhado, Ordem::kSublinhadoFim, 0x80},
    {&Estilo::italico, Ordem::kItalico, Ordem::kItalicoFim, 0},
}};

int modoDe(const Estilo &estilo, std::size_t fonte) {
    int modo = static_cast<int>(fonte);
    for (const Interruptor &i : kInterruptores)
        if (estilo.*i.estilo) modo |= i.bit;
    return modo;
}

// The byte of GS !.
int tamanhoDe(const Estilo &estilo) {
    return (estilo.larguraDupla ? 0x10 : 0) | (estilo.alturaDupla ? 0x01 : 0);
}

// The font by number of which a line holds so many letters, the largest of them; the smallest when
// none does.
std::size_t fontePara(const std::vector<FonteDoPerfil> &fontes, int colunas) {
    std::size_t escolhida = 0;
    for (std::size_t i = 1; i < fontes.size(); ++i) {
        const int agora = fontes[escolhida].colunas, esta = fontes[i].colunas;
        if (agora < colunas ? esta > agora : esta >= colunas && esta < agora) escolhida = i;
    }
    return escolhida;
}

// A line's width of which a letter of either font is a whole part.
Medida medidaDe(const FonteDoPerfil &normal, const FonteDoPerfil &condensada) {
    return {normal.colunas * condensada.colunas, condensada.colunas, normal.colunas};
}

// One walk over a receipt.
class Escrita {
public:
    explicit Escrita(const Impressao &impressao)
        : impressao_(impressao), perfil_(impressao.perfil),
          normal_(fontePara(perfil_.fontes, impressao.colunas)),
          condensada_(fontePara(perfil_.fontes, perfil_.fontes[normal_].colunas + 1)) {}

    std::optional<std::string> escrever(const Cupom &cupom) {
        enviar(Ordem::kIniciar);
        enviar(Ordem::kPagina, {perfil_.numeroDaPagina, 0, 0, 0, {}});
        if (impressao_.abrirGaveta) enviar(Ordem::kGaveta);
        for (const Bloco &bloco : cupom.blocos) {
            std::visit([this](const auto &b) { por(b); }, bloco);
            if (altura_ > kMaiorAltura) return {};
        }
        terminar();
        return std::move(saida_);
    }

private:
    void enviar(Ordem ordem, const Valores &valores = {}) {
        perfil_.comando(ordem).escrever(saida_, valores);
    }
    bool tem(Ordem ordem) const { return perfil_.comando(ordem).existe(); }

    void por(const Linha &linha) {
        if (linha.trechos.empty()) return por(Avanco{1});
        for (const Linha &parte :
             quebrar(linha, medidaDe(perfil_.fontes[normal_], perfil_.fontes[condensada_]))) {
            porParte(parte);
            if (altura_ > kMaiorAltura) return;
        }
    }

    void porParte(const Linha &linha) {
        alinhar(linha.alinhamento);
        bool alta = false;
        for (const Trecho &trecho : linha.trechos) {
            vestir(trecho.estilo);
            for (const char c : trecho.texto)
                saida_.push_back(byteDe(*perfil_.pagina, c));
            alta = alta || trecho.estilo.alturaDupla;
        }
        saida_.push_back('\n');
        imprimiu(alta ? 2 * kLinha : kLinha);
    }

    void alinhar(Alinhamento alinhamento) {
        constexpr std::array<Ordem, 3> kOrdens{Ordem::kEsquerda, Ordem::kCentro, Ordem::kDireita};
        if (std::exchange(alinhamento_, alinhamento) != alinhamento)
            enviar(kOrdens[static_cast<std::size_t>(alinhamento)]);
    }

    void vestir(const Estilo &estilo) { vestir(estilo, estilo.condensado ? condensada_ : normal_); }

    // Only what is not yet in force.
    void vestir(const Estilo &estilo, std::size_t fonte) {
        if (const int modo = modoDe(estilo, fonte); modo != modoDe(estilo_, fonte_))
            enviar(Ordem::kModo, {modo, 0, 0, 0, {}});
        if (fonte != fonte_) perfil_.fontes[fonte].comando.escrever(saida_, {});
        if (const int tamanho = tamanhoDe(estilo); tamanho != tamanhoDe(estilo_))
            enviar(Ordem::kTamanho, {tamanho, 0, 0, 0, {}});
        for (const Interruptor &i : kInterruptores)
            if (estilo.*i.estilo != estilo_.*i.estilo)
                enviar(estilo.*i.estilo ? i.liga : i.desliga);
        estilo_ = estilo;
        fonte_ = fonte;
    }

    // What is printed next, which need not begin with the printer's initialization, begins as if it
    // did.
    void terminar() {
        vestir(Estilo(), 0);
        alinhar(Alinhamento::kEsquerda);
    }

    void por(const Avanco &avanco) {
        for (int resto = avanco.linhas; resto > 0 && tem(Ordem::kAvanco);) {
            const int agora = std::min(resto, perfil_.maiorAvanco);
            enviar(Ordem::kAvanco, {agora, 0, 0, 0, {}});
            resto -= agora;
        }
        if (!tem(Ordem::kAvanco)) saida_.append(static_cast<std::size_t>(avanco.linhas), '\n');
        brancas_ += avanco.linhas;
        altura_ += avanco.linhas * kLinha;
    }

    void por(const Corte &) {
        if (brancas_ < perfil_.linhasAntesDoCorte)
            por(Avanco{perfil_.linhasAntesDoCorte - brancas_});
        enviar(tem(Ordem::kCorteParcial) ? Ordem::kCorteParcial : Ordem::kCorteTotal);
        imprimiu(kLinha);
    }

    void por(const Logotipo &) {
        const ImagemCinza *logotipo = impressao_.logotipo;
        if (perfil_.logotipo == ModoLogotipo::kGuardado) {
            alinhar(Alinhamento::kCentro);
            enviar(Ordem::kLogotipo);
            imprimiu(kLinha);
        } else if (perfil_.logotipo == ModoLogotipo::kImagem && logotipo && tem(Ordem::kImagem)) {
            const int x = (perfil_.pontos - logotipo->largura) / 2;
            Pontos pontos(x + logotipo->largura, logotipo->altura + kAposLogotipo);
            for (int linha = 0; linha < logotipo->altura; ++linha)
                for (int coluna = 0; coluna < logotipo->largura; ++coluna)
                    if (logotipo->em(coluna, linha) < 128)
                        pontos.preencher(x + coluna, 1, linha, 1);
            imprimirPontos(pontos);
        }
    }

    // By the printer's command where that gives the size, and the free zone at the sides.
    void por(const Qr &qr) {
        const int lado = ladoDoQr(qr.conteudo.size());
        const int modulo = moduloDoQr(lado, qr.modulo, perfil_.menorLadoDoQr(), perfil_.pontos);
        const bool pontos =
            tem(Ordem::kImagem) && (lado + 2 * kZonaQuieta) * modulo <= perfil_.pontos;
        const bool menor = lado * std::min(modulo, perfil_.maiorModulo) < perfil_.menorLadoDoQr();
        const bool aoLado = qr.alinhamento != Alinhamento::kCentro;
        if (tem(Ordem::kQr) && (!pontos || !(menor || aoLado)))
            porQrPorComando(qr.conteudo, lado, std::min(modulo, perfil_.maiorModulo));
        else if (pontos)
            porQrEmPontos(qr, modulo);
        else // A reader can still be told the address.
            por(Linha{{{conteudoEscrito(qr.conteudo), Estilo()}}, qr.alinhamento});
    }

    // Printers leave no free zone around it: in the middle of the line there is one at its sides.
    void porQrPorComando(std::string_view conteudo, int lado, int modulo) {
        porBranco(kZonaQuieta * modulo);
        alinhar(Alinhamento::kCentro);
        enviar(Ordem::kQr, {0, modulo, 0, 0, conteudo});
        imprimiu(lado * modulo);
        porBranco(kZonaQuieta * modulo);
    }

    // So many rows of dots, or as many lines as they need at most.
    void porBranco(int altura) {
        if (tem(Ordem::kImagem))
            imprimirPontos(Pontos(8, altura));
        else
            por(Avanco{(altura + kLinha - 1) / kLinha});
    }

    // Placed by blank dots on its left, for printers that align text alone.
    void porQrEmPontos(const Qr &qr, int modulo) {
        const SimboloQr simbolo = gerarQr(qr.conteudo);
        const int lado = (simbolo.lado + 2 * kZonaQuieta) * modulo;
        const int livre = perfil_.pontos - lado;
        const std::array<int, 3> inicios{0, livre / 2, livre};
        const int zona = kZonaQuieta * modulo;
        const int x = inicios[static_cast<std::size_t>(qr.alinhamento)] + zona;
        Pontos pontos(x + lado - zona, lado);
        for (int linha = 0; linha < simbolo.lado; ++linha)
            for (int coluna = 0; coluna < simbolo.lado; ++coluna)
                if (simbolo.escuro(linha, coluna))
                    pontos.preencher(x + coluna * modulo, modulo, zona + linha * modulo, modulo);
        imprimirPontos(pontos);
    }

    // Control characters would be commands.
    static std::string conteudoEscrito(std::string conteudo) {
        for (char &c : conteudo) {
            const auto byte = static_cast<unsigned char>(c);
            if (byte < 0x20 || (byte >= 0x7F && byte < 0xA0)) c = '?';
        }
        return conteudo;
    }

    void imprimirPontos(const Pontos &pontos) {
        alinhar(Alinhamento::kEsquerda);
        const Valores valores = pontos.valores();
        enviar(Ordem::kImagem, valores);
        imprimiu(static_cast<int>(valores.altura));
    }

    void imprimiu(int altura) {
        brancas_ = 0;
        altura_ += altura;
    }

    const Impressao &impressao_;
    const Perfil &perfil_;
    const std::size_t normal_;
    const std::size_t condensada_;
    std::string saida_;
    // In force in the printer.
    Estilo estilo_;
    std::size_t fonte_ = 0;
    Alinhamento alinhamento_ = Alinhamento::kEsquerda;
    int brancas_ = 0; // lines since the last one that was printed
    int altura_ = 0;  // dots of paper, about
};

} // namespace

std::optional<std::string> gerarEscPos(const Cupom &cupom, const Impressao &impressao) {
    return Escrita(impressao).escrever(cupom);
}

} // namespace zel::cupom
