// SPDX-License-Identifier: MIT
#include "comandos/BibliotecaCopia.h"

#include "comandos/Biblioteca.h"
#include "comum/ArquivosDoCaixa.h"
#include "leitura/Arquivos.h"
#include "leitura/Texto.h"

#include <cstdlib>
#include <fstream>

namespace zel::aplicativo {

namespace {

// What a receipt is laid out from; only the first has to be there.
constexpr std::string_view kArquivos[] = {arquivos::kConfig, arquivos::kUltimaDanfe,
                                          arquivos::kEnvio};

} // namespace

CopiaDoCaixa::CopiaDoCaixa(const std::string &diretorio) : motivo_(pasta_.motivo()) {
    if (pasta_.caminho().empty() || !copiar(diretorio)) return;
    diretorio_ = pasta_.caminho();
    ::setenv("ZEL_DIRETORIO", diretorio_.c_str(), 1);
    // Looking makes no files.
    for (const std::string_view pdf :
         {R"(CONFIGURACAO\SalvarDanfePDF)", R"(CONFIGURACAO\SalvarXMLPDF)"})
        gravarConfig(pdf, "0");
}

bool CopiaDoCaixa::copiar(const std::string &origem) {
    for (const std::string_view nome : kArquivos) {
        std::string bytes;
        const Leitura leitura =
            lerArquivo(juntar({origem, nome}), kMaximoDocumento, bytes, motivo_);
        if (leitura == Leitura::kInexistente && nome != kArquivos[0]) continue;
        if (leitura != Leitura::kLido) {
            motivo_ = juntar({nome, ": ", motivo_});
            return false;
        }
        std::ofstream copia(juntar({pasta_.caminho(), nome}), std::ios::binary);
        if (!copia.write(bytes.data(), static_cast<std::streamsize>(bytes.size())).flush()) {
            motivo_ = juntar({pasta_.caminho(), nome, ": não pôde ser gravado"});
            return false;
        }
    }
    return true;
}

} // namespace zel::aplicativo
