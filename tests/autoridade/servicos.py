# SPDX-License-Identifier: MIT
"""The six services of the authority over its books. Each takes its message and gives the answer,
the status of the lot and that of the document within."""
import dataclasses
import datetime
import hashlib
import time
from xml.sax.saxutils import escape

from lxml import etree

from regras import AUTORIZADAS, BRASILIA, DENEGADAS, DS, METODOS, NFE, NS, campo, cortar, digito, motivo

# What the lot is answered with, and no document within.
DO_LOTE = ("108", "109", "214", "215", "225", "252", "280", "281", "282", "283", "284", "285", "286",
           "656", "999")
MOLDES = {
    "": "{cabeca}{antes}{estado}<cUF>@UF@</cUF>{depois}",
    "retInutNFe": "<infInut>{cabeca}{estado}<cUF>@UF@</cUF>{depois}</infInut>",
    "retEnvEvento": "{antes}{cabeca}<cOrgao>@UF@</cOrgao>{estado}{depois}"}
AJUSTES = {
    "ambiente": "2", "uf": "43", "estado": "107", "linha": "boa",  # linha=fora: nothing is taken, what is open is cut
    "prazo_online": "600", "adiantado": "300", "prazo_offline": "86400", "offline": "sim",
    "offline_tarde": "150", "prazo_cancelamento": "1800", "cancelamento_tarde": "501",
    "prazo_substituicao": "604800", "entre_substitutas": "7200", "branco_539": "sim", "csc": "",
    "consumo": "0",    # how often the same is answered within the hour before 656; 0 is always
    "relogio": "0",    # seconds that the authority's clock is ahead
}


@dataclasses.dataclass
class Resposta:
    xml: str
    cStat: str
    interno: str = ""


