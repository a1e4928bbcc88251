// Each reason for which a call can be refused, provoked through the functions: the line in the log
// must have the function, the code with its name, and the reason's own text with what was given.
#include "blackbox/Caixa.h"
#include "blackbox/Log.h"
#include "util/Motivo.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <functional>
#include <set>

namespace fs = std::filesystem;
using zel::Motivo;

namespace {

int abrir(Caixa &c, const char *documento = "") {
    return c->aCFAbrir_ZEL(documento, "", "", "", "", "", "", "", "");
}
int abrirCom(Caixa &c, const char *numero, const char *municipio, const char *uf) {
    return c->aCFAbrir_ZEL("12345678909", "Maria", "Rua A", numero, "Centro", municipio, "Recife",
                           uf, "50030230");
}
int vender(Caixa &c, const char *preco = "10.00", const char *quantidade = "1",
           const char *descricao = "Produto") {
    return c->aCFVender_ZEL("T1800", quantidade, preco, "", "", "1", "UN", descricao);
}

void levarAoEstado(Caixa &c, int estado) {
    const std::function<int()> passos[] = {
        [&] { return abrir(c); },
        [&] { return vender(c); },
        [&] { return c->aCFTotalizar_ZEL("", ""); },
        [&] { return c->aCFEfetuarPagamento_ZEL("dinheiro", ""); },
        [&] { return c->tCFEncerrar_ZEL(""); },
    };
    for (int passo = 0; passo < estado; ++passo)
        ASSERT_EQ(passos[passo](), ZEL_OK) << "step " << passo;
}

// The stored receipt as somebody else left it, read by the next process.
void editarCupom(Caixa &c, std::string_view de, std::string_view para) {
    std::string texto = c.lerArquivo("ArqPersist.bin");
    for (std::size_t i = 0; (i = texto.find(de, i)) != std::string::npos; i += para.size())
        texto.replace(i, de.size(), para);
    c.parar();
    c.escreverArquivo("ArqPersist.bin", texto);
    c.iniciar();
}

int venderXml(Caixa &c, const std::string &xml) {
    levarAoEstado(c, 1);
    return c->aCFVenderXml_ZEL(xml.c_str());
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

// Where no configuration and no argument leads there.
const std::set<Motivo> kSemProvocacao{
    Motivo::kSemMemoria,         // memory runs out
    Motivo::kRelogio,            // a clock in the year 10000
    Motivo::kNomeTomado,         // within a call: another name is tried, a copy is given up
    Motivo::kForaDoLugar,        // within a call: the file is written another way
    Motivo::kRegistroDanificado, // within a call: the records before it are taken
    Motivo::kSemMoldes,          // an operation before the frame has made them
    Motivo::kSemLista,           // the document is looked at first, and has both lists
    Motivo::kDocumentoSemForma,  // a document without elements is refused for them first
    Motivo::kPdfSemNome,         // the functions give the name themselves
    Motivo::kPdfOrigem,          // and the origin
    Motivo::kPdfNaoDesenhado,    // the PDF library runs out of memory
    Motivo::kPdfNaoMontado,      // and here
};

struct Provocacao {
    Motivo motivo;
    std::string_view funcao;
    std::function<int(Caixa &)> fazer;
    std::string_view trecho; // of the line
};

const std::vector<Provocacao> kProvocacoes{
    {Motivo::kArquivo, "eCriptografarArquivo_ZEL",
     [](Caixa &c) { return c->eCriptografarArquivo_ZEL("/nao/existe", "/tmp/x", "segredo"); },
     "/nao/existe: o arquivo ou o diretório não existe (ENOENT)"},
    {Motivo::kArquivo, "aCFAbrir_ZEL",
     [](Caixa &c) {
         fs::create_directory(c.diretorio() + "ArqPersist.bin");
         return abrir(c);
     },
     "/ArqPersist.bin: não é um arquivo comum"},
    {Motivo::kArquivo, "RetornarUltimoBufferFormatadoNF_ZEL",
     [](Caixa &c) {
         char saida[8];
         return c->RetornarUltimoBufferFormatadoNF_ZEL(saida);
     },
     "/ultimadanfe.bin: o arquivo ou o diretório não existe (ENOENT)"},
    {Motivo::kVezDeOutro, "regAlterarValor_ZEL",
     [](Caixa &c) {
         abrir(c);
         const int fd = open((c.diretorio() + "ZEL_Framework.trava").c_str(), O_RDWR | O_CLOEXEC);
         struct flock pedido {};
         pedido.l_type = F_WRLCK;
         pedido.l_len = 1;
         EXPECT_EQ(fcntl(fd, F_OFD_SETLK, &pedido), 0);
         const int codigo = c->regAlterarValor_ZEL("IDE\\nNF", "1");
         close(fd);
         return codigo;
     },
     "/: outro processo grava ali"},
    {Motivo::kCupomDeOutro, "aCFAbrir_ZEL",
     [](Caixa &c) {
         abrir(c);
         Caixa outra(c);
         return abrir(outra);
     },
     "/: outro processo está com o cupom"},
    {Motivo::kSemDocumento, "aCFTotalizar_ZEL",
     [](Caixa &c) {
         c.config("CONFIGURACAO\\estadoCFe", "2");
         return c->aCFTotalizar_ZEL("", "");
     },
     "/ArqPersist.bin não existe"},
    {Motivo::kConfigIlegivel, "aCFAbrir_ZEL",
     [](Caixa &c) {
         c.escreverArquivo("ZEL_Framework.xml", "<x/>");
         return abrir(c);
     },
     "/ZEL_Framework.xml: faltam as marcas <FRAMEWORKZEL>"},
    {Motivo::kConfigSemLugar, "regAlterarValor_ZEL",
     [](Caixa &c) {
         // The end tags of the root that nothing reads.
         c.escreverArquivo("ZEL_Framework.xml", "<FRAMEWORKZEL><!--</FRAMEWORKZEL>");
         return c->regAlterarValor_ZEL("IDE\\nNF", "3");
     },
     R"(a chave IDE\nNF não tem lugar)"},
    {Motivo::kChaveDesconhecida, "regAlterarValor_ZEL",
     [](Caixa &c) { return c->regAlterarValor_ZEL("EMIT\\Numero", "1"); },
     R"(não há chave de configuração "EMIT\Numero")"},
    {Motivo::kChaveDesconhecida, "regRetornarValor_ZEL",
     [](Caixa &c) {
         char valor[ZEL_TAMANHO_VALOR];
         return c->regRetornarValor_ZEL("", valor);
     },
     "chave de configuração vazio;"},
    {Motivo::kValorComFim, "regAlterarValor_ZEL",
     [](Caixa &c) { return c->regAlterarValor_ZEL("CONFIGURACAO\\TokenSefaz", "secreto</x>"); },
     R"(CONFIGURACAO\TokenSefaz: o valor contém "</")"},
    {Motivo::kArgumentoNulo, "tCFInutilizar_ZEL",
     [](Caixa &c) { return c->tCFInutilizar_ZEL("1", nullptr, "1", ""); }, "numeroFinal: ponteiro"},
    {Motivo::kArgumentoNulo, "GeraXMLConsulta_ZEL",
     [](Caixa &c) { return c->GeraXMLConsulta_ZEL("CHAVE", "", "", "", nullptr); },
     "chave: ponteiro nulo"},
    {Motivo::kArgumentoVazio, "aCFLancarDescontoItem_ZEL",
     [](Caixa &c) {
         levarAoEstado(c, 2);
         return c->aCFLancarDescontoItem_ZEL(1, "D$", "");
     },
     "valor: vazio; é obrigatório"},
    {Motivo::kArgumentoVazio, "aCFValorLeiImposto_ZEL",
     [](Caixa &c) { return c->aCFValorLeiImposto_ZEL(nullptr); }, "valor: nulo; é obrigatório"},
    {Motivo::kArgumentoNegativo, "aCFVender_ZEL",
     [](Caixa &c) {
         levarAoEstado(c, 1);
         return vender(c, "10.00", "-1,5");
     },
     R"(quantidade: "-1,5"; não pode ser negativo)"},
    {Motivo::kArgumentoForaDoTamanho, "aCFConfICMS00_ZEL",
     [](Caixa &c) {
         levarAoEstado(c, 1);
         return c->aCFConfICMS00_ZEL("0", "000", "3", "18.00");
     },
     R"(cst: "000", 3 caracteres; permitido: exatamente 2 caracteres)"},
    {Motivo::kArgumentoForaDoTamanho, "aCFConfPisOutr_ZEL",
     [](Caixa &c) {
         levarAoEstado(c, 1);
         return c->aCFConfPisOutr_ZEL("99", "", "");
     },
     "aliquota: vazio, 0 caracteres; permitido: de 1 a 6 caracteres"},
    {Motivo::kNaoEhDecimal, "aCFVender_ZEL",
     [](Caixa &c) {
         levarAoEstado(c, 1);
         return vender(c, "R$ 10,00");
     },
     R"(valorUnitario: "R$ 10,00"; só dígitos)"},
    {Motivo::kSaidaNula, "rURLQrcode_ZEL", [](Caixa &c) { return c->rURLQrcode_ZEL(nullptr); },
     "url: ponteiro nulo"},
    {Motivo::kCupomEmAndamento, "aCFAbrir_ZEL",
     [](Caixa &c) {
         levarAoEstado(c, 2);
         return abrir(c);
     },
     "estado 2 (vendendo)"},
    {Motivo::kNenhumCupom, "aCFEfetuarPagamento_ZEL",
     [](Caixa &c) { return c->aCFEfetuarPagamento_ZEL("dinheiro", "1"); },
     "nenhum cupom está aberto, estado 0"},
    {Motivo::kVendaForaDeOrdem, "aCFVender_ZEL",
     [](Caixa &c) {
         levarAoEstado(c, 3);
         return vender(c);
     },
     "o cupom está no estado 3 (totalizado)"},
    {Motivo::kTotalizacaoForaDeOrdem, "aCFTotalizar_ZEL",
     [](Caixa &c) {
         levarAoEstado(c, 1);
         return c->aCFTotalizar_ZEL("", "");
     },
     "o cupom está no estado 1 (aberto)"},
    {Motivo::kPagamentoForaDeOrdem, "aCFEfetuarPagamento_ZEL",
     [](Caixa &c) {
         levarAoEstado(c, 2);
         return c->aCFEfetuarPagamento_ZEL("dinheiro", "1");
     },
     "paga-se depois de aCFTotalizar_ZEL"},
    {Motivo::kEncerramentoForaDeOrdem, "tCFEncerrar_ZEL",
     [](Caixa &c) {
         levarAoEstado(c, 3);
         return c->tCFEncerrar_ZEL("");
     },
     "encerra-se com o total pago"},
    {Motivo::kAjusteForaDoEstado, "aCFCancelarItem_ZEL",
     [](Caixa &c) { return c->aCFCancelarItem_ZEL(1); }, "estado 0 (nenhum cupom)"},
    {Motivo::kImpostoForaDoEstado, "aCFConfPisNT_ZEL",
     [](Caixa &c) { return c->aCFConfPisNT_ZEL("07"); }, "depois de aCFAbrir_ZEL"},
    {Motivo::kEstornoForaDoEstado, "aCFEstornarPagamento_ZEL",
     [](Caixa &c) { return c->aCFEstornarPagamento_ZEL("dinheiro", "cheque", "1"); },
     "só se corrige no estado 4"},
    {Motivo::kTransporteForaDoEstado, "aCFIdentificarTransportadora_ZEL",
     [](Caixa &c) {
         levarAoEstado(c, 5);
         return c->aCFIdentificarTransportadora_ZEL("", "", "", "", "", "");
     },
     "antes do encerramento"},
    {Motivo::kLogradouroSemParte, "aCFAbrir_ZEL",
     [](Caixa &c) { return abrirCom(c, "10", "355030", "PE"); },
     R"(codigoMunicipio: "355030"; com um logradouro, é obrigatório e tem exatamente 7 )"},
    {Motivo::kLogradouroSemParte, "aCFAbrir_ZEL",
     [](Caixa &c) { return abrirCom(c, "", "2611606", "PE"); }, "numero: vazio; com um logradouro"},
    {Motivo::kLogradouroSemParte, "aCFAbrir_ZEL",
     [](Caixa &c) { return abrirCom(c, "10", "2611606", "Pernambuco"); }, R"(uf: "Pernambuco";)"},
    {Motivo::kTransporteSemEntrega, "aCFIdentificarTransportadora_ZEL",
     [](Caixa &c) {
         levarAoEstado(c, 2);
         return c->aCFIdentificarTransportadora_ZEL("", "", "", "", "", "");
     },
     R"(IDE\indPres: "1"; transportadora)"},
    {Motivo::kConsumidorObrigatorio, "tCFEncerrar_ZEL",
     [](Caixa &c) {
         c.config("CONFIGURACAO\\ValorMaxIdeCliente", "9.99");
         levarAoEstado(c, 4);
         return c->tCFEncerrar_ZEL("");
     },
     R"(o total, 10.00, passa de CONFIGURACAO\ValorMaxIdeCliente, 9.99)"},
    {Motivo::kTextoSemElementos, "aCFVenderXml_ZEL",
     [](Caixa &c) { return venderXml(c, "um produto"); }, "nenhum elemento XML"},
    {Motivo::kGrupoNoLugarDeValor, "aCFVenderXml_ZEL",
     [](Caixa &c) { return venderXml(c, "<prod><cProd><x>1</x></cProd></prod>"); },
     "cProd (codigo): tem elementos dentro"},
    {Motivo::kTagForaDoTamanho, "aCFVender_ZEL",
     [](Caixa &c) {
         levarAoEstado(c, 1);
         return vender(c, "1.00", "1", "");
     },
     "xProd (descricao): vazio, 0 caracteres; permitido: de 1 a 120 caracteres"},
    {Motivo::kTagForaDoTamanho, "aCFVenderCompleto_ZEL",
     [](Caixa &c) {
         levarAoEstado(c, 1);
         return c->aCFVenderCompleto_ZEL("T1800", "1", "1.00", "", "", "1", "2", "5102", "UN", "X",
                                         "");
     },
     R"(NCM (ncm, ou PROD\NCM): "2", 1 caractere; permitido: de 2 a 8 caracteres)"},
    {Motivo::kTagDesconhecida, "aCFVenderXml_ZEL",
     [](Caixa &c) {
         levarAoEstado(c, 2);
         const std::string texto = c.lerArquivo("ArqPersist.bin");
         const std::size_t inicio = texto.find("02|1|") + 5;
         const std::string item = texto.substr(inicio, texto.find('\r', inicio) - inicio);
         return c->aCFVenderXml_ZEL((item + "<preco>1</preco>").c_str());
     },
     "preco: não existe em venda, ou está fora de ordem"},
    {Motivo::kTagAusente, "aCFVenderXml_ZEL", [](Caixa &c) { return venderXml(c, "<x>1</x>"); },
     "prod: falta em"},
    {Motivo::kXmlTagSemFim, "aCFVenderXml_ZEL", [](Caixa &c) { return venderXml(c, "a<prod"); },
     "uma tag não tem \">\", na posição 2"},
    {Motivo::kXmlNomeInvalido, "aCFVenderXml_ZEL", [](Caixa &c) { return venderXml(c, "< >"); },
     "tag sem nome"},
    {Motivo::kXmlMenorNaTag, "aCFVenderXml_ZEL", [](Caixa &c) { return venderXml(c, "<prod <x>"); },
     "\"<\" dentro de uma tag"},
    {Motivo::kXmlAtributo, "aCFVenderXml_ZEL", [](Caixa &c) { return venderXml(c, "<prod a=1>"); },
     "na tag prod"},
    {Motivo::kXmlFimErrado, "aCFVenderXml_ZEL",
     [](Caixa &c) { return venderXml(c, "<prod></imposto>"); }, "prod está aberto"},
    {Motivo::kXmlElementoAberto, "aCFVenderXml_ZEL",
     [](Caixa &c) { return venderXml(c, "<prod>texto"); }, "prod não tem tag de fim"},
    {Motivo::kXmlNiveis, "aCFVenderXml_ZEL",
     [](Caixa &c) {
         std::string xml;
         for (int i = 0; i < 40; ++i)
             xml += "<a>";
         return venderXml(c, xml);
     },
     "mais de 32"},
    {Motivo::kXmlSemElemento, "GeraPDF_ZEL", [](Caixa &c) { return c->GeraPDF_ZEL("YWJj"); },
     "não há nenhum elemento"},
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
     "item: 9; o cupom tem 1 itens"},
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
     "item: 2; o cupom tem 1 itens"},
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

// Whether the text is the template's, with anything in its places.
bool temAForma(std::string_view texto, std::string_view molde) {
    for (bool primeiro = true;; primeiro = false) {
        const std::size_t abre = molde.find('{');
        const std::string_view fixo = molde.substr(0, abre);
        const std::size_t achado = texto.find(fixo);
        if (achado == texto.npos || (primeiro && achado != 0)) return false;
        texto.remove_prefix(achado + fixo.size());
        if (abre == molde.npos) return texto.empty() || fixo.empty();
        molde.remove_prefix(molde.find('}') + 1);
    }
}

TEST(Motivos, cada_um_e_provocado_e_dito) {
    for (const Provocacao &linha : kProvocacoes) {
        SCOPED_TRACE(std::string(linha.funcao) + ": " + std::string(linha.trecho));
        const Log log;
        Caixa caixa;
        const zel::LinhaMotivo &motivo = zel::linhaDo(linha.motivo);
        EXPECT_EQ(linha.fazer(caixa), motivo.codigo);
        const auto linhas = log.linhas();
        ASSERT_EQ(linhas.size(), 1U) << "the refusal, and nothing else";
        const std::string_view dita = linhas.front();
        EXPECT_NE(dita.find(linha.trecho), dita.npos) << dita;
        const std::string inicio = std::string(linha.funcao) + ": " + std::to_string(motivo.codigo);
        const std::size_t resposta = dita.find("] " + inicio);
        ASSERT_NE(resposta, dita.npos) << dita;
        const std::size_t texto = dita.find(": ", resposta + 2 + inicio.size());
        ASSERT_NE(texto, dita.npos) << dita;
        EXPECT_TRUE(temAForma(dita.substr(texto + 2), motivo.texto)) << dita;
    }
}

TEST(Motivos, nenhum_sem_provocacao) {
    std::set<Motivo> provocados;
    for (const Provocacao &linha : kProvocacoes)
        provocados.insert(linha.motivo);
    for (const zel::LinhaMotivo &linha : zel::kMotivos)
        EXPECT_NE(provocados.contains(linha.motivo), kSemProvocacao.contains(linha.motivo))
            << linha.texto;
}

} // namespace
