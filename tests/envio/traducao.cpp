// SPDX-License-Identifier: MIT
// What the till writes, and what becomes of it in layout 4.00: element by element, each value to
// the letter, each refusal by its place; and the published schema takes every kind of document.
#include "Juiz.h"
#include "Nota.h"
#include "apoio/Arquivo.h"
#include "apoio/Trecho.h"
#include "traducao/Tabela.h"

#include <filesystem>
#include <regex>

using namespace zel::envio;
using namespace zel::envio::teste;

namespace {

// What an accountant would fill in for all products.
Configuracao cheia() {
    Configuracao config;
    config.padrao.CEST = "1709600";
    config.padrao.pST = Decimal(1800, 2);
    config.padrao.indISS = "1";
    config.padrao.indIncentivo = "2";
    config.pagamentos["99"] = {"", "Vale da loja", "", "", "", ""};
    config.indIntermed = "0";
    return config;
}

struct Imposto {
    const char *nome, *campos;
};
// The groups of ICMS as the till writes them, with nothing to be added to the total.
const Imposto kIcms[] = {
    {"ICMS00", "orig=0 CST=00 modBC=3 vBC=20.00 pICMS=18.00 vICMS=3.60"},
    {"ICMS10", "orig=0 CST=10 modBC=3 vBC=20.00 pICMS=18.00 vICMS=3.60 modBCST=4 pMVAST=0.40 "
               "pRedBCST=0.00 vBCST=0.00 pICMSST=0.18 vICMSST=0.00"},
    {"ICMS20", "orig=0 CST=20 modBC=3 pRedBC=10.00 vBC=20.00 pICMS=18.00 vICMS=3.60"},
    {"ICMS30", "orig=0 CST=30 modBCST=4 pMVAST=0.40 pRedBCST=0.00 vBCST=20.00 pICMSST=0.18 "
               "vICMSST=0.00"},
    {"ICMS40", "orig=0 CST=41"},
    {"ICMS40", "orig=0 CST=40 vICMSDeson=1.00 motDesICMS=9"},
    {"ICMS40", "orig=0 CST=50 vICMSDeson=0.00 motDesICMS=9"},
    {"ICMS51", "orig=0 CST=51 modBC=3 pRedBC=0.00 vBC=20.00 pICMS=18.00 vICMS=3.60"},
    {"ICMS51", "orig=0 CST=51"},
    {"ICMS60", "orig=0 CST=60 vBCSTRet=10.00 vICMSSTRet=1.80"},
    {"ICMS60", "orig=0 CST=60 vBCSTRet=0.00 vICMSSTRet=0.00"},
    {"ICMS60", "orig=0 CST=60"},
    {"ICMS70", "orig=0 CST=70 modBC=3 pRedBC=10.00 vBC=20.00 pICMS=18.00 vICMS=3.60 modBCST=4 "
               "pMVAST=0.40 pRedBCST=0.00 vBCST=28.00 pICMSST=0.18 vICMSST=0.00"},
    {"ICMS90", "orig=0 CST=90 modBC=3 vBC=20.00 pRedBC=0.00 pICMS=18.00 vICMS=3.60 modBCST=4 "
               "pMVAST=0.40 pRedBCST=0.00 vBCST=28.00 pICMSST=0.18 vICMSST=0.00"},
    {"ICMSPART", "orig=0 CST=10 modBC=3 vBC=20.00 pRedBC=0.00 pICMS=18.00 vICMS=3.60 modBCST=4 "
                 "pMVAST=0.40 pRedBCST=0.00 vBCST=28.00 pICMSST=0.18 vICMSST=0.00 pBCOp=50.00 "
                 "UFST=SC"},
    {"ICMSST", "orig=0 CST=60 vBCSTRet=10.00 vICMSSTRet=1.80 vBCSTDest=10.00 vICMSSTDest=1.80"},
    {"ICMSSN101", "orig=0 CSOSN=101 pCredSN=2.56 vCredICMSSN=0.51"},
    {"ICMSSN102", "orig=0 CSOSN=102"},
    {"ICMSSN102", "orig=0 CSOSN=400"},
    {"ICMSSN201", "orig=0 CSOSN=201 modBCST=4 pMVAST=0.40 pRedBCST=0.00 vBCST=28.00 pICMSST=0.18 "
                  "vICMSST=0.00 pCredSN=2.56 vCredICMSSN=0.51"},
    {"ICMSSN202", "orig=0 CSOSN=202 modBCST=4 pMVAST=0.40 pRedBCST=0.00 vBCST=28.00 pICMSST=0.18 "
                  "vICMSST=0.00"},
    {"ICMSSN500", "orig=0 CSOSN=500 vBCSTRet=10.00 vICMSSTRet=1.80"},
    {"ICMSSN500", "orig=0 CSOSN=500 vBCSTRet=0.00"},
    {"ICMSSN900", "orig=0 CSOSN=900 modBC=3 vBC=0.00 pICMS=18.00 vICMS=0.00 modBCST=4 vBCST=0.00 "
                  "pICMSST=0.18 vICMSST=0.00 pCredSN=2.56 vCredICMSSN=0.00"},
};
// PIS, and COFINS with its letters.
const Imposto kPis[] = {
    {"PISAliq", "CST=01 vBC=20.00 pPIS=1.65 vPIS=0.33"},
    {"PISQtde", "CST=03 qBCProd=2.00 vAliqProd=0.50 vPIS=0.01"},
    {"PISNT", "CST=06"},
    {"PISOutr", "CST=99 vBC=20.00 pPIS=1.65 vPIS=0.33"},
    {"PISOutr", "CST=99 qBCProd=2.0000 vAliqProd=0.50 vPIS=0.01"},
    {"PISOutr", "CST=49 vBC=20.00 pPIS=1.65 qBCProd=2.0000 vAliqProd=0.50 vPIS=0.33"},
    {"PISST", "vBC=20.00 pPIS=1.65 qBCProd=2.0000 vAliqProd=0.50 vPIS=0.33"},
    {"PISST", "vBC=0.00 pPIS=0.00 vPIS=0.00"},
    {"PISST", "vBC=20.00 pPIS=0.00 qBCProd=2.0000 vAliqProd=0.50 vPIS=1.00"},
};
const char *const kIssqn = "vBC=20.00 vAliq=5.00 vISSQN=1.00 cMunFG=4314902 cListServ=0101 "
                           "cSitTrib=N";

// The group's first row.
std::string icmsDe(std::string_view nome) {
    const auto *const linha = std::ranges::find(kIcms, nome, &Imposto::nome);
    return icms(linha->nome, linha->campos);
}
std::string comoCofins(const std::string &texto) {
    return std::regex_replace(texto, std::regex("PIS"), "COFINS");
}

void aceita(const Nota &nota, const Configuracao &config, const std::string &qual) {
    const auto traduzida = traduzir(nota, config);
    ASSERT_TRUE(traduzida.documento) << qual << '\n' << traduzida.recusas.texto();
    EXPECT_EQ(Juiz::unico().julgar(*traduzida.documento), "") << qual << '\n'
                                                              << traduzida.documento->texto();
}

} // namespace

