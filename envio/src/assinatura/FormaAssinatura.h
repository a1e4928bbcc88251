// SPDX-License-Identifier: MIT
// The form of a signature as the layout fixes it: each element, in that order, with that algorithm,
// and nothing beside. What does not have it is not even computed.
#pragma once

#include "base/Recusa.h"
#include "base/Xml.h"

#include <optional>
#include <string>

namespace zel::envio {

inline constexpr const char *kC14n = "http://www.w3.org/TR/2001/REC-xml-c14n-20010315";
inline constexpr const char *kRsaSha1 = "http://www.w3.org/2000/09/xmldsig#rsa-sha1";
inline constexpr const char *kSha1 = "http://www.w3.org/2000/09/xmldsig#sha1";
inline constexpr const char *kEnvelopada = "http://www.w3.org/2000/09/xmldsig#enveloped-signature";

struct FormaAssinatura {
    No assinado, assinatura;
    std::string id;
};

// `pai`: NFe, evento or inutNFe, with the element that is signed and one Signature right below it.
std::optional<FormaAssinatura> formaDe(const Documento &documento, const No &pai, Recusas &recusas);

// Whether the canonical form costs no more than the document's size suggests: namespaces in force
// in one place, and attributes of one element, are as many as a message may have, and the
// namespaces are absolute.
bool conferirCanonico(const Documento &documento, Recusas &recusas);

// The element's Id is a name, and no other attribute of the document that somebody could take for
// an Id has that value.
bool conferirId(const Documento &documento, const No &elemento, Recusas &recusas);

} // namespace zel::envio
