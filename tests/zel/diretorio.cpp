// SPDX-License-Identifier: MIT
// zel conferir over directories: the configuration file as a text, rights, leftovers, the receipt
// in progress. Nothing there may change by being looked at.
#include "Loja.h"

#include "apoio/Funcoes.h"
#include "leitura/Texto.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace fs = std::filesystem;

namespace {

// Replaces `de` in the configuration file; the findings that must be among those reported.
const struct {
    std::string_view de, para;
    std::vector<std::string_view> esperados;
} kTextos[] = {
    {"<HistoricoXML>0</HistoricoXML>",
     "<Extra>1</Extra>",
     {"erro elemento-desconhecido", "erro chave-ignorada", "aviso chave-ausente"}},
    {"</xNome>", "", {"erro elemento-aberto"}},
    {"</ENDEREMIT>", "", {"erro elemento-aberto"}},
    {"<CRT>1</CRT>", "<CRT>1</CRT></EMITENTE>", {"erro elemento-aberto"}},
    {"<CRT>1</CRT>", "<CRT>1</CRT>< <!-- -->", {"erro elemento-aberto"}},
    {"<CRT>1</CRT>", "<CRT>1</CRT><CRT>1</CRT>", {"aviso chave-repetida"}},
    {"<CRT>1</CRT>", "<!-- <CRT>3</CRT> -->", {"aviso chave-ausente"}},
    {"</FRAMEWORKZEL>", "", {"erro raiz-ausente"}},
};

TEST(Diretorio, falta_no_texto_da_config_achada) {
    for (const auto &[de, para, esperados] : kTextos) {
        const Loja loja;
        loja.trocar("ZEL_Framework.xml", de, para);
        const std::string lista = loja.conferir().achados();
        for (const std::string_view esperado : esperados)
            EXPECT_TRUE(contem(lista, esperado)) << de;
    }
}

// The line and the name as the catalogue writes it: that is what an editor needs.
TEST(Diretorio, elemento_desconhecido_diz_linha_e_nome) {
    const Loja loja;
    loja.trocar("ZEL_Framework.xml", "<estadoCFe></estadoCFe>", "<EstadoCFe></EstadoCFe>");
    const std::string saida = rodar({"conferir", loja.diretorio()}).saida;
    EXPECT_TRUE(contem(saida, "ZEL_Framework.xml (linha 6)"));
    EXPECT_TRUE(contem(saida, "Escreva estadoCFe"));
    // Of the shop's own values, which the library does not see now, nothing wrong is said.
    EXPECT_FALSE(contem(saida, "crt-grupo"));
    EXPECT_FALSE(contem(saida, "municipio-uf"));
}

const struct {
    std::string_view nome;
    mode_t modo; // 0: the file is not there
    std::string_view conteudo, esperados;
} kArquivos[] = {
    {"ZEL_Framework.xml", 0644, "", "erro permissao-config"},
    {"ZEL_Framework.xml", 0602, "", "erro permissao-config"},
    {"ZEL_Framework.xml", 0640, "", ""},
    {"ZEL_Framework.xml", 0400, "", "erro arquivo-sem-escrita"},
    {"ZEL_Framework.xml", 0200, "", "erro arquivo-ilegivel"},
    {"ZEL_Framework.xml", 0, "", "erro arquivo-ausente"},
    {"ZEL_Framework.xml.danificado", 0600, "x", "aviso danificado"},
    {"p\xe3o.danificado", 0600, "x", "aviso danificado"},
    {"ArqPersist.tmp", 0600, "x", "aviso gravacao-interrompida"},
    {"documentosEnvio.xml.tmp", 0644, "x", "aviso gravacao-interrompida"},
    {"ArqPersist.bin.danificado.novo", 0600, "x", "aviso gravacao-interrompida"},
    {"NFe35140111222333000181650010000001231171025446_DANFE.pdf.novo.antigo", 0600, "x",
     "aviso gravacao-interrompida"},
    {"11222333000181_001000000123.ctgCanc.novo", 0600, "x", "aviso gravacao-interrompida"},
    {"outro.novo.antigo", 0600, "x", ""},
    {"ultimadanfe.bin", 0644, "x", "aviso permissao-dados"},
    {"outro-programa.tmp", 0644, "x", ""},
    {".", 0777, "", "aviso diretorio-aberto"},
    {".", 01777, "", ""},
    {".", 0500, "", "erro diretorio-sem-escrita"},
};

TEST(Diretorio, falta_nos_arquivos_achada) {
    for (const auto &[nome, modo, conteudo, esperados] : kArquivos) {
        const Loja loja;
        const std::string caminho = loja.diretorio() + std::string(nome);
        if (!conteudo.empty()) loja.gravar(nome, conteudo);
        if (modo == 0)
            fs::remove(caminho);
        else
            ASSERT_EQ(chmod(caminho.c_str(), modo), 0);
        const Resultado resultado = loja.conferir();
        EXPECT_EQ(resultado.achados(), esperados) << caminho << resultado.saida << resultado.erros;
        EXPECT_TRUE(zel::aplicativo::ehUtf8(resultado.saida)) << resultado.saida;
    }
}

TEST(Diretorio, copia_sem_direito_de_gravar) {
    const Loja loja;
    const std::string copias = loja / "copias/";
    fs::create_directory(copias);
    chmod(copias.c_str(), 0500);
    loja.configurar({{R"(CONFIGURACAO\PathXMLEnvio)", copias}});
    EXPECT_EQ(loja.conferir().achados(), "erro diretorio-sem-escrita");
}

TEST(Diretorio, o_que_nao_eh_diretorio) {
    const Loja loja;
    EXPECT_TRUE(rodar({"conferir", loja / "nada"}).deu(2));
    EXPECT_TRUE(rodar({"conferir", "--diretorio", loja / "nada"}).deu(2));
    EXPECT_TRUE(rodar({"conferir"}, {{"ZEL_DIRETORIO", loja.diretorio()}}).deu(0));
}

// A receipt left in the middle is a warning; while the till is open it is not.
TEST(Diretorio, aviso_de_cupom_em_andamento_so_com_o_caixa_fechado) {
    constexpr std::string_view kResumos[] = {"", "cupom vendendo, 2 itens, total 29.76, pago 0.00",
                                             "", "cupom pago, 2 itens, total 29.76, pago 29.76",
                                             ""};
    for (int estado = 1; estado <= 5; ++estado) {
        const bool emAndamento = estado < 5;
        const Loja loja;
        loja.comCaixaAberto([&](const Funcoes &caixa) { Loja::vender(caixa, estado); },
                            [&] {
                                EXPECT_EQ(loja.conferir().achados(),
                                          emAndamento ? "nota cupom-em-uso, nota caixa-aberto" : "")
                                    << "a closed receipt is nobody's";
                            });
        const Resultado fechado = loja.conferir();
        EXPECT_EQ(fechado.achados(), emAndamento ? "aviso cupom-em-andamento" : "");
        EXPECT_TRUE(fechado.deu(emAndamento ? 1 : 0, kResumos[estado - 1]));
        EXPECT_FALSE(contem(fechado.saida, "Maria"));
    }
}

// What would be a dead process's leftover is a living one's work.
TEST(Diretorio, sobra_do_caixa_aberto) {
    const Loja loja;
    loja.comCaixaAberto([](const Funcoes &caixa) { Loja::vender(caixa, 2); },
                        [&] {
                            loja.gravar("documentosEnvio.xml.tmp", "x");
                            EXPECT_TRUE(
                                contem(loja.conferir().achados(), "nota gravacao-em-curso"));
                        });
    EXPECT_TRUE(contem(loja.conferir().achados(), "aviso gravacao-interrompida"));
}

TEST(Diretorio, cupom_perdido_ou_estragado) {
    const Loja loja;
    loja.noCaixa([](const Funcoes &caixa) { Loja::vender(caixa, 2); });
    loja.trocar("ArqPersist.bin", "02|2|", "09|2|");
    EXPECT_EQ(loja.conferir().achados(), "erro cupom-ilegivel");
    fs::remove(loja / "ArqPersist.bin");
    EXPECT_EQ(loja.conferir().achados(), "erro cupom-ausente");
}

TEST(Diretorio, conferir_nao_muda_nada) {
    const Loja loja;
    loja.noCaixa([](const Funcoes &caixa) { Loja::vender(caixa, 3); });
    loja.gravar("ArqPersist.tmp", "01|\r\n");
    // The library would complete this, and end that commit.
    loja.trocar("ZEL_Framework.xml", "<CRT>1</CRT>", "");
    const std::string antes = loja.retrato();
    EXPECT_EQ(loja.conferir().codigo, 1);
    EXPECT_EQ(loja.retrato(), antes);
    const Loja vazia;
    fs::remove(vazia / "ZEL_Framework.xml");
    const std::string semNada = vazia.retrato();
    vazia.conferir();
    EXPECT_EQ(vazia.retrato(), semNada);
}

} // namespace
