/* SPDX-License-Identifier: MIT */
/*
 * libzel-cupom: shows a receipt that is written in printer mark-up as the picture of its paper (PNG
 * or SVG), without a printer, and prints it: as the bytes of the commands that a model of printers
 * understands (ESC/POS and its dialects), into memory, a file, a device or a network printer.
 *
 * Conventions
 *
 *  1. A receipt is a text in ISO-8859-1, at most ZEL_CUPOM_MAIOR_TEXTO bytes; a line ends with "\n"
 *     or "\r\n". Other control characters are not printed (a tab is one blank).
 *  2. Mark-up is a name in angle brackets, <b>, up to its closing marker, </b>. Names are in lower
 *     case. Whatever is not mark-up as described here is text and is printed as it stands; no text
 *     is refused for what it holds.
 *
 *     Of letters, in force over line ends until the closing marker, or the end of the receipt (one
 *     closing marker ends it, however often it was opened):
 *       c condensed   b bold   i italic   s underlined   e double width   da double height
 *       xl double width and height   n normal letters: ends all of the others
 *     Of lines, by what is in force at the first character of the line:
 *       ce centred    ad to the right
 *     Of the paper; their content is no text of the receipt and ends on the line on which it began:
 *       <qrcode>CONTENT<lmodulo>N</lmodulo></qrcode>
 *                      QR code of CONTENT, up to 2331 bytes (what is longer is printed as text), in
 *                      modules of N dots: 1 to 16, 3 when not given; of more dots where the code
 *                      would be less than 25 mm wide
 *       <bmp></bmp>    logo
 *       <gui></gui>    cut
 *       <sl>N</sl>     N blank lines, 0 to 255
 *       <l></l>        end of line
 *     A line end straight after one of these belongs to it and makes no blank line.
 *     Without meaning on paper, taken out: the markers of fe and tb; with their content a, code11,
 *     code128, code39, code93, codabar, cespl, confgui, dt, dti, ean13, ean8, g, hr, hri, i2of5,
 *     ibmp, mg, msi, pdf, s2of5, slm, sn, sp, tc, upc-a.
 *  3. Papers, at 8 dots to the millimetre (203 dpi):
 *
 *       columns  paper   printed          normal letters  condensed letters
 *       48       80 mm   72 mm, 576 dots  12 x 24 dots    9 x 17, 64 to the line
 *       42       76 mm   63 mm, 504 dots  12 x 24 dots    9 x 17, 56 to the line
 *       42       58 mm   48 mm, 384 dots   9 x 17 dots    9 x 17, 42 to the line
 *
 *     A line that does not fit gives up blanks: those at its end, then of its widest gaps, down to
 *     one between words. If that is not enough, it goes on in the next line: broken at the widest
 *     gap before which it fits (the last one of those that are as wide), inside a word only where
 *     that alone is too long. Pictures and printers break alike.
 *     A QR code is at least 25 mm wide: smaller modules than that takes are not used. One that does
 *     not fit gets the largest modules with which it does. Around it are four modules of free
 * paper. A receipt of more than 50 m of paper is refused. These are the papers of the pictures; a
 * printer's line is as wide as its profile says.
 *  4. Every function with an int result answers ZEL_CUPOM_OK or the negative code of its failure. A
 *     failure changes nothing: neither the receipt that was read, nor the settings, nor a file.
 *  5. A file is written whole or not at all: beside its place, flushed, renamed.
 *  6. Bytes that a function gives back belong to the caller, who returns them with
 *     zel_cupom_liberar_bytes. Nothing else that the caller passes is kept.
 *  7. One thread at a time may use a zel_cupom; two threads may use two of them. There is no other
 *     state. Nothing depends on the locale or on the clock: the same text with the same settings
 *     and the same font files gives the same bytes.
 */
#ifndef ZEL_CUPOM_H
#define ZEL_CUPOM_H

#include <stddef.h>

#if defined(__GNUC__)
#define ZEL_CUPOM_API __attribute__((visibility("default")))
#else
#define ZEL_CUPOM_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* The version of this header. */
#define ZEL_CUPOM_VERSAO "1.1.0"

/* Results. */
enum {
    ZEL_CUPOM_OK = 1,

