// SPDX-License-Identifier: MIT
#include "config/Enderecos.h"

#include "config/Dados.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <vector>

namespace zel::envio {

namespace {

// Columns of the table, in its order. `uf` is "-" where a server serves every state led to it.
struct Linha {
    std::string_view uf, autorizador, tpAmb, servico, endereco;
};

// In the order of Servico.
constexpr std::array<std::string_view, 8> kServicos{
    "NfeAutorizacao",   "NfeRetAutorizacao", "NfeInutilizacao", "NfeConsultaProtocolo",
    "NfeStatusServico", "RecepcaoEvento",    "QRCode",          "ConsultaChave"};

std::string_view ate(std::string_view &resto, char fim) {
    const std::size_t onde = std::min(resto.find(fim), resto.size());
    const std::string_view parte = resto.substr(0, onde);
    resto.remove_prefix(std::min(onde + 1, resto.size()));
    return parte;
}

std::vector<Linha> lerTabela() {
    std::vector<Linha> linhas;
    std::string_view resto = kTabelaServicos;
    ate(resto, '\n');
    while (!resto.empty()) {
        std::string_view texto = ate(resto, '\n');
        Linha linha;
        for (std::string_view Linha::*coluna :
             {&Linha::uf, &Linha::autorizador, &Linha::tpAmb, &Linha::servico, &Linha::endereco})
            linha.*coluna = ate(texto, '\t');
        if (!linha.endereco.empty()) linhas.push_back(linha);
    }
    return linhas;
}

} // namespace

std::string_view enderecoDe(std::string_view uf, int tpAmb, Servico servico) {
    static const std::vector<Linha> tabela = lerTabela();
    const std::string_view nome = kServicos[static_cast<std::size_t>(servico)];
    const std::string_view ambiente = tpAmb == 1 ? "1" : "2";
    const auto daUf = std::find_if(tabela.begin(), tabela.end(),
                                   [&](const Linha &linha) { return linha.uf == uf; });
    if (daUf == tabela.end() || uf == "-" || (tpAmb != 1 && tpAmb != 2)) return {};
    const auto achada = std::find_if(tabela.begin(), tabela.end(), [&](const Linha &linha) {
        return linha.servico == nome && linha.tpAmb == ambiente &&
               (linha.uf == uf || (linha.uf == "-" && linha.autorizador == daUf->autorizador));
    });
    return achada == tabela.end() ? std::string_view() : achada->endereco;
}

std::string_view ditoDe(const ConfigServicos &dito, Servico servico) {
    // In the order of Servico.
    constexpr std::array<std::string ConfigServicos::*, 6> kMembros{
        &ConfigServicos::autorizacao,   &ConfigServicos::retAutorizacao,
        &ConfigServicos::inutilizacao,  &ConfigServicos::consultaProtocolo,
        &ConfigServicos::statusServico, &ConfigServicos::recepcaoEvento};
    const auto qual = static_cast<std::size_t>(servico);
    return qual < kMembros.size() ? dito.*kMembros[qual] : std::string_view();
}

std::string_view enderecoDe(const Configuracao &config, std::string_view uf, int tpAmb,
                            Servico servico) {
    const std::string_view dito = servico == Servico::kQrCode ? config.qrcode.endereco
                                  : servico == Servico::kConsultaChave
                                      ? config.qrcode.urlChave
                                      : ditoDe(config.servicos, servico);
    return dito.empty() ? enderecoDe(uf, tpAmb, servico) : dito;
}

} // namespace zel::envio
