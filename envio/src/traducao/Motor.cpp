// SPDX-License-Identifier: MIT
#include "traducao/Motor.h"

#include "base/Texto.h"
#include "traducao/Regras.h"
#include "traducao/Somas.h"

#include <algorithm>
#include <vector>

namespace zel::envio {

namespace {

constexpr std::string_view kAquiMesmo = ".";

// Each name of "a|b" until one serves.
template <class Serve>
bool algumNome(std::string_view nomes, Serve serve) {
    while (!nomes.empty()) {
        const std::size_t fim = std::min(nomes.find('|'), nomes.size());
        if (serve(nomes.substr(0, fim))) return true;
        nomes.remove_prefix(std::min(fim + 1, nomes.size()));
    }
    return false;
}

std::string_view nomesAntigos(const Linha &linha) {
    return linha.origem.empty() || linha.origem == kAquiMesmo ? linha.nome : linha.origem;
}

// Whether one of "a|b/c" is or begins with that element.
bool tem(std::string_view nomes, std::string_view nome) {
    return algumNome(nomes, [&](std::string_view este) {
        const std::string_view primeiro = este.substr(0, este.find('/'));
        return primeiro == nome;
    });
}

// The row that takes an element of the till, or says that it goes.
const Linha *linhaDe(std::span<const Linha> linhas, std::string_view nome) {
    for (const Linha &linha : linhas) {
        if (linha.soltos) {
            if (const Linha *dentro = linhaDe(linha.filhos, nome)) return dentro;
        } else if (linha.origem == kAquiMesmo) {
            // Made here; of the till's at most what it repeats.
            for (const Linha &filho : linha.filhos)
                if (filho.repete > 0 && nomesAntigos(filho) == nome) return &filho;
        } else if (tem(nomesAntigos(linha), nome)) {
            return &linha;
        }
    }
    return nullptr;
}

std::string comChave(std::string motivo, const Lugar &lugar, const Linha &linha) {
    if (linha.chave.empty()) return motivo;
    std::string chave(linha.chave);
    if (const std::size_t grupo = chave.find('*'); grupo != chave.npos)
        chave.replace(grupo, 1, lugar.antigo ? lugar.antigo.nome() : lugar.linha->nome);
    motivo.append("; corrija ").append(chave);
    return chave.find('\\') == chave.npos ? motivo : motivo.append(" de ZEL_Framework.xml");
}

struct Valor {
    std::optional<std::string> texto;
    bool recusado = false;
};

Valor valorDe(const Lugar &lugar, const Linha &linha) {
    if (linha.regra != nullptr) {
        const std::size_t antes = lugar.contexto.recusas.lista().size();
        auto texto = linha.regra(lugar);
        return {std::move(texto), lugar.contexto.recusas.lista().size() != antes};
    }
    if (!linha.fixo.empty()) return {std::string(linha.fixo)};
    if (linha.produto != nullptr) return {lugar.item->produto.*linha.produto};
    if (!linha.soma.empty()) return {textoDe(somar(lugar.contexto.nova, linha.soma, linha.quais))};
    return {acharFilho(lugar.antigo, nomesAntigos(linha)).texto()};
}

void recusarFalta(const Lugar &lugar, const Linha &linha) {
    if (linha.produto != nullptr)
        recusar(lugar, linha.nome, "", faltaConfigurar(*lugar.item, linha.nome));
    else
        recusar(lugar, linha.nome, "", comChave("falta", lugar, linha));
}

void escreverFolha(const Lugar &lugar, const Linha &linha) {
    auto [valor, recusado] = valorDe(lugar, linha);
    if (recusado) return;
    const bool livre = valor && linha.formato.tipo == Tipo::kLivre && linha.regra != nullptr;
    if (!livre && (!valor || aparar(*valor).empty())) {
        if (linha.presenca == Presenca::kExigido) recusarFalta(lugar, linha);
        return;
    }
    const auto escrito = formatar(linha.formato, *valor);
    if (!escrito) {
        recusar(lugar, linha.nome, *valor, comChave(permitido(linha.formato), lugar, linha));
        return;
    }
    if (linha.presenca == Presenca::kSemZero && *escrito == "0.00") return;
    No(lugar.novo).acrescentar(linha.nome, *escrito);
}

void escreverSoltos(const Lugar &lugar, const Linha &linha) {
    const bool algum =
        linha.quando != nullptr ||
        std::any_of(linha.filhos.begin(), linha.filhos.end(), [&](const Linha &um) {
            return acharFilho(lugar.antigo, nomesAntigos(um)) && um.presenca != Presenca::kSai;
        });
    if (algum) escrever(lugar, linha.filhos);
}

void escreverUmGrupo(const Lugar &acima, const Linha &linha, const No &antigo) {
    const std::size_t antes = acima.contexto.recusas.lista().size();
    Lugar lugar{acima.contexto, &acima, &linha, antigo, No(acima.novo).acrescentar(linha.nome),
                acima.item};
    if (linha.origem != kAquiMesmo) recusarAlheios(lugar, linha.filhos);
    escrever(lugar, linha.filhos);
    if (linha.aoFim != nullptr) linha.aoFim(lugar);
    if (!lugar.novo.filhos().empty()) return;
    lugar.novo.remover();
    if (linha.presenca == Presenca::kExigido && acima.contexto.recusas.lista().size() == antes)
        recusar(acima, linha.nome, "", comChave("falta", acima, linha));
}

void escreverItem(const Lugar &acima, const Linha &linha, const No &antigo, int numero) {
    Item item{antigo, No(acima.novo).acrescentar(linha.nome), {}, false, numero, {}};
    Lugar lugar{acima.contexto, &acima, &linha, antigo, item.novo, &item};
    const std::size_t antes = acima.contexto.recusas.lista().size();
    abrirItem(lugar);
    recusarAlheios(lugar, linha.filhos);
    escrever(lugar, linha.filhos);
    if (acima.contexto.recusas.lista().size() != antes) acima.contexto.somasIncertas = true;
}

void escreverRepetidos(const Lugar &acima, const Linha &linha) {
    int numero = 0;
    for (const No &antigo : acima.antigo.filhos(nomesAntigos(linha))) {
        if (++numero > linha.repete) {
            recusar(acima, nomesAntigos(linha), "",
                    "o leiaute 4.00 tem no máximo " + std::to_string(linha.repete) +
                        ": venda o resto em outro cupom");
            acima.contexto.somasIncertas = true;
            return;
        }
        linha.item ? escreverItem(acima, linha, antigo, numero)
                   : escreverUmGrupo(acima, linha, antigo);
    }
    if (numero == 0 && linha.presenca == Presenca::kExigido)
        recusar(acima, nomesAntigos(linha), "", comChave("falta", acima, linha));
}

void escreverGrupo(const Lugar &acima, const Linha &linha) {
    const No antigo =
        linha.origem == kAquiMesmo ? acima.antigo : acharFilho(acima.antigo, nomesAntigos(linha));
    if (!antigo && linha.presenca != Presenca::kExigido && linha.quando == nullptr) return;
    escreverUmGrupo(acima, linha, antigo);
}

} // namespace

std::string caminhoDe(const Lugar &lugar, std::string_view nome) {
    std::string caminho;
    const bool feitoAqui = lugar.linha != nullptr && lugar.linha->origem == kAquiMesmo;
    if (lugar.antigo && !feitoAqui) {
        constexpr std::string_view kRaiz = "infNFe";
        caminho = lugar.antigo.caminho();
        const std::size_t raiz = caminho.rfind(kRaiz);
        if (raiz != caminho.npos)
            caminho.erase(0, std::min(caminho.size(), raiz + kRaiz.size() + 1));
    } else if (lugar.acima != nullptr) {
        caminho = caminhoDe(*lugar.acima, lugar.linha->nome);
    }
    if (!nome.empty()) caminho.append(caminho.empty() ? "" : "/").append(nome);
    return caminho;
}

std::nullopt_t recusar(const Lugar &lugar, std::string_view nome, std::string_view valor,
                       std::string_view motivo) {
    Recusas &recusas = lugar.contexto.recusas;
    if (recusas.cheias()) return std::nullopt;
    recusas.juntar(caminhoDe(lugar, nome), valor, motivo);
    if (recusas.cheias()) recusas.juntar("infNFe", "", "há mais recusas do que estas");
    return std::nullopt;
}

No acharFilho(const No &no, std::string_view nomes) {
    No achado;
    algumNome(nomes, [&](std::string_view nome) {
        achado = no.filho(nome);
        return static_cast<bool>(achado);
    });
    return achado;
}

Centavos centavosDe(const No &no) {
    const auto numero = no ? Decimal::ler(no.texto()) : std::nullopt;
    return numero ? numero->centavos().value_or(0) : 0;
}

void recusarAlheios(const Lugar &lugar, std::span<const Linha> linhas) {
    std::vector<const Linha *> vistas;
    for (const No &filho : lugar.antigo.filhos()) {
        if (lugar.contexto.recusas.cheias()) return;
        const Linha *linha = linhaDe(linhas, filho.nome());
        if (linha == nullptr) {
            recusar(
                lugar, filho.nome(), filho.texto(),
                "o caixa não escreve este elemento, e o leiaute 4.00 não o teria daqui: tire-o do "
                "que a aplicação dá");
        } else if (linha->repete == 0 && linha->presenca != Presenca::kSai) {
            if (std::find(vistas.begin(), vistas.end(), linha) != vistas.end())
                recusar(lugar, filho.nome(), filho.texto(), "está mais de uma vez: dê um só");
            vistas.push_back(linha);
            if (linha->filhos.empty() && !filho.filhos().empty())
                recusar(lugar, filho.nome(), filho.texto(),
                        "é um valor, e tem elementos dentro: corrija o que a aplicação dá");
        }
    }
}

void escrever(const Lugar &lugar, std::span<const Linha> linhas) {
    for (const Linha &linha : linhas) {
        if (linha.presenca == Presenca::kSai) continue;
        if (linha.quando != nullptr && !linha.quando(lugar)) continue;
        if (linha.soltos)
            escreverSoltos(lugar, linha);
        else if (linha.filhos.empty())
            escreverFolha(lugar, linha);
        else if (linha.repete > 0)
            escreverRepetidos(lugar, linha);
        else
            escreverGrupo(lugar, linha);
    }
}

} // namespace zel::envio
