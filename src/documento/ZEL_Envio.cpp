#include "documento/ZEL_Envio.h"

#include "ZEL_FelborFramework.h"
#include "documento/ZEL_ArquivoPendente.h"
#include "documento/ZEL_ArquivoPersistencia.h"
#include "util/Diretorio.h"
#include "util/Numero.h"
#include "util/Trava.h"

#include <vector>

namespace zel {

namespace {

ArquivoPendente envio(kArquivoDocumentos, "documentosEnvio.xml.tmp", Acesso::kUmask);
ArquivoPendente parametrosDoEnvio(kArquivoParametros, "parametrosEnvio.xml.tmp", Acesso::kUmask);

// A waiting document was committed when the configuration names its key, with no protocol yet: a
// reissue may have the key of a document that was authorized.
bool pertenceAConfiguracao(std::string_view documento) {
    const std::string_view chave = valorConfig(R"(NFCE\ChaveDeAcesso)"_chave);
    return !chave.empty() && valorConfig(R"(NFCE\ProtocoloAutorizacao)"_chave).empty() &&
           documento.ends_with("</NFe>") &&
           documento.find("Id=\"NFe" + std::string(chave) + "\"") != documento.npos;
}

} // namespace

int fnLimparEnvio() {
    const int parametros = parametrosDoEnvio.limpar();
    return parametros == ZEL_OK ? envio.limpar() : parametros;
}

int fnCriarArquivoEnvio(std::string_view nome, std::string_view texto) {
    if (const int limpo = fnLimparEnvio(); limpo != ZEL_OK) return limpo;
    return substituirArquivo(fnConfigurarPath(nome), texto, Acesso::kUmask);
}

int fnGravarDocumento_ZEL(std::string_view documento, const JuntoDoDocumento &junto) {
    if (const int limpo = fnLimparEnvio(); limpo != ZEL_OK) return limpo;
    std::vector<Espera> esperas;
    if (!junto.parametros.empty()) esperas.push_back({parametrosDoEnvio, junto.parametros, true});
    esperas.push_back({envio, documento});
    return junto.estrutura ? fnPersistComConfig_ZEL(junto.alteracoes, esperas)
                           : confirmarJuntos(esperas, junto.alteracoes);
}

void fnGuardarHistorico_ZEL(TipoCopia tipo, std::string_view texto) noexcept {
    try {
        const bool carimbado = lerInteiro(valorConfig(R"(CONFIGURACAO\HistoricoXML)"_chave)) != 0;
        fnReplicarDados(Direcao::kEnvio, tipo, valorConfig(R"(CONFIGURACAO\PathXMLEnvio)"_chave),
                        texto, carimbado);
    } catch (...) {
        // Memory ran out for a copy; what it copies has happened.
    }
}

int fnConcluirEnvio_ZEL() {
    std::string documento;
    const Leitura leitura = envio.lerPendente(documento);
    // What waits is settled by the process that has the receipt.
    const PosseDoCupom posse;
    if (leitura == Leitura::kFalha || (leitura == Leitura::kLido && !posse)) {
        envio.duvidar();
        parametrosDoEnvio.duvidar();
        return ZEL_ARQUIVO_INDISPONIVEL;
    }
    if (!posse) return ZEL_OK;
    // Parameters wait only while their document does.
    const int parametros = parametrosDoEnvio.resolver(
        [&](std::string_view) { return pertenceAConfiguracao(documento); });
    return parametros == ZEL_OK ? envio.resolver(pertenceAConfiguracao) : parametros;
}

} // namespace zel
