// SPDX-License-Identifier: MIT
#include "api/Alca.h"
#include "api/FilaEmJson.h"

#include "assinatura/Certificado.h"
#include "assinatura/Ensaio.h"
#include "base/Texto.h"
#include "comum/Ascii.h"
#include "comum/ChaveAcesso.h"
#include "config/Configuracao.h"
#include "config/Primeira.h"
#include "documento/Conferencia.h"
#include "documento/Impressao.h"
#include "documento/Leitura.h"
#include "fluxo/Entrega.h"

#include <cstdlib>
#include <cstring>
#include <ctime>
#include <exception>
#include <iterator>
#include <new>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

using namespace zel::envio;

static_assert(int{ZEL_ENVIO_CONFIGURACAO} == static_cast<int>(Passo::kConfiguracao));
static_assert(int{ZEL_ENVIO_TRADUCAO} == static_cast<int>(Passo::kTraducao));
static_assert(int{ZEL_ENVIO_CERTIFICADO} == static_cast<int>(Passo::kCertificado));
static_assert(int{ZEL_ENVIO_ASSINATURA} == static_cast<int>(Passo::kAssinatura));
static_assert(int{ZEL_ENVIO_ESQUEMA} == static_cast<int>(Passo::kEsquema));
static_assert(int{ZEL_ENVIO_REPROVADO} == static_cast<int>(Passo::kReprovado));
static_assert(int{ZEL_ENVIO_ORDEM} == static_cast<int>(Passo::kOrdem));

namespace {

int configurar(zel_envio &envio, std::optional<Configuracao> lida) {
    if (!lida) return ZEL_ENVIO_CONFIGURACAO;
    envio.emissao.configurar(std::move(*lida));
    return ZEL_ENVIO_OK;
}

int verificar(zel_envio &envio, Recusas &recusas) {
    Emissao &emissao = envio.emissao;
    if (emissao.lido().tipo == Tipo::kNenhum) return ZEL_ENVIO_ORDEM;
    const std::string raiz(emissao.lido().documento.raiz().nome());
    if (emissao.lido().tipo == Tipo::kConsulta) {
        recusas.juntar("documento", raiz, "uma consulta não é assinada: não há o que verificar");
        return ZEL_ENVIO_ORDEM;
    }
    const bool nfce = emissao.lido().tipo == Tipo::kNfce;
    if (emissao.lido().doCaixa && !emissao.temMensagem()) {
        recusas.juntar(nfce ? "infNFe/@versao" : "documento", nfce ? "3.10" : raiz,
                       "é o documento do caixa: traduza-o e assine-o antes de o verificar");
        return ZEL_ENVIO_ORDEM;
    }
    std::shared_ptr<Esquemas> esquemas;
    const Passo passo = emissao.esquemas(esquemas, recusas);
    if (passo != Passo::kFeito) return static_cast<int>(passo);
    std::vector<std::string> olhado;
    const auto olhar = nfce ? verificarNfce : verificarPedido;
    if (!olhar(emissao.mensagem(), emissao.config(), esquemas.get(), olhado, recusas))
        return ZEL_ENVIO_REPROVADO;
    for (const auto &linha : olhado)
        envio.detalhe += envio.detalhe.empty() ? linha : "\n" + linha;
    return ZEL_ENVIO_OK;
}

// Where a fact stands: below the first element of that name, wherever it is.
struct Fato {
    std::string_view nome, elemento, caminho;
};
constexpr Fato kFatos[] = {
    {"digest", "Reference", "DigestValue"},
    {"qrCode", "infNFeSupl", "qrCode"},
    {"urlChave", "infNFeSupl", "urlChave"},
    {"emissao", "ide", "dhEmi"},
    {"total", "ICMSTot", "vNF"},
    {"serie", "ide", "serie"},
    {"numero", "ide", "nNF"},
    {"protocolo", "infProt", "nProt"},
    {"emitente", "emit", "CNPJ"},
    {"ambiente", "ide", "tpAmb"},
};

std::string chaveDe(const No &raiz) {
    constexpr std::string_view kPrefixo = "NFe";
    if (const std::string id = raiz.procurar("infNFe").atributo("Id"); id.starts_with(kPrefixo))
        return id.substr(kPrefixo.size());
    for (const std::string_view nome : {"chNFe", "ChaAcesso", "ChaveAcesso"})
        if (const No no = raiz.procurar(nome)) return no.texto();
    return {};
}

// None for a name that there is not.
std::optional<std::string> fatoDoDocumento(const Emissao &emissao, std::string_view nome) {
    const No raiz = emissao.mensagem().raiz();
    if (nome == "chave") return chaveDe(raiz);
    if (nome == "tipo") return std::string(nomeDe(emissao.lido().tipo));
    for (const auto &fato : kFatos)
        if (fato.nome == nome) return raiz.procurar(fato.elemento).texto(fato.caminho);
    return {};
}

// Of what was transmitted; none when nothing was.
std::optional<std::string> fatoDaResposta(const Configuracao &config, const Ficha &ficha,
                                          std::string_view nome) {
    const bool ha = ficha.id != 0;
    const bool respondida = ficha.estado == Estado::kEntregue || ficha.estado == Estado::kRecusado;
    if (nome == "cStat") return ha && ficha.cStat != 0 ? std::to_string(ficha.cStat) : "";
    if (nome == "xMotivo") return ficha.xMotivo;
    if (nome == "motivo") return ficha.motivo;
    if (nome == "desfecho") return std::string(nomeDe(ficha.desfecho));
    if (nome == "retorno")
        return ha && respondida ? retornosDe(config, ficha.caixa) + nomeDoRetorno(ficha) : "";
    if (nome == "remedio")
        return std::string(ha && ficha.cStat != 0 ? linhaDe(ficha.cStat).remedio : "");
    if (nome == "estado") return ha ? std::string(nomeDe(ficha.estado)) : "";
    if (nome == "protocolo" && !ficha.protocolo.empty()) return ficha.protocolo;
    return {};
}

std::optional<std::string> fatoDoCertificado(Emissao &emissao, std::string_view nome,
                                             Recusas &recusas) {
    constexpr std::string_view kPrefixo = "certificado.";
    if (!nome.starts_with(kPrefixo)) return {};
    nome.remove_prefix(kPrefixo.size());
    if (nome != "nome" && nome != "cnpj" && nome != "validade" && nome != "dias") return {};
    const auto certificado = emissao.certificado(recusas);
    if (!certificado) return "";
    if (nome == "nome") return certificado->nome();
    if (nome == "cnpj") return certificado->cnpj();
    if (nome == "validade") return certificado->validoAte();
    return std::to_string(certificado->dias(std::time(nullptr)));
}

bool temDigitos(std::string_view texto, std::size_t quantos) {
    return texto.size() == quantos && zel::soDigitos(texto);
}

// The day in Brasília, whatever the machine's zone is.
std::string hoje() {
    constexpr std::time_t kBrasilia = -3 * 3600;
    const std::time_t agora = std::time(nullptr) + kBrasilia;
    std::tm partes{};
    char texto[sizeof "AAAA-MM-DD"] = {};
    ::gmtime_r(&agora, &partes);
    std::strftime(texto, sizeof texto, "%Y-%m-%d", &partes);
    return texto;
}

} // namespace

