/* SPDX-License-Identifier: MIT */
/* A shop's day at the till, from what yesterday left to the last cancellation:
 *
 *   dia_de_loja SENDER          the day
 *   dia_de_loja SENDER vespera  the evening before: configures the shop and breaks off in a sale
 *
 * SENDER is the command of the sending component, called with a document and the file for its
 * return (enviador.py is one). The data directory is that of ZEL_DIRETORIO, or the current one. The
 * sales stand here; what the till does with the authority's answers stands in emissao.c, and what
 * any program needs around the library in balcao.c.
 *
 * Texts are ISO-8859-1: an accent is one byte ("\xe3" is a tilde). Of a real shop in homologation
 * the authority asks one thing more: the first item's description must be "NOTA FISCAL EMITIDA EM
 * AMBIENTE DE HOMOLOGACAO - SEM VALOR FISCAL", else it refuses with 373. */
#include "ZEL_FelborFramework.h"
#include "balcao.h"
#include "emissao.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

/* ---- The evening before ---- */

/* Once, when the till is set up. */
static void configurarLoja(void) {
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
        {"IDE\\Serie", "1"},
        {"IDE\\nNF", "100"}, /* the last number used: the first document is 101 */
        {"CONFIGURACAO\\TipoAmbiente", "2"},
        {"CONFIGURACAO\\TokenSefaz", "TOKEN-DE-EXEMPLO"},
        {"CONFIGURACAO\\HistoricoXML", "1"},
        /* For services: city of the tax, number of the service in the law, kind of taxation. */
        {"IMPOSTO\\ISSQN\\cMunFG", "3550308"},
        {"IMPOSTO\\ISSQN\\cListServ", "1401"},
        {"IMPOSTO\\ISSQN\\cSitTrib", "N"},
    };
    char caminho[TAMANHO_CAMINHO];
    size_t i;
    for (i = 0; i < sizeof valores / sizeof valores[0]; ++i)
        configurar(valores[i][0], valores[i][1]);
    configurar("CONFIGURACAO\\PathXMLEnvio", noDiretorio(caminho, "historico/"));
}

static void abrir(const char *cpf, const char *nome) {
    passo("open", aCFAbrir_ZEL(cpf, nome, "", "", "", "", "", "", ""));
}

static void pagar(const char *forma, const char *valor) {
    passo(forma, aCFEfetuarPagamento_ZEL(forma, valor));
}

static void venderPaes(const char *quantidade) {
    passo("sell rolls", aCFVenderCompleto_ZEL("T1800", quantidade, "0,75", "", "", "101",
                                              "19052090", "5102", "UN", "P\xe3o franc\xeas", ""));
}

/* No answer comes for the first document, and while the till waits the next customer is served;
 * then the power fails. */
static void vespera(void) {
    char nome[TAMANHO_NOME];
    puts("== The evening before");
    configurarLoja();
    abrir("", "");
    venderPaes("4");
    passo("totalize", aCFTotalizar_ZEL("", ""));
    pagar("Dinheiro", "3,00");
    passo("close", tCFEncerrar_ZEL(""));
    nomear(nome, "nota", numeroAtual());
    guardar(ENVIO, nome);
    transmitir(ENVIO, nome);
    abrir("", "");
    venderPaes("1");
    puts("-- the power fails");
    fflush(stdout);
    _Exit(EXIT_SUCCESS);
}

/* ---- The day ---- */

/* The state on disk says what to go on with. */
static void amanhecer(void) {
    const int estado = rCFVerificarStatus_ZEL();
    puts("== Opening the shop");
    printf("receipt state: %d\n", estado);
    if (estado >= 1 && estado <= 4)
        /* The customer is gone; a till that was only restarted would go on selling. */
        passo("cancel the receipt in progress", tCFCancelar_ZEL("", "", "", "", ""));
    retomarUltima();
    enviarPendentes();
}

static void mercadoriasComCpf(void) {
    puts("\n== Goods, with the consumer's CPF");
    abrir("123.456.789-09", "Maria de F\xe1tima");
    venderPaes("6");
    passo("sell cheese", aCFVenderCompleto_ZEL("T1800", "0,350", "39,90", "", "", "303", "04061010",
                                               "5102", "KG", "Queijo minas", ""));
    passo("totalize", aCFTotalizar_ZEL("", ""));
    pagar("Dinheiro", ""); /* an empty value: what is due */
    concluir("Obrigado pela prefer\xeancia");
}

