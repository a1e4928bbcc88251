# SPDX-License-Identifier: MIT
"""What is converted on the way to the library: text, decimal numbers, rates, adjustments."""
from __future__ import annotations

import os
from dataclasses import dataclass
from decimal import Decimal
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


def texto(argumento: str, valor: str, transliterar: bool) -> bytes:
    """ISO-8859-1, strictly. Refused are characters beyond U+00FF, U+0000, and the controls U+0080
    to U+009F, which are nearly always another character set taken for this one."""
    if not isinstance(valor, str):
        raise TypeError(f"{argumento}: esperado str, recebido {type(valor).__name__}")
    escrito = []
    for posicao, c in enumerate(valor, 1):
        if transliterar and c in TRANSLITERACAO:
            c = TRANSLITERACAO[c]
        elif c > "\xff" or c == "\0" or "\x80" <= c < "\xa0":
            raise TextoInvalido(argumento, c, posicao)
        escrito.append(c)
    return "".join(escrito).encode("latin-1")


def decimal(argumento: str, numero: Optional[Numero], casas: int) -> bytes:
    """With a point, at least two decimals and `casas` at most, in 15 characters."""
    if numero is None:
        return b""
    if isinstance(numero, bool) or not isinstance(numero, (int, Decimal)):
        raise TypeError(f"{argumento}: esperado Decimal ou int, recebido {type(numero).__name__}")
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


def inteiro(argumento: str, valor: int) -> int:
    """An int of C; ctypes would keep the low bits of a larger one."""
    if isinstance(valor, bool) or not isinstance(valor, int):
        raise TypeError(f"{argumento}: esperado int, recebido {type(valor).__name__}")
    if not -2**31 <= valor < 2**31:
        raise EntradaRecusada(f"{argumento}: {valor} não cabe em 32 bits")
    return valor


def caminho(argumento: str, nome: Caminho) -> bytes:
    """A file name is bytes of the file system, not ISO-8859-1."""
    escrito = os.fsencode(nome)
    if b"\0" in escrito:
        raise EntradaRecusada(f"{argumento}: nome de arquivo com U+0000")
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

    def converter_tipo(self, argumento: str, sentido: str) -> bytes:
        """`sentido` is "D" or "A" where the function takes one of them alone, otherwise empty."""
        if sentido and self.tipo[:1] != sentido:
            qual = "um desconto" if sentido == "D" else "um acréscimo"
            raise EntradaRecusada(f"{argumento}: não é {qual}")
        return self.tipo.encode()

    def converter_valor(self, argumento: str) -> bytes:
        return decimal(argumento, self.valor, 4)
