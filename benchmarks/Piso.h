// SPDX-License-Identifier: MIT
// The floor: what the disk alone costs. For each operation of a receipt that must be durable it
// writes the bytes which that operation changed, with one flush, and does nothing else.
//
// Which bytes: the receipt is issued once through the library, and after each operation the till's
// files are compared with what they were. Of a file that only grew, the new tail counts (a sale:
// its record); of one that kept its length, what differs (the digit of the state); of a file that
// changed otherwise, the whole new content counts, for it can only be replaced whole. An operation
// that changed nothing has no flush. The floor then appends these bytes to one plain file that is
// opened once: per operation one write and one fdatasync. No name changes, no directory is flushed,
// nothing is read: a library that survives a crash at every moment cannot do as little.
#pragma once

#include "apoio/PastaTemporaria.h"

#include <filesystem>
#include <string>
#include <vector>

// The bytes of each durable operation of a receipt, in order, as the library leaves them in a till
// below `base`.
std::vector<std::string> gravacoesDoCupom(const std::filesystem::path &base, int itens);

// A file that is open while this lives; made where `modo` says so.
class Aberto {
public:
    Aberto(const std::string &caminho, int modo);
    ~Aberto();
    Aberto(const Aberto &) = delete;
    Aberto &operator=(const Aberto &) = delete;

    int fd() const { return fd_; }

private:
    int fd_;
};

// The plain file.
class Piso {
public:
    explicit Piso(const std::filesystem::path &base);

    void gravar(const std::vector<std::string> &gravacoes) const;

private:
    PastaTemporaria pasta_;
    Aberto arquivo_;
};

// The system calls of one sale after the first, bare, and what each of them is for: the turn is
// taken and given back; lock file and journal are still those of their names, and the journal ends
// where it ended; configuration and document are as they were left; a block goes to the journal and
// is flushed, the record to the document, a block of stamps to the journal. Files in a directory of
// its own.
class ChamadasDeVenda {
public:
    // The document holds `documento` before the sales.
    ChamadasDeVenda(const std::filesystem::path &base, const std::string &configuracao,
                    const std::string &documento);

    void vender(const std::string &registro);

private:
    PastaTemporaria pasta_;
    std::string configuracao_, nomeDaTrava_;
    Aberto trava_, diario_, aberto_;
    std::size_t tamanho_; // of the document
    std::size_t fim_ = 0; // of the journal
};
