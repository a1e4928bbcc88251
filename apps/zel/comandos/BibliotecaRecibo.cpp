// SPDX-License-Identifier: MIT
#include "comandos/BibliotecaRecibo.h"

#include "comandos/Biblioteca.h"
#include "comum/ArquivosDoCaixa.h"
#include "leitura/Arquivos.h"
#include "leitura/Terminal.h"
#include "leitura/Texto.h"

#include "ZEL_FelborFramework.h"
#include "comum/ChaveAcesso.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <vector>

namespace zel::aplicativo {

namespace {

constexpr int kVenda = 1, kCancelamento = 5;
constexpr int kColunas = 48, kColunasEstreitas = 42;

constexpr std::string_view kSemResposta =
    "sem a resposta da SEFAZ: um ensaio, que não se entrega; com ela, --retorno ARQUIVO";
constexpr std::string_view kProducao = "1";

struct Situacao {
    std::string chave, protocolo; // of the last document closed or laid out
    bool contingencia() const { return ehChaveOffline(chave); }
    // Whether its receipt may be given to the customer.
    bool vale() const { return !protocolo.empty() || contingencia(); }
};

Recibo sem(std::string erro, int codigo = 0) {
    Recibo recibo;
    recibo.erro = std::move(erro);
    recibo.codigo = codigo;
    return recibo;
}

std::string comoDocumento(std::string_view chave) {
    return juntar({"Id=\"NFe", chave, "\""});
}

std::string digitosDe(std::string_view texto) {
    std::string digitos;
    std::copy_if(texto.begin(), texto.end(), std::back_inserter(digitos), ehDigito);
    return digitos;
}

// A ruler of dashes goes over the whole line.
int colunasDe(std::string_view texto) {
    return texto.find(std::string(kColunas, '-')) != texto.npos ? kColunas : kColunasEstreitas;
}

std::string ultimoTexto(const std::string &diretorio) {
    std::string bytes, motivo;
    if (lerArquivo(std::string(diretorio).append(arquivos::kUltimaDanfe), kMaximoDocumento, bytes,
                   motivo) != Leitura::kLido)
        return {};
    // It holds one byte for each of the text.
    std::vector<char> saida(bytes.size() + ZEL_TAMANHO_CUPOM);
    return RetornarUltimoBufferFormatadoNF_ZEL(saida.data()) == ZEL_OK ? saida.data() : "";
}

// The situation that a return gives, in the component's form or the authority's; empty when it
// gives none.
std::string situacaoDe(std::string_view retorno) {
    const std::string texto = minusculas(retorno);
    for (const std::string_view marca : {"<sitcodigo>", "<cstat>"}) {
        const std::size_t lugar = texto.find(marca);
        if (lugar == texto.npos) continue;
        const std::string_view depois =
            aparar(std::string_view(texto).substr(lugar + marca.size(), 16));
        return {depois.begin(), std::find_if_not(depois.begin(), depois.end(), ehDigito)};
    }
    return {};
}

bool autoriza(int tipo, std::string_view situacao) {
    return tipo == kVenda ? situacao == "100" || situacao == "150"
                          : situacao == "135" || situacao == "155";
}

// What is wrong with a return; empty when it authorizes.
std::string recusaDoRetorno(const std::string &retorno, int tipo) {
    std::string bytes, motivo;
    const std::string nome = argumento(retorno.c_str());
    if (lerArquivo(retorno, kMaximoDocumento, bytes, motivo) != Leitura::kLido)
        return juntar({nome, ": ", motivo});
    const std::string situacao = situacaoDe(bytes);
    if (autoriza(tipo, situacao)) return {};
    return juntar(
        {nome, ": a SEFAZ não ", tipo == kVenda ? "autorizou a venda" : "registrou o cancelamento",
         " (SitCodigo ", situacao.empty() ? "ausente" : situacao, "); não há cupom a imprimir"});
}

Recibo montar(const PedidoDeRecibo &pedido) {
    const std::string &documento = pedido.documento, &retorno = pedido.retorno;
    const int colunas = pedido.colunas == 0 ? kColunas : pedido.colunas;
    std::string bytes, motivo;
    const std::string nome = argumento(documento.c_str());
    if (lerArquivo(documento, kMaximoDocumento, bytes, motivo) != Leitura::kLido)
        return sem(juntar({nome, ": ", motivo}));
    const bool cancela =
        bytes.find("<EveTp>") != bytes.npos || documento.ends_with(arquivos::kCancelamento);
    const int tipo = cancela ? kCancelamento : kVenda;
    if (!pedido.semResposta())
        if (std::string recusa = recusaDoRetorno(retorno, tipo); !recusa.empty())
            return sem(std::move(recusa));
    // A receipt takes less room than its document, twice in contingency, and its fixed parts.
    std::vector<char> saida(ZEL_TAMANHO_CUPOM + 4 * bytes.size());
    const int codigo = GerarArquivoFormatadoNF_ZEL(documento.c_str(), retorno.c_str(), "", colunas,
                                                   tipo, "", saida.data());
    Recibo recibo;
    recibo.texto = saida.data();
    recibo.colunas = colunas;
    if (recibo.texto.empty() && codigo == ZEL_OK)
        return sem(R"(CONFIGURACAO\ImpressaoCompleta não é 0 nem 1: nada é impresso)");
    if (recibo.texto.empty()) return sem(juntar({"montar o cupom de ", nome}), codigo);
    // The text is complete without them.
    if (codigo != ZEL_OK)
        recibo.aviso = juntar({"os PDFs não foram gravados: código ", std::to_string(codigo)});
    return recibo;
}

// The document of the last sale, as long as nothing else has taken its place.
bool aindaEspera(const std::string &documento, const std::string &chave) {
    std::string bytes, motivo;
    return !chave.empty() &&
           lerArquivo(documento, kMaximoDocumento, bytes, motivo) == Leitura::kLido &&
           bytes.find(comoDocumento(chave)) != bytes.npos;
}

// Without a return: the last receipt laid out, when it is that of the last document. Otherwise the
// document that still waits is laid out, when it may be.
Recibo ultimo(const std::string &diretorio, const PedidoDeRecibo &pedido) {
    const Situacao situacao{configuracao(R"(NFCE\ChaveDeAcesso)"),
                            configuracao(R"(NFCE\ProtocoloAutorizacao)")};
    if (situacao.chave.empty()) return sem("ainda não há nenhum cupom neste diretório");
    // Without fiscal value nothing is promised.
    const bool serve = pedido.previa || situacao.vale() ||
                       configuracao(R"(CONFIGURACAO\TipoAmbiente)") != kProducao;
    const std::string espera = std::string(diretorio).append(arquivos::kEnvio);
    Recibo recibo;
    recibo.texto = ultimoTexto(diretorio);
    recibo.colunas = colunasDe(recibo.texto);
    if (!situacao.vale()) recibo.aviso = kSemResposta;
    const bool eDele = digitosDe(recibo.texto).find(situacao.chave) != std::string::npos;
    if (serve && eDele && (pedido.colunas == 0 || pedido.colunas == recibo.colunas)) return recibo;
    if (serve && situacao.protocolo.empty() && aindaEspera(espera, situacao.chave)) {
        Recibo novo = montar({espera, std::string(kSemRetorno), pedido.colunas});
        if (!situacao.vale()) novo.aviso = kSemResposta;
        return novo;
    }
    if (eDele && serve)
        return sem(juntar({"o último cupom está em ", std::to_string(recibo.colunas),
                           " colunas; em outras, com --documento e --retorno"}));
    return sem(juntar({"o último documento (", situacao.chave,
                       ") ainda não tem cupom.\nMonte-o com a resposta da SEFAZ, --retorno "
                       "ARQUIVO; em contingência, ou num ensaio, com --retorno OFFLINE"}));
}

} // namespace

Recibo obterRecibo(const std::string &diretorio, const PedidoDeRecibo &pedido) {
    if (pedido.retorno.empty()) return ultimo(diretorio, pedido);
    return montar(pedido);
}

bool ehDocumentoDe(const std::string &documento, std::string_view chave) {
    std::string bytes, motivo;
    if (chave.size() != ChaveAcesso::kDigitos ||
        lerArquivo(documento, kMaximoDocumento, bytes, motivo) != Leitura::kLido)
        return false;
    const std::string nome = documento.substr(documento.rfind('/') + 1);
    if (nome == arquivos::nomeDaContingencia(chave) || nome == arquivos::nomeDoCancelamento(chave))
        return true;
    for (const std::string &marca : {comoDocumento(chave), juntar({"<ChaAcesso>", chave, "<"}),
                                     juntar({"<chNFe>", chave, "<"})})
        if (bytes.find(marca) != bytes.npos) return true;
    return false;
}

} // namespace zel::aplicativo
