// SPDX-License-Identifier: MIT
// Mark-up in, model out, in a short notation: lines end with ";", a line begins with "^" when it is
// centred and with ">" when it stands to the right, {cb} changes the letters, QR(3)(text) is a
// code, +4 a feed, # a cut and @ the logo.
#include "Leitor.h"
#include "apoio.h"

#include <gtest/gtest.h>

using namespace zel::cupom;

namespace {

std::string_view posicao(Alinhamento alinhamento) {
    return alinhamento == Alinhamento::kEsquerda ? ""
           : alinhamento == Alinhamento::kCentro ? "^"
                                                 : ">";
}

struct Notacao {
    std::string texto;

    void operator()(const Linha &linha) {
        texto += posicao(linha.alinhamento);
        Estilo antes;
        for (const Trecho &trecho : linha.trechos) {
            EXPECT_FALSE(trecho.texto.empty());
            if (trecho.estilo != antes) por(trecho.estilo);
            antes = trecho.estilo;
            texto += trecho.texto;
        }
        texto += ';';
    }
    void operator()(const Qr &qr) {
        texto.append(posicao(qr.alinhamento)).append("QR(").append(std::to_string(qr.modulo));
        texto.append(")(").append(qr.conteudo).append(")");
    }
    void operator()(const Avanco &avanco) {
        texto.append("+").append(std::to_string(avanco.linhas));
    }
    void operator()(const Corte &) { texto += '#'; }
    void operator()(const Logotipo &) { texto += '@'; }

private:
    void por(const Estilo &estilo) {
        constexpr std::pair<char, bool Estilo::*> kLetras[] = {
            {'c', &Estilo::condensado}, {'b', &Estilo::negrito},      {'i', &Estilo::italico},
            {'s', &Estilo::sublinhado}, {'e', &Estilo::larguraDupla}, {'d', &Estilo::alturaDupla}};
        texto += '{';
        for (const auto &[letra, campo] : kLetras)
            if (estilo.*campo) texto += letra;
        texto += '}';
    }
};

std::string lido(std::string_view texto) {
    Notacao notacao;
    for (const Bloco &bloco : ler(texto).blocos)
        std::visit(notacao, bloco);
    return notacao.texto;
}

struct Caso {
    std::string_view texto;
    std::string_view esperado;
};

void conferir(std::initializer_list<Caso> casos) {
    for (const auto &[texto, esperado] : casos)
        EXPECT_EQ(lido(texto), esperado) << texto;
}

} // namespace

TEST(Leitor, linhas_acabam_onde_o_texto_diz) {
    conferir({{"", ""},
              {"\n", ";"},
              {"a", "a;"},
              {"a\r\nb\n", "a;b;"},
              {"a\n\r\n\nb", "a;;;b;"},
              {"a\rb", "ab;"},
              {"a<l></l>b", "a;b;"},
              {"a<l></l>\r\nb", "a;b;"},
              {"<l></l><l>x</l>", ";;"},
              {std::string_view("a\x1B@\0\x07"
                                "b\tc\x7F\x85\xA0\xE7",
                                12),
               "a@b c\xA0\xE7;"}}); // nothing that a device would obey
}

TEST(Leitor, letras_valem_ate_o_fim_da_marca_ou_do_recibo) {
    conferir({{"<c>a\nb</c>c", "{c}a;{c}b{}c;"},
              {"<c>a\n<c>b\n<c>c</c>d</c>e", "{c}a;{c}b;{c}c{}de;"},
              {"<c><b>a</b></c>", "{cb}a;"},
              {"<b>a</i>b", "{b}a</i>b;"},
              {"<b><c>a</b>b</c>c", "{cb}a{c}b{}c;"},
              {"<i>a</i><s>b</s><e>c</e><da>d</da><xl>e</xl>", "{i}a{s}b{e}c{d}d{ed}e;"},
              {"<xl>a<e>b</xl>c", "{ed}ab{e}c;"},
              {"<b><c><e>a<n>b</n>c", "{cbe}a{}bc;"},
              {"<n><c>a</c></n>", "{c}a;"},
              {"a<b></b>b", "ab;"},
              {"<tb>a</tb><fe>b</fe>", "ab;"}});
}

TEST(Leitor, posicao_e_a_da_primeira_letra) {
    conferir({{"<ce>a</ce>\r\nb", "^a;b;"},
              {"<ce>a\nb</ce>\n", "^a;^b;"},
              {"a<ce>b</ce>", "ab;"},
              {"<ce>a</ce>b", "^ab;"},
              {"<ad>a</ad>\n<ad><c>b</c></ad>", ">a;>{c}b;"},
              {"<ce></ce>\r\na", ";a;"}});
}

