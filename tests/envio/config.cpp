// SPDX-License-Identifier: MIT
// zel-envio.toml: what it gives, what is refused and where; addresses; the first one of a till.
#include "config/Classes.h"
#include "config/Configuracao.h"
#include "config/Enderecos.h"
#include "config/Primeira.h"

#include "apoio/PastaTemporaria.h"
#include "apoio/Trecho.h"

#include <algorithm>
#include <fstream>
#include <gtest/gtest.h>
#include <string>

using namespace zel::envio;

namespace {

// The refusals of a text; empty when it was taken.
std::string recusasDe(const std::string &toml, const std::string &diretorio = "/etc/loja") {
    Recusas recusas;
    const bool lida = Configuracao::ler(toml, diretorio, recusas).has_value();
    EXPECT_EQ(lida, recusas.nenhuma());
    return recusas.texto();
}

} // namespace

TEST(ConfiguracaoDoEnvio, da_o_que_diz_com_caminhos_a_partir_de_sua_pasta) {
    const PastaTemporaria pasta;
    pasta.gravar("csc.txt", "0123456789ABCDEF\r\nresto", 0600);
    pasta.gravar("classes.csv",
                 "\xEF\xBB\xBF"
                 "CST;cClassTrib;reducao\r\n# isentas\r\n200;200034;60,5\r\n410;410999;-\r\n"
                 "ncm;1905;200034\r\nproduto;Pão 7;410999\r\n",
                 0644);
    pasta.gravar("zel-envio.toml", R"(
esquemas = "/opt/leiaute"
cUF = 43
certificado = { arquivo = "loja.pfx", senha_arquivo = "/etc/senha" }
qrcode = { id_csc = "000012", csc_arquivo = "csc.txt" }
[intermediador]
indIntermed = "1"
CNPJ = "00000000000191"
idCadIntTran = "loja7"
[pagamentos]
"Cartão de crédito" = { tpIntegra = "2" }
99 = { tPag = "17" }
[produtos."1.01"]
CEST = "1704700"
pST = "18.5"
[ncm."22"]
cBenef = "SEM CBENEF"
[padrao]
CST = "200"
cClassTrib = "200034"
[ibs_cbs]
desde = "nunca"
classes = "classes.csv"
[[ibs_cbs.taxas]]
desde = "2027-01-01"
pIBSUF = "0.05"
pIBSMun = "0.05"
pCBS = "8.8"
[servicos]
RecepcaoEvento = "https://127.0.0.1:8443/ws/NFeRecepcaoEvento4"
[servicos_nome]
RecepcaoEvento = "NFeRecepcaoEvento"
[servicos_metodo]
NfeRetAutorizacao = "nfeRetAutorizacao"
[rede]
tempo_maximo = 5
autoridades = "autoridade.pem"
[fila]
por_minuto = 90
[[caixas]]
diretorio = "/srv/caixa1"
copias = "historico/"
[[caixas]]
diretorio = "caixa2"
[pagina]
porta = 8065
)",
                 0644);
    Recusas recusas;
    const auto lida = Configuracao::abrir(pasta / "zel-envio.toml", recusas);
    ASSERT_TRUE(lida) << recusas.texto();
    EXPECT_EQ(lida->certificado.arquivo, pasta / "loja.pfx");
    EXPECT_EQ(lida->certificado.arquivoSenha, "/etc/senha");
    EXPECT_EQ(lida->esquemas + lida->cUF + lida->intermediadorId, "/opt/leiaute43loja7");
    EXPECT_EQ(lida->qrcode.idCsc + " " + lida->qrcode.csc, "12 0123456789ABCDEF");
    EXPECT_EQ(lida->pagamentos.at("03").tpIntegra + lida->pagamentos.at("99").tPag, "217");
    EXPECT_EQ(lida->produtos.at("1.01").pST->texto(2, 4, 3), "18.50");
    EXPECT_EQ(lida->produtos.at("Pão 7").CST, "410");
    EXPECT_EQ(lida->ncm.at("1905").cClassTrib, "200034");
    EXPECT_EQ(lida->ncm.at("22").cBenef, "SEM CBENEF");
    EXPECT_EQ(lida->fila.porMinuto + lida->fila.avisoHoras + lida->portaDaPagina, 90 + 4 + 8065);
    ASSERT_EQ(lida->caixas.size(), 2U);
    EXPECT_EQ(lida->caixas[0].diretorio + " " + lida->caixas[0].copias,
              "/srv/caixa1/ " + pasta / "historico/");
    EXPECT_EQ(lida->caixas[1].diretorio, pasta / "caixa2/");
    const auto &classes = lida->ibsCbs.classes;
    ASSERT_EQ(classes.size(), 3U); // and the plain one
    EXPECT_EQ(classes[0].reducao.texto(2, 4, 3), "60.50");
    EXPECT_TRUE(classes[1].semValores);
    EXPECT_EQ(classes[2].cClassTrib, "000001");
    EXPECT_EQ(lida->ibsCbs.taxas.at(0).pCBS.texto(2, 4, 3), "8.80");
    EXPECT_EQ(enderecoDe(*lida, "RS", 1, Servico::kRecepcaoEvento),
              "https://127.0.0.1:8443/ws/NFeRecepcaoEvento4");
    EXPECT_EQ(enderecoDe(*lida, "RS", 1, Servico::kStatusServico),
              enderecoDe("RS", 1, Servico::kStatusServico));
    EXPECT_EQ(lida->nomes.recepcaoEvento + lida->metodos.retAutorizacao,
              "NFeRecepcaoEventonfeRetAutorizacao");
    EXPECT_EQ(lida->rede.tempoMaximo, 5);
    EXPECT_EQ(lida->rede.autoridades, pasta / "autoridade.pem");
}

