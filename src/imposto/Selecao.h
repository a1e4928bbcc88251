// SPDX-License-Identifier: MIT
// Which tax group an item gets: the preset of the application first, then the first group whose
// section of the configuration is filled. One group per tax, whatever else is configured.
#pragma once

#include "imposto/Presets.h"

#include <optional>
#include <string_view>

namespace zel {

// Where a group's codes and percentages come from: the preset or the configuration.
enum class Fonte { kConfTemp, kZelXml };

// The group's name as the selection spells it ("PiSAliq" with its small letter): compare it with a
// tag's name without regard to case.
struct Selecao {
    std::string_view grupo;
    Fonte fonte;
};

// The group in force for an item with that preset of the tax; none when neither a preset nor a
// section chooses one.
std::optional<Selecao> fnIdentificarImpostoICMS(const Preset &preset);
std::optional<Selecao> fnIdentificarImpostoPIS(const Preset &preset);
std::optional<Selecao> fnIdentificarImpostoCOFINS(const Preset &preset);

} // namespace zel
