// SPDX-License-Identifier: MIT
#include "guarda/Notas.h"

#include <algorithm>
#include <array>
#include <limits>
#include <map>
#include <tuple>

namespace zel::envio {

namespace {

constexpr std::string_view kMarca = "\xEF\xBB\xBF";
constexpr std::string_view kCabecalho =
    "cnpj;ambiente;serie;numero;ate;situacao;data;total;consumidor;protocolo;chave;motivo\r\n";
constexpr std::int64_t kMaiorFaixa = 1000; // numbers that get a line each

// A line; the numbers are its place in the list.
struct Linha {
    int ordem = 0; // the lowest one of a number is shown
    std::int64_t ate = 0;
    std::string situacao, data, total, consumidor, protocolo, chave, motivo;
};

using Serie = std::tuple<std::string, int, int>; // CNPJ, tpAmb, series
using Linhas = std::map<std::int64_t, Linha>;

// As a spreadsheet takes a text for a text, never for a formula.
std::string campo(std::string texto) {
    std::replace_if(
        texto.begin(), texto.end(), [](unsigned char c) { return c < ' '; }, ' ');
    if (!texto.empty() && std::string_view("=+-@").find(texto[0]) != std::string_view::npos)
        texto.insert(0, 1, '\'');
    if (texto.find_first_of(";\"") == texto.npos) return texto;
    std::string citado = "\"";
    for (const char c : texto)
        citado += c == '"' ? std::string("\"\"") : std::string(1, c);
    return citado + '"';
}

std::string comVirgula(Centavos valor) {
    std::string texto = textoDe(valor);
    std::replace(texto.begin(), texto.end(), '.', ',');
    return texto;
}

struct Palavra {
    Desfecho desfecho;
    std::string_view situacao;
};
constexpr std::array<Palavra, 6> kPalavras{{
    {Desfecho::kAutorizado, "autorizada"},
    {Desfecho::kJaEsta, "autorizada"},
    {Desfecho::kCancelado, "cancelada"},
    {Desfecho::kDenegado, "denegada"},
    {Desfecho::kInutilizado, "inutilizado"},
    {Desfecho::kJaInutilizado, "inutilizado"},
}};

bool foiCancelada(Fila &fila, const Ficha &nota) {
    const auto evento = fila.porChave(nota.chave, Tipo::kCancelamento);
    return evento && evento->estado == Estado::kEntregue &&
           (evento->desfecho == Desfecho::kCancelado || evento->desfecho == Desfecho::kJaCancelado);
}

std::string situacaoDe(Fila &fila, const Ficha &ficha) {
    const NomeEstado &estado = kEstados.at(static_cast<std::size_t>(ficha.estado));
    if (ficha.estado != Estado::kEntregue) return std::string(estado.pessoa);
    if (ficha.tipo == Tipo::kNfce && foiCancelada(fila, ficha)) return "cancelada";
    for (const Palavra &palavra : kPalavras)
        if (palavra.desfecho == ficha.desfecho) return std::string(palavra.situacao);
    return std::string(estado.pessoa);
}

std::string motivoDe(const Guarda &guarda, const Ficha &ficha) {
    const bool autorizada =
        ficha.estado == Estado::kEntregue && ficha.desfecho == Desfecho::kAutorizado;
    if (autorizada) return guarda.lugarDe(ficha).empty() ? "o arquivo não está na guarda" : "";
    if (!ficha.motivo.empty() || ficha.cStat == 0) return ficha.motivo;
    return std::to_string(ficha.cStat) + ' ' + ficha.xMotivo;
}

// Delivered before on its way, that before refused, that before taken back; the document before an
// inutilization.
int ordemDe(const Ficha &ficha) {
    const int estado = ficha.estado == Estado::kEntregue   ? 0
                       : !acabou(ficha.estado)             ? 2
                       : ficha.estado == Estado::kRecusado ? 4
                                                           : 6;
    return estado + (ficha.tipo == Tipo::kInutilizacao ? 1 : 0);
}

void juntar(Linhas &linhas, std::int64_t primeiro, std::int64_t ultimo, const Linha &linha) {
    const bool todos = ultimo - primeiro < kMaiorFaixa;
    for (std::int64_t n = primeiro; n <= (todos ? ultimo : primeiro); ++n) {
        const auto [lugar, nova] = linhas.try_emplace(n, linha);
        if (!nova && linha.ordem < lugar->second.ordem) lugar->second = linha;
        if (!todos && lugar->second.ordem == linha.ordem) lugar->second.ate = ultimo;
    }
}

Linha linhaDe(Fila &fila, const Guarda &guarda, const Ficha &ficha) {
    Linha linha;
    linha.ordem = ordemDe(ficha);
    linha.situacao = situacaoDe(fila, ficha);
    linha.data = ficha.dhEmi;
    if (ficha.tipo == Tipo::kNfce) linha.total = comVirgula(ficha.total);
    linha.consumidor = ficha.consumidor;
    linha.protocolo = ficha.protocolo;
    linha.chave = ficha.chave;
    linha.motivo = motivoDe(guarda, ficha);
    return linha;
}

// Those that end within the month's numbers of their series.
void juntarLacunas(std::map<Serie, Linhas> &series, const std::vector<Lacuna> &lacunas) {
    Linha linha;
    linha.ordem = std::numeric_limits<int>::max();
    linha.situacao = "sem documento";
    linha.motivo = "nada se sabe deste número: se não foi usado, peça a sua inutilização";
    for (const Lacuna &lacuna : lacunas) {
        const auto serie = series.find({lacuna.cnpj, lacuna.tpAmb, lacuna.serie});
        if (serie == series.end()) continue;
        const std::int64_t seguinte = lacuna.ultimo + 1;
        Linhas &linhas = serie->second;
        if (seguinte >= linhas.begin()->first && seguinte <= linhas.rbegin()->first)
            juntar(linhas, lacuna.primeiro, lacuna.ultimo, linha);
    }
}

std::string escrever(const Serie &serie, std::int64_t numero, const Linha &linha) {
    const auto &[cnpj, tpAmb, numeroDaSerie] = serie;
    std::string texto;
    for (const std::string &valor :
         {cnpj, std::string(tpAmb == 1 ? "producao" : "homologacao"), std::to_string(numeroDaSerie),
          std::to_string(numero), linha.ate > numero ? std::to_string(linha.ate) : "",
          linha.situacao, linha.data, linha.total, linha.consumidor, linha.protocolo, linha.chave,
          linha.motivo})
        texto += (texto.empty() ? "" : ";") + campo(valor);
    return texto + "\r\n";
}

} // namespace

std::string listarNotas(Fila &fila, const Guarda &guarda, std::string_view mes) {
    std::map<Serie, Linhas> series;
    Procura procura;
    procura.mes = mes;
    procura.maximo = std::numeric_limits<std::size_t>::max();
    for (const Ficha &ficha : fila.procurar(procura))
        if ((ficha.tipo == Tipo::kNfce || ficha.tipo == Tipo::kInutilizacao) && ficha.numero > 0)
            juntar(series[{ficha.cnpj, ficha.tpAmb, ficha.serie}], ficha.numero, ficha.ultimo,
                   linhaDe(fila, guarda, ficha));
    juntarLacunas(series, fila.lacunas());
    std::string texto = std::string(kMarca) + std::string(kCabecalho);
    for (const auto &[serie, linhas] : series)
        for (const auto &[numero, linha] : linhas)
            texto += escrever(serie, numero, linha);
    return texto;
}

} // namespace zel::envio
