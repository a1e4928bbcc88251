// SPDX-License-Identifier: MIT
// What must never happen to a shop: a file that cannot be read for a moment, or was changed behind
// the library's back, takes the receipt with it. Deaths, power cuts and refused calls are tried in
// tests/fault.
#include "apoio/Chamadas.h"
#include "apoio/Passos.h"
#include "blackbox/Caixa.h"

#include <gtest/gtest.h>

#include <functional>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

int abrir(const Caixa &c) {
    return abrirSemConsumidor(c.funcoes());
}
int vender(const Caixa &c) {
    return venderUm(c.funcoes());
}
int totalizar(const Caixa &c) {
    return c->aCFTotalizar_ZEL("D$", "1,00");
}
int pagarMetade(const Caixa &c) {
    return c->aCFEfetuarPagamento_ZEL("dinheiro", "5");
}
int pagar(const Caixa &c) {
    return c->aCFEfetuarPagamento_ZEL("dinheiro", "50");
}
int encerrar(const Caixa &c) {
    return c->tCFEncerrar_ZEL("obrigado");
}

using Passo = int (*)(const Caixa &);
constexpr Passo kPassos[] = {abrir, vender, vender, totalizar, pagarMetade, pagar, encerrar};

// A document that cannot be read now may be readable later: nothing may be written over it.
TEST(RegistrosIlegiveis, nao_sao_sobrescritos) {
    Caixa caixa;
    for (std::size_t i = 0; i + 1 < std::size(kPassos); ++i)
        ASSERT_EQ(kPassos[i](caixa), ZEL_OK);
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

// What could not take its place is refused before anything happens.
TEST(EnvioSemLugar, nada_muda) {
    Caixa caixa;
    for (const Passo passo : kPassos)
        ASSERT_EQ(passo(caixa), ZEL_OK);
    const std::string nome = caixa.diretorio() + "documentosEnvio.xml",
                      config = caixa.lerArquivo("ZEL_Framework.xml");
    fs::remove(nome);
    fs::create_directory(nome); // no file can be renamed over it
    EXPECT_EQ(caixa->aCFContingenciaUltimaNota_ZEL(3, nullptr), -52);
    EXPECT_TRUE(caixa.lerArquivo("ZEL_Framework.xml") == config);
    EXPECT_FALSE(caixa.existe("parametrosEnvio.xml"));
    fs::remove(nome);
    EXPECT_EQ(caixa->aCFContingenciaUltimaNota_ZEL(3, nullptr), ZEL_OK);
}

// A process of the version before this one died with contents waiting beside their files.
TEST(VersaoAnterior, o_que_ela_deixou_esperando_e_julgado) {
    Caixa caixa;
    for (const Passo passo : kPassos)
        ASSERT_EQ(passo(caixa), ZEL_OK);
    const std::string documento = caixa.lerArquivo("documentosEnvio.xml"),
                      registros = caixa.lerArquivo("ArqPersist.bin");
    std::string alheio = documento;
    alheio.replace(alheio.find("Id=\"NFe") + 7, 2, "99");
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
    std::string atributos;
    for (int i = 0; i < 100; ++i)
        atributos += " a" + std::to_string(i) + "=\"" + std::string(99, 'x') + "\"";
    std::string item = kItem;
    item.insert(item.find("<cProd") + 6, atributos);
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
    ASSERT_EQ(caixa->aCFEfetuarPagamento_ZEL("01", ""), ZEL_OK);
    EXPECT_EQ(encerrar(caixa), ZEL_OK);
}

TEST(EstadoDoAplicativo, nao_e_tocado_sem_restos) {
    Caixa caixa;
    ASSERT_EQ(abrir(caixa), ZEL_OK);
    ASSERT_EQ(vender(caixa), ZEL_OK);
    caixa.config("CONFIGURACAO\\estadoCFe", "0");
    caixa.reiniciar();
    EXPECT_EQ(caixa->rCFVerificarStatus_ZEL(), 0);
    EXPECT_EQ(abrir(caixa), ZEL_OK) << "a till set back by hand opens";
}

TEST(RegistrosDanificados, fica_o_que_estava_inteiro) {
    struct Caso {
        const char *descricao;
        std::function<std::string(const std::string &)> danificar;
        int itens;
        bool copia; // the damaged original is kept when something is saved
    };
    const Caso casos[] = {
        {"torn last record", [](const std::string &s) { return s.substr(0, s.size() - 40); }, 1,
         false},
        {"torn between groups",
         [](const std::string &s) { return s.substr(0, s.rfind("<imposto>")); }, 1, false},
        {"line end lost", [](const std::string &s) { return s.substr(0, s.size() - 2); }, 1, false},
        {"unknown type in the middle",
         [](std::string s) { return s.replace(s.find("02|1"), 2, "07"); }, 0, true},
        {"unbalanced element", [](std::string s) { return s.replace(s.find("</prod>"), 2, "<x"); },
         0, true},
    };
    for (const Caso &caso : casos) {
        SCOPED_TRACE(caso.descricao);
        Caixa caixa;
        ASSERT_EQ(abrir(caixa), ZEL_OK);
        ASSERT_EQ(vender(caixa), ZEL_OK);
        ASSERT_EQ(vender(caixa), ZEL_OK);
        const std::string danificado = caso.danificar(caixa.lerArquivo("ArqPersist.bin"));
        caixa.parar();
        caixa.escreverArquivo("ArqPersist.bin", danificado);
        caixa.iniciar();
        EXPECT_EQ(caixa.info("1"), std::to_string(caso.itens));
        EXPECT_EQ(caixa.lerArquivo("ArqPersist.bin"), danificado) << "reading changes nothing";
        ASSERT_EQ(vender(caixa), ZEL_OK);
        EXPECT_EQ(caixa.info("1"), std::to_string(caso.itens + 1));
        ASSERT_EQ(caixa.existe("ArqPersist.bin.danificado"), caso.copia);
        if (caso.copia) {
            EXPECT_EQ(caixa.lerArquivo("ArqPersist.bin.danificado"), danificado);
        }
        caixa.reiniciar();
        EXPECT_EQ(caixa.info("1"), std::to_string(caso.itens + 1));
    }
}

TEST(ConfiguracaoDanificada, a_unica_copia_nao_se_perde) {
    Caixa caixa;
    ASSERT_EQ(abrir(caixa), ZEL_OK);
    caixa.config("EMIT\\xNome", "Minha Loja");
    caixa.parar();
    const std::string danificado = "<FRAMEWORKZEL><EMIT><xNome>Minha Loja</xNome>";
    caixa.escreverArquivo("ZEL_Framework.xml", danificado);
    caixa.iniciar();
    EXPECT_EQ(vender(caixa), ZEL_CONFIG_ILEGIVEL);
    EXPECT_EQ(caixa.lerArquivo("ZEL_Framework.xml"), danificado);
    EXPECT_EQ(caixa->aCFInicializar_ZEL(), ZEL_OK);
    EXPECT_EQ(caixa.lerArquivo("ZEL_Framework.xml.danificado"), danificado);
    EXPECT_EQ(caixa.config("EMIT\\xNome"), "RAZAO SOCIAL");
}

TEST(ArquivoDePersistencia, trocado_por_fora_nao_perde_o_cupom) {
    Caixa caixa;
    ASSERT_EQ(abrir(caixa), ZEL_OK);
    ASSERT_EQ(vender(caixa), ZEL_OK);
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
    EXPECT_NE(caixa.lerArquivo("real.xml").find("Outra Loja"), std::string::npos);
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
    for (const char *nome : {"documentosEnvio.xml", "ArqPersist.tmp", "documentosEnvio.xml.tmp"})
        if (nome != std::string_view("documentosEnvio.xml")) fs::remove(caixa.diretorio() + nome);
    ligar("documentosEnvio.xml");
    ligar("ultimadanfe.bin");
    for (const Passo passo : kPassos)
        ASSERT_EQ(passo(caixa), ZEL_OK);
    const std::string nota = caixa.diretorio() + "documentosEnvio.xml";
    std::vector<char> cupom(ZEL_TAMANHO_CUPOM);
    caixa.config("CONFIGURACAO\\SalvarDanfePDF", "0");
    ASSERT_EQ(
        caixa->GerarArquivoFormatadoNF_ZEL(nota.c_str(), "OFFLINE", "", 48, 1, "", cupom.data()),
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
    fs::create_directory(fechado);
    caixa.escreverArquivo("fechado/meu", "um texto mais comprido");
    constexpr uid_t kNinguem = 65534;
    const bool root = geteuid() == 0;
    if (root) {
        ASSERT_EQ(chown((fechado + "/meu").c_str(), kNinguem, kNinguem), 0);
        fs::permissions(caixa.diretorio(), fs::perms::all);
        ASSERT_EQ(seteuid(kNinguem), 0);
    } else {
        fs::permissions(fechado, fs::perms::owner_read | fs::perms::owner_exec);
    }
    EXPECT_EQ(embaralhar(fechado + "/meu"), ZEL_OK);
    EXPECT_EQ(embaralhar(fechado + "/outro"), ZEL_ARQUIVO_INDISPONIVEL);
    if (root) {
        ASSERT_EQ(seteuid(0), 0);
    } else {
        fs::permissions(fechado, fs::perms::owner_all);
    }
    EXPECT_EQ(caixa.lerArquivo("fechado/meu"), embaralhado);
}

TEST(VendaComTransportadora, poe_um_registro_so_antes_do_dela) {
    Caixa caixa;
    caixa.config("IDE\\indPres", "4");
    ASSERT_EQ(abrir(caixa), ZEL_OK);
    ASSERT_EQ(
        caixa->aCFIdentificarTransportadora_ZEL("11222333000181", "Transportes", "", "", "", ""),
        ZEL_OK);
    ASSERT_EQ(vender(caixa), ZEL_OK);
    const std::string antes = caixa.lerArquivo("ArqPersist.bin");
    ASSERT_EQ(vender(caixa), ZEL_OK);
    const std::string depois = caixa.lerArquivo("ArqPersist.bin");
    const std::size_t lugar = antes.find("\r\n04|") + 2;
    EXPECT_EQ(depois.substr(0, lugar), antes.substr(0, lugar));
    EXPECT_EQ(depois.find("02|2|", lugar), lugar);
    EXPECT_TRUE(depois.ends_with(antes.substr(lugar)));
    caixa.reiniciar();
    EXPECT_EQ(caixa.info("1"), "2");
    ASSERT_EQ(caixa->aCFTotalizar_ZEL("", ""), ZEL_OK);
    const std::string registros = caixa.lerArquivo("ArqPersist.bin");
    EXPECT_LT(registros.find("\r\n03|"), registros.find("\r\n04|"));
}

} // namespace
