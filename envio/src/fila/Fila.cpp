// SPDX-License-Identifier: MIT
// What changes the queue. What asks it is in Procura.cpp.
#include "fila/Fila.h"

#include "fila/Dentro.h"
#include "fila/Forma.h"

#include <chrono>
#include <mutex>
#include <openssl/evp.h>

namespace zel::envio {

namespace {

// Longer than a slow disk makes a line of writers wait; who stands in its own way goes on then.
constexpr std::chrono::seconds kEsperaDaVez{10};

std::optional<std::string> sha256(std::string_view bytes) {
    std::string resumo(32, '\0');
    std::size_t tamanho = 0;
    if (EVP_Q_digest(nullptr, "SHA256", nullptr, bytes.data(), bytes.size(),
                     reinterpret_cast<unsigned char *>(resumo.data()), &tamanho) != 1)
        return {};
    return resumo;
}

struct Coluna {
    const char *nome;
    Valor valor;
};

// The members that a change sets, as columns of `documento`. Views of what it holds.
std::vector<Coluna> colunasDe(const Mudanca &mudanca) {
    std::vector<Coluna> colunas;
    const auto texto = [&](const char *nome, const std::optional<std::string> &valor) {
        if (valor) colunas.push_back({nome, std::string_view(*valor)});
    };
    const auto numero = [&](const char *nome, const auto &valor) {
        if (valor) colunas.push_back({nome, std::int64_t{*valor}});
    };
    texto("chave", mudanca.chave);
    texto("dhEmi", mudanca.dhEmi);
    texto("motivo", mudanca.motivo);
    texto("recibo", mudanca.recibo);
    numero("tentativas", mudanca.tentativas);
    if (!mudanca.resposta) return colunas;
    const Resposta &r = *mudanca.resposta;
    colunas.push_back({"cStat", std::int64_t{r.cStat}});
    colunas.push_back({"xMotivo", std::string_view(r.xMotivo)});
    colunas.push_back({"desfecho", static_cast<std::int64_t>(r.desfecho)});
    // An answer that lacks one of these does not take an older one's away.
    if (!r.protocolo.empty()) colunas.push_back({"protocolo", std::string_view(r.protocolo)});
    if (!r.momento.empty()) colunas.push_back({"momentoResposta", std::string_view(r.momento)});
    if (!r.recibo.empty() && !mudanca.recibo)
        colunas.push_back({"recibo", std::string_view(r.recibo)});
    return colunas;
}

bool atualizarConteudo(Banco &banco, std::int64_t id, const Mudanca &mudanca) {
    const auto por = [&](const char *sql, const std::string &bytes) {
        return Comando(banco, sql).darBytes(bytes).dar(id).fazer();
    };
    const Resposta *r = mudanca.resposta ? &*mudanca.resposta : nullptr;
    return (!mudanca.mensagem ||
            por("UPDATE conteudo SET mensagem = nullif(?, x'') WHERE id = ?", *mudanca.mensagem)) &&
           (r == nullptr || r->elemento.empty() ||
            por("UPDATE conteudo SET elemento = ? WHERE id = ?", r->elemento)) &&
           (r == nullptr || r->evento.empty() ||
            por("UPDATE conteudo SET evento = ? WHERE id = ?", r->evento));
}

std::string detalheDe(const Mudanca &mudanca) {
    if (mudanca.resposta)
        return std::to_string(mudanca.resposta->cStat) + ' ' + mudanca.resposta->xMotivo;
    return mudanca.motivo.value_or("");
}

struct Passo {
    std::int64_t id;
    Estado de, para;
    Momento agora;
};

// False without a failure when the row is in another state by now.
bool aplicar(Banco &banco, const Passo &passo, const Mudanca &mudanca, bool &falhou) {
    std::vector<Coluna> colunas = colunasDe(mudanca);
    const std::string_view de = nomeDoEstado(passo.de), para = nomeDoEstado(passo.para);
    if (passo.de != passo.para) colunas.push_back({"estado", para});
    if (acabou(passo.para))
        colunas.push_back({"proximo", Valor()});
    else if (mudanca.proximo || acabou(passo.de))
        colunas.push_back({"proximo", mudanca.proximo.value_or(0)});
    std::string sql = "UPDATE documento SET mudado = ?";
    for (const Coluna &coluna : colunas)
        sql += std::string(", ") + coluna.nome + " = ?";
    Comando comando(banco, sql + " WHERE id = ? AND estado = ?");
    comando.dar(passo.agora);
    for (const Coluna &coluna : colunas)
        comando.dar(coluna.valor);
    falhou = !comando.dar(passo.id).dar(de).fazer();
    if (falhou || banco.mudados() != 1) return false;
    const std::string detalhe = detalheDe(mudanca);
    falhou = !atualizarConteudo(banco, passo.id, mudanca) ||
             (passo.de != passo.para &&
              !Comando(banco, "INSERT INTO passo (documento, momento, de, para, detalhe) "
                              "VALUES (?, ?, ?, ?, ?)")
                   .dar(passo.id)
                   .dar(passo.agora)
                   .dar(de)
                   .dar(para)
                   .dar(detalhe)
                   .fazer());
    return !falhou;
}

std::optional<std::int64_t> idDe(Banco &banco, const std::string &caixa,
                                 const std::string &identidade) {
    Comando procura(banco, "SELECT id FROM documento WHERE identidade = ? AND caixa = ?");
    if (!procura.darBytes(identidade).dar(caixa).linha()) return {};
    return procura.numero();
}

bool inserir(Banco &banco, const Achado &achado, const std::string &identidade, Momento agora) {
    Comando documento(
        banco, "INSERT INTO documento (identidade, caixa, origem, tipo, chave, cnpj, modelo, "
               "serie, numero, ultimo, tpAmb, tpEmis, dhEmi, total, consumidor, "
               "nomeConsumidor, substitui, troco, estado, achado, mudado) VALUES "
               "(?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)");
    documento.darBytes(identidade).dar(achado.caixa).dar(achado.origem);
    documento.dar(static_cast<int>(achado.tipo)).dar(achado.chave).dar(achado.cnpj);
    documento.dar(achado.modelo).dar(achado.serie).dar(achado.numero);
    documento.dar(std::max(achado.numero, achado.ultimo)).dar(achado.tpAmb).dar(achado.tpEmis);
    documento.dar(achado.dhEmi).dar(achado.total).dar(achado.consumidor);
    documento.dar(achado.nomeConsumidor).dar(achado.substitui);
    documento.dar(achado.troco ? Valor(*achado.troco) : Valor());
    if (!documento.dar(nomeDoEstado(Estado::kAchado)).dar(agora).dar(agora).fazer()) return false;
    return Comando(banco, "INSERT INTO conteudo (id, original) VALUES (?, ?)")
        .dar(banco.ultimoId())
        .darBytes(achado.original)
        .fazer();
}

} // namespace

// ---- Transactions ----

bool Fila::Dentro::comecar() {
    if (nivel_++ == 0) {
        static std::timed_mutex escritores;
        vez_ = std::unique_lock(escritores, kEsperaDaVez);
        perdida_ = !banco.executar("BEGIN IMMEDIATE");
    } else if (!perdida_)
        perdida_ = !banco.emTransacao() || !banco.executar("SAVEPOINT dentro");
    return !perdida_;
}

bool Fila::Dentro::confirmar() {
    perdida_ = perdida_ || !banco.emTransacao();
    return !perdida_ && banco.executar(nivel_ == 1 ? "COMMIT" : "RELEASE dentro");
}

void Fila::Dentro::terminar(bool desfazer) {
    // What was lost within has taken the whole back already, or does so when the outermost ends.
    if (desfazer && banco.emTransacao()) {
        const std::string motivo = banco.motivo();
        if (!banco.executar(nivel_ == 1 ? "ROLLBACK" : "ROLLBACK TO dentro; RELEASE dentro"))
            perdida_ = true;
        banco.motivo() = motivo;
    }
    if (--nivel_ > 0) return;
    perdida_ = false;
    if (vez_) vez_.unlock();
}

bool Fila::Dentro::recusar(Recusas &recusas) {
    return recusas.juntar("fila", banco.arquivo(), banco.motivo());
}

Fila::Transacao::Transacao(Fila &fila) : fila_(fila), aberta_(fila.dentro_->comecar()) {}

Fila::Transacao::~Transacao() {
    fila_.dentro_->terminar(aberta_);
}

bool Fila::Transacao::confirmar(Recusas &recusas) {
    if (!aberta_ || !fila_.dentro_->confirmar()) return fila_.dentro_->recusar(recusas);
    aberta_ = false;
    return true;
}

// ---- The queue ----

Fila::Fila(std::unique_ptr<Dentro> dentro) : dentro_(std::move(dentro)) {}
Fila::~Fila() = default;

std::unique_ptr<Fila> Fila::abrir(const std::string &diretorio, Recusas &recusas) {
    auto banco = abrirBanco(diretorio, recusas);
    if (banco == nullptr) return nullptr;
    return std::unique_ptr<Fila>(new Fila(std::make_unique<Dentro>(std::move(banco))));
}

std::optional<std::int64_t> Fila::achar(const Achado &achado, Momento agora, Recusas &recusas) {
    Banco &banco = dentro_->banco;
    const auto identidade = sha256(achado.original + achado.vez);
    if (!identidade) {
        recusas.juntar("fila", achado.origem, "faltou memória");
        return {};
    }
    // The net beneath finds the same files again and again: without a transaction.
    if (const auto id = idDe(banco, achado.caixa, *identidade)) {
        if (!achado.substitui.empty() && achado.tipo == Tipo::kNfce)
            dizerSubstituida(*id, achado.substitui, recusas);
        return id;
    }
    Transacao transacao(*this);
    if (transacao.aberta()) {
        if (const auto id = idDe(banco, achado.caixa, *identidade)) return id;
        if (inserir(banco, achado, *identidade, agora)) {
            const auto id = idDe(banco, achado.caixa, *identidade);
            return transacao.confirmar(recusas) ? id : std::nullopt;
        }
    }
    dentro_->recusar(recusas);
    return {};
}

bool Fila::mudar(std::int64_t id, Estado de, Estado para, const Mudanca &mudanca, Momento agora,
                 Recusas &recusas) {
    if (!passa(de, para))
        return recusas.juntar(
            "fila", std::string(nomeDoEstado(de)) + " > " + std::string(nomeDoEstado(para)),
            "defeito deste programa: esta mudança de estado não existe");
    Transacao transacao(*this);
    bool falhou = !transacao.aberta();
    if (!falhou && aplicar(dentro_->banco, {id, de, para, agora}, mudanca, falhou))
        return transacao.confirmar(recusas);
    return falhou && dentro_->recusar(recusas);
}

bool Fila::adiar(std::int64_t id, Estado em, const Mudanca &mudanca, Momento agora,
                 Recusas &recusas) {
    Transacao transacao(*this);
    bool falhou = !transacao.aberta();
    if (!falhou && aplicar(dentro_->banco, {id, em, em, agora}, mudanca, falhou))
        return transacao.confirmar(recusas);
    return falhou && dentro_->recusar(recusas);
}

bool Fila::dizerSubstituida(std::int64_t id, std::string_view chave, Recusas &recusas) {
    if (!Comando(dentro_->banco, "UPDATE documento SET substitui = ? WHERE id = ? AND tipo = 1 "
                                 "AND substitui = ''")
             .dar(chave)
             .dar(id)
             .fazer())
        return dentro_->recusar(recusas);
    return dentro_->banco.mudados() == 1;
}

void Fila::adiantar(std::string_view inicioDoMotivo) {
    if (!Comando(dentro_->banco, "UPDATE documento SET proximo = 0 WHERE proximo IS NOT NULL "
                                 "AND estado <> 'enviado' AND substr(motivo, 1, length(?1)) = ?1")
             .dar(inicioDoMotivo)
             .fazer())
        dentro_->anotarFalha();
}

// What the next answer would say again is not worth waiting for the disk.
void Fila::verServico(const ServicoVisto &visto) {
    Banco &banco = dentro_->banco;
    banco.executar("PRAGMA synchronous = NORMAL");
    {
        Recusas recusas;
        Transacao transacao(*this);
        if (!transacao.aberta() ||
            !Comando(banco, "INSERT OR REPLACE INTO servico (servico, cUF, tpAmb, cStat, http, "
                            "xMotivo, momento, demora) VALUES (?, ?, ?, ?, ?, ?, ?, ?)")
                 .dar(visto.servico)
                 .dar(visto.cUF)
                 .dar(visto.tpAmb)
                 .dar(visto.cStat)
                 .dar(visto.http)
                 .dar(visto.xMotivo)
                 .dar(visto.momento)
                 .dar(visto.demora)
                 .fazer() ||
            !transacao.confirmar(recusas))
            dentro_->anotarFalha();
    }
    banco.executar("PRAGMA synchronous = FULL");
}

void Fila::anotar(std::string_view nome, std::string_view texto) {
    if (!Comando(dentro_->banco, "INSERT OR REPLACE INTO anotacao (nome, texto) VALUES (?, ?)")
             .dar(nome)
             .dar(texto)
             .fazer())
        dentro_->anotarFalha();
}

std::string Fila::falha() {
    return std::exchange(dentro_->falha, {});
}

} // namespace zel::envio
