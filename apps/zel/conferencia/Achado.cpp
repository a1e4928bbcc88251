// SPDX-License-Identifier: MIT
#include "conferencia/Achado.h"

#include "leitura/Json.h"
#include "leitura/Terminal.h"
#include "leitura/Texto.h"

#include <algorithm>

namespace zel::aplicativo {

namespace {

using enum Gravidade;

std::string contagem(std::size_t quantos, std::string_view um, std::string_view varios) {
    return juntar({std::to_string(quantos), " ", quantos == 1 ? um : varios});
}

// A value may hold line ends; a finding is one line.
std::string emUmaLinha(std::string texto) {
    std::replace(texto.begin(), texto.end(), '\n', ' ');
    return texto;
}

} // namespace

std::string_view nomeDaGravidade(Gravidade gravidade) {
    return gravidade == kErro ? "erro" : gravidade == kAviso ? "aviso" : "nota";
}

void Relatorio::registrar(Achado achado, Gravidade maximo) {
    const Gravidade gravidade = std::min(achado.id.tipo().gravidade, maximo);
    linhas_.push_back({gravidade, std::move(achado)});
}

std::size_t Relatorio::quantos(Gravidade gravidade) const {
    return static_cast<std::size_t>(std::ranges::count(linhas_, gravidade, &Linha::gravidade));
}

int Relatorio::codigoDeSaida() const {
    return quantos(kErro) > 0 ? 2 : quantos(kAviso) > 0 ? 1 : 0;
}

std::vector<const Relatorio::Linha *> Relatorio::emOrdem() const {
    std::vector<const Linha *> linhas;
    for (const Linha &linha : linhas_)
        linhas.push_back(&linha);
    std::ranges::stable_sort(linhas, std::ranges::greater{}, &Linha::gravidade);
    return linhas;
}

std::string Relatorio::remedioDe(const Achado &achado) const {
    constexpr std::string_view kGravar = "zel config gravar ";
    if (diretorio_.empty()) return achado.remedio;
    return trocar(achado.remedio, kGravar,
                  juntar({kGravar, "--diretorio '", trocar(diretorio_, "'", R"('\'')"), "' "}));
}

void Relatorio::escreverTexto(std::string_view alvo) const {
    std::string texto = juntar({"Conferência de ", alvo, "\n\n"});
    for (const Linha *linha : emOrdem()) {
        const Achado &achado = linha->achado;
        texto += juntar({nomeDaGravidade(linha->gravidade), ": ", emUmaLinha(achado.lugar)});
        if (achado.linha > 0) texto += juntar({" (linha ", std::to_string(achado.linha), ")"});
        texto += juntar({": ", emUmaLinha(achado.texto), " [", achado.id.tipo().id, "]\n"});
        if (!achado.remedio.empty())
            texto += juntar({"    ", trocar(remedioDe(achado), "\n", "\n    "), "\n"});
    }
    if (!linhas_.empty()) texto += "\n";
    texto += juntar({contagem(quantos(kErro), "erro", "erros"), ", ",
                     contagem(quantos(kAviso), "aviso", "avisos"), ", ",
                     contagem(quantos(kNota), "nota", "notas"), "\n"});
    escrever(texto);
}

void Relatorio::escreverJson(std::string_view alvo) const {
    Json json;
    json.abrirObjeto().texto("alvo", alvo);
    json.numero("erros", static_cast<long long>(quantos(kErro)))
        .numero("avisos", static_cast<long long>(quantos(kAviso)))
        .numero("notas", static_cast<long long>(quantos(kNota)));
    json.abrirLista("achados");
    for (const Linha *linha : emOrdem()) {
        const Achado &achado = linha->achado;
        json.abrirObjeto()
            .texto("id", achado.id.tipo().id)
            .texto("gravidade", nomeDaGravidade(linha->gravidade))
            .texto("lugar", achado.lugar)
            .numero("linha", static_cast<long long>(achado.linha))
            .texto("achado", achado.texto)
            .texto("remedio", remedioDe(achado))
            .fecharObjeto();
    }
    json.fecharLista().fecharObjeto();
    aplicativo::escreverJson(json.escrito());
}

} // namespace zel::aplicativo
