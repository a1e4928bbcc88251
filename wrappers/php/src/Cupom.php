<?php
// SPDX-License-Identifier: MIT

declare(strict_types=1);

namespace Zel\Felbor;

/**
 * The receipt of one data directory, which is the process's. Text is UTF-8, converted to ISO-8859-1
 * strictly; file names are not converted. What each function does, and in which state, is in
 * ZEL_FelborFramework.h.
 */
final class Cupom extends Operacoes
{
    /**
     * aCFContingenciaUltimaNota_ZEL of kind 1 (as the closing does), 3 or 5 (in contingency);
     * answers the document.
     */
    public function reemitir(int $tipo): string
    {
        $tamanho = Tabelas::TAMANHO_DOCUMENTO + 65536 + 2 * $this->bytesDe('ArqPersist.bin');
        $tipo = Valores::inteiro('tipo', $tipo);
        return $this->ler('aCFContingenciaUltimaNota_ZEL', $tamanho, $tipo, self::SAIDA);
    }

    /**
     * aCFContingenciaUltimaNota_ZEL of kind 4: KEY.ctg in up to three directories; answers the path
     * of the last file.
     *
     * @param string[] $diretorios
     */
    public function contingencia(array $diretorios): string
    {
        return $this->gravarEm('aCFContingenciaUltimaNota_ZEL', $diretorios, 4, self::SAIDA);
    }

    /**
     * The receipt text of a sale with its printer mark-up.
     *
     * @param string $retorno the file of the tax authority's answer, or "OFFLINE"
     * @param int $colunas 42 or 48
     * @param string $urlQrcode the content of the QR code, empty to have it built
     */
    public function imprimir(
        string $arquivoXml,
        string $retorno = 'OFFLINE',
        int $colunas = 48,
        string $urlQrcode = '',
    ): string {
        return $this->formatar($arquivoXml, $retorno, $urlQrcode, $colunas, 1);
    }

    /** The same of a cancellation request. */
    public function imprimirCancelamento(
        string $arquivoXml,
        string $retorno = 'OFFLINE',
        int $colunas = 48,
    ): string {
        return $this->formatar($arquivoXml, $retorno, '', $colunas, 5);
    }

    private function formatar(
        string $xml,
        string $retorno,
        string $url,
        int $colunas,
        int $tipo,
    ): string {
        return $this->ler(
            'GerarArquivoFormatadoNF_ZEL',
            $this->tamanhoDoCupom($xml, $retorno, $url),
            Valores::caminho('arquivoXml', $xml),
            Valores::caminho('arquivoRetorno', $retorno),
            $this->texto('urlQrcode', $url),
            Valores::inteiro('colunas', $colunas),
            $tipo,
            '',
            self::SAIDA,
        );
    }
}
