# SPDX-License-Identifier: MIT
"""Python: the tables, the signatures for ctypes and the operations of wrappers/python."""
from .tabela import AVISO, cobra, constante, expressoes, literal, quebrar_todas, sem_prefixo

TIPOS = {"texto": "str", "caminho": "Caminho", "inteiro": "int", "decimal": "Numero",
         "documento": "str", "percentual": "Numero", "aliquota": "Aliquota", "ajuste": "Ajuste",
         "forma": "FormaPagamento", "consulta": "TipoConsulta", "diretorios": "Sequence[Caminho]"}
PADROES = {"texto": ' = ""', "ajuste": " = Ajuste()", "decimal": " = None",
           "Consumidor": " = Consumidor()"}
MODELOS = {
    "texto": 'self._texto("{a}", {p}{limites})',
    "texto.obrigatorio": 'self._obrigatorio("{a}", {p}{limites})',
    "identificacao": 'self._identificacao("{funcao}", {p})',
    "documento": 'self._documento("{a}", {p})', "grupo": 'self._texto("{a}", {p}.{membro}{limites})',
    "fixo": 'b""', "inteiro": '_valores.inteiro("{a}", {p}{limites})',
    "decimal": '_valores.decimal("{a}", {p}, {casas})',
    "decimal.opcional": '_valores.decimal_opcional("{a}", {p}, {casas})',
    "percentual": '_valores.decimal("{a}", {p}, 2)', "aliquota": '_valores.aliquota("{a}", {p})',
    "ajuste.tipo": '_valores.tipo_de_ajuste("{a}", {p}, "{sentido}")',
    "ajuste.valor": '_valores.valor_de_ajuste("{a}", {p})',
    "forma": '_valores.escolha("{a}", {p}, FormaPagamento)',
    "consulta": '_valores.escolha("{a}", {p}, TipoConsulta)', "caminho": '_valores.caminho("{a}", {p})',
    "resultado": "SAIDA", "diretorios": "SAIDA"}
RESPOSTAS = {"nada": "None", "codigo": "Codigo", "texto": "str", "caminho": "str",
             "estado": "Estado"}
CTYPES = {"texto": "c_char_p", "inteiro": "c_int", "resultado": "c_char_p",
          "texto_e_resultado": "c_char_p"}


def tabelas(t):
    linhas = [f'"""{AVISO}"""', "from ctypes import c_char_p, c_int",
              "from dataclasses import dataclass", "from enum import Enum, IntEnum", "", "",
              "class Codigo(IntEnum):"]
    linhas += [f"    {sem_prefixo(c)} = {c['codigo']}" for c in t.codigos]
    linhas += ["", "", "CODIGOS = {"]
    for c in t.codigos:
        linhas += [f"    {c['codigo']}: ({literal(c['nome'])},",
                   f"        {literal(c['significado'])},", f"        {literal(c['remedio'])}),"]
    linhas += ["}"]
    for nome, valores in t.enumeracoes.items():
        textual = isinstance(valores[0]["valor"], str)
        linhas += ["", "", f"class {nome}({'Enum' if textual else 'IntEnum'}):"]
        for v in valores:
            valor = literal(v["valor"]) if textual else v["valor"]
            linhas += [f"    {constante(v['nome'])} = {valor}  # {v['rotulo']}"]
    for nome, argumentos in t.grupos.items():
        linhas += ["", "", "@dataclass(frozen=True)", f"class {nome}:"]
        linhas += [f'    {cobra(a.nome)}: str = ""  # {a.significado}' for a in argumentos.values()]
    linhas += ["", "", "TAMANHOS = {"]
    linhas += [f'    "{nome}": {valor},' for nome, valor in t.tamanhos.items()]
    linhas += ["}", "", f"AUSENTE = {literal(t.textos['ausente'])}",
               f"DESCRITOR = {literal(t.textos['descritor'])}",
               f"FORMAS = {literal(t.textos['formas'])}", "", "TRANSLITERACAO = {"]
    linhas += [f'    "\\u{ord(de):04x}": {literal(para)},' for de, para in t.transliteracao]
    linhas += ["}", "", "ASSINATURAS = {"]
    for f in t.funcoes:
        linhas += [f'    "{f.nome}": [{", ".join(CTYPES[a.tipo] for a in f.argumentos)}],']
    return linhas + ["}"]


def parametro(p):
    tipo = TIPOS.get(p.especie, p.especie)
    if not p.opcional:
        return f"{cobra(p.nome)}: {tipo}"
    if p.especie == "decimal":
        tipo = f"Optional[{tipo}]"
    return f"{cobra(p.nome)}: {tipo}{PADROES[p.especie]}"


def operacao(f):
    argumentos = ["self", *map(parametro, f.parametros())]
    resposta = RESPOSTAS[f.resultado()]
    linhas = [f"    def {cobra(f.operacao)}({', '.join(argumentos)}) -> {resposta}:",
              f'        """{f.resumo} {f.nome}.']
    if f.parametros():
        linhas += [""] + [f"        {cobra(p.nome)}: {p.significado}" for p in f.parametros()]
        linhas += ['        """']
    else:
        linhas[-1] += '"""'
    chamada = ", ".join([f'"{f.nome}"', *expressoes(f, MODELOS, cobra, cobra)])
    if f.resultado() == "texto":
        tamanho = ("self._tamanho_do_ultimo()" if f.saida().tamanho == "ultimo"
                   else f'TAMANHOS["{f.saida().tamanho}"]')
        nome, resto = chamada.split(", ", 1)
        chamada = f"return self._ler({nome}, {tamanho}, {resto})"
    elif f.resultado() == "caminho":
        nome, resto = chamada.split(", ", 1)
        chamada = f"return self._gravar_em({nome}, diretorios, {resto})"
    elif f.resultado() == "estado":
        chamada = f"return self._estado({chamada})"
    else:
        chamada = f"{'return ' if f.resultado() == 'codigo' else ''}self._chamar({chamada})"
    return linhas + [f"        {chamada}", ""]


def operacoes(t):
    linhas = [f'"""{AVISO}"""', "from __future__ import annotations", "",
              "from typing import Optional, Sequence", "", "from . import _valores",
              "from ._chamada import SAIDA, Chamador",
              "from ._tabelas import (TAMANHOS, Codigo, Consumidor, Estado, FormaPagamento,",
              "                       TipoConsulta)",
              "from ._valores import Ajuste, Aliquota, Caminho, Numero", "", "",
              "class Operacoes(Chamador):",
              '    """One operation for each function."""', ""]
    for f in t.operacoes():
        linhas += operacao(f)
    return linhas[:-1]


def gerar(t):
    return {"wrappers/python/zel_felbor/_tabelas.py": list(quebrar_todas(tabelas(t), "#")),
            "wrappers/python/zel_felbor/_operacoes.py": list(quebrar_todas(operacoes(t), "#"))}
