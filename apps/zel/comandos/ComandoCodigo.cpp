// SPDX-License-Identifier: MIT
// zel codigo: what a return code of the library means, and what to do.
#include "comandos/Comando.h"

#include "leitura/Codigos.h"
#include "leitura/Json.h"
#include "leitura/TabelaCodigos.h"
#include "leitura/Terminal.h"
#include "leitura/Texto.h"

#include <vector>

namespace zel::aplicativo {

namespace {

constexpr std::string_view kPrefixo = "ZEL_";

// By number, or by name with or without its prefix.
bool ehO(const LinhaCodigo &linha, std::string_view procurado) {
    return procurado == std::to_string(linha.codigo) || igualSemCaixa(procurado, linha.nome) ||
           igualSemCaixa(procurado, linha.nome.substr(kPrefixo.size()));
}

// What may have been meant: the code without its sign, or one that the authority answers.
std::string semCodigo(const std::string &palavra) {
    std::string texto = juntar({"a biblioteca não tem o código ", palavra});
    for (const LinhaCodigo &linha : kCodigos)
        if (ehO(linha, "-" + palavra))
            return juntar({texto, "; tem o -", palavra, ": zel codigo -", palavra});
    if (palavra.size() == 3 && soDigitos(palavra))
        return juntar({texto, "; os da SEFAZ (cStat, no retorno) estão em docs/envio.md, \"O caixa "
                              "olha a situação antes de imprimir\""});
    return texto + "; todos os que tem: zel codigo";
}

void escreverCodigos(const std::vector<const LinhaCodigo *> &linhas) {
    std::string texto;
    for (const LinhaCodigo *linha : linhas)
        texto += juntar({texto.empty() ? "" : "\n", std::to_string(linha->codigo), " ", linha->nome,
                         "\n    ", linha->significado, "\n    Remédio: ", linha->remedio, "\n"});
    escrever(texto);
}

void escreverCodigosEmJson(const std::vector<const LinhaCodigo *> &linhas) {
    Json json;
    json.abrirLista();
    for (const LinhaCodigo *linha : linhas)
        json.abrirObjeto()
            .numero("codigo", linha->codigo)
            .texto("nome", linha->nome)
            .texto("significado", linha->significado)
            .texto("remedio", linha->remedio)
            .fecharObjeto();
    escreverJson(json.fecharLista().escrito());
}

int codigo(const Argumentos &argumentos) {
    std::vector<const LinhaCodigo *> linhas;
    for (const LinhaCodigo &linha : kCodigos) {
        bool pedida = argumentos.palavras.empty();
        for (const std::string &palavra : argumentos.palavras)
            pedida = pedida || ehO(linha, palavra);
        if (pedida) linhas.push_back(&linha);
    }
    for (const std::string &palavra : argumentos.palavras) {
        bool existe = false;
        for (const LinhaCodigo *linha : linhas)
            existe = existe || ehO(*linha, palavra);
        if (!existe) return falhar(semCodigo(palavra));
    }
    argumentos.json ? escreverCodigosEmJson(linhas) : escreverCodigos(linhas);
    return kLimpo;
}

} // namespace

const Comando kCodigo = {
    "codigo",
    "codigo [NÚMERO | NOME]... [--json]",
    "Diz o que significa um código de retorno da biblioteca, e o que fazer.",
    "NÚMERO é o código, como -35; NOME é o do cabeçalho, como ZEL_JA_PAGO, com ou sem\n"
    "ZEL_, em maiúsculas ou minúsculas. Sem nenhum, mostra todos.\n",
    kJson,
    codigo,
};

} // namespace zel::aplicativo
