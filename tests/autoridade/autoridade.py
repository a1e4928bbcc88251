#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""A stand-in of the tax authority on 127.0.0.1, for tests and demonstrations.

    autoridade.py DIR [--porta N] [--controle N] [--esquemas DIR] [--ordem LINE]... [--ajuste NAME=VALUE]...
    autoridade.py DIR --comandar LINE...

DIR keeps its certificates and its books (livros.db): a stand-in that is started there again goes on.
When it is ready DIR/pronto.json holds the ports, the addresses of the services and where the
certificates are: ac.pem to trust the server by, titular.pfx (password "ensaio") for the shop. It ends
with SIGTERM. ordens.py tells what can be ordered, AJUSTES in servicos.py what can be set; --comandar
sends lines to the one that runs: "ordem numero=12 nunca", "ajuste linha=fora", "limpar"."""
import argparse
import json
import os
import signal
import sys
import urllib.error
import urllib.request
from pathlib import Path

sys.dont_write_bytecode = True
import certificados  # noqa: E402
from livros import Livros  # noqa: E402
from ordens import Ordens  # noqa: E402
from regras import METODOS, Juiz  # noqa: E402
from servicos import AJUSTES, Servicos  # noqa: E402
from servidor import Servidor, ServidorControle, contexto_tls, em_fundo  # noqa: E402


def abrir(opcoes):
    """The servers of these options, listening and served by threads of their own."""
    pasta = Path(opcoes.diretorio)
    autoridade = certificados.Autoridade(pasta)
    autoridade.titular(opcoes.cnpj)
    livros = Livros(pasta / "livros.db")
    confiar = [autoridade.certificado, *opcoes.confiar]
    servicos = Servicos(livros, Juiz(opcoes.esquemas, confiar), dict(AJUSTES))
    contexto = contexto_tls(autoridade, not opcoes.sem_certificado, opcoes.confiar, opcoes.tls)
    servidor = Servidor(opcoes.porta, contexto, servicos, livros, Ordens())
    controle = ServidorControle(opcoes.controle, servidor)
    for linha in [f"ajuste {a}" for a in opcoes.ajuste] + [f"ordem {o}" for o in opcoes.ordem]:
        controle.servidor_comandar(linha)
    return em_fundo(servidor), em_fundo(controle)


def anunciar(pasta, servidor, controle):
    porta = servidor.server_address[1]
    pronto = {"pid": os.getpid(), "porta": porta, "controle": controle.server_address[1],
              "enderecos": {nome: f"https://127.0.0.1:{porta}/ws/{nome}" for nome in METODOS},
              "ac": str(pasta / "ac.pem"), "titular": str(pasta / "titular.pfx"), "senha": certificados.SENHA}
    novo = pasta / "pronto.novo"
    novo.write_text(json.dumps(pronto, indent=1) + "\n", encoding="utf-8")
    novo.rename(pasta / "pronto.json")


def comandar(pasta, linhas):
    """Sends lines to the one that runs over `pasta`; its answer, or ValueError with what it says."""
    porta = json.loads((Path(pasta) / "pronto.json").read_text("utf-8"))["controle"]
    try:
        with urllib.request.urlopen(f"http://127.0.0.1:{porta}/", "\n".join(linhas).encode(), 30) as resposta:
            return resposta.read().decode()
    except urllib.error.HTTPError as erro:
        raise ValueError(erro.read().decode()) from erro


def opcoes_de(argumentos):
    leitor = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    leitor.add_argument("diretorio", type=lambda texto: Path(texto).resolve())
    leitor.add_argument("--porta", type=int, default=0)
    leitor.add_argument("--controle", type=int, default=0)
    leitor.add_argument("--cnpj", default=certificados.CNPJ, help="of the holder in titular.pfx")
    leitor.add_argument("--esquemas", default=os.environ.get("ZEL_ESQUEMAS"))
    leitor.add_argument("--sem-esquemas", dest="esquemas", action="store_const", const=None)
    leitor.add_argument("--sem-certificado", action="store_true", help="asks no client for one")
    leitor.add_argument("--confiar", action="append", default=[], help="PEM of one more authority of holders")
    leitor.add_argument("--tls", choices=["1.2", "1.3"])
    leitor.add_argument("--ordem", action="append", default=[])
    leitor.add_argument("--ajuste", action="append", default=[])
    leitor.add_argument("--comandar", nargs="+")
    return leitor.parse_args(argumentos)


def main():
    opcoes = opcoes_de(None)
    if opcoes.comandar:
        try:
            print(comandar(opcoes.diretorio, opcoes.comandar), end="")
        except ValueError as erro:
            sys.exit(str(erro))
        return
    signal.pthread_sigmask(signal.SIG_BLOCK, (signal.SIGTERM, signal.SIGINT))
    (opcoes.diretorio / "pronto.json").unlink(missing_ok=True)
    anunciar(opcoes.diretorio, *abrir(opcoes))
    signal.sigwait((signal.SIGTERM, signal.SIGINT))


if __name__ == "__main__":
    main()
