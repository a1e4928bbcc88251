// SPDX-License-Identifier: MIT
#include "Html.h"

#include "base/Xml.h"
#include "comum/Ascii.h"

#include <algorithm>

namespace zel::envio {

namespace {

constexpr std::string_view kCpfEscrito = "ddd.ddd.ddd-dd";
constexpr std::string_view kCpfCorrido = "ddddddddddd";

bool tem(std::string_view texto, std::string_view forma) {
    return texto.size() >= forma.size() &&
           std::equal(forma.begin(), forma.end(), texto.begin(),
                      [](char f, char c) { return f == 'd' ? ehDigito(c) : f == c; });
}

// Length of the CPF that begins there; 0 when none does.
std::size_t cpfEm(std::string_view texto, std::size_t i) {
    if (i > 0 && ehDigito(texto[i - 1])) return 0;
    for (const auto forma : {kCpfCorrido, kCpfEscrito}) {
        const std::size_t depois = i + forma.size();
        if (tem(texto.substr(i), forma) && (depois >= texto.size() || !ehDigito(texto[depois])))
            return forma.size();
    }
    return 0;
}

void escapar(std::string_view texto, std::string &saida) {
    for (const char c : texto)
        switch (c) {
        case '&':
            saida += "&amp;";
            break;
        case '<':
            saida += "&lt;";
            break;
        case '>':
            saida += "&gt;";
            break;
        case '"':
            saida += "&quot;";
            break;
        case '\'':
            saida += "&#39;";
            break;
        default:
            saida += static_cast<unsigned char>(c) < ' ' || c == '\x7f' ? ' ' : c;
        }
}

} // namespace

std::string semCpf(std::string_view texto) {
    std::string saida;
    saida.reserve(texto.size());
    for (std::size_t i = 0; i < texto.size();) {
        const std::size_t tamanho = cpfEm(texto, i);
        if (tamanho == 0) {
            saida += texto[i++];
            continue;
        }
        std::string digitos(texto.substr(i, tamanho));
        std::erase_if(digitos, [](char c) { return !ehDigito(c); });
        saida += "***." + digitos.substr(3, 3) + '.' + digitos.substr(6, 3) + "-**";
        i += tamanho;
    }
    return saida;
}

std::string soMeio(std::string_view documento) {
    if (tem(documento, kCpfCorrido) && documento.size() == kCpfCorrido.size())
        return semCpf(documento);
    const std::size_t ponta = (documento.size() + 2) / 3;
    if (documento.size() < 3) return std::string(documento.size(), '*');
    return "***" + std::string(documento.substr(ponta, documento.size() - 2 * ponta)) + "***";
}

Html &Html::operator+=(const Html &outro) {
    bytes_ += outro.bytes_;
    return *this;
}

Html Html::encher(std::string_view molde, std::initializer_list<Lugar> lugares) {
    std::string bytes;
    for (const Lugar &lugar : lugares) {
        const std::size_t onde = molde.find("{}");
        bytes.append(molde.substr(0, onde)).append(lugar.bytes());
        molde.remove_prefix(onde + 2);
    }
    return Html(bytes.append(molde));
}

// Names come from files of the till: what is no UTF-8 is Latin-1 there.
Html::Lugar::Lugar(std::string_view texto) {
    escapar(semCpf(ehUtf8(texto) ? std::string(texto) : utf8DeLatin1(texto)), bytes_);
}

} // namespace zel::envio
