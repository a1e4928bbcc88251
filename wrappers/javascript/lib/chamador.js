// SPDX-License-Identifier: MIT
// The library, loaded once for the process, and one call of it at a time.
'use strict';

const fs = require('node:fs');
const path = require('node:path');
const { isMainThread, getEnvironmentData, setEnvironmentData } = require('node:worker_threads');
const koffi = require('koffi');
const { conferirAutorizacao } = require('./autorizacao.js');
const consumidores = require('./consumidor.js');
const {
  AUSENTE, Codigo, DESCRITOR, PROTOTIPOS, TAMANHOS,
} = require('./tabelas.js');
const valores = require('./valores.js');

const {
  BibliotecaAusente, EntradaRecusada, ErroZel, Recusa,
} = valores;
const SAIDA = Symbol('saida'); // stands for the result buffer among the arguments
const VAZIO = Buffer.from([0]);
const PARTILHADO = 'zel_felbor'; // what the threads of a process share
const MAIOR_PERSISTIDO = 16 * 1024 * 1024;
const ESPERA = 60000; // milliseconds for the call of another thread

let funcoes = null;

// The library reads ZEL_DIRETORIO once, so that the first directory is the process's; only the main
// thread can set it. Workers started afterwards find the directory and the lock.
function processo(diretorio) {
  let dados = getEnvironmentData(PARTILHADO);
  if (dados === undefined) {
    if (!isMainThread) {
      throw new EntradaRecusada('crie um Cupom na thread principal antes de iniciar as outras');
    }
    process.env.ZEL_DIRETORIO = diretorio;
    dados = { diretorio, motivos: ouvirMotivos(), trava: new SharedArrayBuffer(4) };
    setEnvironmentData(PARTILHADO, dados);
  }
  if (dados.diretorio !== diretorio) {
    throw new EntradaRecusada(`este processo já trabalha em ${dados.diretorio}`);
  }
  return { motivos: dados.motivos, trava: new Int32Array(dados.trava) };
}

// An anonymous file in memory, to which the library writes what it refused last; -1 where there is
// no such thing.
function ouvirMotivos() {
  try {
    const criar = koffi.load('libc.so.6').func('int memfd_create(const char *nome, unsigned int modo)');
    const numero = criar(DESCRITOR, 1); // MFD_CLOEXEC
    process.env.ZEL_LOG_DESCRITOR = String(numero);
    return numero;
  } catch {
    return -1;
  }
}

// The reason that the call just made was refused for; empty when the descriptor is no longer that
// file, or holds what another process wrote.
function motivoDe(motivos, funcao, codigo) {
  try {
    const nome = `/proc/self/fd/${motivos}`;
    if (fs.readlinkSync(nome) !== `/memfd:${DESCRITOR} (deleted)`) return '';
    const [linha] = fs.readFileSync(nome, 'utf8').split('\n');
    if (!linha.startsWith(`[${process.pid}] ${funcao}: ${codigo} `)) return '';
    return linha.split(': ').slice(2).join(': ');
  } catch {
    return '';
  }
}

function carregar(biblioteca) {
  if (funcoes !== null) return;
  let lib;
  try {
    lib = koffi.load(biblioteca);
  } catch (erro) {
    const porque = `${biblioteca}: ${erro.message}`;
    throw new BibliotecaAusente(`a biblioteca não pôde ser carregada: ${porque}. ${AUSENTE}`);
  }
  funcoes = new Map(PROTOTIPOS.map(([nome, prototipo]) => [nome, lib.func(prototipo)]));
}

const OPCOES = ['transliterar', 'cortar', 'biblioteca'];

class Chamador {
  // `diretorio` is absolute and exists; the library keeps its files there.
  constructor(diretorio, opcoes = {}) {
    const {
      transliterar = false, cortar = false, biblioteca = 'libZEL_FelborFramework.so.1',
    } = valores.conferirChaves('opcoes', opcoes, OPCOES);
    if (!path.isAbsolute(diretorio)) {
      throw new EntradaRecusada(`o diretório não é um caminho absoluto: ${diretorio}`);
    }
    if (!fs.statSync(diretorio, { throwIfNoEntry: false })?.isDirectory()) {
      throw new EntradaRecusada(`o diretório não existe: ${diretorio}; crie-o (mkdir), com permissão `
        + 'de escrita para quem roda o caixa');
    }
    this.diretorio = path.resolve(diretorio);
    Object.assign(this, { transliterar, cortar });
    const { motivos, trava } = processo(this.diretorio);
    this._motivos = motivos;
    this._trava = trava;
    carregar(biblioteca);
  }

  // A file of the data directory: "documentosEnvio.xml".
  arquivo(nome) {
    return path.join(this.diretorio, nome);
  }

  // `maximo` 0: of any length. An empty text stands for none.
  _texto(argumento, valor, minimo = 0, maximo = 0) {
    const escrito = valores.texto(argumento, valor, this.transliterar);
    const tamanho = escrito.length - 1;
    if (maximo > 0 && tamanho > 0 && !this.cortar) {
      valores.conferirTamanho(argumento, tamanho, minimo, maximo);
    }
    return escrito;
  }

