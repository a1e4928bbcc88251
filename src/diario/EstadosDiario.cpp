// SPDX-License-Identifier: MIT
#include "diario/EstadosDiario.h"

#include <algorithm>

namespace zel {

namespace {

// Between a record and the writing of its files a machine may be busy for this long; used only
// where nobody noted the end of it, which takes a crash.
constexpr std::int64_t kFolga = 60'000'000'000; // nanoseconds

constexpr std::uint64_t kTempos = ~std::uint64_t{0} >> 2; // of times that were found

// More than a step of the clock that a file's time comes from: of the system's, or of a file system
// with whole seconds.
constexpr std::int64_t passoDe(std::int64_t tempo) {
    constexpr std::int64_t kSegundo = 1'000'000'000, kPasso = 20'000'000;
    return tempo % kSegundo == 0 ? 2 * kSegundo : kPasso;
}

} // namespace

bool EstadoDiario::mudar(const MudancaDiario &mudanca) {
    const bool trecho = mudanca.forma == FormaMudanca::kTrecho;
    if (trecho && mudanca.lugar > conteudo.size()) return false;
    if (trecho && mudanca.noLugar) {
        const std::size_t tamanho = mudanca.bytes.size();
        cobertos_.emplace_back(mudanca.lugar, conteudo.substr(mudanca.lugar, tamanho));
        conteudo.replace(mudanca.lugar, tamanho, mudanca.bytes);
        no_ = mudanca.antes;
        return true;
    }
    if (trecho) {
        conteudo.replace(mudanca.lugar, mudanca.antes, mudanca.bytes);
    } else {
        conteudo = mudanca.bytes;
        antes_ = std::max(antes_, static_cast<std::int64_t>(mudanca.antes & kTempos));
        escritas_.push_back(static_cast<std::int64_t>(mudanca.lugar & kTempos));
    }
    cobertos_.clear();
    no_ = 0;
    return true;
}

void EstadoDiario::datar(std::int64_t desteRegistro, std::int64_t seguidoEm, bool danificado) {
    if (momento != desteRegistro) {
        antes_ = std::max(antes_, limite);
        escritas_.push_back(momento);
    }
    momento = desteRegistro;
    seguido = seguidoEm != 0;
    // A file may well be later than records that lost those which followed them.
    limite = seguido ? seguidoEm : momento + (danificado ? 0 : kFolga);
    removido = false;
}

// Whether a death or a power cut within the call may leave that of it: of the bytes written in its
// place some that stood there, of all others none that were not flushed.
bool EstadoDiario::podeFicar(std::string_view bytes) const {
    const auto coberto = [&](std::size_t i) {
        return std::ranges::any_of(cobertos_, [&](const auto &trecho) {
            const auto &[lugar, antigos] = trecho;
            return i >= lugar && i - lugar < antigos.size() && antigos[i - lugar] == bytes[i];
        });
    };
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const bool igual = i < conteudo.size() && (bytes[i] == conteudo[i] || bytes[i] == '\0');
        if (!igual && !coberto(i)) return false;
    }
    return true;
}

bool EstadoDiario::ehDeOutro(const Identidade &achada, std::string_view bytes) const {
    const auto ehDaqui = [&](std::int64_t deste) { return ehEscritaDe(achada.escrita, deste); };
    if (ehDaqui(momento)) return false; // as it was left
    const std::int64_t mudanca = achada.mudanca;
    if (mudanca < momento - passoDe(mudanca)) return false; // of before
    if (mudanca <= antes_ && std::ranges::any_of(escritas_, ehDaqui)) return false;
    // The moment of a record that the journal has lost.
    const bool posterior = !inteiro && temMarca(achada) && achada.escrita > momento;
    if (mudanca > limite || posterior) return true;
    // Within the call: between its bytes and its time, or an edit. What was not followed must be.
    return seguido && ((no_ != 0 && achada.no != no_) || !podeFicar(bytes));
}

EstadosDiario::EstadosDiario(const Diario::Conteudo &conteudo)
    : danificado_(conteudo.danificado), inteiro_(conteudo.terminado) {
    const std::vector<RegistroDiario> &registros = conteudo.registros;
    for (std::size_t i = 0; i < registros.size(); ++i)
        aplicar(registros[i],
                i + 1 < registros.size() ? registros[i + 1].seguido : conteudo.seguido);
}

void EstadosDiario::aplicar(const RegistroDiario &registro, std::int64_t seguido) {
    for (const MudancaDiario &mudanca : registro.mudancas) {
        const auto achado = arquivos_.find(std::string(mudanca.nome));
        const bool nova = achado == arquivos_.end();
        if (mudanca.forma == FormaMudanca::kLevada && !nova) achado->second.removido = true;
        if (mudanca.forma == FormaMudanca::kLevada ||
            (nova && mudanca.forma == FormaMudanca::kTrecho))
            continue;
        EstadoDiario &estado = arquivos_[std::string(mudanca.nome)];
        if (!estado.mudar(mudanca)) continue;
        // Made in this journal, its name is as uncertain as its bytes.
        if (nova || mudanca.forma == FormaMudanca::kInteiraNova)
            estado.existia = mudanca.forma != FormaMudanca::kInteiraNova;
        estado.acesso = mudanca.acesso;
        estado.ligacao = mudanca.ligacao;
        estado.datar(registro.momento, seguido, danificado_);
        estado.inteiro = inteiro_;
        if (!mudanca.noLugar) nomes_ = std::max(nomes_, seguido);
    }
}

bool EstadosDiario::foiRemovido(const EstadoDiario &estado, const Identidade &diretorio) const {
    if (estado.existia || estado.removido) return true;
    return (estado.seguido || danificado_) && diretorio.mudanca > std::max(nomes_, estado.limite);
}

} // namespace zel
