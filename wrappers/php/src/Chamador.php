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
    private static ?\FFI $libc = null;

    private function __construct(
        public readonly string $diretorio,
        public ?\FFI $ffi,
        private $trava,
        public readonly int $motivos,
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
            $motivos = self::ouvirMotivos();
            $libc->setenv('ZEL_LOG_DESCRITOR', (string) $motivos, 1);
            self::$unico = new self($diretorio, self::carregar($biblioteca), $trava, $motivos);
        }
        if (self::$unico->diretorio !== $diretorio) {
            throw new EntradaRecusada('este processo já trabalha em ' . self::$unico->diretorio);
        }
        return self::$unico;
    }

    private static function carregar(string $biblioteca): \FFI
    {
        try {
            return \FFI::cdef(file_get_contents(__DIR__ . '/zel_felbor.h'), $biblioteca);
        } catch (\FFI\Exception $e) {
            $porque = "a biblioteca não pôde ser carregada: {$e->getMessage()}. " . Tabelas::AUSENTE;
            throw new BibliotecaAusente($porque, 0, $e);
        }
    }

    /** An anonymous file in memory, to which the library writes what it refused last; or -1. */
    private static function ouvirMotivos(): int
    {
        $fechaNoExec = 1; // MFD_CLOEXEC
        try {
            self::$libc = \FFI::cdef('int memfd_create(const char *nome, unsigned int modo);'
                . 'long pread(int descritor, void *bytes, size_t quantos, long lugar);');
            return self::$libc->memfd_create(Tabelas::DESCRITOR, $fechaNoExec);
        } catch (\FFI\Exception) {
            return -1;
        }
    }

    /**
     * The reason that the call just made was refused for; empty when the descriptor is no longer that
     * file, or holds what another process wrote.
     */
    public function motivo(string $funcao, int $numero): string
    {
        $arquivo = "/proc/self/fd/{$this->motivos}";
        if (@readlink($arquivo) !== '/memfd:' . Tabelas::DESCRITOR . ' (deleted)') {
            return '';
        }
        $bytes = \FFI::new('char[4096]');
        $lidos = self::$libc->pread($this->motivos, $bytes, 4096, 0);
        $linha = $lidos > 0 ? explode("\n", \FFI::string($bytes, $lidos))[0] : '';
        $inicio = '[' . getmypid() . "] $funcao: $numero ";
        $lugar = str_starts_with($linha, $inicio) ? strpos($linha, ': ', strlen($inicio)) : false;
        return $lugar === false ? '' : substr($linha, $lugar + 2);
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
     * @param bool $cortar what does not fit is handed over: the library cuts it or leaves it out
     */
    public function __construct(
        string $diretorio,
        private readonly bool $transliterar = false,
        string $biblioteca = 'libZEL_FelborFramework.so.1',
        protected readonly bool $cortar = false,
    ) {
        if (!extension_loaded('ffi')) {
            throw new ErroZel('falta a extensão FFI: apt-get install php-cli, e ffi.enable=1 no php.ini');
        }
        Valores::caminho('diretorio', $diretorio);
        if (!str_starts_with($diretorio, '/')) {
            throw new EntradaRecusada("o diretório não é um caminho absoluto: $diretorio");
        }
        if (!is_dir($diretorio)) {
            throw new EntradaRecusada("o diretório não existe: $diretorio; crie-o (mkdir), com permissão "
                . 'de escrita para quem roda o caixa');
        }
        $this->diretorio = rtrim($diretorio, '/') ?: '/';
        $this->processo = Processo::em($this->diretorio, $biblioteca);
    }

    /** A file of the data directory: "documentosEnvio.xml". */
    public function arquivo(string $nome): string
    {
        return "{$this->diretorio}/$nome";
    }

    /** `maximo` 0: of any length. An empty text stands for none. */
    protected function texto(string $argumento, string $valor, int $minimo = 0, int $maximo = 0): string
    {
        $escrito = Valores::texto($argumento, $valor, $this->transliterar);
        if ($maximo > 0 && $escrito !== '' && !$this->cortar) {
            Valores::conferirTamanho($argumento, strlen($escrito), $minimo, $maximo);
        }
        return $escrito;
    }

    protected function obrigatorio(string $argumento, string $valor, int $minimo, int $maximo): string
    {
        if ($valor === '' && !$this->cortar) {
            Valores::conferirTamanho($argumento, 0, $minimo, $maximo);
        }
        return $this->texto($argumento, $valor, $minimo, $maximo);
    }

    /** A CPF or a CNPJ, or none. */
    protected function documento(string $argumento, string $valor): string
    {
        if ($this->cortar || $valor === '') {
            return $this->texto($argumento, $valor);
        }
        return Identificacao::documento($argumento, $valor);
    }

    protected function identificacao(string $funcao, Consumidor $consumidor): string
    {
        return Identificacao::de($funcao, $consumidor, $this->cortar);
    }

    protected function chamar(string $funcao, int|string ...$argumentos): Codigo
    {
        $resposta = $this->processo->ffi->$funcao(...$argumentos);
        if ($resposta <= 0) {
            throw new Recusa($funcao, $resposta, '', $this->processo->motivo($funcao, $resposta));
        }
        return Codigo::from($resposta);
    }

    protected function verEstado(string $funcao): Estado
    {
        $resposta = $this->processo->ffi->$funcao();
        if ($resposta < 0) {
            throw new Recusa($funcao, $resposta, '', $this->processo->motivo($funcao, $resposta));
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
            throw new Recusa($funcao, $resposta, $texto, $this->processo->motivo($funcao, $resposta));
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
     * A document and its return in ISO-8859-1, the latter null without one ("OFFLINE"), once the
     * receipt may be printed.
     */
    protected static function lerParaImprimir(
        string $documento,
        string $retorno,
        bool $cancelamento,
        bool $semAutorizacao,
    ): array {
        $xml = self::lerArquivo($documento);
        $resposta = $retorno === 'OFFLINE' ? null : self::lerArquivo($retorno);
        if (!$semAutorizacao) {
            Autorizacao::conferir($xml, $resposta, $cancelamento);
        }
        return [$xml, $resposta];
    }

    /**
     * Bytes that the receipt text of a document takes at most. A scrambled file cannot be counted:
     * its items are at least 256 bytes and its payments 40, as the library writes them.
     */
    protected function tamanhoDoCupom(string $xml, ?string $retorno, string $url): int
    {
        $doRetorno = strlen($retorno ?? '');
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

    /** ArqPersist.bin in ISO-8859-1. */
    protected function lerPersistido(): string
    {
        if ($this->bytesDe('ArqPersist.bin') > 16 << 20) {
            throw new EntradaRecusada('ArqPersist.bin: grande demais');
        }
        return self::lerArquivo($this->arquivo('ArqPersist.bin'));
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
