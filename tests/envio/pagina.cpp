// SPDX-License-Identifier: MIT
// The service's page over a real socket: what each request is answered with, what must be in it,
// and what must never be.
#include "zel-envio/Servidor.h"

#include "envio/Fichas.h"
#include "fluxo/Destinos.h"

#include <curl/curl.h>
#include <gtest/gtest.h>

namespace zel::envio {
namespace {

using namespace ensaio;

class RelogioParado final : public Relogio {
public:
    Momento agora() const override { return kMeioDia; }
};

constexpr const char *kMalvada = "<script>alert('x')</script> & \"Cia\"";

// A day of a shop, by number: 1 authorized, 2 refused, 3 offline and waiting for six hours, 5
// authorized (4 was never used), 6 without an answer.
class Loja : public ComFila {
public:
    Loja() {
        Achado primeira = nota(1);
        primeira.consumidor = "12345678909";
        primeira.nomeConsumidor = kMalvada;
        Resposta boa = resposta(100, Desfecho::kAutorizado);
        boa.protocolo = "135260000000001";
        levar(achar(primeira), Estado::kEntregue, boa);
        const auto recusada = achar(nota(2));
        levar(recusada, Estado::kRespondido, resposta(778, Desfecho::kRecusado));
        const Mudanca motivo{.motivo = "778 NCM <b>: \"1\"\ndest/CPF: \"123.456.789-09\""};
        fila->mudar(recusada, Estado::kRespondido, Estado::kRecusado, motivo, kMeioDia, recusas);
        Achado offline = nota(3);
        offline.tpEmis = 9;
        fila->achar(offline, kMeioDia - 6 * ensaio::kHora, recusas);
        levar(achar(nota(5)), Estado::kEntregue, boa);
        levar(achar(nota(6)), Estado::kPerguntar);
        fila->verServico({"NFeAutorizacao4", "35", 2, 0, 503, "tempo <esgotado>", kMeioDia, 2500});
        relato.respondeu({"NFeAutorizacao4", "35", 2, 100, 200, "", kMeioDia, 430});
        relato.respondeu({"NFeAutorizacao4", "35", 2, 100, 200, "", kMeioDia, 40000});
        relato.respondeu({"NFeAutorizacao4", "35", 2, 0, 503, "tempo esgotado", kMeioDia, 2500});
        dias = 12;
        EXPECT_TRUE(servidor.comecar(0, recusas)) << recusas.texto();
    }

    struct Recebida {
        long status = 0;
        std::string cabecalhos, corpo;
    };
    Recebida pedir(const std::string &metodo, const std::string &caminho, const char *host) const {
        Recebida r;
        CURL *curl = curl_easy_init();
        const std::string url = "http://127.0.0.1:" + std::to_string(servidor.porta()) + caminho;
        const auto juntar = +[](char *bytes, std::size_t um, std::size_t n, void *em) {
            static_cast<std::string *>(em)->append(bytes, um * n);
            return um * n;
        };
        curl_slist *lista = curl_slist_append(nullptr, (std::string("Host: ") + host).c_str());
        curl_easy_setopt(curl, CURLOPT_URL, url.c_str());
        curl_easy_setopt(curl, CURLOPT_HTTPHEADER, lista);
        if (metodo == "HEAD") curl_easy_setopt(curl, CURLOPT_NOBODY, 1L);
        if (metodo == "POST") curl_easy_setopt(curl, CURLOPT_POSTFIELDS, "numero=1");
        if (metodo != "HEAD") curl_easy_setopt(curl, CURLOPT_CUSTOMREQUEST, metodo.c_str());
        curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, juntar);
        curl_easy_setopt(curl, CURLOPT_WRITEDATA, &r.corpo);
        curl_easy_setopt(curl, CURLOPT_HEADERFUNCTION, juntar);
        curl_easy_setopt(curl, CURLOPT_HEADERDATA, &r.cabecalhos);
        curl_easy_setopt(curl, CURLOPT_TIMEOUT, 20L);
        curl_easy_perform(curl);
        curl_easy_getinfo(curl, CURLINFO_RESPONSE_CODE, &r.status);
        curl_slist_free_all(lista);
        curl_easy_cleanup(curl);
        return r;
    }

