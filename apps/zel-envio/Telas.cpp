// SPDX-License-Identifier: MIT
#include "Telas.h"

#include "comum/Estados.h"
#include "documento/Pagina.h"
#include "fluxo/Relogio.h"
#include "mensagem/Resposta.h"

#include <algorithm>
#include <array>
#include <set>

namespace zel::envio {

namespace {

// How a state is marked: a class of the style sheet and a sign, for whoever sees no colours.
struct Marca {
    const char *classe, *sinal;
};
constexpr std::array<Marca, kEstados.size()> kMarcas{{{"espera", "…"},
                                                      {"espera", "…"},
                                                      {"espera", "…"},
                                                      {"espera", "↑"},
                                                      {"duvida", "?"},
                                                      {"espera", "↓"},
                                                      {"bom", "✓"},
                                                      {"ruim", "!"},
                                                      {"neutro", "–"}}};

struct NomeDoServico {
    std::string_view servico, pessoa;
};
constexpr std::array<NomeDoServico, 6> kServicos{{
    {"NFeAutorizacao", "autorização de notas"},
    {"NFeRetAutorizacao", "resultado de um lote"},
    {"NFeConsultaProtocolo", "consulta de notas"},
    {"NFeStatusServico", "estado do serviço"},
    {"NFeInutilizacao", "inutilização de números"},
    {"NFeRecepcaoEvento", "cancelamento"},
}};

std::string reais(Centavos valor) {
    return "R$ " + numeroLido(textoDe(valor), 2);
}

std::string momentoDe(Momento momento, const std::string &zona) {
    return momentoLido(momentoEscrito(momento, zona).substr(0, 19));
}

std::string horaDe(const std::string &dhEmi) {
    return dhEmi.size() < 16 ? "" : dhEmi.substr(11, 5);
}

std::string ambienteDe(int tpAmb) {
    return tpAmb == 1 ? "produção" : "homologação";
}

Html estadoDe(const Ficha &ficha) {
    const Marca &marca = kMarcas.at(static_cast<std::size_t>(ficha.estado));
    return encher("<span class=\"estado {}\"><b aria-hidden=\"true\">{}</b> {}</span>",
                  marca.classe, marca.sinal, situacaoDe(ficha));
}

Html endereco(const Ficha &ficha) {
    return encher("<a href=\"/documento/{}\">{}</a>", ficha.id, tituloDe(ficha));
}

Html linhaDe(const Ficha &ficha, bool comDia, bool cancelada) {
    const std::string quando =
        comDia ? momentoLido(ficha.dhEmi.substr(0, 16)) : horaDe(ficha.dhEmi);
    Html detalhe;
    if (ficha.tpEmis == 9 && ficha.tipo == Tipo::kNfce)
        detalhe += encher("<small>emitida sem conexão</small>");
    if (cancelada) detalhe += encher("<small>cancelada depois</small>");
    if (ficha.estado != Estado::kEntregue && !ficha.motivo.empty())
        detalhe += encher("<small>{}</small>", ficha.motivo);
    return encher("<tr><td class=\"quando\">{}</td><td>{}</td><td class=\"valor\">{}</td>"
                  "<td>{}{}</td></tr>\n",
                  quando, endereco(ficha), ficha.total == 0 ? "" : reais(ficha.total),
                  estadoDe(ficha), detalhe);
}

Html tabela(const std::vector<Ficha> &fichas, std::size_t mostradas, bool comDia) {
    // A cancellation is within the hour of its note: mostly it is in the same list.
    std::set<std::string_view> canceladas;
    for (const Ficha &ficha : fichas)
        if (ficha.tipo == Tipo::kCancelamento && ficha.desfecho == Desfecho::kCancelado)
            canceladas.insert(ficha.chave);
    Html linhas;
    for (std::size_t i = 0; i < std::min(fichas.size(), mostradas); ++i)
        linhas += linhaDe(fichas[i], comDia,
                          fichas[i].tipo == Tipo::kNfce && canceladas.contains(fichas[i].chave));
    Html resto;
    if (fichas.size() > mostradas)
        resto = encher("<p>Só os últimos {} são mostrados; os outros, por número ou dia em "
                       "<a href=\"/procurar\">Procurar</a>.</p>",
                       static_cast<std::int64_t>(mostradas));
    return encher("<table><thead><tr><th>{}</th><th>Documento</th><th class=\"valor\">Total</th>"
                  "<th>Situação</th></tr></thead><tbody>\n{}</tbody></table>{}",
                  comDia ? "Quando" : "Hora", linhas, resto);
}

Html cartao(const Aviso &aviso) {
    const Html titulo = aviso.documento == 0 ? encher("{}", aviso.titulo)
                                             : encher("<a href=\"/documento/{}\">{}</a>",
                                                      aviso.documento, aviso.titulo);
    Html textos;
    if (!aviso.motivo.empty()) textos += encher("<p>{}</p>", aviso.motivo);
    if (!aviso.remedio.empty()) textos += encher("<p>{}</p>", aviso.remedio);
    return encher("<li><h3><b aria-hidden=\"true\">!</b> {}</h3>{}</li>\n", titulo, textos);
}

Html avisos(const Quadro &quadro) {
    const auto lista = avisosDe(quadro);
    if (lista.empty())
        return encher("<p class=\"tudo bom\"><b aria-hidden=\"true\">✓</b> Nada precisa de "
                      "ninguém.</p>");
    Html cartoes;
    for (const Aviso &aviso : lista)
        cartoes += cartao(aviso);
    return encher("<h2>Precisa de alguém</h2><ul class=\"avisos\">\n{}</ul>", cartoes);
}

Html resumo(const Quadro &quadro) {
    if (quadro.esperando == 0) return encher("<p>Nenhum documento espera.</p>");
    return encher("<p><strong>{}</strong> {}; o mais antigo há {}.</p>", quadro.esperando,
                  quadro.esperando == 1 ? "documento espera" : "documentos esperam",
                  duracaoLida(quadro.agora - quadro.maisAntigo));
}

std::string nomeDoServico(const std::string &servico) {
    const auto *linha = std::find_if(kServicos.begin(), kServicos.end(),
                                     [&](const auto &s) { return servico.starts_with(s.servico); });
    return linha == kServicos.end() ? servico : std::string(linha->pessoa);
}

Html servicos(const Quadro &quadro, const std::string &zona) {
    Html linhas;
    for (const ServicoVisto &visto : quadro.servicos) {
        const auto *estado = procurarEstadoPorCodigo(visto.cUF);
        const bool chegou = visto.cStat != 0;
        const std::string codigo = chegou ? std::to_string(visto.cStat) + " " : "sem resposta: ";
        linhas += encher("<tr><td>{}<small>{}, {}</small></td><td><span class=\"estado {}\">"
                         "<b aria-hidden=\"true\">{}</b> {}{}</span></td>"
                         "<td class=\"quando\">{}<small>em {} s</small></td></tr>\n",
                         nomeDoServico(visto.servico), estado ? estado->uf : visto.cUF,
                         ambienteDe(visto.tpAmb), chegou ? "bom" : "ruim", chegou ? "✓" : "!",
                         codigo, visto.xMotivo, momentoDe(visto.momento, zona),
                         numeroLido(textoDe(visto.demora / 10), 2));
    }
    if (linhas.vazio()) return encher("<p>A SEFAZ ainda não foi chamada.</p>");
    return encher("<table><thead><tr><th>Serviço</th><th>Última resposta</th><th>Quando</th></tr>"
                  "</thead><tbody>\n{}</tbody></table>",
                  linhas);
}

Html campo(std::string_view nome, std::string_view valor) {
    return valor.empty() ? Html() : encher("<dt>{}</dt><dd>{}</dd>\n", nome, valor);
}

std::string consumidorDe(const Ficha &ficha) {
    // A company's number is public.
    const bool empresa = ficha.consumidor.size() == 14;
    const std::string numero = empresa ? cnpjLido(ficha.consumidor) : soMeio(ficha.consumidor);
    return ficha.nomeConsumidor.empty() ? numero : ficha.nomeConsumidor + ", " + numero;
}

Html camposDe(const Ficha &ficha) {
    Html campos = campo("Motivo", ficha.motivo);
    if (ficha.cStat != 0)
        campos += campo("Resposta da SEFAZ", std::to_string(ficha.cStat) + " " + ficha.xMotivo);
    campos += campo("Respondida em", momentoLido(ficha.momentoResposta));
    campos += campo("Protocolo", ficha.protocolo);
    campos += campo("Chave de acesso", chaveLida(ficha.chave));
    campos += campo("Emissão", momentoLido(ficha.dhEmi));
    if (ficha.tipo == Tipo::kNfce) {
        campos += campo("Total", reais(ficha.total));
        campos +=
            campo("Emitida", ficha.tpEmis == 9 ? "sem conexão (contingência)" : "com conexão");
        campos += campo("Consumidor",
                        ficha.consumidor.empty() ? "não identificado" : consumidorDe(ficha));
    }
    campos += campo("Ambiente", ambienteDe(ficha.tpAmb));
    campos += campo("Emitente", cnpjLido(ficha.cnpj));
    campos += campo("Caixa", ficha.caixa);
    campos += campo("Arquivo", ficha.origem);
    if (!ficha.substitui.empty())
        campos += encher("<dt>{}</dt><dd><a href=\"/procurar?chave={}\">{}</a></dd>\n",
                         ficha.tipo == Tipo::kNfce ? "Substitui a nota" : "Nota que a substituiu",
                         ficha.substitui, chaveLida(ficha.substitui));
    return campos;
}

} // namespace

Html paginaInteira(std::string_view titulo, const Html &corpo, std::string_view hora,
                   bool renovar) {
    return encher(
        "<!DOCTYPE html>\n<html lang=\"pt-BR\"><head><meta charset=\"utf-8\">\n"
        "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n{}"
        "<title>{} - Envio de notas</title>\n<link rel=\"stylesheet\" href=\"/estilo.css\">\n"
        "</head><body>\n<header><h1>Envio de notas</h1><nav><a href=\"/\">Hoje</a> "
        "<a href=\"/procurar\">Procurar</a></nav></header>\n<main>\n{}\n</main>\n"
        "<footer>Visto em {}. Esta página só mostra: nada se muda por ela.</footer>\n"
        "</body></html>\n",
        renovar ? encher("<meta http-equiv=\"refresh\" content=\"30\">\n") : Html(), titulo, corpo,
        hora);
}

Html telaDeHoje(const Quadro &quadro, const std::vector<Ficha> &hoje, std::size_t mostrados,
                const std::string &zona) {
    return encher("<section>{}{}</section>\n<section><h2>Documentos de hoje</h2>{}</section>\n"
                  "<section><h2>Respostas da SEFAZ</h2>{}</section>",
                  avisos(quadro), resumo(quadro),
                  hoje.empty() ? encher("<p>Nenhum ainda.</p>") : tabela(hoje, mostrados, false),
                  servicos(quadro, zona));
}

Html telaDeProcura(const Perguntado &perguntado, std::string_view erro,
                   const std::vector<Ficha> &achadas, std::size_t mostrados) {
    Html resposta;
    if (!erro.empty())
        resposta = encher("<p class=\"estado ruim\"><b aria-hidden=\"true\">!</b> {}</p>", erro);
    else if (!perguntado.nada())
        resposta =
            achadas.empty() ? encher("<p>Nada foi achado.</p>") : tabela(achadas, mostrados, true);
    return encher("<section><h2>Procurar</h2><form action=\"/procurar\" method=\"get\">\n"
                  "<label>Número<input name=\"numero\" inputmode=\"numeric\" maxlength=\"9\" "
                  "value=\"{}\"></label>\n"
                  "<label>Dia<input name=\"dia\" type=\"date\" value=\"{}\"></label>\n"
                  "<label>CPF ou CNPJ do consumidor<input name=\"consumidor\" maxlength=\"20\" "
                  "autocomplete=\"off\"></label>\n"
                  "<label class=\"longa\">Chave de acesso<input name=\"chave\" maxlength=\"60\" "
                  "value=\"{}\"></label>\n"
                  "<button>Procurar</button></form></section>\n<section>{}</section>",
                  perguntado.numero, perguntado.dia, perguntado.chave, resposta);
}

Html telaDoDocumento(const Ficha &ficha, const std::vector<PassoDado> &passos) {
    Html linhas = encher("<tr><td class=\"quando\">{}</td><td>achado no caixa</td></tr>\n",
                         momentoDe(ficha.achado, ficha.dhEmi));
    for (const PassoDado &passo : passos)
        linhas +=
            encher("<tr><td class=\"quando\">{}</td><td>{}{}</td></tr>\n",
                   momentoDe(passo.momento, ficha.dhEmi),
                   kEstados.at(static_cast<std::size_t>(passo.para)).pessoa,
                   passo.detalhe.empty() ? Html() : encher("<small>{}</small>", passo.detalhe));
    return encher("<section><h2>{}</h2><p>{}</p>\n<dl>\n{}</dl></section>\n"
                  "<section><h2>Passos</h2><table><thead><tr><th>Quando</th><th>O que houve</th>"
                  "</tr></thead><tbody>\n{}</tbody></table></section>",
                  tituloDe(ficha), estadoDe(ficha), camposDe(ficha), linhas);
}

Html telaDeAviso(std::string_view frase) {
    return encher("<section><p>{}</p><p><a href=\"/\">Documentos de hoje</a></p></section>", frase);
}

const std::string_view kEstilo = R"css(
* { box-sizing: border-box }
body { margin: 0; font: 17px/1.45 system-ui, "DejaVu Sans", sans-serif; color: #1b1f24; background: #f4f5f7 }
header { display: flex; flex-wrap: wrap; gap: .3rem 1.5rem; align-items: baseline; padding: .7rem 1rem; background: #17324d; color: #fff }
h1 { font-size: 1.2rem; margin: 0 }
h2 { font-size: 1.1rem; margin: 0 0 .6rem }
h3 { font-size: 1rem; margin: 0 }
nav a { color: #fff; margin-right: 1rem }
main { max-width: 62rem; margin: 0 auto; padding: .5rem }
section { background: #fff; border: 1px solid #d5d9de; border-radius: 6px; padding: .9rem 1rem; margin: .7rem 0 }
section:empty { display: none }
a { color: #0b4f8a }
p { margin: .4rem 0 }
small { display: block; color: #4a525b; font-size: .85rem; white-space: pre-line }
table { width: 100%; border-collapse: collapse }
th, td { text-align: left; vertical-align: top; padding: .4rem .5rem; border-top: 1px solid #e3e6ea }
th { border-top: 0; font-size: .85rem; color: #4a525b }
td:nth-child(2) { min-width: 8.5rem }
.valor { text-align: right; white-space: nowrap }
.quando { white-space: nowrap; font-variant-numeric: tabular-nums }
.estado b, .tudo b, h3 b { display: inline-block; min-width: 1.4em; text-align: center; border: 2px solid; border-radius: 4px; line-height: 1.2 }
.bom { color: #17602c }
.ruim, .avisos h3, .avisos h3 a { color: #a11212 }
.duvida { color: #7a4a00 }
.espera { color: #0b4f8a }
.neutro { color: #4a525b }
.avisos { list-style: none; margin: 0; padding: 0 }
.avisos li { border-left: 6px solid #a11212; background: #fdf3f2; padding: .6rem .8rem; margin: 0 0 .6rem }
.avisos p, dd { white-space: pre-line; overflow-wrap: anywhere }
.tudo { font-weight: bold }
dl { display: grid; grid-template-columns: max-content 1fr; gap: .3rem 1rem; margin: .6rem 0 0 }
dt { color: #4a525b }
dd { margin: 0 }
form { display: grid; grid-template-columns: repeat(auto-fit, minmax(12rem, 1fr)); gap: .7rem; align-items: end }
.longa { grid-column: 1 / -1 }
input { display: block; width: 100%; font: inherit; padding: .4rem; border: 1px solid #767e87; border-radius: 4px }
button { font: inherit; padding: .45rem 1.2rem; border: 0; border-radius: 4px; background: #17324d; color: #fff }
footer { text-align: center; color: #4a525b; font-size: .85rem; padding: .5rem 1rem 1.5rem }
@media (max-width: 40rem) { dl { grid-template-columns: 1fr; gap: 0 } dd { margin-bottom: .5rem } th, td { padding: .35rem .25rem } }
)css";

} // namespace zel::envio
