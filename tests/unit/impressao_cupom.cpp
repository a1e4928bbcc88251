// SPDX-License-Identifier: MIT
// Whole receipts against golden files, and the entry of printing: what is stored when, and what a
// refusal leaves. ZEL_REGENERAR=1 rewrites the golden receipts; look at the difference.
#include "apoio/Ouro.h"
#include "disco/ArquivoCripto.h"
#include "impressao/Impressao.h"
#include "impressao/Setores.h"
#include "impressao_apoio.h"
#include "texto/Texto.h"
#include "texto/TextoXml.h"

#include <regex>

using namespace impressao;

namespace {

class Cupons : public Teste {
protected:
    int imprimir(std::string_view xml, std::string_view retorno, int colunas,
                 std::string_view urlQrcode = "") {
        const std::string nota = gravar("nota.xml", xml), volta = gravar("retorno.xml", retorno);
        return fnGerarArquivoFormatadoNF(emCurso, dados, total,
                                         {nota, volta, urlQrcode, colunas, 1}, saida);
    }
    static std::string guardado(std::string_view caminho) {
        std::string valor;
        EXPECT_EQ(fnRegRetornarValor_ZEL(caminho, valor), ZEL_OK);
        return valor;
    }
    static std::string ultima() {
        std::string texto = "none";
        fnLerArquivoCriptUltimaDanfe(texto);
        return texto;
    }
    // Everything configured that a receipt shows.
    static void configurarTextos(std::string_view texto) {
        for (const std::string_view chave :
             {R"(NFCE\MsgLeiDoImposto)", R"(NFCE\MSGPROMOCIONAL\Titulo)", R"(EMIT\xNome)",
              R"(EMIT\IE)", R"(EMIT\ENDEREMIT\xLgr)", R"(EMIT\ENDEREMIT\Nro)",
              R"(EMIT\ENDEREMIT\xBairro)", R"(EMIT\ENDEREMIT\xMun)", R"(URLS\SP\Producao)",
              R"(URLS\SP\ChaveConsultaProducao)"})
            configurar({{chave, texto}});
        configurar({{R"(NFCE\MSGPROMOCIONAL\Imprimir)", "1"}});
    }
    // A receipt whose texts are all the same.
    static CupomFiscal cupomDe(std::string_view texto) {
        CupomFiscal cf;
        for (auto *campo :
             {&cf.EmitLogradouro, &cf.EmitInscricaoEstadual, &cf.DestNome, &cf.DestLogradouro})
            *campo = texto;
        for (auto *campo : {&cf.EmitBairro, &cf.EmitMunicipio, &cf.DestBairro, &cf.DestMunicipio})
            *campo = texto;
        cf.Nome = cf.CnpjCpf = cf.IdDest = cf.DestUF = cf.EmitUF = texto;
        cf.ChaveDeAcesso = cf.NumeroNotaFiscal = cf.Serie = cf.ProtocoloSefaz = texto;
        cf.DataHora = cf.DataHoraAutorizacao = texto;
        return cf;
    }
    void esperarOuro(const std::string &nome) const {
        compararComOuro(ouro(nome), saida);
        EXPECT_EQ(ultima(), saida);
    }

    std::string saida = "earlier";
};

} // namespace

