// SPDX-License-Identifier: MIT
// The request documents and the operations that send them.
#include "ZEL_FelborFramework.h"
#include "apoio/DiretorioDeDados.h"
#include "config/Registro.h"
#include "documento/Cabecalho.h"
#include "documento/DataHora.h"
#include "documento/ZEL_Controle.h"
#include "negocio/Cancelamento.h"
#include "negocio/Consulta.h"
#include "negocio/Inutilizacao.h"
#include "util/Cripto.h"
#include "util/Texto.h"

#include <array>
#include <gtest/gtest.h>
#include <limits>
#include <tuple>

using namespace zel;
namespace fs = std::filesystem;

namespace {

const std::string kChave = "43140111222333000181650010000001231171025439";
const std::string kArquivoOffline = "11222333000181_001000000123.ctgCanc";
constexpr std::string_view kProtocolo = "<EvenProt>135140000000001</EvenProt>";

template <std::size_t N>
using Textos = std::array<std::string_view, N>;

// A till that closed document 123.
class Requisicoes : public testing::Test {
protected:
    void SetUp() override {
        serDiretorioDeDados(pasta);
        ASSERT_EQ(inicializarConfig(), ZEL_OK);
        configurar(R"(EMIT\CNPJ)", "11222333000181");
        configurar(R"(IDE\nNF)", "123");
        configurar(R"(NFCE\ChaveDeAcesso)", kChave);
        configurar(R"(NFCE\ProtocoloAutorizacao)", "135140000000001 as 23:59");
        configurar(R"(CONFIGURACAO\TIMEZONESERVIDOR\Utilizar)", "1");
        configurar(R"(CONFIGURACAO\TIMEZONESERVIDOR\Valor)", "4");
        fnDefinirEstadoCFe_ZEL(kEncerrado);
    }
    static void configurar(std::string_view caminho, std::string_view valor) {
        ASSERT_EQ(fnRegAlterarValor_ZEL(caminho, valor), ZEL_OK) << caminho;
    }
    // Number, series, key, protocol and justification.
    int cancelar(const Textos<5> &textos) {
        return std::apply(fnCFCancelar_ZEL_Felbor, std::tuple_cat(std::tie(documento), textos));
    }
    bool existe(std::string_view nome) const { return fs::exists(pasta / nome); }
    std::string enviado() const { return pasta.ler("documentosEnvio.xml"); }
    // What makes every replacement of a file fail, for root too.
    void impedir(const std::string &nome) const { fs::create_directory(pasta / (nome + ".novo")); }

    PastaTemporaria pasta;
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

TEST_F(Requisicoes, event_is_complete_and_its_texts_are_cut_whole) {
    const std::string amp = substituirAll(std::string(99, '&'), "&", "&amp;");
    const std::string chave = kChave + "0", motivo = amp + "x";
    const std::string hora = dataHora(horaLocal(1391227203).value()); // adjusted by five seconds
    std::string texto = "antes ";
    fnCriarLayoutXmlCanc_ZEL_Felbor({"1234567890", "00012", chave, "1351400000000019", motivo},
                                    1391227198, texto);
    EXPECT_EQ(texto, "antes " + evento({"123456789", "0001", kChave, hora, kProtocolo, amp}));
    configurar(R"(CONFIGURACAO\AjustarDhCanc)", "0");
    texto.clear();
    fnCriarLayoutXmlCanc_ZEL_Felbor({"", "", "", "", "a<b"}, 1391227203, texto);
    EXPECT_EQ(texto, evento({"", "", "", hora, "", "a&lt;b"}));
}

// A clock far off: a date that no reader understands must not be sent, nor wrap into another one.
TEST_F(Requisicoes, year_without_four_digits_is_refused) {
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
    const char *const antes = getenv("TZ");
    const std::string zonaAnterior = antes != nullptr ? antes : "";
    setenv("TZ", "UTC0", 1);
    for (const auto &caso : casos) {
        std::string texto;
        EXPECT_EQ(fnCriarLayoutXmlCanc_ZEL_Felbor({}, caso.momento, texto), caso.evento)
            << caso.momento;
        EXPECT_EQ(texto.empty(), caso.evento != ZEL_OK) << caso.momento;
        Cabecalho cabecalho;
        EXPECT_EQ(cabecalhoZEL(kNormal, caso.momento, cabecalho), caso.documento) << caso.momento;
        EXPECT_EQ(cabecalho.texto.empty(), caso.documento != ZEL_OK) << caso.momento;
    }
    antes != nullptr ? setenv("TZ", zonaAnterior.c_str(), 1) : unsetenv("TZ");
}

TEST_F(Requisicoes, cancellation_is_of_the_document_named_or_else_closed_last) {
    ASSERT_EQ(cancelar({"", "", "", "", ""}), ZEL_CANCELAMENTO_GRAVADO);
    ehEventoDe123(enviado(), kProtocolo, "Cancelamento de NFCe");
    configurar(R"(IDE\nNF)", "124");
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

TEST_F(Requisicoes, failed_request_changes_nothing) {
    configurar(R"(CONFIGURACAO\PathXMLEnvio)", pasta / "copia_");
    pasta.gravar("documentosEnvio.xml", "antigo");
    impedir("documentosEnvio.xml");
    EXPECT_EQ(cancelar({"1", "1", kChave, "", ""}), ZEL_ARQUIVO_INDISPONIVEL);
    EXPECT_EQ(fnGeraXMLConsulta_ZEL("NUM", "1", "2", "1", ""), ZEL_ARQUIVO_INDISPONIVEL);
    EXPECT_EQ(enviado(), "antigo");
    EXPECT_FALSE(existe("copia_documentosEnvio.xml"));
    EXPECT_FALSE(existe("parametrosEnvio.xml"));
}

TEST_F(Requisicoes, offline_cancellation_has_no_protocol_and_at_most_three_copies) {
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

TEST_F(Requisicoes, offline_list_tells_the_last_file_and_stays_on_refusal) {
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

TEST_F(Requisicoes, range_is_cut_to_widths_of_its_own) {
    const std::string longa = std::string(59, 'j') + "<x";
    ASSERT_EQ(fnCFInutilizar_ZEL_Felbor("1234567890", "9876543210", "0012", longa), ZEL_OK);
    EXPECT_EQ(enviado(),
              "<Inutilizacao><ModeloDocumento>NFCe</ModeloDocumento><Versao>3.10</Versao>"
              "<CnpjEmissor>11222333000181</CnpjEmissor><tpAmb>3</tpAmb>"
              "<NumeroInicial>123456789</NumeroInicial><NumeroFinal>987654321</NumeroFinal>"
              "<Serie>001</Serie><Justificativa>" +
                  std::string(59, 'j') + "&lt;</Justificativa></Inutilizacao>");
}

TEST_F(Requisicoes, consultation_holds_the_arguments_of_its_kind_only) {
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
