// SPDX-License-Identifier: MIT
#include "Papel.h"

#include "Texto.h"

#include "zel_cupom.h"

#include <cerrno>
#include <cstring>
#include <memory>

namespace zel::aplicativo {

namespace {

struct Liberar {
    void operator()(zel_cupom *cupom) const { zel_cupom_liberar(cupom); }
};
using Cupom = std::unique_ptr<zel_cupom, Liberar>;

RespostaDoPapel resposta(const Cupom &cupom, int codigo) {
    if (codigo == ZEL_CUPOM_OK) return {codigo, {}, zel_cupom_enviados(cupom.get())};
    const int motivo = errno;
    RespostaDoPapel falha{codigo, zel_cupom_descrever(codigo), zel_cupom_enviados(cupom.get())};
    const std::string detalhe = zel_cupom_detalhe(cupom.get());
    if (codigo == ZEL_CUPOM_PERFIL)
        falha.descricao = juntar({detalhe, "; os que há: zel imprimir --perfis"});
    else if (!detalhe.empty())
        falha.descricao = detalhe; // begins with the description
    if (codigo == ZEL_CUPOM_ARQUIVO) falha.descricao += juntar({": ", std::strerror(motivo)});
    return falha;
}

int ler(const Cupom &cupom, const TextoDeCupom &texto) {
    if (!cupom) return ZEL_CUPOM_MEMORIA;
    const int codigo = zel_cupom_definir_papel(cupom.get(), texto.colunas, 0);
    if (codigo != ZEL_CUPOM_OK) return codigo;
    return zel_cupom_ler(cupom.get(), texto.texto.data(), texto.texto.size());
}

} // namespace

RespostaDoPapel gravarFigura(const TextoDeCupom &texto, const std::string &arquivo) {
    const Cupom cupom(zel_cupom_novo());
    int codigo = ler(cupom, texto);
    const auto gravar = arquivo.ends_with(".svg") ? zel_cupom_gravar_svg : zel_cupom_gravar_png;
    if (codigo == ZEL_CUPOM_OK) codigo = gravar(cupom.get(), arquivo.c_str());
    return resposta(cupom, codigo);
}

RespostaDoPapel imprimirCupom(const TextoDeCupom &texto, const std::string &perfil,
                              const std::string &destino, int espera) {
    const Cupom cupom(zel_cupom_novo());
    int codigo = ler(cupom, texto);
    if (codigo == ZEL_CUPOM_OK && !perfil.empty())
        codigo = zel_cupom_definir_perfil(cupom.get(), perfil.c_str());
    if (codigo == ZEL_CUPOM_OK) codigo = zel_cupom_imprimir(cupom.get(), destino.c_str(), espera);
    return resposta(cupom, codigo);
}

std::vector<std::string> nomesDosPerfis() {
    std::vector<std::string> nomes;
    for (int i = 0; zel_cupom_nome_do_perfil(i) != nullptr; ++i)
        nomes.emplace_back(zel_cupom_nome_do_perfil(i));
    return nomes;
}

} // namespace zel::aplicativo
