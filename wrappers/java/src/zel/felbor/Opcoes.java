// SPDX-License-Identifier: MIT
package zel.felbor;

/** How a {@link Cupom} takes what it is given. */
public final class Opcoes {
    boolean transliterar;
    boolean cortar;
    String biblioteca = "libZEL_FelborFramework.so.1";

    /** Typographic quotes, dashes, ellipses and blanks become plain ones. */
    public Opcoes transliterar() {
        transliterar = true;
        return this;
    }

    /** What does not fit is handed over: the library cuts it or leaves it out. */
    public Opcoes cortar() {
        cortar = true;
        return this;
    }

    /** The name or path of the shared object, which the first Cupom of a process loads. */
    public Opcoes biblioteca(String nome) {
        biblioteca = nome;
        return this;
    }
}
