// SPDX-License-Identifier: MIT
#include "util/RegistroDiario.h"

#include "util/Soma.h"

#include <algorithm>
#include <array>
#include <utility>

namespace zel {

namespace {

constexpr std::string_view kMarca = "ZEL1";
constexpr std::string_view kMarcaCarimbos = "ZELC";
constexpr std::size_t kAntesDaSoma = 4, kDepoisDaSoma = 8; // bytes from the record's start
constexpr std::size_t kCabeca = 48;

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
    bytes.replace(lugar, novos.size(), novos.data(), novos.size());
}

constexpr unsigned kPrivado = 1, kSegue = 2; // bits of a change's mode

constexpr std::uint8_t modoDe(const MudancaDiario &mudanca) {
    return static_cast<std::uint8_t>((mudanca.acesso == Acesso::kPrivado ? kPrivado : 0U) |
                                     (mudanca.ligacao == Ligacao::kSeguida ? kSegue : 0U));
}

void escreverNome(std::string &bytes, std::string_view nome) {
    escrever(bytes, static_cast<std::uint8_t>(nome.size()));
    bytes.append(nome);
}

void escreverCarimbos(std::string &bytes, const std::vector<CarimboDiario> &carimbos) {
    escrever(bytes, static_cast<std::uint8_t>(carimbos.size()));
    for (const CarimboDiario &carimbo : carimbos) {
        escreverNome(bytes, carimbo.nome);
        escrever(bytes, carimbo.identidade.no);
        escrever(bytes, carimbo.identidade.tamanho);
        escrever(bytes, carimbo.identidade.mudanca);
        escrever(bytes, carimbo.identidade.escrita);
    }
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
    mudanca.ligacao = (modo & kSegue) != 0 ? Ligacao::kSeguida : Ligacao::kNaoSeguida;
    mudanca.lugar = leitor.numero<std::uint64_t>();
    mudanca.retirados = leitor.numero<std::uint64_t>();
    mudanca.bytes = leitor.trecho(leitor.numero<std::uint64_t>());
    return mudanca;
}

} // namespace

std::size_t tamanhoRegistroDiario(const RegistroDiario &registro) {
    std::size_t tamanho = kCabeca + 1 + 1;
    for (const CarimboDiario &carimbo : registro.carimbos)
        tamanho += 1 + carimbo.nome.size() + 4 * sizeof(std::uint64_t);
    for (const MudancaDiario &mudanca : registro.mudancas)
        tamanho +=
            1 + mudanca.nome.size() + 1 + 1 + 3 * sizeof(std::uint64_t) + mudanca.bytes.size();
    return emBlocos(tamanho);
}

std::string escreverRegistroDiario(const RegistroDiario &registro) {
    std::string bytes;
    bytes.reserve(tamanhoRegistroDiario(registro));
    bytes = kMarca;
    escrever(bytes, std::uint32_t{0}); // the checksum, known at the end
    escrever(bytes, std::uint32_t{0}); // and so is the size
    escrever(bytes, registro.lugar.caminho);
    escrever(bytes, registro.epoca);
    escrever(bytes, registro.sequencia);
    escrever(bytes, registro.momento);
    escrever(bytes, registro.lugar.no);
    escreverCarimbos(bytes, registro.carimbos);
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
    corrigir(bytes, kDepoisDaSoma, static_cast<std::uint32_t>(bytes.size() - kCabeca));
    corrigir(bytes, kAntesDaSoma, somaCrc32(std::string_view(bytes).substr(kDepoisDaSoma)));
    bytes.resize(emBlocos(bytes.size()), '\0');
    return bytes;
}

namespace {

struct Cabeca {
    std::uint32_t soma = 0, tamanho = 0;
    RegistroDiario registro; // without its payload
};

std::optional<Cabeca> lerCabeca(std::string_view bytes) {
    Leitor leitor(bytes);
    if (leitor.trecho(kMarca.size()) != kMarca) return {};
    Cabeca cabeca;
    cabeca.soma = leitor.numero<std::uint32_t>();
    cabeca.tamanho = leitor.numero<std::uint32_t>();
    RegistroDiario &registro = cabeca.registro;
    registro.lugar.caminho = leitor.numero<std::uint32_t>();
    registro.epoca = leitor.numero<std::int64_t>();
    registro.sequencia = leitor.numero<std::uint64_t>();
    registro.momento = leitor.numero<std::int64_t>();
    registro.lugar.no = leitor.numero<std::uint64_t>();
    if (!leitor.inteiro()) return {};
    return cabeca;
}

} // namespace

