# SPDX-License-Identifier: MIT
"""Makes the package of pyproject.toml out of its own directory, with nothing but Python: `pip install`
asks it for a wheel, and needs neither a network nor other packages."""
import base64
import hashlib
import io
import re
import tarfile
import zipfile
from pathlib import Path

AQUI = Path(__file__).resolve().parent
PACOTES = ("zel_felbor", "zel_alca", "zel_cupom", "zel_envio")


def _projeto():
    texto = (AQUI / "pyproject.toml").read_text(encoding="utf-8")
    campo = lambda nome: re.search(rf'^{nome} = "(.*)"$', texto, re.M)[1]
    return campo("name").replace("-", "_"), campo("version"), campo("description"), campo("requires-python")


def _fontes():
    for pacote in PACOTES:
        for arquivo in sorted((AQUI / pacote).iterdir()):
            if arquivo.suffix == ".py" or arquivo.name == "py.typed":
                yield f"{pacote}/{arquivo.name}", arquivo.read_bytes()


def _metadados():
    nome, versao, descricao, python = _projeto()
    return (f"Metadata-Version: 2.1\nName: {nome}\nVersion: {versao}\nSummary: {descricao}\n"
            f"License: MIT\nLicense-File: LICENSE\nRequires-Python: {python}\n"
            "Description-Content-Type: text/markdown\n\n"
            + (AQUI / "README.md").read_text(encoding="utf-8")).encode()


def build_wheel(destino, config_settings=None, metadata_directory=None):
    nome, versao = _projeto()[:2]
    info = f"{nome}-{versao}.dist-info"
    arquivos = [*_fontes(), (f"{info}/METADATA", _metadados()),
                (f"{info}/WHEEL", b"Wheel-Version: 1.0\nGenerator: montagem\n"
                                  b"Root-Is-Purelib: true\nTag: py3-none-any\n"),
                (f"{info}/LICENSE", (AQUI / "LICENSE").read_bytes())]
    registro = ""
    with zipfile.ZipFile(Path(destino) / f"{nome}-{versao}-py3-none-any.whl", "w",
                         zipfile.ZIP_DEFLATED) as roda:
        for caminho, bytes_ in arquivos:
            soma = base64.urlsafe_b64encode(hashlib.sha256(bytes_).digest()).rstrip(b"=").decode()
            registro += f"{caminho},sha256={soma},{len(bytes_)}\n"
            roda.writestr(caminho, bytes_)
        roda.writestr(f"{info}/RECORD", registro + f"{info}/RECORD,,\n")
    return f"{nome}-{versao}-py3-none-any.whl"


def build_sdist(destino, config_settings=None):
    base = "-".join(_projeto()[:2])
    arquivos = [*_fontes(), ("PKG-INFO", _metadados())]
    arquivos += [(nome, (AQUI / nome).read_bytes())
                 for nome in ("LICENSE", "README.md", "montagem.py", "pyproject.toml")]
    with tarfile.open(Path(destino) / f"{base}.tar.gz", "w:gz") as pacote:
        for caminho, bytes_ in arquivos:
            membro = tarfile.TarInfo(f"{base}/{caminho}")
            membro.size = len(bytes_)
            pacote.addfile(membro, io.BytesIO(bytes_))
    return f"{base}.tar.gz"
