// SPDX-License-Identifier: MIT
// Consultation addresses and the QR-code content: one character off, and the authority's page says
// that the receipt does not exist.
#include "impressao/LayoutImpressao.h"
#include "impressao_apoio.h"

using namespace impressao;
using Qrcode = Teste;

// The hashes were made on the command line, with the token after the parameters:
//   printf '%s' 'chNFe=...&cIdToken=000001senha-é-01' | sha1sum | tr a-f A-F
// in a UTF-8 terminal, for AM with "?" in front.
TEST_F(Qrcode, parametros_em_ordem_e_com_o_hash_do_token) {
    configurar({{R"(CONFIGURACAO\TokenSefaz)", "senha-é-01"_l1}});
    const std::string inicio = "http://a?chNFe=" + kChave + "&nVersao=100&tpAmb=";
    const std::string fim = "&dhEmi=323031342d30312d33315432333a35393a35392d30323a3030&vNF=10.50"
                            "&vICMS=1.80&digVal="
                            "4642465551645a696a56584e63326378754a3978486e78304368633d"
                            "&cIdToken=000001&cHashQRCode=";
    const std::string producao = inicio + "1&cDest=12345678909" + fim;
    const std::tuple<std::string_view, std::string_view, int, std::string> casos[] = {
        {"SP", "123.456.789-09", 1, producao + "A99EF63C9D71DB0A05AB04ED58DB17471694B0A1"},
        {"AM", "123.456.789-09", 1, producao + "70FA52EBB0E2F8017AB2F55E66120E4B0D6F4908"},
        {"AM", "", 2, inicio + "2" + fim + "2327C696A0888B5052D4E46338BA2CA739C31984"},
    };
    for (const auto &[uf, consumidor, ambiente, esperado] : casos) {
        CupomFiscal cf;
        cf.ChaveDeAcesso = kChave;
        cf.EmitUF = uf;
        cf.IdDest = consumidor;
        cf.DataHora = "2014-01-31T23:59:59-02:00";
        cf.ValorTotal = 10.5;
        cf.TotalICMS = "1.80";
        cf.DigestValueAutorizado = "FBFUQdZijVXNc2cxuJ9xHnx0Chc=";
        cf.TipoAmbiente = std::to_string(ambiente);
        EXPECT_EQ(gerarUrlQrcode(cf, "http://a"), esperado);
    }
    for (const std::string_view uf : {"RS", "MT"})
        EXPECT_EQ(calcularHashCodeFromURL("x", uf), calcularHashCodeFromURL("x", "SP")) << uf;
    EXPECT_NE(calcularHashCodeFromURL("x", "MS"), calcularHashCodeFromURL("x", "SP"));
}

TEST_F(Qrcode, endereco_e_do_seu_estado_ambiente_e_pagina) {
    configurar({{R"(URLS\SP\ChaveConsultaProducao)", "chave.sp"},
                {R"(URLS\SP\Producao)", "qr.sp"},
                {R"(URLS\BA\Homologacao)", "hom.ba"}});
    const std::tuple<std::string_view, int, bool, int, std::string_view> casos[] = {
        {"SP", 1, true, 1, "chave.sp"},
        {"SP", 1, false, 1, "qr.sp"},
        {"BA", 2, true, 1, "hom.ba"}, // no page for keys: the portal
        {"AM", 2, true, 1, "homnfce.sefaz.am.gov.br/nfceweb/formConsulta.do"},
        {"EX", 1, true, -1, ""},
        {"SP", 3, true, 1, "http://link"},
    };
    for (const auto &[uf, ambiente, porChave, resultado, esperado] : casos) {
        CupomFiscal cf;
        cf.EmitUF = uf;
        cf.LinkNFCe = "http://link";
        std::string endereco = "?";
        EXPECT_EQ(retornarEnderecoConsulta(cf, ambiente, endereco, porChave), resultado);
        EXPECT_EQ(endereco, esperado) << uf << ambiente;
    }
}
