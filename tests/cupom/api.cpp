// SPDX-License-Identifier: MIT
// The C functions, through the shared object: codes, files, and bytes that nothing else changes.
#include "apoio.h"
#include "apoio/PastaTemporaria.h"
#include "zel_cupom.h"

#include <algorithm>
#include <clocale>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <memory>
#include <sys/resource.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace {

using Recibo = std::unique_ptr<zel_cupom, decltype(&zel_cupom_liberar)>;
using Funcao = int (*)(zel_cupom *, unsigned char **, size_t *);

constexpr std::string_view kTexto =
    "<bmp></bmp><ce><b>Pre\xE7o</b> 1,50</ce>\r\n<qrcode>http://x</qrcode><gui></gui>";

Recibo novo(std::string_view texto = kTexto) {
    Recibo recibo(zel_cupom_novo(), &zel_cupom_liberar);
    EXPECT_EQ(zel_cupom_ler(recibo.get(), texto.data(), texto.size()), ZEL_CUPOM_OK);
    return recibo;
}

std::string bytesDe(Funcao funcao, zel_cupom *recibo) {
    unsigned char *bytes = nullptr;
    size_t tamanho = 0;
    EXPECT_EQ(funcao(recibo, &bytes, &tamanho), ZEL_CUPOM_OK);
    std::string copia(reinterpret_cast<char *>(bytes), tamanho);
    zel_cupom_liberar_bytes(bytes);
    return copia;
}

std::size_t arquivosEm(const PastaTemporaria &pasta) {
    const std::filesystem::directory_iterator entradas(pasta / "");
    return static_cast<std::size_t>(std::distance(begin(entradas), end(entradas)));
}

} // namespace

