// SPDX-License-Identifier: MIT
// What asks the queue. Lists do not read bytes of documents: those are in a table of their own.
#include "fila/Dentro.h"
#include "fila/Fila.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace zel::envio {

namespace {

// In the order in which lerFicha() reads them.
const std::string kFichas =
    "SELECT d.id, d.caixa, d.origem, d.tipo, d.chave, d.cnpj, d.modelo, d.serie, d.numero, "
    "d.ultimo, "
    "d.tpAmb, d.tpEmis, d.dhEmi, d.total, d.consumidor, d.nomeConsumidor, d.substitui, d.estado, "
    "d.cStat, d.xMotivo, d.protocolo, d.momentoResposta, d.recibo, d.desfecho, d.motivo, "
    "d.tentativas, d.achado, d.mudado, d.proximo, d.troco FROM documento d ";

Ficha lerFicha(Comando &c) {
    Ficha f;
    f.id = c.numero();
    f.caixa = c.texto();
    f.origem = c.texto();
    f.tipo = static_cast<Tipo>(c.inteiro());
    f.chave = c.texto();
    f.cnpj = c.texto();
    f.modelo = c.inteiro();
    f.serie = c.inteiro();
    f.numero = c.numero();
    f.ultimo = c.numero();
    f.tpAmb = c.inteiro();
    f.tpEmis = c.inteiro();
    f.dhEmi = c.texto();
    f.total = c.numero();
    f.consumidor = c.texto();
    f.nomeConsumidor = c.texto();
    f.substitui = c.texto();
    f.estado = estadoDe(c.texto());
    f.cStat = c.inteiro();
    f.xMotivo = c.texto();
    f.protocolo = c.texto();
    f.momentoResposta = c.texto();
    f.recibo = c.texto();
    f.desfecho = static_cast<Desfecho>(c.inteiro());
    f.motivo = c.texto();
    f.tentativas = c.inteiro();
    f.achado = c.numero();
    f.mudado = c.numero();
    f.proximo = c.numero();
    if (!c.nulo()) f.troco = c.numero();
    return f;
}

// Of several, the one that counts.
const std::string kPreferida = " ORDER BY d.estado = 'entregue' DESC, d.proximo IS NOT NULL DESC, "
                               "d.id DESC LIMIT 1";

std::optional<Ficha> primeira(std::vector<Ficha> achadas) {
    return achadas.empty() ? std::nullopt : std::optional(std::move(achadas.front()));
}

// A request about a document that is due, too, and later than it, waits for it.
constexpr std::string_view kNaVez =
    "AND NOT (d.tipo <> 1 AND d.chave <> '' AND EXISTS (SELECT 1 FROM documento n "
    "WHERE n.chave = d.chave AND n.tipo = 1 AND (n.proximo <= ?2 OR n.proximo > ?3) "
    "AND (n.proximo, n.id) > (d.proximo, d.id))) ORDER BY d.proximo, d.id LIMIT ?4";

const std::string kNaoInutilizada =
    "AND NOT EXISTS (SELECT 1 FROM documento n INDEXED BY documento_faixa "
    "WHERE d.tipo = 1 AND n.tipo = 3 AND n.numero <= d.numero AND n.ultimo >= d.numero "
    "AND n.cnpj = d.cnpj AND n.tpAmb = d.tpAmb AND n.serie = d.serie AND n.estado = 'entregue') ";

// Documents that took a refused one's place: the same number issued again or inutilized, another
// that says so, or the same request once more. Whose number was another's already (6) was replaced
// by that one when both are of one sale.
const std::string kPrecisaDeAlguem =
    "((d.estado = 'recusado' AND NOT EXISTS (SELECT 1 FROM documento n WHERE d.tipo = 1 "
    "AND n.cnpj = d.cnpj AND n.tpAmb = d.tpAmb AND n.serie = d.serie AND n.numero = d.numero "
    "AND n.tipo = 1 AND n.estado = 'entregue' AND (d.desfecho <> 6 OR (n.caixa = d.caixa "
    "AND n.total = d.total AND n.consumidor = d.consumidor AND n.tpEmis <> d.tpEmis))) "
    "AND NOT EXISTS (SELECT 1 FROM documento n INDEXED BY documento_substitui "
    "WHERE d.tipo = 1 AND d.chave <> '' AND n.substitui <> '' AND n.substitui = d.chave "
    "AND n.tipo = 1 AND n.estado = 'entregue') " +
    kNaoInutilizada +
    "AND NOT EXISTS (SELECT 1 FROM documento n WHERE d.chave <> '' AND n.chave = d.chave "
    "AND n.tipo = d.tipo AND n.estado = 'entregue')) "
    "OR (d.proximo IS NOT NULL AND d.achado < ?) "
    "OR (d.estado = 'retirado' AND d.tipo = 1 AND d.mudado < ? "
    "AND NOT EXISTS (SELECT 1 FROM documento n WHERE n.cnpj = d.cnpj AND n.tpAmb = d.tpAmb "
    "AND n.serie = d.serie AND n.numero = d.numero AND n.tipo = 1 AND n.estado <> 'retirado') "
    "AND NOT EXISTS (SELECT 1 FROM documento n INDEXED BY documento_substitui "
    "WHERE n.substitui <> '' AND n.substitui = d.chave AND n.tipo = 1) " +
    kNaoInutilizada +
    ") "
    // Authorized, and for the week in which it can be cancelled in doubt of being another's double.
    "OR d.id IN (SELECT v.id FROM anotacao a CROSS JOIN documento v INDEXED BY documento_chave "
    "WHERE a.nome >= 'duvida:' AND a.nome < 'duvida;' AND v.chave = substr(a.nome, 8) "
    "AND v.tipo = 1 AND v.estado = 'entregue' AND v.achado > ? - 604800000 AND NOT EXISTS "
    "(SELECT 1 FROM documento n INDEXED BY documento_substitui "
    "WHERE n.substitui <> '' AND n.substitui = v.chave)))";

// The authority refused the document because its number is gone already.
constexpr std::array kNumeroGasto{Desfecho::kJaEsta, Desfecho::kOutraChave,
                                  Desfecho::kJaInutilizado, Desfecho::kJaCancelado,
                                  Desfecho::kDenegado};

std::string sqlDosUsados() {
    std::string gastos;
    for (const Desfecho desfecho : kNumeroGasto)
        gastos += (gastos.empty() ? "" : ", ") + std::to_string(static_cast<int>(desfecho));
    return "SELECT cnpj, tpAmb, serie, numero, ultimo FROM documento WHERE tipo IN (1, 3) "
           "AND numero > 0 AND cnpj <> '' AND (estado NOT IN ('recusado', 'retirado') "
           "OR (tipo = 1 AND estado = 'recusado' AND desfecho IN (" +
           gastos +
           ")) OR (tipo = 1 AND estado = 'retirado' AND NOT EXISTS (SELECT 1 FROM documento n "
           "INDEXED BY documento_substitui WHERE n.substitui <> '' AND n.substitui = "
           "documento.chave "
           "AND n.tipo = 1 AND n.estado <> 'retirado'))) ORDER BY cnpj, tpAmb, serie, numero";
}

// Conditions and what stands in their places.
class Condicoes {
public:
    void se(bool pedido, std::string_view condicao, const std::vector<Valor> &valores) {
        if (!pedido) return;
        texto_ += (texto_.empty() ? "WHERE " : "AND ") + std::string(condicao) + ' ';
        valores_.insert(valores_.end(), valores.begin(), valores.end());
    }
    const std::string &texto() const { return texto_; }
    void darA(Comando &comando) const {
        for (const Valor &valor : valores_)
            comando.dar(valor);
    }

private:
    std::string texto_;
    std::vector<Valor> valores_;
};

std::int64_t limite(std::size_t maximo) {
    return static_cast<std::int64_t>(std::min<std::size_t>(maximo, INT64_MAX));
}

} // namespace

