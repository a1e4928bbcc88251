// SPDX-License-Identifier: MIT
#include "config/Primeira.h"

#include "base/Xml.h"
#include "comum/Ascii.h"
#include "comum/Estados.h"

#include <array>

namespace zel::envio {

namespace {

// "@name@" is replaced by what was found of that name.
constexpr std::string_view kMolde =
    R"(# zel-envio.toml: o que o lado que envia precisa e o caixa não sabe.
# Feito a partir do ZEL_Framework.xml do caixa. Caminhos são inteiros ou relativos a esta pasta.
# Linhas com "#" são comentários: tire o "#" do que for usar.

@estado@

# Pasta dos esquemas publicados (pacote da NF-e 4.00); sem ela nada é conferido antes do envio.
# esquemas = "esquemas"

[certificado]
# @cnpj@
# A1: o arquivo PKCS#12 e um arquivo com a senha na primeira linha, só do dono (chmod 600).
@arquivo@
@senha@
# A3: o módulo PKCS#11 no lugar do arquivo.
# modulo = "/usr/lib/fabricante/libpkcs11.so"
# Emissores até a raiz, em PEM, para que a cadeia seja conferida.
# cadeia = "cadeia.pem"

[qrcode]
# 2: com CSC. 3: sem CSC (Nota Técnica 2025.001), em produção desde 2025-09-01.
@versao@
# O número do CSC: no caixa, CONFIGURACAO\IDTokenSefaz.
@id_csc@
# O CSC é um segredo: @csc@
# Ponha-o na primeira linha de um arquivo só do dono (chmod 600) e diga aqui o nome dele.
@csc_arquivo@

# Quem fez o programa do caixa, onde o estado o pede; idCSRT e csrt_arquivo vão juntos.
# [responsavel_tecnico]
# CNPJ = "00000000000191"
# xContato = "Nome de quem atende"
# email = "contato@exemplo.com.br"
# fone = "5133334444"

# O que uma forma de pagamento do caixa vira, pelo nome ou pelo código.
[pagamentos]
# "Outros" = { tPag = "17", tpIntegra = "2" }
# "Vale Presente" = { tPag = "99", xPag = "Vale da loja" }

# De um produto, pelo código do caixa, ou de todos de um NCM, inteiro ou só o começo.
# [produtos."101"]
# CEST = "1704700"
# [ncm."1905"]
# CEST = "1704700"

[ibs_cbs]
# @crt@
# desde = "2026-01-05"
# A tabela do contador: linhas CST;cClassTrib;reducao, e ncm;1905;200034 ou produto;101;200003.
# classes = "classes.csv"
@avisos@)";

struct Achado {
    std::string_view nome;
    std::string texto;
};

bool digitosDe(std::string_view texto, std::size_t minimo, std::size_t maximo) {
    return texto.size() >= minimo && texto.size() <= maximo && soDigitos(texto);
}

// Nothing of the till's file stands in the text unless it has the form that it must have: a value
// with a line end would write keys of its own.
std::string estado(const No &raiz) {
    const std::string cUF = raiz.texto("IDE/cUF"), UF = raiz.texto("EMIT/ENDEREMIT/UF");
    const Estado *daIde = procurarEstadoPorCodigo(cUF);
    std::string linhas =
        "# Estado de pedidos que não o dizem (inutilização): no caixa, IDE\\cUF.\n";
    if (daIde == nullptr) return linhas + "# cUF = \"43\"";
    linhas += "cUF = \"" + std::string(daIde->codigo) + "\" # " + std::string(daIde->uf);
    if (UF != daIde->uf)
        linhas +=
            "\n# ATENÇÃO: EMIT\\ENDEREMIT\\UF do caixa é de outro estado; acerte um dos dois.";
    return linhas;
}

std::string certificado(const No &raiz) {
    const std::string CNPJ = raiz.texto("EMIT/CNPJ");
    if (!digitosDe(CNPJ, 14, 14)) return "EMIT\\CNPJ do caixa não tem 14 dígitos: acerte-o.";
    return "É do CNPJ " + CNPJ + " (EMIT\\CNPJ do caixa), ou de outro que comece por " +
           CNPJ.substr(0, 8) + ".";
}

std::string idCsc(const No &raiz) {
    std::string numero = raiz.texto("CONFIGURACAO/IDTokenSefaz");
    numero.erase(0, numero.find_first_not_of('0'));
    return digitosDe(numero, 1, 6) ? "id_csc = \"" + numero + "\"" : "# id_csc = \"1\"";
}

// A till without the CSC signs at once in version 3, which asks for none.
std::string versao(const No &raiz) {
    return raiz.texto("CONFIGURACAO/TokenSefaz").empty()
               ? "# O caixa não tem CSC. Quando o tiver, e o estado pedir a 2: versao = 2 e o que "
                 "segue.\n"
                 "versao = 3"
               : "versao = 2";
}

std::string csc(const No &raiz) {
    return raiz.texto("CONFIGURACAO/TokenSefaz").empty()
               ? "CONFIGURACAO\\TokenSefaz do caixa está vazio; a versão 3 não precisa dele."
               : "está em CONFIGURACAO\\TokenSefaz do caixa e não foi copiado para cá.";
}

std::string crt(const No &raiz) {
    return raiz.texto("EMIT/CRT") == "3"
               ? "EMIT\\CRT 3: os grupos são pedidos desde 2026-01-05 (homologação: 2025-10-06)."
               : "EMIT\\CRT 1, 2 ou 4: os grupos são dispensados até 2027-01-04.";
}

std::string avisos(const No &raiz) {
    std::string linhas;
    const std::string ambiente = raiz.texto("CONFIGURACAO/TipoAmbiente");
    if (ambiente != "1")
        linhas += "\n# Ambiente: CONFIGURACAO\\TipoAmbiente do caixa não é 1: os documentos são de "
                  "homologação,\n# sem valor fiscal. O 3 da fábrica vira 2.\n";
    if (raiz.texto("IDE/tpEmis") != "1")
        linhas += "\n# IDE\\tpEmis do caixa não é 1: os documentos são emitidos em contingência.\n";
    return linhas;
}

// The key with the file's name in TOML, or the example as a comment. A literal string has no
// escapes: a name that cannot stand in one is no file's that this writes.
std::string arquivo(std::string_view chave, const std::string &nome, std::string_view exemplo) {
    const bool serve = !nome.empty() && nome.find_first_of("'\r\n") == nome.npos;
    return (serve ? "" : "# ") + std::string(chave) + " = " +
           (serve ? "'" + nome + "'" : "\"" + std::string(exemplo) + "\"");
}

// The till writes and reads its values as they are: the address of a QR code has "&".
std::string comoXml(std::string_view caixa) {
    std::string xml;
    for (const char c : caixa)
        xml += c == '&' ? "&amp;" : std::string(1, c);
    return xml;
}

void trocar(std::string &texto, const std::string &marca, std::string_view por) {
    const std::size_t onde = texto.find(marca);
    if (onde != texto.npos) texto.replace(onde, marca.size(), por);
}

} // namespace