TEST(Api, arguments_are_checked) {
    const Recibo recibo = novo();
    zel_cupom *r = recibo.get();
    unsigned char *bytes = nullptr;
    size_t tamanho = 0;
    const std::string maior(ZEL_CUPOM_MAIOR_TEXTO + 1, ' ');
    const std::pair<int, int> casos[] = {
        {zel_cupom_ler(nullptr, "a", 1), ZEL_CUPOM_ARGUMENTO},
        {zel_cupom_ler(r, nullptr, 1), ZEL_CUPOM_ARGUMENTO},
        {zel_cupom_ler(r, maior.data(), maior.size()), ZEL_CUPOM_LONGO},
        {zel_cupom_definir_papel(nullptr, 48, 0), ZEL_CUPOM_ARGUMENTO},
        {zel_cupom_definir_papel(r, 40, 0), ZEL_CUPOM_ARGUMENTO},
        {zel_cupom_definir_papel(r, 48, 58), ZEL_CUPOM_ARGUMENTO},
        {zel_cupom_definir_papel(r, 42, 80), ZEL_CUPOM_ARGUMENTO},
        {zel_cupom_definir_escala(r, 0), ZEL_CUPOM_ARGUMENTO},
        {zel_cupom_definir_escala(r, ZEL_CUPOM_MAIOR_ESCALA + 1), ZEL_CUPOM_ARGUMENTO},
        {zel_cupom_definir_logotipo(r, nullptr, 2), ZEL_CUPOM_ARGUMENTO},
        {zel_cupom_definir_fonte(r, nullptr, "x"), ZEL_CUPOM_ARGUMENTO},
        {zel_cupom_definir_fonte(r, "/dev/null", nullptr), ZEL_CUPOM_FONTE},
        {zel_cupom_definir_fonte(r, "/nao/existe.ttf", nullptr), ZEL_CUPOM_FONTE},
        {zel_cupom_png(r, nullptr, &tamanho), ZEL_CUPOM_ARGUMENTO},
        {zel_cupom_svg(r, &bytes, nullptr), ZEL_CUPOM_ARGUMENTO},
        {zel_cupom_png(nullptr, &bytes, &tamanho), ZEL_CUPOM_ARGUMENTO},
        {zel_cupom_gravar_png(r, nullptr), ZEL_CUPOM_ARGUMENTO},
        {zel_cupom_gravar_svg(r, ""), ZEL_CUPOM_ARGUMENTO},
        {zel_cupom_definir_perfil(nullptr, nullptr), ZEL_CUPOM_ARGUMENTO},
        {zel_cupom_definir_perfil(r, "nao-existe"), ZEL_CUPOM_PERFIL},
        {zel_cupom_definir_perfil(r, "/nao/existe"), ZEL_CUPOM_PERFIL},
        {zel_cupom_definir_perfil(r, "/dev/null"), ZEL_CUPOM_PERFIL},
        {zel_cupom_definir_gaveta(r, 2), ZEL_CUPOM_ARGUMENTO},
        {zel_cupom_escpos(r, &bytes, nullptr), ZEL_CUPOM_ARGUMENTO},
        {zel_cupom_imprimir(nullptr, "x", 1), ZEL_CUPOM_ARGUMENTO},
        {zel_cupom_imprimir(r, nullptr, 1), ZEL_CUPOM_ARGUMENTO},
        {zel_cupom_imprimir(r, "", 1), ZEL_CUPOM_ARGUMENTO},
        {zel_cupom_imprimir(r, "/dev/null", 0), ZEL_CUPOM_ARGUMENTO},
        {zel_cupom_imprimir(r, "/dev/null", ZEL_CUPOM_MAIOR_ESPERA + 1), ZEL_CUPOM_ARGUMENTO},
        {zel_cupom_imprimir(r, "http://x", 1), ZEL_CUPOM_ARGUMENTO},
        {zel_cupom_imprimir(r, "/nao/existe", 1000), ZEL_CUPOM_ARQUIVO},
        {zel_cupom_imprimir(r, "/dev/nao-existe", 1000), ZEL_CUPOM_AUSENTE},
        {zel_cupom_imprimir(r, "/dev/full", 1000), ZEL_CUPOM_INTERROMPIDA},
    };
    for (std::size_t i = 0; i < std::size(casos); ++i) {
        EXPECT_EQ(casos[i].first, casos[i].second) << i;
        EXPECT_STRNE(zel_cupom_descrever(casos[i].first), zel_cupom_descrever(99)) << i;
    }
    EXPECT_EQ(bytes, nullptr);
    // None of them changed anything.
    EXPECT_EQ(bytesDe(zel_cupom_escpos, r), bytesDe(zel_cupom_escpos, novo().get()));
    EXPECT_EQ(bytesDe(zel_cupom_png, r), bytesDe(zel_cupom_png, novo().get()));
    zel_cupom_liberar(nullptr);
    zel_cupom_liberar_bytes(nullptr);
}

TEST(Api, receipt_beyond_the_paper_is_refused_and_the_next_one_is_not) {
    const Recibo recibo = novo(std::string(ZEL_CUPOM_MAIOR_TEXTO, '\n'));
    unsigned char *bytes = nullptr;
    size_t tamanho = 0;
    EXPECT_EQ(zel_cupom_png(recibo.get(), &bytes, &tamanho), ZEL_CUPOM_LONGO);
    EXPECT_EQ(zel_cupom_svg(recibo.get(), &bytes, &tamanho), ZEL_CUPOM_LONGO);
    EXPECT_EQ(zel_cupom_escpos(recibo.get(), &bytes, &tamanho), ZEL_CUPOM_LONGO);
    EXPECT_EQ(zel_cupom_imprimir(recibo.get(), "/dev/null", 1000), ZEL_CUPOM_LONGO);
    EXPECT_EQ(zel_cupom_ler(recibo.get(), nullptr, 0), ZEL_CUPOM_OK);
    EXPECT_EQ(bytesDe(zel_cupom_png, recibo.get()), bytesDe(zel_cupom_png, novo("").get()));
}

