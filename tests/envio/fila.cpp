// SPDX-License-Identifier: MIT
// The queue: what it keeps and tells, and what it refuses. What becomes of it when something dies
// is in fila_quedas.cpp.
#include "Fichas.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sqlite3.h>
#include <sys/stat.h>

using namespace zel::envio;
using namespace zel::envio::ensaio;

namespace {

std::vector<std::int64_t> ids(const std::vector<Ficha> &fichas) {
    std::vector<std::int64_t> lista;
    for (const Ficha &ficha : fichas)
        lista.push_back(ficha.id);
    return lista;
}

using Ids = std::vector<std::int64_t>;

// By another program's hand.
bool comSqlite(const std::string &arquivo, const std::string &sql, std::string *erro = nullptr) {
    sqlite3 *banco = nullptr;
    char *motivo = nullptr;
    sqlite3_open(arquivo.c_str(), &banco);
    const bool certo = sqlite3_exec(banco, sql.c_str(), nullptr, nullptr, &motivo) == SQLITE_OK;
    if (erro != nullptr && motivo != nullptr) *erro = motivo;
    sqlite3_free(motivo);
    sqlite3_close(banco);
    return certo;
}

} // namespace

TEST(Fila, guarda_cada_membro_e_reconhece_os_mesmos_bytes_do_mesmo_caixa) {
    ComFila loja;
    Achado a = nota(7);
    a.tpEmis = 9;
    a.consumidor = "12345678909";
    a.nomeConsumidor = "José";
    a.substitui = chaveDe(6);
    a.troco = 50;
    a.original = std::string("\0\xE9 bytes", 8);
    const std::int64_t id = loja.achar(a);
    EXPECT_EQ(loja.achar(a), id);
    Achado outro = a;
    outro.caixa = "/caixas/2/";
    EXPECT_NE(loja.achar(outro), id);

    Mudanca mudanca;
    mudanca.proximo = kMeioDia + 5;
    mudanca.tentativas = 3;
    mudanca.motivo = "rede";
    ASSERT_TRUE(loja.fila->adiar(id, Estado::kAchado, mudanca, kMeioDia + 1, loja.recusas));
    loja.reabrir();
    const Ficha f = *loja.fila->ficha(id);
    EXPECT_EQ(std::tie(f.caixa, f.origem, f.tipo, f.original, f.chave, f.cnpj, f.modelo, f.serie,
                       f.numero, f.ultimo, f.tpAmb, f.tpEmis, f.dhEmi, f.total),
              std::make_tuple(a.caixa, a.origem, a.tipo, "", a.chave, a.cnpj, 65, 1, 7, 7, 2, 9,
                              a.dhEmi, 1234));
    EXPECT_EQ(std::tie(f.consumidor, f.nomeConsumidor, f.substitui, f.troco, f.estado, f.achado,
                       f.mudado, f.proximo, f.tentativas, f.motivo),
              std::make_tuple(a.consumidor, a.nomeConsumidor, a.substitui,
                              std::optional<Centavos>(50), Estado::kAchado, kMeioDia, kMeioDia + 1,
                              kMeioDia + 5, 3, "rede"));
    EXPECT_EQ(loja.fila->original(id), a.original);
    EXPECT_FALSE(loja.fila->ficha(99));
    EXPECT_EQ(loja.fila->falha(), "");
}

