// SPDX-License-Identifier: MIT
using System;
using System.Collections.Generic;
using System.Linq;

namespace Zel.Felbor {

/// <summary>Who a receipt is for: what the functions would take for something else, or leave out
/// without a word, is refused.</summary>
internal static class Identificacao {
    const string Identificar = "aCFIdentificarConsumidor_ZEL";

    /// <summary>The check digit after <c>digitos</c>, whose weights go from 2 to <c>maior</c>, from the
    /// right.</summary>
    static int Digito(string digitos, int maior) {
        int soma = digitos.Reverse().Select((d, i) => (d - '0') * (2 + i % (maior - 1))).Sum();
        return soma % 11 < 2 ? 0 : 11 - soma % 11;
    }

    static bool Confere(string digitos) {
        int maior = digitos.Length == 11 ? 11 : 9;
        string inteiro = digitos.Substring(0, digitos.Length - 2);
        inteiro += Digito(inteiro, maior);
        inteiro += Digito(inteiro, maior);
        return inteiro == digitos && digitos.Distinct().Count() > 1;
    }

    static string SoDigitos(string argumento, string valor) {
        string digitos = string.Concat(valor.Where(c => " .-/".IndexOf(c) < 0));
        if (digitos == "" || digitos.Any(c => c < '0' || c > '9'))
            throw new EntradaRecusada(argumento + ": só dígitos, com ou sem ponto, barra e traço");
        return digitos;
    }

    /// <summary>The digits of a CPF, or of a CNPJ: of either of them in a "documento".</summary>
    internal static byte[] Documento(string argumento, string valor) {
        string digitos = SoDigitos(argumento, valor);
        bool cpf = digitos.Length == 11 && argumento != "cnpj";
        if (!cpf && (digitos.Length != 14 || argumento == "cpf"))
            throw new EntradaRecusada(argumento + ": " + digitos.Length +
                                      " dígitos; um CPF tem 11, um CNPJ 14");
        if (!Confere(digitos))
            throw new EntradaRecusada(argumento + ": os dígitos verificadores não conferem");
        return Valores.Ascii(digitos);
    }

    static byte[] Estrangeiro(string funcao, string valor) {
        string digitos = SoDigitos("estrangeiro", valor);
        int tamanho = digitos.Length;
        if (tamanho < 5 || tamanho > 20 || tamanho == 11 || tamanho == 14)
            throw new EntradaRecusada("estrangeiro: " + tamanho + " dígitos; permitido: de 5 a 20, e " +
                                      "não 11 nem 14, que seriam um CPF ou um CNPJ");
        if (funcao == Identificar)
            throw new EntradaRecusada("estrangeiro: " + funcao +
                                      " não o grava; informe-o ao abrir o cupom");
        return Valores.Ascii(digitos);
    }

    /// <summary>The fields that are not empty.</summary>
    static List<KeyValuePair<string, string>> Dados(params string[] nomesEValores) {
        var dados = new List<KeyValuePair<string, string>>();
        for (int i = 0; i < nomesEValores.Length; i += 2)
            if (!string.IsNullOrEmpty(nomesEValores[i + 1]))
                dados.Add(new KeyValuePair<string, string>(nomesEValores[i], nomesEValores[i + 1]));
        return dados;
    }

    /// <summary>What would not stand in the document.</summary>
    static void ConferirPerdas(string funcao, Consumidor c, bool identificado) {
        var endereco = Dados("numero", c.Numero, "bairro", c.Bairro, "codigoMunicipio",
                             c.CodigoMunicipio, "municipio", c.Municipio, "uf", c.Uf, "cep", c.Cep);
        var rua = Dados("logradouro", c.Logradouro);
        var email = Dados("email", c.Email);
        var todos = Dados("nome", c.Nome).Concat(rua).Concat(endereco).Concat(email).ToList();
        if (todos.Count > 0 && !identificado)
            throw new EntradaRecusada(todos[0].Key + ": sem CPF, CNPJ ou documento de estrangeiro o " +
                                      "consumidor não é gravado");
        if (email.Count > 0 && funcao != Identificar)
            throw new EntradaRecusada("email: " + funcao + " não o grava; chame IdentificarConsumidor");
        if (rua.Count == 0 && endereco.Count > 0)
            throw new EntradaRecusada(endereco[0].Key + ": sem logradouro o endereço não é gravado");
    }

    /// <summary>What <c>funcao</c> is given as the document of the consumer.</summary>
    internal static byte[] De(string funcao, Consumidor consumidor, bool cortar) {
        Consumidor c = Valores.Exigir("consumidor", consumidor);
        var dadas = Dados("documento", c.Documento, "cpf", c.Cpf, "cnpj", c.Cnpj, "estrangeiro",
                          c.Estrangeiro);
        if (dadas.Count > 1)
            throw new EntradaRecusada("consumidor: dê um só entre documento, cpf, cnpj e estrangeiro");
        if (!cortar) ConferirPerdas(funcao, c, dadas.Count > 0);
        if (dadas.Count == 0) return Valores.Vazio;
        string nome = dadas[0].Key, valor = dadas[0].Value;
        if (cortar) return Valores.Texto(nome, valor, false);
        return nome == "estrangeiro" ? Estrangeiro(funcao, valor) : Documento(nome, valor);
    }
}

}
