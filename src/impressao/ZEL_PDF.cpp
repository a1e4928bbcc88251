// SPDX-License-Identifier: MIT
#include "impressao/ZEL_PDF.h"

#include "comum/ArquivosDoCaixa.h"
#include "comum/ChaveAcesso.h"
#include "config/Registro.h"
#include "disco/Arquivo.h"
#include "disco/Diretorio.h"
#include "emissao/Envio.h"
#include "impressao/CupomFiscal.h"
#include "impressao/GerenciadorImpressao.h"
#include "impressao/LeituraXml.h"
#include "impressao/PdfDanfe.h"
#include "impressao/PdfPagina.h"
#include "recusa/Recusa.h"
#include "secao/Parser.h"
#include "secao/Tag.h"
#include "texto/Codificacao.h"
#include "texto/Texto.h"
#include "zel_felbor/codigos.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string>
#include <utility>

namespace zel {

namespace {

constexpr std::string_view kDeclaracao = "<?xml version=\"1.0\"?>";
constexpr std::string_view kArquivoTemporario = arquivos::kDanfePassageiro;
constexpr std::string_view kPrefixoId = "NFe";
constexpr int kColunasDanfe = 48;

// Of a listing: marks, names, contents.
constexpr EstiloPdf kMarca{FontePdf::kHelvetica, CorPdf::kAzul, kTamanhoNormal};
constexpr EstiloPdf kNome{FontePdf::kHelvetica, CorPdf::kVermelho, kTamanhoNormal};
constexpr EstiloPdf kConteudo{FontePdf::kHelveticaNegrito, CorPdf::kPreto, kTamanhoNormal};

// The Id names a file: anything but "NFe" and the access key could lead it anywhere.
bool ehId(std::string_view id) {
    return id.starts_with(kPrefixoId) && ehChave(id.substr(kPrefixoId.size()));
}

const ST_tagZEL *procurar(const ST_tagZEL &no, std::string_view nome) {
    if (no.nome == nome) return &no;
    if (!no.subTags) return nullptr;
    for (const auto &filho : *no.subTags)
        if (const ST_tagZEL *achado = procurar(filho, nome)) return achado;
    return nullptr;
}

// The Id of a document, which may stand alone or in its envelope; none when it is no valid one.
std::optional<std::string> idDoDocumento(const ST_tagZEL &raiz) {
    const ST_tagZEL *infNFe = procurar(raiz, "infNFe");
    if (infNFe == nullptr) return {};
    for (const auto &propriedade : infNFe->propriedades)
        if (propriedade.nome == "Id" && ehId(propriedade.valor)) return propriedade.valor;
    return {};
}

struct Documento {
    ST_tagZEL raiz;
    std::string id;
};

int lerDocumento(std::string_view base64, Documento &documento) {
    const auto xml = fnParseBase64ToUtf8(base64);
    if (!xml) return recusar(Motivo::kPdfSemBase64, {.campo = "documentoBase64", .dado = base64});
    std::size_t posicao = 0;
    if (const int lido = fnProximaTag_ZEL(documento.raiz, emLatin1(*xml), posicao); lido != ZEL_OK)
        return lido;
    auto id = idDoDocumento(documento.raiz);
    if (!id) return recusar(Motivo::kPdfSemChave);
    documento.id = std::move(*id);
    return ZEL_OK;
}

int gerarListagem(std::string_view base64) {
    Documento documento;
    if (const int lido = lerDocumento(base64, documento); lido != ZEL_OK) return lido;
    PdfPagina pagina(kMargensListagem);
    fnEscreverTextoPDF(pagina, kDeclaracao);
    fnEscreverTextoPDF(pagina, std::string("\n").append(documento.raiz.toPDF()));
    return pagina.salvar(fnConfigurarPath(documento.id + "_XML.pdf"));
}

// The document as a file, for the reader takes files, in the plain form of its tree: the reader
// looks for attributes in double quotes. Gone when this is.
class CopiaTemporaria {
public:
    explicit CopiaTemporaria(std::string_view xml)
        : gravada_(fnCriarArquivoEnvio(kArquivoTemporario, xml)) {}
    ~CopiaTemporaria() { removerArquivo(caminho_); }
    CopiaTemporaria(const CopiaTemporaria &) = delete;
    CopiaTemporaria &operator=(const CopiaTemporaria &) = delete;

