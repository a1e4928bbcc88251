<?php
// SPDX-License-Identifier: MIT
// The receipt in progress, as ArqPersist.bin has it: one record a line, its kind in two digits, "|", of
// items and payments a number and "|", and elements as the library writes them.

declare(strict_types=1);

namespace Zel\Felbor;

final class ConsumidorLido
{
    public function __construct(
        /** "cpf", "cnpj" or "estrangeiro" */
        public readonly string $tipo,
        public readonly string $documento,
        public readonly string $nome,
        public readonly string $email,
    ) {
    }
}

/** Numbers as the library wrote them, with a point; discount and surcharge are empty for none. */
final class ItemLido
{
    public function __construct(
        public readonly string $numero,
        public readonly string $codigo,
        public readonly string $descricao,
        public readonly string $quantidade,
        public readonly string $unidade,
        public readonly string $preco,
        public readonly string $bruto,
        public readonly string $desconto,
        public readonly string $acrescimo,
    ) {
    }
}

final class PagamentoLido
{
    public function __construct(
        /** "01" */
        public readonly string $forma,
        /** "Dinheiro" */
        public readonly string $nome,
        public readonly string $valor,
    ) {
    }
}

/** A receipt that is open, or closed and not yet followed by another. */
final class Andamento
{
    private const REFERENCIA = '/&(amp|lt|gt|quot|apos|#[0-9]{1,7}|#x[0-9A-Fa-f]{1,6});/';
    private const TIPOS = ['CPF' => 'cpf', 'CNPJ' => 'cnpj', 'idEstrangeiro' => 'estrangeiro'];

    public ?ConsumidorLido $consumidor = null;
    /** @var ItemLido[] */
    public array $lista = [];
    /** @var PagamentoLido[] */
    public array $pagamentos = [];
    /** What the items add up to until the totals are made. */
    public readonly string $total;
    public readonly string $pago;
    /** Empty when nothing is due. */
    public readonly string $falta;

    /**
     * @internal
     * Of a file in ISO-8859-1. A last record without its end does not count: the process died while it
     * was written.
     */
    public function __construct(
        string $arquivo,
        public readonly Estado $estado,
        /** Empty before it is paid. */
        public readonly string $troco,
    ) {
        $total = '';
        foreach (array_slice(explode("\r\n", $arquivo), 0, -1) as $i => $registro) {
            if (preg_match('/^0(?:([1346])\||([25])\|([^|]*)\|)/', $registro, $inicio) !== 1) {
                $ordem = $i + 1;
                throw new EntradaRecusada("ArqPersist.bin: o registro $ordem não é de um cupom");
            }
            $conteudo = substr($registro, strlen($inicio[0]));
            match ($registro[1]) {
                '1' => $this->consumidor = self::consumidor($conteudo),
                '2' => $this->lista[] = self::item($inicio[3], $conteudo),
                '3' => $total = self::texto($conteudo, 'ICMSTot', 'vNF'),
                '5' => $this->pagamentos[] = self::pagamento($conteudo),
                default => null,
            };
        }
        $somar = fn (string $nome) => self::centavos(array_column($this->lista, $nome));
        $devido = $total === '' ? $somar('bruto') + $somar('acrescimo') - $somar('desconto')
            : self::centavos([$total]);
        $pago = self::centavos(array_column($this->pagamentos, 'valor'));
        $this->total = self::moeda($devido);
        $this->pago = self::moeda($pago);
        $this->falta = $total === '' ? '' : self::seHouver($devido - $pago);
    }

    private static function consumidor(string $abertura): ?ConsumidorLido
    {
        foreach (self::TIPOS as $nome => $tipo) {
            $documento = self::texto($abertura, 'dest', $nome);
            if ($documento !== '') {
                return new ConsumidorLido($tipo, $documento, self::texto($abertura, 'dest', 'xNome'),
                    self::texto($abertura, 'dest', 'email'));
            }
        }
        return null;
    }

    private static function item(string $numero, string $conteudo): ItemLido
    {
        $campos = array_map(
            fn (string $nome) => self::texto($conteudo, 'prod', $nome),
            ['cProd', 'xProd', 'qCom', 'uCom', 'vUnCom', 'vProd'],
        );
        $ajustes = array_map(
            fn (string $nome) => self::seHouver(self::centavos(self::textos($conteudo, 'prod', $nome))),
            ['vDesc', 'vOutro'],
        );
        return new ItemLido($numero, ...$campos, ...$ajustes);
    }

    private static function pagamento(string $conteudo): PagamentoLido
    {
        $forma = self::texto($conteudo, 'pag', 'tPag');
        $nome = preg_match('/(?<![^;])' . preg_quote($forma, '/') . '=([^;]*)/', Tabelas::FORMAS, $achado);
        return new PagamentoLido($forma, $nome === 1 ? $achado[1] : $forma,
            self::texto($conteudo, 'pag', 'vPag'));
    }

    /** Of all elements of that name within the group. */
    private static function textos(string $conteudo, string $grupo, string $nome): array
    {
        $abre = strpos($conteudo, "<$grupo>");
        $fecha = strpos($conteudo, "</$grupo>", (int) $abre);
        if ($abre === false || $fecha === false) {
            return [];
        }
        preg_match_all("/<$nome>([^<]*)<\\/$nome>/", substr($conteudo, $abre, $fecha - $abre), $lidos);
        return array_map(fn (string $lido) => preg_replace_callback(
            self::REFERENCIA,
            self::referencia(...),
            Valores::deLatin1($lido),
        ), $lidos[1]);
    }

    private static function texto(string $conteudo, string $grupo, string $nome): string
    {
        return self::textos($conteudo, $grupo, $nome)[0] ?? '';
    }

    private static function referencia(array $achada): string
    {
        [$inteira, $nome] = $achada;
        if ($nome[0] !== '#') {
            return ['amp' => '&', 'lt' => '<', 'gt' => '>', 'quot' => '"', 'apos' => "'"][$nome];
        }
        $ponto = $nome[1] === 'x' ? hexdec(substr($nome, 2)) : (int) substr($nome, 1);
        if ($ponto === 0 || $ponto > 0x10FFFF || ($ponto >= 0xD800 && $ponto <= 0xDFFF)) {
            return $inteira;
        }
        return match (true) {
            $ponto < 0x80 => chr($ponto),
            $ponto < 0x800 => chr(0xC0 | $ponto >> 6) . chr(0x80 | $ponto & 0x3F),
            $ponto < 0x10000 => chr(0xE0 | $ponto >> 12) . chr(0x80 | $ponto >> 6 & 0x3F)
                . chr(0x80 | $ponto & 0x3F),
            default => chr(0xF0 | $ponto >> 18) . chr(0x80 | $ponto >> 12 & 0x3F)
                . chr(0x80 | $ponto >> 6 & 0x3F) . chr(0x80 | $ponto & 0x3F),
        };
    }

    /** What they add up to; a text that is no number is nothing. */
    private static function centavos(array $textos): int
    {
        $soma = 0;
        foreach ($textos as $texto) {
            if (preg_match('/^([0-9]{1,13})(?:\.([0-9]{0,10}))?\z/', $texto, $numero) === 1) {
                $soma += (int) ($numero[1] . substr(($numero[2] ?? '') . '00', 0, 2));
            }
        }
        return $soma;
    }

    private static function moeda(int $centavos): string
    {
        return sprintf('%d.%02d', intdiv(max($centavos, 0), 100), max($centavos, 0) % 100);
    }

    private static function seHouver(int $centavos): string
    {
        return $centavos > 0 ? self::moeda($centavos) : '';
    }
}
