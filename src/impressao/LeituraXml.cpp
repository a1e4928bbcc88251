// SPDX-License-Identifier: MIT
#include "impressao/LeituraXml.h"

#include "disco/Arquivo.h"
#include "recusa/Recusa.h"
#include "texto/Cripto.h"
#include "texto/Texto.h"
#include "texto/TextoXml.h"

#include <algorithm>
#include <cstddef>

namespace zel {

namespace {

constexpr std::string_view kMarcaDeOrdem = "\xEF\xBB\xBF";

constexpr bool ehControle(char c) {
    return static_cast<unsigned char>(c) < 0x20;
}

struct Caractere {
    char32_t codigo;
    std::size_t tamanho;
};

// The multi-byte character at the start of the text, if there is a valid one.
std::optional<Caractere> lerMultibyte(std::string_view texto) {
    constexpr struct {
        unsigned mascara, marca;
        std::size_t tamanho;
        char32_t minimo; // a smaller code is not written in so many bytes
    } kFormas[] = {{0xE0, 0xC0, 2, 0x80}, {0xF0, 0xE0, 3, 0x800}, {0xF8, 0xF0, 4, 0x10000}};
    const unsigned primeiro = static_cast<unsigned char>(texto.front());
    for (const auto &forma : kFormas) {
        if ((primeiro & forma.mascara) != forma.marca || texto.size() < forma.tamanho) continue;
        char32_t codigo = primeiro & ~forma.mascara;
        for (const char c : texto.substr(1, forma.tamanho - 1)) {
            const unsigned byte = static_cast<unsigned char>(c);
            if ((byte & 0xC0) != 0x80) return {};
            codigo = codigo << 6 | (byte & 0x3F);
        }
        const bool substituto = codigo >= 0xD800 && codigo <= 0xDFFF;
        if (codigo < forma.minimo || codigo > 0x10FFFF || substituto) return {};
        return Caractere{codigo, forma.tamanho};
    }
    return {};
}

bool declaraUtf8(std::string_view texto) {
    if (!texto.starts_with("<?xml")) return false;
    return toUpperCase(texto.substr(0, texto.find("?>"))).find("UTF-8") != std::string::npos;
}

std::string semMarcaDeOrdem(std::string texto) {
    if (texto.starts_with(kMarcaDeOrdem)) texto.erase(0, kMarcaDeOrdem.size());
    return texto;
}

// Values without a reference or a control byte, nearly all, are taken as they stand.
std::string decodificar(std::string_view valor, FimDeLinha fimDeLinha) {
    if (std::none_of(valor.begin(), valor.end(), [](char c) { return c == '&' || ehControle(c); }))
        return std::string(valor);
    return textoSimples(valor, fimDeLinha);
}

// Does a start or end tag of that name begin at the text's "<"?
bool ehTag(std::string_view tag, std::string_view nome) {
    tag.remove_prefix(tag.size() > 1 && tag[1] == '/' ? 2 : 1);
    constexpr std::string_view kFimDoNome = " \t\r\n/>";
    // Of the many tags of a document most begin with another letter.
    return tag.size() > nome.size() && tag.front() == nome.front() && tag.starts_with(nome) &&
           kFimDoNome.find(tag[nome.size()]) != kFimDoNome.npos;
}

} // namespace

std::string emLatin1(std::string_view texto) {
    const bool marcado = texto.starts_with(kMarcaDeOrdem);
    if (marcado) texto.remove_prefix(kMarcaDeOrdem.size());
    const bool declarado = marcado || declaraUtf8(texto);
    std::string latin1;
    latin1.reserve(texto.size());
    for (std::string_view resto = texto; !resto.empty();) {
        const auto ascii =
            std::find_if(resto.begin(), resto.end(), [](char c) { return (c & 0x80) != 0; });
        const auto tamanho = static_cast<std::size_t>(ascii - resto.begin());
        latin1.append(resto.substr(0, tamanho));
        resto.remove_prefix(tamanho);
        if (resto.empty()) break;
        const auto caractere = lerMultibyte(resto);
        // Undeclared, and not UTF-8 throughout: it is Latin-1.
        if (!caractere && !declarado) return std::string(texto);
        if (!caractere)
            latin1.push_back(resto.front());
        else
            latin1.push_back(caractere->codigo > 0xFF ? '?' : static_cast<char>(caractere->codigo));
        resto.remove_prefix(caractere ? caractere->tamanho : 1);
    }
    return latin1;
}

std::optional<ArquivoXml> lerArquivoXml(std::string_view caminho, Forma forma) {
    std::string conteudo;
    if (lerArquivo(std::string(caminho), conteudo) != Leitura::kLido) {
        recusar(Motivo::kImpressaoIlegivel);
        return {};
    }
    if (forma == Forma::kEmbaralhada) conteudo = fnDescriptBufferContingencia(conteudo);
    std::string texto = emLatin1(conteudo);
    return ArquivoXml{semMarcaDeOrdem(std::move(conteudo)), std::move(texto)};
}

bool LeitorXml::avancar(std::string_view marca) {
    const std::size_t achada = resto_.find(marca);
    if (achada == resto_.npos) return false;
    resto_.remove_prefix(achada + marca.size());
    return true;
}

std::optional<std::string> LeitorXml::valor(std::string_view marca, FimDeLinha fimDeLinha) {
    if (!avancar(marca)) return {};
    const std::string_view texto = resto_.substr(0, resto_.find('<'));
    resto_.remove_prefix(texto.size());
    return decodificar(texto, fimDeLinha);
}

std::optional<std::string> LeitorXml::propriedade(std::string_view abertura) {
    if (!avancar(abertura)) return {};
    const std::string_view texto = resto_.substr(0, resto_.find(abertura.back()));
    resto_.remove_prefix(texto.size());
    return decodificar(texto, FimDeLinha::kBranco);
}

std::optional<LeitorXml> LeitorXml::grupo(std::string_view nome) {
    const std::string inicio = std::string("<").append(nome);
    std::size_t comeco = resto_.find(inicio);
    while (comeco != resto_.npos && !ehTag(resto_.substr(comeco), nome))
        comeco = resto_.find(inicio, comeco + 1);
    if (comeco == resto_.npos) return {};
    resto_.remove_prefix(comeco + inicio.size());
    // An element closed in its own start tag holds nothing, and what follows is not its.
    const std::size_t fimDoInicio = resto_.find('>');
    if (fimDoInicio != resto_.npos && resto_.substr(0, fimDoInicio).ends_with('/')) return {};

    std::size_t fim = resto_.find('<');
    while (fim != resto_.npos && !ehTag(resto_.substr(fim), nome))
        fim = resto_.find('<', fim + 1);
    const LeitorXml dentro(resto_.substr(0, fim));
    resto_.remove_prefix(dentro.resto_.size());
    return dentro;
}

std::optional<std::string> primeiroValor(std::string_view texto,
                                         std::initializer_list<std::string_view> marcas,
                                         FimDeLinha fimDeLinha) {
    for (const std::string_view marca : marcas)
        if (auto valor = LeitorXml(texto).valor(marca, fimDeLinha)) return valor;
    return {};
}

std::optional<std::string> valorDoRetorno(std::string_view retorno, std::string_view nome) {
    for (std::size_t tag = retorno.find('<'); tag != retorno.npos;
         tag = retorno.find('<', tag + 1)) {
        const std::string_view inicio = retorno.substr(tag, nome.size() + 2);
        if (inicio.ends_with('>') && igualSemCaixa(inicio.substr(1, nome.size()), nome))
            return LeitorXml(retorno.substr(tag)).valor(inicio, FimDeLinha::kMantido);
    }
    return {};
}

} // namespace zel
