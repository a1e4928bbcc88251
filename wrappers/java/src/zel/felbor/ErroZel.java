// SPDX-License-Identifier: MIT
package zel.felbor;

/** Whatever this package refuses. */
public class ErroZel extends RuntimeException {
    private static final long serialVersionUID = 1;

    ErroZel(String mensagem) {
        super(mensagem);
    }
}
