// SPDX-License-Identifier: MIT
// One call of the library: arguments converted, the call alone in the process, its answer with the
// explanation. Operations are made of this; applications see Resultado, Com and Falha.
#pragma once

#include "ZEL_FelborFramework.h"
#include "zel_felbor/autorizacao.hpp"
#include "zel_felbor/identificacao.hpp"
#include "zel_felbor/motivo.hpp"

#include <algorithm>
#include <cstdlib>
#include <deque>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

namespace zel_felbor {

// What a call answered. Texts are UTF-8, in Portuguese.
class Resultado {
public:
    Resultado(const char *funcao, int numero, std::string entrada = "", std::string motivo = "")
        : funcao_(funcao), numero_(numero), entrada_(std::move(entrada)),
          motivo_(std::move(motivo)) {}

    bool ok() const noexcept { return entrada_.empty() && numero_ > 0; }
    explicit operator bool() const noexcept { return ok(); }
    // ArgumentoInvalido also when an argument could not be converted and nothing was called.
    Codigo codigo() const noexcept { return static_cast<Codigo>(numero_); }
    int numero() const noexcept { return numero_; }
    // True when the library was not called, since an argument could not be converted.
    bool entradaRecusada() const noexcept { return !entrada_.empty(); }

    std::string nome() const { return descricao().nome; }
    std::string significado() const {
        return entradaRecusada() ? entrada_ : descricao().significado;
    }
    std::string remedio() const { return entradaRecusada() ? "" : descricao().remedio; }
    std::string funcao() const { return funcao_; }
    // Which field, what was given and what is allowed, or file and system error; may be empty.
    const std::string &motivo() const noexcept { return motivo_; }
    std::string mensagem() const {
        if (entradaRecusada()) return funcao() + ": " + entrada_;
        return funcao() + ": " + nome() + " (" + std::to_string(numero_) + "): " + significado() +
               " " + (motivo_.empty() ? "" : "Motivo: " + motivo_ + ". ") + remedio();
    }

private:
    DescricaoDeCodigo descricao() const {
        for (const DescricaoDeCodigo &d : codigos)
            if (d.codigo == codigo()) return d;
        return {codigo(), "DESCONHECIDO", "Código que esta camada não conhece.", ""};
    }

    const char *funcao_;
    int numero_;
    std::string entrada_, motivo_;
};

// An answer with what was read. After a failure `valor` holds what the function wrote all the same.
template <typename Valor>
struct Com : Resultado {
    Com(Resultado resultado, Valor lido)
        : Resultado(std::move(resultado)), valor(std::move(lido)) {}
    Valor valor;
};

// Thrown for an answer that is no success, unless the application asked for answers alone.
class Falha : public std::runtime_error {
public:
    explicit Falha(Resultado resultado, std::string texto = "")
        : std::runtime_error(resultado.mensagem()), resultado_(std::move(resultado)),
          texto_(std::move(texto)) {}
    const Resultado &resultado() const noexcept { return resultado_; }
    Codigo codigo() const noexcept { return resultado_.codigo(); }
    // What the function wrote all the same: a receipt whose PDF failed.
    const std::string &texto() const noexcept { return texto_; }

private:
    Resultado resultado_;
    std::string texto_;
};

struct Opcoes {
    bool excecoes = true;      // false: a failure is an answer alone
    bool transliterar = false; // typographic quotes, dashes, ellipses, blanks become plain ones
    bool cortar = false;       // what does not fit is handed over: it is cut or left out
};

namespace detalhe {

// The library has no locks; these belong to the process as the library's state does.
inline std::mutex trava;
inline std::string diretorioDoProcesso;

inline std::optional<std::string> lerArquivo(const std::filesystem::path &caminho) {
    std::ifstream arquivo(caminho, std::ios::binary);
    std::string conteudo{std::istreambuf_iterator<char>(arquivo), {}};
    if (!arquivo.is_open() || arquivo.bad()) return std::nullopt;
    return conteudo;
}

inline std::size_t tamanhoDoArquivo(const std::filesystem::path &caminho) {
    std::error_code erro;
    const auto tamanho = std::filesystem::file_size(caminho, erro);
    return erro ? 0 : static_cast<std::size_t>(tamanho);
}

inline std::size_t contar(std::string_view texto, std::string_view parte) {
    std::size_t vezes = 0;
    for (auto i = texto.find(parte); i != texto.npos; i = texto.find(parte, i + parte.size()))
        ++vezes;
    return vezes;
}

// Bytes that the receipt text of a document takes at most. A scrambled file cannot be counted: its
// items are at least 256 bytes and its payments 40, as the library writes them.
inline std::size_t tamanhoDoCupom(std::string_view documento, std::size_t retorno,
                                  std::size_t andamento, std::size_t url) {
    std::size_t itens = documento.size() / 256 + 1, pagamentos = documento.size() / 40 + 1;
    std::size_t maior = 1024, mensagem = documento.size();
    if (!documento.empty() && documento.front() == '<') {
        itens = contar(documento, "<det");
        pagamentos = contar(documento, "<pag");
        maior = 0;
        for (std::size_t i = 0, fim = 0; fim != documento.npos; i = fim + 1) {
            fim = documento.find('<', i);
            maior = std::max(maior, std::min(fim, documento.size()) - i);
        }
        mensagem = maior;
    }
    const std::size_t via = 16384 + 32 * maior + 2 * (mensagem + andamento) + retorno + url +
                            itens * (300 + maior) + pagamentos * 100;
    return std::max<std::size_t>(ZEL_TAMANHO_CUPOM, 2 * via);
}

} // namespace detalhe

// The data directory and the choices of one Cupom. The directory is the process's: the first one
// stays, since the library reads it once.
class Ambiente {
public:
    Ambiente(std::string diretorio, Opcoes opcoes)
        : diretorio_(std::move(diretorio)), opcoes_(opcoes) {
        erro_ = adotarDiretorio();
        if (!erro_.empty()) concluir(Resultado("ZEL_DIRETORIO", -99, erro_));
    }

