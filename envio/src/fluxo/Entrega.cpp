// SPDX-License-Identifier: MIT
#include "fluxo/Entrega.h"

#include "base/Xml.h"
#include "comum/Arquivo.h"
#include "comum/Ascii.h"
#include "documento/Impressao.h"
#include "fluxo/Destinos.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <sys/stat.h>

namespace zel::envio {

namespace {

struct Sufixo {
    Tipo tipo;
    std::string_view nome;
};
constexpr Sufixo kSufixos[] = {{Tipo::kNfce, ""},
                               {Tipo::kCancelamento, "-cancelamento"},
                               {Tipo::kInutilizacao, ""},
                               {Tipo::kConsulta, "-consulta"}};

// What a till's file says its key is may be anything: a way to another directory, too.
bool serveDeNome(std::string_view chave) {
    constexpr std::size_t kMaiorNome = 60;
    return !chave.empty() && chave.size() <= kMaiorNome &&
           std::all_of(chave.begin(), chave.end(), [](char c) {
               return ehDigito(c) || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
           });
}

// The component's own words, of what has no record of the authority's.
std::string emPalavras(const Ficha &ficha) {
    Documento retorno = Documento::novo("Retorno", {});
    No raiz = retorno.raiz();
    raiz.acrescentar("SitCodigo", std::to_string(ficha.cStat));
    raiz.acrescentar("SitDescricao", ficha.motivo.empty() ? ficha.xMotivo : ficha.motivo);
    if (!ficha.chave.empty()) raiz.acrescentar("DocChaAcesso", ficha.chave);
    if (!ficha.protocolo.empty()) raiz.acrescentar("DocProtocolo", ficha.protocolo);
    return retorno.texto();
}

std::optional<ParaImprimir> paraImprimir(std::string_view mensagem, std::string_view elemento,
                                         Recusas &recusas) {
    std::string motivo;
    const auto nfe = Documento::ler(mensagem, motivo);
    const auto resposta = Documento::ler(elemento, motivo);
    if (!nfe || !resposta) return recusas.juntar("documento", "", motivo), std::nullopt;
    return prepararImpressao(nfe->raiz(), &*resposta, recusas);
}

bool gravar(const std::string &arquivo, std::string_view conteudo, Recusas &recusas) {
    return comum::substituirArquivo(arquivo, conteudo) ||
           recusas.juntar(arquivo, "", "não foi gravado: " + std::string(std::strerror(errno)));
}

} // namespace

std::string retornosDe(const Configuracao &config, const std::string &caixa) {
    for (const auto &esta : config.caixas)
        if (esta.diretorio == caixa && !esta.retornos.empty()) return esta.retornos;
    return caixa + "retornos/";
}

std::string nomeDoRetorno(const Ficha &ficha) {
    std::string nome = serveDeNome(ficha.chave) ? ficha.chave : ficha.origem;
    for (const auto &[tipo, sufixo] : kSufixos)
        if (tipo == ficha.tipo) nome += sufixo;
    return nome + ".retorno.xml";
}

bool escreverRetorno(const Configuracao &config, const Ficha &ficha, std::string_view mensagem,
                     std::string_view elemento, Recusas &recusas) {
    const std::string pasta = retornosDe(config, ficha.caixa);
    if (mkdir(pasta.c_str(), 0777) != 0 && errno != EEXIST)
        return recusas.juntar(pasta, "", "a pasta não pôde ser feita");
    const std::string arquivo = pasta + nomeDoRetorno(ficha);
    const bool autorizada = ficha.tipo == Tipo::kNfce && ficha.desfecho == Desfecho::kAutorizado;
    if (autorizada && !elemento.empty()) {
        const auto duas = paraImprimir(mensagem, elemento, recusas);
        // The document first: whoever sees the return finds it.
        return duas && gravar(pasta + ficha.chave + ".documento.xml", duas->documento, recusas) &&
               gravar(arquivo, duas->retorno, recusas);
    }
    // The protocol of a note that was cancelled since, alone, would still say that it is
    // authorized.
    const bool registro = ficha.tipo == Tipo::kConsulta ? ficha.desfecho == Desfecho::kAutorizado
                                                        : ficha.tipo != Tipo::kNfce;
    return gravar(arquivo,
                  registro && !elemento.empty() ? std::string(elemento) : emPalavras(ficha),
                  recusas);
}

} // namespace zel::envio
