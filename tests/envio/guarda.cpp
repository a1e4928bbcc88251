// SPDX-License-Identifier: MIT
// What the law wants kept: where it stands, that nothing replaces it, and a month of it for the
// accountant.
#include "Fichas.h"

#include "guarda/Guarda.h"

#include "apoio/Filho.h"

#include <filesystem>
#include <sys/stat.h>
#include <zip.h>

using namespace zel::envio;
using namespace zel::envio::ensaio;

namespace {

const std::string kInut = "ID35261234567800019565001000000006000000007";
const std::string kProc = "<nfeProc versao=\"4.00\">é</nfeProc>";

Ficha fichaDe(Tipo tipo, const std::string &chave, const std::string &dhEmi = "") {
    Ficha ficha;
    ficha.tipo = tipo;
    ficha.chave = chave;
    ficha.dhEmi = dhEmi;
    return ficha;
}

std::string evento(const char *tipo) {
    return "<procEventoNFe><tpEvento>" + std::string(tipo) + "</tpEvento></procEventoNFe>";
}

// Name and bytes of each file of a package, in its order.
std::vector<std::pair<std::string, std::string>> conteudoDe(const std::string &arquivo) {
    std::vector<std::pair<std::string, std::string>> lidos;
    zip_t *pacote = zip_open(arquivo.c_str(), ZIP_RDONLY | ZIP_CHECKCONS, nullptr);
    EXPECT_NE(pacote, nullptr);
    for (zip_int64_t i = 0; pacote != nullptr && i < zip_get_num_entries(pacote, 0); ++i) {
        const auto indice = static_cast<zip_uint64_t>(i);
        zip_stat_t dados;
        zip_stat_index(pacote, indice, 0, &dados);
        std::string bytes(dados.size, '\0');
        zip_file_t *entrada = zip_fopen_index(pacote, indice, 0);
        EXPECT_EQ(zip_fread(entrada, bytes.data(), bytes.size()),
                  static_cast<zip_int64_t>(bytes.size()));
        zip_fclose(entrada);
        lidos.emplace_back(dados.name, bytes);
    }
    zip_discard(pacote);
    return lidos;
}

} // namespace

TEST(Guarda, cada_documento_tem_o_seu_lugar_so_para_ler) {
    const std::string chave = chaveDe(7);
    const struct {
        Ficha ficha;
        std::string conteudo, lugar; // empty: refused
    } kCasos[] = {
        {fichaDe(Tipo::kNfce, chave), kProc, "12345678000195/2026/09/" + chave + "-procNFe.xml"},
        {fichaDe(Tipo::kCancelamento, chave), evento("110111"),
         "12345678000195/2026/09/" + chave + "-110111-procEventoNFe.xml"},
        {fichaDe(Tipo::kCancelamento, chaveDe(8)), "<?xml version='1.0'?>\n" + evento("110112"),
         "12345678000195/2026/09/" + chaveDe(8) + "-110112-procEventoNFe.xml"},
        {fichaDe(Tipo::kInutilizacao, kInut, "2026-10-02T01:00:00-03:00"), "<ProcInutNFe/>",
         "12345678000195/2026/10/" + kInut + "-procInutNFe.xml"},
        {fichaDe(Tipo::kInutilizacao, kInut), "<ProcInutNFe/>", ""},
        {fichaDe(Tipo::kInutilizacao, kInut, "../../../"), "<ProcInutNFe/>", ""},
        {fichaDe(Tipo::kInutilizacao, "ID../../../../../../../../../../../../../etc", "2026-10"),
         "<ProcInutNFe/>", ""},
        {fichaDe(Tipo::kNfce, chave.substr(1)), kProc, ""},
        {fichaDe(Tipo::kNfce, "../" + chave.substr(3)), kProc, ""},
        {fichaDe(Tipo::kNfce, "352613" + chave.substr(6)), kProc, ""},
        {fichaDe(Tipo::kNfce, chaveDe(9)), "<NFe/>", ""},
        {fichaDe(Tipo::kNfce, chaveDe(9)), "", ""},
        {fichaDe(Tipo::kNfce, chaveDe(9)), "<?xml", ""},
        {fichaDe(Tipo::kCancelamento, chaveDe(9)), evento("110110"), ""},
    };
    const PastaTemporaria pasta;
    Guarda guarda(pasta / "guarda/");
    for (const auto &caso : kCasos) {
        Recusas recusas;
        const auto lugar = guarda.guardar(caso.ficha, caso.conteudo, recusas);
        EXPECT_EQ(lugar.has_value(), !caso.lugar.empty()) << caso.ficha.chave;
        EXPECT_EQ(recusas.nenhuma(), !caso.lugar.empty());
        EXPECT_EQ(guarda.lugarDe(caso.ficha), lugar.value_or("")) << caso.ficha.chave;
        if (!lugar) continue;
        EXPECT_EQ(*lugar, pasta / ("guarda/" + caso.lugar));
        struct stat dados {};
        ::stat(lugar->c_str(), &dados);
        EXPECT_EQ(dados.st_mode & 0777U, 0440U);
        const std::string xml = caso.conteudo.substr(caso.conteudo.find("?>\n") + 3);
        EXPECT_EQ(lerTudo(*lugar), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>" +
                                       (caso.conteudo[1] == '?' ? xml : caso.conteudo));
    }
    EXPECT_EQ(pasta.quantosEm("guarda/12345678000195/2026/09"), 3);
}

