// SPDX-License-Identifier: MIT
// A till's directory as the sending side sees it: the documents that it wrote, found by the history
// copies and the contingency files, and by documentosEnvio.xml itself where the till keeps no
// copies. Nothing in it is changed.
#pragma once

#include "base/Recusa.h"
#include "config/Configuracao.h"
#include "fila/Fila.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace zel::envio {

// What a till's file says of itself. None when it is no document that is sent.
std::optional<Achado> acharEm(std::string_view bytes, Recusas &recusas);

class Caixa {
public:
    explicit Caixa(const ConfigCaixa &config) : config_(config) {}

    const ConfigCaixa &config() const { return config_; }
    // Directories that are looked into, each with its "/".
    std::vector<std::string> pastas() const;

    // Puts what is new into the queue, the oldest first; how many there were. A file that is no
    // document, or cannot be read, is said once (`recusas`) and not looked at again before it
    // changes.
    int varrer(Fila &fila, Momento agora, Recusas &recusas);

    // What the till knows of its last document beside it, if the file may be read: the change.
    std::optional<Centavos> trocoDe(std::string_view chave) const;

private:
    struct Visto;
    void olharRecusados();
    bool mudou(const std::string &pasta, Momento agora);
    void olhar(Fila &fila, const std::string &pasta, const std::string &nome,
               std::vector<Visto> &novos);
    bool pegar(Fila &fila, const Visto &visto, Momento agora, Recusas &recusas);
    // `escrito`: when its file was, nanoseconds.
    void verSubstituicao(Fila &fila, Achado &achado, std::int64_t escrito) const;
    void anotarSubstituicao(Fila &fila, Momento agora, Recusas &recusas) const;

    ConfigCaixa config_;
    std::unordered_map<std::string, std::int64_t> pastas_;   // time of the last change
    std::unordered_map<std::string, std::string> vistos_;    // path and mark
    std::unordered_map<std::string, std::string> recusados_; // those of them that were no document
};

} // namespace zel::envio
