// SPDX-License-Identifier: MIT
#include "zel_cupom.h"

#include "EscPos.h"
#include "EscPosFigura.h"
#include "Imagem.h"
#include "Leitor.h"
#include "Saida.h"
#include "comum/Arquivo.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

using namespace zel::cupom;

static_assert(ZEL_CUPOM_MAIOR_TEXTO == kMaiorTexto);
static_assert(ZEL_CUPOM_MAIOR_LOGOTIPO == kMaiorLadoDoArquivo);

// The receipt that was read, the settings, and the fonts, which are opened for the first picture.
struct zel_cupom {
    Cupom cupom;
    const Papel *papel = &kPapeis.front();
    int escala = 1;
    std::optional<ImagemCinza> logotipo; // as its file holds it
    int tons = ZEL_CUPOM_PONTOS;
    std::optional<Fontes> fontes;
    std::optional<Perfil> perfil; // none: the one for the paper
    bool gaveta = false;
    int impressao = ZEL_CUPOM_LETRAS;
    std::size_t enviados = 0;
    Estado estado = Estado::kNaoDisse;
    std::string detalhe;
};

namespace {

struct Gerado {
    int codigo = ZEL_CUPOM_OK;
    std::string bytes;
};

using Gerador = Gerado (*)(zel_cupom &);
using Formato = std::optional<std::string> (*)(const Pagina &, const Recursos &, int escala);

std::optional<std::string> formatoSvg(const Pagina &pagina, const Recursos &recursos, int) {
    return gerarSvg(pagina, recursos);
}

std::optional<std::string> formatoPdf(const Pagina &pagina, const Recursos &recursos, int) {
    return gerarPdf(pagina, recursos);
}

// No exception passes the C border: all that the rooms throw is that memory is short.
template <class Chamada>
int protegida(Chamada chamada) noexcept {
    try {
        return chamada();
    } catch (const std::exception &) {
        return ZEL_CUPOM_MEMORIA;
    }
}

std::optional<ImagemCinza> logotipoNoPapel(const zel_cupom &recibo, int tons) {
    if (!recibo.logotipo) return {};
    ImagemCinza logotipo =
        caber(*recibo.logotipo, recibo.papel->larguraUtil, kMaiorAlturaDoLogotipo);
    return tons == ZEL_CUPOM_PONTOS ? pontilhar(std::move(logotipo)) : logotipo;
}

// `formato` makes bytes of the page, at most `maior` dots of paper.
template <class FormatoDe>
Gerado gerarPagina(zel_cupom &recibo, int tons, int maior, FormatoDe formato) {
    if (!recibo.fontes) recibo.fontes = acharFontes();
    if (!recibo.fontes) return {ZEL_CUPOM_FONTE, {}};
    const std::optional<ImagemCinza> logotipo = logotipoNoPapel(recibo, tons);
    TamanhoLogotipo tamanho;
    if (logotipo) tamanho = {logotipo->largura, logotipo->altura};
    const std::optional<Pagina> pagina = paginar(recibo.cupom, *recibo.papel, tamanho);
    if (!pagina || pagina->altura > maior) return {ZEL_CUPOM_LONGO, {}};
    const Recursos recursos{*recibo.fontes, logotipo ? &*logotipo : nullptr};
    std::optional<std::string> bytes = formato(*pagina, recursos);
    if (!bytes) return {ZEL_CUPOM_DESENHO, {}};
    return {ZEL_CUPOM_OK, std::move(*bytes)};
}

Gerado gerarImagem(zel_cupom &recibo, Formato formato, int maior = INT_MAX) {
    return gerarPagina(recibo, recibo.tons, maior, [&](const auto &pagina, const auto &recursos) {
        return formato(pagina, recursos, recibo.escala);
    });
}

Gerado gerarPngDe(zel_cupom &recibo) {
    return gerarImagem(recibo, gerarPng);
}

Gerado gerarSvgDe(zel_cupom &recibo) {
    return gerarImagem(recibo, formatoSvg);
}

Gerado gerarPdfDe(zel_cupom &recibo) {
    return gerarImagem(recibo, formatoPdf, kMaiorAlturaDoPdf);
}

Perfil perfilDoPapel(const Papel &papel) {
    std::string motivo;
    return lerPerfil(textoDoPerfil(perfilPadrao(papel.milimetros)).value(), motivo).value();
}

Gerado gerarFiguraDe(zel_cupom &recibo, const Perfil &perfil) {
    if (!imprimeFigura(perfil, *recibo.papel)) {
        recibo.detalhe = "o perfil nao imprime pontos, ou menos do que o papel tem por linha";
        return {ZEL_CUPOM_PERFIL, {}};
    }
    return gerarPagina(recibo, ZEL_CUPOM_PONTOS, INT_MAX,
                       [&](const auto &pagina, const auto &recursos) {
                           return gerarEscPosFigura(pagina, recursos, perfil, recibo.gaveta);
                       });
}

Gerado gerarEscPosDe(zel_cupom &recibo) {
    const Perfil &perfil = recibo.perfil ? *recibo.perfil : perfilDoPapel(*recibo.papel);
    if (recibo.impressao == ZEL_CUPOM_FIGURA) return gerarFiguraDe(recibo, perfil);
    std::optional<ImagemCinza> logotipo;
    if (recibo.logotipo)
        logotipo = pontilhar(caber(*recibo.logotipo, perfil.pontos, kMaiorAlturaDoLogotipo));
    std::optional<std::string> bytes =
        gerarEscPos(recibo.cupom, {perfil, recibo.papel->colunas, logotipo ? &*logotipo : nullptr,
                                   recibo.gaveta});
    if (!bytes) return {ZEL_CUPOM_LONGO, {}};
    return {ZEL_CUPOM_OK, std::move(*bytes)};
}

int entregar(zel_cupom *recibo, Gerador gerar, unsigned char **bytes, std::size_t *tamanho) {
    if (recibo == nullptr || bytes == nullptr || tamanho == nullptr) return ZEL_CUPOM_ARGUMENTO;
    return protegida([&] {
        const Gerado gerado = gerar(*recibo);
        if (gerado.codigo != ZEL_CUPOM_OK) return gerado.codigo;
        // Of a profile without commands a receipt may be no bytes at all.
        void *copia = std::malloc(std::max<std::size_t>(1, gerado.bytes.size()));
        if (copia == nullptr) return int{ZEL_CUPOM_MEMORIA};
        std::memcpy(copia, gerado.bytes.data(), gerado.bytes.size());
        *bytes = static_cast<unsigned char *>(copia);
        *tamanho = gerado.bytes.size();
        return int{ZEL_CUPOM_OK};
    });
}

int gravar(zel_cupom *recibo, Gerador gerar, const char *arquivo) {
    if (recibo == nullptr || arquivo == nullptr || *arquivo == '\0') return ZEL_CUPOM_ARGUMENTO;
    return protegida([&] {
        const Gerado gerado = gerar(*recibo);
        if (gerado.codigo != ZEL_CUPOM_OK) return gerado.codigo;
        return int{zel::comum::substituirArquivo(arquivo, gerado.bytes) ? ZEL_CUPOM_OK
                                                                        : ZEL_CUPOM_ARQUIVO};
    });
}

int definirPerfil(zel_cupom &recibo, const std::string &perfil) {
    const bool arquivo = perfil.find('/') != perfil.npos;
    std::optional<std::string> lido;
    std::optional<std::string_view> texto;
    if (!arquivo)
        texto = textoDoPerfil(perfil);
    else if ((lido = zel::comum::lerArquivo(perfil, kMaiorPerfil)))
        texto = *lido;
    std::optional<Perfil> novo;
    if (texto)
        novo = lerPerfil(*texto, recibo.detalhe);
    else
        recibo.detalhe = arquivo ? "arquivo de perfil ausente ou ilegivel" : "perfil desconhecido";
    if (!novo) return ZEL_CUPOM_PERFIL;
    recibo.perfil = std::move(novo);
    return ZEL_CUPOM_OK;
}

// What the codes mean, for people.
struct Descricao {
    int codigo;
    const char *texto;
};
constexpr Descricao kDescricoes[] = {
    {ZEL_CUPOM_OK, "feito"},
    {ZEL_CUPOM_ARGUMENTO, "argumento nulo ou fora dos valores aceitos"},
    {ZEL_CUPOM_MEMORIA, "falta memoria"},
    {ZEL_CUPOM_LONGO, "o cupom passa do maior texto ou do maior papel"},
    {ZEL_CUPOM_FONTE, "nenhuma fonte monoespacada: arquivo ausente, ilegivel ou de outro tipo"},
    {ZEL_CUPOM_LOGOTIPO, "logotipo ilegivel, grande demais ou que nao e PNG"},
    {ZEL_CUPOM_ARQUIVO, "o arquivo nao pode ser gravado"},
    {ZEL_CUPOM_DESENHO, "falha da biblioteca de desenho"},
    {ZEL_CUPOM_PERFIL, "perfil de impressora desconhecido ou errado"},
    {ZEL_CUPOM_AUSENTE, "a impressora nao foi encontrada"},
    {ZEL_CUPOM_RECUSADA, "a impressora recusa a ligacao: em uso, sem permissao ou sem servico"},
    {ZEL_CUPOM_TEMPO, "a impressora nao respondeu ou parou de receber"},
    {ZEL_CUPOM_INTERROMPIDA, "a impressora falhou no meio"},
    {ZEL_CUPOM_SEM_PAPEL, "a impressora esta sem papel"},
    {ZEL_CUPOM_TAMPA, "a tampa da impressora esta aberta"},
    {ZEL_CUPOM_FORA_DE_LINHA, "a impressora esta fora de linha"},
};

// In the order of Estado and of Envio; a job that stood still has the code of the printer's state.
constexpr std::array kCodigoDoEstado{0, int{ZEL_CUPOM_OK}, int{ZEL_CUPOM_SEM_PAPEL},
                                     int{ZEL_CUPOM_TAMPA}, int{ZEL_CUPOM_FORA_DE_LINHA}};
constexpr std::array kCodigoDoEnvio{int{ZEL_CUPOM_OK},          int{ZEL_CUPOM_ARGUMENTO},
                                    int{ZEL_CUPOM_ARQUIVO},     int{ZEL_CUPOM_AUSENTE},
                                    int{ZEL_CUPOM_RECUSADA},    int{ZEL_CUPOM_TEMPO},
                                    int{ZEL_CUPOM_INTERROMPIDA}};
static_assert(kCodigoDoEstado.size() == static_cast<std::size_t>(Estado::kForaDeLinha) + 1);
static_assert(kCodigoDoEnvio.size() == static_cast<std::size_t>(Envio::kParado));

int codigoDe(Estado estado) {
    return kCodigoDoEstado[static_cast<std::size_t>(estado)];
}

int codigoDe(const Enviado &enviado) {
    if (enviado.resultado == Envio::kParado) return codigoDe(enviado.estado);
    return kCodigoDoEnvio[static_cast<std::size_t>(enviado.resultado)];
}

int imprimir(zel_cupom &recibo, const char *destino, int espera) {
    const Gerado gerado = gerarEscPosDe(recibo);
    if (gerado.codigo != ZEL_CUPOM_OK) return gerado.codigo;
    const FamiliaDeEstado *familia =
        recibo.perfil ? recibo.perfil->estado : perfilDoPapel(*recibo.papel).estado;
    const Enviado enviado =
        enviar(destino, gerado.bytes, std::chrono::milliseconds(espera), familia);
    const int erro = errno;
    recibo.enviados = enviado.bytes;
    recibo.estado = enviado.estado;
    const int codigo = codigoDe(enviado);
    if (codigo != ZEL_CUPOM_OK)
        recibo.detalhe = std::string(zel_cupom_descrever(codigo)) + ": " +
                         std::to_string(enviado.bytes) + " de " +
                         std::to_string(gerado.bytes.size()) + " bytes enviados";
    errno = erro; // of a file that was not written
    return codigo;
}

} // namespace

