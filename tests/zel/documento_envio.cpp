// SPDX-License-Identifier: MIT
// zel documento: what a till wrote, translated, signed, looked at, shown and printed; what is
// refused of it; and the first configuration, which loses nothing that is there.
#include "Loja.h"

#include "apoio/Funcoes.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <png.h>
#include <set>
#include <sys/stat.h>
#include <zbar.h>

namespace {

// What every QR code of a picture says, to a reader that is none of ours.
std::string qrDaFigura(const std::string &arquivo) {
    png_image figura{};
    figura.version = PNG_IMAGE_VERSION;
    if (png_image_begin_read_from_file(&figura, arquivo.c_str()) == 0) return figura.message;
    figura.format = PNG_FORMAT_GRAY;
    std::vector<unsigned char> pontos(PNG_IMAGE_SIZE(figura));
    png_image_finish_read(&figura, nullptr, pontos.data(), 0, nullptr);
    zbar::Image vista(figura.width, figura.height, "Y800", pontos.data(), pontos.size());
    zbar::ImageScanner leitor;
    leitor.set_config(zbar::ZBAR_NONE, zbar::ZBAR_CFG_ENABLE, 0);
    leitor.set_config(zbar::ZBAR_QRCODE, zbar::ZBAR_CFG_ENABLE, 1);
    // Offline the receipt is printed twice.
    std::set<std::string> lidos;
    leitor.scan(vista);
    for (auto simbolo = vista.symbol_begin(); simbolo != vista.symbol_end(); ++simbolo)
        lidos.insert(simbolo->get_data());
    return lidos.size() == 1 ? *lidos.begin() : "none, or several";
}

int executar(const std::string &comando) {
    return std::system(("( " + comando + " ) > /dev/null 2>&1").c_str());
}

// Whether the published schema and xmlsec1 take a message, where they are here to be asked.
testing::AssertionResult aceitaPorOutros(const Loja &loja, const std::string &nome,
                                         const std::string &esquema, const std::string &assinado) {
    const char *pasta = std::getenv("ZEL_ESQUEMAS");
    if (pasta != nullptr && executar("xmllint --nonet --noout --schema '" + std::string(pasta) +
                                     "/" + esquema + "' '" + loja / nome + "'") != 0)
        return testing::AssertionFailure() << esquema << " refuses " << loja.ler(nome);
    if (executar("command -v xmlsec1") != 0) return testing::AssertionSuccess();
    loja.gravar("emissor.pem", "-----BEGIN CERTIFICATE-----\n" +
                                   entre(loja.ler(nome), "<X509Certificate>", "<") +
                                   "\n-----END CERTIFICATE-----\n");
    const std::string verificar =
        "xmlsec1 --verify --enabled-key-data x509 --trusted-pem '" + loja / "emissor.pem" +
        "' --id-attr:Id http://www.portalfiscal.inf.br/nfe:" + assinado + " '";
    if (executar(verificar + loja / nome + "'") != 0)
        return testing::AssertionFailure() << "xmlsec1 refuses " << loja.ler(nome);
    // One letter of what is signed, and it does not.
    std::string mudada = loja.ler(nome);
    char &letra = mudada[mudada.find("</", mudada.find("<" + assinado)) - 1];
    letra = letra == '1' ? '2' : '1';
    loja.gravar("mudada.xml", mudada);
    if (executar(verificar + loja / "mudada.xml'") == 0)
        return testing::AssertionFailure() << "xmlsec1 takes anything";
    return testing::AssertionSuccess();
}

// A shop that has sold for 31,00 with change, and has a certificate for trying.
class DocumentoEnvio : public testing::Test {
protected:
    const Loja loja;
    const std::string doCaixa = loja / "documentosEnvio.xml", assinado = loja / "assinado.xml";

    void vender(const Loja::Valores &valores = {}) const {
        loja.configurar(
            {{R"(CONFIGURACAO\TipoAmbiente)", "2"}, {R"(CONFIGURACAO\IDTokenSefaz)", "000001"}});
        loja.configurar(valores);
        loja.noCaixa([](const Funcoes &caixa) { Loja::vender(caixa, 5); });
        ASSERT_TRUE(loja.zel({"documento", "config", "--ensaio"}).deu(0, "zel-envio.toml"));
    }

