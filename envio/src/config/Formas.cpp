// SPDX-License-Identifier: MIT
#include "config/Formas.h"

#include "base/Xml.h"

#include <array>

namespace zel::envio {

namespace {

struct Forma {
    std::string_view codigo, nome;
};

// What the fiscal library sells by, without accents. Manual de Orientação do Contribuinte 6.0,
// Anexo I, group YA.
constexpr std::array<Forma, 10> kFormas{{{"01", "DINHEIRO"},
                                         {"02", "CHEQUE"},
                                         {"03", "CARTAO DE CREDITO"},
                                         {"04", "CARTAO DE DEBITO"},
                                         {"05", "CREDITO LOJA"},
                                         {"10", "VALE ALIMENTACAO"},
                                         {"11", "VALE REFEICAO"},
                                         {"12", "VALE PRESENTE"},
                                         {"13", "VALE COMBUSTIVEL"},
                                         {"99", "OUTROS"}}};

// Letters of ISO-8859-1 from 0xC0 on; the small ones stand 32 further.
constexpr std::string_view kSemAcento = "AAAAAAACEEEEIIIIDNOOOOO*OUUUUYTS";

} // namespace

std::string semAcentos(std::string_view utf8) {
    std::string texto = latin1DeUtf8(utf8).value_or("");
    for (char &c : texto) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0xC0) c = kSemAcento[byte & 0x1F];
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    }
    return texto;
}

std::string_view formaDoCaixa(std::string_view nome) {
    const std::string procurado = semAcentos(nome);
    for (const auto &forma : kFormas)
        if (procurado == forma.codigo || procurado == forma.nome) return forma.codigo;
    return {};
}

std::string formasDoCaixa() {
    std::string lista;
    for (const auto &forma : kFormas)
        lista +=
            (lista.empty() ? "" : ", ") + std::string(forma.codigo) + " " + std::string(forma.nome);
    return lista;
}

} // namespace zel::envio
