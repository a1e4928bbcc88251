# SPDX-License-Identifier: MIT
"""What a message must be, whatever the books say: schema, signature, key, QR code, clock. A rule that
is broken gives its status. Source: Manual de Orientação do Contribuinte 7.0, Anexo I; for the QR code
Nota Técnica 2025.001."""
import base64
import datetime
import hashlib
import re
import ssl
import subprocess
import sys
import tempfile
import threading
from pathlib import Path

import xmlsec
from lxml import etree

import certificados

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "examples"))
from sefaz_regras import AUTORIZADAS, DENEGADAS, MOTIVOS, NS, campo, digito  # noqa: E402,F401

DS = "{http://www.w3.org/2000/09/xmldsig#}"
NFE = f"{{{NS}}}"
SOAP = "http://www.w3.org/2003/05/soap-envelope"
WSDL = "http://www.portalfiscal.inf.br/nfe/wsdl/"
BRASILIA = datetime.timezone(datetime.timedelta(hours=-3))
METODOS = {"NFeAutorizacao4": "nfeAutorizacaoLote", "NFeRetAutorizacao4": "nfeRetAutorizacaoLote",
           "NFeConsultaProtocolo4": "nfeConsultaNF", "NFeStatusServico4": "nfeStatusServicoNF",
           "NFeInutilizacao4": "nfeInutilizacaoNF", "NFeRecepcaoEvento4": "nfeRecepcaoEvento"}
ALGORITMOS = ["http://www.w3.org/TR/2001/REC-xml-c14n-20010315", DS[1:-1] + "rsa-sha1",
              DS[1:-1] + "enveloped-signature", "http://www.w3.org/TR/2001/REC-xml-c14n-20010315",
              DS[1:-1] + "sha1"]

MOTIVOS |= {
    "107": "Servico em Operacao", "108": "Servico Paralisado Momentaneamente (curto prazo)",
    "109": "Servico Paralisado sem Previsao", "155": "Cancelamento homologado fora de prazo",
    "203": "Emissor nao habilitado para emissao de NF-e", "220": "Prazo de Cancelamento Superior ao Previsto na Legislacao",
    "224": "A faixa inicial e maior que a faixa final", "225": "Falha no Schema XML do lote de NFe",
    "236": "Chave de Acesso com digito verificador invalido", "242": "Elemento do cabecalho inexistente",
    "252": "Ambiente informado diverge do Ambiente de recebimento",
    "282": "Certificado Transmissor sem CNPJ ou CPF", "291": "Certificado Assinatura Data Validade",
    "292": "Certificado de Assinatura sem CNPJ ou CPF", "293": "Certificado Assinatura - erro Cadeia de Certificacao",
    "394": "Nota Fiscal sem a informacao do QR-Code", "397": "Parametro do QR-Code divergente da Nota Fiscal",
    "420": "Cancelamento para NF-e ja cancelada", "462": "Codigo Identificador do CSC no QR-Code nao cadastrado",
    "464": "Codigo de Hash no QR-Code difere do calculado", "501": "Prazo de cancelamento superior ao previsto",
    "556": "Justificativa de entrada em contingencia nao deve ser informada para tipo de emissao normal",
    "557": "Justificativa de entrada em contingencia deve ser informada",
    "563": "Ja existe pedido de Inutilizacao com a mesma faixa de inutilizacao",
    "574": "O autor do evento diverge do emissor da NF-e",
    "656": "Consumo Indevido", "703": "Data-Hora de Emissao posterior ao horario de recebimento",
    "704": "NFC-e com Data-Hora de emissao atrasada", "712": "NF-e com forma de emissao nao aceita pela UF",
    "770": "NFC-e autorizada ha mais tempo do que o permitido para cancelamento",
    "897": "Codigo numerico em formato invalido",
    # Cancellation by substitution, about the document that replaces the cancelled one.
    "910": "NF-e substituta inexistente", "911": "NF-e substituta denegada ou cancelada",
    "912": "NF-e substituta com data de emissao maior que 2 horas em relacao a NF-e a ser cancelada",
    "913": "Valor total da NF-e substituta difere do valor da NF-e a ser cancelada",
    "914": "Valor total do ICMS da NF-e substituta difere", "915": "Identificacao do destinatario da NF-e substituta difere",
    "917": "Item da NF-e substituta difere do item da NF-e a ser cancelada",
    "918": "Tipo de emissao da NF-e substituta invalido", "919": "Tipo de emissao da NF-e a ser cancelada invalido",
}
FEITAS = AUTORIZADAS + DENEGADAS + tuple("101 102 103 104 105 107 108 109 128 135 151 155".split())