TEST_F(Cupons, cupons_como_o_ouro) {
    configurar({{R"(CONFIGURACAO\TokenSefaz)", "segredo"},
                {R"(CONFIGURACAO\ArredondarTruncar)", "T"},
                {R"(URLS\SP\Producao)", "http://qr.sp"},
                {R"(NFCE\MsgLeiDoImposto)", "Tributos: | (Lei 12.741)"}});
    const std::string link = "<LinkNFCe>http://l?a=1&amp;b=2</LinkNFCe>";
    const std::string homologacao = trocar(simples, "<tpAmb>1", "<tpAmb>2");
    const std::string estrangeiro = "</emit><dest><idEstrangeiro>AB-12</idEstrangeiro></dest>";
    const std::string emContingencia =
        trocar(trocar(simples, "<tpEmis>1", "<tpEmis>9"), "</emit>", estrangeiro);
    using Texto = std::string_view;
    const std::tuple<std::string, std::string, std::string, Texto, Texto, Texto, Texto> casos[] = {
        {"normal", cheia, retornoEnvio, "1", "", "1", "3.00"},
        {"resumo_homologacao", homologacao, retornoSefaz, "0", "L", "0", "0"},
        {"contingencia", emContingencia, "", "0", "", "0", "0.00"},
        {"link", simples, retornoSefaz + link, "1", "L", "0", ""},
        {"offline", simples, "", "1", "", "0", ""}, // blanks where there is no authorization
    };
    for (const auto &[nome, xml, retorno, completa, logotipo, promocional, troco] : casos) {
        configurar({{R"(CONFIGURACAO\ImpressaoCompleta)", completa},
                    {R"(NFCE\Logotipo)", logotipo},
                    {R"(NFCE\MSGPROMOCIONAL\Imprimir)", promocional},
                    {R"(CONFIGURACAO\TrocoUltimaNFCe)", troco}});
        dados.IndicadorTroco = nome == "normal";
        emCurso.fnLimpar();
        if (nome == "normal") {
            ST_tagZEL infAdic("infAdic");
            infAdic.addSubTag("infCpl", "[ce][b]Volte[/b] sempre[/ce]");
            emCurso.encerramento.emplace("ENCERRAMENTO").addSubTag(infAdic);
        }
        for (const int colunas : {42, 48}) {
            ASSERT_EQ(imprimir(xml, retorno, colunas), ZEL_OK) << nome;
            esperarOuro("cupom_" + nome + "_" + std::to_string(colunas) + ".txt");
        }
    }
}

TEST_F(Cupons, cancelamentos_como_o_ouro) {
    const std::string pedido = gravar("p.xml", "<ChaAcesso>" + kChave + "</ChaAcesso>");
    const std::string retorno = gravar("r.xml", "<nProt>135140000000077</nProt>");
    const std::tuple<std::string, std::string, std::string_view, std::string_view, int> casos[] = {
        {"online", retorno, "11222333000181", "", 7},
        {"online_logotipo", retorno, "12345678909", "L", 48},
        {"offline", "OFFLINE", "11222333000181", "", 48},
        {"offline_logotipo", "OFFLINE", "12345678909", "L", 42}};
    for (const auto &[nome, volta, cnpj, logotipo, colunas] : casos) {
        configurar({{R"(EMIT\CNPJ)", cnpj}, {R"(NFCE\Logotipo)", logotipo}});
        ASSERT_EQ(fnGerarArquivoFormatadoNF(emCurso, dados, total, {pedido, volta, "", colunas, 5},
                                            saida),
                  ZEL_OK);
        esperarOuro("cancelamento_" + nome + ".txt");
    }
}

TEST_F(Cupons, qrcode_e_protocolo_ficam_guardados) {
    // The second cannot be kept.
    for (const auto &[conteudo, esperado] :
         Pares{{"http://x?2<lmodulo>4</lmodulo>", "http://x?2"}, {"<a></a>", ""}}) {
        ASSERT_EQ(imprimir(cheia, retornoEnvio, 42, conteudo), ZEL_OK) << conteudo;
        EXPECT_TRUE(contem(saida, "<qrcode>" + std::string(conteudo) + "</qrcode>", 1));
        EXPECT_EQ(guardado(R"(NFCE\UrlQrcode)"), esperado);
    }
    EXPECT_EQ(guardado(R"(NFCE\ChaveDeAcesso)"), kChave);
    EXPECT_EQ(guardado(R"(NFCE\ProtocoloAutorizacao)"), "135140000000001");
    ASSERT_EQ(imprimir(simples, "", 42), ZEL_OK);
    EXPECT_EQ(guardado(R"(NFCE\ProtocoloAutorizacao)"), ""); // not the sale's before
}

