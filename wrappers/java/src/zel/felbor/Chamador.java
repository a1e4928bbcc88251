// SPDX-License-Identifier: MIT
package zel.felbor;

import com.sun.jna.Library;
import com.sun.jna.Memory;
import com.sun.jna.Native;
import com.sun.jna.Pointer;
import java.io.File;
import java.io.IOException;
import java.nio.charset.Charset;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.List;

/** The library, loaded once for the process, and one call of it at a time. */
abstract class Chamador {
    /** The environment of the process, which Java itself cannot change. */
    interface LibC extends Library {
        int setenv(byte[] nome, byte[] valor, int substituir);

        int memfd_create(byte[] nome, int modo);
    }

    interface Chamada {
        int em(Nativa nativa);
    }

    interface Leitura {
        int em(Nativa nativa, Pointer saida);
    }

    private static final Object TRAVA = new Object();
    private static Nativa nativa;
    private static String doProcesso;
    private static int motivos = -1; // the descriptor to which the library writes its reasons

    private final String diretorio;
    private final boolean transliterar;
    private final boolean cortar;

    Chamador(String diretorio, Opcoes opcoes) {
        File pasta = new File(Valores.exigir("diretorio", diretorio));
        if (!pasta.isAbsolute()) {
            throw new EntradaRecusada("o diretório não é um caminho absoluto: " + diretorio);
        }
        if (!pasta.isDirectory()) {
            throw new EntradaRecusada("o diretório não existe: " + diretorio
                + "; crie-o (mkdir), com permissão de escrita para quem roda o caixa");
        }
        this.diretorio = pasta.getPath();
        this.transliterar = opcoes.transliterar;
        this.cortar = opcoes.cortar;
        carregar(this.diretorio, opcoes.biblioteca);
    }

    /** The library reads ZEL_DIRETORIO once, so that the first directory is the process's. */
    private static void carregar(String diretorio, String biblioteca) {
        synchronized (TRAVA) {
            if (nativa == null) {
                LibC libc = Native.load("c", LibC.class);
                libc.setenv(Valores.ascii("ZEL_DIRETORIO"),
                    Valores.caminho("diretorio", diretorio), 1);
                ouvirMotivos(libc);
                try {
                    nativa = Native.load(biblioteca, Nativa.class);
                } catch (UnsatisfiedLinkError e) {
                    throw new BibliotecaAusente("a biblioteca não pôde ser carregada: "
                        + e.getMessage() + ". " + Tabelas.AUSENTE);
                }
                doProcesso = diretorio;
            }
            if (!doProcesso.equals(diretorio)) {
                throw new EntradaRecusada("este processo já trabalha em " + doProcesso);
            }
        }
    }

    /** An anonymous file in memory, to which the library writes what it refused last. */
    private static void ouvirMotivos(LibC libc) {
        final int fechaNoExec = 1; // MFD_CLOEXEC
        try {
            if (motivos < 0) {
                motivos = libc.memfd_create(Valores.ascii(Tabelas.DESCRITOR), fechaNoExec);
            }
            libc.setenv(Valores.ascii("ZEL_LOG_DESCRITOR"),
                Valores.ascii(Integer.toString(motivos)), 1);
        } catch (UnsatisfiedLinkError e) {
            motivos = -1; // a system without it: refusals come without a reason
        }
    }

    /**
     * The reason that the call just made was refused for; empty when the descriptor is no longer that
     * file, or holds what another process wrote.
     */
    private static String motivo(String funcao, int numero) {
        Path arquivo = Path.of("/proc/self/fd/" + motivos);
        String nome = "/memfd:" + Tabelas.DESCRITOR + " (deleted)";
        try {
            if (!Files.readSymbolicLink(arquivo).toString().equals(nome)) {
                return "";
            }
            String linha = new String(Files.readAllBytes(arquivo), StandardCharsets.UTF_8);
            String inicio = "[" + ProcessHandle.current().pid() + "] " + funcao + ": " + numero + ' ';
            if (!linha.startsWith(inicio) || linha.indexOf(": ", inicio.length()) < 0) {
                return "";
            }
            return linha.substring(linha.indexOf(": ", inicio.length()) + 2).split("\n")[0];
        } catch (IOException e) {
            return "";
        }
    }

    /** For the tests: the number, which a program may close. */
    static int descritorDosMotivos() {
        return motivos;
    }

    /** A file of the data directory: "documentosEnvio.xml". */
    public String arquivo(String nome) {
        return diretorio + '/' + nome;
    }

    boolean corta() {
        return cortar;
    }

    byte[] texto(String argumento, String valor) {
        return Valores.texto(argumento, valor, transliterar);
    }

    /** An empty text stands for none. */
    byte[] texto(String argumento, String valor, int minimo, int maximo) {
        byte[] escrito = texto(argumento, valor);
        if (escrito.length > 1 && !cortar) {
            Valores.conferirTamanho(argumento, escrito.length - 1, minimo, maximo);
        }
        return escrito;
    }

