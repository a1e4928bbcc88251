// SPDX-License-Identifier: MIT
// The reason of the last refusal, for the host of the library itself: ZEL_LOG_DESCRITOR=N names a
// descriptor of an anonymous file in memory that the host made with memfd_create("zel_felbor").
// Nothing else is written to: a number that a child process inherited in its environment, or that
// the host closed and gave to a file of its own, is left alone, and so is one given to a program
// with more rights than its user. Writing there neither waits nor grows: the file holds one line.
#pragma once

#include <string_view>

namespace zel {

// Whether there is such a file, looked for by the first call of the process.
bool haDescritorDoLog() noexcept;

// Puts "[PROCESS] `linha`\n", at most 4096 bytes, in the place of what the file held; without a
// line, or without memory for it, the file is emptied: what it says is never of an older call.
void entregarRecusa(std::string_view linha) noexcept;

} // namespace zel
