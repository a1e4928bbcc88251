// SPDX-License-Identifier: MIT
// A message goes out to a service of the authority and its answer comes back, or it does not; of
// what did not come it matters whether the authority may have the message all the same.
#pragma once

#include <chrono>
#include <string>

namespace zel::envio {

struct Remessa {
    std::string endereco; // https
    std::string espaco;   // namespace of the service: ".../nfe/wsdl/NFeAutorizacao4"
    std::string metodo;   // "nfeAutorizacaoLote"
    std::string mensagem; // XML in UTF-8 without a declaration
};

enum class Chegada {
    kResposta,    // an answer came whole: `corpo` is the element within nfeResultMsg
    kNaoEnviado,  // no byte of the message can have reached it: name, connection, TLS, their
                  // certificate
    kSemResposta, // it went out, or a part of it, and nothing usable came back: it may be there
    kCertificado, // the authority refuses our certificate, or it cannot be used
};

struct Retorno {
    Chegada chegada = Chegada::kNaoEnviado;
    int http = 0;        // 0: none came
    std::string corpo{}; // UTF-8
    // Why, in Portuguese; without addresses of persons, secrets or the message.
    std::string motivo{};
    std::chrono::milliseconds demora{}; // from the first byte out to the last byte in
};

class Transporte {
public:
    virtual ~Transporte() = default;
    // Ends within `limite`, whatever the other side does.
    virtual Retorno pedir(const Remessa &remessa, std::chrono::milliseconds limite) = 0;
};

} // namespace zel::envio
