// SPDX-License-Identifier: MIT
package zel.felbor;

import java.util.List;

/**
 * The receipt of one data directory, which is the process's. Text is converted to ISO-8859-1
 * strictly, file names are not; calls from several threads are made one after the other. What each
 * function does, and in which state, is in ZEL_FelborFramework.h.
 */
public final class Cupom extends Operacoes {
    private static final String BIBLIOTECA = "libZEL_FelborFramework.so.1";

    /** {@code diretorio} is absolute and exists; the library keeps its files there. */
    public Cupom(String diretorio) {
        this(diretorio, false, BIBLIOTECA);
    }

    /** {@code transliterar}: typographic quotes, dashes, ellipses and blanks become plain ones. */
    public Cupom(String diretorio, boolean transliterar) {
        this(diretorio, transliterar, BIBLIOTECA);
    }

    /** {@code biblioteca}: the shared object, which the first one of a process loads. */
    public Cupom(String diretorio, boolean transliterar, String biblioteca) {
        super(diretorio, transliterar, biblioteca);
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

    /** The receipt text of a sale without a return, 48 columns wide. */
    public String imprimir(String arquivoXml) {
        return imprimir(arquivoXml, "OFFLINE", 48, "");
    }

    /**
     * The receipt text of a sale with its printer mark-up.
     *
     * @param retorno the file of the tax authority's answer, or "OFFLINE"
     * @param colunas 42 or 48
     * @param urlQrcode the content of the QR code, empty to have it built
     */
    public String imprimir(String arquivoXml, String retorno, int colunas, String urlQrcode) {
        return formatar(arquivoXml, retorno, urlQrcode, colunas, 1);
    }

    /** The same of a cancellation request. */
    public String imprimirCancelamento(String arquivoXml, String retorno, int colunas) {
        return formatar(arquivoXml, retorno, "", colunas, 5);
    }

    private String formatar(String xml, String retorno, String url, int colunas, int tipo) {
        return ler("GerarArquivoFormatadoNF_ZEL", tamanhoDoCupom(xml, retorno, url),
            (n, saida) -> n.GerarArquivoFormatadoNF_ZEL(Valores.caminho("arquivoXml", xml),
                Valores.caminho("arquivoRetorno", retorno), texto("urlQrcode", url), colunas, tipo,
                Valores.VAZIO, saida));
    }
}
