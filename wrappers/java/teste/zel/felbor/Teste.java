// SPDX-License-Identifier: MIT
package zel.felbor;

import java.io.IOException;
import java.math.BigDecimal;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.List;
import java.util.Locale;

/** The Java package against a real library: Teste DIRECTORY LIBRARY CASES */
final class Teste {
    private static String diretorio;
    private static String biblioteca;
    private static int falhas;

    private Teste() {}

    private static void conferir(boolean certo, String oque) {
        if (!certo) {
            System.out.println("failed: " + oque);
            ++falhas;
        }
    }

    private static void igual(Object lido, Object esperado, String oque) {
        conferir(lido.equals(esperado), oque + ": " + lido + ", expected " + esperado);
    }

    /** What a call throws; fails the test when it is another kind or nothing. */
    private static <E extends ErroZel> E erro(Class<E> tipo, Runnable chamada, String oque) {
        try {
            chamada.run();
        } catch (ErroZel e) {
            if (tipo.isInstance(e)) {
                return tipo.cast(e);
            }
            throw e;
        }
        throw new AssertionError(oque + " was not refused");
    }

    private static Cupom caixa(boolean transliterar) {
        return new Cupom(diretorio, transliterar, biblioteca);
    }

    private static String converter(String tipo, String escolha, String entrada) {
        if (tipo.equals("texto")) {
            StringBuilder hexa = new StringBuilder();
            for (byte b : Valores.texto("a", entrada, escolha.equals("transliterar"))) {
                hexa.append(String.format("%02X", b));
            }
            return hexa.substring(0, hexa.length() - 2); // the zero byte
        }
        if (tipo.equals("diretorio")) {
            return new Cupom(entrada, false, biblioteca).toString();
        }
        BigDecimal numero = new BigDecimal(entrada);
        byte[] bytes = switch (escolha) {
            case "mercadoria" -> Aliquota.mercadoria(numero).converter("a");
            case "servico" -> Aliquota.servico(numero).converter("a");
            default -> Valores.decimal("a", numero, Integer.parseInt(escolha));
        };
        return new String(bytes, 0, bytes.length - 1, StandardCharsets.US_ASCII);
    }

    private static void testarConversoes(String arquivo) throws IOException {
        caixa(false).inicializar();
        conferir(Files.exists(Path.of(diretorio, "ZEL_Framework.xml")), "files elsewhere");
        int casos = 0;
        for (String linha : Files.readAllLines(Path.of(arquivo))) {
            String[] c = linha.split("\t");
            if (linha.startsWith("#")) {
                continue;
            }
            ++casos;
            if (!c[3].startsWith("!")) {
                igual(converter(c[0], c[1], c[2]), c[3], linha);
                continue;
            }
            EntradaRecusada e = erro(EntradaRecusada.class, () -> converter(c[0], c[1], c[2]), linha);
            conferir(e.getMessage().contains(c[3].substring(1)), linha + ": " + e.getMessage());
        }
        conferir(casos > 30, "the cases were not read");
        for (String numero : new String[] {"1E+999999999", "1E-999999999"}) {
            erro(EntradaRecusada.class, () -> converter("decimal", "2", numero), numero);
        }
        erro(TextoInvalido.class, () -> Valores.texto("a", "P\0o", true), "U+0000");
        erro(TextoInvalido.class, () -> Valores.texto("a", "\uD83E", true), "half a character");
    }

    private static void vender(Cupom c, String descricao) {
        c.vender(Aliquota.mercadoria(new BigDecimal("18")), new BigDecimal("1.5"),
            new BigDecimal("0.75"), "101", "UN", descricao);
    }

    private static void testarRecusas(Cupom c) {
        TextoInvalido t = erro(TextoInvalido.class, () -> vender(c, "Pão de queijo – 1ª"), "dash");
        igual(t.argumento + (char) t.caractere + t.posicao, "descricao–15", "character");
        erro(TextoInvalido.class, () -> vender(caixa(true), "1 €"), "euro");
        igual(c.verificarStatus(), Estado.ABERTO, "state after refused texts");
        erro(EntradaRecusada.class,
            () -> c.lancarDescontoItem(1, Ajuste.acrescimo(BigDecimal.ONE)), "surcharge as discount");
        Recusa r = erro(Recusa.class, c::abrir, "open again");
        igual(r.codigo, Codigo.CUPOM_EM_ANDAMENTO, "code");
        igual(r.getMessage(), "aCFAbrir_ZEL: ZEL_CUPOM_EM_ANDAMENTO (-130): Já há um cupom em "
            + "andamento. Continue-o, ou cancele-o com tCFCancelar_ZEL e cinco textos vazios. "
            + "Se outro programa está com ele, não o cancele: dê a cada caixa o seu diretório.",
            "message");
    }

    private static void testarCupom() {
        Cupom c = caixa(false);
        c.alterarValor("EMIT\\xNome", "Padaria São João");
        igual(c.retornarValor("EMIT\\xNome"), "Padaria São João", "value read back");
        c.abrir();
        testarRecusas(c);
        vender(caixa(true), "Pão de queijo – 1ª");
        for (int i = 0; i < 800; ++i) {
            vender(c, "É".repeat(120));
        }
        c.totalizar();
        c.efetuarPagamento(FormaPagamento.DINHEIRO);
        c.encerrar("Obrigado pela preferência");
        testarImpressao(c);
        igual(c.cancelar(), Codigo.CANCELAMENTO_GRAVADO, "cancellation");
    }

    private static void testarImpressao(Cupom c) {
        String cupom = c.imprimir(c.arquivo("documentosEnvio.xml"));
        conferir(cupom.length() > 131072 && cupom.contains("Pão de queijo - 1ª"), "receipt");
        igual(c.ultimoCupom().equals(cupom), true, "last receipt");
        conferir(c.reemitir(1).contains("Pão de queijo - 1ª"), "document issued again");
        String ctg = c.contingencia(List.of(diretorio));
        conferir(Files.exists(Path.of(ctg)), "no file " + ctg);
        conferir(c.imprimir(ctg).contains("Pão de queijo - 1ª"), "receipt of a scrambled file");
        erro(EntradaRecusada.class, () -> c.imprimir("/nao/ha.xml"), "missing file");
        c.alterarValor("CONFIGURACAO\\SalvarDanfePDF", "1");
        Recusa pdf = erro(Recusa.class, () -> c.imprimir(ctg), "PDF offline");
        conferir(pdf.texto.contains("Pão de queijo - 1ª"), "the text of a failed PDF is lost");
    }

    private static Thread trabalhar(String chave) {
        return new Thread(() -> {
            Cupom c = caixa(false);
            for (int i = 0; i < 200; ++i) {
                c.alterarValor(chave, Integer.toString(i));
                igual(c.retornarValor(chave), Integer.toString(i), "read another value");
            }
        });
    }

    private static void testarThreads() throws InterruptedException {
        Thread[] threads = {trabalhar("EMIT\\IE"), trabalhar("EMIT\\xNome")};
        for (Thread thread : threads) {
            thread.setUncaughtExceptionHandler((t, e) -> conferir(false, e.toString()));
            thread.start();
        }
        for (Thread thread : threads) {
            thread.join();
        }
    }

    public static void main(String[] args) throws Exception {
        Locale.setDefault(new Locale("pt", "BR")); // decimal comma, which no number may follow
        diretorio = args[0];
        biblioteca = args[1];
        testarConversoes(args[2]);
        testarCupom();
        testarThreads();
        System.out.println(falhas == 0 ? "Java: ok" : "Java: failed");
        System.exit(falhas == 0 ? 0 : 1);
    }
}
