// SPDX-License-Identifier: MIT
// Other written forms of the same bytes: UTF-8 of Latin-1 text, hexadecimal, the bytes of a
// base64 text, and the SHA-1 digest of a text. The library used for both is known here alone.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace zel {

inline constexpr std::size_t kTamanhoSha1 = 20;

// A Latin-1 text as UTF-8.
std::string fnParseToUtf8(std::string_view texto);

// Lower-case hexadecimal of the first 99 bytes: two digits for a byte below 0x80, eight ("ffffff"
// and its own two) for one from 0x80 up, which is how the consultation pages expect it.
std::string fnConverterParaHexa(std::string_view texto);

// SHA-1 of the bytes: kTamanhoSha1 bytes.
std::string fnConvertToSHA1(std::string_view texto);

// Upper-case hexadecimal of a digest, two digits a byte.
std::string fnConvertSHA1_HEXA(std::string_view sha1);

// The bytes of a base64 text; blanks and line ends inside it are skipped. None when it is malformed
// (a foreign character, missing padding, text after the padding).
std::optional<std::string> fnParseBase64ToUtf8(std::string_view base64);

} // namespace zel
