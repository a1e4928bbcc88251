// The text of the configuration file: its form, what is read from damaged or foreign texts, and
// what a change leaves alone.
#include "config/ArquivoConfig.h"
#include "util/Texto.h"

#include <gtest/gtest.h>

using namespace zel;

namespace {

constexpr Chave kCUF = R"(IDE\cUF)"_chave;
constexpr Chave kNNF = R"(IDE\nNF)"_chave;
constexpr Chave kHistorico = R"(CONFIGURACAO\HistoricoXML)"_chave;
constexpr Chave kDFab = R"(PROD\MED\dFab)"_chave;
constexpr Chave kSegundoDFab = {kDFab.indice + 2};
constexpr Chave kProducaoAC = R"(URLS\AC\Producao)"_chave;
constexpr Chave kProducaoRS = R"(URLS\RS\Producao)"_chave;

constexpr std::string_view kRaiz = "<FRAMEWORKZEL>";
const std::string kCriado = fnXML_CriarArquivo(ValoresConfig{});

// The created file with one piece of it, which must be there, replaced by another.
std::string com(std::string_view de, std::string_view para) {
    EXPECT_NE(kCriado.find(de), std::string::npos) << de;
    return substituirAll(kCriado, de, para);
}

CargaConfig carregado(std::string_view texto) {
    return fnXML_CarregarXML(texto, ValoresConfig{}).value();
}

std::string relido(std::string_view texto, Chave chave) {
    return std::string(carregado(texto).valores[chave]);
}

std::string alterado(std::string_view texto, const std::vector<Alteracao> &alteracoes) {
    return fnXML_AlterarArquivo(texto, alteracoes).value_or("none");
}

bool contem(std::string_view texto, std::string_view parte) {
    return texto.find(parte) != texto.npos;
}

} // namespace

TEST(ConfigArquivo, formaDoArquivoCriado) {
    EXPECT_TRUE(kCriado.starts_with("<FRAMEWORKZEL>\r\n"
                                    "  <CONFIGURACAO>\r\n"
                                    "    <AjustarDhCanc>1</AjustarDhCanc>\r\n"
                                    "    <AjustarValorFPgto>0</AjustarValorFPgto>\r\n"
                                    "    <ArredondarTruncar>A</ArredondarTruncar>\r\n"
                                    "    <estadoCFe></estadoCFe>\r\n"));
    EXPECT_TRUE(kCriado.ends_with("      <cSitTrib></cSitTrib>\r\n"
                                  "    </ISSQN>\r\n"
                                  "  </IMPOSTO>\r\n"
                                  "</FRAMEWORKZEL>\r\n"));
    EXPECT_EQ(carregado(kCriado).texto, kCriado); // it lacks nothing
    EXPECT_TRUE(carregado(kCriado).inteira);
}

// What another program or a person wrote, and what is understood of it.
TEST(ConfigArquivo, leitura) {
    const struct {
        std::string_view de, para;
        Chave chave;
        std::string_view esperado;
    } casos[] = {
        {"<cUF>43<", "<cUF>356<", kCUF, "35"},  // longer than its key
        {"<cUF>43<", "<cUF>\n<<", kCUF, "\n<"}, // raw
        {"<cUF>43</cUF>", "<!--</cUF><x--><!----><cUF>35</cUF>", kCUF, "35"},
        {"<cUF>43</cUF>", "<cUF>35</cUF><cUF>31</cUF>", kCUF, "31"}, // the last one wins
        {"<dFab></dFab>\r\n      <dVal>", "<dFab>1</dFab>\r\n      <dVal>", kSegundoDFab, ""},
        {"<dFab></dFab>\r\n      <vPMC>", "<dFab>2</dFab>\r\n      <vPMC>", kSegundoDFab, "2"},
        {"<dFab></dFab>\r\n      <vPMC>", "<dFab>2</dFab>\r\n      <vPMC>", kDFab, ""},
    };
    for (const auto &caso : casos)
        EXPECT_EQ(relido(com(caso.de, caso.para), caso.chave), caso.esperado) << caso.para;
}

