// SPDX-License-Identifier: MIT
#include "guarda/Guarda.h"

#include "base/Texto.h"
#include "comum/Arquivo.h"
#include "comum/ChaveAcesso.h"
#include "guarda/Motivo.h"

#include <array>
#include <sys/types.h>

namespace zel::envio {

namespace {

constexpr mode_t kDiretorio = 0750, kArquivo = 0440;
constexpr int kMaisVersoes = 99; // of one document, each with other bytes
constexpr std::string_view kDeclaracao = R"(<?xml version="1.0" encoding="UTF-8"?>)";
constexpr std::size_t kDigitosInut = 41; // cUF, year, issuer, model, series, first, last number

// "CNPJ/AAAA/MM/" of an issuer and "AAAA-MM"; empty when it is no month.
std::string pastaDe(std::string_view cnpj, const std::string &mes) {
    if (!ehData(mes + "-01")) return {};
    return std::string(cnpj) + '/' + mes.substr(0, 4) + '/' + mes.substr(5) + '/';
}

// Directory and beginning of the name of what is kept of a document; empty when its key is none.
// Keys are looked at here: what is more than digits might lead elsewhere.
std::string inicioDe(const Ficha &ficha) {
    std::string pasta;
    if (const auto chave = ChaveAcesso::ler(ficha.chave)) {
        const std::string aamm(chave->parte(ChaveAcesso::Parte::kAAMM));
        pasta = pastaDe(chave->parte(ChaveAcesso::Parte::kCNPJ),
                        "20" + aamm.substr(0, 2) + '-' + aamm.substr(2));
    } else if (ficha.chave.starts_with("ID") && ficha.chave.size() == 2 + kDigitosInut &&
               soDigitos(ficha.chave.substr(2))) {
        const std::string &data = ficha.dhEmi.empty() ? ficha.momentoResposta : ficha.dhEmi;
        pasta = pastaDe(std::string_view(ficha.chave).substr(6, 14), data.substr(0, 7));
    }
    return pasta.empty() ? pasta : pasta + ficha.chave;
}

// What a name ends with.
struct Especie {
    Tipo tipo;
    std::string_view raiz, fim; // of a name without its number and ".xml"
    std::string_view evento;    // its tpEvento; empty: the document itself
};

constexpr std::array<Especie, 4> kEspecies{{
    {Tipo::kNfce, "nfeProc", "-procNFe", ""},
    {Tipo::kCancelamento, "procEventoNFe", "-110111-procEventoNFe", "110111"},
    {Tipo::kCancelamento, "procEventoNFe", "-110112-procEventoNFe", "110112"},
    {Tipo::kInutilizacao, "ProcInutNFe", "-procInutNFe", ""}, // as the schema spells it
}};

std::string_view semDeclaracao(std::string_view xml) {
    if (xml.starts_with("<?xml")) xml.remove_prefix(std::min(xml.find("?>"), xml.size() - 2) + 2);
    return xml.substr(std::min(xml.find_first_not_of(" \t\r\n"), xml.size()));
}

const Especie *especieDe(std::string_view xml) {
    if (!xml.starts_with('<')) return nullptr;
    const std::string_view raiz = xml.substr(1, xml.find_first_of(" \t\r\n/>") - 1);
    for (const Especie &especie : kEspecies)
        if (especie.raiz == raiz &&
            (especie.evento.empty() ||
             xml.find("<tpEvento>" + std::string(especie.evento) + '<') != xml.npos))
            return &especie;
    return nullptr;
}

} // namespace

std::optional<std::string> Guarda::guardar(const Ficha &ficha, std::string_view conteudo,
                                           Recusas &recusas) {
    const auto recusar = [&](std::string_view valor, std::string_view motivo) {
        recusas.juntar("guarda", valor, motivo);
        return std::nullopt;
    };
    const std::string_view xml = semDeclaracao(conteudo);
    const std::string inicio = inicioDe(ficha);
    const Especie *especie = especieDe(xml);
    if (inicio.empty()) return recusar(ficha.chave, "não é a chave de um documento que se guarde");
    if (especie == nullptr)
        return recusar(ficha.chave, "não é nfeProc, procEventoNFe nem ProcInutNFe");
    const std::string base = diretorio_ + inicio + std::string(especie->fim);
    if (!comum::criarDiretorios(base.substr(0, base.rfind('/')), kDiretorio))
        return recusar(base, motivoDoDisco(errno));
    const std::string inteiro = std::string(kDeclaracao) + std::string(xml);
    for (int versao = 1; versao <= kMaisVersoes; ++versao) {
        const std::string arquivo =
            base + (versao == 1 ? "" : '-' + std::to_string(versao)) + ".xml";
        if (comum::criarArquivo(arquivo, inteiro, kArquivo)) {
            if (versao > 1)
                recusas.juntar("guarda", arquivo,
                               "já havia outro arquivo deste documento, com outros bytes: os dois "
                               "ficaram; mostre-os ao contador");
            return arquivo;
        }
        if (errno != EEXIST) return recusar(arquivo, motivoDoDisco(errno));
        if (comum::lerArquivo(arquivo, inteiro.size()) == inteiro) return arquivo;
    }
    return recusar(base, "há versões demais deste documento: veja por que mudam");
}

std::string Guarda::lugarDe(const Ficha &ficha) const {
    const std::string inicio = inicioDe(ficha);
    if (inicio.empty()) return {};
    for (const Especie &especie : kEspecies) {
        std::string arquivo = diretorio_ + inicio + std::string(especie.fim) + ".xml";
        if (especie.tipo == ficha.tipo && comum::ehArquivo(arquivo)) return arquivo;
    }
    return {};
}

} // namespace zel::envio
