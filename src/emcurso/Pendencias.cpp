// SPDX-License-Identifier: MIT
#include "emcurso/Pendencias.h"

#include "comum/ArquivosDoCaixa.h"
#include "config/Registro.h"
#include "disco/Arquivo.h"
#include "disco/Diretorio.h"
#include "emcurso/Registros.h"
#include "emcurso/ZEL_Controle.h"
#include "zel_felbor/codigos.h"

#include <string>
#include <utility>

namespace zel {

namespace {

constexpr int kBasta = 0; // no line further

// How many records of each type there are, "01" first; none when a line is damaged or the last one
// has no end.
std::optional<std::array<int, 6>> contarRegistros(std::string_view texto) {
    std::array<int, 6> quantos{};
    std::size_t inteiro = 0;
    const int resultado = percorrerLinhas(texto, inteiro, [&](std::string_view linha) {
        const auto tipo = tipoDaLinha(linha);
        if (tipo) ++quantos[*tipo];
        return tipo ? int{ZEL_OK} : kBasta;
    });
    if (resultado != ZEL_OK || inteiro != texto.size()) return {};
    return quantos;
}

// The first line of a record type; empty when there is none.
std::string_view linhaDoTipo(std::string_view texto, std::size_t tipo) {
    std::size_t inteiro = 0;
    std::string_view achada;
    percorrerLinhas(texto, inteiro, [&](std::string_view linha) {
        if (tipoDaLinha(linha) == tipo) achada = linha;
        return achada.empty() ? int{ZEL_OK} : kBasta;
    });
    return achada;
}

// Whether waiting records were committed: they are those of the state that the configuration holds,
// and the file in place lacks the record that led there. Only a payment that completes the total is
// committed with its state, and a closing section with the issued document.
bool pertencem(std::string_view esperando, std::string_view noLugar) {
    constexpr std::pair<Estado, std::size_t> kUltimoRegistro[] = {
        {kEncerrado, 5}, {kPagamento, 4}, {kTotalizado, 2}, {kVendendo, 1}, {kAberto, 0}};
    const auto novos = contarRegistros(esperando);
    if (!novos) return false;
    for (const auto &[estado, tipo] : kUltimoRegistro) {
        if ((*novos)[tipo] == 0) continue;
        if (estado != fnCFVerificarStatus_ZEL()) return false;
        // Any receipt begins with the same record.
        if (estado == kAberto) return true;
        // A till that was set back may have totalized before, with another result.
        if (!ehLista(kSecaoDoTipo[tipo]))
            return linhaDoTipo(esperando, tipo) != linhaDoTipo(noLugar, tipo);
        const auto antigos = contarRegistros(noLugar);
        return !antigos || (*antigos)[tipo] + 1 == (*novos)[tipo];
    }
    return false;
}

// A waiting document was committed when the configuration names its key, with no protocol yet: a
// reissue may have the key of a document that was authorized.
bool pertenceAConfiguracao(std::string_view documento) {
    const std::string_view chave = valorConfig(R"(NFCE\ChaveDeAcesso)"_chave);
    return !chave.empty() && valorConfig(R"(NFCE\ProtocoloAutorizacao)"_chave).empty() &&
           documento.ends_with("</NFe>") &&
           documento.find("Id=\"NFe" + std::string(chave) + "\"") != documento.npos;
}

// Puts what waits under `pendente` in the place of `nome` when `pertence(conteudo)`, and drops it
// otherwise. False when it cannot.
template <class Pertence>
bool resolver(std::string_view nome, std::string_view pendente, Pertence pertence) {
    const std::string espera = fnConfigurarPath(pendente), lugar = fnConfigurarPath(nome);
    std::string conteudo;
    switch (lerArquivo(espera, conteudo, Ligacao::kNaoSeguida)) {
    case Leitura::kInexistente:
        return true;
    case Leitura::kFalha:
        return false;
    case Leitura::kLido:
        break;
    }
    if (!pertence(conteudo)) return removerArquivo(espera);
    return renomearArquivo(espera, lugar) && descarregarDiretorio(lugar);
}

bool registrosPertencem(std::string_view esperando) {
    std::string noLugar;
    const Leitura leitura =
        lerArquivo(fnConfigurarPath(arquivos::kCupom), noLugar, Ligacao::kNaoSeguida);
    // With no file beside them, they are the only copy there is; in state 0 they are those of an
    // opening that did not happen.
    if (leitura == Leitura::kInexistente) return fnCFVerificarStatus_ZEL() != kNenhum;
    return pertencem(esperando, noLugar);
}

} // namespace

bool resolverPendencias() {
    std::string documento;
    if (lerArquivo(fnConfigurarPath(arquivos::kEnvioPendente), documento, Ligacao::kNaoSeguida) ==
        Leitura::kFalha)
        return false;
    // Parameters wait only while their document does.
    return resolver(arquivos::kParametros, arquivos::kParametrosPendentes,
                    [&](std::string_view) { return pertenceAConfiguracao(documento); }) &&
           resolver(arquivos::kEnvio, arquivos::kEnvioPendente, pertenceAConfiguracao) &&
           resolver(arquivos::kCupom, arquivos::kCupomPendente, registrosPertencem);
}

} // namespace zel
