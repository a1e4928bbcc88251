// SPDX-License-Identifier: MIT
package zel.felbor;

/**
 * An item of a receipt in progress; numbers as the library wrote them, with a point. Discount and
 * surcharge are empty for none.
 */
public final class ItemLido {
    public final String numero;
    public final String codigo;
    public final String descricao;
    public final String quantidade;
    public final String unidade;
    public final String preco;
    public final String bruto;
    public final String desconto;
    public final String acrescimo;

    ItemLido(String numero, String[] campos, String desconto, String acrescimo) {
        this.numero = numero;
        this.codigo = campos[0];
        this.descricao = campos[1];
        this.quantidade = campos[2];
        this.unidade = campos[3];
        this.preco = campos[4];
        this.bruto = campos[5];
        this.desconto = desconto;
        this.acrescimo = acrescimo;
    }
}
