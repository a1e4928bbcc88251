// SPDX-License-Identifier: MIT
// QR codes against contents whose digests were computed by other means (openssl dgst, Python), and
// against the patterns of the published schema where ZEL_ESQUEMAS names its folder.
#include "Certificados.h"
#include "Juiz.h"
#include "Mensagens.h"

#include "assinatura/Assinatura.h"
#include "qrcode/QrCode.h"

#include <gtest/gtest.h>

using namespace zel::envio;
using namespace zel::envio::ensaio;

namespace {

constexpr const char *kCsc = "0123456789ABCDEF0123456789ABCDEF0123";
constexpr const char *kDigest = "AbCdEfGhIjKlMnOpQrStUvWxYz0=";
constexpr const char *kOnline = "35260912345678000195650010000000071123456702";
constexpr const char *kOffline = "35260912345678000195650010000000079123456708";

std::string offline(const std::string &dest = "") {
    std::string xml = trocar(nfe(), kOnline, kOffline);
    xml = trocar(xml, "<tpEmis>1</tpEmis><cDV>2", "<tpEmis>9</tpEmis><cDV>8");
    xml = trocar(xml, "</verProc>",
                 "</verProc><dhCont>2026-09-21T09:00:00-03:00</dhCont>"
                 "<xJust>Sem conexao com a autoridade</xJust>");
    return dest.empty()
               ? xml
               : trocar(xml, "</emit>", "</emit><dest>" + dest + "<indIEDest>9</indIEDest></dest>");
}

Configuracao config(int versao) {
    Configuracao c;
    c.qrcode.versao = versao;
    if (versao == 2) c.qrcode.idCsc = "7", c.qrcode.csc = kCsc;
    return c;
}

// With its QR code and signed.
Documento assinado(const std::string &xml, const Configuracao &c) {
    Recusas recusas;
    Documento doc = lido(xml);
    const auto digest = digestDe(doc, "infNFe", recusas);
    const auto suplemento =
        suplementoDe(doc.raiz(), digest.value_or(""), c, certificado().get(), recusas);
    EXPECT_TRUE(suplemento) << recusas.texto();
    if (!suplemento) return doc;
    No supl = doc.raiz().acrescentar("infNFeSupl");
    supl.acrescentar("qrCode", suplemento->qrCode);
    supl.acrescentar("urlChave", suplemento->urlChave);
    EXPECT_TRUE(assinar(doc, "infNFe", *certificado(), recusas)) << recusas.texto();
    return doc;
}

} // namespace

TEST(QrCode, conteudos_calculados_por_outros_meios) {
    const std::string sp = "https://www.homologacao.nfce.fazenda.sp.gov.br/qrcode?p=";
    const std::string rs =
        trocar(trocar(nfe(), kOnline, "43260912345678000195650010000000071123456704"), "<tpAmb>2",
               "<tpAmb>1");
    const std::string off = kOffline;
    const struct {
        int versao;
        std::string xml, inicio;
    } kCasos[] = {
        {2, nfe(), sp + kOnline + "|2|2|7|39CB7BE992028A155D635EA588DBFB21FCACACF4"},
        {2, offline(),
         sp + off +
             "|2|2|21|1.00|4162436445664768496a4b6c4d6e4f705172537455765778597a303d|7|"
             "14ECB083772D2B8110F51A2B4F7ADE1898AA9F2F"},
        {2, rs,
         "https://www.sefaz.rs.gov.br/NFCE/NFCE-COM.aspx?p=43260912345678000195650010000000071123"
         "456704|2|1|7|E859F2C13000DDBADDF9B4FDF94D94A4DC5F1EF2"},
        {3, nfe(), sp + kOnline + "|3|2"},
        {3, offline(), sp + off + "|3|2|21|1.00|||"},
        {3, offline("<CNPJ>11222333000181</CNPJ>"), sp + off + "|3|2|21|1.00|1|11222333000181|"},
        {3, offline("<CPF>52998224725</CPF>"), sp + off + "|3|2|21|1.00|2|52998224725|"},
        {3, offline("<idEstrangeiro>AB123456</idEstrangeiro>"), sp + off + "|3|2|21|1.00|3||"},
    };
    for (const auto &[versao, xml, inicio] : kCasos) {
        Recusas recusas;
        const auto feito =
            suplementoDe(lido(xml).raiz(), kDigest, config(versao), certificado().get(), recusas);
        ASSERT_TRUE(feito) << recusas.texto();
        // Version 3 offline ends with the signature, 344 characters of a 2048-bit key.
        const bool assinatura = versao == 3 && inicio.ends_with('|');
        EXPECT_EQ(feito->qrCode.substr(0, inicio.size()), inicio);
        EXPECT_EQ(feito->qrCode.size(), inicio.size() + (assinatura ? 344 : 0));
    }
    Configuracao c = config(3);
    c.qrcode.endereco = "https://a.b/c?p=";
    c.qrcode.urlChave = "www.exemplo.gov.br/nfce/chave";
    Recusas recusas;
    const auto feito = suplementoDe(lido(nfe()).raiz(), kDigest, c, nullptr, recusas);
    ASSERT_TRUE(feito) << recusas.texto();
    EXPECT_EQ(feito->qrCode, std::string("https://a.b/c?p=") + kOnline + "|3|2");
    EXPECT_EQ(feito->urlChave, c.qrcode.urlChave);
}