// ---- what the schema says ----

class TraducaoEsquema : public testing::Test {
protected:
    void SetUp() override {
        if (Juiz::unico().esquemas() == nullptr) GTEST_SKIP() << kSemEsquemas;
    }
};

TEST_F(TraducaoEsquema, aceita_cada_grupo_de_imposto_com_e_sem_fundo_e_reforma) {
    for (const bool fundo : {false, true}) {
        Configuracao config = cheia();
        if (fundo) config.padrao.pFCP = config.padrao.pFCPSTRet = Decimal(2, 0);
        for (const std::string dia : {"2025-06-30", "2026-06-30"}) {
            Nota nota;
            nota.dhEmi = dia + "T12:00:00-03:00";
            for (const auto &[nome, campos] : kIcms) {
                nota.itens[0].imposto = icms(nome, campos);
                aceita(nota, config, nome + (" " + dia));
            }
            for (const auto &[nome, campos] : kPis) {
                const std::string pis = grupo("PIS", grupo(nome, elementos(campos)));
                nota.itens[0].imposto = icms("ICMS40", "orig=0 CST=41") + pis + comoCofins(pis);
                aceita(nota, config, nome + std::string(campos));
            }
        }
    }
}

TEST_F(TraducaoEsquema, recusa_o_que_falta_num_documento) {
    const auto traduzida = traduzir(Nota());
    ASSERT_TRUE(traduzida.documento);
    for (const char *caminho :
         {"ide/serie", "det/imposto/ICMS/ICMS00/CST", "transp", "pag/detPag"}) {
        const Documento outro = traduzida.documento->copia();
        outro.raiz().filho("infNFe/" + std::string(caminho)).remover();
        EXPECT_NE(Juiz::unico().julgar(outro), "") << caminho;
    }
}

