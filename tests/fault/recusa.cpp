// SPDX-License-Identifier: MIT
// A call that fails: the operation answers a negative code and has changed nothing, or it has done
// its work whole; either way the next call works, and so does the next process.
#include "apoio/Ambiente.h"
#include "apoio/PastaTemporaria.h"
#include "apoio/Trecho.h"
#include "fault/Ensaio.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <iostream>

namespace {

using Ato = disco::Plano::Ato;

struct Falha {
    const char *nome;
    Ato ato;
    int erro;
};

constexpr Falha kFalhas[] = {
    {"ENOSPC", Ato::kErro, ENOSPC},
    {"EIO", Ato::kErro, EIO},
    {"EINTR", Ato::kErro, EINTR},
    {"short write", Ato::kCurta, 0},
    {"short write, then ENOSPC", Ato::kCurtaCheia, 0},
    {"EACCES", Ato::kErro, EACCES},
    {"EROFS", Ato::kErro, EROFS},
    {"EMFILE", Ato::kErro, EMFILE},
    {"ENOLCK", Ato::kErro, ENOLCK},
    {"ENOSPC and on", Ato::kErroSempre, ENOSPC},
    {"EIO and on", Ato::kErroSempre, EIO},
};

constexpr int kNaoDisparou = 2;

class Recusa : public testing::TestWithParam<Roteiro> {};

// A disk that failed from some call on works again: the next call puts in place what could not be.
void voltarADarLugar(const Processo &processo) {
    EXPECT_EQ(processo.funcoes().regAlterarValor_ZEL("CONFIGURACAO\\Modelo", "NFC-e"), ZEL_OK);
}

// What the next process finds if this one goes no further.
void julgarRecusado(const Ensaio &ensaio, std::size_t passo) {
    static int vezes = 0;
    if (!tudo() && ++vezes % 4 != 0) return;
    const disco::Fotografia deixado = disco::fotografar(ensaio.diretorio());
    ensaio.conferirSucessor(passo, false);
    disco::revelar(ensaio.diretorio(), deixado);
}

// The step under the plan, in a process of its own, and once more when it was refused. 0 all is
// well; 1 it is not; kNaoDisparou the step ended before the call that the plan is for.
int conferir(const Ensaio &ensaio, std::size_t passo, const disco::Plano &plano) {
    ensaio.preparar(passo);
    return disco::emOutroProcesso([&] {
        const NovasFalhas falhas;
        const Processo processo(ensaio.diretorio());
        int codigo = 0;
        {
            const disco::Vigia vigia(plano);
            codigo = ensaio.fazer(passo, processo.funcoes());
            if (!vigia.disparou() && codigo > 0) return kNaoDisparou;
        }
        const auto achado = [&] { return retratar(processo.funcoes(), ensaio.diretorio()); };
        if (plano.ato == Ato::kErroSempre) voltarADarLugar(processo);
        if (codigo > 0) {
            recusarSe("done", diferenca(achado(), ensaio.retrato(passo + 1)));
        } else {
            recusarSe("refused", ensaio.foraDoLugar(passo, achado()));
            julgarRecusado(ensaio, passo);
            EXPECT_GT(ensaio.fazer(passo, processo.funcoes()), 0) << "repeated";
            recusarSe("repeated", ensaio.diferencaNoFim(passo, achado()));
        }
        return falhas.codigo();
    });
}

// The log of all processes of a test, in which every refusal names the file and the system's error,
// or what else it was.
class LogDasRecusas {
public:
    void conferir() const {
        const std::string linhas = pasta_.ler("log");
        EXPECT_FALSE(linhas.empty());
        EXPECT_FALSE(contem(linhas, "motivo não registrado"));
        EXPECT_FALSE(contem(linhas, "um arquivo do diretório"));
    }

private:
    PastaTemporaria pasta_;
    Ambiente destino_{"ZEL_LOG", (pasta_ / "log").c_str()};
};

TEST_P(Recusa, nada_muda_ou_tudo_esta_feito) {
    const Ensaio ensaio(GetParam());
    const LogDasRecusas log;
    std::size_t falhas = 0;
    for (std::size_t passo = 0; passo < ensaio.passos(); ++passo) {
        const int ultima = ensaio.chamadas(passo, false);
        for (int n = 1; n <= ultima; ++n) {
            for (std::size_t qual = 0; qual < std::size(kFalhas); ++qual) {
                // Each call meets one of them in every run.
                if (!tudo() && (passo + static_cast<std::size_t>(n)) % std::size(kFalhas) != qual)
                    continue;
                const Falha &falha = kFalhas[qual];
                SCOPED_TRACE(std::string(ensaio.nome(passo)) + ", " + falha.nome + ", call " +
                             std::to_string(n));
                const int resposta =
                    conferir(ensaio, passo, {.ato = falha.ato, .em = n, .erro = falha.erro});
                if (resposta == kNaoDisparou) continue;
                ++falhas;
                EXPECT_EQ(resposta, 0);
                // What a repetition under another code leaves cannot be compared.
                if (resposta == 0 && !ensaio.outroCodigo(passo))
                    ensaio.conferirSucessor(passo, true);
            }
        }
    }
    log.conferir();
    std::cout << "[ falhas ] chamadas recusadas " << falhas << '\n';
}

// A file system without locks: the till works, and whoever reads the log knows.
TEST(SemTravas, funciona_e_o_log_diz) {
    constexpr std::size_t kVenda = 6;
    const Ensaio ensaio(roteiros().front());
    const int ultima = ensaio.chamadas(kVenda, false);
    const Ambiente destino("ZEL_LOG", (ensaio.diretorio() + "log").c_str());
    int avisos = 0;
    for (int n = 1; n <= ultima; ++n) {
        const int resposta = ensaio.sob(kVenda, {.ato = Ato::kErro, .em = n, .erro = ENOLCK});
        disco::Fotografia arquivos = disco::fotografar(ensaio.diretorio());
        const std::string escrito = arquivos["log"];
        // A call that is no lock may be refused, and then the log has that.
        if (!contem(escrito, " não tem travas: dois")) continue;
        ++avisos;
        EXPECT_EQ(resposta, 0) << escrito;
    }
    EXPECT_GT(avisos, 0);
}

INSTANTIATE_TEST_SUITE_P(Roteiros, Recusa, testing::ValuesIn(roteiros()),
                         [](const auto &caso) { return std::string(caso.param.nome); });

} // namespace
