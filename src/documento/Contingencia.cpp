// SPDX-License-Identifier: MIT
#include "documento/Contingencia.h"

#include "ZEL_FelborFramework.h"
#include "config/Registro.h"
#include "documento/ArquivoPersistencia.h"
#include "documento/Cabecalho.h"
#include "documento/Montagem.h"
#include "util/Numero.h"
#include "util/Recusa.h"

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
