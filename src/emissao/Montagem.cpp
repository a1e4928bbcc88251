// SPDX-License-Identifier: MIT
#include "emissao/Montagem.h"

#include "comum/ArquivosDoCaixa.h"
#include "config/Registro.h"
#include "diario/Gravacao.h"
#include "disco/ArquivoCripto.h"
#include "disco/Diretorio.h"
#include "emcurso/ArquivoPersistencia.h"
#include "emissao/Cabecalho.h"
#include "recusa/Recusa.h"
#include "texto/Acentuacao.h"
#include "texto/Latin1.h"
#include "texto/Marcacao.h"
#include "texto/Numero.h"
#include "texto/Texto.h"
#include "zel_felbor/codigos.h"

#include <ctime>
#include <vector>

namespace zel {

namespace {

// Of the closing section only the consumer's text reaches the document.
void escreverEncerramento(std::string &texto, const ST_tagZEL &encerramento) {
    const std::string infCpl = mensagemDoDocumento(encerramento);
    if (infCpl.empty()) return;
    texto.append("<infAdic><infCpl>").append(infCpl).append("</infCpl></infAdic>");
}

// In the words of the log (ISO-8859-1); empty when no section is missing.
std::string_view secaoAusente(const ST_PersitenceXML_ZEL &documento) {
    if (!documento.abertura) return "a abertura";
    if (!documento.vendas || documento.vendas->empty()) return "um item";
    if (!documento.totalizacao) return "a totalização"_l1;
    if (!documento.transporte) return "o transporte, que o encerramento grava";
    if (!documento.pagamentos || documento.pagamentos->empty()) return "um pagamento";
    return documento.encerramento ? "" : "o encerramento";
}

// The body after the head. ZEL_OK, or ZEL_RECUSADO when a section is missing.
int escreverCorpo(std::string &texto, const ST_PersitenceXML_ZEL &documento) {
    if (const std::string_view falta = secaoAusente(documento); !falta.empty())
        return recusar(Motivo::kDocumentoIncompleto, {.campo = falta});
    documento.abertura->escreverEstrutura(texto);
    for (const ST_tagZEL &item : *documento.vendas) {
        texto.append("<det nItem='").append(item.valor.value_or("")).append("'>");
        item.escreverEstrutura(texto);
        texto += "</det>";
    }
    documento.totalizacao->escreverEstrutura(texto);
    documento.transporte->escreverEstrutura(texto);
    for (const ST_tagZEL &pagamento : *documento.pagamentos)
        pagamento.escreverEstrutura(texto);
    escreverEncerramento(texto, *documento.encerramento);
    texto += "</infNFe></NFe>";
    return ZEL_OK;
}

// What the configuration remembers of a document that was written: its number and numeric code, its
// key, and no protocol yet. A cancellation without arguments must never name an older one.
std::vector<Alteracao> doUltimoDocumento(const Cabecalho &cabecalho) {
    std::vector<Alteracao> alteracoes = cabecalho.numeracao;
    alteracoes.push_back({R"(NFCE\ChaveDeAcesso)"_chave, cabecalho.chave});
    alteracoes.push_back({R"(NFCE\ProtocoloAutorizacao)"_chave, ""});
    return alteracoes;
}

int gravarEnvio(const Cabecalho &cabecalho, std::string documento, std::string &texto,
                JuntoDoDocumento junto) {
    std::vector<Alteracao> todas = doUltimoDocumento(cabecalho);
    todas.insert(todas.end(), junto.alteracoes.begin(), junto.alteracoes.end());
    junto.alteracoes = todas;
    if (const int resultado = gravarDocumento(documento, junto); resultado != ZEL_OK)
        return resultado;
    guardarHistorico(TipoCopia::kNFCe, documento);
    texto = std::move(documento);
    return ZEL_OK;
}

// Code and key are on disk before the first file appears: no code is ever in two documents.
int gravarContingencia(const Cabecalho &cabecalho, const std::string &documento,
                       std::string &texto) {
    const std::vector<Alteracao> alteracoes = doUltimoDocumento(cabecalho);
    const std::vector<Alteracao> anteriores = valoresAtuais(alteracoes);
    if (const int resultado = alterarConfig(alteracoes); resultado != ZEL_OK) return resultado;
    int resultado = jaRecusado(Motivo::kContingenciaSemDiretorio); // there is one
    bool algum = false;
    std::string ultimo;
    for (const std::string_view diretorio : separarDiretorios(texto)) {
        ultimo = std::string(diretorio).append(arquivos::nomeDaContingencia(cabecalho.chave));
        resultado = fnCriarArquivoContigencia(ultimo, documento);
        algum = algum || resultado == ZEL_OK;
    }
    texto = std::move(ultimo);
    if (!algum) alterarConfig(anteriores);
    return resultado;
}

} // namespace

std::string mensagemDoDocumento(const ST_tagZEL &encerramento) {
    const ST_tagZEL *infAdic = encerramento.getSubTag("infAdic");
    if (infAdic == nullptr) return {};
    return trim(
        fnRetornarTextoSemRepresentantes(substituirAll(infAdic->valorDe("infCpl"), "&#10;", " ")));
}

int fnXMLFormatado_ZEL(const ST_PersitenceXML_ZEL &documento, int tipo, std::string &texto,
                       const JuntoDoDocumento &junto) {
    if (tipo == kContingencia && separarDiretorios(texto).empty())
        return recusar(Motivo::kContingenciaSemDiretorio, {.campo = "texto", .dado = texto});
    Cabecalho cabecalho;
    if (const int resultado = cabecalhoZEL(tipo, std::time(nullptr), cabecalho);
        resultado != ZEL_OK)
        return resultado;
    std::string emitido = cabecalho.texto;
    if (const int incompleto = escreverCorpo(emitido, documento); incompleto != ZEL_OK) {
        const int resultado = alterarConfig(cabecalho.numeracao);
        return resultado == ZEL_OK ? incompleto : resultado;
    }
    emitido = fnAdequarCaracteres(emitido);
    if (tipo == kContingencia) return gravarContingencia(cabecalho, emitido, texto);
    return gravarEnvio(cabecalho, std::move(emitido), texto, junto);
}

int fnGerarXMLContingencia(ST_PersitenceXML_ZEL &documento, int tipo, std::string &texto) {
    if (const int resultado = fnXML_CarregarXML_ZEL(); resultado != ZEL_OK) return resultado;
    bool passageira = false;
    const int carga = fnCarregaEstrutura_ZEL(documento, &passageira);
    if (passageira) return carga;
    if (!documento.temListaDeVendas()) return recusar(Motivo::kReemitirSemItens);

    std::string parametros;
    if (tipo == kSubstituicao) {
        const auto numero = [](Chave chave) {
            return formatarInteiro(lerInteiro(valorConfig(chave)));
        };
        parametros = "<SubstituirDocumento><nNF>" + numero(R"(IDE\nNF)"_chave) + "</nNF><serie>" +
                     numero(R"(IDE\Serie)"_chave) + "</serie></SubstituirDocumento>";
    }
    const int resultado = fnXMLFormatado_ZEL(documento, tipo, texto, {.parametros = parametros});
    return resultado == 0 ? recusar(Motivo::kTipoDeEmissao, {.numero = tipo}) : resultado;
}

} // namespace zel
