// SPDX-License-Identifier: MIT
// The package against a real library: teste.js DIRECTORY LIBRARY CASES
'use strict';

const assert = require('node:assert/strict');
const fs = require('node:fs');
const test = require('node:test');
const { Worker, isMainThread, workerData } = require('node:worker_threads');
const zel = require('./index.js');
const valores = require('./lib/valores.js');

const [, , diretorio, biblioteca, casos] = process.argv;
const caixa = (opcoes = {}) => new zel.Cupom(diretorio, { biblioteca, ...opcoes });
const latin1 = (bytes) => bytes.toString('latin1').replace(/\0$/, '');

function converter(tipo, escolha, entrada) {
  if (tipo === 'texto') {
    const bytes = valores.texto('a', entrada, escolha === 'transliterar');
    return bytes.toString('hex').toUpperCase().slice(0, -2);
  }
  if (tipo === 'diretorio') return new zel.Cupom(entrada);
  if (tipo === 'aliquota') return latin1(valores.aliquota('a', zel.Aliquota[escolha](entrada)));
  return latin1(valores.decimal('a', entrada, Number(escolha)));
}

// What a call throws, of the kind that is expected.
function erro(tipo, chamada) {
  let visto;
  assert.throws(() => {
    try {
      chamada();
    } catch (e) {
      visto = e;
      throw e;
    }
  }, tipo);
  return visto;
}

function trabalhar(chave) {
  const c = caixa();
  for (let i = 0; i < 200; ++i) {
    c.alterarValor(chave, String(i));
    assert.equal(c.retornarValor(chave), String(i));
  }
}

function testarConversoes() {
  caixa().inicializar();
  assert.ok(fs.existsSync(`${diretorio}/ZEL_Framework.xml`));
  const linhas = fs.readFileSync(casos, 'utf8').split('\n').filter((l) => l && !l.startsWith('#'));
  assert.ok(linhas.length > 30);
  for (const linha of linhas) {
    const [tipo, escolha, entrada, esperado] = linha.split('\t');
    if (!esperado.startsWith('!')) {
      assert.equal(converter(tipo, escolha, entrada), esperado, linha);
      continue;
    }
    const e = erro(zel.EntradaRecusada, () => converter(tipo, escolha, entrada));
    assert.ok(e.message.includes(esperado.slice(1)), e.message);
  }
}

function testarEntradas() {
  for (const numero of [0.1, NaN, 2 ** 60, '', '1e3', ' 1', '1,2,3', '-', undefined]) {
    assert.throws(() => valores.decimal('a', numero, 4), TypeError, String(numero));
  }
  assert.equal(String(zel.Decimal.centavos(-5n)), '-0.05');
  assert.equal(String(new zel.Decimal('0,5')), '0.50');
  assert.throws(() => valores.texto('a', 'P\0o', true), zel.TextoInvalido);
  assert.throws(() => valores.texto('a', '\ud83e', true), zel.TextoInvalido);
  assert.throws(() => valores.texto('a', undefined, true), TypeError);
  assert.throws(() => caixa().cancelarItem(2 ** 32 + 1), zel.EntradaRecusada);
  assert.throws(() => caixa().efetuarPagamento('Fiado'), zel.EntradaRecusada);
  assert.throws(() => caixa().vender(18, 1, 1, '1', 'UN', 'Bala'), TypeError);
}

function vender(c, descricao) {
  c.vender(zel.Aliquota.mercadoria(18), '1,5', '0.75', '101', 'UN', descricao);
}

function testarRecusas(c) {
  const t = erro(zel.TextoInvalido, () => vender(c, 'Pão de queijo – 1ª'));
  assert.deepEqual([t.argumento, t.caractere, t.posicao], ['descricao', '–', 15]);
  assert.throws(() => vender(caixa({ transliterar: true }), '1 €'), zel.TextoInvalido);
  assert.equal(c.verificarStatus(), zel.Estado.ABERTO);
  const acrescimo = zel.Ajuste.acrescimo(1);
  assert.throws(() => c.lancarDescontoItem(1, acrescimo), /não é um desconto/);
  const r = erro(zel.Recusa, () => c.abrir());
  assert.equal(r.codigo, zel.Codigo.CUPOM_EM_ANDAMENTO);
  assert.equal(
    r.message,
    'aCFAbrir_ZEL: ZEL_CUPOM_EM_ANDAMENTO (-130): Já há um cupom em andamento. '
      + 'Continue-o, ou cancele-o com tCFCancelar_ZEL e cinco textos vazios.',
  );
}

function testarImpressao(c) {
  const cupom = c.imprimir(c.arquivo('documentosEnvio.xml'));
  assert.ok(cupom.length > 131072 && cupom.includes('Pão de queijo - 1ª'));
  assert.ok(c.ultimoCupom() === cupom);
  assert.ok(c.reemitir(1).includes('Pão de queijo - 1ª'));
  const ctg = c.contingencia([diretorio]);
  assert.ok(fs.existsSync(ctg), ctg);
  assert.ok(c.imprimir(ctg).includes('Pão de queijo - 1ª'));
  assert.throws(() => c.imprimir('/nao/ha.xml'), zel.EntradaRecusada);
  c.alterarValor('CONFIGURACAO\\SalvarDanfePDF', '1');
  const pdf = erro(zel.Recusa, () => c.imprimir(ctg));
  assert.ok(pdf.texto.includes('Pão de queijo - 1ª'));
}

function testarCupom() {
  const c = caixa();
  c.alterarValor('EMIT\\xNome', 'Padaria São João');
  assert.equal(c.retornarValor('EMIT\\xNome'), 'Padaria São João');
  c.abrir();
  testarRecusas(c);
  vender(caixa({ transliterar: true }), 'Pão de queijo – 1ª');
  for (let i = 0; i < 800; ++i) vender(c, 'É'.repeat(120));
  c.totalizar();
  c.efetuarPagamento(zel.FormaPagamento.DINHEIRO);
  c.encerrar('Obrigado pela preferência');
  testarImpressao(c);
  assert.equal(c.cancelar(), zel.Codigo.CANCELAMENTO_GRAVADO);
}

// Two threads besides this one; each finds what it wrote.
async function testarThreads() {
  caixa();
  const outras = ['EMIT\\IE', 'EMIT\\xNome'].map((chave) => new Promise((feito, falhou) => {
    const outra = new Worker(__filename, { argv: process.argv.slice(2), workerData: chave });
    outra.on('error', falhou);
    outra.on('exit', feito);
  }));
  trabalhar('EMIT\\CNPJ');
  assert.deepEqual(await Promise.all(outras), [0, 0]);
}

if (isMainThread) {
  test('conversões', testarConversoes);
  test('o que não é entrada', testarEntradas);
  test('um cupom', testarCupom);
  test('threads', testarThreads);
} else {
  trabalhar(workerData);
}
