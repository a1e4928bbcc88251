// SPDX-License-Identifier: MIT
#include "diario/EstadosDiario.h"

#include <algorithm>

namespace zel {

namespace {

// Between a record and the writing of its files a machine may be busy for this long; used only
// where the stamps were lost, which takes a crash.
constexpr std::int64_t kFolga = 60'000'000'000; // nanoseconds
// More than a step of a file system's clock.
constexpr std::int64_t kMaiorPasso = 3'000'000'000;
constexpr std::size_t kMuitas = std::size_t{64} << 20; // bytes of versions

bool mesmosTempos(const Identidade &a, const Identidade &b) {
    return a.mudanca == b.mudanca && a.escrita == b.escrita;
}

// Takes one change into account. False for one of another file than this.
bool mudar(std::vector<VersaoDiario> &versoes, const MudancaDiario &mudanca) {
    if (mudanca.forma != FormaMudanca::kTrecho) {
        versoes.push_back({std::string(mudanca.bytes)});
        return true;
    }
    const std::size_t fim = mudanca.lugar + mudanca.retirados;
    if (versoes.empty() || mudanca.lugar > versoes.back().bytes.size()) return false;
    if (!mudanca.noLugar) versoes.push_back({versoes.back().bytes});
    // No till of ours has as many; a journal that somebody made may not take all memory.
    if (versoes.size() * versoes.back().bytes.size() > kMuitas) versoes.erase(versoes.begin());
    VersaoDiario &ultima = versoes.back();
    ultima.bytes.replace(mudanca.lugar, mudanca.retirados, mudanca.bytes);
    if (mudanca.noLugar)
        ultima.escritos.emplace_back(mudanca.lugar,
                                     std::max(fim, mudanca.lugar + mudanca.bytes.size()));
    return true;
}

} // namespace

bool VersaoDiario::podeDeixar(std::string_view conteudo) const {
    std::vector<bool> livres(conteudo.size());
    for (const auto &[inicio, fim] : escritos)
        for (std::size_t i = inicio; i < std::min(fim, conteudo.size()); ++i)
            livres[i] = true;
    for (std::size_t i = 0; i < conteudo.size(); ++i) {
        const bool igual = i < bytes.size() && (conteudo[i] == bytes[i] || conteudo[i] == '\0');
        if (!igual && !livres[i]) return false;
    }
    return true;
}

bool EstadoDiario::ehDeOutro(const Identidade &achada, std::string_view conteudo) const {
    const bool conhecida = std::ranges::any_of(
        anteriores, [&](const Identidade &anterior) { return mesmosTempos(anterior, achada); });
    if (carimbo && achada.mudanca == carimbo->mudanca) {
        // Within one step of the clock: as it was left, or by its bytes.
        if (mesmosTempos(achada, *carimbo) ? temMarca(achada) : conhecida) return false;
        return mudadaDepois(achada, conteudo);
    }
    // With times of before: a clock that was set back makes the file's own ones later than its
    // records.
    if (conhecida) return false;
    // Not by size or inode: a file whose bytes were not flushed comes back shorter, on some file
    // systems with the time of its last change. Another mode or link changes no bytes.
    if (carimbo) return achada.mudanca > carimbo->mudanca && achada.escrita != carimbo->escrita;
    if (achada.mudanca > limite) return true;
    // The moment of a record that the journal has lost.
    return temMarca(achada) && achada.escrita > momento;
}

// The same of a file with the time of the last change: the one that stood there is written within
// two calls, its time of writing comes second; another one has it before its name. The inode of a
// version that made way may be somebody's by now, but not with bytes of the last one.
bool EstadoDiario::mudadaDepois(const Identidade &achada, std::string_view conteudo) const {
    const auto dela = [&](const Identidade &vista) { return vista.no == achada.no; };
    const bool anterior = !dela(*carimbo) && std::ranges::any_of(anteriores, dela);
    if (!dela(*carimbo) && !anterior && achada.escrita != carimbo->escrita) return true;
    return std::none_of(versoes.begin(), versoes.end() - (anterior ? 1 : 0),
                        [&](const VersaoDiario &versao) { return versao.podeDeixar(conteudo); });
}

EstadosDiario::EstadosDiario(const Diario::Conteudo &conteudo) : danificado_(conteudo.danificado) {
    for (const RegistroDiario &registro : conteudo.registros) {
        carimbar(registro.carimbos);
        aplicar(registro);
    }
    if (conteudo.carimbos) carimbar(*conteudo.carimbos);
    for (auto &[nome, estado] : arquivos_)
        estado.anteriores = std::move(vistos_[nome]);
    // A file may well be later than records that lost those which followed them.
    if (danificado_) return;
    for (auto &[nome, estado] : arquivos_)
        estado.limite += kFolga;
}

void EstadosDiario::aplicar(const RegistroDiario &registro) {
    for (const MudancaDiario &mudanca : registro.mudancas) {
        const auto achado = arquivos_.find(std::string(mudanca.nome));
        if (achado == arquivos_.end() && mudanca.forma == FormaMudanca::kTrecho) continue;
        const auto [lugar, nova] = arquivos_.try_emplace(std::string(mudanca.nome));
        EstadoDiario &estado = lugar->second;
        if (!mudar(estado.versoes, mudanca)) continue;
        // Made in this journal, its name is as uncertain as its bytes.
        if (nova || mudanca.forma == FormaMudanca::kInteiraNova)
            estado.existia = mudanca.forma != FormaMudanca::kInteiraNova;
        estado.acesso = mudanca.acesso;
        estado.ligacao = mudanca.ligacao;
        estado.limite = estado.momento = registro.momento;
        estado.carimbo.reset();
        estado.removido = false;
    }
}

void EstadosDiario::carimbar(const std::vector<CarimboDiario> &carimbos) {
    for (const CarimboDiario &carimbo : carimbos) {
        const auto estado = arquivos_.find(carimbo.nome);
        if (carimbo.ausente()) {
            if (estado != arquivos_.end()) estado->second.removido = true;
            continue;
        }
        if (carimbo.nome.empty()) diretorio_ = carimbo.identidade;
        std::vector<Identidade> &vistos = vistos_[carimbo.nome];
        if (estado != arquivos_.end()) {
            estado->second.carimbo = carimbo.identidade;
            // Versions of long before cannot come back with the times of now.
            auto &versoes = estado->second.versoes;
            if (!vistos.empty() && carimbo.identidade.mudanca - vistos.back().mudanca > kMaiorPasso)
                versoes.erase(versoes.begin(), versoes.end() - 1);
        }
        vistos.push_back(carimbo.identidade);
    }
}

bool EstadosDiario::foiRemovido(const EstadoDiario &estado, const Identidade &diretorio) const {
    if (estado.existia || estado.removido) return true;
    if (estado.carimbo && diretorio_) return diretorio.mudanca > diretorio_->mudanca;
    return danificado_ && diretorio.mudanca > estado.limite;
}

} // namespace zel
