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
    readonly bool transliterar;

    [DllImport("libc.so.6")]
    static extern int setenv(byte[] nome, byte[] valor, int substituir);

    [DllImport("libdl.so.2")]
    static extern IntPtr dlopen(byte[] nome, int modo);

    internal Chamador(string diretorio, bool transliterar, string biblioteca) {
        if (!Path.IsPathRooted(diretorio))
            throw new EntradaRecusada("o diretório não é um caminho absoluto: " + diretorio);
        if (!Directory.Exists(diretorio))
            throw new EntradaRecusada("o diretório não existe: " + diretorio);
        this.diretorio = diretorio.Length > 1 ? diretorio.TrimEnd('/') : diretorio;
        this.transliterar = transliterar;
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
                if (dlopen(Valores.Caminho("biblioteca", biblioteca), agora | global) == IntPtr.Zero)
                    throw new DllNotFoundException(biblioteca);
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

    internal byte[] Texto(string argumento, string valor) {
        return Valores.Texto(argumento, valor, transliterar);
    }

    internal Codigo Chamar(string funcao, Func<int> chamada) {
        int resposta;
        lock (Trava) resposta = chamada();
        if (resposta <= 0) throw new Recusa(funcao, resposta, "");
        return (Codigo)resposta;
    }

    internal Estado VerEstado(string funcao, Func<int> chamada) {
        int resposta;
        lock (Trava) resposta = chamada();
        if (resposta < 0) throw new Recusa(funcao, resposta, "");
        return (Estado)resposta;
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
        int resposta;
        lock (Trava) resposta = leitura(saida);
        string lido = decodificar(saida, 0, Array.IndexOf<byte>(saida, 0));
        if (resposta <= 0) throw new Recusa(funcao, resposta, lido);
        return lido;
    }

    internal long BytesDe(string nome) {
        var arquivo = new FileInfo(Arquivo(nome));
        return arquivo.Exists ? arquivo.Length : 0;
    }

    internal long TamanhoDoUltimo() {
        return Math.Max(Tabelas.TamanhoCupom, BytesDe("ultimadanfe.bin") + 1);
    }

    /// <summary>Bytes that the receipt text of a document takes at most. A scrambled file cannot be
    /// counted: its items are at least 256 bytes and its payments 40, as the library writes
    /// them.</summary>
    internal long TamanhoDoCupom(string documento, string retorno, string url) {
        byte[] xml = LerArquivo(documento);
        long doRetorno = retorno == "OFFLINE" ? 0 : LerArquivo(retorno).Length;
        long itens = xml.Length / 256 + 1, pagamentos = xml.Length / 40 + 1;
        long maior = 1024, mensagem = xml.Length;
        if (xml.Length > 0 && xml[0] == '<') {
            itens = pagamentos = maior = 0;
            foreach (string parte in Latin1(xml, 0, xml.Length).Split('<')) {
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

    static byte[] LerArquivo(string nome) {
        try {
            return File.ReadAllBytes(nome);
        } catch (Exception e) when (e is IOException || e is UnauthorizedAccessException) {
            throw new EntradaRecusada(nome + ": não pôde ser lido");
        }
    }
}

}
