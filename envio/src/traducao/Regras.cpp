// SPDX-License-Identifier: MIT
#include "traducao/Regras.h"

#include "base/Texto.h"
#include "comum/Ascii.h"
#include "comum/Digitos.h"
#include "config/Formas.h"
#include "traducao/Motor.h"

#include <algorithm>
#include <array>
#include <openssl/evp.h>

namespace zel::envio {

namespace {

// Rules 373 and 598.
constexpr std::string_view kProdutoHomologacao =
    "NOTA FISCAL EMITIDA EM AMBIENTE DE HOMOLOGACAO - SEM VALOR FISCAL";
constexpr std::string_view kDestHomologacao =
    "NF-E EMITIDA EM AMBIENTE DE HOMOLOGACAO - SEM VALOR FISCAL";

constexpr std::string_view kSemGtin = "SEM GTIN";
constexpr std::string_view kNcmServico = "00";

// CST and CSOSN whose goods have a CEST (Convênio ICMS 142/2018).
constexpr std::array<std::string_view, 10> kComCest{"10",  "30",  "60",  "70",  "90",
                                                    "201", "202", "203", "500", "900"};

bool homologacao(const Lugar &lugar) {
    return lugar.contexto.antiga.texto("ide/tpAmb") == "2";
}

std::string doCaixa(const Lugar &lugar, std::string_view nome) {
    return aparar(lugar.antigo.texto(nome));
}

std::string situacaoDe(const No &det) {
    for (const No &grupo : det.filho("imposto/ICMS").filhos())
        return aparar(grupo.texto(grupo.filho("CST") ? "CST" : "CSOSN"));
    return {};
}

// Rules 611 and 612: a code that is there has a right check digit; both or none.
regra::Texto umGtin(const Lugar &prod, std::string_view nome, std::string_view outro) {
    std::string codigo = doCaixa(prod, nome);
    const std::string codigoOutro = doCaixa(prod, outro);
    const auto vazio = [](const std::string &um) { return um.empty() || um == kSemGtin; };
    if (vazio(codigo)) {
        if (vazio(codigoOutro)) return std::string(kSemGtin);
        return recusar(prod, nome, "",
                       "falta, se " + std::string(outro) + " está lá; corrija " +
                           std::string(kDaVenda));
    }
    if (!ehGtin(codigo))
        return recusar(prod, nome, codigo,
                       "não é um GTIN (8, 12, 13 ou 14 dígitos, o último de controle): corrija o "
                       "código, ou deixe-o vazio, que vira SEM GTIN");
    return codigo;
}

} // namespace

void abrirItem(const Lugar &det) {
    Item &item = *det.item;
    const std::string numero = std::to_string(item.numero);
    if (item.antigo.atributo("nItem") != numero)
        recusar(det, "@nItem", item.antigo.atributo("nItem"),
                "os itens não estão em ordem; corrija " + std::string(kDoDocumento));
    item.novo.definirAtributo("nItem", numero);
    const No icms = item.antigo.filho("imposto/ICMS");
    item.servico = static_cast<bool>(item.antigo.filho("imposto/ISSQN"));
    if (icms && item.servico)
        recusar(det, "imposto", "", "tem ICMS e ISSQN: venda de novo, com um dos dois");
    item.produto = produtoDe(det.contexto.config, aparar(item.antigo.texto("prod/cProd")),
                             aparar(item.antigo.texto("prod/NCM")));
}

std::string faltaConfigurar(const Item &item, std::string_view chave) {
    std::string motivo = "falta: configure ";
    motivo.append(chave).append(" em [produtos.\"").append(item.antigo.texto("prod/cProd"));
    motivo.append("\"], [ncm.\"").append(item.antigo.texto("prod/NCM"));
    return motivo.append("\"] ou [padrao] de zel-envio.toml");
}

namespace regra {

// ---- ide ----

bool naoPresencial(const Lugar &ide) {
    const std::string indPres = doCaixa(ide, "indPres");
    return indPres == "2" || indPres == "3" || indPres == "4" || indPres == "9";
}

Texto indIntermed(const Lugar &ide) {
    const std::string &valor = ide.contexto.config.indIntermed;
    if (!valor.empty()) return valor;
    return recusar(
        ide, "indIntermed", "",
        "falta: configure em [intermediador] de zel-envio.toml se a venda não presencial "
        "passa por um intermediador (1) ou não (0)");
}

bool emContingencia(const Lugar &ide) {
    return doCaixa(ide, "tpEmis") != "1";
}

void contingenciaComTipo(const Lugar &ide) {
    if (emContingencia(ide) || (!ide.antigo.filho("dhCont") && !ide.antigo.filho("xJust"))) return;
    recusar(ide, "dhCont", doCaixa(ide, "dhCont"),
            "emitido sem conexão com tpEmis 1 (rejeição 556), e a chave não pode mudar: no caixa, "
            "ponha IDE\\tpEmis de ZEL_Framework.xml em 9 antes de emitir sem conexão");
}

// ---- emit ----

bool prestaServico(const Lugar &emit) {
    const auto itens = emit.contexto.antiga.filhos("det");
    return !emit.contexto.config.emitente.IM.empty() &&
           std::any_of(itens.begin(), itens.end(),
                       [](const No &det) { return static_cast<bool>(det.filho("imposto/ISSQN")); });
}

Texto IM(const Lugar &emit) {
    return emit.contexto.config.emitente.IM;
}
Texto CNAE(const Lugar &emit) {
    return emit.contexto.config.emitente.CNAE;
}

// ---- dest, entrega ----

Texto xNomeDest(const Lugar &dest) {
    return homologacao(dest) ? std::string(kDestHomologacao) : doCaixa(dest, "xNome");
}

void umDocumento(const Lugar &dest) {
    int quantos = 0;
    for (const std::string_view nome : {"CNPJ", "CPF", "idEstrangeiro"})
        quantos += aparar(dest.antigo.texto(nome)).empty() ? 0 : 1;
    if (quantos != 1)
        recusar(dest, "CPF", "",
                "o consumidor tem um documento, CPF, CNPJ ou idEstrangeiro: identifique-o com um "
                "só");
}

bool destComCpf(const Lugar &entrega) {
    return static_cast<bool>(entrega.contexto.nova.filho("dest/CPF"));
}
bool destSemCpf(const Lugar &entrega) {
    return !destComCpf(entrega);
}
Texto cpfDest(const Lugar &entrega) {
    return entrega.contexto.nova.texto("dest/CPF");
}
Texto cnpjDest(const Lugar &entrega) {
    return entrega.contexto.nova.texto("dest/CNPJ");
}

// The till's address of delivery has no code: that of the same municipality elsewhere.
Texto cMunEntrega(const Lugar &entrega) {
    if (std::string codigo = doCaixa(entrega, "cMun"); !codigo.empty()) return codigo;
    for (const std::string_view onde : {"dest/enderDest", "emit/enderEmit"}) {
        const No endereco = entrega.contexto.nova.filho(onde);
        if (endereco &&
            semAcentos(endereco.texto("xMun")) == semAcentos(doCaixa(entrega, "xMun")) &&
            endereco.texto("UF") == doCaixa(entrega, "UF"))
            return endereco.texto("cMun");
    }
    return recusar(entrega, "cMun", "",
                   "falta o código do município: o caixa não o tem na entrega, e xMun e UF não são "
                   "os do consumidor nem os da loja: identifique o consumidor com o endereço da "
                   "entrega");
}

// ---- prod ----

Texto xProd(const Lugar &prod) {
    return homologacao(prod) && prod.item->numero == 1 ? std::string(kProdutoHomologacao)
                                                       : doCaixa(prod, "xProd");
}

Texto NCM(const Lugar &prod) {
    std::string codigo = doCaixa(prod, "NCM");
    std::erase_if(codigo, [](char c) { return c == '.' || c == ' '; });
    if ((soDigitos(codigo) && codigo.size() == 8) || (codigo == kNcmServico && prod.item->servico))
        return codigo;
    return recusar(prod, "NCM", codigo,

                   "tem 8 dígitos (rejeições 777 e 778), \"00\" só num serviço; corrija " +
                       std::string(kDaVenda));
}

Texto gtin(const Lugar &prod) {
    return umGtin(prod, "cEAN", "cEANTrib");
}
Texto gtinTrib(const Lugar &prod) {
    return umGtin(prod, "cEANTrib", "cEAN");
}

Texto CEST(const Lugar &prod) {
    const Item &item = *prod.item;
    if (!item.produto.CEST.empty()) return item.produto.CEST;
    const std::string situacao = situacaoDe(item.antigo);
    if (std::find(kComCest.begin(), kComCest.end(), situacao) == kComCest.end()) return {};
    return recusar(prod, "CEST", "",
                   faltaConfigurar(item, "CEST") + ", que o CST ou CSOSN " + situacao + " pede");
}

bool temCest(const Lugar &prod) {
    return !prod.item->produto.CEST.empty();
}

bool semEscala(const Lugar &prod) {
    return temCest(prod) && prod.item->produto.indEscala == "N";
}

// ---- total, infIntermed, infRespTec ----

bool temServico(const Lugar &total) {
    const auto itens = total.contexto.nova.filhos("det");
    return std::any_of(itens.begin(), itens.end(),
                       [](const No &det) { return static_cast<bool>(det.filho("imposto/ISSQN")); });
}

bool comTotTrib(const Lugar &icmsTot) {
    const auto itens = icmsTot.contexto.nova.filhos("det");
    return std::any_of(itens.begin(), itens.end(), [](const No &det) {
        return static_cast<bool>(det.filho("imposto/vTotTrib"));
    });
}

Texto dCompet(const Lugar &issqnTot) {
    return issqnTot.contexto.nova.texto("ide/dhEmi").substr(0, 10);
}

bool comIntermediador(const Lugar &infNFe) {
    return infNFe.contexto.nova.texto("ide/indIntermed") == "1";
}

bool comRespTec(const Lugar &infNFe) {
    return !infNFe.contexto.config.respTec.CNPJ.empty();
}

bool comCsrt(const Lugar &infRespTec) {
    return !infRespTec.contexto.config.respTec.CSRT.empty();
}

// NT 2018.005: Base64 of the SHA-1 of CSRT and key.
Texto hashCSRT(const Lugar &infRespTec) {
    const Contexto &contexto = infRespTec.contexto;
    const std::string segredo = contexto.config.respTec.CSRT + std::string(contexto.chave);
    std::array<unsigned char, EVP_MAX_MD_SIZE> sha1{};
    unsigned int tamanho = 0;
    if (EVP_Digest(segredo.data(), segredo.size(), sha1.data(), &tamanho, EVP_sha1(), nullptr) != 1)
        return recusar(infRespTec, "hashCSRT", "", "o SHA-1 falhou");
    std::array<unsigned char, 64> base64{};
    const int escritos = EVP_EncodeBlock(base64.data(), sha1.data(), static_cast<int>(tamanho));
    return std::string(base64.begin(), base64.begin() + escritos);
}

} // namespace regra

} // namespace zel::envio
