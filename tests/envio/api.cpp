// SPDX-License-Identifier: MIT
// The whole way through the C functions of the shared object: what the till wrote becomes a message
// that the published schemas take, whose signature and QR code hold, and which prints.
#include "apoio/PastaTemporaria.h"
#include "apoio/Trecho.h"
#include "assinatura/Ensaio.h"
#include "envio/Juiz.h"
#include "envio/Nota.h"
#include "zel_envio.h"

#include <ctime>
#include <gtest/gtest.h>
#include <memory>
#include <string>

using namespace zel::envio;
using namespace zel::envio::teste;

namespace {

constexpr const char *kCnpj = "11222333000181";
constexpr const char *kProtocolo = "143260000000001";

// A certificate for trying, its password in a file of its own, and a configuration that names both.
class Envio {
public:
    explicit Envio(const std::string &mais = "[qrcode]\nid_csc = \"1\"\ncsc = \"SEGREDO\"\n",
                   const std::string &cnpj = kCnpj) {
        pasta_.gravar("ensaio.p12",
                      pkcs12DeEnsaio("PADARIA DA ESQUINA", cnpj, "senha", std::time(nullptr)));
        pasta_.gravar("senha", "senha\n", 0600);
        const std::string esquemas = pastaDosEsquemas();
        const std::string toml =
            (esquemas.empty() ? "" : "esquemas = \"" + esquemas + "\"\n") +
            "cUF = \"43\"\n[certificado]\narquivo = \"ensaio.p12\"\nsenha_arquivo = \"senha\"\n" +
            mais;
        EXPECT_EQ(zel_envio_configurar_texto(envio_.get(), toml.data(), toml.size(),
                                             pasta_.caminho().c_str()),
                  ZEL_ENVIO_OK)
            << detalhe();
    }

    zel_envio *operator*() const { return envio_.get(); }
    std::string detalhe() const { return zel_envio_detalhe(envio_.get()); }
    std::string valor(const char *nome) const { return zel_envio_valor(envio_.get(), nome); }
    int ler(const std::string &bytes) const {
        return zel_envio_ler(envio_.get(), bytes.data(), bytes.size());
    }
    std::string mensagem() const {
        char *bytes = nullptr;
        std::size_t tamanho = 0;
        if (zel_envio_mensagem(envio_.get(), &bytes, &tamanho) != ZEL_ENVIO_OK) return "nenhuma";
        return tomar(bytes, tamanho);
    }
    static std::string tomar(char *bytes, std::size_t tamanho) {
        std::string texto(bytes, tamanho);
        zel_envio_liberar_bytes(bytes);
        return texto;
    }

private:
    PastaTemporaria pasta_;
    std::unique_ptr<zel_envio, decltype(&zel_envio_liberar)> envio_{zel_envio_novo(),
                                                                    zel_envio_liberar};
};

std::string embaralhar(const std::string &texto) {
    constexpr std::string_view kChave = "rkv804mtq217";
    std::string bytes = texto + '\0';
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<char>(bytes[i] + kChave[i % kChave.size()] + 84);
    return bytes;
}

Nota contingente() {
    Nota nota;
    nota.tpEmis = "9";
    nota.contingencia = "<dhCont>2025-06-30T12:00:00-03:00</dhCont>"
                        "<xJust>Sem acesso \xE0 internet na loja</xJust>";
    return nota;
}

std::string cancelamento(const std::string &chave, const std::string &protocolo) {
    return "<EnvioEvento><ModeloDocumento>NFCe</ModeloDocumento><Versao>1.00</Versao><Evento>"
           "<NtfCnpjEmissor>11222333000181</NtfCnpjEmissor><NtfNumero>42</NtfNumero>"
           "<NtfSerie>1</NtfSerie><tpAmb>1</tpAmb><ChaAcesso>" +
           chave +
           "</ChaAcesso><EveInf><EveDh>2025-06-30T12:05:00</EveDh>"
           "<EveFusoHorario>-03:00</EveFusoHorario><EveTp>110111</EveTp><EvenSeq>1</EvenSeq>"
           "<Evedet><EveDesc>Cancelamento</EveDesc>" +
           (protocolo.empty() ? "" : "<EvenProt>" + protocolo + "</EvenProt>") +
           "<EvexJust>Cancelamento de NFCe</EvexJust></Evedet></EveInf></Evento></EnvioEvento>";
}

const std::string kInutilizacao =
    "<Inutilizacao><ModeloDocumento>NFCe</ModeloDocumento><Versao>3.10</Versao>"
    "<CnpjEmissor>11222333000181</CnpjEmissor><tpAmb>3</tpAmb><NumeroInicial>5</NumeroInicial>"
    "<NumeroFinal>7</NumeroFinal><Serie>1</Serie>"
    "<Justificativa>Numero pulado por engano</Justificativa></Inutilizacao>";

std::string resposta(const Envio &envio, const std::string &cStat) {
    return "<protNFe versao=\"4.00\" xmlns=\"http://www.portalfiscal.inf.br/nfe\"><infProt><tpAmb>1"
           "</tpAmb><verAplic>X</verAplic><chNFe>" +
           envio.valor("chave") + "</chNFe><dhRecbto>2025-06-30T12:00:02-03:00</dhRecbto><nProt>" +
           kProtocolo + "</nProt><digVal>" + envio.valor("digest") + "</digVal><cStat>" + cStat +
           "</cStat><xMotivo>Motivo</xMotivo></infProt></protNFe>";
}

} // namespace

