// SPDX-License-Identifier: MIT
// The way of a document through its states: what is done in each, what an answer leads to, what the
// till is told. Every change is in the queue before the network is touched and after it answered;
// whoever dies in between leaves a row from which anybody goes on.
#pragma once

#include "config/Configuracao.h"
#include "fila/Fila.h"
#include "fluxo/Linha.h"
#include "fluxo/Oficina.h"
#include "fluxo/Ouvinte.h"
#include "fluxo/Relogio.h"
#include "guarda/Guarda.h"
#include "rede/Transporte.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace zel::envio {

// What a process works with; queue and network are a thread's own, the others shared.
struct Meios {
    const Configuracao &config;
    Oficina &oficina;
    Linha &linha;
    const Relogio &relogio;
    Fila &fila;
    Transporte &rede;
    Ouvinte *ouvinte = nullptr; // or nobody
};

class Fluxo {
public:
    explicit Fluxo(const Meios &meios);

    // Takes one document as far as it goes now: to its end, or to where it has to wait. Each
    // request to the authority ends within `limite`.
    void tratar(std::int64_t id, Milissegundos limite);
    // Takes an NFC-e as far as its signed bytes, and touches no network.
    void assinar(std::int64_t id);
    // The documents of a till that are due; how many changes that made in the queue.
    int tratarProntas(const std::string &caixa, Milissegundos limite, std::size_t maximo);

    // Whoever uses this has just begun, and somebody stands there: what other processes found the
    // line to be holds, until a short question shows that it is back. All requests end by `ate`.
    void comAlguemEsperando(std::chrono::steady_clock::time_point ate) {
        alguemEspera_ = true;
        ate_ = ate;
    }
    // A document that was taken back goes its way again, unless another has its place: then what
    // its till has to know.
    std::optional<std::string> reenviar(std::int64_t id);
    // Takes back what has not gone out: false when it may be there.
    bool retirar(std::int64_t id, const std::string &motivo);
    // Asks how the service is: whether it answers that it works.
    bool perguntarServico(std::string_view cUF, int tpAmb, Milissegundos limite);
    // Asks so by itself where this till's documents go, when nothing was heard of it for long:
    // before the first sale of a day, and while it is down.
    void sondar(const std::string &caixa, Milissegundos limite);
    // What the queue could not write since this was last asked.
    Recusas queixas();

private:
    // A document that is being asked for after it, another's answer is awaited that long at a time.
    static constexpr Momento kEsperaDoOutro = 2 * kSegundo;

    // Whether to go on with the next state at once.
    bool passo(const Ficha &ficha);
    bool preparar(const Ficha &ficha);
    bool naoFeito(const Ficha &ficha, const Feito &feito);
    // Whose a document is: the certificate's company's; that of the sales that its till delivered
    // before, so that the certificate is the wrong one; or another's.
    enum class Titular { kNosso, kTrocado, kAlheio };
    Titular titularDe(const Ficha &ficha);
    bool retomar(const Ficha &ficha, const NotaGuardada &guardada);
    bool assinada(const Ficha &ficha, const Mudanca &mudanca, Recusas &recusas);
    bool enviar(const Ficha &ficha);
    bool perguntar(const Ficha &ficha);
    bool entregar(const Ficha &ficha);

    bool semLugar(const Ficha &ficha);
    bool faixaOcupada(const Ficha &ficha);
    std::optional<ContextoPedido> contextoDe(const Ficha &ficha, bool &esperar);
    bool protocoloDe(const Ficha &ficha, ContextoPedido &contexto, bool &esperar);
    bool protocoloPerguntado(const Ficha &ficha, ContextoPedido &contexto, bool &esperar);
    bool jaCancelada(const Ficha &ficha, const Resposta &consulta);
    bool recusar(const Ficha &ficha, const std::string &motivo);
    bool linhaLivre(const Ficha &ficha);
    Milissegundos tempo() const; // that a request may take
    Retorno pedir(Servico servico, const Ficha &ficha, std::string mensagem);
    Linha::Situacao situacaoDa(const std::string &qual);
    void linhaFalhou(const std::string &qual, const std::string &motivo);
    void linhaRespondeu(const std::string &qual);
    bool responder(const Ficha &ficha, Resposta resposta);
    bool semResposta(const Ficha &ficha, const Retorno &retorno);
    bool naoEnviado(const Ficha &ficha, const Retorno &retorno);
    bool voltar(const Ficha &ficha, Momento quando, const std::string &motivo);
    bool perguntarDepois(const Ficha &ficha, Momento pausa, const std::string &motivo);
    bool certificadoRecusado(const Ficha &ficha, const Resposta &resposta);
    bool respondido(const Ficha &ficha, const Resposta &resposta);
    bool mesmoConteudo(const Ficha &ficha, const Resposta &resposta);
    bool perguntado(const Ficha &ficha, const Resposta &resposta);
    bool perguntadaNota(const Ficha &ficha, const Resposta &resposta);
    bool nossoEvento(const Ficha &ficha, const Resposta &resposta);
    bool naoConsta(const Ficha &ficha);
    std::optional<std::string> outraDoNumero(const Ficha &ficha);
    std::optional<std::string> outraDaFila(const Ficha &ficha, const Ficha &outra);
    std::optional<std::string> outraAlheia(const Ficha &ficha, const std::string &chave);
    bool parar(const Ficha &ficha, const std::string &motivo);
    bool soDaqui() const;
    bool deixar(const Ficha &ficha, const std::string &motivo);
    bool parada(const Ficha &ficha);
    bool mudar(const Ficha &ficha, Estado para, const Mudanca &mudanca);
    bool anotar(const Ficha &ficha, const Mudanca &mudanca);
    bool adiar(const Ficha &ficha, Momento quando, const std::string &motivo);
    bool adiarMais(const Ficha &ficha, Momento pausa, const std::string &motivo);

    Meios meios_;
    Guarda guarda_;
    Milissegundos limite_{};
    bool alguemEspera_ = false;
    std::chrono::steady_clock::time_point ate_ = std::chrono::steady_clock::time_point::max();
    int mudancas_ = 0;
    Recusas descartadas_; // of what is tried again anyway
};

} // namespace zel::envio
