# SPDX-License-Identifier: MIT
"""Java: the tables, the JNA interface and the operations of wrappers/java."""
from .tabela import AVISO, constante, expressoes, literal, quebrar_todas, sem_prefixo

PASTA = "wrappers/java/src/zel/felbor/"
TIPOS = {"texto": "String", "caminho": "String", "inteiro": "int", "decimal": "BigDecimal",
         "documento": "String", "percentual": "BigDecimal", "aliquota": "Aliquota", "ajuste": "Ajuste",
         "forma": "FormaPagamento", "consulta": "TipoConsulta", "diretorios": "List<String>"}
PADROES = {"texto": '""', "ajuste": "Ajuste.NENHUM", "decimal": "null",
           "Consumidor": "new Consumidor()"}
MODELOS = {
    "texto": 'texto("{a}", {p}{limites})', "texto.obrigatorio": 'obrigatorio("{a}", {p}{limites})',
    "identificacao": 'identificacao("{funcao}", {p})', "documento": 'documento("{a}", {p})',
    "grupo": 'texto("{a}", {p}.{membro}{limites})', "fixo": "Valores.VAZIO",
    "inteiro": 'Valores.inteiro("{a}", {p}{limites})',
    "decimal": 'Valores.decimal("{a}", {p}, {casas})',
    "decimal.opcional": 'Valores.decimalOpcional("{a}", {p}, {casas})',
    "percentual": 'Valores.decimal("{a}", {p}, 2)', "aliquota": 'Valores.exigir("{a}", {p}).converter("{a}")',
    "ajuste.tipo": 'Valores.exigir("{a}", {p}).tipo("{a}", "{sentido}")',
    "ajuste.valor": '{p}.valor("{a}")', "forma": 'Valores.ascii(Valores.exigir("{a}", {p}).valor)',
    "consulta": 'Valores.ascii(Valores.exigir("{a}", {p}).valor)',
    "caminho": 'Valores.caminho("{a}", {p})', "resultado": "saida", "diretorios": "saida"}
RESPOSTAS = {"nada": "void", "codigo": "Codigo", "texto": "String", "caminho": "String",
             "estado": "Estado"}
NATIVOS = {"texto": "byte[]", "inteiro": "int", "resultado": "Pointer",
           "texto_e_resultado": "Pointer"}


def nomear(nome):
    return "fim" if nome == "final" else nome


def arquivo(linhas, *importados):
    inicio = [f"// {AVISO}", "package zel.felbor;", ""]
    return inicio + [f"import {i};" for i in importados] + [""] * bool(importados) + linhas


def codigo(t):
    linhas = ["/** O que uma chamada responde. */", "public enum Codigo {"]
    linhas += [f"    {sem_prefixo(c)}({c['codigo']}, {literal(c['significado'])},\n"
               f"        {literal(c['remedio'])})," for c in t.codigos]
    return linhas + [
        "    ;", "", "    public final int numero;", "    public final String significado;",
        "    public final String remedio;", "",
        "    Codigo(int numero, String significado, String remedio) {",
        "        this.numero = numero;", "        this.significado = significado;",
        "        this.remedio = remedio;", "    }", "",
        "    /** Null for a number that is in no table. */",
        "    static Codigo de(int numero) {", "        for (Codigo codigo : values()) {",
        "            if (codigo.numero == numero) {", "                return codigo;",
        "            }", "        }", "        return null;", "    }", "}"]


def enumeracao(nome, valores):
    textual = isinstance(valores[0]["valor"], str)
    linhas = [f"public enum {nome} {{"]
    for v in valores:
        argumento = f"({literal(v['valor'])})" if textual else ""
        linhas += [f"    /** {v['rotulo']} */", f"    {constante(v['nome'])}{argumento},"]
    if textual:
        linhas += ["    ;", "", "    final String valor;", "", f"    {nome}(String valor) {{",
                   "        this.valor = valor;", "    }"]
    return linhas + ["}"]


def grupo(nome, argumentos):
    linhas = [f"public final class {nome} {{"]
    linhas += [f"    String {a.nome} = \"\";" for a in argumentos.values()]
    for a in argumentos.values():
        linhas += ["", f"    /** {a.significado} */", f"    public {nome} {a.nome}(String valor) {{",
                   f"        {a.nome} = valor;", "        return this;", "    }"]
    return linhas + ["}"]


