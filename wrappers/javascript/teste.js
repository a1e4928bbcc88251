// SPDX-License-Identifier: MIT
// The package against a real library: teste.js DIRECTORY LIBRARY CASES
'use strict';

const assert = require('node:assert/strict');
const { execFileSync } = require('node:child_process');
const fs = require('node:fs');
const test = require('node:test');
const { Worker, isMainThread, workerData } = require('node:worker_threads');
const zel = require('./index.js');
const { andamento } = require('./lib/andamento.js');
const { conferirAutorizacao } = require('./lib/autorizacao.js');
const { identificacao } = require('./lib/consumidor.js');
const valores = require('./lib/valores.js');

const [, , diretorio, biblioteca, casosDeConversao, entradas, casosDeAndamento] = process.argv;
const casos = [casosDeConversao, entradas];
const caixa = (opcoes = {}) => new zel.Cupom(diretorio, { biblioteca, ...opcoes });
const latin1 = (bytes) => bytes.toString('latin1').replace(/\0$/, '');

function converter(tipo, escolha, entrada) {
  if (tipo === 'texto') {
    const bytes = valores.texto('a', entrada, escolha === 'transliterar');
    return bytes.toString('hex').toUpperCase().slice(0, -2);
  }
  if (tipo === 'comprimento') {
    const escrito = caixa()._texto('a', entrada, ...escolha.split('-').map(Number));
    return escrito.toString('hex').toUpperCase().slice(0, -2);
  }
  if (tipo === 'consumidor') {
    const consumidor = Object.fromEntries(entrada.split(';').map((par) => par.split('=')));
    const funcao = escolha === 'identificar' ? 'aCFIdentificarConsumidor_ZEL' : 'aCFAbrir_ZEL';
    return latin1(identificacao(funcao, consumidor, escolha === 'cortar'));
  }
  if (tipo === 'autorizacao') {
    const [documento, retorno] = entrada.split('|');
    const lido = retorno === 'OFFLINE' ? null : retorno;
    conferirAutorizacao(documento, lido, escolha === 'cancelamento');
    return 'ok';
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
  const linhas = casos.flatMap((nome) => fs.readFileSync(nome, 'utf8').split('\n'))
    .filter((l) => l && !l.startsWith('#'));
  assert.ok(linhas.length > 70);
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

function dizer(a) {
  const campos = (letra) => (lido) => [letra, ...Object.values(lido)].join(',');
  return [
    ...(a.consumidor ? [campos('C')(a.consumidor)] : []), ...a.lista.map(campos('I')),
    ...a.pagamentos.map(campos('P')), ['T', a.total, a.pago, a.falta].join(','),
  ].join(';');
}

// The receipts in progress that all languages share.
function testarAndamento() {
  const linhas = fs.readFileSync(casosDeAndamento, 'utf8').split('\n').filter((l) => l && !l.startsWith('#'));
  assert.ok(linhas.length > 15);
  for (const [nome, registros, esperado] of linhas.map((l) => l.split('\t'))) {
    const ler = () => dizer(andamento(registros.replaceAll('^', '\r\n'), zel.Estado.ABERTO, ''));
    if (esperado.startsWith('!')) {
      assert.ok(erro(zel.EntradaRecusada, ler).message.includes(esperado.slice(1)), nome);
    } else {
      assert.equal(ler(), esperado, nome);
    }
  }
}

function testarEntradas() {
  for (const numero of [0.1, NaN, 2 ** 60, '', '1e3', ' 1', '1,2,3', '-', undefined, null]) {
    assert.throws(() => valores.decimal('a', numero, 4), TypeError, String(numero));
  }
  assert.equal(String(zel.Decimal.centavos(-5n)), '-0.05');
  assert.equal(String(new zel.Decimal('0,5')), '0.50');
  assert.throws(() => valores.texto('a', 'P\0o', true), zel.TextoInvalido);
  assert.throws(() => valores.texto('a', '\ud83e', true), zel.TextoInvalido);
  assert.throws(() => valores.texto('a', undefined, true), TypeError);
  const c = caixa();
  const { ISENTO } = zel.Aliquota;
  for (const [tipo, parte, chamada] of [
    [zel.EntradaRecusada, 'item: ', () => c.cancelarItem(2 ** 32 + 1)],
    [zel.EntradaRecusada, 'serie: 1000', () => c.abrirNumSerie(1, 1000)],
    [zel.EntradaRecusada, 'valor: 0.125', () => c.lancarDescontoItem(1, zel.Ajuste.desconto('0,125'))],
    [zel.EntradaRecusada, 'descricao: 121', () => c.vender(ISENTO, 1, 1, '1', 'UN', 'x'.repeat(121))],
    [zel.EntradaRecusada, 'documento: os', () => c.identificarTransportadora('123.456.789-00', 'Zé')],
    [zel.EntradaRecusada, 'informacoesFisco: 0', () => c.encerrarConfigMsg('só uma', '')],
    [TypeError, 'forma: Fiado', () => c.efetuarPagamento('Fiado')],
    [TypeError, 'aliquota: ', () => c.vender(18, 1, 1, '1', 'UN', 'Bala')],
    [TypeError, 'quantidade: ', () => c.vender(ISENTO, null, 1, '1', 'UN', 'Bala')],
    [TypeError, 'descricao: ', () => c.vender(ISENTO, 1, 1, '1', 'UN', null)],
    [TypeError, 'consumidor: não há documeto', () => c.abrir({ documeto: '12345678909' })],
    [TypeError, 'opcoes: não há retorno', () => c.imprimir('/x', 'OFFLINE', { retorno: 'x' })],
    [TypeError, 'opcoes: não há bibliotca', () => caixa({ bibliotca: 'x' })],
  ]) {
    const e = erro(tipo, chamada);
    assert.ok(e.message.startsWith(parte), e.message);
  }
}

function testarValorCortado() {
  const c = caixa();
  c.alterarValor('EMIT\\xNome', 'Padaria');
  const e = erro(zel.EntradaRecusada, () => c.alterarValor('EMIT\\xNome', 'x'.repeat(61)));
  assert.match(e.message, /61 caracteres, de que .* guarda 60/);
  assert.equal(c.retornarValor('EMIT\\xNome'), 'Padaria');
  caixa({ cortar: true }).alterarValor('EMIT\\xNome', 'x'.repeat(61));
  assert.equal(c.retornarValor('EMIT\\xNome').length, 60);
  assert.equal(erro(zel.Recusa, () => c.alterarValor('NADA', '1')).funcao, 'regAlterarValor_ZEL');
}

// The last one: the number of the descriptor is the program's from here on.
function testarMotivo() {
  const recusar = () => erro(zel.Recusa, () => caixa().criptografarArquivo('/nao/existe', '/x', ''));
  const r = recusar();
  assert.match(r.motivo, /\/nao\/existe: o arquivo ou o diretório não existe \(ENOENT\)/);
  assert.ok(r.message.includes(r.motivo));
  fs.closeSync(caixa()._motivos);
  assert.equal(recusar().motivo, '');
}

function testarSemBiblioteca() {
  const programa = "try { new (require('./index.js').Cupom)(process.argv[1], { biblioteca: 'nada.so' }) } "
    + "catch (e) { console.log(e.name, e.message) }";
  const visto = execFileSync(process.execPath, ['-e', programa, diretorio], { encoding: 'utf8' });
  assert.match(visto, /^BibliotecaAusente a biblioteca não pôde .*nada.so.*LD_LIBRARY_PATH/);
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
  assert.match(r.motivo, /estado 1 \(aberto\)/);
  assert.ok(r.message.startsWith('aCFAbrir_ZEL: ZEL_CUPOM_EM_ANDAMENTO (-130): Já há um cupom em '
    + `andamento. Motivo: ${r.motivo}. `), r.message);
}

function testarImpressao(c) {
  const cupom = c.imprimir(c.arquivo('documentosEnvio.xml'), 'OFFLINE');
  assert.ok(cupom.length > 131072 && cupom.includes('Pão de queijo - 1ª'));
  assert.ok(c.ultimoCupom() === cupom);
  assert.ok(c.reemitir(1).includes('Pão de queijo - 1ª'));
  const ctg = c.contingencia([diretorio]);
  assert.ok(fs.existsSync(ctg), ctg);
  assert.ok(c.imprimir(ctg, 'OFFLINE').includes('Pão de queijo - 1ª'));
  assert.throws(() => c.imprimir('/nao/ha.xml', 'OFFLINE'), zel.EntradaRecusada);
  c.alterarValor('CONFIGURACAO\\SalvarDanfePDF', '1');
  const pdf = erro(zel.Recusa, () => c.imprimir(ctg, 'OFFLINE'));
  assert.ok(pdf.texto.includes('Pão de queijo - 1ª'));
}

function testarCupom() {
  const c = caixa();
  c.alterarValor('EMIT\\xNome', 'Padaria São João');
  assert.equal(c.retornarValor('EMIT\\xNome'), 'Padaria São João');
  assert.equal(c.lerAndamento(), null);
  c.abrir();
  testarRecusas(c);
  vender(caixa({ transliterar: true }), 'Pão de queijo – 1ª');
  for (let i = 0; i < 800; ++i) vender(c, 'É'.repeat(120));
  c.totalizar();
  c.efetuarPagamento(zel.FormaPagamento.DINHEIRO);
  const a = c.lerAndamento();
  assert.deepEqual([a.lista.length, a.lista[0].descricao, a.estado, a.falta, a.troco], [
    801, 'Pão de queijo - 1ª', zel.Estado.PAGO, '', '0',
  ]);
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
  test('o cupom em andamento', testarAndamento);
  test('o que não é entrada', testarEntradas);
  test('um valor que a chave cortaria', testarValorCortado);
  test('um cupom', testarCupom);
  test('threads', testarThreads);
  test('sem a biblioteca', testarSemBiblioteca);
  test('o motivo de uma recusa', testarMotivo);
} else {
  trabalhar(workerData);
}
