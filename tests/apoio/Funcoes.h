// SPDX-License-Identifier: MIT
// The 47 functions of one loaded copy of the library, called by their own names. Whoever loaded the
// copy owns it and keeps it loaded; tests and benchmarks share this.
#pragma once

#include "ZEL_FelborFramework.h"

#include <dlfcn.h>

#include <stdexcept>
#include <string>

// The functions of one loaded copy of the library, each with the type that the header gives it.
class Funcoes {
public:
    explicit Funcoes(void *biblioteca) : biblioteca_(biblioteca) {}

private:
    // Converts to whichever function pointer it initialises.
    struct Simbolo {
        void *endereco;
        template <typename Funcao>
        operator Funcao *() const {
            return reinterpret_cast<Funcao *>(endereco);
        }
    };
    // Throws when the library does not export the name.
    Simbolo procurar(const char *nome) {
        void *endereco = dlsym(biblioteca_, nome);
        if (endereco == nullptr) throw std::runtime_error(std::string(nome) + " is not exported");
        return {endereco};
    }

    void *biblioteca_;

public:
    // clang-format off
    decltype(&::aCFInicializar_ZEL) aCFInicializar_ZEL = procurar("aCFInicializar_ZEL");
    decltype(&::aCFAbrir_ZEL) aCFAbrir_ZEL = procurar("aCFAbrir_ZEL");
    decltype(&::aCFAbrirNumSerie_ZEL) aCFAbrirNumSerie_ZEL = procurar("aCFAbrirNumSerie_ZEL");
    decltype(&::aCFIdentificarConsumidor_ZEL) aCFIdentificarConsumidor_ZEL = procurar("aCFIdentificarConsumidor_ZEL");
    decltype(&::aCFIdentificarTransportadora_ZEL) aCFIdentificarTransportadora_ZEL = procurar("aCFIdentificarTransportadora_ZEL");
    decltype(&::aCFVender_ZEL) aCFVender_ZEL = procurar("aCFVender_ZEL");
    decltype(&::aCFVenderCompleto_ZEL) aCFVenderCompleto_ZEL = procurar("aCFVenderCompleto_ZEL");
    decltype(&::aCFVenderXml_ZEL) aCFVenderXml_ZEL = procurar("aCFVenderXml_ZEL");
    decltype(&::aCFLancarDescontoItem_ZEL) aCFLancarDescontoItem_ZEL = procurar("aCFLancarDescontoItem_ZEL");
    decltype(&::aCFLancarAcrescimoItem_ZEL) aCFLancarAcrescimoItem_ZEL = procurar("aCFLancarAcrescimoItem_ZEL");
    decltype(&::aCFCancelarItem_ZEL) aCFCancelarItem_ZEL = procurar("aCFCancelarItem_ZEL");
    decltype(&::aCFCancelarItemParcial_ZEL) aCFCancelarItemParcial_ZEL = procurar("aCFCancelarItemParcial_ZEL");
    decltype(&::aCFCancelarDescontoItem_ZEL) aCFCancelarDescontoItem_ZEL = procurar("aCFCancelarDescontoItem_ZEL");
    decltype(&::aCFCancelarAcrescimoItem_ZEL) aCFCancelarAcrescimoItem_ZEL = procurar("aCFCancelarAcrescimoItem_ZEL");
    decltype(&::aCFTotalizar_ZEL) aCFTotalizar_ZEL = procurar("aCFTotalizar_ZEL");
    decltype(&::aCFEfetuarPagamento_ZEL) aCFEfetuarPagamento_ZEL = procurar("aCFEfetuarPagamento_ZEL");
    decltype(&::aCFEstornarPagamento_ZEL) aCFEstornarPagamento_ZEL = procurar("aCFEstornarPagamento_ZEL");
    decltype(&::aCFValorLeiImposto_ZEL) aCFValorLeiImposto_ZEL = procurar("aCFValorLeiImposto_ZEL");
    decltype(&::tCFEncerrar_ZEL) tCFEncerrar_ZEL = procurar("tCFEncerrar_ZEL");
    decltype(&::tCFEncerrarConfigMsg_ZEL) tCFEncerrarConfigMsg_ZEL = procurar("tCFEncerrarConfigMsg_ZEL");
    decltype(&::tCFCancelar_ZEL) tCFCancelar_ZEL = procurar("tCFCancelar_ZEL");
    decltype(&::tCFCancelarOffline_ZEL) tCFCancelarOffline_ZEL = procurar("tCFCancelarOffline_ZEL");
    decltype(&::tCFInutilizar_ZEL) tCFInutilizar_ZEL = procurar("tCFInutilizar_ZEL");
    decltype(&::GeraXMLConsulta_ZEL) GeraXMLConsulta_ZEL = procurar("GeraXMLConsulta_ZEL");
    decltype(&::aCFConfICMS00_ZEL) aCFConfICMS00_ZEL = procurar("aCFConfICMS00_ZEL");
    decltype(&::aCFConfICMS40_ZEL) aCFConfICMS40_ZEL = procurar("aCFConfICMS40_ZEL");
    decltype(&::aCFConfICMS60_ZEL) aCFConfICMS60_ZEL = procurar("aCFConfICMS60_ZEL");
    decltype(&::aCFConfPisAliq_ZEL) aCFConfPisAliq_ZEL = procurar("aCFConfPisAliq_ZEL");
    decltype(&::aCFConfPisQtde_ZEL) aCFConfPisQtde_ZEL = procurar("aCFConfPisQtde_ZEL");
    decltype(&::aCFConfPisNT_ZEL) aCFConfPisNT_ZEL = procurar("aCFConfPisNT_ZEL");
    decltype(&::aCFConfCofinsAliq_ZEL) aCFConfCofinsAliq_ZEL = procurar("aCFConfCofinsAliq_ZEL");
    decltype(&::aCFConfCofinsQtde_ZEL) aCFConfCofinsQtde_ZEL = procurar("aCFConfCofinsQtde_ZEL");
    decltype(&::aCFConfCofinsNT_ZEL) aCFConfCofinsNT_ZEL = procurar("aCFConfCofinsNT_ZEL");
    decltype(&::aCFConfPisOutr_ZEL) aCFConfPisOutr_ZEL = procurar("aCFConfPisOutr_ZEL");
    decltype(&::aCFConfCofinsOutr_ZEL) aCFConfCofinsOutr_ZEL = procurar("aCFConfCofinsOutr_ZEL");
    decltype(&::regAlterarValor_ZEL) regAlterarValor_ZEL = procurar("regAlterarValor_ZEL");
    decltype(&::regRetornarValor_ZEL) regRetornarValor_ZEL = procurar("regRetornarValor_ZEL");
    decltype(&::rCFVerificarStatus_ZEL) rCFVerificarStatus_ZEL = procurar("rCFVerificarStatus_ZEL");
    decltype(&::rInfoEstendida_ZEL) rInfoEstendida_ZEL = procurar("rInfoEstendida_ZEL");
    decltype(&::rURLQrcode_ZEL) rURLQrcode_ZEL = procurar("rURLQrcode_ZEL");
    decltype(&::aCFContingenciaUltimaNota_ZEL) aCFContingenciaUltimaNota_ZEL = procurar("aCFContingenciaUltimaNota_ZEL");
    decltype(&::GerarArquivoFormatadoNF_ZEL) GerarArquivoFormatadoNF_ZEL = procurar("GerarArquivoFormatadoNF_ZEL");
    decltype(&::RetornarUltimoBufferFormatadoNF_ZEL) RetornarUltimoBufferFormatadoNF_ZEL = procurar("RetornarUltimoBufferFormatadoNF_ZEL");
    decltype(&::GeraPDF_ZEL) GeraPDF_ZEL = procurar("GeraPDF_ZEL");
    decltype(&::GeraPDF_DANFE_ZEL) GeraPDF_DANFE_ZEL = procurar("GeraPDF_DANFE_ZEL");
    decltype(&::eCriptografarArquivo_ZEL) eCriptografarArquivo_ZEL = procurar("eCriptografarArquivo_ZEL");
    decltype(&::eDescriptografarArquivo_ZEL) eDescriptografarArquivo_ZEL = procurar("eDescriptografarArquivo_ZEL");
    // clang-format on
};
