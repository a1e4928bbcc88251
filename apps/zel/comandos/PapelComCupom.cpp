// SPDX-License-Identifier: MIT
#include "comandos/Papel.h"

#include "leitura/Texto.h"

#include "zel_cupom.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iterator>
#include <memory>

namespace zel::aplicativo {

namespace {

struct Liberar {
    void operator()(zel_cupom *cupom) const { zel_cupom_liberar(cupom); }
};
using Cupom = std::unique_ptr<zel_cupom, Liberar>;

// The library describes without accents; those of its texts that need some, as the command says
// them.
struct ComAcentos {
    int codigo;
    std::string_view texto;
};
constexpr ComAcentos kComAcentos[] = {
    {ZEL_CUPOM_MEMORIA, "falta memória"},
    {ZEL_CUPOM_FONTE, "nenhuma fonte monoespaçada: arquivo ausente, ilegível ou de outro tipo"},
    {ZEL_CUPOM_LOGOTIPO, "logotipo ilegível, grande demais ou que não é PNG"},
    {ZEL_CUPOM_ARQUIVO, "o arquivo não pode ser gravado"},
    {ZEL_CUPOM_AUSENTE, "a impressora não foi encontrada"},
    {ZEL_CUPOM_RECUSADA, "a impressora recusa a ligação: em uso, sem permissão ou sem serviço"},
    {ZEL_CUPOM_TEMPO, "a impressora não respondeu ou parou de receber"},
    {ZEL_CUPOM_SEM_PAPEL, "a impressora está sem papel"},
    {ZEL_CUPOM_TAMPA, "a tampa da impressora está aberta"},
    {ZEL_CUPOM_FORA_DE_LINHA, "a impressora está fora de linha"},
};

std::string_view descrever(int codigo) {
    const auto linha = std::ranges::find(kComAcentos, codigo, &ComAcentos::codigo);
    return linha != std::end(kComAcentos) ? linha->texto : zel_cupom_descrever(codigo);
}

std::string estadoDe(const Cupom &cupom) {
    const int estado = zel_cupom_estado(cupom.get());
    if (estado == 0) return "não informado";
    return std::string(estado == ZEL_CUPOM_OK ? "pronta" : descrever(estado));
}

RespostaDoPapel resposta(const Cupom &cupom, int codigo) {
    const std::size_t enviados = zel_cupom_enviados(cupom.get());
    if (codigo == ZEL_CUPOM_OK) return {codigo, {}, enviados, estadoDe(cupom)};
    const int motivo = errno;
    RespostaDoPapel falha{codigo, std::string(descrever(codigo)), enviados, estadoDe(cupom)};
    const std::string_view detalhe = zel_cupom_detalhe(cupom.get());
    const std::string_view descricao = zel_cupom_descrever(codigo);
    if (codigo == ZEL_CUPOM_PERFIL)
        falha.descricao = juntar({detalhe, "; os que há: zel imprimir --perfis"});
    else if (detalhe.starts_with(descricao))
        falha.descricao += detalhe.substr(descricao.size());
    else if (!detalhe.empty())
        falha.descricao = detalhe;
    if (codigo == ZEL_CUPOM_ARQUIVO) falha.descricao += juntar({": ", std::strerror(motivo)});
    return falha;
}

int ler(const Cupom &cupom, const TextoDeCupom &texto) {
    if (!cupom) return ZEL_CUPOM_MEMORIA;
    const int codigo = zel_cupom_definir_papel(cupom.get(), texto.colunas, 0);
    if (codigo != ZEL_CUPOM_OK) return codigo;
    return zel_cupom_ler(cupom.get(), texto.texto.data(), texto.texto.size());
}

RespostaDoPapel gravarCom(int (*gravar)(zel_cupom *, const char *), const TextoDeCupom &texto,
                          const std::string &arquivo) {
    const Cupom cupom(zel_cupom_novo());
    int codigo = ler(cupom, texto);
    if (codigo == ZEL_CUPOM_OK) codigo = gravar(cupom.get(), arquivo.c_str());
    return resposta(cupom, codigo);
}

} // namespace

RespostaDoPapel gravarFigura(const TextoDeCupom &texto, const std::string &arquivo) {
    if (arquivo.ends_with(".pdf")) return gravarPdf(texto, arquivo);
    return gravarCom(arquivo.ends_with(".svg") ? zel_cupom_gravar_svg : zel_cupom_gravar_png, texto,
                     arquivo);
}

RespostaDoPapel gravarPdf(const TextoDeCupom &texto, const std::string &arquivo) {
    return gravarCom(zel_cupom_gravar_pdf, texto, arquivo);
}

RespostaDoPapel imprimirCupom(const TextoDeCupom &texto, const Impressao &impressao) {
    const Cupom cupom(zel_cupom_novo());
    int codigo = ler(cupom, texto);
    if (codigo == ZEL_CUPOM_OK && !impressao.perfil.empty())
        codigo = zel_cupom_definir_perfil(cupom.get(), impressao.perfil.c_str());
    if (codigo == ZEL_CUPOM_OK)
        codigo = zel_cupom_definir_impressao(cupom.get(), impressao.figura ? ZEL_CUPOM_FIGURA
                                                                           : ZEL_CUPOM_LETRAS);
    if (codigo == ZEL_CUPOM_OK)
        codigo = zel_cupom_imprimir(cupom.get(), impressao.destino.c_str(), impressao.espera);
    return resposta(cupom, codigo);
}

std::vector<std::string> nomesDosPerfis() {
    std::vector<std::string> nomes;
    for (int i = 0; zel_cupom_nome_do_perfil(i) != nullptr; ++i)
        nomes.emplace_back(zel_cupom_nome_do_perfil(i));
    return nomes;
}

} // namespace zel::aplicativo