TEST(ConfiguracaoDoEnvio, recusa_tudo_de_uma_vez_com_linha_e_o_que_cabe) {
    EXPECT_EQ(recusasDe("esquema = 'x'\ncUF = '99'\n[qrcode]\nversao = 4\nid_csc = 1.5\n"
                        "csc = 'com branco'\n"),
              "zel-envio.toml, linha 2, cUF: \"99\"; é o código IBGE de um estado, como \"43\"\n"
              "zel-envio.toml, linha 1, esquema: chave desconhecida; aqui cabem: esquemas, cUF, "
              "verAplic, [certificado], [emitente], [qrcode], [responsavel_tecnico], "
              "[intermediador], [pagamentos], [produtos], [ncm], [padrao], [ibs_cbs], [servicos], "
              "[servicos_nome], [servicos_metodo], [rede], [fila], [pagina], [[caixas]]\n"
              "zel-envio.toml, linha 6, [qrcode] csc: é um segredo: até 128 letras, dígitos e "
              "sinais, sem brancos\n"
              "zel-envio.toml, linha 5, [qrcode] id_csc: escreva o valor entre aspas; é o número "
              "do CSC, de 1 a 6 dígitos: no caixa, CONFIGURACAO\\IDTokenSefaz\n"
              "zel-envio.toml, linha 4, [qrcode] versao: \"4\"; é 2 (com CSC) ou 3 (sem CSC)");
}

