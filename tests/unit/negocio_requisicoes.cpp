// SPDX-License-Identifier: MIT
// The request documents and the operations that send them.
#include "apoio/Ambiente.h"
#include "apoio/ComDados.h"
#include "emcurso/ZEL_Controle.h"
#include "emissao/Cabecalho.h"
#include "negocio/Cancelamento.h"
#include "negocio/Consulta.h"
#include "negocio/Requisicao.h"
#include "texto/Cripto.h"
#include "texto/HoraLocal.h"
#include "texto/Texto.h"

#include <array>
#include <limits>
#include <tuple>

using namespace zel;

namespace {

const std::string kChave = "43140111222333000181650010000001231171025439";
const std::string kArquivoOffline = "11222333000181_001000000123.ctgCanc";
constexpr std::string_view kProtocolo = "<EvenProt>135140000000001</EvenProt>";

template <std::size_t N>
using Textos = std::array<std::string_view, N>;

// A till that closed document 123.
class Requisicoes : public ComDados {
protected:
    void SetUp() override {
        ComDados::SetUp();
        configurar({{R"(EMIT\CNPJ)", "11222333000181"},
                    {R"(IDE\nNF)", "123"},
                    {R"(NFCE\ChaveDeAcesso)", kChave},
                    {R"(NFCE\ProtocoloAutorizacao)", "135140000000001 as 23:59"},
                    {R"(CONFIGURACAO\TIMEZONESERVIDOR\Utilizar)", "1"},
                    {R"(CONFIGURACAO\TIMEZONESERVIDOR\Valor)", "4"}});
        fnDefinirEstadoCFe_ZEL(kEncerrado);
    }
    // Number, series, key, protocol and justification.
    int cancelar(const Textos<5> &textos) {
        return std::apply(fnCFCancelar_ZEL_Felbor, std::tuple_cat(std::tie(documento), textos));
    }
    std::string enviado() const { return pasta.ler("documentosEnvio.xml"); }

    ST_PersitenceXML_ZEL documento;
};

// The text with its "{1}", "{2}" and so on replaced.
template <std::size_t N>
std::string preencher(std::string texto, const Textos<N> &valores) {
    for (std::size_t i = 0; i < N; ++i)
        texto = substituirAll(texto, "{" + std::to_string(i + 1) + "}", valores[i]);
    return texto;
}

// Of number, series, key, time, protocol element and justification.
std::string evento(const Textos<6> &valores) {
    return preencher(
        "<EnvioEvento><ModeloDocumento>NFCe</ModeloDocumento><Versao>1.00</Versao><Evento>"
        "<NtfCnpjEmissor>11222333000181</NtfCnpjEmissor><NtfNumero>{1}</NtfNumero>"
        "<NtfSerie>{2}</NtfSerie><tpAmb>3</tpAmb><ChaAcesso>{3}</ChaAcesso><EveInf>"
        "<EveDh>{4}</EveDh><EveFusoHorario>-04:00</EveFusoHorario><EveTp>110111</EveTp>"
        "<EvenSeq>1</EvenSeq><Evedet><EveDesc>Cancelamento</EveDesc>{5}<EvexJust>{6}</EvexJust>"
        "</Evedet></EveInf></Evento></EnvioEvento>",
        valores);
}

// The text is the event of document 123, at whatever time it says.
void ehEventoDe123(const std::string &texto, std::string_view protocolo, std::string_view motivo) {
    const std::string hora = texto.substr(texto.find("<EveDh>") + 7, 19);
    EXPECT_EQ(texto, evento({"123", "1", kChave, hora, protocolo, motivo}));
}

} // namespace

TEST_F(Requisicoes, evento_completo_com_textos_cortados_inteiros) {
    const std::string amp = substituirAll(std::string(99, '&'), "&", "&amp;");
    const std::string chave = kChave + "0", motivo = amp + "x";
    const std::string hora = dataHora(horaLocal(1391227203).value()); // adjusted by five seconds
    std::string texto = "antes ";
    fnCriarLayoutXmlCanc_ZEL_Felbor({"1234567890", "00012", chave, "1351400000000019", motivo},
                                    1391227198, texto);
    EXPECT_EQ(texto, "antes " + evento({"123456789", "0001", kChave, hora, kProtocolo, amp}));
    configurar({{R"(CONFIGURACAO\AjustarDhCanc)", "0"}});
    texto.clear();
    fnCriarLayoutXmlCanc_ZEL_Felbor({"", "", "", "", "a<b"}, 1391227203, texto);
    EXPECT_EQ(texto, evento({"", "", "", hora, "", "a&lt;b"}));
}

