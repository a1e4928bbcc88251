# SPDX-License-Identifier: MIT
"""The library, loaded once for the process, and one call of it at a time."""
from __future__ import annotations

import ctypes
import os
import threading
from pathlib import Path
from typing import Any, Optional, Sequence

from . import _andamento, _consumidor, _valores
from ._autorizacao import conferir_autorizacao
from ._tabelas import (ASSINATURAS, AUSENTE, CODIGOS, DESCRITOR, TAMANHOS, Codigo, Consumidor,
                       Estado)
from ._valores import Caminho, EntradaRecusada, ErroZel

SAIDA = object()  # stands for the result buffer among the arguments

_trava = threading.Lock()
_biblioteca: Optional[ctypes.CDLL] = None
_diretorio: Optional[str] = None
_motivos = -1  # the descriptor to which the library writes the reason of a refusal

# A fork waits for the call of another thread: the child would wait for ever.
os.register_at_fork(before=_trava.acquire, after_in_parent=_trava.release,
                    after_in_child=_trava.release)


class BibliotecaAusente(ErroZel, OSError):
    """The shared object was not found, or cannot be loaded."""


class Recusa(ErroZel):
    """What the library refused: code, name, meaning and remedy, and the function; `motivo` says
    which field it was, what was given and what is allowed, or file and system error. `texto` is what
    the function wrote all the same: a receipt whose PDF failed."""

    def __init__(self, funcao: str, numero: int, texto: str = "", motivo: str = ""):
        self.funcao, self.numero, self.texto, self.motivo = funcao, numero, texto, motivo
        nome, significado, remedio = CODIGOS.get(
            numero, ("DESCONHECIDO", "Código que este pacote não conhece.", ""))
        self.codigo = Codigo(numero) if numero in CODIGOS else None
        self.nome, self.significado, self.remedio = nome, significado, remedio
        porque = f"Motivo: {motivo}. " if motivo else ""
        super().__init__(f"{funcao}: {nome} ({numero}): {significado} {porque}{remedio}")

    def __reduce__(self) -> Any:
        return Recusa, (self.funcao, self.numero, self.texto, self.motivo)


def _ouvir_motivos() -> None:
    """An anonymous file in memory, to which the library writes what it refused last."""
    global _motivos
    if hasattr(os, "memfd_create") and _motivos < 0:
        _motivos = os.memfd_create(DESCRITOR)
        os.environ["ZEL_LOG_DESCRITOR"] = str(_motivos)


def _motivo(funcao: str, numero: int) -> str:
    """The reason that the call just made was refused for; empty when the descriptor is no longer
    that file, or holds what another process wrote."""
    try:
        nome = f"/proc/self/fd/{_motivos}"
        if os.readlink(nome) != f"/memfd:{DESCRITOR} (deleted)":
            return ""
        linha = os.pread(_motivos, 4096, 0).decode("utf-8", "replace").partition("\n")[0]
    except OSError:
        return ""
    inicio, _, motivo = linha.partition(f"[{os.getpid()}] {funcao}: {numero} ")
    return motivo.partition(": ")[2] if not inicio else ""


def _carregar(diretorio: str, nome: str) -> ctypes.CDLL:
    """The library reads ZEL_DIRETORIO once, so that the first directory is the process's."""
    global _biblioteca, _diretorio
    with _trava:
        if _biblioteca is None:
            os.environ["ZEL_DIRETORIO"] = diretorio
            _ouvir_motivos()
            try:
                biblioteca = ctypes.CDLL(nome)
            except OSError as erro:
                raise BibliotecaAusente(f"a biblioteca não pôde ser carregada: {erro}. {AUSENTE}") from erro
            for funcao, tipos in ASSINATURAS.items():
                getattr(biblioteca, funcao).argtypes = tipos
                getattr(biblioteca, funcao).restype = ctypes.c_int
            _biblioteca, _diretorio = biblioteca, diretorio
        if _diretorio != diretorio:
            raise EntradaRecusada(f"este processo já trabalha em {_diretorio}")
        return _biblioteca


