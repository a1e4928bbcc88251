#include "documento/ZEL_Inicializacao.h"

#include "ZEL_FelborFramework.h"
#include "config/Registro.h"
#include "documento/ZEL_ArquivoPersistencia.h"
#include "documento/ZEL_Envio.h"
#include "documento/ZEL_Moldes.h"

namespace zel {

namespace {

bool documentoCarregado = false;

} // namespace

void fnInicializarVariaveis_ZEL() {
    if (documentoCarregado) return;
    construirMoldes();
    // A waiting change is judged by the configuration, so the document is read only behind it.
    if (garantirConfig() != ZEL_OK) return;
    bool passageira = false;
    fnCarregaEstrutura_ZEL(&passageira);
    documentoCarregado = !passageira && fnConcluirEnvio_ZEL() == ZEL_OK;
}

void fnFinalizarVariaveis_ZEL() {
    liberarMoldes();
    documentoCarregado = false;
}

} // namespace zel
