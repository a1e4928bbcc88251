# SPDX-License-Identifier: MIT
"""The Python package against a real library: teste.py DIRECTORY LIBRARY CASES"""
import os
import pickle
import signal
import subprocess
import sys
import threading
import unittest
from decimal import Decimal
from pathlib import Path

import zel_cupom
import zel_envio
from zel_felbor import (Ajuste, Aliquota, BibliotecaAusente, Codigo, Consumidor, Cupom,
                        EntradaRecusada, Estado, FormaPagamento, Recusa, TextoInvalido)
from zel_felbor import _andamento, _chamada, _consumidor, _valores
from zel_felbor._autorizacao import conferir_autorizacao

DIRETORIO, BIBLIOTECA, *CASOS, ANDAMENTO = sys.argv[1:6]
CUPOM = os.path.join(os.path.dirname(BIBLIOTECA), "libzel-cupom.so.1")
ENVIO = os.path.join(os.path.dirname(BIBLIOTECA), "libzel-envio.so.1")
NOTA = Path(CASOS[0]).with_name("nota.xml").read_bytes()
FUNCOES = {"identificar": "aCFIdentificarConsumidor_ZEL"}


def caixa(**opcoes):
    return Cupom(DIRETORIO, biblioteca=BIBLIOTECA, **opcoes)


def converter(tipo, escolha, entrada):
    if tipo == "texto":
        return _valores.texto("a", entrada, escolha == "transliterar").hex().upper()
    if tipo == "diretorio":
        return Cupom(entrada, biblioteca=BIBLIOTECA)
    if tipo == "comprimento":
        return caixa()._texto("a", entrada, *map(int, escolha.split("-"))).hex().upper()
    if tipo == "consumidor":
        consumidor = Consumidor(**dict(par.split("=") for par in entrada.split(";")))
        return _consumidor.identificacao(FUNCOES.get(escolha, "aCFAbrir_ZEL"), consumidor,
                                         escolha == "cortar").decode()
    if tipo == "autorizacao":
        documento, retorno = entrada.encode().split(b"|")
        conferir_autorizacao(documento, None if retorno == b"OFFLINE" else retorno,
                             escolha == "cancelamento")
        return "ok"
    if tipo == "aliquota":
        return getattr(Aliquota, escolha)(Decimal(entrada)).converter("a").decode()
    return _valores.decimal("a", Decimal(entrada), int(escolha)).decode()


def dizer(a):
    campos = lambda letra, lido: ",".join([letra, *vars(lido).values()])
    return ";".join([*([campos("C", a.consumidor)] if a.consumidor else []),
                     *(campos("I", i) for i in a.lista), *(campos("P", p) for p in a.pagamentos),
                     ",".join(["T", a.total, a.pago, a.falta])])


