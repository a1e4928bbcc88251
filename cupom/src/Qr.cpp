#include "Qr.h"

#include <cstddef>
#include <memory>
#include <new>
#include <qrencode.h>

namespace zel::cupom {

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
