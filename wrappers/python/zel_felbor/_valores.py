# SPDX-License-Identifier: MIT
"""What is converted on the way to the library: text, decimal numbers, rates, adjustments."""
from __future__ import annotations

import os
import unicodedata
from dataclasses import dataclass
from decimal import Decimal
from enum import Enum
from typing import Optional, Sequence, Union

from ._tabelas import TRANSLITERACAO

Numero = Union[Decimal, int]
Caminho = Union[str, "os.PathLike[str]"]


class ErroZel(Exception):
    """Whatever this package refuses."""


class EntradaRecusada(ErroZel, ValueError):
    """An argument that cannot be handed to the library; nothing was called."""


class TextoInvalido(EntradaRecusada):
    """A character that ISO-8859-1 does not have: itself, its position from 1, its argument."""

    def __init__(self, argumento: str, caractere: str, posicao: int):
        self.argumento, self.caractere, self.posicao = argumento, caractere, posicao
        glifo = f' "{caractere}"' if caractere.isprintable() else ""
        super().__init__(f"{argumento}: o caractere{glifo} (U+{ord(caractere):04X}) na posição "
                         f"{posicao} não existe em ISO-8859-1")


def exigir(argumento: str, valor: object, *tipos: type) -> None:
    """A value of another type is named with its argument."""
    if isinstance(valor, bool) or not isinstance(valor, tipos):
        nomes = " ou ".join(t.__name__ for t in tipos)
        raise TypeError(f"{argumento}: esperado {nomes}, recebido {type(valor).__name__}")


def texto(argumento: str, valor: str, transliterar: bool) -> bytes:
    """ISO-8859-1, strictly; letters written in two parts are put together first. Refused are
    characters beyond U+00FF, U+0000, and the controls U+0080 to U+009F, which are nearly always
    another character set taken for this one."""
    exigir(argumento, valor, str)
    escrito = []
    for posicao, c in enumerate(unicodedata.normalize("NFC", valor), 1):
        if transliterar and c in TRANSLITERACAO:
            c = TRANSLITERACAO[c]
        elif c > "\xff" or c == "\0" or "\x80" <= c < "\xa0":
            raise TextoInvalido(argumento, c, posicao)
        escrito.append(c)
    return "".join(escrito).encode("latin-1")


def conferir_tamanho(argumento: str, tamanho: int, minimo: int, maximo: int) -> None:
    """A text that the function would cut, or leave out."""
    if not minimo <= tamanho <= maximo:
        permitido = f"de {minimo} a {maximo}" if minimo else f"até {maximo}"
        if minimo == maximo:
            permitido = f"exatamente {maximo}"
        raise EntradaRecusada(f"{argumento}: {tamanho} caracteres; permitido: {permitido}")


def decimal(argumento: str, numero: Numero, casas: int) -> bytes:
    """With a point, at least two decimals and `casas` at most, in 15 characters."""
    exigir(argumento, numero, int, Decimal)
    if not Decimal(numero).is_finite():
        raise EntradaRecusada(f"{argumento}: {numero} não é um número decimal")
    if abs(Decimal(numero).adjusted()) > 50:  # 1E+99999999 is not to be written out
        raise EntradaRecusada(f"{argumento}: {numero} passa de 15 caracteres")
    inteiros, _, decimais = f"{abs(Decimal(numero)):f}".partition(".")
    decimais = decimais.rstrip("0").ljust(2, "0")
    escrito = f"{'-' if numero < 0 else ''}{inteiros}.{decimais}"
    if len(decimais) > casas:
        raise EntradaRecusada(f"{argumento}: {escrito} tem mais de {casas} casas decimais")
    if len(escrito) > 15:
        raise EntradaRecusada(f"{argumento}: {escrito} passa de 15 caracteres")
    return escrito.encode()


def decimal_opcional(argumento: str, numero: Optional[Numero], casas: int) -> bytes:
    return b"" if numero is None else decimal(argumento, numero, casas)


def inteiro(argumento: str, valor: int, minimo: int = -2**31, maximo: int = 2**31 - 1) -> int:
    """An int of C; ctypes would keep the low bits of a larger one."""
    exigir(argumento, valor, int)
    if not minimo <= valor <= maximo:
        raise EntradaRecusada(f"{argumento}: {valor} não está entre {minimo} e {maximo}")
    return valor


