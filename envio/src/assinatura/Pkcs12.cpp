// SPDX-License-Identifier: MIT
#include "assinatura/Chave.h"

#include <openssl/provider.h>

namespace zel::envio {

namespace {

constexpr std::size_t kMaiorArquivo = 1U << 20;
// Of the password's derivation, and of all of them together: a file that asks for more is made to
// keep the processor busy.
constexpr long kMaisVoltas = 5'000'000;
constexpr const char *kVoltasDemais = "o arquivo pede voltas demais para derivar a senha";

// OpenSSL with its own algorithms and, where it is installed, the provider of the old ones.
class Algoritmos {
public:
    // Without a context of its own a provider would be loaded into the program's.
    Algoritmos() : contexto_(OSSL_LIB_CTX_new()) {
        if (contexto_ == nullptr) return;
        padrao_ = OSSL_PROVIDER_load(contexto_, "default");
        antigos_ = OSSL_PROVIDER_load(contexto_, "legacy");
    }
    ~Algoritmos() {
        if (antigos_ != nullptr) OSSL_PROVIDER_unload(antigos_);
        if (padrao_ != nullptr) OSSL_PROVIDER_unload(padrao_);
        OSSL_LIB_CTX_free(contexto_);
    }
    Algoritmos(const Algoritmos &) = delete;
    Algoritmos &operator=(const Algoritmos &) = delete;

