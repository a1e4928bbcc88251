#include "util/Acentuacao.h"
#include "util/Codigos.h"
#include "util/Latin1.h"

#include <gtest/gtest.h>
#include <span>

using namespace zel;

namespace {

struct Caso {
    std::string_view entrada;
    std::string_view esperado;
};

void conferir(std::string (*funcao)(std::string_view), std::span<const Caso> casos) {
    for (const auto &[entrada, esperado] : casos)
        EXPECT_EQ(funcao(entrada), esperado) << entrada;
}

} // namespace

// Weights that run the wrong way or past 9, and remainders 0 and 1 that would give two digits.
// The first key is the worked example of the taxpayer manual.
TEST(Codigos, check_digit_of_the_access_key) {
    const Caso casos[] = {{"5206043300991100250655012000000780026730161", "5"},
                          {"6", "0"},
                          {"1", "9"},
                          {"10000000", "2"},
                          {"1x", "8"}};
    conferir(fnCalcula_cDV, casos);
}

// Wrong border between CPF and CNPJ, lost leading zeros, digits beyond the mask.
TEST(Codigos, cpf_and_cnpj_are_punctuated) {
    const Caso casos[] = {{"12345678909", "123.456.789-09"},
                          {"191", "000.000.001-91"},
                          {"1122.2333/00018-1", "11.222.333/0001-81"},
                          {"122233300018", "00.122.233/3000-18"},
                          {"112223330001819", "11.222.333/0001-81"},
                          {"1122233300018190", "1122233300018190"},
                          {"a-b", ""}};
    conferir(fnFormatarCPFCNPJ, casos);
}

// A payment filed under the wrong form.
TEST(Codigos, payment_form_by_name_or_code) {
    const Caso casos[] = {{"dinheiro", "01"},
                          {"Cartão de Crédito"_l1, "03"},
                          {"Vale Refeição"_l1, "11"},
                          {"vale combustivel", "13"},
                          {"13", "13"},
                          {"1", "99"},
                          {"06", "99"},
                          {"", "99"}};
    conferir(fnRetornaCodigoFormaPgto, casos);
}

// A letter mapped to a wrong one, a letter that has to stay, an escape sequence read too far.
TEST(Acentuacao, letters_lose_their_accents_and_the_length_stays) {
    const Caso casos[] = {{"àáâãäª òóôõöº èéêë ìíîï ùúûü ç"_l1, "aaaaaa oooooo eeee iiii uuuu c"},
                          {"ÀÁÂÃÄ ÒÓÔÕÖ ÈÉÊË ÌÍÎÏ ÙÚÛÜ Ç"_l1, "AAAAA OOOOO EEEE IIII UUUU C"},
                          {"ÑñÝýÿåÅØøß§"_l1, "ÑñÝýÿåÅØøß§"_l1},
                          {"\x1B\x61\x31Z\xE7", "   Zc"},
                          {"x\x1By", "x  "}};
    conferir(fnRetiraAcentuacao, casos);
}

// Another state's document stripped, or the decision taken by another element than the first UF.
TEST(Acentuacao, only_documents_of_one_state_lose_their_accents) {
    const Caso casos[] = {{"<UF>MT</UF>ção<UF>RS</UF>"_l1, "<UF>MT</UF>cao<UF>RS</UF>"},
                          {"<UF>RS</UF>ção<UF>MT</UF>"_l1, "<UF>RS</UF>ção<UF>MT</UF>"_l1},
                          {"<UFST>MT</UFST>ção<UF>M"_l1, "<UFST>MT</UFST>ção<UF>M"_l1}};
    conferir(fnAdequarCaracteres, casos);
}
