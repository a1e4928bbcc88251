// SPDX-License-Identifier: MIT
#include "impressao/Impressao.h"

#include "comum/ChaveAcesso.h"
#include "config/Registro.h"
#include "disco/Arquivo.h"
#include "disco/ArquivoCripto.h"
#include "impressao/ColunasLayout.h"
#include "impressao/GerenciadorImpressao.h"
#include "impressao/LayoutImpressao.h"
#include "impressao/LeituraXml.h"
#include "impressao/ZEL_PDF.h"
#include "recusa/Recusa.h"
#include "texto/Numero.h"
#include "texto/Texto.h"
#include "zel_felbor/codigos.h"

namespace zel {

namespace {

constexpr std::size_t kMaximoParametros = 99;

// Situations of a return in which the document is authorized.
constexpr long long kAutorizado = 100;
constexpr long long kAutorizadoForaDoPrazo = 150;

constexpr Chave kUrlQrcode = R"(NFCE\UrlQrcode)"_chave;

// The content without the mark-up of its module size. A content that the configuration cannot hold
// is kept as none, so that the last content known is never that of another receipt, nor a part.
std::string conteudoGuardado(std::string_view conteudo) {
    constexpr std::size_t kMaximo = stZELTAGs[kUrlQrcode.indice].tamanho;
    conteudo = conteudo.substr(0, conteudo.find("<lmodulo>"));
    const bool cabe = conteudo.size() <= kMaximo && conteudo.find("</") == conteudo.npos;
    return cabe ? std::string(conteudo) : std::string{};
}

int guardarVenda(const CupomFiscal &cf, std::string_view urlQrcode) {
    const Alteracao alteracoes[] = {
        {R"(NFCE\ChaveDeAcesso)"_chave, std::string(cf.ChaveDeAcesso)},
        {R"(NFCE\ProtocoloAutorizacao)"_chave, std::string(cf.ProtocoloSefaz)},
        {kUrlQrcode,
         urlQrcode.empty() ? conteudoGuardado(gerarUrlQrcode(cf)) : conteudoGuardado(urlQrcode)},
    };
    if (const int codigo = alterarConfig(alteracoes); codigo != ZEL_OK) return codigo;
    definirAutorizacao(
        {std::string(cf.DigestValueAutorizado), std::string(cf.DataHoraAutorizacao)});
    return ZEL_OK;
}

bool semTexto() {
    const std::string_view completa = valorConfig(R"(CONFIGURACAO\ImpressaoCompleta)"_chave);
    return completa != "0" && completa != "1";
}

int imprimirVenda(ST_PersitenceXML_ZEL &emCurso, const DadosImpressao &dados, TotalImposto &total,
                  const CupomFiscal &cf, std::string_view urlQrcode, int colunas,
                  std::string &saida) {
    if (const int codigo = guardarVenda(cf, urlQrcode); codigo != ZEL_OK) return codigo;
    if (semTexto()) return ZEL_OK;
    acertarMensagem(emCurso, cf);
    layoutNFC(emCurso, dados, cf, urlQrcode, colunas, saida, false);
    if (cf.TipoEmissao == kEmissaoContingencia)
        layoutNFC(emCurso, dados, cf, urlQrcode, colunas, saida, true);
    total.limpar();
    return fnCriarArquivoCriptUltimaDanfe(saida);
}

int imprimirCancelamento(const CupomFiscal &cf, bool online, int colunas, std::string &saida) {
    if (semTexto()) return ZEL_OK;
    layoutCancNFC(cf, online, colunas, saida);
    return fnCriarArquivoCriptUltimaDanfe(saida);
}

int gravarDanfePDF(const CupomFiscal &cf, std::string_view retorno, int colunas,
                   std::string_view texto) {
    std::string chave = valorDoRetorno(retorno, "DOCCHAACESSO").value_or("");
    if (chave.empty()) chave = cf.ChaveDeAcesso;
    // It names a file: anything but digits could lead it out of its directory.
    if (!ehChave(chave))
        return recusar(Motivo::kImpressaoSemChave, {.campo = "DocChaAcesso", .dado = chave});
    return fnGerarPDFDanfe(texto, colunas, "NFe" + chave + "_DANFE.pdf");
}

int gravarPDFs(const CupomFiscal &cf, std::string_view returnPath, int colunas,
               std::string_view texto) {
    const bool listagem = valorConfig(R"(CONFIGURACAO\SalvarXMLPDF)"_chave) == "1";
    const bool danfe = valorConfig(R"(CONFIGURACAO\SalvarDanfePDF)"_chave) == "1";
    if (!listagem && !danfe) return ZEL_OK;
    std::string retorno;
    if (lerArquivo(std::string(returnPath), retorno) != Leitura::kLido)
        return recusar(Motivo::kImpressaoIlegivel);
    const std::string codigoDaSituacao = valorDoRetorno(retorno, "SITCODIGO").value_or("");
    const long long situacao = lerInteiro(codigoDaSituacao);
    if (situacao != kAutorizado && situacao != kAutorizadoForaDoPrazo)
        return recusar(Motivo::kNaoAutorizado, {.dado = codigoDaSituacao});
    if (listagem)
        if (const int codigo = fnGerarPDF("DocXMLBase64", retorno); codigo != ZEL_OK) return codigo;
    return danfe ? gravarDanfePDF(cf, retorno, colunas, texto) : int{ZEL_OK};
}

} // namespace

int fnGerarArquivoFormatadoNF(ST_PersitenceXML_ZEL &emCurso, const DadosImpressao &dados,
                              TotalImposto &total, const PedidoImpressao &pedido,
                              std::string &saida) {
    saida.clear();
    const auto &[xmlPath, returnPath, urlQrcode, colunas, tipoDocumento] = pedido;
    const TipoDocumento tipo{tipoDocumento};
    const bool venda = tipo == TipoDocumento::kVenda;
    if (xmlPath.data() == nullptr) return recusar(Motivo::kCaminhoNulo, {.campo = "caminhoXml"});
    if (returnPath.data() == nullptr)
        return recusar(Motivo::kCaminhoNulo, {.campo = "caminhoRetorno"});
    if (!venda && tipo != TipoDocumento::kCancelamento)
        return recusar(Motivo::kTipoDeDocumento, {.numero = tipoDocumento});
    if (venda && createLayout(colunas) == nullptr)
        return recusar(Motivo::kColunas, {.numero = colunas});
    // The QR code kept and the one printed must come from the same configuration.
    if (const int codigo = fnXML_CarregarXML_ZEL(); codigo != ZEL_OK) return codigo;

    CupomFiscal cf;
    const bool lido = venda ? parseXMLCupomFiscal(total, xmlPath, returnPath, cf)
                            : parseXMLCupomFiscalCancelamento(xmlPath, returnPath, cf);
    if (!lido) return jaRecusado(Motivo::kImpressaoSemElemento);
    const int codigo = venda ? imprimirVenda(emCurso, dados, total, cf, urlQrcode, colunas, saida)
                             : imprimirCancelamento(cf, returnPath != kOffline, colunas, saida);
    return codigo == ZEL_OK ? gravarPDFs(cf, returnPath, colunas, saida) : codigo;
}

int fnAnalisarParametrosImpressao(DadosImpressao &dados, const CupomFiscal &cf, int modo,
                                  std::string_view parametros) {
    constexpr std::string_view kEntrada = "VALORPGTO=";
    const std::string texto = toUpperCase(parametros.substr(0, kMaximoParametros));
    const std::size_t entrada = texto.find(kEntrada);
    if (entrada == texto.npos) return ZEL_OK;
    const std::size_t inicio = entrada + kEntrada.size();
    const std::size_t fim = texto.find(';', inicio);
    if (fim == texto.npos || fim == inicio) return ZEL_OK;

    const bool comTroco = modo == 1;
    const std::string valor = trocarVirgula(texto.substr(inicio, fim - inicio));
    const Alteracao troco{R"(CONFIGURACAO\TrocoUltimaNFCe)"_chave,
                          formatarMoeda(comTroco ? lerDecimal(valor) - cf.ValorTotal : 0)};
    if (const int codigo = alterarConfig({&troco, 1}); codigo != ZEL_OK) return codigo;
    dados.IndicadorTroco = comTroco;
    return ZEL_OK;
}

} // namespace zel
