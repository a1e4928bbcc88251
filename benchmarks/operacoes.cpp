// SPDX-License-Identifier: MIT
// Each kind of operation alone. An operation that changes the state is given it back outside of the
// time, through the exported functions: cancelling and selling again, taking a discount off again.
#include "Bancada.h"
#include "Loja.h"

#include <array>

namespace {

constexpr int kItens = 10; // of the receipt that an operation works on, where its name gives none
constexpr int kMuitos = 999;

// A till at work; `volta` counts the executions.
struct Mesa {
    explicit Mesa(const Base &base) : loja(base.diretorio, base.biblioteca) {}

    Loja loja;
    std::vector<char> saida = std::vector<char>(tamanhoDoCupom(kItens));
    std::string base64;
    int volta = 0;

    std::string caminho(const char *nome) const { return loja.diretorio() + nome; }

    // A text argument that is also a result, of the size of `saida`.
    char *emprestar(const std::string &texto) {
        saida[texto.copy(saida.data(), texto.size())] = '\0';
        return saida.data();
    }
};

struct Operacao {
    const char *nome;
    int voltas;
    int lote;                 // calls measured together, where one is too short
    void (*preparar)(Mesa &); // once
    void (*repor)(Mesa &);    // before each measured call
    int (*executar)(Mesa &);
    int esperado = ZEL_OK;
};

void nada(Mesa &) {}

void abrirLimpo(Mesa &m) {
    const int estado = m.loja->rCFVerificarStatus_ZEL();
    if (estado >= 1 && estado <= 4)
        exigir(m.loja->tCFCancelar_ZEL("", "", "", "", ""), "tCFCancelar_ZEL");
    m.loja.abrir();
}

template <int itens>
void venderTudo(Mesa &m) {
    abrirLimpo(m);
    m.loja.vender(1, itens);
}

void abrirComTransportadora(Mesa &m) {
    exigir(m.loja->regAlterarValor_ZEL("IDE\\indPres", "4"), "IDE\\indPres");
    abrirLimpo(m);
    exigir(m.loja->aCFIdentificarTransportadora_ZEL("11222333000181", "Transportes", "12", "Rua A",
                                                    "Curitiba", "PR"),
           "carrier");
}

template <int itens>
void venderTransportados(Mesa &m) {
    abrirComTransportadora(m);
    m.loja.vender(1, itens);
}

void totalizado(Mesa &m) {
    venderTudo<kItens>(m);
    m.loja.totalizar();
}

void pago(Mesa &m) {
    totalizado(m);
    m.loja.pagar();
}

void encerrado(Mesa &m) {
    pago(m);
    m.loja.encerrar();
}

void impresso(Mesa &m) {
    encerrado(m);
    m.loja.autorizar();
    m.base64 = documentoAutorizado(m.loja);
    exigir(m.loja.imprimir(m.saida), "GerarArquivoFormatadoNF_ZEL");
}

template <int item>
int vender(Mesa &m) {
    m.loja.vender(item);
    return ZEL_OK;
}

template <int item>
int descontar(Mesa &m) {
    return m.loja->aCFLancarDescontoItem_ZEL(item, "D$", "0,10");
}

template <int item>
void tirarDesconto(Mesa &m) {
    if (m.volta > 0)
        exigir(m.loja->aCFCancelarDescontoItem_ZEL(item), "aCFCancelarDescontoItem_ZEL");
}

// An item of which a little can be taken very often.
template <int itens>
void venderMuitoDeUm(Mesa &m) {
    venderTudo<itens - 1>(m);
    exigir(m.loja->aCFVender_ZEL("T1800", "1000", "1,00", "", "", "1", "UN", "Prego"), "sale");
}

template <int item>
int cancelarParte(Mesa &m) {
    return m.loja->aCFCancelarItemParcial_ZEL(item, "0,01");
}

int reemitir(Mesa &m, int tipo) {
    char *texto = tipo == 4 ? m.emprestar(m.loja.diretorio()) : nullptr;
    return m.loja->aCFContingenciaUltimaNota_ZEL(tipo, texto);
}

constexpr auto kVendas = std::to_array<Operacao>({
    {"abertura", 20, 1, nada,
     [](Mesa &m) {
         if (m.volta > 0) m.loja->tCFCancelar_ZEL("", "", "", "", "");
     },
     [](Mesa &m) { return m.loja.abrir(), int{ZEL_OK}; }},
    {"venda_1", 20, 1, nada, abrirLimpo, vender<1>},
    {"venda_2", 20, 1, nada, venderTudo<1>, vender<2>},
    {"venda_10", 10, 1, nada, venderTudo<kItens - 1>, vender<kItens>},
    // Sold anew up to there each time: taking item 999 off again would rewrite the whole file, and
    // the sale after that finds its memory cold.
    {"venda_999", 3, 1, nada, venderTudo<kMuitos - 1>, vender<kMuitos>},
    // The same with a carrier, whose record follows those of the items.
    {"venda_1_transportadora", 20, 1, nada, abrirComTransportadora, vender<1>},
    {"venda_2_transportadora", 20, 1, nada, venderTransportados<1>, vender<2>},
    {"venda_999_transportadora", 3, 1, nada, venderTransportados<kMuitos - 1>, vender<kMuitos>},
    {"desconto_item", 20, 1, venderTudo<kItens>, tirarDesconto<5>, descontar<5>},
    {"desconto_item_de_999", 10, 1, venderTudo<kMuitos>, tirarDesconto<500>, descontar<500>},
    {"cancelamento_parcial", 20, 1, venderMuitoDeUm<kItens>, nada, cancelarParte<kItens>},
    {"cancelamento_parcial_de_999", 10, 1, venderMuitoDeUm<kMuitos>, nada, cancelarParte<kMuitos>},
    {"cancelamento_item", 20, 1, nada, venderTudo<kItens>,
     [](Mesa &m) { return m.loja->aCFCancelarItem_ZEL(5); }},
    {"totalizacao", 10, 1, nada, venderTudo<kItens>,
     [](Mesa &m) { return m.loja->aCFTotalizar_ZEL("", ""); }},
    {"totalizacao_rateio", 10, 1, nada, venderTudo<kItens>,
     [](Mesa &m) { return m.loja->aCFTotalizar_ZEL("D$", "5,00"); }},
    {"totalizacao_999", 1, 1, nada, venderTudo<kMuitos>,
     [](Mesa &m) { return m.loja->aCFTotalizar_ZEL("", ""); }},
    {"totalizacao_rateio_999", 1, 1, nada, venderTudo<kMuitos>,
     [](Mesa &m) { return m.loja->aCFTotalizar_ZEL("D$", "99,99"); }},
    {"pagamento_parte", 20, 1, totalizado, nada,
     [](Mesa &m) { return m.loja->aCFEfetuarPagamento_ZEL("Cheque", "0,10"); }},
    {"pagamento", 10, 1, nada, totalizado,
     [](Mesa &m) { return m.loja->aCFEfetuarPagamento_ZEL("Dinheiro", ""); }},
    {"correcao_pagamento", 20, 1,
     [](Mesa &m) {
         totalizado(m);
         exigir(m.loja->aCFEfetuarPagamento_ZEL("Dinheiro", "1,00"), "part");
         m.loja.pagar();
     },
     nada,
     [](Mesa &m) {
         const bool ida = m.volta % 2 == 0;
         return m.loja->aCFEstornarPagamento_ZEL(ida ? "Dinheiro" : "Cheque",
                                                 ida ? "Cheque" : "Dinheiro", "1,00");
     }},
    {"encerramento", 10, 1, nada, pago, [](Mesa &m) { return m.loja.encerrar(), int{ZEL_OK}; }},
});

constexpr auto kDocumentos = std::to_array<Operacao>({
    {"contingencia_parametros", 20, 1, encerrado, nada, [](Mesa &m) { return reemitir(m, 3); }},
    {"contingencia_arquivo", 20, 1, encerrado, nada, [](Mesa &m) { return reemitir(m, 4); }},
    {"cancelamento_documento", 20, 1, encerrado, nada,
     [](Mesa &m) { return m.loja->tCFCancelar_ZEL("", "", "", "", ""); }, ZEL_CANCELAMENTO_GRAVADO},
    {"cancelamento_offline", 20, 1, encerrado, nada,
     [](Mesa &m) {
         return m.loja->tCFCancelarOffline_ZEL("", "", "", "", m.emprestar(m.loja.diretorio()));
     }},
    {"inutilizacao", 20, 1, nada, nada,
     [](Mesa &m) { return m.loja->tCFInutilizar_ZEL("7", "9", "1", "Numeros perdidos"); }},
    {"consulta", 20, 1, nada, nada,
     [](Mesa &m) { return m.loja->GeraXMLConsulta_ZEL("NUM", "1", "9", "1", ""); }},
    {"estado", 20, 100, venderTudo<kItens>, nada,
     [](Mesa &m) { return m.loja->rCFVerificarStatus_ZEL(); }, 2},
    {"informacao", 20, 100, venderTudo<kItens>, nada,
     [](Mesa &m) { return m.loja->rInfoEstendida_ZEL("3", m.saida.data()); }},
    {"config_leitura", 20, 100, nada, nada,
     [](Mesa &m) { return m.loja->regRetornarValor_ZEL("EMIT\\xNome", m.saida.data()); }},
    {"config_alteracao", 20, 1, nada, nada,
     [](Mesa &m) {
         return m.loja->regAlterarValor_ZEL("PROD\\NCM", m.volta % 2 == 0 ? "22021000" : "22011000");
     }},
    {"config_sem_mudanca", 20, 10,
     [](Mesa &m) { exigir(m.loja->regAlterarValor_ZEL("PROD\\NCM", "22021000"), "PROD\\NCM"); },
     nada, [](Mesa &m) { return m.loja->regAlterarValor_ZEL("PROD\\NCM", "22021000"); }},
    {"preset_icms", 20, 100, abrirLimpo, nada,
     [](Mesa &m) { return m.loja->aCFConfICMS00_ZEL("0", "00", "0", "12,00"); }},
    {"preset_pis", 20, 100, abrirLimpo, nada,
     [](Mesa &m) { return m.loja->aCFConfPisAliq_ZEL("01", "1,65"); }},
    {"url_qrcode", 20, 100, impresso, nada,
     [](Mesa &m) { return m.loja->rURLQrcode_ZEL(m.saida.data()); }},
    {"ultimo_cupom", 20, 10, impresso, nada,
     [](Mesa &m) { return m.loja->RetornarUltimoBufferFormatadoNF_ZEL(m.saida.data()); }},
    {"pdf_danfe", 5, 1, impresso, nada,
     [](Mesa &m) { return m.loja->GeraPDF_DANFE_ZEL(m.base64.c_str()); }},
    {"pdf_listagem", 5, 1, impresso, nada,
     [](Mesa &m) { return m.loja->GeraPDF_ZEL(m.base64.c_str()); }},
    {"criptografar", 20, 1, impresso, nada,
     [](Mesa &m) {
         return m.loja->eCriptografarArquivo_ZEL(m.caminho("nota.xml").c_str(),
                                                 m.caminho("nota.cri").c_str(), "chave");
     }},
    {"descriptografar", 20, 1,
     [](Mesa &m) {
         impresso(m);
         exigir(m.loja->eCriptografarArquivo_ZEL(m.caminho("nota.xml").c_str(),
                                                 m.caminho("nota.cri").c_str(), "chave"),
                "eCriptografarArquivo_ZEL");
     },
     nada,
     [](Mesa &m) {
         return m.loja->eDescriptografarArquivo_ZEL(m.caminho("nota.cri").c_str(),
                                                    m.caminho("nota.txt").c_str(), "chave");
     }},
});

void registrarOperacao(const Base &base, const Operacao &operacao) {
    const std::string_view nome = operacao.nome;
    registrar(
        base, operacao.nome, nome.ends_with("999") ? kMuitos : kItens, operacao.voltas,
        operacao.lote,
        [base, operacao] {
            auto mesa = std::make_unique<Mesa>(base);
            operacao.preparar(*mesa);
            return mesa;
        },
        [operacao](Mesa &mesa) { operacao.repor(mesa); },
        [operacao](Mesa &mesa) {
            exigir(operacao.executar(mesa), operacao.nome, operacao.esperado);
            ++mesa.volta;
        });
}

} // namespace

void registrarOperacoes(const Base &base) {
    for (const Operacao &operacao : kVendas)
        registrarOperacao(base, operacao);
    for (const Operacao &operacao : kDocumentos)
        registrarOperacao(base, operacao);
}
