// SPDX-License-Identifier: MIT
// Printer bytes: what a printer of each profile makes of them.
#include "EscPos.h"
#include "Emulador.h"

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
    explicit Adaptacao(const Dialeto &dialeto) : dialeto_(dialeto) {}

    Cupom adaptar(const Cupom &cupom) {
        for (const Bloco &bloco : cupom.blocos)
            std::visit([this](auto b) { por(std::move(b)); }, bloco);
        return cupom_;
    }

private:
    // To 42 letters, of the widest gap a blank each time; not at all when that is not enough.
    static std::string encurtado(const std::string &inteiro) {
        std::string texto = inteiro;
        while (texto.size() > 42) {
            std::string vao = "  ";
            if (texto.find(vao) == texto.npos) return inteiro;
            while (texto.find(vao + ' ') != texto.npos)
                vao += ' ';
            texto.erase(texto.find(vao), 1);
        }
        return texto;
    }

    void por(Linha linha) {
        brancas_ = linha.trechos.empty() ? brancas_ + 1 : 0;
        if (dialeto_.encurta && linha.trechos.size() == 1 && linha.trechos[0].estilo.condensado)
            linha.trechos[0].texto = encurtado(linha.trechos[0].texto);
        for (Trecho &trecho : linha.trechos) {
            trecho.estilo.italico = trecho.estilo.italico && dialeto_.italico;
            for (std::size_t i = 0; i < dialeto_.faltam.size(); ++i)
                std::replace(trecho.texto.begin(), trecho.texto.end(), dialeto_.faltam[i],
                             dialeto_.simples[i]);
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
                desenharCupom(Adaptacao(dialeto).adaptar(cupom), dialeto.papel, logo).imagem;
            EXPECT_TRUE(igual(esperada, impresso.imagem,
                              "impresso_" + recibo.nome + "_" + std::string(dialeto.perfil)));
            EXPECT_EQ(qrsDe(impresso.imagem), qrsDe(cupom));
            ++quantos;
        }
    }
    EXPECT_GE(quantos, 4 * 18 + 8);
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
        const Impresso impresso = emular(dialeto, bytesDe({{Linha{{{todas, {}}}}}}, perfil, 48));
        std::string esperadas = todas;
        for (std::size_t i = 0; pagina.nome == "CP860" && i < kSimples.size(); ++i)
            std::replace(esperadas.begin(), esperadas.end(), kFaltamNaCp860[i], kSimples[i]);
        EXPECT_EQ(impresso.letras, esperadas) << pagina.nome;
    }
}

// Every command costs time on a slow line; a forgotten one prints the rest of the receipt wrongly.
TEST(EscPos, so_o_que_muda_se_diz) {
    const struct {
        std::string_view perfil, texto, bytes;
    } casos[] = {
        {"generico-80mm", "", "ESC @ ESC t 2"},
        {"generico-80mm", "a\n\nb", "ESC @ ESC t 2 a LF ESC d 1 b LF"},
        {"generico-80mm", "<b>a</b>b", "ESC @ ESC t 2 ESC E 1 a ESC E 0 b LF"},
        {"generico-80mm", "<b>a\nb</b>", "ESC @ ESC t 2 ESC E 1 a LF b LF"},
        {"generico-80mm", "<xl>a</xl><e>b", "ESC @ ESC t 2 GS ! 17 a GS ! 16 b LF"},
        {"generico-80mm", "<c>a</c>b", "ESC @ ESC t 2 ESC M 1 a ESC M 0 b LF"},
        {"generico-80mm", "<ce>a\nb</ce>\nc", "ESC @ ESC t 2 ESC a 1 a LF b LF ESC a 0 c LF"},
        {"generico-80mm", "<i>a</i>b", "ESC @ ESC t 2 a b LF"},
        {"generico-58mm", "<c>a</c>b", "ESC @ FS . ESC t 2 ESC M 1 a b LF"},
        {"escpos-modo-unico", "<b><c>a</b></c>\xA7", "ESC @ ESC t 3 ESC ! 9 a ESC ! 0 S LF"},
        {"bematech-esc-bema", "<sl>2</sl><b><c>a</b></c>b",
         "ESC @ ESC t 2 LF LF SI ESC E a DC2 ESC F b LF"},
        {"bematech-esc-bema", "a<gui></gui>\n\n<gui></gui>",
         "ESC @ ESC t 2 a LF LF LF LF LF ESC m LF LF LF LF ESC m"},
        {"star-line-mode", "<da>\xE7", "ESC @ ESC GS t 32 ESC h 1 231 LF"},
        {"generico-80mm", "<qrcode>conteudo<lmodulo>4</lmodulo></qrcode>",
         "ESC @ ESC t 2 GS ( k 4 0 49 65 50 0 GS ( k 3 0 49 67 4 GS ( k 3 0 49 69 49 "
         "GS ( k 11 0 49 80 48 {data} GS ( k 3 0 49 81 48"},
    };
    for (const auto &[perfil, texto, bytes] : casos)
        EXPECT_EQ(
            bytesDe(ler(texto), perfilDe(textoDo(perfil)), perfil == "generico-58mm" ? 42 : 48),
            notacao(bytes))
            << perfil << ": " << texto;
}

TEST(EscPos, qr_code_tem_o_maior_modulo_que_papel_e_modelo_permitem) {
    const Cupom cupom = ler("<qrcode>u<lmodulo>16</lmodulo></qrcode><qrcode>" +
                            std::string(kMaiorQr, 'x') + "</qrcode>");
    const std::pair<std::string_view, std::vector<int>> casos[] = {
        {"generico-80mm", {16, 3}}, {"star-line-mode", {8, 3}}, {"bematech-esc-bema", {16, 3}}};
    for (const auto &[nome, modulos] : casos)
        EXPECT_EQ(emular(dialetoDe(nome), bytesDe(cupom, perfilDe(textoDo(nome)), 48)).modulos,
                  modulos);
}

TEST(EscPos, lado_de_um_qr_code_se_sabe_antes_de_o_fazer) {
    for (std::size_t bytes = 1; bytes <= kMaiorQr; bytes += bytes < 300 ? 1 : 7)
        ASSERT_EQ(ladoDoQr(bytes), gerarQr(std::string(bytes, '\xE7')).lado) << bytes;
    EXPECT_EQ(ladoDoQr(kMaiorQr), 177);
}

// What a model cannot do is done in another way, or left out.
TEST(EscPos, recurso_que_falta_nao_se_usa) {
    const Cupom cupom = ler("<bmp></bmp><qrcode>ende\xE7o</qrcode><gui></gui>");
    const ImagemCinza logotipo = pontilhar(logotipoDoTeste(100, 40));
    const Dialeto &dialeto = dialetos().front();
    const struct {
        std::vector<std::string_view> faltam;
        std::string_view logo, letras;
        std::size_t qrs;
        int imagens, guardados, cortes;
    } casos[] = {
        {{}, "raster", "", 1, 1, 0, 1},
        {{"qrCode"}, "raster", "", 0, 2, 0, 1},
        {{"qrCode", "bitImageRaster"}, "raster", "ende\xE7o", 0, 0, 0, 1},
        {{"paperPartCut", "paperFullCut"}, "raster", "", 1, 1, 0, 0},
        {{}, "stored", "", 1, 0, 1, 1},
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