const char *zel_cupom_versao(void) {
    return ZEL_CUPOM_VERSAO;
}

zel_cupom *zel_cupom_novo(void) {
    return new (std::nothrow) zel_cupom;
}

void zel_cupom_liberar(zel_cupom *cupom) {
    delete cupom;
}

int zel_cupom_ler(zel_cupom *cupom, const char *texto, size_t tamanho) {
    if (cupom == nullptr || (texto == nullptr && tamanho > 0)) return ZEL_CUPOM_ARGUMENTO;
    if (tamanho > kMaiorTexto) return ZEL_CUPOM_LONGO;
    return protegida([&] {
        cupom->cupom = ler({texto, tamanho});
        return int{ZEL_CUPOM_OK};
    });
}

int zel_cupom_definir_papel(zel_cupom *cupom, int colunas, int papel) {
    const Papel *escolhido = papelDe(colunas, papel);
    if (cupom == nullptr || escolhido == nullptr) return ZEL_CUPOM_ARGUMENTO;
    cupom->papel = escolhido;
    return ZEL_CUPOM_OK;
}

int zel_cupom_definir_escala(zel_cupom *cupom, int escala) {
    if (cupom == nullptr || escala < 1 || escala > ZEL_CUPOM_MAIOR_ESCALA)
        return ZEL_CUPOM_ARGUMENTO;
    cupom->escala = escala;
    return ZEL_CUPOM_OK;
}

