// SPDX-License-Identifier: MIT
#include "fila/Forma.h"

#include "comum/Arquivo.h"
#include "comum/Descritor.h"

#include <array>
#include <sys/file.h>
#include <sys/stat.h>
#include <utility>

namespace zel::envio {

namespace {

constexpr off_t kPagina = 4096;             // bytes, SQLite's own choice for a new file
constexpr std::int64_t kMarca = 0x5A454C46; // "ZELF", application_id

// Each raises the file by one form. What has been released stays as it is: a change is a row more.
// States are written by name; tipo and desfecho by the numbers of their enumerations. `proximo` is
// NULL in the states that are an end.
constexpr std::array<const char *, 2> kFormas{
    R"sql(
CREATE TABLE documento (
    id INTEGER PRIMARY KEY,
    identidade BLOB NOT NULL, -- SHA-256 of the original
    caixa TEXT NOT NULL,
    origem TEXT NOT NULL,
    tipo INTEGER NOT NULL,
    chave TEXT NOT NULL,
    cnpj TEXT NOT NULL,
    modelo INTEGER NOT NULL,
    serie INTEGER NOT NULL,
    numero INTEGER NOT NULL,
    ultimo INTEGER NOT NULL,
    tpAmb INTEGER NOT NULL,
    tpEmis INTEGER NOT NULL,
    dhEmi TEXT NOT NULL,
    total INTEGER NOT NULL,
    consumidor TEXT NOT NULL,
    nomeConsumidor TEXT NOT NULL,
    substitui TEXT NOT NULL,
    troco INTEGER,
    estado TEXT NOT NULL CHECK (estado IN ('achado', 'traduzido', 'assinado', 'enviado',
        'perguntar', 'respondido', 'entregue', 'recusado', 'retirado')),
    cStat INTEGER NOT NULL DEFAULT 0,
    xMotivo TEXT NOT NULL DEFAULT '',
    protocolo TEXT NOT NULL DEFAULT '',
    momentoResposta TEXT NOT NULL DEFAULT '',
    recibo TEXT NOT NULL DEFAULT '',
    desfecho INTEGER NOT NULL DEFAULT 0,
    motivo TEXT NOT NULL DEFAULT '',
    tentativas INTEGER NOT NULL DEFAULT 0,
    achado INTEGER NOT NULL,
    mudado INTEGER NOT NULL,
    proximo INTEGER DEFAULT 0
) STRICT;
CREATE UNIQUE INDEX documento_identidade ON documento (identidade, caixa);
CREATE INDEX documento_pronto ON documento (caixa, proximo) WHERE proximo IS NOT NULL;
CREATE INDEX documento_chave ON documento (chave, tipo);
CREATE INDEX documento_numeracao
    ON documento (cnpj, tpAmb, serie, numero, ultimo, tipo, estado, desfecho);
CREATE INDEX documento_numero ON documento (numero);
CREATE INDEX documento_faixa ON documento (numero, ultimo) WHERE tipo = 3;
CREATE INDEX documento_emissao ON documento (dhEmi);
CREATE INDEX documento_consumidor ON documento (consumidor) WHERE consumidor <> '';
CREATE INDEX documento_estado ON documento (estado, achado);
CREATE INDEX documento_substitui ON documento (substitui) WHERE substitui <> '';

CREATE TABLE conteudo (
    id INTEGER PRIMARY KEY REFERENCES documento (id),
    original BLOB NOT NULL,
    mensagem BLOB,
    elemento BLOB,
    evento BLOB
) STRICT;
CREATE TRIGGER conteudo_original BEFORE UPDATE OF original ON conteudo
    WHEN NEW.original IS NOT OLD.original
    BEGIN SELECT RAISE(ABORT, 'o arquivo achado não muda'); END;
CREATE TRIGGER conteudo_mensagem BEFORE UPDATE OF mensagem ON conteudo
    WHEN OLD.mensagem IS NOT NULL AND NEW.mensagem IS NOT OLD.mensagem
    BEGIN SELECT RAISE(ABORT, 'a mensagem já foi assinada e não muda'); END;
CREATE TRIGGER documento_fica BEFORE DELETE ON documento
    BEGIN SELECT RAISE(ABORT, 'nada sai da fila'); END;
CREATE TRIGGER conteudo_fica BEFORE DELETE ON conteudo
    BEGIN SELECT RAISE(ABORT, 'nada sai da fila'); END;

CREATE TABLE passo (
    id INTEGER PRIMARY KEY,
    documento INTEGER NOT NULL REFERENCES documento (id),
    momento INTEGER NOT NULL,
    de TEXT NOT NULL,
    para TEXT NOT NULL,
    detalhe TEXT NOT NULL
) STRICT;
CREATE INDEX passo_documento ON passo (documento);

CREATE TABLE servico (
    servico TEXT NOT NULL,
    cUF TEXT NOT NULL,
    tpAmb INTEGER NOT NULL,
    cStat INTEGER NOT NULL,
    http INTEGER NOT NULL,
    xMotivo TEXT NOT NULL,
    momento INTEGER NOT NULL,
    demora INTEGER NOT NULL,
    PRIMARY KEY (servico, cUF, tpAmb)
) STRICT, WITHOUT ROWID;
CREATE TABLE anotacao (nome TEXT PRIMARY KEY, texto TEXT NOT NULL) STRICT, WITHOUT ROWID;
)sql",
    // What the authority refused for the certificate (14) is signed anew.
    R"sql(
DROP TRIGGER conteudo_mensagem;
CREATE TRIGGER conteudo_mensagem BEFORE UPDATE OF mensagem ON conteudo
    WHEN OLD.mensagem IS NOT NULL AND NEW.mensagem IS NOT OLD.mensagem
    AND NOT (NEW.mensagem IS NULL AND EXISTS (SELECT 1 FROM documento d WHERE d.id = OLD.id
        AND d.estado = 'achado' AND d.desfecho = 14))
    BEGIN SELECT RAISE(ABORT, 'a mensagem já foi assinada e não muda'); END;
)sql"};

std::string prepararDiretorio(const std::string &diretorio) {
    struct stat dados {};
    if (!comum::criarDiretorios(diretorio, 0700) || ::stat(diretorio.c_str(), &dados) != 0 ||
        !S_ISDIR(dados.st_mode))
        return "a pasta da fila não existe e não pode ser criada: confira o caminho e as "
               "permissões";
    if ((dados.st_mode & (S_IRWXG | S_IRWXO)) != 0)
        return "a pasta da fila tem dados de consumidores e só o dono pode entrar nela: chmod 700, "
               "ou aponte uma pasta só para ela";
    return {};
}

// A file that is there is looked at from outside alone: to open and close it would take the locks
// away that another object of this process has on it.
std::string prepararArquivo(const std::string &arquivo) {
    struct stat wal {
    }, dados{};
    const bool haWal = ::stat((arquivo + "-wal").c_str(), &wal) == 0 && wal.st_size > 0;
    const bool ha = ::lstat(arquivo.c_str(), &dados) == 0;
    if (ha && !S_ISREG(dados.st_mode)) return "não é um arquivo comum: tire-o do lugar da fila";
    // SQLite would drop the changes that wait beside an empty file, and take a page that was cut
    // for one with zeros. Its own first page is there before any change waits; a page that it was
    // writing when the power went is in the changes or in the journal still.
    if (haWal && (!ha || dados.st_size < kPagina))
        return "sumiu ou foi cortado, e ao lado ficaram mudanças (fila.db-wal): restaure-o da "
               "cópia "
               "de segurança, ou mova os fila.db-* para outra pasta";
    if (ha && !haWal && dados.st_size % kPagina != 0 &&
        ::access((arquivo + "-journal").c_str(), F_OK) != 0)
        return "não é uma fila ou foi cortado, e não foi tocado: tire-o do lugar da fila, ou "
               "restaure-o da cópia de segurança";
    if (ha) return {};
    comum::Descritor novo(comum::insistir(
        [&] { return ::open(arquivo.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600); }));
    return novo.aberto() && ::fchmod(novo.fd(), 0600) == 0 ? std::string()
                                                           : "a fila não pode ser criada na pasta";
}

std::int64_t versaoDe(Banco &banco) {
    Comando pergunta(banco, "PRAGMA user_version");
    return pergunta.linha() ? pergunta.numero() : -1;
}

// Ours, or of nobody yet. Asked before anything is written.
std::string conferirMarca(Banco &banco) {
    Comando pergunta(banco, "SELECT (SELECT application_id FROM pragma_application_id), "
                            "(SELECT user_version FROM pragma_user_version), "
                            "(SELECT count(*) FROM sqlite_schema)");
    if (!pergunta.linha()) return banco.motivo();
    const std::int64_t marca = pergunta.numero(), versao = pergunta.numero(),
                       tabelas = pergunta.numero();
    if (marca != kMarca && (marca != 0 || versao != 0 || tabelas != 0))
        return "é um banco SQLite de outro programa e não foi tocado: aponte outra pasta para a "
               "fila";
    if (versao > std::ssize(kFormas))
        return "foi feito por uma versão mais nova deste programa: atualize-o";
    return {};
}

bool ligar(Banco &banco) {
    Comando modo(banco, "PRAGMA journal_mode = WAL");
    if (!modo.linha()) return false;
    if (modo.texto() != "wal") {
        banco.motivo() = "este sistema de arquivos não serve à fila (falta memória compartilhada): "
                         "aponte uma pasta de um disco local";
        return false;
    }
    // A document is some pages, and each till has a connection of its own: 128 KiB a connection.
    return banco.executar("PRAGMA synchronous = FULL; PRAGMA foreign_keys = ON; "
                          "PRAGMA cache_size = -128; "
                          "PRAGMA cell_size_check = ON; PRAGMA journal_size_limit = 16777216");
}

bool elevar(Banco &banco) {
    const std::int64_t versao = versaoDe(banco);
    if (versao < 0 || !banco.executar("BEGIN IMMEDIATE")) return false;
    bool certo = true;
    for (auto i = static_cast<std::size_t>(versao); certo && i < kFormas.size(); ++i)
        certo = banco.executar(kFormas.at(i)) &&
                banco.executar(("PRAGMA user_version = " + std::to_string(i + 1)).c_str());
    if (certo && banco.executar(("PRAGMA application_id = " + std::to_string(kMarca)).c_str()) &&
        banco.executar("COMMIT"))
        return true;
    const std::string motivo = banco.motivo();
    banco.executar("ROLLBACK");
    banco.motivo() = motivo;
    return false;
}

// The tables are there as the form has them.
bool conferirTabelas(Banco &banco) {
    return Comando(banco,
                   "SELECT d.proximo, c.evento, p.detalhe, s.demora, a.texto FROM documento d, "
                   "conteudo c, passo p, servico s, anotacao a LIMIT 0")
        .fazer();
}

} // namespace

