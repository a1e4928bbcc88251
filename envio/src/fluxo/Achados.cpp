// SPDX-License-Identifier: MIT
#include "fluxo/Achados.h"

#include "base/Xml.h"
#include "comum/Arquivo.h"
#include "comum/ArquivosDoCaixa.h"
#include "comum/ChaveAcesso.h"
#include "comum/Digitos.h"
#include "documento/Leitura.h"
#include "fluxo/Destinos.h"
#include "fluxo/Relogio.h"

#include <algorithm>
#include <charconv>
#include <dirent.h>
#include <iterator>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace zel::envio {

namespace {

using Parte = ChaveAcesso::Parte;

constexpr std::size_t kMaiorConfiguracao = 4U << 20;
constexpr std::size_t kMaiorParametros = 64U << 10;

// ---- what a file says ----

template <class T>
T numeroDe(std::string_view texto) {
    T numero = 0;
    std::from_chars(texto.data(), texto.data() + texto.size(), numero);
    return numero;
}

// The till's own words; 3, the factory's environment, is homologation.
int ambienteDe(const std::string &tpAmb) {
    return tpAmb == "1" ? 1 : 2;
}

void lerChave(Achado &achado) {
    const auto chave = ChaveAcesso::ler(achado.chave);
    if (!chave) return;
    achado.cnpj = chave->parte(Parte::kCNPJ);
    achado.serie = numeroDe<int>(chave->parte(Parte::kSerie));
    achado.numero = achado.ultimo = numeroDe<std::int64_t>(chave->parte(Parte::kNNF));
    achado.tpEmis = numeroDe<int>(chave->parte(Parte::kTpEmis));
}

bool lerNota(const No &nfe, Achado &achado) {
    const No infNFe = nfe.filho("infNFe");
    const std::string Id = infNFe.atributo("Id");
    achado.chave = Id.starts_with("NFe") ? Id.substr(3) : "";
    if (!ehChave(achado.chave)) return false;
    lerChave(achado);
    achado.tpAmb = ambienteDe(infNFe.texto("ide/tpAmb"));
    achado.dhEmi = infNFe.texto("ide/dhEmi");
    if (const auto total = Decimal::ler(infNFe.texto("total/ICMSTot/vNF")))
        achado.total = total->centavos().value_or(0);
    for (const std::string_view id : {"dest/CPF", "dest/CNPJ", "dest/idEstrangeiro"})
        if (achado.consumidor.empty()) achado.consumidor = infNFe.texto(id);
    achado.nomeConsumidor = infNFe.texto("dest/xNome");
    return true;
}

bool lerCancelamento(const No &raiz, Achado &achado) {
    const No chave =
        raiz.nome() == "EnvioEvento" ? raiz.procurar("ChaAcesso") : raiz.procurar("chNFe");
    achado.chave = chave.texto();
    if (!ehChave(achado.chave)) return false;
    lerChave(achado);
    achado.tpAmb = ambienteDe(raiz.procurar("tpAmb").texto());
    achado.dhEmi = raiz.procurar("EveDh").texto() + raiz.procurar("EveFusoHorario").texto();
    if (achado.dhEmi.empty()) achado.dhEmi = raiz.procurar("dhEvento").texto();
    achado.substitui = raiz.procurar("chNFeRef").texto();
    return true;
}

bool lerInutilizacao(const No &raiz, Achado &achado) {
    const bool doCaixa = raiz.nome() == "Inutilizacao";
    const auto campo = [&](std::string_view dele, std::string_view nosso) {
        return raiz.procurar(doCaixa ? dele : nosso).texto();
    };
    achado.cnpj = campo("CnpjEmissor", "CNPJ");
    achado.tpAmb = ambienteDe(campo("tpAmb", "tpAmb"));
    achado.serie = numeroDe<int>(campo("Serie", "serie"));
    achado.numero = numeroDe<std::int64_t>(campo("NumeroInicial", "nNFIni"));
    achado.ultimo = numeroDe<std::int64_t>(campo("NumeroFinal", "nNFFin"));
    return soDigitos(achado.cnpj) && achado.cnpj.size() == 14;
}

bool lerConsulta(const No &raiz, Achado &achado) {
    const bool doCaixa = raiz.nome() == "Consulta";
    achado.chave = raiz.procurar(doCaixa ? "ChaveAcesso" : "chNFe").texto();
    achado.tpAmb = ambienteDe(raiz.procurar("tpAmb").texto());
    if (ehChave(achado.chave)) lerChave(achado);
    return true;
}

struct Leitor {
    Tipo tipo;
    bool (*ler)(const No &, Achado &);
};
constexpr Leitor kLeitores[] = {{Tipo::kNfce, lerNota},
                                {Tipo::kCancelamento, lerCancelamento},
                                {Tipo::kInutilizacao, lerInutilizacao},
                                {Tipo::kConsulta, lerConsulta}};

// ---- which files ----

bool ehCopia(std::string_view nome) {
    constexpr std::string_view kInicios[] = {"EnvioNFCe", "EnvioCanc", "EnvioCons", "EnvioInut"};
    return nome.ends_with(".xml") &&
           (nome == arquivos::kEnvio || std::any_of(std::begin(kInicios), std::end(kInicios),
                                                    [&](auto i) { return nome.starts_with(i); }));
}

bool ehContingencia(std::string_view nome) {
    return nome.ends_with(".ctg") || nome.ends_with(".ctgCanc");
}

} // namespace

