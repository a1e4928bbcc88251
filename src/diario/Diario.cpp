// SPDX-License-Identifier: MIT
#include "diario/Diario.h"

#include "comum/ArquivosDoCaixa.h"
#include "disco/Arquivo.h"
#include "disco/ArquivoLog.h"
#include "disco/Diretorio.h"
#include "disco/Trava.h"
#include "recusa/Mascara.h"
#include "recusa/Recusa.h"
#include "zel_felbor/codigos.h"

#include <algorithm>
#include <array>
#include <fcntl.h>
#include <iterator>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace zel {

namespace {

constexpr std::string_view kNome = arquivos::kDiario;
constexpr std::size_t kTamanho = std::size_t{4} << 20; // a thousand sales
// One that is longer was not made here, and is not read to its end.
constexpr std::size_t kMaior = std::size_t{64} << 20;
constexpr std::size_t kPedaco = std::size_t{64} << 10; // read at a time
constexpr std::size_t kZeros = std::size_t{512} << 10; // written at a time

// What there is from `lugar` on, up to `tamanho` bytes.
bool lerTrecho(const Descritor &arquivo, std::size_t lugar, std::size_t tamanho,
               std::string &bytes) {
    bytes.resize(tamanho);
    const ssize_t lidos = arquivo.ler(bytes, lugar);
    bytes.resize(static_cast<std::size_t>(std::max<ssize_t>(lidos, 0)));
    return lidos >= 0;
}

LugarDiario lugarDe(std::uint64_t no) {
    const std::string diretorio = fnConfigurarPath("");
    if (temNosPassageiros(diretorio)) return {somaCrc32(diretorioSemLigacoes()), 0};
    return {somaCrc32(std::to_string(noDe(diretorio).value_or(0))), no};
}

} // namespace

Leitura Diario::abrir() {
    const std::string caminho = fnConfigurarPath(kNome);
    arquivo_.fechar();
    arquivo_ = Descritor(caminho.c_str(), O_RDWR | O_NOFOLLOW | O_NONBLOCK);
    if (!arquivo_.aberto()) {
        falhouArquivo(caminho);
        return errno == ENOENT ? Leitura::kInexistente : Leitura::kFalha;
    }
    const auto dados = arquivo_.situacao();
    if (!dados || !S_ISREG(dados->st_mode)) {
        dados ? naoEhArquivo(caminho) : falhouArquivo(caminho);
        arquivo_.fechar();
        return Leitura::kFalha;
    }
    arquivo_.guardar(*dados);
    if (!Vez::estender(arquivo_)) {
        falhouArquivo(caminho);
        arquivo_.fechar();
        return Leitura::kFalha;
    }
    tamanho_ = std::min(static_cast<std::size_t>(dados->st_size), kMaior);
    alheio_ = dados->st_uid != ::geteuid() && dados->st_uid != 0;
    fim_ = 0;
    ultimo_ = {};
    no_ = dados->st_ino;
    ultimo_.lugar = lugarDe(no_);
    ultimo_.epoca = agora();
    danificado_ = false;
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
    if (!arquivo_.descarregar()) return falhouArquivo(kNome);
    tamanho_ = (tamanho + kZeros - 1) / kZeros * kZeros;
    return true;
}

bool Diario::criar(const std::string &caminho) {
    arquivo_ = Descritor(caminho.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW, 0600);
    if (!arquivo_.aberto()) return falhouArquivo(caminho);
    darAoDonoDoDiretorio(arquivo_.fd(), caminho);
    tamanho_ = 0;
    const bool feito = (Vez::estender(arquivo_) || falhouArquivo(caminho)) && ocupar(kTamanho) &&
                       descarregarDiretorio(caminho);
    arquivo_.fechar();
    if (!feito) removerArquivo(caminho);
    return feito;
}

// Whether a head says that the journal ends there, after its last record or empty.
bool Diario::terminaEm(const CabecaDiario &cabeca) const {
    if (cabeca.deRegistro) return false;
    return cabeca.registro.sequencia == ultimo_.sequencia &&
           (fim_ == 0 || cabeca.registro.epoca == ultimo_.epoca);
}

Leitura Diario::ler(Conteudo &conteudo) {
    conteudo = {};
    if (const Leitura leitura = abrir(); leitura != Leitura::kLido) return leitura;
    // No further than records reach. Where a crash or damage left something else at the end, all of
    // it is looked at.
    for (std::size_t quanto = kPedaco;; quanto *= 2) {
        if (!lerTrecho(arquivo_, 0, std::min(quanto, tamanho_), conteudo.bytes)) {
            falhouArquivo(kNome);
            return Leitura::kFalha;
        }
        percorrer(conteudo.bytes, conteudo.registros);
        const std::string_view bytes = conteudo.bytes;
        const auto fim = lerCabecaDiario(bytes.substr(std::min(fim_, bytes.size())));
        if (quanto >= tamanho_ || (fim && terminaEm(*fim))) break;
    }
    concluir(conteudo);
    return Leitura::kLido;
}

// What stands after the last record read.
void Diario::concluir(Conteudo &conteudo) {
    const std::string_view bytes = conteudo.bytes;
    const std::string_view depois = bytes.substr(std::min(fim_, bytes.size()));
    setor_ = depois.substr(0, kSetor);
    const auto fim = lerCabecaDiario(depois);
    const bool terminado = fim && terminaEm(*fim);
    if (terminado && fim_ == 0) ultimo_.epoca = fim->registro.epoca;
    // A record that was torn on its way to the disk has it, too.
    const bool interrompido = fim && fim->deRegistro && fim_ != 0 && segue(fim->registro);
    if (terminado || interrompido) conteudo.seguido = ultimo_.seguido = fim->registro.seguido;
    conteudo.terminado = terminado_ = terminado;
    if (terminado) return;
    // One that was cut short lacks whatever it had after that. Without a first record only zeros
    // are no damage: it was made and not yet written to.
    danificado_ = fim_ == 0 ? bytes.find_first_not_of('\0') != bytes.npos
                            : tamanho_ < kTamanho || haPosteriores(depois, ultimo_);
    conteudo.danificado = danificado_;
}

