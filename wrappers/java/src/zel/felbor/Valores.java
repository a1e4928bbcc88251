// SPDX-License-Identifier: MIT
package zel.felbor;

import java.io.ByteArrayOutputStream;
import java.math.BigDecimal;
import java.nio.charset.StandardCharsets;
import java.util.ArrayList;
import java.util.List;

/** What is converted on the way to the library; each result ends in a zero byte. */
final class Valores {
    static final byte[] VAZIO = {0};

    private Valores() {}

    /**
     * ISO-8859-1, strictly. Refused are characters beyond U+00FF, U+0000, and the controls U+0080 to
     * U+009F, which are nearly always another character set taken for this one.
     */
    static byte[] texto(String argumento, String valor, boolean transliterar) {
        ByteArrayOutputStream latin1 = new ByteArrayOutputStream(valor.length() + 1);
        int posicao = 0;
        for (int c : valor.codePoints().toArray()) {
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

    /** With a point, at least two decimals and {@code casas} at most; null is an empty text. */
    static byte[] decimal(String argumento, BigDecimal numero, int casas) {
        return numero == null ? VAZIO : ascii(escrever(argumento, numero, casas));
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
        if (nome.indexOf('\0') >= 0) {
            throw new EntradaRecusada(argumento + ": nome de arquivo com U+0000");
        }
        return (nome + '\0').getBytes(StandardCharsets.UTF_8);
    }

    /** Up to three directories of up to 300 bytes with their final "/", separated by "|". */
    static byte[] diretorios(String argumento, List<String> lista) {
        List<String> nomes = new ArrayList<>();
        for (String nome : lista) {
            String completo = nome.endsWith("/") ? nome : nome + '/';
            if (caminho(argumento, completo).length > 301 || completo.indexOf('|') >= 0) {
                throw new EntradaRecusada(argumento + ": diretório com | ou mais de 300 bytes");
            }
            nomes.add(completo);
        }
        if (nomes.isEmpty() || nomes.size() > 3) {
            throw new EntradaRecusada(argumento + ": de um a três diretórios");
        }
        return caminho(argumento, String.join("|", nomes));
    }
}
