// SPDX-License-Identifier: MIT
// Refusals on the way of a receipt: items, payments, issuing, cancellation, printing.
#include "blackbox/Provocacao.h"

namespace fs = std::filesystem;

namespace {

// The stored receipt as somebody else left it, read by the next process.
void editarCupom(Caixa &c, std::string_view de, std::string_view para) {
    std::string texto = c.lerArquivo("ArqPersist.bin");
    for (std::size_t i = 0; (i = texto.find(de, i)) != std::string::npos; i += para.size())
        texto.replace(i, de.size(), para);
    c.parar();
    c.escreverArquivo("ArqPersist.bin", texto);
    c.iniciar();
}

int imprimir(Caixa &c, const std::string &xml, const std::string &retorno, int colunas = 48,
             int tipo = 1) {
    std::vector<char> saida(ZEL_TAMANHO_CUPOM);
    return c->GerarArquivoFormatadoNF_ZEL((c.diretorio() + xml).c_str(),
                                          retorno == "OFFLINE" ? "OFFLINE"
                                                               : (c.diretorio() + retorno).c_str(),
                                          "", colunas, tipo, "", saida.data());
}

// A closed document with a return of that content.
int imprimirRetorno(Caixa &c, const std::string &conteudo) {
    levarAoEstado(c, 5);
    c.escreverArquivo("retorno.xml",
                      "<DocProtocolo>1</DocProtocolo><DocDhAut>2</DocDhAut><DocDigestValue>3"
                      "</DocDigestValue>" +
                          conteudo);
    return imprimir(c, "documentosEnvio.xml", "retorno.xml");
}

int cancelarOffline(Caixa &c, const char *chave, const std::string &lista) {
    char diretorios[ZEL_TAMANHO_DIRETORIOS] = {};
    lista.copy(diretorios, lista.size());
    return c->tCFCancelarOffline_ZEL("1", "1", chave, "", diretorios);
}

const std::string kChave(44, '1');

const std::vector<Provocacao> kProvocacoes{
    {Motivo::kItensDemais, "aCFVender_ZEL",
     [](Caixa &c) {
         levarAoEstado(c, 2);
         std::string texto = c.lerArquivo("ArqPersist.bin");
         const std::string item = texto.substr(texto.find("02|1|"));
         std::string todos = texto;
         for (int i = 1; i < 999; ++i)
             todos += item;
         editarCupom(c, texto, todos);
         return vender(c);
     },
     "já tem 999 itens"},
    {Motivo::kSemGrupoIcms, "aCFVender_ZEL",
     [](Caixa &c) {
         c.config("IMPOSTO\\ICMS\\ICMS00\\Orig", "");
         levarAoEstado(c, 1);
         return vender(c);
     },
     R"(IMPOSTO\ICMS\ICMS00\Orig)"},
    {Motivo::kImpostoSemValor, "aCFVender_ZEL",
     [](Caixa &c) {
         c.config("IMPOSTO\\ICMS\\ICMS00\\Orig", "");
         c.config("IMPOSTO\\ICMS\\ICMS20\\Orig", "0");
         levarAoEstado(c, 1);
         return vender(c);
     },
     R"(IMPOSTO\ICMS\ICMS20\CST: vazio; o grupo de imposto ICMS20)"},
    {Motivo::kImpostoSemValor, "aCFVender_ZEL",
     [](Caixa &c) {
         levarAoEstado(c, 1);
         return c->aCFVender_ZEL("S0500", "1", "10", "", "", "1", "UN", "Servico");
     },
     R"(IMPOSTO\ISSQN\)"},
    {Motivo::kGrupoDesconhecido, "aCFLancarDescontoItem_ZEL",
     [](Caixa &c) {
         levarAoEstado(c, 2);
         editarCupom(c, "ICMS00>", "ICMS99>");
         return c->aCFLancarDescontoItem_ZEL(1, "D$", "1");
     },
     "o grupo de imposto ICMS99"},
    {Motivo::kItemInexistente, "aCFLancarDescontoItem_ZEL",
     [](Caixa &c) {
         levarAoEstado(c, 2);
         return c->aCFLancarDescontoItem_ZEL(9, "D$", "1");
     },
     "item: 9; o cupom tem 1 item"},
    {Motivo::kItemSemProduto, "aCFLancarDescontoItem_ZEL",
     [](Caixa &c) {
         levarAoEstado(c, 2);
         editarCupom(c, "prod>", "pro>");
         return c->aCFLancarDescontoItem_ZEL(1, "D$", "1");
     },
     "item: 1; está guardado sem o grupo prod"},
    {Motivo::kItemForaDaLista, "aCFCancelarItem_ZEL",
     [](Caixa &c) {
         levarAoEstado(c, 2);
         return c->aCFCancelarItem_ZEL(2);
     },
     "item: 2; o cupom tem 1 item"},
    {Motivo::kItemMenorQueUm, "aCFCancelarItem_ZEL",
     [](Caixa &c) {
         levarAoEstado(c, 2);
         return c->aCFCancelarItem_ZEL(0);
     },
     "item: 0; informe 1 ou mais"},
    {Motivo::kItemNegativo, "aCFCancelarItemParcial_ZEL",
     [](Caixa &c) {
         levarAoEstado(c, 2);
         return c->aCFCancelarItemParcial_ZEL(-1, "1");
     },
     "item: -1;"},
    {Motivo::kItemJaAjustado, "aCFLancarAcrescimoItem_ZEL",
     [](Caixa &c) {
         levarAoEstado(c, 2);
         EXPECT_EQ(c->aCFLancarAcrescimoItem_ZEL(1, "A$", "1"), ZEL_OK);
         return c->aCFLancarAcrescimoItem_ZEL(0, "A$", "1");
     },
     "item: 1; já tem acréscimo"},
    {Motivo::kNadaARemover, "aCFCancelarDescontoItem_ZEL",
     [](Caixa &c) {
         levarAoEstado(c, 2);
         return c->aCFCancelarDescontoItem_ZEL(1);
     },
     "item: 1; não tem desconto"},
    {Motivo::kCancelamentoExcessivo, "aCFCancelarItemParcial_ZEL",
     [](Caixa &c) {
         levarAoEstado(c, 2);
         return c->aCFCancelarItemParcial_ZEL(1, "1,5");
     },
     "quantidade: 1.50; o item tem 1.00"},
    {Motivo::kAjusteExcessivo, "aCFVender_ZEL",
     [](Caixa &c) {
         levarAoEstado(c, 1);
         return c->aCFVender_ZEL("T1800", "1", "10", "D$", "10,00", "1", "UN", "X");
     },
     "o ajuste, 10.00, deve ser menor que o valor bruto do item, 10.00"},
    {Motivo::kAjusteExcessivo, "aCFLancarDescontoItem_ZEL",
     [](Caixa &c) {
         levarAoEstado(c, 2);
         return c->aCFLancarDescontoItem_ZEL(1, "D%", "120");
     },
     "o ajuste, 12.00,"},
    {Motivo::kRateioSemValor, "aCFTotalizar_ZEL",
     [](Caixa &c) {
         levarAoEstado(c, 1);
         EXPECT_EQ(vender(c, "0.00"), ZEL_OK);
         return c->aCFTotalizar_ZEL("A$", "1");
     },
     "valor: 1.00; os itens valem zero"},
    {Motivo::kRateioExcessivo, "aCFTotalizar_ZEL",
     [](Caixa &c) {
         levarAoEstado(c, 2);
         return c->aCFTotalizar_ZEL("D$", "10");
     },
     "o item 1 não comporta a sua parte do rateio, 10.00"},
    {Motivo::kJaPago, "aCFEfetuarPagamento_ZEL",
     [](Caixa &c) {
         levarAoEstado(c, 4);
         return c->aCFEfetuarPagamento_ZEL("dinheiro", "1");
     },
     "os pagamentos, 10.00, já cobrem o total, 10.00"},
    {Motivo::kTrocoGrande, "aCFEfetuarPagamento_ZEL",
     [](Caixa &c) {
         levarAoEstado(c, 3);
         return c->aCFEfetuarPagamento_ZEL("dinheiro", "789123456789512");
     },
     R"(valor: "789123456789512"; o troco não cabe)"},
    {Motivo::kPagamentoInexistente, "aCFEstornarPagamento_ZEL",
     [](Caixa &c) {
         levarAoEstado(c, 4);
         return c->aCFEstornarPagamento_ZEL("cheque", "dinheiro", "10");
     },
     R"(na forma 02 com o valor "10")"},
    {Motivo::kEncerrarSemItens, "tCFEncerrarConfigMsg_ZEL",
     [](Caixa &c) {
         c.config("CONFIGURACAO\\estadoCFe", "4");
         return c->tCFEncerrarConfigMsg_ZEL("", "");
     },
     "/ArqPersist.bin não existe ou não tem registros"},
    {Motivo::kDocumentoIncompleto, "tCFEncerrar_ZEL",
     [](Caixa &c) {
         levarAoEstado(c, 2);
         c.config("CONFIGURACAO\\estadoCFe", "4");
         return c->tCFEncerrar_ZEL("");
     },
     "falta no cupom guardado: a totalização"},
    {Motivo::kReemitirSemItens, "aCFContingenciaUltimaNota_ZEL",
     [](Caixa &c) { return c->aCFContingenciaUltimaNota_ZEL(1, nullptr); },
     "não há cupom guardado"},
    {Motivo::kTipoDeEmissao, "aCFContingenciaUltimaNota_ZEL",
     [](Caixa &c) {
         levarAoEstado(c, 5);
         return c->aCFContingenciaUltimaNota_ZEL(2, nullptr);
     },
     "tipo: 2; permitido: 1 (normal)"},
    {Motivo::kTipoDeEmissao, "aCFContingenciaUltimaNota_ZEL",
     [](Caixa &c) {
         levarAoEstado(c, 5);
         return c->aCFContingenciaUltimaNota_ZEL(9, nullptr);
     },
     "tipo: 9; permitido"},
    {Motivo::kContingenciaSemDiretorio, "aCFContingenciaUltimaNota_ZEL",
     [](Caixa &c) {
         levarAoEstado(c, 5);
         return c->aCFContingenciaUltimaNota_ZEL(4, nullptr);
     },
     "texto: vazio; o tipo 4 precisa de um a três diretórios"},
    {Motivo::kNumeroDaNota, "tCFEncerrar_ZEL",
     [](Caixa &c) {
         levarAoEstado(c, 4);
         c.config("IDE\\nNF", "999999999");
         return c->tCFEncerrar_ZEL("");
     },
     R"(IDE\nNF: o número da nota seria 1000000000)"},
    {Motivo::kParteDaChave, "tCFEncerrar_ZEL",
     [](Caixa &c) {
         levarAoEstado(c, 4);
         c.config("IDE\\cUF", "PE");
         return c->tCFEncerrar_ZEL("");
     },
     R"(IDE\cUF: "PE"; a chave de acesso precisa ali de até 2 caracteres, só dígitos)"},
    {Motivo::kJaCancelado, "tCFCancelar_ZEL",
     [](Caixa &c) {
         levarAoEstado(c, 1);
         EXPECT_EQ(c->tCFCancelar_ZEL("", "", "", "", ""), ZEL_OK);
         return c->tCFCancelar_ZEL("", "", "", "", "");
     },
     "estado 6 (cancelado)"},
    {Motivo::kChaveDeOutroDocumento, "tCFCancelar_ZEL",
     [](Caixa &c) {
         levarAoEstado(c, 5);
         c.config("IDE\\nNF", "77");
         return c->tCFCancelar_ZEL("", "", "", "", "");
     },
     R"(não é do documento de IDE\nNF)"},
    {Motivo::kChaveInvalida, "tCFCancelarOffline_ZEL",
     [](Caixa &c) { return cancelarOffline(c, "123", "/tmp/"); },
     R"(chave: "123", 3 caracteres; permitido: exatamente 44 dígitos)"},
    {Motivo::kCancelamentoSemDiretorio, "tCFCancelarOffline_ZEL",
     [](Caixa &c) { return cancelarOffline(c, kChave.c_str(), ""); }, ": 0: diretorios: vazio"},
    {Motivo::kTipoDeConsulta, "GeraXMLConsulta_ZEL",
     [](Caixa &c) { return c->GeraXMLConsulta_ZEL("PROTOCOLO", "", "", "", ""); },
     R"(tipo: "PROTOCOLO"; permitido: DATA, NUM ou CHAVE)"},
    {Motivo::kIndice, "rInfoEstendida_ZEL",
     [](Caixa &c) {
         levarAoEstado(c, 2);
         char valor[ZEL_TAMANHO_INFO];
         return c->rInfoEstendida_ZEL("8", valor);
     },
     R"(indice: "8"; permitido: 1 a 7)"},
    {Motivo::kCaminhoNulo, "GerarArquivoFormatadoNF_ZEL",
     [](Caixa &c) {
         char saida[8];
         return c->GerarArquivoFormatadoNF_ZEL("/x", nullptr, "", 48, 1, "", saida);
     },
     "caminhoRetorno: ponteiro nulo"},
    {Motivo::kTipoDeDocumento, "GerarArquivoFormatadoNF_ZEL",
     [](Caixa &c) { return imprimir(c, "a", "b", 48, 2); }, "tipoDocumento: 2; permitido"},
    {Motivo::kColunas, "GerarArquivoFormatadoNF_ZEL",
     [](Caixa &c) { return imprimir(c, "a", "b", 40); }, "colunas: 40; permitido: 42 ou 48"},
    {Motivo::kImpressaoIlegivel, "GerarArquivoFormatadoNF_ZEL",
     [](Caixa &c) { return imprimir(c, "nada.xml", "OFFLINE"); },
     "/nada.xml: o arquivo ou o diretório não existe (ENOENT)"},
    {Motivo::kImpressaoSemElemento, "GerarArquivoFormatadoNF_ZEL",
     [](Caixa &c) {
         levarAoEstado(c, 5);
         c.escreverArquivo("retorno.xml", "<Retorno/>");
         return imprimir(c, "documentosEnvio.xml", "retorno.xml");
     },
     "<DocProtocolo>: falta"},
    {Motivo::kImpressaoSemChave, "GerarArquivoFormatadoNF_ZEL",
     [](Caixa &c) {
         c.escreverArquivo("a.xml", "<infNFe Id=\"NFe12\">");
         return imprimir(c, "a.xml", "OFFLINE");
     },
     R"(infNFe Id: "NFe12"; devia trazer a chave)"},
    {Motivo::kPdfSemBase64, "GeraPDF_DANFE_ZEL",
     [](Caixa &c) { return c->GeraPDF_DANFE_ZEL("###"); }, "3 caracteres; não é base64"},
    {Motivo::kPdfSemChave, "GeraPDF_ZEL", [](Caixa &c) { return c->GeraPDF_ZEL("PGE+MTwvYT4="); },
     "não tem infNFe com o atributo Id"},
    {Motivo::kPdfSemDocumento, "GerarArquivoFormatadoNF_ZEL",
     [](Caixa &c) {
         c.config("CONFIGURACAO\\SalvarXMLPDF", "1");
         return imprimirRetorno(c, "<SitCodigo>100</SitCodigo>");
     },
     "não traz o documento, DocXMLBase64"},
    {Motivo::kNaoAutorizado, "GerarArquivoFormatadoNF_ZEL",
     [](Caixa &c) {
         c.config("CONFIGURACAO\\SalvarDanfePDF", "1");
         return imprimirRetorno(c, "<SitCodigo>204</SitCodigo>");
     },
     R"(SitCodigo do retorno: "204")"},
    {Motivo::kPdfNaoGravado, "GerarArquivoFormatadoNF_ZEL",
     [](Caixa &c) {
         c.config("CONFIGURACAO\\SalvarDanfePDF", "1");
         fs::create_directory(c.diretorio() + "NFe" + kChave + "_DANFE.pdf");
         return imprimirRetorno(c, "<SitCodigo>100</SitCodigo><DocChaAcesso>" + kChave +
                                       "</DocChaAcesso>");
     },
     "_DANFE.pdf: não é um arquivo comum"},
};

} // namespace

std::vector<Provocacao> provocacoesDaVenda() {
    return kProvocacoes;
}
