{ SPDX-License-Identifier: MIT }
{ Sells, prints and cancels one receipt: exemplo DIRECTORY LIBRARY }
program exemplo;
{$IFDEF FPC}{$MODE DELPHI}{$CODEPAGE UTF8}{$ENDIF}
{$APPTYPE CONSOLE}

uses
  ZelTabelas, ZelFelbor;

procedure Vender(Caixa: TCupom);
var
  Consumidor: TZelConsumidor;
  Aliquota: TZelAliquota;
begin
  Consumidor.Documento := '123.456.789-09';
  Consumidor.Nome := 'Maria de Fátima';
  Caixa.Abrir(Consumidor);
  Aliquota := TZelAliquota.Mercadoria(18);
  Caixa.Vender(Aliquota, 6, 0.75, '101', 'UN', 'Pão francês');
  Caixa.Vender(Aliquota, 0.350, 39.90, '303', 'KG', 'Queijo minas',
    TZelAjuste.DescontoPercentual(10));
  Caixa.Totalizar;
  WriteLn('total: ', Caixa.InfoEstendida('1'));
  Caixa.EfetuarPagamento(zfCartaoDebito, 10);
  Caixa.EfetuarPagamento(zfDinheiro, 50);
  WriteLn('troco: ', Caixa.RetornarValor('CONFIGURACAO\TrocoUltimaNFCe'));
  Caixa.Encerrar('Obrigado pela preferência');
  WriteLn('chave: ', Caixa.RetornarValor('NFCE\ChaveDeAcesso'));
end;

var
  Caixa: TCupom;
begin
  SetTextCodePage(Output, 65001);
  Caixa := TCupom.Create(ParamStr(1), False, ParamStr(2));
  try
    Caixa.AlterarValor('EMIT\xNome', 'Padaria São João Ltda');
    Caixa.AlterarValor('EMIT\CNPJ', '11222333000181');
    Vender(Caixa);
    WriteLn(Caixa.Imprimir(Caixa.Arquivo('documentosEnvio.xml'), 'OFFLINE'));
    if Caixa.Cancelar = ZEL_CANCELAMENTO_GRAVADO then
      WriteLn('cancelamento: ZEL_CANCELAMENTO_GRAVADO');
    try
      Caixa.Encerrar; { nothing is open now }
    except
      on Recusa: EZelRecusa do
      begin
        WriteLn(Recusa.Message);
        if Recusa.Codigo <> ZEL_ENCERRAMENTO_FORA_DE_ORDEM then
          Halt(1);
      end;
    end;
  finally
    Caixa.Free;
  end;
end.
