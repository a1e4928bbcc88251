// SPDX-License-Identifier: MIT
// Messages as the schemas want them, SOAP as authorities and proxies answer it, answers of each
// service, and what is kept of them.
#include "Assinada.h"
#include "Juiz.h"

#include "assinatura/Assinatura.h"
#include "mensagem/Lote.h"
#include "mensagem/Resposta.h"

#include <gtest/gtest.h>

using namespace zel::envio;
using namespace zel::envio::ensaio;

namespace {

const std::string kId = chaveDoDocumento();
const std::string kOutra = "35260912345678000195650010000000071876543211";
const std::string kFaixa = "ID35261234567800019565001000000008000000009";
const std::string kNfe = " xmlns=\"http://www.portalfiscal.inf.br/nfe\"";

std::string elemento(const std::string &nome, const std::string &dentro) {
    return '<' + nome + '>' + dentro + "</" + nome + '>';
}

// The levels of answers, in the order of the schemas.
std::string nivel(int cStat, const std::string &motivo = "Motivo") {
    return "<tpAmb>2</tpAmb><verAplic>SP1</verAplic>" + elemento("cStat", std::to_string(cStat)) +
           elemento("xMotivo", motivo);
}

std::string prot(int cStat, const std::string &chave = kId, const std::string &motivo = "Motivo",
                 const std::string &nProt = "135260000000001") {
    return "<protNFe versao=\"4.00\"><infProt><tpAmb>2</tpAmb><verAplic>SP1</verAplic>" +
           elemento("chNFe", chave) + "<dhRecbto>2026-09-21T10:00:01-03:00</dhRecbto>" +
           (nProt.empty() ? "" : elemento("nProt", nProt)) +
           "<digVal>AAAAAAAAAAAAAAAAAAAAAAAAAAA=</digVal>" +
           elemento("cStat", std::to_string(cStat)) + elemento("xMotivo", motivo) +
           "</infProt></protNFe>";
}

std::string retEvento(int cStat, const std::string &chave = kId,
                      const std::string &nProt = "135260000000002") {
    return "<retEvento versao=\"1.00\"><infEvento><tpAmb>2</tpAmb><verAplic>SP1</verAplic>"
           "<cOrgao>35</cOrgao>" +
           elemento("cStat", std::to_string(cStat)) + "<xMotivo>Motivo</xMotivo>" +
           (chave.empty() ? "" : elemento("chNFe", chave)) +
           "<tpEvento>110111</tpEvento><nSeqEvento>1</nSeqEvento>"
           "<dhRegEvento>2026-09-21T10:06:00-03:00</dhRegEvento>" +
           (nProt.empty() ? "" : elemento("nProt", nProt)) + "</infEvento></retEvento>";
}

std::string procEvento(int cStat, const char *tipo = "110111") {
    return "<procEventoNFe versao=\"1.00\"><evento versao=\"1.00\"><infEvento>" +
           elemento("tpEvento", tipo) + "</infEvento></evento>" + retEvento(cStat) +
           "</procEventoNFe>";
}

std::string raiz(const std::string &nome, const std::string &dentro, const char *versao = "4.00") {
    return '<' + nome + kNfe + " versao=\"" + versao + "\">" + dentro + "</" + nome + '>';
}

std::string enviada(const std::string &dentro) {
    return raiz("retEnviNFe", nivel(104) + "<cUF>35</cUF>" +
                                  "<dhRecbto>2026-09-21T10:00:01-03:00</dhRecbto>" + dentro);
}

std::string consultada(int cStat, const std::string &dentro, const std::string &chave = kId,
                       const std::string &motivo = "Motivo") {
    return raiz("retConsSitNFe", nivel(cStat, motivo) +
                                     "<cUF>35</cUF><dhRecbto>2026-09-21T11:00:00-03:00</dhRecbto>" +
                                     elemento("chNFe", chave) + dentro);
}

std::string inutilizada(int cStat, const char *nNFFin = "9") {
    return raiz("retInutNFe",
                "<infInut>" + nivel(cStat) +
                    "<cUF>35</cUF><ano>26</ano><CNPJ>12345678000195</CNPJ><mod>65</mod>"
                    "<serie>1</serie><nNFIni>8</nNFIni>" +
                    elemento("nNFFin", nNFFin) +
                    "<dhRecbto>2026-09-21T10:00:01-03:00</dhRecbto>"
                    "<nProt>135260000000003</nProt></infInut>");
}

std::string eventos(const std::string &dentro, int cStat = 128) {
    return raiz("retEnvEvento",
                "<idLote>1</idLote><tpAmb>2</tpAmb><verAplic>SP1</verAplic><cOrgao>35</cOrgao>" +
                    elemento("cStat", std::to_string(cStat)) + "<xMotivo>Lote</xMotivo>" + dentro,
                "1.00");
}

std::string envelope(const std::string &dentro) {
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?><S:Envelope "
           "xmlns:S=\"http://www.w3.org/2003/05/soap-envelope\"><S:Header/><S:Body>" +
           dentro + "</S:Body></S:Envelope>";
}

std::string resultado(const std::string &dentro) {
    return envelope("<q:nfeResultMsg xmlns:q=\"http://www.portalfiscal.inf.br/nfe/wsdl/"
                    "NFeAutorizacao4\">" +
                    dentro + "</q:nfeResultMsg>");
}

} // namespace

