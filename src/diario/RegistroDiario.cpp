// SPDX-License-Identifier: MIT
#include "diario/RegistroDiario.h"

#include "diario/Soma.h"

#include <algorithm>
#include <array>
#include <utility>

namespace zel {

namespace {

constexpr std::string_view kMarca = "ZEL3";
constexpr std::string_view kMarcaCarimbos = "ZELC";
constexpr std::size_t kAntesDaSoma = 4, kDepoisDaSoma = 8; // bytes from the head's start
constexpr std::size_t kCabeca = kSetor;

constexpr std::size_t emBlocos(std::size_t tamanho) {
    return (tamanho + kBloco - 1) / kBloco * kBloco;
}

// An entry of a directory, and not of another one.
bool ehEntrada(const MudancaDiario &mudanca) {
    return !mudanca.nome.empty() && mudanca.nome != "." && mudanca.nome != ".." &&
           mudanca.nome.find_first_of(std::string_view("/\0", 2)) == std::string_view::npos;
}

template <class Numero>
auto emBytes(Numero numero) {
    std::array<char, sizeof numero> bytes;
    for (std::size_t i = 0; i < sizeof numero; ++i)
        bytes[i] = static_cast<char>(static_cast<std::uint64_t>(numero) >> (8 * i));
    return bytes;
}

template <class Numero>
void escrever(std::string &bytes, Numero numero) {
    const auto novos = emBytes(numero);
    bytes.append(novos.data(), novos.size());
}

template <class Numero>
void corrigir(std::string &bytes, std::size_t lugar, Numero numero) {
    const auto novos = emBytes(numero);
    std::ranges::copy(novos, bytes.begin() + static_cast<std::ptrdiff_t>(lugar));
}

constexpr unsigned kPrivado = 1, kSegue = 2, kEscrito = 4; // bits of a change's mode

constexpr std::uint8_t modoDe(const MudancaDiario &mudanca) {
    return static_cast<std::uint8_t>((mudanca.acesso == Acesso::kPrivado ? kPrivado : 0U) |
                                     (mudanca.ligacao == Ligacao::kSeguida ? kSegue : 0U) |
                                     (mudanca.noLugar ? kEscrito : 0U));
}

void escreverNome(std::string &bytes, std::string_view nome) {
    escrever(bytes, static_cast<std::uint8_t>(nome.size()));
    bytes.append(nome);
}

std::size_t tamanhoDe(const CarimboDiario &carimbo) {
    return 1 + carimbo.nome.size() + 4 * sizeof(std::uint64_t);
}

// The head, with as many stamps as fit.
std::string escreverCabeca(std::string_view marca, const RegistroDiario &registro,
                           std::string_view conteudo = {}) {
    std::string bytes;
    bytes.reserve(kCabeca);
    bytes = marca;
    escrever(bytes, std::uint32_t{0}); // the checksum, known at the end
    escrever(bytes, registro.epoca);
    escrever(bytes, registro.sequencia);
    escrever(bytes, registro.momento);
    escrever(bytes, registro.lugar.no);
    escrever(bytes, registro.lugar.diretorio);
    escrever(bytes, static_cast<std::uint32_t>(conteudo.size()));
    escrever(bytes, somaCrc32(conteudo));
    const std::size_t lugarDaConta = bytes.size();
    std::uint8_t carimbos = 0;
    escrever(bytes, carimbos);
    for (const CarimboDiario &carimbo : registro.carimbos) {
        if (bytes.size() + tamanhoDe(carimbo) > kCabeca) break;
        ++carimbos;
        escreverNome(bytes, carimbo.nome);
        escrever(bytes, carimbo.identidade.no);
        escrever(bytes, carimbo.identidade.tamanho);
        escrever(bytes, carimbo.identidade.mudanca);
        escrever(bytes, carimbo.identidade.escrita);
    }
    corrigir(bytes, lugarDaConta, carimbos);
    corrigir(bytes, kAntesDaSoma, somaCrc32(std::string_view(bytes).substr(kDepoisDaSoma)));
    bytes.resize(kCabeca, '\0');
    return bytes;
}

// Reads bytes from the front; once they do not suffice everything reads as nothing.
class Leitor {
public:
    explicit Leitor(std::string_view bytes) : resto_(bytes) {}

    bool inteiro() const { return inteiro_; }
    std::size_t resto() const { return resto_.size(); }

    std::string_view trecho(std::uint64_t tamanho) {
        if (tamanho > resto_.size()) inteiro_ = false;
        const std::string_view bytes = inteiro_ ? resto_.substr(0, tamanho) : std::string_view{};
        resto_.remove_prefix(bytes.size());
        return bytes;
    }

    template <class Numero>
    Numero numero() {
        std::uint64_t valor = 0;
        std::size_t casa = 0;
        for (const char byte : trecho(sizeof(Numero)))
            valor |= std::uint64_t{static_cast<unsigned char>(byte)} << (8 * casa++);
        return static_cast<Numero>(valor);
    }

