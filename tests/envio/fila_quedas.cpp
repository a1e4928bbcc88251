// SPDX-License-Identifier: MIT
// The queue when something dies, is cut, is full or is in somebody else's hands: what was committed
// is there, and nothing else.
#include "Fichas.h"

#include "apoio/Filho.h"

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <functional>
#include <sqlite3.h>
#include <thread>

using namespace zel::envio;
using namespace zel::envio::ensaio;

namespace {

// All of a queue that a test changes.
std::string tudo(Fila &fila) {
    std::string texto;
    for (const Ficha &f : fila.procurar({}))
        texto += f.chave + ' ' + std::to_string(static_cast<int>(f.estado)) + ' ' +
                 fila.original(f.id) + ' ' + fila.mensagem(f.id) + ' ' + fila.elemento(f.id) + ' ' +
                 std::to_string(fila.passos(f.id).size()) + '\n';
    EXPECT_EQ(fila.falha(), "");
    return texto;
}

// A document on its way, a commit each, with `depois` after it.
void andar(Fila &fila, std::int64_t numero, const std::function<void()> &depois) {
    Recusas recusas;
    const std::int64_t id = *fila.achar(nota(numero), kMeioDia, recusas);
    depois();
    Mudanca assinado, respondido;
    assinado.mensagem = "<NFe>" + std::string(9000, static_cast<char>('a' + numero)) + "</NFe>";
    respondido.resposta = resposta(100, Desfecho::kAutorizado);
    respondido.resposta->elemento = "<protNFe/>";
    const struct {
        Estado de, para;
        Mudanca mudanca;
    } kPassos[] = {{Estado::kAchado, Estado::kTraduzido, {}},
                   {Estado::kTraduzido, Estado::kAssinado, assinado},
                   {Estado::kAssinado, Estado::kEnviado, {}},
                   {Estado::kEnviado, Estado::kRespondido, respondido}};
    for (const auto &passo : kPassos) {
        fila.mudar(id, passo.de, passo.para, passo.mudanca, kMeioDia, recusas);
        depois();
    }
    EXPECT_TRUE(recusas.nenhuma()) << recusas.texto();
}

// What a queue tells that is made of these bytes in a directory of its own; none when it refuses
// them. One that opens can be written, too.
std::optional<std::string> lidaDe(const std::string &banco, const std::string &wal) {
    const PastaTemporaria pasta;
    pasta.gravar("fila.db", banco);
    if (!wal.empty()) pasta.gravar("fila.db-wal", wal);
    Recusas recusas;
    const auto fila = Fila::abrir(pasta / "", recusas);
    EXPECT_EQ(fila == nullptr, !recusas.nenhuma());
    if (fila == nullptr) return {};
    std::string estado = tudo(*fila);
    EXPECT_TRUE(fila->achar(nota(99), kMeioDia, recusas)) << recusas.texto();
    return estado;
}

struct Instante {
    std::string banco, wal, estado;
};

// A queue after each of its commits; the first one has no document yet.
std::vector<Instante> instantesDe(ComFila &loja) {
    std::vector<Instante> instantes;
    const auto olhar = [&] {
        instantes.push_back({lerTudo(loja.caminho() + "fila.db").value_or(""),
                             lerTudo(loja.caminho() + "fila.db-wal").value_or(""),
                             tudo(*loja.fila)});
    };
    olhar();
    andar(*loja.fila, 1, olhar);
    andar(*loja.fila, 2, olhar);
    return instantes;
}

} // namespace

TEST(FilaQuedas, cortada_em_qualquer_byte_e_um_dos_estados_confirmados_ou_recusa) {
    ComFila loja;
    const std::vector<Instante> instantes = instantesDe(loja);
    const auto esperado = [&](const std::string &estado, std::size_t ate) {
        return std::any_of(instantes.begin(),
                           instantes.begin() + static_cast<std::ptrdiff_t>(ate) + 1,
                           [&](const Instante &i) { return i.estado == estado; });
    };
    ASSERT_EQ(instantes.size(), 11U);
    ASSERT_EQ(instantes.back().banco.size(), 4096U); // no checkpoint came between
    int recusas = 0;
    for (std::size_t i = 0; i < instantes.size(); ++i) {
        const Instante &este = instantes[i];
        ASSERT_EQ(lidaDe(este.banco, este.wal), este.estado) << i;
        // What this commit added to the file is not there whole: its state is not there at all.
        const std::size_t antes = i == 0 ? 0 : instantes[i - 1].wal.size();
        ASSERT_LT(antes, este.wal.size());
        std::size_t tamanho = antes;
        for (; tamanho < este.wal.size(); tamanho += 2003) {
            const auto cortada = lidaDe(este.banco, este.wal.substr(0, tamanho));
            ASSERT_EQ(cortada, i == 0 ? "" : instantes[i - 1].estado) << i << ", " << tamanho;
            std::string suja = este.wal;
            suja.replace(tamanho, 100, std::string(100, '\x5A'));
            const auto lida = lidaDe(este.banco, suja);
            ASSERT_TRUE(lida && esperado(*lida, i) && *lida != (i == 0 ? "-" : este.estado))
                << i << ", " << tamanho;
        }
    }
    // The file itself, with the changes beside it and without, and after they came into it.
    const Instante ultimo = instantes.back();
    loja.fila.reset();
    const std::string inteira = lerTudo(loja.caminho() + "fila.db").value_or("");
    ASSERT_EQ(lidaDe(inteira, ""), ultimo.estado);
    for (std::size_t tamanho = 0; tamanho < inteira.size(); tamanho += 2999)
        for (const std::string &wal : {ultimo.wal, std::string()}) {
            const auto lida = lidaDe(inteira.substr(0, tamanho), wal);
            recusas += lida ? 0 : 1;
            // Nothing at all is a queue that begins.
            const bool nova = tamanho == 0 && wal.empty();
            ASSERT_TRUE(!lida || nova || *lida == ultimo.estado) << tamanho << ' ' << wal.size();
        }
    EXPECT_GT(recusas, 10);
}

