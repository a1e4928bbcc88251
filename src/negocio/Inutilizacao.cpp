// SPDX-License-Identifier: MIT
#include "negocio/Inutilizacao.h"

#include "config/Registro.h"
#include "negocio/Argumento.h"
#include "negocio/Requisicao.h"
#include "zel_felbor/codigos.h"

namespace zel {

int fnCFInutilizar_ZEL_Felbor(std::string_view numeroInicial, std::string_view numeroFinal,
                              std::string_view serie, std::string_view justificativa) {
    if (const int resultado = fnXML_CarregarXML_ZEL(); resultado != ZEL_OK) return resultado;
    if (const int presentes = recusarNulos({{"numeroInicial", numeroInicial},
                                            {"numeroFinal", numeroFinal},
                                            {"serie", serie},
                                            {"justificativa", justificativa}});
        presentes != ZEL_OK)
        return presentes;
    DadosRequisicao dados;
    dados.numeroInicial = argumentoCortado(numeroInicial, 9);
    dados.numeroFinal = argumentoCortado(numeroFinal, 9);
    dados.serie = argumentoCortado(serie, 3);
    dados.justificativa = argumentoCortado(justificativa, 60);
    return enviarRequisicao(Requisicao::kInutilizacao, dados);
}

} // namespace zel
