#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Who includes whom, who asks the system for files, and the licence line of every source. Rooms include downwards only; unit tests,
black-box tests, fault tests, fuzz targets and benchmarks share what stands in tests/apoio and
include nothing of each other. Each rule is tried on a line that breaks it, too."""
import re
import subprocess
import sys
from pathlib import Path

RAIZ = Path(__file__).resolve().parents[1]

# The rooms of the library from the lowest up; those above are in reach of none below them.
ORDEM = ["texto", "recusa", "disco", "diario", "config", "secao", "emcurso", "emissao", "imposto",
         "impressao", "negocio", "api"]
# What a room does without although it stands lower.
SEM = {"secao": {"disco", "diario", "config"}, "imposto": {"disco", "diario", "emissao"},
       "negocio": {"impressao"}}


def abaixo(sala):
    return {"comum", "zel_felbor", *ORDEM[:ORDEM.index(sala) + 1]} - SEM.get(sala, set())


# What the sources of a folder may include, by the first part of the name between the quotes. A name
# without a folder is of the own folder, but in those where every name has one.
SALAS = {
    "comum": {"comum"},
    **{f"src/{sala}": abaixo(sala) for sala in ORDEM},
    "cupom": {"comum"},
    "envio/src/base": {"comum", "base"},
    "envio/src/config": {"comum", "base", "config"},
    "envio/src/assinatura": {"comum", "base", "config", "assinatura"},
    "envio/src/esquema": {"comum", "base", "config", "esquema"},
    "envio/src/qrcode": {"comum", "base", "config", "assinatura", "qrcode"},
    "envio/src/traducao": {"comum", "base", "config", "traducao"},
    "envio/src/documento": {"comum", "base", "config", "assinatura", "esquema", "qrcode", "traducao", "documento"},
    "envio/src/rede": {"comum", "base", "config", "assinatura", "mensagem", "rede"},
    "envio/src/mensagem": {"comum", "base", "config", "mensagem"},
    "envio/src/fila": {"comum", "base", "config", "documento", "mensagem", "fila"},
    "envio/src/guarda": {"comum", "base", "config", "documento", "mensagem", "fila", "guarda"},
    "envio/src/fluxo": {"comum", "base", "config", "assinatura", "esquema", "traducao", "documento", "rede", "mensagem",
                        "fila", "guarda", "fluxo"},
    "apps/zel-envio": {"comum", "base", "config", "assinatura", "documento", "rede", "mensagem", "fila", "fluxo"},
    "apps/zel/leitura": {"comum", "leitura"},
    "apps/zel/conferencia": {"comum", "leitura", "conferencia"},
    "apps/zel/comandos": {"comum", "leitura", "conferencia", "comandos"},
    "apps/zel/principal": {"comandos", "leitura"},
}
COM_PASTA = ("comum/", "src/", "apps/zel/")
# Where the system is asked for files: calls of these names elsewhere are reported.
CHAMADAS = re.compile(
    r"(?<![\w>])::(open|openat|creat|read|write|pread|pwrite|readv|writev|fsync|fdatasync|syncfs|sync|rename\w*|"
    r"unlink\w*|link|symlink|readlink|realpath|l?stat|fstat\w*|f?truncate|f?chmod|f?chown|opendir|readdir|mkdir|"
    r"rmdir|futimens|utimensat|flock|access|faccessat|mkstemp|mkdtemp|fopen)\s*\(|"
    r"\bstd::(fopen|remove|rename|[io]?fstream|filesystem)\b")
SEM_CHAMADAS = {"src/": ("src/disco/",), "cupom/src/": ("cupom/src/Saida.", "cupom/src/Conexao.", "cupom/src/Estado.")}
# The public headers, whole, and who includes them.
PUBLICOS = {"ZEL_FelborFramework.h": ("src/api/", "apps/zel/"), "zel_cupom.h": ("apps/zel/comandos/",),
            "zel_envio.h": ("apps/zel/comandos/",)}
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
    if not primeiro and caminho.startswith(COM_PASTA) and not caminho.startswith(PUBLICOS.get(incluido, ())):
        return "a public header that this room does without" if incluido in PUBLICOS else "a name without its folder"
    if not primeiro and caminho.startswith("cupom/") and not list((RAIZ / "cupom").glob(f"*/{incluido}")):
        return "no file of cupom"
    for pasta, permitidas in SALAS.items():
        if caminho.startswith((pasta + "/", pasta + ".")) and primeiro and primeiro not in permitidas:
            return f"{pasta} does not know {primeiro}"
    for pasta, nome in TESTES.items():
        if not caminho.startswith(pasta + "/"):
            continue
        outras = set(TESTES.values()) - {nome, "apoio"}
        if primeiro == ".." or primeiro in outras:
            return f"{pasta} shares through tests/apoio alone"
        # The table of reasons is gone through: each one has to be provoked.
        livre = primeiro in ("", "blackbox", "apoio") or incluido == "recusa/Motivo.h"
        if nome == "blackbox" and not livre:
            return "black-box tests know the public header"
    return None


def inclusoes(caminho, texto):
    for numero, linha in enumerate(texto.splitlines(), 1):
        achada = re.match(r'\s*#\s*include\s+"([^"]+)"', linha)
        motivo = achada and proibido(caminho, achada[1])
        if motivo:
            yield f"{caminho}:{numero}: {achada[1]}: {motivo}"


def chamadas(caminho, texto):
    for pasta, livres in SEM_CHAMADAS.items():
        if not caminho.startswith(pasta) or caminho.startswith(livres):
            continue
        for numero, linha in enumerate(texto.splitlines(), 1):
            achada = CHAMADAS.search(linha.split("//")[0])
            if achada:
                yield f"{caminho}:{numero}: {achada[0]}: files are {livres[0]}'s"


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
    ("src/texto/Texto.cpp", '#include "recusa/Recusa.h"'),
    ("src/recusa/Log.cpp", '#include "disco/Identidade.h"'),
    ("src/secao/Tag.cpp", '#include "config/Registro.h"'),
    ("src/emcurso/Carga.cpp", '#include "emissao/Cabecalho.h"'),
    ("src/imposto/Grupo.cpp", '#include "emissao/Cabecalho.h"'),
    ("src/negocio/Venda.cpp", '#include "impressao/Impressao.h"'),
    ("src/negocio/Venda.cpp", '#include "ZEL_FelborFramework.h"'),
    ("src/texto/Texto.cpp", '#include "Numero.h"'),
    ("apps/zel/leitura/Xml.cpp", '#include "texto/Texto.h"'),
    ("apps/zel/leitura/Xml.cpp", '#include "conferencia/Achado.h"'),
    ("apps/zel/conferencia/Regras.cpp", '#include "comandos/Comando.h"'),
    ("apps/zel/conferencia/Regras.cpp", '#include "zel_envio.h"'),
    ("apps/zel/principal.cpp", '#include "conferencia/Regras.h"'),
    ("cupom/src/Saida.cpp", '#include "disco/Arquivo.h"'),
    ("cupom/src/Saida.cpp", '#include "ZEL_FelborFramework.h"'),
    ("envio/src/traducao/Somas.cpp", '#include "assinatura/Certificado.h"'),
    ("apps/zel-envio/Telas.cpp", '#include "traducao/Motor.h"'),
    ("comum/Arquivo.cpp", '#include "texto/Texto.h"'),
    ("tests/blackbox/vendas.cpp", '#include "../../fuzz/Alvo.h"'),
    ("tests/blackbox/vendas.cpp", '#include "texto/Texto.h"'),
    ("fuzz/pdf.cpp", '#include "unit/impressao_apoio.h"'),
    ("tests/apoio/Retorno.h", '#include "blackbox/Caixa.h"'),
]
CHAMADAS_QUEBRADAS = [
    ("src/diario/Diario.cpp", "    if (::fsync(fd) != 0) return false;"),
    ("src/impressao/ZEL_PDF.cpp", "    std::ofstream arquivo(caminho);"),
    ("cupom/src/Fonte.cpp", "    const int fd = ::open(caminho.c_str(), O_RDONLY);"),
]


def principal():
    erros, quantas = [], 0
    for caminho, texto in fontes():
        quantas += 1
        erros += [*inclusoes(caminho, texto), *chamadas(caminho, texto), *sem_licenca(caminho, texto)]
    erros += [f"not reported: {caminho}: {linha}" for caminho, linha in QUEBRADAS
              if not list(inclusoes(caminho, linha))]
    erros += [f"not reported: {caminho}: {linha}" for caminho, linha in CHAMADAS_QUEBRADAS
              if not list(chamadas(caminho, linha))]
    if not list(sem_licenca("a.cpp", "// a\n")):
        erros.append("not reported: a source without its licence")
    print("\n".join(erros) or f"{quantas} files looked at")
    return 1 if erros or quantas < 100 else 0


if __name__ == "__main__":
    sys.exit(principal())
