// SPDX-License-Identifier: MIT
// What is converted on the way to the library; each result is a Buffer that ends in a zero byte.
'use strict';

const { CODIGOS, TRANSLITERACAO } = require('./tabelas.js');

// Whatever this package refuses.
class ErroZel extends Error {
  get name() {
    return this.constructor.name;
  }
}

// An argument that cannot be handed to the library; nothing was called.
class EntradaRecusada extends ErroZel {}

// A character that ISO-8859-1 does not have: the character, its position from 1, its argument.
class TextoInvalido extends EntradaRecusada {
  constructor(argumento, caractere, posicao) {
    const codigo = caractere.codePointAt(0);
    const glifo = codigo === 0 || /[\p{Cc}\p{Cs}]/u.test(caractere) ? '' : ` "${caractere}"`;
    const ponto = codigo.toString(16).toUpperCase().padStart(4, '0');
    const lugar = `na posição ${posicao} não existe em ISO-8859-1`;
    super(`${argumento}: o caractere${glifo} (U+${ponto}) ${lugar}`);
    Object.assign(this, { argumento, caractere, posicao });
  }
}

// The shared object was not found, or cannot be loaded.
class BibliotecaAusente extends ErroZel {}

// What the library refused: code, name, meaning and remedy, and the function; `motivo` says which
// field it was, what was given and what is allowed, or file and system error. `texto` is what the
// function wrote all the same: a receipt whose PDF failed.
class Recusa extends ErroZel {
  constructor(funcao, codigo, texto = '', motivo = '') {
    const { nome, significado, remedio } = CODIGOS.get(codigo) ?? {
      nome: 'DESCONHECIDO',
      significado: 'Código que este pacote não conhece.',
      remedio: '',
    };
    const porque = motivo === '' ? '' : `Motivo: ${motivo}. `;
    super(`${funcao}: ${nome} (${codigo}): ${significado} ${porque}${remedio}`);
    Object.assign(this, {
      funcao, codigo, nome, significado, remedio, texto, motivo,
    });
  }
}

const terminado = (texto, codificacao = 'latin1') => Buffer.from(`${texto}\0`, codificacao);

// A key that nothing is known of would be lost without a word.
function conferirChaves(argumento, objeto, conhecidas) {
  if (typeof objeto !== 'object' || objeto === null) {
    throw new TypeError(`${argumento}: esperado um objeto, recebido ${objeto === null ? 'null' : typeof objeto}`);
  }
  const outra = Object.keys(objeto).find((chave) => !conhecidas.includes(chave));
  if (outra !== undefined) {
    throw new TypeError(`${argumento}: não há ${outra}; há ${conhecidas.join(', ')}`);
  }
  return objeto;
}

// ISO-8859-1, strictly; letters written in two parts are put together first. Refused are characters beyond U+00FF, U+0000, and the controls U+0080 to
// U+009F, which are nearly always another character set taken for this one.
function texto(argumento, valor, transliterar) {
  if (typeof valor !== 'string') {
    throw new TypeError(`${argumento}: esperado string, recebido ${typeof valor}`);
  }
  let escrito = '';
  let posicao = 0;
  for (const c of valor.normalize('NFC')) {
    ++posicao;
    if (transliterar && TRANSLITERACAO.has(c)) {
      escrito += TRANSLITERACAO.get(c);
    } else if (c > '\xff' || c === '\0' || (c >= '\x80' && c < '\xa0')) {
      throw new TextoInvalido(argumento, c, posicao);
    } else {
      escrito += c;
    }
  }
  return terminado(escrito);
}

// A text that the function would cut, or leave out.
function conferirTamanho(argumento, tamanho, minimo, maximo) {
  if (tamanho >= minimo && tamanho <= maximo) return;
  const entre = minimo > 0 ? `de ${minimo} a ${maximo}` : `até ${maximo}`;
  const permitido = minimo === maximo ? `exatamente ${maximo}` : entre;
  throw new EntradaRecusada(`${argumento}: ${tamanho} caracteres; permitido: ${permitido}`);
}

// A decimal number: an integer and the number of its decimals. Made from a text ("12,50"), a BigInt
// or a whole number; 0.1 as a number is not exactly a tenth, and is a TypeError.
class Decimal {
  constructor(valor, casas = 0) {
    if (typeof valor === 'string') {
      const partes = /^(-?)(\d+(?:[.,]\d*)?|[.,]\d+)$/.exec(valor);
      if (partes === null || valor.length > 40) throw new TypeError(`não é um decimal: "${valor}"`);
      const [inteiros, decimais = ''] = partes[2].split(/[.,]/);
      this.unidades = BigInt(`${partes[1]}${inteiros}${decimais}`);
      this.casas = decimais.length;
    } else if (typeof valor === 'bigint' || Number.isSafeInteger(valor)) {
      this.unidades = BigInt(valor);
      this.casas = casas;
    } else {
      throw new TypeError(`não é um decimal exato: ${valor}; use um texto, Decimal ou BigInt`);
    }
    Object.freeze(this);
  }

  static de(valor) {
    return valor instanceof Decimal ? valor : new Decimal(valor);
  }

  static centavos(quantos) {
    return new Decimal(quantos, 2);
  }

  // With a point, at least two decimals, and no zeros after the second one.
  toString() {
    const digitos = String(this.unidades < 0n ? -this.unidades : this.unidades);
    const completo = digitos.padStart(this.casas + 1, '0');
    const inteiros = completo.slice(0, completo.length - this.casas);
    const decimais = completo.slice(completo.length - this.casas);
    const sinal = this.unidades < 0n ? '-' : '';
    return `${sinal}${inteiros}.${decimais.replace(/0+$/, '').padEnd(2, '0')}`;
  }
}