TEST(Fila, anda_so_pela_tabela_e_so_do_estado_em_que_esta) {
    for (const NomeEstado &de : kEstados)
        for (const NomeEstado &para : kEstados) {
            ComFila loja;
            const std::int64_t id = loja.achar(nota(1));
            if (de.estado == Estado::kPerguntar) loja.levar(id, Estado::kEnviado);
            loja.levar(id, de.estado);
            const std::size_t antes = loja.fila->passos(id).size();
            const auto mudou = [&](Estado em) {
                return loja.fila->mudar(id, em, para.estado, {}, kMeioDia, loja.recusas);
            };
            const bool ha = passa(de.estado, para.estado);
            EXPECT_EQ(mudou(de.estado), ha) << de.nome << " > " << para.nome;
            EXPECT_EQ(loja.recusas.nenhuma(), ha);
            EXPECT_EQ(loja.fila->ficha(id)->estado, ha ? para.estado : de.estado);
            EXPECT_EQ(loja.fila->passos(id).size(), antes + (ha ? 1U : 0U));
            // Somebody else was faster: no fault, no change.
            loja.recusas = {};
            EXPECT_FALSE(ha && mudou(de.estado));
            EXPECT_TRUE(loja.recusas.nenhuma());
            EXPECT_EQ(loja.fila->proximo("/caixas/1/", kMeioDia).has_value(),
                      !acabou(loja.fila->ficha(id)->estado));
        }
}

TEST(Fila, o_assinado_nao_muda_e_a_mudanca_que_o_tenta_se_desfaz_inteira) {
    ComFila loja;
    const std::int64_t id = loja.achar(nota(1));
    loja.levar(id, Estado::kTraduzido);
    Mudanca mudanca;
    mudanca.mensagem = "<NFe>assinada</NFe>";
    ASSERT_TRUE(loja.fila->mudar(id, Estado::kTraduzido, Estado::kAssinado, mudanca, kMeioDia,
                                 loja.recusas));
    // The same bytes are right; others are not, through whatever door.
    EXPECT_TRUE(loja.fila->adiar(id, Estado::kAssinado, mudanca, kMeioDia, loja.recusas));
    for (const char *outra : {"<NFe>outra</NFe>", ""}) {
        mudanca.mensagem = outra;
        loja.recusas = {};
        EXPECT_FALSE(loja.fila->mudar(id, Estado::kAssinado, Estado::kEnviado, mudanca, kMeioDia,
                                      loja.recusas));
        EXPECT_TRUE(contem(loja.recusas.texto(), "já foi assinada"));
        EXPECT_EQ(loja.fila->ficha(id)->estado, Estado::kAssinado);
        EXPECT_EQ(loja.fila->mensagem(id), "<NFe>assinada</NFe>");
    }
    for (const char *sql :
         {"UPDATE conteudo SET mensagem = NULL", "UPDATE conteudo SET original = x'00'",
          "DELETE FROM conteudo", "DELETE FROM documento"})
        EXPECT_FALSE(comSqlite(loja.caminho() + "fila.db", sql)) << sql;
}

TEST(Fila, a_resposta_fica_e_uma_mais_pobre_nao_apaga_o_que_uma_anterior_trouxe) {
    ComFila loja;
    const std::int64_t id = loja.achar(nota(1));
    loja.levar(id, Estado::kEnviado);
    Resposta r = resposta(150, Desfecho::kAutorizado);
    r.protocolo = "135260000000001";
    r.momento = "2026-09-21T12:00:01-03:00";
    r.recibo = "351000000000001";
    r.elemento = "<protNFe/>";
    r.evento = "<procEventoNFe/>";
    loja.levar(id, Estado::kRespondido, r);
    Mudanca pobre;
    pobre.resposta = resposta(108, Desfecho::kEsperar);
    ASSERT_TRUE(loja.fila->adiar(id, Estado::kRespondido, pobre, kMeioDia, loja.recusas));
    const Ficha f = *loja.fila->ficha(id);
    EXPECT_EQ(
        std::tie(f.cStat, f.xMotivo, f.desfecho, f.protocolo, f.momentoResposta, f.recibo),
        std::make_tuple(108, "motivo 108", Desfecho::kEsperar, r.protocolo, r.momento, r.recibo));
    EXPECT_EQ(loja.fila->elemento(id), "<protNFe/>");
    EXPECT_EQ(loja.fila->evento(id), "<procEventoNFe/>");
    const auto passos = loja.fila->passos(id);
    ASSERT_EQ(passos.size(), 4U);
    EXPECT_EQ(passos[3].detalhe, "150 motivo 150");
    EXPECT_EQ(std::make_pair(passos[3].de, passos[3].para),
              std::make_pair(Estado::kEnviado, Estado::kRespondido));
}

