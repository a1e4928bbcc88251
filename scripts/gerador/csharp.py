# SPDX-License-Identifier: MIT
"""C#: the tables, the P/Invoke declarations and the operations of wrappers/csharp."""
from .tabela import AVISO, expressoes, literal, quebrar_todas, sem_prefixo, titulo

TIPOS = {"texto": "string", "caminho": "string", "inteiro": "int", "decimal": "decimal",
         "documento": "string", "percentual": "decimal", "aliquota": "Aliquota", "ajuste": "Ajuste",
         "forma": "FormaPagamento", "consulta": "TipoConsulta",
         "diretorios": "IList<string>"}
PADROES = {"texto": '""', "ajuste": "null", "decimal": "null", "Consumidor": "null"}
MODELOS = {
    "texto": 'Texto("{a}", {p}{limites})', "texto.obrigatorio": 'Obrigatorio("{a}", {p}{limites})',
    "identificacao": 'Identificacao("{funcao}", {p})', "documento": 'Documento("{a}", {p})',
    "grupo": 'Texto("{a}", {p}.{membro}{limites})', "fixo": "Valores.Vazio",
    "inteiro": 'Valores.Inteiro("{a}", {p}{limites})',
    "decimal": 'Valores.Decimal("{a}", {p}, {casas})',
    "decimal.opcional": 'Valores.Decimal("{a}", {p}, {casas})',
    "percentual": 'Valores.Decimal("{a}", {p}, 2)', "aliquota": 'Aliquota.Converter("{a}", {p})',
    "ajuste.tipo": 'Ajuste.Tipo("{a}", {p}, "{sentido}")',
    "ajuste.valor": 'Ajuste.Valor("{a}", {p})', "forma": 'Tabelas.TextoDe("{a}", {p})',
    "consulta": 'Tabelas.TextoDe("{a}", {p})', "caminho": 'Valores.Caminho("{a}", {p})',
    "resultado": "saida", "diretorios": "saida"}
RESPOSTAS = {"nada": "void", "codigo": "Codigo", "texto": "string", "caminho": "string",
             "estado": "Estado"}


def codigos(t):
    linhas = ["/// <summary>O que uma chamada responde.</summary>", "public enum Codigo {"]
    for c in t.codigos:
        linhas += [f"    /// <summary>{c['significado']}</summary>",
                   f"    {titulo(sem_prefixo(c))} = {c['codigo']},"]
    return linhas + ["}", ""]


def enumeracao(nome, valores):
    linhas = [f"public enum {nome} {{"]
    for v in valores:
        valor = f" = {v['valor']}" if isinstance(v["valor"], int) else ""
        linhas += [f"    /// <summary>{v['rotulo']}</summary>", f"    {titulo(v['nome'])}{valor},"]
    return linhas + ["}", ""]


def grupo(nome, argumentos):
    linhas = [f"public sealed class {nome} {{"]
    for a in argumentos.values():
        linhas += [f"    /// <summary>{a.significado}</summary>",
                   f'    public string {titulo(a.nome)} {{ get; set; }} = "";']
    return linhas + ["}", ""]


def texto_de(nome, valores):
    linhas = [f"    internal static byte[] TextoDe(string argumento, {nome} valor) {{",
              "        switch (valor) {"]
    for v in valores:
        linhas += [f"            case {nome}.{titulo(v['nome'])}:",
                   f"                return Valores.Ascii({literal(v['valor'])});"]
    return linhas + ["        }", '        throw new EntradaRecusada(argumento + ": " + valor + " não está '
                     'na enumeração");', "    }", ""]


