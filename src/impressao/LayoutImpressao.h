// SPDX-License-Identifier: MIT
// Where a consumer checks a receipt: the address of the state's page, and the content of the QR
// code with the hash that proves the emitter knows its taxpayer token. Addresses and token are
// configuration; `ambiente` is that of CupomFiscal.h.
#pragma once

#include "impressao/CupomFiscal.h"

#include <string>
#include <string_view>

namespace zel {

// The address for the emitter's state into `endereco`: the page where a person types the access
// key (`consultaPorChave`), where the state has one, otherwise the one that the QR code opens; with
// an `ambiente` other than 1 and 2 the link delivered with the authorization. ZEL_OK, or
// ZEL_RECUSADO with an empty address when the configuration has no such state.
int retornarEnderecoConsulta(const CupomFiscal &cf, int ambiente, std::string &endereco,
                             bool consultaPorChave);

// The QR-code content: `baseUrl`, "?" and the parameters with their hash; in environment 3
// `baseUrl` alone, the delivered link.
std::string gerarUrlQrcode(const CupomFiscal &cf, std::string_view baseUrl);

// The same with the consultation address of the environment.
std::string gerarUrlQrcode(const CupomFiscal &cf);

// SHA-1 in 40 upper-case hexadecimal digits over the parameters and the taxpayer token in UTF-8;
// "?" stands in front except for the states SP, RS and MT.
std::string calcularHashCodeFromURL(std::string_view parametros, std::string_view uf);

// "CNPJ-" or "CPF- " and the number with its punctuation.
std::string retornaCnpjCpfFormatado(std::string_view digitos);

} // namespace zel
