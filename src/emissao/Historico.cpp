// SPDX-License-Identifier: MIT
#include "emissao/Historico.h"

#include "disco/Arquivo.h"
#include "disco/Diretorio.h"
#include "recusa/Recusa.h"
#include "texto/HoraLocal.h"
#include "texto/Numero.h"
#include "zel_felbor/codigos.h"

#include <array>
#include <cstddef>
#include <string>

namespace zel {

namespace {

// In the order of Direcao. A complete document has no word of its own in a stamped name.
constexpr std::array<std::string_view, 3> kCarimbados{"Envio", "Retorno", ""};
constexpr std::array<std::string_view, 3> kSimples{"documentosEnvio", "documentosRetorno",
                                                   "documentosCompleto"};

// In the order of TipoCopia.
constexpr std::array<std::string_view, 5> kTipos{"NFCe", "Canc", "Param", "Cons", "Inut"};

std::string carimbo(const std::tm &momento) {
    return formatarInteiro(momento.tm_year + 1900)
        .append(formatarInteiro(momento.tm_mon + 1, 2))
        .append(formatarInteiro(momento.tm_mday, 2))
        .append("_")
        .append(formatarInteiro(momento.tm_hour, 2))
        .append(formatarInteiro(momento.tm_min, 2))
        .append(formatarInteiro(momento.tm_sec, 2));
}

// Without ".xml".
std::string nomeDaCopia(Direcao direcao, TipoCopia tipo, bool carimbado, const std::tm &momento) {
    const auto qual = static_cast<std::size_t>(direcao);
    if (!carimbado) return std::string(kSimples[qual]);
    return std::string(kCarimbados[qual])
        .append(kTipos[static_cast<std::size_t>(tipo)])
        .append(carimbo(momento));
}

// A stamp has steps of one second: the second document of the same one, of this till or of another
// that copies to the same place, gets "_2" after its name, and so on.
int gravarCarimbada(const std::string &caminho, std::string_view conteudo) {
    constexpr int kMaximoPorSegundo = 1000;
    int resultado = jaRecusado(Motivo::kNomeTomado);
    for (int vez = 1; resultado == ZEL_RECUSADO && vez <= kMaximoPorSegundo; ++vez) {
        std::string nome = caminho;
        if (vez > 1) nome.append("_").append(formatarInteiro(vez));
        resultado = criarArquivo(nome.append(".xml"), conteudo);
    }
    return resultado;
}

} // namespace

int fnReplicarDados(Direcao direcao, TipoCopia tipo, std::string_view diretorios,
                    std::string_view conteudo, bool carimbado) {
    const std::optional<std::tm> momento = horaLocal(std::time(nullptr));
    if (carimbado && !momento) return 0;
    return fnReplicarDados(direcao, tipo, diretorios, conteudo, carimbado,
                           momento.value_or(std::tm{}));
}

int fnReplicarDados(Direcao direcao, TipoCopia tipo, std::string_view diretorios,
                    std::string_view conteudo, bool carimbado, const std::tm &momento) {
    if (diretorios.empty()) return 0;
    const std::string nome = nomeDaCopia(direcao, tipo, carimbado, momento);
    for (const auto prefixo : separarDiretorios(diretorios)) {
        const std::string caminho = std::string(prefixo).append(nome);
        const int resultado = carimbado
                                  ? gravarCarimbada(caminho, conteudo)
                                  : substituirArquivo(caminho + ".xml", conteudo, Acesso::kUmask);
        if (resultado != ZEL_OK) return 0;
    }
    return 1;
}

} // namespace zel