TEST(Fila, a_vez_e_pelo_momento_depois_pelo_achado_e_o_pedido_vem_depois_da_nota) {
    const struct {
        const char *caso;
        // Of the document 1, the document 2, the cancellation of document 1 (ids 1, 2, 3).
        Momento proximos[3];
        Momento agora;
        Ids vez;
        std::optional<Momento> proximo;
    } kCasos[] = {
        {"as found", {0, 0, 0}, 10, {1, 2, 3}, 0},
        {"by moment", {5, 3, 6}, 10, {2, 1, 3}, 3},
        {"not yet", {11, 10, 11}, 10, {2}, 10},
        {"request earlier than its document", {9, 5, 2}, 10, {2, 1}, 2},
        {"request of a document that waits", {11, 5, 2}, 10, {3, 2}, 2},
        {"as far as a pause goes",
         {kMaiorPausa, kMaiorPausa + 10, kMaiorPausa},
         10,
         {},
         kMaiorPausa},
        {"clock set back", {kMaiorPausa + 11, 5, kMaiorPausa + 12}, 10, {2, 1, 3}, 5},
        {"clock set back, all",
         {kMaiorPausa + 90, kMaiorPausa + 80, kMaiorPausa + 85},
         10,
         {2, 1},
         10},
    };
    for (const auto &caso : kCasos) {
        ComFila loja;
        const Achado achados[] = {nota(1), nota(2), pedido(Tipo::kCancelamento, 1)};
        for (int i = 0; i < 3; ++i) {
            const std::int64_t id = loja.achar(achados[i]);
            Mudanca mudanca;
            mudanca.proximo = caso.proximos[i];
            loja.fila->adiar(id, Estado::kAchado, mudanca, 1, loja.recusas);
        }
        loja.achar(nota(9, "/caixas/2/"));
        EXPECT_EQ(ids(loja.fila->prontas("/caixas/1/", caso.agora, 10)), caso.vez) << caso.caso;
        EXPECT_EQ(loja.fila->proximo("/caixas/1/", caso.agora), caso.proximo) << caso.caso;
        const Ids primeira(caso.vez.begin(), caso.vez.begin() + (caso.vez.empty() ? 0 : 1));
        EXPECT_EQ(ids(loja.fila->prontas("/caixas/1/", caso.agora, 1)), primeira) << caso.caso;
    }
    EXPECT_FALSE(ComFila().fila->proximo("/caixas/1/", 1));
}

