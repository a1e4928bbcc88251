// SPDX-License-Identifier: MIT
#include "rede/Rede.h"

#include "assinatura/OpenSsl.h"
#include "mensagem/Lote.h"
#include "rede/SemSigpipe.h"

#include <algorithm>
#include <array>
#include <curl/curl.h>
#include <openssl/ssl.h>

namespace zel::envio {

namespace {

using std::chrono::milliseconds;

constexpr std::size_t kMaiorResposta = 4U << 20;   // bytes of a body
constexpr std::size_t kMaiorCabecalho = 64U << 10; // bytes of all its headers
constexpr milliseconds kMaiorConexao{10'000};
constexpr long kOciosa = 60;              // seconds after which a connection is not used again
constexpr long kBuferDeSaida = 16L << 10; // bytes that each connection holds for what goes out
constexpr int kProibido = 403;

struct LiberarCurl {
    void operator()(CURL *curl) const { curl_easy_cleanup(curl); }
};
struct LiberarLista {
    void operator()(curl_slist *lista) const { curl_slist_free_all(lista); }
};
using Lista = std::unique_ptr<curl_slist, LiberarLista>;

// Alerts by which a server refuses the certificate of its client (RFC 5246, 7.2; RFC 8446, 6).
// With TLS 1.3 they come when the handshake is over for the client: at its first reading.
constexpr std::array<int, 8> kAlertas{SSL3_AD_BAD_CERTIFICATE,     SSL3_AD_UNSUPPORTED_CERTIFICATE,
                                      SSL3_AD_CERTIFICATE_REVOKED, SSL3_AD_CERTIFICATE_EXPIRED,
                                      SSL3_AD_CERTIFICATE_UNKNOWN, TLS1_AD_UNKNOWN_CA,
                                      TLS1_AD_ACCESS_DENIED,       TLS13_AD_CERTIFICATE_REQUIRED};

// What curl ends with, and why that is; `certificado`: it is ours. Where it is not, whether the
// message was begun to be sent decides: theirs may be renewed, or the clock put right, at any time.
struct Fim {
    CURLcode codigo;
    bool certificado;
    const char *motivo;
};
constexpr Fim kFins[] = {
    {CURLE_COULDNT_RESOLVE_HOST, false, "o nome do servidor da SEFAZ não foi encontrado"},
    {CURLE_COULDNT_RESOLVE_PROXY, false, "o nome do proxy não foi encontrado"},
    {CURLE_COULDNT_CONNECT, false, "não há conexão com o servidor da SEFAZ"},
    {CURLE_PROXY, false, "o proxy não deixou passar"},
    {CURLE_URL_MALFORMAT, false, "o endereço do serviço não é um endereço"},
    {CURLE_UNSUPPORTED_PROTOCOL, false, "o endereço do serviço não é https"},
    {CURLE_OPERATION_TIMEDOUT, false, "o tempo acabou"},
    {CURLE_SSL_CONNECT_ERROR, false, "a conexão segura (TLS) não se fez"},
    {CURLE_SSL_CIPHER, false, "a conexão segura (TLS) não se fez"},
    {CURLE_SEND_ERROR, false, "a conexão caiu durante o envio"},
    {CURLE_SEND_FAIL_REWIND, false, "a conexão caiu durante o envio"},
    {CURLE_RECV_ERROR, false, "a conexão caiu antes da resposta inteira"},
    {CURLE_GOT_NOTHING, false, "o servidor fechou a conexão sem responder"},
    {CURLE_PARTIAL_FILE, false, "a resposta veio pela metade"},
    {CURLE_WRITE_ERROR, false, "a resposta é maior do que uma resposta pode ser"},
    {CURLE_PEER_FAILED_VERIFICATION, false,
     "o certificado do servidor não é de confiança ou é de outro nome: confira o endereço, o "
     "relógio e, em zel-envio.toml, [rede] autoridades"},
    {CURLE_SSL_CACERT_BADFILE, false,
     "o arquivo de [rede] autoridades, em zel-envio.toml, não pode ser lido"},
    {CURLE_SSL_ISSUER_ERROR, false, "o emissor do certificado do servidor não é de confiança"},
    {CURLE_SSL_INVALIDCERTSTATUS, false, "o certificado do servidor foi revogado"},
    {CURLE_SSL_CERTPROBLEM, true, "o nosso certificado ou a sua chave não pôde ser usado"},
    {CURLE_SSL_CLIENTCERT, true, "o servidor da SEFAZ recusou o nosso certificado"},
};
constexpr Fim kOutroFim{CURLE_OK, false, "a comunicação com a SEFAZ falhou"};

const Fim &fimDe(CURLcode codigo) {
    const auto *fim = std::find_if(std::begin(kFins), std::end(kFins),
                                   [codigo](const Fim &f) { return f.codigo == codigo; });
    return fim == std::end(kFins) ? kOutroFim : *fim;
}

// libcurl asks for it once in a process, before any other call.
bool curlPronto() {
    static const bool pronto = curl_global_init(CURL_GLOBAL_DEFAULT) == CURLE_OK;
    return pronto;
}

// Sets options, and knows whether all were taken.
struct Opcoes {
    CURL *curl;
    bool certo = true;

    template <class Valor>
    void operator()(CURLoption opcao, Valor valor) {
        certo = curl_easy_setopt(curl, opcao, valor) == CURLE_OK && certo;
    }
};

} // namespace

struct Rede::Dentro {
    std::shared_ptr<Confianca> confianca;
    std::shared_ptr<const Certificado> certificado;
    std::unique_ptr<CURL, LiberarCurl> curl;

