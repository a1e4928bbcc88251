// SPDX-License-Identifier: MIT
#include "impressao/LayoutImpressao.h"

#include "config/Registro.h"
#include "impressao/Linha.h"
#include "impressao/ValorImpresso.h"
#include "texto/Codificacao.h"
#include "texto/Codigos.h"
#include "texto/Numero.h"
#include "texto/Texto.h"
#include "zel_felbor/codigos.h"

#include <algorithm>

namespace zel {

namespace {

// Keys of a state's addresses under "URLS\UF".
struct ChavesEndereco {
    std::string_view portal;
    std::string_view porChave;
};

constexpr ChavesEndereco kChavesProducao{"Producao", "ChaveConsultaProducao"};
constexpr ChavesEndereco kChavesHomologacao{"Homologacao", "ChaveConsultaHomologacao"};

// These states take the hash over the parameters alone: the convention of the tills in use, for
// which no public page is known.
constexpr std::string_view kUFsSemInterrogacao[] = {"SP", "RS", "MT"};

constexpr std::size_t kTamanhoMinimoCNPJ = 16; // punctuated

int lerEndereco(std::string_view uf, std::string_view chave, std::string &endereco) {
    endereco.clear();
    std::string caminho;
    anexar(caminho, R"(URLS\)", uf, R"(\)", chave);
    const int lido = fnRegRetornarValor_ZEL(caminho, endereco);
    endereco = textoImpresso(endereco);
    return lido;
}

} // namespace

int retornarEnderecoConsulta(const CupomFiscal &cf, int ambiente, std::string &endereco,
                             bool consultaPorChave) {
    if (ambiente != kProducao && ambiente != kHomologacao) {
        endereco = cf.LinkNFCe;
        return ZEL_OK;
    }
    const auto &[portal, porChave] = ambiente == kProducao ? kChavesProducao : kChavesHomologacao;
    if (consultaPorChave) {
        const int lido = lerEndereco(cf.EmitUF, porChave, endereco);
        if (!endereco.empty()) return lido;
    }
    return lerEndereco(cf.EmitUF, portal, endereco);
}

// The address of the QR code, its parameters in their order and the hash over them, version 100:
// NT 2015.002 and Manual de Padrões Técnicos do DANFE-NFC-e e QR Code 3.x.
std::string gerarUrlQrcode(const CupomFiscal &cf, std::string_view baseUrl) {
    if (cf.ambiente() == kLinkPronto) return std::string(baseUrl);
    std::string parametros;
    anexar(parametros, "chNFe=", cf.ChaveDeAcesso, "&nVersao=100&tpAmb=", cf.TipoAmbiente);
    if (!cf.IdDest.vazio()) anexar(parametros, "&cDest=", fnRetirarCaracter(cf.IdDest));
    anexar(parametros, "&dhEmi=", fnConverterParaHexa(cf.DataHora),
           "&vNF=", formatarMoeda(cf.ValorTotal), "&vICMS=", cf.TotalICMS,
           "&digVal=", fnConverterParaHexa(cf.DigestValueAutorizado),
           "&cIdToken=", valorImpresso(R"(CONFIGURACAO\IDTokenSefaz)"_chave));
    std::string url;
    anexar(url, baseUrl, "?", parametros,
           "&cHashQRCode=", calcularHashCodeFromURL(parametros, cf.EmitUF));
    return url;
}

std::string gerarUrlQrcode(const CupomFiscal &cf) {
    std::string endereco;
    // Without an address the receipt shows the parameters alone.
    retornarEnderecoConsulta(cf, cf.ambiente(), endereco, false);
    return gerarUrlQrcode(cf, endereco);
}

std::string calcularHashCodeFromURL(std::string_view parametros, std::string_view uf) {
    const bool semInterrogacao =
        std::ranges::find(kUFsSemInterrogacao, uf) != std::end(kUFsSemInterrogacao);
    std::string texto;
    anexar(texto, semInterrogacao ? "" : "?", parametros,
           valorImpresso(R"(CONFIGURACAO\TokenSefaz)"_chave));
    return fnConvertSHA1_HEXA(fnConvertToSHA1(fnParseToUtf8(texto)));
}

std::string retornaCnpjCpfFormatado(std::string_view digitos) {
    const std::string formatado = fnFormatarCPFCNPJ(digitos);
    return (formatado.size() < kTamanhoMinimoCNPJ ? "CPF- " : "CNPJ-") + formatado;
}

} // namespace zel
