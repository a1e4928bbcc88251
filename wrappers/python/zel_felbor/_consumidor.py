# SPDX-License-Identifier: MIT
"""Who a receipt is for: what the functions would take for something else, or leave out without a
word, is refused."""
from __future__ import annotations

from ._tabelas import Consumidor
from ._valores import EntradaRecusada, exigir

_IDENTIFICAR = "aCFIdentificarConsumidor_ZEL"
_ENDERECO = ("numero", "bairro", "codigo_municipio", "municipio", "uf", "cep")


def _digito(digitos: str, maior: int) -> str:
    """The check digit after `digitos`, whose weights go from 2 to `maior`, from the right."""
    pesos = (2 + i % (maior - 1) for i in range(len(digitos)))
    resto = sum(int(d) * peso for d, peso in zip(reversed(digitos), pesos)) % 11
    return "0" if resto < 2 else str(11 - resto)


def _confere(digitos: str) -> bool:
    maior = 11 if len(digitos) == 11 else 9
    inteiro = digitos[:-2]
    for _ in range(2):
        inteiro += _digito(inteiro, maior)
    return inteiro == digitos and len(set(digitos)) > 1


def _so_digitos(argumento: str, valor: str) -> str:
    digitos = "".join(c for c in valor if c not in " .-/")
    if not digitos.isdecimal() or not digitos.isascii():
        raise EntradaRecusada(f"{argumento}: só dígitos, com ou sem ponto, barra e traço")
    return digitos


def documento(argumento: str, valor: str) -> bytes:
    """The digits of a CPF, or of a CNPJ: of either of them in a "documento"."""
    exigir(argumento, valor, str)
    digitos = _so_digitos(argumento, valor)
    tamanhos = {"cpf": (11,), "cnpj": (14,)}.get(argumento, (11, 14))
    if len(digitos) not in tamanhos:
        raise EntradaRecusada(f"{argumento}: {len(digitos)} dígitos; um CPF tem 11, um CNPJ 14")
    if not _confere(digitos):
        raise EntradaRecusada(f"{argumento}: os dígitos verificadores não conferem")
    return digitos.encode()


def _estrangeiro(funcao: str, valor: str) -> bytes:
    digitos = _so_digitos("estrangeiro", valor)
    if not 5 <= len(digitos) <= 20 or len(digitos) in (11, 14):
        raise EntradaRecusada(f"estrangeiro: {len(digitos)} dígitos; permitido: de 5 a 20, e não 11 "
                              "nem 14, que seriam um CPF ou um CNPJ")
    if funcao == _IDENTIFICAR:
        raise EntradaRecusada(f"estrangeiro: {funcao} não o grava; informe-o ao abrir o cupom")
    return digitos.encode()


def _conferir_perdas(funcao: str, consumidor: Consumidor, identificado: bool) -> None:
    """What would not stand in the document."""
    dado = [n for n in ("nome", "logradouro", *_ENDERECO, "email") if getattr(consumidor, n)]
    if dado and not identificado:
        raise EntradaRecusada(f"{dado[0]}: sem CPF, CNPJ ou documento de estrangeiro o consumidor não "
                              "é gravado")
    if consumidor.email and funcao != _IDENTIFICAR:
        raise EntradaRecusada(f"email: {funcao} não o grava; chame identificar_consumidor")
    sem_rua = [n for n in dado if n in _ENDERECO and not consumidor.logradouro]
    if sem_rua:
        raise EntradaRecusada(f"{sem_rua[0]}: sem logradouro o endereço não é gravado")


def identificacao(funcao: str, consumidor: Consumidor, cortar: bool) -> bytes:
    """What `funcao` is given as the document of the consumer."""
    exigir("consumidor", consumidor, Consumidor)
    dados = [(nome, getattr(consumidor, nome))
             for nome in ("documento", "cpf", "cnpj", "estrangeiro") if getattr(consumidor, nome)]
    if len(dados) > 1:
        raise EntradaRecusada("consumidor: dê um só entre documento, cpf, cnpj e estrangeiro")
    nome, valor = dados[0] if dados else ("documento", "")
    exigir(nome, valor, str)
    if cortar:
        return valor.encode("latin-1", "replace")
    _conferir_perdas(funcao, consumidor, bool(dados))
    if not dados:
        return b""
    return _estrangeiro(funcao, valor) if nome == "estrangeiro" else documento(nome, valor)
