// SPDX-License-Identifier: MIT
#include "imposto/Selecao.h"

#include "config/Registro.h"

#include <array>
#include <span>

namespace zel {

namespace {

// A group and the key that chooses it when it is filled.
struct Candidato {
    std::string_view grupo;
    Chave chave;
};

constexpr std::array<Candidato, 17> kIcms{{
    {"ICMS00", R"(IMPOSTO\ICMS\ICMS00\Orig)"_chave},
    {"ICMS10", R"(IMPOSTO\ICMS\ICMS10\Orig)"_chave},
    {"ICMS20", R"(IMPOSTO\ICMS\ICMS20\Orig)"_chave},
    {"ICMS30", R"(IMPOSTO\ICMS\ICMS30\Orig)"_chave},
    {"ICMS40", R"(IMPOSTO\ICMS\ICMS40\Orig)"_chave},
    {"ICMS51", R"(IMPOSTO\ICMS\ICMS51\Orig)"_chave},
    {"ICMS60", R"(IMPOSTO\ICMS\ICMS60\Orig)"_chave},
    {"ICMS70", R"(IMPOSTO\ICMS\ICMS70\Orig)"_chave},
    {"ICMS90", R"(IMPOSTO\ICMS\ICMS90\Orig)"_chave},
    {"ICMSPart", R"(IMPOSTO\ICMS\ICMSPART\Orig)"_chave},
    {"ICMSST", R"(IMPOSTO\ICMS\ICMSST\Orig)"_chave},
    {"ICMSSN101", R"(IMPOSTO\ICMS\ICMSSN101\Orig)"_chave},
    {"ICMSSN102", R"(IMPOSTO\ICMS\ICMSSN102\Orig)"_chave},
    {"ICMSSN201", R"(IMPOSTO\ICMS\ICMSSN201\Orig)"_chave},
    {"ICMSSN202", R"(IMPOSTO\ICMS\ICMSSN202\Orig)"_chave},
    {"ICMSSN500", R"(IMPOSTO\ICMS\ICMSSN500\Orig)"_chave},
    {"ICMSSN900", R"(IMPOSTO\ICMS\ICMSSN900\Orig)"_chave},
}};

// The substitution groups have no CST key, so no configuration can choose them.
constexpr std::array<Candidato, 4> kPis{{
    {"PiSAliq", R"(IMPOSTO\PIS\PISALIQ\CST)"_chave},
    {"PISQtde", R"(IMPOSTO\PIS\PISQTDE\CST)"_chave},
    {"PISNT", R"(IMPOSTO\PIS\PISNT\CST)"_chave},
    {"PISOutr", R"(IMPOSTO\PIS\PISOUTR\CST)"_chave},
}};

constexpr std::array<Candidato, 4> kCofins{{
    {"COFINSAliq", R"(IMPOSTO\COFINS\COFINSALIQ\CST)"_chave},
    {"COFINSQtde", R"(IMPOSTO\COFINS\COFINSQTDE\CST)"_chave},
    {"COFINSNT", R"(IMPOSTO\COFINS\COFINSNT\CST)"_chave},
    {"COFINSOutr", R"(IMPOSTO\COFINS\COFINSOUTR\CST)"_chave},
}};

std::optional<Selecao> selecionar(const Preset &preset, std::span<const Candidato> candidatos) {
    if (!preset.grupo.empty()) return Selecao{preset.grupo, Fonte::kConfTemp};
    for (const auto &candidato : candidatos)
        if (!valorConfig(candidato.chave).empty()) return Selecao{candidato.grupo, Fonte::kZelXml};
    return {};
}

} // namespace

std::optional<Selecao> fnIdentificarImpostoICMS(const Preset &preset) {
    return selecionar(preset, kIcms);
}

std::optional<Selecao> fnIdentificarImpostoPIS(const Preset &preset) {
    return selecionar(preset, kPis);
}

std::optional<Selecao> fnIdentificarImpostoCOFINS(const Preset &preset) {
    return selecionar(preset, kCofins);
}

} // namespace zel
