// SPDX-License-Identifier: MIT
// Printer bytes: what a printer of each profile makes of them.
#include "EscPos.h"
#include "Emulador.h"
#include "EscPosFigura.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <stdexcept>

using namespace zel::cupom;

namespace {

Perfil perfilDe(std::string_view texto) {
    std::string motivo;
    auto perfil = lerPerfil(texto, motivo);
    if (!perfil) throw std::runtime_error(motivo);
    return *perfil;
}

std::string textoDo(std::string_view nome) {
    return std::string(textoDoPerfil(nome).value());
}

std::string bytesDe(const Cupom &cupom, const Perfil &perfil, int colunas,
                    const ImagemCinza *logotipo = nullptr) {
    return gerarEscPos(cupom, {perfil, colunas, logotipo, false}).value();
}

const Dialeto &dialetoDe(std::string_view perfil) {
    return *std::find_if(dialetos().begin(), dialetos().end(),
                         [=](const Dialeto &dialeto) { return dialeto.perfil == perfil; });
}

// The bytes that a manual would write like that; {data} is "conteudo".
std::string notacao(std::string_view texto) {
    std::string bytes;
    Comando::ler(texto).value().escrever(bytes, {0, 0, 0, 0, "conteudo"});
    return bytes;
}

// What the direct picture must be of, to show what such a printer can print.
class Adaptacao {
public:
    Adaptacao(const Dialeto &dialeto, const Perfil &perfil)
        : dialeto_(dialeto), pagina_(*perfil.pagina) {}

    Cupom adaptar(const Cupom &cupom) {
        for (const Bloco &bloco : cupom.blocos)
            std::visit([this](auto b) { por(std::move(b)); }, bloco);
        return cupom_;
    }

private:
    void por(Linha linha) {
        brancas_ = linha.trechos.empty() ? brancas_ + 1 : 0;
        for (Trecho &trecho : linha.trechos) {
            trecho.estilo.italico = trecho.estilo.italico && dialeto_.italico;
            trecho.texto = comoSaem(std::move(trecho.texto), pagina_);
        }
        cupom_.blocos.emplace_back(std::move(linha));
    }
    void por(Corte corte) {
        const int faltam = dialeto_.linhasAntesDoCorte - brancas_;
        if (faltam > 0) cupom_.blocos.emplace_back(Avanco{faltam});
        if (dialeto_.corta) cupom_.blocos.emplace_back(corte);
        brancas_ = 0;
    }
    void por(Avanco avanco) {
        brancas_ += avanco.linhas;
        cupom_.blocos.emplace_back(avanco);
    }
    template <class Outro>
    void por(Outro bloco) {
        brancas_ = 0;
        cupom_.blocos.emplace_back(std::move(bloco));
    }

    const Dialeto &dialeto_;
    const PaginaDeCodigo &pagina_;
    Cupom cupom_;
    int brancas_ = 0;
};

} // namespace

TEST(EscPos, papel_impresso_e_a_figura_e_seus_qr_codes_se_leem) {
    const ImagemCinza logotipo = pontilhar(logotipoDoTeste(200, 80));
    ASSERT_EQ(perfisEmbutidos().size(), dialetos().size());
    int quantos = 0;
    for (const Dialeto &dialeto : dialetos()) {
        const Perfil perfil = perfilDe(textoDo(dialeto.perfil));
        EXPECT_EQ(perfil.milimetros, dialeto.papel.milimetros);
        EXPECT_EQ(perfil.pontos, dialeto.papel.larguraUtil);
        for (const Recibo &recibo : recibos()) {
            if (recibo.papel->colunas > dialeto.papel.colunas) continue;
            SCOPED_TRACE(recibo.nome + " on " + perfil.nome);
            const Cupom cupom = ler(recibo.texto);
            const ImagemCinza *logo = recibo.comLogotipo ? &logotipo : nullptr;
            const Impresso impresso =
                emular(dialeto, bytesDe(cupom, perfil, recibo.papel->colunas, logo));
            const ImagemCinza esperada =
                desenharCupom(Adaptacao(dialeto, perfil).adaptar(cupom), dialeto.papel, logo)
                    .imagem;
            EXPECT_TRUE(igual(esperada, impresso.imagem,
                              "impresso_" + recibo.nome + "_" + std::string(dialeto.perfil)));
            EXPECT_EQ(qrsDe(impresso.imagem), qrsDe(cupom));
            ++quantos;
        }
    }
    EXPECT_GE(quantos, 4 * 18 + 2 * 8);
}

