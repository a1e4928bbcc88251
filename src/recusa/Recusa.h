// SPDX-License-Identifier: MIT
// The way in which a call is refused: recusar() answers the code and, while there is a log, keeps
// the reason of the call under way with what was given. The last reason stands: what came before it
// was tried another way. The border (api/Chamada.h) asks for its text when the call has ended. With
// the log off a refusal costs one comparison; nothing is copied and no text is made.
#pragma once

#include "recusa/Motivo.h"

#include <optional>
#include <string>
#include <string_view>

namespace zel {

// What a reason's text asks for. Views need to hold until recusar() returns, no longer.
struct Detalhe {
    std::string_view campo{}; // name of the argument, element or key: decides on masking
    std::string_view dado{};  // as given
    std::string_view lugar{}; // element or file
    long long tamanho = -1;   // of `dado` in characters, where it is not its own
    int minimo = 0, maximo = 0;
    long long numero = 0;
    double quantia = 0, limite = 0;
    int estado = 0;
};

// The code of the reason, which is kept.
int recusar(Motivo motivo, const Detalhe &detalhe = {}) noexcept;

// Keeps the file that could not be read or written, with errno, which stays as it is; false, for
// the caller to answer. `semErro`: it is what it should not be, and the system knows no error.
bool falhouArquivo(std::string_view caminho) noexcept;
bool naoEhArquivo(std::string_view caminho) noexcept;

// The code of a refusal whose reason was kept where it was met.
constexpr int jaRecusado(Motivo motivo) {
    return linhaDo(motivo).codigo;
}

// The refusal of a file that was kept before.
inline int arquivoIndisponivel() noexcept {
    return recusar(Motivo::kArquivo);
}

// Keeps the file and refuses.
inline int arquivoIndisponivel(std::string_view caminho) noexcept {
    falhouArquivo(caminho);
    return arquivoIndisponivel();
}

// In the place of an error number: something that is no regular file, without an error.
inline constexpr int kNaoEhArquivo = -1;

// The system's error in words of our own, the same in every locale: "permissão negada (EACCES)",
// or "erro 71 do sistema" where there are no words. UTF-8.
std::string textoDoErro(int erro);

// Forgets the last call's reason. Reasons are kept from here on, or not.
void esquecerRecusa(bool anotar) noexcept;

// The reason that was kept for this code, in UTF-8 and on one line; none when it was not. The path
// of a file of the data directory is asked of `noDiretorio`.
using CaminhoNoDiretorio = std::string (*)(std::string_view nome);
std::optional<std::string> textoDaRecusa(int codigo, CaminhoNoDiretorio noDiretorio);

} // namespace zel