void Diario::percorrer(std::string_view bytes, std::vector<RegistroDiario> &registros) {
    registros.clear();
    fim_ = 0;
    ultimo_.sequencia = 0;
    std::size_t tamanho = 0;
    while (fim_ < bytes.size()) {
        auto registro = lerRegistroDiario(bytes.substr(fim_), tamanho);
        if (!registro || !segue(*registro)) break;
        fim_ += emMultiplosDe(kBloco, tamanho);
        ultimo_.epoca = registro->epoca;
        ultimo_.sequencia = registro->sequencia;
        registros.push_back(std::move(*registro));
    }
}

// Whether a record is the next one after the last, of a journal that belongs here.
bool Diario::segue(const RegistroDiario &registro) const {
    const bool daEpoca = ultimo_.sequencia == 0 || registro.epoca == ultimo_.epoca;
    return registro.lugar == ultimo_.lugar && daEpoca &&
           registro.sequencia == ultimo_.sequencia + 1;
}

bool Diario::guardarDanificado() {
    std::string bytes;
    if (!lerTrecho(arquivo_, 0, tamanho_, bytes)) return falhouArquivo(kNome);
    bytes.resize(bytes.find_last_not_of('\0') + 1);
    const std::string_view nome = arquivos::kDiarioDanificado;
    if (substituirArquivo(fnConfigurarPath(nome), bytes, Acesso::kPrivado) != ZEL_OK) return false;
    registrarLog("o diário em " + caminhoEmUmaLinha(fnConfigurarPath("")) +
                 " está danificado ou é de outro diretório; foi guardado em " + std::string(nome));
    return true;
}

bool Diario::emDia() {
    const auto dados = arquivo_.aberto() ? arquivo_.situacao() : std::nullopt;
    if (!dados || dados->st_nlink == 0 || !arquivo_.ehOGuardado(*dados) || !Vez::estender(arquivo_))
        return false;
    // A record would have taken the place of the end that stood there; whoever empties the journal
    // writes another one there.
    std::array<char, kSetor> bytes;
    const ssize_t lidos = arquivo_.ler(bytes, fim_);
    return lidos >= 0 && std::string_view(bytes.data(), static_cast<std::size_t>(lidos)) == setor_;
}

bool Diario::temSeuNome() const {
    return noDe(fnConfigurarPath(kNome)) == no_;
}

RegistroDiario Diario::preparar(std::vector<MudancaDiario> mudancas) const {
    RegistroDiario registro = ultimo_;
    ++registro.sequencia;
    registro.momento = agora();
    registro.mudancas = std::move(mudancas);
    return registro;
}

bool Diario::descarregar() {
    return arquivo_.descarregarBytes() || falhouArquivo(kNome);
}

bool Diario::acrescentar(const std::string &registro) {
    setor_.reserve(kSetor); // once it is written nothing may fail for want of memory
    if (const bool inteiro = arquivo_.escrever(registro, fim_); !inteiro || !descarregar()) {
        falhouArquivo(kNome);
        setor_.resize(kSetor, '\0');
        const bool apagado = arquivo_.escrever(setor_, fim_);
        if (apagado && (!inteiro || descarregar())) return false;
        // What cannot be taken back has happened. Written anew as a whole: what the disk refused
        // may count as being there.
        const bool refeito = inteiro && arquivo_.escrever(registro, fim_);
        if (!refeito && (apagado || !inteiro)) {
            arquivo_.fechar();
            return false;
        }
    }
    fim_ += emMultiplosDe(kBloco, registro.size());
    ++ultimo_.sequencia;
    setor_.clear();
    terminado_ = false;
    return true;
}

bool Diario::encerrar(std::int64_t seguido) {
    ultimo_.seguido = seguido;
    // Another one each time, so that who knew the end sees that somebody was there.
    ultimo_.momento = agora();
    const std::string bloco = escreverFim(ultimo_);
    setor_ = bloco.substr(0, kSetor);
    return terminado_ = arquivo_.escrever(bloco, fim_);
}

bool Diario::esvaziar(std::size_t tamanho) {
    if (ateOFim(tamanho) > tamanho_ && !ocupar(ateOFim(tamanho))) return false;
    if (recomecar()) return true;
    falhouArquivo(kNome);
    arquivo_.fechar();
    return false;
}

// The old end first: a process that knew it sees that it is one no more, and what stands there is
// as good as before should this be the last that happens. Where none stood nobody knew one, and
// none may say now that no record is missing. Of a damaged journal nothing is left.
bool Diario::recomecar() {
    if (danificado_) {
        const std::string zeros(kZeros, '\0');
        for (std::size_t lugar = 0; lugar < tamanho_; lugar += kZeros)
            if (!arquivo_.escrever(
                    std::string_view(zeros).substr(0, std::min(kZeros, tamanho_ - lugar)), lugar))
                return false;
    } else if (fim_ != 0 && terminado_ && !encerrar(ultimo_.seguido)) {
        return false;
    }
    fim_ = 0;
    ultimo_.sequencia = 0;
    ultimo_.epoca = agora();
    danificado_ = false;
    // Flushed: a record that follows is torn by a power cut over nothing older.
    return encerrar(0) && descarregar();
}

} // namespace zel
