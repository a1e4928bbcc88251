// SPDX-License-Identifier: MIT
// The checksum of the journal's records: CRC-32 as in ISO 3309 and ITU-T V.42 (polynomial
// 0x04C11DB7, reflected), eight bytes at a step.
#pragma once

#include <cstdint>
#include <string_view>

namespace zel {

std::uint32_t somaCrc32(std::string_view bytes);

} // namespace zel
