// SPDX-License-Identifier: MIT
package zel.felbor;

import java.util.ArrayList;
import java.util.List;
import java.util.regex.Matcher;
import java.util.regex.Pattern;

/**
 * Reads ArqPersist.bin: one record a line, its kind in two digits, "|", of items and payments a number
 * and "|", and elements as the library writes them.
 */
final class LeitorDoAndamento {
    private static final Pattern REGISTRO = Pattern.compile("0([1346])\\||0([25])\\|([^|]*)\\|");
    private static final Pattern REFERENCIA =
        Pattern.compile("&(amp|lt|gt|quot|apos|#[0-9]{1,7}|#x[0-9A-Fa-f]{1,6});");
    private static final Pattern NUMERO = Pattern.compile("([0-9]{1,13})(?:\\.([0-9]{0,10}))?");
    private static final String[][] TIPOS = {
        {"CPF", "cpf"}, {"CNPJ", "cnpj"}, {"idEstrangeiro", "estrangeiro"}};

    ConsumidorLido consumidor;
    final List<ItemLido> lista = new ArrayList<>();
    final List<PagamentoLido> pagamentos = new ArrayList<>();
    private String total = "";

    /** A last record without its end does not count: the process died while it was written. */
    LeitorDoAndamento(String arquivo) {
        String[] registros = arquivo.split("\r\n", -1);
        for (int i = 0; i + 1 < registros.length; ++i) {
            Matcher inicio = REGISTRO.matcher(registros[i]);
            if (!inicio.lookingAt()) {
                throw new EntradaRecusada("ArqPersist.bin: o registro " + (i + 1)
                    + " não é de um cupom");
            }
            ler(inicio, registros[i].substring(inicio.end()));
        }
    }

    private void ler(Matcher inicio, String conteudo) {
        if ("2".equals(inicio.group(2))) {
            lista.add(item(inicio.group(3), conteudo));
        } else if ("5".equals(inicio.group(2))) {
            String forma = texto(conteudo, "pag", "tPag");
            pagamentos.add(new PagamentoLido(forma, nome(forma), texto(conteudo, "pag", "vPag")));
        } else if ("1".equals(inicio.group(1))) {
            consumidor = consumidor(conteudo);
        } else if ("3".equals(inicio.group(1))) {
            total = texto(conteudo, "ICMSTot", "vNF");
        }
    }

    private static ConsumidorLido consumidor(String abertura) {
        for (String[] tipo : TIPOS) {
            String documento = texto(abertura, "dest", tipo[0]);
            if (!documento.isEmpty()) {
                return new ConsumidorLido(tipo[1], documento, texto(abertura, "dest", "xNome"),
                    texto(abertura, "dest", "email"));
            }
        }
        return null;
    }

    private static ItemLido item(String numero, String conteudo) {
        String[] campos = {"cProd", "xProd", "qCom", "uCom", "vUnCom", "vProd"};
        for (int i = 0; i < campos.length; ++i) {
            campos[i] = texto(conteudo, "prod", campos[i]);
        }
        return new ItemLido(numero, campos, seHouver(somar(textos(conteudo, "prod", "vDesc"))),
            seHouver(somar(textos(conteudo, "prod", "vOutro"))));
    }

    private static String nome(String forma) {
        for (String par : Tabelas.FORMAS.split(";")) {
            if (par.substring(0, par.indexOf('=')).equals(forma)) {
                return par.substring(par.indexOf('=') + 1);
            }
        }
        return forma;
    }

    boolean totalizado() {
        return !total.isEmpty();
    }

    long devido() {
        if (totalizado()) {
            return centavos(total);
        }
        long soma = 0;
        for (ItemLido item : lista) {
            soma += centavos(item.bruto) + centavos(item.acrescimo) - centavos(item.desconto);
        }
        return soma;
    }

    long pago() {
        long soma = 0;
        for (PagamentoLido pagamento : pagamentos) {
            soma += centavos(pagamento.valor);
        }
        return soma;
    }

    /** Of all elements of that name within the group. */
    private static List<String> textos(String conteudo, String grupo, String nome) {
        List<String> lidos = new ArrayList<>();
        int abre = conteudo.indexOf('<' + grupo + '>');
        int fecha = conteudo.indexOf("</" + grupo + '>', Math.max(abre, 0));
        if (abre >= 0 && fecha >= 0) {
            Matcher elementos = Pattern.compile('<' + nome + ">([^<]*)</" + nome + '>')
                .matcher(conteudo.substring(abre, fecha));
            while (elementos.find()) {
                lidos.add(REFERENCIA.matcher(elementos.group(1))
                    .replaceAll(r -> Matcher.quoteReplacement(referencia(r.group(), r.group(1)))));
            }
        }
        return lidos;
    }

    private static String texto(String conteudo, String grupo, String nome) {
        List<String> lidos = textos(conteudo, grupo, nome);
        return lidos.isEmpty() ? "" : lidos.get(0);
    }

    private static String referencia(String inteira, String nome) {
        int nomeada = List.of("amp", "lt", "gt", "quot", "apos").indexOf(nome);
        if (nomeada >= 0) {
            return "&<>\"'".substring(nomeada, nomeada + 1);
        }
        int ponto = nome.charAt(1) == 'x' ? Integer.parseInt(nome.substring(2), 16)
            : Integer.parseInt(nome.substring(1));
        boolean existe = ponto > 0 && ponto <= 0x10FFFF && (ponto < 0xD800 || ponto > 0xDFFF);
        return existe ? new String(Character.toChars(ponto)) : inteira;
    }

    /** A text that is no number is nothing. */
    private static long centavos(String texto) {
        Matcher numero = NUMERO.matcher(texto);
        if (!numero.matches()) {
            return 0;
        }
        String decimais = (numero.group(2) == null ? "" : numero.group(2)) + "00";
        return Long.parseLong(numero.group(1) + decimais.substring(0, 2));
    }

    private static long somar(List<String> textos) {
        return textos.stream().mapToLong(LeitorDoAndamento::centavos).sum();
    }

    static String moeda(long centavos) {
        long positivos = Math.max(centavos, 0);
        return positivos / 100 + (positivos % 100 < 10 ? ".0" : ".") + positivos % 100;
    }

    static String seHouver(long centavos) {
        return centavos > 0 ? moeda(centavos) : "";
    }
}
