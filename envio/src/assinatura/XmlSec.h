// SPDX-License-Identifier: MIT
// xmlsec, initialised once, and its objects, owned.
#pragma once

#include "assinatura/OpenSsl.h"
#include "base/Xml.h"

#include <libxml/xmlerror.h>
#include <memory>
#include <string>
#include <xmlsec/xmldsig.h>

struct _xmlAttr;

namespace zel::envio {

struct LiberarContextoXmlSec {
    void operator()(xmlSecDSigCtx *contexto) const;
};
using ContextoXmlSec = std::unique_ptr<xmlSecDSigCtx, LiberarContextoXmlSec>;

// One that takes references into the same document, the two transforms and the algorithms of the
// layout, nothing else; with that key (public or private), which it shares. Null when memory is
// short or the key is of another kind.
ContextoXmlSec contextoXmlSec(EVP_PKEY *chave);

// While this lives, libxml2 keeps what it complains of in this thread to itself: it would be
// printed.
class SilencioXml {
public:
    SilencioXml();
    ~SilencioXml();
    SilencioXml(const SilencioXml &) = delete;
    SilencioXml &operator=(const SilencioXml &) = delete;

private:
    xmlStructuredErrorFunc antes_;
    void *contexto_;
};

// While this lives, the document knows the element by its Id, and no other element by that one.
class IdRegistrado {
public:
    IdRegistrado(const No &elemento, const std::string &id);
    ~IdRegistrado();
    IdRegistrado(const IdRegistrado &) = delete;
    IdRegistrado &operator=(const IdRegistrado &) = delete;

    explicit operator bool() const { return atributo_ != nullptr; }

private:
    No elemento_;
    _xmlAttr *atributo_;
};

} // namespace zel::envio
