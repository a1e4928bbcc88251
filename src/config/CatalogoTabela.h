// SPDX-License-Identifier: MIT
// The table of the configuration catalogue, in file order. Groups that follow one rule (the states'
// addresses, the tax groups) are lists here and are spelled out when the library is compiled.
#pragma once

#include "texto/Latin1.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace zel {

enum class TipoEntrada : std::uint8_t { kChave, kAbreGrupo, kFechaGrupo };

struct EntradaCatalogo {
    TipoEntrada tipo;
    std::string_view nome;   // a closing entry carries the group's name with "/" in front
    std::uint16_t tamanho;   // longest value of a key, in characters
    std::string_view padrao; // default value of a key, ISO-8859-1
};

namespace tabela {

constexpr EntradaCatalogo chave(std::string_view nome, std::uint16_t tamanho,
                                std::string_view padrao = "") {
    return {TipoEntrada::kChave, nome, tamanho, padrao};
}

// A group is given by its closing name, which stands in the table as a whole text.
constexpr EntradaCatalogo abre(std::string_view fecho) {
    return {TipoEntrada::kAbreGrupo, fecho.substr(1), 0, ""};
}

constexpr EntradaCatalogo fecha(std::string_view fecho) {
    return {TipoEntrada::kFechaGrupo, fecho, 0, ""};
}

// Names, lengths and defaults of the keys are the till's own convention, but where the layout gives
// a key its name.
inline constexpr EntradaCatalogo kFuncionamento[] = {
    abre("/CONFIGURACAO"),
    chave("AjustarDhCanc", 1, "1"),
    chave("AjustarValorFPgto", 1, "0"),
    chave("ArredondarTruncar", 1, "A"),
    chave("estadoCFe", 1),
    chave("HistoricoXML", 1, "0"),
    chave("IDTokenSefaz", 6, "000001"),
    chave("ImpressaoCompleta", 1, "1"),
    chave("Modelo", 5, "NFC-e"),
    chave("NumeracaoAutomatica", 1, "1"),
    chave("PathXMLCompleto", 300),
    chave("PathXMLEnvio", 300),
    chave("PathXMLRetorno", 300),
    chave("SalvarDanfePDF", 1, "0"),
    chave("SalvarXMLPDF", 1, "0"),
    chave("TipoNF", 1, "1"),
    chave("TipoAmbiente", 1, "3"),
    chave("TokenSefaz", 49),
    chave("TrocoUltimaNFCe", 15),
    chave("ValorMaxIdeCliente", 15, "10000.00"),
    abre("/TIMEZONESERVIDOR"),
    chave("Utilizar", 2, "0"),
    chave("Valor", 2, "0"),
    fecha("/TIMEZONESERVIDOR"),
    fecha("/CONFIGURACAO"),
    abre("/NFCE"),
    chave("ChaveDeAcesso", 44),
    chave("Logotipo", 1),
    chave("ProtocoloAutorizacao", 29),
    chave("MsgLeiDoImposto", 200,
          "Informação dos Tributos Totais Incidentes (Lei Federal 12.741/2012)"_l1),
    chave("UrlQrcode", 499),
    abre("/MSGPROMOCIONAL"),
    chave("Imprimir", 1, "0"),
    chave("Titulo", 48, "Mensagem Promocional"),
    fecha("/MSGPROMOCIONAL"),
    fecha("/NFCE"),
};

// The consultation pages that the states publish for NFC-e (QR code version 100): those that the
// QR code opens, and those where a person types the access key.
struct Enderecos {
    std::string_view fecho;
    std::string_view homologacao = "";
    std::string_view producao = "";
    std::string_view chaveHomologacao = "";
    std::string_view chaveProducao = "";
};

inline constexpr std::string_view kProducaoAC = "http://www.sefaznet.ac.gov.br/nfce/qrcode";
inline constexpr std::string_view kHomologacaoSP =
    "https://www.homologacao.nfce.fazenda.sp.gov.br/NFCeConsultaPublica/Paginas/"
    "ConsultaQRCode.aspx";

// The defaults of the tills in use, the convention of no one else: states have moved some of them
// since, and a shop writes its own over them.
inline constexpr Enderecos kEnderecos[] = {
    {"/AC", "http://hml.sefaznet.ac.gov.br/nfce/qrcode", kProducaoAC},
    {"/AL"},
    {"/AP"},
    {"/AM", "http://homnfce.sefaz.am.gov.br/nfceweb/consultarNFCe.jsp",
     "http://sistemas.sefaz.am.gov.br/nfceweb/consultarNFCe.jsp",
     "homnfce.sefaz.am.gov.br/nfceweb/formConsulta.do",
     "sistemas.sefaz.am.gov.br/nfceweb/formConsulta.do"},
    {"/BA"},
    {"/CE"},
    {"/DF"},
    {"/ES"},
    {"/GO"},
    {"/MA", "http://www.hom.nfce.sefaz.ma.gov.br/portal/consultarNFCe.jsp",
     "http://www.nfce.sefaz.ma.gov.br/portal/consultarNFCe.jsp"},
    {"/MT", "http://homologacao.sefaz.mt.gov.br/nfce/consultanfce",
     "http://www.sefaz.mt.gov.br/nfce/consultanfce"},
    {"/MS"},
    {"/MG"},
    {"/PR"},
    {"/PB"},
    {"/PA"},
    {"/PE"},
    {"/PI"},
    {"/RJ"},
    {"/RN", "http://hom.nfce.set.rn.gov.br/consultarNFCe.aspx",
     "http://nfce.set.rn.gov.br/consultarNFCe.aspx"},
    {"/RS", "https://www.sefaz.rs.gov.br/NFCE/NFCE-COM.aspx", kProducaoAC}, // shares AC's value
    {"/RO"},
    {"/RR"},
    {"/SC"},
    {"/SE", "http://www.hom.nfe.se.gov.br/portal/consultarNFCe.jsp",
     "http://www.nfce.se.gov.br/portal/consultarNFCe.jsp"},
    {"/SP", kHomologacaoSP, kHomologacaoSP},
    {"/TO"},
};

inline constexpr EntradaCatalogo kDocumento[] = {
    abre("/IDE"),
    chave("cUF", 2, "43"),
    chave("cNF", 8, "17102544"),
    chave("nNF", 9, "1"),
    chave("natOP", 60, "Venda"),
    chave("indPag", 1, "0"),
    chave("Mod", 2, "65"),
    chave("Serie", 3, "1"),
    chave("tpNF", 1, "1"),
    chave("idDest", 1, "1"),
    chave("cMunFG", 7, "4321808"),
    chave("tpImp", 1, "4"),
    chave("tpEmis", 1, "1"),
    chave("finNfe", 1, "1"),
    chave("indFinal", 1, "1"),
    chave("indPres", 1, "1"),
    chave("verProc", 20, "1.0"),
    chave("xJust", 256, "Entrada em contingência por falha de comunicação com o servidor SEFAZ"_l1),
    fecha("/IDE"),
    abre("/EMIT"),
    chave("CNPJ", 14, "11111111111111"),
    chave("CPF", 11, "22222222222"),
    chave("xNome", 60, "RAZAO SOCIAL"),
    abre("/ENDEREMIT"),
    chave("xLgr", 60, "Logradouro"),
    chave("Nro", 60, "001"),
    chave("xBairro", 60, "Bairro"),
    chave("cMun", 7, "4321808"),
    chave("xMun", 60, "Municipio"),
    chave("UF", 2, "SP"),
    chave("CEP", 8, "11111111"),
    fecha("/ENDEREMIT"),
    chave("IE", 14, "11111111111111"),
    chave("CRT", 1, "1"),
    fecha("/EMIT"),
    abre("/PROD"),
    chave("NCM", 9, "39231090"),
    chave("CFOP", 4, "5102"),
    chave("indTot", 1, "1"),
    abre("/MED"),
    chave("nLote", 20),
    chave("qLote", 11),
    chave("dFab", 10),
    chave("dVal", 10),
    chave("dFab", 10),
    chave("vPMC", 15),
    fecha("/MED"),
    abre("/COMB"),
    chave("cProdANP", 9),
    chave("CODIF", 21),
    chave("qTemp", 16),
    chave("UFCons", 2),
    abre("/CIDE"),
    chave("qBCProd", 16),
    chave("vAliqProd", 15),
    chave("vCIDE", 15),
    fecha("/CIDE"),
    fecha("/COMB"),
    fecha("/PROD"),
};

// A tax group: its keys in order, each "name", "name:length" or "name=default". A length that is
// not given follows from the name (tamanhoImposto).
struct GrupoImposto {
    std::string_view fecho;
    std::string_view chaves;
};

// Names: Manual de Orientação do Contribuinte 6.0 (September 2015), Anexo I, groups N, Q to T and
// U.
inline constexpr GrupoImposto kIcms[] = {
    {"/ICMS00", "Orig=0 CST=00 modBC=3 vBC pICMS vICMS"},
    {"/ICMS10", "Orig CST:7 modBC vBC pICMS vICMS modBCST pMVAST pRedBCST vBCST pICMSST vICMSST"},
    {"/ICMS20", "Orig CST modBC pRedBC vBC pICMS vICMS"},
    {"/ICMS30", "Orig CST modBCST pMVAST pRedBCST vBCST pICMSST vICMSST"},
    {"/ICMS40", "Orig CST vICMS motDesICMS"},
    {"/ICMS51", "Orig CST modBC pRedBC vBC pICMS vICMS"},
    {"/ICMS60", "Orig CST vBCSTRet vICMSSTRet"},
    {"/ICMS70",
     "Orig CST modBC pRedBC vBC pICMS vICMS modBCST pMVAST pRedBCST vBCST pICMSST vICMSST"},
    {"/ICMS90",
     "Orig CST modBC vBC pRedBC pICMS vICMS modBCST pMVAST:5 pRedBCST vBCST pICMSST vICMSST"},
    {"/ICMSPART", "Orig CST modBC vBC pRedBC pICMS vICMS modBCST pMVAST pRedBCST vBCST pICMSST "
                  "vICMSST pBCOp UFST"},
    {"/ICMSST", "Orig CST vBCSTRet vICMSSTRet vBCSTDest vICMSSTDest"},
    {"/ICMSSN101", "Orig CSOSN pCredSN vCredICMSSN"},
    {"/ICMSSN102", "Orig CSOSN"},
    {"/ICMSSN201", "Orig CSOSN modBCST pMVAST pRedBCST vBCST pICMSST vICMSST pCredSN vCredICMSSN"},
    {"/ICMSSN202", "Orig CSOSN modBCST pMVAST pRedBCST vBCST pICMSST vICMSST"},
    {"/ICMSSN500", "Orig CSOSN vBCSTRet vICMSSTRet"},
    {"/ICMSSN900", "Orig CSOSN modBC vBC pRedBC pICMS vICMS modBCST pMVAST pRedBCST vBCST pICMSST "
                   "vICMSST pCredSN vCredICMSSN"},
};

inline constexpr GrupoImposto kPis[] = {
    {"/PISALIQ", "CST vBC pPIS vPIS"},
    {"/PISQTDE", "CST qBCProd vAliqProd vPIS"},
    {"/PISNT", "CST"},
    {"/PISOUTR", "CST vBC pPIS qBCProd vAliqProd vPIS"},
    {"/PISST", "vBC pPIS qBCProd vAliqProd vPIS"},
};

inline constexpr GrupoImposto kCofins[] = {
    {"/COFINSALIQ", "CST vBC pCOFINS vCOFINS"},
    {"/COFINSQTDE", "CST qBCProd vAliqProd vCOFINS"},
    {"/COFINSNT", "CST"},
    {"/COFINSOUTR", "CST vBC pCOFINS qBCProd vAliqProd vCOFINS"},
    {"/COFINSST", "vBC pCOFINS qBCProd vAliqProd vCOFINS"},
};

inline constexpr GrupoImposto kIssqn = {"/ISSQN",
                                        "vBC vAliq:7 vISSQN cMunFG:7 cListServ:4 cSitTrib:1"};

struct TamanhoChave {
    std::string_view nome;
    std::uint16_t tamanho;
};

inline constexpr TamanhoChave kTamanhosImposto[] = {
    {"Orig", 1},    {"CST", 2},        {"CSOSN", 3},    {"modBC", 1},
    {"modBCST", 1}, {"motDesICMS", 1}, {"qBCProd", 16}, {"UFST", 2},
};

// Rates (p...) take 7 characters, amounts (v...) 15.
constexpr std::uint16_t tamanhoImposto(std::string_view nome) {
    for (const TamanhoChave &linha : kTamanhosImposto)
        if (linha.nome == nome) return linha.tamanho;
    if (nome.front() == 'p') return 7;
    if (nome.front() == 'v') return 15;
    throw "a tax key without a length";
}

// "name", "name:length" (one digit) or "name=default".
constexpr EntradaCatalogo chaveImposto(std::string_view texto) {
    if (const auto igual = texto.find('='); igual != texto.npos)
        return chave(texto.substr(0, igual), tamanhoImposto(texto.substr(0, igual)),
                     texto.substr(igual + 1));
    if (const auto pontos = texto.find(':'); pontos != texto.npos)
        return chave(texto.substr(0, pontos), static_cast<std::uint16_t>(texto[pontos + 1] - '0'));
    return chave(texto, tamanhoImposto(texto));
}

struct Montagem {
    std::array<EntradaCatalogo, 600> entradas{};
    std::size_t total = 0;

