// SPDX-License-Identifier: MIT
#include "Conexao.h"

#include "Texto.h"

#include <memory>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>

namespace zel::cupom {

namespace {

constexpr std::string_view kPortaPadrao = "9100";
constexpr std::size_t kMaiorHost = 255;

using Enderecos = std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)>;

struct Achados {
    Envio resultado = Envio::kAusente;
    Enderecos lista{nullptr, &::freeaddrinfo};
};

// What a name server is asked; it lives as long as the question.
struct Pergunta {
    explicit Pergunta(const EnderecoTcp &qual) : endereco(qual) {
        dicas.ai_family = AF_UNSPEC;
        dicas.ai_socktype = SOCK_STREAM;
        dicas.ai_flags = AI_NUMERICSERV;
        pedido.ar_name = endereco.host.c_str();
        pedido.ar_service = endereco.porta.c_str();
        pedido.ar_request = &dicas;
    }
    Pergunta(const Pergunta &) = delete;
    Pergunta &operator=(const Pergunta &) = delete;

    EnderecoTcp endereco;
    addrinfo dicas{};
    gaicb pedido{};
};

Achados acharNumero(const EnderecoTcp &endereco) {
    addrinfo dicas{}, *lista = nullptr;
    dicas.ai_socktype = SOCK_STREAM;
    dicas.ai_flags = AI_NUMERICHOST | AI_NUMERICSERV;
    if (::getaddrinfo(endereco.host.c_str(), endereco.porta.c_str(), &dicas, &lista) != 0)
        return {};
    return {Envio::kFeito, Enderecos(lista, &::freeaddrinfo)};
}

// A name server may not answer for longer than the caller has time.
Achados acharNome(const EnderecoTcp &endereco, const Prazo &prazo) {
    auto pergunta = std::make_unique<Pergunta>(endereco);
    gaicb *pedido = &pergunta->pedido;
    if (::getaddrinfo_a(GAI_NOWAIT, &pedido, 1, nullptr) != 0) return {};
    int estado = EAI_INPROGRESS;
    while ((estado = ::gai_error(pedido)) == EAI_INPROGRESS && !prazo.acabou()) {
        const auto resta = prazo.resta().count();
        const timespec ate{resta / 1000, resta % 1000 * 1'000'000};
        ::gai_suspend(&pedido, 1, &ate);
    }
    if (estado == 0) return {Envio::kFeito, Enderecos(pedido->ar_result, &::freeaddrinfo)};
    if (estado != EAI_INPROGRESS) return {};
    // A question that is being asked cannot be taken back: its memory stays with the C library.
    if (::gai_cancel(pedido) != EAI_CANCELED) static_cast<void>(pergunta.release());
    return {Envio::kTempoEsgotado, Enderecos(nullptr, &::freeaddrinfo)};
}

Envio resultadoDe(int erro) {
    switch (erro) {
    case 0:
        return Envio::kFeito;
    case ECONNREFUSED:
    case ECONNRESET:
    case EACCES:
    case EPERM:
        return Envio::kRecusado;
    default:
        return Envio::kAusente;
    }
}

Envio conectarA(const addrinfo &endereco, const Prazo &prazo, Descritor &descritor) {
    descritor = Descritor(
        ::socket(endereco.ai_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, IPPROTO_TCP));
    if (!descritor.aberto()) return Envio::kAusente;
    if (::connect(descritor.fd(), endereco.ai_addr, endereco.ai_addrlen) == 0) return Envio::kFeito;
    if (errno != EINPROGRESS && errno != EINTR) return resultadoDe(errno);
    if (esperar(descritor.fd(), POLLOUT, prazo) == 0) return Envio::kTempoEsgotado;
    int erro = 0;
    socklen_t tamanho = sizeof erro;
    ::getsockopt(descritor.fd(), SOL_SOCKET, SO_ERROR, &erro, &tamanho);
    return resultadoDe(erro);
}

} // namespace

std::optional<EnderecoTcp> lerEndereco(std::string_view texto) {
    const bool entreColchetes = texto.starts_with('[');
    const std::size_t fim = texto.find(entreColchetes ? ']' : ':');
    if (entreColchetes && fim == texto.npos) return {};
    const std::string_view host = texto.substr(0, fim).substr(entreColchetes ? 1 : 0);
    std::string_view porta = fim == texto.npos ? "" : texto.substr(fim + (entreColchetes ? 1 : 0));
    if (porta.empty())
        porta = kPortaPadrao;
    else if (porta.front() == ':')
        porta.remove_prefix(1);
    else
        return {};
    if (host.empty() || host.size() > kMaiorHost || !numeroDe(porta, 1, 65535)) return {};
    return EnderecoTcp{std::string(host), std::string(porta)};
}

Conexao conectar(const EnderecoTcp &endereco, const Prazo &prazo) {
    Achados achados = acharNumero(endereco);
    if (achados.resultado != Envio::kFeito) achados = acharNome(endereco, prazo);
    if (achados.resultado != Envio::kFeito) return {achados.resultado, Descritor()};
    int faltam = 0;
    for (const addrinfo *a = achados.lista.get(); a != nullptr; a = a->ai_next)
        ++faltam;
    Conexao conexao;
    for (const addrinfo *a = achados.lista.get(); a != nullptr; a = a->ai_next, --faltam) {
        // An address that does not answer must leave time for the others.
        conexao.resultado = conectarA(*a, prazo.parte(prazo.resta() / faltam), conexao.descritor);
        if (conexao.resultado == Envio::kFeito) break;
    }
    return conexao;
}

} // namespace zel::cupom
