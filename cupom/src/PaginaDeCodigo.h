// SPDX-License-Identifier: MIT
// The code pages of printers: which byte prints an ISO-8859-1 character, and which plain letter
// stands in for it where the page has none.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace zel::cupom {

// A code page is one row: its name in the printer-profile databases, and what it prints by the
// bytes up to 0xFF, the last of which is the last character; as its maker's manual shows it, so
// that it can be compared. What it lacks follows from that.
struct PaginaDeCodigo {
    std::string_view nome;
    std::u16string_view letras;
};

// ISO-8859-1 itself, and CP1252, which has the same characters from 0xA0 on.
constexpr std::u16string_view kLatin1 = u"\u00A0¡¢£¤¥¦§¨©ª«¬\u00AD®¯°±²³´µ¶·¸¹º»¼½¾¿"
                                        u"ÀÁÂÃÄÅÆÇÈÉÊËÌÍÎÏÐÑÒÓÔÕÖ×ØÙÚÛÜÝÞß"
                                        u"àáâãäåæçèéêëìíîïðñòóôõö÷øùúûüýþÿ";

// CP850; CP858 differs in a character that ISO-8859-1 does not have.
constexpr std::u16string_view kCp850 = u"ÇüéâäàåçêëèïîìÄÅÉæÆôöòûùÿÖÜø£Ø×ƒ"
                                       u"áíóúñÑªº¿®¬½¼¡«»░▒▓│┤ÁÂÀ©╣║╗╝¢¥┐"
                                       u"└┴┬├─┼ãÃ╚╔╩╦╠═╬¤ðÐÊËÈıÍÎÏ┘┌█▄¦Ì▀"
                                       u"ÓßÔÒõÕµþÞÚÛÙýÝ¯´\u00AD±‗¾¶§÷¸°¨·¹³²■\u00A0";

constexpr std::u16string_view kCp860 = u"ÇüéâãàÁçêÊèÍÔìÃÂÉÀÈôõòÚùÌÕÜ¢£Ù₧Ó"
                                       u"áíóúñÑªº¿Ò¬½¼¡«»░▒▓│┤╡╢╖╕╣║╗╝╜╛┐"
                                       u"└┴┬├─┼╞╟╚╔╩╦╠═╬╧╨╤╥╙╘╒╓╫╪┘┌█▄▌▐▀"
                                       u"αßΓπΣσµτΦΘΩδ∞φε∩≡±≥≤⌠⌡÷≈°∙·√ⁿ²■\u00A0";

constexpr std::u16string_view kCp437 = u"ÇüéâäàåçêëèïîìÄÅÉæÆôöòûùÿÖÜ¢£¥₧ƒ"
                                       u"áíóúñÑªº¿⌐¬½¼¡«»░▒▓│┤╡╢╖╕╣║╗╝╜╛┐"
                                       u"└┴┬├─┼╞╟╚╔╩╦╠═╬╧╨╤╥╙╘╒╓╫╪┘┌█▄▌▐▀"
                                       u"αßΓπΣσµτΦΘΩδ∞φε∩≡±≥≤⌠⌡÷≈°∙·√ⁿ²■\u00A0";

constexpr auto kPaginasDeCodigo = std::to_array<PaginaDeCodigo>({
    {"CP437", kCp437},
    {"CP850", kCp850},
    {"CP858", kCp850},
    {"CP860", kCp860},
    {"CP1252", kLatin1},
    {"ISO_8859-1", kLatin1},
});

// By character from 0xA0 to 0xFF: one plain letter or sign for each, so that columns stay columns.
constexpr std::string_view kLetrasSimples = " !cL$Y|S\"Ca<--R-"
                                            "o+23'uP.,1o>???\?"
                                            "AAAAAAACEEEEIIII"
                                            "DNOOOOOxOUUUUYPB"
                                            "aaaaaaaceeeeiiii"
                                            "dnooooo/ouuuuypy";
static_assert(kLetrasSimples.size() == 96);

// The byte that prints `c`, which is no control character.
constexpr char byteDe(const PaginaDeCodigo &pagina, char c) {
    const auto codigo = static_cast<unsigned char>(c);
    if (codigo < 0xA0) return c;
    const std::size_t onde = pagina.letras.find(static_cast<char16_t>(codigo));
    if (onde == pagina.letras.npos) return kLetrasSimples[codigo - 0xA0U];
    return static_cast<char>(0x100 - pagina.letras.size() + onde);
}

} // namespace zel::cupom
