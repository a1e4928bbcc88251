# SPDX-License-Identifier: MIT
"""Small messages of layout 4.00 as a sender makes them: an NFC-e of one item, signed, and requests
about it; and what carries them. Nothing here checks anything."""
import base64
import datetime
import hashlib
import http.client
import ssl

import xmlsec
from lxml import etree

from certificados import CNPJ
from regras import ALGORITMOS, BRASILIA, DS, METODOS, NS, SOAP, WSDL, digito

PRODUTO = "NOTA FISCAL EMITIDA EM AMBIENTE DE HOMOLOGACAO - SEM VALOR FISCAL"
MOLDE = ("<Signature xmlns='{d}'><SignedInfo><CanonicalizationMethod Algorithm='{0}'/><SignatureMethod Algorithm='{1}'/>"
         "<Reference URI='#{id}'><Transforms><Transform Algorithm='{2}'/><Transform Algorithm='{3}'/></Transforms>"
         "<DigestMethod Algorithm='{4}'/><DigestValue/></Reference></SignedInfo><SignatureValue/>"
         "<KeyInfo><X509Data><X509Certificate/></X509Data></KeyInfo></Signature>")


def agora(segundos=0):
    return (datetime.datetime.now(BRASILIA) + datetime.timedelta(seconds=segundos)).isoformat(timespec="seconds")


class Emissor:
    """Signs with a holder's PEM and key."""

    def __init__(self, titular, cnpj=CNPJ):
        self.cnpj, (pem, chave) = cnpj, titular[:2]
        self.chave = xmlsec.Key.from_file(str(chave), xmlsec.constants.KeyDataFormatPem)
        self.chave.load_cert_from_file(str(pem), xmlsec.constants.KeyDataFormatPem)

    def assinar(self, xml, nome):
        raiz = etree.fromstring(xml)
        inf = raiz.find(f"{{{NS}}}{nome}")
        raiz.append(etree.fromstring(MOLDE.format(*ALGORITMOS, d=DS[1:-1], id=inf.get("Id"))))
        contexto = xmlsec.SignatureContext()
        contexto.key = self.chave
        contexto.register_id(inf, "Id")
        contexto.sign(raiz[-1])
        for no in raiz[-1].iter():
            if no.text:
                no.text = no.text.replace("\n", "")
        return etree.tostring(raiz).decode()

    def nota(self, numero, tpEmis=1, dhEmi=None, total="10.00", cpf="", serie=1, cNF=None, csc=None,
             trocar=lambda xml: xml):
        """(key, signed NFe). `csc` = (number, text) makes a QR code of version 2."""
        dhEmi, cNF = dhEmi or agora(), cNF or f"{(numero * 7919 + 13572468) % 10**8:08}"
        chave = f"43{dhEmi[2:4]}{dhEmi[5:7]}{self.cnpj}65{serie:03}{numero:09}{tpEmis}{cNF}"
        chave += digito(chave)
        xml = trocar(corpo(chave, dhEmi, total, cpf, self.cnpj))
        assinada = self.assinar(xml, "infNFe")
        suplemento = (f"<infNFeSupl><qrCode>{self.qr(chave, dhEmi, total, cpf, assinada, csc)}</qrCode><urlChave>"
                      "www.sefaz.rs.gov.br/nfce/consulta</urlChave></infNFeSupl>")
        return chave, assinada.replace("</infNFe>", "</infNFe>" + suplemento, 1)

    def qr(self, chave, dhEmi, total, cpf, assinada, csc):
        offline = chave[34] == "9"
        dito = f"{chave}|{2 if csc else 3}|2" + (f"|{dhEmi[8:10]}|{total}" if offline else "")
        if csc:
            digest = assinada.partition("<DigestValue>")[2].partition("<")[0]
            dito += (f"|{digest.encode().hex()}" if offline else "") + f"|{csc[0]}"
            dito += "|" + hashlib.sha1((dito + csc[1]).encode()).hexdigest().upper()
        elif offline:
            dito += f"|{2 if cpf else ''}|{cpf}"
            contexto = xmlsec.SignatureContext()
            contexto.key = self.chave
            dito += "|" + base64.b64encode(contexto.sign_binary(
                dito.encode(), xmlsec.constants.TransformRsaSha1)).decode()
        return "https://www.sefaz.rs.gov.br/NFCE/NFCE-COM.aspx?p=" + dito

    def cancelamento(self, chave, protocolo, substituta="", seq=1, just="Venda desfeita no balcao"):
        tipo = "110112" if substituta else "110111"
        det = (f"<descEvento>Cancelamento por substituicao</descEvento><cOrgaoAutor>43</cOrgaoAutor><tpAutor>1</tpAutor>"
               f"<verAplic>1</verAplic><nProt>{protocolo}</nProt><xJust>{just}</xJust><chNFeRef>{substituta}</chNFeRef>"
               if substituta else f"<descEvento>Cancelamento</descEvento><nProt>{protocolo}</nProt><xJust>{just}</xJust>")
        evento = self.assinar(
            f'<evento xmlns="{NS}" versao="1.00"><infEvento Id="ID{tipo}{chave}{seq:02}"><cOrgao>43</cOrgao><tpAmb>2'
            f"</tpAmb><CNPJ>{self.cnpj}</CNPJ><chNFe>{chave}</chNFe><dhEvento>{agora()}</dhEvento><tpEvento>{tipo}"
            f"</tpEvento><nSeqEvento>{seq}</nSeqEvento><verEvento>1.00</verEvento><detEvento versao=\"1.00\">{det}"
            "</detEvento></infEvento></evento>", "infEvento")
        return f'<envEvento xmlns="{NS}" versao="1.00"><idLote>1</idLote>{evento}</envEvento>'

    def inutilizacao(self, inicio, fim, serie=1):
        ano = agora()[2:4]
        return self.assinar(
            f'<inutNFe xmlns="{NS}" versao="4.00"><infInut Id="ID43{ano}{self.cnpj}65{serie:03}{inicio:09}{fim:09}"><tpAmb>2'
            f"</tpAmb><xServ>INUTILIZAR</xServ><cUF>43</cUF><ano>{ano}</ano><CNPJ>{self.cnpj}</CNPJ><mod>65</mod><serie>"
            f"{serie}</serie><nNFIni>{inicio}</nNFIni><nNFFin>{fim}</nNFFin><xJust>Numeros pulados pelo caixa</xJust>"
            "</infInut></inutNFe>", "infInut")