    constexpr void juntar(const EntradaCatalogo &entrada) { entradas[total++] = entrada; }

    constexpr void juntar(std::span<const EntradaCatalogo> lista) {
        for (const EntradaCatalogo &entrada : lista)
            juntar(entrada);
    }

    constexpr void juntar(const Enderecos &estado) {
        juntar(abre(estado.fecho));
        juntar(chave("Homologacao", 200, estado.homologacao));
        juntar(chave("Producao", 200, estado.producao));
        juntar(chave("ChaveConsultaHomologacao", 200, estado.chaveHomologacao));
        juntar(chave("ChaveConsultaProducao", 200, estado.chaveProducao));
        juntar(fecha(estado.fecho));
    }

    constexpr void juntar(const GrupoImposto &grupo) {
        juntar(abre(grupo.fecho));
        for (std::string_view resto = grupo.chaves; !resto.empty();) {
            const std::size_t fim = std::min(resto.find(' '), resto.size());
            juntar(chaveImposto(resto.substr(0, fim)));
            resto.remove_prefix(std::min(fim + 1, resto.size()));
        }
        juntar(fecha(grupo.fecho));
    }

    template <class Grupo>
    constexpr void juntar(std::string_view fecho, std::span<const Grupo> grupos) {
        juntar(abre(fecho));
        for (const Grupo &grupo : grupos)
            juntar(grupo);
        juntar(fecha(fecho));
    }
};

consteval Montagem montar() {
    Montagem montagem;
    montagem.juntar(abre("/FRAMEWORKZEL"));
    montagem.juntar(kFuncionamento);
    montagem.juntar<Enderecos>("/URLS", kEnderecos);
    montagem.juntar(kDocumento);
    montagem.juntar(abre("/IMPOSTO"));
    montagem.juntar<GrupoImposto>("/ICMS", kIcms);
    montagem.juntar<GrupoImposto>("/PIS", kPis);
    montagem.juntar<GrupoImposto>("/COFINS", kCofins);
    montagem.juntar(kIssqn);
    montagem.juntar(fecha("/IMPOSTO"));
    montagem.juntar(fecha("/FRAMEWORKZEL"));
    return montagem;
}

} // namespace tabela

inline constexpr std::size_t kTotalEntradas = tabela::montar().total;

// The catalogue: the first entry opens the root group, the last one closes it.
inline constexpr auto stZELTAGs = [] {
    std::array<EntradaCatalogo, kTotalEntradas> entradas{};
    const tabela::Montagem montagem = tabela::montar();
    for (std::size_t i = 0; i < kTotalEntradas; ++i)
        entradas[i] = montagem.entradas[i];
    return entradas;
}();

} // namespace zel
