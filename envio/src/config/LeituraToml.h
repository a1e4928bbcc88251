// SPDX-License-Identifier: MIT
// Sections of a TOML text into records, after tables: a row says the key, the member that it fills
// and what it may hold. What is not in the table, or not as it says, is refused with its line.
#pragma once

#include "base/Decimal.h"
#include "base/Recusa.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <toml++/toml.h>
#include <variant>

namespace zel::envio {

// What a value may be; `permitido` is said when it is not.
struct Regra {
    bool (*serve)(std::string_view);
    std::string_view permitido;
};

// What stands beside a secret (its number, the file that it is in) is said by its key alone: the
// secret itself may have been written there.
enum class Especie { kTexto, kCaminho, kSegredo, kCaminhoDeSegredo };

template <class T>
struct Chave {
    std::string_view nome;
    std::variant<std::string T::*, Decimal T::*, std::optional<Decimal> T::*, int T::*> membro;
    Regra regra;
    Especie especie = Especie::kTexto;
};

class LeituraToml {
public:
    // `diretorio`: where relative paths begin, with its "/"; empty refuses them.
    LeituraToml(std::string_view diretorio, Recusas &recusas)
        : diretorio_(diretorio), recusas_(recusas) {}

    // None when the text is not TOML, or nests deeper than any configuration does.
    std::optional<toml::table> abrir(std::string_view texto);

    // `secao` as a message names it: `[qrcode]`, empty for the beginning of the file.
    template <class T>
    void ler(const toml::table &tabela, const std::string &secao, std::span<const Chave<T>> chaves,
             T &destino) {
        for (const auto &[chave, no] : tabela)
            lerChave(chave, no, secao, chaves, destino);
    }

    // One key of a section. `mais`: what else fits there, for who wrote one that does not.
    template <class T>
    void lerChave(const toml::key &chave, const toml::node &no, const std::string &secao,
                  std::span<const Chave<T>> chaves, T &destino, std::string_view mais = {}) {
        for (const auto &linha : chaves) {
            if (linha.nome != chave.str()) continue;
            const auto texto = valor(no, lugar(chave, secao), linha.regra, linha.especie);
            if (texto)
                std::visit([&](auto membro) { guardar(destino.*membro, *texto); }, linha.membro);
            return;
        }
        recusarChave(chave, secao, nomes(chaves).append(mais));
    }

    // A table below a key; null, and refused, when it is something else.
    const toml::table *secao(const toml::key &chave, const toml::node &no,
                             const std::string &acima);

    template <class T>
    static std::string nomes(std::span<const Chave<T>> chaves) {
        std::string lista;
        for (const auto &linha : chaves)
            (lista += lista.empty() ? "" : ", ") += linha.nome;
        return lista;
    }

    void recusarChave(const toml::key &chave, const std::string &secao,
                      const std::string &permitidas);

    // "zel-envio.toml, linha 7, [qrcode] versao".
    static std::string lugar(const toml::key &chave, const std::string &secao);
    static std::string lugar(const toml::node &no, const std::string &nome);

    Recusas &recusas() { return recusas_; }

private:
    std::optional<std::string> valor(const toml::node &no, const std::string &onde,
                                     const Regra &regra, Especie especie);
    static void guardar(std::string &membro, const std::string &texto) { membro = texto; }
    static void guardar(std::optional<Decimal> &membro, const std::string &texto) {
        membro = Decimal::ler(texto);
    }
    static void guardar(Decimal &membro, const std::string &texto) {
        membro = Decimal::ler(texto).value_or(Decimal());
    }
    static void guardar(int &membro, const std::string &texto);

    std::string_view diretorio_;
    Recusas &recusas_;
};

} // namespace zel::envio
