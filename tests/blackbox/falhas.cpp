// What must never happen to a shop: a file that cannot be read for a moment, or was changed behind
// the library's back, takes the receipt with it. Deaths, power cuts and refused calls are tried in
// tests/fault.
#include "blackbox/Caixa.h"

#include <gtest/gtest.h>

#include <functional>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

int abrir(const Caixa &c) {
    return c->aCFAbrir_ZEL("", "", "", "", "", "", "", "", "");
}
int vender(const Caixa &c) {
    return c->aCFVender_ZEL("T1800", "1", "10.00", "", "", "1", "UN", "Produto");
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

// A committed document that cannot take its place, or cannot be read, must wait until it can.
TEST(EnvioQueEspera, nada_o_sobrescreve_nem_o_apaga) {
    Caixa caixa;
    for (const Passo passo : kPassos)
        ASSERT_EQ(passo(caixa), ZEL_OK);
    const std::string nome = caixa.diretorio() + "documentosEnvio.xml", espera = nome + ".tmp";
    fs::remove(nome);
    fs::create_directory(nome); // no file can be renamed over it
    // The parameters of a substitution are in place: there is no way back from that.
    ASSERT_EQ(caixa->aCFContingenciaUltimaNota_ZEL(3, nullptr), ZEL_OK);
    const std::string chave = caixa.config("NFCE\\ChaveDeAcesso");
    EXPECT_EQ(caixa->aCFContingenciaUltimaNota_ZEL(1, nullptr), -52);
    EXPECT_EQ(caixa.config("NFCE\\ChaveDeAcesso"), chave);
    ASSERT_TRUE(fs::exists(espera));
    fs::remove(nome);
    caixa.reiniciar();
    EXPECT_EQ(caixa->aCFInicializar_ZEL(), ZEL_OK);
    EXPECT_NE(caixa.lerArquivo("documentosEnvio.xml").find(chave), std::string::npos);

    fs::create_symlink("documentosEnvio.xml.tmp", espera); // a loop: unreadable, also for root
    caixa.reiniciar();
    EXPECT_EQ(caixa->tCFInutilizar_ZEL("1", "2", "1", "x"), -52);
    EXPECT_TRUE(fs::is_symlink(espera));
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

TEST(VendaComTransportadora, acrescenta_um_registro_so) {
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
    EXPECT_TRUE(depois.starts_with(antes) && depois.find("02|2|", antes.size()) == antes.size());
    caixa.reiniciar();
    EXPECT_EQ(caixa.info("1"), "2");
    ASSERT_EQ(caixa->aCFTotalizar_ZEL("", ""), ZEL_OK);
    const std::string registros = caixa.lerArquivo("ArqPersist.bin");
    EXPECT_LT(registros.find("\r\n03|"), registros.find("\r\n04|")) << "in their order again";
}

} // namespace
