# SPDX-License-Identifier: MIT
"""What the stand-in is told to do with requests to come. An order is a line

    [servico=NAME] [numero=N] [vezes=N] ACTION[:VALUE]

and holds for the next `vezes` requests (1) that its conditions fit; the oldest order that fits is
taken. NAME is a part of the service's name, as "Autorizacao4"; N the number of the document.

    sem-conexao        reset at once, before TLS               } neither can know the number; on a
    reset-antes        reset before the request is read        } connection that is open already, when
    corte-pedido:N     reset after N bytes of the request      } its next request begins
    reset              reset when the request was read; it is not carried out
    pedido-perdido     the same, but closed in order
    nunca              not carried out, and the line stays open without a byte
    http:CODE          not carried out: a page of HTML with that HTTP status
    cstat:CODE         answered with that status; 150 authorizes, 110 and 301 to 303 deny
    recibo[:N]         103; its result is ready after N answers 105 (1)
    resposta-perdida   carried out, and closed without a byte
    resposta-nunca     carried out, and the line stays open without a byte
    atraso:SECONDS     carried out, answered later
    duas-vezes         carried out, the same answer twice
    lixo               carried out, answered with bytes that mean nothing
    metade             carried out, half of the body
    corte-resposta:N   carried out, N bytes of the answer, HTTP's head among them, then reset
"""
import dataclasses
import threading

SEM_LER = ("sem-conexao", "reset-antes", "corte-pedido")
SEM_FAZER = ("reset", "pedido-perdido", "nunca", "http")
COM_NUMERO = {"corte-pedido", "http", "cstat", "atraso", "corte-resposta"}
ACOES = {*SEM_LER, *SEM_FAZER, *COM_NUMERO, "recibo", "resposta-perdida", "resposta-nunca", "duas-vezes",
         "lixo", "metade"}


@dataclasses.dataclass
class Ordem:
    acao: str = ""
    valor: str = ""
    servico: str = ""
    numero: int = 0
    vezes: int = 1

    def __str__(self):
        return self.acao + (":" + self.valor if self.valor else "")


def ler(linha):
    *condicoes, acao = linha.split()
    ordem = Ordem()
    ordem.acao, _, ordem.valor = acao.partition(":")
    for condicao in condicoes:
        nome, _, valor = condicao.partition("=")
        if nome not in ("servico", "numero", "vezes"):
            raise ValueError(f"{condicao}: no such condition")
        setattr(ordem, nome, valor if nome == "servico" else int(valor))
    if ordem.acao not in ACOES:
        raise ValueError(f"{acao}: no such action")
    if ordem.acao in COM_NUMERO or ordem.valor:
        float(ordem.valor)
    if ordem.acao in SEM_LER and (ordem.servico or ordem.numero):
        raise ValueError(f"{acao}: comes before the request is known")
    return ordem


class Ordens:
    def __init__(self):
        self.lista, self.trinco = [], threading.Lock()

    def juntar(self, linha):
        ordem = ler(linha)
        with self.trinco:
            self.lista.append(ordem)

    def limpar(self):
        with self.trinco:
            self.lista.clear()

    def tomar(self, acoes, servico="", numero=0):
        """The oldest order with one of these actions that fits; an empty one when none does."""
        with self.trinco:
            for ordem in self.lista:
                if ordem.acao not in acoes or ordem.servico not in servico or ordem.numero not in (0, numero):
                    continue
                ordem.vezes -= 1
                if ordem.vezes <= 0:
                    self.lista.remove(ordem)
                return ordem
        return Ordem()
