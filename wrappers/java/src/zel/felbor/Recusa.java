// SPDX-License-Identifier: MIT
package zel.felbor;

/** What the library refused. */
public final class Recusa extends ErroZel {
    private static final long serialVersionUID = 1;

    /** The function's name in the header. */
    public final String funcao;
    /** What it answered. */
    public final int numero;
    /** Null for an answer that is in no table. */
    public final Codigo codigo;
    /** What the function wrote all the same: a receipt whose PDF failed. */
    public final String texto;
    /** Which field, what was given and what is allowed, or file and system error; may be empty. */
    public final String motivo;

    Recusa(String funcao, int numero, String texto, String motivo) {
        super(mensagem(funcao, numero, motivo));
        this.funcao = funcao;
        this.numero = numero;
        this.codigo = Codigo.de(numero);
        this.texto = texto;
        this.motivo = motivo;
    }

    /** "ZEL_CUPOM_EM_ANDAMENTO" */
    public String nome() {
        return codigo == null ? "DESCONHECIDO" : "ZEL_" + codigo.name();
    }

    public String significado() {
        return codigo == null ? "Código que este pacote não conhece." : codigo.significado;
    }

    public String remedio() {
        return codigo == null ? "" : codigo.remedio;
    }

    private static String mensagem(String funcao, int numero, String motivo) {
        Codigo codigo = Codigo.de(numero);
        String porque = motivo.isEmpty() ? "" : "Motivo: " + motivo + ". ";
        if (codigo == null) {
            return (funcao + ": código desconhecido (" + numero + ") " + porque).trim();
        }
        return funcao + ": ZEL_" + codigo.name() + " (" + numero + "): " + codigo.significado + ' '
            + porque + codigo.remedio;
    }
}
