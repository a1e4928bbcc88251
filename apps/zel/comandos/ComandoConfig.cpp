// SPDX-License-Identifier: MIT
// zel config: lists, reads and stores configuration values through the library.
#include "comandos/Comando.h"

#include "comandos/Biblioteca.h"
#include "comandos/ComandoComum.h"
#include "conferencia/Regras.h"
#include "leitura/Json.h"
#include "leitura/TabelaChaves.h"
#include "leitura/Terminal.h"
#include "leitura/Texto.h"

#include "ZEL_FelborFramework.h"

#include <algorithm>
#include <vector>

namespace zel::aplicativo {

namespace {

constexpr std::string_view kDaEntrada = "-";
constexpr std::string_view kOutroNomeDoNumero = R"(IDE\NF)";

// The value as the user asked to see it. The QR code shows all but the consumer.
std::string valorMostrado(const LinhaChave &chave, const std::string &valor, bool comSegredo) {
    if (comSegredo || valor.empty() || !(chave.tem(kSegredo) || chave.tem(kPessoal))) return valor;
    const std::size_t consumidor = valor.find("cDest=");
    if (chave.nome() != "UrlQrcode") return mostrar(chave, valor);
    if (consumidor == valor.npos) return valor;
    const std::size_t fim = std::min(valor.find('&', consumidor), valor.size());
    return juntar({valor.substr(0, consumidor), "cDest=(oculto)", valor.substr(fim)});
}

int chaveDesconhecida(std::string_view caminho) {
    std::string texto = juntar({"não há a chave ", caminho});
    const std::string_view nome = caminho.substr(caminho.rfind('\\') + 1);
    std::string parecidas;
    for (const LinhaChave &chave : kChaves)
        if (igualSemCaixa(chave.nome(), nome) && parecidas.size() < 200)
            parecidas += juntar({"\n    ", chave.caminho});
    return falhar(parecidas.empty() ? texto + "; as que há: zel config listar"
                                    : juntar({texto, "; com esse nome há:", parecidas}));
}

const LinhaChave *chaveDada(std::string_view caminho) {
    if (igualSemCaixa(caminho, kOutroNomeDoNumero)) return procurarChave(R"(IDE\nNF)");
    return procurarChaveSemCaixa(caminho);
}

int listar(const Argumentos &argumentos) {
    const std::string padrao = argumentos.palavras.size() > 1 ? argumentos.palavras[1] : "*";
    Json json;
    json.abrirLista();
    std::string texto;
    std::string_view anterior;
    for (const LinhaChave &chave : kChaves) {
        if (!casaPadrao(padrao, chave.caminho) &&
            !casaPadrao(juntar({"*", padrao, "*"}), chave.caminho))
            continue;
        // By path there is only one of a key that stands twice.
        if (chave.caminho == anterior) continue;
        anterior = chave.caminho;
        int codigo = 0;
        const auto valor = lerConfig(chave.caminho, codigo);
        if (!valor) return recusar(chave.caminho, codigo);
        const std::string mostrado = valorMostrado(chave, *valor, argumentos.mostrarSegredo);
        texto += juntar({chave.caminho, " = ", mostrado, "\n"});
        json.abrirObjeto().texto("chave", chave.caminho).texto("valor", mostrado).fecharObjeto();
    }
    if (texto.empty()) return falhar(juntar({"nenhuma chave casa com ", padrao}));
    argumentos.json ? escreverJson(json.fecharLista().escrito()) : escrever(texto);
    return kLimpo;
}

int ler(const Argumentos &argumentos) {
    const std::string &caminho = argumentos.palavras[1];
    const LinhaChave *chave = chaveDada(caminho);
    if (chave == nullptr) return chaveDesconhecida(caminho);
    int codigo = 0;
    const auto valor = lerConfig(chave->caminho, codigo);
    if (!valor) return recusar(chave->caminho, codigo);
    const std::string mostrado = valorMostrado(*chave, *valor, argumentos.mostrarSegredo);
    Json json;
    json.abrirObjeto().texto("chave", chave->caminho).texto("valor", mostrado).fecharObjeto();
    argumentos.json ? escreverJson(json.escrito()) : escrever(mostrado + "\n");
    return kLimpo;
}

int gravar(const Argumentos &argumentos) {
    const std::string &caminho = argumentos.palavras[1];
    // A secret given as an argument would stay in the shell's history.
    const auto dado = argumentos.palavras[2] == kDaEntrada ? lerLinha() : argumentos.palavras[2];
    if (!dado) return falhar("nada veio da entrada padrão; nada foi gravado");
    const std::string &valor = *dado;
    const LinhaChave *chave = chaveDada(caminho);
    if (chave == nullptr) return chaveDesconhecida(caminho);
    const auto latin1 = latin1DeUtf8(valor);
    if (!latin1)
        return falhar(
            juntar({chave->caminho, ": o valor tem um caracter que o ISO-8859-1 não tem"}));
    if (comprimento(valor) > chave->tamanho)
        return falhar(juntar({chave->caminho, ": o valor tem ", caracteres(comprimento(valor)),
                              ", a chave guarda ", std::to_string(chave->tamanho)}));
    if (const int codigo = gravarConfig(chave->caminho, *latin1); codigo != ZEL_OK)
        return recusar(chave->caminho, codigo);
    Relatorio relatorio;
    conferirValor(*chave, valor, 0, relatorio);
    const std::string mostrado = valorMostrado(*chave, valor, argumentos.mostrarSegredo);
    if (argumentos.json)
        relatorio.escreverJson(chave->caminho);
    else if (relatorio.codigoDeSaida() == kLimpo)
        escrever(juntar({chave->caminho, " = ", mostrado, "\n"}));
    else
        relatorio.escreverTexto(juntar({chave->caminho, ", gravada assim mesmo"}));
    return relatorio.codigoDeSaida();
}

struct Acao {
    std::string_view nome;
    std::size_t minimo, maximo; // words, its name included
    int (*executar)(const Argumentos &);
    bool cria; // may create the configuration file
};

constexpr Acao kAcoes[] = {
    {"listar", 1, 2, listar, false}, {"ler", 2, 2, ler, false}, {"gravar", 3, 3, gravar, true}};

int config(const Argumentos &argumentos) {
    if (argumentos.palavras.empty()) return usoErrado(kConfig, "falta listar, ler ou gravar");
    const auto acao = std::ranges::find(kAcoes, argumentos.palavras.front(), &Acao::nome);
    const std::size_t quantas = argumentos.palavras.size();
    if (acao == std::end(kAcoes) || quantas < acao->minimo || quantas > acao->maximo)
        return usoErrado(kConfig, juntar({"não se entende ", argumentos.palavras.front()}));
    if (!prepararDiretorio(argumentos, acao->cria)) return kComErros;
    return acao->executar(argumentos);
}

} // namespace

const Comando kConfig = {
    "config",
    "config listar [PADRÃO] [--mostrar-segredo] [--json]\n"
    "config ler CHAVE [--mostrar-segredo] [--json]\n"
    "config gravar CHAVE VALOR [--json]",
    "Lista, lê e grava valores da configuração, pela biblioteca.",
    "CHAVE é o caminho, grupos e nome separados por \\, em maiúsculas ou minúsculas. No\n"
    "shell ele vai entre aspas simples: zel config ler 'EMIT\\CNPJ'. PADRÃO é parte de um\n"
    "caminho, ou um caminho com * e ?: zel config listar 'IDE\\*'.\n\n"
    "Com - no lugar de VALOR, ele é lido da entrada padrão: assim o token não fica no\n"
    "histórico do shell.\n\n"
    "gravar confere o valor depois de o gravar: um que a chave não permite é gravado assim\n"
    "mesmo e dito, com saída 1 ou 2. Um valor longo demais é recusado. Todas as chaves:\n"
    "docs/configuracao.md.\n\n"
    "O token e o CPF do consumidor só aparecem com --mostrar-segredo.\n"
    "--diretorio DIR escolhe o diretório de dados.\n",
    kJson | kDiretorioDado | kMostrarSegredo,
    config,
};

} // namespace zel::aplicativo