TEST(Fila, procura_por_cada_coisa) {
    ComFila loja;
    Achado comConsumidor = nota(2);
    comConsumidor.consumidor = "12345678909";
    comConsumidor.dhEmi = "2026-10-01T00:00:00-03:00";
    loja.achar(nota(1));
    loja.achar(comConsumidor);
    loja.achar(nota(3, "/caixas/2/"));
    loja.achar(pedido(Tipo::kInutilizacao, 4, 6));
    loja.achar(pedido(Tipo::kCancelamento, 1));
    loja.levar(3, Estado::kRecusado);
    const struct {
        const char *caso;
        Procura procura;
        Ids achados;
    } kCasos[] = {
        {"all", {}, {5, 4, 3, 2, 1}},
        {"at most", {.maximo = 2}, {5, 4}},
        {"till", {.caixa = "/caixas/2/"}, {3}},
        {"key", {.chave = chaveDe(1)}, {5, 1}},
        {"day", {.dia = "2026-10-01"}, {2}},
        {"month", {.mes = "2026-09"}, {5, 4, 3, 1}},
        {"consumer", {.consumidor = "12345678909"}, {2}},
        {"number", {.numero = 2}, {2}},
        {"within an inutilization", {.numero = 5}, {4}},
        {"states", {.estados = {Estado::kRecusado, Estado::kRetirado}}, {3}},
        {"several at once", {.mes = "2026-09", .numero = 1, .estados = {Estado::kAchado}}, {5, 1}},
        {"hostile", {.chave = "' OR 1=1 --", .consumidor = "%"}, {}},
        {"a person", {.precisaDeAlguem = true, .atrasadoAntesDe = kMeioDia}, {3}},
        {"a person, late",
         {.precisaDeAlguem = true, .atrasadoAntesDe = kMeioDia + 1},
         {5, 4, 3, 2, 1}},
    };
    for (const auto &caso : kCasos)
        EXPECT_EQ(ids(loja.fila->procurar(caso.procura)), caso.achados) << caso.caso;
    EXPECT_EQ(ids(loja.fila->porNumero(kLoja, 2, 1, 1)), Ids{1});
    for (const Contagem &c : loja.fila->contar()) {
        const std::int64_t ha = c.estado == Estado::kAchado ? 4 : c.estado == Estado::kRecusado;
        EXPECT_EQ(c.quantos, ha);
        EXPECT_EQ(c.maisAntigo, ha > 0 ? kMeioDia : 0);
    }
}

TEST(Fila, um_recusado_deixa_de_precisar_de_alguem_quando_outro_toma_o_seu_lugar) {
    constexpr Estado kVolta = Estado::kRetirado;
    const Achado inutilizacao = pedido(Tipo::kInutilizacao, 1, 3);
    Achado substituta = nota(2);
    substituta.substitui = chaveDe(1);
    const struct {
        const char *caso;
        Tipo recusado;
        Achado outro;
        bool entregue, precisa;
        Estado fim = Estado::kRecusado;
    } kCasos[] = {
        {"issued again", Tipo::kNfce, nota(1, "/caixas/2/"), true, false},
        {"not there yet", Tipo::kNfce, nota(1, "/caixas/2/"), false, true},
        {"inutilized", Tipo::kNfce, inutilizacao, true, false},
        {"another number", Tipo::kNfce, nota(2), true, true},
        {"request again", Tipo::kCancelamento, pedido(Tipo::kCancelamento, 1, 2), true, false},
        {"its document alone", Tipo::kCancelamento, nota(1), true, true},
        {"taken back, and issued again", Tipo::kNfce, nota(1, "/caixas/2/"), false, false, kVolta},
        {"taken back, and replaced", Tipo::kNfce, substituta, false, false, kVolta},
        {"taken back, and inutilized", Tipo::kNfce, inutilizacao, true, false, kVolta},
        {"taken back alone", Tipo::kNfce, nota(2), true, true, kVolta},
    };
    for (const auto &caso : kCasos) {
        ComFila loja;
        loja.levar(loja.achar(caso.recusado == Tipo::kNfce ? nota(1) : pedido(caso.recusado, 1)),
                   caso.fim);
        loja.levar(loja.achar(caso.outro), caso.entregue ? Estado::kEntregue : Estado::kEnviado);
        if (caso.entregue) loja.levar(2, Estado::kEntregue);
        EXPECT_EQ(ids(loja.fila->procurar(
                      {.precisaDeAlguem = true, .retiradoAntesDe = kMeioDia + kHora})),
                  caso.precisa ? Ids{1} : Ids{})
            << caso.caso;
    }
}

