// SPDX-License-Identifier: MIT
#include "disco/Arquivo.h"

#include "comum/ArquivosDoCaixa.h"
#include "recusa/Recusa.h"
#include "zel_felbor/codigos.h"

#include <cerrno>
#include <cstdio>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <new>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace zel {

namespace {

using arquivos::kRascunho;

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
    return !diretorio.aberto() || diretorio.descarregar() || errno == EINVAL;
}

bool descarregarNomes(const std::string &caminho) {
    const Descritor diretorio(caminho.c_str(), O_RDONLY | O_DIRECTORY);
    const bool feito = (diretorio.aberto() || errno == EACCES) && descarregar(diretorio);
    return feito || falhouArquivo(caminho);
}

// Names that are needed once a scratch file is written, when there may be no memory for them.
struct Vizinhos {
    std::string diretorio, antigo;
    explicit Vizinhos(const std::string &destino)
        : diretorio(diretorioDe(destino)),
          antigo(std::string(destino).append(arquivos::kRascunhoAntigo)) {}
};

// Puts `de` in the place of `para`, keeping the old file at hand until the directory is flushed:
// the two change places where the system can do that, elsewhere the old file gets a second name
// (where it can). Should the directory refuse to be flushed, the old file comes back.
bool tomarLugar(const std::string &de, const std::string &para, const Vizinhos &vizinhos) {
    const Descritor diretorio(vizinhos.diretorio.c_str(), O_RDONLY | O_DIRECTORY);
    if (!diretorio.aberto() && errno != EACCES) return falhouArquivo(para);

    const bool existia = existeArquivo(para);
    const std::string &antigo = vizinhos.antigo;
    const bool trocados = existia && trocarDeLugar(de, para);
    if (!trocados) {
        removerArquivo(antigo);
        if (existia && ::link(para.c_str(), antigo.c_str()) != 0 && errno == ENOSPC)
            return falhouArquivo(para);
        if (::rename(de.c_str(), para.c_str()) != 0) {
            falhouArquivo(para);
            removerArquivo(antigo);
            return false;
        }
    }
    if (descarregar(diretorio)) {
        if (existia) removerArquivo(trocados ? de : antigo);
        return true;
    }
    falhouArquivo(para);
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

// What a file gets once it is written: a time of writing of its own, where that can be, and a
// flush.
struct Remate {
    std::optional<std::int64_t> momento{};
    bool descarga = true;
};

bool rematar(const Descritor &arquivo, const Remate &remate) {
    Identidade marcada;
    const auto ver = [&](Identidade &identidade) {
        const auto dados = arquivo.situacao();
        if (dados) identidade = identidadeDe(*dados);
        return dados.has_value();
    };
    return (!remate.momento || marcarEscrita(arquivo, *remate.momento, marcada, ver)) &&
           (!remate.descarga || arquivo.descarregar());
}

bool escreverNovo(const std::string &caminho, std::string_view conteudo, Acesso acesso,
                  const std::optional<struct stat> &antigo, const Remate &remate = {}) {
    const mode_t permissoes = acesso == Acesso::kUmask ? 0666 : 0600;
    Descritor arquivo(caminho.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, permissoes);
    const bool escrito =
        arquivo.aberto() &&
        (acesso == Acesso::kUmask || !antigo || herdarPermissoes(arquivo, *antigo)) &&
        arquivo.escrever(conteudo) && rematar(arquivo, remate) && arquivo.fechar();
    return escrito || falhouArquivo(caminho);
}

std::string destinoDe(const std::string &caminho, Ligacao ligacao) {
    return ligacao == Ligacao::kSeguida ? seguirLigacoes(caminho) : caminho;
}

// The scratch file of one that is to be replaced; none when that is no regular file.
bool escreverAoLado(const Rascunho &rascunho, std::string_view conteudo, Acesso acesso,
                    const Remate &remate) {
    const std::string &destino = rascunho.destino, &novo = rascunho.nome;
    const auto antigo = situacao(destino);
    if (!antigo && !naoExiste()) return falhouArquivo(destino);
    if (antigo && !S_ISREG(antigo->st_mode) && !S_ISLNK(antigo->st_mode))
        return naoEhArquivo(destino);
    // The mode of a link says nothing.
    const auto modelo = antigo && S_ISREG(antigo->st_mode) ? antigo : std::nullopt;
    const auto escrever = [&] { return escreverNovo(novo, conteudo, acesso, modelo, remate); };
    if (escrever()) return true;
    // Left by a process that died.
    if (errno == EEXIST && removerArquivo(novo) && escrever()) return true;
    const int erro = errno;
    removerArquivo(novo);
    errno = erro;
    return false;
}

// Writes into what is no file (a device, a pipe with a reader), without waiting for it.
int escreverAtraves(const std::string &caminho, std::string_view conteudo) {
    const Descritor arquivo(caminho.c_str(), O_WRONLY | O_NONBLOCK);
    const bool escrito = arquivo.aberto() && arquivo.escrever(conteudo);
    return escrito ? int{ZEL_OK} : arquivoIndisponivel(caminho);
}

// Writes a regular file over where it stands, and back when that fails.
int sobrescrever(const std::string &caminho, std::string_view conteudo) {
    std::string antigo;
    if (lerArquivo(caminho, antigo) != Leitura::kLido) return arquivoIndisponivel();
    const Descritor arquivo(caminho.c_str(), O_WRONLY | O_NONBLOCK);
    if (!arquivo.aberto()) return arquivoIndisponivel(caminho);
    const auto escrever = [&](std::string_view texto) {
        const auto tamanho = static_cast<off_t>(texto.size());
        return arquivo.escrever(texto, 0) &&
               insistir([&] { return ::ftruncate(arquivo.fd(), tamanho); }) == 0 &&
               arquivo.descarregar();
    };
    if (escrever(conteudo)) return ZEL_OK;
    const int codigo = arquivoIndisponivel(caminho);
    escrever(antigo);
    return codigo;
}

} // namespace