    const std::string &diretorio() const noexcept { return diretorio_; }
    const Opcoes &opcoes() const noexcept { return opcoes_; }
    const std::string &erro() const noexcept { return erro_; }
    std::string arquivo(std::string_view nome) const {
        return diretorio_ + "/" + std::string(nome);
    }

    // The answer, or the exception that the application asked for.
    template <typename Resposta>
    Resposta concluir(Resposta resposta, [[maybe_unused]] const std::string &texto = "") const {
#if defined(__cpp_exceptions) || defined(_CPPUNWIND)
        if (opcoes_.excecoes && !resposta.ok()) throw Falha(resposta, texto);
#endif
        return resposta;
    }

private:
    std::string adotarDiretorio() {
        while (diretorio_.size() > 1 && diretorio_.back() == '/')
            diretorio_.pop_back();
        std::error_code falha;
        if (!std::filesystem::path(diretorio_).is_absolute())
            return "o diretório não é um caminho absoluto: " + diretorio_;
        if (!std::filesystem::is_directory(diretorio_, falha))
            return "o diretório não existe: " + diretorio_ +
                   "; crie-o (mkdir), com permissão de escrita para quem roda o caixa";
        const std::lock_guard<std::mutex> vez(detalhe::trava);
        if (detalhe::diretorioDoProcesso.empty()) {
#ifdef _WIN32
            ::_putenv_s("ZEL_DIRETORIO", diretorio_.c_str());
#else
            ::setenv("ZEL_DIRETORIO", diretorio_.c_str(), 1);
#endif
            detalhe::ouvirMotivos();
            detalhe::diretorioDoProcesso = diretorio_;
        }
        if (detalhe::diretorioDoProcesso != diretorio_)
            return "este processo já trabalha em " + detalhe::diretorioDoProcesso;
        return "";
    }

    std::string diretorio_;
    Opcoes opcoes_;
    std::string erro_;
};

// One call. Converters keep their text until the end of the call and the first error they meet.
class Chamada {
public:
    Chamada(const Ambiente &ambiente, const char *funcao)
        : ambiente_(ambiente), funcao_(funcao), erro_(ambiente.erro()) {}

    const char *texto(std::string_view argumento, std::string_view utf8) {
        return guardar(paraLatin1(argumento, utf8, ambiente_.opcoes().transliterar));
    }
    // An empty text stands for none.
    const char *texto(std::string_view argumento, std::string_view utf8, std::size_t minimo,
                      std::size_t maximo) {
        return utf8.empty() ? "" : obrigatorio(argumento, utf8, minimo, maximo);
    }
    // A text that the function would cut, or leave out, is refused.
    const char *obrigatorio(std::string_view argumento, std::string_view utf8, std::size_t minimo,
                            std::size_t maximo) {
        const char *latin1 = texto(argumento, utf8);
        const std::size_t tamanho = textos_.back().size();
        if (ambiente_.opcoes().cortar || (tamanho >= minimo && tamanho <= maximo)) return latin1;
        const std::string ate = std::to_string(maximo);
        const std::string permitido = minimo == maximo ? "exatamente " + ate
                                      : minimo > 0 ? "de " + std::to_string(minimo) + " a " + ate
                                                   : "até " + ate;
        const std::string recusa = std::to_string(tamanho) + " caracteres; permitido: " + permitido;
        return recusar(argumento, recusa.c_str());
    }
    // A CPF or a CNPJ, or none.
    const char *documento(std::string_view argumento, std::string_view valor) {
        if (valor.empty() || ambiente_.opcoes().cortar) return texto(argumento, valor);
        return guardar(documentoDe(std::string(argumento), valor));
    }
    const char *identificacao(const Consumidor &consumidor) {
        return guardar(identificacaoDe(funcao_, consumidor, ambiente_.opcoes().cortar));
    }
    int inteiro(std::string_view, int valor) { return valor; }
    int inteiro(std::string_view argumento, int valor, int minimo, int maximo) {
        if (valor < minimo || valor > maximo)
            recusar(argumento, (std::to_string(valor) + " não está entre " +
                                std::to_string(minimo) + " e " + std::to_string(maximo))
                                   .c_str());
        return valor;
    }
    const char *decimal(std::string_view argumento, const Decimal &numero, int casas) {
        return guardar(numero.converter(argumento, casas));
    }
    const char *decimal(std::string_view argumento, const std::optional<Decimal> &numero,
                        int casas) {
        return numero ? decimal(argumento, *numero, casas) : "";
    }
    const char *aliquota(std::string_view argumento, const Aliquota &aliquota) {
        return guardar(aliquota.converter(argumento));
    }
    const char *tipoDeAjuste(std::string_view argumento, const Ajuste &ajuste,
                             std::string_view sentido) {
        return guardar(ajuste.tipo(argumento, sentido));
    }
    const char *valorDeAjuste(std::string_view argumento, const Ajuste &ajuste) {
        return guardar(ajuste.valor(argumento));
    }
    // File names are bytes of the file system, not ISO-8859-1.
    const char *caminho(std::string_view argumento, std::string_view nome) {
        if (nome.find('\0') != nome.npos) return recusar(argumento, "nome de arquivo com U+0000");
        if (nome.size() > 300) return recusar(argumento, "nome de arquivo com mais de 300 bytes");
        return guardar({std::string(nome), ""});
    }

