// SPDX-License-Identifier: MIT
// A shop in a temporary directory, looked after by the built program zel. To begin with its
// configuration is that of a shop in production about which nothing is to be said. Owns the
// directory and removes it.
#pragma once

#include "apoio/PastaTemporaria.h"
#include "apoio/Trecho.h"

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

class Funcoes;

using Argumentos = std::vector<std::string>;
using Ambiente = std::map<std::string, std::string>;

struct Resultado {
    int codigo; // exit code; -1 when the program did not end by itself
    std::string saida;
    std::string erros;

    // Whether it ended with that code and wrote that, on either output.
    testing::AssertionResult deu(int esperado, std::string_view dito = {}) const;
    // Findings of a JSON report, in its order: "erro cnpj-digito, nota sem-assinatura".
    std::string achados() const;
};

// Runs the program with these arguments and environment variables (on top of a locale of UTF-8,
// Brazil's zone and nothing of the library's), as a user who has no more rights than the files
// give. `meio`, with its process, runs while the program does.
Resultado rodar(const Argumentos &argumentos, const Ambiente &ambiente = {},
                std::string_view entrada = {}, const std::function<void(pid_t)> &meio = {});

class Loja : public PastaTemporaria {
public:
    using Valores = std::vector<std::pair<std::string_view, std::string_view>>;

    Loja();

    std::string diretorio() const { return *this / ""; }

    // Writes values (ISO-8859-1) into the text of the configuration file.
    void configurar(const Valores &valores) const;

    // Replaces the first `de` of a file, which must be there.
    void trocar(std::string_view nome, std::string_view de, std::string_view para) const {
        gravar(nome, ::trocar(ler(nome), de, para));
    }

    Resultado conferir() const { return rodar({"conferir", "--json", diretorio()}); }

    // The command over this shop's directory.
    Resultado zel(Argumentos argumentos, const Ambiente &ambiente = {},
                  std::string_view entrada = {},
                  const std::function<void(pid_t)> &meio = {}) const {
        argumentos.insert(argumentos.begin() + 1, {"--diretorio", diretorio()});
        return rodar(argumentos, ambiente, entrada, meio);
    }

    // Names, rights, sizes and times of all that stands in the directory.
    std::string retrato() const;

    // A till of this shop in a process of its own; it dies at the end of `passos`.
    void noCaixa(const std::function<void(const Funcoes &)> &passos) const;
    // The same, still open while `meio` runs.
    void comCaixaAberto(const std::function<void(const Funcoes &)> &passos,
                        const std::function<void()> &meio) const;

    // A sale of two items up to a receipt state, 1 to 5.
    static void vender(const Funcoes &caixa, int estado);
};
