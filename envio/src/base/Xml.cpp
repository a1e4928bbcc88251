// SPDX-License-Identifier: MIT
#include "base/Xml.h"

#include "base/BytesXml.h"

#include <algorithm>
#include <array>
#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/xmlerror.h>
#include <libxml/xmlsave.h>
#include <mutex>

namespace zel::envio {

namespace {

const xmlChar *bytes(const std::string &texto) {
    return reinterpret_cast<const xmlChar *>(texto.c_str());
}

std::string_view vista(const xmlChar *texto) {
    return texto == nullptr ? std::string_view() : reinterpret_cast<const char *>(texto);
}

std::string apropriar(xmlChar *texto) {
    std::string copia(vista(texto));
    xmlFree(texto);
    return copia;
}

bool ehElemento(const xmlNode *no) {
    return no->type == XML_ELEMENT_NODE;
}

// The tree is walked without recursion: a hostile one is as deep as its bytes allow.
const xmlNode *proximo(const xmlNode *no, const xmlNode *raiz, int &nivel) {
    if (no->type == XML_ELEMENT_NODE && no->children != nullptr) {
        ++nivel;
        return no->children;
    }
    while (no != raiz && no->next == nullptr) {
        no = no->parent;
        --nivel;
    }
    return no == raiz ? nullptr : no->next;
}

bool profundaDemais(const xmlNode *raiz) {
    int nivel = 0;
    for (const xmlNode *no = raiz; no != nullptr; no = proximo(no, raiz, nivel))
        if (nivel > kMaiorProfundidade) return true;
    return false;
}

std::string motivoDoLeitor(xmlParserCtxt *leitor) {
    const xmlError *erro = xmlCtxtGetLastError(leitor);
    if (erro == nullptr || erro->message == nullptr) return "não é XML bem formado";
    std::string mensagem = erro->message;
    while (!mensagem.empty() && mensagem.back() == '\n')
        mensagem.pop_back();
    return "não é XML bem formado, linha " + std::to_string(erro->line) + ": " + mensagem;
}

// No network, no entities of the document's own, no more text in one place than the limits of
// libxml2 allow, nothing printed, and the encoding that is handed over.
constexpr int kOpcoes = XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING |
                        XML_PARSE_NOCDATA | XML_PARSE_COMPACT | XML_PARSE_IGNORE_ENC;

struct LiberarLeitor {
    void operator()(xmlParserCtxt *leitor) const { xmlFreeParserCtxt(leitor); }
};

xmlNs *espacoDe(xmlNode *no) {
    for (xmlNode *este = no; este != nullptr; este = este->parent)
        if (este->type == XML_ELEMENT_NODE && este->ns != nullptr) return este->ns;
    return nullptr;
}

// What the layout wants of texts beyond what XML does: both quotes as references. Within a tag, a
// comment or an instruction they stay.
std::string comAspasReferidas(std::string_view xml) {
    std::string texto;
    texto.reserve(xml.size() + 16);
    while (!xml.empty()) {
        std::size_t inteiro = 1;
        if (xml.front() == '<') {
            const std::string_view fim = xml.starts_with("<!--") ? "-->" : ">";
            const std::size_t onde = xml.find(fim);
            inteiro = onde == xml.npos ? xml.size() : onde + fim.size();
            texto += xml.substr(0, inteiro);
        } else if (xml.front() == '"') {
            texto += "&quot;";
        } else if (xml.front() == '\'') {
            texto += "&#39;";
        } else {
            inteiro = std::min(xml.find_first_of("<\"'"), xml.size());
            texto += xml.substr(0, inteiro);
        }
        xml.remove_prefix(inteiro);
    }
    return texto;
}

} // namespace

// ---- No ----

std::string_view No::nome() const {
    return no_ == nullptr ? std::string_view() : vista(no_->name);
}

std::string_view No::espaco() const {
    return no_ == nullptr || no_->ns == nullptr ? std::string_view() : vista(no_->ns->href);
}

No No::filho(std::string_view caminho) const {
    No este = *this;
    while (este && !caminho.empty()) {
        const std::size_t barra = caminho.find('/');
        const std::string_view nome = caminho.substr(0, barra);
        caminho = barra == caminho.npos ? std::string_view() : caminho.substr(barra + 1);
        xmlNode *achado = este.no_->children;
        while (achado != nullptr && !(ehElemento(achado) && vista(achado->name) == nome))
            achado = achado->next;
        este = No(achado);
    }
    return este;
}

std::vector<No> No::filhos(std::string_view nome) const {
    std::vector<No> achados;
    for (xmlNode *no = no_ == nullptr ? nullptr : no_->children; no != nullptr; no = no->next)
        if (ehElemento(no) && (nome.empty() || vista(no->name) == nome)) achados.emplace_back(no);
    return achados;
}

No No::procurar(std::string_view nome) const {
    int nivel = 0;
    for (const xmlNode *no = no_; no != nullptr; no = proximo(no, no_, nivel))
        if (ehElemento(no) && vista(no->name) == nome) return No(const_cast<xmlNode *>(no));
    return {};
}

No No::pai() const {
    if (no_ == nullptr || no_->parent == nullptr || !ehElemento(no_->parent)) return {};
    return No(no_->parent);
}

std::string No::texto() const {
    return no_ == nullptr ? std::string() : apropriar(xmlNodeGetContent(no_));
}

std::string No::atributo(std::string_view nome) const {
    if (no_ == nullptr) return {};
    return apropriar(xmlGetNoNsProp(no_, bytes(std::string(nome))));
}

std::vector<std::string> No::atributos() const {
    std::vector<std::string> nomes;
    for (const xmlAttr *um = no_ == nullptr ? nullptr : no_->properties; um != nullptr;
         um = um->next)
        nomes.emplace_back(vista(um->name));
    return nomes;
}

bool No::misturado() const {
    bool elementos = false, texto = false;
    for (const xmlNode *no = no_ == nullptr ? nullptr : no_->children; no != nullptr;
         no = no->next) {
        elementos = elementos || ehElemento(no);
        texto = texto || (no->type == XML_TEXT_NODE && xmlIsBlankNode(no) == 0);
    }
    return elementos && texto;
}

std::string No::caminho() const {
    if (no_ == nullptr) return {};
    std::string este(nome());
    int antes = 0;
    bool repetido = false;
    for (const xmlNode *irmao = no_->prev; irmao != nullptr; irmao = irmao->prev)
        if (ehElemento(irmao) && vista(irmao->name) == nome()) ++antes;
    for (const xmlNode *irmao = no_->next; irmao != nullptr && !repetido; irmao = irmao->next)
        repetido = ehElemento(irmao) && vista(irmao->name) == nome();
    if (antes > 0 || repetido) este += '[' + std::to_string(antes + 1) + ']';
    const No acima = pai();
    return acima ? acima.caminho() + '/' + este : este;
}

No No::acrescentar(std::string_view nome, std::string_view texto) {
    xmlNode *novo = xmlNewDocNode(no_->doc, espacoDe(no_), bytes(std::string(nome)), nullptr);
    xmlAddChild(no_, novo);
    No este(novo);
    if (!texto.empty()) este.definirTexto(texto);
    return este;
}

No No::acrescentarEm(std::string_view espaco, std::string_view nome) {
    xmlNode *novo = xmlNewDocNode(no_->doc, nullptr, bytes(std::string(nome)), nullptr);
    xmlSetNs(novo, xmlNewNs(novo, bytes(std::string(espaco)), nullptr));
    return No(xmlAddChild(no_, novo));
}

void No::definirAtributo(std::string_view nome, std::string_view valor) {
    xmlSetProp(no_, bytes(std::string(nome)), bytes(std::string(valor)));
}

void No::definirTexto(std::string_view texto) {
    // A text node of its own: xmlNodeSetContent would take "&" for a reference.
    xmlNodeSetContent(no_, nullptr);
    xmlAddChild(no_, xmlNewDocTextLen(no_->doc, reinterpret_cast<const xmlChar *>(texto.data()),
                                      static_cast<int>(texto.size())));
}

No No::acrescentarCopia(const No &outro) {
    return No(xmlAddChild(no_, xmlDocCopyNode(outro.no_, no_->doc, 1)));
}

void No::remover() {
    if (no_ == nullptr) return;
    xmlUnlinkNode(no_);
    xmlFreeNode(no_);
    no_ = nullptr;
}

// ---- Documento ----

void Documento::Liberar::operator()(xmlDoc *doc) const {
    xmlFreeDoc(doc);
}

void prepararXml() {
    static std::once_flag uma;
    std::call_once(uma, xmlInitParser);
}

std::optional<Documento> Documento::ler(std::string_view entrada, std::string &motivo) {
    prepararXml();
    while (!entrada.empty() && entrada.back() == '\0')
        entrada.remove_suffix(1);
    if (entrada.empty()) return motivo = "está vazio", std::nullopt;
    if (entrada.size() > kMaiorDocumento) return motivo = "é maior que 16 MiB", std::nullopt;
    motivo = motivoParaNaoLer(entrada);
    const char *codificacao = motivo.empty() ? codificacaoDe(entrada, motivo) : nullptr;
    if (codificacao == nullptr) return {};

    const std::unique_ptr<xmlParserCtxt, LiberarLeitor> leitor(xmlNewParserCtxt());
    Documento lido;
    lido.doc_.reset(xmlCtxtReadMemory(leitor.get(), entrada.data(),
                                      static_cast<int>(entrada.size()), nullptr, codificacao,
                                      kOpcoes));
    if (!lido.doc_) return motivo = motivoDoLeitor(leitor.get()), std::nullopt;
    const xmlNode *raiz = xmlDocGetRootElement(lido.doc_.get());
    if (raiz == nullptr) return motivo = "não tem elemento", std::nullopt;
    if (profundaDemais(raiz))
        return motivo = "tem elementos demais uns dentro dos outros", std::nullopt;
    return lido;
}

Documento Documento::novo(std::string_view raiz, std::string_view espaco) {
    prepararXml();
    Documento novo;
    novo.doc_.reset(xmlNewDoc(reinterpret_cast<const xmlChar *>("1.0")));
    xmlNode *no = xmlNewDocNode(novo.doc_.get(), nullptr, bytes(std::string(raiz)), nullptr);
    xmlDocSetRootElement(novo.doc_.get(), no);
    if (!espaco.empty()) xmlSetNs(no, xmlNewNs(no, bytes(std::string(espaco)), nullptr));
    return novo;
}

Documento Documento::de(const No &no) {
    Documento novo;
    if (!no) return novo;
    novo.doc_.reset(xmlNewDoc(reinterpret_cast<const xmlChar *>("1.0")));
    xmlDocSetRootElement(novo.doc_.get(), xmlDocCopyNode(no.cru(), novo.doc_.get(), 1));
    return novo;
}

No Documento::raiz() const {
    return No(doc_ ? xmlDocGetRootElement(doc_.get()) : nullptr);
}

Documento Documento::copia() const {
    Documento outro;
    if (doc_) outro.doc_.reset(xmlCopyDoc(doc_.get(), 1));
    return outro;
}

std::string Documento::texto() const {
    return comAspasReferidas(textoComAspas());
}

std::string Documento::textoComAspas() const {
    if (!doc_) return {};
    xmlBuffer *memoria = xmlBufferCreate();
    xmlSaveCtxt *saida = xmlSaveToBuffer(memoria, "UTF-8", XML_SAVE_NO_DECL | XML_SAVE_AS_XML);
    xmlSaveTree(saida, xmlDocGetRootElement(doc_.get()));
    xmlSaveClose(saida);
    std::string texto(vista(xmlBufferContent(memoria)));
    xmlBufferFree(memoria);
    return texto;
}

// ---- characters ----

std::string utf8DeLatin1(std::string_view latin1) {
    std::string utf8;
    utf8.reserve(latin1.size() + 16);
    for (const char c : latin1) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x80) utf8 += static_cast<char>(0xC0 | (byte >> 6));
        utf8 += byte < 0x80 ? c : static_cast<char>(0x80 | (byte & 0x3F));
    }
    return utf8;
}

std::optional<std::string> latin1DeUtf8(std::string_view utf8) {
    std::string latin1;
    latin1.reserve(utf8.size());
    for (std::size_t i = 0; i < utf8.size(); ++i) {
        const auto byte = static_cast<unsigned char>(utf8[i]);
        if (byte < 0x80) {
            latin1 += utf8[i];
            continue;
        }
        if ((byte != 0xC2 && byte != 0xC3) || i + 1 == utf8.size()) return {};
        const auto segundo = static_cast<unsigned char>(utf8[++i]);
        if ((segundo & 0xC0) != 0x80) return {};
        latin1 += static_cast<char>(((byte & 0x03) << 6) | (segundo & 0x3F));
    }
    return latin1;
}

bool ehUtf8(std::string_view texto) {
    return xmlCheckUTF8(bytes(std::string(texto))) != 0 &&
           texto.find('\0') == std::string_view::npos;
}

} // namespace zel::envio