TEST_F(TraducaoEsquema, aceita_servicos_consumidores_entregas_pagamentos_e_contingencia) {
    const Configuracao config = cheia();
    Nota servico;
    servico.itens[0].imposto = grupo("ISSQN", elementos(kIssqn));
    servico.vNF = "";
    aceita(servico, config, "serviço");
    servico.itens.push_back({});
    servico.pagamentos[0].second = "40.00";
    aceita(servico, config, "serviço e mercadoria");

    const std::string endereco =
        grupo("enderDest", elementos("xLgr=Rua nro=1 xBairro=Bairro cMun=4314902") +
                               "<xMun>Porto Alegre</xMun><UF>RS</UF><CEP>90010000</CEP>");
    const std::string entrega = grupo("entrega", "<xLgr>Rua B</xLgr><Nro>2</Nro><xBairro>Bairro"
                                                 "</xBairro><xMun>PÔRTO ALEGRE</xMun><UF>RS</UF>");
    for (const std::string documento : {"<CPF>12345678909</CPF>", "<CNPJ>11222333000181</CNPJ>",
                                        "<idEstrangeiro>123456</idEstrangeiro>"})
        for (const std::string &resto : {std::string(), "<xNome>Maria</xNome>" + endereco})
            for (const std::string tpAmb : {"1", "2"}) {
                Nota nota;
                nota.tpAmb = tpAmb;
                nota.indPres = "4";
                nota.dest = grupo("dest", documento + resto + "<indIEDest>9</indIEDest>" +
                                              "<email>a@b.com.br</email>");
                nota.entrega = entrega;
                aceita(nota, config, documento + resto);
            }

    Configuracao formas = cheia();
    formas.pagamentos["13"] = {"17", "", "1", "11222333000181", "99", "ABC123"};
    formas.indIntermed = "1";
    formas.intermediadorCNPJ = "11222333000181";
    formas.intermediadorId = "loja";
    formas.respTec = {"11222333000181", "Ana", "ana@b.com.br", "5133334444", "01", "SEGREDO", ""};
    Nota nota;
    nota.indPres = "9";
    nota.infAdic = "Volte &#10; sempre";
    nota.tpEmis = "9";
    nota.contingencia =
        "<dhCont>2025-06-30T12:00:00-03:00</dhCont><xJust>Falta de internet</xJust>";
    nota.transp =
        "<modFrete>9</modFrete><transporta><CNPJ>11222333000181</CNPJ><xNome>Frota</xNome>"
        "<IE>12</IE><xEnder>Rua</xEnder><xMun>Porto Alegre</xMun><UF>RS</UF></transporta>";
    for (const std::string forma : {"01", "02", "03", "04", "05", "10", "11", "12", "13", "99"}) {
        nota.pagamentos = {{forma, "5.00"}, {"01", "15.00"}};
        aceita(nota, formas, forma);
    }
}

// ---- to the letter ----

TEST(Traducao, cada_elemento_fica_como_o_caixa_o_disse_ou_como_a_autoridade_o_quer) {
    Configuracao config = cheia();
    config.indIntermed = "1";
    config.intermediadorCNPJ = "11222333000181";
    config.intermediadorId = "loja";
    config.produtos["101"].cBenef = "RS100001";
    config.ncm["0901"].CEST = "1709700";
    config.ncm["09"] = {"0000000", "N", "11222333000181", "", "", "", {}, {}, {}, {}, {}, "",
                        "",        ""};
    config.pagamentos["03"] = {"04", "", "", "", "", ""};
    Nota nota;
    nota.indPres = "2";
    nota.IE = "096/323.3556";
    nota.infAdic = "  Volte\n sempre ";
    nota.itens[0].quantidade = "2.";
    nota.itens[0].preco = "10";
    nota.itens[0].xProd = "Caf\xE9  &amp;\t leite ";
    nota.itens[0].vDesc = "1.00";
    nota.itens[0].vOutro = "0.00";
    nota.itens.push_back({});
    nota.itens[1].EAN = "7891000100103";
    nota.itens[1].quantidade = "40.0000";
    nota.itens[1].preco = ".50";
    nota.itens[1].NCM = "2106.90.90";
    nota.itens[1].cProd = "7";
    nota.vNF = "39.00";
    nota.pagamentos = {{"03", "9.00"}, {"99", "30.00"}};
    const auto traduzida = traduzir(nota, config, {.troco = 2000});
    const std::pair<const char *, const char *> kEsperados[] = {
        {"ide/indPag", ""},
        {"ide/indIntermed", "1"},
        {"emit/xNome", "Padaria da Esquina"},
        {"emit/IE", "0963233556"},
        {"det/prod/cEAN", "SEM GTIN"},
        {"det/prod/cEANTrib", "SEM GTIN"},
        {"det/prod/xProd", "Café & leite"},
        {"det/prod/CEST", "1709700"},
        {"det/prod/indEscala", "N"},
        {"det/prod/CNPJFab", "11222333000181"},
        {"det/prod/cBenef", "RS100001"},
        {"det/prod/qCom", "2.00"},
        {"det/prod/vUnCom", "10"},
        {"det/prod/vDesc", "1.00"},
        {"det/prod/vOutro", ""},
        {"total/ICMSTot/vProd", "40.00"},
        {"total/ICMSTot/vBC", "40.00"},
        {"total/ICMSTot/vICMS", "7.20"},
        {"total/ICMSTot/vFCPST", "0.00"},
        {"total/ICMSTot/vDesc", "1.00"},
        {"total/ICMSTot/vNF", "39.00"},
        {"total/ICMSTot/vTotTrib", ""},
        {"total/IBSCBSTot", ""},
        {"pag/detPag/tPag", "04"},
        {"pag/detPag/card/tpIntegra", "2"},
        {"pag/vTroco", "20.00"},
        {"infIntermed/idCadIntTran", "loja"},
        {"infAdic/infCpl", "Volte sempre"},
        {"infRespTec", ""},
    };
    for (const auto &[caminho, valor] : kEsperados)
        EXPECT_EQ(traduzida.texto(caminho), valor) << caminho;
    ASSERT_TRUE(traduzida.documento);
    EXPECT_EQ(traduzida.no("").atributo("Id"), "NFe" + nota.chave());
    EXPECT_EQ(traduzida.no("").atributo("versao"), "4.00");
    const No segundo = traduzida.no("").filhos("det")[1], pago = traduzida.no("pag").filhos()[1];
    EXPECT_EQ(segundo.texto("prod/cEAN"), "7891000100103");
    EXPECT_EQ(segundo.texto("prod/vUnCom"), "0.50");
    EXPECT_EQ(segundo.texto("prod/qCom"), "40.0000");
    EXPECT_EQ(segundo.texto("prod/NCM"), "21069090");
    EXPECT_EQ(pago.texto("xPag"), "Vale da loja");
    EXPECT_EQ(pago.texto("vPag"), "50.00"); // the change stood cut
}