std::optional<RegistroDiario> lerRegistroDiario(std::string_view bytes, std::size_t &tamanho) {
    auto cabeca = lerCabeca(bytes);
    if (!cabeca || cabeca->tamanho > bytes.size() - kCabeca) return {};
    const std::string_view somados =
        bytes.substr(kDepoisDaSoma, kCabeca - kDepoisDaSoma + cabeca->tamanho);
    if (somaCrc32(somados) != cabeca->soma) return {};

    RegistroDiario registro = std::move(cabeca->registro);
    Leitor leitor(bytes.substr(kCabeca, cabeca->tamanho));
    registro.carimbos = lerCarimbos(leitor);
    registro.mudancas.resize(leitor.numero<std::uint8_t>());
    for (MudancaDiario &mudanca : registro.mudancas)
        mudanca = lerMudanca(leitor);
    if (!leitor.inteiro() || !std::ranges::all_of(registro.mudancas, ehEntrada)) return {};
    tamanho = emBlocos(kCabeca + cabeca->tamanho);
    return registro;
}

std::string escreverCarimbos(const RegistroDiario &registro,
                             const std::vector<CarimboDiario> &carimbos) {
    std::string bytes;
    bytes.reserve(kSetor);
    bytes = kMarcaCarimbos;
    escrever(bytes, std::uint32_t{0});
    escrever(bytes, registro.epoca);
    escrever(bytes, registro.sequencia);
    escreverCarimbos(bytes, carimbos);
    bytes.resize(kSetor, '\0');
    corrigir(bytes, kAntesDaSoma, somaCrc32(std::string_view(bytes).substr(kDepoisDaSoma)));
    return bytes;
}

namespace {

struct SetorDeCarimbos {
    std::int64_t epoca;
    std::uint64_t sequencia;
    std::optional<std::vector<CarimboDiario>> carimbos;
};

std::optional<SetorDeCarimbos> lerSetor(std::string_view setor) {
    Leitor leitor(setor);
    if (setor.size() != kSetor || leitor.trecho(kMarcaCarimbos.size()) != kMarcaCarimbos) return {};
    const auto soma = leitor.numero<std::uint32_t>();
    if (somaCrc32(setor.substr(kDepoisDaSoma)) != soma) return {};
    SetorDeCarimbos lido{};
    lido.epoca = leitor.numero<std::int64_t>();
    lido.sequencia = leitor.numero<std::uint64_t>();
    std::vector<CarimboDiario> carimbos = lerCarimbos(leitor);
    if (leitor.inteiro()) lido.carimbos = std::move(carimbos);
    return lido;
}

} // namespace

std::optional<std::vector<CarimboDiario>> lerCarimbos(std::string_view setor,
                                                      const RegistroDiario &registro) {
    auto lido = lerSetor(setor);
    const bool dele =
        lido && lido->epoca == registro.epoca && lido->sequencia == registro.sequencia;
    return dele ? std::move(lido->carimbos) : std::nullopt;
}

bool haPosteriores(std::string_view depois, const RegistroDiario &registro) {
    for (std::size_t lugar = 0; lugar < depois.size(); lugar += kBloco) {
        const std::string_view bloco = depois.substr(lugar, kSetor);
        const auto carimbos = lerSetor(bloco);
        const auto cabeca = lerCabeca(bloco);
        if (carimbos && carimbos->epoca == registro.epoca &&
            carimbos->sequencia > registro.sequencia)
            return true;
        if (cabeca && cabeca->registro.epoca == registro.epoca &&
            cabeca->registro.sequencia > registro.sequencia + 1)
            return true;
    }
    return false;
}

} // namespace zel
