// SPDX-License-Identifier: MIT
// The exported functions: each forwards to one operation in its frame, which makes ready, turns
// texts into views and hands the result back. Raw character pointers end here. Nothing is checked
// and nothing is decided in this room, result buffers apart.
#include "ZEL_FelborFramework.h"

#include "api/Quadro.h"
#include "config/Registro.h"
#include "disco/ArquivoCripto.h"
#include "emcurso/Carga.h"
#include "emcurso/Persistencia.h"
#include "emcurso/ZEL_Controle.h"
#include "emissao/Montagem.h"
#include "imposto/Presets.h"
#include "impressao/Impressao.h"
#include "impressao/ZEL_PDF.h"
#include "negocio/Abertura.h"
#include "negocio/AjusteItem.h"
#include "negocio/Cancelamento.h"
#include "negocio/Consulta.h"
#include "negocio/Encerramento.h"
#include "negocio/InfoEstendida.h"
#include "negocio/Pagamento.h"
#include "negocio/Requisicao.h"
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

DadosConsumidor consumidor(const char *documento, const char *nome, const char *logradouro,
                           const char *numero, const char *bairro, const char *codigoMunicipio,
                           const char *municipio, const char *uf, const char *cep) {
    return {visto(documento), visto(nome),   visto(logradouro),
            visto(numero),    visto(bairro), visto(codigoMunicipio),
            visto(municipio), visto(uf),     visto(cep)};
}

int vender(const DadosVenda &dados, const char *nome = __builtin_FUNCTION()) {
    return quadroDoCupom(
        [&](const Memoria &memoria) {
            return fnCFVender_ZEL_Felbor(memoria.cupom, memoria.presets, dados);
        },
        nome);
}

} // namespace
} // namespace zel

using namespace zel;

// ---- Initialization -----------------------------------------------------------------------------

int aCFInicializar_ZEL() {
    return semExcecao([](const Memoria &memoria) {
        return naVez([&] { return fnCFInicializar_ZEL_Felbor(memoria.cupom); });
    });
}

// ---- Opening and identification -----------------------------------------------------------------

int aCFAbrir_ZEL(const char *documento, const char *nome, const char *logradouro,
                 const char *numero, const char *bairro, const char *codigoMunicipio,
                 const char *municipio, const char *uf, const char *cep) {
    return noCupom(fnCFAbrir_ZEL_Felbor)(consumidor(documento, nome, logradouro, numero, bairro,
                                                    codigoMunicipio, municipio, uf, cep));
}

int aCFAbrirNumSerie_ZEL(int numeroCupom, int serie, const char *documento, const char *nome,
                         const char *logradouro, const char *numero, const char *bairro,
                         const char *codigoMunicipio, const char *municipio, const char *uf,
                         const char *cep) {
    return noCupom(fnCFAbrirNumSerie_ZEL_Felbor)(numeroCupom, serie,
                                                 consumidor(documento, nome, logradouro, numero,
                                                            bairro, codigoMunicipio, municipio, uf,
                                                            cep));
}

int aCFIdentificarConsumidor_ZEL(const char *documento, const char *nome, const char *logradouro,
                                 const char *numero, const char *bairro,
                                 const char *codigoMunicipio, const char *municipio, const char *uf,
                                 const char *cep, const char *email) {
    return noCupom(fnCFIdentificarConsumidor_ZEL_Felbor)(consumidor(documento, nome, logradouro,
                                                                    numero, bairro, codigoMunicipio,
                                                                    municipio, uf, cep),
                                                         email);
}

int aCFIdentificarTransportadora_ZEL(const char *documento, const char *nome,
                                     const char *inscricaoEstadual, const char *endereco,
                                     const char *municipio, const char *uf) {
    return noCupom(fnCFIdentificarTransportadora_ZEL_Felbor)(
        DadosTransportadora{visto(documento), visto(nome), visto(inscricaoEstadual),
                            visto(endereco), visto(municipio), visto(uf)});
}

// ---- Items --------------------------------------------------------------------------------------

int aCFVender_ZEL(const char *aliquota, const char *quantidade, const char *valorUnitario,
                  const char *tipoAjuste, const char *valorAjuste, const char *codigo,
                  const char *unidade, const char *descricao) {
    return vender({.aliquota = visto(aliquota),
                   .quantidade = visto(quantidade),
                   .valorUnitario = visto(valorUnitario),
                   .tipoAjuste = visto(tipoAjuste),
                   .valorAjuste = visto(valorAjuste),
                   .codigo = visto(codigo),
                   .ncm = {},
                   .cfop = {},
                   .unidade = visto(unidade),
                   .descricao = visto(descricao)});
}

