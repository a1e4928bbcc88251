{ SPDX-License-Identifier: MIT }
{ The receipt in progress, as ArqPersist.bin has it: one record a line, its kind in two digits, "|", of
  items and payments a number and "|", and elements as the library writes them. }
unit ZelAndamento;
{$I zel.inc}

interface

uses ZelTipos, ZelTabelas;

type
  TZelConsumidorLido = record
    Tipo: TZelTexto; { "cpf", "cnpj" or "estrangeiro"; empty without a consumer }
    Documento, Nome, Email: TZelTexto;
  end;

  { Numbers as the library wrote them, with a point; Desconto and Acrescimo empty for none. }
  TZelItemLido = record
    Numero, Codigo, Descricao, Quantidade, Unidade, Preco, Bruto, Desconto, Acrescimo: TZelTexto;
  end;

  TZelPagamentoLido = record
    Forma: TZelTexto; { "01" }
    Nome: TZelTexto; { "Dinheiro" }
    Valor: TZelTexto;
  end;

  { A receipt that is open, or closed and not yet followed by another. Total is what the items add up
    to until the totals are made; Falta and Troco are empty where there is none. }
  TZelAndamento = record
    Estado: TZelEstado;
    Consumidor: TZelConsumidorLido;
    Lista: array of TZelItemLido;
    Pagamentos: array of TZelPagamentoLido;
    Total, Pago, Falta, Troco: TZelTexto;
  end;

{ The bytes of the file. A last record without its end does not count: the process died while it was
  written. }
function ZelLerAndamento(const Bytes: RawByteString; Estado: TZelEstado;
  const Troco: TZelTexto): TZelAndamento;

implementation

uses SysUtils, ZelValores;

type
  TTextos = array of TZelTexto;

procedure AnexarPonto(var Utf8: RawByteString; Ponto: Cardinal);
begin
  case Ponto of
    0..$7F: Utf8 := Utf8 + AnsiChar(Ponto);
    $80..$7FF: Utf8 := Utf8 + AnsiChar($C0 or (Ponto shr 6));
    $800..$FFFF: Utf8 := Utf8 + AnsiChar($E0 or (Ponto shr 12));
  else
    Utf8 := Utf8 + AnsiChar($F0 or (Ponto shr 18)) + AnsiChar($80 or ((Ponto shr 12) and $3F));
  end;
  if Ponto >= $800 then
    Utf8 := Utf8 + AnsiChar($80 or ((Ponto shr 6) and $3F));
  if Ponto >= $80 then
    Utf8 := Utf8 + AnsiChar($80 or (Ponto and $3F));
end;

{ The number that the digits are; 0 for other characters, or too many of them. }
function Numero(const Digitos: RawByteString; Base: Cardinal; Maximo: Integer): Cardinal;
var
  I, Valor: Integer;
begin
  Result := 0;
  if Length(Digitos) > Maximo then
    Exit;
  for I := 1 to Length(Digitos) do
  begin
    Valor := Pos(Digitos[I], '0123456789abcdefABCDEF') - 1;
    if Valor > 15 then
      Dec(Valor, 6);
    if (Valor < 0) or (Cardinal(Valor) >= Base) then
      Exit(0);
    Result := Result * Base + Cardinal(Valor);
  end;
end;