class Servicos:
    def __init__(self, livros, juiz, ajustes):
        self.livros, self.juiz, self.ajustes = livros, juiz, ajustes
        self.tabela = {  # root of the message, root of the answer, its schema, who does it
            "NFeAutorizacao4": ("enviNFe", "retEnviNFe", "enviNFe_v4.00.xsd", self.autorizar),
            "NFeRetAutorizacao4": ("consReciNFe", "retConsReciNFe", "consReciNFe_v4.00.xsd", self.resultado),
            "NFeConsultaProtocolo4": ("consSitNFe", "retConsSitNFe", "consSitNFe_v4.00.xsd", self.consultar),
            "NFeStatusServico4": ("consStatServ", "retConsStatServ", "consStatServ_v4.00.xsd", self.estado),
            "NFeInutilizacao4": ("inutNFe", "retInutNFe", "inutNFe_v4.00.xsd", self.inutilizar),
            "NFeRecepcaoEvento4": ("envEvento", "retEnvEvento", "envEventoCancNFe_v1.00.xsd", self.evento)}
        assert list(self.tabela) == list(METODOS)

    def relogio(self):
        return time.time() + float(self.ajustes["relogio"])

    def agora(self):
        return datetime.datetime.fromtimestamp(self.relogio(), BRASILIA)

    def momento(self):
        return self.agora().isoformat(timespec="seconds")

    @staticmethod
    def alvo(raiz):
        """What a message is about: key, Id or receipt; and the numbers that it names."""
        inf = raiz.find(".//{*}infNFe")
        ini = raiz.findtext(".//{*}nNFIni")
        if ini:
            return raiz.find(".//{*}infInut").get("Id", ""), int(ini)
        alvo = inf.get("Id", "")[3:] if inf is not None else raiz.findtext(".//{*}chNFe") or raiz.findtext(".//{*}nRec") or ""
        return alvo, int(alvo[25:34]) if len(alvo) == 44 and alvo.isdigit() else 0

    def atender(self, servico, raiz, texto, ordenado=None, recibo=None):
        """`raiz`: the message read alone; `texto`: its bytes as they came; `ordenado`: a status that
        it shall be answered with; `recibo`: how often a 105 comes before the result."""
        resposta = self.julgar(servico, raiz, texto, ordenado, recibo)
        uf = campo(raiz, "cUF") or raiz.findtext(".//{*}cOrgao") or self.alvo(raiz)[0][:2]
        if not uf.isdigit() or servico == "NFeRetAutorizacao4":
            uf = self.ajustes["uf"]
        return dataclasses.replace(resposta, xml=resposta.xml.replace("@UF@", uf))

    def julgar(self, servico, raiz, texto, ordenado, recibo):
        nome, _, esquema, fazer = self.tabela[servico]
        if raiz.tag != NFE + nome:
            return self.recusa(servico, raiz, "215")
        if raiz.findtext(".//{*}tpEvento") == "110112":
            esquema = "envEventoCancSubst_v1.00.xsd"
        queixa = self.juiz.esquema(esquema, raiz)
        if queixa:
            return self.recusa(servico, raiz, "225" if nome == "enviNFe" else "215", ": " + queixa)
        codigo = ordenado if ordenado in DO_LOTE else self.do_servico(servico, raiz)
        if codigo:
            return self.recusa(servico, raiz, codigo)
        return fazer(raiz, texto, ordenado, *([recibo] if nome == "enviNFe" else []))

    def do_servico(self, servico, raiz):
        if self.ajustes["estado"] != "107" and servico != "NFeStatusServico4":
            return self.ajustes["estado"]
        vezes, desde = int(self.ajustes["consumo"]), self.relogio() - 3600
        if vezes and self.livros.linha("SELECT count(*) n FROM pedidos WHERE servico = ? AND alvo = ? AND momento > ?",
                                       servico, self.alvo(raiz)[0], desde)["n"] >= vezes:
            return "656"
        return "252" if (raiz.findtext(".//{*}tpAmb") or "") != self.ajustes["ambiente"] else None

    def recusa(self, servico, raiz, codigo, sufixo=""):
        """The answer of a service that says no more than a status."""
        nome = self.tabela[servico][1]
        dito = motivo(codigo, "".join(c if " " <= c <= "~" else " " for c in sufixo))[:250].strip()
        if nome == "retEnvEvento":
            return Resposta(self.ret(nome, codigo, dito, f"<idLote>{raiz.findtext('{*}idLote') or 1}</idLote>"),
                            codigo)
        depois = f"<dhRecbto>{self.momento()}</dhRecbto>"
        if nome == "retConsSitNFe":
            depois += f"<chNFe>{raiz.findtext('{*}chNFe') or '0' * 44}</chNFe>"
        antes = f"<nRec>{raiz.findtext('{*}nRec') or '0' * 15}</nRec>" if nome == "retConsReciNFe" else ""
        return Resposta(self.ret(nome, codigo, dito, antes, depois), codigo)

    def ret(self, nome, codigo, dito, antes="", depois=""):
        cabeca = f"<tpAmb>{self.ajustes['ambiente']}</tpAmb><verAplic>ENSAIO</verAplic>"
        estado = f"<cStat>{codigo}</cStat><xMotivo>{escape(dito)}</xMotivo>"
        corpo = MOLDES.get(nome, MOLDES[""]).format(cabeca=cabeca, estado=estado, antes=antes, depois=depois)
        return f'<{nome} xmlns="{NS}" versao="{"1.00" if nome == "retEnvEvento" else "4.00"}">{corpo}</{nome}>'

    def protocolo(self):
        return f"1{self.ajustes['uf']}{self.agora():%y}{self.livros.proximo('protocolo'):010}"

    # ---- authorization

    def autorizar(self, raiz, texto, ordenado, recibo):
        bruto = cortar(texto, b"NFe")
        nfe = etree.fromstring(bruto)
        inf = nfe.find(NFE + "infNFe")
        if inf is None or len(raiz.findall(NFE + "NFe")) != 1:
            return self.recusa("NFeAutorizacao4", raiz, "225")
        decidido = ordenado if ordenado in AUTORIZADAS + DENEGADAS else None
        codigo, sufixo = (None if decidido else ordenado), ""
        codigo = codigo or self.juiz.documento(nfe, self.ajustes, self.agora())
        with self.livros.mudanca():
            nRec = f"{self.ajustes['uf']}{self.livros.proximo('recibo'):013}"
            if not codigo:
                codigo, sufixo = self.duplicidade(inf.get("Id")[3:])
            codigo = codigo or decidido or self.no_prazo(inf)
            feito = codigo in AUTORIZADAS + DENEGADAS
            prot = self.prot(nfe, inf, codigo, sufixo, self.protocolo() if feito else "")
            if feito:
                self.registrar(nfe, inf, codigo, prot, nRec, hashlib.sha256(bruto).hexdigest())
            if recibo is not None or campo(raiz, "indSinc") == "0":
                self.livros.gravar("recibos", nRec=nRec, prot=prot, faltam=recibo or 0)
        cabeca = f"<dhRecbto>{self.momento()}</dhRecbto>"
        if recibo is not None or campo(raiz, "indSinc") == "0":
            cabeca += f"<infRec><nRec>{nRec}</nRec><tMed>1</tMed></infRec>"
            return Resposta(self.ret("retEnviNFe", "103", motivo("103"), "", cabeca), "103", codigo)
        return Resposta(self.ret("retEnviNFe", "104", motivo("104"), "", cabeca + prot), "104", codigo)

    def no_prazo(self, inf):
        """An offline document that is delivered late is authorized as such."""
        emitido = datetime.datetime.fromisoformat(campo(inf, "ide/dhEmi")).timestamp()
        tarde = self.relogio() - emitido > int(self.ajustes["prazo_offline"])
        return "150" if tarde and campo(inf, "ide/tpEmis") == "9" else "100"

    def duplicidade(self, chave):
        achado = self.livros.linha("SELECT * FROM documentos WHERE chave = ?", chave)
        if achado:
            cancelado = self.livros.linha("SELECT 1 FROM eventos WHERE chave = ?", chave)
            codigo = "205" if achado["cStat"] in DENEGADAS else "218" if cancelado else "204"
            return codigo, f" [nRec:{achado['nRec']}]"
        outro = self.livros.linha("SELECT * FROM documentos WHERE numeracao = ?", chave[6:34])
        if outro:
            branco = " " if self.ajustes["branco_539"] == "sim" else ""
            return "539", f" [chNFe:{branco}{outro['chave']}][nRec:{outro['nRec']}]"
        faixa = self.livros.linha("SELECT * FROM inutilizados WHERE cnpj = ? AND serie = ? AND ? BETWEEN inicio AND fim",
                                  chave[6:20], int(chave[22:25]), int(chave[25:34]))
        return ("206", f" [nProt:{faixa['protocolo']}]") if faixa else (None, "")

    def prot(self, nfe, inf, codigo, sufixo, protocolo):
        feito = f"<nProt>{protocolo}</nProt><digVal>{nfe.findtext(f'.//{DS}DigestValue')}</digVal>" if protocolo else ""
        return (f'<protNFe versao="4.00"><infProt><tpAmb>{campo(inf, "ide/tpAmb")}</tpAmb><verAplic>ENSAIO</verAplic>'
                f"<chNFe>{inf.get('Id')[3:]}</chNFe><dhRecbto>{self.momento()}</dhRecbto>{feito}<cStat>{codigo}</cStat>"
                f"<xMotivo>{motivo(codigo, sufixo)}</xMotivo></infProt></protNFe>")

    def registrar(self, nfe, inf, codigo, prot, nRec, sha256):
        chave, dest, prod = inf.get("Id")[3:], inf.find(NFE + "dest"), inf.find(f"{NFE}det/{NFE}prod")
        self.livros.gravar(
            "documentos", chave=chave, numeracao=chave[6:34], serie=int(chave[22:25]), numero=int(chave[25:34]),
            dhEmi=campo(inf, "ide/dhEmi"), vNF=campo(inf, "total/ICMSTot/vNF"), vICMS=campo(inf, "total/ICMSTot/vICMS"),
            consumidor="" if dest is None else dest[0].text or "", cStat=codigo, nRec=nRec, sha256=sha256, prot=prot,
            item="|".join(campo(prod, nome) for nome in ("cProd", "qCom", "vProd")),
            protocolo=prot.partition("<nProt>")[2].partition("<")[0], dhRecbto=self.momento(), recebido=self.relogio())

    def resultado(self, raiz, _texto, _ordenado):
        recibo = campo(raiz, "nRec")
        with self.livros.mudanca():
            linha = self.livros.linha("SELECT * FROM recibos WHERE nRec = ?", recibo)
            self.livros.linhas("UPDATE recibos SET faltam = faltam - 1 WHERE nRec = ?", recibo)
        codigo = "106" if not linha else "105" if linha["faltam"] > 0 else "104"
        prot = linha["prot"] if codigo == "104" else ""
        return Resposta(self.ret("retConsReciNFe", codigo, motivo(codigo), f"<nRec>{recibo}</nRec>",
                                 f"<dhRecbto>{self.momento()}</dhRecbto>{prot}"), codigo,
                        prot.partition("<cStat>")[2][:3])

    # ---- what is asked

    def consultar(self, raiz, _texto, ordenado):
        chave = campo(raiz, "chNFe")
        with self.livros.trinco:
            achado = self.livros.linha("SELECT * FROM documentos WHERE chave = ?", chave)
            eventos = self.livros.linhas("SELECT * FROM eventos WHERE chave = ?", chave)
            outro = self.livros.linha("SELECT chave FROM documentos WHERE substr(chave, 1, 35) = ?", chave[:35])
        codigo, sufixo, corpo = "217", "", ""
        if ordenado or digito(chave[:43]) != chave[43]:
            codigo = ordenado or "236"
        elif achado:
            codigo, corpo = "101" if eventos else achado["cStat"], achado["prot"]
            corpo += "".join(f'<procEventoNFe versao="1.00">{e["evento"].decode()}{e["ret"]}</procEventoNFe>' for e in eventos)
        elif outro:
            codigo, sufixo = "562", f" [chNFe:{outro['chave']}]"
        return Resposta(self.ret("retConsSitNFe", codigo, motivo(codigo, sufixo), "",
                                 f"<dhRecbto>{self.momento()}</dhRecbto><chNFe>{chave}</chNFe>{corpo}"), codigo)

    def estado(self, _raiz, _texto, ordenado):
        codigo = ordenado or self.ajustes["estado"]
        return Resposta(self.ret("retConsStatServ", codigo, motivo(codigo), "",
                                 f"<dhRecbto>{self.momento()}</dhRecbto><tMed>1</tMed>"), codigo)

    # ---- what is asked for

    def inutilizar(self, _raiz, texto, ordenado):
        no = etree.fromstring(cortar(texto, b"inutNFe"))
        inf = no.find(NFE + "infInut")
        cnpj, serie, ident = campo(inf, "CNPJ"), int(campo(inf, "serie")), inf.get("Id")
        inicio, fim = int(campo(inf, "nNFIni")), int(campo(inf, "nNFFin"))
        codigo, sufixo, protocolo = ordenado or self.juiz.assinatura(no, "infInut", cnpj), "", ""
        composto = (f"ID{campo(inf, 'cUF')}{campo(inf, 'ano')}{cnpj}{campo(inf, 'mod')}{serie:03}{inicio:09}{fim:09}")
        if not codigo and ident != composto:
            codigo = "215"
        with self.livros.mudanca():
            if not codigo:
                codigo, sufixo = self.faixa(ident, cnpj, serie, inicio, fim)
            if codigo == "102":
                protocolo = self.protocolo()
                self.livros.gravar("inutilizados", id=ident, cnpj=cnpj, serie=serie, inicio=inicio, fim=fim,
                                   protocolo=protocolo)
        dito = "".join(f"<{n}>{campo(inf, n)}</{n}>" for n in ("ano", "CNPJ", "mod", "serie", "nNFIni", "nNFFin"))
        dito += f"<dhRecbto>{self.momento()}</dhRecbto>" + (f"<nProt>{protocolo}</nProt>" if protocolo else "")
        return Resposta(self.ret("retInutNFe", codigo, motivo(codigo, sufixo), "", dito), codigo)

    def faixa(self, ident, cnpj, serie, inicio, fim):
        if inicio > fim:
            return "224", ""
        mesma = self.livros.linha("SELECT * FROM inutilizados WHERE id = ?", ident)
        if mesma:
            return "563", f" [nProt:{mesma['protocolo']}]"
        if self.livros.linha("SELECT 1 FROM inutilizados WHERE cnpj = ? AND serie = ? AND inicio <= ? AND fim >= ?",
                             cnpj, serie, fim, inicio):
            return "256", ""
        usado = self.livros.linha("SELECT 1 FROM documentos WHERE substr(numeracao, 1, 14) = ? AND serie = ? AND numero"
                                  " BETWEEN ? AND ?", cnpj, serie, inicio, fim)
        return ("241", "") if usado else ("102", "")

    def evento(self, raiz, texto, ordenado):
        bruto = cortar(texto, b"evento")
        no = raiz.find(NFE + "evento")  # the namespace may be declared around it
        inf = None if no is None else no.find(NFE + "infEvento")
        if inf is None or len(raiz.findall(NFE + "evento")) != 1:
            return self.recusa("NFeRecepcaoEvento4", raiz, "215")
        codigo = ordenado or self.juiz.assinatura(no, "infEvento", campo(inf, "CNPJ"))
        with self.livros.mudanca():
            codigo = codigo or self.cancelamento(inf)
            feito = codigo in ("135", "155")
            ret = self.ret_evento(inf, codigo, self.protocolo() if feito else "")
            if feito:
                self.livros.gravar("eventos", chave=campo(inf, "chNFe"), tipo=campo(inf, "tpEvento"),
                                   seq=int(campo(inf, "nSeqEvento")), cStat=codigo, evento=bruto, ret=ret,
                                   protocolo=ret.partition("<nProt>")[2].partition("<")[0])
        antes = f"<idLote>{campo(raiz, 'idLote')}</idLote>"
        return Resposta(self.ret("retEnvEvento", "128", motivo("128"), antes, ret), "128", codigo)

    def ret_evento(self, inf, codigo, protocolo):
        autor = f"<cOrgaoAutor>{campo(inf, 'cOrgao')}</cOrgaoAutor>" if campo(inf, "tpEvento") == "110112" else ""
        return (f'<retEvento versao="1.00"><infEvento><tpAmb>{campo(inf, "tpAmb")}</tpAmb><verAplic>ENSAIO</verAplic>'
                f"<cOrgao>{campo(inf, 'cOrgao')}</cOrgao><cStat>{codigo}</cStat><xMotivo>{motivo(codigo)}</xMotivo>"
                f"<chNFe>{campo(inf, 'chNFe')}</chNFe><tpEvento>{campo(inf, 'tpEvento')}</tpEvento><nSeqEvento>"
                f"{campo(inf, 'nSeqEvento')}</nSeqEvento>{autor}<dhRegEvento>{self.momento()}</dhRegEvento>"
                + (f"<nProt>{protocolo}</nProt>" if protocolo else "") + "</infEvento></retEvento>")

    def cancelamento(self, inf):
        """The status of a cancellation, plain or by substitution."""
        chave, tipo, seq = (campo(inf, n) for n in ("chNFe", "tpEvento", "nSeqEvento"))
        nota = self.livros.linha("SELECT * FROM documentos WHERE chave = ?", chave)
        eventos = self.livros.linhas("SELECT * FROM eventos WHERE chave = ?", chave)
        if inf.get("Id") != f"ID{tipo}{chave}{int(seq):02}":
            return "572"
        if campo(inf, "CNPJ") != chave[6:20]:
            return "574"
        if not nota or nota["cStat"] in DENEGADAS:
            return "494"
        if eventos:
            return "573" if (eventos[0]["tipo"], eventos[0]["seq"]) == (tipo, int(seq)) else "420"
        if campo(inf, "detEvento/nProt") != nota["protocolo"]:
            return "222"
        prazo = "prazo_substituicao" if tipo == "110112" else "prazo_cancelamento"
        if self.relogio() - nota["recebido"] > int(self.ajustes[prazo]):
            return "501" if tipo == "110112" else self.ajustes["cancelamento_tarde"]
        return (self.substituta(nota, campo(inf, "detEvento/chNFeRef")) if tipo == "110112" else None) or "135"

    def substituta(self, nota, chave):
        """What keeps a document from standing in for another one, or None."""
        outra = self.livros.linha("SELECT * FROM documentos WHERE chave = ?", chave)
        if not outra:
            return "910"
        if outra["cStat"] in DENEGADAS or self.livros.linha("SELECT 1 FROM eventos WHERE chave = ?", chave):
            return "911"
        emitidas = [datetime.datetime.fromisoformat(n["dhEmi"]).timestamp() for n in (nota, outra)]
        regras = (("919", nota["chave"][34] == "1"), ("918", chave[34] == "9"),
                  ("912", abs(emitidas[1] - emitidas[0]) <= int(self.ajustes["entre_substitutas"])),
                  ("913", nota["vNF"] == outra["vNF"]), ("914", nota["vICMS"] == outra["vICMS"]),
                  ("915", nota["consumidor"] == outra["consumidor"]), ("917", nota["item"] == outra["item"]))
        return next((codigo for codigo, certo in regras if not certo), None)