TEST(Fila, lacunas_sao_os_numeros_que_ninguem_usou) {
    const struct {
        const char *caso;
        Estado estado; // of number 3, which stands between 2 and 4
        int cStat;
        Desfecho desfecho;
        bool lacuna;
    } kCasos[] = {
        {"on its way", Estado::kPerguntar, 0, Desfecho::kNenhum, false},
        {"authorized", Estado::kEntregue, 100, Desfecho::kAutorizado, false},
        {"refused", Estado::kRecusado, 225, Desfecho::kRecusado, true},
        {"denied", Estado::kRecusado, 301, Desfecho::kDenegado, false},
        {"there with another key", Estado::kRecusado, 539, Desfecho::kOutraChave, false},
        {"taken back", Estado::kRetirado, 0, Desfecho::kNenhum, false}, // sold, without a document
    };
    for (const auto &caso : kCasos) {
        ComFila loja;
        for (const std::int64_t numero : {2, 3, 4, 9})
            loja.achar(nota(numero));
        if (caso.estado == Estado::kPerguntar) loja.levar(2, Estado::kEnviado);
        if (caso.cStat != 0)
            loja.levar(2, Estado::kRespondido, resposta(caso.cStat, caso.desfecho));
        loja.levar(2, caso.estado);
        loja.achar(pedido(Tipo::kInutilizacao, 6, 7));
        Achado outraSerie = nota(100);
        outraSerie.serie = 2;
        loja.achar(outraSerie);
        std::string achadas;
        for (const Lacuna &l : loja.fila->lacunas())
            achadas += std::to_string(l.serie) + ':' + std::to_string(l.primeiro) + '-' +
                       std::to_string(l.ultimo) + ' ';
        EXPECT_EQ(achadas, (caso.lacuna ? "1:3-3 " : "") + std::string("1:5-5 1:8-8 "))
            << caso.caso;
        // Another one with the number closes it, and so does its inutilization.
        loja.achar(nota(3, "/caixas/2/"));
        EXPECT_EQ(loja.fila->lacunas().size(), 2U) << caso.caso;
    }
}

TEST(Fila, da_chave_o_entregue_depois_o_que_anda_depois_o_ultimo) {
    ComFila loja;
    for (const char *caixa : {"/a/", "/b/", "/c/"})
        loja.achar(nota(1, caixa));
    const auto qual = [&] { return loja.fila->porChave(chaveDe(1), Tipo::kNfce)->id; };
    EXPECT_EQ(qual(), 3);
    loja.levar(3, Estado::kRecusado);
    EXPECT_EQ(qual(), 2);
    loja.levar(1, Estado::kEntregue);
    loja.levar(1, Estado::kEntregue);
    EXPECT_EQ(qual(), 1);
    EXPECT_FALSE(loja.fila->porChave(chaveDe(1), Tipo::kCancelamento));
    EXPECT_FALSE(loja.fila->porChave("", Tipo::kNfce));
}

TEST(Fila, transacoes_valem_inteiras_e_as_de_dentro_se_desfazem_sozinhas) {
    ComFila loja;
    {
        Fila::Transacao fora(*loja.fila);
        loja.achar(nota(1));
        {
            Fila::Transacao dentro(*loja.fila);
            loja.achar(nota(2));
        }
        loja.achar(nota(3));
        EXPECT_TRUE(fora.confirmar(loja.recusas));
    }
    {
        Fila::Transacao fora(*loja.fila);
        loja.achar(nota(4));
    }
    std::vector<std::int64_t> numeros;
    for (const Ficha &f : loja.fila->procurar({}))
        numeros.push_back(f.numero);
    EXPECT_EQ(numeros, (std::vector<std::int64_t>{3, 1}));
}

TEST(Fila, servicos_e_anotacoes_ficam_pelo_nome) {
    ComFila loja;
    for (const int cStat : {108, 107})
        loja.fila->verServico({"NFeStatusServico4", "35", 2, cStat, 200, "em operação", 5, 12});
    loja.fila->verServico({"NFeAutorizacao4", "35", 2, 0, 0, "", 6, 0});
    loja.fila->anotar("parada", "certificado vencido");
    loja.fila->anotar("parada", "certificado recusado");
    loja.reabrir();
    const auto vistos = loja.fila->servicos();
    ASSERT_EQ(vistos.size(), 2U);
    EXPECT_EQ(std::make_pair(vistos[1].cStat, vistos[1].demora),
              std::make_pair(107, std::int64_t{12}));
    EXPECT_EQ(loja.fila->anotado("parada"), "certificado recusado");
    EXPECT_EQ(loja.fila->anotado("nada"), "");
}

