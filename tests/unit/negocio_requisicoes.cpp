// The request documents and the operations that send them.
#include "PastaTemporaria.h"
#include "ZEL_FelborFramework.h"
#include "config/Registro.h"
#include "documento/ZEL_Controle.h"
#include "negocio/Cancelamento.h"
#include "negocio/Consulta.h"
#include "negocio/Inutilizacao.h"
#include "util/Cripto.h"
#include "util/Texto.h"

#include <gtest/gtest.h>

#include <array>
#include <ctime>
#include <filesystem>
#include <map>
#include <string>
#include <tuple>
#include <utility>

using namespace zel;
namespace fs = std::filesystem;

namespace {

const std::string kChave = "43140111222333000181650010000001231171025439";
const std::string kArquivoOffline = "11222333000181_001000000123.ctgCanc";
constexpr std::string_view kNulo{};
constexpr std::time_t kMomento = 1391227198; // 23:59:58 of 31 January 2014 in the till's zone

template <std::size_t N>
using Textos = std::array<std::string_view, N>;

// A till of its own, four hours west of UTC.
class Requisicoes : public testing::Test {
protected:
    void SetUp() override {
        setenv("ZEL_DIRETORIO", (pasta / "").c_str(), 1);
        setenv("TZ", "<-04>4", 1);
        tzset();
        ASSERT_EQ(inicializarConfig(), ZEL_OK);
        configurar(R"(EMIT\CNPJ)", "11222333000181");
    }
    void TearDown() override {
        unsetenv("ZEL_DIRETORIO");
        unsetenv("TZ");
        tzset();
    }

    static void configurar(std::string_view caminho, std::string_view valor) {
        ASSERT_EQ(fnRegAlterarValor_ZEL(caminho, valor), ZEL_OK) << caminho;
    }
    // A document closed under the number 123.
    static void fecharDocumento() {
        configurar(R"(IDE\nNF)", "123");
        configurar(R"(NFCE\ChaveDeAcesso)", kChave);
        configurar(R"(CONFIGURACAO\estadoCFe)", "5");
    }
    bool existe(std::string_view nome) const { return fs::exists(pasta / nome); }
    std::string enviado() const { return pasta.ler("documentosEnvio.xml"); }
    // What makes every replacement of a file fail, for root too.
    void impedir(const std::string &nome) const { fs::create_directory(pasta / (nome + ".novo")); }

    PastaTemporaria pasta;
};

std::string evento(const DadosCancelamento &cancelado) {
    std::string texto = "antes ";
    EXPECT_EQ(fnCriarLayoutXmlCanc_ZEL_Felbor(cancelado, kMomento, texto), ZEL_OK);
    return texto;
}

std::string eventoEsperado(std::string_view numero, std::string_view serie, std::string_view chave,
                           std::string_view dataHora, std::string_view fimDoEvento) {
    std::string texto = "<EnvioEvento><ModeloDocumento>NFCe</ModeloDocumento><Versao>1.00</Versao>"
                        "<Evento><NtfCnpjEmissor>11222333000181</NtfCnpjEmissor><NtfNumero>";
    texto.append(numero).append("</NtfNumero><NtfSerie>").append(serie);
    texto.append("</NtfSerie><tpAmb>3</tpAmb><ChaAcesso>").append(chave);
    texto.append("</ChaAcesso><EveInf><EveDh>").append(dataHora);
    texto.append("</EveDh><EveFusoHorario>-04:00</EveFusoHorario><EveTp>110111</EveTp>"
                 "<EvenSeq>1</EvenSeq><Evedet><EveDesc>Cancelamento</EveDesc>");
    return texto.append(fimDoEvento).append("</Evedet></EveInf></Evento></EnvioEvento>");
}

// The event of document 123 at whatever time `texto` tells: what the clock decides is not compared.
std::string eventoDaHoraDe(std::string_view texto, std::string_view fimDoEvento) {
    const std::size_t inicio = texto.find("<EveDh>") + 7;
    return eventoEsperado("123", "1", kChave, texto.substr(inicio, 19), fimDoEvento);
}

std::string justificativa(const std::string &texto) {
    return "<EvexJust>" + texto + "</EvexJust>";
}

// A null text in any one place among empty ones.
template <std::size_t N, class Operacao>
void recusaCadaNulo(Operacao operacao) {
    for (std::size_t i = 0; i < N; ++i) {
        Textos<N> textos;
        textos.fill("");
        textos[i] = kNulo;
        EXPECT_EQ(std::apply(operacao, textos), ZEL_ARGUMENTO_INVALIDO) << i;
    }
}

} // namespace

