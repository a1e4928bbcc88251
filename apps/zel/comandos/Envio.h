// SPDX-License-Identifier: MIT
// The documents that the tax authority takes, through libzel-envio. Where the command is built
// without that library, everything answers so.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace zel::aplicativo {

enum class PassoDoEnvio { kTraduzir, kAssinar, kVerificar, kMostrar };

struct PedidoAoEnvio {
    PassoDoEnvio passo;
    std::string documento; // bytes
    std::string config;    // file; empty: none
    // What the document does not say; each may be empty.
    std::string protocolo, substituta, data, troco;
};

struct RecusaDoEnvio {
    std::string campo, valor, motivo;
};

struct RespostaDoEnvio {
    int codigo = 0;        // of libzel-envio, 1 when it was done; 0 without that library
    std::string descricao; // of a failure, in words
    std::vector<RecusaDoEnvio> recusas; // all that is wrong; may be none with a failure
    std::string tipo, chave;            // of the document, as far as it has them
    std::string bytes;                  // what was made, or the text to show
    std::string retorno;                // of prepararImpressao alone
    std::vector<std::string> olhado;    // when verified: what was looked at, and what could not be
    std::string certificado, dias;      // when signed: whose, and how long it is valid still

    bool feito() const { return codigo > 0; }
};

RespostaDoEnvio pedirAoEnvio(const PedidoAoEnvio &pedido);

// A first zel-envio.toml from the bytes of ZEL_Framework.xml; names of files that it uses, or
// empty.
struct ArquivosDoEnvio {
    std::string certificado, senha, csc;
};
RespostaDoEnvio primeiraConfiguracaoDoEnvio(const std::string &caixa,
                                            const ArquivosDoEnvio &arquivos);

// A PKCS#12 file for trying.
RespostaDoEnvio certificadoDeEnsaio(const std::string &nome, const std::string &cnpj,
                                    const std::string &senha);

// A signed document and the authority's answer (null: none yet) as the fiscal library reads them.
RespostaDoEnvio prepararImpressao(const std::string &documento, const std::string *resposta);

} // namespace zel::aplicativo
