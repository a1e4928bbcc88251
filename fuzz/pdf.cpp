// SPDX-License-Identifier: MIT
// Base64 and PDF. The first byte chooses: text as base64, a document (encoded here), or a receipt
// text in some width. No file but the PDF of a sound key is left.
#include "PastaDoAlvo.h"
#include "comum/Base64.h"

#include "ZEL_FelborFramework.h"
#include "comum/ChaveAcesso.h"
#include "config/Registro.h"
#include "impressao/PdfDanfe.h"
#include "impressao/ZEL_PDF.h"
#include "texto/Codificacao.h"

using namespace zel;

void jogar(std::string_view texto) {
    static const PastaDoAlvo pasta;
    static const int pronta = inicializarConfig();
    const int escolha = tirarNumero(texto, 5);
    const std::string base64 = escolha == 0 ? std::string(texto) : comum::base64(texto);
    exigir(pronta == ZEL_OK && (escolha == 0 || fnParseBase64ToUtf8(base64) == texto));
    pasta.esvaziar();
    if (escolha > 1) {
        PdfPagina pagina(kMargensDanfe);
        fnEscreverTextoDanfePDF(pagina, texto, escolha == 2 ? 0 : 42 + 6 * (escolha - 3));
        exigir(pagina.salvar(pasta / "cupom.pdf") == ZEL_OK);
        return;
    }
    DadosImpressao impressao;
    TotalImposto total;
    ST_PersitenceXML_ZEL emCurso;
    for (const int codigo : {fnGerarPDF("DocXML", base64), fnGerarPDF("DocXMLBase64", texto),
                             gerarPdfDoXml(emCurso, impressao, total, base64)})
        exigir(codigo == ZEL_OK || codigo == ZEL_RECUSADO);
    for (const auto &entrada : std::filesystem::directory_iterator("."))
        if (const std::string nome = entrada.path().filename(); !nome.starts_with("ZEL_Framework."))
            exigir(nome.starts_with("NFe") && ehChave(nome.substr(3, 44)) && nome[47] == '_');
}
