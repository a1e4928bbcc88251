// SPDX-License-Identifier: MIT
// The queue: every document of every till with its state, in one SQLite file (fila.db, WAL) of a
// directory of its own that its owner alone opens. A change is on the disk when the call that makes
// it returns. One object may be used by one thread at a time; several objects, in several
// processes, may be open on the same file.
#pragma once

#include "base/Decimal.h"
#include "base/Recusa.h"
#include "documento/Leitura.h"
#include "fila/Estado.h"
#include "mensagem/Resposta.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zel::envio {

// Milliseconds since 1970, as the system's clock has them. What waits for a moment that lies
// further ahead than any pause was promised by a clock that was set back since: it is due at once.
using Momento = std::int64_t;
inline constexpr Momento kMaiorPausa = 65 * 60 * 1000; // of `proximo`: an hour and a bit

constexpr bool cedoDemais(Momento proximo, Momento agora, Momento maiorPausa = kMaiorPausa) {
    return proximo > agora && proximo - agora <= maiorPausa;
}

// What is said of a document when it is found.
struct Achado {
    std::string caixa;  // the till's directory, absolute
    std::string origem; // name of the file that it was found in
    Tipo tipo = Tipo::kNenhum;
    std::string
        original; // bytes of that file; the same ones of the same till are the same document
    // As far as the file says it; of an inutilization serie, numero and ultimo alone.
    std::string chave, cnpj;
    int modelo = 65, serie = 0;
    std::int64_t numero = 0, ultimo = 0; // of an inutilization the last number, else the same
    int tpAmb = 0, tpEmis = 0;           // tpAmb 1 or 2, as the authority has it
    std::string dhEmi; // "AAAA-MM-DDThh:mm:ss-03:00"; of a request when it was made
    Centavos total = 0;
    std::string consumidor, nomeConsumidor; // CPF, CNPJ or other id; UTF-8
    std::string substitui;                  // key of the document that it replaces
    std::optional<Centavos> troco;          // what the till knew of it when it was found
    // What tells a consultation from the next one with the same bytes; is not read back.
    std::string vez{};
};

// A row of the queue without its bytes.
struct Ficha : Achado { // `original` is empty here
    std::int64_t id = 0;
    Estado estado = Estado::kAchado;
    int cStat = 0;
    std::string xMotivo, protocolo, momentoResposta, recibo;
    Desfecho desfecho = Desfecho::kNenhum;
    std::string motivo; // what a person has to know: refusals, one a line
    int tentativas = 0; // sendings and askings since the last answer
    Momento achado = 0, mudado = 0;
    Momento proximo = 0; // not to be touched before
};

// What a change writes beside the state; what is not set stays.
struct Mudanca {
    // The signed bytes: written once, and never again; empty takes those back that the authority
    // refused for the certificate that signed them.
    std::optional<std::string> mensagem{};
    std::optional<std::string> chave{}, dhEmi{};
    std::optional<Resposta> resposta{};
    std::optional<std::string> motivo{}, recibo{};
    std::optional<int> tentativas{};
    std::optional<Momento> proximo{};
};

struct PassoDado {
    Momento momento;
    Estado de, para;
    std::string detalhe;
};

// What documents are looked for; an empty or zero member asks for nothing.
struct Procura {
    std::string caixa{}, chave{}, dia{} /* "AAAA-MM-DD" of dhEmi */, mes{} /* "AAAA-MM" */;
    std::string consumidor{};
    std::int64_t numero = 0;
    std::vector<Estado> estados{};
    // Refused, and nothing has taken its place since; or not at its end, and found before
    // `atrasadoAntesDe`.
    bool precisaDeAlguem = false;
    Momento atrasadoAntesDe = 0;
    // An NFC-e that was taken back before this moment, and whose number nothing has: sold, and
    // without a document.
    Momento retiradoAntesDe = 0;
    std::size_t maximo = 1000;
};

struct ServicoVisto {
    std::string servico, cUF; // name of the service; state's code
    int tpAmb = 0, cStat = 0, http = 0;
    std::string xMotivo;
    Momento momento = 0;
    std::int64_t demora = 0; // milliseconds
};

