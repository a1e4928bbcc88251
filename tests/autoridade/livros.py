#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""The books of the stand-in, one SQLite file: what is authorized, cancelled and voided, and every
request with the SHA-256 of the NFe in it and the microseconds that the judging took. And, at the end
of a test, the books held against the sender's queue, its kept files and the till's numbers:

    livros.py LIVROS.DB [--fila FILA.DB] [--guardados DIR] [--numeros SERIE:DE-ATE[,...]] [--cnpj CNPJ]

prints each difference on a line of its own; the result is 1 when there is one."""
import argparse
import contextlib
import hashlib
import re
import sqlite3
import sys
import threading
from pathlib import Path

from certificados import CNPJ
from regras import AUTORIZADAS, DENEGADAS, cortar

ESQUEMA = """
CREATE TABLE IF NOT EXISTS documentos (chave TEXT PRIMARY KEY, numeracao TEXT, serie INT, numero INT, dhEmi TEXT, vNF TEXT,
    vICMS TEXT, consumidor TEXT, item TEXT, cStat TEXT, protocolo TEXT, dhRecbto TEXT, recebido REAL, nRec TEXT,
    sha256 TEXT, prot BLOB);
CREATE INDEX IF NOT EXISTS documentos_numero ON documentos (numeracao);
CREATE TABLE IF NOT EXISTS eventos (chave TEXT, tipo TEXT, seq INT, cStat TEXT, protocolo TEXT, evento BLOB, ret BLOB,
    PRIMARY KEY (chave, tipo, seq));
CREATE TABLE IF NOT EXISTS inutilizados (id TEXT PRIMARY KEY, cnpj TEXT, serie INT, inicio INT, fim INT, protocolo TEXT);
CREATE TABLE IF NOT EXISTS recibos (nRec TEXT PRIMARY KEY, prot BLOB, faltam INT);
CREATE TABLE IF NOT EXISTS pedidos (id INTEGER PRIMARY KEY, momento REAL, servico TEXT, alvo TEXT, sha256 TEXT, ordem TEXT,
    cStat TEXT, interno TEXT, micros INT, espera_micros INT, entregue INT DEFAULT 0);
