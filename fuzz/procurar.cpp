// SPDX-License-Identifier: MIT
// Hands the inputs that libFuzzer makes up to a target.
#include "Alvo.h"

#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *dados, std::size_t tamanho) {
    jogar({reinterpret_cast<const char *>(dados), tamanho});
    return 0;
}
