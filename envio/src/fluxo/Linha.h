// SPDX-License-Identifier: MIT
// The way to an authority as all tills of a process have found it: up, or down since when and until
// when nobody tries; and how many messages a minute it allows. Several threads may use it.
#pragma once

#include "fila/Fila.h"

#include <map>
#include <mutex>
#include <string>

namespace zel::envio {

class Linha {
public:
    // `porMinuto`: messages that it allows; 0: any number.
    explicit Linha(int porMinuto = 0) : porMinuto_(porMinuto) {}

    struct Situacao {
        int falhas = 0; // in a row; 0: up, or not tried yet
        Momento desde = 0, proxima = 0;
        std::string motivo;
    };

    // `qual`: state's code and environment, "43/2".
    Situacao situacao(const std::string &qual) const;
    void respondeu(const std::string &qual, Momento agora);
    // Later tries are further apart, up to two minutes.
    void falhou(const std::string &qual, Momento agora, const std::string &motivo);

    // Whether nothing was heard of it for so long that somebody may ask how it is: an hour, and
    // five minutes while it is down. Who is told so asks now.
    bool calada(const std::string &qual, Momento agora);

    // It answers, and does not want to be asked how it is before `quando`: what is sent shows it.
    void naoPerguntar(const std::string &qual, Momento quando);
    bool podePerguntar(const std::string &qual, Momento agora) const;

    // Takes a turn: 0, or when the next one is free.
    Momento vez(Momento agora);

private:
    mutable std::mutex porta_;
    std::map<std::string, Situacao> situacoes_;
    std::map<std::string, Momento> ouvidas_;
    std::map<std::string, Momento> semPerguntas_; // until when
    int porMinuto_;
    Momento livre_ = 0; // when the next turn is due
};

// The last failure as a queue keeps it for other processes.
std::string falhaEscrita(Momento quando, const std::string &motivo);
// The situation that it tells of; none when it is no failure of just now.
Linha::Situacao falhaLida(const std::string &texto, Momento agora);

// The pause after that many failures in a row (1, 2...), milliseconds.
Momento pausaDepoisDe(int falhas);

} // namespace zel::envio
