#include "zel_cupom.h"

#include "Arquivo.h"
#include "Imagem.h"
#include "Leitor.h"

#include <algorithm>
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
};

namespace {

struct Imagem {
    int codigo = ZEL_CUPOM_OK;
    std::string bytes;
};

using Formato = std::optional<std::string> (*)(const Pagina &, const Recursos &, int escala);

std::optional<std::string> formatoSvg(const Pagina &pagina, const Recursos &recursos, int) {
    return gerarSvg(pagina, recursos);
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

std::optional<ImagemCinza> logotipoNoPapel(const zel_cupom &recibo) {
    if (!recibo.logotipo) return {};
    ImagemCinza logotipo =
        caber(*recibo.logotipo, recibo.papel->larguraUtil, kMaiorAlturaDoLogotipo);
    return recibo.tons == ZEL_CUPOM_PONTOS ? pontilhar(std::move(logotipo)) : logotipo;
}

Imagem gerar(zel_cupom &recibo, Formato formato) {
    if (!recibo.fontes) recibo.fontes = acharFontes();
    if (!recibo.fontes) return {ZEL_CUPOM_FONTE, {}};
    const std::optional<ImagemCinza> logotipo = logotipoNoPapel(recibo);
    TamanhoLogotipo tamanho;
    if (logotipo) tamanho = {logotipo->largura, logotipo->altura};
    const std::optional<Pagina> pagina = paginar(recibo.cupom, *recibo.papel, tamanho);
    if (!pagina) return {ZEL_CUPOM_LONGO, {}};
    const Recursos recursos{*recibo.fontes, logotipo ? &*logotipo : nullptr};
    std::optional<std::string> bytes = formato(*pagina, recursos, recibo.escala);
    if (!bytes) return {ZEL_CUPOM_DESENHO, {}};
    return {ZEL_CUPOM_OK, std::move(*bytes)};
}

int entregar(zel_cupom *recibo, Formato formato, unsigned char **bytes, std::size_t *tamanho) {
    if (recibo == nullptr || bytes == nullptr || tamanho == nullptr) return ZEL_CUPOM_ARGUMENTO;
    return protegida([&] {
        const Imagem imagem = gerar(*recibo, formato);
        if (imagem.codigo != ZEL_CUPOM_OK) return imagem.codigo;
        void *copia = std::malloc(imagem.bytes.size());
        if (copia == nullptr) return int{ZEL_CUPOM_MEMORIA};
        std::memcpy(copia, imagem.bytes.data(), imagem.bytes.size());
        *bytes = static_cast<unsigned char *>(copia);
        *tamanho = imagem.bytes.size();
        return int{ZEL_CUPOM_OK};
    });
}

int gravar(zel_cupom *recibo, Formato formato, const char *arquivo) {
    if (recibo == nullptr || arquivo == nullptr || *arquivo == '\0') return ZEL_CUPOM_ARGUMENTO;
    return protegida([&] {
        const Imagem imagem = gerar(*recibo, formato);
        if (imagem.codigo != ZEL_CUPOM_OK) return imagem.codigo;
        return int{substituirArquivo(arquivo, imagem.bytes) ? ZEL_CUPOM_OK : ZEL_CUPOM_ARQUIVO};
    });
}

} // namespace

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
    return entregar(cupom, gerarPng, bytes, tamanho);
}

int zel_cupom_gravar_png(zel_cupom *cupom, const char *arquivo) {
    return gravar(cupom, gerarPng, arquivo);
}

int zel_cupom_svg(zel_cupom *cupom, unsigned char **bytes, size_t *tamanho) {
    return entregar(cupom, formatoSvg, bytes, tamanho);
}

int zel_cupom_gravar_svg(zel_cupom *cupom, const char *arquivo) {
    return gravar(cupom, formatoSvg, arquivo);
}

void zel_cupom_liberar_bytes(unsigned char *bytes) {
    std::free(bytes);
}

const char *zel_cupom_descrever(int codigo) {
    switch (codigo) {
    case ZEL_CUPOM_OK:
        return "feito";
    case ZEL_CUPOM_ARGUMENTO:
        return "argumento nulo ou fora dos valores aceitos";
    case ZEL_CUPOM_MEMORIA:
        return "falta memoria";
    case ZEL_CUPOM_LONGO:
        return "o cupom passa do maior texto ou do maior papel";
    case ZEL_CUPOM_FONTE:
        return "nenhuma fonte monoespacada: arquivo ausente, ilegivel ou de outro tipo";
    case ZEL_CUPOM_LOGOTIPO:
        return "logotipo ilegivel, grande demais ou que nao e PNG";
    case ZEL_CUPOM_ARQUIVO:
        return "o arquivo nao pode ser gravado";
    case ZEL_CUPOM_DESENHO:
        return "falha da biblioteca de desenho";
    default:
        return "codigo desconhecido";
    }
}
