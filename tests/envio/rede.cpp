// SPDX-License-Identifier: MIT
// What became of a request, whatever the other side or the line did: never "not sent" of what may
// be there, never an answer that is none, never longer than was allowed.
#include "ServidorTls.h"

#include "apoio/Trecho.h"

#include "rede/Rede.h"
#include "rede/Remessa.h"

#include <csignal>
#include <gtest/gtest.h>

using namespace zel::envio;
using namespace zel::envio::ensaio;
using std::chrono::milliseconds;

namespace {

const std::string kCorpo = "<retConsStatServ xmlns=\"http://www.portalfiscal.inf.br/nfe\">"
                           "<cStat>107</cStat></retConsStatServ>";
const std::string kSoap = "<s:Envelope xmlns:s=\"http://www.w3.org/2003/05/soap-envelope\"><s:Body>"
                          "<nfeResultMsg xmlns=\"http://x/wsdl\">" +
                          kCorpo + "</nfeResultMsg></s:Body></s:Envelope>";
const std::string kFalha = "<s:Envelope xmlns:s=\"http://www.w3.org/2003/05/soap-envelope\">"
                           "<s:Body><s:Fault><s:Reason><s:Text>ruim</s:Text></s:Reason></s:Fault>"
                           "</s:Body></s:Envelope>";

std::string http(const std::string &corpo, const std::string &estado = "200 OK",
                 const std::string &mais = "") {
    return "HTTP/1.1 " + estado + "\r\nContent-Length: " + std::to_string(corpo.size()) + "\r\n" +
           mais + "\r\n" + corpo;
}

std::shared_ptr<Confianca> confiar(const std::string &arquivo) {
    return std::make_shared<Confianca>(arquivo);
}

// The network of a shop that trusts this server alone, and what came of one request.
class Loja {
public:
    explicit Loja(const ServidorTls &servidor, bool confia = true)
        : endereco_(servidor.endereco()),
          rede_(confiar(confia ? pasta_.gravar("raiz.pem", servidor.pem(), 0600) : ""),
                comCadeia()) {}

    Retorno pedir(const std::string &mensagem = "<consStatServ>CONFIDENCIAL</consStatServ>",
                  int limite = 4000) {
        const auto inicio = std::chrono::steady_clock::now();
        Retorno retorno =
            rede_.pedir({endereco_, "http://x/wsdl/Y4", "metodo", mensagem}, milliseconds(limite));
        demora = std::chrono::steady_clock::now() - inicio;
        EXPECT_EQ(retorno.chegada == Chegada::kResposta, retorno.motivo.empty());
        EXPECT_FALSE(contem(retorno.motivo, "CONFIDENCIAL"));
        return retorno;
    }
    std::chrono::steady_clock::duration demora{};

private:
    static std::shared_ptr<const Certificado> comCadeia() {
        const Cadeia cadeia;
        Recusas recusas;
        return Certificado::dePkcs12(pkcs12De(chave(kTitular), cadeia.titular(modelo()).get()),
                                     kSenha, pemDe({cadeia.raiz.get(), cadeia.autoridade.get()}),
                                     recusas);
    }

    PastaTemporaria pasta_;
    Ambiente direto_{"no_proxy", "*"};
    std::string endereco_;
    Rede rede_;
};

} // namespace

