// SPDX-License-Identifier: MIT
#include "emissao/Envio.h"

#include "diario/Gravacao.h"
#include "emcurso/ArquivoPersistencia.h"
#include "texto/Numero.h"
#include "zel_felbor/codigos.h"

#include <vector>

namespace zel {

int fnCriarArquivoEnvio(std::string_view nome, std::string_view texto) {
    const MudancaArquivo mudanca{.nome = nome, .acesso = Acesso::kUmask, .depois = texto};
    return gravarJuntos({&mudanca, 1});
}

int gravarDocumento(std::string_view documento, const JuntoDoDocumento &junto) {
    std::vector<MudancaArquivo> mudancas;
    const auto incluir = [&](std::string_view nome, std::string_view texto) {
        mudancas.push_back({.nome = nome, .acesso = Acesso::kUmask, .depois = texto});
    };
    if (!junto.parametros.empty()) incluir(kArquivoParametros, junto.parametros);
    incluir(kArquivoDocumentos, documento);
    return junto.estrutura ? fnPersistEstrutura_ZEL(*junto.estrutura, junto.alteracoes, mudancas)
                           : alterarConfig(junto.alteracoes, mudancas);
}

void guardarHistorico(TipoCopia tipo, std::string_view texto) noexcept {
    try {
        const bool carimbado = lerInteiro(valorConfig(R"(CONFIGURACAO\HistoricoXML)"_chave)) != 0;
        fnReplicarDados(Direcao::kEnvio, tipo, valorConfig(R"(CONFIGURACAO\PathXMLEnvio)"_chave),
                        texto, carimbado);
    } catch (...) {
        // Memory ran out for a copy; what it copies has happened.
    }
}

} // namespace zel
