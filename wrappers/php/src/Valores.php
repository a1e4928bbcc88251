<?php
// SPDX-License-Identifier: MIT
// What is converted on the way to the library; failures of the package.

declare(strict_types=1);

namespace Zel\Felbor;

/** Whatever this package refuses. */
class ErroZel extends \RuntimeException
{
}

/** An argument that cannot be handed to the library; nothing was called. */
class EntradaRecusada extends ErroZel
{
}

/** A character that ISO-8859-1 does not have: itself, its position from 1, its argument. */
final class TextoInvalido extends EntradaRecusada
{
    public function __construct(
        public readonly string $argumento,
        public readonly string $caractere,
        public readonly int $posicao,
    ) {
        $ponto = self::ponto($caractere);
        $glifo = $ponto < 0xA0 ? '' : " \"$caractere\"";
        parent::__construct(sprintf(
            '%s: o caractere%s (U+%04X) na posição %d não existe em ISO-8859-1',
            $argumento,
            $glifo,
            $ponto,
            $posicao,
        ));
    }

    private static function ponto(string $caractere): int
    {
        $bytes = array_values(unpack('C*', $caractere));
        $ponto = count($bytes) === 1 ? $bytes[0] : $bytes[0] & (0x7F >> count($bytes));
        foreach (array_slice($bytes, 1) as $byte) {
            $ponto = $ponto << 6 | ($byte & 0x3F);
        }
        return $ponto;
    }
}

/** The shared object was not found, or cannot be loaded. */
final class BibliotecaAusente extends ErroZel
{
}

/** What the library refused. */
final class Recusa extends ErroZel
{
    /** Null for an answer that is in no table. */
    public readonly ?Codigo $codigo;
    /** "ZEL_CUPOM_EM_ANDAMENTO" */
    public readonly string $nome;
    public readonly string $significado;
    public readonly string $remedio;

    /**
     * `texto` is what the function wrote all the same: a receipt whose PDF failed. `motivo` says which
     * field it was, what was given and what is allowed, or file and system error; it may be empty.
     */
    public function __construct(
        public readonly string $funcao,
        public readonly int $numero,
        public readonly string $texto = '',
        public readonly string $motivo = '',
    ) {
        $this->codigo = Codigo::tryFrom($numero);
        [$this->nome, $this->significado, $this->remedio] = $this->codigo?->descricao()
            ?? ['DESCONHECIDO', 'Código que este pacote não conhece.', ''];
        $porque = $motivo === '' ? '' : "Motivo: $motivo. ";
        parent::__construct(
            "$funcao: {$this->nome} ($numero): {$this->significado} $porque{$this->remedio}",
        );
    }
}

/** @internal */
final class Valores
{
    private const UTF8 = '/\A(?:[\x00-\x7F]|[\xC2-\xDF][\x80-\xBF]|\xE0[\xA0-\xBF][\x80-\xBF]'
        . '|[\xE1-\xEC\xEE\xEF][\x80-\xBF]{2}|\xED[\x80-\x9F][\x80-\xBF]'
        . '|\xF0[\x90-\xBF][\x80-\xBF]{2}|[\xF1-\xF3][\x80-\xBF]{3}|\xF4[\x80-\x8F][\x80-\xBF]{2})/';

    /**
     * ISO-8859-1 of an UTF-8 text, strictly; letters written in two parts are put together first.
     * Refused are characters beyond U+00FF, U+0000, and the controls U+0080 to U+009F, which are nearly
     * always another character set taken for this one.
     */
    public static function texto(string $argumento, string $valor, bool $transliterar): string
    {
        if (preg_match('/[\x80-\xFF\0]/', $valor) === 0) {
            return $valor;
        }
        $valor = strtr($valor, Tabelas::COMPOSICAO);
        $latin1 = '';
        $posicao = 0;
        for ($i = 0; $i < strlen($valor); $i += strlen($c)) {
            ++$posicao;
            if (preg_match(self::UTF8, substr($valor, $i, 4), $achado) !== 1) {
                throw new EntradaRecusada("$argumento: o byte na posição $posicao não é UTF-8");
            }
            $c = $achado[0];
            if ($transliterar && isset(Tabelas::TRANSLITERACAO[$c])) {
                $latin1 .= self::texto($argumento, Tabelas::TRANSLITERACAO[$c], false);
            } elseif ($c === "\0" || ($c >= "\u{80}" && $c < "\u{A0}") || $c > "\u{FF}") {
                throw new TextoInvalido($argumento, $c, $posicao);
            } else {
                $latin1 .= strlen($c) === 1 ? $c : chr((ord($c[0]) & 3) << 6 | (ord($c[1]) & 0x3F));
            }
        }
        return $latin1;
    }

    public static function deLatin1(string $bytes): string
    {
        return preg_replace_callback(
            '/[\x80-\xFF]/',
            fn (array $c) => chr(0xC0 | ord($c[0]) >> 6) . chr(0x80 | (ord($c[0]) & 0x3F)),
            $bytes,
        );
    }

    /** A text that the function would cut, or leave out. */
    public static function conferirTamanho(string $argumento, int $tamanho, int $minimo, int $maximo): void
    {
        if ($tamanho < $minimo || $tamanho > $maximo) {
            $entre = $minimo > 0 ? "de $minimo a $maximo" : "até $maximo";
            $permitido = $minimo === $maximo ? "exatamente $maximo" : $entre;
            throw new EntradaRecusada("$argumento: $tamanho caracteres; permitido: $permitido");
        }
    }

