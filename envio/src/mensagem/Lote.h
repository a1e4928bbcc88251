// SPDX-License-Identifier: MIT
// The messages that the services take, around what was signed: the signed bytes stand in them
// unchanged. Source: Manual de Orientação do Contribuinte 7.0, Anexo I; schemas 4.00.
#pragma once

#include "config/Enderecos.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace zel::envio {

// enviNFe of one document, asked for at once (indSinc 1). `nfe`: the signed NFe, bytes from "<NFe"
// to "</NFe>". `lote`: 1 to 15 digits.
std::string loteDe(std::string_view nfe, std::int64_t lote);
// consReciNFe, consSitNFe, consStatServ. `tpAmb` "1" or "2", `cUF` two digits.
std::string consultaDoRecibo(std::string_view recibo, std::string_view tpAmb);
std::string consultaDaChave(std::string_view chave, std::string_view tpAmb);
std::string consultaDoServico(std::string_view cUF, std::string_view tpAmb);

// Namespace and method of a service: "NFeAutorizacao4", "nfeAutorizacaoLote". `uf` in two letters:
// a few states have names of their own. Empty where it is no service but an address to look at.
struct Metodo {
    std::string_view servico, metodo;
};
Metodo metodoDe(Servico servico, std::string_view uf = {});

inline constexpr std::string_view kEspacoServicos = "http://www.portalfiscal.inf.br/nfe/wsdl/";

// SOAP 1.2 around a message; and what stands in nfeResultMsg of an answer (or, of authorities that
// leave it out, in the body; or, of some, as a text within): UTF-8 bytes of that element. Empty,
// with a reason in Portuguese, when there is none; a Fault gives its text as the reason, shortened
// and without its long numbers, which are those of persons and documents.
std::string envelopeDe(std::string_view espaco, std::string_view mensagem);
std::string corpoDe(std::string_view resposta, std::string &motivo);

} // namespace zel::envio
