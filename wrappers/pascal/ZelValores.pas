{ SPDX-License-Identifier: MIT }
{ What is converted on the way to the library; failures of the package. }
unit ZelValores;
{$I zel.inc}

interface

uses SysUtils, ZelTipos, ZelTabelas;

const
  { No number: an empty text. }
  ZelVazio = -999999999999.0;

type
  { Whatever this package refuses. }
  EZel = class(Exception);

  { An argument that cannot be handed to the library; nothing was called. }
  EZelEntrada = class(EZel)
  public
    constructor Create(const Mensagem: TZelTexto);
  end;

  { A character that ISO-8859-1 does not have: its code point and its position in characters, from
    1. In UTF-8, a byte that begins no character is one, too. }
  EZelTexto = class(EZelEntrada)
  public
    Argumento: TZelTexto;
    Caractere: Cardinal;
    Posicao: Integer;
  end;

  { The shared object was not found, or cannot be loaded. }
  EZelAusente = class(EZel)
  public
    constructor Create(const Mensagem: TZelTexto);
  end;

  { What the library refused. Texto is what the function wrote all the same: a receipt whose PDF
    failed. Motivo says which field it was, what was given and what is allowed, or file and system
    error; it may be empty. }
  EZelRecusa = class(EZel)
  public
    Funcao, Nome, Significado, Remedio, Texto, Motivo: TZelTexto;
    Codigo: Integer;
    constructor Create(const AFuncao: TZelTexto; ACodigo: Integer; const ATexto, AMotivo: TZelTexto);
  end;

  { The rate of an item: goods or service with its percentage, or none of it. }
  TZelAliquota = record
  private
    FTipo: AnsiString;
    FPercentual: Currency;
  public
    class function Mercadoria(Percentual: Currency): TZelAliquota; static;
    class function Servico(Percentual: Currency): TZelAliquota; static;
    class function Isento: TZelAliquota; static;
    class function NaoIncidencia: TZelAliquota; static;
    class function Substituicao: TZelAliquota; static;
    { "T1800", "S0500", "I". }
    function Converter(const Argumento: TZelTexto): RawByteString;
  end;

  { A discount or a surcharge, as an amount or as a percentage. }
  TZelAjuste = record
  private
    FTipo: AnsiString;
    FValor: Currency;
  public
    class function Desconto(Quantia: Currency): TZelAjuste; static;
    class function DescontoPercentual(Percentual: Currency): TZelAjuste; static;
    class function Acrescimo(Quantia: Currency): TZelAjuste; static;
    class function AcrescimoPercentual(Percentual: Currency): TZelAjuste; static;
    { Sentido is "D" or "A" where the function takes one of them alone, otherwise empty. }
    function ConverterTipo(const Argumento, Sentido: TZelTexto): RawByteString;
    function ConverterValor(const Argumento: TZelTexto): RawByteString;
  end;

function ZelSemAjuste: TZelAjuste;
function ZelSemConsumidor: TZelConsumidor;

{ ISO-8859-1, strictly; letters written in two parts are put together first. Refused are characters
  beyond U+00FF, U+0000, and the controls U+0080 to U+009F, which are nearly always another character
  set taken for this one. }
function ZelLatin1(const Argumento, Texto: TZelTexto; Transliterar: Boolean): RawByteString;
function ZelDeLatin1(Bytes: PAnsiChar): TZelTexto;
{ A text that the function would cut, or leave out, is refused. }
procedure ZelConferirTamanho(const Argumento: TZelTexto; Tamanho, Minimo, Maximo: Integer);
function ZelInteiro(const Argumento: TZelTexto; Valor: Integer; Minimo: Integer = Low(Integer);
  Maximo: Integer = High(Integer)): Integer;
{ With a point, two to four decimals, and at most Casas. }
function ZelDecimal(const Argumento: TZelTexto; Numero: Currency; Casas: Integer): RawByteString;
{ The same; ZelVazio is an empty text. }
function ZelDecimalOpcional(const Argumento: TZelTexto; Numero: Currency;
  Casas: Integer): RawByteString;
{ A file name is bytes of the file system, not ISO-8859-1. }
function ZelCaminho(const Argumento, Nome: TZelTexto): RawByteString;
function ZelDeCaminho(Bytes: PAnsiChar): TZelTexto;
{ A result of that many bytes. }
function ZelSaida(Tamanho: Int64): RawByteString;
{ Up to three directories of up to 300 bytes with their final "/", separated by "|", with room for
  the path that comes back. }
