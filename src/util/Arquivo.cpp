#include "util/Arquivo.h"

#include "ZEL_FelborFramework.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>

namespace zel {

namespace {

// Repeats a call that a signal interrupted.
template <class Chamada>
auto insistir(Chamada chamada) {
    decltype(chamada()) resultado;
    do {
        resultado = chamada();
    } while (resultado < 0 && errno == EINTR);
    return resultado;
}

// An open file, closed when it goes out of sight.
class Descritor {
public:
    Descritor(const char *caminho, int modo, mode_t permissoes = 0)
        : fd_(insistir([&] { return ::open(caminho, modo | O_CLOEXEC, permissoes); })) {}
    ~Descritor() { fechar(); }
    Descritor(const Descritor &) = delete;
    Descritor &operator=(const Descritor &) = delete;

    bool aberto() const { return fd_ >= 0; }
    int fd() const { return fd_; }

    // A failed close may have lost bytes (network file systems); the descriptor is gone either way.
    bool fechar() {
        const int resultado = fd_ >= 0 ? ::close(fd_) : 0;
        fd_ = -1;
        return resultado == 0 || errno == EINTR;
    }

private:
    int fd_;
};

std::string diretorioDe(const std::string &caminho) {
    const std::size_t barra = caminho.rfind('/');
    return barra == caminho.npos ? "./" : caminho.substr(0, barra + 1);
}

// What stands under a name; none when nothing does, or when that cannot be told (errno).
std::optional<struct stat> situacao(const std::string &caminho) {
    struct stat dados {};
    if (::lstat(caminho.c_str(), &dados) != 0) return {};
    return dados;
}

// Whether the last call failed because there is no such file.
bool naoExiste() {
    return errno == ENOENT || errno == ENOTDIR;
}

// Writes at the place given, or behind what was written last.
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

// The file behind a symbolic link, also when it does not exist yet; a path that is no link itself.
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
    const std::string antigo = de + ".antigo";
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

bool escreverNovo(const std::string &caminho, std::string_view conteudo, Acesso acesso,
                  const std::optional<struct stat> &antigo) {
    const mode_t permissoes = acesso == Acesso::kPrivado ? 0600 : 0666;
    Descritor arquivo(caminho.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, permissoes);
    if (!arquivo.aberto()) return false;
    if (acesso == Acesso::kPrivado && antigo) {
        // Only root may give a file away; anyone else keeps it as his own.
        if (antigo->st_uid != ::geteuid() || antigo->st_gid != ::getegid()) {
            if (::fchown(arquivo.fd(), antigo->st_uid, antigo->st_gid) != 0 && errno != EPERM)
                return false;
        }
        if (::fchmod(arquivo.fd(), antigo->st_mode & 07777) != 0) return false;
    }
    if (!escreverTudo(arquivo.fd(), conteudo)) return false;
    if (insistir([&] { return ::fsync(arquivo.fd()); }) != 0) return false;
    return arquivo.fechar();
}

} // namespace

Leitura lerArquivo(const std::string &caminho, std::string &conteudo) {
    conteudo.clear();
    // Not blocking: a pipe in the place of a file must not hold up the till.
    const Descritor arquivo(caminho.c_str(), O_RDONLY | O_NONBLOCK);
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

int substituirArquivo(const std::string &caminho, std::string_view conteudo, Acesso acesso) {
    const std::string destino =
        acesso == Acesso::kPrivado ? seguirLigacoes(caminho) : std::string(caminho);
    const auto antigo = situacao(destino);
    if (!antigo && !naoExiste()) return ZEL_ARQUIVO_INDISPONIVEL;
    if (antigo && !S_ISREG(antigo->st_mode) && !S_ISLNK(antigo->st_mode))
        return ZEL_ARQUIVO_INDISPONIVEL;

    const std::string novo = destino + ".novo";
    removerArquivo(novo); // left by a process that died
    if (escreverNovo(novo, conteudo, acesso, antigo) && tomarLugar(novo, destino)) return ZEL_OK;
    removerArquivo(novo);
    return ZEL_ARQUIVO_INDISPONIVEL;
}

int escreverArquivo(const std::string &caminho, std::string_view conteudo, Acesso acesso) {
    const std::string novo = caminho + ".novo";
    removerArquivo(novo); // left by a process that died
    if (escreverNovo(novo, conteudo, acesso, {}) && renomearArquivo(novo, caminho) == ZEL_OK)
        return ZEL_OK;
    removerArquivo(novo);
    return ZEL_ARQUIVO_INDISPONIVEL;
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
    const Descritor arquivo(caminho.c_str(), O_WRONLY | O_APPEND | O_NONBLOCK);
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
