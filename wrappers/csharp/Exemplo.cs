// SPDX-License-Identifier: MIT
// Sells, prints and cancels one receipt: Exemplo DIRECTORY LIBRARY
using System;
using Zel.Felbor;

static class Exemplo {
    static void Vender(Cupom caixa) {
        caixa.Abrir(new Consumidor { Documento = "123.456.789-09", Nome = "Maria de Fátima" });
        Aliquota aliquota = Aliquota.Mercadoria(18);
        caixa.Vender(aliquota, 6, 0.75m, "101", "UN", "Pão francês");
        caixa.Vender(aliquota, 0.350m, 39.90m, "303", "KG", "Queijo minas",
                     Ajuste.DescontoPercentual(10));
        caixa.Totalizar();
        Console.WriteLine("total: " + caixa.InfoEstendida("1"));
        caixa.EfetuarPagamento(FormaPagamento.CartaoDebito, 10);
        caixa.EfetuarPagamento(FormaPagamento.Dinheiro, 50);
        Console.WriteLine("troco: " + caixa.RetornarValor(@"CONFIGURACAO\TrocoUltimaNFCe"));
        caixa.Encerrar("Obrigado pela preferência");
        Console.WriteLine("chave: " + caixa.RetornarValor(@"NFCE\ChaveDeAcesso"));
    }

    static int Main(string[] args) {
        Console.OutputEncoding = new System.Text.UTF8Encoding(false);
        var caixa = new Cupom(args[0], biblioteca: args[1]);
        caixa.AlterarValor(@"EMIT\xNome", "Padaria São João Ltda");
        caixa.AlterarValor(@"EMIT\CNPJ", "11222333000181");
        Vender(caixa);
        Console.WriteLine(caixa.Imprimir(caixa.Arquivo("documentosEnvio.xml"), "OFFLINE"));
        bool pedido = caixa.Cancelar() == Codigo.CancelamentoGravado;
        Console.WriteLine("cancelamento: " + (pedido ? "ZEL_CANCELAMENTO_GRAVADO" : "em andamento"));
        try {
            caixa.Encerrar(); // nothing is open now
        } catch (Recusa recusa) {
            Console.WriteLine(recusa.Message);
            return recusa.Codigo == Codigo.EncerramentoForaDeOrdem ? 0 : 1;
        }
        return 0;
    }
}
