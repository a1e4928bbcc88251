// SPDX-License-Identifier: MIT
// Document reader and receipt layouts. The first byte chooses columns, form and kind, then come
// document and return, parted by a zero byte. The receipt fits the buffer that it asks for.
#include "PastaDoAlvo.h"

#include "ZEL_FelborFramework.h"
#include "config/Registro.h"
#include "impressao/GerenciadorImpressao.h"
#include "impressao/Impressao.h"
#include "impressao/Setores.h"

using namespace zel;

void jogar(std::string_view texto) {
    static const PastaDoAlvo pasta;
    static const int pronta = inicializarConfig();
    const int escolha = tirarNumero(texto, 8);
    const int colunas = escolha & 1 ? 42 : 48;
    const char *xml = escolha & 2 ? "nota.ctg" : "nota.xml";
    pasta.gravar(xml, tirarAte(texto, '\0'));
    pasta.gravar("retorno.xml", texto);
    const std::string_view retorno = texto.empty() ? kOffline : "retorno.xml";

    ST_PersitenceXML_ZEL emCurso;
    DadosImpressao impressao;
    TotalImposto total;
    CupomFiscal cf;
    std::string itens;
    std::string saida;
    if (parseXMLCupomFiscal(total, xml, retorno, cf)) {
        std::size_t maiorDescricao = 0;
        for (const Item &item : cf.Itens)
            maiorDescricao =
                std::max(maiorDescricao, std::string_view(item.DescricaoProduto).size());
        imprimirSetor_III(*createLayout(colunas), cf.Itens, itens);
        exigir(itens.size() <= (300 + maiorDescricao) * cf.Itens.size());
        exigir(layoutNFC(emCurso, impressao, cf, "", colunas, saida, (escolha & 4) != 0) == ZEL_OK);
        const std::string_view mensagem = cf.MsgPromocional;
        const auto linhas = static_cast<std::size_t>(std::ranges::count(mensagem, '\n'));
        exigir(saida.size() <
               8192 + 2 * (mensagem.size() + linhas) + itens.size() + 100 * cf.Pagamentos.size());
    }
    const int tipo = escolha & 4 ? 5 : 1;
    const int codigo = fnGerarArquivoFormatadoNF(emCurso, impressao, total,
                                                 {xml, retorno, "", colunas, tipo}, saida);
    exigir(pronta == ZEL_OK && (codigo == ZEL_OK || (codigo == ZEL_RECUSADO && saida.empty())));
}
