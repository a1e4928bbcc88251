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
import threading
from ctypes import POINTER, byref, c_char_p, c_int, c_size_t, c_ubyte, c_void_p
from typing import Any, List, Optional, Union

__all__ = ["BibliotecaAusente", "FalhaNoCupom", "Recibo", "perfis"]

Caminho = Union[str, "os.PathLike[str]"]

_BYTES = [c_void_p, POINTER(POINTER(c_ubyte)), POINTER(c_size_t)]
_ASSINATURAS = {
    "novo": (c_void_p, []), "liberar": (None, [c_void_p]),
    "ler": (c_int, [c_void_p, c_char_p, c_size_t]),
    "definir_papel": (c_int, [c_void_p, c_int, c_int]),
    "definir_escala": (c_int, [c_void_p, c_int]),
    "definir_logotipo": (c_int, [c_void_p, c_char_p, c_int]),
    "definir_fonte": (c_int, [c_void_p, c_char_p, c_char_p]),
    "definir_perfil": (c_int, [c_void_p, c_char_p]),
    "definir_gaveta": (c_int, [c_void_p, c_int]),
    "png": (c_int, _BYTES), "svg": (c_int, _BYTES), "escpos": (c_int, _BYTES),
    "gravar_png": (c_int, [c_void_p, c_char_p]), "gravar_svg": (c_int, [c_void_p, c_char_p]),
    "imprimir": (c_int, [c_void_p, c_char_p, c_int]),
    "nome_do_perfil": (c_char_p, [c_int]), "enviados": (c_size_t, [c_void_p]),
    "estado": (c_int, [c_void_p]),
    "detalhe": (c_char_p, [c_void_p]), "descrever": (c_char_p, [c_int]),
    "liberar_bytes": (None, [POINTER(c_ubyte)])}


class BibliotecaAusente(Exception):
    """The shared object was not found, or cannot be loaded."""


class FalhaNoCupom(Exception):
    """What libzel-cupom answered: its code, the function, what the code means, and how far it came or
    what was wrong (`detalhe`); of a print also how many bytes the printer took (`enviados`)."""

    def __init__(self, funcao: str, codigo: int, significado: str, detalhe: str, enviados: int):
        self.funcao, self.codigo, self.significado = funcao, codigo, significado
        self.detalhe, self.enviados = detalhe, enviados
        super().__init__(f"{funcao}: {significado} ({codigo})" + (f": {detalhe}" if detalhe else ""))


def _carregar(nome: str) -> ctypes.CDLL:
    try:
        # errno says why a file could not be written.
        biblioteca = ctypes.CDLL(nome, use_errno=True)
    except OSError as erro:
        raise BibliotecaAusente(
            f"a biblioteca não pôde ser carregada: {erro}. Instale o pacote libzel-cupom1, ou diga onde "
            "ela está: o diretório em LD_LIBRARY_PATH, ou o arquivo no argumento biblioteca.") from erro
    for funcao, (resposta, tipos) in _ASSINATURAS.items():
        f = getattr(biblioteca, f"zel_cupom_{funcao}")
        f.restype, f.argtypes = resposta, tipos
    return biblioteca


_BIBLIOTECA = "libzel-cupom.so.1"


def _nome(argumento: str, caminho: Caminho) -> bytes:
    escrito = os.fsencode(caminho)
    if b"\0" in escrito:
        raise ValueError(f"{argumento}: nome de arquivo com U+0000")
    return escrito


def perfis(*, biblioteca: str = _BIBLIOTECA) -> List[str]:
    """The names of the printer profiles that the library holds."""
    nomes: List[str] = []
    lib = _carregar(biblioteca)
    while True:
        nome = lib.zel_cupom_nome_do_perfil(len(nomes))
        if nome is None:
            return nomes
        nomes.append(nome.decode("ascii"))


class Recibo:
    """One receipt, with its paper and its printer; closed at the end of a `with`. Calls from several
    threads are made one after the other."""

    def __init__(self, texto: str, *, colunas: int = 48, papel: int = 0, escala: int = 1,
                 logotipo: Optional[Caminho] = None, cinza: bool = False, perfil: Optional[str] = None,
                 gaveta: bool = False, biblioteca: str = _BIBLIOTECA):
        """`texto` is what Cupom.imprimir answers: characters of ISO-8859-1. `papel` is its width in mm,
        0 the usual one of 48 or 42 `colunas`; `logotipo` a PNG file; `perfil` the name of a printer
        profile or the path of a file."""
        self._lib = _carregar(biblioteca)
        self._trava = threading.Lock()
        self._alca = self._lib.zel_cupom_novo()
        if not self._alca:
            raise MemoryError("zel_cupom_novo")
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
        except BaseException:
            self.fechar()
            raise

    def __enter__(self) -> Recibo:
        return self

    def __exit__(self, *_: Any) -> None:
        self.fechar()

    def __del__(self) -> None:
        if getattr(self, "_alca", None):
            self.fechar()

    def fechar(self) -> None:
        with self._trava:
            self._lib.zel_cupom_liberar(self._alca)
            self._alca = None

    def _chamar(self, funcao: str, *argumentos: Any) -> None:
        with self._trava:
            if not self._alca:
                raise ValueError("o recibo já foi fechado")
            codigo = getattr(self._lib, f"zel_cupom_{funcao}")(self._alca, *argumentos)
            if codigo > 0:
                return
            erro = ctypes.get_errno() if codigo == -6 else 0
            relata = funcao in ("imprimir", "definir_perfil")
            detalhe = self._lib.zel_cupom_detalhe(self._alca).decode("latin-1") if relata else ""
            enviados = self._lib.zel_cupom_enviados(self._alca) if funcao == "imprimir" else 0
        significado = self._lib.zel_cupom_descrever(codigo).decode("latin-1")
        raise FalhaNoCupom(f"zel_cupom_{funcao}", codigo, significado,
                           detalhe or (os.strerror(erro) if erro else ""), enviados)

    def _bytes(self, funcao: str) -> bytes:
        inicio, tamanho = POINTER(c_ubyte)(), c_size_t()
        self._chamar(funcao, byref(inicio), byref(tamanho))
        try:
            return ctypes.string_at(inicio, tamanho.value)
        finally:
            self._lib.zel_cupom_liberar_bytes(inicio)

    def png(self) -> bytes:
        """The picture of the paper."""
        return self._bytes("png")

    def svg(self) -> bytes:
        return self._bytes("svg")

    def escpos(self) -> bytes:
        """The bytes that print it on the printer of the profile."""
        return self._bytes("escpos")

    def gravar_png(self, arquivo: Caminho) -> None:
        self._chamar("gravar_png", _nome("arquivo", arquivo))

    def gravar_svg(self, arquivo: Caminho) -> None:
        self._chamar("gravar_svg", _nome("arquivo", arquivo))

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
