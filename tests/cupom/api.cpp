// SPDX-License-Identifier: MIT
// The C functions, through the shared object: codes, files, and bytes that nothing else changes.
#include "apoio.h"
#include "apoio/PastaTemporaria.h"
#include "zel_cupom.h"

#include <algorithm>
#include <clocale>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <memory>
#include <numeric>
#include <sys/resource.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace {

using Funcao = int (*)(zel_cupom *, unsigned char **, size_t *);

constexpr std::string_view kTexto =
    "<bmp></bmp><ce><b>Pre\xE7o</b> 1,50</ce>\r\n<qrcode>http://x</qrcode><gui></gui>";

// A receipt that is given back when its test ends.
class Recibo {
public:
    explicit Recibo(std::string_view texto = kTexto) {
        EXPECT_EQ(zel_cupom_ler(*this, texto.data(), texto.size()), ZEL_CUPOM_OK);
    }
    operator zel_cupom *() const { return cupom_.get(); }

    std::string bytes(Funcao funcao) const {
        unsigned char *bytes = nullptr;
        size_t tamanho = 0;
        EXPECT_EQ(funcao(*this, &bytes, &tamanho), ZEL_CUPOM_OK);
        std::string copia(reinterpret_cast<char *>(bytes), tamanho);
        zel_cupom_liberar_bytes(bytes);
        return copia;
    }
    std::string png() const { return bytes(zel_cupom_png); }
    std::string svg() const { return bytes(zel_cupom_svg); }
    std::string escpos() const { return bytes(zel_cupom_escpos); }

private:
    std::unique_ptr<zel_cupom, decltype(&zel_cupom_liberar)> cupom_{zel_cupom_novo(),
                                                                    &zel_cupom_liberar};
};

std::string pngDoLogotipo(int largura, int altura) {
    return zel::cupom::pngDaImagem(zel::cupom::logotipoDoTeste(largura, altura));
}

} // namespace

TEST(Funcoes, argumentos_sao_conferidos) {
    const Recibo r;
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
        {zel_cupom_definir_impressao(r, 2), ZEL_CUPOM_ARGUMENTO},
        {zel_cupom_pdf(r, &bytes, nullptr), ZEL_CUPOM_ARGUMENTO},
        {zel_cupom_gravar_pdf(r, "/nao/existe.pdf"), ZEL_CUPOM_ARQUIVO},
        {zel_cupom_estado(nullptr), 0},
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
        EXPECT_NE(casos[i].first == 0,
                  std::string_view(zel_cupom_descrever(casos[i].first)) != zel_cupom_descrever(99))
            << i;
    }
    EXPECT_EQ(bytes, nullptr);
    // None of them changed anything.
    EXPECT_EQ(r.escpos(), Recibo().escpos());
    EXPECT_EQ(r.png(), Recibo().png());
    zel_cupom_liberar(nullptr);
    zel_cupom_liberar_bytes(nullptr);
}

TEST(Funcoes, recibo_maior_que_o_papel_e_recusado_e_o_seguinte_nao) {
    const Recibo r(std::string(ZEL_CUPOM_MAIOR_TEXTO, '\n'));
    unsigned char *bytes = nullptr;
    size_t tamanho = 0;
    for (const Funcao funcao : {zel_cupom_png, zel_cupom_svg, zel_cupom_pdf, zel_cupom_escpos})
        EXPECT_EQ(funcao(r, &bytes, &tamanho), ZEL_CUPOM_LONGO);
    EXPECT_EQ(zel_cupom_imprimir(r, "/dev/null", 1000), ZEL_CUPOM_LONGO);
    EXPECT_EQ(zel_cupom_ler(r, nullptr, 0), ZEL_CUPOM_OK);
    EXPECT_EQ(r.png(), Recibo("").png());
}

