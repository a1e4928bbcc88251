# SPDX-License-Identifier: MIT
"""The till's documents as the tax authority takes them, through libzel-envio.

    from zel_envio import Envio

    with Envio("zel-envio.toml") as envio:
        envio.ler(Path("documentosEnvio.xml").read_bytes())
        envio.assinar()
        enviar(envio.mensagem(), envio.valor("chave"))

What each function does is in zel_envio.h.
"""
from __future__ import annotations

import ctypes
import enum
import json
from ctypes import POINTER, byref, c_char_p, c_int, c_size_t, c_void_p
from typing import Any, Dict, List, NamedTuple, Optional, Tuple

from zel_alca import BibliotecaAusente, Caminho, ComAlca, carregar
from zel_alca import nome_de_arquivo as _nome

__all__ = ["BibliotecaAusente", "Envio", "FalhaNoEnvio", "Recusa", "Situacao", "Tipo", "Transmissao", "versao"]

_BYTES = [POINTER(c_void_p), POINTER(c_size_t)]
_ASSINATURAS = {
    "novo": (c_void_p, []), "liberar": (None, [c_void_p]),
    "configurar": (c_int, [c_void_p, c_char_p]),
    "configurar_texto": (c_int, [c_void_p, c_char_p, c_size_t, c_char_p]),
    "ler": (c_int, [c_void_p, c_char_p, c_size_t]), "tipo": (c_int, [c_void_p]),
    "completar": (c_int, [c_void_p, c_char_p, c_char_p, c_char_p, c_char_p]),
    "traduzir": (c_int, [c_void_p]), "assinar": (c_int, [c_void_p]),
    "verificar": (c_int, [c_void_p]), "valor": (c_char_p, [c_void_p, c_char_p]),
    "mensagem": (c_int, [c_void_p, *_BYTES]), "mostrar": (c_int, [c_void_p, *_BYTES]),
    "impressao": (c_int, [c_void_p, c_char_p, c_size_t, *_BYTES, *_BYTES]),
    "primeira_configuracao": (c_int, [c_void_p, c_char_p, c_size_t, c_char_p, c_char_p, c_char_p, *_BYTES]),
    "certificado_de_ensaio": (c_int, [c_void_p, c_char_p, c_char_p, c_char_p, *_BYTES]),
    "transmitir": (c_int, [c_void_p, c_char_p, c_char_p, c_int]),
    "resposta": (c_int, [c_void_p, *_BYTES]), "estado": (c_int, [c_void_p, *_BYTES]),
    "procurar": (c_int, [c_void_p, c_char_p, *_BYTES]),
    "exportar": (c_int, [c_void_p, c_char_p, c_char_p, POINTER(c_size_t)]), "continuar": (c_int, [c_void_p]),
    "servico": (c_int, [c_void_p, c_char_p, c_int, c_int, *_BYTES]),
    "recusa": (c_int, [c_void_p, c_size_t, *3 * [POINTER(c_char_p)]]),
    "liberar_bytes": (None, [c_void_p]),
    "detalhe": (c_char_p, [c_void_p]), "descrever": (c_char_p, [c_int]), "versao": (c_char_p, [])}


class Recusa(NamedTuple):
    """One thing that is wrong."""
    campo: str
    valor: str
    motivo: str


class FalhaNoEnvio(Exception):
    """What libzel-envio answered: its code, the function, what the code means, and in `detalhe` all
    that is wrong, a line for each thing; `recusas` has the same thing by thing."""

    def __init__(self, funcao: str, codigo: int, significado: str, detalhe: str,
                 recusas: "Tuple[Recusa, ...]" = ()):
        self.funcao, self.codigo, self.significado, self.detalhe = funcao, codigo, significado, detalhe
        self.recusas = recusas
        super().__init__(f"{funcao}: {significado} ({codigo})" + (f":\n{detalhe}" if detalhe else ""))

    def __reduce__(self) -> Any:
        return type(self), (self.funcao, self.codigo, self.significado, self.detalhe, self.recusas)


class Tipo(enum.IntEnum):
    """What was read."""
    NENHUM = 0
    NFCE = 1
    CANCELAMENTO = 2
    INUTILIZACAO = 3
    CONSULTA = 4


class Situacao(enum.IntEnum):
    """How a transmission ended; the values are the library's codes."""
    FEITO = 1          # authorized, cancelled, inutilized, answered
    RECUSADO = -11
    SEM_RESPOSTA = -12  # it may be there: the queue asks on, the number must not be used again
    NAO_ENVIADO = -13   # certainly nothing went out


