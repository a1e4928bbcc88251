// SPDX-License-Identifier: MIT
// Contents that a process of an earlier version left waiting beside their files when it died: that
// version kept them in ArqPersist.tmp, documentosEnvio.xml.tmp and parametrosEnvio.xml.tmp while it
// saved the configuration. Nothing waits so any more.
#pragma once

namespace zel {

// Puts in place what belongs to the configuration, and drops the rest. False when that cannot be
// done yet.
bool resolverPendencias();

} // namespace zel
