// SPDX-License-Identifier: MIT
// The key that signs: what opens it, what is refused, what it may be used for.
#include "Certificados.h"
#include "Mensagens.h"

#include "assinatura/Assinatura.h"

#include "comum/Descritor.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <thread>

using namespace zel::envio;
using namespace zel::envio::ensaio;

namespace {

std::string motivoDe(std::string_view pacote, std::string_view senha) {
    Recusas recusas;
    const auto aberto = Certificado::dePkcs12(pacote, senha, "", recusas);
    EXPECT_EQ(aberto == nullptr, !recusas.nenhuma());
    EXPECT_LE(recusas.lista().size(), 1U);
    EXPECT_FALSE(contem(recusas.texto(), senha.empty() ? kSenha : senha));
    return recusas.texto();
}

} // namespace

TEST(Pkcs12, novo_e_antigo_abrem_e_o_resto_e_recusado_pelo_nome) {
    const Cadeia cadeia;
    const DonoX509 titular = cadeia.titular(modelo());
    EVP_PKEY *minha = chave(kTitular);
    const std::string novo = pkcs12De(minha, titular.get());
    const std::string voltas = pkcs12De(minha, titular.get(), kSenha, Cifra::kNova, 65536);
    // The rounds of the ciphers, 65535 in DER: the certificate's stand first, the key's last.
    const auto comVoltas = [&](std::string pacote, bool daChave) {
        const std::string de("\x02\x03\x00\xFF\xFF", 5);
        const std::size_t onde = daChave ? pacote.rfind(de) : pacote.find(de);
        EXPECT_NE(onde, pacote.npos);
        return pacote.replace(onde, de.size(), "\x02\x03\x7F\xFF\xFF");
    };
    const std::string cifrado = pkcs12De(minha, titular.get(), kSenha, Cifra::kNova, 2048, 65535);
    const std::string triplo = pkcs12De(minha, titular.get(), kSenha, Cifra::kTripla, 2048, 65535);
    const DonoX509 curva = emitir(modelo(), chave(kCurva));
    const struct {
        const char *caso;
        std::string pacote;
        const char *senha;
        const char *motivo; // empty: it opens
    } kCasos[] = {
        {"AES", novo, kSenha, ""},
        {"RC2", pkcs12De(minha, titular.get(), kSenha, Cifra::kAntiga), kSenha, ""},
        {"3DES", pkcs12De(minha, titular.get(), kSenha, Cifra::kTripla), kSenha, ""},
        {"empty password", pkcs12De(minha, titular.get(), ""), "", ""},
        {"for trying", pkcs12DeEnsaio("LOJA", kCnpj, "abc", kAgora), "abc", ""},
        {"wrong", novo, "acucar 123", "a senha não abre"},
        {"none", novo, "", "falta a senha"},
        {"no key", pkcs12De(nullptr, titular.get()), kSenha, "não tem chave privada"},
        {"no certificate", pkcs12De(minha, nullptr), kSenha, "não tem o certificado"},
        {"no code", pkcs12De(minha, titular.get(), kSenha, Cifra::kNova, -1), kSenha,
         "código de autenticação"},
        {"curve", pkcs12De(chave(kCurva), curva.get()), kSenha, "não é RSA"},
        // The last three bytes are how often the password is hashed.
        {"rounds", voltas.substr(0, voltas.size() - 3) + "\x7F\xFF\xFF", kSenha, "voltas demais"},
        {"as many as it bears", cifrado, kSenha, ""},
        {"rounds of AES", comVoltas(cifrado, false), kSenha, "voltas demais"},
        {"rounds of its key", comVoltas(cifrado, true), kSenha, "voltas demais"},
        {"rounds of 3DES", comVoltas(triplo, true), kSenha, "voltas demais"},
        {"empty", "", kSenha, "não é um arquivo PKCS#12"},
        {"text", "-----BEGIN CERTIFICATE-----", kSenha, "não é um arquivo PKCS#12"},
        {"cut", novo.substr(0, novo.size() - 1), kSenha, "não é um arquivo PKCS#12"},
        {"more behind", novo + "x", kSenha, "não é um arquivo PKCS#12"},
        {"too large", std::string((1U << 20) + 1, '0'), kSenha, "não é um arquivo PKCS#12"},
    };
    for (const auto &[caso, pacote, senha, motivo] : kCasos) {
        const std::string dito = motivoDe(pacote, senha);
        EXPECT_EQ(dito.empty(), *motivo == '\0') << caso << ": " << dito;
        EXPECT_TRUE(contem(dito, motivo)) << caso;
    }
}

