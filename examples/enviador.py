#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Plays the sending component, on the same machine and without a network, before an authority of
ours (sefaz.py).

    enviador.py [OPTIONS] DOCUMENT RETURN

DOCUMENT is what the library wrote: an NFC-e, a cancellation event, an inutilization, a
consultation, or a contingency file (.ctg, .ctgCanc), which is unscrambled first. An NFC-e is closed
up where an EAN is missing, signed, checked against the schema, sent, and its return written in the
words that the library reads. When no answer comes the authority is asked for the document before it
is sent again.

    --sefaz DIRECTORY    where the authority keeps its record and the issuer its certificate; else
                         the directory autoridade beside RETURN
    --forma componente   the return in the sending component's own words (default), or
    --forma autoridade   the authority's own record: protNFe, retEvento, retInutNFe, retConsSitNFe
    --esquema DIRECTORY  the schema of layout 3.10 (nfe_v3.10.xsd): a document that does not follow
                         it is not sent
    --csc FILE --id-csc 000001 --endereco ADDRESS
                         with the taxpayer's token in FILE the content of the QR code goes into the
                         document, after the signed element (infNFeSupl)
    --link ADDRESS       the return brings this address as the content of the QR code (LinkNFCe)
    --uf 35              the state's code, for an inutilization
    --guardar FILE       keeps the message as it was sent

Ends with 0 when the document is authorized or the request carried out; 1 when it is refused, the
return saying so; 2 for a wrong call; 3 when no answer came, and no return is written: the document
may be at the authority; 4 when it was not sent, the return saying so with situation 0.
"""
import argparse
import base64
import hashlib
import os
import pathlib
import re
import subprocess
import sys
import xml.etree.ElementTree as ET
from dataclasses import dataclass
from xml.sax.saxutils import escape

sys.dont_write_bytecode = True  # its modules stand among the sources
import assinatura
import sefaz
from sefaz_regras import AUTORIZADAS, NS, campo, digest as digest_do_documento

CHAVE_DOS_ARQUIVOS = b"rkv804mtq217"
TENTATIVAS = 3
FEITO = ("100", "101", "102", "135", "136", "150", "155")
NAO_ENVIADO = "0"


@dataclass
class Resultado:
    """What is reported about one document. `registro` is the authority's own element, as text."""
    situacao: str
    descricao: str = ""
    chave: str = ""
    protocolo: str = ""
    data: str = ""
    digest: str = ""
    registro: str = ""
    autorizado: str = ""  # the complete document, with the authority's record
    linhas: tuple = ()    # of a consultation by number or date


def ler_documento(caminho):
    """The text of a document: ISO-8859-1 without a declaration, scrambled if its name says so."""
    dados = pathlib.Path(caminho).read_bytes()
    if ".ctg" in os.path.basename(caminho):
        chave = CHAVE_DOS_ARQUIVOS
        dados = bytes((b - chave[i % len(chave)] - 84) % 256 for i, b in enumerate(dados))
    return dados.rstrip(b"\0").decode("latin-1")


def elemento(texto, nome):
    """The text of the first element of that name, tags included; empty when there is none."""
    achado = re.search(rf"<{nome}[ >].*?</{nome}>", texto, re.DOTALL)
    return achado[0] if achado else ""


