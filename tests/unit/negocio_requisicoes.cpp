// The request documents and the operations that send them.
#include "PastaTemporaria.h"
#include "ZEL_FelborFramework.h"
#include "config/Registro.h"
#include "documento/ZEL_Controle.h"
#include "negocio/Cancelamento.h"
#include "negocio/Consulta.h"
#include "negocio/Inutilizacao.h"
#include "util/Cripto.h"
#include "util/Latin1.h"
#include "util/Texto.h"

#include <gtest/gtest.h>

#include <array>
#include <ctime>
#include <filesystem>
#include <string>

using namespace zel;
namespace fs = std::filesystem;

namespace {

const std::string kChave = "43140111222333000181650010000001231171025439";
const std::string kArquivoOffline = "11222333000181_001000000123.ctgCanc";
constexpr std::string_view kNulo{};

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
        configurar(R"(IDE\Serie)", "1");
        configurar(R"(NFCE\ChaveDeAcesso)", kChave);
        configurar(R"(CONFIGURACAO\estadoCFe)", "5");
    }
    bool existe(std::string_view nome) const { return fs::exists(pasta / nome); }
    std::string enviado() const { return pasta.ler("documentosEnvio.xml"); }
    // The event's only part that the clock decides, taken out.
    static std::string semHora(std::string evento) {
        const std::size_t inicio = evento.find("<EveDh>") + 7;
        return evento.erase(inicio, evento.find("</EveDh>") - inicio);
    }
    // What makes the next replacement of a file fail, for root too.
    void impedir(const std::string &nome) const { fs::create_directory(pasta / (nome + ".novo")); }
    void permitir(const std::string &nome) const { fs::remove(pasta / (nome + ".novo")); }

    PastaTemporaria pasta;
};

// 23:59:58 of 31 January 2014, four hours west of UTC.
constexpr std::time_t kMomento = 1391227198;

std::string evento(const DadosCancelamento &cancelado) {
    std::string texto;
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

// What the consultation of a kind says behind the issuer.
std::string consultaEsperada(std::string_view restante) {
    return "<Consulta><ModeloDocumento>NFCe</ModeloDocumento><Versao>3.10</Versao><tpAmb>3</tpAmb>"
           "<CnpjEmissor>11222333000181</CnpjEmissor>" +
           std::string(restante) + "</Consulta>";
}

} // namespace

// An element lost, misplaced or unescaped; a protocol element without protocol; text beyond its
// field; an event that precedes the authorization.
TEST_F(Requisicoes, evento_de_cancelamento) {
    configurar(R"(CONFIGURACAO\AjustarDhCanc)", "0");
    const std::string noMomento = "2014-01-31T23:59:58";
    const std::string protocolo = "<EvenProt>135140000000001</EvenProt>";
    EXPECT_EQ(evento({"123", "1", kChave, "135140000000001", "Troca <de> P&amp;B"}),
              eventoEsperado("123", "1", kChave, noMomento,
                             protocolo + "<EvexJust>Troca &lt;de&gt; P&amp;B</EvexJust>"));
    EXPECT_EQ(evento({"", "", "", "", ""}),
              eventoEsperado("", "", "", noMomento, "<EvexJust></EvexJust>"));

    const std::string ampersands(98, '&');
    EXPECT_EQ(evento({"1234567890", "00012", kChave + "0", "1351400000000019",
                      ampersands + std::string("ç"_l1) + "x"}),
              eventoEsperado("123456789", "0001", kChave, noMomento,
                             protocolo + "<EvexJust>" + substituirAll(ampersands, "&", "&amp;") +
                                 std::string("ç"_l1) + "</EvexJust>"));

    configurar(R"(CONFIGURACAO\AjustarDhCanc)", "1");
    std::string texto = "antes";
    fnCriarLayoutXmlCanc_ZEL_Felbor({"1", "1", kChave, "", "x"}, kMomento, texto);
    EXPECT_EQ(texto, "antes" + eventoEsperado("1", "1", kChave, "2014-02-01T00:00:03",
                                              "<EvexJust>x</EvexJust>"));
}

