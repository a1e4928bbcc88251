// SPDX-License-Identifier: MIT
#include "Servidor.h"

#include "Metricas.h"
#include "Telas.h"
#include "base/Texto.h"
#include "comum/Ascii.h"
#include "documento/Pagina.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <charconv>
#include <exception>
#include <microhttpd.h>
#include <netinet/in.h>
#include <utility>

namespace zel::envio {

namespace {

constexpr std::size_t kMostrados = 200; // documents of a table
constexpr unsigned kConexoes = 16;
constexpr unsigned kEsperaMaxima = 10;      // seconds, of a connection on which nothing happens
constexpr std::size_t kMemoria = 16U << 10; // of a connection: request line and headers
constexpr const char *kTipoHtml = "text/html; charset=utf-8";

struct Cabecalho {
    const char *nome, *valor;
};
constexpr std::array<Cabecalho, 6> kCabecalhos{{
    {"Content-Security-Policy", "default-src 'none'; style-src 'self'; form-action 'self'; "
                                "frame-ancestors 'none'; base-uri 'none'"},
    {"X-Content-Type-Options", "nosniff"},
    {"X-Frame-Options", "DENY"},
    {"Referrer-Policy", "no-referrer"},
    {"Cross-Origin-Resource-Policy", "same-origin"},
    {"Cache-Control", "no-store"},
}};

// ---- what was asked ----

std::optional<std::int64_t> numeroDe(std::string_view texto, std::size_t maximo) {
    std::int64_t numero = 0;
    if (!soDigitos(texto) || texto.size() > maximo) return {};
    std::from_chars(texto.data(), texto.data() + texto.size(), numero);
    return numero;
}

std::string semSinais(std::string texto) {
    std::erase_if(
        texto, [](char c) { return std::string_view(" .-/").find(c) != std::string_view::npos; });
    return texto;
}

// What of it cannot be; empty when it can. Fills `procura`.
std::string entender(const Perguntado &p, Procura &procura) {
    procura.chave = semSinais(p.chave);
    procura.consumidor = semSinais(p.consumidor);
    procura.dia = p.dia;
    const auto numero = numeroDe(p.numero, 9);
    procura.numero = numero.value_or(0);
    if (!p.numero.empty() && procura.numero == 0)
        return "O número da nota tem de 1 a 9 algarismos.";
    if (!p.dia.empty() && !ehData(p.dia)) return "O dia é escrito como 2026-11-25.";
    if (!p.chave.empty() && (!soDigitos(procura.chave) || procura.chave.size() != 44))
        return "A chave de acesso tem 44 algarismos.";
    if (procura.consumidor.size() > 20) return "O documento do consumidor tem até 20 caracteres.";
    return {};
}

// ---- the library's side ----

struct SoltarResposta {
    void operator()(MHD_Response *resposta) const { MHD_destroy_response(resposta); }
};

MHD_Result entregar(MHD_Connection *conexao, const Folha &folha) {
    const std::unique_ptr<MHD_Response, SoltarResposta> resposta(MHD_create_response_from_buffer(
        folha.corpo.size(), const_cast<char *>(folha.corpo.data()), MHD_RESPMEM_MUST_COPY));
    if (!resposta) return MHD_NO;
    MHD_add_response_header(resposta.get(), "Content-Type", folha.tipo.c_str());
    for (const Cabecalho &cabecalho : kCabecalhos)
        MHD_add_response_header(resposta.get(), cabecalho.nome, cabecalho.valor);
    if (folha.status == MHD_HTTP_METHOD_NOT_ALLOWED)
        MHD_add_response_header(resposta.get(), "Allow", "GET, HEAD");
    return MHD_queue_response(conexao, folha.status, resposta.get());
}

Folha frase(unsigned status, const char *texto) {
    return {status, "text/plain; charset=utf-8", std::string(texto) + "\n"};
}

Folha atender(Servidor &servidor, MHD_Connection *conexao, const char *caminho,
              std::string_view metodo) {
    const char *host = MHD_lookup_connection_value(conexao, MHD_HEADER_KIND, "Host");
    if (host == nullptr || !ehDaqui(host))
        return frase(MHD_HTTP_FORBIDDEN, "Esta página só responde por 127.0.0.1 ou localhost.");
    if (metodo != "GET" && metodo != "HEAD")
        return frase(MHD_HTTP_METHOD_NOT_ALLOWED, "Esta página só mostra.");
    return servidor.responder(caminho, [&](const char *nome) {
        const char *valor = MHD_lookup_connection_value(conexao, MHD_GET_ARGUMENT_KIND, nome);
        return std::string(valor == nullptr ? "" : valor);
    });
}

// No exception leaves it: its caller is C.
MHD_Result chamada(void *este, MHD_Connection *conexao, const char *caminho, const char *metodo,
                   const char * /*versao*/, const char * /*corpo*/, std::size_t * /*tamanho*/,
                   void ** /*guardado*/) noexcept {
    try {
        return entregar(conexao, atender(*static_cast<Servidor *>(este), conexao, caminho, metodo));
    } catch (const std::exception &) {
        return MHD_NO;
    }
}

} // namespace

bool ehDaqui(std::string_view host) {
    const std::string_view nome = host.substr(0, host.find(':'));
    const std::string_view porta = host.substr(nome.size());
    return (nome == "127.0.0.1" || nome == "localhost") &&
           (porta.empty() || (porta.size() <= 6 && soDigitos(porta.substr(1))));
}

void Servidor::Parar::operator()(MHD_Daemon *servidor) const {
    MHD_stop_daemon(servidor);
}

Servidor::Servidor(std::unique_ptr<Fila> fila, const ConfigFila &config, const Relogio &relogio,
                   const Relato &relato, std::function<std::optional<int>()> dias)
    : fila_(std::move(fila)), leitor_(*fila_, config), relogio_(relogio), relato_(relato),
      dias_(std::move(dias)) {}

Servidor::~Servidor() = default;

bool Servidor::comecar(int porta, Recusas &recusas) {
    sockaddr_in endereco{};
    endereco.sin_family = AF_INET;
    endereco.sin_port = htons(static_cast<std::uint16_t>(porta));
    endereco.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    servidor_.reset(MHD_start_daemon(
        MHD_USE_EPOLL_INTERNAL_THREAD | MHD_USE_ITC, 0, nullptr, nullptr, chamada, this,
        MHD_OPTION_SOCK_ADDR, reinterpret_cast<sockaddr *>(&endereco), MHD_OPTION_CONNECTION_LIMIT,
        kConexoes, MHD_OPTION_CONNECTION_TIMEOUT, kEsperaMaxima, MHD_OPTION_CONNECTION_MEMORY_LIMIT,
        kMemoria, MHD_OPTION_STRICT_FOR_CLIENT, 1, MHD_OPTION_LISTENING_ADDRESS_REUSE, 1U,
        MHD_OPTION_END));
    return servidor_ || recusas.juntar("[pagina] porta", std::to_string(porta),
                                       "outro programa a usa: escolha outra; o envio segue sem "
                                       "a página");
}

int Servidor::porta() const {
    const auto *dados =
        servidor_ ? MHD_get_daemon_info(servidor_.get(), MHD_DAEMON_INFO_BIND_PORT) : nullptr;
    return dados == nullptr ? 0 : dados->port;
}

Quadro Servidor::quadro() {
    return leitor_.ler(relogio_.agora(), dias_());
}

Folha Servidor::pagina(unsigned status, std::string_view titulo, const Html &corpo, bool renovar) {
    const std::string hora = momentoLido(momentoEscrito(relogio_.agora(), zona_).substr(0, 19));
    return {status, kTipoHtml, paginaInteira(titulo, corpo, hora, renovar).bytes()};
}

Folha Servidor::responder(std::string_view caminho, const Argumentos &argumentos) {
    constexpr std::string_view kDocumento = "/documento/";
    if (caminho == "/") return hoje();
    if (caminho == "/procurar") return procurar(argumentos);
    if (caminho.starts_with(kDocumento)) return documento(caminho.substr(kDocumento.size()));
    if (caminho == "/estilo.css")
        return {MHD_HTTP_OK, "text/css; charset=utf-8", std::string(kEstilo)};
    if (caminho == "/metricas")
        return {MHD_HTTP_OK, kTipoDasMetricas, metricasDe(quadro(), relato_.contadores())};
    return pagina(MHD_HTTP_NOT_FOUND, "Não há", telaDeAviso("Esta página não existe."));
}

Folha Servidor::hoje() {
    if (const auto ultimas = fila_->procurar({.maximo = 1}); !ultimas.empty())
        zona_ = ultimas.front().dhEmi;
    const std::string dia = momentoEscrito(relogio_.agora(), zona_).substr(0, 10);
    return pagina(MHD_HTTP_OK, "Hoje",
                  telaDeHoje(quadro(), fila_->procurar({.dia = dia, .maximo = kMostrados + 1}),
                             kMostrados, zona_),
                  true);
}

Folha Servidor::procurar(const Argumentos &argumentos) {
    const Perguntado perguntado{argumentos("numero"), argumentos("chave"), argumentos("dia"),
                                argumentos("consumidor")};
    Procura procura{.maximo = kMostrados + 1};
    const std::string erro = entender(perguntado, procura);
    const bool procurado = erro.empty() && !perguntado.nada();
    return pagina(erro.empty() ? MHD_HTTP_OK : MHD_HTTP_BAD_REQUEST, "Procurar",
                  telaDeProcura(perguntado, erro,
                                procurado ? fila_->procurar(procura) : std::vector<Ficha>{},
                                kMostrados));
}

Folha Servidor::documento(std::string_view id) {
    const auto numero = numeroDe(id, 18);
    const auto ficha = numero ? fila_->ficha(*numero) : std::nullopt;
    if (!ficha)
        return pagina(MHD_HTTP_NOT_FOUND, "Não há", telaDeAviso("Este documento não existe."));
    return pagina(MHD_HTTP_OK, tituloDe(*ficha), telaDoDocumento(*ficha, fila_->passos(*numero)));
}

} // namespace zel::envio
