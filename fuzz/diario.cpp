// SPDX-License-Identifier: MIT
// The journal of a data directory as a dead process, a bad sector or another till may have left it:
// whatever it holds, the files end as it says or as they were, and the next change works.
#include "PastaDoAlvo.h"

#include "ZEL_FelborFramework.h"
#include "diario/Gravacao.h"
#include "diario/RegistroDiario.h"
#include "disco/Identidade.h"
#include "disco/Trava.h"

#include <filesystem>
#include <utility>

using namespace zel;

namespace {

// As the journal of this directory has it.
LugarDiario lugarDe(const PastaDoAlvo &pasta) {
    return {somaCrc32(std::to_string(noDe(pasta / "").value_or(0))),
            noDe(pasta / "ZEL_Framework.diario").value_or(0)};
}

RegistroDiario tirarRegistro(std::string_view &entrada, RegistroDiario registro) {
    ++registro.sequencia;
    for (auto quantas = tirarNumero(entrada, 4); quantas >= 0; --quantas) {
        MudancaDiario mudanca;
        mudanca.forma = FormaMudanca{static_cast<std::uint8_t>(tirarNumero(entrada, 5))};
        mudanca.lugar = static_cast<std::uint64_t>(tirarNumero(entrada, 256));
        mudanca.antes = static_cast<std::uint64_t>(tirarNumero(entrada, 256));
        mudanca.noLugar = mudanca.antes % 2 != 0;
        mudanca.nome = tirarNumero(entrada, 2) == 0 ? "a" : "b";
        mudanca.bytes = tirarAte(entrada, '\n');
        registro.mudancas.push_back(mudanca);
    }
    return registro;
}

// The input as pieces of a journal, one after the other: bytes, records with right checksums, ends;
// and as bits of it that flip.
std::string diarioDe(std::string_view entrada, RegistroDiario ultimo) {
    std::string diario;
    while (!entrada.empty()) {
        switch (tirarNumero(entrada, 4)) {
        case 0:
            diario.append(tirarAte(entrada, '\n'));
            break;
        case 1:
            ultimo = tirarRegistro(entrada, std::move(ultimo));
            diario.append(escreverRegistroDiario(ultimo));
            ultimo.mudancas.clear();
            break;
        case 2:
            ultimo.seguido = tirarNumero(entrada, 2);
            diario.append(escreverFim(ultimo));
            break;
        default:
            if (!diario.empty())
                diario[static_cast<std::size_t>(tirarNumero(entrada, 256)) * kSetor / 4 %
                       diario.size()] ^= 1;
        }
    }
    return diario;
}

} // namespace

void jogar(std::string_view texto) {
    static const PastaDoAlvo pasta;
    pasta.esvaziar();
    esquecerDiario();
    RegistroDiario vazio;
    pasta.gravar("ZEL_Framework.diario", "");
    vazio.lugar = lugarDe(pasta);
    pasta.gravar("ZEL_Framework.diario", diarioDe(texto, vazio));
    pasta.gravar("a", "antes");
    const Vez vez;
    exigir(static_cast<bool>(vez));
    const int codigo = acompanharDiario();
    exigir(codigo == ZEL_OK || codigo == ZEL_ARQUIVO_INDISPONIVEL);
    if (codigo != ZEL_OK) return;
    const MudancaArquivo mudanca{.nome = "c", .depois = "depois"};
    exigir(gravarJuntos({&mudanca, 1}) == ZEL_OK && pasta.ler("c") == "depois");
    esquecerDiario();
    exigir(acompanharDiario() == ZEL_OK && pasta.ler("c") == "depois");
}