// Each character through each code page, converted back by the C library's tables.
TEST(EscPos, letras_saem_como_sao_ou_simples) {
    constexpr std::string_view kFaltamNaCp860 =
        "\xA4\xA5\xA6\xA7\xA8\xA9\xAD\xAE\xAF\xB3\xB4\xB6\xB8\xB9\xBE\xC4\xC5\xC6\xCB\xCE\xCF\xD0"
        "\xD6\xD7\xD8\xDB\xDD\xDE\xE4\xE5\xE6\xEB\xEE\xEF\xF0\xF6\xF8\xFB\xFD\xFE\xFF";
    constexpr std::string_view kSimples = "$Y|S\"C-R-3'P,1?AAAEIIDOxOUYPaaaeiidoouypy";
    std::string todas;
    for (int c = 0x20; c < 0x100; ++c)
        if (c < 0x7F || c >= 0xA0) todas += static_cast<char>(c);
    for (const PaginaDeCodigo &pagina : kPaginasDeCodigo) {
        Perfil perfil = perfilDe(textoDo("generico-80mm"));
        perfil.pagina = &pagina;
        perfil.numeroDaPagina = 99;
        Dialeto dialeto = dialetos().front();
        dialeto.paginas = {{99, pagina.nome.data()}};
        Cupom cupom;
        for (std::size_t i = 0; i < todas.size(); i += 40)
            cupom.blocos.emplace_back(Linha{{{todas.substr(i, 40), {}}}});
        const Impresso impresso = emular(dialeto, bytesDe(cupom, perfil, 48));
        EXPECT_EQ(impresso.letras, comoSaem(todas, pagina)) << pagina.nome;
    }
    const auto *const cp860 = std::ranges::find(kPaginasDeCodigo, "CP860", &PaginaDeCodigo::nome);
    EXPECT_EQ(comoSaem(std::string(kFaltamNaCp860), *cp860), kSimples);
}

// Every command costs time on a slow line; a forgotten one prints the rest of the receipt wrongly.
TEST(EscPos, so_o_que_muda_se_diz) {
    const struct {
        std::string_view perfil, texto, bytes;
    } casos[] = {
        {"generico-80mm", "", "ESC @ FS . ESC t 2"},
        {"generico-80mm", "a\n\nb", "ESC @ FS . ESC t 2 a LF ESC d 1 b LF"},
        {"generico-80mm", "<b>a</b>b", "ESC @ FS . ESC t 2 ESC E 1 a ESC E 0 b LF"},
        {"generico-80mm", "<b>a\nb</b>", "ESC @ FS . ESC t 2 ESC E 1 a LF b LF ESC E 0"},
        {"generico-80mm", "<xl>a</xl><e>b", "ESC @ FS . ESC t 2 GS ! 17 a GS ! 16 b LF GS ! 0"},
        {"generico-80mm", "<c>a</c>b", "ESC @ FS . ESC t 2 ESC M 1 a ESC M 0 b LF"},
        {"generico-80mm", "<ce>a\nb</ce>\nc", "ESC @ FS . ESC t 2 ESC a 1 a LF b LF ESC a 0 c LF"},
        {"generico-80mm", "<i>a</i>b", "ESC @ FS . ESC t 2 a b LF"},
        {"generico-58mm", "<c>a</c>b", "ESC @ FS . ESC t 2 ESC M 1 a b LF ESC M 0"},
        {"escpos-modo-unico", "<b><c>a</b></c>\xA7", "ESC @ ESC t 3 ESC ! 9 a ESC ! 0 S LF"},
        {"bematech-esc-bema", "<sl>2</sl><b><c>a</b></c>b",
         "ESC @ ESC t 2 LF LF SI ESC E a DC2 ESC F b LF"},
        {"bematech-esc-bema", "a<gui></gui>\n\n<gui></gui>",
         "ESC @ ESC t 2 a LF LF LF LF LF ESC m LF LF LF LF ESC m"},
        {"star-line-mode", "<da>\xE7", "ESC @ ESC GS t 32 ESC h 1 231 LF ESC h 0"},
        {"star-line-mode", "<sl>255</sl>", "ESC @ ESC GS t 32 ESC a 127 ESC a 127 ESC a 1"},
    };
    for (const auto &[perfil, texto, bytes] : casos)
        EXPECT_EQ(
            bytesDe(ler(texto), perfilDe(textoDo(perfil)), perfil == "generico-58mm" ? 42 : 48),
            notacao(bytes))
            << perfil << ": " << texto;

    const std::string zona = notacao("GS v 48 0 1 0 40 0") + std::string(40, '\0');
    EXPECT_EQ(bytesDe(ler("<ce><qrcode>conteudo</qrcode>"), perfilDe(textoDo("generico-80mm")), 48),
              notacao("ESC @ FS . ESC t 2") + zona +
                  notacao("ESC a 1 GS ( k 4 0 49 65 50 0 GS ( k 3 0 49 67 10 GS ( k 3 0 49 69 49 "
                          "GS ( k 11 0 49 80 48 {data} GS ( k 3 0 49 81 48 ESC a 0") +
                  zona);
}

