// SPDX-License-Identifier: MIT
#include "leitura/Xml.h"

#include "leitura/Texto.h"

#include <algorithm>
#include <charconv>

namespace zel::aplicativo {

namespace {

constexpr std::size_t kMaximoNiveis = 100;
constexpr std::size_t kMaximoElementos = 500000;
constexpr std::size_t kMaximoAtributos = 100;
constexpr std::size_t kMaiorReferencia = 12;

bool ehBranco(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

// Letters beyond ASCII are taken as letters.
bool comecaNome(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_' || c == ':' ||
           static_cast<unsigned char>(c) >= 0x80;
}

bool ehDeNome(char c) {
    return comecaNome(c) || ehDigito(c) || c == '-' || c == '.';
}

std::string_view semPrefixo(std::string_view nome) {
    return nome.substr(nome.find(':') + 1);
}

struct Nomeada {
    std::string_view nome;
    char caracter;
};
// XML 1.0 (W3C, fifth edition, November 2008), section 4.6.
constexpr Nomeada kNomeadas[] = {
    {"amp", '&'}, {"lt", '<'}, {"gt", '>'}, {"quot", '"'}, {"apos", '\''}};

void anexarCodigo(std::string &texto, unsigned long codigo) {
    const auto byte = [&](unsigned long valor) { texto += static_cast<char>(valor); };
    if (codigo < 0x80) return byte(codigo);
    if (codigo < 0x800) {
        byte(0xC0 | (codigo >> 6));
    } else {
        if (codigo < 0x10000) {
            byte(0xE0 | (codigo >> 12));
        } else {
            byte(0xF0 | (codigo >> 18));
            byte(0x80 | ((codigo >> 12) & 0x3F));
        }
        byte(0x80 | ((codigo >> 6) & 0x3F));
    }
    byte(0x80 | (codigo & 0x3F));
}

bool ehCaracterXml(unsigned long codigo) {
    return codigo == 9 || codigo == 10 || codigo == 13 ||
           (codigo >= 0x20 && codigo <= 0x10FFFF && (codigo < 0xD800 || codigo > 0xDFFF) &&
            codigo != 0xFFFE && codigo != 0xFFFF);
}

// Thrown inside the reader alone, at the place that is wrong.
struct Parada {
    std::size_t lugar;
    std::string texto;
};

class Leitor {
public:
    explicit Leitor(std::string_view texto)
        : texto_(texto), umaLinha_(texto.find('\n') == texto.npos) {}

    NoXml ler() {
        pular("\xEF\xBB\xBF");
        if (comeca("<?xml")) pularAte("?>", "a declaração não termina");
        NoXml documento;
        abertos_.push_back({&documento, {}});
        while (lugar_ < texto_.size())
            texto_[lugar_] == '<' ? marca() : conteudo();
        if (abertos_.size() > 1) parar(juntar({"<", abertos_.back().nome, "> não foi fechado"}));
        if (documento.filhos.empty()) parar("não há nenhum elemento");
        return std::move(documento.filhos.front());
    }

    // The line, or in a document of one line the character.
    ErroXml erroEm(std::size_t lugar, const std::string &texto) const {
        const std::string_view antes = texto_.substr(0, lugar);
        if (umaLinha_)
            return {0,
                    juntar({texto, " (no caracter ", std::to_string(comprimento(antes) + 1), ")"})};
        return {1 + static_cast<std::size_t>(std::count(antes.begin(), antes.end(), '\n')), texto};
    }

private:
    struct Aberto {
        NoXml *no;
        std::string nome; // with its prefix
    };

    [[noreturn]] void parar(std::string texto) const { throw Parada{lugar_, std::move(texto)}; }

    bool comeca(std::string_view trecho) const { return texto_.substr(lugar_).starts_with(trecho); }

    bool pular(std::string_view trecho) {
        if (!comeca(trecho)) return false;
        lugar_ += trecho.size();
        return true;
    }

    // What stands up to `fim`, which is stepped over.
    std::string_view pularAte(std::string_view fim, const char *senao) {
        const std::size_t achado = texto_.find(fim, lugar_);
        if (achado == texto_.npos) parar(senao);
        const std::string_view trecho = texto_.substr(lugar_, achado - lugar_);
        lugar_ = achado + fim.size();
        return trecho;
    }

    void pularBrancos() {
        while (lugar_ < texto_.size() && ehBranco(texto_[lugar_]))
            ++lugar_;
    }

    std::string_view nome() {
        const std::size_t comeco = lugar_;
        if (lugar_ == texto_.size() || !comecaNome(texto_[lugar_]))
            parar("< sem o nome de um elemento; num texto, escreva &lt;");
        while (lugar_ < texto_.size() && ehDeNome(texto_[lugar_]))
            ++lugar_;
        return texto_.substr(comeco, lugar_ - comeco);
    }

    void marca() {
        if (pular("<!--")) {
            pularAte("-->", "o comentário não termina");
        } else if (pular("<![CDATA[")) {
            anexar(pularAte("]]>", "a seção CDATA não termina"));
        } else if (comeca("<?")) {
            pularAte("?>", "a instrução não termina");
        } else if (comeca("<!")) {
            parar("há um DOCTYPE, que um documento fiscal não tem");
        } else if (pular("</")) {
            fechar();
        } else {
            ++lugar_;
            abrir();
        }
    }

    void abrir() {
        contarLinhas();
        NoXml novo;
        const std::string inteiro(nome());
        novo.nome = semPrefixo(inteiro);
        novo.linha = umaLinha_ ? 0 : linha_;
        const bool vazio = atributos(novo);
        if (abertos_.size() == 1 && !abertos_.front().no->filhos.empty())
            parar("há mais de um elemento raiz");
        if (abertos_.size() > kMaximoNiveis || ++elementos_ > kMaximoElementos)
            parar("há elementos demais");
        NoXml *pai = abertos_.back().no;
        pai->filhos.push_back(std::move(novo));
        if (!vazio) abertos_.push_back({&pai->filhos.back(), inteiro});
    }

    // Up to and including the end of the start tag; true when it is that of an empty element.
    bool atributos(NoXml &no) {
        for (;;) {
            const std::size_t antes = lugar_;
            pularBrancos();
            if (pular("/>")) return true;
            if (pular(">")) return false;
            if (lugar_ == texto_.size()) parar("a marca de início não termina");
            if (lugar_ == antes) parar("caracter inesperado numa marca");
            const std::string atributo(nome());
            pularBrancos();
            if (!pular("=")) parar(juntar({"o atributo ", atributo, " não tem valor"}));
            pularBrancos();
            if (no.atributo(atributo) != nullptr)
                parar(juntar({"o atributo ", atributo, " aparece duas vezes"}));
            if (no.atributos.size() == kMaximoAtributos) parar("há atributos demais numa marca");
            no.atributos.emplace_back(atributo, valorDoAtributo());
        }
    }

    std::string valorDoAtributo() {
        const char aspas = lugar_ < texto_.size() ? texto_[lugar_] : ' ';
        if (aspas != '"' && aspas != '\'') parar("o valor de um atributo vem entre aspas");
        ++lugar_;
        const std::size_t comeco = lugar_;
        const std::string_view bruto = pularAte({&aspas, 1}, "o valor de um atributo não termina");
        if (bruto.find('<') != bruto.npos) parar("há um < no valor de um atributo");
        return simples(bruto, comeco);
    }

    void fechar() {
        const std::string_view fechado = nome();
        pularBrancos();
        if (!pular(">")) parar("a marca de fim não termina");
        if (abertos_.size() == 1) parar(juntar({"</", fechado, "> não fecha nada"}));
        if (fechado != abertos_.back().nome)
            parar(juntar({"</", fechado, "> no lugar de </", abertos_.back().nome, ">"}));
        abertos_.pop_back();
    }

    void conteudo() {
        const std::size_t comeco = lugar_;
        lugar_ = std::min(texto_.find('<', lugar_), texto_.size());
        const std::string_view bruto = texto_.substr(comeco, lugar_ - comeco);
        if (abertos_.size() > 1) return anexar(simples(bruto, comeco));
        if (!std::all_of(bruto.begin(), bruto.end(), ehBranco)) {
            lugar_ = comeco;
            parar("há texto fora do elemento raiz");
        }
    }

    void anexar(std::string_view texto) {
        if (abertos_.size() == 1) parar("há texto fora do elemento raiz");
        abertos_.back().no->texto.append(texto);
    }

    // Characters checked and references read; `comeco` is where the text stands.
    std::string simples(std::string_view bruto, std::size_t comeco) {
        std::string resultado;
        for (std::size_t i = 0; i < bruto.size(); ++i) {
            const auto byte = static_cast<unsigned char>(bruto[i]);
            if (byte < 0x20 && !ehBranco(bruto[i])) {
                lugar_ = comeco + i;
                parar("há um caracter de controle");
            }
            if (bruto[i] != '&') {
                resultado += bruto[i];
                continue;
            }
            const std::size_t fim = bruto.substr(i, kMaiorReferencia).find(';');
            if (fim == bruto.npos || !referencia(bruto.substr(i + 1, fim - 1), resultado)) {
                lugar_ = comeco + i;
                parar("& solto ou referência desconhecida; escreva &amp;");
            }
            i += fim;
        }
        return resultado;
    }

    static bool referencia(std::string_view nome, std::string &resultado) {
        for (const Nomeada &nomeada : kNomeadas) {
            if (nome != nomeada.nome) continue;
            resultado += nomeada.caracter;
            return true;
        }
        if (!nome.starts_with('#')) return false;
        nome.remove_prefix(1);
        const bool hexa = nome.starts_with('x');
        if (hexa) nome.remove_prefix(1);
        unsigned long codigo = 0;
        const auto [lido, erro] =
            std::from_chars(nome.data(), nome.data() + nome.size(), codigo, hexa ? 16 : 10);
        if (nome.empty() || erro != std::errc{} || lido != nome.data() + nome.size() ||
            !ehCaracterXml(codigo))
            return false;
        anexarCodigo(resultado, codigo);
        return true;
    }

    void contarLinhas() {
        linha_ += static_cast<std::size_t>(
            std::count(texto_.begin() + static_cast<std::ptrdiff_t>(contadoAte_),
                       texto_.begin() + static_cast<std::ptrdiff_t>(lugar_), '\n'));
        contadoAte_ = lugar_;
    }

    std::string_view texto_;
    bool umaLinha_;
    std::size_t lugar_ = 0;
    // Pointers stay valid: only the innermost open element gets children.
    std::vector<Aberto> abertos_;
    std::size_t linha_ = 1, contadoAte_ = 0, elementos_ = 0;
};

// The encoding that the declaration names, in small letters; empty without one.
std::string codificacaoDeclarada(std::string_view bytes) {
    if (bytes.starts_with("\xEF\xBB\xBF")) return "utf-8";
    if (!bytes.starts_with("<?xml")) return {};
    const std::string_view declaracao = bytes.substr(0, bytes.find("?>"));
    const std::size_t achada = declaracao.find("encoding");
    if (achada == declaracao.npos) return {};
    const std::size_t abre = declaracao.find_first_of("\"'", achada);
    if (abre == declaracao.npos) return {};
    const std::size_t fecha = declaracao.find(declaracao[abre], abre + 1);
    return minusculas(declaracao.substr(abre + 1, fecha - abre - 1));
}

} // namespace

bool ehXmlUtf8(std::string_view bytes) {
    const std::string codificacao = codificacaoDeclarada(bytes);
    return codificacao.empty() ? ehUtf8(bytes) : codificacao == "utf-8";
}

std::optional<NoXml> lerXml(std::string_view bytes, ErroXml &erro) {
    const bool utf8 = ehXmlUtf8(bytes);
    if (utf8 && !ehUtf8(bytes)) {
        erro = {0, "a declaração diz UTF-8, mas os bytes não são UTF-8"};
        return {};
    }
    const std::string texto = utf8 ? std::string(bytes) : utf8DeLatin1(bytes);
    Leitor leitor(texto);
    try {
        return leitor.ler();
    } catch (const Parada &parada) {
        erro = leitor.erroEm(parada.lugar, parada.texto);
        return {};
    }
}

const NoXml *NoXml::filho(std::string_view procurado) const {
    const auto achado = std::ranges::find(filhos, procurado, &NoXml::nome);
    return achado == filhos.end() ? nullptr : &*achado;
}

const std::string *NoXml::atributo(std::string_view procurado) const {
    for (const auto &[nomeDele, valorDele] : atributos)
        if (nomeDele == procurado) return &valorDele;
    return nullptr;
}

std::string_view NoXml::valor(std::string_view caminho) const {
    const NoXml *no = this;
    for (const std::string_view nivel : dividir(caminho, '/'))
        if ((no = no->filho(nivel)) == nullptr) return {};
    return no->texto;
}

const NoXml *NoXml::procurar(std::string_view procurado) const {
    if (nome == procurado) return this;
    for (const NoXml &no : filhos)
        if (const NoXml *achado = no.procurar(procurado)) return achado;
    return nullptr;
}

} // namespace zel::aplicativo
