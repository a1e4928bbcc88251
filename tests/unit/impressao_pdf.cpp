// SPDX-License-Identifier: MIT
// The PDFs: what is drawn from which mark-up, where lines and pages break, and that no document can
// make the library write anywhere else.
#include "comum/Base64.h"
#include "impressao/PdfDanfe.h"
#include "impressao/ZEL_PDF.h"
#include "impressao_apoio.h"
#include "texto/Codificacao.h"
#include "texto/Texto.h"

#include <cmath>
#include <regex>

using namespace impressao;

namespace {

// The document on one line: line ends between its tags are text to the listing.
std::string nota() {
    return substituirAll(dado("nota_simples.xml"), "\n", "");
}

std::string autorizada(const std::string &documento = nota()) {
    return "<nfeProc versao=\"3.10\">" + documento +
           substituirAll(dado("retorno_sefaz.xml"), "\n", "") + "</nfeProc>";
}

// What a PDF draws: "\f" where a page begins, "\n" where a line does (two after a blank line),
// "{font size}" and "{colour}" where they change, and the text: in the file, all but printable
// bytes are octal numbers.
std::string lerDesenho(const std::string &pdf) {
    std::string desenho;
    for (std::string_view linha : split(pdf, '\n', pdf.size())) {
        const std::string_view operador =
            linha.substr(std::min(linha.rfind(' ') + 1, linha.size()));
        const std::string operando(linha.substr(0, linha.size() - operador.size()));
        if (operador == "BT") desenho += "\f";
        if (operador == "Td") {
            const auto linhas = std::lround(-std::stod(operando.substr(operando.find(' '))) / 8);
            desenho.append(static_cast<std::size_t>(std::max(linhas, 1L)), '\n');
        }
        if (operador == "rg") desenho += "{" + trim(operando) + "}";
        if (operador == "Tf") desenho += "{" + trim(operando.substr(1)) + "}";
        if (operador != "Tj") continue;
        const std::string_view texto = linha.substr(1, linha.size() - 5);
        for (std::size_t i = 0; i < texto.size(); ++i) {
            const bool octal = texto[i] == '\\';
            const std::string numero(texto.substr(i + 1, octal ? 3 : 0));
            desenho += octal ? static_cast<char>(std::stoi(numero, nullptr, 8)) : texto[i];
            i += numero.size();
        }
    }
    return desenho;
}

std::string semMarcas(const std::string &desenho) {
    return std::regex_replace(desenho, std::regex("[{][^}]*[}]"), "");
}

class Pdf : public Teste {
protected:
    // All in black Courier, which is not shown.
    std::string danfe(std::string_view texto, int colunas) const {
        EXPECT_EQ(fnGerarPDFDanfe(texto, colunas, "d.pdf"), ZEL_OK);
        const std::string desenho = lerDesenho(pasta.ler("d.pdf"));
        return substituirAll(substituirAll(desenho, "{0 0 0}", ""), "{F1 ", "{");
    }
    int gerarDanfe(std::string_view base64) { return gerarPdfDoXml(emCurso, dados, total, base64); }
    std::string listagem(std::string_view xml) const {
        PdfPagina pagina(kMargensListagem);
        fnEscreverTextoPDF(pagina, xml);
        EXPECT_EQ(pagina.salvar(pasta / "l.pdf"), ZEL_OK);
        return lerDesenho(pasta.ler("l.pdf"));
    }
};

TEST_F(Pdf, marcas_e_larguras_decidem_tamanho_lugar_e_quebras) {
    const std::string cem = substituirAll(std::string(10, 'x'), "x", "0123456789");
    const auto corte = [&](std::size_t n) { return cem.substr(0, n); };
    const auto brancos = [](std::size_t n) { return std::string(n, ' '); };
    const std::tuple<std::string, int, std::string> casos[] = {
        {"a\r\n<c>b</c>\r\nd", 48, "{8}\na{6.725}\nb{8}\nd"},
        {"<bmp></bmp>a<sl>4</sl><gui></gui>", 48, "{8}\na"},
        // Condensed text goes on until its end, however often it begins.
        {"<c>a\r\n<c>b\r\n-\r\n<c>d</c>e</c>f", 48, "{6.725}\na\nb\n-\nd{8}ef"},
        {"<b>a<c>b</b>d</c>", 48, "{8}\na{6.725}bd"}, // a tag may end in another size
        {"<ce><b>abcd</b></ce>e", 42, "{8}\n" + brancos(19) + "abcde"},
        {"<ce><c>abcd\r\nab</c></ce>", 42, "{6}\n" + brancos(26) + "abcd\n" + brancos(27) + "ab"},
        {"<ce><qrcode>x?a=1&b<lmodulo>3</lmodulo></qrcode></ce>a", 42, "{6}\nx?a=1&b{8}a"},
        {"a<lmodulo>3</lmodulo>b <xyz> [b]c[/b]", 48, "{8}\nab [xyz] c"},
        {"\x1B\x01z\tb\x7F\x90\xE7\xE3(\\)", 48, "{8}\nzb\xE7\xE3(\\)"},
        {corte(49) + "\r\na", 48, "{8}\n" + corte(49) + "\na"},
        {corte(50) + "\r\na", 48, "{8}\n" + corte(48) + "\n89\na"},
        {"<c>" + corte(59) + "</c>", 48, "{6.725}\n" + corte(57) + "\n78"},
        {"<c>a\r\n<c>" + corte(58) + "\r\n</c>", 48, "{6.725}\na\n" + corte(58)},
        {"a\r\n\r\nb", 48, "{8}\na\n\nb"},
        {"a<gui></gui>b", 48, "{8}\na\nb"}, // a cut ends the line, and nothing else
        {"a\r\n<sl>4</sl><gui></gui><bmp></bmp>b", 42, "{8}\na\nb"},
        {"<qrcode>" + cem + "</qrcode>", 42, "{6}\n" + corte(56) + "\n" + cem.substr(56)},
        // From 10 points on, 4.8 points a character: the 120th begins in front of the margin.
        {cem + cem, 0, "{8}\n" + cem + corte(20) + "\n" + cem.substr(20)},
    };
    for (const auto &[texto, colunas, desenho] : casos)
        EXPECT_EQ(danfe(texto, colunas), "\f" + desenho) << texto;
}

TEST_F(Pdf, listagem_quebra_na_margem_e_tem_cor_e_fonte) {
    // Bold "m" has 889 thousandths of 8 points: the 83rd begins in front of 585.
    const std::string linha = "{0 0 0}\n" + std::string(83, 'm');
    EXPECT_TRUE(contem(listagem(std::string(90, 'm')), linha + "\n    mmmmmmm", 1));
    EXPECT_TRUE(contem(listagem(std::string(83, 'm') + "\nx"), linha + "\nx", 1));
    EXPECT_EQ(listagem("<a x=\"/\">> / c</a>"),
              "\f{F1 8}{0 0 1}\n<{1 0 0}a x=\"/\"{0 0 1}>{F2 8}{0 0 0}> / c"
              "{F1 8}{0 0 1}</{1 0 0}a{0 0 1}>");
    EXPECT_TRUE(contem(pasta.ler("l.pdf"), "\n0 831 Td\n", 1));
}

TEST_F(Pdf, quebra_de_pagina_nao_perde_linha_nem_tamanho) {
    EXPECT_TRUE(contem(listagem(std::string(103, '\n') + "a"), "\f", 1));
    EXPECT_TRUE(contem(listagem(std::string(104, '\n') + "a"), "\f", 2));
    std::string cupom, desenho;
    for (int i = 0; i < 1030; ++i) { // 103 lines a page
        const std::string linha = std::to_string(i) + " Ma\xE7\xE3";
        cupom += "<c>" + linha + "</c>\r\n";
        desenho += (i % 103 == 0 ? "\f{6.725}\n" : "\n") + linha;
    }
    EXPECT_EQ(danfe(cupom, 48), desenho);

    // A file that only our own reading finds right would not do.
    if (std::system("command -v pdftotext > /dev/null") != 0) GTEST_SKIP() << "no pdftotext";
    const std::string arquivos = (pasta / "d.pdf ") + (pasta / "lido.txt");
    ASSERT_EQ(std::system(("pdftotext -layout -enc Latin1 " + arquivos).c_str()), 0);
    EXPECT_TRUE(contem(pasta.ler("lido.txt"), " Ma\xE7\xE3\n", 1030));
}

TEST_F(Pdf, documento_listado_em_qualquer_envoltorio_e_codificacao) {
    const std::string utf8 =
        "<NFe><infNFe versao='3.10' Id=' " + kId + " '><xNome>Pão</xNome></infNFe></NFe>";
    const std::string base64 = comum::base64(autorizada());
    const std::string_view nome = ">\n                <xNome>Pão &amp; Cia Ltda</xNome>\n"_l1;
    const std::string_view curto = ">\n        <xNome>Pão</xNome>\n"_l1;
    const std::tuple<std::string_view, std::string, std::string_view> casos[] = {
        {"DocXML", base64, nome},
        {"DocXML", comum::base64("<?xml version=\"1.0\"?><!-- x -->" + utf8), curto},
        {"DocXML", comum::base64(substituirAll(utf8, "Pão", "Pão"_l1)), curto},
        {"DocXMLBase64", "<R><DocXmlBase64>" + base64 + "</DocXmlBase64></R>", nome},
    };
    for (const auto &[origem, conteudo, linha] : casos) {
        std::filesystem::remove(pasta / (kId + "_XML.pdf"));
        EXPECT_EQ(fnGerarPDF(origem, conteudo), ZEL_OK) << conteudo;
        const std::string texto = semMarcas(lerDesenho(pasta.ler(kId + "_XML.pdf")));
        EXPECT_TRUE(texto.starts_with("\f\n<?xml version=\"1.0\"?>\n<")) << texto;
        EXPECT_TRUE(contem(texto, linha, 1));
    }
}

TEST_F(Pdf, documento_ou_nome_recusado_nao_grava_arquivo) {
    const std::string inteira = autorizada();
    const std::string base64 = comum::base64(inteira);
    const auto antes = pasta.quantosEm();
    for (const auto &xml :
         {substituirAll(inteira, kId, "NFe../../../tmp/x"), substituirAll(inteira, kId, kId + "0"),
          substituirAll(inteira, kId, kId.substr(0, 46) + "/"),
          substituirAll(inteira, " Id=", " id="), substituirAll(inteira, "infNFe", "outro"),
          inteira.substr(0, inteira.size() / 2), std::string()}) {
        EXPECT_EQ(fnGerarPDF("DocXML", comum::base64(xml)), ZEL_RECUSADO) << xml;
        EXPECT_EQ(gerarDanfe(comum::base64(xml)), ZEL_RECUSADO) << xml;
    }
    EXPECT_EQ(gerarDanfe(comum::base64(nota())),
              ZEL_RECUSADO); // not authorized
    EXPECT_EQ(gerarDanfe("*" + base64), ZEL_RECUSADO);
    EXPECT_EQ(fnGerarPDF("DocXMLBase64", base64), ZEL_RECUSADO);
    for (const std::string_view nome : {"../x.pdf", "/tmp/x.pdf", ""})
        EXPECT_EQ(fnGerarPDFDanfe("a", 48, nome), ZEL_RECUSADO) << nome;
    EXPECT_EQ(pasta.quantosEm(), antes);
}

TEST_F(Pdf, cupom_nao_deixa_copia_de_trabalho_e_diz_as_falhas) {
    const std::string infAdic = "<infAdic><infCpl>[b]Volte[/b] sempre</infCpl></infAdic></infNFe>";
    const std::string documento = autorizada(trocar(nota(), "</infNFe>", infAdic));
    const std::string base64 = comum::base64(documento), arquivo = kId + "_DANFE.pdf";
    ASSERT_EQ(gerarDanfe(base64), ZEL_OK);
    EXPECT_FALSE(existe("danfe_pdf_temp.xml"));
    const std::string texto = semMarcas(lerDesenho(pasta.ler(arquivo)));
    EXPECT_TRUE(contemTodas(
        texto, {"\nPão & Cia Ltda\n"_l1, "135140000000001", "Volte sempre", "cHashQRCode="}));
    EXPECT_EQ(texto.find_first_of("[]<>"), texto.npos) << texto;

    std::filesystem::remove(pasta / arquivo);
    for (const std::string &nome : {arquivo, kId + "_XML.pdf"})
        std::filesystem::create_directory(pasta / nome);
    EXPECT_EQ(fnGerarPDF("DocXML", base64), ZEL_FALHA_GRAVACAO_PDF);
    EXPECT_EQ(gerarDanfe(base64), ZEL_FALHA_GRAVACAO_PDF);
    EXPECT_FALSE(existe("danfe_pdf_temp.xml"));
    std::filesystem::create_directory(pasta / "danfe_pdf_temp.xml");
    EXPECT_EQ(gerarDanfe(base64), ZEL_ARQUIVO_INDISPONIVEL);
}

TEST_F(Pdf, desenho_que_falha_e_dito_uma_vez_e_nao_gravado) {
    testing::internal::CaptureStderr();
    PdfPagina pagina(kMargensDanfe);
    for (const float tamanho : {8.0F, 9999.0F, 8.0F}) // the second is no size
        pagina.escrever("a\nb\n", {FontePdf::kCourier, CorPdf::kPreto, tamanho});
    EXPECT_EQ(pagina.salvar(pasta / "x.pdf"), ZEL_FALHA_PDF);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "ERROR: error_no=1050, detail_no=9999\n");
    EXPECT_FALSE(existe("x.pdf"));
}

} // namespace
