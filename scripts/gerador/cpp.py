# SPDX-License-Identifier: MIT
"""C++17: the tables and the operations of include/zel_felbor."""
from .tabela import AVISO, composicoes, expressoes, literal, quebrar_todas, sem_prefixo, titulo

INICIO = [f"// {AVISO}", "// clang-format off", "#pragma once", ""]
TIPOS = {"texto": "std::string_view", "caminho": "std::string_view", "inteiro": "int",
         "documento": "std::string_view", "decimal": "const Decimal &", "percentual": "const Decimal &",
         "aliquota": "const Aliquota &", "ajuste": "const Ajuste &", "forma": "FormaPagamento",
         "consulta": "TipoConsulta", "diretorios": "const std::vector<std::string> &"}
PADROES = {"texto": ' = ""', "ajuste": " = {}", "decimal": " = std::nullopt"}
MODELOS = {
    "texto": 'c.texto("{a}", {p}{limites})', "texto.obrigatorio": 'c.obrigatorio("{a}", {p}{limites})',
    "identificacao": "c.identificacao({p})", "documento": 'c.documento("{a}", {p})',
    "grupo": 'c.texto("{a}", {p}.{membro}{limites})', "fixo": '""',
    "inteiro": 'c.inteiro("{a}", {p}{limites})', "decimal": 'c.decimal("{a}", {p}, {casas})',
    "decimal.opcional": 'c.decimal("{a}", {p}, {casas})',
    "percentual": 'c.decimal("{a}", {p}, 2)', "aliquota": 'c.aliquota("{a}", {p})',
    "ajuste.tipo": 'c.tipoDeAjuste("{a}", {p}, "{sentido}")',
    "ajuste.valor": 'c.valorDeAjuste("{a}", {p})', "forma": "textoDe({p})",
    "consulta": "textoDe({p})", "caminho": 'c.caminho("{a}", {p})',
    "diretorios": 'c.diretorios("{a}", {p})'}
RESPOSTAS = {"nada": ("Resultado", "resultado"), "codigo": ("Resultado", "resultado"),
             "texto": ("Com<std::string>", "comTexto"), "estado": ("Com<Estado>", "comEstado"),
             "caminho": ("Com<std::string>", "comCaminho")}


def enumeracao(nome, valores):
    textual = isinstance(valores[0]["valor"], str)
    linhas = [f"enum class {nome} {{"]
    for v in valores:
        igual = "" if textual else f" = {v['valor']}"
        linhas.append(f"    {titulo(v['nome'])}{igual}, // {v['rotulo']}")
    linhas += ["};", ""]
    if textual:
        linhas += [f"constexpr const char *textoDe({nome} valor) noexcept {{",
                   "    switch (valor) {"]
        for v in valores:
            linhas += [f"    case {nome}::{titulo(v['nome'])}:",
                       f"        return {literal(v['valor'])};"]
        linhas += ["    }", '    return "";', "}", ""]
    return linhas


def tabelas(t):
    linhas = [*INICIO, '#include "ZEL_FelborFramework.h"', "", "#include <string>", "",
              "namespace zel_felbor {", "", "enum class Codigo : int {"]
    linhas += [f"    {titulo(sem_prefixo(c))} = {c['nome']}," for c in t.codigos]
    linhas += ["};", "", "struct DescricaoDeCodigo {", "    Codigo codigo;",
               "    const char *nome, *significado, *remedio;", "};", "",
               "inline constexpr DescricaoDeCodigo codigos[] = {"]
    for c in t.codigos:
        linhas += [f"    {{Codigo::{titulo(sem_prefixo(c))}, {literal(c['nome'])},",
                   f"     {literal(c['significado'])},", f"     {literal(c['remedio'])}}},"]
    linhas += ["};", ""]
    for nome, valores in t.enumeracoes.items():
        linhas += enumeracao(nome, valores)
    for nome, argumentos in t.grupos.items():
        linhas += [f"struct {nome} {{"]
        linhas += [f"    std::string {a.nome}{{}}; // {a.significado}" for a in argumentos.values()]
        linhas += ["};", ""]
    linhas += ["// Of an anonymous file in memory.",
               f"inline constexpr const char *descritor = {literal(t.textos['descritor'])};",
               "// Codes and texts of the payment forms.",
               f"inline constexpr const char *formas = {literal(t.textos['formas'])};", "",
               "// Letters in two parts, and in one.", "struct Composicao {",
               "    char32_t letra, marca, junta;", "};", "",
               "inline constexpr Composicao composicoes[] = {"]
    linhas += [f"    {{0x{ord(letra):02X}, 0x{ord(marca):04X}, 0x{ord(junta):02X}}},"
               for letra, marca, junta in composicoes()]
    linhas += ["};", ""]
    linhas += ["struct Transliteracao {", "    char32_t de;", "    const char *para;", "};", "",
               "inline constexpr Transliteracao transliteracoes[] = {"]
    linhas += [f"    {{0x{ord(de):04X}, {literal(para)}}}," for de, para in t.transliteracao]
    return linhas + ["};", "", "} // namespace zel_felbor"]


def parametro(p):
    tipo = TIPOS.get(p.especie, f"const {p.especie} &")
    padrao = ""
    if p.opcional:
        padrao = PADROES.get(p.especie, " = {}")
        if p.especie == "decimal":
            tipo = "const std::optional<Decimal> &"
    return f"{tipo}{'' if tipo.endswith('&') else ' '}{p.nome}{padrao}"


def operacao(f):
    tipo, fim = RESPOSTAS[f.resultado()]
    modelos = dict(MODELOS)
    if f.saida():
        modelos["resultado"] = ("c.saida(tamanhoDoUltimoCupom())" if f.saida().tamanho == "ultimo"
                                else f"c.saida({f.saida().tamanho})")
    argumentos = ", ".join(expressoes(f, modelos, str))
    linhas = [f"// {f.resumo} {f.nome}."]
    linhas += [f"//   {p.nome}: {p.significado}" for p in f.parametros()]
    linhas += [f"{tipo} {f.operacao}({', '.join(map(parametro, f.parametros()))}) {{",
               f"    Chamada c(*this, \"{f.nome}\");",
               f"    c.invocar(::{f.nome}, std::tuple{{{argumentos}}});",
               f"    return c.{fim}();", "}", ""]
    return ["    " + linha if linha else "" for linha in linhas]


def operacoes(t):
    linhas = [*INICIO, '#include "zel_felbor/chamada.hpp"', "",
              "namespace zel_felbor {", "", "// One operation for each function.",
              "class Operacoes : public Ambiente {", "public:", "    using Ambiente::Ambiente;", ""]
    for f in t.operacoes():
        linhas += operacao(f)
    linhas += ["private:", "    std::size_t tamanhoDoUltimoCupom() const {",
               "        const auto gravado = "
               'detalhe::tamanhoDoArquivo(arquivo("ultimadanfe.bin"));',
               "        return std::max<std::size_t>(ZEL_TAMANHO_CUPOM, gravado + 1);", "    }"]
    return linhas + ["};", "", "} // namespace zel_felbor"]


def gerar(t):
    return {"include/zel_felbor/tabelas.hpp": tabelas(t),
            "include/zel_felbor/operacoes.hpp": list(quebrar_todas(operacoes(t), "//"))}