// Configuration values are XML text, as any tool writes them: what is printed, hashed or looked up
// is what they stand for.
TEST_F(Cupons, configuracao_imprime_igual_com_e_sem_referencias) {
    configurar({{R"(NFCE\MSGPROMOCIONAL\Imprimir)", "1"}});
    const std::string pedido = gravar("p.xml", "<ChaAcesso>" + kChave + "</ChaAcesso>");
    std::string cupons[2];
    for (const bool referencias : {false, true}) {
        for (const auto &[chave, valor] : Pares{
                 {R"(EMIT\xNome)", "Bar & <9>"},
                 {R"(EMIT\CNPJ)", "129"},
                 {R"(EMIT\IE)", "I9&"},
                 {R"(EMIT\ENDEREMIT\xLgr)", "Rua & <9>"},
                 {R"(EMIT\ENDEREMIT\Nro)", "1&<9>"},
                 {R"(EMIT\ENDEREMIT\xBairro)", "Bairro & <9>"},
                 {R"(EMIT\ENDEREMIT\xMun)", "Municipio & <9>"},
                 {R"(NFCE\MSGPROMOCIONAL\Titulo)", "Promo & <9>"},
                 {R"(NFCE\MsgLeiDoImposto)", "Lei & <9> |"},
                 {R"(URLS\SP\Producao)", "http://p?a&<9>"},
                 {R"(URLS\SP\ChaveConsultaProducao)", "http://c?a&<9>"},
                 {R"(CONFIGURACAO\TokenSefaz)", "token&<9>"},
                 {R"(CONFIGURACAO\IDTokenSefaz)", "09"},
             }) {
            const std::string escapado = substituirAll(escaparXml(valor), "9", "&#57;");
            configurar({{chave, referencias ? escapado : valor}});
        }
        for (const int colunas : {42, 48}) {
            ASSERT_EQ(imprimir(cheia, retornoEnvio, colunas), ZEL_OK);
            cupons[referencias] += saida;
        }
        ASSERT_EQ(
            fnGerarArquivoFormatadoNF(emCurso, dados, total, {pedido, "OFFLINE", "", 48, 5}, saida),
            ZEL_OK);
        cupons[referencias] += saida;
    }
    EXPECT_EQ(cupons[0], cupons[1]);
}

// A link without its end is worthless: what the configuration cannot hold is not kept at all.
TEST_F(Cupons, links_e_conteudos_saem_inteiros) {
    const auto endereco = [](std::size_t tamanho) {
        const std::string inicio = "http://l?p=", fim = "&hash=FIM";
        return inicio + std::string(tamanho - inicio.size() - fim.size(), 'x') + fim;
    };
    for (const std::size_t tamanho : {199U, 200U, 499U, 500U, 2000U}) {
        const std::string link = endereco(tamanho);
        const std::string retorno =
            retornoSefaz + "<LinkNFCe>" + substituirAll(link, "&", "&amp;") + "</LinkNFCe>";
        for (const int colunas : {42, 48}) {
            ASSERT_EQ(imprimir(simples, retorno, colunas), ZEL_OK);
            EXPECT_TRUE(contem(saida, "<qrcode>" + link + "<lmodulo>", 1)) << tamanho;
            EXPECT_TRUE(contem(saida, "Chave de Acesso em: " + link, 1)) << tamanho;
            EXPECT_EQ(guardado(R"(NFCE\UrlQrcode)"), tamanho < 500 ? link : "") << tamanho;
            ASSERT_EQ(imprimir(simples, retornoSefaz, colunas, link), ZEL_OK);
            EXPECT_TRUE(contem(saida, "<qrcode>" + link + "</qrcode>", 1)) << tamanho;
            EXPECT_EQ(guardado(R"(NFCE\UrlQrcode)"), tamanho < 500 ? link : "") << tamanho;
        }
    }
    // One that no QR code holds is no link: the content is built as without one.
    ASSERT_EQ(imprimir(simples, retornoSefaz + "<LinkNFCe>" + endereco(2001), 42), ZEL_OK);
    EXPECT_TRUE(contem(saida, "&cHashQRCode=", 1));
    EXPECT_TRUE(contem(saida, "http://l", 0));
}

