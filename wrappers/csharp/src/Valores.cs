// SPDX-License-Identifier: MIT
using System;
using System.Collections.Generic;
using System.Globalization;
using System.Text;

namespace Zel.Felbor {

/// <summary>Whatever this library refuses.</summary>
public class ErroZel : Exception {
    internal ErroZel(string mensagem) : base(mensagem) {}
}

/// <summary>An argument that cannot be handed to the library; nothing was called.</summary>
public class EntradaRecusada : ErroZel {
    internal EntradaRecusada(string mensagem) : base(mensagem) {}
}

/// <summary>A character that ISO-8859-1 does not have.</summary>
public sealed class TextoInvalido : EntradaRecusada {
    /// <summary>The argument's name in the header.</summary>
    public string Argumento { get; }
    /// <summary>The code point.</summary>
    public int Caractere { get; }
    /// <summary>Counted in characters, from 1.</summary>
    public int Posicao { get; }

    internal TextoInvalido(string argumento, int caractere, int posicao)
        : base(argumento + ": o caractere" + Glifo(caractere) + " (U+" + caractere.ToString("X4") +
               ") na posição " + posicao + " não existe em ISO-8859-1") {
        Argumento = argumento;
        Caractere = caractere;
        Posicao = posicao;
    }

    static string Glifo(int caractere) {
        bool visivel = caractere >= 0xA0 && (caractere < 0xD800 || caractere > 0xDFFF);
        return visivel ? " \"" + char.ConvertFromUtf32(caractere) + "\"" : "";
    }
}

/// <summary>The shared object was not found, or cannot be loaded.</summary>
public sealed class BibliotecaAusente : ErroZel {
    internal BibliotecaAusente(string mensagem) : base(mensagem) {}
}

/// <summary>What the library refused.</summary>
public sealed class Recusa : ErroZel {
    /// <summary>The function's name in the header.</summary>
    public string Funcao { get; }
    public Codigo Codigo { get; }
    /// <summary>"ZEL_CUPOM_EM_ANDAMENTO"</summary>
    public string Nome { get; }
    public string Significado { get; }
    public string Remedio { get; }
    /// <summary>What the function wrote all the same: a receipt whose PDF failed.</summary>
    public string Texto { get; }
    /// <summary>Which field, what was given and what is allowed, or file and system error; may be
    /// empty.</summary>
    public string Motivo { get; }

    internal Recusa(string funcao, int codigo, string texto, string motivo)
        : this(funcao, codigo, texto, motivo, Tabelas.Descrever(codigo) ??
               new[] { "DESCONHECIDO", "Código que esta camada não conhece.", "" }) {}

    Recusa(string funcao, int codigo, string texto, string motivo, string[] descricao)
        : base(funcao + ": " + descricao[0] + " (" + codigo + "): " + descricao[1] + " " +
               (motivo == "" ? "" : "Motivo: " + motivo + ". ") + descricao[2]) {
        Funcao = funcao;
        Codigo = (Codigo)codigo;
        Nome = descricao[0];
        Significado = descricao[1];
        Remedio = descricao[2];
        Texto = texto;
        Motivo = motivo;
    }
}

/// <summary>What is converted on the way to the library; each result ends in a zero byte.</summary>
internal static class Valores {
    internal static readonly byte[] Vazio = { 0 };

    /// <summary>ISO-8859-1, strictly; letters written in two parts are put together first. Refused are
    /// characters beyond U+00FF, U+0000, and the controls U+0080 to U+009F, which are nearly always
    /// another character set taken for this one.</summary>
    internal static byte[] Texto(string argumento, string valor, bool transliterar) {
        valor = Compor(Exigir(argumento, valor));
        var bytes = new List<byte>(valor.Length + 1);
        int posicao = 0;
        for (int i = 0; i < valor.Length; ++i) {
            bool par = i + 1 < valor.Length && char.IsSurrogatePair(valor[i], valor[i + 1]);
            int c = par ? char.ConvertToUtf32(valor[i], valor[i + 1]) : valor[i];
            ++posicao;
            if (par) ++i;
            string outro = transliterar ? Tabelas.Transliterar(c) : null;
            if (outro != null) {
                foreach (char simples in outro) bytes.Add((byte)simples);
            } else if (c > 0xFF || c == 0 || (c >= 0x80 && c < 0xA0)) {
                throw new TextoInvalido(argumento, c, posicao);
            } else {
                bytes.Add((byte)c);
            }
        }
        bytes.Add(0);
        return bytes.ToArray();
    }

    /// <summary>Half a character is no text for .NET, and is refused further on.</summary>
    static string Compor(string valor) {
        try {
            return valor.Normalize(NormalizationForm.FormC);
        } catch (ArgumentException) {
            return valor;
        }
    }

    /// <summary>Nothing that a function needs is null.</summary>
    internal static T Exigir<T>(string argumento, T valor) where T : class {
        if (valor == null) throw new EntradaRecusada(argumento + ": nulo");
        return valor;
    }

    /// <summary>A text that the function would cut, or leave out.</summary>
    internal static void ConferirTamanho(string argumento, int tamanho, int minimo, int maximo) {
        if (tamanho >= minimo && tamanho <= maximo) return;
        string entre = minimo > 0 ? "de " + minimo + " a " + maximo : "até " + maximo;
        throw new EntradaRecusada(argumento + ": " + tamanho + " caracteres; permitido: " +
                                  (minimo == maximo ? "exatamente " + maximo : entre));
    }

    internal static int Inteiro(string argumento, int valor, int minimo = int.MinValue,
                                int maximo = int.MaxValue) {
        if (valor < minimo || valor > maximo)
            throw new EntradaRecusada(argumento + ": " + valor + " não está entre " + minimo + " e " +
                                      maximo);
        return valor;
    }

