// SPDX-License-Identifier: MIT
#include "impressao/Setores.h"

#include "config/Arredondamento.h"
#include "config/Registro.h"
#include "impressao/DadosImpressao.h"
#include "impressao/LayoutImpressao.h"
#include "impressao/Linha.h"
#include "impressao/ValorImpresso.h"
#include "util/Codigos.h"
#include "util/Latin1.h"
#include "util/Marcacao.h"
#include "util/Numero.h"
#include "util/TextoXml.h"

#include <algorithm>
#include <cstddef>

namespace zel {

namespace {

constexpr std::size_t kLarguraPago = 20;

// "2014-01-31T23:59:59-02:00" as "31/01/2014 23:59:59"; blanks of that width when it is empty.
std::string dataImpressa(std::string_view dataHora) {
    constexpr std::size_t kLarguraData = 19;
    if (dataHora.empty()) return std::string(kLarguraData, ' ');
    const auto parte = [dataHora](std::size_t inicio, std::size_t tamanho) {
        return dataHora.substr(std::min(inicio, dataHora.size()), tamanho);
    };
    std::string data;
    anexar(data, parte(8, 2), "/", parte(5, 2), "/", parte(0, 4), " ", parte(11, 8));
    return data;
}

void imprimirItem(const ColunasLayout &layout, long long numero, const Item &item,
                  std::string &texto) {
    const std::string unitario = formatarMoeda(item.ValorUnitario);
    const std::string total =
        formatarMoeda(fnArredondarTruncar(lerDecimal(item.Quantidade) * item.ValorUnitario));
    std::string descricao;
    std::string valores;
    anexar(descricao, formatarInteiro(numero, 3), " ", item.CodigoProduto, "  ",
           item.DescricaoProduto);
    anexar(valores, "  ", item.Quantidade, " ", item.Unidade, " X ", unitario, " ", total);
    if (descricao.size() + valores.size() < layout.larguraItem) {
        anexar(texto, "<c>", aEsquerda(descricao, layout.larguraItem - valores.size()), valores,
               "</c>\r\n");
        return;
    }
    anexar(texto, "<c>", descricao, layout.quebraItem,
           aEsquerda(item.Quantidade, layout.larguraQuantidade), " ", aEsquerda(item.Unidade, 6),
           " X ", aEsquerda(unitario, 13), " ", aDireita(total, 13), "</c>\r\n");
}

// Mark-up that the document keeps in square brackets prints as mark-up.
std::string mensagemPromocional(const ST_PersitenceXML_ZEL &emCurso, const CupomFiscal &cf) {
    const auto &encerramento = emCurso.encerramento;
    const ST_tagZEL *infAdic = encerramento ? encerramento->getSubTag("infAdic") : nullptr;
    const std::string_view infCpl = infAdic != nullptr ? infAdic->valorDe("infCpl") : "";
    if (infCpl.empty()) return std::string(cf.MsgPromocional);
    return fnRetornarRepresentantes2Formatado(textoSimples(infCpl, FimDeLinha::kMantido));
}

} // namespace

void imprimirEmitente(const Emitente &emitente, const EspacoEmitente &espaco, std::string_view abre,
                      std::string_view fecha, std::string &texto) {
    anexar(texto, "<bmp></bmp>", emitente.nome, espaco.aposNome);
    anexar(texto, abre, emitente.documento, espaco.aposDocumento, "I.E-", emitente.inscricao, fecha,
           "\r\n");
    anexar(texto, abre, emitente.logradouro, ",", emitente.numero, ",", emitente.bairro, ",",
           emitente.municipio, "-", emitente.uf, fecha, "\r\n", espaco.aposEndereco);
}

bool logotipoSeparado() {
    return valorConfig(R"(NFCE\Logotipo)"_chave) == "L";
}

void imprimirSetor_I(const ColunasLayout &layout, const CupomFiscal &cf, std::string &texto) {
    const std::string documento = retornaCnpjCpfFormatado(cf.CnpjCpf);
    const std::string numero = formatarInteiro(cf.EmitNumero);
    const Emitente emitente{cf.Nome, documento,     cf.EmitInscricaoEstadual, cf.EmitLogradouro,
                            numero,  cf.EmitBairro, cf.EmitMunicipio,         cf.EmitUF};
    imprimirEmitente(emitente, logotipoSeparado() ? layout.emitenteLogotipo : layout.emitente,
                     layout.abreCondensado, layout.fechaCondensado, texto);
    anexar(texto, layout.separador);
}

void imprimirSetor_II(const ColunasLayout &layout, std::string &texto) {
    anexar(texto, layout.titulo, layout.separador, layout.cabecalhoItens, layout.separador);
}

void imprimirSetor_III(const ColunasLayout &layout, std::span<const Item> itens,
                       std::string &texto) {
    long long numero = 0;
    for (const Item &item : itens)
        imprimirItem(layout, ++numero, item, texto);
}

// On the narrow paper some lines leave the condensed mode on until the next "</c>": `fecha`.
void imprimirSetor_IV(const ColunasLayout &layout, const CupomFiscal &cf, bool comTroco,
                      std::string &texto) {
    const auto linha = [&](std::string_view rotulo, std::size_t larguraRotulo, double valor,
                           std::size_t larguraValor, std::string_view fecha) {
        anexar(texto, layout.abreCondensado, aEsquerda(rotulo, larguraRotulo),
               aDireita(formatarMoeda(valor), larguraValor), fecha, "\r\n");
    };
    const auto total = [&](std::string_view rotulo, double valor, std::string_view fecha) {
        linha(rotulo, layout.larguraRotulo, valor, layout.larguraValor, fecha);
    };
    const auto pagamento = [&](std::string_view rotulo, double valor, std::string_view fecha) {
        linha(rotulo, layout.larguraForma, valor, kLarguraPago, fecha);
    };

    anexar(texto, layout.separador, layout.abreCondensado,
           aEsquerda("QTD. TOTAL DE ITENS", layout.larguraContagem),
           formatarInteiro(std::ssize(cf.Itens), 3), "\r\n");
    if (cf.ValorDesconto > 0) total("DESCONTO", cf.ValorDesconto, "");
    if (cf.ValorOutro > 0) total("ACRESCIMO", cf.ValorOutro, layout.fechaCondensado);
    total("VALOR TOTAL R$", cf.ValorTotal, "");

    anexar(texto, layout.abreCondensado, layout.cabecalhoPagamento, layout.fechaCondensado, "\r\n");
    const double troco = lerDecimal(valorConfig(R"(CONFIGURACAO\TrocoUltimaNFCe)"_chave));
    std::string_view rotulo; // an unknown form keeps the one before
    for (const Pagamento &pago : cf.Pagamentos) {
        const auto forma = std::ranges::find(kFormasPagamento, formatarInteiro(pago.FormaPgto, 2),
                                             &FormaPagamento::codigo);
        if (forma != std::end(kFormasPagamento)) rotulo = forma->rotulo;
        const bool somado = comTroco && &pago == &cf.Pagamentos.back();
        pagamento(rotulo, somado ? pago.ValorPgto + troco : pago.ValorPgto, "");
    }
    if (troco > 0) pagamento("TROCO", troco, layout.fechaCondensado);
    anexar(texto, layout.separador);
}

void imprimirSetor_V(const ColunasLayout &layout, const CupomFiscal &cf, std::string_view mensagem,
                     std::string &texto) {
    if (!(cf.ValorTotalTributos > 0)) return;
    const std::string valor = formatarMoeda(cf.ValorTotalTributos);
    anexar(texto, "<c>");
    if (const std::size_t lugar = mensagem.find('|'); lugar != mensagem.npos)
        anexar(texto, mensagem.substr(0, lugar), valor, mensagem.substr(lugar + 1));
    else
        anexar(texto, mensagem, " ", valor);
    anexar(texto, "</c>\r\n", layout.separador);
}

void imprimirSetor_Va(const ColunasLayout &layout, const CupomFiscal &cf, std::string &texto) {
    if (!cf.MsgPromocional.vazio()) anexar(texto, cf.MsgPromocional, "\r\n", layout.separador);
}

void imprimirSetor_VI(const ColunasLayout &layout, const CupomFiscal &cf,
                      std::string_view enderecoChave, int ambiente, bool viaEstabelecimento,
                      std::string &texto) {
    const bool normal = cf.TipoEmissao == kEmissaoNormal;
    if (normal)
        anexar(texto, ambiente == kProducao ? layout.areaFiscal : layout.homologacao);
    else
        anexar(texto, "             EMITIDA EM CONTINGÊNCIA\r\n"_l1);
    anexar(texto, "<c>Número:"_l1, cf.NumeroNotaFiscal, " Série:"_l1, cf.Serie, " Emissão:"_l1,
           dataImpressa(cf.DataHora), " - Via</c>\r\n");
    if (normal)
        anexar(texto, layout.viaNormal);
    else
        anexar(texto, viaEstabelecimento ? layout.viaEstabelecimento : layout.viaConsumidor);
    anexar(texto, layout.abreCondensado, "Consulte pela Chave de Acesso em: ", enderecoChave,
           layout.fechaCondensado, "\r\n");
    anexar(texto, layout.tituloChave, "<c>", cf.getChaveDeAcessoFormatado(), "</c>\r\n");
}

void imprimirSetor_VII(const ColunasLayout &layout, const CupomFiscal &cf, std::string &texto) {
    anexar(texto, layout.separador, layout.tituloConsumidor);
    if (cf.IdDest.vazio()) {
        anexar(texto, layout.semConsumidor);
    } else {
        anexar(texto, "<ce>CNPJ/CPF/ID Estrangeiro - ", cf.IdDest, "</ce>\r\n");
        anexar(texto, "<ce>", cf.DestNome, "</ce>\r\n");
        if (!cf.DestLogradouro.vazio())
            anexar(texto, "<ce>", cf.DestLogradouro, ",", formatarInteiro(cf.DestNumero), ",",
                   cf.DestBairro, ",", cf.DestMunicipio, "-", cf.DestUF, "</ce>\r\n");
    }
    // The line feed alone is part of the form.
    anexar(texto, layout.separador.substr(0, layout.separador.find('\r')), "\n");
}

void imprimirSetor_VIII(const ColunasLayout &layout, const CupomFiscal &cf,
                        std::string_view conteudoQrcode, int ambiente, std::string &texto) {
    anexar(texto, layout.tituloQrcode, "<ce><qrcode>", conteudoQrcode, layout.fechaQrcode);
    if (cf.TipoEmissao != kEmissaoNormal) return;
    anexar(texto, layout.protocolo, aDireita(cf.ProtocoloSefaz, layout.larguraProtocolo),
           " </c>\r\n");
    // A delivered link comes without the time of authorization.
    const bool linkPronto = ambiente == kLinkPronto;
    anexar(texto, "<c>", std::string(18, ' '),
           dataImpressa(linkPronto ? cf.DataHora : cf.DataHoraAutorizacao), layout.fechaData);
}

void imprimirMsgPromocional(const ColunasLayout &layout, const ST_PersitenceXML_ZEL &emCurso,
                            const CupomFiscal &cf, std::string &texto) {
    if (!layout.promocionalSempre && valorConfig(R"(NFCE\MSGPROMOCIONAL\Imprimir)"_chave) != "1")
        return;
    anexar(texto, "\r\n", layout.separador, "<ce>",
           valorImpresso(R"(NFCE\MSGPROMOCIONAL\Titulo)"_chave), "</ce>\r\n",
           mensagemPromocional(emCurso, cf));
}

} // namespace zel
