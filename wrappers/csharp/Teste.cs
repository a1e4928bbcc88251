// SPDX-License-Identifier: MIT
// The C# library against a real library: Teste DIRECTORY LIBRARY CASES
using System;
using System.Globalization;
using System.IO;
using System.Linq;
using System.Runtime.InteropServices;
using System.Text;
using System.Threading;
using Zel.Felbor;

static class Teste {
    static string diretorio, biblioteca;
    static int falhas;

    static void Conferir(bool certo, string oque) {
        if (certo) return;
        Console.WriteLine("failed: " + oque);
        ++falhas;
    }

    static void Igual(object lido, object esperado, string oque) {
        Conferir(lido.Equals(esperado), oque + ": " + lido + ", expected " + esperado);
    }

    // What a call throws; fails the test when it is another kind or nothing.
    static E Erro<E>(Action chamada, string oque) where E : ErroZel {
        try {
            chamada();
        } catch (E e) {
            return e;
        }
        throw new InvalidOperationException(oque + " was not refused");
    }

    static Cupom Caixa(bool transliterar = false) {
        return new Cupom(diretorio, transliterar, biblioteca);
    }

    static string Converter(string tipo, string escolha, string entrada) {
        if (tipo == "texto") {
            byte[] bytes = Valores.Texto("a", entrada, escolha == "transliterar");
            return BitConverter.ToString(bytes, 0, bytes.Length - 1).Replace("-", "");
        }
        if (tipo == "comprimento") {
            string[] limites = escolha.Split('-');
            byte[] bytes = Caixa().Texto("a", entrada, int.Parse(limites[0]), int.Parse(limites[1]));
            return BitConverter.ToString(bytes, 0, bytes.Length - 1).Replace("-", "");
        }
        if (tipo == "consumidor") return ConverterConsumidor(escolha, entrada);
        if (tipo == "autorizacao") {
            string[] lidos = entrada.Split('|');
            Autorizacao.Conferir(lidos[0], lidos[1] == "OFFLINE" ? null : lidos[1],
                                 escolha == "cancelamento");
            return "ok";
        }
        if (tipo == "diretorio") return new Cupom(entrada).ToString();
        decimal numero = decimal.Parse(entrada, CultureInfo.InvariantCulture);
        byte[] escrito = escolha == "mercadoria" ? Aliquota.Mercadoria(numero).Converter("a")
            : escolha == "servico" ? Aliquota.Servico(numero).Converter("a")
            : Valores.Decimal("a", numero, int.Parse(escolha));
        return Encoding.ASCII.GetString(escrito, 0, escrito.Length - 1);
    }

    static string ConverterConsumidor(string escolha, string entrada) {
        var c = new Consumidor();
        foreach (string par in entrada.Split(';')) {
            string[] campo = par.Split('=');
            string nome = char.ToUpperInvariant(campo[0][0]) + campo[0].Substring(1);
            typeof(Consumidor).GetProperty(nome).SetValue(c, campo[1], null);
        }
        string funcao = escolha == "identificar" ? "aCFIdentificarConsumidor_ZEL" : "aCFAbrir_ZEL";
        byte[] bytes = Identificacao.De(funcao, c, escolha == "cortar");
        return Encoding.ASCII.GetString(bytes, 0, bytes.Length - 1);
    }

    static void TestarConversoes(params string[] arquivos) {
        Caixa().Inicializar();
        Conferir(File.Exists(diretorio + "/ZEL_Framework.xml"), "files elsewhere");
        int casos = 0;
        foreach (string linha in arquivos.SelectMany(File.ReadAllLines)) {
            if (linha.StartsWith("#", StringComparison.Ordinal)) continue;
            string[] c = linha.Split('\t');
            ++casos;
            if (c[3][0] != '!') {
                Igual(Converter(c[0], c[1], c[2]), c[3], linha);
                continue;
            }
            var e = Erro<EntradaRecusada>(() => Converter(c[0], c[1], c[2]), linha);
            Conferir(e.Message.Contains(c[3].Substring(1)), linha + ": " + e.Message);
        }
        Conferir(casos > 70, "the cases were not read");
        Erro<TextoInvalido>(() => Valores.Texto("a", "P\0o", true), "U+0000");
        Erro<TextoInvalido>(() => Valores.Texto("a", "\ud83e", true), "half a character");
        Erro<EntradaRecusada>(() => Valores.Texto("a", null, true), "null");
    }

