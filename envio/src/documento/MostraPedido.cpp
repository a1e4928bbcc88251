// SPDX-License-Identifier: MIT
#include "documento/MostraNota.h"

#include <span>

namespace zel::envio {

namespace {

std::string comoEsta(std::string_view texto) {
    return std::string(texto);
}

// What stands in a request: its path, what it is called, how it is read. "0" says that it does not
// apply.
struct Campo {
    std::string_view caminho, nome;
    std::string (*ler)(std::string_view) = comoEsta;
};

// The till's requests.
constexpr Campo kCancelamentoDoCaixa[] = {
    {"Evento/NtfCnpjEmissor", "Emitente", cnpjLido},
    {"Evento/tpAmb", "Ambiente", ambienteLido},
    {"Evento/NtfSerie", "Série"},
    {"Evento/NtfNumero", "Número"},
    {"Evento/ChaAcesso", "Chave", chaveLida},
    {"Evento/EveInf/EveDh", "Momento", momentoLido},
    {"Evento/EveInf/EveFusoHorario", "Fuso"},
    {"Evento/EveInf/Evedet/EvenProt", "Protocolo da nota"},
    {"Evento/EveInf/Evedet/EvexJust", "Justificativa"},
};
constexpr Campo kInutilizacaoDoCaixa[] = {
    {"CnpjEmissor", "Emitente", cnpjLido},
    {"tpAmb", "Ambiente", ambienteLido},
    {"Serie", "Série"},
    {"NumeroInicial", "Do número"},
    {"NumeroFinal", "Ao número"},
    {"Justificativa", "Justificativa"},
};
constexpr Campo kConsultaDoCaixa[] = {
    {"CnpjEmissor", "Emitente", cnpjLido},
    {"tpAmb", "Ambiente", ambienteLido},
    {"Serie", "Série"},
    {"NumeroInicial", "Do número"},
    {"NumeroFinal", "Ao número"},
    {"ChaveAcesso", "Chave", chaveLida},
    {"DataEmissaoInicial", "De", momentoLido},
    {"DataEmissaoFinal", "Até", momentoLido},
};

// Of the services: event 1.00, inutilization and consultation 4.00, and the answers.
constexpr Campo kEvento[] = {
    {"detEvento/descEvento", "Tipo"},
    {"xEvento", "Tipo"},
    {"CNPJ", "Emitente", cnpjLido},
    {"CPF", "Emitente", cnpjLido},
    {"tpAmb", "Ambiente", ambienteLido},
    {"chNFe", "Chave", chaveLida},
    {"dhEvento", "Momento", momentoLido},
    {"detEvento/nProt", "Protocolo da nota"},
    {"detEvento/chNFeRef", "Substituída por", chaveLida},
    {"detEvento/xJust", "Justificativa"},
    {"cStat", "Resposta"},
    {"xMotivo", "Motivo"},
    {"nProt", "Protocolo"},
    {"dhRegEvento", "Registrado em", momentoLido},
};
constexpr Campo kInutilizacao[] = {
    {"CNPJ", "Emitente", cnpjLido},
    {"tpAmb", "Ambiente", ambienteLido},
    {"ano", "Ano"},
    {"serie", "Série"},
    {"nNFIni", "Do número"},
    {"nNFFin", "Ao número"},
    {"xJust", "Justificativa"},
    {"cStat", "Resposta"},
    {"xMotivo", "Motivo"},
    {"nProt", "Protocolo"},
    {"dhRecbto", "Recebida em", momentoLido},
};
constexpr Campo kConsulta[] = {{"tpAmb", "Ambiente", ambienteLido}, {"chNFe", "Chave", chaveLida}};
constexpr Campo kProtocolo[] = {
    {"nProt", "Número"},           {"dhRecbto", "Recebido em", momentoLido},
    {"chNFe", "Chave", chaveLida}, {"cStat", "Resposta"},
    {"xMotivo", "Motivo"},
};

struct Forma {
    std::string_view elemento, titulo;
    std::span<const Campo> campos;
};
constexpr Forma kFormas[] = {
    {"EnvioEvento", "Pedido de cancelamento, do caixa", kCancelamentoDoCaixa},
    {"Inutilizacao", "Pedido de inutilização, do caixa", kInutilizacaoDoCaixa},
    {"Consulta", "Pedido de consulta, do caixa", kConsultaDoCaixa},
    {"infEvento", "Evento", kEvento},
    {"infInut", "Inutilização", kInutilizacao},
    {"consSitNFe", "Consulta", kConsulta},
    {"infProt", "Protocolo", kProtocolo},
};

} // namespace

bool mostrarPedido(const No &no, Pagina &pagina) {
    for (const auto &[elemento, titulo, campos] : kFormas) {
        if (no.nome() != elemento) continue;
        pagina.secao();
        pagina.linha(titulo);
        for (const Campo &campo : campos)
            if (const std::string texto = no.texto(campo.caminho); texto != "0")
                pagina.campo(campo.nome, texto.empty() ? "" : campo.ler(texto), 2);
        return true;
    }
    return false;
}

} // namespace zel::envio
