// SPDX-License-Identifier: MIT
#include "config/Classes.h"

#include "base/Texto.h"
#include "config/Regras.h"

#include <algorithm>
#include <array>

namespace zel::envio {

namespace {

constexpr std::string_view kCstPleno = "000", kClassePlena = "000001";
// The published table has less than 200; each of them is looked for in all.
constexpr std::size_t kMaisClasses = 2000;

using Colunas = std::array<std::string, 3>;

// False when there are not three of them.
bool separar(std::string_view linha, Colunas &colunas) {
    if (std::count(linha.begin(), linha.end(), ';') != 2) return false;
    for (auto &coluna : colunas) {
        const std::size_t fim = std::min(linha.find(';'), linha.size());
        coluna = aparar(linha.substr(0, fim));
        linha.remove_prefix(std::min(fim + 1, linha.size()));
    }
    return true;
}

const ClasseTributaria *procurar(const Configuracao &config, std::string_view cClassTrib) {
    const auto &classes = config.ibsCbs.classes;
    const auto achada =
        std::find_if(classes.begin(), classes.end(), [&](const ClasseTributaria &classe) {
            return classe.cClassTrib == cClassTrib;
        });
    return achada == classes.end() ? nullptr : &*achada;
}

// Empty when the line was taken.
std::string_view lerClasse(Colunas &colunas, Configuracao &config) {
    auto &[CST, classe, reducao] = colunas;
    if (!classeDoCst(CST, classe))
        return "são o CST (3 dígitos) e a classe (6 dígitos, que começam pelo CST)";
    if (procurar(config, classe) != nullptr) return "a classe já está na tabela";
    if (config.ibsCbs.classes.size() == kMaisClasses) return "são classes demais";
    if (reducao == "-") {
        config.ibsCbs.classes.push_back({CST, classe, {}, true});
        return {};
    }
    std::replace(reducao.begin(), reducao.end(), ',', '.');
    const auto porCento = Decimal::ler(reducao);
    if (!porCento || !porcento(reducao) || porCento->porCentoDe(1000000) > 1000000)
        return "a redução é de 0 a 100, com até 4 casas, ou \"-\" para uma classe sem valores";
    config.ibsCbs.classes.push_back({CST, classe, *porCento, false});
    return {};
}

std::string_view lerProduto(const Colunas &colunas, Configuracao &config) {
    const auto &[tipo, codigo, classe] = colunas;
    const bool porNcm = tipo == "ncm";
    if (porNcm ? !digitos<2, 8>(codigo) : !ehTexto(codigo, 1, 60))
        return porNcm ? "o NCM tem de 2 a 8 dígitos" : "o código tem de 1 a 60 caracteres";
    if (!digitos<6>(classe)) return "a classe tem 6 dígitos";
    ConfigProduto &produto = (porNcm ? config.ncm : config.produtos)[codigo];
    if (!produto.cClassTrib.empty()) return "já tem uma classe";
    produto.CST = classe.substr(0, 3);
    produto.cClassTrib = classe;
    return {};
}

} // namespace

void lerClasses(std::string_view csv, std::string_view arquivo, Configuracao &config,
                Recusas &recusas) {
    if (csv.starts_with("\xEF\xBB\xBF")) csv.remove_prefix(3);
    for (int numero = 1; !csv.empty() && !recusas.cheias(); ++numero) {
        const std::size_t fim = std::min(csv.find('\n'), csv.size());
        const std::string linha = aparar(csv.substr(0, fim));
        csv.remove_prefix(std::min(fim + 1, csv.size()));
        if (linha.empty() || linha.front() == '#' || linha.starts_with("CST;")) continue;
        Colunas colunas;
        std::string_view motivo = "são três colunas, separadas por \";\"";
        if (separar(linha, colunas))
            motivo = colunas[0] == "ncm" || colunas[0] == "produto" ? lerProduto(colunas, config)
                                                                    : lerClasse(colunas, config);
        if (!motivo.empty())
            recusas.juntar(std::string(arquivo) + ", linha " + std::to_string(numero), "", motivo);
    }
    if (recusas.cheias()) recusas.juntar(arquivo, "", "há mais recusas do que estas");
}

void conferirClasses(Configuracao &config, Recusas &recusas) {
    if (procurar(config, kClassePlena) == nullptr)
        config.ibsCbs.classes.push_back(
            {std::string(kCstPleno), std::string(kClassePlena), {}, false});
    const auto conferir = [&](const std::string &onde, const std::string &classe) {
        if (!classe.empty() && !recusas.cheias() && procurar(config, classe) == nullptr)
            recusas.juntar("zel-envio.toml, " + onde, classe,
                           "a classe não está na tabela que [ibs_cbs] classes nomeia");
    };
    conferir("[ibs_cbs]", config.ibsCbs.cClassTrib);
    conferir("[padrao]", config.padrao.cClassTrib);
    for (const auto &[codigo, produto] : config.produtos)
        conferir("[produtos.\"" + codigo + "\"]", produto.cClassTrib);
    for (const auto &[codigo, produto] : config.ncm)
        conferir("[ncm.\"" + codigo + "\"]", produto.cClassTrib);
}

bool classeDoCst(std::string_view CST, std::string_view cClassTrib) {
    return digitos<3>(CST) && digitos<6>(cClassTrib) && cClassTrib.starts_with(CST);
}

} // namespace zel::envio
