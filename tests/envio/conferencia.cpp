// SPDX-License-Identifier: MIT
// A good document is good, and each fault in it is found, and nothing but that fault.
#include "Documento400.h"
#include "Juiz.h"

#include "documento/Conferencia.h"

#include <gtest/gtest.h>

using namespace zel;
using namespace zel::envio;
using namespace zel::envio::ensaio;

namespace {

struct Olhada {
    bool vale;
    std::vector<std::string> linhas;
    Recusas recusas;

    std::string texto() const {
        std::string texto = recusas.texto();
        for (const auto &linha : linhas)
            texto += "\n- " + linha;
        return texto;
    }
    bool recusou(std::string_view fim, std::string_view motivo) const {
        for (const auto &recusa : recusas.lista())
            if (recusa.campo.ends_with(fim) && recusa.motivo.find(motivo) != std::string::npos)
                return true;
        return false;
    }
    bool disse(std::string_view inicio) const {
        for (const auto &linha : linhas)
            if (linha.starts_with(inicio)) return true;
        return false;
    }
};

Olhada olhar(const Documento &documento, Esquemas *esquemas = nullptr,
             const Configuracao &config = {}) {
    Olhada olhada;
    olhada.vale = verificarNfce(documento, config, esquemas, olhada.linhas, olhada.recusas);
    EXPECT_EQ(olhada.vale, olhada.recusas.nenhuma());
    return olhada;
}

// Exactly one refusal, of that field, with that in its reason.
void esperarUma(const Olhada &olhada, std::string_view campo, std::string_view motivo) {
    ASSERT_EQ(olhada.recusas.lista().size(), 1U) << campo << '\n' << olhada.texto();
    const Recusa &recusa = olhada.recusas.lista().front();
    EXPECT_EQ(recusa.campo, campo);
    EXPECT_TRUE(contem(recusa.motivo, motivo));
}

// At the end of a path whose elements are made where they are missing.
void umCentavoEm(No no, std::string_view caminho) {
    while (!caminho.empty()) {
        const std::string_view nome = caminho.substr(0, caminho.find('/'));
        caminho.remove_prefix(std::min(nome.size() + 1, caminho.size()));
        const No filho = no.filho(nome);
        no = filho ? filho : no.acrescentar(nome);
    }
    const auto havia = Decimal::ler(no.texto());
    no.definirTexto(textoDe(havia ? *havia->centavos() + 1 : 1));
}

Documento emProtocolo(const Documento &nfe, const std::string &chave, const std::string &digest,
                      const char *cStat = "100", const char *tpAmb = "2") {
    Documento proc = Documento::novo("nfeProc", kEspacoNfe);
    proc.raiz().definirAtributo("versao", "4.00");
    proc.raiz().acrescentarCopia(nfe.raiz());
    No prot = proc.raiz().acrescentar("protNFe");
    prot.definirAtributo("versao", "4.00");
    No info = prot.acrescentar("infProt");
    info.acrescentar("tpAmb", tpAmb);
    info.acrescentar("verAplic", "1");
    info.acrescentar("chNFe", chave);
    info.acrescentar("dhRecbto", "2026-09-21T10:00:05-03:00");
    info.acrescentar("nProt", "143260000000001");
    if (!digest.empty()) info.acrescentar("digVal", digest);
    info.acrescentar("cStat", cStat);
    info.acrescentar("xMotivo", "Autorizado o uso da NF-e");
    return proc;
}

} // namespace

