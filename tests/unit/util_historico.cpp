#include "PastaTemporaria.h"
#include "util/Historico.h"

#include <gtest/gtest.h>
#include <tuple>

using namespace zel;

namespace {

int copiar(Direcao direcao, TipoCopia tipo, const std::string &diretorios, bool carimbado) {
    std::tm momento{}; // 23:59:59 on 31 January 2014
    momento.tm_year = 114;
    momento.tm_mday = 31;
    momento.tm_hour = 23;
    momento.tm_min = 59;
    momento.tm_sec = 59;
    return fnReplicarDados(direcao, tipo, diretorios, "novo", carimbado, momento);
}

} // namespace

TEST(Historico, names_tell_direction_kind_and_time) {
    const std::tuple<Direcao, TipoCopia, bool, std::string_view> casos[] = {
        {Direcao::kEnvio, TipoCopia::kNFCe, true, "EnvioNFCe20140131_235959.xml"},
        {Direcao::kRetorno, TipoCopia::kInutilizacao, true, "RetornoInut20140131_235959.xml"},
        {Direcao::kEnvio, TipoCopia::kConsulta, false, "documentosEnvio.xml"},
        {Direcao::kCompleto, TipoCopia::kNFCe, false, "documentosCompleto.xml"}};
    for (const auto &[direcao, tipo, carimbado, nome] : casos) {
        const PastaTemporaria pasta;
        EXPECT_EQ(copiar(direcao, tipo, pasta / "", carimbado), 1);
        EXPECT_EQ(pasta.ler(nome), "novo") << nome;
    }
}

// A fourth copy, a directory put between prefix and name, copies behind one that failed.
TEST(Historico, copies_go_to_at_most_three_prefixes) {
    const PastaTemporaria pasta;
    const auto plano = [](const std::string &diretorios) {
        return copiar(Direcao::kEnvio, TipoCopia::kNFCe, diretorios, false);
    };
    EXPECT_EQ(plano(""), 0);
    pasta.gravar("a_documentosEnvio.xml", "um texto velho e mais comprido");
    EXPECT_EQ(plano(pasta / "a_|" + pasta / "b_|" + pasta / "c_|" + pasta / "d_"), 1);
    EXPECT_EQ(plano(pasta / "e_|" + pasta / "falta/|" + pasta / "f_"), 0);
    for (const std::string letra : {"a", "b", "c", "e"})
        EXPECT_EQ(pasta.ler(letra + "_documentosEnvio.xml"), "novo") << letra;
    for (const std::string letra : {"d", "f"})
        EXPECT_EQ(pasta.ler(letra + "_documentosEnvio.xml"), "") << letra;
}
