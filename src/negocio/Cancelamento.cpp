// SPDX-License-Identifier: MIT
#include "negocio/Cancelamento.h"

#include "comum/ArquivosDoCaixa.h"
#include "comum/ChaveAcesso.h"
#include "config/Registro.h"
#include "disco/ArquivoCripto.h"
#include "disco/Diretorio.h"
#include "emcurso/Carga.h"
#include "emcurso/ZEL_Controle.h"
#include "emissao/Cabecalho.h"
#include "negocio/Argumento.h"
#include "negocio/Requisicao.h"
#include "recusa/Recusa.h"
#include "texto/HoraLocal.h"
#include "texto/Numero.h"
#include "texto/Texto.h"
#include "zel_felbor/codigos.h"

namespace zel {

namespace {

constexpr std::string_view kJustificativa = "Cancelamento de NFCe";
constexpr std::string_view kJustificativaOffline = "Cancelamento de NFCe em Contingencia Offline";

constexpr std::time_t kAjuste = 5;

bool semTextos(const DadosCancelamento &cancelado) {
    return cancelado.numero.empty() && cancelado.serie.empty() && cancelado.chave.empty() &&
           cancelado.protocolo.empty() && cancelado.justificativa.empty();
}

DadosCancelamento ultimoDocumento() {
    return {.numero = valorConfig(R"(IDE\nNF)"_chave),
            .serie = valorConfig(R"(IDE\Serie)"_chave),
            .chave = valorConfig(R"(NFCE\ChaveDeAcesso)"_chave),
            .protocolo = valorConfig(R"(NFCE\ProtocoloAutorizacao)"_chave),
            .justificativa = {}};
}

// Printing an older document stores its key: the event must not void one document under the number
// of another. Only a sound key decides.
bool ehDeOutroDocumento(const DadosCancelamento &ultimo) {
    const auto chave = ChaveAcesso::ler(ultimo.chave);
    if (!chave || !chave->integra()) return false;
    return lerInteiro(chave->parte(ChaveAcesso::Parte::kSerie)) != lerInteiro(ultimo.serie) ||
           lerInteiro(chave->parte(ChaveAcesso::Parte::kNNF)) != lerInteiro(ultimo.numero);
}

void completarJustificativa(DadosCancelamento &cancelado, std::string_view padrao) {
    if (textoSimples(cancelado.justificativa).empty()) cancelado.justificativa = padrao;
}

int cancelarCupomEmAndamento(ST_PersitenceXML_ZEL &documento) {
    return comPosseDoCupom(documento, [] {
        fnDefinirEstadoCFe_ZEL(kCancelado);
        return fnCFVerificarStatus_ZEL() == kCancelado ? int{ZEL_OK} : arquivoIndisponivel();
    });
}

std::optional<std::tm> horaDoEvento(std::time_t momento) {
    const bool ajustar = lerInteiro(valorConfig(R"(CONFIGURACAO\AjustarDhCanc)"_chave)) == 1;
    const std::optional<std::tm> hora = horaLocal(momento);
    return hora && ajustar ? horaLocal(momento + kAjuste) : hora;
}

DadosRequisicao dadosDoEvento(const DadosCancelamento &cancelado, const std::tm &local) {
    DadosRequisicao dados;
    dados.numero = argumentoCortado(cancelado.numero, 9);
    dados.serie = argumentoCortado(cancelado.serie, 4);
    dados.chave = argumentoCortado(cancelado.chave, ChaveAcesso::kDigitos);
    dados.protocolo = argumentoCortado(cancelado.protocolo, 15);
    dados.justificativa = argumentoCortado(cancelado.justificativa, 99);
    dados.dataHora = dataHora(local);
    dados.fusoHorario = fusoHorario(local);
    return dados;
}

} // namespace

int fnCFCancelar_ZEL_Felbor(ST_PersitenceXML_ZEL &documento, std::string_view numero,
                            std::string_view serie, std::string_view chave,
                            std::string_view protocolo, std::string_view justificativa) {
    if (const int resultado = fnXML_CarregarXML_ZEL(); resultado != ZEL_OK) return resultado;
    if (const int presentes = recusarNulos({{"numero", numero},
                                            {"serie", serie},
                                            {"chave", chave},
                                            {"protocolo", protocolo},
                                            {"justificativa", justificativa}});
        presentes != ZEL_OK)
        return presentes;
    DadosCancelamento cancelado{numero, serie, chave, protocolo, justificativa};
    if (semTextos(cancelado)) {
        const int estado = fnCFVerificarStatus_ZEL();
        if (!estadoAindaVale()) return recusarNoEstado(Motivo::kEstadoDeOutro);
        if (estado < kEncerrado) return cancelarCupomEmAndamento(documento);
        if (estado != kEncerrado) return recusarNoEstado(Motivo::kJaCancelado);
        cancelado = ultimoDocumento();
        if (ehDeOutroDocumento(cancelado)) return recusar(Motivo::kChaveDeOutroDocumento);
    }
    completarJustificativa(cancelado, kJustificativa);
    const std::optional<std::tm> hora = horaDoEvento(std::time(nullptr));
    if (!hora) return recusar(Motivo::kRelogio);
    const int resultado =
        enviarRequisicao(Requisicao::kCancelamento, dadosDoEvento(cancelado, *hora));
    return resultado == ZEL_OK ? int{ZEL_CANCELAMENTO_GRAVADO} : resultado;
}

int fnCFCancelarOffline_ZEL_Felbor(std::string_view numero, std::string_view serie,
                                   std::string_view chave, std::string_view justificativa,
                                   std::optional<std::string> &diretorios) {
    if (const int resultado = fnXML_CarregarXML_ZEL(); resultado != ZEL_OK) return resultado;
    if (const int presentes = recusarNulos({{"numero", numero},
                                            {"serie", serie},
                                            {"chave", chave},
                                            {"justificativa", justificativa}});
        presentes != ZEL_OK)
        return presentes;
    if (!diretorios) return recusar(Motivo::kSaidaNula, {.campo = "diretorios"});
    DadosCancelamento cancelado{numero, serie, chave, "", justificativa};
    if (semTextos(cancelado)) {
        fnCFVerificarStatus_ZEL(); // for the reason
        if (!documentoAindaVale()) return recusarNoEstado(Motivo::kEstadoDeOutro);
        cancelado = ultimoDocumento();
        if (ehDeOutroDocumento(cancelado)) return recusar(Motivo::kChaveDeOutroDocumento);
    }
    cancelado.protocolo = "";
    completarJustificativa(cancelado, kJustificativaOffline);

    // The file's name is cut out of the key.
    const std::string textoDaChave = textoSimples(cancelado.chave);
    const auto chaveSimples = ChaveAcesso::ler(textoDaChave);
    if (!chaveSimples)
        return recusar(Motivo::kChaveInvalida, {.campo = "chave", .dado = textoDaChave});
    const std::string nome = arquivos::nomeDoCancelamento(chaveSimples->texto());
    std::string evento;
    const int escrito = fnCriarLayoutXmlCanc_ZEL_Felbor(cancelado, std::time(nullptr), evento);
    if (escrito != ZEL_OK) return escrito;

    const std::string lista = *diretorios;
    int resultado =
        recusar(Motivo::kCancelamentoSemDiretorio, {.campo = "diretorios", .dado = lista});
    for (const std::string_view diretorio : separarDiretorios(lista)) {
        *diretorios = std::string(diretorio).append(nome);
        resultado = fnCriarArquivoContigencia(*diretorios, evento);
    }
    return resultado;
}

int fnCriarLayoutXmlCanc_ZEL_Felbor(const DadosCancelamento &cancelado, std::time_t momento,
                                    std::string &texto) {
    const std::optional<std::tm> hora = horaDoEvento(momento);
    if (!hora) return recusar(Motivo::kRelogio);
    texto += escreverRequisicao(Requisicao::kCancelamento, dadosDoEvento(cancelado, *hora));
    return ZEL_OK;
}

} // namespace zel
