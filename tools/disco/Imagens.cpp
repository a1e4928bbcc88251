// SPDX-License-Identifier: MIT
#include "disco/Imagens.h"

#include <algorithm>
#include <utility>

namespace disco {

namespace {

constexpr std::string_view kDiario = ".diario";
constexpr std::string_view kFim = "ZELF";
constexpr std::size_t kSetor = 512, kBloco = 4096;

// A block of the journal, without the zeros at its end, which are there anyway.
std::string_view blocoEm(std::string_view bytes, std::size_t lugar) {
    const std::string_view bloco = bytes.substr(std::min(lugar, bytes.size()), kBloco);
    return bloco.substr(0, bloco.find_last_not_of('\0') + 1);
}

// Whether a journal was flushed: its end alone, a block of one sector and zeros, may be lost.
bool estaNoDisco(std::string_view durante, std::string_view gravado) {
    for (std::size_t lugar = 0; lugar < durante.size(); lugar += kBloco) {
        const std::string_view bloco = blocoEm(durante, lugar);
        const bool fim = bloco.starts_with(kFim) && bloco.size() <= kSetor;
        if (!fim && bloco != blocoEm(gravado, lugar)) return false;
    }
    return true;
}

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

// Each sector got to the disk or did not, and so did the length; what never did reads as zeros.
std::string Imagens::Arquivo::sorteado(std::mt19937 &sorte) const {
    const auto cara = [&] { return (sorte() & 1U) != 0; };
    std::string bytes = gravado;
    bytes.resize(cara() ? durante.size() : gravado.size(), '\0');
    for (std::size_t lugar = 0; lugar < std::min(bytes.size(), durante.size()); lugar += kSetor)
        if (cara())
            bytes.replace(lugar, std::min(kSetor, bytes.size() - lugar),
                          durante.substr(lugar, bytes.size() - lugar), 0, kSetor);
    return bytes;
}

void Imagens::abrir(const Evento &evento) {
    const std::string arquivo = nome(evento.caminho);
    if (evento.cria) mudarNomes({Chamada::kAbrir, arquivo, {}, std::make_shared<Arquivo>()});
    const auto achado = nomes_.find(arquivo);
    abertos_[evento.fd] = achado != nomes_.end() ? achado->second : nullptr;
}

// A file, or the names: those of the directory.
void Imagens::descarregar(const No &no) {
    if (no) {
        no->gravado = no->durante;
        return;
    }
    gravados_ = nomes_;
    mudancas_.clear();
}

void Imagens::aplicar(const Evento &evento) {
    const auto aberto = abertos_.find(evento.fd);
    No no = aberto != abertos_.end() ? aberto->second : nullptr;
    if (const auto antigo = nomes_.find(nome(evento.caminho));
        aberto == abertos_.end() && evento.fd >= 0 && antigo != nomes_.end())
        no = antigo->second; // opened before the first call that was recorded
    switch (evento.chamada) {
    case Chamada::kAbrir:
        abrir(evento);
        break;
    case Chamada::kEscrever:
        if (no) escrever(*no, evento);
        break;
    case Chamada::kCortar:
        if (no) no->durante.resize(evento.tamanho);
        break;
    case Chamada::kDescarregar:
        descarregar(no);
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
    case Chamada::kSituacao:
        ver(evento);
        break;
    case Chamada::kLer:
    case Chamada::kPermissao:
    case Chamada::kTravar:
        break;
    }
}

template <class Conteudo>
Fotografia Imagens::revelada(const Nomes &nomes, Conteudo conteudo) {
    Fotografia imagem;
    for (const auto &[nome, no] : nomes)
        imagem[nome] = conteudo(*no);
    return imagem;
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
        imagens.insert({revelada(nomes, [](const Arquivo &arquivo) { return arquivo.gravado; }),
                        revelada(nomes, [](const Arquivo &arquivo) { return arquivo.durante; }),
                        revelada(nomes, [](const Arquivo &arquivo) { return arquivo.rasgado(); })});
    }
    return imagens;
}

std::vector<Fotografia> Imagens::sorteadas(int quantas, std::mt19937 &sorte) const {
    std::vector<Fotografia> imagens{
        revelada(gravados_, [](const Arquivo &arquivo) { return arquivo.gravado; }),
        revelada(nomes_, [](const Arquivo &arquivo) { return arquivo.durante; })};
    while (static_cast<int>(imagens.size()) < quantas) {
        Nomes nomes = gravados_;
        for (const Mudanca &mudanca : mudancas_)
            if ((sorte() & 1U) != 0) refazer(nomes, mudanca);
        imagens.push_back(
            revelada(nomes, [&](const Arquivo &arquivo) { return arquivo.sorteado(sorte); }));
    }
    return imagens;
}

std::vector<std::string> Imagens::pendencias() const {
    std::vector<std::string> nomes;
    for (const auto &[nome, no] : nomes_) {
        if (!nome.ends_with(kDiario)) continue;
        if (!estaNoDisco(no->durante, no->gravado))
            nomes.push_back(nome + " has bytes that are not flushed");
        if (!gravados_.contains(nome) || gravados_.at(nome) != no)
            nomes.push_back(nome + " stands under a name that is not flushed");
    }
    return nomes;
}

} // namespace disco
