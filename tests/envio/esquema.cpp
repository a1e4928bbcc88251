// SPDX-License-Identifier: MIT
// The published schemas' judgement, where ZEL_ESQUEMAS names their folder; and folders that are
// none.
#include "Assinada.h"
#include "Juiz.h"

#include <gtest/gtest.h>

using namespace zel::envio;
using namespace zel::envio::ensaio;

namespace {

Esquemas *publicados() {
    return teste::Juiz::unico().esquemas();
}

std::string julgado(const std::string &xml, bool semAssinatura = true) {
    Recusas recusas;
    const bool vale = publicados()->julgar(lido(xml), semAssinatura, recusas);
    EXPECT_EQ(vale, recusas.nenhuma());
    return recusas.texto();
}

// Only the file names of the package count here, and what stands in the one that is read.
std::string pacote(const PastaTemporaria &pasta, const std::string &nfe) {
    for (const char *nome : {"enviNFe_v4.00",
                             "procNFe_v4.00",
                             "retEnviNFe_v4.00",
                             "consReciNFe_v4.00",
                             "retConsReciNFe_v4.00",
                             "consSitNFe_v4.00",
                             "retConsSitNFe_v4.00",
                             "consStatServ_v4.00",
                             "retConsStatServ_v4.00",
                             "inutNFe_v4.00",
                             "retInutNFe_v4.00",
                             "procInutNFe_v4.00",
                             "eventoCancNFe_v1.00",
                             "eventoCancSubst_v1.00",
                             "envEventoCancNFe_v1.00",
                             "envEventoCancSubst_v1.00",
                             "retEnvEventoCancNFe_v1.00",
                             "retEnvEventoCancSubst_v1.00",
                             "procEventoCancNFe_v1.00",
                             "procEventoCancSubst_v1.00",
                             "e110111_v1.00",
                             "e110112_v1.00"})
        pasta.gravar(std::string(nome) + ".xsd", "<x/>");
    pasta.gravar("nfe_v4.00.xsd", nfe);
    return pasta / "";
}

} // namespace

TEST(Esquemas, cada_mensagem_certa_passa_com_e_sem_assinatura) {
    if (publicados() == nullptr) GTEST_SKIP() << teste::kSemEsquemas;
    const std::string eventos[] = {cancelamento(), substituicao()};
    const struct {
        const char *nome;
        std::string xml;
    } kCasos[] = {
        {"infNFe", nfe(3)},
        {"infNFe", lote("enviNFe", "4.00", nfe())},
        {"infEvento", eventos[0]},
        {"infEvento", eventos[1]},
        {"infEvento", lote("envEvento", "1.00", eventos[0])},
        {"infEvento", lote("envEvento", "1.00", eventos[1])},
        {"infInut", inutilizacao()},
    };
    for (const auto &[nome, xml] : kCasos) {
        auto documento = lido(xml);
        Recusas recusas;
        EXPECT_TRUE(publicados()->julgar(documento, true, recusas)) << recusas.texto();
        EXPECT_FALSE(publicados()->julgar(documento, false, recusas));
        ASSERT_EQ(recusas.lista().size(), 1U);
        EXPECT_TRUE(contem(recusas.texto(), "Signature"));
        // What was judged can be signed, and judged again.
        Recusas depois;
        EXPECT_TRUE(assinar(documento, nome, *certificado(), depois) &&
                    publicados()->julgar(documento, false, depois) &&
                    publicados()->julgar(documento, false, depois))
            << depois.texto();
    }
    EXPECT_EQ(julgado("<consSitNFe xmlns=\"http://www.portalfiscal.inf.br/nfe\" versao=\"4.00\">"
                      "<tpAmb>2</tpAmb><xServ>CONSULTAR</xServ><chNFe>" +
                      chaveDoDocumento() + "</chNFe></consSitNFe>"),
              "");
}

