// SPDX-License-Identifier: MIT
// A document's way through its states against an authority that answers as it is told, on a clock
// of the test's own: where it ends, how often it was sent, what the books say, what the till is
// told.
#include "fluxo/Fluxo.h"
#include "fluxo/Achados.h"
#include "fluxo/Destinos.h"
#include "fluxo/Entrega.h"
#include "fluxo/Servico.h"
#include "fluxo/Transmissao.h"

#include "apoio/PastaTemporaria.h"
#include "apoio/Trecho.h"
#include "envio/Autoridade.h"
#include "envio/Certificados.h"
#include "envio/Juiz.h"
#include "envio/Nota.h"

#include <atomic>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <thread>

namespace zel::envio {
namespace {

using namespace teste;

class RelogioFalso final : public Relogio {
public:
    Momento momento = ensaio::kAgora * 1000;
    Momento agora() const override { return momento; }
};

// A till, its queue, and the authority.
class Loja {
public:
    Loja() {
        const std::string senha(ensaio::kSenha);
        pasta.gravar("senha", senha + "\n", 0600);
        static const std::string titular =
            pkcs12DeEnsaio("Padaria", "11222333000181", senha, ensaio::kAgora);
        pasta.gravar("ensaio.p12", titular);
        mkdir((pasta / "caixa").c_str(), 0700);
        Recusas recusas;
        const auto lida = Configuracao::ler("cUF = \"43\"\n"
                                            "[certificado]\n"
                                            "arquivo = \"ensaio.p12\"\n"
                                            "senha_arquivo = \"senha\"\n"
                                            "[qrcode]\n"
                                            "versao = 3\n"
                                            "[[caixas]]\n"
                                            "diretorio = \"caixa\"\n",
                                            pasta.caminho(), recusas);
        EXPECT_TRUE(lida) << recusas.texto();
        config = *lida;
        config.esquemas = pastaDosEsquemas();
        fila = Fila::abrir(filaDe(config), recusas);
        EXPECT_TRUE(fila) << recusas.texto();
    }

    const std::string &caixa() const { return config.caixas[0].diretorio; }

    std::int64_t achar(const std::string &bytes, const std::string &substitui = {},
                       Centavos troco = 0) const {
        Recusas recusas;
        auto achado = acharEm(bytes, recusas);
        EXPECT_TRUE(achado) << recusas.texto();
        achado->caixa = caixa();
        achado->origem = "documentosEnvio.xml";
        achado->substitui = substitui;
        achado->troco = troco;
        const auto id = fila->achar(*achado, relogio.agora(), recusas);
        EXPECT_TRUE(id) << recusas.texto();
        return id.value_or(0);
    }

    // Another certificate in the same file, which the service sees.
    void trocarCertificado(const std::string &nome, const std::string &cnpj = "11222333000181",
                           const std::string &senha = std::string(ensaio::kSenha)) const {
        pasta.gravar("ensaio.p12", pkcs12DeEnsaio(nome, cnpj, senha, ensaio::kAgora));
        Recusas recusas;
        oficina->acompanhar(recusas);
    }

    // Until nothing waits any more, or nothing but what waits for a person.
    void andar(int vezes = 60) {
        Fluxo fluxo(meios());
        for (int i = 0; i < vezes; ++i) {
            fluxo.tratarProntas(caixa(), Milissegundos(30000), 10);
            const auto proximo = fila->proximo(caixa(), relogio.agora());
            if (!proximo) return;
            relogio.momento = std::max(relogio.momento, *proximo);
        }
    }

    Meios meios() { return {config, *oficina, linha, relogio, *fila, sefaz}; }
    std::string retorno(const std::string &nome) const {
        return pasta.ler("caixa/retornos/" + nome + ".retorno.xml");
    }