class Chamador:
    """The data directory, and calls with their results."""

    def __init__(self, diretorio: Caminho, *, transliterar: bool = False, cortar: bool = False,
                 biblioteca: str = "libZEL_FelborFramework.so.1"):
        """`diretorio` is absolute and exists; the library keeps its files there. `transliterar`
        replaces typographic quotes, dashes, ellipses and blanks by plain ones; `cortar` hands over
        what does not fit, which the library cuts or leaves out; `biblioteca` is the name or path of
        the shared object, which the first one of a process loads."""
        caminho = Path(diretorio)
        if not caminho.is_absolute():
            raise EntradaRecusada(f"o diretório não é um caminho absoluto: {caminho}")
        if not caminho.is_dir():
            raise EntradaRecusada(f"o diretório não existe: {caminho}; crie-o (mkdir), com permissão de "
                                  "escrita para quem roda o caixa")
        self.diretorio = caminho
        self.transliterar, self.cortar = transliterar, cortar
        self._biblioteca = _carregar(str(caminho), biblioteca)

    def arquivo(self, nome: str) -> Path:
        """A file of the data directory: "documentosEnvio.xml"."""
        return self.diretorio / nome

    def _texto(self, argumento: str, valor: str, minimo: int = 0, maximo: int = 0) -> bytes:
        """`maximo` 0: of any length. An empty text stands for none."""
        escrito = _valores.texto(argumento, valor, self.transliterar)
        if maximo and escrito and not self.cortar:
            _valores.conferir_tamanho(argumento, len(escrito), minimo, maximo)
        return escrito

    def _obrigatorio(self, argumento: str, valor: str, minimo: int, maximo: int) -> bytes:
        if valor == "" and not self.cortar:
            _valores.conferir_tamanho(argumento, 0, minimo, maximo)
        return self._texto(argumento, valor, minimo, maximo)

    def _documento(self, argumento: str, valor: str) -> bytes:
        """A CPF or a CNPJ, or none."""
        if self.cortar or valor == "":
            return self._texto(argumento, valor)
        return _consumidor.documento(argumento, valor)

    def _identificacao(self, funcao: str, consumidor: Consumidor) -> bytes:
        return _consumidor.identificacao(funcao, consumidor, self.cortar)

    def _invocar(self, funcao: str, argumentos: Sequence[Any], texto: Any = lambda: "",
                 menor: int = 1) -> int:
        """The answer; below `menor` it is a refusal, with what `texto` reads."""
        with _trava:
            resposta = int(getattr(self._biblioteca, funcao)(*argumentos))
            if resposta >= menor:
                return resposta
            raise Recusa(funcao, resposta, texto(), _motivo(funcao, resposta))

    def _chamar(self, funcao: str, *argumentos: Any) -> Codigo:
        return Codigo(self._invocar(funcao, argumentos))

    def _estado(self, funcao: str) -> Estado:
        return Estado(self._invocar(funcao, (), menor=0))

    def _ler(self, funcao: str, tamanho: int, *argumentos: Any, entrada: bytes = b"",
             codificacao: str = "latin-1") -> str:
        """The text that comes back in a buffer of `tamanho` bytes, which takes SAIDA's place."""
        saida = ctypes.create_string_buffer(entrada, tamanho)
        ler = lambda: saida.value.decode(codificacao, "surrogateescape")
        self._invocar(funcao, [saida if a is SAIDA else a for a in argumentos], ler)
        return ler()

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

    def _ler_andamento(self) -> bytes:
        try:
            with open(self.arquivo("ArqPersist.bin"), "rb") as arquivo:
                lido = arquivo.read(_andamento.MAIOR_ARQUIVO + 1)
        except OSError as erro:
            raise EntradaRecusada(f"{erro.filename}: não pôde ser lido: {erro.strerror}") from erro
        if len(lido) > _andamento.MAIOR_ARQUIVO:
            raise EntradaRecusada(f"{arquivo.name}: grande demais")
        return lido

    def _tamanho_do_ultimo(self) -> int:
        return max(TAMANHOS["ZEL_TAMANHO_CUPOM"], self._bytes_de("ultimadanfe.bin") + 1)

    def _ler_para_imprimir(self, documento: Caminho, retorno: Caminho, cancelamento: bool,
                           sem_autorizacao: bool) -> "tuple[bytes, bytes]":
        """The bytes of both files, once the receipt may be printed."""
        try:
            xml = Path(documento).read_bytes()
            resposta = None if retorno == "OFFLINE" else Path(retorno).read_bytes()
        except OSError as erro:
            raise EntradaRecusada(f"{erro.filename}: não pôde ser lido: {erro.strerror}") from erro
        if not sem_autorizacao:
            conferir_autorizacao(xml, resposta, cancelamento)
        return xml, resposta or b""

    def _tamanho_do_cupom(self, xml: bytes, retorno: bytes, url: str) -> int:
        """Bytes that the receipt text of a document takes at most. A scrambled file cannot be
        counted: its items are at least 256 bytes and its payments 40, as the library writes
        them."""
        if xml[:1] == b"<":
            itens, pagamentos = xml.count(b"<det"), xml.count(b"<pag")
            maior = mensagem = max(map(len, xml.split(b"<")))
        else:
            itens, pagamentos = len(xml) // 256 + 1, len(xml) // 40 + 1
            maior, mensagem = 1024, len(xml)
        via = (16384 + 32 * maior + 2 * (mensagem + self._bytes_de("ArqPersist.bin")) + len(retorno)
               + len(url) + itens * (300 + maior) + pagamentos * 100)
        return max(TAMANHOS["ZEL_TAMANHO_CUPOM"], 2 * via)
