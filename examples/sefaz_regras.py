# SPDX-License-Identifier: MIT
"""What an authority of ours refuses, and the words of its statuses: a selection of the published
validation rules of the NF-e 3.10, each with its own status."""
import base64
import hashlib
import xml.etree.ElementTree as ET
from decimal import Decimal, InvalidOperation

import assinatura

NS = "http://www.portalfiscal.inf.br/nfe"

MOTIVOS = {
    "100": "Autorizado o uso da NF-e",
    "101": "Cancelamento de NF-e homologado",
    "102": "Inutilizacao de numero homologado",
    "103": "Lote recebido com sucesso",
    "104": "Lote processado",
    "105": "Lote em processamento",
    "106": "Lote nao localizado",
    "110": "Uso Denegado",
    "128": "Lote de Evento Processado",
    "135": "Evento registrado e vinculado a NF-e",
    "150": "Autorizado o uso da NF-e, autorizacao fora de prazo",
    "204": "Duplicidade de NF-e",
    "205": "NF-e esta denegada na base de dados da SEFAZ",
    "206": "NF-e ja esta inutilizada na Base de dados da SEFAZ",
    "213": "CNPJ-Base do Emitente difere do CNPJ-Base do Certificado Digital",
    "215": "Falha no schema XML",
    "217": "NF-e nao consta na base de dados da SEFAZ",
    "218": "NF-e ja esta cancelada na base de dados da SEFAZ",
    "222": "Protocolo de Autorizacao de Uso difere do cadastrado",
    "225": "Falha no Schema XML da NFe",
    "241": "Um numero da faixa ja foi utilizado",
    "253": "Digito Verificador da chave de acesso composta invalida",
    "256": "Uma NF-e da faixa ja esta inutilizada na Base de dados da SEFAZ",
    "297": "Assinatura difere do calculado",
    "298": "Assinatura difere do padrao do Sistema",
    "301": "Uso Denegado: Irregularidade fiscal do emitente",
    "302": "Uso Denegado: Irregularidade fiscal do destinatario",
    "303": "Uso Denegado: Destinatario nao habilitado a operar na UF",
    "494": "Chave de Acesso inexistente",
    "502": "Erro na Chave de Acesso - Campo Id nao corresponde a concatenacao dos campos "
           "correspondentes",
    "532": "Total do ICMS difere do somatorio dos itens",
    "535": "Total do Desconto difere do somatorio dos itens",
    "539": "Duplicidade de NF-e, com diferenca na Chave de Acesso",
    "564": "Total do Produto / Servico difere do somatorio dos itens",
    "573": "Duplicidade de Evento",
    "610": "Total da NF difere do somatorio dos Valores compoe o valor Total da NF",
    "767": "NFC-e com somatorio dos pagamentos diferente do total da Nota Fiscal",
    "778": "Informado NCM inexistente",
    "999": "Erro nao catalogado",
}
AUTORIZADAS = ("100", "150")
DENEGADAS = ("110", "301", "302", "303")


def campo(no, caminho, padrao=""):
    """The text at a path of element names below `no`, whatever their namespace."""
    achado = no.find("/".join("{*}" + nome for nome in caminho.split("/")))
    return padrao if achado is None else (achado.text or "")


def digito(chave43):
    soma = sum(int(c) * (2 + i % 8) for i, c in enumerate(reversed(chave43)))
    return "0" if soma % 11 < 2 else str(11 - soma % 11)


def serie_e_numero(chave):
    return int(chave[22:25]), int(chave[25:34])


def digest(nfe):
    """SHA-1 over the canonical form of infNFe, as the signature of the document would hold it."""
    corte = nfe.index("<infNFe "), nfe.index("</infNFe>") + len("</infNFe>")
    assinado = nfe[corte[0]:corte[1]].replace("<infNFe ", f'<infNFe xmlns="{NS}" ', 1)
    return base64.b64encode(hashlib.sha1(ET.canonicalize(assinado).encode()).digest()).decode()


def conferir_chave(inf):
    chave = inf.get("Id", "")[3:]
    ide = lambda nome: campo(inf, "ide/" + nome)
    partes = (ide("cUF").zfill(2) + ide("dhEmi")[2:4] + ide("dhEmi")[5:7]
              + campo(inf, "emit/CNPJ").zfill(14) + ide("mod").zfill(2) + ide("serie").zfill(3)
              + ide("nNF").zfill(9) + ide("tpEmis") + ide("cNF").zfill(8) + ide("cDV"))
    if partes != chave:
        return "502"
    return None if digito(chave[:43]) == chave[43] else "253"


def conferir_somas(inf):
    soma = lambda caminho: sum((Decimal(no.text) for no in inf.findall(caminho)), Decimal(0))
    total = lambda nome: Decimal(campo(inf, "total/ICMSTot/" + nome))
    try:
        casos = (("564", soma("{*}det/{*}prod/{*}vProd") == total("vProd")),
                 ("535", soma("{*}det/{*}prod/{*}vDesc") == total("vDesc")),
                 ("532", soma("{*}det/{*}imposto/{*}ICMS/*/{*}vICMS") == total("vICMS")),
                 ("610", total("vProd") + total("vOutro") - total("vDesc") - total("vST")
                  == total("vNF")),
                 ("767", soma("{*}pag/{*}vPag") == total("vNF")))
    except InvalidOperation:
        return "225"
    return next((codigo for codigo, certo in casos if not certo), None)


def conferir_ncm(inf):
    """The chapters of the Mercosur nomenclature run from 01 to 97, of which 77 is not in use."""
    capitulos = {campo(item, "prod/NCM")[:2] for item in inf.findall("{*}det")}
    existem = {f"{n:02}" for n in range(1, 98) if n != 77}
    return None if capitulos <= existem else "778"


def conferir_assinatura(nfe, inf):
    if not assinatura.disponivel():
        return None  # the sender cannot sign on this machine, and says so
    faltas = {"sem assinatura": "298", "outro elemento": "298", "assinatura": "297",
              "titular": "213"}
    falta = assinatura.conferir(nfe, "infNFe", campo(inf, "emit/CNPJ"))
    return faltas[falta] if falta else None


def regra_quebrada(nfe, inf):
    """The status of the first rule that a document breaks, by itself; None when it breaks none."""
    falta = conferir_chave(inf) or conferir_assinatura(nfe, inf)
    return falta or conferir_somas(inf) or conferir_ncm(inf)
