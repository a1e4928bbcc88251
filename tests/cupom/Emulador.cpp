// SPDX-License-Identifier: MIT
#include "Emulador.h"

#include <algorithm>
#include <iconv.h>
#include <memory>
#include <stdexcept>

using namespace std::string_view_literals;

namespace zel::cupom {

namespace {

void exigir(bool vale, const char *motivo) {
    if (!vale) throw std::runtime_error(motivo);
}

class Impressora {
public:
    Impressora(const Dialeto &dialeto, std::string_view bytes) : dialeto_(dialeto), bytes_(bytes) {
        pagina_.papel = dialeto.papel;
    }

    Impresso imprimir();

    void iniciar(int) {
        exigir(linha_.empty(), "initialized within a line");
        estilo_ = Estilo();
        fonte_ = 0;
        alinhamento_ = Alinhamento::kEsquerda;
        codificacao_ = nullptr;
    }
    void nada(int) {}
    void usarPagina(int n) {
        const auto pagina = dialeto_.paginas.find(n);
        exigir(pagina != dialeto_.paginas.end(), "unknown code page");
        codificacao_ = pagina->second;
    }
    void alinhar(int n) {
        exigir(linha_.empty(), "aligned within a line");
        exigir(n >= 0 && n <= 2, "unknown alignment");
        alinhamento_ = static_cast<Alinhamento>(n);
    }
    void fonte(int n) {
        exigir(n == 0 || n == 1, "unknown font");
        fonte_ = n;
    }
    void negrito(int n) { estilo_.negrito = ligado(n); }
    void italico(int n) { estilo_.italico = ligado(n); }
    void sublinhado(int n) { estilo_.sublinhado = ligado(n); }
    void larguraDupla(int n) { estilo_.larguraDupla = ligado(n); }
    void alturaDupla(int n) { estilo_.alturaDupla = ligado(n); }
    void tamanho(int n) {
        exigir((n & ~0x11) == 0, "size beyond double");
        estilo_.larguraDupla = (n & 0x10) != 0;
        estilo_.alturaDupla = (n & 0x01) != 0;
    }
    void modo(int n) {
        exigir((n & 0x46) == 0, "unknown mode");
        fonte(n & 1);
        estilo_ = {};
        estilo_.negrito = (n & 0x08) != 0;
        estilo_.alturaDupla = (n & 0x10) != 0;
        estilo_.larguraDupla = (n & 0x20) != 0;
        estilo_.sublinhado = (n & 0x80) != 0;
    }
    void avancar(int n) {
        exigir(linha_.empty(), "fed within a line");
        y_ += n * papel().passo;
    }
    void avancarAte127(int n) {
        exigir(n >= 1 && n <= 127, "no feed");
        avancar(n);
    }
    void terminar(int) { terminarLinha(); }
    void cortar(int) {
        por(40, CortePosto{y_ + 20});
        ++impresso_.cortes;
    }
    void abrirGaveta(int) { ++impresso_.gavetas; }
    void abrirGavetaComTempos(int n) {
        exigir(n <= 1 && byte() > 0 && byte() > 0, "no pulse");
        abrirGaveta(n);
    }
    void logotipoGuardado(int) { ++impresso_.logotiposGuardados; }

    void imagem(int) {
        const int passo = dois(), altura = dois();
        desenharPontos(passo, altura);
    }
    void imagemComCor(int) {
        const int passo = dois(), altura = dois();
        exigir(byte() == 0, "unknown colour");
        desenharPontos(passo, altura);
    }

    // The length counts the three bytes before the content, too.
    void qrEmFuncao(int) {
        const int quantos = dois();
        exigir(tirar(3) == "1P0", "unknown QR function");
        conteudo_ = tirar(quantos - 3);
    }
    void qrEntreCodigosDeBarras(int n) {
        modulo_ = n;
        exigir(byte() == 0 && byte() == 1, "another version or kind");
        conteudo_ = tirar(dois());
        porQr();
    }
    void qrModulo(int n) { modulo_ = n; }
    void qrModuloAteOito(int n) {
        exigir(n >= 1 && n <= 8, "module too large");
        modulo_ = n;
    }
    void qrConteudo(int) { conteudo_ = tirar(dois()); }
    void qrImprimir(int) { porQr(); }

