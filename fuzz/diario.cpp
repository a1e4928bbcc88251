// SPDX-License-Identifier: MIT
// The journal of a data directory as a dead process, a bad sector or another till may have left it:
// whatever it holds, the files end as it says or as they were, and the next change works.
#include "PastaDoAlvo.h"

#include "ZEL_FelborFramework.h"
#include "util/Gravacao.h"
#include "util/RegistroDiario.h"
#include "util/Trava.h"

using namespace zel;

namespace {

// The input as the journal, or as the change of a record with a right checksum.
std::string diarioDe(std::string_view entrada) {
    if (tirarNumero(entrada, 2) == 0) return std::string(entrada);
    RegistroDiario registro;
    registro.sequencia = 1;
    registro.lugar.caminho = 0;
    while (!entrada.empty() && registro.mudancas.size() < 8) {
        MudancaDiario mudanca;
        mudanca.forma = FormaMudanca{static_cast<std::uint8_t>(tirarNumero(entrada, 5))};
        mudanca.lugar = static_cast<std::uint64_t>(tirarNumero(entrada, 256));
        mudanca.retirados = static_cast<std::uint64_t>(tirarNumero(entrada, 256));
        mudanca.nome = tirarNumero(entrada, 2) == 0 ? "a" : "b";
        mudanca.bytes = tirarAte(entrada, '\n');
        registro.mudancas.push_back(mudanca);
        ++registro.sequencia;
    }
    registro.sequencia = 1;
    return escreverRegistroDiario(registro);
}

} // namespace

void jogar(std::string_view texto) {
    static const PastaDoAlvo pasta;
    pasta.esvaziar();
    esquecerDiario();
    pasta.gravar("ZEL_Framework.diario", diarioDe(texto));
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
