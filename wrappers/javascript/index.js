// SPDX-License-Identifier: MIT
'use strict';

const { andamento } = require('./lib/andamento.js');
const { SAIDA, VAZIO } = require('./lib/chamador.js');
const { Operacoes } = require('./lib/operacoes.js');
const { Codigo, Estado, FormaPagamento, TAMANHOS, TipoConsulta } = require('./lib/tabelas.js');
const valores = require('./lib/valores.js');

// The receipt of one data directory, which is the process's. Text is converted to ISO-8859-1
// strictly, file names are not. What each function does, and in which state, is in
// ZEL_FelborFramework.h.
class Cupom extends Operacoes {
  // The receipt in progress, for a till that was restarted; one that was closed is there until the next
  // is opened. Null without a receipt. The library completes first what a process that died left behind.
  lerAndamento() {
    const troco = this.retornarValor('CONFIGURACAO\\TrocoUltimaNFCe');
    const estado = this.verificarStatus();
    if (estado < Estado.ABERTO || estado > Estado.ENCERRADO) return null;
    return andamento(this._lerPersistido(), estado, estado < Estado.PAGO ? '' : troco);
  }

  // aCFContingenciaUltimaNota_ZEL of kind 1 (as the closing does), 3 or 5 (in contingency); answers
  // the document.
  reemitir(tipo) {
    const tamanho = TAMANHOS.ZEL_TAMANHO_DOCUMENTO + 65536 + 2 * this._bytesDe('ArqPersist.bin');
    return this._ler('aCFContingenciaUltimaNota_ZEL', tamanho, valores.inteiro('tipo', tipo), SAIDA);
  }

  // aCFContingenciaUltimaNota_ZEL of kind 4: KEY.ctg in up to three directories; answers the path of
  // the last file.
  contingencia(diretorios) {
    return this._gravarEm('aCFContingenciaUltimaNota_ZEL', diretorios, 4, SAIDA);
  }

  // regAlterarValor_ZEL; a value that the key does not keep whole is taken back and refused.
  alterarValor(chave, valor) {
    if (this.cortar) {
      super.alterarValor(chave, valor);
      return;
    }
    let antes = '';
    try {
      antes = this.retornarValor(chave);
    } catch (erro) {
      if (!(erro instanceof valores.Recusa)) throw erro; // no such key, which the other one says
    }
    super.alterarValor(chave, valor);
    const guardado = this.retornarValor(chave);
    const dado = this._texto('valor', valor).toString('latin1').slice(0, -1);
    if (guardado !== dado) {
      super.alterarValor(chave, antes);
      throw new valores.EntradaRecusada(`valor: ${dado.length} caracteres, de que ${chave} guarda `
        + `${guardado.length}; nada mudou`);
    }
  }

  // The receipt text of a sale with its printer mark-up. `retorno` is the file of the tax authority's
  // answer, which has to authorize the sale, or "OFFLINE" for a document of contingency or without
  // fiscal value; `semAutorizacao` lays any other out, too, for a trial. `colunas` 42 or 48; the
  // content of the QR code is built when none is given.
  imprimir(arquivoXml, retorno, opcoes = {}) {
    valores.conferirChaves('opcoes', opcoes, ['colunas', 'urlQrcode', 'semAutorizacao']);
    return this._formatar(arquivoXml, retorno, opcoes, 1);
  }

  // The same of a cancellation request, which the answer has to have registered.
  imprimirCancelamento(arquivoXml, retorno, opcoes = {}) {
    valores.conferirChaves('opcoes', opcoes, ['colunas', 'semAutorizacao']);
    return this._formatar(arquivoXml, retorno, opcoes, 5);
  }

  _formatar(arquivoXml, retorno, { colunas = 48, urlQrcode = '', semAutorizacao = false }, tipo) {
    const argumentos = [
      valores.caminho('arquivoXml', arquivoXml), valores.caminho('arquivoRetorno', retorno),
      this._texto('urlQrcode', urlQrcode), valores.inteiro('colunas', colunas),
    ];
    const [xml, resposta] = this._lerParaImprimir(arquivoXml, retorno, tipo === 5, semAutorizacao);
    return this._ler(
      'GerarArquivoFormatadoNF_ZEL', this._tamanhoDoCupom(xml, resposta, urlQrcode), ...argumentos,
      tipo, VAZIO, SAIDA,
    );
  }
}

const {
  Ajuste, Aliquota, BibliotecaAusente, Decimal, EntradaRecusada, ErroZel, Recusa, TextoInvalido,
} = valores;
module.exports = {
  Ajuste, Aliquota, BibliotecaAusente, Codigo, Cupom, Decimal, EntradaRecusada, ErroZel, Estado,
  FormaPagamento, Recusa, TextoInvalido, TipoConsulta,
};
