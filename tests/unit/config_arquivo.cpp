// SPDX-License-Identifier: MIT
// The text of the configuration file, whoever wrote, tore or changed it.
#include "apoio/Trecho.h"
#include "config/ArquivoConfig.h"
#include "texto/Texto.h"

#include <gtest/gtest.h>

using namespace zel;

namespace {

constexpr Chave kCUF = R"(IDE\cUF)"_chave;
constexpr Chave kSegundoDFab = {R"(PROD\MED\dFab)"_chave.indice + 2};
constexpr Chave kProducaoAC = R"(URLS\AC\Producao)"_chave;

const std::string kCriado = fnXML_CriarArquivo(ValoresConfig{});

// The created file with one piece of it replaced by another, wherever it is.
std::string com(std::string_view de, std::string_view para) {
    EXPECT_TRUE(contem(kCriado, de));
    return substituirAll(kCriado, de, para);
}

CargaConfig carregado(std::string_view texto) {
    return fnXML_CarregarXML(texto, ValoresConfig{}).value();
}

std::string alterado(std::string_view texto, const std::vector<Alteracao> &alteracoes) {
    const auto atual = localizar(std::string(texto));
    const auto novo = atual ? fnXML_AlterarArquivo(*atual, alteracoes) : std::nullopt;
    if (!novo) return "none";
    // The places that were moved are those that a new search finds.
    EXPECT_TRUE(localizar(novo->texto)->varredura == novo->varredura) << novo->texto;
    return novo->texto;
}

} // namespace

TEST(ConfigCatalogo, caminho_leva_a_sua_chave_ou_a_nenhuma) {
    EXPECT_EQ(procurarChave(R"(ide\nf)"), R"(IDE\nNF)"_chave);
    for (const std::string_view caminho :
         {R"(IDE\UF)", R"(IMPOSTO\ICMS\vBC)", R"(ICMS\ICMS00\vBC)", R"(IMPOSTO\ICMS\ICMS00)",
          R"(IDE\\cUF)", R"(IDE\cUF\)", R"(FRAMEWORKZEL\IDE\cUF)", "cUF", "\\", ""})
        EXPECT_FALSE(procurarChave(caminho)) << caminho;
}

TEST(ConfigArquivo, texto_alheio_e_lido_como_esta) {
    const struct {
        std::string_view de, para;
        Chave chave;
        std::string_view esperado;
    } casos[] = {
        {"<cUF>43<", "<cUF>356<", kCUF, "35"},  // longer than its key
        {"<cUF>43<", "<cUF>\n<<", kCUF, "\n<"}, // raw
        {"<cUF>43</cUF>", "<!--</cUF><x--><!----><cUF>35</cUF>", kCUF, "35"},
        {"<cUF>43</cUF>", "<cUF>35</cUF><cUF>31</cUF>", kCUF, "31"}, // the last one wins
        {"<dFab></dFab>\r\n      <vPMC>", "<dFab>2</dFab>\r\n      <vPMC>", kSegundoDFab, "2"},
    };
    for (const auto &[de, para, chave, esperado] : casos)
        EXPECT_EQ(carregado(com(de, para)).valores[chave], esperado) << para;
}

// What stands after the strange piece is neither read, nor lost, nor doubled by the completion.
TEST(ConfigArquivo, a_leitura_para_no_que_nao_entende) {
    for (const std::string_view estranho :
         {"<EstadoCFe>2</EstadoCFe>", "<novo><IDE><cUF>50</cUF></IDE></novo>", "<cUF>50</cUF>",
          "</IDE>", "<estadoCFe>2</EstadoCFe>", "<estadoCFe <", "<!-- <estadoCFe>"}) {
        std::string texto = com("<estadoCFe></estadoCFe>", estranho);
        texto = substituirAll(texto, "<HistoricoXML>0<", "<HistoricoXML>1<");
        const CargaConfig carga = carregado(texto);
        EXPECT_EQ(carga.valores[R"(CONFIGURACAO\HistoricoXML)"_chave], "0") << estranho;
        EXPECT_TRUE(contem(carga.arquivo.texto, "<HistoricoXML>1<"));
        EXPECT_EQ(carga.arquivo.texto.find("<HistoricoXML>0<"), carga.arquivo.texto.npos)
            << estranho;
        EXPECT_FALSE(carga.inteira) << estranho;
    }
    for (const std::string_view texto : {"", "<FRAMEWORKZEL>", "</FRAMEWORKZEL>"})
        EXPECT_FALSE(fnXML_CarregarXML(texto, ValoresConfig{})) << texto;
}