TEST(Funcoes, logotipo_que_nao_e_e_recusado) {
    const PastaTemporaria pasta;
    const std::string logo = pngDoLogotipo(40, 20);
    pasta.gravar("logo.png", logo);
    pasta.gravar("cortado.png", logo.substr(0, logo.size() / 2));
    pasta.gravar("texto.png", "GIF89a");
    pasta.gravar("vazio.png", "");
    pasta.gravar("largo.png", zel::cupom::pngDaImagem({4097, 1, std::vector<std::uint8_t>(4097)}));
    ASSERT_EQ(::mkfifo((pasta / "cano.png").c_str(), 0600), 0); // nobody ever writes into it
    const Recibo r;
    const auto definir = [&](const char *nome, int tons) {
        return zel_cupom_definir_logotipo(r, (pasta / nome).c_str(), tons);
    };
    const std::string semLogotipo = r.png();
    ASSERT_EQ(definir("logo.png", ZEL_CUPOM_CINZA), ZEL_CUPOM_OK);
    const std::string comLogotipo = r.png();
    EXPECT_NE(comLogotipo, semLogotipo);
    for (const char *nome :
         {"cortado.png", "texto.png", "vazio.png", "largo.png", "cano.png", "falta.png", ""})
        EXPECT_EQ(definir(nome, ZEL_CUPOM_PONTOS), ZEL_CUPOM_LOGOTIPO) << nome;
    EXPECT_EQ(zel_cupom_definir_fonte(r, (pasta / "cano.png").c_str(), nullptr), ZEL_CUPOM_FONTE);
    EXPECT_EQ(r.png(), comLogotipo);
    EXPECT_EQ(zel_cupom_definir_logotipo(r, nullptr, ZEL_CUPOM_PONTOS), ZEL_CUPOM_OK);
    EXPECT_EQ(r.png(), semLogotipo);
}

TEST(Funcoes, arquivos_se_gravam_inteiros_ou_nada) {
    const PastaTemporaria pasta;
    const Recibo r;
    pasta.gravar("cupom.png", "velho");
    EXPECT_EQ(zel_cupom_gravar_png(r, (pasta / "cupom.png").c_str()), ZEL_CUPOM_OK);
    EXPECT_EQ(zel_cupom_gravar_svg(r, (pasta / "cupom.svg").c_str()), ZEL_CUPOM_OK);
    EXPECT_EQ(pasta.ler("cupom.png"), r.png());
    EXPECT_EQ(pasta.ler("cupom.svg"), r.svg());
    EXPECT_EQ(pasta.quantosEm(), 2);
    for (const std::string &onde :
         {pasta / "falta/cupom.png", pasta / "", std::string("/dev/null"), pasta / "cupom.png/x"})
        EXPECT_EQ(zel_cupom_gravar_png(r, onde.c_str()), ZEL_CUPOM_ARQUIVO) << onde;
    EXPECT_EQ(pasta.quantosEm(), 2);
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
}

TEST(Funcoes, logotipo_sai_em_pontos_ou_em_cinza) {
    const PastaTemporaria pasta;
    const std::string logo = pasta / "logo.png", cupom = pasta / "cupom.png";
    pasta.gravar("logo.png", pngDoLogotipo(40, 20));
    for (const int tons : {ZEL_CUPOM_PONTOS, ZEL_CUPOM_CINZA}) {
        const Recibo r("<bmp></bmp>");
        ASSERT_EQ(zel_cupom_definir_logotipo(r, logo.c_str(), tons), ZEL_CUPOM_OK);
        ASSERT_EQ(zel_cupom_gravar_png(r, cupom.c_str()), ZEL_CUPOM_OK);
        const auto pontos = zel::cupom::lerLogotipo(cupom).value().pontos;
        const auto cinzas = std::count_if(pontos.begin(), pontos.end(),
                                          [](int ponto) { return ponto != 0 && ponto != 255; });
        EXPECT_EQ(cinzas > 0, tons == ZEL_CUPOM_CINZA);
        EXPECT_GT(std::count(pontos.begin(), pontos.end(), 0), 100);
    }
}

// As on a full disk: the bytes that fit are written, the rest is refused.
TEST(Funcoes, arquivo_que_nao_se_termina_nao_se_comeca) {
    const PastaTemporaria pasta;
    pasta.gravar("cupom.png", "velho");
    struct rlimit antes {};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &antes), 0);
    const auto sinal = std::signal(SIGXFSZ, SIG_IGN);
    const struct rlimit curto { 1000, antes.rlim_max };
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &curto), 0);
    const int codigo = zel_cupom_gravar_png(Recibo(), (pasta / "cupom.png").c_str());
    ::setrlimit(RLIMIT_FSIZE, &antes);
    std::signal(SIGXFSZ, sinal);
    EXPECT_EQ(codigo, ZEL_CUPOM_ARQUIVO);
    EXPECT_EQ(pasta.ler("cupom.png"), "velho");
    EXPECT_EQ(pasta.quantosEm(), 1);
}

