# SPDX-License-Identifier: MIT
"""A shop of the tests: the authority's stand-in, a service zel-envio and tills, each a process of its
own that can be killed; at the end books, queue, kept files and tills' numbers are held against each
other."""
import contextlib
import json
import os
import shutil
import signal
import socket
import sqlite3
import subprocess
import sys
import tempfile
import threading
import time
from pathlib import Path

sys.dont_write_bytecode = True
AQUI = Path(__file__).resolve().parent
sys.path.insert(0, str(AQUI.parent / "autoridade"))
import autoridade  # noqa: E402
from certificados import CNPJ  # noqa: E402
from livros import Livros, comparar  # noqa: E402

SISTEMA = "/usr/bin/python3"
TOML = """cUF = "43"
{esquemas}[certificado]
arquivo = "{titular}"
senha_arquivo = "senha"
[qrcode]
versao = 3
[servicos]
{servicos}
[rede]
tempo_maximo = {limite}
autoridades = "{ac}"
"""
SERVICOS = {"NfeAutorizacao": "NFeAutorizacao4", "NfeRetAutorizacao": "NFeRetAutorizacao4",
            "NfeConsultaProtocolo": "NFeConsultaProtocolo4", "NfeStatusServico": "NFeStatusServico4",
            "NfeInutilizacao": "NFeInutilizacao4", "RecepcaoEvento": "NFeRecepcaoEvento4"}


def esperar(condicao, segundos, passo=0.03):
    fim = time.monotonic() + segundos
    while not (visto := condicao()):
        if time.monotonic() > fim:
            return visto
        time.sleep(passo)
    return visto


class Corte:
    """A port in front of another: of each connection the line is cut (reset) when `depois` bytes have
    gone in direction `sentido`, "pedido" or "resposta". None: never."""

    def __init__(self, destino):
        self.destino, self.sentido, self.depois, self.cortes = destino, "pedido", None, 0
        self.passados = {"pedido": 0, "resposta": 0}
        self.porta_ = socket.create_server(("127.0.0.1", 0), backlog=64)
        self.porta = self.porta_.getsockname()[1]
        threading.Thread(target=self.atender, daemon=True).start()

    def atender(self):
        while True:
            try:
                cliente = self.porta_.accept()[0]
            except OSError:
                return
            if self.depois == 0 and self.sentido == "pedido":
                self.cortes += 1
                self.cortar(cliente)
                continue
            servidor = socket.create_connection(("127.0.0.1", self.destino))
            for de, para, sentido in ((cliente, servidor, "pedido"), (servidor, cliente, "resposta")):
                threading.Thread(target=self.passar, args=(de, para, sentido), daemon=True).start()

    def passar(self, de, para, sentido):
        restam = self.depois if sentido == self.sentido else None
        try:
            while bytes_ := de.recv(65536):
                para.sendall(bytes_[:restam])
                self.passados[sentido] += len(bytes_)
                if restam is not None:
                    restam -= len(bytes_)
                    if restam <= 0:
                        self.cortes += 1
                        time.sleep(0.002)  # what was let through arrives before the reset
                        break
        except OSError:
            pass
        self.cortar(de)
        self.cortar(para)

    @staticmethod
    def cortar(conexao):
        try:
            conexao.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, b"\1\0\0\0\0\0\0\0")
            conexao.shutdown(socket.SHUT_RDWR)
        except OSError:
            pass
        conexao.close()


class Processo:
    """One that is asked in lines of JSON."""

    def __init__(self, comando, ambiente):
        self.p = subprocess.Popen(comando, env=ambiente, stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)

    def __getattr__(self, nome):
        def pedir(*argumentos):
            self.p.stdin.write(json.dumps([nome, *argumentos]) + "\n")
            self.p.stdin.flush()
            linha = self.p.stdout.readline()
            if not linha:
                raise EOFError(f"{nome}: the till is dead ({self.p.wait()})")
            return json.loads(linha)
        return pedir

    def fechar(self):
        self.p.kill()
        self.p.communicate()


