// SPDX-License-Identifier: MIT
// The 47 functions as one table, each callable with a text for every argument: a hostile caller
// needs to know no signature. Owns the copies of the arguments, each ending exactly with its buffer
// on the heap, result buffers of exactly the documented size, and the codes that each function may
// answer. File names are meant relative to the working directory. Any of them can be asked for by a
// row of texts, too.
#pragma once

#include "apoio/Funcoes.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstdlib>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <utility>
#include <vector>

inline constexpr std::size_t kMaiorTexto = 100000; // of the texts that hostile callers give

using Texto = std::optional<std::string>; // none: a null pointer

inline std::string todosOsBytes() {
    std::string texto;
    for (int byte = 1; byte < 256; ++byte)
        texto.push_back(static_cast<char>(byte));
    return texto;
}

// One argument on its way: a text without a terminator within its capacity would be the caller's
// fault, so every copy has one.
class Copia {
public:
    // `resultado`: bytes of the buffer that the function may write; 0 for a text in alone.
    Copia(const Texto &texto, std::size_t resultado) {
        if (!texto) return;
        bytes_ = std::make_unique_for_overwrite<char[]>(std::max(resultado, texto->size() + 1));
        std::copy_n(texto->c_str(), texto->size() + 1, bytes_.get());
    }
    operator char *() const { return bytes_.get(); }
    // Texts that are no small number stand for the numbers at the bounds.
    operator int() const {
        const std::string_view texto = bytes_ ? bytes_.get() : "0";
        if (texto.empty() || texto.size() > 10) return texto.empty() ? INT_MIN : INT_MAX;
        return static_cast<int>(std::strtol(texto.data(), nullptr, 10));
    }

private:
    std::unique_ptr<char[]> bytes_;
};

struct Argumento {
    const char *plausivel;
    std::size_t resultado = 0;
};

struct Chamada {
    const char *nome;
    std::vector<Argumento> argumentos;
    std::vector<int> codigos; // beside those that every function may answer
    int (*funcao)(const Funcoes &, const std::vector<Copia> &);

    // `documento`: bytes that the text of a document asks for.
    int chamar(const Funcoes &funcoes, const std::vector<Texto> &textos,
               std::size_t documento = ZEL_TAMANHO_DOCUMENTO) const {
        std::vector<Copia> copias;
        for (std::size_t i = 0; i < argumentos.size(); ++i) {
            std::size_t resultado = argumentos[i].resultado;
            // The text of kind 4 is a list of directories, that of the others the document.
            if (resultado == ZEL_TAMANHO_DOCUMENTO)
                resultado = int{copias[0]} == 4 ? std::size_t{ZEL_TAMANHO_DIRETORIOS} : documento;
            copias.emplace_back(textos[i], resultado);
        }
        return funcao(funcoes, copias);
    }
    std::vector<Texto> plausiveis() const {
        std::vector<Texto> textos;
        for (const Argumento &argumento : argumentos)
            textos.emplace_back(argumento.plausivel);
        return textos;
    }
    bool responde(int codigo) const {
        constexpr std::array kGerais{int{ZEL_OK}, int{ZEL_CONFIG_ILEGIVEL},
                                     int{ZEL_ARQUIVO_INDISPONIVEL}};
        return std::find(kGerais.begin(), kGerais.end(), codigo) != kGerais.end() ||
               std::find(codigos.begin(), codigos.end(), codigo) != codigos.end();
    }
};

template <class... A>
constexpr std::size_t aridade(int (*)(A...)) {
    return sizeof...(A);
}

template <auto Membro, class... Argumentos>
Chamada chamada(const char *nome, std::vector<int> codigos, Argumentos... argumentos) {
    constexpr std::size_t kQuantos = sizeof...(Argumentos);
    static_assert(kQuantos == aridade(decltype(std::declval<Funcoes>().*Membro){}));
    return {nome,
            {Argumento{argumentos}...},
            std::move(codigos),
            [](const Funcoes &funcoes, [[maybe_unused]] const std::vector<Copia> &copias) {
                return [&]<std::size_t... I>(std::index_sequence<I...>) {
                    return (funcoes.*Membro)(copias[I]...);
                }
                (std::make_index_sequence<kQuantos>{});
            }};
}

