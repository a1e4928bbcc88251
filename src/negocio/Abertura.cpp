// SPDX-License-Identifier: MIT
#include "negocio/Abertura.h"

#include "ZEL_FelborFramework.h"
#include "config/Registro.h"
#include "documento/ZEL_ArquivoPersistencia.h"
#include "documento/ZEL_Conformidade.h"
#include "documento/ZEL_Controle.h"
#include "documento/ZEL_Limites.h"
#include "documento/ZEL_Persistencia.h"
#include "negocio/Argumento.h"
#include "util/Gravacao.h"
#include "util/Numero.h"
#include "util/Texto.h"

#include <array>
#include <utility>
#include <vector>

namespace zel {

namespace {

constexpr std::size_t kMaiorEmail = 59; // one less than the other fields

// The digits of the document; none when it does not fit its field.
std::string digitosDoDocumento(std::string_view documento) {
    return fnRetirarCaracter(argumentoAceito(documento, 1, kMaiorEstrangeiro));
}

// The element that identifies a consumer at the opening; empty for none.
std::string_view identificacaoNaAbertura(std::size_t digitos) {
    if (digitos == 11) return "CPF";
    if (digitos == 14) return "CNPJ";
    return digitos >= 5 && digitos <= kMaiorEstrangeiro ? "idEstrangeiro" : "";
}

// The address group, without children when no street was accepted. ZEL_OK, or ZEL_RECUSADO when the
// street lacks the rest of its address.
int montarEndereco(const DadosConsumidor &consumidor, ST_tagZEL &endereco) {
    const std::string logradouro = argumentoAceito(consumidor.logradouro, 2, kMaiorTexto);
    if (logradouro.empty()) return ZEL_OK;
    const std::array<std::pair<std::string_view, std::string>, 6> partes{{
        {"xLgr", logradouro},
        {"nro", argumentoAceito(consumidor.numero, 1, kMaiorTexto)},
        {"xBairro", argumentoAceito(consumidor.bairro, 1, kMaiorTexto)},
        {"cMun", argumentoAceito(consumidor.codigoMunicipio, kDigitosMunicipio, kDigitosMunicipio)},
        {"xMun", argumentoAceito(consumidor.municipio, 1, kMaiorTexto)},
        {"UF", argumentoAceito(consumidor.uf, kLetrasUf, kLetrasUf)},
    }};
    for (const auto &[nome, valor] : partes) {
        if (valor.empty()) return ZEL_RECUSADO;
        addSeAceito(endereco, nome, valor);
    }
    addSeAceito(endereco, "CEP", argumentoAceito(consumidor.cep, 1, kDigitosCep));
    return ZEL_OK;
}

// Fills the opening section; it stays empty when the consumer is not identified. ZEL_OK or
// ZEL_RECUSADO.
int montarAbertura(const DadosConsumidor &consumidor, std::string_view identificacao,
                   std::string_view email, ST_tagZEL &abertura) {
    ST_tagZEL endereco("enderDest");
    if (montarEndereco(consumidor, endereco) != ZEL_OK) return ZEL_RECUSADO;
    if (identificacao.empty()) return ZEL_OK;
    ST_tagZEL dest("dest");
    addSeAceito(dest, identificacao, digitosDoDocumento(consumidor.documento));
    addSeAceito(dest, "xNome", argumentoAceito(consumidor.nome, 1, kMaiorTexto));
    if (endereco.subTags) dest.addSubTag(std::move(endereco));
    dest.addSubTag("indIEDest", "9");
    addSeAceito(dest, "email", argumentoAceito(email, 1, kMaiorEmail));
    abertura.addSubTag(std::move(dest));
    return ZEL_OK;
}

// An empty section has nothing to check.
int verificarAbertura(ST_tagZEL &abertura) {
    return abertura.subTags ? fnVerificarTAG_ZEL(Secao::kAbertura, abertura) : int{ZEL_OK};
}

int abrir(const DadosConsumidor &consumidor, std::span<const Alteracao> alteracoes) {
    const std::size_t digitos = digitosDoDocumento(consumidor.documento).size();
    ST_tagZEL abertura = newST_tagZEL(false, nomeSecao(Secao::kAbertura));
    if (montarAbertura(consumidor, identificacaoNaAbertura(digitos), "", abertura) != ZEL_OK)
        return ZEL_RECUSADO;
    return fnCFeAbrirTAG_ZEL(std::move(abertura), alteracoes);
}

} // namespace

int fnCFAbrir_ZEL_Felbor(const DadosConsumidor &consumidor) {
    if (const int resultado = fnXML_CarregarXML_ZEL(); resultado != ZEL_OK) return resultado;
    return abrir(consumidor, {});
}

int fnCFAbrirNumSerie_ZEL_Felbor(int numero, int serie, const DadosConsumidor &consumidor) {
    if (const int resultado = fnXML_CarregarXML_ZEL(); resultado != ZEL_OK) return resultado;
    if (const int resultado = fnVerificarSePosso_ZEL(Operacao::kAbrir); resultado != ZEL_OK)
        return resultado;
    const std::array<Alteracao, 2> numeracao{{{R"(IDE\nNF)"_chave, formatarInteiro(numero)},
                                              {R"(IDE\Serie)"_chave, formatarInteiro(serie)}}};
    const int aberto = abrir(consumidor, numeracao);
    if (aberto == ZEL_OK || aberto == ZEL_ARQUIVO_INDISPONIVEL) return aberto;
    // They stay, whatever the consumer's data are refused for.
    const int guardado = alterarConfig(numeracao);
    return guardado == ZEL_OK ? aberto : guardado;
}

int fnCFIdentificarConsumidor_ZEL_Felbor(const DadosConsumidor &consumidor,
                                         std::string_view email) {
    if (const int resultado = fnXML_CarregarXML_ZEL(); resultado != ZEL_OK) return resultado;
    if (!G_stXML_Persistencia.temListaDeVendas()) return ZEL_ARQUIVO_INDISPONIVEL;
    const std::size_t digitos = digitosDoDocumento(consumidor.documento).size();
    ST_tagZEL abertura = newST_tagZEL(false, nomeSecao(Secao::kAbertura));
    if (montarAbertura(consumidor, cpfOuCnpj(digitos), email, abertura) != ZEL_OK)
        return ZEL_RECUSADO;
    return fnCFIdentificarConsumidorTAG_ZEL(std::move(abertura));
}

int fnCFeAbrirTAG_ZEL(ST_tagZEL abertura, std::span<const Alteracao> alteracoes) {
    if (const int resultado = fnVerificarSePosso_ZEL(Operacao::kAbrir); resultado != ZEL_OK)
        return resultado;
    if (const int resultado = verificarAbertura(abertura); resultado != ZEL_OK) return resultado;

    ST_PersitenceXML_ZEL anterior = std::exchange(G_stXML_Persistencia, {});
    std::vector<Alteracao> todas(alteracoes.begin(), alteracoes.end());
    todas.push_back(alteracaoEstado(kAberto));
    aliviarDiario(); // between two receipts nobody waits
    return ouDesfaz(
        [&] {
            G_stXML_Persistencia.fnAdicionarTagZEL(Secao::kAbertura, std::move(abertura));
            return fnPersistEstrutura_ZEL(todas);
        },
        [&] { G_stXML_Persistencia = std::move(anterior); });
}

int fnCFIdentificarConsumidorTAG_ZEL(ST_tagZEL abertura) {
    if (const int resultado = verificarAbertura(abertura); resultado != ZEL_OK) return resultado;
    return desfazendoNaFalha(G_stXML_Persistencia.abertura, [&] {
        G_stXML_Persistencia.fnAdicionarTagZEL(Secao::kAbertura, std::move(abertura));
        return fnPersistEstrutura_ZEL();
    });
}

} // namespace zel
