// SPDX-License-Identifier: MIT
#include "conferencia/ConferenciaDocumento.h"

#include "leitura/Texto.h"

#include <algorithm>
#include <array>

namespace zel::aplicativo {

namespace {

constexpr std::string_view kLugar = "infNFeSupl/qrCode";

struct Parametro {
    std::string_view nome;
    bool opcional = false;
};

// Of version 100, in their order: NT 2015.002, as in the library that writes them.
constexpr std::array<Parametro, 10> kParametros{{
    {"chNFe"},
    {"nVersao"},
    {"tpAmb"},
    {"cDest", true},
    {"dhEmi"},
    {"vNF"},
    {"vICMS"},
    {"digVal"},
    {"cIdToken"},
    {"cHashQRCode"},
}};

std::string emHexa(std::string_view texto) {
    constexpr std::string_view kHexa = "0123456789abcdef";
    std::string hexa;
    for (const char c : texto)
        hexa.append(
            {kHexa[static_cast<unsigned char>(c) >> 4], kHexa[static_cast<unsigned char>(c) & 15]});
    return hexa;
}

bool ehHexa(std::string_view texto, std::size_t tamanho) {
    return texto.size() == tamanho &&
           minusculas(texto).find_first_not_of("0123456789abcdef") == std::string::npos;
}

class Conferencia {
public:
    Conferencia(const NoXml &nfe, const NoXml &qrcode, Relatorio &relatorio)
        : nfe_(nfe), infNFe_(*nfe.filho("infNFe")), linha_(qrcode.linha), relatorio_(relatorio) {}

    void fazer(std::string_view conteudo) {
        const std::size_t inicioDosParametros = conteudo.find('?');
        if (!conteudo.starts_with("http") || inicioDosParametros == conteudo.npos)
            return acharForma("não é um endereço com ? e parâmetros");
        if (!separar(conteudo.substr(inicioDosParametros + 1))) return;
        conferirForma();
        conferirValores();
    }

private:
    void achar(const IdAchado &id, std::string texto) {
        relatorio_.registrar({id, std::string(kLugar), linha_, std::move(texto),
                              "Confira o programa que monta o QR Code; a biblioteca o faz ao "
                              "imprimir (GerarArquivoFormatadoNF_ZEL)."});
    }
    void acharForma(std::string texto) { achar("qrcode-forma", std::move(texto)); }

    bool separar(std::string_view texto) {
        auto esperado = kParametros.begin();
        for (const std::string_view parte : dividir(texto, '&')) {
            const std::string_view nome = parte.substr(0, parte.find('='));
            if (esperado != kParametros.end() && esperado->opcional && esperado->nome != nome)
                ++esperado;
            if (esperado == kParametros.end() || esperado->nome != nome) {
                acharForma(juntar({"o parâmetro ", inicio(nome, 20), " está fora de lugar"}));
                return false;
            }
            valores_[static_cast<std::size_t>(esperado - kParametros.begin())] =
                parte.substr(std::min(nome.size() + 1, parte.size()));
            ++esperado;
        }
        if (esperado == kParametros.end()) return true;
        acharForma(juntar({"falta o parâmetro ", esperado->nome}));
        return false;
    }

    std::string_view valor(std::string_view nome) const {
        const auto parametro = std::ranges::find(kParametros, nome, &Parametro::nome);
        return valores_[static_cast<std::size_t>(parametro - kParametros.begin())];
    }

    void conferirForma() {
        if (valor("nVersao") != "100") acharForma("nVersao não é 100");
        if (valor("cIdToken").size() != 6 || !soDigitos(valor("cIdToken")))
            acharForma("cIdToken não tem 6 dígitos");
        if (!ehHexa(valor("cHashQRCode"), 40))
            acharForma("cHashQRCode não tem 40 dígitos hexadecimais");
        if (!ehHexa(valor("digVal"), 56)) acharForma("digVal não tem 56 dígitos hexadecimais");
    }

    void comparar(std::string_view nome, std::string_view noDocumento) {
        if (noDocumento.empty() || igualSemCaixa(valor(nome), noDocumento)) return;
        achar("qrcode-difere", juntar({nome, " difere do documento"}));
    }

    void conferirValores() {
        const std::string *id = infNFe_.atributo("Id");
        const NoXml *digest = nfe_.procurar("DigestValue");
        comparar("chNFe", id == nullptr || id->size() < 3 ? "" : std::string_view(*id).substr(3));
        comparar("tpAmb", infNFe_.valor("ide/tpAmb"));
        comparar("dhEmi", emHexa(infNFe_.valor("ide/dhEmi")));
        comparar("vNF", infNFe_.valor("total/ICMSTot/vNF"));
        comparar("vICMS", infNFe_.valor("total/ICMSTot/vICMS"));
        comparar("digVal", digest == nullptr ? "" : emHexa(aparar(digest->texto)));
        std::string_view consumidor;
        for (const std::string_view nome : {"dest/CPF", "dest/CNPJ", "dest/idEstrangeiro"})
            if (consumidor.empty()) consumidor = infNFe_.valor(nome);
        if (!igualSemCaixa(valor("cDest"), consumidor))
            achar("qrcode-difere", "cDest não é o consumidor do documento");
    }

    const NoXml &nfe_;
    const NoXml &infNFe_;
    std::size_t linha_;
    std::array<std::string_view, kParametros.size()> valores_;
    Relatorio &relatorio_;
};

} // namespace

void conferirQrcode(const NoXml &nfe, Relatorio &relatorio) {
    const NoXml *suplemento = nfe.filho("infNFeSupl");
    const NoXml *qrcode = suplemento != nullptr ? suplemento->filho("qrCode") : nullptr;
    if (qrcode != nullptr) Conferencia(nfe, *qrcode, relatorio).fazer(aparar(qrcode->texto));
}

} // namespace zel::aplicativo
