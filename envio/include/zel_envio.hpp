// SPDX-License-Identifier: MIT
// libzel-envio for C++17, header-only: link the library itself.
//
//     zel_envio_cpp::Envio envio("zel-envio.toml");
//     envio.ler(bytesDoArquivo);
//     envio.assinar();
//     enviar(envio.mensagem(), envio.valor("chave"));
//
//  1. What each function does, and in which order, is in zel_envio.h.
//  2. A failure is thrown as Falha, with the code and all that is wrong; texts are UTF-8.
//  3. One thread at a time may use an Envio; several may use one each.
#pragma once

#include "zel_envio.h"

#include <cstddef>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace zel_envio_cpp {

enum class Tipo {
    Nenhum = ZEL_ENVIO_NENHUM,
    Nfce = ZEL_ENVIO_NFCE,
    Cancelamento = ZEL_ENVIO_CANCELAMENTO,
    Inutilizacao = ZEL_ENVIO_INUTILIZACAO,
    Consulta = ZEL_ENVIO_CONSULTA
};

// One thing that is wrong.
struct Recusa {
    std::string campo, valor, motivo;
};

// What the library answered.
class Falha : public std::runtime_error {
public:
    Falha(const char *funcao, int codigo, const std::string &detalhe,
          std::vector<Recusa> recusas = {})
        : std::runtime_error(std::string(funcao) + ": " + ::zel_envio_descrever(codigo) + " (" +
                             std::to_string(codigo) + ")" +
                             (detalhe.empty() ? std::string() : ":\n" + detalhe)),
          codigo_(codigo), detalhe_(detalhe), recusas_(std::move(recusas)) {}

    int codigo() const noexcept { return codigo_; }
    // A line for each thing that is wrong; empty when the code says it all.
    const std::string &detalhe() const noexcept { return detalhe_; }
    // The same thing by thing.
    const std::vector<Recusa> &recusas() const noexcept { return recusas_; }

private:
    int codigo_;
    std::string detalhe_;
    std::vector<Recusa> recusas_;
};

// Files that a first configuration is to use; an example as a comment in the place of an empty one.
struct Arquivos {
    std::string certificado, senha, csc;
};

// What the till's file leaves out.
struct Complemento {
    std::string protocolo, substituta, data, troco;
};

struct Impressao {
    std::string documento, retorno; // bytes of two files for GerarArquivoFormatadoNF_ZEL
};

// How a transmission ended.
enum class Situacao {
    Feito = ZEL_ENVIO_OK, // authorized, cancelled, inutilized, answered
    Recusado = ZEL_ENVIO_RECUSADO,
    SemResposta = ZEL_ENVIO_SEM_RESPOSTA, // it may be there: its number must not be used again
    NaoEnviado = ZEL_ENVIO_NAO_ENVIADO    // certainly nothing went out
};

struct Transmissao {
    Situacao situacao = Situacao::NaoEnviado;
    std::string desfecho, chave, protocolo, cStat, xMotivo;
    std::string motivo, remedio; // of what is not at its good end
    std::string resposta;        // the authority's record, for impressao(); empty: none

    bool autorizado() const { return situacao == Situacao::Feito && desfecho == "autorizado"; }
};

// How a document is transmitted.
struct Transmitir {
    int segundos = 5;           // that the authority is waited for
    std::string caixa = {};     // the till's directory, of several [[caixas]]
    std::string substitui = {}; // key of the one that this, issued offline, replaces
};

class Envio {
public:
    // Without configuration nothing is signed or judged by schemas.
    Envio() : envio_(::zel_envio_novo()) {
        if (!envio_) throw std::bad_alloc();
    }
    explicit Envio(const std::string &configuracao) : Envio() { configurar(configuracao); }

    void configurar(const std::string &arquivo) {
        exigir("zel_envio_configurar", ::zel_envio_configurar(envio_.get(), arquivo.c_str()));
    }
    void configurarTexto(std::string_view toml, const std::string &diretorio = {}) {
        exigir("zel_envio_configurar_texto",
               ::zel_envio_configurar_texto(envio_.get(), toml.data(), toml.size(),
                                            diretorio.c_str()));
    }

    // The bytes of a till's file, or of a document of layout 4.00.
    Tipo ler(std::string_view bytes) {
        exigir("zel_envio_ler", ::zel_envio_ler(envio_.get(), bytes.data(), bytes.size()));
        return tipo();
    }
    Tipo tipo() const { return static_cast<Tipo>(::zel_envio_tipo(envio_.get())); }

    void completar(const Complemento &c) {
        exigir("zel_envio_completar",
               ::zel_envio_completar(envio_.get(), c.protocolo.c_str(), c.substituta.c_str(),
                                     c.data.c_str(), c.troco.c_str()));
    }
    void traduzir() { exigir("zel_envio_traduzir", ::zel_envio_traduzir(envio_.get())); }
    void assinar() { exigir("zel_envio_assinar", ::zel_envio_assinar(envio_.get())); }

    std::string mensagem() {
        Bytes bytes;
        exigir("zel_envio_mensagem",
               ::zel_envio_mensagem(envio_.get(), &bytes.inicio, &bytes.tamanho));
        return bytes.texto();
    }
    std::string mostrar() {
        Bytes bytes;
        exigir("zel_envio_mostrar",
               ::zel_envio_mostrar(envio_.get(), &bytes.inicio, &bytes.tamanho));
        return bytes.texto();
    }

    // "chave", "qrCode", "certificado.dias"...; an unknown name is std::out_of_range.
    std::string valor(const std::string &nome) {
        const char *valor = ::zel_envio_valor(envio_.get(), nome.c_str());
        if (valor == nullptr) throw std::out_of_range("zel_envio_valor: " + nome);
        return valor;
    }

