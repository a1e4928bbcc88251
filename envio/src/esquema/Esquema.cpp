// SPDX-License-Identifier: MIT
#include "esquema/Esquema.h"

#include "comum/Arquivo.h"
#include "esquema/Violacao.h"

#include <libxml/valid.h>
#include <libxml/xmlschemas.h>
#include <libxml/xmlschemastypes.h>
#include <map>
#include <mutex>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

namespace zel::envio {

namespace {

constexpr std::size_t kMaiorEsquema = 4U << 20;
constexpr std::size_t kMaisViolacoes = 1000;

// The published schema of each message, by its root element; an event's by its kind, too. The first
// of several kinds stands for an answer that names none.
struct Mensagem {
    std::string_view raiz, evento, arquivo;
};
constexpr Mensagem kMensagens[] = {
    {"NFe", "", "nfe_v4.00.xsd"},
    {"enviNFe", "", "enviNFe_v4.00.xsd"},
    {"nfeProc", "", "procNFe_v4.00.xsd"},
    {"retEnviNFe", "", "retEnviNFe_v4.00.xsd"},
    {"consReciNFe", "", "consReciNFe_v4.00.xsd"},
    {"retConsReciNFe", "", "retConsReciNFe_v4.00.xsd"},
    {"consSitNFe", "", "consSitNFe_v4.00.xsd"},
    {"retConsSitNFe", "", "retConsSitNFe_v4.00.xsd"},
    {"consStatServ", "", "consStatServ_v4.00.xsd"},
    {"retConsStatServ", "", "retConsStatServ_v4.00.xsd"},
    {"inutNFe", "", "inutNFe_v4.00.xsd"},
    {"retInutNFe", "", "retInutNFe_v4.00.xsd"},
    {"ProcInutNFe", "", "procInutNFe_v4.00.xsd"},
    {"evento", "110111", "eventoCancNFe_v1.00.xsd"},
    {"evento", "110112", "eventoCancSubst_v1.00.xsd"},
    {"envEvento", "110111", "envEventoCancNFe_v1.00.xsd"},
    {"envEvento", "110112", "envEventoCancSubst_v1.00.xsd"},
    {"retEnvEvento", "110111", "retEnvEventoCancNFe_v1.00.xsd"},
    {"retEnvEvento", "110112", "retEnvEventoCancSubst_v1.00.xsd"},
    {"procEventoNFe", "110111", "procEventoCancNFe_v1.00.xsd"},
    {"procEventoNFe", "110112", "procEventoCancSubst_v1.00.xsd"},
    // What a consultation's answer leaves open in the events that it repeats.
    {"detEvento", "110111", "e110111_v1.00.xsd"},
    {"detEvento", "110112", "e110112_v1.00.xsd"},
};

const Mensagem *mensagemDe(std::string_view raiz, std::string_view evento) {
    for (const Mensagem &mensagem : kMensagens)
        if (mensagem.raiz == raiz &&
            (mensagem.evento.empty() || evento.empty() || mensagem.evento == evento))
            return &mensagem;
    return nullptr;
}

struct LiberarEsquema {
    void operator()(xmlSchema *esquema) const { xmlSchemaFree(esquema); }
    void operator()(xmlSchemaParserCtxt *leitor) const { xmlSchemaFreeParserCtxt(leitor); }
    void operator()(xmlSchemaValidCtxt *juiz) const { xmlSchemaFreeValidCtxt(juiz); }
};
using DonoEsquema = std::unique_ptr<xmlSchema, LiberarEsquema>;

// libxml2 makes its table of types at the first use, whichever thread comes first.
void inicializar() {
    static std::once_flag uma;
    std::call_once(uma, [] {
        prepararXml();
        xmlSchemaInitTypes();
    });
}

struct Julgamento {
    bool semAssinatura;
    std::string ultimo{}; // what the complaint before was about
    std::size_t quantas = 0;
    Recusas recusas{};
};

void anotar(Julgamento &julgamento, const xmlError &erro) {
    if (julgamento.semAssinatura && faltaAssinatura(erro)) return;
    // Counted on, but no longer looked at.
    if (julgamento.quantas >= kMaisViolacoes) {
        ++julgamento.quantas;
        return;
    }
    const Recusa recusa = violacaoDe(erro);
    if (ehDoValor(erro) && recusa.campo == julgamento.ultimo) return;
    julgamento.ultimo = recusa.campo;
    ++julgamento.quantas;
    julgamento.recusas.juntar(recusa.campo, recusa.valor, recusa.motivo);
}

// The judge has the document know the Ids that the schema calls so; whoever signs does that
// himself.
void esquecerIds(const No &no) {
    for (xmlAttr *a = no.cru()->properties; a != nullptr; a = a->next)
        if (a->atype == XML_ATTRIBUTE_ID && a->ns == nullptr) xmlRemoveID(no.cru()->doc, a);
    for (xmlNode *filho = no.cru()->children; filho != nullptr; filho = filho->next)
        if (filho->type == XML_ELEMENT_NODE) esquecerIds(No(filho));
}

} // namespace

struct Esquemas::Dentro {
    std::string pasta;
    std::set<std::string, std::less<>> conferidos;
    std::map<std::string, DonoEsquema, std::less<>> lidos;