    // Of one request.
    std::string envelope, corpo;
    std::size_t lido = 0, cabecalhos = 0;
    bool pedido = false;   // curl asked for the first byte of the message
    bool recusado = false; // an alert said that our certificate is not taken

    bool preparar(const Remessa &remessa, milliseconds limite, const Lista &lista);
    void porSeguranca(Opcoes &por);
    void porMensagem(Opcoes &por);
    Retorno concluir(CURLcode codigo) const;

    static std::size_t enviar(char *destino, std::size_t um, std::size_t n, void *dentro);
    static std::size_t receber(char *bytes, std::size_t um, std::size_t n, void *dentro);
    static std::size_t contar(char *bytes, std::size_t um, std::size_t n, void *dentro);
    static int rebobinar(void *, curl_off_t, int) { return CURL_SEEKFUNC_FAIL; }
    static CURLcode apresentar(CURL *curl, void *contexto, void *dentro);
    static void ouvir(const SSL *ssl, int onde, int alerta);
    static int lugar();
};

std::size_t Rede::Dentro::enviar(char *destino, std::size_t um, std::size_t n, void *dentro) {
    auto &este = *static_cast<Dentro *>(dentro);
    este.pedido = true;
    const std::size_t quantos = std::min(um * n, este.envelope.size() - este.lido);
    std::copy_n(este.envelope.data() + este.lido, quantos, destino);
    este.lido += quantos;
    return quantos;
}

std::size_t Rede::Dentro::receber(char *bytes, std::size_t um, std::size_t n, void *dentro) {
    auto &este = *static_cast<Dentro *>(dentro);
    if (este.corpo.size() + um * n > kMaiorResposta) return 0;
    este.corpo.append(bytes, um * n);
    return um * n;
}

std::size_t Rede::Dentro::contar(char *, std::size_t um, std::size_t n, void *dentro) {
    auto &este = *static_cast<Dentro *>(dentro);
    este.cabecalhos += um * n;
    return este.cabecalhos > kMaiorCabecalho ? 0 : um * n;
}

int Rede::Dentro::lugar() {
    static const int qual = SSL_CTX_get_ex_new_index(0, nullptr, nullptr, nullptr, nullptr);
    return qual;
}

void Rede::Dentro::ouvir(const SSL *ssl, int onde, int alerta) {
    if ((onde & SSL_CB_READ_ALERT) != SSL_CB_READ_ALERT) return;
    auto *este = static_cast<Dentro *>(SSL_CTX_get_ex_data(SSL_get_SSL_CTX(ssl), lugar()));
    if (este != nullptr &&
        std::find(kAlertas.begin(), kAlertas.end(), alerta & 0xFF) != kAlertas.end())
        este->recusado = true;
}

// Of each connection: ours is handed over as OpenSSL's objects, wherever the key is.
CURLcode Rede::Dentro::apresentar(CURL *, void *contexto, void *dentro) {
    auto &este = *static_cast<Dentro *>(dentro);
    const Certificado &certificado = *este.certificado;
    este.recusado = false;
    auto *tls = static_cast<SSL_CTX *>(contexto);
    if (SSL_CTX_use_certificate(tls, certificado.x509()) != 1 ||
        SSL_CTX_use_PrivateKey(tls, certificado.chave()) != 1)
        return CURLE_SSL_CERTPROBLEM;
    for (X509 *emissor : certificado.emissores())
        if (SSL_CTX_add1_chain_cert(tls, emissor) != 1) return CURLE_SSL_CERTPROBLEM;
    const auto autoridades = este.confianca->autoridades();
    if (!autoridades) return CURLE_SSL_CACERT_BADFILE;
    SSL_CTX_set1_cert_store(tls, autoridades.get());
    SSL_CTX_set_ex_data(tls, lugar(), dentro);
    SSL_CTX_set_info_callback(tls, ouvir);
    return CURLE_OK;
}

bool Rede::Dentro::preparar(const Remessa &remessa, milliseconds limite, const Lista &lista) {
    curl_easy_reset(curl.get()); // the connection stays
    Opcoes por{curl.get()};
    por(CURLOPT_URL, remessa.endereco.c_str());
    por(CURLOPT_PROTOCOLS_STR, "https");
    por(CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
    por(CURLOPT_HTTPHEADER, lista.get());
    por(CURLOPT_USERAGENT, "zel-envio");
    por(CURLOPT_FOLLOWLOCATION, 0L);
    por(CURLOPT_MAXAGE_CONN, kOciosa);

    por(CURLOPT_TIMEOUT_MS, static_cast<long>(limite.count()));
    por(CURLOPT_CONNECTTIMEOUT_MS,
        static_cast<long>(std::max(milliseconds(1), std::min(limite / 2, kMaiorConexao)).count()));
    por(CURLOPT_NOSIGNAL, 1L);
    por(CURLOPT_QUICK_EXIT, 1L); // a name that is not found in time is not waited for

    porSeguranca(por);
    porMensagem(por);
    return por.certo;
}

void Rede::Dentro::porSeguranca(Opcoes &por) {
    por(CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
    por(CURLOPT_SSL_VERIFYPEER, 1L);
    por(CURLOPT_SSL_VERIFYHOST, 2L);
    // What apresentar() hands over, and nothing that each connection would read for itself.
    por(CURLOPT_CAINFO, static_cast<const char *>(nullptr));
    por(CURLOPT_CAPATH, static_cast<const char *>(nullptr));
    por(CURLOPT_SSL_CTX_FUNCTION, apresentar);
    por(CURLOPT_SSL_CTX_DATA, this);
}

void Rede::Dentro::porMensagem(Opcoes &por) {
    // Handed over piece by piece, so that it is known whether a byte of it can have gone out; and
    // never from its beginning again, which curl would do when a connection breaks.
    por(CURLOPT_POST, 1L);
    por(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(envelope.size()));
    por(CURLOPT_UPLOAD_BUFFERSIZE, kBuferDeSaida);
    por(CURLOPT_READFUNCTION, enviar);
    por(CURLOPT_READDATA, this);
    por(CURLOPT_SEEKFUNCTION, rebobinar);
    por(CURLOPT_WRITEFUNCTION, receber);
    por(CURLOPT_WRITEDATA, this);
    por(CURLOPT_HEADERFUNCTION, contar);
    por(CURLOPT_HEADERDATA, this);
}

Retorno Rede::Dentro::concluir(CURLcode codigo) const {
    const FilaDeErros fila;
    long http = 0;
    curl_off_t tudo = 0, antes = 0;
    curl_easy_getinfo(curl.get(), CURLINFO_RESPONSE_CODE, &http);
    curl_easy_getinfo(curl.get(), CURLINFO_TOTAL_TIME_T, &tudo);
    curl_easy_getinfo(curl.get(), CURLINFO_PRETRANSFER_TIME_T, &antes);
    Retorno retorno;
    retorno.http = static_cast<int>(http);
    retorno.demora = milliseconds((tudo - antes) / 1000);

    const auto acabar = [&retorno](Chegada chegada, std::string motivo) {
        retorno.chegada = chegada;
        retorno.motivo = std::move(motivo);
        return retorno;
    };
    const Fim &fim = fimDe(recusado && codigo != CURLE_OK ? CURLE_SSL_CLIENTCERT : codigo);
    // An answer that is whole counts, however the connection ended after it.
    std::string motivo;
    if (pedido && !corpo.empty()) retorno.corpo = corpoDe(corpo, motivo);
    if (!retorno.corpo.empty()) return acabar(Chegada::kResposta, {});
    if (fim.certificado) return acabar(Chegada::kCertificado, fim.motivo);
    if (http == kProibido && corpo.find("Envelope") == corpo.npos)
        return acabar(Chegada::kCertificado, "o servidor da SEFAZ não nos deixou entrar (HTTP "
                                             "403): confira o certificado e o credenciamento");
    if (codigo == CURLE_OK)
        return acabar(Chegada::kSemResposta,
                      "HTTP " + std::to_string(http) + ": " +
                          (corpo.empty() ? "a resposta veio vazia" : motivo));
    return acabar(pedido ? Chegada::kSemResposta : Chegada::kNaoEnviado, fim.motivo);
}

Rede::Rede(std::shared_ptr<Confianca> confianca, std::shared_ptr<const Certificado> certificado)
    : dentro_(std::make_unique<Dentro>()) {
    dentro_->confianca = std::move(confianca);
    dentro_->certificado = std::move(certificado);
    if (curlPronto()) dentro_->curl.reset(curl_easy_init());
}

Rede::~Rede() {
    const SemSigpipe calado;
    const FilaDeErros fila;
    dentro_.reset();
}

Retorno Rede::pedir(const Remessa &remessa, milliseconds limite) {
    Dentro &este = *dentro_;
    Retorno retorno;
    if (!este.certificado) {
        retorno.chegada = Chegada::kCertificado;
        retorno.motivo = "não há certificado: configure-o em zel-envio.toml, seção [certificado]";
        return retorno;
    }
    retorno.motivo = kOutroFim.motivo;
    if (!este.curl || limite <= milliseconds(0)) return retorno;
    este.envelope = envelopeDe(remessa.espaco, remessa.mensagem);
    este.corpo.clear();
    este.lido = este.cabecalhos = 0;
    este.pedido = este.recusado = false;
    const std::string tipo = "Content-Type: application/soap+xml; charset=utf-8; action=\"" +
                             remessa.espaco + '/' + remessa.metodo + '"';
    Lista lista(curl_slist_append(nullptr, tipo.c_str()));
    // Without it curl would wait for a word of the server before a long message.
    if (!lista || curl_slist_append(lista.get(), "Expect:") == nullptr) return retorno;

    const SemSigpipe calado;
    const FilaDeErros fila;
    if (!este.preparar(remessa, limite, lista)) return retorno;
    return este.concluir(curl_easy_perform(este.curl.get()));
}

} // namespace zel::envio
