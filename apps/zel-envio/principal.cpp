// SPDX-License-Identifier: MIT
// The service zel-envio: finds what the tills wrote, sends it, keeps and hands back what the
// authority answered, until it is told to stop (SIGTERM, SIGINT); SIGHUP opens the certificate
// anew.
#include "Html.h"
#include "Quadro.h"
#include "Relato.h"
#include "Servidor.h"
#include "assinatura/Certificado.h"
#include "fluxo/Destinos.h"
#include "fluxo/Oficina.h"
#include "fluxo/Servico.h"
#include "rede/Rede.h"

#include <algorithm>
#include <atomic>
#include <climits>
#include <csignal>
#include <cstdio>
#include <ctime>
#include <malloc.h>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <thread>

namespace {

using namespace zel::envio;

constexpr std::string_view kUso =
    "uso: zel-envio --config zel-envio.toml [--conferir]\n"
    "  --config ARQUIVO  a configuração, com [[caixas]]\n"
    "  --conferir        só confere configuração, certificado e fila\n"
    "  --versao, --ajuda\n";
constexpr int kUsoErrado = 2, kFalha = 1;
constexpr int kArenas = 2;
// So often certificate and queue are looked at for what somebody has to do.
constexpr timespec kVistoria{3600, 0};

struct Opcoes {
    std::string config;
    bool conferir = false, ajuda = false, versao = false;
};

std::optional<Opcoes> lerOpcoes(int quantas, char **palavras) {
    Opcoes opcoes;
    for (int i = 1; i < quantas; ++i) {
        const std::string_view palavra = palavras[i];
        if (palavra == "--config" && i + 1 < quantas)
            opcoes.config = palavras[++i];
        else if (palavra == "--conferir")
            opcoes.conferir = true;
        else if (palavra == "--ajuda" || palavra == "--help")
            opcoes.ajuda = true;
        else if (palavra == "--versao" || palavra == "--version")
            opcoes.versao = true;
        else
            return {};
    }
    if (opcoes.config.empty() && !opcoes.ajuda && !opcoes.versao) return {};
    return opcoes;
}

// A line each, whole, from any thread: the system's journal adds the time.
void dizer(std::string_view linha) {
    static std::mutex porta;
    const std::lock_guard trava(porta);
    const std::string dita = semCpf(linha);
    std::fprintf(stderr, "%.*s\n", static_cast<int>(dita.size()), dita.data());
}

int recusar(const Recusas &recusas) {
    dizer(recusas.texto());
    return kFalha;
}

// False when it cannot sign for anybody.
bool conferirCertificado(Oficina &oficina, Recusas &recusas) {
    const auto certificado = oficina.certificado(recusas);
    if (!certificado) return false;
    const int dias = certificado->dias(std::time(nullptr));
    if (dias < 0) return recusas.juntar("certificado", certificado->validoAte(), "está vencido");
    dizer("certificado de " + certificado->cnpj() + ", válido até " + certificado->validoAte() +
          (dias < kPoucosDias ? ": vence em " + std::to_string(dias) + " dias" : ""));
    return true;
}

// Held back from the first moment and from every thread: one alone waits for them.
sigset_t segurarSinais() {
    sigset_t sinais;
    sigemptyset(&sinais);
    sigaddset(&sinais, SIGTERM);
    sigaddset(&sinais, SIGINT);
    sigaddset(&sinais, SIGHUP);
    pthread_sigmask(SIG_BLOCK, &sinais, nullptr);
    return sinais;
}

// What the certificate is known to last, for the page; it is opened here and by those who sign
// alone, for each try of a wrong PIN is one less.
class Validade {
public:
    void ver(Oficina &oficina) {
        Recusas recusas;
        if (const auto certificado = oficina.certificado(recusas))
            dias_ = certificado->dias(std::time(nullptr));
        visto_ = std::time(nullptr);
    }
    std::optional<int> dias() const {
        constexpr std::time_t kDia = 24 * 3600;
        if (visto_ == 0 || dias_ == kNenhum) return {};
        return dias_ - static_cast<int>((std::time(nullptr) - visto_) / kDia);
    }

private:
    static constexpr int kNenhum = INT_MIN;
    std::atomic<int> dias_{kNenhum};
    std::atomic<std::time_t> visto_{0};
};

std::unique_ptr<Servidor> abrirPagina(const Configuracao &config, const Relogio &relogio,
                                      const Relato &relato, const Validade &validade) {
    if (config.portaDaPagina == 0) return {};
    Recusas recusas;
    auto fila = Fila::abrir(filaDe(config), recusas);
    if (!fila) return dizer(recusas.texto()), nullptr;
    auto servidor = std::make_unique<Servidor>(std::move(fila), config.fila, relogio, relato,
                                               [&] { return validade.dias(); });
    if (!servidor->comecar(config.portaDaPagina, recusas)) return dizer(recusas.texto()), nullptr;
    dizer("página em http://127.0.0.1:" + std::to_string(servidor->porta()) + "/");
    return servidor;
}

// Says what somebody has to do, once, until the signal comes that ends the service.
void vigiar(Fila &fila, const Configuracao &config, const Relogio &relogio, Oficina &oficina,
            Validade &validade, const sigset_t &sinais) {
    std::set<std::string> ditos;
    LeitorDoQuadro leitor(fila, config.fila);
    int sinal = 0;
    do {
        if (sinal == SIGHUP) oficina.renovar(oficina.geracao());
        if (fila.anotado(kAnotacaoParada).empty()) validade.ver(oficina);
        std::set<std::string> agora;
        for (const Aviso &aviso : avisosDe(leitor.ler(relogio.agora(), validade.dias())))
            if (agora.insert(aviso.titulo).second && !ditos.contains(aviso.titulo))
                dizer("precisa de alguém: " + aviso.titulo);
        ditos.swap(agora);
        sinal = sigtimedwait(&sinais, nullptr, &kVistoria);
    } while (sinal < 0 || sinal == SIGHUP);
}

int servir(const std::string &arquivo) {
    const sigset_t sinais = segurarSinais();
    Recusas recusas;
    const auto aberta = Configuracao::abrir(arquivo, recusas);
    if (!aberta) return recusar(recusas);
    const Configuracao &config = *aberta;
    Oficina oficina(config, std::clamp(std::thread::hardware_concurrency(), 1U, 4U));
    const bool assina = conferirCertificado(oficina, recusas);
    auto fila = Fila::abrir(filaDe(config), recusas);
    if (!fila) return recusar(recusas);
    if (assina)
        continuar(*fila);
    else
        fila->anotar(kAnotacaoParada, recusas.texto()), dizer("envio parado: " + recusas.texto());
    Linha linha(config.fila.porMinuto);
    const Relogio relogio;
    Relato relato(dizer);
    Validade validade;
    const auto confianca = std::make_shared<Confianca>(config.rede.autoridades);
    ServicoDeEnvio servico(
        config, oficina, linha, relogio,
        [&] {
            Recusas ditas;
            return std::make_unique<Rede>(confianca, oficina.certificado(ditas));
        },
        relato);
    if (!servico.comecar(recusas)) return recusar(recusas);
    dizer("zel-envio: " + std::to_string(config.caixas.size()) +
          (config.caixas.size() == 1 ? " caixa" : " caixas"));
    const auto pagina = abrirPagina(config, relogio, relato, validade);
    vigiar(*fila, config, relogio, oficina, validade, sinais);
    dizer("zel-envio: encerrando");
    servico.parar();
    return 0;
}

int conferir(const std::string &arquivo) {
    Recusas recusas;
    const auto config = Configuracao::abrir(arquivo, recusas);
    if (!config) return recusar(recusas);
    Oficina oficina(*config, 1);
    const bool assina = conferirCertificado(oficina, recusas);
    const bool guarda = Fila::abrir(filaDe(*config), recusas) != nullptr;
    if (!assina || !guarda) return recusar(recusas);
    dizer("configuração conferida");
    return 0;
}

} // namespace

int main(int quantas, char **palavras) {
    // A worker a till, which mostly waits: an arena each would be memory that nobody uses.
    mallopt(M_ARENA_MAX, kArenas);
    const auto opcoes = lerOpcoes(quantas, palavras);
    if (!opcoes || opcoes->ajuda) {
        std::fwrite(kUso.data(), 1, kUso.size(), opcoes ? stdout : stderr);
        return opcoes ? 0 : kUsoErrado;
    }
    if (opcoes->versao) {
        std::puts("zel-envio " ZEL_ENVIO_VERSAO);
        return 0;
    }
    return opcoes->conferir ? conferir(opcoes->config) : servir(opcoes->config);
}
