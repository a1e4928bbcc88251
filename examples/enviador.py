#!/usr/bin/env python3
"""Plays the sending component on the same machine, for the demonstration: no network, no authority.

    enviador.py DOCUMENT RETURN

Reads the NFC-e that the library wrote, checks what an authority would refuse at once (well-formed,
key and check digit, header against key, items against totals) and writes a return that authorizes
it: protocol, date and time, digest of the document, the authorized document in base64. A
cancellation event is answered with a protocol of its own. Exits with 1 and the reason when the
document is refused.
"""
import base64
import datetime
import hashlib
import sys
import xml.etree.ElementTree as ET
from decimal import Decimal

NS = "http://www.portalfiscal.inf.br/nfe"


def texto(no, caminho, padrao=None):
    achado = no.find("/".join(f"{{{NS}}}{nome}" for nome in caminho.split("/")))
    if achado is None:
        if padrao is None:
            sys.exit(f"refused: no {caminho}")
        return padrao
    return achado.text or ""


def digito(chave43):
    soma = sum(int(c) * (2 + i % 8) for i, c in enumerate(reversed(chave43)))
    return "0" if soma % 11 < 2 else str(11 - soma % 11)


def exigir(condicao, motivo):
    if not condicao:
        sys.exit(f"refused: {motivo}")


def exigir_chave(chave):
    exigir(len(chave) == 44 and chave.isdigit(), "key is not 44 digits")
    exigir(digito(chave[:43]) == chave[43], "check digit of the key")


def verificar_chave(inf):
    chave = (inf.get("Id") or "")[3:]
    exigir_chave(chave)
    ide = lambda nome: texto(inf, "ide/" + nome)
    partes = (ide("cUF").zfill(2) + ide("dhEmi")[2:4] + ide("dhEmi")[5:7]
              + texto(inf, "emit/CNPJ").zfill(14) + ide("mod").zfill(2) + ide("serie").zfill(3)
              + ide("nNF").zfill(9) + ide("tpEmis") + ide("cNF").zfill(8) + ide("cDV"))
    exigir(partes == chave, f"header says {partes}, key {chave}")
    return chave


def verificar_totais(inf):
    itens = inf.findall(f"{{{NS}}}det")
    exigir([i.get("nItem") for i in itens] == [str(n + 1) for n in range(len(itens))],
           "items are not numbered from 1")
    soma = lambda nome: sum((Decimal(texto(i, "prod/" + nome, "0")) for i in itens), Decimal(0))
    total = lambda nome: Decimal(texto(inf, "total/ICMSTot/" + nome))
    for nome in ("vProd", "vDesc", "vOutro"):
        exigir(soma(nome) == total(nome), f"items add up to {soma(nome)} in {nome}")
    for nome in ("vICMS", "vPIS", "vCOFINS"):
        imposto = sum((Decimal(v.text) for i in itens for v in i.iter(f"{{{NS}}}{nome}")), Decimal(0))
        exigir(imposto == total(nome), f"items add up to {imposto} in {nome}")
    exigir(total("vProd") + total("vOutro") - total("vDesc") - total("vST") == total("vNF"), "vNF")
    pago = sum(Decimal(p.text) for p in inf.iter(f"{{{NS}}}vPag"))
    exigir(pago == total("vNF"), f"payments add up to {pago}")


def digest(documento):
    """SHA-1 over the canonical form of infNFe, as the signature of the document would hold it; the
    blank between two tags that stands for a missing EAN is closed up first."""
    abre = documento.index("<infNFe ")
    fecha = documento.index("</infNFe>") + len("</infNFe>")
    assinado = f'<infNFe xmlns="{NS}" ' + documento[abre + len("<infNFe "):fecha]
    assinado = assinado.replace("> <", "><")
    canonico = ET.canonicalize(assinado).encode("utf-8")
    return base64.b64encode(hashlib.sha1(canonico).digest()).decode("ascii")


def autorizar(documento, inf, agora):
    chave = verificar_chave(inf)
    verificar_totais(inf)
    protocolo = "1" + texto(inf, "ide/cUF") + agora[2:4] + "0000000001"
    valor = digest(documento)
    autorizado = (f'<nfeProc xmlns="{NS}" versao="3.10">{documento}<protNFe versao="3.10"><infProt>'
                  f"<chNFe>{chave}</chNFe><dhRecbto>{agora}</dhRecbto><nProt>{protocolo}</nProt>"
                  f"<digVal>{valor}</digVal><cStat>100</cStat></infProt></protNFe></nfeProc>")
    base64_ = base64.b64encode(autorizado.encode("latin-1")).decode("ascii")
    print(f"authorized: key {chave}, protocol {protocolo}, digest {valor}")
    return (f"<SitCodigo>100</SitCodigo><DocChaAcesso>{chave}</DocChaAcesso>"
            f"<DocProtocolo>{protocolo}</DocProtocolo><DocDhAut>{agora}</DocDhAut>"
            f"<DocDigestValue>{valor}</DocDigestValue><DocXMLBase64>{base64_}</DocXMLBase64>")


def cancelar(evento):
    chave = evento.findtext("Evento/ChaAcesso", "")
    exigir_chave(chave)
    exigir(evento.findtext("Evento/EveInf/Evedet/EvenProt"), "event without a protocol")
    protocolo = "1" + chave[:4] + "0000000002"
    print(f"cancelled: key {chave}, protocol {protocolo}")
    return f"<SitCodigo>135</SitCodigo><DocProtocolo>{protocolo}</DocProtocolo>"


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    with open(sys.argv[1], "rb") as arquivo:
        documento = arquivo.read().decode("latin-1")
    try:
        raiz = ET.fromstring(documento)
    except ET.ParseError as erro:
        sys.exit(f"refused: {erro}")
    if raiz.tag == "EnvioEvento":
        retorno = cancelar(raiz)
    else:
        inf = raiz.find(f"{{{NS}}}infNFe")
        exigir(inf is not None, "no infNFe")
        agora = datetime.datetime.now().astimezone().replace(microsecond=0).isoformat()
        retorno = autorizar(documento, inf, agora)
    with open(sys.argv[2], "wb") as arquivo:
        arquivo.write(f"<Retorno>{retorno}</Retorno>".encode("latin-1"))


if __name__ == "__main__":
    main()
