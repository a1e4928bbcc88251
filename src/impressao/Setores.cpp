// SPDX-License-Identifier: MIT
#include "impressao/Setores.h"

#include "config/Registro.h"
#include "impressao/CupomFiscal.h"
#include "impressao/Escrita.h"
#include "impressao/LayoutImpressao.h"
#include "impressao/Linha.h"
#include "impressao/ValorImpresso.h"
#include "texto/Codigos.h"
#include "texto/Marcacao.h"
#include "texto/Numero.h"

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
    // Columns are counted after what makes the values harmless.
    std::string descricao;
    std::string valores;
    escrever(descricao, formatarInteiro(numero, 3), " ", item.CodigoProduto, "  ",
             item.DescricaoProduto);
    escrever(valores, "  ", item.Quantidade, " ", item.Unidade, " X ", unitario, " ", total);
    if (descricao.size() + valores.size() < layout.larguraItem) {
        escrever(texto, "<c>", aEsquerda(descricao, layout.larguraItem - valores.size()), valores,
                 "</c>\r\n");
        return;
    }
    escrever(texto, "<c>", descricao, layout.quebraItem,
             aEsquerda(inofensivo(item.Quantidade), layout.larguraQuantidade), " ",
             aEsquerda(inofensivo(item.Unidade), 6), " X ", aEsquerda(unitario, 13), " ",
             aDireita(total, 13), "</c>\r\n");
}

// "street,number,district,city-state": its commas and its hyphen, too, may complete a mark.
std::string enderecoImpresso(std::string_view logradouro, std::string_view numero,
                             std::string_view bairro, std::string_view municipio,
                             std::string_view uf) {
    std::string endereco;
    anexar(endereco, logradouro, ",", numero, ",", bairro, ",", municipio, "-", uf);
    return endereco;
}

// The closing message alone may hold mark-up: what the document in progress keeps of it in square
// brackets prints as mark-up.
std::string mensagemPromocional(const ST_PersitenceXML_ZEL &emCurso, const CupomFiscal &cf) {
    const auto &encerramento = emCurso.encerramento;
    const ST_tagZEL *infAdic = encerramento ? encerramento->getSubTag("infAdic") : nullptr;
    const std::string_view infCpl = infAdic != nullptr ? infAdic->valorDe("infCpl") : "";
    if (infCpl.empty()) return inofensivo(emLinhas(cf.MsgPromocional));
    return fnRetornarRepresentantes2Formatado(emLinhas(textoImpresso(infCpl)));
}

} // namespace

void imprimirEmitente(const Emitente &emitente, const EspacoEmitente &espaco, const Fixo &abre,
                      const Fixo &fecha, std::string &texto) {
    escrever(texto, "<bmp></bmp>", emitente.nome, espaco.aposNome);
    escrever(texto, abre, emitente.documento, espaco.aposDocumento, "I.E-", emitente.inscricao,
             fecha, "\r\n");
    escrever(texto, abre,
             enderecoImpresso(emitente.logradouro, emitente.numero, emitente.bairro,
                              emitente.municipio, emitente.uf),
             fecha, "\r\n", espaco.aposEndereco);
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
    escrever(texto, layout.separador);
}

void imprimirSetor_II(const ColunasLayout &layout, std::string &texto) {
    escrever(texto, layout.titulo, layout.separador, layout.cabecalhoItens, layout.separador);
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
                           std::size_t larguraValor, Fixo fecha) {
        escrever(texto, layout.abreCondensado, aEsquerda(rotulo, larguraRotulo),
                 aDireita(formatarMoeda(valor), larguraValor), fecha, "\r\n");
    };
    const auto total = [&](std::string_view rotulo, double valor, Fixo fecha) {
        linha(rotulo, layout.larguraRotulo, valor, layout.larguraValor, fecha);
    };
    const auto pagamento = [&](std::string_view rotulo, double valor, Fixo fecha) {
        linha(rotulo, layout.larguraForma, valor, kLarguraPago, fecha);
    };

    escrever(texto, layout.separador, layout.abreCondensado,
             aEsquerda("QTD. TOTAL DE ITENS", layout.larguraContagem),
             formatarInteiro(std::ssize(cf.Itens), 3), "\r\n");
    if (cf.ValorDesconto > 0) total("DESCONTO", cf.ValorDesconto, "");
    if (cf.ValorOutro > 0) total("ACRESCIMO", cf.ValorOutro, layout.fechaCondensado);
    total("VALOR TOTAL R$", cf.ValorTotal, "");

    escrever(texto, layout.abreCondensado, layout.cabecalhoPagamento, layout.fechaCondensado,
             "\r\n");
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
    escrever(texto, layout.separador);
}

