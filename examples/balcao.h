/* SPDX-License-Identifier: MIT */
/* What a till program needs around the library: files beside those of the library, the way to the
 * sending component and back, the printer, and lists on disk of what is still to be done. It all
 * survives a crash: a till is switched off at any moment.
 *
 * Paths are relative to the data directory. Texts are ISO-8859-1. */
#ifndef BALCAO_H
#define BALCAO_H

#include <stddef.h>

/* What became of a document: the authority's status, or one of the first two. */
enum {
    SEM_RESPOSTA = -1, /* no return came: the document may be at the authority */
    NAO_ENVIADO = 0,   /* the sender is sure that nothing arrived */
    CANCELADA = 101,
    INUTILIZADO = 102,
    EVENTO_REGISTRADO = 135,
    DUPLICIDADE = 204,
    NAO_CONSTA = 217,
    DUPLICIDADE_CANCELADA = 218,
    JA_INUTILIZADO = 256,
    DUPLICIDADE_OUTRA_CHAVE = 539
};

enum { TAMANHO_CAMINHO = 400, TAMANHO_NOME = 64, TAMANHO_CHAVE = 45, TAMANHO_PROTOCOLO = 16 };

/* Keeps the command of the sender, which takes a document and the file for its return, and makes
 * the directories envio/, retorno/, cupons/, contingencia/, copia/ and historico/. */
void prepararBalcao(const char *enviador);

/* Writes as snprintf does, but ends the program at a text that does not fit: half a path is another
 * file. */
void compor(char *destino, size_t tamanho, const char *formato, ...);

/* The path of a file in the data directory; returns `caminho`, TAMANHO_CAMINHO bytes. */
char *noDiretorio(char *caminho, const char *nome);

/* Prints a step and its answer, and ends the program at a refusal: there is nothing that a till
 * could do about it that a person need not know. */
void passo(const char *nome, int codigo);

/* A configuration value, in a buffer that the next call overwrites. */
const char *config(const char *chave);

/* Keeps what stands in `origem` as envio/NOME.xml. documentosEnvio.xml is replaced by the next
 * document, so the till keeps each under a name of its own. */
void guardar(const char *origem, const char *nome);

/* Sends a document, waits for its return in retorno/NOME.xml and returns the situation there. */
int transmitir(const char *documento, const char *nome);

int autorizado(int situacao);

/* No connection, or the authority's service stands still: there was no document there. */
int naoEnviado(int situacao);

/* The number, or even the key, is that of another document at the authority. */
int duplicado(int situacao);

/* The number is used up, but the document is void: nothing may be printed, and it cannot be
 * cancelled. */
int denegado(int situacao);

/* Lays a receipt out and hands it to the printer, here the file cupons/NOME.txt. `retorno` is a
 * path or OFFLINE, `tipo` 1 sale or 5 cancellation. */
void imprimir(const char *documento, const char *retorno, int tipo, const char *nome);

/* The value of the first of two elements found in a return, the sender's word or the authority's;
 * empty when there is none. Returns `valor`. */
char *doRetorno(const char *nome, const char *componente, const char *autoridade, char *valor,
                size_t tamanho);

/* The situation of a number in the return of a consultation by number; 0 when it is not listed. */
int situacaoDe(const char *nome, int numero);

/* Does the file hold the text? */
int contem(const char *arquivo, const char *texto);

/* A list on disk, one text a line. paraCada hands each line over and keeps those for which `fazer`
 * answers 0: not done yet. It returns how many were kept. */
void anotar(const char *lista, const char *linha);
int paraCada(const char *lista, int (*fazer)(const char *linha));

#endif
