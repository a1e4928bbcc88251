// SPDX-License-Identifier: MIT
// zel cancelar: the receipt in progress, or a request to cancel a document.
#include "comandos/ComandoComum.h"

#include "comandos/Biblioteca.h"
#include "comum/ArquivosDoCaixa.h"
#include "comum/Digitos.h"
#include "comum/EstadoDoCupom.h"
#include "leitura/Cupom.h"
#include "leitura/Pedido.h"
#include "leitura/Terminal.h"
#include "leitura/Texto.h"

#include "ZEL_FelborFramework.h"

namespace zel::aplicativo {

namespace {

constexpr std::size_t kMaiorJustificativa = 99;

struct Documento {
    std::string chave, protocolo;
};

int cancelarCupom(const Argumentos &argumentos) {
    if (!argumentos.justificativa.empty() || !argumentos.protocolo.empty())
        return usoErrado(kCancelar, "o cupom em andamento não leva justificativa nem protocolo; um "
                                    "documento se cancela pela CHAVE");
    const int codigo = tCFCancelar_ZEL("", "", "", "", "");
    if (codigo < ZEL_OK) return recusar("cancelar o cupom em andamento", codigo);
    escreverLinhas(argumentos, {{"resultado", "Resultado", "cancelado"},
                                {"estado", "Estado do cupom", digitoENome(kCancelado)}});
    return kLimpo;
}

int pedirCancelamento(const Argumentos &argumentos, const std::string &diretorio,
                      const Documento &documento) {
    const std::string escrita = argumento(argumentos.justificativa.c_str());
    if (!escrita.empty())
        if (const std::string erro = conferirJustificativa(escrita, kMaiorJustificativa);
            !erro.empty())
            return usoErrado(kCancelar, erro);
    const auto justificativa = textoDado("--justificativa", argumentos.justificativa);
    if (!justificativa) return kComErros;
    const NumeroESerie dele = numeroDaChave(documento.chave);
    const int codigo =
        tCFCancelar_ZEL(dele.numero.c_str(), dele.serie.c_str(), documento.chave.c_str(),
                        documento.protocolo.c_str(), justificativa->c_str());
    if (codigo < ZEL_OK) return recusar("pedir o cancelamento", codigo);
    const std::string aviso = documento.protocolo.empty()
                                  ? "sem protocolo a SEFAZ recusa o pedido: dê --protocolo, ou "
                                    "imprima antes com --retorno"
                                  : "";
    escreverLinhas(argumentos,
                   {{"resultado", "Resultado", "pedido gravado"},
                    {"numero", "Número", dele.numero},
                    {"serie", "Série", dele.serie},
                    {"chave", "Chave de acesso", documento.chave},
                    {"protocolo", "Protocolo", documento.protocolo},
                    {"aviso", "Aviso", aviso},
                    {"documento", "Pedido",
                     argumento((std::string(diretorio).append(arquivos::kEnvio)).c_str())}});
    return aviso.empty() ? kLimpo : kComAvisos;
}

// The last document: the one closed last, as long as no other one was printed since.
int cancelarUltimo(const Argumentos &argumentos, const std::string &diretorio) {
    Documento ultimo{configuracao(R"(NFCE\ChaveDeAcesso)"),
                     configuracao(R"(NFCE\ProtocoloAutorizacao)")};
    if (!ehChaveIntegra(ultimo.chave)) return falhar("não há um último documento a cancelar");
    const NumeroESerie dele = numeroDaChave(ultimo.chave);
    const std::string numero = configuracao(R"(IDE\nNF)");
    if (lerInteiro(numero) != lerInteiro(dele.numero) ||
        lerInteiro(configuracao(R"(IDE\Serie)")) != lerInteiro(dele.serie))
        return falhar(
            juntar({"o último documento é o número ", numero, ", mas o impresso por último é o ",
                    dele.numero, ": diga a CHAVE do que se cancela, e --protocolo"}));
    if (!argumentos.protocolo.empty()) ultimo.protocolo = argumentos.protocolo;
    return pedirCancelamento(argumentos, diretorio, ultimo);
}

int cancelar(const Argumentos &argumentos) {
    if (argumentos.palavras.size() > 1) return usoErrado(kCancelar, "há argumentos demais");
    if (!argumentos.protocolo.empty() &&
        (!soDigitos(argumentos.protocolo) || argumentos.protocolo.size() != 15))
        return usoErrado(kCancelar, "o protocolo tem 15 dígitos");
    const bool comChave = !argumentos.palavras.empty();
    if (comChave && !ehChaveIntegra(argumentos.palavras.front()))
        return usoErrado(kCancelar, juntar({argumentos.palavras.front(),
                                            ": não é uma chave de acesso; confira os 44 dígitos"}));
    const auto diretorio = prepararDiretorio(argumentos);
    if (!diretorio) return kComErros;
    if (comChave)
        return pedirCancelamento(argumentos, *diretorio,
                                 {argumentos.palavras.front(), argumentos.protocolo});
    const int estado = estadoDoCupom();
    if (estado >= kAberto && estado < kEncerrado) return cancelarCupom(argumentos);
    if (estado == kEncerrado) return cancelarUltimo(argumentos, *diretorio);
    return falhar(juntar({"não há o que cancelar (estado ", digitoENome(estado),
                          "); um documento se cancela com a CHAVE e --protocolo"}));
}

} // namespace

const Comando kCancelar = {
    "cancelar",
    "cancelar [--protocolo NÚMERO] [--justificativa TEXTO]\n"
    "cancelar CHAVE --protocolo NÚMERO [--justificativa TEXTO]",
    "Cancela o cupom em andamento, ou pede o cancelamento de um documento.",
    "Sem CHAVE: o cupom em andamento, se há um; se não, o último documento encerrado. De um\n"
    "documento o pedido fica em documentosEnvio.xml, para o componente de envio: cancelado ele\n"
    "só está quando a SEFAZ responder.\n"
    "CHAVE é a chave de acesso, de 44 dígitos.\n"
    "--protocolo NÚMERO é o da autorização; o do último documento fica guardado quando ele é\n"
    "impresso com a resposta da SEFAZ. Sem nenhum o pedido é gravado e a saída é 1.\n"
    "--justificativa TEXTO tem de 15 a 99 caracteres; sem ela, \"Cancelamento de NFCe\".\n"
    "--diretorio DIR escolhe o diretório de dados.\n",
    kJson | kDiretorioDado | kJustificativa | kProtocolo,
    cancelar,
};

} // namespace zel::aplicativo