    OSSL_LIB_CTX *contexto() const { return contexto_; }
    bool prontos() const { return padrao_ != nullptr; }
    bool temAntigos() const { return antigos_ != nullptr; }

private:
    OSSL_LIB_CTX *contexto_;
    OSSL_PROVIDER *padrao_ = nullptr;
    OSSL_PROVIDER *antigos_ = nullptr;
};

DonoPkcs12 lerEstrutura(std::string_view bytes, OSSL_LIB_CTX *contexto) {
    if (bytes.empty() || bytes.size() > kMaiorArquivo) return nullptr;
    const DonoBio entrada(BIO_new_mem_buf(bytes.data(), static_cast<int>(bytes.size())));
    // Made first, so that all that is read into it knows the context. A failure of the contents
    // frees it, one of the bytes does not.
    PKCS12 *pacote = PKCS12_init_ex(NID_pkcs7_data, contexto, nullptr);
    const bool lido = d2i_PKCS12_bio(entrada.get(), &pacote) != nullptr;
    DonoPkcs12 dono(pacote);
    if (!lido || BIO_pending(entrada.get()) != 0) dono.reset();
    return dono;
}

long voltasDe(const ASN1_INTEGER *escritas) {
    const long voltas = ASN1_INTEGER_get(escritas);
    return voltas < 0 || voltas > kMaisVoltas ? kMaisVoltas + 1 : voltas;
}

template <class T, void (*liberar)(T *)>
std::unique_ptr<T, Liberador<liberar>> parametros(const ASN1_ITEM *forma, const ASN1_TYPE *tipo) {
    return std::unique_ptr<T, Liberador<liberar>>(
        static_cast<T *>(tipo == nullptr ? nullptr : ASN1_TYPE_unpack_sequence(forma, tipo)));
}

// How often an algorithm hashes the password. PKCS#5 version 2 has others than PBKDF2 (scrypt),
// with which no certificate comes: too many, too.
long voltasDe(const X509_ALGOR *algoritmo) {
    if (OBJ_obj2nid(algoritmo->algorithm) != NID_pbes2) {
        const auto pbe =
            parametros<PBEPARAM, PBEPARAM_free>(ASN1_ITEM_rptr(PBEPARAM), algoritmo->parameter);
        return pbe ? voltasDe(pbe->iter) : 0; // it fails before it derives anything
    }
    const auto pbe2 =
        parametros<PBE2PARAM, PBE2PARAM_free>(ASN1_ITEM_rptr(PBE2PARAM), algoritmo->parameter);
    if (!pbe2) return 0;
    if (OBJ_obj2nid(pbe2->keyfunc->algorithm) != NID_id_pbkdf2) return kMaisVoltas + 1;
    const auto pbkdf2 = parametros<PBKDF2PARAM, PBKDF2PARAM_free>(ASN1_ITEM_rptr(PBKDF2PARAM),
                                                                  pbe2->keyfunc->parameter);
    return pbkdf2 ? voltasDe(pbkdf2->iter) : 0;
}

long voltasDe(const STACK_OF(PKCS12_SAFEBAG) * sacos) {
    long soma = 0;
    for (int i = 0; i < sk_PKCS12_SAFEBAG_num(sacos) && soma <= kMaisVoltas; ++i) {
        const PKCS12_SAFEBAG *saco = sk_PKCS12_SAFEBAG_value(sacos, i);
        if (PKCS12_SAFEBAG_get_nid(saco) == NID_safeContentsBag) {
            soma += voltasDe(PKCS12_SAFEBAG_get0_safes(saco));
        } else if (PKCS12_SAFEBAG_get_nid(saco) == NID_pkcs8ShroudedKeyBag) {
            const X509_ALGOR *algoritmo = nullptr;
            X509_SIG_get0(PKCS12_SAFEBAG_get0_pkcs8(saco), &algoritmo, nullptr);
            soma += voltasDe(algoritmo);
        }
    }
    return soma;
}

using DonoCofres = std::unique_ptr<STACK_OF(PKCS7), decltype([](STACK_OF(PKCS7) * cofres) {
                                       sk_PKCS7_pop_free(cofres, PKCS7_free);
                                   })>;
using DonoSacos =
    std::unique_ptr<STACK_OF(PKCS12_SAFEBAG), decltype([](STACK_OF(PKCS12_SAFEBAG) * sacos) {
                        sk_PKCS12_SAFEBAG_pop_free(sacos, PKCS12_SAFEBAG_free);
                    })>;

// What the file's parts ask for; without a password, those that can be seen without deciphering.
bool voltasDemais(const PKCS12 *pacote, const Segredo *senha) {
    const DonoCofres cofres(PKCS12_unpack_authsafes(pacote));
    long soma = 0;
    for (int i = 0; i < sk_PKCS7_num(cofres.get()); ++i) {
        PKCS7 *cofre = sk_PKCS7_value(cofres.get(), i);
        DonoSacos sacos;
        if (PKCS7_type_is_data(cofre)) {
            sacos.reset(PKCS12_unpack_p7data(cofre));
        } else if (PKCS7_type_is_encrypted(cofre)) {
            soma += voltasDe(cofre->d.encrypted->enc_data->algorithm);
            if (soma > kMaisVoltas) return true;
            if (senha != nullptr)
                sacos.reset(PKCS12_unpack_p7encdata(cofre, senha->texto(),
                                                    static_cast<int>(senha->tamanho())));
        }
        soma += voltasDe(sacos.get());
        if (soma > kMaisVoltas) return true;
    }
    return false;
}

// Empty when the password opens it.
const char *porqueNaoAbre(PKCS12 *pacote, const Segredo &senha) {
    if (PKCS12_mac_present(pacote) == 0)
        return "o arquivo não tem código de autenticação: exporte-o de novo, com senha";
    const ASN1_INTEGER *voltas = nullptr;
    PKCS12_get0_mac(nullptr, nullptr, nullptr, &voltas, pacote);
    if ((voltas != nullptr && voltasDe(voltas) > kMaisVoltas) || voltasDemais(pacote, nullptr))
        return kVoltasDemais;
    if (PKCS12_verify_mac(pacote, senha.texto(), static_cast<int>(senha.tamanho())) == 1 ||
        (senha.vazio() && PKCS12_verify_mac(pacote, nullptr, 0) == 1))
        return voltasDemais(pacote, &senha) ? kVoltasDemais : "";
    return senha.vazio() ? "falta a senha: diga-a em senha_arquivo ou ZEL_ENVIO_SENHA"
                         : "a senha não abre o arquivo";
}

// Key and certificates know the context in which they were read; made anew from their bytes they
// belong to the program's own, and the other one can go.
DonoChave chaveSolta(const EVP_PKEY *chave) {
    unsigned char *der = nullptr;
    const int tamanho = i2d_PrivateKey(chave, &der);
    if (tamanho <= 0) return nullptr;
    const unsigned char *fim = der;
    DonoChave solta(d2i_AutoPrivateKey(nullptr, &fim, tamanho));
    OPENSSL_clear_free(der, static_cast<std::size_t>(tamanho));
    return solta;
}

DonoX509 certificadoSolto(const X509 *x509) {
    return x509 == nullptr ? nullptr : x509De(derDe(x509));
}

} // namespace

std::optional<ChaveAberta> abrirPkcs12(std::string_view bytes, const Segredo &senha,
                                       Recusas &recusas) {
    const FilaDeErros fila;
    const auto recusar = [&recusas](const char *motivo) {
        recusas.juntar("certificado", "", motivo);
        return std::nullopt;
    };
    const Algoritmos algoritmos;
    if (!algoritmos.prontos()) return recusar("o OpenSSL não pôde ser preparado");
    const DonoPkcs12 pacote = lerEstrutura(bytes, algoritmos.contexto());
    if (!pacote) return recusar("não é um arquivo PKCS#12 (.pfx, .p12)");
    const char *const motivo = porqueNaoAbre(pacote.get(), senha);
    if (*motivo != '\0') return recusar(motivo);

    EVP_PKEY *chave = nullptr;
    X509 *x509 = nullptr;
    STACK_OF(X509) *outros = nullptr;
    if (PKCS12_parse(pacote.get(), senha.texto(), &chave, &x509, &outros) != 1)
        return recusar(
            algoritmos.temAntigos()
                ? "o arquivo não pôde ser decifrado: está danificado ou usa um algoritmo "
                  "que o OpenSSL não conhece"
                : "o arquivo usa um algoritmo antigo (RC2) e o provedor \"legacy\" do "
                  "OpenSSL não está instalado: instale ossl-modules/legacy.so, ou "
                  "exporte o certificado de novo com AES");
    const DonoChave presa(chave);
    const DonoX509 preso(x509);
    ChaveAberta aberta;
    if (presa) aberta.chave = chaveSolta(presa.get());
    aberta.x509 = certificadoSolto(preso.get());
    for (int i = 0; i < sk_X509_num(outros); ++i)
        aberta.emissores.push_back(certificadoSolto(sk_X509_value(outros, i)));
    sk_X509_pop_free(outros, X509_free);
    if (!aberta.chave) return recusar("o arquivo não tem chave privada: exporte-o com ela");
    if (!aberta.x509) return recusar("o arquivo não tem o certificado de sua chave");
    return aberta;
}

} // namespace zel::envio
