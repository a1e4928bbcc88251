// The text of the configuration file: its form, what is read from damaged or foreign texts, and
// what a change leaves alone.
#include "config/ArquivoConfig.h"
#include "util/Texto.h"

#include <gtest/gtest.h>

using namespace zel;

namespace {

constexpr Chave kCUF = R"(IDE\cUF)"_chave;
constexpr Chave kNNF = R"(IDE\nNF)"_chave;
constexpr Chave kEstado = R"(CONFIGURACAO\estadoCFe)"_chave;
constexpr Chave kHistorico = R"(CONFIGURACAO\HistoricoXML)"_chave;
constexpr Chave kSerie = R"(IDE\Serie)"_chave;
constexpr Chave kDFab = R"(PROD\MED\dFab)"_chave;
constexpr Chave kSegundoDFab = {kDFab.indice + 2};
constexpr Chave kProducaoAC = R"(URLS\AC\Producao)"_chave;
constexpr Chave kProducaoRS = R"(URLS\RS\Producao)"_chave;

const std::string &criado() {
    static const std::string texto = fnXML_CriarArquivo(ValoresConfig{});
    return texto;
}

// The created file with one piece of it, which must be there, replaced by another.
std::string com(std::string_view de, std::string_view para) {
    EXPECT_NE(criado().find(de), std::string::npos) << de;
    return substituirAll(criado(), de, para);
}

CargaConfig carregado(std::string_view texto) {
    auto carga = fnXML_CarregarXML(texto, ValoresConfig{});
    EXPECT_TRUE(carga);
    return carga.value_or(CargaConfig{});
}

std::string alterado(std::string_view texto, const std::vector<Alteracao> &alteracoes) {
    return fnXML_AlterarArquivo(texto, alteracoes).value_or("none");
}

// The values after another process has read the text.
std::string_view relido(const std::string &texto, Chave chave) {
    static CargaConfig carga;
    carga = carregado(texto);
    return carga.valores[chave];
}

} // namespace

TEST(ConfigArquivo, formaDoArquivoCriado) {
    EXPECT_TRUE(criado().starts_with("<FRAMEWORKZEL>\r\n"
                                     "  <CONFIGURACAO>\r\n"
                                     "    <AjustarDhCanc>1</AjustarDhCanc>\r\n"
                                     "    <AjustarValorFPgto>0</AjustarValorFPgto>\r\n"
                                     "    <ArredondarTruncar>A</ArredondarTruncar>\r\n"
                                     "    <estadoCFe></estadoCFe>\r\n"));
    EXPECT_TRUE(criado().ends_with("      <cSitTrib></cSitTrib>\r\n"
                                   "    </ISSQN>\r\n"
                                   "  </IMPOSTO>\r\n"
                                   "</FRAMEWORKZEL>\r\n"));
    EXPECT_EQ(carregado(criado()).texto, criado()); // it lacks nothing
    EXPECT_TRUE(carregado(criado()).inteira);
}

// What another program or a person wrote, and what is understood of it.
TEST(ConfigArquivo, leitura) {
    const struct {
        std::string_view de, para;
        Chave chave;
        std::string_view esperado;
    } casos[] = {
        {"<cUF>43<", "<cUF>35<", kCUF, "35"},
        {"<cUF>43<", "<cUF>356<", kCUF, "35"},  // longer than its key
        {"<cUF>43<", "<cUF>\n<<", kCUF, "\n<"}, // raw
        {"<cUF>43</cUF>", "<!--</cUF><x--><!----><cUF>35</cUF>", kCUF, "35"},
        {"<cUF>43</cUF>", "<cUF>35</cUF><cUF>31</cUF>", kCUF, "31"}, // the last one wins
        {"<IDE>", "<IDE><cUF>35</cUF></IDE><IDE>", kCUF, "43"},
        {"<dFab></dFab>\r\n      <dVal>", "<dFab>1</dFab>\r\n      <dVal>", kDFab, "1"},
        {"<dFab></dFab>\r\n      <dVal>", "<dFab>1</dFab>\r\n      <dVal>", kSegundoDFab, ""},
        {"<dFab></dFab>\r\n      <vPMC>", "<dFab>2</dFab>\r\n      <vPMC>", kSegundoDFab, "2"},
        {"nfce/qrcode</Producao>", "x</Producao>", kProducaoAC, "http://www.sefaznet.ac.gov.br/x"},
    };
    for (const auto &caso : casos)
        EXPECT_EQ(relido(com(caso.de, caso.para), caso.chave), caso.esperado) << caso.para;
}

