#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The guides of docs/envio.md run command by command: envio_guia.py BUILD

Their till is the one of the manual. Where ZEL_ESQUEMAS names the published schemas they judge, too;
the authority's answer to the first guide is made up here, the second one has the stand-in authority.
What a headless browser makes of the service's page is left in BUILD/pagina.png."""
import os
import re
import shutil
import socket
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
SERVICO = BUILD / "apps" / "zel-envio" / "zel-envio"
NAVEGADOR = shutil.which("chromium")
TEM_AUTORIDADE = SERVICO.exists() and subprocess.run(  # which runs on the system's Python
    ["/usr/bin/python3", "-c", "import lxml, xmlsec"], capture_output=True).returncode == 0
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
        self.caixa = Path(self.enterContext(tempfile.TemporaryDirectory()))

    def rodar(self, comandos):
        ambiente = dict(os.environ, ZEL_DIRETORIO=str(self.caixa), LC_ALL="C.UTF-8", TZ="BRT3",
                        PATH=f"{ZEL.parent}:{SERVICO.parent}:{os.environ['PATH']}", ZEL_FONTE=str(RAIZ))
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
        self.assertEqual(rodados, 8)

    @unittest.skipUnless(TEM_AUTORIDADE, "needs zel-envio, python3-lxml and python3-xmlsec")
    def test_o_dia_do_servico(self):
        for _, comandos, _ in blocos("manual.md", "### 2. O emitente"):
            self.rodar(comandos)
        texto = "trap 'kill $SERVICO $SEFAZ || true' ERR\n"
        dito = []
        for lingua, comandos, esperado in blocos("envio.md", "### Um dia com a autoridade de ensaio"):
            if "kill" in comandos and NAVEGADOR:
                texto += self.ver_a_pagina()
            texto += comandos
            dito += esperado.splitlines()
        for porta in ("8443", "8765"):
            with socket.socket() as livre:
                livre.bind(("127.0.0.1", 0))
                texto = texto.replace(porta, str(livre.getsockname()[1]))
        visto = self.rodar(texto).replace(str(self.caixa), "/loja")
        for linha in dito:
            # How the connection fails depends on the moment.
            self.assertIn(re.sub("(sem resposta de [A-Za-z0-9]+: ).*", r"\1", linha), visto)
        if NAVEGADOR:
            pagina = (self.caixa / "pagina.html").read_text("utf-8")
            for frase in ("Nota 2, série 1: recusada", "emitida sem conexão", "resolvido: cancelado",
                          "cancelada depois"):
                self.assertIn(frase, pagina)
            self.assertEqual((BUILD / "pagina.png").read_bytes()[:4], b"\x89PNG")
        else:
            print("chromium is not installed: no browser looked at the page")

    def ver_a_pagina(self):
        navegador = f"{NAVEGADOR} --headless --no-sandbox --disable-gpu --user-data-dir=$PWD/navegador"
        return (f"{navegador} --dump-dom http://127.0.0.1:8765/ > pagina.html 2> /dev/null\n"
                f"{navegador} --hide-scrollbars --window-size=760,960 --screenshot={BUILD}/pagina.png "
                "http://127.0.0.1:8765/ 2> /dev/null\n")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