class Transmissao(NamedTuple):
    """What became of a document. `motivo` and `remedio` are of what is not at its good end; `resposta`
    is the authority's record, for `impressao`."""
    situacao: Situacao
    desfecho: str
    chave: str
    protocolo: str
    cStat: str
    xMotivo: str
    motivo: str
    remedio: str
    resposta: Optional[bytes]

    @property
    def autorizado(self) -> bool:
        return self.situacao is Situacao.FEITO and self.desfecho == "autorizado"


_FATOS = ("desfecho", "chave", "protocolo", "cStat", "xMotivo", "motivo", "remedio")

_BIBLIOTECA = "libzel-envio.so.1"


def _carregar(nome: str) -> ctypes.CDLL:
    return carregar(nome, "zel_envio_", _ASSINATURAS, "a libzel-envio")


def versao(*, biblioteca: str = _BIBLIOTECA) -> str:
    """The version of the library that is loaded."""
    return str(_carregar(biblioteca).zel_envio_versao().decode("ascii"))


def _texto(argumento: str, texto: str) -> bytes:
    if "\0" in texto:
        raise ValueError(f"{argumento}: texto com U+0000")
    return texto.encode("utf-8")


class Envio(ComAlca):
    """One configuration with its certificate, and one document at a time; closed at the end of a
    `with`. Calls from several threads are made one after the other."""
    _prefixo, _quem = "zel_envio_", "o envio"

    def __init__(self, configuracao: Optional[Caminho] = None, *, biblioteca: str = _BIBLIOTECA):
        """`configuracao` is a zel-envio.toml; without one nothing is signed or judged by schemas."""
        super().__init__(_carregar(biblioteca))
        try:
            if configuracao is not None:
                self._chamar("configurar", _nome("configuracao", configuracao))
        except BaseException:
            self.fechar()
            raise

    def _detalhe(self) -> str:
        return str(self._lib.zel_envio_detalhe(self._alca).decode("utf-8", "replace"))

    def _recusas(self) -> List[Recusa]:
        campos = [c_char_p() for _ in Recusa._fields]
        recusas: List[Recusa] = []
        while self._lib.zel_envio_recusa(self._alca, len(recusas), *map(byref, campos)) > 0:
            recusas.append(Recusa(*((c.value or b"").decode("utf-8", "replace") for c in campos)))
        return recusas

    def _chamar(self, funcao: str, *argumentos: Any) -> str:
        """Answers the detail of a call that succeeded."""
        with self._trava:
            codigo = self._funcao(funcao)(self._aberta(), *argumentos)
            detalhe = self._detalhe()
            if codigo > 0:
                return detalhe
            recusas = tuple(self._recusas())
        significado = self._lib.zel_envio_descrever(codigo).decode("utf-8")
        raise FalhaNoEnvio(f"zel_envio_{funcao}", codigo, significado, detalhe, recusas)

    def configurar_texto(self, toml: str, diretorio: Caminho = "") -> None:
        """A configuration's text; `diretorio` is where its relative paths begin."""
        texto = toml.encode("utf-8")
        self._chamar("configurar_texto", texto, len(texto), _nome("diretorio", diretorio))

    def ler(self, documento: bytes) -> Tipo:
        """The bytes of a till's file (documentosEnvio.xml, .ctg, .ctgCanc), or of a document of
        layout 4.00."""
        with self._trava:
            self._chamar("ler", documento, len(documento))
            return Tipo(self._lib.zel_envio_tipo(self._alca))

    def completar(self, *, protocolo: str = "", substituta: str = "", data: str = "",
                  troco: str = "") -> None:
        """What the till's file leaves out."""
        self._chamar("completar", _texto("protocolo", protocolo), _texto("substituta", substituta),
                     _texto("data", data), _texto("troco", troco))

    def traduzir(self) -> None:
        self._chamar("traduzir")

    def assinar(self) -> None:
        """Translates if that is due, signs, adds the QR code; the schemas judge the whole."""
        self._chamar("assinar")

    def mensagem(self) -> bytes:
        """The message that was made last, UTF-8."""
        return self._bytes("mensagem", 1)[0]

    def valor(self, nome: str) -> str:
        """A fact of the document or the certificate: "chave", "qrCode", "certificado.dias"..."""
        with self._trava:
            valor = self._lib.zel_envio_valor(self._aberta(), _texto("nome", nome))
            if valor is None:
                raise KeyError(nome)
            return str(valor.decode("utf-8"))

    def verificar(self) -> List[str]:
        """Answers what was looked at; what is wrong is in the FalhaNoEnvio."""
        return self._chamar("verificar").splitlines()

    def mostrar(self) -> str:
        """The document as a person reads it."""
        return self._bytes("mostrar", 1)[0].decode("utf-8")

    def primeira_configuracao(self, caixa: bytes, *, certificado: Caminho = "",
                              senha_arquivo: Caminho = "", csc_arquivo: Caminho = "") -> str:
        """The text of a first zel-envio.toml, from the bytes of a till's ZEL_Framework.xml."""
        nomes = (_nome("certificado", certificado), _nome("senha_arquivo", senha_arquivo),
                 _nome("csc_arquivo", csc_arquivo))
        return self._bytes("primeira_configuracao", 1, caixa, len(caixa), *nomes)[0].decode("utf-8")

    def certificado_de_ensaio(self, nome: str, cnpj: str, senha: str) -> bytes:
        """A PKCS#12 file for trying: what it signs verifies, and no authority takes it."""
        return self._bytes("certificado_de_ensaio", 1, _texto("nome", nome), _texto("cnpj", cnpj),
                           _texto("senha", senha))[0]

    def impressao(self, resposta: Optional[bytes] = None) -> Tuple[bytes, bytes]:
        """Document and return for Cupom.imprimir, each to be written to a file; `resposta` is the
        authority's answer, None for an offline receipt."""
        documento, retorno = self._bytes("impressao", 2, resposta, len(resposta or b""))
        return documento, retorno

    # ---- The queue of the configuration ----

    def transmitir(self, *, caixa: Caminho = "", substitui: str = "", segundos: int = 5) -> Transmissao:
        """Sends the document that was read through the queue, and waits at most `segundos` for the
        authority. `caixa` is the till's directory, of several [[caixas]]; `substitui` the key of the
        one that this, issued offline, replaces. What is no end of the four is a FalhaNoEnvio."""
        with self._trava:
            situacao, motivo = Situacao.FEITO, ""
            try:
                self._chamar("transmitir", _nome("caixa", caixa), _texto("substitui", substitui), segundos)
            except FalhaNoEnvio as falha:
                if falha.codigo not in (Situacao.RECUSADO, Situacao.SEM_RESPOSTA, Situacao.NAO_ENVIADO):
                    raise
                situacao, motivo = Situacao(falha.codigo), "; ".join(r.motivo for r in falha.recusas)
            fatos = {nome: self.valor(nome) for nome in _FATOS}
            fatos["motivo"] = "" if situacao is Situacao.FEITO else fatos["motivo"] or motivo
            try:
                resposta: Optional[bytes] = self._bytes("resposta", 1)[0]
            except FalhaNoEnvio:  # there is none
                resposta = None
            return Transmissao(situacao=situacao, resposta=resposta, **fatos)

    def estado(self) -> Dict[str, Any]:
        """How the queue stands: its members are in zel_envio.h."""
        return dict(json.loads(self._bytes("estado", 1)[0]))

    def procurar(self, **criterios: Any) -> List[Dict[str, Any]]:
        """The rows that fit: numero=12, chave=, dia="2026-11-25", mes=, consumidor=, caixa=, estado=,
        alguem=True, passos=True, maximo=."""
        linhas = [nome if valor is True else f"{nome}={valor}" for nome, valor in criterios.items()
                  if valor is not False]
        if any("\n" in linha for linha in linhas):
            raise ValueError("um critério é uma linha")
        return list(json.loads(self._bytes("procurar", 1, _texto("criterios", "\n".join(linhas)))[0]))

    def exportar(self, mes: str, arquivo: Caminho) -> int:
        """A month ("2026-11") for the accountant, a zip file; how many documents are in it."""
        quantos = c_size_t()
        self._chamar("exportar", _texto("mes", mes), _nome("arquivo", arquivo), byref(quantos))
        return quantos.value

    def continuar(self) -> None:
        """Ends the stop that a certificate caused."""
        self._chamar("continuar")

    def servico(self, *, cUF: str = "", ambiente: int = 2, segundos: int = 5) -> Dict[str, Any]:
        """Asks the authority's status service now; one that does not work is a FalhaNoEnvio."""
        return dict(json.loads(self._bytes("servico", 1, _texto("cUF", cUF), ambiente, segundos)[0]))