zel_envio *zel_envio_novo(void) {
    try {
        return new (std::nothrow) zel_envio;
    } catch (const std::exception &) {
        return nullptr;
    }
}

void zel_envio_liberar(zel_envio *envio) {
    delete envio;
}

int zel_envio_configurar(zel_envio *envio, const char *arquivo) {
    if (arquivo == nullptr) return ZEL_ENVIO_ARGUMENTO;
    return responder(envio, [&](Recusas &recusas) {
        return configurar(*envio, Configuracao::abrir(arquivo, recusas));
    });
}

int zel_envio_configurar_texto(zel_envio *envio, const char *toml, size_t tamanho,
                               const char *diretorio) {
    if (toml == nullptr && tamanho > 0) return ZEL_ENVIO_ARGUMENTO;
    return responder(envio, [&](Recusas &recusas) {
        return configurar(
            *envio, Configuracao::ler({toml, tamanho}, std::string(vista(diretorio)), recusas));
    });
}

int zel_envio_ler(zel_envio *envio, const char *bytes, size_t tamanho) {
    if (bytes == nullptr && tamanho > 0) return ZEL_ENVIO_ARGUMENTO;
    return responder(envio, [&](Recusas &recusas) {
        auto lido = lerArquivoDoCaixa({bytes, tamanho}, recusas);
        if (!lido) return int{ZEL_ENVIO_ILEGIVEL};
        envio->emissao.ler(std::move(*lido));
        envio->lido.assign(bytes, tamanho);
        envio->transmitido = {};
        return int{ZEL_ENVIO_OK};
    });
}

int zel_envio_tipo(const zel_envio *envio) {
    return envio == nullptr ? int{ZEL_ENVIO_ARGUMENTO}
                            : static_cast<int>(envio->emissao.lido().tipo);
}

