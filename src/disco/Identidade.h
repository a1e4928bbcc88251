// SPDX-License-Identifier: MIT
// Which file stands under a name and in which state, so that a change by somebody else is seen
// without reading it. Knows nothing of what files hold.
#pragma once

#include "comum/Descritor.h"

#include <cstdint>
#include <optional>
#include <string>
#include <sys/stat.h>

namespace zel {

using comum::Descritor;
using comum::insistir;

// What becomes of a symbolic link in the place of a file. Not followed, it cannot be read, and a
// new file takes its place: whoever may write in the directory must not be able to send a host with
// more rights elsewhere.
enum class Ligacao { kNaoSeguida, kSeguida };

enum class Leitura { kLido, kInexistente, kFalha };

// Nanoseconds since 1970.
std::int64_t agora();

// Whether the last call failed because there is no such file (errno).
bool naoExiste();

// Which file stands under a name, and in which state: whoever writes to it or puts another one in
// its place leaves another identity, but for changes within one tick of the system's clock.
struct Identidade {
    std::uint64_t no = 0; // inode
    std::uint64_t tamanho = 0;
    std::int64_t mudanca = 0; // of the file or its inode (ctime), nanoseconds since 1970
    std::int64_t escrita = 0; // of its bytes (mtime)
    friend bool operator==(const Identidade &, const Identidade &) = default;
};

Identidade identidadeDe(const struct stat &dados);

// Reads the identity of a regular file. kFalha also for what is no regular file.
Leitura identificar(const std::string &caminho, Ligacao ligacao, Identidade &identidade);
// The same of an open one. False also when it has no name any more, or is not the file that was
// noted for it. An identity that is as before
// says that it has kept its name as well: to rename a file changes it, too.
bool identificar(const Descritor &arquivo, Identidade &identidade);

// Whether the file's last change lies so far back that every later one gives it another identity,
// whatever the file system's clock ticks in.
bool assentada(const Identidade &identidade);

// Gives a file that was just written a nanosecond of its own as its time of writing, or a second of
// before where the file system keeps whole ones, which no other writer leaves: their changes show,
// even those within the same tick. What `ver` sees then in `identidade` tells whether that was
// done; it is not where the file is somebody else's. False when `ver` is.
void darEscrita(const Descritor &arquivo, std::int64_t momento);
std::int64_t escritaInteira(std::int64_t momento);
template <class Ver>
bool marcarEscrita(const Descritor &arquivo, std::int64_t momento, Identidade &identidade,
                   Ver ver) {
    for (const std::int64_t escrita : {momento, escritaInteira(momento)}) {
        darEscrita(arquivo, escrita);
        if (!ver(identidade)) return false;
        if (identidade.escrita == escrita) break;
    }
    return true;
}
// Whether a time of writing is the one given for that moment, and whether it is one that the system
// does not give.
inline bool ehEscritaDe(std::int64_t escrita, std::int64_t momento) {
    return escrita == momento || escrita == escritaInteira(momento);
}
inline bool temMarca(const Identidade &identidade) {
    return identidade.escrita != identidade.mudanca;
}

// Whether the file systems that gives inodes other numbers at each mount, as FAT does, has that
// directory.
bool temNosPassageiros(const std::string &diretorio);

// The inode under a name, links followed; none when that cannot be known.
std::optional<std::uint64_t> noDe(const std::string &caminho);

// The identity of a directory, whose path ends in "/": another one after each change of names.
Identidade identificarDiretorio(const std::string &caminho);

} // namespace zel