{ The character of the reference between "&" and ";"; 0 for what is none. }
function Referencia(const Nome: RawByteString): Cardinal;
const
  Nomes: array[1..5] of RawByteString = ('amp', 'lt', 'gt', 'quot', 'apos');
  Letras: array[1..5] of AnsiChar = ('&', '<', '>', '"', #39);
var
  I: Integer;
begin
  Result := 0;
  for I := 1 to 5 do
    if Nome = Nomes[I] then
      Exit(Ord(Letras[I]));
  if Copy(Nome, 1, 2) = '#x' then
    Result := Numero(Copy(Nome, 3, Length(Nome)), 16, 6)
  else if Copy(Nome, 1, 1) = '#' then
    Result := Numero(Copy(Nome, 2, Length(Nome)), 10, 7);
  if (Result > $10FFFF) or ((Result >= $D800) and (Result <= $DFFF)) then
    Result := 0;
end;

function ComReferencias(const Latin1: RawByteString): TZelTexto;
var
  Utf8: RawByteString;
  I, Fim: Integer;
  Ponto: Cardinal;
begin
  Utf8 := '';
  I := 1;
  while I <= Length(Latin1) do
  begin
    Ponto := 0;
    Fim := 0;
    if Latin1[I] = '&' then
      Fim := Pos(AnsiChar(';'), Copy(Latin1, I, 10));
    if Fim > 0 then
      Ponto := Referencia(Copy(Latin1, I + 1, Fim - 2));
    if Ponto = 0 then
    begin
      Ponto := Ord(Latin1[I]);
      Fim := 1;
    end;
    AnexarPonto(Utf8, Ponto);
    Inc(I, Fim);
  end;
  Result := ZelDeCaminho(PAnsiChar(Utf8));
end;

{ What stands between the first Inicio and the Fim after it, which leave Texto; False when one of them
  is missing. }
function Entre(var Texto: RawByteString; const Inicio, Fim: RawByteString;
  out Dentro: RawByteString): Boolean;
var
  Lugar: Integer;
begin
  Dentro := '';
  Lugar := Pos(Inicio, Texto);
  if Lugar = 0 then
    Exit(False);
  Delete(Texto, 1, Lugar + Length(Inicio) - 1);
  Lugar := Pos(Fim, Texto);
  Dentro := Copy(Texto, 1, Lugar - 1);
  Delete(Texto, 1, Lugar + Length(Fim) - 1);
  Result := Lugar > 0;
end;

{ Of all elements of that name within the group. }
function Textos(Conteudo: RawByteString; const Grupo, Nome: RawByteString): TTextos;
var
  Dentro, Lido: RawByteString;
begin
  Result := nil;
  if not Entre(Conteudo, '<' + Grupo + '>', '</' + Grupo + '>', Dentro) then
    Exit;
  while Entre(Dentro, '<' + Nome + '>', '</' + Nome + '>', Lido) do
  begin
    SetLength(Result, Length(Result) + 1);
    Result[High(Result)] := ComReferencias(Lido);
  end;
end;

function Texto(const Conteudo, Grupo, Nome: RawByteString): TZelTexto;
var
  Lidos: TTextos;
begin
  Result := '';
  Lidos := Textos(Conteudo, Grupo, Nome);
  if Length(Lidos) > 0 then
    Result := Lidos[0];
end;

{ A text that is no number is nothing. }
function Centavos(const Lido: TZelTexto): Int64;
var
  Ponto, I: Integer;
  Digitos: TZelTexto;
begin
  Result := 0;
  Ponto := Pos('.', Lido + '.');
  if (Ponto = 1) or (Ponto > 14) or (Length(Lido) - Ponto > 10) then
    Exit;
  Digitos := Copy(Lido, 1, Ponto - 1) + Copy(Lido, Ponto + 1, 10);
  for I := 1 to Length(Digitos) do
    if (Ord(Digitos[I]) < Ord('0')) or (Ord(Digitos[I]) > Ord('9')) then
      Exit;
  Digitos := Copy(Lido, 1, Ponto - 1) + Copy(Copy(Lido, Ponto + 1, 2) + '00', 1, 2);
  Result := StrToInt64(string(Digitos));
end;

function Somar(const Lidos: TTextos): Int64;
var
  I: Integer;
begin
  Result := 0;
  for I := 0 to High(Lidos) do
    Inc(Result, Centavos(Lidos[I]));
end;

function Moeda(Valor: Int64): TZelTexto;
begin
  if Valor < 0 then
    Valor := 0;
  Result := TZelTexto(IntToStr(Valor div 100) + '.' + Copy(IntToStr(100 + Valor mod 100), 2, 2));
end;

function SeHouver(Valor: Int64): TZelTexto;
begin
  Result := '';
  if Valor > 0 then
    Result := Moeda(Valor);
end;

function LerConsumidor(const Abertura: RawByteString): TZelConsumidorLido;
const
  Elementos: array[1..3] of RawByteString = ('CPF', 'CNPJ', 'idEstrangeiro');
  Tipos: array[1..3] of RawByteString = ('cpf', 'cnpj', 'estrangeiro');
var
  I: Integer;
begin
  Result := Default(TZelConsumidorLido);
  for I := 1 to 3 do
  begin
    Result.Documento := Texto(Abertura, 'dest', Elementos[I]);
    if Result.Documento = '' then
      Continue;
    Result.Tipo := ZelDeLatin1(PAnsiChar(Tipos[I]));
    Result.Nome := Texto(Abertura, 'dest', 'xNome');
    Result.Email := Texto(Abertura, 'dest', 'email');
    Exit;
  end;
end;

function LerItem(const Numero, Conteudo: RawByteString): TZelItemLido;
begin
  Result.Numero := ZelDeLatin1(PAnsiChar(Numero));
  Result.Codigo := Texto(Conteudo, 'prod', 'cProd');
  Result.Descricao := Texto(Conteudo, 'prod', 'xProd');
  Result.Quantidade := Texto(Conteudo, 'prod', 'qCom');
  Result.Unidade := Texto(Conteudo, 'prod', 'uCom');
  Result.Preco := Texto(Conteudo, 'prod', 'vUnCom');
  Result.Bruto := Texto(Conteudo, 'prod', 'vProd');
  Result.Desconto := SeHouver(Somar(Textos(Conteudo, 'prod', 'vDesc')));
  Result.Acrescimo := SeHouver(Somar(Textos(Conteudo, 'prod', 'vOutro')));
end;

function LerPagamento(const Conteudo: RawByteString): TZelPagamentoLido;
var
  Lugar: Integer;
  Formas: TZelTexto;
begin
  Result.Forma := Texto(Conteudo, 'pag', 'tPag');
  Result.Nome := Result.Forma;
  Result.Valor := Texto(Conteudo, 'pag', 'vPag');
  Formas := ';' + ZelFormas + ';';
  Lugar := Pos(';' + Result.Forma + '=', Formas);
  if Lugar = 0 then
    Exit;
  Delete(Formas, 1, Lugar + Length(Result.Forma) + 1);
  Result.Nome := Copy(Formas, 1, Pos(';', Formas) - 1);
end;

{ False for what is no record of a receipt. Total is that of the totals, empty before. }
function LerRegistro(Registro: RawByteString; var Lido: TZelAndamento; var Total: TZelTexto): Boolean;
var
  Tipo: AnsiChar;
  Numero: RawByteString;
begin
  Result := (Length(Registro) > 2) and (Registro[1] = '0') and (Registro[3] = '|') and
    (Registro[2] in ['1'..'6']);
  if not Result then
    Exit;
  Tipo := Registro[2];
  Delete(Registro, 1, 3);
  if Tipo in ['2', '5'] then
  begin
    if Pos('|', Registro) = 0 then
      Exit(False);
    Numero := Copy(Registro, 1, Pos('|', Registro) - 1);
    Delete(Registro, 1, Pos('|', Registro));
  end;
  case Tipo of
    '1': Lido.Consumidor := LerConsumidor(Registro);
    '2':
    begin
      SetLength(Lido.Lista, Length(Lido.Lista) + 1);
      Lido.Lista[High(Lido.Lista)] := LerItem(Numero, Registro);
    end;
    '3': Total := Texto(Registro, 'ICMSTot', 'vNF');
    '5':
    begin
      SetLength(Lido.Pagamentos, Length(Lido.Pagamentos) + 1);
      Lido.Pagamentos[High(Lido.Pagamentos)] := LerPagamento(Registro);
    end;
  end;
end;

procedure Totalizar(var Lido: TZelAndamento; const Total: TZelTexto);
var
  I: Integer;
  Devido, Pago: Int64;
begin
  Devido := 0;
  Pago := 0;
  for I := 0 to High(Lido.Lista) do
    Inc(Devido, Centavos(Lido.Lista[I].Bruto) + Centavos(Lido.Lista[I].Acrescimo) -
      Centavos(Lido.Lista[I].Desconto));
  if Total <> '' then
    Devido := Centavos(Total);
  for I := 0 to High(Lido.Pagamentos) do
    Inc(Pago, Centavos(Lido.Pagamentos[I].Valor));
  Lido.Total := Moeda(Devido);
  Lido.Pago := Moeda(Pago);
  if Total <> '' then
    Lido.Falta := SeHouver(Devido - Pago);
end;

function ZelLerAndamento(const Bytes: RawByteString; Estado: TZelEstado;
  const Troco: TZelTexto): TZelAndamento;
var
  Total: TZelTexto;
  Inicio, I, Ordem: Integer;
begin
  Result := Default(TZelAndamento);
  Result.Estado := Estado;
  Result.Troco := Troco;
  Total := '';
  Inicio := 1;
  Ordem := 0;
  for I := 1 to Length(Bytes) - 1 do
    if (Bytes[I] = #13) and (Bytes[I + 1] = #10) then
    begin
      Inc(Ordem);
      if not LerRegistro(Copy(Bytes, Inicio, I - Inicio), Result, Total) then
        raise EZelEntrada.Create(TZelTexto('ArqPersist.bin: o registro ') +
          TZelTexto(IntToStr(Ordem)) + TZelTexto(' não é de um cupom'));
      Inicio := I + 2;
    end;
  Totalizar(Result, Total);
end;

end.
