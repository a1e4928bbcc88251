// SPDX-License-Identifier: MIT
#include "assinatura/Assinatura.h"

#include "assinatura/FormaAssinatura.h"
#include "assinatura/XmlSec.h"

#include <libxml/c14n.h>
#include <libxml/tree.h>
#include <openssl/pem.h>
#include <openssl/rsa.h>
#include <xmlsec/xmldsig.h>

namespace zel::envio {

namespace {

constexpr std::size_t kMaiorCertificado = 16384; // bytes of its DER
constexpr int kMenorChave = 1024, kMaiorChave = 8192;

std::string semBrancos(std::string_view texto) {
    std::string limpo;
    for (const char c : texto)
        if (c != ' ' && c != '\t' && c != '\r' && c != '\n') limpo += c;
    return limpo;
}

std::vector<No> todos(const No &raiz, std::string_view nome) {
    std::vector<No> achados;
    if (raiz.nome() == nome) achados.push_back(raiz);
    for (const No &filho : raiz.filhos()) {
        // What is signed has nothing to be signed within itself.
        if (!achados.empty() && achados.back() == raiz) break;
        const auto dentro = todos(filho, nome);
        achados.insert(achados.end(), dentro.begin(), dentro.end());
    }
    return achados;
}

// The Signature with all its places, empty where the values go.
No montar(No pai, const std::string &id) {
    const auto algoritmo = [](No no, const char *qual) { no.definirAtributo("Algorithm", qual); };
    No assinatura = pai.acrescentarEm(kEspacoAssinatura, "Signature");
    No info = assinatura.acrescentar("SignedInfo");
    algoritmo(info.acrescentar("CanonicalizationMethod"), kC14n);
    algoritmo(info.acrescentar("SignatureMethod"), kRsaSha1);
    No referencia = info.acrescentar("Reference");
    referencia.definirAtributo("URI", '#' + id);
    No transformacoes = referencia.acrescentar("Transforms");
    algoritmo(transformacoes.acrescentar("Transform"), kEnvelopada);
    algoritmo(transformacoes.acrescentar("Transform"), kC14n);
    algoritmo(referencia.acrescentar("DigestMethod"), kSha1);
    referencia.acrescentar("DigestValue");
    assinatura.acrescentar("SignatureValue");
    return assinatura;
}

bool assinarUm(const No &elemento, const Certificado &certificado, Recusas &recusas) {
    const std::string id = elemento.atributo("Id");
    const IdRegistrado registrado(elemento, id);
    if (!registrado)
        return recusas.juntar(elemento.caminho(), id, "o Id não pode ser usado para assinar");
    No assinatura = montar(elemento.pai(), id);
    const ContextoXmlSec contexto = contextoXmlSec(certificado.chave());
    if (!contexto || xmlSecDSigCtxSign(contexto.get(), assinatura.cru()) < 0 ||
        contexto->status != xmlSecDSigStatusSucceeded) {
        assinatura.remover();
        return recusas.juntar(elemento.caminho(), id,
                              "a chave não assinou: o token foi retirado, ou recusa a operação");
    }
    // In lines as xmlsec writes it; the authority takes none.
    No valor = assinatura.filho("SignatureValue");
    valor.definirTexto(semBrancos(valor.texto()));
    assinatura.acrescentar("KeyInfo")
        .acrescentar("X509Data")
        .acrescentar("X509Certificate", certificado.emBase64());
    return true;
}

} // namespace

bool assinar(Documento &documento, std::string_view nome, const Certificado &certificado,
             Recusas &recusas) {
    const FilaDeErros fila;
    const SilencioXml silencio;
    const std::vector<No> elementos = todos(documento.raiz(), nome);
    bool pronto = conferirCanonico(documento, recusas);
    if (elementos.empty()) pronto = recusas.juntar(nome, "", "não há o que assinar");
    for (const No &elemento : elementos) {
        if (!elemento.pai())
            pronto = recusas.juntar(nome, "", "falta o elemento que recebe a assinatura");
        else if (elemento.pai().filho("Signature"))
            pronto = recusas.juntar(elemento.pai().caminho(), "", "já tem assinatura");
        pronto = conferirId(documento, elemento, recusas) && pronto;
    }
    if (!pronto) return false;
    for (std::size_t i = 0; i < elementos.size(); ++i) {
        if (assinarUm(elementos[i], certificado, recusas)) continue;
        while (i-- > 0)
            elementos[i].pai().filho("Signature").remover();
        return false;
    }
    return true;
}

// ---- digest ----

namespace {

int visivel(void *alvo, xmlNode *no, xmlNode *pai) {
    // A namespace is no node of the tree: its element is.
    for (const xmlNode *este = no->type == XML_NAMESPACE_DECL ? pai : no; este != nullptr;
         este = este->parent)
        if (este == alvo) return 1;
    return 0;
}

int resumir(void *resumo, const char *bytes, int quantos) {
    const bool feito = EVP_DigestUpdate(static_cast<EVP_MD_CTX *>(resumo), bytes,
                                        static_cast<std::size_t>(quantos)) == 1;
    return feito ? quantos : -1;
}

std::optional<std::string> resumoDe(const Documento &documento, const No &elemento) {
    const DonoResumo resumo(EVP_MD_CTX_new());
    unsigned char valor[EVP_MAX_MD_SIZE];
    unsigned tamanho = 0;
    if (EVP_DigestInit_ex(resumo.get(), EVP_sha1(), nullptr) != 1) return {};
    xmlOutputBuffer *saida = xmlOutputBufferCreateIO(resumir, nullptr, resumo.get(), nullptr);
    const int feito =
        xmlC14NExecute(documento.cru(), visivel, elemento.cru(), XML_C14N_1_0, nullptr, 0, saida);
    const int fechado = xmlOutputBufferClose(saida);
    if (feito < 0 || fechado < 0 || EVP_DigestFinal_ex(resumo.get(), valor, &tamanho) != 1)
        return {};
    return base64De(valor, tamanho);
}

} // namespace

std::optional<std::string> digestDe(const Documento &documento, std::string_view nome,
                                    Recusas &recusas) {
    const FilaDeErros fila;
    const SilencioXml silencio;
    if (!conferirCanonico(documento, recusas)) return {};
    const No elemento = documento.raiz().procurar(nome);
    auto resumo = elemento ? resumoDe(documento, elemento) : std::nullopt;
    if (!resumo)
        recusas.juntar(nome, "", elemento ? "não pôde ser posto em forma canônica" : "falta");
    return resumo;
}

// ---- verification ----

namespace {

std::string desfazerBase64(std::string_view texto) {
    std::string bytes(texto.size() / 4 * 3 + 3, '\0');
    const int tamanho = EVP_DecodeBlock(reinterpret_cast<unsigned char *>(bytes.data()),
                                        reinterpret_cast<const unsigned char *>(texto.data()),
                                        static_cast<int>(texto.size()));
    if (tamanho < 0) return {};
    const auto enchimento = static_cast<std::size_t>(texto.ends_with("==")  ? 2
                                                     : texto.ends_with('=') ? 1
                                                                            : 0);
    bytes.resize(std::max(static_cast<std::size_t>(tamanho), enchimento) - enchimento);
    return bytes;
}

DonoX509 certificadoDe(const No &assinatura, Recusas &recusas) {
    const No lugar = assinatura.filho("KeyInfo/X509Data/X509Certificate");
    const std::string base64 = semBrancos(lugar.texto());
    DonoX509 x509;
    if (base64.size() <= kMaiorCertificado * 4 / 3) x509 = x509De(desfazerBase64(base64));
    EVP_PKEY *chave = x509 ? X509_get0_pubkey(x509.get()) : nullptr;
    if (chave != nullptr && EVP_PKEY_get_base_id(chave) == EVP_PKEY_RSA &&
        EVP_PKEY_get_bits(chave) >= kMenorChave && EVP_PKEY_get_bits(chave) <= kMaiorChave)
        return x509;
    recusas.juntar(lugar.caminho(), base64,
                   x509 ? "a chave do certificado não é RSA de 1024 a 8192 bits"
                        : "não é um certificado X.509");
    return nullptr;
}

std::string pemDe(X509 *x509) {
    const DonoBio saida(BIO_new(BIO_s_mem()));
    PEM_write_bio_X509(saida.get(), x509);
    char *bytes = nullptr;
    const long tamanho = BIO_get_mem_data(saida.get(), &bytes);
    return {bytes, static_cast<std::size_t>(tamanho)};
}

} // namespace

bool verificarAssinatura(const Documento &documento, const No &pai, std::string &certificadoPem,
                         Recusas &recusas) {
    const FilaDeErros fila;
    const SilencioXml silencio;
    const auto forma = formaDe(documento, pai, recusas);
    if (!forma) return false;
    const DonoX509 x509 = certificadoDe(forma->assinatura, recusas);
    if (!x509) return false;
    const IdRegistrado registrado(forma->assinado, forma->id);
    const ContextoXmlSec contexto = contextoXmlSec(X509_get0_pubkey(x509.get()));
    if (!registrado || !contexto)
        return recusas.juntar(pai.caminho(), forma->id, "a assinatura não pôde ser conferida");
    const std::string dito =
        semBrancos(forma->assinatura.texto("SignedInfo/Reference/DigestValue"));
    if (xmlSecDSigCtxVerify(contexto.get(), forma->assinatura.cru()) < 0 ||
        contexto->status != xmlSecDSigStatusSucceeded)
        return recusas.juntar(forma->assinatura.caminho(), dito,
                              resumoDe(documento, forma->assinado) == dito
                                  ? "o valor da assinatura não é o da chave do certificado"
                                  : "o resumo (digest) não é o do documento: foi alterado depois "
                                    "de assinado");
    certificadoPem = pemDe(x509.get());
    return true;
}

} // namespace zel::envio