// Where the command gives neither 25 mm nor a free zone at the sides, the code is printed as dots.
TEST(EscPos, qr_code_tem_25_mm_e_o_maior_modulo_que_papel_e_modelo_permitem) {
    const std::string maior(kMaiorQr, 'x'), muitos(30, 'x');
    const struct {
        std::string_view perfil;
        std::string texto;
        std::vector<int> modulos;
    } casos[] = {
        {"generico-80mm", "<ce><qrcode>u<lmodulo>16</lmodulo></qrcode>", {16}},
        {"generico-80mm", "<ce><qrcode>u</qrcode>", {10}},
        {"generico-80mm", "<ad><qrcode>u</qrcode>", {}},
        {"generico-80mm", "<ce><qrcode>" + maior + "</qrcode>", {3}},
        {"star-line-mode", "<ce><qrcode>u</qrcode>", {}},
        {"star-line-mode", "<ce><qrcode>" + muitos + "</qrcode>", {7}},
        {"star-line-mode", "<ce><qrcode>" + muitos + "<lmodulo>16</lmodulo></qrcode>", {8}},
        {"star-line-mode", "<ce><qrcode>" + maior + "</qrcode>", {3}},
        {"bematech-esc-bema", "<ce><qrcode>u</qrcode>", {10}},
    };
    for (const auto &[nome, texto, modulos] : casos) {
        const Impresso impresso =
            emular(dialetoDe(nome), bytesDe(ler(texto), perfilDe(textoDo(nome)), 48));
        EXPECT_EQ(impresso.modulos, modulos) << nome << texto.substr(0, 50);
        EXPECT_EQ(qrsDe(impresso.imagem), qrsDe(ler(texto)));
    }
}

TEST(EscPos, lado_de_um_qr_code_se_sabe_antes_de_o_fazer) {
    for (std::size_t bytes = 1; bytes <= kMaiorQr; bytes += bytes < 300 ? 1 : 7)
        ASSERT_EQ(ladoDoQr(bytes), gerarQr(std::string(bytes, '\xE7')).lado) << bytes;
    EXPECT_EQ(ladoDoQr(kMaiorQr), 177);
}