    int byte() { return static_cast<unsigned char>(tirar(1).front()); }

private:
    static bool ligado(int n) {
        exigir(n == 0 || n == 1, "neither on nor off");
        return n == 1;
    }
    const Papel &papel() const { return pagina_.papel; }

    int dois() {
        const int baixo = byte();
        return baixo + 256 * byte();
    }
    std::string_view tirar(int quantos) {
        const auto n = static_cast<std::size_t>(quantos);
        exigir(bytes_.size() >= n, "bytes are missing");
        const std::string_view parte = bytes_.substr(0, n);
        bytes_.remove_prefix(n);
        return parte;
    }

    bool obedecer();
    void escrever(char byte);
    char decodificar(char byte) const;
    void terminarLinha();
    int inicio(int sala, int largura) const {
        return (sala - largura) * static_cast<int>(alinhamento_) / 2;
    }
    void por(int altura, decltype(Elemento::desenho) desenho) {
        exigir(linha_.empty(), "printed within a line");
        pagina_.elementos.push_back({y_, y_ + altura, std::move(desenho)});
        y_ += altura;
    }

    // The symbol alone: whoever wants a quiet zone around it makes one.
    void porQr() {
        QrPosto qr;
        qr.simbolo = gerarQr(conteudo_);
        qr.modulo = modulo_;
        const int lado = qr.simbolo.lado * modulo_;
        exigir(lado <= papel().larguraUtil, "QR code wider than the paper");
        qr.x = inicio(papel().larguraUtil, lado);
        qr.y = y_;
        impresso_.modulos.push_back(modulo_);
        por(lado, std::move(qr));
    }

    void desenharPontos(int passo, int altura) {
        exigir(linha_.empty(), "image within a line");
        exigir(passo > 0 && passo * 8 < papel().larguraUtil + 8, "image wider than the paper");
        const std::string_view bytes = tirar(passo * altura);
        for (int i = 0; i < passo * 8 * altura; ++i) {
            const int x = i % (passo * 8), y = i / (passo * 8);
            const int oito =
                static_cast<unsigned char>(bytes[static_cast<std::size_t>(y * passo + x / 8)]);
            if ((oito >> (7 - x % 8) & 1) != 0) pontos_.emplace_back(papel().margem() + x, y_ + y);
        }
        ++impresso_.imagens;
        y_ += altura;
    }