TEST(MensagensDaSefaz, o_que_vai_e_o_que_se_guarda_passa_nos_esquemas_e_a_assinatura_vale) {
    Esquemas *const esquemas = teste::Juiz::unico().esquemas();
    if (esquemas == nullptr) GTEST_SKIP() << teste::kSemEsquemas;
    const std::string nota = assinada(nfe(), "infNFe"),
                      cancela = assinada(lote("envEvento", "1.00", cancelamento()), "infEvento"),
                      inutil = assinada(inutilizacao(), "infInut");
    const struct {
        Servico servico;
        std::string id, mensagem, resposta;
        const char *signatario;
    } kIdas[] = {{Servico::kAutorizacao, kId, nota, enviada(prot(100)), "NFe"},
                 {Servico::kConsultaProtocolo, kId, nota, consultada(100, prot(100)), "NFe"},
                 {Servico::kRecepcaoEvento, kId, cancela, eventos(retEvento(135)), "evento"},
                 {Servico::kInutilizacao, kFaixa, inutil, inutilizada(102), "inutNFe"}};
    Recusas recusas;
    for (const auto &ida : kIdas) {
        std::string motivo, pem;
        const std::string corpo = corpoDe(resultado(ida.resposta), motivo);
        const auto resposta = lerResposta(ida.servico, corpo, ida.id, recusas);
        ASSERT_TRUE(resposta) << recusas.texto() << motivo;
        const std::string guardado = guardadoDe(ida.mensagem, resposta->elemento);
        const Documento documento = lido(guardado);
        EXPECT_TRUE(esquemas->julgar(documento, false, recusas)) << recusas.texto() << guardado;
        const No pai = documento.raiz().filho(ida.signatario);
        EXPECT_TRUE(verificarAssinatura(documento, pai, pem, recusas)) << recusas.texto();
        const std::string fim = "</" + std::string(ida.signatario) + '>';
        const std::size_t inicio = ida.mensagem.find('<' + std::string(ida.signatario) + ' ');
        EXPECT_TRUE(contem(
            guardado, ida.mensagem.substr(inicio, ida.mensagem.find(fim) + fim.size() - inicio)));
    }
    for (const std::string &mensagem :
         {loteDe(nota, 123456789012345), consultaDoRecibo("351000000000001", "2"),
          consultaDaChave(kId, "1"), consultaDoServico("35", "2")})
        EXPECT_TRUE(esquemas->julgar(lido(mensagem), false, recusas)) << recusas.texto();
    EXPECT_TRUE(contem(loteDe(nota, 1), nota));
    EXPECT_TRUE(lido(envelopeDe("http://x", nota)).raiz().filho("Body/nfeDadosMsg/NFe"));
}

