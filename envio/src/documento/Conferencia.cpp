// SPDX-License-Identifier: MIT
#include "documento/Conferencia.h"

#include "assinatura/Assinatura.h"
#include "base/Texto.h"
#include "documento/ConferenciaPartes.h"
#include "qrcode/QrCode.h"
#include "traducao/IbsCbs.h"

namespace zel::envio {

namespace {

constexpr std::size_t kMaisDocumentos = 50; // NFe of an enviNFe
constexpr std::size_t kMaisIrmaos = 1200;   // elements beside each other, det included

std::vector<No> documentosDe(const Documento &documento) {
    const No raiz = documento.raiz();
    if (raiz.nome() == "NFe") return {raiz};
    auto todos = raiz.filhos("NFe");
    if (todos.empty() && raiz.procurar("NFe")) todos.push_back(raiz.procurar("NFe"));
    return todos;
}

// A refusal counts what stands beside its element: a hostile document must not make that long.
bool temDemais(const No &infNFe) {
    for (No no = infNFe; no; no = no.pai())
        if (no.filhos().size() > kMaisIrmaos) return true;
    return infNFe.filhos("det").size() > kMaisItens;
}

bool servePara(const No &nfe, Recusas &recusas) {
    const auto partes = nfe.filhos("infNFe");
    if (partes.size() != 1)
        return recusas.juntar(nfe.caminho(), "", "não tem um infNFe, ou tem mais de um");
    const No &infNFe = partes.front();
    if (temDemais(infNFe))
        return recusas.juntar(infNFe.caminho(), "",
                              "tem mais de " + std::to_string(kMaisItens) +
                                  " itens, ou elementos demais");
    if (nfe.espaco() != kEspacoNfe || infNFe.espaco() != kEspacoNfe)
        return recusas.juntar(nfe.caminho(), nfe.espaco(),
                              "não é do espaço de nomes " + std::string(kEspacoNfe));
    if (infNFe.atributo("versao") != "4.00")
        return recusas.juntar(infNFe.caminho() + "/@versao", infNFe.atributo("versao"),
                              "o leiaute em vigor é o 4.00: traduza e assine antes");
    return infNFe.texto("ide/mod") == "65" ||
           recusas.juntar(lugarDe(infNFe, "ide/mod"), infNFe.texto("ide/mod"),
                          "só o modelo 65, NFC-e, é conferido");
}

// The certificate signs for the issuer: the first 8 digits of the CNPJ.
bool conferirTitular(const No &pai, std::string_view autor, const std::string &pem,
                     Recusas &recusas) {
    constexpr std::size_t kRaiz = 8;
    const std::string titular = cnpjDePem(pem);
    if (autor.empty() || titular.substr(0, kRaiz) == autor.substr(0, kRaiz)) return true;
    return recusas.juntar(lugarDe(pai, "Signature"), titular,
                          "o certificado não é do emitente, " + std::string(autor) +
                              " (rejeição 213)");
}

// The content repeats the key: what is wrong with that is not said again.
void conferirSuplemento(const No &nfe, bool chaveCerta, const Configuracao &config, Olhado &olhado,
                        Recusas &recusas) {
    const std::string qrCode = nfe.texto("infNFeSupl/qrCode");
    if (qrCode.empty()) {
        olhado.emplace_back("QR code: falta");
        recusas.juntar(lugarDe(nfe, "infNFeSupl/qrCode"), "", "falta: a NFC-e leva o QR code");
        return;
    }
    if (!chaveCerta) {
        olhado.emplace_back("QR code: não foi olhado, porque a chave não confere");
        return;
    }
    std::string ressalva;
    const bool certo = conferirQrCode(nfe, config, recusas, &ressalva);
    anotar(olhado, "QR code", certo, ressalva);
}

// The authority's protocol beside the document, if any, authorizes this document as it is signed:
// one that denies it has a number, too.
void conferirProtocolo(const No &nfe, Olhado &olhado, Recusas &recusas) {
    const No infProt = nfe.pai().filho("protNFe/infProt");
    if (!infProt) return;
    Recusas novas;
    if ("NFe" + infProt.texto("chNFe") != nfe.filho("infNFe").atributo("Id"))
        novas.juntar(lugarDe(infProt, "chNFe"), infProt.texto("chNFe"),
                     "o protocolo é de outro documento");
    const std::string tpAmb = nfe.texto("infNFe/ide/tpAmb"), cStat = infProt.texto("cStat");
    if (infProt.texto("tpAmb") != tpAmb)
        novas.juntar(lugarDe(infProt, "tpAmb"), infProt.texto("tpAmb"),
                     "o protocolo é do outro ambiente: o documento tem tpAmb " + tpAmb);
    if (cStat != "100" && cStat != "150")
        novas.juntar(lugarDe(infProt, "cStat"), cStat,
                     "a autoridade não autorizou o documento: " + infProt.texto("xMotivo"));
    const std::string digVal = infProt.texto("digVal");
    if (!digVal.empty() && digVal != nfe.texto("Signature/SignedInfo/Reference/DigestValue"))
        novas.juntar(lugarDe(infProt, "digVal"), digVal,
                     "a autoridade recebeu outro conteúdo: o digest não é o da assinatura");
    anotar(olhado, "protocolo", novas.nenhuma(),
           cStat + ' ' + infProt.texto("xMotivo") +
               (digVal.empty() ? "; sem digVal, se o conteúdo é este não foi olhado" : ""));
    recusas.juntar(novas);
}

// What the authority would compute of infNFe itself. Whether the key is right.
bool conferirConteudo(const No &infNFe, const Configuracao &config, Olhado &olhado,
                      Recusas &recusas) {
    const auto itens = infNFe.filhos("det");
    Valores valores(recusas);
    const bool chaveCerta = conferirChave(infNFe, recusas);
    anotar(olhado, "chave", chaveCerta);
    olhar(olhado, "CNPJ, CPF, GTIN, municípios", recusas,
          [&] { conferirNumeros(infNFe, itens, recusas); });
    olhar(olhado, "somas e pagamentos", recusas,
          [&] { conferirPagamentos(infNFe, conferirSomas(infNFe, itens, valores), valores); });
    const std::size_t antes = recusas.lista().size();
    const bool exigido =
        exigeIbsCbs(config, infNFe.texto("emit/CRT"), infNFe.texto("ide/tpAmb"),
                    infNFe.texto("ide/dhEmi").substr(0, std::string_view("AAAA-MM-DD").size()));
    if (conferirIbsCbs(infNFe, itens, exigido, valores, recusas))
        anotar(olhado, "IBS e CBS", recusas.lista().size() == antes);
    else
        olhado.emplace_back("IBS e CBS: o documento não os traz");
    return chaveCerta;
}

void conferirUm(const Documento &documento, const No &nfe, const Configuracao &config,
                Olhado &olhado, Recusas &recusas) {
    conferirAssinatura(documento, nfe,
                       {nfe.texto("infNFe/emit/CNPJ"), nfe.texto("infNFe/ide/dhEmi")}, config,
                       olhado, recusas);
    const bool chaveCerta = conferirConteudo(nfe.filho("infNFe"), config, olhado, recusas);
    conferirSuplemento(nfe, chaveCerta, config, olhado, recusas);
    conferirProtocolo(nfe, olhado, recusas);
}

} // namespace

void anotar(Olhado &olhado, std::string_view parte, bool certo, std::string_view detalhe) {
    std::string linha(parte);
    linha += certo ? ": confere" : ": não confere";
    if (!detalhe.empty()) linha += "; " + std::string(detalhe);
    olhado.push_back(std::move(linha));
}

bool conferirAssinatura(const Documento &documento, const No &pai, const Autor &autor,
                        const Configuracao &config, Olhado &olhado, Recusas &recusas) {
    const std::string lugar = lugarDe(pai, "Signature");
    if (!pai.filho("Signature")) {
        olhado.emplace_back("assinatura: falta");
        return recusas.juntar(lugar, "", "o documento não está assinado");
    }
    std::string pem;
    bool certo = verificarAssinatura(documento, pai, pem, recusas);
    if (certo) {
        certo = conferirTitular(pai, autor.cnpj, pem, recusas);
        // A moment that is none is refused where it stands.
        const auto emitido = segundosDoMomento(autor.momento).value_or(0);
        certo = conferirSignatario(pem, config.certificado, emitido, lugar, recusas) && certo;
    }
    const std::string titular = cnpjDePem(pem);
    anotar(olhado, "assinatura", certo, titular.empty() ? "" : "certificado de " + titular);
    if (config.certificado.cadeia.empty())
        olhado.emplace_back("emissor do certificado: não foi olhado; configure cadeia em "
                            "[certificado] de zel-envio.toml");
    return certo;
}

void julgarEsquema(const Documento &documento, bool assinado, Esquemas *esquemas, Olhado &olhado,
                   Recusas &recusas) {
    if (esquemas == nullptr)
        olhado.emplace_back("esquema: não foi julgado; configure esquemas em zel-envio.toml");
    else
        olhar(olhado, "esquema", recusas, [&] { esquemas->julgar(documento, !assinado, recusas); });
}

bool conferirParaAssinar(const Documento &nfe, const Configuracao &config, Recusas &recusas) {
    if (nfe.raiz().nome() != "NFe") return conferirPedidoParaAssinar(nfe, recusas);
    Recusas novas;
    Olhado olhado;
    if (servePara(nfe.raiz(), novas))
        conferirConteudo(nfe.raiz().filho("infNFe"), config, olhado, novas);
    recusas.juntar(novas);
    return novas.nenhuma();
}

bool verificarNfce(const Documento &documento, const Configuracao &config, Esquemas *esquemas,
                   Olhado &olhado, Recusas &recusas) {
    const auto documentos = documentosDe(documento);
    if (documentos.empty() || documentos.size() > kMaisDocumentos)
        return recusas.juntar(documento.raiz().nome(), "",
                              documentos.empty() ? "não há NFe no documento"
                                                 : "tem mais de 50 documentos");
    Recusas novas;
    bool assinados = true;
    for (const No &nfe : documentos) {
        if (!servePara(nfe, novas)) continue;
        if (documentos.size() > 1) olhado.push_back(nfe.filho("infNFe").atributo("Id") + ':');
        conferirUm(documento, nfe, config, olhado, novas);
        assinados = assinados && nfe.filho("Signature");
    }
    julgarEsquema(documento, assinados, esquemas, olhado, novas);
    recusas.juntar(novas);
    return novas.nenhuma();
}

} // namespace zel::envio