TEST(ConfigArquivo, o_que_falta_volta_ao_seu_grupo) {
    EXPECT_EQ(carregado(kCriado).arquivo.texto, kCriado);
    EXPECT_TRUE(carregado(kCriado).inteira);
    EXPECT_EQ(carregado("<FRAMEWORKZEL>\r\n</FRAMEWORKZEL>\r\n").arquivo.texto + "\n", kCriado);
    EXPECT_TRUE(
        contem(carregado(com("    <TipoAmbiente>3</TipoAmbiente>\r\n", "")).arquivo.texto,
               "</TIMEZONESERVIDOR>\r\n    <TipoAmbiente>3</TipoAmbiente>\r\n  </CONFIGURACAO>"));
    EXPECT_TRUE(contem(carregado("<FRAMEWORKZEL><IDE><cUF>35</IDE></FRAMEWORKZEL>").arquivo.texto,
                       "<IDE><cUF>35</cUF>  <cNF>17102544</cNF>\r\n"));
    // One dFab left: the first keeps it, the second is added after.
    const std::string umDFab = com("<dVal></dVal>\r\n      <dFab></dFab>\r\n", "<dVal></dVal>\r\n");
    EXPECT_TRUE(
        contem(carregado(umDFab).arquivo.texto, "</vPMC>\r\n      <dFab></dFab>\r\n    </MED>"));
    // A group's end tag is gone: the groups after it are not missing, and can be changed.
    const std::string aberto = com("  </CONFIGURACAO>\r\n", "");
    EXPECT_EQ(carregado(aberto).arquivo.texto, aberto);
    EXPECT_TRUE(contem(alterado(aberto, {{kCUF, "35"}}), "<cUF>35<"));
}

// Tools that write XML shorten what is empty: a key taken for unknown would end the reading, and
// the shop would go on with the defaults.
TEST(ConfigArquivo, elemento_vazio_e_a_sua_chave) {
    for (const std::string_view vazio : {"<cUF/>", "<cUF />", "<cUF \t\r\n/>"}) {
        const std::string texto = com("<cUF>43</cUF>", vazio);
        const CargaConfig carga = carregado(substituirAll(texto, "Venda", "Troca"));
        EXPECT_EQ(carga.valores[kCUF], "") << vazio;
        EXPECT_EQ(carga.valores[R"(IDE\natOP)"_chave], "Troca") << vazio;
        EXPECT_TRUE(carga.inteira && carregado(texto).arquivo.texto == texto) << vazio;
        EXPECT_EQ(alterado(texto, {{kCUF, ""}}), texto);
        EXPECT_EQ(alterado(texto, {{kCUF, "35"}}) + "\n", com("<cUF>43<", "<cUF>35<")) << vazio;
    }
    // Two of one name are two keys still.
    const std::string dois = com("<dFab></dFab>", "<dFab/>");
    EXPECT_TRUE(contem(alterado(dois, {{kSegundoDFab, "2"}}),
                       "<dFab/>\r\n      <dVal></dVal>\r\n"
                       "      <dFab>2</dFab>\r\n      <vPMC>"));
    // The root is none of them, and a stray end tag still ends the reading.
    EXPECT_FALSE(fnXML_CarregarXML("<FRAMEWORKZEL/>", ValoresConfig{}));
    EXPECT_FALSE(carregado(com("<cUF>43</cUF>", "<cUF/></cUF>")).inteira);
}

TEST(ConfigArquivo, grupo_vazio_recebe_as_suas_linhas) {
    for (const std::string grupo : {"CIDE", "MED", "COMB", "PROD", "IMPOSTO", "URLS"}) {
        const std::size_t inicio = kCriado.find("<" + grupo + ">");
        const std::size_t fim = kCriado.find("</" + grupo + ">") + grupo.size() + 3;
        for (const std::string_view barra : {"/>", " />"}) {
            std::string texto = kCriado;
            texto.replace(inicio, fim - inicio, "<" + grupo + std::string(barra));
            const CargaConfig carga = carregado(substituirAll(texto, "Mensagem P", "M"));
            EXPECT_EQ(carga.arquivo.texto + "\n", com("Mensagem P", "M")) << grupo;
            EXPECT_EQ(carga.valores[R"(NFCE\MSGPROMOCIONAL\Titulo)"_chave], "Mromocional");
            EXPECT_TRUE(carga.inteira) << grupo;
        }
    }
    // Of a group written twice, the one that holds its keys holds them.
    const std::string dois = com("<COMB>", "<MED/><COMB>");
    EXPECT_EQ(carregado(dois).arquivo.texto, dois);
}