function escrever(argumento, numero, casas) {
  let escrito;
  try {
    escrito = Decimal.de(numero).toString();
  } catch (erro) {
    throw new TypeError(`${argumento}: ${erro.message}`);
  }
  if (escrito.length - escrito.indexOf('.') - 1 > casas) {
    throw new EntradaRecusada(`${argumento}: ${escrito} tem mais de ${casas} casas decimais`);
  }
  if (escrito.length > 15) {
    throw new EntradaRecusada(`${argumento}: ${escrito} passa de 15 caracteres`);
  }
  return escrito;
}

const decimal = (argumento, numero, casas) => terminado(escrever(argumento, numero, casas));

// Null is an empty text.
function decimalOpcional(argumento, numero, casas) {
  return numero === null ? terminado('') : decimal(argumento, numero, casas);
}

// An int of C.
function inteiro(argumento, valor, minimo = -(2 ** 31), maximo = 2 ** 31 - 1) {
  if (typeof valor !== 'number') {
    throw new TypeError(`${argumento}: esperado number, recebido ${typeof valor}`);
  }
  if (!Number.isInteger(valor) || valor < minimo || valor > maximo) {
    throw new EntradaRecusada(`${argumento}: ${valor} não é um inteiro de ${minimo} a ${maximo}`);
  }
  return valor;
}

function escolha(argumento, valor, enumeracao) {
  if (!Object.values(enumeracao).includes(valor)) {
    throw new TypeError(`${argumento}: ${String(valor)} não está na enumeração`);
  }
  return terminado(valor);
}

// A file name is bytes of the file system, not ISO-8859-1.
function caminho(argumento, nome) {
  if (typeof nome !== 'string' || nome.includes('\0')) {
    throw new EntradaRecusada(`${argumento}: nome de arquivo com U+0000, ou que não é string`);
  }
  if (Buffer.byteLength(nome) > 300) {
    throw new EntradaRecusada(`${argumento}: nome de arquivo com mais de 300 bytes`);
  }
  return terminado(nome, 'utf8');
}

// Up to three directories of up to 300 bytes with their final "/", separated by "|".
function diretorios(argumento, lista) {
  if (!Array.isArray(lista) || lista.length < 1 || lista.length > 3) {
    throw new EntradaRecusada(`${argumento}: de um a três diretórios`);
  }
  const nomes = lista.map((nome) => (nome.endsWith('/') ? nome : `${nome}/`));
  if (nomes.some((nome) => caminho(argumento, nome).includes('|'))) {
    throw new EntradaRecusada(`${argumento}: diretório com |`);
  }
  return terminado(nomes.join('|'), 'utf8');
}

// The rate of an item: goods or service with its percentage, or none of it.
class Aliquota {
  constructor(tipo, percentual = null) {
    Object.assign(this, { tipo, percentual });
    Object.freeze(this);
  }

  static mercadoria(percentual) {
    return new Aliquota('T', Decimal.de(percentual));
  }

  static servico(percentual) {
    return new Aliquota('S', Decimal.de(percentual));
  }
}
Aliquota.ISENTO = new Aliquota('I');
Aliquota.NAO_INCIDENCIA = new Aliquota('N');
Aliquota.SUBSTITUICAO = new Aliquota('F');

// "T1800", "S0500", "I".
function aliquota(argumento, valor) {
  if (!(valor instanceof Aliquota)) throw new TypeError(`${argumento}: esperada Aliquota`);
  const { tipo, percentual } = valor;
  if (percentual === null) return terminado(tipo);
  const escrito = escrever(argumento, percentual, 2);
  if (escrito.startsWith('-') || escrito.length > 5) {
    throw new EntradaRecusada(`${argumento}: ${escrito} não está entre 0 e 99,99`);
  }
  return terminado(tipo + escrito.replace('.', '').padStart(4, '0'));
}

// A discount or a surcharge, as an amount or as a percentage.
class Ajuste {
  constructor(tipo, valor) {
    Object.assign(this, { tipo, valor });
    Object.freeze(this);
  }

  static desconto(quantia) {
    return new Ajuste('D$', Decimal.de(quantia));
  }

  static descontoPercentual(percentual) {
    return new Ajuste('D%', Decimal.de(percentual));
  }

  static acrescimo(quantia) {
    return new Ajuste('A$', Decimal.de(quantia));
  }

  static acrescimoPercentual(percentual) {
    return new Ajuste('A%', Decimal.de(percentual));
  }
}
Ajuste.NENHUM = new Ajuste('', null);

// `sentido` is "D" or "A" where the function takes one of them alone, otherwise empty.
function tipo(argumento, ajuste, sentido) {
  if (!(ajuste instanceof Ajuste)) throw new TypeError(`${argumento}: esperado Ajuste`);
  if (!ajuste.tipo.startsWith(sentido)) {
    const qual = sentido === 'D' ? 'um desconto' : 'um acréscimo';
    throw new EntradaRecusada(`${argumento}: não é ${qual}`);
  }
  return terminado(ajuste.tipo);
}

// An amount is in cents.
function valor(argumento, ajuste) {
  return decimalOpcional(argumento, ajuste.valor, ajuste.tipo.endsWith('$') ? 2 : 4);
}

module.exports = {
  Ajuste, Aliquota, BibliotecaAusente, Decimal, EntradaRecusada, ErroZel, Recusa, TextoInvalido,
  aliquota, caminho, conferirChaves, conferirTamanho, decimal, decimalOpcional, diretorios, escolha,
  inteiro, terminado, texto, tipo, valor,
};
