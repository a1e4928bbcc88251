// SPDX-License-Identifier: MIT
#include "emcurso/Carga.h"

#include "comum/ArquivosDoCaixa.h"
#include "comum/ChaveAcesso.h"
#include "config/Registro.h"
#include "diario/Gravacao.h"
#include "disco/Arquivo.h"
#include "disco/Diretorio.h"
#include "disco/Trava.h"
#include "emcurso/ArquivoPersistencia.h"
#include "emcurso/Pendencias.h"
#include "emcurso/ZEL_Controle.h"
#include "secao/Moldes.h"
#include "texto/Texto.h"
#include "zel_felbor/codigos.h"

#include <string_view>

namespace zel {

namespace {

bool arquivosProntos = false;
bool documentoCarregado = false;

// A file that the library writes in its data directory, where other programs may have theirs.
bool ehDaBiblioteca(std::string_view nome) {
    if (arquivos::ehTrocado(nome)) return true;
    constexpr std::string_view kPrefixo = "NFe", kContingencia = ".ctg", kCancelamento = ".ctgCanc";
    if (nome.ends_with(".pdf") && nome.starts_with(kPrefixo))
        return ehChave(nome.substr(kPrefixo.size(), ChaveAcesso::kDigitos));
    if (nome.ends_with(kContingencia))
        return ehChave(nome.substr(0, nome.size() - kContingencia.size()));
    // CNPJ, series and number.
    using Parte = ChaveAcesso::Parte;
    constexpr std::size_t kCnpj = ChaveAcesso::digitos(Parte::kCNPJ);
    constexpr std::size_t kSerieENumero =
        ChaveAcesso::digitos(Parte::kSerie) + ChaveAcesso::digitos(Parte::kNNF);
    return nome.ends_with(kCancelamento) &&
           nome.size() == kCnpj + 1 + kSerieENumero + kCancelamento.size() && nome[kCnpj] == '_' &&
           areDigit(nome.substr(0, kCnpj)) && areDigit(nome.substr(kCnpj + 1, kSerieENumero));
}

// What a process that died left: nobody reads it, and some of it holds personal data.
void removerSobras() {
    removerRascunhos(fnConfigurarPath(""), ehDaBiblioteca);
    removerArquivo(fnConfigurarPath(arquivos::kDanfePassageiro));
}

} // namespace

void prepararArquivos() {
    if (arquivosProntos) return;
    const Vez vez; // another process's change is seen whole or not at all
    const PosseDoCupom posse;
    // The files are put right first, and what waits is judged by the configuration. Without the
    // turn, or a journal that can be read, the files are read as they are.
    const bool certos = !vez || acompanharDiario() == ZEL_OK;
    const bool sozinho = vez && certos && posse;
    arquivosProntos = garantirConfig() == ZEL_OK && certos && (!sozinho || resolverPendencias());
    lembrarEstado(true);
    if (sozinho) removerSobras();
}

void fnInicializarVariaveis_ZEL(ST_PersitenceXML_ZEL &documento) {
    if (documentoCarregado) return;
    const Vez vez;
    const PosseDoCupom posse;
    construirMoldes();
    prepararArquivos();
    bool passageira = false;
    fnCarregaEstrutura_ZEL(documento, &passageira);
    documentoCarregado = arquivosProntos && !passageira;
}

void recarregarVariaveis(ST_PersitenceXML_ZEL &documento) {
    esquecerEstrutura(documento);
    arquivosProntos = documentoCarregado = false;
    // A configuration that cannot be read is the operation's to answer.
    fnXML_CarregarXML_ZEL();
    fnInicializarVariaveis_ZEL(documento);
}

void verConfig() {
    if (!configAlterada()) return;
    // One that cannot be read, or is being changed for long, leaves what is in memory.
    if (const Vez vez; vez && acompanharDiario() == ZEL_OK) fnXML_CarregarXML_ZEL();
}

void verDocumento(ST_PersitenceXML_ZEL &documento) {
    verConfig();
    if (PosseDoCupom::minha() || !estruturaAlterada()) return;
    if (const Vez vez; vez && acompanharDiario() == ZEL_OK) recarregarVariaveis(documento);
}

bool obterCupom(PosseDoCupom &posse, ST_PersitenceXML_ZEL &documento) {
    // A process that has it without a receipt in progress was left behind by somebody's reset.
    const bool minha =
        posse || (fnXML_CarregarXML_ZEL() == ZEL_OK && !cupomEmAndamento() && posse.tomar());
    if (!minha) return false;
    if (posse.nova() && estruturaAlterada()) {
        recarregarVariaveis(documento);
    } else {
        // A configuration that cannot be read is the operation's to answer.
        if (posse.nova()) fnXML_CarregarXML_ZEL();
        fnInicializarVariaveis_ZEL(documento);
    }
    return true;
}

void depoisDoCupom(PosseDoCupom &posse, bool mudou) {
    if (PosseDoCupom::compartilhada() || !cupomEmAndamento())
        posse.largar();
    else if (mudou)
        posse.manter();
    if (mudou) lembrarEstado();
}

void aceitarEstado() {
    lembrarEstado();
    PosseDoCupom posse;
    if (!cupomEmAndamento()) posse.largar();
}

void fnFinalizarVariaveis_ZEL() {
    liberarMoldes();
    arquivosProntos = documentoCarregado = false;
}

} // namespace zel
