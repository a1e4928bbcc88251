// SPDX-License-Identifier: MIT
// The exported functions: each makes sure that the library is ready, turns its texts into views,
// forwards to one operation and hands its result back. Raw character pointers end here. Nothing is
// checked and nothing is decided in this room, result buffers apart.
#include "ZEL_FelborFramework.h"

#include "api/Quadro.h"
#include "config/Registro.h"
#include "disco/ArquivoCripto.h"
#include "emcurso/Persistencia.h"
#include "emcurso/ZEL_Controle.h"
#include "emissao/Contingencia.h"
#include "imposto/Presets.h"
#include "imposto/TotalImposto.h"
#include "impressao/Impressao.h"
#include "impressao/ZEL_PDF.h"
#include "negocio/Abertura.h"
#include "negocio/AjusteItem.h"
#include "negocio/Cancelamento.h"
#include "negocio/Consulta.h"
#include "negocio/Encerramento.h"
#include "negocio/InfoEstendida.h"
#include "negocio/Inicializacao.h"
#include "negocio/Inutilizacao.h"
#include "negocio/Pagamento.h"
#include "negocio/Totalizacao.h"
#include "negocio/Transporte.h"
#include "negocio/Venda.h"
#include "recusa/Recusa.h"

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>

namespace zel {
namespace {

// A null text is a view without data, so that an operation can tell it from an empty one.
std::string_view texto(const char *argumento) {
    return argumento == nullptr ? std::string_view{} : std::string_view{argumento};
}

// Copies a result out with its terminator; the caller's buffer has room by contract.
void copiarResultado(std::string_view resultado, char *saida) {
    *std::copy(resultado.begin(), resultado.end(), saida) = '\0';
}

// Hands over the text that a read fills, empty where there is nothing to report.
template <typename Leitura>
int entregar(std::string_view nome, char *saida, Leitura leitura) {
    if (saida == nullptr) return recusar(Motivo::kSaidaNula, {.campo = nome});
    *saida = '\0';
    std::string resultado;
    const int codigo = leitura(resultado);
    copiarResultado(resultado, saida);
    return codigo;
}

} // namespace
} // namespace zel

using namespace zel;

// ---- Initialization -----------------------------------------------------------------------------

int aCFInicializar_ZEL() {
    return semExcecao(
        [] { return naVez([] { return fnCFInicializar_ZEL_Felbor(G_stXML_Persistencia); }); });
}

// ---- Opening and identification -----------------------------------------------------------------

int aCFAbrir_ZEL(const char *documento, const char *nome, const char *logradouro,
                 const char *numero, const char *bairro, const char *codigoMunicipio,
                 const char *municipio, const char *uf, const char *cep) {
    return quadroDoCupom([&](auto &cupom) {
        return fnCFAbrir_ZEL_Felbor(cupom, {texto(documento), texto(nome), texto(logradouro),
                                            texto(numero), texto(bairro), texto(codigoMunicipio),
                                            texto(municipio), texto(uf), texto(cep)});
    });
}

int aCFAbrirNumSerie_ZEL(int numeroCupom, int serie, const char *documento, const char *nome,
                         const char *logradouro, const char *numero, const char *bairro,
                         const char *codigoMunicipio, const char *municipio, const char *uf,
                         const char *cep) {
    return quadroDoCupom([&](auto &cupom) {
        return fnCFAbrirNumSerie_ZEL_Felbor(cupom, numeroCupom, serie,
                                            {texto(documento), texto(nome), texto(logradouro),
                                             texto(numero), texto(bairro), texto(codigoMunicipio),
                                             texto(municipio), texto(uf), texto(cep)});
    });
}

int aCFIdentificarConsumidor_ZEL(const char *documento, const char *nome, const char *logradouro,
                                 const char *numero, const char *bairro,
                                 const char *codigoMunicipio, const char *municipio, const char *uf,
                                 const char *cep, const char *email) {
    return quadroDoCupom([&](auto &cupom) {
        return fnCFIdentificarConsumidor_ZEL_Felbor(
            cupom,
            {texto(documento), texto(nome), texto(logradouro), texto(numero), texto(bairro),
             texto(codigoMunicipio), texto(municipio), texto(uf), texto(cep)},
            texto(email));
    });
}

int aCFIdentificarTransportadora_ZEL(const char *documento, const char *nome,
                                     const char *inscricaoEstadual, const char *endereco,
                                     const char *municipio, const char *uf) {
    return quadroDoCupom([&](auto &cupom) {
        return fnCFIdentificarTransportadora_ZEL_Felbor(
            cupom, {texto(documento), texto(nome), texto(inscricaoEstadual), texto(endereco),
                    texto(municipio), texto(uf)});
    });
}

