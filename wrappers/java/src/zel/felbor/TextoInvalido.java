// SPDX-License-Identifier: MIT
package zel.felbor;

/** A character that ISO-8859-1 does not have. */
public final class TextoInvalido extends EntradaRecusada {
    private static final long serialVersionUID = 1;

    /** The argument's name in the header. */
    public final String argumento;
    /** The code point. */
    public final int caractere;
    /** Counted in characters, from 1. */
    public final int posicao;

    TextoInvalido(String argumento, int caractere, int posicao) {
        super(String.format("%s: o caractere%s (U+%04X) na posição %d não existe em ISO-8859-1",
            argumento, glifo(caractere), caractere, posicao));
        this.argumento = argumento;
        this.caractere = caractere;
        this.posicao = posicao;
    }

    private static String glifo(int caractere) {
        boolean visivel = !Character.isISOControl(caractere)
            && Character.getType(caractere) != Character.SURROGATE;
        return visivel ? " \"" + new String(Character.toChars(caractere)) + '"' : "";
    }
}
