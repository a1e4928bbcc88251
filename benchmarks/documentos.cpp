// SPDX-License-Identifier: MIT
// What the authority's document costs with libzel-envio, of receipts that the library wrote, by
// number of items: translation, signature (RSA-2048) with QR code, the published schemas where
// ZEL_ESQUEMAS names them, the whole, and the look at what came out:
//   zel_documentos DIRECTORY_IN_MEMORY DIRECTORY_OF_SAMPLES [Google Benchmark's own arguments]
// The documents are left in the second directory, for others to be measured on the same ones.
#include "Bancada.h"
#include "Loja.h"

#include "zel_envio.h"

#include <cstdlib>
#include <iostream>

namespace {

struct Liberar {
    void operator()(zel_envio *envio) const { zel_envio_liberar(envio); }
};
using Envio = std::unique_ptr<zel_envio, Liberar>;
using Passo = int (*)(zel_envio *);

constexpr const char *kSenha = "ensaio";

void conferir(const Envio &envio, int codigo) {
    if (codigo != ZEL_ENVIO_OK) throw std::runtime_error(zel_envio_detalhe(envio.get()));
}

// A document read and brought a step further.
void levar(const Envio &envio, const std::string &texto, Passo passo) {
    conferir(envio, zel_envio_ler(envio.get(), texto.data(), texto.size()));
    conferir(envio, passo(envio.get()));
}

// The bytes that a function gave, as a text.
template <class Funcao>
std::string bytesDe(const Envio &envio, Funcao funcao) {
    char *bytes = nullptr;
    size_t tamanho = 0;
    conferir(envio, funcao(&bytes, &tamanho));
    std::string texto(bytes, tamanho);
    zel_envio_liberar_bytes(bytes);
    return texto;
}

std::string mensagem(const Envio &envio) {
    return bytesDe(envio, [&](char **bytes, size_t *tamanho) {
        return zel_envio_mensagem(envio.get(), bytes, tamanho);
    });
}

// Empty: nothing is judged.
std::string esquemas() {
    const char *pasta = std::getenv("ZEL_ESQUEMAS");
    return pasta == nullptr ? "" : pasta;
}

Envio configurado(const std::string &pastaDosEsquemas) {
    Envio envio(zel_envio_novo());
    std::string toml = "qrcode = { id_csc = \"1\", csc = \"0123456789ABCDEF\" }\n";
    if (!pastaDosEsquemas.empty()) toml += "esquemas = \"" + pastaDosEsquemas + "\"\n";
    conferir(envio, zel_envio_configurar_texto(envio.get(), toml.data(), toml.size(), ""));
    return envio;
}

// A certificate for trying, while the program runs.
class Certificado {
public:
    explicit Certificado(const std::filesystem::path &base) : pasta_(base) {
        const Envio envio(zel_envio_novo());
        pasta_.gravar("c.pfx", bytesDe(envio, [&](char **bytes, size_t *tamanho) {
                          return zel_envio_certificado_de_ensaio(envio.get(), "Padaria da Esquina",
                                                                 "11222333000181", kSenha, bytes,
                                                                 tamanho);
                      }));
        setenv("ZEL_ENVIO_CERTIFICADO", (pasta_ / "c.pfx").c_str(), 1);
        setenv("ZEL_ENVIO_SENHA", kSenha, 1);
    }

private:
    PastaTemporaria pasta_;
};

// The document of a receipt in each of its forms. Certificate and schemas are read before anything
// is measured, as by a service that signs one document after the other.
struct Mesa {
    Mesa(const Base &base, int itens)
        : semEsquema(configurado("")), comEsquema(configurado(esquemas())) {
        const Loja loja(base.diretorio);
        emitirCupom(loja, itens);
        doCaixa = loja.ler("documentosEnvio.xml");
        levar(semEsquema, doCaixa, zel_envio_traduzir);
        traduzida = mensagem(semEsquema);
        levar(semEsquema, doCaixa, zel_envio_assinar);
        levar(comEsquema, doCaixa, zel_envio_assinar);
        assinada = mensagem(comEsquema);
    }

    Envio semEsquema, comEsquema;
    std::string doCaixa, traduzida, assinada;
};

struct Medido {
    std::string_view nome;
    Envio Mesa::*envio;
    std::string Mesa::*documento;
    Passo passo;
};

// A step is what it adds to the reading of its document, which stands first; `tudo` is what a sale
// waits for, from the till's file to the judged message.
constexpr Medido kMedidos[] = {
    {"ler", &Mesa::semEsquema, &Mesa::doCaixa, [](zel_envio *) -> int { return ZEL_ENVIO_OK; }},
    {"traduzir", &Mesa::semEsquema, &Mesa::doCaixa, zel_envio_traduzir},
    {"assinar", &Mesa::semEsquema, &Mesa::traduzida, zel_envio_assinar},
    {"julgar", &Mesa::comEsquema, &Mesa::traduzida, zel_envio_traduzir},
    {"tudo", &Mesa::comEsquema, &Mesa::doCaixa, zel_envio_assinar},
    {"verificar", &Mesa::comEsquema, &Mesa::assinada, zel_envio_verificar},
};

void guardar(const std::string &pasta, int itens, const Mesa &mesa) {
    const std::string fim = std::string("-").append(std::to_string(itens)).append(".xml");
    if (!gravarTudo(pasta + "/caixa" + fim, mesa.doCaixa) ||
        !gravarTudo(pasta + "/traduzida" + fim, mesa.traduzida))
        throw std::runtime_error(pasta + " cannot be written");
}

// What layout 4.00 has room for: nine fewer than the till's own.
constexpr int kMaximo = 990;

void registrarDocumentos(const Base &base, const std::string &amostras) {
    for (const int itens : {10, 50, 250, kMaximo}) {
        // Of one till for all steps: key, signature and sums are the same ones.
        const auto mesa = std::make_shared<Mesa>(base, itens);
        guardar(amostras, itens, *mesa);
        for (const Medido &m : kMedidos) {
            if (m.nome == "julgar" && esquemas().empty()) continue;
            registrar(
                base, std::string(m.nome) + "/" + std::to_string(itens), itens, 20, 1,
                [=] { return mesa; }, [](Mesa &) {},
                [=](Mesa &esta) { levar(esta.*m.envio, esta.*m.documento, m.passo); });
        }
    }
}

} // namespace

int main(int argc, char **argv) {
    if (argc < 3) {
        std::cerr << "usage: zel_documentos DIRECTORY_IN_MEMORY DIRECTORY_OF_SAMPLES "
                     "[--benchmark_...]\n";
        return 2;
    }
    const Certificado certificado(argv[1]);
    registrarDocumentos({"documento", argv[1], true}, argv[2]);
    argc -= 2;
    argv[2] = argv[0];
    argv += 2;
    benchmark::AddCustomContext("esquemas", esquemas().empty() ? "" : "publicados");
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