def corpo(chave, dhEmi, total, cpf, cnpj):
    dest = f"<dest><CPF>{cpf}</CPF><indIEDest>9</indIEDest></dest>" if cpf else ""
    ctg = f"<dhCont>{dhEmi}</dhCont><xJust>Linha fora do ar na loja</xJust>" if chave[34] == "9" else ""
    zeros = "".join(f"<{n}>0.00</{n}>" for n in "vBC vICMS vICMSDeson vFCP vBCST vST vFCPST vFCPSTRet".split())
    outros = "".join(f"<{n}>0.00</{n}>" for n in "vFrete vSeg vDesc vII vIPI vIPIDevol vPIS vCOFINS vOutro".split())
    return (f'<NFe xmlns="{NS}"><infNFe versao="4.00" Id="NFe{chave}"><ide><cUF>43</cUF><cNF>{chave[35:43]}</cNF><natOp>Venda'
            f"</natOp><mod>65</mod><serie>{int(chave[22:25])}</serie><nNF>{int(chave[25:34])}</nNF><dhEmi>{dhEmi}</dhEmi>"
            f"<tpNF>1</tpNF><idDest>1</idDest><cMunFG>4314902</cMunFG><tpImp>4</tpImp><tpEmis>{chave[34]}</tpEmis><cDV>"
            f"{chave[43]}</cDV><tpAmb>2</tpAmb><finNFe>1</finNFe><indFinal>1</indFinal><indPres>1</indPres><procEmi>0</procEmi>"
            f"<verProc>1</verProc>{ctg}</ide><emit><CNPJ>{cnpj}</CNPJ><xNome>Loja de Ensaio</xNome><enderEmit><xLgr>Rua</xLgr>"
            "<nro>1</nro><xBairro>Centro</xBairro><cMun>4314902</cMun><xMun>Porto Alegre</xMun><UF>RS</UF><CEP>90010000</CEP>"
            f"</enderEmit><IE>0963233556</IE><CRT>1</CRT></emit>{dest}<det nItem=\"1\"><prod><cProd>1</cProd><cEAN>SEM GTIN"
            f"</cEAN><xProd>{PRODUTO}</xProd><NCM>09012100</NCM><CFOP>5102</CFOP><uCom>UN</uCom><qCom>1.0000</qCom><vUnCom>"
            f"{total}</vUnCom><vProd>{total}</vProd><cEANTrib>SEM GTIN</cEANTrib><uTrib>UN</uTrib><qTrib>1.0000</qTrib>"
            f"<vUnTrib>{total}</vUnTrib><indTot>1</indTot></prod><imposto><ICMS><ICMSSN102><orig>0</orig><CSOSN>102</CSOSN>"
            "</ICMSSN102></ICMS><PIS><PISNT><CST>07</CST></PISNT></PIS><COFINS><COFINSNT><CST>07</CST></COFINSNT></COFINS>"
            f"</imposto></det><total><ICMSTot>{zeros}<vProd>{total}</vProd>{outros}<vNF>{total}</vNF></ICMSTot></total><transp>"
            f"<modFrete>9</modFrete></transp><pag><detPag><tPag>01</tPag><vPag>{total}</vPag></detPag></pag></infNFe></NFe>")


