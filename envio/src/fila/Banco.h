// SPDX-License-Identifier: MIT
// A SQLite file and its commands, which close themselves. What fails is told once, in Portuguese
// with the remedy, whatever the command was.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <variant>

struct sqlite3;
struct sqlite3_stmt;

namespace zel::envio {

struct Fechar {
    void operator()(sqlite3 *banco) const;
    void operator()(sqlite3_stmt *comando) const;
};
using ComandoPronto = std::unique_ptr<sqlite3_stmt, Fechar>;

// What a place of a command takes: nothing (NULL), a number, a text.
using Valor = std::variant<std::monostate, std::int64_t, std::string_view>;

class Banco {
public:
    // A file that is there. One thread at a time.
    explicit Banco(const std::string &arquivo);

    bool aberto() const { return banco_ != nullptr; }
    // Commands without places or rows.
    bool executar(const char *sql);
    bool emTransacao() const;
    std::int64_t ultimoId() const;
    std::int64_t mudados() const; // rows of the last command

    const std::string &arquivo() const { return arquivo_; }
    // Of the last failure; empty when there was none.
    std::string &motivo() { return motivo_; }

private:
    friend class Comando;
    bool falhar(); // false, and motivo() says why
    std::string motivoDe(int codigo, int errno_) const;

    std::string arquivo_, motivo_;
    std::unique_ptr<sqlite3, Fechar> banco_;
    // Those of which nobody makes use, by their text.
    std::unordered_map<std::string, ComandoPronto> prontos_;
};

// A command in use. Places are filled and columns read from the left. Texts are not copied: they
// outlive the command.
class Comando {
public:
    Comando(Banco &banco, std::string_view sql);
    ~Comando();
    Comando(const Comando &) = delete;
    Comando &operator=(const Comando &) = delete;

    Comando &dar(const Valor &valor);
    Comando &dar(std::int64_t numero) { return dar(Valor(numero)); }
    Comando &dar(std::string_view texto) { return dar(Valor(texto)); }
    Comando &dar(const std::string &texto) { return dar(Valor(std::string_view(texto))); }
    Comando &dar(std::string &&texto) = delete;
    Comando &darBytes(std::string_view bytes);

    // The next row; false after the last one and when it failed, which falhou() tells apart.
    bool linha();
    bool falhou() const { return falhou_; }
    // To its end; false when it failed.
    bool fazer();

    bool nulo() const; // the next column
    std::int64_t numero();
    int inteiro() { return static_cast<int>(numero()); }
    std::string texto(); // or bytes

private:
    Banco &banco_;
    std::string sql_;
    ComandoPronto comando_;
    int lugar_ = 0, coluna_ = 0;
    bool falhou_ = false;
};

} // namespace zel::envio