// However many of them there are, what is unknown is passed over.
TEST(ConfigArquivo, elementos_desconhecidos_nao_encerram_a_busca) {
    std::string muitos;
    for (int i = 0; i < 500; ++i)
        muitos += "<n" + std::to_string(i) + (i % 3 ? ">1</n" + std::to_string(i) + ">" : "/>");
    const std::string texto = com("<cUF>", muitos + "<cUF>");
    EXPECT_EQ(alterado(texto, {{kCUF, "35"}}) + "\n", substituirAll(texto, "<cUF>43", "<cUF>35"));
    EXPECT_EQ(carregado(substituirAll(texto, "<cUF>43", "<cUF>35")).valores[kCUF], "43");
}

TEST(ConfigArquivo, mudanca_deixa_o_resto_como_esta) {
    // The comment stays, as does what is unknown, with a key of the same name in it.
    const std::string alheio = com("<cUF>", "<!-- </cUF> --><outro><cUF>43</cUF></outro>\t<cUF>");
    EXPECT_EQ(alterado(alheio, {{kCUF, "35"}, {R"(IDE\natOP)"_chave, ""}}) + "\n",
              substituirAll(substituirAll(alheio, "\t<cUF>43<", "\t<cUF>35<"), "Venda", ""));
    // The text ends one character after the root, but only where something changes.
    const std::string cauda = com("</FRAMEWORKZEL>\r\n", "</FRAMEWORKZEL>xyz");
    EXPECT_TRUE(alterado(cauda, {{kCUF, "35"}}).ends_with("</FRAMEWORKZEL>x"));
    EXPECT_EQ(alterado(cauda, {{kCUF, "43"}}), cauda);
    EXPECT_EQ(alterado("<FRAMEWORKZEL><IDE></FRAMEWORKZEL>", {{kCUF, "35"}}), "none");
}

// A value that a later load would not give back would be lost with the process.
TEST(ConfigArquivo, mudanca_e_lida_de_volta) {
    const struct {
        std::string texto;
        std::vector<Alteracao> alteracoes; // the last one holds
    } casos[] = {
        {kCriado, {{kProducaoAC, "a"}}}, // RS's element, loaded last, must follow
        {kCriado, {{kProducaoAC, "a"}, {R"(URLS\RS\Producao)"_chave, "b"}}},
        {kCriado, {{kSegundoDFab, "2"}}},
        {kCriado, {{R"(IDE\natOP)"_chave, "a<b<!-- & \xE7 <"}}},
        {com("<cUF>43</cUF>", "<cUF>35</cUF><cUF>31</cUF>"), {{kCUF, "33"}, {kCUF, "32"}}},
        {com("<IDE>", "<IDE><cUF>35</cUF></IDE><IDE>"), {{kCUF, "32"}}},
    };
    for (const auto &[texto, alteracoes] : casos) {
        const CargaConfig relido = carregado(alterado(texto, alteracoes));
        for (const Alteracao &alteracao : alteracoes)
            EXPECT_EQ(relido.valores[alteracao.chave], alteracoes.back().valor);
    }
}

// Torn and hostile texts: nothing hangs or crashes, and what was completed once is complete.
TEST(ConfigArquivo, texto_rasgado_se_completa_de_uma_vez) {
    const std::string raiz = "<FRAMEWORKZEL>";
    for (std::size_t i = raiz.size(); i < kCriado.size(); i += i < 450 ? 1 : 173) {
        for (const std::string_view fim : {"</FRAMEWORKZEL>", "></FRAMEWORKZEL>"}) {
            const auto carga = carregado(kCriado.substr(0, i).append(fim));
            ASSERT_EQ(carregado(carga.arquivo.texto).arquivo.texto, carga.arquivo.texto) << i;
        }
    }
    // A search of the rest of the text for each of a million tags would not end within the time of
    // a test, whether they share a name ("#" is a number) or not.
    for (const std::string_view peca :
         {"<a>", "<a#>", "<a#/>", "<a#></a", "<a#", "<a#><IDE>", "<a#></IDE>", "<", "<!--", "</",
          "<IDE>", "<IDE/>", "<cUF>", "<cUF/>", "<IDE></cUF>", "<IMPOSTO><ICMS><ICMS00>", "</IDE>",
          "<idDest><IDE></IDE>", "<FRAMEWORKZEL>"}) {
        std::string texto = raiz;
        for (int i = 0; texto.size() < 1'000'000; ++i)
            texto += substituirAll(peca, "#", std::to_string(i));
        texto = carregado(texto + "</FRAMEWORKZEL>").arquivo.texto;
        EXPECT_TRUE(carregado(texto).arquivo.texto == texto) << peca;
    }
}
