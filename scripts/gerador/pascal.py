# SPDX-License-Identifier: MIT
"""Free Pascal and Delphi: the tables with the declarations, and the operations, of
wrappers/pascal."""
from itertools import groupby
from textwrap import wrap

from .tabela import AVISO, composicoes, expressoes, quebrar_todas, titulo

PASTA = "wrappers/pascal/"
TIPOS = {"texto": "TZelTexto", "caminho": "TZelTexto", "inteiro": "Integer", "decimal": "Currency",
         "documento": "TZelTexto",
         "percentual": "Currency", "aliquota": "TZelAliquota", "ajuste": "TZelAjuste",
         "forma": "TZelFormaPagamento", "consulta": "TZelTipoConsulta",
         "diretorios": "array of TZelTexto", "Consumidor": "TZelConsumidor"}
PADROES = {"texto": "''", "ajuste": "ZelSemAjuste", "decimal": "ZelVazio",
           "Consumidor": "ZelSemConsumidor"}
MODELOS = {
    "texto": "PAnsiChar(DeTexto('{a}', {p}{limites}))",
    "texto.obrigatorio": "PAnsiChar(Obrigatorio('{a}', {p}{limites}))",
    "identificacao": "PAnsiChar(Identificacao('{funcao}', {p}))",
    "documento": "PAnsiChar(Documento('{a}', {p}))",
    "grupo": "PAnsiChar(DeTexto('{a}', {p}.{membro}{limites}))",
    "fixo": "''", "inteiro": "ZelInteiro('{a}', {p}{limites})",
    "decimal": "PAnsiChar(ZelDecimal('{a}', {p}, {casas}))",
    "decimal.opcional": "PAnsiChar(ZelDecimalOpcional('{a}', {p}, {casas}))",
    "percentual": "PAnsiChar(ZelDecimal('{a}', {p}, 2))",
    "aliquota": "PAnsiChar({p}.Converter('{a}'))",
    "ajuste.tipo": "PAnsiChar({p}.ConverterTipo('{a}', '{sentido}'))",
    "ajuste.valor": "PAnsiChar({p}.ConverterValor('{a}'))",
    "forma": "PAnsiChar(ZelFormasPagamento[{p}])", "consulta": "PAnsiChar(ZelTiposConsulta[{p}])",
    "caminho": "PAnsiChar(ZelCaminho('{a}', {p}))", "resultado": "PAnsiChar(Saida)",
    "diretorios": "PAnsiChar(Saida)"}
RESPOSTAS = {"codigo": "Integer", "texto": "TZelTexto", "caminho": "TZelTexto", "estado": "TZelEstado"}
CONSTANTES = {"FormaPagamento": "ZelFormasPagamento", "TipoConsulta": "ZelTiposConsulta"}
PREFIXOS = {"Estado": "ze", "FormaPagamento": "zf", "TipoConsulta": "zt"}


def literal(texto):
    """Lines of pieces of a length that every compiler takes."""
    partes = [texto[i:i + 70] for i in range(0, len(texto), 70)] or [""]
    return [f"TZelTexto('{duplicar(parte)}')" + (" +" if parte is not partes[-1] else "")
            for parte in partes]


def duplicar(texto):
    return texto.replace("'", "''")


def unidade(nome, usa, interface, implementacao):
    return (["{ " + AVISO + " }", f"unit {nome};", "{$I zel.inc}", "", "interface", "",
             f"uses {usa};", ""] + interface + ["implementation", ""] + implementacao + ["end."])


def enumeracao(nome, valores):
    linhas = [f"  TZel{nome} = ("]
    for i, v in enumerate(valores):
        virgula = "," if i + 1 < len(valores) else ");"
        linhas += [f"    {PREFIXOS[nome]}{titulo(v['nome'])}{virgula} {{ {v['rotulo']} }}"]
    return linhas + [""]


