// SPDX-License-Identifier: MIT
#include "Loja.h"

#include "apoio/Biblioteca.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/capability.h>
#include <stdlib.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <numeric>
#include <set>
#include <sstream>

namespace {

// A shop in São Paulo, Simples Nacional, production.
const Loja::Valores kLimpa = {
    {R"(CONFIGURACAO\TipoAmbiente)", "1"},
    {R"(CONFIGURACAO\TokenSefaz)", "SEGREDO-0123456789"},
    {R"(URLS\SP\Producao)", "https://www.nfce.fazenda.sp.gov.br/qrcode"},
    {R"(IDE\cUF)", "35"},
    {R"(IDE\cMunFG)", "3550308"},
    {R"(EMIT\CNPJ)", "11222333000181"},
    {R"(EMIT\xNome)", "Padaria da Esquina Ltda"},
    {R"(EMIT\ENDEREMIT\xLgr)", "Rua Direita"},
    {R"(EMIT\ENDEREMIT\xBairro)", "Centro"},
    {R"(EMIT\ENDEREMIT\cMun)", "3550308"},
    {R"(EMIT\ENDEREMIT\xMun)", "S\xe3o Paulo"},
    {R"(EMIT\ENDEREMIT\CEP)", "01001000"},
    {R"(EMIT\IE)", "110042490114"},
    {R"(PROD\NCM)", "19059090"},
    {R"(IMPOSTO\ICMS\ICMS00\Orig)", ""},
    {R"(IMPOSTO\ICMS\ICMSSN102\Orig)", "0"},
    {R"(IMPOSTO\ICMS\ICMSSN102\CSOSN)", "102"},
};

void abrirComo(const std::string &caminho, int modo, int fd) {
    dup2(open(caminho.c_str(), modo, 0600), fd);
}

// The child: its files are those of `pasta`.
[[noreturn]] void tornarSeZel(const Argumentos &argumentos, const Ambiente &ambiente,
                              const PastaTemporaria &pasta) {
    abrirComo(pasta / "entrada", O_RDONLY, STDIN_FILENO);
    abrirComo(pasta / "saida", O_WRONLY | O_CREAT, STDOUT_FILENO);
    abrirComo(pasta / "erros", O_WRONLY | O_CREAT, STDERR_FILENO);
    // Root reads and writes everything otherwise.
    prctl(PR_CAPBSET_DROP, CAP_DAC_OVERRIDE);
    prctl(PR_CAPBSET_DROP, CAP_DAC_READ_SEARCH);
    for (const char *variavel : {"ZEL_DIRETORIO", "ZEL_LOG", "LANG", "LC_CTYPE"})
        unsetenv(variavel);
    setenv("LC_ALL", "C.UTF-8", 1);
    setenv("TZ", "BRT3", 1);
    for (const auto &[nome, valor] : ambiente)
        setenv(nome.c_str(), valor.c_str(), 1);
    std::vector<char *> ponteiros{const_cast<char *>("zel")};
    for (const std::string &argumento : argumentos)
        ponteiros.push_back(const_cast<char *>(argumento.c_str()));
    ponteiros.push_back(nullptr);
    execv(ZEL_PROGRAMA, ponteiros.data());
    _exit(126);
}

int esperar(pid_t processo) {
    int estado = 0;
    waitpid(processo, &estado, 0);
    return WIFEXITED(estado) ? WEXITSTATUS(estado) : -1;
}

} // namespace

Resultado rodar(const Argumentos &argumentos, const Ambiente &ambiente, std::string_view entrada,
                const std::function<void(pid_t)> &meio) {
    const PastaTemporaria pasta;
    pasta.gravar("entrada", entrada);
    const pid_t processo = fork();
    if (processo == 0) tornarSeZel(argumentos, ambiente, pasta);
    if (meio) meio(processo);
    return {esperar(processo), pasta.ler("saida"), pasta.ler("erros")};
}

testing::AssertionResult Resultado::deu(int esperado, std::string_view dito) const {
    if (codigo == esperado) return contem(saida + erros, dito);
    return testing::AssertionFailure() << "ended with " << codigo << ":\n" << saida + erros;
}

