// SPDX-License-Identifier: MIT
import { Estado, Operacoes } from './lib/operacoes';

export { Codigo, Consumidor, Estado, FormaPagamento, TipoConsulta } from './lib/operacoes';
export {
  Ajuste, Aliquota, BibliotecaAusente, Decimal, EntradaRecusada, ErroZel, Numero, Recusa,
  TextoInvalido,
} from './lib/valores';

export interface Opcoes {
  /** Typographic quotes, dashes, ellipses and blanks become plain ones. */
  transliterar?: boolean;
  /** What does not fit is handed over: the library cuts it or leaves it out. */
  cortar?: boolean;
  /** The shared object, which the first Cupom of a thread loads. */
  biblioteca?: string;
}

/** Numbers as the library wrote them, with a point; `desconto` and `acrescimo` empty for none. */
export interface ItemLido {
  numero: string;
  codigo: string;
  descricao: string;
  quantidade: string;
  unidade: string;
  preco: string;
  bruto: string;
  desconto: string;
  acrescimo: string;
}

/** A receipt that is open, or closed and not yet followed by another. */
export interface Andamento {
  estado: Estado;
  consumidor: {
    tipo: 'cpf' | 'cnpj' | 'estrangeiro'; documento: string; nome: string; email: string;
  } | null;
  lista: ItemLido[];
  /** `forma` is its code, "01", `nome` "Dinheiro". */
  pagamentos: { forma: string; nome: string; valor: string }[];
  /** What the items add up to until the totals are made. */
  total: string;
  pago: string;
  /** Both empty where there is none. */
  falta: string;
  troco: string;
}

/** The receipt of one data directory, which is the process's. */
export class Cupom extends Operacoes {
  /** `diretorio` is absolute and exists; the library keeps its files there. */
  constructor(diretorio: string, opcoes?: Opcoes);
  readonly diretorio: string;
  /** A file of the data directory. */
  arquivo(nome: string): string;
  /** The receipt in progress, for a till that was restarted; null without one. */
  lerAndamento(): Andamento | null;
  /** Kind 1 (as the closing does), 3 or 5 (in contingency); answers the document. */
  reemitir(tipo: 1 | 3 | 5): string;
  /** KEY.ctg in up to three directories; answers the path of the last file. */
  contingencia(diretorios: string[]): string;
  /**
   * The receipt text of a sale; `retorno` is the file of the answer that authorizes it, or "OFFLINE"
   * for one of contingency or without fiscal value.
   */
  imprimir(
    arquivoXml: string,
    retorno: string,
    opcoes?: { colunas?: 42 | 48; urlQrcode?: string; semAutorizacao?: boolean },
  ): string;
  /** The receipt text of a cancellation request. */
  imprimirCancelamento(
    arquivoXml: string,
    retorno: string,
    opcoes?: { colunas?: 42 | 48; semAutorizacao?: boolean },
  ): string;
}
