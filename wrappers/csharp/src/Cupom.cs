// SPDX-License-Identifier: MIT
using System.Collections.Generic;
using System.Text;

namespace Zel.Felbor {

/// <summary>The receipt of one data directory, which is the process's. Text is converted to
/// ISO-8859-1 strictly, file names are not; calls from several threads are made one after the other.
/// What each function does, and in which state, is in ZEL_FelborFramework.h.</summary>
public sealed class Cupom : Operacoes {
    /// <param name="diretorio">absolute, and exists; the library keeps its files there</param>
    /// <param name="transliterar">typographic quotes, dashes, ellipses and blanks become plain
    /// ones</param>
    /// <param name="biblioteca">the shared object, which the first one of a process loads</param>
    /// <param name="cortar">what does not fit is handed over: the library cuts it or leaves it
    /// out</param>
    public Cupom(string diretorio, bool transliterar = false,
                 string biblioteca = "libZEL_FelborFramework.so.1", bool cortar = false)
        : base(diretorio, transliterar, biblioteca, cortar) {}

    /// <summary>regAlterarValor_ZEL; a value that the key does not keep whole is taken back and
    /// refused.</summary>
    public override void AlterarValor(string chave, string valor) {
        string antes = Corta ? "" : LerOuVazio(chave);
        base.AlterarValor(chave, valor);
        if (Corta) return;
        string guardado = RetornarValor(chave);
        byte[] dado = Texto("valor", valor);
        if (guardado == Encoding.GetEncoding("iso-8859-1").GetString(dado, 0, dado.Length - 1)) return;
        base.AlterarValor(chave, antes);
        throw new EntradaRecusada("valor: " + (dado.Length - 1) + " caracteres, de que " + chave +
                                  " guarda " + guardado.Length + "; nada mudou");
    }

    /// <summary>That there is no such key, the function that changes it says.</summary>
    string LerOuVazio(string chave) {
        try {
            return RetornarValor(chave);
        } catch (Recusa) {
            return "";
        }
    }

    /// <summary>The receipt in progress, for a till that was restarted; one that was closed is there
    /// until the next is opened. Null without a receipt. The library completes first what a process
    /// that died left behind.</summary>
    public Andamento LerAndamento() {
        string troco = RetornarValor(@"CONFIGURACAO\TrocoUltimaNFCe");
        Estado estado = VerificarStatus();
        if (estado < Estado.Aberto || estado > Estado.Encerrado) return null;
        return new Andamento(LerPersistido(), estado, estado < Estado.Pago ? "" : troco);
    }

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
    /// <param name="retorno">the file of the tax authority's answer, which has to authorize the sale,
    /// or "OFFLINE" for a document of contingency or without fiscal value</param>
    /// <param name="colunas">42 or 48</param>
    /// <param name="urlQrcode">the content of the QR code, empty to have it built</param>
    /// <param name="semAutorizacao">lays any other document out, too, for a trial</param>
    public string Imprimir(string arquivoXml, string retorno, int colunas = 48, string urlQrcode = "",
                           bool semAutorizacao = false) {
        return Formatar(arquivoXml, retorno, urlQrcode, colunas, 1, semAutorizacao);
    }

    /// <summary>The same of a cancellation request, which the answer has to have registered.</summary>
    public string ImprimirCancelamento(string arquivoXml, string retorno, int colunas = 48,
                                       bool semAutorizacao = false) {
        return Formatar(arquivoXml, retorno, "", colunas, 5, semAutorizacao);
    }

    string Formatar(string xml, string retorno, string url, int colunas, int tipo,
                    bool semAutorizacao) {
        byte[] documento = Valores.Caminho("arquivoXml", xml);
        byte[] resposta = Valores.Caminho("arquivoRetorno", retorno);
        byte[] qrcode = Texto("urlQrcode", url);
        string[] lidos = LerParaImprimir(xml, retorno, tipo == 5, semAutorizacao);
        return Ler("GerarArquivoFormatadoNF_ZEL", TamanhoDoCupom(lidos, url),
                   saida => Nativa.GerarArquivoFormatadoNF_ZEL(documento, resposta, qrcode, colunas,
                                                               tipo, Valores.Vazio, saida));
    }
}

}
