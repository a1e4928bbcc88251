/* SPDX-License-Identifier: MIT */
/* One sale from opening to close, as an application's till program would drive it. Texts are
 * ISO-8859-1: an accent is one byte ("\xe3" is a tilde). Ends with 1 at the first refusal. */
#include "ZEL_FelborFramework.h"

#include <stdio.h>
#include <stdlib.h>

static void passo(const char *nome, int codigo) {
    printf("%-46s %d\n", nome, codigo);
    if (codigo < 0) exit(EXIT_FAILURE);
}

/* The issuer as the shop would write it once into ZEL_Framework.xml. */
static void configurarEmitente(void) {
    static const char *const valores[][2] = {
        {"EMIT\\CNPJ", "11222333000181"},
        {"EMIT\\xNome", "Padaria da Esquina Ltda"},
        {"EMIT\\ENDEREMIT\\xLgr", "Rua Direita"},
        {"EMIT\\ENDEREMIT\\Nro", "10"},
        {"EMIT\\ENDEREMIT\\xBairro", "Centro"},
        {"EMIT\\ENDEREMIT\\cMun", "3550308"},
        {"EMIT\\ENDEREMIT\\xMun", "S\xe3o Paulo"},
        {"EMIT\\ENDEREMIT\\UF", "SP"},
        {"EMIT\\ENDEREMIT\\CEP", "01001000"},
        {"EMIT\\IE", "111111111111"},
        {"EMIT\\CRT", "3"},
        {"IDE\\cUF", "35"},
        {"IDE\\cMunFG", "3550308"},
    };
    size_t i;
    for (i = 0; i < sizeof valores / sizeof valores[0]; ++i)
        passo(valores[i][0], regAlterarValor_ZEL(valores[i][0], valores[i][1]));
}

static void venderItens(void) {
    passo("sell 6 rolls at 0,75",
          aCFVender_ZEL("T1800", "6", "0,75", "", "", "101", "UN", "P\xe3o franc\xeas"));
    passo("sell 2 bottles at 8,50, discount of 10 %",
          aCFVenderCompleto_ZEL("T1800", "2", "8,50", "D%", "10", "202", "22021000", "5102", "UN",
                                "Refrigerante 2 L", ""));
    passo("preset: next item exempt of ICMS", aCFConfICMS40_ZEL("0", "40", "0,00", "9"));
    passo("sell 0,350 kg at 39,90, surcharge of 0,50",
          aCFVenderCompleto_ZEL("I", "0,350", "39,90", "A$", "0,50", "303", "04061010", "5102",
                                "KG", "Queijo minas & goiabada", ""));
    passo("discount of 0,25 on item 1", aCFLancarDescontoItem_ZEL(1, "D$", "0,25"));
}

static void pagar(void) {
    char texto[ZEL_TAMANHO_VALOR];
    passo("pay 10,00 by debit card", aCFEfetuarPagamento_ZEL("Cartao de Debito", "10,00"));
    passo("ask what is still due", rInfoEstendida_ZEL("2", texto));
    printf("    still due: %s\n", texto);
    passo("pay 50,00 in cash", aCFEfetuarPagamento_ZEL("Dinheiro", "50,00"));
    passo("ask for the change", regRetornarValor_ZEL("CONFIGURACAO\\TrocoUltimaNFCe", texto));
    printf("    change: %s\n", texto);
}

int main(void) {
    char texto[ZEL_TAMANHO_VALOR];
    passo("initialise", aCFInicializar_ZEL());
    configurarEmitente();

    passo("open, with a consumer",
          aCFAbrir_ZEL("123.456.789-09", "Maria de F\xe1tima", "Rua das Flores", "25", "Jardim",
                       "3550308", "S\xe3o Paulo", "SP", "01310100"));
    venderItens();
    passo("totalize, discount of 1,00 on the total", aCFTotalizar_ZEL("D$", "1,00"));
    passo("ask for the total", rInfoEstendida_ZEL("1", texto));
    printf("    total: %s\n", texto);
    pagar();
    passo("close", tCFEncerrar_ZEL("Obrigado pela prefer\xeancia"));

    passo("ask for the access key", regRetornarValor_ZEL("NFCE\\ChaveDeAcesso", texto));
    printf("    key: %s\n    state: %d\n", texto, rCFVerificarStatus_ZEL());
    return EXIT_SUCCESS;
}