// ---- Items --------------------------------------------------------------------------------------

int aCFVender_ZEL(const char *aliquota, const char *quantidade, const char *valorUnitario,
                  const char *tipoAjuste, const char *valorAjuste, const char *codigo,
                  const char *unidade, const char *descricao) {
    return quadroDoCupom([&](auto &cupom) {
        return fnCFVender_ZEL_Felbor(cupom, G_stTagImpostoConfTemp,
                                     {.aliquota = texto(aliquota),
                                      .quantidade = texto(quantidade),
                                      .valorUnitario = texto(valorUnitario),
                                      .tipoAjuste = texto(tipoAjuste),
                                      .valorAjuste = texto(valorAjuste),
                                      .codigo = texto(codigo),
                                      .ncm = {},
                                      .cfop = {},
                                      .unidade = texto(unidade),
                                      .descricao = texto(descricao)});
    });
}

int aCFVenderCompleto_ZEL(const char *aliquota, const char *quantidade, const char *valorUnitario,
                          const char *tipoAjuste, const char *valorAjuste, const char *codigo,
                          const char *ncm, const char *cfop, const char *unidade,
                          const char *descricao, const char *) {
    return quadroDoCupom([&](auto &cupom) {
        return fnCFVender_ZEL_Felbor(cupom, G_stTagImpostoConfTemp,
                                     {.aliquota = texto(aliquota),
                                      .quantidade = texto(quantidade),
                                      .valorUnitario = texto(valorUnitario),
                                      .tipoAjuste = texto(tipoAjuste),
                                      .valorAjuste = texto(valorAjuste),
                                      .codigo = texto(codigo),
                                      .ncm = texto(ncm),
                                      .cfop = texto(cfop),
                                      .unidade = texto(unidade),
                                      .descricao = texto(descricao)});
    });
}

int aCFVenderXml_ZEL(const char *xmlItem) {
    return quadroDoCupom(
        [&](auto &cupom) { return fnCFVenderXml_ZEL_Felbor(cupom, texto(xmlItem)); });
}

int aCFLancarDescontoItem_ZEL(int item, const char *tipo, const char *valor) {
    return quadroDoCupom([&](auto &cupom) {
        return fnCFLancarDescontoItem_ZEL_Felbor(cupom, item, texto(tipo), texto(valor));
    });
}

int aCFLancarAcrescimoItem_ZEL(int item, const char *tipo, const char *valor) {
    return quadroDoCupom([&](auto &cupom) {
        return fnCFLancarAcrescimoItem_ZEL_Felbor(cupom, item, texto(tipo), texto(valor));
    });
}

int aCFCancelarItem_ZEL(int item) {
    return quadroDoCupom([&](auto &cupom) { return fnCFCancelarItem_ZEL_Felbor(cupom, item); });
}

int aCFCancelarItemParcial_ZEL(int item, const char *quantidade) {
    return quadroDoCupom([&](auto &cupom) {
        return fnCFCancelarItemParcial_ZEL_Felbor(cupom, item, texto(quantidade));
    });
}

int aCFCancelarDescontoItem_ZEL(int item) {
    return quadroDoCupom(
        [&](auto &cupom) { return fnCFCancelarDescontoItem_ZEL_Felbor(cupom, item); });
}

int aCFCancelarAcrescimoItem_ZEL(int item) {
    return quadroDoCupom(
        [&](auto &cupom) { return fnCFCancelarAcrescimoItem_ZEL_Felbor(cupom, item); });
}

// ---- Totalization and payment -------------------------------------------------------------------

int aCFTotalizar_ZEL(const char *tipo, const char *valor) {
    return quadroDoCupom(
        [&](auto &cupom) { return fnCFTotalizar_ZEL_Felbor(cupom, texto(tipo), texto(valor)); });
}

int aCFEfetuarPagamento_ZEL(const char *forma, const char *valor) {
    return quadroDoCupom([&](auto &cupom) {
        return fnCFEfetuarPagamento_ZEL_Felbor(cupom, texto(forma), texto(valor));
    });
}

int aCFEstornarPagamento_ZEL(const char *formaAtual, const char *formaNova, const char *valor) {
    return quadroDoCupom([&](auto &cupom) {
        return fnCFEstornarPagamento_ZEL_Felbor(cupom, texto(formaAtual), texto(formaNova),
                                                texto(valor));
    });
}

int aCFValorLeiImposto_ZEL(const char *valor) {
    return quadro([&] { return fnCFValorLeiImposto_ZEL_Felbor(G_szTotalImposto, texto(valor)); });
}

