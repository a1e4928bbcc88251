// SPDX-License-Identifier: MIT
#include "negocio/Requisicao.h"

#include "config/Registro.h"
#include "emissao/Envio.h"
#include "emissao/Historico.h"
#include "negocio/Argumento.h"
#include "texto/TextoXml.h"
#include "zel_felbor/codigos.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <span>
#include <variant>
#include <vector>

namespace zel {

namespace {

// Holds all that follows it.
struct Grupo {};

// A fixed text, a configuration value, or what the operation gives.
using Origem = std::variant<Grupo, std::string_view, Chave, std::string DadosRequisicao::*>;

using Condicao = bool (*)(const DadosRequisicao &);

bool sempre(const DadosRequisicao &) {
    return true;
}

bool temProtocolo(const DadosRequisicao &dados) {
    return !dados.protocolo.empty();
}

// A consultation by number from 0 to 0 names the issuer's state instead.
bool semIntervalo(const DadosRequisicao &dados) {
    return dados.porNumero && dados.numeroInicial == "0" && dados.numeroFinal == "0";
}

struct Elemento {
    std::string_view nome;
    Origem origem;
    Condicao quando = sempre;
};

using D = DadosRequisicao;

constexpr Chave kEmissor = R"(EMIT\CNPJ)"_chave;
constexpr Chave kAmbiente = R"(CONFIGURACAO\TipoAmbiente)"_chave;

// What the sending component takes: a convention between it and the till. The kind
// of event, 110111, is that of the authority's cancellation (Manual de Orientação do
// Contribuinte 6.0, September 2015).
constexpr std::array<Elemento, 18> kCancelamento{{
    {"EnvioEvento", Grupo{}},
    {"ModeloDocumento", "NFCe"},
    {"Versao", "1.00"},
    {"Evento", Grupo{}},
    {"NtfCnpjEmissor", kEmissor},
    {"NtfNumero", &D::numero},
    {"NtfSerie", &D::serie},
    {"tpAmb", kAmbiente},
    {"ChaAcesso", &D::chave},
    {"EveInf", Grupo{}},
    {"EveDh", &D::dataHora},
    {"EveFusoHorario", &D::fusoHorario},
    {"EveTp", "110111"},
    {"EvenSeq", "1"},
    {"Evedet", Grupo{}},
    {"EveDesc", "Cancelamento"},
    {"EvenProt", &D::protocolo, temProtocolo},
    {"EvexJust", &D::justificativa},
}};

constexpr std::array<Elemento, 9> kInutilizacao{{
    {"Inutilizacao", Grupo{}},
    {"ModeloDocumento", "NFCe"},
    {"Versao", "3.10"},
    {"CnpjEmissor", kEmissor},
    {"tpAmb", kAmbiente},
    {"NumeroInicial", &D::numeroInicial},
    {"NumeroFinal", &D::numeroFinal},
    {"Serie", &D::serie},
    {"Justificativa", &D::justificativa},
}};

constexpr std::array<Elemento, 12> kConsulta{{
    {"Consulta", Grupo{}},
    {"ModeloDocumento", "NFCe"},
    {"Versao", "3.10"},
    {"tpAmb", kAmbiente},
    {"CnpjEmissor", kEmissor},
    {"NumeroInicial", &D::numeroInicial},
    {"NumeroFinal", &D::numeroFinal},
    {"Serie", &D::serie},
    {"ChaveAcesso", &D::chave},
    {"DataEmissaoInicial", &D::dataInicial},
    {"DataEmissaoFinal", &D::dataFinal},
    {"dhUF", R"(IDE\cUF)"_chave, semIntervalo},
}};

constexpr std::array<Elemento, 7> kParametros{{
    {"ParametrosConsulta", Grupo{}},
    {"Situacao", "S"},
    {"XMLCompleto", "N"},
    {"XMLLink", "S"},
    {"PDFBase64", "N"},
    {"PDFLink", "N"},
    {"Eventos", "S"},
}};

struct Documento {
    std::span<const Elemento> elementos;
    std::string_view arquivo;
    std::optional<TipoCopia> copia; // kind of its history copies, if it has any
};

// In the order of Requisicao.
constexpr std::array<Documento, 4> kDocumentos{{
    {kCancelamento, kArquivoDocumentos, TipoCopia::kCancelamento},
    {kInutilizacao, kArquivoDocumentos, TipoCopia::kInutilizacao},
    {kConsulta, kArquivoDocumentos, TipoCopia::kConsulta},
    {kParametros, kArquivoParametros, std::nullopt},
}};

const Documento &documento(Requisicao qual) {
    return kDocumentos[static_cast<std::size_t>(qual)];
}

// The value of an element, well-formed.
struct Valor {
    const DadosRequisicao &dados;

    std::string operator()(Grupo) const { return {}; }
    std::string operator()(std::string_view fixo) const { return std::string(fixo); }
    std::string operator()(Chave chave) const { return valorXml(valorConfig(chave)); }
    std::string operator()(std::string DadosRequisicao::*campo) const {
        return escaparXml(dados.*campo);
    }
};

void fechar(std::string &texto, std::string_view nome) {
    texto.append("</").append(nome).append(">");
}

} // namespace

std::string escreverRequisicao(Requisicao qual, const DadosRequisicao &dados) {
    std::string texto;
    std::vector<std::string_view> abertos;
    for (const Elemento &elemento : documento(qual).elementos) {
        if (!elemento.quando(dados)) continue;
        texto.append("<").append(elemento.nome).append(">");
        if (std::holds_alternative<Grupo>(elemento.origem)) {
            abertos.push_back(elemento.nome);
            continue;
        }
        texto += std::visit(Valor{dados}, elemento.origem);
        fechar(texto, elemento.nome);
    }
    for (; !abertos.empty(); abertos.pop_back())
        fechar(texto, abertos.back());
    return texto;
}

int enviarRequisicao(Requisicao qual, const DadosRequisicao &dados) {
    const std::string texto = escreverRequisicao(qual, dados);
    const Documento &enviado = documento(qual);
    if (const int resultado = fnCriarArquivoEnvio(enviado.arquivo, texto); resultado != ZEL_OK)
        return resultado;
    if (enviado.copia) guardarHistorico(*enviado.copia, texto);
    return ZEL_OK;
}

int fnCFInutilizar_ZEL_Felbor(std::string_view numeroInicial, std::string_view numeroFinal,
                              std::string_view serie, std::string_view justificativa) {
    if (const int resultado = fnXML_CarregarXML_ZEL(); resultado != ZEL_OK) return resultado;
    if (const int presentes = recusarNulos({{"numeroInicial", numeroInicial},
                                            {"numeroFinal", numeroFinal},
                                            {"serie", serie},
                                            {"justificativa", justificativa}});
        presentes != ZEL_OK)
        return presentes;
    DadosRequisicao dados;
    dados.numeroInicial = argumentoCortado(numeroInicial, 9);
    dados.numeroFinal = argumentoCortado(numeroFinal, 9);
    dados.serie = argumentoCortado(serie, 3);
    dados.justificativa = argumentoCortado(justificativa, 60);
    return enviarRequisicao(Requisicao::kInutilizacao, dados);
}

} // namespace zel
