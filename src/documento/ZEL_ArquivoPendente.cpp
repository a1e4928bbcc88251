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

Leitura ArquivoPendente::lerPendente(std::string &conteudo) const {
    return lerArquivo(caminhoPendente(), conteudo, Ligacao::kNaoSeguida);
}

int ArquivoPendente::tomarLugar() {
    if (resto_ == Resto::kConfirmado && renomearArquivo(caminhoPendente(), caminho()) == ZEL_OK)
        resto_ = Resto::kADescarregar;
    return resto_ == Resto::kConfirmado ? ZEL_ARQUIVO_INDISPONIVEL : ZEL_OK;
}

int ArquivoPendente::limpar() {
    if (resto_ == Resto::kAbandonado && removerArquivo(caminhoPendente()) == ZEL_OK)
        resto_ = Resto::kNada;
    tomarLugar();
    if (resto_ == Resto::kADescarregar && descarregarDiretorio(caminho()) == ZEL_OK)
        resto_ = Resto::kNada;
    return resto_ == Resto::kNada ? ZEL_OK : ZEL_ARQUIVO_INDISPONIVEL;
}

int ArquivoPendente::escrever(std::string_view conteudo) {
    // Dropped, unless the configuration that belongs to it is saved.
    resto_ = Resto::kAbandonado;
    return escreverArquivo(caminhoPendente(), conteudo, acesso_);
}

int ArquivoPendente::escreverTodos(std::span<const Espera> esperas) {
    for (const Espera &espera : esperas)
        if (espera.arquivo.escrever(espera.conteudo) != ZEL_OK) return ZEL_ARQUIVO_INDISPONIVEL;
    return descarregarDiretorio(fnConfigurarPath(""));
}

void ArquivoPendente::concluirTodos(std::span<const Espera> esperas) {
    // What hinders it once may not hinder it twice.
    constexpr int kTentativas = 2;
    for (int tentativa = 0; tentativa < kTentativas; ++tentativa) {
        for (const Espera &espera : esperas) {
            const int lugar =
                espera.julgadoPeloSeguinte ? espera.arquivo.limpar() : espera.arquivo.tomarLugar();
            if (lugar != ZEL_OK) break;
        }
        if (descarregarDiretorio(fnConfigurarPath("")) != ZEL_OK) continue;
        bool todos = true;
        for (const Espera &espera : esperas) {
            if (espera.arquivo.resto_ == Resto::kADescarregar) espera.arquivo.resto_ = Resto::kNada;
            todos = todos && espera.arquivo.resto_ == Resto::kNada;
        }
        if (todos) return;
    }
}

void ArquivoPendente::julgarTodos(std::span<const Espera> esperas, Resto resto) {
    for (const Espera &espera : esperas)
        espera.arquivo.resto_ = resto;
    if (resto != Resto::kAbandonado) return;
    for (const Espera &espera : esperas)
        espera.arquivo.limpar();
}

int confirmarJuntos(std::span<const Espera> esperas, std::span<const Alteracao> alteracoes) {
    using Resto = ArquivoPendente::Resto;
    // What an earlier change left waiting is not this one's to drop.
    for (const Espera &espera : esperas)
        if (espera.arquivo.limpar() != ZEL_OK) return ZEL_ARQUIVO_INDISPONIVEL;

    const std::vector<Alteracao> anteriores = valoresAtuais(alteracoes);
    int resultado = ArquivoPendente::escreverTodos(esperas);
    if (resultado == ZEL_OK) resultado = alterarConfig(alteracoes);
    if (resultado != ZEL_OK) {
        ArquivoPendente::julgarTodos(esperas, Resto::kAbandonado);
        return resultado;
    }
    // The saved configuration is the commit. Memory running out behind it undoes nothing.
    ArquivoPendente::julgarTodos(esperas, Resto::kConfirmado);
    try {
        if (esperas.front().arquivo.tomarLugar() != ZEL_OK && alterarConfig(anteriores) == ZEL_OK) {
            ArquivoPendente::julgarTodos(esperas, Resto::kAbandonado);
            return ZEL_ARQUIVO_INDISPONIVEL;
        }
        ArquivoPendente::concluirTodos(esperas);
    } catch (...) {
    }
    // The new configuration stands on disk beside the content that belongs to it: the change has
    // happened, and the next save or the next process puts in place what is not.
    return ZEL_OK;
}

} // namespace zel
