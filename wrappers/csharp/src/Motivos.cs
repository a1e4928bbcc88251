// SPDX-License-Identifier: MIT
using System;
using System.Diagnostics;
using System.IO;
using System.Runtime.InteropServices;
using System.Text;

namespace Zel.Felbor {

/// <summary>Why the library refused: an anonymous file in memory, to which it writes what it refused
/// last.</summary>
internal static class Motivos {
    internal static int Descritor = -1;

    [DllImport("libc.so.6")]
    static extern int setenv(byte[] nome, byte[] valor, int substituir);

    [DllImport("libc.so.6")]
    static extern int memfd_create(byte[] nome, uint modo);

    [DllImport("libc.so.6")]
    static extern IntPtr readlink(byte[] caminho, byte[] nome, IntPtr tamanho);

    internal static void Ouvir() {
        const uint fechaNoExec = 1; // MFD_CLOEXEC
        try {
            if (Descritor < 0) Descritor = memfd_create(Valores.Ascii(Tabelas.Descritor), fechaNoExec);
            setenv(Valores.Ascii("ZEL_LOG_DESCRITOR"), Valores.Ascii(Descritor.ToString()), 1);
        } catch (EntryPointNotFoundException) {
            Descritor = -1; // a system without it: refusals come without a reason
        }
    }

    /// <summary>The reason that the call just made was refused for; empty when the descriptor is no
    /// longer that file, or holds what another process wrote.</summary>
    internal static string De(string funcao, int codigo) {
        string arquivo = "/proc/self/fd/" + Descritor;
        var nome = new byte[100];
        long lidos = (long)readlink(Valores.Ascii(arquivo), nome, (IntPtr)nome.Length);
        string esperado = "/memfd:" + Tabelas.Descritor + " (deleted)";
        if (lidos != esperado.Length || Encoding.ASCII.GetString(nome, 0, (int)lidos) != esperado)
            return "";
        try {
            return Motivo(Encoding.UTF8.GetString(Ler(arquivo)), funcao, codigo);
        } catch (Exception e) when (e is IOException || e is UnauthorizedAccessException) {
            return "";
        }
    }

    static byte[] Ler(string arquivo) {
        using (var fluxo = new FileStream(arquivo, FileMode.Open, FileAccess.Read, FileShare.ReadWrite)) {
            var bytes = new byte[4096];
            Array.Resize(ref bytes, fluxo.Read(bytes, 0, bytes.Length));
            return bytes;
        }
    }

    static string Motivo(string linha, string funcao, int codigo) {
        string inicio;
        using (Process eu = Process.GetCurrentProcess())
            inicio = "[" + eu.Id + "] " + funcao + ": " + codigo + " ";
        int lugar = linha.StartsWith(inicio, StringComparison.Ordinal)
            ? linha.IndexOf(": ", inicio.Length, StringComparison.Ordinal) : -1;
        return lugar < 0 ? "" : linha.Substring(lugar + 2).Split('\n')[0];
    }
}

}
