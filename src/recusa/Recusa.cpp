// SPDX-License-Identifier: MIT
#include "recusa/Recusa.h"

#include "recusa/ErroDoSistema.h"
#include "recusa/Estado.h"
#include "recusa/Mascara.h"
#include "texto/Campo.h"
#include "texto/Numero.h"

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
         return "estado " +
                std::string(kNomesDosEstados[estado < kNomesDosEstados.size() ? estado : 0]);
     }},
    {"depois",
     [] {
         return std::string(recusa.detalhe.estado < kEncerrado // nor cancelled
                                ? ""
                                : ", já terminou: abra outro com aCFAbrir_ZEL");
     }},
}};

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
