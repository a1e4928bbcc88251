// SPDX-License-Identifier: MIT
// Numbers as keys and Ids write them.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

namespace zel {

// With zeros on the left as far as `largura` characters; longer texts stay.
inline std::string comZeros(std::string_view digitos, std::size_t largura) {
    return std::string(largura - std::min(largura, digitos.size()), '0').append(digitos);
}

} // namespace zel