// What a model cannot do is done in another way, or left out.
TEST(EscPos, recurso_que_falta_nao_se_usa) {
    const Cupom cupom = ler("<bmp></bmp><ce><qrcode>ende\xE7o</qrcode></ce><gui></gui>");
    const ImagemCinza logotipo = pontilhar(logotipoDoTeste(100, 40));
    const Dialeto &dialeto = dialetos().front();
    const struct {
        std::vector<std::string_view> faltam;
        std::string_view logo, letras;
        std::size_t qrs;
        int imagens, guardados, cortes;
    } casos[] = {
        {{}, "raster", "", 1, 3, 0, 1}, // the blank dots around the code are two
        {{"qrCode"}, "raster", "", 0, 2, 0, 1},
        {{"qrCode", "bitImageRaster"}, "raster", "ende\xE7o", 0, 0, 0, 1},
        {{"paperPartCut", "paperFullCut"}, "raster", "", 1, 3, 0, 0},
        {{}, "stored", "", 1, 2, 1, 1},
    };
    for (const auto &[faltam, logo, letras, qrs, imagens, guardados, cortes] : casos) {
        std::string texto =
            trocar(textoDo(dialeto.perfil), "use.logo = raster", "use.logo = " + std::string(logo));
        for (const std::string_view recurso : faltam)
            texto =
                trocar(texto, std::string(recurso) + " = true", std::string(recurso) + " = false");
        const Impresso impresso = emular(dialeto, bytesDe(cupom, perfilDe(texto), 48, &logotipo));
        EXPECT_EQ(impresso.letras, letras);
        EXPECT_EQ(impresso.modulos.size(), qrs);
        EXPECT_EQ(impresso.imagens, imagens);
        EXPECT_EQ(impresso.logotiposGuardados, guardados);
        EXPECT_EQ(impresso.cortes, cortes);
    }
}

TEST(EscPos, gaveta_abre_uma_vez_onde_se_pede) {
    for (const Dialeto &dialeto : dialetos()) {
        const Perfil perfil = perfilDe(textoDo(dialeto.perfil));
        for (const bool abrir : {false, true}) {
            const auto bytes = gerarEscPos(ler("a<gui></gui>b"), {perfil, 42, nullptr, abrir});
            EXPECT_EQ(emular(dialeto, bytes.value()).gavetas, abrir ? 1 : 0) << dialeto.perfil;
        }
    }
}

TEST(EscPos, papel_tem_fim) {
    const Perfil perfil = perfilDe(textoDo("generico-58mm"));
    const std::pair<std::string_view, int> casos[] = {{"a\n", 20'000},
                                                      {"\n", 20'000},
                                                      {"<sl>255</sl>", 100},
                                                      {"<qrcode>u</qrcode>", 6'000},
                                                      {"aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa", 32'000},
                                                      {"<bmp></bmp>", 10'000}};
    const ImagemCinza logotipo = pontilhar(logotipoDoTeste(100, 40));
    for (const auto &[parte, vezes] : casos) {
        EXPECT_FALSE(gerarEscPos(ler(repetir(parte, vezes)), {perfil, 42, &logotipo, false}))
            << parte;
        EXPECT_TRUE(gerarEscPos(ler(repetir(parte, vezes / 50)), {perfil, 42, &logotipo, false}))
            << parte;
    }
}

// Dot by dot what the picture has, black from its half on; cut where it is cut.
TEST(EscPos, figura_impressa_e_a_figura) {
    const Dialeto &dialeto = dialetos().front();
    const Perfil perfil = perfilDe(textoDo(dialeto.perfil));
    const ImagemCinza logotipo = pontilhar(logotipoDoTeste(200, 80));
    for (const Recibo &recibo : recibos()) {
        if (recibo.papel->milimetros != 80) continue;
        const ImagemCinza *logo = recibo.comLogotipo ? &logotipo : nullptr;
        const auto [pagina, figura] = desenharTexto(recibo.texto, *recibo.papel, logo);
        const auto bytes = gerarEscPosFigura(pagina, {fontesDoTeste(), logo}, perfil, true);
        const Impresso impresso = emular(dialeto, bytes.value());
        const auto primeiro = impresso.imagem.pontos.begin() + 24 * figura.largura;
        EXPECT_TRUE(std::equal(figura.pontos.begin(), figura.pontos.end(), primeiro,
                               [](int a, int b) { return (a < 128) == (b < 128); }))
            << recibo.nome;
        EXPECT_EQ(impresso.gavetas, 1);
    }
    EXPECT_FALSE(imprimeFigura(perfilDe(textoDo("generico-58mm")), kPapeis[0]));
    EXPECT_TRUE(imprimeFigura(perfilDe(textoDo("generico-80mm-512")), kPapeis[1]));
}