TEST(FilaQuedas, morta_no_meio_de_uma_transacao_volta_ao_que_estava_confirmado) {
    ComFila outra;
    const std::vector<Instante> instantes = instantesDe(outra);
    for (int vivos = 0; vivos <= 10; ++vivos) {
        ComFila loja;
        loja.fila.reset();
        const int fim = emFilho([&] {
            int passos = 0;
            std::optional<Fila::Transacao> aberta;
            Recusas recusas;
            const auto fila = Fila::abrir(loja.caminho(), recusas);
            const auto depois = [&] {
                ++passos;
                if (passos == vivos) aberta.emplace(*fila);
                if (passos == vivos + 2) ::raise(SIGKILL);
            };
            if (vivos == 0) aberta.emplace(*fila);
            for (const std::int64_t numero : {1, 2, 3})
                andar(*fila, numero, depois);
            return 0;
        });
        EXPECT_EQ(fim, -1);
        loja.reabrir();
        EXPECT_EQ(tudo(*loja.fila), instantes[static_cast<std::size_t>(vivos)].estado) << vivos;
    }
}

TEST(FilaQuedas, com_o_disco_cheio_recusa_e_continua_quando_ha_espaco) {
    const int fim = emFilho([] {
        ComFila loja;
        const std::int64_t id = loja.achar(nota(1));
        loja.levar(id, Estado::kTraduzido);
        const std::string antes = tudo(*loja.fila);
        Mudanca mudanca;
        mudanca.mensagem = std::string(4U << 20, 'x'); // more than is kept in memory
        const auto assinar = [&](Recusas &recusas) {
            return loja.fila->mudar(id, Estado::kTraduzido, Estado::kAssinado, mudanca, kMeioDia,
                                    recusas);
        };
        Recusas recusas;
        limitarArquivos(std::filesystem::file_size(loja.caminho() + "fila.db-wal") + 9000);
        EXPECT_FALSE(assinar(recusas));
        EXPECT_TRUE(contem(recusas.texto(), "o disco está cheio"));
        EXPECT_EQ(tudo(*loja.fila), antes);
        {
            // The failure takes the whole transaction; what comes after it is not written alone.
            Fila::Transacao fora(*loja.fila);
            EXPECT_TRUE(loja.fila->achar(nota(2), kMeioDia, recusas));
            EXPECT_FALSE(assinar(recusas));
            EXPECT_FALSE(loja.fila->achar(nota(3), kMeioDia, recusas));
            EXPECT_FALSE(fora.confirmar(recusas));
        }
        EXPECT_EQ(tudo(*loja.fila), antes);
        limitarArquivos(RLIM_INFINITY);
        Recusas nenhumas;
        EXPECT_TRUE(assinar(nenhumas)) << nenhumas.texto();
        EXPECT_TRUE(loja.fila->mensagem(id) == *mudanca.mensagem);
        loja.reabrir();
        EXPECT_TRUE(loja.fila->mensagem(id) == *mudanca.mensagem);
        return ::testing::Test::HasFailure() ? 1 : 0;
    });
    EXPECT_EQ(fim, 0);
}

TEST(FilaQuedas, nas_maos_de_outro_recusa_e_nao_escreve_a_metade) {
    ComFila loja;
    sqlite3 *outro = nullptr;
    sqlite3_open((loja.caminho() + "fila.db").c_str(), &outro);
    sqlite3_exec(outro, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr);
    {
        Fila::Transacao transacao(*loja.fila);
        EXPECT_FALSE(transacao.aberta());
        sqlite3_exec(outro, "ROLLBACK", nullptr, nullptr, nullptr);
        // The way is free now; what belongs together still does not begin half-way.
        EXPECT_FALSE(loja.fila->achar(nota(1), kMeioDia, loja.recusas));
        EXPECT_FALSE(transacao.confirmar(loja.recusas));
    }
    EXPECT_TRUE(contem(loja.recusas.texto(), "outro programa segura a fila"));
    EXPECT_EQ(tudo(*loja.fila), "");
    EXPECT_TRUE(loja.fila->achar(nota(1), kMeioDia, loja.recusas));
    sqlite3_close(outro);
}

TEST(FilaQuedas, dois_ao_mesmo_tempo_acham_uma_vez_e_mudam_uma_vez) {
    constexpr int kNotas = 40;
    const PastaTemporaria pasta;
    std::array<int, 2> mudadas{};
    const auto trabalhar = [&](int &minhas) {
        Recusas recusas;
        const auto fila = Fila::abrir(pasta / "fila/", recusas);
        ASSERT_NE(fila, nullptr) << recusas.texto();
        for (int numero = 1; numero <= kNotas; ++numero) {
            const auto id = fila->achar(nota(numero), kMeioDia, recusas);
            ASSERT_TRUE(id) << recusas.texto();
            minhas += fila->mudar(*id, Estado::kAchado, Estado::kTraduzido, {}, kMeioDia, recusas);
        }
        EXPECT_TRUE(recusas.nenhuma()) << recusas.texto();
    };
    std::thread um(trabalhar, std::ref(mudadas[0])), dois(trabalhar, std::ref(mudadas[1]));
    um.join();
    dois.join();
    EXPECT_EQ(mudadas[0] + mudadas[1], kNotas);
    Recusas recusas;
    EXPECT_EQ(Fila::abrir(pasta / "fila/", recusas)->contar()[1].quantos, kNotas);
}
