{ SPDX-License-Identifier: MIT }
{ The units against a real library: teste DIRECTORY LIBRARY CASES }
program teste;
{$I zel.inc}
{$CODEPAGE UTF8}

uses
  cthreads, Classes, SysUtils, ZelTipos, ZelTabelas, ZelValores, ZelAutorizacao, ZelAndamento, ZelIdentificacao,
  ZelChamada, ZelFelbor;

type
  { The kinds of what is thrown. }
  TClasse = class of EZel;
  { What has to be refused. }
  TPasso = (psEntrada, psAndamento, psNulo, psMetade, psLatin1, psTravessao, psEuro, psAcrescimo, psAbrir,
    psImprimir, psPdf, psSerie, psCentavos, psDescricao, psTransportadora, psFisco, psDestino,
    psQuantidade, psValorLongo, psChave, psInexistente, psAusente);

  { What the library is not asked: the conversions that its operations are made of. }
  TProvador = class(TZelChamador)
  public
    function Provar(const Texto: TZelTexto; Minimo, Maximo: Integer): RawByteString;
  end;

  PTexto = ^TZelTexto;

var
  Diretorio, Biblioteca: TZelTexto;
  Falhas: Integer = 0;
  Firme, Tolerante: TCupom;
  { The message of the last refusal, its text, its reason and its function. }
  Visto, TextoVisto, MotivoVisto, FuncaoVista: TZelTexto;
  Ctg: TZelTexto; { the file of the contingency }
  Entrada: array of TZelTexto; { of the case that is tried }

function fechar(Descritor: Integer): Integer; cdecl; external 'c' name 'close';

function TProvador.Provar(const Texto: TZelTexto; Minimo, Maximo: Integer): RawByteString;
begin
  Result := DeTexto('a', Texto, Minimo, Maximo);
end;

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

procedure Vender(Caixa: TCupom; const Descricao: TZelTexto);
begin
  Caixa.Vender(TZelAliquota.Mercadoria(18), 1.5, 0.75, '101', 'UN', Descricao);
end;

function Hexa(const Bytes: RawByteString): TZelTexto;
var
  I: Integer;
begin
  Result := '';
  for I := 1 to Length(Bytes) do
    Result := Result + TZelTexto(IntToHex(Ord(Bytes[I]), 2));
end;

{ "A" of "AxB", and what is after it. }
function Cabeca(const Texto, Separador: TZelTexto; out Resto: TZelTexto): TZelTexto;
var
  Lugar: Integer;
begin
  Lugar := Pos(Separador, Texto + Separador);
  Result := Copy(Texto, 1, Lugar - 1);
  Resto := Copy(Texto, Lugar + Length(Separador), Length(Texto));
end;

function ConverterComprimento(const Limites, Texto: TZelTexto): TZelTexto;
var
  Minimo, Maximo: TZelTexto;
  Provador: TProvador;
begin
  Minimo := Cabeca(Limites, '-', Maximo);
  Provador := TProvador.Create(Diretorio, False, Biblioteca);
  try
    Result := Hexa(Provador.Provar(Texto, StrToInt(string(Minimo)), StrToInt(string(Maximo))));
  finally
    Provador.Free;
  end;
end;

function ConverterConsumidor(const Escolha: TZelTexto; Pares: TZelTexto): TZelTexto;
var
  C: TZelConsumidor;
  Nome, Valor, Resto, Funcao: TZelTexto;
begin
  C := ZelSemConsumidor;
  while Pares <> '' do
  begin
    Nome := Cabeca(Cabeca(Pares, ';', Resto), '=', Valor);
    Pares := Resto;
    if Nome = 'documento' then C.Documento := Valor
    else if Nome = 'cpf' then C.Cpf := Valor
    else if Nome = 'cnpj' then C.Cnpj := Valor
    else if Nome = 'estrangeiro' then C.Estrangeiro := Valor
    else if Nome = 'nome' then C.Nome := Valor
    else if Nome = 'numero' then C.Numero := Valor
    else C.Email := Valor;
  end;
  Funcao := 'aCFAbrir_ZEL';
  if Escolha = 'identificar' then
    Funcao := 'aCFIdentificarConsumidor_ZEL';
  Result := ZelDeLatin1(PAnsiChar(ZelIdentificar(Funcao, C, Escolha = 'cortar')));
