#include "PastaTemporaria.h"
#include "ZEL_FelborFramework.h"
#include "util/Cripto.h"

#include <gtest/gtest.h>

using namespace zel;

// A key that restarts late or early, a missing constant, bytes that do not wrap around.
TEST(Cripto, bytes_move_by_key_and_constant) {
    EXPECT_EQ(fnCriptografar(std::string("A\0", 2), kChaveFixa), "\x07\xBF");
    EXPECT_EQ(fnCriptografar(std::string(13, '\0'), kChaveFixa).back(), '\x72' + 84 - 256);
    EXPECT_EQ(fnCriptografar("AB", ""), "\x95\x96");
    EXPECT_EQ(fnCriptografar("\xFF\x01", "\xFF"), "\x52\x54");
}

// The two readers end differently: a stream at the first 0xFF, a buffer in front of its last byte.
TEST(Cripto, ends_of_unscrambled_texts) {
    const std::string oculto = fnCriptografar("antes\xFF...", kChaveFixa);
    EXPECT_EQ(fnDescriptografar(oculto, kChaveFixa), "antes");
    EXPECT_EQ(fnDescriptBufferContingencia(oculto), "antes\xFF..");
    EXPECT_EQ(fnDescriptBufferContingencia(oculto.substr(0, 1)), "a");
    EXPECT_EQ(fnDescriptBufferContingencia(""), "");
}

TEST(Cripto, files_are_scrambled_and_come_back_onto_themselves_too) {
    const PastaTemporaria pasta;
    const std::string texto("linha\r\n\0fim\x01", 12);
    pasta.gravar("a", texto);
    ASSERT_EQ(fnCriptografarArquivo(pasta / "a", pasta / "b", "chave"), ZEL_OK);
    EXPECT_EQ(pasta.ler("b"), fnCriptografar(texto, "chave"));
    ASSERT_EQ(fnDescriptografarArquivo(pasta / "b", pasta / "b", "chave"), ZEL_OK);
    EXPECT_EQ(pasta.ler("b"), texto);
}

// A path or key one character beyond its limit used whole.
TEST(Cripto, paths_and_key_are_cut_to_their_limits) {
    const PastaTemporaria pasta;
    pasta.gravar("a", "texto");
    const std::string chave(kMaximaChave, 'k');
    std::string destino = pasta / "";
    while (destino.size() < kMaximoCaminho - 2)
        destino += "./";
    destino.append(kMaximoCaminho - destino.size(), 'd');
    ASSERT_EQ(fnCriptografarArquivo(pasta / "a", destino + "xyz", chave + "z"), ZEL_OK);
    ASSERT_EQ(fnDescriptografarArquivo(destino + "w", pasta / "b", chave), ZEL_OK);
    EXPECT_EQ(pasta.ler("b"), "texto");
}

TEST(Cripto, unreachable_files_answer_and_leave_the_target_alone) {
    const PastaTemporaria pasta;
    pasta.gravar("a", "velho");
    for (const auto transformar : {fnCriptografarArquivo, fnDescriptografarArquivo}) {
        EXPECT_EQ(transformar(pasta / "falta", pasta / "a", "k"), ZEL_ARQUIVO_INDISPONIVEL);
        EXPECT_EQ(transformar(pasta / "a", pasta / "sem/b", "k"), ZEL_ARQUIVO_INDISPONIVEL);
    }
    EXPECT_EQ(fnCriarArquivoContigencia(pasta / "sem/k.ctg", "x"), ZEL_ARQUIVO_INDISPONIVEL);
    EXPECT_EQ(pasta.ler("a"), "velho");
}

// The terminating zero left out, or handed out as part of the text; a receipt open to everyone.
TEST(Cripto, the_librarys_own_files_come_back) {
    const PastaTemporaria pasta;
    ASSERT_EQ(fnCriarArquivoContigencia(pasta / "k.ctg", "<NFe/>"), ZEL_OK);
    EXPECT_EQ(pasta.ler("k.ctg").back(), '\xC1'); // 0 + "m" + 84
    EXPECT_EQ(fnDescriptBufferContingencia(pasta.ler("k.ctg")), "<NFe/>");

    ASSERT_EQ(::setenv("ZEL_DIRETORIO", (pasta / "").c_str(), 1), 0);
    std::string lido = "intacto";
    EXPECT_EQ(fnLerArquivoCriptUltimaDanfe(lido), ZEL_ARQUIVO_INDISPONIVEL);
    EXPECT_EQ(lido, "intacto");
    EXPECT_EQ(fnCriarArquivoCriptUltimaDanfe("danfe\r\n"), ZEL_OK);
    EXPECT_EQ(fnLerArquivoCriptUltimaDanfe(lido), ZEL_OK);
    EXPECT_EQ(lido, "danfe\r\n");
    EXPECT_EQ(pasta.ler("ultimadanfe.bin").size(), 8U);
    EXPECT_EQ(std::filesystem::status(pasta / "ultimadanfe.bin").permissions(),
              std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
    ::unsetenv("ZEL_DIRETORIO");
}
