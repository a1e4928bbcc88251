// SPDX-License-Identifier: MIT
// The C# library against a real library: Teste DIRECTORY LIBRARY CASES
using System;
using System.Globalization;
using System.IO;
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
        if (tipo == "diretorio") return new Cupom(entrada).ToString();
        decimal numero = decimal.Parse(entrada, CultureInfo.InvariantCulture);
        byte[] escrito = escolha == "mercadoria" ? Aliquota.Mercadoria(numero).Converter("a")
            : escolha == "servico" ? Aliquota.Servico(numero).Converter("a")
            : Valores.Decimal("a", numero, int.Parse(escolha));
        return Encoding.ASCII.GetString(escrito, 0, escrito.Length - 1);
    }

    static void TestarConversoes(string arquivo) {
        Caixa().Inicializar();
        Conferir(File.Exists(diretorio + "/ZEL_Framework.xml"), "files elsewhere");
        int casos = 0;
        foreach (string linha in File.ReadAllLines(arquivo)) {
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
        Conferir(casos > 30, "the cases were not read");
        Erro<TextoInvalido>(() => Valores.Texto("a", "P\0o", true), "U+0000");
        Erro<TextoInvalido>(() => Valores.Texto("a", "\ud83e", true), "half a character");
        Erro<EntradaRecusada>(() => Valores.Texto("a", null, true), "null");
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
        Igual(r.Message, "aCFAbrir_ZEL: ZEL_CUPOM_EM_ANDAMENTO (-130): Já há um cupom em andamento. " +
              "Continue-o, ou cancele-o com tCFCancelar_ZEL e cinco textos vazios. " +
              "Se outro programa está com ele, não o cancele: dê a cada caixa o seu diretório.", "message");
    }

    static void TestarCupom() {
        Cupom c = Caixa();
        c.AlterarValor(@"EMIT\xNome", "Padaria São João");
        Igual(c.RetornarValor(@"EMIT\xNome"), "Padaria São João", "value read back");
        c.Abrir();
        TestarRecusas(c);
        Vender(Caixa(true), "Pão de queijo – 1ª");
        for (int i = 0; i < 800; ++i) Vender(c, new string('É', 120));
        c.Totalizar();
        c.EfetuarPagamento(FormaPagamento.Dinheiro);
        c.Encerrar("Obrigado pela preferência");
        TestarImpressao(c);
        Igual(c.Cancelar(), Codigo.CancelamentoGravado, "cancellation");
    }

    static void TestarImpressao(Cupom c) {
        string cupom = c.Imprimir(c.Arquivo("documentosEnvio.xml"));
        Conferir(cupom.Length > 131072 && cupom.Contains("Pão de queijo - 1ª"), "receipt");
        Conferir(c.UltimoCupom() == cupom, "last receipt");
        Conferir(c.Reemitir(1).Contains("Pão de queijo - 1ª"), "document issued again");
        string ctg = c.Contingencia(new[] { diretorio });
        Conferir(File.Exists(ctg), "no file " + ctg);
        Conferir(c.Imprimir(ctg).Contains("Pão de queijo - 1ª"), "receipt of a scrambled file");
        Erro<EntradaRecusada>(() => c.Imprimir("/nao/ha.xml"), "missing file");
        c.AlterarValor(@"CONFIGURACAO\SalvarDanfePDF", "1");
        Recusa pdf = Erro<Recusa>(() => c.Imprimir(ctg), "PDF offline");
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
        TestarConversoes(args[2]);
        TestarCupom();
        Thread[] threads = { Trabalhar(@"EMIT\IE"), Trabalhar(@"EMIT\xNome") };
        foreach (Thread thread in threads) thread.Start();
        foreach (Thread thread in threads) thread.Join();
        Console.WriteLine(falhas == 0 ? "C#: ok" : "C#: failed");
        return falhas == 0 ? 0 : 1;
    }
}
