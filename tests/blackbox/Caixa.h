// SPDX-License-Identifier: MIT
// A till in a temporary directory: the shared object is copied there and loaded, so that its files
// stand beside the copy and no test sees another's. Owns the directory and removes it. Functions
// are called by their own names: caixa->aCFVender_ZEL(...).
#pragma once

#include "apoio/Biblioteca.h"
#include "apoio/PastaTemporaria.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

// Every one has a log, for them all unless a test sets another: a refusal without a reason fails
// the test in which its till ends.
class Caixa {
public:
    // Loads the library from a fresh, empty directory.
    Caixa();
    // A second process over the files of another till: a copy of the library of its own.
    explicit Caixa(const Caixa &daMesmaLoja);
    ~Caixa();
    Caixa &operator=(const Caixa &) = delete;

    const Funcoes *operator->() const { return &funcoes(); }
    const Funcoes &funcoes() const { return biblioteca_->funcoes(); }
    operator const Funcoes &() const { return funcoes(); }

    // What a new process finds: the library unloaded and loaded anew over the same files. The
    // application gets no chance to say goodbye.
    void reiniciar();

    // The same, with whatever the application does to the files in between.
    void parar();
    void iniciar();

    // Where the library keeps its files; ends in "/".
    std::string diretorio() const { return *pasta_ / ""; }

    // Bytes of a file of the till; a missing file fails the test and reads as empty.
    std::string lerArquivo(std::string_view nome) const;
    bool existe(std::string_view nome) const;
    void escreverArquivo(std::string_view nome, std::string_view conteudo) const;

    // A configuration value by path, as the running library reports it; an unknown path fails the
    // test.
    std::string config(const char *chave) const;
    // Stores one; a refusal fails the test.
    void config(const char *chave, const char *valor) const;

    // The extended information of an index, asked with a buffer of exactly the documented size.
    std::string info(const char *indice) const;

private:
    std::shared_ptr<const PastaTemporaria> pasta_;
    std::unique_ptr<Biblioteca> biblioteca_;
};

// A document in the form of the golden files: one element a line, and what the clock decides
// (dhEmi, dhCont, the key, cDV) replaced by fixed text. Line ends within the document fail the
// test.
std::string mascarar(std::string_view documento);

// The text between the first start and end tag of an element; empty when there is none.
std::string elemento(std::string_view documento, std::string_view nome);