TEST(Rede, o_que_fez_o_outro_lado_decide_se_a_mensagem_pode_ter_chegado) {
    using enum Chegada;
    const std::string cauda = "\r\nX: ";
    const struct {
        const char *nome;
        Papel papel;
        Chegada chegada;
        const char *motivo;
        int limite = 4000;
        const char *servidor = "localhost";
        bool confia = true;
    } kLinhas[] = {
        {"inteira", {.resposta = http(kSoap)}, kResposta, ""},
        {"TLS 1.2", {.resposta = http(kSoap), .maior = TLS1_2_VERSION}, kResposta, ""},
        {"com 500", {.resposta = http(kSoap, "500 X")}, kResposta, ""},
        {"sem tamanho nem despedida",
         {.resposta = "HTTP/1.0 200 OK\r\n\r\n" + kSoap, .cortarResposta = 9999},
         kResposta,
         ""},
        {"falha", {.resposta = http(kFalha, "500 X")}, kSemResposta, "HTTP 500: a SEFAZ"},
        {"página", {.resposta = http("<html>", "503 X")}, kSemResposta, "HTTP 503"},
        {"vazia", {.resposta = http("")}, kSemResposta, "vazia"},
        {"lixo", {.resposta = "\x01\x02\x03\r\n\r\n", .cortarResposta = 99}, kSemResposta, ""},
        {"desvio",
         {.resposta = http("", "307 X", "Location: /outro\r\n")},
         kSemResposta,
         "HTTP 307"},
        {"comprimida",
         {.resposta = http("\x1f\x8b\x08", "200 OK", "Content-Encoding: gzip\r\n")},
         kSemResposta,
         "SOAP"},
        {"grande demais", {.resposta = http(std::string(5 << 20, ' '))}, kSemResposta, "maior"},
        {"cabeçalhos sem fim",
         {.resposta = "HTTP/1.1 200 OK" + cauda + std::string(90'000, 'a') + cauda},
         kSemResposta,
         ""},
        {"fecha sem responder", {.cortarResposta = 0}, kSemResposta, "sem responder"},
        {"quebra sem responder", {.cortarResposta = 0, .quebrar = true}, kSemResposta, ""},
        {"tarda", {.resposta = http(kSoap), .dormir = 1500}, kSemResposta, "tempo", 700},
        {"pinga", {.resposta = http(kSoap), .gotas = 30}, kSemResposta, "tempo", 700},
        {"HTTP 403", {.resposta = http("<html>", "403 X")}, kCertificado, "403"},
        {"403 com falha", {.resposta = http(kFalha, "403 X")}, kSemResposta, "403"},
        {"fecha antes do TLS", {.fechar = true}, kNaoEnviado, "TLS"},
        {"não fala TLS", {.semTls = "HTTP/1.1 400 X\r\n\r\n"}, kNaoEnviado, "TLS"},
        {"calado no TLS", {.semTls = ""}, kNaoEnviado, "tempo", 800},
        {"TLS velho", {.maior = TLS1_1_VERSION}, kNaoEnviado, "TLS"},
        {"emissor desconhecido",
         {.recusar = X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT_LOCALLY},
         kCertificado,
         "recusou"},
        {"vencido", {.recusar = X509_V_ERR_CERT_HAS_EXPIRED}, kCertificado, "recusou"},
        {"revogado", {.recusar = X509_V_ERR_CERT_REVOKED}, kCertificado, "recusou"},
        {"vencido, TLS 1.2",
         {.recusar = X509_V_ERR_CERT_HAS_EXPIRED, .maior = TLS1_2_VERSION},
         kCertificado,
         "recusou"},
        {"de outro nome", {.resposta = http(kSoap)}, kNaoEnviado, "nome", 4000, "outro.com.br"},
        {"sem confiança",
         {.resposta = http(kSoap)},
         kNaoEnviado,
         "confiança",
         4000,
         "localhost",
         false},
    };
    for (const auto &linha : kLinhas) {
        const ServidorTls servidor(linha.papel, linha.servidor);
        Loja loja(servidor, linha.confia);
        const Retorno retorno = loja.pedir("<a>CONFIDENCIAL</a>", linha.limite);
        EXPECT_EQ(retorno.chegada, linha.chegada) << linha.nome << ": " << retorno.motivo;
        EXPECT_TRUE(contem(retorno.motivo, linha.motivo)) << linha.nome;
        EXPECT_EQ(retorno.corpo, linha.chegada == kResposta ? kCorpo : "") << linha.nome;
        EXPECT_LT(loja.demora, milliseconds(linha.limite + 300)) << linha.nome;
        EXPECT_EQ(servidor.conexoes(), 1) << linha.nome;
        if (linha.chegada == kCertificado && linha.papel.resposta.empty()) continue;
        EXPECT_EQ(servidor.lido().find("CONFIDENCIAL") != std::string::npos,
                  linha.chegada == kResposta || linha.chegada == kSemResposta ||
                      retorno.http == 403)
            << linha.nome;
    }
}

TEST(Rede, cortada_em_qualquer_byte_nada_se_perde_nem_se_inventa) {
    const std::string resposta = http(kSoap), mensagem(3000, 'm');
    for (std::size_t n = 0; n < 3300; n += n < 400 ? 61U : 487U) {
        const ServidorTls servidor({.cortarPedido = n, .quebrar = n % 2 == 0});
        const Retorno retorno = Loja(servidor).pedir(mensagem);
        const bool chegou = servidor.lido().find("mm") != std::string::npos;
        EXPECT_TRUE(retorno.chegada == Chegada::kSemResposta ||
                    (retorno.chegada == Chegada::kNaoEnviado && !chegou))
            << n << retorno.motivo;
    }
    for (std::size_t n = 1; n < resposta.size(); n += n + 20 < resposta.size() ? 37U : 1U) {
        const ServidorTls servidor(
            {.resposta = resposta, .cortarResposta = n, .quebrar = n % 2 == 0});
        const Retorno retorno = Loja(servidor).pedir();
        EXPECT_EQ(retorno.chegada, Chegada::kSemResposta) << n;
    }
    // More than the line holds.
    const ServidorTls servidor({.cortarPedido = 500, .quebrar = true});
    EXPECT_EQ(Loja(servidor).pedir(std::string(4 << 20, 'm')).chegada, Chegada::kSemResposta);
}

TEST(Rede, uma_conexao_serve_a_varios_pedidos_e_nenhum_vai_duas_vezes) {
    const ServidorTls servidor({.resposta = http(kSoap), .respostas = 2});
    Loja loja(servidor);
    for (const Chegada esperada : {Chegada::kResposta, Chegada::kResposta, Chegada::kSemResposta}) {
        EXPECT_EQ(loja.pedir("<a>VEZ</a>").chegada, esperada);
        EXPECT_TRUE(servidor.conexoes() == 1 || esperada == Chegada::kSemResposta);
    }
    EXPECT_EQ(vezesEm(servidor.lido(), "VEZ"), 3);
    EXPECT_EQ(loja.pedir("<a>VEZ</a>").chegada, Chegada::kResposta);
    EXPECT_EQ(vezesEm(servidor.lido(), "VEZ"), 4);
    EXPECT_EQ(servidor.daCadeia(), 2); // its holder's and the issuer's, not the root
    EXPECT_EQ(vezesEm(servidor.lido(), "Content-Type: application/soap+xml; charset=utf-8; "
                                       "action=\"http://x/wsdl/Y4/metodo\"\r\n"),
              4);
    EXPECT_EQ(vezesEm(servidor.lido(), "Expect:"), 0);
}

TEST(Rede, uma_conexao_que_se_fechou_enquanto_nada_ia_e_feita_de_novo) {
    const ServidorTls servidor({.resposta = http(kSoap), .cortarResposta = 9999});
    Loja loja(servidor);
    for (int vez = 1; vez <= 3; ++vez) {
        EXPECT_EQ(loja.pedir().motivo, "") << vez;
        servidor.esperarFechar(vez);
        EXPECT_EQ(servidor.conexoes(), vez);
    }
}

TEST(Rede, sem_servidor_sem_certificado_ou_sem_https_nada_sai) {
    PastaTemporaria pasta;
    const Ambiente direto("no_proxy", "*");
    std::string endereco;
    {
        const ServidorTls ido({});
        endereco = ido.endereco();
    }
    const struct {
        std::string endereco;
        bool certificado, autoridades;
        Chegada chegada;
        const char *motivo;
    } kLinhas[] = {
        {endereco, true, false, Chegada::kNaoEnviado, "não há conexão"},
        {"http" + endereco.substr(5), true, false, Chegada::kNaoEnviado, "https"},
        {"file:///etc/passwd", true, false, Chegada::kNaoEnviado, "https"},
        {"https://", true, false, Chegada::kNaoEnviado, "endereço"},
        {endereco, false, false, Chegada::kCertificado, "não há certificado"},
    };
    for (const auto &linha : kLinhas) {
        Rede rede(confiar(""), linha.certificado ? certificado() : nullptr);
        const Retorno retorno = rede.pedir({linha.endereco, "x", "y", "<a/>"}, milliseconds(2000));
        EXPECT_EQ(retorno.chegada, linha.chegada) << linha.endereco << retorno.motivo;
        EXPECT_TRUE(contem(retorno.motivo, linha.motivo));
    }
    const ServidorTls servidor({});
    Rede rede(confiar(pasta / "nao-ha.pem"), certificado());
    const Retorno retorno = rede.pedir({servidor.endereco(), "x", "y", "<a/>"}, milliseconds(2000));
    EXPECT_EQ(retorno.chegada, Chegada::kNaoEnviado);
    EXPECT_TRUE(contem(retorno.motivo, "autoridades"));
}

TEST(Rede, cada_estado_tem_o_seu_endereco_e_os_seus_nomes) {
    Configuracao nada, dita;
    dita.servicos.statusServico = "https://localhost/ws";
    dita.nomes.recepcaoEvento = "Outro";
    dita.metodos.recepcaoEvento = "metodo";
    const struct {
        const Configuracao &config;
        const char *cUF;
        Servico servico;
        std::string esperada;
    } kLinhas[] = {
        {nada, "41", Servico::kAutorizacao, "NFeAutorizacao4 nfeAutorizacaoLote"},
        {nada, "41", Servico::kRetAutorizacao, "NFeRetAutorizacao4 nfeRetAutorizacao"},
        {nada, "41", Servico::kRecepcaoEvento, "NFeRecepcaoEvento nfeRecepcaoEvento"},
        {nada, "35", Servico::kRecepcaoEvento, "NFeRecepcaoEvento4 nfeRecepcaoEvento"},
        {dita, "52", Servico::kRecepcaoEvento, "Outro metodo"},
        {nada, "99", Servico::kStatusServico, ""},
        {dita, "99", Servico::kStatusServico, "NFeStatusServico4 nfeStatusServicoNF"},
        {nada, "35", Servico::kQrCode, ""},
    };
    for (const auto &linha : kLinhas) {
        Recusas recusas;
        const auto r = remessaDe(linha.config, linha.cUF, 2, linha.servico, "<a/>", recusas);
        EXPECT_EQ(r ? r->espaco + ' ' + r->metodo : "",
                  linha.esperada.empty()
                      ? ""
                      : "http://www.portalfiscal.inf.br/nfe/wsdl/" + linha.esperada);
        EXPECT_EQ(recusas.nenhuma(), r.has_value());
        EXPECT_TRUE(!r || r->endereco.starts_with("https://")) << r->endereco;
    }
}
