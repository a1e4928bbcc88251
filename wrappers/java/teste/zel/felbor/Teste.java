// SPDX-License-Identifier: MIT
package zel.felbor;

import com.sun.jna.Library;
import com.sun.jna.Native;
import java.io.IOException;
import java.math.BigDecimal;
import java.math.BigInteger;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
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
        if (tipo.equals("comprimento")) {
            String[] limites = escolha.split("-");
            byte[] bytes = caixa(false).texto("a", entrada, Integer.parseInt(limites[0]),
                Integer.parseInt(limites[1]));
            return String.format("%X", new BigInteger(1, bytes).shiftRight(8));
        }
        if (tipo.equals("consumidor")) {
            return consumidor(escolha, entrada);
        }
        if (tipo.equals("autorizacao")) {
            String[] lidos = entrada.split("\\|");
            Autorizacao.conferir(lidos[0], lidos[1].equals("OFFLINE") ? null : lidos[1],
                escolha.equals("cancelamento"));
            return "ok";
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

    private static String consumidor(String escolha, String entrada) {
        Consumidor c = new Consumidor();
        for (String par : entrada.split(";")) {
            String[] campo = par.split("=");
            switch (campo[0]) {
                case "documento" -> c.documento(campo[1]);
                case "cpf" -> c.cpf(campo[1]);
                case "cnpj" -> c.cnpj(campo[1]);
                case "estrangeiro" -> c.estrangeiro(campo[1]);
                case "nome" -> c.nome(campo[1]);
                case "numero" -> c.numero(campo[1]);
                default -> c.email(campo[1]);
            }
        }
        String funcao = escolha.equals("identificar") ? "aCFIdentificarConsumidor_ZEL"
            : "aCFAbrir_ZEL";
        byte[] bytes = Identificacao.de(funcao, c, escolha.equals("cortar"));
        return new String(bytes, 0, bytes.length - 1, StandardCharsets.US_ASCII);
    }

    private static void testarConversoes(String... arquivos) throws IOException {
        caixa(false).inicializar();
        conferir(Files.exists(Path.of(diretorio, "ZEL_Framework.xml")), "files elsewhere");
        int casos = 0;
        List<String> linhas = new ArrayList<>(Files.readAllLines(Path.of(arquivos[0])));
        linhas.addAll(Files.readAllLines(Path.of(arquivos[1])));
        for (String linha : linhas) {
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
        conferir(casos > 70, "the cases were not read");
        for (String numero : new String[] {"1E+999999999", "1E-999999999"}) {
            erro(EntradaRecusada.class, () -> converter("decimal", "2", numero), numero);
        }
        erro(TextoInvalido.class, () -> Valores.texto("a", "P\0o", true), "U+0000");
        erro(TextoInvalido.class, () -> Valores.texto("a", "\uD83E", true), "half a character");
    }

    private static String dizer(Andamento a) {
        List<String> dito = new ArrayList<>();
        if (a.consumidor != null) {
            ConsumidorLido c = a.consumidor;
            dito.add(String.join(",", "C", c.tipo, c.documento, c.nome, c.email));
        }
        for (ItemLido i : a.lista) {
            dito.add(String.join(",", "I", i.numero, i.codigo, i.descricao, i.quantidade, i.unidade,
                i.preco, i.bruto, i.desconto, i.acrescimo));
        }
        for (PagamentoLido p : a.pagamentos) {
            dito.add(String.join(",", "P", p.forma, p.nome, p.valor));
        }
        dito.add(String.join(",", "T", a.total, a.pago, a.falta));
        return String.join(";", dito);
    }

    /** The receipts in progress that all languages share. */
    private static void testarAndamento(String arquivo) throws IOException {
        int casos = 0;
        for (String linha : Files.readAllLines(Path.of(arquivo))) {
            String[] c = linha.split("\t");
            if (linha.startsWith("#")) {
                continue;
            }
            ++casos;
            String registros = c[1].replace("^", "\r\n");
            if (!c[2].startsWith("!")) {
                igual(dizer(new Andamento(registros, Estado.ABERTO, "")), c[2], c[0]);
                continue;
            }
            EntradaRecusada e = erro(EntradaRecusada.class,
                () -> new Andamento(registros, Estado.ABERTO, ""), c[0]);
            conferir(e.getMessage().contains(c[2].substring(1)), c[0] + ": " + e.getMessage());
        }
        conferir(casos > 15, "the receipts in progress were not read");
    }

    /** What the functions would cut, take for something else or fall over. */
    private static void testarEntradas() {
        Cupom c = caixa(false);
        BigDecimal um = BigDecimal.ONE;
        Object[][] casos = {
            {"serie: 1000", (Runnable) () -> c.abrirNumSerie(1, 1000)},
            {"valor: 0.125", (Runnable) () -> c.lancarDescontoItem(1,
                Ajuste.desconto(new BigDecimal("0.125")))},
            {"descricao: 121", (Runnable) () -> c.vender(Aliquota.ISENTO, um, um, "1", "UN",
                "x".repeat(121))},
            {"documento: os", (Runnable) () -> c.identificarTransportadora("123.456.789-00", "Zé")},
            {"informacoesFisco: 0", (Runnable) () -> c.encerrarConfigMsg("só uma", "")},
            {"quantidade: nulo", (Runnable) () -> c.vender(Aliquota.ISENTO, null, um, "1", "UN", "x")},
            {"aliquota: nulo", (Runnable) () -> c.vender(null, um, um, "1", "UN", "x")},
            {"descricao: nulo", (Runnable) () -> c.vender(Aliquota.ISENTO, um, um, "1", "UN", null)},
            {"forma: nulo", (Runnable) () -> c.efetuarPagamento(null)},
            {"consumidor: nulo", (Runnable) () -> c.abrir(null)},
            {"destino: nome", (Runnable) () -> c.criptografarArquivo("/a", "/" + "x".repeat(300), "")},
        };
        for (Object[] caso : casos) {
            EntradaRecusada e = erro(EntradaRecusada.class, (Runnable) caso[1], (String) caso[0]);
            conferir(e.getMessage().startsWith((String) caso[0]), e.getMessage());
        }
        c.alterarValor("EMIT\\xNome", "Padaria");
        EntradaRecusada e = erro(EntradaRecusada.class,
            () -> c.alterarValor("EMIT\\xNome", "x".repeat(61)), "a value that would be cut");
        conferir(e.getMessage().contains("61 caracteres, de que EMIT\\xNome guarda 60"), e.getMessage());
        igual(c.retornarValor("EMIT\\xNome"), "Padaria", "value after a refusal");
        new Cupom(diretorio, new Opcoes().cortar().biblioteca(biblioteca))
            .alterarValor("EMIT\\xNome", "x".repeat(61));
        igual(c.retornarValor("EMIT\\xNome"), "x".repeat(60), "value that was to be cut");
        Recusa nada = erro(Recusa.class, () -> c.alterarValor("NADA", "1"), "no such key");
        igual(nada.funcao, "regAlterarValor_ZEL", "function");
    }

    /** The last one: the number of the descriptor is the program's from here on. */
    private static void testarMotivo() {
        Runnable recusar = () -> caixa(false).criptografarArquivo("/nao/existe", "/x", "");
        Recusa r = erro(Recusa.class, recusar, "no such file");
        conferir(r.motivo.contains("/nao/existe: o arquivo ou o diretório não existe (ENOENT)"), r.motivo);
        conferir(r.getMessage().contains(r.motivo), r.getMessage());
        Native.load("c", LibC.class).close(Chamador.descritorDosMotivos());
        igual(erro(Recusa.class, recusar, "no such file").motivo, "", "reason of a closed descriptor");
    }

    interface LibC extends Library {
        int close(int descritor);
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
        conferir(r.motivo.contains("estado 1 (aberto)"), r.motivo);
        conferir(r.getMessage().startsWith("aCFAbrir_ZEL: ZEL_CUPOM_EM_ANDAMENTO (-130): Já há um "
            + "cupom em andamento. Motivo: " + r.motivo + ". "), r.getMessage());
    }

    private static void testarCupom() {
        Cupom c = caixa(false);
        c.alterarValor("EMIT\\xNome", "Padaria São João");
        igual(c.retornarValor("EMIT\\xNome"), "Padaria São João", "value read back");
        conferir(c.lerAndamento() == null, "a receipt in progress where there is none");
        c.abrir();
        testarRecusas(c);
        vender(caixa(true), "Pão de queijo – 1ª");
        for (int i = 0; i < 800; ++i) {
            vender(c, "É".repeat(120));
        }
        c.totalizar();
        c.efetuarPagamento(FormaPagamento.DINHEIRO);
        Andamento a = c.lerAndamento();
        igual(a.lista.size() + a.lista.get(0).descricao + a.estado + a.falta + a.troco,
            "801Pão de queijo - 1ªPAGO0", "what a till that was restarted shows");
        c.encerrar("Obrigado pela preferência");
        testarImpressao(c);
        igual(c.cancelar(), Codigo.CANCELAMENTO_GRAVADO, "cancellation");
    }

    private static void testarImpressao(Cupom c) {
        String cupom = c.imprimir(c.arquivo("documentosEnvio.xml"), "OFFLINE");
        conferir(cupom.length() > 131072 && cupom.contains("Pão de queijo - 1ª"), "receipt");
        igual(c.ultimoCupom().equals(cupom), true, "last receipt");
        conferir(c.reemitir(1).contains("Pão de queijo - 1ª"), "document issued again");
        String ctg = c.contingencia(List.of(diretorio));
        conferir(Files.exists(Path.of(ctg)), "no file " + ctg);
        conferir(c.imprimir(ctg, "OFFLINE").contains("Pão de queijo - 1ª"), "receipt of a scrambled file");
        erro(EntradaRecusada.class, () -> c.imprimir("/nao/ha.xml", "OFFLINE"), "missing file");
        c.alterarValor("CONFIGURACAO\\SalvarDanfePDF", "1");
        Recusa pdf = erro(Recusa.class, () -> c.imprimir(ctg, "OFFLINE"), "PDF offline");
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
        BibliotecaAusente a = erro(BibliotecaAusente.class,
            () -> new Cupom(diretorio, false, "/nao/ha.so"), "a library that is not there");
        conferir(a.getMessage().contains("LD_LIBRARY_PATH"), a.getMessage());
        testarConversoes(args[2], args[3]);
        testarAndamento(args[4]);
        testarEntradas();
        testarCupom();
        testarThreads();
        testarMotivo();
        System.out.println(falhas == 0 ? "Java: ok" : "Java: failed");
        System.exit(falhas == 0 ? 0 : 1);
    }
}