TEST(Emissoes, cada_arquivo_do_caixa_vira_mensagem_assinada_e_julgada) {
    Envio envio;
    Nota substituta = contingente();
    substituta.nNF = "43";
    const std::string chave = Nota().chave(), outra = substituta.chave();
    const struct {
        const char *nome;
        std::string bytes;
        int tipo;
        const char *protocolo, *outra, *comeco;
    } kCasos[] = {
        {"normal", Nota().xml(), ZEL_ENVIO_NFCE, "", "", "<NFe "},
        {".ctg", embaralhar(contingente().xml()), ZEL_ENVIO_NFCE, "", "", "<NFe "},
        {"cancelamento", cancelamento(chave, kProtocolo), ZEL_ENVIO_CANCELAMENTO, "", "",
         "<envEvento "},
        {".ctgCanc", embaralhar(cancelamento(chave, "")), ZEL_ENVIO_CANCELAMENTO, kProtocolo, "",
         "<envEvento "},
        {"substituicao", cancelamento(chave, ""), ZEL_ENVIO_CANCELAMENTO, kProtocolo, outra.c_str(),
         "<envEvento "},
        {"inutilizacao", kInutilizacao, ZEL_ENVIO_INUTILIZACAO, "", "", "<inutNFe "},
    };
    for (const auto &[nome, bytes, tipo, protocolo, daOutra, comeco] : kCasos) {
        SCOPED_TRACE(nome);
        ASSERT_EQ(envio.ler(bytes), ZEL_ENVIO_OK) << envio.detalhe();
        EXPECT_EQ(zel_envio_tipo(*envio), tipo);
        ASSERT_EQ(zel_envio_completar(*envio, protocolo, daOutra, "2025-07-01", ""), ZEL_ENVIO_OK);
        ASSERT_EQ(zel_envio_assinar(*envio), ZEL_ENVIO_OK) << envio.detalhe();
        const std::string mensagem = envio.mensagem();
        EXPECT_TRUE(mensagem.starts_with(comeco)) << mensagem.substr(0, 80);
        EXPECT_TRUE(contem(mensagem, "</Signature>"));
        EXPECT_FALSE(contem(mensagem, "SEGREDO"));
        if (tipo != ZEL_ENVIO_NFCE) continue;
        EXPECT_EQ(zel_envio_verificar(*envio), ZEL_ENVIO_OK) << envio.detalhe();
        // What was made is read again, and nothing is signed twice.
        ASSERT_EQ(envio.ler(mensagem), ZEL_ENVIO_OK);
        EXPECT_EQ(zel_envio_verificar(*envio), ZEL_ENVIO_OK) << envio.detalhe();
        EXPECT_EQ(zel_envio_assinar(*envio), ZEL_ENVIO_ASSINATURA);
    }
}

