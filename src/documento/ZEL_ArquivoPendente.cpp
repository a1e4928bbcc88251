#include "documento/ZEL_ArquivoPendente.h"

#include "util/Diretorio.h"

namespace zel {

std::vector<Alteracao> valoresAtuais(std::span<const Alteracao> alteracoes) {
    std::vector<Alteracao> atuais;
    for (const Alteracao &alteracao : alteracoes)
        atuais.push_back({alteracao.chave, std::string(valorConfig(alteracao.chave))});
    return atuais;
}

std::string ArquivoPendente::caminho() const {
    return fnConfigurarPath(nome_);
}

std::string ArquivoPendente::caminhoPendente() const {
    return fnConfigurarPath(nomePendente_);
}

int ArquivoPendente::confirmar(std::string_view conteudo, std::span<const Alteracao> alteracoes) {
    if (limpar() != ZEL_OK) return ZEL_ARQUIVO_INDISPONIVEL;
    if (substituirArquivo(caminhoPendente(), conteudo, acesso_) != ZEL_OK)
        return ZEL_ARQUIVO_INDISPONIVEL;

    const std::vector<Alteracao> anteriores = valoresAtuais(alteracoes);
    if (const int resultado = alterarConfig(alteracoes); resultado != ZEL_OK) {
        abandonar();
        return resultado;
    }
    if (renomearArquivo(caminhoPendente(), caminho()) == ZEL_OK) return ZEL_OK;
    if (alterarConfig(anteriores) == ZEL_OK) {
        abandonar();
        return ZEL_ARQUIVO_INDISPONIVEL;
    }
    // The new configuration stands on disk beside the content that belongs to it: the change has
    // happened, and the next save or the next process puts the file in place.
    restou_ = Resto::kConfirmado;
    return ZEL_OK;
}

int ArquivoPendente::limpar() {
    int resultado = ZEL_OK;
    if (restou_ == Resto::kAbandonado) resultado = removerArquivo(caminhoPendente());
    if (restou_ == Resto::kConfirmado) resultado = renomearArquivo(caminhoPendente(), caminho());
    if (resultado == ZEL_OK) restou_ = Resto::kNada;
    return resultado;
}

void ArquivoPendente::abandonar() {
    restou_ = Resto::kAbandonado;
    limpar();
}

} // namespace zel
