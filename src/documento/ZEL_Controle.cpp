// SPDX-License-Identifier: MIT
#include "documento/ZEL_Controle.h"

#include "ZEL_FelborFramework.h"
#include "util/Numero.h"

#include <array>

namespace zel {

int G_EstadoCFe = kNenhum;
Campo<2> ZEL_TIPO_DESC_ACREC;

namespace {

constexpr Chave kChaveEstado = R"(CONFIGURACAO\estadoCFe)"_chave;

// In which states an operation may run (bit S for state S), and what refuses it otherwise; without
// a receipt every one but opening is refused with ZEL_NENHUM_CUPOM.
struct Permissao {
    unsigned estados;
    int recusaSemCupom;
    int recusa;
};

constexpr unsigned em(auto... estados) {
    return ((1U << estados) | ...);
}

constexpr std::array<Permissao, 7> kPermissoes{{
    {em(kNenhum, kEncerrado, kCancelado), ZEL_CUPOM_EM_ANDAMENTO, ZEL_CUPOM_EM_ANDAMENTO},
    {em(kAberto, kVendendo), ZEL_NENHUM_CUPOM, ZEL_VENDA_FORA_DE_ORDEM},
    {em(kVendendo), ZEL_NENHUM_CUPOM, ZEL_TOTALIZACAO_FORA_DE_ORDEM},
    {em(kTotalizado, kPagamento), ZEL_NENHUM_CUPOM, ZEL_PAGAMENTO_FORA_DE_ORDEM},
    {0, ZEL_NENHUM_CUPOM, ZEL_NENHUM_CUPOM},
    {em(kPagamento), ZEL_NENHUM_CUPOM, ZEL_ENCERRAMENTO_FORA_DE_ORDEM},
    {em(kAberto, kVendendo, kTotalizado, kPagamento, kEncerrado), ZEL_NENHUM_CUPOM,
     ZEL_NENHUM_CUPOM},
}};

} // namespace

int fnVerificarSePosso_ZEL(Operacao operacao) {
    const int estado = fnCFVerificarStatus_ZEL();
    const auto indice = static_cast<std::size_t>(operacao);
    if (indice >= kPermissoes.size()) return ZEL_NENHUM_CUPOM;
    const Permissao &permissao = kPermissoes[indice];
    if ((permissao.estados & (1U << estado)) != 0) return ZEL_OK;
    return estado == kNenhum ? permissao.recusaSemCupom : permissao.recusa;
}

Alteracao alteracaoEstado(int estado) {
    return {kChaveEstado, formatarInteiro(estado)};
}

int fnDefinirEstadoCFe_ZEL(int estado) {
    const Alteracao alteracao = alteracaoEstado(estado);
    alterarConfig({&alteracao, 1});
    fnCFVerificarStatus_ZEL();
    return ZEL_OK;
}

int fnCFVerificarStatus_ZEL() {
    // One damaged digit must not block the till.
    const long long estado = lerInteiro(valorConfig(kChaveEstado));
    G_EstadoCFe = estado >= kNenhum && estado <= kCancelado ? static_cast<int>(estado) : kNenhum;
    return G_EstadoCFe;
}

} // namespace zel
