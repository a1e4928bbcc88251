// SPDX-License-Identifier: MIT
#include "emcurso/ZEL_Controle.h"

#include "config/Registro.h"
#include "disco/Trava.h"
#include "texto/Numero.h"
#include "zel_felbor/codigos.h"

#include <array>
#include <cstdint>
#include <optional>

namespace zel {

int G_EstadoCFe = kNenhum;
Campo<2> ZEL_TIPO_DESC_ACREC;

namespace {

constexpr Chave kChaveEstado = R"(CONFIGURACAO\estadoCFe)"_chave;

// To the application.
struct Conhecido {
    int estado;
    std::uint64_t numeros; // numerosDeOutros
};
std::optional<Conhecido> conhecido;

// In which states an operation may run (bit S for state S), and what refuses it otherwise; without
// a receipt every one but opening is refused with ZEL_NENHUM_CUPOM.
struct Permissao {
    unsigned estados;
    Motivo recusaSemCupom;
    Motivo recusa;
};

constexpr unsigned em(auto... estados) {
    return ((1U << estados) | ...);
}

constexpr std::array<Permissao, 7> kPermissoes{{
    {em(kNenhum, kEncerrado, kCancelado), Motivo::kCupomEmAndamento, Motivo::kCupomEmAndamento},
    {em(kAberto, kVendendo), Motivo::kNenhumCupom, Motivo::kVendaForaDeOrdem},
    {em(kVendendo), Motivo::kNenhumCupom, Motivo::kTotalizacaoForaDeOrdem},
    {em(kTotalizado, kPagamento), Motivo::kNenhumCupom, Motivo::kPagamentoForaDeOrdem},
    {0, Motivo::kNenhumCupom, Motivo::kNenhumCupom},
    {em(kPagamento), Motivo::kNenhumCupom, Motivo::kEncerramentoForaDeOrdem},
    {em(kAberto, kVendendo, kTotalizado, kPagamento, kEncerrado), Motivo::kNenhumCupom,
     Motivo::kNenhumCupom},
}};

} // namespace

int fnVerificarSePosso_ZEL(Operacao operacao) {
    const int estado = fnCFVerificarStatus_ZEL();
    const auto indice = static_cast<std::size_t>(operacao);
    if (indice >= kPermissoes.size()) return recusarNoEstado(Motivo::kNenhumCupom);
    const Permissao &permissao = kPermissoes[indice];
    if ((permissao.estados & (1U << estado)) != 0) return ZEL_OK;
    return recusarNoEstado(estado == kNenhum ? permissao.recusaSemCupom : permissao.recusa);
}

int recusarNoEstado(Motivo motivo) {
    return recusar(motivo, {.estado = G_EstadoCFe});
}

bool cupomEmAndamento() {
    const int estado = fnCFVerificarStatus_ZEL();
    return estado > kNenhum && estado < kEncerrado;
}

void lembrarEstado(bool seNenhum) {
    if (!seNenhum || !conhecido) conhecido = {fnCFVerificarStatus_ZEL(), numerosDeOutros()};
}

bool documentoAindaVale() {
    return !conhecido || conhecido->numeros == numerosDeOutros();
}

bool estadoAindaVale() {
    const int estado = fnCFVerificarStatus_ZEL();
    if (!conhecido || PosseDoCupom::minha()) return !conhecido || conhecido->estado == estado;
    if (!documentoAindaVale()) return false;
    return conhecido->estado == estado ||
           (PosseDoCupom::compartilhada() &&
            (conhecido->estado == kEncerrado) == (estado == kEncerrado));
}

bool ehCaminhoDoEstado(std::string_view caminho) {
    const auto chave = procurarChave(caminho);
    return chave && *chave == kChaveEstado;
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