end;

function ConverterAutorizacao(const Escolha, Par: TZelTexto): TZelTexto;
var
  Documento, Retorno: TZelTexto;
begin
  Documento := Cabeca(Par, '|', Retorno);
  ZelConferirAutorizacao(ZelLatin1('a', Documento, False), ZelLatin1('a', Retorno, False),
    Retorno <> 'OFFLINE', Escolha = 'cancelamento');
  Result := 'ok';
end;

function Converter(const Campos: array of TZelTexto): TZelTexto;
var
  Numero: Currency;
  Formato: TFormatSettings;
  Escrito: RawByteString;
begin
  if Campos[0] = 'texto' then
    Exit(Hexa(ZelLatin1('a', Campos[2], Campos[1] = 'transliterar')));
  if Campos[0] = 'comprimento' then
    Exit(ConverterComprimento(Campos[1], Campos[2]));
  if Campos[0] = 'consumidor' then
    Exit(ConverterConsumidor(Campos[1], Campos[2]));
  if Campos[0] = 'autorizacao' then
    Exit(ConverterAutorizacao(Campos[1], Campos[2]));
  if Campos[0] = 'diretorio' then
    Exit(TCupom.Create(Campos[2], False, Biblioteca).ClassName);
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

{ A file of the records of a case. }
function DeRegistros(const Registros: TZelTexto): RawByteString;
begin
  Result := ZelLatin1('a', TZelTexto(StringReplace(string(Registros), '^', #13#10, [rfReplaceAll])), False);
end;

function Juntar(const Campos: array of TZelTexto): TZelTexto;
var
  I: Integer;
begin
  Result := Campos[0];
  for I := 1 to High(Campos) do
    Result := Result + ',' + Campos[I];
end;

function Dizer(const A: TZelAndamento): TZelTexto;
var
  I: Integer;
begin
  Result := '';
  if A.Consumidor.Tipo <> '' then
    with A.Consumidor do
      Result := Juntar(['C', Tipo, Documento, Nome, Email]) + ';';
  for I := 0 to High(A.Lista) do
    with A.Lista[I] do
      Result := Result + Juntar(['I', Numero, Codigo, Descricao, Quantidade, Unidade, Preco, Bruto,
        Desconto, Acrescimo]) + ';';
  for I := 0 to High(A.Pagamentos) do
    with A.Pagamentos[I] do
      Result := Result + Juntar(['P', Forma, Nome, Valor]) + ';';
  Result := Result + Juntar(['T', A.Total, A.Pago, A.Falta]);
end;

function Longa(Letras: Integer): TZelTexto;
begin
  Result := TZelTexto(StringOfChar('x', Letras));
end;

procedure Fazer(Passo: TPasso);
begin
  case Passo of
    psEntrada: Converter(Entrada);
    psAndamento: ZelLerAndamento(DeRegistros(Entrada[1]), zeAberto, '');
    psNulo: ZelLatin1('a', 'P'#0'o', True);
{$IFDEF ZEL_UTF16}
    psMetade, psLatin1: ZelLatin1('a', TZelTexto('P') + WideChar($D83E), True);
{$ELSE}
    psMetade: ZelLatin1('a', 'P'#$C3, True);
    psLatin1: ZelLatin1('a', 'P'#$E3'o', True); { "Pão" where UTF-8 is expected }
{$ENDIF}
    psTravessao: Vender(Firme, TZelTexto('Pão de queijo – 1ª'));
    psEuro: Vender(Tolerante, TZelTexto('1 €'));
    psAcrescimo: Firme.LancarDescontoItem(1, TZelAjuste.Acrescimo(1));
    psAbrir: Firme.Abrir;
    psImprimir: Firme.Imprimir('/nao/ha.xml', 'OFFLINE');
    psPdf: Firme.Imprimir(Ctg, 'OFFLINE');
    psSerie: Firme.AbrirNumSerie(1, 1000);
    psCentavos: Firme.LancarDescontoItem(1, TZelAjuste.Desconto(0.125));
    psDescricao: Vender(Firme, Longa(121));
    psTransportadora: Firme.IdentificarTransportadora('123.456.789-00', TZelTexto('Zé'));
    psFisco: Firme.EncerrarConfigMsg(TZelTexto('só uma'), '');
    psDestino: Firme.CriptografarArquivo('/a', '/' + Longa(300), '');
    psQuantidade: Firme.Vender(TZelAliquota.Isento, ZelVazio, 1, '1', 'UN', 'x');
    psValorLongo: Firme.AlterarValor('EMIT\xNome', Longa(61));
    psChave: Firme.AlterarValor('NADA', '1');
    psInexistente: Firme.CriptografarArquivo('/nao/existe', '/x', '');
    psAusente: TCupom.Create(Diretorio, False, '/nao/ha.so');
  end;
end;

{ A step has to be refused with an exception of that class, whose message holds the text. }
procedure Recusado(Passo: TPasso; Classe: TClasse; const Parte, OQue: TZelTexto);
begin
  Visto := '';
  try
    Fazer(Passo);
    Conferir(False, OQue + ' was not refused');
  except
    on E: EZel do
    begin
      Visto := TZelTexto(E.Message);
      if E is EZelRecusa then
      begin
        TextoVisto := EZelRecusa(E).Texto;
        MotivoVisto := EZelRecusa(E).Motivo;
        FuncaoVista := EZelRecusa(E).Funcao;
      end;
      Conferir((E is Classe) and Contem(Visto, Parte), OQue + ': ' + Visto);
    end;
  end;
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
  if (Linha[1] = '#') or (Separar(Linha) <> 4) or (Entrada[0] = 'decimalLongo') then
    Exit;
  Esperado := Entrada[3];
  if Esperado[1] <> '!' then
    Igual(Converter(Entrada), Esperado, Linha)
  else
    Recusado(psEntrada, EZelEntrada, Copy(Esperado, 2, Length(Esperado)), Linha);
end;

{ The receipts in progress that all languages share. }
procedure TestarAndamento;
var
  Casos: TStringList;
  I: Integer;
  Linha: TZelTexto;
begin
  Casos := TStringList.Create;
  Casos.LoadFromFile(ParamStr(5));
  Conferir(Casos.Count > 15, 'the receipts in progress were not read');
  for I := 0 to Casos.Count - 1 do
  begin
    Linha := TZelTexto(UTF8Decode(Casos[I]));
    if (Linha[1] = '#') or (Separar(Linha) <> 3) then
      Continue;
    if Entrada[2][1] = '!' then
      Recusado(psAndamento, EZelEntrada, Copy(Entrada[2], 2, Length(Entrada[2])), Entrada[0])
    else
      Igual(Dizer(ZelLerAndamento(DeRegistros(Entrada[1]), zeAberto, '')), Entrada[2], Entrada[0]);
  end;
  Casos.Free;
end;

procedure TestarCasos(const Arquivo: string);
var
  Casos: TStringList;
  I: Integer;
begin
  Casos := TStringList.Create;
  Casos.LoadFromFile(Arquivo);
  Conferir(Casos.Count > 30, 'the cases were not read');
  for I := 0 to Casos.Count - 1 do
    TestarCaso(TZelTexto(UTF8Decode(Casos[I])));
  Casos.Free;
end;

{ What the functions would cut, or take for something else. }
procedure TestarEntradas;
var
  Cortante: TCupom;
begin
  Recusado(psSerie, EZelEntrada, 'serie: 1000', 'a long series');
  Recusado(psCentavos, EZelEntrada, 'valor: 0.125', 'parts of a cent');
  Recusado(psDescricao, EZelEntrada, 'descricao: 121', 'a long description');
  Recusado(psTransportadora, EZelEntrada, 'documento: os', 'check digits');
  Recusado(psFisco, EZelEntrada, 'informacoesFisco: 0', 'one message alone');
  Recusado(psDestino, EZelEntrada, 'destino: nome', 'a long file name');
  Recusado(psQuantidade, EZelEntrada, 'quantidade: ', 'no quantity');
  Firme.AlterarValor('EMIT\xNome', 'Padaria');
  Recusado(psValorLongo, EZelEntrada, '61 caracteres, de que EMIT\xNome guarda 60', 'a long value');
  Igual(Firme.RetornarValor('EMIT\xNome'), 'Padaria', 'value after a refusal');
  Recusado(psChave, EZelRecusa, '', 'no such key');
  Igual(FuncaoVista, 'regAlterarValor_ZEL', 'function');
  Cortante := TCupom.Create(Diretorio, False, Biblioteca, True);
  Cortante.AlterarValor('EMIT\xNome', Longa(61));
  Igual(Firme.RetornarValor('EMIT\xNome'), Longa(60), 'value that was to be cut');
  Cortante.Free;
end;

{ The last one: the number of the descriptor is the program's from here on. }
procedure TestarMotivo;
begin
  Recusado(psInexistente, EZelRecusa, '/nao/existe', 'no such file');
  Conferir(Contem(MotivoVisto, TZelTexto('/nao/existe: o arquivo ou o diretório não existe (ENOENT)')),
    MotivoVisto);
  fechar(ZelMotivos);
  Recusado(psInexistente, EZelRecusa, '', 'no such file');
  Igual(MotivoVisto, '', 'reason of a closed descriptor');
end;

procedure TestarConversoes;
begin
  TestarCasos(ParamStr(3));
  TestarCasos(ParamStr(4));
  Recusado(psNulo, EZelTexto, TZelTexto('(U+0000) na posição 2'), 'U+0000');
  Recusado(psMetade, EZelTexto, TZelTexto('na posição 2'), 'half a character');
  Recusado(psLatin1, EZelTexto, TZelTexto('na posição 2'), 'ISO-8859-1 for UTF-8');
end;

procedure TestarDiretorio;
begin
  Firme := TCupom.Create(Diretorio, False, Biblioteca);
  Tolerante := TCupom.Create(Diretorio + '/', True, Biblioteca);
  Firme.Inicializar;
  Conferir(FileExists(string(Diretorio + '/ZEL_Framework.xml')), 'files elsewhere');
end;

procedure TestarRecusas;
begin
  Recusado(psTravessao, EZelTexto,
    TZelTexto('descricao: o caractere "–" (U+2013) na posição 15 não existe'), 'dash');
  Recusado(psEuro, EZelTexto, TZelTexto('€'), 'euro');
  Conferir(Firme.VerificarStatus = zeAberto, 'a refused text was sold');
  Recusado(psAcrescimo, EZelEntrada, TZelTexto('não é um desconto'), 'surcharge');
  Recusado(psAbrir, EZelRecusa, '', 'open again');
  Conferir(Contem(MotivoVisto, 'estado 1 (aberto)'), MotivoVisto);
  Conferir(Contem(Visto, TZelTexto('aCFAbrir_ZEL: ZEL_CUPOM_EM_ANDAMENTO (-130): Já há um cupom em ') +
    'andamento. Motivo: ' + MotivoVisto + '. '), Visto);
end;

procedure TestarImpressao;
const
  Queijo = 'Pão de queijo - 1ª';
var
  Cupom: TZelTexto;
begin
  Cupom := Firme.Imprimir(Firme.Arquivo('documentosEnvio.xml'), 'OFFLINE');
  Conferir((Length(Cupom) > 131072) and Contem(Cupom, TZelTexto(Queijo)), 'receipt');
  Conferir(Firme.UltimoCupom = Cupom, 'last receipt');
  Conferir(Contem(Firme.Reemitir(1), TZelTexto(Queijo)), 'document issued again');
  Ctg := Firme.Contingencia([Diretorio]);
  Conferir(FileExists(string(Ctg)), 'no file ' + Ctg);
  Conferir(Contem(Firme.Imprimir(Ctg, 'OFFLINE'), TZelTexto(Queijo)), 'receipt of a scrambled file');
  Recusado(psImprimir, EZelEntrada, TZelTexto('não pôde ser lido'), 'missing file');
  Firme.AlterarValor('CONFIGURACAO\SalvarDanfePDF', '1');
  Recusado(psPdf, EZelRecusa, '', 'PDF offline');
  Conferir(Contem(TextoVisto, TZelTexto(Queijo)), 'the text of a failed PDF is lost');
end;

procedure TestarCupom;
var
  Lido: TZelAndamento;
  I: Integer;
  Descricao: TZelTexto;
begin
  Firme.AlterarValor('EMIT\xNome', TZelTexto('Padaria São João'));
  Igual(Firme.RetornarValor('EMIT\xNome'), TZelTexto('Padaria São João'), 'value read back');
  Conferir(not Firme.LerAndamento(Lido), 'a receipt in progress where there is none');
  Firme.Abrir;
  TestarRecusas;
  Vender(Tolerante, TZelTexto('Pão de queijo – 1ª'));
  Descricao := '';
  for I := 1 to 120 do
    Descricao := Descricao + TZelTexto('É');
  for I := 1 to 800 do
    Vender(Firme, Descricao);
  Firme.Totalizar;
  Firme.EfetuarPagamento(zfDinheiro);
  Conferir(Firme.LerAndamento(Lido) and (Length(Lido.Lista) = 801) and (Lido.Estado = zePago),
    'receipt in progress');
  Igual(Lido.Lista[0].Descricao + Lido.Falta + Lido.Troco, TZelTexto('Pão de queijo - 1ª0'),
    'what a till that was restarted shows');
  Firme.Encerrar(TZelTexto('Obrigado pela preferência'));
  TestarImpressao;
  Conferir(Firme.Cancelar = ZEL_CANCELAMENTO_GRAVADO, 'cancellation');
end;

{ Each thread finds what it wrote under its key. }
function Trabalhar(Chave: Pointer): PtrInt;
var
  I: Integer;
begin
  Result := 0;
  try
    for I := 1 to 200 do
    begin
      Firme.AlterarValor(PTexto(Chave)^, TZelTexto(IntToStr(I)));
      Igual(Firme.RetornarValor(PTexto(Chave)^), TZelTexto(IntToStr(I)), 'value of a thread');
    end;
  except
    on E: Exception do
      Conferir(False, TZelTexto(E.Message));
  end;
end;

procedure TestarThreads;
const
  Chaves: array[0..1] of TZelTexto = ('EMIT\IE', 'EMIT\xNome');
var
  Threads: array[0..1] of TThreadID;
  I: Integer;
begin
  for I := 0 to 1 do
    Threads[I] := BeginThread(@Trabalhar, @Chaves[I]);
  for I := 0 to 1 do
    WaitForThreadTerminate(Threads[I], 0);
end;

begin
  SetTextCodePage(Output, 65001);
  DefaultFormatSettings.DecimalSeparator := ','; { which no number may follow }
  Diretorio := TZelTexto(ParamStr(1));
  Biblioteca := TZelTexto(ParamStr(2));
  Recusado(psAusente, EZelAusente, 'LD_LIBRARY_PATH', 'no library');
  TestarDiretorio;
  TestarConversoes;
  TestarAndamento;
  TestarEntradas;
  TestarCupom;
  TestarThreads;
  TestarMotivo;
  Firme.Free;
  Tolerante.Free;
  if Falhas > 0 then
    Halt(1);
  WriteLn('Pascal: ok');
end.
