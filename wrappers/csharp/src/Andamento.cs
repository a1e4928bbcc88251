// SPDX-License-Identifier: MIT
using System;
using System.Collections.Generic;
using System.Linq;
using System.Text.RegularExpressions;

namespace Zel.Felbor {

/// <summary>Who a receipt in progress is for; <c>Tipo</c> is "cpf", "cnpj" or
/// "estrangeiro".</summary>
public sealed class ConsumidorLido {
    public string Tipo { get; internal set; }
    public string Documento { get; internal set; }
    public string Nome { get; internal set; }
    public string Email { get; internal set; }
}

/// <summary>Numbers as the library wrote them, with a point; <c>Desconto</c> and <c>Acrescimo</c> empty
/// for none.</summary>
public sealed class ItemLido {
    public string Numero { get; internal set; }
    public string Codigo { get; internal set; }
    public string Descricao { get; internal set; }
    public string Quantidade { get; internal set; }
    public string Unidade { get; internal set; }
    public string Preco { get; internal set; }
    public string Bruto { get; internal set; }
    public string Desconto { get; internal set; }
    public string Acrescimo { get; internal set; }
}

/// <summary><c>Forma</c> is its code, "01", <c>Nome</c> "Dinheiro".</summary>
public sealed class PagamentoLido {
    public string Forma { get; internal set; }
    public string Nome { get; internal set; }
    public string Valor { get; internal set; }
}

/// <summary>A receipt that is open, or closed and not yet followed by another: ArqPersist.bin, one
/// record a line, its kind in two digits, "|", of items and payments a number and "|", and elements as
/// the library writes them.</summary>
public sealed class Andamento {
    static readonly Dictionary<string, string> Formas =
        Tabelas.Formas.Split(';').Select(par => par.Split('=')).ToDictionary(p => p[0], p => p[1]);

    readonly List<ItemLido> lista = new List<ItemLido>();
    readonly List<PagamentoLido> pagamentos = new List<PagamentoLido>();

    public Estado Estado { get; }
    /// <summary>Null without a consumer.</summary>
    public ConsumidorLido Consumidor { get; private set; }
    public IReadOnlyList<ItemLido> Lista => lista;
    public IReadOnlyList<PagamentoLido> Pagamentos => pagamentos;
    /// <summary>What the items add up to until the totals are made.</summary>
    public string Total { get; }
    public string Pago { get; }
    /// <summary>Empty when nothing is due.</summary>
    public string Falta { get; }
    /// <summary>Empty before it is paid.</summary>
    public string Troco { get; }

    /// <summary>Of a file in ISO-8859-1. A last record without its end does not count: the process died
    /// while it was written.</summary>
    internal Andamento(string arquivo, Estado estado, string troco) {
        Estado = estado;
        Troco = troco;
        string total = "";
        string[] registros = arquivo.Split(new[] { "\r\n" }, StringSplitOptions.None);
        for (int i = 0; i + 1 < registros.Length; ++i) {
            Match inicio = Regex.Match(registros[i], @"^0(?:([1346])\||([25])\|([^|]*)\|)");
            if (!inicio.Success)
                throw new EntradaRecusada("ArqPersist.bin: o registro " + (i + 1) + " não é de um cupom");
            string conteudo = registros[i].Substring(inicio.Length);
            switch (registros[i][1]) {
                case '1': Consumidor = LerConsumidor(conteudo); break;
                case '2': lista.Add(LerItem(inicio.Groups[3].Value, conteudo)); break;
                case '3': total = Texto(conteudo, "ICMSTot", "vNF"); break;
                case '5': pagamentos.Add(LerPagamento(conteudo)); break;
            }
        }
        long devido = total != "" ? Centavos(total)
            : lista.Sum(i => Centavos(i.Bruto) + Centavos(i.Acrescimo) - Centavos(i.Desconto));
        long pago = pagamentos.Sum(p => Centavos(p.Valor));
        Total = Moeda(devido);
        Pago = Moeda(pago);
        Falta = total == "" ? "" : SeHouver(devido - pago);
    }

