// SPDX-License-Identifier: MIT
// The PDF files: the listing of a document ("_XML.pdf") and its receipt ("_DANFE.pdf"), both in the
// data directory and named after the document's Id. Drawing is PdfPagina's and its users'.
#pragma once

#include <string_view>

namespace zel {

// Writes the listing of a document. `origem` "DocXML": `conteudo` is the document in base64;
// "DocXMLBase64": it is a return file whose element "DOCXMLBASE64", in any case, holds that. 1; -1
// another `origem`, no such element, no base64, no document, or an Id that is not "NFe" and 44
// digits; -22 the PDF could not be drawn; -23 it could not be saved.
int fnGerarPDF(std::string_view origem, std::string_view conteudo);

// Writes a receipt text with its printer mark-up, laid out for `colunas`, to a file of the data
// directory. 1; -1 the name leads out of that directory; -22; -23.
int fnGerarPDFDanfe(std::string_view texto, int colunas, std::string_view arquivo);

// Writes the receipt, in 48 columns, of an authorized document (with its protocol) given in base64.
// 1; -1 as fnGerarPDF, or a document from which no receipt can be read; -40, -52 the configuration
// could not be loaded; -52 the working copy "danfe_pdf_temp.xml" could not be written; -22; -23.
// The working copy is gone in every case.
int fnGerarPDFDanfeDoXml(std::string_view base64);

} // namespace zel
