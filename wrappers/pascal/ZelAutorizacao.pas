{ SPDX-License-Identifier: MIT }
{ Whether a receipt may be given to a customer: of a document that the authority authorized, or of one
  of contingency; without fiscal value nothing is promised. }
unit ZelAutorizacao;
{$I zel.inc}

interface

uses ZelTipos;

{ Bytes of a document and of its return; ComRetorno is False for "OFFLINE". }
procedure ZelConferirAutorizacao(const Documento, Retorno: RawByteString;
  ComRetorno, Cancelamento: Boolean);

implementation

uses ZelValores;

function Minusculas(const Bytes: RawByteString): RawByteString;
var
  I: Integer;
begin
  Result := Bytes;
  for I := 1 to Length(Result) do
    if Result[I] in ['A'..'Z'] then
      Result[I] := AnsiChar(Ord(Result[I]) + 32);
end;

{ The digits after the last Marca; Achada tells whether there is one. }
function DigitosDepois(const Texto, Marca: RawByteString; out Achada: Boolean): RawByteString;
var
  I: Integer;
begin
  Result := '';
  I := Length(Texto) - Length(Marca) + 1;
  while (I > 0) and (Copy(Texto, I, Length(Marca)) <> Marca) do
    Dec(I);
  Achada := I > 0;
  if not Achada then
    Exit;
  Inc(I, Length(Marca));
  while (I <= Length(Texto)) and (Texto[I] in [#9, #10, #13, ' ']) do
    Inc(I);
  while (I <= Length(Texto)) and (Texto[I] in ['0'..'9']) do
  begin
    Result := Result + Texto[I];
    Inc(I);
  end;
end;

{ Of the sending component's form, or of the authority's, whose last status is the document's. }
function Situacao(const Retorno: RawByteString): RawByteString;
var
  Texto: RawByteString;
  Achada: Boolean;
begin
  Texto := Minusculas(Retorno);
  Result := DigitosDepois(Texto, '<sitcodigo>', Achada);
  if not Achada then
    Result := DigitosDepois(Texto, '<cstat>', Achada);
end;

function DeContingencia(const Documento: RawByteString): Boolean;
const
  Marca = 'Id="NFe';
  Emissao = 34; { digits of the key in front of the kind of emission }
var
  Lugar: Integer;
begin
  Result := (Documento = '') or (Documento[1] <> '<');
  Lugar := Pos(Marca, Documento);
  if not Result and (Lugar > 0) then
    Result := Copy(Documento, Lugar + Length(Marca) + Emissao, 1) = '9';
end;

procedure ZelConferirAutorizacao(const Documento, Retorno: RawByteString;
  ComRetorno, Cancelamento: Boolean);
const
  Contorno = '; para um ensaio, ASemAutorizacao';
var
  Vista: RawByteString;
  OQue: TZelTexto;
begin
  if not ComRetorno then
  begin
    if (Pos('<tpAmb>1</tpAmb>', Documento) > 0) and not DeContingencia(Documento) then
      raise EZelEntrada.Create(TZelTexto('retorno: OFFLINE só serve a um documento de ') +
        TZelTexto('contingência; este ainda não tem a resposta da SEFAZ') + Contorno);
    Exit;
  end;
  Vista := Situacao(Retorno);
  if Cancelamento and ((Vista = '135') or (Vista = '155')) then
    Exit;
  if not Cancelamento and ((Vista = '100') or (Vista = '150')) then
    Exit;
  OQue := 'autorizou a venda';
  if Cancelamento then
    OQue := 'registrou o cancelamento';
  if Vista = '' then
    Vista := 'ausente';
  raise EZelEntrada.Create(TZelTexto('retorno: a SEFAZ não ') + OQue + ' (SitCodigo ' +
    ZelDeLatin1(PAnsiChar(Vista)) + ')' + Contorno);
end;

end.