class Loja:
    def __init__(self, build, caixas=1, limite=3, pasta=None, fila="", ajustes=(), so_o_primeiro=False):
        self.build, self.limite = Path(build), limite
        self.pasta = Path(pasta or tempfile.mkdtemp(prefix="zel-loja."))
        self.apagar, self.diario = pasta is None, self.pasta / "servico.log"
        self.ajustes, self.porta, self.servico, self.autoridade = ajustes, 0, None, None
        self.caixas = []
        self.fila = Path(fila or self.pasta / "fila")
        try:
            self.abrir_autoridade()
            self.config = self.escrever_config(caixas, "zel-envio.toml", self.porta)
            for i in range(1 if so_o_primeiro else caixas):
                self.abrir_caixa(i).configurar(str(self.pasta / f"caixa{i}" / "copias") + "/", i + 1, 0)
        except BaseException:
            self.fechar()  # whoever could not have it leaves nobody behind
            raise

    # ---- the processes

    def abrir_autoridade(self):
        pronto = self.pasta / "sefaz" / "pronto.json"
        pronto.unlink(missing_ok=True)
        ajustes = [f"--ajuste={a}" for a in self.ajustes]
        self.autoridade = subprocess.Popen(
            [SISTEMA, AQUI.parent / "autoridade" / "autoridade.py", self.pasta / "sefaz", "--porta", str(self.porta), *ajustes])
        if not esperar(pronto.exists, 60):
            raise RuntimeError("the authority did not start")
        self.pronto = json.loads(pronto.read_text())
        self.porta = self.pronto["porta"]
        self.livros = Livros(self.pasta / "sefaz" / "livros.db")

    def escrever_config(self, caixas, nome, porta):
        esquemas = os.environ.get("ZEL_ESQUEMAS")
        toml = TOML.format(esquemas=f'esquemas = "{esquemas}"\n' if esquemas else "", titular=self.pronto["titular"],
                           servicos="\n".join(f'{n} = "https://127.0.0.1:{porta}/ws/{c}"' for n, c in SERVICOS.items()),
                           limite=self.limite, ac=self.pronto["ac"])
        toml += f'[fila]\ndiretorio = "{self.fila}/"\n'
        for i in range(caixas):
            (self.pasta / f"caixa{i}" / "copias").mkdir(parents=True, exist_ok=True)
            toml += f'[[caixas]]\ndiretorio = "{self.pasta}/caixa{i}"\ncopias = "{self.pasta}/caixa{i}/copias"\n'
        senha = self.pasta / "senha"
        senha.touch(0o600)
        senha.write_text(self.pronto["senha"] + "\n")
        config = self.pasta / nome
        config.write_text(toml)
        return config

    def abrir_caixa(self, i=0, mortal=False):
        ambiente = dict(os.environ, TZ="BRT3")
        precarga = os.environ.get("ZEL_PRECARGA", "")
        if precarga:
            ambiente |= {"LD_PRELOAD": precarga,
                         "ASAN_OPTIONS": "detect_leaks=0:handle_segv=0:verify_asan_link_order=0"}
        if mortal:
            ambiente |= self.de_quem_morre(precarga)
        caixa = Processo([SISTEMA, AQUI / "caixa.py", self.build, self.pasta / f"caixa{i}"], ambiente)
        self.caixas[i:i + 1] = [caixa]
        return caixa

    def de_quem_morre(self, precarga=""):
        shim = self.pasta / "morre.so"
        if not shim.exists():
            subprocess.run(["cc", "-O1", "-shared", "-fPIC", AQUI / "morre.c", "-o", shim, "-ldl"], check=True)
        return {"LD_PRELOAD": f"{precarga} {shim}".strip(),
                "ASAN_OPTIONS": "detect_leaks=0:handle_segv=0:verify_asan_link_order=0"}

    def servir(self, morre=0, **opcoes):
        ambiente = dict(os.environ, **(dict(self.de_quem_morre(), ZEL_MORRE_EM=str(morre)) if morre else {}))
        with open(self.diario, "ab") as diario:
            self.dito = diario.tell()
            self.servico = subprocess.Popen([self.build / "apps" / "zel-envio" / "zel-envio", "--config", self.config],
                                            env=ambiente, stderr=diario, **opcoes)
        return self.servico

    def de_pe(self):
        """The service says that it is up; or it is dead."""
        return self.servico.poll() is not None or b"zel-envio: " in self.diario.read_bytes()[self.dito:]

    def parar(self, sinal=signal.SIGTERM):
        if self.servico:
            if sinal == signal.SIGTERM:
                esperar(self.de_pe, 60)
            self.servico.send_signal(sinal)
            codigo = self.servico.wait(60)
            self.servico = None
            return codigo

    def matar_autoridade(self):
        if self.autoridade:
            self.autoridade.kill()
            self.autoridade.wait()

    def comandar(self, *linhas):
        autoridade.comandar(self.pasta / "sefaz", linhas)

    # ---- what is seen

    def fichas(self, colunas="chave, estado, desfecho, cStat, motivo", onde="1"):
        if not (self.fila / "fila.db").exists():
            return []
        banco = sqlite3.connect(f"file:{self.fila}/fila.db?mode=ro", uri=True, timeout=10)
        try:
            return banco.execute(f"SELECT {colunas} FROM documento WHERE {onde} ORDER BY id").fetchall()
        except sqlite3.OperationalError:  # it is being made
            return []
        finally:
            banco.close()

    def ultimo_estado(self):
        """Of the document that the queue last changed; "nenhum" when there is none."""
        return (self.fichas("estado", "mudado = (SELECT max(mudado) FROM documento)") or [("nenhum",)])[-1][0]

    def alterar_fila(self, sql):
        with contextlib.closing(sqlite3.connect(self.fila / "fila.db", timeout=30, isolation_level=None)) as banco:
            banco.execute(sql)

    def acabou(self, quantas, segundos=90):
        """Until so many documents and requests are in the queue and all are at an end."""
        fim = lambda: (lambda t: len(t) >= quantas and all(e in ("entregue", "recusado", "retirado") for e, in t))(
            self.fichas("estado"))
        return bool(esperar(fim, segundos, 0.1))

    def diferencas(self, numeros=None):
        return comparar(self.livros, self.fila / "fila.db", self.pasta / "guardados",
                        {(CNPJ, *qual): fim for qual, fim in (numeros or {}).items()})

    def fechar(self):
        self.parar(signal.SIGKILL)
        for caixa in self.caixas:
            caixa.fechar()
        self.matar_autoridade()
        if self.apagar:
            shutil.rmtree(self.pasta, ignore_errors=True)