    bool conferir(const std::string &arquivo, Recusas &recusas);
    xmlSchema *ler(const std::string &arquivo, Recusas &recusas);
    bool julgar(const Mensagem &mensagem, const No &no, bool semAssinatura, Recusas &recusas);
};

// A file and all that it includes are of this folder and can be read without anything from outside:
// libxml2 would fetch what an address names.
bool Esquemas::Dentro::conferir(const std::string &arquivo, Recusas &recusas) {
    if (conferidos.contains(arquivo)) return true;
    const auto bytes = comum::lerArquivo(pasta + arquivo, kMaiorEsquema);
    if (!bytes)
        return recusas.juntar("esquemas", pasta + arquivo,
                              "este arquivo falta na pasta dos esquemas, ou não pode ser lido");
    std::string motivo;
    const auto documento = Documento::ler(*bytes, motivo);
    if (!documento) return recusas.juntar("esquemas", pasta + arquivo, motivo);
    conferidos.insert(arquivo);
    bool todos = true;
    for (const No &parte : documento->raiz().filhos()) {
        const std::string outro = parte.atributo("schemaLocation");
        if (outro.empty()) continue;
        if (outro.find_first_of("/:\\%") != outro.npos)
            todos = recusas.juntar("esquemas", outro, arquivo + " inclui o que não é desta pasta");
        else
            todos = conferir(outro, recusas) && todos;
    }
    if (!todos) conferidos.erase(arquivo);
    return todos;
}

xmlSchema *Esquemas::Dentro::ler(const std::string &arquivo, Recusas &recusas) {
    const auto lido = lidos.find(arquivo);
    if (lido != lidos.end()) return lido->second.get();
    if (!conferir(arquivo, recusas)) return nullptr;
    const std::unique_ptr<xmlSchemaParserCtxt, LiberarEsquema> leitor(
        xmlSchemaNewParserCtxt((pasta + arquivo).c_str()));
    std::string motivo;
    xmlSchemaSetParserStructuredErrors(
        leitor.get(),
        [](void *primeiro, auto *erro) {
            auto &texto = *static_cast<std::string *>(primeiro);
            if (texto.empty() && erro->message != nullptr) texto = erro->message;
        },
        &motivo);
    DonoEsquema esquema(xmlSchemaParse(leitor.get()));
    if (!esquema) {
        recusas.juntar("esquemas", pasta + arquivo,
                       "não é um esquema XML: " + motivo.substr(0, motivo.find('\n')));
        return nullptr;
    }
    return (lidos[arquivo] = std::move(esquema)).get();
}

bool Esquemas::Dentro::julgar(const Mensagem &mensagem, const No &no, bool semAssinatura,
                              Recusas &recusas) {
    xmlSchema *esquema = ler(std::string(mensagem.arquivo), recusas);
    if (esquema == nullptr) return false;
    Julgamento julgamento{semAssinatura};
    const std::unique_ptr<xmlSchemaValidCtxt, LiberarEsquema> juiz(xmlSchemaNewValidCtxt(esquema));
    xmlSchemaSetValidStructuredErrors(
        juiz.get(), [](void *este, auto *erro) { anotar(*static_cast<Julgamento *>(este), *erro); },
        &julgamento);
    const bool raiz = no.cru() == xmlDocGetRootElement(no.cru()->doc);
    const int resultado = raiz ? xmlSchemaValidateDoc(juiz.get(), no.cru()->doc)
                               : xmlSchemaValidateOneElement(juiz.get(), no.cru());
    esquecerIds(no);
    if (julgamento.quantas > kMaisViolacoes)
        julgamento.recusas.juntar(no.caminho(), "",
                                  "há mais " + std::to_string(julgamento.quantas - kMaisViolacoes) +
                                      " violações");
    if (resultado < 0) julgamento.recusas.juntar(no.caminho(), "", "não pôde ser julgado");
    recusas.juntar(julgamento.recusas);
    return julgamento.recusas.nenhuma();
}

Esquemas::Esquemas(std::unique_ptr<Dentro> dentro) : dentro_(std::move(dentro)) {}
Esquemas::~Esquemas() = default;

std::shared_ptr<Esquemas> Esquemas::abrir(const std::string &pasta, Recusas &recusas) {
    inicializar();
    auto dentro = std::make_unique<Dentro>();
    dentro->pasta = pasta.ends_with('/') ? pasta : pasta + '/';
    bool todos = true;
    for (const Mensagem &mensagem : kMensagens)
        if (const std::string arquivo = dentro->pasta + std::string(mensagem.arquivo);
            !comum::ehArquivo(arquivo))
            todos = recusas.juntar("esquemas", arquivo, "este arquivo falta na pasta dos esquemas");
    if (!todos) return nullptr;
    return std::shared_ptr<Esquemas>(new Esquemas(std::move(dentro)));
}

bool Esquemas::julgar(const Documento &documento, bool semAssinatura, Recusas &recusas) {
    const No raiz = documento.raiz();
    const std::string evento = raiz.procurar("tpEvento").texto();
    const Mensagem *mensagem = mensagemDe(raiz.nome(), evento);
    if (mensagem == nullptr)
        return recusas.juntar(raiz.nome(), evento, "não há esquema para esta mensagem");
    bool vale = dentro_->julgar(*mensagem, raiz, semAssinatura, recusas);
    if (raiz.nome() != "retConsSitNFe") return vale;
    for (const No &repetido : raiz.filhos("procEventoNFe")) {
        const No info = repetido.filho("evento/infEvento");
        const Mensagem *detalhe = mensagemDe("detEvento", info.texto("tpEvento"));
        if (detalhe != nullptr && info.filho("detEvento"))
            vale =
                dentro_->julgar(*detalhe, info.filho("detEvento"), semAssinatura, recusas) && vale;
    }
    return vale;
}

} // namespace zel::envio