def motivo(codigo, sufixo=""):
    frase = MOTIVOS.get(codigo, "Codigo ordenado pelo ensaio")
    return ("" if codigo in FEITAS else "Rejeicao: ") + frase + sufixo


class Juiz:
    """Schemas (of `pasta`, when there is one), signatures, certificates of `confiar` (PEM files)."""

    def __init__(self, pasta=None, confiar=()):
        self.pasta, self.confiar = pasta and Path(pasta), [str(c) for c in confiar]
        self.esquemas, self.vistos, self.trinco = {}, {}, threading.Lock()

    def esquema(self, nome, no):
        """The first complaint of the schema NAME about an element, or None."""
        if not self.pasta:
            return None
        with self.trinco:  # a validator keeps its complaints: one at a time
            if nome not in self.esquemas:
                self.esquemas[nome] = etree.XMLSchema(file=str(self.pasta / nome))
            esquema = self.esquemas[nome]
            return None if esquema.validate(no) else str(esquema.error_log[0])

    def certificado(self, der):
        """(status, CNPJ) of one that signs."""
        resumo = hashlib.sha256(der).digest()
        if resumo not in self.vistos:
            self.vistos[resumo] = self.olhar(der)
        return self.vistos[resumo]

    def olhar(self, der):
        try:
            pem = ssl.DER_cert_to_PEM_cert(der)
            with tempfile.NamedTemporaryFile("w", suffix=".pem") as arquivo:
                arquivo.write(pem)
                arquivo.flush()
                confiar = [p for c in self.confiar for p in ("-trusted", c)]
                feito = subprocess.run(["openssl", "verify", *confiar, arquivo.name], timeout=60,
                                       capture_output=True, text=True, check=False)
        except (ValueError, OSError):
            return "293", ""
        if feito.returncode != 0:
            return ("291" if "has expired" in feito.stderr else "293"), ""
        cnpj = certificados.cnpj_de(der)
        return (None if cnpj else "292"), cnpj

    def assinatura(self, no, nome, cnpj):
        """The status that refuses the signature of `no` over its child `nome`, or None."""
        inf, assinado = no.find(NFE + nome), no.find(DS + "Signature")
        if inf is None or assinado is None:
            return "298"
        referencias = [r.get("URI") for r in assinado.iter(DS + "Reference")]
        algoritmos = [e.get("Algorithm") for e in assinado.iter() if e.get("Algorithm")]
        if referencias != ["#" + inf.get("Id", "")] or algoritmos != ALGORITMOS:
            return "298"
        try:
            der = base64.b64decode(assinado.findtext(f".//{DS}X509Certificate") or "")
            contexto = xmlsec.SignatureContext()
            contexto.key = xmlsec.Key.from_memory(der, xmlsec.constants.KeyDataFormatCertDer)
            contexto.register_id(inf, "Id")
            contexto.verify(assinado)
        except (xmlsec.Error, ValueError):
            return "297"
        codigo, dono = self.certificado(der)
        return codigo or (None if dono[:8] == cnpj[:8] else "213")

    def documento(self, nfe, ajustes, agora):
        """The status that refuses an NFe by itself, or None."""
        inf = nfe.find(NFE + "infNFe")
        return (conferir_chave(inf) or self.assinatura(nfe, "infNFe", campo(inf, "emit/CNPJ"))
                or conferir_emissao(inf, ajustes, agora) or self.qrcode(nfe, inf, ajustes))

    def qrcode(self, nfe, inf, ajustes):
        qr = campo(nfe, "infNFeSupl/qrCode")
        if not qr:
            return "394"
        _, _, dito = qr.partition("?p=")
        partes, chave = dito.split("|"), inf.get("Id")[3:]
        ambiente = campo(inf, "ide/tpAmb")
        offline = [chave, partes[1] if len(partes) > 1 else "", ambiente,
                   campo(inf, "ide/dhEmi")[8:10], campo(inf, "total/ICMSTot/vNF")]
        certos = offline if chave[34] == "9" else offline[:3]
        if partes[:len(certos)] != certos:
            return "397"
        resto = partes[len(certos):]
        if certos[1] == "3":
            return self.qrcode_3(nfe, inf, dito, resto) if chave[34] == "9" else ("397" if resto else None)
        if certos[1] != "2" or len(resto) != (3 if chave[34] == "9" else 2):
            return "397"
        digest = nfe.findtext(f".//{DS}DigestValue") or ""
        if chave[34] == "9" and resto[0].lower() != digest.encode().hex():
            return "397"
        return conferir_csc(dito, resto[-2], resto[-1], ajustes)

    @staticmethod
    def qrcode_3(nfe, inf, dito, resto):
        """Offline, version 3: who the consumer is, and the issuer's own signature over the rest."""
        tipos = {"": "", "CNPJ": "1", "CPF": "2", "idEstrangeiro": "3"}
        dest = inf.find(NFE + "dest")
        quem = "" if dest is None else dest[0].tag.rpartition("}")[2]
        identidade = dest[0].text if quem in ("CNPJ", "CPF") else ""
        if len(resto) != 3 or resto[:2] != [tipos.get(quem, ""), identidade]:
            return "397"
        try:
            contexto = xmlsec.SignatureContext()
            der = base64.b64decode(nfe.findtext(f".//{DS}X509Certificate"))
            contexto.key = xmlsec.Key.from_memory(der, xmlsec.constants.KeyDataFormatCertDer)
            contexto.verify_binary(dito.rpartition("|")[0].encode(), xmlsec.constants.TransformRsaSha1,
                                   base64.b64decode(resto[2]))
        except (xmlsec.Error, ValueError):
            return "464"
        return None


