// SPDX-License-Identifier: MIT
#include "conferencia/ConferenciaDiretorio.h"

#include "comum/ArquivosDoCaixa.h"
#include "comum/EstadoDoCupom.h"
#include "conferencia/ConferenciaConfig.h"
#include "conferencia/Regras.h"
#include "leitura/Arquivos.h"
#include "leitura/Cupom.h"
#include "leitura/Texto.h"

#include <algorithm>
#include <filesystem>
#include <vector>

namespace zel::aplicativo {

namespace {

namespace fs = std::filesystem;

using arquivos::kConfig;
using arquivos::kCupom;
using arquivos::kCupomPendente;

constexpr std::string_view kChaveEstado = R"(CONFIGURACAO\estadoCFe)";
constexpr mode_t kOutrosLeem = 04, kOutrosGravam = 02;

// Files of the library that hold consumers' data.
constexpr std::string_view kComDados[] = {kCupom, kCupomPendente, arquivos::kUltimaDanfe,
                                          arquivos::kCupomDanificado};

// What a change leaves that was not carried through.
bool ehSobra(std::string_view nome) {
    constexpr std::string_view kSobras[] = {kCupomPendente, arquivos::kEnvioPendente,
                                            arquivos::kParametrosPendentes,
                                            arquivos::kDanfePassageiro};
    return std::ranges::find(kSobras, nome) != std::end(kSobras) ||
           arquivos::ehTrocado(arquivos::trocadoDe(nome));
}

class Conferencia {
public:
    Conferencia(const std::string &diretorio, Relatorio &relatorio)
        : diretorio_(diretorio), caixaAberto_(cupomComOutroProcesso(diretorio)),
          relatorio_(relatorio) {}

    void fazer() {
        conferirDireitos();
        conferirConfiguracao();
        conferirArquivos();
        if (caixaAberto_)
            achar("caixa-aberto", std::string(kConfig),
                  "um programa de caixa está aberto neste diretório", {});
    }

private:
    void achar(const IdAchado &id, std::string lugar, std::string texto, std::string remedio) {
        relatorio_.registrar({id, std::move(lugar), 0, std::move(texto), std::move(remedio)});
    }

    void conferirDireitos() {
        if (!podeGravar(diretorio_))
            achar("diretorio-sem-escrita", diretorio_,
                  "o usuário que roda o zel não pode gravar no diretório",
                  "Rode o zel com o usuário do caixa, ou dê a ele o diretório (chown).");
        const mode_t modo = olhar(diretorio_).modo;
        if ((modo & kOutrosGravam) != 0 && (modo & 01000) == 0)
            achar("diretorio-aberto", diretorio_,
                  "qualquer usuário pode trocar os arquivos do caixa",
                  juntar({"chmod o-w '", diretorio_, "'"}));
    }

    void conferirConfiguracao() {
        const std::string caminho = juntar({diretorio_, kConfig});
        std::string bytes, motivo;
        switch (lerArquivo(caminho, kMaximoConfig, bytes, motivo)) {
        case Leitura::kInexistente:
            return achar("arquivo-ausente", std::string(kConfig), "não existe neste diretório",
                         "Confira se este é o diretório do caixa (ZEL_DIRETORIO, ou o da "
                         "biblioteca). O arquivo é criado na primeira chamada: zel config gravar "
                         "'EMIT\\CNPJ' CNPJ");
        case Leitura::kFalha:
            return achar("arquivo-ilegivel", std::string(kConfig), motivo,
                         "Rode o zel com o usuário do caixa.");
        case Leitura::kLido:
            break;
        }
        conferirPermissaoDaConfig(caminho);
        const ArquivoConfig config(bytes, relatorio_);
        if (!config.temRaiz()) return;
        conferirConfig(config, relatorio_);
        conferirDiretoriosDeCopia(config, relatorio_);
        conferirCupom(config);
    }

    void conferirPermissaoDaConfig(const std::string &caminho) {
        if ((olhar(caminho).modo & (kOutrosLeem | kOutrosGravam)) != 0)
            achar("permissao-config", std::string(kConfig),
                  "outros usuários podem ler ou gravar o arquivo, que guarda o token",
                  juntar({"chmod o-rwx '", caminho, "'"}));
        if (!podeGravar(caminho))
            achar("arquivo-sem-escrita", std::string(kConfig), "este usuário não pode gravá-lo",
                  "Rode o zel com o usuário do caixa, ou dê a ele o arquivo (chown, chmod u+rw).");
    }