TEST(Traducao, em_homologacao_os_textos_sao_os_da_autoridade) {
    Nota nota;
    nota.tpAmb = "2";
    nota.dest = "<dest><CPF>12345678909</CPF><indIEDest>9</indIEDest></dest>";
    nota.itens.push_back({});
    nota.vNF = nota.pagamentos[0].second = "40.00";
    const auto traduzida = traduzir(nota);
    EXPECT_EQ(traduzida.texto("det/prod/xProd"),
              "NOTA FISCAL EMITIDA EM AMBIENTE DE HOMOLOGACAO - SEM VALOR FISCAL");
    EXPECT_EQ(traduzida.texto("dest/xNome"),
              "NF-E EMITIDA EM AMBIENTE DE HOMOLOGACAO - SEM VALOR FISCAL");
    ASSERT_TRUE(traduzida.documento);
    EXPECT_EQ(traduzida.no("").filhos("det")[1].texto("prod/xProd"), "Cafe 500 g");
}

TEST(Traducao, grupos_de_imposto_ganham_o_que_a_configuracao_sabe_e_perdem_o_que_saiu) {
    Configuracao config = cheia();
    config.padrao.pFCP = config.padrao.pFCPSTRet = Decimal(2, 0);
    config.padrao.vICMSSubstituto = Decimal(75, 2);
    const struct {
        std::string imposto, caminho, valor;
    } kCasos[] = {
        {icmsDe("ICMS00"), "ICMS/ICMS00/vFCP", "0.40"},
        {icmsDe("ICMS00"), "ICMS/ICMS00/vBCFCP", ""},
        {icmsDe("ICMS20"), "ICMS/ICMS20/vBCFCP", "20.00"},
        {icms("ICMS60", "orig=0 CST=60 vBCSTRet=10.00 vICMSSTRet=1.80"), "ICMS/ICMS60",
         "06010.0018.001.501.8010.002.000.20"},
        {icms("ICMS60", "orig=0 CST=60 vBCSTRet=0.00 vICMSSTRet=0.00"), "ICMS/ICMS60", "060"},
        {icms("ICMS40", "orig=0 CST=40 vICMSDeson=1.00 motDesICMS=9"), "ICMS/ICMS40", "0401.0090"},
        {icmsDe("ICMSPART"), "ICMS/ICMSPart/UFST", "SC"},
        {icms("ICMS40", "orig=0 CST=41") + grupo("PIS", grupo("PISST", elementos(kPis[6].campos))),
         "PISST", "20.001.650.33"},
        {icms("ICMS40", "orig=0 CST=41") + grupo("PIS", grupo("PISST", elementos(kPis[8].campos))),
         "PISST", "2.00000.50001.00"},
        {icms("ICMS40", "orig=0 CST=41") +
             grupo("PIS", grupo("PISOutr", elementos(kPis[5].campos))),
         "PIS/PISOutr", "4920.001.650.33"},
        {grupo("ISSQN", elementos(kIssqn)), "ISSQN", "20.005.001.00431490201.0112"},
    };
    for (const auto &[imposto, caminho, valor] : kCasos) {
        Nota nota;
        nota.itens[0].imposto = imposto;
        EXPECT_EQ(traduzir(nota, config).texto("det/imposto/" + caminho), valor) << imposto;
    }
    Nota nota;
    nota.itens[0].imposto = grupo("ISSQN", elementos(kIssqn));
    nota.itens.push_back({});
    nota.vNF = nota.pagamentos[0].second = "40.00";
    const auto mista = traduzir(nota, config);
    EXPECT_EQ(mista.texto("total/ISSQNtot"), "20.0020.001.002025-06-30");
    EXPECT_EQ(mista.texto("total/ICMSTot/vProd"), "20.00");
    EXPECT_EQ(mista.texto("total/ICMSTot/vFCP"), "0.40");
    EXPECT_EQ(mista.texto("total/ICMSTot/vNF"), "40.00");
}

TEST(Traducao, o_cartao_que_o_caixa_conhece_vale_antes_do_configurado) {
    Configuracao config = cheia();
    config.pagamentos["03"] = {"", "", "1", "11222333000181", "01", "ABC"};
    Nota nota;
    nota.pagamentos[0].first = "03";
    EXPECT_EQ(traduzir(nota, config).texto("pag/detPag/card"), "11122233300018101ABC");
    std::string xml = nota.xml();
    xml.replace(xml.find("</pag>"), 0, "<card><tBand>02</tBand><cAut>R07</cAut></card>");
    const auto traduzida = traduzirXml(xml, config);
    EXPECT_EQ(traduzida.texto("pag/detPag/card"), "11122233300018102R07");
    EXPECT_EQ(Juiz::unico().julgar(*traduzida.documento), "");
}

