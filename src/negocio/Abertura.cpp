// SPDX-License-Identifier: MIT
#include "negocio/Abertura.h"

#include "config/Registro.h"
#include "diario/Gravacao.h"
#include "emcurso/ArquivoPersistencia.h"
#include "emcurso/ZEL_Controle.h"
#include "negocio/Argumento.h"
#include "recusa/Recusa.h"
#include "secao/Conformidade.h"
#include "secao/Secao.h"
#include "texto/Numero.h"
#include "texto/Texto.h"
#include "zel_felbor/codigos.h"

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
    struct Parte {
        Argumento argumento;
        std::string_view elemento;
        std::size_t minimo, maximo;
    };
    const std::array<Parte, 5> partes{{
        {{"numero", consumidor.numero}, "nro", 1, kMaiorTexto},
        {{"bairro", consumidor.bairro}, "xBairro", 1, kMaiorTexto},
        {{"codigoMunicipio", consumidor.codigoMunicipio},
         "cMun",
         kDigitosMunicipio,
         kDigitosMunicipio},
        {{"municipio", consumidor.municipio}, "xMun", 1, kMaiorTexto},
        {{"uf", consumidor.uf}, "UF", kLetrasUf, kLetrasUf},
    }};
    juntarSeAceito(endereco, "xLgr", logradouro);
    for (const auto &[argumento, elemento, minimo, maximo] : partes) {
        const std::string valor = argumentoAceito(argumento.texto, minimo, maximo);
        if (valor.empty())
            return recusar(Motivo::kLogradouroSemParte, {.campo = argumento.nome,
                                                         .dado = argumento.texto,
                                                         .minimo = static_cast<int>(minimo),
                                                         .maximo = static_cast<int>(maximo)});
        juntarSeAceito(endereco, elemento, valor);
    }
    juntarSeAceito(endereco, "CEP", argumentoAceito(consumidor.cep, 1, kDigitosCep));
    return ZEL_OK;
}

// Fills the opening section; it stays empty when the consumer is not identified. ZEL_OK or
// ZEL_RECUSADO.
int montarAbertura(const DadosConsumidor &consumidor, std::string_view identificacao,
                   std::string_view email, ST_tagZEL &abertura) {
    ST_tagZEL endereco("enderDest");
    if (const int montado = montarEndereco(consumidor, endereco); montado != ZEL_OK) return montado;
    if (identificacao.empty()) return ZEL_OK;
    ST_tagZEL dest("dest");
    juntarSeAceito(dest, identificacao, digitosDoDocumento(consumidor.documento));
    juntarSeAceito(dest, "xNome", argumentoAceito(consumidor.nome, 1, kMaiorTexto));
    if (endereco.subTags) dest.addSubTag(std::move(endereco));
    dest.addSubTag("indIEDest", "9");
    juntarSeAceito(dest, "email", argumentoAceito(email, 1, kMaiorEmail));
    abertura.addSubTag(std::move(dest));
    return ZEL_OK;
}

// An empty section has nothing to check.
int verificarAbertura(ST_tagZEL &abertura) {
    return abertura.subTags ? verificarSecao(Secao::kAbertura, abertura) : int{ZEL_OK};
}

int abrir(ST_PersitenceXML_ZEL &documento, const DadosConsumidor &consumidor,
          std::span<const Alteracao> alteracoes) {
    const std::size_t digitos = digitosDoDocumento(consumidor.documento).size();
    ST_tagZEL abertura = newST_tagZEL(false, nomeSecao(Secao::kAbertura));
    if (const int montada =
            montarAbertura(consumidor, identificacaoNaAbertura(digitos), "", abertura);
        montada != ZEL_OK)
        return montada;
    return fnCFeAbrirTAG_ZEL(documento, std::move(abertura), alteracoes);
}

} // namespace

int fnCFAbrir_ZEL_Felbor(ST_PersitenceXML_ZEL &documento, const DadosConsumidor &consumidor) {
    if (const int resultado = fnXML_CarregarXML_ZEL(); resultado != ZEL_OK) return resultado;
    return abrir(documento, consumidor, {});
}

int fnCFAbrirNumSerie_ZEL_Felbor(ST_PersitenceXML_ZEL &documento, int numero, int serie,
                                 const DadosConsumidor &consumidor) {
    if (const int resultado = fnXML_CarregarXML_ZEL(); resultado != ZEL_OK) return resultado;
    if (const int resultado = fnVerificarSePosso_ZEL(Operacao::kAbrir); resultado != ZEL_OK)
        return resultado;
    const std::array<Alteracao, 2> numeracao{{{R"(IDE\nNF)"_chave, formatarInteiro(numero)},
                                              {R"(IDE\Serie)"_chave, formatarInteiro(serie)}}};
    const int aberto = abrir(documento, consumidor, numeracao);
    if (aberto == ZEL_OK || aberto == ZEL_ARQUIVO_INDISPONIVEL) return aberto;
    // They stay, whatever the consumer's data are refused for.
    const int guardado = alterarConfig(numeracao);
    return guardado == ZEL_OK ? aberto : guardado;
}

int fnCFIdentificarConsumidor_ZEL_Felbor(ST_PersitenceXML_ZEL &documento,
                                         const DadosConsumidor &consumidor,
                                         std::string_view email) {
    if (const int resultado = fnXML_CarregarXML_ZEL(); resultado != ZEL_OK) return resultado;
    if (!documento.temListaDeVendas()) return recusarSemDocumento();
    const std::size_t digitos = digitosDoDocumento(consumidor.documento).size();
    ST_tagZEL abertura = newST_tagZEL(false, nomeSecao(Secao::kAbertura));
    if (const int montada = montarAbertura(consumidor, cpfOuCnpj(digitos), email, abertura);
        montada != ZEL_OK)
        return montada;
    return fnCFIdentificarConsumidorTAG_ZEL(documento, std::move(abertura));
}

int fnCFeAbrirTAG_ZEL(ST_PersitenceXML_ZEL &documento, ST_tagZEL abertura,
                      std::span<const Alteracao> alteracoes) {
    if (const int resultado = fnVerificarSePosso_ZEL(Operacao::kAbrir); resultado != ZEL_OK)
        return resultado;
    if (const int resultado = verificarAbertura(abertura); resultado != ZEL_OK) return resultado;

    std::vector<Alteracao> todas(alteracoes.begin(), alteracoes.end());
    todas.push_back(alteracaoEstado(kAberto));
    aliviarDiario(); // between two receipts nobody waits
    ST_PersitenceXML_ZEL anterior = std::exchange(documento, {});
    return ouDesfaz(
        [&] {
            documento.fnAdicionarTagZEL(Secao::kAbertura, std::move(abertura));
            return fnPersistEstrutura_ZEL(documento, todas);
        },
        [&] { documento = std::move(anterior); });
}

int fnCFIdentificarConsumidorTAG_ZEL(ST_PersitenceXML_ZEL &documento, ST_tagZEL abertura) {
    if (const int resultado = verificarAbertura(abertura); resultado != ZEL_OK) return resultado;
    return desfazendoNaFalha(documento.abertura, [&] {
        documento.fnAdicionarTagZEL(Secao::kAbertura, std::move(abertura));
        return fnPersistEstrutura_ZEL(documento);
    });
}

} // namespace zel
