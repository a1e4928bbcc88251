// SPDX-License-Identifier: MIT
// The subcommands codigo, config and estado, what the command says of itself, and how it writes.
#include "Loja.h"

#include "apoio/Funcoes.h"

#include "ZEL_FelborFramework.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>

namespace {

struct Caso {
    std::vector<std::string> argumentos; // DIR stands for a shop's directory
    int codigo;
    std::string contem;    // of what is written, on either output
    std::string naoContem; // when not empty
};

const Caso kCasos[] = {
    {{}, 2, "Comandos:", ""},
    {{"--help"}, 0, "conferir", ""},
    {{"conferir", "--help"}, 0, "--esquema PASTA", ""},
    {{"codigo", "--help"}, 0, "Uso:", ""},
    {{"config", "-h"}, 0, "--mostrar-segredo", ""},
    {{"estado", "--ajuda"}, 0, "Uso:", ""},
    {{"comprar"}, 2, "comando desconhecido: comprar", ""},
    {{"vender", "--help"}, 0, "--pagamento FORMA[=VALOR]", ""},
    {{"imprimir", "--help"}, 0, "tcp://10.0.0.5", ""},
    {{"conferir", "--itens", "x"}, 2, "opção desconhecida", ""},
    {{"vender", "1;A;1;1", "--pagamento"}, 2, "falta o valor de --pagamento", ""},
    {{"codigo", "--cor"}, 2, "opção desconhecida: --cor", ""},
    {{"codigo", "--esquema", "x"}, 2, "opção desconhecida", ""},
    {{"conferir", "--diretorio"}, 2, "falta o valor de --diretorio", ""},
    {{"conferir", "a", "b"}, 2, "Uso:", ""},
    {{"conferir", "DIR", "--esquema", "x"}, 2, "vale para um documento", ""},
    {{"conferir", "--ajuda-achados"}, 0, "cnpj-digito", ""},
    {{"codigo", "-35"}, 0, "ZEL_AJUSTE_EXCESSIVO", "ZEL_JA_PAGO"},
    {{"codigo", "ja_pago", "2"}, 0, "ZEL_CANCELAMENTO_GRAVADO", "EXCESSIVO"},
    {{"codigo", "ZEL_JA_PAGO", "--json"}, 0, R"([{"codigo":-34,"nome":"ZEL_JA_PAGO",)", ""},
    {{"--version"}, 0, "zel " ZEL_VERSAO "\n", ""},
    {{"--versao"}, 0, "zel " ZEL_VERSAO "\n", ""},
    {{"codigo", "35"}, 2, "não tem o código 35; tem o -35: zel codigo -35", ""},
    {{"codigo", "204"}, 2, "os da SEFAZ (cStat, no retorno) estão em docs/envio.md", ""},
    {{"codigo", "-7"}, 2, "não tem o código -7", ""},
    {{"codigo"}, 0, "-135 ZEL_ENCERRAMENTO_FORA_DE_ORDEM", ""},
    {{"config"}, 2, "Uso:", ""},
    {{"config", "apagar", "x"}, 2, "Uso:", ""},
    {{"config", "ler"}, 2, "Uso:", ""},
    {{"config", "ler", R"(emit\cnpj)", "--diretorio", "DIR"}, 0, "11222333000181\n", "EMIT"},
    {{"config", "ler", R"(IDE\NF)", "--diretorio", "DIR"}, 0, "1\n", ""},
    {{"config", "ler", "CNPJ", "--diretorio", "DIR"}, 2, R"(EMIT\CNPJ)", "11222"},
    {{"config", "ler", R"(EMIT\ENDEREMIT\xMun)", "--diretorio=DIR", "--json"}, 0, "São Paulo", ""},
    {{"config", "ler", R"(CONFIGURACAO\TokenSefaz)", "--diretorio", "DIR"},
     0,
     "(oculto, 18",
     "SEGR"},
    {{"config", "listar", "Token", "--diretorio", "DIR"}, 0, "(oculto, 18", "SEGREDO"},
    {{"config", "listar", R"(IDE\*)", "--diretorio", "DIR"}, 0, R"(IDE\xJust = )", "EMIT"},
    {{"config", "listar", "nada", "--diretorio", "DIR"}, 2, "nenhuma chave", ""},
    {{"config", "listar", "--mostrar-segredo", "--diretorio", "DIR"}, 0, "SEGREDO-0123456789", ""},
    {{"config", "gravar", R"(EMIT\CNPJ)", "11222333000180", "--diretorio", "DIR"},
     2,
     "gravada assim mesmo",
     ""},
    {{"config", "gravar", R"(IDE\Mod)", "065", "--diretorio", "DIR"}, 2, "a chave guarda 2", ""},
    {{"inutilizar", "1", "2", "--justificativa", "x", "--diretorio", "DIR"},
     2,
     "tem 1 caractere; são",
     ""},
    {{"config", "gravar", R"(EMIT\xNome)", "Caf\xe2\x82\xac", "--diretorio", "DIR"},
     2,
     "ISO-8859-1",
     ""},
    {{"config", "gravar", R"(EMIT\xNome)", "a</b", "--diretorio", "DIR"}, 2, "ZEL_RECUSADO", ""},
    {{"config", "gravar", R"(EMIT\CNPJ)", "-", "--diretorio", "DIR"}, 2, "entrada padrão", ""},
    {{"config", "gravar", "--diretorio", "DIR", "--", R"(EMIT\xNome)", "--x"}, 0, "= --x", ""},
    {{"estado", "--diretorio", "DIR"}, 0, "Estado:            0 nenhum cupom", ""},
    {{"estado", "x"}, 2, "Uso:", ""},
};

TEST(Comandos, umaLinhaCada) {
    const Loja loja;
    const std::string limpa = loja.ler("ZEL_Framework.xml");
    for (const Caso &caso : kCasos) {
        std::vector<std::string> argumentos = caso.argumentos;
        std::string linha;
        for (std::string &argumento : argumentos) {
            if (argumento.ends_with("DIR"))
                argumento.replace(argumento.size() - 3, 3, loja.diretorio());
            linha += argumento + " ";
        }
        loja.escrever("ZEL_Framework.xml", limpa);
        const Resultado resultado = rodar(argumentos);
        const std::string escrito = resultado.saida + resultado.erros;
        EXPECT_EQ(resultado.codigo, caso.codigo) << linha << "\n" << escrito;
        EXPECT_NE(escrito.find(caso.contem), std::string::npos) << linha << "\n" << escrito;
        const bool proibido =
            !caso.naoContem.empty() && escrito.find(caso.naoContem) != std::string::npos;
        EXPECT_FALSE(proibido) << linha << "\n" << escrito;
    }
}

// A new name or severity breaks whoever reads --json.
TEST(Comandos, todoCodigoETodoAchadoEmJson) {
    const std::string codigos = rodar({"codigo", "--json"}).saida;
    EXPECT_EQ(std::count(codigos.begin(), codigos.end(), '{'), 29);
    EXPECT_EQ(achados(rodar({"conferir", "--ajuda-achados", "--json"}).saida).front(),
              "erro diretorio-ausente");
}

TEST(Comandos, gravarPassaPelaBiblioteca) {
    const Loja loja;
    const Resultado gravado = rodar({"config", "gravar", R"(emit\enderemit\xmun)",
                                     "S\xc3\xa3o Jos\xc3\xa9", "--diretorio", loja.diretorio()});
    EXPECT_EQ(gravado.saida, "EMIT\\ENDEREMIT\\xMun = S\xc3\xa3o Jos\xc3\xa9\n");
    EXPECT_NE(loja.ler("ZEL_Framework.xml").find("<xMun>S\xe3o Jos\xe9</xMun>"), std::string::npos);
    // Read from the input the token is in no history; it is not shown either.
    const Resultado token = rodar(
        {"config", "gravar", R"(CONFIGURACAO\TokenSefaz)", "-", "--diretorio", loja.diretorio()},
        {}, "NOVO-TOKEN\n");
    EXPECT_EQ(token.codigo, 0) << token.erros;
    EXPECT_EQ(token.saida.find("NOVO"), std::string::npos);
    EXPECT_NE(loja.ler("ZEL_Framework.xml").find("<TokenSefaz>NOVO-TOKEN<"), std::string::npos);
}

// A text arrives in ISO-8859-1 whatever the locale: one that names no character set, as that of a
// script under cron, takes UTF-8 for what it is, and answers in it.
TEST(Comandos, gravaOMesmoEmTodaLocalidade) {
    constexpr std::string_view kUtf8 = "S\xc3\xa3o", kLatin1 = "S\xe3o";
    struct CasoDeLocal {
        const char *local;
        std::string_view dado, gravado, mostrado;
    };
    const CasoDeLocal casos[] = {
        {"C.UTF-8", kUtf8, kLatin1, kUtf8},
        {"C", kUtf8, kLatin1, kUtf8},
        {"POSIX", kUtf8, kLatin1, kUtf8},
        {"xx_YY", kUtf8, kLatin1, kUtf8},
        {"C", kLatin1, kLatin1, kLatin1},
        {"C.UTF-8", kLatin1, kLatin1, kUtf8},
        {"xx_YY.ISO-8859-1", kLatin1, kLatin1, kLatin1},
        {"xx_YY.ISO-8859-1", kUtf8, kUtf8, kUtf8},
    };
    for (const auto &[local, dado, gravado, mostrado] : casos) {
        const Loja loja;
        const Resultado resultado = rodar({"config", "gravar", R"(EMIT\ENDEREMIT\xMun)",
                                           std::string(dado), "--diretorio", loja.diretorio()},
                                          {{"LC_ALL", local}});
        EXPECT_NE(resultado.saida.find("xMun = " + std::string(mostrado) + "\n"), std::string::npos)
            << local << "\n"
            << resultado.saida;
        EXPECT_NE(loja.ler("ZEL_Framework.xml").find("<xMun>" + std::string(gravado) + "</xMun>"),
                  std::string::npos)
            << local << " " << dado;
    }
}

// A till that cannot be read, or that the library would not use, is never answered for with the
// factory's values.
struct CasoDeCaixa {
    std::string_view variavel; // ZEL_DIRETORIO, after the shop's directory when it begins with "/"
    mode_t modoDiretorio, modoConfig;
    std::string_view config; // "" leaves it
    bool todo;               // conferir, which tells more, and gravar are refused too
    std::string_view contem;
};

TEST(Comandos, caixaQueNaoSeLeEhDito) {
    const CasoDeCaixa casos[] = {
        {"/", 0700, 0000, "", false, "ZEL_Framework.xml: sem permissão"},
        {"/", 0000, 0600, "", false, "ZEL_Framework.xml: sem permissão"},
        {"/", 0700, 0600, "<FRAMEWORKZEL><CRT>1<", false, "o arquivo está cortado"},
        {"/", 0700, 0600, "\n", false, "não é o arquivo da biblioteca"},
        {"caixa1", 0700, 0600, "", true, R"(Remédio: export ZEL_DIRETORIO="$PWD/caixa1")"},
        {"/nada", 0700, 0600, "", true, "o diretório não existe\n    Remédio: mkdir -p '"},
        {"/caixa1", 0000, 0600, "", true, "caixa1: sem permissão"},
        {"/ZEL_Framework.xml", 0700, 0600, "", true, "não é um diretório"},
    };
    for (const CasoDeCaixa &caso : casos) {
        const Loja loja;
        const std::string diretorio = loja.diretorio();
        const std::string config = diretorio + "ZEL_Framework.xml";
        if (!caso.config.empty()) loja.escrever("ZEL_Framework.xml", caso.config);
        ASSERT_EQ(chmod(config.c_str(), caso.modoConfig), 0);
        ASSERT_EQ(chmod(diretorio.c_str(), caso.modoDiretorio), 0);
        std::vector<std::vector<std::string>> comandos{{"estado"},
                                                       {"config", "listar"},
                                                       {"config", "ler", R"(IDE\nNF)"},
                                                       {"vender", "1;Pão;1;1"},
                                                       {"cancelar"}};
        if (caso.todo) {
            comandos.push_back({"conferir"});
            comandos.push_back({"config", "gravar", R"(IDE\nNF)", "9"});
        }
        for (const auto &comando : comandos) {
            const Resultado resultado =
                rodar(comando, {{"ZEL_DIRETORIO", (caso.variavel[0] == '/' ? diretorio : "") +
                                                      std::string(caso.variavel)}});
            EXPECT_EQ(resultado.codigo, 2) << comando.front() << resultado.saida;
            EXPECT_NE(resultado.erros.find(caso.contem), std::string::npos)
                << comando.front() << "\n"
                << resultado.erros;
        }
        chmod(diretorio.c_str(), 0700);
    }
}

// Looking into the wrong directory must leave nothing there.
TEST(Comandos, lerNaoCriaConfiguracao) {
    const Loja loja;
    std::filesystem::remove(loja.diretorio() + "ZEL_Framework.xml");
    for (const std::vector<std::string> &argumentos : {std::vector<std::string>{"config", "listar"},
                                                       {"config", "ler", R"(IDE\nNF)"},
                                                       {"estado"}}) {
        const Resultado resultado = rodar(argumentos, {{"ZEL_DIRETORIO", loja.diretorio()}});
        EXPECT_EQ(resultado.codigo, 2);
        EXPECT_NE(resultado.erros.find("não há ZEL_Framework.xml"), std::string::npos);
    }
    EXPECT_FALSE(std::filesystem::exists(loja.diretorio() + "ZEL_Framework.xml"));
}

TEST(Comandos, consumidorDoUltimoCupomOculto) {
    Loja loja;
    loja.configurar({{R"(NFCE\UrlQrcode)", "http://a/?chNFe=1&cDest=12345678909&vNF=1.00"}});
    const std::vector<std::string> ler{"config", "ler", R"(NFCE\UrlQrcode)", "--diretorio",
                                       loja.diretorio()};
    EXPECT_EQ(rodar(ler).saida, "http://a/?chNFe=1&cDest=(oculto)&vNF=1.00\n");
}

TEST(Comandos, estadoDeCadaPassoDaVenda) {
    constexpr std::array<std::string_view, 6> kEsperados{
        R"("estado":"0 nenhum cupom","ultimo":"nenhum")",
        R"("estado":"1 aberto","itens":"0","total":"0.00","pago":"0.00","ultimo":"nenhum")",
        R"("estado":"2 vendendo","itens":"2","total":"29.76","pago":"0.00","ultimo":"nenhum")",
        R"("estado":"3 totalizado","itens":"2","total":"29.76","pago":"0.00","falta":"29.76")",
        R"("estado":"4 pago","itens":"2","total":"29.76","pago":"29.76","troco":"20.24")",
        R"("estado":"5 encerrado","itens":"2","total":"29.76","pago":"29.76","troco":"20.24",)"
        R"("numero":"2","serie":"1","chave":"35)"};
    for (int estado = 0; estado <= 5; ++estado) {
        const Loja loja;
        if (estado > 0) loja.noCaixa([&](const Funcoes &caixa) { Loja::vender(caixa, estado); });
        const std::string saida =
            rodar({"estado", "--json", "--diretorio", loja.diretorio()}).saida;
        EXPECT_NE(saida.find(kEsperados[static_cast<std::size_t>(estado)]), std::string::npos)
            << saida;
        EXPECT_EQ(saida.find("Maria"), std::string::npos);
    }
}

// The terminal's character set, as the locale says it, installed or not.
TEST(Comandos, escreveComoOTerminal) {
    const std::vector<std::string> ajuda{"codigo", "-35"};
    const auto em = [&](const char *local) { return rodar(ajuda, {{"LC_ALL", local}}).saida; };
    EXPECT_NE(em("C.UTF-8").find("acr\xc3\xa9scimo"), std::string::npos);
    EXPECT_NE(em("xx_YY.utf8").find("acr\xc3\xa9scimo"), std::string::npos);
    EXPECT_NE(em("C").find("acr\xe9scimo"), std::string::npos);
    EXPECT_NE(em("xx_YY.ISO-8859-1").find("acr\xe9scimo"), std::string::npos);
    const std::string json = rodar({"codigo", "-35", "--json"}, {{"LC_ALL", "C"}}).saida;
    EXPECT_NE(json.find("acr\xc3\xa9scimo"), std::string::npos);
}

// A file from elsewhere must not steer the terminal of whoever looks at it.
TEST(Comandos, controlesNaoChegamAoTerminal) {
    Loja loja;
    loja.configurar({{R"(EMIT\CRT)", "\x1b[2J\x9b"
                                     "1"}});
    const std::string saida = rodar({"conferir", loja.diretorio()}).saida;
    EXPECT_NE(saida.find("[2J"), std::string::npos) << saida;
    EXPECT_EQ(saida.find_first_of("\x1b\x9b"), std::string::npos);
    EXPECT_EQ(saida.find("\xc2\x9b"), std::string::npos);
    EXPECT_NE(loja.conferir().saida.find(R"(\u001b[2J)"), std::string::npos);
}

// The commands that a remedy gives can be run as they stand.
TEST(Comandos, remedioSeCopiaESeRoda) {
    Loja loja;
    loja.configurar({{R"(IDE\cUF)", "33"}});
    const std::string saida = rodar({"conferir", loja.diretorio()}).saida;
    const std::size_t comando = saida.find("zel config gravar");
    ASSERT_NE(comando, std::string::npos) << saida;
    EXPECT_EQ(saida.substr(comando, saida.find('\n', comando) - comando),
              "zel config gravar --diretorio '" + loja.diretorio() + R"(' 'IDE\cUF' 35)");
}

} // namespace
