// SPDX-License-Identifier: MIT
// What a refusal keeps for the log, and that it keeps nothing, in no memory, while there is none.
#include "config/Catalogo.h"
#include "disco/Diretorio.h"
#include "recusa/Recusa.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <new>

namespace {
std::size_t alocacoes = 0;
}

[[gnu::noinline]] void *operator new(std::size_t tamanho) {
    ++alocacoes;
    if (void *memoria = std::malloc(tamanho)) return memoria;
    throw std::bad_alloc();
}
[[gnu::noinline]] void *operator new(std::size_t tamanho, const std::nothrow_t &) noexcept {
    ++alocacoes;
    return std::malloc(tamanho);
}
[[gnu::noinline]] void operator delete(void *memoria) noexcept {
    std::free(memoria);
}
[[gnu::noinline]] void operator delete(void *memoria, std::size_t) noexcept {
    std::free(memoria);
}

namespace zel {
namespace {

class Recusas : public testing::Test {
protected:
    ~Recusas() override { esquecerRecusa(false); }
};

TEST_F(Recusas, desligada_nao_usa_memoria_nem_guarda) {
    const std::string dado(100, 'x');
    esquecerRecusa(false);
    const std::size_t antes = alocacoes;
    for (const LinhaMotivo &linha : kMotivos)
        ASSERT_EQ(recusar(linha.motivo, {.campo = "campo", .dado = dado, .lugar = dado}),
                  linha.codigo);
    errno = EACCES;
    EXPECT_EQ(arquivoIndisponivel(dado), ZEL_ARQUIVO_INDISPONIVEL);
    EXPECT_EQ(alocacoes, antes);
    EXPECT_EQ(textoDaRecusa(ZEL_ARQUIVO_INDISPONIVEL, fnConfigurarPath), std::nullopt);
}

// A reason of another code is not this one's: the border would tell a wrong story.
TEST_F(Recusas, vale_para_o_seu_codigo_e_a_sua_chamada) {
    esquecerRecusa(true);
    recusar(Motivo::kJaPago);
    recusar(Motivo::kIndice, {.dado = "8"});
    EXPECT_EQ(textoDaRecusa(ZEL_JA_PAGO, fnConfigurarPath), std::nullopt) << "the last one stands";
    EXPECT_EQ(textoDaRecusa(ZEL_ARGUMENTO_INVALIDO, fnConfigurarPath),
              "indice: \"8\"; permitido: 1 a 7");
    esquecerRecusa(true);
    EXPECT_EQ(textoDaRecusa(ZEL_ARGUMENTO_INVALIDO, fnConfigurarPath), std::nullopt);
}

TEST_F(Recusas, erros_com_as_nossas_palavras) {
    EXPECT_EQ(textoDoErro(ENOSPC), "o disco está cheio (ENOSPC)");
    EXPECT_EQ(textoDoErro(kNaoEhArquivo), "não é um arquivo comum");
    EXPECT_EQ(textoDoErro(9999), "erro 9999 do sistema");
}

// The path in a reason is the one that regAlterarValor_ZEL takes.
TEST_F(Recusas, caminho_de_cada_chave_leva_a_ela) {
    int quantas = 0;
    for (std::uint16_t i = 0; i < kTotalEntradas; ++i) {
        if (stZELTAGs[i].tipo != TipoEntrada::kChave) continue;
        const auto caminho = caminhoDa(Chave{i});
        const auto achada = procurarChave(caminho);
        ASSERT_TRUE(achada) << caminho.texto();
        EXPECT_EQ(caminhoDa(*achada).texto(), caminho.texto());
        quantas += *achada == Chave{i} ? 1 : 0;
    }
    EXPECT_GT(quantas, 300);
}

} // namespace
} // namespace zel
