// SPDX-License-Identifier: MIT
#include "comandos/ComandoComum.h"

#include "comandos/Biblioteca.h"
#include "comum/ArquivosDoCaixa.h"
#include "conferencia/ArquivoConfig.h"
#include "leitura/Arquivos.h"
#include "leitura/Codigos.h"
#include "leitura/Json.h"
#include "leitura/Terminal.h"
#include "leitura/Texto.h"

#include "ZEL_FelborFramework.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <sys/wait.h>
#include <unistd.h>

namespace zel::aplicativo {

namespace {

constexpr std::string_view kNomeDaConfig = arquivos::kConfig;
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

void juntarA(Json &json, const std::vector<Linha> &linhas) {
    for (const Linha &linha : linhas) {
        if (linha.nome.empty()) continue;
        if (!linha.json.empty())
            json.escrito(linha.nome, linha.json);
        else if (!linha.valor.empty())
            json.texto(linha.nome, linha.valor);
    }
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
        falhar(juntar({"não há ZEL_Framework.xml em ", argumento(diretorio.c_str()),
                       "\n    Remédio: se o caixa é outro, dê o diretório dele com --diretorio ou "
                       "ZEL_DIRETORIO; um caixa novo começa com zel config gravar --diretorio '",
                       trocar(argumento(diretorio.c_str()), "'", R"('\'')"),
                       R"(' 'EMIT\CNPJ' CNPJ)"}));
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
        recusar(kNomeDaConfig, codigo);
        return {};
    }
    if (!cria && !configLegivel(*diretorio)) return {};
    return diretorio;
}

std::optional<std::string> prepararDiretorioAParte(const Argumentos &argumentos) {
    std::fflush(nullptr);
    const pid_t filho = ::fork();
    if (filho == 0) std::exit(prepararDiretorio(argumentos) ? kLimpo : kComErros);
    int estado = 0;
    while (filho > 0 && ::waitpid(filho, &estado, 0) < 0 && errno == EINTR) {
    }
    if (filho < 0) falhar(juntar({"fork: ", std::strerror(errno)}));
    if (filho < 0 || !WIFEXITED(estado) || WEXITSTATUS(estado) != kLimpo) return {};
    std::string motivo;
    return escolherDiretorio(argumentos.diretorio, motivo);
}

void escreverLinhas(const Argumentos &argumentos, const std::vector<Linha> &linhas) {
    argumentos.json ? escreverJson(emJson(linhas)) : escrever(emTexto(linhas));
}

std::string emJson(const std::vector<Linha> &linhas) {
    Json json;
    json.abrirObjeto();
    juntarA(json, linhas);
    return json.fecharObjeto().escrito();
}

int recusar(std::string_view feito, int codigo, const std::vector<Linha> &mais) {
    if (!falaEmJson()) {
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
    juntarA(json, mais);
    escreverJson(json.fecharObjeto().escrito());
    return kComErros;
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
