// SPDX-License-Identifier: MIT
// Profiles: what is read, and what a profile is refused for.
#include "Perfil.h"

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

TEST(Perfil, what_is_missing_or_wrong_is_named_with_its_line) {
    const std::string menor(kMenor);
    const std::pair<std::string, std::string_view> casos[] = {
        {menor, ""},
        {"# comment\r\n\r\n" + menor + "  notes  =  a = b \nfeatures.barcodeA = true", ""},
        {"", "falta name"},
        {menor + "commands.beep = BEL", "linha 7: comando desconhecido"},
        {menor + "commands.boldOn ESC E 1", "linha 7: falta o sinal de igual"},
        {menor + "commands.boldOn = ESC EE 1", "linha 7: comando invalido"},
        {menor + "commands.boldOn = ESC E 256", "linha 7: comando invalido"},
        {menor + "commands.boldOn = ESC E {x}", "linha 7: comando invalido"},
        {menor + "commands.boldOn = ESC E {n", "linha 7: comando invalido"},
        {menor + "commands.boldOn = ESC E {n}",
         "linha 7: o comando nao tem os valores que devia ter"},
        {menor + "commands.size = GS !", "linha 7: o comando nao tem os valores que devia ter"},
        {menor + "commands.feed = ESC d {n} {n}",
         "linha 7: o comando nao tem os valores que devia ter"},
        {menor + "commands.feed = ESC d {n+1}", "linha 7: comando invalido"},
        {menor + "name = Outro", "linha 7: chave repetida"},
        {menor + "fonts.4.columns = 48", "linha 7: fonte desconhecida"},
        {menor + "fonts.1.columns = 7", "linha 7: numero invalido, ou fora de 8 a 255"},
        {menor + "fonts.1.columns = 64",
         "cada fonte tem o seu command, ou nenhuma tem e ha printMode"},
        {menor + "fonts.2.columns = 64\nfonts.2.command = SI\nfonts.0.command = DC2",
         "falta uma fonte no meio"},
        {menor + "codePages.256 = CP437", "linha 7: numero de pagina invalido"},
        {menor + "features.qrCode = yes", "linha 7: nem true nem false"},
        {menor + "features.qrCode = true", "falta commands.qrCode"},
        {menor + "features.pulseBel = true", "falta commands.pulse"},
        {menor + "use.logo = big", "linha 7: nem raster nem stored nem none"},
        {menor + "use.logo = stored", "falta commands.storedLogo"},
        {menor + "use.paper = thin", "linha 7: uso desconhecido"},
        {menor + "use.linesBeforeCut = 21", "linha 7: numero invalido, ou fora de 0 a 20"},
        {menor + "use.largestModule = -1", "linha 7: numero invalido, ou fora de 1 a 16"},
        {menor + "commands.boldOn = ESC E", "um estilo que comeca e nao acaba, ou o contrario"},
        {menor + "commands.printMode = ESC ! {n}\ncommands.size = GS ! {n}",
         "printMode ja escolhe esse estilo"},
        {menor + "commands.size = GS ! {n}\ncommands.doubleWidthOn = SO\n"
                 "commands.doubleWidthOff = DC4",
         "size ja escolhe o tamanho"},
        {std::string(kMenor.substr(0, kMenor.rfind("use."))) + "use.codePage = CP860",
         "use.codePage nao esta entre codePages"},
        {std::string(kMenor.substr(0, kMenor.rfind("codePages."))) +
             "codePages.7 = CP437\nuse.codePage = CP437",
         "pagina de codigo sem tabela de conversao"},
        {menor + std::string(kMaiorPerfil, '#'), "perfil longo demais"},
    };
    for (const auto &[texto, motivo] : casos)
        EXPECT_EQ(motivoDe(texto), motivo) << texto.substr(std::min(texto.size(), kMenor.size()));
}

TEST(Perfil, commands_are_the_bytes_that_a_manual_means) {
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