// An element lost, misplaced or unescaped; text beyond its field or a reference cut in two; a
// protocol element without protocol; the adjustment of the time lost.
TEST_F(Requisicoes, evento_de_cancelamento) {
    const std::string protocolo = "<EvenProt>135140000000001</EvenProt>";
    const std::string amp = substituirAll(std::string(99, '&'), "&", "&amp;");
    EXPECT_EQ(evento({"1234567890", "00012", kChave + "0", "1351400000000019", amp + "x"}),
              "antes " + eventoEsperado("123456789", "0001", kChave, "2014-02-01T00:00:03",
                                        protocolo + justificativa(amp)));
    configurar(R"(CONFIGURACAO\AjustarDhCanc)", "0");
    EXPECT_EQ(evento({"", "", "", "", "a<b"}),
              "antes " +
                  eventoEsperado("", "", "", "2014-01-31T23:59:58", justificativa("a&lt;b")));
}

// A receipt cancelled in the wrong state, a closed one losing its state, a file where none belongs.
TEST_F(Requisicoes, cancelamento_sem_argumentos_segue_o_estado) {
    const struct {
        std::string_view estado;
        int codigo;
        int depois;
    } casos[] = {{"0", 1, 6}, {"1", 1, 6}, {"2", 1, 6},  {"3", 1, 6},
                 {"4", 1, 6}, {"5", 2, 5}, {"6", -1, 6}, {"", 1, 6}};
    fecharDocumento();
    for (const auto &caso : casos) {
        configurar(R"(CONFIGURACAO\estadoCFe)", caso.estado);
        EXPECT_EQ(fnCFCancelar_ZEL_Felbor("", "", "", "", ""), caso.codigo) << caso.estado;
        EXPECT_EQ(fnCFVerificarStatus_ZEL(), caso.depois) << caso.estado;
        EXPECT_EQ(fs::remove(pasta / "documentosEnvio.xml"), caso.codigo == 2) << caso.estado;
    }
}

// An event of another document than the one named, or closed last; a state changed by it.
TEST_F(Requisicoes, cancelamento_de_documento) {
    fecharDocumento();
    const std::string padrao = justificativa("Cancelamento de NFCe");
    ASSERT_EQ(fnCFCancelar_ZEL_Felbor("", "", "", "", ""), ZEL_CANCELAMENTO_GRAVADO);
    EXPECT_EQ(enviado(), eventoDaHoraDe(enviado(), padrao));
    configurar(R"(NFCE\ProtocoloAutorizacao)", "135140000000001 as 23:59");
    ASSERT_EQ(fnCFCancelar_ZEL_Felbor("", "", "", "", ""), ZEL_CANCELAMENTO_GRAVADO);
    EXPECT_EQ(enviado(),
              eventoDaHoraDe(enviado(), "<EvenProt>135140000000001</EvenProt>" + padrao));

    configurar(R"(IDE\nNF)", "124");
    configurar(R"(CONFIGURACAO\estadoCFe)", "2");
    ASSERT_EQ(fnCFCancelar_ZEL_Felbor("123", "1", kChave, "", "\x01"), ZEL_CANCELAMENTO_GRAVADO);
    EXPECT_EQ(enviado(), eventoDaHoraDe(enviado(), padrao));
    for (std::size_t i = 0; i < 5; ++i) { // one text alone, whichever it is, names a document
        Textos<5> textos{"", "", "", "", ""};
        textos[i] = "1";
        EXPECT_EQ(std::apply(fnCFCancelar_ZEL_Felbor, textos), ZEL_CANCELAMENTO_GRAVADO) << i;
    }
    EXPECT_EQ(fnCFVerificarStatus_ZEL(), kVendendo);
}

