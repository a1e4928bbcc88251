// SPDX-License-Identifier: MIT
#include "conferencia/ConferenciaConfig.h"

#include "comum/Digitos.h"
#include "comum/Estados.h"
#include "comum/Zeros.h"
#include "conferencia/Regras.h"
#include "leitura/Municipios.h"
#include "leitura/Texto.h"

#include <ctime>
#include <string>

namespace zel::aplicativo {

namespace {

constexpr std::string_view kUf = R"(EMIT\ENDEREMIT\UF)";
constexpr std::string_view kAmbiente = R"(CONFIGURACAO\TipoAmbiente)";
constexpr std::string_view kToken = R"(CONFIGURACAO\TokenSefaz)";
constexpr std::string_view kNumero = R"(IDE\nNF)";
constexpr long long kMaiorNumero = 999999999;

bool serve(const ArquivoConfig &config, std::string_view caminho) {
    return valorServe(*procurarChave(caminho), config[caminho].valor);
}

void conferirCodigoDoEstado(const ArquivoConfig &config, const Estado &estado,
                            Relatorio &relatorio) {
    constexpr std::string_view kCodigo = R"(IDE\cUF)";
    const ValorConfig &codigo = config[kCodigo];
    if (!serve(config, kCodigo) || codigo.valor == estado.codigo) return;
    const Estado *outro = procurarEstadoPorCodigo(codigo.valor);
    relatorio.registrar(
        {"uf-codigo", std::string(kCodigo), codigo.linha,
         juntar({codigo.valor, " é o código de ", outro->uf, ", mas ", kUf, " é ", estado.uf}),
         juntar({"O código de ", estado.uf, " é ", estado.codigo, ": zel config gravar '", kCodigo,
                 "' ", estado.codigo})});
}

void conferirMunicipio(const ArquivoConfig &config, const Estado &estado, std::string_view caminho,
                       Relatorio &relatorio) {
    const ValorConfig &codigo = config[caminho];
    if (!serve(config, caminho) || codigo.valor.empty() || codigo.valor.starts_with(estado.codigo))
        return;
    const Estado *outro = procurarEstadoPorCodigo(codigo.valor.substr(0, 2));
    relatorio.registrar(
        {"municipio-uf", std::string(caminho), codigo.linha,
         juntar({codigo.valor, " é de ", outro != nullptr ? outro->uf : "nenhum estado", ", mas ",
                 kUf, " é ", estado.uf}),
         juntar({"Escreva o código IBGE do município da loja; os de ", estado.uf, " começam com ",
                 estado.codigo, "."})});
}

// "9", "8 ou 9".
std::string tamanhosDe(const Estado &estado) {
    const auto [primeiro, outro] = estado.tamanhos;
    return std::to_string(primeiro) + (outro == 0 ? "" : " ou " + std::to_string(outro));
}

void conferirInscricao(const ArquivoConfig &config, const Estado &estado, Relatorio &relatorio) {
    constexpr std::string_view kIe = R"(EMIT\IE)";
    const ValorConfig &ie = config[kIe];
    if (!serve(config, kIe)) return;
    if (!tamanhoDeIe(estado, ie.valor))
        relatorio.registrar({"ie-tamanho", std::string(kIe), ie.linha,
                             juntar({"\"", ie.valor, "\" tem ", std::to_string(ie.valor.size()),
                                     " dígitos; em ", estado.uf, " são ", tamanhosDe(estado)}),
                             "Copie a inscrição estadual do cadastro da loja, com os zeros à "
                             "esquerda e sem pontos."});
    else if (!digitosDeIe(estado, ie.valor))
        relatorio.registrar(
            {"ie-digito", std::string(kIe), ie.linha,
             juntar({"\"", ie.valor, "\": o dígito verificador não confere com a regra de ",
                     estado.uf}),
             "Confira a inscrição estadual dígito por dígito."});
}

void conferirEndereco(const ArquivoConfig &config, const Estado &estado, Relatorio &relatorio) {
    constexpr std::string_view kNome = R"(EMIT\ENDEREMIT\xMun)", kCep = R"(EMIT\ENDEREMIT\CEP)";
    const ValorConfig &nome = config[kNome], &cep = config[kCep];
    const std::string_view certo = nomeDoMunicipio(config[R"(EMIT\ENDEREMIT\cMun)"].valor);
    if (serve(config, kNome) && !certo.empty() && !mesmoNome(nome.valor, certo))
        relatorio.registrar(
            {"municipio-nome", std::string(kNome), nome.linha,
             juntar({mostrar(*procurarChave(kNome), nome.valor),
                     ", mas EMIT\\ENDEREMIT\\cMun é de ", certo}),
             juntar(
                 {"Se o código está certo: zel config gravar '", kNome, "' '",
                  trocar(std::string(certo), "'", R"('\'')"),
                  "'. Senão corrija o código; um município que mudou de nome fica com o novo."})});
    const Estado *doCep = estadoDoCep(cep.valor);
    if (serve(config, kCep) && doCep != nullptr && doCep->uf != estado.uf)
        relatorio.registrar(
            {"cep-uf", std::string(kCep), cep.linha,
             juntar({cep.valor, " é de ", doCep->uf, ", mas ", kUf, " é ", estado.uf}),
             "Confira o CEP da loja."});
}

// What an item is sold with when the till names no NCM.
void conferirNcm(const ArquivoConfig &config, Relatorio &relatorio) {
    constexpr std::string_view kNcm = R"(PROD\NCM)";
    const ValorConfig &ncm = config[kNcm];
    const std::string remedio =
        juntar({"Grave o da mercadoria que a loja mais vende: zel config gravar '", kNcm,
                "' NCM, e dê o de cada item ao vender."});
    if (ncm.valor == procurarChave(kNcm)->padrao)
        relatorio.registrar(
            {"ncm-fabrica", std::string(kNcm), ncm.linha,
             juntar({ncm.valor, " é o de fábrica, de caixas de plástico: vai em todo "
                                "item vendido sem o seu"}),
             remedio});
    else if (serve(config, kNcm) && ncm.valor.size() == 8 && !ehNcm(ncm.valor))
        relatorio.registrar({"ncm-inexistente", std::string(kNcm), ncm.linha,
                             juntar({ncm.valor, ": nenhum NCM começa assim"}), remedio});
}

// As the library writes it: hours west of Greenwich, of the system or as configured.
void conferirFuso(const ArquivoConfig &config, Relatorio &relatorio) {
    constexpr std::string_view kUtilizar = R"(CONFIGURACAO\TIMEZONESERVIDOR\Utilizar)";
    constexpr std::string_view kValor = R"(CONFIGURACAO\TIMEZONESERVIDOR\Valor)";
    constexpr long kHora = 3600;
    const bool configurado = config[kUtilizar].valor == "1";
    const std::string_view chave = configurado ? kValor : kUtilizar;
    std::time_t agora = std::time(nullptr);
    std::tm local{};
    ::localtime_r(&agora, &local);
    const auto horas =
        configurado ? lerInteiro(config[kValor].valor).value_or(0) : -local.tm_gmtoff / kHora;
    const std::string fuso = juntar({"-", comZeros(std::to_string(horas), 2), ":00"});
    if (!serve(config, chave) || fusoDoBrasil(fuso)) return;
    relatorio.registrar({"fuso-estranho", std::string(chave), config[chave].linha,
                         juntar({configurado ? "a hora das notas sai com "
                                             : "vale o fuso do sistema: a hora das notas sai com ",
                                 fuso, "; o Brasil vai de -02:00 a -05:00"}),
                         std::string(remedioDoFuso())});
}

bool ehDeHomologacao(const std::string &endereco) {
    for (const std::string_view sinal : {"homolog", "hml.", "//hom.", ".hom.", "//homnfce"})
        if (endereco.find(sinal) != endereco.npos) return true;
    return false;
}

// The state whose domain (".sp.gov.br") the address has. Rio Grande do Sul serves other states too.
const Estado *estadoDoEndereco(const std::string &endereco) {
    const std::size_t fim = endereco.find(".gov.br");
    if (fim == endereco.npos || fim < 3 || endereco[fim - 3] != '.') return nullptr;
    std::string uf = endereco.substr(fim - 2, 2);
    for (char &letra : uf)
        letra = static_cast<char>(letra - 'a' + 'A');
    return uf == "RS" ? nullptr : procurarEstado(uf);
}

void conferirEndereco(const ArquivoConfig &config, const Estado &estado, bool producao,
                      Relatorio &relatorio) {
    const std::string caminho =
        juntar({"URLS\\", estado.uf, producao ? "\\Producao" : "\\Homologacao"});
    const ValorConfig &valor = config[caminho];
    if (!serve(config, caminho)) return;
    const Gravidade maximo = producao ? Gravidade::kErro : Gravidade::kAviso;
    const std::string remedio =
        juntar({"Grave a página que a SEFAZ de ", estado.uf,
                " publica para o QR Code: zel config gravar '", caminho, "' ENDERECO"});
    const std::string endereco = minusculas(valor.valor);
    const Estado *outro = estadoDoEndereco(endereco);
    if (valor.valor.empty())
        relatorio.registrar({"endereco-ausente", caminho, valor.linha,
                             "está vazia: o QR Code sai sem endereço", remedio},
                            maximo);
    else if (outro != nullptr && outro->uf != estado.uf)
        relatorio.registrar(
            {"endereco-estado", caminho, valor.linha,
             juntar({mostrar(*procurarChave(caminho), valor.valor), " é de ", outro->uf}), remedio},
            maximo);
    else if (producao && ehDeHomologacao(endereco))
        relatorio.registrar(
            {"endereco-ambiente", caminho, valor.linha,
             juntar({mostrar(*procurarChave(caminho), valor.valor), " é a página de homologação"}),
             remedio});
}

void conferirToken(const ArquivoConfig &config, bool producao, Relatorio &relatorio) {
    const ValorConfig &token = config[kToken];
    if (!token.valor.empty()) return;
    relatorio.registrar({"token-ausente", std::string(kToken), token.linha,
                         "está vazia: o QR Code sai com um código de segurança errado",
                         juntar({"Peça o CSC à SEFAZ do estado e grave-o, com o número dele em "
                                 "CONFIGURACAO\\IDTokenSefaz. Para digitá-lo depois do comando:\n"
                                 "zel config gravar '",
                                 kToken, "' -"})},
                        producao ? Gravidade::kErro : Gravidade::kAviso);
}

// The two elements share one value in memory.
void conferirEnderecoCompartilhado(const ArquivoConfig &config, Relatorio &relatorio) {
    const ElementoConfig *anterior = nullptr;
    for (const ElementoConfig &elemento : config.elementos()) {
        const std::string_view caminho = elemento.chave->caminho;
        if (elemento.ignorado ||
            (caminho != R"(URLS\AC\Producao)" && caminho != R"(URLS\RS\Producao)"))
            continue;
        if (anterior != nullptr && anterior->valor != elemento.valor)
            relatorio.registrar(
                {"endereco-compartilhado", std::string(anterior->chave->caminho), anterior->linha,
                 juntar({"vale ", mostrar(*elemento.chave, elemento.valor), ", de ", caminho}),
                 "AC e RS guardam um só endereço de produção: escreva o da loja "
                 "nas duas chaves."});
        anterior = &elemento;
    }
}

void conferirEmissao(const ArquivoConfig &config, Relatorio &relatorio) {
    const ValorConfig &tipo = config[R"(IDE\tpEmis)"];
    if (tipo.valor == "9")
        relatorio.registrar({"contingencia-ligada", R"(IDE\tpEmis)", tipo.linha,
                             "9: toda nota sai em contingência off-line",
                             R"(Com a conexão de volta: zel config gravar 'IDE\tpEmis' 1)"});
    const ValorConfig &numero = config[kNumero];
    if (lerInteiro(numero.valor) == kMaiorNumero)
        relatorio.registrar({"numero-esgotado", std::string(kNumero), numero.linha,
                             "999999999 é o último número da série",
                             R"(Comece outra série: grave IDE\Serie e IDE\nNF 0.)"});
    const ValorConfig &historico = config[R"(CONFIGURACAO\HistoricoXML)"];
    if (historico.valor == "1" && config[R"(CONFIGURACAO\PathXMLEnvio)"].valor.empty())
        relatorio.registrar({"historico-sem-diretorio", R"(CONFIGURACAO\HistoricoXML)",
                             historico.linha, "1, mas CONFIGURACAO\\PathXMLEnvio está vazia",
                             "Grave em CONFIGURACAO\\PathXMLEnvio o diretório das cópias, com / no "
                             "fim."});
}

} // namespace

void conferirEmitente(const ArquivoConfig &config, Relatorio &relatorio) {
    conferirEmissao(config, relatorio);
    conferirFuso(config, relatorio);
    conferirNcm(config, relatorio);
    const Estado *estado = procurarEstado(config[kUf].valor);
    if (estado == nullptr) return;
    conferirCodigoDoEstado(config, *estado, relatorio);
    conferirMunicipio(config, *estado, R"(EMIT\ENDEREMIT\cMun)", relatorio);
    conferirMunicipio(config, *estado, R"(IDE\cMunFG)", relatorio);
    conferirEndereco(config, *estado, relatorio);
    conferirInscricao(config, *estado, relatorio);
}

void conferirAmbiente(const ArquivoConfig &config, Relatorio &relatorio) {
    const ValorConfig &ambiente = config[kAmbiente];
    const bool producao = ambiente.valor == "1";
    if (ambiente.valor == "3")
        relatorio.registrar(
            {"ambiente-indefinido", std::string(kAmbiente), ambiente.linha,
             "3, o valor de fábrica: as notas saem em homologação, e os pedidos levam o 3",
             juntar({"Para homologar: zel config gravar '", kAmbiente,
                     "' 2\nPara emitir de verdade: zel config gravar '", kAmbiente, "' 1"})});
    else if (serve(config, kAmbiente) && !producao)
        relatorio.registrar(
            {"ambiente-homologacao", std::string(kAmbiente), ambiente.linha,
             juntar({ambiente.valor, ": as notas não têm valor fiscal"}),
             juntar({"Para emitir de verdade: zel config gravar '", kAmbiente, "' 1"})});
    conferirToken(config, producao, relatorio);
    conferirEnderecoCompartilhado(config, relatorio);
    if (const Estado *estado = procurarEstado(config[kUf].valor))
        conferirEndereco(config, *estado, producao, relatorio);
}

void conferirConfig(const ArquivoConfig &config, Relatorio &relatorio) {
    for (const ElementoConfig &elemento : config.elementos())
        if (!elemento.ignorado)
            conferirValor(*elemento.chave, elemento.valor, elemento.linha, relatorio);
    // What would be said of defaults is not the shop's fault.
    if (!config.lidaInteira()) return;
    conferirEmitente(config, relatorio);
    conferirAmbiente(config, relatorio);
    conferirImpostos(config, relatorio);
}

} // namespace zel::aplicativo
