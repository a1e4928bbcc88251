#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""docs/envio.md against what the library wrote: every block that a comment marks with a file of a
shop's day is that file, but for keys, times, protocols and what is computed from them.

    envio_md.py COMPONENTE AUTORIDADE                compares
    envio_md.py COMPONENTE AUTORIDADE --regenerar    writes the blocks anew
"""
import pathlib
import re
import subprocess
import sys
import tempfile
import unicodedata
import unittest

raiz = pathlib.Path(__file__).resolve().parent.parent
sys.dont_write_bytecode = True
sys.path.insert(0, str(raiz / "examples"))
import enviador  # noqa: E402
import sefaz_regras  # noqa: E402

DIAS = dict(zip(("dia", "dia-autoridade"), map(pathlib.Path, sys.argv[1:3])))
MANUAL = raiz / "docs" / "envio.md"
BLOCO = re.compile(r"<!-- (dia|dia-autoridade|programa): ([^ ]+)(?: (\w+))? -->\n"
                   r"```\w+\n(.*?)```\n", re.DOTALL)

# In this order: a key holds what looks like a protocol.
MASCARAS = ((r"[0-9]{44}", "CHAVE"), (r"(<cDV>)[0-9]", r"\1D"), (r"(\b1[0-9]{14}\b)", "PROTOCOLO"),
            (r"[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9]{2}:[0-9]{2}:[0-9]{2}", "DATA"),
            (r"(DigestValue|digVal)>[^<]*<", r"\1><"), (r"(<DocXMLBase64>)[^<]*", r"\1"))


def do_arquivo(dia, padrao, elemento):
    (caminho,) = DIAS[dia].glob(padrao)
    texto = enviador.ler_documento(caminho)
    return enviador.elemento(texto, elemento) if elemento else texto


def mascarar(texto):
    for padrao, mascara in MASCARAS:
        texto = re.sub(padrao, mascara, texto)
    return texto


def recuar(texto):
    """One element a line; one without children stays on a line with its value."""
    linhas, nivel = [], 0
    for parte in re.findall(r"<[^/][^>]*>[^<]*</[^>]*>|</?[^>]+>", texto):
        if parte.startswith("</"):
            nivel -= 1
        linhas.append("  " * nivel + parte)
        if not parte.startswith("</") and "</" not in parte:
            nivel += 1
    # The one long value is shown by its beginning.
    return re.sub("(<DocXMLBase64>.{40})[^<]*", r"\1...", "\n".join(linhas) + "\n")


def sem_acentos(texto):
    return unicodedata.normalize("NFD", texto).encode("ascii", "ignore").decode()


class Manual(unittest.TestCase):
    def test_blocks_are_what_is_written(self):
        blocos = BLOCO.findall(MANUAL.read_text("utf-8"))
        self.assertGreater(len(blocos), 10)
        for dia, padrao, elemento, bloco in blocos:
            if dia == "programa":
                continue
            with self.subTest(padrao):
                no_manual = "".join(linha.strip() for linha in bloco.splitlines())
                self.assertIn("<", no_manual)
                self.assertEqual(mascarar(no_manual), mascarar(do_arquivo(dia, padrao, elemento)))

    def test_program_unscrambles(self):
        (programa,) = (b[3] for b in BLOCO.findall(MANUAL.read_text("utf-8")) if b[0] == "programa")
        with tempfile.NamedTemporaryFile("w", suffix=".py") as arquivo:
            arquivo.write(programa)
            arquivo.flush()
            for caminho in (DIAS["dia"] / "contingencia").iterdir():
                saida = subprocess.run([sys.executable, arquivo.name, caminho],
                                       capture_output=True, check=True, timeout=60).stdout
                self.assertEqual(saida.decode("latin-1"), enviador.ler_documento(caminho))

    def test_situations_have_the_words_of_the_authority(self):
        linhas = re.findall(r"^\| ([0-9]{3}) \| ([^|]*) \|", MANUAL.read_text("utf-8"), re.M)
        self.assertGreater(len(linhas), 15)
        for codigo, motivo in linhas:
            if codigo in sefaz_regras.MOTIVOS:
                self.assertEqual(sem_acentos(motivo), sefaz_regras.MOTIVOS[codigo])

    def test_names_of_history_copies(self):
        padroes = re.findall(r"`(Envio[A-Z][A-Za-z]+)[0-9]{8}_[0-9]{6}(?:_2)?\.xml`",
                             MANUAL.read_text("utf-8"))
        feitos = {re.match("Envio[A-Za-z]+", p.name)[0]
                  for p in (DIAS["dia"] / "historico").iterdir()}
        self.assertEqual(set(padroes), feitos)


def regenerar():
    def novo(achado):
        dia, padrao, elemento, bloco = achado.groups()
        if dia == "programa":
            return achado[0]
        return achado[0].replace(f"\n{bloco}```\n",
                                 f"\n{recuar(do_arquivo(dia, padrao, elemento))}```\n")
    MANUAL.write_text(BLOCO.sub(novo, MANUAL.read_text("utf-8")), "utf-8")


if __name__ == "__main__":
    if "--regenerar" in sys.argv:
        regenerar()
    else:
        unittest.main(argv=sys.argv[:1])
