# SPDX-License-Identifier: MIT
"""Receipts in printer mark-up as pictures and on printers, through libzel-cupom.

    from zel_cupom import Recibo

    with Recibo(texto, perfil="generico-80mm") as recibo:
        recibo.gravar_png("cupom.png")
        recibo.imprimir("tcp://10.0.0.5", espera=5000)

What each function does is in zel_cupom.h.
"""
from __future__ import annotations

import ctypes
import os
from ctypes import POINTER, c_char_p, c_int, c_size_t, c_void_p
from typing import Any, List, Optional

from zel_alca import BibliotecaAusente, Caminho, ComAlca, carregar
from zel_alca import nome_de_arquivo as _nome

__all__ = ["BibliotecaAusente", "FalhaNoCupom", "Recibo", "perfis", "versao"]

_BYTES = [c_void_p, POINTER(c_void_p), POINTER(c_size_t)]
_ASSINATURAS = {
    "novo": (c_void_p, []), "liberar": (None, [c_void_p]),
    "ler": (c_int, [c_void_p, c_char_p, c_size_t]),
    "definir_papel": (c_int, [c_void_p, c_int, c_int]),
    "definir_escala": (c_int, [c_void_p, c_int]),
    "definir_logotipo": (c_int, [c_void_p, c_char_p, c_int]),
    "definir_fonte": (c_int, [c_void_p, c_char_p, c_char_p]),
    "definir_perfil": (c_int, [c_void_p, c_char_p]),
    "definir_gaveta": (c_int, [c_void_p, c_int]), "definir_impressao": (c_int, [c_void_p, c_int]),
    "png": (c_int, _BYTES), "svg": (c_int, _BYTES), "pdf": (c_int, _BYTES), "escpos": (c_int, _BYTES),
    "gravar_png": (c_int, [c_void_p, c_char_p]), "gravar_svg": (c_int, [c_void_p, c_char_p]),
    "gravar_pdf": (c_int, [c_void_p, c_char_p]),
    "imprimir": (c_int, [c_void_p, c_char_p, c_int]),
    "nome_do_perfil": (c_char_p, [c_int]), "enviados": (c_size_t, [c_void_p]),
    "estado": (c_int, [c_void_p]),
    "detalhe": (c_char_p, [c_void_p]), "descrever": (c_char_p, [c_int]),
    "liberar_bytes": (None, [c_void_p]), "versao": (c_char_p, [])}
_FIGURA, _ARQUIVO, _PERFIL = 1, -6, -8  # of zel_cupom.h


class FalhaNoCupom(Exception):
    """What libzel-cupom answered: its code, the function, what the code means, and how far it came or
    what was wrong (`detalhe`); of a print also how many bytes the printer took (`enviados`)."""

    def __init__(self, funcao: str, codigo: int, significado: str, detalhe: str, enviados: int):
        self.funcao, self.codigo, self.significado = funcao, codigo, significado
        self.detalhe, self.enviados = detalhe, enviados
        super().__init__(f"{funcao}: {significado} ({codigo})" + (f": {detalhe}" if detalhe else ""))


_BIBLIOTECA = "libzel-cupom.so.1"


def _carregar(nome: str) -> ctypes.CDLL:
    return carregar(nome, "zel_cupom_", _ASSINATURAS, "o pacote libzel-cupom1")


def versao(*, biblioteca: str = _BIBLIOTECA) -> str:
    """The version of the library that is loaded."""
    return str(_carregar(biblioteca).zel_cupom_versao().decode("ascii"))


def perfis(*, biblioteca: str = _BIBLIOTECA) -> List[str]:
    """The names of the printer profiles that the library holds."""
    nomes: List[str] = []
    lib = _carregar(biblioteca)
    while True:
        nome = lib.zel_cupom_nome_do_perfil(len(nomes))
        if nome is None:
            return nomes
        nomes.append(nome.decode("ascii"))


