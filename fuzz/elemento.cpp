// SPDX-License-Identifier: MIT
// Element parser and section check; the first byte chooses the section. What is accepted stands in
// documents and records: written and read again it must be the same.
#include "Alvo.h"

#include "ZEL_FelborFramework.h"
#include "secao/Conformidade.h"
#include "secao/Moldes.h"
#include "secao/Parser.h"

using namespace zel;

void jogar(std::string_view texto) {
    construirMoldes();
    const auto secao = static_cast<Secao>(tirarNumero(texto, 6));
    ST_tagZEL lida, relida, documento;
    if (fnParseToTag_ZEL(lida, texto) == ZEL_OK)
        exigir(fnParseToTag_ZEL(relida, lida.getEstrutura()) == ZEL_OK &&
               relida.getEstrutura() == lida.getEstrutura());
    std::size_t posicao = 0;
    if (fnProximaTag_ZEL(documento, texto, posicao) == ZEL_OK) exigir(!documento.toPDF().empty());
    if (fnVerificarFormatarTAG_ZEL(secao, texto, lida) == ZEL_OK)
        exigir(fnVerificarFormatarTAG_ZEL(secao, lida.getEstrutura(), relida) == ZEL_OK &&
               relida.getEstrutura() == lida.getEstrutura());
}
