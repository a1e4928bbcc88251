# SPDX-License-Identifier: MIT
"""The till's documents as the tax authority takes them, through libzel-envio.

    from zel_envio import Envio

    with Envio("zel-envio.toml") as envio:
        envio.ler(Path("documentosEnvio.xml").read_bytes())
        envio.assinar()
        enviar(envio.mensagem(), envio.valor("chave"))

What each function does is in zel_envio.h.
"""
from __future__ import annotations

import ctypes
import enum
import os
import threading
from ctypes import POINTER, byref, c_char_p, c_int, c_size_t, c_void_p
from typing import Any, List, Optional, Tuple, Union

__all__ = ["BibliotecaAusente", "Envio", "FalhaNoEnvio", "Tipo", "versao"]

Caminho = Union[str, "os.PathLike[str]"]

_BYTES = [POINTER(c_void_p), POINTER(c_size_t)]
_ASSINATURAS = {
    "novo": (c_void_p, []), "liberar": (None, [c_void_p]),
    "configurar": (c_int, [c_void_p, c_char_p]),
    "configurar_texto": (c_int, [c_void_p, c_char_p, c_size_t, c_char_p]),
    "ler": (c_int, [c_void_p, c_char_p, c_size_t]), "tipo": (c_int, [c_void_p]),
    "completar": (c_int, [c_void_p, c_char_p, c_char_p, c_char_p, c_char_p]),
    "traduzir": (c_int, [c_void_p]), "assinar": (c_int, [c_void_p]),
    "verificar": (c_int, [c_void_p]), "valor": (c_char_p, [c_void_p, c_char_p]),
    "mensagem": (c_int, [c_void_p, *_BYTES]), "mostrar": (c_int, [c_void_p, *_BYTES]),
    "impressao": (c_int, [c_void_p, c_char_p, c_size_t, *_BYTES, *_BYTES]),
    "liberar_bytes": (None, [c_void_p]),
    "detalhe": (c_char_p, [c_void_p]), "descrever": (c_char_p, [c_int]), "versao": (c_char_p, [])}


class BibliotecaAusente(Exception):
    """The shared object was not found, or cannot be loaded."""


class FalhaNoEnvio(Exception):
    """What libzel-envio answered: its code, the function, what the code means, and in `detalhe` all
    that is wrong, a line for each thing."""

    def __init__(self, funcao: str, codigo: int, significado: str, detalhe: str):
        self.funcao, self.codigo, self.significado, self.detalhe = funcao, codigo, significado, detalhe
        super().__init__(f"{funcao}: {significado} ({codigo})" + (f":\n{detalhe}" if detalhe else ""))

    def __reduce__(self) -> Any:
        return type(self), (self.funcao, self.codigo, self.significado, self.detalhe)


class Tipo(enum.IntEnum):
    """What was read."""
    NENHUM = 0
    NFCE = 1
    CANCELAMENTO = 2
    INUTILIZACAO = 3
    CONSULTA = 4


_BIBLIOTECA = "libzel-envio.so.1"


def _carregar(nome: str) -> ctypes.CDLL:
    try:
        biblioteca = ctypes.CDLL(nome)
    except OSError as erro:
        raise BibliotecaAusente(
            f"a biblioteca não pôde ser carregada: {erro}. Instale a libzel-envio, ou diga onde ela "
            "está: o diretório em LD_LIBRARY_PATH, ou o arquivo no argumento biblioteca.") from erro
    for funcao, (resposta, tipos) in _ASSINATURAS.items():
        f = getattr(biblioteca, f"zel_envio_{funcao}")
        f.restype, f.argtypes = resposta, tipos
    return biblioteca


def versao(*, biblioteca: str = _BIBLIOTECA) -> str:
    """The version of the library that is loaded."""
    return str(_carregar(biblioteca).zel_envio_versao().decode("ascii"))


def _texto(argumento: str, texto: str) -> bytes:
    if "\0" in texto:
        raise ValueError(f"{argumento}: texto com U+0000")
    return texto.encode("utf-8")


def _nome(argumento: str, caminho: Caminho) -> bytes:
    escrito = os.fsencode(caminho)
    if b"\0" in escrito:
        raise ValueError(f"{argumento}: nome de arquivo com U+0000")
    return escrito