TEST(Conferencia, documento_bom_nao_tem_recusa) {
    const struct {
        const char *que;
        std::vector<Troca> trocas;
    } kCasos[] = {
        {"como é", {}},
        {"um centavo de diferença entre produto e preço", {{">39.90<", ">39.94<"}}},
        {"o ICMS desonerado que se deduz diminui a nota",
         {{"</vFCP></ICMS00>",
           "</vFCP><vICMSDeson>2.00</vICMSDeson><indDeduzDeson>1</indDeduzDeson></ICMS00>"},
          {"<vICMSDeson>0.00<", "<vICMSDeson>2.00<"},
          {"<vNF>44.43<", "<vNF>42.43<"},
          {"<vTroco>5.57<", "<vTroco>7.57<"}}},
        {"o desonerado que não se deduz não a diminui",
         {{"</vFCP></ICMS00>",
           "</vFCP><vICMSDeson>2.00</vICMSDeson><indDeduzDeson>0</indDeduzDeson></ICMS00>"},
          {"<vICMSDeson>0.00<", "<vICMSDeson>2.00<"}}},
        {"o item que não compõe o total",
         {{"<indTot>1</indTot></prod><imposto><ICMS><ICMS10>",
           "<indTot>0</indTot></prod><imposto><ICMS><ICMS10>"},
          {"<vProd>33.97<", "<vProd>20.00<"},
          {"<vNF>44.43<", "<vNF>30.46<"},
          {"<vTroco>5.57<", "<vTroco>19.54<"}}},
        {"PISST e COFINSST que se somam",
         {{"</PISNT></PIS>", "</PISNT></PIS><PISST><vPIS>0.50</vPIS>"
                             "<indSomaPISST>1</indSomaPISST></PISST>"},
          {"</COFINSNT></COFINS>", "</COFINSNT></COFINS><COFINSST><vCOFINS>0.30</vCOFINS>"
                                   "<indSomaCOFINSST>1</indSomaCOFINSST></COFINSST>"},
          {"<vBC>11.60<", "<vBC>10.80<"},
          {"<vBCIBSCBS>34.16<", "<vBCIBSCBS>33.36<"},
          {"<vNF>44.43<", "<vNF>45.23<"},
          {"<vTroco>5.57<", "<vTroco>4.77<"}}},
        {"pagamento exato, sem troco",
         {{">20.00</vPag>", ">14.43</vPag>"}, {"<vTroco>5.57</vTroco>", ""}}},
    };
    for (const auto &[que, trocas] : kCasos) {
        const Olhada olhada = olhar(documento400(trocas));
        EXPECT_TRUE(olhada.vale) << que << '\n' << olhada.texto();
    }
    const Olhada olhada = olhar(documento400());
    for (const char *linha :
         {"assinatura: confere; certificado de 12345678000195",
          "emissor do certificado: não foi olhado", "chave: confere",
          "CNPJ, CPF, GTIN, municípios: confere", "QR code: confere", "somas e pagamentos: confere",
          "IBS e CBS: confere", "esquema: não foi julgado"})
        EXPECT_TRUE(olhada.disse(linha)) << linha << '\n' << olhada.texto();
}

TEST(Conferencia, documento_bom_vale_tambem_pelos_esquemas) {
    Esquemas *const esquemas = teste::Juiz::unico().esquemas();
    if (esquemas == nullptr) GTEST_SKIP() << teste::kSemEsquemas;
    const Olhada boa = olhar(documento400(), esquemas);
    EXPECT_TRUE(boa.vale && boa.disse("esquema: confere")) << boa.texto();
    // What is missing for being unsigned is said once.
    esperarUma(olhar(documento400({}, false), esquemas), "NFe/Signature", "não está assinado");
    esperarUma(olhar(documento400({{"<tpImp>4<", "<tpImp>7<"}}), esquemas), "NFe/infNFe/ide/tpImp",
               "");
}

