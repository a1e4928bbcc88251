// SPDX-License-Identifier: MIT
// XML as libxml2 holds it, owned and bounded: hostile bytes go in, nothing is fetched, no entity of
// the document's own is taken, and what comes out is a tree of at most kMaiorProfundidade levels.
// A Documento owns its tree; a No is a place in one, null when there is no such place, and every
// question to it is answered then, too: with nothing.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

struct _xmlDoc;
struct _xmlNode;

namespace zel::envio {

inline constexpr std::size_t kMaiorDocumento = 16U << 20; // bytes
inline constexpr int kMaiorProfundidade = 64;             // elements within each other
inline constexpr std::string_view kEspacoNfe = "http://www.portalfiscal.inf.br/nfe";
inline constexpr std::string_view kEspacoAssinatura = "http://www.w3.org/2000/09/xmldsig#";

class No {
public:
    No() = default;
    explicit No(_xmlNode *no) : no_(no) {}

    explicit operator bool() const { return no_ != nullptr; }
    bool operator==(const No &) const = default;
    _xmlNode *cru() const { return no_; }

    // Local name, without a prefix; its namespace.
    std::string_view nome() const;
    std::string_view espaco() const;

    // The first element at the end of a path of local names, "ide/nNF".
    No filho(std::string_view caminho) const;
    // All child elements, or those of that name.
    std::vector<No> filhos(std::string_view nome = {}) const;
    // The first element of that name below this one, or itself.
    No procurar(std::string_view nome) const;
    No pai() const;

    // All text within; of a path, empty when it leads nowhere.
    std::string texto() const;
    std::string texto(std::string_view caminho) const { return filho(caminho).texto(); }
    std::string atributo(std::string_view nome) const;
    std::vector<std::string> atributos() const; // their local names
    // Whether text other than blanks stands beside its elements.
    bool misturado() const;
    // Names from the root on, repeated ones with their number: "NFe/infNFe/det[2]/prod/qCom".
    std::string caminho() const;

    // Adds an element at the end, in the namespace of this one; with text (UTF-8) or without.
    No acrescentar(std::string_view nome, std::string_view texto = {});
    // The same in a namespace of its own, which becomes the default one there.
    No acrescentarEm(std::string_view espaco, std::string_view nome);
    void definirAtributo(std::string_view nome, std::string_view valor);
    void definirTexto(std::string_view texto);
    // Adds a copy of another tree's element, which declares the namespaces that it had there
    // itself.
    No acrescentarCopia(const No &outro);
    // Takes this element out of its tree and forgets it.
    void remover();

private:
    _xmlNode *no_ = nullptr;
};

class Documento {
public:
    Documento() = default;

    // Reads bytes of up to kMaiorDocumento. Without a declaration, UTF-8 when the bytes are that,
    // and ISO-8859-1 otherwise; NULs at the end, which scrambled files carry, are dropped. None
    // when they are no document: `motivo` then says why, with the line, in Portuguese.
    static std::optional<Documento> ler(std::string_view bytes, std::string &motivo);
    // One element without content.
    static Documento novo(std::string_view raiz, std::string_view espaco);
    // A copy of an element alone, which declares the namespaces that it had in its place.
    static Documento de(const No &no);

    explicit operator bool() const { return doc_ != nullptr; }
    _xmlDoc *cru() const { return doc_.get(); }
    No raiz() const;
    Documento copia() const;

    // UTF-8 without declaration and without line ends but those of texts: what is sent. In texts
    // the five signs of XML are references, quotes included; a signature does not see that.
    std::string texto() const;
    // The same with quotes as they are, for readers that do not know their references.
    std::string textoComAspas() const;

private:
    struct Liberar {
        void operator()(_xmlDoc *doc) const;
    };
    std::unique_ptr<_xmlDoc, Liberar> doc_;
};

// libxml2 prepares itself at its first use, and not safely when several threads come at once.
// Documents do this; whoever uses libxml2 before there is one does it himself.
void prepararXml();

// ISO-8859-1 to UTF-8, and back (none when a character does not exist there).
std::string utf8DeLatin1(std::string_view latin1);
std::optional<std::string> latin1DeUtf8(std::string_view utf8);
bool ehUtf8(std::string_view bytes);

} // namespace zel::envio