def tabelas(t):
    linhas = ["const", "  { O que uma chamada responde. }"]
    linhas += [f"  {c['nome']} = {c['codigo']};" for c in t.codigos]
    linhas += ["  { Tamanhos em bytes. }"]
    linhas += [f"  {nome} = {valor};" for nome, valor in t.tamanhos.items()]
    linhas += ["  ZelDescritor = '" + t.textos["descritor"] + "';",
               "  ZelFormas = '" + t.textos["formas"].replace("Vale Al", "' +\n    'Vale Al") + "';", "",
               "type"]
    for nome, valores in t.enumeracoes.items():
        linhas += enumeracao(nome, valores)
    for nome, argumentos in t.grupos.items():
        linhas += [f"  TZel{nome} = record"]
        linhas += [f"    {titulo(a.nome)}: TZelTexto; {{ {a.significado} }}"
                   for a in argumentos.values()]
        linhas += ["  end;", ""]
    linhas += ["  { The 47 functions. }", "  TZelFuncoes = record"]
    for f in t.funcoes:
        lista = "; ".join(f"A{titulo(a.nome)}: {'Integer' if a.tipo == 'inteiro' else 'PAnsiChar'}"
                          for a in f.argumentos)
        linhas += [f"    {f.nome}: function{f'({lista})' if lista else ''}: Integer; cdecl;"]
    linhas += ["  end;", "", "const"]
    for nome, valores in t.enumeracoes.items():
        if nome in CONSTANTES:
            lista = ", ".join(f"'{v['valor']}'" for v in valores)
            linhas += [f"  {CONSTANTES[nome]}: array[TZel{nome}] of AnsiString = ({lista});"]
    return linhas + [
        "", "type", "  { Finds a function of the library by its name. }",
        "  TZelProcurar = function(const Nome: string): Pointer;", "",
        "procedure ZelCarregarFuncoes(Procurar: TZelProcurar; out Funcoes: TZelFuncoes);",
        "{ Name, meaning and remedy of a code; False when no table has it. }",
        "function ZelDescrever(Codigo: Integer; out Nome, Significado, Remedio: TZelTexto): Boolean;",
        "{ The plain form of a typographic character; False when it has none. }",
        "function ZelTransliterar(Caractere: Cardinal; out Simples: TZelTexto): Boolean;",
        "{ The one letter that a letter and the mark after it make; 0 when there is none. }",
        "function ZelCompor(Letra, Marca: Cardinal): Cardinal;",
        "{ What to do about a library that is not there. }",
        "function ZelAusente: TZelTexto;", ""]


def corpo_das_tabelas(t):
    linhas = ["procedure ZelCarregarFuncoes(Procurar: TZelProcurar; out Funcoes: TZelFuncoes);",
              "begin"]
    linhas += [f"  @Funcoes.{f.nome} := Procurar('{f.nome}');" for f in t.funcoes]
    linhas += ["end;", "",
               "function ZelDescrever(Codigo: Integer; out Nome, Significado, Remedio: TZelTexto): "
               "Boolean;", "begin", "  Result := True;", "  case Codigo of"]
    for c in t.codigos:
        linhas += [f"    {c['nome']}:", "      begin", f"        Nome := '{c['nome']}';"]
        for campo in ("significado", "remedio"):
            linhas += [f"        {titulo(campo)} :="]
            linhas += ["          " + parte for parte in literal(c[campo])]
            linhas[-1] += ";"
        linhas += ["      end;"]
    linhas += ["  else", "    Result := False;", "  end;", "end;", "",
               "function ZelTransliterar(Caractere: Cardinal; out Simples: TZelTexto): Boolean;",
               "begin", "  Result := True;", "  case Caractere of"]
    linhas += [f"    ${ord(de):04X}: Simples := TZelTexto('{duplicar(para)}');"
               for de, para in t.transliteracao]
    linhas += ["  else", "    Result := False;", "  end;", "end;", "",
               "function ZelCompor(Letra, Marca: Cardinal): Cardinal;", "begin",
               "  case Letra shl 12 or Marca of"]
    linhas += [f"    ${ord(letra):02X}{ord(marca):03X}: Result := ${ord(junta):02X};"
               for letra, marca, junta in composicoes()]
    linhas += ["  else", "    Result := 0;", "  end;", "end;", "", "function ZelAusente: TZelTexto;",
               "begin", "  Result :="]
    linhas += ["    " + parte for parte in literal(t.textos["ausente"])]
    linhas[-1] += ";"
    return linhas + ["end;", ""]


