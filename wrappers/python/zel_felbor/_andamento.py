# SPDX-License-Identifier: MIT
"""The receipt in progress, as ArqPersist.bin has it: one record a line, its kind in two digits, "|", of
items and payments a number and "|", and elements as the library writes them."""
from __future__ import annotations

import re
from dataclasses import dataclass
from typing import List, Optional

from ._tabelas import FORMAS, Estado
from ._valores import EntradaRecusada

MAIOR_ARQUIVO = 16 << 20
_FORMAS = dict(par.split("=") for par in FORMAS.split(";"))
_NOMEADAS = {"amp": "&", "lt": "<", "gt": ">", "quot": '"', "apos": "'"}
_REGISTRO = re.compile(r"0(?:[1346]\||([25])\|([^|]*)\|)", re.A)


@dataclass(frozen=True)
class ConsumidorLido:
    tipo: str  # "cpf", "cnpj" or "estrangeiro"
    documento: str
    nome: str
    email: str


@dataclass(frozen=True)
class ItemLido:
    """Numbers as the library wrote them, with a point; `desconto` and `acrescimo` empty for none."""
    numero: str
    codigo: str
    descricao: str
    quantidade: str
    unidade: str
    preco: str
    bruto: str
    desconto: str
    acrescimo: str


@dataclass(frozen=True)
class PagamentoLido:
    forma: str  # "01"
    nome: str  # "Dinheiro"
    valor: str


@dataclass
class Andamento:
    """A receipt that is open, or closed and not yet followed by another. `total` is what the items add
    up to until the totals are made; `falta` and `troco` are empty where there is none."""
    estado: Estado
    consumidor: Optional[ConsumidorLido]
    lista: List[ItemLido]
    pagamentos: List[PagamentoLido]
    total: str
    pago: str
    falta: str
    troco: str


def _referencia(achada: "re.Match[str]") -> str:
    nome = achada[1]
    if nome in _NOMEADAS:
        return _NOMEADAS[nome]
    ponto = int(nome[2:], 16) if nome[1] == "x" else int(nome[1:])
    return chr(ponto) if 0 < ponto < 0xD800 or 0xDFFF < ponto < 0x110000 else achada[0]


def _textos(conteudo: str, grupo: str, nome: str) -> List[str]:
    """Of all elements of that name within the group."""
    _, _, resto = conteudo.partition(f"<{grupo}>")
    lidos = re.findall(f"<{nome}>([^<]*)</{nome}>", resto.partition(f"</{grupo}>")[0])
    return [re.sub(r"&(amp|lt|gt|quot|apos|#[0-9]{1,7}|#x[0-9A-Fa-f]{1,6});", _referencia, lido)
            for lido in lidos]


def _texto(conteudo: str, grupo: str, nome: str) -> str:
    return (_textos(conteudo, grupo, nome) or [""])[0]


def _centavos(textos: List[str]) -> int:
    """What they add up to; a text that is no number is nothing."""
    lidos = (re.fullmatch(r"([0-9]{1,13})(?:\.([0-9]{0,10}))?", texto) for texto in textos)
    return sum(int(lido[1] + (lido[2] or "").ljust(2, "0")[:2]) for lido in lidos if lido)


def _moeda(centavos: int) -> str:
    return f"{max(centavos, 0) // 100}.{max(centavos, 0) % 100:02}"


def _consumidor(abertura: str) -> Optional[ConsumidorLido]:
    for nome, tipo in (("CPF", "cpf"), ("CNPJ", "cnpj"), ("idEstrangeiro", "estrangeiro")):
        documento = _texto(abertura, "dest", nome)
        if documento:
            return ConsumidorLido(tipo, documento, _texto(abertura, "dest", "xNome"),
                                  _texto(abertura, "dest", "email"))
    return None


def _item(numero: str, conteudo: str) -> ItemLido:
    campos = [_texto(conteudo, "prod", n)
              for n in ("cProd", "xProd", "qCom", "uCom", "vUnCom", "vProd")]
    ajustes = [_centavos(_textos(conteudo, "prod", n)) for n in ("vDesc", "vOutro")]
    return ItemLido(numero, *campos, *(_moeda(a) if a else "" for a in ajustes))


def _pagamento(conteudo: str) -> PagamentoLido:
    forma = _texto(conteudo, "pag", "tPag")
    return PagamentoLido(forma, _FORMAS.get(forma, forma), _texto(conteudo, "pag", "vPag"))


def ler_andamento(arquivo: bytes, estado: Estado, troco: str) -> Andamento:
    """A last record without its end does not count: the process died while it was written."""
    lido = Andamento(estado, None, [], [], "", "", "", troco)
    total = ""
    for ordem, registro in enumerate(arquivo.decode("latin-1").split("\r\n")[:-1], 1):
        inicio = _REGISTRO.match(registro)
        if not inicio:
            raise EntradaRecusada(f"ArqPersist.bin: o registro {ordem} não é de um cupom")
        conteudo = registro[inicio.end():]
        if inicio[1] == "2":
            lido.lista.append(_item(inicio[2], conteudo))
        elif inicio[1] == "5":
            lido.pagamentos.append(_pagamento(conteudo))
        elif registro[1] == "1":
            lido.consumidor = _consumidor(conteudo)
        elif registro[1] == "3":
            total = _texto(conteudo, "ICMSTot", "vNF")
    somas = [_centavos([getattr(i, n) for i in lido.lista]) for n in ("bruto", "acrescimo", "desconto")]
    devido = _centavos([total]) if total else somas[0] + somas[1] - somas[2]
    pago = _centavos([p.valor for p in lido.pagamentos])
    lido.total, lido.pago = _moeda(devido), _moeda(pago)
    lido.falta = _moeda(devido - pago) if total and devido > pago else ""
    return lido