std::string Resultado::achados() const {
    std::string_view json = saida;
    const auto depois = [&](std::string_view marca) {
        const std::size_t lugar = json.find(marca);
        if (lugar == json.npos) return std::string();
        json.remove_prefix(lugar + marca.size());
        return std::string(json.substr(0, json.find('"')));
    };
    std::string lista;
    for (std::string id = depois(R"({"id":")"); !id.empty(); id = depois(R"({"id":")"))
        lista += (lista.empty() ? "" : ", ") + depois(R"("gravidade":")") + " " + id;
    return lista;
}

Loja::Loja() {
    // The library creates the file; its text is then changed.
    EXPECT_TRUE(zel({"config", "gravar", R"(EMIT\CRT)", "1"}).deu(0));
    configurar(kLimpa);
}

void Loja::configurar(const Valores &valores) const {
    std::string texto = ler("ZEL_Framework.xml");
    for (const auto &[caminho, valor] : valores) {
        // The start tags of the groups and of the key follow each other.
        std::size_t lugar = 0;
        for (std::size_t inicio = 0; inicio <= caminho.size();) {
            const std::size_t fim = std::min(caminho.find('\\', inicio), caminho.size());
            const std::string marca = "<" + std::string(caminho.substr(inicio, fim - inicio)) + ">";
            lugar = texto.find(marca, lugar);
            ASSERT_NE(lugar, std::string::npos) << caminho;
            lugar += marca.size();
            inicio = fim + 1;
        }
        texto.replace(lugar, texto.find("</", lugar) - lugar, valor);
    }
    gravar("ZEL_Framework.xml", texto);
}

std::string Loja::retrato() const {
    std::set<std::string> linhas;
    for (const auto &entrada : std::filesystem::directory_iterator(diretorio())) {
        struct stat dados {};
        stat(entrada.path().c_str(), &dados);
        std::ostringstream linha;
        linha << entrada.path() << dados.st_ino << ' ' << dados.st_mode << ' ' << dados.st_size
              << ' ' << dados.st_mtim.tv_sec << '.' << dados.st_mtim.tv_nsec << '\n';
        linhas.insert(linha.str());
    }
    return std::accumulate(linhas.begin(), linhas.end(), std::string());
}

void Loja::comCaixaAberto(const std::function<void(const Funcoes &)> &passos,
                          const std::function<void()> &meio) const {
    std::array<int, 2> pronto{}, fim{};
    ASSERT_EQ(pipe(pronto.data()) + pipe(fim.data()), 0);
    const pid_t processo = fork();
    if (processo == 0) {
        close(fim[1]);
        setenv("ZEL_DIRETORIO", diretorio().c_str(), 1);
        setenv("TZ", "BRT3", 1);
        const Biblioteca biblioteca(ZEL_BIBLIOTECA);
        passos(biblioteca.funcoes());
        char letra = '.';
        const bool avisado = write(pronto[1], &letra, 1) == 1;
        if (read(fim[0], &letra, 1) != 0 || !avisado) _exit(1);
        _exit(testing::Test::HasFailure());
    }
    close(pronto[1]);
    close(fim[0]);
    char letra = 0;
    EXPECT_EQ(read(pronto[0], &letra, 1), 1);
    meio();
    close(fim[1]);
    EXPECT_EQ(esperar(processo), 0);
    close(pronto[0]);
}

void Loja::noCaixa(const std::function<void(const Funcoes &)> &passos) const {
    comCaixaAberto(passos, [] {});
}

void Loja::vender(const Funcoes &caixa, int estado) {
    ASSERT_EQ(caixa.aCFAbrir_ZEL("12345678909", "Maria de Tal", "", "", "", "", "", "", ""), 1);
    if (estado == 1) return;
    ASSERT_EQ(caixa.aCFVender_ZEL("T1800", "2", "8,50", "D%", "10", "202", "UN", "Refrigerante"),
              1);
    ASSERT_EQ(caixa.aCFVender_ZEL("T1800", "0,350", "39,90", "A$", "0,50", "303", "KG", "Queijo"),
              1);
    if (estado == 2) return;
    ASSERT_EQ(caixa.aCFTotalizar_ZEL("", ""), 1);
    if (estado == 3) return;
    ASSERT_EQ(caixa.aCFEfetuarPagamento_ZEL("Dinheiro", "50,00"), 1);
    if (estado == 4) return;
    ASSERT_EQ(caixa.tCFEncerrar_ZEL("Obrigado"), 1);
}
