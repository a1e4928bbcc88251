# SPDX-License-Identifier: MIT
"""Sells, prints and cancels one receipt: exemplo.py DIRECTORY [LIBRARY]"""
import sys
from decimal import Decimal

from zel_felbor import Ajuste, Aliquota, Codigo, Consumidor, Cupom, FormaPagamento, Recusa


def vender(caixa: Cupom) -> None:
    caixa.abrir(Consumidor(documento="123.456.789-09", nome="Maria de Fátima"))
    caixa.vender(Aliquota.mercadoria(18), 6, Decimal("0.75"), "101", "UN", "Pão francês")
    caixa.vender(Aliquota.mercadoria(18), Decimal("0.350"), Decimal("39.90"), "303", "KG",
                 "Queijo minas", Ajuste.desconto_percentual(10))
    caixa.totalizar()
    print("total:", caixa.info_estendida("1"))
    caixa.efetuar_pagamento(FormaPagamento.CARTAO_DEBITO, 10)
    caixa.efetuar_pagamento(FormaPagamento.DINHEIRO, 50)
    print("troco:", caixa.retornar_valor(r"CONFIGURACAO\TrocoUltimaNFCe"))
    caixa.encerrar("Obrigado pela preferência")
    print("chave:", caixa.retornar_valor(r"NFCE\ChaveDeAcesso"))


def principal() -> None:
    biblioteca = sys.argv[2] if len(sys.argv) > 2 else "libZEL_FelborFramework.so.1"
    caixa = Cupom(sys.argv[1], biblioteca=biblioteca)
    caixa.alterar_valor(r"EMIT\xNome", "Padaria São João Ltda")
    caixa.alterar_valor(r"EMIT\CNPJ", "11222333000181")
    vender(caixa)
    print(caixa.imprimir(caixa.arquivo("documentosEnvio.xml"), "OFFLINE"))
    print("cancelamento:", f"ZEL_{caixa.cancelar().name}")
    try:
        caixa.encerrar()  # nothing is open now
    except Recusa as recusa:
        print(recusa)
        sys.exit(0 if recusa.codigo == Codigo.ENCERRAMENTO_FORA_DE_ORDEM else 1)


if __name__ == "__main__":
    principal()
