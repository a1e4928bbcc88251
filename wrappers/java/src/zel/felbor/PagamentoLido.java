// SPDX-License-Identifier: MIT
package zel.felbor;

/** A payment of a receipt in progress. */
public final class PagamentoLido {
    /** "01" */
    public final String forma;
    /** "Dinheiro" */
    public final String nome;
    public final String valor;

    PagamentoLido(String forma, String nome, String valor) {
        this.forma = forma;
        this.nome = nome;
        this.valor = valor;
    }
}