def conferir_csc(dito, numero, resumo, ajustes):
    """The hash of version 2, where the CSC's number is known: `csc` = "1=TEXT,2=TEXT"."""
    conhecidos = dict(par.partition("=")[::2] for par in ajustes["csc"].split(",") if par)
    if not conhecidos:
        return None
    if numero not in conhecidos:
        return "462"
    certo = hashlib.sha1((dito.rpartition("|")[0] + conhecidos[numero]).encode()).hexdigest().upper()
    return None if certo == resumo else "464"


def conferir_chave(inf):
    chave = inf.get("Id", "")[3:]
    ide = {no.tag.rpartition("}")[2]: no.text or "" for no in inf.find(NFE + "ide")}
    partes = (ide["cUF"] + ide["dhEmi"][2:4] + ide["dhEmi"][5:7] + campo(inf, "emit/CNPJ") + ide["mod"]
              + ide["serie"].zfill(3) + ide["nNF"].zfill(9) + ide["tpEmis"] + ide["cNF"])
    if len(chave) != 44 or partes != chave[:43]:
        return "502"
    if digito(chave[:43]) != chave[43] or ide["cDV"] != chave[43]:
        return "253"
    return "897" if ide["cNF"] == ide["nNF"].zfill(8)[-8:] or len(set(ide["cNF"])) == 1 else None


def conferir_emissao(inf, ajustes, agora):
    """Environment, kind of issue and the time of an online document against the clock."""
    offline, justificada = campo(inf, "ide/tpEmis") == "9", campo(inf, "ide/xJust") != ""
    if campo(inf, "ide/tpAmb") != ajustes["ambiente"]:
        return "252"
    if offline != justificada:
        return "557" if offline else "556"
    if offline and ajustes["offline"] == "nao":
        return "712"
    atraso = (agora - datetime.datetime.fromisoformat(campo(inf, "ide/dhEmi"))).total_seconds()
    if atraso < -int(ajustes["adiantado"]):
        return "703"
    tarde = ajustes["offline_tarde"] == "704" and atraso > int(ajustes["prazo_offline"])
    return "704" if (tarde if offline else atraso > int(ajustes["prazo_online"])) else None


def cortar(texto, nome):
    """The bytes of the first element NAME of a message, as they came."""
    achado = re.search(rb"<%s[ >/].*</%s\s*>" % (nome, nome), texto, re.S)
    return achado[0] if achado else b""