class Enviador:
    def __init__(self, opcoes):
        self.opcoes = opcoes
        volta = pathlib.Path(opcoes.retorno)
        self.pasta = pathlib.Path(opcoes.sefaz or volta.parent / "autoridade")
        self.pasta.mkdir(parents=True, exist_ok=True)
        self.sefaz = sefaz.Sefaz(self.pasta)
        self.assina = assinatura.disponivel()
        if not self.assina:
            print("not signed: openssl and xmlsec1 are not installed")

    def assinar(self, texto, nome, cnpj):
        if not self.assina:
            return texto
        return assinatura.assinar(texto, nome, *assinatura.certificado(self.pasta, cnpj))

    def guardar(self, mensagem):
        if self.opcoes.guardar:
            pathlib.Path(self.opcoes.guardar).write_text(mensagem, encoding="utf-8")

    def pedir(self, mensagem):
        resposta = self.sefaz.atender(mensagem.encode("utf-8")).decode("utf-8")
        return resposta, ET.fromstring(resposta)

    # ---- NFC-e

    def enviar_nfce(self, texto, raiz):
        inf = raiz.find("{*}infNFe")
        cnpj, chave = campo(inf, "emit/CNPJ"), inf.get("Id")[3:]
        # A missing EAN stands as a blank, and the layout wants nothing there.
        nfe = self.assinar(texto.replace("> <", "><"), "infNFe", cnpj)
        digest = assinatura.valor(nfe, "DigestValue") or digest_do_documento(nfe)
        print(f"NFC-e {int(chave[25:34])}: key {chave}")
        print(f"digest {digest}" + (" (signed)" if self.assina else ""))
        nfe = self.completar(nfe, inf, digest)
        self.guardar(nfe)
        falta = self.fora_do_esquema(nfe)
        if falta:
            return Resultado("225", falta, chave)
        return self.transmitir(nfe, chave, digest)

    def completar(self, nfe, inf, digest):
        """With the content of the QR code after the signed element: known only now, since it holds
        the digest."""
        if not self.opcoes.csc:
            return nfe
        ide = lambda nome: campo(inf, "ide/" + nome)
        hexa = lambda valor: valor.encode("latin-1").hex()
        dest = "".join(campo(inf, "dest/" + nome) for nome in ("CPF", "CNPJ", "idEstrangeiro"))
        parametros = (f"chNFe={inf.get('Id')[3:]}&nVersao=100&tpAmb={ide('tpAmb')}"
                      + (f"&cDest={dest}" if dest else "")
                      + f"&dhEmi={hexa(ide('dhEmi'))}&vNF={campo(inf, 'total/ICMSTot/vNF')}"
                      f"&vICMS={campo(inf, 'total/ICMSTot/vICMS')}&digVal={hexa(digest)}"
                      f"&cIdToken={self.opcoes.id_csc}")
        token = pathlib.Path(self.opcoes.csc).read_text(encoding="latin-1").strip()
        # Three states take the hash over the parameters alone.
        inicio = "" if campo(inf, "emit/enderEmit/UF") in ("SP", "RS", "MT") else "?"
        prova = hashlib.sha1((inicio + parametros + token).encode("utf-8")).hexdigest().upper()
        url = escape(f"{self.opcoes.endereco}?{parametros}&cHashQRCode={prova}")
        supl = f"<infNFeSupl><qrCode>{url}</qrCode></infNFeSupl>"
        return nfe.replace("</infNFe>", "</infNFe>" + supl)

    def fora_do_esquema(self, nfe):
        if not self.opcoes.esquema:
            return ""
        feito = subprocess.run(["xmllint", "--nonet", "--noout", "--schema",
                                os.path.join(self.opcoes.esquema, "nfe_v3.10.xsd"), "-"],
                               input=nfe.encode("utf-8"), capture_output=True, timeout=60,
                               check=False)
        if feito.returncode == 0:
            return ""
        return feito.stderr.decode("utf-8", "replace").splitlines()[0]

    def transmitir(self, nfe, chave, digest):
        lote = (f'<enviNFe xmlns="{NS}" versao="3.10"><idLote>{chave[25:34]}</idLote>'
                f"<indSinc>1</indSinc>{nfe}</enviNFe>")
        talvez = False  # whether an earlier try may have arrived
        for _ in range(TENTATIVAS):
            try:
                texto, raiz = self.pedir(lote)
            except sefaz.SemConexao:
                if talvez:
                    raise sefaz.SemResposta from None
                raise
            except sefaz.SemResposta:
                print("no answer: asking for the document before it is sent again")
                talvez = True
                achado = self.procurar(nfe, chave)
                if achado.situacao != "217":
                    return achado
                continue
            if campo(raiz, "cStat") == "103":
                texto, raiz = self.esperar(campo(raiz, "infRec/nRec"), texto, raiz)
            resultado = self.resultado_da_nota(nfe, texto, raiz)
            if resultado.situacao == "204":
                return self.conhecido(self.procurar(nfe, chave), digest) or resultado
            return resultado
        raise sefaz.SemResposta

    def esperar(self, recibo, texto, raiz):
        """The document is in the authority's queue: its receipt is asked for until it is out."""
        for _ in range(TENTATIVAS):
            texto, raiz = self.pedir(f'<consReciNFe xmlns="{NS}" versao="3.10"><tpAmb>2</tpAmb>'
                                     f"<nRec>{recibo}</nRec></consReciNFe>")
            if campo(raiz, "cStat") != "105":
                return texto, raiz
        raise sefaz.SemResposta

    @staticmethod
    def consulta(chave):
        return (f'<consSitNFe xmlns="{NS}" versao="3.10"><tpAmb>2</tpAmb>'
                f"<xServ>CONSULTAR</xServ><chNFe>{chave}</chNFe></consSitNFe>")

    def procurar(self, nfe, chave):
        """What the authority has under the key; situation 217 when nothing."""
        try:
            texto, raiz = self.pedir(self.consulta(chave))
        except sefaz.SemConexao:
            raise sefaz.SemResposta from None
        return self.resultado_da_nota(nfe, texto, raiz)

    @staticmethod
    def conhecido(achado, digest):
        """A duplicate that has the very digest of ours is our document, sent before. One issued
        again under number and code of the first has the same key, and another digest."""
        return achado if achado.digest == digest else None

    @staticmethod
    def resultado_da_nota(nfe, texto, raiz):
        registro = elemento(texto, "protNFe")
        geral = campo(raiz, "cStat")
        prot = raiz.find(".//{*}infProt")
        if prot is None:
            return Resultado(geral, campo(raiz, "xMotivo"), registro=texto)
        # Of a consultation the status of the whole counts: the document may be cancelled.
        situacao = campo(prot, "cStat") if geral == "104" else geral
        completo = (f'<nfeProc xmlns="{NS}" versao="3.10">{nfe}{registro}</nfeProc>'
                    if nfe and situacao in AUTORIZADAS else "")
        return Resultado(situacao, campo(prot, "xMotivo"), campo(prot, "chNFe"),
                         campo(prot, "nProt"), campo(prot, "dhRecbto"), campo(prot, "digVal"),
                         registro.replace("<protNFe ", f'<protNFe xmlns="{NS}" ', 1), completo)

    # ---- the requests

    def enviar_evento(self, _texto, raiz):
        evento = lambda caminho: campo(raiz, "Evento/" + caminho)
        chave, protocolo = evento("ChaAcesso"), evento("EveInf/Evedet/EvenProt")
        if not protocolo:
            # Asked for offline, before there was one.
            protocolo = self.procurar("", chave).protocolo
        identificacao = f"ID110111{chave}01"
        corpo = (f'<evento xmlns="{NS}" versao="1.00"><infEvento Id="{identificacao}">'
                 f"<cOrgao>{chave[:2]}</cOrgao><tpAmb>{ambiente(evento('tpAmb'))}</tpAmb>"
                 f"<CNPJ>{evento('NtfCnpjEmissor')}</CNPJ><chNFe>{chave}</chNFe>"
                 f"<dhEvento>{evento('EveInf/EveDh')}{evento('EveInf/EveFusoHorario')}</dhEvento>"
                 "<tpEvento>110111</tpEvento><nSeqEvento>1</nSeqEvento>"
                 '<verEvento>1.00</verEvento><detEvento versao="1.00">'
                 f"<descEvento>Cancelamento</descEvento><nProt>{protocolo}</nProt>"
                 f"<xJust>{escape(evento('EveInf/Evedet/EvexJust'))}</xJust></detEvento>"
                 "</infEvento></evento>")
        corpo = self.assinar(corpo, "infEvento", evento("NtfCnpjEmissor"))
        self.guardar(corpo)
        texto, volta = self.pedir(f'<envEvento xmlns="{NS}" versao="1.00"><idLote>1</idLote>'
                                  f"{corpo}</envEvento>")
        if campo(volta, "retEvento/infEvento/cStat") == "573":
            # An earlier try arrived, and only its answer was lost.
            texto, volta = self.pedir(self.consulta(chave))
        inf = volta.find(".//{*}infEvento")
        registro = elemento(texto, "retEvento")
        return Resultado(campo(inf, "cStat"), campo(inf, "xMotivo"), chave, campo(inf, "nProt"),
                         campo(inf, "dhRegEvento"),
                         registro=registro.replace("<retEvento ", f'<retEvento xmlns="{NS}" ', 1))

    def enviar_inutilizacao(self, _texto, raiz):
        inicio, fim = int(campo(raiz, "NumeroInicial")), int(campo(raiz, "NumeroFinal"))
        serie, cnpj = int(campo(raiz, "Serie")), campo(raiz, "CnpjEmissor")
        ano, uf = sefaz.Sefaz.agora()[2:4], self.opcoes.uf
        identificacao = f"ID{uf}{ano}{cnpj}65{serie:03}{inicio:09}{fim:09}"
        corpo = (f'<inutNFe xmlns="{NS}" versao="3.10"><infInut Id="{identificacao}">'
                 f"<tpAmb>{ambiente(campo(raiz, 'tpAmb'))}</tpAmb><xServ>INUTILIZAR</xServ>"
                 f"<cUF>{uf}</cUF><ano>{ano}</ano><CNPJ>{cnpj}</CNPJ><mod>65</mod>"
                 f"<serie>{serie}</serie><nNFIni>{inicio}</nNFIni><nNFFin>{fim}</nNFFin>"
                 f"<xJust>{escape(campo(raiz, 'Justificativa'))}</xJust></infInut></inutNFe>")
        corpo = self.assinar(corpo, "infInut", cnpj)
        self.guardar(corpo)
        texto, volta = self.pedir(corpo)
        inf = volta.find(".//{*}infInut")
        return Resultado(campo(inf, "cStat"), campo(inf, "xMotivo"), "", campo(inf, "nProt"),
                         campo(inf, "dhRecbto"), registro=elemento(texto, "retInutNFe"))

    def consultar(self, _texto, raiz):
        chave = campo(raiz, "ChaveAcesso")
        if chave:
            return self.procurar("", chave)
        inicio, fim = int(campo(raiz, "NumeroInicial")), int(campo(raiz, "NumeroFinal"))
        if campo(raiz, "DataEmissaoInicial"):
            inicio, fim = 1, 999999999  # by date: all that is on record here is of today
        # No service of the authority lists documents: a sending component has its own records, and
        # ours looks into those of the authority.
        linhas = tuple(self.sefaz.relacao(int(campo(raiz, "Serie") or "1"), inicio, fim))
        return Resultado("100" if linhas else "217", f"{len(linhas)} documentos", linhas=linhas)


