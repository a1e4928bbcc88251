#include "PastaTemporaria.h"
#include "ZEL_FelborFramework.h"
#include "util/Cripto.h"

#include <gtest/gtest.h>
#include <stdlib.h>

using namespace zel;

// A key that restarts late or early, a missing constant, bytes that do not wrap around.
TEST(Cripto, bytes_move_by_key_and_constant) {
    EXPECT_EQ(fnCriptografar(std::string("A\0", 2), kChaveFixa), "\x07\xBF");
    EXPECT_EQ(fnCriptografar(std::string(13, '\0'), kChaveFixa).back(), '\x72' + 84 - 256);
    EXPECT_EQ(fnCriptografar("AB", ""), "\x95\x96");
    EXPECT_EQ(fnCriptografar("\xFF\x01", "\xFF"), "\x52\x54");

    std::string todos;
    for (int byte = 0; byte < 0xFF; ++byte) todos.push_back(static_cast<char>(byte));
    EXPECT_EQ(fnDescriptografar(fnCriptografar(todos, "k\xE9y"), "k\xE9y"), todos);
}

// The two readers end differently: a stream at the first 0xFF, a buffer in front of its last byte.
TEST(Cripto, ends_of_unscrambled_texts) {
    const std::string embaralhado = fnCriptografar("antes\xFF"
                                                   "depois!",
                                                   kChaveFixa);
    EXPECT_EQ(fnDescriptografar(embaralhado, kChaveFixa), "antes");
    EXPECT_EQ(fnDescriptBufferContingencia(embaralhado), "antes\xFF"
                                                         "depois");
    EXPECT_EQ(fnDescriptBufferContingencia(fnCriptografar("x", kChaveFixa)), "x");
    EXPECT_EQ(fnDescriptBufferContingencia(""), "");
}

TEST(Cripto, files_are_scrambled_and_come_back_onto_themselves_too) {
    const PastaTemporaria pasta;
    const std::string texto("linha\r\n\0fim\x01", 12);
    pasta.gravar("claro", texto);
    ASSERT_EQ(fnCriptografarArquivo(pasta / "claro", pasta / "oculto", "chave"), ZEL_OK);
    EXPECT_EQ(pasta.ler("oculto"), fnCriptografar(texto, "chave"));
    ASSERT_EQ(fnCriptografarArquivo(pasta / "claro", pasta / "claro", "chave"), ZEL_OK);
    EXPECT_EQ(pasta.ler("claro"), pasta.ler("oculto"));
    ASSERT_EQ(fnDescriptografarArquivo(pasta / "oculto", pasta / "oculto", "chave"), ZEL_OK);
    EXPECT_EQ(pasta.ler("oculto"), texto);
}

// A path or key one character beyond its limit used whole.
TEST(Cripto, paths_and_key_are_cut_to_their_limits) {
    const PastaTemporaria pasta;
    pasta.gravar("a", "texto");
    const std::string chave(kMaximaChave, 'k');
    std::string destino = pasta / "";
    while (destino.size() < kMaximoCaminho - 1) destino += "./";
    destino.append(kMaximoCaminho - destino.size(), 'd');
    ASSERT_EQ(fnCriptografarArquivo(pasta / "a", destino + "xyz", chave + "z"), ZEL_OK);
    ASSERT_EQ(fnDescriptografarArquivo(destino + "w", pasta / "b", chave), ZEL_OK);
    EXPECT_EQ(pasta.ler("b"), "texto");
}

TEST(Cripto, unreachable_files_answer_and_leave_the_target_alone) {
    const PastaTemporaria pasta;
    pasta.gravar("destino", "velho");
    EXPECT_EQ(fnCriptografarArquivo(pasta / "falta", pasta / "destino", "k"),
              ZEL_ARQUIVO_INDISPONIVEL);
    EXPECT_EQ(pasta.ler("destino"), "velho");
    for (const auto transformar : {fnCriptografarArquivo, fnDescriptografarArquivo}) {
        EXPECT_EQ(transformar("", pasta / "x", "k"), ZEL_ARQUIVO_INDISPONIVEL);
        EXPECT_EQ(transformar(pasta / "destino", pasta / "sem/pasta", "k"),
                  ZEL_ARQUIVO_INDISPONIVEL);
    }
}

TEST(Cripto, contingency_file_carries_its_scrambled_zero) {
    const PastaTemporaria pasta;
    ASSERT_EQ(fnCriarArquivoContigencia(pasta / "k.ctg", "<NFe/>"), ZEL_OK);
    const std::string conteudo = pasta.ler("k.ctg");
    EXPECT_EQ(conteudo.size(), 7U);
    EXPECT_EQ(fnDescriptBufferContingencia(conteudo), "<NFe/>");
    EXPECT_EQ(fnCriarArquivoContigencia(pasta / "sem/k.ctg", "x"), ZEL_ARQUIVO_INDISPONIVEL);
}

// The terminating zero handed out as part of the receipt, or a receipt readable by everyone.
TEST(Cripto, last_receipt_is_kept_and_read_back) {
    const PastaTemporaria pasta;
    ASSERT_EQ(::setenv("ZEL_DIRETORIO", (pasta / "").c_str(), 1), 0);
    std::string lido = "intacto";
    EXPECT_EQ(fnLerArquivoCriptUltimaDanfe(lido), ZEL_ARQUIVO_INDISPONIVEL);
    EXPECT_EQ(lido, "intacto");
    ASSERT_EQ(fnCriarArquivoCriptUltimaDanfe("primeira danfe"), ZEL_OK);
    ASSERT_EQ(fnCriarArquivoCriptUltimaDanfe("danfe\r\n"), ZEL_OK);
    EXPECT_EQ(fnLerArquivoCriptUltimaDanfe(lido), ZEL_OK);
    EXPECT_EQ(lido, "danfe\r\n");
    EXPECT_EQ(pasta.ler("ultimadanfe.bin").size(), 8U);
    EXPECT_EQ(std::filesystem::status(pasta / "ultimadanfe.bin").permissions(),
              std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
    ::unsetenv("ZEL_DIRETORIO");
}
