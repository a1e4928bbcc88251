// SPDX-License-Identifier: MIT
// What the page shows: today, what was looked for, one document.
#pragma once

#include "Html.h"
#include "Quadro.h"

#include <string>
#include <string_view>
#include <vector>

namespace zel::envio {

// A whole page. `renovar`: the browser asks for it again after half a minute.
Html paginaInteira(std::string_view titulo, const Html &corpo, std::string_view hora, bool renovar);

// What needs somebody first, then the documents of the day (the last ones, when there are more than
// are shown), then the authority's services. `zona`: a moment in the shop's zone.
Html telaDeHoje(const Quadro &quadro, const std::vector<Ficha> &hoje, std::size_t mostrados,
                const std::string &zona);

// What is looked for, as it was typed; `erro` says what of it cannot be.
struct Perguntado {
    std::string numero, chave, dia, consumidor;
    bool nada() const {
        return numero.empty() && chave.empty() && dia.empty() && consumidor.empty();
    }
};
Html telaDeProcura(const Perguntado &perguntado, std::string_view erro,
                   const std::vector<Ficha> &achadas, std::size_t mostrados);

Html telaDoDocumento(const Ficha &ficha, const std::vector<PassoDado> &passos);

// A sentence alone.
Html telaDeAviso(std::string_view frase);

extern const std::string_view kEstilo; // the style sheet

} // namespace zel::envio
