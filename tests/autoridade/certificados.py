# SPDX-License-Identifier: MIT
"""Certificates of the stand-in, made on the spot by openssl: an authority, a server of this machine,
and holders in the form of ICP-Brasil. What is made once stays: a restart finds it."""
import datetime
import re
import subprocess
from pathlib import Path

CNPJ = "12345678000195"
SENHA = "ensaio"
# otherName of ICP-Brasil for a company's CNPJ, 2.16.76.1.3.3: the OID in DER, then [0] and a string.
CNPJ_DER = re.compile(rb"\x06\x05\x60\x4c\x01\x03\x03\xa0.[\x04\x0c\x13\x16\x1a]\x0e([0-9]{14})", re.S)
CONFIGURACAO = """[ca]
default_ca = ac
[ac]
database = {base}.txt
new_certs_dir = {pasta}
certificate = {base}.pem
private_key = {base}.chave.pem
rand_serial = yes
unique_subject = no
default_md = sha256
policy = livre
[livre]
commonName = supplied
[raiz]
basicConstraints = critical,CA:TRUE
keyUsage = critical,keyCertSign,cRLSign
[servidor]
subjectAltName = IP:127.0.0.1,DNS:localhost
extendedKeyUsage = serverAuth
[titular]
keyUsage = critical,digitalSignature,nonRepudiation,keyEncipherment
extendedKeyUsage = clientAuth
{nome}
"""


def openssl(*argumentos, entrada=None):
    feito = subprocess.run(["openssl", *map(str, argumentos)], input=entrada, capture_output=True,
                           timeout=60, check=False)
    if feito.returncode != 0:
        raise RuntimeError(f"openssl {argumentos[0]}: {feito.stderr.decode('utf-8', 'replace')}")
    return feito.stdout


def cnpj_de(der):
    achado = CNPJ_DER.search(der or b"")
    return achado[1].decode() if achado else ""


class Autoridade:
    """Issues certificates into `pasta`; `nome` tells one authority from another."""

    def __init__(self, pasta, nome="ac"):
        self.pasta, self.nome = Path(pasta), nome
        self.base = self.pasta / nome
        self.certificado = self.pasta / f"{nome}.pem"
        self.pasta.mkdir(parents=True, exist_ok=True)
        if not self.certificado.exists():
            (self.pasta / f"{nome}.txt").touch()
            novo = self.pasta / f"{nome}.novo"
            openssl("req", "-x509", "-newkey", "rsa:2048", "-nodes", "-sha256", "-days", "3650",
                    "-subj", f"/CN=AC de Ensaio {nome}", "-keyout", f"{self.base}.chave.pem", "-out",
                    novo, "-config", self.configuracao(), "-extensions", "raiz")
            novo.rename(self.certificado)

    def configuracao(self, nome=""):
        arquivo = self.pasta / f"{self.nome}.cnf"
        texto = CONFIGURACAO.format(base=self.base, pasta=self.pasta, nome=nome)
        arquivo.write_text(texto + "[req]\ndistinguished_name = dn\n[dn]\n", encoding="ascii")
        return arquivo

    def emitir(self, nome, secao, assunto, san="", desde=-1, ate=365):
        """NAME.pem and NAME.chave.pem, valid from `desde` to `ate`, in days from now."""
        pem, chave = self.pasta / f"{nome}.pem", self.pasta / f"{nome}.chave.pem"
        if pem.exists():
            return pem, chave
        pedido, novo = self.pasta / f"{nome}.csr", self.pasta / f"{nome}.novo"
        configuracao = self.configuracao(san)
        openssl("req", "-new", "-newkey", "rsa:2048", "-nodes", "-subj", f"/CN={assunto}", "-keyout",
                chave, "-out", pedido, "-config", configuracao)
        dias = [(datetime.datetime.now(datetime.timezone.utc) + datetime.timedelta(days=d)).strftime("%Y%m%d%H%M%SZ")
                for d in (desde, ate)]
        openssl("ca", "-batch", "-notext", "-config", configuracao, "-extensions", secao, "-in",
                pedido, "-out", novo, "-startdate", dias[0], "-enddate", dias[1])
        novo.rename(pem)
        return pem, chave

    def servidor(self):
        return self.emitir("servidor", "servidor", "localhost")

    def titular(self, cnpj=CNPJ, nome="titular", senha=SENHA, **prazo):
        """A company's: NAME.pem, NAME.chave.pem, and NAME.pfx under `senha`; with an empty `cnpj` one
        that names no company."""
        san = cnpj and ("subjectAltName = @nomes\n[nomes]\n"
                        f"otherName = 2.16.76.1.3.3;FORMAT:ASCII,OCT:{cnpj}")
        pem, chave = self.emitir(nome, "titular", f"LOJA DE ENSAIO LTDA:{cnpj or 'NINGUEM'}", san, **prazo)
        pfx = self.pasta / f"{nome}.pfx"
        if not pfx.exists():
            openssl("pkcs12", "-export", "-inkey", chave, "-in", pem, "-certfile", self.certificado,
                    "-passout", f"pass:{senha}", "-out", pfx)
        return pem, chave, pfx
