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

int ArquivoPendente::confirmar(std::string_view conteudo, std::span<const Alteracao> alteracoes,
                               ArquivoPendente *segundo) {
    const auto abandonarTodos = [&] {
        abandonar();
        if (segundo != nullptr) segundo->abandonar();
    };
    const std::vector<Alteracao> anteriores = valoresAtuais(alteracoes);
    if (preparar(conteudo) != ZEL_OK) {
        // What an earlier change left waiting is not this one's to drop.
        if (segundo != nullptr) segundo->abandonar();
        return ZEL_ARQUIVO_INDISPONIVEL;
    }
    if (const int resultado = alterarConfig(alteracoes); resultado != ZEL_OK) {
        abandonarTodos();
        return resultado;
    }
    // The saved configuration is the commit. Memory running out behind it undoes nothing.
    try {
        const bool segundoPronto = segundo != nullptr && segundo->concluir() == ZEL_OK;
        if ((segundo == nullptr || segundoPronto) && concluir() == ZEL_OK) return ZEL_OK;
        if (!segundoPronto && alterarConfig(anteriores) == ZEL_OK) {
            abandonarTodos();
            return ZEL_ARQUIVO_INDISPONIVEL;
        }
    } catch (...) {
    }
    // The new configuration stands on disk beside the content that belongs to it: the change has
    // happened, and the next save or the next process puts the file in place.
    if (resto_ == Resto::kNada) resto_ = Resto::kConfirmado;
    return ZEL_OK;
}

int ArquivoPendente::preparar(std::string_view conteudo) {
    if (limpar() != ZEL_OK) return ZEL_ARQUIVO_INDISPONIVEL;
    return substituirArquivo(caminhoPendente(), conteudo, acesso_);
}

Leitura ArquivoPendente::lerPendente(std::string &conteudo) const {
    return lerArquivo(caminhoPendente(), conteudo);
}

int ArquivoPendente::concluir() {
    resto_ = Resto::kConfirmado;
    limpar();
    // Once renamed, the file is as good as in place: should power fail before the directory is
    // flushed, the waiting name comes back and the next process puts it in place again.
    return resto_ == Resto::kConfirmado ? ZEL_ARQUIVO_INDISPONIVEL : ZEL_OK;
}

void ArquivoPendente::abandonar() {
    resto_ = Resto::kAbandonado;
    limpar();
}

int ArquivoPendente::limpar() {
    if (resto_ == Resto::kAbandonado && removerArquivo(caminhoPendente()) == ZEL_OK)
        resto_ = Resto::kNada;
    if (resto_ == Resto::kConfirmado && renomearArquivo(caminhoPendente(), caminho()) == ZEL_OK)
        resto_ = Resto::kADescarregar;
    if (resto_ == Resto::kADescarregar && descarregarDiretorio(caminho()) == ZEL_OK)
        resto_ = Resto::kNada;
    return resto_ == Resto::kNada ? ZEL_OK : ZEL_ARQUIVO_INDISPONIVEL;
}

} // namespace zel
