// SPDX-License-Identifier: MIT
// The published schema of the document, where ZEL_ESQUEMAS names its folder: libxml2 judges.
#pragma once

#include "base/Xml.h"

#include <cstdarg>
#include <cstdlib>
#include <libxml/xmlschemas.h>
#include <memory>
#include <string>

namespace zel::envio::teste {

class Juiz {
public:
    static const Juiz &unico() {
        static const Juiz juiz;
        return juiz;
    }
    bool ha() const { return esquema_ != nullptr; }

    // What the schema says against an unsigned NFe, but that Signature is missing; empty: nothing.
    std::string julgar(const Documento &documento) const {
        std::string queixas;
        xmlSchemaValidCtxt *contexto = xmlSchemaNewValidCtxt(esquema_.get());
        xmlSchemaSetValidErrors(contexto, juntar, juntar, &queixas);
        xmlSchemaValidateDoc(contexto, documento.cru());
        xmlSchemaFreeValidCtxt(contexto);
        return queixas;
    }

private:
    Juiz() {
        const char *pasta = std::getenv("ZEL_ESQUEMAS");
        if (pasta == nullptr || *pasta == '\0') return;
        xmlSchemaParserCtxt *leitor =
            xmlSchemaNewParserCtxt((std::string(pasta) + "/nfe_v4.00.xsd").c_str());
        esquema_.reset(xmlSchemaParse(leitor));
        xmlSchemaFreeParserCtxt(leitor);
    }

    static void juntar(void *queixas, const char *formato, ...) {
        char texto[1024];
        va_list argumentos;
        va_start(argumentos, formato);
        std::vsnprintf(texto, sizeof texto, formato, argumentos);
        va_end(argumentos);
        const std::string_view queixa = texto;
        if (queixa.find("Missing child element(s)") != queixa.npos &&
            queixa.find("xmldsig#}Signature )") != queixa.npos)
            return;
        *static_cast<std::string *>(queixas) += queixa;
    }

    struct Liberar {
        void operator()(xmlSchema *esquema) const { xmlSchemaFree(esquema); }
    };
    std::unique_ptr<xmlSchema, Liberar> esquema_;
};

} // namespace zel::envio::teste