/* The totals take the form of the last item's tax: goods after the service, and the document can
 * be printed. The group of the service is not that of layout 3.10: against the published schema the
 * document is refused, and its number voided at the end of the day. */
static void servicoComDescontos(void) {
    char troco[ZEL_TAMANHO_VALOR];
    puts("\n== A service, discounts, two payments and change");
    abrir("", "");
    passo("sell a service",
          aCFVender_ZEL("S0500", "1", "20,00", "", "", "900", "UN", "Embalagem para presente"));
    passo("sell a cake, discount of 10 %",
          aCFVenderCompleto_ZEL("T1800", "1", "60,00", "D%", "10", "404", "19059090", "5102", "UN",
                                "Bolo de anivers\xe1rio", ""));
    passo("discount on the service", aCFLancarDescontoItem_ZEL(1, "D$", "2,00"));
    passo("totalize, discount on the total", aCFTotalizar_ZEL("D$", "2,00"));
    pagar("Cartao de Debito", "40,00");
    pagar("Dinheiro", "50,00");
    passo("ask for the change", regRetornarValor_ZEL("CONFIGURACAO\\TrocoUltimaNFCe", troco));
    printf("-- change: %s\n", troco);
    concluir("");
}

/* The number under the bar code travels in cEAN and cEANTrib, which only tag text can give. */
static void itemDoLeitor(void) {
    puts("\n== An item from the bar code scanner");
    abrir("", "");
    passo("sell by tag text",
          aCFVenderXml_ZEL(
              "<prod><cProd>7891234567895</cProd><cEAN>7891234567895</cEAN>"
              "<xProd>Refrigerante 2 L</xProd><NCM>22021000</NCM><CFOP>5102</CFOP>"
              "<uCom>UN</uCom><qCom>2.0000</qCom><vUnCom>8.50</vUnCom><vProd>17.00</vProd>"
              "<cEANTrib>7891234567895</cEANTrib><uTrib>UN</uTrib><qTrib>2.0000</qTrib>"
              "<vUnTrib>8.50</vUnTrib><indTot>1</indTot></prod>"
              "<imposto><ICMS><ICMS00><orig>0</orig><CST>00</CST><modBC>3</modBC>"
              "<vBC>17.00</vBC><pICMS>18.00</pICMS><vICMS>3.06</vICMS></ICMS00></ICMS></imposto>"));
    passo("totalize", aCFTotalizar_ZEL("", ""));
    pagar("Cartao de Credito", "");
    concluir("");
}

/* The authority knows more of a consumer than the till. The return of a denied document has all
 * that a receipt needs: only its situation says that there must be none. */
static void consumidorDenegado(void) {
    puts("\n== A document that the authority denies");
    abrir("11.444.777/0001-61", "Comercio Irregular Ltda");
    venderPaes("20");
    passo("totalize", aCFTotalizar_ZEL("", ""));
    pagar("Dinheiro", "");
    concluir("");
}

static int venderCafe(const char *ncm) {
    abrir("", "");
    passo("sell coffee", aCFVenderCompleto_ZEL("T1800", "1", "18,90", "", "", "505", ncm, "5102",
                                               "UN", "Caf\xe9 torrado 500 g", ""));
    passo("totalize", aCFTotalizar_ZEL("", ""));
    pagar("Dinheiro", "20,00");
    return concluir("");
}

/* A closed document cannot be changed: it is sold again, corrected, under the next number. */
static void recusadoECorrigido(void) {
    puts("\n== A document that the authority refuses, corrected and issued again");
    if (!autorizado(venderCafe("99999999"))) venderCafe("09012100"); /* another NCM */
}

static void vendaSimples(const char *quantidade) {
    abrir("", "");
    venderPaes(quantidade);
    passo("totalize", aCFTotalizar_ZEL("", ""));
    pagar("Dinheiro", "");
    concluir("");
}

/* The customer gives the goods back while there is no connection. */
static void cancelarSemConexao(void) {
    char texto[ZEL_TAMANHO_DIRETORIOS], nome[TAMANHO_NOME];
    puts("\n== Cancelled in contingency");
    vendaSimples("3");
    diretoriosDeContingencia(texto);
    passo("cancel offline", tCFCancelarOffline_ZEL("", "", "", "", texto));
    nomear(nome, "cancelamento", numeroAtual());
    anotarPendente(nome, texto); /* after its document: the event needs it at the authority */
    imprimir(texto, "OFFLINE", 5, nome);
}

