// SPDX-License-Identifier: MIT
// Signatures: what is made holds, here and with xmlsec's command; what was tampered with does not.
#include "Assinada.h"

#include <gtest/gtest.h>
#include <thread>

using namespace zel::envio;
using namespace zel::envio::ensaio;

namespace {

// From one mark up to the end of another.
std::string parte(const std::string &texto, std::string_view de, std::string_view ate) {
    const std::size_t inicio = texto.find(de);
    return texto.substr(inicio, texto.find(ate, inicio) + ate.size() - inicio);
}

std::string conferido(const std::string &xml, const char *pai = "NFe") {
    const auto documento = lido(xml);
    Recusas recusas;
    std::string pem;
    const bool vale = verificarAssinatura(documento, documento.raiz().procurar(pai), pem, recusas);
    EXPECT_EQ(vale, recusas.nenhuma());
    EXPECT_EQ(vale ? kCnpj : "", cnpjDePem(pem));
    return recusas.texto();
}

const struct {
    const char *nome, *pai;
    std::string xml;
} kMensagens[] = {
    {"infNFe", "NFe", nfe(3)},
    {"infNFe", "NFe", lote("enviNFe", "4.00", nfe())},
    {"infEvento", "evento", lote("envEvento", "1.00", cancelamento())},
    {"infEvento", "evento", substituicao()},
    {"infInut", "inutNFe", inutilizacao()},
};

} // namespace

TEST(Assinatura, vale_aqui_e_para_o_comando_xmlsec1) {
    const bool comando = std::system("command -v xmlsec1 > /dev/null") == 0;
    PastaTemporaria pasta;
    const auto raiz = pasta.gravar("raiz.pem", pemDe({certificado()->x509()}), 0600);
    for (const auto &[nome, pai, xml] : kMensagens) {
        const std::string feito = assinada(xml, nome);
        EXPECT_EQ(conferido(feito, pai), "");
        EXPECT_EQ(feito.find_first_of("\r\n"), feito.npos);
        EXPECT_EQ(lido(feito).raiz().procurar("Signature").pai().filhos().back().nome(),
                  "Signature");
        Recusas recusas;
        EXPECT_EQ(digestDe(lido(xml), nome, recusas),
                  lido(feito).raiz().procurar("DigestValue").texto());
        if (!comando) continue;
        const std::string linha =
            "xmlsec1 --verify --id-attr:Id http://www.portalfiscal.inf.br/nfe:" +
            std::string(nome) + " --pubkey-cert-pem " + raiz + " ";
        const auto certo = pasta.gravar("certo.xml", feito, 0600);
        EXPECT_EQ(std::system((linha + certo + " > /dev/null 2>&1").c_str()), 0) << nome;
        const auto errado = pasta.gravar("errado.xml", trocar(feito, "tpAmb>2<", "tpAmb>1<"), 0600);
        EXPECT_NE(std::system((linha + errado + " > /dev/null 2>&1").c_str()), 0) << nome;
    }
    if (!comando) GTEST_SKIP() << "xmlsec1 não está instalado: conferido só pela biblioteca";
}