    ZEL_CUPOM_ARGUMENTO = -1, /* null, or outside the values that the function names */
    ZEL_CUPOM_MEMORIA = -2,   /* memory is short */
    ZEL_CUPOM_LONGO = -3,     /* longer text, or more paper, than the limits above */
    ZEL_CUPOM_FONTE = -4,     /* no font file: not found, not readable, no font */
    ZEL_CUPOM_LOGOTIPO = -5,  /* logo not readable, no PNG picture, or larger than the limits */
    ZEL_CUPOM_ARQUIVO = -6,   /* the file cannot be written; errno says why */
    ZEL_CUPOM_DESENHO = -7,   /* the drawing library failed */
    ZEL_CUPOM_PERFIL = -8,    /* no such profile, or a file that is none: zel_cupom_detalhe */

    /* A printer; zel_cupom_detalhe and zel_cupom_enviados report how far it came. */
    ZEL_CUPOM_AUSENTE = -9,       /* no such device, host or network */
    ZEL_CUPOM_RECUSADA = -10,     /* it is there and refuses: in use, no permission, no service */
    ZEL_CUPOM_TEMPO = -11,        /* it did not answer, or stopped taking bytes, in that time */
    ZEL_CUPOM_INTERROMPIDA = -12, /* it failed or went away half-way */

    /* What a printer says of itself. */
    ZEL_CUPOM_SEM_PAPEL = -13,    /* no paper */
    ZEL_CUPOM_TAMPA = -14,        /* the cover is open */
    ZEL_CUPOM_FORA_DE_LINHA = -15 /* off line for another reason */
};

/* Limits. */
enum {
    ZEL_CUPOM_MAIOR_TEXTO = 1048576, /* bytes of a receipt */
    ZEL_CUPOM_MAIOR_ESCALA = 4,
    ZEL_CUPOM_MAIOR_LOGOTIPO = 4096, /* pixels of a side of the logo's file */
    ZEL_CUPOM_MAIOR_ESPERA = 600000  /* milliseconds */
};

/* How the logo is printed. */
enum {
    ZEL_CUPOM_PONTOS = 0, /* in black and white dots, dithered, as a printer does */
    ZEL_CUPOM_CINZA = 1   /* in shades of grey */
};

/* What a printer makes of a receipt. */
enum {
    ZEL_CUPOM_LETRAS = 0, /* its own letters, styles and QR codes */
    ZEL_CUPOM_FIGURA = 1  /* the picture of the paper, dot by dot */
};

typedef struct zel_cupom zel_cupom;

/* The version of the library that the program runs with, as ZEL_CUPOM_VERSAO writes it. */
ZEL_CUPOM_API const char *zel_cupom_versao(void);

/* A receipt without text on paper of 48 columns, without a logo, in scale 1. Null when memory is
 * short. The caller returns it with zel_cupom_liberar. */
ZEL_CUPOM_API zel_cupom *zel_cupom_novo(void);

/* Returns a receipt; null is allowed. */
ZEL_CUPOM_API void zel_cupom_liberar(zel_cupom *cupom);

/* Reads a receipt from `tamanho` bytes of `texto` (which may be null when there are none) in the
 * place of the one that was read before; the settings stay.
 * Codes: ZEL_CUPOM_ARGUMENTO, ZEL_CUPOM_LONGO, ZEL_CUPOM_MEMORIA. */
ZEL_CUPOM_API int zel_cupom_ler(zel_cupom *cupom, const char *texto, size_t tamanho);

/* Sets the paper. `colunas`: 48 or 42. `papel`: its width in mm, 80 with 48 columns, 76 or 58 with
 * 42, 0 for the first of them.
 * Codes: ZEL_CUPOM_ARGUMENTO. */
ZEL_CUPOM_API int zel_cupom_definir_papel(zel_cupom *cupom, int colunas, int papel);

/* Sets the pixels of the PNG picture to a dot of the paper: `escala` 1 (203 dpi) to
 * ZEL_CUPOM_MAIOR_ESCALA.
 * Codes: ZEL_CUPOM_ARGUMENTO. */
ZEL_CUPOM_API int zel_cupom_definir_escala(zel_cupom *cupom, int escala);

/* Reads the logo from the PNG file `arquivo`; null takes the logo away again. Each pixel is a dot;
 * a picture that is wider than the print or higher than 40 mm is made smaller. It stands in the
 * middle of the line, wherever the receipt has its mark-up; without a logo nothing does. What is
 * transparent is paper. `tons`: ZEL_CUPOM_PONTOS or ZEL_CUPOM_CINZA.
 * Codes: ZEL_CUPOM_ARGUMENTO, ZEL_CUPOM_LOGOTIPO, ZEL_CUPOM_MEMORIA. */
