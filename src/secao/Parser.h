// SPDX-License-Identifier: MIT
// Reads XML text back into a tag tree: the system's own small element parser, for section texts
// given by the application, stored records and whole documents. It knows no entities: values stay
// as they stand in the text. Hostile input ends in ZEL_RECUSADO, never in a crash: names are at
// most 39 bytes, attribute names and values 99, nesting at most 32 levels, 5000 characters of text
// per element.
#pragma once

#include "secao/Tag.h"

#include <string_view>

namespace zel {

// Parses a sequence of elements and appends each as a child of `raiz`; other characters between
// them are skipped, a declaration or a comment is malformed. ZEL_OK, or ZEL_RECUSADO with `raiz`
// partly filled.
int fnParseToTag_ZEL(ST_tagZEL &raiz, std::string_view texto);

// Parses the one element that starts at `posicao` into `no` and leaves `posicao` on the ">" of its
// end tag. A declaration and comments in front of the element are skipped. ZEL_OK or ZEL_RECUSADO.
int fnProximaTag_ZEL(ST_tagZEL &no, std::string_view texto, std::size_t &posicao);

} // namespace zel
