// SPDX-License-Identifier: MIT
// The check of a caller's tag text against its section's template: names, order, required elements,
// lengths of values. Runs on every sale, so it walks template and input once, side by side.
#pragma once

#include "secao/Secao.h"
#include "secao/Tag.h"

#include <string_view>

namespace zel {

// Checks the children of `entrada` against those of `molde`, rewrites their names as the template
// spells them (they match without regard to case) and copies the template's limits onto them. 1;
// ZEL_TAG_NAO_CONFORME a value outside its limits, or an element that the template does not hold
// from the current position on; ZEL_TAG_SEM_ELEMENTOS no elements at all, or a group where the
// template has a leaf; ZEL_TAG_OBRIGATORIA a required element is missing. On a failure `entrada` is
// partly rewritten.
int fnVerificaConformidade_base_raiz(const ST_tagZEL &molde, ST_tagZEL &entrada);

// Checks the children of a section's root, built by an operation, in place. ZEL_OK; ZEL_RECUSADO
// templates that are not built; ZEL_TAG_NAO_CONFORME to ZEL_TAG_OBRIGATORIA as above.
int verificarSecao(Secao secao, ST_tagZEL &raiz);

// Parses and checks a caller's text; `resultado` becomes a root named after the section ("VENDA")
// and is untouched on failure. Line ends and tabs in the text count as blanks, other control bytes
// as nothing. ZEL_OK; ZEL_RECUSADO malformed text, or templates that are not built;
// ZEL_TAG_NAO_CONFORME to ZEL_TAG_OBRIGATORIA as above.
int fnVerificarFormatarTAG_ZEL(Secao secao, std::string_view texto, ST_tagZEL &resultado);

} // namespace zel
