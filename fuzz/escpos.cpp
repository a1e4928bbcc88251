// SPDX-License-Identifier: MIT
// Receipts as printer bytes. The first byte chooses a profile of the library; from 128 on, the
// profile is what stands before the first byte 0. The second byte chooses the columns and
// whether there is a logo; the rest is the receipt in mark-up.
#include "Alvo.h"

#include "EscPos.h"
#include "Leitor.h"
#include "Pagina.h"

#include <algorithm>
#include <iterator>

using namespace zel::cupom;

namespace {

// What the renderer relies on.
void conferirPerfil(const Perfil &perfil) {
    exigir(!perfil.nome.empty() && perfil.pagina != nullptr && !perfil.fontes.empty());
    for (const FonteDoPerfil &fonte : perfil.fontes)
        exigir(fonte.colunas > 0);
    exigir(perfil.milimetros > 0 && perfil.pontos >= 8 && perfil.pontos <= kMaisPontos);
    exigir(perfil.maiorModulo >= kMenorModulo && perfil.maiorModulo <= kMaiorModulo);
    exigir(perfil.maiorAvanco >= 1 && perfil.maiorAvanco <= kMaiorAvanco);
    exigir(perfil.numeroDaPagina >= 0 && perfil.numeroDaPagina <= 255);
}

std::optional<Perfil> lerQualquer(std::string_view texto) {
    std::string motivo;
    std::optional<Perfil> perfil = lerPerfil(texto, motivo);
    exigir(perfil.has_value() == motivo.empty());
    if (perfil) conferirPerfil(*perfil);
    return perfil;
}

// A dialect that feeds by line ends alone prints text without mark-up as it stands, but for the
// blanks and line ends of lines that are too long.
void conferirTextoPuro(const Cupom &cupom, const Perfil &perfil, std::string_view bytes) {
    const auto letra = [](char c) { return c != ' ' && c != '\n'; };
    std::string esperado = "\x1B@\x1Bt\x02", impresso;
    std::copy_if(bytes.begin(), bytes.end(), std::back_inserter(impresso), letra);
    for (const Bloco &bloco : cupom.blocos) {
        for (const Trecho &trecho : std::get<Linha>(bloco).trechos)
            for (const char c : trecho.texto)
                if (letra(c)) esperado += byteDe(*perfil.pagina, c);
    }
    exigir(impresso == esperado);
    exigir(static_cast<std::size_t>(std::count(bytes.begin(), bytes.end(), '\n')) >=
           cupom.blocos.size());
}

} // namespace

void jogar(std::string_view texto) {
    const auto embutidos = perfisEmbutidos();
    const auto byte = static_cast<std::size_t>(tirarNumero(texto, 256));
    const bool embutido = byte < 128;
    const PerfilEmbutido &escolhido = embutidos[byte % embutidos.size()];
    const auto perfil = lerQualquer(embutido ? escolhido.texto : tirarAte(texto, '\0'));
    exigir(perfil || !embutido);
    if (!perfil) return;
    const int escolha = tirarNumero(texto, 4);
    const Cupom cupom = ler(texto);
    const ImagemCinza logotipo{8, 2, std::vector<std::uint8_t>(16, 0)};
    const auto bytes = gerarEscPos(cupom, {*perfil, escolha % 2 == 0 ? 48 : 42,
                                           escolha < 2 ? &logotipo : nullptr, escolha == 3});
    if (!bytes) return;
    // Rows of dots are the most that paper costs; beside them each byte may change the style.
    const auto pontos = static_cast<std::size_t>(perfil->pontos);
    exigir(bytes->size() <=
           kMaiorComando * 8 * (texto.size() + 8) + kMaiorAltura * (pontos / 8 + 1));
    const bool puro = texto.find('<') == texto.npos && escolha != 3;
    if (puro && embutido && escolhido.nome == "bematech-esc-bema")
        conferirTextoPuro(cupom, *perfil, *bytes);
}
