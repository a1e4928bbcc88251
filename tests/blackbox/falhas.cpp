// SPDX-License-Identifier: MIT
// What must never happen to a shop: a file that cannot be read for a moment, or was changed behind
// the library's back, takes the receipt with it. Deaths, power cuts and refused calls are tried in
// tests/fault.
#include "apoio/Chamadas.h"
#include "apoio/Filho.h"
#include "apoio/Passos.h"
#include "apoio/Trecho.h"
#include "blackbox/Caixa.h"

#include <gtest/gtest.h>

#include <unistd.h>

namespace fs = std::filesystem;

namespace {

// A receipt of two items, discounted, paid in two parts.
using Passo = int (*)(const Funcoes &);
constexpr Passo kPassos[] = {
    [](const Funcoes &f) { return abrir(f); },
    [](const Funcoes &f) { return vender(f); },
    [](const Funcoes &f) { return vender(f); },
    [](const Funcoes &f) { return totalizar(f, "D$", "1,00"); },
    [](const Funcoes &f) { return pagar(f, "dinheiro", "5"); },
    [](const Funcoes &f) { return pagar(f, "dinheiro", "50"); },
    [](const Funcoes &f) { return encerrar(f, "obrigado"); },
};

void darPassos(const Caixa &caixa, std::size_t quantos = std::size(kPassos)) {
    for (std::size_t i = 0; i < quantos; ++i)
        ASSERT_EQ(kPassos[i](caixa), ZEL_OK) << "step " << i;
}

// A document that cannot be read now may be readable later: nothing may be written over it.
TEST(RegistrosIlegiveis, nao_sao_sobrescritos) {
    Caixa caixa;
    ASSERT_NO_FATAL_FAILURE(darPassos(caixa, 6));
    const std::string registros = caixa.lerArquivo("ArqPersist.bin"),
                      nome = caixa.diretorio() + "ArqPersist.bin";
    caixa.parar();
    fs::remove(nome);
    fs::create_directory(nome); // unreadable as a file, also for root
    caixa.iniciar();
    EXPECT_EQ(vender(caixa), ZEL_VENDA_FORA_DE_ORDEM);
    EXPECT_EQ(encerrar(caixa), -52);
    EXPECT_EQ(caixa->tCFEncerrarConfigMsg_ZEL("a", "b"), -52);
    fs::remove(nome);
    caixa.escreverArquivo("ArqPersist.bin", registros);
    EXPECT_EQ(encerrar(caixa), ZEL_OK) << "the next call reads it";
}

// A process of the version before this one died with contents waiting beside their files.
TEST(VersaoAnterior, o_que_ela_deixou_esperando_e_julgado) {
    Caixa caixa;
    ASSERT_NO_FATAL_FAILURE(darPassos(caixa));
    const std::string documento = caixa.lerArquivo("documentosEnvio.xml"),
                      registros = caixa.lerArquivo("ArqPersist.bin");
    const std::string alheio = trocar(documento, "Id=\"NFe43", "Id=\"NFe99");
    const std::string aberto = registros.substr(0, registros.find("02|"));
    const struct {
        const char *descricao, *nome;
        std::string espera, noLugar; // in place before; empty for no file
        std::string esperado;        // in place after
        char estado = '5';
    } casos[] = {
        {"committed document", "documentosEnvio.xml", documento, "velho", documento},
        {"document of another key", "documentosEnvio.xml", alheio, "velho", "velho"},
        {"records alone", "ArqPersist.bin", registros, "", registros},
        {"records that the file has", "ArqPersist.bin", registros, registros, registros},
        {"records of another state", "ArqPersist.bin", aberto, registros, registros},
        {"records alone, and the state set back", "ArqPersist.bin", registros, "", "", '0'},
    };
    for (const auto &caso : casos) {
        SCOPED_TRACE(caso.descricao);
        const std::string nome = caso.nome,
                          espera = nome == "ArqPersist.bin" ? "ArqPersist.tmp" : nome + ".tmp";
        caixa.parar();
        fs::remove(caixa.diretorio() + nome);
        if (!caso.noLugar.empty()) caixa.escreverArquivo(nome, caso.noLugar);
        caixa.escreverArquivo(espera, caso.espera);
        std::string config = caixa.lerArquivo("ZEL_Framework.xml");
        config.at(config.find("</estadoCFe>") - 1) = caso.estado;
        caixa.escreverArquivo("ZEL_Framework.xml", config);
        caixa.iniciar();
        EXPECT_EQ(caixa->rCFVerificarStatus_ZEL(), caso.estado - '0');
        EXPECT_EQ(caixa.existe(nome) ? caixa.lerArquivo(nome) : "", caso.esperado);
        EXPECT_FALSE(caixa.existe(espera));
    }
}

// More than the journal holds, and one change that is larger than all of it.
TEST(Diario, cheio_recomeca_e_cresce) {
    Caixa caixa;
    for (int vez = 0; vez < 3000; ++vez)
        caixa.config("IDE\\natOP", vez % 2 == 0 ? "Venda" : "Venda ao consumidor");
    std::string atributos = "<cProd";
    for (int i = 0; i < 100; ++i)
        atributos += " a" + std::to_string(i) + "=\"" + std::string(99, 'x') + "\"";
    const std::string item = trocar(kItem, "<cProd", atributos);
    ASSERT_EQ(abrir(caixa), ZEL_OK);
    for (int i = 0; i < 250; ++i)
        ASSERT_EQ(caixa->aCFVenderXml_ZEL(item.c_str()), ZEL_OK);
    ASSERT_EQ(totalizar(caixa), ZEL_OK);
    const std::string registros = caixa.lerArquivo("ArqPersist.bin");
    EXPECT_GT(registros.size(), std::size_t{2} << 20);
    caixa.reiniciar();
    EXPECT_EQ(caixa->rCFVerificarStatus_ZEL(), 3);
    EXPECT_TRUE(caixa.lerArquivo("ArqPersist.bin") == registros);
    EXPECT_EQ(caixa.config("IDE\\natOP"), "Venda ao consumidor");
    ASSERT_EQ(pagar(caixa), ZEL_OK);
    EXPECT_EQ(encerrar(caixa), ZEL_OK);
}

TEST(ArquivoDePersistencia, trocado_por_fora_nao_perde_o_cupom) {
    Caixa caixa;
    ASSERT_NO_FATAL_FAILURE(darPassos(caixa, 2));
    fs::remove(caixa.diretorio() + "ArqPersist.bin");
    ASSERT_EQ(vender(caixa), ZEL_OK);
    caixa.reiniciar();
    EXPECT_EQ(caixa.info("1"), "2");
    ASSERT_EQ(vender(caixa), ZEL_OK);
    caixa.escreverArquivo("ArqPersist.bin", "01|\r\n");
    ASSERT_EQ(vender(caixa), ZEL_OK);
    caixa.reiniciar();
    EXPECT_EQ(caixa.info("1"), "4") << "the process that held the receipt wrote it whole";
}

TEST(Arquivos, segredos_so_para_o_dono_e_ligacoes_ficam) {
    Caixa caixa;
    ASSERT_EQ(abrir(caixa), ZEL_OK);
    const auto modo = [&](const char *nome) {
        return fs::status(caixa.diretorio() + nome).permissions() & fs::perms::mask;
    };
    constexpr auto kDono = fs::perms::owner_read | fs::perms::owner_write;
    EXPECT_EQ(modo("ZEL_Framework.xml"), kDono);
    EXPECT_EQ(modo("ArqPersist.bin"), kDono);

    const std::string real = caixa.diretorio() + "real.xml",
                      nome = caixa.diretorio() + "ZEL_Framework.xml";
    fs::rename(nome, real);
    fs::create_symlink("real.xml", nome);
    fs::permissions(real, kDono | fs::perms::group_read);
    caixa.config("EMIT\\xNome", "Outra Loja");
    EXPECT_TRUE(fs::is_symlink(nome));
    EXPECT_EQ(modo("real.xml"), kDono | fs::perms::group_read);
    EXPECT_TRUE(contem(caixa.lerArquivo("real.xml"), "Outra Loja"));
}

// Whoever may write in the directory must not be able to send a host with more rights elsewhere.
TEST(Arquivos, ligacao_so_a_configuracao_segue) {
    Caixa caixa;
    caixa.config("CONFIGURACAO\\SalvarDanfePDF", "1");
    const std::string fora = caixa.diretorio() + "fora";
    const auto ligar = [&](const char *nome) {
        fs::remove(caixa.diretorio() + nome);
        fs::create_symlink("fora", caixa.diretorio() + nome);
    };
    caixa.escreverArquivo("fora", "01|\r\n");
    ligar("ArqPersist.bin");
    EXPECT_EQ(abrir(caixa), ZEL_ARQUIVO_INDISPONIVEL);
    fs::remove(caixa.diretorio() + "ArqPersist.bin");
    ligar("documentosEnvio.xml");
    ligar("ultimadanfe.bin");
    ASSERT_NO_FATAL_FAILURE(darPassos(caixa));
    const std::string nota = caixa.diretorio() + "documentosEnvio.xml";
    caixa.config("CONFIGURACAO\\SalvarDanfePDF", "0");
    ASSERT_EQ(fazer(caixa, Pedido("GerarArquivoFormatadoNF_ZEL", nota, "OFFLINE", "", "48", "1")),
              ZEL_OK);
    EXPECT_EQ(caixa.lerArquivo("fora"), "01|\r\n");
    EXPECT_FALSE(fs::is_symlink(nota));
    EXPECT_FALSE(fs::is_symlink(caixa.diretorio() + "ultimadanfe.bin"));
}

TEST(Arquivos, rascunhos_de_um_processo_morto_somem) {
    Caixa caixa;
    ASSERT_EQ(abrir(caixa), ZEL_OK);
    caixa.parar();
    const std::string chave(44, '7');
    const std::string nossos[] = {"ZEL_Framework.xml.novo",          "ArqPersist.tmp.novo",
                                  "documentosEnvio.xml.novo.antigo", "danfe_pdf_temp.xml",
                                  "NFe" + chave + "_DANFE.pdf.novo", chave + ".ctg.novo"};
    const std::string alheios[] = {"relatorio.novo", "NFe.pdf.novo", "novo", "x.ctg.novo"};
    for (const std::string &nome : nossos)
        caixa.escreverArquivo(nome, "dados de alguem");
    for (const std::string &nome : alheios)
        caixa.escreverArquivo(nome, "de outro programa");
    caixa.iniciar();
    EXPECT_EQ(caixa->rCFVerificarStatus_ZEL(), 1);
    for (const std::string &nome : nossos)
        EXPECT_FALSE(caixa.existe(nome)) << nome;
    for (const std::string &nome : alheios)
        EXPECT_TRUE(caixa.existe(nome)) << nome;
}

// The file that the application names is its own: it stays what it is.
TEST(Embaralhar, o_destino_continua_o_que_era) {
    const Caixa caixa;
    const std::string origem = caixa.diretorio() + "origem",
                      destino = caixa.diretorio() + "destino",
                      ligacao = caixa.diretorio() + "ligacao",
                      fechado = caixa.diretorio() + "fechado";
    constexpr auto kDono = fs::perms::owner_read | fs::perms::owner_write;
    const auto embaralhar = [&](const std::string &para) {
        return caixa->eCriptografarArquivo_ZEL(origem.c_str(), para.c_str(), "chave");
    };
    caixa.escreverArquivo("origem", "texto");
    ASSERT_EQ(embaralhar(destino), ZEL_OK);
    const std::string embaralhado = caixa.lerArquivo("destino");

    caixa.escreverArquivo("destino", "um texto mais comprido");
    fs::permissions(destino, kDono);
    fs::create_symlink("destino", ligacao);
    EXPECT_EQ(embaralhar(ligacao), ZEL_OK);
    EXPECT_EQ(fs::status(destino).permissions(), kDono);
    EXPECT_TRUE(fs::is_symlink(ligacao));
    EXPECT_EQ(caixa.lerArquivo("destino"), embaralhado);
    EXPECT_EQ(embaralhar("/dev/null"), ZEL_OK);
    EXPECT_TRUE(fs::is_character_file("/dev/null"));
    EXPECT_EQ(embaralhar("/dev/full"), ZEL_ARQUIVO_INDISPONIVEL);
    EXPECT_EQ(embaralhar(caixa.diretorio()), ZEL_ARQUIVO_INDISPONIVEL);

    // A directory that may not be written, by a user to whom that matters.
    constexpr uid_t kNinguem = 65534;
    fs::create_directory(fechado);
    caixa.escreverArquivo("fechado/meu", "um texto mais comprido");
    fs::permissions(caixa.diretorio(), fs::perms::all);
    fs::permissions(fechado, static_cast<fs::perms>(0555));
    const bool root = geteuid() == 0;
    ASSERT_EQ(root ? chown((fechado + "/meu").c_str(), kNinguem, kNinguem) : 0, 0);
    EXPECT_EQ(emFilho([&] {
                  if (root && seteuid(kNinguem) != 0) return 1;
                  if (embaralhar(fechado + "/meu") != ZEL_OK) return 2;
                  return embaralhar(fechado + "/outro") == ZEL_ARQUIVO_INDISPONIVEL ? 0 : 3;
              }),
              0);
    EXPECT_EQ(caixa.lerArquivo("fechado/meu"), embaralhado);
    fs::permissions(fechado, fs::perms::owner_all); // to be removed
}

} // namespace
