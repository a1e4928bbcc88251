// SPDX-License-Identifier: MIT
#include "Perfil.h"

#include "Texto.h"

#include <map>
#include <set>
#include <utility>

namespace zel::cupom {

namespace {

struct Chave {
    std::string_view nome;
    std::vector<Valor> pede;
    std::string_view recurso = {};      // must be true for the command to be used
    std::string_view outroRecurso = {}; // or this one
};

using Chaves = std::array<Chave, static_cast<std::size_t>(Ordem::kQuantas)>;

const Chaves &chaves() {
    static const Chaves tabela{{
        {"initialize", {}},
        {"codePage", {Valor::kNumero}},
        {"alignLeft", {}},
        {"alignCenter", {}},
        {"alignRight", {}},
        {"printMode", {Valor::kNumero}},
        {"size", {Valor::kNumero}},
        {"boldOn", {}},
        {"boldOff", {}},
        {"italicOn", {}},
        {"italicOff", {}},
        {"underlineOn", {}},
        {"underlineOff", {}},
        {"doubleWidthOn", {}},
        {"doubleWidthOff", {}},
        {"doubleHeightOn", {}},
        {"doubleHeightOff", {}},
        {"feed", {Valor::kNumero}},
        {"paperFullCut", {}, "paperFullCut"},
        {"paperPartCut", {}, "paperPartCut"},
        {"qrCode", {Valor::kModulo, Valor::kTamanho, Valor::kDados}, "qrCode"},
        {"bitImageRaster", {Valor::kLargura, Valor::kAltura, Valor::kDados}, "bitImageRaster"},
        {"storedLogo", {}},
        {"pulse", {}, "pulseStandard", "pulseBel"},
    }};
    return tabela;
}

// Off without on, or the other way round, would leave a style in force for ever.
constexpr std::array<std::pair<Ordem, Ordem>, 5> kPares{{
    {Ordem::kNegrito, Ordem::kNegritoFim},
    {Ordem::kItalico, Ordem::kItalicoFim},
    {Ordem::kSublinhado, Ordem::kSublinhadoFim},
    {Ordem::kLarguraDupla, Ordem::kLarguraDuplaFim},
    {Ordem::kAlturaDupla, Ordem::kAlturaDuplaFim},
}};

// What printMode sets, and so must not be set in another way; size, from its third place on.
constexpr std::array<Ordem, 5> kDoModo{
    Ordem::kTamanho, Ordem::kNegrito, Ordem::kSublinhado, Ordem::kLarguraDupla, Ordem::kAlturaDupla,
};

// "fonts.1.columns" without "fonts.": the number and what follows it.
std::optional<int> tirarIndice(std::string_view &chave, int maior) {
    return numeroDe(tirarAte(chave, "."), 0, maior);
}

// One reading of a profile. A failure is kept with its line; nothing is read after it.
class LeituraDePerfil {
public:
    std::optional<Perfil> ler(std::string_view texto, std::string &motivo) {
        if (texto.size() > kMaiorPerfil)
            falhar("perfil longo demais");
        else
            lerLinhas(texto);
        linha_ = 0;
        if (motivo_.empty()) concluir();
        motivo = motivo_;
        if (!motivo.empty()) return {};
        return std::move(perfil_);
    }

private:
    void falhar(std::string_view motivo) {
        if (!motivo_.empty()) return;
        if (linha_ > 0) motivo_ = "linha " + std::to_string(linha_) + ": ";
        motivo_ += motivo;
    }
    void exigir(bool vale, std::string_view motivo) {
        if (!vale) falhar(motivo);
    }

    void lerLinhas(std::string_view texto) {
        while (!texto.empty() && motivo_.empty()) {
            ++linha_;
            std::string_view valor = semBrancos(tirarAte(texto, "\n"));
            if (valor.empty() || valor.front() == '#') continue;
            if (valor.find('=') == valor.npos) return falhar("falta o sinal de igual");
            const std::string_view chave = semBrancos(tirarAte(valor, "="));
            if (!vistas_.emplace(chave).second) return falhar("chave repetida");
            lerChave(chave, semBrancos(valor));
        }
    }