class Recibo(ComAlca):
    """One receipt, with its paper and its printer; closed at the end of a `with`. Calls from several
    threads are made one after the other."""
    _prefixo, _quem = "zel_cupom_", "o recibo"

    def __init__(self, texto: str, *, colunas: int = 48, papel: int = 0, escala: int = 1,
                 logotipo: Optional[Caminho] = None, cinza: bool = False, perfil: Optional[str] = None,
                 gaveta: bool = False, em_pontos: bool = False, biblioteca: str = _BIBLIOTECA):
        """`texto` is what Cupom.imprimir answers: characters of ISO-8859-1. `papel` is its width in mm,
        0 the usual one of 48 or 42 `colunas`; `logotipo` a PNG file; `perfil` the name of a printer
        profile or the path of a file; `em_pontos` prints the picture, not the printer's letters."""
        super().__init__(_carregar(biblioteca))
        try:
            latin1 = texto.encode("latin-1")
            self._chamar("ler", latin1, len(latin1))
            self._chamar("definir_papel", colunas, papel)
            self._chamar("definir_escala", escala)
            if logotipo is not None:
                self._chamar("definir_logotipo", _nome("logotipo", logotipo), int(cinza))
            if perfil is not None:
                self._chamar("definir_perfil", _nome("perfil", perfil))
            self._chamar("definir_gaveta", int(gaveta))
            self._chamar("definir_impressao", _FIGURA if em_pontos else 0)
        except BaseException:
            self.fechar()
            raise

    def _chamar(self, funcao: str, *argumentos: Any) -> None:
        with self._trava:
            codigo = self._funcao(funcao)(self._aberta(), *argumentos)
            if codigo > 0:
                return
            erro = ctypes.get_errno() if codigo == _ARQUIVO else 0
            relata = funcao in ("imprimir", "definir_perfil") or codigo == _PERFIL
            detalhe = self._lib.zel_cupom_detalhe(self._alca).decode("latin-1") if relata else ""
            enviados = self._lib.zel_cupom_enviados(self._alca) if funcao == "imprimir" else 0
        significado = self._lib.zel_cupom_descrever(codigo).decode("latin-1")
        raise FalhaNoCupom(f"zel_cupom_{funcao}", codigo, significado,
                           detalhe or (os.strerror(erro) if erro else ""), enviados)

    def png(self) -> bytes:
        """The picture of the paper."""
        return self._bytes("png", 1)[0]

    def svg(self) -> bytes:
        return self._bytes("svg", 1)[0]

    def pdf(self) -> bytes:
        """The paper as PDF, letters as text."""
        return self._bytes("pdf", 1)[0]

    def escpos(self) -> bytes:
        """The bytes that print it on the printer of the profile."""
        return self._bytes("escpos", 1)[0]

    def gravar_png(self, arquivo: Caminho) -> None:
        self._chamar("gravar_png", _nome("arquivo", arquivo))

    def gravar_svg(self, arquivo: Caminho) -> None:
        self._chamar("gravar_svg", _nome("arquivo", arquivo))

    def gravar_pdf(self, arquivo: Caminho) -> None:
        self._chamar("gravar_pdf", _nome("arquivo", arquivo))

    def imprimir(self, destino: str, *, espera: int = 5000) -> int:
        """To "tcp://HOST", a device or a file, within `espera` milliseconds; answers how many bytes
        the printer took."""
        self._chamar("imprimir", _nome("destino", destino), espera)
        return int(self._lib.zel_cupom_enviados(self._alca))

    def estado(self) -> str:
        """What the printer said last of the last print: "pronta", or why it cannot print; empty when
        it said nothing."""
        with self._trava:
            codigo = self._lib.zel_cupom_estado(self._alca)
        if codigo == 0:
            return ""
        return "pronta" if codigo > 0 else self._lib.zel_cupom_descrever(codigo).decode("latin-1")

    def definir_fonte(self, normal: Optional[Caminho], negrito: Optional[Caminho] = None) -> None:
        self._chamar("definir_fonte", *(None if f is None else _nome("fonte", f)
                                        for f in (normal, negrito)))