std::optional<Achado> acharEm(std::string_view bytes, Recusas &recusas) {
    auto lido = lerArquivoDoCaixa(bytes, recusas);
    if (!lido) return {};
    Achado achado;
    achado.tipo = lido->tipo;
    achado.original = bytes;
    for (const auto &[tipo, ler] : kLeitores)
        if (tipo == lido->tipo) {
            if (ler(lido->principal(), achado)) return achado;
            break;
        }
    recusas.juntar("documento", achado.chave, "não diz de que nota é (chave de acesso, emitente)");
    return {};
}

// ---- a till's directory ----

struct Caixa::Visto {
    std::string caminho, nome;
    std::int64_t mudado; // nanoseconds
    std::string marca;   // changes when it is written
    bool unico;          // the one place that is written again and again
};

namespace {

constexpr std::int64_t kNanossegundos = 1000000; // of a Momento's unit

std::int64_t nanossegundos(const timespec &momento) {
    return momento.tv_sec * 1000000000LL + momento.tv_nsec;
}

// "AAAA-MM-DD"; of what does not say it, the one on which its file was written.
std::string diaDe(const Achado &achado, std::int64_t escrito) {
    constexpr std::size_t kDia = 10;
    return (achado.dhEmi.empty() ? momentoEscrito(escrito / kNanossegundos, {}) : achado.dhEmi)
        .substr(0, kDia);
}

std::string marcaDe(const struct stat &estado) {
    return std::to_string(nanossegundos(estado.st_mtim)) + "/" + std::to_string(estado.st_size);
}

} // namespace

std::vector<std::string> Caixa::pastas() const {
    std::vector<std::string> pastas{config_.diretorio};
    for (const auto &outra : {config_.copias, config_.contingencia})
        if (!outra.empty() && std::find(pastas.begin(), pastas.end(), outra) == pastas.end())
            pastas.push_back(outra);
    return pastas;
}

// A directory that stands as it was left has nothing new but what is written over.
bool Caixa::mudou(const std::string &pasta, Momento agora) {
    struct stat estado;
    if (stat(pasta.c_str(), &estado) != 0) return true; // reading it will say why
    const std::int64_t antes = std::exchange(pastas_[pasta], nanossegundos(estado.st_mtim));
    // Its clock goes in steps: what comes within one step of the last change shows no new time.
    constexpr Momento kPassoDoRelogio = 2 * kSegundo;
    if (agora - pastas_[pasta] / 1000000 < kPassoDoRelogio) pastas_[pasta] = 0;
    return antes != pastas_[pasta] || antes == 0;
}

void Caixa::olhar(Fila &fila, const std::string &pasta, const std::string &nome,
                  std::vector<Visto> &novos) {
    const bool unico = nome == arquivos::kEnvio;
    const bool daqui = ehContingencia(nome) || (unico && pasta == config_.diretorio) ||
                       (pasta == config_.copias && ehCopia(nome));
    const std::string caminho = pasta + nome;
    const auto conhecido = vistos_.find(caminho);
    struct stat estado;
    if (!daqui || (!unico && conhecido != vistos_.end()) || stat(caminho.c_str(), &estado) != 0 ||
        !S_ISREG(estado.st_mode))
        return;
    Visto visto{caminho, nome, nanossegundos(estado.st_mtim), marcaDe(estado), unico};
    const std::string marca = visto.marca;
    if (conhecido != vistos_.end() ? conhecido->second == marca
                                   : fila.anotado("visto:" + caminho) == marca)
        vistos_[caminho] = marca;
    else
        novos.push_back(std::move(visto));
}

// One that was no document may have been half there: it is new when it changes, though what is in
// its directory stands.
void Caixa::olharRecusados() {
    std::erase_if(recusados_, [this](const auto &recusado) {
        struct stat estado {};
        const auto &[caminho, marca] = recusado;
        if (stat(caminho.c_str(), &estado) == 0 && marcaDe(estado) == marca) return false;
        vistos_.erase(caminho);
        pastas_.clear();
        return true;
    });
}

