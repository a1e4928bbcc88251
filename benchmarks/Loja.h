// SPDX-License-Identifier: MIT
// A till to measure: a directory on a given file system with its own copy of the shared object,
// loaded as an application does, and a shop that is configured. Owns the directory and removes it.
// Here too: the steps of a receipt as every program of this folder runs them.
#pragma once

#include "apoio/Biblioteca.h"
#include "apoio/PastaTemporaria.h"

#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

// Throws, naming the step, unless the library answered what was expected.
void exigir(int codigo, std::string_view passo, int esperado = ZEL_OK);

class Loja {
public:
    // A fresh directory below `base`, with its issuer configured. Without a library, that of this
    // build.
    explicit Loja(const std::filesystem::path &base, std::filesystem::path biblioteca = {});

    const Funcoes *operator->() const { return &biblioteca_->funcoes(); }

    // Ends in "/".
    std::string diretorio() const { return pasta_ / ""; }

    // Forgets the process and starts another over the same files: `copiar` puts a copy of the
    // library beside them, `carregar` loads it and looks its functions up.
    void descarregar();
    void copiar();
    void carregar();

    // Every file of the till by name, its copies of the library and its journal apart: what the
    // journal holds stands in the others too.
    std::map<std::string, std::string> arquivos() const;
    std::string ler(std::string_view nome) const;
    void escrever(std::string_view nome, std::string_view conteudo) const;
    std::string config(const char *chave) const;

    // The steps of a receipt. Items cycle through a small list of goods; every receipt names its
    // consumer, so that a large one can be closed.
    void abrir() const;
    void vender(int item) const;
    void vender(int primeiro, int ultimo) const;
    void totalizar() const;
    void pagar() const;
    void encerrar() const;
    // The authorizer's answer, written to "retorno.xml" beside a copy "nota.xml" of the document,
    // for an application does not print what the next request may replace.
    void autorizar() const;
    // Prints "nota.xml" in 48 columns into `saida`, of tamanhoDoCupom(items) bytes.
    int imprimir(std::vector<char> &saida) const;

private:
    PastaTemporaria pasta_;
    std::filesystem::path original_;
    std::filesystem::path copia_;
    int copias_ = 0;
    std::unique_ptr<Biblioteca> biblioteca_;
};

// The buffer that a receipt of so many items needs.
std::size_t tamanhoDoCupom(int itens);

// A document of the till with its protocol, in base64, as the PDF functions take it.
std::string documentoAutorizado(const Loja &loja);

// One whole receipt from opening to closing; `depois(n)` follows step number n, from 0.
template <class Depois>
void percorrerCupom(const Loja &loja, int itens, Depois depois) {
    int passo = 0;
    loja.abrir(), depois(passo++);
    for (int item = 1; item <= itens; ++item)
        loja.vender(item), depois(passo++);
    loja.totalizar(), depois(passo++);
    loja.pagar(), depois(passo++);
    loja.encerrar(), depois(passo++);
}

inline void emitirCupom(const Loja &loja, int itens) {
    percorrerCupom(loja, itens, [](int) {});
}
