// SPDX-License-Identifier: MIT
#include "recusa/Mascara.h"

#include "texto/Numero.h"
#include "texto/Texto.h"

#include <algorithm>
#include <array>

namespace zel {

namespace {

// kCurto: what is longer than it can rightly be may be a person's name.
enum class Sigilo { kNenhum, kCurto, kDocumento, kPessoal, kSegredo };

struct LinhaSigilo {
    std::string_view campo;
    Sigilo sigilo;
};

// By the last name of a path, without regard to case. What identifies a person is this library's
// own judgement.
constexpr std::array<LinhaSigilo, 30> kSigilos{{
    {"CPF", Sigilo::kDocumento},
    {"CNPJ", Sigilo::kDocumento},
    {"idEstrangeiro", Sigilo::kDocumento},
    {"documento", Sigilo::kDocumento},
    {"IE", Sigilo::kDocumento},
    {"xNome", Sigilo::kPessoal},
    {"nome", Sigilo::kPessoal},
    {"xFant", Sigilo::kPessoal},
    {"xLgr", Sigilo::kPessoal},
    {"logradouro", Sigilo::kPessoal},
    {"nro", Sigilo::kPessoal},
    {"numero", Sigilo::kPessoal},
    {"xCpl", Sigilo::kPessoal},
    {"xBairro", Sigilo::kPessoal},
    {"bairro", Sigilo::kPessoal},
    {"xEnder", Sigilo::kPessoal},
    {"fone", Sigilo::kPessoal},
    {"email", Sigilo::kPessoal},
    {"infCpl", Sigilo::kPessoal},
    {"infAdFisco", Sigilo::kPessoal},
    {"xmlItem", Sigilo::kPessoal},
    {"documentoBase64", Sigilo::kPessoal},
    {"uf", Sigilo::kCurto},
    {"codigoMunicipio", Sigilo::kCurto},
    {"cMun", Sigilo::kCurto},
    {"municipio", Sigilo::kCurto},
    {"xMun", Sigilo::kCurto},
    {"CEP", Sigilo::kCurto},
    {"TokenSefaz", Sigilo::kSegredo},
    {"IDTokenSefaz", Sigilo::kSegredo},
}};

constexpr std::size_t kDigitosVisiveis = 3;
constexpr std::size_t kMaiorCurto = 10;

// Eleven or fourteen digits are taken for a person's number wherever they stand: an argument that
// got into the place of another is what calls are refused for.
bool pareceDocumento(std::string_view dado) {
    const std::size_t digitos = fnRetirarCaracter(dado).size();
    return (digitos == 11 || digitos == 14) && std::ranges::none_of(dado, [](char c) {
               return !ehDigito(c) && std::string_view("./- ").find(c) == std::string_view::npos;
           });
}

Sigilo sigiloDe(std::string_view campo, std::string_view dado) {
    campo = campo.substr(campo.rfind('\\') + 1);
    for (const LinhaSigilo &linha : kSigilos) {
        if (!igualSemCaixa(linha.campo, campo)) continue;
        if (linha.sigilo != Sigilo::kCurto) return linha.sigilo;
        if (dado.size() > kMaiorCurto && !pareceDocumento(dado)) return Sigilo::kPessoal;
    }
    return pareceDocumento(dado) ? Sigilo::kDocumento : Sigilo::kNenhum;
}

void emHexa(std::string &texto, unsigned char byte) {
    constexpr std::string_view kDigitos = "0123456789ABCDEF";
    texto.append("\\x").push_back(kDigitos[byte >> 4U]);
    texto.push_back(kDigitos[byte & 0xFU]);
}

void emUtf8(std::string &texto, char c) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '\n')
        texto += "\\n";
    else if (c == '\r')
        texto += "\\r";
    else if (c == '\t')
        texto += "\\t";
    else if (byte < 0x20 || (byte >= 0x7F && byte < 0xA0))
        emHexa(texto, byte);
    else if (byte < 0x80)
        texto.push_back(c);
    else {
        texto.push_back(static_cast<char>(0xC0U | (byte >> 6U)));
        texto.push_back(static_cast<char>(0x80U | (byte & 0x3FU)));
    }
}

// The bytes of the character that begins the text, where it is written in UTF-8 and is no control
// character; 0 otherwise.
std::size_t caractereUtf8(std::string_view texto) {
    const auto byte = [&](std::size_t i) {
        return i < texto.size() ? static_cast<unsigned char>(texto[i]) : 0U;
    };
    const unsigned a = byte(0), b = byte(1);
    const auto segue = [&](std::size_t i) { return (byte(i) & 0xC0U) == 0x80U; };
    if (a >= 0xC2 && a < 0xE0) return segue(1) && (a > 0xC2 || b >= 0xA0) ? 2 : 0;
    if (a >= 0xE0 && a < 0xF0) {
        const bool unica = (a != 0xE0 || b >= 0xA0) && (a != 0xED || b < 0xA0);
        return segue(1) && segue(2) && unica ? 3 : 0;
    }
    if (a < 0xF0 || a > 0xF4) return 0;
    const bool unica = (a != 0xF0 || b >= 0x90) && (a != 0xF4 || b < 0x90);
    return segue(1) && segue(2) && segue(3) && unica ? 4 : 0;
}

std::string comMascara(Sigilo sigilo, std::string_view dado) {
    if (sigilo == Sigilo::kSegredo) return "***";
    if (sigilo == Sigilo::kPessoal) return emUmaLinha(dado.substr(0, 1)) + "***";
    const std::string digitos = fnRetirarCaracter(dado);
    return digitos.substr(0, std::min(kDigitosVisiveis, digitos.size() / 2)) + "***";
}

} // namespace

std::string emUmaLinha(std::string_view latin1) {
    std::string texto;
    for (const char c : latin1)
        emUtf8(texto, c);
    return texto;
}

std::string caminhoEmUmaLinha(std::string_view caminho) {
    std::string texto;
    while (!caminho.empty()) {
        const std::size_t bytes = caractereUtf8(caminho);
        if (bytes > 0)
            texto.append(caminho.substr(0, bytes));
        else
            emUtf8(texto, caminho.front());
        caminho.remove_prefix(std::max<std::size_t>(bytes, 1));
    }
    return texto;
}

std::string mostrarDado(std::string_view campo, std::string_view dado, std::size_t tamanho) {
    if (dado.empty()) return "vazio";
    const Sigilo sigilo = sigiloDe(campo, dado);
    std::string texto = "\"";
    texto += sigilo == Sigilo::kNenhum ? emUmaLinha(dado.substr(0, kMaiorDado))
                                       : comMascara(sigilo, dado);
    return texto.append(sigilo == Sigilo::kNenhum && tamanho > kMaiorDado ? "…\"" : "\"");
}

} // namespace zel