def ambiente(configurado):
    """Requests carry the setting as it stands; of it 3 is homologation, too."""
    return "1" if configurado == "1" else "2"


def na_forma_do_componente(resultado, link):
    partes = [("SitCodigo", resultado.situacao), ("SitDescricao", resultado.descricao),
              ("DocChaAcesso", resultado.chave), ("DocProtocolo", resultado.protocolo),
              ("DocDhAut", resultado.data), ("DocDigestValue", resultado.digest),
              ("LinkNFCe", link if resultado.protocolo else "")]
    texto = "".join(f"<{nome}>{escape(valor)}</{nome}>" for nome, valor in partes if valor)
    if resultado.autorizado:
        documento = resultado.autorizado.encode("utf-8")
        texto += f"<DocXMLBase64>{base64.b64encode(documento).decode()}</DocXMLBase64>"
    for numero, chave, situacao, protocolo in resultado.linhas:
        texto += (f"<Documento><DocNumero>{numero}</DocNumero><SitCodigo>{situacao}</SitCodigo>"
                  f"<DocChaAcesso>{chave}</DocChaAcesso><DocProtocolo>{protocolo}</DocProtocolo>"
                  "</Documento>")
    return f"<Retorno>{texto}</Retorno>"


def escrever_retorno(caminho, resultado, opcoes):
    """Whole or not at all: the till may look for it at any moment."""
    if opcoes.forma == "autoridade" and resultado.registro:
        conteudo = resultado.registro.encode("utf-8")
    else:
        conteudo = na_forma_do_componente(resultado, opcoes.link).encode("latin-1", "replace")
    novo = pathlib.Path(caminho + ".novo")
    novo.write_bytes(conteudo)
    os.replace(novo, caminho)


