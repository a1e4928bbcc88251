// SPDX-License-Identifier: MIT
// Money as binary numbers have it: sums of cents leave dust.
#pragma once

namespace zel {

// Less than this, either way, is nothing.
inline constexpr double kMeioCentavo = 0.005;

} // namespace zel
