// SPDX-License-Identifier: MIT
#include "impressao/GerenciadorImpressao.h"

#include "comum/ArquivosDoCaixa.h"
#include "comum/ChaveAcesso.h"
#include "config/Registro.h"
#include "emcurso/Carga.h"
#include "emissao/Montagem.h"
#include "imposto/Presets.h"
#include "imposto/Somas.h"
#include "impressao/ColunasLayout.h"
#include "impressao/Escrita.h"
#include "impressao/LayoutImpressao.h"
#include "impressao/LeituraXml.h"
#include "impressao/Setores.h"
#include "impressao/ValorImpresso.h"
#include "recusa/Recusa.h"
#include "secao/Digest.h"
#include "secao/Parser.h"
#include "texto/Acentuacao.h"
#include "texto/Codificacao.h"
#include "texto/Codigos.h"
#include "texto/Numero.h"
#include "zel_felbor/codigos.h"

#include <algorithm>
#include <limits>

namespace zel {

namespace {

constexpr std::size_t kTamanhoPrefixoId = 3; // "NFe"
constexpr std::size_t kTamanhoCNPJ = 14;
// No value of a document has more than 15 characters. A file from elsewhere with hundreds of
// digits must not outgrow the buffer that the caller was asked to bring.
constexpr double kMaiorValor = 1e15;

constexpr std::string_view kSeparadorCancelamento =
    "------------------------------------------------\r\n";
constexpr EspacoEmitente kCancelamentoComLogotipo{"\r\n\r\n", "\r\n", "\r\n"};

template <class Texto>
void guardar(Texto &destino, std::string_view valor) {
    destino = valor;
}

void guardar(double &destino, std::string_view valor) {
    destino = std::clamp(lerDecimal(valor), -kMaiorValor, kMaiorValor);
}

void guardar(std::int32_t &destino, std::string_view valor) {
    using Limites = std::numeric_limits<std::int32_t>;
    destino = static_cast<std::int32_t>(
        std::clamp<long long>(lerInteiro(valor), Limites::min(), Limites::max()));
}

// False: the caller reads on without the element, or gives up.
bool semElemento(std::string_view nome) {
    recusar(Motivo::kImpressaoSemElemento, {.campo = nome});
    return false;
}

bool semChave(std::string_view campo, std::string_view dado) {
    recusar(Motivo::kImpressaoSemChave, {.campo = campo, .dado = dado});
    return false;
}

template <class Destino>
bool ler(LeitorXml &leitor, std::string_view marca, Destino &destino,
         FimDeLinha fimDeLinha = FimDeLinha::kBranco) {
    const auto valor = leitor.valor(marca, fimDeLinha);
    if (!valor) return semElemento(marca);
    guardar(destino, *valor);
    return true;
}

template <class Destino>
bool lerPrimeiro(std::string_view texto, std::initializer_list<std::string_view> marcas,
                 Destino &destino, FimDeLinha fimDeLinha = FimDeLinha::kBranco) {
    const auto valor = primeiroValor(texto, marcas, fimDeLinha);
    if (!valor) return semElemento(*marcas.begin());
    guardar(destino, *valor);
    return true;
}

bool lerProtocolo(std::string_view retorno, CupomFiscal &cf) {
    return lerPrimeiro(retorno, {"<DocProtocolo>", "<ProtocoloSefaz>", "<nProt>"},
                       cf.ProtocoloSefaz);
}

bool lerIdentificacao(std::string_view documento, CupomFiscal &cf) {
    LeitorXml leitor(documento);
    const auto id = leitor.propriedade("Id=\"");
    if (!id || id->size() < kTamanhoPrefixoId + ChaveAcesso::kDigitos)
        return semChave("infNFe Id", id.value_or(""));
    cf.ChaveDeAcesso = id->substr(kTamanhoPrefixoId, ChaveAcesso::kDigitos);
    if (!ehChave(cf.ChaveDeAcesso)) return semChave("infNFe Id", *id);
    LeitorXml doInicio(documento);
    return ler(leitor, "<cUF>", cf.UF) && ler(leitor, "<serie>", cf.Serie) &&
           ler(leitor, "<nNF>", cf.NumeroNotaFiscal) && ler(leitor, "<dhEmi>", cf.DataHora) &&
           ler(leitor, "<tpEmis>", cf.TipoEmissao) && ler(doInicio, "<cDV>", cf.CDV) &&
           ler(doInicio, "<tpAmb>", cf.TpAmp);
}

bool lerEmitente(std::string_view documento, CupomFiscal &cf) {
    auto emit = LeitorXml(documento).grupo("emit");
    if (!emit) return semElemento("<emit>");
    return (ler(*emit, "<CNPJ>", cf.CnpjCpf) || ler(*emit, "<CPF>", cf.CnpjCpf)) &&
           ler(*emit, "<xNome>", cf.Nome) &&
           (emit->avancar("<enderEmit>") || semElemento("<enderEmit>")) &&
           ler(*emit, "<xLgr>", cf.EmitLogradouro) && ler(*emit, "<nro>", cf.EmitNumero) &&
           ler(*emit, "<xBairro>", cf.EmitBairro) && ler(*emit, "<xMun>", cf.EmitMunicipio) &&
           ler(*emit, "<UF>", cf.EmitUF) && ler(*emit, "<IE>", cf.EmitInscricaoEstadual);
}

bool lerConsumidor(std::string_view documento, CupomFiscal &cf) {
    auto dest = LeitorXml(documento).grupo("dest");
    if (!dest) return true;
    auto numero = dest->valor("<CPF>");
    if (!numero) numero = dest->valor("<CNPJ>");
    if (numero)
        cf.IdDest = fnFormatarCPFCNPJ(*numero);
    else if (!ler(*dest, "<idEstrangeiro>", cf.IdDest))
        return false;
    // Each is optional, but the first element that is missing ends the consumer's data.
    static_cast<void>(
        ler(*dest, "<xNome>", cf.DestNome) && ler(*dest, "<xLgr>", cf.DestLogradouro) &&
        ler(*dest, "<nro>", cf.DestNumero) && ler(*dest, "<xBairro>", cf.DestBairro) &&
        ler(*dest, "<cMun>", cf.DestCodMunicipio) && ler(*dest, "<xMun>", cf.DestMunicipio) &&
        ler(*dest, "<UF>", cf.DestUF) && ler(*dest, "<CEP>", cf.DestCEP));
    return true;
}

// The totals of services, and of items without a tax that is totalled, name nothing of what a
// receipt prints. With a part of it something was lost on the way.
bool semValoresDoCupom(const LeitorXml &total) {
    const auto tem = [&](std::string_view nome) {
        return LeitorXml(total).grupo(nome).has_value();
    };
    constexpr std::string_view kImpressos[] = {"ICMSTot", "vICMS", "vDesc", "vOutro", "vNF"};
    return (tem("ISSQNTot") || tem("retTrib")) && std::ranges::none_of(kImpressos, tem);
}

bool lerValoresDoCupom(LeitorXml &total, CupomFiscal &cf) {
    return ler(total, "<vICMS>", cf.TotalICMS) && ler(total, "<vDesc>", cf.ValorDesconto) &&
           ler(total, "<vOutro>", cf.ValorOutro) && ler(total, "<vNF>", cf.ValorTotal);
}

// What the items of the document add up to, by the rule of its totalization.
bool somarTotais(std::string_view documento, CupomFiscal &cf) {
    ST_tagZEL infNFe;
    std::size_t posicao = documento.find("<infNFe");
    if (fnProximaTag_ZEL(infNFe, documento, posicao) != ZEL_OK) return false;
    if (!infNFe.subTags) return semElemento("<infNFe>");
    const Somas somas = somarItens(*infNFe.subTags);
    cf.TotalICMS = formatarMoeda(0);
    guardar(cf.ValorDesconto, formatarMoeda(somas.descontos));
    guardar(cf.ValorOutro, formatarMoeda(somas.outros));
    guardar(cf.ValorTotal, formatarMoeda(somas.total()));
    return true;
}

bool lerTotais(std::string_view documento, const TotalImposto &doCaixa, CupomFiscal &cf) {
    auto total = LeitorXml(documento).grupo("total");
    if (!total) return semElemento("<total>");
    const bool somados = semValoresDoCupom(*total);
    if (!(somados ? somarTotais(documento, cf) : lerValoresDoCupom(*total, cf))) return false;
    if (!ler(*total, "<vTotTrib>", cf.ValorTotalTributos))
        cf.ValorTotalTributos = lerDecimal(trocarVirgula(doCaixa));
    return true;
}

bool lerItem(LeitorXml &det, Item &item) {
    auto numero = det.propriedade("nItem='");
    if (!numero) numero = det.propriedade("nItem=\"");
    if (!numero) return semElemento("<det nItem>");
    guardar(item.NumeroItem, *numero);
    return ler(det, "<cProd>", item.CodigoProduto) && ler(det, "<xProd>", item.DescricaoProduto) &&
           ler(det, "<uCom>", item.Unidade) && ler(det, "<qCom>", item.Quantidade) &&
           ler(det, "<vUnCom>", item.ValorUnitario);
}

bool lerItens(std::string_view documento, CupomFiscal &cf) {
    LeitorXml leitor(documento);
    while (auto det = leitor.grupo("det"))
        if (!lerItem(*det, cf.Itens.emplace_back())) return false;
    return !cf.Itens.empty() || semElemento("<det>");
}

bool lerPagamentos(std::string_view documento, CupomFiscal &cf) {
    LeitorXml leitor(documento);
    while (auto pag = leitor.grupo("pag")) {
        Pagamento &pagamento = cf.Pagamentos.emplace_back();
        if (!ler(*pag, "<tPag>", pagamento.FormaPgto) || !ler(*pag, "<vPag>", pagamento.ValorPgto))
            return false;
    }
    return !cf.Pagamentos.empty() || semElemento("<pag>");
}

bool lerDocumento(std::string_view documento, const TotalImposto &doCaixa, CupomFiscal &cf) {
    if (!lerIdentificacao(documento, cf) || !lerEmitente(documento, cf) ||
        !lerConsumidor(documento, cf) || !lerTotais(documento, doCaixa, cf) ||
        !lerItens(documento, cf) || !lerPagamentos(documento, cf))
        return false;
    if (auto infAdic = LeitorXml(documento).grupo("infAdic"))
        ler(*infAdic, "<infCpl>", cf.MsgPromocional, FimDeLinha::kMantido);
    return true;
}

// The digest that a signature brought, or that of the file's own text. Where Latin-1 has all its
// characters that is the digest of its Latin-1 form, in which limits count characters.
bool lerDigest(const ArquivoXml &documento, CupomFiscal &cf) {
    const auto &[original, latin1] = documento;
    if (lerPrimeiro(latin1, {"<DigestValue>"}, cf.DigestValueAutorizado, FimDeLinha::kMantido))
        return true;
    const bool fiel = latin1 == original || fnParseToUtf8(latin1) == original;
    std::string digest;
    const int gerado = fiel ? fnGerarDigestValue(latin1, digest)
                            : fnGerarDigestValue(original, digest, Codificacao::kUtf8);
    if (gerado != ZEL_OK) return false;
    cf.DigestValueAutorizado = digest;
    return true;
}

// Two vocabularies: the sending component's own, and the authorizer's record.
bool lerAutorizacao(std::string_view retorno, CupomFiscal &cf) {
    const bool normal = cf.TipoEmissao == kEmissaoNormal;
    if (normal && !lerProtocolo(retorno, cf)) return false;
    // A link without its end leads nowhere: a link that is too long is none.
    const auto link = primeiroValor(retorno, {"<LinkXML>", "<LinkNFCe>"}, FimDeLinha::kMantido);
    if (link && link->size() <= kMaximoLink) {
        cf.LinkNFCe = *link;
        cf.TipoAmbiente = formatarInteiro(kLinkPronto);
        return true;
    }
    cf.TipoAmbiente = cf.TpAmp.texto();
    return (!normal ||
            lerPrimeiro(retorno, {"<DocDhAut>", "<dhRecbto>"}, cf.DataHoraAutorizacao)) &&
           lerPrimeiro(retorno, {"<DocDigestValue>", "<digVal>"}, cf.DigestValueAutorizado,
                       FimDeLinha::kMantido);
}

std::optional<ArquivoXml> lerComMarca(std::string_view caminho, std::string_view marca) {
    return lerArquivoXml(caminho,
                         caminho.find(marca) != caminho.npos ? Forma::kEmbaralhada : Forma::kClara);
}

// What of a text no document loses: neither accents nor blanks.
std::string soLetras(std::string_view texto) {
    std::string letras = fnRetiraAcentuacao(texto);
    std::erase_if(letras, [](char c) { return c == ' ' || c == '\n'; });
    return letras;
}

std::string documentoDoEmitente() {
    const std::string cnpj = valorImpresso(R"(EMIT\CNPJ)"_chave);
    return (cnpj.size() == kTamanhoCNPJ ? "CNPJ-" : "CPF- ") + emLinhas(fnFormatarCPFCNPJ(cnpj));
}

void imprimirEmitenteConfigurado(std::string &texto) {
    // The texts last as long as the call that views them.
    imprimirEmitente(
        {linhasConfiguradas(R"(EMIT\xNome)"_chave), documentoDoEmitente(),
         linhasConfiguradas(R"(EMIT\IE)"_chave), linhasConfiguradas(R"(EMIT\ENDEREMIT\xLgr)"_chave),
         linhasConfiguradas(R"(EMIT\ENDEREMIT\Nro)"_chave),
         linhasConfiguradas(R"(EMIT\ENDEREMIT\xBairro)"_chave),
         linhasConfiguradas(R"(EMIT\ENDEREMIT\xMun)"_chave),
         linhasConfiguradas(R"(EMIT\ENDEREMIT\UF)"_chave)},
        logotipoSeparado() ? kCancelamentoComLogotipo : kEmitenteCorrido, "", "", texto);
}

} // namespace

bool parseXMLCupomFiscal(const TotalImposto &total, std::string_view xmlPath,
                         std::string_view returnPath, CupomFiscal &cf) {
    const auto documento = lerComMarca(xmlPath, arquivos::kContingencia);
    if (!documento || !lerDocumento(documento->texto, total, cf)) return false;

    const bool offline = returnPath == kOffline;
    const auto retorno = offline ? std::nullopt : lerArquivoXml(returnPath, Forma::kClara);
    if (offline ? !lerDigest(*documento, cf) : !retorno) return false;

    const bool conhecida =
        cf.TipoEmissao == kEmissaoNormal || cf.TipoEmissao == kEmissaoContingencia;
    if (!offline && conhecida) return lerAutorizacao(retorno->texto, cf);
    cf.TipoAmbiente = cf.TpAmp.texto();
    return true;
}

bool parseXMLCupomFiscalCancelamento(std::string_view xmlPath, std::string_view returnPath,
                                     CupomFiscal &cf) {
    const auto pedido = lerComMarca(xmlPath, arquivos::kCancelamento.substr(1));
    if (!pedido) return false;
    const bool offline = returnPath == kOffline;
    const auto retorno = offline ? std::nullopt : lerArquivoXml(returnPath, Forma::kClara);
    if (!offline && !retorno) return false;

    if (!lerPrimeiro(pedido->texto, {"<ChaAcesso>", "<chNFe>"}, cf.ChaveDeAcesso)) return false;
    if (cf.ChaveDeAcesso.tamanho() < ChaveAcesso::kDigitos)
        return semChave("ChaAcesso", cf.ChaveDeAcesso);
    cf.Serie = ChaveAcesso::parte(cf.ChaveDeAcesso, ChaveAcesso::Parte::kSerie);
    cf.NumeroNotaFiscal = ChaveAcesso::parte(cf.ChaveDeAcesso, ChaveAcesso::Parte::kNNF);
    return offline || lerProtocolo(retorno->texto, cf);
}

void acertarMensagem(ST_PersitenceXML_ZEL &emCurso, const CupomFiscal &cf) {
    const auto &encerramento = emCurso.encerramento;
    const std::string mensagem = encerramento ? mensagemDoDocumento(*encerramento) : "";
    if (mensagem.empty() || soLetras(textoSimples(mensagem)) != soLetras(cf.MsgPromocional))
        verDocumentoCarregado(emCurso);
}

int layoutNFC(const ST_PersitenceXML_ZEL &emCurso, const DadosImpressao &dados,
              const CupomFiscal &cf, std::string_view urlQrcode, int colunas, std::string &texto,
              bool viaEstabelecimento) {
    const ColunasLayout *layout = createLayout(colunas);
    if (layout == nullptr) return recusar(Motivo::kColunas, {.numero = colunas});
    const int ambiente = cf.ambiente();
    std::string enderecoChave;
    // Without an address the receipt is printed with the place empty.
    retornarEnderecoConsulta(cf, ambiente, enderecoChave, true);
    const bool resumo = valorConfig(R"(CONFIGURACAO\ImpressaoCompleta)"_chave) == "0" &&
                        cf.TipoEmissao != kEmissaoContingencia;

    imprimirSetor_I(*layout, cf, texto);
    imprimirSetor_II(*layout, texto);
    if (!resumo) imprimirSetor_III(*layout, cf.Itens, texto);
    imprimirSetor_IV(*layout, cf, dados.IndicadorTroco, texto);
    imprimirSetor_V(*layout, cf, linhasConfiguradas(R"(NFCE\MsgLeiDoImposto)"_chave), texto);
    imprimirSetor_Va(*layout, cf, texto);
    imprimirSetor_VI(*layout, cf, emLinhas(enderecoChave), ambiente, viaEstabelecimento, texto);
    imprimirSetor_VII(*layout, cf, texto);
    std::string conteudo(urlQrcode);
    if (conteudo.empty()) escrever(conteudo, gerarUrlQrcode(cf), "<lmodulo>3</lmodulo>");
    imprimirSetor_VIII(*layout, cf, conteudo, ambiente, texto);
    imprimirMsgPromocional(*layout, emCurso, cf, texto);
    escrever(texto, "<sl>4</sl><gui></gui>");
    return ZEL_OK;
}

int layoutCancNFC(const CupomFiscal &cf, bool online, int /*colunas*/, std::string &texto) {
    texto.clear();
    imprimirEmitenteConfigurado(texto);
    escrever(texto, kSeparadorCancelamento, kSeparadorCancelamento,
             online ? "              CANCELAMENTO NFC-e\r\n"_fixo
                    : "CANCELAMENTO NFC-e EM CONTINGÊNCIA OFF-LINE\r\n"_fixo,
             kSeparadorCancelamento);
    escrever(texto, "<c>Número NFCe Cancelada: "_fixo, cf.NumeroNotaFiscal, "    Série: "_fixo,
             cf.Serie, "\r\n                 CHAVE DE ACESSO NFCe CANCELADA\r\n",
             cf.getChaveDeAcessoFormatado(), "</c>\r\n");
    if (online)
        escrever(texto, "Protocolo de Autorização Cancelamento:"_fixo, cf.ProtocoloSefaz, "\r\n");
    escrever(texto, "<sl>4</sl><gui></gui>");
    return ZEL_OK;
}

} // namespace zel