function ZelDiretorios(const Argumento: TZelTexto; const Lista: array of TZelTexto): RawByteString;

implementation

constructor EZelEntrada.Create(const Mensagem: TZelTexto);
begin
  inherited Create(string(Mensagem));
end;

constructor EZelAusente.Create(const Mensagem: TZelTexto);
begin
  inherited Create(string(Mensagem));
end;

constructor EZelRecusa.Create(const AFuncao: TZelTexto; ACodigo: Integer;
  const ATexto, AMotivo: TZelTexto);
var
  Numero, Porque: TZelTexto;
begin
  Motivo := AMotivo;
  if Motivo <> '' then
    Porque := 'Motivo: ' + Motivo + '. ';
  Funcao := AFuncao;
  Codigo := ACodigo;
  Texto := ATexto;
  if not ZelDescrever(ACodigo, Nome, Significado, Remedio) then
  begin
    Nome := 'DESCONHECIDO';
    Significado := TZelTexto('Código que este pacote não conhece.');
  end;
  Numero := TZelTexto(IntToStr(ACodigo));
  inherited Create(string(Funcao + ': ' + Nome + ' (' + Numero + '): ' + Significado + ' ' +
    Porque + Remedio));
end;

function ParaAnsi(const Texto: TZelTexto): RawByteString;
var
  I: Integer;
begin
  Result := '';
  SetLength(Result, Length(Texto));
  for I := 1 to Length(Texto) do
    Result[I] := AnsiChar(Ord(Texto[I]));
end;

{$IFDEF ZEL_UTF16}

{ The character at I, which moves past it. }
function Ler(const Texto: TZelTexto; var I: Integer): Cardinal;
begin
  Result := Ord(Texto[I]);
  Inc(I);
  if (Result >= $D800) and (Result < $DC00) and (I <= Length(Texto)) and
    (Ord(Texto[I]) >= $DC00) and (Ord(Texto[I]) < $E000) then
  begin
    Result := $10000 + ((Result - $D800) shl 10) + (Cardinal(Ord(Texto[I])) - $DC00);
    Inc(I);
  end;
end;

{$ELSE}

{ The character at I, which moves past it; a byte that is no UTF-8 (cut short, longer than needed,
  a surrogate, above U+10FFFF) is a character between U+DC80 and U+DCFF, which no text has. }
function Ler(const Texto: TZelTexto; var I: Integer): Cardinal;
const
  Menores: array[1..4] of Cardinal = (0, $80, $800, $10000);
var
  Guia: Byte;
  Bytes, J: Integer;
begin
  Guia := Ord(Texto[I]);
  case Guia of
    $00..$7F: Bytes := 1;
    $C2..$DF: Bytes := 2;
    $E0..$EF: Bytes := 3;
    $F0..$F4: Bytes := 4;
  else
    Bytes := 5;
  end;
  Result := $DC00 + Guia;
  if I + Bytes - 1 <= Length(Texto) then
  begin
    if Bytes = 1 then
      Result := Guia
    else
      Result := Guia and ($7F shr Bytes);
    for J := 1 to Bytes - 1 do
      if Ord(Texto[I + J]) and $C0 = $80 then
        Result := (Result shl 6) or (Ord(Texto[I + J]) and $3F)
      else
        Result := $FFFFFF;
    if (Result < Menores[Bytes]) or (Result > $10FFFF) or
      ((Result >= $D800) and (Result < $E000)) then
      Result := $DC00 + Guia;
  end;
  if (Result >= $DC80) and (Result < $DD00) then
    Bytes := 1;
  Inc(I, Bytes);
