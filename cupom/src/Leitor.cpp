// SPDX-License-Identifier: MIT
#include "Leitor.h"

#include "Marcas.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>

namespace zel::cupom {

namespace {

// Control characters do nothing on paper and must not reach a device; a tab is one blank.
constexpr char imprimivel(char c) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '\t') return ' ';
    return byte < 0x20 || (byte >= 0x7F && byte < 0xA0) ? '\0' : c;
}

// The letters of a number and nothing else, at least `menor` and at most `maior`; `padrao` when it
// is no number.
int numeroEntre(std::string_view texto, int menor, int maior, int padrao) {
    int numero = 0;
    const char *fim = texto.data() + texto.size();
    const auto [parou, erro] = std::from_chars(texto.data(), fim, numero);
    if (parou != fim || texto.starts_with('-')) return padrao;
    if (erro == std::errc::result_out_of_range) return maior;
    return erro == std::errc() ? std::clamp(numero, menor, maior) : padrao;
}

// One walk over a receipt.
class Leitura {
public:
    explicit Leitura(std::string_view texto) : texto_(texto) {}

    Cupom ler() {
        while (posicao_ < texto_.size()) {
            const char c = texto_[posicao_];
            if (c == '<' && lerMarca()) continue;
            if (c == '\n')
                terminarLinha();
            else
                escrever(c);
            ++posicao_;
        }
        interromperLinha();
        return std::move(cupom_);
    }

private:
    void escrever(char c) {
        c = imprimivel(c);
        if (c == '\0') return;
        aposBloco_ = false;
        auto &trechos = linha_.trechos;
        if (trechos.empty()) linha_.alinhamento = alinhamento_;
        if (trechos.empty() || trechos.back().estilo != estilo_)
            trechos.push_back({std::string(), estilo_});
        trechos.back().texto.push_back(c);
    }

    // The line as it stands, blank or not.
    void fecharLinha() { cupom_.blocos.emplace_back(std::exchange(linha_, Linha())); }

    void terminarLinha() {
        if (!aposBloco_) fecharLinha();
        aposBloco_ = false;
    }

    // What has been written so far becomes a line; nothing written makes none.
    void interromperLinha() {
        if (!linha_.trechos.empty()) fecharLinha();
    }

    void porBloco(Bloco bloco) {
        interromperLinha();
        cupom_.blocos.push_back(std::move(bloco));
        aposBloco_ = true;
    }

    // Reads the marker at the position and goes on after it; false when there is none.
    bool lerMarca() {
        const std::string_view dentro = texto_.substr(posicao_ + 1, marcas::kMaior + 2);
        const std::size_t fim = dentro.find('>');
        if (fim == dentro.npos) return false;
        const std::string_view nome = dentro.substr(0, fim);
        return lerMarcaDeTexto(nome) || lerMarcaDeConteudo(nome);
    }

    bool lerMarcaDeTexto(std::string_view nome) {
        const bool fecha = nome.starts_with('/');
        const std::size_t indice = marcas::indiceDe(marcas::kDeTexto, nome.substr(fecha ? 1 : 0));
        if (indice == marcas::kDeTexto.size()) return false;
        // A closing marker that closes nothing is text.
        if (fecha && abertas_[indice] == 0) return false;
        abertas_[indice] = fecha ? abertas_[indice] - 1 : abertas_[indice] + 1;
        if (marcas::kDeTexto[indice] == kLetrasNormais) {
            for (std::size_t i = 0; i < marcas::kDeTexto.size(); ++i)
                if (kSentidosDeTexto[i].primeira != nullptr) emVigor_[i] = false;
        }
        emVigor_[indice] = !fecha;
        aplicar();
        posicao_ += nome.size() + 2;
        return true;
    }

