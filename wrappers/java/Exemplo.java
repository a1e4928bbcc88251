// SPDX-License-Identifier: MIT
import java.math.BigDecimal;
import zel.felbor.Ajuste;
import zel.felbor.Aliquota;
import zel.felbor.Codigo;
import zel.felbor.Consumidor;
import zel.felbor.Cupom;
import zel.felbor.FormaPagamento;
import zel.felbor.Recusa;

/** Sells, prints and cancels one receipt: Exemplo DIRECTORY LIBRARY */
final class Exemplo {
    private Exemplo() {}

    private static BigDecimal decimal(String texto) {
        return new BigDecimal(texto);
    }

    private static void vender(Cupom caixa) {
        caixa.abrir(new Consumidor().documento("123.456.789-09").nome("Maria de Fátima"));
        Aliquota aliquota = Aliquota.mercadoria(decimal("18"));
        caixa.vender(aliquota, decimal("6"), decimal("0.75"), "101", "UN", "Pão francês");
        caixa.vender(aliquota, decimal("0.350"), decimal("39.90"), "303", "KG", "Queijo minas",
            Ajuste.descontoPercentual(decimal("10")));
        caixa.totalizar();
        System.out.println("total: " + caixa.infoEstendida("1"));
        caixa.efetuarPagamento(FormaPagamento.CARTAO_DEBITO, decimal("10"));
        caixa.efetuarPagamento(FormaPagamento.DINHEIRO, decimal("50"));
        System.out.println("troco: " + caixa.retornarValor("CONFIGURACAO\\TrocoUltimaNFCe"));
        caixa.encerrar("Obrigado pela preferência");
        System.out.println("chave: " + caixa.retornarValor("NFCE\\ChaveDeAcesso"));
    }

    public static void main(String[] args) {
        Cupom caixa = new Cupom(args[0], false, args[1]);
        caixa.alterarValor("EMIT\\xNome", "Padaria São João Ltda");
        caixa.alterarValor("EMIT\\CNPJ", "11222333000181");
        vender(caixa);
        System.out.println(caixa.imprimir(caixa.arquivo("documentosEnvio.xml"), "OFFLINE"));
        System.out.println("cancelamento: ZEL_" + caixa.cancelar());
        try {
            caixa.encerrar(); // nothing is open now
        } catch (Recusa recusa) {
            System.out.println(recusa.getMessage());
            System.exit(recusa.codigo == Codigo.ENCERRAMENTO_FORA_DE_ORDEM ? 0 : 1);
        }
    }
}