ZEL_CUPOM_API int zel_cupom_definir_logotipo(zel_cupom *cupom, const char *arquivo, int tons);

/* Draws with the monospaced fonts of two files (TrueType or another format that FreeType reads),
 * for instance Liberation Mono in the place of DejaVu Sans Mono, which is looked for where
 * distributions install it. `negrito` null: bold letters are drawn with strokes of the first one.
 * `normal` null: back to the font that is looked for. Codes: ZEL_CUPOM_ARGUMENTO, ZEL_CUPOM_FONTE,
 * ZEL_CUPOM_MEMORIA. */
ZEL_CUPOM_API int zel_cupom_definir_fonte(zel_cupom *cupom, const char *normal,
                                          const char *negrito);

/* The picture as a PNG file in memory, 8-bit grey, the whole width of the paper, with its
 * resolution recorded: `bytes` receives the address, `tamanho` the length. Codes:
 * ZEL_CUPOM_ARGUMENTO, ZEL_CUPOM_LONGO, ZEL_CUPOM_FONTE, ZEL_CUPOM_DESENHO, ZEL_CUPOM_MEMORIA. */
ZEL_CUPOM_API int zel_cupom_png(zel_cupom *cupom, unsigned char **bytes, size_t *tamanho);

/* The same into a file, which is replaced when it exists. Also ZEL_CUPOM_ARQUIVO. */
ZEL_CUPOM_API int zel_cupom_gravar_png(zel_cupom *cupom, const char *arquivo);

/* The picture as SVG, in the size of the paper; letters are outlines, so that no font is needed to
 * see it. As zel_cupom_png. */
ZEL_CUPOM_API int zel_cupom_svg(zel_cupom *cupom, unsigned char **bytes, size_t *tamanho);

/* The same into a file, which is replaced when it exists. Also ZEL_CUPOM_ARQUIVO. */
ZEL_CUPOM_API int zel_cupom_gravar_svg(zel_cupom *cupom, const char *arquivo);

/* The paper as PDF, one page in its size, letters as text. Of more than 200 inches (5.08 m) of
 * paper it is ZEL_CUPOM_LONGO. As zel_cupom_png. */
ZEL_CUPOM_API int zel_cupom_pdf(zel_cupom *cupom, unsigned char **bytes, size_t *tamanho);

/* The same into a file, which is replaced when it exists. Also ZEL_CUPOM_ARQUIVO. */
ZEL_CUPOM_API int zel_cupom_gravar_pdf(zel_cupom *cupom, const char *arquivo);

/* The names of the profiles that the library holds, from `indice` 0 on; null after the last one. */
ZEL_CUPOM_API const char *zel_cupom_nome_do_perfil(int indice);

/* Chooses what printer the receipt is for: the name of a profile that the library holds, or, when
 * there is a "/" in it, the path of a file of up to 64 KiB in the same form (see perfis/, each of
 * which may be copied and changed). Null: "generico-58mm" for the paper of 58 mm and
 * "generico-80mm" for the others, which is what a receipt begins with. Codes: ZEL_CUPOM_ARGUMENTO,
 * ZEL_CUPOM_PERFIL, ZEL_CUPOM_MEMORIA. */
ZEL_CUPOM_API int zel_cupom_definir_perfil(zel_cupom *cupom, const char *perfil);

/* Whether the drawer at the printer opens before the receipt is printed, where the profile knows
 * how: `abrir` 0, as at first, or 1.
 * Codes: ZEL_CUPOM_ARGUMENTO. */
ZEL_CUPOM_API int zel_cupom_definir_gaveta(zel_cupom *cupom, int abrir);

/* How zel_cupom_escpos and zel_cupom_imprimir print: `modo` ZEL_CUPOM_LETRAS, as at first, or
 * ZEL_CUPOM_FIGURA, for printers whose letters or code pages are not right. A picture needs a
 * profile that prints dots, as many to a line as the paper has: otherwise both answer
 * ZEL_CUPOM_PERFIL; they answer ZEL_CUPOM_FONTE and ZEL_CUPOM_DESENHO as zel_cupom_png does. Codes:
 * ZEL_CUPOM_ARGUMENTO. */