    static string Dizer(Andamento a) {
        var dito = new System.Collections.Generic.List<string>();
        var c = a.Consumidor;
        if (c != null) dito.Add(string.Join(",", "C", c.Tipo, c.Documento, c.Nome, c.Email));
        foreach (var i in a.Lista)
            dito.Add(string.Join(",", "I", i.Numero, i.Codigo, i.Descricao, i.Quantidade, i.Unidade,
                                 i.Preco, i.Bruto, i.Desconto, i.Acrescimo));
        foreach (var p in a.Pagamentos) dito.Add(string.Join(",", "P", p.Forma, p.Nome, p.Valor));
        dito.Add(string.Join(",", "T", a.Total, a.Pago, a.Falta));
        return string.Join(";", dito);
    }

    // The receipts in progress that all languages share.
    static void TestarAndamento(string arquivo) {
        string[] linhas = File.ReadAllLines(arquivo).Where(l => l[0] != '#').ToArray();
        Conferir(linhas.Length > 15, "the receipts in progress were not read");
        foreach (string linha in linhas) {
            string[] c = linha.Split('\t');
            Func<string> ler = () => Dizer(new Andamento(c[1].Replace("^", "\r\n"), Estado.Aberto, ""));
            if (c[2][0] != '!') {
                Igual(ler(), c[2], c[0]);
                continue;
            }
            var e = Erro<EntradaRecusada>(() => ler(), c[0]);
            Conferir(e.Message.Contains(c[2].Substring(1)), c[0] + ": " + e.Message);
        }
    }

    // What the functions would cut, take for something else or fall over.
    static void TestarEntradas() {
        Cupom c = Caixa();
        Aliquota isento = Aliquota.Isento;
        var casos = new System.Collections.Generic.Dictionary<string, Action> {
            { "serie: 1000", () => c.AbrirNumSerie(1, 1000) },
            { "valor: 0.125", () => c.LancarDescontoItem(1, Ajuste.Desconto(0.125m)) },
            { "descricao: 121", () => c.Vender(isento, 1, 1, "1", "UN", new string('x', 121)) },
            { "documento: os", () => c.IdentificarTransportadora("123.456.789-00", "Zé") },
            { "informacoesFisco: 0", () => c.EncerrarConfigMsg("só uma", "") },
            { "aliquota: nulo", () => c.Vender(null, 1, 1, "1", "UN", "x") },
            { "descricao: nulo", () => c.Vender(isento, 1, 1, "1", "UN", null) },
            { "consumidor: nulo", () => c.IdentificarConsumidor(null) },
            { "forma: 99", () => c.EfetuarPagamento((FormaPagamento)99) },
            { "destino: nome", () => c.CriptografarArquivo("/a", "/" + new string('x', 300), "") },
        };
        foreach (var caso in casos) {
            var recusa = Erro<EntradaRecusada>(caso.Value, caso.Key);
            Conferir(recusa.Message.StartsWith(caso.Key, StringComparison.Ordinal), recusa.Message);
        }
        c.AlterarValor(@"EMIT\xNome", "Padaria");
        var e = Erro<EntradaRecusada>(() => c.AlterarValor(@"EMIT\xNome", new string('x', 61)), "61");
        Conferir(e.Message.Contains(@"61 caracteres, de que EMIT\xNome guarda 60"), e.Message);
        Igual(c.RetornarValor(@"EMIT\xNome"), "Padaria", "value after a refusal");
        new Cupom(diretorio, false, biblioteca, true).AlterarValor(@"EMIT\xNome", new string('x', 61));
        Igual(c.RetornarValor(@"EMIT\xNome").Length, 60, "value that was to be cut");
        Igual(Erro<Recusa>(() => c.AlterarValor("NADA", "1"), "no key").Funcao, "regAlterarValor_ZEL",
              "function");
    }

    [DllImport("libc.so.6")]
    static extern int close(int descritor);

    // The last one: the number of the descriptor is the program's from here on.
    static void TestarMotivo() {
        Action recusar = () => Caixa().CriptografarArquivo("/nao/existe", "/x", "");
        Recusa r = Erro<Recusa>(recusar, "no such file");
        Conferir(r.Motivo.Contains("/nao/existe: o arquivo ou o diretório não existe (ENOENT)"), r.Motivo);
        Conferir(r.Message.Contains(r.Motivo), r.Message);
        close(Motivos.Descritor);
        Igual(Erro<Recusa>(recusar, "no such file").Motivo, "", "reason of a closed descriptor");
    }

    static void Vender(Cupom c, string descricao) {
        c.Vender(Aliquota.Mercadoria(18), 1.5m, 0.75m, "101", "UN", descricao);
    }