int aCFVenderCompleto_ZEL(const char *aliquota, const char *quantidade, const char *valorUnitario,
                          const char *tipoAjuste, const char *valorAjuste, const char *codigo,
                          const char *ncm, const char *cfop, const char *unidade,
                          const char *descricao, const char *) {
    return vender({.aliquota = visto(aliquota),
                   .quantidade = visto(quantidade),
                   .valorUnitario = visto(valorUnitario),
                   .tipoAjuste = visto(tipoAjuste),
                   .valorAjuste = visto(valorAjuste),
                   .codigo = visto(codigo),
                   .ncm = visto(ncm),
                   .cfop = visto(cfop),
                   .unidade = visto(unidade),
                   .descricao = visto(descricao)});
}

int aCFVenderXml_ZEL(const char *xmlItem) {
    return noCupom(fnCFVenderXml_ZEL_Felbor)(xmlItem);
}

int aCFLancarDescontoItem_ZEL(int item, const char *tipo, const char *valor) {
    return noCupom(fnCFLancarDescontoItem_ZEL_Felbor)(item, tipo, valor);
}

int aCFLancarAcrescimoItem_ZEL(int item, const char *tipo, const char *valor) {
    return noCupom(fnCFLancarAcrescimoItem_ZEL_Felbor)(item, tipo, valor);
}

int aCFCancelarItem_ZEL(int item) {
    return noCupom(fnCFCancelarItem_ZEL_Felbor)(item);
}

int aCFCancelarItemParcial_ZEL(int item, const char *quantidade) {
    return noCupom(fnCFCancelarItemParcial_ZEL_Felbor)(item, quantidade);
}

int aCFCancelarDescontoItem_ZEL(int item) {
    return noCupom(fnCFCancelarDescontoItem_ZEL_Felbor)(item);
}

int aCFCancelarAcrescimoItem_ZEL(int item) {
    return noCupom(fnCFCancelarAcrescimoItem_ZEL_Felbor)(item);
}

// ---- Totalization and payment -------------------------------------------------------------------

int aCFTotalizar_ZEL(const char *tipo, const char *valor) {
    return noCupom(fnCFTotalizar_ZEL_Felbor)(tipo, valor);
}

int aCFEfetuarPagamento_ZEL(const char *forma, const char *valor) {
    return noCupom(fnCFEfetuarPagamento_ZEL_Felbor)(forma, valor);
}

int aCFEstornarPagamento_ZEL(const char *formaAtual, const char *formaNova, const char *valor) {
    return noCupom(fnCFEstornarPagamento_ZEL_Felbor)(formaAtual, formaNova, valor);
}

int aCFValorLeiImposto_ZEL(const char *valor) {
    return quadro([&](const Memoria &memoria) {
        return fnCFValorLeiImposto_ZEL_Felbor(memoria.total, visto(valor));
    });
}

// ---- Closing, cancellation and requests ---------------------------------------------------------

int tCFEncerrar_ZEL(const char *informacoes) {
    return noCupom(fnCFEncerrar_ZEL_Felbor)(informacoes);
}

int tCFEncerrarConfigMsg_ZEL(const char *informacoes, const char *informacoesFisco) {
    return noCupom(fnCFEncerrarConfigMsg_ZEL_Felbor)(informacoes, informacoesFisco);
}

int tCFCancelar_ZEL(const char *numero, const char *serie, const char *chave, const char *protocolo,
                    const char *justificativa) {
    return quadroDeMudanca([&](const Memoria &memoria) {
        return fnCFCancelar_ZEL_Felbor(memoria.cupom, visto(numero), visto(serie), visto(chave),
                                       visto(protocolo), visto(justificativa));
    });
}

int tCFCancelarOffline_ZEL(const char *numero, const char *serie, const char *chave,
                           const char *justificativa, char *diretorios) {
    return quadroDeMudanca([&] {
        std::optional<std::string> lista;
        if (diretorios != nullptr) lista = diretorios;
        const int codigo = fnCFCancelarOffline_ZEL_Felbor(visto(numero), visto(serie), visto(chave),
                                                          visto(justificativa), lista);
        if (lista && *lista != diretorios) copiarResultado(*lista, diretorios);
        return codigo;
    });
}

int tCFInutilizar_ZEL(const char *numeroInicial, const char *numeroFinal, const char *serie,
                      const char *justificativa) {
    return quadroDeMudanca([&] {
        return fnCFInutilizar_ZEL_Felbor(visto(numeroInicial), visto(numeroFinal), visto(serie),
                                         visto(justificativa));
    });
}

int GeraXMLConsulta_ZEL(const char *tipo, const char *inicio, const char *fim, const char *serie,
                        const char *chave) {
    return mudancaSemQuadro([&] {
        return fnGeraXMLConsulta_ZEL(visto(tipo), visto(inicio), visto(fim), visto(serie),
                                     visto(chave));
    });
}

// ---- Taxes of the next item ---------------------------------------------------------------------

int aCFConfICMS00_ZEL(const char *origem, const char *cst, const char *modBC,
                      const char *aliquota) {
    return nosPresets(fnCFConfICMS00_ZEL_Felbor)(origem, cst, modBC, aliquota);
}

