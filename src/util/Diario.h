// SPDX-License-Identifier: MIT
// The journal: one file of the data directory, written in order with one flush a record. What a
// call changes in all files is in one record; once that is on the disk the call is done, and the
// files themselves need no flush: whatever a power cut tears in them is put right from here. Knows
// where records stand and which one is the last; what they mean for the files is Gravacao's.
//
//   journal = {record} stamps of the last one (a sector)
//
// The records of one epoch follow each other by their sequence numbers; where that breaks off, or a
// checksum does not fit, the journal ends. Emptied, it begins again at its first byte, in another
// epoch. A record written later never touches a block of an earlier one. It takes the place of the
// stamps, which it has itself, so that a flush has no other block to write.
#pragma once

#include "util/Descritor.h"
#include "util/RegistroDiario.h"

#include <string>
#include <vector>

namespace zel {

class Diario {
public:
    // Opens the journal of the data directory, if there is one.
    Leitura abrir();
    // The same, and makes one of zeros where there is none, flushed. False without it.
    bool abrirOuCriar();
    void fechar() { arquivo_.fechar(); }

    // Whether somebody else than this user, or root, owns it: what he has it say is his to say
    // about his own files only.
    bool alheio() const { return alheio_; }

    // What stands in it.
    struct Conteudo {
        std::string bytes;                                  // the records' views are into these
        std::vector<RegistroDiario> registros;              // those that belong here
        std::optional<std::vector<CarimboDiario>> carimbos; // of the last one, where known
        bool faltamUltimos = false; // records are damaged that others had followed
    };
    // Reads it; the next record will follow the last one read.
    Leitura ler(Conteudo &conteudo);

    // Whether the journal ends where this process knows it to: not when another process wrote to it
    // since, or when it is no longer the file of its name.
    bool emDia();

    // Whether the next record, of so many bytes, has room, and its stamps after it.
    bool cabe(std::size_t tamanho) const { return fim_ + tamanho + kSetor <= tamanho_; }
    bool passouDaMetade() const { return fim_ > tamanho_ / 2; }
    bool vazio() const { return fim_ == 0; }

    // The record of the changes that would come next.
    RegistroDiario preparar(std::vector<MudancaDiario> mudancas) const;
    // Appends its bytes and flushes them; false without it. Where the disk refuses the flush and
    // the way back as well, the record stands and counts as done.
    bool acrescentar(const std::string &registro);

    // Notes, without a flush, how the files stand that the last record changed. False where that
    // could not be written, which the next reader does without.
    bool carimbar(std::vector<CarimboDiario> carimbos);

    // Begins anew, with room for a record of `tamanho` bytes. The files that it speaks of must be
    // flushed before. False with the old records where they were.
    bool esvaziar(std::size_t tamanho = 0);

private:
    bool criar(const std::string &caminho);
    bool ocupar(std::size_t tamanho);
    bool haMaisQue(std::string_view bytes) const;
    void percorrer(std::string_view bytes, std::vector<RegistroDiario> &registros);
    bool segue(const RegistroDiario &registro) const;

    Descritor arquivo_;
    bool alheio_ = false;
    std::size_t tamanho_ = 0;
    std::size_t fim_ = 0;                 // of the last record
    RegistroDiario ultimo_;               // without its changes; sequence 0 for none
    std::vector<CarimboDiario> carimbos_; // of the last record
    std::string setor_; // the one at the end, as this process wrote or read it last
};

} // namespace zel
