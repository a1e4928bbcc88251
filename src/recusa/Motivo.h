// SPDX-License-Identifier: MIT
// Why a call was refused: every place of refusal names one of these, and from the table come the
// code that it answers and what the log says of it. A code is not answered in any other way.
#pragma once

#include "zel_felbor/codigos.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace zel {

enum class Motivo : std::uint8_t {
    // Files and processes.
    kArquivo,
    kVezDeOutro,
    kCupomDeOutro,
    kEstadoDeOutro,
    kSemMemoria,
    kSemDocumento,
    kNomeTomado,
    // Configuration.
    kConfigIlegivel,
    kConfigSemLugar,
    kChaveDesconhecida,
    kChaveNula,
    kValorComFim,
    // Arguments, whichever the function.
    kArgumentoNulo,
    kArgumentoVazio,
    kArgumentoNegativo,
    kArgumentoForaDoTamanho,
    kNaoEhDecimal,
    kSaidaNula,
    // States of the receipt.
    kCupomEmAndamento,
    kNenhumCupom,
    kVendaForaDeOrdem,
    kTotalizacaoForaDeOrdem,
    kPagamentoForaDeOrdem,
    kEncerramentoForaDeOrdem,
    kAjusteForaDoEstado,
    kImpostoForaDoEstado,
    kEstornoForaDoEstado,
    kTransporteForaDoEstado,
    // Consumer and carrier.
    kLogradouroSemParte,
    kTransporteSemEntrega,
    kConsumidorObrigatorio,
    // Tag text and sections.
    kTextoSemElementos,
    kGrupoNoLugarDeValor,
    kTagForaDoTamanho,
    kTagDesconhecida,
    kTagAusente,
    kSemMoldes,
    kXmlTagSemFim,
    kXmlNomeInvalido,
    kXmlMenorNaTag,
    kXmlAtributo,
    kXmlFimErrado,
    kXmlElementoAberto,
    kXmlNiveis,
    kXmlSemElemento,
    kRegistroDanificado,
    // Items.
    kItensDemais,
    kSemGrupoIcms,
    kImpostoSemValor,
    kGrupoDesconhecido,
    kItemInexistente,
    kItemSemProduto,
    kItemForaDaLista,
    kItemMenorQueUm,
    kItemNegativo,
    kItemJaAjustado,
    kNadaARemover,
    kCancelamentoExcessivo,
    kAjusteExcessivo,
    kRateioSemValor,
    kRateioExcessivo,
    kRateioSobreAjuste,
    kSemLista,
    // Payments.
    kJaPago,
    kTrocoGrande,
    kPagamentoInexistente,
    // Issuing.
    kEncerrarSemItens,
    kDocumentoIncompleto,
    kReemitirSemItens,
    kTipoDeEmissao,
    kContingenciaSemDiretorio,
    kRelogio,
    kNumeroDaNota,
    kParteDaChave,
    // Cancellation and requests.
    kJaCancelado,
    kChaveDeOutroDocumento,
    kChaveInvalida,
    kCancelamentoSemDiretorio,
    kTipoDeConsulta,
    kIndice,
    // Printing.
    kCaminhoNulo,
    kTipoDeDocumento,
    kColunas,
    kImpressaoIlegivel,
    kImpressaoSemElemento,
    kImpressaoSemChave,
    kDocumentoSemForma,
    kPdfSemBase64,
    kPdfSemChave,
    kPdfSemNome,
    kPdfSemDocumento,
    kPdfOrigem,
    kNaoAutorizado,
    kPdfNaoDesenhado,
    kPdfNaoMontado,
    kPdfNaoGravado,
    kNenhum, // not a reason: how many there are
};

// In the texts: {campo} an argument, an element or a key; {dado} what was given there; {tamanho}
// its length; {limites} the lengths allowed; {lugar} where it stands; {diretorio} the
// data directory; {numero} a whole number;
// {maximo} the highest one allowed; {itens} that many items;
// {quantia} and {limite} amounts; {estado} the state of the receipt, {depois} what to do after its
// end; {falha} file and system error.
struct LinhaMotivo {
    Motivo motivo;
    int codigo;
    std::string_view texto; // UTF-8
};

