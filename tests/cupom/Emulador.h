// SPDX-License-Identifier: MIT
// A receipt printer in small: does what the bytes of one dialect say, by a command table of its own
// that knows nothing of the profiles, and shows the paper. What the dialect does not know throws
// std::runtime_error: a printer would print it as rubbish.
#pragma once

#include "PaginaDeCodigo.h"
#include "apoio.h"

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace zel::cupom {

struct Impresso {
    ImagemCinza imagem;
    std::string letras;       // ISO-8859-1, without what was aligned or fed
    std::vector<int> modulos; // of the QR codes that it printed by command
    int cortes = 0;
    int imagens = 0;
    int logotiposGuardados = 0;
    int gavetas = 0;
};

struct EntradaDoDialeto;

// What a model is like.
struct Dialeto {
    std::string_view perfil;
    const std::vector<EntradaDoDialeto> &comandos;
    // Of codes, as iconv names them; those of Epson's printers.
    std::map<int, const char *> paginas = {{2, "CP850"}, {3, "CP860"}, {16, "CP1252"}};
    Papel papel = kPapeis[0];
    // What the direct picture must be without, or have besides, to be like this printer's.
    bool italico = false;
    bool corta = true;
    int linhasAntesDoCorte = 0;
};

// One for each profile of the library.
const std::vector<Dialeto> &dialetos();

// Letters of ISO-8859-1 as paper shows them that is printed by a code page; by the C library's
// tables.
std::string comoSaem(std::string letras, const PaginaDeCodigo &pagina);

// Throws std::runtime_error when the bytes are not of the dialect.
Impresso emular(const Dialeto &dialeto, std::string_view bytes);

} // namespace zel::cupom
