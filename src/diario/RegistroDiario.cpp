// SPDX-License-Identifier: MIT
#include "diario/RegistroDiario.h"

#include <algorithm>
#include <type_traits>
#include <utility>
#include <zlib.h>

namespace zel {

std::uint32_t somaCrc32(std::string_view bytes) {
    return static_cast<std::uint32_t>(
        ::crc32_z(0, reinterpret_cast<const Bytef *>(bytes.data()), bytes.size()));
}

namespace {

constexpr std::string_view kMarca = "ZEL4", kMarcaFim = "ZELF";
constexpr std::size_t kDepoisDaSoma = 8, kCabeca = 60;        // bytes from the head's start
constexpr std::int64_t kMaiorMomento = std::int64_t{1} << 62; // in the year 2116

// An entry of a directory, and not of another one.
bool ehEntrada(const MudancaDiario &mudanca) {
    return !mudanca.nome.empty() && mudanca.nome != "." && mudanca.nome != ".." &&
           mudanca.nome.find_first_of(std::string_view("/\0", 2)) == std::string_view::npos;
}

template <class... Numero>
void escrever(std::string &bytes, Numero... numeros) {
    const auto um = [&](auto numero) {
        for (std::size_t i = 0; i < sizeof numero; ++i)
            bytes += static_cast<char>(static_cast<std::uint64_t>(numero) >> (8 * i));
    };
    (um(numeros), ...);
}

constexpr unsigned kPrivado = 1, kSegue = 2, kEscrito = 4; // bits of a change's mode

constexpr std::uint8_t modoDe(const MudancaDiario &mudanca) {
    return static_cast<std::uint8_t>((mudanca.acesso == Acesso::kPrivado ? kPrivado : 0U) |
                                     (mudanca.ligacao == Ligacao::kSeguida ? kSegue : 0U) |
                                     (mudanca.noLugar ? kEscrito : 0U));
}

std::string escreverCabeca(std::string_view marca, const RegistroDiario &registro,
                           std::string_view conteudo = {}) {
    std::string bytes;
    escrever(bytes, registro.epoca, registro.sequencia, registro.momento, registro.lugar.no,
             registro.lugar.diretorio, static_cast<std::uint32_t>(conteudo.size()),
             somaCrc32(conteudo), registro.seguido);
    std::string cabeca(marca);
    escrever(cabeca, somaCrc32(bytes));
    return cabeca + bytes;
}

// Reads bytes from the front; once they do not suffice everything reads as nothing.
class Leitor {
public:
    explicit Leitor(std::string_view bytes) : resto_(bytes) {}

    bool inteiro() const { return inteiro_; }

    std::string_view trecho(std::uint64_t tamanho) {
        if (tamanho > resto_.size()) inteiro_ = false;
        const std::string_view bytes = inteiro_ ? resto_.substr(0, tamanho) : std::string_view{};
        resto_.remove_prefix(bytes.size());
        return bytes;
    }