TEST(Esquemas, cada_violacao_e_dita_por_caminho_valor_e_regra) {
    if (publicados() == nullptr) GTEST_SKIP() << teste::kSemEsquemas;
    const std::string loteDois = lote("envEvento", "1.00", cancelamento());
    const struct {
        const char *caso;
        std::string xml, dito;
    } kCasos[] = {
        {"pattern", trocar(nfe(2), "<NCM>19059090", "<NCM>1905"),
         "NFe/infNFe/det[1]/prod/NCM: \"1905\"; não tem a forma [0-9]{2}|[0-9]{8}"},
        {"enumeration", trocar(nfe(), "<mod>65", "<mod>59"),
         "NFe/infNFe/ide/mod: \"59\"; só pode ser 55, 65"},
        {"too short", trocar(nfe(), "<xLgr>Rua", "<xLgr>R"),
         "NFe/infNFe/emit/enderEmit/xLgr: \"R\"; tem de ter pelo menos 2 caractere(s)"},
        {"too long", trocar(nfe(), "<natOp>VENDA", "<natOp>" + std::string(61, 'V')),
         "NFe/infNFe/ide/natOp: \"" + std::string(61, 'V') +
             "\"; pode ter no máximo 60 caracteres"},
        {"missing", trocar(nfe(), "<CRT>1</CRT>", ""),
         "NFe/infNFe/emit: falta um destes elementos dentro: IEST, IM, CRT"},
        {"nothing inside", "<NFe xmlns=\"http://www.portalfiscal.inf.br/nfe\"/>",
         "NFe: falta dentro: infNFe"},
        {"unexpected", trocar(nfe(), "<natOp>", "<indPag>0</indPag><natOp>"),
         "NFe/infNFe/ide/indPag: \"0\"; não é esperado aqui; viria: natOp"},
        {"unexpected, several", trocar(nfe(), "<indTot>1</indTot>", "<vItem>1</vItem>"),
         "NFe/infNFe/det/prod/vItem: \"1\"; não é esperado aqui; viria um destes: "
         "vFrete, vSeg, vDesc, vOutro, indTot"},
        {"attribute", trocar(nfe(), "nItem=\"1\"", "nItem=\"0\""),
         "NFe/infNFe/det/@nItem: \"0\"; não tem a forma [1-9]{1}[0-9]{0,1}|[1-8]{1}[0-9]{2}|"
         "[9]{1}[0-8]{1}[0-9]{1}|[9]{1}[9]{1}[0]{1}"},
        {"no attribute", trocar(nfe(), " versao=\"4.00\"", ""),
         "NFe/infNFe/@versao: falta este atributo"},
        {"same number", trocar(nfe(2), "nItem=\"2\"", "nItem=\"1\""),
         "NFe/infNFe/det[2]: repete o valor de outro, e tem de ser único"},
        {"attribute too many", trocar(nfe(), "<ide>", "<ide x=\"y\">"),
         "NFe/infNFe/ide/@x: \"y\"; este atributo não existe aqui"},
        {"text between", trocar(nfe(), "<ide>", "<ide>texto"),
         "NFe/infNFe/ide: só pode ter elementos, e tem texto"},
        {"elements inside", trocar(nfe(), "<natOp>VENDA", "<natOp><b/>"),
         "NFe/infNFe/ide/natOp: só pode ter texto, e tem elementos"},
        {"other layout", trocar(nfe(), "versao=\"4.00\"", "versao=\"3.10\""),
         "NFe/infNFe/@versao: \"3.10\"; não tem a forma 4\\.00"},
        {"two at once", trocar(trocar(nfe(), "<mod>65", "<mod>59"), "<CRT>1</CRT>", ""),
         "NFe/infNFe/ide/mod: \"59\"; só pode ser 55, 65\nNFe/infNFe/emit: falta um destes "
         "elementos dentro: IEST, IM, CRT"},
        {"no namespace", trocar(nfe(), "http://www.portalfiscal.inf.br/nfe", "urn:x"),
         "NFe: não é a mensagem que este esquema descreve"},
        {"unknown", "<x/>", "x: não há esquema para esta mensagem"},
        {"unknown event", evento("<a/>", "110110"),
         "evento: \"110110\"; não há esquema para esta mensagem"},
        {"event", trocar(loteDois, "Cliente desistiu da compra", "Curto"),
         "envEvento/evento/infEvento/detEvento/xJust: \"Curto\"; tem de ter pelo menos 15 "
         "caractere(s)"},
        {"event of another kind",
         trocar(cancelamento(), "<descEvento>Cancelamento<", "<descEvento>Carta<"),
         "evento/infEvento/detEvento/descEvento: \"Carta\"; só pode ser Cancelamento"},
    };
    for (const auto &[caso, xml, dito] : kCasos)
        EXPECT_EQ(julgado(xml), dito) << caso;
}