int aCFConfICMS40_ZEL(const char *origem, const char *cst, const char *valorDesonerado,
                      const char *motivo) {
    return nosPresets(fnCFConfICMS40_ZEL_Felbor)(origem, cst, valorDesonerado, motivo);
}

int aCFConfICMS60_ZEL(const char *origem, const char *cst, const char *baseRetida,
                      const char *valorRetido) {
    return nosPresets(fnCFConfICMS60_ZEL_Felbor)(origem, cst, baseRetida, valorRetido);
}

int aCFConfPisAliq_ZEL(const char *cst, const char *aliquota) {
    return nosPresets(fnCFConfPisAliq_ZEL_Felbor)(cst, aliquota);
}

int aCFConfPisQtde_ZEL(const char *cst, const char *valorUnidade) {
    return nosPresets(fnCFConfPisQtde_ZEL_Felbor)(cst, valorUnidade);
}

int aCFConfPisNT_ZEL(const char *cst) {
    return nosPresets(fnCFConfPisNT_ZEL_Felbor)(cst);
}

int aCFConfPisOutr_ZEL(const char *cst, const char *aliquota, const char *valorUnidade) {
    return nosPresets(fnCFConfPisOutr_ZEL_Felbor)(cst, aliquota, valorUnidade);
}

int aCFConfCofinsAliq_ZEL(const char *cst, const char *aliquota) {
    return nosPresets(fnCFConfCofinsAliq_ZEL_Felbor)(cst, aliquota);
}

int aCFConfCofinsQtde_ZEL(const char *cst, const char *valorUnidade) {
    return nosPresets(fnCFConfCofinsQtde_ZEL_Felbor)(cst, valorUnidade);
}

int aCFConfCofinsNT_ZEL(const char *cst) {
    return nosPresets(fnCFConfCofinsNT_ZEL_Felbor)(cst);
}

int aCFConfCofinsOutr_ZEL(const char *cst, const char *aliquota, const char *valorUnidade) {
    return nosPresets(fnCFConfCofinsOutr_ZEL_Felbor)(cst, aliquota, valorUnidade);
}

// ---- Configuration and information --------------------------------------------------------------

int regAlterarValor_ZEL(const char *chave, const char *valor) {
    return quadroDeMudanca([&] {
        const int codigo = fnRegAlterarValor_ZEL(visto(chave), visto(valor));
        if (codigo == ZEL_OK && ehCaminhoDoEstado(visto(chave))) aceitarEstado();
        return codigo;
    });
}

int regRetornarValor_ZEL(const char *chave, char *valor) {
    return quadro([&] {
        if (ehCaminhoDoEstado(visto(chave))) verConfig();
        return entregar("valor", valor, [&](std::string &resultado) {
            return fnRegRetornarValor_ZEL(visto(chave), resultado);
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
    return quadroDoEstado([&](const Memoria &memoria) {
        return entregar("valor", valor, [&](std::string &resultado) {
            return fnInfoEstendida_ZEL(memoria.cupom, visto(indice), resultado);
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
    return quadroDoCupom([&](const Memoria &memoria) {
        const std::string_view entrada = visto(textoDocumento);
        std::string resultado(entrada);
        const int codigo = fnGerarXMLContingencia(memoria.cupom, tipo, resultado);
        // A refused call leaves the text alone, so that it may even be a literal.
        if (textoDocumento != nullptr && resultado != entrada)
            copiarResultado(resultado, textoDocumento);
        return codigo;
    });
}

int GerarArquivoFormatadoNF_ZEL(const char *caminhoXml, const char *caminhoRetorno,
                                const char *urlQrcode, int colunas, int tipoDocumento,
                                const char * /*reservado*/, char *saida) {
    return mudancaSemQuadro([&](const Memoria &memoria) {
        return entregar("saida", saida, [&](std::string &resultado) {
            return fnGerarArquivoFormatadoNF(memoria.cupom, memoria.impressao, memoria.total,
                                             {visto(caminhoXml), visto(caminhoRetorno),
                                              visto(urlQrcode), colunas, tipoDocumento},
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
    return mudancaSemQuadro([&] { return fnGerarPDF("DocXML", visto(documentoBase64)); });
}

int GeraPDF_DANFE_ZEL(const char *documentoBase64) {
    return mudancaSemQuadro([&](const Memoria &memoria) {
        return gerarPdfDoXml(memoria.cupom, memoria.impressao, memoria.total,
                             visto(documentoBase64));
    });
}

int eCriptografarArquivo_ZEL(const char *origem, const char *destino, const char *chave) {
    return semExcecao(
        [&] { return fnCriptografarArquivo(visto(origem), visto(destino), visto(chave)); });
}

int eDescriptografarArquivo_ZEL(const char *origem, const char *destino, const char *chave) {
    return semExcecao(
        [&] { return fnDescriptografarArquivo(visto(origem), visto(destino), visto(chave)); });
}
