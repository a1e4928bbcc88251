// SPDX-License-Identifier: MIT
using System;
using System.Collections.Generic;
using System.IO;
using System.Runtime.InteropServices;
using System.Text;

namespace Zel.Felbor {

/// <summary>The library, loaded once for the process, and one call of it at a time.</summary>
public abstract class Chamador {
    static readonly object Trava = new object();
    static string doProcesso;

    readonly string diretorio;
    readonly bool transliterar, cortar;

    [DllImport("libc.so.6")]
    static extern int setenv(byte[] nome, byte[] valor, int substituir);

    [DllImport("libdl.so.2")]
    static extern IntPtr dlopen(byte[] nome, int modo);

    [DllImport("libdl.so.2")]
    static extern IntPtr dlerror();

    internal Chamador(string diretorio, bool transliterar, string biblioteca, bool cortar) {
        if (!Path.IsPathRooted(Valores.Exigir("diretorio", diretorio)))
            throw new EntradaRecusada("o diretório não é um caminho absoluto: " + diretorio);
        if (!Directory.Exists(diretorio))
            throw new EntradaRecusada("o diretório não existe: " + diretorio + "; crie-o (mkdir), com " +
                                      "permissão de escrita para quem roda o caixa");
        this.diretorio = diretorio.Length > 1 ? diretorio.TrimEnd('/') : diretorio;
        this.transliterar = transliterar;
        this.cortar = cortar;
        Carregar(this.diretorio, biblioteca);
    }

    /// <summary>The library reads ZEL_DIRETORIO once, so that the first directory is the process's.
    /// It is set in the environment of C, which the one of .NET need not be. The declarations name the
    /// library by its soname: one that is loaded under that name, from wherever, is the one they
    /// find.</summary>
    static void Carregar(string diretorio, string biblioteca) {
        const int agora = 2, global = 0x100; // RTLD_NOW, RTLD_GLOBAL
        lock (Trava) {
            if (doProcesso == null) {
                setenv(Valores.Ascii("ZEL_DIRETORIO"), Valores.Caminho("diretorio", diretorio), 1);
                Motivos.Ouvir();
                if (dlopen(Valores.Caminho("biblioteca", biblioteca), agora | global) == IntPtr.Zero)
                    throw new BibliotecaAusente("a biblioteca não pôde ser carregada: " +
                                                Marshal.PtrToStringAnsi(dlerror()) + ". " +
                                                Tabelas.Ausente);
                doProcesso = diretorio;
            }
            if (doProcesso != diretorio)
                throw new EntradaRecusada("este processo já trabalha em " + doProcesso);
        }
    }

    /// <summary>A file of the data directory: "documentosEnvio.xml".</summary>
    public string Arquivo(string nome) {
        return diretorio + "/" + nome;
    }

    internal bool Corta {
        get { return cortar; }
    }

    internal byte[] Texto(string argumento, string valor) {
        return Valores.Texto(argumento, valor, transliterar);
    }

    /// <summary>An empty text stands for none.</summary>
    internal byte[] Texto(string argumento, string valor, int minimo, int maximo) {
        byte[] escrito = Texto(argumento, valor);
        if (escrito.Length > 1 && !cortar)
            Valores.ConferirTamanho(argumento, escrito.Length - 1, minimo, maximo);
        return escrito;
    }

    internal byte[] Obrigatorio(string argumento, string valor, int minimo, int maximo) {
        byte[] escrito = Texto(argumento, valor, minimo, maximo);
        if (escrito.Length == 1 && !cortar) Valores.ConferirTamanho(argumento, 0, minimo, maximo);
        return escrito;
    }

    /// <summary>A CPF or a CNPJ, or none.</summary>
    internal byte[] Documento(string argumento, string valor) {
        byte[] escrito = Texto(argumento, valor);
        return cortar || escrito.Length == 1 ? escrito
                                             : Felbor.Identificacao.Documento(argumento, valor);
    }

    internal byte[] Identificacao(string funcao, Consumidor consumidor) {
        return Felbor.Identificacao.De(funcao, consumidor, cortar);
    }

    /// <summary>The answer; below <c>menor</c> it is a refusal, with what <c>texto</c> reads.</summary>
    static int Invocar(string funcao, Func<int> chamada, int menor, Func<string> texto) {
        lock (Trava) {
            int resposta = chamada();
            if (resposta >= menor) return resposta;
            throw new Recusa(funcao, resposta, texto(), Motivos.De(funcao, resposta));
        }
    }

