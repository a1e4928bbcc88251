// SPDX-License-Identifier: MIT
// The tables of the command held against what they are about: the states' published examples and
// the library's own reading of damaged files.
#include "apoio/Arquivo.h"
#include "apoio/ComoABiblioteca.h"
#include "comum/Digitos.h"
#include "comum/Estados.h"
#include "leitura/Municipios.h"
#include "leitura/TabelaMunicipios.h"
#include "leitura/Texto.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace zel {

namespace {

using namespace aplicativo;

// Examples of the SINTEGRA pages of the states.
TEST(Tabelas, inscricoes_estaduais) {
    constexpr std::pair<std::string_view, std::string_view> kInscricoes[] = {
        {"AC", "0100482300112"}, {"AL", "240000048"}, {"AM", "999999990"},    {"CE", "060000015"},
        {"DF", "0730000100109"}, {"ES", "999999990"}, {"MA", "120000385"},    {"MT", "00130000019"},
        {"PA", "159999995"},     {"PB", "060000015"}, {"PE", "032141840"},    {"PI", "012345679"},
        {"PR", "1234567850"},    {"RJ", "99999993"},  {"RN", "200400401"},    {"RS", "2243658792"},
        {"SC", "251040852"},     {"SE", "271234563"}, {"SP", "110042490114"},
    };
    for (const auto &[uf, inscricao] : kInscricoes) {
        const Estado *estado = procurarEstado(uf);
        ASSERT_NE(estado, nullptr) << uf;
        EXPECT_TRUE(tamanhoDeIe(*estado, inscricao)) << uf;
        EXPECT_TRUE(digitosDeIe(*estado, inscricao)) << uf;
        std::string errada(inscricao);
        errada.back() = errada.back() == '9' ? '0' : static_cast<char>(errada.back() + 1);
        EXPECT_FALSE(digitosDeIe(*estado, errada)) << uf;
    }
}

struct CasoDeDigito {
    bool (*serve)(std::string_view);
    std::string_view certo, errado;
};

TEST(Tabelas, digitos_verificadores) {
    const CasoDeDigito kDigitos[] = {
        {ehCnpj, "11222333000181", "11222333000191"},
        {ehCnpj, "00000000000191", "00000000000000"},
        {ehCpf, "12345678909", "12345678919"},
        {ehCpf, "52998224725", "11111111111"},
        {ehMunicipio, "3550308", "3550307"},
        {ehMunicipio, "5300108", "530010"},
        {ehMunicipio, "4305871", "4305870"}, // by law, not by the rule
        {ehGtin, "7891000100103", "7891000100104"},
        {ehGtin, "96385074", "96385075"},
        {ehGtin, "036000291452", "03600029145"},
        {ehNcm, "22021000", "2202100"},
        {ehNcm, "97050000", "98050000"},
        {ehNcm, "01012100", "00012100"},
    };
    for (const auto &[serve, certo, errado] : kDigitos) {
        EXPECT_TRUE(serve(certo)) << certo;
        EXPECT_FALSE(serve(errado)) << errado;
        EXPECT_FALSE(serve(std::string(certo) + "x")) << certo;
    }
}

// A row of the municipalities' table that lost a digit would have a wrong check digit, one of the
// postal codes' would leave a capital out.
TEST(Tabelas, lugares) {
    std::size_t municipios = 0;
    for (const std::string_view linha : aplicativo::tabela::kMunicipios) {
        const std::string uf(linha.substr(0, 2));
        EXPECT_NE(procurarEstadoPorCodigo(uf), nullptr) << uf;
        for (const std::string_view municipio : dividir(linha.substr(2, linha.size() - 3), '|')) {
            const std::string codigo = uf + std::string(municipio.substr(0, 5));
            EXPECT_TRUE(ehMunicipio(codigo)) << municipio;
            EXPECT_EQ(nomeDoMunicipio(codigo), municipio.substr(5));
            ++municipios;
        }
    }
    EXPECT_EQ(municipios, 5570U);
    EXPECT_EQ(nomeDoMunicipio("3550308"), "São Paulo");
    EXPECT_EQ(nomeDoMunicipio("3550309"), "");
    constexpr std::pair<std::string_view, std::string_view> kCentros[] = {
        {"AC", "69900064"}, {"AL", "57020050"}, {"AP", "68900073"}, {"AM", "69005010"},
        {"BA", "40020000"}, {"CE", "60025000"}, {"DF", "70040010"}, {"ES", "29010001"},
        {"GO", "74003010"}, {"MA", "65010904"}, {"MT", "78005000"}, {"MS", "79002000"},
        {"MG", "30120010"}, {"PR", "80020000"}, {"PB", "58010000"}, {"PA", "66010000"},
        {"PE", "50010000"}, {"PI", "64000020"}, {"RJ", "20040020"}, {"RN", "59012300"},
        {"RS", "90010000"}, {"RO", "76801000"}, {"RR", "69301000"}, {"SC", "88010000"},
        {"SE", "49010000"}, {"SP", "01001000"}, {"TO", "77001002"},
    };
    for (const auto &[uf, cep] : kCentros)
        EXPECT_EQ(estadoDoCep(cep), procurarEstado(uf)) << cep;
    EXPECT_EQ(estadoDoCep("00901000"), nullptr);
}

// Over the texts that the fuzz targets gathered.
TEST(Tabelas, leitura_como_a_da_biblioteca) {
    std::size_t arquivos = 0;
    for (const auto &entrada : std::filesystem::directory_iterator(ZEL_CORPO_CONFIG)) {
        const std::string texto = lerTudo(entrada.path()).value();
        Relatorio relatorio;
        EXPECT_EQ(diferencaDaBiblioteca(aplicativo::ArquivoConfig(texto, relatorio), texto), "")
            << entrada.path();
        ++arquivos;
    }
    EXPECT_GT(arquivos, 20U);
}

} // namespace

} // namespace zel