TEST(Leitor, o_que_nao_e_texto) {
    conferir({{"<bmp></bmp>a\r\n", "@a;"},
              {"a<sl>4</sl><gui></gui>", "a;+4#"},
              {"a\r\n<sl>2</sl>\r\nb", "a;+2b;"},
              {"<sl>2</sl>\r\n\r\nb", "+2;b;"},
              {"<sl>0</sl><sl>x</sl><sl></sl><sl>-1</sl><sl>2.5</sl>a", "a;"},
              {"<sl>256</sl><sl>99999999999</sl><sl>007</sl>", "+255+255+7"},
              {"<gui>x</gui><bmp>y</bmp>", "#@"},
              {"a<ean13>123</ean13>b<hr></hr><upc-a>9</upc-a>c", "abc;"}});
}

TEST(Leitor, qr_code_tem_conteudo_e_modulo) {
    conferir({{"<ce><qrcode>http://x?a=1&b<lmodulo>4</lmodulo></qrcode>\r\n</ce>a",
               "^QR(4)(http://x?a=1&b)a;"},
              {"<ce><qrcode>u</qrcode></ce>\r\n<c>a</c>", "^QR(3)(u){c}a;"},
              {"a<qrcode>u</qrcode>b", "a;QR(3)(u)b;"},
              {"<qrcode><lmodulo>0</lmodulo>u</qrcode>", "QR(1)(u)"},
              {"<qrcode>u<lmodulo>99</lmodulo></qrcode>", "QR(16)(u)"},
              {"<qrcode>u<lmodulo>x</lmodulo>v</qrcode>", "QR(3)(uv)"},
              {"<qrcode>u<lmodulo>5</qrcode>", "QR(3)(u<lmodulo>5)"},
              {"<qrcode></lmodulo>5<lmodulo></qrcode>", "QR(3)(</lmodulo>5<lmodulo>)"},
              {"<qrcode><b>u\x02</b></qrcode>", "QR(3)(<b>u\x02</b>)"},
              {"<qrcode></qrcode><qrcode><lmodulo>4</lmodulo></qrcode>", ""}});
}

TEST(Leitor, qr_code_maior_que_o_maior_simbolo_e_texto) {
    const std::string maior(kMaiorQr, 'x');
    EXPECT_EQ(lido("<qrcode>" + maior + "<lmodulo>3</lmodulo></qrcode>"), "QR(3)(" + maior + ")");
    EXPECT_EQ(lido("<ce><qrcode>" + maior + "y<lmodulo>3</lmodulo></qrcode>"), "^" + maior + "y;");
}

TEST(Leitor, marca_quebrada_e_texto) {
    conferir({{"Volte <sempre>", "Volte <sempre>;"},
              {"a < b > c << d >", "a < b > c << d >;"},
              {"<", "<;"},
              {"<>", "<>;"},
              {"</>", "</>;"},
              {"<B>a</B>", "<B>a</B>;"},
              {"< b>a", "< b>a;"},
              {"</b>a", "</b>a;"},
              {"</sl></gui>", "</sl></gui>;"},
              {"<<b>a</b>>", "<{b}a{}>;"},
              {"<nomelongodemais>", "<nomelongodemais>;"},
              {"<s2of5", "<s2of5;"},
              // One that was forgotten takes nothing with it.
              {"<sl>a\nb<sl>4</sl>", "<sl>a;b;+4"},
              {"<qrcode>a\n<qrcode>b</qrcode>", "<qrcode>a;QR(3)(b)"},
              {"<lmodulo>3</lmodulo>", "<lmodulo>3</lmodulo>;"},
              {"[b]a[/b]", "[b]a[/b];"}});
}

// The limit is of time: were each of them searched to the end of the text, a test would not end.
TEST(Leitor, um_milhao_de_bytes_de_marcas_abertas) {
    const int vezes = 200'000;
    EXPECT_EQ(lido(repetir("<sl>", vezes)).size(), 4U * vezes + 1);
    EXPECT_EQ(lido(repetir("<", 5 * vezes)).size(), 5U * vezes + 1);
    EXPECT_EQ(lido(repetir("<b>a", vezes)).size(), 1U * vezes + 4);
    EXPECT_EQ(lido(repetir("<sl>\n", vezes)).size(), 5U * vezes);
}