int Caixa::varrer(Fila &fila, Momento agora, Recusas &recusas) {
    anotarSubstituicao(fila, agora, recusas);
    olharRecusados();
    std::vector<Visto> novos;
    for (const auto &pasta : pastas()) {
        if (!mudou(pasta, agora)) {
            olhar(fila, pasta, std::string(arquivos::kEnvio), novos);
            continue;
        }
        const std::unique_ptr<DIR, int (*)(DIR *)> aberta(opendir(pasta.c_str()), closedir);
        if (!aberta) {
            recusas.juntar(pasta, "", "a pasta não existe ou não pode ser lida");
            continue;
        }
        while (const dirent *entrada = readdir(aberta.get()))
            olhar(fila, pasta, entrada->d_name, novos);
    }
    std::sort(novos.begin(), novos.end(),
              [](const Visto &a, const Visto &b) { return a.mudado < b.mudado; });
    int pegos = 0;
    for (const Visto &visto : novos) {
        pegos += pegar(fila, visto, agora, recusas) ? 1 : 0;
        // What could not be read or written down is looked for again, though its directory stands.
        if (!vistos_.contains(visto.caminho)) pastas_.clear();
    }
    return pegos;
}

bool Caixa::pegar(Fila &fila, const Visto &visto, Momento agora, Recusas &recusas) {
    const auto bytes = comum::lerArquivo(visto.caminho, kMaiorDocumento);
    if (!bytes) {
        if (access(visto.caminho.c_str(), F_OK) == 0)
            recusas.juntar(visto.caminho, "",
                           "não pode ser lido, e não será enviado: confira tamanho e permissões");
        return false;
    }
    Recusas minhas;
    auto achado = acharEm(*bytes, minhas);
    // A consultation holds nothing that tells one from the next: its copies are what counts.
    if (achado && achado->tipo == Tipo::kConsulta && visto.unico && !config_.copias.empty())
        achado.reset();
    if (achado && diaDe(*achado, visto.mudado) < config_.desde) achado.reset();
    Fila::Transacao transacao(fila);
    if (achado) {
        achado->caixa = config_.diretorio;
        achado->origem = visto.nome;
        if (achado->tipo == Tipo::kNfce) achado->troco = trocoDe(achado->chave);
        // Asked again, it is another question: the answer may be another one by now.
        if (achado->tipo == Tipo::kConsulta)
            achado->vez = visto.nome + '/' + std::to_string(visto.mudado);
        verSubstituicao(fila, *achado, visto.mudado);
        const auto id = fila.achar(*achado, agora, recusas);
        if (!id) return false;
        if (!achado->substitui.empty()) seguirSubstituicao(fila, *id, agora, recusas);
    }
    for (const auto &recusa : minhas.lista())
        recusas.juntar(visto.caminho, recusa.valor, recusa.motivo);
    const bool recusado = !minhas.nenhuma();
    if (!recusado) fila.anotar("visto:" + visto.caminho, visto.marca);
    if (!transacao.confirmar(recusas)) return false;
    vistos_[visto.caminho] = visto.marca;
    if (recusado) recusados_[visto.caminho] = visto.marca;
    return bool(achado);
}

namespace {

std::string anotacaoDe(const std::string &caixa, std::int64_t serie, std::int64_t numero) {
    return "substituir:" + caixa + ":" + std::to_string(serie) + ":" + std::to_string(numero);
}

// When a file was written, nanoseconds; 0 when there is none.
std::int64_t escritoEm(const std::string &arquivo) {
    struct stat estado {};
    return stat(arquivo.c_str(), &estado) == 0 ? nanossegundos(estado.st_mtim) : 0;
}

// A till writes a document and what it says of it in one go.
bool juntos(std::int64_t um, std::int64_t outro) {
    return std::abs(um - outro) <= kMinuto * kNanossegundos;
}

// Everything but head and number: what a reissue has in common with what it replaces.
std::string conteudoDe(std::string_view original) {
    Recusas ignoradas;
    const auto lido = lerArquivoDoCaixa(original, ignoradas);
    std::string conteudo;
    if (lido)
        for (const No &parte : lido->principal().filho("infNFe").filhos())
            if (parte.nome() != "ide") conteudo += Documento::de(parte).texto();
    return conteudo;
}

// Between two looks the till may have replaced two documents, and what it said of the first is
// written over. That the same was sold once more, offline, is possible, too: it is not guessed.
bool pareceSubstituir(Fila &fila, const Achado &nova, const Ficha &velha) {
    if (velha.desfecho != Desfecho::kNenhum || acabou(velha.estado) || velha.total != nova.total ||
        velha.consumidor != nova.consumidor)
        return false;
    return !substituta(fila, velha) &&
           conteudoDe(fila.original(velha.id)) == conteudoDe(nova.original);
}

} // namespace