TEST(ConfiguracaoDoEnvio, recusa_o_que_nao_cabe_ou_nao_combina) {
    const std::string fundo = "a" + repetir(".a", 200000);
    const struct {
        std::string toml;
        const char *parte;
    } kCasos[] = {
        {"x", "linha 1: não é TOML"},
        {fundo + " = 1", "umas dentro das outras"},
        {"[" + fundo + "]", "umas dentro das outras"},
        {"x = " + std::string(300, '[') + std::string(300, ']'), "umas dentro das outras"},
        {"verAplic = \"\"\"\na\"\"\"", "várias linhas"},
        {"verAplic = '" + std::string(1U << 20, 'x') + "'", "1 MiB"},
        {"verAplic = 'a\\u0001'\nverAplic = 'b'", "não é TOML"},
        {"verAplic = \"a\\nb\"", "1 a 20"},
        {"certificado = 'x.pfx'", "é uma seção"},
        {"[[produtos]]\nCEST = '1'", "é uma seção"},
        {"[certificado]\narquivo = 'a'\nmodulo = 'b'", "A1"},
        {"[certificado]\nsenha = 'x'", "cabem: arquivo, senha_arquivo"},
        {"[certificado]\nrotulo = ''\ntoken = '" + std::string(33, 'x') + "'",
         "[certificado] token: é o rótulo do token"},
        {"[qrcode]\ncsc = 'ABC'", "id_csc"},
        {"[qrcode]\nendereco = 'https://a.b/c?x=1'", "termina em \"?p=\""},
        {"[qrcode]\nendereco = 'https://a.b/" + std::string(120, 'c') + " d'", "começa por http"},
        {R"("a\n\u009B1m" = 1)", "linha 1, a  1m: chave desconhecida"},
        {"[responsavel_tecnico]\nCNPJ = '00000000000191'", "vão juntos"},
        {"[intermediador]\nindIntermed = '1'", "falta algum"},
        {"[pagamentos]\nPix = { tPag = '17' }", "99 OUTROS"},
        {"[pagamentos]\nOutros = { tPag = '17' }\n99 = { tPag = '18' }", "já foi dita"},
        {"[pagamentos]\nOutros = { tpIntegra = '2' }", "xPag"},
        {"[pagamentos]\n03 = { tBand = '01' }", "tpIntegra"},
        {"[pagamentos]\nDinheiro = { xPag = 'nota' }", "só tPag 99"},
        {"[pagamentos]\nOutros = { tPag = '90' }", "sem pagamento"},
        {"[responsavel_tecnico]\nemail = 'a@b.c'", "de 6 a 60"},
        {"[ncm.1]\nCEST = '1704700'", "2 a 8"},
        {"[padrao]\nCST = '200'\ncClassTrib = '000001'", "começa pelo CST"},
        {"[padrao]\nCST = '200'\ncClassTrib = '200034'", "não está na tabela"},
        {"[padrao]\npFCP = '1.23456'", "4 casas"},
        {"[ibs_cbs]\ndesde = '2026-02-30'", "AAAA-MM-DD"},
        {"[[ibs_cbs.taxas]]\ndesde = '2027-01-01'", "falta pCBS"},
        {"[ibs_cbs]\ntaxas = 1", "[[ibs_cbs.taxas]]"},
        {"[ibs_cbs]\nclasses = 'nenhum.csv'", "não existe"},
        {"[ibs_cbs]\ntaxa = 1", "cabem: desde, CST, cClassTrib, classes, taxas"},
        {"[servicos]\nNfeStatusServico = 'http://127.0.0.1/ws'", "começa por https://"},
        {"[servicos]\nNfeStatusServico = 'https://'", "começa por https://"},
        {"[servicos]\nNfeStatusServico = 'https:///ws'", "começa por https://"},
        {"[servicos]\nNfeStatusServico = 'https://a:b@c/ws'", "senha"},
        {"[servicos]\nNfeStatusServico = 'https://a/ws?wsdl'", "senha"},
        {"[servicos]\nNfeStatus = 'https://a/ws'", "NfeConsultaProtocolo, NfeStatusServico"},
        {"[servicos_nome]\nRecepcaoEvento = 'a/b'", "letras e dígitos"},
        {"[rede]\ntempo_maximo = 0", "1 a 300"},
        {"[emitente]\nCNAE = '4721102'", "CNAE vai com"},
        {"[rede]\ntempo_maximo = 301", "1 a 300"},
    };
    for (const auto &[toml, parte] : kCasos)
        EXPECT_TRUE(contem(recusasDe(toml), parte)) << toml.substr(0, 80);
    EXPECT_TRUE(contem(recusasDe("esquemas = 'x'", ""), "a partir de \"/\""));
    EXPECT_FALSE(contem(recusasDe("certificado.senha_arquivo = 'SEGREDO'", ""), "SEGREDO"));
}

