// SPDX-License-Identifier: MIT
#include "negocio/Transporte.h"

#include "config/Registro.h"
#include "emcurso/ArquivoPersistencia.h"
#include "emcurso/ZEL_Controle.h"
#include "negocio/Argumento.h"
#include "recusa/Recusa.h"
#include "secao/Conformidade.h"
#include "secao/Secao.h"
#include "texto/Texto.h"
#include "zel_felbor/codigos.h"

namespace zel {

namespace {

constexpr std::size_t kMaiorDocumento = 14;

ST_tagZEL montarTransporte(const DadosTransportadora &dados) {
    ST_tagZEL transporta("transporta");
    const std::string documento = argumentoAceito(dados.documento, 1, kMaiorDocumento);
    // Decided by the text as given, so that a CPF with points and dash (14) is taken for a CNPJ.
    if (const std::string_view nome = cpfOuCnpj(documento.size()); !nome.empty())
        transporta.addSubTag(nome, fnRetirarCaracter(documento));
    juntarSeAceito(transporta, "xNome", argumentoAceito(dados.nome, 1, kMaiorTexto));
    juntarSeAceito(transporta, "IE", argumentoAceito(dados.inscricaoEstadual, 2, 2));
    juntarSeAceito(transporta, "xEnder", argumentoAceito(dados.endereco, 1, kMaiorTexto));
    juntarSeAceito(transporta, "xMun", argumentoAceito(dados.municipio, 1, kMaiorTexto));
    juntarSeAceito(transporta, "UF", argumentoAceito(dados.uf, kLetrasUf, kLetrasUf));
    ST_tagZEL transp = semTransporte();
    transp.addSubTag(std::move(transporta));
    return transp;
}

} // namespace

int fnCFIdentificarTransportadora_ZEL_Felbor(ST_PersitenceXML_ZEL &documento,
                                             const DadosTransportadora &transportadora) {
    if (fnCFVerificarStatus_ZEL() > kPagamento)
        return recusarNoEstado(Motivo::kTransporteForaDoEstado);
    const std::string_view presenca = valorConfig(R"(IDE\indPres)"_chave);
    if (presenca != "4") return recusar(Motivo::kTransporteSemEntrega, {.dado = presenca});
    if (const int resultado = fnXML_CarregarXML_ZEL(); resultado != ZEL_OK) return resultado;
    if (!documento.temListaDeVendas()) return recusarSemDocumento();
    return fnCFIdentificarTransportadoraTAG_ZEL(documento, montarTransporte(transportadora));
}

int fnCFIdentificarTransportadoraTAG_ZEL(ST_PersitenceXML_ZEL &documento, ST_tagZEL transp) {
    return desfazendoNaFalha(documento.transporte, [&] {
        const int resultado = adicionarTransporte(documento, std::move(transp));
        return resultado == ZEL_OK ? fnPersistEstrutura_ZEL(documento) : resultado;
    });
}

int adicionarTransporte(ST_PersitenceXML_ZEL &documento, ST_tagZEL transp) {
    ST_tagZEL raiz = newST_tagZEL(false, nomeSecao(Secao::kTransporte));
    raiz.addSubTag(std::move(transp));
    if (const int resultado = verificarSecao(Secao::kTransporte, raiz); resultado != ZEL_OK)
        return resultado;
    return documento.fnAdicionarTagZEL(Secao::kTransporte, std::move(raiz));
}

ST_tagZEL semTransporte() {
    ST_tagZEL transp("transp");
    transp.addSubTag("modfrete", "9"); // kept so; the check spells it as the layout does
    return transp;
}

} // namespace zel
