// SPDX-License-Identifier: MIT
// The requests that go to the tax authority beside the documents: cancellation event, inutilization
// and consultation, the latter with parameters for the sending component. Owns the form of the four
// texts, plain XML without declaration or namespace, their way out, and the inutilization; what
// goes into the others is their operations'.
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

// Writes the request to void a range of receipt numbers that no document will ever use to
// documentosEnvio.xml. Numbers up to 9 characters, series up to 3, justification up to 60; longer
// texts are cut. Any state, which stays. ZEL_OK; ZEL_CONFIG_ILEGIVEL; ZEL_ARGUMENTO_INVALIDO a null
// text; ZEL_ARQUIVO_INDISPONIVEL.
int fnCFInutilizar_ZEL_Felbor(std::string_view numeroInicial, std::string_view numeroFinal,
                              std::string_view serie, std::string_view justificativa);

} // namespace zel
