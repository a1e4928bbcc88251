# SPDX-License-Identifier: MIT
"""NFC-e through libZEL_FelborFramework.

    from decimal import Decimal
    from zel_felbor import Aliquota, Cupom, FormaPagamento

    caixa = Cupom("/var/lib/caixa1")
    caixa.abrir()
    caixa.vender(Aliquota.mercadoria(18), 2, Decimal("12.50"), "101", "UN", "Café 500 g")
    caixa.totalizar()
    caixa.efetuar_pagamento(FormaPagamento.DINHEIRO)
    caixa.encerrar("Volte sempre")

Text is converted to ISO-8859-1 strictly, file names are not. Calls from several threads are made
one after the other. What each function does, and in which state, is in ZEL_FelborFramework.h.
"""
from __future__ import annotations

from typing import Sequence

from . import _valores
from ._chamada import SAIDA, Recusa
from ._operacoes import Operacoes
from ._tabelas import TAMANHOS, Codigo, Consumidor, Estado, FormaPagamento, TipoConsulta
from ._valores import Ajuste, Aliquota, Caminho, EntradaRecusada, ErroZel, TextoInvalido

__all__ = ["Ajuste", "Aliquota", "Codigo", "Consumidor", "Cupom", "EntradaRecusada", "ErroZel",
           "Estado", "FormaPagamento", "Recusa", "TextoInvalido", "TipoConsulta"]


class Cupom(Operacoes):
    """The receipt of one data directory, which is the process's."""

    def reemitir(self, tipo: int) -> str:
        """aCFContingenciaUltimaNota_ZEL of kind 1 (as the closing does), 3 or 5 (in contingency).
        Answers the document."""
        tamanho = TAMANHOS["ZEL_TAMANHO_DOCUMENTO"] + 65536 + 2 * self._bytes_de("ArqPersist.bin")
        return self._ler("aCFContingenciaUltimaNota_ZEL", tamanho, tipo, SAIDA)

    def contingencia(self, diretorios: Sequence[Caminho]) -> str:
        """aCFContingenciaUltimaNota_ZEL of kind 4: KEY.ctg in up to three directories. Answers the
        path of the last file."""
        return self._gravar_em("aCFContingenciaUltimaNota_ZEL", diretorios, 4, SAIDA)

    def imprimir(self, arquivo_xml: Caminho, retorno: Caminho = "OFFLINE", *, colunas: int = 48,
                 url_qrcode: str = "") -> str:
        """The receipt text of a sale with its printer mark-up. `retorno` is the file of the tax
        authority's answer, or "OFFLINE"; `colunas` 42 or 48; the content of the QR code is built
        when none is given."""
        return self._formatar(arquivo_xml, retorno, url_qrcode, colunas, 1)

    def imprimir_cancelamento(self, arquivo_xml: Caminho, retorno: Caminho = "OFFLINE", *,
                              colunas: int = 48) -> str:
        """The same of a cancellation request."""
        return self._formatar(arquivo_xml, retorno, "", colunas, 5)

    def _formatar(self, arquivo_xml: Caminho, retorno: Caminho, url: str, colunas: int,
                  tipo: int) -> str:
        return self._ler("GerarArquivoFormatadoNF_ZEL",
                         self._tamanho_do_cupom(arquivo_xml, retorno, url),
                         _valores.caminho("arquivoXml", arquivo_xml),
                         _valores.caminho("arquivoRetorno", retorno),
                         self._texto("urlQrcode", url), colunas, tipo, b"", SAIDA)
