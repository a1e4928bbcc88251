// SPDX-License-Identifier: MIT
#include "assinatura/Chave.h"

#include <dlfcn.h>
#include <libp11.h>
#include <map>
#include <mutex>
#include <string>

namespace zel::envio {

namespace {

// Looked at before libp11 does, which would print its complaint.
bool carregavel(const std::string &arquivo) {
    void *modulo = ::dlopen(arquivo.c_str(), RTLD_LAZY | RTLD_LOCAL);
    return modulo != nullptr && ::dlclose(modulo) == 0;
}

class Modulo {
public:
    explicit Modulo(const std::string &arquivo)
        : contexto_(PKCS11_CTX_new()),
          carregado_(carregavel(arquivo) && PKCS11_CTX_load(contexto_, arquivo.c_str()) == 0) {}
    ~Modulo() {
        if (leitores_ != nullptr) PKCS11_release_all_slots(contexto_, leitores_, quantos_);
        if (carregado_) PKCS11_CTX_unload(contexto_);
        PKCS11_CTX_free(contexto_);
    }
    Modulo(const Modulo &) = delete;
    Modulo &operator=(const Modulo &) = delete;

    bool carregado() const { return carregado_; }
    // Those that were inserted when the first of its users came: libp11 does not survive a second
    // look at a module that is in use.
    std::vector<PKCS11_TOKEN *> tokens() {
        std::vector<PKCS11_TOKEN *> achados;
        if (leitores_ == nullptr && PKCS11_enumerate_slots(contexto_, &leitores_, &quantos_) != 0)
            return achados;
        for (unsigned i = 0; i < quantos_; ++i)
            if (leitores_[i].token != nullptr && leitores_[i].token->initialized != 0)
                achados.push_back(leitores_[i].token);
        return achados;
    }

private:
    PKCS11_CTX *contexto_;
    bool carregado_;
    PKCS11_SLOT *leitores_ = nullptr;
    unsigned quantos_ = 0;
};

struct Abertos {
    std::mutex porta;
    std::map<std::string, std::weak_ptr<Modulo>> modulos;
};

// Never destroyed: a key may be freed after the program's static objects.
Abertos &abertos() {
    static auto *const todos = new Abertos;
    return *todos;
}

// The caller has the door. Whoever lets go of the result closes the door meanwhile: a module that
// is finished in one thread must not be started in another.
std::shared_ptr<Modulo> moduloDe(const std::string &arquivo) {
    std::weak_ptr<Modulo> &guardado = abertos().modulos[arquivo];
    std::shared_ptr<Modulo> modulo = guardado.lock();
    if (!modulo) guardado = modulo = std::make_shared<Modulo>(arquivo);
    return modulo;
}

// Labels are compared and never said: a PIN may have been written in their place.
std::string_view rotuloDe(const char *rotulo) {
    return rotulo == nullptr ? std::string_view() : rotulo;
}

bool temCertificado(PKCS11_TOKEN *token) {
    PKCS11_CERT *certificados = nullptr;
    unsigned quantos = 0;
    return PKCS11_enumerate_certs(token, &certificados, &quantos) == 0 && quantos > 0;
}

PKCS11_TOKEN *escolherToken(const std::vector<PKCS11_TOKEN *> &tokens, std::string_view rotulo,
                            Recusas &recusas) {
    for (PKCS11_TOKEN *token : tokens)
        if (rotulo.empty() ? temCertificado(token) : rotuloDe(token->label) == rotulo) return token;
    recusas.juntar("certificado.token", "",
                   tokens.empty()   ? "nenhum token está inserido"
                   : rotulo.empty() ? "nenhum token inserido tem certificado"
                                    : "não há token inserido com este rótulo");
    return nullptr;
}

bool entrar(PKCS11_TOKEN *token, const Segredo &pin, Recusas &recusas) {
    int dentro = 0;
    if (token->loginRequired == 0 ||
        (PKCS11_is_logged_in(token->slot, 0, &dentro) == 0 && dentro != 0))
        return true;
    const char *motivo = nullptr;
    if (pin.vazio())
        motivo = "falta o PIN: diga-o em senha_arquivo ou ZEL_ENVIO_SENHA";
    else if (token->userPinLocked != 0)
        motivo = "o PIN está bloqueado: desbloqueie o token com o programa de seu fabricante";
    else if (token->userPinFinalTry != 0)
        motivo = "resta uma só tentativa antes do bloqueio: entre antes com o PIN certo pelo "
                 "programa do fabricante";
    else if (PKCS11_login(token->slot, 0, pin.texto()) != 0)
        motivo = "o token recusou o PIN: algumas tentativas a mais o bloqueiam";
    return motivo == nullptr || recusas.juntar("certificado.token", "", motivo);
}

// Of that label, or the only one; with its certificate.
PKCS11_KEY *escolherChave(PKCS11_TOKEN *token, std::string_view rotulo, Recusas &recusas) {
    PKCS11_KEY *chaves = nullptr;
    unsigned quantas = 0;
    if (PKCS11_enumerate_keys(token, &chaves, &quantas) != 0) quantas = 0;
    std::vector<PKCS11_KEY *> achadas;
    for (unsigned i = 0; i < quantas; ++i)
        if ((rotulo.empty() || rotuloDe(chaves[i].label) == rotulo) &&
            PKCS11_find_certificate(&chaves[i]) != nullptr)
            achadas.push_back(&chaves[i]);
    if (achadas.size() == 1) return achadas.front();
    recusas.juntar("certificado.rotulo", "",
                   achadas.empty()
                       ? "o token não tem chave privada com certificado"
                         " (e este rótulo, onde é dito)"
                       : "o token tem mais de uma chave: diga em rotulo qual assina; o programa "
                         "do fabricante mostra os rótulos");
    return nullptr;
}

// xmlsec takes a key for a private one when it shows a private exponent, which one in a token does
// not have to show. Here is one that says nothing: the method of such a key never looks at it.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
void mostrarPrivada(EVP_PKEY *chave) {
    RSA *rsa = EVP_PKEY_get1_RSA(chave);
    if (rsa == nullptr) return;
    BIGNUM *nada = RSA_get0_d(rsa) == nullptr ? BN_new() : nullptr;
    if (nada != nullptr) {
        BN_one(nada);
        if (RSA_set0_key(rsa, nullptr, nullptr, nada) != 1) BN_free(nada);
    }
    RSA_free(rsa);
}
#pragma GCC diagnostic pop

// It signs, and the certificate is its own.
bool assinaMesmo(const ChaveAberta &aberta) {
    constexpr unsigned char kTexto[] = {'e', 'n', 's', 'a', 'i', 'o'};
    const DonoResumo feito(EVP_MD_CTX_new()), visto(EVP_MD_CTX_new());
    std::vector<unsigned char> valor(
        static_cast<std::size_t>(std::max(1, EVP_PKEY_get_size(aberta.chave.get()))));
    std::size_t tamanho = valor.size();
    return EVP_DigestSignInit(feito.get(), nullptr, EVP_sha1(), nullptr, aberta.chave.get()) == 1 &&
           EVP_DigestSign(feito.get(), valor.data(), &tamanho, kTexto, sizeof kTexto) == 1 &&
           EVP_DigestVerifyInit(visto.get(), nullptr, EVP_sha1(), nullptr,
                                X509_get0_pubkey(aberta.x509.get())) == 1 &&
           EVP_DigestVerify(visto.get(), valor.data(), tamanho, kTexto, sizeof kTexto) == 1;
}

} // namespace

std::optional<ChaveAberta> abrirToken(const ConfigCertificado &config, const Segredo &pin,
                                      Recusas &recusas) {
    const FilaDeErros fila;
    const std::lock_guard guarda(abertos().porta);
    std::shared_ptr<Modulo> modulo = moduloDe(config.modulo);
    if (!modulo->carregado()) {
        recusas.juntar("certificado.modulo", config.modulo,
                       "não é um módulo PKCS#11 que se deixe carregar");
        return {};
    }
    PKCS11_TOKEN *token = escolherToken(modulo->tokens(), config.token, recusas);
    if (token == nullptr || !entrar(token, pin, recusas)) return {};
    PKCS11_KEY *chave = escolherChave(token, config.rotulo, recusas);
    if (chave == nullptr) return {};

    ChaveAberta aberta;
    aberta.chave.reset(PKCS11_get_private_key(chave));
    aberta.x509.reset(X509_dup(PKCS11_find_certificate(chave)->x509));
    if (aberta.chave) mostrarPrivada(aberta.chave.get());
    if (!aberta.chave || !aberta.x509 || !assinaMesmo(aberta)) {
        recusas.juntar("certificado.rotulo", "",
                       "a chave do token não assina, ou o certificado não é o dela");
        return {};
    }
    aberta.token = std::shared_ptr<void>(nullptr, [modulo](void *) mutable {
        const std::lock_guard ultima(abertos().porta);
        modulo.reset();
    });
    return aberta;
}

} // namespace zel::envio