    /** Null is an empty text. */
    public static function decimalOpcional(
        string $argumento,
        int|float|string|null $numero,
        int $casas,
    ): string {
        return $numero === null ? '' : self::decimal($argumento, $numero, $casas);
    }

    /**
     * With a point, at least two decimals and at most `casas`. A number is an int or a text of
     * digits ("12,50"). A float is no exact tenth.
     */
    public static function decimal(string $argumento, int|float|string $numero, int $casas): string
    {
        if (is_float($numero)) {
            throw new \TypeError("$argumento: esperado int ou string, recebido float");
        }
        return self::escrever($argumento, (string) $numero, $casas);
    }

    public static function escrever(string $argumento, string $numero, int $casas): string
    {
        if (preg_match('/\A(-?)0*(\d*)(?:[.,](\d*?)0*)?\z/', $numero, $partes) !== 1
            || !preg_match('/\d/', $numero)) {
            throw new EntradaRecusada("$argumento: \"$numero\" não é um número decimal");
        }
        $decimais = str_pad($partes[3] ?? '', 2, '0');
        $escrito = $partes[1] . ($partes[2] === '' ? '0' : $partes[2]) . '.' . $decimais;
        if (strlen($decimais) > $casas) {
            throw new EntradaRecusada("$argumento: $escrito tem mais de $casas casas decimais");
        }
        if (strlen($escrito) > 15) {
            throw new EntradaRecusada("$argumento: $escrito passa de 15 caracteres");
        }
        return $escrito;
    }

    /** An int of C, which keeps the low bits of a larger one. */
    public static function inteiro(
        string $argumento,
        int $valor,
        int $minimo = -2 ** 31,
        int $maximo = 2 ** 31 - 1,
    ): int {
        if ($valor < $minimo || $valor > $maximo) {
            throw new EntradaRecusada("$argumento: $valor não está entre $minimo e $maximo");
        }
        return $valor;
    }

    /** A file name is bytes of the file system, not ISO-8859-1. */
    public static function caminho(string $argumento, string $nome): string
    {
        if (str_contains($nome, "\0")) {
            throw new EntradaRecusada("$argumento: nome de arquivo com U+0000");
        }
        if (strlen($nome) > 300) {
            throw new EntradaRecusada("$argumento: nome de arquivo com mais de 300 bytes");
        }
        return $nome;
    }

    /** Up to three directories of up to 300 bytes with their final "/", separated by "|". */
    public static function diretorios(string $argumento, array $lista): string
    {
        if (count($lista) < 1 || count($lista) > 3) {
            throw new EntradaRecusada("$argumento: de um a três diretórios");
        }
        $nomes = array_map(fn (string $nome) => rtrim($nome, '/') . '/', $lista);
        foreach ($nomes as $nome) {
            if (str_contains(self::caminho($argumento, $nome), '|')) {
                throw new EntradaRecusada("$argumento: diretório com |");
            }
        }
        return implode('|', $nomes);
    }
}

/** The rate of an item: goods or service with its percentage, or none of it. */
final class Aliquota
{
    private function __construct(
        private readonly string $tipo,
        private readonly int|float|string|null $percentual = null,
    ) {
    }

    public static function mercadoria(int|float|string $percentual): self
    {
        return new self('T', $percentual);
    }

    public static function servico(int|float|string $percentual): self
    {
        return new self('S', $percentual);
    }

    public static function isento(): self
    {
        return new self('I');
    }

    public static function naoIncidencia(): self
    {
        return new self('N');
    }

    public static function substituicao(): self
    {
        return new self('F');
    }

    /** "T1800", "S0500", "I". */
    public function converter(string $argumento): string
    {
        if ($this->percentual === null) {
            return $this->tipo;
        }
        $escrito = Valores::decimal($argumento, $this->percentual, 2);
        if ($escrito[0] === '-' || strlen($escrito) > 5) {
            throw new EntradaRecusada("$argumento: $escrito não está entre 0 e 99,99");
        }
        return $this->tipo . str_pad(str_replace('.', '', $escrito), 4, '0', STR_PAD_LEFT);
    }
}

/** A discount or a surcharge, as an amount or as a percentage; null is none. */
final class Ajuste
{
    private function __construct(
        private readonly string $como,
        private readonly int|float|string $quanto,
    ) {
    }

    public static function desconto(int|float|string $quantia): self
    {
        return new self('D$', $quantia);
    }

    public static function descontoPercentual(int|float|string $percentual): self
    {
        return new self('D%', $percentual);
    }

    public static function acrescimo(int|float|string $quantia): self
    {
        return new self('A$', $quantia);
    }

    public static function acrescimoPercentual(int|float|string $percentual): self
    {
        return new self('A%', $percentual);
    }

    /** `sentido` is "D" or "A" where the function takes one of them alone, otherwise empty. */
    public static function tipo(string $argumento, ?self $ajuste, string $sentido): string
    {
        $como = $ajuste?->como ?? '';
        if (!str_starts_with($como, $sentido)) {
            $qual = $sentido === 'D' ? 'um desconto' : 'um acréscimo';
            throw new EntradaRecusada("$argumento: não é $qual");
        }
        return $como;
    }

    /** An amount is in cents. */
    public static function valor(string $argumento, ?self $ajuste): string
    {
        if ($ajuste === null) {
            return '';
        }
        return Valores::decimal($argumento, $ajuste->quanto, str_ends_with($ajuste->como, '$') ? 2 : 4);
    }
}
