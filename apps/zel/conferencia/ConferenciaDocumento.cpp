// SPDX-License-Identifier: MIT
#include "conferencia/ConferenciaDocumento.h"

#include "comum/ChaveAcesso.h"
#include "comum/Digitos.h"
#include "comum/Estados.h"
#include "comum/Zeros.h"
#include "conferencia/ConferenciaConfig.h"
#include "conferencia/Esquema.h"
#include "leitura/Municipios.h"
#include "leitura/Texto.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <optional>
#include <vector>

namespace zel::aplicativo {

namespace {

// A part of the access key and the element that it repeats, with zeros on its left.
struct ParteDaChave {
    ChaveAcesso::Parte parte;
    std::string_view caminho;
};

using Parte = ChaveAcesso::Parte;
constexpr ParteDaChave kPartes[] = {
    {Parte::kCUF, "ide/cUF"},     {Parte::kCNPJ, "emit/CNPJ"}, {Parte::kMod, "ide/mod"},
    {Parte::kSerie, "ide/serie"}, {Parte::kNNF, "ide/nNF"},    {Parte::kTpEmis, "ide/tpEmis"},
    {Parte::kCNF, "ide/cNF"},     {Parte::kCDV, "ide/cDV"},
};

constexpr std::string_view kExigidos[] = {"ide/cUF",           "ide/nNF",   "ide/serie",
                                          "ide/dhEmi",         "ide/tpAmb", "emit/xNome",
                                          "emit/enderEmit/UF", "emit/IE",   "emit/CRT"};

// A CNPJ or CPF of the document. A person's number is not shown.
struct NumeroDePessoa {
    std::string_view caminho;
    bool (*serve)(std::string_view);
    IdAchado id;
};

constexpr NumeroDePessoa kNumeros[] = {
    {"emit/CNPJ", ehCnpj, "cnpj-digito"},
    {"emit/CPF", ehCpf, "cpf-digito"},
    {"dest/CNPJ", ehCnpj, "cnpj-digito"},
    {"dest/CPF", ehCpf, "cpf-digito"},
    {"transp/transporta/CNPJ", ehCnpj, "cnpj-digito"},
    {"transp/transporta/CPF", ehCpf, "cpf-digito"},
};

std::size_t linhaDe(const NoXml &no, std::string_view caminho) {
    const NoXml *atual = &no;
    for (const std::string_view nivel : dividir(caminho, '/')) {
        const NoXml *filho = atual->filho(nivel);
        if (filho == nullptr) break;
        atual = filho;
    }
    return atual->linha;
}

class Conferencia {
public:
    Conferencia(const NoXml &infNFe, Relatorio &relatorio)
        : infNFe_(infNFe), relatorio_(relatorio) {}

    void fazer() {
        conferirPresenca();
        conferirChave();
        conferirNumeros();
        conferirLugares();
        conferirItens();
        conferirProdutos(infNFe_, relatorio_);
        conferirTotais(infNFe_, relatorio_);
    }

private:
    void achar(const IdAchado &id, std::string_view caminho, std::string texto,
               std::string remedio) {
        relatorio_.registrar({id, std::string(caminho), linhaDe(infNFe_, caminho), std::move(texto),
                              std::move(remedio)});
    }

    std::string_view valor(std::string_view caminho) const { return infNFe_.valor(caminho); }

    void conferirPresenca() {
        for (const std::string_view caminho : kExigidos)
            if (valor(caminho).empty())
                achar("elemento-ausente", caminho, "falta, ou está vazio",
                      "O valor vem da configuração: veja com zel conferir.");
        const std::string *versao = infNFe_.atributo("versao");
        if (versao == nullptr || *versao != "3.10")
            achar("leiaute-outro", "infNFe",
                  juntar({"a versão é \"", versao == nullptr ? "" : *versao, "\", não 3.10"}),
                  "A conferência conhece o leiaute 3.10.");
    }

