// SPDX-License-Identifier: MIT
// The parts of looking at an NFC-e. What the authority would compute is computed here from what the
// document shows, and shared with nobody: the translation's work is checked by it, too.
#pragma once

#include "base/Decimal.h"
#include "base/Recusa.h"
#include "base/Xml.h"
#include "config/Configuracao.h"
#include "esquema/Esquema.h"

#include <cstddef>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace zel::envio {

inline constexpr std::size_t kMaisItens = 990;      // det of a document
inline constexpr std::size_t kMaisPagamentos = 100; // detPag; more are the schema's to refuse

// Amounts that a document shows, and what they should be.
class Valores {
public:
    explicit Valores(Recusas &recusas) : recusas_(recusas) {}

    // Money at the end of a path below `no`, "*" in it being any one element; 0 where it leads
    // nowhere. What is no amount of up to 13 digits and two decimals is refused, once.
    Centavos em(const No &no, std::string_view caminho);
    // A percentage of up to three digits and four decimals; likewise.
    Decimal taxa(const No &no, std::string_view caminho);
    // Refuses what the path leads to, or its absence, when it is not that amount. Whether it is.
    bool exigir(const No &no, std::string_view caminho, Centavos certo, const std::string &motivo);
    // Refuses what the path leads to. Says nothing of a document with amounts that cannot be read.
    void diferir(const No &no, std::string_view caminho, const std::string &valor,
                 const std::string &motivo);

private:
    void recusar(const No &no, std::string_view motivo);

    Recusas &recusas_;
    std::set<const void *> ilegiveis_;
};

using Olhado = std::vector<std::string>;

// A line for what was looked at: right, or not.
void anotar(Olhado &olhado, std::string_view parte, bool certo, std::string_view detalhe = {});

// Runs a part and notes whether it found something.
template <class Parte>
void olhar(Olhado &olhado, std::string_view nome, Recusas &recusas, Parte parte) {
    const std::size_t antes = recusas.lista().size();
    parte();
    anotar(olhado, nome, recusas.lista().size() == antes);
}

// Whose a signed element is, and the moment that it says, as it stands there.
struct Autor {
    std::string cnpj, momento;
};
// The signature below `pai`, its certificate and whether that is the author's.
bool conferirAssinatura(const Documento &documento, const No &pai, const Autor &autor,
                        const Configuracao &config, Olhado &olhado, Recusas &recusas);

// Of what is not signed yet and is no NFe.
bool conferirPedidoParaAssinar(const Documento &documento, Recusas &recusas);

void julgarEsquema(const Documento &documento, bool assinado, Esquemas *esquemas, Olhado &olhado,
                   Recusas &recusas);

// The nine parts of the key against the document, and its check digit; the forms of cNF that are
// refused. CNPJ, CPF, GTIN and municipality codes; state against code.
bool conferirChave(const No &infNFe, Recusas &recusas);
void conferirNumeros(const No &infNFe, const std::vector<No> &itens, Recusas &recusas);

// Totals against items; what vNF should be, against which payments less change are held: a wrong
// vNF is said of vNF alone.
Centavos conferirSomas(const No &infNFe, const std::vector<No> &itens, Valores &valores);
void conferirPagamentos(const No &infNFe, Centavos vNF, Valores &valores);

// Base and amounts of each item that has the groups, and IBSCBSTot; where they are required, that
// every item has them. False when the document has none of it, and needs none.
bool conferirIbsCbs(const No &infNFe, const std::vector<No> &itens, bool exigido, Valores &valores,
                    Recusas &recusas);

std::vector<No> primeiros(std::vector<No> nos, std::size_t quantos);

// A path below an element as a refusal names it, whether the element is there or not.
std::string lugarDe(const No &no, std::string_view caminho);

// A total and what adds up to it: the same path in each item of that kind.
enum class Itens { kTodos, kProdutos, kServicos };
struct Soma {
    std::string_view total, item;
    Itens quais;
};
Centavos somar(const std::vector<No> &itens, const Soma &soma, Valores &valores);
void conferirSoma(const No &total, const std::vector<No> &itens, const Soma &soma,
                  Valores &valores);

} // namespace zel::envio
