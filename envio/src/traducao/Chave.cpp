// SPDX-License-Identifier: MIT
#include "traducao/Chave.h"

#include "base/Texto.h"
#include "comum/ChaveAcesso.h"
#include "comum/Digitos.h"
#include "comum/Estados.h"
#include "comum/Zeros.h"

#include <algorithm>
#include <string>
#include <utility>

namespace zel::envio {

namespace {

using Parte = ChaveAcesso::Parte;

constexpr const char *kNaoMuda =
    ", e ela não pode mudar: traduza o documento como o caixa o gravou";

struct ParteDe {
    Parte parte;
    std::string_view caminho;
};

// In the order of the key; year and month are looked at apart.
constexpr ParteDe kPartes[] = {
    {Parte::kCUF, "ide/cUF"},     {Parte::kCNPJ, "emit/CNPJ"}, {Parte::kMod, "ide/mod"},
    {Parte::kSerie, "ide/serie"}, {Parte::kNNF, "ide/nNF"},    {Parte::kTpEmis, "ide/tpEmis"},
    {Parte::kCNF, "ide/cNF"},     {Parte::kCDV, "ide/cDV"},
};

std::string digitosDe(const std::string &texto) {
    std::string digitos;
    std::copy_if(texto.begin(), texto.end(), std::back_inserter(digitos), ehDigito);
    return digitos;
}

std::string_view semZeros(std::string_view digitos) {
    while (digitos.size() > 1 && digitos.front() == '0')
        digitos.remove_prefix(1);
    return digitos;
}

void conferirPartes(const No &infNFe, const ChaveAcesso &chave, Recusas &recusas) {
    for (const auto &[parte, caminho] : kPartes) {
        const std::string escrito = aparar(infNFe.texto(caminho));
        const std::string naChave(chave.parte(parte));
        if (comZeros(digitosDe(escrito), naChave.size()) != naChave)
            recusas.juntar(caminho, escrito, "a chave diz " + naChave + kNaoMuda);
    }
    const std::string dhEmi = aparar(infNFe.texto("ide/dhEmi"));
    const std::string_view AAMM = chave.parte(Parte::kAAMM);
    if (dhEmi.size() >= 7 && dhEmi.substr(2, 2) + dhEmi.substr(5, 2) != AAMM)
        recusas.juntar("ide/dhEmi", dhEmi, "a chave diz ano e mês " + std::string(AAMM) + kNaoMuda);
}

} // namespace

bool codigoRecusado(std::string_view cNF, std::string_view nNF) {
    if (semZeros(cNF) == semZeros(nNF)) return true;
    const auto saltoDe = [&](std::size_t i) { return (cNF[i] - cNF[i - 1] + 10) % 10; };
    const int salto = cNF.size() < 2 ? 2 : saltoDe(1);
    if (salto > 1) return false;
    for (std::size_t i = 2; i < cNF.size(); ++i)
        if (saltoDe(i) != salto) return false;
    return true;
}

std::string conferirChave(const No &infNFe, Recusas &recusas) {
    constexpr std::string_view kPrefixo = "NFe";
    const std::string id = infNFe.atributo("Id");
    const auto chave = id.starts_with(kPrefixo)
                           ? ChaveAcesso::ler(std::string_view(id).substr(kPrefixo.size()))
                           : std::nullopt;
    if (!chave) {
        recusas.juntar(
            "infNFe/@Id", id,
            "não é NFe e os 44 dígitos da chave: traduza o documento como o caixa o gravou");
        return {};
    }
    if (!chave->integra())
        recusas.juntar(
            "infNFe/@Id", id,
            "o dígito de controle da chave não confere: traduza o documento como o caixa o "
            "gravou");
    conferirPartes(infNFe, *chave, recusas);
    const std::string cNF = aparar(infNFe.texto("ide/cNF"));
    if (codigoRecusado(cNF, aparar(infNFe.texto("ide/nNF"))))
        recusas.juntar(
            "ide/cNF", cNF,
            "é igual a nNF, de dígitos iguais ou seguidos (rejeição 897): configure outro "
            "IDE\\cNF em ZEL_Framework.xml");
    const std::string UF = aparar(infNFe.texto("emit/enderEmit/UF"));
    const Estado *estado = procurarEstado(UF);
    if (estado != nullptr && estado->codigo != chave->parte(Parte::kCUF))
        recusas.juntar("emit/enderEmit/UF", UF,
                       "o código deste estado é " + std::string(estado->codigo) +
                           ", e IDE\\cUF de ZEL_Framework.xml é " +
                           std::string(chave->parte(Parte::kCUF)));
    for (const auto &[caminho, remedio] :
         {std::pair{"ide/cMunFG", ": corrija IDE\\cMunFG de ZEL_Framework.xml"},
          std::pair{"emit/enderEmit/cMun", ": corrija EMIT\\ENDEREMIT\\cMun de ZEL_Framework.xml"}})
        if (const std::string cMun = aparar(infNFe.texto(caminho));
            ehMunicipio(cMun) && !cMun.starts_with(chave->parte(Parte::kCUF)))
            recusas.juntar(caminho, cMun, std::string("o município é de outro estado") + remedio);
    return std::string(chave->texto());
}

} // namespace zel::envio