// A byte that was changed anywhere gives a refusal or the same certificate, and never more.
TEST(Pkcs12, cada_byte_trocado_e_recusado_ou_nao_muda_nada) {
    const std::string inteiro = pkcs12De(chave(kTitular), Cadeia().titular(modelo()).get());
    for (std::size_t i = 0; i < inteiro.size(); i += 7) {
        std::string trocado = inteiro;
        trocado[i] = static_cast<char>(trocado[i] ^ 0x55);
        Recusas recusas;
        const auto aberto = Certificado::dePkcs12(trocado, kSenha, "", recusas);
        EXPECT_TRUE(aberto ? aberto->cnpj() == kCnpj : recusas.lista().size() == 1) << i;
    }
    EXPECT_EQ(ERR_peek_error(), 0UL);
}

TEST(Pkcs12, sem_o_provedor_antigo_do_openssl_o_motivo_o_diz) {
    const DonoX509 titular = Cadeia().titular(modelo());
    const std::string antigo = pkcs12De(chave(kTitular), titular.get(), kSenha, Cifra::kAntiga);
    const Ambiente modulos("OPENSSL_MODULES", "/nenhum");
    EXPECT_TRUE(contem(motivoDe(antigo, kSenha), "ossl-modules/legacy.so"));
    EXPECT_EQ(motivoDe(pkcs12De(chave(kTitular), titular.get()), kSenha), "");
}

TEST(Certificados, dizem_o_que_sao_e_so_servem_ao_emitente_no_prazo_e_com_a_cadeia) {
    const Cadeia cadeia, outra;
    const std::string inteira = pemDe({cadeia.raiz.get(), cadeia.autoridade.get()});
    ModeloCertificado vencido = modelo(), futuro = modelo(), semUso = modelo(), livre = modelo();
    vencido.ate = kAgora - 1;
    futuro.desde = kAgora + 1;
    semUso.usos = "critical,keyEncipherment";
    livre.usos.clear();
    DonoX509 acVencida =
        emitir({"AC de Ensaio", "", kAgora - 900 * kDia, kAgora - 10, "critical,keyCertSign", true},
               chave(kAutoridade), cadeia.raiz.get(), chave(kRaiz));
    const struct {
        const char *caso;
        ModeloCertificado titular;
        std::string pem;
        const char *emitente;
        std::vector<const char *> motivos; // each one a line
    } kCasos[] = {
        {"good", modelo(), inteira, kCnpj, {}},
        {"branch of the company", modelo(), "", "12345678000276", {}},
        {"every use", livre, inteira, kCnpj, {}},
        {"expired", vencido, inteira, kCnpj, {"venceu há 1 dia"}},
        {"not yet", futuro, inteira, kCnpj, {"só vale a partir"}},
        {"foreign", modelo(), inteira, "99345678000195", {"outra empresa"}},
        {"no issuer", modelo(), inteira, "", {"outra empresa"}},
        {"a person's", modelo(""), inteira, kCnpj, {"não traz CNPJ"}},
        {"short", modelo("1234567800019"), inteira, kCnpj, {"não traz CNPJ"}},
        {"use", semUso, inteira, kCnpj, {"assinatura digital"}},
        {"other root", modelo(), pemDe({outra.raiz.get()}), kCnpj, {"raiz"}},
        {"without root", modelo(), pemDe({cadeia.autoridade.get()}), kCnpj, {"raiz"}},
        {"without issuer", modelo(), pemDe({cadeia.raiz.get()}), kCnpj, {"raiz"}},
        {"issuer expired", modelo(), pemDe({cadeia.raiz.get(), acVencida.get()}), kCnpj, {"raiz"}},
        {"all at once",
         vencido,
         pemDe({outra.raiz.get()}),
         "99345678000195",
         {"venceu", "raiz", "outra empresa"}},
    };
    for (const auto &[caso, titular, pem, emitente, motivos] : kCasos) {
        Recusas recusas;
        const auto aberto = Certificado::dePkcs12(
            pkcs12De(chave(kTitular), cadeia.titular(titular).get()), kSenha, pem, recusas);
        ASSERT_TRUE(aberto) << caso << recusas.texto();
        EXPECT_EQ(aberto->conferir(emitente, kAgora, recusas), motivos.empty()) << caso;
        ASSERT_EQ(recusas.lista().size(), motivos.size()) << caso << ": " << recusas.texto();
        for (std::size_t i = 0; i < motivos.size(); ++i)
            EXPECT_TRUE(contem(recusas.lista()[i].motivo, motivos[i]))
                << caso << ": " << recusas.texto();
    }
    Recusas recusas;
    const auto bom = certificado();
    EXPECT_EQ(bom->cnpj(), kCnpj);
    EXPECT_EQ(bom->nome(), "PÃO & CAFÉ LTDA:12345678000195");
    EXPECT_EQ(bom->validoAte(), "2027-08-22");
    EXPECT_EQ(bom->dias(kAgora), 335);
    EXPECT_EQ(bom->dias(kAgora + 335 * kDia - 1), 0);
    EXPECT_EQ(bom->dias(kAgora + 335 * kDia + 1), -1);
    EXPECT_EQ(cnpjDePem(pemDe({bom->x509()})), kCnpj);
    EXPECT_EQ(cnpjDePem("-----BEGIN CERTIFICATE-----\nAAAA"), "");
    for (const char *pem : {"nada", "-----BEGIN CERTIFICATE-----\nAAAA\n-----END CERTIFICATE-----"})
        EXPECT_FALSE(
            Certificado::dePkcs12(pkcs12DeEnsaio("L", kCnpj, "a", kAgora), "a", pem, recusas));
    EXPECT_EQ(recusas.lista().size(), 2U);
}