// What is not understood ends the reading: what stands before it counts, what stands behind is
// neither read, nor lost, nor doubled by the completion.
TEST(ConfigArquivo, fimDaLeitura) {
    for (const std::string_view estranho :
         {"<EstadoCFe>2</EstadoCFe>", "<novo><IDE><cUF>50</cUF></IDE></novo>", "<cUF>50</cUF>",
          "</IDE>", "<estadoCFe>2</EstadoCFe>", "<estadoCFe <", "<!-- <estadoCFe>",
          "<NFCE></NFCE>"}) {
        std::string texto = com("<estadoCFe></estadoCFe>", estranho);
        texto = substituirAll(texto, "<HistoricoXML>0<", "<HistoricoXML>1<");
        texto = substituirAll(texto, "<ArredondarTruncar>A<", "<ArredondarTruncar>T<");
        const CargaConfig carga = carregado(texto);
        EXPECT_EQ(carga.valores[R"(CONFIGURACAO\ArredondarTruncar)"_chave], "T") << estranho;
        EXPECT_EQ(carga.valores[kHistorico], "0") << estranho;
        EXPECT_TRUE(contem(carga.texto, "<HistoricoXML>1<")) << estranho;
        EXPECT_FALSE(contem(carga.texto, "<HistoricoXML>0<")) << estranho;
        EXPECT_FALSE(carga.inteira) << estranho;
    }
    for (const std::string_view texto : {"", "<FRAMEWORKZEL>", "</FRAMEWORKZEL>"})
        EXPECT_FALSE(fnXML_CarregarXML(texto, ValoresConfig{})) << texto;
}

// Missing entries come back before their group's end tag.
TEST(ConfigArquivo, completa) {
    EXPECT_EQ(carregado("<FRAMEWORKZEL>\r\n</FRAMEWORKZEL>\r\n").texto + "\n", kCriado);
    EXPECT_TRUE(contem(carregado(com("    <TipoAmbiente>3</TipoAmbiente>\r\n", "")).texto,
                       "    </TIMEZONESERVIDOR>\r\n"
                       "    <TipoAmbiente>3</TipoAmbiente>\r\n"
                       "  </CONFIGURACAO>\r\n"));
    // One dFab left: the first keeps it, the second is added behind.
    const std::string umDFab = com("<dVal></dVal>\r\n      <dFab></dFab>\r\n", "<dVal></dVal>\r\n");
    EXPECT_TRUE(contem(carregado(umDFab).texto, "</vPMC>\r\n      <dFab></dFab>\r\n    </MED>"));
    // A group's end tag is gone: the groups behind it are not missing, and can be changed.
    const std::string aberto = com("  </CONFIGURACAO>\r\n", "");
    EXPECT_EQ(carregado(aberto).texto, aberto);
    EXPECT_TRUE(contem(alterado(aberto, {{kCUF, "35"}}), "<cUF>35<"));
    // The groups stand in another order than the catalogue's; a value lacks its end tag.
    const auto torto = carregado("<FRAMEWORKZEL><EMIT></EMIT><IDE><cUF>35</IDE></FRAMEWORKZEL>");
    EXPECT_TRUE(contem(torto.texto, "<FRAMEWORKZEL><EMIT>  <CNPJ>11111111111111</CNPJ>\r\n"));
    EXPECT_TRUE(contem(torto.texto, "</EMIT><IDE><cUF>35</cUF>  <cNF>17102544</cNF>\r\n"));
}

