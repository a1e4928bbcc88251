// What every exported function finds ready: templates built, configuration loaded, a change that a
// dead process left settled, document in progress in memory. Cheap when all of it stands.
#pragma once

namespace zel {

// A step that fails for a passing reason is tried again by the next call.
void fnInicializarVariaveis_ZEL();

// Frees the templates; the next fnInicializarVariaveis_ZEL starts anew, as in a new process.
void fnFinalizarVariaveis_ZEL();

} // namespace zel