Leitura lerArquivo(const std::string &caminho, std::string &conteudo, Ligacao ligacao,
                   Identidade *identidade) {
    conteudo.clear();
    // Not blocking: a pipe in the place of a file must not hold up the till.
    const Descritor arquivo(caminho.c_str(), O_RDONLY | O_NONBLOCK | naoSeguir(ligacao));
    if (!arquivo.aberto()) {
        falhouArquivo(caminho);
        return errno == ENOENT ? Leitura::kInexistente : Leitura::kFalha;
    }
    const auto dados = arquivo.situacao();
    if (!dados || !S_ISREG(dados->st_mode)) {
        dados ? naoEhArquivo(caminho) : falhouArquivo(caminho);
        return Leitura::kFalha;
    }
    if (identidade != nullptr) *identidade = identidadeDe(*dados);
    constexpr auto kSemLimite = static_cast<std::size_t>(-1) / 2;
    if (arquivo.lerTudo(conteudo, static_cast<std::size_t>(dados->st_size), kSemLimite))
        return Leitura::kLido;
    falhouArquivo(caminho);
    conteudo.clear();
    return Leitura::kFalha;
}

int substituirArquivo(const std::string &caminho, std::string_view conteudo, Acesso acesso,
                      Ligacao ligacao, std::optional<std::int64_t> momento) {
    const Rascunho rascunho = rascunhoDe(caminho, ligacao);
    const auto &[destino, novo] = rascunho;
    const Vizinhos vizinhos(destino);
    if (!escreverAoLado(rascunho, conteudo, acesso, {momento})) return arquivoIndisponivel();
    if (tomarLugar(novo, destino, vizinhos)) return ZEL_OK;
    const int erro = errno;
    removerArquivo(novo);
    errno = erro;
    return arquivoIndisponivel();
}

int criarArquivo(const std::string &caminho, std::string_view conteudo) {
    const std::string novo = std::string(caminho).append(kRascunho);
    const std::string diretorio = diretorioDe(caminho);
    if (existeArquivo(caminho) || existeArquivo(novo)) return recusar(Motivo::kNomeTomado);
    if (!escreverNovo(novo, conteudo, Acesso::kUmask, {})) {
        // Somebody else's in this instant is not ours to remove.
        const bool alheio = errno == EEXIST;
        if (!alheio) removerArquivo(novo);
        return alheio ? recusar(Motivo::kNomeTomado) : arquivoIndisponivel();
    }
    bool feito = ::link(novo.c_str(), caminho.c_str()) == 0;
    const bool tomado = !feito && errno == EEXIST;
    if (!feito && (errno == EPERM || errno == EOPNOTSUPP))
        feito = renomearArquivo(novo, caminho); // a file system without links
    else if (!feito)
        falhouArquivo(caminho);
    removerArquivo(novo);
    if (tomado) return recusar(Motivo::kNomeTomado);
    return feito && descarregarNomes(diretorio) ? int{ZEL_OK} : arquivoIndisponivel();
}