def tamanhos(t):
    linhas = ["final class Tabelas {"]
    linhas += [f"    static final int {nome[4:]} = {valor};" for nome, valor in t.tamanhos.items()]
    linhas += [f"    static final String {nome.upper()} = {literal(valor)};"
               for nome, valor in t.textos.items()]
    linhas += ["", "    private Tabelas() {}", "",
               "    /** Null for a character that has no plain form. */",
               "    static String transliterar(int caractere) {",
               "        switch (caractere) {"]
    for de, para in t.transliteracao:
        linhas += [f"            case 0x{ord(de):04X}:", f"                return {literal(para)};"]
    return linhas + ["            default:", "                return null;", "        }", "    }", "}"]


def nativa(t):
    linhas = ["/** The 47 functions; texts end in a zero byte. */",
              "interface Nativa extends Library {"]
    for f in t.funcoes:
        lista = ", ".join(f"{NATIVOS[a.tipo]} {nomear(a.nome)}" for a in f.argumentos)
        linhas += [f"    int {f.nome}({lista});"]
    return linhas + ["}"]


def chamada(f):
    argumentos = ", ".join(expressoes(f, MODELOS, nomear))
    if f.resultado() in ("texto", "caminho"):
        corpo = f"(n, saida) -> n.{f.nome}({argumentos})"
        if f.resultado() == "caminho":
            return f'return gravarEm("{f.nome}", diretorios, {corpo});'
        tamanho = ("tamanhoDoUltimo()" if f.saida().tamanho == "ultimo"
                   else f"Tabelas.{f.saida().tamanho[4:]}")
        return f'return ler("{f.nome}", {tamanho}, {corpo});'
    inicio = {"estado": "return estado", "codigo": "return chamar"}.get(f.resultado(), "chamar")
    return f'{inicio}("{f.nome}", n -> n.{f.nome}({argumentos}));'


def operacao(f):
    tipo = RESPOSTAS[f.resultado()]
    parametros = f.parametros()
    lista = lambda ps: ", ".join(f"{TIPOS.get(p.especie, p.especie)} {nomear(p.nome)}" for p in ps)
    linhas = ["/**", f" * {f.resumo} {f.nome}."]
    linhas += [f" * @param {nomear(p.nome)} {p.significado}" for p in parametros]
    linhas += [" */", f"public {tipo} {f.operacao}({lista(parametros)}) {{",
               f"    {chamada(f)}", "}", ""]
    obrigatorios = [p for p in parametros if not p.opcional]
    if obrigatorios != parametros:
        passados = ", ".join(PADROES[p.especie] if p.opcional else nomear(p.nome)
                             for p in parametros)
        linhas += [f"/** {f.nome} sem o que é opcional. */",
                   f"public {tipo} {f.operacao}({lista(obrigatorios)}) {{",
                   f"    {'' if tipo == 'void' else 'return '}{f.operacao}({passados});", "}", ""]
    return ["    " + linha if linha else "" for linha in linhas]


def operacoes(t):
    linhas = ["/** One operation for each function. */",
              "public abstract class Operacoes extends Chamador {",
              "    Operacoes(String diretorio, Opcoes opcoes) {",
              "        super(diretorio, opcoes);", "    }", ""]
    for f in t.operacoes():
        linhas += operacao(f)
    return linhas[:-1] + ["}"]


def gerar(t):
    arquivos = {"Codigo": arquivo(codigo(t)), "Tabelas": arquivo(tamanhos(t)),
                "Nativa": arquivo(nativa(t), "com.sun.jna.Library", "com.sun.jna.Pointer"),
                "Operacoes": arquivo(operacoes(t), "java.math.BigDecimal", "java.util.List")}
    arquivos |= {nome: arquivo(enumeracao(nome, v)) for nome, v in t.enumeracoes.items()}
    arquivos |= {nome: arquivo(grupo(nome, v)) for nome, v in t.grupos.items()}
    return {f"{PASTA}{nome}.java": list(quebrar_todas(linhas, "*"))
            for nome, linhas in arquivos.items()}
