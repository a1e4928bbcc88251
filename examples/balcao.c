/* SPDX-License-Identifier: MIT */
#define _POSIX_C_SOURCE 200809L
#include "balcao.h"

#include "ZEL_FelborFramework.h"

#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

enum { COLUNAS = 48, TAMANHO_COMANDO = 2000 };

static const char *comandoDoEnviador;

static void terminar(const char *motivo, const char *qual) {
    fprintf(stderr, "%s: %s\n", motivo, qual);
    exit(EXIT_FAILURE);
}

void compor(char *destino, size_t tamanho, const char *formato, ...) {
    va_list valores;
    int bytes;
    va_start(valores, formato);
    bytes = vsnprintf(destino, tamanho, formato, valores);
    va_end(valores);
    if (bytes < 0 || (size_t)bytes >= tamanho) terminar("text too long", destino);
}

char *noDiretorio(char *caminho, const char *nome) {
    const char *diretorio = getenv("ZEL_DIRETORIO");
    if (diretorio == NULL) diretorio = ".";
    if (nome[0] == '/')
        compor(caminho, TAMANHO_CAMINHO, "%s", nome);
    else
        compor(caminho, TAMANHO_CAMINHO, "%s/%s", diretorio, nome);
    return caminho;
}

void prepararBalcao(const char *enviador) {
    static const char *const diretorios[] = {"envio",        "retorno", "cupons",
                                             "contingencia", "copia",   "historico"};
    char caminho[TAMANHO_CAMINHO];
    size_t i;
    for (i = 0; i < sizeof diretorios / sizeof diretorios[0]; ++i)
        mkdir(noDiretorio(caminho, diretorios[i]), 0777); /* may be there already */
    comandoDoEnviador = enviador;
}

void passo(const char *nome, int codigo) {
    printf("%-50s %d\n", nome, codigo);
    fflush(stdout); /* the sender writes to the same place */
    if (codigo < 0) exit(EXIT_FAILURE);
}

const char *config(const char *chave) {
    static char valor[ZEL_TAMANHO_VALOR];
    if (regRetornarValor_ZEL(chave, valor) != ZEL_OK) terminar("no such key", chave);
    return valor;
}

/* The whole file, with a zero after it; NULL when there is none. The caller frees it. */
static char *lerTudo(const char *nome, size_t *tamanho) {
    char caminho[TAMANHO_CAMINHO];
    FILE *arquivo = fopen(noDiretorio(caminho, nome), "rb");
    char *conteudo = NULL;
    long bytes = -1;
    if (arquivo == NULL) return NULL;
    if (fseek(arquivo, 0, SEEK_END) == 0) bytes = ftell(arquivo);
    if (bytes >= 0 && fseek(arquivo, 0, SEEK_SET) == 0) conteudo = malloc((size_t)bytes + 1);
    if (conteudo != NULL) {
        *tamanho = fread(conteudo, 1, (size_t)bytes, arquivo);
        conteudo[*tamanho] = '\0';
    }
    fclose(arquivo);
    return conteudo;
}

/* Beside the file first, and then in its place: whoever looks finds the old one or the new one. */
static void gravarTudo(const char *nome, const char *conteudo, size_t tamanho) {
    char caminho[TAMANHO_CAMINHO], novo[TAMANHO_CAMINHO + 5];
    FILE *arquivo;
    compor(novo, sizeof novo, "%s.novo", noDiretorio(caminho, nome));
    arquivo = fopen(novo, "wb");
    if (arquivo == NULL) terminar("cannot write", novo);
    if (fwrite(conteudo, 1, tamanho, arquivo) != tamanho || fflush(arquivo) != 0 ||
        fsync(fileno(arquivo)) != 0)
        terminar("cannot write", novo);
    if (fclose(arquivo) != 0 || rename(novo, caminho) != 0) terminar("cannot write", caminho);
}

void guardar(const char *origem, const char *nome) {
    char copia[TAMANHO_NOME + 16];
    size_t tamanho = 0;
    char *conteudo = lerTudo(origem, &tamanho);
    if (conteudo == NULL) terminar("cannot read", origem);
    compor(copia, sizeof copia, "envio/%s.xml", nome);
    gravarTudo(copia, conteudo, tamanho);
    free(conteudo);
}

/* Cut at `tamanho`; empty when the element is not there. */
static int valorDe(const char *texto, const char *elemento, char *valor, size_t tamanho) {
    char marca[TAMANHO_NOME];
    const char *inicio;
    size_t bytes;
    valor[0] = '\0';
    compor(marca, sizeof marca, "<%s>", elemento);
    inicio = strstr(texto, marca);
    if (inicio == NULL) return 0;
    inicio += strlen(marca);
    bytes = strcspn(inicio, "<");
    if (bytes >= tamanho) bytes = tamanho - 1;
    memcpy(valor, inicio, bytes);
    valor[bytes] = '\0';
    return 1;
}