int zel_envio_completar(zel_envio *envio, const char *protocolo, const char *substituta,
                        const char *data, const char *troco) {
    constexpr std::size_t kDigitosDoProtocolo = 15;
    return responder(envio, [&](Recusas &recusas) {
        if (envio->emissao.lido().tipo == Tipo::kNenhum) return int{ZEL_ENVIO_ORDEM};
        ContextoPedido contexto{std::string(vista(protocolo)), std::string(vista(substituta)),
                                std::string(vista(data)), "1"};
        if (!contexto.protocolo.empty() && !temDigitos(contexto.protocolo, kDigitosDoProtocolo))
            recusas.juntar("protocolo", contexto.protocolo, "tem 15 dígitos");
        if (!contexto.substituta.empty() && !zel::ChaveAcesso::ler(contexto.substituta))
            recusas.juntar("substituta", contexto.substituta, "uma chave tem 44 dígitos");
        if (!contexto.data.empty() && !ehData(contexto.data))
            recusas.juntar("data", contexto.data, "escreve-se AAAA-MM-DD");
        if (contexto.data.empty()) contexto.data = hoje();
        const std::string_view dado = vista(troco);
        const auto lido = Decimal::ler(dado.empty() ? "0" : dado);
        const auto centavos = lido ? lido->centavos() : std::nullopt;
        if (!centavos) recusas.juntar("troco", dado, "escreve-se como 12.34");
        if (!recusas.nenhuma()) return int{ZEL_ENVIO_ARGUMENTO};
        envio->emissao.completar(std::move(contexto), {*centavos});
        envio->troco = dado.empty() ? std::nullopt : centavos;
        return int{ZEL_ENVIO_OK};
    });
}

int zel_envio_traduzir(zel_envio *envio) {
    return responder(envio, [&](Recusas &recusas) {
        return static_cast<int>(envio->emissao.traduzir(recusas));
    });
}

int zel_envio_assinar(zel_envio *envio) {
    return responder(envio, [&](Recusas &recusas) {
        return static_cast<int>(envio->emissao.assinar(std::time(nullptr), recusas));
    });
}

int zel_envio_mensagem(zel_envio *envio, char **bytes, size_t *tamanho) {
    if (bytes == nullptr || tamanho == nullptr) return ZEL_ENVIO_ARGUMENTO;
    return responder(envio, [&](Recusas &) {
        if (!envio->emissao.temMensagem()) return int{ZEL_ENVIO_ORDEM};
        return entregar(envio->emissao.mensagem().texto(), bytes, tamanho);
    });
}

const char *zel_envio_valor(zel_envio *envio, const char *nome) {
    if (envio == nullptr || nome == nullptr) return nullptr;
    bool conhecido = false;
    responder(envio, [&](Recusas &recusas) {
        auto valor = fatoDaResposta(envio->emissao.config(), envio->transmitido.ficha, nome);
        if (!valor) valor = fatoDoDocumento(envio->emissao, nome);
        if (!valor) valor = fatoDoCertificado(envio->emissao, nome, recusas);
        conhecido = valor.has_value();
        envio->valor = std::move(valor).value_or("");
        return recusas.nenhuma() ? int{ZEL_ENVIO_OK} : int{ZEL_ENVIO_CERTIFICADO};
    });
    return conhecido ? envio->valor.c_str() : nullptr;
}

int zel_envio_verificar(zel_envio *envio) {
    return responder(envio, [&](Recusas &recusas) { return verificar(*envio, recusas); });
}

int zel_envio_mostrar(zel_envio *envio, char **texto, size_t *tamanho) {
    if (texto == nullptr || tamanho == nullptr) return ZEL_ENVIO_ARGUMENTO;
    return responder(envio, [&](Recusas &) {
        if (envio->emissao.lido().tipo == Tipo::kNenhum) return int{ZEL_ENVIO_ORDEM};
        return entregar(mostrar(envio->emissao.lido().documento), texto, tamanho);
    });
}

int zel_envio_impressao(zel_envio *envio, const char *resposta, size_t tamanho_resposta,
                        char **documento, size_t *tamanho_documento, char **retorno,
                        size_t *tamanho_retorno) {
    if (documento == nullptr || tamanho_documento == nullptr || retorno == nullptr ||
        tamanho_retorno == nullptr)
        return ZEL_ENVIO_ARGUMENTO;
    return responder(envio, [&](Recusas &recusas) {
        if (envio->emissao.lido().tipo != Tipo::kNfce) return int{ZEL_ENVIO_ORDEM};
        std::optional<Documento> respondido;
        if (resposta != nullptr) {
            std::string motivo;
            respondido = Documento::ler({resposta, tamanho_resposta}, motivo);
            if (!respondido) {
                recusas.juntar("resposta", "", motivo);
                return int{ZEL_ENVIO_ILEGIVEL};
            }
        }
        // Of what stands around it, the NFe: of a message, the root.
        const No nfe = envio->emissao.mensagem().raiz().procurar("NFe");
        const auto pronto = prepararImpressao(nfe, respondido ? &*respondido : nullptr, recusas);
        if (!pronto) return int{ZEL_ENVIO_REPROVADO};
        const int codigo = entregar(pronto->documento, documento, tamanho_documento);
        if (codigo != ZEL_ENVIO_OK) return codigo;
        if (entregar(pronto->retorno, retorno, tamanho_retorno) == ZEL_ENVIO_OK)
            return int{ZEL_ENVIO_OK};
        zel_envio_liberar_bytes(std::exchange(*documento, nullptr));
        return int{ZEL_ENVIO_MEMORIA};
    });
}

