{ SPDX-License-Identifier: MIT }
{ The library, loaded once for the process, and one call of it at a time. }
unit ZelChamada;
{$I zel.inc}

interface

uses ZelTipos, ZelTabelas, ZelValores;

const
  ZelBiblioteca = 'libZEL_FelborFramework.so.1';

type
  TZelChamador = class
  private
    FDiretorio: TZelTexto;
    FTransliterar, FCortar: Boolean;
    function BytesDe(const Nome: TZelTexto): Int64;
  protected
    { Maximo 0: of any length. An empty text stands for none. }
    function DeTexto(const Argumento, Texto: TZelTexto; Minimo: Integer = 0;
      Maximo: Integer = 0): RawByteString;
    function Obrigatorio(const Argumento, Texto: TZelTexto; Minimo, Maximo: Integer): RawByteString;
    { A CPF or a CNPJ, or none. }
    function Documento(const Argumento, Texto: TZelTexto): RawByteString;
    function Identificacao(const Funcao: TZelTexto; const Consumidor: TZelConsumidor): RawByteString;
    { Around each call. The library computes as C does: what Pascal takes for a failure of a
      floating-point operation is none there. }
    procedure Entrar;
    procedure Sair;
    function Concluir(const Funcao: TZelTexto; Resposta: Integer): Integer;
    function ConcluirEstado(const Funcao: TZelTexto; Resposta: Integer): TZelEstado;
    function ConcluirTexto(const Funcao: TZelTexto; Resposta: Integer;
      const Saida: RawByteString): TZelTexto;
    function ConcluirCaminho(const Funcao: TZelTexto; Resposta: Integer;
      const Saida: RawByteString): TZelTexto;
    { The bytes of ArqPersist.bin. }
    function LerPersistido: RawByteString;
    function TamanhoDoUltimo: Int64;
    function TamanhoDoDocumento: Int64;
    { Bytes that the receipt text of a document takes at most, once it may be printed. }
    function TamanhoDoCupom(const ADocumento, ARetorno, AUrl: TZelTexto;
      ACancelamento, ASemAutorizacao: Boolean): Int64;
  public
    { ADiretorio is absolute and exists; the library keeps its files there. ATransliterar:
      typographic quotes, dashes, ellipses and blanks become plain ones. ABiblioteca: the shared
      object, which the first one of a process loads. ACortar: what does not fit is handed over; the
      library cuts it or leaves it out. }
    constructor Create(const ADiretorio: TZelTexto; ATransliterar: Boolean = False;
      const ABiblioteca: TZelTexto = ZelBiblioteca; ACortar: Boolean = False);
    { A file of the data directory: "documentosEnvio.xml". }
    function Arquivo(const Nome: TZelTexto): TZelTexto;
    property Diretorio: TZelTexto read FDiretorio;
    property Cortar: Boolean read FCortar;
  end;

var
  { The 47 functions, from the first TZelChamador on. }
  Funcoes: TZelFuncoes;
  { The descriptor to which the library writes why it refused last; -1 where there is none. }
  ZelMotivos: Integer = -1;

implementation

uses
{$IFDEF FPC}
  dynlibs,
{$ELSE}
{$IFDEF MSWINDOWS}
  Winapi.Windows,
{$ELSE}
  Posix.Stdlib,
{$ENDIF}
{$ENDIF}
  Classes, Math, SyncObjs, SysUtils, ZelAutorizacao, ZelIdentificacao;

type
{$IFDEF FPC}
  TAlca = TLibHandle;
{$ELSE}
  TAlca = HMODULE;
{$ENDIF}

var
  Trava: TCriticalSection;
  Alca: TAlca = 0;
  DoProcesso: TZelTexto = '';
  Mascara: TFPUExceptionMask; { of the thread that has the lock }

function EnderecoDe(Biblioteca: TAlca; const Nome: string): Pointer;
begin
{$IFDEF FPC}
  Result := GetProcedureAddress(Biblioteca, AnsiString(Nome));
{$ELSE}
  Result := GetProcAddress(Biblioteca, PChar(Nome));
{$ENDIF}
end;

{$IFDEF FPC}
function setenv(Nome, Valor: PAnsiChar; Substituir: Integer): Integer; cdecl; external 'c';
{$ENDIF}

{$IF DEFINED(LINUX)}
const
{$IFDEF FPC}
  LibC = 'c';
{$ELSE}
  LibC = 'libc.so.6';
{$ENDIF}

