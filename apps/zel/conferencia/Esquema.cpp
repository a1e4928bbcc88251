// SPDX-License-Identifier: MIT
#include "conferencia/Esquema.h"

#include "leitura/Arquivos.h"
#include "leitura/Texto.h"
#include "leitura/Xml.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <iterator>
#include <map>
#include <optional>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

namespace zel::aplicativo {

namespace {

constexpr std::size_t kMaximoSaida = 1U << 20;
constexpr int kProgramaAusente = 127;

// Elements whose value may be a person's.
constexpr std::string_view kPessoais[] = {
    "CPF",  "CNPJ", "idEstrangeiro", "xNome", "xLgr",   "nro",    "xCpl",       "xBairro",
    "xMun", "CEP",  "fone",          "email", "xEnder", "infCpl", "infAdFisco", "qrCode"};

// What the schema of a root is called.
struct Esquema {
    std::string_view raiz, arquivo;
};
constexpr Esquema kEsquemas[] = {
    {"NFe", "nfe_v3.10.xsd"}, {"nfeProc", "procNFe_v3.10.xsd"}, {"enviNFe", "enviNFe_v3.10.xsd"}};

struct Saida {
    int codigo = kProgramaAusente;
    std::string mensagens;
};

// The document in memory, as a file to read from its beginning; -1 when memory is short.
int emMemoria(std::string_view bytes) {
    const int fd = ::memfd_create("documento", MFD_CLOEXEC);
    if (fd < 0) return fd;
    while (!bytes.empty()) {
        const ssize_t escritos = ::write(fd, bytes.data(), bytes.size());
        if (escritos < 0 && errno == EINTR) continue;
        if (escritos <= 0) break;
        bytes.remove_prefix(static_cast<std::size_t>(escritos));
    }
    ::lseek(fd, 0, SEEK_SET);
    return fd;
}

std::string lerTudo(int fd) {
    std::string texto;
    std::array<char, 4096> bloco;
    for (;;) {
        const ssize_t lidos = ::read(fd, bloco.data(), bloco.size());
        if (lidos < 0 && errno == EINTR) continue;
        if (lidos <= 0) return texto;
        // The rest is read too, so that the program comes to its end.
        if (texto.size() < kMaximoSaida)
            texto.append(bloco.data(), static_cast<std::size_t>(lidos));
    }
}

Saida rodarXmllint(std::string_view bytes, const std::string &esquema) {
    Saida saida;
    const int entrada = emMemoria(bytes);
    std::array<int, 2> cano{-1, -1};
    if (entrada < 0 || ::pipe2(cano.data(), O_CLOEXEC) != 0) return saida;
    posix_spawn_file_actions_t acoes;
    ::posix_spawn_file_actions_init(&acoes);
    ::posix_spawn_file_actions_adddup2(&acoes, entrada, STDIN_FILENO);
    ::posix_spawn_file_actions_addopen(&acoes, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    ::posix_spawn_file_actions_adddup2(&acoes, cano[1], STDERR_FILENO);
    std::array<std::string, 6> textos{"xmllint", "--noout", "--nonet", "--schema", esquema, "-"};
    std::array<char *, 7> argumentos{};
    std::transform(textos.begin(), textos.end(), argumentos.begin(),
                   [](std::string &texto) { return texto.data(); });
    pid_t processo = 0;
    const int erro =
        ::posix_spawnp(&processo, "xmllint", &acoes, nullptr, argumentos.data(), environ);
    ::posix_spawn_file_actions_destroy(&acoes);
    ::close(cano[1]);
    ::close(entrada);
    if (erro == 0) {
        saida.mensagens = lerTudo(cano[0]);
        int estado = 0;
        while (::waitpid(processo, &estado, 0) < 0 && errno == EINTR) {
        }
        saida.codigo = WIFEXITED(estado) ? WEXITSTATUS(estado) : kProgramaAusente;
    }
    ::close(cano[0]);
    return saida;
}

// "-:3: element cEAN: Schemas validity error : Element '{...}cEAN': what is wrong"
struct Mensagem {
    std::string elemento;
    std::string texto;
    auto operator<=>(const Mensagem &) const = default;
};

std::optional<Mensagem> lerMensagem(std::string_view linha) {
    constexpr std::string_view kErro = ": Schemas validity error : ";
    constexpr std::string_view kElemento = "element ";
    const std::size_t erro = linha.find(kErro);
    const std::size_t elemento = linha.find(kElemento);
    if (erro == linha.npos || elemento == linha.npos || elemento > erro) return {};
    const std::size_t comeco = elemento + kElemento.size();
    Mensagem mensagem{std::string(linha.substr(comeco, erro - comeco)),
                      std::string(linha.substr(erro + kErro.size()))};
    mensagem.texto = trocar(mensagem.texto, "{http://www.portalfiscal.inf.br/nfe}", "");
    mensagem.texto = trocar(mensagem.texto, "{http://www.w3.org/2000/09/xmldsig#}", "");
    mensagem.texto = trocar(mensagem.texto, juntar({"Element '", mensagem.elemento, "': "}), "");
    return mensagem;
}

// What is said about a value quotes it: of that only the broken facet is kept.
void ocultar(Mensagem &mensagem) {
    if (std::ranges::find(kPessoais, mensagem.elemento) == std::end(kPessoais) ||
        mensagem.texto.find("value") == std::string::npos)
        return;
    const std::size_t abre = mensagem.texto.find("[facet");
    const std::size_t fecha = mensagem.texto.find(']', abre);
    const std::string faceta = abre < fecha && fecha != std::string::npos
                                   ? mensagem.texto.substr(abre, fecha + 1 - abre)
                                   : "";
    mensagem.texto = juntar({"o valor (oculto) ", faceta});
}

// Of an item without a bar code, as every document has it on its way to the sending component.
bool ehGtinEmBranco(const Mensagem &mensagem) {
    return mensagem.elemento.starts_with("cEAN") && mensagem.texto.find("' '") != std::string::npos;
}

// The same fault in many items is one finding. A document that only lacks its signature is one that
// is not signed yet, which is said elsewhere.
void relatar(const std::string &mensagens, Relatorio &relatorio) {
    std::map<Mensagem, std::size_t> contadas;
    for (const std::string_view linha : dividir(mensagens, '\n')) {
        auto mensagem = lerMensagem(linha);
        if (!mensagem || (mensagem->elemento == "NFe" &&
                          mensagem->texto.find("Missing child") != std::string::npos))
            continue;
        ocultar(*mensagem);
        ++contadas[*mensagem];
    }
    for (const auto &[mensagem, vezes] : contadas) {
        const bool emBranco = ehGtinEmBranco(mensagem);
        relatorio.registrar(
            {"esquema", mensagem.elemento, 0,
             juntar({"o esquema recusa: ", mensagem.texto,
                     vezes > 1 ? juntar({" (", std::to_string(vezes), " vezes)"}) : ""}),
             emBranco
                 ? "A venda sem código de barras grava um branco; o componente de envio o retira."
                 : "Corrija o valor na configuração ou no programa do caixa."},
            emBranco ? Gravidade::kNota : Gravidade::kErro);
    }
}

} // namespace

void conferirEsquema(std::string_view bytes, std::string_view raiz, const std::string &pasta,
                     Relatorio &relatorio) {
    const auto esquema = std::ranges::find(kEsquemas, raiz, &Esquema::raiz);
    const std::string arquivo = juntar(
        {pasta, "/", esquema != std::end(kEsquemas) ? esquema->arquivo : kEsquemas[0].arquivo});
    const auto indisponivel = [&](std::string texto, std::string remedio) {
        relatorio.registrar(
            {"esquema-indisponivel", arquivo, 0, std::move(texto), std::move(remedio)});
    };
    if (olhar(arquivo).tipo != TipoArquivo::kRegular)
        return indisponivel("o arquivo não existe",
                            "Dê a --esquema a pasta com os arquivos .xsd do leiaute 3.10.");
    // Without a declaration XML is UTF-8; the library writes ISO-8859-1.
    const std::string declaracao = !bytes.starts_with("<?xml") && !ehXmlUtf8(bytes)
                                       ? R"(<?xml version="1.0" encoding="ISO-8859-1"?>)"
                                       : "";
    const Saida saida = rodarXmllint(declaracao + std::string(bytes), arquivo);
    constexpr int kNaoValida = 3;
    if (saida.codigo == kProgramaAusente)
        return indisponivel("o programa xmllint não foi encontrado",
                            "Instale-o: apt-get install libxml2-utils");
    if (saida.codigo != 0 && saida.codigo != kNaoValida)
        return indisponivel("o xmllint não pôde usar o esquema",
                            juntar({"Veja com: xmllint --noout --schema ", arquivo, " DOCUMENTO"}));
    relatar(saida.mensagens, relatorio);
}

} // namespace zel::aplicativo
