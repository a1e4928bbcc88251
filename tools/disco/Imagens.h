// SPDX-License-Identifier: MIT
// What a power cut may leave of a directory: bytes that were not flushed are lost or torn, changes
// of names that were not flushed happened or did not, each for itself. Knows files by their names
// in one directory, and calls by what Vigia recorded.
#pragma once

#include "disco/Vigia.h"

#include <map>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace disco {

// The files of a directory: name and bytes.
using Fotografia = std::map<std::string, std::string>;

class Imagens {
public:
    // The directory's path, ended by "/", and what stands there durably.
    Imagens(std::string diretorio, const Fotografia &antes);

    // Takes one recorded call into account.
    void aplicar(const Evento &evento);

    // What may be found after a power cut now.
    std::set<Fotografia> possiveis() const;

    // So many of them by lot, where too much is open for all: each change of a name and each sector
    // of each file for itself. With what had been flushed alone, and with everything, at the front.
    std::vector<Fotografia> sorteadas(int quantas, std::mt19937 &sorte) const;

    // What of the journal is not flushed, in words: everything else is put right from it.
    std::vector<std::string> pendencias() const;

private:
    struct Arquivo {
        std::string durante; // as the process sees it
        std::string gravado; // as flushed
        std::string rasgado() const;
        std::string sorteado(std::mt19937 &sorte) const;
    };
    using No = std::shared_ptr<Arquivo>;
    using Nomes = std::map<std::string, No>;
    // A change of names, for replay over what was flushed.
    struct Mudanca {
        Chamada chamada;
        std::string nome;
        std::string outro;
        No no; // kAbrir
    };

    std::string nome(const std::string &caminho) const;
    void mudarNomes(Mudanca mudanca);
    template <class Conteudo>
    static Fotografia revelada(const Nomes &nomes, Conteudo conteudo);
    static void refazer(Nomes &nomes, const Mudanca &mudanca);
    void abrir(const Evento &evento);
    void escrever(Arquivo &arquivo, const Evento &evento);
    void descarregar(const No &no);

    std::string diretorio_;
    Nomes nomes_;
    Nomes gravados_;
    std::vector<Mudanca> mudancas_; // not flushed
    std::map<int, No> abertos_;     // null for the directory itself
};

} // namespace disco
