# SPDX-License-Identifier: MIT
"""JavaScript: the tables, the prototypes for koffi, the operations and the types of
wrappers/javascript."""
from .tabela import AVISO, constante, expressoes, literal, quebrar_todas, sem_prefixo

PASTA = "wrappers/javascript/lib/"
TIPOS = {"texto": "string", "caminho": "string", "inteiro": "number", "decimal": "Numero",
         "documento": "string", "percentual": "Numero", "aliquota": "Aliquota", "ajuste": "Ajuste",
         "forma": "FormaPagamento", "consulta": "TipoConsulta", "diretorios": "string[]"}
PADROES = {"texto": "''", "ajuste": "Ajuste.NENHUM", "decimal": "null", "Consumidor": "{}"}
MODELOS = {
    "texto": "this._texto('{a}', {p}{limites})",
    "texto.obrigatorio": "this._obrigatorio('{a}', {p}{limites})",
    "identificacao": "this._identificacao('{funcao}', {p})",
    "documento": "this._documento('{a}', {p})",
    "grupo": "this._texto('{a}', {p}.{membro} ?? ''{limites})",
    "fixo": "VAZIO", "inteiro": "valores.inteiro('{a}', {p}{limites})",
    "decimal": "valores.decimal('{a}', {p}, {casas})",
    "decimal.opcional": "valores.decimalOpcional('{a}', {p}, {casas})",
    "percentual": "valores.decimal('{a}', {p}, 2)",
    "aliquota": "valores.aliquota('{a}', {p})", "ajuste.tipo": "valores.tipo('{a}', {p}, '{sentido}')",
    "ajuste.valor": "valores.valor('{a}', {p})",
    "forma": "valores.escolha('{a}', {p}, FormaPagamento)",
    "consulta": "valores.escolha('{a}', {p}, TipoConsulta)",
    "caminho": "valores.caminho('{a}', {p})", "resultado": "SAIDA", "diretorios": "SAIDA"}
RESPOSTAS = {"nada": "void", "codigo": "number", "texto": "string", "caminho": "string",
             "estado": "number"}
METODOS = {"estado": "_estado", "texto": "_ler", "caminho": "_gravarEm"}
NATIVOS = {"texto": "const uint8_t *", "inteiro": "int ", "resultado": "_Inout_ uint8_t *",
           "texto_e_resultado": "_Inout_ uint8_t *"}


def texto(valor):
    return literal(valor, "'") if isinstance(valor, str) else str(valor)


def tabelas(t):
    linhas = [f"// {AVISO}", "'use strict';", "", "exports.Codigo = Object.freeze({"]
    linhas += [f"  {sem_prefixo(c)}: {c['codigo']}," for c in t.codigos]
    linhas += ["});", "", "exports.CODIGOS = new Map(["]
    for c in t.codigos:
        linhas += [f"  [{c['codigo']}, {{", f"    nome: '{c['nome']}',",
                   f"    significado: {texto(c['significado'])},",
                   f"    remedio: {texto(c['remedio'])},", "  }],"]
    linhas += ["]);"]
    for nome, valores in t.enumeracoes.items():
        linhas += ["", f"exports.{nome} = Object.freeze({{"]
        linhas += [f"  {constante(v['nome'])}: {texto(v['valor'])}, // {v['rotulo']}" for v in valores]
        linhas += ["});"]
    for nome, argumentos in t.grupos.items():
        campos = ", ".join(f"'{a.nome}'" for a in argumentos.values())
        linhas += ["", f"exports.{nome.upper()} = [{campos}];"]
    linhas += ["", f"exports.AUSENTE = {texto(t.textos['ausente'])};",
               f"exports.DESCRITOR = {texto(t.textos['descritor'])};",
               f"exports.FORMAS = {texto(t.textos['formas'])};"]
    linhas += ["", "exports.TAMANHOS = Object.freeze({"]
    linhas += [f"  {nome}: {valor}," for nome, valor in t.tamanhos.items()]
    linhas += ["});", "", "exports.TRANSLITERACAO = new Map(["]
    linhas += [f"  ['\\u{ord(de):04x}', {texto(para)}]," for de, para in t.transliteracao]
    linhas += ["]);", "", "exports.PROTOTIPOS = ["]
    for f in t.funcoes:
        lista = ", ".join(f"{NATIVOS[a.tipo]}{a.nome}" for a in f.argumentos) or "void"
        linhas += [f"  ['{f.nome}', 'int {f.nome}({lista})'],"]
    return linhas + ["];"]


def operacao(f):
    lista = ", ".join(p.nome + (f" = {PADROES[p.especie]}" if p.opcional else "")
                      for p in f.parametros())
    argumentos = list(expressoes(f, MODELOS, str))
    inicio = [f"'{f.nome}'"]
    metodo = METODOS.get(f.resultado(), "_chamar")
    if f.resultado() == "texto":
        inicio += ["this._tamanhoDoUltimo()" if f.saida().tamanho == "ultimo"
                   else f"TAMANHOS.{f.saida().tamanho}"]
    elif f.resultado() == "caminho":
        inicio += ["diretorios"]
    volta = "" if f.resultado() == "nada" else "return "
    return [f"  {f.operacao}({lista}) {{",
            f"    {volta}this.{metodo}({', '.join(inicio + argumentos)});", "  }", ""]


def operacoes(t):
    linhas = [f"// {AVISO}", "'use strict';", "",
              "const { Chamador, SAIDA, VAZIO } = require('./chamador.js');",
              "const { FormaPagamento, TAMANHOS, TipoConsulta } = require('./tabelas.js');",
              "const valores = require('./valores.js');", "const { Ajuste } = valores;", "",
              "// One operation for each function.", "class Operacoes extends Chamador {"]
    for f in t.operacoes():
        linhas += operacao(f)
    return linhas[:-1] + ["}", "", "module.exports = { Operacoes };"]


def tipos(t):
    linhas = [f"// {AVISO}", "import { Ajuste, Aliquota, Numero } from './valores';", "",
              "export const Codigo: {"]
    linhas += [f"  readonly {sem_prefixo(c)}: {c['codigo']};" for c in t.codigos]
    linhas += ["};"]
    for nome, valores in t.enumeracoes.items():
        linhas += ["", f"export const {nome}: {{"]
        for v in valores:
            linhas += [f"  /** {v['rotulo']} */",
                       f"  readonly {constante(v['nome'])}: {texto(v['valor'])};"]
        linhas += ["};", f"export type {nome} = (typeof {nome})[keyof typeof {nome}];"]
    for nome, argumentos in t.grupos.items():
        linhas += ["", f"export interface {nome} {{"]
        for a in argumentos.values():
            linhas += [f"  /** {a.significado} */", f"  {a.nome}?: string;"]
        linhas += ["}"]
    linhas += ["", "export class Operacoes {"]
    for f in t.operacoes():
        linhas += ["  /**", f"   * {f.resumo} {f.nome}."]
        linhas += [f"   * @param {p.nome} {p.significado}" for p in f.parametros()]
        lista = ", ".join(f"{p.nome}{'?' if p.opcional else ''}: {TIPOS.get(p.especie, p.especie)}"
                          for p in f.parametros())
        linhas += ["   */", f"  {f.operacao}({lista}): {RESPOSTAS[f.resultado()]};"]
    return linhas + ["}"]


def gerar(t):
    return {PASTA + "tabelas.js": list(quebrar_todas(tabelas(t), "//")),
            PASTA + "operacoes.js": list(quebrar_todas(operacoes(t), "//")),
            PASTA + "operacoes.d.ts": list(quebrar_todas(tipos(t), "*"))}
