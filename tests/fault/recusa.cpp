// A call that fails: the operation answers a negative code and has changed nothing, or it has done
// its work whole; either way the next call works, and so does the next process.
#include "fault/Ensaio.h"

#include <gtest/gtest.h>

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

// Where every further call fails, what waits is left for the next call: to take its place when the
// step was done, to be dropped when it was refused.
void darLugar(Retrato &retrato, bool feito) {
    constexpr std::string_view kEspera = ".tmp", kRegistros = "ArqPersist";
    for (auto arquivo = retrato.arquivos.begin(); arquivo != retrato.arquivos.end();) {
        const auto &[nome, bytes] = *arquivo;
        if (!nome.ends_with(kEspera)) {
            ++arquivo;
            continue;
        }
        const std::string destino = nome.substr(0, nome.size() - kEspera.size());
        if (feito) retrato.arquivos[destino == kRegistros ? destino + ".bin" : destino] = bytes;
        arquivo = retrato.arquivos.erase(arquivo);
    }
}

// What a refused step left waiting is judged by the next process if this one goes no further.
void julgarEspera(const Ensaio &ensaio, std::size_t passo) {
    const disco::Fotografia deixado = disco::fotografar(ensaio.diretorio());
    const bool espera = std::any_of(deixado.begin(), deixado.end(), [](const auto &arquivo) {
        return arquivo.first.ends_with(".tmp");
    });
    if (!espera) return;
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
        Retrato logo = achado();
        if (plano.ato == Ato::kErroSempre) darLugar(logo, codigo > 0);
        if (codigo > 0) {
            recusarSe("done", diferenca(logo, ensaio.retrato(passo + 1)));
        } else {
            recusarSe("refused", ensaio.foraDoLugar(passo, logo));
            julgarEspera(ensaio, passo);
            EXPECT_GT(ensaio.fazer(passo, processo.funcoes()), 0) << "repeated";
            recusarSe("repeated", ensaio.diferencaNoFim(passo, achado()));
        }
        return falhas.codigo();
    });
}

TEST_P(Recusa, nada_muda_ou_tudo_esta_feito) {
    const Ensaio ensaio(GetParam());
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
    std::cout << "[ falhas ] chamadas recusadas " << falhas << '\n';
}

// A file system without locks: the till works, and whoever reads the log knows.
TEST(SemTravas, funciona_e_o_log_diz) {
    constexpr std::size_t kVenda = 6;
    const Ensaio ensaio(roteiros().front());
    const std::string log = ensaio.diretorio() + "log";
    int avisos = 0;
    for (int n = 1; n <= ensaio.chamadas(kVenda, false); ++n) {
        ensaio.preparar(kVenda);
        const int resposta = disco::emOutroProcesso([&] {
            setenv("ZEL_LOG", log.c_str(), 1);
            const Processo processo(ensaio.diretorio());
            const disco::Vigia vigia({.ato = Ato::kErro, .em = n, .erro = ENOLCK});
            return ensaio.fazer(kVenda, processo.funcoes()) > 0 ? 0 : 1;
        });
        const disco::Fotografia arquivos = disco::fotografar(ensaio.diretorio());
        const auto escrito = arquivos.find("log");
        if (escrito == arquivos.end()) continue;
        ++avisos;
        EXPECT_NE(escrito->second.find(" travas"), std::string::npos) << escrito->second;
        EXPECT_EQ(resposta, 0);
    }
    EXPECT_GT(avisos, 0);
}

INSTANTIATE_TEST_SUITE_P(Roteiros, Recusa, testing::ValuesIn(roteiros()),
                         [](const auto &caso) { return std::string(caso.param.nome); });

} // namespace
