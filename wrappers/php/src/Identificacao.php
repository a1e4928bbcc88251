<?php
// SPDX-License-Identifier: MIT
// Who a receipt is for: what the functions would take for something else, or leave out without a word,
// is refused.

declare(strict_types=1);

namespace Zel\Felbor;

/** @internal */
final class Identificacao
{
    private const IDENTIFICAR = 'aCFIdentificarConsumidor_ZEL';
    private const ENDERECO = ['numero', 'bairro', 'codigoMunicipio', 'municipio', 'uf', 'cep'];

    /** The check digit after `digitos`, whose weights go from 2 to `maior`, from the right. */
    private static function digito(string $digitos, int $maior): string
    {
        $soma = 0;
        foreach (str_split(strrev($digitos)) as $i => $digito) {
            $soma += (int) $digito * (2 + $i % ($maior - 1));
        }
        return (string) ($soma % 11 < 2 ? 0 : 11 - $soma % 11);
    }

    private static function confere(string $digitos): bool
    {
        $maior = strlen($digitos) === 11 ? 11 : 9;
        $inteiro = substr($digitos, 0, -2);
        $inteiro .= self::digito($inteiro, $maior);
        $inteiro .= self::digito($inteiro, $maior);
        return $inteiro === $digitos && trim($digitos, $digitos[0]) !== '';
    }

    private static function soDigitos(string $argumento, string $valor): string
    {
        $digitos = str_replace([' ', '.', '-', '/'], '', $valor);
        if (preg_match('/\A[0-9]+\z/', $digitos) !== 1) {
            throw new EntradaRecusada("$argumento: só dígitos, com ou sem ponto, barra e traço");
        }
        return $digitos;
    }

    /** The digits of a CPF, or of a CNPJ: of either of them in a "documento". */
    public static function documento(string $argumento, string $valor): string
    {
        $digitos = self::soDigitos($argumento, $valor);
        $tamanhos = ['cpf' => [11], 'cnpj' => [14]][$argumento] ?? [11, 14];
        $tamanho = strlen($digitos);
        if (!in_array($tamanho, $tamanhos, true)) {
            throw new EntradaRecusada("$argumento: $tamanho dígitos; um CPF tem 11, um CNPJ 14");
        }
        if (!self::confere($digitos)) {
            throw new EntradaRecusada("$argumento: os dígitos verificadores não conferem");
        }
        return $digitos;
    }

    private static function estrangeiro(string $funcao, string $valor): string
    {
        $digitos = self::soDigitos('estrangeiro', $valor);
        $tamanho = strlen($digitos);
        if ($tamanho < 5 || $tamanho > 20 || in_array($tamanho, [11, 14], true)) {
            throw new EntradaRecusada("estrangeiro: $tamanho dígitos; permitido: de 5 a 20, e não 11 nem "
                . '14, que seriam um CPF ou um CNPJ');
        }
        if ($funcao === self::IDENTIFICAR) {
            throw new EntradaRecusada("estrangeiro: $funcao não o grava; informe-o ao abrir o cupom");
        }
        return $digitos;
    }

    /** What would not stand in the document. */
    private static function conferirPerdas(string $funcao, Consumidor $c, bool $identificado): void
    {
        $campos = ['nome', 'logradouro', ...self::ENDERECO, 'email'];
        $dados = array_values(array_filter($campos, fn (string $campo) => $c->$campo !== ''));
        if ($dados !== [] && !$identificado) {
            throw new EntradaRecusada("{$dados[0]}: sem CPF, CNPJ ou documento de estrangeiro o "
                . 'consumidor não é gravado');
        }
        if ($c->email !== '' && $funcao !== self::IDENTIFICAR) {
            throw new EntradaRecusada("email: $funcao não o grava; chame identificarConsumidor");
        }
        $endereco = array_values(array_intersect($dados, self::ENDERECO));
        if ($endereco !== [] && $c->logradouro === '') {
            throw new EntradaRecusada("{$endereco[0]}: sem logradouro o endereço não é gravado");
        }
    }

    /** What `funcao` is given as the document of the consumer. */
    public static function de(string $funcao, Consumidor $c, bool $cortar): string
    {
        $campos = ['documento', 'cpf', 'cnpj', 'estrangeiro'];
        $dadas = array_values(array_filter($campos, fn (string $campo) => $c->$campo !== ''));
        if (count($dadas) > 1) {
            throw new EntradaRecusada('consumidor: dê um só entre documento, cpf, cnpj e estrangeiro');
        }
        if (!$cortar) {
            self::conferirPerdas($funcao, $c, $dadas !== []);
        }
        if ($dadas === []) {
            return '';
        }
        $valor = $c->{$dadas[0]};
        if ($cortar) {
            return Valores::texto($dadas[0], $valor, false);
        }
        return $dadas[0] === 'estrangeiro' ? self::estrangeiro($funcao, $valor)
            : self::documento($dadas[0], $valor);
    }
}
