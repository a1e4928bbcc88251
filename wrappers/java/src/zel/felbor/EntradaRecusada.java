// SPDX-License-Identifier: MIT
package zel.felbor;

/** An argument that cannot be handed to the library; nothing was called. */
public class EntradaRecusada extends ErroZel {
    private static final long serialVersionUID = 1;

    EntradaRecusada(String mensagem) {
        super(mensagem);
    }
}
