// SPDX-License-Identifier: MIT
#include "documento/Pagina.h"

#include "base/Decimal.h"
#include "base/Texto.h"
#include "comum/Ascii.h"

#include <algorithm>

namespace zel::envio {

namespace {

constexpr std::size_t kAvanco = 2;

// Bytes of the first characters.
std::size_t bytesDe(std::string_view utf8, std::size_t quantos) {
    std::size_t i = 0;
    while (i < utf8.size() && (quantos > 0 || (utf8[i] & 0xC0) == 0x80)) {
        if ((utf8[i] & 0xC0) != 0x80) --quantos;
        ++i;
    }
    return i;
}

// Control characters, those from U+0080 to U+009F included, would move the cursor or worse.
std::string semControle(std::string_view utf8) {
    std::string limpo;
    limpo.reserve(utf8.size());
    for (std::size_t i = 0; i < utf8.size(); ++i) {
        const auto byte = static_cast<unsigned char>(utf8[i]);
        const bool c1 =
            byte == 0xC2 && i + 1 < utf8.size() && static_cast<unsigned char>(utf8[i + 1]) < 0xA0;
        if (byte < 0x20 || byte == 0x7F || c1)
            limpo += ' ';
        else
            limpo += utf8[i];
        if (c1) ++i;
    }
    return aparar(limpo);
}

// Digits put into a form, "##.###-###".
std::string naForma(std::string_view digitos, std::string_view forma) {
    std::string texto;
    for (const char c : forma) {
        texto += c == '#' ? digitos.front() : c;
        if (c == '#') digitos.remove_prefix(1);
    }
    return texto;
}

} // namespace

void Pagina::linha(std::string_view texto, std::size_t recuo) {
    const std::string limpo = semControle(texto);
    std::size_t margem = recuo;
    for (std::string_view resto = limpo; !resto.empty(); margem = recuo + kAvanco) {
        std::size_t cabe = bytesDe(resto, kLargura - margem);
        if (cabe < resto.size()) {
            const std::size_t branco = resto.rfind(' ', cabe);
            if (branco != resto.npos && branco > 0) cabe = branco;
        }
        texto_ += std::string(margem, ' ');
        texto_ += resto.substr(0, cabe);
        texto_ += '\n';
        resto.remove_prefix(cabe);
        if (resto.starts_with(' ')) resto.remove_prefix(1);
    }
}

void Pagina::campo(std::string_view rotulo, std::string_view texto, std::size_t recuo) {
    if (!texto.empty()) linha(std::string(rotulo) + ": " + std::string(texto), recuo);
}

void Pagina::valor(std::string_view rotulo, std::string_view valor, std::size_t recuo) {
    const std::string limpo = semControle(rotulo), quanto = semControle(valor);
    if (quanto.empty()) return linha(limpo, recuo);
    const std::size_t ocupado = recuo + caracteres(limpo), largura = caracteres(quanto);
    if (ocupado + 1 + largura <= kLargura) {
        texto_ += std::string(recuo, ' ') + limpo;
        texto_ += std::string(kLargura - ocupado - largura, ' ') + quanto + '\n';
        return;
    }
    linha(limpo, recuo);
    if (largura > kLargura) return linha(quanto, recuo);
    texto_ += std::string(kLargura - largura, ' ') + quanto + '\n';
}

void Pagina::regua() {
    texto_ += std::string(kLargura, '-') + '\n';
}

void Pagina::secao() {
    if (!texto_.empty()) regua();
}

void Pagina::inteiro(std::string_view texto) {
    const std::string limpo = semControle(texto);
    for (std::string_view resto = limpo; !resto.empty();) {
        const std::size_t cabe = bytesDe(resto, kLargura);
        texto_ += resto.substr(0, cabe);
        texto_ += '\n';
        resto.remove_prefix(cabe);
    }
}

std::string numeroLido(std::string_view texto, int casas) {
    const auto lido = Decimal::ler(texto);
    auto escrito = lido ? lido->texto(casas, Decimal::kMaisCasas, 15) : std::nullopt;
    if (!escrito) return std::string(texto);
    std::size_t ponto = escrito->find('.');
    if (ponto == escrito->npos)
        ponto = escrito->size();
    else
        (*escrito)[ponto] = ',';
    for (; ponto > 3; ponto -= 3)
        escrito->insert(ponto - 3, 1, '.');
    return *escrito;
}

std::string momentoLido(std::string_view texto) {
    const bool ascii =
        std::all_of(texto.begin(), texto.end(), [](char c) { return c > 0 && c < 0x7F; });
    if (!ascii || texto.size() < 10 || texto[4] != '-' || texto[7] != '-')
        return std::string(texto);
    std::string lido = std::string(texto.substr(8, 2)) + '/' + std::string(texto.substr(5, 2)) +
                       '/' + std::string(texto.substr(0, 4));
    if (texto.size() >= 19) lido += ' ' + std::string(texto.substr(11, 8));
    if (texto.size() > 19) lido += ' ' + std::string(texto.substr(19));
    return lido;
}

std::string chaveLida(std::string_view chave) {
    if (!soDigitos(chave)) return std::string(chave);
    std::string lida;
    for (std::size_t i = 0; i < chave.size(); ++i) {
        if (i > 0 && i % 4 == 0) lida += ' ';
        lida += chave[i];
    }
    return lida;
}

std::string cnpjLido(std::string_view digitos) {
    if (soDigitos(digitos) && digitos.size() == 14)
        return "CNPJ " + naForma(digitos, "##.###.###/####-##");
    if (soDigitos(digitos) && digitos.size() == 11)
        return "CPF " + naForma(digitos, "###.###.###-##");
    return std::string(digitos);
}

} // namespace zel::envio
