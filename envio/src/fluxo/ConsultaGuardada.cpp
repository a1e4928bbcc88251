// SPDX-License-Identifier: MIT
#include "fluxo/ConsultaGuardada.h"

#include "base/Texto.h"
#include "base/Xml.h"
#include "comum/Arquivo.h"
#include "fluxo/Entrega.h"

#include <algorithm>
#include <charconv>
#include <ctime>
#include <iterator>
#include <sys/stat.h>

namespace zel::envio {

namespace {

constexpr std::int64_t kMaisNumeros = 1000;
constexpr int kMaisDias = 31;

std::int64_t inteiro(const std::string &texto) {
    std::int64_t numero = 0;
    std::from_chars(texto.data(), texto.data() + texto.size(), numero);
    return numero;
}

// "DDMMAAAA", "DD/MM/AAAA" or "AAAA-MM-DD", as the application gave it.
std::string diaDe(const std::string &texto) {
    std::string digitos;
    std::copy_if(texto.begin(), texto.end(), std::back_inserter(digitos),
                 [](char c) { return c >= '0' && c <= '9'; });
    if (digitos.size() != 8) return {};
    if (texto.size() > 4 && texto[4] == '-') return texto.substr(0, 10);
    return digitos.substr(4) + "-" + digitos.substr(2, 2) + "-" + digitos.substr(0, 2);
}

std::string diaSeguinte(const std::string &dia) {
    std::tm partes{};
    partes.tm_year = static_cast<int>(inteiro(dia.substr(0, 4))) - 1900;
    partes.tm_mon = static_cast<int>(inteiro(dia.substr(5, 2))) - 1;
    partes.tm_mday = static_cast<int>(inteiro(dia.substr(8, 2))) + 1;
    const std::time_t quando = timegm(&partes);
    char texto[11];
    gmtime_r(&quando, &partes);
    return {texto, std::strftime(texto, sizeof texto, "%Y-%m-%d", &partes)};
}

std::vector<Ficha> porDatas(Fila &fila, const No &consulta, const std::string &caixa) {
    std::vector<Ficha> fichas;
    std::string dia = diaDe(consulta.texto("DataEmissaoInicial"));
    const std::string ultimo = diaDe(consulta.texto("DataEmissaoFinal"));
    for (int i = 0; i < kMaisDias && ehData(dia) && dia <= ultimo; ++i) {
        Procura procura;
        procura.caixa = caixa;
        procura.dia = dia;
        for (auto &ficha : fila.procurar(procura))
            if (ficha.tipo == Tipo::kNfce) fichas.push_back(std::move(ficha));
        dia = diaSeguinte(dia);
    }
    return fichas;
}

std::vector<Ficha> porNumeros(Fila &fila, const No &consulta, const Ficha &ficha) {
    const std::int64_t primeiro = inteiro(consulta.texto("NumeroInicial")),
                       ultimo = inteiro(consulta.texto("NumeroFinal"));
    const int serie = static_cast<int>(inteiro(consulta.texto("Serie")));
    std::vector<Ficha> fichas;
    for (std::int64_t n = primeiro; n > 0 && n <= std::min(ultimo, primeiro + kMaisNumeros); ++n)
        for (auto &uma : fila.porNumero(consulta.texto("CnpjEmissor"), ficha.tpAmb, serie, n))
            fichas.push_back(std::move(uma));
    return fichas;
}

} // namespace

bool responderDoGuardado(const Configuracao &config, Fila &fila, const Ficha &ficha) {
    std::string motivo;
    const auto lida = Documento::ler(fila.original(ficha.id), motivo);
    const No consulta = lida ? lida->raiz() : No();
    const bool porData = !diaDe(consulta.texto("DataEmissaoInicial")).empty();
    const auto fichas =
        porData ? porDatas(fila, consulta, ficha.caixa) : porNumeros(fila, consulta, ficha);
    Documento retorno = Documento::novo("Retorno", {});
    No raiz = retorno.raiz();
    raiz.acrescentar("SitCodigo", fichas.empty() ? "217" : "100");
    raiz.acrescentar("SitDescricao",
                     std::to_string(fichas.size()) + " documentos, do que foi guardado aqui");
    for (const Ficha &uma : fichas) {
        No documento = raiz.acrescentar("Documento");
        documento.acrescentar("DocNumero", std::to_string(uma.numero));
        documento.acrescentar("SitCodigo", std::to_string(uma.cStat));
        documento.acrescentar("DocChaAcesso", uma.chave);
        documento.acrescentar("DocProtocolo", uma.protocolo);
    }
    const std::string pasta = retornosDe(config, ficha.caixa);
    mkdir(pasta.c_str(), 0777);
    return comum::substituirArquivo(pasta + nomeDoRetorno(ficha), retorno.texto());
}

} // namespace zel::envio
