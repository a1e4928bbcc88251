#include "Png.h"

#include <new>
#include <string_view>
#include <utility>
#include <zlib.h>

namespace zel::cupom {

namespace {

constexpr std::string_view kAssinatura = "\x89PNG\r\n\x1A\n";
constexpr std::uint8_t kFiltroAcima = 2; // a byte less the one above: rows repeat, paper is zeros

void porNumero(std::string &onde, std::uint32_t numero) {
    for (int bits = 24; bits >= 0; bits -= 8)
        onde.push_back(static_cast<char>(numero >> bits & 0xFF));
}

} // namespace

EscritorPng::EscritorPng(int largura, int altura, int pontosPorMetro)
    : arquivo_(kAssinatura), fluxo_(std::make_unique<z_stream_s>()),
      filtrada_(static_cast<std::size_t>(largura) + 1),
      anterior_(static_cast<std::size_t>(largura)) {
    std::string dados;
    porNumero(dados, static_cast<std::uint32_t>(largura));
    porNumero(dados, static_cast<std::uint32_t>(altura));
    dados.append({8, 0, 0, 0, 0}); // 8-bit grey, deflate, filters by row, not interlaced
    porParte("IHDR", dados);
    if (pontosPorMetro > 0) {
        dados.clear();
        porNumero(dados, static_cast<std::uint32_t>(pontosPorMetro));
        porNumero(dados, static_cast<std::uint32_t>(pontosPorMetro));
        dados.push_back(1); // to the metre
        porParte("pHYs", dados);
    }
    constexpr int kNivel = 6;
    if (deflateInit(fluxo_.get(), kNivel) != Z_OK) throw std::bad_alloc();
}

EscritorPng::~EscritorPng() {
    deflateEnd(fluxo_.get());
}

void EscritorPng::escrever(std::span<const std::uint8_t> linha) {
    filtrada_[0] = kFiltroAcima;
    for (std::size_t i = 0; i < anterior_.size(); ++i)
        filtrada_[i + 1] = static_cast<std::uint8_t>(linha[i] - anterior_[i]);
    anterior_.assign(linha.begin(), linha.end());
    fluxo_->next_in = filtrada_.data();
    fluxo_->avail_in = static_cast<uInt>(filtrada_.size());
    comprimir(Z_NO_FLUSH);
}

std::string EscritorPng::terminar() {
    comprimir(Z_FINISH);
    porParte("IEND", {});
    return std::move(arquivo_);
}

// Takes all input; each full buffer of output becomes a part of its own.
void EscritorPng::comprimir(int modo) {
    Bytef saida[32768];
    do {
        fluxo_->next_out = saida;
        fluxo_->avail_out = sizeof saida;
        deflate(fluxo_.get(), modo);
        const std::size_t escritos = sizeof saida - fluxo_->avail_out;
        if (escritos > 0) porParte("IDAT", {reinterpret_cast<const char *>(saida), escritos});
    } while (fluxo_->avail_out == 0);
}

void EscritorPng::porParte(const char (&tipo)[5], std::string_view dados) {
    porNumero(arquivo_, static_cast<std::uint32_t>(dados.size()));
    const std::size_t inicio = arquivo_.size();
    arquivo_.append(tipo).append(dados);
    const auto soma = crc32(0, reinterpret_cast<const Bytef *>(arquivo_.data() + inicio),
                            static_cast<uInt>(arquivo_.size() - inicio));
    porNumero(arquivo_, static_cast<std::uint32_t>(soma));
}

} // namespace zel::cupom
