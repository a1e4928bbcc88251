#include "util/Acentuacao.h"
#include "util/Codigos.h"
#include "util/Latin1.h"

#include <gtest/gtest.h>

using namespace zel;

namespace {

struct Caso {
    std::string_view entrada;
    std::string_view esperado;
};

} // namespace

// Weights that run the wrong way or past 9, and remainders 0 and 1 that would give two digits.
TEST(Codigos, check_digit_of_the_access_key) {
    const Caso casos[] = {
        {"5206043300991100250655012000000780026730161", "5"}, // the taxpayer manual's own example
        {"", "0"},                                            // remainder 0
        {"6", "0"},                                           // 12: remainder 1
        {"1", "9"},                                           // 2
        {"10000000", "2"},                                    // weight 9
        {"100000000", "9"},                                   // behind it weight 2 again
        {"1x", "8"},                                          // 3: a letter weighs nothing
    };
    for (const auto &[chave, digito] : casos) EXPECT_EQ(fnCalcula_cDV(chave), digito) << chave;
}

// Wrong border between CPF and CNPJ, lost leading zeros, digits beyond the mask.
TEST(Codigos, cpf_and_cnpj_are_punctuated) {
    const Caso casos[] = {
        {"12345678909", "123.456.789-09"},
        {"191", "000.000.001-91"},
        {"123.456.789-09", "123.456.789-09"},
        {"11222333000181", "11.222.333/0001-81"},
        {"1122.2333/00018-1", "11.222.333/0001-81"},
        {"122233300018", "00.122.233/3000-18"},
        {"112223330001819", "11.222.333/0001-81"},
        {"1122233300018190", "1122233300018190"},
        {"a-b", ""},
        {"", ""},
    };
    for (const auto &[documento, formatado] : casos)
        EXPECT_EQ(fnFormatarCPFCNPJ(documento), formatado) << documento;
}

// A payment filed under the wrong form.
TEST(Codigos, payment_form_by_name_or_code) {
    const Caso casos[] = {
        {"dinheiro", "01"},
        {"DINHEIRO", "01"},
        {"02", "02"},
        {"Cheque", "02"},
        {"Cartão de Crédito"_l1, "03"},
        {"Cartão de Débito"_l1, "04"},
        {"cartao de debito", "04"},
        {"Crédito Loja"_l1, "05"},
        {"vale alimentação"_l1, "10"},
        {"Vale Refeição"_l1, "11"},
        {"vale presente", "12"},
        {"VALE COMBUSTÍVEL"_l1, "13"},
        {"13", "13"},
        {"1", "99"},
        {"06", "99"},
        {"001", "99"},
        {"01 ", "99"},
        {"", "99"},
        {"dinheiro vivo", "99"},
    };
    for (const auto &[nome, codigo] : casos)
        EXPECT_EQ(fnRetornaCodigoFormaPgto(nome), codigo) << nome;
}

// A letter mapped to a wrong one, a letter that has to stay, an escape sequence read too far.
TEST(Acentuacao, letters_lose_their_accents_and_the_length_stays) {
    const Caso casos[] = {
        {"àáâãäª òóôõöº çéêíúü"_l1, "aaaaaa oooooo ceeiuu"},
        {"ÀÁÂÃÄ Ç ÈÉÊË ÌÍÎÏ ÒÓÔÕÖ ÙÚÛÜ"_l1, "AAAAA C EEEE IIII OOOOO UUUU"},
        {"èéêë ìíîï ùúûü"_l1, "eeee iiii uuuu"},
        {"ÑñÝýÿåÅØøß§"_l1, "ÑñÝýÿåÅØøß§"_l1},
        {"\x1B"
         "a1Z",
         "   Z"},
        {"a\x1B\x1B\x1B\xE7", "a   c"},
        {"x\x1By", "x  "},
    };
    for (const auto &[texto, plano] : casos) EXPECT_EQ(fnRetiraAcentuacao(texto), plano) << texto;
}

// Another state's document stripped, or the decision taken by another element than the first UF.
TEST(Acentuacao, only_documents_of_one_state_lose_their_accents) {
    const Caso casos[] = {
        {"<UF>MT</UF><x>ção</x><UF>RS</UF>"_l1, "<UF>MT</UF><x>cao</x><UF>RS</UF>"},
        {"<UF>RS</UF><x>ção</x><UF>MT</UF>"_l1, "<UF>RS</UF><x>ção</x><UF>MT</UF>"_l1},
        {"<UFST>MT</UFST><x>ção</x>"_l1, "<UFST>MT</UFST><x>ção</x>"_l1},
        {"ção<UF>M"_l1, "ção<UF>M"_l1},
    };
    for (const auto &[xml, esperado] : casos) EXPECT_EQ(fnAdequarCaracteres(xml), esperado) << xml;
}
