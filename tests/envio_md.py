#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""docs/envio.md against what the library wrote: every block that a comment marks with a file of a
shop's day is that file, but for keys, times, protocols and what is computed from them.

    envio_md.py COMPONENTE AUTORIDADE                compares
    envio_md.py COMPONENTE AUTORIDADE --regenerar    writes the blocks anew
"""
import re
import subprocess
import sys
import tempfile
import unicodedata
import unittest

sys.dont_write_bytecode = True
from apoio.exemplos import DIA, DIA_DA_AUTORIDADE, RAIZ, mascarar  # noqa: E402
import enviador  # noqa: E402
import sefaz_regras  # noqa: E402

DIAS = {"dia": DIA, "dia-autoridade": DIA_DA_AUTORIDADE}
MANUAL = RAIZ / "docs" / "envio.md"
BLOCO = re.compile(r"<!-- (dia|dia-autoridade|programa): ([^ ]+)(?: (\w+))? -->\n"
                   r"```\w+\n(.*?)```\n", re.DOTALL)

CALCULADOS = ((r"(<cDV>)[0-9]", r"\1D"), (r"(DigestValue|digVal)>[^<]*<", r"\1><"),
              (r"(<DocXMLBase64>)[^<]*", r"\1"))


def do_arquivo(dia, padrao, elemento):
    (caminho,) = DIAS[dia].glob(padrao)
    texto = enviador.ler_documento(caminho)
    return enviador.elemento(texto, elemento) if elemento else texto


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
    def test_blocos_sao_o_que_se_escreve(self):
        blocos = BLOCO.findall(MANUAL.read_text("utf-8"))
        self.assertGreater(len(blocos), 10)
        for dia, padrao, elemento, bloco in blocos:
            if dia == "programa":
                continue
            with self.subTest(padrao):
                no_manual = "".join(linha.strip() for linha in bloco.splitlines())
                self.assertIn("<", no_manual)
                escrito = do_arquivo(dia, padrao, elemento)
                self.assertEqual(mascarar(no_manual, CALCULADOS), mascarar(escrito, CALCULADOS))

    def test_programa_desembaralha(self):
        (programa,) = (b[3] for b in BLOCO.findall(MANUAL.read_text("utf-8")) if b[0] == "programa")
        with tempfile.NamedTemporaryFile("w", suffix=".py") as arquivo:
            arquivo.write(programa)
            arquivo.flush()
            for caminho in (DIAS["dia"] / "contingencia").iterdir():
                saida = subprocess.run([sys.executable, arquivo.name, caminho],
                                       capture_output=True, check=True, timeout=60).stdout
                self.assertEqual(saida.decode("latin-1"), enviador.ler_documento(caminho))

    def test_situacoes_tem_as_palavras_da_autoridade(self):
        linhas = re.findall(r"^\| ([0-9]{3}) \| ([^|]*) \|", MANUAL.read_text("utf-8"), re.M)
        self.assertGreater(len(linhas), 15)
        for codigo, motivo in linhas:
            if codigo in sefaz_regras.MOTIVOS:
                self.assertEqual(sem_acentos(motivo), sefaz_regras.MOTIVOS[codigo])

    def test_cada_chave_da_configuracao_do_envio(self):
        chaves = re.findall(r'^ +(?:return \{\{)?\{"(\w+)",', (RAIZ / "envio/src/config/Chaves.h").read_text("utf-8"),
                            re.M)
        secao = MANUAL.read_text("utf-8").split("### Cada chave de", 1)[1].split("\n## ", 1)[0]
        nomes = [nome for celula in re.findall(r"^\| ([^|]*) \|", secao, re.M)
                 if not celula.startswith("**") for nome in re.findall(r"`(\w+)`", celula)]
        self.assertEqual(sorted(nomes), sorted(chaves))

    def test_nomes_das_copias_do_historico(self):
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