namespace {

ConfigCertificado conf(const std::string &arquivo, const std::string &senha = "",
                       const std::string &modulo = "", const std::string &cadeia = "") {
    return {arquivo, senha, modulo, "", "", cadeia};
}

// A password that stands in no text of this program, but here in another form.
constexpr std::array<char, 12> kDisfarce{'Q', 'z', '9', '!', 'k', 'W',
                                         'p', '3', 'v', 'B', '7', 'm'};
constexpr char kMascara = 0x2A;

// Whether it stands in the memory that may be written, its owner's page apart.
__attribute__((no_sanitize("address", "undefined"))) bool estaNaMemoria(const char *dono) {
    std::ifstream mapas("/proc/self/maps");
    std::vector<std::pair<std::uintptr_t, std::uintptr_t>> areas;
    for (std::string linha; std::getline(mapas, linha);) {
        char *fim = nullptr;
        const std::uintptr_t de = std::strtoull(linha.c_str(), &fim, 16);
        const std::uintptr_t ate = std::strtoull(fim + 1, &fim, 16);
        // Larger ones are the sanitizer's own.
        if (std::string_view(fim).starts_with(" rw") && ate - de < (1ULL << 26))
            areas.emplace_back(de, ate);
    }
    for (const auto &[de, ate] : areas) {
        // What the system says of this process's own memory.
        const auto *area = reinterpret_cast<const char *>(de); // NOLINT(performance-no-int-to-ptr)
        if (dono >= area && dono < area + (ate - de)) continue;
        for (std::size_t i = 0; i + kDisfarce.size() < ate - de; ++i) {
            std::size_t j = 0;
            while (j < kDisfarce.size() && (area[i + j] ^ kMascara) == kDisfarce[j])
                ++j;
            if (j == kDisfarce.size()) return true;
        }
    }
    return false;
}

} // namespace

