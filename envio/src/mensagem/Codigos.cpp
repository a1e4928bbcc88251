// SPDX-License-Identifier: MIT
// Codes of the authority's answers and what a shop does about them. A code without a remedy says
// enough with its own text.
#include "mensagem/Resposta.h"

#include <algorithm>
#include <array>

namespace zel::envio {

namespace {

using enum Desfecho;

constexpr std::string_view kPeloContador =
    "confira com o contador a situação da empresa no cadastro da SEFAZ";
constexpr std::string_view kRenovar =
    "confira o certificado: validade, empresa e cadeia; se venceu ou foi revogado, instale um novo";
constexpr std::string_view kEspereSefaz = "nada a fazer: o envio é tentado de novo sozinho";
constexpr std::string_view kCadastroEmitente =
    "acerte os dados da empresa na configuração do caixa";
constexpr std::string_view kCadastroConsumidor =
    "confira com o consumidor o documento informado e emita de novo";
constexpr std::string_view kNumeroGasto =
    "não imprima: o número está gasto, não se cancela nem se inutiliza; chame o contador";
constexpr std::string_view kDeOutraNota =
    "o número é de outra nota: se é a mesma venda, vale aquela; se não, venda com outro número";
constexpr std::string_view kSemPrazo =
    "a nota continua valendo: combine com o contador a devolução ou o estorno";
constexpr std::string_view kSuporte = "chame o suporte do sistema: a mensagem saiu fora do leiaute";
constexpr std::string_view kRelogio = "acerte o relógio do caixa e emita de novo";
constexpr std::string_view kCsc =
    "confira em zel-envio.toml, seção [qrcode], id_csc e csc com os do portal da SEFAZ";
constexpr std::string_view kTotais =
    "um valor da nota não fecha com os outros: confira preço, desconto e acréscimo e emita de novo";
constexpr std::string_view kPagamentos =
    "confira os valores dos pagamentos e o troco e emita de novo";
constexpr std::string_view kGtin = "corrija o código de barras (GTIN) do produto e venda de novo";
constexpr std::string_view kNcm = "corrija o NCM do produto (8 dígitos) e venda de novo";
constexpr std::string_view kAmbiente =
    "confira o ambiente (produção ou homologação) do caixa e os endereços em zel-envio.toml";
constexpr std::string_view kEstado =
    "confira em zel-envio.toml o estado e os endereços dos serviços";

// In the order of their numbers. Sources: Manual de Orientação do Contribuinte 7.0, Anexo I,
// "Tabela de códigos de erros e descrições de mensagens de erros"; 110112 and its rules, Nota
// Técnica 2018.004; 462 to 464, Manual de Especificações Técnicas do DANFE NFC-e e QR Code; 865 to
// 869, Nota Técnica 2016.002; 883 and 884, Nota Técnica 2017.001.
constexpr LinhaResposta kTabela[] = {
    {100, kAutorizado, ""},
    {101, kCancelado, ""},
    {102, kInutilizado, ""},
    {103, kEmProcesso, kEspereSefaz},
    {105, kEmProcesso, kEspereSefaz},
    {106, kEmProcesso, "nada a fazer: a nota é consultada pela chave"},
    {107, kNenhum, ""}, // the service is up: an answer about no document
    {108, kEsperar, kEspereSefaz},
    {109, kEsperar, kEspereSefaz},
    {110, kDenegado, kNumeroGasto},
    {135, kCancelado, ""},
    {136, kCancelado, ""},
    {150, kAutorizado, ""},
    {151, kCancelado, ""},
    {155, kCancelado, ""},
    {201, kRecusado, "peça a inutilização em faixas menores"},
    {202, kCertificado, kRenovar},
    {203, kCertificado,
     "a empresa não está habilitada a emitir NFC-e: peça o credenciamento na SEFAZ"},
    {204, kJaEsta, "nada a fazer: a nota é consultada pela chave"},
    {205, kDenegado, kNumeroGasto},
    {206, kJaInutilizado, "o número foi inutilizado: venda de novo, com outro número"},
    {207, kRecusado, kCadastroEmitente},
    {208, kRecusado, kCadastroConsumidor},
    {209, kRecusado, kCadastroEmitente},
    {210, kRecusado, kCadastroConsumidor},
    {212, kRecusado, kRelogio},
    {213, kCertificado, "o certificado é de outra empresa: instale o da empresa que emite"},
    {214, kRecusado, "a nota é grande demais: divida a venda em duas"},
    {215, kRecusado, kSuporte},
    {217, kNaoConsta, ""},
    {218, kJaCancelado, ""},
    {220, kTarde, kSemPrazo},
    {222, kRecusado, "o protocolo informado não é o da nota: consulte a nota e peça de novo"},
    {225, kRecusado, "corrija o cadastro ou a configuração que a descrição cita e emita de novo"},
    {226, kRecusado, kEstado},
    {228, kRecusado, kRelogio},
    {230, kRecusado, kCadastroEmitente},
    {231, kRecusado, kCadastroEmitente},
    {233, kRecusado, kCadastroConsumidor},
    {234, kRecusado, kCadastroConsumidor},
    {236, kRecusado, kSuporte},
    {237, kRecusado, kCadastroConsumidor},
    {239, kRecusado, kSuporte},
    {240, kRecusado, kPeloContador},
    {241, kRecusado, "um número da faixa tem nota na SEFAZ: consulte-a e peça a faixa sem ele"},
    {242, kRecusado, kSuporte},
    {243, kRecusado, kSuporte},
    {244, kCertificado, "o certificado é de outra empresa: instale o da empresa que emite"},
    {245, kRecusado, kPeloContador},
    {246, kRecusado, kCadastroConsumidor},
    {249, kRecusado, kEstado},
    {250, kRecusado, kEstado},
    {252, kRecusado, kAmbiente},
    {253, kRecusado, kSuporte},
    {256, kJaInutilizado, ""},
    {257, kCertificado,
     "a empresa não está habilitada a emitir NFC-e: peça o credenciamento na SEFAZ"},
    {280, kCertificado, kRenovar},
    {281, kCertificado, kRenovar},
    {282, kCertificado, kRenovar},
    {283, kCertificado, kRenovar},
    {284, kCertificado, kRenovar},
    {285, kCertificado, kRenovar},
    {286, kCertificado, kRenovar},
    {290, kCertificado, kRenovar},
    {291, kCertificado, kRenovar},
    {292, kCertificado, kRenovar},
    {293, kCertificado, kRenovar},
    {294, kCertificado, kRenovar},
    {295, kCertificado, kRenovar},
    {296, kCertificado, kRenovar},
    {297, kRecusado, kSuporte},
    {298, kRecusado, kSuporte},
    {301, kDenegado, kNumeroGasto},
    {302, kDenegado, kNumeroGasto},
    {303, kDenegado, kNumeroGasto},
    {373, kRecusado, "em homologação o primeiro item leva a descrição exigida: confira o ambiente"},
    {395, kRecusado, kEstado},
    {397, kRecusado, kSuporte},
    {402, kRecusado, kSuporte},
    {404, kRecusado, kSuporte},
    {420, kJaCancelado, ""},
    {452, kRecusado, kSuporte},
    {462, kRecusado, kCsc},
    {463, kRecusado, kCsc},
    {464, kRecusado, kCsc},
    {494, kNaoConsta, ""},
    {501, kTarde, kSemPrazo},
    {502, kRecusado, kSuporte},
    {516, kRecusado, kSuporte},
    {532, kRecusado, kTotais},
    {535, kRecusado, kTotais},
    {539, kOutraChave, kDeOutraNota},
    {556, kRecusado, "acerte IDE\\tpEmis do caixa para 9 antes de emitir em contingência"},
    {562, kOutraChave, kDeOutraNota},
    {563, kJaInutilizado, ""},
    {564, kRecusado, kTotais},
    {573, kJaEsta, "nada a fazer: o evento já foi registrado, e a nota é consultada"},
    {577, kRecusado, kRelogio},
    {578, kRecusado, kRelogio},
    {579, kRecusado, kRelogio},
    {580, kRecusado, "só se cancela uma nota autorizada: consulte a nota"},
    {587, kRecusado, kSuporte},
    {588, kRecusado, kSuporte},
    {598, kRecusado, "em homologação o consumidor leva o nome exigido: confira o ambiente"},
    {610, kRecusado, kTotais},
    {611, kRecusado, kGtin},
    {612, kRecusado, kGtin},
    {656, kExcesso, "consultas demais: espere uma hora; o envio continua sozinho depois"},
    {703, kTarde, "acerte o relógio do caixa, que está adiantado, e emita de novo"},
    {704, kTarde, "emita de novo, com a hora de agora; confira o relógio do caixa"},
    {712, kRecusado, "o estado não aceita a contingência offline: emita com conexão"},
    {767, kRecusado, kPagamentos},
    {770, kTarde, kSemPrazo},
    {777, kRecusado, kNcm},
    {778, kRecusado, kNcm},
    {865, kRecusado, kPagamentos},
    {866, kRecusado, kPagamentos},
    {869, kRecusado, kPagamentos},
    {883, kRecusado, kGtin},
    {884, kRecusado, kGtin},
    {897, kRecusado, kSuporte},
    {999, kEsperar, kEspereSefaz},
};

constexpr bool menor(const LinhaResposta &linha, int cStat) {
    return linha.cStat < cStat;
}

constexpr bool emOrdem() {
    return std::adjacent_find(std::begin(kTabela), std::end(kTabela),
                              [](const LinhaResposta &a, const LinhaResposta &b) {
                                  return a.cStat >= b.cStat;
                              }) == std::end(kTabela);
}
static_assert(emOrdem());

constexpr LinhaResposta kOutra{0, kRecusado,
                               "corrija o que a descrição da SEFAZ diz e emita de novo"};

// In the order of Desfecho.
constexpr std::array<std::string_view, 16> kNomes{
    "sem resposta", "autorizado",    "cancelado",   "inutilizado",
    "em processo",  "já está lá",    "outra chave", "já inutilizado",
    "já cancelado", "denegado",      "não consta",  "serviço parado",
    "excesso",      "fora do prazo", "certificado", "recusado"};

} // namespace

const LinhaResposta &linhaDe(int cStat) {
    const auto *linha = std::lower_bound(std::begin(kTabela), std::end(kTabela), cStat, menor);
    return linha != std::end(kTabela) && linha->cStat == cStat ? *linha : kOutra;
}

std::string_view nomeDe(Desfecho desfecho) {
    return kNomes[static_cast<std::size_t>(desfecho)];
}

} // namespace zel::envio