// ---- Closing, cancellation and requests ---------------------------------------------------------

int tCFEncerrar_ZEL(const char *informacoes) {
    return quadroDoCupom(
        [&](auto &cupom) { return fnCFEncerrar_ZEL_Felbor(cupom, texto(informacoes)); });
}

int tCFEncerrarConfigMsg_ZEL(const char *informacoes, const char *informacoesFisco) {
    return quadroDoCupom([&](auto &cupom) {
        return fnCFEncerrarConfigMsg_ZEL_Felbor(cupom, texto(informacoes), texto(informacoesFisco));
    });
}

int tCFCancelar_ZEL(const char *numero, const char *serie, const char *chave, const char *protocolo,
                    const char *justificativa) {
    return quadroDeMudanca([&] {
        return fnCFCancelar_ZEL_Felbor(G_stXML_Persistencia, texto(numero), texto(serie),
                                       texto(chave), texto(protocolo), texto(justificativa));
    });
}

int tCFCancelarOffline_ZEL(const char *numero, const char *serie, const char *chave,
                           const char *justificativa, char *diretorios) {
    return quadroDeMudanca([&] {
        std::optional<std::string> lista;
        if (diretorios != nullptr) lista = diretorios;
        const int codigo = fnCFCancelarOffline_ZEL_Felbor(texto(numero), texto(serie), texto(chave),
                                                          texto(justificativa), lista);
        if (lista && *lista != diretorios) copiarResultado(*lista, diretorios);
        return codigo;
    });
}

int tCFInutilizar_ZEL(const char *numeroInicial, const char *numeroFinal, const char *serie,
                      const char *justificativa) {
    return quadroDeMudanca([&] {
        return fnCFInutilizar_ZEL_Felbor(texto(numeroInicial), texto(numeroFinal), texto(serie),
                                         texto(justificativa));
    });
}

int GeraXMLConsulta_ZEL(const char *tipo, const char *inicio, const char *fim, const char *serie,
                        const char *chave) {
    return mudancaSemQuadro([&] {
        return fnGeraXMLConsulta_ZEL(texto(tipo), texto(inicio), texto(fim), texto(serie),
                                     texto(chave));
    });
}

// ---- Taxes of the next item ---------------------------------------------------------------------

int aCFConfICMS00_ZEL(const char *origem, const char *cst, const char *modBC,
                      const char *aliquota) {
    return quadroDosPresets([&](auto &presets) {
        return fnCFConfICMS00_ZEL_Felbor(presets, texto(origem), texto(cst), texto(modBC),
                                         texto(aliquota));
    });
}

int aCFConfICMS40_ZEL(const char *origem, const char *cst, const char *valorDesonerado,
                      const char *motivo) {
    return quadroDosPresets([&](auto &presets) {
        return fnCFConfICMS40_ZEL_Felbor(presets, texto(origem), texto(cst), texto(valorDesonerado),
                                         texto(motivo));
    });
}

int aCFConfICMS60_ZEL(const char *origem, const char *cst, const char *baseRetida,
                      const char *valorRetido) {
    return quadroDosPresets([&](auto &presets) {
        return fnCFConfICMS60_ZEL_Felbor(presets, texto(origem), texto(cst), texto(baseRetida),
                                         texto(valorRetido));
    });
}

int aCFConfPisAliq_ZEL(const char *cst, const char *aliquota) {
    return quadroDosPresets([&](auto &presets) {
        return fnCFConfPisAliq_ZEL_Felbor(presets, texto(cst), texto(aliquota));
    });
}

int aCFConfPisQtde_ZEL(const char *cst, const char *valorUnidade) {
    return quadroDosPresets([&](auto &presets) {
        return fnCFConfPisQtde_ZEL_Felbor(presets, texto(cst), texto(valorUnidade));
    });
}

int aCFConfPisNT_ZEL(const char *cst) {
    return quadroDosPresets(
        [&](auto &presets) { return fnCFConfPisNT_ZEL_Felbor(presets, texto(cst)); });
}

int aCFConfPisOutr_ZEL(const char *cst, const char *aliquota, const char *valorUnidade) {
    return quadroDosPresets([&](auto &presets) {
        return fnCFConfPisOutr_ZEL_Felbor(presets, texto(cst), texto(aliquota),
                                          texto(valorUnidade));
    });
}

int aCFConfCofinsAliq_ZEL(const char *cst, const char *aliquota) {
    return quadroDosPresets([&](auto &presets) {
        return fnCFConfCofinsAliq_ZEL_Felbor(presets, texto(cst), texto(aliquota));
    });
}