void zel_envio_liberar_bytes(char *bytes) {
    std::free(bytes);
}

const char *zel_envio_detalhe(const zel_envio *envio) {
    return envio == nullptr ? "" : envio->detalhe.c_str();
}

int zel_envio_recusa(const zel_envio *envio, size_t indice, const char **campo, const char **valor,
                     const char **motivo) {
    if (envio == nullptr || indice >= envio->recusas.lista().size()) return ZEL_ENVIO_ARGUMENTO;
    const Recusa &recusa = envio->recusas.lista()[indice];
    if (campo != nullptr) *campo = recusa.campo.c_str();
    if (valor != nullptr) *valor = recusa.valor.c_str();
    if (motivo != nullptr) *motivo = recusa.motivo.c_str();
    return ZEL_ENVIO_OK;
}

int zel_envio_primeira_configuracao(zel_envio *envio, const char *caixa, size_t tamanho,
                                    const char *certificado, const char *senha_arquivo,
                                    const char *csc_arquivo, char **toml, size_t *tamanho_toml) {
    if ((caixa == nullptr && tamanho > 0) || toml == nullptr || tamanho_toml == nullptr)
        return ZEL_ENVIO_ARGUMENTO;
    return responder(envio, [&](Recusas &recusas) {
        const PrimeirosArquivos arquivos{std::string(vista(certificado)),
                                         std::string(vista(senha_arquivo)),
                                         std::string(vista(csc_arquivo))};
        const auto texto = primeiraConfiguracao({caixa, tamanho}, recusas, arquivos);
        return texto ? entregar(*texto, toml, tamanho_toml) : int{ZEL_ENVIO_ILEGIVEL};
    });
}

int zel_envio_certificado_de_ensaio(zel_envio *envio, const char *nome, const char *cnpj,
                                    const char *senha, char **bytes, size_t *tamanho) {
    constexpr std::size_t kDigitosDoCnpj = 14;
    if (bytes == nullptr || tamanho == nullptr || vista(nome).empty() || vista(senha).empty())
        return ZEL_ENVIO_ARGUMENTO;
    return responder(envio, [&](Recusas &recusas) {
        if (!temDigitos(vista(cnpj), kDigitosDoCnpj)) {
            recusas.juntar("cnpj", vista(cnpj), "tem 14 dígitos");
            return int{ZEL_ENVIO_ARGUMENTO};
        }
        const std::string feito = pkcs12DeEnsaio(nome, cnpj, senha, std::time(nullptr));
        if (!feito.empty()) return entregar(feito, bytes, tamanho);
        recusas.juntar("certificado", nome, "o OpenSSL não o fez; o nome tem até 64 letras");
        return int{ZEL_ENVIO_CERTIFICADO};
    });
}

const char *zel_envio_descrever(int codigo) {
    // From ZEL_ENVIO_ARGUMENTO on, downwards.
    constexpr const char *kTextos[] = {
        "argumento nulo ou fora do permitido",
        "falta memoria",
        "a configuracao, ou um arquivo que ela cita",
        "nao eh um documento que se conheca",
        "ha o que nao se pode dizer no leiaute 4.00",
        "certificado ausente, recusado ou de outro emitente",
        "a assinatura falhou",
        "os esquemas publicados recusam a mensagem",
        "a conferencia achou erros",
        "nada foi lido ou feito ainda",
        "a autoridade recusou",
        "nenhuma resposta veio: o documento pode estar na autoridade",
        "nada foi enviado",
        "a fila dos documentos nao pode ser usada",
    };
    if (codigo == ZEL_ENVIO_OK) return "feito";
    const auto indice = static_cast<std::size_t>(-static_cast<long long>(codigo) - 1);
    return codigo < 0 && indice < std::size(kTextos) ? kTextos[indice] : "codigo desconhecido";
}

const char *zel_envio_versao(void) {
    return ZEL_ENVIO_VERSAO;
}
