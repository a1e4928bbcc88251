// SPDX-License-Identifier: MIT
// What the records of a journal add up to: for each file what it was left with, and how to tell
// whether somebody else wrote it, or took it away, later than that. Pure: looks at no file.
#pragma once

#include "diario/Diario.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace zel {

// A file as a change of the whole left it, and those in its place since.
struct VersaoDiario {
    std::string bytes;
    std::vector<std::pair<std::size_t, std::size_t>> escritos{}; // from, to: written in its place

    // Whether a power cut may leave that of it: the bytes written in its place are those of any
    // time, whatever did not get to the disk is missing or reads as zero.
    bool podeDeixar(std::string_view conteudo) const;
};

struct EstadoDiario {
    std::vector<VersaoDiario> versoes{}; // the last one is what it was left with
    bool existia = false;                // before the journal's first record of it
    bool removido = false;               // a later record found it gone
    Acesso acesso = Acesso::kPrivado;
    Ligacao ligacao = Ligacao::kNaoSeguida;
    std::int64_t momento = 0;             // of its last record
    std::int64_t limite = 0;              // when that had been followed, at the latest
    std::optional<Identidade> carimbo;    // how it stood after that, where that is known
    std::vector<Identidade> anteriores{}; // how it stood before, at any time that is known

    const std::string &conteudo() const { return versoes.back().bytes; }

    // Whether a file that holds something else was written by somebody else, after the last record;
    // otherwise it is one that lost what was not flushed.
    bool ehDeOutro(const Identidade &achada, std::string_view conteudo) const;

private:
    bool mudadaDepois(const Identidade &achada, std::string_view conteudo) const;
};

class EstadosDiario {
public:
    explicit EstadosDiario(const Diario::Conteudo &conteudo);

    const std::map<std::string, EstadoDiario> &arquivos() const { return arquivos_; }

    // Whether a file that is missing was taken away by somebody: there was one before, or the
    // directory changed after the file was seen in its place.
    bool foiRemovido(const EstadoDiario &estado, const Identidade &diretorio) const;

private:
    void aplicar(const RegistroDiario &registro);
    void carimbar(const std::vector<CarimboDiario> &carimbos);

    std::map<std::string, EstadoDiario> arquivos_;
    std::map<std::string, std::vector<Identidade>> vistos_;
    std::optional<Identidade> diretorio_; // after the last change of names
    bool danificado_;
};

} // namespace zel
