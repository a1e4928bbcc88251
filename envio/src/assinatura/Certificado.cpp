// SPDX-License-Identifier: MIT
#include "assinatura/Certificado.h"

#include "assinatura/Chave.h"
#include "assinatura/Credenciais.h"
#include "comum/Arquivo.h"
#include "comum/Ascii.h"

#include <algorithm>
#include <cstdio>
#include <openssl/pem.h>
#include <utility>

namespace zel::envio {

namespace {

constexpr std::size_t kMaiorArquivo = 1U << 20;
constexpr std::int64_t kDia = 86400;
constexpr std::size_t kRaizCnpj = 8;

// "AAAA-MM-DD" in UTC.
std::string dataDe(const ASN1_TIME *momento) {
    std::tm partes{};
    if (ASN1_TIME_to_tm(momento, &partes) != 1) return {};
    char texto[40];
    std::snprintf(texto, sizeof texto, "%04d-%02d-%02d", partes.tm_year + 1900, partes.tm_mon + 1,
                  partes.tm_mday);
    return texto;
}

// All certificates of a PEM text. A text with anything that looks like one and is not gives none.
std::vector<DonoX509> lerPem(std::string_view pem) {
    std::vector<DonoX509> lidos;
    const DonoBio entrada(BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size())));
    while (X509 *x509 = PEM_read_bio_X509(entrada.get(), nullptr, nullptr, nullptr))
        lidos.emplace_back(x509);
    if (ERR_GET_REASON(ERR_peek_last_error()) != PEM_R_NO_START_LINE) lidos.clear();
    return lidos;
}

// What the otherName of this OID holds, whichever kind of string the issuer took.
std::string outroNome(const X509 *x509, const char *oid) {
    std::string achado;
    auto *nomes = static_cast<GENERAL_NAMES *>(
        X509_get_ext_d2i(x509, NID_subject_alt_name, nullptr, nullptr));
    for (int i = 0; i < sk_GENERAL_NAME_num(nomes) && achado.empty(); ++i) {
        const GENERAL_NAME *nome = sk_GENERAL_NAME_value(nomes, i);
        char este[80];
        if (nome->type != GEN_OTHERNAME ||
            OBJ_obj2txt(este, sizeof este, nome->d.otherName->type_id, 1) <= 0 ||
            std::string_view(este) != oid)
            continue;
        const ASN1_TYPE *valor = nome->d.otherName->value;
        if (valor->type != V_ASN1_OCTET_STRING && valor->type != V_ASN1_PRINTABLESTRING &&
            valor->type != V_ASN1_UTF8STRING && valor->type != V_ASN1_IA5STRING)
            continue;
        const ASN1_STRING *texto = valor->value.asn1_string;
        achado.assign(reinterpret_cast<const char *>(ASN1_STRING_get0_data(texto)),
                      static_cast<std::size_t>(ASN1_STRING_length(texto)));
    }
    GENERAL_NAMES_free(nomes);
    return achado;
}

} // namespace

std::string cnpjDe(const X509 *x509) {
    const FilaDeErros fila;
    std::string cnpj = outroNome(x509, "2.16.76.1.3.3");
    return cnpj.size() == 14 && soDigitos(cnpj) ? cnpj : std::string();
}

std::string cnpjDePem(std::string_view pem) {
    const FilaDeErros fila;
    const auto lidos = lerPem(pem);
    return lidos.empty() ? std::string() : cnpjDe(lidos.front().get());
}

struct Certificado::Dentro {
    ChaveAberta aberta;
    std::vector<DonoX509> cadeia; // trusted where they are roots

    bool conferirValidade(std::int64_t agora, int dias, Recusas &recusas) const;
};

Certificado::Certificado(std::unique_ptr<Dentro> dentro) : dentro_(std::move(dentro)) {}
Certificado::~Certificado() = default;

