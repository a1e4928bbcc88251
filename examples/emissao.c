/* SPDX-License-Identifier: MIT */
#include "emissao.h"

#include "ZEL_FelborFramework.h"
#include "balcao.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

enum { TAMANHO_ARQUIVO = TAMANHO_NOME + 16 };

int numeroAtual(void) {
    return atoi(config("IDE\\nNF"));
}

void configurar(const char *chave, const char *valor) {
    passo(chave, regAlterarValor_ZEL(chave, valor));
}

void nomear(char *nome, const char *oQue, int numero) {
    compor(nome, TAMANHO_NOME, "%s-%d", oQue, numero);
}

static int emContingencia(void) {
    return strcmp(config("IDE\\tpEmis"), "9") == 0;
}

/* ---- Contingency ---- */

void anotarPendente(const char *nome, const char *arquivo) {
    char linha[TAMANHO_NOME + TAMANHO_CAMINHO];
    compor(linha, sizeof linha, "%s %s", nome, arquivo);
    anotar(PENDENTES, linha);
}

static void entrarEmContingencia(void) {
    puts("-- the connection is gone: contingency");
    configurar("IDE\\tpEmis", "9");
    configurar("IDE\\xJust", "Sem acesso \xe0 internet na loja"); /* 15 characters and more */
}

void diretoriosDeContingencia(char *texto) {
    char um[TAMANHO_CAMINHO], outro[TAMANHO_CAMINHO];
    compor(texto, ZEL_TAMANHO_DIRETORIOS, "%s|%s", noDiretorio(um, "copia/"),
           noDiretorio(outro, "contingencia/"));
}

/* Prints at once, both copies, and waits for the connection. */
static void entregarEmContingencia(const char *nome, const char *arquivo) {
    anotarPendente(nome, arquivo);
    imprimir(arquivo, "OFFLINE", 1, nome);
}

/* Nothing arrived: the document may be issued in contingency under its own number. Its key is a new
 * one, and the file that was not sent is void from here on, although documentosEnvio.xml still
 * holds it. */
static void emitirComMesmoNumero(const char *nome) {
    char texto[ZEL_TAMANHO_DIRETORIOS];
    entrarEmContingencia();
    diretoriosDeContingencia(texto);
    passo("issue it in contingency, same number", aCFContingenciaUltimaNota_ZEL(4, texto));
    /* The path of the last file written. A till that dies here finds the file in its directory. */
    entregarEmContingencia(nome, texto);
}

/* The document may have arrived, and a number must not be in two documents: the one in contingency
 * takes the next number, and what became of the first is asked for once there is a connection. */
static void substituir(int numero) {
    char linha[TAMANHO_CHAVE + 16], nome[TAMANHO_NOME], arquivo[TAMANHO_ARQUIVO];
    compor(linha, sizeof linha, "%d %.44s", numero, config("NFCE\\ChaveDeAcesso"));
    anotar(SUBSTITUIDAS, linha);
    entrarEmContingencia();
    passo("issue it in contingency, next number", aCFContingenciaUltimaNota_ZEL(3, NULL));
    nomear(nome, "substituicao", numero);
    guardar(PARAMETROS, nome);
    nomear(nome, "nota", numeroAtual());
    guardar(ENVIO, nome);
    compor(arquivo, sizeof arquivo, "envio/%s.xml", nome);
    entregarEmContingencia(nome, arquivo);
}

/* ---- Answers ---- */

/* What a till cannot settle by itself. */
static void avisar(const char *nome, int situacao) {
    char aviso[TAMANHO_NOME + 40];
    compor(aviso, sizeof aviso, "%s refused with %d", nome, situacao);
    printf("-- %s: somebody must see to it\n", aviso);
    anotar(ATENCAO, aviso);
}

/* Only an authorized document may be printed. A return that denies or refuses one may hold all that
 * the library reads, and would be laid out as well: the till looks at the situation first. */
static void decidir(const char *nome, int numero, int situacao) {
    char arquivo[TAMANHO_ARQUIVO], retorno[TAMANHO_ARQUIVO], linha[16];
    compor(arquivo, sizeof arquivo, "envio/%s.xml", nome);
    compor(retorno, sizeof retorno, "retorno/%s.xml", nome);
    if (autorizado(situacao)) {
        imprimir(arquivo, retorno, 1, nome);
    } else if (denegado(situacao)) {
        /* The number is used up, and there is nothing to cancel or to void. */
        printf("-- denied with %d: nothing to print, the goods stay\n", situacao);
    } else if (duplicado(situacao)) {
        avisar(nome, situacao);
    } else {
        /* The number was not used: a corrected document may take it, or it is voided. */
        printf("-- refused with %d: to be corrected\n", situacao);
        compor(linha, sizeof linha, "%d", numero);
        anotar(INUTILIZAR, linha);
    }
}