std::string Fila::Dentro::bytes(std::string_view sql, const Valor &valor) {
    Comando comando(banco, sql);
    std::string lidos;
    if (comando.dar(valor).linha()) lidos = comando.texto();
    if (comando.falhou()) anotarFalha();
    return lidos;
}

// ---- One document ----

std::optional<Ficha> Fila::ficha(std::int64_t id) {
    Comando comando(dentro_->banco, kFichas + "WHERE d.id = ?");
    return primeira(dentro_->linhas(comando.dar(id), lerFicha));
}

std::optional<Ficha> Fila::substituta(std::string_view chave) {
    if (chave.empty()) return {};
    Comando comando(dentro_->banco, kFichas +
                                        "WHERE d.substitui = ? AND d.tipo = 1 "
                                        "AND d.estado <> 'retirado'" +
                                        kPreferida);
    return primeira(dentro_->linhas(comando.dar(chave), lerFicha));
}

std::optional<Ficha> Fila::notaNaFaixa(const Ficha &i) {
    Comando comando(dentro_->banco,
                    kFichas +
                        "WHERE d.cnpj = ? AND d.tpAmb = ? AND d.serie = ? AND d.numero >= ? "
                        "AND d.numero <= ? AND d.tipo = 1 AND d.estado NOT IN ('recusado', "
                        "'retirado')" +
                        kPreferida);
    comando.dar(i.cnpj).dar(i.tpAmb).dar(i.serie).dar(i.numero).dar(i.ultimo);
    return primeira(dentro_->linhas(comando, lerFicha));
}

