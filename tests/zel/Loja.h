// SPDX-License-Identifier: MIT
// A shop in a temporary directory, looked after by the built program zel. To begin with its
// configuration is that of a shop in production about which nothing is to be said. Owns the
// directory and removes it.
#pragma once

#include "apoio/PastaTemporaria.h"

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

class Funcoes;

struct Resultado {
    int codigo; // exit code; -1 when the program did not end by itself
    std::string saida;
    std::string erros;
};

// Runs the program with these arguments and environment variables (on top of a locale of UTF-8 and
// nothing of the library's), as a user who has no more rights than the files give.
Resultado rodar(const std::vector<std::string> &argumentos,
                const std::map<std::string, std::string> &ambiente = {},
                std::string_view entrada = {});

// Findings of a JSON report, in its order: "erro cnpj-digito".
std::vector<std::string> achados(std::string_view json);

class Loja {
public:
    using Valores = std::vector<std::pair<std::string_view, std::string_view>>;

    Loja();

    std::string diretorio() const { return pasta_ / ""; }

    // Writes values (ISO-8859-1) into the text of the configuration file.
    void configurar(const Valores &valores) const;

    std::string ler(std::string_view nome) const;
    void escrever(std::string_view nome, std::string_view conteudo) const;
    // Replaces the first `de` of a file, which must be there.
    void trocar(std::string_view nome, std::string_view de, std::string_view para) const;

    Resultado conferir() const { return rodar({"conferir", "--json", diretorio()}); }

    // A till of this shop in a process of its own; it dies at the end of `passos`.
    void noCaixa(const std::function<void(const Funcoes &)> &passos) const;
    // The same, still open while `meio` runs.
    void comCaixaAberto(const std::function<void(const Funcoes &)> &passos,
                        const std::function<void()> &meio) const;

    // A sale of two items up to a receipt state, 1 to 5.
    static void vender(const Funcoes &caixa, int estado);

private:
    PastaTemporaria pasta_;
};
