// SPDX-License-Identifier: MIT
// HTML made of literal templates and of texts that become part of it here alone: escaped, without
// control characters, and with the numbers of persons masked.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

namespace zel::envio {

// UTF-8 with every CPF (11 digits by themselves, with or without their signs) as ***.456.789-**.
std::string semCpf(std::string_view texto);
// Any document of a person with its middle alone.
std::string soMeio(std::string_view documento);

class Html {
public:
    class Lugar;

    Html() = default;
    const std::string &bytes() const { return bytes_; }
    bool vazio() const { return bytes_.empty(); }
    Html &operator+=(const Html &outro);

    // `molde` has a "{}" for each place, in their order.
    static Html encher(std::string_view molde, std::initializer_list<Lugar> lugares);

private:
    explicit Html(std::string bytes) : bytes_(std::move(bytes)) {}
    std::string bytes_;
};

// What stands in a place: a text, a number, or HTML that was made in this way.
class Html::Lugar {
public:
    Lugar(std::string_view texto);
    Lugar(const std::string &texto) : Lugar(std::string_view(texto)) {}
    Lugar(const char *texto) : Lugar(std::string_view(texto)) {}
    Lugar(std::int64_t numero) : bytes_(std::to_string(numero)) {}
    Lugar(const Html &html) : bytes_(html.bytes()) {}
    const std::string &bytes() const { return bytes_; }

private:
    std::string bytes_;
};

// A template: a literal alone, with as many places as there are values.
template <std::size_t N>
class Molde {
public:
    template <std::size_t Tamanho>
    consteval Molde(const char (&texto)[Tamanho]) : texto_(texto, Tamanho - 1) {
        std::size_t lugares = 0;
        for (std::size_t i = texto_.find("{}"); i != texto_.npos; i = texto_.find("{}", i + 2))
            ++lugares;
        if (lugares != N) throw "as many places as values";
    }
    std::string_view texto() const { return texto_; }

private:
    std::string_view texto_;
};

template <class... Valores>
Html encher(const Molde<sizeof...(Valores)> &molde, const Valores &...valores) {
    return Html::encher(molde.texto(), {Html::Lugar(valores)...});
}

} // namespace zel::envio
