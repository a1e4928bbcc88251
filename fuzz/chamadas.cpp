// SPDX-License-Identifier: MIT
// Sequences of calls of the C functions. Each line is a call: its first character, from "0" on, is
// the function's row in Chamadas.h ("_" a new process instead), then its arguments, parted by tabs:
// as given, nothing for a plausible one, "~n" null, "~v" empty, "~l" long, "~b" every byte. A
// refusal changes neither state nor document; a new process finds both.
#include "apoio/Chamadas.h"
#include "PastaDoAlvo.h"

#include "api/Quadro.h"
#include "config/Registro.h"
#include "emcurso/Carga.h"
#include "emcurso/ZEL_Controle.h"
#include "imposto/Presets.h"
#include "impressao/CupomFiscal.h"

namespace {

// Buffers are documented by what a receipt holds.
constexpr int kMaximoChamadas = 64;
constexpr std::size_t kDocumento = 16384 + kMaximoChamadas * (3072 + 80) + 5 * 5000;

void novoProcesso() {
    zel::fnFinalizarVariaveis_ZEL();
    zel::fnInicializarEstruturaDadosZEL_AUX();
    zel::definirAutorizacao({});
    zel::G_stXML_Persistencia.fnLimpar();
    zel::G_stTagImpostoConfTemp = {};
    zel::G_szTotalImposto.limpar();
    zel::G_stDadosImpressao = {};
    zel::ZEL_TIPO_DESC_ACREC.limpar();
    zel::G_EstadoCFe = 0;
}

Texto argumento(std::string_view escrito, const char *plausivel) {
    if (escrito.empty()) return plausivel;
    if (escrito == "~n") return std::nullopt;
    if (escrito == "~v") return "";
    if (escrito == "~l") return std::string(6000, 'x'); // beyond any limit
    return escrito == "~b" ? todosOsBytes() : std::string(escrito);
}

} // namespace

void jogar(std::string_view resto) {
    static const PastaDoAlvo pasta;
    static const Funcoes funcoes(dlopen(nullptr, RTLD_NOW));
    pasta.esvaziar();
    novoProcesso();
    bool alheio = false; // the application wrote over a file of the library's
    for (int i = 0; i < kMaximoChamadas && !resto.empty(); ++i) {
        std::string_view linha = tirarAte(resto, '\n');
        const auto qual = static_cast<std::size_t>(tirarNumero(linha, 256) - '0') % 48;
        const int estado = funcoes.rCFVerificarStatus_ZEL();
        exigir(estado >= 0 && estado <= 6);
        const std::string documento = pasta.ler("ArqPersist.bin");
        if (qual == chamadas().size()) {
            novoProcesso();
            exigir(funcoes.rCFVerificarStatus_ZEL() == estado || alheio);
            continue;
        }
        const Chamada &chamada = chamadas()[qual];
        std::vector<Texto> textos;
        for (const Argumento &previsto : chamada.argumentos)
            textos.push_back(argumento(tirarAte(linha, '\t'), previsto.plausivel));
        const int codigo = chamada.chamar(funcoes, textos, kDocumento);
        exigir(chamada.responde(codigo));
        alheio |= std::string_view(chamada.nome).find("riptografar") != std::string_view::npos &&
                  codigo == ZEL_OK;
        if (codigo >= 0 || alheio) continue;
        exigir(funcoes.rCFVerificarStatus_ZEL() == estado);
        exigir(pasta.ler("ArqPersist.bin") == documento);
    }
}
