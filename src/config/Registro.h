// SPDX-License-Identifier: MIT
// The configuration values in memory (G_stRegistroZEL_AUX) and the operations that read and change
// them by path, group names and key joined by single backslashes ("CONFIGURACAO\estadoCFe").
// Paths are matched without regard to case. Every change goes through to the file ZEL_Framework.xml
// before it is answered; the file's form is ArquivoConfig's, the list of keys Catalogo's.
#pragma once

#include "config/ArquivoConfig.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace zel {

struct MudancaArquivo; // diario/Gravacao.h

// The value of a key known when the library is compiled: valorConfig(R"(IDE\nNF)"_chave).
// The view holds until the next change or load.
std::string_view valorConfig(Chave chave);

// Changes several values in one commit, together with `outros` files. Values equal to those of the
// file are not written; when all are equal and there are no other files nothing is. ZEL_OK;
// ZEL_RECUSADO a value holds "</"; ZEL_CONFIG_ILEGIVEL or ZEL_ARQUIVO_INDISPONIVEL as
// fnXML_CarregarXML_ZEL, ZEL_CONFIG_ILEGIVEL also when the file is so damaged that a key has no
// place in it. On failure files and memory are as before.
int alterarConfig(std::span<const Alteracao> alteracoes,
                  std::span<const MudancaArquivo> outros = {});

// The money rule: cuts to two decimals, toward zero when "CONFIGURACAO\ArredondarTruncar" is "T" or
// "t", otherwise by correct rounding of the binary value.
double fnArredondarTruncar(double valor);

// The values that the changed keys hold now, for putting them back.
std::vector<Alteracao> valoresAtuais(std::span<const Alteracao> alteracoes);

// Loads the file when its bytes are not those loaded last, completing it with missing keys; creates
// a missing one from the values in memory. ZEL_OK; ZEL_CONFIG_ILEGIVEL the root tags are missing;
// ZEL_ARQUIVO_INDISPONIVEL it cannot be read or written. On failure memory is as before.
int fnXML_CarregarXML_ZEL();

// Whether another program may have changed the file since.
bool configAlterada();

// How often a load brought another number or series of documents than memory had: no other process
// has closed a document between two calls that get the same answer.
std::uint64_t numerosDeOutros();

// The same, done at most once successfully per process: the first call of a process, whichever it
// is, sees the file.
int garantirConfig();

// aCFInicializar_ZEL: defaults into memory, then the file over them; a missing file is created, one
// without its root tags is kept beside as ZEL_Framework.xml.danificado and replaced. ZEL_OK or
// ZEL_ARQUIVO_INDISPONIVEL.
int inicializarConfig();

// Fills the registry with the catalogue's defaults. Always 1.
int fnInicializarEstruturaDadosZEL_AUX();

// By path, for the application: the value into `valor`. ZEL_OK, or ZEL_RECUSADO when the path names
// no key.
int fnRegRetornarValor_ZEL(std::string_view caminho, std::string &valor);

// By path: stores the value, cut to the key's length, and writes it through to the file. ZEL_OK;
// ZEL_RECUSADO when the path names no key or the value holds "</"; ZEL_CONFIG_ILEGIVEL,
// ZEL_ARQUIVO_INDISPONIVEL as alterarConfig.
int fnRegAlterarValor_ZEL(std::string_view caminho, std::string_view valor);

// Two values that no key names and no file keeps, learnt from an authorization return: at most 44
// characters each.
struct Autorizacao {
    std::string digest;
    std::string dataHora;
};
const Autorizacao &autorizacaoUltimoDocumento();
void definirAutorizacao(Autorizacao autorizacao);

} // namespace zel
