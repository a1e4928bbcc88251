// SPDX-License-Identifier: MIT
#include "comandos/ComandoCupom.h"

#include "comum/ArquivosDoCaixa.h"
#include "comum/Centavo.h"
#include "leitura/Arquivos.h"
#include "leitura/Json.h"
#include "leitura/Texto.h"
#include "leitura/Venda.h"

#include <algorithm>
#include <iterator>

namespace zel::aplicativo {

namespace {

struct NomeDoTipo {
    std::string_view tipo, nome;
};
constexpr NomeDoTipo kTipos[] = {
    {"cpf", "CPF"}, {"cnpj", "CNPJ"}, {"estrangeiro", "documento estrangeiro"}};

void juntarSeHouver(std::string &texto, std::string_view antes, std::string_view valor) {
    if (!valor.empty()) texto += juntar({antes, valor});
}

void membros(Json &json,
             std::initializer_list<std::pair<std::string_view, std::string_view>> lista) {
    for (const auto &[nome, valor] : lista)
        if (!valor.empty()) json.texto(nome, valor);
}

Linha soParaProgramas(std::string_view nome, const Json &json) {
    return {nome, {}, {}, json.escrito()};
}

void dizerConsumidor(const ConsumidorLido &consumidor, std::vector<Linha> &linhas) {
    if (consumidor.tipo.empty()) return;
    std::string texto(std::ranges::find(kTipos, consumidor.tipo, &NomeDoTipo::tipo)->nome);
    juntarSeHouver(texto, " ", consumidor.documento);
    juntarSeHouver(texto, ", ", consumidor.nome);
    juntarSeHouver(texto, ", ", consumidor.email);
    linhas.push_back({{}, "Consumidor", texto});
    Json json;
    json.abrirObjeto();
    membros(json, {{"tipo", consumidor.tipo},
                   {"documento", consumidor.documento},
                   {"nome", consumidor.nome},
                   {"email", consumidor.email}});
    linhas.push_back(soParaProgramas("consumidor", json.fecharObjeto()));
}

void dizerItens(const std::vector<ItemLido> &itens, std::vector<Linha> &linhas) {
    Json json;
    json.abrirLista();
    for (const ItemLido &item : itens) {
        std::string texto = juntar({item.codigo, " ", item.descricao, ": ", item.quantidade, " ",
                                    item.unidade, " x ", item.preco, " = ", item.bruto});
        juntarSeHouver(texto, ", desconto ", item.desconto);
        juntarSeHouver(texto, ", acréscimo ", item.acrescimo);
        linhas.push_back({{}, "Item " + item.numero, texto});
        json.abrirObjeto();
        membros(json, {{"numero", item.numero},
                       {"codigo", item.codigo},
                       {"descricao", item.descricao},
                       {"quantidade", item.quantidade},
                       {"unidade", item.unidade},
                       {"preco", item.preco},
                       {"bruto", item.bruto},
                       {"desconto", item.desconto},
                       {"acrescimo", item.acrescimo}});
        json.fecharObjeto();
    }
    linhas.push_back(soParaProgramas("lista", json.fecharLista()));
}

void dizerPagamentos(const std::vector<PagamentoLido> &pagamentos, std::vector<Linha> &linhas) {
    Json json;
    json.abrirLista();
    for (const PagamentoLido &pagamento : pagamentos) {
        const std::string_view nome = nomeDaForma(pagamento.forma);
        linhas.push_back({{}, "Pagamento", juntar({nome, " ", pagamento.valor})});
        json.abrirObjeto()
            .texto("forma", pagamento.forma)
            .texto("nome", nome)
            .texto("valor", pagamento.valor)
            .fecharObjeto();
    }
    linhas.push_back(soParaProgramas("pagamentos", json.fecharLista()));
}

} // namespace

std::optional<Cupom> cupomNoDisco(const std::string &diretorio, std::string &erro) {
    std::string bytes;
    if (lerArquivo(std::string(diretorio).append(arquivos::kCupom), kMaximoDocumento, bytes,
                   erro) != Leitura::kLido)
        return {};
    return lerCupom(bytes, erro);
}

std::vector<Linha> resumoDoCupom(const Cupom &cupom) {
    const double falta = cupom.total - cupom.pago;
    return {{"itens", "Itens", std::to_string(cupom.itens.size())},
            {"total", "Total", formatarMoeda(cupom.total)},
            {"pago", "Pago", formatarMoeda(cupom.pago)},
            {"falta", "Falta pagar", falta >= kMeioCentavo ? formatarMoeda(falta) : ""}};
}

std::vector<Linha> linhasDoCupom(const Cupom &cupom) {
    std::vector<Linha> linhas;
    dizerConsumidor(cupom.consumidor, linhas);
    dizerItens(cupom.itens, linhas);
    dizerPagamentos(cupom.pagamentos, linhas);
    for (Linha &linha : resumoDoCupom(cupom))
        linhas.push_back(std::move(linha));
    return linhas;
}

} // namespace zel::aplicativo