TEST(Conferencia, cada_falta_e_dita_e_so_ela) {
    const auto kDepois = Quando::kDepoisDaChave;
    const struct {
        std::vector<Troca> trocas;
        const char *campo;
        const char *motivo;
    } kCasos[] = {
        // What document it is.
        {{{"<mod>65<", "<mod>55<"}}, "ide/mod", "modelo 65"},
        {{{"versao=\"4.00\"", "versao=\"3.10\""}}, "@versao", "traduza e assine"},
        // Key and code.
        {{{"<cNF>17102545<", "<cNF>33333333<"}}, "ide/cNF", "897"},
        {{{"<cNF>17102545<", "<cNF>12345678<"}}, "ide/cNF", "897"},
        {{{"<cNF>17102545<", "<cNF>90123456<"}}, "ide/cNF", "897"},
        {{{"<cNF>17102545<", "<cNF>00000042<"}}, "ide/cNF", "897"},
        {{{"<dhEmi>2026-09", "<dhEmi>2026-10", kDepois}}, "ide/dhEmi", "neste lugar"},
        {{{"<UF>RS<", "<UF>SP<"}}, "emit/enderEmit/UF", "35"},
        // Check digits and places.
        {{{"<CPF>12345678909<", "<CPF>12345678908<"}}, "dest/CPF", "dígito verificador"},
        {{{"<cEAN>7891000315507<", "<cEAN>7891000315508<"}}, "det[1]/prod/cEAN", "611"},
        {{{"<cEANTrib>7891000315507<", "<cEANTrib>78910003155<"}}, "det[1]/prod/cEANTrib", "612"},
        {{{"<cEAN>7891000315507</cEAN>", "<cEAN/>"}}, "det[1]/prod/cEAN", "883"},
        {{{"<cEANTrib>7891000315507</cEANTrib>", ""}}, "det[1]/prod/cEANTrib", "884"},
        {{{"<cMunFG>4314902</cMunFG><tpImp>", "<cMunFG>4314903</cMunFG><tpImp>"}},
         "ide/cMunFG",
         "dígito verificador"},
        {{{"<cMun>4314902<", "<cMun>3550308<"}}, "emit/enderEmit/cMun", "estado"},
        {{{"<tpIntegra>2</tpIntegra>", "<tpIntegra>2</tpIntegra><CNPJ>12345678000196</CNPJ>"}},
         "pag/detPag[1]/card/CNPJ",
         "dígito"},
        // Quantities, prices, amounts that are none.
        {{{"<qCom>2.0000<", "<qCom>3.0000<"}}, "det[1]/prod/vProd", "são 30.00"},
        {{{"<qTrib>2<", "<qTrib>1<"}}, "det[1]/prod/vProd", "são 10.00"},
        {{{"<vUnCom>39.90<", "<vUnCom>39.97<"}}, "det[2]/prod/vProd", "são 13.99"},
        {{{"<vDesc>1.00</vDesc><vOutro>", "<vDesc>1,00</vDesc><vOutro>"}},
         "det[1]/prod/vDesc",
         "duas casas"},
        // Payments.
        {{{">30.00</vPag>", ">20.00</vPag>"}}, "pag", "865"},
        {{{"<vTroco>5.57</vTroco>", ""}}, "pag/vTroco", "866"},
        {{{"<vTroco>5.57<", "<vTroco>5.56<"}}, "pag/vTroco", "869"},
        {{{">20.00</vPag>", ">14.43</vPag>"}}, "pag/vTroco", "869"},
        {{{"<card><tpIntegra>2</tpIntegra></card>", ""}}, "pag/detPag[1]/card/tpIntegra", "PIX"},
        {{{"<tpIntegra>2</tpIntegra>",
           "<tpIntegra>1</tpIntegra><CNPJ>12345678000195</CNPJ><tBand>01</tBand>"}},
         "pag/detPag[1]/card/cAut",
         "integrado"},
        {{{"<tPag>01<", "<tPag>90<"}}, "pag/detPag[2]/tPag", "sem pagamento"},
        {{{"<tPag>01<", "<tPag>99<"}}, "pag/detPag[2]/xPag", "diz o que é"},
        // IBS and CBS of the items.
        {{{"<vBC>13.99<", "<vBC>14.00<"}, {"<vBCIBSCBS>34.16<", "<vBCIBSCBS>34.17<"}},
         "det[1]/imposto/IBSCBS/gIBSCBS/vBC",
         "UB16-10"},
        {{{"<vBC>8.57</vBC><gIBSUF><pIBSUF>0.1000<", "<vBC>8.57</vBC><gIBSUF><pIBSUF>0.2000<"}},
         "det[3]/imposto/IBSCBS/gIBSCBS/gIBSUF/vIBSUF",
         "são 0.02"},
        {{{"<pCBS>0.9000</pCBS><vCBS>0.08<", "<pCBS>0.9000</pCBS><vCBS>0.07<"},
          {"<vCBS>0.25<", "<vCBS>0.24<"}},
         "det[3]/imposto/IBSCBS/gIBSCBS/gCBS/vCBS",
         "são 0.08"},
        {{{"<vIBS>0.00<", "<vIBS>0.01<"}, {"<vIBS>0.02<", "<vIBS>0.03<"}},
         "det[2]/imposto/IBSCBS/gIBSCBS/vIBS",
         "somam 0.00"},
        {{{">0.0400<", ">0.0402<"}},
         "det[2]/imposto/IBSCBS/gIBSCBS/gIBSUF/gRed/pAliqEfet",
         "reduzida em 60.0000%"},
        // An item without them, the totals being right; the till's date asks for them.
        {{{"<IBSCBS><CST>000</CST><cClassTrib>000001</cClassTrib><gIBSCBS><vBC>8.57</vBC><gIBSUF>"
           "<pIBSUF>0.1000</pIBSUF><vIBSUF>0.01</vIBSUF></gIBSUF><gIBSMun><pIBSMun>0.0000</pIBSMun>"
           "<vIBSMun>0.00</vIBSMun></gIBSMun><vIBS>0.01</vIBS><gCBS><pCBS>0.9000</pCBS><vCBS>0.08"
           "</vCBS></gCBS></gIBSCBS></IBSCBS>",
           ""},
          {"<vBCIBSCBS>34.16<", "<vBCIBSCBS>25.59<"},
          {"<vIBSUF>0.02<", "<vIBSUF>0.01<"},
          {"<vIBS>0.02<", "<vIBS>0.01<"},
          {"<vCBS>0.25<", "<vCBS>0.17<"}},
         "det[3]/imposto/IBSCBS",
         "falta"},
        {{{"<pIBSUF>0.1000</pIBSUF><gRed>", "<pIBSUF>0,1</pIBSUF><gRed>"}},
         "det[2]/imposto/IBSCBS/gIBSCBS/gIBSUF/pIBSUF",
         "quatro casas"},
    };
    for (const auto &[trocas, campo, motivo] : kCasos) {
        esperarUma(olhar(documento400(trocas)), std::string("NFe/infNFe/") + campo, motivo);
    }
}