    template <class... Numero>
    void ler(Numero &...numeros) {
        const auto um = [&](auto &numero) {
            std::uint64_t valor = 0;
            std::size_t casa = 0;
            for (const char byte : trecho(sizeof numero))
                valor |= std::uint64_t{static_cast<unsigned char>(byte)} << (8 * casa++);
            numero = static_cast<std::remove_reference_t<decltype(numero)>>(valor);
        };
        (um(numeros), ...);
    }

private:
    std::string_view resto_;
    bool inteiro_ = true;
};

MudancaDiario lerMudanca(Leitor &leitor) {
    MudancaDiario mudanca;
    std::uint8_t nome = 0, modo = 0;
    std::uint64_t tamanho = 0;
    leitor.ler(nome);
    mudanca.nome = leitor.trecho(nome);
    leitor.ler(mudanca.forma, modo, mudanca.lugar, mudanca.antes, tamanho);
    mudanca.bytes = leitor.trecho(tamanho);
    mudanca.acesso = (modo & kPrivado) != 0 ? Acesso::kPrivado : Acesso::kUmask;
    mudanca.noLugar = (modo & kEscrito) != 0;
    mudanca.ligacao = (modo & kSegue) != 0 ? Ligacao::kSeguida : Ligacao::kNaoSeguida;
    return mudanca;
}

constexpr std::size_t emPartes(std::size_t tamanho) {
    return emMultiplosDe(tamanho > kBloco ? kBloco : kSetor, tamanho);
}

} // namespace

std::size_t tamanhoRegistroDiario(const RegistroDiario &registro) {
    std::size_t tamanho = kCabeca + 1;
    for (const MudancaDiario &mudanca : registro.mudancas)
        tamanho +=
            1 + mudanca.nome.size() + 1 + 1 + 3 * sizeof(std::uint64_t) + mudanca.bytes.size();
    return emPartes(tamanho);
}

std::string escreverRegistroDiario(const RegistroDiario &registro) {
    std::string bytes(kCabeca, '\0');
    bytes.reserve(tamanhoRegistroDiario(registro));
    escrever(bytes, static_cast<std::uint8_t>(registro.mudancas.size()));
    for (const MudancaDiario &mudanca : registro.mudancas) {
        escrever(bytes, static_cast<std::uint8_t>(mudanca.nome.size()));
        bytes.append(mudanca.nome);
        escrever(bytes, static_cast<std::uint8_t>(mudanca.forma), modoDe(mudanca), mudanca.lugar,
                 mudanca.antes, std::uint64_t{mudanca.bytes.size()});
        bytes.append(mudanca.bytes);
    }
    const auto conteudo = std::string_view(bytes).substr(kCabeca);
    std::ranges::copy(escreverCabeca(kMarca, registro, conteudo), bytes.begin());
    bytes.resize(emPartes(bytes.size()), '\0');
    return bytes;
}

std::string escreverFim(const RegistroDiario &registro) {
    std::string bytes = escreverCabeca(kMarcaFim, registro);
    bytes.resize(kBloco, '\0');
    return bytes;
}

std::optional<CabecaDiario> lerCabecaDiario(std::string_view bytes) {
    bytes = bytes.substr(0, kCabeca);
    Leitor leitor(bytes);
    const std::string_view marca = leitor.trecho(kMarca.size());
    if (bytes.size() < kCabeca || (marca != kMarca && marca != kMarcaFim)) return {};
    std::uint32_t soma = 0;
    CabecaDiario cabeca{.deRegistro = marca == kMarca};
    RegistroDiario &registro = cabeca.registro;
    leitor.ler(soma, registro.epoca, registro.sequencia, registro.momento, registro.lugar.no,
               registro.lugar.diretorio, cabeca.tamanho, cabeca.soma, registro.seguido);
    const bool datada = std::max(registro.momento, registro.seguido) < kMaiorMomento &&
                        std::min(registro.momento, registro.seguido) >= 0;
    if (!datada || somaCrc32(bytes.substr(kDepoisDaSoma)) != soma) return {};
    return cabeca;
}

std::optional<RegistroDiario> lerRegistroDiario(std::string_view bytes, std::size_t &tamanho) {
    auto cabeca = lerCabecaDiario(bytes);
    if (!cabeca || !cabeca->deRegistro || cabeca->tamanho > bytes.size() - kCabeca) return {};
    const std::string_view conteudo = bytes.substr(kCabeca, cabeca->tamanho);
    if (somaCrc32(conteudo) != cabeca->soma) return {};

    RegistroDiario registro = std::move(cabeca->registro);
    Leitor leitor(conteudo);
    std::uint8_t quantas = 0;
    leitor.ler(quantas);
    registro.mudancas.resize(quantas);
    for (MudancaDiario &mudanca : registro.mudancas)
        mudanca = lerMudanca(leitor);
    if (!leitor.inteiro() || !std::ranges::all_of(registro.mudancas, ehEntrada)) return {};
    tamanho = kCabeca + conteudo.size();
    return registro;
}

bool haPosteriores(std::string_view depois, const RegistroDiario &registro) {
    for (std::size_t lugar = 0; lugar < depois.size(); lugar += kBloco) {
        const auto cabeca = lerCabecaDiario(depois.substr(lugar, kCabeca));
        if (!cabeca || cabeca->registro.epoca != registro.epoca) continue;
        const std::uint64_t proximo = registro.sequencia + 1;
        if (cabeca->registro.sequencia >= proximo + (cabeca->deRegistro ? 1 : 0)) return true;
    }
    return false;
}

} // namespace zel
