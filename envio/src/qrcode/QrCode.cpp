// SPDX-License-Identifier: MIT
#include "qrcode/QrCode.h"

#include "base/Decimal.h"
#include "base/Texto.h"
#include "comum/ChaveAcesso.h"
#include "comum/Estados.h"
#include "config/Enderecos.h"
#include "qrcode/Resumo.h"

#include <algorithm>
#include <array>
#include <vector>

namespace zel::envio {

namespace {

using Parte = ChaveAcesso::Parte;

constexpr std::string_view kParametro = "?p=";

// What a document says that its QR code repeats.
struct Dados {
    std::string chave, tpAmb, dia, vNF, tipo, id;
    std::string uf;
    bool offline = false;
};

// A foreigner's document is not repeated.
void lerConsumidor(const No &dest, Dados &dados) {
    constexpr std::array<std::string_view, 3> kTipos{"CNPJ", "CPF", "idEstrangeiro"};
    for (std::size_t i = 0; i < kTipos.size(); ++i) {
        if (!dest.filho(kTipos[i])) continue;
        dados.tipo = std::to_string(i + 1);
        if (i < 2) dados.id = dest.texto(kTipos[i]);
    }
}

std::optional<Dados> dadosDe(const No &nfe, Recusas &recusas) {
    const No inf = nfe.filho("infNFe");
    const std::string Id = inf.atributo("Id"), dhEmi = inf.texto("ide/dhEmi");
    const std::string_view digitos =
        std::string_view(Id).substr(std::min<std::size_t>(3, Id.size()));
    const auto chave = ChaveAcesso::ler(digitos);
    Dados dados;
    dados.tpAmb = inf.texto("ide/tpAmb");
    dados.vNF = inf.texto("total/ICMSTot/vNF");
    const Estado *estado = chave ? procurarEstadoPorCodigo(chave->parte(Parte::kCUF)) : nullptr;
    if (!Id.starts_with("NFe") || estado == nullptr)
        recusas.juntar("infNFe/@Id", Id, "não é \"NFe\" com uma chave de acesso");
    if (dados.tpAmb != "1" && dados.tpAmb != "2")
        recusas.juntar("infNFe/ide/tpAmb", dados.tpAmb, "o ambiente é 1 ou 2");
    if (!ehMomento(dhEmi)) recusas.juntar("infNFe/ide/dhEmi", dhEmi, "não é data, hora e fuso");
    const std::string tpEmis = inf.texto("ide/tpEmis");
    if (tpEmis != "1" && tpEmis != "3" && tpEmis != "4" && tpEmis != "9")
        recusas.juntar("infNFe/ide/tpEmis", tpEmis, "não há QR code desta forma de emissão");
    if (chave && chave->parte(Parte::kTpEmis) != tpEmis)
        recusas.juntar("infNFe/ide/tpEmis", tpEmis, "não é a da chave");
    const auto total = Decimal::ler(dados.vNF);
    if (!total || total->texto(2, 2, 13) != dados.vNF)
        recusas.juntar("infNFe/total/ICMSTot/vNF", dados.vNF, "não é um valor com duas casas");
    if (!recusas.nenhuma()) return {};
    dados.chave = digitos;
    dados.uf = estado->uf;
    dados.dia = dhEmi.substr(8, 2);
    dados.offline = tpEmis == "9";
    lerConsumidor(inf.filho("dest"), dados);
    return dados;
}

std::string juntos(std::initializer_list<std::string_view> campos) {
    std::string texto;
    for (const auto campo : campos)
        (texto += texto.empty() ? "" : "|") += campo;
    return texto;
}

// The fields of version 2 up to the CSC's number, and those of version 3 that are signed.
std::string camposV2(const Dados &d, std::string_view digest, std::string_view idCsc) {
    return d.offline ? juntos({d.chave, "2", d.tpAmb, d.dia, d.vNF, hexadecimal(digest), idCsc})
                     : juntos({d.chave, "2", d.tpAmb, idCsc});
}

std::string camposV3(const Dados &d) {
    return d.offline ? juntos({d.chave, "3", d.tpAmb, d.dia, d.vNF, d.tipo, d.id})
                     : juntos({d.chave, "3", d.tpAmb});
}

std::optional<std::string> conteudo(const Dados &dados, std::string_view digest,
                                    const ConfigQrCode &config, const Certificado *certificado,
                                    Recusas &recusas) {
    if (config.versao == 2) {
        if (config.csc.empty() || config.idCsc.empty()) {
            recusas.juntar("[qrcode] csc", "",
                           "a versão 2 pede o CSC: configure id_csc e csc_arquivo em [qrcode] de "
                           "zel-envio.toml (no caixa estão em CONFIGURACAO\\IDTokenSefaz e "
                           "CONFIGURACAO\\TokenSefaz), ou versao = 3");
            return {};
        }
        const std::string campos = camposV2(dados, digest, config.idCsc);
        return juntos({campos, sha1Hexadecimal(campos + config.csc)});
    }
    const std::string campos = camposV3(dados);
    if (!dados.offline) return campos;
    if (certificado == nullptr) {
        recusas.juntar("[certificado]", "",
                       "o QR code offline da versão 3 é assinado: configure o certificado");
        return {};
    }
    const auto assinatura = certificado->assinarTexto(campos, recusas);
    if (!assinatura) return {};
    return juntos({campos, *assinatura});
}

std::string endereco(const std::string &configurado, const Dados &dados, Servico servico,
                     std::string_view chave, Recusas &recusas) {
    std::string texto = configurado;
    if (texto.empty()) texto = enderecoDe(dados.uf, dados.tpAmb == "1" ? 1 : 2, servico);
    if (texto.empty())
        recusas.juntar(chave, dados.uf,
                       "não há endereço deste estado na tabela: configure-o em zel-envio.toml");
    return texto;
}

// ---- checking ----

std::vector<std::string> separar(std::string_view texto) {
    std::vector<std::string> campos;
    for (std::size_t fim = 0; fim != texto.npos;) {
        fim = texto.find('|');
        campos.emplace_back(texto.substr(0, fim));
        if (fim != texto.npos) texto.remove_prefix(fim + 1);
    }
    return campos;
}

struct Esperado {
    std::string_view nome, valor;
};

// Field by field, so that what differs is named.
void comparar(const std::vector<std::string> &campos, const std::vector<Esperado> &esperados,
              Recusas &recusas) {
    for (std::size_t i = 0; i < esperados.size() && i < campos.size(); ++i)
        if (campos[i] != esperados[i].valor)
            recusas.juntar("infNFeSupl/qrCode, " + std::string(esperados[i].nome), campos[i],
                           "não é o do documento, " + std::string(esperados[i].valor));
}

std::string minusculas(std::string texto) {
    std::transform(texto.begin(), texto.end(), texto.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    return texto;
}

// Another company's CSC may have the same number. Whose this one is, the certificate says.
bool ehDeOutraEmpresa(const No &nfe, const ConfigCertificado &config) {
    constexpr std::size_t kRaiz = 8;
    Recusas descartadas;
    const auto nosso = Certificado::abrir(config, descartadas);
    const std::string cnpj = nosso ? nosso->cnpj() : "";
    return !cnpj.empty() && cnpj.substr(0, kRaiz) != nfe.texto("infNFe/emit/CNPJ").substr(0, kRaiz);
}

// Empty when it was looked at.
std::string conferirHash(const No &nfe, const std::vector<std::string> &campos,
                         const Configuracao &config, Recusas &recusas) {
    if (config.qrcode.csc.empty()) return "o hash não foi olhado: configure csc em [qrcode]";
    if (campos[campos.size() - 2] != config.qrcode.idCsc)
        return "o hash não foi olhado: é de outro CSC que o configurado";
    const std::string qrCode = nfe.texto("infNFeSupl/qrCode");
    const std::size_t inicio = qrCode.find(kParametro) + kParametro.size();
    const std::string_view coberto =
        std::string_view(qrCode).substr(inicio, qrCode.rfind('|') - inicio);
    if (minusculas(campos.back()) ==
        minusculas(sha1Hexadecimal(std::string(coberto) + config.qrcode.csc)))
        return {};
    if (ehDeOutraEmpresa(nfe, config.certificado))
        return "o hash não foi olhado: o emitente é outro, e o CSC dele não se conhece";
    recusas.juntar("infNFeSupl/qrCode, hash", campos.back(), "não é o do CSC configurado");
    return {};
}

std::string conferirV2(const No &nfe, std::vector<std::string> campos, const Dados &dados,
                       const Configuracao &config, Recusas &recusas) {
    std::vector<Esperado> esperados{
        {"chave", dados.chave}, {"versão", "2"}, {"tpAmb", dados.tpAmb}};
    const std::string digest =
        hexadecimal(aparar(nfe.texto("Signature/SignedInfo/Reference/DigestValue")));
    if (dados.offline) {
        esperados.insert(esperados.end(),
                         {{"dia", dados.dia}, {"vNF", dados.vNF}, {"digest", digest}});
        if (campos.size() > 5) campos[5] = minusculas(campos[5]);
    }
    comparar(campos, esperados, recusas);
    return conferirHash(nfe, campos, config, recusas);
}

// Host and path of an address, which are what counts: states publish it with its scheme or without.
std::string enderecoNu(std::string_view texto) {
    if (texto.ends_with(kParametro)) texto.remove_suffix(kParametro.size());
    if (texto.ends_with('/')) texto.remove_suffix(1);
    std::string nu = minusculas(std::string(texto));
    for (const std::string_view esquema : {"http://", "https://"})
        if (nu.starts_with(esquema)) nu.erase(0, esquema.size());
    return nu;
}

// The digest covers neither, so that anybody could have put another address there (rejections 395
// and 878). Ours is the configured one, too; other shops' are the table's.
void conferirEndereco(std::string_view campo, std::string_view escrito,
                      std::string_view configurado, const Dados &dados, Servico servico,
                      Recusas &recusas) {
    const std::string daTabela(enderecoDe(dados.uf, dados.tpAmb == "1" ? 1 : 2, servico));
    const std::string nu = enderecoNu(escrito);
    if (nu == enderecoNu(daTabela) || (!configurado.empty() && nu == enderecoNu(configurado)))
        return;
    recusas.juntar(campo, escrito,
                   "o endereço de " + dados.uf + " é " + daTabela +
                       "; se mudou, configure-o em [qrcode] de zel-envio.toml");
}

void conferirEnderecos(const No &nfe, const std::string &base, const Dados &dados,
                       const ConfigQrCode &config, Recusas &recusas) {
    conferirEndereco("infNFeSupl/qrCode, endereço", base, config.endereco, dados, Servico::kQrCode,
                     recusas);
    conferirEndereco("infNFeSupl/urlChave", aparar(nfe.texto("infNFeSupl/urlChave")),
                     config.urlChave, dados, Servico::kConsultaChave, recusas);
}

void conferirV3(const No &nfe, const std::vector<std::string> &campos, const Dados &dados,
                Recusas &recusas) {
    std::vector<Esperado> esperados{
        {"chave", dados.chave}, {"versão", "3"}, {"tpAmb", dados.tpAmb}};
    if (dados.offline)
        esperados.insert(esperados.end(), {{"dia", dados.dia},
                                           {"vNF", dados.vNF},
                                           {"tipo do consumidor", dados.tipo},
                                           {"consumidor", dados.id}});
    comparar(campos, esperados, recusas);
    if (!dados.offline) return;
    const std::string certificado = nfe.texto("Signature/KeyInfo/X509Data/X509Certificate");
    if (certificado.empty())
        recusas.juntar("infNFeSupl/qrCode, assinatura", "",
                       "o documento não traz o certificado que a confere");
    else if (!assinaturaConfere(camposV3(dados), campos.back(), certificado))
        recusas.juntar("infNFeSupl/qrCode, assinatura", "",
                       "não é a do certificado do documento sobre estes dados");
}

} // namespace

std::optional<Suplemento> suplementoDe(const No &nfe, std::string_view digest,
                                       const Configuracao &config, const Certificado *certificado,
                                       Recusas &recusas) {
    Recusas minhas;
    Suplemento suplemento;
    if (const auto dados = dadosDe(nfe, minhas)) {
        if (dados->offline && config.qrcode.versao == 2 && digest.size() != kDigestBase64)
            minhas.juntar("DigestValue", digest, "tem 28 caracteres em Base64");
        suplemento.qrCode =
            endereco(config.qrcode.endereco, *dados, Servico::kQrCode, "[qrcode] endereco", minhas);
        suplemento.urlChave = endereco(config.qrcode.urlChave, *dados, Servico::kConsultaChave,
                                       "[qrcode] urlChave", minhas);
        if (!suplemento.qrCode.ends_with(kParametro)) suplemento.qrCode += kParametro;
        suplemento.qrCode +=
            conteudo(*dados, digest, config.qrcode, certificado, minhas).value_or("");
    }
    recusas.juntar(minhas);
    if (!minhas.nenhuma()) return {};
    return suplemento;
}

bool conferirQrCode(const No &nfe, const Configuracao &config, Recusas &recusas,
                    std::string *ressalva) {
    Recusas minhas;
    std::string porqueNao;
    const std::string qrCode = nfe.texto("infNFeSupl/qrCode");
    const std::size_t inicio = qrCode.find(kParametro);
    const auto campos = separar(
        inicio == qrCode.npos ? "" : std::string_view(qrCode).substr(inicio + kParametro.size()));
    const std::string versao = campos.size() > 1 ? campos[1] : "";
    if (qrCode.empty())
        minhas.juntar("infNFeSupl/qrCode", "", "falta");
    else if (versao != "2" && versao != "3")
        minhas.juntar("infNFeSupl/qrCode", qrCode, "não é da versão 2 nem da 3");
    else if (const auto dados = dadosDe(nfe, minhas)) {
        conferirEnderecos(nfe, qrCode.substr(0, inicio + kParametro.size()), *dados, config.qrcode,
                          minhas);
        const bool v2 = versao == "2";
        const std::size_t quantos = dados->offline ? 8 : v2 ? 5 : 3;
        if (campos.size() != quantos)
            minhas.juntar("infNFeSupl/qrCode", qrCode,
                          "tem " + std::to_string(campos.size()) + " campos e não " +
                              std::to_string(quantos));
        else if (v2)
            porqueNao = conferirV2(nfe, campos, *dados, config, minhas);
        else
            conferirV3(nfe, campos, *dados, minhas);
    }
    recusas.juntar(minhas);
    if (ressalva != nullptr) *ressalva = porqueNao;
    return minhas.nenhuma();
}

} // namespace zel::envio
