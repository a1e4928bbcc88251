// SPDX-License-Identifier: MIT
// The sending side's configuration, zel-envio.toml, as values: what it says of certificate, state,
// payments, products and taxes that the till's files do not know. Read once, whole; every key that
// is unknown, of another type or out of range is refused, all of them at once.
#pragma once

#include "base/Decimal.h"
#include "base/Recusa.h"

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zel::envio {

// Where the key to sign with is. Paths are absolute, or relative to the configuration's directory.
struct ConfigCertificado {
    std::string arquivo; // PKCS#12 (A1)
    std::string
        arquivoSenha;   // a file that its owner alone may read, the password on its first line
    std::string modulo; // PKCS#11 (A3): the module's shared object
    std::string rotulo; // of the key in the token; empty: the only one there
    std::string token;  // label of the token; empty: the first with a key
    std::string cadeia; // PEM of the issuers, up to the root; empty: the chain is not checked
};

// What a payment of the till becomes; the key in the map is the till's two digits ("99").
struct ConfigPagamento {
    std::string tPag;                         // two digits; empty: as the till has it
    std::string xPag;                         // required with 99
    std::string tpIntegra, CNPJ, tBand, cAut; // of `card`; empty: none
};

// What is said of a product by its code, or by its NCM (the longest prefix that is given counts).
// A value by code stands before one by NCM.
struct ConfigProduto {
    std::string CEST, indEscala, CNPJFab, cBenef;
    std::string CST, cClassTrib;                 // of IBS and CBS
    std::optional<Decimal> pST, vICMSSubstituto; // of ICMS retained before (per unit of quantity)
    std::optional<Decimal> pFCP, pFCPST, pFCPSTRet;
    std::string indISS, indIncentivo, cServico; // of services
};

// A class of IBS and CBS: what the shop's accountant fills in, `CST;cClassTrib;reducao`.
struct ClasseTributaria {
    std::string CST, cClassTrib;
    Decimal reducao;         // percent off the rates; 100: zero
    bool semValores = false; // exempt, immune...: CST and class are written alone
};

struct ConfigRespTec {
    std::string CNPJ, xContato, email, fone;
    std::string idCSRT, CSRT; // the latter a secret; both or none
    std::string arquivoCSRT{};
};

// What the till's issuer lacks, written where there are services.
struct ConfigEmitente {
    std::string IM, CNAE;
};

struct ConfigQrCode {
    int versao = 2;    // 2 with the CSC, 3 without
    std::string idCsc; // the CSC's number
    std::string csc;   // a secret
    std::string arquivoCsc;
    std::string endereco; // empty: the table's, by state and environment
    std::string urlChave; // likewise
};

// Addresses, names or methods in the place of the table's, in either environment; empty: the
// table's.
struct ConfigServicos {
    std::string autorizacao, retAutorizacao, inutilizacao, consultaProtocolo, statusServico,
        recepcaoEvento;
};

struct ConfigRede {
    int tempoMaximo = 30;    // of one request and its answer, in seconds
    std::string autoridades; // PEM of those who may vouch for a server; empty: the system's
};

// Rates in percent of documents from a day on ("AAAA-MM-DD").
struct TaxasIbsCbs {
    std::string desde;
    Decimal pIBSUF, pIBSMun, pCBS;
};

struct ConfigIbsCbs {
    // From when on a document must have the groups, "AAAA-MM-DD"; empty: as the table of dates has
    // it for the CRT and the environment. "nunca": never.
    std::string desde;
    std::string CST = "000",
                cClassTrib = "000001"; // the class of a product that nothing else names
    std::vector<ClasseTributaria> classes;
    std::vector<TaxasIbsCbs> taxas; // of years that the library's table does not have
};

// A till whose documents are sent: its directory, and where else it writes them. Each ends with
// "/".
struct ConfigCaixa {
    std::string diretorio;
    std::string copias;       // history copies (CONFIGURACAO\PathXMLEnvio); empty: it keeps none
    std::string contingencia; // .ctg and .ctgCanc; empty: the directory itself
    std::string retornos;     // where answers are written; empty: `retornos/` in the directory
    std::string desde; // "AAAA-MM-DD": what is of a day before was another's to send; empty: none
};

struct ConfigFila {
    std::string diretorio; // of the queue; empty: `fila/` beside the configuration
    std::string guardados; // what is kept by law; empty: `guardados/` beside it
    int porMinuto = 0;     // messages that the authority allows; 0: any number
    int avisoHoras = 4;    // undelivered for so long, a document needs somebody
    // What the state allows: of an offline document until it is delivered, of a note until it is
    // cancelled. It is said, and holds nothing back.
    int contingenciaHoras = 24, cancelamentoMinutos = 30;
};

struct Configuracao {
    std::string diretorio; // of the file, with its "/"

    ConfigCertificado certificado;
    ConfigEmitente emitente;
    ConfigQrCode qrcode;
    ConfigRespTec respTec;
    ConfigIbsCbs ibsCbs;
    ConfigServicos servicos;       // addresses
    ConfigServicos nomes, metodos; // "NFeAutorizacao4", "nfeAutorizacaoLote"
    ConfigRede rede;
    std::string esquemas; // folder of the published schemas; empty: nothing is judged

    std::map<std::string, ConfigPagamento, std::less<>> pagamentos;
    std::map<std::string, ConfigProduto, std::less<>> produtos; // by cProd
    std::map<std::string, ConfigProduto, std::less<>> ncm;      // by NCM or its beginning
    ConfigProduto padrao;                                       // of every product

    ConfigFila fila;
    std::vector<ConfigCaixa> caixas;
    int portaDaPagina = 0; // on 127.0.0.1; 0: no page

    std::string indIntermed; // where indPres asks for it
    std::string intermediadorCNPJ, intermediadorId;
    std::string cUF; // of requests that do not say it; empty: from the key
    std::string verAplic = "zel-envio";

    // Reads a text in TOML of up to 1 MiB; files that it names (CSV of classes, secrets) are read
    // too.
    static std::optional<Configuracao> ler(std::string_view toml, const std::string &diretorio,
                                           Recusas &recusas);
    // The same from a file.
    static std::optional<Configuracao> abrir(const std::string &arquivo, Recusas &recusas);
};

// What is configured for a product: by its code, then by its NCM, then for all; member by member.
ConfigProduto produtoDe(const Configuracao &config, std::string_view cProd, std::string_view NCM);

} // namespace zel::envio
