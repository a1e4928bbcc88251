// SPDX-License-Identifier: MIT
// How one file of a change gets from what it holds to what it is to hold: where it is written, and
// what the journal needs to do the same again. Pure: knows what was found, and looks at no file.
#pragma once

#include "diario/Gravacao.h"
#include "diario/RegistroDiario.h"
#include "disco/Identidade.h"

#include <string>
#include <string_view>
#include <vector>

namespace zel {

struct ArquivoAchado {
    bool existe = false;
    bool nomeLivre = false; // and not even a link stands there
    Identidade identidade{};
    bool seguido = false; // holds what the journal says
    std::string conteudo; // read where precisaDoConteudo says so
};

// Whether what a file holds has to be read for its plan.
bool precisaDoConteudo(const MudancaArquivo &mudanca, const ArquivoAchado &achado);

struct Plano {
    bool noLugar = false;                  // written where the file stands, otherwise beside it
    std::string inteiro{};                 // a whole that takes the place of an end, beside it
    std::string_view depois{};             // the whole, where it is written beside
    std::vector<MudancaDiario> mudancas{}; // of the record; what is written in place are its pieces
};

// `plano` is filled where it stands: its views are into it, the change and what was found.
void planejar(const MudancaArquivo &mudanca, const ArquivoAchado &achado, Plano &plano);

} // namespace zel