namespace {

bool lerEmissores(std::string_view pem, std::vector<DonoX509> &cadeia, Recusas &recusas) {
    if (pem.empty()) return true;
    cadeia = lerPem(pem);
    return !cadeia.empty() || recusas.juntar("certificado.cadeia", "",
                                             "não tem certificados em PEM, ou tem um "
                                             "danificado");
}

// The key is one that the layout's algorithm takes, and the issuers can be read.
bool aceitar(const ChaveAberta &aberta, std::string_view pem, std::vector<DonoX509> &cadeia,
             Recusas &recusas) {
    if (EVP_PKEY_get_base_id(aberta.chave.get()) != EVP_PKEY_RSA)
        return recusas.juntar("certificado", "", "a chave não é RSA, a única que o leiaute aceita");
    if (X509_check_private_key(aberta.x509.get(), aberta.chave.get()) != 1)
        return recusas.juntar("certificado", "", "a chave privada não é a do certificado");
    return lerEmissores(pem, cadeia, recusas);
}

// The configured issuers' PEM; "" when none is configured, none when it cannot be read.
std::optional<std::string> pemDaCadeia(const ConfigCertificado &config, Recusas &recusas) {
    if (config.cadeia.empty()) return "";
    auto pem = comum::lerArquivo(config.cadeia, kMaiorArquivo);
    if (pem && !pem->empty()) return pem;
    recusas.juntar("certificado.cadeia", config.cadeia, "não existe ou não pode ser lido");
    return {};
}

} // namespace

std::shared_ptr<const Certificado> Certificado::dePkcs12(std::string_view bytes,
                                                         std::string_view senha,
                                                         std::string_view cadeia,
                                                         Recusas &recusas) {
    const FilaDeErros fila;
    auto aberta = abrirPkcs12(bytes, Segredo(senha), recusas);
    if (!aberta) return nullptr;
    auto dentro = std::make_unique<Dentro>();
    dentro->aberta = std::move(*aberta);
    if (!aceitar(dentro->aberta, cadeia, dentro->cadeia, recusas)) return nullptr;
    return std::shared_ptr<const Certificado>(new Certificado(std::move(dentro)));
}

std::shared_ptr<const Certificado> Certificado::abrir(const ConfigCertificado &config,
                                                      Recusas &recusas) {
    const FilaDeErros fila;
    const auto senha = senhaDoCertificado(config, recusas);
    if (!senha) return nullptr;
    const auto cadeia = pemDaCadeia(config, recusas);
    if (!cadeia) return nullptr;
    std::optional<ChaveAberta> aberta;
    if (!config.modulo.empty()) {
        aberta = abrirToken(config, *senha, recusas);
    } else if (const auto arquivo = arquivoDoCertificado(config, recusas)) {
        const auto bytes = comum::lerArquivo(*arquivo, kMaiorArquivo);
        if (bytes)
            aberta = abrirPkcs12(*bytes, *senha, recusas);
        else
            recusas.juntar("certificado.arquivo", *arquivo, "não existe ou não pode ser lido");
    }
    if (!aberta) return nullptr;
    auto dentro = std::make_unique<Dentro>();
    dentro->aberta = std::move(*aberta);
    if (!aceitar(dentro->aberta, *cadeia, dentro->cadeia, recusas)) return nullptr;
    return std::shared_ptr<const Certificado>(new Certificado(std::move(dentro)));
}

EVP_PKEY *Certificado::chave() const {
    return dentro_->aberta.chave.get();
}

X509 *Certificado::x509() const {
    return dentro_->aberta.x509.get();
}

std::vector<X509 *> Certificado::emissores() const {
    const FilaDeErros fila;
    std::vector<X509 *> caminho;
    const auto emissorDe = [this, &caminho](const X509 *este) -> X509 * {
        for (const auto *lista : {&dentro_->aberta.emissores, &dentro_->cadeia})
            for (const auto &um : *lista)
                if (um && X509_check_issued(um.get(), const_cast<X509 *>(este)) == X509_V_OK &&
                    std::find(caminho.begin(), caminho.end(), um.get()) == caminho.end())
                    return um.get();
        return nullptr;
    };
    for (X509 *este = emissorDe(x509()); este != nullptr; este = emissorDe(este)) {
        if (X509_check_issued(este, este) == X509_V_OK) break;
        caminho.push_back(este);
    }
    return caminho;
}

