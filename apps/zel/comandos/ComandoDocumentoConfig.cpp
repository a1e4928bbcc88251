// SPDX-License-Identifier: MIT
// zel documento config: the first zel-envio.toml of a till, with a certificate for trying.
#include "comandos/ComandoComum.h"

#include "comandos/ComandoDocumento.h"
#include "comum/ArquivosDoCaixa.h"

#include "comandos/Biblioteca.h"
#include "comum/Arquivo.h"
#include "conferencia/ArquivoConfig.h"
#include "leitura/Arquivos.h"
#include "leitura/Json.h"
#include "leitura/Terminal.h"
#include "leitura/Texto.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <sys/random.h>
#include <sys/stat.h>

namespace zel::aplicativo {

namespace {

// Beside the configuration, which names them.
const ArquivosDoEnvio kDeEnsaio{"certificado-ensaio.pfx", "senha-ensaio.txt", "csc-ensaio.txt"};

struct Gravacao {
    std::string arquivo, bytes;
};

std::string emTexto(const std::vector<RecusaDoEnvio> &recusas) {
    std::string texto;
    for (const RecusaDoEnvio &recusa : recusas) {
        texto += juntar({"\n    ", recusa.campo});
        if (!recusa.valor.empty()) texto += juntar({": \"", recusa.valor, "\""});
        texto += juntar({recusa.valor.empty() ? ": " : "; ", recusa.motivo});
    }
    return texto;
}

std::string senhaNova() {
    constexpr std::string_view kHexa = "0123456789abcdef";
    std::array<unsigned char, 16> bytes{};
    if (::getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) return {};
    std::string senha;
    for (const unsigned char byte : bytes)
        senha.append({kHexa[byte >> 4], kHexa[byte & 15]});
    return senha;
}

// The certificate of the till's company, its password, and the till's CSC where it has one.
RespostaDoEnvio fazerEnsaio(const ArquivoConfig &caixa, ArquivosDoEnvio &arquivos,
                            std::vector<Gravacao> &segredos) {
    constexpr std::size_t kMaiorNome = 40; // a name of 64 holds the CNPJ too
    const std::string &cnpj = caixa[R"(EMIT\CNPJ)"].valor;
    const std::string &csc = caixa[R"(CONFIGURACAO\TokenSefaz)"].valor;
    const std::string senha = senhaNova();
    const std::string nome = juntar({inicio(caixa[R"(EMIT\xNome)"].valor, kMaiorNome), ":", cnpj});
    RespostaDoEnvio feita = certificadoDeEnsaio(nome, cnpj, senha);
    if (!feita.feito()) return feita;
    arquivos = kDeEnsaio;
    segredos = {{arquivos.certificado, feita.bytes}, {arquivos.senha, senha + "\n"}};
    if (csc.empty())
        arquivos.csc.clear();
    else
        segredos.push_back({arquivos.csc, csc + "\n"});
    return feita;
}

std::string gravarTudo(const std::string &arquivo, const std::string &toml,
                       std::vector<Gravacao> segredos) {
    const std::string pasta = arquivo.substr(0, arquivo.rfind('/') + 1);
    for (Gravacao &segredo : segredos)
        segredo.arquivo.insert(0, pasta);
    const auto existe = [](const std::string &nome) {
        return olhar(nome).tipo != TipoArquivo::kNenhum;
    };
    for (const Gravacao &segredo : segredos)
        if (existe(segredo.arquivo))
            return juntar({argumento(segredo.arquivo.c_str()), ": já existe, e não é mudado"});
    if (existe(arquivo))
        return juntar({argumento(arquivo.c_str()),
                       ": já existe, e não é mudado; em outro lugar, com --saida ARQUIVO"});
    for (const Gravacao &segredo : segredos)
        if (std::string erro = gravarInteiro(segredo.arquivo, segredo.bytes, true); !erro.empty())
            return erro;
    return gravarInteiro(arquivo, toml);
}

} // namespace

int configurarEnvio(const Argumentos &argumentos) {
    if (argumentos.palavras.size() > 1) return usoErrado(kDocumento, "config não leva ARQUIVO");
    std::string motivo, bytes;
    const auto diretorio = escolherDiretorio(argumentos.diretorio, motivo);
    if (!diretorio) return falhar(motivo);
    const std::string doCaixa = std::string(*diretorio).append(arquivos::kConfig);
    if (lerArquivo(doCaixa, kMaximoConfig, bytes, motivo) != Leitura::kLido)
        return falhar(juntar({argumento(doCaixa.c_str()), ": ", motivo,
                              "\n    Remédio: dê o diretório do caixa com --diretorio"}));
    Relatorio relatorio;
    const ArquivoConfig caixa(bytes, relatorio);
    ArquivosDoEnvio arquivos;
    std::vector<Gravacao> segredos;
    if (argumentos.ensaio)
        if (const RespostaDoEnvio ensaio = fazerEnsaio(caixa, arquivos, segredos); !ensaio.feito())
            return recusarDoEnvio("config", argumento(doCaixa.c_str()), ensaio);
    const RespostaDoEnvio resposta = primeiraConfiguracaoDoEnvio(bytes, arquivos);
    if (!resposta.feito()) return recusarDoEnvio("config", argumento(doCaixa.c_str()), resposta);
    const std::string saida = argumentos.saida.empty()
                                  ? *diretorio + std::string(kNomeDaConfigDoEnvio)
                                  : argumentos.saida;
    if (const std::string erro = gravarTudo(saida, resposta.bytes, segredos); !erro.empty())
        return falhar(erro);
    escreverLinhas(argumentos, {{"resultado", "Resultado", "gravado"},
                                {"arquivo", "Arquivo", argumento(saida.c_str())},
                                {"certificado", "De ensaio", arquivos.certificado},
                                {"senha", "Senha dele em", arquivos.senha},
                                {"csc", "CSC do caixa em", arquivos.csc}});
    return kLimpo;
}

int recusarDoEnvio(std::string_view passo, std::string_view arquivo,
                   const RespostaDoEnvio &resposta) {
    if (!falaEmJson())
        return falhar(juntar({arquivo, ": ", resposta.descricao, emTexto(resposta.recusas)}));
    Json json;
    json.abrirObjeto()
        .texto("resultado", "recusado")
        .texto("passo", passo)
        .texto("arquivo", arquivo)
        .numero("codigo", resposta.codigo)
        .texto("motivo", resposta.descricao);
    if (!resposta.tipo.empty()) json.texto("tipo", resposta.tipo);
    if (!resposta.chave.empty()) json.texto("chave", resposta.chave);
    json.abrirLista("recusas");
    for (const RecusaDoEnvio &recusa : resposta.recusas)
        json.abrirObjeto()
            .texto("campo", recusa.campo)
            .texto("valor", recusa.valor)
            .texto("motivo", recusa.motivo)
            .fecharObjeto();
    escreverJson(json.fecharLista().fecharObjeto().escrito());
    return kComErros;
}

std::string gravarInteiro(const std::string &arquivo, std::string_view bytes, bool segredo) {
    const mode_t antes = segredo ? ::umask(S_IRWXG | S_IRWXO) : 0;
    const bool gravado = comum::substituirArquivo(arquivo, bytes);
    const int motivo = errno;
    if (segredo) ::umask(antes);
    return gravado ? "" : juntar({argumento(arquivo.c_str()), ": ", std::strerror(motivo)});
}

} // namespace zel::aplicativo
