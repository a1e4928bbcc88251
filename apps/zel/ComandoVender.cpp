// SPDX-License-Identifier: MIT
// zel vender: a whole receipt, from the opening to the close. Everything that can be checked is
// checked before it is opened; what the library refuses later leaves a receipt in progress, and
// that is said with what to do about it.
#include "ComandoComum.h"

#include "Arquivos.h"
#include "Biblioteca.h"
#include "Cupom.h"
#include "Terminal.h"
#include "Texto.h"
#include "Venda.h"

#include "ZEL_FelborFramework.h"

#include <array>
#include <cstdio>
#include <iterator>
#include <unistd.h>

namespace zel::aplicativo {

namespace {

constexpr std::size_t kMaximoEntrada = std::size_t{1} << 20;
constexpr std::size_t kMaximoMensagem = 5000;

// How far the sale came: the step that was refused, with its code.
struct Andamento {
    std::string passo;
    int codigo = ZEL_OK;
    bool aberto = false; // by this command

    bool fazer(std::string_view nome, int resposta) {
        passo = nome;
        codigo = resposta;
        return resposta >= ZEL_OK;
    }
};

std::string lerArquivoDeItens(const std::string &caminho, std::vector<ItemVenda> &itens) {
    std::string bytes, motivo;
    if (caminho == "-") {
        for (int c = 0; bytes.size() <= kMaximoEntrada && (c = std::getchar()) != EOF;)
            bytes += static_cast<char>(c);
        if (bytes.size() > kMaximoEntrada) return "há mais de 1 MB na entrada padrão";
    } else if (lerArquivo(caminho, kMaximoEntrada, bytes, motivo) != Leitura::kLido) {
        return juntar({argumento(caminho.c_str()), ": ", motivo});
    }
    const std::string erro = lerItens(bytes, itens);
    return erro.empty()
               ? erro
               : juntar({caminho == "-" ? "itens" : argumento(caminho.c_str()), ", ", erro});
}

// What is wrong with the command line; empty when nothing is.
std::string lerVenda(const Argumentos &argumentos, Venda &venda) {
    std::string erro;
    if (!argumentos.itens.empty()) erro = lerArquivoDeItens(argumentos.itens, venda.itens);
    for (std::size_t i = 0; erro.empty() && i < argumentos.palavras.size(); ++i) {
        erro = lerItem(argumentos.palavras[i], venda.itens.emplace_back());
        if (!erro.empty()) erro = juntar({argumentos.palavras[i], ": ", erro});
    }
    for (std::size_t i = 0; erro.empty() && i < argumentos.pagamentos.size(); ++i)
        erro = lerPagamento(argumento(argumentos.pagamentos[i].c_str()),
                            venda.pagamentos.emplace_back());
    if (erro.empty() && !argumentos.cpf.empty())
        erro = lerConsumidor(argumento(argumentos.cpf.c_str()), venda.consumidor);
    if (erro.empty() && !argumentos.ajuste.empty())
        erro = lerAjuste(argumento(argumentos.ajuste.c_str()), venda.ajuste);
    if (!erro.empty()) return erro;
    const auto mensagem = latin1DeUtf8(argumento(argumentos.mensagem.c_str()));
    if (!mensagem) return "--mensagem: tem um caracter que o ISO-8859-1 não tem";
    if (mensagem->size() > kMaximoMensagem) return "--mensagem: tem mais de 5000 caracteres";
    venda.mensagem = *mensagem;
    if (venda.itens.empty() && !argumentos.continuar) return "falta o que vender";
    return argumentos.continuar && argumentos.cancelar ? "--continuar e --cancelar se excluem" : "";
}

int venderItem(const ItemVenda &item) {
    return aCFVenderCompleto_ZEL(item.aliquota.c_str(), item.quantidade.c_str(), item.preco.c_str(),
                                 item.ajuste.tipo.c_str(), item.ajuste.valor.c_str(),
                                 item.codigo.c_str(), item.ncm.c_str(), item.cfop.c_str(),
                                 item.unidade.c_str(), item.descricao.c_str(), "");
}

bool comecar(const Venda &venda, bool continuar, Andamento &ate) {
    const char *consumidor = venda.consumidor.c_str();
    if (!continuar) {
        ate.aberto =
            ate.fazer("abrir o cupom", aCFAbrir_ZEL(consumidor, "", "", "", "", "", "", "", ""));
        return ate.aberto;
    }
    return venda.consumidor.empty() ||
           ate.fazer("identificar o consumidor",
                     aCFIdentificarConsumidor_ZEL(consumidor, "", "", "", "", "", "", "", "", ""));
}

bool venderItens(const Venda &venda, Andamento &ate) {
    std::size_t numero = 0;
    for (const ItemVenda &item : venda.itens)
        if (!ate.fazer(juntar({"vender o item ", std::to_string(++numero), " (",
                               utf8DeLatin1(item.descricao), ")"}),
                       venderItem(item)))
            return false;
    return true;
}

bool pagar(const Venda &venda, Andamento &ate) {
    if (venda.pagamentos.empty() && estadoDoCupom() == 3)
        return ate.fazer("pagar em dinheiro", aCFEfetuarPagamento_ZEL("01", ""));
    for (const PagamentoVenda &pagamento : venda.pagamentos)
        if (!ate.fazer(juntar({"pagar ", pagamento.valor, " na forma ", pagamento.forma}),
                       aCFEfetuarPagamento_ZEL(pagamento.forma.c_str(), pagamento.valor.c_str())))
            return false;
    return true;
}

bool vender(const Venda &venda, bool continuar, Andamento &ate) {
    if (!comecar(venda, continuar, ate) || !venderItens(venda, ate)) return false;
    const bool totaliza = !continuar || estadoDoCupom() < 3 || !venda.ajuste.tipo.empty();
    if (totaliza && !ate.fazer("totalizar", aCFTotalizar_ZEL(venda.ajuste.tipo.c_str(),
                                                             venda.ajuste.valor.c_str())))
        return false;
    return pagar(venda, ate) && ate.fazer("encerrar", tCFEncerrar_ZEL(venda.mensagem.c_str()));
}

bool emAndamento(int estado) {
    return estado >= 1 && estado <= 4;
}

// Items and amounts of the receipt on disk.
std::vector<Linha> valores(const std::string &diretorio) {
    std::string bytes, motivo, erro;
    if (lerArquivo(diretorio + "ArqPersist.bin", kMaximoDocumento, bytes, motivo) != Leitura::kLido)
        return {};
    const auto cupom = lerCupom(bytes, erro);
    if (!cupom) return {};
    const double falta = cupom->total - cupom->pago;
    return {{"itens", "Itens", std::to_string(cupom->itens)},
            {"total", "Total", formatarMoeda(cupom->total)},
            {"pago", "Pago", formatarMoeda(cupom->pago)},
            {"falta", "Falta pagar", falta > 0.004 ? formatarMoeda(falta) : ""}};
}

// At a terminal the user is asked.
bool querCancelar(const Argumentos &argumentos) {
    if (argumentos.json || ::isatty(STDIN_FILENO) == 0 || ::isatty(STDERR_FILENO) == 0)
        return false;
    escrever(stderr, "Cancelar o cupom agora? [s/N] ");
    const auto resposta = lerLinha();
    return resposta && (igualSemCaixa(*resposta, "s") || igualSemCaixa(*resposta, "sim"));
}

// What is left of a sale that was refused, and what to do with it.
std::vector<Linha> oQueFicou(const Argumentos &argumentos, const std::string &diretorio) {
    const int estado = estadoDoCupom();
    std::vector<Linha> linhas{
        {"estado", "Estado do cupom", juntar({std::to_string(estado), " ", nomeDoEstado(estado)})}};
    if (!emAndamento(estado)) return linhas;
    for (Linha &linha : valores(diretorio))
        linhas.push_back(std::move(linha));
    linhas.push_back({"cancelar", "Para cancelar", comando(argumentos, "cancelar")});
    linhas.push_back({"continuar", "Para continuar", comando(argumentos, "vender --continuar")});
    return linhas;
}

int cancelarCupom() {
    return tCFCancelar_ZEL("", "", "", "", "");
}

int interrompida(const Argumentos &argumentos, const std::string &diretorio, const Andamento &ate) {
    const bool cancelado = ate.aberto && argumentos.cancelar && cancelarCupom() >= ZEL_OK;
    recusar(argumentos, ate.passo, ate.codigo, oQueFicou(argumentos, diretorio));
    if (cancelado || !ate.aberto || !emAndamento(estadoDoCupom()) || !querCancelar(argumentos))
        return kComErros;
    if (const int codigo = cancelarCupom(); codigo < ZEL_OK)
        return recusar(argumentos, "cancelar o cupom", codigo);
    escrever(stderr, "O cupom foi cancelado.\n");
    return kComErros;
}

int encerrada(const Argumentos &argumentos, const std::string &diretorio) {
    std::vector<Linha> linhas{{"resultado", "Resultado", "vendido"},
                              {"numero", "Número", configuracao(R"(IDE\nNF)")},
                              {"serie", "Série", configuracao(R"(IDE\Serie)")}};
    for (Linha &linha : valores(diretorio))
        linhas.push_back(std::move(linha));
    const std::string troco = configuracao(R"(CONFIGURACAO\TrocoUltimaNFCe)");
    linhas.push_back({"troco", "Troco", troco == "0" ? "0.00" : troco});
    linhas.push_back({"chave", "Chave de acesso", configuracao(R"(NFCE\ChaveDeAcesso)")});
    linhas.push_back(
        {"documento", "Documento", argumento((diretorio + "documentosEnvio.xml").c_str())});
    escreverLinhas(argumentos, linhas);
    return kLimpo;
}

int vender(const Argumentos &argumentos) {
    Venda venda;
    if (const std::string erro = lerVenda(argumentos, venda); !erro.empty())
        return usoErrado(kVender, erro);
    const auto diretorio = prepararDiretorio(argumentos);
    if (!diretorio) return kComErros;
    const int estado = estadoDoCupom();
    if (argumentos.continuar && !emAndamento(estado))
        return falhar(juntar({"não há cupom em andamento (estado ", std::to_string(estado), " ",
                              nomeDoEstado(estado), ")"}));
    Andamento ate;
    return vender(venda, argumentos.continuar, ate) ? encerrada(argumentos, *diretorio)
                                                    : interrompida(argumentos, *diretorio, ate);
}

} // namespace

const Comando kVender = {
    "vender",
    "vender ITEM... [--itens ARQUIVO] [--pagamento FORMA[=VALOR]]... [--cpf CPF]\n"
    "vender --continuar [ITEM]... [--pagamento FORMA[=VALOR]]...",
    "Vende um cupom inteiro, da abertura ao encerramento.",
    "ITEM é CÓDIGO;DESCRIÇÃO;QUANTIDADE;PREÇO, e mais, se for preciso, ;UNIDADE (UN)\n"
    ";ALÍQUOTA (N, ou como T1800) ;AJUSTE ;NCM ;CFOP, na ordem; um campo vazio fica com o seu\n"
    "padrão. No shell ele vai entre aspas:\n\n"
    "  zel vender '101;Pão francês;6;0,75' '202;Café 500 g;2;18,90;UN;N;-10%' \\\n"
    "      --pagamento Dinheiro=50\n\n"
    "--itens ARQUIVO lê itens de um arquivo, um por linha; - é a entrada padrão. Linhas vazias\n"
    "e as que começam com # não contam.\n"
    "--pagamento pode vir mais de uma vez; sem VALOR paga o que falta, e sem a opção tudo se\n"
    "paga em dinheiro. FORMA é Dinheiro, Cheque, Cartao de Credito, Cartao de Debito, Credito\n"
    "Loja, Vale Alimentacao, Vale Refeicao, Vale Presente, Vale Combustivel ou Outros, ou o\n"
    "código de dois dígitos.\n"
    "--cpf CPF identifica o consumidor; um CNPJ também serve.\n"
    "--ajuste AJUSTE é um desconto ou acréscimo no total: -10%, -1,50, +5%, +2,00.\n"
    "--mensagem TEXTO é impressa no fim do cupom.\n\n"
    "Tudo o que se pode conferir é conferido antes de abrir o cupom. Se a biblioteca recusa um\n"
    "passo, zel diz o código, o remédio e em que estado o cupom ficou; num terminal pergunta se\n"
    "o cancela. --cancelar o cancela sem perguntar. --continuar leva ao fim o cupom que ficou,\n"
    "com os itens e pagamentos que faltam. O motivo de cada recusa, com o campo: ZEL_LOG.\n"
    "O documento fica em documentosEnvio.xml, para o componente de envio.\n"
    "--diretorio DIR escolhe o diretório de dados.\n",
    kJson | kDiretorioDado | kVenda,
    vender,
};

} // namespace zel::aplicativo