  _obrigatorio(argumento, valor, minimo, maximo) {
    if (valor === '' && !this.cortar) valores.conferirTamanho(argumento, 0, minimo, maximo);
    return this._texto(argumento, valor, minimo, maximo);
  }

  // A CPF or a CNPJ, or none.
  _documento(argumento, valor) {
    if (this.cortar || valor === '') return this._texto(argumento, valor);
    return consumidores.documento(argumento, valor);
  }

  _identificacao(funcao, consumidor) {
    return consumidores.identificacao(funcao, consumidor, this.cortar);
  }

  // The answer; below `menor` it is a refusal, with what `texto` reads. A worker that is terminated
  // within a call does not give the lock back: hence the time limit.
  _invocar(funcao, argumentos, texto = () => '', menor = Codigo.OK) {
    while (Atomics.compareExchange(this._trava, 0, 0, 1) !== 0) {
      if (Atomics.wait(this._trava, 0, 1, ESPERA) === 'timed-out') {
        throw new ErroZel('outra thread não devolve a biblioteca');
      }
    }
    try {
      const resposta = funcoes.get(funcao)(...argumentos);
      if (resposta >= menor) return resposta;
      throw new Recusa(funcao, resposta, texto(), motivoDe(this._motivos, funcao, resposta));
    } finally {
      Atomics.store(this._trava, 0, 0);
      Atomics.notify(this._trava, 0, 1);
    }
  }

  _chamar(funcao, ...argumentos) {
    return this._invocar(funcao, argumentos);
  }

  _estado(funcao) {
    return this._invocar(funcao, [], undefined, 0);
  }

  // The text that comes back in a buffer of `tamanho` bytes, which takes SAIDA's place.
  _ler(funcao, tamanho, ...argumentos) {
    return this._lerEm(funcao, Buffer.alloc(tamanho), 'latin1', argumentos);
  }

  // Directories in, the path of the last file out.
  _gravarEm(funcao, lista, ...argumentos) {
    const entrada = valores.diretorios('diretorios', lista);
    const saida = Buffer.alloc(Math.max(TAMANHOS.ZEL_TAMANHO_DIRETORIOS, entrada.length + 64));
    entrada.copy(saida);
    return this._lerEm(funcao, saida, 'utf8', argumentos);
  }

  _lerEm(funcao, saida, codificacao, argumentos) {
    const ler = () => saida.toString(codificacao, 0, saida.indexOf(0));
    this._invocar(funcao, argumentos.map((a) => (a === SAIDA ? saida : a)), ler);
    return ler();
  }

  _bytesDe(nome) {
    return fs.statSync(this.arquivo(nome), { throwIfNoEntry: false })?.size ?? 0;
  }

  // ArqPersist.bin in ISO-8859-1.
  _lerPersistido() {
    if (this._bytesDe('ArqPersist.bin') > MAIOR_PERSISTIDO) {
      throw new EntradaRecusada('ArqPersist.bin: grande demais');
    }
    return lerArquivo(this.arquivo('ArqPersist.bin')).toString('latin1');
  }

  _tamanhoDoUltimo() {
    return Math.max(TAMANHOS.ZEL_TAMANHO_CUPOM, this._bytesDe('ultimadanfe.bin') + 1);
  }

  // Both files in ISO-8859-1, once the receipt may be printed.
  _lerParaImprimir(documento, retorno, cancelamento, semAutorizacao) {
    const xml = lerArquivo(documento).toString('latin1');
    const resposta = retorno === 'OFFLINE' ? null : lerArquivo(retorno).toString('latin1');
    if (!semAutorizacao) conferirAutorizacao(xml, resposta, cancelamento);
    return [xml, resposta ?? ''];
  }

  // Bytes that the receipt text of a document takes at most. A scrambled file cannot be counted: its
  // items are at least 256 bytes and its payments 40, as the library writes them.
  _tamanhoDoCupom(xml, retorno, url) {
    let itens = Math.floor(xml.length / 256) + 1;
    let pagamentos = Math.floor(xml.length / 40) + 1;
    let maior = 1024;
    let mensagem = xml.length;
    if (xml.startsWith('<')) {
      const partes = xml.split('<');
      itens = partes.filter((parte) => parte.startsWith('det')).length;
      pagamentos = partes.filter((parte) => parte.startsWith('pag')).length;
      maior = partes.reduce((ate, parte) => Math.max(ate, parte.length), 0);
      mensagem = maior;
    }
    const via = 16384 + 32 * maior + 2 * (mensagem + this._bytesDe('ArqPersist.bin')) + retorno.length
      + url.length + itens * (300 + maior) + pagamentos * 100;
    return Math.max(TAMANHOS.ZEL_TAMANHO_CUPOM, 2 * via);
  }
}

function lerArquivo(nome) {
  try {
    return fs.readFileSync(nome);
  } catch (erro) {
    throw new EntradaRecusada(`${nome}: não pôde ser lido: ${erro.code}`);
  }
}

module.exports = { Chamador, SAIDA, VAZIO };
