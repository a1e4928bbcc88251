// SPDX-License-Identifier: MIT
#include "emissao/Contingencia.h"

#include "config/Registro.h"
#include "emcurso/ArquivoPersistencia.h"
#include "emissao/Cabecalho.h"
#include "emissao/Montagem.h"
#include "recusa/Recusa.h"
#include "texto/Numero.h"
#include "zel_felbor/codigos.h"

namespace zel {

int fnGerarXMLContingencia(ST_PersitenceXML_ZEL &documento, int tipo, std::string &texto) {
    if (const int resultado = fnXML_CarregarXML_ZEL(); resultado != ZEL_OK) return resultado;
    bool passageira = false;
    const int carga = fnCarregaEstrutura_ZEL(documento, &passageira);
    if (passageira) return carga;
    if (!documento.temListaDeVendas()) return recusar(Motivo::kReemitirSemItens);

    std::string parametros;
    if (tipo == kSubstituicao) {
        const auto numero = [](Chave chave) {
            return formatarInteiro(lerInteiro(valorConfig(chave)));
        };
        parametros = "<SubstituirDocumento><nNF>" + numero(R"(IDE\nNF)"_chave) + "</nNF><serie>" +
                     numero(R"(IDE\Serie)"_chave) + "</serie></SubstituirDocumento>";
    }
    const int resultado = fnXMLFormatado_ZEL(documento, tipo, texto, {.parametros = parametros});
    return resultado == 0 ? recusar(Motivo::kTipoDeEmissao, {.numero = tipo}) : resultado;
}

} // namespace zel
