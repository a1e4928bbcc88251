// SPDX-License-Identifier: MIT
/** A decimal, a text like "12,50", a BigInt, or a whole number. */
export type Numero = Decimal | string | bigint | number;

/** A decimal number; 0.1 as a number is a TypeError, "0.1" is a tenth. */
export class Decimal {
  constructor(valor: string | bigint | number, casas?: number);
  static de(valor: Numero): Decimal;
  static centavos(quantos: bigint | number): Decimal;
  readonly unidades: bigint;
  readonly casas: number;
  toString(): string;
}

/** The rate of an item: goods or service with its percentage, or none of it. */
export class Aliquota {
  private constructor();
  static mercadoria(percentual: Numero): Aliquota;
  static servico(percentual: Numero): Aliquota;
  static readonly ISENTO: Aliquota;
  static readonly NAO_INCIDENCIA: Aliquota;
  static readonly SUBSTITUICAO: Aliquota;
  readonly tipo: string;
  readonly percentual: Decimal | null;
}

/** A discount or a surcharge, as an amount or as a percentage. */
export class Ajuste {
  private constructor();
  static desconto(quantia: Numero): Ajuste;
  static descontoPercentual(percentual: Numero): Ajuste;
  static acrescimo(quantia: Numero): Ajuste;
  static acrescimoPercentual(percentual: Numero): Ajuste;
  static readonly NENHUM: Ajuste;
  readonly tipo: string;
  readonly valor: Decimal | null;
}

/** Whatever this package refuses. */
export class ErroZel extends Error {}

/** An argument that cannot be handed to the library; nothing was called. */
export class EntradaRecusada extends ErroZel {}

/** A character that ISO-8859-1 does not have. */
export class TextoInvalido extends EntradaRecusada {
  readonly argumento: string;
  readonly caractere: string;
  /** Counted in characters, from 1. */
  readonly posicao: number;
}

/** The shared object was not found, or cannot be loaded. */
export class BibliotecaAusente extends ErroZel {}

/** What the library refused. */
export class Recusa extends ErroZel {
  readonly funcao: string;
  readonly codigo: number;
  readonly nome: string;
  readonly significado: string;
  readonly remedio: string;
  /** Which field, what was given and what is allowed, or file and system error; may be empty. */
  readonly motivo: string;
  /** What the function wrote all the same: a receipt whose PDF failed. */
  readonly texto: string;
}