TEST(MensagensDaSefaz, so_se_guarda_o_que_e_da_mensagem) {
    std::string motivo;
    EXPECT_EQ(guardadoDe("<NFeX/><NFe>a</NFe>", "<protNFe/>"),
              "<nfeProc" + kNfe + " versao=\"4.00\"><NFe>a</NFe><protNFe/></nfeProc>");
    for (const auto &[mensagem, elemento] :
         {std::pair("<NFe>a</NFe>", "<retEvento/>"), std::pair("<NFe>a", "<protNFe/>"),
          std::pair("<NFe>a</NFe>", "<protNFe>"), std::pair("<NFe>a</NFe>", "")})
        EXPECT_EQ(guardadoDe(mensagem, elemento), "") << mensagem << elemento;
}

TEST(SoapDaSefaz, a_resposta_e_achada_sob_qualquer_casca_e_mais_nada_e_resposta) {
    const std::string ret = "<retConsStatServ" + kNfe + "><cStat>107</cStat></retConsStatServ>";
    const std::string semPrefixo =
        "<nfeResultMsg xmlns=\"http://x/wsdl\">" + ret + "</nfeResultMsg>";
    const std::string escapada =
        "&lt;retConsStatServ xmlns=\"http://www.portalfiscal.inf.br/nfe\"&gt;"
        "&lt;cStat&gt;107&lt;/cStat&gt;&lt;/retConsStatServ&gt;";
    const std::string boas[] = {
        resultado(ret),
        envelope(semPrefixo),
        envelope(ret),
        resultado("<a><b>" + ret + "</b></a>"),
        resultado(escapada),
        resultado("<![CDATA[<?xml version=\"1.0\"?>" + ret + "]]>"),
        resultado("<a>" + escapada + "</a>"),
        resultado("<n:retConsStatServ xmlns:n=\"http://www.portalfiscal.inf.br/nfe\">"
                  "<n:cStat>107</n:cStat></n:retConsStatServ>"),
    };
    for (const std::string &boa : boas) {
        std::string motivo;
        const std::string corpo = corpoDe(boa, motivo);
        EXPECT_EQ(motivo, "") << boa;
        Recusas recusas;
        const auto lida = lerResposta(Servico::kStatusServico, corpo, "", recusas);
        ASSERT_TRUE(lida) << recusas.texto() << corpo;
        EXPECT_EQ(lida->cStat, 107);
    }
    const std::string falha12 = envelope("<S:Fault><S:Code><S:Value>S:Sender</S:Value></S:Code>"
                                         "<S:Reason><S:Text xml:lang=\"pt\">Falha em " +
                                         kId + " de 12345678909</S:Text></S:Reason></S:Fault>");
    const struct {
        std::string bytes;
        const char *motivo;
    } kRuins[] = {
        {"", "vazio"},
        {"<!DOCTYPE html><html><body>Proxy</body></html>", "DOCTYPE"},
        {"<html><body><p>Acesso negado</p></body></html>", "envelope SOAP"},
        {ret, "envelope SOAP"},
        {resultado(ret).substr(0, 300), "não é XML"},
        {envelope(""), "envelope SOAP"},
        {resultado(""), "não traz a resposta"},
        {resultado("texto"), "não traz a resposta"},
        {resultado("<a><b><c><d>" + ret + "</d></c></b></a>"), "não traz a resposta"},
        {falha12, "falha: Falha em ... de ..."},
        {"<s:Envelope xmlns:s=\"http://schemas.xmlsoap.org/soap/envelope/\"><s:Body><s:Fault>"
         "<faultstring>ação</faultstring></s:Fault></s:Body></s:Envelope>",
         "falha: ação"},
        {"<!DOCTYPE a [<!ENTITY b SYSTEM \"file:///etc/passwd\">]>" + resultado("&b;"), "DOCTYPE"},
        {"<Envelope xmlns=\"urn:x\"><Body>" + ret + "</Body></Envelope>", "envelope SOAP"},
    };
    for (const auto &[bytes, esperado] : kRuins) {
        std::string motivo;
        EXPECT_EQ(corpoDe(bytes, motivo), "") << bytes;
        EXPECT_TRUE(contem(motivo, esperado)) << bytes;
    }
}