TEST(ConfiguracaoDoEnvio, linhas_da_tabela_de_classes_sao_recusadas_por_numero) {
    const PastaTemporaria pasta;
    const struct {
        const char *linha, *parte;
    } kCasos[] = {
        {"200;200034", "três colunas"},      {"200;100034;0", "começam pelo CST"},
        {"200;200034;100,01", "de 0 a 100"}, {"200;200034;", "de 0 a 100"},
        {"000;000001;0", "já está"},         {"ncm;1;000001", "2 a 8"},
        {"produto;7;000001", "já tem uma"},  {"produto;8;200099", "não está na tabela"},
    };
    for (const auto &[linha, parte] : kCasos) {
        pasta.gravar("c.csv", std::string("000;000001;0\nproduto;7;000001\n") + linha + "\n", 0644);
        const std::string recusas = recusasDe("ibs_cbs.classes = 'c.csv'", pasta / "");
        EXPECT_TRUE(contem(recusas, parte)) << linha;
    }
    EXPECT_TRUE(contem(recusasDe("ibs_cbs.classes = 'c.csv'", pasta / ""), "200099"));
}

TEST(ConfiguracaoDoEnvio, tabela_hostil_nao_custa_mais_do_que_pesa) {
    const PastaTemporaria pasta;
    std::string classes;
    for (int numero = 200000; numero < 300000; ++numero)
        classes += std::to_string(numero / 1000) + ";" + std::to_string(numero) + ";0\n";
    std::string linhas(4U << 20, ';');
    for (std::size_t i = 1; i < linhas.size(); i += 2)
        linhas[i] = '\n';
    for (const std::string &csv : {classes, linhas}) {
        pasta.gravar("c.csv", csv, 0644);
        const std::string recusas = recusasDe("ibs_cbs.classes = 'c.csv'", pasta / "");
        EXPECT_EQ(std::count(recusas.begin(), recusas.end(), '\n'), 100) << recusas.size();
        EXPECT_TRUE(recusas.ends_with("há mais recusas do que estas"));
    }
}

// What an accountant copies from the page to begin with.
TEST(ConfiguracaoDoEnvio, a_tabela_de_classes_do_manual_e_lida_como_esta) {
    const std::string pagina = lerTudo(ZEL_OURO "/../../../docs/envio.md").value_or("");
    const std::size_t inicio = pagina.find("CST;cClassTrib;reducao\n0");
    ASSERT_NE(inicio, pagina.npos);
    Configuracao config;
    Recusas recusas;
    lerClasses(pagina.substr(inicio, pagina.find("```", inicio) - inicio), "envio.md", config,
               recusas);
    conferirClasses(config, recusas);
    EXPECT_TRUE(recusas.nenhuma()) << recusas.texto();
    EXPECT_EQ(config.ibsCbs.classes.size(), 4U);
    EXPECT_EQ(config.ncm["1905"].cClassTrib + config.produtos["101"].CST, "200034200");
}

