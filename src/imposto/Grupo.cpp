// SPDX-License-Identifier: MIT
#include "imposto/Grupo.h"

#include "config/Registro.h"
#include "recusa/Recusa.h"
#include "texto/Numero.h"
#include "texto/Texto.h"
#include "texto/TextoXml.h"

#include <string>

namespace zel {

namespace {

Parcelas parcelasDe(const ValoresItem &valores) {
    return {.base = lerNumero(valores.base),
            .aliquota = lerNumero(valores.aliquota),
            .quantidade = lerNumero(valores.quantidade)};
}

// A given content in plain characters, before it is formatted.
std::string conteudoDado(const Elemento &elemento, const Preset *preset,
                         const ValoresItem &valores) {
    switch (elemento.formato) {
    case Formato::kQuantidade:
        return textoSimples(valores.quantidade);
    case Formato::kAliquota:
        return std::string(preset ? preset->valor(elemento.nome) : valores.aliquota);
    default:
        if (preset) return std::string(preset->valor(elemento.nome));
        return textoSimples(valorConfig(*elemento.chave));
    }
}

std::string formatar(const Elemento &elemento, const std::string &conteudo) {
    switch (elemento.formato) {
    case Formato::kCodigo:
        return formatarInteiro(lerInteiro(conteudo), elemento.largura);
    case Formato::kDecimal:
    case Formato::kAliquota:
        return formatarMoeda(lerNumero(conteudo));
    case Formato::kValor:
        if (!conteudo.empty()) return escaparXml(trocarVirgula(conteudo));
        return formatarMoeda(0);
    case Formato::kTexto:
        return escaparXml(conteudo);
    default:
        return conteudo.empty() ? "0" : escaparXml(conteudo);
    }
}

// The caller refuses the item, or takes it all the same.
void recusarSemValor(const Grupo &grupo, const Elemento &elemento, bool doPreset) {
    Campo<kMaiorCaminhoDeChave> caminho = elemento.nome;
    if (!doPreset && elemento.chave) caminho = caminhoDa(*elemento.chave);
    recusar(Motivo::kImpostoSemValor, {.campo = caminho, .lugar = grupo.nome});
}

} // namespace

const Elemento *Grupo::elemento(std::string_view procurado) const {
    for (const auto &candidato : lista())
        if (candidato.nome == procurado) return &candidato;
    return nullptr;
}

bool Grupo::soma(std::string_view elemento) const {
    return std::ranges::any_of(lista(), [&](const Elemento &um) {
        return um.nome == elemento || um.nomeChave == elemento;
    });
}

double lerNumero(std::string_view texto) {
    return lerDecimal(trocarVirgula(texto));
}

const Grupo *procurarGrupo(std::span<const Grupo> grupos, std::string_view nome,
                           std::optional<Fonte> fonte) {
    for (const auto &grupo : grupos) {
        if (!igualSemCaixa(grupo.nome, nome)) continue;
        if (!fonte || !grupo.fonte || grupo.fonte == fonte) return &grupo;
    }
    return nullptr;
}

std::optional<Selecao> selecionarGrupo(std::span<const Grupo> grupos, const Preset &preset) {
    if (!preset.grupo.empty())
        return Selecao{procurarGrupo(grupos, preset.grupo, Fonte::kConfTemp), Fonte::kConfTemp};
    for (const auto &grupo : grupos)
        if (grupo.escolha && !valorConfig(*grupo.escolha).empty())
            return Selecao{&grupo, Fonte::kZelXml};
    return {};
}

std::optional<ST_tagZEL> montarGrupo(const Grupo &grupo, const Preset *preset,
                                     const ValoresItem &valores) {
    Parcelas parcelas = parcelasDe(valores);
    std::array<std::string, std::tuple_size_v<decltype(Grupo::elementos)>> conteudos;
    for (std::size_t i = 0; i < grupo.quantidade; ++i) {
        const Elemento &elemento = grupo.elementos[i];
        if (elemento.formato == Formato::kCalculado) continue;
        conteudos[i] = conteudoDado(elemento, preset, valores);
        if (elemento.exigido && conteudos[i].empty()) {
            recusarSemValor(grupo, elemento, preset != nullptr);
            return {};
        }
        if (elemento.formato == Formato::kAliquota) {
            parcelas.aliquota = lerNumero(conteudos[i]);
            parcelas.temAliquota = !conteudos[i].empty();
        }
        if (elemento.parcela) parcelas.*elemento.parcela = lerNumero(conteudos[i]);
    }
    ST_tagZEL tag(grupo.nome);
    for (std::size_t i = 0; i < grupo.quantidade; ++i) {
        const Elemento &elemento = grupo.elementos[i];
        if (elemento.presente && !elemento.presente(parcelas)) continue;
        tag.addSubTag(elemento.nome, elemento.formato == Formato::kCalculado
                                         ? formatarMoeda(elemento.formula(parcelas))
                                         : formatar(elemento, conteudos[i]));
    }
    return tag;
}

void remontarGrupo(const Grupo &grupo, ST_tagZEL &guardado, const ValoresItem &valores,
                   Mudancas &mudancas) {
    if (!guardado.subTags) return;
    Parcelas parcelas = parcelasDe(valores);
    for (const auto &filho : *guardado.subTags) {
        const Elemento *elemento = grupo.elemento(filho.nome);
        if (elemento && elemento->parcela)
            parcelas.*elemento->parcela = lerNumero(filho.valor.value_or(""));
    }
    for (auto &filho : *guardado.subTags) {
        const Elemento *elemento = grupo.elemento(filho.nome);
        if (elemento && elemento->formato == Formato::kCalculado)
            mudancas.trocarValor(filho, formatarMoeda(elemento->formula(parcelas)));
    }
}

} // namespace zel
