// SPDX-License-Identifier: MIT
// The till's requests as messages, as the published schemas take them where ZEL_ESQUEMAS names
// their folder, and what they cannot say.
#include "Juiz.h"
#include "Mensagens.h"

#include "traducao/Pedidos.h"

#include <gtest/gtest.h>

using namespace zel::envio;
using namespace zel::envio::ensaio;

namespace {

const std::string kChave = "35260912345678000195650010000000071123456702";
const std::string kSubstituta = "35260912345678000195650010000000089123456713";

const std::string kMesmoNumero =
    "3526091234567800019565001000000007912345670" +
    std::string(1, zel::fnCalcula_cDV("3526091234567800019565001000000007912345670"));

// As the till writes them: no declaration, no namespace, ISO-8859-1.
const std::string kCancelamento =
    "<EnvioEvento><ModeloDocumento>NFCe</ModeloDocumento><Versao>1.00</Versao><Evento>"
    "<NtfCnpjEmissor>12345678000195</NtfCnpjEmissor><NtfNumero>7</NtfNumero><NtfSerie>1</NtfSerie>"
    "<tpAmb>3</tpAmb><ChaAcesso>" +
    kChave +
    "</ChaAcesso><EveInf><EveDh>2026-09-21T10:05:00</EveDh><EveFusoHorario>-03:00</EveFusoHorario>"
    "<EveTp>110111</EveTp><EvenSeq>1</EvenSeq><Evedet><EveDesc>Cancelamento</EveDesc>"
    "<EvenProt>135260000000001</EvenProt><EvexJust> Desist\xEAncia  do\ncliente</EvexJust>"
    "</Evedet></EveInf></Evento></EnvioEvento>";
const std::string kInutilizacao =
    "<Inutilizacao><ModeloDocumento>NFCe</ModeloDocumento><Versao>3.10</Versao>"
    "<CnpjEmissor>12345678000195</CnpjEmissor><tpAmb>1</tpAmb><NumeroInicial>0008</NumeroInicial>"
    "<NumeroFinal>12</NumeroFinal><Serie>001</Serie><Justificativa>Numeros pulados pelo caixa"
    "</Justificativa></Inutilizacao>";
const std::string kConsulta =
    "<Consulta><ModeloDocumento>NFCe</ModeloDocumento><Versao>3.10</Versao><tpAmb>3</tpAmb>"
    "<CnpjEmissor>12345678000195</CnpjEmissor><NumeroInicial>0</NumeroInicial><NumeroFinal>0"
    "</NumeroFinal><Serie></Serie><ChaveAcesso>" +
    kChave +
    "</ChaveAcesso><DataEmissaoInicial></DataEmissaoInicial><DataEmissaoFinal></DataEmissaoFinal>"
    "</Consulta>";

struct Feito {
    Documento documento;
    std::string texto, recusas;
};

Feito traduzir(const std::string &pedido, const ContextoPedido &contexto = {},
               const std::string &cUF = "35") {
    Configuracao config;
    config.cUF = cUF;
    config.verAplic = "loja 1.0";
    Recusas recusas;
    auto feito = traduzirPedido(lido(pedido).raiz(), config, contexto, recusas);
    EXPECT_EQ(feito.has_value(), recusas.nenhuma());
    if (!feito) return {{}, "", recusas.texto()};
    const std::string texto = feito->texto();
    return {std::move(*feito), texto, ""};
}

const ContextoPedido kTroca{"", kSubstituta, "", "1"};
const ContextoPedido kDoDia{"", "", "2026-09-21", "1"};

constexpr const char *kEspaco = " xmlns=\"http://www.portalfiscal.inf.br/nfe\"";

} // namespace

