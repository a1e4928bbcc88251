// SPDX-License-Identifier: MIT
using System;
using System.Linq;
using System.Text.RegularExpressions;

namespace Zel.Felbor {

/// <summary>Whether a receipt may be given to a customer: of a document that the authority authorized,
/// or of one of contingency; without fiscal value nothing is promised.</summary>
internal static class Autorizacao {
    const string Contorno = "; para um ensaio, semAutorizacao";

    /// <summary>Of the sending component's form, or of the authority's, whose last status is the
    /// document's.</summary>
    static string Situacao(string retorno) {
        foreach (string marca in new[] { "sitcodigo", "cstat" }) {
            Match vista = Regex.Match(retorno, "<" + marca + @">\s*([0-9]*)",
                                      RegexOptions.IgnoreCase | RegexOptions.RightToLeft |
                                          RegexOptions.CultureInvariant);
            if (vista.Success) return vista.Groups[1].Value;
        }
        return "";
    }

    /// <summary>Texts in ISO-8859-1; <c>retorno</c> is null for "OFFLINE".</summary>
    internal static void Conferir(string documento, string retorno, bool cancelamento) {
        if (retorno == null) {
            bool contingencia = !documento.StartsWith("<", StringComparison.Ordinal) ||
                                Regex.IsMatch(documento, "Id=\"NFe[0-9]{34}9");
            if (documento.Contains("<tpAmb>1</tpAmb>") && !contingencia)
                throw new EntradaRecusada("retorno: OFFLINE só serve a um documento de contingência; " +
                                          "este ainda não tem a resposta da SEFAZ" + Contorno);
            return;
        }
        string situacao = Situacao(retorno);
        if ((cancelamento ? new[] { "135", "155" } : new[] { "100", "150" }).Contains(situacao)) return;
        throw new EntradaRecusada("retorno: a SEFAZ não " +
                                  (cancelamento ? "registrou o cancelamento" : "autorizou a venda") +
                                  " (SitCodigo " + (situacao == "" ? "ausente" : situacao) + ")" +
                                  Contorno);
    }
}

}
