// SPDX-License-Identifier: MIT
#include "util/Diario.h"

#include "ZEL_FelborFramework.h"
#include "util/Diretorio.h"
#include "util/Recusa.h"
#include "util/Soma.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace zel {

namespace {

constexpr std::string_view kNome = "ZEL_Framework.diario";
constexpr std::size_t kTamanho = std::size_t{4} << 20; // a thousand sales
constexpr std::size_t kPedaco = std::size_t{64} << 10; // read at a time
constexpr std::size_t kZeros = std::size_t{512} << 10; // written at a time

// What there is from `lugar` on, up to `tamanho` bytes.
bool lerTrecho(int fd, std::size_t lugar, std::size_t tamanho, std::string &bytes) {
    bytes.resize(tamanho);
    const ssize_t lidos =
        insistir([&] { return ::pread(fd, bytes.data(), tamanho, static_cast<off_t>(lugar)); });
    bytes.resize(lidos > 0 ? static_cast<std::size_t>(lidos) : 0);
    return lidos >= 0;
}

bool descarregar(int fd) {
    return insistir([&] { return ::fdatasync(fd); }) == 0;
}

std::uint32_t somaDoCaminho() {
    std::array<char, PATH_MAX> absoluto{};
    const std::string diretorio = fnConfigurarPath("");
    const char *real = ::realpath(diretorio.c_str(), absoluto.data());
    return somaCrc32(real != nullptr ? real : diretorio);
}

} // namespace

Leitura Diario::abrir() {
    const std::string caminho = fnConfigurarPath(kNome);
    arquivo_ = Descritor(caminho.c_str(), O_RDWR | O_NOFOLLOW | O_NONBLOCK);
    if (!arquivo_.aberto()) {
        falhouArquivo(caminho);
        return errno == ENOENT ? Leitura::kInexistente : Leitura::kFalha;
    }
    struct stat dados {};
    const bool conhecido = ::fstat(arquivo_.fd(), &dados) == 0;
    if (!conhecido || !S_ISREG(dados.st_mode)) {
        conhecido ? naoEhArquivo(caminho) : falhouArquivo(caminho);
        arquivo_.fechar();
        return Leitura::kFalha;
    }
    tamanho_ = static_cast<std::size_t>(dados.st_size);
    alheio_ = dados.st_uid != ::geteuid() && dados.st_uid != 0;
    fim_ = 0;
    ultimo_ = {};
    ultimo_.lugar = {somaDoCaminho(), dados.st_ino};
    ultimo_.epoca = agora();
    carimbos_.clear();
    setor_.clear();
    return Leitura::kLido;
}

bool Diario::abrirOuCriar() {
    Leitura leitura = arquivo_.aberto() ? Leitura::kLido : abrir();
    if (leitura == Leitura::kInexistente && criar(fnConfigurarPath(kNome))) leitura = abrir();
    if (leitura != Leitura::kLido) return false;
    // One that was cut short has no room that is sure.
    if (tamanho_ >= kTamanho || ocupar(kTamanho)) return true;
    arquivo_.fechar();
    return false;
}

// Zeros that are written take room that no other file can take, and cost less at each flush than
// room that is only reserved.
bool Diario::ocupar(std::size_t tamanho) {
    const std::string zeros(kZeros, '\0');
    for (std::size_t lugar = tamanho_ / kZeros * kZeros; lugar < tamanho; lugar += kZeros)
        if (const std::size_t inicio = std::max(lugar, tamanho_);
            !arquivo_.escrever(std::string_view(zeros).substr(inicio - lugar), inicio))
            return falhouArquivo(kNome);
    if (insistir([&] { return ::fsync(arquivo_.fd()); }) != 0) return falhouArquivo(kNome);
    tamanho_ = (tamanho + kZeros - 1) / kZeros * kZeros;
    return true;
}

bool Diario::criar(const std::string &caminho) {
    arquivo_ = Descritor(caminho.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW, 0600);
    if (!arquivo_.aberto()) return falhouArquivo(caminho);
    darAoDonoDoDiretorio(arquivo_.fd(), caminho);
    tamanho_ = 0;
    const bool feito = ocupar(kTamanho) && descarregarDiretorio(caminho);
    arquivo_.fechar();
    if (!feito) removerArquivo(caminho);
    return feito;
}

// Whether records may reach further than the bytes read. Where the last one's stamps follow it
// there is nothing more; where a crash or damage left something else, all of it is looked at.
bool Diario::haMaisQue(std::string_view bytes) const {
    return fim_ + kSetor > bytes.size() || !lerCarimbos(bytes.substr(fim_, kSetor), ultimo_);
}

