#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""What a shop's day left on disk, in two directories: one for each vocabulary of the returns.

    dia_de_loja.py COMPONENTE AUTORIDADE
"""
import base64
import json
import re
import sys
import unittest

sys.dont_write_bytecode = True
from apoio.exemplos import DIA, DIA_DA_AUTORIDADE, ler, mascarar  # noqa: E402
import assinatura  # noqa: E402
import enviador  # noqa: E402

# Of each number the status at the authority, the digit of the emission type in its key, and how
# often the receipt was printed.
NUMEROS = {101: ("100", "1", 1), 102: ("100", "1", 1), 103: ("100", "1", 1), 104: ("100", "1", 1),
           105: ("302", "1", 0), 106: ("102", None, 0), 107: ("100", "1", 1), 108: ("100", "9", 2),
           109: ("100", "9", 2), 110: ("101", "9", 2), 111: ("101", "1", 0), 112: ("100", "9", 2),
           113: ("101", "1", 1)}


# Computed from keys and dates.
DO_QR_CODE = ((r"(chNFe|dhEmi|digVal|cHashQRCode)=[0-9A-Za-f]+", r"\1="),)


def qr_do_cupom(numero):
    """All that the copies of a receipt carry."""
    return re.findall(r"<qrcode>(.*?)<lmodulo>", ler(DIA / "cupons" / f"nota-{numero}.txt"))


def documento_autorizado(numero):
    retorno = ler(DIA / "retorno" / f"nota-{numero}.xml")
    return base64.b64decode(assinatura.valor(retorno, "DocXMLBase64")).decode("utf-8")


class Dia(unittest.TestCase):
    def test_cada_numero_virou_o_que_devia(self):
        for dia in (DIA, DIA_DA_AUTORIDADE):
            dados = json.loads(ler(dia / "autoridade" / "sefaz.json"))
            achados = {n: ("102", None) for _, _, de, ate, _ in dados["inutilizados"]
                       for n in range(de, ate + 1)}
            for chave, registro in dados["documentos"].items():
                numero = int(chave[25:34])
                self.assertNotIn(numero, achados, "a number in two documents")
                achados[numero] = ("101" if "evento" in registro else registro["situacao"],
                                   chave[34])
            self.assertEqual(achados, {n: linha[:2] for n, linha in NUMEROS.items()})
            for lista in ("pendentes.txt", "substituidas.txt", "inutilizar.txt"):
                self.assertEqual(ler(dia / lista), "", "still to be done")
            self.assertFalse((dia / "atencao.txt").exists())

    def test_so_o_autorizado_ou_em_contingencia_se_imprime(self):
        for numero, (_, _, copias) in NUMEROS.items():
            cupom = DIA / "cupons" / f"nota-{numero}.txt"
            self.assertEqual(cupom.exists(), copias > 0, numero)
            if not cupom.exists():
                continue
            texto = ler(cupom)
            self.assertEqual(texto.count("<gui></gui>"), copias, numero)
            self.assertEqual("EMITIDA EM CONTING\xcaNCIA" in texto, copias == 2, numero)
            self.assertEqual("Protocolo de Autoriza\xe7\xe3o: 1" in texto, copias == 1, numero)
        self.assertIn("OFF-LINE", ler(DIA / "cupons" / "cancelamento-110.txt"))
        self.assertRegex(ler(DIA / "cupons" / "cancelamento-113.txt"), "Cancelamento:1[0-9]{14}\r")

    def test_os_dois_vocabularios_imprimem_os_mesmos_cupons(self):
        nomes = sorted(p.name for p in (DIA / "cupons").iterdir())
        self.assertEqual(nomes, sorted(p.name for p in (DIA_DA_AUTORIDADE / "cupons").iterdir()))
        for nome in nomes:
            um, outro = (ler(dia / "cupons" / nome) for dia in (DIA, DIA_DA_AUTORIDADE))
            self.assertEqual(mascarar(um, DO_QR_CODE), mascarar(outro, DO_QR_CODE))
        self.assertIn("<protNFe ", ler(DIA_DA_AUTORIDADE / "retorno" / "nota-102.xml"))

    def test_cupom_e_documento_levam_o_mesmo_qr_code(self):
        """The library computes it from the document and the token; the sender does so on its own,
        with the digest of the signature. Contingency receipts were printed before that."""
        for numero, (_, _, copias) in NUMEROS.items():
            if copias == 0:
                continue
            documento = documento_autorizado(numero)
            no_documento = assinatura.valor(documento, "qrCode").replace("&amp;", "&")
            self.assertEqual(qr_do_cupom(numero), [no_documento] * copias)
            self.assertIn("&digVal=" + assinatura.valor(documento, "digVal").encode().hex() + "&",
                          no_documento)

    @unittest.skipUnless(assinatura.disponivel(), "openssl and xmlsec1 are not installed")
    def test_o_que_se_enviou_esta_assinado_pelo_emitente(self):
        for numero in sorted(NUMEROS.keys() - {105, 106, 111}):
            nfe = enviador.elemento(documento_autorizado(numero), "NFe")
            self.assertIsNone(assinatura.conferir(nfe, "infNFe", "11222333000181"), numero)
            self.assertEqual(assinatura.valor(nfe, "DigestValue"),
                             assinatura.valor(documento_autorizado(numero), "digVal"))

    def test_historico_tem_cada_documento_com_o_nome_da_sua_especie(self):
        copias = {ler(p): p.name for p in (DIA / "historico").iterdir()}
        self.assertEqual(len(copias), len(list((DIA / "historico").iterdir())), "one twice")
        padroes = {"nota": "NFCe", "cancelamento": "Canc", "consulta": "Cons",
                   "inutilizacao": "Inut"}
        for enviado in (DIA / "envio").iterdir():
            especie = padroes.get(enviado.name.partition("-")[0])
            nome = copias.pop(ler(enviado), None)
            if especie:
                self.assertRegex(nome, rf"^Envio{especie}[0-9]{{8}}_[0-9]{{6}}(_[0-9]+)?\.xml$")
            else:
                self.assertIsNone(nome, "parameters are not copied")
        self.assertEqual(copias, {})

    def test_arquivos_de_contingencia_sao_os_mesmos_nos_dois_diretorios(self):
        nomes = sorted(p.name for p in (DIA / "contingencia").iterdir())
        self.assertEqual(nomes, sorted(p.name for p in (DIA / "copia").iterdir()))
        self.assertRegex(" ".join(nomes), r"^11222333000181_001000000110\.ctgCanc [0-9]{44}\.ctg$")
        for nome in nomes:
            self.assertEqual(*((DIA / d / nome).read_bytes() for d in ("copia", "contingencia")))
        evento, nota = (enviador.ler_documento(DIA / "contingencia" / nome) for nome in nomes)
        self.assertNotIn("EvenProt", evento)
        self.assertIn(f'Id="NFe{nomes[1][:44]}"', nota)
        self.assertIn("<tpEmis>9</tpEmis>", nota)
        self.assertIn("<dhCont>", nota)

    def test_segredos_ficam_onde_estao(self):
        arquivos = [p for p in DIA.rglob("*") if p.is_file()]
        com_segredo = {p.name for p in arquivos if "TOKEN-DE-EXEMPLO" in ler(p)}
        self.assertEqual(com_segredo, {"csc.txt", "ZEL_Framework.xml", "ZEL_Framework.diario", "zel_dia_de_loja"})


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
