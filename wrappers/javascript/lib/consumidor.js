// SPDX-License-Identifier: MIT
// Who a receipt is for: what the functions would take for something else, or leave out without a
// word, is refused.
'use strict';

const { CONSUMIDOR } = require('./tabelas.js');
const { EntradaRecusada, conferirChaves, terminado } = require('./valores.js');

const IDENTIFICAR = 'aCFIdentificarConsumidor_ZEL';
const IDENTIFICACOES = ['documento', 'cpf', 'cnpj', 'estrangeiro'];
const ENDERECO = ['numero', 'bairro', 'codigoMunicipio', 'municipio', 'uf', 'cep'];

// The check digit after `digitos`, whose weights go from 2 to `maior`, from the right.
function digito(digitos, maior) {
  const soma = [...digitos].reverse().reduce((ate, d, i) => ate + d * (2 + (i % (maior - 1))), 0);
  return soma % 11 < 2 ? 0 : 11 - (soma % 11);
}

function confere(digitos) {
  const maior = digitos.length === 11 ? 11 : 9;
  let inteiro = digitos.slice(0, -2);
  inteiro += digito(inteiro, maior);
  inteiro += digito(inteiro, maior);
  return inteiro === digitos && new Set(digitos).size > 1;
}

function soDigitos(argumento, valor) {
  if (typeof valor !== 'string') {
    throw new TypeError(`${argumento}: esperado string, recebido ${typeof valor}`);
  }
  const digitos = valor.replace(/[ .\-/]/g, '');
  if (!/^[0-9]+$/.test(digitos)) {
    throw new EntradaRecusada(`${argumento}: só dígitos, com ou sem ponto, barra e traço`);
  }
  return digitos;
}

// The digits of a CPF, or of a CNPJ: of either of them in a "documento".
function documento(argumento, valor) {
  const digitos = soDigitos(argumento, valor);
  const tamanhos = { cpf: [11], cnpj: [14] }[argumento] ?? [11, 14];
  if (!tamanhos.includes(digitos.length)) {
    throw new EntradaRecusada(`${argumento}: ${digitos.length} dígitos; um CPF tem 11, um CNPJ 14`);
  }
  if (!confere(digitos)) {
    throw new EntradaRecusada(`${argumento}: os dígitos verificadores não conferem`);
  }
  return terminado(digitos);
}

function estrangeiro(funcao, valor) {
  const digitos = soDigitos('estrangeiro', valor);
  if (digitos.length < 5 || digitos.length > 20 || [11, 14].includes(digitos.length)) {
    throw new EntradaRecusada(`estrangeiro: ${digitos.length} dígitos; permitido: de 5 a 20, e não 11 `
      + 'nem 14, que seriam um CPF ou um CNPJ');
  }
  if (funcao === IDENTIFICAR) {
    throw new EntradaRecusada(`estrangeiro: ${funcao} não o grava; informe-o ao abrir o cupom`);
  }
  return terminado(digitos);
}

// What would not stand in the document.
function conferirPerdas(funcao, consumidor, identificado) {
  const dados = ['nome', 'logradouro', ...ENDERECO, 'email'].filter((campo) => consumidor[campo]);
  if (dados.length > 0 && !identificado) {
    throw new EntradaRecusada(`${dados[0]}: sem CPF, CNPJ ou documento de estrangeiro o consumidor `
      + 'não é gravado');
  }
  if (consumidor.email && funcao !== IDENTIFICAR) {
    throw new EntradaRecusada(`email: ${funcao} não o grava; chame identificarConsumidor`);
  }
  const semRua = dados.find((campo) => ENDERECO.includes(campo));
  if (semRua !== undefined && !consumidor.logradouro) {
    throw new EntradaRecusada(`${semRua}: sem logradouro o endereço não é gravado`);
  }
}

// What `funcao` is given as the document of the consumer.
function identificacao(funcao, consumidor, cortar) {
  conferirChaves('consumidor', consumidor, CONSUMIDOR);
  const dadas = IDENTIFICACOES.filter((campo) => consumidor[campo]);
  if (dadas.length > 1) {
    throw new EntradaRecusada('consumidor: dê um só entre documento, cpf, cnpj e estrangeiro');
  }
  const [nome = 'documento'] = dadas;
  const valor = consumidor[nome] || '';
  if (cortar) return terminado(valor);
  conferirPerdas(funcao, consumidor, dadas.length > 0);
  if (valor === '') return terminado('');
  return nome === 'estrangeiro' ? estrangeiro(funcao, valor) : documento(nome, valor);
}

module.exports = { documento, identificacao };
