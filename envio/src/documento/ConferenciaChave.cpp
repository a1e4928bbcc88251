// SPDX-License-Identifier: MIT
#include "comum/Ascii.h"
#include "comum/ChaveAcesso.h"
#include "comum/Digitos.h"
#include "comum/Estados.h"
#include "comum/Zeros.h"
#include "documento/ConferenciaPartes.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace zel::envio {

namespace {

using Parte = ChaveAcesso::Parte;

// A part of the key and the elements that it repeats, the first one that is there. MOC 7.0, B01 to
// C02a.
struct ParteDaChave {
    Parte parte;
    std::string_view caminho, ouEste;
};
constexpr ParteDaChave kPartes[] = {
    {Parte::kCUF, "ide/cUF", ""},       {Parte::kCNPJ, "emit/CNPJ", "emit/CPF"},
    {Parte::kMod, "ide/mod", ""},       {Parte::kSerie, "ide/serie", ""},
    {Parte::kNNF, "ide/nNF", ""},       {Parte::kAAMM, "ide/dhEmi", ""},
    {Parte::kTpEmis, "ide/tpEmis", ""}, {Parte::kCNF, "ide/cNF", ""},
    {Parte::kCDV, "ide/cDV", ""},
};

// Codes that are no random number (897); equal digits besides.
constexpr std::string_view kSequencias[] = {
    "12345678", "23456789", "34567890", "45678901", "56789012",
    "67890123", "78901234", "89012345", "90123456", "01234567",
};

// As the key has it: zeros on the left, and of a moment year and month.
std::string naForma(Parte parte, const std::string &valor) {
    if (parte != Parte::kAAMM) return comZeros(valor, ChaveAcesso::digitos(parte));
    return valor.size() < 7 ? valor : valor.substr(2, 2) + valor.substr(5, 2);
}

bool conferirCodigo(const No &ide, Recusas &recusas) {
    const std::string cNF = ide.texto("cNF");
    if (cNF.empty()) return true;
    const bool iguais = cNF.find_first_not_of(cNF.front()) == cNF.npos;
    const bool sequencia =
        std::find(std::begin(kSequencias), std::end(kSequencias), cNF) != std::end(kSequencias);
    const bool numero = cNF == comZeros(ide.texto("nNF"), cNF.size());
    if (!iguais && !sequencia && !numero) return true;
    return recusas.juntar(lugarDe(ide, "cNF"), cNF,
                          iguais      ? "tem os dígitos todos iguais (rejeição 897)"
                          : sequencia ? "é uma sequência de dígitos (rejeição 897)"
                                      : "é igual a nNF (rejeição 897)");
}

bool ehGtinOuSem(std::string_view texto) {
    return texto == "SEM GTIN" || ehGtin(texto);
}

bool ehMunicipioOuExterior(std::string_view texto) {
    return texto == "9999999" || ehMunicipio(texto);
}

// Texts that end with their check digits. MOC 7.0.
struct Numero {
    std::string_view caminho;
    bool (*serve)(std::string_view);
    std::string_view rejeicao = {};
};
constexpr Numero kDoDocumento[] = {
    {"ide/cMunFG", ehMunicipio},
    {"emit/CNPJ", ehCnpj},
    {"emit/CPF", ehCpf},
    {"emit/enderEmit/cMun", ehMunicipio},
    {"dest/CNPJ", ehCnpj},
    {"dest/CPF", ehCpf},
    {"dest/enderDest/cMun", ehMunicipioOuExterior},
    {"transp/transporta/CNPJ", ehCnpj},
    {"transp/transporta/CPF", ehCpf},
    {"infIntermed/CNPJ", ehCnpj},
    {"infRespTec/CNPJ", ehCnpj},
};
constexpr Numero kDoItem[] = {{"prod/cEAN", ehGtinOuSem, "611"},
                              {"prod/cEANTrib", ehGtinOuSem, "612"}};
constexpr Numero kDoPagamento[] = {{"card/CNPJ", ehCnpj}};

template <std::size_t N>
void conferirDigitos(const No &no, const Numero (&numeros)[N], Recusas &recusas) {
    for (const auto &[caminho, serve, rejeicao] : numeros) {
        const std::string valor = no.texto(caminho);
        if (valor.empty() || serve(valor)) continue;
        std::string motivo = "o tamanho ou o dígito verificador não confere";
        if (!rejeicao.empty()) motivo += " (rejeição " + std::string(rejeicao) + ')';
        recusas.juntar(lugarDe(no, caminho), valor, motivo);
    }
}

void conferirGtin(const No &det, Recusas &recusas) {
    conferirDigitos(det, kDoItem, recusas);
    for (const auto &[caminho, rejeicao] :
         {std::pair{"prod/cEAN", "883"}, std::pair{"prod/cEANTrib", "884"}})
        if (det.texto(caminho).empty())
            recusas.juntar(lugarDe(det, caminho), "",
                           "falta ou está vazio: o produto sem código tem SEM GTIN (rejeição " +
                               std::string(rejeicao) + ')');
}

void conferirEstado(const No &infNFe, Recusas &recusas) {
    const std::string cUF = infNFe.texto("ide/cUF");
    const std::string UF = infNFe.texto("emit/enderEmit/UF");
    const Estado *estado = procurarEstado(UF);
    if (estado != nullptr && estado->codigo != cUF)
        recusas.juntar(lugarDe(infNFe, "emit/enderEmit/UF"), UF,
                       "ide/cUF é " + cUF + ", o código de " + UF + " é " +
                           std::string(estado->codigo));
    for (const char *caminho : {"ide/cMunFG", "emit/enderEmit/cMun"})
        if (const std::string cMun = infNFe.texto(caminho); !cMun.empty() && !cMun.starts_with(cUF))
            recusas.juntar(lugarDe(infNFe, caminho), cMun,
                           "o município não é do estado de ide/cUF, " + cUF);
}

} // namespace

bool conferirChave(const No &infNFe, Recusas &recusas) {
    const std::string id = infNFe.atributo("Id");
    bool certa = conferirCodigo(infNFe.filho("ide"), recusas);
    const auto chave =
        id.starts_with("NFe") ? ChaveAcesso::ler(std::string_view(id).substr(3)) : std::nullopt;
    if (!chave)
        return recusas.juntar(infNFe.caminho() + "/@Id", id, "não é NFe seguido de 44 dígitos");
    if (!chave->integra())
        certa = recusas.juntar(infNFe.caminho() + "/@Id", id,
                               "o último dígito da chave devia ser " +
                                   std::string(1, chave->digitoCerto()));
    for (const auto &[parte, caminho, ouEste] : kPartes) {
        const std::string_view este = infNFe.filho(caminho) || ouEste.empty() ? caminho : ouEste;
        const std::string valor = infNFe.texto(este);
        if (naForma(parte, valor) == chave->parte(parte)) continue;
        if (parte == Parte::kCDV && !chave->integra()) continue; // said of the key
        certa = recusas.juntar(lugarDe(infNFe, este), valor,
                               "a chave tem " + std::string(chave->parte(parte)) + " neste lugar");
    }
    return certa;
}

void conferirNumeros(const No &infNFe, const std::vector<No> &itens, Recusas &recusas) {
    conferirDigitos(infNFe, kDoDocumento, recusas);
    conferirEstado(infNFe, recusas);
    for (const No &det : itens)
        conferirGtin(det, recusas);
    for (const No &detPag : primeiros(infNFe.filho("pag").filhos("detPag"), kMaisPagamentos))
        conferirDigitos(detPag, kDoPagamento, recusas);
}

} // namespace zel::envio
