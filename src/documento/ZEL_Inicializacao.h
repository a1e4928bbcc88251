// What every exported function finds ready: templates built, configuration loaded, changes that a
// dead process left settled, document in progress in memory. Cheap when all of it stands.
#pragma once

namespace zel {

// All of it. A step that fails for a passing reason is tried again by the next call.
void fnInicializarVariaveis_ZEL();

// Configuration and output files alone, for functions that do without the document in progress: the
// first call of a process, whichever it is, sees the file. A failure is tried again as above.
void fnPrepararArquivos_ZEL();

// Frees the templates; the next fnInicializarVariaveis_ZEL starts anew, as in a new process.
void fnFinalizarVariaveis_ZEL();

} // namespace zel
