// SPDX-License-Identifier: MIT
#include "Fonte.h"

#include "comum/Arquivo.h"

#include <cairo-ft.h>
#include FT_OUTLINE_H
#include <initializer_list>
#include <new>
#include <string_view>
#include <utility>

namespace zel::cupom {

namespace {

struct ParDeArquivos {
    const char *normal;
    const char *negrito;
};

// Where Debian, Fedora and Arch install them.
constexpr ParDeArquivos kConhecidos[] = {
    {"/usr/share/fonts/truetype/dejavu/DejaVuSansMono.ttf",
     "/usr/share/fonts/truetype/dejavu/DejaVuSansMono-Bold.ttf"},
    {"/usr/share/fonts/dejavu-sans-mono-fonts/DejaVuSansMono.ttf",
     "/usr/share/fonts/dejavu-sans-mono-fonts/DejaVuSansMono-Bold.ttf"},
    {"/usr/share/fonts/TTF/DejaVuSansMono.ttf", "/usr/share/fonts/TTF/DejaVuSansMono-Bold.ttf"},
    {"/usr/share/fonts/truetype/liberation/LiberationMono-Regular.ttf",
     "/usr/share/fonts/truetype/liberation/LiberationMono-Bold.ttf"},
    {"/usr/share/fonts/liberation-mono/LiberationMono-Regular.ttf",
     "/usr/share/fonts/liberation-mono/LiberationMono-Bold.ttf"},
};

// A face together with the FreeType library that it belongs to. It lives as long as cairo, which
// keeps used fonts for a while, refers to it.
class Aberta {
public:
    explicit Aberta(const std::string &arquivo) {
        if (FT_Init_FreeType(&biblioteca_) != 0) throw std::bad_alloc();
        if (!comum::ehArquivo(arquivo) || FT_New_Face(biblioteca_, arquivo.c_str(), 0, &face_) != 0)
            face_ = nullptr;
    }
    ~Aberta() {
        if (face_ != nullptr) FT_Done_Face(face_);
        FT_Done_FreeType(biblioteca_);
    }
    Aberta(const Aberta &) = delete;
    Aberta &operator=(const Aberta &) = delete;

    FT_Face face() const { return face_; }

    bool serve() const {
        return face_ != nullptr && FT_IS_SCALABLE(face_) && FT_IS_FIXED_WIDTH(face_) &&
               face_->units_per_EM > 0 && face_->max_advance_width > 0 &&
               FT_Select_Charmap(face_, FT_ENCODING_UNICODE) == 0;
    }

private:
    FT_Library biblioteca_ = nullptr;
    FT_Face face_ = nullptr;
};

void soltarAberta(void *aberta) {
    delete static_cast<Aberta *>(aberta);
}

const cairo_user_data_key_t kChaveDaAberta{};

// Path data of SVG, as FreeType names the parts of an outline.
struct Contorno {
    std::string dados;
    bool aberto = false;

    void por(char comando, std::initializer_list<const FT_Vector *> pontos) {
        dados.push_back(comando);
        const char *separador = "";
        for (const FT_Vector *ponto : pontos) {
            dados.append(separador).append(std::to_string(ponto->x));
            dados.append(" ").append(std::to_string(ponto->y));
            separador = " ";
        }
    }
    void fechar() {
        if (aberto) dados.push_back('Z');
        aberto = false;
    }
};

Contorno &contornoEm(void *onde) {
    return *static_cast<Contorno *>(onde);
}

constexpr FT_Outline_Funcs kPartes{
    [](const FT_Vector *para, void *onde) {
        contornoEm(onde).fechar();
        contornoEm(onde).por('M', {para});
        contornoEm(onde).aberto = true;
        return 0;
    },
    [](const FT_Vector *para, void *onde) {
        contornoEm(onde).por('L', {para});
        return 0;
    },
    [](const FT_Vector *controle, const FT_Vector *para, void *onde) {
        contornoEm(onde).por('Q', {controle, para});
        return 0;
    },
    [](const FT_Vector *controle, const FT_Vector *outro, const FT_Vector *para, void *onde) {
        contornoEm(onde).por('C', {controle, outro, para});
        return 0;
    },
    0,
    0,
};

std::optional<Fonte> abrirFonte(const std::string &arquivo) {
    auto aberta = std::make_unique<Aberta>(arquivo);
    if (!aberta->serve()) return {};
    Fonte fonte;
    for (unsigned long c = 0; c < fonte.glifos.size(); ++c)
        fonte.glifos[c] = FT_Get_Char_Index(aberta->face(), c); // ISO-8859-1 begins Unicode
    fonte.avanco = static_cast<double>(aberta->face()->max_advance_width) /
                   static_cast<double>(aberta->face()->units_per_EM);
    fonte.ft = aberta->face();
    fonte.face.reset(cairo_ft_font_face_create_for_ft_face(aberta->face(), FT_LOAD_NO_HINTING));
    if (cairo_font_face_set_user_data(fonte.face.get(), &kChaveDaAberta, aberta.get(),
                                      &soltarAberta) != CAIRO_STATUS_SUCCESS)
        throw std::bad_alloc();
    static_cast<void>(aberta.release()); // cairo's now
    return fonte;
}

} // namespace

std::string contornoDe(const Fonte &fonte, unsigned long glifo) {
    Contorno contorno;
    if (FT_Load_Glyph(fonte.ft, static_cast<FT_UInt>(glifo), FT_LOAD_NO_SCALE) != 0) return {};
    if (fonte.ft->glyph->format != FT_GLYPH_FORMAT_OUTLINE) return {};
    if (FT_Outline_Decompose(&fonte.ft->glyph->outline, &kPartes, &contorno) != 0) return {};
    contorno.fechar();
    return std::move(contorno.dados);
}

std::optional<Fontes> abrirFontes(const std::string &normal, const std::string &negrito) {
    Fontes fontes;
    std::optional<Fonte> fonte = abrirFonte(normal);
    if (!fonte) return {};
    fontes.normal = std::move(*fonte);
    if (negrito.empty()) return fontes;
    fontes.negrito = abrirFonte(negrito);
    if (!fontes.negrito) return {};
    return fontes;
}

std::optional<Fontes> acharFontes() {
    for (const ParDeArquivos &par : kConhecidos) {
        if (auto fontes = abrirFontes(par.normal, par.negrito)) return fontes;
        if (auto fontes = abrirFontes(par.normal, {})) return fontes;
    }
    return {};
}

} // namespace zel::cupom
