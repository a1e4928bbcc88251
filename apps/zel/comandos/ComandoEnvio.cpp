// SPDX-License-Identifier: MIT
// zel envio: what a person asks of the queue.
#include "comandos/ComandoDocumento.h"
#include "comandos/ComandoEnviar.h"

#include "comandos/Biblioteca.h"
#include "comum/ArquivosDoCaixa.h"
#include "comum/ChaveAcesso.h"
#include "conferencia/ArquivoConfig.h"
#include "leitura/Arquivos.h"
#include "leitura/Json.h"
#include "leitura/Terminal.h"
#include "leitura/Texto.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>

namespace zel::aplicativo {

namespace {

// One action of the subcommand: how many words follow its name, what it asks, how it is said.
struct Acao {
    std::string_view nome;
    std::size_t minimo, maximo; // words after the name
    Pergunta pergunta;
    std::string (*preparar)(const Argumentos &, PerguntaAFila &); // what is wrong; empty: nothing
    int (*dizer)(const Argumentos &, const RespostaDaFila &);
};

std::string nada(const Argumentos &, PerguntaAFila &) {
    return {};
}

void juntarCriterio(std::string &criterios, std::string_view nome, const std::string &valor) {
    if (!valor.empty()) criterios += juntar({nome, "=", argumento(valor.c_str()), "\n"});
}

// A word is a number or a key.
std::string prepararProcura(const Argumentos &argumentos, PerguntaAFila &pergunta) {
    std::string &criterios = pergunta.criterios;
    if (argumentos.palavras.size() > 1) {
        const std::string &palavra = argumentos.palavras[1];
        if (!std::ranges::all_of(palavra, ehDigito))
            return juntar({palavra, ": procura-se um NÚMERO ou uma CHAVE"});
        juntarCriterio(criterios, palavra.size() == ChaveAcesso::kDigitos ? "chave" : "numero",
                       palavra);
    }
    juntarCriterio(criterios, "dia", argumentos.dia);
    juntarCriterio(criterios, "mes", argumentos.mes);
    juntarCriterio(criterios, "consumidor", argumentos.consumidor);
    if (!argumentos.caixa.empty()) {
        const auto inteiro = diretorioInteiro(argumentos.caixa);
        criterios += juntar({"caixa=", inteiro.value_or(argumentos.caixa), "\n"});
    }
    criterios += argumentos.alguem ? "alguem\n" : "";
    criterios += argumentos.passos ? "passos\n" : "";
    return {};
}

std::string prepararExportar(const Argumentos &argumentos, PerguntaAFila &pergunta) {
    pergunta.mes = argumentos.palavras[1];
    pergunta.arquivo = argumentos.originais[2];
    return {};
}

// State and environment are the till's; where there is none, the configuration's in homologation.
std::string prepararServico(const Argumentos &argumentos, PerguntaAFila &pergunta) {
    const auto segundos = segundosDados(argumentos);
    if (!segundos || *segundos == 0) return "--esperar é de 1 a 300 segundos";
    pergunta.segundos = *segundos;
    std::string motivo, bytes;
    auto diretorio = escolherDiretorio(argumentos.diretorio, motivo);
    if (!diretorio || lerArquivo(diretorio->append(arquivos::kConfig), kMaximoConfig, bytes,
                                 motivo) != Leitura::kLido)
        return {};
    Relatorio relatorio;
    const ArquivoConfig config(bytes, relatorio);
    pergunta.cUF = config[R"(IDE\cUF)"].valor;
    pergunta.ambiente = config[R"(CONFIGURACAO\TipoAmbiente)"].valor == "1" ? 1 : 2;
    return {};
}

int dizerRelato(const Argumentos &argumentos, const RespostaDaFila &resposta) {
    argumentos.json ? escreverJson(resposta.json) : escrever(resposta.relato);
    return resposta.atencao ? kComAvisos : kLimpo;
}

int dizerProcura(const Argumentos &argumentos, const RespostaDaFila &resposta) {
    if (resposta.quantos == 0 && !argumentos.json) escrever("Nenhum documento assim.\n");
    return dizerRelato(argumentos, resposta);
}

int dizerExportado(const Argumentos &argumentos, const RespostaDaFila &resposta) {
    escreverLinhas(argumentos, {{"resultado", "Resultado", "exportado"},
                                {"mes", "Mês", argumentos.palavras[1]},
                                {"documentos", "Documentos", std::to_string(resposta.quantos)},
                                {"arquivo", "Arquivo", argumentos.palavras[2]}});
    return kLimpo;
}

int dizerContinua(const Argumentos &argumentos, const RespostaDaFila &) {
    escreverLinhas(argumentos, {{"resultado", "Resultado", "o envio continua"}});
    return kLimpo;
}

// The command that asks for a gap, in its till. Numbers are given up by a person alone.
std::string comandoDaLacuna(const Argumentos &argumentos, const LacunaDita &lacuna) {
    Argumentos doCaixa = argumentos;
    if (!lacuna.caixa.empty()) doCaixa.diretorio = lacuna.caixa;
    const std::string primeiro = std::to_string(lacuna.primeiro),
                      ultimo = std::to_string(lacuna.ultimo);
    return comando(doCaixa, juntar({"inutilizar ", primeiro, primeiro == ultimo ? "" : " ",
                                    primeiro == ultimo ? "" : ultimo, " --serie ",
                                    std::to_string(lacuna.serie),
                                    " --justificativa 'Numeração pulada pelo caixa'"}));
}

int dizerLacunas(const Argumentos &argumentos, const RespostaDaFila &resposta) {
    Json json;
    std::string texto;
    json.abrirLista();
    for (const LacunaDita &lacuna : resposta.lacunas) {
        const std::string linha = comandoDaLacuna(argumentos, lacuna);
        texto += linha + "\n";
        json.abrirObjeto()
            .texto("cnpj", lacuna.cnpj)
            .numero("serie", lacuna.serie)
            .numero("primeiro", lacuna.primeiro)
            .numero("ultimo", lacuna.ultimo)
            .texto("comando", linha)
            .fecharObjeto();
    }
    if (argumentos.json)
        escreverJson(json.fecharLista().escrito());
    else
        escrever(texto.empty()
                     ? "Nenhum número pulado.\n"
                     : juntar({"Números sem documento. Se nenhum papel saiu com eles, "
                               "peça a inutilização. O pedido, envia-o o serviço zel-envio, "
                               "ou zel enviar documentosEnvio.xml:\n",
                               texto}));
    return resposta.lacunas.empty() ? kLimpo : kComAvisos;
}

constexpr Acao kAcoes[] = {
    {"estado", 0, 0, Pergunta::kSituacao, nada, dizerRelato},
    {"procurar", 0, 1, Pergunta::kProcurar, prepararProcura, dizerProcura},
    {"exportar", 2, 2, Pergunta::kExportar, prepararExportar, dizerExportado},
    {"continuar", 0, 0, Pergunta::kContinuar, nada, dizerContinua},
    {"servico", 0, 0, Pergunta::kServico, prepararServico, dizerRelato},
    {"inutilizar", 0, 0, Pergunta::kSituacao, nada, dizerLacunas},
};

// Options that another action than this one takes.
std::string opcaoAMais(const Argumentos &argumentos, std::string_view acao) {
    const bool procura = !argumentos.dia.empty() || !argumentos.mes.empty() ||
                         !argumentos.consumidor.empty() || !argumentos.caixa.empty() ||
                         argumentos.alguem || argumentos.passos;
    if (procura && acao != "procurar")
        return "--dia, --mes, --consumidor, --caixa, --alguem e "
               "--passos vão com procurar";
    if (!argumentos.esperar.empty() && acao != "servico") return "--esperar vai com servico";
    return {};
}

int perguntar(const Argumentos &argumentos, const Acao &acao) {
    std::string motivo;
    const auto diretorio = escolherDiretorio(argumentos.diretorio, motivo);
    if (!diretorio) return falhar(motivo);
    PerguntaAFila pergunta{acao.pergunta, configDoEnvio(argumentos, *diretorio), {}, {}, {}, {}};
    if (const std::string erro = acao.preparar(argumentos, pergunta); !erro.empty())
        return usoErrado(kEnvioDaFila, erro);
    if (pergunta.config.empty()) return falhar(semConfigDoEnvio(*diretorio));
    const RespostaDaFila resposta = perguntarAFila(pergunta);
    if (!resposta.feito())
        return recusarDoEnvio(acao.nome, argumento(pergunta.config.c_str()), resposta);
    return acao.dizer(argumentos, resposta);
}

int envio(const Argumentos &argumentos) {
    if (argumentos.palavras.empty()) return usoErrado(kEnvioDaFila, "falta o que fazer");
    const std::string &nome = argumentos.palavras.front();
    const auto acao = std::ranges::find(kAcoes, nome, &Acao::nome);
    if (acao == std::end(kAcoes))
        return usoErrado(kEnvioDaFila, juntar({nome, ": não é o que se pede da fila"}));
    const std::size_t palavras = argumentos.palavras.size() - 1;
    if (palavras < acao->minimo || palavras > acao->maximo)
        return usoErrado(kEnvioDaFila, juntar({"faltam ou sobram palavras depois de ", nome}));
    if (const std::string erro = opcaoAMais(argumentos, nome); !erro.empty())
        return usoErrado(kEnvioDaFila, erro);
    return perguntar(argumentos, *acao);
}

} // namespace

const Comando kEnvioDaFila = {
    "envio",
    "envio estado [--config zel-envio.toml] [--json]\n"
    "envio procurar [NÚMERO|CHAVE] [--dia AAAA-MM-DD] [--mes AAAA-MM] [--consumidor DOCUMENTO]\n"
    "envio exportar AAAA-MM ARQUIVO.zip\n"
    "envio servico [--esperar SEGUNDOS]\n"
    "envio continuar\n"
    "envio inutilizar",
    "Mostra a fila dos documentos que vão à SEFAZ, e o que foi guardado.",
    "estado diz o que espera e há quanto tempo, os dias do certificado, a última resposta de cada\n"
    "serviço, os números pulados e o que precisa de alguém; havendo algo assim, a saída é 1.\n"
    "procurar mostra documentos, o último primeiro: pelo número, pela chave, pelo dia ou mês, "
    "pelo\n"
    "CPF ou CNPJ do consumidor, de um caixa (--caixa DIR), só os que precisam de alguém "
    "(--alguem);\n"
    "com --passos, cada passo que deram.\n"
    "exportar grava o mês para o contador: um zip dos XML guardados e notas.csv, uma linha por\n"
    "número.\n"
    "servico pergunta agora à SEFAZ se o serviço dela funciona, para o estado e o ambiente do "
    "caixa.\n"
    "continuar termina a parada que um certificado vencido ou recusado causou.\n"
    "inutilizar mostra os números sem documento e, de cada faixa, o comando que pede a\n"
    "inutilização; nada é inutilizado por si.\n\n"
    "--config ARQUIVO é a configuração; sem ela, a zel-envio.toml do diretório do caixa.\n"
    "--diretorio DIR escolhe o diretório de dados.\n",
    kJson | kDiretorioDado | kConfigDoEnvio | kEsperar | kProcura,
    envio,
};

} // namespace zel::aplicativo
