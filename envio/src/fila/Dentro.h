// SPDX-License-Identifier: MIT
// What a queue holds while it is open: the file, and how deep in transactions it stands.
#pragma once

#include "fila/Banco.h"
#include "fila/Fila.h"

#include <memory>
#include <mutex>
#include <string>
#include <utility>

namespace zel::envio {

struct Fila::Dentro {
    explicit Dentro(std::unique_ptr<Banco> b) : dono(std::move(b)), banco(*dono) {}

    // A level of transactions more, and whether writing makes sense in it: SQLite takes a whole
    // transaction back when the disk is full, and what is written after that would stand alone.
    bool comecar();
    bool confirmar();
    void terminar(bool desfazer);

    // False, with a refusal about the file.
    bool recusar(Recusas &recusas);
    // Remembers why what has no `recusas` failed.
    void anotarFalha() { falha = banco.motivo(); }

    // Each row, read by `ler`; what fails is noted, and what was read before it is given.
    template <class Ler>
    auto linhas(Comando &comando, Ler ler) {
        std::vector<decltype(ler(comando))> achadas;
        while (comando.linha())
            achadas.push_back(ler(comando));
        if (comando.falhou()) anotarFalha();
        return achadas;
    }
    // The one column of the one row; empty when there is none.
    std::string bytes(std::string_view sql, const Valor &valor);

    std::unique_ptr<Banco> dono;
    Banco &banco;
    std::string falha;

private:
    // Writers of one process take turns here: SQLite's own way is to sleep and try again. Others of
    // other processes are waited for its way.
    std::unique_lock<std::timed_mutex> vez_;
    int nivel_ = 0;
    bool perdida_ = false;
};

// The numbers of the enumerations are the file's.
static_assert(static_cast<int>(Tipo::kNfce) == 1 && static_cast<int>(Tipo::kCancelamento) == 2 &&
              static_cast<int>(Tipo::kInutilizacao) == 3 && static_cast<int>(Tipo::kConsulta) == 4);
static_assert(static_cast<int>(Desfecho::kAutorizado) == 1 &&
              static_cast<int>(Desfecho::kOutraChave) == 6 &&
              static_cast<int>(Desfecho::kDenegado) == 9 &&
              static_cast<int>(Desfecho::kCertificado) == 14 &&
              static_cast<int>(Desfecho::kRecusado) == 15);

inline std::string_view nomeDoEstado(Estado estado) {
    return kEstados.at(static_cast<std::size_t>(estado)).nome;
}
inline Estado estadoDe(std::string_view nome) {
    const auto *linha = std::find_if(kEstados.begin(), kEstados.end(),
                                     [&](const NomeEstado &e) { return e.nome == nome; });
    return linha == kEstados.end() ? Estado::kRecusado : linha->estado;
}

} // namespace zel::envio
