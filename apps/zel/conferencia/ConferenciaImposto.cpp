// SPDX-License-Identifier: MIT
#include "conferencia/ConferenciaConfig.h"

#include "conferencia/Regras.h"
#include "leitura/TabelaChaves.h"
#include "leitura/Texto.h"

#include <array>
#include <span>
#include <string>
#include <vector>

namespace zel::aplicativo {

namespace {

// The key that chooses a group of the tax when it is filled.
struct Tributo {
    std::string_view grupo;
    std::string_view escolha;
};

constexpr Tributo kIcms{R"(IMPOSTO\ICMS)", "Orig"};
constexpr Tributo kPis{R"(IMPOSTO\PIS)", "CST"};
constexpr Tributo kCofins{R"(IMPOSTO\COFINS)", "CST"};

// What these groups write does not pass the library's own check of the item.
constexpr std::array<std::string_view, 2> kRecusados{"ICMS10", "ICMS30"};

std::string_view nomeDoGrupo(std::string_view grupo) {
    return grupo.substr(grupo.rfind('\\') + 1);
}

// Paths of the tax's groups that are filled, in file order, which is the order of choice.
std::vector<std::string_view> preenchidos(const ArquivoConfig &config, const Tributo &tributo) {
    std::vector<std::string_view> grupos;
    for (const LinhaChave &chave : kChaves) {
        const std::string_view grupo = chave.grupo();
        if (chave.nome() != tributo.escolha || !grupo.starts_with(tributo.grupo) ||
            grupo.size() == tributo.grupo.size() || grupo[tributo.grupo.size()] != '\\')
            continue;
        if (!config[chave.caminho].valor.empty()) grupos.push_back(grupo);
    }
    return grupos;
}

void conferirExigidas(const ArquivoConfig &config, std::string_view grupo, Relatorio &relatorio) {
    for (const LinhaChave &chave : kChaves) {
        const ValorConfig &valor = config[chave.caminho];
        if (chave.grupo() != grupo || !chave.tem(kExigida) || !valor.valor.empty()) continue;
        const std::string_view efeito = chave.tem(kAceitaVazio)
                                            ? " a exige: o item sai sem ICMS"
                                            : " a exige: a venda é recusada com -1";
        relatorio.registrar(
            {"grupo-incompleto", std::string(chave.caminho), valor.linha,
             juntar({"está vazia, e o grupo ", nomeDoGrupo(grupo), efeito}),
             juntar({"Permitido: ", chave.permitido, ". Exemplo: ", chave.exemplo})});
    }
}

void conferirEscondidos(std::span<const std::string_view> grupos, const Tributo &tributo,
                        Relatorio &relatorio) {
    for (const std::string_view grupo : grupos.subspan(1))
        relatorio.registrar(
            {"grupo-escondido", juntar({grupo, "\\", tributo.escolha}), 0,
             juntar({"o grupo está preenchido, mas vale ", nomeDoGrupo(grupos[0]), ", o primeiro"}),
             juntar({"Para usar este, esvazie ", grupos[0], "\\", tributo.escolha,
                     "; senão esvazie a chave deste."})});
}

void conferirRegime(const ArquivoConfig &config, std::string_view grupo, Relatorio &relatorio) {
    const ValorConfig &crt = config[R"(EMIT\CRT)"];
    const bool comCsosn = nomeDoGrupo(grupo).starts_with("ICMSSN");
    if (!valorServe(*procurarChave(R"(EMIT\CRT)"), crt.valor) || regimeServe(crt.valor, comCsosn))
        return;
    const std::string esvaziar = juntar({"zel config gravar '", grupo, "\\Orig' ''\n"});
    const std::string remedio =
        juntar({"Se o regime está certo, troque o grupo:\n", esvaziar,
                comCsosn ? "zel config gravar 'IMPOSTO\\ICMS\\ICMS00\\Orig' 0\n"
                           "zel config gravar 'IMPOSTO\\ICMS\\ICMS00\\CST' 00\n"
                           "zel config gravar 'IMPOSTO\\ICMS\\ICMS00\\modBC' 3"
                         : "zel config gravar 'IMPOSTO\\ICMS\\ICMSSN102\\Orig' 0\n"
                           "zel config gravar 'IMPOSTO\\ICMS\\ICMSSN102\\CSOSN' 102",
                "\n(o caso comum; confirme com o contador). Senão corrija EMIT\\CRT."});
    relatorio.registrar(
        {"crt-grupo", R"(EMIT\CRT)", crt.linha,
         juntar({"o regime é ", crt.valor, ", mas o grupo em uso é ", nomeDoGrupo(grupo), ", ",
                 comCsosn ? "do Simples Nacional" : "do regime normal",
                 ": a SEFAZ recusa as notas"}),
         remedio});
}

void conferirIcms(const ArquivoConfig &config, Relatorio &relatorio) {
    const auto grupos = preenchidos(config, kIcms);
    if (grupos.empty()) {
        relatorio.registrar(
            {"grupo-ausente", std::string(kIcms.grupo), 0,
             "nenhum grupo tem Orig: a venda sem imposto próprio é recusada com -1",
             "Preencha um grupo: no Simples Nacional, em geral ICMSSN102 com Orig 0 "
             "e CSOSN 102; no regime normal, ICMS00 com Orig 0, CST 00 e modBC 3."});
        return;
    }
    const std::string_view grupo = grupos.front();
    for (const std::string_view recusado : kRecusados)
        if (nomeDoGrupo(grupo) == recusado)
            relatorio.registrar({"grupo-recusado", std::string(grupo), 0,
                                 "a venda por este grupo é sempre recusada com -120",
                                 "Venda estes itens com aCFVenderXml_ZEL e esvazie o grupo."});
    conferirRegime(config, grupo, relatorio);
    conferirExigidas(config, grupo, relatorio);
    conferirEscondidos(grupos, kIcms, relatorio);
}

void conferirContribuicao(const ArquivoConfig &config, const Tributo &tributo,
                          Relatorio &relatorio) {
    const auto grupos = preenchidos(config, tributo);
    if (grupos.empty()) return;
    const std::string_view grupo = grupos.front();
    if (nomeDoGrupo(grupo) == "PISQTDE")
        relatorio.registrar({"grupo-cst", juntar({grupo, "\\CST"}), 0,
                             "o código que vai ao documento é o de PISALIQ, vazio: 00",
                             "Fixe o PIS de cada item com aCFConfPisQtde_ZEL."});
    conferirExigidas(config, grupo, relatorio);
    conferirEscondidos(grupos, tributo, relatorio);
}

} // namespace

void conferirImpostos(const ArquivoConfig &config, Relatorio &relatorio) {
    conferirIcms(config, relatorio);
    conferirContribuicao(config, kPis, relatorio);
    conferirContribuicao(config, kCofins, relatorio);
}

} // namespace zel::aplicativo
