#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The sending component of the examples before its authority: what it answers to the till in each
case. The documents are those that a shop's day left on disk.

    enviador.py COMPONENTE AUTORIDADE [CLASS]
"""
import base64
import json
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

sys.dont_write_bytecode = True
from apoio.exemplos import DIA, EXEMPLOS, ler  # noqa: E402
import assinatura  # noqa: E402
import sefaz  # noqa: E402
import sefaz_regras  # noqa: E402

CNPJ = "11222333000181"
FEITO, RECUSADO, SEM_RESPOSTA, NAO_ENVIADO = 0, 1, 3, 4


def do_dia(nome):
    return ler(DIA / "envio" / f"{nome}.xml")


class Pasta(unittest.TestCase):
    """A directory with an authority that has nothing on record, and the issuer's certificate."""

    def setUp(self):
        self.pasta = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory()))
        for pem in (DIA / "autoridade").glob("*.pem"):
            shutil.copy(pem, self.pasta)

    def mandar(self, ordem):
        if ordem:
            numero, _, respostas = ordem.partition(":")
            sefaz.Sefaz(self.pasta).mandar(numero, respostas.split(","))

    def enviar(self, texto, nome="documento.xml", *opcoes):
        """The exit code, and the return if there is one."""
        documento, retorno = self.pasta / nome, self.pasta / "retorno.xml"
        documento.write_bytes(texto if isinstance(texto, bytes) else texto.encode("latin-1"))
        retorno.write_text("<SitCodigo>100</SitCodigo>")  # an old one must not be taken for new
        feito = subprocess.run([sys.executable, EXEMPLOS / "enviador.py", "--sefaz", self.pasta,
                                *opcoes, documento, retorno], capture_output=True, timeout=120,
                               check=False)
        self.assertEqual(feito.stderr, b"")
        return feito.returncode, retorno.read_text("latin-1") if retorno.exists() else ""

    def situacao(self, *envio):
        codigo, retorno = self.enviar(*envio)
        return codigo, assinatura.valor(retorno, "SitCodigo")

    def no_registro(self):
        dados = json.loads((self.pasta / "sefaz.json").read_text())
        return {chave: r["situacao"] for chave, r in dados["documentos"].items()}


