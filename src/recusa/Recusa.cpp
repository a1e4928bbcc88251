// SPDX-License-Identifier: MIT
#include "recusa/Recusa.h"

#include "comum/EstadoDoCupom.h"
#include "recusa/Mascara.h"
#include "texto/Campo.h"
#include "texto/Numero.h"

#include <algorithm>
#include <array>
#include <cerrno>

namespace zel {

namespace {

constexpr std::size_t kMaiorNome = 100;
constexpr std::size_t kMaiorCaminho = 300;

// The reason of the call under way. Fields, so that keeping one needs no memory.
struct Recusa {
    bool anotar = false;
    Motivo motivo = Motivo::kNenhum;
    Detalhe detalhe; // its views are the fields below
    Campo<kMaiorNome> campo;
    Campo<kMaiorDado + 1> dado; // one more, to know that it was cut
    Campo<kMaiorCaminho> lugar;
    std::size_t tamanhoDoDado = 0;
    bool dadoNulo = false;

    Campo<kMaiorCaminho> arquivo;
    int erro = 0;
    CaminhoNoDiretorio noDiretorio = nullptr; // while the text is made
};

Recusa recusa;

struct LinhaErro {
    int erro;
    std::string_view nome, texto;
};

constexpr std::array<LinhaErro, 28> kErros{{
    {kNaoEhArquivo, "", "não é um arquivo comum"},
    {0, "", "o sistema não disse por quê"},
    {EACCES, "EACCES", "permissão negada"},
    {EPERM, "EPERM", "operação não permitida"},
    {ENOENT, "ENOENT", "o arquivo ou o diretório não existe"},
    {ENOTDIR, "ENOTDIR", "uma parte do caminho não é um diretório"},
    {EISDIR, "EISDIR", "é um diretório"},
    {EEXIST, "EEXIST", "já existe"},
    {ENOSPC, "ENOSPC", "o disco está cheio"},
    {EDQUOT, "EDQUOT", "a cota de disco do usuário acabou"},
    {EFBIG, "EFBIG", "o arquivo passaria do tamanho permitido"},
    {EROFS, "EROFS", "o sistema de arquivos só permite leitura"},
    {EIO, "EIO", "erro de leitura ou gravação no disco"},
    {EMFILE, "EMFILE", "o processo tem arquivos abertos demais"},
    {ENFILE, "ENFILE", "o sistema tem arquivos abertos demais"},
    {ENOMEM, "ENOMEM", "falta memória"},
    {ELOOP, "ELOOP", "é uma ligação simbólica, que aqui não se segue"},
    {ENAMETOOLONG, "ENAMETOOLONG", "o caminho é longo demais"},
    {EBUSY, "EBUSY", "está em uso"},
    {EAGAIN, "EAGAIN", "está em uso por outro processo"},
    {ETXTBSY, "ETXTBSY", "é um programa em execução"},
    {ENXIO, "ENXIO", "ninguém lê do outro lado"},
    {ENODEV, "ENODEV", "o dispositivo não existe"},
    {ESTALE, "ESTALE", "o servidor de arquivos perdeu o arquivo"},
    {ENOLCK, "ENOLCK", "o sistema de arquivos não tem travas"},
    {EINTR, "EINTR", "a operação foi interrompida"},
    {EXDEV, "EXDEV", "está em outro sistema de arquivos"},
    {EINVAL, "EINVAL", "o sistema de arquivos não aceita a operação"},
}};

// Where the application gives what stands in an element.
struct OrigemDoElemento {
    std::string_view elemento, origem;
};
constexpr std::array<OrigemDoElemento, 14> kOrigens{{
    {"xProd", "descricao"},
    {"cProd", "codigo"},
    {"NCM", R"(ncm, ou PROD\NCM)"},
    {"CFOP", R"(cfop, ou PROD\CFOP)"},
    {"uCom", "unidade"},
    {"uTrib", "unidade"},
    {"qCom", "quantidade"},
    {"vUnCom", "valorUnitario"},
    {"vUnTrib", "valorUnitario"},
    {"indTot", R"(PROD\indTot)"},
    {"xNome", "nome"},
    {"xMun", "municipio"},
    {"CEP", "cep"},
    {"vPag", "valor"},
}};

std::string campo() {
    const std::string_view nome = recusa.campo;
    std::string texto = emUmaLinha(nome);
    for (const OrigemDoElemento &linha : kOrigens)
        if (linha.elemento == nome) texto.append(" (").append(linha.origem).append(")");
    return texto;
}

std::string caracteres(long long quantos) {
    return formatarInteiro(quantos) + (quantos == 1 ? " caractere" : " caracteres");
}

std::string limites() {
    const auto [minimo, maximo] = std::pair(recusa.detalhe.minimo, recusa.detalhe.maximo);
    if (minimo == maximo) return "exatamente " + caracteres(maximo);
    if (minimo == 0) return "até " + caracteres(maximo);
    return "de " + formatarInteiro(minimo) + " a " + caracteres(maximo);
}

std::string dado() {
    if (recusa.dadoNulo) return "nulo";
    return mostrarDado(recusa.campo, recusa.dado, recusa.tamanhoDoDado);
}

std::string falha() {
    if (recusa.arquivo.vazio()) return "um arquivo do diretório de dados não pôde ser usado";
    // A name alone stands in the data directory.
    const std::string_view arquivo = recusa.arquivo;
    const bool completo = arquivo.find('/') != arquivo.npos;
    return "não foi possível ler ou gravar " +
           caminhoEmUmaLinha((completo ? "" : recusa.noDiretorio("")) + std::string(arquivo)) +
           ": " + textoDoErro(recusa.erro);
}

struct Lugar {
    std::string_view nome;
    std::string (*texto)();
};
constexpr std::array<Lugar, 14> kLugares{{
    {"campo", campo},
    {"dado", dado},
    {"limites", limites},
    {"falha", falha},
    {"diretorio", [] { return caminhoEmUmaLinha(recusa.noDiretorio("")); }},
    {"tamanho",
     [] {
         const long long dado = recusa.detalhe.tamanho;
         return caracteres(dado >= 0 ? dado : static_cast<long long>(recusa.tamanhoDoDado));
     }},
    {"lugar", [] { return caminhoEmUmaLinha(recusa.lugar); }},
    {"numero", [] { return formatarInteiro(recusa.detalhe.numero); }},
    {"maximo", [] { return formatarInteiro(recusa.detalhe.maximo); }},
    {"itens",
     [] {
         const int quantos = recusa.detalhe.maximo;
         return formatarInteiro(quantos) + (quantos == 1 ? " item" : " itens");
     }},
    {"quantia", [] { return formatarDecimal(recusa.detalhe.quantia, 2); }},
    {"limite", [] { return formatarDecimal(recusa.detalhe.limite, 2); }},
    {"estado",
     [] {
         const auto estado = static_cast<std::size_t>(recusa.detalhe.estado);
         const std::size_t qual = estado < kNomesDosEstados.size() ? estado : 0;
         return "estado " + formatarInteiro(static_cast<long long>(qual)) + " (" +
                std::string(kNomesDosEstados[qual]) + ")";
     }},
    {"depois",
     [] {
         return std::string(recusa.detalhe.estado < kEncerrado // nor cancelled
                                ? ""
                                : ", já terminou: abra outro com aCFAbrir_ZEL");
     }},
}};

// Every place in a reason's text is one of these.
constexpr bool conheceOsLugares(std::string_view molde) {
    for (std::size_t abre; (abre = molde.find('{')) != molde.npos;) {
        const std::size_t fecha = molde.find('}', abre);
        if (fecha == molde.npos) return false;
        const std::string_view nome = molde.substr(abre + 1, fecha - abre - 1);
        if (std::none_of(kLugares.begin(), kLugares.end(),
                         [=](const Lugar &lugar) { return lugar.nome == nome; }))
            return false;
        molde.remove_prefix(fecha + 1);
    }
    return true;
}
static_assert(std::all_of(kMotivos.begin(), kMotivos.end(),
                          [](const LinhaMotivo &linha) { return conheceOsLugares(linha.texto); }));

std::string preencher(std::string_view molde) {
    std::string texto;
    for (std::size_t abre; (abre = molde.find('{')) != molde.npos;) {
        const std::size_t fecha = molde.find('}', abre);
        const std::string_view nome = molde.substr(abre + 1, fecha - abre - 1);
        texto.append(molde.substr(0, abre));
        for (const Lugar &lugar : kLugares)
            if (lugar.nome == nome) texto += lugar.texto();
        molde.remove_prefix(fecha + 1);
    }
    return texto.append(molde);
}

} // namespace

int recusar(Motivo motivo, const Detalhe &detalhe) noexcept {
    if (recusa.anotar) {
        recusa.motivo = motivo;
        recusa.detalhe = detalhe;
        recusa.campo = detalhe.campo;
        recusa.dado = detalhe.dado;
        recusa.lugar = detalhe.lugar;
        recusa.tamanhoDoDado = detalhe.dado.size();
        recusa.dadoNulo = detalhe.dado.data() == nullptr;
        recusa.detalhe.campo = recusa.detalhe.dado = recusa.detalhe.lugar = {};
    }
    return linhaDo(motivo).codigo;
}

bool falhouArquivo(std::string_view caminho) noexcept {
    if (!recusa.anotar) return false;
    recusa.arquivo = caminho;
    recusa.erro = errno;
    return false;
}

bool naoEhArquivo(std::string_view caminho) noexcept {
    if (!recusa.anotar) return false;
    recusa.arquivo = caminho;
    recusa.erro = kNaoEhArquivo;
    return false;
}

std::string textoDoErro(int erro) {
    for (const LinhaErro &linha : kErros) {
        if (linha.erro != erro) continue;
        std::string texto(linha.texto);
        return linha.nome.empty() ? texto : texto.append(" (").append(linha.nome).append(")");
    }
    return "erro " + formatarInteiro(erro) + " do sistema";
}

void esquecerRecusa(bool anotar) noexcept {
    recusa.anotar = anotar;
    recusa.motivo = Motivo::kNenhum;
    recusa.arquivo.limpar();
}

std::optional<std::string> textoDaRecusa(int codigo, CaminhoNoDiretorio noDiretorio) {
    if (recusa.motivo == Motivo::kNenhum || linhaDo(recusa.motivo).codigo != codigo) return {};
    recusa.noDiretorio = noDiretorio;
    return preencher(linhaDo(recusa.motivo).texto);
}

} // namespace zel