/* Within the time that the state allows. The protocol is known since the receipt was printed. */
static void cancelarUltima(void) {
    char nome[TAMANHO_NOME], retorno[TAMANHO_NOME + 16], pedido[TAMANHO_NOME + 16];
    puts("\n== The last sale, and its cancellation");
    vendaSimples("10");
    passo("cancel the last document", tCFCancelar_ZEL("", "", "", "", ""));
    nomear(nome, "cancelamento", numeroAtual());
    guardar(ENVIO, nome);
    if (transmitir(ENVIO, nome) != EVENTO_REGISTRADO)
        return; /* nothing is cancelled before this answer */
    compor(pedido, sizeof pedido, "envio/%s.xml", nome);
    compor(retorno, sizeof retorno, "retorno/%s.xml", nome);
    imprimir(pedido, retorno, 5, nome);
}

/* ---- Closing the shop ---- */

static int inutilizar(const char *numero) {
    char nome[TAMANHO_NOME];
    int situacao;
    passo("void a skipped number", tCFInutilizar_ZEL(numero, numero, config("IDE\\Serie"),
                                                     "Numero pulado por documento recusado"));
    nomear(nome, "inutilizacao", atoi(numero));
    guardar(ENVIO, nome);
    situacao = transmitir(ENVIO, nome);
    return situacao == INUTILIZADO || situacao == JA_INUTILIZADO;
}

/* Asks for all numbers of the day. Each must have become something; returns how many have not. */
static int conferirNumeros(int primeiro) {
    char inicial[16], final[16], serie[ZEL_TAMANHO_VALOR];
    const int ultimo = numeroAtual();
    int numero, faltam = 0;
    compor(serie, sizeof serie, "%s", config("IDE\\Serie"));
    compor(inicial, sizeof inicial, "%d", primeiro);
    compor(final, sizeof final, "%d", ultimo);
    passo("ask for the numbers of the day",
          GeraXMLConsulta_ZEL("NUM", inicial, final, serie, NULL));
    guardar(ENVIO, "consulta-do-dia");
    guardar(PARAMETROS, "parametros-do-dia");
    transmitir(ENVIO, "consulta-do-dia");
    for (numero = primeiro; numero <= ultimo; ++numero) {
        const int situacao = situacaoDe("consulta-do-dia", numero);
        printf("%9d %d\n", numero, situacao);
        if (situacao == 0) ++faltam;
    }
    return faltam;
}

static int contar(const char *linha) {
    printf("-- still to be done: %s\n", linha);
    return 0;
}

static int fechamento(int primeiro) {
    int faltam;
    puts("\n== Closing the shop");
    enviarPendentes();
    paraCada(INUTILIZAR, inutilizar);
    faltam = conferirNumeros(primeiro);
    faltam += paraCada(PENDENTES, contar) + paraCada(SUBSTITUIDAS, contar) +
              paraCada(INUTILIZAR, contar) + paraCada(ATENCAO, contar);
    printf("receipt state: %d, still to be done: %d\n", rCFVerificarStatus_ZEL(), faltam);
    return faltam;
}

int main(int argc, char **argv) {
    int primeiro;
    if (argc < 2 || argc > 3 || (argc == 3 && strcmp(argv[2], "vespera") != 0)) {
        fprintf(stderr, "usage: dia_de_loja SENDER [vespera]\n");
        return 2;
    }
    prepararBalcao(argv[1]);
    passo("initialise", aCFInicializar_ZEL());
    if (argc == 3) vespera();

    primeiro = numeroAtual();
    amanhecer();
    mercadoriasComCpf();
    servicoComDescontos();
    itemDoLeitor();
    consumidorDenegado();
    recusadoECorrigido();

    puts("\n== The connection is lost");
    vendaSimples("8");
    puts("\n== Sold in contingency");
    vendaSimples("2");
    cancelarSemConexao();
    puts("\n== The connection is back");
    enviarPendentes();

    puts("\n== A document whose answer never came");
    vendaSimples("5");
    puts("\n== The connection is back");
    enviarPendentes();

    cancelarUltima();
    return fechamento(primeiro) == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