// What is not understood ends the reading: nothing behind it counts, everything before it does.
TEST(ConfigArquivo, fimDaLeitura) {
    const std::pair<std::string_view, std::string_view> casos[] = {
        {"<estadoCFe></estadoCFe>", "<EstadoCFe>2</EstadoCFe>"},
        {"<estadoCFe></estadoCFe>", "<novo><IDE><cUF>50</cUF></IDE></novo>"},
        {"<estadoCFe></estadoCFe>", "<cUF>50</cUF>"},
        {"<estadoCFe></estadoCFe>", "</IDE>"},
        {"<estadoCFe></estadoCFe>", "<estadoCFe>2</EstadoCFe>"},
        {"<estadoCFe></estadoCFe>", "<estadoCFe <"},
        {"<estadoCFe></estadoCFe>", "<!-- <estadoCFe>"},
        {"    <estadoCFe></estadoCFe>", "  <NFCE></NFCE>"},
    };
    for (const auto &[de, para] : casos) {
        std::string texto = substituirAll(com(de, para), "<HistoricoXML>0<", "<HistoricoXML>1<");
        texto = substituirAll(texto, "<ArredondarTruncar>A<", "<ArredondarTruncar>T<");
        EXPECT_EQ(relido(texto, R"(CONFIGURACAO\ArredondarTruncar)"_chave), "T") << para;
        EXPECT_EQ(relido(texto, kHistorico), "0") << para;
        // The text behind is neither lost nor hidden by a second element.
        EXPECT_NE(carregado(texto).texto.find("<HistoricoXML>1<"), std::string::npos) << para;
        EXPECT_EQ(carregado(texto).texto.find("<HistoricoXML>0<"), std::string::npos) << para;
        EXPECT_FALSE(carregado(texto).inteira) << para;
    }
}

TEST(ConfigArquivo, semRaizNadaSeLe) {
    for (const std::string_view texto :
         {"", "x", "<FRAMEWORKZEL>", "</FRAMEWORKZEL>", "<FrameworkZel></FrameworkZel>"}) {
        EXPECT_FALSE(fnXML_CarregarXML(texto, ValoresConfig{})) << texto;
        EXPECT_FALSE(fnXML_AlterarArquivo(texto, {})) << texto;
    }
}

// Missing entries come back where the writer puts them, before their group's end tag.
TEST(ConfigArquivo, completa) {
    EXPECT_EQ(carregado("<FRAMEWORKZEL>\r\n</FRAMEWORKZEL>\r\n").texto + "\n", criado());

    const std::string semAmbiente = com("    <TipoAmbiente>3</TipoAmbiente>\r\n", "");
    EXPECT_NE(carregado(semAmbiente)
                  .texto.find("    </TIMEZONESERVIDOR>\r\n"
                              "    <TipoAmbiente>3</TipoAmbiente>\r\n"
                              "  </CONFIGURACAO>\r\n"),
              std::string::npos);

    // One dFab left: the first keeps it, the second is added behind.
    const std::string umDFab = com("<dFab></dFab>\r\n      <dVal></dVal>\r\n      <dFab></dFab>",
                                   "<dFab>1</dFab>\r\n      <dVal></dVal>");
    EXPECT_EQ(relido(carregado(umDFab).texto, kDFab), "1");
    EXPECT_NE(carregado(umDFab).texto.find("</vPMC>\r\n      <dFab></dFab>\r\n    </MED>"),
              std::string::npos);

    // The groups stand in another order than the catalogue's.
    const auto trocado = carregado("<FRAMEWORKZEL><EMIT></EMIT><IDE></IDE></FRAMEWORKZEL>").texto;
    EXPECT_TRUE(trocado.starts_with("<FRAMEWORKZEL><EMIT>  <CNPJ>11111111111111</CNPJ>\r\n"));
    EXPECT_NE(trocado.find("</EMIT><IDE>  <cUF>43</cUF>\r\n"), std::string::npos);
}

