// SPDX-License-Identifier: MIT
// zel vender: a whole receipt, from the opening to the close. Everything that can be checked is
// checked before it is opened; what the library refuses later leaves a receipt in progress, and
// that is said with what to do about it.
#include "comandos/ComandoCupom.h"

#include "comandos/Biblioteca.h"
#include "comandos/Interrupcao.h"
#include "comandos/VendaTransmitida.h"
#include "comum/ArquivosDoCaixa.h"
#include "comum/EstadoDoCupom.h"
#include "leitura/Arquivos.h"
#include "leitura/Json.h"
#include "leitura/Terminal.h"
#include "leitura/Texto.h"
#include "leitura/Venda.h"

#include "ZEL_FelborFramework.h"

#include <array>
#include <cstdio>
#include <iterator>
#include <unistd.h>

namespace zel::aplicativo {

namespace {

constexpr std::size_t kMaximoEntrada = std::size_t{1} << 20;
constexpr std::size_t kMaximoMensagem = 5000;
constexpr std::string_view kTroco = R"(CONFIGURACAO\TrocoUltimaNFCe)";

// How far the sale came: the step that was refused, with its code.
struct Andamento {
    std::string passo;
    int codigo = ZEL_OK;
    bool deOutro = false;      // a program that is open has the receipt
    bool aberto = false;       // by this command
    bool interrompido = false; // between two steps

