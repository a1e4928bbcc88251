// SPDX-License-Identifier: MIT
#include "secao/Conformidade.h"

#include "recusa/Recusa.h"
#include "secao/Moldes.h"
#include "secao/Parser.h"
#include "texto/Texto.h"
#include "texto/TextoXml.h"
#include "zel_felbor/codigos.h"

#include <algorithm>
#include <span>
#include <string>
#include <utility>

namespace zel {

namespace {

std::span<const ST_tagZEL> filhosDe(const ST_tagZEL &no) {
    return no.subTags ? std::span<const ST_tagZEL>(*no.subTags) : std::span<const ST_tagZEL>();
}

bool temTamanhoCerto(const ST_tagZEL &molde, const ST_tagZEL &entrada) {
    if (molde.tamanhoMinimo <= 0 && molde.tamanhoMaximo < 1) return true;
    if (!entrada.valor) return false;
    const std::size_t tamanho = comprimentoXml(*entrada.valor);
    return std::cmp_greater_equal(tamanho, molde.tamanhoMinimo) &&
           std::cmp_less_equal(tamanho, molde.tamanhoMaximo);
}

int recusarTamanho(const ST_tagZEL &molde, const ST_tagZEL &entrada) {
    const std::string_view valor = entrada.valor ? std::string_view(*entrada.valor) : "";
    return recusar(Motivo::kTagForaDoTamanho,
                   {.campo = molde.nome,
                    .dado = valor,
                    .tamanho = static_cast<long long>(comprimentoXml(valor)),
                    .minimo = molde.tamanhoMinimo,
                    .maximo = molde.tamanhoMaximo});
}

int recusarAusente(const ST_tagZEL &grupo, const ST_tagZEL &ausente) {
    return recusar(Motivo::kTagAusente, {.campo = ausente.nome, .lugar = grupo.nome});
}

int verificarFilhos(const ST_tagZEL &molde, ST_tagZEL &entrada);

int verificarNo(const ST_tagZEL &molde, ST_tagZEL &entrada) {
    // A group given empty is taken as it is: nothing in it, nothing to check.
    if (!filhosDe(entrada).empty()) {
        if (filhosDe(molde).empty())
            return recusar(Motivo::kGrupoNoLugarDeValor, {.campo = molde.nome});
        if (const int codigo = verificarFilhos(molde, entrada); codigo != ZEL_OK) return codigo;
    }
    if (!temTamanhoCerto(molde, entrada)) return recusarTamanho(molde, entrada);
    entrada.tamanhoMinimo = molde.tamanhoMinimo;
    entrada.tamanhoMaximo = molde.tamanhoMaximo;
    entrada.nome = molde.nome;
    return ZEL_OK;
}

int verificarFilhos(const ST_tagZEL &molde, ST_tagZEL &entrada) {
    const auto moldes = filhosDe(molde);
    auto atual = moldes.begin();
    for (ST_tagZEL &filho : *entrada.subTags) {
        for (; atual != moldes.end() && !igualSemCaixa(atual->nome, filho.nome); ++atual)
            if (atual->obrigatorio) return recusarAusente(molde, *atual);
        if (atual == moldes.end())
            return recusar(Motivo::kTagDesconhecida, {.campo = filho.nome, .lugar = molde.nome});
        if (const int codigo = verificarNo(*atual, filho); codigo != ZEL_OK) return codigo;
        ++atual;
    }
    atual = std::find_if(atual, moldes.end(), [](const ST_tagZEL &no) { return no.obrigatorio; });
    return atual == moldes.end() ? int{ZEL_OK} : recusarAusente(molde, *atual);
}

constexpr bool ehControle(char c) {
    return static_cast<unsigned char>(c) < 0x20;
}

// The text on one line, as a stored record is.
std::string semControles(std::string_view texto) {
    std::string limpo;
    limpo.reserve(texto.size());
    for (std::size_t i = 0; i < texto.size(); ++i) {
        const char c = texto[i];
        if (c == '\r' && texto.substr(i + 1).starts_with('\n')) continue; // the LF gives the blank
        if (!ehControle(c))
            limpo.push_back(c);
        else if (c == '\r' || c == '\n' || c == '\t')
            limpo.push_back(' ');
    }
    return limpo;
}

} // namespace

int fnVerificaConformidade_base_raiz(const ST_tagZEL &molde, ST_tagZEL &entrada) {
    if (filhosDe(entrada).empty()) return recusar(Motivo::kTextoSemElementos);
    return verificarFilhos(molde, entrada);
}

int verificarSecao(Secao secao, ST_tagZEL &raiz) {
    const auto &molde = moldeDaSecao(secao);
    return molde ? fnVerificaConformidade_base_raiz(*molde, raiz) : recusar(Motivo::kSemMoldes);
}

int fnVerificarFormatarTAG_ZEL(Secao secao, std::string_view texto, ST_tagZEL &resultado) {
    if (!moldeDaSecao(secao)) return recusar(Motivo::kSemMoldes);
    std::string limpo;
    if (std::any_of(texto.begin(), texto.end(), ehControle)) texto = limpo = semControles(texto);
    ST_tagZEL raiz = newST_tagZEL(false, nomeSecao(secao));
    if (const int codigo = fnParseToTag_ZEL(raiz, texto); codigo != ZEL_OK) return codigo;
    const int codigo = verificarSecao(secao, raiz);
    if (codigo == ZEL_OK) resultado = std::move(raiz);
    return codigo;
}

} // namespace zel
