// SPDX-License-Identifier: MIT
#include "impressao/PdfPagina.h"

#include "disco/Arquivo.h"
#include "recusa/Recusa.h"
#include "zel_felbor/codigos.h"

#include <array>
#include <charconv>
#include <cstddef>
#include <cstdio>
#include <functional>
#include <iterator>
#include <new>
#include <utility>

namespace zel {

namespace {

constexpr float kPassoLinha = 8;
constexpr float kMargemTopo = 10;
constexpr float kMargemDireita = 10;

constexpr const char *kCodificacao = "ISO8859-9";
constexpr std::array<const char *, 3> kNomesFonte{"Courier", "Helvetica", "Helvetica-Bold"};

struct Rgb {
    float r, g, b;
};
constexpr std::array<Rgb, 3> kCores{{{0, 0, 0}, {1, 0, 0}, {0, 0, 1}}};

// Bytes without a glyph in any font.
constexpr bool ehControle(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x20 || (byte >= 0x7F && byte < 0xA0);
}

template <class Enum>
constexpr std::size_t indice(Enum valor) {
    return static_cast<std::size_t>(valor);
}

void emStderr(std::string_view texto) {
    std::fwrite(texto.data(), 1, texto.size(), stderr);
}

// At least `minimo` digits of the base, upper-case.
std::string numero(unsigned long valor, int base, std::size_t minimo) {
    char digitos[24];
    const auto fim = std::to_chars(std::begin(digitos), std::end(digitos), valor, base).ptr;
    std::string texto(digitos, fim);
    for (char &c : texto)
        if (c >= 'a') c = static_cast<char>(c - 'a' + 'A');
    return texto.size() < minimo ? texto.insert(0, minimo - texto.size(), '0') : texto;
}

// Records the failure for its document: a jump from here would skip the destructors of our frames.
// What the library reports afterwards are mere consequences.
void error_handler(HPDF_STATUS error_no, HPDF_STATUS detail_no, void *user_data) {
    bool &falhou = *static_cast<bool *>(user_data);
    if (falhou) return;
    falhou = true;
    // One by one: the failure may be that there is no memory.
    emStderr("ERROR: error_no=");
    emStderr(numero(error_no, 16, 4));
    emStderr(", detail_no=");
    emStderr(numero(detail_no, 10, 1));
    emStderr("\n");
}

// libharu reads through null where it got no memory for a page. It gets some of this instead,
// enough for the call that it is in, and the document has failed.
struct Reserva {
    alignas(std::max_align_t) std::array<std::byte, std::size_t{64} << 10> bytes;
    std::size_t usados = 0;
    bool *falhou = nullptr; // of the document that is drawn
};
Reserva reserva;

void *alocar(HPDF_UINT tamanho) {
    if (void *memoria = ::operator new(tamanho, std::nothrow)) return memoria;
    *reserva.falhou = true;
    constexpr std::size_t kPasso = alignof(std::max_align_t);
    const std::size_t inteiro = (std::size_t{tamanho} + kPasso - 1) / kPasso * kPasso;
    if (inteiro > reserva.bytes.size() - reserva.usados) return nullptr;
    return &reserva.bytes[std::exchange(reserva.usados, reserva.usados + inteiro)];
}

void liberar(void *memoria) {
    const std::less<const void *> antes;
    if (antes(memoria, reserva.bytes.begin()) || !antes(memoria, reserva.bytes.end()))
        ::operator delete(memoria);
}

HPDF_Doc novoDocumento(bool &falhou) {
    reserva.usados = 0;
    reserva.falhou = &falhou;
    return HPDF_NewEx(error_handler, alocar, liberar, 0, &falhou);
}

} // namespace

PdfPagina::PdfPagina(const MargensPdf &margens)
    : margens_(margens), documento_(novoDocumento(falhou_)) {
    if (!documento_) {
        emStderr("error: cannot create PdfDoc object");
        falhou_ = true;
        return;
    }
    fnAdicionarPDF();
    x_ = margens_.esquerda;
    y_ = topo_;
}

void PdfPagina::fnAdicionarPDF() {
    if (pagina_ != nullptr) HPDF_Page_EndText(pagina_);
    pagina_ = HPDF_AddPage(documento_.get());
    if (pagina_ == nullptr || falhou_) return;
    topo_ = HPDF_Page_GetHeight(pagina_) - kMargemTopo;
    direita_ = HPDF_Page_GetWidth(pagina_) - kMargemDireita;
    estilo_.reset();
    HPDF_Page_BeginText(pagina_);
    paginaCheia_ = false;
}

const PdfPagina::Fonte &PdfPagina::carregar(FontePdf qual) {
    Fonte &fonte = fontes_[indice(qual)];
    if (fonte.recurso != nullptr) return fonte;
    fonte.recurso = HPDF_GetFont(documento_.get(), kNomesFonte[indice(qual)], kCodificacao);
    if (fonte.recurso == nullptr) return fonte;
    for (std::size_t i = 0; i < fonte.larguras.size(); ++i) {
        const auto byte = static_cast<HPDF_BYTE>(i);
        const HPDF_TextWidth largura = HPDF_Font_TextWidth(fonte.recurso, &byte, 1);
        fonte.larguras[i] = static_cast<std::uint16_t>(largura.width);
    }
    return fonte;
}

void PdfPagina::linhaNova() {
    x_ = margens_.esquerda;
    y_ -= kPassoLinha;
    linhaIniciada_ = false;
    if (y_ > margens_.inferior) return;
    y_ = topo_;
    paginaCheia_ = true;
}

void PdfPagina::aplicar(const EstiloPdf &estilo) {
    if (estilo_ == estilo) return;
    if (!estilo_ || estilo_->fonte != estilo.fonte || estilo_->tamanho != estilo.tamanho)
        HPDF_Page_SetFontAndSize(pagina_, carregar(estilo.fonte).recurso, estilo.tamanho);
    if (!estilo_ || estilo_->cor != estilo.cor) {
        const Rgb &cor = kCores[indice(estilo.cor)];
        HPDF_Page_SetRGBFill(pagina_, cor.r, cor.g, cor.b);
    }
    estilo_ = estilo;
}

// Within a line the page goes on by itself where the last piece ended.
void PdfPagina::desenhar(std::string &trecho, const EstiloPdf &estilo) {
    if (trecho.empty()) return;
    if (paginaCheia_) fnAdicionarPDF();
    if (falhou_) return;
    aplicar(estilo);
    if (linhaIniciada_)
        HPDF_Page_ShowText(pagina_, trecho.c_str());
    else
        HPDF_Page_TextOut(pagina_, margens_.esquerda, y_, trecho.c_str());
    linhaIniciada_ = true;
    trecho.clear();
}

void PdfPagina::escrever(std::string_view texto, const EstiloPdf &estilo) {
    if (falhou_) return;
    const Fonte &fonte = carregar(estilo.fonte);
    std::string trecho;
    const auto juntar = [&](char c) {
        trecho.push_back(c);
        x_ += static_cast<float>(fonte.larguras[static_cast<unsigned char>(c)]) * estilo.tamanho /
              1000;
    };
    const auto quebrar = [&] {
        desenhar(trecho, estilo);
        linhaNova();
    };
    for (const char c : texto) {
        if (c == '\n') quebrar();
        if (ehControle(c)) continue;
        if (x_ >= direita_) {
            quebrar();
            for (const char branco : margens_.continuacao)
                juntar(branco);
        }
        juntar(c);
    }
    desenhar(trecho, estilo);
}

void PdfPagina::terminarLinha() {
    if (x_ > margens_.esquerda) linhaNova();
}

int PdfPagina::salvar(const std::string &caminho) {
    if (!falhou_) HPDF_Page_EndText(pagina_);
    if (falhou_) return recusar(Motivo::kPdfNaoDesenhado);

    HPDF_Doc documento = documento_.get();
    if (HPDF_SaveToStream(documento) != HPDF_OK) return recusar(Motivo::kPdfNaoMontado);
    std::string bytes(HPDF_GetStreamSize(documento), '\0');
    auto lidos = static_cast<HPDF_UINT32>(bytes.size());
    auto *destino = reinterpret_cast<HPDF_BYTE *>(bytes.data());
    if (HPDF_ResetStream(documento) != HPDF_OK ||
        HPDF_ReadFromStream(documento, destino, &lidos) != HPDF_OK || lidos != bytes.size() ||
        falhou_)
        return recusar(Motivo::kPdfNaoMontado);
    const int gravado = substituirArquivo(caminho, bytes, Acesso::kUmask);
    return gravado == ZEL_OK ? int{ZEL_OK} : recusar(Motivo::kPdfNaoGravado);
}

} // namespace zel
