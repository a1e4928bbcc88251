// SPDX-License-Identifier: MIT
// A roteiro played once without disturbance, so that any step can be played again from the files
// that it found and compared with what it should leave. Each step runs as a process of its own
// would: the library is loaded, finds its files, works. The clock stands still.
#pragma once

#include "apoio/Biblioteca.h"
#include "apoio/PastaTemporaria.h"
#include "disco/Processo.h"
#include "disco/Vigia.h"
#include "fault/Roteiro.h"

#include <memory>
#include <string>
#include <vector>

// The library as a new process finds it, over a directory, with the receipt in progress in memory
// unless `frio`.
class Processo {
public:
    explicit Processo(const std::string &diretorio, bool frio = false);
    Processo(const Processo &) = delete;
    Processo &operator=(const Processo &) = delete;

    const Funcoes &funcoes() const;

private:
    std::unique_ptr<Biblioteca> carregada_;
};

// What an operation may change: what the library reports, and the files of the till.
struct Retrato {
    std::vector<std::string> memoria;
    disco::Fotografia arquivos;
    bool operator==(const Retrato &) const = default;
};
Retrato retratar(const Funcoes &funcoes, const std::string &diretorio);

// Where two pictures differ, in a few words; empty when they do not.
std::string diferenca(const Retrato &achado, const Retrato &esperado);

// Whether the test failed since: a process that forks off has the failures of before in its books.
class NovasFalhas {
public:
    NovasFalhas();
    int codigo() const; // 0 or 1

private:
    int antes_;
};

// Fails the test unless the difference is empty.
void recusarSe(const char *quando, const std::string &diferenca);

// In a process of its own over the directory; what fails in it fails the test.
void emProcessoNovo(const std::string &diretorio,
                    const std::function<void(const Funcoes &)> &conferir);

class Ensaio {
public:
    explicit Ensaio(const Roteiro &roteiro);
    ~Ensaio();
    Ensaio(const Ensaio &) = delete;
    Ensaio &operator=(const Ensaio &) = delete;

    std::size_t passos() const { return roteiro_.passos.size(); }
    const char *nome(std::size_t passo) const { return roteiro_.passos[passo].nome; }
    bool outroCodigo(std::size_t passo) const { return roteiro_.passos[passo].outroCodigo; }
    const std::string &diretorio() const { return diretorio_; }

    // Before step `passo`; after the last one with passos().
    const Retrato &retrato(std::size_t passo) const { return retratos_[passo]; }
    // The files of that moment, the journal among them.
    const disco::Fotografia &foto(std::size_t passo) const { return fotos_[passo]; }

    // The files before the step, put into the directory.
    void preparar(std::size_t passo) const { disco::revelar(diretorio_, fotos_[passo]); }

    int fazer(std::size_t passo, const Funcoes &funcoes) const {
        return roteiro_.passos[passo].fazer(funcoes, diretorio_);
    }

    // How many calls the step makes when nothing disturbs it.
    int chamadas(std::size_t passo, bool soMudancas) const;

    // The step in a process that lives under the plan. Its exit status.
    int sob(std::size_t passo, const disco::Plano &plano) const;

    // Whether a picture is one that the step may leave; of before or of after it, or mixed where
    // the step may happen in parts. Empty, or how it differs.
    std::string foraDoLugar(std::size_t passo, const Retrato &achado) const;

    // The same for a step that is done, however often it took: a repetition may have taken another
    // numeric code.
    std::string diferencaNoFim(std::size_t passo, const Retrato &achado) const;

    // In a process of its own: what is found is before or after the step (after it, when `feito`),
    // and the rest of the roteiro ends as it should. Anything else fails the test.
    void conferirSucessor(std::size_t passo, bool feito) const;

private:
    const Roteiro &roteiro_;
    PastaTemporaria pasta_;
    std::string diretorio_ = pasta_ / "";
    std::vector<Retrato> retratos_;
    std::vector<disco::Fotografia> fotos_; // the same with the journal
    std::vector<disco::Fotografia> meios_; // empty where a step has none
    mutable std::size_t conferidos_ = 0;
};

// Whether the whole is asked for (scripts/test-faults), or the selection that every test run makes.
bool tudo();
