# SPDX-License-Identifier: MIT
"""The stand-in on the wire: HTTPS with client certificates, SOAP 1.2, and what goes wrong there by
order; beside it the control port, plain HTTP on this machine."""
import concurrent.futures
import hashlib
import http.server
import json
import re
import socket
import ssl
import struct
import threading
import time
import traceback

from lxml import etree

import certificados
from ordens import ACOES, SEM_FAZER, SEM_LER
from regras import METODOS, SOAP, WSDL, cortar

MAXIMO = 1 << 20
ACAO = re.compile(r'^application/soap\+xml\b.*\baction="?([^";]+)', re.S)
LEITOR = {"resolve_entities": False, "no_network": True}


class Cortada(Exception):
    """By order nothing more goes over this connection."""


class Atendente(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"
    disable_nagle_algorithm = True
    timeout = 120

    def log_message(self, *_):
        pass

    def handle(self):
        try:
            if self.server.fora() or self.server.ordens.tomar(("sem-conexao",)).acao:
                raise Cortada
            self.request = self.connection = self.server.contexto.wrap_socket(self.request, server_side=True)
            self.server.abertas.add(self.connection)
            self.rfile, self.wfile = self.connection.makefile("rb"), self.connection.makefile("wb", 0)
            super().handle()
        except Cortada:
            self.derrubar()
        except OSError:
            self.close_connection = True  # the other side is gone, or its certificate is refused
        finally:
            self.server.abertas.discard(self.connection)
            self.connection.close()

    def derrubar(self):
        """A reset instead of the end of the line."""
        self.connection.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
        self.connection.close()

    def handle_one_request(self):
        if not self.rfile.peek(1):
            self.close_connection = True
            return
        ordem = self.server.ordens.tomar(SEM_LER)
        if ordem.acao == "corte-pedido":
            self.rfile.read(int(ordem.valor))
        if ordem.acao or self.server.fora():
            raise Cortada
        super().handle_one_request()

    def do_POST(self):
        inicio = time.perf_counter()
        tamanho = int(self.headers.get("Content-Length", "0"))
        if not 0 < tamanho <= MAXIMO:
            self.close_connection = True
            return self.responder(413, b"", "text/plain")
        texto = self.rfile.read(tamanho)
        if len(texto) < tamanho:
            raise Cortada
        servico = self.path.rpartition("/")[2]
        try:
            raiz, mensagem = desembrulhar(servico, self.path, self.headers.get("Content-Type", ""), texto)
        except ValueError as erro:
            return self.falta(servico, str(erro))
        self.cumprir(servico, raiz, mensagem, inicio)

    def do_GET(self):
        self.close_connection = True
        self.responder(405, b"", "text/plain")

    def falta(self, servico, porque):
        self.server.livros.gravar("pedidos", momento=time.time(), servico=servico, alvo="", sha256="", cStat="fault")
        self.responder(500, (f'<soap:Envelope xmlns:soap="{SOAP}"><soap:Body><soap:Fault><soap:Code><soap:Value>soap:Sender'
                             f"</soap:Value></soap:Code><soap:Reason><soap:Text>{porque}</soap:Text></soap:Reason>"
                             "</soap:Fault></soap:Body></soap:Envelope>").encode())

    def cumprir(self, servico, raiz, mensagem, inicio):
        """Judges, writes down, answers: as ordered."""
        servicos, livros = self.server.servicos, self.server.livros
        alvo, numero = servicos.alvo(raiz)
        ordem = self.server.ordens.tomar(ACOES - set(SEM_LER), servico, numero)
        nfe = cortar(mensagem, b"NFe") if servico == "NFeAutorizacao4" else b""
        feito = None
        if ordem.acao not in SEM_FAZER:
            der = self.connection.getpeercert(True)
            sem_dono = der and not certificados.cnpj_de(der)
            ordenado = "282" if sem_dono else ordem.valor if ordem.acao == "cstat" else None
            recibo = int(ordem.valor or 1) if ordem.acao == "recibo" else None
            feito = self.server.juizes.submit(servicos.atender, servico, raiz, mensagem, ordenado, recibo).result()
        micros = int((time.perf_counter() - inicio) * 1e6)
        pedido = livros.gravar(
            "pedidos", momento=servicos.relogio(), servico=servico, alvo=alvo, ordem=str(ordem), micros=micros,
            sha256=hashlib.sha256(nfe).hexdigest() if nfe else "", cStat=feito.cStat if feito else "",
            interno=feito.interno if feito else "",
            espera_micros=int(float(ordem.valor) * 1e6) if ordem.acao == "atraso" else 0)
        self.entregar(ordem, feito and embrulhar(servico, feito.xml))
        if ordem.acao in ("", "cstat", "recibo", "atraso", "duas-vezes"):
            livros.entregue(pedido)

    def entregar(self, ordem, resposta):
        if ordem.acao in ("nunca", "resposta-nunca"):
            self.connection.settimeout(600)
            self.rfile.read(1)  # until the other side gives up
        if ordem.acao in ("nunca", "resposta-nunca", "reset"):
            raise Cortada
        if ordem.acao in ("pedido-perdido", "resposta-perdida"):
            self.close_connection = True
            return
        if ordem.acao == "atraso":
            time.sleep(float(ordem.valor))
        if ordem.acao == "http":
            codigo = int(ordem.valor)
            return self.responder(codigo, b"<html><body>Service Unavailable</body></html>", "text/html")
        if ordem.acao == "lixo":
            return self.responder(200, bytes(range(256)) * 4)
        corte = int(ordem.valor) if ordem.acao == "corte-resposta" else None
        self.responder(200, resposta, corte=corte, metade=ordem.acao == "metade")
        if ordem.acao == "duas-vezes":
            self.responder(200, resposta)

    def responder(self, codigo, corpo, tipo="application/soap+xml; charset=utf-8", corte=None, metade=False):
        tudo = (f"HTTP/1.1 {codigo} {self.responses.get(codigo, ('',))[0]}\r\nContent-Type: {tipo}\r\n"
                f"Content-Length: {len(corpo)}\r\n{'Connection: close' if self.close_connection else 'X-Ensaio: 1'}"
                "\r\n\r\n").encode() + corpo
        if metade:
            corte = len(tudo) - len(corpo) // 2
        self.wfile.write(tudo[:corte])
        if corte is not None:
            # What was written must arrive before the reset: a moment for the kernel, as a cut has.
            time.sleep(0.02)
            raise Cortada


def desembrulhar(servico, caminho, tipo, texto):
    """The message within an envelope: read alone, and its bytes. ValueError says what is wrong."""
    if servico not in METODOS or caminho != "/ws/" + servico:
        raise ValueError("no such service")
    acao = ACAO.match(tipo)
    if not acao or acao[1] != f"{WSDL}{servico}/{METODOS[servico]}":
        raise ValueError("Content-Type without the action of this service")
    try:
        envelope = etree.fromstring(texto, etree.XMLParser(**LEITOR))
        dados = envelope.find(f"{{{SOAP}}}Body/{{{WSDL}{servico}}}nfeDadosMsg")
        if envelope.tag != f"{{{SOAP}}}Envelope" or dados is None or len(dados) != 1:
            raise ValueError("not an envelope of SOAP 1.2 with one message of this service")
        mensagem = cortar(texto, etree.QName(dados[0]).localname.encode())
        return etree.fromstring(mensagem, etree.XMLParser(**LEITOR)), mensagem
    except etree.XMLSyntaxError as erro:
        raise ValueError("not well-formed") from erro


def embrulhar(servico, xml):
    return (f'<?xml version="1.0" encoding="UTF-8"?><soap:Envelope xmlns:soap="{SOAP}"><soap:Body><nfeResultMsg '
            f'xmlns="{WSDL}{servico}">{xml}</nfeResultMsg></soap:Body></soap:Envelope>').encode()


class Servidor(http.server.ThreadingHTTPServer):
    daemon_threads = True
    request_queue_size = 128

    def __init__(self, porta, contexto, servicos, livros, ordens):
        super().__init__(("127.0.0.1", porta), Atendente)
        self.contexto, self.servicos, self.livros, self.ordens = contexto, servicos, livros, ordens
        self.abertas = set()
        # Threads of their own: a signature that fails leaves an error in its thread's queue of OpenSSL, which
        # the next read of a connection there would take for its own.
        self.juizes = concurrent.futures.ThreadPoolExecutor(4)

    def fora(self):
        return self.servicos.ajustes["linha"] == "fora"

    def handle_error(self, *_):
        traceback.print_exc()

    def shutdown_request(self, request):
        request.close()

    def cortar_linha(self):
        for conexao in list(self.abertas):
            try:
                conexao.shutdown(socket.SHUT_RDWR)
            except OSError:
                pass


def contexto_tls(autoridade, com_certificado=True, confiar=(), maxima=None):
    pem, chave = autoridade.servidor()
    contexto = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
    contexto.load_cert_chain(pem, chave)
    if maxima == "1.2":
        contexto.maximum_version = ssl.TLSVersion.TLSv1_2
    if com_certificado:
        contexto.verify_mode = ssl.CERT_REQUIRED
        for arquivo in (autoridade.certificado, *confiar):
            contexto.load_verify_locations(arquivo)
    return contexto


class Controle(http.server.BaseHTTPRequestHandler):
    """POST: a command a line, `ordem LINE`, `ajuste NAME=VALUE`, `limpar`. GET /pedidos, /documentos,
    /eventos, /inutilizados, /ajustes: JSON."""

    def log_message(self, *_):
        pass

    def do_POST(self):
        linhas = self.rfile.read(int(self.headers.get("Content-Length", "0"))).decode().splitlines()
        try:
            for linha in filter(str.strip, linhas):
                self.server.servidor_comandar(linha)
            self.responder(200, b"ok\n")
        except ValueError as erro:
            self.responder(400, f"{erro}\n".encode())

    def do_GET(self):
        tabela = self.path.strip("/")
        if tabela == "ajustes":
            return self.responder(200, json.dumps(self.server.servidor.servicos.ajustes).encode())
        if tabela not in ("pedidos", "documentos", "eventos", "inutilizados"):
            return self.responder(404, b"")
        linhas = [{k: v for k, v in dict(l).items() if not isinstance(v, bytes)}
                  for l in self.server.servidor.livros.linhas(f"SELECT * FROM {tabela} ORDER BY rowid")]
        self.responder(200, json.dumps(linhas).encode())

    def responder(self, codigo, corpo):
        self.send_response(codigo)
        self.send_header("Content-Length", str(len(corpo)))
        self.end_headers()
        self.wfile.write(corpo)


class ServidorControle(http.server.ThreadingHTTPServer):
    daemon_threads = True

    def __init__(self, porta, servidor):
        super().__init__(("127.0.0.1", porta), Controle)
        self.servidor = servidor

    def servidor_comandar(self, linha):
        comando, _, resto = linha.strip().partition(" ")
        ajustes = self.servidor.servicos.ajustes
        nome, _, valor = resto.partition("=")
        if comando == "ordem":
            self.servidor.ordens.juntar(resto)
        elif comando == "limpar":
            self.servidor.ordens.limpar()
        elif comando == "ajuste" and nome in ajustes:
            ajustes[nome] = valor
            if self.servidor.fora():
                self.servidor.cortar_linha()
        else:
            raise ValueError(f"{linha}: no such command")


def em_fundo(servidor):
    threading.Thread(target=servidor.serve_forever, kwargs={"poll_interval": 0.05}, daemon=True).start()
    return servidor
