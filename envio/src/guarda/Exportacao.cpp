// SPDX-License-Identifier: MIT
#include "guarda/Guarda.h"

#include "base/Texto.h"
#include "comum/Arquivo.h"
#include "comum/Ascii.h"
#include "comum/Descritor.h"
#include "guarda/Motivo.h"
#include "guarda/Notas.h"

#include <algorithm>
#include <filesystem>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>
#include <zip.h>

namespace zel::envio {

namespace {

namespace fs = std::filesystem;

struct Descartar {
    void operator()(zip_t *pacote) const { zip_discard(pacote); }
};
using Pacote = std::unique_ptr<zip_t, Descartar>;

std::string motivoDe(zip_error_t *erro) {
    return zip_error_system_type(erro) == ZIP_ET_SYS
               ? motivoDoDisco(zip_error_code_system(erro))
               : "o pacote não pôde ser escrito: " + std::string(zip_error_strerror(erro));
}

// Files of the month of every issuer, below `guardados`, in order: "CNPJ/AAAA/MM/NAME.xml". Names
// that this program does not give, and links, stay out.
std::vector<std::string> arquivosDe(const std::string &guardados, std::string_view mes) {
    std::vector<std::string> achados;
    std::error_code nada;
    for (const auto &emissor : fs::directory_iterator(guardados, nada)) {
        const std::string cnpj = emissor.path().filename();
        if (cnpj.size() != 14 || !soDigitos(cnpj)) continue;
        const std::string pasta =
            cnpj + '/' + std::string(mes.substr(0, 4)) + '/' + std::string(mes.substr(5)) + '/';
        for (const auto &arquivo : fs::directory_iterator(guardados + pasta, nada)) {
            const std::string nome = arquivo.path().filename();
            if (arquivo.symlink_status(nada).type() == fs::file_type::regular &&
                !nome.starts_with('.') && nome.ends_with(".xml"))
                achados.push_back(pasta + nome);
        }
    }
    std::sort(achados.begin(), achados.end());
    return achados;
}

bool juntar(zip_t *pacote, const std::string &nome, zip_source_t *fonte) {
    if (fonte != nullptr && zip_file_add(pacote, nome.c_str(), fonte, ZIP_FL_ENC_UTF_8) >= 0)
        return true;
    if (fonte != nullptr) zip_source_free(fonte);
    return false;
}

// Why it could not be written; empty when it stands there, closed to others.
std::string escreverPacote(const std::string &onde, const std::string &guardados,
                           const std::vector<std::string> &arquivos, const std::string &notas) {
    // Whoever replaces a file keeps its mode: nobody else reads it, not even for a moment.
    ::unlink(onde.c_str());
    const comum::Descritor vazio(comum::insistir(
        [&] { return ::open(onde.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600); }));
    if (!vazio.aberto()) return motivoDoDisco(errno);
    int codigo = 0;
    Pacote pacote(zip_open(onde.c_str(), ZIP_TRUNCATE, &codigo));
    if (pacote == nullptr) {
        zip_error_t erro;
        zip_error_init_with_code(&erro, codigo);
        std::string motivo = motivoDe(&erro);
        zip_error_fini(&erro);
        return motivo;
    }
    bool certo = juntar(pacote.get(), "notas.csv",
                        zip_source_buffer(pacote.get(), notas.data(), notas.size(), 0));
    for (const std::string &arquivo : arquivos)
        certo = certo && juntar(pacote.get(), arquivo,
                                zip_source_file(pacote.get(), (guardados + arquivo).c_str(), 0, 0));
    if (!certo || zip_close(pacote.get()) != 0) return motivoDe(zip_get_error(pacote.get()));
    static_cast<void>(pacote.release());
    return {};
}

} // namespace

std::optional<std::int64_t> exportarMes(Fila &fila, const std::string &guardados,
                                        std::string_view mes, const std::string &arquivo,
                                        Recusas &recusas) {
    const auto recusar = [&](std::string_view valor, std::string_view motivo) {
        recusas.juntar("exportar", valor, motivo);
        return std::nullopt;
    };
    if (!ehData(std::string(mes) + "-01")) return recusar(mes, "não é um mês: escreva AAAA-MM");
    struct stat dados {};
    if (::stat(arquivo.c_str(), &dados) == 0 && !S_ISREG(dados.st_mode))
        return recusar(arquivo, "já existe e não é um arquivo comum: dê outro nome");
    fila.falha();
    const std::string notas = listarNotas(fila, Guarda(guardados), mes);
    if (const std::string falha = fila.falha(); !falha.empty()) return recusar("fila", falha);
    const std::vector<std::string> arquivos = arquivosDe(guardados, mes);
    const std::string novo = arquivo + '.' + std::to_string(::gettid()) + ".novo";
    if (const std::string motivo = escreverPacote(novo, guardados, arquivos, notas);
        !motivo.empty()) {
        ::unlink(novo.c_str());
        return recusar(arquivo, motivo);
    }
    if (!comum::tomarLugar(novo, arquivo)) return recusar(arquivo, motivoDoDisco(errno));
    return static_cast<std::int64_t>(arquivos.size());
}

} // namespace zel::envio
