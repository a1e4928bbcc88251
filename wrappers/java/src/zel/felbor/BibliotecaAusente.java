// SPDX-License-Identifier: MIT
package zel.felbor;

/** The shared object was not found, or cannot be loaded. */
public final class BibliotecaAusente extends ErroZel {
    private static final long serialVersionUID = 1;

    BibliotecaAusente(String mensagem) {
        super(mensagem);
    }
}