def lote(nfe, sincrono=1):
    return f'<enviNFe xmlns="{NS}" versao="4.00"><idLote>1</idLote><indSinc>{sincrono}</indSinc>{nfe}</enviNFe>'


def consulta(chave):
    return f'<consSitNFe xmlns="{NS}" versao="4.00"><tpAmb>2</tpAmb><xServ>CONSULTAR</xServ><chNFe>{chave}</chNFe></consSitNFe>'


def recibo(numero):
    return f'<consReciNFe xmlns="{NS}" versao="4.00"><tpAmb>2</tpAmb><nRec>{numero}</nRec></consReciNFe>'


def estado():
    return f'<consStatServ xmlns="{NS}" versao="4.00"><tpAmb>2</tpAmb><cUF>43</cUF><xServ>STATUS</xServ></consStatServ>'


class Cliente:
    """A sender's connection, kept open between requests."""

    def __init__(self, porta, ac, titular=None, segundos=10):
        contexto = ssl.create_default_context(cafile=str(ac))
        if titular:
            contexto.load_cert_chain(*map(str, titular[:2]))
        self.linha = http.client.HTTPSConnection("127.0.0.1", porta, context=contexto, timeout=segundos)

    def bruto(self, servico, mensagem, acao=None, metodo="POST"):
        """(HTTP status, bytes of the answer)."""
        acao = acao or f"{WSDL}{servico}/{METODOS[servico]}"
        envelope = (f'<soap:Envelope xmlns:soap="{SOAP}"><soap:Body><nfeDadosMsg xmlns="{WSDL}{servico}">{mensagem}'
                    "</nfeDadosMsg></soap:Body></soap:Envelope>")
        try:
            self.linha.request(metodo, "/ws/" + servico, envelope.encode(), {
                "Content-Type": f'application/soap+xml; charset=utf-8; action="{acao}"'})
            resposta = self.linha.getresponse()
            return resposta.status, resposta.read()
        except BaseException:
            self.linha.close()
            raise

    def pedir(self, servico, mensagem):
        """The element within nfeResultMsg."""
        _, corpo_ = self.bruto(servico, mensagem)
        return etree.fromstring(etree.tostring(etree.fromstring(corpo_).find(".//{*}nfeResultMsg")[0]))
