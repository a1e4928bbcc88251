#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Turns the results of one run into a Markdown table, with the goals beside the figures:

    tabela.py BENCH.json VENDA.json PICO.json PAR.json [antes.json] [figuras.json] [documentos.json] [par_xml.json]
    tabela.py documentos.json [par_xml.json]    that part alone

Ends with 1 when a benchmark failed; a goal that is not reached is a result, not a failure.
"""
import json
import sys
from pathlib import Path

OPERACOES = {
    "abertura": "Abertura",
    "venda_1": "Venda 1 (muda o estado)",
    "venda_2": "Venda 2",
    "venda_10": "Venda 10",
    "venda_999": "Venda 999",
    "venda_1_transportadora": "Venda 1, com transportadora",
    "venda_2_transportadora": "Venda 2, com transportadora",
    "venda_999_transportadora": "Venda 999, com transportadora",
    "desconto_item": "Desconto em item, de 10",
    "desconto_item_de_999": "Desconto em item, de 999",
    "cancelamento_parcial": "Cancelamento parcial de item, de 10",
    "cancelamento_parcial_de_999": "Cancelamento parcial de item, de 999",
    "cancelamento_item": "Cancelamento de item, de 10",
    "totalizacao": "Totalização, 10 itens",
    "totalizacao_rateio": "Totalização com rateio, 10 itens",
    "totalizacao_999": "Totalização, 999 itens",
    "totalizacao_rateio_999": "Totalização com rateio, 999 itens",
    "pagamento_parte": "Pagamento parcial",
    "pagamento": "Pagamento que completa o total",
    "correcao_pagamento": "Correção de pagamento",
    "encerramento": "Encerramento, 10 itens",
    "contingencia_parametros": "Reemissão em contingência (tipo 3)",
    "contingencia_arquivo": "Reemissão em contingência (tipo 4)",
    "cancelamento_documento": "Pedido de cancelamento",
    "cancelamento_offline": "Cancelamento sem conexão",
    "inutilizacao": "Inutilização",
    "consulta": "Consulta",
    "estado": "Estado do cupom",
    "informacao": "Informação estendida",
    "config_leitura": "Leitura de um valor da configuração",
    "config_alteracao": "Alteração de um valor da configuração",
    "config_sem_mudanca": "Alteração para o mesmo valor",
    "preset_icms": "ICMS do próximo item",
    "preset_pis": "PIS do próximo item",
    "url_qrcode": "Endereço do QR-code",
    "ultimo_cupom": "Último cupom impresso",
    "impressao/1": "Impressão em 48 colunas, 1 item",
    "impressao/10": "Impressão em 48 colunas, 10 itens",
    "impressao/100": "Impressão em 48 colunas, 100 itens",
    "impressao/999": "Impressão em 48 colunas, 999 itens",
    "pdf_danfe": "PDF do cupom, 10 itens",
    "pdf_listagem": "PDF da listagem, 10 itens",
    "criptografar": "Embaralhar um documento",
    "descriptografar": "Desembaralhar um documento",
    "carga/1": "Carga com cupom de 1 item em andamento",
    "carga/999": "Carga com cupom de 999 itens em andamento",
}
FIGURAS = {
    "png/10": "PNG, 10 itens",
    "png_novo/10": "PNG, 10 itens, com a abertura das fontes",
    "png/100": "PNG, 100 itens",
    "svg/10": "SVG, 10 itens",
    "svg/100": "SVG, 100 itens",
    "escpos/10": "Bytes para a impressora, 10 itens",
    "escpos_pontos/10": "Bytes para a impressora, 10 itens, QR-code em pontos",
    "escpos/100": "Bytes para a impressora, 100 itens",
}
DOCUMENTOS = {
    "ler": "ler o documento do caixa",
    "traduzir": "e traduzi-lo",
    "assinar": "ler o traduzido, assinar, QR Code",
    "julgar": "ler o traduzido, conferir com os esquemas",
    "tudo": "**tudo**: do arquivo do caixa à mensagem",
    "verificar": "ler a mensagem e verificá-la",
}
BASES = ("disco", "memoria")


def ler(caminho):
    with open(caminho, encoding="utf-8") as arquivo:
        return json.load(arquivo)


def medianas(resultado):
    """The median over the repetitions of each benchmark, by "base/name"."""
    valores = {}
    for medida in resultado["benchmarks"]:
        if medida.get("error_occurred"):
            sys.exit(f"{medida['name']}: {medida['error_message']}")
        if medida.get("aggregate_name") == "median":
            valores[medida["run_name"].split("/iterations:")[0]] = medida
    return valores


def numero(valor, casas=None):
    """With a decimal comma and three significant digits, unless asked for a number of decimals."""
    if casas is None:
        casas = 0 if valor >= 100 else 1 if valor >= 10 else 2
    return f"{valor:,.{casas}f}".replace(",", " ").replace(".", ",")


def us(segundos):
    return numero(segundos * 1e6)


def sobreAntes(valores, nome, campo):
    """How many times what the version before took; empty where it was not measured."""
    antes = valores.get(f"antes/{nome}", {}).get(campo)
    return numero(valores[nome][campo] / antes, 2) if antes else ""


def qualAntes(antes, medida):
    """One sentence on the column of the version before."""
    if not antes or not antes["versao"]:
        return f"A coluna \"antes\" está vazia: {antes['motivo'] if antes else 'nenhuma versão anterior foi pedida'}."
    return (f"\"antes\": {medida} sobre o da versão anterior ({antes['versao']}), compilada do git do mesmo modo "
            "e medida na mesma execução.")


def linha(*celulas):
    print("| " + " | ".join(celulas) + " |")


def cabecalho(*titulos):
    linha(*titulos)
    linha(*(["---"] + ["---:"] * (len(titulos) - 1)))


def operacoes(valores, antes):
    print("\n## Cada operação\n")
    cabecalho("Operação", "disco µs", "tmpfs µs", "processador µs", "antes", "bytes escritos", "descargas")
    for nome, titulo in OPERACOES.items():
        disco, memoria = (valores[f"{base}/{nome}"] for base in BASES)
        linha(titulo, us(disco["mediana"]), us(memoria["mediana"]), us(memoria["processador"]),
              sobreAntes(valores, f"memoria/{nome}", "processador"), numero(memoria["escrito"], 0), numero(memoria["descargas"], 0))
    print("\nTempo por chamada (mediana); o processador, com as chamadas de sistema, em tmpfs.\n"
          + qualAntes(antes, "o processador"))


def cupons(valores, antes):
    print("\n## Cupons inteiros e o piso\n")
    print("O piso: um programa que, para o mesmo cupom, acrescenta a um arquivo comum, aberto uma\n"
          "vez, os bytes que cada operação durável mudou (o que um arquivo cresceu; o trecho que\n"
          "mudou num do mesmo tamanho; um arquivo que mudou de outro modo, inteiro), com um `write` e\n"
          "um `fdatasync` por operação, e mais nada. Biblioteca e piso são medidos\n"
          "alternadamente; a razão é a mediana dos pares.\n")
    cabecalho("Cupom", "disco µs", "piso µs", "razão", "antes", "tmpfs µs", "piso µs", "razão", "antes",
              "bytes escritos", "no piso", "descargas", "no piso")
    for itens in (1, 10, 100, 999):
        disco, memoria = (valores[f"{base}/cupom/{itens}"] for base in BASES)
        celulas = []
        for base, medida in zip(BASES, (disco, memoria)):
            celulas += [us(medida["mediana"]), us(medida["par_mediana"]), numero(medida["razao"], 2),
                        sobreAntes(valores, f"{base}/cupom/{itens}", "mediana")]
        linha(f"{itens} itens" if itens > 1 else "1 item", *celulas,
              numero(memoria["escrito"], 0), numero(memoria["par_escrito"], 0),
              numero(memoria["descargas"], 0), numero(memoria["par_descargas"], 0))
    print("\n" + qualAntes(antes, "o tempo"))
    print("\nNum disco em que cada descarga leva 10 ms a mais (um cartão SD, um disco antigo; a espera é\n"
          "posta entre a biblioteca e o sistema):\n")
    cabecalho("Cupom", "ms", "piso ms", "razão")
    for itens in (1, 10):
        lento = valores[f"lento/cupom/{itens}"]
        linha(f"{itens} itens" if itens > 1 else "1 item", numero(lento["mediana"] * 1e3),
              numero(lento["par_mediana"] * 1e3), numero(lento["razao"], 2))



def listar_metas(valores, venda):
    """What is asked, what it was before the journal, the figure, its bound, and the unit."""
    mem = lambda nome, campo="processador": valores[f"memoria/{nome}"][campo]
    linear = 999 / 100
    mudam = ("abertura", "venda_1", "totalizacao", "pagamento")
    com = "_transportadora"
    return [
        ("Descargas de um cupom de 10 itens", 31, mem("cupom/10", "descargas"), 15, ""),
        ("Descargas do encerramento", 6, mem("encerramento", "descargas"), 1, ""),
        ("Cupom de 10 itens sobre o piso, em disco", 3.0, valores["disco/cupom/10"]["razao"], 1.3,
         "×"),
        ("Cupom de 10 itens sobre o piso, em tmpfs", 21.9, mem("cupom/10", "razao"), 5, "×"),
        ("Venda 10, processador", 24, mem("venda_10") * 1e6, 12, "µs"),
        ("A mais lenta de abertura, venda 1, totalização e pagamento que completa, processador",
         156, max(map(mem, mudam)) * 1e6, 40, "µs"),
        ("Totalização com rateio, 999 itens, processador", 17,
         mem("totalizacao_rateio_999") * 1e3, 4, "ms"),
        ("Venda 999 sobre a venda 1, processador", None, mem("venda_999") / mem("venda_1"), 1.1,
         "×"),
        ("Venda 999 sobre a venda 2, processador", 1.04, mem("venda_999") / mem("venda_2"), 1.1,
         "×"),
        ("Venda 999 sobre a venda 2, com transportadora, processador", 1.04,
         mem("venda_999" + com) / mem("venda_2" + com), 1.1, "×"),
        ("Venda 999 sobre a venda 2, bytes escritos", None,
         mem("venda_999", "escrito") / mem("venda_2", "escrito"), 1.5, "×"),
        ("Carga de um processo com cupom de 1 item, em tmpfs", 4,
         mem("carga/1", "mediana") * 1e3, 1, "ms"),
        ("Carga de um processo com cupom de 999 itens, a mais lenta", None,
         max(valores[f"{base}/carga/999"]["mediana"] for base in BASES) * 1e3, 10, "ms"),
        ("Processador de uma venda além das suas chamadas de sistema", None,
         mem("venda_seguida", "excesso") * 1e6, 25, "µs"),
        ("Impressão de 999 itens sobre 9,99 vezes a de 100, processador", None,
         mem("impressao/999") / (mem("impressao/100") * linear), 1.2, "×"),
        ("Bytes alocados por venda, média das vendas 904 a 999 menos a das vendas 104 a 199", None,
         venda["media_904_a_999"] - venda["media_104_a_199"], 1, "bytes"),
        (f"Bytes alocados na venda que mais aloca (a {venda['maior_em']}) sobre os da venda 2",
         None, venda["maior"] / venda["venda_2"], 1.5, "×"),
    ]


def metas(valores, venda, par):
    print("\n## Metas\n")
    cabecalho("Meta", "antes do diário", "medido", "no máximo", "")
    for titulo, antes, medido, maximo, unidade in listar_metas(valores, venda):
        inteiro = unidade in ("bytes", "")
        com_unidade = lambda valor: (
            "" if valor is None else f"{numero(valor, 0 if inteiro else 2)} {unidade}".strip())
        linha(titulo, com_unidade(antes), com_unidade(medido), com_unidade(maximo),
              "atingida" if medido <= maximo else "**não atingida**")
    if par:
        print(f"\nUm item montado em memória pelo pacote node-sped-nfe {par['versao']} "
              f"(Node {par['node']}), sem gravar\nnada, na mesma execução: "
              f"{numero(par['item_us'])} µs; a venda 10 desta biblioteca, gravada em tmpfs: "
              f"{us(valores['memoria/venda_10']['processador'])} µs.")
    else:
        print("\nO pacote node-sped-nfe não foi medido: faltam Node ou o pacote nesta máquina.")


def figuras(valores):
    ms = lambda nome: valores[f"figura/{nome}"]["processador"] * 1e3
    print("\n## O cupom em imagem e para a impressora\n")
    cabecalho("Cupom em 48 colunas", "processador ms")
    for nome, titulo in FIGURAS.items():
        linha(titulo, numero(ms(nome)))
    print()
    for titulo, nome, maximo in (("PNG de 10 itens", "png_novo/10", 20),
                                 ("bytes para a impressora de 10 itens", "escpos_pontos/10", 1)):
        print(f"Meta: {titulo} em até {maximo} ms; "
              f"{'atingida' if ms(nome) <= maximo else '**não atingida**'}.")


def documentos(resultado, par):
    valores = medianas(resultado)
    tamanhos = sorted({int(nome.split("/")[2]) for nome in valores})
    ms = lambda nome, itens: valores[f"documento/{nome}/{itens}"]["processador"] * 1e3
    print("\n## O documento que a SEFAZ recebe\n")
    cabecalho("Processador, ms", *(f"{itens} itens" for itens in tamanhos), "de 50 a 990, por item")
    for nome, titulo in DOCUMENTOS.items():
        if f"documento/{nome}/10" in valores:
            linha(titulo, *(numero(ms(nome, itens)) for itens in tamanhos),
                  numero(ms(nome, 990) / ms(nome, 50) / (990 / 50), 2) + " ×")
    print("\nCertificado RSA-2048 e esquemas já lidos, como num serviço que assina um documento depois do outro;"
          "\no leiaute 4.00 tem no máximo 990 itens. "
          + ("Os esquemas publicados conferem." if resultado["context"]["esquemas"] else
             "**Sem os esquemas**: `ZEL_ESQUEMAS` não diz a pasta deles.") + "\n")
    for itens, maximo in ((10, 6), (990, 120)):
        print(f"Meta: {itens} itens em até {maximo} ms; {numero(ms('tudo', itens))} ms, "
              f"{'atingida' if ms('tudo', itens) <= maximo else '**não atingida**'}.")
    if not par:
        print("\nPacotes de XML em JavaScript não foram medidos: faltam Node ou os pacotes nesta máquina.")
        return
    print(f"\nPacotes gerais de XML em JavaScript (Node {par['node']}), nos mesmos documentos, na mesma execução:\n")
    cabecalho("Processador, ms", *(f"{itens} itens" for itens in par["medidos"]))
    for titulo, nome in ((f"fast-xml-parser {par['leitor']}: ler o do caixa e escrevê-lo, sem traduzir", "ler_e_escrever"),
                         (f"xml-crypto {par['assinatura']}: ler o traduzido e assiná-lo, sem QR Code", "assinar")):
        linha(titulo, *(numero(m[nome]) for m in par["medidos"].values()))


def memoria(venda, pico):
    print("\n## Memória\n")
    itens = pico["itens"]
    linha(f"Cupom de {itens} itens, da abertura ao texto impresso", "bytes", "por item")
    linha("---", "---:", "---:")
    for titulo, bytes_ in (
            ("Documento", pico["documento"]),
            ("Pico de `operator new` até o encerramento", pico["heap_emissao"]),
            ("Pico de `operator new` na impressão", pico["heap_impressao"]),
            ("Pico do processo (VmHWM) acima do de um cupom de 1 item",
             pico["residente"])):
        linha(titulo, numero(bytes_, 0), numero(bytes_ / itens, 0))
    print(f"\nUma venda aloca, ao todo, {numero(venda['venda_2'], 0)} bytes (venda 2), "
          f"{numero(venda['venda_999'], 0)} bytes (venda 999).")


def main():
    mais = {Path(nome).stem: ler(nome) for nome in sys.argv[1:]}
    if "bench" not in mais and "documentos" in mais:
        return documentos(mais["documentos"], mais.get("par_xml"))
    if len(sys.argv) < 5:
        sys.exit(__doc__)
    resultado, venda, pico, par = map(ler, sys.argv[1:5])
    valores = medianas(resultado)
    contexto = resultado["context"]
    print("# Medidas de uma execução\n")
    print(f"{contexto['date'][:10]}, {contexto['num_cpus']} processadores de "
          f"{contexto['mhz_per_cpu']} MHz. Tempos absolutos são desta máquina; valem as razões.")
    metas(valores, venda, par)
    cupons(valores, mais.get("antes"))
    operacoes(valores, mais.get("antes"))
    memoria(venda, pico)
    if "figuras" in mais:
        figuras(medianas(mais["figuras"]))
    if "documentos" in mais:
        documentos(mais["documentos"], mais.get("par_xml"))


if __name__ == "__main__":
    main()
