<?php
// SPDX-License-Identifier: MIT
// Sells, prints and cancels one receipt: exemplo.php DIRECTORY LIBRARY

declare(strict_types=1);

require __DIR__ . '/zel_felbor.php';

use Zel\Felbor\{Ajuste, Aliquota, Codigo, Consumidor, Cupom, FormaPagamento, Recusa};

function vender(Cupom $caixa): void
{
    $aliquota = Aliquota::mercadoria(18);
    $caixa->abrir(new Consumidor(documento: '123.456.789-09', nome: 'Maria de Fátima'));
    $caixa->vender($aliquota, 6, '0,75', '101', 'UN', 'Pão francês');
    $caixa->vender(
        $aliquota,
        quantidade: '0,350',
        valorUnitario: '39,90',
        codigo: '303',
        unidade: 'KG',
        descricao: 'Queijo minas',
        ajuste: Ajuste::descontoPercentual(10),
    );
    $caixa->totalizar();
    echo 'total: ', $caixa->infoEstendida('1'), "\n";
    $caixa->efetuarPagamento(FormaPagamento::CartaoDebito, 10);
    $caixa->efetuarPagamento(FormaPagamento::Dinheiro, 50);
    echo 'troco: ', $caixa->retornarValor('CONFIGURACAO\TrocoUltimaNFCe'), "\n";
    $caixa->encerrar('Obrigado pela preferência');
    echo 'chave: ', $caixa->retornarValor('NFCE\ChaveDeAcesso'), "\n";
}

$caixa = new Cupom($argv[1], biblioteca: $argv[2]);
$caixa->alterarValor('EMIT\xNome', 'Padaria São João Ltda');
$caixa->alterarValor('EMIT\CNPJ', '11222333000181');
vender($caixa);
echo $caixa->imprimir($caixa->arquivo('documentosEnvio.xml'), 'OFFLINE'), "\n";
echo 'cancelamento: ', $caixa->cancelar()->descricao()[0], "\n";
try {
    $caixa->encerrar(); // nothing is open now
} catch (Recusa $recusa) {
    echo $recusa->getMessage(), "\n";
    exit($recusa->codigo === Codigo::EncerramentoForaDeOrdem ? 0 : 1);
}
