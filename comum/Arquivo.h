// SPDX-License-Identifier: MIT
// Files without more: a file is read whole, or written whole or not at all.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <sys/types.h>

namespace zel::comum {

// True for a regular file, or a link to one: anything else (a pipe, a device) might never end.
bool ehArquivo(const std::string &caminho);

// What a regular file of up to `maior` bytes holds; none when there is no such file.
std::optional<std::string> lerArquivo(const std::string &caminho, std::size_t maior);

// Writes `conteudo` beside the file, flushes it, puts it in the file's place and flushes the
// directory. The file must be a regular one, a link, which is replaced itself, or not exist. False,
// with errno, when it is as it was.
bool substituirArquivo(const std::string &caminho, std::string_view conteudo);

// Flushes a file that is written, puts it in the place of another beside it and flushes the
// directory. False, with errno, when the other is as it was; the new one is gone then.
bool tomarLugar(const std::string &novo, const std::string &caminho);

// What substituirArquivo does, for a file of that mode that nothing may be in the place of: EEXIST
// when something is.
bool criarArquivo(const std::string &caminho, std::string_view conteudo, mode_t modo);

// The directory, and those above it that are missing, each flushed into the one above it. True when
// it was there; its mode is not looked at then.
bool criarDiretorios(const std::string &caminho, mode_t modo);

} // namespace zel::comum
