// SPDX-License-Identifier: MIT
// zel ver and zel imprimir: which receipt they take, and a printer that is missing, refuses or
// stops taking bytes.
#include "Loja.h"

#include "apoio/Porta.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <thread>
#include <tuple>
#include <unistd.h>

namespace {

const Loja::Valores kHomologacao{{R"(CONFIGURACAO\TipoAmbiente)", "2"}};

// A shop that has sold.
class Papel : public testing::Test {
protected:
    const Loja loja;
    const std::string papel = loja / "papel";

    void vender(const Loja::Valores &valores = {}) const {
        loja.configurar(valores);
        ASSERT_TRUE(loja.zel({"vender", "101;P\xc3\xa3o;6;0,75"}).deu(0));
    }

    Resultado imprimir(const Argumentos &mais = {}) const {
        Argumentos argumentos{"imprimir", "--impressora", papel};
        argumentos.insert(argumentos.end(), mais.begin(), mais.end());
        return loja.zel(argumentos);
    }

    Resultado imprimirComRetorno(std::string_view situacao) const {
        const std::string chave = loja.zel({"config", "ler", R"(NFCE\ChaveDeAcesso)"}).saida;
        loja.gravar("retorno.xml",
                    "<Retorno>" + std::string(situacao) + "<DocChaAcesso>" + chave.substr(0, 44) +
                        "</DocChaAcesso><DocProtocolo>135260000000007</DocProtocolo>"
                        "<DocDhAut>2026-11-25T06:16:30-03:00</DocDhAut>"
                        "<DocDigestValue>92rccaZ/hVOvYlxYt927zRnBLus=</DocDigestValue></Retorno>");
        return imprimir({"--retorno", loja / "retorno.xml"});
    }
};

using Ver = Papel;
using Imprimir = Papel;

TEST_F(Ver, grava_png_svg_ou_pdf_do_ultimo_cupom) {
    const std::string figura = loja / "cupom";
    EXPECT_TRUE(loja.zel({"ver", "--saida", figura}).deu(2, "ainda não há nenhum cupom"));
    vender();
    EXPECT_TRUE(
        loja.zel({"ver", "--saida", figura + ".png"}).deu(0, "um ensaio, que não se entrega"));
    EXPECT_TRUE(loja.ler("cupom.png").starts_with("\x89PNG"));
    EXPECT_TRUE(loja.zel({"ver", "--saida", figura + ".svg", "--colunas", "42", "--json"})
                    .deu(0, R"("colunas":"42")"));
    EXPECT_TRUE(contem(loja.ler("cupom.svg").substr(0, 300), R"(width="76mm")"));
    EXPECT_TRUE(loja.zel({"ver", "--saida", figura + ".pdf"}).deu(0));
    EXPECT_TRUE(loja.ler("cupom.pdf").starts_with("%PDF"));
    EXPECT_TRUE(loja.zel({"ver", "--saida", "/nada/cupom.png"}).deu(2));
    EXPECT_TRUE(loja.zel({"ver", "--saida", figura, "--colunas", "40"}).deu(2));
}

// With a display the picture is opened, by a program of the desktop.
TEST_F(Ver, abre_na_tela) {
    vender();
    EXPECT_TRUE(
        loja.zel({"ver"}, {{"DISPLAY", ""}, {"WAYLAND_DISPLAY", ""}}).deu(2, "--saida ARQUIVO"));
    const std::string pasta = loja.diretorio();
    const Ambiente tela{{"DISPLAY", ":9"}, {"XDG_RUNTIME_DIR", pasta}, {"PATH", pasta}};
    EXPECT_TRUE(loja.zel({"ver"}, tela).deu(2, "xdg-open: ")) << "without one";
    for (const auto &[programa, codigo] :
         {std::pair{"#!/bin/sh\necho \"$1\" > \"$0.aberto\"\n", 0}, {"#!/bin/sh\nexit 4\n", 2}}) {
        loja.gravar("xdg-open", programa);
        std::filesystem::permissions(pasta + "xdg-open", std::filesystem::perms::owner_all);
        EXPECT_TRUE(loja.zel({"ver"}, tela).deu(codigo));
        EXPECT_EQ(loja.ler("xdg-open.aberto"), pasta + "/zel-cupom.png\n");
    }
    EXPECT_TRUE(loja.ler("zel-cupom.png").starts_with("\x89PNG"));
}

// In production nothing is printed that the authority has not authorized.
TEST_F(Imprimir, so_o_que_foi_autorizado) {
    vender();
    EXPECT_TRUE(imprimir().deu(2, "ainda não tem cupom"));
    EXPECT_TRUE(loja.zel({"imprimir", "--pdf", loja / "x.pdf"}).deu(2, "ainda não tem cupom"));
    // Nor is the trial that zel ver laid out.
    EXPECT_TRUE(loja.zel({"ver", "--saida", loja / "x.png"}).deu(0));
    EXPECT_TRUE(imprimir().deu(2, "ainda não tem cupom"));
    for (const char *recusa : {"<SitCodigo>204</SitCodigo>", "<cStat>110</cStat>", "",
                               "<SitCodigo>135</SitCodigo>", "<SitCodigo>1000</SitCodigo>"})
        EXPECT_TRUE(imprimirComRetorno(recusa).deu(2, "não autorizou a venda")) << recusa;
    EXPECT_TRUE(imprimir({"--retorno", "/nada"}).deu(2, "/nada: "));
    EXPECT_FALSE(std::filesystem::exists(papel));
    for (const char *aceite :
         {"<SitCodigo>100</SitCodigo>", "<SITCODIGO> 150</SITCODIGO>", "<cStat>100</cStat>"}) {
        EXPECT_TRUE(imprimirComRetorno(aceite).deu(0)) << aceite;
        EXPECT_TRUE(contem(loja.ler("papel"), "135260000000007")) << aceite;
    }
    // Kept since then: printed again without it, and cancelled by it.
    std::filesystem::remove(papel);
    const Resultado outra = imprimir();
    EXPECT_TRUE(outra.deu(0));
    EXPECT_EQ(outra.erros, "");
    EXPECT_TRUE(contem(loja.ler("papel"), "135260000000007"));
    // What says less than is known is not kept.
    for (const char *comando : {"ver", "imprimir"})
        EXPECT_TRUE(loja.zel({comando, comando == std::string("ver") ? "--saida" : "--impressora",
                              papel, "--retorno", "OFFLINE"})
                        .deu(0));
    // Other columns would need the return again: without it the protocol would be lost.
    EXPECT_TRUE(loja.zel({"ver", "--saida", papel, "--colunas", "42"}).deu(2));
    EXPECT_TRUE(loja.zel({"cancelar"}).deu(0));
}

// Looked at, or of another document, a receipt changes nothing that the till knows.
TEST_F(Imprimir, so_o_ultimo_documento_muda_o_caixa) {
    vender({{R"(CONFIGURACAO\SalvarDanfePDF)", "1"}});
    std::filesystem::copy_file(loja / "documentosEnvio.xml", loja / "antiga.xml");
    ASSERT_TRUE(imprimirComRetorno("<SitCodigo>100</SitCodigo>").deu(0));
    vender();
    const PastaTemporaria fora;
    const std::string antes = loja.retrato();
    const Argumentos daAntiga{"--documento", loja / "antiga.xml", "--retorno"};
    for (const std::string &retorno : {loja / "retorno.xml", std::string("OFFLINE")}) {
        for (Argumentos comando : {Argumentos{"ver", "--saida", fora / "x"},
                                   Argumentos{"imprimir", "--impressora", fora / "x"}}) {
            comando.insert(comando.end(), daAntiga.begin(), daAntiga.end());
            comando.push_back(retorno);
            EXPECT_TRUE(loja.zel(comando).deu(0)) << retorno;
        }
    }
    EXPECT_TRUE(loja.zel({"ver", "--saida", fora / "x"}).deu(0, "um ensaio"));
    EXPECT_EQ(loja.retrato(), antes);
}

// The paper is not cut in the middle, nor its letters made large, by what an item is called.
TEST_F(Imprimir, marcas_no_nome_de_um_item_sao_texto) {
    std::string cortes[2];
    for (const bool marcas : {false, true}) {
        const std::string nome = marcas ? "P\xc3\xa3o <gui></gui> <xl>GRANDE" : "P\xc3\xa3o";
        ASSERT_TRUE(loja.zel({"vender", "101;" + nome + ";6;0,75"}).deu(0));
        std::filesystem::remove(papel);
        EXPECT_TRUE(imprimirComRetorno("<SitCodigo>100</SitCodigo>").deu(0));
        const std::string bytes = loja.ler("papel");
        EXPECT_EQ(bytes.find("o < gui>< /gui> < xl>GRANDE") != bytes.npos, marcas);
        for (std::size_t i = 0; (i = bytes.find("\x1dV", i)) != bytes.npos; ++i)
            cortes[marcas] += bytes.substr(i, 3);
    }
    EXPECT_NE(cortes[0], "");
    EXPECT_EQ(cortes[0], cortes[1]);
}

// The request that took the document's place has a receipt of its own, when it was accepted.
TEST_F(Imprimir, comprovante_de_um_cancelamento) {
    vender();
    EXPECT_TRUE(loja.zel({"cancelar"}).deu(1));
    EXPECT_TRUE(
        imprimirComRetorno("<SitCodigo>573</SitCodigo>").deu(2, "registrou o cancelamento"));
    EXPECT_TRUE(imprimirComRetorno("<SitCodigo>135</SitCodigo>").deu(0));
    EXPECT_TRUE(contem(loja.ler("papel"), "CANCELAMENTO NFC-e"));
}

TEST_F(Imprimir, contingencia_sem_retorno) {
    vender({{R"(IDE\tpEmis)", "9"}, {R"(IDE\xJust)", "Sem acesso \xe0 internet"}});
    EXPECT_TRUE(imprimir().deu(0));
    EXPECT_FALSE(loja.ler("papel").empty());
}

// In homologation the return is not needed either; the profile reaches the bytes.
TEST_F(Imprimir, homologacao_sem_retorno_pelo_perfil_escolhido) {
    vender(kHomologacao);
    const auto bytes = [&](const char *perfil) {
        EXPECT_TRUE(imprimir({"--perfil", perfil}).deu(0));
        return loja.ler("papel");
    };
    EXPECT_NE(bytes("generico-80mm"), bytes("bematech-esc-bema"));
}

// The same paper in dots, without a letter of the printer's, and as PDF, alone or beside the print.
TEST_F(Imprimir, em_pontos_e_como_pdf) {
    vender(kHomologacao);
    EXPECT_TRUE(imprimir().deu(0));
    const std::string letras = loja.ler("papel");
    EXPECT_TRUE(imprimir({"--figura"}).deu(0));
    const std::string pontos = loja.ler("papel");
    EXPECT_TRUE(contem(letras, "101")) << "the item's code";
    EXPECT_FALSE(pontos.find("CNPJ") != pontos.npos) << "letters in a picture";
    EXPECT_GT(pontos.size(), 10 * letras.size());
    std::filesystem::remove(papel);
    const std::string pdf = loja / "cupom";
    EXPECT_TRUE(loja.zel({"imprimir", "--pdf", pdf, "--json"}).deu(0, R"("resultado":"gravado")"));
    EXPECT_TRUE(loja.ler("cupom").starts_with("%PDF"));
    EXPECT_FALSE(std::filesystem::exists(papel));
    EXPECT_TRUE(imprimir({"--pdf", pdf}).deu(0, "PDF:               " + pdf));
    EXPECT_EQ(loja.ler("papel"), letras);
    std::filesystem::remove(papel);
    EXPECT_TRUE(imprimir({"--pdf", "/nada/cupom"}).deu(2, "/nada/cupom: "));
    EXPECT_FALSE(std::filesystem::exists(papel)) << "printed though its PDF was refused";
}

const std::pair<Argumentos, std::string_view> kErros[] = {
    {{"imprimir"}, "falta --impressora"},
    {{"imprimir", "--impressora", "/dev/usb/lp77"}, "não foi encontrada: 0 de "},
    {{"imprimir", "--impressora", "tcp://127.0.0.1:1"}, "recusa a ligação: em uso, sem permissão"},
    {{"imprimir", "--impressora", "tcp://"}, "argumento"},
    {{"imprimir", "--impressora", "/nada/papel"}, "No such file"},
    // What was meant for a printer ends in no file.
    {{"imprimir", "--impressora", "10.0.0.5"},
     "10.0.0.5: não é uma impressora nem um arquivo: "
     "uma impressora da rede é tcp://10.0.0.5,"},
    {{"imprimir", "--impressora", "10.0.0.5:9100"}, "é tcp://10.0.0.5:9100,"},
    {{"imprimir", "--impressora", "COM1"}, "um dispositivo é como /dev/usb/lp0"},
    {{"imprimir", "--impressora", R"(\\srv\p)"}, "um arquivo leva uma barra"},
    {{"imprimir", "--impressora", "./papel", "--perfil", "nenhum"}, "zel imprimir --perfis"},
    {{"imprimir", "--impressora", "./papel", "--figura", "--perfil", "generico-80mm-512"},
     "zel imprimir --perfis"},
    {{"imprimir", "--impressora", "./papel", "--espera", "0"}, "--espera é de 1 a 600000"},
    {{"imprimir", "--impressora", "./papel", "--espera", "600001"}, "--espera é de 1 a 600000"},
    {{"imprimir", "--impressora", "./papel", "--documento", "x.xml"},
     "--documento vai com --retorno"},
    {{"imprimir", "papel"}, "não leva argumentos"},
};

TEST_F(Imprimir, erro_claro) {
    vender(kHomologacao);
    for (const auto &[argumentos, dito] : kErros) {
        const Resultado resultado = loja.zel(argumentos);
        EXPECT_EQ(resultado.codigo, 2) << dito;
        EXPECT_TRUE(contem(resultado.erros, dito));
    }
    EXPECT_TRUE(loja.zel({"imprimir", "--perfis"}).deu(0, "generico-80mm\n"));
    // The device that a link leads to is absent: the link stays.
    std::filesystem::create_symlink("/dev/usb/lp77", papel);
    EXPECT_TRUE(imprimir().deu(2, "é uma ligação para /dev/usb/lp77, que não existe"));
    EXPECT_TRUE(std::filesystem::is_symlink(papel));
}

TEST_F(Imprimir, impressora_parada_nao_prende_o_caixa) {
    vender(kHomologacao);
    const Porta impressora;
    impressora.ouvir(); // and takes nothing beyond what the system buffers
    const auto antes = std::chrono::steady_clock::now();
    const Resultado resultado =
        loja.zel({"imprimir", "--impressora", impressora.destino(), "--espera", "300", "--json"});
    // Far more than the wait, far less than for ever.
    EXPECT_LT(std::chrono::steady_clock::now() - antes, std::chrono::seconds(60));
    EXPECT_TRUE(resultado.deu(2, R"("resultado":"falhou","impressora":"tcp://127.0.0.1:)"));
    EXPECT_TRUE(contem(resultado.saida, R"("codigo":-11,)"));
}

// It is asked for its state where the connection answers, and what it says is said.
TEST_F(Imprimir, impressora_sem_papel_o_diz_e_nada_recebe) {
    vender(kHomologacao);
    for (const auto &[resposta, codigo, dito] :
         {std::tuple{'\x12', 0, "Estado dela:       pronta"},
          {'\x72', 2, "a impressora está sem papel: 0 de "}}) {
        const Porta impressora;
        impressora.ouvir();
        std::thread dela([&, letra = resposta] {
            const int fd = impressora.aceitar();
            std::array<char, 4096> parte{};
            while (::read(fd, parte.data(), parte.size()) > 0)
                if (parte[0] == '\x10' && ::write(fd, &letra, 1) != 1) break;
            ::close(fd);
        });
        const Resultado resultado =
            loja.zel({"imprimir", "--impressora", impressora.destino(), "--espera", "20000"});
        dela.join();
        EXPECT_EQ(resultado.codigo, codigo);
        EXPECT_TRUE(contem(resultado.saida + resultado.erros, dito)) << resultado.saida;
    }
}

} // namespace
