// SPDX-License-Identifier: MIT
#include "impressao/ColunasLayout.h"

namespace zel {

namespace {

constexpr ColunasLayout kColunas42Layout{
    .separador = "------------------------------------------\r\n",
    .abreCondensado = "<c>",
    .fechaCondensado = "</c>",

    .emitente = kEmitenteCorrido,
    .emitenteLogotipo = kEmitenteCorrido,
    .titulo = "<c>           DANFE NFC-e - Documento Auxiliar</c>\r\n"
              "<c>    da Nota Fiscal de Consumidor Eletrônica</c>\r\n"
              "<c><b>     Não permite aproveitamento de crédito de ICMS</b></c>\r\n"_fixo,
    .cabecalhoItens = "<c>Item  Cod.   Descricao        Qtde Un   VlrUnit   VlrTot</c>\r\n",

    .larguraItem = 56,
    .quebraItem = "\r\n",
    .larguraQuantidade = 19,

    .larguraContagem = 53,
    .larguraRotulo = 39,
    .larguraValor = 17,
    .cabecalhoPagamento = "FORMA DE PAGAMENTO                            Valor Pago",
    .larguraForma = 36,

    .homologacao = "<c> EMITIDA EM AMBIENTE DE HOMOLOGAÇÃO - SEM VALOR FISCAL</c>\r\n"_fixo,
    .areaFiscal = "          AREA DE MENSAGEM FISCAL\r\n",
    .viaNormal = "<c>                       consumidor</c>\r\n",
    .viaEstabelecimento = "<c>                        Estabelecimento</c>\r\n",
    .viaConsumidor = "<c>                        consumidor</c>\r\n",
    .tituloChave = "             CHAVE DE ACESSO\r\n",

    .tituloConsumidor = "                CONSUMIDOR\r\n",
    .semConsumidor = "       CONSUMIDOR NÃO IDENTIFICADO\r\n"_fixo,

    .tituloQrcode = "      Consulta via leitor de QR Code\r\n",
    .fechaQrcode = "</qrcode>\r\n</ce>",
    .protocolo = "<c>       Protocolo de Autorização: "_fixo,
    .larguraProtocolo = 15,
    .fechaData = "</c>",

    .promocionalSempre = true,
};

constexpr ColunasLayout kColunas48Layout{
    .separador = "------------------------------------------------\r\n",
    .abreCondensado = "",
    .fechaCondensado = "",

    .emitente = kEmitenteCorrido,
    .emitenteLogotipo = {"\r\n\r\n", "   \r\n", "\r\n"},
    .titulo = "        DANFE NFC-e - Documento Auxiliar\r\n"
              "    da Nota Fiscal de Consumidor Eletrônica\r\n"
              "  <b>Não permite aproveitamento de crédito de ICMS</b>\r\n"_fixo,
    .cabecalhoItens = "<c>Item  Cod.   Descricao         Qtde Un   VlrUnit   VlrTot</c>\r\n",

    .larguraItem = 57,
    .quebraItem = "</c>\r\n<c>",
    .larguraQuantidade = 20,

    .larguraContagem = 45,
    .larguraRotulo = 28,
    .larguraValor = 20,
    .cabecalhoPagamento = "FORMA DE PAGAMENTO                    Valor Pago",
    .larguraForma = 28,

    .homologacao = "<c>  EMITIDA EM AMBIENTE DE HOMOLOGAÇÃO - SEM VALOR FISCAL</c>\r\n"_fixo,
    .areaFiscal = "             AREA DE MENSAGEM FISCAL\r\n",
    .viaNormal = "<c>                        consumidor</c>\r\n",
    .viaEstabelecimento = "<c>                    Via Estabelecimento</c>\r\n",
    .viaConsumidor = "<c>                    via consumidor</c>\r\n",
    .tituloChave = "                 CHAVE DE ACESSO\r\n",

    .tituloConsumidor = "                   CONSUMIDOR\r\n",
    .semConsumidor = "<ce>     CONSUMIDOR NÃO IDENTIFICADO    </ce>\r\n"_fixo,

    .tituloQrcode = "         Consulta via leitor de QR Code\r\n",
    .fechaQrcode = "</qrcode></ce>\r\n",
    .protocolo = "<ce><c> Protocolo de Autorização: "_fixo,
    .larguraProtocolo = 0,
    .fechaData = "</c></ce><sl>2</sl>",

    .promocionalSempre = false,
};

} // namespace

const ColunasLayout *createLayout(int colunas) {
    if (colunas == 42) return &kColunas42Layout;
    return colunas == 48 ? &kColunas48Layout : nullptr;
}

} // namespace zel
