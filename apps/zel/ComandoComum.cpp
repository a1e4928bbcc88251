// SPDX-License-Identifier: MIT
#include "ComandoComum.h"

#include "ArquivoConfig.h"
#include "Arquivos.h"
#include "Biblioteca.h"
#include "Codigos.h"
#include "Json.h"
#include "Terminal.h"
#include "Texto.h"

#include "ZEL_FelborFramework.h"

#include <algorithm>

namespace zel::aplicativo {

namespace {

constexpr std::string_view kNomeDaConfig = "ZEL_Framework.xml";
constexpr std::size_t kLarguraDoRotulo = 18;

std::string emTexto(const std::vector<Linha> &linhas) {
    std::string texto;
    for (const Linha &linha : linhas) {
        if (linha.valor.empty()) continue;
        const std::size_t brancos =
            kLarguraDoRotulo - std::min(comprimento(linha.rotulo), kLarguraDoRotulo - 1);
        texto += juntar({linha.rotulo, ":", std::string(brancos, ' '), linha.valor, "\n"});
    }
    return texto;
}

void emJson(Json &json, const std::vector<Linha> &linhas) {
    for (const Linha &linha : linhas)
        if (!linha.valor.empty()) json.texto(linha.nome, linha.valor);
}

std::string recusa(std::string_view feito, int codigo) {
    const LinhaCodigo *linha = procurarCodigo(codigo);
    std::string texto = juntar({feito, ": código ", std::to_string(codigo)});
    if (linha == nullptr) return texto;
    return juntar(
        {texto, " ", linha->nome, "\n    ", linha->significado, "\n    Remédio: ", linha->remedio});
}

// Where the file cannot be read the library's reading functions answer defaults: that is said
// instead.
bool configLegivel(const std::string &diretorio) {
    std::string bytes, motivo;
    switch (lerArquivo(juntar({diretorio, kNomeDaConfig}), kMaximoConfig, bytes, motivo)) {
    case Leitura::kInexistente:
        falhar(juntar({"não há ZEL_Framework.xml em ", argumento(diretorio.c_str())}));
        return false;
    case Leitura::kFalha:
        falhar(juntar({argumento(diretorio.c_str()), kNomeDaConfig, ": ", motivo,
                       "\n    Remédio: rode o zel com o usuário do caixa."}));
        return false;
    case Leitura::kLido:
        break;
    }
    const std::string_view falta = faltaDaRaiz(bytes);
    if (!falta.empty())
        falhar(juntar({argumento(diretorio.c_str()), kNomeDaConfig, ": ", falta,
                       "\n    Remédio: ", remedioDaRaiz()}));
    return falta.empty();
}

} // namespace

std::optional<std::string> prepararDiretorio(const Argumentos &argumentos, bool cria) {
    std::string motivo;
    auto diretorio = escolherDiretorio(argumentos.diretorio, motivo);
    if (!diretorio) {
        falhar(motivo);
        return {};
    }
    if (!cria && !temConfig(*diretorio) && !configLegivel(*diretorio)) return {};
    // The library first, for it completes what a dead process left.
    int codigo = ZEL_OK;
    if (!lerConfig(R"(IDE\nNF)", codigo)) {
        falharComCodigo(kNomeDaConfig, codigo);
        return {};
    }
    if (!cria && !configLegivel(*diretorio)) return {};
    return diretorio;
}

void escreverLinhas(const Argumentos &argumentos, const std::vector<Linha> &linhas) {
    if (!argumentos.json) return escrever(emTexto(linhas));
    Json json;
    json.abrirObjeto();
    emJson(json, linhas);
    escreverJson(json.fecharObjeto().escrito());
}

int recusar(const Argumentos &argumentos, std::string_view feito, int codigo,
            const std::vector<Linha> &mais) {
    if (!argumentos.json) {
        falhar(recusa(feito, codigo));
        escrever(stderr, emTexto(mais));
        return kComErros;
    }
    Json json;
    json.abrirObjeto()
        .texto("resultado", "recusado")
        .texto("passo", feito)
        .numero("codigo", codigo);
    if (const LinhaCodigo *linha = procurarCodigo(codigo); linha != nullptr)
        json.texto("nome", linha->nome)
            .texto("significado", linha->significado)
            .texto("remedio", linha->remedio);
    emJson(json, mais);
    escreverJson(json.fecharObjeto().escrito());
    return kComErros;
}

int falharComCodigo(std::string_view lugar, int codigo) {
    return falhar(recusa(lugar, codigo));
}

std::string comando(const Argumentos &argumentos, std::string_view resto) {
    if (argumentos.diretorio.empty()) return juntar({"zel ", resto});
    const std::string diretorio = trocar(argumento(argumentos.diretorio.c_str()), "'", R"('\'')");
    return juntar({"zel ", resto, " --diretorio '", diretorio, "'"});
}

std::optional<std::string> textoDado(std::string_view opcao, const std::string &bytes) {
    auto latin1 = latin1DeUtf8(argumento(bytes.c_str()));
    if (!latin1) falhar(juntar({opcao, ": o texto tem um caracter que o ISO-8859-1 não tem"}));
    return latin1;
}

} // namespace zel::aplicativo
