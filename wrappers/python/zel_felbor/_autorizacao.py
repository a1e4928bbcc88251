# SPDX-License-Identifier: MIT
"""Whether a receipt may be given to a customer: of a document that the authority authorized, or of
one of contingency; without fiscal value nothing is promised."""
from __future__ import annotations

import re
from typing import Optional

from ._valores import EntradaRecusada

_CONTORNO = "; para um ensaio, sem_autorizacao"


def _situacao(retorno: bytes) -> bytes:
    """Of the sending component's form, or of the authority's, whose last status is the document's."""
    for marca in (b"sitcodigo", b"cstat"):
        vistas = re.findall(rb"<" + marca + rb">\s*(\d*)", retorno, re.I)
        if vistas:
            return vistas[-1]
    return b""


def conferir_autorizacao(documento: bytes, retorno: Optional[bytes], cancelamento: bool) -> None:
    """`retorno` is None for "OFFLINE"."""
    if retorno is None:
        contingencia = not documento.startswith(b"<") or re.search(rb'Id="NFe\d{34}9', documento)
        if b"<tpAmb>1</tpAmb>" in documento and not contingencia:
            raise EntradaRecusada("retorno: OFFLINE só serve a um documento de contingência; este ainda "
                                  "não tem a resposta da SEFAZ" + _CONTORNO)
        return
    situacao = _situacao(retorno)
    if situacao not in ((b"135", b"155") if cancelamento else (b"100", b"150")):
        oque = "registrou o cancelamento" if cancelamento else "autorizou a venda"
        raise EntradaRecusada(f"retorno: a SEFAZ não {oque} (SitCodigo "
                              f"{situacao.decode() or 'ausente'})" + _CONTORNO)