    // Whether the sale goes on. One that this command opened can be given up until it is closed;
    // one that was there before is taken to its end.
    bool fazer(std::string_view nome, int resposta) {
        passo = nome;
        codigo = resposta;
        interrompido = aberto && Interrupcao::pedida();
        return resposta >= ZEL_OK && !interrompido;
    }
    bool encerrar(int resposta) {
        passo = "encerrar";
        codigo = resposta;
        return resposta >= ZEL_OK;
    }
};

std::string lerArquivoDeItens(const std::string &caminho, std::vector<ItemVenda> &itens,
                              Excesso excesso) {
    std::string bytes, motivo;
    if (caminho == "-") {
        for (int c = 0; bytes.size() <= kMaximoEntrada && (c = std::getchar()) != EOF;)
            bytes += static_cast<char>(c);
        if (bytes.size() > kMaximoEntrada) return "há mais de 1 MB na entrada padrão";
    } else if (lerArquivo(caminho, kMaximoEntrada, bytes, motivo) != Leitura::kLido) {
        return juntar({argumento(caminho.c_str()), ": ", motivo});
    }
    const std::string erro = lerItens(bytes, itens, excesso);
    return erro.empty()
               ? erro
               : juntar({caminho == "-" ? "itens" : argumento(caminho.c_str()), ", ", erro});
}

// The consumer by one of the three options.
std::string lerConsumidorDado(const Argumentos &argumentos, std::string &consumidor) {
    const struct {
        const std::string &dado;
        std::string (*ler)(std::string_view, std::string &);
    } opcoes[] = {{argumentos.cpf, lerConsumidor},
                  {argumentos.cnpj, lerCnpj},
                  {argumentos.estrangeiro, lerEstrangeiro}};
    if (!argumentos.estrangeiro.empty() && argumentos.continuar)
        return "--estrangeiro só vale na abertura: a biblioteca não o identifica depois";
    std::string erro;
    for (const auto &[dado, ler] : opcoes) {
        if (dado.empty() || !erro.empty()) continue;
        erro = consumidor.empty() ? ler(argumento(dado.c_str()), consumidor)
                                  : "--cpf, --cnpj e --estrangeiro se excluem";
    }
    return erro;
}

std::string lerMensagem(const Argumentos &argumentos, Excesso excesso, std::string &mensagem) {
    auto latin1 = latin1DeUtf8(argumento(argumentos.mensagem.c_str()));
    if (!latin1) return "--mensagem: tem um caracter que o ISO-8859-1 não tem";
    if (latin1->size() > kMaximoMensagem && excesso == Excesso::kErro)
        return "--mensagem: tem mais de 5000 caracteres (--cortar a corta ali)";
    mensagem = latin1->substr(0, kMaximoMensagem);
    return {};
}

// What is wrong with the command line; empty when nothing is.
std::string lerVenda(const Argumentos &argumentos, Venda &venda) {
    const Excesso excesso = argumentos.cortar ? Excesso::kCorta : Excesso::kErro;
    std::string erro;
    if (!argumentos.itens.empty()) erro = lerArquivoDeItens(argumentos.itens, venda.itens, excesso);
    for (std::size_t i = 0; erro.empty() && i < argumentos.palavras.size(); ++i) {
        erro = lerItem(argumentos.palavras[i], venda.itens.emplace_back(), excesso);
        if (!erro.empty()) erro = juntar({argumentos.palavras[i], ": ", erro});
    }
    for (std::size_t i = 0; erro.empty() && i < argumentos.pagamentos.size(); ++i)
        erro = lerPagamento(argumento(argumentos.pagamentos[i].c_str()),
                            venda.pagamentos.emplace_back(), excesso);
    if (erro.empty()) erro = lerConsumidorDado(argumentos, venda.consumidor);
    if (erro.empty() && !argumentos.ajuste.empty())
        erro = lerAjuste(argumento(argumentos.ajuste.c_str()), venda.ajuste, excesso);
    if (erro.empty()) erro = lerMensagem(argumentos, excesso, venda.mensagem);
    if (!erro.empty()) return erro;
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
        const int resposta = aCFAbrir_ZEL(consumidor, "", "", "", "", "", "", "", "");
        ate.aberto = resposta >= ZEL_OK;
        return ate.fazer("abrir o cupom", resposta);
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

// A payment of what is paid already is refused, and the library then forgets the change.
int pagarSemPerderTroco(const PagamentoVenda &pagamento) {
    const std::string troco = configuracao(kTroco);
    const int codigo = aCFEfetuarPagamento_ZEL(pagamento.forma.c_str(), pagamento.valor.c_str());
    if (codigo == ZEL_JA_PAGO) gravarConfig(kTroco, troco);
    return codigo;
}

bool pagar(const Venda &venda, Andamento &ate) {
    if (venda.pagamentos.empty() && estadoDoCupom() == 3)
        return ate.fazer("pagar em dinheiro", aCFEfetuarPagamento_ZEL("01", ""));
    for (const PagamentoVenda &pagamento : venda.pagamentos)
        if (!ate.fazer(juntar({"pagar ", pagamento.valor, " na forma ", pagamento.forma}),
                       pagarSemPerderTroco(pagamento)))
            return false;
    return true;
}

bool vender(const Venda &venda, bool continuar, Andamento &ate) {
    if (!comecar(venda, continuar, ate) || !venderItens(venda, ate)) return false;
    const bool totaliza = !continuar || estadoDoCupom() < kTotalizado || !venda.ajuste.tipo.empty();
    if (totaliza && !ate.fazer("totalizar", aCFTotalizar_ZEL(venda.ajuste.tipo.c_str(),
                                                             venda.ajuste.valor.c_str())))
        return false;
    return pagar(venda, ate) && ate.encerrar(tCFEncerrar_ZEL(venda.mensagem.c_str()));
}

// Items and amounts of the receipt on disk.
std::vector<Linha> valores(const std::string &diretorio) {
    std::string erro;
    const auto cupom = cupomNoDisco(diretorio, erro);
    return cupom ? resumoDoCupom(*cupom) : std::vector<Linha>{};
}

// At a terminal the user is asked.
bool querCancelar(const Argumentos &argumentos) {
    if (argumentos.json || ::isatty(STDIN_FILENO) == 0 || ::isatty(STDERR_FILENO) == 0)
        return false;
    escrever(stderr, "Cancelar o cupom agora? [s/N] ");
    const auto resposta = lerLinha();
    return resposta && (igualSemCaixa(*resposta, "s") || igualSemCaixa(*resposta, "sim"));
}

// What is left of a sale that was refused, and what to do with it. A receipt that another program
// has open is that program's.
std::vector<Linha> oQueFicou(const Argumentos &argumentos, const std::string &diretorio,
                             const Andamento &ate) {
    const int estado = estadoDoCupom();
    std::vector<Linha> linhas{{"estado", "Estado do cupom", digitoENome(estado)}};
    if (!emAndamento(estado)) return linhas;
    for (Linha &linha : valores(diretorio))
        linhas.push_back(std::move(linha));
    if (ate.deOutro) {
        linhas.push_back({"aviso", "Aviso",
                          "o cupom é de outro programa, que está aberto: venda nele, ou em outro "
                          "diretório de dados"});
        return linhas;
    }
    if (!ate.aberto && !argumentos.continuar)
        linhas.push_back({"aviso", "Aviso",
                          juntar({"o cupom já estava ali e não é desta venda: ",
                                  comando(argumentos, "estado"), " o mostra"})});
    linhas.push_back({"cancelar", "Para cancelar", comando(argumentos, "cancelar")});
    linhas.push_back({"continuar", "Para continuar", comando(argumentos, "vender --continuar")});
    return linhas;
}

int cancelarCupom() {
    return tCFCancelar_ZEL("", "", "", "", "");
}

// Between two steps the sale was asked to end: nothing of it is left.
int desistida(const Argumentos &argumentos, const std::string &diretorio, const Andamento &ate) {
    if (const int codigo = cancelarCupom(); codigo < ZEL_OK)
        return recusar("cancelar o cupom da venda interrompida", codigo,
                       oQueFicou(argumentos, diretorio, ate));
    return falhar("a venda foi interrompida: nada foi vendido, e o cupom foi cancelado");
}

int recusada(const Argumentos &argumentos, const std::string &diretorio, const Andamento &ate) {
    const bool cancelado = ate.aberto && argumentos.cancelar && cancelarCupom() >= ZEL_OK;
    recusar(ate.passo, ate.codigo, oQueFicou(argumentos, diretorio, ate));
    if (cancelado || !ate.aberto || !emAndamento(estadoDoCupom()) || !querCancelar(argumentos))
        return kComErros;
    if (const int codigo = cancelarCupom(); codigo < ZEL_OK)
        return recusar("cancelar o cupom", codigo);
    escrever(stderr, "O cupom foi cancelado.\n");
    return kComErros;
}

// What was there before, to be taken to its end: said before anything is done with it, to programs
// with the result.
std::vector<Linha> oQueHavia(const Argumentos &argumentos, const std::string &diretorio) {
    std::string erro;
    const auto cupom = cupomNoDisco(diretorio, erro);
    if (!cupom) return {};
    const std::vector<Linha> linhas = linhasDoCupom(*cupom);
    if (argumentos.json) return {{"havia", {}, {}, emJson(linhas)}};
    escrever("Cupom em andamento, que se leva ao fim:\n");
    escreverLinhas(argumentos, linhas);
    escrever("\n");
    std::fflush(stdout);
    return {};
}

int encerrada(const Argumentos &argumentos, const std::string &diretorio,
              std::vector<Linha> havia) {
    VendaTransmitida transmitida{kLimpo, "vendido", {}};
    // What is said of the document is that of the last one: offline it is another.
    if (argumentos.transmitir) transmitida = transmitirVenda(argumentos, diretorio);
    std::vector<Linha> linhas{{"resultado", "Resultado", transmitida.resultado},
                              {"numero", "Número", configuracao(R"(IDE\nNF)")},
                              {"serie", "Série", configuracao(R"(IDE\Serie)")}};
    for (Linha &linha : valores(diretorio))
        linhas.push_back(std::move(linha));
    const std::string troco = configuracao(kTroco);
    linhas.push_back({"troco", "Troco", troco == "0" ? "0.00" : troco});
    linhas.push_back({"chave", "Chave de acesso", configuracao(R"(NFCE\ChaveDeAcesso)")});
    linhas.push_back({"documento", "Documento",
                      argumento((std::string(diretorio).append(arquivos::kEnvio)).c_str())});
    for (std::vector<Linha> *mais : {&transmitida.linhas, &havia})
        for (Linha &linha : *mais)
            linhas.push_back(std::move(linha));
    escreverLinhas(argumentos, linhas);
    return transmitida.saida;
}

int vender(const Argumentos &argumentos) {
    Venda venda;
    for (const std::string &erro : {lerVenda(argumentos, venda), erroDaTransmissao(argumentos)})
        if (!erro.empty()) return usoErrado(kVender, erro);
    const auto diretorio = prepararDiretorio(argumentos);
    if (!diretorio) return kComErros;
    const int estado = estadoDoCupom();
    if (argumentos.continuar && !emAndamento(estado))
        return falhar(juntar({"não há cupom em andamento (estado ", digitoENome(estado), ")"}));
    if (argumentos.transmitir && !prepararTransmissao(argumentos, *diretorio)) return kComErros;
    std::vector<Linha> havia;
    if (argumentos.continuar) havia = oQueHavia(argumentos, *diretorio);
    Andamento ate;
    ate.deOutro = cupomComOutroProcesso(*diretorio);
    {
        const Interrupcao adiada;
        if (vender(venda, argumentos.continuar, ate))
            return encerrada(argumentos, *diretorio, std::move(havia));
        if (ate.interrompido) return desistida(argumentos, *diretorio, ate);
    }
    return recusada(argumentos, *diretorio, ate);
}

} // namespace

const Comando kVender = {
    "vender",
    "vender ITEM... [--itens ARQUIVO] [--pagamento FORMA[=VALOR]]... [--cpf CPF] [--cortar]\n"
    "vender --continuar [ITEM]... [--pagamento FORMA[=VALOR]]...\n"
    "vender ITEM... --transmitir [--esperar SEGUNDOS] [--impressora DESTINO]",
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
    "--cpf CPF, --cnpj CNPJ ou --estrangeiro DOCUMENTO identifica o consumidor, com os dígitos\n"
    "verificadores certos; em --cpf um CNPJ também serve. De um documento estrangeiro a\n"
    "biblioteca guarda dígitos, de 5 a 20, e não 11 nem 14.\n"
    "--ajuste AJUSTE é um desconto ou acréscimo no total: -10%, -1,50, +5%, +2,00.\n"
    "--mensagem TEXTO é impressa no fim do cupom.\n\n"
    "Tudo o que se pode conferir é conferido antes de abrir o cupom. Um texto ou uma casa decimal\n"
    "que a biblioteca cortaria é recusado; com --cortar é cortado. Se a biblioteca recusa um\n"
    "passo, zel diz o código, o remédio e em que estado o cupom ficou; num terminal pergunta se\n"
    "o cancela. --cancelar o cancela sem perguntar. --continuar mostra o cupom que ficou e o leva\n"
    "ao fim, com os itens e pagamentos que faltam. O motivo de cada recusa, com o campo: ZEL_LOG.\n"
    "Interrompida (Ctrl-C) antes do encerramento, a venda é cancelada inteira; a de --continuar\n"
    "vai até o fim.\n"
    "O documento fica em documentosEnvio.xml, para o componente de envio.\n\n"
    "--transmitir o envia logo, e espera pela SEFAZ o que --esperar diz (1 a 300 segundos; sem "
    "ela,\n"
    "5). Autorizado, o cupom sai na impressora de --impressora (com --perfil, --espera e "
    "--figura,\n"
    "como em zel imprimir), ou fica para zel imprimir. Sem resposta, o número seguinte é emitido "
    "em\n"
    "contingência no lugar dele; se nada saiu, o mesmo número; o cupom é o OFFLINE, e a fila\n"
    "transmite o documento depois. IDE\\tpEmis volta a 1. --config ARQUIVO é a configuração do "
    "envio.\n"
    "Saída com --transmitir: 0 autorizado; 1 vendido em contingência, ou o cupom não saiu; 2 não\n"
    "transmitido; 3 recusado, com o motivo e o que fazer.\n"
    "--diretorio DIR escolhe o diretório de dados.\n",
    kJson | kDiretorioDado | kVenda | kTransmitir | kEsperar | kConfigDoEnvio | kImpressora,
    vender,
};

} // namespace zel::aplicativo
