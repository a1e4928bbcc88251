#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The guide of docs/envio.md, "Do caixa à SEFAZ", run command by command: envio_guia.py BUILD

Its till is the one of the manual. Where ZEL_ESQUEMAS names the published schemas they judge, too;
the authority's answer is made up here."""
import os
import re
import subprocess
import sys
import tempfile
import textwrap
import unittest
from pathlib import Path

sys.dont_write_bytecode = True
from apoio.exemplos import RAIZ, mascarar  # noqa: E402

BUILD = Path(sys.argv[1]).resolve()
ZEL = BUILD / "apps" / "zel" / "zel"
BLOCO = re.compile(r"^( *)```(\w+)\n(.*?)^\1```$(?:\n\n^\1```text\n(.*?)^\1```$)?", re.M | re.S)
DO_DIA = ((r"Dias que restam: +\d+", "DIAS"), (r"[0-9]{44}", "CHAVE"))
TEM_DOCUMENTO = subprocess.run([ZEL, "documento", "--help"], capture_output=True).returncode == 0


def blocos(pagina, titulo):
    secao = (RAIZ / "docs" / pagina).read_text("utf-8").split(titulo, 1)[1]
    secao = re.split(r"^#+ ", secao, maxsplit=1, flags=re.M)[0]
    for _, lingua, texto, esperado in BLOCO.findall(secao):
        yield lingua, textwrap.dedent(texto), textwrap.dedent(esperado)


@unittest.skipUnless(TEM_DOCUMENTO, "zel has no command documento")
class Guia(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        temporario = tempfile.TemporaryDirectory()
        self.addCleanup(temporario.cleanup)
        self.caixa = Path(temporario.name)

    def rodar(self, comandos):
        ambiente = dict(os.environ, ZEL_DIRETORIO=str(self.caixa), LC_ALL="C.UTF-8", TZ="BRT3",
                        PATH=f"{ZEL.parent}:{os.environ['PATH']}")
        feito = subprocess.run(["bash", "-ec", comandos], cwd=self.caixa, env=ambiente, timeout=120,
                               stdout=subprocess.PIPE, stderr=subprocess.STDOUT, encoding="utf-8")
        self.assertEqual(feito.returncode, 0, f"{comandos}\n{feito.stdout}")
        return feito.stdout

    def responder(self):
        nota = (self.caixa / "nota.xml").read_text("utf-8")
        chave, digest = (re.search(padrao, nota)[1] for padrao in (
            'Id="NFe([0-9]{44})"', "<DigestValue>([^<]+)<"))
        (self.caixa / "resposta.xml").write_text(
            '<protNFe xmlns="http://www.portalfiscal.inf.br/nfe" versao="4.00"><infProt>'
            f"<tpAmb>2</tpAmb><chNFe>{chave}</chNFe><dhRecbto>2026-11-25T06:16:31-03:00</dhRecbto>"
            f"<nProt>135260000000002</nProt><digVal>{digest}</digVal><cStat>100</cStat>"
            "<xMotivo>Autorizado o uso da NF-e</xMotivo></infProt></protNFe>", "utf-8")

    def test_cada_comando(self):
        for lingua, comandos, _ in blocos("manual.md", "### 2. O emitente"):
            self.rodar(comandos)
        rodados = 0
        for lingua, comandos, esperado in blocos("envio.md", "### Da fábrica ao primeiro documento"):
            if lingua != "sh":
                continue
            if "zel ver" in comandos:
                self.responder()
            saida = self.rodar(comandos)
            rodados += 1
            if "documento config" in comandos and "ZEL_ESQUEMAS" in os.environ:
                toml = self.caixa / "zel-envio.toml"
                toml.write_text(f'esquemas = "{os.environ["ZEL_ESQUEMAS"]}"\n' + toml.read_text("utf-8"),
                                "utf-8")
            visto, dito = mascarar(saida, DO_DIA), mascarar(esperado, DO_DIA)
            for linha in dito.splitlines():
                if "esquema: confere" not in linha or "ZEL_ESQUEMAS" in os.environ:
                    self.assertIn(linha, visto)
        self.assertEqual(rodados, 6)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