TEST(ConfigArquivo, alteracao) {
    // Several values in one text, one of them longer than before, one emptied; comments stay.
    const std::string comentado = com("<cNF>", "<!-- a </cNF> b -->\r\n<cNF>");
    EXPECT_EQ(alterado(comentado, {{kCUF, "35"}, {kNNF, "123456789"}, {kSerie, ""}}) + "\n",
              substituirAll(substituirAll(substituirAll(comentado, "<cUF>43<", "<cUF>35<"),
                                          "<nNF>1<", "<nNF>123456789<"),
                            "<Serie>1<", "<Serie><"));
    // The text ends one character behind the root, but only where something changes.
    const std::string cauda = com("</FRAMEWORKZEL>\r\n", "</FRAMEWORKZEL>xyz");
    EXPECT_TRUE(alterado(cauda, {{kCUF, "35"}}).ends_with("</FRAMEWORKZEL>x"));
    EXPECT_EQ(alterado(cauda, {{kCUF, "43"}}), cauda);
    EXPECT_TRUE(
        alterado(cauda.substr(0, cauda.size() - 3), {{kCUF, "35"}}).ends_with("</FRAMEWORKZEL>"));
    // A key of the same name elsewhere, and an element that is not the catalogue's, stay.
    const std::string alheio = com("<cUF>", "<outro><cUF>50</cUF></outro><cUF>");
    EXPECT_EQ(alterado(alheio, {{kCUF, "35"}}) + "\n",
              substituirAll(alheio, "<cUF>43<", "<cUF>35<"));
    EXPECT_EQ(
        relido(alterado(criado(), {{R"(IDE\cMunFG)"_chave, "1"}}), R"(IMPOSTO\ISSQN\cMunFG)"_chave),
        "");
    // Of two changes of one key the last one holds; where the key has no place, nothing is done.
    EXPECT_EQ(relido(alterado(criado(), {{kCUF, "35"}, {kCUF, "31"}}), kCUF), "31");
    EXPECT_EQ(alterado("<FRAMEWORKZEL><IDE></FRAMEWORKZEL>", {{kCUF, "35"}}), "none");
}

// A value that a later load would not give back would be lost with the process.
TEST(ConfigArquivo, alteracaoVoltaNaLeitura) {
    const struct {
        std::string texto;
        Chave chave;
        std::string_view valor;
    } casos[] = {
        {criado(), kProducaoAC, "a"}, // RS's element, loaded last, must follow
        {criado(), kProducaoRS, "b"},
        {com("<cUF>43</cUF>", "<cUF>35</cUF><cUF>31</cUF>"), kCUF, "32"},
        {com("<IDE>", "<IDE><cUF>35</cUF></IDE><IDE>"), kCUF, "32"},
        {criado(), kSegundoDFab, "2"},
        {criado(), R"(IDE\natOP)"_chave, "a<b<!-- & \xE7 <"},
    };
    for (const auto &caso : casos)
        EXPECT_EQ(relido(alterado(caso.texto, {{caso.chave, std::string(caso.valor)}}), caso.chave),
                  caso.valor);
}

// Torn and hostile texts: nothing hangs or falls, and what was completed once is complete.
TEST(ConfigArquivo, textosRasgados) {
    for (std::size_t i = 0; i <= criado().size(); ++i) {
        const std::string resto = criado().substr(0, i);
        (void)fnXML_CarregarXML(resto, ValoresConfig{});
        for (const std::string_view fim : {"</FRAMEWORKZEL>", "></FRAMEWORKZEL>"}) {
            const auto carga = fnXML_CarregarXML(resto + std::string(fim), ValoresConfig{});
            if (!carga) continue;
            ASSERT_EQ(carregado(carga->texto).texto, carga->texto) << i;
            if (i % 16 == 0) alterado(carga->texto, {{kEstado, "2"}});
        }
    }
    for (const std::string_view peca : {"<a>", "<", "<!--", "</", "<IDE>", "<cUF>", "<IDE></cUF>",
                                        "<IMPOSTO><ICMS><ICMS00>", "</IDE>", "<FRAMEWORKZEL>"}) {
        std::string texto = "<FRAMEWORKZEL>";
        while (texto.size() < 300'000)
            texto += peca;
        EXPECT_TRUE(fnXML_CarregarXML(texto + "</FRAMEWORKZEL>", ValoresConfig{})) << peca;
    }
}