TEST(Traducao, responsavel_tecnico_assina_a_chave_com_o_csrt) {
    Configuracao config;
    config.respTec = {"11222333000181", "Ana", "ana@b.com.br", "5133334444", "01", "SEGREDO", ""};
    Nota nota;
    const auto traduzida = traduzir(nota, config);
    EXPECT_EQ(traduzida.texto("infRespTec/idCSRT"), "01");
    // printf SEGREDO$CHAVE | openssl sha1 -binary | base64
    EXPECT_EQ(nota.chave(), "43250611222333000181650010000000421171025454");
    EXPECT_EQ(traduzida.texto("infRespTec/hashCSRT"), "lJev02SG1EDRUUVelD2OjAn4GUg=");
}

TEST(Traducao, inscricao_municipal_vai_onde_ha_servicos) {
    Configuracao config = cheia();
    config.emitente = {"12345-6", "4721102"};
    Nota nota;
    EXPECT_EQ(traduzir(nota, config).texto("emit/IM"), "");
    nota.itens.push_back({});
    nota.itens[1].imposto = grupo("ISSQN", elementos(kIssqn));
    nota.vNF = nota.pagamentos[0].second = "40.00";
    const auto traduzida = traduzir(nota, config);
    EXPECT_EQ(traduzida.texto("emit/IM") + ' ' + traduzida.texto("emit/CNAE"), "12345-6 4721102");
    EXPECT_EQ(Juiz::unico().julgar(*traduzida.documento), "");
    config.emitente = {};
    EXPECT_TRUE(traduzir(nota, config).documento);
}

// ---- refusals ----

TEST(Traducao, o_imposto_de_um_item_e_o_do_regime_do_emitente) {
    const std::string comCst = icmsDe("ICMS00"), comCsosn = icms("ICMSSN102", "orig=0 CSOSN=102"),
                      mudado = std::regex_replace(icmsDe("ICMSSN900"), std::regex("ICMSSN900"),
                                                  "ICMS900");
    const struct {
        const char *CRT;
        const std::string &imposto;
        const char *campo; // empty: taken
    } kCasos[] = {
        {"1", comCst, "det/imposto/ICMS/ICMS00"},
        {"1", comCsosn, ""},
        {"2", comCsosn, "det/imposto/ICMS/ICMSSN102"},
        {"2", comCst, ""},
        {"3", comCsosn, "det/imposto/ICMS/ICMSSN102"},
        {"3", comCst, ""},
        {"4", comCst, "det/imposto/ICMS/ICMS00"},
        {"4", comCsosn, ""},
        {"1", mudado, ""},
        {"3", mudado, "det/imposto/ICMS/ICMS900"},
    };
    for (const auto &[CRT, imposto, campo] : kCasos) {
        Nota nota;
        nota.CRT = CRT;
        nota.itens[0].imposto = imposto;
        const auto traduzida = traduzir(nota, cheia());
        EXPECT_EQ(traduzida.documento.has_value(), *campo == '\0') << CRT << campo;
        if (*campo == '\0') continue;
        EXPECT_TRUE(traduzida.recusou(campo)) << traduzida.recusas.texto();
        EXPECT_TRUE(contem(traduzida.recusas.texto(), "EMIT\\CRT (agora "));
    }
}

