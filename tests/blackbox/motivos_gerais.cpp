// SPDX-License-Identifier: MIT
// Refusals for files, the configuration, arguments, the state and the form of tag text.
#include "blackbox/Provocacao.h"

#include <fcntl.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

int venderXml(Caixa &c, const std::string &xml) {
    levarAoEstado(c, 1);
    return c->aCFVenderXml_ZEL(xml.c_str());
}

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
    {Motivo::kChaveNula, "regAlterarValor_ZEL",
     [](Caixa &c) { return c->regAlterarValor_ZEL(nullptr, "1"); }, "chave: ponteiro nulo"},
    {Motivo::kChaveNula, "regRetornarValor_ZEL",
     [](Caixa &c) {
         char valor[ZEL_TAMANHO_VALOR];
         return c->regRetornarValor_ZEL(nullptr, valor);
     },
     "chave: ponteiro nulo"},
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
    {Motivo::kTagForaDoTamanho, "aCFVenderCompleto_ZEL",
     [](Caixa &c) {
         levarAoEstado(c, 1);
         return c->aCFVenderCompleto_ZEL("T1800", "1", "1.00", "", "", "1", "0901.21.00", "5102",
                                         "UN", "X", "");
     },
     R"(NCM (ncm, ou PROD\NCM): "0901.21.0", 9 caracteres; permitido: de 2 a 8)"},
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
};

} // namespace

std::vector<Provocacao> provocacoesGerais() {
    return kProvocacoes;
}