// By CRT, environment and day; the configuration's date has the last word.
TEST(Conferencia, IBS_e_CBS_que_se_pedem_e_faltam_sao_ditos) {
    Configuracao desde, nunca;
    desde.ibsCbs.desde = "2026-09-21";
    nunca.ibsCbs.desde = "nunca";
    const struct {
        const char *CRT, *dia;
        const Configuracao &config;
        std::size_t faltas; // each item, and the total
    } kCasos[] = {{"3", "2026-09-21", {}, 2},    {"3", "2025-10-05", {}, 0},
                  {"1", "2026-09-21", {}, 0},    {"1", "2026-09-21", desde, 2},
                  {"3", "2026-09-21", nunca, 0}, {"1", "2027-01-04", {}, 2}};
    for (const auto &[CRT, dia, config, faltas] : kCasos) {
        std::string xml = nfe();
        trocarTudo(xml, "<CRT>1<", '<' + ("CRT>" + std::string(CRT)) + '<');
        trocarTudo(xml, "<dhEmi>2026-09-21", "<dhEmi>" + std::string(dia));
        const Olhada olhada = olhar(lido(xml), nullptr, config);
        std::size_t ditas = 0;
        for (const auto &recusa : olhada.recusas.lista())
            ditas += recusa.campo.find("IBSCBS") != std::string::npos ? 1U : 0U;
        EXPECT_EQ(ditas, faltas) << CRT << dia << '\n' << olhada.texto();
        EXPECT_EQ(olhada.disse("IBS e CBS: o documento não os traz"), faltas == 0) << dia;
    }
}