def parametros(lista):
    grupos = ((tipo, ", ".join("A" + titulo(p.nome) for p in juntos))
              for tipo, juntos in groupby(lista, lambda p: TIPOS[p.especie]))
    return "; ".join(f"{'' if tipo == 'Integer' else 'const '}{nomes}: {tipo}"
                     for tipo, nomes in grupos)


def cabecalho(f, lista, classe=""):
    resposta = RESPOSTAS.get(f.resultado())
    entre = f"({parametros(lista)})" if lista else ""
    return (f"{'function' if resposta else 'procedure'} {classe}{titulo(f.operacao)}{entre}"
            + (f": {resposta};" if resposta else ";"))


def curta(f):
    """The parameters without the optional ones, or None when that is all of them."""
    obrigatorios = [p for p in f.parametros() if not p.opcional]
    return None if obrigatorios == f.parametros() else obrigatorios


def declaracao(f):
    linhas = wrap(f"{{ {f.resumo} {f.nome}.", 92, subsequent_indent="  ")
    linhas += [f"  A{titulo(p.nome)}: {p.significado}." for p in f.parametros()]
    linhas[-1] += " }"
    if curta(f) is None:
        virtual = " virtual;" if f.operacao == "alterarValor" else ""
        return linhas + [cabecalho(f, f.parametros()) + virtual]
    return linhas + [cabecalho(f, f.parametros()) + " overload;",
                     cabecalho(f, curta(f)) + " overload;"]


def corpo(f):
    nomear = lambda nome: "A" + titulo(nome)
    argumentos = ", ".join(expressoes(f, MODELOS, nomear, titulo))
    linhas = [cabecalho(f, f.parametros(), "TZelOperacoes."), "var", "  Resposta: Integer;"]
    fim = {"codigo": f"  Result := Concluir('{f.nome}', Resposta);",
           "estado": f"  Result := ConcluirEstado('{f.nome}', Resposta);",
           "texto": f"  Result := ConcluirTexto('{f.nome}', Resposta, Saida);",
           "caminho": f"  Result := ConcluirCaminho('{f.nome}', Resposta, Saida);"}
    if f.saida():
        linhas += ["  Saida: RawByteString;"]
    linhas += ["begin"]
    if f.resultado() == "caminho":
        linhas += ["  Saida := ZelDiretorios('diretorios', ADiretorios);"]
    elif f.saida():
        tamanho = "TamanhoDoUltimo" if f.saida().tamanho == "ultimo" else f.saida().tamanho
        linhas += [f"  Saida := ZelSaida({tamanho});"]
    linhas += ["  Entrar;", "  try",
               f"    Resposta := Funcoes.{f.nome}{f'({argumentos})' if argumentos else '()'};",
               "  finally", "    Sair;", "  end;",
               fim.get(f.resultado(), f"  Concluir('{f.nome}', Resposta);"), "end;", ""]
    if curta(f) is not None:
        passados = ", ".join(PADROES[p.especie] if p.opcional else nomear(p.nome)
                             for p in f.parametros())
        volta = "Result := " if f.resultado() != "nada" else ""
        linhas += [cabecalho(f, curta(f), "TZelOperacoes."), "begin",
                   f"  {volta}{titulo(f.operacao)}({passados});", "end;", ""]
    return linhas


def gerar(t):
    interface = ["type", "  { One operation for each function. }",
                 "  TZelOperacoes = class(TZelChamador)", "  public"]
    implementacao = []
    for f in t.operacoes():
        interface += ["    " + linha for linha in declaracao(f)]
        implementacao += corpo(f)
    interface += ["  end;", ""]
    operacoes = unidade("ZelOperacoes", "ZelTipos, ZelTabelas, ZelValores, ZelChamada", interface,
                        implementacao)
    das_tabelas = unidade("ZelTabelas", "ZelTipos", tabelas(t), corpo_das_tabelas(t))
    arquivos = {"ZelTabelas.pas": das_tabelas, "ZelOperacoes.pas": operacoes}
    return {PASTA + nome: list(quebrar_todas(linhas, "//")) for nome, linhas in arquivos.items()}