inline constexpr const char *kChave = "35140111222333000181650010000001231171025446";
inline constexpr const char *kItem =
    "<prod><cProd>1</cProd><cEAN> </cEAN><xProd>P</xProd><NCM>22011000</NCM><CFOP>5102</CFOP>"
    "<uCom>U</uCom><qCom>2.0000</qCom><vUnCom>1.50</vUnCom><vProd>3.00</vProd><cEANTrib> "
    "</cEANTrib><uTrib>U</uTrib><qTrib>2.0000</qTrib><vUnTrib>1.50</vUnTrib><indTot>1</indTot>"
    "</prod><imposto><ICMS><ICMS00><orig>0</orig><CST>00</CST><modBC>3</modBC><vBC>3.00</vBC>"
    "<pICMS>18.00</pICMS><vICMS>0.54</vICMS></ICMS00></ICMS></imposto>";
// Of 7.00, with tax substitution of 0.50 that counts in the total.
inline constexpr const char *kItemComST =
    "<PROD><cProd>7</cProd><cEAN>7891234567895</cEAN><xProd>A &amp; B</xProd>\r\n"
    "<NCM>22011000</NCM><CFOP>5405</CFOP><uCom>UN</uCom><qCom>2</qCom>"
    "<vUnCom>3.50</vUnCom><vProd>7.00</vProd><cEANTrib>7891234567895</cEANTrib>"
    "<uTrib>UN</uTrib><qTrib>2</qTrib><vUnTrib>3.50</vUnTrib><indTot>1</indTot>"
    "</PROD><imposto><ICMS><ICMS10><orig>0</orig><CST>10</CST><modBC>3</modBC>"
    "<vBC>7.00</vBC><pICMS>18.00</pICMS><vICMS>1.26</vICMS><modBCST>4</modBCST>"
    "<pMVAST>0.40</pMVAST><pRedBCST>0.00</pRedBCST><vBCST>9.80</vBCST>"
    "<pICMSST>0.18</pICMSST><vICMSST>0.50</vICMSST></ICMS10></ICMS></imposto>";
// A document that is none, in base64.
inline constexpr const char *kBase64 = "PE5GZT48aW5mTkZlIElkPSJORmUxIj48L2luZk5GZT48L05GZT4=";

inline constexpr Argumento kValor{"", ZEL_TAMANHO_VALOR};
// What a receipt asks for beside its constant: twice a long text of the caller.
inline constexpr Argumento kCupom{"", ZEL_TAMANHO_CUPOM + 2 * kMaiorTexto};

