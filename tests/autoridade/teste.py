#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""The stand-in authority held to what it says of itself. Its answers are judged by the published
schemas where ZEL_ESQUEMAS names their folder."""
import http.client
import json
import re
import signal
import sqlite3
import ssl
import subprocess
import sys
import tempfile
import threading
import time
import unittest
import urllib.request
from pathlib import Path

sys.dont_write_bytecode = True
try:
    import xmlsec  # noqa: F401
    from lxml import etree
except ImportError as falta:
    print(f"skipped=1: {falta}: python3-lxml and python3-xmlsec of Debian are needed")
    sys.exit(0)
import certificados  # noqa: E402
import nota  # noqa: E402
from caso import (AUTORIZA, CERTIFICADOS, CONSULTA, EMISSOR, ESQUEMAS, ESTADO, EVENTO, INUTILIZA, PASTA, RECIBO,  # noqa: E402
                  TITULAR, Caso)
from certificados import CNPJ  # noqa: E402
from livros import comparar  # noqa: E402
from regras import NS, campo  # noqa: E402

RAIZ = Path(__file__).resolve().parents[2]


class Documentos(Caso):
    def test_cada_regra_tem_o_seu_codigo(self):
        trocar = lambda de, para: {"trocar": lambda xml: xml.replace(de, para)}
        casos = [  # number, how the document is made, answer
            (1, {}, "104 100"),
            (2, {"tpEmis": 9, "cpf": "12345678909"}, "104 100"),
            (3, {"tpEmis": 9, "dhEmi": nota.agora(-90000)}, "104 150"),
            (4, {"dhEmi": nota.agora(-700)}, "104 704"),
            (5, {"dhEmi": nota.agora(-500)}, "104 100"),
            (6, {"dhEmi": nota.agora(400)}, "104 703"),
            (7, trocar("<serie>1<", "<serie>2<"), "104 502"),
            (8, {"cNF": "00000008"}, "104 897"),
            (9, {"csc": ("1", "SEGREDO")}, "104 100"),
            (10, {"csc": ("1", "OUTRO")}, "104 464"),
            (11, {"csc": ("2", "SEGREDO")}, "104 462"),
            (12, {"csc": ("1", "SEGREDO"), "tpEmis": 9}, "104 100"),
            (13, trocar("<tpImp>4</tpImp>", "<tpImp>9</tpImp>"), "225" if ESQUEMAS else "104 100"),
            (14, trocar("<verProc>1</verProc>", f"<verProc>1</verProc><dhCont>{nota.agora()}</dhCont><xJust>Linha fora "
                        "do ar na loja</xJust>"), "104 556"),
        ]
        self.comandar("ajuste csc=1=SEGREDO")
        for numero, feito, esperado in casos:
            with self.subTest(numero=numero):
                self.assertEqual(self.autorizar(numero, **feito)[1], esperado)
        self.comandar("ajuste offline=nao")
        self.assertEqual(self.autorizar(20, tpEmis=9)[1], "104 712")
        self.comandar("ajuste offline=sim", "ajuste offline_tarde=704")
        self.assertEqual(self.autorizar(21, tpEmis=9, dhEmi=nota.agora(-90000))[1], "104 704")

    def test_o_que_muda_depois_de_assinado(self):
        chave, nfe = EMISSOR.nota(1, tpEmis=9)
        digito_errado = chave[:43] + str((int(chave[43]) + 1) % 10)
        sem_qr = re.sub("<infNFeSupl>.*</infNFeSupl>", "", nfe)
        casos = [(nfe.replace("Loja de Ensaio", "Loja de Engano"), "104 297"),
                 (nfe.replace(f'URI="#NFe{chave}"', 'URI="#NFe"'), "104 298"),
                 (nfe.replace(chave, digito_errado).replace(f"<cDV>{chave[43]}", f"<cDV>{digito_errado[43]}"), "104 253"),
                 (nfe.replace("|10.00|", "|10.01|"), "104 397"),
                 (nfe.replace("|3|2|", "|3|1|"), "104 397"),
                 (re.sub(r"\|[^|<]{9}([^|<]*)</qrCode>", r"|AAAAAAAAA\1</qrCode>", nfe), "104 464")]
        casos += [] if ESQUEMAS else [(sem_qr, "104 394")]  # the schema asks for it already
        for i, (errada, esperado) in enumerate(casos):
            with self.subTest(i=i):
                self.assertNotEqual(errada, nfe)
                self.assertEqual(self.codigos(AUTORIZA, nota.lote(errada)), esperado)
        self.assertEqual(self.codigos(AUTORIZA, nota.lote(nfe)), "104 100")

    def test_certificado_de_outro(self):
        outra = certificados.Autoridade(PASTA, "estranha")
        for nome, titular, esperado in (
                ("outra", CERTIFICADOS.titular("99999999000191", "outra"), "213"),
                ("filial", CERTIFICADOS.titular("12345678000276", "filial"), "100"),
                ("sem", CERTIFICADOS.titular("", "sem"), "292"),
                ("vencido", CERTIFICADOS.titular(nome="vencido", desde=-30, ate=-1), "291"),
                ("estranho", outra.titular(nome="estranho"), "293")):
            with self.subTest(nome=nome):
                nfe = nota.Emissor(titular).nota(1)[1]
                self.assertEqual(self.codigos(AUTORIZA, nota.lote(nfe)), "104 " + esperado)
        for nome in ("vencido", "estranho"):
            with self.subTest(tls=nome), self.assertRaises((ssl.SSLError, OSError)):
                self.ligar((PASTA / f"{nome}.pem", PASTA / f"{nome}.chave.pem")).pedir(ESTADO, nota.estado())
        sem = self.ligar((PASTA / "sem.pem", PASTA / "sem.chave.pem")).pedir(AUTORIZA, nota.lote(EMISSOR.nota(2)[1]))
        self.assertEqual(campo(sem, "cStat"), "282")

    def test_duplicidades(self):
        chave, nfe = EMISSOR.nota(1)
        outra = EMISSOR.nota(1, cNF="98765431")
        self.codigos(AUTORIZA, nota.lote(nfe))
        dito = lambda n: self.pedir(AUTORIZA, nota.lote(n)).findall(".//{*}xMotivo")[-1].text
        self.assertRegex(dito(nfe), r"Duplicidade de NF-e \[nRec:43[0-9]{13}\]$")
        self.assertIn(f"[chNFe: {chave}]", dito(outra[1]))
        self.comandar("ajuste branco_539=nao")
        self.assertIn(f"[chNFe:{chave}]", dito(outra[1]))
        self.assertEqual(self.codigos(CONSULTA, nota.consulta(outra[0])), "562")
        self.cancelar(chave)
        self.assertEqual(self.codigos(AUTORIZA, nota.lote(nfe)), "104 218")

    def test_lote_sem_resposta_na_hora(self):
        self.comandar("ordem numero=1 recibo:2")
        chave, nfe = EMISSOR.nota(1)
        recibo = campo(self.pedir(AUTORIZA, nota.lote(nfe)), "infRec/nRec")
        vistos = [self.codigos(RECIBO, nota.recibo(n)) for n in (recibo,) * 4 + ("9" * 15,)]
        self.assertEqual(vistos, ["105", "105", "104 100", "104 100", "106"])
        self.assertEqual(self.codigos(CONSULTA, nota.consulta(chave)), "100 100")


class Pedidos(Caso):
    def test_cancelamento(self):
        chave, _ = self.autorizar(1)
        fora = EMISSOR.nota(9)[0]
        self.assertEqual(self.codigos(EVENTO, EMISSOR.cancelamento(fora, "1" * 15)), "128 494")
        self.assertEqual(self.codigos(EVENTO, EMISSOR.cancelamento(chave, "1" * 15)), "128 222")
        self.comandar("ajuste relogio=2000")
        self.assertEqual(self.cancelar(chave), "128 501")
        self.comandar("ajuste cancelamento_tarde=155")
        self.assertEqual(self.cancelar(chave), "128 155")
        self.assertEqual([self.cancelar(chave), self.cancelar(chave, seq=2)], ["128 573", "128 420"])
        self.assertEqual(self.codigos(CONSULTA, nota.consulta(chave)), "101 100 155")
        self.assertEqual(self.codigos(CONSULTA, nota.consulta(fora)), "217")

    def test_substituicao(self):
        primeira, _ = self.autorizar(1, cpf="12345678909")
        casos = [({"tpEmis": 1, "cpf": "12345678909"}, "918"), ({"tpEmis": 9}, "915"),
                 ({"tpEmis": 9, "cpf": "12345678909", "total": "10.01"}, "913"),
                 ({"tpEmis": 9, "cpf": "12345678909", "dhEmi": nota.agora(-7300)}, "912"),
                 ({"tpEmis": 9, "cpf": "12345678909"}, "135"), ({"tpEmis": 9, "cpf": "12345678909"}, "573")]
        self.assertEqual(self.cancelar(primeira, EMISSOR.nota(99, tpEmis=9)[0]), "128 910")
        for numero, (feita, esperado) in enumerate(casos, 2):
            with self.subTest(numero=numero):
                self.assertEqual(self.cancelar(primeira, self.autorizar(numero, **feita)[0]), "128 " + esperado)
        # It repeats cOrgaoAutor, which the schema of the consultation does not have.
        self.assertEqual(self.codigos(CONSULTA, nota.consulta(primeira), julgar=False), "101 100 135")

    def test_inutilizacao(self):
        self.autorizar(5)
        casos = [(1, 4, "102"), (1, 4, "563"), (4, 6, "256"), (5, 6, "241"), (7, 6, "224"), (6, 6, "102")]
        vistos = [(i, f, self.codigos(INUTILIZA, EMISSOR.inutilizacao(i, f))) for i, f, _ in casos]
        self.assertEqual(vistos, casos)
        self.assertEqual(self.autorizar(2)[1], "104 206")

    def test_servico_fora_e_consumo(self):
        for estado in ("108", "109"):
            self.comandar(f"ajuste estado={estado}")
            self.assertEqual([self.codigos(ESTADO, nota.estado()), self.autorizar(1)[1]], [estado, estado])
        self.comandar("ajuste estado=107", "ajuste consumo=3")
        chave = EMISSOR.nota(7)[0]
        self.assertEqual([self.codigos(CONSULTA, nota.consulta(chave)) for _ in range(5)], ["217"] * 3 + ["656"] * 2)
        self.comandar("ajuste relogio=3700")
        self.assertEqual(self.codigos(CONSULTA, nota.consulta(chave)), "217")


class Linha(Caso):
    def test_envelope_que_nao_serve(self):
        for servico, mensagem, acao in ((ESTADO, nota.estado(), "outra"), (ESTADO, "<x", None), (ESTADO, "", None),
                                        (ESTADO, nota.estado(), f"{nota.WSDL}{CONSULTA}/nfeConsultaNF")):
            with self.subTest(acao=acao, mensagem=mensagem[:9]):
                estado, corpo = self.cliente.bruto(servico, mensagem, acao)
                self.assertEqual(estado, 500)
                self.assertIn(b"soap:Fault", corpo)
        self.assertEqual(self.cliente.bruto(ESTADO, "", metodo="GET")[0], 405)
        self.assertEqual(self.codigos(ESTADO, nota.consulta("1" * 44), julgar=False), "215")

    def test_cada_ordem(self):
        """What the sender sees, and whether the document is on record afterwards."""
        casos = [("sem-conexao", OSError, False), ("reset-antes", OSError, False), ("corte-pedido:100", OSError, False),
                 ("numero=4 reset", OSError, False), ("pedido-perdido", http.client.RemoteDisconnected, False),
                 ("servico=Autorizacao4 nunca", TimeoutError, False), ("http:503", 503, False), ("http:500", 500, False),
                 ("cstat:999", 999, False), ("cstat:656", 656, False), ("resposta-perdida", http.client.RemoteDisconnected, True),
                 ("resposta-nunca", TimeoutError, True), ("atraso:0.3", 100, True), ("lixo", etree.XMLSyntaxError, True),
                 ("metade", (http.client.IncompleteRead, OSError), True), ("corte-resposta:300", Exception, True),
                 ("corte-resposta:0", OSError, True), ("cstat:150", 150, True), ("cstat:302", 302, True),
                 ("duas-vezes", 100, True)]
        for numero, (ordem, esperado, consta) in enumerate(casos, 1):
            with self.subTest(ordem=ordem):
                self.cliente.linha.close()
                self.cliente = self.ligar(segundos=1.5 if "nunca" in ordem else 10)
                chave, nfe = EMISSOR.nota(numero)
                self.comandar("ordem " + ordem)
                inicio = time.monotonic()
                try:
                    http_, corpo = self.cliente.bruto(AUTORIZA, nota.lote(nfe))
                    visto = http_ if http_ != 200 else int(etree.fromstring(corpo).findall(".//{*}cStat")[-1].text)
                except Exception as erro:  # noqa: BLE001: what the sender sees is compared
                    self.assertIsInstance(erro, esperado)
                else:
                    self.assertEqual(visto, esperado)
                if ordem.startswith("atraso"):
                    self.assertGreaterEqual(time.monotonic() - inicio, 0.3)
                achado = self.livros.linha("SELECT 1 FROM documentos WHERE chave = ?", chave)
                self.assertEqual(achado is not None, consta)
                self.assertEqual(self.servidor.ordens.lista, [])

    def test_a_mesma_resposta_duas_vezes_no_fio(self):
        self.cliente.linha.connect()
        fio = self.cliente.linha.sock
        self.comandar("ordem duas-vezes")
        self.cliente.pedir(ESTADO, nota.estado())
        fio.settimeout(5)
        self.assertTrue(fio.recv(4096).startswith(b"HTTP/1.1 200 "))

    def test_linha_fora_do_ar(self):
        self.pedir(ESTADO, nota.estado())
        self.comandar("ajuste linha=fora")
        for _ in range(2):  # the line that was open, and a new one
            self.assertRaises(OSError, self.cliente.bruto, ESTADO, nota.estado())
        self.comandar("ajuste linha=boa", "ordem atraso:5")
        chave, nfe = EMISSOR.nota(1)  # its answer is on the way when the line goes
        threading.Timer(0.3, self.comandar, ["ajuste linha=fora"]).start()
        inicio = time.monotonic()
        self.assertRaises((OSError, http.client.HTTPException), self.cliente.bruto, AUTORIZA, nota.lote(nfe))
        self.assertLess(time.monotonic() - inicio, 4)
        self.comandar("ajuste linha=boa")
        self.assertEqual(self.codigos(CONSULTA, nota.consulta(chave)), "100 100")
        self.assertEqual(self.codigos(ESTADO, nota.estado()), "107")

    def test_ordem_por_numero_espera_o_seu(self):
        self.comandar("ordem numero=2 vezes=2 cstat:999")
        vistos = [self.autorizar(n)[1] for n in (1, 2, 2, 2)]
        self.assertEqual(vistos, ["104 100", "999", "999", "104 100"])
        for linha in ("ordem dormir", "ordem numero=1 reset-antes", "ordem atraso", "ajuste nada=1", "x"):
            self.assertRaises(ValueError, self.comandar, linha)


class SemCertificado(Caso):
    opcoes = ("--sem-certificado", "--tls", "1.2", "--sem-esquemas")

    def test_atende_sem_certificado_nem_esquema(self):
        self.assertEqual(self.codigos(ESTADO, nota.estado()), "107")
        self.assertEqual(self.cliente.linha.sock.version(), "TLSv1.2")
        sem = nota.Cliente(self.servidor.server_address[1], PASTA / "ac.pem")
        self.addCleanup(sem.linha.close)
        self.assertEqual(campo(sem.pedir(ESTADO, nota.estado()), "cStat"), "107")


class Conferencia(Caso):
    """The comparison finds what is wrong, each fault of its own."""

    def guardar(self, pasta, chave, nfe, protocolo=None):
        (pasta / f"{chave}-procNFe.xml").write_text(
            f'<nfeProc xmlns="{NS}" versao="4.00">{nfe}<protNFe><infProt><nProt>{protocolo or self.protocolo(chave)}'
            "</nProt></infProt></protNFe></nfeProc>", "utf-8")

    @staticmethod
    def fila(arquivo, tabelas, linha):
        banco = sqlite3.connect(arquivo, isolation_level=None)
        banco.executescript(tabelas)
        # Every member that the table asks for, and of them the ones that count.
        pedidos = [l[1:3] for l in banco.execute("PRAGMA table_info(documento)") if l[3] and l[4] is None]
        valores = {nome: {"INTEGER": 1, "TEXT": "", "BLOB": b"0"}[tipo] for nome, tipo in pedidos} | linha
        mensagem = valores.pop("mensagem").encode()
        banco.execute(f"INSERT INTO documento ({', '.join(valores)}) VALUES ({', '.join('?' * len(valores))})", [*valores.values()])
        banco.execute("INSERT INTO conteudo (id, original, mensagem) VALUES (1, x'00', ?)", [mensagem])
        banco.close()
        return arquivo

    def test_livros_e_guardados(self):
        pasta = Path(tempfile.mkdtemp(dir=PASTA))
        chave, nfe = EMISSOR.nota(1)
        self.codigos(AUTORIZA, nota.lote(nfe))
        self.guardar(pasta, chave, nfe)
        ver = lambda **mais: comparar(self.livros, guardados=pasta, **mais)
        self.assertEqual(ver(numeros={(CNPJ, 1, 1): "autorizado"}), [])
        casos = [(lambda: self.guardar(pasta, chave, nfe.replace("Loja", "Lojo")), "other bytes"),
                 (lambda: self.guardar(pasta, chave, nfe, "143260000000099"), "without the protocol"),
                 (lambda: (pasta / f"{chave}-procNFe.xml").unlink(), "not kept"),
                 (lambda: self.guardar(pasta, "9" * 44, nfe, "1"), "the books do not have it")]
        for estragar, esperado in casos:
            with self.subTest(esperado=esperado):
                estragar()
                self.assertIn(esperado, "\n".join(ver()))
                self.guardar(pasta, chave, nfe)
        (pasta / f"{'9' * 44}-procNFe.xml").unlink()
        self.cancelar(chave)
        self.codigos(INUTILIZA, EMISSOR.inutilizacao(2, 3))
        self.assertEqual([d.rpartition("-")[2] for d in ver()], ["procEventoNFe.xml: not kept", "procInutNFe.xml: not kept"])
        evento, faixa = self.livros.linha("SELECT * FROM eventos"), self.livros.linha("SELECT * FROM inutilizados")
        for nome, dentro in ((f"{chave}-110111-procEventoNFe.xml", evento["evento"] + evento["ret"].encode()),
                             (faixa["id"] + "-procInutNFe.xml", f"<nProt>{faixa['protocolo']}</nProt>".encode())):
            (pasta / nome).write_bytes(dentro)
        certo = {(CNPJ, 1, 1): "cancelado", (CNPJ, 1, 2): "inutilizado", (CNPJ, 1, 3): None}
        self.assertEqual(ver(numeros=certo), [])
        for numeros, esperado in ((certo | {(CNPJ, 1, 4): None}, "outcomes []"), (certo | {(CNPJ, 1, 1): "autorizado"},
                                   "has it autorizado"), ({(CNPJ, 1, 3): None}, "no till has it")):
            self.assertIn(esperado, "\n".join(comparar(self.livros, numeros=numeros)))

    def test_bytes_trocados(self):
        ler = lambda: "\n".join(comparar(self.livros))
        certa, errada = (EMISSOR.nota(1, total=t, cNF="10000001")[1] for t in ("10.00", "11.00"))
        self.comandar("ordem cstat:778")
        self.codigos(AUTORIZA, nota.lote(errada))
        self.codigos(AUTORIZA, nota.lote(certa))  # mended after a refusal: as it should be
        self.assertEqual(ler(), "")
        self.codigos(AUTORIZA, nota.lote(errada))
        self.assertIn("sent with other bytes after 100", ler())

    def test_fila(self):
        forma = RAIZ / "envio" / "src" / "fila" / "Forma.cpp"
        if not forma.exists():
            self.skipTest("no queue in this tree")
        tabelas = re.search(r'R"sql\((.*?)\)sql"', forma.read_text("utf-8"), re.S)[1]
        chave, nfe = EMISSOR.nota(1)
        self.codigos(AUTORIZA, nota.lote(nfe))
        certo = {"chave": chave, "estado": "entregue", "desfecho": 1, "protocolo": self.protocolo(chave), "mensagem": nfe}
        casos = [({}, ""), ({"estado": "perguntar"}, "still perguntar"), ({"protocolo": "1"}, "authorized with 1"),
                 ({"mensagem": nfe.replace("Loja", "Lojo")}, "other bytes"), ({"estado": "recusado"}, "does not know it"),
                 ({"chave": "9" * 44}, "in the books None")]
        for i, (troca, esperado) in enumerate(casos):
            with self.subTest(troca=list(troca)):
                fila = self.fila(PASTA / f"fila{i}.db", tabelas, certo | troca)
                visto = "\n".join(comparar(self.livros, fila=fila))
                self.assertIn(esperado, visto) if esperado else self.assertEqual(visto, "")


class Programa(unittest.TestCase):
    def test_morre_e_continua(self):
        """Killed after an answer, started again: the document is there, the commands reach it."""
        programa, chave_nfe = Path(__file__).with_name("autoridade.py"), EMISSOR.nota(1)

        def iniciar():
            (PASTA / "pronto.json").unlink(missing_ok=True)
            processo = subprocess.Popen([programa, PASTA, "--ajuste", "csc=9=X"])
            self.addCleanup(processo.wait)
            self.addCleanup(processo.kill)
            limite = time.monotonic() + 30
            while not (PASTA / "pronto.json").exists() and time.monotonic() < limite:
                time.sleep(0.02)
            pronto = json.loads((PASTA / "pronto.json").read_text("utf-8"))
            cliente = nota.Cliente(pronto["porta"], pronto["ac"], TITULAR)
            self.addCleanup(cliente.linha.close)
            return processo, pronto, cliente

        for arquivo in PASTA.glob("livros.db*"):
            arquivo.unlink()
        processo, pronto, cliente = iniciar()
        cliente.pedir(AUTORIZA, nota.lote(chave_nfe[1]))
        processo.send_signal(signal.SIGKILL)
        processo.wait()
        processo, pronto, cliente = iniciar()
        resposta = cliente.pedir(AUTORIZA, nota.lote(chave_nfe[1]))
        self.assertEqual(resposta.findall(".//{*}cStat")[-1].text, "204")
        feito = subprocess.run([programa, PASTA, "--comandar", "ordem cstat:999"], timeout=30, capture_output=True)
        self.assertEqual(feito.stdout, b"ok\n")
        self.assertEqual(campo(cliente.pedir(ESTADO, nota.estado()), "cStat"), "999")
        ler = lambda nome: json.load(urllib.request.urlopen(f"http://127.0.0.1:{pronto['controle']}/{nome}", timeout=30))
        self.assertEqual([p["interno"] for p in ler("pedidos")], ["100", "204", ""])
        self.assertEqual(ler("ajustes")["csc"], "9=X")
        processo.send_signal(signal.SIGTERM)
        self.assertEqual(processo.wait(), 0)
        conferir = subprocess.run([programa.with_name("livros.py"), PASTA / "livros.db", "--numeros", "1:1-2"], timeout=30,
                                  capture_output=True, text=True)
        self.assertEqual((conferir.returncode, conferir.stdout), (1, f"{CNPJ} series 1 number 2: outcomes []\n"))


if __name__ == "__main__":
    unittest.main()
