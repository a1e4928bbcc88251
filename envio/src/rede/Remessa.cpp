// SPDX-License-Identifier: MIT
#include "rede/Remessa.h"

#include "comum/Estados.h"
#include "mensagem/Lote.h"

#include <utility>

namespace zel::envio {

std::optional<Remessa> remessaDe(const Configuracao &config, std::string_view cUF, int tpAmb,
                                 Servico servico, std::string mensagem, Recusas &recusas) {
    const Estado *estado = procurarEstadoPorCodigo(cUF);
    const std::string_view uf = estado == nullptr ? std::string_view() : estado->uf;
    const Metodo metodo = metodoDe(servico, uf);
    const std::string_view endereco = enderecoDe(config, uf, tpAmb, servico);
    if (metodo.servico.empty() || endereco.empty()) {
        recusas.juntar("[servicos]", cUF,
                       "não se conhece o endereço deste serviço no estado: diga-o em "
                       "zel-envio.toml, seção [servicos]");
        return {};
    }
    const auto dito = [servico](const ConfigServicos &ditos, std::string_view tabela) {
        const std::string_view nome = ditoDe(ditos, servico);
        return nome.empty() ? tabela : nome;
    };
    return Remessa{std::string(endereco),
                   std::string(kEspacoServicos).append(dito(config.nomes, metodo.servico)),
                   std::string(dito(config.metodos, metodo.metodo)), std::move(mensagem)};
}

} // namespace zel::envio