// Success told although the state is not on disk, a null text taken for an empty one, an old
// request lost by a failed write, a configuration that is not looked at again.
TEST_F(Requisicoes, cancelamento_que_falha_nada_muda) {
    fnDefinirEstadoCFe_ZEL(kVendendo);
    recusaCadaNulo<5>(fnCFCancelar_ZEL_Felbor);
    configurar(R"(CONFIGURACAO\PathXMLEnvio)", pasta / "copia_");
    impedir("ZEL_Framework.xml");
    EXPECT_EQ(fnCFCancelar_ZEL_Felbor("", "", "", "", ""), ZEL_ARQUIVO_INDISPONIVEL);
    EXPECT_EQ(fnCFVerificarStatus_ZEL(), kVendendo);
    pasta.gravar("documentosEnvio.xml", "antigo");
    impedir("documentosEnvio.xml");
    EXPECT_EQ(fnCFCancelar_ZEL_Felbor("1", "1", kChave, "", ""), ZEL_ARQUIVO_INDISPONIVEL);
    EXPECT_EQ(enviado(), "antigo");
    EXPECT_FALSE(existe("copia_documentosEnvio.xml"));

    pasta.gravar("ZEL_Framework.xml", "");
    std::optional<std::string> diretorios;
    EXPECT_EQ(fnCFCancelar_ZEL_Felbor(kNulo, "", "", "", ""), ZEL_CONFIG_ILEGIVEL);
    EXPECT_EQ(fnCFCancelarOffline_ZEL_Felbor("", "", "", "", diretorios), ZEL_CONFIG_ILEGIVEL);
    EXPECT_EQ(fnCFInutilizar_ZEL_Felbor("1", "2", "1", kNulo), ZEL_CONFIG_ILEGIVEL);
}

// A directory missed, a protocol written, the state or the online request touched.
TEST_F(Requisicoes, cancelamento_offline_grava_em_cada_diretorio) {
    fnDefinirEstadoCFe_ZEL(kVendendo);
    std::optional<std::string> diretorios =
        pasta / "a-||" + pasta / "b-|" + pasta / "c-|" + pasta / "d-";
    ASSERT_EQ(fnCFCancelarOffline_ZEL_Felbor("123", "1", kChave, "Sem rede", diretorios), ZEL_OK);
    EXPECT_EQ(diretorios, pasta / "c-" + kArquivoOffline);
    for (const std::string nome : {"a-", "b-", "c-"}) {
        const std::string lido = fnDescriptBufferContingencia(pasta.ler(nome + kArquivoOffline));
        EXPECT_EQ(lido, eventoDaHoraDe(lido, justificativa("Sem rede"))) << nome;
    }
    EXPECT_FALSE(existe("d-" + kArquivoOffline));

    fecharDocumento();
    configurar(R"(NFCE\ProtocoloAutorizacao)", "135140000000001");
    diretorios = pasta / "";
    ASSERT_EQ(fnCFCancelarOffline_ZEL_Felbor("", "", "", "", diretorios), ZEL_OK);
    const std::string lido = fnDescriptBufferContingencia(pasta.ler(kArquivoOffline));
    EXPECT_EQ(lido, eventoDaHoraDe(lido, justificativa("Cancelamento de NFCe em Contingencia "
                                                       "Offline")));
    EXPECT_EQ(fnCFVerificarStatus_ZEL(), kEncerrado);
    EXPECT_FALSE(existe("documentosEnvio.xml"));
}

