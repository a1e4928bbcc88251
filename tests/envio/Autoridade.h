// SPDX-License-Identifier: MIT
// An authority within the test: it takes messages from a Transporte, keeps books, and answers, or
// does not, as it is told. What it says is small: what the flow reads of an answer.
#pragma once

#include "base/Xml.h"
#include "comum/Ascii.h"
#include "fila/Fila.h"
#include "rede/Transporte.h"

#include <algorithm>
#include <deque>
#include <gtest/gtest.h>
#include <map>
#include <string>
#include <thread>
#include <vector>

namespace zel::envio::teste {

class AutoridadeFalsa final : public Transporte {
public:
    // What happens to the next requests, one each: a code as its answer; or "sem-conexao",
    // "pedido-perdido", "resposta-perdida", "certificado", "lixo". Empty: as it should be.
    std::deque<std::string> ordens;

    struct Livro {
        std::string mensagem, protocolo, digest, situacao = "100", evento{};
    };
    std::map<std::string, Livro> notas; // by key
    std::vector<std::string> pedidos;   // names of the messages' roots, in order
    std::chrono::milliseconds limite{}; // of the last one
    std::chrono::milliseconds demora{}; // of each

    Retorno pedir(const Remessa &remessa, std::chrono::milliseconds ate) override {
        limite = ate;
        std::this_thread::sleep_for(demora);
        std::string ordem;
        if (!ordens.empty()) {
            ordem = ordens.front();
            ordens.pop_front();
        }
        std::string motivo;
        const auto mensagem = Documento::ler(remessa.mensagem, motivo);
        EXPECT_TRUE(mensagem) << motivo;
        const std::string nome(mensagem->raiz().nome());
        pedidos.push_back(nome);
        if (ordem == "sem-conexao") return {Chegada::kNaoEnviado, 0, "", "sem conexão"};
        if (ordem == "certificado") return {Chegada::kCertificado, 403, "", "certificado recusado"};
        if (ordem == "pedido-perdido") return {Chegada::kSemResposta, 0, "", "sem resposta"};
        if (ordem == "lixo") return {Chegada::kResposta, 200, "<html/>", ""};
        const std::string corpo = responder(mensagem->raiz(), remessa.mensagem, ordem);
        if (ordem == "resposta-perdida") return {Chegada::kSemResposta, 0, "", "sem resposta"};
        return {Chegada::kResposta, 200, corpo, ""};
    }

    std::size_t quantos(std::string_view nome) const {
        return static_cast<std::size_t>(std::count(pedidos.begin(), pedidos.end(), nome));
    }

private:
    static std::string resposta(const std::string &nome, const std::string &dentro) {
        return "<" + nome + " xmlns=\"http://www.portalfiscal.inf.br/nfe\" versao=\"4.00\">" +
               dentro + "</" + nome + ">";
    }
    static std::string estado(const std::string &cStat, const std::string &motivo = "Motivo") {
        return "<tpAmb>2</tpAmb><cStat>" + cStat + "</cStat><xMotivo>" + motivo + "</xMotivo>";
    }
    static bool ehCodigo(const std::string &ordem) {
        return ordem.size() == 3 && std::all_of(ordem.begin(), ordem.end(), ehDigito);
    }

    // A number belongs to one key: CNPJ, model, series and number are what the two share.
    std::string outraDoNumero(const std::string &chave) const {
        const auto outra = std::find_if(notas.begin(), notas.end(), [&](const auto &nota) {
            return nota.first != chave && nota.first.substr(6, 28) == chave.substr(6, 28);
        });
        return outra == notas.end() ? "" : outra->first;
    }

    std::string protocolo(const std::string &chave, const Livro &livro,
                          const std::string &motivo = "Autorizado") const {
        return "<protNFe versao=\"4.00\"><infProt><tpAmb>2</tpAmb><chNFe>" + chave +
               "</chNFe><dhRecbto>2026-09-21T12:00:01-03:00</dhRecbto>" +
               // Of what is refused there is none.
               (livro.situacao[0] == '2' || livro.situacao[0] > '3'
                    ? ""
                    : "<nProt>" + livro.protocolo + "</nProt>") +
               "<digVal>" + livro.digest + "</digVal><cStat>" + livro.situacao +
               "</cStat><xMotivo>" + motivo + "</xMotivo></infProt></protNFe>";
    }

    // The one of the last receipt, after all.
    std::string recusada(const std::string &ordem) {
        const std::string chave = std::exchange(doRecibo_, "");
        notas.erase(chave);
        return protocolo(chave, {"", "", "", ordem, ""});
    }