function LerLigacao(Nome, Alvo: PAnsiChar; Tamanho: NativeUInt): NativeInt; cdecl;
  external LibC name 'readlink';
function Abrir(Nome: PAnsiChar; Modo: Integer): Integer; cdecl; varargs; external LibC name 'open';
function LerBytes(Descritor: Integer; Bytes: PAnsiChar; Quantos: NativeUInt): NativeInt; cdecl;
  external LibC name 'read';
function Fechar(Descritor: Integer): Integer; cdecl; external LibC name 'close';
function MeuNumero: Integer; cdecl; external LibC name 'getpid';

type
  TMemfdCreate = function(Nome: PAnsiChar; Modo: Cardinal): Integer; cdecl;

{ An anonymous file in memory, to which the library writes what it refused last. }
procedure OuvirMotivos;
const
  FechaNoExec = 1; { MFD_CLOEXEC }
var
  Criar: TMemfdCreate;
begin
  Criar := TMemfdCreate(EnderecoDe(LoadLibrary('libc.so.6'), 'memfd_create'));
  if (ZelMotivos < 0) and Assigned(Criar) then
    ZelMotivos := Criar(ZelDescritor, FechaNoExec);
  setenv('ZEL_LOG_DESCRITOR', PAnsiChar(AnsiString(IntToStr(ZelMotivos))), 1);
end;

{ Up to 4096 bytes. }
function Alvo(const Arquivo: RawByteString): RawByteString;
begin
  Result := '';
  SetLength(Result, 4096);
  SetLength(Result, Max(LerLigacao(PAnsiChar(Arquivo), PAnsiChar(Result), Length(Result)), 0));
end;

function LerLinha(const Arquivo: RawByteString): RawByteString;
const
  SoLeitura = 0; { O_RDONLY }
var
  Descritor: Integer;
  Lidos: NativeInt;
