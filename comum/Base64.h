// SPDX-License-Identifier: MIT
// Bytes as text (RFC 4648, section 4).
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

namespace zel::comum {

inline std::string base64(std::string_view bytes) {
    constexpr std::string_view kLetras =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string texto;
    for (; !bytes.empty(); bytes.remove_prefix(std::min<std::size_t>(3, bytes.size()))) {
        unsigned grupo = 0;
        for (std::size_t i = 0; i < 3; ++i)
            grupo = grupo << 8 | (i < bytes.size() ? static_cast<unsigned char>(bytes[i]) : 0U);
        for (std::size_t i = 0; i < 4; ++i)
            texto.push_back(i <= bytes.size() ? kLetras[grupo >> (18 - 6 * i) & 63] : '=');
    }
    return texto;
}

} // namespace zel::comum