class Conversoes(unittest.TestCase):
    def test_andamento(self):
        casos = [linha.split("\t") for linha in Path(ANDAMENTO).read_text(encoding="utf-8").splitlines()
                 if linha[0] != "#"]
        self.assertGreater(len(casos), 15)
        for nome, registros, esperado in casos:
            arquivo = registros.replace("^", "\r\n").encode("latin-1")
            with self.subTest(nome):
                if esperado[0] != "!":
                    lido = _andamento.ler_andamento(arquivo, Estado.ABERTO, "")
                    self.assertEqual(dizer(lido), esperado)
                    continue
                with self.assertRaisesRegex(EntradaRecusada, esperado[1:]):
                    _andamento.ler_andamento(arquivo, Estado.ABERTO, "")

    def test_casos_comuns(self):
        caixa().inicializar()
        self.assertTrue(os.path.exists(DIRETORIO + "/ZEL_Framework.xml"))
        casos = [linha.split("\t") for nome in CASOS
                 for linha in Path(nome).read_text(encoding="utf-8").splitlines() if linha[0] != "#"]
        self.assertGreater(len(casos), 70)
        for tipo, escolha, entrada, esperado in casos:
            with self.subTest(tipo=tipo, escolha=escolha, entrada=entrada):
                if esperado[0] != "!":
                    self.assertEqual(converter(tipo, escolha, entrada), esperado)
                    continue
                with self.assertRaises(EntradaRecusada) as recusa:
                    converter(tipo, escolha, entrada)
                self.assertIn(esperado[1:], str(recusa.exception))

    def test_o_que_nao_e_numero(self):
        for numero in (1.5, "1", True, None):
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
        c, servico = caixa(), Aliquota.servico(5)
        for parte, chamada in {
                "item": lambda: c.cancelar_item(2**32 + 1),
                "serie: 1000": lambda: c.abrir_num_serie(1, 1000),
                "quantia: 0.125": lambda: c.lancar_desconto_item(1, Ajuste.desconto(Decimal("0.125"))),
                "descricao: 121 car": lambda: c.vender(servico, 1, 1, "1", "UN", "x" * 121),
                "codigo: 61 car": lambda: c.vender(servico, 1, 1, "1" * 61, "UN", "x"),
                "inscricaoEstadual": lambda: c.identificar_transportadora("12345678909", "Zé", "123"),
                "documento: os": lambda: c.identificar_transportadora("123.456.789-00", "Zé"),
                "informacoesFisco: 0": lambda: c.encerrar_config_msg("só uma", ""),
                "destino: nome": lambda: c.criptografar_arquivo("/a", "/" + "x" * 300, "")}.items():
            with self.subTest(parte), self.assertRaises(EntradaRecusada) as recusa:
                chamada()
            self.assertIn(parte.split(":")[-1], str(recusa.exception))

    def test_um_tipo_que_nao_e_o_esperado(self):
        c, isento = caixa(), Aliquota.isento()
        for argumento, chamada in {
                "forma": lambda: c.efetuar_pagamento("Dinheiro"),
                "tipo": lambda: c.consultar("DATA"),
                "aliquota": lambda: c.vender("T1800", 1, 1, "1", "UN", "x"),
                "quantidade": lambda: c.vender(isento, None, 1, "1", "UN", "x"),
                "descricao": lambda: c.vender(isento, 1, 1, "1", "UN", None),
                "tipoAjuste": lambda: c.vender(isento, 1, 1, "1", "UN", "x", "D$"),
                "consumidor": lambda: c.abrir("12345678909"),
                "arquivoXml": lambda: c.imprimir(None, "OFFLINE")}.items():
            with self.subTest(argumento), self.assertRaisesRegex(TypeError, f"^{argumento}: esperad"):
                chamada()

    def test_um_valor_que_a_chave_cortaria(self):
        c = caixa()
        c.alterar_valor(r"EMIT\xNome", "Padaria")
        with self.assertRaisesRegex(EntradaRecusada, "61 caracteres, de que .* guarda 60"):
            c.alterar_valor(r"EMIT\xNome", "x" * 61)
        self.assertEqual(c.retornar_valor(r"EMIT\xNome"), "Padaria")
        caixa(cortar=True).alterar_valor(r"EMIT\xNome", "x" * 61)
        self.assertEqual(c.retornar_valor(r"EMIT\xNome"), "x" * 60)
        with self.assertRaises(Recusa) as recusa:
            c.alterar_valor("NADA", "1")
        self.assertEqual(recusa.exception.funcao, "regAlterarValor_ZEL")


class Processos(unittest.TestCase):
    def recusar(self):
        with self.assertRaises(Recusa) as recusa:
            caixa().criptografar_arquivo("/nao/existe", "/x", "")
        return recusa.exception

    def test_a_recusa_traz_o_motivo(self):
        r = self.recusar()
        self.assertIn("/nao/existe: o arquivo ou o diretório não existe (ENOENT)", r.motivo)
        self.assertIn(r.motivo, str(r))
        self.assertEqual(pickle.loads(pickle.dumps(r)).motivo, r.motivo)

    # The number is the program's from here on: what stands there is neither read nor taken for a reason.
    def test_um_descritor_que_o_programa_fechou(self):
        guardado = os.dup(_chamada._motivos)
        os.close(_chamada._motivos)
        self.assertEqual(self.recusar().motivo, "")
        alheio = os.memfd_create("alheio")
        os.write(alheio, b"[%d] eCriptografarArquivo_ZEL: -52 X: alheio\n" % os.getpid())
        os.dup2(alheio, _chamada._motivos)
        self.assertEqual(self.recusar().motivo, "")
        self.assertIn(b"alheio", os.pread(alheio, 100, 0))
        os.close(alheio)
        os.dup2(guardado, _chamada._motivos, inheritable=False)
        self.assertNotEqual(self.recusar().motivo, "")

    def test_um_fork_durante_a_chamada_de_outra_thread(self):
        def trabalhar():
            while not fim:
                caixa().alterar_valor(r"EMIT\IE", "1")

        fim = []
        threads = [threading.Thread(target=trabalhar) for _ in range(3)]
        for thread in threads:
            thread.start()
        for _ in range(30):
            filho = os.fork()
            if filho == 0:
                signal.alarm(10)
                caixa().verificar_status()
                os._exit(0)
            self.assertEqual(os.waitpid(filho, 0)[1], 0, "the child hangs")
        fim.append(True)
        for thread in threads:
            thread.join()

    def test_sem_a_biblioteca(self):
        programa = "import sys; from zel_felbor import *\ntry: Cupom(sys.argv[1], biblioteca='nada.so')\n" \
                   "except BibliotecaAusente as e: print(e)"
        visto = subprocess.run([sys.executable, "-c", programa, DIRETORIO], capture_output=True, text=True)
        self.assertRegex(visto.stdout + visto.stderr, "não pôde ser carregada.*nada.so.*LD_LIBRARY_PATH")