// The general schema skips what is in the events that an answer repeats.
TEST(Esquemas, os_eventos_de_uma_resposta_sao_julgados_por_sua_especie) {
    if (publicados() == nullptr) GTEST_SKIP() << teste::kSemEsquemas;
    const auto resposta = [](const std::string &eventoDela) {
        return "<retConsSitNFe xmlns=\"http://www.portalfiscal.inf.br/nfe\" versao=\"4.00\">"
               "<tpAmb>2</tpAmb><verAplic>1</verAplic><cStat>101</cStat><xMotivo>Cancelada</"
               "xMotivo>"
               "<cUF>35</cUF><dhRecbto>2026-09-21T10:05:00-03:00</dhRecbto><chNFe>" +
               chaveDoDocumento() + "</chNFe><procEventoNFe versao=\"1.00\">" +
               assinada(eventoDela, "infEvento") +
               "<retEvento versao=\"1.00\"><infEvento><tpAmb>2</tpAmb><verAplic>1</verAplic>"
               "<cOrgao>35</cOrgao><cStat>135</cStat><xMotivo>Registrado</xMotivo>"
               "<dhRegEvento>2026-09-21T10:06:00-03:00</dhRegEvento></infEvento>"
               "</retEvento></procEventoNFe></retConsSitNFe>";
    };
    EXPECT_EQ(julgado(resposta(cancelamento()), false), "");
    EXPECT_EQ(
        julgado(resposta(trocar(cancelamento(), "Cliente desistiu da compra", "Curto")), false),
        "retConsSitNFe/procEventoNFe/evento/infEvento/detEvento/xJust: \"Curto\"; "
        "tem de ter pelo menos 15 caractere(s)");
}

TEST(Esquemas, pasta_que_nao_serve_e_recusada_pelo_nome_do_arquivo) {
    const std::string cabeca = "<xs:schema xmlns:xs=\"http://www.w3.org/2001/XMLSchema\">";
    const std::string elemento = "<xs:element name=\"NFe\"/></xs:schema>";
    const struct {
        const char *caso;
        std::string nfe;
        const char *motivo; // empty: it serves
    } kCasos[] = {
        {"good", cabeca + elemento, ""},
        {"no XML", "x", "nfe_v4.00.xsd\"; não é XML"},
        {"no schema", "<x/>", "não é um esquema"},
        {"missing", cabeca + "<xs:include schemaLocation=\"falta.xsd\"/>" + elemento, "falta.xsd"},
        {"network", cabeca + "<xs:include schemaLocation=\"http://127.0.0.1/x.xsd\"/>" + elemento,
         "não é desta pasta"},
        {"elsewhere", cabeca + "<xs:import schemaLocation=\"../x.xsd\"/>" + elemento,
         "não é desta pasta"},
        {"entity", "<!DOCTYPE x [<!ENTITY e SYSTEM 'file:///etc/passwd'>]>" + cabeca + elemento,
         "DOCTYPE"},
        {"itself", cabeca + "<xs:include schemaLocation=\"nfe_v4.00.xsd\"/>" + elemento,
         "não é um esquema"},
    };
    for (const auto &[caso, nfe, motivo] : kCasos) {
        PastaTemporaria pasta;
        Recusas recusas;
        const auto esquemas = Esquemas::abrir(pacote(pasta, nfe), recusas);
        ASSERT_TRUE(esquemas) << recusas.texto();
        EXPECT_EQ(esquemas->julgar(lido("<NFe/>"), false, recusas), *motivo == '\0')
            << caso << recusas.texto();
        EXPECT_TRUE(contem(recusas.texto(), motivo)) << caso;
    }
    PastaTemporaria pasta;
    Recusas recusas;
    pacote(pasta, cabeca + elemento);
    std::filesystem::remove(pasta / "inutNFe_v4.00.xsd");
    EXPECT_FALSE(Esquemas::abrir(pasta / "", recusas));
    ASSERT_EQ(recusas.lista().size(), 1U);
    EXPECT_EQ(recusas.lista()[0].valor, pasta / "inutNFe_v4.00.xsd");
    EXPECT_FALSE(Esquemas::abrir("", recusas));
}

// A folder may have any name.
TEST(Esquemas, o_nome_da_pasta_pode_ter_brancos_acentos_e_porcentagem) {
    if (publicados() == nullptr) GTEST_SKIP() << teste::kSemEsquemas;
    PastaTemporaria pasta;
    const std::string nome = pasta / "leiaute 100%20 ç #1";
    std::filesystem::create_directory_symlink(teste::pastaDosEsquemas(), nome);
    Recusas recusas;
    const auto esquemas = Esquemas::abrir(nome, recusas);
    ASSERT_TRUE(esquemas);
    EXPECT_TRUE(esquemas->julgar(lido(nfe()), true, recusas)) << recusas.texto();
}

TEST(Esquemas, violacoes_demais_sao_contadas) {
    if (publicados() == nullptr) GTEST_SKIP() << teste::kSemEsquemas;
    std::string errado = nfe(990);
    for (const char *valor : {"<qCom>1.0000<", "<indTot>1<"})
        for (std::size_t i = errado.find(valor); i != errado.npos; i = errado.find(valor, i))
            errado[errado.find('>', i) + 1] = 'x';
    Recusas recusas;
    EXPECT_FALSE(publicados()->julgar(lido(errado), true, recusas));
    EXPECT_EQ(recusas.lista().size(), 1001U);
    EXPECT_EQ(recusas.lista().back().motivo, "há mais 980 violações");
}
