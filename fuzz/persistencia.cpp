// SPDX-License-Identifier: MIT
// The file of the document in progress, and after the first zero byte one that waits to take its
// place; the first byte is the receipt state. What could be read is saved and read whole again.
#include "PastaDoAlvo.h"

#include "ZEL_FelborFramework.h"
#include "config/Registro.h"
#include "emcurso/ArquivoPersistencia.h"
#include "emcurso/Pendencias.h"
#include "emcurso/ZEL_Controle.h"

using namespace zel;

void jogar(std::string_view texto) {
    static const PastaDoAlvo pasta;
    static const int pronta = inicializarConfig();
    exigir(pronta == ZEL_OK && fnDefinirEstadoCFe_ZEL(tirarNumero(texto, 7)) == ZEL_OK);
    std::filesystem::remove(pasta / "ArqPersist.bin.danificado");
    pasta.gravar("ArqPersist.bin", tirarAte(texto, '\0'));
    if (!texto.empty()) pasta.gravar("ArqPersist.tmp", texto);

    exigir(resolverPendencias());
    ST_PersitenceXML_ZEL documento;
    const int codigo = fnCarregaEstrutura_ZEL(documento);
    exigir(codigo == ZEL_OK || codigo == ZEL_RECUSADO);
    exigir(fnPersistEstrutura_ZEL(documento) == ZEL_OK &&
           !std::filesystem::exists("ArqPersist.tmp"));
    exigir(std::filesystem::exists("ArqPersist.bin.danificado") == (codigo != ZEL_OK));
    const std::string gravado = pasta.ler("ArqPersist.bin");
    exigir(fnCarregaEstrutura_ZEL(documento) == ZEL_OK &&
           fnPersistEstrutura_ZEL(documento) == ZEL_OK);
    exigir(pasta.ler("ArqPersist.bin") == gravado);
}