    static ConsumidorLido LerConsumidor(string abertura) {
        foreach (string nome in new[] { "CPF", "CNPJ", "idEstrangeiro" }) {
            string documento = Texto(abertura, "dest", nome);
            if (documento == "") continue;
            string tipo = nome == "idEstrangeiro" ? "estrangeiro" : nome.ToLowerInvariant();
            return new ConsumidorLido { Tipo = tipo, Documento = documento,
                                        Nome = Texto(abertura, "dest", "xNome"),
                                        Email = Texto(abertura, "dest", "email") };
        }
        return null;
    }

    static ItemLido LerItem(string numero, string conteudo) {
        Func<string, string> campo = nome => Texto(conteudo, "prod", nome);
        Func<string, string> soma = nome => SeHouver(Textos(conteudo, "prod", nome).Sum(Centavos));
        return new ItemLido { Numero = numero, Codigo = campo("cProd"), Descricao = campo("xProd"),
                              Quantidade = campo("qCom"), Unidade = campo("uCom"),
                              Preco = campo("vUnCom"), Bruto = campo("vProd"),
                              Desconto = soma("vDesc"), Acrescimo = soma("vOutro") };
    }

    static PagamentoLido LerPagamento(string conteudo) {
        string forma = Texto(conteudo, "pag", "tPag");
        return new PagamentoLido { Forma = forma, Nome = Formas.ContainsKey(forma) ? Formas[forma] : forma,
                                   Valor = Texto(conteudo, "pag", "vPag") };
    }

    /// <summary>Of all elements of that name within the group.</summary>
    static IEnumerable<string> Textos(string conteudo, string grupo, string nome) {
        int abre = conteudo.IndexOf("<" + grupo + ">", StringComparison.Ordinal);
        int fecha = conteudo.IndexOf("</" + grupo + ">", Math.Max(abre, 0), StringComparison.Ordinal);
        if (abre < 0 || fecha < 0) return new string[0];
        return Regex.Matches(conteudo.Substring(abre, fecha - abre), "<" + nome + ">([^<]*)</" + nome + ">")
            .Cast<Match>().Select(m => Regex.Replace(
                m.Groups[1].Value, "&(amp|lt|gt|quot|apos|#[0-9]{1,7}|#x[0-9A-Fa-f]{1,6});", Referencia));
    }

    static string Texto(string conteudo, string grupo, string nome) {
        return Textos(conteudo, grupo, nome).FirstOrDefault() ?? "";
    }

    static string Referencia(Match achada) {
        string nome = achada.Groups[1].Value;
        int nomeada = Array.IndexOf(new[] { "amp", "lt", "gt", "quot", "apos" }, nome);
        if (nomeada >= 0) return "&<>\"'".Substring(nomeada, 1);
        int ponto = nome[1] == 'x' ? Convert.ToInt32(nome.Substring(2), 16) : int.Parse(nome.Substring(1));
        bool existe = ponto > 0 && ponto <= 0x10FFFF && (ponto < 0xD800 || ponto > 0xDFFF);
        return existe ? char.ConvertFromUtf32(ponto) : achada.Value;
    }

    /// <summary>A text that is no number is nothing.</summary>
    static long Centavos(string texto) {
        Match numero = Regex.Match(texto, @"^([0-9]{1,13})(?:\.([0-9]{0,10}))?\z");
        if (!numero.Success) return 0;
        return long.Parse(numero.Groups[1].Value + (numero.Groups[2].Value + "00").Substring(0, 2));
    }

    static string Moeda(long centavos) {
        long positivos = Math.Max(centavos, 0);
        return positivos / 100 + "." + (positivos % 100).ToString("00");
    }

    static string SeHouver(long centavos) {
        return centavos > 0 ? Moeda(centavos) : "";
    }
}

}
