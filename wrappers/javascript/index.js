// SPDX-License-Identifier: MIT
'use strict';

const { SAIDA, VAZIO } = require('./lib/chamador.js');
const { Operacoes } = require('./lib/operacoes.js');
const { Codigo, Estado, FormaPagamento, TAMANHOS, TipoConsulta } = require('./lib/tabelas.js');
const valores = require('./lib/valores.js');

// The receipt of one data directory, which is the process's. Text is converted to ISO-8859-1
// strictly, file names are not. What each function does, and in which state, is in
// ZEL_FelborFramework.h.
class Cupom extends Operacoes {
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

  // The receipt text of a sale with its printer mark-up. `retorno` is the file of the tax
  // authority's answer, or "OFFLINE"; `colunas` 42 or 48; the content of the QR code is built when
  // none is given.
  imprimir(arquivoXml, { retorno = 'OFFLINE', colunas = 48, urlQrcode = '' } = {}) {
    return this._formatar(arquivoXml, retorno, urlQrcode, colunas, 1);
  }

  // The same of a cancellation request.
  imprimirCancelamento(arquivoXml, { retorno = 'OFFLINE', colunas = 48 } = {}) {
    return this._formatar(arquivoXml, retorno, '', colunas, 5);
  }

  _formatar(arquivoXml, retorno, url, colunas, tipo) {
    return this._ler(
      'GerarArquivoFormatadoNF_ZEL', this._tamanhoDoCupom(arquivoXml, retorno, url),
      valores.caminho('arquivoXml', arquivoXml), valores.caminho('arquivoRetorno', retorno),
      this._texto('urlQrcode', url), valores.inteiro('colunas', colunas), tipo, VAZIO, SAIDA,
    );
  }
}

const { Ajuste, Aliquota, Decimal, EntradaRecusada, ErroZel, Recusa, TextoInvalido } = valores;
module.exports = {
  Ajuste, Aliquota, Codigo, Cupom, Decimal, EntradaRecusada, ErroZel, Estado, FormaPagamento, Recusa,
  TextoInvalido, TipoConsulta,
};
