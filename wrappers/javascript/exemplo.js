// SPDX-License-Identifier: MIT
// Sells, prints and cancels one receipt: exemplo.js DIRECTORY [LIBRARY]
'use strict';

const zel = require('./index.js');

const [, , diretorio, biblioteca] = process.argv;
const caixa = new zel.Cupom(diretorio, { biblioteca });

function vender() {
  const aliquota = zel.Aliquota.mercadoria(18);
  caixa.abrir({ documento: '123.456.789-09', nome: 'Maria de Fátima' });
  caixa.vender(aliquota, 6, '0,75', '101', 'UN', 'Pão francês');
  caixa.vender(aliquota, '0,350', zel.Decimal.centavos(3990n), '303', 'KG', 'Queijo minas',
    zel.Ajuste.descontoPercentual(10));
  caixa.totalizar();
  console.log('total:', caixa.infoEstendida('1'));
  caixa.efetuarPagamento(zel.FormaPagamento.CARTAO_DEBITO, 10);
  caixa.efetuarPagamento(zel.FormaPagamento.DINHEIRO, 50);
  console.log('troco:', caixa.retornarValor('CONFIGURACAO\\TrocoUltimaNFCe'));
  caixa.encerrar('Obrigado pela preferência');
  console.log('chave:', caixa.retornarValor('NFCE\\ChaveDeAcesso'));
}

caixa.alterarValor('EMIT\\xNome', 'Padaria São João Ltda');
caixa.alterarValor('EMIT\\CNPJ', '11222333000181');
vender();
console.log(caixa.imprimir(caixa.arquivo('documentosEnvio.xml'), 'OFFLINE'));
const pedido = caixa.cancelar() === zel.Codigo.CANCELAMENTO_GRAVADO;
console.log('cancelamento:', pedido ? 'ZEL_CANCELAMENTO_GRAVADO' : 'cupom em andamento');
try {
  caixa.encerrar(); // nothing is open now
} catch (erro) {
  if (!(erro instanceof zel.Recusa)) throw erro;
  console.log(erro.message);
}