    // Answers what was looked at, a line each; what is wrong is in the Falha.
    std::string verificar() {
        exigir("zel_envio_verificar", ::zel_envio_verificar(envio_.get()));
        return ::zel_envio_detalhe(envio_.get());
    }

    // A first zel-envio.toml, from the bytes of a till's ZEL_Framework.xml.
    std::string primeiraConfiguracao(std::string_view caixa, const Arquivos &arquivos = {}) {
        Bytes toml;
        exigir("zel_envio_primeira_configuracao",
               ::zel_envio_primeira_configuracao(
                   envio_.get(), caixa.data(), caixa.size(), arquivos.certificado.c_str(),
                   arquivos.senha.c_str(), arquivos.csc.c_str(), &toml.inicio, &toml.tamanho));
        return toml.texto();
    }

    // A PKCS#12 file for trying: what it signs verifies, and no authority takes it.
    std::string certificadoDeEnsaio(const std::string &nome, const std::string &cnpj,
                                    const std::string &senha) {
        Bytes bytes;
        exigir("zel_envio_certificado_de_ensaio",
               ::zel_envio_certificado_de_ensaio(envio_.get(), nome.c_str(), cnpj.c_str(),
                                                 senha.c_str(), &bytes.inicio, &bytes.tamanho));
        return bytes.texto();
    }

    Impressao impressaoOffline() { return imprimir(nullptr, 0); }
    // `resposta` is the authority's answer.
    Impressao impressao(std::string_view resposta) {
        return imprimir(resposta.empty() ? "" : resposta.data(), resposta.size());
    }

    // Sends the document that was read through the queue, and waits for the authority. What is no
    // end of the four is a Falha.
    Transmissao transmitir(const Transmitir &como = {}) {
        const int codigo = ::zel_envio_transmitir(envio_.get(), como.caixa.c_str(),
                                                  como.substitui.c_str(), como.segundos);
        if (codigo != ZEL_ENVIO_RECUSADO && codigo != ZEL_ENVIO_SEM_RESPOSTA &&
            codigo != ZEL_ENVIO_NAO_ENVIADO)
            exigir("zel_envio_transmitir", codigo);
        Transmissao feita{static_cast<Situacao>(codigo),
                          valor("desfecho"),
                          valor("chave"),
                          valor("protocolo"),
                          valor("cStat"),
                          valor("xMotivo"),
                          valor("motivo"),
                          valor("remedio"),
                          {}};
        Bytes bytes;
        if (::zel_envio_resposta(envio_.get(), &bytes.inicio, &bytes.tamanho) == ZEL_ENVIO_OK)
            feita.resposta = bytes.texto();
        return feita;
    }

    // The queue in JSON; zel_envio.h says what is in it.
    std::string estado() {
        Bytes json;
        exigir("zel_envio_estado", ::zel_envio_estado(envio_.get(), &json.inicio, &json.tamanho));
        return json.texto();
    }
    // A criterion a line: "numero=12\nalguem".
    std::string procurar(const std::string &criterios = {}) {
        Bytes json;
        exigir("zel_envio_procurar",
               ::zel_envio_procurar(envio_.get(), criterios.c_str(), &json.inicio, &json.tamanho));
        return json.texto();
    }
    // How many documents of the month ("2026-11") are in the zip file.
    std::size_t exportar(const std::string &mes, const std::string &arquivo) {
        std::size_t quantos = 0;
        exigir("zel_envio_exportar",
               ::zel_envio_exportar(envio_.get(), mes.c_str(), arquivo.c_str(), &quantos));
        return quantos;
    }
    void continuar() { exigir("zel_envio_continuar", ::zel_envio_continuar(envio_.get())); }
    // The answer of the status service; one that does not work is a Falha.
    std::string servico(const std::string &cUF = {}, int ambiente = 2, int segundos = 5) {
        Bytes json;
        exigir("zel_envio_servico", ::zel_envio_servico(envio_.get(), cUF.c_str(), ambiente,
                                                        segundos, &json.inicio, &json.tamanho));
        return json.texto();
    }

private:
    struct Liberar {
        void operator()(::zel_envio *envio) const noexcept { ::zel_envio_liberar(envio); }
    };
    struct Bytes {
        Bytes() = default;
        ~Bytes() { ::zel_envio_liberar_bytes(inicio); }
        Bytes(const Bytes &) = delete;
        Bytes &operator=(const Bytes &) = delete;
        std::string texto() const { return {inicio, tamanho}; }

        char *inicio = nullptr;
        std::size_t tamanho = 0;
    };

    void exigir(const char *funcao, int codigo) const {
        if (codigo != ZEL_ENVIO_OK)
            throw Falha(funcao, codigo, ::zel_envio_detalhe(envio_.get()), recusas());
    }

    std::vector<Recusa> recusas() const {
        std::vector<Recusa> todas;
        const char *campo = nullptr, *valor = nullptr, *motivo = nullptr;
        while (::zel_envio_recusa(envio_.get(), todas.size(), &campo, &valor, &motivo) ==
               ZEL_ENVIO_OK)
            todas.push_back({campo, valor, motivo});
        return todas;
    }

    Impressao imprimir(const char *resposta, std::size_t tamanho) {
        Bytes documento, retorno;
        exigir("zel_envio_impressao",
               ::zel_envio_impressao(envio_.get(), resposta, tamanho, &documento.inicio,
                                     &documento.tamanho, &retorno.inicio, &retorno.tamanho));
        return {documento.texto(), retorno.texto()};
    }

    std::unique_ptr<::zel_envio, Liberar> envio_;
};

} // namespace zel_envio_cpp