TEST(RespostasDaSefaz, cada_servico_diz_o_que_foi_do_documento) {
    using enum Servico;
    const std::string nomeada = "Duplicidade [chNFe: " + kOutra + "][nRec:351]";
    const struct {
        Servico servico;
        std::string corpo;
        int cStat;
        Desfecho desfecho;
        std::string chave;
        const char *protocolo; // what is kept comes with one
        bool evento = false;
    } kLidas[] = {
        {kAutorizacao, enviada(prot(100)), 100, Desfecho::kAutorizado, kId, "135260000000001"},
        {kAutorizacao, enviada(prot(100, kOutra) + prot(150)), 150, Desfecho::kAutorizado, kId,
         "135260000000001"},
        {kAutorizacao, enviada(prot(204, kId, "x", "")), 204, Desfecho::kJaEsta, kId, ""},
        {kAutorizacao, enviada(prot(539, kId, nomeada, "")), 539, Desfecho::kOutraChave, kOutra,
         ""},
        {kAutorizacao, enviada(prot(539, kId, "[chNFe:" + kOutra + "]", "")), 539,
         Desfecho::kOutraChave, kOutra, ""},
        {kAutorizacao, enviada(prot(539, kId, "[chNFe:123]", "")), 539, Desfecho::kOutraChave, "",
         ""},
        {kAutorizacao, enviada(prot(302)), 302, Desfecho::kDenegado, kId, "135260000000001"},
        {kAutorizacao, enviada(prot(1234, kId, "x", "")), 1234, Desfecho::kRecusado, kId, ""},
        {kAutorizacao, raiz("retEnviNFe", nivel(225)), 225, Desfecho::kRecusado, kId, ""},
        {kRetAutorizacao, raiz("retConsReciNFe", nivel(106) + "<nRec>351</nRec>"), 106,
         Desfecho::kEmProcesso, kId, ""},
        {kRetAutorizacao, raiz("retConsReciNFe", nivel(104) + prot(100)), 100,
         Desfecho::kAutorizado, kId, "135260000000001"},
        {kConsultaProtocolo, consultada(100, prot(150)), 150, Desfecho::kAutorizado, kId,
         "135260000000001"},
        {kConsultaProtocolo, consultada(217, ""), 217, Desfecho::kNaoConsta, kId, ""},
        {kConsultaProtocolo, consultada(101, prot(100) + procEvento(135)), 101,
         Desfecho::kCancelado, kId, "135260000000001", true},
        {kConsultaProtocolo, consultada(100, prot(100) + procEvento(155, "110112")), 155,
         Desfecho::kCancelado, kId, "135260000000001", true},
        {kConsultaProtocolo, consultada(100, prot(100) + procEvento(573)), 100,
         Desfecho::kAutorizado, kId, "135260000000001"},
        {kConsultaProtocolo, consultada(100, prot(100) + procEvento(135, "110110")), 100,
         Desfecho::kAutorizado, kId, "135260000000001"},
        {kConsultaProtocolo,
         consultada(100,
                    prot(100) + "<retCancNFe><infCanc>" + nivel(101) + "</infCanc></retCancNFe>"),
         101, Desfecho::kCancelado, kId, "135260000000001"},
        {kConsultaProtocolo, consultada(562, "", kId, nomeada), 562, Desfecho::kOutraChave, kOutra,
         ""},
        {kConsultaProtocolo, consultada(110, prot(301)), 110, Desfecho::kDenegado, kId,
         "135260000000001"},
        {kRecepcaoEvento, eventos(retEvento(135)), 135, Desfecho::kCancelado, kId,
         "135260000000002"},
        {kRecepcaoEvento, eventos(retEvento(501, "", "")), 501, Desfecho::kTarde, kId, ""},
        {kRecepcaoEvento, eventos(retEvento(573, kId, "")), 573, Desfecho::kJaEsta, kId, ""},
        {kRecepcaoEvento, eventos("", 215), 215, Desfecho::kRecusado, kId, ""},
        {kInutilizacao, inutilizada(102), 102, Desfecho::kInutilizado, "", "135260000000003"},
        {kInutilizacao, raiz("retInutNFe", "<infInut>" + nivel(563) + "</infInut>"), 563,
         Desfecho::kJaInutilizado, "", ""},
        {kStatusServico, raiz("retConsStatServ", nivel(108)), 108, Desfecho::kEsperar, "", ""},
    };
    for (const auto &l : kLidas) {
        Recusas recusas;
        const auto r =
            lerResposta(l.servico, l.corpo, l.servico == kInutilizacao ? kFaixa : kId, recusas);
        ASSERT_TRUE(r) << recusas.texto() << l.corpo;
        EXPECT_EQ(r->cStat, l.cStat) << l.corpo;
        EXPECT_EQ(nomeDe(r->desfecho), nomeDe(l.desfecho)) << l.corpo;
        EXPECT_EQ(r->chave + ' ' + r->protocolo, l.chave + ' ' + l.protocolo) << l.corpo;
        EXPECT_EQ(!r->elemento.empty(), *l.protocolo != '\0') << l.corpo;
        EXPECT_EQ(r->evento.find("procEventoNFe xmlns=") == 1, l.evento) << l.corpo;
    }
    Recusas recusas;
    const auto recibo = lerResposta(
        kAutorizacao,
        raiz("retEnviNFe",
             nivel(103) + "<infRec><nRec>351000000000001</nRec><tMed>2</tMed></infRec>"),
        kId, recusas);
    ASSERT_TRUE(recibo);
    EXPECT_EQ(recibo->recibo + ' ' + std::to_string(recibo->espera), "351000000000001 2");
}

