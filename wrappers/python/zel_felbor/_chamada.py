# SPDX-License-Identifier: MIT
"""The library, loaded once for the process, and one call of it at a time."""
from __future__ import annotations

import ctypes
import os
import threading
from pathlib import Path
from typing import Any, Optional, Sequence

from . import _valores
from ._tabelas import ASSINATURAS, CODIGOS, TAMANHOS, Codigo, Estado
from ._valores import Caminho, EntradaRecusada, ErroZel

SAIDA = object()  # stands for the result buffer among the arguments

_trava = threading.Lock()
_biblioteca: Optional[ctypes.CDLL] = None
_diretorio: Optional[str] = None


class Recusa(ErroZel):
    """What the library refused: code, name, meaning and remedy, and the function. `texto` is what
    the function wrote all the same: a receipt whose PDF failed."""

    def __init__(self, funcao: str, numero: int, texto: str = ""):
        self.funcao, self.numero, self.texto = funcao, numero, texto
        nome, significado, remedio = CODIGOS.get(
            numero, ("DESCONHECIDO", "Código que este pacote não conhece.", ""))
        self.codigo = Codigo(numero) if numero in CODIGOS else None
        self.nome, self.significado, self.remedio = nome, significado, remedio
        super().__init__(f"{funcao}: {nome} ({numero}): {significado} {remedio}")


def _carregar(diretorio: str, nome: str) -> ctypes.CDLL:
    """The library reads ZEL_DIRETORIO once, so that the first directory is the process's."""
    global _biblioteca, _diretorio
    with _trava:
        if _biblioteca is None:
            os.environ["ZEL_DIRETORIO"] = diretorio
            biblioteca = ctypes.CDLL(nome)
            for funcao, tipos in ASSINATURAS.items():
                getattr(biblioteca, funcao).argtypes = tipos
                getattr(biblioteca, funcao).restype = ctypes.c_int
            _biblioteca, _diretorio = biblioteca, diretorio
        if _diretorio != diretorio:
            raise EntradaRecusada(f"este processo já trabalha em {_diretorio}")
        return _biblioteca


class Chamador:
    """The data directory, and calls with their results."""

    def __init__(self, diretorio: Caminho, *, transliterar: bool = False,
                 biblioteca: str = "libZEL_FelborFramework.so.1"):
        """`diretorio` is absolute and exists; the library keeps its files there. `transliterar`
        replaces typographic quotes, dashes, ellipses and blanks by plain ones; `biblioteca` is the
        name or path of the shared object, which the first one of a process loads."""
        caminho = Path(diretorio)
        if not caminho.is_absolute():
            raise EntradaRecusada(f"o diretório não é um caminho absoluto: {caminho}")
        if not caminho.is_dir():
            raise EntradaRecusada(f"o diretório não existe: {caminho}")
        self.diretorio = caminho
        self.transliterar = transliterar
        self._biblioteca = _carregar(str(caminho), biblioteca)

    def arquivo(self, nome: str) -> Path:
        """A file of the data directory: "documentosEnvio.xml"."""
        return self.diretorio / nome

    def _texto(self, argumento: str, valor: str) -> bytes:
        return _valores.texto(argumento, valor, self.transliterar)

    def _invocar(self, funcao: str, argumentos: Sequence[Any]) -> int:
        with _trava:
            return int(getattr(self._biblioteca, funcao)(*argumentos))

    def _chamar(self, funcao: str, *argumentos: Any) -> Codigo:
        resposta = self._invocar(funcao, argumentos)
        if resposta <= 0:
            raise Recusa(funcao, resposta)
        return Codigo(resposta)

    def _estado(self, funcao: str) -> Estado:
        resposta = self._invocar(funcao, ())
        if resposta < 0:
            raise Recusa(funcao, resposta)
        return Estado(resposta)

    def _ler(self, funcao: str, tamanho: int, *argumentos: Any, entrada: bytes = b"",
             codificacao: str = "latin-1") -> str:
        """The text that comes back in a buffer of `tamanho` bytes, which takes SAIDA's place."""
        saida = ctypes.create_string_buffer(entrada, tamanho)
        resposta = self._invocar(funcao, [saida if a is SAIDA else a for a in argumentos])
        texto = saida.value.decode(codificacao, "surrogateescape")
        if resposta <= 0:
            raise Recusa(funcao, resposta, texto)
        return texto

    def _gravar_em(self, funcao: str, lista: Sequence[Caminho], *argumentos: Any) -> str:
        """Directories in, the path of the last file out."""
        entrada = _valores.diretorios("diretorios", lista)
        tamanho = max(TAMANHOS["ZEL_TAMANHO_DIRETORIOS"], len(entrada) + 64)
        return self._ler(funcao, tamanho, *argumentos, entrada=entrada, codificacao="utf-8")

    def _bytes_de(self, nome: str) -> int:
        try:
            return self.arquivo(nome).stat().st_size
        except OSError:
            return 0

    def _tamanho_do_ultimo(self) -> int:
        return max(TAMANHOS["ZEL_TAMANHO_CUPOM"], self._bytes_de("ultimadanfe.bin") + 1)

    def _tamanho_do_cupom(self, documento: Caminho, retorno: Caminho, url: str) -> int:
        """Bytes that the receipt text of a document takes at most. A scrambled file cannot be
        counted: its items are at least 256 bytes and its payments 40, as the library writes
        them."""
        try:
            xml = Path(documento).read_bytes()
            do_retorno = 0 if retorno == "OFFLINE" else Path(retorno).stat().st_size
        except OSError as erro:
            raise EntradaRecusada(f"{erro.filename}: não pôde ser lido: {erro.strerror}") from erro
        if xml[:1] == b"<":
            itens, pagamentos = xml.count(b"<det"), xml.count(b"<pag")
            maior = mensagem = max(map(len, xml.split(b"<")))
        else:
            itens, pagamentos = len(xml) // 256 + 1, len(xml) // 40 + 1
            maior, mensagem = 1024, len(xml)
        via = (16384 + 32 * maior + 2 * (mensagem + self._bytes_de("ArqPersist.bin")) + do_retorno
               + len(url) + itens * (300 + maior) + pagamentos * 100)
        return max(TAMANHOS["ZEL_TAMANHO_CUPOM"], 2 * via)