TEST(ConfiguracaoDoEnvio, segredos_abertos_a_outros_sao_recusados_sem_serem_ditos) {
    const PastaTemporaria pasta;
    const std::string noArquivo = "qrcode = { id_csc = '1', csc_arquivo = 's' }";
    const std::string naConfiguracao = "qrcode = { id_csc = '1', csc = 'SEGREDO' }";
    const struct {
        std::string toml, segredo;
        mode_t modoToml, modoSegredo;
        const char *parte; // empty: taken
    } kCasos[] = {
        {noArquivo, "SEGREDO", 0644, 0600, ""},
        {noArquivo, "SEGREDO", 0644, 0640, "chmod 600"},
        {noArquivo, "SEGREDO", 0644, 0604, "chmod 600"},
        {noArquivo, "\nSEGREDO", 0644, 0600, "vazia"},
        {noArquivo, "SEGREDO em\xE7", 0644, 0600, "sem brancos"},
        {naConfiguracao, "", 0600, 0600, ""},
        {naConfiguracao, "", 0644, 0600, "chmod 600"},
        {"qrcode = { id_csc = '1', csc = 'SEGREDO', csc_arquivo = 's' }", "SEGREDO", 0600, 0600,
         "use um"},
        {"qrcode = { id_csc = '1', csc_arquivo = 'falta' }", "", 0600, 0600, "não existe"},
        // In the wrong place.
        {"qrcode = { id_csc = 'SEGREDO', csc = 'x' }", "", 0600, 0600, "é o número do CSC"},
        {"qrcode = { id_csc = '1', csc_arquivo = 'SEGREDO' }", "", 0600, 0600, "não existe"},
        {"responsavel_tecnico = { idCSRT = 'SEGREDO' }", "", 0600, 0600, "2 dígitos"},
        {"responsavel_tecnico = { csrt_arquivo = 'SEGREDO' }", "", 0600, 0600, "não existe"},
        {"ibs_cbs.classes = 's'", "SEGREDO", 0644, 0600, "s, linha 1: são três colunas"},
    };
    for (const auto &[toml, segredo, modoToml, modoSegredo, parte] : kCasos) {
        pasta.gravar("s", segredo, modoSegredo);
        Recusas recusas;
        const auto lida = Configuracao::abrir(pasta.gravar("t", toml, modoToml), recusas);
        EXPECT_EQ(lida.has_value(), *parte == '\0') << toml << recusas.texto();
        EXPECT_TRUE(contem(recusas.texto(), parte));
        EXPECT_FALSE(contem(recusas.texto(), "SEGREDO"));
    }
}

TEST(Enderecos, de_cada_estado_ou_de_quem_o_atende) {
    const struct {
        const char *uf;
        int tpAmb;
        Servico servico;
        const char *endereco;
    } kCasos[] = {
        {"SC", 1, Servico::kAutorizacao,
         "https://nfce.svrs.rs.gov.br/ws/NfeAutorizacao/NFeAutorizacao4.asmx"},
        {"AP", 2, Servico::kQrCode, "https://www.sefaz.ap.gov.br/nfcehml/nfce.php"},
        {"AM", 1, Servico::kConsultaChave, "www.sefaz.am.gov.br/nfce/consulta"},
        {"XX", 1, Servico::kQrCode, ""},
        {"-", 1, Servico::kAutorizacao, ""},
        {"SVRS", 1, Servico::kAutorizacao, ""},
        {"RS", 3, Servico::kAutorizacao, ""},
    };
    for (const auto &[uf, tpAmb, servico, endereco] : kCasos)
        EXPECT_EQ(enderecoDe(uf, tpAmb, servico), endereco) << uf;
    for (const char *uf :
         {"AC", "AL", "AP", "AM", "BA", "CE", "DF", "ES", "GO", "MA", "MT", "MS", "MG", "PR",
          "PB", "PA", "PE", "PI", "RJ", "RN", "RS", "RO", "RR", "SC", "SE", "SP", "TO"})
        for (int tpAmb = 1; tpAmb <= 2; ++tpAmb)
            for (int servico = 0; servico <= static_cast<int>(Servico::kConsultaChave); ++servico)
                EXPECT_NE(enderecoDe(uf, tpAmb, static_cast<Servico>(servico)), "")
                    << uf << tpAmb << servico;
}

