// SPDX-License-Identifier: MIT
// The receipt in progress, as ArqPersist.bin has it: one record a line, its kind in two digits, "|", of
// items and payments a number and "|", and elements as the library writes them.
'use strict';

const { FORMAS } = require('./tabelas.js');
const { EntradaRecusada } = require('./valores.js');

const NOMES = new Map(FORMAS.split(';').map((par) => par.split('=')));
const NOMEADAS = {
  amp: '&', lt: '<', gt: '>', quot: '"', apos: "'",
};
const TIPOS = [['CPF', 'cpf'], ['CNPJ', 'cnpj'], ['idEstrangeiro', 'estrangeiro']];

function referencia(inteira, nome) {
  if (!nome.startsWith('#')) return NOMEADAS[nome];
  const ponto = nome[1] === 'x' ? parseInt(nome.slice(2), 16) : Number(nome.slice(1));
  const existe = ponto > 0 && ponto <= 0x10ffff && (ponto < 0xd800 || ponto > 0xdfff);
  return existe ? String.fromCodePoint(ponto) : inteira;
}

// Of all elements of that name within the group.
function textos(conteudo, grupo, nome) {
  const abre = conteudo.indexOf(`<${grupo}>`);
  const fecha = conteudo.indexOf(`</${grupo}>`, Math.max(abre, 0));
  if (abre < 0 || fecha < 0) return [];
  const elementos = new RegExp(`<${nome}>([^<]*)</${nome}>`, 'g');
  return [...conteudo.slice(abre, fecha).matchAll(elementos)].map(([, lido]) => lido.replace(
    /&(amp|lt|gt|quot|apos|#[0-9]{1,7}|#x[0-9A-Fa-f]{1,6});/g,
    referencia,
  ));
}

const texto = (conteudo, grupo, nome) => textos(conteudo, grupo, nome)[0] ?? '';

// What they add up to; a text that is no number is nothing.
function centavos(lista) {
  return lista.reduce((soma, lido) => {
    const numero = /^([0-9]{1,13})(?:\.([0-9]{0,10}))?$/.exec(lido);
    return numero ? soma + BigInt(numero[1] + (numero[2] ?? '').padEnd(2, '0').slice(0, 2)) : soma;
  }, 0n);
}

function moeda(valor) {
  const digitos = String(valor < 0n ? 0n : valor).padStart(3, '0');
  return `${digitos.slice(0, -2)}.${digitos.slice(-2)}`;
}

const seHouver = (valor) => (valor > 0n ? moeda(valor) : '');

function consumidor(abertura) {
  for (const [nome, tipo] of TIPOS) {
    const documento = texto(abertura, 'dest', nome);
    if (documento !== '') {
      return {
        tipo, documento, nome: texto(abertura, 'dest', 'xNome'), email: texto(abertura, 'dest', 'email'),
      };
    }
  }
  return null;
}

function item(numero, conteudo) {
  const campo = (nome) => texto(conteudo, 'prod', nome);
  return {
    numero,
    codigo: campo('cProd'),
    descricao: campo('xProd'),
    quantidade: campo('qCom'),
    unidade: campo('uCom'),
    preco: campo('vUnCom'),
    bruto: campo('vProd'),
    desconto: seHouver(centavos(textos(conteudo, 'prod', 'vDesc'))),
    acrescimo: seHouver(centavos(textos(conteudo, 'prod', 'vOutro'))),
  };
}

function pagamento(conteudo) {
  const forma = texto(conteudo, 'pag', 'tPag');
  return { forma, nome: NOMES.get(forma) ?? forma, valor: texto(conteudo, 'pag', 'vPag') };
}

// Text in ISO-8859-1. A last record without its end does not count: the process died while it was
// written.
function andamento(arquivo, estado, troco) {
  const lido = {
    estado, consumidor: null, lista: [], pagamentos: [],
  };
  let total = '';
  arquivo.split('\r\n').slice(0, -1).forEach((registro, i) => {
    const inicio = /^0(?:([1346])\||([25])\|([^|]*)\|)/.exec(registro);
    if (!inicio) throw new EntradaRecusada(`ArqPersist.bin: o registro ${i + 1} não é de um cupom`);
    const conteudo = registro.slice(inicio[0].length);
    const tipo = inicio[1] ?? inicio[2];
    if (tipo === '1') lido.consumidor = consumidor(conteudo);
    if (tipo === '2') lido.lista.push(item(inicio[3], conteudo));
    if (tipo === '3') total = texto(conteudo, 'ICMSTot', 'vNF');
    if (tipo === '5') lido.pagamentos.push(pagamento(conteudo));
  });
  const somar = (nome) => centavos(lido.lista.map((i) => i[nome]));
  const devido = total === '' ? somar('bruto') + somar('acrescimo') - somar('desconto') : centavos([total]);
  const pago = centavos(lido.pagamentos.map((p) => p.valor));
  return {
    ...lido, total: moeda(devido), pago: moeda(pago), falta: total === '' ? '' : seHouver(devido - pago), troco,
  };
}

module.exports = { andamento };