    // A result of `tamanho` bytes, terminator included.
    char *saida(std::size_t tamanho) {
        saida_.assign(tamanho, '\0');
        return saida_.data();
    }
    // The bytes of a file that the library is about to read.
    std::string conteudo(std::string_view argumento, const std::string &nome) {
        std::optional<std::string> lido = detalhe::lerArquivo(nome);
        if (!lido) recusar(argumento, (nome + " não pôde ser lido").c_str());
        return lido.value_or("");
    }
    // Refuses the call when the receipt of these may not be given to a customer.
    void conferirAutorizacao(std::string_view documento, const std::optional<std::string> &retorno,
                             bool cancelamento) {
        std::string recusa = recusaDeImpressao(documento, retorno, cancelamento);
        if (erro_.empty()) erro_ = std::move(recusa);
    }
    // Up to three directories of up to 300 bytes, and room for the path that comes back.
    char *diretorios(std::string_view argumento, const std::vector<std::string> &lista) {
        std::string texto;
        if (lista.empty() || lista.size() > 3) recusar(argumento, "de um a três diretórios");
        for (const std::string &d : lista) {
            const std::string nome = !d.empty() && d.back() == '/' ? d : d + '/';
            if (nome.size() > 300) recusar(argumento, "diretório com mais de 300 bytes");
            if (nome.find('|') != nome.npos || nome.find('\0') != nome.npos)
                recusar(argumento, "diretório com | ou U+0000");
            texto += texto.empty() ? nome : "|" + nome;
        }
        saida(std::max<std::size_t>(ZEL_TAMANHO_DIRETORIOS, texto.size() + 64));
        texto.copy(saida_.data(), texto.size());
        return saida_.data();
    }

    template <typename Funcao, typename... Argumentos>
    void invocar(Funcao funcao, const std::tuple<Argumentos...> &argumentos) {
        if (!erro_.empty()) return;
        const std::lock_guard<std::mutex> vez(detalhe::trava);
        resposta_ = std::apply(funcao, argumentos);
        if (resposta_ <= 0) motivo_ = detalhe::motivoDe(funcao_, resposta_);
    }

    Resultado resultado() const {
        return ambiente_.concluir(Resultado(funcao_, resposta_, erro_, motivo_));
    }
    Com<std::string> comTexto() const { return com(paraUtf8(saida_.c_str())); }
    Com<std::string> comCaminho() const { return com(std::string(saida_.c_str())); }
    // The state is the answer itself, 0 to 6; what is below is a failure.
    Com<Estado> comEstado() const {
        const int codigo = resposta_ < 0 ? resposta_ : static_cast<int>(Codigo::Ok);
        return ambiente_.concluir(Com<Estado>(Resultado(funcao_, codigo, erro_, motivo_),
                                              static_cast<Estado>(resposta_)));
    }

private:
    const char *guardar(Conversao conversao) {
        if (!conversao.erro.empty() && erro_.empty()) erro_ = std::move(conversao.erro);
        return textos_.emplace_back(std::move(conversao.texto)).c_str();
    }
    const char *recusar(std::string_view argumento, const char *motivo) {
        return guardar({"", std::string(argumento) + ": " + motivo});
    }
    Com<std::string> com(std::string texto) const {
        return ambiente_.concluir(
            Com<std::string>(Resultado(funcao_, resposta_, erro_, motivo_), texto), texto);
    }

    const Ambiente &ambiente_;
    const char *funcao_;
    std::string erro_, motivo_;
    int resposta_ = static_cast<int>(Codigo::ArgumentoInvalido);
    std::deque<std::string> textos_;
    std::string saida_;
};

} // namespace zel_felbor
