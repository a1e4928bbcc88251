<?php
// SPDX-License-Identifier: MIT
// The package against a real library: teste.php DIRECTORY LIBRARY CASES
// With "ao-mesmo-tempo" in place of the cases: what one of two processes at once does.

declare(strict_types=1);

require __DIR__ . '/zel_felbor.php';

use Zel\Felbor\{Ajuste, Aliquota, Codigo, Cupom, EntradaRecusada, Estado, FormaPagamento, Recusa};
use Zel\Felbor\{Andamento, Autorizacao, BibliotecaAusente, Consumidor, Identificacao, TextoInvalido, Valores};

[, $diretorio, $biblioteca, $casos] = $argv;
$entradas = $argv[4] ?? '';
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
        'comprimento' => converterComprimento($escolha, $entrada),
        'consumidor' => converterConsumidor($escolha, $entrada),
        'autorizacao' => converterAutorizacao($escolha, $entrada),
        'diretorio' => get_class(new Cupom($entrada)),
        'aliquota' => Aliquota::$escolha($entrada)->converter('a'),
        default => Valores::decimal('a', $entrada, (int) $escolha),
    };
}

function converterComprimento(string $escolha, string $entrada): string
{
    $texto = new ReflectionMethod(Cupom::class, 'texto');
    $limites = array_map('intval', explode('-', $escolha));
    return strtoupper(bin2hex($texto->invoke(caixa(), 'a', $entrada, ...$limites)));
}

function converterConsumidor(string $escolha, string $entrada): string
{
    $campos = [];
    foreach (explode(';', $entrada) as $par) {
        [$nome, $valor] = explode('=', $par);
        $campos[$nome] = $valor;
    }
    $funcao = $escolha === 'identificar' ? 'aCFIdentificarConsumidor_ZEL' : 'aCFAbrir_ZEL';
    return Identificacao::de($funcao, new Consumidor(...$campos), $escolha === 'cortar');
}

