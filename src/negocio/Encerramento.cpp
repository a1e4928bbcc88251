// SPDX-License-Identifier: MIT
#include "negocio/Encerramento.h"

#include "config/Registro.h"
#include "emcurso/ArquivoPersistencia.h"
#include "emcurso/ZEL_Controle.h"
#include "emissao/Cabecalho.h"
#include "emissao/Montagem.h"
#include "imposto/Somas.h"
#include "negocio/Transporte.h"
#include "recusa/Recusa.h"
#include "secao/Conformidade.h"
#include "secao/Secao.h"
#include "texto/Marcacao.h"
#include "texto/Numero.h"
#include "texto/Texto.h"
#include "texto/TextoXml.h"
#include "zel_felbor/codigos.h"

#include <algorithm>
#include <initializer_list>
#include <span>
#include <string>
#include <utility>

namespace zel {

namespace {

constexpr std::size_t kMaiorMensagem = kMaiorInfCpl;

// A closing message as it is stored: trimmed, its printer marks in square brackets.
std::string mensagem(std::string_view texto) {
    const std::string simples = textoSimples(texto, FimDeLinha::kMantido).substr(0, kMaiorMensagem);
    return escaparXml(fnRetornarFormatado2Representantes(trim(simples)));
}

// ZEL_OK, or ZEL_CONSUMIDOR_OBRIGATORIO: above the configured value the consumer must be identified
// by one of the elements.
int verificarConsumidor(const ST_PersitenceXML_ZEL &documento,
                        std::initializer_list<std::string_view> aceitos) {
    const double limite = lerDecimal(valorConfig(R"(CONFIGURACAO\ValorMaxIdeCliente)"_chave));
    const double total = lerDecimal(totalDoCupom(documento));
    if (total <= limite) return ZEL_OK;
    const auto &abertura = documento.abertura;
    const ST_tagZEL *dest = abertura ? abertura->getSubTag(0) : nullptr;
    const bool identificado =
        dest != nullptr && std::any_of(aceitos.begin(), aceitos.end(), [&](std::string_view nome) {
            return dest->getSubTag(nome) != nullptr;
        });
    if (identificado) return ZEL_OK;
    const std::string_view qual = aceitos.size() == 1 ? "CPF" : "CPF, CNPJ ou idEstrangeiro";
    return recusar(Motivo::kConsumidorObrigatorio,
                   {.campo = qual, .quantia = total, .limite = limite});
}

int podeEncerrar() {
    if (const int resultado = fnXML_CarregarXML_ZEL(); resultado != ZEL_OK) return resultado;
    return fnVerificarSePosso_ZEL(Operacao::kEncerrar);
}

// The closing section: `infAdic` with the texts that are not empty; an empty section without any.
ST_tagZEL montarEncerramento(std::string_view infAdFisco, std::string_view infCpl) {
    ST_tagZEL encerramento = newST_tagZEL(false, nomeSecao(Secao::kEncerramento));
    ST_tagZEL infAdic("infAdic");
    if (!infAdFisco.empty()) infAdic.addSubTag("infAdFisco", infAdFisco);
    if (!infCpl.empty()) infAdic.addSubTag("infCpl", infCpl);
    if (infAdic.subTags) encerramento.addSubTag(std::move(infAdic));
    return encerramento;
}

} // namespace

int fnCFEncerrar_ZEL_Felbor(ST_PersitenceXML_ZEL &documento, std::string_view infoConsumidor) {
    if (const int resultado = podeEncerrar(); resultado != ZEL_OK) return resultado;
    if (!documento.temListaDeVendas()) return recusarSemDocumento();
    if (const int resultado = verificarConsumidor(documento, {"CPF", "idEstrangeiro", "CNPJ"});
        resultado != ZEL_OK)
        return resultado;
    return fnCFeEncerrarTAG_ZEL(documento, montarEncerramento("", mensagem(infoConsumidor)));
}

int fnCFEncerrarConfigMsg_ZEL_Felbor(ST_PersitenceXML_ZEL &documento,
                                     std::string_view infoConsumidor, std::string_view infoFisco) {
    if (const int resultado = podeEncerrar(); resultado != ZEL_OK) return resultado;
    if (const int resultado = verificarConsumidor(documento, {"CPF"}); resultado != ZEL_OK)
        return resultado;
    const std::string consumidor = mensagem(infoConsumidor);
    const std::string fisco = mensagem(infoFisco);
    const bool ambas = !consumidor.empty() && !fisco.empty();
    return fnCFeEncerrarTAG_ZEL(documento, ambas ? montarEncerramento(fisco, consumidor)
                                                 : montarEncerramento("", ""));
}

int fnCFeEncerrarTAG_ZEL(ST_PersitenceXML_ZEL &documento, ST_tagZEL encerramento) {
    // A document that could not be read would be refused, and a number lost.
    if (!estruturaLida()) return arquivoIndisponivel();
    if (encerramento.subTags) {
        const int resultado = verificarSecao(Secao::kEncerramento, encerramento);
        if (resultado != ZEL_OK) return resultado;
    }
    // Assembling nothing is refused as well, but only after it used up a number.
    if (!documento.temListaDeVendas()) return recusar(Motivo::kEncerrarSemItens);
    return desfazendoNaFalha(documento.transporte, [&] {
        if (!documento.transporte) {
            const int resultado = adicionarTransporte(documento, semTransporte());
            if (resultado != ZEL_OK) return resultado;
        }
        return desfazendoNaFalha(documento.encerramento, [&] {
            documento.fnAdicionarTagZEL(Secao::kEncerramento, std::move(encerramento));
            const Alteracao estado = alteracaoEstado(kEncerrado);
            std::string emitido;
            return fnXMLFormatado_ZEL(documento, kNormal, emitido,
                                      {.alteracoes = {&estado, 1}, .estrutura = &documento});
        });
    });
}

} // namespace zel