// A file named by half a key or outside its directory, a list touched by a refusal, the answer of
// another file than the last.
TEST_F(Requisicoes, cancelamento_offline_recusas_e_falhas) {
    const std::string aqui = pasta / "";
    const std::string falta = pasta / "falta/";
    std::optional<std::string> diretorios = aqui;
    const auto cancelar = [&](std::string_view numero, std::string_view serie,
                              std::string_view chave, std::string_view motivo) {
        return fnCFCancelarOffline_ZEL_Felbor(numero, serie, chave, motivo, diretorios);
    };
    recusaCadaNulo<4>(cancelar);
    EXPECT_EQ(cancelar("", "", "", ""), ZEL_RECUSADO); // no document closed yet
    for (const std::string &chave :
         {kChave.substr(1), kChave + "0", kChave.substr(0, 6) + "/../../../" + kChave.substr(16)})
        EXPECT_EQ(cancelar("1", "1", chave, ""), ZEL_RECUSADO) << chave;
    EXPECT_EQ(diretorios, aqui);
    EXPECT_FALSE(existe(kArquivoOffline));

    const struct {
        std::optional<std::string> lista;
        int codigo;
        std::optional<std::string> depois;
    } casos[] = {{std::nullopt, ZEL_ARGUMENTO_INVALIDO, std::nullopt},
                 {"", 0, ""},
                 {"||", 0, "||"},
                 {falta + "|" + aqui, ZEL_OK, aqui + kArquivoOffline},
                 {aqui + "|" + falta, ZEL_ARQUIVO_INDISPONIVEL, falta + kArquivoOffline}};
    for (const auto &caso : casos) {
        diretorios = caso.lista;
        EXPECT_EQ(cancelar("1", "1", kChave, ""), caso.codigo);
        EXPECT_EQ(diretorios, caso.depois);
    }
}

// Fields mixed up or of another width than the cancellation's; a null text taken for an empty one.
TEST_F(Requisicoes, inutilizacao) {
    ASSERT_EQ(
        fnCFInutilizar_ZEL_Felbor("1234567890", "9876543210", "0012", std::string(59, 'j') + "<x"),
        ZEL_OK);
    EXPECT_EQ(enviado(),
              "<Inutilizacao><ModeloDocumento>NFCe</ModeloDocumento><Versao>3.10</Versao>"
              "<CnpjEmissor>11222333000181</CnpjEmissor><tpAmb>3</tpAmb>"
              "<NumeroInicial>123456789</NumeroInicial><NumeroFinal>987654321</NumeroFinal>"
              "<Serie>001</Serie><Justificativa>" +
                  std::string(59, 'j') + "&lt;</Justificativa></Inutilizacao>");
    recusaCadaNulo<4>(fnCFInutilizar_ZEL_Felbor);
}

// An argument of one kind written by another, the state named beside a range.
TEST_F(Requisicoes, consulta_por_tipo) {
    const std::string consulta =
        "<Consulta><ModeloDocumento>NFCe</ModeloDocumento><Versao>3.10</Versao><tpAmb>3</tpAmb>"
        "<CnpjEmissor>11222333000181</CnpjEmissor><NumeroInicial>{1}</NumeroInicial>"
        "<NumeroFinal>{2}</NumeroFinal><Serie>{3}</Serie><ChaveAcesso>{4}</ChaveAcesso>"
        "<DataEmissaoInicial>{5}</DataEmissaoInicial><DataEmissaoFinal>{6}</DataEmissaoFinal>"
        "{7}</Consulta>";
    const struct {
        Textos<5> argumentos;
        Textos<7> valores;
    } casos[] = {
        {{"DATA", "2014-01-01", "2014-01-31", kNulo, "x"},
         {"0", "0", "", "", "2014-01-01", "2014-01-31", ""}},
        {{"NUM", "1", "5", "2", kNulo}, {"1", "5", "2", "", "", "", ""}},
        {{"NUM", "0", "5", "2", "x"}, {"0", "5", "2", "", "", "", ""}},
        {{"NUM", "0", "0", "2", "x"}, {"0", "0", "2", "", "", "", "<dhUF>43</dhUF>"}},
        {{"NUM", "0", "00", "", "x"}, {"0", "00", "", "", "", "", ""}},
        {{"CHAVE", kNulo, "x", kNulo, kChave}, {"0", "0", "", kChave, "", "", ""}},
    };
    for (const auto &[argumentos, valores] : casos) {
        ASSERT_EQ(std::apply(fnGeraXMLConsulta_ZEL, argumentos), ZEL_OK);
        std::string esperada = consulta;
        for (std::size_t i = 0; i < valores.size(); ++i)
            esperada = substituirAll(esperada, "{" + std::to_string(i + 1) + "}", valores[i]);
        EXPECT_EQ(enviado(), esperada);
    }
    EXPECT_EQ(pasta.ler("parametrosEnvio.xml"),
              "<ParametrosConsulta><Situacao>S</Situacao><XMLCompleto>N</XMLCompleto>"
              "<XMLLink>S</XMLLink><PDFBase64>N</PDFBase64><PDFLink>N</PDFLink>"
              "<Eventos>S</Eventos></ParametrosConsulta>");
}

