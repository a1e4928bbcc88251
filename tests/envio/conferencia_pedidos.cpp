// SPDX-License-Identifier: MIT
// Good events and inutilizations are good, and each fault in one is found, and nothing but it.
#include "Assinada.h"
#include "Juiz.h"

#include "documento/Conferencia.h"
#include "documento/Emissao.h"

#include <gtest/gtest.h>

using namespace zel::envio;
using namespace zel::envio::ensaio;

namespace {

const std::string kSubstituta = "35260912345678000195650010000000089123456713";
const std::string kEspaco = " xmlns=\"http://www.portalfiscal.inf.br/nfe\"";

const std::string kCancelamento = lote("envEvento", "1.00", cancelamento());
const std::string kSubstituicao =
    lote("envEvento", "1.00",
         trocar(substituicao(), "<chNFeRef>" + chaveDoDocumento(), "<chNFeRef>" + kSubstituta));
const std::string kInutilizacao = inutilizacao();
// With the authority's answer beside it.
const std::string kRegistrado =
    "<procEventoNFe" + kEspaco + " versao=\"1.00\">" + cancelamento() +
    "<retEvento versao=\"1.00\"><infEvento><tpAmb>2</tpAmb><verAplic>1</verAplic>"
    "<cOrgao>35</cOrgao><cStat>135</cStat><xMotivo>Evento registrado</xMotivo><chNFe>" +
    chaveDoDocumento() +
    "</chNFe><tpEvento>110111</tpEvento><nSeqEvento>1</nSeqEvento>"
    "<dhRegEvento>2026-09-21T10:05:02-03:00</dhRegEvento></infEvento></retEvento></procEventoNFe>";
const std::string kInutilizado =
    "<ProcInutNFe" + kEspaco + " versao=\"4.00\">" + kInutilizacao +
    "<retInutNFe versao=\"4.00\"><infInut><tpAmb>2</tpAmb><verAplic>1</verAplic>"
    "<cStat>102</cStat><xMotivo>Inutilizado</xMotivo><cUF>35</cUF><nNFIni>8</nNFIni>"
    "<dhRecbto>2026-09-21T10:05:02-03:00</dhRecbto></infInut></retInutNFe></ProcInutNFe>";

std::string assinado(const std::string &xml) {
    return assinada(xml, xml.find("<infInut") == xml.npos ? "infEvento" : "infInut");
}

Recusas verificar(const Documento &documento, std::vector<std::string> *linhas = nullptr) {
    Recusas recusas;
    std::vector<std::string> olhado;
    Esquemas *const esquemas = linhas != nullptr ? teste::Juiz::unico().esquemas() : nullptr;
    const bool vale = verificarPedido(documento, {}, esquemas, olhado, recusas);
    EXPECT_EQ(vale, recusas.nenhuma());
    if (linhas != nullptr) *linhas = std::move(olhado);
    return recusas;
}

} // namespace

TEST(ConferenciaPedidos, um_pedido_bom_nao_tem_recusa) {
    for (const std::string &xml : {kCancelamento, kSubstituicao, kInutilizacao, cancelamento()}) {
        std::vector<std::string> linhas;
        const Recusas recusas = verificar(lido(assinado(xml)), &linhas);
        EXPECT_TRUE(recusas.nenhuma()) << recusas.texto();
        ASSERT_GE(linhas.size(), 4U);
        EXPECT_EQ(linhas[0], "assinatura: confere; certificado de 12345678000195");
        EXPECT_EQ(linhas[2], "pedido: confere");
    }
}