std::optional<std::string> primeiraConfiguracao(std::string_view caixa, Recusas &recusas,
                                                const PrimeirosArquivos &arquivos) {
    std::string motivo;
    const auto lido = Documento::ler(comoXml(caixa), motivo);
    if (lido && lido->raiz().nome() != "FRAMEWORKZEL") motivo = "não é a configuração de um caixa";
    if (!motivo.empty()) {
        recusas.juntar("ZEL_Framework.xml", "", motivo);
        return {};
    }
    const No raiz = lido->raiz();
    std::string texto(kMolde);
    const std::array<Achado, 10> achados{
        {{"estado", estado(raiz)},
         {"cnpj", certificado(raiz)},
         {"arquivo", arquivo("arquivo", arquivos.certificado, "certificado.pfx")},
         {"senha", arquivo("senha_arquivo", arquivos.senha, "senha.txt")},
         {"versao", versao(raiz)},
         {"id_csc", idCsc(raiz)},
         {"csc", csc(raiz)},
         {"csc_arquivo", arquivo("csc_arquivo", arquivos.csc, "csc.txt")},
         {"crt", crt(raiz)},
         {"avisos", avisos(raiz)}}};
    for (const auto &[nome, valor] : achados)
        trocar(texto, "@" + std::string(nome) + "@", valor);
    return texto;
}

} // namespace zel::envio
