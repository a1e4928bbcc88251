// SPDX-License-Identifier: MIT
// Whatever file the sending side finds in the till's directory, read and translated. The first byte
// chooses what is configured.
#include "Alvo.h"

#include "documento/Leitura.h"
#include "traducao/Pedidos.h"
#include "traducao/Traducao.h"

#include <array>

using namespace zel::envio;

namespace {

constexpr std::array<std::string_view, 3> kConfiguracoes{
    "", "cUF = \"43\"\n[ibs_cbs]\ndesde = \"nunca\"\n",
    R"(cUF = "35"
[responsavel_tecnico]
CNPJ = "11222333000181"
xContato = "Ana"
email = "ana@exemplo.com.br"
fone = "5133334444"
[pagamentos]
"Outros" = { tPag = "17", tpIntegra = "2" }
[padrao]
CEST = "1704700"
pST = "18.00"
vICMSSubstituto = "0.50"
pFCP = "2.00"
indISS = "1"
indIncentivo = "2"
[ibs_cbs]
desde = "2024-01-01"
[[ibs_cbs.taxas]]
desde = "2024-01-01"
pIBSUF = "0.1000"
pIBSMun = "0.0000"
pCBS = "0.9000"
)"};

const std::array<Configuracao, kConfiguracoes.size()> &configuracoes() {
    static const auto lidas = [] {
        std::array<Configuracao, kConfiguracoes.size()> todas;
        for (std::size_t i = 0; i < todas.size(); ++i) {
            Recusas recusas;
            auto lida = Configuracao::ler(kConfiguracoes.at(i), "", recusas);
            exigir(lida.has_value());
            todas.at(i) = std::move(*lida);
        }
        return todas;
    }();
    return lidas;
}

std::optional<Documento> traduzir(const Lido &lido, const Configuracao &config, Recusas &recusas) {
    if (lido.tipo == Tipo::kNfce) return traduzirNfce(lido.principal(), config, recusas, {150});
    return traduzirPedido(lido.principal(), config, {"143260000000001", "", "2026-11-25", "1"},
                          recusas);
}

} // namespace

// Refused with a reason, or a message that reads the same again; the till's key is in it.
void jogar(std::string_view bytes) {
    const auto qual = static_cast<std::size_t>(tirarNumero(bytes, kConfiguracoes.size()));
    Recusas recusas;
    const auto lido = lerArquivoDoCaixa(bytes, recusas);
    exigir(lido.has_value() == recusas.nenhuma());
    if (!lido || !lido->doCaixa) return;
    const std::string antes = lido->documento.texto();
    const auto mensagem = traduzir(*lido, configuracoes().at(qual), recusas);
    exigir(mensagem.has_value() == recusas.nenhuma());
    exigir(lido->documento.texto() == antes);
    if (!mensagem) return;
    std::string motivo;
    const auto outraVez = Documento::ler(mensagem->texto(), motivo);
    exigir(outraVez && outraVez->texto() == mensagem->texto());
    if (lido->tipo == Tipo::kNfce)
        exigir(mensagem->raiz().filho("infNFe").atributo("Id") ==
               lido->principal().filho("infNFe").atributo("Id"));
}
