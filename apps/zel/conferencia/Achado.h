// SPDX-License-Identifier: MIT
// What a check found: its kind, with a stable name and severity, the place, what stands there and
// the remedy. Checks add findings to a report; the report counts, is written as text or JSON, and
// gives the exit code.
#pragma once

#include "conferencia/AchadoTabela.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace zel::aplicativo {

struct Achado {
    IdAchado id;
    std::string lugar; // path of a key, name of a file or of an element
    std::size_t linha; // in the file that is checked, 0 for none
    std::string texto;
    std::string remedio; // lines
};

class Relatorio {
public:
    // `maximo` lowers the severity that the table gives.
    void registrar(Achado achado, Gravidade maximo = Gravidade::kErro);

    std::size_t quantos(Gravidade gravidade) const;
    // 0 clean, 1 warnings, 2 errors.
    int codigoDeSaida() const;

    // Commands in the remedies name the directory, so that they can be run as they stand.
    void comandosPara(std::string diretorio) { diretorio_ = std::move(diretorio); }

    // Errors first, each severity in the order in which it was found.
    void escreverTexto(std::string_view alvo) const;
    void escreverJson(std::string_view alvo) const;

private:
    struct Linha {
        Gravidade gravidade;
        Achado achado;
    };
    std::vector<const Linha *> emOrdem() const;
    std::string remedioDe(const Achado &achado) const;

    std::vector<Linha> linhas_;
    std::string diretorio_;
};

std::string_view nomeDaGravidade(Gravidade gravidade);

} // namespace zel::aplicativo
