#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""A till of the tests: the real libraries over one directory, told line by line what to do.

    caixa.py BUILD DIRECTORY

Reads ["command", argument...] of JSON from its standard input and answers each with one line of JSON.
A process of its own, since a library serves one directory, and so that it can be killed."""
import ctypes
import json
import os
import sys
import time
from decimal import Decimal
from pathlib import Path

sys.dont_write_bytecode = True
RAIZ = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(RAIZ / "wrappers" / "python"))
from zel_felbor import Aliquota, Cupom, FormaPagamento  # noqa: E402

BUILD, PASTA = Path(sys.argv[1]), Path(sys.argv[2])
CONFIGURACAO = {
    r"EMIT\CNPJ": "12345678000195", r"EMIT\IE": "0963233556", r"EMIT\xNome": "Loja de Ensaio",
    r"EMIT\CRT": "1", r"EMIT\ENDEREMIT\xLgr": "Rua", r"EMIT\ENDEREMIT\Nro": "1",
    r"EMIT\ENDEREMIT\xBairro": "Centro", r"EMIT\ENDEREMIT\xMun": "Porto Alegre", r"EMIT\ENDEREMIT\UF": "RS",
    r"EMIT\ENDEREMIT\CEP": "90010000", r"EMIT\ENDEREMIT\cMun": "4314902", r"IDE\cMunFG": "4314902",
    r"IDE\cUF": "43", r"IMPOSTO\ICMS\ICMS00\Orig": "", r"IMPOSTO\ICMS\ICMSSN102\Orig": "0",
    r"IMPOSTO\ICMS\ICMSSN102\CSOSN": "102", r"PROD\NCM": "19059090", r"CONFIGURACAO\TipoAmbiente": "2",
    r"CONFIGURACAO\HistoricoXML": "1"}


class Caixa:
    def __init__(self):
        self.cupom = Cupom(PASTA, biblioteca=str(BUILD / "libZEL_FelborFramework.so.1"))

    def configurar(self, copias, serie, numero):
        for chave, valor in {**CONFIGURACAO, r"CONFIGURACAO\PathXMLEnvio": copias, r"IDE\Serie": str(serie),
                             r"IDE\NF": str(numero)}.items():
            self.cupom.alterar_valor(chave, valor)

    def vender(self, numero=None):
        """The key, and when the sale was on disk."""
        if numero:
            self.cupom.alterar_valor(r"IDE\NF", str(numero - 1))
        self.cupom.alterar_valor(r"IDE\tpEmis", "1")
        self.cupom.abrir()
        self.cupom.vender(Aliquota.isento(), 2, Decimal("12.50"), "101", "UN", "Cafe 500 g")
        self.cupom.totalizar()
        self.cupom.efetuar_pagamento(FormaPagamento.DINHEIRO, 30)
        self.cupom.encerrar()
        return self.chave(), time.time()

    def chave(self):
        return self.cupom.retornar_valor(r"NFCE\ChaveDeAcesso")

    def reemitir(self, tipo):
        """Offline, by kind 3, 4 or 5."""
        self.cupom.alterar_valor(r"IDE\tpEmis", "9")
        if tipo == 4:
            self.cupom.contingencia([str(PASTA) + "/"])
        else:
            self.cupom.reemitir(tipo)
        return self.chave()

    def cancelar(self, chave, protocolo=""):
        numero, serie = str(int(chave[25:34])), str(int(chave[22:25]))
        return self.cupom.cancelar(numero, serie, chave, protocolo, "Venda desfeita no balcao").name

    def inutilizar(self, primeiro, ultimo):
        self.cupom.inutilizar(str(primeiro), str(ultimo), self.cupom.retornar_valor(r"IDE\Serie"), "Numeros pulados")

    @staticmethod
    def morrer(em):
        """Dies at the call of that number from now on, where morre.c is loaded."""
        os.environ["ZEL_MORRE_EM"] = str(em)

    def transmitir(self, config, segundos, substitui=""):
        """What zel_envio_transmitir answers for the till's last document."""
        e = ctypes.CDLL(str(BUILD / "libzel-envio.so.1"))
        e.zel_envio_novo.restype, e.zel_envio_detalhe.restype = ctypes.c_void_p, ctypes.c_char_p
        alca = ctypes.c_void_p(e.zel_envio_novo())
        documento = (PASTA / "documentosEnvio.xml").read_bytes()
        for passo in (lambda: e.zel_envio_configurar(alca, config.encode()),
                      lambda: e.zel_envio_ler(alca, documento, len(documento)),
                      lambda: e.zel_envio_transmitir(alca, str(PASTA).encode(), substitui.encode(), segundos)):
            codigo = passo()
            if codigo < 0:
                break
        detalhe = (e.zel_envio_detalhe(alca) or b"").decode()
        e.zel_envio_liberar(alca)
        return codigo, detalhe


def main():
    caixa = Caixa()
    for linha in sys.stdin:
        comando, *argumentos = json.loads(linha)
        print(json.dumps(getattr(caixa, comando)(*argumentos)), flush=True)


if __name__ == "__main__":
    main()
