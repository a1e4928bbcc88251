#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""No place of refusal answers a code without a reason: outside the table of reasons, the sources
compare refusing codes and never answer one. The check itself is tried on lines that do."""
import json
import re
import sys
from pathlib import Path

RAIZ = Path(__file__).resolve().parents[1]
TABELAS = {"Motivo.h", "TabelaCodigos.h"}  # reason to code, code to name
RECUSAS = {linha["nome"] for linha in json.loads((RAIZ / "tabela/codigos.json").read_text("utf-8"))
           if linha["codigo"] < 0}


def sem_comentarios(texto):
    return re.sub(r"//[^\n]*|/\*.*?\*/", lambda achado: "\n" * achado[0].count("\n"), texto, flags=re.S)


def respondidos(texto):
    """(line, code) of each refusing code that is not an operand of == or !=."""
    texto = sem_comentarios(texto)
    for achado in re.finditer(r"\bZEL_[A-Z_]+\b", texto):
        antes, depois = texto[:achado.start()].rstrip(), texto[achado.end():].lstrip()
        comparado = antes.endswith(("==", "!=")) or depois.startswith(("==", "!="))
        if achado[0] in RECUSAS and not comparado:
            yield texto.count("\n", 0, achado.start()) + 1, achado[0]


def provar():
    for linha in ("return ZEL_RECUSADO;", "return bom ? ZEL_OK : ZEL_JA_PAGO;",
                  "int codigo = ZEL_SEM_LISTA;", "return int{ZEL_FALHA_PDF};"):
        assert list(respondidos(linha)), linha
    for linha in ("if (codigo == ZEL_RECUSADO) return;", "return ZEL_OK;", "// -1 ZEL_RECUSADO"):
        assert not list(respondidos(linha)), linha


def principal():
    provar()
    fontes = [f for f in sorted((RAIZ / "src").rglob("*")) if f.suffix in (".h", ".cpp")]
    assert len(fontes) > 100, "the sources were not found"
    erros = [f"{fonte.relative_to(RAIZ)}:{linha}: {codigo} is answered without a reason"
             for fonte in fontes if fonte.name not in TABELAS
             for linha, codigo in respondidos(fonte.read_text("utf-8"))]
    print("\n".join(erros) or f"{len(fontes)} sources")
    return 1 if erros else 0


if __name__ == "__main__":
    sys.exit(principal())
