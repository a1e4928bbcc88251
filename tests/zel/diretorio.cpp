// SPDX-License-Identifier: MIT
// zel conferir over directories: the configuration file as a text, rights, leftovers, the receipt
// in progress. Nothing there may change by being looked at.
#include "Loja.h"

#include "Texto.h"
#include "apoio/Funcoes.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <sstream>

namespace fs = std::filesystem;

namespace {

bool tem(const std::vector<std::string> &lista, const std::string &achado) {
    return std::find(lista.begin(), lista.end(), achado) != lista.end();
}

// Replaces `de` in the configuration file; the findings that must be among those reported.
struct CasoDeTexto {
    std::string_view de, para;
    std::vector<std::string> esperados;
};

const CasoDeTexto kTextos[] = {
    {"<HistoricoXML>0</HistoricoXML>",
     "<Extra>1</Extra>",
     {"erro elemento-desconhecido", "erro chave-ignorada", "aviso chave-ausente"}},
    {"<estadoCFe></estadoCFe>", "<EstadoCFe></EstadoCFe>", {"erro elemento-desconhecido"}},
    {"</xNome>", "", {"erro elemento-aberto"}},
    {"</ENDEREMIT>", "", {"erro elemento-aberto"}},
    {"<CRT>1</CRT>", "<CRT>1</CRT></EMITENTE>", {"erro elemento-aberto"}},
    {"<CRT>1</CRT>", "<CRT>1</CRT>< <!-- -->", {"erro elemento-aberto"}},
    {"<CRT>1</CRT>", "<CRT>1</CRT><CRT>1</CRT>", {"aviso chave-repetida"}},
    {"<CRT>1</CRT>", "<!-- <CRT>3</CRT> -->", {"aviso chave-ausente"}},
    {"</FRAMEWORKZEL>", "", {"erro raiz-ausente"}},
};

class TextoDaConfig : public testing::TestWithParam<CasoDeTexto> {};

TEST_P(TextoDaConfig, faltaAchada) {
    const Loja loja;
    loja.trocar("ZEL_Framework.xml", GetParam().de, GetParam().para);
    const Resultado resultado = loja.conferir();
    for (const std::string &esperado : GetParam().esperados)
        EXPECT_TRUE(tem(achados(resultado.saida), esperado)) << esperado << "\n" << resultado.saida;
}

INSTANTIATE_TEST_SUITE_P(Faltas, TextoDaConfig, testing::ValuesIn(kTextos));

// The line and the name as the catalogue writes it: that is what an editor needs.
TEST(Diretorio, elementoDesconhecidoDizLinhaENome) {
    const Loja loja;
    loja.trocar("ZEL_Framework.xml", "<estadoCFe></estadoCFe>", "<EstadoCFe></EstadoCFe>");
    const std::string saida = rodar({"conferir", loja.diretorio()}).saida;
    EXPECT_NE(saida.find("ZEL_Framework.xml (linha 6)"), std::string::npos) << saida;
    EXPECT_NE(saida.find("Escreva estadoCFe"), std::string::npos) << saida;
    // Of the shop's own values, which the library does not see now, nothing wrong is said.
    EXPECT_EQ(saida.find("crt-grupo"), std::string::npos) << saida;
    EXPECT_EQ(saida.find("municipio-uf"), std::string::npos) << saida;
}

// What the command says must be what a till finds: with the unknown element the library, too, goes
// back to the defaults after it.
TEST(Diretorio, chaveIgnoradaEhIgnoradaPeloCaixa) {
    const Loja loja;
    loja.trocar("ZEL_Framework.xml", "<cUF>", "<Novo></Novo><cUF>");
    const std::string saida = loja.conferir().saida;
    EXPECT_NE(saida.find("IDE\\\\cUF"), std::string::npos) << saida;
    EXPECT_EQ(rodar({"config", "ler", R"(IDE\cUF)", "--diretorio", loja.diretorio()}).saida,
              "43\n");
}

struct CasoDeArquivo {
    std::string_view nome;
    mode_t modo; // 0: the file is not there
    std::string_view conteudo;
    std::vector<std::string> esperados;
};

const CasoDeArquivo kArquivos[] = {
    {"ZEL_Framework.xml", 0644, "", {"erro permissao-config"}},
    {"ZEL_Framework.xml", 0602, "", {"erro permissao-config"}},
    {"ZEL_Framework.xml", 0640, "", {}},
    {"ZEL_Framework.xml", 0400, "", {"erro arquivo-sem-escrita"}},
    {"ZEL_Framework.xml", 0200, "", {"erro arquivo-ilegivel"}},
    {"ZEL_Framework.xml", 0, "", {"erro arquivo-ausente"}},
    {"ZEL_Framework.xml.danificado", 0600, "x", {"aviso danificado"}},
    {"p\xe3o.danificado", 0600, "x", {"aviso danificado"}},
    {"ArqPersist.tmp", 0600, "x", {"aviso gravacao-interrompida"}},
    {"documentosEnvio.xml.tmp", 0644, "x", {"aviso gravacao-interrompida"}},
    {"ZEL_Framework.xml.novo", 0600, "x", {"aviso gravacao-interrompida"}},
    {"ultimadanfe.bin", 0644, "x", {"aviso permissao-dados"}},
    {"outro-programa.tmp", 0644, "x", {}},
    {".", 0777, "", {"aviso diretorio-aberto"}},
    {".", 01777, "", {}},
    {".", 0500, "", {"erro diretorio-sem-escrita"}},
};

class ArquivosDoDiretorio : public testing::TestWithParam<CasoDeArquivo> {};

TEST_P(ArquivosDoDiretorio, faltaAchada) {
    const auto &[nome, modo, conteudo, esperados] = GetParam();
    const Loja loja;
    const std::string caminho = loja.diretorio() + std::string(nome);
    if (!conteudo.empty()) loja.escrever(nome, conteudo);
    if (modo == 0)
        fs::remove(caminho);
    else
        ASSERT_EQ(chmod(caminho.c_str(), modo), 0);
    const Resultado resultado = loja.conferir();
    EXPECT_EQ(achados(resultado.saida), esperados) << resultado.saida << resultado.erros;
    EXPECT_TRUE(zel::aplicativo::ehUtf8(resultado.saida)) << resultado.saida;
}

INSTANTIATE_TEST_SUITE_P(Faltas, ArquivosDoDiretorio, testing::ValuesIn(kArquivos));

TEST(Diretorio, copiaSemDireitoDeGravar) {
    Loja loja;
    const std::string copias = loja.diretorio() + "copias/";
    fs::create_directory(copias);
    chmod(copias.c_str(), 0500);
    loja.configurar({{R"(CONFIGURACAO\PathXMLEnvio)", copias}});
    EXPECT_EQ(achados(loja.conferir().saida),
              std::vector<std::string>{"erro diretorio-sem-escrita"});
}

TEST(Diretorio, oQueNaoEhDiretorio) {
    const Loja loja;
    EXPECT_EQ(rodar({"conferir", loja.diretorio() + "nada"}).codigo, 2);
    EXPECT_EQ(rodar({"conferir", "--diretorio", loja.diretorio() + "nada"}).codigo, 2);
    EXPECT_EQ(rodar({"conferir"}, {{"ZEL_DIRETORIO", loja.diretorio()}}).codigo, 0);
}

class CupomEmAndamento : public testing::TestWithParam<int> {};

// A receipt left in the middle is a warning; while the till is open it is not.
TEST_P(CupomEmAndamento, avisoSoComOCaixaFechado) {
    const int estado = GetParam();
    const Loja loja;
    loja.comCaixaAberto([&](const Funcoes &caixa) { Loja::vender(caixa, estado); },
                        [&] {
                            const auto lista = achados(loja.conferir().saida);
                            EXPECT_TRUE(tem(lista, "nota caixa-aberto"));
                            EXPECT_EQ(tem(lista, "nota cupom-em-uso"), estado < 5);
                            EXPECT_EQ(lista.size(), estado < 5 ? 2U : 1U);
                        });
    const Resultado fechado = loja.conferir();
    EXPECT_EQ(tem(achados(fechado.saida), "aviso cupom-em-andamento"), estado < 5) << fechado.saida;
    EXPECT_EQ(fechado.codigo, estado < 5 ? 1 : 0);
    EXPECT_EQ(fechado.saida.find("Maria"), std::string::npos);
    const std::string resumo = estado == 2   ? "cupom vendendo, 2 itens, total 29.76, pago 0.00"
                               : estado == 4 ? "cupom pago, 2 itens, total 29.76, pago 29.76"
                                             : "";
    EXPECT_NE(fechado.saida.find(resumo), std::string::npos) << fechado.saida;
}

INSTANTIATE_TEST_SUITE_P(Estados, CupomEmAndamento, testing::Range(1, 6));

// What would be a dead process's leftover is a living one's work.
TEST(Diretorio, sobraDoCaixaAberto) {
    const Loja loja;
    loja.comCaixaAberto([](const Funcoes &caixa) { Loja::vender(caixa, 2); },
                        [&] {
                            loja.escrever("documentosEnvio.xml.tmp", "x");
                            EXPECT_TRUE(
                                tem(achados(loja.conferir().saida), "nota gravacao-em-curso"));
                        });
    EXPECT_TRUE(tem(achados(loja.conferir().saida), "aviso gravacao-interrompida"));
}

TEST(Diretorio, cupomPerdidoOuEstragado) {
    const Loja loja;
    loja.noCaixa([](const Funcoes &caixa) { Loja::vender(caixa, 2); });
    loja.trocar("ArqPersist.bin", "02|2|", "09|2|");
    EXPECT_EQ(achados(loja.conferir().saida), std::vector<std::string>{"erro cupom-ilegivel"});
    fs::remove(loja.diretorio() + "ArqPersist.bin");
    EXPECT_EQ(achados(loja.conferir().saida), std::vector<std::string>{"erro cupom-ausente"});
}

// Names, bytes, rights and times of all that stands in a directory.
std::string retrato(const std::string &diretorio) {
    std::ostringstream texto;
    for (const auto &entrada : fs::directory_iterator(diretorio)) {
        struct stat dados {};
        stat(entrada.path().c_str(), &dados);
        texto << entrada.path() << dados.st_ino << ' ' << dados.st_mode << ' ' << dados.st_size
              << ' ' << dados.st_mtim.tv_sec << '.' << dados.st_mtim.tv_nsec << '\n';
    }
    return texto.str();
}

TEST(Diretorio, conferirNaoMudaNada) {
    const Loja loja;
    loja.noCaixa([](const Funcoes &caixa) { Loja::vender(caixa, 3); });
    loja.escrever("ArqPersist.tmp", "01|\r\n");
    // The library would complete this, and end that commit.
    loja.trocar("ZEL_Framework.xml", "<CRT>1</CRT>", "");
    const std::string antes = retrato(loja.diretorio());
    EXPECT_EQ(loja.conferir().codigo, 1);
    EXPECT_EQ(retrato(loja.diretorio()), antes);
    const Loja vazia;
    fs::remove(vazia.diretorio() + "ZEL_Framework.xml");
    const std::string semNada = retrato(vazia.diretorio());
    vazia.conferir();
    EXPECT_EQ(retrato(vazia.diretorio()), semNada);
}

} // namespace