    void conferirChave() {
        const std::string *id = infNFe_.atributo("Id");
        const auto chave = id != nullptr && id->starts_with("NFe")
                               ? ChaveAcesso::ler(std::string_view(*id).substr(3))
                               : std::nullopt;
        if (!chave)
            return achar("chave-forma", "infNFe", "o Id não é NFe seguido de 44 dígitos",
                         "O documento não foi gravado pela biblioteca, ou foi mudado depois.");
        if (!chave->integra())
            achar("chave-digito", "infNFe",
                  juntar({chave->texto(), ": o último dígito deveria ser ",
                          std::string(1, chave->digitoCerto())}),
                  "A chave foi digitada ou mudada; emita o documento de novo.");
        for (const auto &[parte, caminho] : kPartes)
            conferirParte(chave->parte(parte), caminho,
                          comZeros(valor(caminho), ChaveAcesso::digitos(parte)));
        const std::string_view emissao = valor("ide/dhEmi");
        if (emissao.size() >= 7)
            conferirParte(chave->parte(Parte::kAAMM), "ide/dhEmi",
                          juntar({emissao.substr(2, 2), emissao.substr(5, 2)}));
    }

    void conferirParte(std::string_view naChave, std::string_view caminho,
                       const std::string &noDocumento) {
        if (valor(caminho).empty() || naChave == noDocumento) return;
        achar("chave-difere", caminho,
              juntar({"o documento tem ", valor(caminho), ", a chave tem ", naChave}),
              "O documento foi mudado depois de montado; emita-o de novo.");
    }

    void conferirNumeros() {
        for (const NumeroDePessoa &numero : kNumeros) {
            const std::string_view digitos = valor(numero.caminho);
            if (digitos.empty() || numero.serve(digitos)) continue;
            const bool daLoja = numero.caminho.starts_with("emit/");
            achar(numero.id, numero.caminho,
                  juntar({daLoja ? digitos : std::string_view("(oculto)"),
                          ": o tamanho ou o dígito verificador não confere"}),
                  daLoja ? "Corrija a configuração: zel conferir."
                         : "Confira o número com o consumidor, ou venda sem identificá-lo.");
        }
    }

    void conferirLugares() {
        conferirMunicipio("ide/cMunFG", valor("ide/cUF"));
        const Estado *estado = procurarEstado(valor("emit/enderEmit/UF"));
        conferirMunicipio("emit/enderEmit/cMun", estado != nullptr ? estado->codigo : "");
        const Estado *doDestino = procurarEstado(valor("dest/enderDest/UF"));
        conferirMunicipio("dest/enderDest/cMun", doDestino != nullptr ? doDestino->codigo : "");
        conferirEndereco("emit/enderEmit");
        conferirEndereco("dest/enderDest");
        conferirFuso();
        if (estado != nullptr && !valor("ide/cUF").empty() && estado->codigo != valor("ide/cUF"))
            achar("uf-codigo", "ide/cUF",
                  juntar({valor("ide/cUF"), " não é o código de ", estado->uf, ", que é ",
                          estado->codigo}),
                  R"(Corrija a configuração: IDE\cUF ou EMIT\ENDEREMIT\UF.)");
    }

    void conferirMunicipio(std::string_view caminho, std::string_view uf) {
        const std::string_view codigo = valor(caminho);
        if (codigo.empty()) return;
        if (!ehMunicipio(codigo))
            achar("municipio-digito", caminho,
                  juntar({codigo, ": o tamanho ou o dígito verificador não confere"}),
                  "Use o código do município na tabela do IBGE.");
        else if (!uf.empty() && !codigo.starts_with(uf))
            achar("municipio-uf", caminho, juntar({codigo, " é de outro estado"}),
                  "Use o código do município na tabela do IBGE.");
    }

    // A consumer's address is not shown.
    void conferirEndereco(std::string_view grupo) {
        const auto caminho = [&](std::string_view nome) { return juntar({grupo, "/", nome}); };
        const bool daLoja = grupo.starts_with("emit/");
        const std::string_view nome = valor(caminho("xMun"));
        const std::string_view certo = nomeDoMunicipio(valor(caminho("cMun")));
        if (!nome.empty() && !certo.empty() && !mesmoNome(nome, certo))
            achar("municipio-nome", caminho("xMun"),
                  daLoja ? juntar({"\"", nome, "\", mas o código é de ", certo})
                         : "não é o nome do município do código",
                  "Use nome e código do município na tabela do IBGE.");
        const Estado *estado = procurarEstado(valor(caminho("UF")));
        const Estado *doCep = estadoDoCep(valor(caminho("CEP")));
        if (estado != nullptr && doCep != nullptr && estado != doCep)
            achar("cep-uf", caminho("CEP"),
                  daLoja ? juntar({valor(caminho("CEP")), " é de ", doCep->uf, ", não de ",
                                   estado->uf})
                         : "não é um CEP do estado do endereço",
                  "Confira o CEP e o estado.");
    }

