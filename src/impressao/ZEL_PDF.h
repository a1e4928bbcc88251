// SPDX-License-Identifier: MIT
// The PDF files: the listing of a document ("_XML.pdf") and its receipt ("_DANFE.pdf"), both in the
// data directory and named after the document's Id. Drawing is PdfPagina's and its users'.
#pragma once

#include "emcurso/Persistencia.h"
#include "imposto/Presets.h"
#include "impressao/CupomFiscal.h"
#include "impressao/PdfPagina.h"

#include <string_view>

namespace zel {

// Writes the listing of a document. `origem` "DocXML": `conteudo` is the document in base64;
// "DocXMLBase64": it is a return file whose element "DOCXMLBASE64", in any case, holds that.
// ZEL_OK; ZEL_RECUSADO another `origem`, no such element, no base64, no document, or an Id that is
// not "NFe" and 44 digits; ZEL_FALHA_PDF the PDF could not be drawn; ZEL_FALHA_GRAVACAO_PDF it
// could not be saved.
int fnGerarPDF(std::string_view origem, std::string_view conteudo);

// Where the lines of a listing stand, and how a line that is too long goes on.
inline constexpr MargensPdf kMargensListagem{0, 0, "    "};

// Draws an XML text (Latin-1): the marks of its tags blue, what stands in a tag red, the content
// black and bold.
void fnEscreverTextoPDF(PdfPagina &pagina, std::string_view xml);

// Writes a receipt text with its printer mark-up, laid out for `colunas`, to a file of the data
// directory. ZEL_OK; ZEL_RECUSADO the name leads out of that directory; ZEL_FALHA_PDF;
// ZEL_FALHA_GRAVACAO_PDF.
int fnGerarPDFDanfe(std::string_view texto, int colunas, std::string_view arquivo);

// Writes the receipt, in 48 columns, of an authorized document (with its protocol) given in base64.
// ZEL_OK; ZEL_RECUSADO as fnGerarPDF, or a document from which no receipt can be read;
// ZEL_CONFIG_ILEGIVEL, ZEL_ARQUIVO_INDISPONIVEL the configuration could not be loaded;
// ZEL_ARQUIVO_INDISPONIVEL the working copy "danfe_pdf_temp.xml" could not be written;
// ZEL_FALHA_PDF; ZEL_FALHA_GRAVACAO_PDF. The working copy is gone in every case. `emCurso`,
// `dados` and `total` as for fnGerarArquivoFormatadoNF.
int gerarPdfDoXml(ST_PersitenceXML_ZEL &emCurso, const DadosImpressao &dados, TotalImposto &total,
                  std::string_view base64);

} // namespace zel
