# SPDX-License-Identifier: MIT
"""PHP: the declarations that its FFI can read, the tables and the operations of wrappers/php."""
from .tabela import AVISO, composicoes, expressoes, literal, quebrar_todas, sem_prefixo, titulo

PASTA = "wrappers/php/src/"
NUMERO = "int|float|string"  # a float is refused by name, whatever the caller's strict_types
TIPOS = {"texto": "string", "caminho": "string", "inteiro": "int", "decimal": NUMERO,
         "documento": "string", "percentual": NUMERO, "aliquota": "Aliquota", "ajuste": "Ajuste",
         "forma": "FormaPagamento", "consulta": "TipoConsulta", "diretorios": "array"}
PADROES = {"texto": "''", "ajuste": "null", "decimal": "null", "Consumidor": "new Consumidor()"}
MODELOS = {
    "texto": "$this->texto('{a}', {p}{limites})",
    "texto.obrigatorio": "$this->obrigatorio('{a}', {p}{limites})",
    "identificacao": "$this->identificacao('{funcao}', {p})",
    "documento": "$this->documento('{a}', {p})",
    "grupo": "$this->texto('{a}', {p}->{membro}{limites})",
    "fixo": "''", "inteiro": "Valores::inteiro('{a}', {p}{limites})",
    "decimal": "Valores::decimal('{a}', {p}, {casas})",
    "decimal.opcional": "Valores::decimalOpcional('{a}', {p}, {casas})",
    "percentual": "Valores::decimal('{a}', {p}, 2)", "aliquota": "{p}->converter('{a}')",
    "ajuste.tipo": "Ajuste::tipo('{a}', {p}, '{sentido}')",
    "ajuste.valor": "Ajuste::valor('{a}', {p})", "forma": "{p}->value", "consulta": "{p}->value",
    "caminho": "Valores::caminho('{a}', {p})", "resultado": "self::SAIDA",
    "diretorios": "self::SAIDA"}
RESPOSTAS = {"nada": "void", "codigo": "Codigo", "texto": "string", "caminho": "string",
             "estado": "Estado"}
METODOS = {"estado": "verEstado", "texto": "ler", "caminho": "gravarEm"}
NATIVOS = {"texto": "const char *", "inteiro": "int ", "resultado": "char *",
           "texto_e_resultado": "char *"}


def texto(valor):
    return literal(valor, "'") if isinstance(valor, str) else str(valor)


def declaracoes(t):
    linhas = [f"/* {AVISO} */", "/* clang-format off */"]
    for f in t.funcoes:
        lista = ", ".join(f"{NATIVOS[a.tipo]}{a.nome}" for a in f.argumentos) or "void"
        linhas += [f"int {f.nome}({lista});"]
    return linhas


def codigo(t):
    linhas = ["enum Codigo: int", "{"]
    linhas += [f"    case {titulo(sem_prefixo(c))} = {c['codigo']};" for c in t.codigos]
    linhas += ["", "    /** Name, meaning and remedy. */",
               "    public function descricao(): array", "    {", "        return match ($this) {"]
    for c in t.codigos:
        linhas += [f"            self::{titulo(sem_prefixo(c))} => [", f"                '{c['nome']}',",
                   f"                {texto(c['significado'])},",
                   f"                {texto(c['remedio'])},", "            ],"]
    return linhas + ["        };", "    }", "}", ""]


def enumeracao(nome, valores):
    tipo = "string" if isinstance(valores[0]["valor"], str) else "int"
    linhas = [f"enum {nome}: {tipo}", "{"]
    for v in valores:
        linhas += [f"    /** {v['rotulo']} */", f"    case {titulo(v['nome'])} = {texto(v['valor'])};"]
    return linhas + ["}", ""]


def grupo(nome, argumentos):
    linhas = [f"final class {nome}", "{", "    public function __construct("]
    for a in argumentos.values():
        linhas += [f"        /** {a.significado} */", f"        public readonly string ${a.nome} = '',"]
    return linhas + ["    ) {", "    }", "}", ""]


def tabelas(t):
    linhas = ["final class Tabelas", "{"]
    linhas += [f"    public const {nome[4:]} = {valor};" for nome, valor in t.tamanhos.items()]
    linhas += [f"    public const {nome.upper()} = {texto(valor)};" for nome, valor in t.textos.items()]
    linhas += ["", "    /** Letters in two parts, and in one. */", "    public const COMPOSICAO = ["]
    linhas += [f'        "{letra}\\u{{{ord(marca):04X}}}" => "\\u{{{ord(junta):04X}}}",'
               for letra, marca, junta in composicoes()]
    linhas += ["    ];"]
    linhas += ["", "    public const TRANSLITERACAO = ["]
    linhas += [f'        "\\u{{{ord(de):04X}}}" => {texto(para)},' for de, para in t.transliteracao]
    return linhas + ["    ];", "}", ""]


def parametro(p):
    tipo = TIPOS.get(p.especie, p.especie)
    if not p.opcional:
        return f"{tipo} ${p.nome}"
    if p.especie == "decimal":
        tipo += "|null"
    return f"{'?' if p.especie == 'ajuste' else ''}{tipo} ${p.nome} = {PADROES[p.especie]}"


def operacao(f):
    linhas = ["/**", f" * {f.resumo} {f.nome}."]
    linhas += [f" * @param {TIPOS.get(p.especie, p.especie)} ${p.nome} {p.significado}"
               for p in f.parametros()]
    lista = ", ".join(map(parametro, f.parametros()))
    linhas += [" */", f"public function {f.operacao}({lista}): {RESPOSTAS[f.resultado()]}", "{"]
    inicio = [f"'{f.nome}'"]
    if f.resultado() == "texto":
        inicio += ["$this->tamanhoDoUltimo()" if f.saida().tamanho == "ultimo"
                   else f"Tabelas::{f.saida().tamanho[4:]}"]
    elif f.resultado() == "caminho":
        inicio += ["$diretorios"]
    argumentos = inicio + list(expressoes(f, MODELOS, lambda nome: "$" + nome))
    volta = "" if f.resultado() == "nada" else "return "
    metodo = METODOS.get(f.resultado(), "chamar")
    linhas += [f"    {volta}$this->{metodo}({', '.join(argumentos)});", "}"]
    return ["    " + linha for linha in linhas] + [""]


def gerar(t):
    linhas = [f"// {AVISO}", "", "declare(strict_types=1);", "", "namespace Zel\\Felbor;", ""]
    linhas += codigo(t)
    for nome, valores in t.enumeracoes.items():
        linhas += enumeracao(nome, valores)
    for nome, argumentos in t.grupos.items():
        linhas += grupo(nome, argumentos)
    linhas += tabelas(t)
    linhas += ["/** One operation for each function. */", "abstract class Operacoes extends Chamador",
               "{"]
    for f in t.operacoes():
        linhas += operacao(f)
    return {PASTA + "zel_felbor.h": list(quebrar_todas(declaracoes(t), "//")),
            PASTA + "Gerado.php": list(quebrar_todas(linhas[:-1] + ["}"], "*"))}