    const Dialeto &dialeto_;
    std::string_view bytes_;
    Impresso impresso_;
    Pagina pagina_;
    std::vector<std::pair<int, int>> pontos_; // of images
    std::vector<TextoPosto> linha_;
    int x_ = 0;
    int y_ = 24;
    Estilo estilo_;
    int fonte_ = 0;
    Alinhamento alinhamento_ = Alinhamento::kEsquerda;
    const char *codificacao_ = nullptr;
    int modulo_ = 0;
    std::string conteudo_;
};

} // namespace

// A command's first bytes, and what it does with one number: the byte that follows, or `fixo`.
struct EntradaDoDialeto {
    char primeiro;
    std::string_view resto;
    void (Impressora::*acao)(int);
    int fixo = -1;
};

namespace {

using I = Impressora;
using Comandos = std::vector<EntradaDoDialeto>;

constexpr char kBel = 0x07, kLf = 0x0A, kSi = 0x0F, kDc2 = 0x12, kEsc = 0x1B, kFs = 0x1C,
               kGs = 0x1D;

Comandos mais(Comandos comandos, const Comandos &outros) {
    comandos.insert(comandos.end(), outros.begin(), outros.end());
    return comandos;
}

const Comandos kBasicos{
    {kLf, "", &I::terminar, 0},
    {kEsc, "@", &I::iniciar, 0},
    {kEsc, "-", &I::sublinhado},
};
// What the descendants of ESC/POS share.
const Comandos kEscPos = mais(kBasicos, {
                                            {kEsc, "t", &I::usarPagina},
                                            {kEsc, "a", &I::alinhar},
                                            {kGs, "v0\0"sv, &I::imagem, 0},
                                        });
const Comandos kGenerica = mais(kEscPos, {
                                             {kFs, ".", &I::nada, 0},
                                             {kEsc, "M", &I::fonte},
                                             {kEsc, "E", &I::negrito},
                                             {kGs, "!", &I::tamanho},
                                             {kEsc, "d", &I::avancar},
                                             {kEsc, "p", &I::abrirGavetaComTempos},
                                         });
const Comandos kGenerica80 =
    mais(kGenerica, {
                        {kGs, "V\x41\0"sv, &I::cortar, 0},
                        {kGs, "V\x42\0"sv, &I::cortar, 0},
                        {kGs, "(k", &I::qrEmFuncao, 0},
                        {kGs, "(k\4\0001A2\0"sv, &I::nada, 0}, // model 2
                        {kGs, "(k\3\0001E1"sv, &I::nada, 0},   // correction M
                        {kGs, "(k\3\0001C"sv, &I::qrModulo},
                        {kGs, "(k\3\0001Q0"sv, &I::qrImprimir, 0},
                        {kGs, "(L\6\0000E\x20\x20\1\1"sv, &I::logotipoGuardado, 0},
                    });
const Comandos kGenerica58 = mais(kGenerica, {
                                                 {kFs, "p\1\0"sv, &I::logotipoGuardado, 0},
                                             });
const Comandos kModoUnico = mais(kEscPos, {
                                              {kEsc, "!", &I::modo},
                                              {kEsc, "d", &I::avancar},
                                              {kEsc, "i", &I::cortar, 0},
                                              {kFs, "p\1\0"sv, &I::logotipoGuardado, 0},
                                              {kEsc, "p", &I::abrirGavetaComTempos},
                                          });
const Comandos kBema = mais(kEscPos, {
                                         {kDc2, "", &I::fonte, 0},
                                         {kSi, "", &I::fonte, 1},
                                         {kEsc, "E", &I::negrito, 1},
                                         {kEsc, "F", &I::negrito, 0},
                                         {kEsc, "4", &I::italico, 1},
                                         {kEsc, "5", &I::italico, 0},
                                         {kEsc, "W", &I::larguraDupla},
                                         {kEsc, "d", &I::alturaDupla},
                                         {kEsc, "m", &I::cortar, 0},
                                         {kEsc, "v", &I::abrirGaveta},
                                         {kGs, "kQ\1", &I::qrEntreCodigosDeBarras}, // correction M
                                         {kFs, "p\1\0"sv, &I::logotipoGuardado, 0},
                                     });
const Comandos kStar = mais(kBasicos, {
                                          {kEsc, "\x1Dt", &I::usarPagina},
                                          {kEsc, "\x1D\x61", &I::alinhar},
                                          {kEsc, "\x1E\x46", &I::fonte},
                                          {kEsc, "E", &I::negrito, 1},
                                          {kEsc, "F", &I::negrito, 0},
                                          {kEsc, "W", &I::larguraDupla},
                                          {kEsc, "h", &I::alturaDupla},
                                          {kEsc, "a", &I::avancarAte127},
                                          {kEsc, "d\3", &I::cortar, 0},
                                          {kEsc, "\x1DyS0\2", &I::nada, 0},
                                          {kEsc, "\x1DyS1\1", &I::nada, 0},
                                          {kEsc, "\x1DyS2", &I::qrModuloAteOito},
                                          {kEsc, "\x1DyD1\0"sv, &I::qrConteudo, 0},
                                          {kEsc, "\x1DyP", &I::qrImprimir, 0},
                                          {kEsc, "\x1DS\1", &I::imagemComCor, 0},
                                          {kEsc, "\x1Cp\1\0"sv, &I::logotipoGuardado, 0},
                                          {kBel, "", &I::abrirGaveta, 0},
                                      });

// The longest command with which the bytes begin.
bool Impressora::obedecer() {
    const EntradaDoDialeto *achada = nullptr;
    for (const EntradaDoDialeto &entrada : dialeto_.comandos)
        if (bytes_.front() == entrada.primeiro && bytes_.substr(1).starts_with(entrada.resto) &&
            (achada == nullptr || entrada.resto.size() > achada->resto.size()))
            achada = &entrada;
    if (achada == nullptr) return false;
    tirar(1 + static_cast<int>(achada->resto.size()));
    (this->*achada->acao)(achada->fixo >= 0 ? achada->fixo : byte());
    return true;
}

// One character from one code page to another; none where that one lacks it.
std::optional<char> converter(char c, const char *de, const char *para) {
    const std::unique_ptr<void, int (*)(void *)> conversor(::iconv_open(para, de), &::iconv_close);
    char letra = 0, *entra = &c, *sai = &letra;
    std::size_t falta = 1, cabe = 1;
    if (::iconv(conversor.get(), &entra, &falta, &sai, &cabe) != 0) return {};
    return letra;
}

char Impressora::decodificar(char byte) const {
    if (static_cast<unsigned char>(byte) < 0x80) return byte;
    exigir(codificacao_ != nullptr, "accents without a code page");
    const auto letra = converter(byte, codificacao_, "ISO-8859-1");
    exigir(letra.has_value(), "no letter of ISO-8859-1");
    return *letra;
}

void Impressora::escrever(char byte) {
    exigir(static_cast<unsigned char>(byte) >= 0x20, "unknown command");
    TextoPosto letra;
    letra.celula = fonte_ == 0 ? kPapeis[0].normal : kPapeis[0].condensada;
    if (estilo_.larguraDupla) letra.celula.largura *= 2;
    if (estilo_.alturaDupla) letra.celula.altura *= 2, letra.celula.base *= 2;
    letra.estilo = estilo_;
    letra.texto = decodificar(byte);
    exigir(x_ + letra.celula.largura <= papel().larguraDoTexto(), "a line longer than the paper");
    letra.x = x_;
    x_ += letra.celula.largura;
    impresso_.letras += letra.texto;
    linha_.push_back(std::move(letra));
}

// Letters of any height stand on one line. Columns are in the middle of the print head.
void Impressora::terminarLinha() {
    int base = papel().normal.base, abaixo = papel().passo - base;
    for (const TextoPosto &letra : linha_) {
        base = std::max(base, letra.celula.base);
        abaixo = std::max(abaixo, letra.celula.altura - letra.celula.base + papel().passo -
                                      papel().normal.altura);
    }
    const int margem = (papel().larguraUtil - papel().larguraDoTexto()) / 2;
    const int x = margem + inicio(papel().larguraDoTexto(), x_);
    for (TextoPosto &letra : linha_) {
        letra.x += x;
        letra.base = y_ + base;
        pagina_.elementos.push_back({y_, y_ + base + abaixo, std::move(letra)});
    }
    y_ += base + abaixo;
    linha_.clear();
    x_ = 0;
}

Impresso Impressora::imprimir() {
    while (!bytes_.empty())
        if (!obedecer()) escrever(static_cast<char>(byte()));
    exigir(linha_.empty(), "the last line is not ended");
    exigir(estilo_ == Estilo() && fonte_ == 0 && alinhamento_ == Alinhamento::kEsquerda,
           "the next job begins in this one's style");
    pagina_.altura = y_ + 24;
    impresso_.imagem = desenharPagina(pagina_, nullptr, 1);
    for (const auto &[x, y] : pontos_)
        impresso_.imagem.pontos.at(static_cast<std::size_t>(y * impresso_.imagem.largura + x)) = 0;
    return std::move(impresso_);
}

constexpr Papel k512{42, 80, 512, {12, 24, 19}, {9, 17, 14}, 28};

} // namespace

const std::vector<Dialeto> &dialetos() {
    static const std::vector<Dialeto> lista{
        {.perfil = "generico-80mm", .comandos = kGenerica80},
        {.perfil = "generico-80mm-512", .comandos = kGenerica80, .papel = k512},
        {.perfil = "generico-58mm", .comandos = kGenerica58, .papel = kPapeis[2], .corta = false},
        {.perfil = "escpos-modo-unico", .comandos = kModoUnico, .linhasAntesDoCorte = 4},
        {.perfil = "bematech-esc-bema",
         .comandos = kBema,
         .paginas = {{2, "CP850"}, {4, "CP860"}},
         .italico = true,
         .linhasAntesDoCorte = 4},
        {.perfil = "star-line-mode", .comandos = kStar, .paginas = {{6, "CP860"}, {32, "CP1252"}}},
    };
    return lista;
}

std::string comoSaem(std::string letras, const PaginaDeCodigo &pagina) {
    for (char &c : letras)
        if (!converter(c, "ISO-8859-1", pagina.nome.data()))
            c = kLetrasSimples[static_cast<unsigned char>(c) - 0xA0U];
    return letras;
}

Impresso emular(const Dialeto &dialeto, std::string_view bytes) {
    return Impressora(dialeto, bytes).imprimir();
}

} // namespace zel::cupom
