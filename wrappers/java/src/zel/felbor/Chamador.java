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

    private final String diretorio;
    private final boolean transliterar;

    Chamador(String diretorio, boolean transliterar, String biblioteca) {
        File pasta = new File(diretorio);
        if (!pasta.isAbsolute()) {
            throw new EntradaRecusada("o diretório não é um caminho absoluto: " + diretorio);
        }
        if (!pasta.isDirectory()) {
            throw new EntradaRecusada("o diretório não existe: " + diretorio);
        }
        this.diretorio = pasta.getPath();
        this.transliterar = transliterar;
        carregar(this.diretorio, biblioteca);
    }

    /** The library reads ZEL_DIRETORIO once, so that the first directory is the process's. */
    private static void carregar(String diretorio, String biblioteca) {
        synchronized (TRAVA) {
            if (nativa == null) {
                LibC libc = Native.load("c", LibC.class);
                libc.setenv(Valores.ascii("ZEL_DIRETORIO"),
                    Valores.caminho("diretorio", diretorio), 1);
                nativa = Native.load(biblioteca, Nativa.class);
                doProcesso = diretorio;
            }
            if (!doProcesso.equals(diretorio)) {
                throw new EntradaRecusada("este processo já trabalha em " + doProcesso);
            }
        }
    }

    /** A file of the data directory: "documentosEnvio.xml". */
    public String arquivo(String nome) {
        return diretorio + '/' + nome;
    }

    byte[] texto(String argumento, String valor) {
        return Valores.texto(argumento, valor, transliterar);
    }

    Codigo chamar(String funcao, Chamada chamada) {
        int resposta;
        synchronized (TRAVA) {
            resposta = chamada.em(nativa);
        }
        if (resposta <= 0) {
            throw new Recusa(funcao, resposta, "");
        }
        return Codigo.de(resposta);
    }

    Estado estado(String funcao, Chamada chamada) {
        int resposta;
        synchronized (TRAVA) {
            resposta = chamada.em(nativa);
        }
        if (resposta < 0) {
            throw new Recusa(funcao, resposta, "");
        }
        return Estado.values()[resposta];
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
            synchronized (TRAVA) {
                resposta = leitura.em(nativa, saida);
            }
            byte[] bytes = saida.getByteArray(0, (int) saida.indexOf(0, (byte) 0));
            String lido = new String(bytes, conjunto);
            if (resposta <= 0) {
                throw new Recusa(funcao, resposta, lido);
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

    /**
     * Bytes that the receipt text of a document takes at most. A scrambled file cannot be counted:
     * its items are at least 256 bytes and its payments 40, as the library writes them.
     */
    long tamanhoDoCupom(String documento, String retorno, String url) {
        byte[] xml = lerArquivo(documento);
        long doRetorno = retorno.equals("OFFLINE") ? 0 : lerArquivo(retorno).length;
        long itens = xml.length / 256 + 1;
        long pagamentos = xml.length / 40 + 1;
        long maior = 1024;
        long mensagem = xml.length;
        if (xml.length > 0 && xml[0] == '<') {
            itens = 0;
            pagamentos = 0;
            maior = 0;
            for (String parte : new String(xml, StandardCharsets.ISO_8859_1).split("<")) {
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

    private static byte[] lerArquivo(String nome) {
        try {
            return Files.readAllBytes(Path.of(nome));
        } catch (IOException e) {
            throw new EntradaRecusada(nome + ": não pôde ser lido");
        }
    }
}
