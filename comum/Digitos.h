// SPDX-License-Identifier: MIT
// Check digits of the numbers that identify a taxpayer, a place, a product or a document. The rules
// are those that the Receita Federal, the IBGE, GS1 and the NF-e manual publish. All take digits
// alone; anything else is not valid.
#pragma once

#include <string>
#include <string_view>

namespace zel {

// 14, respectively 11 digits that end with their two check digits and are not all alike.
bool ehCnpj(std::string_view texto);
bool ehCpf(std::string_view texto);

// Seven digits, the last one the check digit; nine municipalities have another one by law.
bool ehMunicipio(std::string_view texto);

// 8, 12, 13 or 14 digits, the last one the check digit.
bool ehGtin(std::string_view texto);

// Eight digits that begin as an NCM does: a chapter from 01 to 97, without 77, and a heading in it.
bool ehNcm(std::string_view texto);

// An access key that ends with its check digit.
bool ehChaveIntegra(std::string_view texto);

// The remainder modulo 11 of the digits multiplied by the weights, one character each ("A" is 10).
int restoPonderado(std::string_view digitos, std::string_view pesos);

} // namespace zel