def escolha(argumento: str, valor: Enum, enumeracao: type) -> bytes:
    exigir(argumento, valor, enumeracao)
    return str(valor.value).encode()


def caminho(argumento: str, nome: Caminho) -> bytes:
    """A file name is bytes of the file system, not ISO-8859-1."""
    exigir(argumento, nome, str, os.PathLike)
    escrito = os.fsencode(nome)
    if b"\0" in escrito:
        raise EntradaRecusada(f"{argumento}: nome de arquivo com U+0000")
    if len(escrito) > 300:
        raise EntradaRecusada(f"{argumento}: nome de arquivo com mais de 300 bytes")
    return escrito


def diretorios(argumento: str, lista: Sequence[Caminho]) -> bytes:
    """Up to three directories of up to 300 bytes with their final "/", separated by "|"."""
    if isinstance(lista, str):
        raise TypeError(f"{argumento}: esperada uma lista")
    nomes = [caminho(argumento, nome).rstrip(b"/") + b"/" for nome in lista]
    if not 1 <= len(nomes) <= 3 or any(len(n) > 300 or b"|" in n for n in nomes):
        raise EntradaRecusada(f"{argumento}: de um a três diretórios, sem |, de até 300 bytes")
    return b"|".join(nomes)


@dataclass(frozen=True)
class Aliquota:
    """The rate of an item: goods or service with its percentage, or none of it."""
    tipo: str
    percentual: Numero = 0

    @staticmethod
    def mercadoria(percentual: Numero) -> Aliquota:
        return Aliquota("T", percentual)

    @staticmethod
    def servico(percentual: Numero) -> Aliquota:
        return Aliquota("S", percentual)

    @staticmethod
    def isento() -> Aliquota:
        return Aliquota("I")

    @staticmethod
    def nao_incidencia() -> Aliquota:
        return Aliquota("N")

    @staticmethod
    def substituicao() -> Aliquota:
        return Aliquota("F")

    def converter(self, argumento: str) -> bytes:
        """ "T1800", "S0500", "I"."""
        if self.tipo not in ("T", "S"):
            return self.tipo.encode()
        escrito = decimal(argumento, self.percentual, 2)
        if not 0 <= self.percentual < 100:
            raise EntradaRecusada(f"{argumento}: {escrito.decode()} não está entre 0 e 99,99")
        return self.tipo.encode() + escrito.replace(b".", b"").rjust(4, b"0")


@dataclass(frozen=True)
class Ajuste:
    """A discount or a surcharge, as an amount or as a percentage; made without arguments, none."""
    tipo: str = ""
    valor: Optional[Numero] = None

    @staticmethod
    def desconto(quantia: Numero) -> Ajuste:
        return Ajuste("D$", quantia)

    @staticmethod
    def desconto_percentual(percentual: Numero) -> Ajuste:
        return Ajuste("D%", percentual)

    @staticmethod
    def acrescimo(quantia: Numero) -> Ajuste:
        return Ajuste("A$", quantia)

    @staticmethod
    def acrescimo_percentual(percentual: Numero) -> Ajuste:
        return Ajuste("A%", percentual)


def aliquota(argumento: str, valor: Aliquota) -> bytes:
    exigir(argumento, valor, Aliquota)
    return valor.converter(argumento)


def tipo_de_ajuste(argumento: str, ajuste: Ajuste, sentido: str) -> bytes:
    """`sentido` is "D" or "A" where the function takes one of them alone, otherwise empty."""
    exigir(argumento, ajuste, Ajuste)
    if sentido and ajuste.tipo[:1] != sentido:
        qual = "um desconto" if sentido == "D" else "um acréscimo"
        raise EntradaRecusada(f"{argumento}: não é {qual}")
    return ajuste.tipo.encode()


def valor_de_ajuste(argumento: str, ajuste: Ajuste) -> bytes:
    """An amount is in cents."""
    return decimal(argumento, ajuste.valor, 2 if ajuste.tipo[1:] == "$" else 4) if ajuste.tipo else b""