@unittest.skipUnless(os.path.exists(CUPOM), f"{CUPOM} was not built")
class NoPapel(unittest.TestCase):
    TEXTO = "<ce><b>Padaria São João</b></ce>\r\nPão francês\r\n<gui></gui>"

    def recibo(self, **opcoes):
        return zel_cupom.Recibo(self.TEXTO, biblioteca=CUPOM, **opcoes)

    def test_figura_e_impressora(self):
        figura, papel = DIRETORIO + "/cupom.png", DIRETORIO + "/cupom.bin"
        with self.recibo(perfil="generico-80mm") as recibo:
            recibo.gravar_png(figura)
            self.assertEqual(Path(figura).read_bytes(), recibo.png())
            self.assertTrue(recibo.png().startswith(b"\x89PNG"))
            self.assertIn(b"<svg", recibo.svg())
            recibo.gravar_pdf(figura)
            self.assertEqual(Path(figura).read_bytes(), recibo.pdf())
            self.assertTrue(recibo.pdf().startswith(b"%PDF"))
            self.assertEqual(recibo.imprimir(papel), len(recibo.escpos()))
            self.assertEqual(recibo.estado(), "")  # of a file
            self.assertIn(b"Padaria", Path(papel).read_bytes())
        with self.recibo(perfil="generico-80mm", em_pontos=True) as recibo:
            pontos = recibo.escpos()
            self.assertTrue(b"\x1dv0" in pontos and b"Padaria" not in pontos)
        self.assertIn("generico-80mm", zel_cupom.perfis(biblioteca=CUPOM))
        cabecalho = Path(__file__).parents[2] / "cupom/include/zel_cupom.h"
        self.assertIn(f'VERSAO "{zel_cupom.versao(biblioteca=CUPOM)}"', cabecalho.read_text())
        with self.assertRaisesRegex(ValueError, "fechado"):
            recibo.png()

    def test_falhas_dizem_o_que_houve(self):
        falhas = {"definir_perfil (-8).*perfil desconhecido": lambda: self.recibo(perfil="nenhum"),
                  "escpos (-8).*pontos": lambda: self.recibo(perfil="generico-80mm-512",
                                                             em_pontos=True).escpos(),
                  "definir_papel (-1)": lambda: self.recibo(colunas=40),
                  "imprimir (-9).*bytes enviados": lambda: self.recibo().imprimir("/dev/nao_ha"),
                  "gravar_png (-6).*No such file": lambda: self.recibo().gravar_png("/nao/ha.png")}
        for parte, chamada in falhas.items():
            with self.subTest(parte), self.assertRaises(zel_cupom.FalhaNoCupom) as falha:
                chamada()
            funcao, codigo = parte.split(".*")[0].rstrip(")").split(" (")
            self.assertEqual((falha.exception.funcao, falha.exception.codigo),
                             (f"zel_cupom_{funcao}", int(codigo)))
            self.assertIn(parte.partition(".*")[2], str(falha.exception))
        with self.assertRaisesRegex(zel_cupom.BibliotecaAusente, "LD_LIBRARY_PATH"):
            zel_cupom.perfis(biblioteca="nada.so")


