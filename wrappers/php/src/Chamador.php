<?php
// SPDX-License-Identifier: MIT
// The library, loaded once for the process, and one process at a time in its directory.

declare(strict_types=1);

namespace Zel\Felbor;

/** @internal The library as this process has it, with the lock that keeps others waiting. */
final class Processo
{
    private const ESPERA = 30; // seconds

    private static ?self $unico = null;

    private function __construct(
        public readonly string $diretorio,
        public ?\FFI $ffi,
        private $trava,
    ) {
    }

    /** The library first: it gives the receipt back before the next process is let in. */
    public function __destruct()
    {
        $this->ffi = null;
        fclose($this->trava);
    }

    /** The library reads ZEL_DIRETORIO once, so that the first directory is the process's. */
    public static function em(string $diretorio, string $biblioteca): self
    {
        if (self::$unico === null) {
            $trava = self::esperar("$diretorio/zel_felbor.trava");
            $libc = \FFI::cdef('int setenv(const char *nome, const char *valor, int substituir);');
            $libc->setenv('ZEL_DIRETORIO', $diretorio, 1);
            $ffi = \FFI::cdef(file_get_contents(__DIR__ . '/zel_felbor.h'), $biblioteca);
            self::$unico = new self($diretorio, $ffi, $trava);
        }
        if (self::$unico->diretorio !== $diretorio) {
            throw new EntradaRecusada('este processo já trabalha em ' . self::$unico->diretorio);
        }
        return self::$unico;
    }

    /**
     * PHP has no threads to keep apart, but a process for each request: the library lets one of them
     * at a time change the receipt, from its first change to its end.
     */
    private static function esperar(string $arquivo)
    {
        $trava = @fopen($arquivo, 'c');
        if ($trava === false) {
            throw new EntradaRecusada("o diretório não pode ser gravado: $arquivo");
        }
        $fim = microtime(true) + self::ESPERA;
        while (!flock($trava, LOCK_EX | LOCK_NB)) {
            if (microtime(true) > $fim) {
                throw new ErroZel('outro processo não devolve o caixa');
            }
            usleep(5000);
        }
        return $trava;
    }
}

abstract class Chamador
{
    /** Stands for the result buffer among the arguments. */
    protected const SAIDA = [];

    private readonly string $diretorio;
    private readonly Processo $processo;

    /**
     * @param string $diretorio absolute, and exists; the library keeps its files there
     * @param bool $transliterar typographic quotes, dashes, ellipses and blanks become plain ones
     * @param string $biblioteca the shared object, which the first one of a process loads
     */
    public function __construct(
        string $diretorio,
        private readonly bool $transliterar = false,
        string $biblioteca = 'libZEL_FelborFramework.so.1',
    ) {
        Valores::caminho('diretorio', $diretorio);
        if (!str_starts_with($diretorio, '/')) {
            throw new EntradaRecusada("o diretório não é um caminho absoluto: $diretorio");
        }
        if (!is_dir($diretorio)) {
            throw new EntradaRecusada("o diretório não existe: $diretorio");
        }
        $this->diretorio = rtrim($diretorio, '/') ?: '/';
        $this->processo = Processo::em($this->diretorio, $biblioteca);
    }

    /** A file of the data directory: "documentosEnvio.xml". */
    public function arquivo(string $nome): string
    {
        return "{$this->diretorio}/$nome";
    }

    protected function texto(string $argumento, string $valor): string
    {
        return Valores::texto($argumento, $valor, $this->transliterar);
    }

    protected function chamar(string $funcao, int|string ...$argumentos): Codigo
    {
        $resposta = $this->processo->ffi->$funcao(...$argumentos);
        if ($resposta <= 0) {
            throw new Recusa($funcao, $resposta);
        }
        return Codigo::from($resposta);
    }

    protected function verEstado(string $funcao): Estado
    {
        $resposta = $this->processo->ffi->$funcao();
        if ($resposta < 0) {
            throw new Recusa($funcao, $resposta);
        }
        return Estado::from($resposta);
    }

    /** The text that comes back in a buffer of `tamanho` bytes, which takes SAIDA's place. */
    protected function ler(string $funcao, int $tamanho, int|string|array ...$argumentos): string
    {
        return $this->lerEm($funcao, $tamanho, '', Valores::deLatin1(...), $argumentos);
    }

    /** Directories in, the path of the last file out. */
    protected function gravarEm(string $funcao, array $lista, int|string|array ...$argumentos): string
    {
        $entrada = Valores::diretorios('diretorios', $lista);
        $tamanho = max(Tabelas::TAMANHO_DIRETORIOS, strlen($entrada) + 64);
        return $this->lerEm($funcao, $tamanho, $entrada, strval(...), $argumentos);
    }

    private function lerEm(
        string $funcao,
        int $tamanho,
        string $entrada,
        \Closure $decodificar,
        array $argumentos,
    ): string {
        $saida = $this->processo->ffi->new("char[$tamanho]");
        \FFI::memcpy($saida, $entrada, strlen($entrada));
        $trocados = array_map(fn ($a) => $a === self::SAIDA ? $saida : $a, $argumentos);
        $resposta = $this->processo->ffi->$funcao(...$trocados);
        $texto = $decodificar(\FFI::string(\FFI::addr($saida[0])));
        if ($resposta <= 0) {
            throw new Recusa($funcao, $resposta, $texto);
        }
        return $texto;
    }

    protected function bytesDe(string $nome): int
    {
        clearstatcache();
        return is_file($this->arquivo($nome)) ? filesize($this->arquivo($nome)) : 0;
    }

    protected function tamanhoDoUltimo(): int
    {
        return max(Tabelas::TAMANHO_CUPOM, $this->bytesDe('ultimadanfe.bin') + 1);
    }

    /**
     * Bytes that the receipt text of a document takes at most. A scrambled file cannot be counted:
     * its items are at least 256 bytes and its payments 40, as the library writes them.
     */
    protected function tamanhoDoCupom(string $documento, string $retorno, string $url): int
    {
        $xml = self::lerArquivo($documento);
        $doRetorno = $retorno === 'OFFLINE' ? 0 : strlen(self::lerArquivo($retorno));
        if (str_starts_with($xml, '<')) {
            $itens = substr_count($xml, '<det');
            $pagamentos = substr_count($xml, '<pag');
            $maior = $mensagem = max(array_map(strlen(...), explode('<', $xml)));
        } else {
            $itens = intdiv(strlen($xml), 256) + 1;
            $pagamentos = intdiv(strlen($xml), 40) + 1;
            $maior = 1024;
            $mensagem = strlen($xml);
        }
        $via = 16384 + 32 * $maior + 2 * ($mensagem + $this->bytesDe('ArqPersist.bin')) + $doRetorno
            + strlen($url) + $itens * (300 + $maior) + $pagamentos * 100;
        return max(Tabelas::TAMANHO_CUPOM, 2 * $via);
    }

    private static function lerArquivo(string $nome): string
    {
        $conteudo = @file_get_contents(Valores::caminho('arquivo', $nome));
        if ($conteudo === false) {
            throw new EntradaRecusada("$nome: não pôde ser lido");
        }
        return $conteudo;
    }
}
