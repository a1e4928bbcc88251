// SPDX-License-Identifier: MIT
// zel ver and zel imprimir: which receipt they take, and a printer that is missing, refuses or
// stops taking bytes.
#include "Loja.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>

namespace {

using Argumentos = std::vector<std::string>;

Resultado zel(const Loja &loja, Argumentos argumentos,
              const std::map<std::string, std::string> &ambiente = {}) {
    argumentos.insert(argumentos.end(), {"--diretorio", loja.diretorio()});
    return rodar(argumentos, ambiente);
}

bool contem(std::string_view texto, std::string_view parte) {
    return texto.find(parte) != texto.npos;
}

void vender(const Loja &loja) {
    const Resultado venda = zel(loja, {"vender", "101;P\xc3\xa3o;6;0,75"});
    ASSERT_EQ(venda.codigo, 0) << venda.erros;
}

std::string chaveDe(const Loja &loja) {
    const std::string chave = zel(loja, {"config", "ler", R"(NFCE\ChaveDeAcesso)"}).saida;
    return chave.substr(0, 44);
}

std::string retorno(const Loja &loja, std::string_view situacao) {
    return "<Retorno>" + std::string(situacao) + "<DocChaAcesso>" + chaveDe(loja) +
           "</DocChaAcesso><DocProtocolo>135260000000007</DocProtocolo>"
           "<DocDhAut>2026-11-25T06:16:30-03:00</DocDhAut>"
           "<DocDigestValue>92rccaZ/hVOvYlxYt927zRnBLus=</DocDigestValue></Retorno>";
}

// A printer of the network that listens and takes nothing beyond what the system buffers.
class ImpressoraParada {
public:
    ImpressoraParada() {
        const int pouco = 1;
        setsockopt(porta_, SOL_SOCKET, SO_RCVBUF, &pouco, sizeof pouco);
        sockaddr_in onde{};
        onde.sin_family = AF_INET;
        onde.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t tamanho = sizeof onde;
        auto *endereco = reinterpret_cast<sockaddr *>(&onde);
        EXPECT_EQ(bind(porta_, endereco, tamanho), 0);
        EXPECT_EQ(listen(porta_, 1), 0);
        EXPECT_EQ(getsockname(porta_, endereco, &tamanho), 0);
        numero_ = ntohs(onde.sin_port);
    }
    ~ImpressoraParada() { close(porta_); }
    ImpressoraParada(const ImpressoraParada &) = delete;
    ImpressoraParada &operator=(const ImpressoraParada &) = delete;
    std::string endereco() const { return "tcp://127.0.0.1:" + std::to_string(numero_); }

private:
    int porta_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    int numero_ = 0;
};

TEST(Ver, gravaPngOuSvgDoUltimoCupom) {
    const Loja loja;
    const std::string figura = loja.diretorio() + "cupom";
    EXPECT_TRUE(contem(zel(loja, {"ver", "--saida", figura}).erros, "ainda não há nenhum cupom"));
    vender(loja);
    const Resultado png = zel(loja, {"ver", "--saida", figura + ".png"});
    EXPECT_EQ(png.codigo, 0) << png.erros;
    EXPECT_TRUE(contem(png.erros, "um ensaio, que não se entrega")) << png.erros;
    EXPECT_TRUE(loja.ler("cupom.png").starts_with("\x89PNG"));
    const Resultado svg =
        zel(loja, {"ver", "--saida", figura + ".svg", "--colunas", "42", "--json"});
    EXPECT_TRUE(contem(svg.saida, R"("colunas":"42")")) << svg.saida << svg.erros;
    EXPECT_TRUE(contem(loja.ler("cupom.svg"), R"(width="76mm")"))
        << loja.ler("cupom.svg").substr(0, 300);
    // What was laid out last is shown as it is.
    EXPECT_TRUE(contem(zel(loja, {"ver", "--saida", figura}).saida, "Colunas:           42"));
    EXPECT_EQ(zel(loja, {"ver", "--saida", "/nada/cupom.png"}).codigo, 2);
    EXPECT_EQ(zel(loja, {"ver", "--saida", figura, "--colunas", "40"}).codigo, 2);
}

// With a display the picture is opened, by a program of the desktop.
TEST(Ver, abreNaTela) {
    const Loja loja;
    vender(loja);
    EXPECT_TRUE(contem(zel(loja, {"ver"}, {{"DISPLAY", ""}, {"WAYLAND_DISPLAY", ""}}).erros,
                       "--saida ARQUIVO"));
    const std::string pasta = loja.diretorio();
    std::map<std::string, std::string> tela{
        {"DISPLAY", ":9"}, {"XDG_RUNTIME_DIR", pasta}, {"PATH", pasta}};
    EXPECT_TRUE(contem(zel(loja, {"ver"}, tela).erros, "xdg-open: ")) << "without one";
    for (const auto &[programa, codigo] : {std::pair{"#!/bin/sh\necho \"$1\" > \"$0.aberto\"\n", 0},
                                           std::pair{"#!/bin/sh\nexit 4\n", 2}}) {
        loja.escrever("xdg-open", programa);
        std::filesystem::permissions(pasta + "xdg-open", std::filesystem::perms::owner_all);
        const Resultado aberta = zel(loja, {"ver"}, tela);
        EXPECT_EQ(aberta.codigo, codigo) << aberta.erros;
        EXPECT_EQ(loja.ler("xdg-open.aberto"), pasta + "/zel-cupom.png\n");
    }
    EXPECT_TRUE(loja.ler("zel-cupom.png").starts_with("\x89PNG"));
}

// In production nothing is printed that the authority has not authorized.
TEST(Imprimir, soOQueFoiAutorizado) {
    const Loja loja;
    vender(loja);
    const std::string papel = loja.diretorio() + "papel";
    const Argumentos imprimir{"imprimir", "--impressora", papel};
    const std::string volta = loja.diretorio() + "retorno.xml";
    const auto comRetorno = [&](std::string_view situacao) {
        loja.escrever("retorno.xml", retorno(loja, situacao));
        Argumentos argumentos = imprimir;
        argumentos.insert(argumentos.end(), {"--retorno", volta});
        return zel(loja, argumentos);
    };
    EXPECT_TRUE(contem(zel(loja, imprimir).erros, "ainda não tem cupom"));
    // Nor is the trial that zel ver laid out.
    EXPECT_EQ(zel(loja, {"ver", "--saida", loja.diretorio() + "x.png"}).codigo, 0);
    EXPECT_TRUE(contem(zel(loja, imprimir).erros, "ainda não tem cupom"));
    for (const char *recusa : {"<SitCodigo>204</SitCodigo>", "<cStat>110</cStat>", "",
                               "<SitCodigo>135</SitCodigo>", "<SitCodigo>1000</SitCodigo>"})
        EXPECT_TRUE(contem(comRetorno(recusa).erros, "não autorizou a venda")) << recusa;
    EXPECT_TRUE(contem(zel(loja, {"imprimir", "--impressora", papel, "--retorno", "/nada"}).erros,
                       "/nada: "));
    EXPECT_FALSE(std::filesystem::exists(papel));
    for (const char *aceite :
         {"<SitCodigo>100</SitCodigo>", "<SITCODIGO> 150</SITCODIGO>", "<cStat>100</cStat>"}) {
        const Resultado impresso = comRetorno(aceite);
        EXPECT_EQ(impresso.codigo, 0) << aceite << "\n" << impresso.erros;
        EXPECT_TRUE(contem(loja.ler("papel"), "135260000000007")) << aceite;
    }
    // Kept since then: printed again without it, and cancelled by it.
    std::filesystem::remove(papel);
    const Resultado outra = zel(loja, imprimir);
    EXPECT_EQ(outra.codigo, 0) << outra.erros;
    EXPECT_EQ(outra.erros, "");
    EXPECT_TRUE(contem(loja.ler("papel"), "135260000000007"));
    // Other columns would need the return again: without it the protocol would be lost.
    EXPECT_EQ(zel(loja, {"ver", "--saida", papel, "--colunas", "42"}).codigo, 2);
    EXPECT_EQ(zel(loja, {"cancelar"}).codigo, 0);
}

// The request that took the document's place has a receipt of its own, when it was accepted.
TEST(Imprimir, comprovanteDeUmCancelamento) {
    const Loja loja;
    vender(loja);
    EXPECT_EQ(zel(loja, {"cancelar"}).codigo, 1);
    const std::string papel = loja.diretorio() + "papel";
    const auto comRetorno = [&](std::string_view situacao) {
        loja.escrever("retorno.xml", retorno(loja, situacao));
        return zel(loja, {"imprimir", "--impressora", papel, "--retorno",
                          loja.diretorio() + "retorno.xml"});
    };
    EXPECT_TRUE(contem(comRetorno("<SitCodigo>573</SitCodigo>").erros, "registrou o cancelamento"));
    EXPECT_EQ(comRetorno("<SitCodigo>135</SitCodigo>").codigo, 0);
    EXPECT_TRUE(contem(loja.ler("papel"), "CANCELAMENTO NFC-e"));
}

TEST(Imprimir, contingenciaEHomologacaoSemRetorno) {
    for (const Loja::Valores &valores :
         {Loja::Valores{{R"(IDE\tpEmis)", "9"}, {R"(IDE\xJust)", "Sem acesso à internet"}},
          Loja::Valores{{R"(CONFIGURACAO\TipoAmbiente)", "2"}}}) {
        Loja loja;
        loja.configurar(valores);
        vender(loja);
        const Resultado papel = zel(loja, {"imprimir", "--impressora", loja.diretorio() + "papel"});
        EXPECT_EQ(papel.codigo, 0) << papel.erros;
        EXPECT_FALSE(loja.ler("papel").empty());
    }
}

struct Caso {
    Argumentos argumentos; // after "imprimir"
    std::string_view dito;
};

const Caso kCasos[] = {
    {{}, "falta --impressora"},
    {{"--impressora", "/dev/usb/lp77"}, "não foi encontrada: 0 de "},
    {{"--impressora", "tcp://127.0.0.1:1"}, "recusa a ligação: em uso, sem permissão"},
    {{"--impressora", "tcp://"}, "argumento"},
    {{"--impressora", "/nada/papel"}, "No such file"},
    {{"--impressora", "papel", "--perfil", "nenhum"}, "zel imprimir --perfis"},
    {{"--impressora", "papel", "--espera", "0"}, "--espera é de 1 a 600000"},
    {{"--impressora", "papel", "--espera", "600001"}, "--espera é de 1 a 600000"},
    {{"--impressora", "papel", "--documento", "x.xml"}, "--documento vai com --retorno"},
    {{"papel"}, "não leva argumentos"},
};

TEST(Imprimir, erroClaro) {
    Loja loja;
    loja.configurar({{R"(CONFIGURACAO\TipoAmbiente)", "2"}});
    vender(loja);
    for (const Caso &caso : kCasos) {
        Argumentos argumentos = caso.argumentos;
        argumentos.insert(argumentos.begin(), "imprimir");
        const Resultado resultado = zel(loja, argumentos);
        EXPECT_EQ(resultado.codigo, 2) << caso.dito;
        EXPECT_TRUE(contem(resultado.erros, caso.dito)) << caso.dito << "\n" << resultado.erros;
    }
    EXPECT_TRUE(contem(zel(loja, {"imprimir", "--perfis"}).saida, "generico-80mm\n"));
}

TEST(Imprimir, impressoraParadaNaoPrendeOCaixa) {
    Loja loja;
    loja.configurar({{R"(CONFIGURACAO\TipoAmbiente)", "2"}});
    vender(loja);
    const ImpressoraParada impressora;
    const auto antes = std::chrono::steady_clock::now();
    const Resultado resultado =
        zel(loja, {"imprimir", "--impressora", impressora.endereco(), "--espera", "300", "--json"});
    // Far more than the wait, far less than for ever.
    EXPECT_LT(std::chrono::steady_clock::now() - antes, std::chrono::seconds(60));
    EXPECT_EQ(resultado.codigo, 2);
    EXPECT_TRUE(contem(resultado.saida, R"("resultado":"falhou","impressora":"tcp://127.0.0.1:)"));
    EXPECT_TRUE(contem(resultado.saida, R"("codigo":-11,)")) << resultado.saida;
}

// The profile and the columns reach the bytes.
TEST(Imprimir, perfilEscolhido) {
    Loja loja;
    loja.configurar({{R"(CONFIGURACAO\TipoAmbiente)", "2"}});
    vender(loja);
    const auto bytes = [&](const char *perfil) {
        const std::string papel = loja.diretorio() + "papel";
        EXPECT_EQ(zel(loja, {"imprimir", "--impressora", papel, "--perfil", perfil}).codigo, 0);
        return loja.ler("papel");
    };
    EXPECT_NE(bytes("generico-80mm"), bytes("bematech-esc-bema"));
}

} // namespace