TEST(Conferencia, quem_assina_podia_assinar) {
    const Cadeia cadeia;
    const PastaTemporaria pasta;
    const DonoX509 outra = emitir({"AC Raiz de Ensaio", "", kAgora - 900 * kDia,
                                   kAgora + 900 * kDia, "critical,keyCertSign,cRLSign", true},
                                  chave(kTitular));
    ModeloCertificado vencido = modelo(), maisNovo = modelo(), semUso = modelo();
    vencido.ate = kAgora - 2 * 3600; // the document is of 4400 seconds before kAgora
    maisNovo.desde = kAgora + kDia;  // issued offline, signed when the line was back
    semUso.usos = "critical,keyEncipherment";
    const std::string inteira = pemDe({cadeia.raiz.get(), cadeia.autoridade.get()});
    const struct {
        ModeloCertificado titular;
        std::string pem;
        const char *motivo; // empty: it could
    } kCasos[] = {
        {modelo(), "", ""},
        {modelo(), inteira, ""},
        {maisNovo, inteira, ""},
        {vencido, "", "venceu antes da emissão"},
        {vencido, inteira, "venceu antes da emissão"},
        {semUso, "", "não é para assinatura"},
        {modelo(), pemDe({outra.get()}), "até uma raiz"},
        {modelo(), "x", "não tem certificados em PEM"},
    };
    for (const auto &[titular, pem, motivo] : kCasos) {
        Configuracao config;
        if (!pem.empty()) config.certificado.cadeia = pasta.gravar("cadeia.pem", pem, 0600);
        Recusas recusas;
        const auto aberto = Certificado::dePkcs12(
            pkcs12De(chave(kTitular), cadeia.titular(titular).get()), kSenha, "", recusas);
        Documento documento = documento400({}, false);
        ASSERT_TRUE(aberto && assinar(documento, "infNFe", *aberto, recusas)) << recusas.texto();
        const Olhada olhada = olhar(documento, nullptr, config);
        EXPECT_EQ(olhada.vale, *motivo == '\0') << motivo << olhada.texto();
        EXPECT_LE(olhada.recusas.lista().size(), 1U) << olhada.texto();
        EXPECT_TRUE(contem(olhada.texto(), motivo));
        EXPECT_EQ(olhada.disse("emissor do certificado: não foi olhado"), pem.empty());
    }
}

// Each amount below `total`, a cent more than it should be.
TEST(Conferencia, cada_total_e_a_soma_dos_itens) {
    const Documento boa = documento400({}, false);
    std::vector<std::string> lugares;
    const auto juntar = [&](const auto &este, const No &no) -> void {
        const auto filhos = no.filhos();
        if (filhos.empty() && no.nome().starts_with('v')) lugares.push_back(no.caminho());
        for (const No &filho : filhos)
            este(este, filho);
    };
    juntar(juntar, boa.raiz().filho("infNFe/total"));
    ASSERT_EQ(lugares.size(), 39U);
    for (const std::string &lugar : lugares) {
        Documento documento = documento400({}, false);
        No no = documento.raiz().filho(lugar.substr(4));
        no.definirTexto(textoDe(*Decimal::ler(no.texto())->centavos() + 1));
        esperarUma(olhar(lido(assinada(documento.texto(), "infNFe"))), lugar,
                   lugar.ends_with("/vNF") ? "610" : "os itens somam");
    }
    Documento documento = documento400({}, false);
    documento.raiz().filho("infNFe/total/IBSCBSTot").remover();
    esperarUma(olhar(lido(assinada(documento.texto(), "infNFe"))), "NFe/infNFe/total/IBSCBSTot",
               "falta");
}