// A receipt cancelled in the wrong state, a closed one losing its state, or a file where none
// belongs.
TEST_F(Requisicoes, cancelamento_sem_argumentos_segue_o_estado) {
    const struct {
        const char *estado;
        int codigo;
        int depois;
    } casos[] = {{"", 1, 6},  {"0", 1, 6}, {"1", 1, 6}, {"2", 1, 6},
                 {"3", 1, 6}, {"4", 1, 6}, {"5", 2, 5}, {"6", -1, 6}};
    for (const auto &caso : casos) {
        fecharDocumento();
        configurar(R"(CONFIGURACAO\estadoCFe)", caso.estado);
        fs::remove(pasta / "documentosEnvio.xml");
        EXPECT_EQ(fnCFCancelar_ZEL_Felbor("", "", "", "", ""), caso.codigo) << caso.estado;
        EXPECT_EQ(fnCFVerificarStatus_ZEL(), caso.depois) << caso.estado;
        EXPECT_EQ(existe("documentosEnvio.xml"), caso.codigo == 2) << caso.estado;
    }
}

// An event of another document than the last closed one, or a protocol of an older one.
TEST_F(Requisicoes, cancelamento_sem_argumentos_usa_os_valores_guardados) {
    fecharDocumento();
    const std::string justificativa = "<EvexJust>Cancelamento de NFCe</EvexJust>";
    ASSERT_EQ(fnCFCancelar_ZEL_Felbor("", "", "", "", ""), ZEL_CANCELAMENTO_GRAVADO);
    EXPECT_EQ(semHora(enviado()), eventoEsperado("123", "1", kChave, "", justificativa));
    configurar(R"(NFCE\ProtocoloAutorizacao)", "135140000000001 as 23:59");
    ASSERT_EQ(fnCFCancelar_ZEL_Felbor("", "", "", "", ""), ZEL_CANCELAMENTO_GRAVADO);
    EXPECT_EQ(semHora(enviado()),
              eventoEsperado("123", "1", kChave, "",
                             "<EvenProt>135140000000001</EvenProt>" + justificativa));
}

TEST_F(Requisicoes, cancelamento_com_argumentos_vale_em_qualquer_estado) {
    for (int estado = 0; estado <= 6; ++estado) {
        fnDefinirEstadoCFe_ZEL(estado);
        ASSERT_EQ(fnCFCancelar_ZEL_Felbor("7", "2", kChave, "", "\x01"), ZEL_CANCELAMENTO_GRAVADO);
        EXPECT_EQ(fnCFVerificarStatus_ZEL(), estado);
        EXPECT_EQ(semHora(enviado()), eventoEsperado("7", "2", kChave, "",
                                                     "<EvexJust>Cancelamento de NFCe</EvexJust>"));
    }
    // One text alone, whichever it is, names a document.
    fnDefinirEstadoCFe_ZEL(kVendendo);
    for (std::size_t i = 0; i < 5; ++i) {
        std::array<std::string_view, 5> textos{"", "", "", "", ""};
        textos[i] = "1";
        EXPECT_EQ(fnCFCancelar_ZEL_Felbor(textos[0], textos[1], textos[2], textos[3], textos[4]),
                  ZEL_CANCELAMENTO_GRAVADO);
    }
    EXPECT_EQ(fnCFVerificarStatus_ZEL(), kVendendo);
}

