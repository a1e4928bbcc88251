#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Who includes whom, and the licence line of every source. Rooms include downwards only; unit tests,
black-box tests, fault tests, fuzz targets and benchmarks share what stands in tests/apoio and
include nothing of each other. Each rule is tried on a line that breaks it, too."""
import re
import subprocess
import sys
from pathlib import Path

RAIZ = Path(__file__).resolve().parents[1]

# What the sources of a folder may include, by the first part of the name between the quotes. A name
# without a folder is of the own folder.
SALAS = {
    "comum": {"comum"},
    "src/util": {"comum", "util"},
    "src/config": {"comum", "util", "config"},
    "src/documento": {"comum", "util", "config", "documento"},
    "src/imposto": {"comum", "util", "config", "documento", "imposto"},
    "src/impressao": {"comum", "util", "config", "documento", "imposto", "impressao"},
    "src/negocio": {"comum", "util", "config", "documento", "imposto", "negocio"},
    "src/api": {"comum", "util", "config", "documento", "imposto", "impressao", "negocio", "api"},
    "cupom": {"comum"},
    "envio/src/base": {"comum", "base"},
    "envio/src/config": {"comum", "base", "config"},
    "envio/src/assinatura": {"comum", "base", "config", "assinatura"},
    "envio/src/esquema": {"comum", "base", "config", "esquema"},
    "envio/src/qrcode": {"comum", "base", "config", "assinatura", "qrcode"},
    "envio/src/traducao": {"comum", "base", "config", "traducao"},
    "envio/src/documento": {"comum", "base", "config", "assinatura", "esquema", "qrcode", "traducao", "documento"},
    "envio/src/rede": {"comum", "base", "config", "assinatura", "rede"},
    "envio/src/mensagem": {"comum", "base", "config", "mensagem"},
    "envio/src/fila": {"comum", "base", "config", "documento", "mensagem", "fila"},
    "envio/src/guarda": {"comum", "base", "config", "documento", "mensagem", "fila", "guarda"},
    "envio/src/fluxo": {"comum", "base", "config", "assinatura", "esquema", "traducao", "documento", "rede", "mensagem",
                        "fila", "guarda", "fluxo"},
    "apps": {"comum"},
}
# The folders of the tests, and what each includes beside the rooms and its own files.
TESTES = {"tests/unit": "unit", "tests/blackbox": "blackbox", "tests/fault": "fault",
          "tests/zel": "zel", "tests/cupom": "cupom", "tests/envio": "envio", "fuzz": "fuzz", "benchmarks": "benchmarks",
          "tests/apoio": "apoio"}
FONTES = {".c", ".cpp", ".h", ".hpp", ".py", ".sh", ".java", ".cs", ".js", ".ts", ".php", ".pas",
          ".inc"}
LICENCA = "SPDX-License-Identifier: MIT"


def proibido(caminho, incluido):
    """Why the file at that path must not include this name; nothing when it may."""
    primeiro = incluido.split("/")[0] if "/" in incluido else ""
    for pasta, permitidas in SALAS.items():
        if caminho.startswith(pasta + "/") and primeiro and primeiro not in permitidas:
            return f"{pasta} does not know {primeiro}"
    for pasta, nome in TESTES.items():
        if not caminho.startswith(pasta + "/"):
            continue
        outras = set(TESTES.values()) - {nome, "apoio"}
        if primeiro == ".." or primeiro in outras:
            return f"{pasta} shares through tests/apoio alone"
        # The table of reasons is gone through: each one has to be provoked.
        livre = primeiro in ("", "blackbox", "apoio") or incluido == "util/Motivo.h"
        if nome == "blackbox" and not livre:
            return "black-box tests know the public header"
    return None


def inclusoes(caminho, texto):
    for numero, linha in enumerate(texto.splitlines(), 1):
        achada = re.match(r'\s*#\s*include\s+"([^"]+)"', linha)
        motivo = achada and proibido(caminho, achada[1])
        if motivo:
            yield f"{caminho}:{numero}: {achada[1]}: {motivo}"


def sem_licenca(caminho, texto):
    codigo = Path(caminho).suffix in FONTES or texto.startswith("#!")
    if codigo and LICENCA not in "\n".join(texto.splitlines()[:2]):
        yield f"{caminho}: no line {LICENCA}"


def fontes():
    """What git knows, or every file of a tree without it."""
    lista = subprocess.run(["git", "-C", RAIZ, "ls-files", "-z"], capture_output=True, check=False)
    nomes = lista.stdout.decode().split("\0") if lista.returncode == 0 else [
        str(c.relative_to(RAIZ)) for c in RAIZ.rglob("*") if not c.relative_to(RAIZ).parts[0].startswith("build")]
    for nome in nomes:
        caminho = RAIZ / nome
        if nome and caminho.is_file() and not {"corpus", "golden"} & set(caminho.parts):
            yield nome, caminho.read_bytes().decode("utf-8", "replace")


QUEBRADAS = [
    ("src/util/Texto.cpp", '#include "config/Registro.h"'),
    ("src/negocio/Venda.cpp", '#include "impressao/Impressao.h"'),
    ("apps/zel/Xml.cpp", '#include "util/Texto.h"'),
    ("cupom/src/Saida.cpp", '#include "util/Arquivo.h"'),
    ("envio/src/traducao/Somas.cpp", '#include "assinatura/Certificado.h"'),
    ("comum/Arquivo.cpp", '#include "util/Texto.h"'),
    ("tests/blackbox/vendas.cpp", '#include "../../fuzz/Alvo.h"'),
    ("tests/blackbox/vendas.cpp", '#include "util/Texto.h"'),
    ("fuzz/pdf.cpp", '#include "unit/impressao_apoio.h"'),
    ("tests/apoio/Retorno.h", '#include "blackbox/Caixa.h"'),
]


def principal():
    erros, quantas = [], 0
    for caminho, texto in fontes():
        quantas += 1
        erros += [*inclusoes(caminho, texto), *sem_licenca(caminho, texto)]
    erros += [f"not reported: {caminho}: {linha}" for caminho, linha in QUEBRADAS
              if not list(inclusoes(caminho, linha))]
    if not list(sem_licenca("a.cpp", "// a\n")):
        erros.append("not reported: a source without its licence")
    print("\n".join(erros) or f"{quantas} files looked at")
    return 1 if erros or quantas < 100 else 0


if __name__ == "__main__":
    sys.exit(principal())
