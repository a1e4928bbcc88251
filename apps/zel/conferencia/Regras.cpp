// SPDX-License-Identifier: MIT
#include "conferencia/Regras.h"

#include "comum/ChaveAcesso.h"
#include "comum/Digitos.h"
#include "comum/Estados.h"
#include "leitura/Texto.h"

#include <algorithm>
#include <iterator>
#include <optional>

namespace zel::aplicativo {

namespace {

constexpr std::size_t kMaximoMostrado = 60;

struct Problema {
    IdAchado id;
    std::string texto;
    std::string remedio;
};

using Resultado = std::optional<Problema>;

bool estaNaLista(std::string_view lista, std::string_view valor) {
    const auto valores = dividir(lista, '|');
    return std::ranges::find(valores, valor) != valores.end();
}

Resultado invalido(const LinhaChave &chave, std::string_view valor) {
    std::string remedio = juntar({"Permitido: ", chave.permitido, "."});
    if (!chave.exemplo.empty() && chave.regra != Regra::kLista)
        remedio += juntar({" Exemplo: ", chave.exemplo});
    return Problema{"valor-invalido", juntar({mostrar(chave, valor), " não é permitido"}), remedio};
}

Resultado seInvalido(bool serve, const LinhaChave &chave, std::string_view valor) {
    return serve ? Resultado{} : invalido(chave, valor);
}

Resultado conferirTexto(const LinhaChave &chave, std::string_view valor) {
    const auto minimo = static_cast<std::size_t>(lerInteiro(chave.argumento).value_or(1));
    if (temBrancoNaPonta(valor))
        return Problema{"valor-brancos", juntar({mostrar(chave, valor), " tem branco na ponta"}),
                        "Tire os brancos do começo e do fim: a SEFAZ recusa o documento."};
    if (comprimento(valor) < minimo)
        return Problema{"valor-brancos", juntar({mostrar(chave, valor), " é curto demais"}),
                        juntar({"Permitido: ", chave.permitido, "."})};
    return {};
}

Resultado conferirInteiro(const LinhaChave &chave, std::string_view valor) {
    const auto limites = dividir(chave.argumento, '-');
    const auto numero = lerInteiro(valor);
    return seInvalido(numero && *numero >= lerInteiro(limites.front()) &&
                          *numero <= lerInteiro(limites.back()),
                      chave, valor);
}

Resultado conferirDigitos(const LinhaChave &chave, std::string_view valor) {
    return seInvalido(soDigitos(valor) &&
                          estaNaLista(chave.argumento, std::to_string(valor.size())),
                      chave, valor);
}

std::optional<double> decimalComVirgula(std::string_view valor) {
    return lerDecimal(trocar(std::string(valor), ",", "."));
}

Resultado conferirFator(const LinhaChave &chave, std::string_view valor) {
    const auto numero = decimalComVirgula(valor);
    if (!numero) return invalido(chave, valor);
    if (*numero < lerDecimal(chave.argumento)) return {};
    return Problema{"fator-percentual",
                    juntar({mostrar(chave, valor), " parece um percentual; a chave é um fator"}),
                    juntar({"Escreva a fração: ", chave.exemplo, ", e não ", valor, "."})};
}

// A number with check digits: what has the wrong form is said differently from wrong digits.
Resultado comDigito(const LinhaChave &chave, std::string_view valor, std::size_t digitos,
                    bool (*serve)(std::string_view), const IdAchado &id, std::string_view oQue) {
    if (!soDigitos(valor) || valor.size() != digitos) return invalido(chave, valor);
    if (serve(valor)) return {};
    return Problema{id, juntar({mostrar(chave, valor), ": o dígito verificador não confere"}),
                    juntar({"Confira ", oQue, " dígito por dígito; há um errado ou trocado."})};
}

bool ehEndereco(std::string_view valor) {
    const std::string endereco = minusculas(valor);
    const bool http = endereco.starts_with("http://") || endereco.starts_with("https://");
    return http && valor.find_first_of(" ?#") == valor.npos;
}

bool ehToken(std::string_view valor) {
    return std::ranges::all_of(valor, [](char c) {
        return ehDigito(c) || c == '-' || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
    });
}

Resultado conferirDiretorio(std::string_view diretorio) {
    if (diretorio.empty()) return {};
    if (!diretorio.starts_with('/'))
        return Problema{"diretorio-relativo",
                        juntar({"\"", diretorio, "\" depende de onde o caixa foi iniciado"}),
                        "Escreva o caminho inteiro, a partir de /."};
    if (diretorio.ends_with('/')) return {};
    return Problema{"diretorio-barra", juntar({"\"", diretorio, "\" não termina com /"}),
                    juntar({"Escreva ", diretorio, "/; sem a barra as cópias vão para ", diretorio,
                            "documentosEnvio.xml."})};
}

Resultado conferirDiretorios(const LinhaChave &chave, std::string_view valor) {
    const auto partes = dividir(valor, '|');
    if (partes.size() > 3) return invalido(chave, valor);
    for (const std::string_view diretorio : partes)
        if (auto problema = conferirDiretorio(diretorio)) return problema;
    return {};
}

Resultado conferirIe(const LinhaChave &chave, std::string_view valor) {
    if (valor != "ISENTO") return seInvalido(soDigitos(valor) && valor.size() > 1, chave, valor);
    return Problema{"ie-isento", "ISENTO: só contribuinte do ICMS emite NFC-e",
                    "Escreva a inscrição estadual da loja."};
}

bool ehCfop(std::string_view valor) {
    return soDigitos(valor) && valor.size() == 4 && valor.front() == '5';
}

using Conferencia = Resultado (*)(const LinhaChave &, std::string_view);

// A rule that is one question.
template <auto serve>
Resultado seServe(const LinhaChave &chave, std::string_view valor) {
    return seInvalido(serve(valor), chave, valor);
}

// In the order of Regra.
constexpr Conferencia kConferencias[] = {
    /* kLivre */ [](const LinhaChave &, std::string_view) { return Resultado{}; },
    /* kTexto */ conferirTexto,
    /* kLista */
    [](const LinhaChave &chave, std::string_view valor) {
        return seInvalido(estaNaLista(chave.argumento, valor), chave, valor);
    },
    /* kDigitos */ conferirDigitos,
    /* kInteiro */ conferirInteiro,
    /* kDecimal */ seServe<[](std::string_view v) { return decimalComVirgula(v).has_value(); }>,
    /* kDecimalPonto */ seServe<[](std::string_view v) { return lerDecimal(v).has_value(); }>,
    /* kFator */ conferirFator,
    /* kCnpj */
    [](const LinhaChave &chave, std::string_view valor) {
        return comDigito(chave, valor, 14, ehCnpj, "cnpj-digito", "o CNPJ");
    },
    /* kCpf */
    [](const LinhaChave &chave, std::string_view valor) {
        return comDigito(chave, valor, 11, ehCpf, "cpf-digito", "o CPF");
    },
    /* kIe */ conferirIe,
    /* kUf */ seServe<[](std::string_view v) { return procurarEstado(v) != nullptr; }>,
    /* kCuf */ seServe<[](std::string_view v) { return procurarEstadoPorCodigo(v) != nullptr; }>,
    /* kMunicipio */
    [](const LinhaChave &chave, std::string_view valor) {
        return comDigito(chave, valor, 7, ehMunicipio, "municipio-digito",
                         "o código do município na tabela do IBGE,");
    },
    /* kCfop */ seServe<ehCfop>,
    /* kChave */
    [](const LinhaChave &chave, std::string_view valor) {
        return comDigito(chave, valor, ChaveAcesso::kDigitos, ehChaveIntegra, "chave-digito",
                         "a chave");
    },
    /* kToken */ seServe<ehToken>,
    /* kEndereco */ seServe<ehEndereco>,
    /* kDiretorios */ conferirDiretorios,
};
static_assert(std::size(kConferencias) == static_cast<std::size_t>(Regra::kDiretorios) + 1);

Resultado problemaDoValor(const LinhaChave &chave, std::string_view valor) {
    if (comprimento(valor) > chave.tamanho)
        return Problema{"valor-longo",
                        juntar({mostrar(chave, valor), " tem ", caracteres(comprimento(valor)),
                                "; a chave guarda ", std::to_string(chave.tamanho)}),
                        juntar({"Encurte o valor: a biblioteca usa só o começo. Permitido: ",
                                chave.permitido, "."})};
    if (valor.empty() && chave.tem(kObrigatoria))
        return Problema{"valor-vazio", "está vazia", juntar({"Permitido: ", chave.permitido, "."})};
    if (chave.tem(kTrocar) && valor == chave.padrao)
        return Problema{"padrao-nao-trocado",
                        juntar({mostrar(chave, valor), " é o valor de fábrica"}),
                        juntar({"Grave o da loja: zel config gravar '", chave.caminho, "' VALOR"})};
    if (valor.empty()) return {};
    return kConferencias[static_cast<std::size_t>(chave.regra)](chave, valor);
}

} // namespace

std::string mostrar(const LinhaChave &chave, std::string_view valor) {
    if (chave.tem(kSegredo) || chave.tem(kPessoal))
        return juntar({"(oculto, ", caracteres(comprimento(valor)), ")"});
    const std::string_view mostrado = inicio(valor, kMaximoMostrado);
    return juntar({"\"", mostrado, mostrado.size() < valor.size() ? "..." : "", "\""});
}

void conferirValor(const LinhaChave &chave, std::string_view valor, std::size_t linha,
                   Relatorio &relatorio) {
    if (!chave.tem(kLida) && valor == chave.padrao) return;
    if (auto problema = problemaDoValor(chave, valor)) {
        // What nothing reads does no harm.
        relatorio.registrar({problema->id, std::string(chave.caminho), linha,
                             std::move(problema->texto), std::move(problema->remedio)},
                            chave.tem(kLida) ? Gravidade::kErro : Gravidade::kAviso);
    } else if (!chave.tem(kLida) && !valor.empty()) {
        relatorio.registrar({"chave-sem-leitor",
                             std::string(chave.caminho),
                             linha,
                             juntar({mostrar(chave, valor), " não tem efeito: nada lê esta chave"}),
                             {}});
    }
}

bool valorServe(const LinhaChave &chave, std::string_view valor) {
    return !problemaDoValor(chave, valor);
}

} // namespace zel::aplicativo