// The caller brings the buffer: 8192 bytes without items, payments and closing text, also where all
// of it has to be made harmless.
TEST_F(Cupons, o_maior_cupom_cabe_no_tamanho_prometido) {
    for (const std::string &longo : {std::string(3000, 'x'), repetir("<b>", 1000)}) {
        configurarTextos(longo);
        configurar({{R"(CONFIGURACAO\TrocoUltimaNFCe)", "99999999999.99"}});
        CupomFiscal cf = cupomDe(longo);
        cf.LinkNFCe = longo;
        cf.EmitNumero = cf.DestNumero = std::numeric_limits<std::int32_t>::min();
        cf.ValorTotal = cf.ValorTotalTributos = cf.ValorDesconto = cf.ValorOutro = 1e15;
        cf.TipoAmbiente = "3";
        for (const std::int32_t emissao : {kEmissaoNormal, kEmissaoContingencia})
            for (const int colunas : {42, 48}) {
                cf.TipoEmissao = emissao;
                std::string texto;
                ASSERT_EQ(layoutNFC(emCurso, dados, cf, "", colunas, texto, true), ZEL_OK);
                EXPECT_GT(texto.size(), 2 * kMaximoLink);
                EXPECT_LT(texto.size(), 8192U);
            }
        // And 300 for an item beside its description.
        Item item;
        item.CodigoProduto = item.Quantidade = item.Unidade = item.DescricaoProduto = longo;
        item.ValorUnitario = 1e15;
        std::string texto;
        imprimirSetor_III(*createLayout(48), {&item, 1}, texto);
        EXPECT_LE(texto.size(), 300 + std::string_view(item.DescricaoProduto).size());
    }
}

// A mark in a value would cut the paper, print another's QR code or end the form's own marks.
TEST_F(Cupons, marcas_em_valores_nao_sao_marcas) {
    const auto imprimirTudo = [this](std::string_view valor) {
        configurarTextos(escaparXml(valor));
        CupomFiscal cf = cupomDe(valor);
        cf.LinkNFCe = valor;
        cf.MsgPromocional = valor;
        Item item;
        item.CodigoProduto = item.DescricaoProduto = item.Quantidade = item.Unidade = valor;
        cf.Itens = {item};
        cf.ValorTotalTributos = 1;
        std::string tudo, texto;
        for (const std::string_view ambiente : {"1", "3"})
            for (const std::int32_t emissao : {kEmissaoNormal, kEmissaoContingencia})
                for (const int colunas : {42, 48}) {
                    cf.TipoAmbiente = ambiente;
                    cf.TipoEmissao = emissao;
                    layoutNFC(emCurso, dados, cf, "", colunas, tudo, true);
                }
        cf.ChaveDeAcesso = valor;
        layoutCancNFC(cf, true, 48, texto);
        return tudo + texto;
    };
    const std::string semMarcas = imprimirTudo("x");
    for (const std::string_view marca : {"<b>", "<c>", "</c>", "<ce>", "<xl>", "<sl>", "<gui>",
                                         "</gui>", "<bmp>", "<qrcode>", "</qrcode>", "<lmodulo>"}) {
        const std::string texto = imprimirTudo(marca);
        EXPECT_EQ(vezesEm(texto, marca), vezesEm(semMarcas, marca)) << marca;
        EXPECT_GT(vezesEm(texto, trocar(std::string(marca), "<", "< ")), 100) << marca;
    }
    // Put together on the way: what a date and an address are made of.
    CupomFiscal cf;
    cf.TipoEmissao = kEmissaoNormal;
    cf.DataHora = cf.DataHoraAutorizacao = "2014-c>-x<T10:00:00";
    cf.EmitMunicipio = cf.DestMunicipio = "<upc";
    cf.EmitUF = cf.DestUF = "a>";
    cf.IdDest = cf.DestLogradouro = "x";
    for (const int colunas : {42, 48}) {
        std::string texto;
        layoutNFC(emCurso, dados, cf, "", colunas, texto, false);
        EXPECT_TRUE(contem(texto, "x< /c>/2014", 2));
        EXPECT_TRUE(contem(texto, "< upc-a>", 2));
        EXPECT_TRUE(contem(texto, "<upc-a>", 0));
    }
}

