// SPDX-License-Identifier: MIT
// The C++17 layer against a real library: teste DIRECTORY CASES. Ends with 1 and what failed.
#include "ZEL_Felbor.hpp"

#include <functional>
#include <iostream>
#include <sstream>
#include <thread>

using namespace zel_felbor;

namespace {

int falhas = 0;

void conferir(bool certo, const std::string &oque) {
    if (certo) return;
    std::cout << "failed: " << oque << '\n';
    ++falhas;
}

template <typename Lido, typename Esperado>
void igual(const Lido &lido, const Esperado &esperado, const std::string &oque) {
    std::ostringstream texto;
    texto << oque << ": " << lido << ", expected " << esperado;
    conferir(lido == esperado, texto.str());
}

void contido(const std::string &parte, const std::string &texto, const std::string &oque) {
    conferir(texto.find(parte) != texto.npos, oque + ": " + texto.substr(0, 300));
}

std::string hexa(const std::string &bytes) {
    std::string texto;
    for (const char c : bytes)
        for (const int meio : {static_cast<unsigned char>(c) >> 4, c & 15})
            texto.push_back("0123456789ABCDEF"[meio]);
    return texto;
}

// What a call throws; fails the test when it throws nothing.
template <typename Chamada_>
Falha falhaDe(Chamada_ chamada, const std::string &oque) {
    try {
        chamada();
    } catch (const Falha &falha) {
        return falha;
    }
    conferir(false, oque + " was not refused");
    return Falha(Resultado("", 1));
}

template <typename Chamada_>
void recusado(Chamada_ chamada, const std::string &dito, const std::string &oque) {
    contido(dito, falhaDe(chamada, oque).what(), oque);
}

std::string caixaDoProcesso;

Conversao converterComprimento(const std::string &limites, const std::string &entrada) {
    const std::size_t traco = limites.find('-');
    const Cupom caixa(caixaDoProcesso);
    Chamada c(caixa, "f");
    const std::string latin1 = c.texto("a", entrada, std::stoul(limites.substr(0, traco)),
                                       std::stoul(limites.substr(traco + 1)));
    try {
        c.invocar([] { return 1; }, std::tuple<>{});
        return {c.resultado().ok() ? hexa(latin1) : "", ""};
    } catch (const Falha &falha) {
        return {"", falha.what()};
    }
}

Conversao converterConsumidor(const std::string &escolha, const std::string &entrada) {
    Consumidor c;
    std::istringstream pares(entrada);
    for (std::string nome, valor;
         std::getline(pares, nome, '=') && std::getline(pares, valor, ';');) {
        std::string &campo = nome == "documento"     ? c.documento
                             : nome == "cpf"         ? c.cpf
                             : nome == "cnpj"        ? c.cnpj
                             : nome == "estrangeiro" ? c.estrangeiro
                             : nome == "nome"        ? c.nome
                             : nome == "numero"      ? c.numero
                                                     : c.email;
        campo = valor;
    }
    return identificacaoDe(escolha == "identificar" ? "aCFIdentificarConsumidor_ZEL"
                                                    : "aCFAbrir_ZEL",
                           c, escolha == "cortar");
}

Conversao converter(const std::string &tipo, const std::string &escolha,
                    const std::string &entrada) {
    if (tipo == "texto") return paraLatin1("a", entrada, escolha == "transliterar");
    if (tipo == "comprimento") return converterComprimento(escolha, entrada);
    if (tipo == "consumidor") return converterConsumidor(escolha, entrada);
    if (tipo == "autorizacao") {
        const std::string retorno = entrada.substr(entrada.find('|') + 1);
        const auto lido = retorno == "OFFLINE" ? std::nullopt : std::optional(retorno);
        std::string recusa = recusaDeImpressao(entrada.substr(0, entrada.find('|')), lido,
                                               escolha == "cancelamento");
        return {recusa.empty() ? "ok" : "", recusa};
    }
    if (tipo == "diretorio")
        return {"", falhaDe([&] { Cupom(entrada).inicializar(); }, entrada).what()};
    const Decimal numero(entrada);
    if (tipo == "aliquota")
        return (escolha == "servico" ? Aliquota::servico(numero) : Aliquota::mercadoria(numero))
            .converter("a");
    return numero.converter("a", std::stoi(escolha));
}

// The cases that all languages share.
void testarConversoes(const char *arquivo, const char *outro) {
    std::istringstream linhas(detalhe::lerArquivo(arquivo).value_or("") +
                              detalhe::lerArquivo(outro).value_or(""));
    int casos = 0;
    for (std::string linha; std::getline(linhas, linha);) {
        if (linha.front() == '#') continue;
        std::istringstream campos(linha);
        std::string tipo, escolha, entrada, esperado;
        for (std::string *campo : {&tipo, &escolha, &entrada, &esperado})
            std::getline(campos, *campo, '\t');
        const Conversao lido = converter(tipo, escolha, entrada);
        ++casos;
        if (esperado.front() != '!') {
            igual(tipo == "texto" ? hexa(lido.texto) : lido.texto, esperado, linha + lido.erro);
        } else {
            conferir(!lido.erro.empty(), linha + " was taken as " + lido.texto);
            contido(esperado.substr(1), lido.erro, linha);
        }
    }
    conferir(casos > 70, "the cases were not read");
}

std::string dizer(const Andamento &a) {
    std::string dito;
    const auto anexar = [&](const char *letra, std::initializer_list<std::string> campos) {
        dito += (dito.empty() ? "" : ";") + std::string(letra);
        for (const std::string &campo : campos)
            dito += "," + campo;
    };
    if (a.consumidor)
        anexar("C", {a.consumidor->tipo, a.consumidor->documento, a.consumidor->nome,
                     a.consumidor->email});
    for (const ItemLido &i : a.lista)
        anexar("I", {i.numero, i.codigo, i.descricao, i.quantidade, i.unidade, i.preco, i.bruto,
                     i.desconto, i.acrescimo});
    for (const PagamentoLido &p : a.pagamentos)
        anexar("P", {p.forma, p.nome, p.valor});
    anexar("T", {a.total, a.pago, a.falta});
    return dito;
}

// The receipts in progress that all languages share.
void testarAndamento(const char *arquivo) {
    std::istringstream linhas(detalhe::lerArquivo(arquivo).value_or(""));
    int casos = 0;
    for (std::string linha, nome, registros, esperado; std::getline(linhas, linha);) {
        if (linha.front() == '#') continue;
        std::istringstream campos(linha);
        for (std::string *campo : {&nome, &registros, &esperado})
            std::getline(campos, *campo, '\t');
        std::string bytes, erro;
        for (const char c : paraLatin1("a", registros, false).texto)
            bytes += c == '^' ? "\r\n" : std::string(1, c);
        const std::string dito = dizer(andamentoDe(bytes, erro));
        if (esperado.front() == '!')
            contido(esperado.substr(1), erro, nome);
        else
            igual(dito + erro, esperado, nome);
        ++casos;
    }
    conferir(casos > 15, "the receipts in progress were not read");
}

void testarEntradas() {
    for (const char *numero : {"", "-", ",", "1,2,3", "12a", " 1", "1e3", "1234567890123456789"})
        conferir(!Decimal(numero).valido(), std::string("decimal ") + numero);
    igual(Decimal("0,5").texto(), "0.50", "comma");
    igual(Decimal::centavos(-5).texto(), "-0.05", "cents");
    static_assert(!std::is_constructible_v<Decimal, double>);

    using namespace std::string_view_literals;
    for (const std::string_view texto :
         {"\xe3"sv, "a\xc3"sv, "\xc0\xaf"sv, "\xed\xa0\x80"sv, "\xf4\x90\x80\x80"sv})
        contido("não é UTF-8", paraLatin1("a", texto, true).erro, "bad UTF-8");
    contido("(U+0000) na posição 2", paraLatin1("a", "P\0o"sv, true).erro, "NUL");
}

// What the functions would cut, or take for something else.
void testarCortes(const std::string &diretorio) {
    Cupom c(diretorio), cortante(diretorio, {true, false, true});
    const std::string longa(121, 'x');
    recusado([&] { c.abrirNumSerie(1, 1000); }, "serie: 1000", "a long series");
    recusado([&] { c.lancarDescontoItem(1, Ajuste::desconto(Decimal("0,125"))); }, "valor: 0.125",
             "parts of a cent");
    recusado([&] { c.vender(Aliquota::isento(), 1, 1, "1", "UN", longa); }, "descricao: 121", "");
    recusado([&] { c.identificarTransportadora("123.456.789-00", "Zé"); }, "documento: os", "");
    recusado([&] { c.encerrarConfigMsg("só uma", ""); }, "informacoesFisco: 0",
             "one message alone");
    recusado([&] { c.criptografarArquivo("/a", "/" + std::string(300, 'x'), ""); }, "destino: nome",
             "a long file name");
    c.alterarValor("EMIT\\xNome", "Padaria");
    recusado([&] { c.alterarValor("EMIT\\xNome", longa.substr(60)); },
             "61 caracteres, de que EMIT\\xNome guarda 60", "a long value");
    igual(c.retornarValor("EMIT\\xNome").valor, "Padaria", "value after a refusal");
    cortante.alterarValor("EMIT\\xNome", longa.substr(60));
    igual(c.retornarValor("EMIT\\xNome").valor, longa.substr(61), "value that was to be cut");
}

// The last one: the number of the descriptor is the program's from here on.
void testarMotivo(const std::string &diretorio) {
    Cupom c(diretorio);
    const auto recusar = [&] { c.criptografarArquivo("/nao/existe", "/x", ""); };
    const std::string motivo = "/nao/existe: o arquivo ou o diretório não existe (ENOENT)";
    contido(motivo, falhaDe(recusar, "no file").resultado().motivo(), "reason");
    contido("Motivo: ", falhaDe(recusar, "no file").what(), "reason in the message");
    ::close(detalhe::motivos);
    igual(falhaDe(recusar, "no file").resultado().motivo(), "", "reason of a closed descriptor");
}

void testarDiretorio(const std::string &diretorio) {
    caixaDoProcesso = diretorio;
    Cupom(diretorio).inicializar();
    Cupom(diretorio + "/").inicializar();
    conferir(std::filesystem::exists(diretorio + "/ZEL_Framework.xml"), "files elsewhere");

    Cupom semExcecoes("relativo", {false, false});
    const Resultado r = semExcecoes.abrir();
    conferir(!r && r.entradaRecusada() && r.codigo() == Codigo::ArgumentoInvalido, "no exception");
}

struct Passo {
    const char *nome;
    Codigo esperado;
    std::function<Resultado(Cupom &)> chamar;
};

Resultado venderBala(Cupom &c, const Decimal &preco = 10, const Ajuste &ajuste = {}) {
    return c.vender(Aliquota::isento(), 1, preco, "1", "UN", "Bala", ajuste);
}

const Passo passos[] = {
    {"sell without receipt", Codigo::NenhumCupom, [](Cupom &c) { return venderBala(c); }},
    {"none in progress", Codigo::Ok,
     [](Cupom &c) {
         const auto lido = c.lerAndamento();
         conferir(!lido.valor, "a receipt in progress where there is none");
         return lido;
     }},
    {"last receipt", Codigo::ArquivoIndisponivel, [](Cupom &c) { return c.ultimoCupom(); }},
    {"open", Codigo::Ok, [](Cupom &c) { return c.abrir(); }},
    {"discount of all", Codigo::AjusteExcessivo,
     [](Cupom &c) { return venderBala(c, 10, Ajuste::desconto(10)); }},
    {"price below zero", Codigo::ArgumentoInvalido, [](Cupom &c) { return venderBala(c, -1); }},
    {"tags that do not nest", Codigo::Recusado, [](Cupom &c) { return c.venderXml("<prod>"); }},
    {"sell", Codigo::Ok, [](Cupom &c) { return venderBala(c); }},
    {"no discount", Codigo::NadaARemover, [](Cupom &c) { return c.cancelarDescontoItem(1); }},
    {"surcharge as discount", Codigo::ArgumentoInvalido,
     [](Cupom &c) { return c.lancarDescontoItem(1, Ajuste::acrescimo(1)); }},
    {"discount", Codigo::Ok, [](Cupom &c) { return c.lancarDescontoItem(1, Ajuste::desconto(1)); }},
    {"another", Codigo::ItemJaAjustado,
     [](Cupom &c) { return c.lancarDescontoItem(0, Ajuste::descontoPercentual(1)); }},
    {"cancel all of it", Codigo::CancelamentoExcessivo,
     [](Cupom &c) { return c.cancelarItemParcial(1, 1); }},
    {"carrier", Codigo::TransportadoraNaoPermitida,
     [](Cupom &c) { return c.identificarTransportadora("11222333000181", "Frete"); }},
    {"unknown key", Codigo::Recusado, [](Cupom &c) { return c.retornarValor("NAO\\HA"); }},
    {"totalize", Codigo::Ok, [](Cupom &c) { return c.totalizar(); }},
    {"discount too late", Codigo::EstadoInvalido, [](Cupom &c) { return c.cancelarItem(1); }},
    {"pay", Codigo::Ok, [](Cupom &c) { return c.efetuarPagamento(FormaPagamento::Cheque); }},
    {"correct another payment", Codigo::PagamentoInexistente,
     [](Cupom &c) {
         return c.estornarPagamento(FormaPagamento::Outros, FormaPagamento::Cheque, 9);
     }},
    {"close", Codigo::Ok, [](Cupom &c) { return c.encerrar(); }},
    {"cancel", Codigo::CancelamentoGravado, [](Cupom &c) { return c.cancelar(); }},
};

// Each answer as a value and, when it is a refusal, as an exception of the same code; the texts are
// those of the table.
void testarRespostas(const std::string &diretorio) {
    Cupom lanca(diretorio), responde(diretorio, {false, false});
    for (const Passo &passo : passos) {
        const Resultado r = passo.chamar(responde);
        igual(r.numero(), static_cast<int>(passo.esperado), passo.nome);
        if (!r) {
            const Falha falha = falhaDe([&] { passo.chamar(lanca); }, passo.nome);
            igual(falha.what(), r.mensagem(), passo.nome);
            igual(falha.resultado().numero(), r.numero(), passo.nome);
        }
    }
    const Resultado r = responde.totalizar();
    contido("estado 5 (encerrado)", r.motivo(), "reason");
    contido("aCFTotalizar_ZEL: ZEL_TOTALIZACAO_FORA_DE_ORDEM (-133): Totalização sem itens, ou "
            "repetida, ou de cupom que já terminou. Motivo: " +
                r.motivo() + ". ",
            r.mensagem(), "message");
}

// A receipt with accents, more text than ZEL_TAMANHO_CUPOM, and every form of payment.
void testarCupom(const std::string &diretorio) {
    Cupom caixa(diretorio), tolerante(diretorio, {true, true});
    caixa.alterarValor("EMIT\\xNome", "Padaria São João");
    igual(caixa.retornarValor("EMIT\\xNome").valor, "Padaria São João", "value read back");

    Consumidor consumidor;
    consumidor.cpf = "12345678909";
    consumidor.nome = "João – Ltda";
    recusado([&] { caixa.abrir(consumidor); }, "nome: o caractere \"–\"", "a group's argument");
    caixa.abrir();
    const auto vender = [](Cupom &c, const std::string &descricao) {
        return c.vender(Aliquota::mercadoria(18), Decimal("1,5"), Decimal("0,75"), "101", "UN",
                        descricao);
    };
    recusado([&] { vender(caixa, "Pão de queijo – 1ª"); },
             "aCFVender_ZEL: descricao: o caractere \"–\" (U+2013) na posição 15 não existe",
             "dash");
    recusado([&] { vender(tolerante, "1 €"); }, "€", "euro");
    conferir(caixa.verificarStatus().valor == Estado::Aberto, "a refused text was sold");
    vender(tolerante, "Pão de queijo – 1ª");
    std::string longa;
    for (int i = 0; i < 120; ++i)
        longa += "É";
    for (int i = 0; i < 800; ++i)
        vender(caixa, longa);
    igual(caixa.infoEstendida("1").valor, "801", "items");
    caixa.totalizar(Ajuste::desconto(1));
    const auto ultima = static_cast<int>(FormaPagamento::Outros);
    for (int forma = 0; forma < ultima; ++forma)
        caixa.efetuarPagamento(static_cast<FormaPagamento>(forma), 1);
    caixa.efetuarPagamento(FormaPagamento::Outros);
    const std::optional<Andamento> andamento = caixa.lerAndamento().valor;
    conferir(andamento && andamento->lista.size() == 801 && andamento->pagamentos.size() == 10,
             "receipt in progress");
    igual(andamento->lista[0].descricao + andamento->falta + andamento->troco,
          "Pão de queijo - 1ª0", "what a till that was restarted shows");
    caixa.encerrar("Obrigado pela preferência");

    const std::string documento =
        detalhe::lerArquivo(caixa.arquivo("documentosEnvio.xml")).value_or("");
    contido("<xProd>" + std::string(120, '\xc9') + "</xProd>", documento, "long description");
    for (const char *forma : {"01", "02", "03", "04", "05", "10", "11", "12", "13"})
        contido("<tPag>" + std::string(forma) + "</tPag><vPag>1.00<", documento, "payment");

    const std::string cupom = caixa.imprimir(caixa.arquivo("documentosEnvio.xml"), "OFFLINE").valor;
    const std::string queijo = "Pão de queijo - 1ª";
    conferir(cupom.size() > ZEL_TAMANHO_CUPOM, "receipt");
    contido(queijo, cupom, "receipt");
    conferir(caixa.ultimoCupom().valor == cupom, "last receipt");
    contido(queijo, caixa.reemitir(1).valor, "document issued again");
    const std::string ctg = caixa.contingencia({diretorio}).valor;
    conferir(std::filesystem::exists(ctg), "no file " + ctg);
    contido(queijo, caixa.imprimir(ctg, "OFFLINE").valor, "receipt of a scrambled file");
    recusado([&] { caixa.contingencia({"/a|b/"}); }, "", "a list as a directory");
    recusado([&] { caixa.imprimir(ctg, "/nao/ha.xml"); },
             "arquivoRetorno: /nao/ha.xml não pôde ser lido", "missing file");

    // A refused PDF leaves the text.
    caixa.alterarValor("CONFIGURACAO\\SalvarDanfePDF", "1");
    contido(queijo, falhaDe([&] { caixa.imprimir(ctg, "OFFLINE"); }, "PDF offline").texto(),
            "failed PDF");
}

// Two threads at once; each finds what it wrote.
void testarThreads(const std::string &diretorio) {
    Cupom caixa(diretorio);
    const auto trabalhar = [&](const char *chave, std::string &erro) {
        try {
            for (int i = 0; i < 200 && erro.empty(); ++i) {
                const std::string valor = std::to_string(i);
                caixa.alterarValor(chave, valor);
                if (caixa.retornarValor(chave).valor != valor) erro = "read another value";
            }
        } catch (const std::exception &e) {
            erro = e.what();
        }
    };
    std::string erros[2];
    std::thread outra(trabalhar, "EMIT\\IE", std::ref(erros[0]));
    trabalhar("EMIT\\xNome", erros[1]);
    outra.join();
    igual(erros[0] + erros[1], "", "threads");
}

} // namespace

int main(int argc, char **argv) {
    if (argc != 5) return 2;
    const std::string diretorio = argv[1];
    testarDiretorio(diretorio);
    testarConversoes(argv[2], argv[3]);
    testarAndamento(argv[4]);
    testarEntradas();
    testarCortes(diretorio);
    testarRespostas(diretorio);
    testarCupom(diretorio);
    testarThreads(diretorio);
    testarMotivo(diretorio);
    std::cout << (falhas == 0 ? "C++17: ok\n" : "C++17: failed\n");
    return falhas == 0 ? 0 : 1;
}
