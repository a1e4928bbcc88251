// SPDX-License-Identifier: MIT
// The journal: one file of the data directory, written in order with one flush a record. What a
// call changes in all files is in one record; once that is on the disk the call is done, and the
// files themselves need no flush: whatever a power cut tears in them is put right from here. Knows
// where records stand and which one is the last; what they mean for the files is Gravacao's.
//
//   journal = {record} end (RegistroDiario.h)
//
// The records of one epoch follow each other by their sequence numbers; where that breaks off, or a
// checksum does not fit, the journal ends. Emptied, it begins again at its first byte, in another
// epoch. A record written later never touches a block of an earlier one. It takes the place of the
// end, which its own head repeats.
#pragma once

#include "diario/RegistroDiario.h"
#include "disco/Identidade.h"

#include <string>
#include <vector>

namespace zel {

class Diario {
public:
    // Opens the journal of the data directory, and makes one of zeros where there is none, flushed.
    // False without it.
    bool abrirOuCriar();
    void fechar() { arquivo_.fechar(); }

    // Whether somebody else than this user, or root, owns it: what he has it say is his to say
    // about his own files only.
    bool alheio() const { return alheio_; }

    // What stands in it.
    struct Conteudo {
        std::string bytes;                     // the records' views are into these
        std::vector<RegistroDiario> registros; // those that belong here
        std::int64_t seguido = 0; // when the files had followed the last one; 0 for not known
        bool terminado = false;   // it is known to be the last one
        bool danificado = false;  // see below
    };
    // Reads it; the next record will follow the last one read.
    Leitura ler(Conteudo &conteudo);

    bool aberto() const { return arquivo_.aberto(); }

    // Whether others had followed the last record read that are damaged, or it is no journal of
    // here: nothing may follow what it still has. What it has is kept beside before it goes.
    bool danificado() const { return danificado_; }
    bool guardarDanificado();

    // Whether the journal ends where this process knows it to: not when another process wrote to it
    // or emptied it since, or when it was removed. Open or looked at, it has the turn extended to
    // it.
    bool emDia();
    // Whether it is still the file of its name.
    bool temSeuNome() const;

    // Whether the next record, of so many bytes, has room, and the end after it.
    bool cabe(std::size_t tamanho) const { return fim_ + ateOFim(tamanho) <= tamanho_; }
    bool passouDaMetade() const { return fim_ > tamanho_ / 2; }
    bool vazio() const { return fim_ == 0; }

    // The record of the changes that would come next.
    RegistroDiario preparar(std::vector<MudancaDiario> mudancas) const;
    // Appends its bytes and flushes them; false without it. Where the disk refuses the flush and
    // the way back as well, the record stands and counts as done; where nobody can know, the
    // journal is closed, to be read again.
    bool acrescentar(const std::string &registro);

    // Flushes what may stand in it without having been.
    bool descarregar();

    // Notes, without a flush, that the last record is the last, and when the files had followed it;
    // 0 where one has not. False where that could not be written, which the next reader does
    // without.
    bool encerrar(std::int64_t seguido);

    // Begins anew, flushed, with room for a record of `tamanho` bytes; a damaged one loses all that
    // it had. The files that it speaks of must be flushed before. False with the journal closed, or
    // as it was.
    bool esvaziar(std::size_t tamanho = 0);

private:
    static std::size_t ateOFim(std::size_t tamanho) {
        return emMultiplosDe(kBloco, tamanho) + kBloco;
    }
    Leitura abrir();
    bool criar(const std::string &caminho);
    bool ocupar(std::size_t tamanho);
    void percorrer(std::string_view bytes, std::vector<RegistroDiario> &registros);
    bool segue(const RegistroDiario &registro) const;
    bool terminaEm(const CabecaDiario &cabeca) const;
    void concluir(Conteudo &conteudo);
    bool recomecar();

    Descritor arquivo_;
    std::uint64_t no_ = 0;
    bool alheio_ = false;
    std::size_t tamanho_ = 0;
    std::size_t fim_ = 0;   // of the last record
    RegistroDiario ultimo_; // without its changes; sequence 0 for none
    bool danificado_ = false;
    bool terminado_ = false; // an end stands after the last record
    std::string setor_;      // the one at the end, as this process wrote or read it last
};

} // namespace zel