begin
  Result := '';
  SetLength(Result, 4096);
  Descritor := Abrir(PAnsiChar(Arquivo), SoLeitura);
  Lidos := LerBytes(Descritor, PAnsiChar(Result), Length(Result));
  Fechar(Descritor);
  SetLength(Result, Max(Lidos, 0));
  SetLength(Result, Max(Pos(AnsiChar(#10), Result) - 1, 0));
end;

{ The reason that the call just made was refused for; empty when the descriptor is no longer that
  file, or holds what another process wrote. }
function MotivoDe(const Funcao: TZelTexto; Codigo: Integer): TZelTexto;
var
  Linha, Inicio: RawByteString;
  Lugar: Integer;
begin
  Result := '';
  Inicio := '/proc/self/fd/' + AnsiString(IntToStr(ZelMotivos));
  if Alvo(Inicio) <> '/memfd:' + ZelDescritor + ' (deleted)' then
    Exit;
  Linha := LerLinha(Inicio);
  Inicio := AnsiString('[' + IntToStr(MeuNumero) + '] ' + string(Funcao) + ': ' + IntToStr(Codigo) + ' ');
  Lugar := Pos(': ', Copy(Linha, Length(Inicio) + 1, Length(Linha)));
  if (Copy(Linha, 1, Length(Inicio)) <> Inicio) or (Lugar = 0) then
    Exit;
  Delete(Linha, 1, Length(Inicio) + Lugar + 1);
  Result := ZelDeCaminho(PAnsiChar(Linha)); { UTF-8 }
end;
{$ELSE}
procedure OuvirMotivos;
begin
end;

function MotivoDe(const Funcao: TZelTexto; Codigo: Integer): TZelTexto;
begin
  Result := '';
end;
{$ENDIF}

function ProcurarFuncao(const Nome: string): Pointer;
begin
  Result := EnderecoDe(Alca, Nome);
  if Result = nil then
    raise EZelEntrada.Create(TZelTexto(TZelTexto('a biblioteca não tem ') + Nome));
end;

procedure DefinirDiretorio(const Nome: TZelTexto);
begin
{$IFDEF FPC}
  setenv('ZEL_DIRETORIO', PAnsiChar(ZelCaminho('diretorio', Nome)), 1);
{$ELSE}
{$IFDEF MSWINDOWS}
  SetEnvironmentVariable('ZEL_DIRETORIO', PChar(Nome));
{$ELSE}
  setenv('ZEL_DIRETORIO', MarshaledAString(ZelCaminho('diretorio', Nome)), 1);
{$ENDIF}
{$ENDIF}
end;

{ The library reads ZEL_DIRETORIO once, so that the first directory is the process's. }
procedure Carregar(const Diretorio, Biblioteca: TZelTexto);
begin
  Trava.Enter;
  try
    if Alca = 0 then
    begin
      DefinirDiretorio(Diretorio);
      OuvirMotivos;
{$IFDEF FPC}
      Alca := LoadLibrary(string(Biblioteca));
{$ELSE}
      Alca := LoadLibrary(PChar(Biblioteca));
{$ENDIF}
      if Alca = 0 then
        raise EZelAusente.Create(TZelTexto('a biblioteca não pôde ser carregada: ') + Biblioteca +
          '. ' + ZelAusente);
      ZelCarregarFuncoes(ProcurarFuncao, Funcoes);
      DoProcesso := Diretorio;
    end;
    if DoProcesso <> Diretorio then
      raise EZelEntrada.Create(TZelTexto('este processo já trabalha em ') + DoProcesso);
  finally
    Trava.Leave;
  end;
end;

constructor TZelChamador.Create(const ADiretorio: TZelTexto; ATransliterar: Boolean;
  const ABiblioteca: TZelTexto; ACortar: Boolean);
begin
  FDiretorio := ADiretorio;
  while (Length(FDiretorio) > 1) and (FDiretorio[Length(FDiretorio)] = '/') do
    Delete(FDiretorio, Length(FDiretorio), 1);
  if (FDiretorio = '') or (FDiretorio[1] <> '/') then
    raise EZelEntrada.Create(TZelTexto('o diretório não é um caminho absoluto: ') + FDiretorio);
  if not DirectoryExists(string(FDiretorio)) then
    raise EZelEntrada.Create(TZelTexto('o diretório não existe: ') + FDiretorio +
      TZelTexto('; crie-o (mkdir), com permissão de escrita para quem roda o caixa'));
  FTransliterar := ATransliterar;
  FCortar := ACortar;
  Carregar(FDiretorio, ABiblioteca);
end;

function TZelChamador.Arquivo(const Nome: TZelTexto): TZelTexto;
begin
  Result := FDiretorio + '/' + Nome;
end;

function TZelChamador.DeTexto(const Argumento, Texto: TZelTexto;
  Minimo, Maximo: Integer): RawByteString;
begin
  Result := ZelLatin1(Argumento, Texto, FTransliterar);
  if (Maximo > 0) and (Result <> '') and not FCortar then
    ZelConferirTamanho(Argumento, Length(Result), Minimo, Maximo);
end;

function TZelChamador.Obrigatorio(const Argumento, Texto: TZelTexto;
  Minimo, Maximo: Integer): RawByteString;
begin
  if (Texto = '') and not FCortar then
    ZelConferirTamanho(Argumento, 0, Minimo, Maximo);
  Result := DeTexto(Argumento, Texto, Minimo, Maximo);
end;

function TZelChamador.Documento(const Argumento, Texto: TZelTexto): RawByteString;
begin
  if FCortar or (Texto = '') then
    Result := DeTexto(Argumento, Texto)
  else
    Result := ZelDocumento(Argumento, Texto);
end;

function TZelChamador.Identificacao(const Funcao: TZelTexto;
  const Consumidor: TZelConsumidor): RawByteString;
begin
  Result := ZelIdentificar(Funcao, Consumidor, FCortar);
end;

procedure TZelChamador.Entrar;
begin
  Trava.Enter;
  Mascara := SetExceptionMask([exInvalidOp, exDenormalized, exZeroDivide, exOverflow, exUnderflow,
    exPrecision]);
end;

procedure TZelChamador.Sair;
begin
  ClearExceptions(False);
  SetExceptionMask(Mascara);
  Trava.Leave;
end;

function TZelChamador.Concluir(const Funcao: TZelTexto; Resposta: Integer): Integer;
begin
  if Resposta < ZEL_OK then
    raise EZelRecusa.Create(Funcao, Resposta, '', MotivoDe(Funcao, Resposta));
  Result := Resposta;
end;

function TZelChamador.ConcluirEstado(const Funcao: TZelTexto; Resposta: Integer): TZelEstado;
begin
  if Resposta < 0 then
    raise EZelRecusa.Create(Funcao, Resposta, '', MotivoDe(Funcao, Resposta));
  Result := TZelEstado(Resposta);
end;

function TZelChamador.ConcluirTexto(const Funcao: TZelTexto; Resposta: Integer;
  const Saida: RawByteString): TZelTexto;
begin
  Result := ZelDeLatin1(PAnsiChar(Saida));
  if Resposta < ZEL_OK then
    raise EZelRecusa.Create(Funcao, Resposta, Result, MotivoDe(Funcao, Resposta));
end;

function TZelChamador.ConcluirCaminho(const Funcao: TZelTexto; Resposta: Integer;
  const Saida: RawByteString): TZelTexto;
begin
  Result := ZelDeCaminho(PAnsiChar(Saida));
  if Resposta < ZEL_OK then
    raise EZelRecusa.Create(Funcao, Resposta, Result, MotivoDe(Funcao, Resposta));
end;

function LerArquivo(const Nome: TZelTexto): RawByteString;
var
  Fluxo: TFileStream;
begin
  Result := '';
  try
    Fluxo := TFileStream.Create(string(Nome), fmOpenRead or fmShareDenyNone);
    try
      SetLength(Result, Fluxo.Size);
      if Fluxo.Size > 0 then
        Fluxo.ReadBuffer(PAnsiChar(Result)^, Fluxo.Size);
    finally
      Fluxo.Free;
    end;
  except
    on EStreamError do
      raise EZelEntrada.Create(Nome + TZelTexto(': não pôde ser lido'));
  end;
end;

function TZelChamador.BytesDe(const Nome: TZelTexto): Int64;
begin
  Result := 0;
  if FileExists(string(Arquivo(Nome))) then
    Result := Length(LerArquivo(Arquivo(Nome)));
end;

function TZelChamador.LerPersistido: RawByteString;
const
  Maior = 16 * 1024 * 1024;
begin
  Result := LerArquivo(Arquivo('ArqPersist.bin'));
  if Length(Result) > Maior then
    raise EZelEntrada.Create('ArqPersist.bin: grande demais');
end;

function TZelChamador.TamanhoDoUltimo: Int64;
begin
  Result := Max(ZEL_TAMANHO_CUPOM, BytesDe('ultimadanfe.bin') + 1);
end;

function TZelChamador.TamanhoDoDocumento: Int64;
begin
  Result := ZEL_TAMANHO_DOCUMENTO + 65536 + 2 * BytesDe('ArqPersist.bin');
end;

type
  { What of a document decides the length of its receipt. }
  TMedida = record
    Itens, Pagamentos, Maior, Mensagem: Int64;
  end;

{ A scrambled file cannot be counted: its items are at least 256 bytes and its payments 40, as the
  library writes them. }
function Medir(const Xml: RawByteString): TMedida;
var
  I, Inicio: Integer;
begin
  Result.Itens := Length(Xml) div 256 + 1;
  Result.Pagamentos := Length(Xml) div 40 + 1;
  Result.Maior := 1024;
  Result.Mensagem := Length(Xml);
  if (Xml = '') or (Xml[1] <> '<') then
    Exit;
  FillChar(Result, SizeOf(Result), 0);
  Inicio := 1;
  for I := 1 to Length(Xml) + 1 do
    if (I > Length(Xml)) or (Xml[I] = '<') then
    begin
      Result.Maior := Max(Result.Maior, I - Inicio);
      Inicio := I + 1;
      if Copy(Xml, I, 4) = '<det' then
        Inc(Result.Itens);
      if Copy(Xml, I, 4) = '<pag' then
        Inc(Result.Pagamentos);
    end;
  Result.Mensagem := Result.Maior;
end;

function TZelChamador.TamanhoDoCupom(const ADocumento, ARetorno, AUrl: TZelTexto;
  ACancelamento, ASemAutorizacao: Boolean): Int64;
var
  Xml, Resposta: RawByteString;
  Medida: TMedida;
  Via: Int64;
begin
  Xml := LerArquivo(ADocumento);
  Resposta := '';
  if ARetorno <> 'OFFLINE' then
    Resposta := LerArquivo(ARetorno);
  if not ASemAutorizacao then
    ZelConferirAutorizacao(Xml, Resposta, ARetorno <> 'OFFLINE', ACancelamento);
  Medida := Medir(Xml);
  Via := 16384 + 32 * Medida.Maior + 2 * (Medida.Mensagem + BytesDe('ArqPersist.bin')) +
    Length(Resposta) + Length(AUrl) + Medida.Itens * (300 + Medida.Maior) + Medida.Pagamentos * 100;
  Result := Max(ZEL_TAMANHO_CUPOM, 2 * Via);
end;

initialization
  Trava := TCriticalSection.Create;

finalization
  Trava.Free;

end.
