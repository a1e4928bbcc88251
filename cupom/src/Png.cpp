// SPDX-License-Identifier: MIT
#include "Png.h"

#include <new>
#include <string_view>
#include <utility>
#include <zlib.h>

namespace zel::cupom {

namespace {

constexpr std::string_view kAssinatura = "\x89PNG\r\n\x1A\n";
// Rows as they stand: letters repeat as runs of bytes, and a filter would make differences of them.
constexpr std::uint8_t kSemFiltro = 0;

void porNumero(std::string &onde, std::uint32_t numero) {
    for (int bits = 24; bits >= 0; bits -= 8)
        onde.push_back(static_cast<char>(numero >> bits & 0xFF));
}

} // namespace

EscritorPng::EscritorPng(int largura, int altura, int pontosPorMetro)
    : arquivo_(kAssinatura), fluxo_(std::make_unique<z_stream_s>()) {
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
    if (deflateInit(fluxo_.get(), Z_DEFAULT_COMPRESSION) != Z_OK) throw std::bad_alloc();
}

EscritorPng::~EscritorPng() {
    deflateEnd(fluxo_.get());
}

void EscritorPng::escrever(std::span<const std::uint8_t> linha) {
    comprimir({&kSemFiltro, 1}, Z_NO_FLUSH);
    comprimir(linha, Z_NO_FLUSH);
}

std::string EscritorPng::terminar() {
    comprimir({}, Z_FINISH);
    porParte("IEND", {});
    return std::move(arquivo_);
}

// Each full buffer of output becomes a part of its own.
void EscritorPng::comprimir(std::span<const std::uint8_t> bytes, int modo) {
    Bytef saida[32768];
    fluxo_->next_in = const_cast<Bytef *>(bytes.data()); // zlib only reads there
    fluxo_->avail_in = static_cast<uInt>(bytes.size());
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
