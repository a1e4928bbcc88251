# SPDX-License-Identifier: MIT
"""Signs and checks the messages of the NF-e, with the programs openssl and xmlsec1.

The signature is enveloped: RSA over SHA-1, canonical XML without comments, one reference to the Id
of the signed element, which layout 3.10 of the NF-e asks for. An element is signed as text: what
stands around the signature keeps its bytes, so the digest is that of the text that was given.
"""
import os
import pathlib
import re
import shutil
import subprocess
import tempfile

XMLDSIG = "http://www.w3.org/2000/09/xmldsig#"
C14N = "http://www.w3.org/TR/2001/REC-xml-c14n-20010315"

# Waits for a program of the machine, never for the network.
SEGUNDOS = 60


class Falha(Exception):
    """A program that signs or checks could not do it; the text says why."""


def disponivel():
    return all(shutil.which(programa) for programa in ("openssl", "xmlsec1"))


def executar(*comando):
    try:
        feito = subprocess.run(comando, capture_output=True, timeout=SEGUNDOS, check=False)
    except subprocess.TimeoutExpired as erro:
        raise Falha(f"{comando[0]}: no end in {SEGUNDOS} s") from erro
    if feito.returncode != 0:
        raise Falha(f"{comando[0]}: {feito.stderr.decode('utf-8', 'replace').strip()}")
    return feito.stdout.decode("utf-8", "replace")


def certificado(diretorio, cnpj):
    """The key and the certificate of the issuer, made on the spot where there are none. As one that
    a shop buys, the certificate names it "NAME:CNPJ"; one of ours proves nothing to anybody."""
    chave = pathlib.Path(diretorio) / f"{cnpj}.chave.pem"
    publico = pathlib.Path(diretorio) / f"{cnpj}.certificado.pem"
    if not (chave.exists() and publico.exists()):
        antes = os.umask(0o077)
        try:
            executar("openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-sha256",
                     "-days", "30", "-subj", f"/C=BR/O=DEMONSTRACAO/CN=LOJA DE EXEMPLO:{cnpj}",
                     "-keyout", str(chave), "-out", str(publico))
        finally:
            os.umask(antes)
    return chave, publico


def molde(identificacao):
    """A signature still without its values, in the one form that the layout allows."""
    return (f'<Signature xmlns="{XMLDSIG}"><SignedInfo>'
            f'<CanonicalizationMethod Algorithm="{C14N}"/>'
            f'<SignatureMethod Algorithm="{XMLDSIG}rsa-sha1"/>'
            f'<Reference URI="#{identificacao}"><Transforms>'
            f'<Transform Algorithm="{XMLDSIG}enveloped-signature"/><Transform Algorithm="{C14N}"/>'
            f'</Transforms><DigestMethod Algorithm="{XMLDSIG}sha1"/><DigestValue/></Reference>'
            "</SignedInfo><SignatureValue/>"
            "<KeyInfo><X509Data><X509Certificate/></X509Data></KeyInfo></Signature>")


def identificacao(texto, elemento):
    achada = re.search(rf'<{elemento}\b[^>]*\bId="([^"]*)"', texto)
    if not achada:
        raise Falha(f"no {elemento} with an Id")
    return achada[1]


def assinar(texto, elemento, chave, publico):
    """`texto`, whose root holds `elemento`, with the signature as the last child of the root."""
    corte = texto.rindex("</")
    com_molde = texto[:corte] + molde(identificacao(texto, elemento)) + texto[corte:]
    with tempfile.TemporaryDirectory() as pasta:
        entrada, saida = (os.path.join(pasta, nome) for nome in ("entrada.xml", "saida.xml"))
        pathlib.Path(entrada).write_text(com_molde, encoding="utf-8")
        executar("xmlsec1", "--sign", "--id-attr:Id", elemento,
                 "--privkey-pem", f"{chave},{publico}", "--output", saida, entrada)
        assinado = pathlib.Path(saida).read_text(encoding="utf-8")
    assinatura = assinado[assinado.rindex("<Signature "):assinado.rindex("</Signature>")]
    # A line end between two characters of base64 means nothing, and authorities dislike it.
    assinatura = assinatura.replace("\n", "") + "</Signature>"
    return texto[:corte] + assinatura + texto[corte:]


def conferir(texto, elemento, cnpj):
    """The name of the fault, or None for a signature that is the issuer's and fits the text."""
    if "<Signature " not in texto:
        return "sem assinatura"
    with tempfile.TemporaryDirectory() as pasta:
        arquivo, publico = (os.path.join(pasta, nome) for nome in ("mensagem.xml", "titular.pem"))
        pathlib.Path(arquivo).write_text(texto, encoding="utf-8")
        pathlib.Path(publico).write_text(
            "-----BEGIN CERTIFICATE-----\n" + valor(texto, "X509Certificate")
            + "\n-----END CERTIFICATE-----\n", encoding="ascii")
        try:
            if f'URI="#{identificacao(texto, elemento)}"' not in texto:
                return "outro elemento"
            executar("xmlsec1", "--verify", "--id-attr:Id", elemento,
                     "--pubkey-cert-pem", publico, arquivo)
            titular = executar("openssl", "x509", "-in", publico, "-noout", "-subject")
        except Falha:
            return "assinatura"
    return None if titular.strip().endswith(f":{cnpj}") else "titular"


def valor(texto, elemento):
    """The text of the only element of that name."""
    achado = re.search(rf"<{elemento}>([^<]*)</{elemento}>", texto)
    return achado[1] if achado else ""