// Namespaces that the signed part inherits belong to its canonical form; blanks between the
// elements of others' signatures, and base64 in lines, are nothing wrong.
TEST(Assinatura, de_outros_programas_vale_como_eles_a_escrevem) {
    const std::string herdado =
        trocar(nfe(), "<NFe ", "<NFe xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" ");
    EXPECT_EQ(conferido(assinada(herdado, "infNFe")), "");
    std::string linhas = assinada(nfe(), "infNFe");
    linhas.insert(linhas.find("<SignatureValue>") + 80, "\n");
    linhas.insert(linhas.find("<X509Certificate>") + 80, "\r\n  ");
    linhas.insert(linhas.find("<KeyInfo>"), "\n  ");
    EXPECT_EQ(conferido(linhas), "");
    EXPECT_EQ(conferido("<nfeProc xmlns=\"http://www.portalfiscal.inf.br/nfe\" versao=\"4.00\">" +
                        linhas + "</nfeProc>"),
              "");
}

TEST(Assinatura, cada_ataque_e_recusado) {
    const std::string bom = assinada(nfe(), "infNFe");
    const std::string info = parte(bom, "<infNFe", "</infNFe>");
    const std::string assinatura = parte(bom, "<Signature ", "</Signature>");
    const std::string id = "NFe" + chaveDoDocumento();
    const std::string falsa = trocar(info, "<vNF>1.00", "<vNF>9.00");
    const std::string outroId = trocar(falsa, id, "NFe0");
    const std::string certificadoDela = parte(bom, "<X509Certificate>", "</X509Certificate>");
    const DonoX509 curva = emitir(modelo(), chave(kCurva));
    const std::string derCurva = derDe(curva.get());
    const DonoChave curta(EVP_RSA_gen(512));
    const DonoX509 fraco = emitir(modelo(), curta.get());
    const std::string derFraco = derDe(fraco.get());
    std::string espacos, atributos;
    for (int i = 0; i < 65; ++i) {
        espacos += "xmlns:n" + std::to_string(i) + "=\"urn:x\" ";
        atributos += "n" + std::to_string(i) + "=\"\" ";
    }
    const auto x509 = [](const std::string &base64) {
        return "<X509Certificate>" + base64 + "</X509Certificate>";
    };
    const auto emBase64 = [&](const std::string &der) {
        return x509(base64De(reinterpret_cast<const unsigned char *>(der.data()), der.size()));
    };
    const std::string c14n = "http://www.w3.org/TR/2001/REC-xml-c14n-20010315";
    const std::string passo = "<Transform Algorithm=\"" + c14n + "\"/>";
    const std::string passos = parte(bom, "<Transforms>", "</Transforms>");
    const std::string passoEnvelopado = parte(passos, "<Transform ", "/>");
    const struct {
        const char *caso;
        std::string xml;
        const char *motivo;
    } kCasos[] = {
        {"content", trocar(bom, "<vNF>1.00", "<vNF>2.00"), "alterado depois"},
        {"digest", trocar(bom, "<DigestValue>", "<DigestValue>A"), "alterado depois"},
        {"value", trocar(bom, "<SignatureValue>", "<SignatureValue>AAAA"), "valor da assinatura"},
        {"other key", trocar(bom, certificadoDela, emBase64(derDe(Cadeia().autoridade.get()))),
         "valor da assinatura"},
        {"unsigned", trocar(bom, assinatura, ""), "não está assinado"},
        {"twice", trocar(bom, assinatura, assinatura + assinatura), "mais de uma"},
        {"another deep inside",
         trocar(bom, "<natOp>VENDA</natOp>", "<natOp>" + assinatura + "</natOp>"), "mais de uma"},
        {"not of that namespace", trocar(bom, "http://www.w3.org/2000/09/xmldsig#\"", "urn:x\""),
         "de outro lugar"},
        // The signed part is moved aside, and another one stands in its place.
        {"wrapped, same Id", trocar(bom, info, falsa + "<x>" + info + "</x>"), "mesmo Id"},
        {"wrapped, other Id", trocar(bom, info, outroId + "<x>" + info + "</x>"),
         "deste documento"},
        {"wrapped in the signature",
         trocar(trocar(bom, info, outroId), "</Signature>",
                "<Object>" + info + "</Object></Signature>"),
         "o leiaute fixa"},
        {"wrapped around", "<x>" + info + trocar(bom, info, outroId) + "</x>", "deste documento"},
        {"two to sign", trocar(bom, info, falsa + info), "um só elemento"},
        {"Id as xml:id", trocar(bom, "<emit>", "<emit xml:id=\"" + id + "\">"), "mesmo Id"},
        {"Id in small", trocar(bom, "<emit>", "<emit id=\"" + id + "\">"), "mesmo Id"},
        {"Id of the signature", trocar(bom, "<Signature ", "<Signature Id=\"" + id + "\" "),
         "mesmo Id"},
        {"Id in a namespace",
         trocar(bom, "<infNFe ", "<infNFe xmlns:x=\"urn:x\" x:Id=\"" + id + "\" "), "mesmo Id"},
        {"no Id", trocar(bom, "Id=\"" + id + "\"", ""), "falta, ou não é um Id"},
        {"Id no name",
         trocar(trocar(bom, "Id=\"" + id, "Id=\"a') or id('b"), "#" + id, "#a') or id('b"),
         "falta, ou não é um Id"},
        {"whole document", trocar(bom, "#" + id, ""), "deste documento"},
        {"a file", trocar(bom, "#" + id, "file:///etc/passwd"), "deste documento"},
        {"network", trocar(bom, "#" + id, "http://127.0.0.1/x"), "deste documento"},
        {"xpointer", trocar(bom, "#" + id, "#xpointer(/)"), "deste documento"},
        {"two references",
         trocar(bom, "</Reference>", "</Reference>" + parte(bom, "<Reference", "</Reference>")),
         "o leiaute fixa"},
        {"no transform", trocar(bom, passo, ""), "o leiaute fixa"},
        {"three transforms", trocar(bom, passo, passo + passo), "o leiaute fixa"},
        {"transforms turned",
         trocar(bom, passos, "<Transforms>" + passo + passoEnvelopado + "</Transforms>"),
         "o leiaute fixa"},
        {"xslt",
         trocar(bom, passo,
                "<Transform Algorithm=\"http://www.w3.org/TR/1999/REC-xslt-19991116\"/>"),
         "o leiaute fixa"},
        {"xpath inside",
         trocar(bom, passo, "<Transform Algorithm=\"" + c14n + "\"><XPath>1</XPath></Transform>"),
         "o leiaute fixa"},
        {"comments kept",
         trocar(bom, "CanonicalizationMethod Algorithm=\"" + c14n,
                "CanonicalizationMethod Algorithm=\"" + c14n + "#WithComments"),
         "o leiaute fixa"},
        {"hmac", trocar(bom, "xmldsig#rsa-sha1", "xmldsig#hmac-sha1"), "o leiaute fixa"},
        {"sha256",
         trocar(bom, "DigestMethod Algorithm=\"http://www.w3.org/2000/09/xmldsig#sha1",
                "DigestMethod Algorithm=\"http://www.w3.org/2001/04/xmlenc#sha256"),
         "o leiaute fixa"},
        {"key by value", trocar(bom, "<X509Data>", "<KeyValue/><X509Data>"), "o leiaute fixa"},
        {"key elsewhere",
         trocar(bom, "<X509Data>", "<RetrievalMethod URI=\"http://127.0.0.1/\"/><X509Data>"),
         "o leiaute fixa"},
        {"two certificates", trocar(bom, certificadoDela, certificadoDela + certificadoDela),
         "o leiaute fixa"},
        {"comment in a value", trocar(bom, "<DigestValue>", "<DigestValue><!-- -->"),
         "o leiaute fixa"},
        {"certificate of a curve", trocar(bom, certificadoDela, emBase64(derCurva)), "não é RSA"},
        {"short key", trocar(bom, certificadoDela, emBase64(derFraco)), "não é RSA"},
        {"no certificate", trocar(bom, certificadoDela, x509("")), "não é um certificado"},
        {"huge certificate", trocar(bom, certificadoDela, x509(std::string(1U << 20, 'A'))),
         "não é um certificado"},
        {"more behind it", trocar(bom, certificadoDela, emBase64(derCurva + "x")),
         "não é um certificado"},
        {"many namespaces", trocar(bom, "<NFe ", "<NFe " + espacos), "forma canônica"},
        {"many attributes", trocar(bom, "<ide", "<ide " + atributos), "forma canônica"},
        {"relative namespace", trocar(bom, "<NFe ", "<NFe xmlns:r=\"r\" "), "forma canônica"},
        {"not of the NF-e",
         trocar(bom, "<NFe xmlns=\"http://www.portalfiscal.inf.br/nfe\"", "<NFe xmlns=\"urn:x\""),
         "não é NFe"},
    };
    for (const auto &[caso, xml, motivo] : kCasos)
        EXPECT_TRUE(contem(conferido(xml), motivo)) << caso;
}

TEST(Assinatura, o_que_nao_se_assina_fica_como_estava) {
    const std::string eventos = cancelamento() + substituicao();
    const std::string id = "NFe" + chaveDoDocumento();
    const struct {
        const char *nome;
        std::string xml;
        const char *motivo;
    } kCasos[] = {
        {"infNFe", assinada(nfe(), "infNFe"), "já tem assinatura"},
        {"infEvento", nfe(), "não há o que assinar"},
        {"NFe", nfe(), "falta o elemento que recebe"},
        {"infNFe", trocar(nfe(), id, ""), "não é um Id"},
        {"infNFe", trocar(nfe(), "<emit>", "<emit xml:id=\"" + id + "\">"), "mesmo Id"},
        {"infEvento", lote("envEvento", "1.00", cancelamento() + cancelamento()), "mesmo Id"},
    };
    for (const auto &[nome, xml, motivo] : kCasos) {
        auto documento = lido(xml);
        const std::string antes = documento.texto();
        Recusas recusas;
        EXPECT_FALSE(assinar(documento, nome, *certificado(), recusas));
        EXPECT_TRUE(contem(recusas.texto(), motivo));
        EXPECT_EQ(documento.texto(), antes);
    }
    const auto lotado = lido(assinada(lote("envEvento", "1.00", eventos), "infEvento"));
    Recusas recusas;
    std::string pem;
    for (const No &um : lotado.raiz().filhos("evento"))
        EXPECT_TRUE(verificarAssinatura(lotado, um, pem, recusas)) << recusas.texto();
}

TEST(Assinatura, varias_linhas_de_execucao_assinam_ao_mesmo_tempo) {
    const std::string pacote = pkcs12De(chave(kTitular), Cadeia().titular(modelo()).get());
    std::array<std::string, 4> erros;
    std::vector<std::thread> linhas;
    for (std::string &erro : erros)
        linhas.emplace_back([&erro, &pacote] {
            for (int i = 0; i < 10; ++i) {
                Recusas recusas;
                std::string pem, motivo;
                const auto meu = Certificado::dePkcs12(pacote, kSenha, "", recusas);
                auto documento = Documento::ler(nfe(2), motivo);
                if (!meu || !assinar(*documento, "infNFe", *meu, recusas) ||
                    !verificarAssinatura(*documento, documento->raiz(), pem, recusas))
                    erro += recusas.texto();
            }
        });
    for (std::thread &linha : linhas)
        linha.join();
    for (const std::string &erro : erros)
        EXPECT_EQ(erro, "");
}
