// A till in a temporary directory: the shared object is copied there and loaded, so that its files
// stand beside the copy and no test sees another's. Owns the directory and removes it. Functions
// are called by their own names: caixa->aCFVender_ZEL(...). Golden files are compared here too.
#pragma once

#include "ZEL_FelborFramework.h"

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

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
    // Fails the test and gives null when the library does not export the name.
    Simbolo procurar(const char *nome);

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

class Caixa {
public:
    // Loads the library from a fresh, empty directory.
    Caixa();
    ~Caixa();
    Caixa(const Caixa &) = delete;
    Caixa &operator=(const Caixa &) = delete;

    const Funcoes *operator->() const { return funcoes_.get(); }
    const Funcoes &funcoes() const { return *funcoes_; }

    // What a new process finds: the library unloaded and loaded anew over the same files. The
    // application gets no chance to say goodbye.
    void reiniciar();

    // The same, with whatever the application does to the files in between.
    void parar();
    void iniciar();

    // Where the library keeps its files; ends in "/".
    std::string diretorio() const { return diretorio_.string() + "/"; }

    // Bytes of a file of the till; a missing file fails the test and reads as empty.
    std::string lerArquivo(std::string_view nome) const;
    bool existe(std::string_view nome) const;
    void escreverArquivo(std::string_view nome, std::string_view conteudo) const;

    // A configuration value by path, as the running library tells it; an unknown path fails the
    // test.
    std::string config(const char *chave) const;
    // Stores one; a refusal fails the test.
    void config(const char *chave, const char *valor) const;

    // The extended information of an index, asked with a buffer of exactly the documented size.
    std::string info(const char *indice) const;

private:
    std::filesystem::path diretorio_;
    int copia_ = 0;
    void *biblioteca_ = nullptr;
    std::unique_ptr<Funcoes> funcoes_;
};

// A document in the form of the golden files: one element a line, and what the clock decides
// (dhEmi, dhCont, the key, cDV) replaced by fixed text. Line ends within the document fail the
// test.
std::string mascarar(std::string_view documento);

// The text between the first start and end tag of an element; empty when there is none.
std::string elemento(std::string_view documento, std::string_view nome);

// Compares with the golden file of that name under tests/blackbox/golden. With ZEL_REGENERAR=1 in
// the environment the file is written instead.
void compararComOuro(std::string_view nome, std::string_view texto);
