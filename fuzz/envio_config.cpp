// SPDX-License-Identifier: MIT
// The shop's own files: zel-envio.toml, the accountant's table of classes, and the till's
// configuration, of which a first zel-envio.toml is made. The first byte chooses which. Files that
// a text names are kept out by the fence.
#include "Alvo.h"

#include "base/Xml.h"
#include "config/Classes.h"
#include "config/Configuracao.h"
#include "config/Primeira.h"

#include <set>
#include <string>

using namespace zel::envio;

namespace {

// What was refused is said, a line each, and can be shown anywhere.
void conferirRecusas(bool aceita, const Recusas &recusas) {
    exigir(aceita == recusas.nenhuma());
    const std::string texto = recusas.texto();
    exigir(ehUtf8(texto));
    exigir(static_cast<std::size_t>(std::count(texto.begin(), texto.end(), '\n') + 1) ==
           std::max(recusas.lista().size(), std::size_t{1}));
}

// What the translation relies on: each class once, and those that are named are there.
void conferirAsClasses(const Configuracao &config) {
    std::set<std::string> tabela;
    for (const auto &classe : config.ibsCbs.classes)
        exigir(classeDoCst(classe.CST, classe.cClassTrib) &&
               tabela.insert(classe.cClassTrib).second &&
               classe.reducao.porCentoDe(1000000) <= 1000000);
    const auto produto = [&](const ConfigProduto &um) {
        exigir(um.cClassTrib.empty()
                   ? um.CST.empty()
                   : um.cClassTrib.starts_with(um.CST) && tabela.contains(um.cClassTrib));
    };
    for (const auto &[codigo, um] : config.produtos)
        produto(um);
    for (const auto &[codigo, um] : config.ncm)
        produto(um);
    produto(config.padrao);
}

void lerToml(std::string_view bytes) {
    Recusas recusas;
    const auto config = Configuracao::ler(bytes, "", recusas);
    conferirRecusas(config.has_value(), recusas);
    if (!config) return;
    conferirAsClasses(*config);
    // It becomes part of a QR code's address.
    exigir(std::all_of(config->qrcode.endereco.begin(), config->qrcode.endereco.end(),
                       [](char c) { return c > ' ' && c < 0x7F; }));
}

std::string recusasDoCsv(const std::string &csv) {
    Configuracao config;
    Recusas recusas;
    lerClasses(csv, "classes.csv", config, recusas);
    conferirClasses(config, recusas);
    conferirRecusas(recusas.nenhuma(), recusas);
    if (recusas.nenhuma()) conferirAsClasses(config);
    return recusas.texto();
}

// The lines end as the accountant's program ends them.
void lerCsv(std::string_view bytes) {
    const std::string csv = ehUtf8(bytes) ? std::string(bytes) : utf8DeLatin1(bytes);
    std::string doWindows;
    for (const char c : csv)
        (doWindows += c == '\n' ? "\r" : "") += c;
    exigir(recusasDoCsv(csv) == recusasDoCsv(doWindows));
}

void fazerPrimeira(std::string_view bytes) {
    Recusas recusas;
    const auto texto = primeiraConfiguracao(bytes, recusas);
    conferirRecusas(texto.has_value(), recusas);
    if (texto) exigir(Configuracao::ler(*texto, "/etc/loja", recusas).has_value());
}

} // namespace

void jogar(std::string_view bytes) {
    switch (tirarNumero(bytes, 3)) {
    case 0:
        return lerToml(bytes);
    case 1:
        return lerCsv(bytes);
    default:
        fazerPrimeira(bytes);
    }
}
