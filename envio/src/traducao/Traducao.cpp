// SPDX-License-Identifier: MIT
#include "traducao/Traducao.h"

#include "base/Texto.h"
#include "traducao/Chave.h"
#include "traducao/Forma.h"
#include "traducao/Motor.h"
#include "traducao/Tabela.h"

namespace zel::envio {

namespace {

constexpr std::string_view kVersaoAntiga = "3.10", kVersao = "4.00";

} // namespace

std::optional<Documento> traduzirNfce(const No &nfe, const Configuracao &config, Recusas &recusas,
                                      const ContextoNota &nota) {
    Recusas daqui;
    const No antiga = nfe.filho("infNFe");
    if (!antiga || antiga.atributo("versao") != kVersaoAntiga) {
        recusas.juntar("infNFe/@versao", antiga.atributo("versao"),
                       "não é uma NFC-e do caixa, que tem o leiaute 3.10");
        return {};
    }
    conferirForma(nfe, daqui);
    const std::string chave = conferirChave(antiga, daqui);
    Documento documento = Documento::novo("NFe", kEspacoNfe);
    No nova = documento.raiz().acrescentar("infNFe");
    nova.definirAtributo("versao", kVersao);
    nova.definirAtributo("Id", "NFe" + chave);
    const auto pagamentos = antiga.filhos("pag");
    Contexto contexto{antiga,
                      nova,
                      pagamentos.empty() ? No() : pagamentos.back(),
                      config,
                      nota,
                      daqui,
                      chave,
                      regimeIbsCbs(config, aparar(antiga.texto("emit/CRT")),
                                   aparar(antiga.texto("ide/tpAmb")),
                                   aparar(antiga.texto("ide/dhEmi")).substr(0, 10), daqui)};
    escrever({contexto, nullptr, nullptr, antiga, nova}, tabelaInfNFe());
    recusarAlheios({contexto, nullptr, nullptr, antiga, nova}, tabelaInfNFe());
    if (daqui.nenhuma()) return documento;
    recusas.juntar(daqui);
    return {};
}

} // namespace zel::envio