TEST(Funcoes, bytes_nao_dependem_do_que_mais_acontece) {
    const std::string png = Recibo().png(), svg = Recibo().svg();
    ASSERT_NE(std::setlocale(LC_ALL, "pt_BR.UTF-8"), nullptr) << "./test makes it, see LOCPATH";
    EXPECT_EQ(Recibo().png(), png);
    EXPECT_EQ(Recibo().svg(), svg);
    std::setlocale(LC_ALL, "C");
    std::vector<std::thread> linhas;
    for (int i = 0; i < 4; ++i)
        linhas.emplace_back([&] {
            for (int vez = 0; vez < 10; ++vez) {
                const Recibo r;
                EXPECT_EQ(r.png(), png);
                EXPECT_EQ(r.svg(), svg);
            }
        });
    for (std::thread &linha : linhas)
        linha.join();
}

TEST(Funcoes, cada_ajuste_muda_a_figura) {
    const Recibo r;
    std::vector<std::string> imagens{r.png()};
    const auto outra = [&](int codigo) {
        EXPECT_EQ(codigo, ZEL_CUPOM_OK);
        imagens.push_back(r.png());
        EXPECT_EQ(std::count(imagens.begin(), imagens.end(), imagens.back()), 1);
    };
    outra(zel_cupom_definir_escala(r, 2));
    outra(zel_cupom_definir_papel(r, 42, 0));
    outra(zel_cupom_definir_papel(r, 42, 58));
    outra(zel_cupom_definir_fonte(r, "/usr/share/fonts/truetype/dejavu/DejaVuSansMono-Bold.ttf",
                                  nullptr));
}

// Another library draws it, and finds its letters: the same paper as the picture's, of one page.
TEST(Funcoes, pdf_e_o_mesmo_papel) {
    const PastaTemporaria pasta;
    const Recibo r;
    pasta.gravar("logo.png", pngDoLogotipo(40, 20));
    ASSERT_EQ(zel_cupom_definir_logotipo(r, (pasta / "logo.png").c_str(), ZEL_CUPOM_PONTOS), 1);
    const std::string pdf = r.bytes(zel_cupom_pdf);
    EXPECT_EQ(r.bytes(zel_cupom_pdf), pdf);
    EXPECT_FALSE(contem(pdf, "CreationDate"));
    ASSERT_EQ(zel_cupom_gravar_pdf(r, (pasta / "cupom.pdf").c_str()), ZEL_CUPOM_OK);
    EXPECT_EQ(pasta.ler("cupom.pdf"), pdf);
    ASSERT_EQ(zel_cupom_gravar_png(r, (pasta / "cupom.png").c_str()), ZEL_CUPOM_OK);
    const std::string rodar =
        "cd '" + (pasta / "") +
        "' && pdftoppm -r 203.199 -gray -png -singlefile cupom.pdf pdf && "
        "pdftotext -enc UTF-8 cupom.pdf cupom.txt && pdfinfo cupom.pdf > info";
    ASSERT_EQ(std::system(rodar.c_str()), 0) << "poppler-utils";
    const auto lida = [&](const char *nome) {
        return zel::cupom::lerLogotipo(pasta / nome).value();
    };
    const auto tinta = [](const zel::cupom::ImagemCinza &imagem) {
        return std::accumulate(imagem.pontos.begin(), imagem.pontos.end(), 0.0,
                               [](double soma, int tom) { return soma + 255 - tom; });
    };
    const auto png = lida("cupom.png"), desenhado = lida("pdf.png");
    EXPECT_EQ(desenhado.largura, png.largura);
    EXPECT_EQ(desenhado.altura, png.altura);
    EXPECT_NEAR(tinta(desenhado), tinta(png), tinta(png) / 50);
    EXPECT_EQ(zel::cupom::qrsDe(desenhado), std::vector<std::string>{"http://x"});
    EXPECT_TRUE(contem(pasta.ler("cupom.txt"), "Pre\xC3\xA7o 1,50"));
    EXPECT_TRUE(contem(pasta.ler("info"), "226.772 x "));
    // More than its page holds, and less than a picture does.
    const Recibo longo(repetir("a\n", 1500));
    unsigned char *bytes = nullptr;
    size_t tamanho = 0;
    EXPECT_EQ(zel_cupom_pdf(longo, &bytes, &tamanho), ZEL_CUPOM_LONGO);
    EXPECT_FALSE(longo.png().empty());
}