    static void TestarRecusas(Cupom c) {
        TextoInvalido t = Erro<TextoInvalido>(() => Vender(c, "Pão de queijo – 1ª"), "dash");
        Igual(t.Argumento + (char)t.Caractere + t.Posicao, "descricao–15", "character");
        Erro<TextoInvalido>(() => Vender(Caixa(true), "1 €"), "euro");
        Igual(c.VerificarStatus(), Estado.Aberto, "state after refused texts");
        Erro<EntradaRecusada>(() => c.LancarDescontoItem(1, Ajuste.Acrescimo(1)), "surcharge");
        Recusa r = Erro<Recusa>(() => c.Abrir(), "open again");
        Igual(r.Codigo, Codigo.CupomEmAndamento, "code");
        Conferir(r.Motivo.Contains("estado 1 (aberto)"), r.Motivo);
        Conferir(r.Message.StartsWith("aCFAbrir_ZEL: ZEL_CUPOM_EM_ANDAMENTO (-130): Já há um cupom em " +
                                      "andamento. Motivo: " + r.Motivo + ". ", StringComparison.Ordinal),
                 r.Message);
    }

    static void TestarCupom() {
        Cupom c = Caixa();
        c.AlterarValor(@"EMIT\xNome", "Padaria São João");
        Igual(c.RetornarValor(@"EMIT\xNome"), "Padaria São João", "value read back");
        Conferir(c.LerAndamento() == null, "a receipt in progress where there is none");
        c.Abrir();
        TestarRecusas(c);
        Vender(Caixa(true), "Pão de queijo – 1ª");
        for (int i = 0; i < 800; ++i) Vender(c, new string('É', 120));
        c.Totalizar();
        c.EfetuarPagamento(FormaPagamento.Dinheiro);
        Andamento a = c.LerAndamento();
        Igual(a.Lista.Count + a.Lista[0].Descricao + a.Estado + a.Falta + a.Troco,
              "801Pão de queijo - 1ªPago0", "what a till that was restarted shows");
        c.Encerrar("Obrigado pela preferência");
        TestarImpressao(c);
        Igual(c.Cancelar(), Codigo.CancelamentoGravado, "cancellation");
    }

    static void TestarImpressao(Cupom c) {
        string cupom = c.Imprimir(c.Arquivo("documentosEnvio.xml"), "OFFLINE");
        Conferir(cupom.Length > 131072 && cupom.Contains("Pão de queijo - 1ª"), "receipt");
        Conferir(c.UltimoCupom() == cupom, "last receipt");
        Conferir(c.Reemitir(1).Contains("Pão de queijo - 1ª"), "document issued again");
        string ctg = c.Contingencia(new[] { diretorio });
        Conferir(File.Exists(ctg), "no file " + ctg);
        Conferir(c.Imprimir(ctg, "OFFLINE").Contains("Pão de queijo - 1ª"), "receipt of a scrambled file");
        Erro<EntradaRecusada>(() => c.Imprimir("/nao/ha.xml", "OFFLINE"), "missing file");
        c.AlterarValor(@"CONFIGURACAO\SalvarDanfePDF", "1");
        Recusa pdf = Erro<Recusa>(() => c.Imprimir(ctg, "OFFLINE"), "PDF offline");
        Conferir(pdf.Texto.Contains("Pão de queijo - 1ª"), "the text of a failed PDF is lost");
    }

    static Thread Trabalhar(string chave) {
        return new Thread(() => {
            try {
                Cupom c = Caixa();
                for (int i = 0; i < 200; ++i) {
                    c.AlterarValor(chave, i.ToString());
                    Igual(c.RetornarValor(chave), i.ToString(), "read another value");
                }
            } catch (Exception e) {
                Conferir(false, e.ToString());
            }
        });
    }

    static int Main(string[] args) {
        Console.OutputEncoding = new UTF8Encoding(false);
        // A decimal comma, which no number may follow.
        Thread.CurrentThread.CurrentCulture = new CultureInfo("pt-BR");
        diretorio = args[0];
        biblioteca = args[1];
        var ausente = Erro<BibliotecaAusente>(() => new Cupom(diretorio, false, "/nao/ha.so"), "no library");
        Conferir(ausente.Message.Contains("LD_LIBRARY_PATH"), ausente.Message);
        TestarConversoes(args[2], args[3]);
        TestarAndamento(args[4]);
        TestarEntradas();
        TestarCupom();
        Thread[] threads = { Trabalhar(@"EMIT\IE"), Trabalhar(@"EMIT\xNome") };
        foreach (Thread thread in threads) thread.Start();
        foreach (Thread thread in threads) thread.Join();
        TestarMotivo();
        Console.WriteLine(falhas == 0 ? "C#: ok" : "C#: failed");
        return falhas == 0 ? 0 : 1;
    }
}