TEST(ConferenciaPedidos, cada_erro_e_achado_pelo_nome) {
    const std::string evento = "envEvento/evento/infEvento", det = evento + "/detEvento";
    const struct {
        const std::string &base;
        std::string de, por, campo, motivo;
    } kCasos[] = {
        {kCancelamento, "Id=\"ID110111", "Id=\"ID110112", evento + "/@Id", "devia ser ID110111"},
        {kCancelamento, "01\"><cOrgao>", "02\"><cOrgao>", evento + "/@Id", "devia ser"},
        {kCancelamento, "<chNFe>3", "<chNFe>4", evento + "/chNFe", "último verificador"},
        {kCancelamento, "<cOrgao>35", "<cOrgao>91", evento + "/cOrgao", "estado da chave"},
        {kCancelamento, "<tpAmb>2", "<tpAmb>3", evento + "/tpAmb", "homologação"},
        {kCancelamento, "<CNPJ>12345678000195", "<CNPJ>12345678000276", evento + "/CNPJ",
         "emitente da chave"},
        {kCancelamento, "<dhEvento>2026-09", "<dhEvento>2026-08", evento + "/dhEvento", "antes"},
        {kCancelamento, "10:05:00-03:00", "10:05:00", evento + "/dhEvento", "fuso"},
        {kCancelamento, "<nSeqEvento>1", "<nSeqEvento>01", evento + "/nSeqEvento", "1 a 20"},
        {kCancelamento, "<verEvento>1.00", "<verEvento>4.00", evento + "/verEvento", "1.00"},
        {kCancelamento, "<evento xmlns=\"http://www.portalfiscal.inf.br/nfe\" versao=\"1.00\">",
         "<evento versao=\"4.00\">", "envEvento/evento/@versao", "1.00"},
        {kCancelamento, "<detEvento versao=\"1.00\">", "<detEvento>", det + "/@versao", "1.00"},
        {kCancelamento, ">Cancelamento<", ">Cancelar<", det + "/descEvento", "texto"},
        {kCancelamento, "<nProt>1", "<nProt>", det + "/nProt", "15 dígitos"},
        {kCancelamento, "Cliente desistiu da compra", "Desistiu", det + "/xJust", "15 a 255"},
        {kSubstituicao, "<tpAutor>1", "<tpAutor>2", det + "/tpAutor", "1"},
        {kSubstituicao, "<cOrgaoAutor>35", "<cOrgaoAutor>43", det + "/cOrgaoAutor", "estado"},
        {kSubstituicao, "<verAplic>1</verAplic>", "", det + "/verAplic", "20"},
        {kSubstituicao, "<chNFeRef>3", "<chNFeRef>4", det + "/chNFeRef", "44 dígitos"},
        {kInutilizacao, "ID3526", "ID3525", "inutNFe/infInut/@Id", "devia ser ID3526"},
        {kInutilizacao, "<cUF>35", "<cUF>36", "inutNFe/infInut/cUF", "estado"},
        {kInutilizacao, "<ano>26", "<ano>2026", "inutNFe/infInut/ano", "2 dígitos"},
        {kInutilizacao, "<mod>65", "<mod>55", "inutNFe/infInut/mod", "65"},
        {kInutilizacao, "<serie>1", "<serie>001", "inutNFe/infInut/serie", "999"},
        {kInutilizacao, "<nNFIni>8", "<nNFIni>0", "inutNFe/infInut/nNFIni", "999999999"},
        {kInutilizacao, "<nNFIni>8", "<nNFIni>10", "inutNFe/infInut/nNFFin", "vem antes"},
        {kInutilizacao, "<nNFFin>9", "<nNFFin>10008", "inutNFe/infInut/nNFFin", "10000"},
        {kInutilizacao, "versao=\"4.00\"", "versao=\"3.10\"", "inutNFe/@versao", "4.00"},
        {kInutilizacao, "INUTILIZAR", "CONSULTAR", "inutNFe/infInut/xServ", "INUTILIZAR"},
        {kInutilizacao, "Numeros pulados pelo caixa", "", "inutNFe/infInut/xJust", "15 a 255"},
    };
    for (const auto &[base, de, por, campo, motivo] : kCasos) {
        std::string xml = trocar(base, de, por);
        // The Id goes along with the numbers that it has, but where it is what is tried.
        if (campo.find("nNF") != campo.npos && por.find("008") != por.npos)
            xml = trocar(xml, "000000009\"", "000010008\"");
        bool achado = false;
        const Recusas recusas = verificar(lido(assinado(xml)));
        for (const Recusa &recusa : recusas.lista()) {
            achado = achado ||
                     (recusa.campo == campo && recusa.motivo.find(motivo) != std::string::npos);
            EXPECT_TRUE(recusa.campo == campo || recusa.campo.ends_with("/@Id")) << recusas.texto();
        }
        EXPECT_TRUE(achado) << por << '\n' << recusas.texto();
    }
}

TEST(ConferenciaPedidos, assinatura_e_resposta_sao_deste_pedido) {
    const std::string bom = assinado(kCancelamento);
    const std::string registrado = trocar(kRegistrado, cancelamento(), assinado(cancelamento()));
    EXPECT_EQ(verificar(lido(registrado)).texto(), "");
    const struct {
        std::string xml, de, por, motivo;
    } kCasos[] = {
        {bom, "desistiu", "insistiu", "alterado depois"},
        {kCancelamento, "<idLote>", "<idLote>", "não está assinado"},
        {kInutilizado, ">102<", ">563<", "a autoridade não o registrou"},
        {registrado, ">135<", ">573<", "a autoridade não o registrou"},
        {registrado, "<retEvento versao=\"1.00\"><infEvento><tpAmb>2",
         "<retEvento versao=\"1.00\"><infEvento><tpAmb>1", "de outro pedido: 2"},
        {kInutilizado, "Inutilizado</xMotivo><cUF>35", "Inutilizado</xMotivo><cUF>43",
         "de outro pedido: 35"},
        {"<envEvento" + kEspaco + " versao=\"1.00\"><idLote>1</idLote></envEvento>", "1", "1",
         "não há evento"},
        {kCancelamento, "<evento", "<evento versao=\"1.00\"/><evento", "não tem um só infEvento"},
    };
    for (const auto &[xml, de, por, motivo] : kCasos) {
        const std::string recusas = verificar(lido(trocar(xml, de, por))).texto();
        EXPECT_TRUE(contem(recusas, motivo)) << por;
    }
}

TEST(ConferenciaPedidos, o_de_outro_programa_so_e_assinado_se_confere) {
    Recusas recusas;
    EXPECT_TRUE(conferirParaAssinar(lido(kSubstituicao), {}, recusas)) << recusas.texto();
    EXPECT_FALSE(
        conferirParaAssinar(lido(trocar(kCancelamento, "<cOrgao>35", "<cOrgao>91")), {}, recusas));
}