TEST(Api, logo_that_is_none_is_refused) {
    const PastaTemporaria pasta;
    const std::string logo = zel::cupom::pngDaImagem(zel::cupom::logotipoDoTeste(40, 20));
    pasta.gravar("logo.png", logo);
    pasta.gravar("cortado.png", logo.substr(0, logo.size() / 2));
    pasta.gravar("texto.png", "GIF89a");
    pasta.gravar("vazio.png", "");
    pasta.gravar("largo.png", zel::cupom::pngDaImagem({4097, 1, std::vector<std::uint8_t>(4097)}));
    ASSERT_EQ(::mkfifo((pasta / "cano.png").c_str(), 0600), 0); // nobody ever writes into it
    const Recibo recibo = novo();
    const std::string semLogotipo = bytesDe(zel_cupom_png, recibo.get());
    ASSERT_EQ(
        zel_cupom_definir_logotipo(recibo.get(), (pasta / "logo.png").c_str(), ZEL_CUPOM_CINZA),
        ZEL_CUPOM_OK);
    const std::string comLogotipo = bytesDe(zel_cupom_png, recibo.get());
    EXPECT_NE(comLogotipo, semLogotipo);
    for (const char *nome :
         {"cortado.png", "texto.png", "vazio.png", "largo.png", "cano.png", "falta.png", ""})
        EXPECT_EQ(
            zel_cupom_definir_logotipo(recibo.get(), (pasta / nome).c_str(), ZEL_CUPOM_PONTOS),
            ZEL_CUPOM_LOGOTIPO)
            << nome;
    EXPECT_EQ(zel_cupom_definir_fonte(recibo.get(), (pasta / "cano.png").c_str(), nullptr),
              ZEL_CUPOM_FONTE);
    EXPECT_EQ(bytesDe(zel_cupom_png, recibo.get()), comLogotipo);
    EXPECT_EQ(zel_cupom_definir_logotipo(recibo.get(), nullptr, ZEL_CUPOM_PONTOS), ZEL_CUPOM_OK);
    EXPECT_EQ(bytesDe(zel_cupom_png, recibo.get()), semLogotipo);
}

TEST(Api, files_are_written_whole_or_not_at_all) {
    const PastaTemporaria pasta;
    const Recibo recibo = novo();
    pasta.gravar("cupom.png", "velho");
    EXPECT_EQ(zel_cupom_gravar_png(recibo.get(), (pasta / "cupom.png").c_str()), ZEL_CUPOM_OK);
    EXPECT_EQ(zel_cupom_gravar_svg(recibo.get(), (pasta / "cupom.svg").c_str()), ZEL_CUPOM_OK);
    EXPECT_EQ(pasta.ler("cupom.png"), bytesDe(zel_cupom_png, recibo.get()));
    EXPECT_EQ(pasta.ler("cupom.svg"), bytesDe(zel_cupom_svg, recibo.get()));
    EXPECT_EQ(arquivosEm(pasta), 2U);
    for (const std::string &onde :
         {pasta / "falta/cupom.png", pasta / "", std::string("/dev/null"), pasta / "cupom.png/x"})
        EXPECT_EQ(zel_cupom_gravar_png(recibo.get(), onde.c_str()), ZEL_CUPOM_ARQUIVO) << onde;
    EXPECT_EQ(arquivosEm(pasta), 2U);
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
}

TEST(Api, logo_is_in_dots_or_in_grey) {
    const PastaTemporaria pasta;
    pasta.gravar("logo.png", zel::cupom::pngDaImagem(zel::cupom::logotipoDoTeste(40, 20)));
    for (const int tons : {ZEL_CUPOM_PONTOS, ZEL_CUPOM_CINZA}) {
        const Recibo recibo = novo("<bmp></bmp>");
        ASSERT_EQ(zel_cupom_definir_logotipo(recibo.get(), (pasta / "logo.png").c_str(), tons),
                  ZEL_CUPOM_OK);
        ASSERT_EQ(zel_cupom_gravar_png(recibo.get(), (pasta / "cupom.png").c_str()), ZEL_CUPOM_OK);
        const auto pontos = zel::cupom::lerLogotipo(pasta / "cupom.png").value().pontos;
        const auto cinzas = std::count_if(pontos.begin(), pontos.end(),
                                          [](int ponto) { return ponto != 0 && ponto != 255; });
        EXPECT_EQ(cinzas > 0, tons == ZEL_CUPOM_CINZA);
        EXPECT_GT(std::count(pontos.begin(), pontos.end(), 0), 100);
    }
}