std::string Certificado::emBase64() const {
    const std::string der = derDe(x509());
    return base64De(reinterpret_cast<const unsigned char *>(der.data()), der.size());
}

std::string Certificado::nome() const {
    const X509_NAME *titular = X509_get_subject_name(x509());
    const int lugar = X509_NAME_get_index_by_NID(titular, NID_commonName, -1);
    if (lugar < 0) return {};
    unsigned char *utf8 = nullptr;
    const int tamanho =
        ASN1_STRING_to_UTF8(&utf8, X509_NAME_ENTRY_get_data(X509_NAME_get_entry(titular, lugar)));
    if (tamanho < 0) return {};
    std::string nome(reinterpret_cast<const char *>(utf8), static_cast<std::size_t>(tamanho));
    OPENSSL_free(utf8);
    return nome;
}

std::string Certificado::cnpj() const {
    return cnpjDe(x509());
}

std::string Certificado::validoAte() const {
    return dataDe(X509_get0_notAfter(x509()));
}

int Certificado::dias(std::int64_t agora) const {
    const std::int64_t resto = segundosDe(X509_get0_notAfter(x509())) - agora;
    return static_cast<int>(resto >= 0 ? resto / kDia : -((-resto + kDia - 1) / kDia));
}

bool Certificado::Dentro::conferirValidade(std::int64_t agora, int dias, Recusas &recusas) const {
    const ASN1_TIME *fim = X509_get0_notAfter(aberta.x509.get());
    const ASN1_TIME *inicio = X509_get0_notBefore(aberta.x509.get());
    if (agora > segundosDe(fim))
        return recusas.juntar("certificado.validade", dataDe(fim),
                              "o certificado venceu há " + std::to_string(-dias) +
                                  " dia(s): renove-o com sua autoridade certificadora");
    return agora >= segundosDe(inicio) ||
           recusas.juntar("certificado.validade", dataDe(inicio),
                          "o certificado só vale a partir desta data: confira o relógio");
}

namespace {

// Without the extension every use is allowed, and all bits are set.
bool paraAssinar(X509 *x509) {
    return (X509_get_key_usage(x509) & (KU_DIGITAL_SIGNATURE | KU_NON_REPUDIATION)) != 0;
}

// Why `cadeia` does not lead from the certificate to a root; null when it does, or is empty. What
// the holder's own dates are is said elsewhere; the issuers' are looked at here.
const char *faltaNaCadeia(const std::vector<DonoX509> &cadeia, X509 *x509,
                          const std::vector<DonoX509> &emissores, std::int64_t agora, bool valido) {
    if (cadeia.empty()) return nullptr;
    const std::unique_ptr<X509_STORE, Liberador<X509_STORE_free>> confiados(X509_STORE_new());
    const std::unique_ptr<X509_STORE_CTX, Liberador<X509_STORE_CTX_free>> busca(
        X509_STORE_CTX_new());
    for (const auto &um : cadeia)
        X509_STORE_add_cert(confiados.get(), um.get());
    STACK_OF(X509) *vindos = sk_X509_new_null();
    for (const auto &um : emissores)
        if (um) sk_X509_push(vindos, um.get());
    X509_STORE_CTX_init(busca.get(), confiados.get(), x509, vindos);
    X509_VERIFY_PARAM *regras = X509_STORE_CTX_get0_param(busca.get());
    if (valido)
        X509_VERIFY_PARAM_set_time(regras, agora);
    else
        X509_VERIFY_PARAM_set_flags(regras, X509_V_FLAG_NO_CHECK_TIME);
    const bool fecha = X509_verify_cert(busca.get()) == 1;
    const int erro = X509_STORE_CTX_get_error(busca.get());
    sk_X509_free(vindos);
    return fecha ? nullptr : X509_verify_cert_error_string(erro);
}

} // namespace

