// SPDX-License-Identifier: MIT
// Each reason for which a call can be refused, provoked through the functions: they answer its code
// and change nothing, and the line in the log must have the function, the code with its name, and
// the reason's own text with what was given.
#include "blackbox/Log.h"
#include "blackbox/Provocacao.h"

#include <gtest/gtest.h>

#include <set>

namespace {

std::vector<Provocacao> todas() {
    std::vector<Provocacao> linhas = provocacoesGerais();
    for (Provocacao &linha : provocacoesDaVenda())
        linhas.push_back(std::move(linha));
    return linhas;
}

// Where no configuration and no argument leads there.
const std::set<Motivo> kSemProvocacao{
    Motivo::kSemMemoria,         // memory runs out
    Motivo::kRelogio,            // a clock in the year 10000
    Motivo::kNomeTomado,         // within a call: another name is tried, a copy is given up
    Motivo::kRegistroDanificado, // within a call: the records before it are taken
    Motivo::kSemMoldes,          // an operation before the frame has made them
    Motivo::kSemLista,           // the document is looked at first, and has both lists
    Motivo::kDocumentoSemForma,  // a document without elements is refused for them first
    Motivo::kPdfSemNome,         // the functions give the name themselves
    Motivo::kPdfOrigem,          // and the origin
    Motivo::kPdfNaoDesenhado,    // the PDF library runs out of memory
    Motivo::kPdfNaoMontado,      // and here
};

const std::set<Motivo> kMudam{
    Motivo::kDocumentoIncompleto, // its number is taken before its parts are looked for
    Motivo::kPdfSemDocumento,     // the receipt is printed, and its PDF fails
    Motivo::kNaoAutorizado,       // and here
    Motivo::kEstadoDeOutro,       // another till closes its receipt meanwhile
    Motivo::kPdfNaoGravado,       // and here
};

std::string arquivos(const Caixa &c) {
    std::string texto;
    for (const char *nome :
         {"ZEL_Framework.xml", "ArqPersist.bin", "documentosEnvio.xml", "parametrosEnvio.xml"})
        if (std::filesystem::is_regular_file(c.diretorio() + nome))
            texto += nome + c.lerArquivo(nome);
    return texto;
}

// The till prepared, and the call, which changes nothing but for those.
int provocar(Caixa &caixa, const Provocacao &linha) {
    EXPECT_EQ(avancar(caixa, linha.estado), linha.estado);
    EXPECT_EQ(caixa->rCFVerificarStatus_ZEL(), linha.estado);
    if (linha.preparar) linha.preparar(caixa);
    const std::string antes = arquivos(caixa);
    const int codigo = linha.fazer != nullptr ? linha.fazer(caixa) : fazer(caixa, linha.pedido);
    EXPECT_NE(arquivos(caixa) == antes, kMudam.contains(linha.motivo));
    return codigo;
}

// Whether the text is the template's, with anything in its places.
bool temAForma(std::string_view texto, std::string_view molde) {
    for (bool primeiro = true;; primeiro = false) {
        const std::size_t abre = molde.find('{');
        const std::string_view fixo = molde.substr(0, abre);
        const std::size_t achado = texto.find(fixo);
        if (achado == texto.npos || (primeiro && achado != 0)) return false;
        texto.remove_prefix(achado + fixo.size());
        if (abre == molde.npos) return texto.empty() || fixo.empty();
        molde.remove_prefix(molde.find('}') + 1);
    }
}

TEST(Motivos, cada_um_e_provocado_e_dito) {
    for (const Provocacao &linha : todas()) {
        const std::string funcao(linha.pedido.funcao);
        SCOPED_TRACE(funcao + ": " + std::string(linha.trecho));
        const Log log;
        Caixa caixa;
        const zel::LinhaMotivo &motivo = zel::linhaDo(linha.motivo);
        std::filesystem::current_path(caixa.diretorio());
        EXPECT_EQ(provocar(caixa, linha), linha.codigo);
        std::filesystem::current_path("/");
        const auto linhas = log.linhas();
        ASSERT_EQ(linhas.size(), 1U) << "the refusal, and nothing else";
        const std::string_view dita = linhas.front();
        EXPECT_NE(dita.find(linha.trecho), dita.npos) << dita;
        const std::string inicio = funcao + ": " + std::to_string(linha.codigo);
        const std::size_t resposta = dita.find("] " + inicio);
        ASSERT_NE(resposta, dita.npos) << dita;
        const std::size_t texto = dita.find(": ", resposta + 2 + inicio.size());
        ASSERT_NE(texto, dita.npos) << dita;
        EXPECT_TRUE(temAForma(dita.substr(texto + 2), motivo.texto)) << dita;
    }
}

TEST(Motivos, nenhum_sem_provocacao) {
    std::set<Motivo> provocados;
    for (const Provocacao &linha : todas())
        provocados.insert(linha.motivo);
    for (const zel::LinhaMotivo &linha : zel::kMotivos)
        EXPECT_NE(provocados.contains(linha.motivo), kSemProvocacao.contains(linha.motivo))
            << linha.texto;
}

} // namespace

Preparo depoisDe(const Pedido &pedido) {
    return [=](Caixa &c) { EXPECT_EQ(fazer(c, pedido), ZEL_OK) << pedido.funcao; };
}