TEST(Fila, so_o_dono_abre_a_pasta_e_os_arquivos) {
    ComFila loja;
    loja.achar(nota(1));
    for (const char *nome : {"", "fila.db", "fila.db-wal", "fila.db-shm"}) {
        struct stat dados {};
        ASSERT_EQ(::stat((loja.caminho() + nome).c_str(), &dados), 0) << nome;
        EXPECT_EQ(dados.st_mode & 0777U, *nome == 0 ? 0700U : 0600U) << nome;
    }
}

TEST(Fila, o_que_nao_e_uma_fila_e_recusado_com_remedio_e_fica_como_estava) {
    const auto texto = [](const char *bytes) {
        return [bytes](const std::string &pasta) { std::ofstream(pasta + "fila.db") << bytes; };
    };
    const auto sql = [](const char *comandos) {
        return [comandos](const std::string &pasta) { comSqlite(pasta + "fila.db", comandos); };
    };
    const auto estragada = [](std::size_t onde, std::size_t quantos) {
        return [=](const std::string &pasta) {
            Recusas recusas;
            Fila::abrir(pasta, recusas);
            std::fstream arquivo(pasta + "fila.db",
                                 std::ios::in | std::ios::out | std::ios::binary);
            arquivo.seekp(static_cast<std::streamoff>(onde)) << std::string(quantos, '\x5A');
        };
    };
    const struct {
        const char *caso;
        std::function<void(const std::string &)> preparar;
        const char *motivo;
    } kCasos[] = {
        {"text", estragada(0, 16), "não é uma fila"},
        {"short", texto("x"), "foi cortado"},
        {"another program's", sql("CREATE TABLE t (a)"), "de outro programa"},
        {"another's mark", sql("PRAGMA application_id = 7; CREATE TABLE t (a)"),
         "de outro programa"},
        {"newer", sql("PRAGMA application_id = 1514490950; PRAGMA user_version = 99"), "mais nova"},
        {"without tables", sql("PRAGMA application_id = 1514490950; PRAGMA user_version = 1"),
         "não tem as tabelas"},
        {"head", estragada(0, 100), "danificado"},
        {"first page", estragada(100, 3000), "danificado"},
        {"empty, with changes beside it",
         [](const std::string &pasta) {
             std::ofstream(pasta + "fila.db");
             std::ofstream(pasta + "fila.db-wal") << "mudanças";
         },
         "cópia de segurança"},
        {"gone, with changes beside it",
         [](const std::string &pasta) { std::ofstream(pasta + "fila.db-wal") << "mudanças"; },
         "cópia de segurança"},
        {"directory",
         [](const std::string &pasta) { std::filesystem::create_directory(pasta + "fila.db"); },
         "não é um arquivo comum"},
        {"open to others", [](const std::string &pasta) { ::chmod(pasta.c_str(), 0750); },
         "chmod 700"},
    };
    for (const auto &caso : kCasos) {
        const PastaTemporaria pasta;
        const std::string caminho = pasta / "";
        caso.preparar(caminho);
        const auto lido = [&] {
            return std::filesystem::is_directory(caminho + "fila.db") ? "" : pasta.ler("fila.db");
        };
        const std::string antes = lido();
        Recusas recusas;
        EXPECT_EQ(Fila::abrir(caminho, recusas), nullptr) << caso.caso;
        EXPECT_TRUE(contem(recusas.texto(), caso.motivo)) << caso.caso;
        EXPECT_TRUE(lido() == antes) << caso.caso;
    }
}
