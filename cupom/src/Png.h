// SPDX-License-Identifier: MIT
// Writes a picture as a PNG file (ISO/IEC 15948) row by row, so that a receipt of any length needs
// no more memory than its rows as they come: 8-bit grey, resolution recorded.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>

struct z_stream_s;

namespace zel::cupom {

class EscritorPng {
public:
    // `pontosPorMetro` 0: the resolution is not recorded.
    EscritorPng(int largura, int altura, int pontosPorMetro);
    ~EscritorPng();
    EscritorPng(const EscritorPng &) = delete;
    EscritorPng &operator=(const EscritorPng &) = delete;

    // The next row from the top, one byte a pixel, `largura` of them.
    void escrever(std::span<const std::uint8_t> linha);

    // After the last row: the whole file.
    std::string terminar();

private:
    void comprimir(std::span<const std::uint8_t> bytes, int modo);
    void porParte(const char (&tipo)[5], std::string_view dados);

    std::string arquivo_;
    std::unique_ptr<z_stream_s> fluxo_;
};

} // namespace zel::cupom
