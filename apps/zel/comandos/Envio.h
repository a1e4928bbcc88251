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

// ---- The queue ----

enum class FimDoEnvio { kFalhou, kFeito, kRecusado, kSemResposta, kNaoEnviado };

struct PedidoDeTransmissao {
    std::string documento; // bytes of a till's file
    std::string config;    // file
    std::string caixa;     // the till's directory; empty: the only one of the configuration
    std::string substitui; // key of the document that it replaces, or empty
    std::string troco;     // "12.34", or empty
    int segundos = 5;      // 0: signed and left in the queue
};

struct Transmissao : RespostaDoEnvio {
    FimDoEnvio fim = FimDoEnvio::kFalhou; // with kFalhou `recusas` says why
    std::string numero, serie, estado, desfecho, cStat, xMotivo, protocolo;
    std::string motivo, remedio;   // of what is not at its good end
    std::string arquivoDoRetorno;  // what the till reads, where it was written
    std::string documento, aoLado; // a receipt's document and return, bytes; empty: there is none
};

Transmissao transmitirPeloEnvio(const PedidoDeTransmissao &pedido);

enum class Pergunta { kSituacao, kProcurar, kExportar, kContinuar, kServico };

struct PerguntaAFila {
    Pergunta qual;
    std::string config;
    std::string criterios;    // of kProcurar, as zel_envio_procurar takes them
    std::string mes, arquivo; // of kExportar
    std::string cUF;          // of kServico; empty: the configuration's
    int ambiente = 2, segundos = 5;
};

struct LacunaDita {
    std::string cnpj, caixa; // its till's directory; may be empty
    long long serie = 0, primeiro = 0, ultimo = 0;
};

struct RespostaDaFila : RespostaDoEnvio {
    std::string json;      // as the library gave it; empty where it gives none
    std::string relato;    // the same for people, lines
    bool atencao = false;  // something in it needs a person
    long long quantos = 0; // documents that were exported, rows that were found
    std::vector<LacunaDita> lacunas;
};

RespostaDaFila perguntarAFila(const PerguntaAFila &pergunta);

// A signed document and the authority's answer (null: none yet) as the fiscal library reads them.
RespostaDoEnvio prepararImpressao(const std::string &documento, const std::string *resposta);

} // namespace zel::aplicativo