// clang-format off
inline constexpr std::array<LinhaMotivo, static_cast<std::size_t>(Motivo::kNenhum)> kMotivos{{
    {Motivo::kArquivo, ZEL_ARQUIVO_INDISPONIVEL, "{falha}"},
    {Motivo::kVezDeOutro, ZEL_ARQUIVO_INDISPONIVEL, "{diretorio}: outro processo grava ali há mais de três segundos; veja se um programa de caixa está parado no meio de uma gravação"},
    {Motivo::kCupomDeOutro, ZEL_ARQUIVO_INDISPONIVEL, "{diretorio}: outro processo está com o cupom; encerre ou cancele lá o cupom, ou feche o outro programa"},
    {Motivo::kEstadoDeOutro, ZEL_ARQUIVO_INDISPONIVEL, "outro processo mudou o cupom desde que este soube dele, {estado}; pergunte com rCFVerificarStatus_ZEL e repita, se ainda é o que se quer cancelar"},
    {Motivo::kSemMemoria, ZEL_ARQUIVO_INDISPONIVEL, "faltou memória"},
    {Motivo::kSemDocumento, ZEL_ARQUIVO_INDISPONIVEL, "não há cupom em andamento: {diretorio}ArqPersist.bin não existe ou não tem registros; abra um cupom com aCFAbrir_ZEL"},
    {Motivo::kNomeTomado, ZEL_RECUSADO, "o nome do arquivo já existe"},

    {Motivo::kConfigIlegivel, ZEL_CONFIG_ILEGIVEL, "{diretorio}ZEL_Framework.xml: faltam as marcas <FRAMEWORKZEL> e </FRAMEWORKZEL>; restaure a cópia do arquivo e grave em IDE\\nNF o último número usado, ou chame aCFInicializar_ZEL, que o guarda ao lado e cria outro com os valores de fábrica (CNPJ, token e número)"},
    {Motivo::kConfigSemLugar, ZEL_CONFIG_ILEGIVEL, "{diretorio}ZEL_Framework.xml: está danificado e a chave {campo} não tem lugar nele; restaure a cópia do arquivo e grave em IDE\\nNF o último número usado"},
    {Motivo::kChaveDesconhecida, ZEL_RECUSADO, "chave: não há chave de configuração {dado}; o caminho é GRUPO\\Chave, como IDE\\nNF (docs/configuracao.md)"},
    {Motivo::kChaveNula, ZEL_RECUSADO, "chave: ponteiro nulo; passe o caminho de uma chave, como IDE\\nNF"},
    {Motivo::kValorComFim, ZEL_RECUSADO, "{campo}: o valor contém \"</\", que terminaria o elemento no arquivo de configuração"},

    {Motivo::kArgumentoNulo, ZEL_ARGUMENTO_INVALIDO, "{campo}: ponteiro nulo; passe um texto, ainda que vazio"},
    {Motivo::kArgumentoVazio, ZEL_ARGUMENTO_INVALIDO, "{campo}: {dado}; é obrigatório"},
    {Motivo::kArgumentoNegativo, ZEL_ARGUMENTO_INVALIDO, "{campo}: {dado}; não pode ser negativo"},
    {Motivo::kArgumentoForaDoTamanho, ZEL_ARGUMENTO_INVALIDO, "{campo}: {dado}, {tamanho}; permitido: {limites}"},
    {Motivo::kNaoEhDecimal, ZEL_ARGUMENTO_INVALIDO, "{campo}: {dado}; só dígitos com no máximo uma vírgula ou um ponto, como 12,50"},
    {Motivo::kSaidaNula, ZEL_ARGUMENTO_INVALIDO, "{campo}: ponteiro nulo; passe um buffer para o resultado"},

    {Motivo::kCupomEmAndamento, ZEL_CUPOM_EM_ANDAMENTO, "já há um cupom em andamento, {estado}; se é deste caixa, continue-o, ou cancele-o com tCFCancelar_ZEL e cinco textos vazios; se é de outro programa que usa este diretório, espere que ele o encerre"},
    {Motivo::kNenhumCupom, ZEL_NENHUM_CUPOM, "nenhum cupom está aberto, {estado}; abra um com aCFAbrir_ZEL"},
    {Motivo::kVendaForaDeOrdem, ZEL_VENDA_FORA_DE_ORDEM, "só se vende nos estados 1 (aberto) e 2 (vendendo); o cupom está no {estado}{depois}"},
    {Motivo::kTotalizacaoForaDeOrdem, ZEL_TOTALIZACAO_FORA_DE_ORDEM, "totaliza-se uma vez, com itens vendidos, no estado 2 (vendendo); o cupom está no {estado}{depois}"},
    {Motivo::kPagamentoForaDeOrdem, ZEL_PAGAMENTO_FORA_DE_ORDEM, "paga-se depois de aCFTotalizar_ZEL, nos estados 3 (totalizado) e 4 (pago); o cupom está no {estado}{depois}"},
    {Motivo::kEncerramentoForaDeOrdem, ZEL_ENCERRAMENTO_FORA_DE_ORDEM, "encerra-se com o total pago, no estado 4 (pago); o cupom está no {estado}{depois}"},
    {Motivo::kAjusteForaDoEstado, ZEL_ESTADO_INVALIDO, "um item só muda no estado 2 (vendendo), antes de totalizar; o cupom está no {estado}{depois}"},
    {Motivo::kImpostoForaDoEstado, ZEL_ESTADO_INVALIDO, "o imposto do próximo item se define nos estados 1 a 3, depois de aCFAbrir_ZEL; o cupom está no {estado}{depois}"},
    {Motivo::kEstornoForaDoEstado, ZEL_ESTADO_INVALIDO, "um pagamento só se corrige no estado 4 (pago); o cupom está no {estado}{depois}"},
    {Motivo::kTransporteForaDoEstado, ZEL_ESTADO_INVALIDO, "a transportadora se informa antes do encerramento, nos estados 0 a 4; o cupom está no {estado}{depois}"},

    {Motivo::kLogradouroSemParte, ZEL_RECUSADO, "{campo}: {dado}; com um logradouro, é obrigatório e tem {limites}"},
    {Motivo::kTransporteSemEntrega, ZEL_TRANSPORTADORA_NAO_PERMITIDA, "IDE\\indPres: {dado}; transportadora só em entrega a domicílio, com IDE\\indPres em 4 na configuração"},
    {Motivo::kConsumidorObrigatorio, ZEL_CONSUMIDOR_OBRIGATORIO, "o total, {quantia}, passa de CONFIGURACAO\\ValorMaxIdeCliente, {limite}, e falta identificar o consumidor por {campo}: chame aCFIdentificarConsumidor_ZEL"},

    {Motivo::kTextoSemElementos, ZEL_TAG_SEM_ELEMENTOS, "não há nenhum elemento XML no texto dado"},
    {Motivo::kGrupoNoLugarDeValor, ZEL_TAG_SEM_ELEMENTOS, "{campo}: tem elementos dentro, e é um valor sem elementos"},
    {Motivo::kTagForaDoTamanho, ZEL_TAG_NAO_CONFORME, "{campo}: {dado}, {tamanho}; permitido: {limites}"},
    {Motivo::kTagDesconhecida, ZEL_TAG_NAO_CONFORME, "{campo}: não existe em {lugar}, ou está fora de ordem"},
    {Motivo::kTagAusente, ZEL_TAG_OBRIGATORIA, "{campo}: falta em {lugar}, ou está fora de ordem"},
    {Motivo::kSemMoldes, ZEL_RECUSADO, "as tabelas das seções não foram montadas"},
    {Motivo::kXmlTagSemFim, ZEL_RECUSADO, "XML malformado: uma tag não tem \">\", na posição {numero} do texto"},
    {Motivo::kXmlNomeInvalido, ZEL_RECUSADO, "XML malformado: uma tag sem nome, ou com nome de mais de 39 caracteres, na posição {numero} do texto"},
    {Motivo::kXmlMenorNaTag, ZEL_RECUSADO, "XML malformado: \"<\" dentro de uma tag, na posição {numero} do texto"},
    {Motivo::kXmlAtributo, ZEL_RECUSADO, "XML malformado: atributo sem aspas, sem nome ou com mais de 99 caracteres na tag {campo}"},
    {Motivo::kXmlFimErrado, ZEL_RECUSADO, "XML malformado: {campo} está aberto e a tag de fim é outra, na posição {numero} do texto"},
    {Motivo::kXmlElementoAberto, ZEL_RECUSADO, "XML malformado: {campo} não tem tag de fim"},
    {Motivo::kXmlNiveis, ZEL_RECUSADO, "XML malformado: mais de 32 elementos uns dentro dos outros"},
    {Motivo::kXmlSemElemento, ZEL_RECUSADO, "XML malformado: não há nenhum elemento"},
    {Motivo::kRegistroDanificado, ZEL_RECUSADO, "um registro do cupom em andamento está danificado"},

    {Motivo::kItensDemais, ZEL_RECUSADO, "o cupom já tem {numero} itens, o máximo"},
    {Motivo::kSemGrupoIcms, ZEL_RECUSADO, "nenhum grupo de ICMS: preencha na configuração IMPOSTO\\ICMS\\ICMS00\\Orig (ou a chave Orig de outro grupo) e as demais do grupo, ou chame aCFConfICMS00_ZEL antes da venda"},
    {Motivo::kImpostoSemValor, ZEL_RECUSADO, "{campo}: vazio; o grupo de imposto {lugar} precisa dele"},
    {Motivo::kGrupoDesconhecido, ZEL_RECUSADO, "o item guardado tem o grupo de imposto {campo}, que não é conhecido"},
    {Motivo::kItemInexistente, ZEL_ITEM_INEXISTENTE, "item: {numero}; o cupom tem {itens}"},
    {Motivo::kItemSemProduto, ZEL_ITEM_INEXISTENTE, "item: {numero}; está guardado sem o grupo prod"},
    {Motivo::kItemForaDaLista, ZEL_ARGUMENTO_INVALIDO, "item: {numero}; o cupom tem {itens}"},
    {Motivo::kItemMenorQueUm, ZEL_ARGUMENTO_INVALIDO, "item: {numero}; informe 1 ou mais (0 não vale pelo último aqui)"},
    {Motivo::kItemNegativo, ZEL_ARGUMENTO_INVALIDO, "item: {numero}; informe o número do item, de 1 em diante, ou 0 para o último"},
    {Motivo::kItemJaAjustado, ZEL_ITEM_JA_AJUSTADO, "item: {numero}; já tem {campo}, e um item tem um só ajuste: cancele-o antes de lançar outro"},
    {Motivo::kNadaARemover, ZEL_NADA_A_REMOVER, "item: {numero}; não tem {campo} que se possa cancelar"},
    {Motivo::kCancelamentoExcessivo, ZEL_CANCELAMENTO_EXCESSIVO, "quantidade: {quantia}; o item tem {limite} e algo deve sobrar: para cancelar tudo, aCFCancelarItem_ZEL"},
    {Motivo::kAjusteExcessivo, ZEL_AJUSTE_EXCESSIVO, "o ajuste, {quantia}, deve ser menor que o valor bruto do item, {limite}"},
    {Motivo::kRateioSemValor, ZEL_AJUSTE_EXCESSIVO, "valor: {quantia}; os itens valem zero e não há sobre o que ratear"},
    {Motivo::kRateioExcessivo, ZEL_AJUSTE_EXCESSIVO, "o item {numero} não comporta a sua parte do rateio, {quantia}: o valor bruto dele é {limite}"},
    {Motivo::kRateioSobreAjuste, ZEL_AJUSTE_EXCESSIVO, "o item {numero} tem um {campo} seu e, com a parte do rateio, levaria {quantia}; o valor bruto dele é {limite}: cancele antes o {campo} do item"},
    {Motivo::kSemLista, ZEL_SEM_LISTA, "o cupom não tem a lista de itens ou pagamentos"},

    {Motivo::kJaPago, ZEL_JA_PAGO, "os pagamentos, {quantia}, já cobrem o total, {limite}: encerre o cupom; esta chamada zerou CONFIGURACAO\\TrocoUltimaNFCe: se houve troco, grave-o de novo com regAlterarValor_ZEL antes de imprimir"},
    {Motivo::kTrocoGrande, ZEL_PAGAMENTO_INEXISTENTE, "valor: {dado}; o troco não cabe em CONFIGURACAO\\TrocoUltimaNFCe: um código de barras foi digitado como valor?"},
    {Motivo::kPagamentoInexistente, ZEL_PAGAMENTO_INEXISTENTE, "não há pagamento na forma {campo} com o valor {dado}; o último é procurado pelo valor dado antes do troco"},

    {Motivo::kEncerrarSemItens, ZEL_RECUSADO, "não há cupom em andamento: {diretorio}ArqPersist.bin não existe ou não tem registros; abra um cupom com aCFAbrir_ZEL"},
    {Motivo::kDocumentoIncompleto, ZEL_RECUSADO, "falta no cupom guardado: {campo}"},
    {Motivo::kReemitirSemItens, ZEL_RECUSADO, "não há cupom guardado que se possa emitir de novo; encerre um neste diretório antes"},
    {Motivo::kTipoDeEmissao, ZEL_RECUSADO, "tipo: {numero}; permitido: 1 (normal), 3 (substituição), 4 (contingência, em diretórios) ou 5 (contingência, mesma numeração)"},
    {Motivo::kContingenciaSemDiretorio, ZEL_RECUSADO, "texto: {dado}; o tipo 4 precisa de um a três diretórios, cada um com a barra no fim, separados por |"},
    {Motivo::kRelogio, ZEL_RECUSADO, "o relógio do computador marca um ano que não tem quatro dígitos"},
    {Motivo::kNumeroDaNota, ZEL_RECUSADO, "IDE\\nNF: o número da nota seria {numero}; permitido: de 0 a 999999999, e IDE\\cNF também não pode ser negativo"},
    {Motivo::kParteDaChave, ZEL_RECUSADO, "{campo}: {dado}; a chave de acesso precisa ali de {limites}, só dígitos: corrija a configuração"},

    {Motivo::kJaCancelado, ZEL_RECUSADO, "o cupom já está cancelado, {estado}; para cancelar outro documento, informe número, série, chave e protocolo"},
    {Motivo::kChaveDeOutroDocumento, ZEL_RECUSADO, "NFCE\\ChaveDeAcesso não é do documento de IDE\\nNF e IDE\\Serie (outro foi impresso depois); informe número, série, chave e protocolo"},
    {Motivo::kChaveInvalida, ZEL_RECUSADO, "chave: {dado}, {tamanho}; permitido: exatamente 44 dígitos"},
    {Motivo::kCancelamentoSemDiretorio, 0, "diretorios: {dado}; informe de um a três diretórios, cada um com a barra no fim, separados por |"},
    {Motivo::kTipoDeConsulta, ZEL_ARGUMENTO_INVALIDO, "tipo: {dado}; permitido: DATA, NUM ou CHAVE"},
    {Motivo::kIndice, ZEL_ARGUMENTO_INVALIDO, "indice: {dado}; permitido: 1 a 7"},

    {Motivo::kCaminhoNulo, ZEL_RECUSADO, "{campo}: ponteiro nulo; passe o caminho de um arquivo"},
    {Motivo::kTipoDeDocumento, ZEL_RECUSADO, "tipoDocumento: {numero}; permitido: 1 (venda) ou 5 (cancelamento)"},
    {Motivo::kColunas, ZEL_RECUSADO, "colunas: {numero}; permitido: 42 ou 48"},
    {Motivo::kImpressaoIlegivel, ZEL_RECUSADO, "{falha}"},
    {Motivo::kImpressaoSemElemento, ZEL_RECUSADO, "{campo}: falta no documento ou no retorno que se quer imprimir"},
    {Motivo::kImpressaoSemChave, ZEL_RECUSADO, "{campo}: {dado}; devia trazer a chave de acesso, de 44 dígitos"},
    {Motivo::kDocumentoSemForma, ZEL_RECUSADO, "o documento não tem elementos dos quais tirar o resumo (digest)"},
    {Motivo::kPdfSemBase64, ZEL_RECUSADO, "documentoBase64: {dado}, {tamanho}; não é base64"},
    {Motivo::kPdfSemChave, ZEL_RECUSADO, "o documento não tem infNFe com o atributo Id: \"NFe\" e a chave, de 44 dígitos"},
    {Motivo::kPdfSemNome, ZEL_RECUSADO, "o nome do PDF não serve: {dado}"},
    {Motivo::kPdfSemDocumento, ZEL_RECUSADO, "o retorno não traz o documento, DocXMLBase64, e CONFIGURACAO\\SalvarXMLPDF é 1"},
    {Motivo::kPdfOrigem, ZEL_RECUSADO, "a origem do PDF não é conhecida: {dado}"},
    {Motivo::kNaoAutorizado, ZEL_FALHA_IMPRESSAO, "SitCodigo do retorno: {dado}; um PDF só se faz de documento autorizado, 100 ou 150"},
    {Motivo::kPdfNaoDesenhado, ZEL_FALHA_PDF, "o PDF não pôde ser desenhado; veja se falta memória"},
    {Motivo::kPdfNaoMontado, ZEL_FALHA_GRAVACAO_PDF, "o PDF não pôde ser montado; veja se falta memória"},
    {Motivo::kPdfNaoGravado, ZEL_FALHA_GRAVACAO_PDF, "{falha}"},
}};
// clang-format on

constexpr const LinhaMotivo &linhaDo(Motivo motivo) {
    return kMotivos[static_cast<std::size_t>(motivo)];
}

constexpr bool todosTemLinha() {
    for (std::size_t i = 0; i < kMotivos.size(); ++i)
        if (static_cast<std::size_t>(kMotivos[i].motivo) != i || kMotivos[i].texto.empty() ||
            kMotivos[i].codigo > 0)
            return false;
    return true;
}
static_assert(todosTemLinha(), "every reason has its row, with a text and a refusing code");

} // namespace zel
