# SPDX-License-Identifier: MIT
"""What the cases of teste.py share: certificates, a stand-in for each case, a sender that talks to it."""
import atexit
import os
import shutil
import tempfile
import unittest
from pathlib import Path

import autoridade
import certificados
import nota
from regras import Juiz

ESQUEMAS = os.environ.get("ZEL_ESQUEMAS")
AUTORIZA, CONSULTA, EVENTO = "NFeAutorizacao4", "NFeConsultaProtocolo4", "NFeRecepcaoEvento4"
INUTILIZA, RECIBO, ESTADO = "NFeInutilizacao4", "NFeRetAutorizacao4", "NFeStatusServico4"
JUIZ = Juiz(ESQUEMAS)
PASTA = Path(tempfile.mkdtemp())
atexit.register(shutil.rmtree, PASTA, ignore_errors=True)
CERTIFICADOS = certificados.Autoridade(PASTA)
TITULAR = CERTIFICADOS.titular()
EMISSOR = nota.Emissor(TITULAR)


class Caso(unittest.TestCase):
    """A stand-in of its own for each case, over the certificates that all share."""
    opcoes = ()

    def setUp(self):
        for arquivo in PASTA.glob("livros.db*"):
            arquivo.unlink()
        self.servidor, self.controle = autoridade.abrir(autoridade.opcoes_de([str(PASTA), *self.opcoes]))
        self.addCleanup(self.fechar)
        self.livros, self.cliente = self.servidor.livros, self.ligar()

    def fechar(self):
        for servidor in (self.servidor, self.controle):
            servidor.shutdown()
            servidor.server_close()

    def ligar(self, titular=None, segundos=10):
        cliente = nota.Cliente(self.servidor.server_address[1], PASTA / "ac.pem", titular or TITULAR, segundos)
        self.addCleanup(cliente.linha.close)
        return cliente

    def comandar(self, *linhas):
        for linha in linhas:
            self.controle.servidor_comandar(linha)

    def pedir(self, servico, mensagem, julgar=True):
        resposta = self.cliente.pedir(servico, mensagem)
        esquema = self.servidor.servicos.tabela[servico][1] + "_v4.00.xsd"
        if servico == EVENTO:
            esquema = f"retEnvEventoCanc{'Subst' if '110112' in mensagem else 'NFe'}_v1.00.xsd"
        self.assertIsNone(JUIZ.esquema(esquema, resposta) if julgar else None)
        return resposta

    def codigos(self, servico, mensagem, julgar=True):
        """The status of the answer; with one within, "104 100"."""
        return " ".join(no.text for no in self.pedir(servico, mensagem, julgar).iterfind(".//{*}cStat"))

    def autorizar(self, *args, **kwargs):
        chave, nfe = EMISSOR.nota(*args, **kwargs)
        return chave, self.codigos(AUTORIZA, nota.lote(nfe))

    def protocolo(self, chave):
        return self.livros.linha("SELECT protocolo FROM documentos WHERE chave = ?", chave)["protocolo"]

    def cancelar(self, chave, substituta="", **kwargs):
        return self.codigos(EVENTO, EMISSOR.cancelamento(chave, self.protocolo(chave), substituta, **kwargs))