    PastaTemporaria pasta;
    RelogioFalso relogio;
    Configuracao config;
    std::unique_ptr<Fila> fila;
    std::unique_ptr<Oficina> oficina = std::make_unique<Oficina>(config, 1);
    Linha linha;
    AutoridadeFalsa sefaz;
};

Nota nota(const std::string &numero, const std::string &tpEmis = "1") {
    Nota nota;
    nota.tpAmb = "2";
    nota.nNF = numero;
    nota.tpEmis = tpEmis;
    nota.dhEmi = momentoEscrito(ensaio::kAgora * kSegundo, "-03:00");
    if (tpEmis == "9")
        nota.contingencia = "<dhCont>" + nota.dhEmi +
                            "</dhCont>"
                            "<xJust>Sem conexao com a internet</xJust>";
    return nota;
}

Transmitido transmitirBytes(Loja &loja, const std::string &bytes, int prazo = 5000,
                            const std::string &substitui = {}) {
    Recusas recusas;
    auto achado = acharEm(bytes, recusas);
    achado->caixa = loja.caixa();
    achado->substitui = substitui;
    loja.linha.respondeu("43/2", 0); // another process each time
    return transmitir(loja.meios(), *achado, Milissegundos(prazo), recusas);
}

std::string cancelamento(const std::string &chave, const std::string &protocolo = {}) {
    return "<EnvioEvento><Evento><tpAmb>2</tpAmb><ChaAcesso>" + chave +
           "</ChaAcesso><NtfCnpjEmissor>11222333000181</NtfCnpjEmissor><EveInf><EveTp>110111"
           "</EveTp><EveDh>2026-09-21T12:04:00</EveDh><EveFusoHorario>-03:00</EveFusoHorario>"
           "<Evedet><EvenProt>" +
           protocolo +
           "</EvenProt><EvexJust>Desistencia do consumidor</EvexJust></Evedet></EveInf>"
           "</Evento></EnvioEvento>";
}

Transmitido transmitirNota(Loja &loja, const Nota &nota, int prazo = 5000,
                           const std::string &substitui = {}) {
    return transmitirBytes(loja, nota.xml(), prazo, substitui);
}

struct Caminho {
    const char *nome;
    std::deque<std::string> ordens;
    Estado fim;
    int cStat;
    std::size_t envios, consultas;
};

const Caminho kCaminhos[] = {
    {"autorizada", {}, Estado::kEntregue, 100, 1, 0},
    {"fora do prazo", {"150"}, Estado::kEntregue, 150, 1, 0},
    {"rejeitada", {"778"}, Estado::kRecusado, 778, 1, 0},
    {"denegada", {"301"}, Estado::kRecusado, 301, 1, 0},
    // The line is down, and back: asked how it is before the document goes out again.
    {"sem conexao", {"sem-conexao", "sem-conexao", "107"}, Estado::kEntregue, 100, 2, 0},
    {"resposta perdida", {"resposta-perdida"}, Estado::kEntregue, 100, 1, 1},
    {"pedido perdido", {"pedido-perdido"}, Estado::kEntregue, 100, 2, 1},
    {"lixo no lugar da resposta", {"lixo"}, Estado::kEntregue, 100, 2, 1},
    {"perdida duas vezes",
     {"resposta-perdida", "107", "pedido-perdido", "107"},
     Estado::kEntregue,
     100,
     1,
     2},
    // It is there already, and is ours: the consultation brings what was lost.
    {"duplicidade",
     {"pedido-perdido", "107", "217", "resposta-perdida", "107", "217", "204"},
     Estado::kEntregue,
     100,
     3,
     3},
    {"fora do ar", {"108", "108", "999"}, Estado::kEntregue, 100, 3, 1},
    {"recibo que se perde", {"103", "105"}, Estado::kEntregue, 100, 1, 1},
    {"pedidos demais", {"656"}, Estado::kEntregue, 100, 2, 0},
    // What is said of a question is not said of the note.
    {"pergunta recusada", {"resposta-perdida", "107", "215", "612"}, Estado::kEntregue, 100, 1, 3},
    {"recibo recusado", {"103", "248"}, Estado::kEntregue, 100, 1, 1},
    {"recusada, diz o recibo", {"103", "778"}, Estado::kRecusado, 778, 1, 0},
};

TEST(Caminhos, cada_resposta_leva_a_um_fim) {
    for (const Caminho &c : kCaminhos) {
        SCOPED_TRACE(c.nome);
        Loja loja;
        loja.sefaz.ordens = c.ordens;
        const auto id = loja.achar(nota("42").xml());
        loja.andar();
        const auto ficha = loja.fila->ficha(id);
        ASSERT_TRUE(ficha);
        EXPECT_EQ(ficha->estado, c.fim) << ficha->motivo;
        EXPECT_EQ(ficha->cStat, c.cStat);
        EXPECT_EQ(loja.sefaz.quantos("enviNFe"), c.envios);
        EXPECT_EQ(loja.sefaz.quantos("consSitNFe"), c.consultas);
        const std::string retorno = loja.retorno(ficha->chave);
        EXPECT_TRUE(contem(retorno, "<SitCodigo>" + std::to_string(c.cStat) + "</SitCodigo>"));
        // What the authority has, the shop has kept, and nothing else.
        const bool autorizada = loja.sefaz.notas.contains(ficha->chave);
        EXPECT_EQ(autorizada, c.fim == Estado::kEntregue);
        EXPECT_EQ(!Guarda(guardadosDe(loja.config)).lugarDe(*ficha).empty(),
                  autorizada || ficha->desfecho == Desfecho::kDenegado);
    }
}

// Copies of its books that lag behind say now this, now that.
TEST(Caminhos, quem_diz_que_tem_e_que_nao_tem_e_perguntado_com_pausas) {
    for (const char *resposta : {"204", "218", "lixo"}) {
        SCOPED_TRACE(resposta);
        Loja loja;
        const Momento inicio = loja.relogio.momento;
        loja.sefaz.ordens = {resposta, "217", resposta, "217", resposta, "217"};
        const auto id = loja.achar(nota("42").xml());
        loja.andar();
        EXPECT_EQ(loja.fila->ficha(id)->cStat, 100);
        EXPECT_GE(loja.relogio.momento - inicio, pausaDepoisDe(1) + pausaDepoisDe(2));
    }
}

// A queue from a backup sends what was sent, and settled, before.
TEST(Caminhos, o_que_ja_foi_cancelado_ou_denegado_e_perguntado_e_guardado) {
    const struct {
        const char *situacao, *evento, *resposta;
        Estado fim, doCancelamento;
    } kCasos[] = {{"101", "110111", "218", Estado::kEntregue, Estado::kEntregue},
                  {"101", "", "420", Estado::kEntregue, Estado::kEntregue},
                  {"301", "", "205", Estado::kRecusado, Estado::kRecusado}};
    for (const auto &caso : kCasos) {
        SCOPED_TRACE(caso.resposta);
        Loja loja;
        const std::string chave = nota("42").chave();
        loja.sefaz.notas[chave] = {"", "143260000000001", "", caso.situacao, caso.evento};
        loja.sefaz.ordens = {caso.resposta};
        const auto feita = transmitirNota(loja, nota("42"));
        EXPECT_EQ(feita.espera, Espera::kRecusado); // nothing is printed of it
        EXPECT_EQ(feita.ficha.estado, caso.fim) << feita.ficha.motivo;
        EXPECT_FALSE(Guarda(guardadosDe(loja.config)).lugarDe(feita.ficha).empty());
        EXPECT_TRUE(contem(loja.retorno(chave), caso.situacao));
        const auto pedido = loja.achar(cancelamento(chave));
        loja.andar();
        EXPECT_EQ(loja.fila->ficha(pedido)->estado, caso.doCancelamento);
        EXPECT_EQ(loja.sefaz.quantos("envEvento"), 0U);
    }
}

// A till with a history of before this queue: its notes are there, sent by somebody else.
TEST(Caminhos, a_achada_tarde_e_perguntada_antes_de_ser_enviada) {
    const struct {
        const char *nome, *digest; // of what is there; null: nothing
        std::size_t envios, consultas;
        Desfecho desfecho;
    } kCasos[] = {{"de outro programa", "outro", 0, 1, Desfecho::kJaEsta},
                  {"sem digVal", "", 0, 1, Desfecho::kAutorizado},
                  {"não está", nullptr, 1, 1, Desfecho::kAutorizado},
                  {"526", nullptr, 0, 6, Desfecho::kNenhum}};
    for (const auto &caso : kCasos) {
        SCOPED_TRACE(caso.nome);
        Loja loja;
        loja.relogio.momento += 11 * kMinuto;
        const std::string chave = nota("42").chave();
        if (caso.digest != nullptr)
            loja.sefaz.notas[chave] = {"", "143260000000001", caso.digest, "100", ""};
        const bool respondida = caso.desfecho != Desfecho::kNenhum;
        if (!respondida) loja.sefaz.ordens.assign(20, caso.nome);
        const auto id = loja.achar(nota("42").xml());
        loja.andar();
        const auto ficha = loja.fila->ficha(id);
        EXPECT_EQ(ficha->estado, respondida ? Estado::kEntregue : Estado::kRecusado);
        EXPECT_EQ(ficha->desfecho, caso.desfecho);
        EXPECT_EQ(loja.sefaz.quantos("enviNFe"), caso.envios);
        EXPECT_EQ(loja.sefaz.quantos("consSitNFe"), caso.consultas);
        if (!respondida) continue;
        EXPECT_TRUE(contem(loja.retorno(chave), "<DocProtocolo>14326"));
        const auto pedido = loja.achar(cancelamento(chave));
        loja.andar();
        EXPECT_EQ(loja.fila->ficha(pedido)->desfecho, Desfecho::kCancelado);
    }
}

// What waited offline while the certificate ran out.
TEST(Caminhos, a_recusada_pelo_certificado_de_antes_e_assinada_com_o_novo) {
    for (const bool novoTambem : {false, true}) {
        SCOPED_TRACE(novoTambem);
        Loja loja;
        const auto id = loja.achar(nota("42", "9").xml());
        Fluxo(loja.meios()).assinar(id);
        const std::string antes = loja.fila->mensagem(id);
        loja.trocarCertificado("Padaria Nova");
        loja.sefaz.ordens = {"291"};
        if (novoTambem) loja.sefaz.ordens.emplace_back("291");
        loja.andar(3);
        EXPECT_EQ(loja.fila->ficha(id)->estado, novoTambem ? Estado::kAssinado : Estado::kEntregue);
        EXPECT_EQ(loja.fila->anotado(kAnotacaoParada).empty(), !novoTambem);
        const std::string depois = loja.fila->mensagem(id);
        EXPECT_NE(depois, antes);
        const auto digest = [](const std::string &xml) {
            return xml.substr(xml.find("<DigestValue>"), 42);
        };
        EXPECT_EQ(digest(depois), digest(antes));
    }
}

TEST(Caminhos, um_relogio_que_volta_nao_prende_ninguem) {
    for (const char *falha : {"sem-conexao", "resposta-perdida", "108", "656"}) {
        SCOPED_TRACE(falha);
        Loja loja;
        loja.sefaz.ordens = {falha};
        const auto id = loja.achar(nota("42").xml());
        loja.andar(1);
        loja.relogio.momento -= 3 * kHora;
        const Momento antes = loja.relogio.momento;
        loja.andar(4);
        EXPECT_EQ(loja.fila->ficha(id)->estado, Estado::kEntregue) << loja.fila->ficha(id)->motivo;
        EXPECT_LT(loja.relogio.momento - antes, kMinuto);
    }
}

TEST(Caminhos, um_certificado_recusado_para_a_fila_ate_que_alguem_olhe) {
    Loja loja;
    loja.sefaz.ordens = {"certificado"};
    const auto id = loja.achar(nota("42").xml());
    loja.andar(10);
    EXPECT_EQ(loja.sefaz.pedidos.size(), 1U);
    EXPECT_EQ(loja.fila->ficha(id)->estado, Estado::kAssinado);
    loja.fila->anotar(kAnotacaoParada, "");
    loja.andar();
    EXPECT_EQ(loja.fila->ficha(id)->estado, Estado::kEntregue);
}

// Another company's document, found in a till's copies, is refused by itself; where the till has
// sold for that company before, it is the certificate that is not the right one.
TEST(Caminhos, o_que_e_culpa_de_um_documento_nao_para_os_outros) {
    const struct {
        const char *nome;
        std::deque<std::string> ordens; // of 42
        bool antes;                     // 41 was delivered before the certificate was another's
        bool assinada;                  // 42 was signed before that, too
        const char *parada;
        Estado fim;
    } kCasos[] = {{"emitente alheio", {}, false, false, "", Estado::kRecusado},
                  {"certificado trocado", {}, true, false, "outra empresa", Estado::kAchado},
                  {"alheia assinada", {"213"}, false, true, "", Estado::kRecusado},
                  {"trocado e assinada", {"213"}, true, true, "Autorizado", Estado::kAssinado}};
    for (const auto &caso : kCasos) {
        SCOPED_TRACE(caso.nome);
        Loja loja;
        if (caso.antes) loja.achar(nota("41").xml());
        loja.andar();
        const auto id = loja.achar(nota("42").xml());
        if (caso.assinada) Fluxo(loja.meios()).assinar(id);
        loja.trocarCertificado("Mercado", "99888777000161");
        loja.sefaz.ordens = caso.ordens;
        loja.andar(3);
        EXPECT_EQ(loja.fila->ficha(id)->estado, caso.fim) << loja.fila->ficha(id)->motivo;
        const std::string parada = loja.fila->anotado(kAnotacaoParada);
        EXPECT_EQ(parada.empty(), *caso.parada == 0) << parada;
        EXPECT_TRUE(contem(parada, caso.parada));
    }
    Loja loja;
    std::string reprovada = traduzir(nota("42"), loja.config).documento->texto();
    reprovada.replace(reprovada.find("<vNF>20.00"), 10, "<vNF>20.01");
    const auto id = loja.achar(reprovada);
    loja.andar(3);
    EXPECT_EQ(loja.fila->ficha(id)->estado, Estado::kRecusado) << loja.fila->ficha(id)->motivo;
    EXPECT_EQ(loja.fila->anotado(kAnotacaoParada), "");
}

TEST(Caminhos, uma_traducao_recusada_nao_sai_e_diz_por_que) {
    Loja loja;
    Nota ruim = nota("42");
    ruim.itens[0].NCM = "09";
    const auto id = loja.achar(ruim.xml());
    loja.andar();
    EXPECT_EQ(loja.fila->ficha(id)->estado, Estado::kRecusado);
    EXPECT_TRUE(loja.sefaz.pedidos.empty());
    const std::string retorno = loja.retorno(ruim.chave());
    EXPECT_TRUE(contemTodas(retorno, {"<SitCodigo>0</SitCodigo>", "NCM"}));
}

// Whoever dies between two changes leaves a row that is asked for, and sent again only when the
// authority has nothing of it.
TEST(Caminhos, quem_morre_no_envio_deixa_uma_pergunta) {
    for (const bool chegou : {false, true}) {
        SCOPED_TRACE(chegou);
        Loja loja;
        loja.sefaz.ordens = {chegou ? "resposta-perdida" : "pedido-perdido"};
        const auto id = loja.achar(nota("42").xml());
        Fluxo(loja.meios()).tratarProntas(loja.caixa(), Milissegundos(1000), 1);
        // As the row stood while the request was out.
        Recusas recusas;
        ASSERT_TRUE(loja.fila->mudar(id, Estado::kPerguntar, Estado::kAssinado, {},
                                     loja.relogio.agora(), recusas));
        ASSERT_TRUE(loja.fila->mudar(id, Estado::kAssinado, Estado::kEnviado, {},
                                     loja.relogio.agora(), recusas));
        loja.andar();
        EXPECT_EQ(loja.fila->ficha(id)->estado, Estado::kEntregue);
        EXPECT_EQ(loja.sefaz.quantos("consSitNFe"), 1U);
        EXPECT_EQ(loja.sefaz.quantos("enviNFe"), chegou ? 1U : 2U);
    }
}

// A queue that was lost: its till says the change of its last document alone, so that what is found
// a second time would be signed to other bytes.
TEST(Caminhos, uma_fila_perdida_retoma_o_que_foi_guardado) {
    for (const bool substituida : {false, true}) {
        SCOPED_TRACE(substituida);
        Loja loja;
        const Nota velha = nota("42");
        const auto ficha = loja.fila->ficha(loja.achar(velha.xml(), "", 500));
        loja.andar();
        const std::string guardada = loja.pasta.ler(
            Guarda(guardadosDe(loja.config)).lugarDe(*ficha).substr(loja.pasta.caminho().size()));
        Recusas recusas;
        loja.fila = Fila::abrir(loja.pasta / "outra/", recusas);
        ASSERT_TRUE(loja.fila) << recusas.texto();
        const auto id = loja.achar(velha.xml());
        if (substituida) loja.achar(nota("43", "9").xml(), velha.chave());
        loja.andar();
        EXPECT_EQ(loja.fila->ficha(id)->estado, Estado::kEntregue);
        EXPECT_EQ(guardadoDe(loja.fila->mensagem(id), loja.fila->elemento(id)),
                  guardada.substr(guardada.find("?>") + 2));
        // It is sent once; its replacement once, which cancels it.
        EXPECT_EQ(loja.sefaz.pedidos.size(), substituida ? 3U : 1U);
        EXPECT_EQ(loja.sefaz.notas[velha.chave()].situacao, substituida ? "101" : "100");
    }
}

// ---- one in the place of another ----

TEST(Substituicoes, a_que_foi_autorizada_apesar_de_tudo_e_cancelada_e_a_que_nao_saiu_retirada) {
    const struct {
        const char *nome;
        std::deque<std::string> ordens;
        const char *numero; // of the new one, which names 42 where it has another
        bool antes;         // what became of 42 is known before it
        bool cancelada;     // else taken back, and its number free
    } kCasos[] = {
        {"sabida antes", {"resposta-perdida"}, "43", true, true},
        {"sabida depois", {"resposta-perdida"}, "43", false, true},
        // It arrives while it is asked for.
        {"atrasada", {"resposta-perdida", "107", "217", "", "217"}, "43", false, true},
        {"perdida", {"pedido-perdido"}, "43", false, false},
        {"sem conexao", {"sem-conexao"}, "43", false, false},
        {"o mesmo numero", {"sem-conexao"}, "42", false, false},
    };
    for (const auto &caso : kCasos) {
        SCOPED_TRACE(caso.nome);
        Loja loja;
        const Nota velha = nota("42"), nova = nota(caso.numero, "9");
        loja.sefaz.ordens = caso.ordens;
        const auto id = loja.achar(velha.xml());
        Fluxo(loja.meios()).tratarProntas(loja.caixa(), Milissegundos(1000), 1);
        if (caso.antes) loja.andar();
        const auto outra = loja.achar(nova.xml(), nova.nNF == "42" ? "" : velha.chave());
        loja.andar();
        EXPECT_EQ(loja.fila->ficha(id)->estado,
                  caso.cancelada ? Estado::kEntregue : Estado::kRetirado)
            << loja.fila->ficha(id)->motivo;
        EXPECT_EQ(loja.fila->ficha(outra)->estado, Estado::kEntregue);
        const auto daVelha = loja.sefaz.notas.find(velha.chave());
        EXPECT_EQ(daVelha != loja.sefaz.notas.end(), caso.cancelada);
        EXPECT_TRUE(!caso.cancelada || daVelha->second.situacao == "101");
        EXPECT_EQ(loja.sefaz.notas.at(nova.chave()).situacao, "100");
        EXPECT_EQ(loja.sefaz.quantos("envEvento"), caso.cancelada ? 1U : 0U);
    }
}

// One that was refused and issued again says it, too: what is delivered counts.
TEST(Substituicoes, a_recusada_que_tambem_o_diz_nao_esconde_a_que_foi_emitida_depois) {
    Loja loja;
    const Nota velha = nota("42"), nova = nota("43", "9");
    Nota denovo = nova;
    denovo.cNF = "00000001";
    loja.sefaz.ordens = {"resposta-perdida", "107", "464"};
    loja.achar(velha.xml());
    Fluxo(loja.meios()).tratarProntas(loja.caixa(), Milissegundos(1000), 1);
    loja.achar(nova.xml(), velha.chave());
    loja.achar(denovo.xml(), velha.chave());
    loja.andar();
    EXPECT_EQ(loja.sefaz.notas[velha.chave()].situacao, "101");
    EXPECT_EQ(loja.sefaz.notas[denovo.chave()].situacao, "100");
}

// The number is there with another key: what became of that one is known before anything is said.
TEST(Substituicoes, o_numero_que_e_de_outra_nota_se_resolve_pela_outra) {
    const struct {
        const char *nome;
        std::deque<std::string> ordens; // of the first one; then of the second
        int vezes;                      // how far the first one goes before
        const char *dito;
        std::size_t consultas;
    } kCasos[] = {
        {"autorizada e entregue", {}, 9, "vale aquela", 0},
        {"ainda sem resposta", {"resposta-perdida"}, 1, "vale aquela", 1},
        {"retirada, e esta la", {"sem-conexao"}, 1, "vale aquela", 1},
        {"retirada, e se nega", {"sem-conexao", "107", ""}, 1, "", 0},
        {"alheia", {}, 0, "não está nesta fila: autorizada", 1},
        {"alheia, e a linha cai", {"", "sem-conexao"}, 0, "não está nesta fila: autorizada", 2},
    };
    for (const auto &caso : kCasos) {
        SCOPED_TRACE(caso.nome);
        Loja loja;
        const Nota velha = nota("42"), nova = nota("42", "9");
        loja.sefaz.ordens = caso.ordens;
        const bool alheia = caso.vezes == 0, nega = *caso.dito == 0;
        if (nega) loja.sefaz.ordens.insert(loja.sefaz.ordens.end(), 20, "217");
        const auto primeira = alheia ? 0 : loja.achar(velha.xml());
        loja.andar(caso.vezes);
        if (loja.sefaz.notas.empty()) { // another program sent it
            std::string motivo;
            const auto lida = Documento::ler(loja.fila->mensagem(primeira), motivo);
            loja.sefaz.notas[velha.chave()] = {
                "", "143260000000001", lida ? lida->raiz().procurar("DigestValue").texto() : "",
                "100", ""};
        }
        const auto segunda = loja.achar(nova.xml());
        loja.andar();
        EXPECT_EQ(loja.fila->ficha(segunda)->estado, Estado::kRecusado);
        const std::string retorno = loja.retorno(nova.chave());
        EXPECT_TRUE(contemTodas(retorno, {velha.chave(), caso.dito}));
        EXPECT_EQ(loja.sefaz.notas.size(), 1U);
        if (nega) continue;
        EXPECT_EQ(loja.sefaz.quantos("consSitNFe"), caso.consultas);
        EXPECT_TRUE(alheia || loja.fila->ficha(primeira)->cStat == 100);
        // A sale without a document of its own is a person's.
        EXPECT_EQ(loja.fila->procurar({.precisaDeAlguem = true}).empty(), !alheia);
    }
}

void envelhecer(const std::string &arquivo) {
    const timespec tempos[2] = {{1, 0}, {1, 0}};
    EXPECT_EQ(utimensat(AT_FDCWD, arquivo.c_str(), tempos, 0), 0);
}

// What a till says of a replacement stands in one place, which the next one writes over.
TEST(Substituicoes, o_que_o_caixa_diz_tarde_vale_e_o_que_ja_nao_diz_nao_se_adivinha) {
    const struct {
        const char *nome;
        const char *numero; // that parametrosEnvio.xml names; null: somebody says it in the end
        bool depois, saiu;  // it is written after the document was delivered; 42 had gone out
        bool dias = false;  // it was written days before, of a series that begins anew since
    } kCasos[] = {{"diz na hora", "42", false, true},
                  {"diz depois de entregue", "42", true, true},
                  {"disse ha dias", "42", false, true, true},
                  {"diz de outra", "44", false, false},
                  {"diz de outra, e a primeira saiu", "44", false, true}};
    for (const auto &caso : kCasos) {
        SCOPED_TRACE(caso.nome);
        Loja loja;
        Caixa caixa(loja.config.caixas[0]);
        const Nota velha = nota("42"), nova = nota("43", "9");
        const std::string dito = "<SubstituirDocumento><nNF>" + std::string(caso.numero) +
                                 "</nNF><serie>1</serie></SubstituirDocumento>";
        const auto varrer = [&] {
            Recusas recusas;
            caixa.varrer(*loja.fila, Relogio().agora(), recusas);
            EXPECT_TRUE(recusas.nenhuma()) << recusas.texto();
        };
        loja.sefaz.ordens = {"resposta-perdida"};
        const auto id = loja.achar(velha.xml());
        if (caso.saiu) loja.andar(1);
        loja.pasta.gravar("caixa/" + nova.chave() + ".ctg", nova.xml());
        if (!caso.depois) loja.pasta.gravar("caixa/parametrosEnvio.xml", dito);
        if (caso.dias) envelhecer(loja.pasta / "caixa/parametrosEnvio.xml");
        varrer();
        loja.andar();
        if (caso.depois) loja.pasta.gravar("caixa/parametrosEnvio.xml", dito);
        varrer();
        loja.andar();
        const bool sabe = caso.numero == std::string("42");
        EXPECT_EQ(loja.fila->procurar({.chave = nova.chave()}).front().substitui,
                  sabe && !caso.dias ? velha.chave() : "");
        const Procura deAlguem{.precisaDeAlguem = true};
        EXPECT_EQ(loja.fila->procurar(deAlguem).size(), sabe ? 0U : 1U);
        EXPECT_EQ(loja.sefaz.notas.contains(velha.chave()), caso.saiu);
        EXPECT_TRUE(
            contem(loja.fila->ficha(id)->motivo, sabe ? "" : "zel enviar ARQUIVO --substitui"));
        transmitirNota(loja, nova, 5000, velha.chave()); // what a person says holds
        loja.andar();
        EXPECT_TRUE(loja.fila->procurar(deAlguem).empty());
        EXPECT_EQ(loja.sefaz.notas[velha.chave()].situacao, caso.saiu ? "101" : "100");
        EXPECT_EQ(loja.sefaz.quantos("envEvento"), caso.saiu ? 1U : 0U);
    }
}

// ---- requests ----

TEST(Pedidos, um_cancelamento_espera_a_sua_nota_e_toma_dela_o_protocolo) {
    const struct {
        const char *nome;
        std::deque<std::string> ordens;
        Estado fim;
        int cStat;
    } kCasos[] = {
        {"no prazo", {}, Estado::kEntregue, 135},
        {"a nota foi recusada", {"778"}, Estado::kRecusado, 0},
        {"tarde demais", {"", "501"}, Estado::kRecusado, 501},
        {"registrado, diz, e nao esta", {"", "573"}, Estado::kEntregue, 135},
        {"registrado, e a consulta atrasa",
         {"", "resposta-perdida", "107", "217", "573"},
         Estado::kEntregue,
         135},
        {"resposta perdida", {"", "resposta-perdida"}, Estado::kEntregue, 135},
        {"pedido perdido", {"", "pedido-perdido"}, Estado::kEntregue, 135},
    };
    for (const auto &caso : kCasos) {
        SCOPED_TRACE(caso.nome);
        Loja loja;
        loja.sefaz.ordens = caso.ordens;
        loja.achar(nota("42").xml());
        const auto id = loja.achar(cancelamento(nota("42").chave()));
        loja.andar();
        const auto ficha = loja.fila->ficha(id);
        EXPECT_EQ(ficha->estado, caso.fim) << ficha->motivo;
        EXPECT_EQ(ficha->cStat, caso.cStat);
        EXPECT_EQ(Guarda(guardadosDe(loja.config)).lugarDe(*ficha).empty(), caso.cStat != 135);
    }
}

// Its note is not in the queue: the authority is asked for the protocol, as for everything else.
TEST(Pedidos, o_protocolo_que_falta_e_perguntado_com_o_mesmo_cuidado) {
    const struct {
        const char *ordem;
        Estado fim;
        std::size_t consultas;
        const char *situacao;
        Desfecho desfecho;
    } kCasos[] = {{"656", Estado::kEntregue, 2, "100", Desfecho::kCancelado},
                  {"108", Estado::kEntregue, 2, "100", Desfecho::kCancelado},
                  {"280", Estado::kAchado, 1, "100", Desfecho::kNenhum},
                  {"certificado", Estado::kAchado, 1, "100", Desfecho::kNenhum},
                  {"217", Estado::kRecusado, 1, "100", Desfecho::kNenhum},
                  {"", Estado::kEntregue, 1, "101", Desfecho::kJaCancelado}};
    for (const auto &caso : kCasos) {
        SCOPED_TRACE(caso.ordem);
        Loja loja;
        loja.sefaz.notas[nota("42").chave()] = {"", "143260000000001", "", caso.situacao, ""};
        loja.sefaz.ordens = {caso.ordem};
        const auto id = loja.achar(cancelamento(nota("42").chave()));
        loja.andar(20);
        EXPECT_EQ(loja.fila->ficha(id)->estado, caso.fim) << loja.fila->ficha(id)->motivo;
        EXPECT_EQ(loja.fila->ficha(id)->desfecho, caso.desfecho);
        EXPECT_EQ(loja.sefaz.quantos("consSitNFe"), caso.consultas);
    }
}

// What a till's file says is no way out of the directory of the returns.
TEST(Pedidos, uma_chave_que_e_um_caminho_nao_da_nome_a_nada) {
    Loja loja;
    const auto id = loja.achar("<Consulta><ChaveAcesso>../../fora</ChaveAcesso></Consulta>");
    mkdir((loja.pasta / "caixa/retornos").c_str(), 0700);
    loja.andar(3);
    EXPECT_EQ(loja.fila->ficha(id)->estado, Estado::kRecusado);
    EXPECT_EQ(access((loja.pasta / "fora-consulta.retorno.xml").c_str(), F_OK), -1);
    EXPECT_TRUE(contem(loja.retorno("documentosEnvio.xml-consulta"), "../../fora"));
}

TEST(Pedidos, a_consulta_de_uma_nota_cancelada_nao_diz_que_esta_autorizada) {
    const struct {
        const char *situacao, *dito;
    } kCasos[] = {{"100", "<cStat>100</cStat>"}, {"101", "<SitCodigo>101</SitCodigo>"}};
    for (const auto &caso : kCasos) {
        SCOPED_TRACE(caso.situacao);
        Loja loja;
        const std::string chave = nota("42").chave();
        loja.sefaz.notas[chave] = {"", "143260000000001", "", caso.situacao, ""};
        loja.achar("<Consulta><ModeloDocumento>NFCe</ModeloDocumento><Versao>3.10</Versao><tpAmb>2"
                   "</tpAmb><CnpjEmissor>11222333000181</CnpjEmissor><ChaveAcesso>" +
                   chave + "</ChaveAcesso></Consulta>");
        loja.andar();
        const std::string retorno = loja.retorno(chave + "-consulta");
        EXPECT_TRUE(contem(retorno, caso.dito));
    }
}

constexpr const char *kInutilizacao =
    "<Inutilizacao><tpAmb>2</tpAmb><CnpjEmissor>11222333000181</CnpjEmissor>"
    "<Serie>1</Serie><NumeroInicial>7</NumeroInicial><NumeroFinal>9</NumeroFinal>"
    "<Justificativa>Numeros pulados na troca</Justificativa></Inutilizacao>";

// A number whose note waits is its note's.
TEST(Pedidos, a_inutilizacao_espera_as_notas_da_faixa) {
    const struct {
        std::deque<std::string> ordens;
        Estado fim;
        std::size_t envios;
    } kCasos[] = {{{"sem-conexao"}, Estado::kRecusado, 0}, {{"778"}, Estado::kEntregue, 1}};
    for (const auto &caso : kCasos) {
        Loja loja;
        loja.sefaz.ordens = caso.ordens;
        const std::int64_t pedido = loja.achar(kInutilizacao),
                           dela = loja.achar(nota("8", "9").xml());
        loja.andar();
        const auto ficha = loja.fila->ficha(pedido);
        EXPECT_EQ(ficha->estado, caso.fim) << ficha->motivo;
        EXPECT_EQ(loja.sefaz.quantos("inutNFe"), caso.envios);
        EXPECT_EQ(ficha->motivo.find(loja.fila->ficha(dela)->chave) != std::string::npos,
                  caso.envios == 0);
    }
}

TEST(Pedidos, a_inutilizacao_perdida_vai_de_novo_com_os_mesmos_bytes) {
    Loja loja;
    loja.sefaz.ordens = {"resposta-perdida", "107", "563"};
    const auto id = loja.achar(kInutilizacao);
    loja.andar();
    EXPECT_EQ(loja.fila->ficha(id)->estado, Estado::kEntregue) << loja.fila->ficha(id)->motivo;
    EXPECT_EQ(loja.sefaz.quantos("inutNFe"), 2U);
    EXPECT_EQ(loja.fila->ficha(id)->dhEmi.substr(0, 10), "2026-09-21"); // the day it was asked for
}

// ---- what a till wrote ----

// The bytes of a question are the same each time; its answer is not.
TEST(Achados, uma_consulta_repetida_e_perguntada_de_novo) {
    Loja loja;
    loja.config.caixas[0].copias = loja.caixa();
    Caixa caixa(loja.config.caixas[0]);
    loja.achar(nota("42").xml());
    loja.andar();
    const std::string chave = nota("42").chave(),
                      consulta = "<Consulta><ChaveAcesso>" + chave +
                                 "</ChaveAcesso><tpAmb>2</tpAmb></Consulta>";
    Recusas recusas;
    for (const char *copia : {"EnvioCons1.xml", "EnvioCons2.xml"}) {
        loja.pasta.gravar("caixa/" + std::string(copia), consulta);
        EXPECT_EQ(caixa.varrer(*loja.fila, Relogio().agora(), recusas), 1);
        loja.andar();
        loja.achar(cancelamento(chave));
        loja.andar();
    }
    EXPECT_TRUE(contem(loja.retorno(chave + "-consulta"), "101"));
    EXPECT_EQ(loja.sefaz.quantos("consSitNFe"), 2U);
    auto pedido = acharEm(consulta, recusas);
    pedido->caixa = loja.caixa();
    for (int i = 0; i < 2; ++i, loja.relogio.momento += kMinuto)
        transmitir(loja.meios(), *pedido, Milissegundos(5000), recusas);
    EXPECT_EQ(loja.sefaz.quantos("consSitNFe"), 4U);
}

TEST(Achados, o_que_e_de_antes_do_primeiro_dia_nao_e_tomado) {
    Loja loja;
    Nota antiga = nota("41", "9");
    antiga.dhEmi = "2025-06-30T23:59:59-03:00";
    const Nota nova = nota("42", "9");
    loja.config.caixas[0].desde = nova.dhEmi.substr(0, 10);
    for (const Nota &esta : {antiga, nova})
        loja.pasta.gravar("caixa/" + esta.chave() + ".ctg", esta.xml());
    Caixa caixa(loja.config.caixas[0]);
    Recusas recusas;
    EXPECT_EQ(caixa.varrer(*loja.fila, loja.relogio.agora(), recusas), 1) << recusas.texto();
    EXPECT_EQ(loja.fila->procurar({}).front().numero, 42);
}

TEST(Achados, o_que_nao_pode_ser_lido_e_dito_e_olhado_de_novo) {
    Loja loja;
    Caixa caixa(loja.config.caixas[0]);
    const std::string nome = "caixa/" + nota("42", "9").chave() + ".ctg";
    const std::string inteira = nota("42", "9").xml();
    Momento agora = Relogio().agora();
    const struct {
        std::string bytes;
        bool dita, pega;
    } kVezes[] = {{std::string(kMaiorDocumento + 1, 'x'), true, false},
                  {inteira.substr(0, 900), true, false}, // it is being copied
                  {inteira.substr(0, 900), false, false},
                  {inteira, false, true}};
    std::string antes;
    for (const auto &vez : kVezes) { // its directory stands
        SCOPED_TRACE(vez.bytes.size());
        if (vez.bytes != std::exchange(antes, vez.bytes)) loja.pasta.gravar(nome, vez.bytes);
        Recusas recusas;
        EXPECT_EQ(caixa.varrer(*loja.fila, agora += kMinuto, recusas), vez.pega ? 1 : 0);
        EXPECT_EQ(recusas.nenhuma(), !vez.dita) << recusas.texto();
    }
}

// ---- while a cashier waits ----

TEST(Transmissoes, o_caixa_ouve_o_que_vale) {
    const struct {
        const char *nome;
        std::deque<std::string> ordens;
        Espera espera;
        Estado estado;
    } kCasos[] = {
        {"autorizada", {}, Espera::kFeito, Estado::kEntregue},
        {"rejeitada", {"778"}, Espera::kRecusado, Estado::kRecusado},
        {"sem conexao", {"sem-conexao"}, Espera::kNaoEnviado, Estado::kRetirado},
        {"fora do ar", {"108"}, Espera::kNaoEnviado, Estado::kRetirado},
        {"certificado", {"certificado"}, Espera::kNaoEnviado, Estado::kRetirado},
        {"sem resposta", {"resposta-perdida"}, Espera::kSemResposta, Estado::kPerguntar},
    };
    for (const auto &caso : kCasos) {
        SCOPED_TRACE(caso.nome);
        Loja loja;
        loja.sefaz.ordens = caso.ordens;
        const auto feito = transmitirNota(loja, nota("42"), 300);
        EXPECT_EQ(feito.espera, caso.espera) << feito.ficha.motivo;
        EXPECT_EQ(feito.ficha.estado, caso.estado);
        EXPECT_EQ(feito.elemento.empty(), caso.estado != Estado::kEntregue);
    }
}

// The authority does not show it yet; sent again it did not go out: its number is not used again.
TEST(Transmissoes, o_que_saiu_uma_vez_nao_e_retirado) {
    for (const char *primeira : {"resposta-perdida", "999"}) {
        SCOPED_TRACE(primeira);
        Loja loja;
        const Nota velha = nota("42"), nova = nota("43", "9");
        loja.sefaz.ordens = {primeira};
        loja.achar(velha.xml());
        loja.andar(1);
        loja.linha.respondeu("43/2", 0);
        loja.sefaz.ordens = {"217", "sem-conexao"};
        Fluxo(loja.meios()).tratarProntas(loja.caixa(), Milissegundos(1000), 1);
        EXPECT_EQ(transmitirNota(loja, velha).espera, Espera::kSemResposta);
        loja.achar(nova.xml(), velha.chave());
        loja.sefaz.ordens = {"", "217"};
        loja.andar(3);
        EXPECT_EQ(loja.sefaz.quantos("consSitNFe"), 2U);
        loja.andar();
        EXPECT_EQ(loja.sefaz.notas[velha.chave()].situacao, "101");
    }
}

// The certificate is the service's, which another user runs.
TEST(Transmissoes, quem_nao_abre_o_certificado_nao_para_o_servico) {
    Loja loja;
    const auto id = loja.achar(nota("41").xml());
    Fluxo(loja.meios()).assinar(id);
    const std::string arquivo = std::exchange(loja.config.certificado.arquivo, "/nao/ha.p12");
    loja.oficina = std::make_unique<Oficina>(loja.config, 1);
    EXPECT_EQ(transmitirNota(loja, nota("42")).espera, Espera::kNaoEnviado);
    EXPECT_EQ(transmitirNota(loja, nota("43", "9"), 0).espera, Espera::kNaoEnviado);
    loja.sefaz.ordens = {"certificado"}; // as one says it that has none
    EXPECT_EQ(transmitirNota(loja, nota("41")).espera, Espera::kNaoEnviado);
    EXPECT_EQ(loja.fila->anotado(kAnotacaoParada), "");
    loja.config.certificado.arquivo = arquivo;
    loja.oficina = std::make_unique<Oficina>(loja.config, 1);
    loja.andar();
    EXPECT_TRUE(loja.sefaz.notas.contains(nota("43", "9").chave()));
}

// Behind the one who waited for nothing stands a queue of others.
TEST(Transmissoes, quem_acha_a_linha_caida_nao_espera_por_ela) {
    Loja loja;
    loja.sefaz.ordens = {"pedido-perdido", "sem-conexao", "107"};
    EXPECT_EQ(transmitirNota(loja, nota("42"), 300).espera, Espera::kSemResposta);
    EXPECT_EQ(transmitirNota(loja, nota("43")).espera, Espera::kNaoEnviado);
    EXPECT_EQ(loja.sefaz.quantos("enviNFe"), 1U);
    EXPECT_LE(loja.sefaz.limite, Milissegundos(2000));
    EXPECT_EQ(transmitirNota(loja, nota("44")).espera, Espera::kFeito); // it is back
    EXPECT_EQ(transmitirNota(loja, nota("45")).espera, Espera::kFeito);
    EXPECT_EQ(loja.sefaz.quantos("consStatServ"), 2U);
    // All that is asked is within the time that somebody waits.
    loja.sefaz.ordens = {"sem-conexao"};
    transmitirNota(loja, nota("46"));
    loja.sefaz.demora = Milissegundos(100);
    EXPECT_EQ(transmitirNota(loja, nota("47")).espera, Espera::kFeito);
    EXPECT_LE(loja.sefaz.limite, Milissegundos(4900));
}

TEST(Transmissoes, um_servico_parado_e_perguntado_cada_vez_menos) {
    // Who was asked too often is not asked any more, and what is sent shows how it is.
    for (const auto &[codigo, maximo] : {std::pair("108", 35U), std::pair("656", 1U)}) {
        SCOPED_TRACE(codigo);
        Loja loja;
        loja.sefaz.ordens.assign(1000, codigo);
        loja.sefaz.ordens.push_front("sem-conexao");
        loja.achar(nota("42").xml());
        for (const Momento fim = loja.relogio.momento + kHora; loja.relogio.momento < fim;)
            loja.andar(1);
        EXPECT_LE(loja.sefaz.quantos("consStatServ"), maximo);
    }
}

// The first customer of a day does not pay for a line that died in the night.
TEST(Transmissoes, uma_linha_calada_e_sondada_sem_que_ninguem_espere) {
    Loja loja;
    Fluxo servico(loja.meios());
    const auto sondar = [&](Momento depois) {
        loja.relogio.momento += depois;
        servico.sondar(loja.caixa(), Milissegundos(1000));
        return loja.sefaz.quantos("consStatServ");
    };
    EXPECT_EQ(sondar(0), 0U); // of a till without documents nothing is known
    loja.achar(nota("42").xml());
    loja.andar();
    loja.sefaz.ordens = {"sem-conexao", "sem-conexao"};
    EXPECT_EQ(sondar(kMinuto), 0U);
    EXPECT_EQ(sondar(8 * kHora), 1U);
    EXPECT_EQ(sondar(kMinuto), 1U);
    Nota daManha = nota("43");
    daManha.dhEmi = momentoEscrito(loja.relogio.momento, daManha.dhEmi);
    EXPECT_EQ(transmitirNota(loja, daManha).espera, Espera::kNaoEnviado);
    EXPECT_EQ(loja.sefaz.quantos("enviNFe"), 1U);
    loja.linha.falhou("43/2", loja.relogio.agora(), "caiu");
    EXPECT_EQ(sondar(6 * kMinuto), 3U);
}

// ---- a certificate in the place of another ----

TEST(Certificados, o_novo_e_tomado_sem_recomecar_e_o_que_nao_abre_nao) {
    Loja loja;
    for (const auto &[nome, senha] : {std::pair("Padaria Nova", ensaio::kSenha), {"Outra", "x"}}) {
        loja.trocarCertificado(nome, "11222333000181", senha);
        Recusas recusas;
        EXPECT_EQ(loja.oficina->certificado(recusas)->nome(), "Padaria Nova");
    }
}

// What was missing is there by now: the remedy that was named has an effect.
TEST(Transmissoes, a_recusada_sem_assinatura_vai_de_novo_e_a_assinada_nao) {
    Loja loja;
    const auto vezes = [&](const std::string &bytes, const char *cUF) {
        loja.config.cUF = cUF;
        loja.oficina = std::make_unique<Oficina>(loja.config, 1); // another process
        return transmitirBytes(loja, bytes);
    };
    loja.config.servicos.statusServico = "https://127.0.0.1/";
    EXPECT_EQ(vezes(kInutilizacao, "").espera, Espera::kRecusado);
    Fluxo(loja.meios()).sondar(loja.caixa(), Milissegundos(1000));
    EXPECT_EQ(loja.sefaz.quantos("consStatServ"), 0U); // no state is known to be asked
    EXPECT_EQ(vezes(kInutilizacao, "43").espera, Espera::kFeito);
    loja.sefaz.ordens = {"778"};
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(transmitirNota(loja, nota("42")).ficha.cStat, 778);
    EXPECT_EQ(loja.sefaz.quantos("enviNFe"), 1U);
    Nota ruim = nota("43");
    ruim.itens[0].NCM = "09";
    EXPECT_EQ(transmitirNota(loja, ruim).espera, Espera::kRecusado);
    EXPECT_EQ(transmitirNota(loja, nota("43", "9")).espera, Espera::kFeito);
    EXPECT_TRUE(contem(transmitirNota(loja, ruim).ficha.motivo, nota("43", "9").chave()));
}

struct Mudo final : Ouvinte {};

TEST(Certificados, quem_diz_que_continue_faz_o_servico_abrir_o_certificado_de_novo) {
    Loja loja;
    Mudo mudo;
    std::atomic<int> redes{0};
    loja.fila->anotar(kAnotacaoParada, "recusado");
    const auto id = loja.achar(nota("42").xml());
    ServicoDeEnvio servico(
        loja.config, *loja.oficina, loja.linha, loja.relogio,
        [&] { return ++redes, std::make_unique<AutoridadeFalsa>(); }, mudo);
    Recusas recusas;
    loja.oficina->acompanhar(recusas); // the files as they are
    ASSERT_TRUE(servico.comecar(recusas)) << recusas.texto();
    const auto ate = [&](auto chegou) {
        for (int i = 0; i < 1500 && !chegou(); ++i)
            std::this_thread::sleep_for(Milissegundos(20));
        EXPECT_TRUE(chegou());
    };
    ate([&] { return !loja.fila->ficha(id)->motivo.empty(); });
    continuar(*loja.fila);
    loja.pasta.gravar("caixa/x", "somebody wrote something");
    ate([&] { return loja.fila->ficha(id)->estado == Estado::kEntregue; });
    EXPECT_EQ(redes, 2);
}

TEST(Transmissoes, a_retirada_vai_de_novo_se_nada_tomou_o_seu_lugar) {
    for (const bool parada : {false, true}) { // taken back with its signed bytes, or before them
        SCOPED_TRACE(parada);
        Loja loja;
        if (parada)
            loja.fila->anotar(kAnotacaoParada, "certificado vencido");
        else
            loja.sefaz.ordens = {"sem-conexao", "sem-conexao"};
        EXPECT_EQ(transmitirNota(loja, nota("42")).espera, Espera::kNaoEnviado);
        const auto deNovo = transmitirNota(loja, nota("42"));
        EXPECT_EQ(deNovo.espera, Espera::kNaoEnviado);
        EXPECT_EQ(deNovo.ficha.motivo.find("envio parado") != std::string::npos, parada);
        const auto offline = transmitirNota(loja, nota("43", "9"), 0);
        EXPECT_EQ(offline.mensagem.empty(), parada);
        continuar(*loja.fila);
        loja.achar(nota("42", "9").xml());
        const auto outra = transmitirNota(loja, nota("42"));
        EXPECT_EQ(outra.espera, Espera::kRecusado);
        EXPECT_TRUE(contem(outra.ficha.motivo, nota("42", "9").chave()));
        EXPECT_EQ(transmitirNota(loja, nota("43", "9")).espera, Espera::kFeito);
    }
    Loja loja;
    loja.sefaz.ordens = {"sem-conexao"};
    transmitirNota(loja, nota("42"));
    EXPECT_EQ(transmitirNota(loja, nota("42")).espera, Espera::kFeito);
}

} // namespace
} // namespace zel::envio