bool Certificado::serve(std::int64_t agora, Recusas &recusas) const {
    const FilaDeErros fila;
    const bool valido = dentro_->conferirValidade(agora, dias(agora), recusas);
    bool serve = valido;
    if (!paraAssinar(x509()))
        serve = recusas.juntar("certificado.uso", "",
                               "o certificado não é para assinatura digital nem não repúdio");
    if (const char *falta =
            faltaNaCadeia(dentro_->cadeia, x509(), dentro_->aberta.emissores, agora, valido))
        serve = recusas.juntar("certificado.cadeia", falta,
                               "os emissores configurados não levam do certificado até uma "
                               "raiz: confira o arquivo de cadeia");
    if (cnpj().empty())
        serve = recusas.juntar("certificado.cnpj", "",
                               "o certificado não traz CNPJ (otherName 2.16.76.1.3.3): use um "
                               "e-CNPJ da ICP-Brasil");
    return serve;
}

bool Certificado::conferir(std::string_view cnpjEmitente, std::int64_t agora,
                           Recusas &recusas) const {
    const bool deQualquer = serve(agora, recusas);
    const std::string titular = cnpj();
    if (titular.empty() || (cnpjEmitente.size() == 14 &&
                            cnpjEmitente.substr(0, kRaizCnpj) == titular.substr(0, kRaizCnpj)))
        return deQualquer;
    return recusas.juntar("certificado.cnpj", titular,
                          "o certificado é de outra empresa que o emitente " +
                              std::string(cnpjEmitente) +
                              ": os oito primeiros dígitos têm de ser os mesmos");
}

bool conferirSignatario(std::string_view pem, const ConfigCertificado &config, std::int64_t emitido,
                        std::string_view campo, Recusas &recusas) {
    const FilaDeErros fila;
    const auto lidos = lerPem(pem);
    if (lidos.empty()) return recusas.juntar(campo, "", "não é um certificado X.509");
    X509 *x509 = lidos.front().get();
    const ASN1_TIME *fim = X509_get0_notAfter(x509);
    const bool valido = emitido <= segundosDe(fim);
    bool serve = valido;
    if (!valido) recusas.juntar(campo, dataDe(fim), "o certificado venceu antes da emissão");
    if (!paraAssinar(x509))
        serve = recusas.juntar(campo, "",
                               "o certificado não é para assinatura digital nem não repúdio");
    std::vector<DonoX509> cadeia;
    const auto configurada = pemDaCadeia(config, recusas);
    if (!configurada || !lerEmissores(*configurada, cadeia, recusas)) return false;
    const std::int64_t quando = std::max(emitido, segundosDe(X509_get0_notBefore(x509)));
    if (const char *falta = faltaNaCadeia(cadeia, x509, {}, quando, valido))
        serve = recusas.juntar(campo, falta,
                               "os emissores de [certificado] cadeia não levam do certificado até "
                               "uma raiz");
    return serve;
}

std::optional<std::string> Certificado::assinarTexto(std::string_view texto,
                                                     Recusas &recusas) const {
    const FilaDeErros fila;
    const DonoResumo resumo(EVP_MD_CTX_new());
    std::vector<unsigned char> valor(static_cast<std::size_t>(EVP_PKEY_get_size(chave())));
    std::size_t tamanho = valor.size();
    if (EVP_DigestSignInit(resumo.get(), nullptr, EVP_sha1(), nullptr, chave()) == 1 &&
        EVP_DigestSign(resumo.get(), valor.data(), &tamanho,
                       reinterpret_cast<const unsigned char *>(texto.data()), texto.size()) == 1)
        return base64De(valor.data(), tamanho);
    recusas.juntar("certificado", "",
                   "a chave não assinou: o token foi retirado, ou recusa a "
                   "operação");
    return {};
}

} // namespace zel::envio