// A cent more in an item: which total lacks it, and what it does to vNF and to the base of IBS and
// CBS (44.43; 13.99 of the first item, 8.57 of the service).
TEST(Conferencia, cada_valor_do_item_vai_ao_seu_lugar) {
    const struct {
        std::size_t item;
        std::string caminho, total;
        int nota, base;
    } kCasos[] = {
        {0, "prod/vFrete", "ICMSTot/vFrete", 1, 1},
        {0, "prod/vSeg", "ICMSTot/vSeg", 1, 1},
        {0, "prod/vOutro", "ICMSTot/vOutro", 1, 1},
        {0, "prod/vDesc", "ICMSTot/vDesc", -1, -1},
        {0, "imposto/ICMS/ICMS00/vBC", "ICMSTot/vBC", 0, 0},
        {0, "imposto/ICMS/ICMS00/vICMS", "ICMSTot/vICMS", 0, -1},
        {0, "imposto/ICMS/ICMS00/vFCP", "ICMSTot/vFCP", 0, -1},
        {0, "imposto/ICMS/ICMS00/vICMSDeson", "ICMSTot/vICMSDeson", 0, 0},
        {0, "imposto/ICMS/ICMS00/vBCST", "ICMSTot/vBCST", 0, 0},
        {0, "imposto/ICMS/ICMS00/vICMSST", "ICMSTot/vST", 1, 0},
        {0, "imposto/ICMS/ICMS00/vFCPST", "ICMSTot/vFCPST", 1, 0},
        {0, "imposto/ICMS/ICMS00/vFCPSTRet", "ICMSTot/vFCPSTRet", 0, 0},
        {0, "imposto/ICMS/ICMS00/vICMSMono", "ICMSTot/vICMSMono", 0, -1},
        {0, "imposto/ICMS/ICMS00/vICMSMonoReten", "ICMSTot/vICMSMonoReten", 1, 0},
        {0, "imposto/ICMS/ICMS00/vICMSMonoRet", "ICMSTot/vICMSMonoRet", 0, 0},
        {0, "imposto/ICMSUFDest/vFCPUFDest", "ICMSTot/vFCPUFDest", 0, -1},
        {0, "imposto/ICMSUFDest/vICMSUFDest", "ICMSTot/vICMSUFDest", 0, -1},
        {0, "imposto/ICMSUFDest/vICMSUFRemet", "ICMSTot/vICMSUFRemet", 0, 0},
        {0, "imposto/II/vII", "ICMSTot/vII", 1, 1},
        {0, "imposto/IPI/IPITrib/vIPI", "ICMSTot/vIPI", 1, 0},
        {0, "impostoDevol/IPI/vIPIDevol", "ICMSTot/vIPIDevol", 1, 0},
        {0, "imposto/PIS/PISAliq/vPIS", "ICMSTot/vPIS", 0, -1},
        {0, "imposto/PISST/vPIS", "", 0, -1},
        {0, "imposto/COFINS/COFINSAliq/vCOFINS", "ICMSTot/vCOFINS", 0, -1},
        {0, "imposto/COFINSST/vCOFINS", "", 0, -1},
        {0, "imposto/vTotTrib", "ICMSTot/vTotTrib", 0, 0},
        {2, "prod/vProd", "ISSQNtot/vServ", 1, 1},
        {2, "imposto/ISSQN/vBC", "ISSQNtot/vBC", 0, 0},
        {2, "imposto/ISSQN/vISSQN", "ISSQNtot/vISS", 0, -1},
        {2, "imposto/PIS/PISAliq/vPIS", "ISSQNtot/vPIS", 0, -1},
        {2, "imposto/COFINS/COFINSAliq/vCOFINS", "ISSQNtot/vCOFINS", 0, -1},
        {2, "imposto/ISSQN/vDeducao", "ISSQNtot/vDeducao", 0, 0},
        {2, "imposto/ISSQN/vOutro", "ISSQNtot/vOutro", 0, 0},
        {2, "imposto/ISSQN/vDescIncond", "ISSQNtot/vDescIncond", 0, 0},
        {2, "imposto/ISSQN/vDescCond", "ISSQNtot/vDescCond", 0, 0},
        {2, "imposto/ISSQN/vISSRet", "ISSQNtot/vISSRet", 0, 0},
        {0, "imposto/IS/vIS", "ISTot/vIS", 0, 1},
        {0, "imposto/IBSCBS/gIBSCBS/gIBSUF/gDif/vDif", "IBSCBSTot/gIBS/gIBSUF/vDif", 0, 0},
        {0, "imposto/IBSCBS/gIBSCBS/gIBSUF/gDevTrib/vDevTrib", "IBSCBSTot/gIBS/gIBSUF/vDevTrib", 0,
         0},
        {0, "imposto/IBSCBS/gIBSCBS/gIBSMun/gDif/vDif", "IBSCBSTot/gIBS/gIBSMun/vDif", 0, 0},
        {0, "imposto/IBSCBS/gIBSCBS/gIBSMun/gDevTrib/vDevTrib", "IBSCBSTot/gIBS/gIBSMun/vDevTrib",
         0, 0},
        {0, "imposto/IBSCBS/gIBSCBS/gIBSMun/vIBSMun", "IBSCBSTot/gIBS/gIBSMun/vIBSMun", 0, 0},
        {0, "imposto/IBSCBS/gIBSCBS/gCBS/gDif/vDif", "IBSCBSTot/gCBS/vDif", 0, 0},
        {0, "imposto/IBSCBS/gIBSCBS/gCBS/gDevTrib/vDevTrib", "IBSCBSTot/gCBS/vDevTrib", 0, 0},
        {0, "imposto/IBSCBS/gIBSCBS/gIBSCredPres/vCredPres", "IBSCBSTot/gIBS/vCredPres", 0, 0},
        {0, "imposto/IBSCBS/gIBSCBS/gCBSCredPres/vCredPresCondSus",
         "IBSCBSTot/gCBS/vCredPresCondSus", 0, 0},
        {0, "imposto/IBSCBS/gIBSCBSMono/gMonoPadrao/vCBSMono", "IBSCBSTot/gMono/vCBSMono", 0, 0},
        {0, "imposto/IBSCBS/gIBSCBSMono/gMonoReten/vIBSMonoReten", "IBSCBSTot/gMono/vIBSMonoReten",
         0, 0},
        {0, "imposto/IBSCBS/gIBSCBSMono/gMonoRet/vCBSMonoRet", "IBSCBSTot/gMono/vCBSMonoRet", 0, 0},
    };
    for (const auto &[item, caminho, total, nota, base] : kCasos) {
        const Documento documento = documento400({}, false);
        umCentavoEm(documento.raiz().filho("infNFe").filhos("det")[item], caminho);
        const Olhada olhada = olhar(documento);
        const std::string daBase = "é " + textoDe((item == 0 ? 1399 : 857) + base);
        EXPECT_EQ(olhada.recusou("/total/" + total, "os itens somam"), !total.empty()) << caminho;
        EXPECT_EQ(olhada.recusou("/vNF", "são " + textoDe(4443 + nota)), nota != 0) << caminho;
        EXPECT_EQ(olhada.recusou("/gIBSCBS/vBC", "UB16-10"), base != 0) << caminho;
        EXPECT_EQ(olhada.recusou("/gIBSCBS/vBC", daBase), base != 0) << caminho;
    }
}