int zel_cupom_definir_logotipo(zel_cupom *cupom, const char *arquivo, int tons) {
    if (cupom == nullptr || (tons != ZEL_CUPOM_PONTOS && tons != ZEL_CUPOM_CINZA))
        return ZEL_CUPOM_ARGUMENTO;
    return protegida([&] {
        std::optional<ImagemCinza> logotipo;
        if (arquivo != nullptr && !(logotipo = lerLogotipo(arquivo)))
            return int{ZEL_CUPOM_LOGOTIPO};
        cupom->logotipo = std::move(logotipo);
        cupom->tons = tons;
        return int{ZEL_CUPOM_OK};
    });
}

int zel_cupom_definir_fonte(zel_cupom *cupom, const char *normal, const char *negrito) {
    if (cupom == nullptr || (normal == nullptr && negrito != nullptr)) return ZEL_CUPOM_ARGUMENTO;
    return protegida([&] {
        std::optional<Fontes> fontes;
        if (normal != nullptr && !(fontes = abrirFontes(normal, negrito == nullptr ? "" : negrito)))
            return int{ZEL_CUPOM_FONTE};
        cupom->fontes = std::move(fontes);
        return int{ZEL_CUPOM_OK};
    });
}

int zel_cupom_png(zel_cupom *cupom, unsigned char **bytes, size_t *tamanho) {
    return entregar(cupom, gerarPngDe, bytes, tamanho);
}

