// SPDX-License-Identifier: MIT
// The library for C++17, header-only, made of the 47 functions alone: link the library itself.
//
//     zel_felbor::Cupom caixa("/var/lib/caixa1");
//     caixa.abrir();
//     caixa.vender(zel_felbor::Aliquota::mercadoria(18), 2, zel_felbor::Decimal("12,50"), "101",
//     "UN",
//                  "Café 500 g");
//     caixa.totalizar();
//     caixa.efetuarPagamento(zel_felbor::FormaPagamento::Dinheiro);
//     caixa.encerrar("Volte sempre");
//
//  1. Texts are UTF-8, converted to ISO-8859-1 strictly: a character that has no place there is
//     named, with its position and its argument, and nothing is called. Opcoes::transliterar
//     replaces typographic quotes, dashes, ellipses and blanks by plain ones. File names are not
//     converted.
//  2. A failure is thrown as Falha; with Opcoes::excecoes false it is the Resultado alone, and
//     nothing is ever thrown but std::bad_alloc.
//  3. The first Cupom of a process sets ZEL_DIRETORIO; make it before any other use of the library,
//     and before other threads are started. A second one is of the same directory.
//  4. Calls from several threads are made one after the other.
//
// What each function does with its arguments, and in which state, is in ZEL_FelborFramework.h.
#pragma once

#include "zel_felbor/andamento.hpp"
#include "zel_felbor/operacoes.hpp"

namespace zel_felbor {

// The receipt of one data directory.
class Cupom : public Operacoes {
public:
    // `diretorio` is absolute and exists; the library keeps its files there.
    explicit Cupom(std::string diretorio, Opcoes opcoes = {})
        : Operacoes(std::move(diretorio), opcoes) {}

    // The receipt in progress, for a till that was restarted; one that was closed is there until
    // the next is opened. None without a receipt. The library completes first what a process that
    // died left behind.
    Com<std::optional<Andamento>> lerAndamento() {
        const Com<std::string> troco = retornarValor("CONFIGURACAO\\TrocoUltimaNFCe");
        if (!troco) return {troco, std::nullopt};
        const Com<Estado> estado = verificarStatus();
        if (!estado || estado.valor < Estado::Aberto || estado.valor > Estado::Encerrado)
            return {estado, std::nullopt};
        std::string erro = "ArqPersist.bin: não pôde ser lido, ou é grande demais";
        std::optional<Andamento> lido;
        const std::optional<std::string> bytes = detalhe::lerArquivo(arquivo("ArqPersist.bin"));
        if (bytes && bytes->size() <= detalhe::maiorAndamento) {
            erro.clear();
            lido = andamentoDe(*bytes, erro);
        }
        if (!erro.empty())
            return concluir(Com<std::optional<Andamento>>(
                Resultado("rCFVerificarStatus_ZEL", ZEL_ARQUIVO_INDISPONIVEL, erro), std::nullopt));
        lido->estado = estado.valor;
        if (estado.valor >= Estado::Pago) lido->troco = troco.valor;
        return {estado, std::move(lido)};
    }

    // aCFContingenciaUltimaNota_ZEL of kind 1 (as the closing does), 3 or 5 (in contingency);
    // answers the document.
    Com<std::string> reemitir(int tipo) {
        Chamada c(*this, "aCFContingenciaUltimaNota_ZEL");
        const std::size_t tamanho = static_cast<std::size_t>(ZEL_TAMANHO_DOCUMENTO) + 65536 +
                                    2 * detalhe::tamanhoDoArquivo(arquivo("ArqPersist.bin"));
        c.invocar(::aCFContingenciaUltimaNota_ZEL, std::tuple{tipo, c.saida(tamanho)});
        return c.comTexto();
    }

    // aCFContingenciaUltimaNota_ZEL of kind 4: KEY.ctg in up to three directories; answers the path
    // of the last file.
    Com<std::string> contingencia(const std::vector<std::string> &diretorios) {
        Chamada c(*this, "aCFContingenciaUltimaNota_ZEL");
        c.invocar(::aCFContingenciaUltimaNota_ZEL,
                  std::tuple{4, c.diretorios("diretorios", diretorios)});
        return c.comCaminho();
    }

    // regAlterarValor_ZEL; a value that the key does not keep whole is taken back and refused.
    Resultado alterarValor(std::string_view chave, std::string_view valor) {
        if (opcoes().cortar) return Operacoes::alterarValor(chave, valor);
        const std::string nome(chave);
        const std::string antes = guardado(nome);
        const Resultado resultado = Operacoes::alterarValor(chave, valor);
        const std::string lido = guardado(nome);
        const std::string dado = paraLatin1("valor", valor, opcoes().transliterar).texto;
        if (!resultado || lido == dado) return resultado;
        Operacoes::alterarValor(chave, paraUtf8(antes));
        return concluir(Resultado("regAlterarValor_ZEL", ZEL_ARGUMENTO_INVALIDO,
                                  "valor: " + std::to_string(dado.size()) + " caracteres, de que " +
                                      nome + " guarda " + std::to_string(lido.size()) +
                                      "; nada mudou"));
    }

    // GerarArquivoFormatadoNF_ZEL of a sale: the receipt text with its printer mark-up. `retorno`
    // is the file of the tax authority's answer, which has to authorize the sale, or "OFFLINE" for
    // a document of contingency or without fiscal value; `semAutorizacao` lays any other out, too,
    // for a trial. `colunas` 42 or 48; the content of the QR code is built when none is given.
    Com<std::string> imprimir(const std::string &arquivoXml, const std::string &retorno,
                              int colunas = 48, const std::string &urlQrcode = "",
                              bool semAutorizacao = false) {
        return formatar(arquivoXml, retorno, urlQrcode, colunas, 1, semAutorizacao);
    }

    // The same of a cancellation request, which the answer has to have registered.
    Com<std::string> imprimirCancelamento(const std::string &arquivoXml, const std::string &retorno,
                                          int colunas = 48, bool semAutorizacao = false) {
        return formatar(arquivoXml, retorno, "", colunas, 5, semAutorizacao);
    }

private:
    // Bytes of a value; none where there is no such key, which the function that changes it says.
    static std::string guardado(const std::string &chave) {
        std::string valor(ZEL_TAMANHO_VALOR, '\0');
        const std::lock_guard<std::mutex> vez(detalhe::trava);
        ::regRetornarValor_ZEL(chave.c_str(), valor.data());
        return valor.c_str();
    }

    Com<std::string> formatar(const std::string &arquivoXml, const std::string &retorno,
                              const std::string &urlQrcode, int colunas, int tipo,
                              bool semAutorizacao) {
        Chamada c(*this, "GerarArquivoFormatadoNF_ZEL");
        const std::string documento = c.conteudo("arquivoXml", arquivoXml);
        std::optional<std::string> resposta;
        if (retorno != "OFFLINE") resposta = c.conteudo("arquivoRetorno", retorno);
        if (!semAutorizacao) c.conferirAutorizacao(documento, resposta, tipo == 5);
        const std::size_t tamanho = detalhe::tamanhoDoCupom(
            documento, resposta.value_or("").size(),
            detalhe::tamanhoDoArquivo(arquivo("ArqPersist.bin")), urlQrcode.size());
        c.invocar(::GerarArquivoFormatadoNF_ZEL,
                  std::tuple{c.caminho("arquivoXml", arquivoXml),
                             c.caminho("arquivoRetorno", retorno), c.texto("urlQrcode", urlQrcode),
                             colunas, tipo, "", c.saida(tamanho)});
        return c.comTexto();
    }
};

} // namespace zel_felbor