    std::vector<std::string> log;
    std::optional<int> dias;
    RelogioParado relogio;
    Relato relato{[&](std::string_view linha) { log.emplace_back(linha); }};
    Recusas ditas;
    Servidor servidor{Fila::abrir(caminho(), ditas), ConfigFila{}, relogio, relato,
                      [&] { return dias; }};
};

constexpr const char *kAqui = "127.0.0.1:8766";

struct Linha {
    std::string caminho;
    long status;
    std::vector<std::string> tem, naoTem = {};
    const char *host = kAqui, *metodo = "GET";
};

std::vector<Linha> linhas() { // NOLINT(readability-function-size): a table
    const std::string longa(20000, '7');
    return {
        {"/",
         200,
         {"O certificado vence em 12 dias", "Nota 2, série 1: recusada", "778 NCM &lt;b&gt;",
          "Nota 3, série 1: há 6 horas", "Número 4 da série 1: sem nota", "emitida sem conexão",
          "resolvido: autorizado", "sem resposta: perguntando",
          "sem resposta: tempo &lt;esgotado&gt;", "autorização de notas",
          "<strong>2</strong> documentos esperam", "R$ 12,34"},
         {"Nada precisa de ninguém", "O envio está parado", "Número 2 da série", "<script",
          "12345678909", kLoja}},
        {"/documento/1",
         200,
         {"&lt;script&gt;alert(&#39;x&#39;)&lt;/script&gt; &amp; &quot;Cia&quot;, ***.456.789-**",
          "135260000000001", "resolvido: autorizado", "12.345.678/0001-95"},
         {"<script", "12345678909"},
         "localhost"},
        {"/documento/2", 200, {"***.456.789-**"}, {"123.456.789-09"}},
        {"/procurar?numero=5", 200, {"/documento/4\""}, {"/documento/1\""}},
        {"/procurar?consumidor=123.456.789-09",
         200,
         {"/documento/1\""},
         {"/documento/2\"", "12345678909", "123.456.789-09"}},
        {"/procurar?dia=2026-09-21", 200, {"/documento/1\"", "/documento/5\""}},
        {"/procurar?chave=" + chaveDe(2), 200, {"/documento/2\""}, {"/documento/1\""}},
        {"/procurar", 200, {"<form"}, {"Nada foi achado"}},
        {"/procurar?numero=9", 200, {"Nada foi achado"}},
        // What cannot be is said, and comes back escaped.
        {"/procurar?numero=1%20OR%201", 400, {"1 a 9 algarismos"}, {"/documento/"}},
        {"/procurar?numero=99999999999999999999", 400, {"1 a 9"}},
        {"/procurar?dia=%22%3E%3Cscript%3E", 400, {"&quot;&gt;&lt;script"}, {"<script"}},
        {"/procurar?chave=123", 400, {"44 algarismos"}},
        {"/documento/999", 404, {"não existe"}},
        {"/documento/-1", 404, {}},
        {"/documento/99999999999999999999999", 404, {}},
        {"/documento/1/../../etc/passwd", 404, {}, {"root"}},
        {"/%3Cscript%3E", 404, {}, {"<script"}},
        {"/procurar?numero=" + longa, 414, {}},
        // Another site's name that leads here, and whoever wants to change something.
        {"/", 403, {}, {"Nota"}, "loja.example"},
        {"/metricas", 403, {}, {"zel_envio"}, "127.0.0.1.loja.example"},
        {"/", 403, {}, {"Nota"}, "localhost:80@loja"},
        {"/", 405, {}, {"Nota"}, kAqui, "POST"},
        {"/documento/1", 405, {}, {"Nota"}, kAqui, "DELETE"},
        {"/", 200, {}, {"Nota"}, kAqui, "HEAD"},
        {"/estilo.css", 200, {"body"}, {"url("}},
        {"/metricas",
         200,
         {"zel_envio_documentos{estado=\"entregue\"} 2\n",
          "zel_envio_documentos{estado=\"achado\"} 1\n", "zel_envio_mais_antigo_segundos 21600\n",
          "zel_envio_precisam_de_alguem 2\n", "zel_envio_lacunas 2\n", "zel_envio_parado 0\n",
          "zel_envio_certificado_dias 12\n",
          "respostas_total{servico=\"NFeAutorizacao4\",codigo=\"100\"} 2\n", "codigo=\"0\"} 1\n",
          "_bucket{servico=\"NFeAutorizacao4\",le=\"0.250\"} 0\n", "le=\"0.500\"} 1\n",
          "le=\"30.000\"} 1\n", "le=\"+Inf\"} 2\n",
          "resposta_segundos_sum{servico=\"NFeAutorizacao4\"} 40.430\n"},
         {"12345678909", "/caixas/"}},
    };
}

TEST(PaginaDoServico, cada_pedido_tem_a_sua_resposta_e_nada_alem) {
    Loja loja;
    for (const Linha &linha : linhas()) {
        SCOPED_TRACE(std::string(linha.metodo) + " " + linha.caminho.substr(0, 60) + " " +
                     linha.host);
        const auto recebida = loja.pedir(linha.metodo, linha.caminho, linha.host);
        EXPECT_EQ(recebida.status, linha.status);
        for (const auto &texto : linha.tem)
            EXPECT_TRUE(contem(recebida.corpo, texto)) << texto;
        for (const auto &texto : linha.naoTem)
            EXPECT_FALSE(contem(recebida.corpo, texto)) << texto;
        if (linha.status == 414) continue; // refused before it is read
        EXPECT_TRUE(contem(recebida.cabecalhos, "default-src 'none'"));
        EXPECT_FALSE(contem(recebida.cabecalhos, "Set-Cookie"));
    }
    // Nothing that was asked has changed anything.
    EXPECT_EQ(loja.fila->passos(1).size(), 5U);
}

TEST(PaginaDoServico, o_que_para_o_envio_vem_primeiro) {
    Loja loja;
    loja.dias = -1;
    loja.fila->anotar(kAnotacaoParada, "o certificado <venceu>");
    const std::string hoje = loja.pedir("GET", "/", kAqui).corpo;
    const auto parado = hoje.find("O envio está parado"),
               vencido = hoje.find("O certificado venceu"),
               nota = hoje.find("Nota 2, série 1: recusada");
    EXPECT_LT(parado, vencido);
    EXPECT_LT(vencido, nota);
    EXPECT_TRUE(contem(hoje, "o certificado &lt;venceu&gt;"));
    EXPECT_TRUE(contem(loja.pedir("GET", "/metricas", kAqui).corpo, "zel_envio_parado 1\n"));
}

TEST(PaginaDoServico, o_log_diz_o_fim_de_cada_nota_e_nada_de_pessoas) {
    Loja loja;
    const Ficha autorizada = *loja.fila->ficha(1), recusada = *loja.fila->ficha(2);
    loja.log.clear();
    loja.relato.mudou(autorizada, Estado::kEntregue);
    loja.relato.mudou(recusada, Estado::kRecusado);
    loja.relato.mudou(recusada, Estado::kEnviado);
    loja.relato.disse("x.xml: \"12345678909\"; do consumidor 123.456.789-09, nota 123456789012");
    loja.relato.parou("certificado vencido");
    loja.relato.parou("certificado vencido");
    for (const int cStat : {0, 100, 100, 0})
        loja.relato.respondeu({"NFeAutorizacao4", "43", 2, cStat, 0, "sem conexão", kMeioDia, 10});
    const std::vector<std::string> esperado{
        "Nota 1, série 1, /caixas/1/: autorizado (100)",
        "Nota 2, série 1, /caixas/1/: recusado (778), precisa de alguém",
        "x.xml: \"***.456.789-**\"; do consumidor ***.456.789-**, nota 123456789012",
        "envio parado: certificado vencido",
        "SEFAZ 43/2: sem resposta de NFeAutorizacao4: sem conexão",
        "SEFAZ 43/2: responde outra vez",
        "SEFAZ 43/2: sem resposta de NFeAutorizacao4: sem conexão",
    };
    EXPECT_EQ(loja.log, esperado);
}

} // namespace
} // namespace zel::envio
