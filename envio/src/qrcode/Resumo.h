// SPDX-License-Identifier: MIT
// Digests and signatures of the QR code's fields, by OpenSSL.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace zel::envio {

inline constexpr std::size_t kDigestBase64 = 28; // characters of a SHA-1 in Base64

// Each character as two digits, small letters.
std::string hexadecimal(std::string_view bytes);

// SHA-1 in 40 digits, capitals.
std::string sha1Hexadecimal(std::string_view texto);

// Whether `assinatura` (Base64) is the RSA-SHA1 signature of the text by the holder of the
// certificate (Base64 of its DER).
bool assinaturaConfere(std::string_view texto, std::string_view assinatura,
                       std::string_view certificado);

} // namespace zel::envio
