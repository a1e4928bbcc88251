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
     * The receipt in progress, for a till that was restarted; one that was closed is there until the
     * next is opened. Null without a receipt. The library completes first what a process that died
     * left behind.
     */
    public function lerAndamento(): ?Andamento
    {
        $troco = $this->retornarValor('CONFIGURACAO\TrocoUltimaNFCe');
        $estado = $this->verificarStatus();
        if ($estado->value < Estado::Aberto->value || $estado->value > Estado::Encerrado->value) {
            return null;
        }
        $pago = $estado->value >= Estado::Pago->value;
        return new Andamento($this->lerPersistido(), $estado, $pago ? $troco : '');
    }

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

    /** regAlterarValor_ZEL; a value that the key does not keep whole is taken back and refused. */
    public function alterarValor(string $chave, string $valor): void
    {
        $antes = $this->cortar ? '' : $this->lerOuVazio($chave);
        parent::alterarValor($chave, $valor);
        if ($this->cortar) {
            return;
        }
        $guardado = $this->retornarValor($chave);
        $dado = $this->texto('valor', $valor);
        if ($guardado !== Valores::deLatin1($dado)) {
            parent::alterarValor($chave, $antes);
            throw new EntradaRecusada(sprintf(
                'valor: %d caracteres, de que %s guarda %d; nada mudou',
                strlen($dado),
                $chave,
                strlen(Valores::texto('valor', $guardado, false)),
            ));
        }
    }

    /** That there is no such key, the function that changes it says. */
    private function lerOuVazio(string $chave): string
    {
        try {
            return $this->retornarValor($chave);
        } catch (Recusa) {
            return '';
        }
    }

    /**
     * The receipt text of a sale with its printer mark-up.
     *
     * @param string $retorno the file of the tax authority's answer, which has to authorize the sale,
     *     or "OFFLINE" for a document of contingency or without fiscal value
     * @param int $colunas 42 or 48
     * @param string $urlQrcode the content of the QR code, empty to have it built
     * @param bool $semAutorizacao lays any other document out, too, for a trial
     */
    public function imprimir(
        string $arquivoXml,
        string $retorno,
        int $colunas = 48,
        string $urlQrcode = '',
        bool $semAutorizacao = false,
    ): string {
        return $this->formatar($arquivoXml, $retorno, $urlQrcode, $colunas, 1, $semAutorizacao);
    }

    /** The same of a cancellation request, which the answer has to have registered. */
    public function imprimirCancelamento(
        string $arquivoXml,
        string $retorno,
        int $colunas = 48,
        bool $semAutorizacao = false,
    ): string {
        return $this->formatar($arquivoXml, $retorno, '', $colunas, 5, $semAutorizacao);
    }

    private function formatar(
        string $xml,
        string $retorno,
        string $url,
        int $colunas,
        int $tipo,
        bool $semAutorizacao,
    ): string {
        $documento = Valores::caminho('arquivoXml', $xml);
        $resposta = Valores::caminho('arquivoRetorno', $retorno);
        $lidos = self::lerParaImprimir($xml, $retorno, $tipo === 5, $semAutorizacao);
        return $this->ler(
            'GerarArquivoFormatadoNF_ZEL',
            $this->tamanhoDoCupom($lidos[0], $lidos[1], $url),
            $documento,
            $resposta,
            $this->texto('urlQrcode', $url),
            Valores::inteiro('colunas', $colunas),
            $tipo,
            '',
            self::SAIDA,
        );
    }
}
