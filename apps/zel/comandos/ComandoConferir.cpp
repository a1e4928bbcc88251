// SPDX-License-Identifier: MIT
// zel conferir: looks at a data directory or at a document, and says what is wrong and what to do.
#include "comandos/Comando.h"

#include "comandos/Biblioteca.h"
#include "conferencia/Achado.h"
#include "conferencia/ConferenciaDiretorio.h"
#include "conferencia/ConferenciaDocumento.h"
#include "leitura/Arquivos.h"
#include "leitura/Json.h"
#include "leitura/Terminal.h"
#include "leitura/Texto.h"

#include <algorithm>
#include <iterator>

namespace zel::aplicativo {

namespace {

int entregar(const Relatorio &relatorio, const Argumentos &argumentos, std::string_view alvo) {
    argumentos.json ? relatorio.escreverJson(alvo) : relatorio.escreverTexto(alvo);
    return relatorio.codigoDeSaida();
}

int listarAchados(bool emJson) {
    Json json;
    json.abrirLista();
    std::string texto;
    std::size_t largura = 0;
    for (const TipoAchado &tipo : tabela::kAchados)
        largura = std::max(largura, tipo.id.size());
    for (const TipoAchado &tipo : tabela::kAchados) {
        const std::string_view gravidade = nomeDaGravidade(tipo.gravidade);
        texto += juntar({tipo.id, std::string(largura + 2 - tipo.id.size(), ' '), gravidade,
                         std::string(7 - gravidade.size(), ' '), tipo.explicacao, "\n"});
        json.abrirObjeto()
            .texto("id", tipo.id)
            .texto("gravidade", gravidade)
            .texto("explicacao", tipo.explicacao)
            .fecharObjeto();
    }
    emJson ? escreverJson(json.fecharLista().escrito()) : escrever(texto);
    return kLimpo;
}

int conferirArquivo(const Argumentos &argumentos) {
    const std::string &caminho = argumentos.originais.front();
    std::string bytes, motivo;
    if (lerArquivo(caminho, kMaximoDocumento, bytes, motivo) != Leitura::kLido)
        return falhar(juntar({argumentos.palavras.front(), ": ", motivo}));
    Relatorio relatorio;
    conferirDocumento(bytes, argumentos.esquema, relatorio);
    return entregar(relatorio, argumentos, argumentos.palavras.front());
}

int conferir(const Argumentos &argumentos) {
    if (argumentos.ajudaAchados) return listarAchados(argumentos.json);
    if (argumentos.palavras.size() > 1)
        return usoErrado(kConferir, "um diretório ou documento de cada vez");
    const bool comAlvo = !argumentos.palavras.empty();
    if (comAlvo && !argumentos.diretorio.empty())
        return usoErrado(kConferir, "ou --diretorio, ou o nome de um diretório ou documento");
    const std::string alvo = comAlvo ? argumentos.originais.front() : argumentos.diretorio;
    if (comAlvo && olhar(alvo).tipo != TipoArquivo::kDiretorio) return conferirArquivo(argumentos);
    if (!argumentos.esquema.empty())
        return usoErrado(kConferir, "--esquema vale para um documento");
    std::string motivo;
    const auto diretorio = escolherDiretorio(alvo, motivo);
    if (!diretorio) return falhar(motivo);
    Relatorio relatorio;
    if (!alvo.empty()) relatorio.comandosPara(argumento(diretorio->c_str()));
    conferirDiretorio(*diretorio, relatorio);
    return entregar(relatorio, argumentos, argumento(diretorio->c_str()));
}

} // namespace

const Comando kConferir = {
    "conferir",
    "conferir [DIRETÓRIO] [--json]\n"
    "conferir DOCUMENTO.xml [--esquema PASTA] [--json]\n"
    "conferir --ajuda-achados [--json]",
    "Confere um diretório de dados, ou um documento, e diz o que corrigir.",
    "Sem argumento, confere o diretório de dados da biblioteca. Não muda nada nele.\n\n"
    "De um diretório: cada chave de ZEL_Framework.xml (comprimento, tipo, dígitos), o\n"
    "emitente com o seu estado, município e CEP, o regime com os grupos de imposto, ambiente,\n"
    "fuso, token e endereços, diretórios de cópia, direitos dos arquivos, cupom em andamento.\n"
    "De um documento: forma, chave de acesso, dígitos, lugares, produtos, somas, pagamentos,\n"
    "QR Code, o que a homologação exige e, com --esquema, o esquema publicado (pasta com\n"
    "nfe_v3.10.xsd; usa o xmllint).\n\n"
    "Cada achado é um erro, um aviso ou uma nota, com o lugar, o que há e o remédio. O nome\n"
    "entre colchetes não muda; a lista deles: --ajuda-achados. O token e os dados do\n"
    "consumidor não são mostrados.\n\n"
    "Saída: 0 limpo (notas não contam), 1 há avisos, 2 há erros.\n",
    kJson | kDiretorioDado | kEsquema | kAjudaAchados,
    conferir,
};

} // namespace zel::aplicativo
