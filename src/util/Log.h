// SPDX-License-Identifier: MIT
// What the library has to say to whoever looks after the till: lines in the file that the
// environment variable ZEL_LOG names (an absolute path, or "stderr"). Without it nothing is
// written, and nothing that happens here makes a call fail.
#pragma once

#include <string_view>

namespace zel {

// Appends one line, with local time and zone in front. The file is readable by its owner alone.
void registrarLog(std::string_view texto) noexcept;

} // namespace zel