std::optional<Ficha> Fila::porChave(std::string_view chave, Tipo tipo) {
    if (chave.empty()) return {};
    Comando comando(dentro_->banco, kFichas + "WHERE d.chave = ? AND d.tipo = ?" + kPreferida);
    return primeira(dentro_->linhas(comando.dar(chave).dar(static_cast<int>(tipo)), lerFicha));
}

std::vector<Ficha> Fila::porNumero(std::string_view cnpj, int tpAmb, int serie,
                                   std::int64_t numero) {
    Comando comando(dentro_->banco,
                    kFichas + "WHERE d.cnpj = ? AND d.tpAmb = ? AND d.serie = ? AND d.numero = ? "
                              "AND d.tipo = 1 ORDER BY d.id");
    return dentro_->linhas(comando.dar(cnpj).dar(tpAmb).dar(serie).dar(numero), lerFicha);
}

std::string Fila::original(std::int64_t id) {
    return dentro_->bytes("SELECT original FROM conteudo WHERE id = ?", id);
}

std::string Fila::mensagem(std::int64_t id) {
    return dentro_->bytes("SELECT mensagem FROM conteudo WHERE id = ?", id);
}

std::string Fila::elemento(std::int64_t id) {
    return dentro_->bytes("SELECT elemento FROM conteudo WHERE id = ?", id);
}

std::string Fila::evento(std::int64_t id) {
    return dentro_->bytes("SELECT evento FROM conteudo WHERE id = ?", id);
}

std::vector<PassoDado> Fila::passos(std::int64_t id) {
    Comando comando(dentro_->banco,
                    "SELECT momento, de, para, detalhe FROM passo WHERE documento = ? ORDER BY id");
    return dentro_->linhas(comando.dar(id), [](Comando &c) {
        PassoDado passo;
        passo.momento = c.numero();
        passo.de = estadoDe(c.texto());
        passo.para = estadoDe(c.texto());
        passo.detalhe = c.texto();
        return passo;
    });
}

// ---- What is due ----

std::vector<Ficha> Fila::prontas(const std::string &caixa, Momento agora, std::size_t maximo) {
    std::vector<Ficha> todas;
    for (const char *faixa :
         {"WHERE d.caixa = ?1 AND d.proximo <= ?2 ", "WHERE d.caixa = ?1 AND d.proximo > ?3 "}) {
        if (todas.size() >= maximo) break;
        Comando comando(dentro_->banco, kFichas + faixa + std::string(kNaVez));
        comando.dar(caixa).dar(agora).dar(agora + kMaiorPausa).dar(limite(maximo - todas.size()));
        for (Ficha &ficha : dentro_->linhas(comando, lerFicha))
            todas.push_back(std::move(ficha));
    }
    return todas;
}

std::optional<Momento> Fila::proximo(const std::string &caixa, Momento agora) {
    Comando comando(dentro_->banco, "SELECT (SELECT min(proximo) FROM documento WHERE caixa = ?1 "
                                    "AND proximo IS NOT NULL), (SELECT max(proximo) FROM documento "
                                    "WHERE caixa = ?1 AND proximo IS NOT NULL)");
    const auto linhas = dentro_->linhas(comando.dar(caixa), [&](Comando &c) {
        if (c.nulo()) return std::optional<Momento>();
        const Momento primeiro = c.numero(), ultimo = c.numero();
        return std::optional(ultimo > agora + kMaiorPausa ? std::min(primeiro, agora) : primeiro);
    });
    return linhas.empty() ? std::nullopt : linhas.front();
}

// ---- Lists ----

