<?php
// SPDX-License-Identifier: MIT
// The package against a real library: teste.php DIRECTORY LIBRARY CASES
// With "ao-mesmo-tempo" in place of the cases: what one of two processes at once does.

declare(strict_types=1);

require __DIR__ . '/zel_felbor.php';

use Zel\Felbor\{Ajuste, Aliquota, Codigo, Cupom, EntradaRecusada, Estado, FormaPagamento, Recusa};
use Zel\Felbor\{TextoInvalido, Valores};

[, $diretorio, $biblioteca, $casos] = $argv;
$falhas = 0;

function conferir(bool $certo, string $oque): void
{
    if (!$certo) {
        echo "failed: $oque\n";
        ++$GLOBALS['falhas'];
    }
}

function igual(mixed $lido, mixed $esperado, string $oque): void
{
    conferir($lido === $esperado, sprintf('%s: %s, expected %s', $oque, print_r($lido, true),
        print_r($esperado, true)));
}

/** What a call throws; fails the test when it is another kind or nothing. */
function erro(string $tipo, callable $chamada, string $oque): \Throwable
{
    try {
        $chamada();
    } catch (\Throwable $e) {
        conferir($e instanceof $tipo, "$oque: " . get_class($e) . ': ' . $e->getMessage());
        return $e;
    }
    throw new \LogicException("$oque was not refused");
}

function caixa(bool $transliterar = false): Cupom
{
    return new Cupom($GLOBALS['diretorio'], $transliterar, $GLOBALS['biblioteca']);
}

function converter(string $tipo, string $escolha, string $entrada): string
{
    return match ($tipo) {
        'texto' => strtoupper(bin2hex(Valores::texto('a', $entrada, $escolha === 'transliterar'))),
        'diretorio' => get_class(new Cupom($entrada)),
        'aliquota' => Aliquota::$escolha($entrada)->converter('a'),
        default => Valores::decimal('a', $entrada, (int) $escolha),
    };
}

function testarConversoes(string $arquivo): void
{
    caixa()->inicializar();
    conferir(is_file("{$GLOBALS['diretorio']}/ZEL_Framework.xml"), 'files elsewhere');
    $linhas = preg_grep('/^[^#]/', file($arquivo, FILE_IGNORE_NEW_LINES));
    conferir(count($linhas) > 30, 'the cases were not read');
    foreach ($linhas as $linha) {
        [$tipo, $escolha, $entrada, $esperado] = explode("\t", $linha);
        if ($esperado[0] !== '!') {
            igual(converter($tipo, $escolha, $entrada), $esperado, $linha);
            continue;
        }
        $e = erro(EntradaRecusada::class, fn () => converter($tipo, $escolha, $entrada), $linha);
        conferir(str_contains($e->getMessage(), substr($esperado, 1)), "$linha: {$e->getMessage()}");
    }
}

function testarEntradas(): void
{
    foreach (['', '-', ',', '1,2,3', '1e3', ' 1', "1\n", '0x1'] as $numero) {
        erro(EntradaRecusada::class, fn () => Valores::decimal('a', $numero, 4), "\"$numero\"");
    }
    erro(\TypeError::class, fn () => Valores::decimal('a', 0.1, 4), 'float');
    igual(Valores::decimal('a', ',5', 4), '0.50', 'comma');
    foreach (["P\xe3o", "P\xc3", "P\xed\xa0\x80", "P\xc0\xaf", "P\xf4\x90\x80\x80"] as $texto) {
        $e = erro(EntradaRecusada::class, fn () => Valores::texto('a', $texto, true), 'no UTF-8');
        conferir(str_contains($e->getMessage(), 'o byte na posição 2 não é UTF-8'), $e->getMessage());
    }
    erro(TextoInvalido::class, fn () => Valores::texto('a', "P\0o", true), 'U+0000');
    erro(EntradaRecusada::class, fn () => caixa()->cancelarItem(2 ** 32 + 1), 'a large int');
}

function vender(Cupom $c, string $descricao): void
{
    $c->vender(Aliquota::mercadoria(18), '1,5', '0.75', '101', 'UN', $descricao);
}

