/* SPDX-License-Identifier: MIT */
/* From the close to the receipt: what a till does with each answer of the tax authority, and with
 * none. Owns the lists of what waits for the connection. */
#ifndef EMISSAO_H
#define EMISSAO_H

/* The library's documents, and the till's lists. */
#define ENVIO "documentosEnvio.xml"
#define PARAMETROS "parametrosEnvio.xml"
#define PENDENTES "pendentes.txt"       /* "NAME FILE": to be sent */
#define SUBSTITUIDAS "substituidas.txt" /* "NUMBER KEY": whatever became of it */
#define INUTILIZAR "inutilizar.txt"     /* "NUMBER": refused, and not used again */
#define ATENCAO "atencao.txt"           /* a person must see to it */

/* The number of the last document. */
int numeroAtual(void);

/* "WHAT-NUMBER", the name of a document in the till's own directories; TAMANHO_NOME bytes. */
void nomear(char *nome, const char *oQue, int numero);

/* Stores a configuration value. */
void configurar(const char *chave, const char *valor);

/* Closes the sale, sends the document and acts on the answer, which it returns. In contingency
 * nothing is sent: the document is printed at once, twice, and waits. */
int concluir(const char *mensagem);

/* At the start of the program: sends the last document if nothing is known of it. */
void retomarUltima(void);

/* "copia/|contingencia/" in the data directory, ZEL_TAMANHO_DIRETORIOS bytes: two places for each
 * contingency file, of which the second one would be another machine's. */
void diretoriosDeContingencia(char *texto);
void anotarPendente(const char *nome, const char *arquivo);

/* Sends what waits, in order. Leaves contingency when nothing waits any more. */
void enviarPendentes(void);

#endif