// A clock far off: a date that no reader understands must not be sent, nor wrap into another one.
TEST_F(Requisicoes, ano_sem_quatro_digitos_e_recusado) {
    using Momentos = std::numeric_limits<std::time_t>;
    constexpr std::time_t kAno1000 = -30610224000, kAno10000 = 253402300800;
    const struct {
        std::time_t momento;
        int evento; // five seconds later
        int documento;
    } casos[] = {
        {0, ZEL_OK, ZEL_OK},
        {kAno1000, ZEL_OK, ZEL_OK},
        {kAno1000 - 1, ZEL_RECUSADO, ZEL_RECUSADO},
        {kAno10000 - 6, ZEL_OK, ZEL_OK},
        {kAno10000 - 5, ZEL_RECUSADO, ZEL_OK},
        {kAno10000, ZEL_RECUSADO, ZEL_RECUSADO},
        {Momentos::max(), ZEL_RECUSADO, ZEL_RECUSADO},
        {Momentos::min(), ZEL_RECUSADO, ZEL_RECUSADO},
    };
    const Ambiente zona("TZ", "UTC0");
    for (const auto &caso : casos) {
        std::string texto;
        EXPECT_EQ(fnCriarLayoutXmlCanc_ZEL_Felbor({}, caso.momento, texto), caso.evento)
            << caso.momento;
        EXPECT_EQ(texto.empty(), caso.evento != ZEL_OK) << caso.momento;
        Cabecalho cabecalho;
        EXPECT_EQ(cabecalhoZEL(kNormal, caso.momento, cabecalho), caso.documento) << caso.momento;
        EXPECT_EQ(cabecalho.texto.empty(), caso.documento != ZEL_OK) << caso.momento;
    }
}

TEST_F(Requisicoes, cancela_o_documento_nomeado_ou_o_ultimo) {
    ASSERT_EQ(cancelar({"", "", "", "", ""}), ZEL_CANCELAMENTO_GRAVADO);
    ehEventoDe123(enviado(), kProtocolo, "Cancelamento de NFCe");
    configurar({{R"(IDE\nNF)", "124"}});
    fnDefinirEstadoCFe_ZEL(kVendendo);
    ASSERT_EQ(cancelar({"123", "1", kChave, "", "\x01"}), ZEL_CANCELAMENTO_GRAVADO);
    ehEventoDe123(enviado(), "", "Cancelamento de NFCe");
    for (std::size_t i = 0; i < 5; ++i) { // one text alone, whichever it is, names a document
        Textos<5> textos{"", "", "", "", ""};
        textos[i] = "1";
        EXPECT_EQ(cancelar(textos), ZEL_CANCELAMENTO_GRAVADO) << i;
    }
    EXPECT_EQ(fnCFVerificarStatus_ZEL(), kVendendo);
}

TEST_F(Requisicoes, pedido_que_falha_nada_muda) {
    configurar({{R"(CONFIGURACAO\PathXMLEnvio)", pasta / "copia_"}});
    pasta.gravar("documentosEnvio.xml", "antigo");
    impedirGravacao("documentosEnvio.xml");
    EXPECT_EQ(cancelar({"1", "1", kChave, "", ""}), ZEL_ARQUIVO_INDISPONIVEL);
    EXPECT_EQ(fnGeraXMLConsulta_ZEL("NUM", "1", "2", "1", ""), ZEL_ARQUIVO_INDISPONIVEL);
    EXPECT_EQ(enviado(), "antigo");
    EXPECT_FALSE(existe("copia_documentosEnvio.xml"));
    EXPECT_FALSE(existe("parametrosEnvio.xml"));
}

TEST_F(Requisicoes, cancelamento_offline_sem_protocolo_em_ate_tres_copias) {
    std::optional<std::string> lista =
        pasta / "a-||" + pasta / "b-|" + pasta / "c-|" + pasta / "d-";
    ASSERT_EQ(fnCFCancelarOffline_ZEL_Felbor("", "", "", "", lista), ZEL_OK);
    EXPECT_EQ(lista, pasta / "c-" + kArquivoOffline);
    for (const auto *nome : {"a-", "b-", "c-"})
        ehEventoDe123(fnDescriptBufferContingencia(pasta.ler(nome + kArquivoOffline)), "",
                      "Cancelamento de NFCe em Contingencia Offline");
    EXPECT_FALSE(existe("d-" + kArquivoOffline));
    EXPECT_FALSE(existe("documentosEnvio.xml"));
    EXPECT_EQ(fnCFVerificarStatus_ZEL(), kEncerrado);
}

