{ SPDX-License-Identifier: MIT }
{ Text of the application. }
unit ZelTipos;
{$I zel.inc}

interface

type
{$IFDEF ZEL_UTF16}
  TZelTexto = UnicodeString;
{$ELSE}
  TZelTexto = UTF8String;
{$ENDIF}

implementation

{$IFDEF FPC}
{$IFDEF UNIX}
uses
  cwstring; { conversions between kinds of strings; without it, accents become "?" }
{$ENDIF}

{ Every plain string of the program is taken for UTF-8, whatever the locale, as Lazarus does. }
initialization
  SetMultiByteConversionCodePage(CP_UTF8);
{$ENDIF}
end.
