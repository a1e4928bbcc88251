// SPDX-License-Identifier: MIT
#include "util/Arquivo.h"

#include "ZEL_FelborFramework.h"
#include "util/Descritor.h"

#include <cerrno>
#include <cstdio>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>

namespace zel {

namespace {

// What stands beside a file while it is replaced: the new one, and the second name of the old one.
constexpr std::string_view kRascunho = ".novo";
constexpr std::string_view kAntigo = ".antigo";

std::string diretorioDe(const std::string &caminho) {
    const std::size_t barra = caminho.rfind('/');
    return barra == caminho.npos ? "./" : caminho.substr(0, barra + 1);
}

// What stands under a name; none when nothing does, or when that cannot be known (errno).
std::optional<struct stat> situacao(const std::string &caminho) {
    struct stat dados {};
    if (::lstat(caminho.c_str(), &dados) != 0) return {};
    return dados;
}

// Whether the last call failed because there is no such file.
bool naoExiste() {
    return errno == ENOENT || errno == ENOTDIR;
}

// Writes at the place given, or after what was written last.
bool escreverTudo(int fd, std::string_view conteudo, std::optional<off_t> lugar = {}) {
    while (!conteudo.empty()) {
        const ssize_t escritos = insistir([&] {
            return lugar ? ::pwrite(fd, conteudo.data(), conteudo.size(), *lugar)
                         : ::write(fd, conteudo.data(), conteudo.size());
        });
        if (escritos <= 0) return false;
        conteudo.remove_prefix(static_cast<std::size_t>(escritos));
        if (lugar) *lugar += escritos;
    }
    return true;
}

// The file that a symbolic link points to, also when it does not exist yet; a path that is no link
// itself.
std::string seguirLigacoes(std::string caminho) {
    for (int saltos = 0; saltos < 8; ++saltos) {
        char alvo[4096];
        const ssize_t tamanho = ::readlink(caminho.c_str(), alvo, sizeof alvo);
        if (tamanho <= 0) break;
        const std::string_view texto{alvo, static_cast<std::size_t>(tamanho)};
        caminho = texto.front() == '/' ? std::string(texto) : diretorioDe(caminho).append(texto);
    }
    return caminho;
}

constexpr int naoSeguir(Ligacao ligacao) {
    return ligacao == Ligacao::kSeguida ? 0 : O_NOFOLLOW;
}

bool trocarDeLugar(const std::string &a, const std::string &b) {
    return ::renameat2(AT_FDCWD, a.c_str(), AT_FDCWD, b.c_str(), RENAME_EXCHANGE) == 0;
}

// Flushes a directory. Some network file systems cannot do that and say so with EINVAL; a directory
// that may be written but not read cannot be opened for it by this process.
bool descarregar(const Descritor &diretorio) {
    return !diretorio.aberto() || insistir([&] { return ::fsync(diretorio.fd()); }) == 0 ||
           errno == EINVAL;
}

// Puts `de` in the place of `para`, keeping the old file at hand until the directory is flushed:
// the two change places where the system can do that, elsewhere the old file gets a second name
// (where it can). Should the directory refuse to be flushed, the old file comes back.
bool tomarLugar(const std::string &de, const std::string &para) {
    const Descritor diretorio(diretorioDe(para).c_str(), O_RDONLY | O_DIRECTORY);
    if (!diretorio.aberto() && errno != EACCES) return false;

    const bool existia = existeArquivo(para);
    const std::string antigo = std::string(de).append(kAntigo);
    const bool trocados = existia && trocarDeLugar(de, para);
    if (!trocados) {
        removerArquivo(antigo);
        if (existia && ::link(para.c_str(), antigo.c_str()) != 0 && errno == ENOSPC) return false;
        if (::rename(de.c_str(), para.c_str()) != 0) {
            removerArquivo(antigo);
            return false;
        }
    }
    if (descarregar(diretorio)) {
        if (existia) removerArquivo(trocados ? de : antigo);
        return true;
    }
    // What cannot be taken back either has happened.
    const bool voltou = trocados ? trocarDeLugar(de, para)
                                 : ::rename(existia ? antigo.c_str() : para.c_str(),
                                            existia ? para.c_str() : de.c_str()) == 0;
    if (voltou) descarregar(diretorio);
    return !voltou;
}

// Mode and owner of the file that is replaced. Only root may give a file away; anyone else keeps it
// as his own.
bool herdarPermissoes(const Descritor &arquivo, const struct stat &antigo) {
    if ((antigo.st_uid != ::geteuid() || antigo.st_gid != ::getegid()) &&
        ::fchown(arquivo.fd(), antigo.st_uid, antigo.st_gid) != 0 && errno != EPERM)
        return false;
    return ::fchmod(arquivo.fd(), antigo.st_mode & 07777) == 0;
}

enum class Descarga { kJa, kNenhuma };

bool escreverNovo(const std::string &caminho, std::string_view conteudo, Acesso acesso,
                  const std::optional<struct stat> &antigo, Descarga descarga = Descarga::kJa) {
    const mode_t permissoes = acesso == Acesso::kUmask ? 0666 : 0600;
    Descritor arquivo(caminho.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, permissoes);
    if (!arquivo.aberto()) return false;
    if (acesso != Acesso::kUmask && antigo && !herdarPermissoes(arquivo, *antigo)) return false;
    if (!escreverTudo(arquivo.fd(), conteudo)) return false;
    if (descarga == Descarga::kJa && insistir([&] { return ::fsync(arquivo.fd()); }) != 0)
        return false;
    return arquivo.fechar();
}

std::string destinoDe(const std::string &caminho, Ligacao ligacao) {
    return ligacao == Ligacao::kSeguida ? seguirLigacoes(caminho) : caminho;
}

std::string rascunhoDe(const std::string &destino) {
    return std::string(destino).append(kRascunho);
}

Identidade identidadeDe(const struct stat &dados) {
    constexpr std::int64_t kSegundo = 1'000'000'000;
    return {dados.st_ino, static_cast<std::uint64_t>(dados.st_size),
            dados.st_ctim.tv_sec * kSegundo + dados.st_ctim.tv_nsec};
}

// Writes into what is no file (a device, a pipe with a reader), without waiting for it.
int escreverAtraves(const std::string &caminho, std::string_view conteudo) {
    const Descritor arquivo(caminho.c_str(), O_WRONLY | O_NONBLOCK);
    return arquivo.aberto() && escreverTudo(arquivo.fd(), conteudo) ? ZEL_OK
                                                                    : ZEL_ARQUIVO_INDISPONIVEL;
}

// Writes a regular file over where it stands, and back when that fails.
int sobrescrever(const std::string &caminho, std::string_view conteudo) {
    std::string antigo;
    if (lerArquivo(caminho, antigo) != Leitura::kLido) return ZEL_ARQUIVO_INDISPONIVEL;
    const Descritor arquivo(caminho.c_str(), O_WRONLY | O_NONBLOCK);
    if (!arquivo.aberto()) return ZEL_ARQUIVO_INDISPONIVEL;
    const auto escrever = [&](std::string_view texto) {
        const auto tamanho = static_cast<off_t>(texto.size());
        return escreverTudo(arquivo.fd(), texto, 0) &&
               insistir([&] { return ::ftruncate(arquivo.fd(), tamanho); }) == 0 &&
               insistir([&] { return ::fsync(arquivo.fd()); }) == 0;
    };
    if (escrever(conteudo)) return ZEL_OK;
    escrever(antigo);
    return ZEL_ARQUIVO_INDISPONIVEL;
}

} // namespace

Leitura lerArquivo(const std::string &caminho, std::string &conteudo, Ligacao ligacao) {
    conteudo.clear();
    // Not blocking: a pipe in the place of a file must not hold up the till.
    const Descritor arquivo(caminho.c_str(), O_RDONLY | O_NONBLOCK | naoSeguir(ligacao));
    if (!arquivo.aberto()) return errno == ENOENT ? Leitura::kInexistente : Leitura::kFalha;
    struct stat dados {};
    if (::fstat(arquivo.fd(), &dados) != 0 || !S_ISREG(dados.st_mode)) return Leitura::kFalha;

    // One byte more than the file holds, so that the end is met in the same read.
    std::size_t lidos = 0;
    conteudo.resize(static_cast<std::size_t>(dados.st_size) + 1);
    for (;;) {
        const ssize_t parte = insistir(
            [&] { return ::read(arquivo.fd(), conteudo.data() + lidos, conteudo.size() - lidos); });
        if (parte < 0) {
            conteudo.clear();
            return Leitura::kFalha;
        }
        lidos += static_cast<std::size_t>(parte);
        if (lidos < conteudo.size()) break;
        conteudo.resize(conteudo.size() * 2);
    }
    conteudo.resize(lidos);
    return Leitura::kLido;
}

int substituirArquivo(const std::string &caminho, std::string_view conteudo, Acesso acesso,
                      Ligacao ligacao) {
    const std::string destino =
        ligacao == Ligacao::kSeguida ? seguirLigacoes(caminho) : std::string(caminho);
    const auto antigo = situacao(destino);
    if (!antigo && !naoExiste()) return ZEL_ARQUIVO_INDISPONIVEL;
    if (antigo && !S_ISREG(antigo->st_mode) && !S_ISLNK(antigo->st_mode))
        return ZEL_ARQUIVO_INDISPONIVEL;
    const std::string novo = std::string(destino).append(kRascunho);
    removerArquivo(novo); // left by a process that died
    // The mode of a link says nothing.
    const bool herda = antigo && S_ISREG(antigo->st_mode);
    if (escreverNovo(novo, conteudo, acesso, herda ? antigo : std::nullopt) &&
        tomarLugar(novo, destino))
        return ZEL_OK;
    const int erro = errno;
    removerArquivo(novo);
    errno = erro;
    return ZEL_ARQUIVO_INDISPONIVEL;
}

int criarArquivo(const std::string &caminho, std::string_view conteudo) {
    const std::string novo = std::string(caminho).append(kRascunho);
    if (existeArquivo(caminho) || existeArquivo(novo)) return ZEL_RECUSADO;
    if (!escreverNovo(novo, conteudo, Acesso::kUmask, {})) {
        // Somebody else's in this instant is not ours to remove.
        const bool alheio = errno == EEXIST;
        if (!alheio) removerArquivo(novo);
        return alheio ? ZEL_RECUSADO : ZEL_ARQUIVO_INDISPONIVEL;
    }
    int resultado = ::link(novo.c_str(), caminho.c_str()) == 0 ? ZEL_OK : ZEL_ARQUIVO_INDISPONIVEL;
    if (resultado != ZEL_OK && errno == EEXIST) resultado = ZEL_RECUSADO;
    if (resultado == ZEL_ARQUIVO_INDISPONIVEL && (errno == EPERM || errno == EOPNOTSUPP))
        resultado = renomearArquivo(novo, caminho); // a file system without links
    removerArquivo(novo);
    return resultado == ZEL_OK ? descarregarDiretorio(caminho) : resultado;
}

int gravarDestino(const std::string &caminho, std::string_view conteudo) {
    const std::string destino = seguirLigacoes(caminho);
    const auto antigo = situacao(destino);
    if (!antigo)
        return naoExiste() ? substituirArquivo(destino, conteudo, Acesso::kUmask)
                           : int{ZEL_ARQUIVO_INDISPONIVEL};
    if (!S_ISREG(antigo->st_mode)) return escreverAtraves(destino, conteudo);
    // A file that only another owner may have in a directory that only he may change is written in
    // its place.
    const bool nosso = antigo->st_uid == ::geteuid() && antigo->st_nlink == 1;
    if (nosso) {
        const int resultado = substituirArquivo(destino, conteudo, Acesso::kHerdado);
        if (resultado == ZEL_OK || (errno != EACCES && errno != EPERM)) return resultado;
    }
    return sobrescrever(destino, conteudo);
}

int escreverArquivo(const std::string &caminho, std::string_view conteudo, Acesso acesso) {
    const std::string novo = std::string(caminho).append(kRascunho);
    removerArquivo(novo); // left by a process that died
    if (escreverNovo(novo, conteudo, acesso, {}) && renomearArquivo(novo, caminho) == ZEL_OK)
        return ZEL_OK;
    removerArquivo(novo);
    return ZEL_ARQUIVO_INDISPONIVEL;
}

Leitura identificar(const std::string &caminho, Ligacao ligacao, Identidade &identidade) {
    struct stat dados {};
    const int resultado = ligacao == Ligacao::kSeguida ? ::stat(caminho.c_str(), &dados)
                                                       : ::lstat(caminho.c_str(), &dados);
    if (resultado != 0) return naoExiste() ? Leitura::kInexistente : Leitura::kFalha;
    if (!S_ISREG(dados.st_mode)) return Leitura::kFalha;
    identidade = identidadeDe(dados);
    return Leitura::kLido;
}

Identidade identificarDiretorio(const std::string &caminho) {
    struct stat dados {};
    return ::stat(caminho.c_str(), &dados) == 0 ? identidadeDe(dados) : Identidade{};
}

bool ehLigacao(const std::string &caminho) {
    const auto dados = situacao(caminho);
    return dados && S_ISLNK(dados->st_mode);
}

int escreverRascunho(const std::string &caminho, std::string_view conteudo, Acesso acesso,
                     Ligacao ligacao) {
    const std::string destino = destinoDe(caminho, ligacao), novo = rascunhoDe(destino);
    const auto antigo = situacao(destino);
    if (!antigo && !naoExiste()) return ZEL_ARQUIVO_INDISPONIVEL;
    if (antigo && !S_ISREG(antigo->st_mode) && !S_ISLNK(antigo->st_mode))
        return ZEL_ARQUIVO_INDISPONIVEL;
    removerArquivo(novo); // left by a process that died
    const bool herda = antigo && S_ISREG(antigo->st_mode);
    if (escreverNovo(novo, conteudo, acesso, herda ? antigo : std::nullopt, Descarga::kNenhuma))
        return ZEL_OK;
    removerArquivo(novo);
    return ZEL_ARQUIVO_INDISPONIVEL;
}

int instalarRascunho(const std::string &caminho, Ligacao ligacao) {
    const std::string destino = destinoDe(caminho, ligacao);
    return renomearArquivo(rascunhoDe(destino), destino);
}

void removerRascunho(const std::string &caminho, Ligacao ligacao) {
    removerArquivo(rascunhoDe(destinoDe(caminho, ligacao)));
}

int escreverNoLugar(const std::string &caminho, std::size_t lugar, std::string_view bytes,
                    Ligacao ligacao) {
    const Descritor arquivo(caminho.c_str(), O_WRONLY | O_NONBLOCK | naoSeguir(ligacao));
    return arquivo.aberto() && escreverTudo(arquivo.fd(), bytes, static_cast<off_t>(lugar))
               ? ZEL_OK
               : ZEL_ARQUIVO_INDISPONIVEL;
}

int descarregarArquivo(const std::string &caminho, Ligacao ligacao) {
    const Descritor arquivo(caminho.c_str(), O_RDONLY | O_NONBLOCK | naoSeguir(ligacao));
    return arquivo.aberto() && insistir([&] { return ::fsync(arquivo.fd()); }) == 0
               ? ZEL_OK
               : ZEL_ARQUIVO_INDISPONIVEL;
}

int renomearArquivo(const std::string &de, const std::string &para) {
    return ::rename(de.c_str(), para.c_str()) == 0 ? ZEL_OK : ZEL_ARQUIVO_INDISPONIVEL;
}

int descarregarDiretorio(const std::string &caminho) {
    const Descritor diretorio(diretorioDe(caminho).c_str(), O_RDONLY | O_DIRECTORY);
    if (!diretorio.aberto() && errno != EACCES) return ZEL_ARQUIVO_INDISPONIVEL;
    return descarregar(diretorio) ? ZEL_OK : ZEL_ARQUIVO_INDISPONIVEL;
}

int removerArquivo(const std::string &caminho) {
    return ::unlink(caminho.c_str()) == 0 || errno == ENOENT ? ZEL_OK : ZEL_ARQUIVO_INDISPONIVEL;
}

void removerRascunhos(const std::string &diretorio, bool (*nosso)(std::string_view nome)) {
    const std::unique_ptr<DIR, decltype([](DIR *aberto) { ::closedir(aberto); })> aberto(
        ::opendir(diretorio.c_str()));
    if (!aberto) return;
    while (const dirent *entrada = ::readdir(aberto.get())) {
        std::string_view nome = entrada->d_name;
        if (nome.ends_with(kAntigo)) nome.remove_suffix(kAntigo.size());
        if (!nome.ends_with(kRascunho)) continue;
        nome.remove_suffix(kRascunho.size());
        if (nosso(nome)) removerArquivo(diretorio + entrada->d_name);
    }
}

bool existeArquivo(const std::string &caminho) {
    return situacao(caminho).has_value() || !naoExiste();
}

int alterarNoLugar(const std::string &caminho, std::string_view antes, std::string_view depois) {
    constexpr std::size_t kSetor = 512;
    if (antes.size() != depois.size()) return ZEL_RECUSADO;
    const auto diferem = [&](std::size_t i) { return antes[i] != depois[i]; };
    std::size_t inicio = 0, fim = antes.size();
    while (inicio < fim && !diferem(inicio))
        ++inicio;
    if (inicio == fim) return ZEL_OK;
    while (!diferem(fim - 1))
        --fim;
    if (inicio / kSetor != (fim - 1) / kSetor) return ZEL_RECUSADO;

    const Descritor arquivo(caminho.c_str(), O_WRONLY | O_NONBLOCK);
    struct stat dados {};
    if (!arquivo.aberto() || ::fstat(arquivo.fd(), &dados) != 0 || !S_ISREG(dados.st_mode) ||
        static_cast<std::size_t>(dados.st_size) != antes.size())
        return ZEL_RECUSADO;
    const auto escrever = [&](std::string_view texto) {
        return escreverTudo(arquivo.fd(), texto.substr(inicio, fim - inicio),
                            static_cast<off_t>(inicio));
    };
    const auto gravar = [&] { return insistir([&] { return ::fdatasync(arquivo.fd()); }) == 0; };
    const bool inteiro = escrever(depois);
    if (inteiro && gravar()) return ZEL_OK;
    if (escrever(antes)) {
        gravar();
        return ZEL_ARQUIVO_INDISPONIVEL;
    }
    // What cannot be taken back has happened.
    return inteiro ? ZEL_OK : ZEL_ARQUIVO_INDISPONIVEL;
}

int acrescentarArquivo(const std::string &caminho, std::size_t tamanho, std::string_view conteudo) {
    const Descritor arquivo(caminho.c_str(), O_WRONLY | O_APPEND | O_NONBLOCK | O_NOFOLLOW);
    if (!arquivo.aberto()) return errno == ENOENT ? ZEL_RECUSADO : ZEL_ARQUIVO_INDISPONIVEL;
    struct stat dados {};
    if (::fstat(arquivo.fd(), &dados) != 0) return ZEL_ARQUIVO_INDISPONIVEL;
    if (!S_ISREG(dados.st_mode) || static_cast<std::size_t>(dados.st_size) != tamanho)
        return ZEL_RECUSADO;

    const auto gravar = [&] { return insistir([&] { return ::fdatasync(arquivo.fd()); }) == 0; };
    const bool inteiro = escreverTudo(arquivo.fd(), conteudo);
    if (inteiro && gravar()) return ZEL_OK;
    // Half a record would be dropped by the next process, a whole one would come back to life.
    if (insistir([&] { return ::ftruncate(arquivo.fd(), static_cast<off_t>(tamanho)); }) == 0) {
        gravar();
        return ZEL_ARQUIVO_INDISPONIVEL;
    }
    // What cannot be taken back has happened.
    return inteiro ? ZEL_OK : ZEL_ARQUIVO_INDISPONIVEL;
}

} // namespace zel
