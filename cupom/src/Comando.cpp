// SPDX-License-Identifier: MIT
#include "Comando.h"

#include "Texto.h"

#include <algorithm>
#include <array>

namespace zel::cupom {

namespace {

struct Controle {
    std::string_view nome;
    char byte;
};

constexpr std::array<Controle, 19> kControles{{
    {"NUL", 0x00}, {"BEL", 0x07}, {"HT", 0x09},  {"LF", 0x0A},  {"FF", 0x0C},
    {"CR", 0x0D},  {"SO", 0x0E},  {"SI", 0x0F},  {"DLE", 0x10}, {"DC1", 0x11},
    {"DC2", 0x12}, {"DC3", 0x13}, {"DC4", 0x14}, {"CAN", 0x18}, {"ESC", 0x1B},
    {"FS", 0x1C},  {"GS", 0x1D},  {"RS", 0x1E},  {"US", 0x1F},
}};

struct NomeDeValor {
    std::string_view nome;
    Valor valor;
};

constexpr std::array<NomeDeValor, 6> kValores{{
    {"n", Valor::kNumero},
    {"module", Valor::kModulo},
    {"length", Valor::kTamanho},
    {"bytes", Valor::kLargura},
    {"height", Valor::kAltura},
    {"data", Valor::kDados},
}};

template <class Tabela>
auto acharNome(const Tabela &tabela, std::string_view nome) {
    return std::find_if(tabela.begin(), tabela.end(),
                        [=](const auto &linha) { return linha.nome == nome; });
}

constexpr int kMaiorSoma = 255;

void porDoisBytes(std::string &saida, std::size_t numero) {
    saida.push_back(static_cast<char>(numero & 0xFF));
    saida.push_back(static_cast<char>(numero >> 8 & 0xFF));
}

} // namespace

std::optional<Comando> Comando::ler(std::string_view texto) {
    Comando comando;
    std::size_t palavras = 0;
    for (std::string_view palavra; !(palavra = tirarPalavra(texto)).empty();)
        if (++palavras > kMaiorComando || !comando.porPalavra(palavra)) return {};
    return comando;
}

bool Comando::porPalavra(std::string_view palavra) {
    if (palavra.size() > 1 && palavra.front() == '{') return porValor(palavra);
    std::optional<char> byte;
    if (const auto controle = acharNome(kControles, palavra); controle != kControles.end())
        byte = controle->byte;
    else if (const auto numero = numeroDe(palavra, 0, 255))
        byte = static_cast<char>(*numero);
    else if (palavra.size() == 1 && palavra.front() > ' ' && palavra.front() < 0x7F)
        byte = palavra.front();
    if (!byte) return false;
    if (partes_.empty() || partes_.back().valor) partes_.emplace_back();
    partes_.back().bytes.push_back(*byte);
    return true;
}

bool Comando::porValor(std::string_view palavra) {
    if (palavra.back() != '}') return false;
    palavra = palavra.substr(1, palavra.size() - 2);
    const std::size_t mais = palavra.find('+');
    const auto valor = acharNome(kValores, palavra.substr(0, mais));
    if (valor == kValores.end()) return false;
    std::size_t soma = 0;
    if (mais != palavra.npos) {
        const auto numero = numeroDe(palavra.substr(mais + 1), 0, kMaiorSoma);
        if (!numero || valor->valor != Valor::kTamanho) return false;
        soma = static_cast<std::size_t>(*numero);
    }
    if (partes_.empty() || partes_.back().valor) partes_.emplace_back();
    partes_.back().valor = valor->valor;
    partes_.back().soma = soma;
    return true;
}

bool Comando::pede(const std::vector<Valor> &valores) const {
    std::vector<Valor> pedidos;
    for (const Parte &parte : partes_)
        if (parte.valor) pedidos.push_back(*parte.valor);
    return std::is_permutation(pedidos.begin(), pedidos.end(), valores.begin(), valores.end());
}

void Comando::escrever(std::string &saida, const Valores &valores) const {
    for (const Parte &parte : partes_) {
        saida += parte.bytes;
        if (!parte.valor) continue;
        switch (*parte.valor) {
        case Valor::kNumero:
            saida.push_back(static_cast<char>(valores.numero));
            break;
        case Valor::kModulo:
            saida.push_back(static_cast<char>(valores.modulo));
            break;
        case Valor::kTamanho:
            porDoisBytes(saida, valores.dados.size() + parte.soma);
            break;
        case Valor::kLargura:
            porDoisBytes(saida, valores.largura);
            break;
        case Valor::kAltura:
            porDoisBytes(saida, valores.altura);
            break;
        case Valor::kDados:
            saida += valores.dados;
            break;
        }
    }
}

} // namespace zel::cupom