end;

{$ENDIF}

procedure Recusar(const Argumento: TZelTexto; Caractere: Cardinal; Posicao: Integer;
  const Glifo: TZelTexto);
var
  Erro: EZelTexto;
  Mostrado: TZelTexto;
begin
  Mostrado := '';
  if (Caractere >= $A0) and ((Caractere < $D800) or (Caractere > $DFFF)) then
    Mostrado := ' "' + Glifo + '"';
  Erro := EZelTexto.Create(Argumento + ': o caractere' + Mostrado + ' (U+' +
    TZelTexto(IntToHex(Caractere, 4)) + TZelTexto(') na posição ') + TZelTexto(IntToStr(Posicao)) +
    TZelTexto(' não existe em ISO-8859-1'));
  Erro.Argumento := Argumento;
  Erro.Caractere := Caractere;
  Erro.Posicao := Posicao;
  raise Erro;
end;

function ZelLatin1(const Argumento, Texto: TZelTexto; Transliterar: Boolean): RawByteString;
var
  I, J, Inicio, Depois, Posicao, Usados: Integer;
  C, Junta: Cardinal;
  Simples: TZelTexto;
  Outros: RawByteString;
begin
  Result := '';
  SetLength(Result, 3 * Length(Texto)); { three points for one character }
  Usados := 0;
  I := 1;
  Posicao := 0;
  while I <= Length(Texto) do
  begin
    Inicio := I;
    C := Ler(Texto, I);
    Depois := I;
    if (C < $80) and (I <= Length(Texto)) then
    begin
      Junta := ZelCompor(C, Ler(Texto, Depois));
      if Junta <> 0 then
      begin
        C := Junta;
        I := Depois;
      end;
    end;
    Inc(Posicao);
    Outros := '';
    if Transliterar and ZelTransliterar(C, Simples) then
      Outros := ZelLatin1(Argumento, Simples, False)
    else if (C > $FF) or (C = 0) or ((C >= $80) and (C < $A0)) then
      Recusar(Argumento, C, Posicao, Copy(Texto, Inicio, I - Inicio))
    else
    begin
      Inc(Usados);
      Result[Usados] := AnsiChar(C);
    end;
    for J := 1 to Length(Outros) do
      Result[Usados + J] := Outros[J];
    Inc(Usados, Length(Outros));
  end;
  SetLength(Result, Usados);
end;

function ZelDeLatin1(Bytes: PAnsiChar): TZelTexto;
{$IFDEF ZEL_UTF16}
var
  I: Integer;
begin
  SetLength(Result, StrLen(Bytes));
  for I := 1 to Length(Result) do
    Result[I] := WideChar(Ord(Bytes[I - 1]));
end;
{$ELSE}
var
  I, Usados: Integer;
begin
  Result := '';
  SetLength(Result, 2 * StrLen(Bytes));
  Usados := 0;
  for I := 0 to Integer(StrLen(Bytes)) - 1 do
  begin
    Inc(Usados);
    if Ord(Bytes[I]) < $80 then
      Result[Usados] := Bytes[I]
    else
    begin
      Result[Usados] := AnsiChar($C0 or (Ord(Bytes[I]) shr 6));
      Inc(Usados);
      Result[Usados] := AnsiChar($80 or (Ord(Bytes[I]) and $3F));
    end;
  end;
  SetLength(Result, Usados);
end;
{$ENDIF}

function Escrever(const Argumento: TZelTexto; Numero: Currency; Casas: Integer): TZelTexto;
var
  Unidades: Int64; { a Currency is an Int64 of ten-thousandths }
  Decimais: TZelTexto;
