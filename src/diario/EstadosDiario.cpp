// SPDX-License-Identifier: MIT
#include "diario/EstadosDiario.h"

#include <algorithm>
#include <utility>

namespace zel {

namespace {

// Between a record and the writing of its files a machine may be busy for this long; used only
// where the stamps were lost, which takes a crash.
constexpr std::int64_t kFolga = 60'000'000'000; // nanoseconds

} // namespace

bool EstadoDiario::ehDeOutro(const Identidade &achada) const {
    // With times of before: a clock that was set back makes the file's own ones later than its
    // records.
    const auto dela = [&](const Identidade &anterior) {
        return anterior.mudanca == achada.mudanca && anterior.escrita == achada.escrita;
    };
    if (std::ranges::any_of(anteriores, dela)) return false;
    if (!carimbo) return achada.mudanca > limite;
    // Not by size or inode: a file whose bytes were not flushed comes back shorter, on some file
    // systems with the time of its last change. Another mode or link changes no bytes.
    return achada.mudanca > carimbo->mudanca && achada.escrita != carimbo->escrita;
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
        const auto [lugar, nova] = arquivos_.try_emplace(std::string(mudanca.nome));
        EstadoDiario &estado = lugar->second;
        if (nova) estado.existia = true;
        // Made in this journal, its name is as uncertain as its bytes.
        if (mudanca.forma == FormaMudanca::kInteiraNova) estado.existia = false;
        if (mudanca.forma == FormaMudanca::kTrecho) {
            if (mudanca.lugar > estado.conteudo.size()) continue; // no record of ours
            estado.conteudo.replace(mudanca.lugar, mudanca.retirados, mudanca.bytes);
        } else {
            estado.conteudo = mudanca.bytes;
        }
        estado.acesso = mudanca.acesso;
        estado.ligacao = mudanca.ligacao;
        estado.limite = registro.momento;
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
        vistos_[carimbo.nome].push_back(carimbo.identidade);
        if (estado != arquivos_.end()) estado->second.carimbo = carimbo.identidade;
    }
}

bool EstadosDiario::foiRemovido(const EstadoDiario &estado, const Identidade &diretorio) const {
    if (estado.existia || estado.removido) return true;
    if (estado.carimbo && diretorio_) return diretorio.mudanca > diretorio_->mudanca;
    return danificado_ && diretorio.mudanca > estado.limite;
}

} // namespace zel
