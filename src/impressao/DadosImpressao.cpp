// SPDX-License-Identifier: MIT
#include "impressao/DadosImpressao.h"

namespace zel {

DadosImpressao G_stDadosImpressao;

} // namespace zel
