// SPDX-License-Identifier: MIT
using System.Collections.Generic;

namespace Zel.Felbor {

/// <summary>The receipt of one data directory, which is the process's. Text is converted to
/// ISO-8859-1 strictly, file names are not; calls from several threads are made one after the other.
/// What each function does, and in which state, is in ZEL_FelborFramework.h.</summary>
public sealed class Cupom : Operacoes {
    /// <param name="diretorio">absolute, and exists; the library keeps its files there</param>
    /// <param name="transliterar">typographic quotes, dashes, ellipses and blanks become plain
    /// ones</param>
    /// <param name="biblioteca">the shared object, which the first one of a process loads</param>
    public Cupom(string diretorio, bool transliterar = false,
                 string biblioteca = "libZEL_FelborFramework.so.1")
        : base(diretorio, transliterar, biblioteca) {}

    /// <summary>aCFContingenciaUltimaNota_ZEL of kind 1 (as the closing does), 3 or 5 (in
    /// contingency); answers the document.</summary>
    public string Reemitir(int tipo) {
        long tamanho = Tabelas.TamanhoDocumento + 65536 + 2 * BytesDe("ArqPersist.bin");
        return Ler("aCFContingenciaUltimaNota_ZEL", tamanho,
                   saida => Nativa.aCFContingenciaUltimaNota_ZEL(tipo, saida));
    }

    /// <summary>aCFContingenciaUltimaNota_ZEL of kind 4: KEY.ctg in up to three directories; answers
    /// the path of the last file.</summary>
    public string Contingencia(IList<string> diretorios) {
        return GravarEm("aCFContingenciaUltimaNota_ZEL", diretorios,
                        saida => Nativa.aCFContingenciaUltimaNota_ZEL(4, saida));
    }

    /// <summary>The receipt text of a sale with its printer mark-up.</summary>
    /// <param name="retorno">the file of the tax authority's answer, or "OFFLINE"</param>
    /// <param name="colunas">42 or 48</param>
    /// <param name="urlQrcode">the content of the QR code, empty to have it built</param>
    public string Imprimir(string arquivoXml, string retorno = "OFFLINE", int colunas = 48,
                           string urlQrcode = "") {
        return Formatar(arquivoXml, retorno, urlQrcode, colunas, 1);
    }

    /// <summary>The same of a cancellation request.</summary>
    public string ImprimirCancelamento(string arquivoXml, string retorno = "OFFLINE",
                                       int colunas = 48) {
        return Formatar(arquivoXml, retorno, "", colunas, 5);
    }

    string Formatar(string xml, string retorno, string url, int colunas, int tipo) {
        byte[] documento = Valores.Caminho("arquivoXml", xml);
        byte[] resposta = Valores.Caminho("arquivoRetorno", retorno);
        return Ler("GerarArquivoFormatadoNF_ZEL", TamanhoDoCupom(xml, retorno, url),
                   saida => Nativa.GerarArquivoFormatadoNF_ZEL(
                       documento, resposta, Texto("urlQrcode", url), colunas, tipo, Valores.Vazio,
                       saida));
    }
}

}