// The key differs from the document in one part, its check digit being right; and the digit alone.
TEST(Conferencia, cada_parte_da_chave_e_a_do_documento) {
    const std::string boa = chaveDe(std::string(kDocumento400));
    const struct {
        std::size_t lugar;
        const char *campo;
    } kPartes[] = {{1, "ide/cUF"},    {5, "ide/dhEmi"}, {19, "emit/CNPJ"},  {21, "ide/mod"},
                   {24, "ide/serie"}, {33, "ide/nNF"},  {34, "ide/tpEmis"}, {42, "ide/cNF"}};
    for (const auto &[lugar, campo] : kPartes) {
        std::string chave = boa;
        chave[lugar] = chave[lugar] == '9' ? '8' : static_cast<char>(chave[lugar] + 1);
        chave[43] = fnCalcula_cDV(chave.substr(0, 43));
        esperarUma(olhar(documento400({}, true, chave)), std::string("NFe/infNFe/") + campo,
                   "neste lugar");
    }
    std::string chave = boa;
    chave[43] = chave[43] == '0' ? '1' : '0';
    esperarUma(olhar(documento400({}, true, chave)), "NFe/infNFe/@Id", "último dígito");
    esperarUma(olhar(documento400({{"<cDV>" + boa.substr(43), "<cDV>" + chave.substr(43),
                                    Quando::kDepoisDaChave}})),
               "NFe/infNFe/ide/cDV", "neste lugar");
}

