// SPDX-License-Identifier: MIT
package zel.felbor;

import java.util.ArrayList;
import java.util.Collections;
import java.util.List;

/** A receipt that is open, or closed and not yet followed by another. */
public final class Andamento {
    public final Estado estado;
    /** Null without a consumer. */
    public final ConsumidorLido consumidor;
    public final List<ItemLido> lista;
    public final List<PagamentoLido> pagamentos;
    /** What the items add up to until the totals are made. */
    public final String total;
    public final String pago;
    /** Empty when nothing is due. */
    public final String falta;
    /** Empty before it is paid. */
    public final String troco;

    /** The bytes of ArqPersist.bin, in ISO-8859-1. */
    Andamento(String arquivo, Estado estado, String troco) {
        LeitorDoAndamento leitor = new LeitorDoAndamento(arquivo);
        this.estado = estado;
        this.consumidor = leitor.consumidor;
        this.lista = Collections.unmodifiableList(new ArrayList<>(leitor.lista));
        this.pagamentos = Collections.unmodifiableList(new ArrayList<>(leitor.pagamentos));
        long devido = leitor.devido();
        long recebido = leitor.pago();
        this.total = LeitorDoAndamento.moeda(devido);
        this.pago = LeitorDoAndamento.moeda(recebido);
        this.falta = leitor.totalizado() ? LeitorDoAndamento.seHouver(devido - recebido) : "";
        this.troco = troco;
    }
}