def enviar(opcoes):
    texto = ler_documento(opcoes.documento)
    try:
        raiz = ET.fromstring(texto)
    except ET.ParseError as erro:
        return Resultado("225", str(erro))
    enviador = Enviador(opcoes)
    tipos = {f"{{{NS}}}NFe": enviador.enviar_nfce, "EnvioEvento": enviador.enviar_evento,
             "Inutilizacao": enviador.enviar_inutilizacao, "Consulta": enviador.consultar}
    if raiz.tag not in tipos:
        return Resultado("225", f"{raiz.tag} is no document to send")
    return tipos[raiz.tag](texto, raiz)


def ler_opcoes():
    leitor = argparse.ArgumentParser(description="Plays the sending component.")
    leitor.add_argument("documento")
    leitor.add_argument("retorno")
    leitor.add_argument("--sefaz")
    leitor.add_argument("--forma", choices=("componente", "autoridade"), default="componente")
    leitor.add_argument("--esquema")
    leitor.add_argument("--csc")
    leitor.add_argument("--id-csc", default="000001")
    leitor.add_argument("--endereco", default="")
    leitor.add_argument("--link", default="")
    leitor.add_argument("--guardar")
    leitor.add_argument("--uf", default="35")
    return leitor.parse_args()


def main():
    opcoes = ler_opcoes()
    pathlib.Path(opcoes.retorno).unlink(missing_ok=True)
    try:
        resultado = enviar(opcoes)
    except OSError as erro:
        print(erro)
        sys.exit(2)
    except sefaz.SemResposta:
        print("no answer")
        sys.exit(3)
    except (sefaz.SemConexao, assinatura.Falha) as erro:
        motivo = f"nao enviado: {erro or 'sem conexao'}"
        print(motivo)
        escrever_retorno(opcoes.retorno, Resultado(NAO_ENVIADO, motivo), opcoes)
        sys.exit(4)
    escrever_retorno(opcoes.retorno, resultado, opcoes)
    feito = resultado.situacao in FEITO
    print(f"{'done' if feito else 'refused'}: {resultado.situacao} {resultado.descricao}"
          + (f", protocol {resultado.protocolo}" if resultado.protocolo else ""))
    sys.exit(0 if feito else 1)


if __name__ == "__main__":
    main()
