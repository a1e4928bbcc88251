// SPDX-License-Identifier: MIT
// The C++17 layer of libzel-envio: teste_envio NOTA CONFIGURATION_OF_A_TILL. Ends with 1 and what
// failed.
#include "zel_envio.hpp"

#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <iterator>
#include <vector>

using namespace zel_envio_cpp;

namespace {

int falhas = 0;

void conferir(bool certo, const std::string &oque) {
    if (certo) return;
    std::cout << "failed: " << oque << '\n';
    ++falhas;
}

void contido(const std::string &parte, const std::string &texto) {
    conferir(texto.find(parte) != texto.npos, "no \"" + parte + "\" in " + texto.substr(0, 300));
}

void traduzida(const std::string &nota) {
    Envio envio;
    conferir(envio.tipo() == Tipo::Nenhum && envio.ler(nota) == Tipo::Nfce, "kind");
    Complemento complemento;
    complemento.troco = "2.00";
    envio.completar(complemento);
    envio.traduzir();
    contido("<vTroco>2.00</vTroco>", envio.mensagem());
    const std::string chave = envio.valor("chave");
    conferir(chave.size() == 44, "key: " + chave);
    const Envio outro = std::move(envio); // the document goes along
    conferir(outro.tipo() == Tipo::Nfce, "moved");
}

void mostrada(const std::string &nota) {
    Envio envio;
    envio.ler(nota);
    contido("São Paulo", envio.mostrar());
    const std::string chave = envio.valor("chave");
    envio.traduzir();
    std::string comQrCode = envio.mensagem();
    comQrCode.insert(comQrCode.find("</NFe>"), "<infNFeSupl><qrCode>http://x/?p=1</qrCode>"
                                               "<urlChave>http://x</urlChave></infNFeSupl>");
    envio.ler(comQrCode);
    const Impressao semConexao = envio.impressaoOffline();
    contido("S\xE3o Paulo", semConexao.documento);
    const Impressao respondida =
        envio.impressao("<protNFe><infProt><chNFe>" + chave +
                        "</chNFe><nProt>7</nProt><cStat>100</cStat></infProt></protNFe>");
    contido("<DocProtocolo>7<", respondida.retorno);
}

// What a till without a certificate begins with, and why one thing after the other is refused.
void primeira(const std::string &caixa, const std::string &nota) {
    Envio envio;
    contido("\narquivo = 'c.pfx'", envio.primeiraConfiguracao(caixa, {"c.pfx", "s.txt", ""}));
    conferir(envio.certificadoDeEnsaio("ENSAIO", "11222333000181", "segredo")[0] == '\x30',
             "no PKCS#12");
    std::string errada = nota;
    errada.replace(errada.find(">5102<"), 6, ">1<");
    envio.ler(errada);
    for (const auto &[chamada, campo] :
         {std::pair{std::function([](Envio &e) { e.traduzir(); }), "CFOP"},
          {[](Envio &e) { e.configurarTexto("a = 1\n"); }, "a"}}) {
        try {
            chamada(envio);
            conferir(false, std::string("not refused: ") + campo);
        } catch (const Falha &falha) {
            contido(campo, falha.recusas().at(0).campo);
        }
    }
    try {
        envio.certificadoDeEnsaio("ENSAIO", "1", "segredo");
        conferir(false, "a certificate without a CNPJ");
    } catch (const Falha &falha) {
        conferir(falha.codigo() == ZEL_ENVIO_ARGUMENTO, falha.what());
    }
}

// Nobody listens at port 9: nothing goes out. `pasta` ends with "/".
void transmitida(const std::string &pasta, const std::string &nota) {
    Envio envio;
    std::ofstream(pasta + "c.pfx", std::ios::binary)
        << envio.certificadoDeEnsaio("ENSAIO", "11222333000181", "segredo");
    std::ofstream(pasta + "senha.txt") << "segredo\n";
    std::filesystem::permissions(pasta + "senha.txt", std::filesystem::perms::owner_read);
    envio.configurarTexto("[certificado]\narquivo = 'c.pfx'\nsenha_arquivo = 'senha.txt'\n"
                          "[qrcode]\nversao = 3\n[servicos]\n"
                          "NfeAutorizacao = 'https://127.0.0.1:9/x'\n",
                          pasta);
    envio.ler(nota);
    Transmitir como;
    como.caixa = pasta;
    const Transmissao feita = envio.transmitir(como);
    conferir(feita.situacao == Situacao::NaoEnviado && !feita.autorizado(), feita.motivo);
    conferir(feita.chave.size() == 44 && feita.resposta.empty(), "key: " + feita.chave);
    contido("\"estado\":\"retirado\"", envio.procurar("chave=" + feita.chave));
    contido("\"esperam\":0", envio.estado());
    conferir(envio.exportar("2026-11", pasta + "mes.zip") == 0, "kept");
    envio.continuar();
    try {
        envio.servico("XX");
        conferir(false, "a state that there is not");
    } catch (const Falha &falha) {
        contido("cUF", falha.detalhe());
    }
}

void recusadas(const std::string &nota) {
    const struct {
        std::function<void(Envio &)> chamada;
        int codigo;
        std::vector<std::string> ditos;
    } kCasos[] = {
        {[](Envio &e) { e.configurarTexto("a = 1\nb = 2\n"); }, ZEL_ENVIO_CONFIGURACAO, {"a", "b"}},
        {[](Envio &e) { e.configurar("/nao/ha.toml"); }, ZEL_ENVIO_CONFIGURACAO, {"/nao/ha.toml"}},
        {[](Envio &e) { e.ler("<Nada/>"); }, ZEL_ENVIO_ILEGIVEL, {"Nada"}},
        {[](Envio &e) { e.ler(""); }, ZEL_ENVIO_ILEGIVEL, {}},
        {[](Envio &e) { e.assinar(); }, ZEL_ENVIO_CERTIFICADO, {"certificado"}},
        {[](Envio &e) { e.verificar(); }, ZEL_ENVIO_ORDEM, {"3.10"}},
        {[](Envio &e) { e.impressao(""); }, ZEL_ENVIO_ILEGIVEL, {"resposta"}},
        {[](Envio &e) { e.mensagem(); }, ZEL_ENVIO_ORDEM, {}},
    };
    for (const auto &caso : kCasos) {
        Envio envio;
        envio.ler(nota);
        try {
            caso.chamada(envio);
            conferir(false, "not refused with " + std::to_string(caso.codigo));
        } catch (const Falha &falha) {
            conferir(falha.codigo() == caso.codigo, falha.what());
            for (const std::string &dito : caso.ditos)
                contido(dito, falha.detalhe());
            contido(falha.detalhe(), falha.what());
            conferir(falha.recusas().empty() == falha.detalhe().empty(), falha.what());
            for (const Recusa &recusa : falha.recusas())
                contido(recusa.motivo, falha.detalhe());
        }
    }
    try {
        Envio().valor("nenhum");
        conferir(false, "an unknown fact");
    } catch (const std::out_of_range &) { // as it must be
    }
}

std::string lido(const char *nome) {
    std::ifstream arquivo(nome, std::ios::binary);
    return {std::istreambuf_iterator<char>(arquivo), {}};
}

} // namespace

int main(int quantos, char **argumentos) {
    if (quantos != 3) return 2;
    const std::string nota = lido(argumentos[1]);
    traduzida(nota);
    mostrada(nota);
    primeira(lido(argumentos[2]), nota);
    const std::string configuracao = argumentos[2];
    transmitida(configuracao.substr(0, configuracao.rfind('/') + 1), nota);
    recusadas(nota);
    return falhas == 0 ? 0 : 1;
}
