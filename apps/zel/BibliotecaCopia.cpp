// SPDX-License-Identifier: MIT
#include "BibliotecaCopia.h"

#include "Arquivos.h"
#include "Biblioteca.h"
#include "Texto.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace zel::aplicativo {

namespace {

// What a receipt is laid out from; only the first has to be there.
constexpr std::string_view kArquivos[] = {"ZEL_Framework.xml", "ultimadanfe.bin",
                                          "documentosEnvio.xml"};

} // namespace

CopiaDoCaixa::CopiaDoCaixa(const std::string &diretorio) {
    std::error_code erro;
    const auto pasta = std::filesystem::temp_directory_path(erro);
    std::string modelo = juntar({erro ? "/tmp" : pasta.string(), "/zel-XXXXXX"});
    if (::mkdtemp(modelo.data()) == nullptr) {
        motivo_ = juntar({modelo, ": ", std::strerror(errno)});
        return;
    }
    diretorio_ = modelo + "/";
    if (!copiar(diretorio)) {
        std::filesystem::remove_all(diretorio_, erro);
        diretorio_.clear();
        return;
    }
    ::setenv("ZEL_DIRETORIO", diretorio_.c_str(), 1);
    // Looking makes no files.
    for (const std::string_view pdf :
         {R"(CONFIGURACAO\SalvarDanfePDF)", R"(CONFIGURACAO\SalvarXMLPDF)"})
        gravarConfig(pdf, "0");
}

CopiaDoCaixa::~CopiaDoCaixa() {
    std::error_code erro;
    if (!diretorio_.empty()) std::filesystem::remove_all(diretorio_, erro);
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
        std::ofstream copia(juntar({diretorio_, nome}), std::ios::binary);
        if (!copia.write(bytes.data(), static_cast<std::streamsize>(bytes.size())).flush()) {
            motivo_ = juntar({diretorio_, nome, ": não pôde ser gravado"});
            return false;
        }
    }
    return true;
}

} // namespace zel::aplicativo
