// SPDX-License-Identifier: MIT
package zel.felbor;

import java.math.BigDecimal;

/** A discount or a surcharge, as an amount or as a percentage. */
public final class Ajuste {
    public static final Ajuste NENHUM = new Ajuste("", null);

    private final String tipo;
    private final BigDecimal valor;

    private Ajuste(String tipo, BigDecimal valor) {
        this.tipo = tipo;
        this.valor = valor;
    }

    public static Ajuste desconto(BigDecimal quantia) {
        return new Ajuste("D$", quantia);
    }

    public static Ajuste descontoPercentual(BigDecimal percentual) {
        return new Ajuste("D%", percentual);
    }

    public static Ajuste acrescimo(BigDecimal quantia) {
        return new Ajuste("A$", quantia);
    }

    public static Ajuste acrescimoPercentual(BigDecimal percentual) {
        return new Ajuste("A%", percentual);
    }

    /** {@code sentido} is "D" or "A" where the function takes one of them alone, otherwise empty. */
    byte[] tipo(String argumento, String sentido) {
        if (!tipo.startsWith(sentido)) {
            throw new EntradaRecusada(
                argumento + (sentido.equals("D") ? ": não é um desconto" : ": não é um acréscimo"));
        }
        return Valores.ascii(tipo);
    }

    /** An amount is in cents. */
    byte[] valor(String argumento) {
        if (tipo.isEmpty()) {
            return Valores.VAZIO;
        }
        return Valores.decimal(argumento, valor, tipo.endsWith("$") ? 2 : 4);
    }
}