TEST(Traducao, o_que_nao_se_traduz_e_recusado_pelo_nome_com_o_remedio) {
    const std::string semMunicipio =
        "<xLgr>Rua</xLgr><nro>1</nro><xBairro>Bairro</xBairro><xMun>Canoas</xMun><UF>RS</UF>";
    const auto dest = [](const std::string &dentro) {
        return grupo("dest", dentro + "<indIEDest>9</indIEDest>") + "<det";
    };
    const std::string kImposto = Nota().itens[0].imposto;
    const struct {
        std::string campo, remedio; // of the refusal, and a part of its text
        std::string de, para;       // in the document
    } kCasos[] = {
        {"ide/dhCont", "IDE\\tpEmis", "</ide>", "<dhCont>x</dhCont></ide>"},
        {"ide/indIntermed", "[intermediador]", "<indPres>1", "<indPres>4"},
        {"ide/dhEmi", "fuso", "-03:00", "-03:30"},
        {"dest/CPF", "11 dígitos", "<det", dest("<CPF>123</CPF>")},
        {"dest/CPF", "idEstrangeiro", "<det", dest("<xNome>Maria</xNome>")},
        {"dest/enderDest/cMun", "falta", "<det",
         dest("<CPF>12345678909</CPF>" + grupo("enderDest", semMunicipio))},
        {"entrega/cMun", "xMun e UF", "<det", grupo("entrega", semMunicipio) + "<det"},
        {"det/prod/NCM", "777", "<NCM>09012100", "<NCM>0901"},
        {"det/prod/cEAN", "GTIN", "<cEAN> ", "<cEAN>7891000100104"},
        {"det/prod/cEANTrib", "cEAN está", "<cEAN> ", "<cEAN>7891000100103"},
        {"det/prod/qCom", "4 casas", "<qCom>2.0000", "<qCom>2.00001"},
        {"det/prod/vProd", "2 casas", "<vProd>20.00", "<vProd>20.005"},
        {"det/prod/xProd", "ISO-8859-1", "Cafe", "Caf&#x20AC;"},
        {"det/prod/CEST", R"([produtos."101"], [ncm."09012100"])", kImposto,
         icms("ICMSSN500", "orig=0 CSOSN=500 vBCSTRet=0.00")},
        {"det/imposto/ICMS/ICMS60/pST", "configure pST", kImposto,
         icms("ICMS60", "orig=0 CST=60 vBCSTRet=10.00 vICMSSTRet=1.80")},
        {"det/imposto/ICMS/ICMS60/vICMSSTRet", "falta", kImposto,
         icms("ICMS60", "orig=0 CST=60 vBCSTRet=10.00")},
        {"det/imposto/ICMS/ICMS00/CST", "é um de: 00", "<CST>00", "<CST>0000000"},
        {"det/imposto/ICMS", "falta", kImposto, "<ICMS/>"},
        {"det/imposto/ICMS/ICMS99", "4.00", kImposto, icms("ICMS99", "CST=99")},
        {"det/imposto/ISSQN/indISS", "configure indISS", kImposto,
         grupo("ISSQN", elementos(kIssqn))},
        {"total/ICMSTot/vNF", "cobrou 19.00, os itens somam 20.00", "<vNF>20", "<vNF>19"},
        {"pag/vPag", "19.00", "<vPag>20", "<vPag>19"},
        {"pag/xPag", "[pagamentos]", "<tPag>01", "<tPag>99"},
        {"avulsa", "não escreve", "<det", "<avulsa/><det"},
        {"ide/cMunFG", "de outro estado", "<cMunFG>4314902", "<cMunFG>3550308"},
        {"ide/cMunFG", "IDE\\cMunFG", "<cMunFG>4314902", "<cMunFG>9999999"},
        {"emit/enderEmit/cMun", "de outro estado", "<cMun>4314902", "<cMun>3550308"},
        {"emit/enderEmit/cMun", "ENDEREMIT\\cMun", "<cMun>4314902", "<cMun>9999999"},
        {"dest/idEstrangeiro", "sem brancos", "<det",
         dest("<idEstrangeiro>AB 123</idEstrangeiro>")},
        {"dest/CPF", "tem um documento", "<det", dest("<idEstrangeiro/>")},
        {"det/prod/CFOP", "4 dígitos", "<CFOP>5102", "<CFOP>4102"},
        // Each names what mends it.
        {"det/imposto/PIS/PISQtde/CST", "PIS\\PISALIQ\\CST", kImposto,
         kImposto +
             grupo("PIS", grupo("PISQtde", elementos("CST=00 qBCProd=1 vAliqProd=1 vPIS=1")))},
        {"det/imposto/ICMS/ICMS00/CST", "ICMS\\ICMS00\\CST de ZEL", "<CST>00", "<CST>01"},
        {"det/imposto/ICMS", "onde Orig escolhe", kImposto, "<ICMS/>"},
        {"det/imposto/ICMS/ICMSSN201/vICMSST", "ao vender", kImposto,
         icms("ICMSSN201", "orig=0 CSOSN=201 modBCST=4 vBCST=1.00 pICMSST=0.18 vICMSST=-1.00 "
                           "pCredSN=1.00 vCredICMSSN=1.00")},
        {"det/imposto/ICMS/ICMS60/vICMSSTRet", "ICMS\\ICMS60\\vICMSSTRet", kImposto,
         icms("ICMS60", "orig=0 CST=60 vBCSTRet=10.00")},
        {"dest/enderDest/xBairro", "ao identificar", "<det",
         dest("<CPF>12345678909</CPF><enderDest><xBairro>B</xBairro></enderDest>")},
        {"det/imposto/PIS/PISST/vBC", "não pode ser zero", kImposto,
         kImposto + grupo("PIS", grupo("PISST", elementos("vBC=0.00 pPIS=1.65 vPIS=0.33")))},
        {"transp/modFrete", "ao identificar a transportadora", "<modFrete>9", "<modFrete>7"},
        {"transp/transporta/CNPJ", "ao identificar a transportadora", "</transp>",
         "<transporta><CNPJ>1</CNPJ></transporta></transp>"},
        {"pag/tPag", "configure tPag", "<tPag>01", "<tPag>77"},
        {"pag/vPag", "ao pagar", "<vPag>20.00", "<vPag>x"},
        {"pag/vPag", "venda de novo", "<vPag>20", "<vPag>21"},
        {"pag/card/tBand", "configure tpIntegra", "</pag>", "<card><tBand>1</tBand></card></pag>"},
        {"pag/card/cAut", "pede CNPJ, tBand e cAut", "</pag>",
         "<card><tpIntegra>1</tpIntegra></card></pag>"},
        {"pag/card/x", "tire-o", "</pag>", "<card><x>1</x></card></pag>"},
        {"infAdic/infCpl", "ao encerrar", "</pag>",
         "</pag><infAdic><infCpl>&#x20AC;</infCpl></infAdic>"},
        // What no row asks for.
        {"NFe/infNFe[2]", "um infNFe", "</infNFe>", "</infNFe><infNFe versao=\"3.10\"/>"},
        {"NFe/infAvulsa", "nada além", "</infNFe>", "</infNFe><infAvulsa/>"},
        {"NFe/infNFe/det/prod/vProd/@x", "atributo", "<vProd>", "<vProd x=\"1\">"},
        {"NFe/infNFe/det/prod/vProd", "mistura", "<vProd>20.00", "<vProd>2<b/>0.00"},
        {"det/prod/vProd", "elementos dentro", "<vProd>20.00<", "<vProd><b>20.00</b><"},
        {"NFe/infNFe/det/prod", "mistura", "<cProd>", "texto<cProd>"},
        {"NFe/infNFe/ide", "espaço de nomes", "<ide>", "<ide xmlns=\"urn:x\">"},
        {"det/prod/Vdesc", "mais de uma vez", "<indTot>",
         "<vDesc>1.00</vDesc><Vdesc>1.00</Vdesc><indTot>"},
    };
    for (const auto &[campo, remedio, de, para] : kCasos) {
        std::string xml = Nota().xml();
        xml.replace(xml.find(de), de.size(), para);
        const auto traduzida = traduzirXml(xml);
        EXPECT_TRUE(traduzida.recusou(campo)) << campo << '\n' << traduzida.recusas.texto();
        EXPECT_TRUE(contem(traduzida.recusas.texto(), remedio)) << remedio;
    }
}

