# SPDX-License-Identifier: MIT
"""What the bindings of libzel-cupom and libzel-envio have in common: a library that is loaded, and an
object of it that is used by one thread at a time and closed at the end of a `with`."""
from __future__ import annotations

import ctypes
import os
import threading
from typing import Any, Dict, List, Tuple, Union

Caminho = Union[str, "os.PathLike[str]"]
Assinaturas = Dict[str, Tuple[Any, List[Any]]]


class BibliotecaAusente(Exception):
    """The shared object was not found, or cannot be loaded."""


def carregar(nome: str, prefixo: str, assinaturas: Assinaturas, pacote: str) -> ctypes.CDLL:
    try:
        # errno says why a file could not be written.
        biblioteca = ctypes.CDLL(nome, use_errno=True)
    except OSError as erro:
        raise BibliotecaAusente(
            f"a biblioteca não pôde ser carregada: {erro}. Instale {pacote}, ou diga onde ela está: o "
            "diretório em LD_LIBRARY_PATH, ou o arquivo no argumento biblioteca.") from erro
    for funcao, (resposta, tipos) in assinaturas.items():
        f = getattr(biblioteca, prefixo + funcao)
        f.restype, f.argtypes = resposta, tipos
    return biblioteca


def nome_de_arquivo(argumento: str, caminho: Caminho) -> bytes:
    escrito = os.fsencode(caminho)
    if b"\0" in escrito:
        raise ValueError(f"{argumento}: nome de arquivo com U+0000")
    return escrito


class ComAlca:
    """`_prefixo` begins the names of its functions; `_quem` is what it is called when it is closed."""
    _prefixo = _quem = ""

    def __init__(self, biblioteca: ctypes.CDLL):
        self._lib = biblioteca
        self._trava = threading.RLock()
        self._alca = self._funcao("novo")()
        if not self._alca:
            raise MemoryError(f"{self._prefixo}novo")

    def _funcao(self, nome: str) -> Any:
        return getattr(self._lib, self._prefixo + nome)

    def __enter__(self) -> Any:
        return self

    def __exit__(self, *_: Any) -> None:
        self.fechar()

    def __del__(self) -> None:
        if getattr(self, "_alca", None):
            self.fechar()

    def fechar(self) -> None:
        with self._trava:
            self._funcao("liberar")(self._alca)
            self._alca = None

    def _aberta(self) -> Any:
        if not self._alca:
            raise ValueError(f"{self._quem} já foi fechado")
        return self._alca

    def _chamar(self, funcao: str, *argumentos: Any) -> Any:
        raise NotImplementedError

    def _bytes(self, funcao: str, quantos: int, *argumentos: Any) -> List[bytes]:
        """What a function writes into so many pairs of address and length behind its arguments."""
        saidas = [(ctypes.c_void_p(), ctypes.c_size_t()) for _ in range(quantos)]
        try:
            self._chamar(funcao, *argumentos,
                         *(ctypes.byref(saida) for par in saidas for saida in par))
            return [ctypes.string_at(inicio, tamanho.value) for inicio, tamanho in saidas]
        finally:
            for inicio, _ in saidas:
                self._funcao("liberar_bytes")(inicio)