// Success told although the state is not on disk, a null text taken for an empty one, a
// configuration that was not looked at again, an old request lost by a failed write.
TEST_F(Requisicoes, cancelamento_que_falha_nada_muda) {
    fnDefinirEstadoCFe_ZEL(kVendendo);
    for (std::size_t i = 0; i < 5; ++i) {
        std::array<std::string_view, 5> textos{"", "", "", "", ""};
        textos[i] = kNulo;
        EXPECT_EQ(fnCFCancelar_ZEL_Felbor(textos[0], textos[1], textos[2], textos[3], textos[4]),
                  ZEL_ARGUMENTO_INVALIDO);
    }
    impedir("ZEL_Framework.xml");
    EXPECT_EQ(fnCFCancelar_ZEL_Felbor("", "", "", "", ""), ZEL_ARQUIVO_INDISPONIVEL);
    EXPECT_EQ(fnCFVerificarStatus_ZEL(), kVendendo);
    permitir("ZEL_Framework.xml");

    pasta.gravar("documentosEnvio.xml", "antigo");
    impedir("documentosEnvio.xml");
    configurar(R"(CONFIGURACAO\PathXMLEnvio)", pasta / "copia_");
    EXPECT_EQ(fnCFCancelar_ZEL_Felbor("1", "1", kChave, "", ""), ZEL_ARQUIVO_INDISPONIVEL);
    EXPECT_EQ(enviado(), "antigo");
    EXPECT_FALSE(existe("copia_documentosEnvio.xml"));
    permitir("documentosEnvio.xml");

    // Another process closed the receipt.
    pasta.gravar("ZEL_Framework.xml",
                 substituirAll(pasta.ler("ZEL_Framework.xml"), "<estadoCFe>2<", "<estadoCFe>5<"));
    EXPECT_EQ(fnCFCancelar_ZEL_Felbor("", "", "", "", ""), ZEL_CANCELAMENTO_GRAVADO);
    pasta.gravar("ZEL_Framework.xml", "");
    std::optional<std::string> diretorios;
    EXPECT_EQ(fnCFCancelar_ZEL_Felbor(kNulo, "", "", "", ""), ZEL_CONFIG_ILEGIVEL);
    EXPECT_EQ(fnCFCancelarOffline_ZEL_Felbor("", "", "", "", diretorios), ZEL_CONFIG_ILEGIVEL);
    EXPECT_EQ(fnCFInutilizar_ZEL_Felbor("1", "2", "1", kNulo), ZEL_CONFIG_ILEGIVEL);
}

// A directory missed, a protocol written, the state or the online request touched.
TEST_F(Requisicoes, cancelamento_offline_grava_em_cada_diretorio) {
    for (const std::string nome : {"a", "b", "c", "d"})
        fs::create_directory(pasta / nome);
    fnDefinirEstadoCFe_ZEL(kVendendo);
    std::optional<std::string> diretorios =
        pasta / "a/|" + "|" + pasta / "b/|" + pasta / "c/|" + pasta / "d/";
    ASSERT_EQ(fnCFCancelarOffline_ZEL_Felbor("123", "1", kChave, "Sem rede", diretorios), ZEL_OK);
    EXPECT_EQ(diretorios, pasta / "c/" + kArquivoOffline);
    for (const std::string nome : {"a/", "b/", "c/"})
        EXPECT_EQ(semHora(fnDescriptBufferContingencia(pasta.ler(nome + kArquivoOffline))),
                  eventoEsperado("123", "1", kChave, "", "<EvexJust>Sem rede</EvexJust>"));
    EXPECT_FALSE(existe("d/" + kArquivoOffline));
    EXPECT_FALSE(existe("documentosEnvio.xml"));
    EXPECT_EQ(fnCFVerificarStatus_ZEL(), kVendendo);

    fecharDocumento();
    configurar(R"(NFCE\ProtocoloAutorizacao)", "135140000000001");
    diretorios = pasta / "d/";
    ASSERT_EQ(fnCFCancelarOffline_ZEL_Felbor("", "", "", "", diretorios), ZEL_OK);
    EXPECT_EQ(semHora(fnDescriptBufferContingencia(pasta.ler("d/" + kArquivoOffline))),
              eventoEsperado("123", "1", kChave, "",
                             "<EvexJust>Cancelamento de NFCe em Contingencia Offline</EvexJust>"));
}