// As on a full disk: the bytes that fit are written, the rest is refused.
TEST(Api, file_that_cannot_be_finished_is_not_begun) {
    const PastaTemporaria pasta;
    pasta.gravar("cupom.png", "velho");
    const Recibo recibo = novo();
    struct rlimit antes {};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &antes), 0);
    const auto sinal = std::signal(SIGXFSZ, SIG_IGN);
    const struct rlimit curto { 1000, antes.rlim_max };
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &curto), 0);
    const int codigo = zel_cupom_gravar_png(recibo.get(), (pasta / "cupom.png").c_str());
    ::setrlimit(RLIMIT_FSIZE, &antes);
    std::signal(SIGXFSZ, sinal);
    EXPECT_EQ(codigo, ZEL_CUPOM_ARQUIVO);
    EXPECT_EQ(pasta.ler("cupom.png"), "velho");
    EXPECT_EQ(arquivosEm(pasta), 1U);
}

TEST(Api, bytes_do_not_depend_on_what_else_happens) {
    const std::string png = bytesDe(zel_cupom_png, novo().get());
    const std::string svg = bytesDe(zel_cupom_svg, novo().get());
    ASSERT_NE(std::setlocale(LC_ALL, "pt_BR.UTF-8"), nullptr) << "./test makes it, see LOCPATH";
    EXPECT_EQ(bytesDe(zel_cupom_png, novo().get()), png);
    EXPECT_EQ(bytesDe(zel_cupom_svg, novo().get()), svg);
    std::setlocale(LC_ALL, "C");
    std::vector<std::thread> linhas;
    for (int i = 0; i < 4; ++i)
        linhas.emplace_back([&] {
            for (int vez = 0; vez < 10; ++vez) {
                const Recibo recibo = novo();
                EXPECT_EQ(bytesDe(zel_cupom_png, recibo.get()), png);
                EXPECT_EQ(bytesDe(zel_cupom_svg, recibo.get()), svg);
            }
        });
    for (std::thread &linha : linhas)
        linha.join();
}

TEST(Api, settings_change_the_picture) {
    const Recibo recibo = novo();
    std::vector<std::string> imagens{bytesDe(zel_cupom_png, recibo.get())};
    const auto outra = [&](int codigo) {
        EXPECT_EQ(codigo, ZEL_CUPOM_OK);
        imagens.push_back(bytesDe(zel_cupom_png, recibo.get()));
        for (std::size_t i = 0; i + 1 < imagens.size(); ++i)
            EXPECT_NE(imagens[i], imagens.back()) << i;
    };
    outra(zel_cupom_definir_escala(recibo.get(), 2));
    outra(zel_cupom_definir_papel(recibo.get(), 42, 0));
    outra(zel_cupom_definir_papel(recibo.get(), 42, 58));
    outra(zel_cupom_definir_fonte(
        recibo.get(), "/usr/share/fonts/truetype/dejavu/DejaVuSansMono-Bold.ttf", nullptr));
}

