// SPDX-License-Identifier: MIT
// Every key of zel-envio.toml, section by section, with the member that it fills and what it may
// hold; lengths and values as schema 4.00 has them.
#pragma once

#include "comum/Digitos.h"
#include "comum/Estados.h"
#include "config/Configuracao.h"
#include "config/LeituraToml.h"
#include "config/Regras.h"

#include <array>
#include <string>

namespace zel::envio {

inline constexpr Regra kCnpj{ehCnpj, "é um CNPJ: 14 dígitos, com os dois verificadores certos"};
inline constexpr Regra kCaminho{ehCaminho, "é o caminho de um arquivo"};
inline constexpr Regra kSegredo{ehSegredo,
                                "é um segredo: até 128 letras, dígitos e sinais, sem brancos"};
inline constexpr Regra kPorcento{porcento, "é uma porcentagem, como \"18.00\", com até 4 casas"};
inline constexpr Regra kCst{digitos<3>, "tem 3 dígitos"};
inline constexpr Regra kClasse{digitos<6>, "tem 6 dígitos"};
inline constexpr Regra kDoisDigitos{digitos<2>, "tem 2 dígitos"};
inline constexpr Regra kTexto60{texto<2, 60>, "tem de 2 a 60 caracteres"};

inline constexpr std::array<Chave<Configuracao>, 3> kRaiz{{
    {"esquemas", &Configuracao::esquemas, kCaminho, Especie::kCaminho},
    {"cUF",
     &Configuracao::cUF,
     {[](std::string_view v) { return procurarEstadoPorCodigo(v) != nullptr; },
      "é o código IBGE de um estado, como \"43\""}},
    {"verAplic", &Configuracao::verAplic, {texto<1, 20>, "tem de 1 a 20 caracteres"}},
}};

inline constexpr std::array<Chave<ConfigCertificado>, 6> kCertificado{{
    {"arquivo", &ConfigCertificado::arquivo, kCaminho, Especie::kCaminho},
    {"senha_arquivo", &ConfigCertificado::arquivoSenha, kCaminho, Especie::kCaminhoDeSegredo},
    {"modulo", &ConfigCertificado::modulo, kCaminho, Especie::kCaminho},
    {"rotulo",
     &ConfigCertificado::rotulo,
     {texto<1, 255>, "é o rótulo da chave no token"},
     Especie::kSegredo},
    {"token", &ConfigCertificado::token, {texto<1, 32>, "é o rótulo do token"}, Especie::kSegredo},
    {"cadeia", &ConfigCertificado::cadeia, kCaminho, Especie::kCaminho},
}};

inline constexpr std::array<Chave<ConfigEmitente>, 2> kEmitente{{
    {"IM", &ConfigEmitente::IM, {texto<1, 15>, "tem de 1 a 15 caracteres"}},
    {"CNAE", &ConfigEmitente::CNAE, {digitos<7>, "tem 7 dígitos"}},
}};

inline constexpr std::array<Chave<ConfigQrCode>, 6> kQrCode{{
    {"versao",
     &ConfigQrCode::versao,
     {[](std::string_view v) { return umDe(v, "23"); }, "é 2 (com CSC) ou 3 (sem CSC)"}},
    {"id_csc",
     &ConfigQrCode::idCsc,
     {digitos<1, 6>, "é o número do CSC, de 1 a 6 dígitos: no caixa, CONFIGURACAO\\IDTokenSefaz"},
     Especie::kSegredo},
    {"csc", &ConfigQrCode::csc, kSegredo, Especie::kSegredo},
    {"csc_arquivo", &ConfigQrCode::arquivoCsc, kCaminho, Especie::kCaminhoDeSegredo},
    {"endereco",
     &ConfigQrCode::endereco,
     {ehEndereco, "começa por http:// ou https:// e, se tem \"?\", termina em \"?p=\""}},
    {"urlChave", &ConfigQrCode::urlChave, {texto<21, 85>, "tem de 21 a 85 caracteres"}},
}};

inline constexpr std::array<Chave<ConfigRespTec>, 7> kRespTec{{
    {"CNPJ", &ConfigRespTec::CNPJ, kCnpj},
    {"xContato", &ConfigRespTec::xContato, kTexto60},
    {"email", &ConfigRespTec::email, {texto<6, 60>, "tem de 6 a 60 caracteres"}},
    {"fone", &ConfigRespTec::fone, {digitos<6, 14>, "tem de 6 a 14 dígitos"}},
    {"idCSRT", &ConfigRespTec::idCSRT, kDoisDigitos, Especie::kSegredo},
    {"CSRT", &ConfigRespTec::CSRT, kSegredo, Especie::kSegredo},
    {"csrt_arquivo", &ConfigRespTec::arquivoCSRT, kCaminho, Especie::kCaminhoDeSegredo},
}};

inline constexpr std::array<Chave<Configuracao>, 3> kIntermediador{{
    {"indIntermed",
     &Configuracao::indIntermed,
     {[](std::string_view v) { return umDe(v, "01"); },
      "é 0 (venda própria) ou 1 (por intermediador)"}},
    {"CNPJ", &Configuracao::intermediadorCNPJ, kCnpj},
    {"idCadIntTran", &Configuracao::intermediadorId, kTexto60},
}};

inline constexpr std::array<Chave<ConfigPagamento>, 6> kPagamento{{
    {"tPag", &ConfigPagamento::tPag, kDoisDigitos},
    {"xPag", &ConfigPagamento::xPag, kTexto60},
    {"tpIntegra",
     &ConfigPagamento::tpIntegra,
     {[](std::string_view v) { return umDe(v, "12"); }, "é 1 (TEF) ou 2 (POS)"}},
    {"CNPJ", &ConfigPagamento::CNPJ, kCnpj},
    {"tBand", &ConfigPagamento::tBand, kDoisDigitos},
    {"cAut", &ConfigPagamento::cAut, {texto<1, 128>, "tem de 1 a 128 caracteres"}},
}};

inline constexpr std::array<Chave<ConfigProduto>, 14> kProduto{{
    {"CEST", &ConfigProduto::CEST, {digitos<7>, "tem 7 dígitos"}},
    {"indEscala",
     &ConfigProduto::indEscala,
     {[](std::string_view v) { return umDe(v, "SN"); }, "é S ou N"}},
    {"CNPJFab", &ConfigProduto::CNPJFab, kCnpj},
    {"cBenef",
     &ConfigProduto::cBenef,
     {[](std::string_view v) {
          return v == "SEM CBENEF" ||
                 ((texto<8, 8>(v) || texto<10, 10>(v)) && v.find(' ') == v.npos);
      },
      "tem 8 ou 10 caracteres sem brancos, ou é SEM CBENEF"}},
    {"CST", &ConfigProduto::CST, kCst},
    {"cClassTrib", &ConfigProduto::cClassTrib, kClasse},
    {"pST", &ConfigProduto::pST, kPorcento},
    {"vICMSSubstituto",
     &ConfigProduto::vICMSSubstituto,
     {[](std::string_view v) { return Decimal::ler(v).has_value(); },
      "é um valor por unidade, como \"1.25\""}},
    {"pFCP", &ConfigProduto::pFCP, kPorcento},
    {"pFCPST", &ConfigProduto::pFCPST, kPorcento},
    {"pFCPSTRet", &ConfigProduto::pFCPSTRet, kPorcento},
    {"indISS",
     &ConfigProduto::indISS,
     {[](std::string_view v) { return umDe(v, "1234567"); }, "é de 1 a 7"}},
    {"indIncentivo",
     &ConfigProduto::indIncentivo,
     {[](std::string_view v) { return umDe(v, "12"); }, "é 1 (sim) ou 2 (não)"}},
    {"cServico", &ConfigProduto::cServico, {texto<1, 20>, "tem de 1 a 20 caracteres"}},
}};

struct IbsCbsLido : ConfigIbsCbs {
    std::string arquivo;
};

inline constexpr std::array<Chave<IbsCbsLido>, 4> kIbsCbs{{
    {"desde",
     &IbsCbsLido::desde,
     {[](std::string_view v) { return v == "nunca" || ehData(v); },
      "é um dia, \"AAAA-MM-DD\", ou \"nunca\""}},
    {"CST", &IbsCbsLido::CST, kCst},
    {"cClassTrib", &IbsCbsLido::cClassTrib, kClasse},
    {"classes", &IbsCbsLido::arquivo, kCaminho, Especie::kCaminho},
}};

// Names as the table of addresses has them.
inline constexpr Regra kServico{ehServico,
                                "começa por https:// e não tem brancos, senha, \"?\" nem \"#\""};
inline constexpr Regra kNomeServico{
    [](std::string_view v) {
        return v.size() <= 60 && !v.empty() && std::all_of(v.begin(), v.end(), [](char c) {
                   return ehDigito(c) || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
               });
    },
    "é um nome de até 60 letras e dígitos"};
constexpr std::array<Chave<ConfigServicos>, 6> porServico(Regra regra) {
    return {{{"NfeAutorizacao", &ConfigServicos::autorizacao, regra},
             {"NfeRetAutorizacao", &ConfigServicos::retAutorizacao, regra},
             {"NfeInutilizacao", &ConfigServicos::inutilizacao, regra},
             {"NfeConsultaProtocolo", &ConfigServicos::consultaProtocolo, regra},
             {"NfeStatusServico", &ConfigServicos::statusServico, regra},
             {"RecepcaoEvento", &ConfigServicos::recepcaoEvento, regra}}};
}
inline constexpr auto kServicos = porServico(kServico), kNomesServicos = porServico(kNomeServico);

inline constexpr std::array<Chave<ConfigRede>, 2> kRede{{
    {"tempo_maximo",
     &ConfigRede::tempoMaximo,
     {[](std::string_view v) {
          return digitos<1, 3>(v) && v.front() != '0' && (v.size() < 3 || v <= "300");
      },
      "é de 1 a 300 segundos"}},
    {"autoridades", &ConfigRede::autoridades, kCaminho, Especie::kCaminho},
}};

inline constexpr Regra kTempo{
    [](std::string_view v) { return digitos<1, 4>(v) && v.front() != '0'; }, "é de 1 a 9999"};
inline constexpr std::array<Chave<ConfigFila>, 6> kFila{{
    {"diretorio", &ConfigFila::diretorio, kCaminho, Especie::kCaminho},
    {"guardados", &ConfigFila::guardados, kCaminho, Especie::kCaminho},
    {"por_minuto",
     &ConfigFila::porMinuto,
     {digitos<1, 5>, "é quantas mensagens por minuto, até 99999; 0, sem limite"}},
    {"aviso_horas",
     &ConfigFila::avisoHoras,
     {[](std::string_view v) { return digitos<1, 3>(v) && v != "0"; }, "é de 1 a 999 horas"}},
    {"contingencia_horas", &ConfigFila::contingenciaHoras, kTempo},
    {"cancelamento_minutos", &ConfigFila::cancelamentoMinutos, kTempo},
}};

// The first one must be there.
inline constexpr std::array<Chave<ConfigCaixa>, 5> kCaixas{{
    {"diretorio", &ConfigCaixa::diretorio, kCaminho, Especie::kCaminho},
    {"copias", &ConfigCaixa::copias, kCaminho, Especie::kCaminho},
    {"contingencia", &ConfigCaixa::contingencia, kCaminho, Especie::kCaminho},
    {"retornos", &ConfigCaixa::retornos, kCaminho, Especie::kCaminho},
    {"desde", &ConfigCaixa::desde, {ehData, "é um dia, \"AAAA-MM-DD\""}},
}};

inline constexpr std::array<Chave<Configuracao>, 1> kPagina{{
    {"porta",
     &Configuracao::portaDaPagina,
     {[](std::string_view v) {
          return digitos<4, 5>(v) &&
                 (v.size() == 4 ? v >= "1024" : v.front() != '0' && v <= "65535");
      },
      "é uma porta, de 1024 a 65535"}},
}};

inline constexpr std::array<Chave<TaxasIbsCbs>, 4> kTaxas{{
    {"desde", &TaxasIbsCbs::desde, {ehData, "é um dia, \"AAAA-MM-DD\""}},
    {"pIBSUF", &TaxasIbsCbs::pIBSUF, kPorcento},
    {"pIBSMun", &TaxasIbsCbs::pIBSMun, kPorcento},
    {"pCBS", &TaxasIbsCbs::pCBS, kPorcento},
}};

} // namespace zel::envio