TEST_F(Requisicoes, lista_offline_diz_o_ultimo_arquivo_e_fica_na_recusa) {
    const std::string aqui = pasta / "", falta = pasta / "falta/";
    const std::string fora = kChave.substr(0, 6) + "/../../../" + kChave.substr(16);
    using Lista = std::optional<std::string>;
    const std::tuple<std::string, Lista, int, Lista> casos[] = {
        {kChave.substr(1), aqui, ZEL_RECUSADO, aqui},
        {kChave + "0", aqui, ZEL_RECUSADO, aqui},
        {fora, aqui, ZEL_RECUSADO, aqui},
        {kChave, std::nullopt, ZEL_ARGUMENTO_INVALIDO, std::nullopt},
        {kChave, "||", 0, "||"},
        {kChave, falta + "|" + aqui, ZEL_OK, aqui + kArquivoOffline},
        {kChave, aqui + "|" + falta, ZEL_ARQUIVO_INDISPONIVEL, falta + kArquivoOffline}};
    for (const auto &[chave, lista, codigo, depois] : casos) {
        Lista diretorios = lista;
        EXPECT_EQ(fnCFCancelarOffline_ZEL_Felbor("1", "1", chave, "", diretorios), codigo);
        EXPECT_EQ(diretorios, depois);
    }
}

TEST_F(Requisicoes, faixa_e_cortada_nas_suas_larguras) {
    const std::string longa = std::string(59, 'j') + "<x";
    ASSERT_EQ(fnCFInutilizar_ZEL_Felbor("1234567890", "9876543210", "0012", longa), ZEL_OK);
    EXPECT_EQ(enviado(),
              "<Inutilizacao><ModeloDocumento>NFCe</ModeloDocumento><Versao>3.10</Versao>"
              "<CnpjEmissor>11222333000181</CnpjEmissor><tpAmb>3</tpAmb>"
              "<NumeroInicial>123456789</NumeroInicial><NumeroFinal>987654321</NumeroFinal>"
              "<Serie>001</Serie><Justificativa>" +
                  std::string(59, 'j') + "&lt;</Justificativa></Inutilizacao>");
}

TEST_F(Requisicoes, consulta_so_tem_os_argumentos_do_seu_tipo) {
    const std::string consulta =
        "<Consulta><ModeloDocumento>NFCe</ModeloDocumento><Versao>3.10</Versao><tpAmb>3</tpAmb>"
        "<CnpjEmissor>11222333000181</CnpjEmissor><NumeroInicial>{1}</NumeroInicial>"
        "<NumeroFinal>{2}</NumeroFinal><Serie>{3}</Serie><ChaveAcesso>{4}</ChaveAcesso>"
        "<DataEmissaoInicial>{5}</DataEmissaoInicial><DataEmissaoFinal>{6}</DataEmissaoFinal>"
        "{7}</Consulta>";
    const std::pair<Textos<5>, Textos<7>> casos[] = {
        {{"DATA", "2014-01", "2014-02", {}, "x"}, {"0", "0", "", "", "2014-01", "2014-02", ""}},
        {{"NUM", "0", "5", "2", {}}, {"0", "5", "2", "", "", "", ""}},
        {{"NUM", "0", "0", "2", "x"}, {"0", "0", "2", "", "", "", "<dhUF>43</dhUF>"}},
        {{"CHAVE", {}, "x", {}, kChave}, {"0", "0", "", kChave, "", "", ""}},
    };
    for (const auto &[argumentos, valores] : casos) {
        ASSERT_EQ(std::apply(fnGeraXMLConsulta_ZEL, argumentos), ZEL_OK);
        EXPECT_EQ(enviado(), preencher(consulta, valores));
    }
    EXPECT_EQ(pasta.ler("parametrosEnvio.xml"),
              "<ParametrosConsulta><Situacao>S</Situacao><XMLCompleto>N</XMLCompleto>"
              "<XMLLink>S</XMLLink><PDFBase64>N</PDFBase64><PDFLink>N</PDFLink>"
              "<Eventos>S</Eventos></ParametrosConsulta>");
}
