#include "documento/ZEL_Contingencia.h"

#include "ZEL_FelborFramework.h"
#include "config/Registro.h"
#include "documento/ZEL_ArquivoPersistencia.h"
#include "documento/ZEL_Cabecalho.h"
#include "documento/ZEL_Envio.h"
#include "documento/ZEL_Montagem.h"
#include "documento/ZEL_Persistencia.h"
#include "util/Numero.h"

namespace zel {

int fnGerarXMLContingencia(int tipo, std::string &texto) {
    if (const int resultado = fnXML_CarregarXML_ZEL(); resultado != ZEL_OK) return resultado;
    bool passageira = false;
    const int carga = fnCarregaEstrutura_ZEL(&passageira);
    if (passageira) return carga;
    if (!G_stXML_Persistencia.temListaDeVendas()) return ZEL_RECUSADO;

    const std::string substituido = formatarInteiro(lerInteiro(valorConfig(R"(IDE\nNF)"_chave)));
    const std::string serie = formatarInteiro(lerInteiro(valorConfig(R"(IDE\Serie)"_chave)));
    const int resultado = fnXMLFormatado_ZEL(tipo, texto);
    if (resultado == 0) return ZEL_RECUSADO;
    if (resultado != ZEL_OK || tipo != kSubstituicao) return resultado;
    return fnCriarArquivoEnvio(kArquivoParametros, "<SubstituirDocumento><nNF>" + substituido +
                                                       "</nNF><serie>" + serie +
                                                       "</serie></SubstituirDocumento>");
}

} // namespace zel
