// SPDX-License-Identifier: MIT
package zel.felbor;

import java.io.ByteArrayOutputStream;
import java.math.BigDecimal;
import java.nio.charset.StandardCharsets;
import java.text.Normalizer;
import java.util.ArrayList;
import java.util.List;

/** What is converted on the way to the library; each result ends in a zero byte. */
final class Valores {
    static final byte[] VAZIO = {0};

    private Valores() {}

    /** Nothing that a function needs is null. */
    static <T> T exigir(String argumento, T valor) {
        if (valor == null) {
            throw new EntradaRecusada(argumento + ": nulo");
        }
        return valor;
    }

    /**
     * ISO-8859-1, strictly; letters written in two parts are put together first. Refused are characters
     * beyond U+00FF, U+0000, and the controls U+0080 to U+009F, which are nearly always another
     * character set taken for this one.
     */
    static byte[] texto(String argumento, String valor, boolean transliterar) {
        String composto = Normalizer.normalize(exigir(argumento, valor), Normalizer.Form.NFC);
        ByteArrayOutputStream latin1 = new ByteArrayOutputStream(composto.length() + 1);
        int posicao = 0;
        for (int c : composto.codePoints().toArray()) {
            ++posicao;
            String outro = transliterar ? Tabelas.transliterar(c) : null;
            if (outro != null) {
                latin1.writeBytes(outro.getBytes(StandardCharsets.ISO_8859_1));
            } else if (c > 0xFF || c == 0 || (c >= 0x80 && c < 0xA0)) {
                throw new TextoInvalido(argumento, c, posicao);
            } else {
                latin1.write(c);
            }
        }
        latin1.write(0);
        return latin1.toByteArray();
    }

    static byte[] ascii(String valor) {
        return (valor + '\0').getBytes(StandardCharsets.US_ASCII);
    }

    /** A text that the function would cut, or leave out. */
    static void conferirTamanho(String argumento, int tamanho, int minimo, int maximo) {
        if (tamanho < minimo || tamanho > maximo) {
            String entre = minimo > 0 ? "de " + minimo + " a " + maximo : "até " + maximo;
            throw new EntradaRecusada(argumento + ": " + tamanho + " caracteres; permitido: "
                + (minimo == maximo ? "exatamente " + maximo : entre));
        }
    }

    static int inteiro(String argumento, int valor) {
        return valor;
    }

    static int inteiro(String argumento, int valor, int minimo, int maximo) {
        if (valor < minimo || valor > maximo) {
            throw new EntradaRecusada(
                argumento + ": " + valor + " não está entre " + minimo + " e " + maximo);
        }
        return valor;
    }

    /** With a point, at least two decimals and {@code casas} at most. */
    static byte[] decimal(String argumento, BigDecimal numero, int casas) {
        return ascii(escrever(argumento, exigir(argumento, numero), casas));
    }

    /** Null is an empty text. */
    static byte[] decimalOpcional(String argumento, BigDecimal numero, int casas) {
        return numero == null ? VAZIO : decimal(argumento, numero, casas);
    }

    static String escrever(String argumento, BigDecimal numero, int casas) {
        BigDecimal curto = numero.stripTrailingZeros();
        if (curto.scale() > casas) {
            throw new EntradaRecusada(
                argumento + ": " + numero + " tem mais de " + casas + " casas decimais");
        }
        long inteiros = (long) curto.precision() - curto.scale(); // 1E+99 is not to be written out
        String escrito = inteiros > 15 ? null
            : curto.setScale(Math.max(2, curto.scale())).toPlainString();
        if (escrito == null || escrito.length() > 15) {
            throw new EntradaRecusada(argumento + ": " + numero + " passa de 15 caracteres");
        }
        return escrito;
    }

    /** A file name is bytes of the file system, not ISO-8859-1. */
    static byte[] caminho(String argumento, String nome) {
        if (exigir(argumento, nome).indexOf('\0') >= 0) {
            throw new EntradaRecusada(argumento + ": nome de arquivo com U+0000");
        }
        byte[] escrito = (nome + '\0').getBytes(StandardCharsets.UTF_8);
        if (escrito.length > 301) {
            throw new EntradaRecusada(argumento + ": nome de arquivo com mais de 300 bytes");
        }
        return escrito;
    }

    /** Up to three directories of up to 300 bytes with their final "/", separated by "|". */
    static byte[] diretorios(String argumento, List<String> lista) {
        List<String> nomes = new ArrayList<>();
        for (String nome : lista) {
            String completo = nome.endsWith("/") ? nome : nome + '/';
            caminho(argumento, completo);
            if (completo.indexOf('|') >= 0) {
                throw new EntradaRecusada(argumento + ": diretório com |");
            }
            nomes.add(completo);
        }
        if (nomes.isEmpty() || nomes.size() > 3) {
            throw new EntradaRecusada(argumento + ": de um a três diretórios");
        }
        return (String.join("|", nomes) + '\0').getBytes(StandardCharsets.UTF_8);
    }
}