TEST(Conferencia, assinatura_qrcode_e_protocolo_sao_os_do_documento) {
    const auto kAssinado = Quando::kDepoisDeAssinado;
    const Olhada mudado = olhar(documento400({{"Padaria", "Padarim", kAssinado}}));
    ASSERT_EQ(mudado.recusas.lista().size(), 1U) << mudado.texto();
    EXPECT_TRUE(mudado.recusas.lista()[0].campo.starts_with("NFe/Signature")) << mudado.texto();
    EXPECT_TRUE(mudado.disse("assinatura: não confere"));
    esperarUma(olhar(documento400({}, false)), "NFe/Signature", "não está assinado");
    esperarUma(olhar(documento400({{"12345678000195", "11222333000181"}})), "NFe/Signature", "213");

    // Neither address is covered by the signature.
    esperarUma(olhar(documento400({{"https://www.sefaz.rs.gov.br/N", "http://evil.example/N"}})),
               "infNFeSupl/qrCode, endereço", "NFCE-COM.aspx");
    const auto outraChave =
        documento400({{"www.sefaz.rs.gov.br/nfce/consulta", "www.evil.example"}});
    esperarUma(olhar(outraChave), "infNFeSupl/urlChave", "nfce/consulta");
    Configuracao config;
    config.qrcode.urlChave = "https://www.EVIL.example/";
    EXPECT_TRUE(olhar(outraChave, nullptr, config).vale);

    Documento semQr = documento400();
    semQr.raiz().filho("infNFeSupl").remover();
    esperarUma(olhar(semQr), "NFe/infNFeSupl/qrCode", "falta");

    const Documento nfe = documento400();
    const std::string chave = nfe.raiz().filho("infNFe").atributo("Id").substr(3);
    const std::string digest = nfe.raiz().texto("Signature/SignedInfo/Reference/DigestValue");
    const Olhada autorizada = olhar(emProtocolo(nfe, chave, digest));
    EXPECT_TRUE(autorizada.vale) << autorizada.texto();
    EXPECT_TRUE(autorizada.disse("protocolo: confere; 100 Autorizado")) << autorizada.texto();
    esperarUma(olhar(emProtocolo(nfe, std::string(44, '1'), digest)),
               "nfeProc/protNFe/infProt/chNFe", "outro documento");
    esperarUma(olhar(emProtocolo(nfe, chave, "AAAAAAAAAAAAAAAAAAAAAAAAAAA=")),
               "nfeProc/protNFe/infProt/digVal", "outro conteúdo");
    esperarUma(olhar(emProtocolo(nfe, chave, digest, "301")), "nfeProc/protNFe/infProt/cStat",
               "não autorizou");
    esperarUma(olhar(emProtocolo(nfe, chave, digest, "100", "1")), "nfeProc/protNFe/infProt/tpAmb",
               "tpAmb 2");
    const Olhada semDigest = olhar(emProtocolo(nfe, chave, "", "150"));
    EXPECT_TRUE(semDigest.vale && semDigest.texto().find("sem digVal") != std::string::npos)
        << semDigest.texto();
}

TEST(Conferencia, de_um_lote_cada_documento_e_olhado) {
    Documento lote = Documento::novo("enviNFe", kEspacoNfe);
    lote.raiz().acrescentarCopia(documento400().raiz());
    lote.raiz().acrescentarCopia(
        documento400({{"<nNF>42<", "<nNF>43<"}, {"<vTroco>5.57<", "<vTroco>5.58<"}}).raiz());
    esperarUma(olhar(lote), "enviNFe/NFe[2]/infNFe/pag/vTroco", "869");
}

TEST(Conferencia, do_que_nao_e_nota_diz_se_o_que_e) {
    const std::string cheio = trocar(nfe(1), "</infNFe>", "</infNFe>" + repetir("<x/>", 1200));
    const struct {
        std::string xml;
        const char *motivo;
    } kCasos[] = {
        {inutilizacao(), "não há NFe"},
        {"<NFe><infNFe versao='4.00'/></NFe>", "espaço de nomes"},
        {"<NFe xmlns='http://www.portalfiscal.inf.br/nfe'/>", "infNFe"},
        {nfe(991), "990 itens"},
        {cheio, "elementos demais"},
    };
    for (const auto &[xml, motivo] : kCasos) {
        const Olhada olhada = olhar(lido(xml));
        ASSERT_EQ(olhada.recusas.lista().size(), 1U) << olhada.texto();
        EXPECT_TRUE(contem(olhada.recusas.texto(), motivo)) << olhada.texto();
    }
    // Nothing of it adds up; nothing of it overflows or hangs.
    std::string hostil = nfe(1);
    const std::string grande = "<vProd>9999999999999.99</vProd>";
    trocarTudo(hostil, "<vProd>1.00</vProd>", grande + grande);
    trocarTudo(hostil, "<vPag>1.00</vPag>", "<vPag>99999999999999999999.99</vPag>");
    EXPECT_FALSE(olhar(lido(hostil)).vale);
}
