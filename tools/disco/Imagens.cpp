// SPDX-License-Identifier: MIT
#include "disco/Imagens.h"

#include <algorithm>
#include <utility>

namespace disco {

namespace {

constexpr std::string_view kDiario = ".diario";
constexpr std::size_t kSetor = 512;

} // namespace

Imagens::Imagens(std::string diretorio, const Fotografia &antes)
    : diretorio_(std::move(diretorio)) {
    for (const auto &[nome, bytes] : antes)
        nomes_[nome] = std::make_shared<Arquivo>(Arquivo{bytes, bytes});
    gravados_ = nomes_;
}

std::string Imagens::nome(const std::string &caminho) const {
    return caminho.starts_with(diretorio_) ? caminho.substr(diretorio_.size()) : caminho;
}

void Imagens::refazer(Nomes &nomes, const Mudanca &mudanca) {
    if (mudanca.chamada == Chamada::kAbrir) {
        nomes[mudanca.nome] = mudanca.no;
        return;
    }
    const auto achado = nomes.find(mudanca.nome);
    if (achado == nomes.end()) return; // depends on a change that was lost
    if (mudanca.chamada == Chamada::kLigar) nomes.emplace(mudanca.outro, achado->second);
    if (mudanca.chamada == Chamada::kTrocar) {
        const auto outro = nomes.find(mudanca.outro);
        if (outro != nomes.end()) std::swap(achado->second, outro->second);
    }
    if (mudanca.chamada == Chamada::kRenomear) nomes[mudanca.outro] = achado->second;
    if (mudanca.chamada == Chamada::kRenomear || mudanca.chamada == Chamada::kRemover)
        nomes.erase(mudanca.nome);
}

void Imagens::mudarNomes(Mudanca mudanca) {
    refazer(nomes_, mudanca);
    mudancas_.push_back(std::move(mudanca));
}

void Imagens::escrever(Arquivo &arquivo, const Evento &evento) {
    const std::size_t lugar = evento.lugar.value_or(arquivo.durante.size());
    const std::size_t fim = lugar + evento.bytes.size();
    if (fim > arquivo.durante.size()) arquivo.durante.resize(fim, '\0');
    arquivo.durante.replace(lugar, evento.bytes.size(), evento.bytes);
}

// Half of what is not flushed got to the disk.
std::string Imagens::Arquivo::rasgado() const {
    const std::size_t comum = std::min(gravado.size(), durante.size());
    const auto muda = static_cast<std::size_t>(
        std::mismatch(gravado.begin(), gravado.begin() + static_cast<std::ptrdiff_t>(comum),
                      durante.begin())
            .first -
        gravado.begin());
    const std::size_t meio = muda + (durante.size() - muda) / 2;
    return durante.substr(0, meio) + (gravado.size() > meio ? gravado.substr(meio) : "");
}

void Imagens::aplicar(const Evento &evento) {
    const auto aberto = abertos_.find(evento.fd);
    No no = aberto != abertos_.end() ? aberto->second : nullptr;
    if (const auto antigo = nomes_.find(nome(evento.caminho));
        aberto == abertos_.end() && evento.fd >= 0 && antigo != nomes_.end())
        no = antigo->second; // opened before the first call that was recorded
    switch (evento.chamada) {
    case Chamada::kAbrir: {
        const std::string arquivo = nome(evento.caminho);
        if (evento.cria) mudarNomes({Chamada::kAbrir, arquivo, {}, std::make_shared<Arquivo>()});
        const auto achado = nomes_.find(arquivo);
        abertos_[evento.fd] = achado != nomes_.end() ? achado->second : nullptr;
        break;
    }
    case Chamada::kEscrever:
        if (no) escrever(*no, evento);
        break;
    case Chamada::kCortar:
        if (no) no->durante.resize(evento.tamanho);
        break;
    case Chamada::kDescarregar:
        if (no) {
            no->gravado = no->durante;
        } else {
            gravados_ = nomes_;
            mudancas_.clear();
        }
        break;
    case Chamada::kFechar:
        abertos_.erase(evento.fd);
        break;
    case Chamada::kRenomear:
    case Chamada::kTrocar:
    case Chamada::kLigar:
    case Chamada::kRemover:
        mudarNomes({evento.chamada, nome(evento.caminho),
                    evento.outro.empty() ? std::string() : nome(evento.outro), nullptr});
        break;
    case Chamada::kLer:
    case Chamada::kSituacao:
    case Chamada::kPermissao:
    case Chamada::kTravar:
        break;
    }
}

std::set<Fotografia> Imagens::possiveis() const {
    constexpr std::size_t kMaximo = 10; // unflushed changes whose subsets are tried
    std::set<Fotografia> imagens;
    const std::size_t livres = std::min(mudancas_.size(), kMaximo);
    const std::size_t presas = mudancas_.size() - livres;
    for (std::size_t quais = 0; quais < std::size_t{1} << livres; ++quais) {
        Nomes nomes = gravados_;
        for (std::size_t i = 0; i < mudancas_.size(); ++i)
            if (i < presas || (quais >> (i - presas) & 1U) != 0) refazer(nomes, mudancas_[i]);
        Fotografia perdidos, inteiros, rasgados;
        for (const auto &[nome, no] : nomes) {
            perdidos[nome] = no->gravado;
            inteiros[nome] = no->durante;
            rasgados[nome] = no->rasgado();
        }
        imagens.insert({perdidos, inteiros, rasgados});
    }
    return imagens;
}

std::vector<std::string> Imagens::pendencias() const {
    std::vector<std::string> nomes;
    for (const auto &[nome, no] : nomes_) {
        if (!nome.ends_with(kDiario)) continue;
        // The first sector alone may be lost.
        if (no->durante.substr(kSetor) != no->gravado.substr(std::min(kSetor, no->gravado.size())))
            nomes.push_back(nome + " has bytes that are not flushed");
        if (!gravados_.contains(nome) || gravados_.at(nome) != no)
            nomes.push_back(nome + " stands under a name that is not flushed");
    }
    return nomes;
}

} // namespace disco
