// SPDX-License-Identifier: MIT
// The flat picture of one NFC-e that printing works on: filled by GerenciadorImpressao from the
// document and its return, read by the sectors of the receipt and the QR-code address. Texts are
// ISO-8859-1 and are cut at the capacity of their field. Holds no rule but three derived values.
#pragma once

#include "comum/ChaveAcesso.h"
#include "texto/Campo.h"
#include "texto/Numero.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <string>
#include <string_view>
#include <vector>

namespace zel {

// Values of TipoEmissao that printing tells apart.
inline constexpr std::int32_t kEmissaoNormal = 1;
inline constexpr std::int32_t kEmissaoContingencia = 9;

// Values of the environment as a number.
inline constexpr int kProducao = 1;
inline constexpr int kHomologacao = 2;
inline constexpr int kLinkPronto = 3; // the return carried a ready-made consultation link

// Characters of a link or another content of a QR code: about what the largest code holds.
inline constexpr std::size_t kMaximoLink = 2000;

// A text of bounded length that is nearly always far shorter than its bound, or there in hundreds.
template <std::size_t Capacidade>
class TextoLongo {
public:
    TextoLongo &operator=(std::string_view texto) {
        texto_ = texto.substr(0, Capacidade);
        return *this;
    }
    operator std::string_view() const { return texto_; }
    bool vazio() const { return texto_.empty(); }

private:
    std::string texto_;
};

// One sold line.
struct Item {
    std::int32_t NumeroItem = 0; // attribute nItem
    Campo<20> CodigoProduto;
    TextoLongo<1023> DescricaoProduto;
    Campo<20> Quantidade; // as the document writes it
    Campo<9> Unidade;
    double ValorUnitario = 0;
    double ValorTotalItem = 0; // not in the document's line: the receipt computes it
};

struct Pagamento {
    std::int32_t FormaPgto = 0; // tPag
    double ValorPgto = 0;
};

struct CupomFiscal {
    Campo<60> Nome; // of the emitter
    Campo<2> UF;    // cUF, two digits
    std::int32_t TipoEmissao = 0;
    Campo<25> DataHora; // dhEmi as written
    Campo<ChaveAcesso::kDigitos> ChaveDeAcesso;
    Campo<20> CnpjCpf; // of the emitter, digits
    std::int32_t EmitNumero = 0;
    Campo<200> EmitLogradouro;
    Campo<50> EmitBairro;
    Campo<50> EmitMunicipio;
    Campo<2> EmitUF; // state letters
    Campo<200> EmitInscricaoEstadual;
    Campo<20> IdDest; // CPF or CNPJ punctuated, or a foreign id; empty without a consumer
    Campo<200> DestNome;
    Campo<200> DestLogradouro;
    std::int32_t DestNumero = 0;
    Campo<50> DestBairro;
    Campo<20> DestCodMunicipio;
    Campo<50> DestMunicipio;
    Campo<4> DestUF;
    Campo<20> DestCEP;
    double ValorTotal = 0;
    double ValorTotalTributos = 0; // approximate, as the law wants it on the receipt
    double ValorDesconto = 0;
    double ValorOutro = 0; // surcharge
    Campo<14> TotalICMS;   // as written
    Campo<10> NumeroNotaFiscal;
    Campo<10> Serie;
    Campo<2> CDV;
    const std::tm *Data = nullptr; // the caller's; printing takes dates from the texts
    Campo<4> TpAmp;                // tpAmb, spelt so: "1" production, "2" homologation
    Campo<1> TipoAmbiente; // that of TpAmp, or "3" for kLinkPronto: not the configuration's key
    Campo<17> ProtocoloSefaz;
    Campo<25> DataHoraAutorizacao;
    Campo<49> DigestValueAutorizado;  // base64
    TextoLongo<kMaximoLink> LinkNFCe; // consultation link delivered by the authorizer
    TextoLongo<5000> MsgPromocional;  // infCpl, its lines ended by "\n"
    std::vector<Item> Itens;          // in document order
    std::vector<Pagamento> Pagamentos;

    int ambiente() const { return static_cast<int>(lerInteiro(TipoAmbiente)); }

    // Prescribed; no exported function reaches it.
    double getValorTotalPago() const {
        double total = 0;
        for (const Pagamento &pagamento : Pagamentos)
            total += pagamento.ValorPgto;
        return total;
    }

    // The access key in groups of four, each followed by a blank, the last one too.
    std::string getChaveDeAcessoFormatado() const {
        constexpr std::size_t kGrupo = 4;
        std::string formatada;
        for (std::string_view resto = ChaveDeAcesso; !resto.empty();
             resto.remove_prefix(std::min(kGrupo, resto.size())))
            formatada.append(resto.substr(0, kGrupo)).append(1, ' ');
        return formatada;
    }

    // Prescribed, unused, always empty: dates come from DataHora and DataHoraAutorizacao.
    std::string_view getDataFormatada() const { return {}; }
};

// What printing keeps in memory from one receipt to the next, for the process.
struct DadosImpressao {
    // The last payment is printed as the customer gave it, change included. Set by
    // fnAnalisarParametrosImpressao.
    bool IndicadorTroco = false;
};

} // namespace zel