class Respostas(Pasta):
    def test_cada_resposta_da_autoridade(self):
        nota = do_dia("nota-102")
        for ordem, esperado, registrado in (
                ("", (FEITO, "100"), ["100"]),
                ("102:150", (FEITO, "150"), ["150"]),
                ("102:999", (RECUSADO, "999"), []),
                ("102:302", (RECUSADO, "302"), ["302"]),
                ("102:processando", (FEITO, "100"), ["100"]),
                ("102:pedido-perdido", (FEITO, "100"), ["100"]),
                ("102:resposta-perdida", (FEITO, "100"), ["100"]),
                ("102:resposta-perdida,resposta-perdida", (SEM_RESPOSTA, ""), ["100"]),
                ("102:pedido-perdido,sem-conexao", (SEM_RESPOSTA, ""), []),
                ("102:pedido-perdido,normal,sem-conexao", (SEM_RESPOSTA, ""), []),
                ("102:sem-conexao", (NAO_ENVIADO, "0"), [])):
            with self.subTest(ordem):
                (self.pasta / "sefaz.json").unlink(missing_ok=True)
                self.mandar(ordem)
                self.assertEqual(self.situacao(nota), esperado)
                self.assertEqual(list(self.no_registro().values()), registrado)

    def test_documento_denegado_tem_protocolo_e_continua_denegado(self):
        self.mandar("102:301")
        _, retorno = self.enviar(do_dia("nota-102"))
        self.assertRegex(retorno, "<DocProtocolo>1[0-9]{14}<.*<DocDigestValue>.{28}<")
        self.assertNotIn("DocXMLBase64", retorno)
        self.assertEqual(self.situacao(do_dia("nota-102")), (RECUSADO, "205"))

    def test_duplicidades(self):
        nota = do_dia("nota-108")
        ctg = next((DIA / "contingencia").glob("*.ctg"))
        _, primeiro = self.enviar(nota)
        _, segundo = self.enviar(nota)
        self.assertEqual(assinatura.valor(primeiro, "DocProtocolo"),
                         assinatura.valor(segundo, "DocProtocolo"), "the same, sent again")
        outro_texto = nota.replace("<natOp>Venda</natOp>", "<natOp>Outra</natOp>")
        self.assertEqual(self.situacao(outro_texto), (RECUSADO, "204"), "same key, other document")
        self.assertEqual(self.situacao(ctg.read_bytes(), ctg.name), (RECUSADO, "539"),
                         "same number, other key")

    def test_regras_que_um_documento_infringe(self):
        nota = do_dia("nota-102")
        chave = re.search(r'Id="NFe([0-9]{44})"', nota)[1]
        outro_dv = str((int(chave[43]) + 1) % 10)
        total = lambda campo: re.search(rf"<ICMSTot>.*?(<{campo}>[^<]*)<", nota)[1]
        for de, para, codigo in (
                ("</NFe>", "", "225"), ("<nNF>102<", "<nNF>103<", "502"),
                (chave + '"', chave[:43] + outro_dv + '"', "502"),
                (f"<cDV>{chave[43]}<", f"<cDV>{outro_dv}<", "502"),
                (total("vICMS") + "</vICMS><vICMSDeson>", "<vICMS>9.99</vICMS><vICMSDeson>", "532"),
                (total("vNF"), "<vNF>1.00", "610"), ("<vPag>", "<vPag>1", "767"),
                (total("vProd") + "</vProd><vFrete>", "<vProd>9.99</vProd><vFrete>", "564"),
                ("<NCM>19052090", "<NCM>77010000", "778")):
            with self.subTest(para):
                self.assertIn(de, nota)
                self.assertEqual(self.situacao(nota.replace(de, para, 1)), (RECUSADO, codigo))
        self.assertEqual(self.situacao("<Outro/>"), (RECUSADO, "225"))

    def test_pedidos(self):
        self.enviar(do_dia("nota-113"))
        evento = re.sub("<EvenProt>[0-9]*", "<EvenProt>" + self.protocolo(113),
                        do_dia("cancelamento-113"))
        inutilizacao, consulta = do_dia("inutilizacao-106"), do_dia("consulta-111")
        por_numero = do_dia("consulta-do-dia")
        for pedido, esperado in (
                (consulta, (RECUSADO, "217")),
                (evento.replace("<EvenProt>1", "<EvenProt>2"), (RECUSADO, "222")),
                (evento.replace("Cancelamento de NFCe", "engano"), (RECUSADO, "215")),
                (evento, (FEITO, "135")), (evento, (FEITO, "135")),
                (do_dia("cancelamento-111"), (RECUSADO, "494")),
                (inutilizacao, (FEITO, "102")), (inutilizacao, (RECUSADO, "256")),
                (inutilizacao.replace("106", "113"), (RECUSADO, "241")),
                (do_dia("nota-106"), (RECUSADO, "206")), (do_dia("nota-113"), (RECUSADO, "218")),
                (por_numero, (FEITO, "100"))):
            with self.subTest(pedido[:60], esperado=esperado):
                codigo, retorno = self.enviar(pedido)
                situacao = re.search("<SitCodigo>([0-9]*)<", retorno)[1]
                self.assertEqual((codigo, situacao), esperado)
        self.assertEqual(re.findall("<DocNumero>([0-9]+)</DocNumero><SitCodigo>([0-9]+)", retorno),
                         [("106", "102"), ("113", "101")])

    def protocolo(self, numero):
        return sefaz.Sefaz(self.pasta).relacao(1, numero, numero)[0][3]

    def test_formas_do_retorno(self):
        nota = do_dia("nota-102")
        _, retorno = self.enviar(nota, "n.xml", "--link", "http://exemplo/?a=1&b=2")
        self.assertIn("<LinkNFCe>http://exemplo/?a=1&amp;b=2</LinkNFCe>", retorno)
        autorizado = base64.b64decode(assinatura.valor(retorno, "DocXMLBase64")).decode()
        self.assertTrue(autorizado.startswith("<nfeProc "))
        _, da_autoridade = self.enviar(nota, "n.xml", "--forma", "autoridade")
        self.assertRegex(da_autoridade, "^<protNFe xmlns=[^>]*><infProt>.*<nProt>.*<digVal>")
        _, evento = self.enviar(do_dia("cancelamento-111"), "n.xml", "--forma", "autoridade")
        self.assertRegex(evento, "^<retEvento xmlns=.*<cStat>494</cStat>")
        self.assertNotIn("<nProt>", evento)

    def test_documento_fora_do_esquema_nao_se_envia(self):
        for raiz, esperado in (("NFe", (FEITO, "100")), ("Outra", (RECUSADO, "225"))):
            (self.pasta / "nfe_v3.10.xsd").write_text(
                '<xs:schema xmlns:xs="http://www.w3.org/2001/XMLSchema" '
                f'targetNamespace="{sefaz_regras.NS}"><xs:element name="{raiz}"/></xs:schema>')
            sefaz.Sefaz(self.pasta).salvar()
            codigo, retorno = self.enviar(do_dia("nota-102"), "n.xml", "--esquema", self.pasta)
            self.assertEqual((codigo, assinatura.valor(retorno, "SitCodigo")), esperado)
            self.assertEqual(bool(self.no_registro()), codigo == FEITO)
            (self.pasta / "sefaz.json").unlink()


@unittest.skipUnless(assinatura.disponivel(), "openssl and xmlsec1 are not installed")
class Assinatura(Pasta):
    def test_digest_e_o_do_texto_canonico(self):
        nota = do_dia("nota-102").replace("> <", "><")
        assinada = assinatura.assinar(nota, "infNFe", *assinatura.certificado(self.pasta, CNPJ))
        self.assertEqual(assinatura.valor(assinada, "DigestValue"), sefaz_regras.digest(nota))
        self.assertNotIn("\n", assinada)

    def test_faltas_de_uma_assinatura(self):
        nota = do_dia("nota-102").replace("> <", "><")
        boa = assinatura.assinar(nota, "infNFe", *assinatura.certificado(self.pasta, CNPJ))
        alheia = assinatura.assinar(nota, "infNFe",
                                    *assinatura.certificado(self.pasta, "99999999000191"))
        outra = boa.replace('Id="NFe', 'Id="NFE', 1)
        for texto, falta in ((boa, None), (nota, "sem assinatura"), (alheia, "titular"),
                             (boa.replace("<qCom>6", "<qCom>5", 1), "assinatura"),
                             (outra, "outro elemento")):
            self.assertEqual(assinatura.conferir(texto, "infNFe", CNPJ), falta)

    def test_chave_e_so_do_dono(self):
        chave, _ = assinatura.certificado(self.pasta, "99999999000191")
        self.assertEqual(chave.stat().st_mode & 0o077, 0)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1] + sys.argv[3:])