void imprimirSetor_V(const ColunasLayout &layout, const CupomFiscal &cf, std::string_view mensagem,
                     std::string &texto) {
    if (!(cf.ValorTotalTributos > 0)) return;
    const std::string valor = formatarMoeda(cf.ValorTotalTributos);
    escrever(texto, "<c>");
    if (const std::size_t lugar = mensagem.find('|'); lugar != mensagem.npos)
        escrever(texto, mensagem.substr(0, lugar), valor, mensagem.substr(lugar + 1));
    else
        escrever(texto, mensagem, " ", valor);
    escrever(texto, "</c>\r\n", layout.separador);
}

void imprimirSetor_Va(const ColunasLayout &layout, const CupomFiscal &cf, std::string &texto) {
    if (!cf.MsgPromocional.vazio())
        escrever(texto, emLinhas(cf.MsgPromocional), "\r\n", layout.separador);
}

void imprimirSetor_VI(const ColunasLayout &layout, const CupomFiscal &cf,
                      std::string_view enderecoChave, int ambiente, bool viaEstabelecimento,
                      std::string &texto) {
    const bool normal = cf.TipoEmissao == kEmissaoNormal;
    if (normal)
        escrever(texto, ambiente == kProducao ? layout.areaFiscal : layout.homologacao);
    else
        escrever(texto, "             EMITIDA EM CONTINGÊNCIA\r\n"_fixo);
    escrever(texto, "<c>Número:"_fixo, cf.NumeroNotaFiscal, " Série:"_fixo, cf.Serie,
             " Emissão:"_fixo, dataImpressa(cf.DataHora), " - Via</c>\r\n");
    if (normal)
        escrever(texto, layout.viaNormal);
    else
        escrever(texto, viaEstabelecimento ? layout.viaEstabelecimento : layout.viaConsumidor);
    escrever(texto, layout.abreCondensado, "Consulte pela Chave de Acesso em: ", enderecoChave,
             layout.fechaCondensado, "\r\n");
    escrever(texto, layout.tituloChave, "<c>", cf.getChaveDeAcessoFormatado(), "</c>\r\n");
}

void imprimirSetor_VII(const ColunasLayout &layout, const CupomFiscal &cf, std::string &texto) {
    escrever(texto, layout.separador, layout.tituloConsumidor);
    if (cf.IdDest.vazio()) {
        escrever(texto, layout.semConsumidor);
    } else {
        escrever(texto, "<ce>CNPJ/CPF/ID Estrangeiro - ", cf.IdDest, "</ce>\r\n");
        escrever(texto, "<ce>", cf.DestNome, "</ce>\r\n");
        if (!cf.DestLogradouro.vazio())
            escrever(texto, "<ce>",
                     enderecoImpresso(cf.DestLogradouro, formatarInteiro(cf.DestNumero),
                                      cf.DestBairro, cf.DestMunicipio, cf.DestUF),
                     "</ce>\r\n");
    }
    // The line feed alone is part of the form.
    const std::string_view separador = layout.separador.texto();
    escrever(texto, separador.substr(0, separador.find('\r')), "\n");
}

void imprimirSetor_VIII(const ColunasLayout &layout, const CupomFiscal &cf,
                        std::string_view conteudoQrcode, int ambiente, std::string &texto) {
    escrever(texto, layout.tituloQrcode, "<ce><qrcode>");
    anexar(texto, conteudoQrcode);
    escrever(texto, layout.fechaQrcode);
    if (cf.TipoEmissao != kEmissaoNormal) return;
    escrever(texto, layout.protocolo,
             aDireita(inofensivo(cf.ProtocoloSefaz), layout.larguraProtocolo), " </c>\r\n");
    // A delivered link comes without the time of authorization.
    const bool linkPronto = ambiente == kLinkPronto;
    escrever(texto, "<c>", std::string(18, ' '),
             dataImpressa(linkPronto ? cf.DataHora : cf.DataHoraAutorizacao), layout.fechaData);
}

void imprimirMsgPromocional(const ColunasLayout &layout, const ST_PersitenceXML_ZEL &emCurso,
                            const CupomFiscal &cf, std::string &texto) {
    if (!layout.promocionalSempre && valorConfig(R"(NFCE\MSGPROMOCIONAL\Imprimir)"_chave) != "1")
        return;
    escrever(texto, "\r\n", layout.separador, "<ce>",
             linhasConfiguradas(R"(NFCE\MSGPROMOCIONAL\Titulo)"_chave), "</ce>\r\n");
    anexar(texto, mensagemPromocional(emCurso, cf));
}

} // namespace zel
