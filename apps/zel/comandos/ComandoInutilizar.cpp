// SPDX-License-Identifier: MIT
// zel inutilizar: a request to void numbers that no document has.
#include "comandos/ComandoComum.h"

#include "comandos/Biblioteca.h"
#include "comum/ArquivosDoCaixa.h"
#include "leitura/Pedido.h"
#include "leitura/Terminal.h"
#include "leitura/Texto.h"

#include "ZEL_FelborFramework.h"

namespace zel::aplicativo {

namespace {

constexpr std::size_t kMaiorJustificativa = 60;

// A range that reaches the numbers in use, or those that the next documents get.
std::string avisoDaFaixa(const std::string &final, const std::string &serie) {
    const std::string ultimo = configuracao(R"(IDE\nNF)");
    if (lerInteiro(serie) != lerInteiro(configuracao(R"(IDE\Serie)")) ||
        lerInteiro(final) < lerInteiro(ultimo))
        return {};
    return juntar({"a faixa chega ao número do último documento, ", ultimo,
                   ", ou passa dele: a numeração seguinte sai dele (IDE\\nNF)"});
}

// What is wrong with the command line; empty when nothing is.
std::string conferir(const Argumentos &argumentos) {
    const auto &palavras = argumentos.palavras;
    if (palavras.empty() || palavras.size() > 2) return "faltam ou sobram números";
    if (std::string erro = conferirFaixa(palavras.front(), palavras.back()); !erro.empty())
        return erro;
    if (!argumentos.serie.empty())
        if (std::string erro = conferirSerie(argumento(argumentos.serie.c_str())); !erro.empty())
            return erro;
    if (argumentos.justificativa.empty()) return "falta --justificativa TEXTO";
    return conferirJustificativa(argumento(argumentos.justificativa.c_str()), kMaiorJustificativa);
}

int inutilizar(const Argumentos &argumentos) {
    if (const std::string erro = conferir(argumentos); !erro.empty())
        return usoErrado(kInutilizar, erro);
    const auto justificativa = textoDado("--justificativa", argumentos.justificativa);
    if (!justificativa) return kComErros;
    const auto diretorio = prepararDiretorio(argumentos);
    if (!diretorio) return kComErros;
    const std::string &inicial = argumentos.palavras.front(), &final = argumentos.palavras.back();
    const std::string serie =
        argumentos.serie.empty() ? configuracao(R"(IDE\Serie)") : argumentos.serie;
    const int codigo =
        tCFInutilizar_ZEL(inicial.c_str(), final.c_str(), serie.c_str(), justificativa->c_str());
    if (codigo < ZEL_OK) return recusar("pedir a inutilização", codigo);
    const std::string aviso = avisoDaFaixa(final, serie);
    escreverLinhas(argumentos,
                   {{"resultado", "Resultado", "pedido gravado"},
                    {"inicial", "Número inicial", inicial},
                    {"final", "Número final", final},
                    {"serie", "Série", serie},
                    {"aviso", "Aviso", aviso},
                    {"documento", "Pedido",
                     argumento((std::string(*diretorio).append(arquivos::kEnvio)).c_str())}});
    return aviso.empty() ? kLimpo : kComAvisos;
}

} // namespace

const Comando kInutilizar = {
    "inutilizar",
    "inutilizar INICIAL [FINAL] --justificativa TEXTO [--serie SÉRIE]",
    "Pede que números nunca usados sejam dados por perdidos.",
    "INICIAL e FINAL são os números da faixa; sem FINAL, é um só.\n"
    "--justificativa TEXTO tem de 15 a 60 caracteres.\n"
    "--serie SÉRIE, senão a da configuração.\n\n"
    "O pedido fica em documentosEnvio.xml, para o componente de envio. Se a faixa chega ao\n"
    "número do último documento, ou passa dele, isso é dito, com saída 1.\n"
    "--diretorio DIR escolhe o diretório de dados.\n",
    kJson | kDiretorioDado | kJustificativa | kSerie,
    inutilizar,
};

} // namespace zel::aplicativo