@unittest.skipUnless(os.path.exists(ENVIO), f"{ENVIO} was not built")
class ParaASefaz(unittest.TestCase):
    CHAVE = "35261111222333000181650010000001011171025451"
    TOML = '[qrcode]\nid_csc = "1"\ncsc = "0123456789ABCDEF"\n'

    def configurado(self):
        """With a certificate for trying, of the till's CNPJ."""
        pasta = Path(DIRETORIO)
        senha = os.open(pasta / "senha.txt", os.O_WRONLY | os.O_CREAT, 0o600)
        os.write(senha, b"de ensaio\n")
        os.close(senha)
        envio = zel_envio.Envio(biblioteca=ENVIO)
        (pasta / "certificado.pfx").write_bytes(
            envio.certificado_de_ensaio("ENSAIO", "11222333000181", "de ensaio"))
        envio.configurar_texto('[certificado]\narquivo = "certificado.pfx"\n'
                               'senha_arquivo = "senha.txt"\n' + self.TOML, pasta)
        return envio

    def test_do_caixa_ao_papel(self):
        with self.configurado() as envio:
            self.assertEqual(envio.ler(NOTA), zel_envio.Tipo.NFCE)
            envio.completar(troco="2.00")
            envio.assinar()
            mensagem = envio.mensagem()
            self.assertIn('versao="4.00"'.encode(), mensagem)
            self.assertIn(b"<vTroco>2.00</vTroco>", mensagem)
            self.assertEqual(envio.valor("chave"), self.CHAVE)
            self.assertIn(self.CHAVE, envio.valor("qrCode"))
            self.assertEqual(envio.valor("certificado.cnpj"), "11222333000181")
            envio.ler(mensagem)
            self.assertIn("São Paulo", envio.mostrar())
            self.assertTrue(envio.verificar())
            resposta = (f"<protNFe><infProt><chNFe>{self.CHAVE}</chNFe><nProt>1</nProt><digVal>"
                        f"{envio.valor('digest')}</digVal><cStat>100</cStat></infProt></protNFe>")
            documento, retorno = envio.impressao(resposta.encode())
            self.assertIn("São Paulo".encode("latin-1"), documento)
            self.assertIn(b"<DocProtocolo>1</DocProtocolo>", retorno)
            with self.assertRaisesRegex(zel_envio.FalhaNoEnvio, "não é deste documento"):
                envio.impressao(resposta.replace(self.CHAVE, "0" * 44).encode())
        with self.assertRaisesRegex(ValueError, "fechado"):
            envio.mensagem()

    def test_a_fila(self):
        """Nobody listens at port 9: nothing goes out. What is answered is tried with the stand-in."""
        sem_linha = '[servicos]\nNfeAutorizacao = "https://127.0.0.1:9/x"\n'
        with self.configurado() as envio:
            envio.configurar_texto('[certificado]\narquivo = "certificado.pfx"\nsenha_arquivo = "senha.txt"\n' +
                                   self.TOML + sem_linha, Path(DIRETORIO))
            for segundos, estado in ((0, "assinado"), (3, "retirado")):
                envio.ler(NOTA)
                feita = envio.transmitir(caixa=DIRETORIO, segundos=segundos)
                self.assertEqual((feita.situacao, feita.autorizado, feita.chave, feita.resposta),
                                 (zel_envio.Situacao.NAO_ENVIADO, False, self.CHAVE, None))
                linha, = envio.procurar(numero=101, passos=True)
                self.assertEqual((linha["estado"], linha["passos"][0]["de"]), (estado, "achado"))
            self.assertTrue(feita.motivo)
            self.assertEqual(envio.procurar(dia="2001-01-31", alguem=True), [])
            self.assertEqual(envio.estado()["estados"][0]["estado"], "retirado")
            self.assertEqual(envio.exportar("2026-11", Path(DIRETORIO) / "mes.zip"), 0)
            envio.continuar()
            for chamada, campo in ((lambda: envio.procurar(cor="azul"), "cor"),
                                   (lambda: envio.exportar("2026-13", "/dev/shm/x"), "exportar"),
                                   (lambda: envio.servico(cUF="XX"), "cUF")):
                with self.assertRaises(zel_envio.FalhaNoEnvio) as falha:
                    chamada()
                self.assertEqual(falha.exception.recusas[0].campo, campo)
        with zel_envio.Envio(biblioteca=ENVIO) as envio, self.assertRaisesRegex(zel_envio.FalhaNoEnvio, "zel-envio.toml"):
            envio.estado()

    def test_a_primeira_configuracao_de_um_caixa(self):
        caixa().inicializar()
        with zel_envio.Envio(biblioteca=ENVIO) as envio:
            toml = envio.primeira_configuracao(caixa().arquivo("ZEL_Framework.xml").read_bytes(),
                                               certificado=Path("c.pfx"))
        self.assertRegex(toml, "(?m)^arquivo = 'c.pfx'$")

    def test_falhas_dizem_tudo_o_que_esta_errado(self):
        falhas = {
            "configurar (-3)": (lambda e: e.configurar_texto("a = 1\nb = 2"), ["a", "b"]),
            "ler (-4)": (lambda e: e.ler("<NFé/>".encode()), ["NFé"]),
            "completar (-1)": (lambda e: e.completar(protocolo="1", troco="x"), ["protocolo", "troco"]),
            "traduzir (-5)": (lambda e: (e.ler(NOTA.replace(b">UN<", b"><").replace(b">5102<", b">1<")),
                                         e.traduzir()), ["CFOP", "uCom"]),
            "assinar (-6)": (lambda e: (e.configurar_texto(self.TOML), e.assinar()), ["certificado"]),
            "certificado_de_ensaio (-1)": (lambda e: e.certificado_de_ensaio("A", "1", "b"), []),
            "primeira_configuracao (-4)": (lambda e: e.primeira_configuracao(b"<NFe/>"), []),
            "mensagem (-10)": (lambda e: e.mensagem(), [])}
        for parte, (chamada, ditos) in falhas.items():
            with self.subTest(parte), zel_envio.Envio(biblioteca=ENVIO) as envio:
                envio.ler(NOTA)
                with self.assertRaises(zel_envio.FalhaNoEnvio) as falha:
                    chamada(envio)
                e = pickle.loads(pickle.dumps(falha.exception))
                self.assertIn(parte.split()[0], e.funcao)
                self.assertEqual(f"({e.codigo})", parte.split()[1])
                for dito in ditos:
                    self.assertIn(dito, e.detalhe)
                    self.assertTrue(any(dito in r.campo + r.valor for r in e.recusas), e.recusas)
                self.assertEqual([r for r in e.recusas if r.motivo not in e.detalhe], [])
        with zel_envio.Envio(biblioteca=ENVIO) as envio, self.assertRaises(KeyError):
            envio.valor("nenhum")
        with self.assertRaisesRegex(zel_envio.BibliotecaAusente, "LD_LIBRARY_PATH"):
            zel_envio.versao(biblioteca="nada.so")


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
            c.abrir(Consumidor(cpf="12345678909", nome="João"))
        r = recusa.exception
        self.assertEqual((r.codigo, r.numero, r.nome, r.funcao), (Codigo.CUPOM_EM_ANDAMENTO, -130,
                         "ZEL_CUPOM_EM_ANDAMENTO", "aCFAbrir_ZEL"))
        self.assertEqual(r.significado, "Já há um cupom em andamento.")
        self.assertIn("estado 1 (aberto)", r.motivo)
        self.assertIn(r.motivo, str(r))

    def andamento(self, c, estado, esperado):
        lido = c.ler_andamento()
        self.assertEqual((lido.estado, dizer(lido), lido.troco), (estado, *esperado))

    def test_o_que_um_caixa_reiniciado_mostra(self):
        c = caixa()
        c.abrir(Consumidor(cpf="12345678909", nome="João & Cia"))
        self.vender(c, "Café <500 g>", Ajuste.desconto(Decimal("0.10")))
        item = "C,cpf,12345678909,João & Cia,;I,1,101,Café <500 g>,1.5000,UN,0.75,1.12,{};{}"
        self.andamento(c, Estado.VENDENDO, (item.format("0.10,", "T,1.02,0.00,"), ""))
        c.totalizar(Ajuste.desconto(Decimal("0.02")))
        self.andamento(c, Estado.TOTALIZADO, (item.format("0.12,", "T,1.00,0.00,1.00"), ""))
        c.efetuar_pagamento(FormaPagamento.DINHEIRO, 5)
        pago = (item.format("0.12,", "P,01,Dinheiro,1.00;T,1.00,1.00,"), "4.00")
        self.andamento(c, Estado.PAGO, pago)
        c.encerrar()
        self.andamento(c, Estado.ENCERRADO, pago)
        c.abrir()
        c.cancelar()
        self.assertIsNone(c.ler_andamento())

    def impressao(self, c):
        cupom = c.imprimir(c.arquivo("documentosEnvio.xml"), "OFFLINE")
        self.assertIn("Pão de queijo - 1ª", cupom)
        self.assertGreater(len(cupom), 131072)
        self.assertEqual(c.ultimo_cupom(), cupom)
        self.assertIn("Pão de queijo - 1ª", c.reemitir(1))
        ctg = c.contingencia([DIRETORIO])
        self.assertTrue(os.path.exists(ctg))
        self.assertIn("Pão de queijo - 1ª", c.imprimir(ctg, "OFFLINE"))
        with self.assertRaisesRegex(EntradaRecusada, "/nao/ha.xml: não pôde ser lido"):
            c.imprimir(ctg, "/nao/ha.xml")
        negada = c.arquivo("negada.xml")
        negada.write_text("<SitCodigo>204</SitCodigo>")
        with self.assertRaisesRegex(EntradaRecusada, "204"):
            c.imprimir(c.arquivo("documentosEnvio.xml"), negada)
        c.alterar_valor(r"CONFIGURACAO\SalvarDanfePDF", "1")
        with self.assertRaises(Recusa) as recusa:
            c.imprimir(ctg, "OFFLINE")
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
