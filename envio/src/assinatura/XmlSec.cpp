// SPDX-License-Identifier: MIT
#include "assinatura/XmlSec.h"

#include <libxml/globals.h>
#include <libxml/tree.h>
#include <libxml/valid.h>
#include <mutex>

#include <xmlsec/xmlsec.h> // names the types of the others

#include <xmlsec/crypto.h>
#include <xmlsec/errors.h>
#include <xmlsec/openssl/evp.h>
#include <xmlsec/xmldsig.h>

namespace zel::envio {

namespace {

void calar(const char * /*file*/, int /*line*/, const char * /*func*/, const char * /*object*/,
           const char * /*subject*/, int /*reason*/, const char * /*msg*/) {}

// A program that uses xmlsec itself has initialised it, and its settings stay. Otherwise nobody
// else hears what xmlsec has to say: it would be printed.
void inicializar() {
    static std::once_flag uma;
    std::call_once(uma, [] {
        prepararXml();
        if (xmlSecPtrListIsValid(xmlSecTransformIdsGet())) return;
        if (xmlSecInit() < 0 || xmlSecOpenSSLInit() < 0) return;
        xmlSecErrorsSetCallback(calar);
    });
}

bool adotar(xmlSecDSigCtx *contexto, EVP_PKEY *chave) {
    EVP_PKEY_up_ref(chave);
    xmlSecKeyData *valor = xmlSecOpenSSLEvpKeyAdopt(chave);
    if (valor == nullptr) {
        EVP_PKEY_free(chave);
        return false;
    }
    contexto->signKey = xmlSecKeyCreate();
    if (contexto->signKey != nullptr && xmlSecKeySetValue(contexto->signKey, valor) == 0)
        return true;
    xmlSecKeyDataDestroy(valor);
    return false;
}

} // namespace

void LiberarContextoXmlSec::operator()(xmlSecDSigCtx *contexto) const {
    xmlSecDSigCtxDestroy(contexto);
}

ContextoXmlSec contextoXmlSec(EVP_PKEY *chave) {
    inicializar();
    ContextoXmlSec contexto(xmlSecDSigCtxCreate(nullptr));
    if (!contexto) return nullptr;
    contexto->flags = XMLSEC_DSIG_FLAGS_IGNORE_MANIFESTS;
    contexto->enabledReferenceUris = xmlSecTransformUriTypeSameDocument;
    for (xmlSecTransformId id :
         {xmlSecTransformEnvelopedId, xmlSecTransformInclC14NId, xmlSecTransformSha1Id})
        if (xmlSecDSigCtxEnableReferenceTransform(contexto.get(), id) < 0) return nullptr;
    for (xmlSecTransformId id : {xmlSecTransformInclC14NId, xmlSecTransformRsaSha1Id})
        if (xmlSecDSigCtxEnableSignatureTransform(contexto.get(), id) < 0) return nullptr;
    if (!adotar(contexto.get(), chave)) contexto.reset();
    return contexto;
}

SilencioXml::SilencioXml() : antes_(xmlStructuredError), contexto_(xmlStructuredErrorContext) {
    xmlSetStructuredErrorFunc(nullptr, [](void *, auto *) {});
}

SilencioXml::~SilencioXml() {
    xmlSetStructuredErrorFunc(contexto_, antes_);
}

IdRegistrado::IdRegistrado(const No &elemento, const std::string &id)
    : elemento_(elemento),
      atributo_(xmlHasNsProp(elemento.cru(), reinterpret_cast<const xmlChar *>("Id"), nullptr)) {
    const auto *valor = reinterpret_cast<const xmlChar *>(id.c_str());
    // One that another element has, by an xml:id, stays that one's.
    if (atributo_ != nullptr && xmlAddID(nullptr, elemento.cru()->doc, valor, atributo_) == nullptr)
        atributo_ = nullptr;
}

IdRegistrado::~IdRegistrado() {
    if (atributo_ != nullptr) xmlRemoveID(elemento_.cru()->doc, atributo_);
}

} // namespace zel::envio
