// SPDX-License-Identifier: MIT
#include "fault/Roteiro.h"

#include "apoio/Chamadas.h"
#include "apoio/Retorno.h"

#include <cstdio>

namespace {

using F = const Funcoes &;
using D = const std::string &;

// In the arguments "./" is the till's directory.
template <class... Textos>
Acao chamar(const char *funcao, const Textos &...textos) {
    return [pedido = Pedido(funcao, textos...)](F f, D diretorio) {
        Pedido este = pedido;
        for (Texto &texto : este.argumentos)
            if (texto && texto->starts_with("./")) texto->replace(0, 2, diretorio);
        return fazer(f, este);
    };
}

// Prints the document in documentosEnvio.xml with the return that an authorization gives.
int imprimir(F f, D diretorio) {
    char chave[ZEL_TAMANHO_VALOR];
    f.regRetornarValor_ZEL("NFCE\\ChaveDeAcesso", chave);
    // Not one of the calls that are watched, as those of a stream are.
    std::FILE *arquivo = std::fopen((diretorio + "retorno.xml").c_str(), "w");
    if (arquivo == nullptr) return 0;
    std::fputs(retornoAutorizado(chave).c_str(), arquivo);
    std::fclose(arquivo);
    return chamar("GerarArquivoFormatadoNF_ZEL", "./documentosEnvio.xml", "./retorno.xml", "", "48",
                  "1")(f, diretorio);
}

const Acao kAbrir = chamar("aCFAbrir_ZEL", "12345678909", "Maria");
const Acao kVender = chamar("aCFVender_ZEL", "T1800", "2", "10,00", "", "", "1", "UN", "Produto");
const Acao kTotalizar = chamar("aCFTotalizar_ZEL", "D$", "1,00");
const Acao kPagar = chamar("aCFEfetuarPagamento_ZEL", "dinheiro");
const Acao kEncerrar = chamar("tCFEncerrar_ZEL", "obrigado");
const Acao kCancelar = chamar("tCFCancelar_ZEL");

Acao reemitir(const char *tipo, const char *texto = "") {
    return chamar("aCFContingenciaUltimaNota_ZEL", tipo, texto);
}
Acao alterar(const char *chave, const char *valor) {
    return chamar("regAlterarValor_ZEL", chave, valor);
}

// A whole receipt, and what comes after it.
std::vector<Passo> depoisDaVenda(const std::vector<Passo> &passos) {
    std::vector<Passo> todos{{"abrir", kAbrir},
                             {"vender", kVender},
                             {"totalizar", kTotalizar},
                             {"pagar", kPagar},
                             {"encerrar", kEncerrar}};
    todos.insert(todos.end(), passos.begin(), passos.end());
    return todos;
}

const std::vector<Roteiro> kRoteiros{
    {"venda",
     {
         {"inicializar", chamar("aCFInicializar_ZEL")},
         {"alterar um valor", alterar("IDE\\indPres", "4")},
         {"alterar dois bytes", alterar("PROD\\CFOP", "5403")},
         {"abrir", kAbrir},
         {"identificar consumidor",
          chamar("aCFIdentificarConsumidor_ZEL", "11222333000181", "Empresa")},
         {"primeira venda", kVender},
         {"segunda venda", chamar("aCFVenderCompleto_ZEL", "I", "1", "39,90", "A$", "0,50", "303",
                                  "04061010", "5102", "KG", "Queijo")},
         {"terceira venda", kVender},
         {"quarta venda", kVender},
         {"desconto no item", chamar("aCFLancarDescontoItem_ZEL", "1", "D%", "10")},
         {"acrescimo no item", chamar("aCFLancarAcrescimoItem_ZEL", "3", "A$", "1")},
         {"cancelar desconto", chamar("aCFCancelarDescontoItem_ZEL", "1")},
         {"cancelar acrescimo", chamar("aCFCancelarAcrescimoItem_ZEL", "3")},
         {"cancelar parte", chamar("aCFCancelarItemParcial_ZEL", "3", "0,5")},
         {"cancelar item", chamar("aCFCancelarItem_ZEL", "4")},
         {"transportadora", chamar("aCFIdentificarTransportadora_ZEL", "11222333000181",
                                   "Transportes", "12", "Rua A", "Curitiba", "PR")},
         {"totalizar com rateio", kTotalizar},
         // Whatever becomes of this one, there is no change.
         {"primeiro pagamento", chamar("aCFEfetuarPagamento_ZEL", "dinheiro", "5"), true},
         {"segundo pagamento", chamar("aCFEfetuarPagamento_ZEL", "03", "6")},
         {"ultimo pagamento", kPagar},
         {"estornar", chamar("aCFEstornarPagamento_ZEL", "03", "02", "6")},
         {"encerrar", kEncerrar},
         {"imprimir", imprimir, true},
         {"pedir cancelamento", kCancelar},
     }},
    {"cancelamento",
     {
         // Number and series stay, whatever becomes of the opening.
         {"abrir com numero", chamar("aCFAbrirNumSerie_ZEL", "41", "2"), true,
          [](F f, D) {
              f.regAlterarValor_ZEL("IDE\\nNF", "41");
              return f.regAlterarValor_ZEL("IDE\\Serie", "2");
          }},
         {"vender", kVender},
         {"cancelar o cupom aberto", kCancelar},
         {"abrir outro", kAbrir},
         {"vender no outro", kVender},
         {"totalizar o outro", kTotalizar},
         {"pagar o outro", kPagar},
         {"encerrar com mensagens", chamar("tCFEncerrarConfigMsg_ZEL", "volte", "fisco")},
         {"inutilizar", chamar("tCFInutilizar_ZEL", "7", "9", "1", "perdidos")},
         {"consultar", chamar("GeraXMLConsulta_ZEL", "NUM", "0", "0", "1", kNulo), true},
         {"cancelar fora da linha", chamar("tCFCancelarOffline_ZEL", "", "", "", "", "./")},
     }},
    {"contingencia", depoisDaVenda({
                         {"pedir o PDF", alterar("CONFIGURACAO\\SalvarDanfePDF", "1")},
                         {"imprimir com PDF", imprimir, true},
                         {"reemitir o autorizado", reemitir("5")},
                         {"reemitir com outro numero", reemitir("1")},
                         {"substituir", reemitir("3")},
                         {"reemitir com o mesmo numero", reemitir("5")},
                         {"embaralhar", chamar("eCriptografarArquivo_ZEL", "./documentosEnvio.xml",
                                               "./embaralhado", "chave")},
                         {"desembaralhar", chamar("eDescriptografarArquivo_ZEL", "./embaralhado",
                                                  "./claro", "chave")},
                         {"abrir o seguinte", kAbrir},
                     })},
    // Code and key are stored before the file appears.
    {"fora_da_linha",
     depoisDaVenda({{"reemitir em arquivo", reemitir("4", "./"), true, nullptr, true}})},
};

} // namespace

const std::vector<Roteiro> &roteiros() {
    return kRoteiros;
}
