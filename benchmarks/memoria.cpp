// SPDX-License-Identifier: MIT
// What receipts take of the memory:
//   zel_memoria venda DIRECTORY             bytes that each sale of a large receipt allocates
//   zel_memoria pico DIRECTORY              peak of a 999-item receipt, from opening to printed
//   text zel_memoria soak DIRECTORY [RECEIPTS]   many receipts in one process; 1 when memory grows
// The first two answer in JSON.
#include "Alocacao.h"
#include "Loja.h"

#include <algorithm>
#include <chrono>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <numeric>

namespace {

constexpr int kMuitos = 999;
constexpr int kItensDoSoak = 5;
// What a process may still gain once it has issued its first thousand receipts. A leak of a hundred
// bytes in each would be ten times as much over ten thousand.
constexpr long kCrescimentoHeap = 64L * 1024;
constexpr long kCrescimentoResidente = 1024L * 1024;

// A value of /proc/self/status, in bytes.
long situacao(std::string_view nome) {
    std::ifstream arquivo("/proc/self/status");
    for (std::string linha; std::getline(arquivo, linha);)
        if (linha.starts_with(std::string(nome) + ":"))
            return std::stol(linha.substr(nome.size() + 1)) * 1024;
    throw std::runtime_error(std::string(nome) + " is not reported by the system");
}

// Opening to printed text; the buffer is the application's.
void cupomImpresso(const Loja &loja, int itens, std::vector<char> &saida) {
    emitirCupom(loja, itens);
    loja.autorizar();
    exigir(loja.imprimir(saida), "GerarArquivoFormatadoNF_ZEL");
}

int vendas(const std::string &diretorio) {
    const Loja loja(diretorio);
    emitirCupom(loja, 1);
    loja.abrir();
    std::vector<std::int64_t> porVenda;
    for (int item = 1; item <= kMuitos; ++item) {
        const std::int64_t antes = alocado().pedido;
        loja.vender(item);
        porVenda.push_back(alocado().pedido - antes);
    }
    // The same number of sales of the same goods, which repeat every eight sales.
    const auto media = [&](int primeira, int ultima) {
        return std::accumulate(porVenda.begin() + primeira - 1, porVenda.begin() + ultima, 0.0) /
               (ultima - primeira + 1);
    };
    const auto maior = std::max_element(porVenda.begin() + 1, porVenda.end());
    std::cout << "{\"venda_2\": " << porVenda[1] << ", \"venda_999\": " << porVenda[998]
              << ", \"media_104_a_199\": " << media(104, 199)
              << ", \"media_904_a_999\": " << media(904, 999) << ", \"maior\": " << *maior
              << ", \"maior_em\": " << maior - porVenda.begin() + 1 << "}\n";
    return 0;
}

int pico(const std::string &diretorio) {
    Loja loja(diretorio);
    std::vector<char> saida(tamanhoDoCupom(kMuitos), ' ');
    cupomImpresso(loja, 1, saida);
    const std::int64_t heapAntes = alocado().vivo;
    const long residenteAntes = situacao("VmHWM");
    reiniciarPico();
    emitirCupom(loja, kMuitos);
    const std::int64_t picoEmissao = alocado().pico;
    loja.autorizar();
    reiniciarPico();
    exigir(loja.imprimir(saida), "GerarArquivoFormatadoNF_ZEL");
    const std::int64_t picoImpressao = alocado().pico;
    const std::int64_t heap = std::max(picoEmissao, picoImpressao) - heapAntes;
    const long residente = situacao("VmHWM") - residenteAntes;
    std::cout << "{\"itens\": " << kMuitos
              << ", \"documento\": " << loja.ler("documentosEnvio.xml").size()
              << ", \"heap_emissao\": " << picoEmissao - heapAntes
              << ", \"heap_impressao\": " << picoImpressao - heapAntes
              << ", \"residente\": " << residente << ", \"heap_por_item\": " << heap / kMuitos
              << ", \"residente_por_item\": " << residente / kMuitos << "}\n";
    return 0;
}

int soak(const std::string &diretorio, int cupons) {
    using Relogio = std::chrono::steady_clock;
    const Loja loja(diretorio);
    std::vector<char> saida(tamanhoDoCupom(kItensDoSoak), ' ');
    const int referencia = std::min(1000, cupons / 2);
    long residente = 0;
    std::int64_t heap = 0;
    const auto inicio = Relogio::now();
    std::cout << " receipts   resident KiB   heap KiB\n";
    for (int n = 1; n <= cupons; ++n) {
        cupomImpresso(loja, kItensDoSoak, saida);
        if (n != 100 && n != referencia && n != cupons) continue;
        if (n == referencia) {
            residente = situacao("VmRSS");
            heap = alocado().vivo;
        }
        std::cout << std::setw(9) << n << std::setw(15) << situacao("VmRSS") / 1024 << std::setw(11)
                  << alocado().vivo / 1024 << std::endl;
    }
    const double segundos = std::chrono::duration<double>(Relogio::now() - inicio).count();
    std::cout << std::fixed << std::setprecision(0) << cupons / segundos << " receipts of "
              << kItensDoSoak << " items per second\n";
    const bool cresceu = alocado().vivo - heap > kCrescimentoHeap ||
                         situacao("VmRSS") - residente > kCrescimentoResidente;
    std::cout << (cresceu ? "Memory grows: a leak.\n" : "Memory does not grow.\n");
    return cresceu ? 1 : 0;
}

int correr(const std::vector<std::string> &argumentos) {
    const std::size_t total = argumentos.size();
    const std::string modo = total > 1 ? argumentos[0] : "";
    if (modo == "venda" && total == 2) return vendas(argumentos[1]);
    if (modo == "pico" && total == 2) return pico(argumentos[1]);
    const int cupons = total == 3 ? std::stoi(argumentos[2]) : 10000;
    if (modo == "soak" && total <= 3 && cupons >= 200) return soak(argumentos[1], cupons);
    std::cerr << "usage: zel_memoria venda|pico|soak DIRECTORY [RECEIPTS, from 200]\n";
    return 2;
}

} // namespace

int main(int argc, char **argv) {
    try {
        return correr({argv + 1, argv + argc});
    } catch (const std::exception &falha) {
        std::cerr << falha.what() << '\n';
        return 1;
    }
}
