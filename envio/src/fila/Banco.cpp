// SPDX-License-Identifier: MIT
#include "fila/Banco.h"

#include <array>
#include <cerrno>
#include <sqlite3.h>
#include <utility>

namespace zel::envio {

namespace {

// Changes of others take milliseconds: who waits longer than this stands before one that hangs.
constexpr int kEspera = 3000;

constexpr std::string_view kCheio = "o disco está cheio: libere espaço; nada mudou na fila";
constexpr std::string_view kFechado =
    "não pode ser aberto para escrita: confira dono e permissões da pasta e dos arquivos";
constexpr std::string_view kDanificado =
    "está danificado ou não é uma fila, e não foi tocado: pare o serviço, guarde uma cópia da "
    "pasta "
    "inteira e recupere-o com sqlite3 fila.db .recover, ou aponte outra pasta";
constexpr std::string_view kOcupado =
    "outro programa segura a fila há mais de 3 segundos: tente de novo; se persistir, veja quem a "
    "tem aberta (fuser)";

struct Falha {
    int codigo;
    std::string_view motivo;
};

// By the primary code of SQLite.
constexpr std::array<Falha, 11> kFalhas{{
    {SQLITE_FULL, kCheio},
    {SQLITE_BUSY, kOcupado},
    {SQLITE_LOCKED, kOcupado},
    {SQLITE_READONLY, kFechado},
    {SQLITE_CANTOPEN, kFechado},
    {SQLITE_PERM, kFechado},
    {SQLITE_AUTH, kFechado},
    {SQLITE_CORRUPT, kDanificado},
    {SQLITE_NOTADB, kDanificado},
    {SQLITE_NOMEM, "faltou memória"},
    {SQLITE_TOOBIG, "um texto é maior do que a fila aceita"},
}};

// As SQLite wants them: not null where there is no text, only where there is nothing.
const char *inicio(std::string_view texto) {
    return texto.data() == nullptr ? "" : texto.data();
}

} // namespace

void Fechar::operator()(sqlite3 *banco) const {
    sqlite3_close_v2(banco);
}

void Fechar::operator()(sqlite3_stmt *comando) const {
    sqlite3_finalize(comando);
}

// ---- Banco ----

Banco::Banco(const std::string &arquivo) : arquivo_(arquivo) {
    sqlite3 *banco = nullptr;
    const int codigo = sqlite3_open_v2(
        arquivo.c_str(), &banco,
        SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE, nullptr);
    banco_.reset(banco);
    if (codigo != SQLITE_OK) {
        motivo_ = motivoDe(codigo, errno);
        banco_.reset();
        return;
    }
    sqlite3_busy_timeout(banco, kEspera);
    sqlite3_db_config(banco, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_db_config(banco, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
}

std::string Banco::motivoDe(int codigo, int errno_) const {
    const int primario = codigo & 0xFF;
    // What the queue's own rules refuse says so itself.
    if (codigo == SQLITE_CONSTRAINT_TRIGGER) return sqlite3_errmsg(banco_.get());
    if (primario == SQLITE_IOERR && (errno_ == EFBIG || errno_ == EDQUOT || errno_ == ENOSPC))
        return std::string(kCheio);
    for (const Falha &falha : kFalhas)
        if (falha.codigo == primario) return std::string(falha.motivo);
    const std::string detalhe = banco_ ? sqlite3_errmsg(banco_.get()) : sqlite3_errstr(codigo);
    return (primario == SQLITE_IOERR ? "o disco recusou a leitura ou a escrita: "
                                     : "a fila recusou: ") +
           detalhe;
}

bool Banco::falhar() {
    motivo_ = motivoDe(sqlite3_extended_errcode(banco_.get()), sqlite3_system_errno(banco_.get()));
    return false;
}

bool Banco::executar(const char *sql) {
    return sqlite3_exec(banco_.get(), sql, nullptr, nullptr, nullptr) == SQLITE_OK || falhar();
}

bool Banco::emTransacao() const {
    return sqlite3_get_autocommit(banco_.get()) == 0;
}

std::int64_t Banco::ultimoId() const {
    return sqlite3_last_insert_rowid(banco_.get());
}

std::int64_t Banco::mudados() const {
    return sqlite3_changes64(banco_.get());
}

// ---- Comando ----

Comando::Comando(Banco &banco, std::string_view sql) : banco_(banco), sql_(sql) {
    if (auto no = banco.prontos_.extract(sql_)) {
        comando_ = std::move(no.mapped());
        return;
    }
    sqlite3_stmt *comando = nullptr;
    if (sqlite3_prepare_v3(banco.banco_.get(), sql_.c_str(), -1, SQLITE_PREPARE_PERSISTENT,
                           &comando, nullptr) != SQLITE_OK)
        falhou_ = !banco.falhar();
    comando_.reset(comando);
}

Comando::~Comando() {
    if (comando_ == nullptr) return;
    sqlite3_reset(comando_.get());
    sqlite3_clear_bindings(comando_.get());
    banco_.prontos_.insert_or_assign(std::move(sql_), std::move(comando_));
}

Comando &Comando::dar(const Valor &valor) {
    ++lugar_;
    if (falhou_) return *this;
    int codigo = SQLITE_OK;
    if (const auto *numero = std::get_if<std::int64_t>(&valor))
        codigo = sqlite3_bind_int64(comando_.get(), lugar_, *numero);
    else if (const auto *texto = std::get_if<std::string_view>(&valor))
        codigo = sqlite3_bind_text64(comando_.get(), lugar_, inicio(*texto), texto->size(),
                                     SQLITE_STATIC, SQLITE_UTF8);
    if (codigo != SQLITE_OK) falhou_ = !banco_.falhar();
    return *this;
}

Comando &Comando::darBytes(std::string_view bytes) {
    ++lugar_;
    if (!falhou_ && sqlite3_bind_blob64(comando_.get(), lugar_, inicio(bytes), bytes.size(),
                                        SQLITE_STATIC) != SQLITE_OK)
        falhou_ = !banco_.falhar();
    return *this;
}

bool Comando::linha() {
    if (falhou_) return false;
    coluna_ = 0;
    const int codigo = sqlite3_step(comando_.get());
    if (codigo != SQLITE_ROW && codigo != SQLITE_DONE) falhou_ = !banco_.falhar();
    return codigo == SQLITE_ROW;
}

bool Comando::fazer() {
    while (linha()) {
    }
    return !falhou_;
}

bool Comando::nulo() const {
    return sqlite3_column_type(comando_.get(), coluna_) == SQLITE_NULL;
}

std::int64_t Comando::numero() {
    return sqlite3_column_int64(comando_.get(), coluna_++);
}

std::string Comando::texto() {
    const void *bytes = sqlite3_column_blob(comando_.get(), coluna_);
    const int tamanho = sqlite3_column_bytes(comando_.get(), coluna_++);
    return bytes == nullptr
               ? std::string()
               : std::string(static_cast<const char *>(bytes), static_cast<std::size_t>(tamanho));
}

} // namespace zel::envio
