# SPDX-License-Identifier: MIT
"""What the tests of examples/ share: its modules, the directories that a shop's day left (those of
the first two arguments) and the masks of what the clock decides."""
import pathlib
import re
import sys

RAIZ = pathlib.Path(__file__).resolve().parents[2]
EXEMPLOS = RAIZ / "examples"
sys.path.insert(0, str(EXEMPLOS))
DIA, DIA_DA_AUTORIDADE = (pathlib.Path(p) for p in (sys.argv[1:3] + ["", ""])[:2])

# In this order: a key holds what looks like a protocol.
MASCARAS = ((r"[0-9]{44}", "CHAVE"), (r"([0-9]{4} ){10}[0-9]{4}", "CHAVE"), (r"\b1[0-9]{14}\b", "PROTOCOLO"),
            (r"[0-9]{4}-[0-9]{2}-[0-9]{2}([T ])[0-9:]{8}", r"DATA\1"),
            (r"[0-9]{2}/[0-9]{2}/[0-9]{4} [0-9:]{8}", "DATA"))


def mascarar(texto, mais=()):
    for padrao, mascara in (*MASCARAS, *mais):
        texto = re.sub(padrao, mascara, texto)
    return texto


def ler(caminho):
    return caminho.read_bytes().decode("latin-1")