// The answer of another file than the last, a file named by half a key, a list touched by a
// refusal.
TEST_F(Requisicoes, cancelamento_offline_recusas_e_falhas) {
    const std::string lista = pasta / "";
    const std::string falta = pasta / "falta/";
    const auto cancelar = [](std::string_view chave, std::optional<std::string> &diretorios) {
        return fnCFCancelarOffline_ZEL_Felbor("1", "1", chave, "", diretorios);
    };
    // Stored values without a key, among them.
    for (const std::string &chave : {kChave.substr(1), kChave + "0", "x" + kChave.substr(1),
                                     std::string("../../../../../../../../../../../../../etc/x")}) {
        std::optional<std::string> diretorios = lista;
        EXPECT_EQ(cancelar(chave, diretorios), ZEL_RECUSADO) << chave;
        EXPECT_EQ(diretorios, lista);
    }
    std::optional<std::string> diretorios = lista;
    EXPECT_EQ(fnCFCancelarOffline_ZEL_Felbor("", "", "", "", diretorios), ZEL_RECUSADO);
    for (std::size_t i = 0; i < 4; ++i) {
        std::array<std::string_view, 4> textos{"1", "1", kChave, "x"};
        textos[i] = kNulo;
        EXPECT_EQ(
            fnCFCancelarOffline_ZEL_Felbor(textos[0], textos[1], textos[2], textos[3], diretorios),
            ZEL_ARGUMENTO_INVALIDO);
    }
    EXPECT_EQ(diretorios, lista);
    EXPECT_FALSE(existe(kArquivoOffline));
    diretorios.reset();
    EXPECT_EQ(cancelar(kChave, diretorios), ZEL_ARGUMENTO_INVALIDO);
    for (const std::string_view vazia : {"", "||"}) {
        diretorios = vazia;
        EXPECT_EQ(cancelar(kChave, diretorios), 0);
        EXPECT_EQ(diretorios, vazia);
    }
    diretorios = lista + "|" + falta;
    EXPECT_EQ(cancelar(kChave, diretorios), ZEL_ARQUIVO_INDISPONIVEL);
    EXPECT_EQ(diretorios, falta + kArquivoOffline);
    EXPECT_TRUE(existe(kArquivoOffline));
    diretorios = falta + "|" + lista;
    EXPECT_EQ(cancelar(kChave, diretorios), ZEL_OK);
    EXPECT_EQ(diretorios, lista + kArquivoOffline);
}

// Fields mixed up or of another width than the cancellation's; a null text taken for an empty one.
TEST_F(Requisicoes, inutilizacao) {
    const auto esperada = [](const std::string &restante) {
        return "<Inutilizacao><ModeloDocumento>NFCe</ModeloDocumento><Versao>3.10</Versao>"
               "<CnpjEmissor>11222333000181</CnpjEmissor><tpAmb>3</tpAmb>" +
               restante + "</Inutilizacao>";
    };
    ASSERT_EQ(fnCFInutilizar_ZEL_Felbor("1234567890", "9876543210", "0012", std::string(61, '<')),
              ZEL_OK);
    EXPECT_EQ(
        enviado(),
        esperada("<NumeroInicial>123456789</NumeroInicial><NumeroFinal>987654321</NumeroFinal>"
                 "<Serie>001</Serie><Justificativa>" +
                 substituirAll(std::string(60, '<'), "<", "&lt;") + "</Justificativa>"));
    ASSERT_EQ(fnCFInutilizar_ZEL_Felbor("", "", "", ""), ZEL_OK);
    EXPECT_EQ(enviado(), esperada("<NumeroInicial></NumeroInicial><NumeroFinal></NumeroFinal>"
                                  "<Serie></Serie><Justificativa></Justificativa>"));
    for (std::size_t i = 0; i < 4; ++i) {
        std::array<std::string_view, 4> textos{"1", "2", "3", "4"};
        textos[i] = kNulo;
        EXPECT_EQ(fnCFInutilizar_ZEL_Felbor(textos[0], textos[1], textos[2], textos[3]),
                  ZEL_ARGUMENTO_INVALIDO);
    }
    EXPECT_EQ(fnCFVerificarStatus_ZEL(), kNenhum);
}