TEST(Pedidos, viram_as_mensagens_do_leiaute) {
    const std::string evento =
        "<cOrgao>35</cOrgao><tpAmb>2</tpAmb><CNPJ>12345678000195</CNPJ><chNFe>" + kChave +
        "</chNFe><dhEvento>2026-09-21T10:05:00-03:00</dhEvento><tpEvento>";
    const std::string fim = "</infEvento></evento></envEvento>";
    EXPECT_EQ(traduzir(kCancelamento).texto,
              std::string("<envEvento") + kEspaco +
                  " versao=\"1.00\"><idLote>1</idLote><evento versao=\"1.00\"><infEvento "
                  "Id=\"ID110111" +
                  kChave + "01\">" + evento +
                  "110111</tpEvento><nSeqEvento>1</nSeqEvento><verEvento>1.00</verEvento>"
                  "<detEvento versao=\"1.00\"><descEvento>Cancelamento</descEvento>"
                  "<nProt>135260000000001</nProt><xJust>Desistência do cliente</xJust>"
                  "</detEvento>" +
                  fim);
    EXPECT_EQ(traduzir(kCancelamento, kTroca).texto,
              std::string("<envEvento") + kEspaco +
                  " versao=\"1.00\"><idLote>1</idLote><evento versao=\"1.00\"><infEvento "
                  "Id=\"ID110112" +
                  kChave + "01\">" + evento +
                  "110112</tpEvento><nSeqEvento>1</nSeqEvento><verEvento>1.00</verEvento>"
                  "<detEvento versao=\"1.00\"><descEvento>Cancelamento por substituicao"
                  "</descEvento><cOrgaoAutor>35</cOrgaoAutor><tpAutor>1</tpAutor>"
                  "<verAplic>loja 1.0</verAplic><nProt>135260000000001</nProt>"
                  "<xJust>Desistência do cliente</xJust><chNFeRef>" +
                  kSubstituta + "</chNFeRef></detEvento>" + fim);
    EXPECT_EQ(traduzir(kInutilizacao, kDoDia).texto,
              std::string("<inutNFe") + kEspaco +
                  " versao=\"4.00\"><infInut Id=\"ID35261234567800019565001000000008000000012\">"
                  "<tpAmb>1</tpAmb><xServ>INUTILIZAR</xServ><cUF>35</cUF><ano>26</ano>"
                  "<CNPJ>12345678000195</CNPJ><mod>65</mod><serie>1</serie><nNFIni>8</nNFIni>"
                  "<nNFFin>12</nNFFin><xJust>Numeros pulados pelo caixa</xJust></infInut>"
                  "</inutNFe>");
    EXPECT_EQ(traduzir(kConsulta).texto,
              std::string("<consSitNFe") + kEspaco +
                  " versao=\"4.00\"><tpAmb>2</tpAmb><xServ>CONSULTAR</xServ><chNFe>" + kChave +
                  "</chNFe></consSitNFe>");
    // A .ctgCanc has no protocol: its sender knows it.
    const std::string semProtocolo =
        trocar(kCancelamento, "<EvenProt>135260000000001</EvenProt>", "");
    EXPECT_TRUE(contem(traduzir(semProtocolo, {"135260000000002", "", "", "1"}).texto,
                       "<nProt>135260000000002</nProt>"));
}

TEST(Pedidos, valem_para_os_esquemas_publicados) {
    Esquemas *const esquemas = teste::Juiz::unico().esquemas();
    if (esquemas == nullptr) GTEST_SKIP() << teste::kSemEsquemas;
    Recusas recusas;
    const std::string serieZero = trocar(kInutilizacao, "<Serie>001", "<Serie>0");
    for (const Feito &feito : {traduzir(kCancelamento), traduzir(kCancelamento, kTroca),
                               traduzir(kInutilizacao, kDoDia), traduzir(serieZero, kDoDia)})
        EXPECT_TRUE(esquemas->julgar(feito.documento, true, recusas)) << recusas.texto();
    EXPECT_TRUE(esquemas->julgar(traduzir(kConsulta).documento, false, recusas)) << recusas.texto();
}

