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

from typing import Optional, Sequence

from . import _valores
from ._andamento import Andamento, ConsumidorLido, ItemLido, PagamentoLido, ler_andamento
from ._chamada import SAIDA, BibliotecaAusente, Recusa
from ._operacoes import Operacoes
from ._tabelas import TAMANHOS, Codigo, Consumidor, Estado, FormaPagamento, TipoConsulta
from ._valores import Ajuste, Aliquota, Caminho, EntradaRecusada, ErroZel, TextoInvalido

__all__ = ["Ajuste", "Aliquota", "Andamento", "BibliotecaAusente", "Codigo", "Consumidor", "ConsumidorLido",
           "Cupom", "EntradaRecusada", "ErroZel", "Estado", "FormaPagamento", "ItemLido", "PagamentoLido",
           "Recusa", "TextoInvalido", "TipoConsulta"]


class Cupom(Operacoes):
    """The receipt of one data directory, which is the process's."""

    def ler_andamento(self) -> Optional[Andamento]:
        """The receipt in progress, for a till that was restarted; one that was closed is there until
        the next is opened. None without a receipt. The library completes first what a process that
        died left behind."""
        troco = self.retornar_valor(r"CONFIGURACAO\TrocoUltimaNFCe")
        estado = self.verificar_status()
        if not Estado.ABERTO <= estado <= Estado.ENCERRADO:
            return None
        return ler_andamento(self._ler_andamento(), estado, troco if estado >= Estado.PAGO else "")

    def reemitir(self, tipo: int) -> str:
        """aCFContingenciaUltimaNota_ZEL of kind 1 (as the closing does), 3 or 5 (in contingency).
        Answers the document."""
        tamanho = TAMANHOS["ZEL_TAMANHO_DOCUMENTO"] + 65536 + 2 * self._bytes_de("ArqPersist.bin")
        return self._ler("aCFContingenciaUltimaNota_ZEL", tamanho, tipo, SAIDA)

    def contingencia(self, diretorios: Sequence[Caminho]) -> str:
        """aCFContingenciaUltimaNota_ZEL of kind 4: KEY.ctg in up to three directories. Answers the
        path of the last file."""
        return self._gravar_em("aCFContingenciaUltimaNota_ZEL", diretorios, 4, SAIDA)

    def alterar_valor(self, chave: str, valor: str) -> None:
        """regAlterarValor_ZEL; a value that the key does not keep whole is taken back and refused."""
        if self.cortar:
            super().alterar_valor(chave, valor)
            return
        try:
            antes = self.retornar_valor(chave)
        except Recusa:  # there is no such key, which the other function says
            antes = ""
        super().alterar_valor(chave, valor)
        guardado = self.retornar_valor(chave)
        dado = self._texto("valor", valor).decode("latin-1")
        if guardado != dado:
            super().alterar_valor(chave, antes)
            raise EntradaRecusada(f"valor: {len(dado)} caracteres, de que {chave} guarda "
                                  f"{len(guardado)}; nada mudou")

    def imprimir(self, arquivo_xml: Caminho, retorno: Caminho, *, colunas: int = 48,
                 url_qrcode: str = "", sem_autorizacao: bool = False) -> str:
        """The receipt text of a sale with its printer mark-up. `retorno` is the file of the tax
        authority's answer, which has to authorize the sale, or "OFFLINE" for a document of
        contingency or without fiscal value; `sem_autorizacao` lays any other out, too, for a trial.
        `colunas` 42 or 48; the content of the QR code is built when none is given."""
        return self._formatar(arquivo_xml, retorno, url_qrcode, colunas, 1, sem_autorizacao)

    def imprimir_cancelamento(self, arquivo_xml: Caminho, retorno: Caminho, *, colunas: int = 48,
                              sem_autorizacao: bool = False) -> str:
        """The same of a cancellation request, which the answer has to have registered."""
        return self._formatar(arquivo_xml, retorno, "", colunas, 5, sem_autorizacao)

    def _formatar(self, arquivo_xml: Caminho, retorno: Caminho, url: str, colunas: int, tipo: int,
                  sem_autorizacao: bool) -> str:
        argumentos = (_valores.caminho("arquivoXml", arquivo_xml),
                      _valores.caminho("arquivoRetorno", retorno), self._texto("urlQrcode", url),
                      _valores.inteiro("colunas", colunas))
        xml, resposta = self._ler_para_imprimir(arquivo_xml, retorno, tipo == 5, sem_autorizacao)
        return self._ler("GerarArquivoFormatadoNF_ZEL", self._tamanho_do_cupom(xml, resposta, url),
                         *argumentos, tipo, b"", SAIDA)
