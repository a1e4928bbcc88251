// SPDX-License-Identifier: MIT
// Refusals on the way of a receipt: items, payments, issuing, cancellation, printing.
#include "blackbox/Provocacao.h"

#include <gtest/gtest.h>

namespace {

// The stored receipt as somebody else left it, read by the next process.
void guardarCupom(Caixa &c, const std::string &texto) {
    c.parar();
    c.escreverArquivo("ArqPersist.bin", texto);
    c.iniciar();
}

Preparo editado(std::string_view de, std::string_view para) {
    return [=](Caixa &c) {
        std::string texto = c.lerArquivo("ArqPersist.bin");
        for (std::size_t i = 0; (i = texto.find(de, i)) != std::string::npos; i += para.size())
            texto.replace(i, de.size(), para);
        guardarCupom(c, texto);
    };
}

void encherDeItens(Caixa &c) {
    std::string texto = c.lerArquivo("ArqPersist.bin");
    const std::string item = texto.substr(texto.find("02|1|"));
    for (int i = 1; i < 998; ++i)
        texto += item;
    guardarCupom(c, texto);
    EXPECT_EQ(vender(c), ZEL_OK) << "the last one";
    c.config("CONFIGURACAO\\estadoCFe", "3"); // looked at later
}

void mudarParaIcms20(Caixa &c) {
    c.config("IMPOSTO\\ICMS\\ICMS00\\Orig", "");
    c.config("IMPOSTO\\ICMS\\ICMS20\\Orig", "0");
}

// What could not take its place is refused before anything happens.
void documentoComoPasta(Caixa &c) {
    std::filesystem::remove(c.diretorio() + "documentosEnvio.xml");
    comPasta("documentosEnvio.xml")(c);
}

// A PDF is asked for, and the return of the document has that in it.
Preparo retornoComPdf(const char *chave, const std::string &conteudo) {
    return [=](Caixa &c) {
        c.config(chave, "1");
        c.escreverArquivo("retorno.xml",
                          "<DocProtocolo>1</DocProtocolo><DocDhAut>2</DocDhAut><DocDigestValue>3"
                          "</DocDigestValue>" +
                              conteudo);
    };
}

// In the place of that file stands a directory.
void impedirPdf(Caixa &c) {
    const std::string chave(44, '1');
    comPasta("NFe" + chave + "_DANFE.pdf")(c);
    retornoComPdf("CONFIGURACAO\\SalvarDanfePDF",
                  "<SitCodigo>100</SitCodigo><DocChaAcesso>" + chave + "</DocChaAcesso>")(c);
}

const Pedido kVender("aCFVender_ZEL", "T1800", "1", "10.00", "", "", "1", "UN", "Produto");
const Pedido kDesconto("aCFLancarDescontoItem_ZEL", "1", "D$", "1");
const Pedido kCancelar("tCFCancelar_ZEL");

Pedido imprimir(const char *xml, const Texto &retorno, const char *colunas = "48",
                const char *tipo = "1") {
    return Pedido("GerarArquivoFormatadoNF_ZEL", xml, retorno, "", colunas, tipo);
}
const Pedido kImprimir = imprimir("documentosEnvio.xml", "retorno.xml");

const std::vector<Provocacao> kProvocacoes{
    {Motivo::kItensDemais, -1, 2, kVender, "já tem 999 itens", encherDeItens},
    {Motivo::kSemGrupoIcms, -1, 1, kVender, R"(IMPOSTO\ICMS\ICMS00\Orig)",
     configurado("IMPOSTO\\ICMS\\ICMS00\\Orig", "")},
    {Motivo::kImpostoSemValor, -1, 1, kVender,
     R"(IMPOSTO\ICMS\ICMS20\CST: vazio; o grupo de imposto ICMS20)", mudarParaIcms20},
    {Motivo::kImpostoSemValor, -1, 1,
     Pedido("aCFVender_ZEL", "S0500", "1", "10", "", "", "1", "UN", "Servico"),
     R"(IMPOSTO\ISSQN\)"},
    {Motivo::kGrupoDesconhecido, -1, 2, kDesconto, "o grupo de imposto ICMS99",
     editado("ICMS00>", "ICMS99>")},
    {Motivo::kItemInexistente, -11, 2, Pedido("aCFLancarDescontoItem_ZEL", "9", "D$", "1"),
     "item: 9; o cupom tem 1 item"},
    {Motivo::kItemSemProduto, -11, 2, kDesconto, "item: 1; está guardado sem o grupo prod",
     editado("prod>", "pro>")},
    {Motivo::kItemForaDaLista, -99, 2, Pedido("aCFCancelarItem_ZEL", "2"),
     "item: 2; o cupom tem 1 item"},
    {Motivo::kItemMenorQueUm, -99, 2, Pedido("aCFCancelarItem_ZEL", "0"),
     "item: 0; informe 1 ou mais"},
    {Motivo::kItemNegativo, -99, 2, Pedido("aCFCancelarItemParcial_ZEL", "-1", "1"), "item: -1;"},
    {Motivo::kItemJaAjustado, -20, 2, Pedido("aCFLancarAcrescimoItem_ZEL", "0", "A$", "1"),
     "item: 1; já tem acréscimo", depoisDe(Pedido("aCFLancarAcrescimoItem_ZEL", "1", "A$", "1"))},
    {Motivo::kNadaARemover, -21, 2, Pedido("aCFCancelarDescontoItem_ZEL", "1"),
     "item: 1; não tem desconto"},
    {Motivo::kCancelamentoExcessivo, -31, 2, Pedido("aCFCancelarItemParcial_ZEL", "1", "1,5"),
     "quantidade: 1.50; o item tem 1.00"},
    {Motivo::kAjusteExcessivo, -35, 1, Pedido("aCFVender_ZEL", "T1800", "1", "10", "D$", "10,00"),
     "o ajuste, 10.00, deve ser menor que o valor bruto do item, 10.00"},
    {Motivo::kAjusteExcessivo, -35, 2, Pedido("aCFLancarDescontoItem_ZEL", "1", "D%", "120"),
     "o ajuste, 12.00,"},
    {Motivo::kRateioSemValor, -35, 1, Pedido("aCFTotalizar_ZEL", "A$", "1"),
     "valor: 1.00; os itens valem zero",
     depoisDe(Pedido("aCFVender_ZEL", "T1800", "1", "0.00", "", "", "1", "UN", "Produto"))},
    {Motivo::kRateioExcessivo, -35, 2, Pedido("aCFTotalizar_ZEL", "D$", "10"),
     "o item 1 não comporta a sua parte do rateio, 10.00"},
    {Motivo::kRateioSobreAjuste, -35, 2, Pedido("aCFTotalizar_ZEL", "D$", "5"),
     "o item 1 tem um desconto seu e, com a parte do rateio, levaria 11.00;",
     depoisDe(Pedido("aCFLancarDescontoItem_ZEL", "1", "D$", "6"))},
    {Motivo::kJaPago, -34, 4, Pedido("aCFEfetuarPagamento_ZEL", "dinheiro", "1"),
     "os pagamentos, 10.00, já cobrem o total, 10.00: encerre o cupom; esta chamada zerou "
     "CONFIGURACAO\\TrocoUltimaNFCe"},
    {Motivo::kTrocoGrande, -12, 3, Pedido("aCFEfetuarPagamento_ZEL", "dinheiro", "789123456789512"),
     R"(valor: "789123456789512"; o troco não cabe)"},
    {Motivo::kPagamentoInexistente, -12, 4,
     Pedido("aCFEstornarPagamento_ZEL", "cheque", "dinheiro", "10"),
     R"(na forma 02 com o valor "10")"},
    {Motivo::kEncerrarSemItens, -1, 0, Pedido("tCFEncerrarConfigMsg_ZEL"),
     "/ArqPersist.bin não existe ou não tem registros; abra um cupom",
     configurado("CONFIGURACAO\\estadoCFe", "4")},
    {Motivo::kSemDocumento, -52, 0, Pedido("tCFEncerrar_ZEL"), "/ArqPersist.bin não existe",
     configurado("CONFIGURACAO\\estadoCFe", "4")},
    {Motivo::kDocumentoIncompleto, -1, 2, Pedido("tCFEncerrar_ZEL"),
     "falta no cupom guardado: a totalização", configurado("CONFIGURACAO\\estadoCFe", "4")},
    {Motivo::kNumeroDaNota, -1, 5, Pedido("aCFContingenciaUltimaNota_ZEL", "1"),
     R"(IDE\nNF: o número da nota seria 1000000000)", configurado("IDE\\nNF", "999999999")},
    {Motivo::kArquivo, -52, 5, Pedido("aCFContingenciaUltimaNota_ZEL", "3"),
     "documentosEnvio.xml: não é um arquivo comum", documentoComoPasta},
    {Motivo::kArquivo, -52, 5, Pedido("aCFContingenciaUltimaNota_ZEL", "3"),
     "parametrosEnvio.xml.novo: ", comPasta("parametrosEnvio.xml.novo")},
    {Motivo::kArquivo, -52, 5, Pedido("aCFContingenciaUltimaNota_ZEL", "4", "/nao/existe/"),
     "/nao/existe/"},
    {Motivo::kTipoDeEmissao, -1, 5, Pedido("aCFContingenciaUltimaNota_ZEL", "0"),
     "tipo: 0; permitido"},
    {Motivo::kReemitirSemItens, -1, 0, Pedido("aCFContingenciaUltimaNota_ZEL", "1"),
     "não há cupom guardado que se possa emitir de novo; encerre um"},
    {Motivo::kTipoDeEmissao, -1, 5, Pedido("aCFContingenciaUltimaNota_ZEL", "2"),
     "tipo: 2; permitido: 1 (normal)"},
    {Motivo::kTipoDeEmissao, -1, 5, Pedido("aCFContingenciaUltimaNota_ZEL", "6"),
     "tipo: 6; permitido"},
    {Motivo::kContingenciaSemDiretorio, -1, 5, Pedido("aCFContingenciaUltimaNota_ZEL", "4", kNulo),
     "texto: vazio; o tipo 4 precisa de um a três diretórios"},
    {Motivo::kNumeroDaNota, -1, 4, Pedido("tCFEncerrar_ZEL"),
     R"(IDE\nNF: o número da nota seria 1000000000)", configurado("IDE\\nNF", "999999999")},
    {Motivo::kParteDaChave, -1, 4, Pedido("tCFEncerrar_ZEL"),
     R"(IDE\cUF: "PE"; a chave de acesso precisa ali de até 2 caracteres, só dígitos)",
     configurado("IDE\\cUF", "PE")},
    {Motivo::kJaCancelado, -1, 1, kCancelar, "estado 6 (cancelado)", depoisDe(kCancelar)},
    {Motivo::kChaveDeOutroDocumento, -1, 5, kCancelar, R"(não é do documento de IDE\nNF)",
     configurado("IDE\\nNF", "77")},
    {Motivo::kChaveInvalida, -1, 0, Pedido("tCFCancelarOffline_ZEL", "1", "1", "123", "", "/tmp/"),
     R"(chave: "123", 3 caracteres; permitido: exatamente 44 dígitos)"},
    {Motivo::kArgumentoNulo, -99, 0, Pedido("tCFCancelar_ZEL", kNulo), "numero"},
    {Motivo::kCancelamentoSemDiretorio, 0, 0, Pedido("tCFCancelarOffline_ZEL", "1", "1", kChave),
     ": 0: diretorios: vazio"},
    {Motivo::kTipoDeConsulta, -99, 0, Pedido("GeraXMLConsulta_ZEL", "PROTOCOLO"),
     R"(tipo: "PROTOCOLO"; permitido: DATA, NUM ou CHAVE)"},
    {Motivo::kIndice, -99, 2, Pedido("rInfoEstendida_ZEL", "8"),
     R"(indice: "8"; permitido: 1 a 7)"},
    {Motivo::kCaminhoNulo, -1, 0, imprimir("/x", kNulo), "caminhoRetorno: ponteiro nulo"},
    {Motivo::kTipoDeDocumento, -1, 0, imprimir("a", "b", "48", "2"), "tipoDocumento: 2; permitido"},
    {Motivo::kColunas, -1, 0, imprimir("a", "b", "40"), "colunas: 40; permitido: 42 ou 48"},
    {Motivo::kImpressaoIlegivel, -1, 0, imprimir("nada.xml", "OFFLINE"),
     "nada.xml: o arquivo ou o diretório não existe (ENOENT)"},
    {Motivo::kImpressaoIlegivel, -1, 5, kImprimir,
     "retorno.xml: o arquivo ou o diretório não existe (ENOENT)"},
    {Motivo::kCaminhoNulo, -1, 0, Pedido("GerarArquivoFormatadoNF_ZEL", kNulo, "OFFLINE"),
     "caminhoXml: ponteiro nulo"},
    {Motivo::kSaidaNula, -99, 0,
     Pedido("GerarArquivoFormatadoNF_ZEL", "", "OFFLINE", "", "48", "1", "", kNulo),
     "ponteiro nulo"},
    {Motivo::kImpressaoSemElemento, -1, 5, kImprimir, "<DocProtocolo>: falta",
     comArquivo("retorno.xml", "<Retorno/>")},
    {Motivo::kImpressaoSemChave, -1, 0, imprimir("a.xml", "OFFLINE"),
     R"(infNFe Id: "NFe12"; devia trazer a chave)", comArquivo("a.xml", "<infNFe Id=\"NFe12\">")},
    {Motivo::kPdfSemBase64, -1, 0, Pedido("GeraPDF_ZEL", "###"), "3 caracteres; não é base64"},
    {Motivo::kPdfSemBase64, -1, 0, Pedido("GeraPDF_DANFE_ZEL", "###"),
     "3 caracteres; não é base64"},
    {Motivo::kPdfSemChave, -1, 0, Pedido("GeraPDF_ZEL", "PGE+MTwvYT4="),
     "não tem infNFe com o atributo Id"},
    {Motivo::kPdfSemDocumento, -1, 5, kImprimir, "não traz o documento, DocXMLBase64",
     retornoComPdf("CONFIGURACAO\\SalvarXMLPDF", "<SitCodigo>100</SitCodigo>")},
    {Motivo::kNaoAutorizado, -24, 5, kImprimir, R"(SitCodigo do retorno: "204")",
     retornoComPdf("CONFIGURACAO\\SalvarDanfePDF", "<SitCodigo>204</SitCodigo>")},
    {Motivo::kPdfNaoGravado, -23, 5, kImprimir, "_DANFE.pdf: não é um arquivo comum", impedirPdf},
};

} // namespace

std::vector<Provocacao> provocacoesDaVenda() {
    return kProvocacoes;
}