Leitura Diario::ler(Conteudo &conteudo) {
    conteudo = {};
    if (const Leitura leitura = abrir(); leitura != Leitura::kLido) return leitura;
    std::string &bytes = conteudo.bytes;
    for (std::size_t quanto = kPedaco;; quanto *= 2) {
        if (!lerTrecho(arquivo_.fd(), 0, std::min(quanto, tamanho_), bytes)) {
            falhouArquivo(kNome);
            return Leitura::kFalha;
        }
        percorrer(bytes, conteudo.registros);
        if (quanto >= tamanho_ || !haMaisQue(bytes)) break;
    }
    const auto depois = std::string_view(bytes).substr(std::min(fim_, bytes.size()));
    setor_ = depois.substr(0, kSetor);
    conteudo.carimbos = lerCarimbos(setor_, ultimo_);
    // One that was cut short lacks whatever it had after that.
    conteudo.faltamUltimos =
        !conteudo.carimbos && (tamanho_ < kTamanho || haPosteriores(depois, ultimo_));
    carimbos_ = conteudo.carimbos.value_or(std::vector<CarimboDiario>{});
    return Leitura::kLido;
}

void Diario::percorrer(std::string_view bytes, std::vector<RegistroDiario> &registros) {
    registros.clear();
    fim_ = 0;
    ultimo_.sequencia = 0;
    std::size_t tamanho = 0;
    while (fim_ < bytes.size()) {
        auto registro = lerRegistroDiario(bytes.substr(fim_), tamanho);
        if (!registro || !segue(*registro)) break;
        fim_ += tamanho;
        ultimo_.epoca = registro->epoca;
        ultimo_.sequencia = registro->sequencia;
        registros.push_back(std::move(*registro));
    }
}

// Whether a record is the next one after the last, of a journal that belongs here: one that was
// copied has another inode, one that was moved away another path.
bool Diario::segue(const RegistroDiario &registro) const {
    const bool daqui =
        registro.lugar.no == ultimo_.lugar.no || registro.lugar.caminho == ultimo_.lugar.caminho;
    const bool daEpoca = ultimo_.sequencia == 0 || registro.epoca == ultimo_.epoca;
    return daqui && daEpoca && registro.sequencia == ultimo_.sequencia + 1;
}

bool Diario::emDia() {
    struct stat dados {};
    if (!arquivo_.aberto() || ::fstat(arquivo_.fd(), &dados) != 0 || dados.st_nlink == 0)
        return false;
    // A record, with or without its stamps, would have taken the place of those that stood there,
    // and so does whoever empties the journal.
    std::array<char, kSetor> bytes;
    const ssize_t lidos = insistir([&] {
        return ::pread(arquivo_.fd(), bytes.data(), bytes.size(), static_cast<off_t>(fim_));
    });
    return lidos >= 0 && std::string_view(bytes.data(), static_cast<std::size_t>(lidos)) == setor_;
}

RegistroDiario Diario::preparar(std::vector<MudancaDiario> mudancas) const {
    RegistroDiario registro = ultimo_;
    ++registro.sequencia;
    registro.momento = agora();
    registro.carimbos = carimbos_;
    registro.mudancas = std::move(mudancas);
    return registro;
}

bool Diario::acrescentar(const std::string &registro) {
    const bool inteiro = arquivo_.escrever(registro, fim_);
    if (!inteiro || !descarregar(arquivo_.fd())) {
        falhouArquivo(kNome);
        setor_.resize(kSetor, '\0');
        const bool apagado = arquivo_.escrever(setor_, fim_);
        if (!inteiro || (apagado && descarregar(arquivo_.fd()))) return false;
        // Written back where it may have got to the disk without the record: what cannot be taken
        // back has happened.
        if (apagado && !arquivo_.escrever(registro.substr(0, kSetor), fim_)) return false;
    }
    fim_ += registro.size();
    ++ultimo_.sequencia;
    carimbos_.clear();
    setor_.clear();
    return true;
}

bool Diario::carimbar(std::vector<CarimboDiario> carimbos) {
    carimbos_ = std::move(carimbos);
    setor_ = escreverCarimbos(ultimo_, carimbos_);
    return arquivo_.escrever(setor_, fim_);
}

bool Diario::esvaziar(std::size_t tamanho) {
    if (tamanho + kSetor > tamanho_ && !ocupar(tamanho + kSetor)) return false;
    // The end first: a process that knew it sees that it is one no more.
    const bool marcado = fim_ == 0 || arquivo_.escrever(std::string(kSetor, '\0'), fim_);
    if (marcado) {
        fim_ = 0;
        ultimo_.sequencia = 0;
        ultimo_.epoca = agora();
        if (carimbar({})) return true;
    }
    falhouArquivo(kNome);
    arquivo_.fechar();
    return false;
}

} // namespace zel
