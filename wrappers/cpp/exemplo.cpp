// SPDX-License-Identifier: MIT
// Sells, prints and cancels one receipt: exemplo DIRECTORY (absolute; the library's files go
// there).
#include "ZEL_Felbor.hpp"

#include <iostream>

using namespace zel_felbor;

namespace {

void configurarEmitente(Cupom &caixa) {
    caixa.alterarValor("EMIT\\xNome", "Padaria São João Ltda");
    caixa.alterarValor("EMIT\\CNPJ", "11222333000181");
}

void vender(Cupom &caixa) {
    Consumidor consumidor;
    consumidor.documento = "123.456.789-09";
    consumidor.nome = "Maria de Fátima";

    caixa.abrir(consumidor);
    caixa.vender(Aliquota::mercadoria(18), 6, Decimal("0,75"), "101", "UN", "Pão francês");
    caixa.vender(Aliquota::mercadoria(18), Decimal::milesimos(350), Decimal::centavos(3990), "303",
                 "KG", "Queijo minas", Ajuste::descontoPercentual(10));
    caixa.totalizar();
    std::cout << "total: " << caixa.infoEstendida("1").valor << '\n';
    caixa.efetuarPagamento(FormaPagamento::CartaoDebito, 10);
    caixa.efetuarPagamento(FormaPagamento::Dinheiro, 50);
    std::cout << "troco: " << caixa.retornarValor("CONFIGURACAO\\TrocoUltimaNFCe").valor << '\n';
    caixa.encerrar("Obrigado pela preferência");
    std::cout << "chave: " << caixa.retornarValor("NFCE\\ChaveDeAcesso").valor << '\n';
}

} // namespace

int main(int argc, char **argv) {
    if (argc != 2) return 2;
    try {
        Cupom caixa(argv[1]);
        configurarEmitente(caixa);
        vender(caixa);
        std::cout << caixa.imprimir(caixa.arquivo("documentosEnvio.xml"), "OFFLINE").valor << '\n';
        std::cout << "cancelamento: " << caixa.cancelar().nome() << '\n';
        caixa.encerrar(); // nothing is open now
    } catch (const Falha &falha) {
        std::cout << falha.what() << '\n';
        return falha.codigo() == Codigo::EncerramentoForaDeOrdem ? 0 : 1;
    }
}
