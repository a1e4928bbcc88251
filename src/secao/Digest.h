// SPDX-License-Identifier: MIT
// The digest value of a document: SHA-1 in base64 over the canonical form of its signed element.
#pragma once

#include <string>
#include <string_view>

namespace zel {

enum class Codificacao { kLatin1, kUtf8 };

// Digest (28 characters) of the NFC-e in `xml`: of the "NFe" element cut out in front of its
// signature when the text has an XML declaration or an "enviNFe" around it, of the whole text
// otherwise. What is hashed is its UTF-8 form: that of a Latin-1 text, or the text itself. ZEL_OK,
// or ZEL_RECUSADO with `digest` unchanged when the text cannot be read as a document.
int fnGerarDigestValue(std::string_view xml, std::string &digest,
                       Codificacao codificacao = Codificacao::kLatin1);

} // namespace zel
