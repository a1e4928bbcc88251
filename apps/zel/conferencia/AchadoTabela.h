// SPDX-License-Identifier: MIT
// The table of findings: what a check can find, under a stable name, with its severity and what it
// means. A finding that the table does not have does not compile.
#pragma once

#include <algorithm>
#include <string_view>

namespace zel::aplicativo {

enum class Gravidade { kNota, kAviso, kErro };

struct TipoAchado {
    std::string_view id; // stable: programs compare it
    Gravidade gravidade;
    std::string_view explicacao;
};

namespace tabela {

using enum Gravidade;

inline constexpr TipoAchado kAchados[] = {
    // Files of the data directory.
    {"diretorio-ausente", kErro, "O diretório não existe."},
    {"diretorio-sem-escrita", kErro, "Este usuário não pode gravar no diretório."},
    {"diretorio-aberto", kAviso, "Qualquer usuário pode gravar no diretório de dados."},
    {"arquivo-ausente", kErro, "ZEL_Framework.xml não existe."},
    {"arquivo-ilegivel", kErro,
     "O arquivo não pode ser lido por este usuário, ou não é um arquivo."},
    {"arquivo-sem-escrita", kErro, "Este usuário não pode gravar o arquivo."},
    {"permissao-config", kErro,
     "Outros usuários leem ou gravam ZEL_Framework.xml, que guarda o token."},
    {"permissao-dados", kAviso,
     "Outros usuários leem ou gravam um arquivo com dados do consumidor."},
    {"danificado", kAviso, "A biblioteca guardou ao lado um arquivo que não pôde ler."},
    {"gravacao-interrompida", kAviso, "Um processo morreu no meio de uma gravação."},
    {"gravacao-em-curso", kNota, "O caixa aberto está no meio de uma gravação."},
    {"caixa-aberto", kNota, "Um processo está com o cupom deste diretório."},
    // The configuration file as a text.
    {"raiz-ausente", kErro, "Falta FRAMEWORKZEL: a biblioteca não lê o arquivo."},
    {"elemento-desconhecido", kErro,
     "Um elemento que a biblioteca não conhece: a leitura para ali."},
    {"elemento-aberto", kErro, "Um elemento ou grupo sem a sua marca de fim."},
    {"chave-ignorada", kErro, "Chaves depois do ponto em que a leitura para: valem os padrões."},
    {"chave-repetida", kAviso, "A chave aparece mais de uma vez; vale a última."},
    {"chave-ausente", kAviso, "Chaves que faltam no arquivo: valem os padrões."},
    {"acentos-utf8", kAviso, "O valor foi gravado em UTF-8; os acentos saem errados."},
    // Values.
    {"valor-longo", kErro, "O valor passa do comprimento da chave e é cortado."},
    {"valor-vazio", kErro, "A chave não pode ficar vazia."},
    {"valor-invalido", kErro, "O valor não é dos permitidos."},
    {"valor-brancos", kErro, "O texto começa ou termina com branco, ou é curto demais."},
    {"fator-percentual", kAviso, "A chave espera um fator (0.18), não um percentual (18)."},
    {"padrao-nao-trocado", kErro, "A chave ainda tem o valor de fábrica."},
    {"chave-sem-leitor", kNota, "A chave foi preenchida, mas nada a lê."},
    {"cnpj-digito", kErro, "Dígitos verificadores do CNPJ."},
    {"cpf-digito", kErro, "Dígitos verificadores do CPF."},
    {"ie-tamanho", kErro, "A inscrição estadual não tem o tamanho que o estado usa."},
    {"ie-digito", kErro, "Dígitos verificadores da inscrição estadual."},
    {"ie-isento", kAviso, "Emitente de NFC-e sem inscrição estadual."},
    {"municipio-digito", kErro, "Dígito verificador do código do município."},
    {"municipio-uf", kErro, "O município é de outro estado."},
    {"municipio-nome", kAviso, "O nome do município não é o do código."},
    {"cep-uf", kAviso, "O CEP é de outro estado."},
    {"uf-codigo", kErro, "Sigla e código do estado não combinam."},
    {"chave-digito", kErro, "Dígito verificador da chave de acesso."},
    {"diretorio-barra", kErro, "O diretório não termina com /."},
    {"diretorio-relativo", kErro, "O diretório não começa com /."},
    {"historico-sem-diretorio", kAviso, "O histórico está ligado, mas sem diretório."},
    // The shop.
    {"ambiente-homologacao", kNota, "As notas saem em homologação, sem valor fiscal."},
    {"ambiente-indefinido", kAviso,
     "O ambiente é o 3 de fábrica: as notas saem em homologação e os pedidos levam o 3."},
    {"contingencia-ligada", kAviso, "Toda nota sai em contingência."},
    {"token-ausente", kErro, "Falta o token (CSC); um aviso em homologação."},
    {"endereco-ausente", kErro, "Falta a página do QR Code do estado; um aviso em homologação."},
    {"endereco-ambiente", kErro,
     "A página do QR Code é de homologação e o ambiente é de produção."},
    {"endereco-estado", kErro, "A página do QR Code é de outro estado; um aviso em homologação."},
    {"endereco-compartilhado", kAviso, "AC e RS guardam um só endereço de produção; vale o de RS."},
    {"fuso-estranho", kAviso, "A hora das notas sai num fuso que o Brasil não tem."},
    {"ncm-fabrica", kAviso, "O NCM ainda é o de fábrica."},
    {"numero-esgotado", kErro, "O próximo número passaria de 999999999."},
    {"crt-grupo", kErro, "O regime tributário e o grupo do ICMS não combinam."},
    {"grupo-ausente", kErro, "Nenhum grupo do ICMS está preenchido: toda venda é recusada."},
    {"grupo-incompleto", kErro, "Falta um valor que o grupo de imposto em uso exige."},
    {"grupo-recusado", kErro, "O grupo de imposto em uso sempre é recusado pela biblioteca."},
    {"grupo-escondido", kAviso, "Um grupo preenchido não é usado: vale o primeiro."},
    {"grupo-cst", kAviso, "O grupo PISQTDE da configuração leva CST 00 ao documento."},
    // The receipt in progress.
    {"cupom-em-andamento", kAviso, "Há um cupom em andamento e nenhum caixa aberto."},
    {"cupom-em-uso", kNota, "O caixa aberto está com um cupom em andamento."},
    {"cupom-ausente", kErro, "O estado diz que há cupom, mas o arquivo dele não existe."},
    {"cupom-ilegivel", kErro, "O arquivo do cupom não é o que a biblioteca grava."},
    // Documents.
    {"xml-malformado", kErro, "O arquivo não é XML bem formado."},
    {"documento-outro", kNota, "O arquivo não é uma NFC-e; só a forma foi conferida."},
    {"leiaute-outro", kAviso, "O documento não é do leiaute 3.10."},
    {"elemento-ausente", kErro, "Falta um elemento que a conferência precisa."},
    {"chave-forma", kErro, "O Id não é NFe seguido de 44 dígitos."},
    {"chave-difere", kErro, "Uma parte da chave de acesso difere do documento."},
    {"crt-item", kErro, "O regime tributário e o imposto de um item não combinam."},
    {"gtin-digito", kErro, "Dígito verificador do código de barras."},
    {"ncm-tamanho", kAviso, "O NCM não tem 8 dígitos, nem é 00."},
    {"ncm-inexistente", kAviso, "O NCM tem 8 dígitos, mas não começa como um NCM."},
    {"cfop-destino", kErro, "O CFOP não combina com o destino da operação (idDest)."},
    {"homologacao-item", kAviso, "Em homologação o primeiro item tem uma descrição exigida."},
    {"homologacao-consumidor", kAviso, "Em homologação o nome do consumidor é um exigido."},
    {"valor-zero", kAviso, "O valor do item é zero."},
    {"quantidade-zero", kAviso, "A quantidade do item é zero, ou não é um número."},
    {"item-valor", kErro, "O valor do item não é quantidade vezes preço."},
    {"soma-difere", kErro, "Um total não é a soma dos itens."},
    {"total-formula", kErro, "vNF não é produtos mais outros menos descontos e substituição."},
    {"total-substituicao", kAviso,
     "Com substituição tributária a SEFAZ soma vST, e a biblioteca subtrai."},
    {"pagamento-difere", kErro, "Os pagamentos não somam o total."},
    {"qrcode-forma", kErro, "O conteúdo do QR Code não tem a forma da versão 100."},
    {"qrcode-difere", kErro, "O QR Code difere do documento."},
    {"esquema", kErro,
     "O esquema publicado recusa o documento; uma nota para o que o componente de envio conserta."},
    {"esquema-indisponivel", kErro, "O esquema não pôde ser usado."},
    {"sem-assinatura", kNota,
     "O documento não está assinado: quem assina é o componente de envio."},
};

} // namespace tabela

// The kind of a finding, by its name.
class IdAchado {
public:
    consteval IdAchado(const char *id) : tipo_(procurar(id)) {}
    const TipoAchado &tipo() const { return *tipo_; }

private:
    static consteval const TipoAchado *procurar(std::string_view id) {
        const auto *tipo = std::ranges::find(tabela::kAchados, id, &TipoAchado::id);
        if (tipo == std::end(tabela::kAchados)) throw "a finding that the table does not have";
        return tipo;
    }

    const TipoAchado *tipo_;
};

} // namespace zel::aplicativo
