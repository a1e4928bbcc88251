{ SPDX-License-Identifier: MIT }
{ Who a receipt is for: what the functions would take for something else, or leave out without a word,
  is refused. }
unit ZelIdentificacao;
{$I zel.inc}

interface

uses ZelTipos, ZelTabelas;

{ The digits of a CPF, or of a CNPJ: of either of them in a "documento". }
function ZelDocumento(const Argumento, Valor: TZelTexto): RawByteString;
{ What Funcao is given as the document of the consumer. }
function ZelIdentificar(const Funcao: TZelTexto; const C: TZelConsumidor;
  Cortar: Boolean): RawByteString;

implementation

uses SysUtils, ZelValores;

const
  Identificar = 'aCFIdentificarConsumidor_ZEL';

type
  TCampo = record
    Nome, Valor: TZelTexto;
  end;

procedure Recusar(const Mensagem: TZelTexto);
begin
  raise EZelEntrada.Create(Mensagem);
end;

{ The check digit after Digitos, whose weights go from 2 to Maior, from the right. }
function Digito(const Digitos: RawByteString; Maior: Integer): AnsiChar;
var
  I, Soma: Integer;
begin
  Soma := 0;
  for I := 0 to Length(Digitos) - 1 do
    Inc(Soma, (Ord(Digitos[Length(Digitos) - I]) - Ord('0')) * (2 + I mod (Maior - 1)));
  Result := '0';
  if Soma mod 11 >= 2 then
    Result := AnsiChar(Ord('0') + 11 - Soma mod 11);
end;

function Confere(const Digitos: RawByteString): Boolean;
var
  Maior: Integer;
  Inteiro, Iguais: RawByteString;
begin
  Maior := 9;
  if Length(Digitos) = 11 then
    Maior := 11;
  Inteiro := Copy(Digitos, 1, Length(Digitos) - 2);
  Inteiro := Inteiro + Digito(Inteiro, Maior);
  Inteiro := Inteiro + Digito(Inteiro, Maior);
  Iguais := '';
  while Length(Iguais) < Length(Digitos) do
    Iguais := Iguais + Digitos[1];
  Result := (Inteiro = Digitos) and (Digitos <> Iguais);
end;

function SoDigitos(const Argumento, Valor: TZelTexto): RawByteString;
var
  I: Integer;
begin
  Result := '';
  for I := 1 to Length(Valor) do
    case Valor[I] of
      '0'..'9': Result := Result + AnsiChar(Ord(Valor[I]));
      ' ', '.', '-', '/': ;
    else
      Recusar(Argumento + TZelTexto(': só dígitos, com ou sem ponto, barra e traço'));
    end;
end;

function ZelDocumento(const Argumento, Valor: TZelTexto): RawByteString;
var
  Certo: Boolean;
begin
  Result := SoDigitos(Argumento, Valor);
  Certo := ((Length(Result) = 11) and (Argumento <> 'cnpj')) or
    ((Length(Result) = 14) and (Argumento <> 'cpf'));
  if not Certo then
    Recusar(Argumento + ': ' + TZelTexto(IntToStr(Length(Result))) +
      TZelTexto(' dígitos; um CPF tem 11, um CNPJ 14'));
  if not Confere(Result) then
    Recusar(Argumento + TZelTexto(': os dígitos verificadores não conferem'));
end;

function Estrangeiro(const Funcao, Valor: TZelTexto): RawByteString;
begin
  Result := SoDigitos('estrangeiro', Valor);
  if (Length(Result) < 5) or (Length(Result) > 20) or (Length(Result) = 11) or
    (Length(Result) = 14) then
    Recusar('estrangeiro: ' + TZelTexto(IntToStr(Length(Result))) + TZelTexto(
      ' dígitos; permitido: de 5 a 20, e não 11 nem 14, que seriam um CPF ou um CNPJ'));
  if Funcao = Identificar then
    Recusar('estrangeiro: ' + Funcao + TZelTexto(' não o grava; informe-o ao abrir o cupom'));
end;

function Campo(const Nome, Valor: TZelTexto): TCampo;
begin
  Result.Nome := Nome;
  Result.Valor := Valor;
end;

{ The first of the fields that is not empty, or an empty one. }
function Primeiro(const Campos: array of TCampo): TCampo;
var
  I: Integer;
begin
  Result := Campo('', '');
  for I := High(Campos) downto Low(Campos) do
    if Campos[I].Valor <> '' then
      Result := Campos[I];
end;

{ What would not stand in the document. }
procedure ConferirPerdas(const Funcao: TZelTexto; const C: TZelConsumidor; Identificado: Boolean);
var
  Endereco, Todos: TCampo;
begin
  Endereco := Primeiro([Campo('numero', C.Numero), Campo('bairro', C.Bairro),
    Campo('codigoMunicipio', C.Codigomunicipio), Campo('municipio', C.Municipio),
    Campo('uf', C.Uf), Campo('cep', C.Cep)]);
  Todos := Primeiro([Campo('nome', C.Nome), Campo('logradouro', C.Logradouro), Endereco,
    Campo('email', C.Email)]);
  if (Todos.Nome <> '') and not Identificado then
    Recusar(Todos.Nome + TZelTexto(
      ': sem CPF, CNPJ ou documento de estrangeiro o consumidor não é gravado'));
  if (C.Email <> '') and (Funcao <> Identificar) then
    Recusar('email: ' + Funcao + TZelTexto(' não o grava; chame IdentificarConsumidor'));
  if (Endereco.Nome <> '') and (C.Logradouro = '') then
    Recusar(Endereco.Nome + TZelTexto(': sem logradouro o endereço não é gravado'));
end;

function ZelIdentificar(const Funcao: TZelTexto; const C: TZelConsumidor;
  Cortar: Boolean): RawByteString;
var
  Dada: TCampo;
  Juntas: TZelTexto;
begin
  Dada := Primeiro([Campo('documento', C.Documento), Campo('cpf', C.Cpf), Campo('cnpj', C.Cnpj),
    Campo('estrangeiro', C.Estrangeiro)]);
  Juntas := C.Documento + C.Cpf + C.Cnpj + C.Estrangeiro;
  if Juntas <> Dada.Valor then
    Recusar(TZelTexto('consumidor: dê um só entre documento, cpf, cnpj e estrangeiro'));
  if Cortar then
    Exit(ZelLatin1(Dada.Nome, Dada.Valor, False));
  ConferirPerdas(Funcao, C, Dada.Nome <> '');
  Result := '';
  if Dada.Nome = 'estrangeiro' then
    Result := Estrangeiro(Funcao, Dada.Valor)
  else if Dada.Nome <> '' then
    Result := ZelDocumento(Dada.Nome, Dada.Valor);
end;

end.