    int gravada() const { return gravada_; }
    const std::string &caminho() const { return caminho_; }

private:
    std::string caminho_ = fnConfigurarPath(kArquivoTemporario);
    int gravada_;
};

// The receipt text of an authorized document: its own protocol stands in it, so it is its return as
// well.
int textoDanfe(ST_PersitenceXML_ZEL &emCurso, const DadosImpressao &dados, TotalImposto &total,
               std::string_view xml, std::string &texto) {
    // The QR code is hashed with the taxpayer's token, which another program may have changed.
    if (const int codigo = fnXML_CarregarXML_ZEL(); codigo != ZEL_OK) return codigo;
    const CopiaTemporaria copia(xml);
    if (copia.gravada() != ZEL_OK) return copia.gravada();
    CupomFiscal cupom;
    if (!parseXMLCupomFiscal(total, copia.caminho(), copia.caminho(), cupom))
        return jaRecusado(Motivo::kImpressaoSemElemento);
    acertarMensagem(emCurso, cupom);
    const int codigo = layoutNFC(emCurso, dados, cupom, {}, kColunasDanfe, texto, false);
    if (codigo == ZEL_OK) total.limpar();
    return codigo;
}

} // namespace

void fnEscreverTextoPDF(PdfPagina &pagina, std::string_view xml) {
    bool dentro = false; // of a tag
    while (!xml.empty()) {
        const EstiloPdf *estilo = &kMarca;
        std::size_t tamanho = 1;
        if (xml.front() == '<') {
            tamanho = xml.starts_with("</") ? 2 : 1;
            dentro = true;
        } else if (dentro && xml.front() == '>') {
            dentro = false;
        } else {
            estilo = dentro ? &kNome : &kConteudo;
            tamanho = std::min(xml.find_first_of(dentro ? "<>" : "<"), xml.size());
        }
        pagina.escrever(xml.substr(0, tamanho), *estilo);
        xml.remove_prefix(tamanho);
    }
}

int fnGerarPDF(std::string_view origem, std::string_view conteudo) {
    if (origem == "DocXML") return gerarListagem(conteudo);
    if (origem != "DocXMLBase64") return recusar(Motivo::kPdfOrigem, {.dado = origem});
    const auto base64 = valorDoRetorno(conteudo, "DOCXMLBASE64");
    return base64 ? gerarListagem(*base64) : recusar(Motivo::kPdfSemDocumento);
}

int fnGerarPDFDanfe(std::string_view texto, int colunas, std::string_view arquivo) {
    if (arquivo.empty() || arquivo.find_first_of(std::string_view("/\0", 2)) != arquivo.npos)
        return recusar(Motivo::kPdfSemNome, {.dado = arquivo});
    PdfPagina pagina(kMargensDanfe);
    fnEscreverTextoDanfePDF(pagina, texto, colunas);
    return pagina.salvar(fnConfigurarPath(arquivo));
}

int gerarPdfDoXml(ST_PersitenceXML_ZEL &emCurso, const DadosImpressao &dados, TotalImposto &total,
                  std::string_view base64) {
    Documento documento;
    if (const int lido = lerDocumento(base64, documento); lido != ZEL_OK) return lido;
    std::string texto;
    if (const int lido = textoDanfe(emCurso, dados, total, documento.raiz.toString(), texto);
        lido != ZEL_OK)
        return lido;
    return fnGerarPDFDanfe(texto, kColunasDanfe, documento.id + "_DANFE.pdf");
}

} // namespace zel