int gravarDestino(const std::string &caminho, std::string_view conteudo) {
    const std::string destino = seguirLigacoes(caminho);
    const auto antigo = situacao(destino);
    if (!antigo)
        return naoExiste() ? substituirArquivo(destino, conteudo, Acesso::kUmask)
                           : arquivoIndisponivel(destino);
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

bool ehLigacao(const std::string &caminho) {
    const auto dados = situacao(caminho);
    return dados && S_ISLNK(dados->st_mode);
}

Rascunho rascunhoDe(const std::string &caminho, Ligacao ligacao) {
    std::string destino = destinoDe(caminho, ligacao);
    std::string nome = std::string(destino).append(kRascunho);
    return {std::move(destino), std::move(nome)};
}

bool escreverRascunho(const Rascunho &rascunho, std::string_view conteudo, Acesso acesso,
                      std::int64_t momento) {
    return escreverAoLado(rascunho, conteudo, acesso, {momento, false});
}

bool instalarRascunho(const Rascunho &rascunho) {
    const auto &[destino, nome] = rascunho;
    // A rename over a file would have ext4 write the new one to the disk at once.
    if (!trocarDeLugar(nome, destino)) return renomearArquivo(nome, destino);
    removerArquivo(nome); // the old one; what stays of it the next scratch file removes
    return true;
}

Descritor abrirNoLugar(const std::string &caminho, Ligacao ligacao, Identidade &identidade) {
    Descritor arquivo(caminho.c_str(), O_WRONLY | O_NONBLOCK | naoSeguir(ligacao));
    const auto dados = arquivo.aberto() ? arquivo.situacao() : std::nullopt;
    if (dados && S_ISREG(dados->st_mode)) {
        arquivo.guardar(*dados);
        identidade = identidadeDe(*dados);
        return arquivo;
    }
    dados ? naoEhArquivo(caminho) : falhouArquivo(caminho);
    return {};
}

bool descarregarArquivo(const std::string &caminho, Ligacao ligacao) {
    const std::string destino = destinoDe(caminho, ligacao);
    const Descritor arquivo(destino.c_str(), O_RDONLY | O_NONBLOCK | O_NOFOLLOW);
    if (!arquivo.aberto() || !arquivo.descarregar()) return falhouArquivo(destino);
    return destino == caminho || descarregarDiretorio(destino);
}

void descarregarTudoQueHa(const std::string &diretorio) {
    const Descritor aberto(diretorio.c_str(), O_RDONLY | O_DIRECTORY);
    if (!aberto.aberto() || ::syncfs(aberto.fd()) != 0) ::sync();
}

void darAoDonoDoDiretorio(int fd, const std::string &caminho) {
    struct stat diretorio {};
    if (::stat(diretorioDe(caminho).c_str(), &diretorio) != 0) return;
    if (diretorio.st_uid != ::geteuid() || diretorio.st_gid != ::getegid())
        static_cast<void>(::fchown(fd, diretorio.st_uid, diretorio.st_gid) == 0);
}

bool renomearArquivo(const std::string &de, const std::string &para) {
    return ::rename(de.c_str(), para.c_str()) == 0 || falhouArquivo(para);
}

bool descarregarDiretorio(const std::string &caminho) {
    return descarregarNomes(diretorioDe(caminho));
}

bool removerArquivo(const std::string &caminho) {
    return ::unlink(caminho.c_str()) == 0 || errno == ENOENT || falhouArquivo(caminho);
}

void removerRascunhos(const std::string &diretorio, bool (*nosso)(std::string_view nome)) {
    const std::unique_ptr<DIR, decltype([](DIR *aberto) { ::closedir(aberto); })> aberto(
        ::opendir(diretorio.c_str()));
    if (!aberto && errno == ENOMEM) throw std::bad_alloc();
    if (!aberto) return;
    while (const dirent *entrada = ::readdir(aberto.get())) {
        const std::string_view nome = entrada->d_name;
        const std::string_view trocado = arquivos::trocadoDe(nome);
        if (!trocado.empty() && nosso(trocado)) removerArquivo(diretorio + entrada->d_name);
    }
}

bool existeArquivo(const std::string &caminho) {
    return situacao(caminho).has_value() || !naoExiste();
}

} // namespace zel