TEST(ConfigArquivo, alteracao) {
    // Several values in one text, one grown, one emptied; the comment stays, as does what is
    // unknown, with a key of the same name in it.
    const std::string alheio = com("<cUF>", "<!-- </cUF> --><outro><cUF>43</cUF></outro>\t<cUF>");
    std::string esperado = substituirAll(alheio, "\t<cUF>43<", "\t<cUF>35<");
    esperado = substituirAll(substituirAll(esperado, "<nNF>1<", "<nNF>123<"), "Venda", "");
    EXPECT_EQ(alterado(alheio, {{kCUF, "35"}, {kNNF, "123"}, {R"(IDE\natOP)"_chave, ""}}) + "\n",
              esperado);
    // The text ends one character behind the root, but only where something changes.
    const std::string cauda = com("</FRAMEWORKZEL>\r\n", "</FRAMEWORKZEL>xyz");
    EXPECT_TRUE(alterado(cauda, {{kCUF, "35"}}).ends_with("</FRAMEWORKZEL>x"));
    EXPECT_EQ(alterado(cauda, {{kCUF, "43"}}), cauda);
    const std::string semCauda = cauda.substr(0, cauda.size() - 3);
    EXPECT_TRUE(alterado(semCauda, {{kCUF, "35"}}).ends_with("</FRAMEWORKZEL>"));
    // Where the key has no place, nothing is done.
    EXPECT_EQ(alterado("<FRAMEWORKZEL><IDE></FRAMEWORKZEL>", {{kCUF, "35"}}), "none");
}

// A value that a later load would not give back would be lost with the process.
TEST(ConfigArquivo, alteracaoVoltaNaLeitura) {
    const struct {
        std::string texto;
        std::vector<Alteracao> alteracoes; // the last one holds
    } casos[] = {
        {kCriado, {{kProducaoAC, "a"}}}, // RS's element, loaded last, must follow
        {kCriado, {{kProducaoAC, "a"}, {kProducaoRS, "b"}}},
        {kCriado, {{kSegundoDFab, "2"}}},
        {kCriado, {{R"(IDE\natOP)"_chave, "a<b<!-- & \xE7 <"}}},
        {com("<cUF>43</cUF>", "<cUF>35</cUF><cUF>31</cUF>"), {{kCUF, "33"}, {kCUF, "32"}}},
        {com("<IDE>", "<IDE><cUF>35</cUF></IDE><IDE>"), {{kCUF, "32"}}},
    };
    for (const auto &caso : casos) {
        const std::string texto = alterado(caso.texto, caso.alteracoes);
        for (const Alteracao &alteracao : caso.alteracoes)
            EXPECT_EQ(relido(texto, alteracao.chave), caso.alteracoes.back().valor);
    }
    EXPECT_EQ(relido(alterado(kCriado, {{kProducaoRS, "b"}}), kProducaoAC), "b");
}

// Torn and hostile texts: nothing hangs or falls, and what was completed once is complete.
TEST(ConfigArquivo, textosRasgados) {
    for (std::size_t i = 0; i < kCriado.size(); ++i) {
        const std::string rasgado = kCriado.substr(0, i);
        (void)fnXML_CarregarXML(rasgado, ValoresConfig{});
        // The whole of it would take minutes under the sanitizers.
        if (i < kRaiz.size() || (i > 450 && i % 173 != 0)) continue;
        for (const std::string_view fim : {"</FRAMEWORKZEL>", "></FRAMEWORKZEL>"}) {
            const auto carga = carregado(rasgado + std::string(fim));
            ASSERT_EQ(carregado(carga.texto).texto, carga.texto) << i;
        }
    }
    for (const std::string_view peca : {"<a>", "<", "<!--", "</", "<IDE>", "<cUF>", "<IDE></cUF>",
                                        "<IMPOSTO><ICMS><ICMS00>", "</IDE>", "<FRAMEWORKZEL>"}) {
        std::string texto(kRaiz);
        while (texto.size() < 50'000)
            texto += peca;
        EXPECT_TRUE(fnXML_CarregarXML(texto + "</FRAMEWORKZEL>", ValoresConfig{})) << peca;
    }
}
