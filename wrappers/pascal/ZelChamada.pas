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
    FTransliterar: Boolean;
    function BytesDe(const Nome: TZelTexto): Int64;
  protected
    function DeTexto(const Argumento, Texto: TZelTexto): RawByteString;
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
    function TamanhoDoUltimo: Int64;
    function TamanhoDoDocumento: Int64;
    { Bytes that the receipt text of a document takes at most. }
    function TamanhoDoCupom(const Documento, Retorno, Url: TZelTexto): Int64;
  public
    { ADiretorio is absolute and exists; the library keeps its files there. ATransliterar:
      typographic quotes, dashes, ellipses and blanks become plain ones. ABiblioteca: the shared
      object, which the first one of a process loads. }
    constructor Create(const ADiretorio: TZelTexto; ATransliterar: Boolean = False;
      const ABiblioteca: TZelTexto = ZelBiblioteca);
    { A file of the data directory: "documentosEnvio.xml". }
    function Arquivo(const Nome: TZelTexto): TZelTexto;
    property Diretorio: TZelTexto read FDiretorio;
  end;

var
  { The 47 functions, from the first TZelChamador on. }
  Funcoes: TZelFuncoes;

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
  Classes, Math, SyncObjs, SysUtils;

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

{$IFDEF FPC}
function setenv(Nome, Valor: PAnsiChar; Substituir: Integer): Integer; cdecl; external 'c';
{$ENDIF}

function ProcurarFuncao(const Nome: string): Pointer;
begin
{$IFDEF FPC}
  Result := GetProcedureAddress(Alca, AnsiString(Nome));
{$ELSE}
  Result := GetProcAddress(Alca, PChar(Nome));
{$ENDIF}
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
{$IFDEF FPC}
      Alca := LoadLibrary(string(Biblioteca));
{$ELSE}
      Alca := LoadLibrary(PChar(Biblioteca));
{$ENDIF}
      if Alca = 0 then
        raise EZelEntrada.Create(TZelTexto('a biblioteca não pôde ser carregada: ') + Biblioteca);
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
  const ABiblioteca: TZelTexto);
begin
  FDiretorio := ADiretorio;
  while (Length(FDiretorio) > 1) and (FDiretorio[Length(FDiretorio)] = '/') do
    Delete(FDiretorio, Length(FDiretorio), 1);
  if (FDiretorio = '') or (FDiretorio[1] <> '/') then
    raise EZelEntrada.Create(TZelTexto('o diretório não é um caminho absoluto: ') + FDiretorio);
  if not DirectoryExists(string(FDiretorio)) then
    raise EZelEntrada.Create(TZelTexto('o diretório não existe: ') + FDiretorio);
  FTransliterar := ATransliterar;
  Carregar(FDiretorio, ABiblioteca);
end;

function TZelChamador.Arquivo(const Nome: TZelTexto): TZelTexto;
begin
  Result := FDiretorio + '/' + Nome;
end;

function TZelChamador.DeTexto(const Argumento, Texto: TZelTexto): RawByteString;
begin
  Result := ZelLatin1(Argumento, Texto, FTransliterar);
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
    raise EZelRecusa.Create(Funcao, Resposta, '');
  Result := Resposta;
end;

function TZelChamador.ConcluirEstado(const Funcao: TZelTexto; Resposta: Integer): TZelEstado;
begin
  if Resposta < 0 then
    raise EZelRecusa.Create(Funcao, Resposta, '');
  Result := TZelEstado(Resposta);
end;

function TZelChamador.ConcluirTexto(const Funcao: TZelTexto; Resposta: Integer;
  const Saida: RawByteString): TZelTexto;
begin
  Result := ZelDeLatin1(PAnsiChar(Saida));
  if Resposta < ZEL_OK then
    raise EZelRecusa.Create(Funcao, Resposta, Result);
end;

function TZelChamador.ConcluirCaminho(const Funcao: TZelTexto; Resposta: Integer;
  const Saida: RawByteString): TZelTexto;
begin
  Result := ZelDeCaminho(PAnsiChar(Saida));
  if Resposta < ZEL_OK then
    raise EZelRecusa.Create(Funcao, Resposta, Result);
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

function TZelChamador.TamanhoDoCupom(const Documento, Retorno, Url: TZelTexto): Int64;
var
  Medida: TMedida;
  DoRetorno, Via: Int64;
begin
  Medida := Medir(LerArquivo(Documento));
  DoRetorno := 0;
  if Retorno <> 'OFFLINE' then
    DoRetorno := Length(LerArquivo(Retorno));
  Via := 16384 + 32 * Medida.Maior + 2 * (Medida.Mensagem + BytesDe('ArqPersist.bin')) + DoRetorno +
    Length(Url) + Medida.Itens * (300 + Medida.Maior) + Medida.Pagamentos * 100;
  Result := Max(ZEL_TAMANHO_CUPOM, 2 * Via);
end;

initialization
  Trava := TCriticalSection.Create;

finalization
  Trava.Free;

end.
