// SPDX-License-Identifier: MIT
// The file calls of the running program, as a program under test makes them: recorded, refused, cut
// short, or the last thing that it does. The program that links this room defines the C library's
// file functions itself, so every shared object that it loads calls these (link with
// ENABLE_EXPORTS). Outside the life of a Vigia they only pass on. For one thread.
#pragma once

#include <cstddef>
#include <ctime>
#include <optional>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <vector>

namespace disco {

enum class Chamada {
    kAbrir,
    kLer,
    kSituacao, // fstat, lstat, stat
    kEscrever,
    kDescarregar, // fsync, fdatasync
    kCortar,
    kRenomear,
    kTrocar, // renameat2 with RENAME_EXCHANGE
    kLigar,
    kRemover,
    kPermissao, // fchmod, fchown
    kFechar,
    kTravar, // fcntl with F_OFD_SETLK
};
inline constexpr std::size_t kChamadas = 13;

// Does it change what a later process finds?
bool muda(Chamada chamada);

struct Tempos {
    timespec mudanca{}, escrita{}; // ctime and mtime
};

// A call that succeeded.
struct Evento {
    Chamada chamada{};
    int fd = -1;
    bool cria = false;                  // kAbrir: made a file that was not there
    std::string caminho{};              // absolute; of a descriptor, what it was opened for
    std::string outro{};                // kRenomear, kTrocar, kLigar: the second one
    std::string bytes{};                // kEscrever
    std::optional<std::size_t> lugar{}; // kEscrever: where; none after the end
    std::size_t tamanho = 0;            // kCortar: the new size; kLer: bytes read
    Tempos tempos{};                    // kSituacao by path
};

// What happens to one call, counted from 1 among those that `soMudancas` leaves to count.
struct Plano {
    enum class Ato {
        kNada,
        kMorrer,       // before the call
        kSair,         // exit(3) before the call, as a signal handler may
        kMorrerNoMeio, // a write that gets half its bytes out; other calls pass
        kErro,         // answers -1 with `erro`; nothing is done
        kErroSempre,   // that, and each call after it
        kCurta,        // a write takes half its bytes; other calls pass
        kCurtaCheia,   // that, and the next write finds the disk full
    };
    Ato ato{};
    int em{};
    bool soMudancas{};
    int erro{};
};

// Exit status of a process that kMorrer ended.
inline constexpr int kMorto = 77;

// While it lives, the calls of this program are recorded and `plano` holds.
class Vigia {
public:
    explicit Vigia(Plano plano = {});
    ~Vigia();
    Vigia(const Vigia &) = delete;
    Vigia &operator=(const Vigia &) = delete;

    const std::vector<Evento> &eventos() const { return eventos_; }
    // Calls made so far, failed ones too, of those that `soMudancas` leaves to count.
    int contadas() const { return contadas_; }
    // False when the operation ended before call number `em`, or that was none to cut short.
    bool disparou() const { return disparou_; }

    // For the file functions. What becomes of the call that they are about to make:
    enum class Destino { kFazer, kRecusar, kMetade, kMetadeEMorrer };
    Destino julgar(Chamada chamada);
    void anotar(Evento evento) { eventos_.push_back(std::move(evento)); }

private:
    Plano plano_;
    int contadas_ = 0;
    bool disparou_ = false;
    bool cheio_ = false;
    std::vector<Evento> eventos_;
};

// The times of the files and the directory as they stand now, as long as nothing changes one: long
// ago, or those that the file of its name was last seen with (`ver`). A power cut may leave old
// bytes under either.
enum class Idade { kAntiga, kVista };
void envelhecer(const std::string &diretorio, Idade idade);
void ver(const Evento &evento); // any; those of kSituacao tell times
// The inode of a file that was made anew, as the one that came back; to the next `envelhecer`.
void contarNo(const std::string &caminho, ino_t no);

// The seconds that `time` answers from now on, so that two runs write the same bytes; 0 for the
// real ones.
void fixarRelogio(long segundos);

} // namespace disco
