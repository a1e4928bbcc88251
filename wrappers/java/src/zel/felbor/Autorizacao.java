// SPDX-License-Identifier: MIT
package zel.felbor;

import java.util.regex.Matcher;
import java.util.regex.Pattern;

/**
 * Whether a receipt may be given to a customer: of a document that the authority authorized, or of
 * one of contingency; without fiscal value nothing is promised.
 */
final class Autorizacao {
    private static final Pattern CONTINGENCIA = Pattern.compile("Id=\"NFe\\d{34}9");
    private static final String CONTORNO = "; para um ensaio, semAutorizacao";

    private Autorizacao() {}

    /** Of the sending component's form, or of the authority's, whose last status is the document's. */
    private static String situacao(String retorno) {
        String ultima = null;
        for (String marca : new String[] {"sitcodigo", "cstat"}) {
            Matcher vistas = Pattern.compile("(?i)<" + marca + ">\\s*(\\d*)").matcher(retorno);
            while (vistas.find()) {
                ultima = vistas.group(1);
            }
            if (ultima != null) {
                return ultima;
            }
        }
        return "";
    }

    /** Texts in ISO-8859-1; {@code retorno} is null for "OFFLINE". */
    static void conferir(String documento, String retorno, boolean cancelamento) {
        if (retorno == null) {
            boolean contingencia =
                !documento.startsWith("<") || CONTINGENCIA.matcher(documento).find();
            if (documento.contains("<tpAmb>1</tpAmb>") && !contingencia) {
                throw new EntradaRecusada("retorno: OFFLINE só serve a um documento de contingência; "
                    + "este ainda não tem a resposta da SEFAZ" + CONTORNO);
            }
            return;
        }
        String situacao = situacao(retorno);
        if (!situacao.matches(cancelamento ? "135|155" : "100|150")) {
            throw new EntradaRecusada("retorno: a SEFAZ não "
                + (cancelamento ? "registrou o cancelamento" : "autorizou a venda") + " (SitCodigo "
                + (situacao.isEmpty() ? "ausente" : situacao) + ')' + CONTORNO);
        }
    }
}