def tabelas(t):
    linhas = ["internal static class Tabelas {"]
    linhas += [f"    internal const int {titulo(nome[4:])} = {valor};"
               for nome, valor in t.tamanhos.items()]
    linhas += [f"    internal const string {titulo(nome)} = {literal(valor)};"
               for nome, valor in t.textos.items()]
    linhas += ["", "    /// <summary>Name, meaning and remedy; null for a code of no table.</summary>",
               "    internal static string[] Descrever(int codigo) {", "        switch (codigo) {"]
    for c in t.codigos:
        linhas += [f"            case {c['codigo']}:", "                return new[] {",
                   f"                    {literal(c['nome'])},",
                   f"                    {literal(c['significado'])},",
                   f"                    {literal(c['remedio'])} }};"]
    linhas += ["            default:", "                return null;", "        }", "    }", "",
               "    /// <summary>Null for a character that has no plain form.</summary>",
               "    internal static string Transliterar(int caractere) {",
               "        switch (caractere) {"]
    for de, para in t.transliteracao:
        linhas += [f"            case 0x{ord(de):04X}:", f"                return {literal(para)};"]
    linhas += ["            default:", "                return null;", "        }", "    }", ""]
    for nome, valores in t.enumeracoes.items():
        if isinstance(valores[0]["valor"], str):
            linhas += texto_de(nome, valores)
    return linhas[:-1] + ["}", ""]


def nativa(t):
    linhas = ["/// <summary>The 47 functions; texts end in a zero byte.</summary>",
              "internal static class Nativa {",
              '    const string Biblioteca = "libZEL_FelborFramework.so.1";', ""]
    for f in t.funcoes:
        lista = ", ".join(f"{'int' if a.tipo == 'inteiro' else 'byte[]'} {a.nome}"
                          for a in f.argumentos)
        linhas += ["    [DllImport(Biblioteca, CallingConvention = CallingConvention.Cdecl)]",
                   f"    internal static extern int {f.nome}({lista});"]
    return linhas + ["}", ""]


def parametro(p):
    tipo = TIPOS.get(p.especie, p.especie)
    if not p.opcional:
        return f"{tipo} {p.nome}"
    return f"{tipo}{'?' if tipo == 'decimal' else ''} {p.nome} = {PADROES[p.especie]}"


def operacao(f):
    argumentos = ", ".join(expressoes(f, MODELOS, str, titulo))
    corpo = f"Nativa.{f.nome}({argumentos})"
    inicio = f'"{f.nome}"'
    if f.resultado() == "caminho":
        corpo = f"return GravarEm({inicio}, diretorios, saida => {corpo});"
    elif f.resultado() == "texto":
        tamanho = ("TamanhoDoUltimo()" if f.saida().tamanho == "ultimo"
                   else f"Tabelas.{titulo(f.saida().tamanho[4:])}")
        corpo = f"return Ler({inicio}, {tamanho}, saida => {corpo});"
    else:
        metodo = {"estado": "return VerEstado", "codigo": "return Chamar"}.get(f.resultado(), "Chamar")
        corpo = f"{metodo}({inicio}, () => {corpo});"
    linhas = [f"/// <summary>{f.resumo} {f.nome}.</summary>"]
    linhas += [f'/// <param name="{p.nome}">{p.significado}</param>' for p in f.parametros()]
    lista = ", ".join(map(parametro, f.parametros()))
    classe = "virtual " if f.operacao == "alterarValor" else ""
    linhas += [f"public {classe}{RESPOSTAS[f.resultado()]} {titulo(f.operacao)}({lista}) {{"]
    for p in f.parametros():
        if p.especie == "Consumidor" and p.opcional:
            linhas += [f"    {p.nome} = {p.nome} ?? new Consumidor();"]
    return ["    " + linha for linha in linhas + [f"    {corpo}", "}"]] + [""]


def operacoes(t):
    linhas = ["/// <summary>One operation for each function.</summary>",
              "public abstract class Operacoes : Chamador {",
              "    internal Operacoes(string diretorio, bool transliterar, string biblioteca, bool cortar)",
              "        : base(diretorio, transliterar, biblioteca, cortar) {}", ""]
    for f in t.operacoes():
        linhas += operacao(f)
    return linhas[:-1] + ["}"]


def gerar(t):
    linhas = [f"// {AVISO}", "using System.Collections.Generic;",
              "using System.Runtime.InteropServices;", "", "namespace Zel.Felbor {", ""]
    linhas += codigos(t)
    for nome, valores in t.enumeracoes.items():
        linhas += enumeracao(nome, valores)
    for nome, argumentos in t.grupos.items():
        linhas += grupo(nome, argumentos)
    linhas += tabelas(t) + nativa(t) + operacoes(t) + ["", "}"]
    return {"wrappers/csharp/src/Gerado.cs": list(quebrar_todas(linhas, "///"))}
