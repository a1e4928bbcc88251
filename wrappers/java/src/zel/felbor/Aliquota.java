// SPDX-License-Identifier: MIT
package zel.felbor;

import java.math.BigDecimal;

/** The rate of an item: goods or service with its percentage, or none of it. */
public final class Aliquota {
    public static final Aliquota ISENTO = new Aliquota("I", null);
    public static final Aliquota NAO_INCIDENCIA = new Aliquota("N", null);
    public static final Aliquota SUBSTITUICAO = new Aliquota("F", null);

    private final String tipo;
    private final BigDecimal percentual;

    private Aliquota(String tipo, BigDecimal percentual) {
        this.tipo = tipo;
        this.percentual = percentual;
    }

    public static Aliquota mercadoria(BigDecimal percentual) {
        return new Aliquota("T", Valores.exigir("percentual", percentual));
    }

    public static Aliquota servico(BigDecimal percentual) {
        return new Aliquota("S", Valores.exigir("percentual", percentual));
    }

    /** "T1800", "S0500", "I". */
    byte[] converter(String argumento) {
        if (percentual == null) {
            return Valores.ascii(tipo);
        }
        String escrito = Valores.escrever(argumento, percentual, 2);
        if (percentual.signum() < 0 || escrito.length() > 5) {
            throw new EntradaRecusada(argumento + ": " + escrito + " não está entre 0 e 99,99");
        }
        String digitos = escrito.replace(".", "");
        return Valores.ascii(tipo + "0".repeat(4 - digitos.length()) + digitos);
    }
}