    // Keys of other families belong to the databases and mean nothing here.
    void lerChave(std::string_view chave, std::string_view valor) {
        std::string_view resto = chave;
        const std::string_view familia = tirarAte(resto, ".");
        if (chave == "name")
            perfil_.nome = valor;
        else if (chave == "media.dpi")
            lerNumero(valor, 100, 1200, perfil_.dpi);
        else if (chave == "media.width.mm")
            lerNumero(valor, 20, 300, perfil_.milimetros);
        else if (chave == "media.width.pixels")
            lerNumero(valor, 8, kMaisPontos, perfil_.pontos);
        else if (familia == "fonts")
            lerFonte(resto, valor);
        else if (familia == "codePages")
            lerPagina(resto, valor);
        else if (familia == "features")
            lerRecurso(resto, valor);
        else if (familia == "commands")
            lerOrdem(resto, valor);
        else if (familia == "use")
            lerUso(resto, valor);
    }

    void lerNumero(std::string_view valor, int menor, int maior, int &destino) {
        const auto numero = numeroDe(valor, menor, maior);
        if (!numero)
            return falhar("numero invalido, ou fora de " + std::to_string(menor) + " a " +
                          std::to_string(maior));
        destino = *numero;
    }

    void lerComando(std::string_view valor, const std::vector<Valor> &pede, Comando &destino) {
        auto comando = Comando::ler(valor);
        if (!comando) return falhar("comando invalido");
        if (comando->existe() && !comando->pede(pede))
            return falhar("o comando nao tem os valores que devia ter");
        destino = std::move(*comando);
    }

    void lerFonte(std::string_view resto, std::string_view valor) {
        const auto indice = tirarIndice(resto, kMaisFontes - 1);
        if (!indice) return falhar("fonte desconhecida");
        FonteDoPerfil &fonte = fontes_[*indice];
        if (resto == "columns")
            lerNumero(valor, 8, 255, fonte.colunas);
        else if (resto == "command")
            lerComando(valor, {}, fonte.comando);
    }

    void lerPagina(std::string_view resto, std::string_view valor) {
        const auto numero = numeroDe(resto, 0, 255);
        if (!numero) return falhar("numero de pagina invalido");
        paginas_.emplace(valor, *numero);
    }

    void lerRecurso(std::string_view resto, std::string_view valor) {
        exigir(!resto.empty() && (valor == "true" || valor == "false"), "nem true nem false");
        if (valor == "true") recursos_.emplace(resto);
    }

    void lerOrdem(std::string_view resto, std::string_view valor) {
        for (std::size_t i = 0; i < chaves().size(); ++i)
            if (chaves()[i].nome == resto)
                return lerComando(valor, chaves()[i].pede, perfil_.comandos[i]);
        falhar("comando desconhecido");
    }

    void lerUso(std::string_view resto, std::string_view valor) {
        if (resto == "codePage")
            pagina_ = valor;
        else if (resto == "logo")
            lerLogotipo(valor);
        else if (resto == "linesBeforeCut")
            lerNumero(valor, 0, kMaisLinhasAntesDoCorte, perfil_.linhasAntesDoCorte);
        else if (resto == "largestModule")
            lerNumero(valor, kMenorModulo, kMaiorModulo, perfil_.maiorModulo);
        else if (resto == "largestFeed")
            lerNumero(valor, 1, kMaiorAvanco, perfil_.maiorAvanco);
        else if (resto == "status")
            lerEstado(valor);
        else
            falhar("uso desconhecido");
    }

    void lerEstado(std::string_view valor) {
        for (const FamiliaDeEstado &familia : kFamiliasDeEstado)
            if (familia.nome == valor) perfil_.estado = &familia;
        exigir(perfil_.estado != nullptr || valor == "none", "nem escpos nem star nem none");
    }

    void lerLogotipo(std::string_view valor) {
        if (valor == "none")
            perfil_.logotipo = ModoLogotipo::kNenhum;
        else if (valor == "stored")
            perfil_.logotipo = ModoLogotipo::kGuardado;
        else
            exigir(valor == "raster", "nem raster nem stored nem none");
    }