    // The receipt as the state and the file say it.
    void conferirCupom(const ArquivoConfig &config) {
        const long long estado = lerInteiro(config[kChaveEstado].valor).value_or(0);
        if (!emAndamento(estado)) return;
        std::string_view nome = kCupom;
        std::string bytes, motivo, erro;
        Leitura leitura = lerArquivo(juntar({diretorio_, nome}), kMaximoDocumento, bytes, motivo);
        if (leitura == Leitura::kInexistente) {
            nome = kCupomPendente;
            leitura = lerArquivo(juntar({diretorio_, nome}), kMaximoDocumento, bytes, motivo);
        }
        if (leitura == Leitura::kInexistente)
            return achar(
                "cupom-ausente", std::string(kCupom),
                juntar({"o estado é ", config[kChaveEstado].valor, " (",
                        nomeDoEstado(static_cast<int>(estado)), "), mas o arquivo não existe"}),
                "Se houver cópia, restaure-a; senão cancele o cupom (tCFCancelar_ZEL com "
                "cinco textos vazios) e venda de novo.");
        const auto cupom = leitura == Leitura::kLido ? lerCupom(bytes, erro) : std::nullopt;
        if (!cupom)
            return achar("cupom-ilegivel", std::string(nome), erro.empty() ? motivo : erro,
                         "Guarde uma cópia do arquivo, cancele o cupom (tCFCancelar_ZEL com cinco "
                         "textos vazios) e venda de novo.");
        relatarCupom(static_cast<int>(estado), *cupom);
    }

    void relatarCupom(int estado, const Cupom &cupom) {
        const std::string texto = juntar(
            {"cupom ", nomeDoEstado(estado), ", ", std::to_string(cupom.itens.size()),
             cupom.itens.size() == 1 ? " item, total " : " itens, total ",
             formatarMoeda(cupom.total), ", pago ", formatarMoeda(cupom.pago),
             cupom.cortado ? "; o último registro está cortado, a biblioteca o descarta" : ""});
        if (caixaAberto_) return achar("cupom-em-uso", std::string(kCupom), texto, {});
        constexpr std::string_view kContinuar[] = {"", "venda os itens", "venda ou totalize",
                                                   "receba o pagamento", "encerre"};
        achar("cupom-em-andamento", std::string(kCupom), texto,
              juntar({"Abra o programa do caixa e continue dali (", kContinuar[estado],
                      "), ou cancele o cupom: tCFCancelar_ZEL com cinco textos vazios."}));
    }

    void conferirArquivos() {
        std::vector<std::string> nomes;
        std::error_code erro;
        for (const auto &entrada : fs::directory_iterator(diretorio_, erro))
            nomes.push_back(entrada.path().filename().string());
        std::ranges::sort(nomes);
        for (const std::string &nome : nomes)
            conferirArquivo(nome);
    }

    void conferirArquivo(const std::string &nome) {
        const std::string caminho = diretorio_ + nome;
        if (nome.ends_with(".danificado"))
            achar("danificado", nome, "cópia de um arquivo que a biblioteca não pôde ler",
                  "Veja se algo dela precisa ser recuperado; depois mova-a dali.");
        if (ehSobra(nome)) relatarSobra(nome);
        const bool comDados = std::ranges::find(kComDados, nome) != std::end(kComDados);
        const mode_t modo = olhar(caminho).modo;
        if (comDados && (modo & (kOutrosLeem | kOutrosGravam)) != 0)
            achar("permissao-dados", nome,
                  "outros usuários podem ler ou gravar o arquivo, que guarda dados do consumidor",
                  juntar({"chmod o-rwx '", caminho, "'"}));
    }

    void relatarSobra(const std::string &nome) {
        if (caixaAberto_)
            achar("gravacao-em-curso", nome, "uma gravação do caixa aberto", {});
        else
            achar("gravacao-interrompida", nome, "um processo morreu no meio de uma gravação",
                  "A próxima chamada da biblioteca a completa ou desfaz: abra o programa do caixa, "
                  "ou rode zel estado. Não apague o arquivo.");
    }

    std::string diretorio_;
    bool caixaAberto_;
    Relatorio &relatorio_;
};

} // namespace

void conferirDiretorio(const std::string &diretorio, Relatorio &relatorio) {
    Conferencia(diretorio, relatorio).fazer();
}

void conferirDiretoriosDeCopia(const ArquivoConfig &config, Relatorio &relatorio) {
    for (const std::string_view caminho :
         {R"(CONFIGURACAO\PathXMLEnvio)", R"(CONFIGURACAO\PathXMLRetorno)",
          R"(CONFIGURACAO\PathXMLCompleto)"}) {
        const LinhaChave &chave = *procurarChave(caminho);
        const ValorConfig &valor = config[caminho];
        if (!valorServe(chave, valor.valor)) continue;
        for (const std::string_view parte : dividir(valor.valor, '|')) {
            if (parte.empty()) continue;
            const std::string diretorio = latin1DeUtf8(parte).value_or(std::string(parte));
            const Gravidade maximo = chave.tem(kLida) ? Gravidade::kErro : Gravidade::kAviso;
            if (olhar(diretorio).tipo != TipoArquivo::kDiretorio)
                relatorio.registrar({"diretorio-ausente", std::string(caminho), valor.linha,
                                     juntar({"\"", parte, "\" não existe, ou não é um diretório"}),
                                     juntar({"mkdir -p '", parte, "', com o usuário do caixa"})},
                                    maximo);
            else if (!podeGravar(diretorio))
                relatorio.registrar(
                    {"diretorio-sem-escrita", std::string(caminho), valor.linha,
                     juntar({"este usuário não pode gravar em \"", parte, "\""}),
                     "Dê ao usuário do caixa o direito de gravar ali (chown, chmod)."},
                    maximo);
        }
    }
}

} // namespace zel::aplicativo
