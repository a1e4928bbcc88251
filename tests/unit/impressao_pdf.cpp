// The PDFs: what is drawn from which mark-up, in which size and colour, line and page breaks, and
// that no document can make the library write anywhere else. Page contents are read as they stand
// in the file, once with an independent reader.
#include "impressao/PdfDanfe.h"
#include "impressao/PdfListagem.h"
#include "impressao/ZEL_PDF.h"
#include "impressao_apoio.h"
#include "util/Codificacao.h"
#include "util/Texto.h"

#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <tuple>
#include <vector>

using namespace impressao;

namespace {

const std::string kId = "NFe" + std::string(kChave);

// The document on one line: line ends between its tags are text to the listing.
std::string nota() {
    return substituirAll(dado("nota_simples.xml"), "\n", "");
}

std::string autorizada(std::string_view documento = nota()) {
    return "<nfeProc versao=\"3.10\">" + std::string(documento) +
           substituirAll(dado("retorno_sefaz.xml"), "\n", "") + "</nfeProc>";
}

// What a PDF draws: each piece as "size|text" and as "font colour|text", and all of it with a "\n"
// where a line begins.
struct Desenho {
    std::vector<std::string> tamanhos;
    std::vector<std::string> cores;
    std::string texto;
    int paginas = 0;
};

// The inside of a string: other bytes than printable ones, "\\" and brackets are octal numbers.
std::string semEscapes(std::string_view bruto) {
    std::string texto;
    for (std::size_t i = 0; i < bruto.size(); i += bruto[i] == '\\' ? 4U : 1U)
        texto.push_back(bruto[i] != '\\' ? bruto[i]
                                         : static_cast<char>(std::stoi(
                                               std::string(bruto.substr(i + 1, 3)), nullptr, 8)));
    return texto;
}

Desenho lerDesenho(const std::string &pdf) {
    Desenho desenho;
    std::string fonte, tamanho, cor;
    for (const std::string_view linha : split(pdf, '\n', pdf.size())) {
        if (linha == "/Type /Page") ++desenho.paginas;
        if (linha.ends_with(" Td")) desenho.texto.push_back('\n');
        if (linha.ends_with(" rg")) cor = linha.substr(0, linha.size() - 3);
        if (linha.ends_with(" Tf")) {
            fonte = linha.substr(1, 2);
            tamanho = linha.substr(4, linha.size() - 7);
        }
        if (!linha.ends_with(") Tj")) continue;
        const std::string texto = semEscapes(linha.substr(1, linha.size() - 5));
        desenho.texto += texto;
        desenho.tamanhos.push_back(tamanho + "|" + texto);
        desenho.cores.push_back(fonte + " " + cor + "|" + texto);
    }
    return desenho;
}

class Pdf : public Teste {
protected:
    Desenho danfe(std::string_view texto, int colunas) const {
        EXPECT_EQ(fnGerarPDFDanfe(texto, colunas, "d.pdf"), ZEL_OK);
        return lerDesenho(pasta.ler("d.pdf"));
    }
    Desenho listagem(std::string_view xml) const {
        PdfPagina pagina(kMargensListagem);
        fnEscreverTextoPDF(pagina, xml);
        EXPECT_EQ(pagina.salvar(pasta / "l.pdf"), ZEL_OK);
        return lerDesenho(pasta.ler("l.pdf"));
    }
    bool existe(std::string_view nome) const { return std::filesystem::exists(pasta / nome); }
    // The configuration is there from the start.
    std::ptrdiff_t arquivos() const {
        return std::distance(std::filesystem::directory_iterator(pasta / ""), {});
    }
};

std::string repetir(int vezes, std::string_view texto) {
    std::string resultado;
    while (vezes-- > 0)
        resultado += texto;
    return resultado;
}

using Trechos = std::vector<std::string>;

// Caught: a marker that shows, text in the wrong size, centring by what is not seen.
TEST_F(Pdf, receipt_markup) {
    const std::tuple<std::string_view, int, Trechos> casos[] = {
        {"a\r\n<c>b</c>\r\nd", 48, {"8|a", "6.725|b", "8|d"}},
        {"<c>b</c>", 42, {"6|b"}},
        {"<c>b</c>", 56, {"6.725|b"}},
        {"<bmp></bmp>a<sl>4</sl><gui></gui>", 48, {"8|a"}},
        // Condensed text goes on until its end, however often it begins.
        {"<c>a\r\n<c>b\r\n-\r\n<c>d</c>e</c>f",
         48,
         {"6.725|a", "6.725|b", "6.725|-", "6.725|d", "8|ef"}},
        // A tag may end in another size than it began in.
        {"<b>a<c>b</b>d</c>", 48, {"8|a", "6.725|bd"}},
        {"<ce>abcd</ce>", 42, {"8|                   abcd"}},
        {"<ce><b>abcd</b></ce>e", 42, {"8|                   abcde"}},
        {"<ce>ab\r\nabcd</ce>", 42, {"8|                    ab", "8|                   abcd"}},
        {"<ce><c>abcd</c></ce>", 42, {"6|                          abcd"}},
        {"<ce><c>abcde</c>\r\n<c>abc</c></ce>",
         48,
         {"6.725|                          abcde", "6.725|                           abc"}},
        {"<ce>ab", 42, {"8|ab"}},
        {"<ce><qrcode>http://x?a=1&b=2<lmodulo>3</lmodulo></qrcode>\r\n</ce>a",
         42,
         {"6|http://x?a=1&b=2", "8|a"}},
        {"<ce><qrcode>http://x</qrcode></ce>\r\na", 48, {"6.725|http://x", "8|a"}},
        {"a<lmodulo>3</lmodulo>b <xyz> [b]c[/b]", 48, {"8|ab [xyz] c"}},
        {"\x1B\x01"
         "a\tb\x7F\x90\xE7\xE3(\\)",
         48,
         {"8|ab\xE7\xE3(\\)"}},
        {"<ce>ab</ce>", 40, {"8|ab"}},
        {"", 48, {}},
    };
    for (const auto &[texto, colunas, trechos] : casos)
        EXPECT_EQ(danfe(texto, colunas).tamanhos, trechos) << texto;
}

// Caught: a carriage return counted as a character of its line; no line end at the page's edge.
TEST_F(Pdf, line_breaks) {
    const std::string cem = repetir(10, "0123456789");
    const auto corte = [&](std::size_t n) { return cem.substr(0, n); };
    const std::tuple<std::string, int, std::string> casos[] = {
        {corte(49) + "\r\na", 48, "\n" + corte(49) + "\na"},
        {corte(50) + "\r\na", 48, "\n" + corte(48) + "\n89\na"},
        {"<c>" + corte(59) + "</c>", 48, "\n" + corte(57) + "\n78"},
        {"<c>" + corte(58) + "</c>", 42, "\n" + corte(56) + "\n67"},
        {"<c>a\r\n<c>" + corte(58) + "\r\n</c>", 48, "\na\n" + corte(58)},
        {"a<gui></gui>b", 48, "\na\nb"}, // a cut ends the line
        {"<qrcode>" + cem + "</qrcode>", 42, "\n" + corte(56) + "\n" + cem.substr(56)},
        // From 10 points on, 4.8 points a character: the 120th begins in front of the margin.
        {cem + cem, 0, "\n" + cem + corte(20) + "\n" + cem.substr(20)},
    };
    for (const auto &[texto, colunas, linhas] : casos)
        EXPECT_EQ(danfe(texto, colunas).texto, linhas);

    // Bold "m" has 889 thousandths of 8 points: the 83rd begins in front of 585, the 84th does not.
    EXPECT_EQ(listagem(repetir(90, "m")).texto,
              "\n" + repetir(83, "m") + "\n    " + repetir(7, "m"));
    EXPECT_EQ(listagem(repetir(83, "m") + "\nx").texto, "\n" + repetir(83, "m") + "\nx");
}

// Caught: a line lost or drawn twice at a page break, a line below the page, an empty last page,
// colour or size forgotten on a new page.
TEST_F(Pdf, pages) {
    EXPECT_EQ(danfe(repetir(103, "a\n"), 48).paginas, 1);
    EXPECT_EQ(danfe(repetir(104, "a\n"), 48).paginas, 2);
    EXPECT_EQ(listagem(repetir(104, "a\n")).paginas, 1);
    EXPECT_EQ(listagem(repetir(105, "a\n")).paginas, 2);

    std::string cupom, linhas;
    for (int i = 1; i <= 999; ++i) {
        cupom += "<c>" + std::to_string(i) + " Caneta\r\n   1.0000 X 2.00</c>\r\n";
        linhas += "\n" + std::to_string(i) + " Caneta\n   1.0000 X 2.00";
    }
    const Desenho desenho = danfe(cupom, 48);
    EXPECT_EQ(desenho.texto, linhas);
    EXPECT_EQ(desenho.paginas, 20);
    for (const auto &trecho : desenho.tamanhos)
        EXPECT_TRUE(trecho.starts_with("6.725|")) << trecho;
    for (const auto &trecho : desenho.cores)
        EXPECT_TRUE(trecho.starts_with("F1 0 0 0|")) << trecho;
}

// Caught: a character in the colour or font of another role.
TEST_F(Pdf, listing_roles) {
    const Trechos trechos{"F1 0 0 1|<",  "F1 1 0 0|a x=\"/\"", "F1 0 0 1|>", "F2 0 0 0|> / c",
                          "F1 0 0 1|</", "F1 1 0 0|a",         "F1 0 0 1|>"};
    EXPECT_EQ(listagem("<a x=\"/\">> / c</a>").cores, trechos);
    const std::string pdf = pasta.ler("l.pdf");
    EXPECT_LT(pdf.find("/BaseFont /Helvetica\n"), pdf.find("/BaseFont /Helvetica-Bold\n"));
    EXPECT_TRUE(contem(pdf, "/BaseFont /Helvetica-Bold\n"));
    EXPECT_TRUE(contem(pdf, "\n0 831 Td\n"));
}

// Caught: a document that is found only in one wrapping, attribute order or encoding.
TEST_F(Pdf, listing_of_a_document) {
    const std::string arquivo = kId + "_XML.pdf";
    const std::string utf8 =
        "<NFe><infNFe versao='3.10' Id=' " + kId + " '><xNome>Pão</xNome></infNFe></NFe>";
    const struct {
        std::string xml;
        std::string_view linha;
    } casos[] = {
        {nota(), "\n            <xNome>Pão &amp; Cia Ltda</xNome>\n"_l1},
        {autorizada(), "\n                <xNome>Pão &amp; Cia Ltda</xNome>\n"_l1},
        {"<?xml version=\"1.0\"?><!-- x -->" + utf8, "\n        <xNome>Pão</xNome>\n"_l1},
        {substituirAll(utf8, "Pão", "Pão"_l1), "\n        <xNome>Pão</xNome>\n"_l1},
    };
    for (const auto &[xml, linha] : casos) {
        std::filesystem::remove(pasta / arquivo);
        EXPECT_EQ(fnGerarPDF("DocXML", codificarBase64(xml)), ZEL_OK) << xml;
        const std::string texto = lerDesenho(pasta.ler(arquivo)).texto;
        EXPECT_TRUE(texto.starts_with("\n<?xml version=\"1.0\"?>\n<")) << texto;
        EXPECT_TRUE(contem(texto, linha));
    }
}

TEST_F(Pdf, listing_of_the_document_in_a_return) {
    const std::string base64 = codificarBase64(autorizada());
    for (const std::string tag : {"DOCXMLBASE64", "DocXmlBase64"}) {
        std::filesystem::remove(pasta / (kId + "_XML.pdf"));
        EXPECT_EQ(fnGerarPDF("DocXMLBase64", "<R><" + tag + ">" + base64 + "</" + tag + "></R>"),
                  ZEL_OK);
        EXPECT_TRUE(existe(kId + "_XML.pdf")) << tag;
    }
    EXPECT_EQ(fnGerarPDF("DocXMLBase64", "<Retorno></Retorno>"), ZEL_RECUSADO);
    EXPECT_EQ(fnGerarPDF("DocXMLBase64", base64), ZEL_RECUSADO);
    EXPECT_EQ(fnGerarPDF("Outro", base64), ZEL_RECUSADO);
}

// Caught: a file written outside the data directory, or for what is no document.
TEST_F(Pdf, refused_documents_write_nothing) {
    const std::string inteira = autorizada();
    const std::string casos[] = {
        substituirAll(inteira, kId, "NFe../../../tmp/x"),
        substituirAll(inteira, kId, kId.substr(1)),
        substituirAll(inteira, kId, kId.substr(0, 46)),
        substituirAll(inteira, kId, kId + "0"),
        substituirAll(inteira, kId, kId.substr(0, 46) + "/"),
        substituirAll(inteira, " Id=", " id="),
        substituirAll(inteira, "infNFe", "outro"),
        inteira.substr(0, inteira.size() / 2),
        "no document",
        "",
    };
    const auto antes = arquivos();
    for (const auto &xml : casos) {
        EXPECT_EQ(fnGerarPDF("DocXML", codificarBase64(xml)), ZEL_RECUSADO) << xml;
        EXPECT_EQ(fnGerarPDFDanfeDoXml(codificarBase64(xml)), ZEL_RECUSADO) << xml;
    }
    EXPECT_EQ(fnGerarPDFDanfeDoXml("*" + codificarBase64(inteira)), ZEL_RECUSADO);
    for (const std::string_view nome : {"../x.pdf", "/tmp/x.pdf", ""})
        EXPECT_EQ(fnGerarPDFDanfe("a", 48, nome), ZEL_RECUSADO) << nome;
    EXPECT_EQ(arquivos(), antes);
}

// Caught: a working copy left behind, a receipt without the document's own protocol.
TEST_F(Pdf, receipt_of_an_authorized_document) {
    const std::string documento =
        trocar(trocar(nota(), "<det ",
                      "<dest><CPF>12345678909</CPF><xNome>José da Silva</xNome></dest><det "_l1),
               "</infNFe>", "<infAdic><infCpl>[b]Volte[/b] sempre</infCpl></infAdic></infNFe>");
    ASSERT_EQ(fnGerarPDFDanfeDoXml(codificarBase64(autorizada(documento))), ZEL_OK);
    const std::string texto = lerDesenho(pasta.ler(kId + "_DANFE.pdf")).texto;
    for (const std::string_view trecho :
         {"\nPão & Cia Ltda\n"_l1, "135140000000001"_l1, "José da Silva\n"_l1, "Volte sempre"_l1,
          "cHashQRCode="_l1, "3514 0111 2223 3300"_l1})
        EXPECT_NE(texto.find(trecho), texto.npos) << trecho << "\n" << texto;
    EXPECT_EQ(texto.find_first_of("[]<>"), texto.npos) << texto;
    EXPECT_FALSE(existe("danfe_pdf_temp.xml"));

    // Not authorized: no protocol in it.
    EXPECT_EQ(fnGerarPDFDanfeDoXml(codificarBase64(documento)), ZEL_RECUSADO);
    EXPECT_FALSE(existe("danfe_pdf_temp.xml"));
}

// Caught: a PDF that only our own reading finds right.
TEST_F(Pdf, another_reader_reads_the_receipt) {
    if (std::system("command -v pdftotext > /dev/null") != 0) GTEST_SKIP() << "no pdftotext";
    const std::string modelo = nota();
    const std::size_t inicio = modelo.find("<det "), fim = modelo.find("<total>");
    std::string itens;
    for (int i = 1; i <= 999; ++i) {
        const std::string numero = std::to_string(i);
        itens += trocar(trocar(modelo.substr(inicio, fim - inicio), "'1'", "'" + numero + "'"),
                        "<cProd>789<", "<cProd>" + numero + "<");
    }
    const std::string documento = modelo.substr(0, inicio) + itens + modelo.substr(fim);
    ASSERT_EQ(fnGerarPDFDanfeDoXml(codificarBase64(autorizada(documento))), ZEL_OK);

    const std::string lido = pasta / "lido.txt";
    const std::string pdf = pasta / (kId + "_DANFE.pdf");
    ASSERT_EQ(std::system(("pdftotext -layout -enc Latin1 " + pdf + " " + lido).c_str()), 0);
    const std::string texto = trim(pasta.ler("lido.txt"));
    std::size_t posicao = 0;
    for (const std::string_view trecho :
         {"Pão & Cia Ltda"_l1, "\n001 1 Caneta azul 2.0000 UN X 5.25 10.50\n"_l1,
          "\n999 999 Caneta azul 2.0000 UN X 5.25 10.50\n"_l1, "QTD. TOTAL DE ITENS 999"_l1,
          "Protocolo de Autorização: 135140000000001"_l1}) {
        posicao = texto.find(trecho, posicao);
        ASSERT_NE(posicao, texto.npos) << trecho;
    }
    EXPECT_TRUE(contem(texto, "Caneta azul", 999));
}

// Caught: a failure that is answered as success, leaves half a file, or forgets the working copy.
TEST_F(Pdf, failures_of_the_file) {
    const std::string base64 = codificarBase64(autorizada());
    std::filesystem::create_directory(pasta / (kId + "_DANFE.pdf"));
    std::filesystem::create_directory(pasta / (kId + "_XML.pdf"));
    EXPECT_EQ(fnGerarPDF("DocXML", base64), ZEL_FALHA_GRAVACAO_PDF);
    EXPECT_EQ(fnGerarPDFDanfeDoXml(base64), ZEL_FALHA_GRAVACAO_PDF);
    EXPECT_FALSE(existe("danfe_pdf_temp.xml"));

    std::filesystem::create_directory(pasta / "danfe_pdf_temp.xml");
    EXPECT_EQ(fnGerarPDFDanfeDoXml(base64), ZEL_ARQUIVO_INDISPONIVEL);

    pasta.gravar("arquivo", "x");
    ::setenv("ZEL_DIRETORIO", (pasta / "arquivo").c_str(), 1);
    EXPECT_EQ(fnGerarPDFDanfe("a", 48, "x.pdf"), ZEL_FALHA_GRAVACAO_PDF);
    EXPECT_EQ(fnGerarPDF("DocXML", base64), ZEL_FALHA_GRAVACAO_PDF);
    EXPECT_EQ(fnGerarPDFDanfeDoXml(base64), ZEL_ARQUIVO_INDISPONIVEL);
}

// Caught: a failed document that is saved, a message lost or told for each of its consequences.
TEST_F(Pdf, failure_while_drawing) {
    testing::internal::CaptureStderr();
    testing::internal::CaptureStdout();
    PdfPagina pagina(kMargensDanfe);
    pagina.escrever("a\n", {FontePdf::kCourier, CorPdf::kPreto, 8});
    pagina.escrever("b\nc\n", {FontePdf::kCourier, CorPdf::kPreto, 9999}); // no such size
    pagina.escrever("d\n", {FontePdf::kHelvetica, CorPdf::kPreto, 8});
    EXPECT_EQ(pagina.salvar(pasta / "x.pdf"), ZEL_FALHA_PDF);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "ERROR: error_no=1050, detail_no=9999\n");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_FALSE(existe("x.pdf"));
}

} // namespace
