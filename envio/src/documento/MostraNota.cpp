// SPDX-License-Identifier: MIT
#include "documento/MostraNota.h"

#include "documento/MostraImposto.h"

#include <string>
#include <vector>

namespace zel::envio {

namespace {

constexpr std::size_t kRecuo = 4;

bool zero(std::string_view texto) {
    return texto.find_first_not_of("0.") == texto.npos;
}

// Of the alternatives "vBC|qBCProd" the first that is there.
std::string primeiroDe(const No &no, std::string_view caminhos) {
    while (!caminhos.empty()) {
        const std::size_t barra = caminhos.find('|');
        if (std::string texto = no.texto(caminhos.substr(0, barra)); !texto.empty()) return texto;
        caminhos = barra == caminhos.npos ? std::string_view() : caminhos.substr(barra + 1);
    }
    return {};
}

No grupoDe(const No &det, std::string_view grupo) {
    if (!grupo.ends_with("/*")) return det.filho(grupo);
    const auto filhos = det.filho(grupo.substr(0, grupo.size() - 2)).filhos();
    return filhos.empty() ? No() : filhos.front();
}

// Parts that are there, with commas between.
std::string juntos(std::initializer_list<std::string> partes) {
    std::string texto;
    for (const std::string &parte : partes)
        if (!parte.empty()) texto += (texto.empty() ? "" : ", ") + parte;
    return texto;
}

std::string comPrefixo(const char *prefixo, const std::string &texto) {
    return texto.empty() ? texto : prefixo + texto;
}

// A label that begins with "-" names what is taken off.
void valorComSinal(Pagina &pagina, std::string_view nome, std::string_view texto,
                   std::size_t recuo) {
    if (zero(texto)) return;
    const bool menos = nome.starts_with('-');
    pagina.valor(nome.substr(menos ? 1 : 0), (menos ? "-" : "") + numeroLido(texto, 2), recuo);
}

void endereco(const No &lugar, Pagina &pagina) {
    const std::string cidade = lugar.texto("xMun"), UF = lugar.texto("UF");
    if (const std::string tudo = juntos(
            {lugar.texto("xLgr"), lugar.texto("nro"), lugar.texto("xCpl"), lugar.texto("xBairro"),
             cidade + (UF.empty() ? "" : " - " + UF), comPrefixo("CEP ", lugar.texto("CEP")),
             comPrefixo("fone ", lugar.texto("fone"))});
        !tudo.empty())
        pagina.linha(tudo);
}

std::string regime(const std::string &CRT) {
    return CRT == "1"   ? "Simples Nacional"
           : CRT == "2" ? "Simples Nacional, excesso de sublimite"
           : CRT == "3" ? "Regime normal"
           : CRT == "4" ? "MEI"
                        : CRT;
}

void emitente(const No &emit, Pagina &pagina) {
    pagina.linha(emit.texto("xNome"));
    if (const std::string fantasia = emit.texto("xFant"); !fantasia.empty()) pagina.linha(fantasia);
    pagina.linha(
        juntos({cnpjLido(primeiroDe(emit, "CNPJ|CPF")), comPrefixo("IE ", emit.texto("IE")),
                comPrefixo("IM ", emit.texto("IM")), regime(emit.texto("CRT"))}));
    endereco(emit.filho("enderEmit"), pagina);
}

void emissao(const No &infNFe, Pagina &pagina) {
    const No ide = infNFe.filho("ide");
    pagina.linha("NFC-e série " + ide.texto("serie") + ", número " + ide.texto("nNF") +
                 ", emitida em " + momentoLido(ide.texto("dhEmi")));
    pagina.linha(juntos({ide.texto("natOp"), "ambiente de " + ambienteLido(ide.texto("tpAmb")),
                         "leiaute " + infNFe.atributo("versao")}));
    if (ide.texto("tpEmis") != "1")
        pagina.linha(ide.texto("tpEmis") == "9" ? "Emitida em contingência off-line"
                                                : "Tipo de emissão " + ide.texto("tpEmis"));
    if (const std::string desde = ide.texto("dhCont"); !desde.empty())
        pagina.linha("Contingência desde " + momentoLido(desde) + ": " + ide.texto("xJust"));
}

void consumidor(const No &infNFe, Pagina &pagina) {
    const No dest = infNFe.filho("dest");
    if (!dest) return pagina.linha("Consumidor não identificado");
    const std::string estrangeiro = dest.texto("idEstrangeiro");
    pagina.linha(
        "Consumidor: " +
        juntos({cnpjLido(primeiroDe(dest, "CNPJ|CPF")), comPrefixo("estrangeiro ", estrangeiro),
                dest.texto("xNome"), comPrefixo("IE ", dest.texto("IE")), dest.texto("email")}));
    endereco(dest.filho("enderDest"), pagina);
    for (const char *lugar : {"retirada", "entrega"})
        if (const No outro = infNFe.filho(lugar)) {
            pagina.linha(lugar == std::string_view("entrega") ? "Entrega:" : "Retirada:");
            endereco(outro, pagina);
        }
}

// "ICMS 00: 18,00% de 20,00", and the amount at the edge.
void imposto(const No &det, const ImpostoLido &linha, Pagina &pagina) {
    const No grupo = grupoDe(det, linha.grupo);
    if (!grupo) return;
    const std::string codigo = primeiroDe(grupo, linha.codigo);
    const std::string valor = primeiroDe(grupo, linha.valor);
    if (codigo.empty() && zero(valor)) return;
    std::string texto(linha.nome);
    if (!codigo.empty()) texto += ' ' + codigo;
    if (linha.codigo == "CST" && grupo.nome() == "IBSCBS")
        texto += ", classe " + grupo.texto("cClassTrib");
    const std::string taxa = primeiroDe(grupo, linha.taxa), base = primeiroDe(grupo, linha.base);
    const std::string efetiva = primeiroDe(grupo, linha.efetiva);
    const bool porUnidade = grupo.filho("qBCProd") || linha.base.starts_with('q');
    if (!taxa.empty()) texto += ": " + numeroLido(taxa, 2) + (porUnidade ? "" : "%");
    if (!efetiva.empty()) texto += " reduzida a " + numeroLido(efetiva, 2) + '%';
    if (!base.empty()) texto += (taxa.empty() ? ": base " : " de ") + numeroLido(base, 2);
    pagina.valor(texto, zero(valor) ? "" : numeroLido(valor, 2), kRecuo);
}

void item(const No &det, Pagina &pagina) {
    const No prod = det.filho("prod");
    pagina.linha(det.atributo("nItem") + ". " + prod.texto("cProd") + ' ' + prod.texto("xProd"));
    const std::string gtin = prod.texto("cEAN");
    pagina.linha(
        juntos({comPrefixo("NCM ", prod.texto("NCM")), comPrefixo("CEST ", prod.texto("CEST")),
                comPrefixo("CFOP ", prod.texto("CFOP")),
                gtin == "SEM GTIN" || gtin == " " ? "" : comPrefixo("GTIN ", gtin)}),
        kRecuo);
    pagina.valor(numeroLido(prod.texto("qCom"), 0) + ' ' + prod.texto("uCom") + " x " +
                     numeroLido(prod.texto("vUnCom"), 2),
                 numeroLido(prod.texto("vProd"), 2), kRecuo);
    for (const auto &[caminho, nome] : kAjustes)
        valorComSinal(pagina, nome, prod.texto(caminho), kRecuo);
    for (const ImpostoLido &linha : kImpostos)
        imposto(det, linha, pagina);
    pagina.campo("Observação", det.texto("infAdProd"), kRecuo);
}

void totais(const No &total, Pagina &pagina) {
    for (const auto &[caminho, nome] : kTotais)
        valorComSinal(pagina, nome, total.texto(caminho), 0);
    if (const std::string vNF = total.texto("ICMSTot/vNF"); !vNF.empty())
        pagina.valor("Total", numeroLido(vNF, 2));
    for (const auto &[caminho, base, nome] : kTributosTotais) {
        const std::string valor = total.texto(caminho);
        if (zero(valor)) continue;
        const std::string baseLida = base.empty() ? "" : total.texto(base);
        pagina.valor(std::string(nome) +
                         (zero(baseLida) ? "" : ", base " + numeroLido(baseLida, 2)),
                     numeroLido(valor, 2), kRecuo);
    }
}

std::string forma(const No &pagamento) {
    const std::string tPag = pagamento.texto("tPag");
    std::string nome = tPag;
    for (const auto &[codigo, chamada] : kFormas)
        if (codigo == tPag) nome = chamada;
    const No card = pagamento.filho("card");
    return juntos({nome, pagamento.texto("xPag"), cnpjLido(card.texto("CNPJ")),
                   comPrefixo("bandeira ", card.texto("tBand")),
                   comPrefixo("autorização ", card.texto("cAut"))});
}

// Layout 3.10 has one `pag` a payment, 4.00 one with all of them.
void pagamentos(const No &infNFe, Pagina &pagina) {
    for (const No &pag : infNFe.filhos("pag")) {
        auto todos = pag.filhos("detPag");
        if (pag.filho("tPag")) todos.push_back(pag);
        for (const No &pagamento : todos)
            pagina.valor(forma(pagamento), numeroLido(pagamento.texto("vPag"), 2));
        valorComSinal(pagina, "-Troco", pag.texto("vTroco"), 0);
    }
}

void rodape(const No &nfe, const No &infNFe, Pagina &pagina) {
    const No infAdic = infNFe.filho("infAdic");
    pagina.campo("Ao fisco", infAdic.texto("infAdFisco"));
    pagina.campo("Informações", infAdic.texto("infCpl"));
    const std::string id = infNFe.atributo("Id");
    pagina.campo("Chave", chaveLida(id.starts_with("NFe") ? id.substr(3) : id));
    if (infNFe.atributo("versao") == "4.00" && !nfe.filho("Signature"))
        pagina.linha("Não está assinada");
    if (const No supl = nfe.filho("infNFeSupl")) {
        pagina.campo("Consulta pela chave", supl.texto("urlChave"));
        pagina.linha("QR code:");
        pagina.inteiro(supl.texto("qrCode"));
    }
}

} // namespace

std::string ambienteLido(std::string_view tpAmb) {
    if (tpAmb == "1") return "produção";
    return tpAmb.empty() ? "?" : "homologação, sem valor fiscal";
}

void mostrarNota(const No &nfe, Pagina &pagina) {
    const No infNFe = nfe.filho("infNFe");
    pagina.secao();
    emitente(infNFe.filho("emit"), pagina);
    pagina.regua();
    emissao(infNFe, pagina);
    consumidor(infNFe, pagina);
    pagina.regua();
    for (const No &det : infNFe.filhos("det"))
        item(det, pagina);
    pagina.regua();
    totais(infNFe.filho("total"), pagina);
    pagina.regua();
    pagamentos(infNFe, pagina);
    pagina.regua();
    rodape(nfe, infNFe, pagina);
}

} // namespace zel::envio
