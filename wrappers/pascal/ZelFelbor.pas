{ SPDX-License-Identifier: MIT }
{ The receipt of one data directory, which is the process's. Text is converted to ISO-8859-1 strictly,
  file names are not; calls from several threads are made one after the other. What each function does,
  and in which state, is in ZEL_FelborFramework.h. }
unit ZelFelbor;
{$I zel.inc}

interface

uses ZelTipos, ZelTabelas, ZelValores, ZelAndamento, ZelChamada, ZelOperacoes;

type
  TZelTexto = ZelTipos.TZelTexto;
  TZelConsumidor = ZelTabelas.TZelConsumidor;
  TZelEstado = ZelTabelas.TZelEstado;
  TZelFormaPagamento = ZelTabelas.TZelFormaPagamento;
  TZelTipoConsulta = ZelTabelas.TZelTipoConsulta;
  TZelAndamento = ZelAndamento.TZelAndamento;
  TZelAliquota = ZelValores.TZelAliquota;
  TZelAjuste = ZelValores.TZelAjuste;
  EZel = ZelValores.EZel;
  EZelEntrada = ZelValores.EZelEntrada;
  EZelTexto = ZelValores.EZelTexto;
  EZelRecusa = ZelValores.EZelRecusa;
  EZelAusente = ZelValores.EZelAusente;

  TCupom = class(TZelOperacoes)
  private
    function Formatar(const AXml, ARetorno, AUrl: TZelTexto; AColunas, ATipo: Integer;
      ASemAutorizacao: Boolean): TZelTexto;
    function LerOuVazio(const AChave: TZelTexto): TZelTexto;
  public
    { regAlterarValor_ZEL; a value that the key does not keep whole is taken back and refused. }
    procedure AlterarValor(const AChave, AValor: TZelTexto); override;
    { The receipt in progress, for a till that was restarted; one that was closed is there until the
      next is opened. False without a receipt. The library completes first what a process that died
      left behind. }
    function LerAndamento(out ALido: TZelAndamento): Boolean;
    { aCFContingenciaUltimaNota_ZEL of kind 1 (as the closing does), 3 or 5 (in contingency);
      answers the document. }
    function Reemitir(ATipo: Integer): TZelTexto;
    { aCFContingenciaUltimaNota_ZEL of kind 4: KEY.ctg in up to three directories; answers the path
      of the last file. }
    function Contingencia(const ADiretorios: array of TZelTexto): TZelTexto;
    { The receipt text of a sale with its printer mark-up. ARetorno is the file of the tax
      authority's answer, which has to authorize the sale, or "OFFLINE" for a document of contingency
      or without fiscal value; ASemAutorizacao lays any other out, too, for a trial. AColunas 42 or
      48; the content of the QR code is built when none is given. }
    function Imprimir(const AXml, ARetorno: TZelTexto; AColunas: Integer = 48;
      const AUrlQrcode: TZelTexto = ''; ASemAutorizacao: Boolean = False): TZelTexto;
    { The same of a cancellation request, which the answer has to have registered. }
    function ImprimirCancelamento(const AXml, ARetorno: TZelTexto; AColunas: Integer = 48;
      ASemAutorizacao: Boolean = False): TZelTexto;
  end;

implementation

uses SysUtils;

function TCupom.LerAndamento(out ALido: TZelAndamento): Boolean;
var
  Troco: TZelTexto;
  Estado: TZelEstado;
begin
  Troco := RetornarValor('CONFIGURACAO\TrocoUltimaNFCe');
  Estado := VerificarStatus;
  Result := (Estado >= zeAberto) and (Estado <= zeEncerrado);
  if Estado < zePago then
    Troco := '';
  if Result then
    ALido := ZelLerAndamento(LerPersistido, Estado, Troco);
end;

function TCupom.Reemitir(ATipo: Integer): TZelTexto;
var
  Resposta: Integer;
  Saida: RawByteString;
begin
  Saida := ZelSaida(TamanhoDoDocumento);
  Entrar;
  try
    Resposta := Funcoes.aCFContingenciaUltimaNota_ZEL(ATipo, PAnsiChar(Saida));
  finally
    Sair;
  end;
  Result := ConcluirTexto('aCFContingenciaUltimaNota_ZEL', Resposta, Saida);
end;

function TCupom.Contingencia(const ADiretorios: array of TZelTexto): TZelTexto;
var
  Resposta: Integer;
  Saida: RawByteString;
begin
  Saida := ZelDiretorios('diretorios', ADiretorios);
  Entrar;
  try
    Resposta := Funcoes.aCFContingenciaUltimaNota_ZEL(4, PAnsiChar(Saida));
  finally
    Sair;
  end;
  Result := ConcluirCaminho('aCFContingenciaUltimaNota_ZEL', Resposta, Saida);
end;

{ That there is no such key, the function that changes it says. }
function TCupom.LerOuVazio(const AChave: TZelTexto): TZelTexto;
begin
  Result := '';
  try
    Result := RetornarValor(AChave);
  except
    on EZelRecusa do
      Exit;
  end;
end;

procedure TCupom.AlterarValor(const AChave, AValor: TZelTexto);
var
  Antes: TZelTexto;
  Dado, Guardado: RawByteString;
begin
  if not Cortar then
    Antes := LerOuVazio(AChave);
  inherited AlterarValor(AChave, AValor);
  if Cortar then
    Exit;
  Dado := DeTexto('valor', AValor);
  Guardado := ZelLatin1('valor', RetornarValor(AChave), False);
  if Dado = Guardado then
    Exit;
  inherited AlterarValor(AChave, Antes);
  raise EZelEntrada.Create('valor: ' + TZelTexto(IntToStr(Length(Dado))) +
    ' caracteres, de que ' + AChave + ' guarda ' + TZelTexto(IntToStr(Length(Guardado))) +
    '; nada mudou');
end;

function TCupom.Imprimir(const AXml, ARetorno: TZelTexto; AColunas: Integer;
  const AUrlQrcode: TZelTexto; ASemAutorizacao: Boolean): TZelTexto;
begin
  Result := Formatar(AXml, ARetorno, AUrlQrcode, AColunas, 1, ASemAutorizacao);
end;

function TCupom.ImprimirCancelamento(const AXml, ARetorno: TZelTexto; AColunas: Integer;
  ASemAutorizacao: Boolean): TZelTexto;
begin
  Result := Formatar(AXml, ARetorno, '', AColunas, 5, ASemAutorizacao);
end;

function TCupom.Formatar(const AXml, ARetorno, AUrl: TZelTexto; AColunas, ATipo: Integer;
  ASemAutorizacao: Boolean): TZelTexto;
var
  Resposta: Integer;
  Saida: RawByteString;
begin
  Saida := ZelSaida(TamanhoDoCupom(AXml, ARetorno, AUrl, ATipo = 5, ASemAutorizacao));
  Entrar;
  try
    Resposta := Funcoes.GerarArquivoFormatadoNF_ZEL(PAnsiChar(ZelCaminho('arquivoXml', AXml)),
      PAnsiChar(ZelCaminho('arquivoRetorno', ARetorno)), PAnsiChar(DeTexto('urlQrcode', AUrl)),
      AColunas, ATipo, '', PAnsiChar(Saida));
  finally
    Sair;
  end;
  Result := ConcluirTexto('GerarArquivoFormatadoNF_ZEL', Resposta, Saida);
end;

end.
