// SPDX-License-Identifier: MIT
// One record of the journal as bytes: which files a call changed, and how. All numbers are
// little-endian. Knows neither files nor what they hold.
//
//   record     = head payload zeros         up to a multiple of 4096 bytes
//   head       = "ZEL4" crc32:4 epoch:8 sequence:8 moment:8 inode:8 place:4 size:4 payloadCrc32:4
//                followed:8
//   payload    = count:1 {change}
//   change     = length:1 name form:1 mode:1 at:8 old:8 size:8 bytes
//
// `crc32` is taken over what follows it in the head, `payloadCrc32` over the `size` bytes of the
// payload. `epoch` is the moment at which the journal last began anew, `sequence` counts from 1
// since then, `followed` is when the files had followed the record before. `place` is the checksum
// of the data directory's inode, `inode` the journal's own: one that was copied or moved here has
// others. Where inodes get other numbers at each mount it is the directory's path, and 0. `mode` is
// 1 for a private file, plus 2 where a link is followed, plus 4 for one that is written where it
// stands. Moments are nanoseconds since 1970.
//
// After the last record stands a head alone, with "ZELF" and when the files had followed that one:
// the next record takes its place and has that, too.
//
// A file that is written in its place has one change for each piece of it, with its inode as `old`,
// after one of what it held where the records before have none of it. A name is that of an entry of
// the data directory: a record with another one is not read, for a checksum is no proof of who
// wrote it.
#pragma once

#include "disco/Arquivo.h"

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
    kTrecho,      // `antes` bytes at `lugar` become `bytes`; in its place, those of inode `antes`
    kInteira,     // holds `bytes`; what was found had been written at `lugar`, changed at `antes`
    kInteiraNova, // the same, of a file that did not exist
    kLevada,      // somebody took the file away
};

struct MudancaDiario {
    std::string_view nome{}; // in the data directory, at most 255 bytes
    FormaMudanca forma = FormaMudanca::kInteira;
    Acesso acesso = Acesso::kPrivado;
    Ligacao ligacao = Ligacao::kNaoSeguida;
    std::uint64_t lugar = 0;
    std::uint64_t antes = 0;
    std::string_view bytes{};
    bool noLugar = false; // of a file that is written where it stands
};

// Where a journal belongs.
struct LugarDiario {
    std::uint32_t diretorio = 0; // checksum of what names it
    std::uint64_t no = 0;
    friend bool operator==(const LugarDiario &, const LugarDiario &) = default;
};

struct RegistroDiario {
    std::int64_t epoca = 0;
    std::uint64_t sequencia = 0; // 0: of a journal that has none yet
    std::int64_t momento = 0;
    LugarDiario lugar;
    std::int64_t seguido = 0; // when the files had followed the record before; of an end: its last
    std::vector<MudancaDiario> mudancas; // views into the bytes read
};

constexpr std::size_t emMultiplosDe(std::size_t parte, std::size_t tamanho) {
    return (tamanho + parte - 1) / parte * parte;
}

// The checksum of heads and payloads, and of the name of a place: CRC-32 as in ISO 3309.
std::uint32_t somaCrc32(std::string_view bytes);

// The record's bytes, to be written, and how many they are: within its first block none of the
// zeros that stand there, otherwise whole blocks, so that the system need not read what it
// overwrites.
std::string escreverRegistroDiario(const RegistroDiario &registro);
std::size_t tamanhoRegistroDiario(const RegistroDiario &registro);

// The record at the start of `bytes`, and in `tamanho` the bytes that it takes. None when there is
// none whole.
std::optional<RegistroDiario> lerRegistroDiario(std::string_view bytes, std::size_t &tamanho);

// The head that stands after a record: a block.
std::string escreverFim(const RegistroDiario &registro);

// The head at the start of `bytes`, of a record or of the end.
struct CabecaDiario {
    bool deRegistro = false;
    RegistroDiario registro{}; // without its changes
    std::uint32_t tamanho = 0, soma = 0;
};
std::optional<CabecaDiario> lerCabecaDiario(std::string_view bytes);

// Whether among the bytes after a record there is one of the same epoch that another one came
// before, or its end: what stood in between is damaged. One that follows directly counts only with
// its end: without that it may be one that was never reported as done.
bool haPosteriores(std::string_view depois, const RegistroDiario &registro);

} // namespace zel