TEST(Api, profile_is_a_name_or_a_file) {
    const PastaTemporaria pasta;
    const Recibo recibo = novo();
    zel_cupom *r = recibo.get();
    const std::string padrao = bytesDe(zel_cupom_escpos, r);
    std::vector<std::string> todos;
    for (int i = 0; zel_cupom_nome_do_perfil(i) != nullptr; ++i) {
        ASSERT_EQ(zel_cupom_definir_perfil(r, zel_cupom_nome_do_perfil(i)), ZEL_CUPOM_OK);
        todos.push_back(bytesDe(zel_cupom_escpos, r));
    }
    EXPECT_EQ(zel_cupom_nome_do_perfil(-1), nullptr);
    EXPECT_EQ(todos.size(), 5U);
    EXPECT_EQ(std::count(todos.begin(), todos.end(), padrao), 1);

    // A copy that a shop changed.
    std::string texto = zel::cupom::lerDado(ZEL_PERFIS "/generico-80mm.perfil");
    const std::size_t onde = texto.find("features.qrCode = true");
    ASSERT_NE(onde, texto.npos);
    pasta.gravar("meu.perfil", texto.replace(onde, 22, "features.qrCode = false"));
    ASSERT_EQ(zel_cupom_definir_perfil(r, (pasta / "meu.perfil").c_str()), ZEL_CUPOM_OK);
    EXPECT_STREQ(zel_cupom_detalhe(r), "");
    const std::string mudado = bytesDe(zel_cupom_escpos, r);
    EXPECT_EQ(mudado.find("\x1D(k"), mudado.npos);
    EXPECT_NE(mudado.find("\x1Dv0"), mudado.npos);
    pasta.gravar("errado.perfil", "name = x\ncommands.bold = ESC E\n");
    ASSERT_EQ(zel_cupom_definir_perfil(r, (pasta / "errado.perfil").c_str()), ZEL_CUPOM_PERFIL);
    EXPECT_STREQ(zel_cupom_detalhe(r), "linha 2: comando desconhecido");
    EXPECT_EQ(bytesDe(zel_cupom_escpos, r), mudado);

    ASSERT_EQ(zel_cupom_definir_perfil(r, nullptr), ZEL_CUPOM_OK);
    EXPECT_EQ(bytesDe(zel_cupom_escpos, r), padrao);
    ASSERT_EQ(zel_cupom_definir_papel(r, 42, 58), ZEL_CUPOM_OK);
    EXPECT_NE(bytesDe(zel_cupom_escpos, r).find("\x1C."), padrao.npos); // only of 58 mm
}

TEST(Api, printing_sends_the_bytes_and_reports_how_far_it_came) {
    const PastaTemporaria pasta;
    pasta.gravar("logo.png", zel::cupom::pngDaImagem(zel::cupom::logotipoDoTeste(900, 300)));
    const Recibo recibo = novo();
    zel_cupom *r = recibo.get();
    const std::string logo = pasta / "logo.png", destino = pasta / "cupom.bin";
    ASSERT_EQ(zel_cupom_definir_logotipo(r, logo.c_str(), ZEL_CUPOM_CINZA), ZEL_CUPOM_OK);
    ASSERT_EQ(zel_cupom_definir_gaveta(r, 1), ZEL_CUPOM_OK);
    const std::string bytes = bytesDe(zel_cupom_escpos, r);
    ASSERT_EQ(zel_cupom_imprimir(r, destino.c_str(), 1000), ZEL_CUPOM_OK);
    EXPECT_EQ(pasta.ler("cupom.bin"), bytes);
    EXPECT_EQ(zel_cupom_enviados(r), bytes.size());
    EXPECT_STREQ(zel_cupom_detalhe(r), "");

    const std::string cano = pasta / "cano", total = " de " + std::to_string(bytes.size());
    ASSERT_EQ(::mkfifo(cano.c_str(), 0600), 0);
    ASSERT_EQ(zel_cupom_imprimir(r, cano.c_str(), 100), ZEL_CUPOM_AUSENTE);
    EXPECT_EQ(zel_cupom_enviados(r), 0U);
    EXPECT_EQ(zel_cupom_detalhe(r), std::string(zel_cupom_descrever(ZEL_CUPOM_AUSENTE)) + ": 0" +
                                        total + " bytes enviados");
    // One page of a pipe that nobody reads; the logo is more.
    const int leitor = ::open(cano.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    ASSERT_EQ(::fcntl(leitor, F_SETPIPE_SZ, 4096), 4096);
    EXPECT_EQ(zel_cupom_imprimir(r, cano.c_str(), 100), ZEL_CUPOM_TEMPO);
    EXPECT_EQ(zel_cupom_enviados(r), 4096U);
    EXPECT_NE(std::string(zel_cupom_detalhe(r)).find(": 4096" + total), std::string::npos);
    ::close(leitor);
}
