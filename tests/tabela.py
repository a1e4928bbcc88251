#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The header, the tables of tabela/ and the files generated from them say the same: 47 functions
with their arguments in order, codes with their values, sizes of buffers; and one version stands in
the header, the wrappers' packages and the newest section of the changelog; and a payment form is
named wherever people look for one, and a tax group of the till translated. Each kind of drift is
tried, too, on altered copies: one that is not reported would be a test that cannot fail."""
import copy
import importlib.machinery
import importlib.util
import json
import re
import sys
import unicodedata
from pathlib import Path
from xml.etree import ElementTree

sys.dont_write_bytecode = True
RAIZ = Path(__file__).resolve().parents[1]
sys.path.insert(0, str(RAIZ / "scripts"))
carregador = importlib.machinery.SourceFileLoader("gerar", str(RAIZ / "scripts/gerar-tabelas"))
gerar = importlib.util.module_from_spec(importlib.util.spec_from_loader("gerar", carregador))
carregador.exec_module(gerar)
from gerador.tabela import constantes, ler_cabecalho

TIPOS = {"texto": "const char *", "inteiro": "int", "resultado": "char *",
         "texto_e_resultado": "char *"}
REGRAS = {"contingencia", "cupom", "ultimo"}  # sizes by a rule, not a constant


def sem_comentarios(cabecalho):
    return re.sub(r"/\*.*?\*/", "", cabecalho, flags=re.S)


def funcoes_do_cabecalho(cabecalho):
    """(name, [(type, name of argument)]) in the order of the header."""
    funcoes = []
    declaracoes = re.findall(r"^ZEL_API int (\w+)\(([^)]*)\);", sem_comentarios(cabecalho), re.M)
    for nome, lista in declaracoes:
        partes = [] if lista.strip() == "void" else [p.strip() for p in lista.split(",")]
        pares = [re.fullmatch(r"(.*?)\s*(\w+)", p, re.S).groups() for p in partes]
        funcoes.append((nome, [(re.sub(r"\s+", " ", tipo), arg) for tipo, arg in pares]))
    return funcoes


def diferencas(cabecalho, funcoes, codigos):
    valores = constantes(cabecalho)
    esperadas = funcoes_do_cabecalho(cabecalho)
    tabela = [(f["nome"], [(TIPOS.get(a["tipo"], a["tipo"]), a["nome"]) for a in f["argumentos"]])
              for f in funcoes]
    if len(esperadas) != 47:
        yield f"the header declares {len(esperadas)} functions"
    for do_cabecalho, da_tabela in zip(esperadas, tabela):
        if do_cabecalho != da_tabela:
            yield f"header {do_cabecalho}, table {da_tabela}"
    if len(esperadas) != len(tabela):
        yield f"the table has {len(tabela)} functions"
    for f in funcoes:
        for a in f["argumentos"]:
            escreve = a["tipo"] in ("resultado", "texto_e_resultado")
            tamanho = a.get("tamanho")
            conhecido = tamanho in REGRAS or tamanho in valores
            if escreve != bool(tamanho) or tamanho and not conhecido:
                yield f"{f['nome']}: {a['nome']} has the size {tamanho}"
    do_cabecalho = {n: v for n, v in valores.items() if not n.startswith("ZEL_TAMANHO_")}
    da_tabela = {c["nome"]: c["codigo"] for c in codigos}
    for nome in sorted(do_cabecalho.items() ^ da_tabela.items()):
        yield f"code {nome} is in one of header and table alone"


def diferencas_de_versao(cabecalho):
    versao, numero = re.search(r'^#define ZEL_VERSAO "(\d+\.\d+\.\d+)"\n'
                               r"#define ZEL_VERSAO_NUMERO (\d+)$", cabecalho, re.M).groups()
    maior, menor, correcao = map(int, versao.split("."))
    if int(numero) != maior * 10000 + menor * 100 + correcao:
        yield f"ZEL_VERSAO_NUMERO is not that of {versao}"
    for nome, regra in (("wrappers/python/pyproject.toml", r'^version = "(.*)"$'),
                        ("wrappers/javascript/package.json", r'^  "version": "(.*)",$'),
                        ("wrappers/php/composer.json", r'^    "version": "(.*)",$'),
                        ("wrappers/java/pom.xml", r"^  <version>(.*)</version>$"),
                        ("wrappers/csharp/ZelFelbor.csproj", r"^    <Version>(.*)</Version>$"),
                        ("CHANGELOG.md", r"^## (\d\S*) \(\d{4}-\d\d-\d\d\)$")):
        achada = re.search(regra, (RAIZ / nome).read_text(encoding="utf-8"), re.M)[1]
        if achada != versao:
            yield f"{nome} says version {achada}, the header {versao}"


def diferencas_de_pacote():
    """Files of packages that nothing here builds: they are well-formed, and name every unit."""
    pacote = RAIZ / "wrappers/pascal/zel_felbor.lpk"
    for caminho in (pacote, RAIZ / "wrappers/java/pom.xml", RAIZ / "wrappers/csharp/ZelFelbor.csproj"):
        ElementTree.parse(caminho)
    nomeadas = {item.get("Value") for item in ElementTree.parse(pacote).iter("Filename")}
    unidades = {u.name for u in pacote.parent.glob("Zel*.pas")}
    if nomeadas != unidades:
        yield f"{pacote.name} and the units differ: {sorted(nomeadas ^ unidades)}"


def alterados(cabecalho, funcoes, codigos):
    """(what was altered, header, functions, codes): each of them has to be reported."""
    for oque, de, para in (
            ("argument renamed", "const char *informacoesFisco);", "const char *aviso);"),
            ("type changed", "CancelarItem_ZEL(int item", "CancelarItem_ZEL(const char *item"),
            ("function gone", "ZEL_API int rURLQrcode_ZEL(char *url);", ""),
            ("function added", "#ifdef __cplusplus\n}", "ZEL_API int nova_ZEL(void);\n}"),
            ("value changed", "ZEL_JA_PAGO = -34", "ZEL_JA_PAGO = -33"),
            ("code added", "ZEL_JA_PAGO = -34,", "ZEL_JA_PAGO = -34, ZEL_NOVO = -36,")):
        yield oque, cabecalho.replace(de, para, 1), funcoes, codigos
    vender = next(i for i, f in enumerate(funcoes) if f["nome"] == "aCFVender_ZEL")
    argumentos = lambda tabela: tabela[vender]["argumentos"]
    for oque, mudar in (
            ("order changed", lambda t: argumentos(t).insert(0, argumentos(t).pop())),
            ("output taken for input", lambda t: argumentos(t)[0].update(tipo="resultado")),
            ("size unknown", lambda t: argumentos(t)[0].update(tamanho="ZEL_TAMANHO_X"))):
        copia = copy.deepcopy(funcoes)
        mudar(copia)
        yield oque, cabecalho, copia, codigos
    yield "code gone from the table", cabecalho, funcoes, codigos[1:]


# Where a payment form of the library's table has to be named, too, and how, without its accents.
FORMAS = {"tabela/funcoes.json": '"valor": "{nome}", "codigo": "{codigo}"',
          "apps/zel/leitura/Venda.cpp": '{{"{nome}", "{codigo}"}}', "apps/zel/comandos/ComandoVender.cpp": "{nome}",
          "include/ZEL_FelborFramework.h": "{nome}", "docs/manual/itens.md": "| {nome} | {codigo} |"}


def formas():
    fonte = (RAIZ / "src/texto/Codigos.h").read_text(encoding="utf-8")
    for codigo, rotulo in re.findall(r'\{"(\d\d)", "([^"]+)"(?:_l1)?\}', fonte):
        nome = unicodedata.normalize("NFD", rotulo)
        yield codigo, "".join(letra for letra in nome if not unicodedata.combining(letra))


def diferencas_de_forma(codigo, nome):
    for caminho, molde in FORMAS.items():
        texto = (RAIZ / caminho).read_text(encoding="utf-8")
        if molde == "{nome}":  # in prose, over the ends of lines
            texto = re.sub(r'(\\n|["\s*])+', " ", texto)
        if molde.format(nome=nome, codigo=codigo) not in texto:
            yield f"{caminho}: no payment form {nome}, {codigo}"


def grupos_sem_traducao(moldes):
    traducao = "".join(f.read_text(encoding="utf-8") for f in (RAIZ / "envio/src/traducao").glob("Tabela*.h"))
    for nome in re.findall(r'grupo\w+\("((?:ICMS|PIS|COFINS)\w+)"', moldes):
        if f'grupo("{nome}"'.upper() not in traducao.upper() and nome != "ICMSTot":
            yield f"{nome} of src/secao/Moldes.cpp: no row in envio/src/traducao/TabelaIcms.h or TabelaItem.h"


def principal():
    cabecalho = ler_cabecalho()
    funcoes = json.loads((RAIZ / "tabela/funcoes.json").read_text(encoding="utf-8"))["funcoes"]
    codigos = json.loads((RAIZ / "tabela/codigos.json").read_text(encoding="utf-8"))
    erros = [*diferencas(cabecalho, funcoes, codigos), *diferencas_de_versao(cabecalho),
             *diferencas_de_pacote()]
    for de, para in (('VERSAO "1.', 'VERSAO "2.'), ("VERSAO_NUMERO 1", "VERSAO_NUMERO 2")):
        if not list(diferencas_de_versao(cabecalho.replace(de, para))):
            erros += [f"not reported: {para}"]
    moldes = (RAIZ / "src/secao/Moldes.cpp").read_text(encoding="utf-8")
    erros += grupos_sem_traducao(moldes)
    if not any("ICMS01" in erro for erro in grupos_sem_traducao(moldes.replace('"ICMS00"', '"ICMS01"'))):
        erros.append("not reported: a tax group without a translation")
    outros = "99"  # whatever else is given, in prose
    conhecidas = [f for f in formas() if f[0] != outros]
    erros += [erro for forma in conhecidas for erro in diferencas_de_forma(*forma)]
    if len(conhecidas) < 9 or len(list(diferencas_de_forma("98", "Escambo"))) != len(FORMAS):
        erros.append("not reported: a payment form that is nowhere named")
    erros += [f"{c.relative_to(RAIZ)} is not what scripts/gerar-tabelas writes"
              for c in gerar.diferentes()]
    erros += [f"not reported: {oque}" for oque, *entrada in alterados(cabecalho, funcoes, codigos)
              if not list(diferencas(*entrada))]
    print("\n".join(erros) or f"{len(funcoes)} functions and {len(codigos)} codes agree")
    return 1 if erros else 0


if __name__ == "__main__":
    sys.exit(principal())