namespace {

void esperarRemedio(std::span<const Linha> linhas, const std::string &grupo) {
    for (const Linha &linha : linhas) {
        const std::string nome = grupo + '/' + std::string(linha.nome);
        const bool daqui = linha.presenca == Presenca::kSai || linha.regra != nullptr ||
                           !linha.fixo.empty() || !linha.soma.empty() || linha.produto != nullptr;
        EXPECT_TRUE(!linha.filhos.empty() || daqui || !linha.chave.empty()) << nome;
        esperarRemedio(linha.filhos, nome);
    }
}

} // namespace

TEST(Traducao, o_que_o_caixa_da_tem_na_tabela_a_chave_que_o_corrige) {
    esperarRemedio(tabelaInfNFe(), "infNFe");
}

TEST(Traducao, um_total_que_nao_e_o_cobrado_diz_de_onde_vem_a_diferenca) {
    Nota nota;
    nota.itens[0].imposto = icms("ICMSSN202", "orig=0 CSOSN=202 modBCST=4 vBCST=28.00 pICMSST=0.18 "
                                              "vICMSST=0.50");
    nota.vNF = nota.pagamentos[0].second = "19.50";
    Configuracao config = cheia();
    EXPECT_EQ(traduzir(nota, config).recusas.texto(),
              "total/ICMSTot/vNF: \"19.50\"; o caixa cobrou 19.50, os itens somam 20.50, com vST "
              "0.50, que o caixa diminui em vez de somar: configure no caixa o ICMS retido antes "
              "(ICMS60 ou ICMSSN500)");
    config.padrao.pFCPST = Decimal(2, 0);
    nota.itens[0].imposto = icms("ICMSSN202", "orig=0 CSOSN=202 modBCST=4 vBCST=28.00 pICMSST=0.18 "
                                              "vICMSST=0.00");
    nota.vNF = nota.pagamentos[0].second = "20.00";
    EXPECT_TRUE(contem(traduzir(nota, config).recusas.texto(), "vFCPST 0.56: tire pFCPST"));
    config.padrao.pFCPST = Decimal(0, 0);
    EXPECT_EQ(traduzir(nota, config).texto("total/ICMSTot/vNF"), "20.00");
}

TEST(Traducao, o_que_esta_na_chave_e_a_autoridade_nao_quer_e_recusado) {
    for (const std::string cNF : {"12345678", "90123456", "00000042", "77777777", "01234567"}) {
        Nota nota;
        nota.cNF = cNF;
        EXPECT_TRUE(traduzir(nota).recusou("ide/cNF")) << cNF;
    }
    Nota nota;
    nota.UF = "SP";
    nota.tpEmis = "2";
    nota.contingencia = "<dhCont>2025-06-30T12:00:00-03:00</dhCont><xJust>curta</xJust>";
    const auto traduzida = traduzir(nota);
    for (const char *campo : {"emit/enderEmit/UF", "ide/tpEmis", "ide/xJust"})
        EXPECT_TRUE(traduzida.recusou(campo)) << campo << '\n' << traduzida.recusas.texto();
}

TEST(Traducao, todas_as_recusas_vem_de_uma_vez_e_nenhuma_vem_de_outra) {
    Nota nota;
    nota.IE = "1";
    nota.itens.resize(3);
    nota.itens[1].NCM = "09";
    nota.itens[2].vProd = "-1.00";
    nota.pagamentos.emplace_back("77", "1.00");
    const auto traduzida = traduzir(nota);
    EXPECT_EQ(traduzida.recusas.lista().size(), 4) << traduzida.recusas.texto();
    for (const char *campo : {"emit/IE", "det[2]/prod/NCM", "det[3]/prod/vProd", "pag[2]/tPag"})
        EXPECT_TRUE(traduzida.recusou(campo)) << campo << '\n' << traduzida.recusas.texto();
}