// In the order of the header.
inline const std::vector<Chamada> &chamadas() { // NOLINT(readability-function-size): a table
    using F = Funcoes;
    const std::vector<int> venda{-1, -35, -99, -120, -122, -131, -132};
    const std::vector<int> preset{-99, -100};
    // clang-format off
    static const std::vector<Chamada> kChamadas{
        chamada<&F::aCFInicializar_ZEL>("aCFInicializar_ZEL", {}),
        chamada<&F::aCFAbrir_ZEL>("aCFAbrir_ZEL", {-1, -120, -130}, "12345678909", "Nome", "Rua", "1", "Centro", "4321808", "Cidade", "RS", "95000000"),
        chamada<&F::aCFAbrirNumSerie_ZEL>("aCFAbrirNumSerie_ZEL", {-1, -120, -130}, "7", "1", "12345678909", "Nome", "Rua", "1", "Centro", "4321808", "Cidade", "RS", "95000000"),
        chamada<&F::aCFIdentificarConsumidor_ZEL>("aCFIdentificarConsumidor_ZEL", {-1, -120}, "12345678909", "Nome", "Rua", "1", "Centro", "4321808", "Cidade", "RS", "95000000", "a@b.com.br"),
        chamada<&F::aCFIdentificarTransportadora_ZEL>("aCFIdentificarTransportadora_ZEL", {-100, -109, -120}, "12345678909", "Nome", "IE", "Rua", "Cidade", "RS"),
        chamada<&F::aCFVender_ZEL>("aCFVender_ZEL", venda, "T1800", "1", "10.00", "D$", "1,00", "1", "UN", "Produto"),
        chamada<&F::aCFVenderCompleto_ZEL>("aCFVenderCompleto_ZEL", venda, "1800", "1,5", "9,99", "A%", "10", "1", "22011000", "5102", "UN", "Produto", ""),
        chamada<&F::aCFVenderXml_ZEL>("aCFVenderXml_ZEL", {-1, -120, -121, -122, -131, -132}, kItem),
        chamada<&F::aCFLancarDescontoItem_ZEL>("aCFLancarDescontoItem_ZEL", {-11, -20, -35, -99, -100}, "0", "D$", "0,50"),
        chamada<&F::aCFLancarAcrescimoItem_ZEL>("aCFLancarAcrescimoItem_ZEL", {-11, -20, -35, -99, -100}, "1", "A%", "5"),
        chamada<&F::aCFCancelarItem_ZEL>("aCFCancelarItem_ZEL", {-99, -100}, "1"),
        chamada<&F::aCFCancelarItemParcial_ZEL>("aCFCancelarItemParcial_ZEL", {-11, -31, -99, -100}, "1", "0,5"),
        chamada<&F::aCFCancelarDescontoItem_ZEL>("aCFCancelarDescontoItem_ZEL", {-11, -21, -99, -100}, "0"),
        chamada<&F::aCFCancelarAcrescimoItem_ZEL>("aCFCancelarAcrescimoItem_ZEL", {-11, -21, -99, -100}, "1"),
        chamada<&F::aCFTotalizar_ZEL>("aCFTotalizar_ZEL", {-35, -131, -133}, "D$", "0,10"),
        chamada<&F::aCFEfetuarPagamento_ZEL>("aCFEfetuarPagamento_ZEL", {-12, -34, -99, -131, -134}, "dinheiro", ""),
        chamada<&F::aCFEstornarPagamento_ZEL>("aCFEstornarPagamento_ZEL", {-12, -99, -100}, "dinheiro", "cheque", "10.00"),
        chamada<&F::aCFValorLeiImposto_ZEL>("aCFValorLeiImposto_ZEL", {-99}, "1,23"),
        chamada<&F::tCFEncerrar_ZEL>("tCFEncerrar_ZEL", {-1, -108, -131, -135}, "Volte <b>sempre</b>"),
        chamada<&F::tCFEncerrarConfigMsg_ZEL>("tCFEncerrarConfigMsg_ZEL", {-1, -108, -120, -131, -135}, "ao consumidor", "ao fisco"),
        chamada<&F::tCFCancelar_ZEL>("tCFCancelar_ZEL", {ZEL_CANCELAMENTO_GRAVADO, -1, -99}, "1", "1", kChave, "143260000000001", "Motivo"),
        chamada<&F::tCFCancelarOffline_ZEL>("tCFCancelarOffline_ZEL", {0, -1, -99}, "1", "1", kChave, "Motivo", Argumento{"./", ZEL_TAMANHO_DIRETORIOS}),
        chamada<&F::tCFInutilizar_ZEL>("tCFInutilizar_ZEL", {-99}, "7", "9", "1", "Motivo"),
        chamada<&F::GeraXMLConsulta_ZEL>("GeraXMLConsulta_ZEL", {-99}, "NUM", "7", "9", "1", kChave),
        chamada<&F::aCFConfICMS00_ZEL>("aCFConfICMS00_ZEL", preset, "0", "00", "3", "18,00"),
        chamada<&F::aCFConfICMS40_ZEL>("aCFConfICMS40_ZEL", preset, "0", "40", "1.00", "9"),
        chamada<&F::aCFConfICMS60_ZEL>("aCFConfICMS60_ZEL", preset, "0", "60", "1.00", "0.18"),
        chamada<&F::aCFConfPisAliq_ZEL>("aCFConfPisAliq_ZEL", preset, "01", "0,65"),
        chamada<&F::aCFConfPisQtde_ZEL>("aCFConfPisQtde_ZEL", preset, "03", "10"),
        chamada<&F::aCFConfPisNT_ZEL>("aCFConfPisNT_ZEL", preset, "07"),
        chamada<&F::aCFConfCofinsAliq_ZEL>("aCFConfCofinsAliq_ZEL", preset, "01", "3,00"),
        chamada<&F::aCFConfCofinsQtde_ZEL>("aCFConfCofinsQtde_ZEL", preset, "03", "10"),
        chamada<&F::aCFConfCofinsNT_ZEL>("aCFConfCofinsNT_ZEL", preset, "07"),
        chamada<&F::aCFConfPisOutr_ZEL>("aCFConfPisOutr_ZEL", preset, "99", "0,65", ""),
        chamada<&F::aCFConfCofinsOutr_ZEL>("aCFConfCofinsOutr_ZEL", preset, "99", "", "10"),
        chamada<&F::regAlterarValor_ZEL>("regAlterarValor_ZEL", {-1}, "EMIT\\xNome", "Loja"),
        chamada<&F::regRetornarValor_ZEL>("regRetornarValor_ZEL", {-1, -99}, "EMIT\\xNome", kValor),
        chamada<&F::rCFVerificarStatus_ZEL>("rCFVerificarStatus_ZEL", {0, 2, 3, 4, 5, 6}),
        chamada<&F::rInfoEstendida_ZEL>("rInfoEstendida_ZEL", {-99}, "1", Argumento{"", ZEL_TAMANHO_INFO}),
        chamada<&F::rURLQrcode_ZEL>("rURLQrcode_ZEL", {-99}, kValor),
        chamada<&F::aCFContingenciaUltimaNota_ZEL>("aCFContingenciaUltimaNota_ZEL", {-1}, "5", Argumento{"./", ZEL_TAMANHO_DOCUMENTO}),
        chamada<&F::GerarArquivoFormatadoNF_ZEL>("GerarArquivoFormatadoNF_ZEL", {-1, -22, -23, -24, -99}, "documentosEnvio.xml", "OFFLINE", "", "48", "1", "", kCupom),
        chamada<&F::RetornarUltimoBufferFormatadoNF_ZEL>("RetornarUltimoBufferFormatadoNF_ZEL", {-99}, kCupom),
        chamada<&F::GeraPDF_ZEL>("GeraPDF_ZEL", {-1, -22, -23}, kBase64),
        chamada<&F::GeraPDF_DANFE_ZEL>("GeraPDF_DANFE_ZEL", {-1, -22, -23}, kBase64),
        chamada<&F::eCriptografarArquivo_ZEL>("eCriptografarArquivo_ZEL", {}, "documentosEnvio.xml", "copia.bin", "chave"),
        chamada<&F::eDescriptografarArquivo_ZEL>("eDescriptografarArquivo_ZEL", {}, "copia.bin", "copia.xml", "chave"),
    };
    // clang-format on
    return kChamadas;
}

// A function added to the header needs its row.
static_assert(sizeof(Funcoes) == 48 * sizeof(void *));

inline constexpr std::nullopt_t kNulo = std::nullopt;

// A call as the row of a table gives it: the function, and its arguments as texts. Those at the end
// that are left out are empty.
struct Pedido {
    template <class... Textos>
    explicit Pedido(std::string_view nome, const Textos &...textos) : funcao(nome) {
        (argumentos.emplace_back(textos), ...);
    }

    std::string_view funcao;
    std::vector<Texto> argumentos;
};

inline int fazer(const Funcoes &funcoes, const Pedido &pedido) {
    for (const Chamada &chamada : chamadas()) {
        if (chamada.nome != pedido.funcao) continue;
        std::vector<Texto> textos = pedido.argumentos;
        textos.resize(chamada.argumentos.size(), "");
        return chamada.chamar(funcoes, textos);
    }
    throw std::invalid_argument(std::string(pedido.funcao));
}