    void conferirFuso() {
        const std::string_view emissao = valor("ide/dhEmi");
        constexpr std::size_t kFuso = 6; // "-03:00"
        if (emissao.size() < kFuso + 1 || fusoDoBrasil(emissao.substr(emissao.size() - kFuso)))
            return;
        achar("fuso-estranho", "ide/dhEmi", juntar({emissao, ": o Brasil vai de -02:00 a -05:00"}),
              std::string(remedioDoFuso()));
    }

    void conferirItens() {
        std::map<std::string_view, std::vector<std::string_view>> recusados; // items by group
        for (const NoXml &item : infNFe_.filhos) {
            if (item.nome != "det") continue;
            const std::string_view grupo = grupoDoIcms(item);
            const std::string_view crt = valor("emit/CRT");
            if (!grupo.empty() && !crt.empty() && !regimeServe(crt, grupo.starts_with("ICMSSN")))
                recusados[grupo].push_back(numeroDe(item));
        }
        for (const auto &[grupo, itens] : recusados)
            achar("crt-item", "det",
                  juntar({itens.size() == 1 ? "o item " : "os itens ", enumerar(itens),
                          itens.size() == 1 ? " leva " : " levam ", grupo,
                          ", mas o regime (CRT) é ", valor("emit/CRT"), ": a SEFAZ recusa a nota"}),
                  "Corrija EMIT\\CRT ou os grupos em IMPOSTO\\ICMS: zel conferir.");
    }

    static std::string_view numeroDe(const NoXml &item) {
        const std::string *numero = item.atributo("nItem");
        return numero == nullptr ? std::string_view("?") : *numero;
    }

    static std::string_view grupoDoIcms(const NoXml &item) {
        const NoXml *imposto = item.filho("imposto");
        const NoXml *icms = imposto != nullptr ? imposto->filho("ICMS") : nullptr;
        if (icms == nullptr || icms->filhos.empty()) return {};
        return icms->filhos.front().nome;
    }

    const NoXml &infNFe_;
    Relatorio &relatorio_;
};

// A request of the library, a return, or something else: its key is looked at when it has one.
void conferirOutro(const NoXml &raiz, Relatorio &relatorio) {
    if (raiz.nome == "FRAMEWORKZEL") {
        relatorio.registrar({"documento-outro", raiz.nome, raiz.linha,
                             "é a configuração, não um documento",
                             "Confira o diretório em que ela está: zel conferir DIRETORIO"});
        return;
    }
    relatorio.registrar({"documento-outro",
                         raiz.nome,
                         raiz.linha,
                         "não é uma NFC-e: só a forma foi conferida",
                         {}});
    for (const std::string_view nome : {"ChaAcesso", "chNFe"}) {
        const NoXml *chave = raiz.procurar(nome);
        if (chave != nullptr && !chave->texto.empty() && !ehChaveIntegra(chave->texto))
            relatorio.registrar(
                {"chave-digito", std::string(nome), chave->linha,
                 "não tem 44 dígitos, ou o último não confere",
                 "Confira a chave do documento que se quer cancelar ou consultar."});
    }
}

} // namespace

void conferirDocumento(std::string_view bytes, const std::string &esquema, Relatorio &relatorio) {
    ErroXml erro;
    const auto raiz = lerXml(bytes, erro);
    if (!raiz) {
        relatorio.registrar({"xml-malformado", "documento", erro.linha, erro.texto,
                             "O arquivo foi cortado ou mudado; recupere a cópia do histórico. Um "
                             "arquivo .ctg está embaralhado e não se confere assim."});
        return;
    }
    const NoXml *nfe = raiz->procurar("NFe");
    const NoXml *infNFe = nfe != nullptr ? nfe->filho("infNFe") : nullptr;
    if (infNFe == nullptr) {
        conferirOutro(*raiz, relatorio);
    } else {
        Conferencia(*infNFe, relatorio).fazer();
        conferirQrcode(*nfe, relatorio);
        if (nfe->filho("Signature") == nullptr)
            relatorio.registrar({"sem-assinatura", "NFe", nfe->linha,
                                 "o documento não está assinado",
                                 "É o componente de envio quem assina."});
    }
    if (!esquema.empty()) conferirEsquema(bytes, raiz->nome, esquema, relatorio);
}

} // namespace zel::aplicativo