CREATE INDEX IF NOT EXISTS pedidos_alvo ON pedidos (servico, alvo, momento);
CREATE TABLE IF NOT EXISTS contador (nome TEXT PRIMARY KEY, valor INT);
"""
# Answers after which a document of the same key may come with other bytes: it was refused, it was mended.
SEM_DECISAO = ("103", "105", "108", "109", "656", "999", "204", "539")


class Livros:
    """One connection, one change at a time; a change is in the file before its answer goes out, so
    that a stand-in that is killed knows what it answered."""

    def __init__(self, arquivo):
        self.arquivo, self.trinco = str(arquivo), threading.RLock()
        self.banco = sqlite3.connect(self.arquivo, check_same_thread=False, isolation_level=None)
        self.banco.row_factory = sqlite3.Row
        self.banco.executescript("PRAGMA journal_mode=WAL; PRAGMA synchronous=OFF;" + ESQUEMA)

    @contextlib.contextmanager
    def mudanca(self):
        with self.trinco:
            self.banco.execute("BEGIN IMMEDIATE")
            try:
                yield
            except BaseException:
                self.banco.execute("ROLLBACK")
                raise
            self.banco.execute("COMMIT")

    def linhas(self, sql, *valores):
        with self.trinco:
            return self.banco.execute(sql, valores).fetchall()

    def linha(self, sql, *valores):
        return next(iter(self.linhas(sql, *valores)), None)

    def gravar(self, tabela, **valores):
        nomes, marcas = ", ".join(valores), ", ".join("?" * len(valores))
        with self.trinco:
            return self.banco.execute(f"INSERT INTO {tabela} ({nomes}) VALUES ({marcas})",
                                      tuple(valores.values())).lastrowid

    def proximo(self, nome):
        sql = "INSERT INTO contador VALUES (?, 1) ON CONFLICT DO UPDATE SET valor = valor + 1 RETURNING valor"
        return self.linhas(sql, nome)[0][0]

    def entregue(self, pedido):
        self.linhas("UPDATE pedidos SET entregue = 1 WHERE id = ?", pedido)


def bytes_trocados(livros):
    """A document was sent again with other bytes though nobody had told its sender of a refusal."""
    antes = {}
    for p in livros.linhas("SELECT * FROM pedidos WHERE servico = 'NFeAutorizacao4' AND sha256 <> '' ORDER BY id"):
        outro = antes.get(p["alvo"])
        if outro and outro["sha256"] != p["sha256"]:
            codigo = outro["interno"] or outro["cStat"]
            if not outro["entregue"] or codigo in SEM_DECISAO + AUTORIZADAS + DENEGADAS:
                yield f"{p['alvo']}: sent with other bytes after {codigo or 'no answer'}"
        antes[p["alvo"]] = p


def desfechos(livros):
    """{(CNPJ, series, number): [outcome, ...]} of everything on record."""
    feitos = {}
    for d in livros.linhas("SELECT *, EXISTS (SELECT 1 FROM eventos e WHERE e.chave = d.chave) AS cancelado FROM documentos d"):
        nome = "denegado" if d["cStat"] in DENEGADAS else "cancelado" if d["cancelado"] else "autorizado"
        feitos.setdefault((d["numeracao"][:14], d["serie"], d["numero"]), []).append(nome)
    for i in livros.linhas("SELECT * FROM inutilizados"):
        for numero in range(i["inicio"], i["fim"] + 1):
            feitos.setdefault((i["cnpj"], i["serie"], numero), []).append("inutilizado")
    return feitos


def numeros_trocados(livros, numeros):
    """Every number has one outcome; of `numeros`, {(CNPJ, series, number): outcome or None for any}, each is
    there, and no other is."""
    feitos = desfechos(livros)
    for qual in sorted(set(feitos) | set(numeros or {})):
        visto = feitos.get(qual, [])
        if len(visto) > 1 or (numeros and not visto):
            yield f"{qual[0]} series {qual[1]} number {qual[2]}: outcomes {visto}"
        elif numeros and qual not in numeros:
            yield f"{qual[0]} series {qual[1]} number {qual[2]}: {visto[0]}, and no till has it"
        elif numeros and numeros[qual] not in (None, visto[0]):
            yield f"{qual[0]} series {qual[1]} number {qual[2]}: {visto[0]}, and the till has it {numeros[qual]}"


def guardados_trocados(livros, pasta, sem_registro=()):
    """Every authorized document, event and voided range is kept once, as it was sent, with its
    protocol; nothing else is. `sem_registro`: ranges whose record never arrived."""
    devidos = {}
    achados = {c.name: c for c in Path(pasta).rglob("*.xml")}
    for d in livros.linhas("SELECT * FROM documentos"):
        nome = d["chave"] + "-procNFe.xml"
        if d["cStat"] in AUTORIZADAS or nome in achados:  # a denied one may be kept
            devidos[nome] = (b"NFe", d["sha256"], d["protocolo"])
    for e in livros.linhas("SELECT * FROM eventos"):
        resumo = hashlib.sha256(e["evento"]).hexdigest()
        devidos[f"{e['chave']}-{e['tipo']}-procEventoNFe.xml"] = (b"evento", resumo, e["protocolo"])
    for i in livros.linhas("SELECT * FROM inutilizados"):
        if i["id"] in sem_registro:
            continue
        devidos[i["id"] + "-procInutNFe.xml"] = (b"inutNFe", None, i["protocolo"])
    for nome in sorted(set(devidos) | set(achados)):
        if nome not in achados or nome not in devidos:
            yield f"{nome}: " + ("not kept" if nome in devidos else "kept, and the books do not have it")
            continue
        elemento, resumo, protocolo = devidos[nome]
        texto = achados[nome].read_bytes()
        if resumo and hashlib.sha256(cortar(texto, elemento)).hexdigest() != resumo:
            yield f"{nome}: other bytes than were sent"
        if b"<nProt>%s</nProt>" % protocolo.encode() not in cortar(texto.rpartition(b"</Signature>")[2], b"nProt"):
            yield f"{nome}: without the protocol {protocolo}"


# Of the queue: `tipo` and `desfecho` are numbers of its enumerations.
NFCE, INUTILIZACAO, AUTORIZADO, CANCELADO, JA_INUTILIZADO, JA_CANCELADO = 1, 3, 1, 2, 7, 8
FINAIS = ("entregue", "recusado", "retirado")


def ja_inutilizados(livros, fila):
    """{Id: protocol} of the ranges of which the queue knows no more than that they were voided: the answer
    was lost, and the authority gives it no second time."""
    with contextlib.closing(sqlite3.connect(f"file:{fila}?mode=ro", uri=True)) as banco:
        ids = {l[0] for l in banco.execute("SELECT chave FROM documento WHERE tipo = ? AND desfecho = ?",
                                           (INUTILIZACAO, JA_INUTILIZADO))}
    return {i["id"]: i["protocolo"] for i in livros.linhas("SELECT * FROM inutilizados") if i["id"] in ids}


def fila_trocada(livros, fila):
    """The queue is at an end with every document, and has for it what the books have: key, protocol
    and the bytes that were sent."""
    banco = sqlite3.connect(f"file:{fila}?mode=ro", uri=True)
    linhas = banco.execute("SELECT d.chave, d.tipo, d.estado, d.desfecho, d.protocolo, c.mensagem, d.serie, d.numero"
                           " FROM documento d LEFT JOIN conteudo c ON c.id = d.id ORDER BY d.id").fetchall()
    banco.close()
    notas = {d["chave"]: d for d in livros.linhas("SELECT * FROM documentos") if d["cStat"] in AUTORIZADAS}
    protocolos = {l["protocolo"] for t in ("eventos", "inutilizados") for l in livros.linhas(f"SELECT protocolo FROM {t}")}
    vistos = {"", *ja_inutilizados(livros, fila).values()}
    for chave, tipo, estado, desfecho, protocolo, mensagem, serie, numero in linhas:
        qual, feito = f"queue, {chave or f'series {serie} number {numero}'}", estado == "entregue"
        if estado not in FINAIS:
            yield f"{qual}: still {estado}"
        elif tipo != NFCE:
            vistos.add(protocolo)
            if feito and protocolo not in protocolos and desfecho not in (JA_INUTILIZADO, JA_CANCELADO):
                yield f"{qual}: protocol {protocolo}, and the books do not have it"
        elif feito and desfecho in (AUTORIZADO, CANCELADO):
            nota = notas.pop(chave, None)
            if not nota or nota["protocolo"] != protocolo:
                yield f"{qual}: authorized with {protocolo}, in the books {nota and nota['protocolo']}"
            elif hashlib.sha256(cortar(mensagem or b"", b"NFe")).hexdigest() != nota["sha256"]:
                yield f"{qual}: other bytes than were sent"
    yield from (f"queue: {chave} is authorized, and it does not know it" for chave in notas)
    yield from (f"queue: it does not know the event or voided range {p}" for p in sorted(protocolos - vistos))


def comparar(livros, fila=None, guardados=None, numeros=None):
    """The differences, as texts; none when all is well."""
    diferencas = [*bytes_trocados(livros), *numeros_trocados(livros, numeros)]
    if guardados:
        diferencas += guardados_trocados(livros, guardados, ja_inutilizados(livros, fila) if fila else ())
    if fila:
        diferencas += fila_trocada(livros, fila)
    return diferencas


def faixas(texto):
    """"1:1-40,2:7-7" as [(series, number), ...]."""
    achadas = [re.fullmatch(r"(\d+):(\d+)-(\d+)", parte) for parte in texto.split(",")]
    if not all(achadas):
        raise argparse.ArgumentTypeError("SERIE:DE-ATE[,...]")
    return [(int(f[1]), n) for f in achadas for n in range(int(f[2]), int(f[3]) + 1)]


def main():
    leitor = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    leitor.add_argument("livros")
    leitor.add_argument("--fila")
    leitor.add_argument("--guardados")
    leitor.add_argument("--numeros", type=faixas, default=[])
    leitor.add_argument("--cnpj", default=CNPJ, help="whose the numbers are")
    opcoes = leitor.parse_args()
    numeros = {(opcoes.cnpj, *qual): None for qual in opcoes.numeros}
    diferencas = comparar(Livros(opcoes.livros), opcoes.fila, opcoes.guardados, numeros)
    print("\n".join(diferencas) or "no difference")
    sys.exit(1 if diferencas else 0)


if __name__ == "__main__":
    main()
