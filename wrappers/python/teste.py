# SPDX-License-Identifier: MIT
"""The Python package against a real library: teste.py DIRECTORY LIBRARY CASES"""
import os
import sys
import threading
import unittest
from decimal import Decimal

from zel_felbor import (Ajuste, Aliquota, Codigo, Consumidor, Cupom, EntradaRecusada, Estado,
                        FormaPagamento, Recusa, TextoInvalido)
from zel_felbor import _valores

DIRETORIO, BIBLIOTECA, CASOS = sys.argv[1:4]


def caixa(**opcoes):
    return Cupom(DIRETORIO, biblioteca=BIBLIOTECA, **opcoes)


def converter(tipo, escolha, entrada):
    if tipo == "texto":
        return _valores.texto("a", entrada, escolha == "transliterar").hex().upper()
    if tipo == "diretorio":
        return Cupom(entrada, biblioteca=BIBLIOTECA)
    if tipo == "aliquota":
        return getattr(Aliquota, escolha)(Decimal(entrada)).converter("a").decode()
    return _valores.decimal("a", Decimal(entrada), int(escolha)).decode()


class Conversoes(unittest.TestCase):
    def test_casos_comuns(self):
        caixa().inicializar()
        self.assertTrue(os.path.exists(DIRETORIO + "/ZEL_Framework.xml"))
        with open(CASOS, encoding="utf-8") as arquivo:
            casos = [linha.rstrip("\n").split("\t") for linha in arquivo if linha[0] != "#"]
        self.assertGreater(len(casos), 30)
        for tipo, escolha, entrada, esperado in casos:
            with self.subTest(tipo=tipo, escolha=escolha, entrada=entrada):
                if esperado[0] != "!":
                    self.assertEqual(converter(tipo, escolha, entrada), esperado)
                    continue
                with self.assertRaises(EntradaRecusada) as recusa:
                    converter(tipo, escolha, entrada)
                self.assertIn(esperado[1:], str(recusa.exception))

    def test_o_que_nao_e_numero(self):
        for numero in (1.5, "1", True):
            with self.assertRaises(TypeError):
                _valores.decimal("a", numero, 2)
        for numero in (Decimal("NaN"), Decimal("-Infinity"), Decimal("1E+999999999"),
                       Decimal("1E-999999999")):
            with self.assertRaises(EntradaRecusada):
                _valores.decimal("a", numero, 2)
        self.assertEqual(_valores.decimal("a", Decimal("1E+2"), 2), b"100.00")

    def test_o_que_c_cortaria(self):
        with self.assertRaises(TextoInvalido):
            _valores.texto("a", "P\0o", True)
        with self.assertRaises(EntradaRecusada):
            _valores.caminho("a", "P\0o")
        with self.assertRaises(EntradaRecusada):
            caixa().cancelar_item(2**32 + 1)


class Vendas(unittest.TestCase):
    def vender(self, c, descricao, ajuste=Ajuste()):
        c.vender(Aliquota.mercadoria(18), Decimal("1.5"), Decimal("0.75"), "101", "UN", descricao,
                 ajuste)

    def test_um_cupom(self):
        c = caixa()
        c.alterar_valor(r"EMIT\xNome", "Padaria São João")
        self.assertEqual(c.retornar_valor(r"EMIT\xNome"), "Padaria São João")
        self.recusas_de_texto(c)
        self.vender(caixa(transliterar=True), "Pão de queijo – 1ª")
        for _ in range(800):
            self.vender(c, "É" * 120)
        with self.assertRaisesRegex(EntradaRecusada, "não é um desconto"):
            c.lancar_desconto_item(1, Ajuste.acrescimo(1))
        c.lancar_desconto_item(1, Ajuste.desconto(Decimal("0.10")))
        c.totalizar()
        self.assertEqual(c.verificar_status(), Estado.TOTALIZADO)
        c.efetuar_pagamento(FormaPagamento.DINHEIRO)
        c.encerrar("Obrigado pela preferência")
        self.impressao(c)
        self.assertEqual(c.cancelar(), Codigo.CANCELAMENTO_GRAVADO)

    def recusas_de_texto(self, c):
        c.abrir()
        with self.assertRaises(TextoInvalido) as recusa:
            self.vender(c, "Pão de queijo – 1ª")
        e = recusa.exception
        self.assertEqual((e.argumento, e.caractere, e.posicao), ("descricao", "–", 15))
        with self.assertRaisesRegex(TextoInvalido, "€"):
            self.vender(caixa(transliterar=True), "1 €")
        self.assertEqual(c.verificar_status(), Estado.ABERTO)
        with self.assertRaises(Recusa) as recusa:
            c.abrir(Consumidor(nome="João"))
        r = recusa.exception
        self.assertEqual((r.codigo, r.numero, r.nome, r.funcao), (Codigo.CUPOM_EM_ANDAMENTO, -130,
                         "ZEL_CUPOM_EM_ANDAMENTO", "aCFAbrir_ZEL"))
        self.assertEqual(r.significado, "Já há um cupom em andamento.")
        self.assertIn("Continue-o, ou cancele-o", str(r))

    def impressao(self, c):
        cupom = c.imprimir(c.arquivo("documentosEnvio.xml"))
        self.assertIn("Pão de queijo - 1ª", cupom)
        self.assertGreater(len(cupom), 131072)
        self.assertEqual(c.ultimo_cupom(), cupom)
        self.assertIn("Pão de queijo - 1ª", c.reemitir(1))
        ctg = c.contingencia([DIRETORIO])
        self.assertTrue(os.path.exists(ctg))
        self.assertIn("Pão de queijo - 1ª", c.imprimir(ctg))
        with self.assertRaisesRegex(EntradaRecusada, "/nao/ha.xml: não pôde ser lido"):
            c.imprimir(ctg, "/nao/ha.xml")
        c.alterar_valor(r"CONFIGURACAO\SalvarDanfePDF", "1")
        with self.assertRaises(Recusa) as recusa:
            c.imprimir(ctg)
        self.assertIn("Pão de queijo - 1ª", recusa.exception.texto)
        c.alterar_valor(r"CONFIGURACAO\SalvarDanfePDF", "0")

    def test_duas_threads(self):
        erros = []

        def trabalhar(chave):
            try:
                for i in range(200):
                    caixa().alterar_valor(chave, str(i))
                    if caixa().retornar_valor(chave) != str(i):
                        erros.append("read another value")
            except Exception as erro:
                erros.append(erro)

        threads = [threading.Thread(target=trabalhar, args=(chave,))
                   for chave in (r"EMIT\IE", r"EMIT\xNome")]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        self.assertEqual(erros, [])


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
