// SPDX-License-Identifier: MIT
// What the records of a journal add up to: for each file what it was left with, and how to tell
// whether somebody else wrote it, or took it away, later than that. Pure: looks at no file.
#pragma once

#include "diario/Diario.h"

#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace zel {

struct EstadoDiario {
    std::string conteudo{}; // what it was left with
    bool existia = false;   // before the journal's first record of it
    bool removido = false;  // a later record found it gone
    Acesso acesso = Acesso::kPrivado;
    Ligacao ligacao = Ligacao::kNaoSeguida;
    std::int64_t momento = 0; // of its last record
    bool seguido = false;     // that it had followed that is known
    std::int64_t limite = 0;  // when, at the latest
    bool inteiro = false;     // no record is missing after it

    // Whether a file that holds something else was written by somebody else, after the last record;
    // otherwise it is one that lost what was not flushed.
    bool ehDeOutro(const Identidade &achada, std::string_view bytes) const;

    // Takes one change into account. False for one of another file than this.
    bool mudar(const MudancaDiario &mudanca);
    // Of a record of then, which had been followed at that time; 0 where that is not known.
    void datar(std::int64_t desteRegistro, std::int64_t seguidoEm, bool danificado);

private:
    bool podeFicar(std::string_view bytes) const;

    std::int64_t antes_ = 0;               // it had changed by then, before its last record
    std::vector<std::int64_t> escritas_{}; // times of writing that it had before
    std::uint64_t no_ = 0;                 // that was written in its place; 0 for none
    std::vector<std::pair<std::size_t, std::string>> cobertos_{}; // what stood there, from where on
};

class EstadosDiario {
public:
    explicit EstadosDiario(const Diario::Conteudo &conteudo);

    const std::map<std::string, EstadoDiario> &arquivos() const { return arquivos_; }

    // Whether a file that is missing was taken away by somebody: there was one before, or the
    // directory changed after all names had followed.
    bool foiRemovido(const EstadoDiario &estado, const Identidade &diretorio) const;

private:
    void aplicar(const RegistroDiario &registro, std::int64_t seguido);

    std::map<std::string, EstadoDiario> arquivos_;
    std::int64_t nomes_ = 0; // when the last change of names had followed
    bool danificado_, inteiro_;
};

} // namespace zel