    bool tem(Ordem ordem) const { return perfil_.comando(ordem).existe(); }

    // What concerns more than one line.
    void concluir() {
        exigir(!perfil_.nome.empty(), "falta name");
        exigir(perfil_.milimetros > 0, "falta media.width.mm");
        exigir(perfil_.pontos > 0, "falta media.width.pixels");
        if (perfil_.maiorModulo == 0) perfil_.maiorModulo = kMaiorModulo;
        concluirRecursos();
        concluirFontes();
        concluirPagina();
        concluirEstilos();
        exigir(perfil_.logotipo != ModoLogotipo::kGuardado || tem(Ordem::kLogotipo),
               "falta commands.storedLogo");
    }

    // A feature without its command cannot be used; a command without its feature is not.
    void concluirRecursos() {
        for (std::size_t i = 0; i < chaves().size(); ++i) {
            const Chave &chave = chaves()[i];
            if (chave.recurso.empty()) continue;
            const bool vale =
                recursos_.contains(chave.recurso) || recursos_.contains(chave.outroRecurso);
            if (!vale) perfil_.comandos[i] = Comando();
            exigir(!vale || perfil_.comandos[i].existe(),
                   std::string("falta commands.").append(chave.nome));
        }
    }

    void concluirFontes() {
        exigir(fontes_.contains(0), "falta fonts.0");
        for (auto &[indice, fonte] : fontes_) {
            exigir(indice == static_cast<int>(perfil_.fontes.size()), "falta uma fonte no meio");
            exigir(fonte.colunas > 0, "falta a largura de uma fonte em columns");
            exigir(fontes_.size() == 1 || tem(Ordem::kModo) != fonte.comando.existe(),
                   "cada fonte tem o seu command, ou nenhuma tem e ha printMode");
            perfil_.fontes.push_back(std::move(fonte));
        }
        exigir(!tem(Ordem::kModo) || perfil_.fontes.size() <= 2, "printMode so tem duas fontes");
    }

    void concluirPagina() {
        exigir(!pagina_.empty(), "falta use.codePage");
        const auto numero = paginas_.find(pagina_);
        exigir(numero != paginas_.end(), "use.codePage nao esta entre codePages");
        for (const PaginaDeCodigo &pagina : kPaginasDeCodigo)
            if (pagina.nome == pagina_) perfil_.pagina = &pagina;
        exigir(perfil_.pagina != nullptr, "pagina de codigo sem tabela de conversao");
        if (numero != paginas_.end()) perfil_.numeroDaPagina = numero->second;
    }

    void concluirEstilos() {
        for (const auto &[liga, desliga] : kPares)
            exigir(tem(liga) == tem(desliga), "um estilo que comeca e nao acaba, ou o contrario");
        for (std::size_t i = 0; i < kDoModo.size(); ++i) {
            exigir(!tem(Ordem::kModo) || !tem(kDoModo[i]), "printMode ja escolhe esse estilo");
            exigir(i < 3 || !tem(Ordem::kTamanho) || !tem(kDoModo[i]), "size ja escolhe o tamanho");
        }
    }

    Perfil perfil_;
    std::string motivo_;
    int linha_ = 0;
    std::set<std::string_view> vistas_;
    std::set<std::string_view> recursos_;
    std::map<std::string_view, int> paginas_;
    std::map<int, FonteDoPerfil> fontes_;
    std::string_view pagina_;
};

} // namespace

std::optional<Perfil> lerPerfil(std::string_view texto, std::string &motivo) {
    return LeituraDePerfil().ler(texto, motivo);
}

std::optional<std::string_view> textoDoPerfil(std::string_view nome) {
    for (const PerfilEmbutido &perfil : perfisEmbutidos())
        if (perfil.nome == nome) return perfil.texto;
    return {};
}

std::string_view perfilPadrao(int milimetros) {
    return milimetros < 70 ? "generico-58mm" : "generico-80mm";
}

} // namespace zel::cupom
