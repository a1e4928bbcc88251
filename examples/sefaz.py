#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""A tax authority of ours on the same machine, for demonstrations and tests: no network at all.

    sefaz.py DIRECTORY                                 shows what it has on record
    sefaz.py DIRECTORY NUMBER:ANSWER[,ANSWER...] ...   sets what it shall answer

It takes the messages of the web services of the NF-e 3.10 (enviNFe, consReciNFe, consSitNFe,
envEvento, inutNFe) and gives theirs back. Its record, sefaz.json in DIRECTORY, makes duplicates,
cancellations and voided numbers real. Every request about a document takes the next answer set for
its number:

    sem-conexao        nothing was sent
    pedido-perdido     no answer came, and the request never arrived
    resposta-perdida   no answer came, but the request was carried out
    processando        the document is taken into a queue (103): its receipt is to be asked for
    a status           as the authority gives it: 778, 999, ...; 110 and 301 to 303 deny the
                       document, 150 authorizes it late
"""
import datetime
import json
import os
import pathlib
import re
import sys
import xml.etree.ElementTree as ET
from xml.sax.saxutils import escape

sys.dont_write_bytecode = True  # its modules stand among the sources
from sefaz_regras import (AUTORIZADAS, DENEGADAS, MOTIVOS, NS, campo, digest, regra_quebrada,
                          serie_e_numero)


class SemConexao(Exception):
    """Nothing was sent."""


class SemResposta(Exception):
    """No answer came in time: the request may have been carried out, or not."""


class Sefaz:
    """The authority over the record in `diretorio`; without one the record lasts as long as the
    object."""

    def __init__(self, diretorio=None):
        self.arquivo = pathlib.Path(diretorio) / "sefaz.json" if diretorio else None
        self.dados = {"protocolo": 0, "documentos": {}, "inutilizados": [], "respostas": {}}
        if self.arquivo and self.arquivo.exists():
            self.dados = json.loads(self.arquivo.read_text(encoding="ascii"))

    def salvar(self):
        if not self.arquivo:
            return
        novo = self.arquivo.with_suffix(".novo")
        novo.write_text(json.dumps(self.dados, indent=1, sort_keys=True) + "\n", encoding="ascii")
        os.replace(novo, self.arquivo)

    def mandar(self, numero, respostas):
        for resposta in respostas:
            if resposta not in ("sem-conexao", "pedido-perdido", "resposta-perdida", "processando",
                                "normal") and not re.fullmatch("[0-9]{3}", resposta):
                raise ValueError(f"{resposta}: no such answer")
        self.dados["respostas"][str(int(numero))] = list(respostas)
        self.salvar()

    def atender(self, pedido):
        """Carries out one message and gives the answer, both as bytes of XML. Raises SemConexao or
        SemResposta where no answer is to come."""
        texto = pedido.decode("utf-8")
        raiz = ET.fromstring(texto)
        nome = raiz.tag.rpartition("}")[2]
        servico, numero = self.servicos()[nome], self.numero_do_pedido(nome, raiz)
        fila = self.dados["respostas"].get(str(numero), [])
        mandada = fila.pop(0) if fila else "normal"
        if mandada not in ("sem-conexao", "pedido-perdido"):
            resposta = servico(raiz, texto, mandada)
        self.salvar()
        if mandada == "sem-conexao":
            raise SemConexao
        if mandada in ("pedido-perdido", "resposta-perdida"):
            raise SemResposta
        return ('<?xml version="1.0" encoding="UTF-8"?>' + resposta).encode("utf-8")

    def servicos(self):
        return {"enviNFe": self.autorizar, "consReciNFe": self.consultar_recibo,
                "consSitNFe": self.consultar, "envEvento": self.registrar_evento,
                "inutNFe": self.inutilizar}

    @staticmethod
    def numero_do_pedido(nome, raiz):
        if nome == "inutNFe":
            return int(campo(raiz, "infInut/nNFIni"))
        inf = raiz.find(".//{*}infNFe")
        chave = inf.get("Id")[3:] if inf is not None else \
            next((no.text for no in raiz.iter() if no.tag.endswith("}chNFe")), "")
        return serie_e_numero(chave)[1] if re.fullmatch("[0-9]{44}", chave) else 0

    def protocolo(self, uf):
        self.dados["protocolo"] += 1
        return f"1{int(uf):02}{datetime.date.today():%y}{self.dados['protocolo']:010}"

    @staticmethod
    def agora():
        return datetime.datetime.now().astimezone().replace(microsecond=0).isoformat()

    # ---- the services

    def autorizar(self, raiz, texto, mandada):
        inf = raiz.find("{*}NFe/{*}infNFe")
        nfe = texto[texto.index("<NFe "):texto.rindex("</NFe>") + len("</NFe>")]
        chave = inf.get("Id")[3:]
        agora = self.agora()
        codigo = self.julgar(inf, nfe, chave) or "100"
        if codigo == "100" and mandada.isdigit():
            codigo = mandada
        registro = {"situacao": codigo, "recebido": agora, "tpAmb": campo(inf, "ide/tpAmb")}
        if codigo in AUTORIZADAS + DENEGADAS:
            registro |= {"protocolo": self.protocolo(chave[:2]), "digest": digest(nfe),
                         "emitido": campo(inf, "ide/dhEmi")}
            self.dados["documentos"][chave] = registro
        uf = campo(inf, "ide/cUF")
        if mandada == "processando":
            # What became of it is reported when its receipt is asked for, not at the first time.
            self.dados.setdefault("recibos", {})[chave] = [registro, 1]
            return self.lote("retEnviNFe", "103", uf, f"<infRec><nRec>{chave[29:]}</nRec>"
                             "<tMed>1</tMed></infRec>")
        return self.lote("retEnviNFe", "104", uf, self.prot(chave, registro))

    def julgar(self, inf, nfe, chave):
        """The status that refuses a document, if there is one."""
        return self.duplicidade(chave) or regra_quebrada(nfe, inf)

    def duplicidade(self, chave):
        registro = self.dados["documentos"].get(chave)
        if registro and registro["situacao"] in DENEGADAS:
            return "205"
        if registro:
            return "218" if "evento" in registro else "204"
        # The same issuer, model, series and number.
        if any(outra[6:34] == chave[6:34] for outra in self.dados["documentos"]):
            return "539"
        serie, numero = serie_e_numero(chave)
        return "206" if self.inutilizado(chave[6:20], serie, numero) else None

    def inutilizado(self, cnpj, serie, numero):
        return any(f[0] == cnpj and f[1] == serie and f[2] <= numero <= f[3]
                   for f in self.dados["inutilizados"])

    def consultar_recibo(self, raiz, _texto, _mandada):
        recibo = campo(raiz, "nRec")
        for chave, espera in self.dados.get("recibos", {}).items():
            if chave[29:] != recibo:
                continue
            espera[1] -= 1
            if espera[1] >= 0:
                return self.lote("retConsReciNFe", "105", chave[:2], "")
            return self.lote("retConsReciNFe", "104", chave[:2], self.prot(chave, espera[0]))
        return self.lote("retConsReciNFe", "106", "35", "")

    def consultar(self, raiz, _texto, _mandada):
        chave = campo(raiz, "chNFe")
        registro = self.dados["documentos"].get(chave)
        if not registro:
            return self.ret("retConsSitNFe", "3.10", "217", campo(raiz, "tpAmb"),
                            f"<chNFe>{escape(chave)}</chNFe>")
        cancelada = "evento" in registro
        corpo = f"<chNFe>{chave}</chNFe>" + self.prot(chave, registro)
        if cancelada:
            corpo += (f'<procEventoNFe versao="1.00">{self.ret_evento(chave, registro, "135")}'
                      "</procEventoNFe>")
        return self.ret("retConsSitNFe", "3.10", "101" if cancelada else registro["situacao"],
                        registro["tpAmb"], corpo)

    def registrar_evento(self, raiz, _texto, _mandada):
        inf = raiz.find("{*}evento/{*}infEvento")
        chave = campo(inf, "chNFe")
        registro = self.dados["documentos"].get(chave, {})
        if registro.get("situacao") not in AUTORIZADAS:
            codigo = "494"
        elif "evento" in registro:
            codigo = "573"
        elif campo(inf, "detEvento/nProt") != registro["protocolo"]:
            codigo = "222"
        elif not 15 <= len(campo(inf, "detEvento/xJust")) <= 255:
            codigo = "215"
        else:
            codigo = "135"
            registro["evento"] = [self.protocolo(chave[:2]), self.agora()]
        return self.ret("retEnvEvento", "1.00", "128", campo(inf, "tpAmb"),
                        self.ret_evento(chave, registro, codigo))

    def inutilizar(self, raiz, _texto, _mandada):
        inf = raiz.find("{*}infInut")
        cnpj, serie = campo(inf, "CNPJ"), int(campo(inf, "serie"))
        inicio, fim = int(campo(inf, "nNFIni")), int(campo(inf, "nNFFin"))
        numeros = range(inicio, fim + 1)
        usados = {serie_e_numero(chave)[1] for chave in self.dados["documentos"]
                  if chave[6:20] == cnpj and serie_e_numero(chave)[0] == serie}
        protocolo = ""
        if not 15 <= len(campo(inf, "xJust")) <= 255 or not 0 < len(numeros) <= 1000:
            codigo = "215"
        elif any(numero in usados for numero in numeros):
            codigo = "241"
        elif any(self.inutilizado(cnpj, serie, numero) for numero in numeros):
            codigo = "256"
        else:
            codigo, protocolo = "102", self.protocolo(campo(inf, "cUF"))
            self.dados["inutilizados"].append([cnpj, serie, inicio, fim, protocolo])
        return (f'<retInutNFe xmlns="{NS}" versao="3.10"><infInut>'
                f"<tpAmb>{campo(inf, 'tpAmb')}</tpAmb><verAplic>DEMO</verAplic>"
                f"<cStat>{codigo}</cStat><xMotivo>{MOTIVOS[codigo]}</xMotivo>"
                f"<cUF>{campo(inf, 'cUF')}</cUF><CNPJ>{cnpj}</CNPJ><serie>{serie}</serie>"
                f"<nNFIni>{inicio}</nNFIni><nNFFin>{fim}</nNFFin>"
                f"<dhRecbto>{self.agora()}</dhRecbto>"
                + (f"<nProt>{protocolo}</nProt>" if protocolo else "") + "</infInut></retInutNFe>")

    # ---- pieces of the answers

    @staticmethod
    def ret(nome, versao, codigo, ambiente, corpo):
        return (f'<{nome} xmlns="{NS}" versao="{versao}"><tpAmb>{ambiente}</tpAmb>'
                f"<verAplic>DEMO</verAplic><cStat>{codigo}</cStat>"
                f"<xMotivo>{MOTIVOS.get(codigo, 'Rejeicao')}</xMotivo>{corpo}</{nome}>")

    def lote(self, nome, codigo, uf, corpo):
        return self.ret(nome, "3.10", codigo, "2",
                        f"<cUF>{uf}</cUF><dhRecbto>{self.agora()}</dhRecbto>{corpo}")

    @staticmethod
    def ret_evento(chave, registro, codigo):
        """An event that was registered carries its protocol, a refused one none."""
        protocolo, data = registro["evento"] if codigo == "135" else ("", Sefaz.agora())
        return ('<retEvento versao="1.00"><infEvento>'
                f"<tpAmb>{registro.get('tpAmb', '2')}</tpAmb><verAplic>DEMO</verAplic>"
                f"<cOrgao>{chave[:2]}</cOrgao><cStat>{codigo}</cStat>"
                f"<xMotivo>{MOTIVOS[codigo]}</xMotivo><chNFe>{chave}</chNFe>"
                "<tpEvento>110111</tpEvento><nSeqEvento>1</nSeqEvento>"
                f"<dhRegEvento>{data}</dhRegEvento>"
                + (f"<nProt>{protocolo}</nProt>" if protocolo else "") + "</infEvento></retEvento>")

    @staticmethod
    def prot(chave, registro):
        protocolo = registro.get("protocolo")
        decidido = (f"<nProt>{protocolo}</nProt><digVal>{registro['digest']}</digVal>"
                    if protocolo else "")
        codigo = registro["situacao"]
        return (f'<protNFe versao="3.10"><infProt><tpAmb>{registro["tpAmb"]}</tpAmb>'
                f"<verAplic>DEMO</verAplic><chNFe>{chave}</chNFe>"
                f"<dhRecbto>{registro['recebido']}</dhRecbto>{decidido}<cStat>{codigo}</cStat>"
                f"<xMotivo>{MOTIVOS.get(codigo, 'Rejeicao')}</xMotivo></infProt></protNFe>")

    def relacao(self, serie, inicio, fim):
        """What became of each number of a range, as (number, key, status, protocol); a number that
        is not on record is left out. No service of the authority: a sending component answers this
        from its own records."""
        linhas = []
        for chave, registro in self.dados["documentos"].items():
            if serie_e_numero(chave)[0] == serie and inicio <= serie_e_numero(chave)[1] <= fim:
                situacao = "101" if "evento" in registro else registro["situacao"]
                linhas.append((serie_e_numero(chave)[1], chave, situacao, registro["protocolo"]))
        for _cnpj, qual, de, ate, protocolo in self.dados["inutilizados"]:
            if qual == serie:
                linhas += [(n, "", "102", protocolo)
                           for n in range(max(de, inicio), min(ate, fim) + 1)]
        return sorted(linhas)


def main():
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    sefaz = Sefaz(sys.argv[1])
    for ordem in sys.argv[2:]:
        numero, _, respostas = ordem.partition(":")
        try:
            sefaz.mandar(numero, respostas.split(","))
        except ValueError as erro:
            sys.exit(f"{ordem}: {erro}")
    if len(sys.argv) == 2:
        series = {serie_e_numero(chave)[0] for chave in sefaz.dados["documentos"]}
        series |= {faixa[1] for faixa in sefaz.dados["inutilizados"]}
        for serie in sorted(series):
            for numero, chave, situacao, protocolo in sefaz.relacao(serie, 1, 999999999):
                print(f"{serie:3} {numero:9} {situacao} {protocolo} {chave or '-':44} "
                      f"{MOTIVOS.get(situacao, '')}")


if __name__ == "__main__":
    main()
