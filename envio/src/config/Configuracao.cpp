// SPDX-License-Identifier: MIT
#include "config/Configuracao.h"

#include "base/Xml.h"
#include "comum/Arquivo.h"
#include "config/ArquivoSecreto.h"
#include "config/Chaves.h"
#include "config/Classes.h"
#include "config/Formas.h"
#include "config/LeituraToml.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <system_error>

namespace zel::envio {

namespace {

constexpr std::size_t kMaiorConfiguracao = 1U << 20;
constexpr std::size_t kMaiorClasses = 4U << 20;

// ---- sections ----

struct Lida {
    Configuracao config;
    std::string arquivoClasses;
};

struct Lugar {
    const toml::key &chave;
    const toml::table &tabela;

    std::string nome() const { return "[" + std::string(chave.str()) + "]"; }
    std::string nome(const toml::key &dentro) const {
        return "[" + std::string(chave.str()) + ".\"" + std::string(dentro.str()) + "\"]";
    }
    std::string texto() const { return LeituraToml::lugar(tabela, nome()); }
};

template <class T, std::size_t N>
void lerSecao(LeituraToml &leitura, const Lugar &lugar, const std::array<Chave<T>, N> &chaves,
              T &destino) {
    leitura.ler<T>(lugar.tabela, lugar.nome(), chaves, destino);
}

// A secret is written in the configuration or in a file of its own.
void lerSegredo(LeituraToml &leitura, const Lugar &lugar, const std::string &arquivo,
                std::string_view chave, std::string &segredo) {
    if (arquivo.empty()) return;
    const std::string onde = lugar.texto() + " " + std::string(chave);
    if (!segredo.empty()) {
        leitura.recusas().juntar(onde, "", "o segredo está na configuração e em arquivo: use um");
        return;
    }
    const auto lido = lerArquivoSecreto(arquivo, onde, leitura.recusas());
    if (lido && !ehSegredo(*lido))
        leitura.recusas().juntar(onde, "", kSegredo.permitido);
    else if (lido)
        segredo = *lido;
}

void lerCertificado(LeituraToml &leitura, const Lugar &lugar, Lida &lida) {
    ConfigCertificado &certificado = lida.config.certificado;
    lerSecao(leitura, lugar, kCertificado, certificado);
    if (!certificado.arquivo.empty() && !certificado.modulo.empty())
        leitura.recusas().juntar(lugar.texto(), "",
                                 "o certificado está em arquivo (A1) ou atrás de modulo (A3), não "
                                 "em ambos");
}

void lerEmitente(LeituraToml &leitura, const Lugar &lugar, Lida &lida) {
    ConfigEmitente &emitente = lida.config.emitente;
    lerSecao(leitura, lugar, kEmitente, emitente);
    if (emitente.IM.empty() && !emitente.CNAE.empty())
        leitura.recusas().juntar(lugar.texto() + " IM", "", "CNAE vai com a inscrição municipal");
}

void lerQrCode(LeituraToml &leitura, const Lugar &lugar, Lida &lida) {
    ConfigQrCode &qrcode = lida.config.qrcode;
    lerSecao(leitura, lugar, kQrCode, qrcode);
    qrcode.idCsc.erase(0, qrcode.idCsc.find_first_not_of('0'));
    lerSegredo(leitura, lugar, qrcode.arquivoCsc, "csc_arquivo", qrcode.csc);
    if (!qrcode.csc.empty() && qrcode.idCsc.empty())
        leitura.recusas().juntar(lugar.texto() + " id_csc", "",
                                 "o CSC tem um número, acima de zero: diga qual");
}

void lerRespTec(LeituraToml &leitura, const Lugar &lugar, Lida &lida) {
    ConfigRespTec &respTec = lida.config.respTec;
    const std::size_t antes = leitura.recusas().lista().size();
    lerSecao(leitura, lugar, kRespTec, respTec);
    lerSegredo(leitura, lugar, respTec.arquivoCSRT, "csrt_arquivo", respTec.CSRT);
    if (leitura.recusas().lista().size() != antes) return;
    if (respTec.CNPJ.empty() || respTec.xContato.empty() || respTec.email.empty() ||
        respTec.fone.empty())
        leitura.recusas().juntar(lugar.texto(), "",
                                 "CNPJ, xContato, email e fone vão juntos: falta algum");
    if (respTec.idCSRT.empty() != respTec.CSRT.empty())
        leitura.recusas().juntar(lugar.texto(), "",
                                 "idCSRT e o CSRT (csrt_arquivo) vão juntos: falta um");
}

void lerIntermediador(LeituraToml &leitura, const Lugar &lugar, Lida &lida) {
    lerSecao(leitura, lugar, kIntermediador, lida.config);
    if (lida.config.indIntermed == "1" &&
        (lida.config.intermediadorCNPJ.empty() || lida.config.intermediadorId.empty()))
        leitura.recusas().juntar(lugar.texto(), "",
                                 "com indIntermed 1 vão CNPJ e idCadIntTran: falta algum");
}

void conferirPagamento(LeituraToml &leitura, const std::string &onde, std::string_view forma,
                       const ConfigPagamento &pagamento) {
    const std::string_view tPag = pagamento.tPag.empty() ? forma : pagamento.tPag;
    if (tPag == "99" && pagamento.xPag.empty())
        leitura.recusas().juntar(onde + " xPag", "", "tPag 99 pede xPag, a forma por extenso");
    if (tPag != "99" && !pagamento.xPag.empty())
        leitura.recusas().juntar(onde + " xPag", pagamento.xPag, "só tPag 99 leva xPag");
    if (tPag == "90")
        leitura.recusas().juntar(onde + " tPag", "90", "90 é sem pagamento, e o caixa recebeu um");
    if (pagamento.tpIntegra.empty() &&
        (!pagamento.CNPJ.empty() || !pagamento.tBand.empty() || !pagamento.cAut.empty()))
        leitura.recusas().juntar(onde + " tpIntegra", "",
                                 "CNPJ, tBand e cAut vão com tpIntegra: 1 (TEF) ou 2 (POS)");
}

void lerPagamentos(LeituraToml &leitura, const Lugar &lugar, Lida &lida) {
    for (const auto &[chave, no] : lugar.tabela) {
        const std::string_view forma = formaDoCaixa(chave.str());
        const std::string onde = LeituraToml::lugar(chave, lugar.nome());
        if (forma.empty()) {
            leitura.recusas().juntar(onde, "", "o caixa tem as formas " + formasDoCaixa());
            continue;
        }
        const toml::table *tabela = leitura.secao(chave, no, lugar.nome());
        if (tabela == nullptr) continue;
        const auto [lugarNoMapa, novo] = lida.config.pagamentos.try_emplace(std::string(forma));
        if (!novo) {
            leitura.recusas().juntar(onde, "", "a forma já foi dita, por nome ou por código");
            continue;
        }
        leitura.ler<ConfigPagamento>(*tabela, lugar.nome(chave), kPagamento, lugarNoMapa->second);
        conferirPagamento(leitura, onde, forma, lugarNoMapa->second);
    }
}

void lerProduto(LeituraToml &leitura, const toml::table &tabela, const std::string &nome,
                ConfigProduto &produto) {
    leitura.ler<ConfigProduto>(tabela, nome, kProduto, produto);
    if ((!produto.CST.empty() || !produto.cClassTrib.empty()) &&
        !classeDoCst(produto.CST, produto.cClassTrib))
        leitura.recusas().juntar(LeituraToml::lugar(tabela, nome + " cClassTrib"),
                                 produto.cClassTrib,
                                 "CST e cClassTrib vão juntos, e a classe começa pelo CST");
}

void lerProdutos(LeituraToml &leitura, const Lugar &lugar, const Regra &codigo,
                 std::map<std::string, ConfigProduto, std::less<>> &produtos) {
    for (const auto &[chave, no] : lugar.tabela) {
        if (!codigo.serve(chave.str())) {
            leitura.recusas().juntar(LeituraToml::lugar(chave, lugar.nome()), "", codigo.permitido);
            continue;
        }
        if (const toml::table *tabela = leitura.secao(chave, no, lugar.nome()))
            lerProduto(leitura, *tabela, lugar.nome(chave), produtos[std::string(chave.str())]);
    }
}

void lerPorCodigo(LeituraToml &leitura, const Lugar &lugar, Lida &lida) {
    lerProdutos(leitura, lugar, {texto<1, 60>, "o código tem de 1 a 60 caracteres"},
                lida.config.produtos);
}

void lerPorNcm(LeituraToml &leitura, const Lugar &lugar, Lida &lida) {
    lerProdutos(leitura, lugar, {digitos<2, 8>, "o NCM tem de 2 a 8 dígitos"}, lida.config.ncm);
}

void lerPadrao(LeituraToml &leitura, const Lugar &lugar, Lida &lida) {
    lerProduto(leitura, lugar.tabela, lugar.nome(), lida.config.padrao);
}

// A list of sections, each with the keys of the table; with those named by `pede` at least.
template <class T, std::size_t N>
void lerLista(LeituraToml &leitura, const toml::key &chave, const toml::node &no,
              const std::string &nome, const std::array<Chave<T>, N> &chaves, std::size_t pede,
              std::vector<T> &destino) {
    const auto *lista = no.as_array();
    const bool tabelas = lista != nullptr && lista->is_homogeneous(toml::node_type::table);
    if (!tabelas) leitura.recusas().juntar(LeituraToml::lugar(chave, ""), "", "são seções " + nome);
    for (std::size_t i = 0; tabelas && i < lista->size(); ++i) {
        const toml::table &tabela = *(*lista)[i].as_table();
        leitura.ler<T>(tabela, nome, chaves, destino.emplace_back());
        for (std::size_t j = 0; j < pede; ++j)
            if (!tabela.contains(chaves[j].nome))
                leitura.recusas().juntar(LeituraToml::lugar(tabela, nome), "",
                                         "falta " + std::string(chaves[j].nome));
    }
}

void lerIbsCbs(LeituraToml &leitura, const Lugar &lugar, Lida &lida) {
    IbsCbsLido lido;
    for (const auto &[chave, no] : lugar.tabela)
        if (chave.str() == "taxas")
            lerLista<TaxasIbsCbs>(leitura, chave, no, "[[ibs_cbs.taxas]]", kTaxas, kTaxas.size(),
                                  lido.taxas);
        else
            leitura.lerChave<IbsCbsLido>(chave, no, lugar.nome(), kIbsCbs, lido, ", taxas");
    if (!classeDoCst(lido.CST, lido.cClassTrib))
        leitura.recusas().juntar(lugar.texto() + " cClassTrib", lido.cClassTrib,
                                 "a classe começa pelo CST: diga ambos");
    lida.config.ibsCbs = lido;
    lida.arquivoClasses = lido.arquivo;
}

void lerServicos(LeituraToml &leitura, const Lugar &lugar, Lida &lida) {
    lerSecao(leitura, lugar, kServicos, lida.config.servicos);
}

void lerNomes(LeituraToml &leitura, const Lugar &lugar, Lida &lida) {
    lerSecao(leitura, lugar, kNomesServicos, lida.config.nomes);
}

void lerMetodos(LeituraToml &leitura, const Lugar &lugar, Lida &lida) {
    lerSecao(leitura, lugar, kNomesServicos, lida.config.metodos);
}

void lerRede(LeituraToml &leitura, const Lugar &lugar, Lida &lida) {
    lerSecao(leitura, lugar, kRede, lida.config.rede);
}

void lerFila(LeituraToml &leitura, const Lugar &lugar, Lida &lida) {
    lerSecao(leitura, lugar, kFila, lida.config.fila);
}

void lerPagina(LeituraToml &leitura, const Lugar &lugar, Lida &lida) {
    lerSecao(leitura, lugar, kPagina, lida.config);
}

// Directories are compared with each other and joined with names: they end with their "/".
void lerCaixas(LeituraToml &leitura, const toml::key &chave, const toml::node &no,
               std::vector<ConfigCaixa> &caixas) {
    constexpr std::size_t kObrigatorias = 1;
    lerLista<ConfigCaixa>(leitura, chave, no, "[[caixas]]", kCaixas, kObrigatorias, caixas);
    for (ConfigCaixa &caixa : caixas)
        for (std::string *pasta :
             {&caixa.diretorio, &caixa.copias, &caixa.contingencia, &caixa.retornos})
            if (!pasta->empty() && !pasta->ends_with('/')) *pasta += '/';
}

struct Secao {
    std::string_view nome;
    void (*ler)(LeituraToml &, const Lugar &, Lida &);
};

constexpr std::array<Secao, 16> kSecoes{{{"certificado", lerCertificado},
                                         {"emitente", lerEmitente},
                                         {"qrcode", lerQrCode},
                                         {"responsavel_tecnico", lerRespTec},
                                         {"intermediador", lerIntermediador},
                                         {"pagamentos", lerPagamentos},
                                         {"produtos", lerPorCodigo},
                                         {"ncm", lerPorNcm},
                                         {"padrao", lerPadrao},
                                         {"ibs_cbs", lerIbsCbs},
                                         {"servicos", lerServicos},
                                         {"servicos_nome", lerNomes},
                                         {"servicos_metodo", lerMetodos},
                                         {"rede", lerRede},
                                         {"fila", lerFila},
                                         {"pagina", lerPagina}}};

// ---- the whole ----

void lerRaiz(LeituraToml &leitura, const toml::table &raiz, Lida &lida) {
    const auto ehRaiz = [](std::string_view nome) {
        return std::any_of(kRaiz.begin(), kRaiz.end(),
                           [&](const auto &linha) { return linha.nome == nome; });
    };
    std::string permitidas = LeituraToml::nomes<Configuracao>(kRaiz);
    for (const auto &secao : kSecoes)
        permitidas += ", [" + std::string(secao.nome) + "]";
    permitidas += ", [[caixas]]";
    for (const auto &[chave, no] : raiz) {
        const auto secao =
            std::find_if(kSecoes.begin(), kSecoes.end(),
                         [&, &nome = chave](const Secao &s) { return s.nome == nome.str(); });
        if (ehRaiz(chave.str()))
            leitura.lerChave<Configuracao>(chave, no, "", kRaiz, lida.config);
        else if (chave.str() == "caixas")
            lerCaixas(leitura, chave, no, lida.config.caixas);
        else if (secao == kSecoes.end())
            leitura.recusarChave(chave, "", permitidas);
        else if (const toml::table *tabela = leitura.secao(chave, no, ""))
            secao->ler(leitura, {chave, *tabela}, lida);
    }
}

void lerArquivoDeClasses(const std::string &arquivo, Configuracao &config, Recusas &recusas) {
    const auto csv = comum::lerArquivo(arquivo, kMaiorClasses);
    if (!csv)
        recusas.juntar("zel-envio.toml, [ibs_cbs] classes", arquivo,
                       "o arquivo não existe ou não pode ser lido (até 4 MiB)");
    else
        lerClasses(ehUtf8(*csv) ? *csv : utf8DeLatin1(*csv),
                   std::filesystem::path(arquivo).filename().string(), config, recusas);
}

} // namespace

std::optional<Configuracao> Configuracao::ler(std::string_view toml, const std::string &diretorio,
                                              Recusas &recusas) {
    Recusas minhas;
    Lida lida;
    lida.config.diretorio = diretorio;
    if (!diretorio.empty() && !diretorio.ends_with('/')) lida.config.diretorio += '/';
    LeituraToml leitura(lida.config.diretorio, minhas);
    if (toml.size() > kMaiorConfiguracao)
        minhas.juntar("zel-envio.toml", "", "é maior que 1 MiB");
    else if (const auto raiz = leitura.abrir(toml)) {
        lerRaiz(leitura, *raiz, lida);
        if (!lida.arquivoClasses.empty())
            lerArquivoDeClasses(lida.arquivoClasses, lida.config, minhas);
        conferirClasses(lida.config, minhas);
    }
    recusas.juntar(minhas);
    if (!minhas.nenhuma()) return {};
    return std::move(lida.config);
}

std::optional<Configuracao> Configuracao::abrir(const std::string &arquivo, Recusas &recusas) {
    const auto texto = comum::lerArquivo(arquivo, kMaiorConfiguracao);
    std::error_code erro;
    const auto inteiro = std::filesystem::absolute(arquivo, erro);
    if (!texto || erro) {
        recusas.juntar(arquivo, "", "a configuração não existe ou não pode ser lida (até 1 MiB)");
        return {};
    }
    auto config = ler(*texto, inteiro.parent_path().string(), recusas);
    const bool comSegredo =
        config && ((!config->qrcode.csc.empty() && config->qrcode.arquivoCsc.empty()) ||
                   (!config->respTec.CSRT.empty() && config->respTec.arquivoCSRT.empty()));
    if (comSegredo && !soDoDono(arquivo)) {
        recusas.juntar(arquivo, "",
                       "há um segredo escrito nela e só o dono pode ter acesso a ela: chmod 600, "
                       "ou use csc_arquivo e csrt_arquivo");
        return {};
    }
    return config;
}

} // namespace zel::envio