    internal static byte[] Ascii(string valor) {
        return Encoding.ASCII.GetBytes(valor + "\0");
    }

    /// <summary>With a point, at least two decimals and at most <c>casas</c>; null is an empty
    /// text.</summary>
    internal static byte[] Decimal(string argumento, decimal? numero, int casas) {
        return numero == null ? Vazio : Ascii(Escrever(argumento, numero.Value, casas));
    }

    internal static string Escrever(string argumento, decimal numero, int casas) {
        string escrito = numero.ToString(CultureInfo.InvariantCulture);
        int ponto = escrito.IndexOf('.');
        string inteiros = ponto < 0 ? escrito : escrito.Substring(0, ponto);
        string decimais = ponto < 0 ? "" : escrito.Substring(ponto + 1).TrimEnd('0');
        escrito = inteiros + "." + decimais.PadRight(2, '0');
        if (decimais.Length > casas)
            throw new EntradaRecusada(argumento + ": " + escrito + " tem mais de " + casas +
                                      " casas decimais");
        if (escrito.Length > 15)
            throw new EntradaRecusada(argumento + ": " + escrito + " passa de 15 caracteres");
        return escrito;
    }

    /// <summary>A file name is bytes of the file system, not ISO-8859-1.</summary>
    internal static byte[] Caminho(string argumento, string nome) {
        if (Exigir(argumento, nome).IndexOf('\0') >= 0)
            throw new EntradaRecusada(argumento + ": nome de arquivo com U+0000");
        byte[] escrito = Encoding.UTF8.GetBytes(nome + "\0");
        if (escrito.Length > 301)
            throw new EntradaRecusada(argumento + ": nome de arquivo com mais de 300 bytes");
        return escrito;
    }

    /// <summary>Up to three directories of up to 300 bytes with their final "/", separated by
    /// "|".</summary>
    internal static byte[] Diretorios(string argumento, IList<string> lista) {
        if (Exigir(argumento, lista).Count < 1 || lista.Count > 3)
            throw new EntradaRecusada(argumento + ": de um a três diretórios");
        var nomes = new List<string>();
        foreach (string nome in lista) {
            string completo = nome.EndsWith("/", StringComparison.Ordinal) ? nome : nome + "/";
            Caminho(argumento, completo);
            if (completo.IndexOf('|') >= 0)
                throw new EntradaRecusada(argumento + ": diretório com |");
            nomes.Add(completo);
        }
        return Encoding.UTF8.GetBytes(string.Join("|", nomes) + "\0");
    }
}

/// <summary>The rate of an item: goods or service with its percentage, or none of it.</summary>
public sealed class Aliquota {
    public static readonly Aliquota Isento = new Aliquota("I", null);
    public static readonly Aliquota NaoIncidencia = new Aliquota("N", null);
    public static readonly Aliquota Substituicao = new Aliquota("F", null);

    readonly string tipo;
    readonly decimal? percentual;

    Aliquota(string tipo, decimal? percentual) {
        this.tipo = tipo;
        this.percentual = percentual;
    }

    public static Aliquota Mercadoria(decimal percentual) {
        return new Aliquota("T", percentual);
    }

    public static Aliquota Servico(decimal percentual) {
        return new Aliquota("S", percentual);
    }

    internal static byte[] Converter(string argumento, Aliquota valor) {
        return Valores.Exigir(argumento, valor).Converter(argumento);
    }

    /// <summary>"T1800", "S0500", "I".</summary>
    internal byte[] Converter(string argumento) {
        if (percentual == null) return Valores.Ascii(tipo);
        string escrito = Valores.Escrever(argumento, percentual.Value, 2);
        if (percentual < 0 || escrito.Length > 5)
            throw new EntradaRecusada(argumento + ": " + escrito + " não está entre 0 e 99,99");
        return Valores.Ascii(tipo + escrito.Replace(".", "").PadLeft(4, '0'));
    }
}

/// <summary>A discount or a surcharge, as an amount or as a percentage; null is none.</summary>
public sealed class Ajuste {
    readonly string tipo;
    readonly decimal valor;

    Ajuste(string tipo, decimal valor) {
        this.tipo = tipo;
        this.valor = valor;
    }

    public static Ajuste Desconto(decimal quantia) {
        return new Ajuste("D$", quantia);
    }

    public static Ajuste DescontoPercentual(decimal percentual) {
        return new Ajuste("D%", percentual);
    }

    public static Ajuste Acrescimo(decimal quantia) {
        return new Ajuste("A$", quantia);
    }

    public static Ajuste AcrescimoPercentual(decimal percentual) {
        return new Ajuste("A%", percentual);
    }

    /// <summary><c>sentido</c> is "D" or "A" where the function takes one of them alone, otherwise
    /// empty.</summary>
    internal static byte[] Tipo(string argumento, Ajuste ajuste, string sentido) {
        string tipo = ajuste == null ? "" : ajuste.tipo;
        if (!tipo.StartsWith(sentido, StringComparison.Ordinal))
            throw new EntradaRecusada(
                argumento + (sentido == "D" ? ": não é um desconto" : ": não é um acréscimo"));
        return Valores.Ascii(tipo);
    }

    /// <summary>An amount is in cents.</summary>
    internal static byte[] Valor(string argumento, Ajuste ajuste) {
        if (ajuste == null) return Valores.Vazio;
        return Valores.Decimal(argumento, ajuste.valor, ajuste.tipo[1] == '$' ? 2 : 4);
    }
}

}
