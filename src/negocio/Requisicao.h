// SPDX-License-Identifier: MIT
// The requests that go to the tax authority beside the documents: cancellation event, inutilization
// and consultation, the latter with parameters for the sending component. Owns the form of the four
// texts, plain XML without declaration or namespace, and their way out; what goes into one is its
// operation's.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

namespace zel {

enum class Requisicao { kCancelamento, kInutilizacao, kConsulta, kParametrosConsulta };

// What varies from request to request, as plain characters already cut to their fields. A request
// reads its own and leaves the others alone.
struct DadosRequisicao {
    std::string numero;
    std::string serie;
    std::string chave;
    std::string protocolo;
    std::string justificativa;
    std::string dataHora; // of the event, local
    std::string fusoHorario;
    std::string numeroInicial;
    std::string numeroFinal;
    std::string dataInicial;
    std::string dataFinal;
    bool porNumero = false; // the consultation is by number
};

// The text of a request. Issuer and environment come from the configuration as they stand there.
std::string escreverRequisicao(Requisicao qual, const DadosRequisicao &dados);

// Replaces the file of the request by its text (parametrosEnvio.xml for the parameters of a
// consultation, documentosEnvio.xml for the others), then keeps the history copies of what is sent.
// ZEL_OK or ZEL_ARQUIVO_INDISPONIVEL.
int enviarRequisicao(Requisicao qual, const DadosRequisicao &dados);

} // namespace zel