TEST(Funcoes, impressao_e_em_letras_ou_a_figura) {
    const Recibo r;
    const std::string letras = r.escpos();
    ASSERT_EQ(zel_cupom_definir_impressao(r, ZEL_CUPOM_FIGURA), ZEL_CUPOM_OK);
    EXPECT_NE(letras.find("Pre"), letras.npos);
    EXPECT_EQ(r.escpos().find("Pre"), letras.npos);
    ASSERT_EQ(zel_cupom_definir_perfil(r, "generico-58mm"), ZEL_CUPOM_OK);
    EXPECT_EQ(zel_cupom_imprimir(r, "/dev/null", 1000), ZEL_CUPOM_PERFIL);
    EXPECT_TRUE(contem(zel_cupom_detalhe(r), "pontos"));
    ASSERT_EQ(zel_cupom_definir_papel(r, 42, 58), ZEL_CUPOM_OK);
    EXPECT_EQ(zel_cupom_imprimir(r, "/dev/null", 1000), ZEL_CUPOM_OK);
    EXPECT_EQ(zel_cupom_estado(r), 0);
    EXPECT_STREQ(zel_cupom_versao(), ZEL_CUPOM_VERSAO);
}

TEST(Funcoes, perfil_e_um_nome_ou_um_arquivo) {
    const PastaTemporaria pasta;
    const Recibo r;
    const std::string padrao = r.escpos();
    std::vector<std::string> todos;
    for (int i = 0; zel_cupom_nome_do_perfil(i) != nullptr; ++i) {
        ASSERT_EQ(zel_cupom_definir_perfil(r, zel_cupom_nome_do_perfil(i)), ZEL_CUPOM_OK);
        todos.push_back(r.escpos());
    }
    EXPECT_EQ(zel_cupom_nome_do_perfil(-1), nullptr);
    EXPECT_EQ(todos.size(), 6U);
    EXPECT_EQ(std::count(todos.begin(), todos.end(), padrao), 1);

    // A copy that a shop changed.
    const std::string meu = trocar(zel::cupom::lerDado(ZEL_PERFIS "/generico-80mm.perfil"),
                                   "features.qrCode = true", "features.qrCode = false");
    pasta.gravar("meu.perfil", meu);
    ASSERT_EQ(zel_cupom_definir_perfil(r, (pasta / "meu.perfil").c_str()), ZEL_CUPOM_OK);
    EXPECT_STREQ(zel_cupom_detalhe(r), "");
    const std::string mudado = r.escpos();
    EXPECT_EQ(mudado.find("\x1D(k"), mudado.npos);
    EXPECT_NE(mudado.find("\x1Dv0"), mudado.npos);
    pasta.gravar("errado.perfil", "name = x\ncommands.bold = ESC E\n");
    ASSERT_EQ(zel_cupom_definir_perfil(r, (pasta / "errado.perfil").c_str()), ZEL_CUPOM_PERFIL);
    EXPECT_STREQ(zel_cupom_detalhe(r), "linha 2: comando desconhecido");
    EXPECT_EQ(r.escpos(), mudado);

    ASSERT_EQ(zel_cupom_definir_perfil(r, nullptr), ZEL_CUPOM_OK);
    EXPECT_EQ(r.escpos(), padrao);
    ASSERT_EQ(zel_cupom_definir_papel(r, 42, 58), ZEL_CUPOM_OK);
    EXPECT_NE(r.escpos(), padrao);
}

TEST(Funcoes, imprimir_envia_os_bytes_e_diz_ate_onde_foi) {
    const PastaTemporaria pasta;
    const std::string logo = pasta / "logo.png", destino = pasta / "cupom.bin";
    pasta.gravar("logo.png", pngDoLogotipo(900, 300));
    const Recibo r;
    ASSERT_EQ(zel_cupom_definir_logotipo(r, logo.c_str(), ZEL_CUPOM_CINZA), ZEL_CUPOM_OK);
    ASSERT_EQ(zel_cupom_definir_gaveta(r, 1), ZEL_CUPOM_OK);
    const std::string bytes = r.escpos();
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
    EXPECT_TRUE(contem(zel_cupom_detalhe(r), ": 4096" + total));
    ::close(leitor);
}
