// SPDX-License-Identifier: MIT
// Encodings, codes, accents and layouts: tables of what goes in and what has to come out.
#include "comum/Base64.h"
#include "comum/ChaveAcesso.h"
#include "texto/Acentuacao.h"
#include "texto/Codificacao.h"
#include "texto/Codigos.h"
#include "texto/Latin1.h"
#include "texto/Marcacao.h"
#include "texto/Quebra.h"

#include <gtest/gtest.h>

using namespace zel;

namespace {

using Casos = std::initializer_list<std::pair<std::string_view, std::string_view>>;

template <class Funcao>
void conferir(Funcao funcao, Casos casos) {
    for (const auto &[entrada, esperado] : casos)
        EXPECT_EQ(funcao(entrada), esperado) << entrada;
}

} // namespace

// RFC 3174 and RFC 4648.
TEST(Codificacao, vetores_publicados_de_sha1_e_base64) {
    const auto sha1 = [](std::string_view t) { return fnConvertSHA1_HEXA(fnConvertToSHA1(t)); };
    conferir(sha1, {{"abc", "A9993E364706816ABA3E25717850C26C9CD0D89D"},
                    {"abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq",
                     "84983E441C3BD26EBAAE4AA1F95129E5E54670F1"},
                    {"", "DA39A3EE5E6B4B0D3255BFEF95601890AFD80709"}});
    conferir(comum::base64, {{"", ""}, {"f", "Zg=="}, {"fo", "Zm8="}, {"foobar", "Zm9vYmFy"}});
}

TEST(Codificacao, base64_em_linhas_e_lido_e_rasgado_e_recusado) {
    conferir(fnParseBase64ToUtf8, {{"", ""}, {"Zm8=", "fo"}, {" Zm9v\r\nYm Fy\n", "foobar"}});
    for (const std::string_view mau : {"Zg", "Zg=", "Z", "Zm9v!", "Zg==Zg==", "====", "Zm9\xE9"})
        EXPECT_EQ(fnParseBase64ToUtf8(mau), std::nullopt) << mau;
}

TEST(Codificacao, bytes_altos_sao_codificados) {
    EXPECT_EQ(fnParseToUtf8("\xE3 \x80 \xBF \xC0 \xFF"), "ã \xC2\x80 \xC2\xBF \xC3\x80 \xC3\xBF");
    EXPECT_EQ(fnConverterParaHexa("-\x0A\x7F\x80\xFF"), "2d0a7fffffff80ffffffff");
    EXPECT_EQ(fnConverterParaHexa(std::string(120, 'a')).size(), 2U * 99);
}

// The long key is the worked example of the taxpayer manual; remainders 0 and 1 give one digit.
TEST(ChaveAcesso, digito_tem_os_seus_pesos_e_restos) {
    const auto digito = [](std::string_view chave) { return std::string(1, fnCalcula_cDV(chave)); };
    conferir(digito, {{"5206043300991100250655012000000780026730161", "5"}});
    conferir(digito, {{"6", "0"}, {"1", "9"}, {"10000000", "2"}, {"1x", "8"}});
}

TEST(ChaveAcesso, montada_e_cortada_nos_mesmos_lugares) {
    using Parte = ChaveAcesso::Parte;
    const ChaveAcesso::Partes partes{"52",        "0604", "33009911002506", "55", "012",
                                     "000000780", "0",    "26730161"};
    const auto chave = ChaveAcesso::montar(partes);
    ASSERT_TRUE(chave && chave->integra());
    EXPECT_EQ(chave->texto(), "52060433009911002506550120000007800267301615");
    const std::pair<Parte, std::string_view> kPartes[] = {
        {Parte::kCUF, partes.cUF}, {Parte::kAAMM, partes.AAMM},     {Parte::kCNPJ, partes.CNPJ},
        {Parte::kMod, partes.mod}, {Parte::kSerie, partes.serie},   {Parte::kNNF, partes.nNF},
        {Parte::kCNF, partes.cNF}, {Parte::kTpEmis, partes.tpEmis}, {Parte::kCDV, "5"}};
    for (const auto &[parte, valor] : kPartes)
        EXPECT_EQ(chave->parte(parte), valor);
}

TEST(ChaveAcesso, o_que_nao_e_chave) {
    // A part too long beside one too short still makes 44.
    EXPECT_FALSE(ChaveAcesso::montar(
        {"5", "0604", "33009911002506", "55", "0123", "000000780", "0", "26730161"}));
    EXPECT_FALSE(ChaveAcesso::montar(
        {"52", "0604", "33009911002506", "55", "-12", "000000780", "0", "26730161"}));
    const std::string boa = "52060433009911002506550120000007800267301615";
    for (const std::string &texto : {std::string(), boa.substr(1), boa + "0", boa.substr(1) + "x",
                                     boa.substr(1) + '\0', "/" + boa.substr(1)})
        EXPECT_FALSE(ChaveAcesso::ler(texto)) << texto;
    const auto outroDigito = ChaveAcesso::ler(boa.substr(0, 43) + "6");
    ASSERT_TRUE(outroDigito);
    EXPECT_FALSE(outroDigito->integra());
}

