// SPDX-License-Identifier: MIT
// Receipts in mark-up, read and laid out; the first byte chooses the paper, the second whether
// there is a logo.
#include "Alvo.h"

#include "Leitor.h"
#include "apoio/PaginaInteira.h"

#include <optional>

using namespace zel::cupom;

namespace {

bool semControles(std::string_view texto) {
    return std::none_of(texto.begin(), texto.end(), [](char c) {
        const auto byte = static_cast<unsigned char>(c);
        return byte < 0x20 || (byte >= 0x7F && byte < 0xA0);
    });
}

// What a renderer may rely on; the letters are collected.
struct Conferencia {
    std::string letras;

    void operator()(const Linha &linha) {
        for (const Trecho &trecho : linha.trechos) {
            exigir(!trecho.texto.empty() && semControles(trecho.texto));
            letras += trecho.texto;
        }
    }
    void operator()(const Qr &qr) const {
        exigir(!qr.conteudo.empty() && qr.conteudo.size() <= kMaiorQr);
        exigir(qr.modulo >= kMenorModulo && qr.modulo <= kMaiorModulo);
    }
    void operator()(const Avanco &avanco) const {
        exigir(avanco.linhas >= 1 && avanco.linhas <= kMaiorAvanco);
    }
    void operator()(const Corte &) const {}
    void operator()(const Logotipo &) const {}
};

// Without a marker, all that can be printed is there, line by line.
void conferirTextoPuro(std::string_view texto, const Cupom &cupom, std::string_view letras) {
    std::string esperado(texto);
    std::replace(esperado.begin(), esperado.end(), '\t', ' ');
    std::erase_if(esperado, [](char c) { return c != '\n' && !semControles({&c, 1}); });
    auto linhas = static_cast<std::size_t>(std::count(esperado.begin(), esperado.end(), '\n'));
    if (!esperado.empty() && esperado.back() != '\n') ++linhas;
    exigir(cupom.blocos.size() == linhas);
    std::erase(esperado, '\n');
    exigir(letras == esperado);
}

} // namespace

void jogar(std::string_view texto) {
    const Papel &papel = kPapeis[static_cast<std::size_t>(tirarNumero(texto, kPapeis.size()))];
    const bool comLogotipo = tirarNumero(texto, 2) == 1;
    const Cupom cupom = ler(texto);
    Conferencia conferencia;
    for (const Bloco &bloco : cupom.blocos)
        std::visit(conferencia, bloco);
    exigir(conferencia.letras.size() <= texto.size());
    if (texto.find('<') == texto.npos) conferirTextoPuro(texto, cupom, conferencia.letras);

    const TamanhoLogotipo logotipo{comLogotipo ? papel.larguraUtil : 0, comLogotipo ? 100 : 0};
    if (const std::optional<Pagina> pagina = paginar(cupom, papel, logotipo))
        exigir(faltaNa(*pagina, conferencia.letras).empty());
}
