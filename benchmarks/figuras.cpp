// SPDX-License-Identifier: MIT
// What a receipt costs as a picture and as printer bytes, with libzel-cupom, of receipts that the
// library printed:
//   zel_figuras DIRECTORY_IN_MEMORY [Google Benchmark's own arguments]
#include "Bancada.h"
#include "Loja.h"

#include "zel_cupom.h"

#include <iostream>

namespace {

using Funcao = int (*)(zel_cupom *, unsigned char **, size_t *);

void conferir(int codigo) {
    if (codigo != ZEL_CUPOM_OK) throw std::runtime_error(zel_cupom_descrever(codigo));
}

// A receipt's text, and a renderer that goes on from one receipt to the next.
struct Mesa {
    Mesa(const Base &base, int itens) : recibo(zel_cupom_novo(), &zel_cupom_liberar) {
        const Loja loja(base.diretorio);
        emitirCupom(loja, itens);
        loja.autorizar();
        std::vector<char> saida(tamanhoDoCupom(itens));
        exigir(loja.imprimir(saida), "GerarArquivoFormatadoNF_ZEL");
        texto = saida.data();
    }

    std::string texto;
    std::unique_ptr<zel_cupom, decltype(&zel_cupom_liberar)> recibo;
};

void desenhar(zel_cupom *recibo, const std::string &texto, Funcao funcao) {
    conferir(zel_cupom_ler(recibo, texto.data(), texto.size()));
    unsigned char *bytes = nullptr;
    size_t tamanho = 0;
    conferir(funcao(recibo, &bytes, &tamanho));
    zel_cupom_liberar_bytes(bytes);
}

template <class Executar>
void registrarFigura(const Base &base, const std::string &nome, int itens, Executar executar) {
    registrar(
        base, std::string(nome).append("/").append(std::to_string(itens)), itens, 20, 1,
        [=] { return std::make_unique<Mesa>(base, itens); }, [](Mesa &) {}, executar);
}

void registrarFiguras(const Base &base) {
    for (const int itens : {10, 100}) {
        registrarFigura(base, "png", itens,
                        [](Mesa &m) { desenhar(m.recibo.get(), m.texto, zel_cupom_png); });
        registrarFigura(base, "svg", itens,
                        [](Mesa &m) { desenhar(m.recibo.get(), m.texto, zel_cupom_svg); });
        registrarFigura(base, "escpos", itens,
                        [](Mesa &m) { desenhar(m.recibo.get(), m.texto, zel_cupom_escpos); });
    }
    // As a program that draws one receipt and ends: it opens the fonts.
    registrarFigura(base, "png_novo", 10, [](Mesa &m) {
        const std::unique_ptr<zel_cupom, decltype(&zel_cupom_liberar)> novo(zel_cupom_novo(),
                                                                            &zel_cupom_liberar);
        desenhar(novo.get(), m.texto, zel_cupom_png);
    });
    // A printer that has no QR code of its own, and a profile that is read for each receipt.
    registrarFigura(base, "escpos_pontos", 10, [](Mesa &m) {
        conferir(zel_cupom_definir_perfil(m.recibo.get(), "escpos-modo-unico"));
        desenhar(m.recibo.get(), m.texto, zel_cupom_escpos);
    });
}

} // namespace

int main(int argc, char **argv) {
    if (argc < 2) {
        std::cerr << "usage: zel_figuras DIRECTORY_IN_MEMORY [--benchmark_...]\n";
        return 2;
    }
    registrarFiguras({"figura", argv[1], true});
    argc -= 1;
    argv[1] = argv[0];
    argv += 1;
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