std::vector<Ficha> Fila::procurar(const Procura &procura) {
    Condicoes onde;
    const std::string depoisDoDia = procura.dia + '~', depoisDoMes = procura.mes + '~';
    const auto texto = [](const std::string &t) { return Valor(std::string_view(t)); };
    onde.se(!procura.caixa.empty(), "d.caixa = ?", {texto(procura.caixa)});
    onde.se(!procura.chave.empty(), "d.chave = ?", {texto(procura.chave)});
    onde.se(!procura.dia.empty(), "d.dhEmi >= ? AND d.dhEmi < ?",
            {texto(procura.dia), texto(depoisDoDia)});
    onde.se(!procura.mes.empty(), "d.dhEmi >= ? AND d.dhEmi < ?",
            {texto(procura.mes), texto(depoisDoMes)});
    onde.se(!procura.consumidor.empty(), "d.consumidor = ? AND d.consumidor <> ''",
            {texto(procura.consumidor)});
    onde.se(procura.numero != 0,
            "(d.numero = ? OR (d.tipo = 3 AND d.numero <= ? AND d.ultimo >= ?))",
            {procura.numero, procura.numero, procura.numero});
    std::string lugares;
    std::vector<Valor> estados;
    for (const Estado estado : procura.estados) {
        lugares += lugares.empty() ? "?" : ", ?";
        estados.emplace_back(nomeDoEstado(estado));
    }
    onde.se(!estados.empty(), "d.estado IN (" + lugares + ")", estados);
    onde.se(procura.precisaDeAlguem, kPrecisaDeAlguem,
            {procura.atrasadoAntesDe, procura.retiradoAntesDe, procura.atrasadoAntesDe});
    Comando comando(dentro_->banco, // Numbers are sorted, not whole rows.
                    kFichas + "WHERE d.id IN (SELECT d.id FROM documento d " + onde.texto() +
                        "ORDER BY d.id DESC LIMIT ?) ORDER BY d.id DESC");
    onde.darA(comando);
    return dentro_->linhas(comando.dar(limite(procura.maximo)), lerFicha);
}

std::vector<Contagem> Fila::contar() {
    std::vector<Contagem> contagens;
    for (const NomeEstado &estado : kEstados)
        contagens.push_back({estado.estado, 0, 0});
    Comando comando(dentro_->banco,
                    "SELECT estado, count(*), min(achado) FROM documento GROUP BY estado");
    for (const Contagem &contada : dentro_->linhas(comando, [](Comando &c) {
             const Estado estado = estadoDe(c.texto());
             const std::int64_t quantos = c.numero();
             return Contagem{estado, quantos, c.numero()};
         }))
        contagens.at(static_cast<std::size_t>(contada.estado)) = contada;
    return contagens;
}

std::vector<Lacuna> Fila::lacunas() {
    static const std::string kUsados = sqlDosUsados();
    std::vector<Lacuna> achadas;
    Lacuna ate; // `ultimo`: the highest number of the series so far
    Comando comando(dentro_->banco, kUsados);
    while (comando.linha()) {
        Lacuna esta;
        esta.cnpj = comando.texto();
        esta.tpAmb = comando.inteiro();
        esta.serie = comando.inteiro();
        esta.primeiro = comando.numero();
        esta.ultimo = comando.numero();
        const bool mesma =
            esta.cnpj == ate.cnpj && esta.tpAmb == ate.tpAmb && esta.serie == ate.serie;
        if (mesma && esta.primeiro > ate.ultimo + 1)
            achadas.push_back(
                {esta.cnpj, esta.tpAmb, esta.serie, ate.ultimo + 1, esta.primeiro - 1});
        if (mesma) esta.ultimo = std::max(esta.ultimo, ate.ultimo);
        ate = std::move(esta);
    }
    if (comando.falhou()) dentro_->anotarFalha();
    return achadas;
}

std::vector<ServicoVisto> Fila::servicos() {
    Comando comando(dentro_->banco, "SELECT servico, cUF, tpAmb, cStat, http, xMotivo, momento, "
                                    "demora FROM servico ORDER BY servico, cUF, tpAmb");
    return dentro_->linhas(comando, [](Comando &c) {
        ServicoVisto visto;
        visto.servico = c.texto();
        visto.cUF = c.texto();
        visto.tpAmb = c.inteiro();
        visto.cStat = c.inteiro();
        visto.http = c.inteiro();
        visto.xMotivo = c.texto();
        visto.momento = c.numero();
        visto.demora = c.numero();
        return visto;
    });
}

std::string Fila::anotado(std::string_view nome) {
    return dentro_->bytes("SELECT texto FROM anotacao WHERE nome = ?", nome);
}

} // namespace zel::envio
