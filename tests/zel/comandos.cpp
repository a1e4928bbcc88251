// SPDX-License-Identifier: MIT
// The subcommands codigo, config and estado, what the command says of itself, and how it writes.
#include "Loja.h"

#include "apoio/Funcoes.h"

#include "ZEL_FelborFramework.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <span>

namespace {

struct Caso {
    Argumentos argumentos;
    int codigo;
    std::string_view dito;         // on either output
    std::string_view naoDito = {}; // when not empty
};

void conferir(const Caso &caso, const Resultado &resultado) {
    const std::string linha = testing::PrintToString(caso.argumentos);
    EXPECT_TRUE(resultado.deu(caso.codigo, caso.dito)) << linha;
    if (caso.naoDito.empty()) return;
    EXPECT_FALSE(contem(resultado.saida + resultado.erros, caso.naoDito)) << linha;
}

const Caso kSemLoja[] = {
    {{}, 2, "Comandos:"},
    {{"--help"}, 0, "conferir"},
    {{"conferir", "--help"}, 0, "--esquema PASTA"},
    {{"estado", "--ajuda"}, 0, "Uso:"},
    {{"comprar"}, 2, "comando desconhecido: comprar"},
    // A program that reads --json gets errors of use, too.
    {{"comprar", "--json"}, 2, R"({"resultado":"falhou","motivo":"comando desconhecido: comprar)"},
    {{"estado", "x", "--json"}, 2, R"({"resultado":"uso errado","motivo":"estado não leva)"},
    {{"codigo", "--json", "--cor"}, 2, R"({"resultado":"uso errado","motivo":"opção desconhecida)"},
    {{"estado", "--diretorio", "/nada", "--json"}, 2, R"(não existe","remedio":"mkdir -p '/nada')"},
    {{"vender", "--help"}, 0, "--pagamento FORMA[=VALOR]"},
    {{"conferir", "--itens", "x"}, 2, "opção desconhecida"},
    {{"vender", "1;A;1;1", "--pagamento"}, 2, "falta o valor de --pagamento"},
    {{"codigo", "--cor"}, 2, "opção desconhecida: --cor"},
    {{"conferir", "--diretorio"}, 2, "falta o valor de --diretorio"},
    {{"conferir", "a", "b"}, 2, "Uso:"},
    {{"conferir", "--ajuda-achados"}, 0, "cnpj-digito"},
    // A new name or severity breaks whoever reads --json.
    {{"conferir", "--ajuda-achados", "--json"},
     0,
     R"([{"id":"diretorio-ausente","gravidade":"erro")"},
    {{"codigo", "-35"}, 0, "ZEL_AJUSTE_EXCESSIVO", "ZEL_JA_PAGO"},
    {{"codigo", "ja_pago", "2"}, 0, "ZEL_CANCELAMENTO_GRAVADO", "EXCESSIVO"},
    {{"codigo", "ZEL_JA_PAGO", "--json"}, 0, R"([{"codigo":-34,"nome":"ZEL_JA_PAGO",)"},
    {{"--version"}, 0, "zel " ZEL_VERSAO "\n"},
    {{"--versao"}, 0, "zel " ZEL_VERSAO "\n"},
    {{"codigo", "35"}, 2, "não tem o código 35; tem o -35: zel codigo -35"},
    {{"codigo", "204"}, 2, "os da SEFAZ (cStat, no retorno) estão em docs/envio.md"},
    {{"codigo", "-7"}, 2, "não tem o código -7"},
    {{"codigo"}, 0, "-135 ZEL_ENCERRAMENTO_FORA_DE_ORDEM"},
    {{"config"}, 2, "Uso:"},
    {{"estado", "x"}, 2, "Uso:"},
};

TEST(Comandos, uma_linha_cada) {
    for (const Caso &caso : kSemLoja)
        conferir(caso, rodar(caso.argumentos));
}

const Caso kNaLoja[] = {
    {{"conferir", "--esquema", "x"}, 2, "vale para um documento"},
    {{"config", "ler", R"(emit\cnpj)"}, 0, "11222333000181\n", "EMIT"},
    {{"config", "ler", R"(IDE\NF)"}, 0, "1\n"},
    {{"config", "ler", "CNPJ"}, 2, R"(EMIT\CNPJ)", "11222"},
    {{"config", "ler", R"(EMIT\ENDEREMIT\xMun)", "--json"}, 0, "São Paulo"},
    {{"config", "ler", R"(CONFIGURACAO\TokenSefaz)"}, 0, "(oculto, 18", "SEGR"},
    {{"config", "listar", "Token"}, 0, "(oculto, 18", "SEGREDO"},
    {{"config", "listar", R"(IDE\*)"}, 0, R"(IDE\xJust = )", "EMIT"},
    {{"config", "listar", "nada"}, 2, "nenhuma chave"},
    {{"config", "listar", "--mostrar-segredo"}, 0, "SEGREDO-0123456789"},
    {{"config", "gravar", R"(EMIT\CNPJ)", "11222333000180"}, 2, "gravada assim mesmo"},
    {{"config", "gravar", R"(IDE\Mod)", "065"}, 2, "a chave guarda 2"},
    {{"config", "gravar", R"(EMIT\xNome)", "Caf\xe2\x82\xac"}, 2, "ISO-8859-1"},
    {{"config", "gravar", R"(EMIT\xNome)", "a</b"}, 2, "ZEL_RECUSADO"},
    {{"config", "gravar", R"(EMIT\CNPJ)", "-"}, 2, "entrada padrão"},
    {{"config", "gravar", "--", R"(EMIT\xNome)", "--x"}, 0, "= --x"},
    {{"estado"}, 0, "Estado:            0 nenhum cupom"},
};

TEST(Comandos, uma_linha_cada_na_loja) {
    const Loja loja;
    const std::string limpa = loja.ler("ZEL_Framework.xml");
    for (const Caso &caso : kNaLoja) {
        loja.gravar("ZEL_Framework.xml", limpa);
        conferir(caso, loja.zel(caso.argumentos));
    }
    const std::string junto = "--diretorio=" + loja.diretorio();
    EXPECT_TRUE(rodar({"config", "ler", R"(EMIT\CRT)", junto}).deu(0, "1\n"));
}

TEST(Comandos, gravar_passa_pela_biblioteca) {
    const Loja loja;
    EXPECT_EQ(
        loja.zel({"config", "gravar", R"(emit\enderemit\xmun)", "S\xc3\xa3o Jos\xc3\xa9"}).saida,
        "EMIT\\ENDEREMIT\\xMun = S\xc3\xa3o Jos\xc3\xa9\n");
    EXPECT_TRUE(contem(loja.ler("ZEL_Framework.xml"), "<xMun>S\xe3o Jos\xe9</xMun>"));
    // Read from the input the token is in no history; it is not shown either.
    const Resultado token =
        loja.zel({"config", "gravar", R"(CONFIGURACAO\TokenSefaz)", "-"}, {}, "NOVO-TOKEN\n");
    EXPECT_TRUE(token.deu(0));
    EXPECT_FALSE(contem(token.saida, "NOVO"));
    EXPECT_TRUE(contem(loja.ler("ZEL_Framework.xml"), "<TokenSefaz>NOVO-TOKEN<"));
}

// A text arrives in ISO-8859-1 whatever the locale: one that names no character set, as that of a
// script under cron, takes UTF-8 for what it is, and answers in it.
TEST(Comandos, grava_o_mesmo_em_toda_localidade) {
    const std::string utf8 = "S\xc3\xa3o", latin1 = "S\xe3o";
    const struct {
        const char *local;
        const std::string &dado, &gravado, &mostrado;
    } casos[] = {
        {"C.UTF-8", utf8, latin1, utf8},
        {"C", utf8, latin1, utf8},
        {"POSIX", utf8, latin1, utf8},
        {"xx_YY", utf8, latin1, utf8},
        {"C", latin1, latin1, latin1},
        {"C.UTF-8", latin1, latin1, utf8},
        {"xx_YY.ISO-8859-1", latin1, latin1, latin1},
        {"xx_YY.ISO-8859-1", utf8, utf8, utf8},
    };
    for (const auto &[local, dado, gravado, mostrado] : casos) {
        const Loja loja;
        const Argumentos gravar{"config", "gravar", R"(EMIT\ENDEREMIT\xMun)", dado};
        EXPECT_TRUE(
            contem(loja.zel(gravar, {{"LC_ALL", local}}).saida, "xMun = " + mostrado + "\n"))
            << local;
        EXPECT_TRUE(contem(loja.ler("ZEL_Framework.xml"), "<xMun>" + gravado + "</xMun>")) << local;
    }
}

// A till that cannot be read, or that the library would not use, is never answered for with the
// factory's values.
TEST(Comandos, caixa_que_nao_se_le_eh_dito) {
    const struct {
        std::string variavel; // ZEL_DIRETORIO, after the shop's directory when it begins with "/"
        mode_t modoDiretorio, modoConfig;
        std::string_view config; // "" leaves it, "-" takes it away
        bool todo;               // conferir, which tells more, and gravar are refused too
        std::string_view dito;
    } casos[] = {
        {"/", 0700, 0000, "", false, "ZEL_Framework.xml: sem permissão"},
        {"/", 0000, 0600, "", false, "ZEL_Framework.xml: sem permissão"},
        {"/", 0700, 0600, "<FRAMEWORKZEL><CRT>1<", false, "o arquivo está cortado"},
        {"/", 0700, 0600, "\n", false, "não é o arquivo da biblioteca"},
        {"/", 0700, 0600, "-", false, "um caixa novo começa com zel config gravar --diretorio '/"},
        {"caixa1", 0700, 0600, "", true, R"(Remédio: export ZEL_DIRETORIO="$PWD/caixa1")"},
        {"/nada", 0700, 0600, "", true, "o diretório não existe\n    Remédio: mkdir -p '"},
        {"/caixa1", 0000, 0600, "", true, "caixa1: sem permissão"},
        {"/ZEL_Framework.xml", 0700, 0600, "", true, "não é um diretório"},
    };
    const Argumentos comandos[] = {{"estado"},
                                   {"config", "listar"},
                                   {"config", "ler", R"(IDE\nNF)"},
                                   {"vender", "1;Pão;1;1"},
                                   {"cancelar"},
                                   {"conferir"},
                                   {"config", "gravar", R"(IDE\nNF)", "9"}};
    for (const auto &[variavel, modoDiretorio, modoConfig, config, todo, dito] : casos) {
        const Loja loja;
        const std::string diretorio = loja.diretorio(), arquivo = diretorio + "ZEL_Framework.xml";
        if (!config.empty()) loja.gravar("ZEL_Framework.xml", config);
        ASSERT_EQ(chmod(arquivo.c_str(), modoConfig), 0);
        if (config == "-") std::filesystem::remove(arquivo);
        ASSERT_EQ(chmod(diretorio.c_str(), modoDiretorio), 0);
        const Ambiente ambiente{
            {"ZEL_DIRETORIO", (variavel[0] == '/' ? diretorio : "") + variavel}};
        for (const Argumentos &comando : std::span(comandos).first(todo ? 7 : 5)) {
            const Resultado resultado = rodar(comando, ambiente);
            EXPECT_EQ(resultado.codigo, 2) << comando.front() << resultado.saida;
            EXPECT_TRUE(contem(resultado.erros, dito)) << comando.front();
        }
        chmod(diretorio.c_str(), 0700);
        // Looking into the wrong directory must leave nothing there.
        EXPECT_EQ(std::filesystem::exists(arquivo), config != "-");
    }
}

TEST(Comandos, consumidor_do_ultimo_cupom_oculto) {
    const Loja loja;
    loja.configurar({{R"(NFCE\UrlQrcode)", "http://a/?chNFe=1&cDest=12345678909&vNF=1.00"}});
    EXPECT_EQ(loja.zel({"config", "ler", R"(NFCE\UrlQrcode)"}).saida,
              "http://a/?chNFe=1&cDest=(oculto)&vNF=1.00\n");
}

TEST(Comandos, estado_de_cada_passo_da_venda) {
    constexpr std::string_view kEsperados[] = {
        R"("estado":"0 nenhum cupom","ultimo":"nenhum")",
        R"("estado":"1 aberto","consumidor":{"tipo":"cpf","documento":"12345678909",)"
        R"("nome":"Maria de Tal"},"lista":[],"pagamentos":[],)"
        R"("itens":"0","total":"0.00","pago":"0.00","ultimo":"nenhum")",
        R"("lista":[{"numero":"1","codigo":"202","descricao":"Refrigerante","quantidade":"2.0000",)"
        R"("unidade":"UN","preco":"8.50","bruto":"17.00","desconto":"1.70"},)"
        R"({"numero":"2","codigo":"303","descricao":"Queijo","quantidade":"0.3500","unidade":"KG",)"
        R"("preco":"39.90","bruto":"13.96","acrescimo":"0.50"}],"pagamentos":[],)"
        R"("itens":"2","total":"29.76","pago":"0.00","ultimo":"nenhum")",
        R"("pagamentos":[],"itens":"2","total":"29.76","pago":"0.00","falta":"29.76")",
        R"("pagamentos":[{"forma":"01","nome":"Dinheiro","valor":"29.76"}],)"
        R"("itens":"2","total":"29.76","pago":"29.76","troco":"20.24")",
        R"("itens":"2","total":"29.76","pago":"29.76","troco":"20.24",)"
        R"("numero":"2","serie":"1","chave":"35)"};
    for (int estado = 0; estado <= 5; ++estado) {
        const Loja loja;
        if (estado > 0) loja.noCaixa([&](const Funcoes &caixa) { Loja::vender(caixa, estado); });
        const std::string saida = loja.zel({"estado", "--json"}).saida;
        EXPECT_TRUE(contem(saida, kEsperados[estado]));
    }
}

// What another discount of the item takes off counts, too; references are read as what they mean.
TEST(Comandos, estado_para_pessoas) {
    const Loja loja;
    loja.noCaixa([](const Funcoes &caixa) {
        Loja::vender(caixa, 2);
        ASSERT_EQ(caixa.aCFVender_ZEL("N", "1", "3", "", "", "9", "UN", "Caf\xe9 & <p\xe3o>"), 1);
        ASSERT_EQ(caixa.aCFLancarDescontoItem_ZEL(3, "D$", "1"), 1);
    });
    EXPECT_TRUE(
        contemTodas(loja.zel({"estado"}).saida,
                    {"Consumidor:        CPF 12345678909, Maria de Tal\n",
                     "Item 1:            202 Refrigerante: 2.0000 UN x 8.50 = 17.00, "
                     "desconto 1.70\n",
                     "Item 3:            9 Caf\xc3\xa9 & <p\xc3\xa3o>: 1.0000 UN x 3 = 3.00, "
                     "desconto 1.00\n",
                     "Total:             31.76\n"}));
}

// The terminal's character set, as the locale says it, installed or not.
TEST(Comandos, escreve_como_o_terminal) {
    constexpr std::string_view kUtf8 = "acr\xc3\xa9scimo", kLatin1 = "acr\xe9scimo";
    for (const auto &[local, escrito] : {std::pair("C.UTF-8", kUtf8),
                                         {"xx_YY.utf8", kUtf8},
                                         {"C", kLatin1},
                                         {"xx_YY.ISO-8859-1", kLatin1}})
        EXPECT_TRUE(rodar({"codigo", "-35"}, {{"LC_ALL", local}}).deu(0, escrito)) << local;
    EXPECT_TRUE(rodar({"codigo", "-35", "--json"}, {{"LC_ALL", "C"}}).deu(0, kUtf8));
}

// A file from elsewhere must not steer the terminal of whoever looks at it.
TEST(Comandos, controles_nao_chegam_ao_terminal) {
    const Loja loja;
    loja.configurar({{R"(EMIT\CRT)", "\x1b[2J\x9b"
                                     "1"}});
    const std::string saida = rodar({"conferir", loja.diretorio()}).saida;
    EXPECT_TRUE(contem(saida, "[2J"));
    EXPECT_EQ(saida.find_first_of("\x1b\x9b"), std::string::npos);
    EXPECT_FALSE(contem(saida, "\xc2\x9b"));
    EXPECT_TRUE(contem(loja.conferir().saida, R"(\u001b[2J)"));
}

// The commands that a remedy gives can be run as they stand.
TEST(Comandos, remedio_se_copia_e_se_roda) {
    const Loja loja;
    loja.configurar({{R"(IDE\cUF)", "33"}});
    EXPECT_TRUE(
        contem(rodar({"conferir", loja.diretorio()}).saida,
               "zel config gravar --diretorio '" + loja.diretorio() + R"(' 'IDE\cUF' 35)" + "\n"));
}

} // namespace