    internal Codigo Chamar(string funcao, Func<int> chamada) {
        return (Codigo)Invocar(funcao, chamada, 1, () => "");
    }

    internal Estado VerEstado(string funcao, Func<int> chamada) {
        return (Estado)Invocar(funcao, chamada, 0, () => "");
    }

    /// <summary>The text that comes back in a buffer of <c>tamanho</c> bytes.</summary>
    internal string Ler(string funcao, long tamanho, Func<byte[], int> leitura) {
        return Ler(funcao, new byte[tamanho], leitura, Latin1);
    }

    /// <summary>Directories in, the path of the last file out.</summary>
    internal string GravarEm(string funcao, IList<string> lista, Func<byte[], int> leitura) {
        byte[] entrada = Valores.Diretorios("diretorios", lista);
        var saida = new byte[Math.Max(Tabelas.TamanhoDiretorios, entrada.Length + 64)];
        entrada.CopyTo(saida, 0);
        return Ler(funcao, saida, leitura, Encoding.UTF8.GetString);
    }

    static string Latin1(byte[] bytes, int inicio, int quantos) {
        var texto = new char[quantos];
        for (int i = 0; i < quantos; ++i) texto[i] = (char)bytes[inicio + i];
        return new string(texto);
    }

    static string Ler(string funcao, byte[] saida, Func<byte[], int> leitura,
                      Func<byte[], int, int, string> decodificar) {
        Func<string> ler = () => decodificar(saida, 0, Array.IndexOf<byte>(saida, 0));
        Invocar(funcao, () => leitura(saida), 1, ler);
        return ler();
    }

    internal long BytesDe(string nome) {
        var arquivo = new FileInfo(Arquivo(nome));
        return arquivo.Exists ? arquivo.Length : 0;
    }

    internal long TamanhoDoUltimo() {
        return Math.Max(Tabelas.TamanhoCupom, BytesDe("ultimadanfe.bin") + 1);
    }

    /// <summary>A document and its return in ISO-8859-1, the latter null without one ("OFFLINE"), once
    /// the receipt may be printed.</summary>
    internal static string[] LerParaImprimir(string documento, string retorno, bool cancelamento,
                                             bool semAutorizacao) {
        string xml = LerArquivo(documento);
        string resposta = retorno == "OFFLINE" ? null : LerArquivo(retorno);
        if (!semAutorizacao) Autorizacao.Conferir(xml, resposta, cancelamento);
        return new[] { xml, resposta };
    }

    /// <summary>Bytes that the receipt text of a document takes at most. A scrambled file cannot be
    /// counted: its items are at least 256 bytes and its payments 40, as the library writes
    /// them.</summary>
    internal long TamanhoDoCupom(string[] lidos, string url) {
        string xml = lidos[0];
        long doRetorno = lidos[1] == null ? 0 : lidos[1].Length;
        long itens = xml.Length / 256 + 1, pagamentos = xml.Length / 40 + 1;
        long maior = 1024, mensagem = xml.Length;
        if (xml.StartsWith("<", StringComparison.Ordinal)) {
            itens = pagamentos = maior = 0;
            foreach (string parte in xml.Split('<')) {
                if (parte.StartsWith("det", StringComparison.Ordinal)) ++itens;
                if (parte.StartsWith("pag", StringComparison.Ordinal)) ++pagamentos;
                maior = Math.Max(maior, parte.Length);
            }
            mensagem = maior;
        }
        long via = 16384 + 32 * maior + 2 * (mensagem + BytesDe("ArqPersist.bin")) + doRetorno +
                   url.Length + itens * (300 + maior) + pagamentos * 100;
        return Math.Max(Tabelas.TamanhoCupom, 2 * via);
    }

    /// <summary>ArqPersist.bin in ISO-8859-1.</summary>
    internal string LerPersistido() {
        const long maior = 16 << 20;
        if (BytesDe("ArqPersist.bin") > maior) throw new EntradaRecusada("ArqPersist.bin: grande demais");
        return LerArquivo(Arquivo("ArqPersist.bin"));
    }

    static string LerArquivo(string nome) {
        try {
            byte[] bytes = File.ReadAllBytes(nome);
            return Latin1(bytes, 0, bytes.Length);
        } catch (Exception e) when (e is IOException || e is UnauthorizedAccessException) {
            throw new EntradaRecusada(nome + ": não pôde ser lido");
        }
    }
}

}
