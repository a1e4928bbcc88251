// SPDX-License-Identifier: MIT
// Whether a receipt may be given to a customer: of a document that the authority authorized, or of one
// of contingency; without fiscal value nothing is promised.
'use strict';

const { EntradaRecusada } = require('./valores.js');

const CONTORNO = '; para um ensaio, semAutorizacao';

// Of the sending component's form, or of the authority's, whose last status is the document's.
function situacaoDe(retorno) {
  for (const marca of [/<sitcodigo>\s*(\d*)/gi, /<cstat>\s*(\d*)/gi]) {
    const vistas = [...retorno.matchAll(marca)];
    if (vistas.length > 0) return vistas[vistas.length - 1][1];
  }
  return '';
}

// Texts in ISO-8859-1; `retorno` is null for "OFFLINE".
function conferirAutorizacao(documento, retorno, cancelamento) {
  if (retorno === null) {
    const contingencia = !documento.startsWith('<') || /Id="NFe\d{34}9/.test(documento);
    if (documento.includes('<tpAmb>1</tpAmb>') && !contingencia) {
      throw new EntradaRecusada('retorno: OFFLINE só serve a um documento de contingência; este ainda '
        + `não tem a resposta da SEFAZ${CONTORNO}`);
    }
    return;
  }
  const situacao = situacaoDe(retorno);
  if ((cancelamento ? ['135', '155'] : ['100', '150']).includes(situacao)) return;
  const oque = cancelamento ? 'registrou o cancelamento' : 'autorizou a venda';
  throw new EntradaRecusada(
    `retorno: a SEFAZ não ${oque} (SitCodigo ${situacao || 'ausente'})${CONTORNO}`,
  );
}

module.exports = { conferirAutorizacao };