TEST(Segredos, da_senha_nada_fica_na_memoria_do_programa) {
    auto *pagina = static_cast<char *>(
        ::mmap(nullptr, 1U << 20, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    for (std::size_t i = 0; i < kDisfarce.size(); ++i)
        pagina[i] = static_cast<char>(kDisfarce[i] ^ kMascara);
    PastaTemporaria pasta;
    for (const Cifra cifra : {Cifra::kNova, Cifra::kAntiga}) {
        const auto titular = Cadeia().titular(modelo());
        const std::string pacote = pkcs12De(chave(kTitular), titular.get(), pagina, cifra);
        Recusas recusas;
        EXPECT_TRUE(Certificado::dePkcs12(pacote, {pagina, kDisfarce.size()}, "", recusas));
        const zel::comum::Descritor arquivo(pasta / "senha", O_CREAT | O_WRONLY);
        ASSERT_EQ(::write(arquivo.fd(), pagina, kDisfarce.size()), 12);
        ::fchmod(arquivo.fd(), 0600);
        const auto aberto = Certificado::abrir(
            conf(pasta.gravar("loja.pfx", pacote, 0600), pasta / "senha"), recusas);
        EXPECT_TRUE(aberto) << recusas.texto();
    }
    EXPECT_FALSE(estaNaMemoria(pagina));
    const auto copia = std::make_unique<std::string>(pagina, kDisfarce.size());
    EXPECT_TRUE(estaNaMemoria(pagina)) << copia->size();
    ::munmap(pagina, 1U << 20);
}

// Where file and password are named, each with the others silent.
TEST(Credenciais, vem_da_configuracao_do_ambiente_ou_do_systemd) {
    PastaTemporaria pasta;
    const std::string pacote = pkcs12De(chave(kTitular), Cadeia().titular(modelo()).get());
    const std::string arquivo = pasta.gravar("loja.pfx", pacote, 0644);
    const std::string senha = pasta.gravar("senha", std::string(kSenha) + "\r\noutra linha", 0600);
    const std::string aberta = pasta.gravar("aberta", kSenha, 0640);
    std::filesystem::create_directory(pasta / "credenciais");
    pasta.gravar("credenciais/certificado", pacote, 0440);
    pasta.gravar("credenciais/senha", kSenha, 0440);
    const struct {
        const char *caso, *certificado, *senha, *credenciais; // of the environment
        ConfigCertificado config;
        const char *motivo;
    } kCasos[] = {
        {"configuration", "", "", "", conf(arquivo, senha), ""},
        {"environment", arquivo.c_str(), kSenha, "", {}, ""},
        {"systemd", "", "", "credenciais", {}, ""},
        {"mixed", arquivo.c_str(), "", "credenciais", {}, ""},
        {"configuration first", "/nenhum", "x", "credenciais", conf(arquivo, senha), ""},
        {"nothing", "", "", "", {}, "nenhum certificado foi dito"},
        {"relative", "loja.pfx", kSenha, "", {}, "caminho inteiro"},
        {"no file", "", kSenha, "", conf(pasta / "outra.pfx"), "não existe"},
        {"a directory", "", kSenha, "", conf(pasta / ""), "não existe"},
        {"no chain", "", kSenha, "", conf(arquivo, "", "", pasta / "x"), "não existe"},
        {"others may read", "", "", "", conf(arquivo, aberta), "chmod 600"},
        {"no password file", "", kSenha, "", conf(arquivo, "/nenhum"), "não existe"},
        {"password for its file", "", "", "", conf(arquivo, kSenha), "não existe"},
        {"password for the certificate", kSenha, "", "", {}, "caminho inteiro"},
        {"no password", "", "", "", conf(arquivo), "falta a senha"},
        {"module", "", "1234", "", conf("", "", arquivo), "módulo PKCS#11"},
    };
    for (const auto &[caso, noAmbiente, senhaAmbiente, credenciais, config, motivo] : kCasos) {
        const Ambiente a("ZEL_ENVIO_CERTIFICADO", noAmbiente), b("ZEL_ENVIO_SENHA", senhaAmbiente),
            c("CREDENTIALS_DIRECTORY", (*credenciais ? pasta / credenciais : "").c_str());
        Recusas recusas;
        EXPECT_EQ(Certificado::abrir(config, recusas) != nullptr, *motivo == '\0')
            << caso << ": " << recusas.texto();
        EXPECT_TRUE(contem(recusas.texto(), motivo)) << caso;
        EXPECT_FALSE(contem(recusas.texto(), kSenha)) << caso;
    }
}

namespace {

constexpr const char *kModulo = "/usr/lib/softhsm/libsofthsm2.so";

bool chamar(const std::string &comando) {
    return std::system((comando + " > /dev/null 2>&1").c_str()) == 0;
}

} // namespace

TEST(Token, a_chave_assina_de_dentro_e_o_que_falta_e_dito) {
    if (!std::filesystem::exists(kModulo) || !chamar("command -v pkcs11-tool softhsm2-util"))
        GTEST_SKIP() << "softhsm2 e opensc não estão instalados: nenhum token para tentar";
    PastaTemporaria pasta;
    const Ambiente config(
        "SOFTHSM2_CONF",
        pasta
            .gravar("softhsm2.conf",
                    "directories.tokendir = " + pasta / "" + "\nlog.level = ERROR\n", 0600)
            .c_str());
    const DonoBio saida(BIO_new_file((pasta / "chave.pem").c_str(), "w"));
    PEM_write_bio_PrivateKey(saida.get(), chave(kTitular), nullptr, nullptr, 0, nullptr, nullptr);
    BIO_flush(saida.get());
    pasta.gravar("certificado.der", derDe(Cadeia().titular(modelo()).get()));
    ASSERT_TRUE(chamar("softhsm2-util --init-token --free --label loja --so-pin 8765 --pin 4321"));
    ASSERT_TRUE(chamar("softhsm2-util --import '" + pasta / "chave.pem" +
                       "' --token loja --label caixa --id 01 --pin 4321"));
    ASSERT_TRUE(chamar("pkcs11-tool --module " + std::string(kModulo) +
                       " --token-label loja --login --pin 4321 --type cert --id 01 --label caixa"
                       " --write-object '" +
                       pasta / "certificado.der" + "'"));
    // Each of these is opened while the one before is open, which then goes.
    std::shared_ptr<const Certificado> outro;
    const struct {
        const char *token, *rotulo, *pin, *motivo;
    } kCasos[] = {
        {"", "", "", "falta o PIN"},           {"", "", "1111", "recusou o PIN"},
        {"outro", "", "4321", "não há token"}, {"loja", "outra", "4321", "não tem chave"},
        {"loja", "caixa", "4321", ""},         {"", "", "4321", ""},
    };
    for (const auto &[token, rotulo, pin, motivo] : kCasos) {
        const Ambiente senha("ZEL_ENVIO_SENHA", pin);
        Recusas recusas;
        const auto aberto = Certificado::abrir({"", "", kModulo, rotulo, token, ""}, recusas);
        EXPECT_EQ(aberto != nullptr, *motivo == '\0') << recusas.texto();
        EXPECT_TRUE(contem(recusas.texto(), motivo));
        EXPECT_EQ(recusas.texto().find('"'), std::string::npos) << recusas.texto(); // no label
        if (!aberto) continue;
        outro = aberto;
        EXPECT_TRUE(aberto->conferir(kCnpj, kAgora, recusas)) << recusas.texto();
        EXPECT_EQ(aberto->assinarTexto("texto", recusas),
                  certificado()->assinarTexto("texto", recusas));
        auto noToken = lido(nfe()), noArquivo = lido(nfe());
        EXPECT_TRUE(assinar(noToken, "infNFe", *aberto, recusas)) << recusas.texto();
        EXPECT_TRUE(assinar(noArquivo, "infNFe", *certificado(), recusas));
        EXPECT_EQ(noToken.raiz().texto("Signature/SignatureValue"),
                  noArquivo.raiz().texto("Signature/SignatureValue"));
    }
    // One handle each, one token.
    const Ambiente senha("ZEL_ENVIO_SENHA", "4321");
    std::array<int, 3> feitos{};
    std::vector<std::thread> linhas;
    for (int &certos : feitos)
        linhas.emplace_back([&certos] {
            Recusas recusas;
            for (int i = 0; i < 10; ++i) {
                const auto meu = Certificado::abrir(conf("", "", kModulo), recusas);
                certos += meu && meu->assinarTexto("x", recusas) ? 1 : 0;
            }
        });
    for (std::thread &linha : linhas)
        linha.join();
    for (const int certos : feitos)
        EXPECT_EQ(certos, 10);
}