int aCFConfCofinsQtde_ZEL(const char *cst, const char *valorUnidade) {
    return quadroDosPresets([&](auto &presets) {
        return fnCFConfCofinsQtde_ZEL_Felbor(presets, texto(cst), texto(valorUnidade));
    });
}

int aCFConfCofinsNT_ZEL(const char *cst) {
    return quadroDosPresets(
        [&](auto &presets) { return fnCFConfCofinsNT_ZEL_Felbor(presets, texto(cst)); });
}

int aCFConfCofinsOutr_ZEL(const char *cst, const char *aliquota, const char *valorUnidade) {
    return quadroDosPresets([&](auto &presets) {
        return fnCFConfCofinsOutr_ZEL_Felbor(presets, texto(cst), texto(aliquota),
                                             texto(valorUnidade));
    });
}

// ---- Configuration and information --------------------------------------------------------------

int regAlterarValor_ZEL(const char *chave, const char *valor) {
    return quadroDeMudanca([&] {
        const int codigo = fnRegAlterarValor_ZEL(texto(chave), texto(valor));
        if (codigo == ZEL_OK && ehCaminhoDoEstado(texto(chave))) aceitarEstado();
        return codigo;
    });
}

int regRetornarValor_ZEL(const char *chave, char *valor) {
    return quadro([&] {
        if (ehCaminhoDoEstado(texto(chave))) verConfig();
        return entregar("valor", valor, [&](std::string &resultado) {
            return fnRegRetornarValor_ZEL(texto(chave), resultado);
        });
    });
}

int rCFVerificarStatus_ZEL() {
    // An unreadable file leaves the state in memory, 0 in a new process.
    return semQuadro([] {
        verConfig();
        lembrarEstado();
        return fnCFVerificarStatus_ZEL();
    });
}

int rInfoEstendida_ZEL(const char *indice, char *valor) {
    return quadroDoEstado([&] {
        return entregar("valor", valor, [&](std::string &resultado) {
            return fnInfoEstendida_ZEL(G_stXML_Persistencia, texto(indice), resultado);
        });
    });
}

int rURLQrcode_ZEL(char *url) {
    return quadro([&] {
        return entregar("url", url, [](std::string &resultado) {
            return fnRegRetornarValor_ZEL(R"(NFCE\UrlQrcode)", resultado);
        });
    });
}

// ---- Contingency, printing and files ------------------------------------------------------------

int aCFContingenciaUltimaNota_ZEL(int tipo, char *textoDocumento) {
    return quadroDoCupom([&](auto &cupom) {
        const std::string_view entrada = texto(textoDocumento);
        std::string resultado(entrada);
        const int codigo = fnGerarXMLContingencia(cupom, tipo, resultado);
        // A refused call leaves the text alone, so that it may even be a literal.
        if (textoDocumento != nullptr && resultado != entrada)
            copiarResultado(resultado, textoDocumento);
        return codigo;
    });
}

int GerarArquivoFormatadoNF_ZEL(const char *caminhoXml, const char *caminhoRetorno,
                                const char *urlQrcode, int colunas, int tipoDocumento,
                                const char * /*reservado*/, char *saida) {
    return mudancaSemQuadro([&] {
        return entregar("saida", saida, [&](std::string &resultado) {
            return fnGerarArquivoFormatadoNF(G_stXML_Persistencia, G_stDadosImpressao,
                                             G_szTotalImposto,
                                             {texto(caminhoXml), texto(caminhoRetorno),
                                              texto(urlQrcode), colunas, tipoDocumento},
                                             resultado);
        });
    });
}

int RetornarUltimoBufferFormatadoNF_ZEL(char *saida) {
    return semQuadro([&] {
        return entregar("saida", saida, [](std::string &resultado) {
            return fnLerArquivoCriptUltimaDanfe(resultado);
        });
    });
}

int GeraPDF_ZEL(const char *documentoBase64) {
    return mudancaSemQuadro([&] { return fnGerarPDF("DocXML", texto(documentoBase64)); });
}

int GeraPDF_DANFE_ZEL(const char *documentoBase64) {
    return mudancaSemQuadro([&] {
        return gerarPdfDoXml(G_stXML_Persistencia, G_stDadosImpressao, G_szTotalImposto,
                             texto(documentoBase64));
    });
}

int eCriptografarArquivo_ZEL(const char *origem, const char *destino, const char *chave) {
    return semExcecao(
        [&] { return fnCriptografarArquivo(texto(origem), texto(destino), texto(chave)); });
}

int eDescriptografarArquivo_ZEL(const char *origem, const char *destino, const char *chave) {
    return semExcecao(
        [&] { return fnDescriptografarArquivo(texto(origem), texto(destino), texto(chave)); });
}
