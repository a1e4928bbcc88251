// SPDX-License-Identifier: MIT
// zel consultar: a request for what the tax authority or the sending component knows.
#include "comandos/ComandoComum.h"

#include "comandos/Biblioteca.h"
#include "comum/ArquivosDoCaixa.h"
#include "comum/Digitos.h"
#include "leitura/Pedido.h"
#include "leitura/Terminal.h"
#include "leitura/Texto.h"

#include "ZEL_FelborFramework.h"

#include <algorithm>
#include <iterator>

namespace zel::aplicativo {

namespace {

// What is asked for, as the library takes it.
struct Consulta {
    std::string tipo, inicial, final, serie, chave;
};

struct Forma {
    std::string_view nome;
    std::string_view tipo;
    std::string (*conferir)(std::string_view inicial, std::string_view final);
};

std::string conferirDatas(std::string_view inicial, std::string_view final) {
    for (const std::string_view data : {inicial, final})
        if (std::string erro = conferirData(data); !erro.empty()) return erro;
    return inicial <= final ? "" : "a data final vem antes da inicial";
}

constexpr Forma kFormas[] = {{"numero", "NUM", conferirFaixa}, {"data", "DATA", conferirDatas}};

// Fills the consultation; answers what is wrong with the words, empty when nothing is.
std::string ler(const Argumentos &argumentos, Consulta &consulta) {
    const auto &palavras = argumentos.palavras;
    const auto forma = palavras.empty()
                           ? std::end(kFormas)
                           : std::ranges::find(kFormas, palavras.front(), &Forma::nome);
    if (forma == std::end(kFormas)) {
        consulta.tipo = "CHAVE";
        consulta.chave = palavras.empty() ? "" : palavras.front();
        if (!argumentos.serie.empty()) return "--serie vai com numero";
        if (palavras.empty()) return {};
        if (palavras.size() > 1) return "há argumentos demais";
        if (ehChaveIntegra(consulta.chave)) return {};
        return juntar({consulta.chave, ": não é uma chave de acesso; confira os 44 dígitos"});
    }
    if (palavras.size() != 3) return juntar({forma->nome, " leva INICIAL e FINAL"});
    consulta = {std::string(forma->tipo), palavras[1], palavras[2], argumentos.serie, ""};
    if (!consulta.serie.empty() && forma->tipo != "NUM") return "--serie vai com numero";
    if (!consulta.serie.empty())
        if (std::string erro = conferirSerie(argumento(consulta.serie.c_str())); !erro.empty())
            return erro;
    return forma->conferir(palavras[1], palavras[2]);
}

int consultar(const Argumentos &argumentos) {
    Consulta consulta;
    if (const std::string erro = ler(argumentos, consulta); !erro.empty())
        return usoErrado(kConsultar, erro);
    const auto diretorio = prepararDiretorio(argumentos);
    if (!diretorio) return kComErros;
    if (consulta.tipo == "CHAVE" && consulta.chave.empty()) {
        consulta.chave = configuracao(R"(NFCE\ChaveDeAcesso)");
        if (!ehChaveIntegra(consulta.chave))
            return falhar("não há um último documento a consultar");
    }
    if (consulta.tipo == "NUM" && consulta.serie.empty())
        consulta.serie = configuracao(R"(IDE\Serie)");
    const int codigo =
        GeraXMLConsulta_ZEL(consulta.tipo.c_str(), consulta.inicial.c_str(), consulta.final.c_str(),
                            consulta.serie.c_str(), consulta.chave.c_str());
    if (codigo < ZEL_OK) return recusar("pedir a consulta", codigo);
    escreverLinhas(argumentos,
                   {{"resultado", "Resultado", "pedido gravado"},
                    {"chave", "Chave de acesso", consulta.chave},
                    {"inicial", "De", consulta.inicial},
                    {"final", "Até", consulta.final},
                    {"serie", "Série", consulta.serie},
                    {"documento", "Pedido",
                     argumento((std::string(*diretorio).append(arquivos::kEnvio)).c_str())}});
    return kLimpo;
}

} // namespace

const Comando kConsultar = {
    "consultar",
    "consultar [CHAVE]\n"
    "consultar numero INICIAL FINAL [--serie SÉRIE]\n"
    "consultar data INICIAL FINAL",
    "Pede a situação de documentos.",
    "Pela CHAVE de acesso (sem ela, a do último documento) quem responde é a SEFAZ; por número\n"
    "ou data, o componente de envio, do seu registro. Datas são como 2026-01-31.\n"
    "--serie SÉRIE, senão a da configuração.\n"
    "O pedido fica em documentosEnvio.xml e parametrosEnvio.xml.\n"
    "--diretorio DIR escolhe o diretório de dados.\n",
    kJson | kDiretorioDado | kSerie,
    consultar,
};

} // namespace zel::aplicativo
