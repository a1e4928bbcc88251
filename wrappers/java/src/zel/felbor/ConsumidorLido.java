// SPDX-License-Identifier: MIT
package zel.felbor;

/** Who a receipt in progress is for. */
public final class ConsumidorLido {
    /** "cpf", "cnpj" or "estrangeiro" */
    public final String tipo;
    public final String documento;
    public final String nome;
    public final String email;

    ConsumidorLido(String tipo, String documento, String nome, String email) {
        this.tipo = tipo;
        this.documento = documento;
        this.nome = nome;
        this.email = email;
    }
}