    byte[] obrigatorio(String argumento, String valor, int minimo, int maximo) {
        byte[] escrito = texto(argumento, valor, minimo, maximo);
        if (escrito.length == 1 && !cortar) {
            Valores.conferirTamanho(argumento, 0, minimo, maximo);
        }
        return escrito;
    }

    /** A CPF or a CNPJ, or none. */
    byte[] documento(String argumento, String valor) {
        byte[] escrito = texto(argumento, valor);
        return cortar || escrito.length == 1 ? escrito : Identificacao.documento(argumento, valor);
    }

    byte[] identificacao(String funcao, Consumidor consumidor) {
        return Identificacao.de(funcao, consumidor, cortar);
    }

    Codigo chamar(String funcao, Chamada chamada) {
        synchronized (TRAVA) {
            int resposta = chamada.em(nativa);
            if (resposta <= 0) {
                throw new Recusa(funcao, resposta, "", motivo(funcao, resposta));
            }
            return Codigo.de(resposta);
        }
    }

    Estado estado(String funcao, Chamada chamada) {
        synchronized (TRAVA) {
            int resposta = chamada.em(nativa);
            if (resposta < 0) {
                throw new Recusa(funcao, resposta, "", motivo(funcao, resposta));
            }
            return Estado.values()[resposta];
        }
    }

    String ler(String funcao, long tamanho, Leitura leitura) {
        return ler(funcao, tamanho, Valores.VAZIO, StandardCharsets.ISO_8859_1, leitura);
    }

    /** Directories in, the path of the last file out. */
    String gravarEm(String funcao, List<String> lista, Leitura leitura) {
        byte[] entrada = Valores.diretorios("diretorios", lista);
        int tamanho = Math.max(Tabelas.TAMANHO_DIRETORIOS, entrada.length + 64);
        return ler(funcao, tamanho, entrada, StandardCharsets.UTF_8, leitura);
    }

    private String ler(String funcao, long tamanho, byte[] entrada, Charset conjunto, Leitura leitura) {
        try (Memory saida = new Memory(tamanho)) {
            saida.clear();
            saida.write(0, entrada, 0, entrada.length);
            int resposta;
            String porque;
            synchronized (TRAVA) {
                resposta = leitura.em(nativa, saida);
                porque = resposta <= 0 ? motivo(funcao, resposta) : "";
            }
            byte[] bytes = saida.getByteArray(0, (int) saida.indexOf(0, (byte) 0));
            String lido = new String(bytes, conjunto);
            if (resposta <= 0) {
                throw new Recusa(funcao, resposta, lido, porque);
            }
            return lido;
        }
    }

    long tamanhoDoUltimo() {
        return Math.max(Tabelas.TAMANHO_CUPOM, new File(arquivo("ultimadanfe.bin")).length() + 1);
    }

    long tamanhoDoPersistido() {
        return new File(arquivo("ArqPersist.bin")).length();
    }

    /** A document and its return in ISO-8859-1; without one, "OFFLINE", it is null. */
    static final class ParaImprimir {
        final String documento;
        final String retorno;

        /** Once the receipt may be printed. */
        ParaImprimir(String documento, String retorno, boolean cancelamento, boolean semAutorizacao) {
            this.documento = lerArquivo(documento);
            this.retorno = retorno.equals("OFFLINE") ? null : lerArquivo(retorno);
            if (!semAutorizacao) {
                Autorizacao.conferir(this.documento, this.retorno, cancelamento);
            }
        }
    }

    /**
     * Bytes that the receipt text of a document takes at most. A scrambled file cannot be counted:
     * its items are at least 256 bytes and its payments 40, as the library writes them.
     */
    long tamanhoDoCupom(ParaImprimir lidos, String url) {
        String xml = lidos.documento;
        long doRetorno = lidos.retorno == null ? 0 : lidos.retorno.length();
        long itens = xml.length() / 256 + 1;
        long pagamentos = xml.length() / 40 + 1;
        long maior = 1024;
        long mensagem = xml.length();
        if (xml.startsWith("<")) {
            itens = 0;
            pagamentos = 0;
            maior = 0;
            for (String parte : xml.split("<")) {
                itens += parte.startsWith("det") ? 1 : 0;
                pagamentos += parte.startsWith("pag") ? 1 : 0;
                maior = Math.max(maior, parte.length());
            }
            mensagem = maior;
        }
        long via = 16384 + 32 * maior + 2 * (mensagem + tamanhoDoPersistido()) + doRetorno
            + url.length() + itens * (300 + maior) + pagamentos * 100;
        return Math.max(Tabelas.TAMANHO_CUPOM, 2 * via);
    }

    /** The bytes of ArqPersist.bin, in ISO-8859-1. */
    String lerPersistido() {
        final long maior = 16 << 20;
        if (tamanhoDoPersistido() > maior) {
            throw new EntradaRecusada("ArqPersist.bin: grande demais");
        }
        return lerArquivo(arquivo("ArqPersist.bin"));
    }

    private static String lerArquivo(String nome) {
        try {
            return new String(Files.readAllBytes(Path.of(nome)), StandardCharsets.ISO_8859_1);
        } catch (IOException e) {
            throw new EntradaRecusada(nome + ": não pôde ser lido");
        }
    }
}