int zel_cupom_gravar_png(zel_cupom *cupom, const char *arquivo) {
    return gravar(cupom, gerarPngDe, arquivo);
}

int zel_cupom_svg(zel_cupom *cupom, unsigned char **bytes, size_t *tamanho) {
    return entregar(cupom, gerarSvgDe, bytes, tamanho);
}

int zel_cupom_gravar_svg(zel_cupom *cupom, const char *arquivo) {
    return gravar(cupom, gerarSvgDe, arquivo);
}

int zel_cupom_pdf(zel_cupom *cupom, unsigned char **bytes, size_t *tamanho) {
    return entregar(cupom, gerarPdfDe, bytes, tamanho);
}

int zel_cupom_gravar_pdf(zel_cupom *cupom, const char *arquivo) {
    return gravar(cupom, gerarPdfDe, arquivo);
}

const char *zel_cupom_nome_do_perfil(int indice) {
    const auto perfis = perfisEmbutidos();
    if (indice < 0 || static_cast<std::size_t>(indice) >= perfis.size()) return nullptr;
    return perfis[static_cast<std::size_t>(indice)].nome.data();
}

int zel_cupom_definir_perfil(zel_cupom *cupom, const char *perfil) {
    if (cupom == nullptr) return ZEL_CUPOM_ARGUMENTO;
    cupom->detalhe.clear();
    if (perfil != nullptr) return protegida([&] { return definirPerfil(*cupom, perfil); });
    cupom->perfil.reset();
    return ZEL_CUPOM_OK;
}

int zel_cupom_definir_gaveta(zel_cupom *cupom, int abrir) {
    if (cupom == nullptr || (abrir != 0 && abrir != 1)) return ZEL_CUPOM_ARGUMENTO;
    cupom->gaveta = abrir == 1;
    return ZEL_CUPOM_OK;
}

int zel_cupom_definir_impressao(zel_cupom *cupom, int modo) {
    if (cupom == nullptr || (modo != ZEL_CUPOM_LETRAS && modo != ZEL_CUPOM_FIGURA))
        return ZEL_CUPOM_ARGUMENTO;
    cupom->impressao = modo;
    return ZEL_CUPOM_OK;
}

int zel_cupom_escpos(zel_cupom *cupom, unsigned char **bytes, size_t *tamanho) {
    return entregar(cupom, gerarEscPosDe, bytes, tamanho);
}

int zel_cupom_imprimir(zel_cupom *cupom, const char *destino, int espera) {
    if (cupom == nullptr) return ZEL_CUPOM_ARGUMENTO;
    cupom->enviados = 0;
    cupom->estado = Estado::kNaoDisse;
    cupom->detalhe.clear();
    if (destino == nullptr || *destino == '\0' || espera < 1 || espera > ZEL_CUPOM_MAIOR_ESPERA)
        return ZEL_CUPOM_ARGUMENTO;
    return protegida([&] { return imprimir(*cupom, destino, espera); });
}

size_t zel_cupom_enviados(const zel_cupom *cupom) {
    return cupom == nullptr ? 0 : cupom->enviados;
}

int zel_cupom_estado(const zel_cupom *cupom) {
    return cupom == nullptr ? 0 : codigoDe(cupom->estado);
}

const char *zel_cupom_detalhe(const zel_cupom *cupom) {
    return cupom == nullptr ? "" : cupom->detalhe.c_str();
}

void zel_cupom_liberar_bytes(unsigned char *bytes) {
    std::free(bytes);
}

const char *zel_cupom_descrever(int codigo) {
    for (const Descricao &descricao : kDescricoes)
        if (descricao.codigo == codigo) return descricao.texto;
    return "codigo desconhecido";
}