begin
  Unidades := PInt64(@Numero)^;
  Decimais := TZelTexto(IntToStr(10000 + Abs(Unidades) mod 10000));
  Delete(Decimais, 1, 1);
  while (Length(Decimais) > 2) and (Decimais[Length(Decimais)] = '0') do
    Delete(Decimais, Length(Decimais), 1);
  Result := TZelTexto(IntToStr(Abs(Unidades) div 10000)) + '.' + Decimais;
  if Unidades < 0 then
    Result := '-' + Result;
  if Length(Decimais) > Casas then
    raise EZelEntrada.Create(Argumento + ': ' + Result + ' tem mais de ' +
      TZelTexto(IntToStr(Casas)) + ' casas decimais');
  if Length(Result) > 15 then
    raise EZelEntrada.Create(Argumento + ': ' + Result + ' passa de 15 caracteres');
end;

procedure ZelConferirTamanho(const Argumento: TZelTexto; Tamanho, Minimo, Maximo: Integer);
var
  Permitido: TZelTexto;
begin
  if (Tamanho >= Minimo) and (Tamanho <= Maximo) then
    Exit;
  Permitido := TZelTexto('até ');
  if Minimo = Maximo then
    Permitido := 'exatamente '
  else if Minimo > 0 then
    Permitido := 'de ' + TZelTexto(IntToStr(Minimo)) + ' a ';
  raise EZelEntrada.Create(Argumento + ': ' + TZelTexto(IntToStr(Tamanho)) +
    ' caracteres; permitido: ' + Permitido + TZelTexto(IntToStr(Maximo)));
end;

function ZelInteiro(const Argumento: TZelTexto; Valor, Minimo, Maximo: Integer): Integer;
begin
  Result := Valor;
  if (Valor < Minimo) or (Valor > Maximo) then
    raise EZelEntrada.Create(Argumento + ': ' + TZelTexto(IntToStr(Valor)) +
      TZelTexto(' não está entre ') + TZelTexto(IntToStr(Minimo)) + ' e ' +
      TZelTexto(IntToStr(Maximo)));
end;

function EhVazio(Numero: Currency): Boolean;
const
  Vazio: Currency = ZelVazio;
begin
  Result := Numero = Vazio;
end;

function ZelDecimal(const Argumento: TZelTexto; Numero: Currency; Casas: Integer): RawByteString;
begin
  if EhVazio(Numero) then
    raise EZelEntrada.Create(Argumento + TZelTexto(': é obrigatório'));
  Result := ParaAnsi(Escrever(Argumento, Numero, Casas));
end;

function ZelDecimalOpcional(const Argumento: TZelTexto; Numero: Currency;
  Casas: Integer): RawByteString;
begin
  Result := '';
  if not EhVazio(Numero) then
    Result := ZelDecimal(Argumento, Numero, Casas);
end;