// What the till itself closes with keeps its marks; what a file brings as such is a value.
TEST_F(Cupons, so_a_mensagem_do_caixa_tem_marcas) {
    const std::string xml = trocar(cheia, "&lt;sempre&gt;", "&lt;b&gt;sempre&lt;/b&gt;");
    ASSERT_EQ(imprimir(xml, retornoEnvio, 42), ZEL_OK);
    EXPECT_TRUE(contem(saida, "Volte < b>sempre< /b>", 2));
    ST_tagZEL infAdic("infAdic");
    infAdic.addSubTag("infCpl", "[b]sempre[/b]");
    emCurso.encerramento.emplace("ENCERRAMENTO").addSubTag(infAdic);
    ASSERT_EQ(imprimir(xml, retornoEnvio, 42), ZEL_OK);
    EXPECT_TRUE(contem(saida, "Volte < b>sempre< /b>", 1));
    EXPECT_TRUE(contem(saida, "<b>sempre</b><sl>", 1));
}

// A line of its own could say anything, and a printer that wants CR LF prints a lone LF as stairs.
TEST_F(Cupons, valores_ficam_numa_linha_e_mensagens_acabam_em_cr_lf) {
    for (const std::string_view fim : {"\r\n", "\n", "\r", "&#10;", "&#13;&#10;"}) {
        const std::string valor = std::string("U").append(fim).append("D");
        std::string xml = cheia;
        for (const std::string marca : {"<xNome>", "<xLgr>", "<xBairro>", "<xMun>", "<IE>",
                                        "<cProd>", "<xProd>", "<uCom>", "<infCpl>"})
            xml = std::regex_replace(xml, std::regex(marca + "[^<]*"), marca + valor);
        const std::string retorno =
            trocar(retornoEnvio, "<DocProtocolo>", "<DocProtocolo>" + valor);
        for (const int colunas : {42, 48}) {
            ASSERT_EQ(imprimir(xml, retorno, colunas), ZEL_OK);
            EXPECT_TRUE(contem(saida, "U\r\nD", colunas == 42 ? 2 : 1)); // the closing text
            EXPECT_GT(vezesEm(saida, "U D"), 10);
            EXPECT_EQ(vezesEm(saida, "\n"), vezesEm(saida, "\r\n") + 1); // under the consumer
        }
    }
}

TEST_F(Cupons, linhas_de_textos_configurados_acabam_em_cr_lf) {
    configurar({{R"(NFCE\MSGPROMOCIONAL\Imprimir)", "1"}});
    const std::string pedido = gravar("p.xml", "<ChaAcesso>" + kChave + "</ChaAcesso>");
    for (const std::string_view texto : {"U\r\nD", "U\nD", "U\rD", "U&#13;&#10;D"}) {
        configurarTextos(texto);
        for (const int colunas : {42, 48}) {
            ASSERT_EQ(imprimir(cheia, retornoEnvio, colunas), ZEL_OK);
            EXPECT_TRUE(contem(saida, "U\r\nD", 3)); // tax law, title, address
            EXPECT_TRUE(contem(saida, "U\nD", 1));   // within the content of the QR code
        }
        ASSERT_EQ(
            fnGerarArquivoFormatadoNF(emCurso, dados, total, {pedido, "OFFLINE", "", 48, 5}, saida),
            ZEL_OK);
        EXPECT_TRUE(contem(saida, "U\r\nD", 6));
        EXPECT_TRUE(contem(saida, "U\nD", 0));
    }
}