TEST(Enderecos, de_cada_servico_o_que_a_configuracao_diz_dele) {
    const char *const kNomes[] = {"NfeAutorizacao",       "NfeRetAutorizacao", "NfeInutilizacao",
                                  "NfeConsultaProtocolo", "NfeStatusServico",  "RecepcaoEvento"};
    std::string toml = "qrcode = { endereco = 'https://q', urlChave = 'https://chave.exemplo' }\n"
                       "[servicos]\n";
    for (const char *nome : kNomes)
        toml += std::string(nome) + " = 'https://loja/" + nome + "'\n";
    Recusas recusas;
    const auto config = Configuracao::ler(toml, "", recusas);
    ASSERT_TRUE(config) << recusas.texto();
    int servico = 0;
    for (const char *nome : kNomes)
        EXPECT_EQ(enderecoDe(*config, "SP", 2, static_cast<Servico>(servico++)),
                  std::string("https://loja/") + nome);
    EXPECT_EQ(enderecoDe(*config, "SP", 2, Servico::kQrCode), "https://q");
    EXPECT_EQ(enderecoDe(*config, "SP", 2, Servico::kConsultaChave), "https://chave.exemplo");
}

TEST(PrimeiraConfiguracao, le_se_como_esta_sem_o_segredo_nem_chaves_que_o_caixa_escreva) {
    const std::string caixa =
        "<FRAMEWORKZEL><NFCE><UrlQrcode>https://q?a=1&b=2</UrlQrcode></NFCE>"
        "<CONFIGURACAO><IDTokenSefaz>000007</IDTokenSefaz><TipoAmbiente>3"
        "</TipoAmbiente><TokenSefaz>SEGREDO</TokenSefaz></CONFIGURACAO><IDE><cUF>43</cUF><tpEmis>1"
        "</tpEmis><xJust>conting\xEAncia</xJust></IDE><EMIT><CNPJ>00000000000191</CNPJ><CRT>3</CRT>"
        "<ENDEREMIT><UF>SP\n[qrcode]\nversao = 3</UF></ENDEREMIT></EMIT></FRAMEWORKZEL>\r\n";
    Recusas recusas;
    const auto texto = primeiraConfiguracao(caixa, recusas);
    ASSERT_TRUE(texto) << recusas.texto();
    const auto lida = Configuracao::ler(*texto, "/etc/loja", recusas);
    ASSERT_TRUE(lida) << recusas.texto();
    EXPECT_EQ(lida->cUF + lida->qrcode.idCsc, "437");
    EXPECT_EQ(lida->qrcode.versao, 2);
    EXPECT_EQ(texto->find("SEGREDO"), std::string::npos);
    for (const char *parte : {"TokenSefaz do caixa e não", "00000000 (", "por 00000000.", "CRT 3",
                              "TipoAmbiente do caixa não é 1", "é de outro estado"})
        EXPECT_EQ(texto->find(parte) == std::string::npos, parte == std::string("00000000 ("))
            << parte;

    const std::string fabrica = lerTudo(ZEL_OURO "/ZEL_Framework.xml").value_or("");
    for (const std::string &outro : {std::string("<FRAMEWORKZEL/>"), fabrica}) {
        const auto primeira = primeiraConfiguracao(outro, recusas);
        ASSERT_TRUE(primeira) << recusas.texto();
        const auto semToken = Configuracao::ler(*primeira, "", recusas);
        ASSERT_TRUE(semToken) << recusas.texto();
        EXPECT_EQ(semToken->qrcode.versao, 3) << "version 2 would refuse the first document";
    }
    EXPECT_FALSE(primeiraConfiguracao("<NFe/>", recusas));

    // The example lines, too, are ones that a shop can use.
    std::string usada;
    for (std::size_t i = 0, fim = 0; i < texto->size(); i = fim + 1) {
        fim = std::min(texto->find('\n', i), texto->size());
        std::string linha = texto->substr(i, fim - i);
        const bool exemplo = linha.starts_with("# ") &&
                             (linha.find(" = ") != linha.npos || linha.starts_with("# ["));
        if (linha.find("modulo") == linha.npos && linha.find("arquivo =") == linha.npos &&
            linha.find("_arquivo") == linha.npos && linha.find("classes =") == linha.npos)
            usada += (exemplo ? linha.substr(2) : linha) + "\n";
    }
    EXPECT_TRUE(Configuracao::ler(usada, "/etc/loja", recusas)) << recusas.texto() << usada;
}
