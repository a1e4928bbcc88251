// SPDX-License-Identifier: MIT
package zel.felbor;

import java.nio.charset.StandardCharsets;
import java.util.List;

/**
 * The receipt of one data directory, which is the process's. Text is converted to ISO-8859-1
 * strictly, file names are not; calls from several threads are made one after the other. What each
 * function does, and in which state, is in ZEL_FelborFramework.h.
 */
public final class Cupom extends Operacoes {
    /** {@code diretorio} is absolute and exists; the library keeps its files there. */
    public Cupom(String diretorio) {
        this(diretorio, new Opcoes());
    }

    public Cupom(String diretorio, Opcoes opcoes) {
        super(diretorio, opcoes);
    }

    /** {@code transliterar}: typographic quotes, dashes, ellipses and blanks become plain ones. */
    public Cupom(String diretorio, boolean transliterar) {
        this(diretorio, transliterar ? new Opcoes().transliterar() : new Opcoes());
    }

    /** {@code biblioteca}: the shared object, which the first one of a process loads. */
    public Cupom(String diretorio, boolean transliterar, String biblioteca) {
        this(diretorio, (transliterar ? new Opcoes().transliterar() : new Opcoes())
            .biblioteca(biblioteca));
    }

    /** regAlterarValor_ZEL; a value that the key does not keep whole is taken back and refused. */
    @Override
    public void alterarValor(String chave, String valor) {
        if (corta()) {
            super.alterarValor(chave, valor);
            return;
        }
        String antes = "";
        try {
            antes = retornarValor(chave);
        } catch (Recusa e) {
            antes = ""; // no such key, which the other function says
        }
        super.alterarValor(chave, valor);
        String guardado = retornarValor(chave);
        byte[] dado = texto("valor", valor);
        if (!guardado.equals(new String(dado, 0, dado.length - 1, StandardCharsets.ISO_8859_1))) {
            super.alterarValor(chave, antes);
            throw new EntradaRecusada("valor: " + (dado.length - 1) + " caracteres, de que " + chave
                + " guarda " + guardado.length() + "; nada mudou");
        }
    }

    /**
     * The receipt in progress, for a till that was restarted; one that was closed is there until the
     * next is opened. Null without a receipt. The library completes first what a process that died
     * left behind.
     */
    public Andamento lerAndamento() {
        String troco = retornarValor("CONFIGURACAO\\TrocoUltimaNFCe");
        Estado estado = verificarStatus();
        if (estado.compareTo(Estado.ABERTO) < 0 || estado.compareTo(Estado.ENCERRADO) > 0) {
            return null;
        }
        return new Andamento(lerPersistido(), estado,
            estado.compareTo(Estado.PAGO) < 0 ? "" : troco);
    }

    /**
     * aCFContingenciaUltimaNota_ZEL of kind 1 (as the closing does), 3 or 5 (in contingency);
     * answers the document.
     */
    public String reemitir(int tipo) {
        long tamanho = Tabelas.TAMANHO_DOCUMENTO + 65536L + 2 * tamanhoDoPersistido();
        return ler("aCFContingenciaUltimaNota_ZEL", tamanho,
            (n, saida) -> n.aCFContingenciaUltimaNota_ZEL(tipo, saida));
    }

    /**
     * aCFContingenciaUltimaNota_ZEL of kind 4: KEY.ctg in up to three directories; answers the path
     * of the last file.
     */
    public String contingencia(List<String> diretorios) {
        return gravarEm("aCFContingenciaUltimaNota_ZEL", diretorios,
            (n, saida) -> n.aCFContingenciaUltimaNota_ZEL(4, saida));
    }

    /** The receipt text of a sale, 48 columns wide. */
    public String imprimir(String arquivoXml, String retorno) {
        return imprimir(arquivoXml, retorno, 48, "", false);
    }

    /**
     * The receipt text of a sale with its printer mark-up.
     *
     * @param retorno the file of the tax authority's answer, which has to authorize the sale, or
     *     "OFFLINE" for a document of contingency or without fiscal value
     * @param colunas 42 or 48
     * @param urlQrcode the content of the QR code, empty to have it built
     * @param semAutorizacao lays any other document out, too, for a trial
     */
    public String imprimir(String arquivoXml, String retorno, int colunas, String urlQrcode,
            boolean semAutorizacao) {
        return formatar(arquivoXml, retorno, urlQrcode, colunas, 1, semAutorizacao);
    }

    /** The same of a cancellation request, which the answer has to have registered. */
    public String imprimirCancelamento(String arquivoXml, String retorno, int colunas,
            boolean semAutorizacao) {
        return formatar(arquivoXml, retorno, "", colunas, 5, semAutorizacao);
    }

    private String formatar(String xml, String retorno, String url, int colunas, int tipo,
            boolean semAutorizacao) {
        byte[] documento = Valores.caminho("arquivoXml", xml);
        byte[] resposta = Valores.caminho("arquivoRetorno", retorno);
        byte[] qrcode = texto("urlQrcode", url);
        ParaImprimir lidos = new ParaImprimir(xml, retorno, tipo == 5, semAutorizacao);
        return ler("GerarArquivoFormatadoNF_ZEL", tamanhoDoCupom(lidos, url),
            (n, saida) -> n.GerarArquivoFormatadoNF_ZEL(documento, resposta, qrcode, colunas, tipo,
                Valores.VAZIO, saida));
    }
}