ZEL_CUPOM_API int zel_cupom_definir_impressao(zel_cupom *cupom, int modo);

/* The bytes that print the receipt, from the printer's initialization on: `bytes` receives the
 * address, `tamanho` the length. Letters are the largest ones of the printer of which a line holds
 * the columns of the paper; condensed ones are the next smaller ones, if there are any.
 * Characters that the chosen code page lacks are printed as plain letters. A QR code is printed by
 * the printer's own command or as dots, as the profile says (and as dots where the command does not
 * reach 25 mm, or the code is not centred), and as text where the printer can do neither; the logo
 * in dots or as the printer has it stored; what the printer cannot do otherwise (italics, a cut) is
 * left out. At the end letters and alignment are as after the initialization. Codes:
 * ZEL_CUPOM_ARGUMENTO, ZEL_CUPOM_LONGO, ZEL_CUPOM_MEMORIA. */
ZEL_CUPOM_API int zel_cupom_escpos(zel_cupom *cupom, unsigned char **bytes, size_t *tamanho);

/* Sends those bytes to `destino`, which is one of
 *   tcp://HOST, tcp://HOST:PORT   a network printer; HOST is a name, an IPv4 address or an IPv6
 *                                 address in square brackets, PORT is 9100 when it is not given
 *   /dev/usb/lp0, for instance    a device, or a pipe; the speed of a serial line is the system's
 *   another path                  a file, which is replaced when it exists; where there is no such
 *                                 device in /dev (/dev/shm aside) no file takes its place
 * and ends after `espera` milliseconds, 1 to ZEL_CUPOM_MAIOR_ESPERA, whatever the printer does. No
 * SIGPIPE is raised.
 *
 * A network printer, and a device that may be read, is asked for its state where the profile knows
 * how, and has half a second to answer (a quarter of `espera` when that is less). One that answers
 * that it cannot print is sent no byte. One that answered is asked again after the last byte: then
 * it may have printed in part what zel_cupom_enviados counts. One that does not answer is printed
 * to.
 *
 * ZEL_CUPOM_OK: the device took all bytes, the network printer received them, or the file holds
 * them; zel_cupom_estado says whether it had paper. What happens while it prints what it has taken,
 * nobody says. A receipt that failed half-way may have been printed in part. Codes: as
 * zel_cupom_escpos; ZEL_CUPOM_ARGUMENTO also for an address that is none; ZEL_CUPOM_ARQUIVO,
 * ZEL_CUPOM_AUSENTE, ZEL_CUPOM_RECUSADA, ZEL_CUPOM_TEMPO, ZEL_CUPOM_INTERROMPIDA,
 * ZEL_CUPOM_SEM_PAPEL, ZEL_CUPOM_TAMPA, ZEL_CUPOM_FORA_DE_LINHA. */
ZEL_CUPOM_API int zel_cupom_imprimir(zel_cupom *cupom, const char *destino, int espera);

/* What the printer said last in the last zel_cupom_imprimir: ZEL_CUPOM_OK for ready,
 * ZEL_CUPOM_SEM_PAPEL, ZEL_CUPOM_TAMPA or ZEL_CUPOM_FORA_DE_LINHA; 0 when it said nothing, before,
 * and of null. */
ZEL_CUPOM_API int zel_cupom_estado(const zel_cupom *cupom);

/* How many bytes the printer took in the last zel_cupom_imprimir; 0 before, and of null. */
ZEL_CUPOM_API size_t zel_cupom_enviados(const zel_cupom *cupom);

/* In words, in Portuguese without accents, what zel_cupom_definir_perfil found wrong and where, why
 * a profile prints no picture, or how far zel_cupom_imprimir came, whichever of them was called
 * last; empty when it failed in nothing. Never null, valid until the next call of either; not to be
 * returned. */
ZEL_CUPOM_API const char *zel_cupom_detalhe(const zel_cupom *cupom);

/* Returns bytes that a function above gave; null is allowed. */
ZEL_CUPOM_API void zel_cupom_liberar_bytes(unsigned char *bytes);

/* A code in words, in Portuguese without accents; never null, and never to be returned. */
ZEL_CUPOM_API const char *zel_cupom_descrever(int codigo);

#ifdef __cplusplus
}
#endif

#endif