// A kind that is only alike, parameters without their request, a first call of a process that asks
// for the default issuer.
TEST_F(Requisicoes, consulta_recusas_e_falhas) {
    for (const auto tipo : Textos<5>{kNulo, "", "num", "NUM ", "NUMERO"})
        EXPECT_EQ(fnGeraXMLConsulta_ZEL(tipo, "1", "2", "1", kChave), ZEL_ARGUMENTO_INVALIDO);
    const std::pair<std::string_view, std::size_t> necessarios[] = {
        {"DATA", 1}, {"DATA", 2}, {"NUM", 1}, {"NUM", 2}, {"NUM", 3}, {"CHAVE", 4}};
    for (const auto &[tipo, argumento] : necessarios) {
        Textos<5> argumentos{tipo, "1", "2", "1", kChave};
        argumentos[argumento] = kNulo;
        EXPECT_EQ(std::apply(fnGeraXMLConsulta_ZEL, argumentos), ZEL_ARGUMENTO_INVALIDO) << tipo;
    }
    const auto consultar = [] { return fnGeraXMLConsulta_ZEL("NUM", "1", "2", "1", kNulo); };
    impedir("documentosEnvio.xml");
    EXPECT_EQ(consultar(), ZEL_ARQUIVO_INDISPONIVEL);
    fs::remove(pasta / "documentosEnvio.xml.novo");
    const std::string arquivo = pasta.ler("ZEL_Framework.xml");
    pasta.gravar("ZEL_Framework.xml", "");
    fnInicializarEstruturaDadosZEL_AUX(); // as in a new process
    EXPECT_EQ(consultar(), ZEL_CONFIG_ILEGIVEL);
    EXPECT_FALSE(existe("documentosEnvio.xml"));
    EXPECT_FALSE(existe("parametrosEnvio.xml"));

    pasta.gravar("ZEL_Framework.xml", arquivo);
    impedir("parametrosEnvio.xml");
    EXPECT_EQ(consultar(), ZEL_ARQUIVO_INDISPONIVEL);
    EXPECT_NE(enviado().find("<CnpjEmissor>11222333000181<"), std::string::npos);
}

// A copy filed under another kind.
TEST_F(Requisicoes, copias_de_historico_por_tipo) {
    configurar(R"(CONFIGURACAO\PathXMLEnvio)", pasta / "");
    configurar(R"(CONFIGURACAO\HistoricoXML)", "1");
    fnCFCancelar_ZEL_Felbor("1", "1", kChave, "", "");
    fnGeraXMLConsulta_ZEL("CHAVE", "", "", "", kChave);
    fnCFInutilizar_ZEL_Felbor("1", "2", "1", "x");
    std::map<std::string, std::string> copias; // the documents' roots by the names, up to the stamp
    for (const auto &entrada : fs::directory_iterator(pasta / "")) {
        const std::string nome = entrada.path().filename();
        if (nome.starts_with("Envio")) copias[nome.substr(0, 9)] = pasta.ler(nome).substr(0, 6);
    }
    EXPECT_EQ(copias,
              (std::map<std::string, std::string>{
                  {"EnvioCanc", "<Envio"}, {"EnvioCons", "<Consu"}, {"EnvioInut", "<Inuti"}}));
}