function ZelCaminho(const Argumento, Nome: TZelTexto): RawByteString;
begin
  if Pos(#0, Nome) > 0 then
    raise EZelEntrada.Create(Argumento + ': nome de arquivo com U+0000');
{$IFDEF ZEL_UTF16}
  Result := UTF8Encode(Nome);
{$ELSE}
  Result := Nome;
{$ENDIF}
  if Length(Result) > 300 then
    raise EZelEntrada.Create(Argumento + ': nome de arquivo com mais de 300 bytes');
end;

function ZelDeCaminho(Bytes: PAnsiChar): TZelTexto;
var
  Nome: UTF8String;
begin
  SetString(Nome, Bytes, StrLen(Bytes));
{$IFDEF ZEL_UTF16}
  Result := UTF8ToString(Nome);
{$ELSE}
  Result := Nome;
{$ENDIF}
end;

function ZelSaida(Tamanho: Int64): RawByteString;
begin
  Result := '';
  SetLength(Result, Tamanho);
  FillChar(PAnsiChar(Result)^, Tamanho, 0);
end;

function ZelDiretorios(const Argumento: TZelTexto; const Lista: array of TZelTexto): RawByteString;
var
  I: Integer;
  Nome, Todos: RawByteString;
begin
  if (Length(Lista) < 1) or (Length(Lista) > 3) then
    raise EZelEntrada.Create(Argumento + TZelTexto(': de um a três diretórios'));
  Todos := '';
  for I := Low(Lista) to High(Lista) do
  begin
    Nome := ZelCaminho(Argumento, Lista[I]);
    if (Nome = '') or (Nome[Length(Nome)] <> '/') then
      Nome := Nome + '/';
    if (Length(Nome) > 300) or (Pos('|', Nome) > 0) then
      raise EZelEntrada.Create(Argumento + TZelTexto(': diretório com | ou mais de 300 bytes'));
    if I > Low(Lista) then
      Todos := Todos + '|';
    Todos := Todos + Nome;
  end;
  Result := ZelSaida(ZEL_TAMANHO_DIRETORIOS + 64);
  Move(PAnsiChar(Todos)^, PAnsiChar(Result)^, Length(Todos));
end;

function Aliquota(const Tipo: AnsiString; Percentual: Currency): TZelAliquota;
begin
  Result.FTipo := Tipo;
  Result.FPercentual := Percentual;
end;

class function TZelAliquota.Mercadoria(Percentual: Currency): TZelAliquota;
begin
  Result := Aliquota('T', Percentual);
end;

class function TZelAliquota.Servico(Percentual: Currency): TZelAliquota;
begin
  Result := Aliquota('S', Percentual);
end;

class function TZelAliquota.Isento: TZelAliquota;
begin
  Result := Aliquota('I', 0);
end;

class function TZelAliquota.NaoIncidencia: TZelAliquota;
begin
  Result := Aliquota('N', 0);
end;

class function TZelAliquota.Substituicao: TZelAliquota;
begin
  Result := Aliquota('F', 0);
end;

function TZelAliquota.Converter(const Argumento: TZelTexto): RawByteString;
var
  Escrito: TZelTexto;
begin
  Result := FTipo;
  if (FTipo <> 'T') and (FTipo <> 'S') then
    Exit;
  Escrito := Escrever(Argumento, FPercentual, 2);
  if (FPercentual < 0) or (Length(Escrito) > 5) then
    raise EZelEntrada.Create(Argumento + ': ' + Escrito + TZelTexto(' não está entre 0 e 99,99'));
  Delete(Escrito, Pos('.', Escrito), 1);
  while Length(Escrito) < 4 do
    Escrito := '0' + Escrito;
  Result := Result + ParaAnsi(Escrito);
end;

function Ajuste(const Tipo: AnsiString; Valor: Currency): TZelAjuste;
begin
  Result.FTipo := Tipo;
  Result.FValor := Valor;
end;

class function TZelAjuste.Desconto(Quantia: Currency): TZelAjuste;
begin
  Result := Ajuste('D$', Quantia);
end;

class function TZelAjuste.DescontoPercentual(Percentual: Currency): TZelAjuste;
begin
  Result := Ajuste('D%', Percentual);
end;

class function TZelAjuste.Acrescimo(Quantia: Currency): TZelAjuste;
begin
  Result := Ajuste('A$', Quantia);
end;

class function TZelAjuste.AcrescimoPercentual(Percentual: Currency): TZelAjuste;
begin
  Result := Ajuste('A%', Percentual);
end;

function TZelAjuste.ConverterTipo(const Argumento, Sentido: TZelTexto): RawByteString;
begin
  if (Sentido <> '') and ((FTipo = '') or (Ord(FTipo[1]) <> Ord(Sentido[1]))) then
    if Sentido = 'D' then
      raise EZelEntrada.Create(Argumento + TZelTexto(': não é um desconto'))
    else
      raise EZelEntrada.Create(Argumento + TZelTexto(': não é um acréscimo'));
  Result := FTipo;
end;

function TZelAjuste.ConverterValor(const Argumento: TZelTexto): RawByteString;
begin
  Result := '';
  if FTipo = '' then
    Exit;
  if FTipo[2] = '$' then { an amount is in cents }
    Result := ZelDecimal(Argumento, FValor, 2)
  else
    Result := ZelDecimal(Argumento, FValor, 4);
end;

function ZelSemAjuste: TZelAjuste;
begin
  Result := Ajuste('', ZelVazio);
end;

function ZelSemConsumidor: TZelConsumidor;
begin
  Finalize(Result);
  FillChar(Result, SizeOf(Result), 0);
end;

end.