std::unique_ptr<Banco> abrirBanco(const std::string &diretorio, Recusas &recusas) {
    const std::string arquivo = diretorio + "fila.db";
    const auto recusar = [&](const std::string &onde, std::string_view motivo) {
        recusas.juntar("fila", onde, motivo);
        return nullptr;
    };
    if (const std::string motivo = prepararDiretorio(diretorio); !motivo.empty())
        return recusar(diretorio, motivo);
    // One at a time: who makes the file is not met half-way by another.
    const comum::Descritor pasta(diretorio, O_RDONLY | O_DIRECTORY);
    if (!pasta.aberto() || comum::insistir([&] { return ::flock(pasta.fd(), LOCK_EX); }) != 0)
        return recusar(diretorio, "a pasta da fila não pode ser aberta: confira dono e permissões");
    if (const std::string motivo = prepararArquivo(arquivo); !motivo.empty())
        return recusar(arquivo, motivo);
    auto banco = std::make_unique<Banco>(arquivo);
    if (!banco->aberto()) return recusar(arquivo, banco->motivo());
    if (const std::string motivo = conferirMarca(*banco); !motivo.empty())
        return recusar(arquivo, motivo);
    const std::int64_t versao = versaoDe(*banco);
    if (versao > 0 && !conferirTabelas(*banco))
        return recusar(arquivo, "não tem as tabelas de uma fila: restaure-o da cópia de segurança, "
                                "ou aponte outra pasta");
    if (!ligar(*banco) || (versao != std::ssize(kFormas) && !elevar(*banco)))
        return recusar(arquivo, banco->motivo());
    comum::insistir([&] { return ::fsync(pasta.fd()); });
    banco->motivo().clear();
    return banco;
}

} // namespace zel::envio