// The till says which number a document replaces in a file that its next request overwrites: what
// it said is kept until the document is found.
void Caixa::anotarSubstituicao(Fila &fila, Momento agora, Recusas &recusas) const {
    std::string motivo;
    const std::string arquivo = config_.diretorio + std::string(arquivos::kParametros);
    const std::int64_t escrito = escritoEm(arquivo);
    const auto bytes = comum::lerArquivo(arquivo, kMaiorParametros);
    const auto documento = bytes ? Documento::ler(*bytes, motivo) : std::nullopt;
    if (!documento || documento->raiz().nome() != "SubstituirDocumento") return;
    const std::string nNF = documento->raiz().texto("nNF"),
                      serie = documento->raiz().texto("serie");
    if (!soDigitos(nNF) || !soDigitos(serie) || nNF.size() > 9 || serie.size() > 3) return;
    const std::string nome =
        anotacaoDe(config_.diretorio, numeroDe<std::int64_t>(serie), numeroDe<std::int64_t>(nNF));
    const std::string quando = std::to_string(escrito);
    if (fila.anotado(nome) == quando) return;
    Fila::Transacao transacao(fila);
    fila.anotar(nome, quando);
    // The till writes the document first: it may have been found before this was said.
    for (const Ficha &nova :
         fila.procurar({.caixa = config_.diretorio, .numero = numeroDe<std::int64_t>(nNF) + 1})) {
        Achado achado = nova;
        if (nova.serie == numeroDe<int>(serie))
            verSubstituicao(fila, achado, nova.achado * kNanossegundos);
        if (achado.substitui != nova.substitui &&
            fila.dizerSubstituida(nova.id, achado.substitui, recusas))
            seguirSubstituicao(fila, nova.id, agora, recusas);
    }
    transacao.confirmar(recusas);
}

void Caixa::verSubstituicao(Fila &fila, Achado &achado, std::int64_t escrito) const {
    if (achado.tipo != Tipo::kNfce || achado.tpEmis != 9 || !achado.substitui.empty()) return;
    // Issued once more after it was refused, under the same number: it replaces the same one.
    for (const Ficha &antes :
         fila.porNumero(achado.cnpj, achado.tpAmb, achado.serie, achado.numero))
        if (antes.caixa == config_.diretorio && antes.tpEmis == 9 && !antes.substitui.empty())
            achado.substitui = antes.substitui;
    if (!achado.substitui.empty()) return;
    const std::string nome = anotacaoDe(config_.diretorio, achado.serie, achado.numero - 1);
    // A series begins anew, in production after tests: what was said of another document of that
    // number, at another time, is not said of this one.
    const bool dito = juntos(numeroDe<std::int64_t>(fila.anotado(nome)), escrito);
    const bool escritoPorCima =
        escritoEm(config_.diretorio + std::string(arquivos::kParametros)) >= escrito;
    for (const Ficha &outra :
         fila.porNumero(achado.cnpj, achado.tpAmb, achado.serie, achado.numero - 1)) {
        if (outra.tpEmis != 1 || outra.caixa != config_.diretorio) continue;
        if (dito)
            achado.substitui = outra.chave;
        else if (escritoPorCima && pareceSubstituir(fila, achado, outra))
            fila.anotar(anotacaoDaDuvida(outra.chave), achado.chave);
    }
}

std::optional<Centavos> Caixa::trocoDe(std::string_view chave) const {
    constexpr std::string_view kEncerrado = "5";
    std::string motivo;
    const auto bytes =
        comum::lerArquivo(config_.diretorio + std::string(arquivos::kConfig), kMaiorConfiguracao);
    const auto documento = bytes ? Documento::ler(*bytes, motivo) : std::nullopt;
    if (!documento) return {};
    const No raiz = documento->raiz();
    if (raiz.texto("NFCE/ChaveDeAcesso") != chave ||
        raiz.texto("CONFIGURACAO/estadoCFe") != kEncerrado)
        return {};
    std::string troco = raiz.texto("CONFIGURACAO/TrocoUltimaNFCe");
    std::replace(troco.begin(), troco.end(), ',', '.');
    const auto valor = Decimal::ler(troco);
    return valor ? valor->centavos() : std::nullopt;
}

} // namespace zel::envio
