// SPDX-License-Identifier: MIT
#include "emissao/DataHora.h"

#include "config/Registro.h"
#include "texto/Numero.h"

#include <algorithm>

namespace zel {

std::string dataHora(const std::tm &local) {
    return formatarInteiro(local.tm_year + 1900, 4) + '-' + formatarInteiro(local.tm_mon + 1, 2) +
           '-' + formatarInteiro(local.tm_mday, 2) + 'T' + formatarInteiro(local.tm_hour, 2) + ':' +
           formatarInteiro(local.tm_min, 2) + ':' + formatarInteiro(local.tm_sec, 2);
}

std::string fusoHorario(const std::tm &local) {
    const bool configurado =
        lerInteiro(valorConfig(R"(CONFIGURACAO\TIMEZONESERVIDOR\Utilizar)"_chave)) == 1;
    const long long horas =
        configurado ? lerInteiro(valorConfig(R"(CONFIGURACAO\TIMEZONESERVIDOR\Valor)"_chave))
                    : -local.tm_gmtoff / 3600;
    return '-' + formatarInteiro(std::max<long long>(horas, 0), 2) + ":00";
}

} // namespace zel