TEST(QrCode, feito_confere_e_cabe_nos_padroes_do_esquema) {
    Esquemas *const esquemas = teste::Juiz::unico().esquemas();
    Recusas recusas;
    for (const int versao : {2, 3})
        for (const std::string &xml : {nfe(), offline(), offline("<CPF>52998224725</CPF>"),
                                       offline("<idEstrangeiro>AB123456</idEstrangeiro>")}) {
            const Documento doc = assinado(xml, config(versao));
            EXPECT_TRUE(conferirQrCode(doc.raiz(), config(versao), recusas)) << recusas.texto();
            EXPECT_TRUE(conferirQrCode(doc.raiz(), {}, recusas)) << recusas.texto();
            EXPECT_TRUE(!esquemas || esquemas->julgar(doc, false, recusas)) << recusas.texto();
        }
    if (esquemas == nullptr) GTEST_SKIP() << teste::kSemEsquemas;
}

TEST(QrCode, o_que_nao_e_do_documento_e_dito_campo_por_campo) {
    const std::string v2 = assinado(offline(), config(2)).texto(),
                      v3 = assinado(offline("<CPF>52998224725</CPF>"), config(3)).texto(),
                      online = assinado(nfe(), config(2)).texto();
    const struct {
        const std::string &doc;
        const char *de, *por, *parte;
    } kCasos[] = {
        {v2, "?p=35260912", "?p=35260913", "chave"},
        {v2, "|2|2|21|1.00|", "|2|1|21|1.00|", "tpAmb"},
        {v2, "|2|2|21|1.00|", "|2|2|22|1.00|", "dia"},
        {v2, "|2|2|21|1.00|", "|2|2|21|1.01|", "vNF"},
        {v2, "|2|2|21|1.00|", "|2|2|21|1.00|0", "digest"},
        {v2, "|7|", "|7||", "9 campos"},
        {v2, "<DigestValue>", "<DigestValue>A", "digest"},
        {online, "|2|2|7|", "|2|2|7|0", "hash"},
        {online, "|2|2|7|", "|4|2|7|", "não é da versão"},
        {online, "?p=", "?q=", "não é da versão"},
        {v3, "|3|2|21|1.00|2|52998224725|", "|3|2|21|1.00|1|52998224725|", "tipo do consumidor"},
        {v3, "|52998224725|", "|52998224724|", "consumidor"},
        {v3, "|52998224725|", "|52998224725|A", "assinatura"},
        {v3, "<CPF>52998224725</CPF>", "<CPF>11144477735</CPF>", "assinatura"},
        {v3, "<X509Certificate>", "<X509Certificate>A", "assinatura"},
        {v3, "<total>", "<total><ICMSTot><vNF>1|00</vNF></ICMSTot>", "duas casas"},
    };
    for (const auto &[doc, de, por, parte] : kCasos) {
        Recusas recusas;
        EXPECT_FALSE(conferirQrCode(lido(trocar(doc, de, por)).raiz(), config(2), recusas)) << por;
        EXPECT_TRUE(contem(recusas.texto(), parte));
        EXPECT_FALSE(contem(recusas.texto(), kCsc));
    }
    Recusas recusas;
    EXPECT_FALSE(conferirQrCode(lido(nfe()).raiz(), {}, recusas));
}