    Resultado documento(Argumentos argumentos) const {
        argumentos.insert(argumentos.begin(), "documento");
        return loja.zel(argumentos);
    }

    std::string resposta(std::string_view situacao) const {
        const std::string nota = loja.ler("assinado.xml");
        loja.gravar(
            "resposta.xml",
            R"(<protNFe xmlns="http://www.portalfiscal.inf.br/nfe"><infProt><tpAmb>2</tpAmb><chNFe>)" +
                entre(nota, "Id=\"NFe", "\"") +
                "</chNFe><dhRecbto>2026-11-25T22:04:16-03:00</dhRecbto>"
                "<nProt>135260000000007</nProt><digVal>" +
                entre(nota, "<DigestValue>", "<") + "</digVal><cStat>" + std::string(situacao) +
                "</cStat><xMotivo>M</xMotivo></infProt></protNFe>");
        return loja / "resposta.xml";
    }

    Resultado imprimir(const std::string &retorno) const {
        return loja.zel({"imprimir", "--impressora", loja / "papel", "--documento", assinado,
                         "--retorno", retorno});
    }
};

TEST_F(DocumentoEnvio, do_caixa_ao_papel) {
    vender();
    const Resultado traduzido = documento({"traduzir", doCaixa});
    ASSERT_TRUE(traduzido.deu(0, "versao=\"4.00\""));
    EXPECT_FALSE(contem(traduzido.saida, "<Signature"));
    // The till keeps the change beside the document; of another till's there is none to add.
    EXPECT_TRUE(contemTodas(traduzido.saida, {"<vPag>50.00</vPag>", "<vTroco>"}));
    loja.configurar({{R"(NFCE\ChaveDeAcesso)", "1"}});
    EXPECT_FALSE(contem(documento({"traduzir", doCaixa}).saida, "<vTroco>"));
    EXPECT_TRUE(documento({"traduzir", doCaixa, "--troco", "1,25"}).deu(0, "<vTroco>1.25<"));

    // Translated before or not, the same is signed; the message alone goes out.
    loja.gravar("traduzido.xml", traduzido.saida);
    const Resultado aParte = documento({"assinar", loja / "traduzido.xml"});
    EXPECT_TRUE(aParte.deu(0, "<infNFeSupl><qrCode>"));
    EXPECT_TRUE(documento({"assinar", loja / "traduzido.xml", "--saida", assinado})
                    .deu(0, "Dias que restam:   364\n"));
    EXPECT_EQ(loja.ler("assinado.xml") + "\n", aParte.saida);
    const Resultado verificado = documento({"verificar", assinado, "--json"});
    EXPECT_TRUE(verificado.deu(0, R"({"resultado":"aprovado","tipo":"nfce","chave":"35)"));
    EXPECT_TRUE(
        contem(verificado.saida, R"("assinatura: confere; certificado de 11222333000181")"));
    EXPECT_TRUE(documento({"mostrar", assinado}).deu(0, "2. 303 Queijo"));
    EXPECT_TRUE(documento({"mostrar", doCaixa, "--json"}).deu(0, R"("texto":"Padaria da)"));
}

// The till writes the change of its next sale in the same place.
TEST_F(DocumentoEnvio, o_troco_de_outra_venda_nao_entra) {
    vender();
    loja.noCaixa([](const Funcoes &caixa) { Loja::vender(caixa, 4); });
    const Resultado traduzido = documento({"traduzir", doCaixa});
    EXPECT_TRUE(traduzido.deu(1, "diga-o com --troco"));
    EXPECT_FALSE(contem(traduzido.saida, "<vTroco>"));
    EXPECT_TRUE(documento({"traduzir", doCaixa, "--troco", "1,25"}).deu(0, "<vTroco>1.25<"));
}

TEST_F(DocumentoEnvio, imprime_com_o_qr_code_do_assinado) {
    vender();
    ASSERT_TRUE(documento({"assinar", doCaixa, "--saida", assinado}).deu(0));
    EXPECT_TRUE(imprimir("OFFLINE").deu(2, "não é de contingência"));
    EXPECT_TRUE(imprimir(resposta("204")).deu(2, "infProt/cStat: \"204\""));
    EXPECT_FALSE(std::filesystem::exists(loja / "papel"));
    ASSERT_TRUE(imprimir(resposta("100")).deu(0));
    EXPECT_TRUE(contemTodas(loja.ler("papel"),
                            {entre(loja.ler("assinado.xml"), "<qrCode>", "<"), "135260000000007"}));
    // It is the till's last document: the protocol is kept, and what cancels it may leave it out.
    const std::string chave = entre(loja.ler("assinado.xml"), "Id=\"NFe", "\"");
    ASSERT_TRUE(loja.zel({"cancelar", chave}).deu(1, "sem protocolo"));
    EXPECT_TRUE(documento({"assinar", doCaixa}).deu(0, "<nProt>135260000000007<"));
    // Numbers are given up today where no other day is said.
    ASSERT_TRUE(
        loja.zel({"inutilizar", "5", "--justificativa", "Numera\u00e7\u00e3o pulada"}).deu(1));
    EXPECT_TRUE(documento({"assinar", doCaixa}).deu(0, "<nNFIni>5<"));
    EXPECT_TRUE(documento({"traduzir", doCaixa, "--data", "2025-01-31"}).deu(0, "<ano>25<"));
}

TEST_F(DocumentoEnvio, imprime_sem_resposta_o_de_contingencia) {
    vender({{R"(IDE\tpEmis)", "9"}, {R"(IDE\xJust)", "Sem internet na loja agora"}});
    ASSERT_TRUE(documento({"assinar", doCaixa, "--saida", assinado}).deu(0));
    ASSERT_TRUE(imprimir("OFFLINE").deu(0));
    EXPECT_TRUE(contem(loja.ler("papel"), entre(loja.ler("assinado.xml"), "<qrCode>", "<")));
}

// The requests of one shop after the other, each made by a till of its own. `chave` is that of the
// sale, and what the document that replaced it has is put in the place of "SUBSTITUTA".
constexpr const char *kMotivo = "Venda feita em duplicidade";
constexpr const char *kProtocolo = "135260000000007";
const struct {
    int (*chamada)(const Funcoes &caixa, char *pasta, const char *chave);
    Argumentos argumentos;
    const char *arquivo, *esquema, *elemento, *dito;
} kPedidos[] = {
    {[](const Funcoes &caixa, char *, const char *) {
         return caixa.tCFInutilizar_ZEL("5", "7", "1", kMotivo);
     },
     {},
     "documentosEnvio.xml",
     "inutNFe_v4.00.xsd",
     "infInut",
     "<nNFFin>7<"},
    {[](const Funcoes &caixa, char *pasta, const char *chave) {
         return caixa.tCFCancelarOffline_ZEL("2", "1", chave, kMotivo, pasta);
     },
     {"--protocolo", kProtocolo},
     ".ctgCanc",
     "envEventoCancNFe_v1.00.xsd",
     "infEvento",
     "<tpEvento>110111<"},
    {[](const Funcoes &caixa, char *pasta, const char *) {
         return caixa.aCFContingenciaUltimaNota_ZEL(4, pasta);
     },
     {},
     ".ctg",
     "nfe_v4.00.xsd",
     "infNFe",
     "<tpEmis>9<"},
    // What replaces a document has a number of its own.
    {[](const Funcoes &caixa, char *, const char *) {
         return caixa.aCFContingenciaUltimaNota_ZEL(3, nullptr);
     },
     {},
     "documentosEnvio.xml",
     "nfe_v4.00.xsd",
     "infNFe",
     "<nNF>3<"},
    {[](const Funcoes &caixa, char *, const char *chave) {
         return caixa.tCFCancelar_ZEL("2", "1", chave, kProtocolo, kMotivo);
     },
     {"--substituta", "SUBSTITUTA"},
     "documentosEnvio.xml",
     "envEventoCancSubst_v1.00.xsd",
     "infEvento",
     "<tpEvento>110112<"},
};

TEST_F(DocumentoEnvio, cada_pedido_do_caixa_e_aceito_por_quem_nao_e_desta_casa) {
    vender();
    const std::string chave = entre(loja.ler("documentosEnvio.xml"), "Id=\"NFe", "\"");
    loja.configurar({{R"(IDE\tpEmis)", "9"}, {R"(IDE\xJust)", "Sem internet na loja agora"}});
    std::string substituta;
    for (const auto &pedido : kPedidos) {
        SCOPED_TRACE(pedido.dito);
        const std::filesystem::path offline = loja / "offline/";
        std::filesystem::remove_all(offline);
        std::filesystem::create_directory(offline);
        loja.noCaixa([&](const Funcoes &caixa) {
            std::vector<char> pasta(ZEL_TAMANHO_DIRETORIOS);
            offline.string().copy(pasta.data(), pasta.size());
            ASSERT_GE(pedido.chamada(caixa, pasta.data(), chave.c_str()), ZEL_OK);
        });
        std::string arquivo = loja / pedido.arquivo;
        for (const auto &gravado : std::filesystem::directory_iterator(offline))
            arquivo = gravado.path();
        ASSERT_TRUE(arquivo.ends_with(pedido.arquivo)) << arquivo;
        Argumentos argumentos{"assinar", arquivo, "--saida", assinado};
        for (const std::string &outro : pedido.argumentos)
            argumentos.push_back(outro == "SUBSTITUTA" ? substituta : outro);
        ASSERT_TRUE(documento(argumentos).deu(0));
        EXPECT_TRUE(contem(loja.ler("assinado.xml"), pedido.dito));
        EXPECT_TRUE(aceitaPorOutros(loja, "assinado.xml", pedido.esquema, pedido.elemento));
        substituta = entre(loja.ler("assinado.xml"), "Id=\"NFe", "\"");
    }
}

// Offline the code is at its longest: with the digest in version 2, with a signature in version 3.
TEST_F(DocumentoEnvio, a_figura_do_cupom_traz_o_qr_code_da_mensagem) {
    const struct {
        const char *tpEmis, *versao, *parte;
    } kCasos[] = {
        {"1", "2", "|2|2|1|"}, {"9", "2", "|2|2|"}, {"1", "3", "|3|2"}, {"9", "3", "|3|2|"}};
    vender({{R"(IDE\xJust)", "Sem internet na loja agora"}});
    for (const auto &[tpEmis, versao, parte] : kCasos) {
        SCOPED_TRACE(testing::Message() << tpEmis << versao);
        loja.configurar({{R"(IDE\tpEmis)", tpEmis}});
        loja.noCaixa([](const Funcoes &caixa) { Loja::vender(caixa, 5); });
        std::string toml = loja.ler("zel-envio.toml");
        toml.replace(toml.find("\nversao = ") + 10, 1, versao);
        loja.gravar("zel-envio.toml", toml);
        ASSERT_TRUE(documento({"assinar", doCaixa, "--saida", assinado}).deu(0));
        const std::string retorno = *tpEmis == '9' ? "OFFLINE" : resposta("100");
        ASSERT_TRUE(loja.zel({"ver", "--documento", assinado, "--retorno", retorno, "--saida",
                              loja / "cupom.png"})
                        .deu(0));
        const std::string lido = qrDaFigura(loja / "cupom.png");
        EXPECT_TRUE(contem(lido, parte));
        EXPECT_EQ(lido, entre(loja.ler("assinado.xml"), "<qrCode>", "</qrCode>"));
    }
}

TEST_F(DocumentoEnvio, o_que_se_recusa_diz_tudo_e_nada_grava) {
    vender();
    ASSERT_TRUE(documento({"assinar", doCaixa, "--saida", assinado}).deu(0));
    loja.gravar("mudado.xml", ::trocar(loja.ler("assinado.xml"), "<vUnCom>8.50", "<vUnCom>8.40"));
    const Resultado mudado = documento({"verificar", loja / "mudado.xml", "--json"});
    EXPECT_TRUE(mudado.deu(2, R"({"resultado":"recusado","passo":"verificar","arquivo":")"));
    EXPECT_TRUE(
        contemTodas(mudado.saida, {R"("codigo":-9,)", R"({"campo":"NFe/Signature","valor":")",
                                   R"("motivo":"o resumo (digest) não é o do documento)",
                                   R"({"campo":"NFe/infNFe/det[1]/prod/vProd","valor":"17.00")"}));

    loja.gravar("nada.xml", "<a>");
    loja.gravar("ruim.toml", "certificada = 1\nqrcode = 2\n");
    const std::string saida = loja / "nao";
    const std::tuple<Argumentos, std::string_view> casos[] = {
        {{"assinar", loja / "nada.xml"}, "não é XML bem formado"},
        {{"assinar", loja / "nenhum.xml"}, "nenhum.xml: não existe"},
        {{"assinar", assinado}, "Signature: o documento já está assinado"},
        {{"traduzir", doCaixa, "--config", loja / "ruim.toml"}, "certificada"},
        {{"traduzir", doCaixa, "--config", loja / "nenhuma.toml"}, "nenhuma.toml"},
        {{"traduzir", doCaixa, "--troco", "muito"}, "troco: \"muito\""},
        {{"traduzir", doCaixa, "--ensaio"}, "--ensaio vai com config"},
        {{"traduzir"}, "traduzir leva um ARQUIVO"},
        {{"enviar", doCaixa}, "enviar: não é o que um documento pode"},
        {{"verificar", doCaixa}, "verificar não grava nada"},
        {{"config", "x"}, "config não leva ARQUIVO"},
    };
    for (auto [argumentos, dito] : casos) {
        argumentos.insert(argumentos.end(), {"--saida", saida});
        EXPECT_TRUE(documento(argumentos).deu(2, dito)) << testing::PrintToString(argumentos);
        EXPECT_FALSE(std::filesystem::exists(saida)) << dito;
    }
    EXPECT_TRUE(documento({"verificar", doCaixa}).deu(2, "traduza-o e assine-o"));
    // A secret that others may read is none.
    ASSERT_EQ(::chmod((loja / "senha-ensaio.txt").c_str(), 0644), 0);
    EXPECT_TRUE(documento({"assinar", doCaixa, "--saida", saida}).deu(2, "chmod 600"));
    EXPECT_FALSE(std::filesystem::exists(saida));
}

TEST_F(DocumentoEnvio, a_primeira_configuracao_nao_muda_o_que_ha) {
    EXPECT_TRUE(rodar({"documento", "config", "--diretorio", "/nada"}).deu(2, "não existe"));
    vender();
    const std::string antes = loja.retrato();
    EXPECT_TRUE(documento({"config"}).deu(2, "já existe"));
    EXPECT_TRUE(documento({"config", "--ensaio", "--saida", loja / "x.toml"}).deu(2, "já existe"));
    EXPECT_EQ(loja.retrato(), antes);
    for (const char *segredo : {"certificado-ensaio.pfx", "senha-ensaio.txt", "csc-ensaio.txt"}) {
        struct stat dados {};
        ASSERT_EQ(::stat((loja / segredo).c_str(), &dados), 0) << segredo;
        EXPECT_EQ(dados.st_mode & 0777U, 0600U) << segredo;
    }
    EXPECT_FALSE(contem(loja.ler("zel-envio.toml"), "SEGREDO"));
    // Without a certificate the text stands, but signs nothing.
    ASSERT_TRUE(documento({"config", "--saida", loja / "x.toml", "--json"}).deu(0, "x.toml"));
    EXPECT_TRUE(documento({"traduzir", doCaixa, "--config", loja / "x.toml"}).deu(0));
    EXPECT_TRUE(documento({"assinar", doCaixa, "--config", loja / "x.toml"})
                    .deu(2, "nenhum certificado foi dito"));
}

} // namespace
