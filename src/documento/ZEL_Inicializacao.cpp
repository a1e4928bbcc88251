#include "documento/ZEL_Inicializacao.h"

#include "ZEL_FelborFramework.h"
#include "config/Registro.h"
#include "documento/ZEL_ArquivoPersistencia.h"
#include "documento/ZEL_Envio.h"
#include "documento/ZEL_Moldes.h"

namespace zel {

namespace {

bool arquivosProntos = false;
bool documentoCarregado = false;

} // namespace

void fnPrepararArquivos_ZEL() {
    // What waits is judged by the configuration, so that comes first.
    if (!arquivosProntos)
        arquivosProntos = garantirConfig() == ZEL_OK && fnConcluirEnvio_ZEL() == ZEL_OK;
}

void fnInicializarVariaveis_ZEL() {
    if (documentoCarregado) return;
    construirMoldes();
    fnPrepararArquivos_ZEL();
    if (!arquivosProntos) return;
    bool passageira = false;
    fnCarregaEstrutura_ZEL(&passageira);
    documentoCarregado = !passageira;
}

void fnFinalizarVariaveis_ZEL() {
    liberarMoldes();
    arquivosProntos = documentoCarregado = false;
}

} // namespace zel
