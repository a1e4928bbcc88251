// SPDX-License-Identifier: MIT
#include "Qr.h"

#include <algorithm>
#include <array>
#include <memory>
#include <new>
#include <qrencode.h>

namespace zel::cupom {

namespace {

// Bytes that versions 1 to 40 hold at level M (ISO/IEC 18004:2015, table 7).
constexpr std::array<std::size_t, 40> kCapacidades{
    14,   26,   42,   62,   84,   106,  122,  152,  180,  213,  251,  287,  331,  362,
    412,  450,  504,  560,  624,  666,  711,  779,  857,  911,  997,  1059, 1125, 1190,
    1264, 1370, 1452, 1538, 1628, 1722, 1809, 1911, 1989, 2099, 2213, 2331,
};

} // namespace

int ladoDoQr(std::size_t bytes) {
    const auto versao = std::lower_bound(kCapacidades.begin(), kCapacidades.end(), bytes);
    return 21 + 4 * static_cast<int>(versao - kCapacidades.begin());
}

int moduloDoQr(int lado, int pedido, int menorLado, int largura) {
    const int minimo = (menorLado + lado - 1) / lado;
    return std::clamp(std::max(pedido, minimo), 1, std::max(1, largura / (lado + 2 * kZonaQuieta)));
}

SimboloQr gerarQr(std::string_view conteudo) {
    const std::unique_ptr<QRcode, decltype(&QRcode_free)> qr(
        QRcode_encodeData(static_cast<int>(conteudo.size()),
                          reinterpret_cast<const unsigned char *>(conteudo.data()), 0,
                          QR_ECLEVEL_M),
        &QRcode_free);
    // Within the limits of the content nothing else can go wrong.
    if (qr == nullptr) throw std::bad_alloc();
    SimboloQr simbolo;
    simbolo.lado = qr->width;
    simbolo.modulos.assign(qr->data, qr->data + static_cast<std::ptrdiff_t>(qr->width) * qr->width);
    for (std::uint8_t &modulo : simbolo.modulos)
        modulo &= 1;
    return simbolo;
}

} // namespace zel::cupom