// Numbers that stand between used ones of a series without being used themselves. A number is used
// by a document or an inutilization that is on its way or delivered, and by one that the authority
// refused because the number is gone (denied, there with another key, inutilized). One that was
// refused, or replaced under another number, is not; of one that its till took back and did not
// issue again a person decides first.
struct Lacuna {
    std::string cnpj;
    int tpAmb = 0, serie = 0;
    std::int64_t primeiro = 0, ultimo = 0;
};

struct Contagem {
    Estado estado;
    std::int64_t quantos = 0;
    Momento maisAntigo = 0;
};

class Fila {
public:
    // Makes directory (0700) and file where there is none, and raises an older file's form to this
    // one's. `diretorio` with its "/".
    static std::unique_ptr<Fila> abrir(const std::string &diretorio, Recusas &recusas);
    ~Fila();

    // Its id; that of the row that is there already when the same bytes of the same till are found
    // again, which learns what it replaces if it did not know. None when it could not be written.
    std::optional<std::int64_t> achar(const Achado &achado, Momento agora, Recusas &recusas);

    // From one state to another; false when it is in another one by now (somebody else was faster),
    // the table does not have the change, or it cannot be written (`recusas`). The answer's codes
    // become the row's. Several steps on one day that nobody sees may be made in one transaction.
    bool mudar(std::int64_t id, Estado de, Estado para, const Mudanca &mudanca, Momento agora,
               Recusas &recusas);
    // The same state, other members: the next try and why. No step.
    bool adiar(std::int64_t id, Estado em, const Mudanca &mudanca, Momento agora, Recusas &recusas);

    // What is learned late: false when it is known already, or cannot be written (`recusas`).
    bool dizerSubstituida(std::int64_t id, std::string_view chave, Recusas &recusas);
    // What waits, and says why in a text with that beginning, is due at once.
    void adiantar(std::string_view inicioDoMotivo);

    // Transactions around several calls; nested ones are part of the outer one. Undone unless
    // confirmed, an inner one by itself.
    class Transacao {
    public:
        explicit Transacao(Fila &fila);
        ~Transacao();
        // False when it could not begin or was lost: no call within writes anything then.
        bool aberta() const { return aberta_; }
        bool confirmar(Recusas &recusas);
        Transacao(const Transacao &) = delete;
        Transacao &operator=(const Transacao &) = delete;

    private:
        Fila &fila_;
        bool aberta_ = false;
    };

    std::optional<Ficha> ficha(std::int64_t id);
    // Of several, the delivered one, else one on its way, else the last one found.
    std::optional<Ficha> porChave(std::string_view chave, Tipo tipo);
    // The NFC-e of a number, in any till of the issuer.
    std::vector<Ficha> porNumero(std::string_view cnpj, int tpAmb, int serie, std::int64_t numero);
    // The NFC-e of an inutilization's range that is delivered, or else one on its way.
    std::optional<Ficha> notaNaFaixa(const Ficha &inutilizacao);
    // The NFC-e that says that it replaces this one; of several, as of a key.
    std::optional<Ficha> substituta(std::string_view chave);
    std::string original(std::int64_t id);
    std::string mensagem(std::int64_t id);
    std::string elemento(std::int64_t id); // protNFe, retEvento, retInutNFe of its answer
    std::string evento(std::int64_t id);   // procEventoNFe that a consultation brought along
    std::vector<PassoDado> passos(std::int64_t id);

    // What is due: first by its next moment, then as it was found; requests about a document after
    // it. Rows of one till.
    std::vector<Ficha> prontas(const std::string &caixa, Momento agora, std::size_t maximo);
    // When the next one of a till is due; none when nothing waits.
    std::optional<Momento> proximo(const std::string &caixa, Momento agora);

    std::vector<Ficha> procurar(const Procura &procura); // the last one found first
    std::vector<Contagem> contar();                      // every state
    std::vector<Lacuna> lacunas();

    void verServico(const ServicoVisto &visto);
    std::vector<ServicoVisto> servicos();

    // Texts that outlive the process, by name: what stops the queue, since when a line is down...
    void anotar(std::string_view nome, std::string_view texto);
    std::string anotado(std::string_view nome);

    // Why a call that takes no `recusas` could not read or write, since this was last asked; empty
    // when all could.
    std::string falha();

private:
    struct Dentro;
    explicit Fila(std::unique_ptr<Dentro> dentro);
    std::unique_ptr<Dentro> dentro_;
};

} // namespace zel::envio
