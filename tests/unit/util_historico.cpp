#include "PastaTemporaria.h"
#include "util/Historico.h"

#include <gtest/gtest.h>

using namespace zel;

namespace {

// 23:59:59 on 31 January 2014.
std::tm fimDeJaneiro() {
    std::tm momento{};
    momento.tm_year = 114;
    momento.tm_mday = 31;
    momento.tm_hour = 23;
    momento.tm_min = 59;
    momento.tm_sec = 59;
    return momento;
}

} // namespace

TEST(Historico, names_tell_direction_kind_and_time) {
    const struct {
        Direcao direcao;
        TipoCopia tipo;
        bool carimbado;
        std::string_view nome;
    } casos[] = {
        {Direcao::kEnvio, TipoCopia::kNFCe, true, "EnvioNFCe20140131_235959.xml"},
        {Direcao::kRetorno, TipoCopia::kCancelamento, true, "RetornoCanc20140131_235959.xml"},
        {Direcao::kEnvio, TipoCopia::kParametros, true, "EnvioParam20140131_235959.xml"},
        {Direcao::kEnvio, TipoCopia::kConsulta, true, "EnvioCons20140131_235959.xml"},
        {Direcao::kEnvio, TipoCopia::kInutilizacao, true, "EnvioInut20140131_235959.xml"},
        {Direcao::kEnvio, TipoCopia::kConsulta, false, "documentosEnvio.xml"},
        {Direcao::kRetorno, TipoCopia::kNFCe, false, "documentosRetorno.xml"},
        {Direcao::kCompleto, TipoCopia::kNFCe, false, "documentosCompleto.xml"},
    };
    for (const auto &caso : casos) {
        const PastaTemporaria pasta;
        EXPECT_EQ(fnReplicarDados(caso.direcao, caso.tipo, pasta / "", "<x/>", caso.carimbado,
                                  fimDeJaneiro()),
                  1);
        EXPECT_EQ(pasta.ler(caso.nome), "<x/>") << caso.nome;
    }
}

// A fourth copy, a copy in a directory of another name, copies behind one that failed.
TEST(Historico, copies_go_to_at_most_three_prefixes) {
    const PastaTemporaria pasta;
    const auto copiar = [](const std::string &diretorios) {
        return fnReplicarDados(Direcao::kEnvio, TipoCopia::kNFCe, diretorios, "novo", false,
                               fimDeJaneiro());
    };
    EXPECT_EQ(copiar(""), 0);
    pasta.gravar("a_documentosEnvio.xml", "um texto velho e mais comprido");
    EXPECT_EQ(copiar(pasta / "a_|" + pasta / "b_|" + pasta / "c_|" + pasta / "d_"), 1);
    for (const std::string letra : {"a", "b", "c"})
        EXPECT_EQ(pasta.ler(letra + "_documentosEnvio.xml"), "novo") << letra;
    EXPECT_FALSE(std::filesystem::exists(pasta / "d_documentosEnvio.xml"));

    EXPECT_EQ(copiar(pasta / "e_|" + pasta / "falta/|" + pasta / "f_"), 0);
    EXPECT_TRUE(std::filesystem::exists(pasta / "e_documentosEnvio.xml"));
    EXPECT_FALSE(std::filesystem::exists(pasta / "f_documentosEnvio.xml"));
}
