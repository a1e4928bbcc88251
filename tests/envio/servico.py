#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""The service as it is built, tills and the stand-in of the authority, each in processes of their own:
servico.py BUILD. At the end of every case the authority's books, the queue, what is kept and the tills'
numbers are one.

ZEL_FALHAS_TUDO in the environment tries every death and cut where otherwise a selection is made;
ZEL_PASSO changes how far apart they are. What was tried is counted in lines "[ falhas ]"."""
import collections
import os
import resource
import shutil
import signal
import sys
import time
import unittest
from concurrent import futures
from pathlib import Path

sys.dont_write_bytecode = True
try:
    import xmlsec  # noqa: F401
except ImportError as falta:
    print(f"skipped=1: {falta}: python3-lxml and python3-xmlsec of Debian are needed")
    sys.exit(0)
from loja import Corte, Loja, esperar  # noqa: E402

BUILD = Path(sys.argv[1]).resolve()
TUDO = bool(os.environ.get("ZEL_FALHAS_TUDO"))
OK, RECUSADO, SEM_RESPOSTA, NAO_ENVIADO = 1, -11, -12, -13
CODIGOS = {OK: "autorizado", RECUSADO: "recusado", SEM_RESPOSTA: "sem resposta", NAO_ENVIADO: "não enviado"}


def passo(selecao, tudo):
    return int(os.environ.get("ZEL_PASSO") or (tudo if TUDO else selecao))


def contar(o_que, quantos):
    print(f"\n[ falhas ] {o_que} {quantos}", flush=True)  # a line of its own beside unittest's


class ComLoja(unittest.TestCase):
    def loja(self, *args, **kwargs):
        loja = Loja(BUILD, *args, **kwargs)
        self.addCleanup(loja.fechar)
        self.numeros = {}  # (series, number): outcome
        return loja

    def conferir(self, loja, quantas, segundos=120):
        """All is at an end, and is one."""
        acabou = loja.acabou(quantas, segundos)
        parados = loja.fichas(onde="estado NOT IN ('entregue', 'recusado', 'retirado')")
        self.assertTrue(acabou, f"{len(loja.fichas())} of {quantas}: {parados}")
        if loja.servico:
            self.assertEqual(loja.parar(), 0)
        self.assertEqual(loja.diferencas(self.numeros), [])
        self.assertNotRegex(loja.diario.read_text(), "ERROR: |runtime error|123456780001955")
        contar("documentos e pedidos em que livros, fila, guardados e números são um", len(loja.fichas()))

    def jornada(self, loja, i=0, segundos=20, tipo_do_nao_enviado=5, config=None):
        """What a till does while its consumer waits: (code, number of the sale)."""
        caixa, config = loja.caixas[i], str(config or loja.config)
        numero = int(caixa.vender()[0][25:34])
        codigo, detalhe = caixa.transmitir(config, segundos)
        self.assertIn(codigo, (OK, RECUSADO, SEM_RESPOSTA, NAO_ENVIADO), detalhe)
        if codigo in (SEM_RESPOSTA, NAO_ENVIADO):
            velha = caixa.chave()
            caixa.reemitir(3 if codigo == SEM_RESPOSTA else tipo_do_nao_enviado)
            if codigo == SEM_RESPOSTA:
                caixa.transmitir(config, 0, velha)
        self.numeros[i + 1, numero] = None if codigo == SEM_RESPOSTA else "autorizado"
        if codigo == SEM_RESPOSTA:
            self.numeros[i + 1, numero + 1] = "autorizado"
        return codigo, numero

    @staticmethod
    def envelhecer(loja):
        """Twenty minutes later, for what is asked for until it cannot arrive any more."""
        loja.alterar_fila("UPDATE documento SET achado = achado - 1200000, proximo = min(proximo, 0)")

    def inutilizar_os_que_faltam(self, loja):
        """What the authority never had and another replaced: the number is a gap, which a person voids."""
        tem = {(l["serie"], l["numero"]) for l in loja.livros.linhas("SELECT serie, numero FROM documentos")}
        faltam = sorted(set(self.numeros) - tem)
        for serie, numero in faltam:
            self.numeros[serie, numero] = "inutilizado"
            loja.caixas[serie - 1].inutilizar(numero, numero)
        return len(faltam)


# What the authority does with a document that the service alone sends; and its outcome. The first ones
# are the selection.
ORDENS = [("cstat:150", "autorizado"), ("lixo", "autorizado"), ("recibo:2", "autorizado"),
          ("resposta-perdida", "autorizado"), ("cstat:302", "denegado"), ("cstat:778", None),
          ("atraso:1", "autorizado"), ("nunca", "autorizado"), ("duas-vezes", "autorizado"),
          ("metade", "autorizado"), ("reset", "autorizado"), ("http:500", "autorizado"),
          ("http:503", "autorizado"), ("cstat:999", "autorizado"), ("vezes=2 cstat:108", "autorizado"),
          ("cstat:109", "autorizado"), ("resposta-nunca", "autorizado"), ("pedido-perdido", "autorizado"),
          ("corte-resposta:0", "autorizado"), ("corte-resposta:400", "autorizado")][:None if TUDO else 6]
# The same, while a cashier waits: what the till is answered, and what becomes of the number.
JORNADAS = [("", OK, "autorizado"), ("resposta-perdida", SEM_RESPOSTA, "cancelado"), ("sem-conexao", NAO_ENVIADO, "autorizado"),
            ("resposta-nunca", SEM_RESPOSTA, "cancelado"), ("nunca", SEM_RESPOSTA, "inutilizado"),
            ("pedido-perdido", SEM_RESPOSTA, "inutilizado"), ("metade", SEM_RESPOSTA, "cancelado"),
            ("cstat:108", NAO_ENVIADO, "autorizado"), ("cstat:778", RECUSADO, None)][:None if TUDO else 3]


class Cenarios(ComLoja):
    def test_cada_ordem_da_autoridade(self):
        caixas = 4
        loja = self.loja(caixas, limite=5)
        for n, (ordem, fim) in enumerate(ORDENS):
            serie, numero = n % caixas + 1, n // caixas + 1
            vender = loja.caixas[serie - 1].vender
            # Numbers of their own, by which an order finds its document.
            numero += 100 * serie
            loja.comandar(f"ordem servico=Autorizacao4 numero={numero} {ordem}")
            vender(numero)
            if fim:
                self.numeros[serie, numero] = fim
        loja.servir()
        self.conferir(loja, len(ORDENS), 240)
        pedidos = loja.livros.linha("SELECT count(*) n FROM pedidos")["n"]
        self.assertLess(pedidos, 5 * len(ORDENS))
        contar("ordens da autoridade", len(ORDENS))

    def test_enquanto_o_consumidor_espera(self):
        loja = self.loja(limite=5)
        fins, documentos = {}, 0
        for i, (ordem, codigo, fim) in enumerate(JORNADAS):
            with self.subTest(ordem=ordem):
                perdida = codigo == SEM_RESPOSTA  # and so is what the question is answered
                loja.comandar("limpar", *["ordem " + ordem] * bool(ordem),
                              *["ordem servico=Consulta vezes=9 resposta-perdida"] * perdida)
                visto, numero = self.jornada(loja, segundos=6 if perdida else 20, tipo_do_nao_enviado=4 + i % 2)
                self.assertEqual(visto, codigo)
                fins[1, numero] = fim
                documentos += 1 if codigo in (OK, RECUSADO) else 2
        self.numeros = {q: f for q, f in {**self.numeros, **fins}.items() if f}
        loja.comandar("limpar")
        self.envelhecer(loja)
        loja.servir()
        cancelados = list(fins.values()).count("cancelado")
        self.assertTrue(loja.acabou(documentos + cancelados, 120), loja.fichas())
        inutilizados = self.inutilizar_os_que_faltam(loja)
        self.conferir(loja, documentos + cancelados + inutilizados)
        self.assertEqual({q: f for q, f in self.numeros.items() if fins.get(q)}, {q: f for q, f in fins.items() if f})
        contar("jornadas com o consumidor à espera", len(JORNADAS))

    def test_linha_que_cai_e_volta_e_pedidos(self):
        loja = self.loja(limite=5)
        caixa, venda = loja.caixas[0], loja.caixas[0].vender
        loja.servir()
        chaves = [venda()[0] for _ in range(3)]
        self.assertTrue(loja.acabou(3))
        loja.comandar("ajuste linha=fora")
        chaves += [venda()[0] for _ in range(3)]
        codigo, _ = self.jornada(loja)
        self.assertEqual(codigo, NAO_ENVIADO)
        loja.comandar("ajuste linha=boa")
        self.numeros |= {(1, n): "autorizado" for n in range(1, 8)}
        caixa.cancelar(chaves[0])
        loja.comandar("ordem servico=Evento4 numero=2 resposta-perdida")
        caixa.cancelar(chaves[1])
        caixa.inutilizar(50, 52)
        loja.comandar("ordem servico=Inutilizacao4 numero=60 resposta-perdida")
        caixa.inutilizar(60, 60)
        self.numeros |= {(1, 1): "cancelado", (1, 2): "cancelado", **{(1, n): "inutilizado" for n in (50, 51, 52, 60)}}
        self.assertTrue(loja.acabou(12), loja.fichas())
        loja.comandar("ajuste relogio=2000")  # half an hour later
        caixa.cancelar(chaves[2])
        time.sleep(1.1)  # a second request of the same second would be the same bytes
        caixa.cancelar(chaves[0])
        self.conferir(loja, 14)
        self.assertEqual([f[0] for f in loja.fichas("estado", "tipo = 2")][-2:], ["recusado", "entregue"])


# Where the service dies: the state, what the authority is told, what the queue says beside it, and what
# becomes of the number. "traduzido" is passed through within one change of the queue: nobody dies there.
ESTADOS = [("achado", [], "1", "autorizado"), ("assinado", ["ajuste linha=fora"], "motivo <> ''", "autorizado"),
           ("enviado", ["ordem numero={} nunca"], "1", "autorizado"),
           ("perguntar", ["ordem numero={} vezes=9 resposta-perdida"], "1", "autorizado"),
           ("respondido", [], "motivo <> ''", "autorizado"), ("entregue", [], "1", "autorizado"),
           ("recusado", ["ordem numero={} cstat:778"], "1", None), ("retirado", [], "1", None)]
# What leads through all of them, for those who die at any call.
CAMINHOS = [[], ["ordem servico=Autorizacao4 resposta-perdida"], ["ordem cstat:778"], ["reemitir"]][:None if TUDO else 1]


class Mortes(ComLoja):
    def test_do_servico_em_cada_estado(self):
        """Killed while the queue has its document in that state; the next one goes on from there."""
        loja, ultimo = self.loja(limite=8), 0
        for estado, ordens, e_mais, fim in ESTADOS:
            self.estorvar(loja, estado, True)
            ultimo += 1
            loja.comandar("limpar", "ajuste linha=boa", *[o.format(ultimo) for o in ordens])
            loja.caixas[0].vender()
            onde = f"numero = {ultimo} AND estado = '{estado}' AND {e_mais}"
            if fim:
                self.numeros[1, ultimo] = fim
            if estado == "retirado":
                loja.caixas[0].reemitir(3)
                ultimo += 1
                self.numeros[1, ultimo] = "autorizado"
            loja.servir()
            esperar(lambda: loja.fichas(onde=onde), 60)
            loja.parar(signal.SIGKILL)
            with self.subTest(estado=estado):
                self.assertEqual(len(loja.fichas(onde=onde)), 1, loja.fichas()[-2:])
                contar(f"mortes do serviço, o documento {estado}", 1)
            self.estorvar(loja, estado, False)
            loja.alterar_fila("UPDATE documento SET proximo = 0 WHERE proximo IS NOT NULL")
        loja.servir()
        self.conferir(loja, ultimo)

    @staticmethod
    def estorvar(loja, estado, sim):
        """What stands in the way of the next state, beside the authority."""
        retornos = loja.pasta / "caixa0" / "retornos"
        if estado == "achado":
            (loja.pasta / "senha").write_text("errada" if sim else loja.pronto["senha"])
        elif estado == "respondido" and sim:
            retornos.rename(retornos.with_name("guardados"))
            retornos.touch()
        elif estado == "respondido":
            retornos.unlink()
            retornos.with_name("guardados").rename(retornos)

    def test_do_servico_em_cada_chamada(self):
        """Killed before the n-th call that changes the disk or touches the network; what it leaves is
        there while the next one lives and dies."""
        loja, mortes, documentos = self.loja(limite=2), collections.Counter(), 0
        for caminho in CAMINHOS:
            for n in range(1, 1000, passo(60, 3 if caminho else 1)):
                loja.comandar("limpar", *[c for c in caminho if c != "reemitir"])
                ultimo = int(loja.caixas[0].vender()[0][25:34])
                if "reemitir" in caminho:
                    loja.caixas[0].reemitir(3)
                    ultimo += 1
                documentos += 1 + ("reemitir" in caminho)
                servico = loja.servir(morre=n)
                esperar(lambda: servico.poll() is not None or self.no_fim(loja, ultimo), 60)
                if servico.poll() is None:
                    break
                mortes[loja.ultimo_estado()] += 1
            loja.parar(signal.SIGKILL)
        loja.comandar("limpar")
        loja.servir()
        self.assertTrue(loja.acabou(documentos, 240))
        sem_nota = {n for n, in loja.fichas("numero", "estado IN ('recusado', 'retirado')")}
        self.numeros = {(1, n): "autorizado" for n in range(1, ultimo + 1) if n not in sem_nota}
        self.conferir(loja, documentos)
        for estado, quantas in mortes.items():
            contar(f"mortes do serviço, o documento {estado}", quantas)
        self.assertGreater(mortes.total(), 0)
        self.assertLessEqual({e[0] for e in ESTADOS} if passo(60, 3) <= 3 else set(), set(mortes))

    @staticmethod
    def no_fim(loja, numero):
        return loja.fichas(onde=f"numero = {numero} AND estado IN ('entregue', 'recusado')")

    def test_do_caixa_e_da_autoridade_enquanto_transmitem(self):
        loja = self.loja(limite=8)
        salto, mortes, codigo = passo(60, 1), 0, None
        while codigo != OK:
            loja.caixas[0].fechar()
            caixa = loja.abrir_caixa(0, mortal=True)
            caixa.vender()
            caixa.morrer(1 + mortes * salto)
            try:
                codigo, detalhe = caixa.transmitir(str(loja.config), 20)
                self.assertEqual(codigo, OK, detalhe)
            except EOFError:
                mortes += 1
                contar(f"mortes do caixa, o documento {loja.ultimo_estado()}", 1)
        caixa.fechar()
        self.assertGreater(mortes, 0)
        caixa = loja.abrir_caixa(0)
        loja.servir()
        for i in range(30 if TUDO else 2):  # the authority, at any moment
            caixa.vender()
            time.sleep(i % 10 * 0.02)
            loja.matar_autoridade()
            contar(f"mortes da autoridade, o documento {loja.ultimo_estado()}", 1)
            caixa.vender()
            loja.abrir_autoridade()
        ultimo = int(caixa.chave()[25:34])
        self.numeros = {(1, n): "autorizado" for n in range(1, ultimo + 1)}
        self.conferir(loja, ultimo, 240)


class Cortes(ComLoja):
    def test_a_linha_cortada(self):
        """In the bytes of TLS, from the first of the handshake on, in both directions, while consumers
        wait at several tills; then the line is good."""
        caixas = 8 if TUDO else 2
        loja = self.loja(caixas, limite=8)
        cortes = [Corte(loja.porta) for _ in range(caixas)]
        configs = [loja.escrever_config(caixas, f"corte{i}.toml", c.porta) for i, c in enumerate(cortes)]
        self.assertEqual(self.jornada(loja, config=configs[0])[0], OK)
        onde = [(s, n) for s, total in cortes[0].passados.items()
                for n in {0, *range(total - 40, 0, -passo(4000, 5))}]
        vistos = []

        def atender(i):
            while onde:
                cortes[i].sentido, cortes[i].depois = onde.pop()
                cortes[i].cortes = 0
                codigo, _ = self.jornada(loja, i, 2, config=configs[i])
                vistos.append((cortes[i].sentido if cortes[i].cortes else "nenhum", codigo))

        with futures.ThreadPoolExecutor(caixas) as turma:
            list(turma.map(atender, range(caixas)))
        for (sentido, codigo), vezes in collections.Counter(vistos).items():
            contar(f"cortes, {sentido}, {CODIGOS[codigo]}", vezes)
        self.envelhecer(loja)
        loja.servir()
        self.assertTrue(esperar(lambda: self.sem_pendentes(loja), len(vistos) + 240, 0.2), loja.fichas()[-5:])
        faltam = self.inutilizar_os_que_faltam(loja)
        self.assertTrue(esperar(lambda: len(loja.livros.linhas("SELECT id FROM inutilizados")) >= faltam, 240, 0.2))
        # What was replaced and authorized all the same is cancelled: the books say which.
        self.conferir(loja, len(self.numeros), len(vistos) + 240)
        self.assertTrue({("pedido", NAO_ENVIADO), ("resposta", SEM_RESPOSTA)} <= set(vistos), vistos)

    def sem_pendentes(self, loja):
        fichas = loja.fichas("estado, tipo, chave, substitui")
        fim = all(f[0] in ("entregue", "recusado", "retirado") for f in fichas)
        return fim and sum(f[1] == 1 for f in fichas) >= len(self.numeros)


class Disco(ComLoja):
    def test_cheio_e_esvaziado(self):
        """No byte more can be written to any file; then there is room again."""
        loja = self.loja(limite=8)
        loja.servir(restore_signals=False)  # a limit that is met is an error, not a signal
        loja.caixas[0].vender()
        self.assertTrue(loja.acabou(1))
        tamanho = (loja.fila / "fila.db-wal").stat().st_size
        for limite in (tamanho + 4096 * k for k in range(2, 40, passo(9, 1))):
            ultimo = int(loja.caixas[0].vender()[0][25:34])
            resource.prlimit(loja.servico.pid, resource.RLIMIT_FSIZE, (limite, resource.RLIM_INFINITY))
            time.sleep(0.4)
            resource.prlimit(loja.servico.pid, resource.RLIMIT_FSIZE, (resource.RLIM_INFINITY,) * 2)
        self.assertIsNone(loja.servico.poll())
        self.numeros = {(1, n): "autorizado" for n in range(1, ultimo + 1)}
        self.conferir(loja, ultimo)

    def test_a_fila_como_a_luz_a_deixou(self):
        """Copies of the queue taken while it works, each gone on with from there: what the authority
        has is asked for, and nothing is sold twice."""
        loja = self.loja(limite=8)
        copias = []
        loja.servir()
        self.assertTrue(esperar(loja.de_pe, 60))
        for i in range(40 if TUDO else 3):
            loja.caixas[0].vender()
            time.sleep(i % 20 * 0.02)
            copias.append(loja.pasta / f"luz{len(copias)}")
            loja.servico.send_signal(signal.SIGSTOP)  # all its files as of one moment
            shutil.copytree(loja.fila, copias[-1], ignore=shutil.ignore_patterns("*-shm"))
            loja.servico.send_signal(signal.SIGCONT)
            contar(f"quedas de luz, o documento {loja.ultimo_estado()}", 1)
        ultimo = len(copias)
        self.assertTrue(loja.acabou(ultimo))
        loja.parar()
        self.numeros = {(1, n): "autorizado" for n in range(1, ultimo + 1)}
        for copia in copias:
            shutil.rmtree(loja.fila)
            copia.rename(loja.fila)
            loja.servir()
            with self.subTest(copia=copia.name):
                self.conferir(loja, ultimo)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1] + sys.argv[2:], verbosity=2)