TEST(Pedidos, o_que_falta_ou_nao_serve_e_recusado_pelo_nome) {
    const struct {
        const std::string &pedido;
        const char *de, *por;
        ContextoPedido contexto;
        const char *parte;
    } kCasos[] = {
        {kCancelamento, ">3</tpAmb>", ">4</tpAmb>", {}, "TipoAmbiente"},
        {kCancelamento, "702</ChaAcesso>", "703</ChaAcesso>", {}, "ChaAcesso"},
        {kCancelamento, "702</ChaAcesso>", "70</ChaAcesso>", {}, "44 dígitos"},
        {kCancelamento, "<NtfNumero>7", "<NtfNumero>8", {}, "outro documento: 000000007"},
        {kCancelamento, "<NtfSerie>1", "<NtfSerie>x", {}, "outro documento: 001"},
        {kCancelamento, "12345678000195<", "11111111111111<", {}, "EMIT\\CNPJ"},
        {kCancelamento, "-03:00", "-03:30", {}, "EveFusoHorario"},
        {kCancelamento, "T10:05:00", "T24:05:00", {}, "EveDh"},
        {kCancelamento, "<EveTp>110111", "<EveTp>110110", {}, "o caixa escreve 110111"},
        {kCancelamento, "<EveTp>110111</EveTp>", "", {}, "só 110111"},
        {kCancelamento, "<EvenProt>135260000000001", "<EvenProt>", {}, "informe-o"},
        {kCancelamento, "<EvenProt>1", "<EvenProt>", {}, "tem 15 dígitos"},
        {kCancelamento, "do\ncliente", "", {}, "15 a 255"},
        {kCancelamento, "7</NtfNumero>", "7</NtfNumero>", {"", "", "", "x"}, "idLote"},
        {kCancelamento, "EvenSeq", "EvenSeq", {"", kChave, "", "1"}, "tpEmis 9"},
        {kCancelamento, "EvenSeq", "EvenSeq", {"", "123", "", "1"}, "substituta: \"123\""},
        {kCancelamento, kChave.c_str(), kSubstituta.c_str(), kTroca, "tpEmis 1"},
        {kCancelamento, "EvenSeq", "EvenSeq", {"", kMesmoNumero, "", "1"}, "outro número"},
        {kCancelamento, "<EvenSeq>1", "<EvenSeq>2", {}, "EvenSeq: \"2\"; o caixa escreve 1"},
        // What no message would hold.
        {kCancelamento, "<EvenSeq>", "<Novo>1</Novo><EvenSeq>", {}, "EveInf/Novo: \"1\"; o caixa"},
        {kCancelamento, "<EvenSeq>", "<EvenSeq>1</EvenSeq><EvenSeq>", kTroca, "mais de uma vez"},
        {kCancelamento, "<tpAmb>", "<tpAmb x='1'>", {}, "Evento/tpAmb: \"3\"; tem texto ou"},
        {kCancelamento, "<EveInf>", "<EveInf>sim", {}, "Evento/EveInf: "},
        {kCancelamento, "<Evento>", "<Evento xmlns='urn:x'>", {}, "EnvioEvento/Evento: "},
        {kInutilizacao, "<Serie>", "<ano>25</ano><Serie>", kDoDia, "Inutilizacao/ano: \"25\""},
        {kInutilizacao, "NFCe", "NFe", kDoDia, "o caixa escreve NFCe"},
        {kConsulta, "<Serie>", "<Recibo>1</Recibo><Serie>", {}, "Consulta/Recibo: \"1\""},
        {kInutilizacao, "<Serie>001", "<Serie>1000", kDoDia, "0 a 999"},
        {kInutilizacao, "<Serie>001", "<Serie>", kDoDia, "0 a 999"},
        {kInutilizacao, "<NumeroFinal>12", "<NumeroFinal>7", kDoDia, "primeiro número, 8"},
        {kInutilizacao, "<NumeroInicial>0008", "<NumeroInicial>0", kDoDia, "999999999"},
        {kInutilizacao, "12345678000195", "123", kDoDia, "EMIT\\CNPJ"},
        {kInutilizacao, "Numeros pulados pelo caixa", "Pulados", kDoDia, "15 a 255"},
        {kInutilizacao, "Serie", "Serie", {}, "diga o dia"},
        {kInutilizacao, "Serie", "Serie", {"", "", "2026-02-30", "1"}, "diga o dia"},
        {kConsulta, kChave.c_str(), "", {}, "por número ou por data"},
        {kConsulta, kChave.c_str(), "123", {}, "44 dígitos"},
    };
    for (const auto &[pedido, de, por, contexto, parte] : kCasos) {
        const Feito feito = traduzir(trocar(pedido, de, por), contexto);
        EXPECT_TRUE(contem(feito.recusas, parte)) << por;
    }
    EXPECT_TRUE(contem(traduzir(kInutilizacao, kDoDia, "").recusas, "cUF em zel-envio.toml"));
    EXPECT_TRUE(contem(traduzir("<Outro/>").recusas, "não é um pedido"));
    // All at once.
    const std::string varias =
        trocar(trocar(kCancelamento, ">3</tpAmb>", "></tpAmb>"), "do\ncliente", "");
    const std::string recusas = traduzir(varias).recusas;
    EXPECT_TRUE(recusas.find("tpAmb") != recusas.npos && recusas.find("EvexJust") != recusas.npos)
        << recusas;
}