TEST(Codigos, cpf_e_cnpj_guardam_zeros_e_perdem_o_que_passa_da_mascara) {
    conferir(fnFormatarCPFCNPJ, {{"12345678909", "123.456.789-09"},
                                 {"11222333000181", "11.222.333/0001-81"},
                                 {"191", "000.000.001-91"},
                                 {"012345678-90", "012.345.678-90"},
                                 {"122233300018", "00.122.233/3000-18"},
                                 {"112223330001819", "11.222.333/0001-81"},
                                 {"1122233300018190", "1122233300018190"},
                                 {"a-b", ""}});
}

TEST(Codigos, pagamento_vai_para_a_sua_forma) {
    conferir(
        fnRetornaCodigoFormaPgto,
        {{"CARTAO DE CREDITO", "03"}, {"vale combustível"_l1, "13"}, {"1", "99"}, {"06", "99"}});
}

TEST(Acentuacao, letras_e_escapes_perdem_acento_no_mesmo_tamanho) {
    conferir(fnRetiraAcentuacao,
             {{"àáâãäª òóôõöº èéêë ìíîï ùúûü ç"_l1, "aaaaaa oooooo eeee iiii uuuu c"},
              {"ÀÁÂÃÄ ÒÓÔÕÖ ÈÉÊË ÌÍÎÏ ÙÚÛÜ Ç"_l1, "AAAAA OOOOO EEEE IIII UUUU C"},
              {"ÑñÝýÿåÅØøß§"_l1, "ÑñÝýÿåÅØøß§"_l1},
              {"\x1B\x61\x31Z\xE7", "   Zc"},
              {"x\x1By", "x  "}});
}

TEST(Acentuacao, o_primeiro_estado_decide_os_acentos) {
    conferir(fnAdequarCaracteres, {{"<UF>MT</UF>ção<UF>RS</UF>"_l1, "<UF>MT</UF>cao<UF>RS</UF>"},
                                   {"<UF>RS</UF>ção<UF>MT</UF>"_l1, "<UF>RS</UF>ção<UF>MT</UF>"_l1},
                                   {"<UFST>MT</UFST>ção<UF>M"_l1, "<UFST>MT</UFST>ção<UF>M"_l1}});
}

TEST(Quebra, um_caractere_a_mais_e_a_ultima_linha_ficam_inteiros) {
    const auto em = [](std::size_t largura) {
        return [=](std::string_view texto) { return fnQuabraLinhaLayout(texto, largura); };
    };
    conferir(em(10), {{"12345678901", "12345678901"}, {"123456789012", "1234567890\n12"}});
    conferir(em(3), {{"abcdefgh\nabcdefgh", "abc\ndef\ngh\nabcdefgh"},
                     {"\nabcd\nabcde\n", "\nabcd\nabc\nde\n"}});
    conferir(em(0), {{"abcdef", "abcdef"}});
}

TEST(Quebra, cada_linha_e_centralizada_por_si) {
    conferir([](std::string_view texto) { return fnCentralizarLayout(texto, 10); },
             {{"abc\nabcd", "   abc\n   abcd"}, {"123456789012", "1234567890\n    12"}, {"", ""}});
    EXPECT_EQ(fnCentralizarLayout("x", 1000), std::string(99, ' ') + "x");
}

TEST(Marcacao, marcas_abertas_e_desconhecidas_nao_comem_a_mensagem) {
    conferir(fnRetornarTextoSemRepresentantes,
             {{"[ce][b]Volte[/b] [b]sempre[/b][/ce][qrcode]http://x[/qrcode]", "Volte sempre"},
              {"a[upc-a]1[/upc-a]b[code128]2[/code128]c[s2of5]3[/s2of5]", "abc"},
              {"[b]a[g]b[b]c[/b][/g]d[/b]e", "ade"},
              {"a[l]b[g]c[b]d", "abcd"}, // never closed: the marker alone
              {"[/b]a[/g][b]c[/b][/b]", "[/b]a[/g]c[/b]"},
              {"[x]a[/x] [B]b[/B] [confguix]", "[x]a[/x] [B]b[/B] [confguix]"},
              {"] [ b][] [[b]a[/b]] [b", "] [ b][] [a] [b"},
              {"[nome comprido demais [i]a[/i]]", "[nome comprido demais a]"}});
}

// Searching the whole rest at every bracket: minutes at this size, until the run's time limit.
TEST(Marcacao, o_tempo_so_cresce_com_o_tamanho) {
    for (const std::string_view parte : {"[", "[g]", "[b]", "[qrcode][/l]"}) {
        std::string texto;
        while (texto.size() < 200'000)
            texto += parte;
        EXPECT_LE(fnRetornarTextoSemRepresentantes(texto).size(), texto.size());
    }
}