TEST(Traducao, a_chave_e_a_do_documento_ou_ele_e_recusado) {
    const std::string xml = Nota().xml();
    const struct {
        const char *de, *para, *campo;
    } kCasos[] = {{"<nNF>42<", "<nNF>43<", "ide/nNF"},
                  {"<serie>1<", "<serie>2<", "ide/serie"},
                  {"<cDV>", "<cDV>1", "ide/cDV"},
                  {"<CNPJ>11222333000181", "<CNPJ>11444777000161", "emit/CNPJ"},
                  {"<dhEmi>2025-06", "<dhEmi>2025-07", "ide/dhEmi"},
                  {"Id=\"NFe4", "Id=\"NFe", "infNFe/@Id"},
                  {"versao=\"3.10\"", "versao=\"4.00\"", "infNFe/@versao"}};
    for (const auto &[de, para, campo] : kCasos) {
        std::string outro = xml;
        outro.replace(outro.find(de), std::string(de).size(), para);
        EXPECT_TRUE(traduzirXml(outro).recusou(campo)) << campo;
    }
}

TEST(Traducao, de_um_documento_enorme_se_diz_o_bastante_e_logo) {
    Nota nota;
    nota.itens.resize(999);
    nota.vNF = nota.pagamentos[0].second = "19980.00";
    const auto traduzida = traduzir(nota);
    ASSERT_EQ(traduzida.recusas.lista().size(), 1);
    EXPECT_EQ(traduzida.recusas.texto(),
              "det: o leiaute 4.00 tem no máximo 990: venda o resto em outro cupom");
    nota.itens.resize(990);
    nota.vNF = nota.pagamentos[0].second = "19800.00";
    EXPECT_EQ(traduzir(nota).texto("total/ICMSTot/vNF"), "19800.00");

    nota = {};
    nota.entrega = repetir("<a/><pag/>", 50000);
    EXPECT_EQ(traduzir(nota, {}, {.troco = 100}).recusas.lista().size(), 101);
}

// ---- what the till has written ----

namespace {

// A golden document of the till: what is masked in it filled in, and its issuer a real one.
std::string documentoDeOuro(const std::string &arquivo) {
    std::string xml = lerTudo(arquivo).value_or("");
    const auto valor = [&](const std::string &nome) { return entre(xml, '<' + nome + '>', "<"); };
    Nota nota;
    nota.cNF = valor("cNF");
    nota.nNF = valor("nNF");
    std::string chave = nota.chave();
    const std::string serie = std::string(3 - valor("serie").size(), '0') + valor("serie");
    chave.replace(22, 3, serie);
    chave.back() = zel::fnCalcula_cDV(chave.substr(0, 43));
    const std::pair<std::string, std::string> kTrocas[] = {
        {"CHAVE", chave},
        {">DV<", std::string(">") + chave.back() + "<"},
        {"DATA E HORA", nota.dhEmi},
        {"11111111111111", "11222333000181"},
        {"<UF>SP</UF>", "<UF>RS</UF>"},
        {"<UF>MT</UF>", "<UF>RS</UF>"},
        {"<cMunFG>0000012", "<cMunFG>4314902"},
        // The factory's regime does not go with the factory's group.
        {"<CRT>1", xml.find("<CSOSN>") == xml.npos ? "<CRT>3" : "<CRT>1"},
    };
    xml.resize(xml.find("</NFe>") + 6);
    for (const auto &[de, para] : kTrocas)
        for (std::size_t i = xml.find(de); i != xml.npos; i = xml.find(de, i + para.size()))
            xml.replace(i, de.size(), para);
    return xml;
}

} // namespace

TEST(Traducao, os_documentos_de_ouro_do_caixa_sao_traduzidos_ou_dizem_por_que_nao) {
    const std::pair<const char *, const char *> kRecusados[] = {
        {"item_em_xml", "total/ICMSTot/vNF"},
    };
    int quantos = 0;
    for (const auto &arquivo : std::filesystem::directory_iterator(ZEL_OURO)) {
        if (arquivo.path().extension() != ".txt") continue;
        const std::string nome = arquivo.path().stem().string();
        const auto traduzida = traduzirXml(documentoDeOuro(arquivo.path().string()), cheia());
        ++quantos;
        const auto recusado = std::find_if(std::begin(kRecusados), std::end(kRecusados),
                                           [&](const auto &um) { return um.first == nome; });
        if (recusado != std::end(kRecusados)) {
            EXPECT_EQ(traduzida.recusas.lista().size(), 1) << traduzida.recusas.texto();
            EXPECT_TRUE(traduzida.recusou(recusado->second)) << traduzida.recusas.texto();
            continue;
        }
        ASSERT_TRUE(traduzida.documento) << nome << '\n' << traduzida.recusas.texto();
        EXPECT_EQ(Juiz::unico().julgar(*traduzida.documento), "") << nome;
    }
    EXPECT_GE(quantos, 11);
}