TEST(RespostasDaSefaz, a_de_outro_documento_ou_pela_metade_nao_e_resposta) {
    using enum Servico;
    const struct {
        Servico servico;
        std::string corpo;
        const char *motivo;
    } kNenhumas[] = {
        {kAutorizacao, enviada(prot(100, kOutra)), "outra coisa"},
        {kAutorizacao, enviada(""), "não diz nada do documento"},
        {kAutorizacao, enviada(prot(100, kId, "x", "")), "sem protocolo"},
        {kAutorizacao, consultada(100, prot(100)), "retEnviNFe"},
        {kAutorizacao, raiz("retEnviNFe", ""), "cStat"},
        {kAutorizacao, raiz("retEnviNFe", elemento("cStat", "1e2")), "cStat"},
        {kAutorizacao, "<retEnviNFe", "XML"},
        {kConsultaProtocolo, consultada(217, "", kOutra), "outra coisa"},
        {kConsultaProtocolo, consultada(100, prot(100, kOutra)), "outra coisa"},
        {kConsultaProtocolo, consultada(100, ""), "sem protocolo"},
        {kRecepcaoEvento, eventos(retEvento(135, kOutra)), "outra coisa"},
        {kRecepcaoEvento, eventos(retEvento(135, "")), "outra coisa"},
        {kInutilizacao, inutilizada(102, "10"), "outra coisa"},
        {kQrCode, enviada(prot(100)), "não é de um serviço"},
    };
    for (const auto &[servico, corpo, motivo] : kNenhumas) {
        Recusas recusas;
        EXPECT_FALSE(lerResposta(servico, corpo, servico == kInutilizacao ? kFaixa : kId, recusas))
            << corpo;
        EXPECT_TRUE(contem(recusas.texto(), motivo)) << corpo;
    }
}

TEST(RespostasDaSefaz, toda_recusa_que_pede_gente_diz_o_que_fazer) {
    for (int cStat = 0; cStat < 1000; ++cStat) {
        const LinhaResposta &linha = linhaDe(cStat);
        const bool deGente =
            linha.desfecho == Desfecho::kRecusado || linha.desfecho == Desfecho::kCertificado ||
            linha.desfecho == Desfecho::kDenegado || linha.desfecho == Desfecho::kTarde;
        EXPECT_TRUE(!deGente || (!linha.remedio.empty() && ehUtf8(linha.remedio))) << cStat;
    }
    EXPECT_EQ(linhaDe(998).desfecho, Desfecho::kRecusado);
}
