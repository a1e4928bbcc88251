// SPDX-License-Identifier: MIT
// The files that leave the library scrambled, and the history copies.
#include "ZEL_FelborFramework.h"
#include "apoio/Ambiente.h"
#include "apoio/DiretorioDeDados.h"
#include "apoio/Filho.h"
#include "diario/RegistroDiario.h"
#include "disco/ArquivoCripto.h"
#include "emissao/Historico.h"
#include "texto/Cripto.h"

#include <ctime>
#include <fcntl.h>
#include <gtest/gtest.h>

using namespace zel;

// What a host without them prints would go into the file, or onto the printer.
TEST(Descritor, nunca_tem_o_numero_de_uma_saida_fechada) {
    EXPECT_EQ(emFilho([] {
                  for (const int padrao : {0, 1, 2})
                      ::close(padrao);
                  const comum::Descritor arquivo("/dev/zero", O_RDONLY);
                  return arquivo.fd() > 2 ? 0 : 1;
              }),
              0);
}

TEST(Cripto, bytes_andam_pela_chave_e_pela_constante_e_dao_a_volta) {
    EXPECT_EQ(embaralhar(std::string("A\0", 2), kChaveFixa), "\x07\xBF");
    EXPECT_EQ(embaralhar(std::string(13, '\0'), kChaveFixa).back(), '\xC6');
    EXPECT_EQ(embaralhar("AB", ""), "\x95\x96");
    EXPECT_EQ(embaralhar("\xFF\x01", "\xFF"), "\x52\x54");
}

TEST(Cripto, fluxo_para_no_primeiro_ff_e_buffer_antes_do_ultimo_byte) {
    const std::string oculto = embaralhar("antes\xFF...", kChaveFixa);
    EXPECT_EQ(desembaralhar(oculto, kChaveFixa), "antes");
    EXPECT_EQ(fnDescriptBufferContingencia(oculto), "antes\xFF..");
    EXPECT_EQ(fnDescriptBufferContingencia(oculto.substr(0, 1)), "a");
    EXPECT_EQ(fnDescriptBufferContingencia(""), "");
}

TEST(Cripto, chave_e_cortada_no_limite) {
    const PastaTemporaria pasta;
    const std::string texto(2 * kMaximaChave, 't'), chave(kMaximaChave, 'k');
    pasta.gravar("a", texto);
    ASSERT_EQ(fnCriptografarArquivo(pasta / "a", pasta / "b", chave + "z"), ZEL_OK);
    EXPECT_EQ(pasta.ler("b"), embaralhar(texto, chave));
}

TEST(Cripto, ultimo_cupom_e_so_do_dono_e_volta_sem_terminador) {
    const PastaTemporaria pasta;
    serDiretorioDeDados(pasta);
    std::string lido = "intacto";
    EXPECT_EQ(fnLerArquivoCriptUltimaDanfe(lido), ZEL_ARQUIVO_INDISPONIVEL);
    EXPECT_EQ(lido, "intacto");
    EXPECT_EQ(fnCriarArquivoCriptUltimaDanfe("danfe\r\n"), ZEL_OK);
    EXPECT_EQ(fnLerArquivoCriptUltimaDanfe(lido), ZEL_OK);
    ::unsetenv("ZEL_DIRETORIO");
    EXPECT_EQ(lido, "danfe\r\n");
    EXPECT_EQ(pasta.ler("ultimadanfe.bin").size(), 8U);
    EXPECT_EQ(std::filesystem::status(pasta / "ultimadanfe.bin").permissions(),
              std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
}

// Names, a fourth copy, a directory put between prefix and name, copies after one that failed.
TEST(Historico, copias_em_ate_tres_prefixos_com_os_seus_nomes) {
    const PastaTemporaria pasta;
    std::tm momento{};
    ::strptime("2014-01-31 23:59:09", "%Y-%m-%d %H:%M:%S", &momento);
    const auto copiar = [&](Direcao direcao, bool carimbado, const std::string &diretorios) {
        return fnReplicarDados(direcao, TipoCopia::kInutilizacao, diretorios, "novo", carimbado,
                               momento);
    };
    pasta.gravar("a_documentosEnvio.xml", "um texto velho e mais comprido");
    const std::string quatro = pasta / "a_|" + pasta / "b_|" + pasta / "c_|" + pasta / "d_";
    EXPECT_EQ(copiar(Direcao::kEnvio, false, quatro), 1);
    EXPECT_EQ(copiar(Direcao::kEnvio, false, pasta / "e_|" + pasta / "falta/|" + pasta / "f_"), 0);
    EXPECT_EQ(copiar(Direcao::kRetorno, true, pasta / ""), 1);
    pasta.gravar("RetornoInut20140131_235909_2.xml.novo", "de outro caixa neste instante");
    EXPECT_EQ(copiar(Direcao::kRetorno, true, pasta / ""), 1);
    EXPECT_EQ(copiar(Direcao::kCompleto, false, pasta / ""), 1);
    EXPECT_EQ(copiar(Direcao::kEnvio, false, ""), 0);
    for (const std::string nome :
         {"a_documentosEnvio.xml", "b_documentosEnvio.xml", "c_documentosEnvio.xml",
          "e_documentosEnvio.xml", "RetornoInut20140131_235909.xml",
          "RetornoInut20140131_235909_3.xml", "documentosCompleto.xml"})
        EXPECT_EQ(pasta.ler(nome), "novo") << nome;
    for (const std::string nome : {"d_documentosEnvio.xml", "f_documentosEnvio.xml"})
        EXPECT_EQ(pasta.ler(nome), "") << nome;
}

// Two zones a day apart: their names can only be the same when the zone set last does not count.
TEST(Historico, carimbo_segue_o_fuso_do_momento) {
    const PastaTemporaria pasta;
    for (const char *const fuso : {"AAA12", "BBB-12"}) {
        const Ambiente zona("TZ", fuso);
        EXPECT_EQ(fnReplicarDados(Direcao::kEnvio, TipoCopia::kNFCe, pasta / "", "", true), 1);
    }
    EXPECT_EQ(pasta.quantosEm(), 2);
}

// A checksum is no proof of who wrote a journal.
TEST(RegistroDiario, so_nomes_do_diretorio) {
    const auto aceito = [](std::string_view nome) {
        RegistroDiario registro;
        registro.mudancas.push_back({.nome = nome, .bytes = "x"});
        std::size_t tamanho = 0;
        return lerRegistroDiario(escreverRegistroDiario(registro), tamanho).has_value();
    };
    for (const std::string_view nome : {"ArqPersist.bin", "..a"})
        EXPECT_TRUE(aceito(nome)) << nome;
    for (const std::string_view nome : {"", ".", "..", "../a", "/etc/a", "a/b"})
        EXPECT_FALSE(aceito(nome)) << nome;
    EXPECT_FALSE(aceito(std::string_view("a\0b", 3)));
}