// Other shops' CSCs are unknown, whatever their number is.
TEST(QrCode, de_outra_loja_o_hash_nao_se_julga) {
    PastaTemporaria pasta;
    const auto emitente = [&](const char *cnpj) {
        Configuracao c = config(2);
        c.certificado.arquivo = pasta.gravar(
            cnpj, pkcs12De(chave(kTitular), Cadeia().titular(modelo(cnpj)).get()), 0600);
        c.certificado.arquivoSenha = pasta.gravar("senha", kSenha, 0600);
        return c;
    };
    const Configuracao nossa = emitente(kCnpj), deOutra = emitente("11222333000181");
    Configuracao outroId = config(2), outroCsc = config(2);
    outroId.qrcode.idCsc = "8";
    outroCsc.qrcode.csc = "OUTRO";
    const std::string v2 = assinado(nfe(), config(2)).texto(),
                      alheio = assinado(nfe(), outroCsc).texto(),
                      v3 = assinado(offline("<CPF>52998224725</CPF>"), config(3)).texto();
    const struct {
        const std::string &doc;
        const Configuracao &c;
        const char *dito; // empty: it holds; "-": refused
    } kCasos[] = {
        {v2, nossa, ""},
        {v2, deOutra, ""},
        {v2, {}, "configure"},
        {v2, outroId, "outro CSC"},
        {alheio, nossa, "-"},
        {alheio, deOutra, "o emitente é outro"},
        {alheio, config(2), "-"}, // whose it is, nothing says
        {v3, {}, ""},             // offline: the type of its consumer is 2
    };
    for (const auto &[doc, c, dito] : kCasos) {
        Recusas recusas;
        std::string ressalva;
        const bool recusado = dito == std::string("-");
        EXPECT_EQ(conferirQrCode(lido(doc).raiz(), c, recusas, &ressalva), !recusado) << dito;
        EXPECT_EQ(ressalva.empty(), recusado || *dito == '\0') << dito << ressalva;
        EXPECT_TRUE(recusado || ressalva.find(dito) != std::string::npos) << dito << ressalva;
    }
}

TEST(QrCode, sem_o_que_e_preciso_e_recusado_com_o_remedio) {
    const std::string epec = trocar(nfe(), "<tpEmis>1", "<tpEmis>9");
    const std::string fsda = trocar(nfe(), "<tpEmis>1", "<tpEmis>5");
    Configuracao semCsc;
    const struct {
        std::string xml;
        Configuracao c;
        const char *digest, *parte;
    } kCasos[] = {
        {nfe(), semCsc, kDigest, "csc_arquivo"},
        {offline(), config(3), kDigest, "configure o certificado"},
        {offline(), config(2), "curto", "28 caracteres"},
        {epec, config(2), kDigest, "não é a da chave"},
        {fsda, config(2), kDigest, "forma de emissão"},
        {trocar(nfe(), "NFe35", "NFe00"), config(2), kDigest, "infNFe/@Id"},
        {trocar(nfe(), "<tpAmb>2", "<tpAmb>3"), config(2), kDigest, "1 ou 2"},
    };
    for (const auto &[xml, c, digest, parte] : kCasos) {
        Recusas recusas;
        EXPECT_FALSE(suplementoDe(lido(xml).raiz(), digest, c, nullptr, recusas)) << parte;
        EXPECT_TRUE(contem(recusas.texto(), parte));
    }
}