int concluir(const char *mensagem) {
    char nome[TAMANHO_NOME], arquivo[TAMANHO_ARQUIVO];
    int situacao;
    passo("close", tCFEncerrar_ZEL(mensagem));
    nomear(nome, "nota", numeroAtual());
    compor(arquivo, sizeof arquivo, "envio/%s.xml", nome);
    guardar(ENVIO, nome);
    if (emContingencia()) {
        entregarEmContingencia(nome, arquivo);
        return SEM_RESPOSTA;
    }
    situacao = transmitir(ENVIO, nome);
    if (naoEnviado(situacao))
        emitirComMesmoNumero(nome);
    else if (situacao == SEM_RESPOSTA)
        substituir(numeroAtual());
    else
        decidir(nome, numeroAtual(), situacao);
    return situacao;
}

/* The library stores a key with the document, and a protocol when it is printed. A receipt in
 * progress writes no document: documentosEnvio.xml is still the last one, unless a request took its
 * place, and that is written only after an answer. Once another receipt is opened the last one
 * cannot be issued again in contingency, so it waits as it is. */
void retomarUltima(void) {
    char nome[TAMANHO_NOME], arquivo[TAMANHO_ARQUIVO], id[TAMANHO_CHAVE + 8];
    int situacao;
    compor(id, sizeof id, "\"NFe%.44s\"", config("NFCE\\ChaveDeAcesso"));
    if (*config("NFCE\\ProtocoloAutorizacao") != '\0' || !contem(ENVIO, id)) return;
    nomear(nome, "nota", numeroAtual());
    guardar(ENVIO, nome);
    situacao = transmitir(ENVIO, nome);
    compor(arquivo, sizeof arquivo, "envio/%s.xml", nome);
    if (naoEnviado(situacao) || situacao == SEM_RESPOSTA)
        anotarPendente(nome, arquivo);
    else
        decidir(nome, numeroAtual(), situacao);
}

/* ---- When the connection is back ---- */

/* "NAME FILE". A document in contingency was printed when it was sold. */
static int enviarPendente(const char *linha) {
    char nome[TAMANHO_NOME];
    const char *arquivo = strchr(linha, ' ');
    int situacao;
    if (arquivo == NULL) return 1;
    compor(nome, sizeof nome, "%.*s", (int)(arquivo - linha), linha);
    situacao = transmitir(arquivo + 1, nome);
    if (situacao == SEM_RESPOSTA || naoEnviado(situacao)) return 0;
    /* The customer has the receipt, so this cannot wait. */
    if (!autorizado(situacao) && situacao != EVENTO_REGISTRADO) avisar(nome, situacao);
    return 1;
}

/* The customer has the other document. */
static int cancelarSubstituida(const char *numero, const char *chave, const char *consulta) {
    char nome[TAMANHO_NOME], protocolo[TAMANHO_PROTOCOLO];
    doRetorno(consulta, "DocProtocolo", "nProt", protocolo, sizeof protocolo);
    passo("cancel the replaced document",
          tCFCancelar_ZEL(numero, config("IDE\\Serie"), chave, protocolo,
                          "NFC-e substituida por outra em contingencia"));
    nomear(nome, "cancelamento", atoi(numero));
    guardar(ENVIO, nome);
    return transmitir(ENVIO, nome) == EVENTO_REGISTRADO;
}

/* "NUMBER KEY" of a document that was replaced while nobody knew whether it had arrived. If it is
 * authorized it must be cancelled; if it never arrived its number is skipped and to be voided. */
static int resolverSubstituida(const char *linha) {
    char nome[TAMANHO_NOME], numero[16], chave[TAMANHO_CHAVE];
    int situacao;
    if (sscanf(linha, "%15s %44s", numero, chave) != 2) return 1;
    passo("ask for the replaced document", GeraXMLConsulta_ZEL("CHAVE", NULL, NULL, NULL, chave));
    nomear(nome, "consulta", atoi(numero));
    guardar(ENVIO, nome);
    situacao = transmitir(ENVIO, nome);
    if (situacao == NAO_CONSTA) anotar(INUTILIZAR, numero);
    if (autorizado(situacao)) return cancelarSubstituida(numero, chave, nome);
    return situacao == NAO_CONSTA || situacao == CANCELADA || denegado(situacao);
}

void enviarPendentes(void) {
    if (paraCada(PENDENTES, enviarPendente) > 0) return; /* not yet */
    if (emContingencia()) configurar("IDE\\tpEmis", "1");
    paraCada(SUBSTITUIDAS, resolverSubstituida);
}
