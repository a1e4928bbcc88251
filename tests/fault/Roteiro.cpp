// SPDX-License-Identifier: MIT
#include "fault/Roteiro.h"

#include "apoio/Retorno.h"

#include <cstdio>
#include <cstring>

namespace {

using F = const Funcoes &;
using D = const std::string &;

int abrir(F f, D) {
    return f.aCFAbrir_ZEL("12345678909", "Maria", "", "", "", "", "", "", "");
}
int vender(F f, D) {
    return f.aCFVender_ZEL("T1800", "2", "10,00", "", "", "1", "UN", "Produto");
}
int totalizar(F f, D) {
    return f.aCFTotalizar_ZEL("D$", "1,00");
}
int pagar(F f, D) {
    return f.aCFEfetuarPagamento_ZEL("dinheiro", "");
}
int encerrar(F f, D) {
    return f.tCFEncerrar_ZEL("obrigado");
}

int reemitir(F f, int tipo) {
    std::vector<char> texto(ZEL_TAMANHO_DOCUMENTO);
    return f.aCFContingenciaUltimaNota_ZEL(tipo, texto.data());
}

// Prints the document in documentosEnvio.xml with the return that an authorization gives.
int imprimir(F f, D diretorio) {
    const std::string documento = diretorio + "documentosEnvio.xml",
                      retorno = diretorio + "retorno.xml";
    char chave[ZEL_TAMANHO_VALOR];
    f.regRetornarValor_ZEL("NFCE\\ChaveDeAcesso", chave);
    // Not one of the calls that are watched, as those of a stream are.
    std::FILE *arquivo = std::fopen(retorno.c_str(), "w");
    if (arquivo == nullptr) return 0;
    std::fputs(retornoAutorizado(chave).c_str(), arquivo);
    std::fclose(arquivo);
    std::vector<char> cupom(ZEL_TAMANHO_CUPOM);
    return f.GerarArquivoFormatadoNF_ZEL(documento.c_str(), retorno.c_str(), "", 48, 1, "",
                                         cupom.data());
}

// Directories in, the path of the last file out.
template <class Operacao>
int nosDiretorios(D diretorio, Operacao operacao) {
    std::vector<char> texto(ZEL_TAMANHO_DIRETORIOS);
    std::memcpy(texto.data(), diretorio.c_str(), diretorio.size() + 1);
    return operacao(texto.data());
}

const std::vector<Roteiro> kRoteiros{
    {"venda",
     {
         {"inicializar", [](F f, D) { return f.aCFInicializar_ZEL(); }},
         {"alterar um valor", [](F f, D) { return f.regAlterarValor_ZEL("IDE\\indPres", "4"); }},
         {"alterar dois bytes", [](F f, D) { return f.regAlterarValor_ZEL("PROD\\CFOP", "5403"); }},
         {"abrir", abrir},
         {"identificar consumidor",
          [](F f, D) {
              return f.aCFIdentificarConsumidor_ZEL("11222333000181", "Empresa", "", "", "", "", "",
                                                    "", "", "");
          }},
         {"primeira venda", vender},
         {"segunda venda",
          [](F f, D) {
              return f.aCFVenderCompleto_ZEL("I", "1", "39,90", "A$", "0,50", "303", "04061010",
                                             "5102", "KG", "Queijo", "");
          }},
         {"terceira venda", vender},
         {"quarta venda", vender},
         {"desconto no item", [](F f, D) { return f.aCFLancarDescontoItem_ZEL(1, "D%", "10"); }},
         {"acrescimo no item", [](F f, D) { return f.aCFLancarAcrescimoItem_ZEL(3, "A$", "1"); }},
         {"cancelar desconto", [](F f, D) { return f.aCFCancelarDescontoItem_ZEL(1); }},
         {"cancelar acrescimo", [](F f, D) { return f.aCFCancelarAcrescimoItem_ZEL(3); }},
         {"cancelar parte", [](F f, D) { return f.aCFCancelarItemParcial_ZEL(3, "0,5"); }},
         {"cancelar item", [](F f, D) { return f.aCFCancelarItem_ZEL(4); }},
         {"transportadora",
          [](F f, D) {
              return f.aCFIdentificarTransportadora_ZEL("11222333000181", "Transportes", "12",
                                                        "Rua A", "Curitiba", "PR");
          }},
         {"totalizar com rateio", totalizar},
         // Whatever becomes of this one, there is no change.
         {"primeiro pagamento", [](F f, D) { return f.aCFEfetuarPagamento_ZEL("dinheiro", "5"); },
          true},
         {"segundo pagamento", [](F f, D) { return f.aCFEfetuarPagamento_ZEL("03", "6"); }},
         {"ultimo pagamento", pagar},
         {"estornar", [](F f, D) { return f.aCFEstornarPagamento_ZEL("03", "02", "6"); }},
         {"encerrar", encerrar},
         {"imprimir", [](F f, D d) { return imprimir(f, d); }, true},
         {"pedir cancelamento", [](F f, D) { return f.tCFCancelar_ZEL("", "", "", "", ""); }},
     }},
    {"cancelamento",
     {
         {"abrir com numero",
          [](F f, D) { return f.aCFAbrirNumSerie_ZEL(41, 2, "", "", "", "", "", "", "", "", ""); },
          // Number and series stay, whatever becomes of the opening.
          true,
          [](F f, D) {
              f.regAlterarValor_ZEL("IDE\\nNF", "41");
              return f.regAlterarValor_ZEL("IDE\\Serie", "2");
          }},
         {"vender", vender},
         {"cancelar o cupom aberto", [](F f, D) { return f.tCFCancelar_ZEL("", "", "", "", ""); }},
         {"abrir outro", abrir},
         {"vender no outro", vender},
         {"totalizar o outro", totalizar},
         {"pagar o outro", pagar},
         {"encerrar com mensagens",
          [](F f, D) { return f.tCFEncerrarConfigMsg_ZEL("volte", "fisco"); }},
         {"inutilizar", [](F f, D) { return f.tCFInutilizar_ZEL("7", "9", "1", "perdidos"); }},
         {"consultar", [](F f, D) { return f.GeraXMLConsulta_ZEL("NUM", "0", "0", "1", nullptr); },
          true},
         {"cancelar fora da linha",
          [](F f, D d) {
              return nosDiretorios(
                  d, [&](char *texto) { return f.tCFCancelarOffline_ZEL("", "", "", "", texto); });
          }},
     }},
    {"contingencia",
     {
         {"abrir", abrir},
         {"vender", vender},
         {"totalizar", totalizar},
         {"pagar", pagar},
         {"encerrar", encerrar},
         {"pedir o PDF",
          [](F f, D) { return f.regAlterarValor_ZEL("CONFIGURACAO\\SalvarDanfePDF", "1"); }},
         {"imprimir com PDF", [](F f, D d) { return imprimir(f, d); }, true},
         {"reemitir o autorizado", [](F f, D) { return reemitir(f, 5); }},
         {"reemitir com outro numero", [](F f, D) { return reemitir(f, 1); }},
         {"substituir", [](F f, D) { return reemitir(f, 3); }},
         {"reemitir com o mesmo numero", [](F f, D) { return reemitir(f, 5); }},
         {"embaralhar",
          [](F f, D d) {
              return f.eCriptografarArquivo_ZEL((d + "documentosEnvio.xml").c_str(),
                                                (d + "embaralhado").c_str(), "chave");
          }},
         {"desembaralhar",
          [](F f, D d) {
              return f.eDescriptografarArquivo_ZEL((d + "embaralhado").c_str(),
                                                   (d + "claro").c_str(), "chave");
          }},
         {"abrir o seguinte", abrir},
     }},
    {"fora_da_linha",
     {
         {"abrir", abrir},
         {"vender", vender},
         {"totalizar", totalizar},
         {"pagar", pagar},
         {"encerrar", encerrar},
         // Code and key are stored before the file appears.
         {"reemitir em arquivo",
          [](F f, D d) {
              return nosDiretorios(
                  d, [&](char *texto) { return f.aCFContingenciaUltimaNota_ZEL(4, texto); });
          },
          true, nullptr, true},
     }},
};

} // namespace

const std::vector<Roteiro> &roteiros() {
    return kRoteiros;
}