// An argument of one kind written by another, the whole state asked for when a range is meant.
TEST_F(Requisicoes, consulta_por_tipo) {
    const std::string semNumeros = "<NumeroInicial>0</NumeroInicial><NumeroFinal>0</NumeroFinal>";
    const std::string semDatas = "<DataEmissaoInicial></DataEmissaoInicial>"
                                 "<DataEmissaoFinal></DataEmissaoFinal>";
    const std::string porNumero = "<NumeroInicial>{1}</NumeroInicial><NumeroFinal>{2}</NumeroFinal>"
                                  "<Serie>1</Serie><ChaveAcesso></ChaveAcesso>" +
                                  semDatas;
    const auto numeros = [&](std::string_view primeiro, std::string_view ultimo) {
        return substituirAll(substituirAll(porNumero, "{1}", primeiro), "{2}", ultimo);
    };
    const struct {
        std::array<std::string_view, 5> argumentos;
        std::string esperado;
    } casos[] = {
        {{"DATA", "2014-01-01", "2014-01-31", kNulo, "x"},
         semNumeros + "<Serie></Serie><ChaveAcesso></ChaveAcesso>"
                      "<DataEmissaoInicial>2014-01-01</DataEmissaoInicial>"
                      "<DataEmissaoFinal>2014-01-31</DataEmissaoFinal>"},
        {{"NUM", "1", "5", "1", kNulo}, numeros("1", "5")},
        {{"NUM", "0", "5", "1", "x"}, numeros("0", "5")},
        {{"NUM", "0", "0", "1", kNulo}, numeros("0", "0") + "<dhUF>43</dhUF>"},
        {{"NUM", "00", "0", "1", kNulo}, numeros("00", "0")},
        {{"CHAVE", kNulo, "x", kNulo, kChave},
         semNumeros + "<Serie></Serie><ChaveAcesso>" + kChave + "</ChaveAcesso>" + semDatas},
    };
    for (const auto &[argumentos, esperado] : casos) {
        fs::remove(pasta / "parametrosEnvio.xml");
        ASSERT_EQ(fnGeraXMLConsulta_ZEL(argumentos[0], argumentos[1], argumentos[2], argumentos[3],
                                        argumentos[4]),
                  ZEL_OK);
        EXPECT_EQ(enviado(), consultaEsperada(esperado));
        EXPECT_EQ(pasta.ler("parametrosEnvio.xml"),
                  "<ParametrosConsulta><Situacao>S</Situacao><XMLCompleto>N</XMLCompleto>"
                  "<XMLLink>S</XMLLink><PDFBase64>N</PDFBase64><PDFLink>N</PDFLink>"
                  "<Eventos>S</Eventos></ParametrosConsulta>");
    }
}

// A request written for a kind that was not understood, parameters without their request, a first
// call that consults for the default issuer.
TEST_F(Requisicoes, consulta_recusas_e_falhas) {
    const std::array<std::string_view, 5> recusados[] = {
        {kNulo, "1", "2", "1", kChave},    {"", "1", "2", "1", kChave},
        {"num", "1", "2", "1", kChave},    {"NUM ", "1", "2", "1", kChave},
        {"NUMERO", "1", "2", "1", kChave}, {"DATA", kNulo, "2", "1", kChave},
        {"DATA", "1", kNulo, "1", kChave}, {"NUM", kNulo, "2", "1", kChave},
        {"NUM", "1", kNulo, "1", kChave},  {"NUM", "1", "2", kNulo, kChave},
        {"CHAVE", "1", "2", "1", kNulo}};
    for (const auto &[tipo, inicio, fim, serie, chave] : recusados)
        EXPECT_EQ(fnGeraXMLConsulta_ZEL(tipo, inicio, fim, serie, chave), ZEL_ARGUMENTO_INVALIDO)
            << tipo;
    impedir("documentosEnvio.xml");
    const auto consultar = [] { return fnGeraXMLConsulta_ZEL("NUM", "1", "2", "1", kNulo); };
    EXPECT_EQ(consultar(), ZEL_ARQUIVO_INDISPONIVEL);
    permitir("documentosEnvio.xml");

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

// A copy filed under another kind, or of a request that is only kept offline.
TEST_F(Requisicoes, copias_de_historico_por_tipo) {
    configurar(R"(CONFIGURACAO\PathXMLEnvio)", pasta / "copia_");
    configurar(R"(CONFIGURACAO\HistoricoXML)", "1");
    const auto copias = [&] {
        std::string nomes;
        for (const auto &entrada : fs::directory_iterator(pasta / "")) {
            const std::string nome = entrada.path().filename();
            if (!nome.starts_with("copia_")) continue;
            EXPECT_EQ(pasta.ler(nome), enviado());
            nomes += nome.substr(6, 9) + " ";
            fs::remove(entrada);
        }
        return nomes;
    };
    fnCFCancelar_ZEL_Felbor("1", "1", kChave, "", "");
    EXPECT_EQ(copias(), "EnvioCanc ");
    fnGeraXMLConsulta_ZEL("CHAVE", "", "", "", kChave);
    EXPECT_EQ(copias(), "EnvioCons ");
    fnCFInutilizar_ZEL_Felbor("1", "2", "1", "x");
    EXPECT_EQ(copias(), "EnvioInut ");
    std::optional<std::string> diretorios = pasta / "";
    fnCFCancelarOffline_ZEL_Felbor("1", "1", kChave, "", diretorios);
    EXPECT_EQ(copias(), "");
}
