<?php
// SPDX-License-Identifier: MIT
// Whether a receipt may be given to a customer: of a document that the authority authorized, or of one
// of contingency; without fiscal value nothing is promised.

declare(strict_types=1);

namespace Zel\Felbor;

/** @internal */
final class Autorizacao
{
    private const CONTORNO = '; para um ensaio, semAutorizacao';

    /** Of the sending component's form, or of the authority's, whose last status is the document's. */
    private static function situacao(string $retorno): string
    {
        foreach (['sitcodigo', 'cstat'] as $marca) {
            if (preg_match_all("/<$marca>\\s*([0-9]*)/i", $retorno, $vistas) > 0) {
                return end($vistas[1]);
            }
        }
        return '';
    }

    /** Texts in ISO-8859-1; `retorno` is null for "OFFLINE". */
    public static function conferir(string $documento, ?string $retorno, bool $cancelamento): void
    {
        if ($retorno === null) {
            $contingencia = !str_starts_with($documento, '<')
                || preg_match('/Id="NFe[0-9]{34}9/', $documento) === 1;
            if (str_contains($documento, '<tpAmb>1</tpAmb>') && !$contingencia) {
                throw new EntradaRecusada('retorno: OFFLINE só serve a um documento de contingência; '
                    . 'este ainda não tem a resposta da SEFAZ' . self::CONTORNO);
            }
            return;
        }
        $situacao = self::situacao($retorno);
        if (!in_array($situacao, $cancelamento ? ['135', '155'] : ['100', '150'], true)) {
            throw new EntradaRecusada('retorno: a SEFAZ não '
                . ($cancelamento ? 'registrou o cancelamento' : 'autorizou a venda')
                . ' (SitCodigo ' . ($situacao === '' ? 'ausente' : $situacao) . ')' . self::CONTORNO);
        }
    }
}
