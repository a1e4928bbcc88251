// SPDX-License-Identifier: MIT
// What this process has seen of the numbers that other processes give to documents.
#pragma once

#include <cstdint>

namespace zel {

// How often a load of the configuration brought another number or series than memory had: no other
// process has closed a document between two calls that get the same answer.
std::uint64_t numerosDeOutros();

} // namespace zel
