// SPDX-License-Identifier: MIT
// Refusals for files, the configuration, arguments, the state and the form of tag text.
#include "apoio/Trecho.h"
#include "blackbox/Provocacao.h"

#include <fcntl.h>
#include <unistd.h>

namespace {

// The others wait a moment, and give up.
int alterarSemVez(Caixa &c) {
    const int fd = open((c.diretorio() + "ZEL_Framework.trava").c_str(), O_RDWR | O_CLOEXEC);
    struct flock pedido {};
    pedido.l_type = F_WRLCK;
    pedido.l_len = 1;
    const int travado = fcntl(fd, F_OFD_SETLK, &pedido);
    const int codigo = c->regAlterarValor_ZEL("IDE\\nNF", "1");
    close(fd);
    return travado == 0 ? codigo : 0;
}

int abrirEmOutro(Caixa &c) {
    const Caixa outro(c);
    return abrir(outro);
}

int cancelarDesatualizado(Caixa &c) {
    const Caixa outro(c);
    const int antes = outro->rCFVerificarStatus_ZEL();
    return antes == 2 && fechar(c) == ZEL_OK ? outro->tCFCancelar_ZEL("", "", "", "", "") : 0;
}

const Pedido kAbrir("aCFAbrir_ZEL");
const Pedido kVender("aCFVender_ZEL", "T1800", "1", "10.00", "", "", "1", "UN", "Produto");

Pedido abrirCom(const char *numero, const char *municipio, const char *uf) {
    return Pedido("aCFAbrir_ZEL", "12345678909", "Maria", "Rua A", numero, "Centro", municipio,
                  "Recife", uf, "50030230");
}
Pedido venderNcm(const char *ncm) {
    return Pedido("aCFVenderCompleto_ZEL", "T1800", "1", "1.00", "", "", "1", ncm, "5102", "UN",
                  "X");
}
Pedido venderXml(const std::string &xml) {
    return Pedido("aCFVenderXml_ZEL", xml);
}

const std::vector<Provocacao> kProvocacoes{
    {Motivo::kArquivo, -52, 0,
     Pedido("eCriptografarArquivo_ZEL", "/nao/existe", "/tmp/x", "segredo"),
     "/nao/existe: o arquivo ou o diretório não existe (ENOENT)"},
    {Motivo::kArquivo, -52, 0, kAbrir, "/ArqPersist.bin: não é um arquivo comum",
     comPasta("ArqPersist.bin")},
    {Motivo::kArquivo, -52, 0, Pedido("RetornarUltimoBufferFormatadoNF_ZEL"),
     "/ultimadanfe.bin: o arquivo ou o diretório não existe (ENOENT)"},
    {Motivo::kVezDeOutro, -52, 1, Pedido("regAlterarValor_ZEL"), "/: outro processo grava ali",
     nullptr, alterarSemVez},
    {Motivo::kCupomDeOutro, -52, 1, kAbrir,
     "/: outro processo está com o cupom; encerre ou cancele lá o cupom", nullptr, abrirEmOutro},
    {Motivo::kEstadoDeOutro, -52, 2, Pedido("tCFCancelar_ZEL"), "soube dele, estado 5 (encerrado)",
     nullptr, cancelarDesatualizado},
    {Motivo::kSemDocumento, -52, 0, Pedido("aCFTotalizar_ZEL"), "/ArqPersist.bin não existe",
     configurado("CONFIGURACAO\\estadoCFe", "2")},
    {Motivo::kConfigIlegivel, -40, 0, kAbrir, "/ZEL_Framework.xml: faltam as marcas <FRAMEWORKZEL>",
     comArquivo("ZEL_Framework.xml", "<x/>")},
    // The end tags of the root that nothing reads.
    {Motivo::kConfigSemLugar, -40, 0, Pedido("regAlterarValor_ZEL", "IDE\\nNF", "3"),
     R"(a chave IDE\nNF não tem lugar)",
     comArquivo("ZEL_Framework.xml", "<FRAMEWORKZEL><!--</FRAMEWORKZEL>")},
    {Motivo::kChaveDesconhecida, -1, 0, Pedido("regAlterarValor_ZEL", "EMIT\\Numero", "1"),
     R"(não há chave de configuração "EMIT\Numero")"},
    {Motivo::kChaveDesconhecida, -1, 0, Pedido("regRetornarValor_ZEL"),
     "chave de configuração vazio;"},
    {Motivo::kChaveNula, -1, 0, Pedido("regAlterarValor_ZEL", kNulo, "1"), "chave: ponteiro nulo"},
    {Motivo::kChaveNula, -1, 0, Pedido("regRetornarValor_ZEL", kNulo), "chave: ponteiro nulo"},
    {Motivo::kValorComFim, -1, 0,
     Pedido("regAlterarValor_ZEL", "CONFIGURACAO\\TokenSefaz", "secreto</x>"),
     R"(CONFIGURACAO\TokenSefaz: o valor contém "</")"},
    {Motivo::kArgumentoNulo, -99, 0, Pedido("tCFInutilizar_ZEL", "1", kNulo, "1"),
     "numeroFinal: ponteiro"},
    {Motivo::kArgumentoNulo, -99, 0, Pedido("GeraXMLConsulta_ZEL", "CHAVE", "", "", "", kNulo),
     "chave: ponteiro nulo"},
    {Motivo::kArgumentoVazio, -99, 2, Pedido("aCFLancarDescontoItem_ZEL", "1", "D$"),
     "valor: vazio; é obrigatório"},
    {Motivo::kArgumentoVazio, -99, 0, Pedido("aCFValorLeiImposto_ZEL", kNulo),
     "valor: nulo; é obrigatório"},
    {Motivo::kArgumentoNegativo, -99, 1, Pedido("aCFVender_ZEL", "T1800", "-1,5", "10.00"),
     R"(quantidade: "-1,5"; não pode ser negativo)"},
    {Motivo::kArgumentoForaDoTamanho, -99, 1, Pedido("aCFConfICMS00_ZEL", "0", "000", "3", "18.00"),
     R"(cst: "000", 3 caracteres; permitido: exatamente 2 caracteres)"},
    {Motivo::kArgumentoForaDoTamanho, -99, 1, Pedido("aCFConfPisOutr_ZEL", "99"),
     "aliquota: vazio, 0 caracteres; permitido: de 1 a 6 caracteres"},
    {Motivo::kNaoEhDecimal, -99, 1, Pedido("aCFVender_ZEL", "T1800", "1", "R$ 10,00"),
     R"(valorUnitario: "R$ 10,00"; só dígitos)"},
    {Motivo::kSaidaNula, -99, 0, Pedido("rURLQrcode_ZEL", kNulo), "url: ponteiro nulo"},
    {Motivo::kCupomEmAndamento, -130, 2, kAbrir,
     "estado 2 (vendendo); se é deste caixa, continue-o"},
    {Motivo::kNenhumCupom, -131, 0, Pedido("aCFEfetuarPagamento_ZEL", "dinheiro", "1"),
     "nenhum cupom está aberto, estado 0"},
    {Motivo::kVendaForaDeOrdem, -132, 3, kVender, "o cupom está no estado 3 (totalizado)"},
    {Motivo::kVendaForaDeOrdem, -132, 5, kVender,
     "o cupom está no estado 5 (encerrado), já terminou: abra outro com aCFAbrir_ZEL"},
    {Motivo::kEncerramentoForaDeOrdem, -135, 5, Pedido("tCFEncerrar_ZEL"),
     "o cupom está no estado 5 (encerrado), já terminou: abra outro com aCFAbrir_ZEL"},
    {Motivo::kTotalizacaoForaDeOrdem, -133, 1, Pedido("aCFTotalizar_ZEL"),
     "o cupom está no estado 1 (aberto)"},
    {Motivo::kPagamentoForaDeOrdem, -134, 2, Pedido("aCFEfetuarPagamento_ZEL", "dinheiro", "1"),
     "paga-se depois de aCFTotalizar_ZEL"},
    {Motivo::kEncerramentoForaDeOrdem, -135, 3, Pedido("tCFEncerrar_ZEL"),
     "encerra-se com o total pago"},
    {Motivo::kAjusteForaDoEstado, -100, 0, Pedido("aCFCancelarItem_ZEL", "1"),
     "estado 0 (nenhum cupom)"},
    {Motivo::kImpostoForaDoEstado, -100, 0, Pedido("aCFConfPisNT_ZEL", "07"),
     "depois de aCFAbrir_ZEL"},
    {Motivo::kEstornoForaDoEstado, -100, 0,
     Pedido("aCFEstornarPagamento_ZEL", "dinheiro", "cheque", "1"), "só se corrige no estado 4"},
    {Motivo::kTransporteForaDoEstado, -100, 5, Pedido("aCFIdentificarTransportadora_ZEL"),
     "antes do encerramento"},
    {Motivo::kLogradouroSemParte, -1, 0, abrirCom("10", "355030", "PE"),
     R"(codigoMunicipio: "355030"; com um logradouro, é obrigatório e tem exatamente 7 )"},
    {Motivo::kLogradouroSemParte, -1, 0, abrirCom("", "2611606", "PE"),
     "numero: vazio; com um logradouro"},
    {Motivo::kLogradouroSemParte, -1, 0, abrirCom("10", "2611606", "Pernambuco"),
     R"(uf: "Pernambuco";)"},
    {Motivo::kTransporteSemEntrega, -109, 2, Pedido("aCFIdentificarTransportadora_ZEL"),
     R"(IDE\indPres: "1"; transportadora)"},
    {Motivo::kConsumidorObrigatorio, -108, 4, Pedido("tCFEncerrar_ZEL"),
     R"(o total, 10.00, passa de CONFIGURACAO\ValorMaxIdeCliente, 9.99)",
     configurado("CONFIGURACAO\\ValorMaxIdeCliente", "9.99")},
    {Motivo::kTagForaDoTamanho, -120, 1,
     Pedido("aCFVender_ZEL", "T1800", "1", "1.00", "", "", "1", "UN"),
     "xProd (descricao): vazio, 0 caracteres; permitido: de 1 a 120 caracteres"},
    {Motivo::kTagForaDoTamanho, -120, 1, venderNcm("2"),
     R"(NCM (ncm, ou PROD\NCM): "2", 1 caractere; permitido: de 2 a 8 caracteres)"},
    {Motivo::kTagForaDoTamanho, -120, 1, venderNcm("0901.21.00"),
     R"(NCM (ncm, ou PROD\NCM): "0901.21.0", 9 caracteres; permitido: de 2 a 8)"},
    {Motivo::kTextoSemElementos, -121, 1, venderXml("um produto"), "nenhum elemento XML"},
    {Motivo::kGrupoNoLugarDeValor, -121, 1, venderXml("<prod><cProd><x>1</x></cProd></prod>"),
     "cProd (codigo): tem elementos dentro"},
    {Motivo::kTagDesconhecida, -120, 1, venderXml(std::string(kItem) + "<preco>1</preco>"),
     "preco: não existe em venda, ou está fora de ordem"},
    {Motivo::kTagAusente, -122, 1, venderXml("<x>1</x>"), "prod: falta em"},
    {Motivo::kXmlTagSemFim, -1, 1, venderXml("a<prod"), "uma tag não tem \">\", na posição 2"},
    {Motivo::kXmlNomeInvalido, -1, 1, venderXml("< >"), "tag sem nome"},
    {Motivo::kXmlMenorNaTag, -1, 1, venderXml("<prod <x>"), "\"<\" dentro de uma tag"},
    {Motivo::kXmlAtributo, -1, 1, venderXml("<prod a=1>"), "na tag prod"},
    {Motivo::kXmlFimErrado, -1, 1, venderXml("<prod></imposto>"), "prod está aberto"},
    {Motivo::kXmlElementoAberto, -1, 1, venderXml("<prod>texto"), "prod não tem tag de fim"},
    {Motivo::kXmlNiveis, -1, 1, venderXml(repetir("<a>", 40)), "mais de 32"},
    {Motivo::kXmlSemElemento, -1, 0, Pedido("GeraPDF_ZEL", "YWJj"), "não há nenhum elemento"},
};

} // namespace

std::vector<Provocacao> provocacoesGerais() {
    return kProvocacoes;
}