char *doRetorno(const char *nome, const char *componente, const char *autoridade, char *valor,
                size_t tamanho) {
    char arquivo[TAMANHO_NOME + 16];
    size_t bytes = 0;
    char *conteudo;
    compor(arquivo, sizeof arquivo, "retorno/%s.xml", nome);
    conteudo = lerTudo(arquivo, &bytes);
    valor[0] = '\0';
    if (conteudo != NULL && !valorDe(conteudo, componente, valor, tamanho))
        valorDe(conteudo, autoridade, valor, tamanho);
    free(conteudo);
    return valor;
}

int situacaoDe(const char *nome, int numero) {
    char arquivo[TAMANHO_NOME + 16], marca[TAMANHO_NOME];
    size_t bytes = 0;
    char *conteudo;
    const char *achado;
    int situacao;
    compor(arquivo, sizeof arquivo, "retorno/%s.xml", nome);
    compor(marca, sizeof marca, "<DocNumero>%d</DocNumero><SitCodigo>", numero);
    conteudo = lerTudo(arquivo, &bytes);
    achado = conteudo == NULL ? NULL : strstr(conteudo, marca);
    situacao = achado == NULL ? 0 : atoi(achado + strlen(marca));
    free(conteudo);
    return situacao;
}

int contem(const char *arquivo, const char *texto) {
    size_t bytes = 0;
    char *conteudo = lerTudo(arquivo, &bytes);
    const int achado = conteudo != NULL && strstr(conteudo, texto) != NULL;
    free(conteudo);
    return achado;
}

int transmitir(const char *documento, const char *nome) {
    char comando[TAMANHO_COMANDO], origem[TAMANHO_CAMINHO], retorno[TAMANHO_CAMINHO];
    char relativo[TAMANHO_NOME + 16], situacao[8];
    compor(relativo, sizeof relativo, "retorno/%s.xml", nome);
    noDiretorio(origem, documento);
    noDiretorio(retorno, relativo);
    /* Yesterday's return must never count as today's. */
    remove(retorno);
    compor(comando, sizeof comando, "%s '%s' '%s'", comandoDoEnviador, origem, retorno);
    printf("-- send %s\n", documento);
    fflush(stdout);
    if (system(comando) == -1) terminar("cannot run", comando);
    /* What counts is the return, not how the command ended: a sender may be another machine. */
    doRetorno(nome, "SitCodigo", "cStat", situacao, sizeof situacao);
    return situacao[0] == '\0' ? SEM_RESPOSTA : atoi(situacao);
}

int autorizado(int situacao) {
    return situacao == 100 || situacao == 150;
}

int naoEnviado(int situacao) {
    return situacao == NAO_ENVIADO || situacao == 108 || situacao == 109;
}

int duplicado(int situacao) {
    return situacao == DUPLICIDADE || situacao == DUPLICIDADE_CANCELADA ||
           situacao == DUPLICIDADE_OUTRA_CHAVE;
}

int denegado(int situacao) {
    return situacao == 110 || situacao == 205 || (situacao >= 301 && situacao <= 303);
}

void imprimir(const char *documento, const char *retorno, int tipo, const char *nome) {
    char origem[TAMANHO_CAMINHO], volta[TAMANHO_CAMINHO], arquivo[TAMANHO_NOME + 16];
    const int offline = strcmp(retorno, "OFFLINE") == 0;
    char *cupom = malloc(ZEL_TAMANHO_CUPOM);
    if (cupom == NULL) terminar("no memory", nome);
    noDiretorio(origem, documento);
    passo("lay the receipt out",
          GerarArquivoFormatadoNF_ZEL(origem, offline ? retorno : noDiretorio(volta, retorno), "",
                                      COLUNAS, tipo, "", cupom));
    compor(arquivo, sizeof arquivo, "cupons/%s.txt", nome);
    gravarTudo(arquivo, cupom, strlen(cupom));
    printf("-- printed %s%s\n", arquivo, offline ? ", in contingency" : "");
    free(cupom);
}

void anotar(const char *lista, const char *linha) {
    char caminho[TAMANHO_CAMINHO];
    FILE *arquivo = fopen(noDiretorio(caminho, lista), "ab");
    if (arquivo == NULL) terminar("cannot write", caminho);
    if (fprintf(arquivo, "%s\n", linha) < 0 || fflush(arquivo) != 0 || fsync(fileno(arquivo)) != 0)
        terminar("cannot write", caminho);
    if (fclose(arquivo) != 0) terminar("cannot write", caminho);
}

int paraCada(const char *lista, int (*fazer)(const char *linha)) {
    size_t tamanho = 0, guardados = 0;
    int faltam = 0;
    char *linhas = lerTudo(lista, &tamanho);
    char *linha, *fim;
    if (linhas == NULL) return 0;
    for (linha = linhas; (fim = strchr(linha, '\n')) != NULL; linha = fim + 1) {
        *fim = '\0';
        if (fazer(linha)) continue;
        /* Moves up over the lines that are done. */
        memmove(linhas + guardados, linha, (size_t)(fim - linha));
        guardados += (size_t)(fim - linha);
        linhas[guardados++] = '\n';
        ++faltam;
    }
    gravarTudo(lista, linhas, guardados);
    free(linhas);
    return faltam;
}
