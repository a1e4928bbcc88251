// SPDX-License-Identifier: MIT
// What leaves the library: reissues, contingency files, history copies, the text of values and the
// configuration as another process sees it.
#include "apoio/Ambiente.h"
#include "apoio/Ouro.h"
#include "apoio/Passos.h"
#include "apoio/Trecho.h"
#include "blackbox/Caixa.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

namespace fs = std::filesystem;

namespace {

void fecharCupom(const Caixa &c, const char *texto = "", const char *descricao = "Produto") {
    ASSERT_EQ(abrir(c), ZEL_OK);
    ASSERT_EQ(vender(c, "10.00", descricao), ZEL_OK);
    ASSERT_EQ(fechar(c, texto), ZEL_OK);
}

std::string documento(const Caixa &c) {
    return c.lerArquivo("documentosEnvio.xml");
}

std::string numeros(const Caixa &c) {
    return c.config("IDE\\nNF") + " " + c.config("IDE\\cNF");
}

TEST(Reemissao, numeracao_de_cada_tipo) {
    struct Caso {
        int tipo;
        std::string nNF, cNF;
        bool contingencia; // dhCont and xJust
    };
    for (const Caso &caso : {Caso{1, "3", "17102546", false}, Caso{3, "3", "17102546", true},
                             Caso{5, "2", "17102545", true}}) {
        SCOPED_TRACE(caso.tipo);
        Caixa caixa;
        ASSERT_NO_FATAL_FAILURE(fecharCupom(caixa));
        caixa.config("NFCE\\ProtocoloAutorizacao", "143000000000001");
        std::vector<char> texto(100000);
        caixa.reiniciar(); // the sections come from the file
        ASSERT_EQ(caixa->aCFContingenciaUltimaNota_ZEL(caso.tipo, texto.data()), ZEL_OK);
        const std::string nota = documento(caixa);
        EXPECT_EQ(nota, texto.data());
        EXPECT_EQ(numeros(caixa), caso.nNF + " " + caso.cNF);
        EXPECT_EQ(elemento(nota, "nNF"), caso.nNF);
        EXPECT_EQ(nota.find("<dhCont>") != std::string::npos, caso.contingencia);
        EXPECT_TRUE(contem(nota, caixa.config("NFCE\\ChaveDeAcesso")));
        EXPECT_EQ(caixa.config("NFCE\\ProtocoloAutorizacao"), "") << "of an older document";
        EXPECT_EQ(caixa->rCFVerificarStatus_ZEL(), 5);
        ASSERT_EQ(caixa.existe("parametrosEnvio.xml"), caso.tipo == 3);
        if (caso.tipo == 3) {
            EXPECT_EQ(caixa.lerArquivo("parametrosEnvio.xml"),
                      "<SubstituirDocumento><nNF>2</nNF><serie>1</serie></SubstituirDocumento>");
        }
    }
}

TEST(Reemissao, codigos_recomecam_e_zeros_a_esquerda_caem) {
    Caixa caixa;
    ASSERT_NO_FATAL_FAILURE(fecharCupom(caixa));
    caixa.config("IDE\\nNF", "0041");
    caixa.config("IDE\\cNF", "99999999");
    ASSERT_EQ(caixa->aCFContingenciaUltimaNota_ZEL(1, nullptr), ZEL_OK);
    EXPECT_EQ(numeros(caixa), "42 1");
}

TEST(Reemissao, sem_uma_secao_gasta_o_numero_e_nao_escreve) {
    Caixa caixa;
    ASSERT_EQ(abrir(caixa), ZEL_OK);
    EXPECT_EQ(caixa->aCFContingenciaUltimaNota_ZEL(3, nullptr), -1);
    EXPECT_EQ(numeros(caixa), "2 17102545");
    EXPECT_FALSE(caixa.existe("documentosEnvio.xml"));
    EXPECT_FALSE(caixa.existe("parametrosEnvio.xml"));
}

TEST(Contingencia, arquivos_embaralhados_em_cada_diretorio) {
    Caixa caixa;
    ASSERT_NO_FATAL_FAILURE(fecharCupom(caixa));
    const std::string a = caixa.diretorio() + "a/", b = caixa.diretorio() + "b/";
    fs::create_directory(a);
    fs::create_directory(b);
    char texto[ZEL_TAMANHO_DIRETORIOS] = {};
    (a + "||" + b).copy(texto, sizeof texto - 1);
    ASSERT_EQ(caixa->aCFContingenciaUltimaNota_ZEL(4, texto), ZEL_OK);
    const std::string chave = caixa.config("NFCE\\ChaveDeAcesso");
    EXPECT_EQ(texto, b + chave + ".ctg");
    EXPECT_EQ(numeros(caixa), "2 17102546") << "the number stays";
    EXPECT_EQ(caixa.lerArquivo("a/" + chave + ".ctg"), caixa.lerArquivo("b/" + chave + ".ctg"));

    // The exported functions undo it; the terminating zero of the text is part of the file.
    ASSERT_EQ(caixa->eDescriptografarArquivo_ZEL(texto, (a + "claro.xml").c_str(), "rkv804mtq217"),
              ZEL_OK);
    std::string claro = caixa.lerArquivo("a/claro.xml");
    ASSERT_FALSE(claro.empty());
    EXPECT_EQ(claro.back(), '\0');
    claro.pop_back();
    EXPECT_TRUE(contem(claro, "Id=\"NFe" + chave));
    EXPECT_TRUE(claro.ends_with("</infNFe></NFe>"));
    EXPECT_TRUE(contem(claro, "<xJust>"));

    const std::string arquivo = a + "claro.xml";
    ASSERT_EQ(caixa->eCriptografarArquivo_ZEL(arquivo.c_str(), arquivo.c_str(), "x"), ZEL_OK);
    ASSERT_EQ(caixa->eDescriptografarArquivo_ZEL(arquivo.c_str(), arquivo.c_str(), "x"), ZEL_OK);
    EXPECT_EQ(caixa.lerArquivo("a/claro.xml"), claro + '\0') << "onto itself";
}

TEST(Historico, copias_carimbadas_ou_simples) {
    Caixa caixa;
    for (const char *nome : {"simples/", "carimbo/"})
        fs::create_directory(caixa.diretorio() + nome);
    caixa.config("CONFIGURACAO\\PathXMLEnvio", (caixa.diretorio() + "simples/").c_str());
    ASSERT_NO_FATAL_FAILURE(fecharCupom(caixa));
    EXPECT_EQ(caixa.lerArquivo("simples/documentosEnvio.xml"),
              caixa.lerArquivo("documentosEnvio.xml"));
    caixa.config("CONFIGURACAO\\PathXMLEnvio", (caixa.diretorio() + "carimbo/").c_str());
    caixa.config("CONFIGURACAO\\HistoricoXML", "1");
    ASSERT_NO_FATAL_FAILURE(fecharCupom(caixa));
    std::vector<std::string> nomes;
    for (const auto &entrada : fs::directory_iterator(caixa.diretorio() + "carimbo"))
        nomes.push_back(entrada.path().filename());
    ASSERT_EQ(nomes.size(), 1U);
    EXPECT_TRUE(nomes[0].starts_with("EnvioNFCe20") && nomes[0].size() == 28) << nomes[0];
}

// The application may set its zone at any time, and says so to nobody.
TEST(Fuso, a_oeste_configurado_e_a_leste) {
    struct Caso {
        const char *zona, *utilizar, *valor, *fim;
    };
    for (const Caso &caso : {Caso{"BRT3", "0", "0", "-03:00"}, Caso{"UTC0", "0", "0", "-00:00"},
                             Caso{"XXX-5:30", "0", "0", "-00:00"}, Caso{"BRT3", "1", "4", "-04:00"},
                             Caso{"BRT3", "1", "-2", "-00:00"}}) {
        const Ambiente zona("TZ", caso.zona);
        Caixa caixa;
        caixa.config("CONFIGURACAO\\TIMEZONESERVIDOR\\Utilizar", caso.utilizar);
        caixa.config("CONFIGURACAO\\TIMEZONESERVIDOR\\Valor", caso.valor);
        ASSERT_NO_FATAL_FAILURE(fecharCupom(caixa));
        const std::string emissao = elemento(documento(caixa), "dhEmi");
        EXPECT_TRUE(emissao.ends_with(caso.fim)) << caso.zona << " " << emissao;
    }
}

TEST(Textos, chegam_bem_formados_e_uma_vez) {
    struct Caso {
        const char *dado, *escrito;
    };
    for (const Caso &caso : {Caso{"A & B < C > D", "A &amp; B &lt; C &gt; D"},
                             Caso{"A &amp; B &#233; &lt;", "A &amp; B \xE9 &lt;"},
                             Caso{"&amp;lt;", "&amp;lt;"}, Caso{"&quot;x&apos;\"'", "\"x'\"'"},
                             Caso{"&nada; &#300; &", "&amp;nada; &amp;#300; &amp;"},
                             Caso{"a\r\nb\nc\rd\te", "a b c d e"}, Caso{"a\1\37\177b", "a\177b"},
                             Caso{"a&#10;b&#x0D;&#0;c", "a b c"}}) {
        Caixa caixa;
        ASSERT_NO_FATAL_FAILURE(fecharCupom(caixa, caso.dado, caso.dado));
        const std::string nota = documento(caixa);
        EXPECT_EQ(elemento(nota, "xProd"), caso.escrito) << caso.dado;
        EXPECT_EQ(nota.find_first_of("\r\n"), std::string::npos);
    }
}

TEST(Textos, cortes_contam_caracteres) {
    Caixa caixa;
    ASSERT_NO_FATAL_FAILURE(
        fecharCupom(caixa, repetir("x", 6000).c_str(), repetir("&amp;", 121).c_str()));
    const std::string nota = documento(caixa);
    EXPECT_EQ(elemento(nota, "xProd").size(), 120U * 5);
    EXPECT_EQ(elemento(nota, "infCpl").size(), 5000U);
}

// What was marks or line ends leaves no double blank in the document, nor an empty element; the
// printed text keeps both.
TEST(Encerramento, mensagem_sem_brancos_dobrados_no_documento) {
    const struct {
        const char *dada, *noDocumento, *guardada;
    } casos[] = {
        {"a <b> </b> b", "a b", "a [b] [/b] b"},
        {"a \r\n b", "a b", "a &#10; b"},
        {" <n> a</n>  <qrcode>http://x</qrcode> \n\n b <s>", "a b",
         "[n] a[/n] [qrcode]http://x[/qrcode] &#10;&#10; b [s]"},
        {"a [x]  [y] &lt;b&gt;c", "a [x] [y] c", "a [x] [y] [b]c"},
        {" <b></b> <qrcode>http://x</qrcode>\r\n", "", "[b][/b] [qrcode]http://x[/qrcode]&#10;"},
    };
    for (const auto &caso : casos) {
        Caixa caixa;
        ASSERT_NO_FATAL_FAILURE(fecharCupom(caixa, caso.dada));
        EXPECT_EQ(elemento(documento(caixa), "infCpl"), caso.noDocumento);
        EXPECT_EQ(vezesEm(documento(caixa), "infAdic") > 0, *caso.noDocumento != '\0');
        EXPECT_EQ(elemento(caixa.lerArquivo("ArqPersist.bin"), "infCpl"), caso.guardada);
    }
}

// A key renamed, moved or lost, a default changed: every shop's file would be completed wrongly.
TEST(Configuracao, arquivo_novo_traz_todo_o_catalogo) {
    Caixa caixa;
    ASSERT_EQ(caixa->aCFInicializar_ZEL(), ZEL_OK);
    compararComOuro(ZEL_OURO "/ZEL_Framework.xml", caixa.lerArquivo("ZEL_Framework.xml"));
}

TEST(Configuracao, outro_processo_e_visto_na_operacao_seguinte) {
    Caixa caixa;
    ASSERT_NO_FATAL_FAILURE(fecharCupom(caixa));
    const std::string arquivo = caixa.lerArquivo("ZEL_Framework.xml");
    // The same size, in the same instant.
    caixa.escreverArquivo("ZEL_Framework.xml", trocar(arquivo, "<natOP>Venda<", "<natOP>Troca<"));
    ASSERT_NO_FATAL_FAILURE(fecharCupom(caixa));
    EXPECT_EQ(elemento(documento(caixa), "natOp"), "Troca");
    EXPECT_EQ(caixa.config("IDE\\nNF"), "3") << "numbers go on from the file";
}

} // namespace