TEST(Guarda, outros_bytes_ficam_ao_lado_e_os_mesmos_nao_se_repetem) {
    const PastaTemporaria pasta;
    Guarda guarda(pasta / "");
    const Ficha ficha = fichaDe(Tipo::kNfce, chaveDe(7));
    const struct {
        std::string conteudo, fim;
        bool nova; // beside another one, and said
    } kCasos[] = {
        {kProc, "-procNFe.xml", false},         {kProc, "-procNFe.xml", false},
        {"<nfeProc/>", "-procNFe-2.xml", true}, {"<nfeProc/>", "-procNFe-2.xml", false},
        {kProc + " ", "-procNFe-3.xml", true},  {kProc, "-procNFe.xml", false},
    };
    for (const auto &caso : kCasos) {
        Recusas recusas;
        EXPECT_EQ(guarda.guardar(ficha, caso.conteudo, recusas),
                  pasta / ("12345678000195/2026/09/" + chaveDe(7) + caso.fim));
        EXPECT_EQ(recusas.nenhuma(), !caso.nova);
    }
    EXPECT_TRUE(lerTudo(guarda.lugarDe(ficha))->ends_with(kProc));
}

TEST(Guarda, com_o_disco_cheio_nada_fica_pela_metade) {
    const PastaTemporaria pasta;
    const int fim = emFilho([&] {
        limitarArquivos(64);
        Recusas recusas;
        const bool guardou =
            Guarda(pasta / "")
                .guardar(fichaDe(Tipo::kNfce, chaveDe(7)), kProc + std::string(99, ' '), recusas)
                .has_value();
        return !guardou && recusas.texto().find("disco está cheio") != std::string::npos ? 0 : 1;
    });
    EXPECT_EQ(fim, 0);
    EXPECT_EQ(pasta.quantosEm("12345678000195/2026/09"), 0);
}

