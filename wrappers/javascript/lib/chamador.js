// SPDX-License-Identifier: MIT
// The library, loaded once for the process, and one call of it at a time.
'use strict';

const fs = require('node:fs');
const path = require('node:path');
const { isMainThread, getEnvironmentData, setEnvironmentData } = require('node:worker_threads');
const koffi = require('koffi');
const { Codigo, PROTOTIPOS, TAMANHOS } = require('./tabelas.js');
const valores = require('./valores.js');

const { EntradaRecusada, ErroZel, Recusa } = valores;
const SAIDA = Symbol('saida'); // stands for the result buffer among the arguments
const VAZIO = Buffer.from([0]);
const PARTILHADO = 'zel_felbor'; // what the threads of a process share
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
    dados = { diretorio, trava: new SharedArrayBuffer(4) };
    setEnvironmentData(PARTILHADO, dados);
  }
  if (dados.diretorio !== diretorio) {
    throw new EntradaRecusada(`este processo já trabalha em ${dados.diretorio}`);
  }
  return new Int32Array(dados.trava);
}

function carregar(biblioteca) {
  if (funcoes !== null) return;
  const lib = koffi.load(biblioteca);
  funcoes = new Map(PROTOTIPOS.map(([nome, prototipo]) => [nome, lib.func(prototipo)]));
}

class Chamador {
  // `diretorio` is absolute and exists; the library keeps its files there.
  constructor(
    diretorio,
    { transliterar = false, biblioteca = 'libZEL_FelborFramework.so.1' } = {},
  ) {
    if (!path.isAbsolute(diretorio)) {
      throw new EntradaRecusada(`o diretório não é um caminho absoluto: ${diretorio}`);
    }
    if (!fs.statSync(diretorio, { throwIfNoEntry: false })?.isDirectory()) {
      throw new EntradaRecusada(`o diretório não existe: ${diretorio}`);
    }
    this.diretorio = path.resolve(diretorio);
    this.transliterar = transliterar;
    this._trava = processo(this.diretorio);
    carregar(biblioteca);
  }

  // A file of the data directory: "documentosEnvio.xml".
  arquivo(nome) {
    return path.join(this.diretorio, nome);
  }

  _texto(argumento, valor) {
    return valores.texto(argumento, valor, this.transliterar);
  }

  // A worker that is terminated within a call does not give the lock back: hence the time limit.
  _invocar(funcao, argumentos) {
    while (Atomics.compareExchange(this._trava, 0, 0, 1) !== 0) {
      if (Atomics.wait(this._trava, 0, 1, ESPERA) === 'timed-out') {
        throw new ErroZel('outra thread não devolve a biblioteca');
      }
    }
    try {
      return funcoes.get(funcao)(...argumentos);
    } finally {
      Atomics.store(this._trava, 0, 0);
      Atomics.notify(this._trava, 0, 1);
    }
  }

  _chamar(funcao, ...argumentos) {
    const resposta = this._invocar(funcao, argumentos);
    if (resposta < Codigo.OK) throw new Recusa(funcao, resposta);
    return resposta;
  }

  _estado(funcao) {
    const resposta = this._invocar(funcao, []);
    if (resposta < 0) throw new Recusa(funcao, resposta);
    return resposta;
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
    const resposta = this._invocar(funcao, argumentos.map((a) => (a === SAIDA ? saida : a)));
    const texto = saida.toString(codificacao, 0, saida.indexOf(0));
    if (resposta < Codigo.OK) throw new Recusa(funcao, resposta, texto);
    return texto;
  }

  _bytesDe(nome) {
    return fs.statSync(this.arquivo(nome), { throwIfNoEntry: false })?.size ?? 0;
  }

  _tamanhoDoUltimo() {
    return Math.max(TAMANHOS.ZEL_TAMANHO_CUPOM, this._bytesDe('ultimadanfe.bin') + 1);
  }

  // Bytes that the receipt text of a document takes at most. A scrambled file cannot be counted: its
  // items are at least 256 bytes and its payments 40, as the library writes them.
  _tamanhoDoCupom(documento, retorno, url) {
    const xml = lerArquivo(documento).toString('latin1');
    const doRetorno = retorno === 'OFFLINE' ? 0 : lerArquivo(retorno).length;
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
    const via = 16384 + 32 * maior + 2 * (mensagem + this._bytesDe('ArqPersist.bin')) + doRetorno
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
