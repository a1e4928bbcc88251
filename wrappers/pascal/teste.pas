{ SPDX-License-Identifier: MIT }
{ The units against a real library: teste DIRECTORY LIBRARY CASES }
program teste;
{$I zel.inc}
{$CODEPAGE UTF8}

uses
  cthreads, Classes, SysUtils, ZelTipos, ZelTabelas, ZelValores, ZelChamada, ZelFelbor;

type
  { The kinds of what is thrown. }
  TClasse = class of EZel;
  TPasso = procedure;

  TTrabalho = class(TThread)
  public
    Chave, Erro: TZelTexto;
    procedure Execute; override;
  end;

var
  Diretorio, Biblioteca: TZelTexto;
  Falhas: Integer = 0;
  Firme, Tolerante: TCupom;
  Visto: TZelTexto; { the message of the last refusal }
  Entrada: array of TZelTexto; { of the case that is tried }

procedure Conferir(Certo: Boolean; const OQue: TZelTexto);
begin
  if Certo then
    Exit;
  WriteLn('failed: ', OQue);
  Inc(Falhas);
end;

procedure Igual(const Lido, Esperado, OQue: TZelTexto);
begin
  Conferir(Lido = Esperado, OQue + ': ' + Lido + ', expected ' + Esperado);
end;

function Contem(const Texto, Parte: TZelTexto): Boolean;
begin
  Result := (Parte = '') or (Pos(Parte, Texto) > 0);
end;

{ A step has to be refused with an exception of that class, whose message holds the text. }
procedure Recusado(Passo: TPasso; Classe: TClasse; const Parte, OQue: TZelTexto);
begin
  Visto := '';
  try
    Passo;
    Conferir(False, OQue + ' was not refused');
  except
    on E: EZel do
    begin
      Visto := TZelTexto(E.Message);
      Conferir((E is Classe) and Contem(Visto, Parte), OQue + ': ' + Visto);
    end;
  end;
end;

function Hexa(const Bytes: RawByteString): TZelTexto;
var
  I: Integer;
begin
  Result := '';
  for I := 1 to Length(Bytes) do
    Result := Result + TZelTexto(IntToHex(Ord(Bytes[I]), 2));
end;

function Converter(const Campos: array of TZelTexto): TZelTexto;
var
  Numero: Currency;
  Formato: TFormatSettings;
  Escrito: RawByteString;
begin
  if Campos[0] = 'texto' then
    Exit(Hexa(ZelLatin1('a', Campos[2], Campos[1] = 'transliterar')));
  Formato := DefaultFormatSettings;
  Formato.DecimalSeparator := '.';
  Numero := StrToCurr(string(Campos[2]), Formato);
  if Campos[1] = 'mercadoria' then
    Escrito := TZelAliquota.Mercadoria(Numero).Converter('a')
  else if Campos[1] = 'servico' then
    Escrito := TZelAliquota.Servico(Numero).Converter('a')
  else
    Escrito := ZelDecimal('a', Numero, StrToInt(string(Campos[1])));
  Result := ZelDeLatin1(PAnsiChar(Escrito));
end;

procedure ConverterEntrada;
begin
  Converter(Entrada);
end;

function Separar(Linha: TZelTexto): Integer;
var
  Lugar: Integer;