TEST(Emissoes, o_que_falha_diz_tudo_e_deixa_a_mensagem_de_antes) {
    Envio envio;
    EXPECT_EQ(zel_envio_assinar(*envio), ZEL_ENVIO_ORDEM);
    EXPECT_EQ(envio.ler("<pedido/>"), ZEL_ENVIO_ILEGIVEL);
    EXPECT_EQ(envio.ler(embaralhar("<NFe")), ZEL_ENVIO_ILEGIVEL);
    ASSERT_EQ(envio.ler(Nota().xml()), ZEL_ENVIO_OK);
    ASSERT_EQ(zel_envio_assinar(*envio), ZEL_ENVIO_OK) << envio.detalhe();
    const std::string mensagem = envio.mensagem();
    EXPECT_EQ(zel_envio_completar(*envio, "1", "2", "ontem", "1,0"), ZEL_ENVIO_ARGUMENTO);
    EXPECT_TRUE(contemTodas(envio.detalhe(), {"protocolo:", "substituta:", "data:", "troco:"}));
    EXPECT_EQ(zel_envio_completar(*envio, "", "", "2026-02-31", ""), ZEL_ENVIO_ARGUMENTO);
    EXPECT_EQ(zel_envio_configurar_texto(*envio, "x = 1", 5, "/"), ZEL_ENVIO_CONFIGURACAO);
    EXPECT_EQ(envio.mensagem(), mensagem);

    Nota ruim;
    ruim.itens[0].NCM = "0901";
    ruim.cNF = "11111111";
    ASSERT_EQ(envio.ler(ruim.xml()), ZEL_ENVIO_OK);
    EXPECT_EQ(zel_envio_assinar(*envio), ZEL_ENVIO_TRADUCAO);
    EXPECT_TRUE(contemTodas(envio.detalhe(), {"NCM", "cNF"}));
    EXPECT_EQ(envio.mensagem(), "nenhuma");

    Envio alheio("[qrcode]\nversao = 3\n", "12345678000195");
    ASSERT_EQ(alheio.ler(Nota().xml()), ZEL_ENVIO_OK);
    EXPECT_EQ(zel_envio_assinar(*alheio), ZEL_ENVIO_CERTIFICADO);
    EXPECT_EQ(alheio.mensagem(), "nenhuma");
    EXPECT_EQ(zel_envio_valor(*envio, "inexistente"), nullptr);
    EXPECT_EQ(zel_envio_ler(nullptr, "", 0), ZEL_ENVIO_ARGUMENTO);
}

// What came in layout 4.00, and from whom, is looked at before our key makes it ours.
TEST(Emissoes, mensagem_de_outro_e_olhada_antes_de_assinada) {
    Envio envio;
    Nota nota;
    nota.itens[0].xProd = "Pao d'agua \"especial\"";
    ASSERT_EQ(envio.ler(nota.xml()), ZEL_ENVIO_OK);
    ASSERT_EQ(zel_envio_traduzir(*envio), ZEL_ENVIO_OK) << envio.detalhe();
    const std::string boa = envio.mensagem(),
                      espaco = " xmlns=\"http://www.portalfiscal.inf.br/nfe\"";
    EXPECT_TRUE(contem(boa, "Pao d&#39;agua &quot;especial&quot;"));
    const std::string suplemento = "<infNFeSupl><qrCode>velho</qrCode></infNFeSupl>";
    ASSERT_EQ(envio.ler(cancelamento(nota.chave(), kProtocolo)), ZEL_ENVIO_OK);
    ASSERT_EQ(zel_envio_traduzir(*envio), ZEL_ENVIO_OK) << envio.detalhe();
    const std::string lote = envio.mensagem();
    const std::string evento =
        lote.substr(lote.find("<evento "), lote.find("</envEvento>") - lote.find("<evento "));
    const std::string alheio = trocar(evento, "<CNPJ>11222333", "<CNPJ>99222333");
    const std::string chave = nota.chave();
    const struct {
        std::string xml;
        int codigo;
        const char *parte;
    } kCasos[] = {
        {boa, ZEL_ENVIO_OK, ""},
        {trocar(boa, "</NFe>", suplemento + "</NFe>"), ZEL_ENVIO_OK, ""},
        {lote, ZEL_ENVIO_OK, ""},
        {trocar(boa, "<cDV>" + chave.substr(43), "<cDV>x"), ZEL_ENVIO_REPROVADO, "ide/cDV"},
        {trocar(boa, chave, chave.substr(0, 43) + "x"), ZEL_ENVIO_REPROVADO, "@Id"},
        {trocar(boa, "<vNF>20.00", "<vNF>1.00"), ZEL_ENVIO_REPROVADO, "610"},
        {trocar(boa, "<UF>RS", "<UF>RJ"), ZEL_ENVIO_REPROVADO, "enderEmit/UF"},
        {trocar(boa, espaco, ""), ZEL_ENVIO_TRADUCAO, "espaço de nomes"},
        {"<enviNFe" + espaco + ">" + boa + boa + "</enviNFe>", ZEL_ENVIO_TRADUCAO, "NFe[2]"},
        {trocar(lote, "</envEvento>", alheio + "</envEvento>"), ZEL_ENVIO_REPROVADO,
         "evento[2]/infEvento/CNPJ: \"99222333000181\""},
        {trocar(nota.xml(), "</NFe>", "<Signature/></NFe>"), ZEL_ENVIO_OK, ""},
    };
    for (const auto &[xml, codigo, parte] : kCasos) {
        ASSERT_EQ(envio.ler(xml), ZEL_ENVIO_OK) << envio.detalhe();
        EXPECT_EQ(zel_envio_assinar(*envio), codigo) << parte << '\n' << envio.detalhe();
        EXPECT_TRUE(contem(envio.detalhe(), parte));
        if (codigo != ZEL_ENVIO_OK) continue;
        const std::string feita = envio.mensagem();
        EXPECT_FALSE(contem(feita, "infNFeSupl><qrCode>velho"));
        EXPECT_EQ(feita.find("<Signature"), feita.rfind("<Signature "));
    }
    // A root of its own.
    ASSERT_EQ(envio.ler(trocar(evento, "<evento", "<evento" + espaco)), ZEL_ENVIO_OK);
    const int codigo = zel_envio_assinar(*envio);
    EXPECT_FALSE(contem(envio.detalhe(), "outra empresa")) << codigo;
    // An old signature says nothing of the translated document.
    ASSERT_EQ(envio.ler(trocar(nota.xml(), "</NFe>", "<Signature/></NFe>")), ZEL_ENVIO_OK);
    EXPECT_EQ(zel_envio_traduzir(*envio), ZEL_ENVIO_OK) << envio.detalhe();
}

