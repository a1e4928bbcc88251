// SPDX-License-Identifier: MIT
// Whole receipts beside their floor, printing and loading by number of items, and the processor
// time of a sale beside that of its bare system calls.
#include "Bancada.h"
#include "Loja.h"
#include "Piso.h"

#include <string_view>

namespace {

constexpr int kMuitos = 999;

void nada(auto &) {}

// Enough iterations for a median, and few enough for a large receipt.
int voltas(int itens) {
    return itens >= 999 ? 1 : itens >= 100 ? 2 : 10;
}

// A till and, below the same directory, the floor of its receipts.
struct CupomEPiso {
    explicit CupomEPiso(const Base &base)
        : loja(base.diretorio, base.biblioteca), piso(base.diretorio) {
        emitirCupom(loja, 1); // the first receipt of a till makes its files
    }

    // What one side left to the file system's journal is not to be the other's to flush.
    void assentar() const { piso.gravar({"\n"}); }

    Loja loja;
    Piso piso;
};

void registrarCupom(const Base &base, int itens) {
    // Recorded when it is first needed, for all repetitions.
    const auto gravacoes = std::make_shared<std::vector<std::string>>();
    registrarPar(
        base, "cupom/" + std::to_string(itens), itens, base.atraso.count() > 0 ? 3 : voltas(itens),
        1,
        [=] {
            if (gravacoes->empty()) *gravacoes = gravacoesDoCupom(base.diretorio, itens);
            return std::make_unique<CupomEPiso>(base);
        },
        [](const CupomEPiso &s) { s.assentar(); },
        [=](const CupomEPiso &s) { emitirCupom(s.loja, itens); },
        [=](const CupomEPiso &s) { s.piso.gravar(*gravacoes); });
}

struct Impressao {
    explicit Impressao(const Base &base, int itens)
        : loja(base.diretorio, base.biblioteca), saida(tamanhoDoCupom(itens)) {
        emitirCupom(loja, itens);
        loja.autorizar();
        // The first print stores the protocol.
        exigir(loja.imprimir(saida), "GerarArquivoFormatadoNF_ZEL");
    }

    Loja loja;
    std::vector<char> saida;
};

void registrarImpressao(const Base &base, int itens) {
    registrar(
        base, "impressao/" + std::to_string(itens), itens, 10, 1,
        [=] { return std::make_unique<Impressao>(base, itens); }, nada<Impressao>,
        [](Impressao &i) { exigir(i.loja.imprimir(i.saida), "GerarArquivoFormatadoNF_ZEL"); });
}

// Another process over a receipt in progress: the loader maps another copy of the library, its
// functions are looked up and the first call, which reports the number of items, is answered.
void registrarCarga(const Base &base, int itens) {
    registrar(
        base, "carga/" + std::to_string(itens), itens, 10, 1,
        [=] {
            auto loja = std::make_unique<Loja>(base.diretorio, base.biblioteca);
            loja->abrir();
            loja->vender(1, itens);
            return loja;
        },
        [](Loja &loja) {
            loja.descarregar();
            loja.copiar();
        },
        [=](Loja &loja) {
            loja.carregar();
            char vendidos[ZEL_TAMANHO_INFO];
            exigir(loja->rInfoEstendida_ZEL("1", vendidos), "rInfoEstendida_ZEL");
            exigir(std::stoi(vendidos), "items", itens);
        });
}

// Sales 101 to 900 of one receipt, through the library and as bare system calls that write the same
// records: the difference of their processor times is what the library itself takes.
constexpr int kPrimeiraVenda = 101;
constexpr int kVendasSeguidas = 800;

struct VendasSeguidas {
    Loja loja;
    int vendidos = kPrimeiraVenda - 1;
    ChamadasDeVenda chamadas;
    std::vector<std::string> registros;
    std::size_t escritos = 0;
};

std::unique_ptr<VendasSeguidas> prepararVendas(const Base &base) {
    const Loja outra(base.diretorio);
    outra.abrir();
    outra.vender(1, kPrimeiraVenda - 1);
    const std::string antes = outra.ler("ArqPersist.bin");
    outra.vender(kPrimeiraVenda, kPrimeiraVenda + kVendasSeguidas - 1);
    const std::string depois = outra.ler("ArqPersist.bin");
    std::vector<std::string> registros;
    for (std::size_t inicio = antes.size(), fim; inicio < depois.size(); inicio = fim) {
        fim = depois.find('\n', inicio) + 1;
        registros.push_back(depois.substr(inicio, fim - inicio));
    }
    exigir(static_cast<int>(registros.size()), "records", kVendasSeguidas);

    std::unique_ptr<VendasSeguidas> vendas(new VendasSeguidas{
        .loja = Loja(base.diretorio, base.biblioteca),
        .chamadas = {base.diretorio, outra.ler("ZEL_Framework.xml"), antes},
        .registros = std::move(registros),
    });
    vendas->loja.abrir();
    vendas->loja.vender(1, vendas->vendidos);
    return vendas;
}

// One iteration alone: the calls are measured together, as one lot.
void registrarVendas(const Base &base) {
    registrarPar(
        base, "venda_seguida", kPrimeiraVenda + kVendasSeguidas, 1, kVendasSeguidas,
        [=] { return prepararVendas(base); }, nada<VendasSeguidas>,
        [](VendasSeguidas &v) { v.loja.vender(++v.vendidos); },
        [](VendasSeguidas &v) { v.chamadas.vender(v.registros[v.escritos++]); });
}

} // namespace

void registrarCuponsDeLoja(const Base &base) {
    for (const int itens : {1, 10})
        registrarCupom(base, itens);
}

void registrarCupons(const Base &base) {
    for (const int itens : {1, 10, 100, kMuitos}) {
        registrarCupom(base, itens);
        registrarImpressao(base, itens);
    }
    registrarCarga(base, 1);
    registrarCarga(base, kMuitos);
    if (base.emMemoria) registrarVendas(base); // a disk would only add its waiting
}