    std::string_view nome() { return trecho(numero<std::uint8_t>()); }

private:
    std::string_view resto_;
    bool inteiro_ = true;
};

std::vector<CarimboDiario> lerCarimbos(Leitor &leitor) {
    std::vector<CarimboDiario> carimbos(leitor.numero<std::uint8_t>());
    for (CarimboDiario &carimbo : carimbos) {
        carimbo.nome = leitor.nome();
        carimbo.identidade.no = leitor.numero<std::uint64_t>();
        carimbo.identidade.tamanho = leitor.numero<std::uint64_t>();
        carimbo.identidade.mudanca = leitor.numero<std::int64_t>();
        carimbo.identidade.escrita = leitor.numero<std::int64_t>();
    }
    return carimbos;
}

MudancaDiario lerMudanca(Leitor &leitor) {
    MudancaDiario mudanca;
    mudanca.nome = leitor.nome();
    mudanca.forma = FormaMudanca{leitor.numero<std::uint8_t>()};
    const unsigned modo = leitor.numero<std::uint8_t>();
    mudanca.acesso = (modo & kPrivado) != 0 ? Acesso::kPrivado : Acesso::kUmask;
    mudanca.noLugar = (modo & kEscrito) != 0;
    mudanca.ligacao = (modo & kSegue) != 0 ? Ligacao::kSeguida : Ligacao::kNaoSeguida;
    mudanca.lugar = leitor.numero<std::uint64_t>();
    mudanca.retirados = leitor.numero<std::uint64_t>();
    mudanca.bytes = leitor.trecho(leitor.numero<std::uint64_t>());
    return mudanca;
}

} // namespace

std::size_t tamanhoRegistroDiario(const RegistroDiario &registro) {
    std::size_t tamanho = kCabeca + 1;
    for (const MudancaDiario &mudanca : registro.mudancas)
        tamanho +=
            1 + mudanca.nome.size() + 1 + 1 + 3 * sizeof(std::uint64_t) + mudanca.bytes.size();
    return emBlocos(tamanho);
}

std::string escreverRegistroDiario(const RegistroDiario &registro) {
    std::string bytes(kCabeca, '\0');
    bytes.reserve(tamanhoRegistroDiario(registro));
    escrever(bytes, static_cast<std::uint8_t>(registro.mudancas.size()));
    for (const MudancaDiario &mudanca : registro.mudancas) {
        escreverNome(bytes, mudanca.nome);
        escrever(bytes, static_cast<std::uint8_t>(mudanca.forma));
        escrever(bytes, modoDe(mudanca));
        escrever(bytes, mudanca.lugar);
        escrever(bytes, mudanca.retirados);
        escrever(bytes, std::uint64_t{mudanca.bytes.size()});
        bytes.append(mudanca.bytes);
    }
    const auto conteudo = std::string_view(bytes).substr(kCabeca);
    std::ranges::copy(escreverCabeca(kMarca, registro, conteudo), bytes.begin());
    bytes.resize(emBlocos(bytes.size()), '\0');
    return bytes;
}

std::string escreverCarimbos(const RegistroDiario &registro) {
    std::string bytes = escreverCabeca(kMarcaCarimbos, registro);
    bytes.resize(kBloco, '\0');
    return bytes;
}

std::optional<CabecaDiario> lerCabecaDiario(std::string_view bytes) {
    bytes = bytes.substr(0, kCabeca);
    Leitor leitor(bytes);
    const std::string_view marca = leitor.trecho(kMarca.size());
    if (bytes.size() < kCabeca || (marca != kMarca && marca != kMarcaCarimbos)) return {};
    const auto soma = leitor.numero<std::uint32_t>();
    CabecaDiario cabeca{.deRegistro = marca == kMarca};
    RegistroDiario &registro = cabeca.registro;
    registro.epoca = leitor.numero<std::int64_t>();
    registro.sequencia = leitor.numero<std::uint64_t>();
    registro.momento = leitor.numero<std::int64_t>();
    registro.lugar.no = leitor.numero<std::uint64_t>();
    registro.lugar.diretorio = leitor.numero<std::uint32_t>();
    cabeca.tamanho = leitor.numero<std::uint32_t>();
    cabeca.soma = leitor.numero<std::uint32_t>();
    registro.carimbos = lerCarimbos(leitor);
    if (!leitor.inteiro()) return {};
    bytes.remove_suffix(leitor.resto());
    if (somaCrc32(bytes.substr(kDepoisDaSoma)) != soma) return {};
    return cabeca;
}

std::optional<RegistroDiario> lerRegistroDiario(std::string_view bytes, std::size_t &tamanho) {
    auto cabeca = lerCabecaDiario(bytes);
    if (!cabeca || !cabeca->deRegistro || cabeca->tamanho > bytes.size() - kCabeca) return {};
    const std::string_view conteudo = bytes.substr(kCabeca, cabeca->tamanho);
    if (somaCrc32(conteudo) != cabeca->soma) return {};

    RegistroDiario registro = std::move(cabeca->registro);
    Leitor leitor(conteudo);
    registro.mudancas.resize(leitor.numero<std::uint8_t>());
    for (MudancaDiario &mudanca : registro.mudancas)
        mudanca = lerMudanca(leitor);
    if (!leitor.inteiro() || !std::ranges::all_of(registro.mudancas, ehEntrada)) return {};
    tamanho = emBlocos(kCabeca + conteudo.size());
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