TEST(Impressoes, so_do_que_foi_autorizado_e_com_o_qr_do_documento) {
    Envio envio;
    Nota nota;
    nota.pagamentos = {{"01", "12.00"}, {"17", "8.00"}};
    nota.itens[0].xProd = "P\xE3o &amp; \"queijo\"";
    ASSERT_EQ(envio.ler(nota.xml()), ZEL_ENVIO_OK);
    ASSERT_EQ(zel_envio_assinar(*envio), ZEL_ENVIO_OK) << envio.detalhe();
    const auto imprimir = [&](const std::string &dita, std::string &documento,
                              std::string &retorno) {
        char *d = nullptr, *r = nullptr;
        std::size_t nd = 0, nr = 0;
        const int codigo = zel_envio_impressao(*envio, dita.empty() ? nullptr : dita.data(),
                                               dita.size(), &d, &nd, &r, &nr);
        if (codigo != ZEL_ENVIO_OK) return codigo;
        documento = Envio::tomar(d, nd);
        retorno = Envio::tomar(r, nr);
        return codigo;
    };
    std::string documento, retorno;
    ASSERT_EQ(imprimir(resposta(envio, "100"), documento, retorno), ZEL_ENVIO_OK)
        << envio.detalhe();
    EXPECT_TRUE(contem(documento, "<pag><tPag>01</tPag><vPag>12.00</vPag></pag><pag>"
                                  "<tPag>17</tPag><vPag>8.00</vPag></pag>"));
    EXPECT_TRUE(contem(documento, "P\xE3o &amp; \"queijo\""));
    EXPECT_TRUE(contem(retorno, "<DocProtocolo>143260000000001</DocProtocolo>"));
    EXPECT_TRUE(contem(retorno, "<LinkXML>" + envio.valor("qrCode") + "</LinkXML>"));
    ASSERT_EQ(imprimir("", documento, retorno), ZEL_ENVIO_OK);
    EXPECT_FALSE(contem(retorno, "DocProtocolo"));

    std::string alterada = resposta(envio, "100");
    alterada.replace(alterada.find("<digVal>") + 8, 4, "AAAA");
    std::string de_outro = resposta(envio, "100");
    de_outro.replace(de_outro.find("<chNFe>") + 7, 2, "35");
    for (const std::string &dita : {resposta(envio, "302"), resposta(envio, "204"), alterada,
                                    de_outro, std::string("<retEnviNFe/>")})
        EXPECT_EQ(imprimir(dita, documento, retorno), ZEL_ENVIO_REPROVADO) << dita;
    EXPECT_EQ(imprimir("nada", documento, retorno), ZEL_ENVIO_ILEGIVEL);
}