begin
  SetLength(Entrada, 0);
  repeat
    Lugar := Pos(#9, Linha);
    if Lugar = 0 then
      Lugar := Length(Linha) + 1;
    SetLength(Entrada, Length(Entrada) + 1);
    Entrada[High(Entrada)] := Copy(Linha, 1, Lugar - 1);
    Delete(Linha, 1, Lugar);
  until Linha = '';
  Result := Length(Entrada);
end;

procedure TestarCaso(const Linha: TZelTexto);
var
  Esperado: TZelTexto;
begin
  { A Currency has no more than four decimals. }
  if (Separar(Linha) <> 4) or (Entrada[0] = 'decimalLongo') then
    Exit;
  Esperado := Entrada[3];
  if Esperado[1] <> '!' then
    Igual(Converter(Entrada), Esperado, Linha)
  else if Entrada[0] <> 'texto' then
    Recusado(ConverterEntrada, EZelEntrada, '', Linha)
  else
    Recusado(ConverterEntrada, EZelTexto, '(' + Copy(Esperado, 2, Pos(' ', Esperado) - 2) +
      TZelTexto(') na posição ') + Copy(Esperado, Pos(' ', Esperado) + 1, 9) +
      TZelTexto(' não existe'), Linha);
end;

procedure NuloNoTexto;
begin
  ZelLatin1('a', 'P'#0'o', True);
end;

procedure MetadeDeCaractere;
begin
{$IFDEF ZEL_UTF16}
  ZelLatin1('a', TZelTexto('P') + WideChar($D83E), True);
{$ELSE}
  ZelLatin1('a', 'P'#$C3, True);
{$ENDIF}
end;

{ "Pão" in ISO-8859-1 where UTF-8 is expected. }
procedure Latin1NoLugarDeUtf8;
begin
{$IFDEF ZEL_UTF16}
  MetadeDeCaractere;
{$ELSE}
  ZelLatin1('a', 'P'#$E3'o', True);
{$ENDIF}
end;

procedure TestarConversoes(const Arquivo: string);
var
  Casos: Text;
  Linha: UTF8String;
  Quantos: Integer;
begin
  Assign(Casos, Arquivo);
  SetTextCodePage(Casos, 65001);
  Reset(Casos);
  Quantos := 0;
  while not Eof(Casos) do
  begin
    ReadLn(Casos, Linha);
    if Linha[1] = '#' then
      Continue;
    Inc(Quantos);
{$IFDEF ZEL_UTF16}
    TestarCaso(UTF8ToString(Linha));
{$ELSE}
    TestarCaso(Linha);
{$ENDIF}
  end;
  Close(Casos);
  Conferir(Quantos > 30, 'the cases were not read');
  Recusado(NuloNoTexto, EZelTexto, TZelTexto('(U+0000) na posição 2'), 'U+0000');
  Recusado(MetadeDeCaractere, EZelTexto, TZelTexto('na posição 2'), 'half a character');
  Recusado(Latin1NoLugarDeUtf8, EZelTexto, TZelTexto('na posição 2'), 'ISO-8859-1 for UTF-8');
end;

procedure Relativo;
begin
  TCupom.Create('caixa1', False, Biblioteca);
end;

procedure Inexistente;
begin
  TCupom.Create('/nao/ha', False, Biblioteca);
end;

procedure Segundo;
begin
  TCupom.Create('/', False, Biblioteca);
end;

procedure TestarDiretorio;
begin
  Recusado(Relativo, EZelEntrada, 'caminho absoluto', 'relative');
  Recusado(Inexistente, EZelEntrada, TZelTexto('não existe'), 'missing');
  Firme := TCupom.Create(Diretorio, False, Biblioteca);
  Tolerante := TCupom.Create(Diretorio + '/', True, Biblioteca);
  Recusado(Segundo, EZelEntrada, TZelTexto('já trabalha em ') + Diretorio, 'second');
  Firme.Inicializar;
  Conferir(FileExists(string(Diretorio + '/ZEL_Framework.xml')), 'files elsewhere');
end;

procedure Vender(Caixa: TCupom; const Descricao: TZelTexto);
begin
  Caixa.Vender(TZelAliquota.Mercadoria(18), 1.5, 0.75, '101', 'UN', Descricao);
end;

procedure VenderTravessao;
begin
  Vender(Firme, TZelTexto('Pão de queijo – 1ª'));
end;

procedure VenderEuro;
begin
  Vender(Tolerante, TZelTexto('1 €'));
end;

procedure AcrescimoComoDesconto;
begin
  Firme.LancarDescontoItem(1, TZelAjuste.Acrescimo(1));
end;

procedure AbrirDeNovo;
begin
  Firme.Abrir;
end;

procedure TestarRecusas;
begin
  Recusado(VenderTravessao, EZelTexto,
    TZelTexto('descricao: o caractere "–" (U+2013) na posição 15 não existe'), 'dash');
  Recusado(VenderEuro, EZelTexto, TZelTexto('€'), 'euro');
  Conferir(Firme.VerificarStatus = zeAberto, 'a refused text was sold');
  Recusado(AcrescimoComoDesconto, EZelEntrada, TZelTexto('não é um desconto'), 'surcharge');
  Recusado(AbrirDeNovo, EZelRecusa, '', 'open again');
  Igual(Visto, TZelTexto('aCFAbrir_ZEL: ZEL_CUPOM_EM_ANDAMENTO (-130): Já há um cupom em ') +
    'andamento. Continue-o, ou cancele-o com tCFCancelar_ZEL e cinco textos vazios.', 'message');
end;

procedure ImprimirInexistente;
begin
  Firme.Imprimir('/nao/ha.xml');
end;

procedure TestarImpressao;
const
  Queijo = 'Pão de queijo - 1ª';
var
  Cupom, Ctg: TZelTexto;
begin
  Cupom := Firme.Imprimir(Firme.Arquivo('documentosEnvio.xml'));
  Conferir((Length(Cupom) > 131072) and Contem(Cupom, TZelTexto(Queijo)), 'receipt');
  Conferir(Firme.UltimoCupom = Cupom, 'last receipt');
  Conferir(Contem(Firme.Reemitir(1), TZelTexto(Queijo)), 'document issued again');
  Ctg := Firme.Contingencia([Diretorio]);
  Conferir(FileExists(string(Ctg)), 'no file ' + Ctg);
  Conferir(Contem(Firme.Imprimir(Ctg), TZelTexto(Queijo)), 'receipt of a scrambled file');
  Recusado(ImprimirInexistente, EZelEntrada, TZelTexto('não pôde ser lido'), 'missing file');
  Firme.AlterarValor('CONFIGURACAO\SalvarDanfePDF', '1');
  try
    Firme.Imprimir(Ctg);
    Conferir(False, 'a PDF offline was not refused');
  except
    on E: EZelRecusa do
      Conferir(Contem(E.Texto, TZelTexto(Queijo)), 'the text of a failed PDF is lost');
  end;
end;

function LerBytes(const Nome: TZelTexto): TZelTexto;
var
  Bytes: TMemoryStream;
begin
  Bytes := TMemoryStream.Create;
  Bytes.LoadFromFile(string(Nome));
  Bytes.Size := Bytes.Size + 1;
  PAnsiChar(Bytes.Memory)[Bytes.Size - 1] := #0;
  Result := ZelDeLatin1(Bytes.Memory);
  Bytes.Free;
end;

procedure TestarCupom;
var
  I: Integer;
  Longa: TZelTexto;
begin
  Firme.AlterarValor('EMIT\xNome', TZelTexto('Padaria São João'));
  Igual(Firme.RetornarValor('EMIT\xNome'), TZelTexto('Padaria São João'), 'value read back');
  Firme.Abrir;
  TestarRecusas;
  Vender(Tolerante, TZelTexto('Pão de queijo – 1ª'));
  Longa := '';
  for I := 1 to 120 do
    Longa := Longa + TZelTexto('É');
  for I := 1 to 800 do
    Vender(Firme, Longa);
  Firme.Totalizar;
  Firme.EfetuarPagamento(zfDinheiro);
  Firme.Encerrar(TZelTexto('Obrigado pela preferência'));
  Conferir(Contem(LerBytes(Firme.Arquivo('documentosEnvio.xml')),
    TZelTexto('<xProd>Pão de queijo - 1ª</xProd>')), 'bytes of the accents');
  TestarImpressao;
  Conferir(Firme.Cancelar = ZEL_CANCELAMENTO_GRAVADO, 'cancellation');
end;

procedure TTrabalho.Execute;
var
  I: Integer;
begin
  try
    for I := 1 to 200 do
    begin
      Firme.AlterarValor(Chave, TZelTexto(IntToStr(I)));
      if Firme.RetornarValor(Chave) <> TZelTexto(IntToStr(I)) then
        Erro := 'read another value';
    end;
  except
    on E: Exception do
      Erro := TZelTexto(E.Message);
  end;
end;

procedure TestarThreads;
const
  Chaves: array[0..1] of TZelTexto = ('EMIT\IE', 'EMIT\xNome');
var
  Trabalhos: array[0..1] of TTrabalho;
  I: Integer;
begin
  for I := 0 to 1 do
  begin
    Trabalhos[I] := TTrabalho.Create(True);
    Trabalhos[I].Chave := Chaves[I];
  end;
  for I := 0 to 1 do
    Trabalhos[I].Start;
  for I := 0 to 1 do
  begin
    Trabalhos[I].WaitFor;
    Igual(Trabalhos[I].Erro, '', 'thread');
    Trabalhos[I].Free;
  end;
end;

begin
  SetTextCodePage(Output, 65001);
  DefaultFormatSettings.DecimalSeparator := ','; { which no number may follow }
  Diretorio := TZelTexto(ParamStr(1));
  Biblioteca := TZelTexto(ParamStr(2));
  TestarConversoes(ParamStr(3));
  TestarDiretorio;
  TestarCupom;
  TestarThreads;
  Firme.Free;
  Tolerante.Free;
  if Falhas > 0 then
    Halt(1);
  WriteLn('Pascal: ok');
end.
