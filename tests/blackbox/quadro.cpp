// What the frames themselves promise: result buffers are filled within the sizes that the header
// names, and nothing else of the caller's is written to.
#include "blackbox/Caixa.h"

#include <gtest/gtest.h>

// Would catch a result copied through a null pointer.
TEST(Quadro, buffer_nulo_e_recusado) {
    const Caixa caixa;
    EXPECT_EQ(caixa->regRetornarValor_ZEL("IDE\\nNF", nullptr), ZEL_ARGUMENTO_INVALIDO);
    EXPECT_EQ(caixa->rInfoEstendida_ZEL("1", nullptr), ZEL_ARGUMENTO_INVALIDO);
    EXPECT_EQ(caixa->rURLQrcode_ZEL(nullptr), ZEL_ARGUMENTO_INVALIDO);
    EXPECT_EQ(caixa->RetornarUltimoBufferFormatadoNF_ZEL(nullptr), ZEL_ARGUMENTO_INVALIDO);
}

// Would catch a size constant smaller than the longest value, or a terminator written behind it:
// the buffers are on the heap, so that the sanitizer sees one byte too many.
TEST(Quadro, o_maior_valor_cabe_no_tamanho_documentado) {
    const Caixa caixa;
    const std::string url(600, 'u');
    caixa.config("NFCE\\UrlQrcode", url.c_str());
    EXPECT_EQ(caixa.config("NFCE\\UrlQrcode"), url.substr(0, ZEL_TAMANHO_VALOR - 1));
    std::vector<char> lida(ZEL_TAMANHO_VALOR, '?');
    EXPECT_EQ(caixa->rURLQrcode_ZEL(lida.data()), ZEL_OK);
    EXPECT_EQ(lida.data(), url.substr(0, ZEL_TAMANHO_VALOR - 1));
}

// Would catch an application that goes on with what its buffer held before a read that failed.
TEST(Quadro, leitura_recusada_deixa_um_texto_vazio) {
    const Caixa caixa;
    std::string valor = "antigo";
    EXPECT_EQ(caixa->regRetornarValor_ZEL("IDE\\naoExiste", valor.data()), ZEL_RECUSADO);
    EXPECT_STREQ(valor.c_str(), "");
    valor = "antigo";
    EXPECT_EQ(caixa->RetornarUltimoBufferFormatadoNF_ZEL(valor.data()), ZEL_ARQUIVO_INDISPONIVEL);
    EXPECT_STREQ(valor.c_str(), "");
}

// Would catch a write to a text that is a result only on success: callers pass constants.
TEST(Quadro, chamada_recusada_nao_escreve_no_texto_do_chamador) {
    static const char kDiretorios[] = "/tmp/|/var/";
    const Caixa caixa;
    char *constante = const_cast<char *>(kDiretorios);
    EXPECT_EQ(caixa->aCFContingenciaUltimaNota_ZEL(4, constante), ZEL_RECUSADO) << "no document";
    EXPECT_EQ(caixa->aCFContingenciaUltimaNota_ZEL(9, constante), ZEL_RECUSADO) << "no such kind";
}
