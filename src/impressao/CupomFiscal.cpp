// SPDX-License-Identifier: MIT
#include "impressao/CupomFiscal.h"

#include <cstddef>

namespace zel {

double CupomFiscal::getValorTotalPago() const {
    double total = 0;
    for (const Pagamento &pagamento : Pagamentos)
        total += pagamento.ValorPgto;
    return total;
}

std::string CupomFiscal::getChaveDeAcessoFormatado() const {
    constexpr std::size_t kGrupo = 4;
    std::string formatada;
    for (std::string_view resto = ChaveDeAcesso; !resto.empty();
         resto.remove_prefix(std::min(kGrupo, resto.size())))
        formatada.append(resto.substr(0, kGrupo)).append(1, ' ');
    return formatada;
}

} // namespace zel
