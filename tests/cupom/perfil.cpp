// SPDX-License-Identifier: MIT
// Profiles: what is read, and what a profile is refused for.
#include "Perfil.h"
#include "apoio.h"

#include <gtest/gtest.h>

using namespace zel::cupom;

namespace {

constexpr std::string_view kMenor = "name = Menor\n"
                                    "media.width.mm = 80\n"
                                    "media.width.pixels = 576\n"
                                    "fonts.0.columns = 48\n"
                                    "codePages.2 = CP850\n"
                                    "use.codePage = CP850\n";

std::string motivoDe(std::string_view texto) {
    std::string motivo;
    const bool lido = lerPerfil(texto, motivo).has_value();
    EXPECT_EQ(lido, motivo.empty());
    return motivo;
}

} // namespace

TEST(Perfil, o_que_falta_ou_esta_errado_tem_nome_e_linha) {
    const std::string menor(kMenor);
    // After the smallest profile.
    const std::pair<std::string, std::string_view> linhas[] = {
        {"", ""},
        {"\n# comment\r\n  notes  =  a = b \nfeatures.barcodeA = true", ""},
        {"commands.beep = BEL", "linha 7: comando desconhecido"},
        {"commands.boldOn ESC E 1", "linha 7: falta o sinal de igual"},
        {"commands.boldOn = ESC EE 1", "linha 7: comando invalido"},
        {"commands.boldOn = ESC E 256", "linha 7: comando invalido"},
        {"commands.boldOn = ESC E {x}", "linha 7: comando invalido"},
        {"commands.boldOn = ESC E {n", "linha 7: comando invalido"},
        {"commands.boldOn = ESC E {n}", "linha 7: o comando nao tem os valores que devia ter"},
        {"commands.size = GS !", "linha 7: o comando nao tem os valores que devia ter"},
        {"commands.feed = ESC d {n} {n}", "linha 7: o comando nao tem os valores que devia ter"},
        {"commands.feed = ESC d {n+1}", "linha 7: comando invalido"},
        {"name = Outro", "linha 7: chave repetida"},
        {"fonts.4.columns = 48", "linha 7: fonte desconhecida"},
        {"fonts.1.columns = 7", "linha 7: numero invalido, ou fora de 8 a 255"},
        {"fonts.1.columns = 64", "cada fonte tem o seu command, ou nenhuma tem e ha printMode"},
        {"fonts.2.columns = 64\nfonts.2.command = SI\nfonts.0.command = DC2",
         "falta uma fonte no meio"},
        {"codePages.256 = CP437", "linha 7: numero de pagina invalido"},
        {"features.qrCode = yes", "linha 7: nem true nem false"},
        {"features.qrCode = true", "falta commands.qrCode"},
        {"features.pulseBel = true", "falta commands.pulse"},
        {"use.logo = big", "linha 7: nem raster nem stored nem none"},
        {"use.logo = stored", "falta commands.storedLogo"},
        {"use.paper = thin", "linha 7: uso desconhecido"},
        {"use.linesBeforeCut = 21", "linha 7: numero invalido, ou fora de 0 a 20"},
        {"use.status = lpr", "linha 7: nem escpos nem star nem none"},
        {"use.largestFeed = 256", "linha 7: numero invalido, ou fora de 1 a 255"},
        {"media.dpi = 72", "linha 7: numero invalido, ou fora de 100 a 1200"},
        {"use.largestModule = -1", "linha 7: numero invalido, ou fora de 1 a 16"},
        {"commands.boldOn = ESC E", "um estilo que comeca e nao acaba, ou o contrario"},
        {"commands.printMode = ESC ! {n}\ncommands.size = GS ! {n}",
         "printMode ja escolhe esse estilo"},
        {"commands.size = GS ! {n}\ncommands.doubleWidthOn = SO\n"
         "commands.doubleWidthOff = DC4",
         "size ja escolhe o tamanho"},
        {std::string(kMaiorPerfil, '#'), "perfil longo demais"},
    };
    for (const auto &[linha, motivo] : linhas)
        EXPECT_EQ(motivoDe(menor + linha), motivo) << linha.substr(0, 99);
    EXPECT_EQ(motivoDe(""), "falta name");
    EXPECT_EQ(motivoDe(trocar(menor, "use.codePage = CP850", "use.codePage = CP860")),
              "use.codePage nao esta entre codePages");
    EXPECT_EQ(motivoDe(trocar(trocar(menor, "CP850", "CP437"), "CP850", "CP437")), "");
    EXPECT_EQ(motivoDe(trocar(trocar(menor, "CP850", "CP866"), "CP850", "CP866")),
              "pagina de codigo sem tabela de conversao");
}

TEST(Perfil, comandos_sao_os_bytes_de_que_um_manual_fala) {
    const std::string dados(300, 'x');
    const std::pair<std::string_view, std::string> casos[] = {
        {"ESC E 1", "\x1B\x45\x01"},
        {"GS V 65 0", std::string("\x1DV\x41\0", 4)},
        {"  SI\tDC2 BEL 255 ", "\x0F\x12\x07\xFF"},
        {"( {length+3} P {data} Q", "(\x2F\x01P" + dados + "Q"},
        {"{height} {bytes} {length} {module} {n}", std::string("\2\1\4\3\x2C\1\6\5", 8)},
    };
    for (const auto &[texto, bytes] : casos) {
        std::string escritos;
        Comando::ler(texto).value().escrever(escritos, {5, 6, 0x304, 0x102, dados});
        EXPECT_EQ(escritos, bytes) << texto;
    }
    for (const std::string_view errado :
         {"ESCE", "300", "\x7F", "{data", "{data}x", "{length+}", "{length+256}", "{length+-1}"})
        EXPECT_FALSE(Comando::ler(errado)) << errado;
    std::string longo;
    for (std::size_t i = 0; i <= kMaiorComando; ++i)
        longo += "1 ";
    EXPECT_FALSE(Comando::ler(longo));
    EXPECT_TRUE(Comando::ler(longo.substr(2)));
}