function converterAutorizacao(string $escolha, string $entrada): string
{
    [$documento, $retorno] = explode('|', $entrada);
    Autorizacao::conferir($documento, $retorno === 'OFFLINE' ? null : $retorno,
        $escolha === 'cancelamento');
    return 'ok';
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

function dizer(Andamento $a): string
{
    $campos = fn (string $letra) => fn (object $lido) => implode(',', [$letra, ...array_values((array) $lido)]);
    return implode(';', [
        ...array_map($campos('C'), array_filter([$a->consumidor])),
        ...array_map($campos('I'), $a->lista),
        ...array_map($campos('P'), $a->pagamentos),
        "T,{$a->total},{$a->pago},{$a->falta}",
    ]);
}

/** The receipts in progress that all languages share. */
function testarAndamento(string $arquivo): void
{
    $linhas = preg_grep('/^[^#]/', file($arquivo, FILE_IGNORE_NEW_LINES));
    conferir(count($linhas) > 15, 'the receipts in progress were not read');
    foreach ($linhas as $linha) {
        [$nome, $registros, $esperado] = explode("\t", $linha);
        $bytes = Valores::texto('a', str_replace('^', "\r\n", $registros), false);
        $ler = fn () => dizer(new Andamento($bytes, Estado::Aberto, ''));
        if ($esperado[0] !== '!') {
            igual($ler(), $esperado, $nome);
            continue;
        }
        $e = erro(EntradaRecusada::class, $ler, $nome);
        conferir(str_contains($e->getMessage(), substr($esperado, 1)), "$nome: {$e->getMessage()}");
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
    $c = caixa();
    $isento = Aliquota::isento();
    $casos = [
        'item: ' => fn () => $c->cancelarItem(2 ** 32 + 1),
        'serie: 1000' => fn () => $c->abrirNumSerie(1, 1000),
        'valor: 0.125' => fn () => $c->lancarDescontoItem(1, Ajuste::desconto('0.125')),
        'descricao: 121' => fn () => $c->vender($isento, 1, 1, '1', 'UN', str_repeat('x', 121)),
        'documento: os' => fn () => $c->identificarTransportadora('123.456.789-00', 'Zé'),
        'informacoesFisco: 0' => fn () => $c->encerrarConfigMsg('só uma', ''),
        'destino: nome' => fn () => $c->criptografarArquivo('/a', '/' . str_repeat('x', 300), ''),
    ];
    foreach ($casos as $parte => $chamada) {
        $e = erro(EntradaRecusada::class, $chamada, $parte);
        conferir(str_starts_with($e->getMessage(), $parte), $e->getMessage());
    }
    $e = erro(\TypeError::class, fn () => $c->efetuarPagamento('Dinheiro'), 'a text for an enumeration');
    conferir(str_contains($e->getMessage(), '($forma)'), $e->getMessage());
    $e = erro(\TypeError::class, fn () => $c->vender($isento, null, 1, '1', 'UN', 'x'), 'no quantity');
    conferir(str_contains($e->getMessage(), '($quantidade)'), $e->getMessage());
}

function testarValorCortado(): void
{
    $c = caixa();
    $c->alterarValor('EMIT\xNome', 'Padaria');
    $e = erro(EntradaRecusada::class, fn () => $c->alterarValor('EMIT\xNome', str_repeat('x', 61)), '61');
    conferir(str_contains($e->getMessage(), '61 caracteres, de que EMIT\xNome guarda 60'), $e->getMessage());
    igual($c->retornarValor('EMIT\xNome'), 'Padaria', 'value after a refusal');
    $cortando = new Cupom($GLOBALS['diretorio'], false, $GLOBALS['biblioteca'], cortar: true);
    $cortando->alterarValor('EMIT\xNome', str_repeat('x', 61));
    igual($c->retornarValor('EMIT\xNome'), str_repeat('x', 60), 'value that was to be cut');
    $r = erro(Recusa::class, fn () => $c->alterarValor('NADA', '1'), 'no such key');
    igual($r->funcao, 'regAlterarValor_ZEL', 'function');
}

/** The last one: the number of the descriptor is the program's from here on. */
function testarMotivo(): void
{
    $recusar = fn () => caixa()->criptografarArquivo('/nao/existe', '/x', '');
    $r = erro(Recusa::class, $recusar, 'no such file');
    conferir(str_contains($r->motivo, '/nao/existe: o arquivo ou o diretório não existe (ENOENT)'), $r->motivo);
    conferir(str_contains($r->getMessage(), $r->motivo), $r->getMessage());
    $processo = (new ReflectionProperty(Zel\Felbor\Chamador::class, 'processo'))->getValue(caixa());
    FFI::cdef('int close(int descritor);')->close($processo->motivos);
    igual(erro(Recusa::class, $recusar, 'no such file')->motivo, '', 'reason of a closed descriptor');
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
    conferir(str_contains($r->motivo, 'estado 1 (aberto)'), $r->motivo);
    conferir(str_starts_with($r->getMessage(), 'aCFAbrir_ZEL: ZEL_CUPOM_EM_ANDAMENTO (-130): Já há um '
        . "cupom em andamento. Motivo: {$r->motivo}. "), $r->getMessage());
}

function testarImpressao(Cupom $c, string $diretorio): void
{
    $queijo = 'Pão de queijo - 1ª';
    $cupom = $c->imprimir($c->arquivo('documentosEnvio.xml'), 'OFFLINE');
    conferir(strlen($cupom) > 131072 && str_contains($cupom, $queijo), 'receipt');
    conferir($c->ultimoCupom() === $cupom, 'last receipt');
    conferir(str_contains($c->reemitir(1), $queijo), 'document issued again');
    $ctg = $c->contingencia([$diretorio]);
    conferir(is_file($ctg), "no file $ctg");
    conferir(str_contains($c->imprimir($ctg, 'OFFLINE'), $queijo), 'receipt of a scrambled file');
    erro(EntradaRecusada::class, fn () => $c->imprimir('/nao/ha.xml', 'OFFLINE'), 'missing file');
    $c->alterarValor('CONFIGURACAO\SalvarDanfePDF', '1');
    $pdf = erro(Recusa::class, fn () => $c->imprimir($ctg, 'OFFLINE'), 'PDF offline');
    conferir(str_contains($pdf->texto, $queijo), 'the text of a failed PDF is lost');
}

function testarCupom(string $diretorio): void
{
    $c = caixa();
    $c->alterarValor('EMIT\xNome', 'Padaria São João');
    igual($c->retornarValor('EMIT\xNome'), 'Padaria São João', 'value read back');
    igual($c->lerAndamento(), null, 'a receipt in progress where there is none');
    $c->abrir();
    testarRecusas($c);
    vender(caixa(true), 'Pão de queijo – 1ª');
    for ($i = 0; $i < 800; ++$i) {
        vender($c, str_repeat('É', 120));
    }
    $c->totalizar();
    $c->efetuarPagamento(FormaPagamento::Dinheiro);
    $a = $c->lerAndamento();
    igual([count($a->lista), $a->lista[0]->descricao, $a->estado, $a->falta, $a->troco],
        [801, 'Pão de queijo - 1ª', Estado::Pago, '', '0'], 'what a till that was restarted shows');
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
$ausente = erro(BibliotecaAusente::class, fn () => new Cupom($diretorio, false, '/nao/ha.so'), 'none');
conferir(str_contains($ausente->getMessage(), 'LD_LIBRARY_PATH'), $ausente->getMessage());
testarConversoes($casos);
testarConversoes($entradas);
testarAndamento($argv[5]);
testarEntradas();
testarValorCortado();
testarCupom($diretorio);
testarMotivo();
echo $falhas === 0 ? "PHP: ok\n" : "PHP: failed\n";
exit($falhas === 0 ? 0 : 1);