class Envio:
    """One configuration with its certificate, and one document at a time; closed at the end of a
    `with`. Calls from several threads are made one after the other."""

    def __init__(self, configuracao: Optional[Caminho] = None, *, biblioteca: str = _BIBLIOTECA):
        """`configuracao` is a zel-envio.toml; without one nothing is signed or judged by schemas."""
        self._lib = _carregar(biblioteca)
        self._trava = threading.RLock()
        self._alca = self._lib.zel_envio_novo()
        if not self._alca:
            raise MemoryError("zel_envio_novo")
        try:
            if configuracao is not None:
                self._chamar("configurar", _nome("configuracao", configuracao))
        except BaseException:
            self.fechar()
            raise

    def __enter__(self) -> Envio:
        return self

    def __exit__(self, *_: Any) -> None:
        self.fechar()

    def __del__(self) -> None:
        if getattr(self, "_alca", None):
            self.fechar()

    def fechar(self) -> None:
        with self._trava:
            self._lib.zel_envio_liberar(self._alca)
            self._alca = None

    def _aberto(self) -> Any:
        if not self._alca:
            raise ValueError("o envio já foi fechado")
        return self._alca

    def _detalhe(self) -> str:
        return str(self._lib.zel_envio_detalhe(self._alca).decode("utf-8", "replace"))

    def _chamar(self, funcao: str, *argumentos: Any) -> str:
        """Answers the detail of a call that succeeded."""
        with self._trava:
            codigo = getattr(self._lib, f"zel_envio_{funcao}")(self._aberto(), *argumentos)
            detalhe = self._detalhe()
        if codigo > 0:
            return detalhe
        significado = self._lib.zel_envio_descrever(codigo).decode("utf-8")
        raise FalhaNoEnvio(f"zel_envio_{funcao}", codigo, significado, detalhe)

    def _bytes(self, funcao: str, quantos: int, *argumentos: Any) -> List[bytes]:
        saidas = [(c_void_p(), c_size_t()) for _ in range(quantos)]
        try:
            self._chamar(funcao, *argumentos, *(byref(saida) for par in saidas for saida in par))
            return [ctypes.string_at(inicio, tamanho.value) for inicio, tamanho in saidas]
        finally:
            for inicio, _ in saidas:
                self._lib.zel_envio_liberar_bytes(inicio)

    def configurar_texto(self, toml: str, diretorio: Caminho = "") -> None:
        """A configuration's text; `diretorio` is where its relative paths begin."""
        texto = toml.encode("utf-8")
        self._chamar("configurar_texto", texto, len(texto), _nome("diretorio", diretorio))

    def ler(self, documento: bytes) -> Tipo:
        """The bytes of a till's file (documentosEnvio.xml, .ctg, .ctgCanc), or of a document of
        layout 4.00."""
        with self._trava:
            self._chamar("ler", documento, len(documento))
            return Tipo(self._lib.zel_envio_tipo(self._alca))

    def completar(self, *, protocolo: str = "", substituta: str = "", data: str = "",
                  troco: str = "") -> None:
        """What the till's file leaves out."""
        self._chamar("completar", _texto("protocolo", protocolo), _texto("substituta", substituta),
                     _texto("data", data), _texto("troco", troco))

    def traduzir(self) -> None:
        self._chamar("traduzir")

    def assinar(self) -> None:
        """Translates if that is due, signs, adds the QR code; the schemas judge the whole."""
        self._chamar("assinar")

    def mensagem(self) -> bytes:
        """The message that was made last, UTF-8."""
        return self._bytes("mensagem", 1)[0]

    def valor(self, nome: str) -> str:
        """A fact of the document or the certificate: "chave", "qrCode", "certificado.dias"..."""
        with self._trava:
            valor = self._lib.zel_envio_valor(self._aberto(), _texto("nome", nome))
            if valor is None:
                raise KeyError(nome)
            return str(valor.decode("utf-8"))

    def verificar(self) -> List[str]:
        """Answers what was looked at; what is wrong is in the FalhaNoEnvio."""
        return self._chamar("verificar").splitlines()

    def mostrar(self) -> str:
        """The document as a person reads it."""
        return self._bytes("mostrar", 1)[0].decode("utf-8")

    def impressao(self, resposta: Optional[bytes] = None) -> Tuple[bytes, bytes]:
        """Document and return for Cupom.imprimir, each to be written to a file; `resposta` is the
        authority's answer, None for an offline receipt."""
        documento, retorno = self._bytes("impressao", 2, resposta, len(resposta or b""))
        return documento, retorno
