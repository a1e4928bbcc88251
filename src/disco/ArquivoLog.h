// SPDX-License-Identifier: MIT
// What the library has to say to whoever looks after the till: lines in the file that the
// environment names (recusa/Log.h). Without it nothing is written, and nothing that happens here
// makes a call fail or wait. Text is UTF-8.
#pragma once

#include "recusa/Log.h"

#include <string_view>

namespace zel {

// kRecusas also where the log is off and the host holds a descriptor for them (LogDescritor.h).
NivelLog nivelDoLog() noexcept;

// Appends one line: local time with zone, number of the process, `texto`. The file is readable by
// its owner alone. One that would pass 10 MB is renamed to its name with ".1" appended, in the
// place of an older one; where it cannot be renamed it begins anew. While another process is at
// that the line goes into the full file.
void registrarLog(std::string_view texto) noexcept;

} // namespace zel