function testarRecusas(Cupom $c): void
{
    $t = erro(TextoInvalido::class, fn () => vender($c, 'Pão de queijo – 1ª'), 'dash');
    igual([$t->argumento, $t->caractere, $t->posicao], ['descricao', '–', 15], 'character');
    erro(TextoInvalido::class, fn () => vender(caixa(true), '1 €'), 'euro');
    igual($c->verificarStatus(), Estado::Aberto, 'state after refused texts');
    $acrescimo = fn () => $c->lancarDescontoItem(1, Ajuste::acrescimo(1));
    erro(EntradaRecusada::class, $acrescimo, 'surcharge as discount');
    $r = erro(Recusa::class, fn () => $c->abrir(), 'open again');
    igual($r->codigo, Codigo::CupomEmAndamento, 'code');
    igual($r->getMessage(), 'aCFAbrir_ZEL: ZEL_CUPOM_EM_ANDAMENTO (-130): Já há um cupom em andamento. '
        . 'Continue-o, ou cancele-o com tCFCancelar_ZEL e cinco textos vazios. '
        . 'Se outro programa está com ele, não o cancele: dê a cada caixa o seu diretório.', 'message');
}

function testarImpressao(Cupom $c, string $diretorio): void
{
    $queijo = 'Pão de queijo - 1ª';
    $cupom = $c->imprimir($c->arquivo('documentosEnvio.xml'));
    conferir(strlen($cupom) > 131072 && str_contains($cupom, $queijo), 'receipt');
    conferir($c->ultimoCupom() === $cupom, 'last receipt');
    conferir(str_contains($c->reemitir(1), $queijo), 'document issued again');
    $ctg = $c->contingencia([$diretorio]);
    conferir(is_file($ctg), "no file $ctg");
    conferir(str_contains($c->imprimir($ctg), $queijo), 'receipt of a scrambled file');
    erro(EntradaRecusada::class, fn () => $c->imprimir('/nao/ha.xml'), 'missing file');
    $c->alterarValor('CONFIGURACAO\SalvarDanfePDF', '1');
    $pdf = erro(Recusa::class, fn () => $c->imprimir($ctg), 'PDF offline');
    conferir(str_contains($pdf->texto, $queijo), 'the text of a failed PDF is lost');
}

function testarCupom(string $diretorio): void
{
    $c = caixa();
    $c->alterarValor('EMIT\xNome', 'Padaria São João');
    igual($c->retornarValor('EMIT\xNome'), 'Padaria São João', 'value read back');
    $c->abrir();
    testarRecusas($c);
    vender(caixa(true), 'Pão de queijo – 1ª');
    for ($i = 0; $i < 800; ++$i) {
        vender($c, str_repeat('É', 120));
    }
    $c->totalizar();
    $c->efetuarPagamento(FormaPagamento::Dinheiro);
    $c->encerrar('Obrigado pela preferência');
    testarImpressao($c, $diretorio);
    igual($c->cancelar(), Codigo::CancelamentoGravado, 'cancellation');
}

/** Whole receipts beside another process that does the same; prints the last number. */
function aoMesmoTempo(string $diretorio): void
{
    touch("$diretorio/pronto." . getmypid());
    for ($i = 0; $i < 10000 && count(glob("$diretorio/pronto.*")) < 2; ++$i) {
        usleep(1000);
    }
    $c = caixa();
    for ($i = 0; $i < 50; ++$i) {
        $c->abrir();
        vender($c, "Pão $i");
        $c->totalizar();
        $c->efetuarPagamento(FormaPagamento::Dinheiro);
        $c->encerrar();
    }
    echo $c->retornarValor('IDE\nNF'), "\n";
}

if ($casos === 'ao-mesmo-tempo') {
    aoMesmoTempo($diretorio);
    exit(0);
}
testarConversoes($casos);
testarEntradas();
testarCupom($diretorio);
echo $falhas === 0 ? "PHP: ok\n" : "PHP: failed\n";
exit($falhas === 0 ? 0 : 1);