TEST_F(Cupons, recusado_ou_vazio_deixa_o_ultimo) {
    ASSERT_EQ(imprimir(simples, retornoEnvio, 48), ZEL_OK);
    const std::string antes = saida, config = pasta.ler("ZEL_Framework.xml");
    EXPECT_EQ(imprimir(cheia, retornoEnvio, 40), ZEL_RECUSADO);
    EXPECT_EQ(imprimir(cheia, "<nProt>1</nProt>", 48), ZEL_RECUSADO);
    EXPECT_EQ(saida, "");
    EXPECT_EQ(pasta.ler("ZEL_Framework.xml"), config);
    configurar({{R"(CONFIGURACAO\ImpressaoCompleta)", "2"}});
    EXPECT_EQ(imprimir(cheia, retornoEnvio, 48), ZEL_OK);
    EXPECT_EQ(saida, "");
    EXPECT_EQ(ultima(), antes);
    // One that cannot be kept is no success.
    configurar({{R"(CONFIGURACAO\ImpressaoCompleta)", "1"}});
    std::filesystem::remove(pasta / "ultimadanfe.bin");
    std::filesystem::create_directory(pasta / "ultimadanfe.bin");
    EXPECT_EQ(imprimir(simples, retornoEnvio, 48), ZEL_ARQUIVO_INDISPONIVEL);
}

TEST_F(Cupons, pdf_de_recusado_ou_de_chave_insegura_nao_e_gravado) {
    configurar({{R"(CONFIGURACAO\SalvarDanfePDF)", "1"}});
    const std::string outra = "9" + kChave.substr(1), letra = "x" + kChave.substr(1);
    // What is replaced in the return, by what, the answer and the key in the file's name.
    const std::tuple<std::string_view, std::string_view, int, std::string> casos[] = {
        {">100<", ">150<", ZEL_OK, kChave},
        {">100<", ">204<", ZEL_FALHA_IMPRESSAO, kChave},
        {"<SitCodigo>", "<SitCodigos>204</SitCodigos><SitCodigo>", ZEL_OK, kChave},
        {"DocChaAcesso>", "docCHAACESSO>", ZEL_OK, kChave},
        {"<DocChaAcesso>", "<Outra>", ZEL_OK, kChave},
        {kChave, outra, ZEL_OK, outra},
        {kChave, letra, ZEL_RECUSADO, letra},
    };
    for (const auto &[de, para, codigo, chave] : casos) {
        EXPECT_EQ(imprimir(simples, trocar(retornoEnvio, de, para), 48), codigo) << para;
        EXPECT_TRUE(contem(saida, "<gui></gui>", 1));
        const bool gravado = std::filesystem::remove(pasta / ("NFe" + chave + "_DANFE.pdf"));
        EXPECT_EQ(gravado, codigo == ZEL_OK) << para;
    }
    EXPECT_EQ(imprimir(simples, "", 48), ZEL_RECUSADO); // "OFFLINE" names no file
    // The listing comes first, and its failure is answered at once.
    configurar({{R"(CONFIGURACAO\SalvarXMLPDF)", "1"}});
    EXPECT_EQ(imprimir(simples, retornoEnvio, 48), ZEL_RECUSADO);
    EXPECT_FALSE(existe(kId + "_DANFE.pdf"));
}

TEST_F(Cupons, parametros_so_mudam_o_troco_completos) {
    CupomFiscal cf;
    cf.ValorTotal = 10.5;
    const struct {
        int modo;
        std::string parametros;
        std::string_view troco;
        bool indicador;
    } casos[] = {
        {1, "ValorPgto=20,00;TXTLIVRE=oi;", "9.50", true},
        {1, "", "9.50", true},
        {1, "VALORPGTO=30", "9.50", true},
        {1, "VALORPGTO=;", "9.50", true},
        {1, std::string(90, ' ') + "VALORPGTO=30;", "9.50", true}, // cut in front of the ";"
        {0, "txtlivre=x;valorpgto=30.00;", "0.00", false},
        {1, "valorpgto=10.5;", "0.00", true},
    };
    for (const auto &[modo, parametros, troco, indicador] : casos) {
        EXPECT_EQ(fnAnalisarParametrosImpressao(dados, cf, modo, parametros), ZEL_OK);
        EXPECT_EQ(guardado(R"(CONFIGURACAO\TrocoUltimaNFCe)"), troco) << parametros;
        EXPECT_EQ(dados.IndicadorTroco, indicador) << parametros;
    }
}