    std::string responder(const No &raiz, const std::string &texto, const std::string &ordem) {
        const std::string nome(raiz.nome());
        if (nome == "consStatServ")
            return resposta("retConsStatServ", estado(ehCodigo(ordem) ? ordem : "107"));
        if (nome == "enviNFe") return autorizar(raiz, texto, ordem);
        if (nome == "envEvento") return registrar(raiz, ordem);
        if (nome == "inutNFe")
            return resposta("retInutNFe", "<infInut>" + estado(ehCodigo(ordem) ? ordem : "102") +
                                              "<nProt>143260000000900</nProt></infInut>");
        if (nome == "consReciNFe")
            return resposta("retConsReciNFe",
                            "<nRec>" + raiz.texto("nRec") + "</nRec>" +
                                (ordem == "778" ? estado("104") + recusada(ordem)
                                                : estado(ehCodigo(ordem) ? ordem : "106")));
        return consultar(raiz.texto("chNFe"), ordem);
    }

    std::string autorizar(const No &raiz, const std::string &texto, const std::string &ordem) {
        const std::string chave = raiz.filho("NFe/infNFe").atributo("Id").substr(3);
        const std::size_t inicio = texto.find("<NFe"), fim = texto.find("</NFe>") + 6;
        const std::string nfe = texto.substr(inicio, fim - inicio);
        Livro &livro = enviadas_[chave];
        if (livro.mensagem.empty()) livro.mensagem = nfe;
        EXPECT_EQ(nfe, livro.mensagem) << "outros bytes da mesma nota";
        if (ordem == "291") livro.mensagem.clear(); // signed anew, it is the same
        if (ordem == "103") {
            doRecibo_ = chave;
            notas[chave] =
                livro = {nfe, "143260000009999", raiz.procurar("DigestValue").texto(), "100", ""};
            return resposta("retEnviNFe", estado("103") + "<infRec><nRec>431000000000001</nRec>"
                                                          "<tMed>1</tMed></infRec>");
        }
        if (ehCodigo(ordem) && ordem[0] == '1' && ordem != "150" && ordem != "110")
            return resposta("retEnviNFe", estado(ordem)); // of the lot
        livro.digest = raiz.procurar("DigestValue").texto();
        livro.protocolo = "14326000000" + std::to_string(1000 + notas.size());
        if (const std::string outra = outraDoNumero(chave); !outra.empty())
            return resposta("retEnviNFe",
                            estado("104") + protocolo(chave, {"", "", livro.digest, "539", ""},
                                                      "Duplicidade [chNFe: " + outra + "]"));
        const bool nova = !notas.contains(chave);
        Livro dita = livro;
        dita.situacao = ehCodigo(ordem) ? ordem : nova ? "100" : "204";
        if (dita.situacao == "100" || dita.situacao == "150" || dita.situacao == "999") {
            livro.situacao = dita.situacao == "150" ? "150" : "100"; // 999: who knows
            notas[chave] = livro;
        }
        return resposta("retEnviNFe", estado("104") + protocolo(chave, dita));
    }

    static std::string retEvento(const std::string &chave, const std::string &cStat,
                                 const std::string &tpEvento) {
        return "<retEvento versao=\"1.00\"><infEvento>" + estado(cStat) + "<chNFe>" + chave +
               "</chNFe><tpEvento>" + tpEvento +
               "</tpEvento><nSeqEvento>1</nSeqEvento><dhRegEvento>2026-09-21T12:05:00-03:00"
               "</dhRegEvento><nProt>143260000000800</nProt></infEvento></retEvento>";
    }

    std::string registrar(const No &raiz, const std::string &ordem) {
        const std::string chave = raiz.procurar("chNFe").texto(),
                          tpEvento = raiz.procurar("tpEvento").texto();
        if (!ehCodigo(ordem) && notas.contains(chave)) {
            notas[chave].situacao = "101";
            notas[chave].evento = tpEvento;
        }
        return resposta("retEnvEvento",
                        "<idLote>1</idLote>" + estado("128") +
                            retEvento(chave, ehCodigo(ordem) ? ordem : "135", tpEvento));
    }

    static std::string evento(const std::string &chave, const Livro &livro) {
        if (livro.evento.empty()) return {};
        return "<procEventoNFe versao=\"1.00\"><evento versao=\"1.00\"><infEvento><chNFe>" + chave +
               "</chNFe><tpEvento>" + livro.evento + "</tpEvento></infEvento></evento>" +
               retEvento(chave, "135", livro.evento) + "</procEventoNFe>";
    }

    std::string consultar(const std::string &chave, const std::string &ordem) {
        const auto nota = notas.find(chave);
        if (ehCodigo(ordem) || nota == notas.end())
            return resposta("retConsSitNFe", estado(ehCodigo(ordem) ? ordem : "217") + "<chNFe>" +
                                                 chave + "</chNFe>");
        return resposta("retConsSitNFe", estado(nota->second.situacao) + "<chNFe>" + chave +
                                             "</chNFe>" + protocolo(chave, nota->second) +
                                             evento(chave, nota->second));
    }

    std::map<std::string, Livro> enviadas_;
    std::string doRecibo_;
};

} // namespace zel::envio::teste
