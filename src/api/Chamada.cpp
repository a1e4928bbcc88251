// SPDX-License-Identifier: MIT
#include "api/Chamada.h"

#include "ZEL_FelborFramework.h"
#include "disco/Diretorio.h"
#include "disco/LogDescritor.h"
#include "recusa/Recusa.h"
#include "texto/Numero.h"

#include <array>
#include <optional>
#include <string>
#include <utility>

namespace zel {

namespace {

constexpr std::array<std::pair<int, std::string_view>, 29> kNomes{{
    {ZEL_OK, "ZEL_OK"},
    {ZEL_CANCELAMENTO_GRAVADO, "ZEL_CANCELAMENTO_GRAVADO"},
    {ZEL_RECUSADO, "ZEL_RECUSADO"},
    {ZEL_ITEM_INEXISTENTE, "ZEL_ITEM_INEXISTENTE"},
    {ZEL_PAGAMENTO_INEXISTENTE, "ZEL_PAGAMENTO_INEXISTENTE"},
    {ZEL_ITEM_JA_AJUSTADO, "ZEL_ITEM_JA_AJUSTADO"},
    {ZEL_NADA_A_REMOVER, "ZEL_NADA_A_REMOVER"},
    {ZEL_FALHA_PDF, "ZEL_FALHA_PDF"},
    {ZEL_FALHA_GRAVACAO_PDF, "ZEL_FALHA_GRAVACAO_PDF"},
    {ZEL_FALHA_IMPRESSAO, "ZEL_FALHA_IMPRESSAO"},
    {ZEL_SEM_LISTA, "ZEL_SEM_LISTA"},
    {ZEL_CANCELAMENTO_EXCESSIVO, "ZEL_CANCELAMENTO_EXCESSIVO"},
    {ZEL_JA_PAGO, "ZEL_JA_PAGO"},
    {ZEL_AJUSTE_EXCESSIVO, "ZEL_AJUSTE_EXCESSIVO"},
    {ZEL_CONFIG_ILEGIVEL, "ZEL_CONFIG_ILEGIVEL"},
    {ZEL_ARQUIVO_INDISPONIVEL, "ZEL_ARQUIVO_INDISPONIVEL"},
    {ZEL_ARGUMENTO_INVALIDO, "ZEL_ARGUMENTO_INVALIDO"},
    {ZEL_ESTADO_INVALIDO, "ZEL_ESTADO_INVALIDO"},
    {ZEL_CONSUMIDOR_OBRIGATORIO, "ZEL_CONSUMIDOR_OBRIGATORIO"},
    {ZEL_TRANSPORTADORA_NAO_PERMITIDA, "ZEL_TRANSPORTADORA_NAO_PERMITIDA"},
    {ZEL_TAG_NAO_CONFORME, "ZEL_TAG_NAO_CONFORME"},
    {ZEL_TAG_SEM_ELEMENTOS, "ZEL_TAG_SEM_ELEMENTOS"},
    {ZEL_TAG_OBRIGATORIA, "ZEL_TAG_OBRIGATORIA"},
    {ZEL_CUPOM_EM_ANDAMENTO, "ZEL_CUPOM_EM_ANDAMENTO"},
    {ZEL_NENHUM_CUPOM, "ZEL_NENHUM_CUPOM"},
    {ZEL_VENDA_FORA_DE_ORDEM, "ZEL_VENDA_FORA_DE_ORDEM"},
    {ZEL_TOTALIZACAO_FORA_DE_ORDEM, "ZEL_TOTALIZACAO_FORA_DE_ORDEM"},
    {ZEL_PAGAMENTO_FORA_DE_ORDEM, "ZEL_PAGAMENTO_FORA_DE_ORDEM"},
    {ZEL_ENCERRAMENTO_FORA_DE_ORDEM, "ZEL_ENCERRAMENTO_FORA_DE_ORDEM"},
}};

// Of the one function that answers no code but a state.
constexpr std::string_view kDoEstado = "rCFVerificarStatus_ZEL";

std::timespec agora() {
    std::timespec momento{};
    ::clock_gettime(CLOCK_MONOTONIC, &momento);
    return momento;
}

// "0.812 ms"
std::string duracao(const std::timespec &inicio) {
    const std::timespec fim = agora();
    const double segundos = static_cast<double>(fim.tv_sec - inicio.tv_sec);
    const double nanos = static_cast<double>(fim.tv_nsec - inicio.tv_nsec);
    return formatarDecimal(segundos * 1e3 + nanos / 1e6, 3) + " ms";
}

std::string resposta(std::string_view funcao, int codigo) {
    std::string texto = std::string(funcao) + ": ";
    if (funcao == kDoEstado) return texto += "estado " + formatarInteiro(codigo);
    texto += formatarInteiro(codigo);
    const std::string_view nome = nomeDoCodigo(codigo);
    return nome.empty() ? texto : texto.append(" ").append(nome);
}

} // namespace

std::string_view nomeDoCodigo(int codigo) {
    for (const auto &[numero, nome] : kNomes)
        if (numero == codigo) return nome;
    return {};
}

Chamada::Chamada(std::string_view funcao) noexcept : nivel_(nivelDoLog()), funcao_(funcao) {
    if (nivel_ == NivelLog::kDesligado) return;
    esquecerRecusa(true);
    if (nivel_ == NivelLog::kChamadas) inicio_ = agora();
}

Chamada::~Chamada() {
    if (nivel_ != NivelLog::kDesligado) esquecerRecusa(false);
}

int Chamada::responder(int codigo) noexcept {
    if (nivel_ == NivelLog::kDesligado) return codigo;
    try {
        auto motivo = codigo > 0 ? std::nullopt : textoDaRecusa(codigo, fnConfigurarPath);
        if (codigo < 0 && !motivo) motivo = "motivo não registrado";
        if (!motivo && nivel_ != NivelLog::kChamadas) return codigo;
        std::string texto = resposta(funcao_, codigo);
        if (motivo) entregarRecusa(texto + ": " + *motivo);
        if (nivel_ == NivelLog::kChamadas) texto += ", " + duracao(inicio_);
        registrarLog(motivo ? texto + ": " + *motivo : texto);
    } catch (...) {
        if (codigo <= 0) entregarRecusa({}); // memory ran out for a line
    }
    return codigo;
}

} // namespace zel
