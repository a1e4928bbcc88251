// What a power cut may leave of a directory: bytes that were not flushed are lost or torn, changes
// of names that were not flushed happened or did not, each for itself. Knows files by their names
// in one directory, and calls by what Vigia recorded.
#pragma once

#include "disco/Vigia.h"

#include <map>
#include <memory>
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

    // Broken rules, in words: a file that took a live one's place before its bytes were flushed, or
    // was written over where a cut may leave half of it.
    const std::vector<std::string> &violacoes() const { return violacoes_; }

    // Names whose bytes or place are not flushed yet; of a removal that is not flushed nothing is
    // told, since the name will be met again and removed again.
    std::vector<std::string> pendencias() const;

private:
    struct Arquivo {
        std::string durante; // as the process sees it
        std::string gravado; // as flushed
        bool sujo() const { return durante != gravado; }
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
    static void refazer(Nomes &nomes, const Mudanca &mudanca);
    void escrever(Arquivo &arquivo, const Evento &evento);
    void conferirTroca(const Mudanca &mudanca);

    std::string diretorio_;
    Nomes nomes_;
    Nomes gravados_;
    std::vector<Mudanca> mudancas_; // not flushed
    std::map<int, No> abertos_;     // null for the directory itself
    std::vector<std::string> violacoes_;
};

} // namespace disco
