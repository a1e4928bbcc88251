#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""docs/manual.md and the pages of docs/manual/ against what is built: every command and program in
them is run in reading order, as a user would who starts at the first line, and every name in them
exists.

    manual.py BUILD                           what BUILD holds, installed into a home of its own
    manual.py BUILD --regenerar               writes the outputs that the pages show anew, and the
                                              meaning and remedy of the codes
    manual.py --inteiro                       from a fresh clone, built as the first page says

A block "sh" is run in the shell of the blocks before it; a block "text" straight after it is what
it prints. A block "c", "python" or "make" that begins with a comment of one name is that file. A comment in
front of a block changes that:

    <!-- manual: montagem -->   builds: only --inteiro runs it, otherwise BUILD is installed
    <!-- manual: saida 2 -->    its last command answers 2
    <!-- manual: figura -->     needs libzel-cupom: left out where that was not built
"""
import json
import os
import pathlib
import re
import shlex
import shutil
import subprocess
import sys
import tempfile
import textwrap
import unittest
from dataclasses import dataclass

sys.dont_write_bytecode = True
from apoio.exemplos import RAIZ as raiz, mascarar  # noqa: E402

INTEIRO = "--inteiro" in sys.argv
REGENERAR = "--regenerar" in sys.argv
argumentos = [a for a in sys.argv[1:] if not a.startswith("--")]
BUILD = pathlib.Path(argumentos[0]).resolve() if argumentos else None
OPCOES = [a for a in sys.argv[1:] if a.startswith("-f")]
# Programs of a build with sanitizers are built so, too.
if BUILD and not OPCOES and "ZEL_SANITIZE:BOOL=ON" in (BUILD / "CMakeCache.txt").read_text():
    OPCOES = ["-fsanitize=address,undefined"]

PAGINAS = [raiz / "docs" / "manual.md",
           *(raiz / "docs" / "manual" / nome for nome in re.findall(
               r"^[0-9]+\. \[.*\]\(manual/([a-z-]+\.md)\)", (raiz / "docs" / "manual.md")
               .read_text("utf-8"), re.M))]
BLOCO = re.compile(r"(?:<!-- manual: (?P<marca>[^>]*) -->\n)?^```(?P<lingua>\w*)\n(?P<texto>.*?)^```$"
                   r"(?P<saida>\n\n```text\n(?P<esperado>.*?)^```$)?", re.M | re.S)
ARQUIVO = re.compile(r"(?:/\*|#) ([a-z_]+\.(?:c|h|py)|Makefile)\b")
LINGUAS = {"sh", "c", "python", "make", "text", "xml", "mermaid"}
DA_SAIDA = ((r"\b[0-9a-fA-F]{40,}\b", "HEXA"), (r"[0-9]{8}_[0-9]{6}", "DATA"),
            (r"DATA  [-+][0-9]{4} \[[0-9]+\] ", "DATA PROCESSO "), (r"[0-9]+\.[0-9]{3} ms", "TEMPO ms"),
            (r"(<cDV>|<cNF>)[0-9]+", r"\1"))
CASA = "/home/ana"


@dataclass
class Bloco:
    pagina: pathlib.Path
    linha: int
    marca: str
    lingua: str
    texto: str
    esperado: str | None

    def __str__(self):
        return f"{self.pagina.name}:{self.linha}"


def blocos(pagina):
    texto = pagina.read_text("utf-8")
    for achado in BLOCO.finditer(texto):
        yield Bloco(pagina, texto.count("\n", 0, achado.start()) + 1, achado["marca"] or "",
                    achado["lingua"], achado["texto"], achado["esperado"])


def prosa(pagina):
    return BLOCO.sub("", pagina.read_text("utf-8"))


def linhas_de(texto):
    return [linha.rstrip() for linha in mascarar(texto, DA_SAIDA).splitlines()]


def casa(esperado, saida):
    """A line "..." stands for any lines."""
    padrao = "\n".join(".*" if linha == "..." else re.escape(linha) for linha in esperado)
    return re.fullmatch(padrao, "\n".join(saida), re.S) is not None


class Oficina:
    """A home of its own, and a shell whose state passes from block to block."""

    def __init__(self, diretorio):
        self.casa = pathlib.Path(diretorio) / "casa"
        self.estado = pathlib.Path(diretorio) / "estado"
        programas = pathlib.Path(diretorio) / "programas"
        self.casa.mkdir()
        programas.mkdir()
        fonte = raiz
        if INTEIRO:
            fonte = self.casa / "zel-fonte"
            subprocess.run(["git", "clone", "-q", raiz, fonte], check=True)
        elif OPCOES:
            self.embrulhar_compilador(programas / "cc")
        self.ambiente = {"HOME": str(self.casa), "PATH": f"{programas}:{os.environ['PATH']}",
                         "LC_ALL": "C.UTF-8", "TZ": "BRT3", "TMPDIR": diretorio}
        self.estado.write_text(f"cd {shlex.quote(str(fonte))}\n")

    @staticmethod
    def embrulhar_compilador(caminho):
        """A program that uses a sanitized library is itself built with the sanitizers."""
        caminho.write_text(f"#!/bin/sh\nexec {shutil.which('cc')} {shlex.join(OPCOES)} \"$@\"\n")
        caminho.chmod(0o755)

    def rodar(self, comandos, parar=True):
        texto = (f". {self.estado}\n"
                 f"trap '{{ export -p; declare -f; printf \"cd %q\\n\" \"$PWD\"; }} > {self.estado}' EXIT\n"
                 + ("set -e\n" if parar else "") + comandos)
        feito = subprocess.run(["bash", "-c", texto], env=self.ambiente, stdout=subprocess.PIPE,
                               stderr=subprocess.STDOUT, stdin=subprocess.DEVNULL, timeout=1800)
        saida = feito.stdout.decode("utf-8", "replace").replace(str(self.casa), CASA)
        return feito.returncode, saida

    def gravar(self, bloco):
        nome = ARQUIVO.match(bloco.texto)[1]
        self.aqui().joinpath(nome).write_text(bloco.texto, "utf-8")
        return nome

    def aqui(self):
        """Where the shell stands: the last line of its state."""
        ultima = self.estado.read_text("utf-8").splitlines()[-1]
        return pathlib.Path(shlex.split(ultima)[1])

    def instalar(self):
        subprocess.run(["cmake", "--install", BUILD, "--prefix", self.casa / "zel"], check=True,
                       stdout=subprocess.DEVNULL)


class Manual(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        cls.temporario = tempfile.TemporaryDirectory()
        cls.oficina = Oficina(cls.temporario.name)
        cls.addClassCleanup(cls.temporario.cleanup)

    def test_1_comandos_e_programas(self):
        programas, usados = set(), ""
        for pagina in PAGINAS:
            for bloco in blocos(pagina):
                self.assertIn(bloco.lingua, LINGUAS, str(bloco))
                if bloco.lingua in ("c", "python", "make"):
                    self.assertRegex(bloco.texto, ARQUIVO, str(bloco))
                    programas.add(self.oficina.gravar(bloco))
                elif bloco.lingua == "sh":
                    usados += bloco.texto
                    self.rodar(bloco)
        for programa in programas - {"Makefile"}:
            nome, _, final = programa.partition(".")
            if final != "h":
                self.assertRegex(usados, rf"\b{nome}\b", "a program that nothing runs")

    def rodar(self, bloco):
        palavras = bloco.marca.split()
        if "montagem" in palavras and not INTEIRO:
            return self.oficina.instalar()
        if "figura" in palavras and not (self.oficina.casa / "zel/include/zel_cupom.h").exists():
            return None
        esperada = int(palavras[palavras.index("saida") + 1]) if "saida" in palavras else 0
        resposta, saida = self.oficina.rodar(bloco.texto, parar=esperada == 0)
        self.assertEqual(resposta, esperada, f"{bloco}\n{bloco.texto}\n{saida}")
        if bloco.esperado is None:
            return None
        if REGENERAR and not re.search(r"^\.\.\.$", bloco.esperado, re.M):
            texto = bloco.pagina.read_text("utf-8")
            novo = f"{bloco.texto}```\n\n```text\n{saida.rstrip()}\n```"
            bloco.pagina.write_text(texto.replace(
                f"{bloco.texto}```\n\n```text\n{bloco.esperado}```", novo, 1), "utf-8")
            return None
        esperado, dito = linhas_de(bloco.esperado), linhas_de(saida)
        if not casa(esperado, dito):
            self.assertEqual("\n".join(esperado), "\n".join(dito), str(bloco))
        return None

    # ---- names -------------------------------------------------------------------------------

    cabecalho = "".join((raiz / "include" / nome).read_text("utf-8")
                        for nome in ("ZEL_FelborFramework.h", "zel_felbor/codigos.h"))
    cupom = (raiz / "cupom" / "include" / "zel_cupom.h").read_text("utf-8")
    funcoes = set(re.findall(r"^ZEL_API int (\w+)\(", cabecalho, re.M))
    constantes = set(re.findall(r"^    (ZEL_\w+)\b", cabecalho + cupom, re.M))
    codigos = {linha["codigo"]: linha
               for linha in json.loads((raiz / "tabela" / "codigos.json").read_text("utf-8"))}

    def citados(self, padrao):
        for pagina in PAGINAS:
            for achado in re.finditer(padrao, pagina.read_text("utf-8")):
                yield pagina.name, achado[1]

    def test_2_cada_nome_existe(self):
        fontes = "".join(p.read_text("utf-8") for p in (raiz / "src").rglob("*.cpp"))
        variaveis = set(re.findall(r'getenv\("(ZEL_\w+)"\)', fontes))
        arquivos = {"ZEL_Framework", "ZEL_FelborFramework", "ZEL_Felbor", "ZEL_FONTE"}
        chaves = set(re.findall(r"^\| `([^`]+)` \|", (raiz / "docs" / "configuracao.md")
                                .read_text("utf-8").casefold(), re.M))
        grupos = {c.rpartition("\\")[0] for c in chaves}
        grupos |= {g.rpartition("\\")[0] for g in grupos}
        for padrao, existentes, forma in (
                (r"\b([A-Za-z]\w*_ZEL)\b", self.funcoes, str),
                (r"\b(?<!lib)(ZEL_\w+)\b", self.constantes | variaveis | arquivos, str),
                (r"`(-[0-9]+)`", self.codigos, int),
                (r"[`'\"]([A-Z][A-Z0-9]{2,}(?:\\{1,2}[A-Za-z0-9]+)+)[`'\"]", chaves | grupos,
                 lambda chave: chave.replace("\\\\", "\\").casefold())):
            for pagina, nome in self.citados(padrao):
                self.assertIn(forma(nome), existentes, pagina)
        ditas = {nome for _, nome in self.citados(r"\b([A-Za-z]\w*_ZEL)\b")}
        self.assertEqual(self.funcoes - ditas, set(), "functions that the manual never names")

    def test_3_arquivos_e_ligacoes(self):
        fontes = "".join(p.read_text("utf-8") for p in (raiz / "src").rglob("*.cpp"))
        feitos = {p.name for p in self.oficina.casa.rglob("*")}
        final = r"xml|bin|c|h|py|md|json|txt|png|pdf|ctg|ctgCanc|diario|trava|hpp|so|xsd"
        for pagina, nome in self.citados(rf"`([\w./-]+\.(?:{final}))`"):
            curto = nome.rpartition("/")[2]
            self.assertTrue((raiz / nome).exists() or curto in feitos or f'"{curto}"' in fontes
                            or any(raiz.glob(f"*/{curto}")), f"{pagina}: {nome}")
        for pagina, nome in self.citados(r"`((?:scripts|examples|docs|wrappers)/[\w./-]+)`"):
            self.assertTrue((raiz / nome).exists(), f"{pagina}: {nome}")
        for pagina in PAGINAS:
            for destino in re.findall(r"\]\(([^)]+)\)", prosa(pagina)):
                nome, _, ancora = destino.partition("#")
                alvo = (pagina.parent / nome).resolve() if nome else pagina
                self.assertTrue(alvo.exists(), f"{pagina.name}: {destino}")
                if ancora:
                    self.assertIn(ancora, ancoras(alvo), f"{pagina.name}: {destino}")

    # ---- codes ---------------------------------------------------------------------------------

    def test_4_codigos_sao_os_da_tabela(self):
        if REGENERAR:
            regenerar_codigos(self.codigos)
        secoes = secoes_de_codigos()
        self.assertEqual(set(secoes), set(self.codigos))
        for codigo, secao in secoes.items():
            linha = self.codigos[codigo]
            with self.subTest(codigo):
                self.assertIn(linha["nome"], secao)
                self.assertIn(f"{linha['significado']}\n", re.sub(r"\n(?=[^\n])", " ", secao) + "\n")
                self.assertIn(f"Remédio: {linha['remedio']}",
                              re.sub(r"\n(?=[^\n])", " ", secao).replace("**", ""))

    def test_5_codigos_nomeiam_as_funcoes_que_os_respondem(self):
        numeros = {linha["nome"]: codigo for codigo, linha in self.codigos.items()}
        secoes = secoes_de_codigos()
        for documentadas, texto in documentacao(self.cabecalho):
            for nome in set(re.findall(r"\bZEL_[A-Z_]+\b", texto)) & set(numeros):
                for funcao in documentadas:
                    if numeros[nome] > 0 or numeros[nome] in (-40, -52):
                        continue  # said of every function at once
                    self.assertIn(f"`{funcao}`", secoes[numeros[nome]], f"{nome} of {funcao}")

    def test_6_diagramas_se_leem_como_texto(self):
        linhas = (r"stateDiagram-v2|sequenceDiagram|    direction (LR|TB)|    \[\*\] --> \w+"
                  r"|    \w+ --> (\w+|\[\*\]): .+|    state \"[^\"]+\" as \w+|    \w+ --> \[\*\]"
                  r"|    participant \w+ as .+|    \w+-?->>\w+: .+|    note (left|right) of \w+: .+")
        quantos = 0
        for pagina in PAGINAS:
            for bloco in blocos(pagina):
                if bloco.lingua == "mermaid":
                    quantos += 1
                    for linha in bloco.texto.splitlines():
                        self.assertRegex(linha, rf"^({linhas})$", str(bloco))
        self.assertGreater(quantos, 0)


def ancoras(pagina):
    """As GitHub makes them of headings."""
    titulos = re.findall(r"^#+ (.*)$", BLOCO.sub("", pagina.read_text("utf-8")), re.M)
    return {re.sub(r"[^\w\- ]", "", titulo.lower()).replace(" ", "-") for titulo in titulos}


def secoes_de_codigos():
    partes = re.split(r"^### `(-?[0-9]+)` .*?(?=ZEL_)", next(
        p for p in PAGINAS if p.name == "codigos.md").read_text("utf-8"), flags=re.M)
    return {int(codigo): texto for codigo, texto in zip(partes[1::2], partes[2::2])}


def regenerar_codigos(codigos):
    """The first two paragraphs of each code."""
    pagina = next(p for p in PAGINAS if p.name == "codigos.md")
    texto = pagina.read_text("utf-8")
    for codigo, linha in codigos.items():
        ditos = "\n\n".join(textwrap.fill(dito, 115, break_on_hyphens=False) for dito in (
            linha["significado"], f"Remédio: {linha['remedio']}"))
        texto = re.sub(rf"^### `{codigo}` .*?^Remédio: .*?\n\n",
                       lambda _: f"### `{codigo}` {linha['nome']}\n\n{ditos}\n\n",
                       texto, flags=re.M | re.S)
    pagina.write_text(texto, "utf-8")


def documentacao(cabecalho):
    """Each comment of the header with the functions under it."""
    for comentario, declaracoes in re.findall(
            r"/\*(.*?)\*/\n((?:ZEL_API [^;]*;\n)+)", cabecalho, re.S):
        # What a later call answers is said of that call.
        comentario = re.sub(r"makes the\s.*?answer ZEL_\w+", "", comentario.rpartition("/*")[2],
                            flags=re.S)
        yield re.findall(r"ZEL_API int (\w+)\(", declaracoes), comentario


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], failfast=REGENERAR)