    // Style and alignment from the names that are in force.
    void aplicar() {
        estilo_ = Estilo();
        alinhamento_ = Alinhamento::kEsquerda;
        for (std::size_t i = 0; i < marcas::kDeTexto.size(); ++i) {
            if (!emVigor_[i]) continue;
            const MarcaDeTexto &marca = kSentidosDeTexto[i];
            if (marca.primeira != nullptr) estilo_.*marca.primeira = true;
            if (marca.segunda != nullptr) estilo_.*marca.segunda = true;
            if (marca.alinhamento != Alinhamento::kEsquerda) alinhamento_ = marca.alinhamento;
        }
    }

    bool lerMarcaDeConteudo(std::string_view nome) {
        const std::size_t indice = marcas::indiceDe(marcas::kDeConteudo, nome);
        if (indice == marcas::kDeConteudo.size()) return false;
        const std::size_t inicio = posicao_ + nome.size() + 2;
        const std::string fecho = std::string("</").append(nome).append(">");
        const std::size_t fim = acharFecho(indice, fecho, inicio);
        if (fim == texto_.npos) return false;
        posicao_ = fim + fecho.size();
        executar(kSentidosDeConteudo[indice].acao, texto_.substr(inicio, fim - inicio));
        return true;
    }

    // Where the closing marker begins, which must be on the same line: a closing marker that was
    // forgotten must not swallow the receipt. A search that failed holds for the rest of the line.
    std::size_t acharFecho(std::size_t indice, std::string_view fecho, std::size_t inicio) {
        if (inicio < semFechoAte_[indice]) return texto_.npos;
        if (fimDaLinha_ < inicio) fimDaLinha_ = std::min(texto_.find('\n', inicio), texto_.size());
        const std::size_t fim = texto_.substr(0, fimDaLinha_).find(fecho, inicio);
        if (fim == texto_.npos) semFechoAte_[indice] = fimDaLinha_ + 1;
        return fim;
    }

    void executar(Acao acao, std::string_view conteudo) {
        switch (acao) {
        case Acao::kNenhuma:
            return;
        case Acao::kLinha:
            fecharLinha();
            aposBloco_ = true;
            return;
        case Acao::kAvanco:
            if (const int linhas = numeroEntre(conteudo, 0, kMaiorAvanco, 0); linhas > 0)
                porBloco(Avanco{linhas});
            return;
        case Acao::kCorte:
            return porBloco(Corte());
        case Acao::kLogotipo:
            return porBloco(Logotipo());
        case Acao::kQr:
            return porQr(conteudo);
        }
    }

    void porQr(std::string_view conteudo) {
        constexpr std::string_view abre = "<lmodulo>", fecha = "</lmodulo>";
        Qr qr{std::string(conteudo), kModuloPadrao, alinhamento_};
        const std::size_t inicio = conteudo.find(abre);
        const std::size_t fim = conteudo.find(fecha, inicio);
        if (inicio != conteudo.npos && fim != conteudo.npos) {
            const std::size_t numero = inicio + abre.size();
            qr.modulo = numeroEntre(conteudo.substr(numero, fim - numero), kMenorModulo,
                                    kMaiorModulo, kModuloPadrao);
            qr.conteudo.erase(inicio, fim + fecha.size() - inicio);
        }
        if (qr.conteudo.empty()) return;
        if (qr.conteudo.size() <= kMaiorQr) return porBloco(std::move(qr));
        for (const char c : qr.conteudo)
            escrever(c);
    }

    std::string_view texto_;
    std::size_t posicao_ = 0;
    Cupom cupom_;
    Linha linha_;
    bool aposBloco_ = false; // nothing was written since the last block
    Estilo estilo_;
    Alinhamento alinhamento_ = Alinhamento::kEsquerda;
    std::array<std::size_t, marcas::kDeTexto.size()> abertas_{}; // openings that wait for a closing
    std::array<bool, marcas::kDeTexto.size()> emVigor_{};
    std::array<std::size_t, marcas::kDeConteudo.size()> semFechoAte_{};
    std::size_t fimDaLinha_ = 0; // of the line in which was searched last
};

} // namespace

Cupom ler(std::string_view texto) {
    return Leitura(texto).ler();
}

} // namespace zel::cupom
