// SPDX-License-Identifier: MIT
#include "emissao/Cabecalho.h"

#include "comum/ChaveAcesso.h"
#include "recusa/Recusa.h"
#include "texto/HoraLocal.h"
#include "texto/Numero.h"
#include "texto/Texto.h"
#include "texto/TextoXml.h"
#include "zel_felbor/codigos.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

namespace zel {

namespace {

constexpr std::string_view kNamespaceNFe = "http://www.portalfiscal.inf.br/nfe";
constexpr long long kMaiorNumero = 999999999;
constexpr long long kMaiorCodigo = 99999999;

constexpr Chave kNumero = R"(IDE\nNF)"_chave;
constexpr Chave kCodigo = R"(IDE\cNF)"_chave;

// An element whose value is a configuration value, as it stands.
struct ElementoConfig {
    std::string_view nome;
    Chave chave;
};

constexpr std::array<ElementoConfig, 7> kEndereco{{
    {"xLgr", R"(EMIT\ENDEREMIT\xLgr)"_chave},
    {"nro", R"(EMIT\ENDEREMIT\Nro)"_chave},
    {"xBairro", R"(EMIT\ENDEREMIT\xBairro)"_chave},
    {"cMun", R"(EMIT\ENDEREMIT\cMun)"_chave},
    {"xMun", R"(EMIT\ENDEREMIT\xMun)"_chave},
    {"UF", R"(EMIT\ENDEREMIT\UF)"_chave},
    {"CEP", R"(EMIT\ENDEREMIT\CEP)"_chave},
}};

// What varies from document to document.
struct Emissao {
    long long numero = 0;
    long long codigo = 0;
    std::tm local{};
    std::optional<ChaveAcesso> chave;
};

// An element without a value is left out.
void elemento(std::string &texto, std::string_view nome, std::string_view valor) {
    if (valor.empty()) return;
    texto.append("<").append(nome).append(">").append(valor);
    texto.append("</").append(nome).append(">");
}

void elementoConfig(std::string &texto, const ElementoConfig &origem) {
    elemento(texto, origem.nome, valorXml(valorConfig(origem.chave)));
}

std::string comZeros(Chave chave, std::size_t largura) {
    const std::string_view valor = valorConfig(chave);
    return valor.empty() ? std::string{} : fnZerosLeft(valor, largura);
}

int recusarNumero(const Emissao &emissao) {
    return recusar(Motivo::kNumeroDaNota, {.numero = emissao.numero});
}

// Decides on number and numeric code. ZEL_OK, or ZEL_RECUSADO when the number has nowhere to go.
int numerar(int tipo, Emissao &emissao, std::vector<Alteracao> &numeracao) {
    emissao.numero = lerInteiro(valorConfig(kNumero));
    emissao.codigo = lerInteiro(valorConfig(kCodigo));
    const bool automatica =
        lerInteiro(valorConfig(R"(CONFIGURACAO\NumeracaoAutomatica)"_chave)) == 1;
    if (automatica && tipo != kContingencia && tipo != kMesmaNumeracao) {
        ++emissao.numero;
        numeracao.push_back({kNumero, formatarInteiro(emissao.numero)});
    }
    if (tipo != kMesmaNumeracao) {
        emissao.codigo = emissao.codigo >= kMaiorCodigo ? 1 : emissao.codigo + 1;
        numeracao.push_back({kCodigo, formatarInteiro(emissao.codigo)});
    }
    return emissao.numero > kMaiorNumero ? recusarNumero(emissao) : int{ZEL_OK};
}

// None when the configuration holds values that give no key.
std::optional<ChaveAcesso> montarChave(const Emissao &emissao) {
    using Parte = ChaveAcesso::Parte;
    const auto completar = [](std::string_view valor, Parte parte) {
        return fnZerosLeft(valor, ChaveAcesso::digitos(parte));
    };
    return ChaveAcesso::montar({
        .cUF = completar(valorConfig(R"(IDE\cUF)"_chave), Parte::kCUF),
        .AAMM = formatarInteiro(emissao.local.tm_year % 100, 2) +
                formatarInteiro(emissao.local.tm_mon + 1, 2),
        .CNPJ = completar(valorConfig(R"(EMIT\CNPJ)"_chave), Parte::kCNPJ),
        .mod = completar(valorConfig(R"(IDE\Mod)"_chave), Parte::kMod),
        .serie = completar(valorConfig(R"(IDE\Serie)"_chave), Parte::kSerie),
        .nNF = completar(formatarInteiro(emissao.numero), Parte::kNNF),
        .tpEmis = std::string(valorConfig(R"(IDE\tpEmis)"_chave)),
        .cNF = completar(formatarInteiro(emissao.codigo), Parte::kCNF),
    });
}

// Names the value that has no place in the key.
int recusarChave(const Emissao &emissao) {
    struct Parte {
        Chave chave;
        std::string_view nome;
        int minimo, maximo;
    };
    constexpr std::array<Parte, 5> kPartes{{
        {R"(IDE\cUF)"_chave, R"(IDE\cUF)", 0, 2},
        {R"(EMIT\CNPJ)"_chave, R"(EMIT\CNPJ)", 0, 14},
        {R"(IDE\Mod)"_chave, R"(IDE\Mod)", 0, 2},
        {R"(IDE\Serie)"_chave, R"(IDE\Serie)", 0, 3},
        {R"(IDE\tpEmis)"_chave, R"(IDE\tpEmis)", 1, 1},
    }};
    for (const Parte &parte : kPartes) {
        const std::string_view valor = valorConfig(parte.chave);
        const auto tamanho = static_cast<int>(valor.size());
        if (areDigit(valor) && tamanho >= parte.minimo && tamanho <= parte.maximo) continue;
        return recusar(
            Motivo::kParteDaChave,
            {.campo = parte.nome, .dado = valor, .minimo = parte.minimo, .maximo = parte.maximo});
    }
    return recusarNumero(emissao); // or code: below zero
}

void escreverIde(std::string &texto, int tipo, const Emissao &emissao) {
    const std::string emissaoDh = dataHora(emissao.local) + fusoHorario(emissao.local);
    const std::string_view ambiente = valorConfig(R"(CONFIGURACAO\TipoAmbiente)"_chave);
    const std::string_view serie = valorConfig(R"(IDE\Serie)"_chave);
    texto += "<ide>";
    elemento(texto, "cUF", comZeros(R"(IDE\cUF)"_chave, 2));
    elemento(texto, "cNF", formatarInteiro(emissao.codigo, 8));
    elementoConfig(texto, {"natOp", R"(IDE\natOP)"_chave});
    elemento(texto, "indPag", "0");
    elemento(texto, "mod", comZeros(R"(IDE\Mod)"_chave, 2));
    elemento(texto, "serie", serie.empty() ? "" : formatarInteiro(lerInteiro(serie)));
    elemento(texto, "nNF", formatarInteiro(emissao.numero));
    elemento(texto, "dhEmi", emissaoDh);
    elementoConfig(texto, {"tpNF", R"(IDE\tpNF)"_chave});
    elementoConfig(texto, {"idDest", R"(IDE\idDest)"_chave});
    elementoConfig(texto, {"cMunFG", R"(IDE\cMunFG)"_chave});
    elementoConfig(texto, {"tpImp", R"(IDE\tpImp)"_chave});
    elementoConfig(texto, {"tpEmis", R"(IDE\tpEmis)"_chave});
    elemento(texto, "cDV", emissao.chave->parte(ChaveAcesso::Parte::kCDV));
    elemento(texto, "tpAmb", ambiente == "3" ? "2" : valorXml(ambiente));
    elementoConfig(texto, {"finNFe", R"(IDE\finNfe)"_chave});
    elementoConfig(texto, {"indFinal", R"(IDE\indFinal)"_chave});
    elementoConfig(texto, {"indPres", R"(IDE\indPres)"_chave});
    elemento(texto, "procEmi", "0");
    elementoConfig(texto, {"verProc", R"(IDE\verProc)"_chave});
    if (tipo != kNormal || valorConfig(R"(IDE\tpEmis)"_chave) == "9") {
        elemento(texto, "dhCont", emissaoDh);
        elementoConfig(texto, {"xJust", R"(IDE\xJust)"_chave});
    }
    texto += "</ide>";
}

void escreverEmit(std::string &texto) {
    texto += "<emit>";
    elementoConfig(texto, {"CNPJ", R"(EMIT\CNPJ)"_chave});
    elementoConfig(texto, {"xNome", R"(EMIT\xNome)"_chave});
    texto += "<enderEmit>";
    for (const ElementoConfig &origem : kEndereco)
        elementoConfig(texto, origem);
    texto += "</enderEmit>";
    elementoConfig(texto, {"IE", R"(EMIT\IE)"_chave});
    elementoConfig(texto, {"CRT", R"(EMIT\CRT)"_chave});
    texto += "</emit>";
}

} // namespace

std::string fusoHorario(const std::tm &local) {
    const bool configurado =
        lerInteiro(valorConfig(R"(CONFIGURACAO\TIMEZONESERVIDOR\Utilizar)"_chave)) == 1;
    const long long horas =
        configurado ? lerInteiro(valorConfig(R"(CONFIGURACAO\TIMEZONESERVIDOR\Valor)"_chave))
                    : -local.tm_gmtoff / 3600;
    return '-' + formatarInteiro(std::max<long long>(horas, 0), 2) + ":00";
}

int cabecalhoZEL(int tipo, std::time_t momento, Cabecalho &cabecalho) {
    cabecalho = {};
    if (tipo == kRecusado) return recusar(Motivo::kTipoDeEmissao, {.numero = tipo});
    if (tipo < kNormal || tipo > kMesmaNumeracao) return 0;

    Emissao emissao;
    const std::optional<std::tm> local = horaLocal(momento);
    if (!local) return recusar(Motivo::kRelogio);
    emissao.local = *local;
    if (const int numerado = numerar(tipo, emissao, cabecalho.numeracao); numerado != ZEL_OK)
        return numerado;
    emissao.chave = montarChave(emissao);
    if (!emissao.chave) return recusarChave(emissao);

    cabecalho.chave = emissao.chave->texto();
    std::string &texto = cabecalho.texto;
    texto.append("<NFe xmlns=\"").append(kNamespaceNFe);
    texto.append("\"><infNFe Id=\"NFe").append(cabecalho.chave).append("\" versao=\"3.10\">");
    escreverIde(texto, tipo, emissao);
    escreverEmit(texto);
    return ZEL_OK;
}

} // namespace zel
