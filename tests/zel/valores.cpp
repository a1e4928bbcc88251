// SPDX-License-Identifier: MIT
// zel conferir over directories with one fault each in the configuration: the fault is found under
// its name and severity, and nothing else is.
#include "Loja.h"

#include "leitura/TabelaChaves.h"
#include "leitura/Texto.h"

#include <gtest/gtest.h>

namespace {

struct Caso {
    Loja::Valores valores;
    std::string_view esperados;
};

const std::string kLongo(61, 'x');

const Caso kCasos[] = {
    // Values by themselves.
    {{{R"(EMIT\CNPJ)", "11222333000180"}}, "erro cnpj-digito"},
    {{{R"(EMIT\CNPJ)", "1122233300018"}}, "erro valor-invalido"},
    {{{R"(EMIT\CNPJ)", "11111111111111"}}, "erro padrao-nao-trocado"},
    {{{R"(EMIT\CNPJ)", "00000000000000"}}, "erro cnpj-digito"},
    {{{R"(EMIT\CPF)", "12345678900"}}, "aviso cpf-digito"},
    {{{R"(EMIT\xNome)", "RAZAO SOCIAL"}}, "erro padrao-nao-trocado"},
    {{{R"(EMIT\xNome)", ""}}, "erro valor-vazio"},
    {{{R"(EMIT\xNome)", "Padaria "}}, "erro valor-brancos"},
    {{{R"(EMIT\xNome)", "P"}}, "erro valor-brancos"},
    {{{R"(EMIT\xNome)", kLongo}}, "erro valor-longo"},
    {{{R"(EMIT\xNome)", "Panificadora P\xc3\xa3o"}}, "aviso acentos-utf8"},
    {{{R"(EMIT\ENDEREMIT\CEP)", "01001-00"}}, "erro valor-invalido"},
    {{{R"(EMIT\CRT)", "5"}}, "erro valor-invalido"},
    {{{R"(IDE\Mod)", "55"}}, "erro valor-invalido"},
    {{{R"(IDE\Serie)", "0"}}, "erro valor-invalido"},
    {{{R"(IDE\Serie)", "1000"}}, "erro valor-longo"},
    {{{R"(IDE\nNF)", "999999999"}}, "erro numero-esgotado"},
    {{{R"(IDE\tpEmis)", "9"}}, "aviso contingencia-ligada"},
    {{{R"(IDE\xJust)", "Sem linha"}}, "erro valor-brancos"},
    {{{R"(CONFIGURACAO\IDTokenSefaz)", "1"}}, "erro valor-invalido"},
    {{{R"(CONFIGURACAO\ValorMaxIdeCliente)", "10000,00"}}, "erro valor-invalido"},
    {{{R"(NFCE\ChaveDeAcesso)", "35261111222333000181650010000000021171025450"}},
     "erro chave-digito"},
    {{{R"(PROD\NCM)", "123"}}, "erro valor-invalido"},
    {{{R"(PROD\NCM)", "39231090"}}, "aviso ncm-fabrica"},
    {{{R"(PROD\NCM)", "77010000"}}, "aviso ncm-inexistente"},
    {{{R"(PROD\NCM)", "00"}}, ""},
    {{{R"(CONFIGURACAO\TIMEZONESERVIDOR\Utilizar)", "1"}}, "aviso fuso-estranho"},
    {{{R"(CONFIGURACAO\TIMEZONESERVIDOR\Utilizar)", "1"},
      {R"(CONFIGURACAO\TIMEZONESERVIDOR\Valor)", "5"}},
     ""},
    {{{R"(PROD\CFOP)", "6102"}}, "erro valor-invalido"},
    {{{R"(CONFIGURACAO\Modelo)", "NFCe"}}, "nota chave-sem-leitor"},
    // The issuer and its state.
    {{{R"(EMIT\ENDEREMIT\UF)", "XX"}}, "erro valor-invalido"},
    {{{R"(IDE\cUF)", "33"}}, "erro uf-codigo"},
    {{{R"(EMIT\ENDEREMIT\cMun)", "3304557"}}, "erro municipio-uf, aviso municipio-nome"},
    {{{R"(EMIT\ENDEREMIT\cMun)", "3509502"}}, "aviso municipio-nome"},
    {{{R"(EMIT\ENDEREMIT\cMun)", "3545803"}, {R"(EMIT\ENDEREMIT\xMun)", "SANTA BARBARA D OESTE"}},
     ""},
    {{{R"(EMIT\ENDEREMIT\CEP)", "20040020"}}, "aviso cep-uf"},
    {{{R"(EMIT\ENDEREMIT\cMun)", "3550309"}}, "erro municipio-digito"},
    {{{R"(IDE\cMunFG)", "3304557"}}, "erro municipio-uf"},
    {{{R"(EMIT\IE)", "110042490115"}}, "erro ie-digito"},
    {{{R"(EMIT\IE)", "1100424901"}}, "erro ie-tamanho"},
    {{{R"(EMIT\IE)", "110.042.490"}}, "erro valor-invalido"},
    {{{R"(EMIT\IE)", "ISENTO"}}, "aviso ie-isento"},
    // Environment, token and addresses.
    {{{R"(CONFIGURACAO\TipoAmbiente)", "2"}}, "nota ambiente-homologacao"},
    {{{R"(CONFIGURACAO\TokenSefaz)", ""}}, "erro token-ausente"},
    {{{R"(CONFIGURACAO\TokenSefaz)", ""}, {R"(CONFIGURACAO\TipoAmbiente)", "3"}},
     "aviso ambiente-indefinido, aviso token-ausente"},
    {{{R"(CONFIGURACAO\TokenSefaz)", "com branco"}}, "erro valor-invalido"},
    {{{R"(URLS\SP\Producao)", ""}}, "erro endereco-ausente"},
    {{{R"(URLS\SP\Producao)", "www.nfce.sp.gov.br"}}, "erro valor-invalido"},
    {{{R"(URLS\SP\Producao)", "https://www.homologacao.nfce.fazenda.sp.gov.br/"}},
     "erro endereco-ambiente"},
    {{{R"(URLS\SP\Producao)", "http://www.sefaz.mt.gov.br/nfce"}}, "erro endereco-estado"},
    {{{R"(URLS\SP\Homologacao)", ""}, {R"(CONFIGURACAO\TipoAmbiente)", "2"}},
     "aviso endereco-ausente, nota ambiente-homologacao"},
    {{{R"(URLS\RS\Producao)", "https://www.sefaz.rs.gov.br/NFCE/NFCE-COM.aspx"}},
     "aviso endereco-compartilhado"},
    // Directories.
    {{{R"(CONFIGURACAO\HistoricoXML)", "1"}}, "aviso historico-sem-diretorio"},
    {{{R"(CONFIGURACAO\PathXMLEnvio)", "/tmp"}}, "erro diretorio-barra"},
    {{{R"(CONFIGURACAO\PathXMLEnvio)", "/tmp/|historico/"}}, "erro diretorio-relativo"},
    {{{R"(CONFIGURACAO\PathXMLEnvio)", "/tmp/|/tmp/|/tmp/|/tmp/"}}, "erro valor-invalido"},
    {{{R"(CONFIGURACAO\PathXMLEnvio)", "/nao/existe/"}}, "erro diretorio-ausente"},
    {{{R"(CONFIGURACAO\PathXMLRetorno)", "/nao/existe/"}},
     "aviso diretorio-ausente, nota chave-sem-leitor"},
    // Tax groups.
    {{{R"(EMIT\CRT)", "3"}}, "erro crt-grupo"},
    {{{R"(EMIT\CRT)", "4"}}, ""},
    {{{R"(EMIT\CRT)", "4"},
      {R"(IMPOSTO\ICMS\ICMSSN102\Orig)", ""},
      {R"(IMPOSTO\ICMS\ICMS00\Orig)", "0"},
      {R"(IMPOSTO\ICMS\ICMS00\CST)", "00"},
      {R"(IMPOSTO\ICMS\ICMS00\modBC)", "3"}},
     "erro crt-grupo"},
    {{{R"(IMPOSTO\ICMS\ICMSSN102\Orig)", ""}}, "erro grupo-ausente"},
    {{{R"(IMPOSTO\ICMS\ICMSSN102\CSOSN)", ""}}, "erro grupo-incompleto"},
    {{{R"(IMPOSTO\ICMS\ICMSSN102\CSOSN)", "101"}}, "erro valor-invalido"},
    {{{R"(IMPOSTO\ICMS\ICMS00\Orig)", "0"}}, "erro crt-grupo, aviso grupo-escondido"},
    {{{R"(IMPOSTO\ICMS\ICMSSN500\Orig)", "0"}}, "aviso grupo-escondido"},
    {{{R"(IMPOSTO\ICMS\ICMSSN102\Orig)", ""},
      {R"(IMPOSTO\ICMS\ICMSSN202\Orig)", "0"},
      {R"(IMPOSTO\ICMS\ICMSSN202\CSOSN)", "202"},
      {R"(IMPOSTO\ICMS\ICMSSN202\modBCST)", "4"},
      {R"(IMPOSTO\ICMS\ICMSSN202\pICMSST)", "18,00"}},
     "aviso fator-percentual"},
    {{{R"(EMIT\CRT)", "3"},
      {R"(IMPOSTO\ICMS\ICMSSN102\Orig)", ""},
      {R"(IMPOSTO\ICMS\ICMS30\Orig)", "0"},
      {R"(IMPOSTO\ICMS\ICMS30\CST)", "30"},
      {R"(IMPOSTO\ICMS\ICMS30\modBCST)", "4"},
      {R"(IMPOSTO\ICMS\ICMS30\pMVAST)", "0.40"},
      {R"(IMPOSTO\ICMS\ICMS30\pRedBCST)", "0"}},
     "erro grupo-recusado, erro grupo-incompleto"},
    {{{R"(IMPOSTO\PIS\PISQTDE\CST)", "03"}, {R"(IMPOSTO\PIS\PISQTDE\vAliqProd)", "0.50"}},
     "aviso grupo-cst"},
    {{{R"(IMPOSTO\COFINS\COFINSOUTR\CST)", "99"}}, "erro grupo-incompleto"},
    {{{R"(IMPOSTO\PIS\PISALIQ\CST)", "01"}, {R"(IMPOSTO\PIS\PISNT\CST)", "07"}},
     "aviso grupo-escondido"},
};

class Valores : public testing::TestWithParam<Caso> {};

TEST_P(Valores, uma_falta_um_achado) {
    const auto &[valores, esperados] = GetParam();
    const Loja loja;
    loja.configurar(valores);
    const Resultado resultado = loja.conferir();
    EXPECT_EQ(resultado.achados(), esperados) << resultado.saida;
    EXPECT_TRUE(resultado.deu(contem(esperados, "erro ")    ? 2
                              : contem(esperados, "aviso ") ? 1
                                                            : 0));
    // The token stands in none of them.
    EXPECT_FALSE(contem(resultado.saida, "SEGREDO"));
    EXPECT_FALSE(contem(resultado.saida, "com branco"));
}

INSTANTIATE_TEST_SUITE_P(Faltas, Valores, testing::ValuesIn(kCasos));

TEST(Conferir, loja_limpa_nada_a_dizer) {
    const Loja loja;
    EXPECT_TRUE(loja.conferir().deu(0, R"({"alvo":")" + loja.diretorio() +
                                           R"(","erros":0,"avisos":0,"notas":0,"achados":[]})"
                                           "\n"));
}

// An example that its own rule refuses would mislead whoever copies it.
TEST(Conferir, exemplos_da_tabela_servem) {
    const Loja loja;
    for (const auto &chave : zel::aplicativo::kChaves)
        if (!chave.exemplo.empty() && zel::aplicativo::procurarChave(chave.caminho) == &chave)
            loja.configurar({{chave.caminho, *zel::aplicativo::latin1DeUtf8(chave.exemplo)}});
    const std::string achados = loja.conferir().achados();
    EXPECT_FALSE(contem(achados, " valor-"));
    EXPECT_FALSE(contem(achados, "-digito"));
}

} // namespace