TEST(ExportarMes, tem_cada_arquivo_guardado_e_uma_linha_por_numero) {
    ComFila loja;
    const PastaTemporaria pasta;
    Guarda guarda(pasta / "");
    const auto entregar = [&](const Achado &achado, Desfecho desfecho,
                              const std::string &conteudo) {
        const std::int64_t id = loja.achar(achado);
        Resposta r = resposta(100, desfecho);
        r.protocolo = "135260000000001";
        loja.levar(id, Estado::kEnviado);
        loja.levar(id, Estado::kRespondido, r);
        loja.levar(id, Estado::kEntregue);
        if (!conteudo.empty()) guarda.guardar(*loja.fila->ficha(id), conteudo, loja.recusas);
    };
    Achado comConsumidor = nota(1);
    comConsumidor.consumidor = "=A1;\"x\"";
    Achado inutilizados = pedido(Tipo::kInutilizacao, 6, 7);
    inutilizados.chave = kInut;
    Achado outroMes = nota(9);
    outroMes.dhEmi = "2026-10-01T00:00:00-03:00";
    entregar(comConsumidor, Desfecho::kAutorizado, kProc);
    entregar(nota(2), Desfecho::kAutorizado, kProc);
    entregar(pedido(Tipo::kCancelamento, 2), Desfecho::kCancelado, evento("110111"));
    loja.levar(loja.achar(nota(3)), Estado::kRecusado);
    entregar(nota(3, "/caixas/2/"), Desfecho::kAutorizado, "");
    loja.levar(loja.achar(nota(4)), Estado::kRetirado);
    entregar(inutilizados, Desfecho::kInutilizado, "<ProcInutNFe/>");
    loja.achar(nota(8));
    loja.achar(nota(2009));
    loja.achar(outroMes);
    pasta.gravar("12345678000195/2026/09/.cortado.novo.xml", "não");
    ASSERT_TRUE(loja.recusas.nenhuma()) << loja.recusas.texto();

    const std::string arquivo = pasta / "setembro.zip";
    pasta.gravar("setembro.zip", "o anterior");
    EXPECT_EQ(exportarMes(*loja.fila, pasta / "", "2026-09", arquivo, loja.recusas), 4);
    EXPECT_TRUE(loja.recusas.nenhuma()) << loja.recusas.texto();
    struct stat dados {};
    ::stat(arquivo.c_str(), &dados);
    EXPECT_EQ(dados.st_mode & 0777U, 0600U);
    EXPECT_EQ(pasta.quantosEm(), 2);

    const auto lidos = conteudoDe(arquivo);
    ASSERT_EQ(lidos.size(), 5U);
    for (std::size_t i = 1; i < lidos.size(); ++i)
        EXPECT_EQ(lidos[i].second, lerTudo(pasta / lidos[i].first)) << lidos[i].first;
    const std::string serie = "12345678000195;homologacao;1;", hora = "2026-09-21T12:00:00-03:00;";
    const std::string semNumero =
        ";;sem documento;;;;;;nada se sabe deste número: se não foi usado, "
        "peça a sua inutilização\r\n";
    const std::string protocolo = "135260000000001;";
    EXPECT_EQ(lidos[0].first, "notas.csv");
    EXPECT_EQ(lidos[0].second,
              "\xEF\xBB\xBF"
              "cnpj;ambiente;serie;numero;ate;situacao;data;total;consumidor;protocolo;chave;"
              "motivo\r\n" +
                  serie + "1;;autorizada;" + hora + "12,34;\"'=A1;\"\"x\"\"\";" + protocolo +
                  chaveDe(1) + ";\r\n" + serie + "2;;cancelada;" + hora + "12,34;;" + protocolo +
                  chaveDe(2) + ";\r\n" + serie + "3;;autorizada;" + hora + "12,34;;" + protocolo +
                  chaveDe(3) + ";o arquivo não está na guarda\r\n" + serie +
                  "4;;retirado pelo caixa, não enviado;" + hora + "12,34;;;" + chaveDe(4) +
                  ";\r\n" + serie + "5" + semNumero + serie + "6;;inutilizado;" + hora + ";;" +
                  protocolo + kInut + ";100 motivo 100\r\n" + serie + "7;;inutilizado;" + hora +
                  ";;" + protocolo + kInut + ";100 motivo 100\r\n" + serie +
                  "8;;esperando a sua vez;" + hora + "12,34;;;" + chaveDe(8) + ";\r\n" + serie +
                  "10;2008" + semNumero.substr(1) + serie + "2009;;esperando a sua vez;" + hora +
                  "12,34;;;" + chaveDe(2009) + ";\r\n");
}

TEST(ExportarMes, recusa_o_que_nao_e_mes_e_deixa_o_arquivo_anterior_inteiro) {
    ComFila loja;
    const PastaTemporaria pasta;
    Guarda(pasta / "").guardar(fichaDe(Tipo::kNfce, chaveDe(7)), kProc, loja.recusas);
    pasta.gravar("a.zip", "o anterior");
    std::filesystem::create_directory(pasta / "pasta");
    const struct {
        const char *mes, *arquivo, *motivo;
    } kCasos[] = {
        {"2026-13", "a.zip", "AAAA-MM"},
        {"2026-09-01", "a.zip", "AAAA-MM"},
        {"../..", "a.zip", "AAAA-MM"},
        {"2026-09", "pasta", "não é um arquivo comum"},
        {"2026-09", "nada/a.zip", "a pasta não existe"},
    };
    for (const auto &caso : kCasos) {
        Recusas recusas;
        EXPECT_FALSE(exportarMes(*loja.fila, pasta / "", caso.mes, pasta / caso.arquivo, recusas));
        EXPECT_TRUE(contem(recusas.texto(), caso.motivo));
    }
    const int fim = emFilho([&] {
        limitarArquivos(64);
        Recusas recusas;
        return exportarMes(*loja.fila, pasta / "", "2026-09", pasta / "a.zip", recusas) ? 1 : 0;
    });
    EXPECT_EQ(fim, 0);
    EXPECT_EQ(pasta.ler("a.zip"), "o anterior");
    EXPECT_EQ(pasta.quantosEm(), 3);
}
