// SPDX-License-Identifier: MIT
package zel.felbor;

import java.util.Arrays;
import java.util.List;
import java.util.stream.Collectors;
import java.util.stream.Stream;

/**
 * Who a receipt is for: what the functions would take for something else, or leave out without a
 * word, is refused.
 */
final class Identificacao {
    private static final String IDENTIFICAR = "aCFIdentificarConsumidor_ZEL";

    private Identificacao() {}

    /** The check digit after {@code digitos}, whose weights go from 2 to {@code maior}, from the right. */
    private static int digito(String digitos, int maior) {
        int soma = 0;
        for (int i = 0; i < digitos.length(); ++i) {
            soma += (digitos.charAt(digitos.length() - 1 - i) - '0') * (2 + i % (maior - 1));
        }
        return soma % 11 < 2 ? 0 : 11 - soma % 11;
    }

    private static boolean confere(String digitos) {
        int maior = digitos.length() == 11 ? 11 : 9;
        String inteiro = digitos.substring(0, digitos.length() - 2);
        inteiro += digito(inteiro, maior);
        inteiro += digito(inteiro, maior);
        return inteiro.equals(digitos) && digitos.chars().distinct().count() > 1;
    }

    private static String soDigitos(String argumento, String valor) {
        String digitos = valor.replaceAll("[ .\\-/]", "");
        if (!digitos.matches("[0-9]+")) {
            throw new EntradaRecusada(argumento + ": só dígitos, com ou sem ponto, barra e traço");
        }
        return digitos;
    }

    /** The digits of a CPF, or of a CNPJ: of either of them in a "documento". */
    static byte[] documento(String argumento, String valor) {
        String digitos = soDigitos(argumento, valor);
        int tamanho = digitos.length();
        boolean cpf = tamanho == 11 && !argumento.equals("cnpj");
        if (!cpf && (tamanho != 14 || argumento.equals("cpf"))) {
            throw new EntradaRecusada(
                argumento + ": " + tamanho + " dígitos; um CPF tem 11, um CNPJ 14");
        }
        if (!confere(digitos)) {
            throw new EntradaRecusada(argumento + ": os dígitos verificadores não conferem");
        }
        return Valores.ascii(digitos);
    }

    private static byte[] estrangeiro(String funcao, String valor) {
        String digitos = soDigitos("estrangeiro", valor);
        int tamanho = digitos.length();
        if (tamanho < 5 || tamanho > 20 || tamanho == 11 || tamanho == 14) {
            throw new EntradaRecusada("estrangeiro: " + tamanho + " dígitos; permitido: de 5 a 20, e "
                + "não 11 nem 14, que seriam um CPF ou um CNPJ");
        }
        if (funcao.equals(IDENTIFICAR)) {
            throw new EntradaRecusada(
                "estrangeiro: " + funcao + " não o grava; informe-o ao abrir o cupom");
        }
        return Valores.ascii(digitos);
    }

    /** Names and values of the fields that are not empty, one after the other. */
    private static List<String[]> dados(String[]... campos) {
        return Arrays.stream(campos).filter(c -> c[1] != null && !c[1].isEmpty())
            .collect(Collectors.toList());
    }

    private static String[] campo(String nome, String valor) {
        return new String[] {nome, valor};
    }

    /** What would not stand in the document. */
    private static void conferirPerdas(String funcao, Consumidor c, boolean identificado) {
        List<String[]> endereco = dados(campo("numero", c.numero), campo("bairro", c.bairro),
            campo("codigoMunicipio", c.codigoMunicipio), campo("municipio", c.municipio),
            campo("uf", c.uf), campo("cep", c.cep));
        List<String[]> rua = dados(campo("logradouro", c.logradouro));
        List<String[]> email = dados(campo("email", c.email));
        List<String> todos = Stream.of(dados(campo("nome", c.nome)), rua, endereco, email)
            .flatMap(List::stream).map(d -> d[0]).collect(Collectors.toList());
        if (!todos.isEmpty() && !identificado) {
            throw new EntradaRecusada(todos.get(0) + ": sem CPF, CNPJ ou documento de estrangeiro o "
                + "consumidor não é gravado");
        }
        if (!email.isEmpty() && !funcao.equals(IDENTIFICAR)) {
            throw new EntradaRecusada(
                "email: " + funcao + " não o grava; chame identificarConsumidor");
        }
        if (rua.isEmpty() && !endereco.isEmpty()) {
            throw new EntradaRecusada(
                endereco.get(0)[0] + ": sem logradouro o endereço não é gravado");
        }
    }

    /** What {@code funcao} is given as the document of the consumer. */
    static byte[] de(String funcao, Consumidor c, boolean cortar) {
        Valores.exigir("consumidor", c);
        List<String[]> dadas = dados(campo("documento", c.documento), campo("cpf", c.cpf),
            campo("cnpj", c.cnpj), campo("estrangeiro", c.estrangeiro));
        if (dadas.size() > 1) {
            throw new EntradaRecusada("consumidor: dê um só entre documento, cpf, cnpj e estrangeiro");
        }
        if (!cortar) {
            conferirPerdas(funcao, c, !dadas.isEmpty());
        }
        if (dadas.isEmpty()) {
            return Valores.VAZIO;
        }
        String nome = dadas.get(0)[0];
        String valor = dadas.get(0)[1];
        if (cortar) {
            return Valores.texto(nome, valor, false);
        }
        return nome.equals("estrangeiro") ? estrangeiro(funcao, valor) : documento(nome, valor);
    }
}
