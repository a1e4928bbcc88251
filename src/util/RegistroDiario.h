// SPDX-License-Identifier: MIT
// One record of the journal as bytes: which files a call changed, and how. All numbers are
// little-endian. Knows neither files nor what they hold.
//
//   record     = head payload zeros         up to a multiple of 4096 bytes
//   head       = "ZEL1" crc32:4 size:4 place:4 epoch:8 sequence:8 moment:8 inode:8
//   payload    = count:1 {stamp} count:1 {change}
//   stamp      = length:1 name inode:8 size:8 changed:8 written:8
//   change     = length:1 name form:1 mode:1 at:8 removed:8 size:8 bytes
//
// crc32 is taken over all that follows it, to the end of the payload, whose length is `size`.
// `epoch` is the moment at which the journal last began anew, `sequence` counts from 1 since then.
// `place` is the checksum of the data directory's path, `inode` the journal's own: a journal that
// was copied elsewhere has neither. `mode` is 1 for a private file, plus 2 where a link is
// followed. `moment`, `changed` (ctime) and `written` (mtime) are nanoseconds since 1970.
//
// A name is that of an entry of the data directory: a record with another one is not read, for a
// checksum is no proof of who wrote it.
#pragma once

#include "util/Arquivo.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zel {

inline constexpr std::size_t kSetor = 512; // what every disk writes whole or not at all
// What a record begins and ends at: the sector of a disk of today, the page of a file system. A
// write that a power cut tears takes no earlier record with it.
inline constexpr std::size_t kBloco = 4096;

enum class FormaMudanca : std::uint8_t {
    kTrecho,      // `retirados` bytes at `lugar` become `bytes`
    kInteira,     // the file holds `bytes`, whatever it held
    kInteiraNova, // the same, of a file that did not exist
};

struct MudancaDiario {
    std::string_view nome; // in the data directory, at most 255 bytes
    FormaMudanca forma = FormaMudanca::kInteira;
    Acesso acesso = Acesso::kPrivado;
    Ligacao ligacao = Ligacao::kNaoSeguida;
    std::uint64_t lugar = 0;
    std::uint64_t retirados = 0;
    std::string_view bytes;
};

// How a file stood after a change: whoever writes it later leaves another one.
struct CarimboDiario {
    std::string nome;
    Identidade identidade;
};

// Where a journal belongs.
struct LugarDiario {
    std::uint32_t caminho = 0; // checksum of the path
    std::uint64_t no = 0;
};

struct RegistroDiario {
    std::int64_t epoca = 0;
    std::uint64_t sequencia = 0;
    std::int64_t momento = 0;
    LugarDiario lugar;
    std::vector<CarimboDiario> carimbos; // of what the record before changed
    std::vector<MudancaDiario> mudancas; // views into the bytes read
};

// The record's bytes, a multiple of kBloco, and how many they are.
std::string escreverRegistroDiario(const RegistroDiario &registro);
std::size_t tamanhoRegistroDiario(const RegistroDiario &registro);

// The record at the start of `bytes`, and in `tamanho` the bytes that it takes. None when there is
// none whole.
std::optional<RegistroDiario> lerRegistroDiario(std::string_view bytes, std::size_t &tamanho);

// The stamps of a record alone, as one sector ("ZELC" crc32:4 epoch:8 sequence:8 count:1 {stamp}).
// None read when they did not fit or the sector is not that of the record.
std::string escreverCarimbos(const RegistroDiario &registro,
                             const std::vector<CarimboDiario> &carimbos);
std::optional<std::vector<CarimboDiario>> lerCarimbos(std::string_view setor,
                                                      const RegistroDiario &registro);

// Whether among the bytes after a record there is one of the same epoch that another one came
// before, or its stamps: what stood in between is damaged. One that follows directly is none that
// was reported as done, unless it has stamps.
bool haPosteriores(std::string_view depois, const RegistroDiario &registro);

} // namespace zel
